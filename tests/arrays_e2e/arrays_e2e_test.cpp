/*
 * arrays_e2e_test.cpp -- models stated through index sets, arrays of
 * variables and the sum constructors, solved by the real engine; optima
 * worked out by hand in the comments.
 */
#include <gtest/gtest.h>

#include "kvsl.h"
#include "kvtl.h"
#include "support/public_model.h"

namespace {

// One problem at message level 1, errors returned and collected.
using ArraysE2E = testsupport::public_problem_test;

// Assignment of four workers to four jobs at least cost:
//          cut  weld paint pack
//   ann     9    2    7     8
//   bob     6    4    3     7
//   cid     5    8    1     8
//   dan     7    6    9     4
// Each row and each column holds one 1.  Of the 24 assignments the
// cheapest is ann-weld 2, bob-cut 6, cid-paint 1, dan-pack 4 = 13; the next
// costs 14.  Rows are sums over one array per worker; columns are sums over
// open arrays filled from them; the objective adds weighted array terms.
TEST_F(ArraysE2E, AssignmentThroughArraysAndSums) {
  const char *workers[] = {"ann", "bob", "cid", "dan"};
  const char *jobs[] = {"cut", "weld", "paint", "pack"};
  const double cost[4][4] = {{9, 2, 7, 8}, {6, 4, 3, 7}, {5, 8, 1, 8}, {7, 6, 9, 4}};
  MDLidxset w = mdlnewidxset_prob(prob, "workers", 4);
  MDLidxset j = mdlnewidxset_prob(prob, "jobs", 4);
  for (const char *n : workers) mdladdidxel(w, n);
  for (const char *n : jobs) mdladdidxel(j, n);
  ASSERT_EQ(mdlgetidxsetsize(w), 4);

  MDLarrvar x[4];
  for (int a = 0; a < 4; a++) {
    x[a] = mdlnewarrvar_prob(prob, 4, MDL_BINARY, mdlgetidxelname(w, a), 0, 1);
    ASSERT_NE(x[a], nullptr);
    ASSERT_NE(mdlnewsum_prob(prob, mdlnewname("one_job_%s", workers[a]), x[a], MDL_EQ, 1),
              nullptr);
  }
  for (int b = 0; b < 4; b++) {
    MDLarrvar col = mdlstartarrvar_prob(prob, 4, jobs[b]);
    ASSERT_NE(col, nullptr);
    for (int a = 0; a < 4; a++) ASSERT_EQ(mdlsetarrvarel(col, a, x[a][b]), 0);
    ASSERT_EQ(mdlendarrvar(col), 0);
    ASSERT_NE(mdlnewsum_prob(prob, mdlnewname("one_worker_%s", jobs[b]), col, MDL_EQ, 1),
              nullptr);
  }
  MDLctr obj = mdlnewctr_prob(prob, "cost", MDL_NONBINDING);
  for (int a = 0; a < 4; a++) ASSERT_EQ(mdladdarrterm(obj, x[a], cost[a]), 0);
  ASSERT_EQ(mdlsetobj_prob(prob, obj), 0);

  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetmipstat_prob(prob), KVSL_MIP_OPTIMAL);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 13, 1e-6);
  // The assignment, read back by names through the index sets and the
  // arrays found by name.
  const char *chosen[][2] = {{"ann", "weld"}, {"bob", "cut"}, {"cid", "paint"}, {"dan", "pack"}};
  for (auto &pair : chosen) {
    auto arr = static_cast<MDLarrvar>(mdlgetbyname_prob(prob, pair[0], MDL_KIND_ARRVAR));
    ASSERT_NE(arr, nullptr);
    int job = mdlgetidxel(j, pair[1]);
    for (int b = 0; b < 4; b++) EXPECT_NEAR(mdlgetsol(arr[b]), b == job ? 1 : 0, 1e-6);
    auto col = static_cast<MDLarrvar>(mdlgetbyname_prob(prob, pair[1], MDL_KIND_ARRVAR));
    ASSERT_NE(col, nullptr);
    EXPECT_NEAR(mdlgetsol(col[mdlgetidxel(w, pair[0])]), 1, 1e-6);
  }
  EXPECT_TRUE(errors.empty());
}

// max 3x0 + 5x1 + 6x2
//   rising: 1x0 + 2x1 + 3x2 <= 12   (sum with rising coefficients from 1)
//   total:   x0 +  x1 +  x2 <= 6    (plain sum)
//   0 <= x <= 4
// Optimum x = (1, 4, 1), value 29: both rows bind with duals 1.5 and 1.5
// (from the basic x0 and x2: y1 + y2 = 3, 3y1 + y2 = 6), and x1 at its
// upper bound has reduced cost 5 - (2 * 1.5 + 1.5) = 0.5 > 0.
TEST_F(ArraysE2E, LinearProgramThroughSumConstructors) {
  MDLarrvar x = mdlnewarrvar_prob(prob, 3, MDL_CONTINUOUS, "x", 0, 4);
  ASSERT_NE(x, nullptr);
  MDLctr rising = mdlnewsumc_prob(prob, "rising", x, MDL_LEQ, 1, 12);
  MDLctr total = mdlnewsum_prob(prob, "total", x, MDL_LEQ, 6);
  const double profit[] = {3, 5, 6};
  MDLctr obj = mdlnewarrsum_prob(prob, "profit", x, profit, MDL_NONBINDING, 0);
  ASSERT_NE(rising, nullptr);
  ASSERT_NE(total, nullptr);
  ASSERT_NE(obj, nullptr);
  ASSERT_EQ(mdlsetobj_prob(prob, obj), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), KVSL_LP_OPTIMAL);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 29, 1e-7);
  EXPECT_NEAR(mdlgetsol(x[0]), 1, 1e-7);
  EXPECT_NEAR(mdlgetsol(x[1]), 4, 1e-7);
  EXPECT_NEAR(mdlgetsol(x[2]), 1, 1e-7);
  EXPECT_NEAR(mdlgetdual(rising), 1.5, 1e-7);
  EXPECT_NEAR(mdlgetdual(total), 1.5, 1e-7);
  EXPECT_NEAR(mdlgetrcost(x[1]), 0.5, 1e-7);
  EXPECT_TRUE(errors.empty());
}

}  // namespace
