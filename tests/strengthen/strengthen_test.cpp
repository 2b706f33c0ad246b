/*
 * strengthen_test.cpp -- root strengthening on small models: the rows and
 * bounds it gives, and on random models the integer points it keeps.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <ClpSimplex.hpp>
#include <CoinPackedMatrix.hpp>
#include <OsiClpSolverInterface.hpp>

#include "dense_model.h"
#include "kvsl.h"
#include "strengthen.h"

namespace {

using dense::inf;
using dense::model;
using dense::solver_of;

// The model a solver holds, as dense rows.
model model_of(const OsiClpSolverInterface &s, const std::vector<char> &integer) {
  model m;
  const int n = s.getNumCols();
  const CoinPackedMatrix &rows = *s.getMatrixByRow();
  for (int i = 0; i < s.getNumRows(); ++i) {
    std::vector<double> r(n, 0.0);
    const CoinShallowPackedVector v = rows.getVector(i);
    for (int k = 0; k < v.getNumElements(); ++k) r[v.getIndices()[k]] = v.getElements()[k];
    m.a.push_back(r);
    m.rlo.push_back(s.getRowLower()[i]);
    m.rup.push_back(s.getRowUpper()[i]);
  }
  m.lb.assign(s.getColLower(), s.getColLower() + n);
  m.ub.assign(s.getColUpper(), s.getColUpper() + n);
  m.integer = integer;
  return m;
}

// Does x satisfy the rows and bounds (tolerance tol)?
bool satisfies(const model &m, const std::vector<double> &x, double tol = 1e-9) {
  for (size_t j = 0; j < x.size(); ++j)
    if (x[j] < m.lb[j] - tol || x[j] > m.ub[j] + tol) return false;
  for (size_t i = 0; i < m.a.size(); ++i) {
    double act = 0.0;
    for (size_t j = 0; j < x.size(); ++j) act += m.a[i][j] * x[j];
    if (act < m.rlo[i] - tol || act > m.rup[i] + tol) return false;
  }
  return true;
}

// Strengthen m with the given plain columns; the strengthened model.
model strengthened(const model &m, const std::vector<char> &plain, kvsl::strengthening *done) {
  auto s = solver_of(m);
  kvsl::strengthening d = kvsl::strengthen_rows(*s, plain);
  if (done != nullptr) *done = d;
  model out = model_of(*s, m.integer);
  // Infinite sides read back as the backend's infinity: compare as ours.
  for (auto *v : {&out.rlo, &out.rup, &out.lb, &out.ub})
    for (double &x : *v)
      if (std::fabs(x) >= inf) x = x > 0 ? inf : -inf;
  return out;
}

// ---- Rows and bounds by hand ------------------------------------------------

// 150x + 45y >= 80 over integers in [0, 3]: x = 1 alone meets the row, so
// its coefficient drops to 80.
TEST(Strengthen, GreaterRowCoefficientDropsToItsSide) {
  model m{{{150, 45}}, {80}, {inf}, {0, 0}, {3, 3}, {1, 1}};
  kvsl::strengthening done;
  model s = strengthened(m, {1, 1}, &done);
  EXPECT_DOUBLE_EQ(s.a[0][0], 80.0);
  EXPECT_DOUBLE_EQ(s.a[0][1], 45.0);
  EXPECT_DOUBLE_EQ(s.rlo[0], 80.0);
  EXPECT_EQ(s.rup[0], inf);
  EXPECT_EQ(done.coefficients, 1);
  EXPECT_EQ(done.rows, 1);
}

// A working copy whose LP was solved before (basis, scaling, row copy)
// solves the strengthened rows afterwards: min 3x + 2y over
// 150x + 45y >= 80 relaxes to 1.6 as given and to 3 strengthened.
TEST(Strengthen, SolvedWorkingCopyTakesTheStrengthenedRows) {
  model m{{{150, 45}}, {80}, {inf}, {0, 0}, {3, 3}, {1, 1}};
  auto s = solver_of(m);
  const double obj[] = {3, 2};
  s->setObjective(obj);
  s->initialSolve();
  ASSERT_TRUE(s->isProvenOptimal());
  EXPECT_NEAR(s->getObjValue(), 1.6, 1e-9);
  // The search works on a copy of the solved LP, as here.
  OsiClpSolverInterface copy(new ClpSimplex(*s->getModelPtr()), true);
  copy.messageHandler()->setLogLevel(0);
  copy.setInteger(0);
  copy.setInteger(1);
  (void)copy.getMatrixByRow();  // a cached row copy must not outlive the change
  kvsl::strengthen_rows(copy, {1, 1});
  copy.initialSolve();
  ASSERT_TRUE(copy.isProvenOptimal());
  EXPECT_NEAR(copy.getObjValue(), 3.0, 1e-9);
  EXPECT_DOUBLE_EQ(copy.getMatrixByRow()->getCoefficient(0, 0), 80.0);
  EXPECT_DOUBLE_EQ(copy.getMatrixByCol()->getCoefficient(0, 0), 80.0);
}

// 3x + 2y <= 4 over binaries: x + y <= 1.
TEST(Strengthen, LessRowOverBinariesBecomesAPacking) {
  model m{{{3, 2}}, {-inf}, {4}, {0, 0}, {1, 1}, {1, 1}};
  kvsl::strengthening done;
  model s = strengthened(m, {1, 1}, &done);
  EXPECT_NEAR(s.a[0][0], 1.0, 1e-6);
  EXPECT_NEAR(s.a[0][1], 1.0, 1e-6);
  EXPECT_NEAR(s.rup[0], 1.0, 1e-6);
  EXPECT_EQ(done.coefficients, 2);
}

// 2x + 3y <= 7 over integers in [0, 10]: x <= 3, y <= 2; then the row is
// no longer one whose coefficients exceed its slack (12 - 7 = 5).
TEST(Strengthen, IntegerBoundsImpliedByARow) {
  model m{{{2, 3}}, {-inf}, {7}, {0, 0}, {10, 10}, {1, 1}};
  kvsl::strengthening done;
  model s = strengthened(m, {1, 1}, &done);
  EXPECT_EQ(s.ub[0], 3.0);
  EXPECT_EQ(s.ub[1], 2.0);
  EXPECT_EQ(s.a[0][0], 2.0);
  EXPECT_EQ(s.a[0][1], 3.0);
  EXPECT_EQ(done.bounds, 2);
  EXPECT_EQ(done.coefficients, 0);
}

// Lower bounds from a greater row with a negative coefficient beside:
// x - y >= 2.5 with x integer in [0, 9], y integer in [1, 4]: x >= 4,
// y <= 4 (the upper bound of x leaves y <= 6.5, already 4).
TEST(Strengthen, LowerBoundRoundsUp) {
  model m{{{1, -1}}, {2.5}, {inf}, {0, 1}, {9, 4}, {1, 1}};
  model s = strengthened(m, {1, 1}, nullptr);
  EXPECT_EQ(s.lb[0], 4.0);
  EXPECT_EQ(s.ub[1], 4.0);
}

// -3x + y <= 0 with x binary and y continuous in [0, 1]: -x + y <= 0.
TEST(Strengthen, NegativeCoefficientMovesTowardsZero) {
  model m{{{-3, 1}}, {-inf}, {0}, {0, 0}, {1, 1}, {1, 0}};
  model s = strengthened(m, {1, 0}, nullptr);
  EXPECT_NEAR(s.a[0][0], -1.0, 1e-6);
  EXPECT_EQ(s.a[0][1], 1.0);
  EXPECT_NEAR(s.rup[0], 0.0, 1e-6);
}

// A continuous column's bound implied by another row counts in the
// reasoning but stays out of the working copy: z <= 2 (a row), 5x + z <= 6
// with x binary and z >= 0 unbounded above gives x + z <= 2 (up to the
// room left for the rows' tolerance in the implied bound).
TEST(Strengthen, ImpliedContinuousBoundIsOnlyReasonedWith) {
  model m{{{0, 1}, {5, 1}}, {-inf, -inf}, {2, 6}, {0, 0}, {1, inf}, {1, 0}};
  model s = strengthened(m, {1, 0}, nullptr);
  EXPECT_EQ(s.ub[1], inf);
  EXPECT_NEAR(s.a[1][0], 1.0, 1e-5);
  EXPECT_NEAR(s.rup[1], 2.0, 1e-5);
  EXPECT_GE(s.a[1][0], 1.0);  // never below the true slack
}

// 5x + z - w <= 6 with z, w >= 0 unbounded above: the largest activity is
// infinite (and the row implies no bound of z): nothing to reduce.
TEST(Strengthen, InfiniteActivityLeavesTheRow) {
  model m{{{5, 1, -1}}, {-inf}, {6}, {0, 0, 0}, {1, inf, inf}, {1, 0, 0}};
  kvsl::strengthening done;
  model s = strengthened(m, {1, 0, 0}, &done);
  EXPECT_EQ(s.a[0][0], 5.0);
  EXPECT_EQ(s.rup[0], 6.0);
  EXPECT_EQ(done.coefficients, 0);
}

// Equalities and ranged rows keep their coefficients (their bounds still
// count): 3x + 2y = 2 and 1 <= 3x + 2y <= 4 over binaries.
TEST(Strengthen, EqualityAndRangedRowsKeepTheirCoefficients) {
  for (double lo : {2.0, 1.0}) {
    double up = lo == 2.0 ? 2.0 : 4.0;
    model m{{{3, 2}}, {lo}, {up}, {0, 0}, {1, 1}, {1, 1}};
    kvsl::strengthening done;
    model s = strengthened(m, {1, 1}, &done);
    EXPECT_EQ(s.a[0][0], 3.0);
    EXPECT_EQ(s.a[0][1], 2.0);
    EXPECT_EQ(done.coefficients, 0);
  }
}

// Columns that are not plain (semi-continuous, set members, indicator
// columns in the search) keep their bounds and coefficients.
TEST(Strengthen, ColumnsThatAreNotPlainAreLeftAlone) {
  model m{{{3, 2}, {2, 3}}, {-inf, -inf}, {4, 7}, {0, 0}, {1, 10}, {1, 1}};
  model s = strengthened(m, {0, 0}, nullptr);
  EXPECT_EQ(s.a, m.a);
  EXPECT_EQ(s.ub, m.ub);
  EXPECT_EQ(s.rup, m.rup);
}

// Fractional bounds of plain columns round inwards.
TEST(Strengthen, FractionalIntegerBoundsRoundInwards) {
  model m{{{1, 1}}, {-inf}, {100}, {0.5, -2.5}, {2.7, 3}, {1, 1}};
  model s = strengthened(m, {1, 1}, nullptr);
  EXPECT_EQ(s.lb[0], 1.0);
  EXPECT_EQ(s.ub[0], 2.0);
  EXPECT_EQ(s.lb[1], -2.0);
}

// A model without integer points: whatever is changed keeps it so, and no
// bound crosses another.
TEST(Strengthen, InfeasibleModelStaysConsistent) {
  model m{{{1, 1}, {2, 5}}, {3, -inf}, {inf, 6}, {0, 0}, {1, 1}, {1, 1}};
  model s = strengthened(m, {1, 1}, nullptr);
  for (size_t j = 0; j < s.lb.size(); ++j) EXPECT_LE(s.lb[j], s.ub[j]);
}

// Rows with huge or tiny coefficients take no part.
TEST(Strengthen, BadlyScaledRowsTakeNoPart) {
  model m{{{3e8, 2}, {1e-9, 5}}, {-inf, -inf}, {4e8, 6}, {0, 0}, {1, 1}, {1, 1}};
  model s = strengthened(m, {1, 1}, nullptr);
  EXPECT_EQ(s.a, m.a);
  EXPECT_EQ(s.rup, m.rup);
}

// ---- Random models: no integer point lost, no LP point gained ---------------

struct random_model {
  model m;
  std::vector<char> plain;
};

random_model random_instance(uint64_t seed) {
  std::mt19937_64 g(seed);
  auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(g); };
  random_model r;
  const int n = pick(2, 4), rows = pick(1, 3);
  for (int j = 0; j < n; ++j) {
    const int kind = pick(0, 5);  // 0-2 plain, 3 integer not plain, 4-5 continuous
    const bool integer = kind <= 3;
    double lb = pick(-3, 1), ub = lb + pick(0, 4);
    if (pick(0, 9) == 0) lb += 0.5;  // a fractional bound now and then
    if (pick(0, 7) == 0) ub = inf;
    if (pick(0, 9) == 0) lb = -inf;
    r.m.lb.push_back(lb);
    r.m.ub.push_back(ub);
    r.m.integer.push_back(integer ? 1 : 0);
    r.plain.push_back(kind <= 2 ? 1 : 0);
  }
  for (int i = 0; i < rows; ++i) {
    std::vector<double> a(n, 0.0);
    for (double &v : a)
      if (pick(0, 3) != 0) v = pick(-9, 9) * (pick(0, 4) == 0 ? 0.5 : 1.0);
    const double b = pick(-8, 12);
    const int t = pick(0, 5);  // L, L, G, G, E, R
    r.m.a.push_back(a);
    r.m.rlo.push_back(t <= 1 ? -inf : t == 5 ? b - pick(0, 6) : b);
    r.m.rup.push_back(t <= 1 || t >= 4 ? b : inf);
  }
  return r;
}

// Every point of the grid: integer columns at their integer values within
// [-4, 6] and bounds, continuous ones at steps of 0.5 within them.
void each_point(const model &m, const std::function<void(const std::vector<double> &)> &f) {
  const size_t n = m.lb.size();
  std::vector<std::vector<double>> values(n);
  for (size_t j = 0; j < n; ++j) {
    const double lo = std::max(m.lb[j], -4.0), hi = std::min(m.ub[j], 6.0);
    const double step = m.integer[j] != 0 ? 1.0 : 0.5;
    for (double v = m.integer[j] != 0 ? std::ceil(lo) : lo; v <= hi + 1e-12; v += step)
      values[j].push_back(v);
  }
  std::vector<double> x(n);
  std::function<void(size_t)> rec = [&](size_t j) {
    if (j == n) {
      f(x);
      return;
    }
    for (double v : values[j]) {
      x[j] = v;
      rec(j + 1);
    }
  };
  rec(0);
}

TEST(Strengthen, RandomModelsKeepEveryIntegerPoint) {
  int changed = 0;
  for (uint64_t seed = 1; seed <= 3000; ++seed) {
    random_model r = random_instance(seed);
    kvsl::strengthening done;
    model s = strengthened(r.m, r.plain, &done);
    if (done.bounds + done.coefficients > 0) ++changed;
    int lost = 0;
    each_point(r.m, [&](const std::vector<double> &x) {
      if (satisfies(r.m, x) && !satisfies(s, x, 1e-6)) ++lost;
    });
    EXPECT_EQ(lost, 0) << "seed " << seed;
    if (lost > 0) break;
  }
  // The random models exercise the strengthening, not only the checks.
  EXPECT_GT(changed, 1000);
}

// A point of the strengthened relaxation satisfies the original rows: the
// search's solutions need no mapping back.
TEST(Strengthen, RandomModelsGainNoRelaxedPoint) {
  std::mt19937_64 g(7);
  int coefficient_models = 0;
  for (uint64_t seed = 1; seed <= 3000; ++seed) {
    random_model r = random_instance(seed);
    kvsl::strengthening done;
    model s = strengthened(r.m, r.plain, &done);
    if (done.coefficients == 0) continue;
    ++coefficient_models;
    int gained = 0;
    for (int k = 0; k < 2000; ++k) {
      std::vector<double> x(r.m.lb.size());
      for (size_t j = 0; j < x.size(); ++j) {
        const double lo = std::max(s.lb[j], -6.0), hi = std::min(s.ub[j], 8.0);
        x[j] = lo >= hi ? lo : std::uniform_real_distribution<double>(lo, hi)(g);
      }
      if (satisfies(s, x) && !satisfies(r.m, x, 1e-6)) ++gained;
    }
    EXPECT_EQ(gained, 0) << "seed " << seed;
    if (gained > 0) break;
  }
  EXPECT_GT(coefficient_models, 100);
}

}  // namespace
