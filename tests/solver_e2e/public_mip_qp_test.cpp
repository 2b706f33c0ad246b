/*
 * public_mip_qp_test.cpp -- integer and quadratic models built only through
 * the public interface and solved by the real engine: MIP solutions, fixing
 * the globals for duals, limits, convex and non-convex objectives, and the
 * six ways a matrix reaches the engine.
 */
#include <gtest/gtest.h>

#include <cmath>

#include <initializer_list>
#include <string>
#include <utility>

#include "kvtl.h"
#include "support/messages.h"
#include "support/public_model.h"

namespace {

constexpr int lp_optimal = 1, lp_nonconvex = 8;
constexpr int mip_infeasible = 5, mip_optimal = 6;
constexpr int st_loaded = 1, st_modified = 4, st_solution = 8;
constexpr double tol = 1e-6;

using testsupport::objective;
using testsupport::row;
using testsupport::terms;

class PublicMipQp : public testsupport::public_problem_test {
 protected:
  // The last report is error 1524 with this text.
  void expect_engine_error(const std::string &text) {
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors.last().number, 1524);
    EXPECT_EQ(errors.last().iserror, 1);
    EXPECT_EQ(errors.last().text, text);
  }
};

// max 10a + 13b + 7c, w: 3a + 4b + 2c <= 6, binaries.  Candidates: b + c
// (weight 6, value 20), a + c (5, 17), a alone 10, a + b too heavy: 20.
// A MIP solution has no duals and no reduced costs: both answer 0.
TEST_F(PublicMipQp, BinaryKnapsack) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_BINARY, 0, 1);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_BINARY, 0, 1);
  MDLvar c = mdlnewvar_prob(prob, "c", MDL_BINARY, 0, 1);
  MDLctr w = row(prob, "w", MDL_LEQ, {{a, 3}, {b, 4}, {c, 2}}, 6);
  objective(prob, {{a, 10}, {b, 13}, {c, 7}});
  ASSERT_EQ(mdlmaxim_prob(prob, "g"), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetmipstat_prob(prob), mip_optimal);
  EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded | st_solution);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 20.0, tol);
  EXPECT_NEAR(mdlgetsol(a), 0.0, tol);
  EXPECT_NEAR(mdlgetsol(b), 1.0, tol);
  EXPECT_NEAR(mdlgetsol(c), 1.0, tol);
  EXPECT_NEAR(mdlgetslack(w), 0.0, tol);
  EXPECT_NEAR(mdlgetact(w), 6.0, tol);
  EXPECT_EQ(mdlgetdual(w), 0.0);
  EXPECT_EQ(mdlgetrcost(a), 0.0);
  EXPECT_EQ(mdlgetrcost(b), 0.0);
  EXPECT_TRUE(errors.empty());

  // Without g the same call solves the LP relaxation: by value per weight
  // c (3.5), a (3.33) fill 5 of 6, the last unit takes b = 1/4: 20.25.
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 20.25, tol);
  EXPECT_NEAR(mdlgetsol(b), 0.25, tol);
  EXPECT_NEAR(mdlgetdual(w), 3.25, tol);
}

