/*
 * public_lp_test.cpp -- linear programs built only through the public
 * interface and solved by the real engine, with optima, duals and reduced
 * costs worked out by hand; changes of bounds, sense and model afterwards.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <utility>

#include "kvtl.h"
#include "support/messages.h"
#include "support/public_model.h"

namespace {

// Engine status codes as the status getters return them.
constexpr int lp_optimal = 1, lp_infeasible = 2, lp_unbounded = 5;
// Problem status flags as mdlgetprobstat_prob returns them.
constexpr int st_loaded = 1, st_modified = 4, st_solution = 8;
constexpr double tol = 1e-7;

using testsupport::objective;
using testsupport::row;
using testsupport::terms;

using PublicLP = testsupport::public_problem_test;

// max 3x + 2y: x runs to its bound 3, then c1 leaves y = 1; value 11.
// c2: 3 + 3 = 6, slack 3.  Basis {y, slack of c2}: dual of c1 = cost of
// y / 1 = 2 (maximising, a binding <= row has a dual >= 0); reduced cost of
// x = 3 - 1 * 2 = 1 (at its upper bound), of y 0.
TEST_F(PublicLP, MaximiseValuesDualsReducedCosts) {
  build_small();
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded | st_solution);
  EXPECT_EQ(mdlgetsense_prob(prob), 1);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 11.0, tol);
  EXPECT_NEAR(mdlgetsol(x), 3.0, tol);
  EXPECT_NEAR(mdlgetsol(y), 1.0, tol);
  EXPECT_NEAR(mdlgetslack(c1), 0.0, tol);
  EXPECT_NEAR(mdlgetslack(c2), 3.0, tol);
  EXPECT_NEAR(mdlgetact(c1), 4.0, tol);
  EXPECT_NEAR(mdlgetact(c2), 6.0, tol);
  EXPECT_NEAR(mdlgetdual(c1), 2.0, tol);
  EXPECT_NEAR(mdlgetdual(c2), 0.0, tol);
  EXPECT_NEAR(mdlgetrcost(x), 1.0, tol);
  EXPECT_NEAR(mdlgetrcost(y), 0.0, tol);
  // The objective row is not a matrix row: it answers 0 without a message.
  EXPECT_EQ(mdlgetrownum(obj), -1);
  EXPECT_EQ(mdlgetdual(obj), 0.0);
  EXPECT_EQ(mdlgetslack(obj), 0.0);
  EXPECT_TRUE(errors.empty());
}

// min -3x - 2y is the same vertex with value -11; every derivative of the
// objective changes sign: dual of c1 -2 (minimising, a binding <= row has
// a dual <= 0), reduced cost of x -3 - 1 * (-2) = -1.
TEST_F(PublicLP, MinimiseMirrorsTheSigns) {
  build_small(-3, -2);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), -11.0, tol);
  EXPECT_NEAR(mdlgetdual(c1), -2.0, tol);
  EXPECT_NEAR(mdlgetdual(c2), 0.0, tol);
  EXPECT_NEAR(mdlgetrcost(x), -1.0, tol);
  EXPECT_NEAR(mdlgetrcost(y), 0.0, tol);
  EXPECT_TRUE(errors.empty());
}

// A binding >= row.  min 2a + 3b, g: a + b >= 5, 0 <= a <= 3, b >= 0:
// a = 3 (the cheaper one at its bound), b = 2, value 12.  Dual of g = 3
// (one more unit of rhs costs one more b); reduced cost of a = 2 - 3 = -1.
// Maximising -2a - 3b gives value -12, dual -3 and reduced cost +1.
TEST_F(PublicLP, GreaterEqualRowInBothSenses) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, 0, 3);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLctr g = row(prob, "g", MDL_GEQ, {{a, 1}, {b, 1}}, 5);
  MDLctr cost = objective(prob, {{a, 2}, {b, 3}});
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 12.0, tol);
  EXPECT_NEAR(mdlgetsol(a), 3.0, tol);
  EXPECT_NEAR(mdlgetsol(b), 2.0, tol);
  EXPECT_NEAR(mdlgetdual(g), 3.0, tol);
  EXPECT_NEAR(mdlgetrcost(a), -1.0, tol);
  EXPECT_NEAR(mdlgetslack(g), 0.0, tol);

  ASSERT_EQ(mdlsetterm(cost, a, -2), 0);
  ASSERT_EQ(mdlsetterm(cost, b, -3), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), -12.0, tol);
  EXPECT_NEAR(mdlgetdual(g), -3.0, tol);
  EXPECT_NEAR(mdlgetrcost(a), 1.0, tol);
  EXPECT_TRUE(errors.empty());
}

// Bound changes of a loaded, unchanged problem go to the engine at once:
// the problem stays loaded and unmodified, and the next solve gives the new
// optimum without generating the matrix again.
//   x <= 2:  c1 leaves y = 2 (c2: 2 + 6 = 8 <= 9), value 6 + 4 = 10.
//   x = 1:   c1 allows y = 3 but c2 only y = 8/3, value 3 + 16/3 = 25/3.
//   y >= 2.9 with y <= 8/3 from c2: infeasible.
TEST_F(PublicLP, BoundChangesGoToTheLoadedProblem) {
  build_small();
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  ASSERT_NEAR(mdlgetobjval_prob(prob), 11.0, tol);
  const int colx = mdlgetcolnum(x), coly = mdlgetcolnum(y);

  ASSERT_EQ(mdlsetub(x, 2), 0);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & (st_loaded | st_modified), st_loaded);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 10.0, tol);
  EXPECT_NEAR(mdlgetsol(x), 2.0, tol);
  EXPECT_NEAR(mdlgetsol(y), 2.0, tol);

  ASSERT_EQ(mdlfixvar(x, 1), 0);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & (st_loaded | st_modified), st_loaded);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 25.0 / 3.0, tol);
  EXPECT_NEAR(mdlgetsol(x), 1.0, tol);
  EXPECT_NEAR(mdlgetsol(y), 8.0 / 3.0, tol);
  EXPECT_NEAR(mdlgetslack(c2), 0.0, tol);

  ASSERT_EQ(mdlsetlb(y, 2.9), 0);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & (st_loaded | st_modified), st_loaded);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_infeasible);
  EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded);

  // Back to a feasible bound: solvable again, still the same columns.
  ASSERT_EQ(mdlsetlb(y, 0), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 25.0 / 3.0, tol);
  EXPECT_EQ(mdlgetcolnum(x), colx);
  EXPECT_EQ(mdlgetcolnum(y), coly);
  EXPECT_TRUE(errors.empty());
}

// A refused bound (lower above upper) reports 1530 and changes nothing.
TEST_F(PublicLP, InconsistentBoundIsRefused) {
  build_small();
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_EQ(mdlsetlb(x, 4), 1);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().number, 1530);
  EXPECT_EQ(errors.last().iserror, 1);
  EXPECT_EQ(errors.last().text, "(setlb) Inconsistent bounds for variable 'x' (4,3).");
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 11.0, tol);
}

// The sense of a loaded problem changes in the engine at once: maximising
// gives 11 as above, minimising 3x + 2y the origin with value 0.
TEST_F(PublicLP, SenseChangeOfLoadedProblem) {
  build_small();
  ASSERT_EQ(mdlsetsense_prob(prob, 1), 0);
  ASSERT_EQ(mdlsolve_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 11.0, tol);
  ASSERT_EQ(mdlsetsense_prob(prob, 0), 0);
  EXPECT_EQ(mdlgetsense_prob(prob), 0);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & (st_loaded | st_modified), st_loaded);
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 0.0, tol);
  EXPECT_NEAR(mdlgetsol(x), 0.0, tol);
  EXPECT_NEAR(mdlgetsol(y), 0.0, tol);
  ASSERT_EQ(mdlsetsense_prob(prob, 1), 0);
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 11.0, tol);
  EXPECT_TRUE(errors.empty());
}

// x + y >= 5 and x + y <= 3 cannot both hold: LP status 2, no solution.
TEST_F(PublicLP, InfeasibleStatus) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, 0, MDL_INFINITY);
  row(prob, "lo", MDL_GEQ, {{a, 1}, {b, 1}}, 5);
  row(prob, "hi", MDL_LEQ, {{a, 1}, {b, 1}}, 3);
  objective(prob, {{a, 1}, {b, 1}});
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_infeasible);
  EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetsol(a), 0.0);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().number, 1520);
  EXPECT_EQ(errors.last().iserror, 0);
  EXPECT_EQ(errors.last().text,
            "(getsol) No solution available or problem modified since last solved.");
}

// min -a with a - b <= 1 and a, b >= 0: a grows with b for ever, status 5.
TEST_F(PublicLP, UnboundedStatus) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, 0, MDL_INFINITY);
  row(prob, "r", MDL_LEQ, {{a, 1}, {b, -1}}, 1);
  objective(prob, {{a, -1}});
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_unbounded);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & st_solution, 0);
  EXPECT_TRUE(errors.empty());
}

// Equality row, free variable, range row and objective constant together.
//   min x + 2y + z + k,  e: x + y = 4,  r: 1 <= y - z <= 3,
//   x, y >= 0, z free.
// z is free and cheap, so it goes as low as r allows: z = y - 3, and the
// objective becomes x + 3y - 3 + k on x + y = 4: y = 0, x = 4, z = -3,
// value 1 + k.  A term without variable adds to the right-hand side, and
// the objective reads terms + constant = terms - rhs: adding -5 gives
// k = 5, value 6.  Duals: e 1 (x follows its rhs), r -1 (its upper end
// binds, z follows it down); reduced cost of y = 2 - (1 - 1) = 2.
TEST_F(PublicLP, EqualityRangeFreeVariableAndConstant) {
  MDLvar vx = mdlnewvar_prob(prob, "x", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLvar vy = mdlnewvar_prob(prob, "y", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLvar vz = mdlnewvar_prob(prob, "z", MDL_CONTINUOUS, -MDL_INFINITY, MDL_INFINITY);
  MDLctr e = row(prob, "e", MDL_EQ, {{vx, 1}, {vy, 1}}, 4);
  MDLctr r = mdlnewctr_prob(prob, "r", MDL_LEQ);
  ASSERT_EQ(mdladdterm(r, vy, 1), 0);
  ASSERT_EQ(mdladdterm(r, vz, -1), 0);
  ASSERT_EQ(mdlsetrange(r, 1, 3), 0);
  EXPECT_EQ(mdlgetctrtype(r), MDL_RANGE);
  EXPECT_EQ(mdlgetrhs(r), 3.0);
  MDLctr cost = objective(prob, {{vx, 1}, {vy, 2}, {vz, 1}});
  ASSERT_EQ(mdladdterm(cost, nullptr, -5), 0);
  EXPECT_EQ(mdlgetrhs(cost), -5.0);

  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 6.0, tol);
  EXPECT_NEAR(mdlgetsol(vx), 4.0, tol);
  EXPECT_NEAR(mdlgetsol(vy), 0.0, tol);
  EXPECT_NEAR(mdlgetsol(vz), -3.0, tol);
  EXPECT_NEAR(mdlgetact(r), 3.0, tol);
  EXPECT_NEAR(mdlgetslack(r), 0.0, tol);
  EXPECT_NEAR(mdlgetact(e), 4.0, tol);
  EXPECT_NEAR(mdlgetslack(e), 0.0, tol);
  EXPECT_NEAR(mdlgetdual(e), 1.0, tol);
  EXPECT_NEAR(mdlgetdual(r), -1.0, tol);
  EXPECT_NEAR(mdlgetrcost(vy), 2.0, tol);
  EXPECT_NEAR(mdlgetrcost(vx), 0.0, tol);
  EXPECT_NEAR(mdlgetrcost(vz), 0.0, tol);

  // Narrowing the range to the single value 2 makes r an equality:
  // z = y - 2, objective x + 3y - 2 + 5 = 7 at y = 0.
  ASSERT_EQ(mdlsetrange(r, 2, 2), 0);
  EXPECT_EQ(mdlgetctrtype(r), MDL_EQ);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 7.0, tol);
  EXPECT_NEAR(mdlgetsol(vz), -2.0, tol);
  EXPECT_TRUE(errors.empty());
}

// An include-vars constraint gives its variables columns and no row; a
// variable in no row (or only in a set) gets no column and answers the
// value nearest to 0 that its bounds allow.
TEST_F(PublicLP, IncludeVarsAndVariablesWithoutColumn) {
  build_small();
  MDLvar w = mdlnewvar_prob(prob, "w", MDL_CONTINUOUS, 2, 5);
  MDLvar lone = mdlnewvar_prob(prob, "lone", MDL_CONTINUOUS, -4, -1);
  MDLvar member = mdlnewvar_prob(prob, "member", MDL_CONTINUOUS, 3, 7);
  MDLctr inc = mdlnewctr_prob(prob, "inc", MDL_NONBINDING);
  ASSERT_EQ(mdladdterm(inc, w, 1), 0);
  ASSERT_EQ(mdlsetincvars(inc, 1), 0);
  EXPECT_EQ(mdlgetincvars(inc), 1);
  MDLsos set = mdlnewsos_prob(prob, "set", MDL_SOS1);
  ASSERT_EQ(mdladdsosel(set, member, 1), 0);
  ASSERT_EQ(mdladdsosel(set, x, 2), 0);

  ASSERT_EQ(mdlsetsense_prob(prob, 1), 0);
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_NEAR(mdlgetobjval_prob(prob), 11.0, tol);
  EXPECT_EQ(mdlgetcolnum(x), 0);
  EXPECT_EQ(mdlgetcolnum(y), 1);
  EXPECT_EQ(mdlgetcolnum(w), 2);
  EXPECT_EQ(mdlgetcolnum(lone), -1);
  EXPECT_EQ(mdlgetcolnum(member), -1);
  EXPECT_EQ(mdlgetrownum(inc), -1);
  const double vw = mdlgetsol(w);
  EXPECT_GE(vw, 2.0 - tol);
  EXPECT_LE(vw, 5.0 + tol);
  EXPECT_EQ(mdlgetvarstat(w), 1);
  EXPECT_EQ(mdlgetvarstat(lone), 0);
  EXPECT_EQ(mdlgetsol(lone), -1.0);
  EXPECT_EQ(mdlgetsol(member), 3.0);
  EXPECT_EQ(mdlgetrcost(lone), 0.0);
  EXPECT_TRUE(errors.empty());
}

// Rows without terms: "0 <= 5" holds anyway and is dropped, "0 >= 5" is
// kept as an empty row so that the engine reports the infeasibility.
TEST_F(PublicLP, EmptyRowsDroppedOrKept) {
  build_small();
  MDLctr holds = mdlnewctr_prob(prob, "holds", MDL_LEQ);
  ASSERT_EQ(mdladdterm(holds, nullptr, 5), 0);
  MDLctr cancelled = row(prob, "cancelled", MDL_EQ, {{x, 1}}, 0);
  ASSERT_EQ(mdladdterm(cancelled, x, -1), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 11.0, tol);
  EXPECT_EQ(mdlgetrownum(holds), -1);
  EXPECT_EQ(mdlgetrownum(cancelled), -1);

  MDLctr violated = mdlnewctr_prob(prob, "violated", MDL_GEQ);
  ASSERT_EQ(mdladdterm(violated, nullptr, 5), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_NE(mdlgetrownum(violated), -1);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_infeasible);
  EXPECT_TRUE(errors.empty());
}

// With the column order set, columns follow the names; the values still
// reach the right variables.  min a + 2b + 3c with a >= 1, b >= 2, c >= 3
// (rows): a = 1, b = 2, c = 3, value 14.
TEST_F(PublicLP, ColumnOrderByName) {
  ASSERT_EQ(mdlsetcolorder_prob(prob, 1), 0);
  MDLvar c = mdlnewvar_prob(prob, "c", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLctr rc = row(prob, "rc", MDL_GEQ, {{c, 1}}, 3);
  MDLctr ra = row(prob, "ra", MDL_GEQ, {{a, 1}}, 1);
  row(prob, "rb", MDL_GEQ, {{b, 1}}, 2);
  objective(prob, {{a, 1}, {b, 2}, {c, 3}});
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetcolnum(a), 0);
  EXPECT_EQ(mdlgetcolnum(b), 1);
  EXPECT_EQ(mdlgetcolnum(c), 2);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 14.0, tol);
  EXPECT_NEAR(mdlgetsol(a), 1.0, tol);
  EXPECT_NEAR(mdlgetsol(b), 2.0, tol);
  EXPECT_NEAR(mdlgetsol(c), 3.0, tol);
  EXPECT_NEAR(mdlgetdual(rc), 3.0, tol);
  EXPECT_NEAR(mdlgetdual(ra), 1.0, tol);
}

// Without the column order, columns follow creation: c, a, b.
TEST_F(PublicLP, ColumnOrderOfCreation) {
  MDLvar c = mdlnewvar_prob(prob, "c", MDL_CONTINUOUS, 3, MDL_INFINITY);
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, 1, MDL_INFINITY);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, 2, MDL_INFINITY);
  objective(prob, {{a, 1}, {b, 2}, {c, 3}});
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetcolnum(c), 0);
  EXPECT_EQ(mdlgetcolnum(a), 1);
  EXPECT_EQ(mdlgetcolnum(b), 2);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 14.0, tol);
  EXPECT_NEAR(mdlgetsol(b), 2.0, tol);
  EXPECT_TRUE(errors.empty());
}

// Names switched off: the model solves the same.
TEST_F(PublicLP, NamesOff) {
  ASSERT_EQ(mdlsetdictsize_prob(prob, 0, 0), 0);
  build_small();
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_NEAR(mdlgetobjval_prob(prob), 11.0, tol);
  EXPECT_NEAR(mdlgetsol(x), 3.0, tol);
  EXPECT_NEAR(mdlgetdual(c1), 2.0, tol);
  EXPECT_STREQ(mdlgetvarname(x), "x");
}

// Values are fetched once and stay stable; after a model change they are
// gone (warning 1520, value 0) until the next solve, except for variables
// outside the matrix, which answer from their bounds.
TEST_F(PublicLP, CacheAndModelChange) {
  build_small();
  MDLvar outside = mdlnewvar_prob(prob, "outside", MDL_CONTINUOUS, 2, 9);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(mdlgetsol(x), 3.0, tol);
    EXPECT_NEAR(mdlgetdual(c1), 2.0, tol);
    EXPECT_NEAR(mdlgetslack(c2), 3.0, tol);
    EXPECT_NEAR(mdlgetrcost(x), 1.0, tol);
    EXPECT_NEAR(mdlgetobjval_prob(prob), 11.0, tol);
  }
  EXPECT_EQ(mdlgetsol(x), mdlgetsol(x));
  EXPECT_TRUE(errors.empty());

  ASSERT_EQ(mdladdterm(c2, x, 1), 0);  // c2: 2x + 3y <= 9
  EXPECT_EQ(mdlgetprobstat_prob(prob) & st_modified, st_modified);
  EXPECT_EQ(mdlgetsol(x), 0.0);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().number, 1520);
  EXPECT_EQ(errors.last().iserror, 0);
  EXPECT_EQ(errors.last().text,
            "(getsol) No solution available or problem modified since last solved.");
  EXPECT_EQ(mdlgetdual(c1), 0.0);
  EXPECT_EQ(errors.last().text,
            "(getdual) No solution available or problem modified since last solved.");
  EXPECT_EQ(mdlgetobjval_prob(prob), 0.0);
  EXPECT_EQ(errors.last().text,
            "(getobjval) No solution available or problem modified since last solved.");
  EXPECT_EQ(errors.reports.size(), 3u);
  EXPECT_EQ(mdlgetsol(outside), 2.0);
  EXPECT_EQ(errors.reports.size(), 3u);

  // max 3x + 2y, x + y <= 4, 2x + 3y <= 9, x <= 3: x = 3, y = 1 still
  // (2*3 + 3 = 9, both rows bind now).
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetsol(x), 3.0, tol);
  EXPECT_NEAR(mdlgetsol(y), 1.0, tol);
  EXPECT_NEAR(mdlgetslack(c2), 0.0, tol);
  EXPECT_EQ(errors.reports.size(), 3u);
}

// mdlsync_prob: mode 1 takes the engine's LP solution over again; after a
// model change it has none (warning with "sync"); mode 2 marks the model
// modified so that the next solve generates it again.
TEST_F(PublicLP, Sync) {
  build_small();
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  ASSERT_EQ(mdlsync_prob(prob, 1), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded | st_solution);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 11.0, tol);
  EXPECT_NEAR(mdlgetsol(y), 1.0, tol);

  ASSERT_EQ(mdlsync_prob(prob, 2), 0);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & st_modified, st_modified);
  ASSERT_EQ(mdlsync_prob(prob, 1), 0);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().number, 1520);
  EXPECT_EQ(errors.last().text,
            "(sync) No solution available or problem modified since last solved.");
  EXPECT_EQ(mdlgetprobstat_prob(prob) & st_solution, 0);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded | st_solution);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 11.0, tol);
}

}  // namespace
