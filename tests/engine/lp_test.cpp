/*
 * lp_test.cpp -- LP optimisation: optima, duals and reduced costs in both
 * senses, row types, statuses, algorithms, bound changes and re-solves.
 */
#include "engine_test.h"

namespace {

// max 3x + 2y  s.t.  x + y <= 4,  x + 3y <= 7,  0 <= x <= 3, y >= 0.
// Optimum x = 3, y = 1, objective 11; row 0 binds with dual 2 (maximising).
dense_model small_max() {
  return {"LL", {4, 7}, {}, {3, 2}, {0, 0}, {3, KVSL_INFINITY}, {{1, 1}, {1, 3}}};
}

using LpTest = EngineTest;

TEST_F(LpTest, MaximiseGivesOptimumDualsAndReducedCosts) {
  ASSERT_EQ(load_lp(p, small_max()), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 11.0, 1e-9);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_PRESOLVESTATE) & KVSL_SOLUTION_HELD, KVSL_SOLUTION_HELD);
  double x[2], slack[2], dual[2], dj[2];
  ASSERT_EQ(KVSLgetlpsol(p, x, slack, dual, dj), 0);
  EXPECT_NEAR(x[0], 3.0, 1e-9);
  EXPECT_NEAR(x[1], 1.0, 1e-9);
  EXPECT_NEAR(slack[0], 0.0, 1e-9);
  EXPECT_NEAR(slack[1], 1.0, 1e-9);
  EXPECT_NEAR(dual[0], 2.0, 1e-9);
  EXPECT_NEAR(dual[1], 0.0, 1e-9);
  EXPECT_NEAR(dj[0], 1.0, 1e-9);
  EXPECT_NEAR(dj[1], 0.0, 1e-9);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ROWS), 2);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_COLS), 2);
  EXPECT_GE(int_attr(p, KVSL_ATTR_SIMPLEXITER), 1);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_LP_OPTIMAL);
}

TEST_F(LpTest, MinimiseTheNegatedObjectiveFlipsDualSigns) {
  dense_model m = small_max();
  m.obj = {-3, -2};
  ASSERT_EQ(load_lp(p, m), 0);
  ASSERT_EQ(KVSLminim(p, ""), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), -11.0, 1e-9);
  double dual[2], dj[2];
  ASSERT_EQ(KVSLgetlpsol(p, nullptr, nullptr, dual, dj), 0);
  EXPECT_NEAR(dual[0], -2.0, 1e-9);
  EXPECT_NEAR(dj[0], -1.0, 1e-9);
}

TEST_F(LpTest, EveryAlgorithmFindsTheSameOptimum) {
  for (const char *flags : {"", "d", "p", "n", "b", "P", "B"}) {
    ASSERT_EQ(load_lp(p, small_max()), 0);
    ASSERT_EQ(KVSLmaxim(p, flags), 0) << flags;
    EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL) << flags;
    EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 11.0, 1e-7) << flags;
  }
}

TEST_F(LpTest, WithoutPresolveScalingAndCrash) {
  KVSLsetintcontrol(p, KVSL_CTRL_PRESOLVE, 0);
  KVSLsetintcontrol(p, KVSL_CTRL_SCALING, 0);
  KVSLsetintcontrol(p, KVSL_CTRL_CRASH, 0);
  ASSERT_EQ(load_lp(p, small_max()), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 11.0, 1e-9);
}