// An integer column whose LP relaxation is fractional.
//   max 5i + 4y, r1: i + y <= 3.5, r2: y <= 2, i integer in [0, 10], y >= 0.
// Relaxation: i = 3.5, y = 0, value 17.5.  MIP: i = 3 leaves y = 0.5,
// value 17; i = 2 gives 10 + 6 = 16.  With i fixed at 3 the LP has y = 0.5
// basic, r1 binding with dual 4 (y's cost), r2 slack 1.5 and dual 0, and
// reduced cost of i = 5 - 1 * 4 = 1.
TEST_F(PublicMipQp, FixGlobalsThenLinearProgramForDuals) {
  MDLvar i = mdlnewvar_prob(prob, "i", MDL_INTEGER, 0, 10);
  MDLvar y = mdlnewvar_prob(prob, "y", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLctr r1 = row(prob, "r1", MDL_LEQ, {{i, 1}, {y, 1}}, 3.5);
  MDLctr r2 = row(prob, "r2", MDL_LEQ, {{y, 1}}, 2);
  objective(prob, {{i, 5}, {y, 4}});
  ASSERT_EQ(mdlsetsense_prob(prob, 1), 0);

  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 17.5, tol);
  EXPECT_NEAR(mdlgetsol(i), 3.5, tol);

  ASSERT_EQ(mdlmipoptimize_prob(prob, ""), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetmipstat_prob(prob), mip_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 17.0, tol);
  EXPECT_NEAR(mdlgetsol(i), 3.0, tol);
  EXPECT_NEAR(mdlgetsol(y), 0.5, tol);
  EXPECT_NEAR(mdlgetslack(r2), 1.5, tol);
  EXPECT_EQ(mdlgetdual(r1), 0.0);
  EXPECT_EQ(mdlgetrcost(i), 0.0);

  ASSERT_EQ(mdlfixglobals_prob(prob, 1), 0);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & (st_solution | st_modified), 0);
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 17.0, tol);
  EXPECT_NEAR(mdlgetsol(i), 3.0, tol);
  EXPECT_NEAR(mdlgetsol(y), 0.5, tol);
  EXPECT_NEAR(mdlgetdual(r1), 4.0, tol);
  EXPECT_NEAR(mdlgetdual(r2), 0.0, tol);
  EXPECT_NEAR(mdlgetrcost(i), 1.0, tol);
  EXPECT_NEAR(mdlgetrcost(y), 0.0, tol);
}

// 2n = 3 has the fractional solution 1.5 but no integer one: MIP status 5
// and no solution.
TEST_F(PublicMipQp, InfeasibleMip) {
  MDLvar n = mdlnewvar_prob(prob, "n", MDL_INTEGER, 0, 10);
  row(prob, "odd", MDL_EQ, {{n, 2}}, 3);
  objective(prob, {{n, 1}});
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetmipstat_prob(prob), mip_infeasible);
  EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded);
  EXPECT_EQ(mdlgetsol(n), 0.0);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().number, 1520);
}

// A lower bound of +infinity (the library's 1e+20, which it stores as
// given) is a bound no value meets: the engine refuses the search with its
// code 11 rather than hand it to the simplex, which aborted the process on
// it.  Back to a finite bound, the model solves.
TEST_F(PublicMipQp, LowerBoundOfInfinityIsAnEngineError) {
  MDLvar n = mdlnewvar_prob(prob, "n", MDL_INTEGER, 0, 10);
  MDLvar x = mdlnewvar_prob(prob, "x", MDL_CONTINUOUS, 1e20, 1e20);
  row(prob, "r", MDL_LEQ, {{n, 2}, {x, 1}}, 30);
  objective(prob, {{n, 1}, {x, 1}});
  EXPECT_EQ(mdlmaxim_prob(prob, "g"), 1);
  expect_engine_error("(maxim) Korvex-Optimizer error 11 during 'maxim'. Return value: 11.");
  EXPECT_EQ(mdlgetprobstat_prob(prob) & st_solution, 0);
  errors.reports.clear();
  ASSERT_EQ(mdlsetlb(x, 1), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, "g"), 0);
  EXPECT_TRUE(errors.empty()) << errors.last().text;
  EXPECT_EQ(mdlgetmipstat_prob(prob), mip_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 30.0, tol);  // n = 0, x = 30
}

// The objective constant counts in MIP and relaxation values alike.
//   max a + b + 10 (the constant term -10 on the right-hand side),
//   a + 2b <= 5, a, b integer in [0, 4]: a = 4, b = 0 (or 3, 1): 14;
//   relaxation a = 4, b = 1/2: 14.5.
TEST_F(PublicMipQp, ObjectiveConstantInMipAndRelaxation) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_INTEGER, 0, 4);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_INTEGER, 0, 4);
  row(prob, "cap", MDL_LEQ, {{a, 1}, {b, 2}}, 5);
  MDLctr cost = objective(prob, {{a, 1}, {b, 1}});
  ASSERT_EQ(mdladdterm(cost, nullptr, -10), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, "g"), 0);
  EXPECT_EQ(mdlgetmipstat_prob(prob), mip_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 14.0, tol);
  EXPECT_NEAR(mdlgetsol(a) + mdlgetsol(b), 4.0, tol);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 14.5, tol);
  EXPECT_NEAR(mdlgetsol(b), 0.5, tol);
  EXPECT_TRUE(errors.empty());
}

