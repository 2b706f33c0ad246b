/*
 * convexity_test.cpp -- the engine's convexity decision on quadratic
 * objectives: singular and rounded semidefinite forms are solved, genuinely
 * indefinite ones are refused with LP status 8 and no solution.
 */
#include <gtest/gtest.h>

#include "kvtl.h"
#include "support/public_model.h"

namespace {

constexpr int lp_optimal = 1, lp_nonconvex = 8;
constexpr int st_solution = 8;

using testsupport::objective;
using testsupport::row;

class Convexity : public testsupport::public_problem_test {};

// (x - y)^2 + x is convex with a singular Q (eigenvalues 0 and 4): a
// Cholesky factorisation without pivot tolerance breaks down on it.
//   min x^2 - 2xy + y^2 + x,  s: x + y >= 2,  x, y in [0, 10].
// On s (y = 2 - x): (2x - 2)^2 + x has its minimum at 8x - 8 + 1 = 0,
// x = 7/8, y = 9/8, value 1/16 + 7/8 = 15/16.
TEST_F(Convexity, SingularSemidefiniteIsSolved) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, 0, 10);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, 0, 10);
  row(prob, "s", MDL_GEQ, {{a, 1}, {b, 1}}, 2);
  MDLctr cost = objective(prob, {{a, 1}});
  ASSERT_EQ(mdladdqterm(cost, a, a, 1), 0);
  ASSERT_EQ(mdladdqterm(cost, a, b, -2), 0);
  ASSERT_EQ(mdladdqterm(cost, b, b, 1), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 15.0 / 16.0, 1e-7);
  EXPECT_NEAR(mdlgetsol(a), 7.0 / 8.0, 1e-5);
  EXPECT_NEAR(mdlgetsol(b), 9.0 / 8.0, 1e-5);
  EXPECT_TRUE(errors.empty());
}

// A semidefinite form written with seven digits: (x + y + z)^2 / 3 with
// 1/3 rounded down and 2/3 rounded up, so Q = 0.6666667 J - 1e-7 I has the
// eigenvalue -1e-7 twice (relative to its entries -1.5e-7) instead of 0.
// min that + x - z on [-1, 1]^3: any point with x + y + z = t has about
// the value t^2/3 + x - z; x = -1, z = 1 and y = 0 give t = 0 and -2,
// the minimum up to the rounding since x - z >= -2 and t^2 >= 0.
TEST_F(Convexity, RoundedSemidefiniteIsSolved) {
  MDLvar v[3];
  for (int i = 0; i < 3; ++i) v[i] = mdlnewvar_prob(prob, nullptr, MDL_CONTINUOUS, -1, 1);
  MDLctr cost = objective(prob, {{v[0], 1}, {v[2], -1}});
  for (int i = 0; i < 3; ++i)
    for (int j = i; j < 3; ++j)
      ASSERT_EQ(mdladdqterm(cost, v[i], v[j], i == j ? 0.3333333 : 0.6666667), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), -2.0, 1e-6);
  EXPECT_NEAR(mdlgetsol(v[0]), -1.0, 1e-5);
  EXPECT_NEAR(mdlgetsol(v[2]), 1.0, 1e-5);
}

// x*y is indefinite (eigenvalues +-1/2) in either sense: status 8, no
// solution, in both senses.
TEST_F(Convexity, IndefiniteIsRefusedInBothSenses) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, -1, 1);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, -1, 1);
  MDLctr cost = objective(prob, {});
  ASSERT_EQ(mdladdqterm(cost, a, b, 1), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_nonconvex);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & st_solution, 0);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_nonconvex);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & st_solution, 0);
}

// A slightly negative direction that is not rounding: x^2 + y^2 - 2.01 xy
// has the eigenvalue -0.005 (relative 5e-3), refused.
TEST_F(Convexity, SmallButGenuineNegativeEigenvalueIsRefused) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, -1, 1);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, -1, 1);
  MDLctr cost = objective(prob, {});
  ASSERT_EQ(mdladdqterm(cost, a, a, 1), 0);
  ASSERT_EQ(mdladdqterm(cost, b, b, 1), 0);
  ASSERT_EQ(mdladdqterm(cost, a, b, -2.01), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_nonconvex);
}

}  // namespace
