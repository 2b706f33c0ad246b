/*
 * qp.cpp -- convexity of quadratic forms: the engine solves only convex
 * problems and reports "not convex" for the others.
 */
#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <vector>

#include <ClpQuadraticObjective.hpp>
#include <ClpSimplex.hpp>
#include <CoinPackedMatrix.hpp>

#include "engine.h"

namespace kvsl {

namespace {

// Relative tolerance of the semidefiniteness decision: a form of n columns
// counts as positive semidefinite when its smallest eigenvalue is above
// -tol n times its largest entry.  Entries known to about seven significant
// digits (as models are usually written) move the eigenvalues of a
// semidefinite form by up to that much; a genuinely indefinite form of any
// practical model lies far below it.
constexpr double psd_tolerance = 1e-7;

// Is the dense symmetric matrix a (n x n, row-major) positive semidefinite
// within the tolerance?  The Cholesky factorisation of a + delta I, delta the
// tolerance times n times the largest entry, exists exactly when the smallest
// eigenvalue of a is above -delta; its pivots stay at least delta away from
// zero for a semidefinite a, so singular matrices are decided reliably.
bool is_psd(std::vector<double> &a, int n) {
  double scale = 0.0;
  for (double v : a) scale = std::max(scale, std::fabs(v));
  if (scale == 0.0) return true;
  const double delta = psd_tolerance * std::max(1, n) * scale;
  for (int i = 0; i < n; ++i) a[static_cast<size_t>(i) * n + i] += delta;
  // Lower triangle, row by row (row-major L in place).
  for (int i = 0; i < n; ++i) {
    double *ri = &a[static_cast<size_t>(i) * n];
    for (int j = 0; j <= i; ++j) {
      const double *rj = &a[static_cast<size_t>(j) * n];
      double s = ri[j];
      for (int k = 0; k < j; ++k) s -= ri[k] * rj[k];
      if (j < i) {
        ri[j] = s / rj[j];
      } else {
        // Pivots of a semidefinite matrix stay above delta (up to rounding).
        if (s <= 0.5 * delta) return false;
        ri[i] = std::sqrt(s);
      }
    }
  }
  return true;
}

}  // namespace

bool form_is_psd(const std::vector<int> &col1, const std::vector<int> &col2,
                 const std::vector<double> &val, double sign) {
  // Only the columns that occur in the form matter.
  std::unordered_map<int, int> pos;
  for (size_t k = 0; k < val.size(); ++k)
    for (int c : {col1[k], col2[k]}) pos.emplace(c, static_cast<int>(pos.size()));
  const int n = static_cast<int>(pos.size());
  // A diagonal form is decided entry by entry.
  bool diagonal = true;
  double scale = 0.0;
  for (size_t k = 0; k < val.size(); ++k) {
    diagonal = diagonal && (col1[k] == col2[k] || val[k] == 0.0);
    scale = std::max(scale, std::fabs(val[k]));
  }
  if (diagonal) {
    std::vector<double> d(n, 0.0);
    for (size_t k = 0; k < val.size(); ++k) d[pos[col1[k]]] += sign * val[k];
    for (double v : d)
      if (v < -psd_tolerance * scale) return false;
    return true;
  }
  std::vector<double> a(static_cast<size_t>(n) * n, 0.0);
  for (size_t k = 0; k < val.size(); ++k) {
    int r = pos[col1[k]], c = pos[col2[k]];
    a[static_cast<size_t>(r) * n + c] += sign * val[k];
    if (r != c) a[static_cast<size_t>(c) * n + r] += sign * val[k];
  }
  return is_psd(a, n);
}

const CoinPackedMatrix *quadratic_of(const ClpSimplex &m) {
  auto *q = dynamic_cast<ClpQuadraticObjective *>(m.objectiveAsObject());
  return q != nullptr ? q->quadraticObjective() : nullptr;
}

bool quadratic_is_convex(const kvsl_prob *prob) {
  if (!prob->has_quadratic) return true;
  const CoinPackedMatrix *q = quadratic_of(*prob->lp);
  std::vector<int> c1, c2;
  std::vector<double> v;
  const int *ind = q->getIndices();
  const double *el = q->getElements();
  const CoinBigIndex *st = q->getVectorStarts();
  const int *len = q->getVectorLengths();
  for (int j = 0; j < q->getNumCols(); ++j)
    for (CoinBigIndex k = st[j]; k < st[j] + len[j]; ++k) {
      c1.push_back(ind[k]);
      c2.push_back(j);
      v.push_back(el[k]);
    }
  // Q is kept as one triangle; maximising, -Q must be semidefinite.
  return form_is_psd(c1, c2, v, prob->sense < 0 ? -1.0 : 1.0);
}

bool quadratic_rows_are_convex(const kvsl_prob *prob) {
  for (const quad_row &r : prob->qrows) {
    char t = prob->rowtype[r.row];
    bool psd = form_is_psd(r.col1, r.col2, r.val, 1.0);
    bool nsd = form_is_psd(r.col1, r.col2, r.val, -1.0);
    // Convex feasible sets: x'Qx <= .. with Q semidefinite, >= with -Q.
    if (t == 'L' && !psd) return false;
    if (t == 'G' && !nsd) return false;
    if ((t == 'E' || t == 'R') && !(psd && nsd)) return false;
  }
  return true;
}

}  // namespace kvsl
