/*
 * objective_step_test.cpp -- the objective's step where continuous columns
 * carry costs: the forms of model that keep it and the ones that do not.
 */
#include <gtest/gtest.h>

#include <vector>

#include "dense_model.h"
#include "objective_step.h"

namespace {

using dense::inf;
using dense::model;

double step_of(const model &m) { return kvsl::continuous_objective_step(*dense::solver_of(m)); }

// Minimise the largest deviation d of 3 x0 + 2 x1 from 4: x0, x1 binary,
// 3 x0 + 2 x1 + s - t = 4, d - s >= 0, d - t >= 0; columns x0 x1 s t d.
model deviation() {
  model m;
  m.a = {{3, 2, 1, -1, 0}, {0, 0, -1, 0, 1}, {0, 0, 0, -1, 1}};
  m.rlo = {4, 0, 0};
  m.rup = {4, inf, inf};
  m.lb = {0, 0, 0, 0, 0};
  m.ub = {1, 1, inf, inf, inf};
  m.integer = {1, 1, 0, 0, 0};
  m.obj = {0, 0, 0, 0, 1};
  return m;
}

TEST(ObjectiveStep, LargestDeviationHasStepOne) { EXPECT_EQ(step_of(deviation()), 1.0); }

TEST(ObjectiveStep, StepIsTheCommonDivisorOfTheCosts) {
  model m = deviation();
  m.obj = {4, -6, 0, 0, 2};
  EXPECT_EQ(step_of(m), 2.0);
  m.obj = {4, -6, 0, 0, 3};
  EXPECT_EQ(step_of(m), 1.0);
}

TEST(ObjectiveStep, NoCostsNoStep) {
  model m = deviation();
  m.obj = {0, 0, 0, 0, 0};
  EXPECT_EQ(step_of(m), 0.0);
}

TEST(ObjectiveStep, FractionalOrHugeCostHasNone) {
  model m = deviation();
  m.obj = {0, 0, 0, 0, 0.5};
  EXPECT_EQ(step_of(m), 0.0);
  m.obj = {0.5, 0, 0, 0, 1};
  EXPECT_EQ(step_of(m), 0.0);
  m.obj = {0, 0, 0, 0, 1e13};
  EXPECT_EQ(step_of(m), 0.0);
}

TEST(ObjectiveStep, ContinuousCoefficientOtherThanOneHasNone) {
  model m = deviation();
  m.a[1][4] = 2;  // 2 d - s >= 0: d may be a half
  EXPECT_EQ(step_of(m), 0.0);
}

TEST(ObjectiveStep, FractionalSideOfARowWithContinuousColumnsHasNone) {
  model m = deviation();
  m.rlo[0] = m.rup[0] = 4.5;
  EXPECT_EQ(step_of(m), 0.0);
  m = deviation();
  m.rlo[1] = 0.5;
  EXPECT_EQ(step_of(m), 0.0);
}

TEST(ObjectiveStep, RowsOverIntegerColumnsAloneMayBeFractional) {
  model m = deviation();
  m.a.push_back({1.5, 2, 0, 0, 0});
  m.rlo.push_back(-inf);
  m.rup.push_back(2.5);
  EXPECT_EQ(step_of(m), 1.0);
  // The same coefficient beside a continuous column: the column's value
  // follows the fractional sum.
  m.a.back()[2] = 1;
  EXPECT_EQ(step_of(m), 0.0);
}

TEST(ObjectiveStep, ContinuousBoundsMustBeIntegral) {
  model m = deviation();
  m.ub[2] = 2.5;
  EXPECT_EQ(step_of(m), 0.0);
  m = deviation();
  m.lb[4] = 0.25;  // the costed column itself
  EXPECT_EQ(step_of(m), 0.0);
  m = deviation();
  m.ub[2] = 7;
  m.lb[3] = -inf;
  EXPECT_EQ(step_of(m), 1.0);
}

// x + y <= 3 with both +1: negating y gives one +1 and one -1.
TEST(ObjectiveStep, RowsOfTwoWithEqualSignsAreFineByNegation) {
  model m;
  m.a = {{1, 1, 1}, {2, -1, 0}};  // columns k (integer), x, y
  m.rlo = {-inf, -inf};
  m.rup = {3, 1};
  m.lb = {0, 0, 0};
  m.ub = {2, inf, inf};
  m.integer = {1, 0, 0};
  m.obj = {1, -1, -1};
  EXPECT_EQ(step_of(m), 1.0);
}

// x + y, y + z, x + z: an odd cycle, whose matrix has determinant 2 (x = y
// = z = 1/2 is a vertex of x + y <= 1, y + z <= 1, x + z <= 1).
TEST(ObjectiveStep, OddCycleOfRowsHasNone) {
  model m;
  m.a = {{1, 1, 0}, {0, 1, 1}, {1, 0, 1}};
  m.rlo = {-inf, -inf, -inf};
  m.rup = {1, 1, 1};
  m.lb = {0, 0, 0};
  m.ub = {inf, inf, inf};
  m.integer = {0, 0, 0};
  m.obj = {-1, -1, -1};
  EXPECT_EQ(step_of(m), 0.0);
}

// x_k + x_(k+1) <= 1 around a cycle: bipartite (a step) when the cycle is
// even, not when it is odd; the rows and columns in shuffled order, so that
// the sign classes are joined in many pieces first.
model cycle(int length) {
  model m;
  std::vector<int> perm(static_cast<size_t>(length));
  for (int k = 0; k < length; ++k) perm[static_cast<size_t>(k)] = (k * 7919) % length;
  for (int k = 0; k < length; ++k) {
    std::vector<double> r(static_cast<size_t>(length), 0.0);
    r[static_cast<size_t>(perm[static_cast<size_t>(k)])] = 1;
    r[static_cast<size_t>(perm[static_cast<size_t>((k + 1) % length)])] = 1;
    m.a.push_back(r);
    m.rlo.push_back(-inf);
    m.rup.push_back(1);
  }
  m.lb.assign(static_cast<size_t>(length), 0);
  m.ub.assign(static_cast<size_t>(length), inf);
  m.integer.assign(static_cast<size_t>(length), 0);
  m.obj.assign(static_cast<size_t>(length), -1);
  return m;
}

TEST(ObjectiveStep, LongEvenCycleHasStepAndOddCycleNone) {
  EXPECT_EQ(step_of(cycle(300)), 1.0);
  EXPECT_EQ(step_of(cycle(301)), 0.0);
}

// A 3 x 3 transportation part (rows of three flows: not the rows' form),
// each flow in one supply and one demand row, and opening y_i of supply i
// with x_ij <= 4 y_i, a bound once y is fixed.
model transport() {
  model m;
  const int flows = 9, n = flows + 3;
  for (int i = 0; i < 3; ++i) {  // supply: sum_j x_ij - 5 y_i <= 0
    std::vector<double> r(n, 0.0);
    for (int j = 0; j < 3; ++j) r[3 * i + j] = 1;
    r[flows + i] = -5;
    m.a.push_back(r);
    m.rlo.push_back(-inf);
    m.rup.push_back(0);
  }
  for (int j = 0; j < 3; ++j) {  // demand: sum_i x_ij >= 3
    std::vector<double> r(n, 0.0);
    for (int i = 0; i < 3; ++i) r[3 * i + j] = 1;
    m.a.push_back(r);
    m.rlo.push_back(3);
    m.rup.push_back(inf);
  }
  for (int k = 0; k < flows; ++k) {  // x_ij - 4 y_i <= 0
    std::vector<double> r(n, 0.0);
    r[k] = 1;
    r[flows + k / 3] = -4;
    m.a.push_back(r);
    m.rlo.push_back(-inf);
    m.rup.push_back(0);
  }
  m.lb.assign(n, 0);
  m.ub.assign(n, inf);
  m.integer.assign(n, 0);
  for (int i = 0; i < 3; ++i) {
    m.ub[flows + i] = 1;
    m.integer[flows + i] = 1;
  }
  m.obj = {2, 3, 4, 3, 1, 5, 4, 2, 2, 10, 12, 9};
  return m;
}

TEST(ObjectiveStep, NetworkColumnsWithBoundRowsHaveStep) { EXPECT_EQ(step_of(transport()), 1.0); }

TEST(ObjectiveStep, ColumnInThreeRowsOfSeveralFlowsHasNone) {
  model m = transport();
  // x_00 in a third row of two flows: no longer a network by columns, and
  // the supply rows hold three flows each.
  std::vector<double> r(12, 0.0);
  r[0] = 1;
  r[4] = 1;
  m.a.push_back(r);
  m.rlo.push_back(-inf);
  m.rup.push_back(4);
  EXPECT_EQ(step_of(m), 0.0);
}

TEST(ObjectiveStep, ContinuousColumnsOutsideTheRowsKeepTheirBounds) {
  model m;
  m.a = {{1, 0}};
  m.rlo = {-inf};
  m.rup = {1.5};
  m.lb = {0, 0};
  m.ub = {3, 2};
  m.integer = {1, 0};
  m.obj = {3, -6};
  EXPECT_EQ(step_of(m), 3.0);
  m.ub[1] = 2.5;
  EXPECT_EQ(step_of(m), 0.0);
}

}  // namespace
