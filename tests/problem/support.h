/*
 * support.h -- shared fixture of the problem, variable and thread suites:
 * captured messages, a clean library and recording engine per test, and
 * an allocator hook that fails the nth allocation.
 */
#ifndef KVTL_TESTS_PROBLEM_SUPPORT_H
#define KVTL_TESTS_PROBLEM_SUPPORT_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "fake_engine.h"
#include "kvtl.h"

namespace support {

struct message {
  MDLprob prob;
  int num;
  int iserror;
  std::string text;
};

// Error callback target: every report in order.
struct capture {
  std::vector<message> msgs;
  static void cb(MDLprob prob, void *user, int num, int iserror, const char *text) {
    static_cast<capture *>(user)->msgs.push_back({prob, num, iserror, text});
  }
  size_t count(int num) const {
    size_t n = 0;
    for (const message &m : msgs) n += m.num == num;
    return n;
  }
};

// Allocator hook failing the nth call counted from arm(n) (0: never).
inline long fail_at = 0;
inline long malloc_calls = 0;
inline void *failing_malloc(size_t size) {
  if (fail_at > 0 && ++malloc_calls == fail_at) return nullptr;
  return malloc(size);
}
inline void arm(long n) {
  malloc_calls = 0;
  fail_at = n;
  mdlsl_malloc = failing_malloc;
}
inline void disarm() {
  fail_at = 0;
  mdlsl_malloc = malloc;
}

// Errors return, every report is captured, and each test starts and ends
// with a library that is shut down and an engine without problems.
class LibraryTest : public ::testing::Test {
 protected:
  capture cap;

  void SetUp() override {
    fake::reset();
    mdlseterrctrl(0);
    mdldefcberr_prob(nullptr, capture::cb, &cap);
    unsetenv("TMPDIR");
  }
  void TearDown() override {
    disarm();
    while (mdlslfinish() == 0) {
    }
    EXPECT_EQ(fake::live_problems(), 0);
    fake::reset();
  }
  const message &last() const { return cap.msgs.back(); }
  // Assert exactly one report so far with this number, kind and text.
  void expect_only(int num, int iserror, const std::string &text) const {
    ASSERT_EQ(cap.msgs.size(), 1u);
    EXPECT_EQ(cap.msgs[0].num, num);
    EXPECT_EQ(cap.msgs[0].iserror, iserror);
    EXPECT_EQ(cap.msgs[0].text, text);
  }
};

}  // namespace support

#endif
