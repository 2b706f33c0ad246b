/*
 * strengthen.cpp -- root strengthening of the search's working copy: integer
 * bounds implied by the rows, and smaller coefficients of integer columns.
 */
#include "strengthen.h"

#include <cmath>

#include <CoinPackedMatrix.hpp>
#include <OsiClpSolverInterface.hpp>

#include "kvsl.h"

namespace kvsl {

namespace {

// Rows whose coefficients stray outside this range in size take no part:
// the rounding errors of their activities would outweigh what they give.
constexpr double min_coefficient = 1e-7;
constexpr double max_coefficient = 1e7;
// Integer bounds are not derived beyond this size (nor rows used whose
// finite sides or bounds are larger): above it a rounded bound says little
// and its rounding error much.
constexpr double max_magnitude = 1e9;
// Propagation passes over all rows at most: each pass can only move a
// bound by what the last one moved, and long chains of small steps are
// not worth their time at the root.
constexpr int max_passes = 8;

bool infinite(double v) { return std::fabs(v) >= KVSL_INFINITY; }

// The range of one row's activity over the current bounds: the finite part
// of each end and the number of terms that make that end infinite.
struct activity {
  double min = 0.0, max = 0.0;
  int min_inf = 0, max_inf = 0;
  double size = 0.0;  // sum of the sizes of the finite terms (for tolerances)
};

// One row of the row-wise matrix.
struct row_view {
  const int *col;
  const double *val;
  int len;
};

activity activity_of(const row_view &r, const std::vector<double> &lo,
                     const std::vector<double> &up) {
  activity a;
  for (int k = 0; k < r.len; ++k) {
    const double c = r.val[k];
    const int j = r.col[k];
    const double at_min = c > 0 ? lo[j] : up[j], at_max = c > 0 ? up[j] : lo[j];
    if (infinite(at_min)) {
      ++a.min_inf;
    } else {
      a.min += c * at_min;
      a.size += std::fabs(c * at_min);
    }
    if (infinite(at_max)) {
      ++a.max_inf;
    } else {
      a.max += c * at_max;
      a.size += std::fabs(c * at_max);
    }
  }
  return a;
}

// Can the row take part: coefficients of sensible size, sides that are
// infinite or of sensible size?
bool usable(const row_view &r, double rlo, double rup) {
  if ((!infinite(rlo) && std::fabs(rlo) > max_magnitude) ||
      (!infinite(rup) && std::fabs(rup) > max_magnitude))
    return false;
  for (int k = 0; k < r.len; ++k) {
    const double c = std::fabs(r.val[k]);
    if (c < min_coefficient || c > max_coefficient) return false;
  }
  return true;
}

// The work of one strengthening on copies of the working copy's data.
class strengthener {
 public:
  strengthener(const OsiClpSolverInterface &solver, const std::vector<char> &plain)
      : rows_(*solver.getMatrixByRow()),
        plain_(plain),
        lo_(solver.getColLower(), solver.getColLower() + solver.getNumCols()),
        up_(solver.getColUpper(), solver.getColUpper() + solver.getNumCols()),
        rlo_(solver.getRowLower(), solver.getRowLower() + solver.getNumRows()),
        rup_(solver.getRowUpper(), solver.getRowUpper() + solver.getNumRows()) {
    plain_.resize(lo_.size(), 0);
    round_bounds();
  }

  // Propagate bounds until nothing moves (or the passes run out).
  void propagate() {
    for (int pass = 0; pass < max_passes && !contradiction_; ++pass) {
      const int before = moved_;
      for (int i = 0; i < rows_.getNumRows() && !contradiction_; ++i) propagate_row(i);
      if (moved_ == before) break;
    }
  }

  // Make coefficients smaller in the rows with one finite side.
  void reduce_coefficients() {
    if (contradiction_) return;  // the search finds the infeasibility itself
    for (int i = 0; i < rows_.getNumRows(); ++i) reduce_row(i);
  }

