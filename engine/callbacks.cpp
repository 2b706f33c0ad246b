/*
 * callbacks.cpp -- the application's callbacks in the global search: a cut
 * generator that applies the cut pool and calls the cut manager and the
 * candidate-solution callback, and an event handler that lets the
 * candidate callback veto every solution before it becomes the incumbent.
 */
#include <cmath>

#include <CbcModel.hpp>
#include <CbcCutGenerator.hpp>
#include <CbcEventHandler.hpp>
#include <CglCutGenerator.hpp>
#include <ClpSimplex.hpp>
#include <CoinPackedVector.hpp>
#include <OsiAuxInfo.hpp>
#include <OsiCuts.hpp>
#include <OsiRowCut.hpp>
#include <OsiSolverInterface.hpp>

#include "callbacks.h"
#include "search.h"
#include "solve_limits.h"

namespace kvsl {

namespace {

// While it lives, the problem's LP solution is the one a callback is
// about, so that KVSLgetlpsol answers it; the search's own LP results are
// put back afterwards.
class callback_solution {
 public:
  callback_solution(kvsl_prob *prob, const double *x, const double *dj) : prob_(prob) {
    held_ = prob->lp_held;
    obj_ = prob->lp_obj;
    x_.swap(prob->lp_x);
    slack_.swap(prob->lp_slack);
    dual_.swap(prob->lp_dual);
    dj_.swap(prob->lp_dj);
    const int rows = static_cast<int>(prob->rowtype.size());
    prob->lp_x.assign(x, x + prob->ncols);
    prob->lp_slack.assign(rows, 0.0);
    slacks_of(prob, x, prob->lp_slack.data());
    prob->lp_dual.assign(rows, 0.0);
    if (dj != nullptr) prob->lp_dj.assign(dj, dj + prob->ncols);
    else prob->lp_dj.assign(prob->ncols, 0.0);
    prob->lp_obj = objective_of(prob, x);
    prob->lp_held = true;
  }
  ~callback_solution() {
    prob_->lp_held = held_;
    prob_->lp_obj = obj_;
    prob_->lp_x.swap(x_);
    prob_->lp_slack.swap(slack_);
    prob_->lp_dual.swap(dual_);
    prob_->lp_dj.swap(dj_);
  }
  callback_solution(const callback_solution &) = delete;
  callback_solution &operator=(const callback_solution &) = delete;

 private:
  kvsl_prob *prob_;
  bool held_;
  double obj_;
  std::vector<double> x_, slack_, dual_, dj_;
};

// Activity of a pool cut at x.
double activity(const pool_cut &c, const double *x) {
  double a = 0.0;
  for (size_t k = 0; k < c.col.size(); ++k) a += c.val[k] * x[c.col[k]];
  return a;
}

bool violated(const pool_cut &c, const double *x, double tol) {
  double a = activity(c, x);
  double t = tol * (1.0 + std::fabs(c.rhs));
  switch (c.rowtype) {
    case 'L': return a > c.rhs + t;
    case 'G': return a < c.rhs - t;
    default: return std::fabs(a - c.rhs) > t;
  }
}

// Cuts of the application hold for every solution it accepts: one that
// violates a pool cut (a heuristic's, which no node LP has seen) is
// refused like a rejected candidate.
bool violates_any(const kvsl_prob *prob, const double *x, double tol) {
  if (!prob->callbacks) return false;
  for (const auto &c : prob->callbacks->pool)
    if (violated(*c, x, tol)) return true;
  return false;
}

// Are the integer columns of x integral?
bool integral(const kvsl_prob *prob, const double *x) {
  const double tol = dblcontrol(prob, KVSL_CTRL_MIPTOL);
  for (const entity &e : prob->entities)
    if ((e.type == 'B' || e.type == 'I') && std::fabs(x[e.col] - std::floor(x[e.col] + 0.5)) > tol)
      return false;
  return true;
}

// The candidate verdict of the last solution offered, so that one
// solution seen twice (by the generator and by the event handler) asks
// the application once.
struct verdict_cache {
  std::vector<double> x;
  bool rejected = false;
};

// Ask the candidate callback about x (the loaded columns): true when it
// rejects it.  A failing callback marks the search to stop and rejects.
bool rejects(kvsl_prob *prob, const double *x, const double *dj, verdict_cache &cache) {
  callback_state &st = callbacks_of(prob);
  if (st.preintsol == nullptr) return false;
  if (st.failed) return true;
  if (cache.x.size() == static_cast<size_t>(prob->ncols) &&
      std::equal(cache.x.begin(), cache.x.end(), x))
    return cache.rejected;
  int reject = 0;
  int rc;
  {
    callback_solution scope(prob, x, dj);
    rc = st.preintsol(prob, st.preintsol_user, x, prob->ncols, &reject);
  }
  if (rc != 0) st.failed = true;
  cache.x.assign(x, x + prob->ncols);
  cache.rejected = rc != 0 || reject != 0;
  return cache.rejected;
}

// The search's generator of the application's cuts.
class app_cuts : public CglCutGenerator {
 public:
  app_cuts(kvsl_prob *prob, std::shared_ptr<verdict_cache> cache) : prob_(prob), cache_(std::move(cache)) {}
  CglCutGenerator *clone() const override { return new app_cuts(*this); }
  using CglCutGenerator::generateCuts;

