/*
 * solution_test.cpp -- solution values, caches, ranging and solution files
 * against the recording engine, with the engine calls counted.
 */
#include <stdio.h>
#include <unistd.h>

#include <string>

#include "solver/fixture.h"

using builder::ctr;
using builder::qterm;
using builder::term;
using std::string;

namespace {

class Solution : public SolverTest {
 protected:
  // c1: x + y <= 4 (row 1), c2: x - y >= -2 (row 0); minimise x + 2y;
  // z has no column.
  void model() {
    x = var("x", MDL_CONTINUOUS, 0, 10);
    y = var("y", MDL_CONTINUOUS, 0, 10);
    z = var("z", MDL_CONTINUOUS, 2, 5);
    c1 = ctr(prob, "c1", MDL_CTR_L, 4);
    term(c1, x, 1);
    term(c1, y, 1);
    c2 = ctr(prob, "c2", MDL_CTR_G, -2);
    term(c2, x, 1);
    term(c2, y, -1);
    MDLctr obj = builder::objective(prob);
    term(obj, x, 1);
    term(obj, y, 2);
  }
  void script_lp() {
    fake::set_int_attrib(KVSL_ATTR_PRESOLVESTATE, KVSL_SOLUTION_HELD);
    fake::set_dbl_attrib(KVSL_ATTR_LPOBJVAL, 6.5);
    fake::set_vector("KVSLgetlpsol", "x", {1.5, 2.5});
    fake::set_vector("KVSLgetlpsol", "slack", {3.0, 0.5});
    fake::set_vector("KVSLgetlpsol", "dual", {0.25, -1.0});
    fake::set_vector("KVSLgetlpsol", "dj", {0.0, 0.75});
  }
  void solved_lp() {
    model();
    script_lp();
    ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
    fake::clear_calls();
  }
  void solved_mip() {
    model();
    fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, KVSL_MIP_OPTIMAL);
    fake::set_dbl_attrib(KVSL_ATTR_MIPOBJVAL, 5.0);
    fake::set_vector("KVSLgetmipsol", "x", {1.0, 2.0});
    fake::set_vector("KVSLgetmipsol", "slack", {3.0, 1.0});
    ASSERT_EQ(mdlmipoptimize_prob(prob, ""), 0);
    fake::clear_calls();
  }
  MDLvar x = nullptr, y = nullptr, z = nullptr;
  MDLctr c1 = nullptr, c2 = nullptr;
};

TEST_F(Solution, NullArgumentsReport) {
  EXPECT_EQ(mdlgetsol(nullptr), 0.0);
  expect_report(1505, 1, "(getsol) No variable given.");
  EXPECT_EQ(mdlgetrcost(nullptr), 0.0);
  expect_report(1505, 1, "(getrcost) No variable given.");
  EXPECT_EQ(mdlgetvarrng(nullptr, 0), 0.0);
  expect_report(1505, 1, "(getrng) No variable given.");
  EXPECT_EQ(mdlgetslack(nullptr), 0.0);
  expect_report(1507, 1, "(getslack) No constraint given.");
  EXPECT_EQ(mdlgetact(nullptr), 0.0);
  expect_report(1507, 1, "(getact) No constraint given.");
  EXPECT_EQ(mdlgetdual(nullptr), 0.0);
  expect_report(1507, 1, "(getdual) No constraint given.");
  EXPECT_EQ(mdlgetctrrng(nullptr, 0), 0.0);
  expect_report(1507, 1, "(getrng) No constraint given.");
  EXPECT_EQ(mdlgetobjval_prob(nullptr), 0.0);
  expect_report(1501, 1, "(getobjval) No active problem.");
}