  // Hand the changes to the working copy.
  strengthening apply(OsiClpSolverInterface &solver) const {
    for (size_t j = 0; j < lo_.size(); ++j) {
      if (plain_[j] == 0) continue;
      const int col = static_cast<int>(j);
      if (lo_[j] != solver.getColLower()[j]) solver.setColLower(col, lo_[j]);
      if (up_[j] != solver.getColUpper()[j]) solver.setColUpper(col, up_[j]);
    }
    if (done_.coefficients > 0) {
      CoinPackedMatrix by_col;
      by_col.reverseOrderedCopyOf(rows_);
      solver.replaceMatrix(by_col);
      for (size_t i = 0; i < rlo_.size(); ++i)
        solver.setRowBounds(static_cast<int>(i), rlo_[i], rup_[i]);
    }
    return done_;
  }

 private:
  // A plain column takes integer values only: its bounds round inwards.
  // Coefficient reduction counts on it, since it reasons about the value
  // one step inside the bound.
  void round_bounds() {
    for (size_t j = 0; j < lo_.size() && !contradiction_; ++j) {
      if (plain_[j] == 0) continue;
      const double l = infinite(lo_[j]) ? lo_[j] : std::ceil(lo_[j] - 1e-9);
      const double u = infinite(up_[j]) ? up_[j] : std::floor(up_[j] + 1e-9);
      if (l > u) {
        contradiction_ = true;
      } else {
        done_.bounds += (l != lo_[j]) + (u != up_[j]);
        lo_[j] = l;
        up_[j] = u;
      }
    }
  }

  row_view row(int i) const {
    const CoinBigIndex s = rows_.getVectorStarts()[i];
    return {rows_.getIndices() + s, rows_.getElements() + s, rows_.getVectorLengths()[i]};
  }

  // Tighten the bounds of the plain columns of row i from its sides.
  void propagate_row(int i) {
    const row_view r = row(i);
    if (!usable(r, rlo_[i], rup_[i])) return;
    const activity a = activity_of(r, lo_, up_);
    for (int k = 0; k < r.len && !contradiction_; ++k) {
      const int j = r.col[k];
      const double c = r.val[k];
      // Both ends of the rest of the row (without column j), where finite.
      const double at_min = c > 0 ? lo_[j] : up_[j], at_max = c > 0 ? up_[j] : lo_[j];
      const int min_inf = a.min_inf - (infinite(at_min) ? 1 : 0);
      const int max_inf = a.max_inf - (infinite(at_max) ? 1 : 0);
      const double rest_min = a.min - (infinite(at_min) ? 0.0 : c * at_min);
      const double rest_max = a.max - (infinite(at_max) ? 0.0 : c * at_max);
      // c x_j <= rup - rest_min and c x_j >= rlo - rest_max.
      if (!infinite(rup_[i]) && min_inf == 0)
        bound_from(j, c, rup_[i] - rest_min, c > 0, a.size + std::fabs(rup_[i]));
      if (!infinite(rlo_[i]) && max_inf == 0)
        bound_from(j, c, rlo_[i] - rest_max, c < 0, a.size + std::fabs(rlo_[i]));
    }
  }

  // From c x_j <= rhs (upper) or c x_j >= rhs (!upper) with c of the sign
  // that makes the quotient an upper bound when upper is true.  A plain
  // column's bound rounds inwards, leaving room for the rounding errors of
  // the activity (size) and the primal tolerance of the rows, and goes to
  // the working copy; any other column's is only reasoned with here: it is
  // implied by the rows, but as a bound of the LP it would change what the
  // objects of semi-continuous columns, sets and indicator rows branch on,
  // and tight continuous bounds make the node LPs degenerate.
  void bound_from(int j, double c, double rhs, bool upper, double size) {
    const double v = rhs / c;
    if (std::fabs(v) > max_magnitude) return;
    const double tol = (1e-6 + 1e-12 * size) / std::fabs(c);
    if (tol > 1e-3) return;
    double &bound = upper ? up_[j] : lo_[j];
    const double other = upper ? lo_[j] : up_[j];
    const double sign = upper ? 1.0 : -1.0;  // the new bound must be below (above) the old
    double nb;
    if (plain_[j] != 0) {
      nb = upper ? std::floor(v + tol) : std::ceil(v - tol);
      if (sign * (bound - nb) <= 1e-9) return;
    } else {
      // Integral data give integral bounds, which keep the rows they
      // reach integral too; otherwise a little room for rounding errors.
      const double near = std::round(v);
      nb = std::fabs(v - near) <= 1e-9 * (1.0 + std::fabs(v)) ? near
                                                              : v + sign * 1e-9 * (1.0 + std::fabs(v));
      // Small steps are not worth a bound: they only make more passes.
      if (!infinite(bound) && sign * (bound - nb) <= 1e-3 * (1.0 + std::fabs(nb))) return;
    }
    if (!infinite(other) && sign * (nb - other) < -(1e-6 + tol)) {
      contradiction_ = true;
      return;
    }
    if (!infinite(other) && sign * (nb - other) < 0) nb = other;
    bound = nb;
    ++moved_;
    if (plain_[j] != 0) ++done_.bounds;
  }

