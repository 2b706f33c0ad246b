/*
 * qcqp_test.cpp -- quadratic rows through the public interface and the real
 * engine: hand-built convex models with optima and duals derived by hand,
 * in both senses, and non-convex rows refused with LP status 8.
 */
#include <gtest/gtest.h>

#include "kvtl.h"
#include "support/public_model.h"

namespace {

constexpr int lp_optimal = 1, lp_nonconvex = 8;
constexpr int st_solution = 8;

using testsupport::objective;
using testsupport::row;

class Qcqp : public testsupport::public_problem_test,
             public ::testing::WithParamInterface<bool> {
 protected:
  // Optimise in the sense of the parameter (true: maximise).
  int optimise(bool maximise) { return maximise ? mdlmaxim_prob(prob, "") : mdlminim_prob(prob, ""); }
};

// Ball: optimise x + y subject to x^2 + y^2 <= 2.  Maximising: x = y = 1,
// value 2; minimising: x = y = -1, value -2.  With rhs r the optimum is
// +-sqrt(2r), so the dual (derivative by r) is +-1/sqrt(2r) = +-0.5 at r = 2;
// the reduced costs are 0 (the columns are interior to their bounds).
TEST_P(Qcqp, Ball) {
  const bool maximise = GetParam();
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, -10, 10);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, -10, 10);
  MDLctr ball = mdlnewctr_prob(prob, "ball", MDL_LEQ);
  ASSERT_EQ(mdladdqterm(ball, a, a, 1), 0);
  ASSERT_EQ(mdladdqterm(ball, b, b, 1), 0);
  ASSERT_EQ(mdladdterm(ball, nullptr, 2), 0);
  objective(prob, {{a, 1}, {b, 1}});
  ASSERT_EQ(optimise(maximise), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  const double s = maximise ? 1.0 : -1.0;
  EXPECT_NEAR(mdlgetobjval_prob(prob), 2.0 * s, 1e-7);
  EXPECT_NEAR(mdlgetsol(a), s, 1e-5);
  EXPECT_NEAR(mdlgetsol(b), s, 1e-5);
  EXPECT_NEAR(mdlgetslack(ball), 0.0, 1e-6);
  EXPECT_NEAR(mdlgetdual(ball), 0.5 * s, 1e-5);
  EXPECT_NEAR(mdlgetrcost(a), 0.0, 1e-5);
}

