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
// sign": union-find with the parity of each node to its root.
class parity_classes {
 public:
  explicit parity_classes(int n) : up_(static_cast<size_t>(n)), odd_(static_cast<size_t>(n), 0) {
    std::iota(up_.begin(), up_.end(), 0);
  }
  // Join a and b with the given parity between them; false when their
  // parity is already the other one.
  bool join(int a, int b, bool opposite) {
    int pa = 0, pb = 0;
    int ra = root(a, pa), rb = root(b, pb);
    if (ra == rb) return ((pa ^ pb) != 0) == opposite;
    up_[static_cast<size_t>(ra)] = rb;
    odd_[static_cast<size_t>(ra)] = static_cast<char>((pa ^ pb) ^ (opposite ? 1 : 0));
    return true;
  }

 private:
  int root(int a, int &parity) {
    parity = 0;
    while (up_[static_cast<size_t>(a)] != a) {
      parity ^= odd_[static_cast<size_t>(a)];
      a = up_[static_cast<size_t>(a)];
    }
    return a;
  }
  std::vector<int> up_;
  std::vector<char> odd_;
};

using entries = std::vector<std::vector<std::pair<int, double>>>;

// Lists of (node, ±1) entries: can the nodes be given signs so that every
// list of two has one +1 and one -1 after them?  A list of one always can,
// a list of three or more cannot.
bool signs_make_network(const entries &lists, int nodes) {
  parity_classes signs(nodes);
  for (const auto &l : lists) {
    if (l.size() > 2) return false;
    if (l.size() == 2 && !signs.join(l[0].first, l[1].first, l[0].second == l[1].second))
      return false;
  }
  return true;
}

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
  entries cont(static_cast<size_t>(m));
  bool any = false;
  for (int i = 0; i < m; ++i) {
    const CoinBigIndex start = rows.getVectorFirst(i);
    const int len = rows.getVectorLengths()[i];
    bool whole_integer_part = true;
    auto &r = cont[static_cast<size_t>(i)];
    for (CoinBigIndex k = start; k < start + len; ++k) {
      const int j = rows.getIndices()[k];
      const double a = rows.getElements()[k];
      if (a == 0.0) continue;
      if (si.isInteger(j)) {
        whole_integer_part = whole_integer_part && whole(a);
      } else {
        if (a != 1.0 && a != -1.0) return 0.0;
        if (fractional_bound(lo[j], inf) || fractional_bound(up[j], inf)) return 0.0;
        r.emplace_back(j, a);
      }
    }
    if (r.empty()) continue;
    any = true;
    if (!whole_integer_part || fractional_bound(rlo[i], inf) || fractional_bound(rup[i], inf))
      return 0.0;
  }
  if (!any) return static_cast<double>(step);
  // Total unimodularity of the continuous part, in one of two sufficient
  // forms.  By rows: at most two entries a row, and columns that can be
  // negated so that every row of two has one +1 and one -1 (the transpose
  // of a network matrix).
  if (signs_make_network(cont, n)) return static_cast<double>(step);
  // By columns: rows with one continuous entry are bounds once the integer
  // columns are fixed; over the other rows every column has at most two
  // entries, and rows can be negated so that every column of two has one +1
  // and one -1 (a network matrix).
  entries cols(static_cast<size_t>(n));
  for (int i = 0; i < m; ++i) {
    const auto &r = cont[static_cast<size_t>(i)];
    if (r.size() < 2) continue;
    for (const auto &[j, a] : r) cols[static_cast<size_t>(j)].emplace_back(i, a);
  }
  return signs_make_network(cols, m) ? static_cast<double>(step) : 0.0;
}

}  // namespace kvsl
