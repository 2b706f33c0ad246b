/*
 * qsearch.cpp -- global search of problems with a quadratic objective or
 * quadratic rows: depth-first branch and bound on the interior-point
 * relaxations, branching on column bounds for every entity, set and
 * indicator row.
 */
#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

#include <ClpSimplex.hpp>
#include <CoinPackedMatrix.hpp>

#include "search.h"
#include "solve_limits.h"

namespace kvsl {

namespace {

// One open node: its column bounds and the bound of its parent's relaxation
// (in the minimising sense).
struct node {
  std::vector<double> lo, up;
  double parent_bound;
  std::vector<double> start;   // the parent's relaxation solution
};

// A branch arm: bound changes, intersected with the node's bounds.
using arm = std::vector<bound_change>;

// Everything the search needs beside the problem.
class quadratic_search {
 public:
  quadratic_search(kvsl_prob *prob) : prob_(prob), m_(*prob->lp) {
    n_ = m_.numberColumns();
    rows_ = CoinPackedMatrix(*m_.matrix());
    if (rows_.isColOrdered()) rows_.reverseOrdering();
    sense_ = prob->sense < 0 ? -1.0 : 1.0;
    inttol_ = std::max(dblcontrol(prob, KVSL_CTRL_MIPTOL), 1e-9);
    feastol_ = std::max(dblcontrol(prob, KVSL_CTRL_FEASTOL), 1e-9);
    for (int s = 0; s < static_cast<int>(prob->settype.size()); ++s)
      set_order_.push_back(members_by_weight(prob, s));
  }

  // Run the search from the root bounds; fills the MIP results.
  void run(const char *);

 private:
  double activity(int row, const double *x) const;
  bool row_holds(int row, const double *x, double slack_tol) const;
  relaxation_bounds bounds_of(const node &nd) const;
  bool branch(const node &nd, const std::vector<double> &x, arm &a, arm &b) const;
  bool child(const node &nd, const arm &changes, double bound, const std::vector<double> &x,
             node &out) const;
  void consider(const std::vector<double> &x);
  bool prune(double bound) const;