TEST_F(Solution, ValuesAreFetchedOncePerSolution) {
  solved_lp();
  EXPECT_EQ(mdlgetsol(x), 1.5);
  EXPECT_EQ(mdlgetsol(y), 2.5);
  EXPECT_EQ(mdlgetsol(x), 1.5);
  auto fetches = fake::calls_of("KVSLgetlpsol");
  ASSERT_EQ(fetches.size(), 1u);
  EXPECT_FALSE(fetches[0].is_null("x"));
  EXPECT_TRUE(fetches[0].is_null("slack"));
  EXPECT_TRUE(fetches[0].is_null("dual"));
  EXPECT_TRUE(fetches[0].is_null("dj"));
  EXPECT_EQ(mdlgetslack(c1), 0.5);
  EXPECT_EQ(mdlgetslack(c2), 3.0);
  EXPECT_EQ(mdlgetdual(c1), -1.0);
  EXPECT_EQ(mdlgetdual(c2), 0.25);
  EXPECT_EQ(mdlgetrcost(y), 0.75);
  EXPECT_EQ(mdlgetrcost(x), 0.0);
  EXPECT_EQ(mdlgetdual(c1), -1.0);
  EXPECT_EQ(mdlgetslack(c1), 0.5);
  EXPECT_EQ(mdlgetrcost(y), 0.75);
  EXPECT_EQ(fake::calls_of("KVSLgetlpsol").size(), 4u);
  EXPECT_EQ(prob->solcache, MDL_SC_X | MDL_SC_DJ | MDL_SC_DUAL | MDL_SC_SLACK);
  EXPECT_TRUE(errors.empty());
  // A new solution: fetched again, into the same cache.
  double *cache = prob->solx;
  fake::set_vector("KVSLgetlpsol", "x", {3.0, 1.0});
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetsol(x), 3.0);
  EXPECT_EQ(mdlgetsol(y), 1.0);
  EXPECT_EQ(fake::calls_of("KVSLgetlpsol").size(), 5u);
  EXPECT_EQ(prob->solx, cache);
}

TEST_F(Solution, NoSolutionWarns) {
  model();
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);   // the engine holds no solution
  EXPECT_EQ(mdlgetsol(x), 0.0);
  expect_report(1520, 0, "(getsol) No solution available or problem modified since last solved.");
  EXPECT_EQ(mdlgetslack(c1), 0.0);
  expect_report(1520, 0, "(getslack) No solution available or problem modified since last solved.");
  EXPECT_EQ(mdlgetdual(c1), 0.0);
  expect_report(1520, 0, "(getdual) No solution available or problem modified since last solved.");
  EXPECT_EQ(mdlgetrcost(x), 0.0);
  expect_report(1520, 0, "(getrcost) No solution available or problem modified since last solved.");
  EXPECT_EQ(mdlgetact(c1), 0.0);
  expect_report(1520, 0, "(getact) No solution available or problem modified since last solved.");
  EXPECT_TRUE(fake::calls_of("KVSLgetlpsol").empty());
}

TEST_F(Solution, ModelChangeWarnsButUnloadedVariablesAnswer) {
  solved_lp();
  prob->status |= MDL_ST_MODIFIED;
  EXPECT_EQ(mdlgetsol(x), 0.0);
  expect_report(1520, 0, "(getsol) No solution available or problem modified since last solved.");
  errors.reports.clear();
  EXPECT_EQ(mdlgetsol(z), 2.0);
  EXPECT_TRUE(errors.empty());
  EXPECT_TRUE(fake::calls_of("KVSLgetlpsol").empty());
}

TEST_F(Solution, ObjectsOutsideTheMatrix) {
  solved_lp();
  MDLvar fresh = var("fresh", MDL_CONTINUOUS, -7, -3);
  MDLctr n = ctr(prob, "n", MDL_CTR_N);
  prob->status &= ~static_cast<uint32_t>(MDL_ST_MODIFIED);
  EXPECT_EQ(mdlgetsol(z), 2.0);
  EXPECT_EQ(mdlgetsol(fresh), -3.0);
  EXPECT_EQ(mdlgetrcost(z), 0.0);
  EXPECT_EQ(mdlgetslack(n), 0.0);
  EXPECT_EQ(mdlgetdual(n), 0.0);
  EXPECT_TRUE(errors.empty());
  EXPECT_TRUE(fake::calls().empty());
}

