/*
 * iis.cpp -- irreducible infeasible subsystems of the loaded LP (or of a
 * MIP's relaxation): an elastic filter, a deletion filter, and a bounded
 * search for further subsystems that avoid members of those found.
 */
#include <algorithm>
#include <chrono>
#include <cmath>
#include <deque>
#include <new>
#include <set>

#include <ClpSimplex.hpp>
#include <CoinFinite.hpp>
#include <CoinPackedMatrix.hpp>

#include "iis.h"
#include "search.h"
#include "solve_limits.h"

namespace kvsl {

namespace {

// Bounds of the search for further subsystems: it stops after this many
// subsystems, this many subproblems explored, or this much time.
constexpr int max_subsystems = 50;
constexpr int max_explored = 400;
constexpr double max_seconds = 20.0;

// The loaded LP with a zero objective, whose rows and bounds can be switched
// on and off to test subsystems for feasibility.  A zero objective makes
// every basis dual feasible, so each test warm-starts the dual simplex.
class subsystem_lp {
 public:
  explicit subsystem_lp(const kvsl_prob *prob) : n{prob->lp->numberRows(), prob->lp->numberColumns()} {
    const ClpSimplex &src = *prob->lp;
    rl.assign(src.rowLower(), src.rowLower() + n.nrows);
    ru.assign(src.rowUpper(), src.rowUpper() + n.nrows);
    cl.assign(src.columnLower(), src.columnLower() + n.ncols);
    cu.assign(src.columnUpper(), src.columnUpper() + n.ncols);
    std::vector<double> zero(n.ncols, 0.0);
    m.loadProblem(*src.matrix(), cl.data(), cu.data(), zero.data(), rl.data(), ru.data());
    m.setLogLevel(0);
    m.setPrimalTolerance(src.primalTolerance());
    m.setDualTolerance(src.dualTolerance());
    m.scaling(3);
    // Indicator rows do not bind the relaxation; they never join a subsystem.
    excluded.assign(n.nrows, false);
    for (const indicator &ind : prob->indicators) excluded[ind.row] = true;
  }

  const numbering &num() const { return n; }

  // Every member that can take part: non-free rows and finite bounds.
  std::vector<int> all_members() const {
    std::vector<int> out;
    for (int i = 0; i < n.nrows; ++i)
      if (!excluded[i] && (rl[i] > -COIN_DBL_MAX || ru[i] < COIN_DBL_MAX)) out.push_back(i);
    for (int j = 0; j < n.ncols; ++j) {
      if (cl[j] > -COIN_DBL_MAX) out.push_back(n.nrows + 2 * j);
      if (cu[j] < COIN_DBL_MAX) out.push_back(n.nrows + 2 * j + 1);
    }
    return out;
  }

  // Is the system made of exactly these members (sorted) feasible?  The
  // dual simplex warm-starts from the last basis.  An optimum, even a false
  // one of an unbounded system, is a feasible point: it needs no
  // confirming.  Any other verdict is settled by the engine's one check of
  // LP verdicts (the dual simplex can call a system with free columns
  // infeasible when it is not).
  bool feasible(const std::vector<int> &members) {
    apply(members, m);
    m.dual(0);
    if (m.status() == 0) return true;
    confirm_verdict(m);
    return m.status() != 1;
  }

  // The elastic filter: minimise the total violation of the member rows
  // (bounds stay hard) and return the members that the optimal duals
  // certify as conflicting.  Empty when the members are feasible.
  std::vector<int> elastic_support(const std::vector<int> &members) {
    ClpSimplex e;
    e.setLogLevel(0);
    std::vector<double> zero(n.ncols, 0.0);
    bounds b = bounds_of(members);
    auto &[l, u, lo, up] = b;
    e.loadProblem(*m.matrix(), l.data(), u.data(), zero.data(), lo.data(), up.data());
    // One elastic column per finite side of each member row.
    for (int mem : members) {
      if (!n.is_row(mem)) continue;
      for (double coef : {1.0, -1.0}) {
        if ((coef > 0 ? lo[mem] : up[mem]) == (coef > 0 ? -COIN_DBL_MAX : COIN_DBL_MAX)) continue;
        int row = mem;
        e.addColumn(1, &row, &coef, 0.0, COIN_DBL_MAX, 1.0);
      }
    }
    e.scaling(3);
    e.primal(0);
    if (e.status() != 0 || e.objectiveValue() <= 10 * e.primalTolerance()) return {};
    std::vector<int> out;
    const double *y = e.dualRowSolution();
    const double *dj = e.dualColumnSolution();
    const double *x = e.primalColumnSolution();
    const double tol = 1e-9;
    for (int mem : members) {
      if (n.is_row(mem)) {
        if (std::fabs(y[mem]) > tol) out.push_back(mem);
        continue;
      }
      int j = n.col(mem);
      double bound = n.upper(mem) ? u[j] : l[j];
      bool at = std::fabs(x[j] - bound) <= 1e-7 * std::max(1.0, std::fabs(bound));
      if (at && (n.upper(mem) ? dj[j] < -tol : dj[j] > tol)) out.push_back(mem);
    }
    return out;
  }

