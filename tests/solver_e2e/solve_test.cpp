/*
 * solve_test.cpp -- the solver interface end to end: small models built in
 * the library, loaded into the real engine and solved, with optima worked
 * out by hand.
 */
#include <gtest/gtest.h>

#include <cmath>

#include "kvtl.h"
#include "solver/model_builder.h"
#include "support/messages.h"

using builder::ctr;
using builder::qterm;
using builder::term;

namespace {

class SolveE2E : public ::testing::Test {
 protected:
  void SetUp() override {
    mdlseterrctrl(0);
    errors.install();
    prob = mdlnewprob(nullptr);
    ASSERT_NE(prob, nullptr);
    mdlsetmsglevel_prob(prob, 1);
  }
  void TearDown() override {
    mdldelprob_prob(prob);
    mdldefcberr_prob(nullptr, nullptr, nullptr);
  }
  testsupport::error_log errors;
  MDLprob prob = nullptr;
};

// max 3x + 2y, x + y <= 4, x + 3y <= 9, 0 <= x <= 3, y >= 0: x = 3, y = 1.
TEST_F(SolveE2E, LinearProgram) {
  MDLvar x = mdlnewvar_prob(prob, "x", MDL_CONTINUOUS, 0, 3);
  MDLvar y = mdlnewvar_prob(prob, "y", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLctr c1 = ctr(prob, "c1", MDL_CTR_L, 4);
  term(c1, x, 1);
  term(c1, y, 1);
  MDLctr c2 = ctr(prob, "c2", MDL_CTR_L, 9);
  term(c2, x, 1);
  term(c2, y, 3);
  MDLctr obj = builder::objective(prob);
  term(obj, x, 3);
  term(obj, y, 2);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetlpstat_prob(prob), KVSL_LP_OPTIMAL);
  EXPECT_EQ(mdlgetprobstat_prob(prob), 9);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 11.0, 1e-7);
  EXPECT_NEAR(mdlgetsol(x), 3.0, 1e-7);
  EXPECT_NEAR(mdlgetsol(y), 1.0, 1e-7);
  EXPECT_NEAR(mdlgetslack(c1), 0.0, 1e-7);
  EXPECT_NEAR(mdlgetslack(c2), 3.0, 1e-7);
  EXPECT_NEAR(mdlgetact(c2), 6.0, 1e-7);
  // c1 binds: one more unit of its right-hand side is worth 2 (y's cost).
  EXPECT_NEAR(std::fabs(mdlgetdual(c1)), 2.0, 1e-7);
  EXPECT_NEAR(mdlgetdual(c2), 0.0, 1e-7);
}

// max 10a + 13b + 7c, 3a + 4b + 2c <= 6, binaries: b = c = 1, value 20.
TEST_F(SolveE2E, BinaryKnapsack) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_BINARY, 0, 1);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_BINARY, 0, 1);
  MDLvar c = mdlnewvar_prob(prob, "c", MDL_BINARY, 0, 1);
  MDLctr w = ctr(prob, "w", MDL_CTR_L, 6);
  term(w, a, 3);
  term(w, b, 4);
  term(w, c, 2);
  MDLctr obj = builder::objective(prob);
  term(obj, a, 10);
  term(obj, b, 13);
  term(obj, c, 7);
  ASSERT_EQ(mdlmaxim_prob(prob, "g"), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetmipstat_prob(prob), KVSL_MIP_OPTIMAL);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 20.0, 1e-6);
  EXPECT_NEAR(mdlgetsol(a), 0.0, 1e-6);
  EXPECT_NEAR(mdlgetsol(b), 1.0, 1e-6);
  EXPECT_NEAR(mdlgetsol(c), 1.0, 1e-6);
  EXPECT_NEAR(mdlgetslack(w), 0.0, 1e-6);
  EXPECT_EQ(mdlgetdual(w), 0.0);
  EXPECT_EQ(mdlgetrcost(a), 0.0);
}

// min x^2 + y^2 + 5, x + y >= 2: x = y = 1, value 7.
TEST_F(SolveE2E, ConvexQuadraticWithObjectiveConstant) {
  MDLvar x = mdlnewvar_prob(prob, "x", MDL_CONTINUOUS, -10, 10);
  MDLvar y = mdlnewvar_prob(prob, "y", MDL_CONTINUOUS, -10, 10);
  MDLctr c = ctr(prob, "c", MDL_CTR_G, 2);
  term(c, x, 1);
  term(c, y, 1);
  MDLctr obj = builder::objective(prob, 5);
  qterm(obj, x, x, 1);
  qterm(obj, y, y, 1);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetlpstat_prob(prob), KVSL_LP_OPTIMAL);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 7.0, 1e-5);
  EXPECT_NEAR(mdlgetsol(x), 1.0, 1e-4);
  EXPECT_NEAR(mdlgetsol(y), 1.0, 1e-4);
}

// The same model solved again after a bound change and after a model
// change: the second solve reloads, the values follow.
TEST_F(SolveE2E, ResolveAfterChanges) {
  MDLvar x = mdlnewvar_prob(prob, "x", MDL_CONTINUOUS, 1, 8);
  MDLctr obj = builder::objective(prob);
  term(obj, x, 1);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 1.0, 1e-9);
  ASSERT_EQ(mdlsetlb(x, 2), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetsol(x), 2.0, 1e-9);
  MDLctr c = ctr(prob, "c", MDL_CTR_G, 5);
  term(c, x, 1);
  EXPECT_EQ(mdlgetsol(x), 0.0);   // model changed: no solution until solved again
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetsol(x), 5.0, 1e-9);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 5.0, 1e-9);
}

}  // namespace