TEST_F(Solution, MipSolutionHasNoDualsOrReducedCosts) {
  solved_mip();
  EXPECT_EQ(mdlgetdual(c1), 0.0);
  EXPECT_EQ(mdlgetdual(c2), 0.0);
  EXPECT_EQ(mdlgetrcost(x), 0.0);
  EXPECT_EQ(mdlgetrcost(y), 0.0);
  EXPECT_TRUE(fake::calls().empty());
  EXPECT_EQ(mdlgetsol(y), 2.0);
  EXPECT_EQ(mdlgetslack(c1), 1.0);
  EXPECT_EQ(mdlgetsol(x), 1.0);
  const auto fetches = fake::calls_of("KVSLgetmipsol");
  ASSERT_EQ(fetches.size(), 2u);
  EXPECT_TRUE(fetches[0].is_null("slack"));
  EXPECT_TRUE(fetches[1].is_null("x"));
  EXPECT_TRUE(fake::calls_of("KVSLgetlpsol").empty());
  EXPECT_EQ(mdlgetobjval_prob(prob), 5.0);
}

TEST_F(Solution, OutsideMipSolutionSlackIsComputed) {
  solved_mip();
  prob->status |= MDL_ST_OUTSIDESOL;
  // c1: x + y <= 4 with x = 1, y = 2; c2: x - y >= -2.
  EXPECT_EQ(mdlgetslack(c1), 1.0);
  EXPECT_EQ(mdlgetslack(c2), -1.0);
  EXPECT_EQ(mdlgetact(c1), 3.0);
  EXPECT_EQ(fake::calls_of("KVSLgetmipsol").size(), 1u);
  EXPECT_TRUE(fake::calls_of("KVSLgetmipsol")[0].is_null("slack"));
}

TEST_F(Solution, ActivityFromSlackOrFromTerms) {
  solved_lp();
  EXPECT_EQ(mdlgetact(c1), 3.5);
  EXPECT_EQ(mdlgetact(c2), -5.0);
  // A constraint without a row is summed over its terms: 2xy + z, with z
  // at its value nearest to 0.
  MDLctr n = ctr(prob, "n", MDL_CTR_N);
  qterm(n, x, y, 2);
  term(n, z, 1);
  prob->status &= ~static_cast<uint32_t>(MDL_ST_MODIFIED);
  EXPECT_EQ(mdlgetact(n), 2 * 1.5 * 2.5 + 2.0);
  EXPECT_EQ(fake::calls_of("KVSLgetlpsol").size(), 2u);
}

TEST_F(Solution, ObjectiveValue) {
  solved_lp();
  EXPECT_EQ(mdlgetobjval_prob(prob), 6.5);
  prob->status |= MDL_ST_MODIFIED;
  EXPECT_EQ(mdlgetobjval_prob(prob), 0.0);
  expect_report(1520, 0, "(getobjval) No solution available or problem modified since last solved.");
  // Unchanged but not taken over: the engine is asked.
  prob->status &= ~static_cast<uint32_t>(MDL_ST_MODIFIED | MDL_ST_SOLUTION);
  fake::set_dbl_attrib(KVSL_ATTR_LPOBJVAL, 8.0);
  errors.reports.clear();
  EXPECT_EQ(mdlgetobjval_prob(prob), 8.0);
  EXPECT_EQ(prob->objval, 8.0);
  fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, KVSL_MIP_SOLUTION);
  fake::set_dbl_attrib(KVSL_ATTR_MIPOBJVAL, 9.0);
  EXPECT_EQ(mdlgetobjval_prob(prob), 9.0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(prob->status & MDL_ST_SOLUTION, 0u);
  fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, KVSL_MIP_INFEAS);
  fake::set_int_attrib(KVSL_ATTR_PRESOLVESTATE, 0);
  EXPECT_EQ(mdlgetobjval_prob(prob), 0.0);
  expect_report(1520, 0, "(getobjval) No solution available or problem modified since last solved.");
  EXPECT_EQ(prob->objval, 0.0);
  fake::fail_call("KVSLgetintattrib", 1, 4);
  EXPECT_EQ(mdlgetobjval_prob(prob), 0.0);
  expect_report(1521, 1, "Korvex-Optimizer error getting objective function value.");
  fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, KVSL_MIP_SOLUTION);
  fake::fail_call("KVSLgetdblattrib", 1, 4);
  EXPECT_EQ(mdlgetobjval_prob(prob), 0.0);
  expect_report(1521, 1, "Korvex-Optimizer error getting objective function value.");
}