  // A column whose lower bound lies above its upper bound is a subsystem
  // of two members by itself.
  std::vector<int> crossed_bounds(const std::vector<int> &members) const {
    std::set<int> have(members.begin(), members.end());
    for (int j = 0; j < n.ncols; ++j) {
      int lo = n.nrows + 2 * j, up = lo + 1;
      if (cl[j] > cu[j] + m.primalTolerance() && have.count(lo) && have.count(up)) return {lo, up};
    }
    return {};
  }

 private:
  // Column and row bounds of the system made of the given members; every
  // other row and bound is free.
  struct bounds {
    std::vector<double> l, u, lo, up;
  };
  bounds bounds_of(const std::vector<int> &members) const {
    bounds b{std::vector<double>(n.ncols, -COIN_DBL_MAX), std::vector<double>(n.ncols, COIN_DBL_MAX),
             std::vector<double>(n.nrows, -COIN_DBL_MAX), std::vector<double>(n.nrows, COIN_DBL_MAX)};
    for (int mem : members) {
      if (n.is_row(mem)) {
        b.lo[mem] = rl[mem];
        b.up[mem] = ru[mem];
      } else if (n.upper(mem)) {
        b.u[n.col(mem)] = cu[n.col(mem)];
      } else {
        b.l[n.col(mem)] = cl[n.col(mem)];
      }
    }
    return b;
  }

  // Switch the model to the given members; everything else is free.
  void apply(const std::vector<int> &members, ClpSimplex &lp) const {
    bounds b = bounds_of(members);
    auto &[l, u, lo, up] = b;
    lp.chgRowLower(lo.data());
    lp.chgRowUpper(up.data());
    lp.chgColumnLower(l.data());
    lp.chgColumnUpper(u.data());
  }

  numbering n;
  std::vector<double> rl, ru, cl, cu;
  std::vector<bool> excluded;
  ClpSimplex m;
};

// Remove from a sorted member list the members of another sorted list.
std::vector<int> without(const std::vector<int> &all, const std::vector<int> &removed) {
  std::vector<int> out;
  std::set_difference(all.begin(), all.end(), removed.begin(), removed.end(),
                      std::back_inserter(out));
  return out;
}

}  // namespace

// The search state of one problem, kept until the problem changes.
struct iis_state {
  explicit iis_state(const kvsl_prob *loaded)
      : prob(loaded), lp(loaded), all(lp.all_members()),
        has_globals(!loaded->entities.empty() || !loaded->settype.empty()) {}

  const kvsl_prob *prob;
  subsystem_lp lp;
  std::vector<int> all;                  // every member that can take part
  bool has_globals;                      // entities or sets are loaded
  int relaxation_feasible = -1;          // -1 not known yet
  bool approx_done = false;
  std::vector<int> approx;               // IIS 0: the elastic filter's set
  std::vector<std::vector<int>> found;   // IIS 1, 2, ...: irreducible sets
  std::vector<int> flags;                // their flags (iis.h)
  std::set<std::vector<int>> seen;
  std::deque<std::vector<int>> pending;  // removal sets still to explore
  std::set<std::vector<int>> queued;
  bool started = false, ended = false;
  int explored = 0;
  std::chrono::steady_clock::time_point t0 = std::chrono::steady_clock::now();

