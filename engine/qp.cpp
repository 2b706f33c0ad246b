/*
 * qp.cpp -- convexity of the quadratic objective: the engine solves only
 * convex problems and reports "not convex" for the others.
 */
#include <algorithm>
#include <cmath>
#include <vector>

#include <ClpQuadraticObjective.hpp>
#include <ClpSimplex.hpp>
#include <CoinPackedMatrix.hpp>

#include "engine.h"

namespace kvsl {

namespace {

// Is the dense symmetric matrix a (n x n, row-major) positive semidefinite?
// Cholesky with diagonal pivoting: the largest remaining diagonal is
// eliminated first; once it is (relatively) zero, the rest must be zero too.
bool is_psd(std::vector<double> &a, int n) {
  double scale = 0.0;
  for (double v : a) scale = std::max(scale, std::fabs(v));
  if (scale == 0.0) return true;
  const double tol = 1e-9 * scale * std::max(1, n);
  std::vector<int> order(n);
  for (int i = 0; i < n; ++i) order[i] = i;
  for (int k = 0; k < n; ++k) {
    int best = k;
    for (int i = k + 1; i < n; ++i)
      if (a[order[i] * n + order[i]] > a[order[best] * n + order[best]]) best = i;
    std::swap(order[k], order[best]);
    int p = order[k];
    double d = a[p * n + p];
    if (d < -tol) return false;
    if (d <= tol) {
      // Semidefinite pivot: the remaining block must vanish.
      for (int i = k; i < n; ++i)
        for (int j = k; j < n; ++j)
          if (std::fabs(a[order[i] * n + order[j]]) > tol) return false;
      return true;
    }
    for (int i = k + 1; i < n; ++i) {
      int r = order[i];
      double f = a[r * n + p] / d;
      if (f == 0.0) continue;
      for (int j = k + 1; j < n; ++j) {
        int c = order[j];
        a[r * n + c] -= f * a[p * n + c];
      }
    }
  }
  return true;
}

}  // namespace

const CoinPackedMatrix *quadratic_of(const ClpSimplex &m) {
  auto *q = dynamic_cast<ClpQuadraticObjective *>(m.objectiveAsObject());
  return q != nullptr ? q->quadraticObjective() : nullptr;
}

bool quadratic_is_convex(const kvsl_prob *prob) {
  if (!prob->has_quadratic) return true;
  const CoinPackedMatrix *q = quadratic_of(*prob->lp);
  // Only the columns that occur in Q matter.
  std::vector<int> pos(q->getNumCols(), -1);
  std::vector<int> cols;
  const int *ind = q->getIndices();
  const double *el = q->getElements();
  const CoinBigIndex *st = q->getVectorStarts();
  const int *len = q->getVectorLengths();
  for (int j = 0; j < q->getNumCols(); ++j)
    for (CoinBigIndex k = st[j]; k < st[j] + len[j]; ++k)
      for (int c : {j, ind[k]})
        if (pos[c] < 0) {
          pos[c] = static_cast<int>(cols.size());
          cols.push_back(c);
        }
  int n = static_cast<int>(cols.size());
  std::vector<double> a(static_cast<size_t>(n) * n, 0.0);
  // Q is kept as one triangle; maximising, -Q must be semidefinite.
  double s = prob->sense < 0 ? -1.0 : 1.0;
  for (int j = 0; j < q->getNumCols(); ++j)
    for (CoinBigIndex k = st[j]; k < st[j] + len[j]; ++k) {
      int r = pos[ind[k]], c = pos[j];
      a[r * n + c] += s * el[k];
      if (r != c) a[c * n + r] += s * el[k];
    }
  return is_psd(a, n);
}

}  // namespace kvsl
