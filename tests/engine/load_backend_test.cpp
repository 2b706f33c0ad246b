/*
 * load_backend_test.cpp -- the backend model a load leaves behind: bounds,
 * objective, starting point, statuses and matrix equal to what the
 * backend's own load call makes of the same arrays, for random models.
 */
#include <ClpPackedMatrix.hpp>
#include <ClpSimplex.hpp>
#include <CoinPackedMatrix.hpp>

#include <cmath>
#include <cstring>
#include <random>

#include "engine.h"
#include "mps_reader.h"

namespace {

using LoadBackendTest = EngineTest;

// Random models in the load form of the reference models, with every
// feature that changes what the backend is given: infinite and
// out-of-range bounds, ranges, binaries with bounds outside [0, 1], counts
// with gaps between columns.
using random_model = mps_model;

int rows_of(const random_model &m) { return static_cast<int>(m.rowtype.size()); }

double random_bound(std::mt19937 &rng, bool lower) {
  switch (rng() % 8) {
    case 0: return lower ? -KVSL_INFINITY : KVSL_INFINITY;
    case 1: return lower ? -1e30 : 1e30;   // beyond the interface's infinity
    case 2: return lower ? 2.0 : -3.0;     // lower positive, upper negative
    case 3: return 0.0;
    default: return lower ? -static_cast<double>(rng() % 5) : static_cast<double>(rng() % 9);
  }
}

random_model make_model(unsigned seed, bool gaps) {
  std::mt19937 rng(seed);
  random_model m;
  m.ncols = 1 + static_cast<int>(rng() % 40);
  const int nrows = static_cast<int>(rng() % 30);
  const char types[] = "NLGER";
  for (int i = 0; i < nrows; ++i) {
    m.rowtype += types[rng() % 5];
    m.rhs.push_back(static_cast<double>(rng() % 21) - 10.0);
    m.range.push_back(rng() % 4 == 0 ? KVSL_INFINITY : static_cast<double>(rng() % 6));
  }
  for (int j = 0; j < m.ncols; ++j) {
    m.obj.push_back(static_cast<double>(rng() % 11) - 5.0);
    m.lb.push_back(random_bound(rng, true));
    m.ub.push_back(random_bound(rng, false));
    m.start.push_back(static_cast<int64_t>(m.ind.size()));
    int n = 0;
    for (int i = 0; i < nrows; ++i)
      if (rng() % 3 == 0) {
        m.ind.push_back(i);
        m.val.push_back(static_cast<double>(rng() % 9) - 4.0 + 0.5);
        ++n;
      }
    m.count.push_back(n);
    if (gaps)
      for (int g = static_cast<int>(rng() % 3); g > 0; --g) {
        m.ind.push_back(-1);   // never read: outside every column's count
        m.val.push_back(1e300);
      }
    if (rng() % 4 == 0) {
      m.enttype += rng() % 2 == 0 ? 'B' : 'I';
      m.entcol.push_back(j);
    }
  }
  m.start.push_back(static_cast<int64_t>(m.ind.size()));
  return m;
}

double backend(double v) {
  if (v >= KVSL_INFINITY) return COIN_DBL_MAX;
  if (v <= -KVSL_INFINITY) return -COIN_DBL_MAX;
  return v;
}

// The backend model made by the backend's own load call from the same
// arrays, converted as the engine documents: infinite bounds, row
// activity bounds from type, rhs and range, binaries within [0, 1].
void reference_model(const random_model &m, ClpSimplex &ref) {
  std::vector<CoinBigIndex> start(m.ncols + 1);
  for (int j = 0; j <= m.ncols; ++j) start[j] = static_cast<CoinBigIndex>(m.start[j]);
  const int nrows = rows_of(m);
  std::vector<double> lb(m.ncols), ub(m.ncols), rlo(nrows), rup(nrows);
  for (int j = 0; j < m.ncols; ++j) {
    lb[j] = backend(m.lb[j]);
    ub[j] = backend(m.ub[j]);
  }
  for (size_t k = 0; k < m.entcol.size(); ++k)
    if (m.enttype[k] == 'B') {
      lb[m.entcol[k]] = std::max(lb[m.entcol[k]], 0.0);
      ub[m.entcol[k]] = std::min(ub[m.entcol[k]], 1.0);
    }
  for (int i = 0; i < nrows; ++i) {
    const double r = m.rhs[i];
    switch (m.rowtype[i]) {
      case 'L': rlo[i] = -COIN_DBL_MAX; rup[i] = backend(r); break;
      case 'G': rlo[i] = backend(r); rup[i] = COIN_DBL_MAX; break;
      case 'E': rlo[i] = rup[i] = r; break;
      case 'R':
        rup[i] = backend(r);
        rlo[i] = m.range[i] >= KVSL_INFINITY ? -COIN_DBL_MAX : backend(r - m.range[i]);
        break;
      default: rlo[i] = -COIN_DBL_MAX; rup[i] = COIN_DBL_MAX; break;
    }
  }
  static const int no_index = 0;
  static const double no_value = 0.0;
  ref.loadProblem(m.ncols, nrows, start.data(), m.ind.empty() ? &no_index : m.ind.data(),
                  m.val.empty() ? &no_value : m.val.data(), m.count.data(), lb.data(), ub.data(),
                  m.obj.data(), rlo.data(), rup.data());
}

// Equal doubles, NaN equal to NaN.
void expect_same(const double *a, const double *b, int n, const char *what) {
  for (int k = 0; k < n; ++k) {
    if (std::isnan(a[k]) && std::isnan(b[k])) continue;
    EXPECT_EQ(a[k], b[k]) << what << " " << k;
  }
}

// Every column's (row, value) pairs in order; gaps are not compared.
void expect_same_matrix(const CoinPackedMatrix &a, const CoinPackedMatrix &b) {
  ASSERT_EQ(a.getNumCols(), b.getNumCols());
  ASSERT_EQ(a.getNumRows(), b.getNumRows());
  ASSERT_EQ(a.getNumElements(), b.getNumElements());
  ASSERT_TRUE(a.isColOrdered());
  for (int j = 0; j < a.getNumCols(); ++j) {
    ASSERT_EQ(a.getVectorLengths()[j], b.getVectorLengths()[j]) << "column " << j;
    const CoinBigIndex sa = a.getVectorStarts()[j], sb = b.getVectorStarts()[j];
    for (int k = 0; k < a.getVectorLengths()[j]; ++k) {
      EXPECT_EQ(a.getIndices()[sa + k], b.getIndices()[sb + k]) << "column " << j;
      EXPECT_EQ(a.getElements()[sa + k], b.getElements()[sb + k]) << "column " << j;
    }
  }
}

void expect_same_backend(ClpSimplex &got, ClpSimplex &ref, bool gaps) {
  const int n = ref.numberColumns(), m = ref.numberRows();
  ASSERT_EQ(got.numberColumns(), n);
  ASSERT_EQ(got.numberRows(), m);
  expect_same(got.columnLower(), ref.columnLower(), n, "column lower");
  expect_same(got.columnUpper(), ref.columnUpper(), n, "column upper");
  expect_same(got.rowLower(), ref.rowLower(), m, "row lower");
  expect_same(got.rowUpper(), ref.rowUpper(), m, "row upper");
  expect_same(got.objective(), ref.objective(), n, "objective");
  expect_same(got.primalColumnSolution(), ref.primalColumnSolution(), n, "column activity");
  expect_same(got.primalRowSolution(), ref.primalRowSolution(), m, "row activity");
  expect_same(got.dualColumnSolution(), ref.dualColumnSolution(), n, "reduced cost");
  expect_same(got.dualRowSolution(), ref.dualRowSolution(), m, "dual");
  ASSERT_NE(got.statusArray(), nullptr);
  ASSERT_NE(ref.statusArray(), nullptr);
  EXPECT_EQ(std::memcmp(got.statusArray(), ref.statusArray(), static_cast<size_t>(n + m)), 0);
  EXPECT_EQ(got.rowObjective() == nullptr, ref.rowObjective() == nullptr);
  const CoinPackedMatrix &a = *got.matrix(), &b = *ref.matrix();
  expect_same_matrix(a, b);
  // The backend's copy of gapless arrays has no gaps; with gaps given the
  // engine's copy closes them (the same columns, less memory).
  EXPECT_FALSE(a.hasGaps());
  if (!gaps) {
    EXPECT_EQ(std::memcmp(a.getVectorStarts(), b.getVectorStarts(), sizeof(CoinBigIndex) * (n + 1)), 0);
    auto *pa = dynamic_cast<ClpPackedMatrix *>(got.clpMatrix());
    auto *pb = dynamic_cast<ClpPackedMatrix *>(ref.clpMatrix());
    ASSERT_NE(pa, nullptr);
    ASSERT_NE(pb, nullptr);
    EXPECT_EQ(pa->flags(), pb->flags());
  }
  EXPECT_EQ(a.getExtraGap(), b.getExtraGap());
  EXPECT_EQ(a.getExtraMajor(), b.getExtraMajor());
}

int load_random(KVSLprob p, const random_model &m) { return load_mps(p, m, !m.entcol.empty()); }

TEST_F(LoadBackendTest, RandomModelsGiveTheBackendModelOfItsOwnLoad) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    const bool gaps = seed % 3 == 0;
    random_model m = make_model(seed, gaps);
    ASSERT_EQ(load_random(p, m), 0);
    ClpSimplex ref;
    reference_model(m, ref);
    expect_same_backend(*p->lp, ref, gaps);
    // The loaded model solves as the backend's own does.
    if (seed % 5 == 0) {
      ref.setLogLevel(0);
      ref.dual();
      ASSERT_EQ(KVSLminim(p, ""), 0);
      int status = int_attr(p, KVSL_ATTR_LPSTATUS);
      if (ref.status() == 0) {
        EXPECT_EQ(status, KVSL_LP_OPTIMAL);
        EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), ref.objectiveValue(),
                    1e-7 * (1 + std::fabs(ref.objectiveValue())));
      }
    }
  }
}

TEST_F(LoadBackendTest, NoColumnsNoCoefficientsAndNaNBounds) {
  random_model m;
  m.rowtype = "LE";
  m.rhs = {1, 2};
  m.range = {0, 0};
  m.start = {0};
  ASSERT_EQ(load_random(p, m), 0);
  {
    ClpSimplex ref;
    reference_model(m, ref);
    expect_same_backend(*p->lp, ref, false);
  }
  m.ncols = 3;
  m.obj = {1, 0, -1};
  m.lb = {std::nan(""), 1, -KVSL_INFINITY};
  m.ub = {1, std::nan(""), -2};
  m.start = {0, 0, 0, 0};
  m.count = {0, 0, 0};
  ASSERT_EQ(load_random(p, m), 0);
  ClpSimplex ref;
  reference_model(m, ref);
  expect_same_backend(*p->lp, ref, false);
}

}  // namespace