  // Pool cuts the node violates first; then the cut manager; then, for an
  // integral node, the candidate callback.
  void generateCuts(const OsiSolverInterface &si, OsiCuts &cs,
                    const CglTreeInfo = CglTreeInfo()) override {
    callback_state &st = callbacks_of(prob_);
    // Sub-searches of heuristics work on reduced copies of the problem,
    // whose columns are not the loaded ones: only the search itself is
    // served.
    if (st.failed || si.getNumCols() < prob_->ncols) return;
    const double *x = si.getColSolution();
    double tol = 1e-7;
    si.getDblParam(OsiPrimalTolerance, tol);
    if (add_violated(cs, x, tol, 0) > 0) return;
    const size_t before = st.pool.size();
    if (st.cutmgr != nullptr) {
      int rc;
      {
        callback_solution scope(prob_, x, si.getReducedCost());
        rc = st.cutmgr(prob_, st.cutmgr_user);
      }
      if (rc != 0) {
        st.failed = true;
        return;
      }
      if (add_violated(cs, x, tol, before) > 0) return;
    }
    if (integral(prob_, x)) {
      const size_t mark = st.pool.size();
      if (rejects(prob_, x, si.getReducedCost(), *cache_)) add_violated(cs, x, tol, mark);
    }
  }

 private:
  // Add the pool cuts from position `from` on that x violates.
  int add_violated(OsiCuts &cs, const double *x, double tol, size_t from) {
    callback_state &st = callbacks_of(prob_);
    int added = 0;
    for (size_t k = from; k < st.pool.size(); ++k) {
      const pool_cut &c = *st.pool[k];
      if (!violated(c, x, tol)) continue;
      OsiRowCut cut;
      cut.setRow(static_cast<int>(c.col.size()), c.col.data(), c.val.data());
      cut.setLb(c.rowtype == 'L' ? -COIN_DBL_MAX : c.rhs);
      cut.setUb(c.rowtype == 'G' ? COIN_DBL_MAX : c.rhs);
      cut.setGloballyValid(true);
      cs.insert(cut);
      ++added;
    }
    return added;
  }

