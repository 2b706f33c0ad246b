/*
 * ranging_test.cpp -- ranging of a solution with quadratic parts: the
 * first-order quantities are the duals and reduced costs; the ranging
 * calls fail clearly (error 1524 with the engine's "unsupported" code) and
 * answer 0, for every code, without disturbing the solution.
 */
#include <gtest/gtest.h>

#include <string>

#include "kvtl.h"
#include "support/public_model.h"

namespace {

using testsupport::objective;
using testsupport::row;

class QuadraticRanging : public testsupport::public_problem_test {
 protected:
  // Every ranging code of the variable and the constraint answers 0 with
  // error 1524 for the engine's code 8.
  void expect_refused(MDLvar v, MDLctr c) {
    const std::string text =
        "(getrng) Korvex-Optimizer error 8 during 'KVSLrange'. Return value: 8.";
    for (int code = MDL_RNG_UPACT; code <= MDL_RNG_LCOST; ++code) {
      errors.reports.clear();
      EXPECT_EQ(mdlgetvarrng(v, code), 0.0);
      ASSERT_EQ(errors.reports.size(), 1u);
      EXPECT_EQ(errors.last().number, 1524);
      EXPECT_EQ(errors.last().iserror, 1);
      EXPECT_EQ(errors.last().text, text);
    }
    for (int code = MDL_RNG_UPACT; code <= MDL_RNG_UDN; ++code) {
      errors.reports.clear();
      EXPECT_EQ(mdlgetctrrng(c, code), 0.0);
      ASSERT_EQ(errors.reports.size(), 1u);
      EXPECT_EQ(errors.last().number, 1524);
      EXPECT_EQ(errors.last().text, text);
    }
    errors.reports.clear();
  }
};

// min x^2 + y^2, t: x + y >= 2: the dual 2 and the reduced costs 0 are the
// objective's rates of change; ranging is refused, the solution stays.
TEST_F(QuadraticRanging, QuadraticObjective) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, -10, 10);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, -10, 10);
  MDLctr t = row(prob, "t", MDL_GEQ, {{a, 1}, {b, 1}}, 2);
  MDLctr cost = objective(prob, {});
  ASSERT_EQ(mdladdqterm(cost, a, a, 1), 0);
  ASSERT_EQ(mdladdqterm(cost, b, b, 1), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetdual(t), 2.0, 1e-5);
  EXPECT_NEAR(mdlgetrcost(a), 0.0, 1e-5);
  expect_refused(a, t);
  EXPECT_NEAR(mdlgetsol(a), 1.0, 1e-5);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 2.0, 1e-7);
  EXPECT_TRUE(errors.empty());
}

// A linear objective with a quadratic row: refused the same way.
TEST_F(QuadraticRanging, QuadraticRow) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, -10, 10);
  MDLctr disc = row(prob, "disc", MDL_LEQ, {}, 4);
  ASSERT_EQ(mdladdqterm(disc, a, a, 1), 0);
  objective(prob, {{a, 1}});
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 2.0, 1e-7);
  expect_refused(a, disc);
}

// After a search of an integer QP there is no LP solution to range.
TEST_F(QuadraticRanging, AfterSearch) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_INTEGER, 0, 10);
  MDLctr r = row(prob, "r", MDL_LEQ, {{a, 1}}, 8);
  MDLctr cost = objective(prob, {{a, -3}});
  ASSERT_EQ(mdladdqterm(cost, a, a, 1), 0);
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), -2.0, 1e-7);
  errors.reports.clear();
  EXPECT_EQ(mdlgetvarrng(a, MDL_RNG_UPACT), 0.0);
  EXPECT_EQ(mdlgetctrrng(r, MDL_RNG_UUP), 0.0);
  EXPECT_FALSE(errors.empty());
  for (const auto &e : errors.reports) EXPECT_EQ(e.number, 1524);
}

}  // namespace