// min x + 2y  s.t.  x + y >= 2,  1 <= x - y <= 3 (range row),  x + 2y free.
// Optimum x = 2, y = 0, objective 2.
TEST_F(LpTest, GreaterRangeAndFreeRows) {
  dense_model m{"GRN", {2, 3, 0}, {0, 2, 0}, {1, 2}, {}, {}, {{1, 1}, {1, -1}, {1, 2}}};
  ASSERT_EQ(load_lp(p, m), 0);
  ASSERT_EQ(KVSLlpoptimize(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  double x[2], slack[3], dual[3], dj[2];
  ASSERT_EQ(KVSLgetlpsol(p, x, slack, dual, dj), 0);
  EXPECT_NEAR(x[0], 2.0, 1e-9);
  EXPECT_NEAR(x[1], 0.0, 1e-9);
  EXPECT_NEAR(slack[0], 0.0, 1e-9);
  EXPECT_NEAR(slack[1], 1.0, 1e-9);
  EXPECT_NEAR(slack[2], -2.0, 1e-9);
  EXPECT_NEAR(dual[0], 1.0, 1e-9);
  EXPECT_NEAR(dual[1], 0.0, 1e-9);
  EXPECT_NEAR(dual[2], 0.0, 1e-9);
  EXPECT_NEAR(dj[1], 1.0, 1e-9);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 2.0, 1e-9);
}

// The range row binds from below when the objective pushes x - y down:
// min x - 2y + 0  s.t.  x + y <= 4,  1 <= x - y <= 3:  x = 2.5, y = 1.5.
TEST_F(LpTest, RangeRowBindsAtItsLowerEnd) {
  dense_model m{"LR", {4, 3}, {0, 2}, {1, -2}, {}, {}, {{1, 1}, {1, -1}}};
  ASSERT_EQ(load_lp(p, m), 0);
  ASSERT_EQ(KVSLminim(p, ""), 0);
  double x[2], slack[2];
  ASSERT_EQ(KVSLgetlpsol(p, x, slack, nullptr, nullptr), 0);
  EXPECT_NEAR(x[0], 2.5, 1e-9);
  EXPECT_NEAR(x[1], 1.5, 1e-9);
  EXPECT_NEAR(slack[1], 2.0, 1e-9);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), -0.5, 1e-9);
}

TEST_F(LpTest, ObjectiveConstantIsSubtracted) {
  ASSERT_EQ(load_lp(p, small_max()), 0);
  int col = -1;
  double v = 5.0;
  ASSERT_EQ(KVSLchgobj(p, 1, &col, &v), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 6.0, 1e-9);
}

TEST_F(LpTest, ObjectiveCoefficientChangeAndResolve) {
  ASSERT_EQ(load_lp(p, small_max()), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  int col = 1;
  double v = 10.0;
  ASSERT_EQ(KVSLchgobj(p, 1, &col, &v), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_PRESOLVESTATE) & KVSL_SOLUTION_HELD, 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  // Vertices: (0, 7/3) -> 23.33, (2.5, 1.5) -> 22.5, (3, 1) -> 19.
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 70.0 / 3.0, 1e-9);
}

TEST_F(LpTest, BoundChangeTakesEffectAtTheNextSolve) {
  ASSERT_EQ(load_lp(p, small_max()), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  auto solved = lpsol();
  int col = 0;
  char type = 'U';
  double v = 1.0;
  ASSERT_EQ(KVSLchgbounds(p, 1, &col, &type, &v), 0);
  // The solution of the problem as solved stays readable until the next solve.
  EXPECT_EQ(lpsol(), solved);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  auto x = lpsol();
  EXPECT_NEAR(x[0], 1.0, 1e-9);
  EXPECT_NEAR(x[1], 2.0, 1e-9);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 7.0, 1e-9);
  type = 'B';
  v = 2.0;
  ASSERT_EQ(KVSLchgbounds(p, 1, &col, &type, &v), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  x = lpsol();
  EXPECT_NEAR(x[0], 2.0, 1e-9);
  EXPECT_NEAR(x[1], 5.0 / 3.0, 1e-9);
  type = 'L';
  v = -KVSL_INFINITY;
  ASSERT_EQ(KVSLchgbounds(p, 1, &col, &type, &v), 0);
  type = 'U';
  v = KVSL_INFINITY;
  ASSERT_EQ(KVSLchgbounds(p, 1, &col, &type, &v), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 12.0, 1e-9);  // x = 4, y = 0
}

TEST_F(LpTest, InfeasibleProblem) {
  dense_model m{"LG", {1, 2}, {}, {1, 1}, {}, {}, {{1, 1}, {1, 1}}};
  for (int presolve : {1, 0}) {
    KVSLsetintcontrol(p, KVSL_CTRL_PRESOLVE, presolve);
    ASSERT_EQ(load_lp(p, m), 0);
    ASSERT_EQ(KVSLminim(p, ""), 0);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_INFEAS);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_PRESOLVESTATE) & KVSL_SOLUTION_HELD, 0);
    EXPECT_EQ(KVSLgetlpsol(p, nullptr, nullptr, nullptr, nullptr), KVSL_ERR_NOSOLUTION);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_NOSOLUTION);
  }
}

