/*
 * fixture.h -- test support for the solver suites: a problem on the
 * recording engine with the reports and the output collected.
 */
#ifndef KVTL_TESTS_SOLVER_FIXTURE_H
#define KVTL_TESTS_SOLVER_FIXTURE_H

#include <string>
#include <vector>

#include "engine_fake/fake_engine.h"
#include "solver/model_builder.h"
#include "support/messages.h"

// Fixture: errors return, reports collected, recording engine reset, one
// problem with output captured.
class SolverTest : public ::testing::Test {
 protected:
  void SetUp() override {
    mdlseterrctrl(0);
    fake::reset();
    errors.install();
    prob = mdlnewprob("solvertest");
    ASSERT_NE(prob, nullptr);
    output.install(prob);
    fake::clear_calls();
  }
  void TearDown() override {
    if (prob != nullptr) mdldelprob_prob(prob);
    mdldefcberr_prob(nullptr, nullptr, nullptr);
    fake::reset();
  }
  MDLvar var(const char *name, int type = MDL_CONTINUOUS, double lb = 0, double ub = 1e20) {
    MDLvar v = mdlnewvar_prob(prob, name, type, lb, ub);
    EXPECT_NE(v, nullptr);
    return v;
  }
  // The last report: number, error (1) or warning (0), text.
  void expect_report(int number, int iserror, const std::string &text) {
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors.last().number, number);
    EXPECT_EQ(errors.last().iserror, iserror);
    EXPECT_EQ(errors.last().text, text);
  }
  // Names of the recorded calls, without attribute and control reads.
  static std::vector<std::string> engine_calls() {
    std::vector<std::string> out;
    for (const std::string &n : fake::call_names())
      if (n != "KVSLgetintattrib" && n != "KVSLgetdblattrib" && n != "KVSLgetdblcontrol")
        out.push_back(n);
    return out;
  }
  static std::vector<int64_t> ints(std::initializer_list<int64_t> v) { return v; }
  static std::vector<double> dbls(std::initializer_list<double> v) { return v; }

  testsupport::error_log errors;
  testsupport::output_log output;
  MDLprob prob = nullptr;
};

#endif