  // The infeasible subsystem the elastic filter certifies within members.
  std::vector<int> candidate(const std::vector<int> &members) {
    std::vector<int> c = lp.crossed_bounds(members);
    if (!c.empty()) return c;
    if (lp.feasible(members)) return {};
    c = lp.elastic_support(members);
    // Rounding can leave a certificate that does not prove infeasibility
    // on its own; the deletion filter then works on every member.
    if (c.empty() || lp.feasible(c)) return members;
    return c;
  }

  // Is the relaxation of a model with entities feasible (so that only the
  // integer model can be infeasible)?
  bool integer_only() {
    if (!has_globals) return false;
    if (relaxation_feasible < 0) relaxation_feasible = lp.feasible(all) ? 1 : 0;
    return relaxation_feasible == 1;
  }

  bool started_any() const { return started || approx_done; }

  // IIS 0: the elastic filter's subsystem, not made irreducible (none
  // when only the integer model is infeasible).
  void compute_approx() {
    if (!integer_only()) approx = candidate(all);
    approx_done = true;
  }

  // Drop every member whose removal keeps the system infeasible.
  std::vector<int> deletion_filter(std::vector<int> set) {
    for (size_t k = 0; k < set.size();) {
      std::vector<int> trial = set;
      trial.erase(trial.begin() + static_cast<std::ptrdiff_t>(k));
      if (!lp.feasible(trial))
        set = std::move(trial);
      else
        ++k;
    }
    return set;
  }

  bool out_of_budget() const {
    double t = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    return static_cast<int>(found.size()) >= max_subsystems || explored >= max_explored ||
           t > max_seconds || deadline_passed(prob);
  }

  // Only the integer model is infeasible: one subsystem, from the deletion
  // filter over MIP solves.
  bool next_integer() {
    if (started) return false;
    started = true;
    mip_iis r = integer_deletion_filter(prob, all);
    if (r.members.empty()) return false;
    found.push_back(std::move(r.members));
    flags.push_back(r.flags);
    return true;
  }

  // Find the next irreducible subsystem not found before; false at the end.
  bool next() {
    if (integer_only()) return next_integer();
    if (!started) {
      started = true;
      pending.push_back({});
      queued.insert({});
    }
    while (!pending.empty() && !out_of_budget()) {
      std::vector<int> removed = std::move(pending.front());
      pending.pop_front();
      ++explored;
      std::vector<int> members = without(all, removed);
      std::vector<int> c = candidate(members);
      if (c.empty()) continue;
      std::vector<int> iis = deletion_filter(c);
      // Each later search leaves out one more member of this subsystem.
      for (int mem : iis) {
        std::vector<int> r = removed;
        r.insert(std::upper_bound(r.begin(), r.end(), mem), mem);
        if (queued.insert(r).second) pending.push_back(std::move(r));
      }
      if (seen.insert(iis).second) {
        found.push_back(std::move(iis));
        flags.push_back(0);
        return true;
      }
    }
    // A search stopped by the time limit may go on in a later call.
    ended = !stopped_by_limit(prob);
    return false;
  }
};

}  // namespace kvsl

namespace {

// Run a step, turning backend failures into error codes; a step that
// searches (`solves`) first checks the problem as an optimisation does.
template <class F>
int guarded(KVSLprob prob, F &&step, bool solves = false) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  if (int rc = solves ? kvsl::refuse_invalid(prob) : 0; rc != 0) return rc;
  // Each call that searches has the time limit to itself.
  kvsl::deadline_scope limits(prob);
  try {
    return step();
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  } catch (...) {
    return kvsl::fail(prob, KVSL_ERR_BACKEND);
  }
}

// A fresh search state for the problem as loaded now.
kvsl::iis_state &fresh_state(KVSLprob prob) {
  prob->iis = std::make_shared<kvsl::iis_state>(prob);
  return *prob->iis;
}

// Report a subsystem found through the message callback.
void report(KVSLprob prob, int num, const std::vector<int> &members) {
  int nrows = prob->lp->numberRows();
  auto rows = std::count_if(members.begin(), members.end(), [&](int m) { return m < nrows; });
  kvsl::messagef(prob, 1, "IIS %d: %d rows, %d bounds", num, static_cast<int>(rows),
                 static_cast<int>(members.size() - static_cast<size_t>(rows)));
}