// An empty free row beside an infeasible row: the barrier's primal went
// off to infinity and the backend aborted the process (with the free row
// first or last, presolved or not).  The same with a feasible row is
// solved, the free row's slack and dual as the simplex gives them.
TEST_F(LpTest, BarrierBesideAnEmptyFreeRow) {
  const std::vector<dense_model> infeasible = {
      {"GN", {12, 7}, {}, {3, -1}, {-1, 0}, {2, 4}, {{0, -4}, {0, 0}}},
      {"NG", {7, 12}, {}, {3, -1}, {-1, 0}, {2, 4}, {{0, 0}, {0, -4}}}};
  for (int presolve : {1, 0})
    for (const dense_model &m : infeasible) {
      SCOPED_TRACE(testing::Message() << m.rowtype << " presolve " << presolve);
      KVSLsetintcontrol(p, KVSL_CTRL_PRESOLVE, presolve);
      ASSERT_EQ(load_lp(p, m), 0);
      ASSERT_EQ(KVSLminim(p, "b"), 0);
      EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_INFEAS);
    }
  // min 3x0 - x1, -4x1 >= -12, x0 in [-1, 2], x1 in [0, 4]: x0 = -1, x1 = 3.
  dense_model feasible{"GN", {-12, 7}, {}, {3, -1}, {-1, 0}, {2, 4}, {{0, -4}, {0, 0}}};
  ASSERT_EQ(load_lp(p, feasible), 0);
  ASSERT_EQ(KVSLminim(p, "b"), 0);
  ASSERT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), -6.0, 1e-9);
  double barrier_slack[2], barrier_dual[2], slack[2], dual[2];
  ASSERT_EQ(KVSLgetlpsol(p, nullptr, barrier_slack, barrier_dual, nullptr), 0);
  ASSERT_EQ(KVSLminim(p, "d"), 0);
  ASSERT_EQ(KVSLgetlpsol(p, nullptr, slack, dual, nullptr), 0);
  for (int i = 0; i < 2; ++i) {
    EXPECT_NEAR(barrier_slack[i], slack[i], 1e-9) << i;
    EXPECT_NEAR(barrier_dual[i], dual[i], 1e-9) << i;
  }
}

TEST_F(LpTest, UnboundedProblem) {
  dense_model m{"L", {1}, {}, {1, 0}, {}, {}, {{1, -1}}};
  for (const char *flags : {"", "p"}) {
    ASSERT_EQ(load_lp(p, m), 0);
    ASSERT_EQ(KVSLmaxim(p, flags), 0);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_UNBOUNDED) << flags;
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_UNBOUNDED) << flags;
  }
}

TEST_F(LpTest, FreshProblemAndEmptyProblem) {
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_UNSTARTED);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_NOT_LOADED);
  EXPECT_EQ(KVSLlpoptimize(p, ""), KVSL_ERR_NOTLOADED);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_NOTLOADED);
  ASSERT_EQ(KVSLloadlp64(p, "empty", 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, nullptr, nullptr),
            0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_UNSOLVED);
  ASSERT_EQ(KVSLlpoptimize(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  EXPECT_EQ(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 0.0);
}

TEST_F(LpTest, TimeLimitedSolveStillReportsAStatus) {
  KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, 1000.0);
  ASSERT_EQ(load_lp(p, small_max()), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  EXPECT_GE(dbl_attr(p, KVSL_ATTR_SOLVETIME), 0.0);
}

TEST_F(LpTest, CutoffMarksAWorseOptimum) {
  ASSERT_EQ(load_lp(p, small_max()), 0);
  ASSERT_EQ(KVSLchgobjsense(p, -1), 0);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_CUTOFF, 12.0), 0);
  ASSERT_EQ(KVSLmaxim(p, "p"), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_CUTOFF);
}

TEST_F(LpTest, BasisRoundTrip) {
  ASSERT_EQ(load_lp(p, small_max()), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  int rows[2], cols[2];
  ASSERT_EQ(KVSLgetbasis(p, rows, cols), 0);
  EXPECT_EQ(cols[0], 2);  // x at its upper bound 3
  EXPECT_EQ(cols[1], 1);  // y basic
  EXPECT_EQ(rows[0], 2);  // x + y <= 4 at its upper activity bound
  EXPECT_EQ(rows[1], 1);  // x + 3y <= 7 basic
  ASSERT_EQ(KVSLloadbasis(p, rows, cols), 0);
  KVSLsetintcontrol(p, KVSL_CTRL_PRESOLVE, 0);
  ASSERT_EQ(KVSLmaxim(p, "p"), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_SIMPLEXITER), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 11.0, 1e-9);
  int bad[2] = {7, 0};
  EXPECT_EQ(KVSLloadbasis(p, bad, cols), KVSL_ERR_BADARG);
}

}  // namespace
