/*
 * miqp_test.cpp -- mixed-integer models with a convex quadratic objective or
 * convex quadratic rows, searched by the real engine through the public
 * interface; optima checked by enumerating the integer points in the test
 * or derived by hand, with every kind of global entity.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "kvtl.h"
#include "support/public_model.h"

namespace {

constexpr int mip_optimal = 6, mip_infeasible = 5;

using testsupport::objective;
using testsupport::row;

class Miqp : public testsupport::public_problem_test {};

// f(x) = x1^2 + x2^2 + x3^2 + 0.8 x1 x2 - 0.5 x2 x3 - 0.8 x1 - 3.4 x2 + 1.2 x3
// (convex: Q = 2I plus small off-diagonal terms), x integer in [-2, 3],
// r1: x1 + x2 + x3 <= 2, r2: x1 - x3 >= -1.
double f3(int a, int b, int c) {
  return a * a + b * b + c * c + 0.8 * a * b - 0.5 * b * c - 0.8 * a - 3.4 * b + 1.2 * c;
}

// The least f3 over the integer points of the box that satisfy the rows.
double enumerate_f3() {
  double best = std::numeric_limits<double>::infinity();
  for (int a = -2; a <= 3; ++a)
    for (int b = -2; b <= 3; ++b)
      for (int c = -2; c <= 3; ++c)
        if (a + b + c <= 2 && a - c >= -1) best = std::min(best, f3(a, b, c));
  return best;
}

// The pure integer QP in both senses (maximising -f3).
TEST_F(Miqp, IntegerQpMatchesEnumeration) {
  for (bool maximise : {false, true}) {
    MDLprob p = mdlnewprob(nullptr);
    mdlsetmsglevel_prob(p, 1);
    MDLvar x[3];
    for (auto &v : x) v = mdlnewvar_prob(p, nullptr, MDL_INTEGER, -2, 3);
    row(p, "r1", MDL_LEQ, {{x[0], 1}, {x[1], 1}, {x[2], 1}}, 2);
    row(p, "r2", MDL_GEQ, {{x[0], 1}, {x[2], -1}}, -1);
    const double s = maximise ? -1.0 : 1.0;
    MDLctr cost = objective(p, {{x[0], -0.8 * s}, {x[1], -3.4 * s}, {x[2], 1.2 * s}});
    for (int i = 0; i < 3; ++i) ASSERT_EQ(mdladdqterm(cost, x[i], x[i], s), 0);
    ASSERT_EQ(mdladdqterm(cost, x[0], x[1], 0.8 * s), 0);
    ASSERT_EQ(mdladdqterm(cost, x[1], x[2], -0.5 * s), 0);
    ASSERT_EQ(maximise ? mdlmaxim_prob(p, "g") : mdlminim_prob(p, "g"), 0);
    EXPECT_EQ(mdlgetmipstat_prob(p), mip_optimal);
    const double want = s * enumerate_f3();
    EXPECT_NEAR(mdlgetobjval_prob(p), want, 1e-7);
    int v[3];
    for (int i = 0; i < 3; ++i) {
      double sol = mdlgetsol(x[i]);
      v[i] = static_cast<int>(std::lround(sol));
      EXPECT_NEAR(sol, v[i], 1e-9);
    }
    EXPECT_NEAR(s * f3(v[0], v[1], v[2]), want, 1e-9);
    mdldelprob_prob(p);
  }
  EXPECT_TRUE(errors.empty());
}

// A quadratic row over integers: max 3x + 2y + 4b subject to
// disc: x^2 + y^2 + 3b <= 12, sum: x + y + b <= 4, x, y integer in
// [-4, 4], b binary; and minimising the negated objective.
TEST_F(Miqp, IntegerQuadraticRowMatchesEnumeration) {
  double best = -std::numeric_limits<double>::infinity();
  for (int x = -4; x <= 4; ++x)
    for (int y = -4; y <= 4; ++y)
      for (int b = 0; b <= 1; ++b)
        if (x * x + y * y + 3 * b <= 12 && x + y + b <= 4) best = std::max(best, 3.0 * x + 2 * y + 4 * b);
  for (bool maximise : {true, false}) {
    MDLprob p = mdlnewprob(nullptr);
    mdlsetmsglevel_prob(p, 1);
    MDLvar x = mdlnewvar_prob(p, "x", MDL_INTEGER, -4, 4);
    MDLvar y = mdlnewvar_prob(p, "y", MDL_INTEGER, -4, 4);
    MDLvar b = mdlnewvar_prob(p, "b", MDL_BINARY, 0, 1);
    MDLctr disc = row(p, "disc", MDL_LEQ, {{b, 3}}, 12);
    ASSERT_EQ(mdladdqterm(disc, x, x, 1), 0);
    ASSERT_EQ(mdladdqterm(disc, y, y, 1), 0);
    row(p, "sum", MDL_LEQ, {{x, 1}, {y, 1}, {b, 1}}, 4);
    const double s = maximise ? 1.0 : -1.0;
    objective(p, {{x, 3 * s}, {y, 2 * s}, {b, 4 * s}});
    ASSERT_EQ(maximise ? mdlmaxim_prob(p, "g") : mdlminim_prob(p, "g"), 0);
    EXPECT_EQ(mdlgetmipstat_prob(p), mip_optimal);
    EXPECT_NEAR(mdlgetobjval_prob(p), s * best, 1e-7);
    double vx = mdlgetsol(x), vy = mdlgetsol(y), vb = mdlgetsol(b);
    EXPECT_LE(vx * vx + vy * vy + 3 * vb, 12 + 1e-6);
    mdldelprob_prob(p);
  }
  EXPECT_TRUE(errors.empty());
}

// Integer and continuous columns with a quadratic objective and a
// quadratic row: min (x - 2.6)^2 + (y - 1.3)^2 + z, x integer in [0, 5],
// y in [0, 5], z >= 0, lin: x + y <= 3.5, cone: y^2 - z <= 1.  At the
// optimum z = max(0, y^2 - 1); the test enumerates x and minimises over y
// on a grid of step 1e-5 (by hand: x = 2, y = 1, z = 0, 0.36 + 0.09).
TEST_F(Miqp, MixedModelMatchesEnumeration) {
  double best = std::numeric_limits<double>::infinity();
  for (int x = 0; x <= 5; ++x)
    for (int k = 0; k <= 500000; ++k) {
      double y = k * 1e-5;
      if (x + y > 3.5 + 1e-12) break;
      double z = std::max(0.0, y * y - 1.0);
      best = std::min(best, (x - 2.6) * (x - 2.6) + (y - 1.3) * (y - 1.3) + z);
    }
  MDLvar x = mdlnewvar_prob(prob, "x", MDL_INTEGER, 0, 5);
  MDLvar y = mdlnewvar_prob(prob, "y", MDL_CONTINUOUS, 0, 5);
  MDLvar z = mdlnewvar_prob(prob, "z", MDL_CONTINUOUS, 0, MDL_INFINITY);
  row(prob, "lin", MDL_LEQ, {{x, 1}, {y, 1}}, 3.5);
  MDLctr cone = row(prob, "cone", MDL_LEQ, {{z, -1}}, 1);
  ASSERT_EQ(mdladdqterm(cone, y, y, 1), 0);
  MDLctr cost = objective(prob, {{x, -5.2}, {y, -2.6}, {z, 1}});
  ASSERT_EQ(mdladdqterm(cost, x, x, 1), 0);
  ASSERT_EQ(mdladdqterm(cost, y, y, 1), 0);
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_EQ(mdlgetmipstat_prob(prob), mip_optimal);
  // The objective leaves out the constant 2.6^2 + 1.3^2 = 8.45.
  EXPECT_NEAR(mdlgetobjval_prob(prob) + 8.45, best, 1e-6);
  EXPECT_NEAR(mdlgetsol(x), 2.0, 1e-9);
  EXPECT_TRUE(errors.empty());
}

// Semi-continuous s in {0} u [2, 5]: min (s - 0.5)^2 - 1.5 s.  On [2, 5]
// the derivative 2s - 2.5 is positive, so s = 2 gives 2.25 - 3 = -0.75,
// better than s = 0 (0.25); the relaxation's s = 1.25 is in the gap.
TEST_F(Miqp, SemiContinuous) {
  MDLvar s = mdlnewvar_prob(prob, "s", MDL_SEMICONT, 0, 5);
  ASSERT_EQ(mdlsetlim(s, 2), 0);
  MDLctr cost = objective(prob, {{s, -2.5}});
  ASSERT_EQ(mdladdqterm(cost, s, s, 1), 0);
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_EQ(mdlgetmipstat_prob(prob), mip_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob) + 0.25, -0.75, 1e-7);
  EXPECT_NEAR(mdlgetsol(s), 2.0, 1e-7);
}

// Semi-continuous integer r in {0, 2, 3, ...}: min (r - 2.6)^2 gives r = 3
// (0.16); and min (r - 0.8)^2 gives r = 0 (0.64, against 1.44 at r = 2).
TEST_F(Miqp, SemiContinuousInteger) {
  MDLvar r = mdlnewvar_prob(prob, "r", MDL_SEMIINT, 0, 9);
  ASSERT_EQ(mdlsetlim(r, 2), 0);
  MDLctr cost = objective(prob, {{r, -5.2}});
  ASSERT_EQ(mdladdqterm(cost, r, r, 1), 0);
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_EQ(mdlgetmipstat_prob(prob), mip_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob) + 6.76, 0.16, 1e-7);
  EXPECT_NEAR(mdlgetsol(r), 3.0, 1e-9);
  ASSERT_EQ(mdlsetterm(cost, r, -1.6), 0);
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob) + 0.64, 0.64, 1e-7);
  EXPECT_NEAR(mdlgetsol(r), 0.0, 1e-9);
}

// Partial integer p, integer below 2.5 and continuous from there: min
// (p - 1.6)^2 gives p = 2 (0.16); min (p - 2.4)^2 gives p = 2.5 (0.01,
// against 0.16 at p = 2).
TEST_F(Miqp, PartialInteger) {
  MDLvar p = mdlnewvar_prob(prob, "p", MDL_PARTINT, 0, 10);
  ASSERT_EQ(mdlsetlim(p, 2.5), 0);
  MDLctr cost = objective(prob, {{p, -3.2}});
  ASSERT_EQ(mdladdqterm(cost, p, p, 1), 0);
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_EQ(mdlgetmipstat_prob(prob), mip_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob) + 2.56, 0.16, 1e-7);
  EXPECT_NEAR(mdlgetsol(p), 2.0, 1e-9);
  ASSERT_EQ(mdlsetterm(cost, p, -4.8), 0);
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob) + 5.76, 0.01, 1e-7);
  EXPECT_NEAR(mdlgetsol(p), 2.5, 1e-6);
}

// Sets: min sum (x_i - c_i)^2, x in [0, 1].  Type 1 with c = (0.5, 0.9,
// 0.7): one member may be non-zero, the best is the second (sum c^2 = 1.55
// less 0.81: 0.74).  Type 2 with c = (0.5, 0.9, 0.7, 0.6): two adjacent,
// the best pair is (0.9, 0.7): 1.91 - 1.30 = 0.61.
TEST_F(Miqp, SpecialOrderedSets) {
  for (int type : {MDL_SOS1, MDL_SOS2}) {
    MDLprob p = mdlnewprob(nullptr);
    mdlsetmsglevel_prob(p, 1);
    const double c[] = {0.5, 0.9, 0.7, 0.6};
    const int n = type == MDL_SOS1 ? 3 : 4;
    MDLsos set = mdlnewsos_prob(p, "set", type);
    MDLctr cost = objective(p, {});
    double constant = 0.0;
    MDLvar x[4];
    for (int i = 0; i < n; ++i) {
      x[i] = mdlnewvar_prob(p, nullptr, MDL_CONTINUOUS, 0, 1);
      ASSERT_EQ(mdladdsosel(set, x[i], i + 1), 0);
      ASSERT_EQ(mdladdterm(cost, x[i], -2 * c[i]), 0);
      ASSERT_EQ(mdladdqterm(cost, x[i], x[i], 1), 0);
      constant += c[i] * c[i];
    }
    ASSERT_EQ(mdlminim_prob(p, "g"), 0);
    EXPECT_EQ(mdlgetmipstat_prob(p), mip_optimal);
    EXPECT_NEAR(mdlgetobjval_prob(p) + constant, type == MDL_SOS1 ? 0.74 : 0.61, 1e-7);
    EXPECT_NEAR(mdlgetsol(x[1]), 0.9, 1e-6);
    EXPECT_NEAR(mdlgetsol(x[0]), 0.0, 1e-9);
    if (type == MDL_SOS1) EXPECT_NEAR(mdlgetsol(x[2]), 0.0, 1e-9);
    else EXPECT_NEAR(mdlgetsol(x[2]), 0.7, 1e-6);
    mdldelprob_prob(p);
  }
  EXPECT_TRUE(errors.empty());
}

// Indicator row: cap: x <= 1 when b = 1.  min (x - 3)^2 - 5b: b = 1 forces
// x = 1 (4 - 5 = -1), b = 0 leaves x = 3 (0): the optimum is b = 1, -1.
// With the reward 3 instead of 5, b = 0 wins (0 against 1).
TEST_F(Miqp, IndicatorRow) {
  MDLvar x = mdlnewvar_prob(prob, "x", MDL_CONTINUOUS, 0, 10);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_BINARY, 0, 1);
  MDLctr cap = row(prob, "cap", MDL_LEQ, {{x, 1}}, 1);
  ASSERT_EQ(mdlsetindicator(cap, 1, b), 0);
  MDLctr cost = objective(prob, {{x, -6}, {b, -5}});
  ASSERT_EQ(mdladdqterm(cost, x, x, 1), 0);
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_EQ(mdlgetmipstat_prob(prob), mip_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob) + 9, -1.0, 1e-7);
  EXPECT_NEAR(mdlgetsol(b), 1.0, 1e-9);
  EXPECT_NEAR(mdlgetsol(x), 1.0, 1e-6);
  ASSERT_EQ(mdlsetterm(cost, b, -3), 0);
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob) + 9, 0.0, 1e-7);
  EXPECT_NEAR(mdlgetsol(b), 0.0, 1e-9);
  EXPECT_NEAR(mdlgetsol(x), 3.0, 1e-6);
  EXPECT_TRUE(errors.empty());
}

// No integer point in the disc x^2 + y^2 <= 0.5 other than the origin, and
// the row x + y >= 0.5 excludes it: infeasible (the relaxation is not).
TEST_F(Miqp, InfeasibleIntegerQuadraticRow) {
  MDLvar x = mdlnewvar_prob(prob, "x", MDL_INTEGER, -3, 3);
  MDLvar y = mdlnewvar_prob(prob, "y", MDL_INTEGER, -3, 3);
  MDLctr disc = row(prob, "disc", MDL_LEQ, {}, 0.5);
  ASSERT_EQ(mdladdqterm(disc, x, x, 1), 0);
  ASSERT_EQ(mdladdqterm(disc, y, y, 1), 0);
  row(prob, "away", MDL_GEQ, {{x, 1}, {y, 1}}, 0.5);
  objective(prob, {{x, 1}});
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_EQ(mdlgetmipstat_prob(prob), mip_infeasible);
}

}  // namespace