// Find the next subsystem of a started search; *status 1 at the end.
int step_next(KVSLprob prob, kvsl::iis_state &st, int *status) {
  bool got = !st.ended && st.next();
  if (got) report(prob, static_cast<int>(st.found.size()), st.found.back());
  if (status != nullptr) *status = got ? 0 : 1;
  return 0;
}

// The members of IIS num, or null when there is no such subsystem.
const std::vector<int> *subsystem(KVSLprob prob, int num) {
  if (num == 0) {
    if (!prob->iis) {
      if (prob->lpstatus != KVSL_LP_INFEAS) return nullptr;
      fresh_state(prob);
    }
    kvsl::iis_state &st = *prob->iis;
    if (!st.approx_done) st.compute_approx();
    return st.approx.empty() ? nullptr : &st.approx;
  }
  if (!prob->iis || num < 0 || num > static_cast<int>(prob->iis->found.size())) return nullptr;
  return &prob->iis->found[static_cast<size_t>(num - 1)];
}

}  // namespace

KVSL_EXPORT int KVSLiisstatus(KVSLprob prob, int *count) {
  if (count == nullptr) return kvsl::fail(prob, KVSL_ERR_BADARG);
  return guarded(prob, [&] {
    *count = prob->iis && prob->iis->started_any() ? static_cast<int>(prob->iis->found.size()) : -1;
    return 0;
  });
}

KVSL_EXPORT int KVSLiisall(KVSLprob prob) {
  return guarded(prob, [&] {
    kvsl::iis_state &st = prob->iis ? *prob->iis : fresh_state(prob);
    int status = 0;
    while (status == 0) {
      int rc = step_next(prob, st, &status);
      if (rc != 0) return rc;
    }
    return 0;
  }, true);
}

KVSL_EXPORT int KVSLiisfirst(KVSLprob prob, int mode, int *status) {
  if (mode != 0 && mode != 1) return kvsl::fail(prob, KVSL_ERR_BADARG);
  return guarded(prob, [&] {
    kvsl::iis_state &st = fresh_state(prob);
    if (mode == 1) return step_next(prob, st, status);
    st.compute_approx();
    if (status != nullptr) *status = st.approx.empty() ? 1 : 0;
    return 0;
  }, true);
}

KVSL_EXPORT int KVSLiisnext(KVSLprob prob, int *status) {
  return guarded(prob, [&] {
    kvsl::iis_state &st = prob->iis ? *prob->iis : fresh_state(prob);
    return step_next(prob, st, status);
  }, true);
}

KVSL_EXPORT int KVSLgetiisdata(KVSLprob prob, int num, int *nrows, int *ncols, int rowind[],
                               int colind[], char rowtype[]) {
  return guarded(prob, [&] {
    const std::vector<int> *set = subsystem(prob, num);
    if (set == nullptr) return kvsl::fail(prob, KVSL_ERR_INDEX);
    int r = prob->lp->numberRows(), nr = 0, nc = 0;
    for (int m : *set) {
      if (m < r) {
        if (rowind != nullptr) rowind[nr] = m;
        if (rowtype != nullptr) rowtype[nr] = prob->rowtype[static_cast<size_t>(m)];
        ++nr;
      } else {
        if (colind != nullptr) colind[nc] = (m - r) / 2;
        ++nc;
      }
    }
    if (nrows != nullptr) *nrows = nr;
    if (ncols != nullptr) *ncols = nc;
    return 0;
  });
}

KVSL_EXPORT int KVSLgetiisbounds(KVSLprob prob, int num, char bndtype[], int *flags) {
  return guarded(prob, [&] {
    const std::vector<int> *set = subsystem(prob, num);
    if (set == nullptr) return kvsl::fail(prob, KVSL_ERR_INDEX);
    int r = prob->lp->numberRows(), nc = 0;
    for (int m : *set)
      if (m >= r && bndtype != nullptr) bndtype[nc++] = (m - r) % 2 == 1 ? 'U' : 'L';
    if (flags != nullptr) *flags = num == 0 ? 0 : prob->iis->flags[static_cast<size_t>(num - 1)];
    return 0;
  });
}

namespace kvsl {

int iis_found(const kvsl_prob *prob) {
  return prob->iis ? static_cast<int>(prob->iis->found.size()) : 0;
}

bool iis_available(const kvsl_prob *prob) {
  return prob->loaded && prob->lpstatus == KVSL_LP_INFEAS;
}

}  // namespace kvsl
