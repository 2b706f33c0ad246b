/*
 * entities_test.cpp -- the global search over semi-continuous, partial
 * integer, set, indicator, held-out-row and directive entities, each in a
 * model where it binds and in one where it does not; optima by hand.
 */
#include <cmath>

#include "engine_test.h"

namespace {

using EntityTest = EngineTest;

// min c x + 3y  s.t.  x + y >= 1,  x semi-continuous in {0} u [l, 10].
dense_model semicont_model(double cx, double cy) {
  return {"G", {1}, {}, {cx, cy}, {0, 0}, {10, 10}, {{1, 1}}};
}

TEST_F(EntityTest, SemiContinuousOptimumAtZero) {
  // x = 1 (LP, cost 2) is out; x = 0, y = 1 costs 3, x = 2 costs 4.
  ASSERT_EQ(load_global(p, semicont_model(2, 3), "S", {0}, {2.0}), 0);
  auto x = optimum(1, 3.0);
  EXPECT_EQ(x[0], 0.0);
  EXPECT_NEAR(x[1], 1.0, 1e-7);
}

TEST_F(EntityTest, SemiContinuousOptimumWithinItsRange) {
  // x = 0 costs 3, x = 2 (its limit) costs 2.
  ASSERT_EQ(load_global(p, semicont_model(1, 3), "S", {0}, {2.0}), 0);
  auto x = optimum(1, 2.0);
  EXPECT_NEAR(x[0], 2.0, 1e-7);
  EXPECT_NEAR(x[1], 0.0, 1e-7);
}

TEST_F(EntityTest, SemiContinuousLimitThatDoesNotBind) {
  ASSERT_EQ(load_global(p, semicont_model(1, 3), "S", {0}, {0.5}), 0);
  auto x = optimum(1, 1.0);
  EXPECT_NEAR(x[0], 1.0, 1e-7);
}

TEST_F(EntityTest, ChangedLimitIsSearched) {
  ASSERT_EQ(load_global(p, semicont_model(1, 3), "S", {0}, {0.5}), 0);
  optimum(1, 1.0);
  int col = 0;
  double limit = 2.0;
  ASSERT_EQ(KVSLchgglblimit(p, 1, &col, &limit), 0);
  optimum(1, 2.0);
  limit = 4.0;  // x = 4 costs 4: now x = 0, y = 1 (3) wins
  ASSERT_EQ(KVSLchgglblimit(p, 1, &col, &limit), 0);
  auto x = optimum(1, 3.0);
  EXPECT_EQ(x[0], 0.0);
}

TEST_F(EntityTest, SemiContinuousIntegerTakesIntegersFromTheLimit) {
  // min x + 4y, x + y >= 1: continuous x would take 2.5; integer x takes 3.
  ASSERT_EQ(load_global(p, semicont_model(1, 4), "S", {0}, {2.5}), 0);
  optimum(1, 2.5);
  ASSERT_EQ(load_global(p, semicont_model(1, 4), "R", {0}, {2.5}), 0);
  auto x = optimum(1, 3.0);
  EXPECT_EQ(x[0], 3.0);
  // With limit 0.5 the integer x = 1 is allowed.
  ASSERT_EQ(load_global(p, semicont_model(1, 4), "R", {0}, {0.5}), 0);
  optimum(1, 1.0);
}

TEST_F(EntityTest, SemiContinuousWithInfiniteUpperBound) {
  dense_model m = semicont_model(1, 3);
  m.ub[0] = KVSL_INFINITY;
  ASSERT_EQ(load_global(p, m, "S", {0}, {2.0}), 0);
  optimum(1, 2.0);
}

// min -x  s.t.  3x <= 7, x partial integer: integer below its limit.
TEST_F(EntityTest, PartialIntegerBelowAndAboveItsLimit) {
  dense_model m{"L", {7}, {}, {-1}, {0}, {10}, {{3}}};
  ASSERT_EQ(load_global(p, m, "P", {0}, {5.0}), 0);
  auto x = optimum(1, -2.0);
  EXPECT_EQ(x[0], 2.0);
  ASSERT_EQ(load_global(p, m, "P", {0}, {2.0}), 0);  // continuous from 2 up
  x = optimum(1, -7.0 / 3.0);
  EXPECT_NEAR(x[0], 7.0 / 3.0, 1e-7);
  ASSERT_EQ(load_global(p, m, "P", {0}, {2.2}), 0);  // 2.2 itself is allowed
  optimum(1, -7.0 / 3.0);
}

// max 3a + 2b + 4c  s.t.  2a + 2b + 3c <= 4,  0 <= a, b, c <= 1.
TEST_F(EntityTest, SosOneChoosesOneMember) {
  dense_model m{"L", {4}, {}, {3, 2, 4}, {0, 0, 0}, {1, 1, 1}, {{2, 2, 3}}};
  ASSERT_EQ(KVSLmaxim((load_lp(p, m), p), ""), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 17.0 / 3.0, 1e-7);  // a = 1, c = 2/3
  ASSERT_EQ(load_sets(p, m, "", {}, {}, "1", {{0, 1, 2}}, {{1, 2, 3}}), 0);
  auto x = optimum(-1, 4.0);
  EXPECT_EQ(x[0], 0.0);
  EXPECT_EQ(x[1], 0.0);
  EXPECT_NEAR(x[2], 1.0, 1e-7);
}

TEST_F(EntityTest, SosOneThatDoesNotBind) {
  dense_model m{"LL", {4, 1}, {}, {3, 2, 4}, {0, 0, 0}, {1, 1, 1}, {{2, 2, 3}, {1, 1, 1}}};
  ASSERT_EQ(load_sets(p, m, "", {}, {}, "1", {{0, 1, 2}}, {{1, 2, 3}}), 0);
  auto x = optimum(-1, 4.0);
  EXPECT_NEAR(x[2], 1.0, 1e-7);
}

// A piecewise linear cost f(x) through (0,0), (2,f1), (4,f2), (6,f3):
// min f(x) s.t. x >= 3 with lambda_0..3 (columns 0-3), x (4), f (5).
dense_model piecewise(double f1, double f2, double f3) {
  return {"EEEG",
          {1, 0, 0, 3},
          {},
          {0, 0, 0, 0, 0, 1},
          {},
          {},
          {{1, 1, 1, 1, 0, 0}, {0, 2, 4, 6, -1, 0}, {0, f1, f2, f3, 0, -1}, {0, 0, 0, 0, 1, 0}}};
}

TEST_F(EntityTest, SosTwoPiecewiseLinearConcaveCost) {
  // The LP mixes (0,0) and (6,7): 3.5; on the curve f(3) = (4 + 6) / 2 = 5.
  dense_model m = piecewise(4, 6, 7);
  // Members given out of weight order: the weights decide adjacency.
  ASSERT_EQ(load_sets(p, m, "", {}, {}, "2", {{2, 0, 3, 1}}, {{30, 10, 40, 20}}), 0);
  auto x = optimum(1, 5.0);
  EXPECT_NEAR(x[4], 3.0, 1e-7);
  EXPECT_EQ(x[0], 0.0);
  EXPECT_EQ(x[3], 0.0);
  EXPECT_NEAR(x[1], 0.5, 1e-7);
  EXPECT_NEAR(x[2], 0.5, 1e-7);
}

TEST_F(EntityTest, SosTwoThatDoesNotBind) {
  dense_model m = piecewise(1, 3, 6);  // convex: the LP follows the curve
  ASSERT_EQ(load_sets(p, m, "", {}, {}, "2", {{0, 1, 2, 3}}, {{1, 2, 3, 4}}), 0);
  optimum(1, 2.0);
}

// x (free, column 0) and z (binary, column 1): x >= 2; indicator row
// x >= t when z = 1; min x - c z.
dense_model indicator_model(double t, double c) {
  return {"GG", {2, t}, {}, {1, -c}, {-KVSL_INFINITY, 0}, {KVSL_INFINITY, 1}, {{1, 0}, {1, 0}}};
}

TEST_F(EntityTest, IndicatorOnOneWithFreeVariable) {
  // z = 0: x = 2 (2); z = 1: x = 5 (1).  The LP relaxation would give -2.
  ASSERT_EQ(load_global(p, indicator_model(5, 4), "B", {1}), 0);
  int row = 1, col = 1, flag = 1;
  ASSERT_EQ(KVSLsetindicators(p, 1, &row, &col, &flag), 0);
  auto x = optimum(1, 1.0);
  EXPECT_NEAR(x[0], 5.0, 1e-7);
  EXPECT_EQ(x[1], 1.0);
  // With the cost of z at 2, z = 1 costs 3: z = 0 and the row is released.
  ASSERT_EQ(load_global(p, indicator_model(5, 2), "B", {1}), 0);
  ASSERT_EQ(KVSLsetindicators(p, 1, &row, &col, &flag), 0);
  x = optimum(1, 2.0);
  EXPECT_NEAR(x[0], 2.0, 1e-7);
  EXPECT_EQ(x[1], 0.0);
}

TEST_F(EntityTest, IndicatorThatDoesNotBind) {
  ASSERT_EQ(load_global(p, indicator_model(1, 4), "B", {1}), 0);
  int row = 1, col = 1, flag = 1;
  ASSERT_EQ(KVSLsetindicators(p, 1, &row, &col, &flag), 0);
  optimum(1, -2.0);
}

// max x - c z, x <= 10, and x <= 3 when z = 0 (flag -1); x, z as above.
TEST_F(EntityTest, IndicatorOnZero) {
  dense_model m{"LL", {10, 3}, {}, {1, -4}, {-KVSL_INFINITY, 0}, {KVSL_INFINITY, 1},
                {{1, 0}, {1, 0}}};
  int row = 1, col = 1, flag = -1;
  ASSERT_EQ(load_global(p, m, "B", {1}), 0);
  ASSERT_EQ(KVSLsetindicators(p, 1, &row, &col, &flag), 0);
  auto x = optimum(-1, 6.0);  // z = 1 releases the row: 10 - 4
  EXPECT_NEAR(x[0], 10.0, 1e-7);
  m.obj[1] = -8;  // now z = 1 gives 2 and z = 0 gives 3
  ASSERT_EQ(load_global(p, m, "B", {1}), 0);
  ASSERT_EQ(KVSLsetindicators(p, 1, &row, &col, &flag), 0);
  x = optimum(-1, 3.0);
  EXPECT_NEAR(x[0], 3.0, 1e-7);
  EXPECT_EQ(x[1], 0.0);
}

// Range and equality rows as indicator rows: 4 <= x + y <= 6 when z = 1.
TEST_F(EntityTest, IndicatorRangeAndEqualityRows) {
  // max x + y - 3(1 - z) = x + y + 3z - 3 with x + y <= 10; z = 1 caps at 6.
  dense_model m{"LR", {10, 6}, {0, 2}, {1, 1, 3}, {0, 0, 0}, {KVSL_INFINITY, KVSL_INFINITY, 1},
                {{1, 1, 0}, {1, 1, 0}}};
  int row = 1, col = 2, flag = 1;
  ASSERT_EQ(load_global(p, m, "B", {2}), 0);
  ASSERT_EQ(KVSLsetindicators(p, 1, &row, &col, &flag), 0);
  optimum(-1, 10.0);  // z = 0: 10; z = 1: 6 + 3 = 9
  m.obj[2] = 5;       // z = 1: 11
  ASSERT_EQ(load_global(p, m, "B", {2}), 0);
  ASSERT_EQ(KVSLsetindicators(p, 1, &row, &col, &flag), 0);
  optimum(-1, 11.0);
  // min x + y - 5z: the lower end 4 holds with z = 1.
  ASSERT_EQ(load_global(p, m, "B", {2}), 0);
  ASSERT_EQ(KVSLsetindicators(p, 1, &row, &col, &flag), 0);
  std::vector<double> cost{1, 1, -5};
  std::vector<int> cols{0, 1, 2};
  ASSERT_EQ(KVSLchgobj(p, 3, cols.data(), cost.data()), 0);
  optimum(1, -1.0);
  m.rowtype = "LE";  // x + y = 6 when z = 1: 6 - 5
  ASSERT_EQ(load_global(p, m, "B", {2}), 0);
  ASSERT_EQ(KVSLsetindicators(p, 1, &row, &col, &flag), 0);
  ASSERT_EQ(KVSLchgobj(p, 3, cols.data(), cost.data()), 0);
  optimum(1, 0.0);
}

// max x + y, x, y integer in [0, 3]; x + y <= r held out of the LP.
TEST_F(EntityTest, DelayedRowCutsOffTheLpOptimum) {
  dense_model m{"LL", {3, 4}, {}, {1, 1}, {0, 0}, {3, 3}, {{1, 0}, {1, 1}}};
  ASSERT_EQ(load_global(p, m, "II", {0, 1}), 0);
  int row = 1;
  ASSERT_EQ(KVSLloaddelayedrows(p, 1, &row), 0);
  auto x = optimum(-1, 4.0);
  EXPECT_LE(x[0] + x[1], 4.0 + 1e-9);
  m.rhs[1] = 10;  // a delayed row that does not bind
  ASSERT_EQ(load_global(p, m, "II", {0, 1}), 0);
  ASSERT_EQ(KVSLloaddelayedrows(p, 1, &row), 0);
  optimum(-1, 6.0);
}

TEST_F(EntityTest, DelayedRowOnContinuousColumns) {
  // Only integer entity z: the LP solution is integral at once, the row
  // 2x + y <= 5 must still be added before it is accepted.
  dense_model m{"LL", {3, 5}, {}, {1, 1, 1}, {0, 0, 0}, {10, 10, 1}, {{1, 0, 0}, {2, 1, 0}}};
  ASSERT_EQ(load_global(p, m, "B", {2}), 0);
  int row = 1;
  ASSERT_EQ(KVSLloaddelayedrows(p, 1, &row), 0);
  auto x = optimum(-1, 6.0);  // y = 5, x = 0, z = 1
  EXPECT_LE(2 * x[0] + x[1], 5.0 + 1e-7);
}

// max 5x + 4y  s.t.  6x + 4y <= 24,  x + 2y <= 6,  x, y integer; the model
// cut x + y <= 4 is valid for every integer solution and cuts (3, 1.5) off.
TEST_F(EntityTest, ModelCutsKeepTheOptimum) {
  for (double cut : {4.0, 10.0}) {
    dense_model m{"LLL", {24, 6, cut}, {}, {5, 4}, {}, {}, {{6, 4}, {1, 2}, {1, 1}}};
    ASSERT_EQ(load_global(p, m, "II", {0, 1}), 0);
    int row = 2;
    ASSERT_EQ(KVSLloadmodelcuts(p, 1, &row), 0);
    auto x = optimum(-1, 20.0);
    EXPECT_EQ(x[0], 4.0);
  }
}

TEST_F(EntityTest, DelayedRowsMakeAnUnboundedRelaxationBounded) {
  // max x with x <= 7 delayed: without the row the LP is unbounded.
  dense_model m{"L", {7}, {}, {1, 0}, {0, 0}, {KVSL_INFINITY, 1}, {{1, 0}}};
  ASSERT_EQ(load_global(p, m, "B", {1}), 0);
  int row = 0;
  ASSERT_EQ(KVSLloaddelayedrows(p, 1, &row), 0);
  optimum(-1, 7.0);
}

TEST_F(EntityTest, FixGlobalsOfSemiContinuousAndIndicators) {
  ASSERT_EQ(load_global(p, indicator_model(5, 2), "B", {1}), 0);
  int row = 1, col = 1, flag = 1;
  ASSERT_EQ(KVSLsetindicators(p, 1, &row, &col, &flag), 0);
  optimum(1, 2.0);  // z = 0, x = 2
  ASSERT_EQ(KVSLfixglobals(p, 1), 0);
  ASSERT_EQ(KVSLlpoptimize(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 2.0, 1e-7);

  ASSERT_EQ(load_global(p, semicont_model(1, 3), "S", {0}, {2.0}), 0);
  optimum(1, 2.0);
  ASSERT_EQ(KVSLfixglobals(p, 0), 0);
  ASSERT_EQ(KVSLlpoptimize(p, ""), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 2.0, 1e-7);
  EXPECT_NEAR(lpsol()[0], 2.0, 1e-7);
}

TEST_F(EntityTest, InfeasibleSemiContinuousModel) {
  // x + y >= 1 with x in {0} u [2, 10] and y <= 0, x <= 1.5: infeasible.
  dense_model m{"G", {1}, {}, {1, 1}, {0, 0}, {1.5, 0}, {{1, 1}}};
  ASSERT_EQ(load_global(p, m, "S", {0}, {2.0}), 0);
  ASSERT_EQ(KVSLminim(p, "g"), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_INFEAS);
  EXPECT_EQ(KVSLgetmipsol(p, nullptr, nullptr), KVSL_ERR_NOSOLUTION);
}

// min x + 3y + 0.5 x^2, x + y >= 1, x semi-continuous with limit 2: x = 0,
// y = 1 costs 3; x = 2 costs 2 + 2 = 4; the relaxation's x = 1 (cost 1.5)
// is in the gap.
TEST_F(EntityTest, QuadraticObjectiveWithEntitiesIsSearched) {
  dense_model m = semicont_model(1, 3);
  column_arrays c(m);
  int q1 = 0, q2 = 0;
  double qv = 1.0;
  char t = 'S';
  int ec = 0;
  double lim = 2.0;
  ASSERT_EQ(KVSLloadqglobal64(p, "q", 2, 1, m.rowtype.data(), m.rhs.data(), nullptr,
                              m.obj.data(), c.start.data(), nullptr, c.ind.data(), c.val.data(),
                              m.lb.data(), m.ub.data(), 1, &q1, &q2, &qv, 1, 0, &t, &ec, &lim,
                              nullptr, nullptr, nullptr, nullptr),
            0);
  ASSERT_EQ(KVSLminim(p, "g"), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), 3.0, 1e-7);
  double x[2];
  ASSERT_EQ(KVSLgetmipsol(p, x, nullptr), 0);
  EXPECT_NEAR(x[0], 0.0, 1e-9);
  EXPECT_NEAR(x[1], 1.0, 1e-6);
}

}  // namespace