TEST_F(Solution, EngineFailureWhileFetchingReports1524) {
  solved_lp();
  fake::fail_call("KVSLgetlpsol", 1, 6);
  EXPECT_EQ(mdlgetsol(x), 0.0);
  expect_report(1524, 1, "(getsol) Korvex-Optimizer error 6 during 'getlpsol'. Return value: 6.");
  EXPECT_EQ(prob->solcache & MDL_SC_X, 0);
  EXPECT_EQ(mdlgetsol(x), 1.5);   // tried again, not served from a bad cache
  fake::fail_call("KVSLgetlpsol", 1, 6);
  EXPECT_EQ(mdlgetdual(c1), 0.0);
  expect_report(1524, 1, "(getdual) Korvex-Optimizer error 6 during 'getlpsol'. Return value: 6.");
  fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, KVSL_MIP_OPTIMAL);
  ASSERT_EQ(mdlmipoptimize_prob(prob, ""), 0);
  fake::fail_call("KVSLgetmipsol", 1, 6);
  EXPECT_EQ(mdlgetslack(c1), 0.0);
  expect_report(1524, 1, "(getslack) Korvex-Optimizer error 6 during 'getmipsol'. Return value: 6.");
}

TEST_F(Solution, CacheAllocationFailureReports1502) {
  solved_lp();
  void *(*saved)(size_t) = mdlsl_malloc;
  mdlsl_malloc = [](size_t) -> void * { return nullptr; };
  const double v = mdlgetsol(x);
  mdlsl_malloc = saved;
  EXPECT_EQ(v, 0.0);
  expect_report(1502, 1, "Not enough memory.");
  EXPECT_EQ(mdlgetsol(x), 1.5);
}

TEST_F(Solution, RangingIsComputedOnceAndMapsCodes) {
  solved_lp();
  const string rng = string(mdlgetprobname_prob(prob)) + ".rng";
  FILE *f = fopen(rng.c_str(), "w");
  ASSERT_NE(f, nullptr);
  fclose(f);
  fake::set_vector("KVSLgetrowrange", "upact", {10, 11});
  fake::set_vector("KVSLgetrowrange", "loact", {12, 13});
  fake::set_vector("KVSLgetrowrange", "uup", {14, 15});
  fake::set_vector("KVSLgetrowrange", "udn", {16, 17});
  fake::set_vector("KVSLgetcolrange", "upact", {20, 21});
  fake::set_vector("KVSLgetcolrange", "loact", {22, 23});
  fake::set_vector("KVSLgetcolrange", "uup", {24, 25});
  fake::set_vector("KVSLgetcolrange", "udn", {26, 27});
  fake::set_vector("KVSLgetcolrange", "ucost", {28, 29});
  fake::set_vector("KVSLgetcolrange", "lcost", {30, 31});
  EXPECT_EQ(mdlgetvarrng(x, MDL_RNG_UCOST), 28.0);
  EXPECT_EQ(access(rng.c_str(), F_OK), -1);
  for (int k = 0; k < 6; ++k) EXPECT_EQ(mdlgetvarrng(y, k), 21.0 + 2 * k) << k;
  for (int k = 0; k < 4; ++k) EXPECT_EQ(mdlgetctrrng(c1, k), 11.0 + 2 * k) << k;
  EXPECT_EQ(mdlgetctrrng(c2, MDL_RNG_LOACT), 12.0);
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLrange", "KVSLgetrowrange", "KVSLgetcolrange"}));
  // Codes out of range and objects outside the matrix: 0 without a message.
  EXPECT_EQ(mdlgetvarrng(x, 6), 0.0);
  EXPECT_EQ(mdlgetvarrng(x, -1), 0.0);
  EXPECT_EQ(mdlgetctrrng(c1, 4), 0.0);
  EXPECT_EQ(mdlgetvarrng(z, 0), 0.0);
  EXPECT_TRUE(errors.empty());
  // A new optimisation releases the block.
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_EQ(prob->rangeinfo, nullptr);
  EXPECT_EQ(mdlgetctrrng(c1, 0), 11.0);
  EXPECT_EQ(fake::calls_of("KVSLrange").size(), 2u);
}