// mdlsync_prob mode 3 takes the MIP solution over again.
TEST_F(PublicMipQp, SyncMipSolution) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_INTEGER, 0, 10);
  row(prob, "cap", MDL_LEQ, {{a, 2}}, 7);
  objective(prob, {{a, 1}});
  ASSERT_EQ(mdlmaxim_prob(prob, "g"), 0);  // a <= 3.5: a = 3
  ASSERT_EQ(mdlsync_prob(prob, 3), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded | st_solution);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 3.0, tol);
  EXPECT_NEAR(mdlgetsol(a), 3.0, tol);
}

// A limit change of a loaded problem goes to the engine directly (no
// regeneration); the LP relaxation still solves.  The engine cannot search
// partial integer entities and says so.
//   max p + q, p + q <= 6, p partial integer in [0, 10], q in [0, 2]:
//   relaxation value 6.
TEST_F(PublicMipQp, LimitChangeOfLoadedProblem) {
  MDLvar p = mdlnewvar_prob(prob, "p", MDL_PARTINT, 0, 10);
  MDLvar q = mdlnewvar_prob(prob, "q", MDL_CONTINUOUS, 0, 2);
  row(prob, "cap", MDL_LEQ, {{p, 1}, {q, 1}}, 6);
  objective(prob, {{p, 1}, {q, 1}});
  ASSERT_EQ(mdlsetlim(p, 2), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 6.0, tol);
  ASSERT_EQ(mdlsetlim(p, 5), 0);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & (st_loaded | st_modified), st_loaded);
  double lim = 0;
  ASSERT_EQ(mdlgetlim(p, &lim), 0);
  EXPECT_EQ(lim, 5.0);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 6.0, tol);
  EXPECT_TRUE(errors.empty());

  // The search keeps p integral below its limit 5: any p + q = 6 with p in
  // {4} (q = 2) or p >= 5 is optimal, value 6.
  ASSERT_EQ(mdlmaxim_prob(prob, "g"), 0);
  EXPECT_EQ(mdlgetmipstat_prob(prob), 6);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 6.0, tol);
  double pv = mdlgetsol(p);
  EXPECT_TRUE(pv >= 5.0 - tol || std::fabs(pv - std::round(pv)) < tol) << pv;
  EXPECT_TRUE(errors.empty());
}

// Convex objective with a cross term:
//   min x^2 + xy + 2y^2 - 4x - 5y,  s: x + y <= 10,  x, y in [-10, 10].
// Gradient zero: 2x + y = 4, x + 4y = 5, so x = 11/7, y = 6/7 (inside s),
// value -(4x + 5y)/2 = -37/7.  A doubled or halved cross term would move
// the optimum (to (1.5, 0.5) or elsewhere).
TEST_F(PublicMipQp, ConvexQuadraticWithCrossTerm) {
  MDLvar x = mdlnewvar_prob(prob, "x", MDL_CONTINUOUS, -10, 10);
  MDLvar y = mdlnewvar_prob(prob, "y", MDL_CONTINUOUS, -10, 10);
  MDLctr s = row(prob, "s", MDL_LEQ, {{x, 1}, {y, 1}}, 10);
  MDLctr cost = objective(prob, {{x, -4}, {y, -5}});
  ASSERT_EQ(mdladdqterm(cost, x, x, 1), 0);
  ASSERT_EQ(mdladdqterm(cost, x, y, 1), 0);
  ASSERT_EQ(mdladdqterm(cost, y, y, 2), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), -37.0 / 7.0, 1e-5);
  EXPECT_NEAR(mdlgetsol(x), 11.0 / 7.0, 1e-4);
  EXPECT_NEAR(mdlgetsol(y), 6.0 / 7.0, 1e-4);
  EXPECT_NEAR(mdlgetslack(s), 10.0 - 17.0 / 7.0, 1e-4);
  EXPECT_NEAR(mdlgetdual(s), 0.0, 1e-5);
}