  kvsl_prob *prob_;
  const ClpSimplex &m_;
  CoinPackedMatrix rows_;   // row-wise copy of the linear part
  int n_ = 0;
  double sense_ = 1.0, inttol_ = 1e-6, feastol_ = 1e-7;
  std::vector<std::vector<int>> set_order_;
  bool have_ = false;
  std::vector<double> best_x_;
  double best_ = 0.0;        // incumbent in the minimising sense
  bool complete_ = true;     // no node was left unexplored or unsolved
};

double quadratic_search::activity(int row, const double *x) const {
  const CoinBigIndex b = rows_.getVectorStarts()[row];
  double v = 0.0;
  for (int k = 0; k < rows_.getVectorLengths()[row]; ++k)
    v += rows_.getElements()[b + k] * x[rows_.getIndices()[b + k]];
  for (const quad_row &r : prob_->qrows)
    if (r.row == row) v += quad_row_value(r, x);
  return v;
}

// Does row `row` hold at x within the tolerance (relative to its size)?
bool quadratic_search::row_holds(int row, const double *x, double tol) const {
  double a = activity(row, x);
  double t = tol * (1.0 + std::fabs(a));
  return a >= m_.rowLower()[row] - t && a <= m_.rowUpper()[row] + t;
}

// The relaxation of a node: its column bounds, and every row in force
// except indicator rows whose column is not fixed at the value that puts
// them in force.
relaxation_bounds quadratic_search::bounds_of(const node &nd) const {
  relaxation_bounds b = model_bounds(prob_);
  b.col_lo = nd.lo;
  b.col_up = nd.up;
  for (const indicator &ind : prob_->indicators) {
    double on = ind.flag > 0 ? 1.0 : 0.0;
    if (!(nd.lo[ind.col] == on && nd.up[ind.col] == on)) {
      b.row_lo[ind.row] = -COIN_DBL_MAX;
      b.row_up[ind.row] = COIN_DBL_MAX;
    }
  }
  return b;
}

// Choose a branch for the relaxation solution x of node nd: two arms whose
// union holds every solution of the node the relaxation excludes nothing
// of, and each of which excludes x.  False: x satisfies every entity.
bool quadratic_search::branch(const node &nd, const std::vector<double> &x, arm &a, arm &b) const {
  auto integer_split = [&](int j, double v) {
    a = {{j, -COIN_DBL_MAX, std::floor(v)}};
    b = {{j, std::ceil(v), COIN_DBL_MAX}};
  };
  auto fractional = [&](double v) { return std::fabs(v - std::round(v)) > inttol_; };
  for (const entity &e : prob_->entities) {
    int j = e.col;
    double v = x[j];
    switch (e.type) {
      case 'B':
      case 'I':
        if (fractional(v)) return integer_split(j, v), true;
        break;
      case 'P':
        // Integer below the limit, continuous from it up.
        if (v < e.limit - inttol_ && fractional(v)) {
          a = {{j, -COIN_DBL_MAX, std::floor(v)}};
          b = {{j, std::min(std::ceil(v), e.limit), COIN_DBL_MAX}};
          return true;
        }
        break;
      case 'S':
      case 'R':
        // 0, or a value from the limit up (an integer one for 'R').
        if (std::fabs(v) > inttol_ && v < e.limit - inttol_) {
          a = {{j, 0.0, 0.0}};
          b = {{j, e.limit, COIN_DBL_MAX}};
          return true;
        }
        if (e.type == 'R' && v >= e.limit - inttol_ && fractional(v))
          return integer_split(j, v), true;
        break;
      default:
        break;
    }
  }
  // Sets: at most one non-zero member (type 1) or two adjacent ones (type
  // 2) in weight order.  Split after the first non-zero member f: the left
  // arm zeroes the members after f (after f + 1 for type 2), the right arm
  // those up to f.
  for (size_t s = 0; s < set_order_.size(); ++s) {
    const std::vector<int> &order = set_order_[s];
    int first = -1, last = -1;
    for (int k = 0; k < static_cast<int>(order.size()); ++k)
      if (std::fabs(x[prob_->setcol[order[k]]]) > inttol_) {
        if (first < 0) first = k;
        last = k;
      }
    int allowed = prob_->settype[s] == '2' ? 2 : 1;
    if (first < 0 || last - first + 1 <= allowed) continue;
    a.clear();
    b.clear();
    for (int k = 0; k < static_cast<int>(order.size()); ++k) {
      int j = prob_->setcol[order[k]];
      if (k > first + allowed - 1) a.push_back({j, 0.0, 0.0});
      if (k <= first) b.push_back({j, 0.0, 0.0});
    }
    return true;
  }
  // Indicator rows relaxed at x although their column takes the value that
  // puts them in force: fix the column either way.
  for (const indicator &ind : prob_->indicators) {
    double on = ind.flag > 0 ? 1.0 : 0.0;
    bool fixed = nd.lo[ind.col] == nd.up[ind.col];
    if (fixed || std::fabs(x[ind.col] - on) > inttol_) continue;
    if (row_holds(ind.row, x.data(), feastol_)) continue;
    a = {{ind.col, on, on}};
    b = {{ind.col, 1.0 - on, 1.0 - on}};
    return true;
  }
  return false;
}

// The child of nd after the changes; false when its bounds are empty.
bool quadratic_search::child(const node &nd, const arm &changes, double bound,
                             const std::vector<double> &x, node &out) const {
  out.lo = nd.lo;
  out.up = nd.up;
  for (const bound_change &c : changes) {
    out.lo[c.col] = std::max(out.lo[c.col], c.lo);
    out.up[c.col] = std::min(out.up[c.col], c.up);
    if (out.lo[c.col] > out.up[c.col]) return false;
  }
  out.parent_bound = bound;
  out.start = x;
  return true;
}

// Is a node whose relaxation is worth `bound` (minimising sense) unable to
// improve the incumbent beyond the gap?
bool quadratic_search::prune(double bound) const {
  if (!have_) return false;
  double gap = std::max({dblcontrol(prob_, KVSL_CTRL_MIPABSGAP),
                         dblcontrol(prob_, KVSL_CTRL_MIPRELGAP) * std::fabs(best_),
                         1e-9 * (1.0 + std::fabs(best_))});
  return bound >= best_ - gap;
}

// Take x (satisfying every entity) as incumbent when it is better; integer
// values are rounded and every row in force is checked first.
void quadratic_search::consider(const std::vector<double> &relaxed) {
  std::vector<double> x = relaxed;
  for (const entity &e : prob_->entities) {
    double &v = x[e.col];
    bool integral = e.type == 'B' || e.type == 'I' || (e.type == 'P' && v < e.limit) ||
                    (e.type == 'R' && std::fabs(v) > inttol_);
    if (integral) v = std::round(v);
    if ((e.type == 'S' || e.type == 'R') && std::fabs(v) <= inttol_) v = 0.0;
  }
  std::vector<char> in_force = rows_in_force(prob_, x.data());
  for (int i = 0; i < m_.numberRows(); ++i)
    if (in_force[i] && !row_holds(i, x.data(), 1e-6)) return;
  double v = sense_ * objective_of(prob_, x.data());
  if (!have_ || v < best_) {
    have_ = true;
    best_ = v;
    best_x_ = std::move(x);
    messagef(prob_, 1, "Solution found: objective %.10g", sense_ * best_);
  }
}

void quadratic_search::run(const char *) {
  const int node_limit = intcontrol(prob_, KVSL_CTRL_MAXNODE);
  relaxation_bounds root = model_bounds(prob_);
  std::vector<node> open;
  open.push_back({root.col_lo, root.col_up, -COIN_DBL_MAX, {}});
  double open_bound = COIN_DBL_MAX;   // least bound of nodes left unexplored
  int nodes = 0;
  while (!open.empty()) {
    node nd = std::move(open.back());
    open.pop_back();
    if (prune(nd.parent_bound)) continue;
    if ((node_limit > 0 && nodes >= node_limit) || deadline_passed(prob_)) {
      complete_ = false;
      open_bound = std::min(open_bound, nd.parent_bound);
      for (const node &o : open) open_bound = std::min(open_bound, o.parent_bound);
      break;
    }
    ++nodes;
    relaxation_result r;
    solve_relaxation(prob_, bounds_of(nd), nd.start.empty() ? nullptr : nd.start.data(), r);
    prob_->iterations += r.iterations;
    if (r.status == KVSL_LP_INFEAS) continue;
    if (r.status != KVSL_LP_OPTIMAL) {
      // Unsolved or unbounded relaxation: the node cannot be decided.
      complete_ = false;
      open_bound = std::min(open_bound, nd.parent_bound);
      continue;
    }
    double bound = sense_ * r.obj;
    if (prune(bound)) continue;
    arm a, b;
    if (!branch(nd, r.x, a, b)) {
      consider(r.x);
      continue;
    }
    // Depth first; the arm nearer the relaxation solution is explored first
    // (pushed last).
    node ca, cb;
    bool ha = child(nd, a, bound, r.x, ca), hb = child(nd, b, bound, r.x, cb);
    double da = 0.0, db = 0.0;
    for (const bound_change &c : a) da += std::fabs(std::clamp(r.x[c.col], c.lo, c.up) - r.x[c.col]);
    for (const bound_change &c : b) db += std::fabs(std::clamp(r.x[c.col], c.lo, c.up) - r.x[c.col]);
    if (da <= db) {
      if (hb) open.push_back(std::move(cb));
      if (ha) open.push_back(std::move(ca));
    } else {
      if (ha) open.push_back(std::move(ca));
      if (hb) open.push_back(std::move(cb));
    }
  }
  prob_->nodes = nodes;
  if (have_) {
    prob_->mip_x = best_x_;
    prob_->mip_obj = objective_of(prob_, best_x_.data());
    prob_->mip_held = true;
  }
  double bound = complete_ ? (have_ ? best_ : COIN_DBL_MAX) : std::min(open_bound, have_ ? best_ : COIN_DBL_MAX);
  if (std::fabs(bound) < 1e49) prob_->best_bound = sense_ * bound;
  if (complete_)
    prob_->mipstatus = have_ ? KVSL_MIP_OPTIMAL : KVSL_MIP_INFEAS;
  else
    prob_->mipstatus = have_ ? KVSL_MIP_SOLUTION : KVSL_MIP_NO_SOL_FOUND;
  messagef(prob_, 1, "Search of the quadratic model: %d nodes, MIP status %d", nodes,
           prob_->mipstatus);
}

}  // namespace

int solve_quadratic_search(kvsl_prob *prob, const char *flags) {
  auto t0 = std::chrono::steady_clock::now();
  // The root relaxation gives the LP results, decides convexity and stops
  // the search when it is infeasible or unbounded.
  if (int rc = solve_lp(prob, flags); rc != 0) return rc;
  prob->nodes = 0;
  prob->best_bound = prob->sense > 0 ? -KVSL_INFINITY : KVSL_INFINITY;
  if (prob->lpstatus == KVSL_LP_NONCONVEX) return 0;
  if (prob->lpstatus == KVSL_LP_INFEAS) {
    prob->mipstatus = KVSL_MIP_INFEAS;
    return 0;
  }
  if (prob->lpstatus == KVSL_LP_UNBOUNDED) {
    prob->mipstatus = KVSL_MIP_UNBOUNDED;
    return 0;
  }
  if (prob->lpstatus != KVSL_LP_OPTIMAL) {
    // A root relaxation cut short by the deadline leaves a search stopped
    // without a solution.
    prob->mipstatus =
        prob->lpstatus == KVSL_LP_UNFINISHED ? KVSL_MIP_NO_SOL_FOUND : KVSL_MIP_LP_NOT_OPTIMAL;
    return 0;
  }
  try {
    quadratic_search search(prob);
    search.run(flags);
  } catch (const std::bad_alloc &) {
    return fail(prob, KVSL_ERR_NOMEM);
  } catch (...) {
    message(prob, 4, "The global search failed in its backend.");
    return fail(prob, KVSL_ERR_BACKEND);
  }
  prob->solvetime = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  return 0;
}

}  // namespace kvsl
