/*
 * fixture.h -- common set-up of the runtime-core tests: errors return
 * instead of ending the process, the recording engine starts clean, and the
 * library is shut down completely after each test.
 */
#ifndef KVTL_TESTS_CORE_FIXTURE_H
#define KVTL_TESTS_CORE_FIXTURE_H

#include <gtest/gtest.h>

#include "engine_fake/fake_engine.h"
#include "kvtl.h"
#include "support/messages.h"

class CoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fake::reset();
    mdlseterrctrl(0);
    errors.install();
  }
  void TearDown() override {
    while (mdlslfinish() == 0) {
    }
    mdlsetcbglbmemannotify(nullptr, nullptr);
    mdlsetasyncfree(0);
    mdldefcberr_prob(nullptr, nullptr, nullptr);
    mdldefcbmsg_prob(nullptr, nullptr, nullptr);
    mdlseterrctrl(1);
    fake::reset();
  }
  testsupport::error_log errors;
};

#endif