// A binding row in a QP: min x^2 + y^2, t: x + y >= 2: x = y = 1, value 2;
// the multiplier is 2x = 2, so the dual of the >= row is 2.
TEST_F(PublicMipQp, QuadraticDualOfBindingRow) {
  MDLvar x = mdlnewvar_prob(prob, "x", MDL_CONTINUOUS, -10, 10);
  MDLvar y = mdlnewvar_prob(prob, "y", MDL_CONTINUOUS, -10, 10);
  MDLctr t = row(prob, "t", MDL_GEQ, {{x, 1}, {y, 1}}, 2);
  MDLctr cost = objective(prob, {});
  ASSERT_EQ(mdladdqterm(cost, x, x, 1), 0);
  ASSERT_EQ(mdladdqterm(cost, y, y, 1), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_NEAR(mdlgetobjval_prob(prob), 2.0, 1e-5);
  EXPECT_NEAR(mdlgetsol(x), 1.0, 1e-4);
  EXPECT_NEAR(mdlgetdual(t), 2.0, 1e-4);
}

// Minimising -x^2 is not convex: LP status 8 and no solution.  Maximising
// the same objective is concave, that is fine: max -x^2 on [1, 3] is -1.
TEST_F(PublicMipQp, NonConvexObjective) {
  MDLvar x = mdlnewvar_prob(prob, "x", MDL_CONTINUOUS, 1, 3);
  MDLctr cost = objective(prob, {});
  ASSERT_EQ(mdladdqterm(cost, x, x, -1), 0);
  EXPECT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_nonconvex);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & st_solution, 0);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), -1.0, 1e-5);
  EXPECT_NEAR(mdlgetsol(x), 1.0, 1e-5);
}

// A quadratic constraint: min -x, disc: x^2 <= 4, x in [0, 10]: x = 2,
// value -2; the row is binding with dual d(-sqrt(r))/dr = -1/(2 sqrt(r)) =
// -1/4.
TEST_F(PublicMipQp, QuadraticConstraintIsSolved) {
  MDLvar x = mdlnewvar_prob(prob, "x", MDL_CONTINUOUS, 0, 10);
  MDLctr disc = mdlnewctr_prob(prob, "disc", MDL_LEQ);
  ASSERT_EQ(mdladdqterm(disc, x, x, 1), 0);
  ASSERT_EQ(mdladdterm(disc, nullptr, 4), 0);
  objective(prob, {{x, -1}});
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), -2.0, 1e-7);
  EXPECT_NEAR(mdlgetsol(x), 2.0, 1e-6);
  EXPECT_NEAR(mdlgetdual(disc), -0.25, 1e-5);
}

