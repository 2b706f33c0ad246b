/*
 * mip_regressions_test.cpp -- models on which the global search once gave
 * a wrong answer or ended the process, each with its optimum by hand.
 */
#include <cmath>
#include <limits>

#include "engine_test.h"

namespace {

using MipRegression = EngineTest;

// max 46x + 600e - 2600m; 4x <= 200 when e = 1; x - 60m <= 0; e, m binary.
// A search that took x = 50, e = 1, m = 1 (300) as optimal had lost the
// solution x = 0, e = 1, m = 0 (600).
TEST_F(MipRegression, IndicatorRowWithBigCoefficientOnAnotherBinary) {
  dense_model m{"LL", {200, 0}, {}, {46, 600, -2600}, {0, 0, 0},
                {KVSL_INFINITY, 1, 1}, {{4, 0, 0}, {1, 0, -60}}};
  ASSERT_EQ(load_global(p, m, "BB", {1, 2}), 0);
  int row = 0, col = 1, flag = 1;
  ASSERT_EQ(KVSLsetindicators(p, 1, &row, &col, &flag), 0);
  auto x = optimum(-1, 600.0);
  EXPECT_NEAR(x[0], 0.0, 1e-7);
  EXPECT_EQ(x[1], 1.0);
  EXPECT_EQ(x[2], 0.0);
}

// min order, order >= 3, order semi-continuous in {0} u [10, 100].
TEST_F(MipRegression, SemiContinuousForcedAboveItsLimit) {
  dense_model m{"G", {3}, {}, {1}, {0}, {100}, {{1}}};
  ASSERT_EQ(load_global(p, m, "S", {0}, {10.0}), 0);
  auto x = optimum(1, 10.0);
  EXPECT_NEAR(x[0], 10.0, 1e-7);
}

// The same with a semi-continuous integer column, and with order >= 5.
TEST_F(MipRegression, SemiContinuousIntegerForcedAboveItsLimit) {
  for (double rhs : {3.0, 5.0}) {
    dense_model m{"G", {rhs}, {}, {1}, {0}, {100}, {{1}}};
    ASSERT_EQ(load_global(p, m, "R", {0}, {10.0}), 0);
    auto x = optimum(1, 10.0);
    EXPECT_EQ(x[0], 10.0);
    ASSERT_EQ(load_global(p, m, "S", {0}, {10.0}), 0);
    optimum(1, 10.0);
  }
}

// max 12x0 + 11x1, 2x0 + 4x1 <= 36, 5x1 <= 16, x0 <= 11, x1 <= 7 as rows;
// one set of type 1 over x0 (weight 1) and x1 (weight 2).  Once aborted
// the process inside the backend's strong branching.
TEST_F(MipRegression, SosOneOverBoundRows) {
  dense_model m{"LLLL", {36, 16, 11, 7}, {}, {12, 11}, {}, {},
                {{2, 4}, {0, 5}, {1, 0}, {0, 1}}};
  ASSERT_EQ(load_sets(p, m, "", {}, {}, "1", {{0, 1}}, {{1, 2}}), 0);
  auto x = optimum(-1, 132.0);
  EXPECT_NEAR(x[0], 11.0, 1e-7);
  EXPECT_NEAR(x[1], 0.0, 1e-7);
}

// A NaN anywhere in the numbers of a problem is refused with an error
// code, never searched: not in the objective, not in a bound.
TEST_F(MipRegression, NanObjectiveCoefficientIsRefused) {
  double nan = std::numeric_limits<double>::quiet_NaN();
  dense_model m{"L", {4}, {}, {nan, 1}, {0, 0}, {10, 10}, {{1, 1}}};
  int rc = load_global(p, m, "I", {0});
  if (rc == 0) rc = KVSLmaxim(p, "g");
  EXPECT_NE(rc, 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_BADNUMBER);
}

TEST_F(MipRegression, NanLowerBoundIsRefused) {
  double nan = std::numeric_limits<double>::quiet_NaN();
  dense_model m{"L", {4}, {}, {1, 1}, {nan, 0}, {10, 10}, {{1, 1}}};
  int rc = load_global(p, m, "I", {1});
  if (rc == 0) rc = KVSLminim(p, "g");
  EXPECT_NE(rc, 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_BADNUMBER);
  EXPECT_NE(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
}

// An indicator column must be a binary column.
TEST_F(MipRegression, ContinuousIndicatorColumnIsRefused) {
  dense_model m{"LL", {10, 3}, {}, {1, -4}, {0, 0}, {KVSL_INFINITY, 1}, {{1, 0}, {1, 0}}};
  ASSERT_EQ(load_lp(p, m), 0);
  int row = 1, col = 1, flag = 1;
  int rc = KVSLsetindicators(p, 1, &row, &col, &flag);
  if (rc == 0) rc = KVSLmaxim(p, "g");
  EXPECT_NE(rc, 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_ENTITY);
}

}  // namespace

namespace {

// Each kind of bad number is refused before a solve, by the LP and the
// search alike, with the documented code.
class BadInput : public EngineTest {
 protected:
  void expect_refused(const dense_model &m, const std::string &types, std::vector<int> cols,
                      std::vector<double> limits = {}) {
    ASSERT_EQ(load_global(p, m, types, cols, limits), 0);
    EXPECT_EQ(KVSLlpoptimize(p, ""), KVSL_ERR_BADNUMBER);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_BADNUMBER);
    EXPECT_EQ(KVSLmipoptimize(p, ""), KVSL_ERR_BADNUMBER);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_LP_NOT_OPTIMAL);
  }
  dense_model base() { return {"L", {4}, {}, {1, 1}, {0, 0}, {10, 10}, {{1, 1}}}; }
  double nan = std::numeric_limits<double>::quiet_NaN();
};

TEST_F(BadInput, InfiniteMatrixCoefficient) {
  dense_model m = base();
  m.a[0][1] = std::numeric_limits<double>::infinity();
  expect_refused(m, "I", {0});
}

TEST_F(BadInput, NanRightHandSide) {
  dense_model m = base();
  m.rhs[0] = nan;
  expect_refused(m, "I", {0});
}

TEST_F(BadInput, NanUpperBound) {
  dense_model m = base();
  m.ub[1] = nan;
  expect_refused(m, "I", {0});
}

TEST_F(BadInput, NanLimit) { expect_refused(base(), "S", {0}, {nan}); }

TEST_F(BadInput, NanObjectiveSetAfterTheLoad) {
  ASSERT_EQ(load_global(p, base(), "I", {0}), 0);
  int col = 1;
  ASSERT_EQ(KVSLchgobj(p, 1, &col, &nan), 0);
  EXPECT_EQ(KVSLmaxim(p, "g"), KVSL_ERR_BADNUMBER);
}

// Crossed bounds are no error: the model is infeasible.
TEST_F(BadInput, LowerAboveUpperIsInfeasible) {
  dense_model m = base();
  m.lb[0] = 5;
  m.ub[0] = 3;
  ASSERT_EQ(load_global(p, m, "I", {1}), 0);
  EXPECT_EQ(KVSLmaxim(p, "g"), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_INFEAS);
}

}  // namespace
