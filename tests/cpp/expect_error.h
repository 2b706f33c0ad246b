/*
 * expect_error.h -- test support of the C++ suites: a call must leave with
 * a kvtl::error of one number and exact text.
 */
#ifndef KVTL_TESTS_CPP_EXPECT_ERROR_H
#define KVTL_TESTS_CPP_EXPECT_ERROR_H

#include <gtest/gtest.h>

#include <string>

#include "kvtl.hpp"

namespace cpptest {

// Runs f, which must throw kvtl::error `number` with exactly `text`.
template <class F>
void expect_error(F &&f, int number, const std::string &text) {
  try {
    f();
    ADD_FAILURE() << "no exception, expected " << number << " " << text;
  } catch (const kvtl::error &e) {
    EXPECT_EQ(e.number(), number) << e.what();
    EXPECT_EQ(std::string(e.what()), text);
  }
}

}  // namespace cpptest

#endif
