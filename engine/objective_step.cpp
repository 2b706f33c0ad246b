/*
 * objective_step.cpp -- the step between objective values where continuous
 * columns carry costs.
 *
 * Cbc prunes every node that cannot beat the incumbent by the objective's
 * step, which it derives from integer columns alone.  Where continuous
 * columns carry costs (a model that minimises the largest deviation, d >=
 * s_i for continuous s_i) the step still exists when, for integral values
 * of the integer columns, the continuous part is a totally unimodular
 * system with integral right-hand sides and bounds: its optimum is then
 * attained at an integral point, and with integral costs every value a
 * solution can improve to is a multiple of their greatest common divisor.
 * Cbc re-solves the continuous part of every solution it is given with the
 * integer columns fixed, so its incumbents lie on those multiples too.
 */
#include "objective_step.h"

#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

#include <CoinPackedMatrix.hpp>
#include <OsiSolverInterface.hpp>

#include "kvsl.h"

namespace kvsl {

namespace {

// An exact integer of a size whose greatest common divisors stay exact.
bool whole(double v) { return std::fabs(v) < 1e12 && v == std::nearbyint(v); }

// A finite bound that is not an exact integer (bounds at the engine's
// infinity or the backend's are infinite).
bool fractional_bound(double v, double inf) {
  return std::fabs(v) < inf && std::fabs(v) < KVSL_INFINITY && !whole(v);
}

// Signs of the nodes of a graph whose edges say "same sign" or "opposite
// sign": union-find by size with path compression, keeping the parity of
// each node to its parent.
class parity_classes {
 public:
  explicit parity_classes(int n)
      : up_(static_cast<size_t>(n)), size_(static_cast<size_t>(n), 1),
        odd_(static_cast<size_t>(n), 0) {
    std::iota(up_.begin(), up_.end(), 0);
  }
  // Join a and b with the given parity between them; false when their
  // parity is already the other one.
  bool join(int a, int b, bool opposite) {
    int pa = 0, pb = 0;
    int ra = root(a, pa), rb = root(b, pb);
    const char parity = static_cast<char>(pa ^ pb ^ (opposite ? 1 : 0));
    if (ra == rb) return parity == 0;
    if (size_[static_cast<size_t>(ra)] > size_[static_cast<size_t>(rb)]) std::swap(ra, rb);
    up_[static_cast<size_t>(ra)] = rb;
    odd_[static_cast<size_t>(ra)] = parity;
    size_[static_cast<size_t>(rb)] += size_[static_cast<size_t>(ra)];
    return true;
  }

 private:
  // The root of a and a's parity to it; every node on the way is hung
  // straight under the root with its parity to it.
  int root(int a, int &parity) {
    int r = a, p = 0;
    while (up_[static_cast<size_t>(r)] != r) {
      p ^= odd_[static_cast<size_t>(r)];
      r = up_[static_cast<size_t>(r)];
    }
    parity = p;
    while (up_[static_cast<size_t>(a)] != r) {
      const int next = up_[static_cast<size_t>(a)];
      const char rest = static_cast<char>(p ^ odd_[static_cast<size_t>(a)]);
      up_[static_cast<size_t>(a)] = r;
      odd_[static_cast<size_t>(a)] = static_cast<char>(p);
      p = rest;
      a = next;
    }
    return r;
  }
  std::vector<int> up_, size_;
  std::vector<char> odd_;
};

// The continuous entries of a row: how many, and the first two.
struct row_entries {
  int count = 0;
  int col[2] = {0, 0};
  double val[2] = {0.0, 0.0};
};

}  // namespace

double continuous_objective_step(const OsiSolverInterface &si) {
  const int n = si.getNumCols(), m = si.getNumRows();
  const double inf = si.getInfinity();
  const double *lo = si.getColLower(), *up = si.getColUpper(), *cost = si.getObjCoefficients();
  int64_t step = 0;
  for (int j = 0; j < n; ++j) {
    if (cost[j] == 0.0) continue;
    if (!whole(cost[j])) return 0.0;
    step = std::gcd(step, static_cast<int64_t>(std::fabs(cost[j])));
    if (!si.isInteger(j) && (fractional_bound(lo[j], inf) || fractional_bound(up[j], inf)))
      return 0.0;
  }
  if (step == 0) return 0.0;
  // Rows over continuous columns: continuous coefficients of ±1 and, once
  // the integer columns (integral coefficients there) are fixed, integral
  // right-hand sides.  Continuous columns there have integral bounds.
  const CoinPackedMatrix &rows = *si.getMatrixByRow();
  const double *rlo = si.getRowLower(), *rup = si.getRowUpper();
  std::vector<row_entries> cont(static_cast<size_t>(m));
  bool any = false, rows_of_two = true;
  for (int i = 0; i < m; ++i) {
    const CoinBigIndex start = rows.getVectorFirst(i);
    const int len = rows.getVectorLengths()[i];
    bool whole_integer_part = true;
    row_entries &r = cont[static_cast<size_t>(i)];
    for (CoinBigIndex k = start; k < start + len; ++k) {
      const int j = rows.getIndices()[k];
      const double a = rows.getElements()[k];
      if (a == 0.0) continue;
      if (si.isInteger(j)) {
        whole_integer_part = whole_integer_part && whole(a);
        continue;
      }
      if (a != 1.0 && a != -1.0) return 0.0;
      if (fractional_bound(lo[j], inf) || fractional_bound(up[j], inf)) return 0.0;
      if (r.count < 2) {
        r.col[r.count] = j;
        r.val[r.count] = a;
      }
      ++r.count;
    }
    if (r.count == 0) continue;
    any = true;
    rows_of_two = rows_of_two && r.count <= 2;
    if (!whole_integer_part || fractional_bound(rlo[i], inf) || fractional_bound(rup[i], inf))
      return 0.0;
  }
  if (!any) return static_cast<double>(step);
  // Total unimodularity of the continuous part, in one of two sufficient
  // forms.  By rows: at most two entries a row, and columns that can be
  // negated so that every row of two has one +1 and one -1 (the transpose
  // of a network matrix).
  if (rows_of_two) {
    parity_classes signs(n);
    bool network = true;
    for (const row_entries &r : cont)
      if (r.count == 2 && !signs.join(r.col[0], r.col[1], r.val[0] == r.val[1])) {
        network = false;
        break;
      }
    if (network) return static_cast<double>(step);
  }
  // By columns: rows with one continuous entry are bounds once the integer
  // columns are fixed; over the other rows every column has at most two
  // entries, and rows can be negated so that every column of two has one +1
  // and one -1 (a network matrix).
  const CoinPackedMatrix &columns = *si.getMatrixByCol();
  parity_classes signs(m);
  for (int j = 0; j < n; ++j) {
    if (si.isInteger(j)) continue;
    const CoinBigIndex start = columns.getVectorFirst(j);
    const int len = columns.getVectorLengths()[j];
    int count = 0, first = 0;
    double first_val = 0.0;
    for (CoinBigIndex k = start; k < start + len; ++k) {
      const int i = columns.getIndices()[k];
      const double a = columns.getElements()[k];
      if (a == 0.0 || cont[static_cast<size_t>(i)].count < 2) continue;
      if (++count == 1) {
        first = i;
        first_val = a;
      } else if (count > 2 || !signs.join(first, i, first_val == a)) {
        return 0.0;
      }
    }
  }
  return static_cast<double>(step);
}

}  // namespace kvsl