// The six load calls, each chosen by the model's features, through the
// real engine.
TEST_F(PublicMipQp, SixLoadCalls) {
  // Linear: min a, a >= 1.5: 1.5.
  {
    MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, 0, 10);
    row(prob, "ra", MDL_GEQ, {{a, 1}}, 1.5);
    objective(prob, {{a, 1}});
    ASSERT_EQ(mdlminim_prob(prob, ""), 0);
    EXPECT_NEAR(mdlgetobjval_prob(prob), 1.5, tol);
    EXPECT_TRUE(errors.empty());
  }
  // Quadratic objective: min (a - 2)^2 - 4 = a^2 - 4a, a <= 8 (row):
  // a = 2, value -4.
  {
    MDLprob q = mdlnewprob(nullptr);
    mdlsetmsglevel_prob(q, 1);
    MDLvar a = mdlnewvar_prob(q, "a", MDL_CONTINUOUS, 0, 10);
    row(q, "ra", MDL_LEQ, {{a, 1}}, 8);
    MDLctr cost = objective(q, {{a, -4}});
    ASSERT_EQ(mdladdqterm(cost, a, a, 1), 0);
    ASSERT_EQ(mdlminim_prob(q, ""), 0);
    EXPECT_NEAR(mdlgetobjval_prob(q), -4.0, 1e-5);
    EXPECT_NEAR(mdlgetsol(a), 2.0, 1e-4);
    EXPECT_TRUE(errors.empty());
    mdldelprob_prob(q);
  }
  // Global entities: min a, a >= 1.5, a integer: 2 (relaxation 1.5).
  {
    MDLprob g = mdlnewprob(nullptr);
    mdlsetmsglevel_prob(g, 1);
    MDLvar a = mdlnewvar_prob(g, "a", MDL_INTEGER, 0, 10);
    row(g, "ra", MDL_GEQ, {{a, 1}}, 1.5);
    objective(g, {{a, 1}});
    ASSERT_EQ(mdlminim_prob(g, ""), 0);
    EXPECT_NEAR(mdlgetobjval_prob(g), 1.5, tol);
    ASSERT_EQ(mdlminim_prob(g, "g"), 0);
    EXPECT_EQ(mdlgetmipstat_prob(g), mip_optimal);
    EXPECT_NEAR(mdlgetobjval_prob(g), 2.0, tol);
    EXPECT_TRUE(errors.empty());
    mdldelprob_prob(g);
  }
  // Entities and a quadratic objective: min a^2 - 3a, a <= 8 (row), a
  // integer.  The relaxation (a QP) gives a = 1.5, value -2.25; the search
  // finds a = 1 or 2, value -2.
  {
    MDLprob qg = mdlnewprob(nullptr);
    mdlsetmsglevel_prob(qg, 1);
    MDLvar a = mdlnewvar_prob(qg, "a", MDL_INTEGER, 0, 10);
    row(qg, "ra", MDL_LEQ, {{a, 1}}, 8);
    MDLctr cost = objective(qg, {{a, -3}});
    ASSERT_EQ(mdladdqterm(cost, a, a, 1), 0);
    ASSERT_EQ(mdllpoptimize_prob(qg, ""), 0);
    EXPECT_EQ(mdlgetlpstat_prob(qg), lp_optimal);
    EXPECT_NEAR(mdlgetobjval_prob(qg), -2.25, 1e-5);
    EXPECT_NEAR(mdlgetsol(a), 1.5, 1e-4);
    EXPECT_TRUE(errors.empty());
    ASSERT_EQ(mdlmipoptimize_prob(qg, ""), 0);
    EXPECT_EQ(mdlgetmipstat_prob(qg), mip_optimal);
    EXPECT_NEAR(mdlgetobjval_prob(qg), -2.0, 1e-7);
    EXPECT_TRUE(errors.empty());
    mdldelprob_prob(qg);
  }
  // Quadratic constraints with and without entities: max a, k: a^2 <= 9,
  // a in [0, 10]: a = 3 (also for an integer a).
  for (int type : {MDL_CONTINUOUS, MDL_INTEGER}) {
    errors.reports.clear();
    MDLprob qc = mdlnewprob(nullptr);
    mdlsetmsglevel_prob(qc, 1);
    MDLvar a = mdlnewvar_prob(qc, "a", type, 0, 10);
    MDLctr k = mdlnewctr_prob(qc, "k", MDL_LEQ);
    ASSERT_EQ(mdladdqterm(k, a, a, 1), 0);
    ASSERT_EQ(mdladdterm(k, nullptr, 9), 0);
    objective(qc, {{a, 1}});
    ASSERT_EQ(mdlmaxim_prob(qc, ""), 0);
    EXPECT_EQ(mdlgetlpstat_prob(qc), lp_optimal);
    EXPECT_NEAR(mdlgetobjval_prob(qc), 3.0, 1e-7);
    EXPECT_TRUE(errors.empty());
    mdldelprob_prob(qc);
  }
}

}  // namespace