  // Are the coefficients of a row, its side b and the bounds that give its
  // largest activity (as sum c x <= b: upper bounds where the row's
  // coefficient has the sign of the side's direction) all integers?
  bool integral_row(const row_view &r, double b, bool has_up) const {
    if (b != std::floor(b)) return false;
    for (int k = 0; k < r.len; ++k) {
      const double c = r.val[k];
      const double at = (c > 0) == has_up ? up_[r.col[k]] : lo_[r.col[k]];
      if (c != std::floor(c) || at != std::floor(at)) return false;
    }
    return true;
  }

  // Row i as sum c x <= b with sign s; the largest activity M over the
  // bounds leaves the slack g = M - b.  A plain column with |c_k| > g
  // makes the row hold whatever the rest when it moves one step away from
  // the bound that gives M: its coefficient becomes g (in size) and b
  // moves by the change times that bound, which keeps g.
  void reduce_row(int i) {
    const bool has_up = !infinite(rup_[i]), has_lo = !infinite(rlo_[i]);
    if (has_up == has_lo) return;  // free rows, equalities and ranges stay
    const row_view r = row(i);
    if (!usable(r, rlo_[i], rup_[i])) return;
    const activity a = activity_of(r, lo_, up_);
    const double s = has_up ? 1.0 : -1.0;
    if ((has_up ? a.max_inf : a.min_inf) != 0 || a.size > max_magnitude) return;
    double b = has_up ? rup_[i] : -rlo_[i];
    const double big_m = has_up ? a.max : -a.min;
    const double g = big_m - b;
    // A row that holds at its largest activity is redundant, one that only
    // just holds there fixes its columns: neither is worth changing.
    if (g <= 1e-6 * (1.0 + std::fabs(b))) return;
    // A larger slack than the true one keeps the step valid.  Integral
    // data give an exact slack (well within the doubles' integers), and
    // keeping the row integral keeps it so for the cut generators.
    const double slack =
        integral_row(r, b, has_up) ? g : g + 1e-9 * (1.0 + a.size + std::fabs(b));
    double *val = rows_.getMutableElements() + rows_.getVectorStarts()[i];
    bool changed = false;
    for (int k = 0; k < r.len; ++k) {
      const int j = r.col[k];
      if (plain_[j] == 0) continue;
      const double c = s * val[k];
      const double d = std::fabs(c) - slack;
      if (d <= 1e-6 * std::max(1.0, std::fabs(c))) continue;
      if (c > 0) {
        b -= d * up_[j];
        val[k] = s * slack;
      } else {
        b += d * lo_[j];
        val[k] = -s * slack;
      }
      ++done_.coefficients;
      changed = true;
    }
    if (!changed) return;
    ++done_.rows;
    if (has_up)
      rup_[i] = b;
    else
      rlo_[i] = -b;
  }

  CoinPackedMatrix rows_;
  std::vector<char> plain_;
  std::vector<double> lo_, up_, rlo_, rup_;
  bool contradiction_ = false;
  int moved_ = 0;  // bounds moved, plain or not
  strengthening done_;
};

}  // namespace

strengthening strengthen_rows(OsiClpSolverInterface &solver, const std::vector<char> &plain) {
  strengthener work(solver, plain);
  work.propagate();
  work.reduce_coefficients();
  return work.apply(solver);
}

}  // namespace kvsl