TEST_F(Solution, RangingFailures) {
  solved_lp();
  fake::fail_call("KVSLrange", 1, 9);
  EXPECT_EQ(mdlgetvarrng(x, 0), 0.0);
  expect_report(1524, 1, "(getrng) Korvex-Optimizer error 9 during 'KVSLrange'. Return value: 9.");
  EXPECT_EQ(prob->rangeinfo, nullptr);
  fake::fail_call("KVSLgetrowrange", 1, 9);
  EXPECT_EQ(mdlgetvarrng(x, 0), 0.0);
  expect_report(1524, 1, "(getrng) Korvex-Optimizer error 9 during 'KVSLgetrowrange'. Return value: 9.");
  fake::fail_call("KVSLgetcolrange", 1, 9);
  EXPECT_EQ(mdlgetctrrng(c1, 0), 0.0);
  expect_report(1524, 1, "(getrng) Korvex-Optimizer error 9 during 'KVSLgetcolrange'. Return value: 9.");
  EXPECT_EQ(prob->rangeinfo, nullptr);
}

// The six solution-file pass-throughs.
struct file_case {
  const char *fn;
  const char *call;
  int (*api)(MDLprob, const char *, const char *);
  bool read;
};

class SolutionFile : public Solution, public ::testing::WithParamInterface<file_case> {};

TEST_P(SolutionFile, PassesThroughAndReportsFailure) {
  const file_case &c = GetParam();
  solved_lp();
  EXPECT_EQ(c.api(nullptr, "f", ""), 1);
  expect_report(1501, 1, string("(") + c.fn + ") No active problem.");
  fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, KVSL_MIP_OPTIMAL);
  fake::set_dbl_attrib(KVSL_ATTR_MIPOBJVAL, 2.5);
  EXPECT_EQ(c.api(prob, "sol.file", nullptr), 0);
  const fake::call r = fake::calls_of(c.call).at(0);
  EXPECT_EQ(r.s("file"), "sol.file");
  EXPECT_EQ(r.s("flags"), "");
  if (c.read) {
    EXPECT_EQ(prob->solcache, MDL_SC_MIP);
    EXPECT_EQ(prob->objval, 2.5);
  } else {
    EXPECT_EQ(prob->objval, 6.5);
  }
  EXPECT_EQ(c.api(prob, "sol.file", "x"), 0);
  EXPECT_EQ(fake::calls_of(c.call).at(1).s("flags"), "x");
  fake::fail_call(c.call, 1, 7);
  EXPECT_EQ(c.api(prob, "sol.file", ""), 1);
  expect_report(1524, 1,
                string("(") + c.fn + ") Korvex-Optimizer error 7 during '" + c.fn +
                    "'. Return value: 7.");
}

INSTANTIATE_TEST_SUITE_P(
    Files, SolutionFile,
    ::testing::Values(file_case{"writesol", "KVSLwritesol", mdlwritesol_prob, false},
                      file_case{"writeprtsol", "KVSLwriteprtsol", mdlwriteprtsol_prob, false},
                      file_case{"writeslxsol", "KVSLwriteslxsol", mdlwriteslxsol_prob, false},
                      file_case{"writebinsol", "KVSLwritebinsol", mdlwritebinsol_prob, false},
                      file_case{"readbinsol", "KVSLreadbinsol", mdlreadbinsol_prob, true},
                      file_case{"readslxsol", "KVSLreadslxsol", mdlreadslxsol_prob, true}),
    [](const ::testing::TestParamInfo<file_case> &info) { return string(info.param.fn); });

}  // namespace