  kvsl_prob *prob_;
  std::shared_ptr<verdict_cache> cache_;
};

// Every solution passes the candidate callback before Cbc takes it; a
// callback that asked to stop ends the search at the next node.
class app_events : public CbcEventHandler {
 public:
  app_events(kvsl_prob *prob, std::shared_ptr<verdict_cache> cache)
      : prob_(prob), cache_(std::move(cache)) {}
  CbcEventHandler *clone() const override { return new app_events(*this); }
  CbcAction event(CbcEvent which) override {
    callback_state &st = callbacks_of(prob_);
    switch (which) {
      case beforeSolution1:
      case beforeSolution2: {
        const double *x = model_->bestSolution();
        // A sub-search's solution comes back to the search itself, which
        // checks it there.
        if (x == nullptr || model_->getNumCols() < prob_->ncols) return noAction;
        if (st.failed || violates_pool(x) || rejects(prob_, x, nullptr, *cache_)) {
          ++st.refused;
          return killSolution;
        }
        return noAction;
      }
      case node:
      case treeStatus:
        return st.failed || deadline_passed(prob_) ? stop : noAction;
      default:
        return noAction;
    }
  }

 private:
  bool violates_pool(const double *x) const {
    double tol = 1e-7;
    model_->solver()->getDblParam(OsiPrimalTolerance, tol);
    return violates_any(prob_, x, tol);
  }

  kvsl_prob *prob_;
  std::shared_ptr<verdict_cache> cache_;
};

}  // namespace

std::shared_ptr<void> attach_search_callbacks(kvsl_prob *prob, CbcModel &model) {
  // A stop asked for by a callback ends that search only: forget it even
  // when the callbacks have been removed since.
  if (prob->callbacks) prob->callbacks->failed = false;
  // Without callbacks the pool is in the LP already (add_pool_rows).
  if (!has_search_callbacks(prob)) return nullptr;
  callback_state &st = callbacks_of(prob);
  st.refused = 0;
  st.pool_at_start = st.pool.size();
  auto cache = std::make_shared<verdict_cache>();
  app_cuts gen(prob, cache);
  model.addCutGenerator(&gen, 1, "Application cuts", true, true);
  model.cutGenerator(model.numberCutGenerators() - 1)->setMustCallAgain(true);
  app_events events(prob, cache);
  model.passInEventHandler(&events);
  // A solution may need cuts before it counts.
  OsiBabSolver characteristics(4);
  model.solver()->setAuxiliaryInfo(&characteristics);
  model.setNumberThreads(0);
  return cache;
}

void add_pool_rows(const kvsl_prob *prob, OsiSolverInterface &solver) {
  if (!prob->callbacks) return;
  for (const auto &c : prob->callbacks->pool) {
    double lo = c->rowtype == 'L' ? -solver.getInfinity() : c->rhs;
    double up = c->rowtype == 'G' ? solver.getInfinity() : c->rhs;
    CoinPackedVector row(static_cast<int>(c->col.size()), c->col.data(), c->val.data());
    solver.addRow(row, lo, up);
  }
}

bool candidate_refused(kvsl_prob *prob, const double *x) {
  if (!has_search_callbacks(prob)) return false;
  verdict_cache cache;
  return violates_any(prob, x, dblcontrol(prob, KVSL_CTRL_FEASTOL)) ||
         rejects(prob, x, nullptr, cache);
}

bool search_again_after_vetoes(kvsl_prob *prob) {
  if (!prob->callbacks) return false;
  callback_state &st = *prob->callbacks;
  return !st.failed && st.refused > 0 && st.pool.size() > st.pool_at_start;
}

}  // namespace kvsl

KVSL_EXPORT int KVSLsetcbcutmgr(KVSLprob prob, KVSLcbcutmgr f, void *user) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  try {
    kvsl::callback_state &st = kvsl::callbacks_of(prob);
    st.cutmgr = f;
    st.cutmgr_user = f != nullptr ? user : nullptr;
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  }
  return 0;
}

KVSL_EXPORT int KVSLsetcbpreintsol(KVSLprob prob, KVSLcbpreintsol f, void *user) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  try {
    kvsl::callback_state &st = kvsl::callbacks_of(prob);
    st.preintsol = f;
    st.preintsol_user = f != nullptr ? user : nullptr;
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  }
  return 0;
}