// Rotated cone with one side fixed, written as a convex quadratic row:
//   cone: x1^2 + x2^2 - 2 t y <= 0 with t = 1, budget: x1 + x2 >= 2.
// Minimise y (maximise -y): x1 = x2 = 1, y = 1.  With the cone's rhs r and
// the budget's b the optimum is y = (b^2/2 - r)/2: duals -1/2 (cone) and
// b/2 = 1 (budget) minimising, the negatives maximising -y.
TEST_P(Qcqp, RotatedCone) {
  const bool maximise = GetParam();
  MDLvar x1 = mdlnewvar_prob(prob, "x1", MDL_CONTINUOUS, -10, 10);
  MDLvar x2 = mdlnewvar_prob(prob, "x2", MDL_CONTINUOUS, -10, 10);
  MDLvar y = mdlnewvar_prob(prob, "y", MDL_CONTINUOUS, 0, 100);
  MDLctr cone = mdlnewctr_prob(prob, "cone", MDL_LEQ);
  ASSERT_EQ(mdladdqterm(cone, x1, x1, 1), 0);
  ASSERT_EQ(mdladdqterm(cone, x2, x2, 1), 0);
  ASSERT_EQ(mdladdterm(cone, y, -2), 0);
  MDLctr budget = row(prob, "budget", MDL_GEQ, {{x1, 1}, {x2, 1}}, 2);
  objective(prob, {{y, maximise ? -1.0 : 1.0}});
  ASSERT_EQ(optimise(maximise), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  const double s = maximise ? -1.0 : 1.0;
  EXPECT_NEAR(mdlgetobjval_prob(prob), s, 1e-7);
  EXPECT_NEAR(mdlgetsol(y), 1.0, 1e-6);
  EXPECT_NEAR(mdlgetsol(x1), 1.0, 1e-5);
  EXPECT_NEAR(mdlgetdual(cone), -0.5 * s, 1e-5);
  EXPECT_NEAR(mdlgetdual(budget), 1.0 * s, 1e-5);
  EXPECT_TRUE(errors.empty());
}

// The same cone as a 'G' row with a concave form: 2y - x1^2 - x2^2 >= 0.
// Its dual has the opposite sign of the 'L' form's (the rhs moves the
// other way): +1/2 minimising.
TEST_P(Qcqp, ConcaveGreaterRow) {
  const bool maximise = GetParam();
  MDLvar x1 = mdlnewvar_prob(prob, "x1", MDL_CONTINUOUS, -10, 10);
  MDLvar x2 = mdlnewvar_prob(prob, "x2", MDL_CONTINUOUS, -10, 10);
  MDLvar y = mdlnewvar_prob(prob, "y", MDL_CONTINUOUS, 0, 100);
  MDLctr cone = mdlnewctr_prob(prob, "cone", MDL_GEQ);
  ASSERT_EQ(mdladdqterm(cone, x1, x1, -1), 0);
  ASSERT_EQ(mdladdqterm(cone, x2, x2, -1), 0);
  ASSERT_EQ(mdladdterm(cone, y, 2), 0);
  row(prob, "budget", MDL_GEQ, {{x1, 1}, {x2, 1}}, 2);
  objective(prob, {{y, maximise ? -1.0 : 1.0}});
  ASSERT_EQ(optimise(maximise), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  const double s = maximise ? -1.0 : 1.0;
  EXPECT_NEAR(mdlgetobjval_prob(prob), s, 1e-7);
  EXPECT_NEAR(mdlgetdual(cone), 0.5 * s, 1e-5);
}

// Portfolio with a variance limit: returns 1 and 2, variances 1 and 4,
// independent; x1 + x2 = 1, x1^2 + 4 x2^2 <= 1, x >= 0.  Maximising the
// return: (1 - x2)^2 + 4 x2^2 = 1 gives x2 = 0.4, x1 = 0.6, return 1.4.
// With budget b and limit v the optimum is b + x2, x2 the larger root of
// 5 x2^2 - 2 b x2 + b^2 - v = 0, so d/dv = 0.5 and d/db = 1 - 0.6 = 0.4.
// Minimising the negated return gives -1.4 and the negated duals.
TEST_P(Qcqp, PortfolioWithVarianceLimit) {
  const bool maximise = GetParam();
  MDLvar x1 = mdlnewvar_prob(prob, "x1", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLvar x2 = mdlnewvar_prob(prob, "x2", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLctr budget = row(prob, "budget", MDL_EQ, {{x1, 1}, {x2, 1}}, 1);
  MDLctr risk = mdlnewctr_prob(prob, "risk", MDL_LEQ);
  ASSERT_EQ(mdladdqterm(risk, x1, x1, 1), 0);
  ASSERT_EQ(mdladdqterm(risk, x2, x2, 4), 0);
  ASSERT_EQ(mdladdterm(risk, nullptr, 1), 0);
  const double s = maximise ? 1.0 : -1.0;
  objective(prob, {{x1, s}, {x2, 2 * s}});
  ASSERT_EQ(optimise(maximise), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 1.4 * s, 1e-7);
  EXPECT_NEAR(mdlgetsol(x1), 0.6, 1e-6);
  EXPECT_NEAR(mdlgetsol(x2), 0.4, 1e-6);
  EXPECT_NEAR(mdlgetslack(risk), 0.0, 1e-6);
  EXPECT_NEAR(mdlgetdual(risk), 0.5 * s, 1e-5);
  EXPECT_NEAR(mdlgetdual(budget), 0.4 * s, 1e-5);
  EXPECT_TRUE(errors.empty());
}

INSTANTIATE_TEST_SUITE_P(Senses, Qcqp, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool> &i) {
                           return i.param ? std::string("Maximise") : std::string("Minimise");
                         });

class NonConvexRow : public testsupport::public_problem_test {};

// x^2 >= 1 (a 'G' row with a convex form) cuts a hole out of the line: not
// convex, status 8 and no solution, minimising and maximising.
TEST_F(NonConvexRow, ConvexFormOnGreaterRowIsRefused) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, -2, 2);
  MDLctr hole = mdlnewctr_prob(prob, "hole", MDL_GEQ);
  ASSERT_EQ(mdladdqterm(hole, a, a, 1), 0);
  ASSERT_EQ(mdladdterm(hole, nullptr, 1), 0);
  objective(prob, {{a, 1}});
  for (bool maximise : {false, true}) {
    ASSERT_EQ(maximise ? mdlmaxim_prob(prob, "") : mdlminim_prob(prob, ""), 0);
    EXPECT_EQ(mdlgetlpstat_prob(prob), lp_nonconvex);
    EXPECT_EQ(mdlgetprobstat_prob(prob) & st_solution, 0);
  }
}

// A quadratic equality (a circle) and an indefinite 'L' row (xy <= 1) are
// not convex either.
TEST_F(NonConvexRow, EqualityAndIndefiniteRowsAreRefused) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, -2, 2);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, -2, 2);
  MDLctr circle = mdlnewctr_prob(prob, "circle", MDL_EQ);
  ASSERT_EQ(mdladdqterm(circle, a, a, 1), 0);
  ASSERT_EQ(mdladdqterm(circle, b, b, 1), 0);
  ASSERT_EQ(mdladdterm(circle, nullptr, 1), 0);
  objective(prob, {{a, 1}});
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_nonconvex);
  ASSERT_EQ(mdlsetctrtype(circle, MDL_LEQ), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), -1.0, 1e-7);
  MDLctr saddle = mdlnewctr_prob(prob, "saddle", MDL_LEQ);
  ASSERT_EQ(mdladdqterm(saddle, a, b, 1), 0);
  ASSERT_EQ(mdladdterm(saddle, nullptr, 1), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_nonconvex);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & st_solution, 0);
}

}  // namespace
