/*
 * solve_limits.cpp -- the limits of one solve: one wall-clock deadline checked in
 * our own loops and handed to each backend, node, gap and thread controls,
 * and the MIP status after a stop.
 */
#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>

#include <CbcEventHandler.hpp>
#include <CbcModel.hpp>
#include <ClpEventHandler.hpp>
#include <ClpSimplex.hpp>

#include "solve_limits.h"

namespace kvsl {

namespace {

// What seconds_left() answers without a deadline.
constexpr double no_limit = 1e100;
// The shortest limit a backend is given: some backends read 0 as "none".
constexpr double shortest = 1e-3;

// Steady-clock seconds.
double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Stops a simplex at the deadline, after an optional inner handler (the
// iteration log) has seen each event.
class simplex_watch : public ClpEventHandler {
 public:
  simplex_watch(const kvsl_prob *prob, const ClpEventHandler *inner)
      : prob_(prob), inner_(inner != nullptr ? inner->clone() : nullptr) {}
  simplex_watch(const simplex_watch &o)
      : ClpEventHandler(o), prob_(o.prob_), inner_(o.inner_ ? o.inner_->clone() : nullptr) {}
  simplex_watch &operator=(const simplex_watch &) = delete;
  ~simplex_watch() override { delete inner_; }
  ClpEventHandler *clone() const override { return new simplex_watch(*this); }

  int event(Event which) override {
    if (inner_ != nullptr) {
      inner_->setSimplex(model_);
      int rc = inner_->event(which);
      if (rc != -1) return rc;
    }
    // 0 ends the simplex with status 5 (stopped by an event).
    if (which == endOfIteration && deadline_passed(prob_)) {
      prob_->lp_cut_short = true;
      return 0;
    }
    return -1;
  }

 private:
  const kvsl_prob *prob_;
  ClpEventHandler *inner_;
};

// How often the search's bound is taken down while the tree grows
// (seconds): the tree's bound is a walk over its open nodes.
constexpr double bound_interval = 0.05;

// Stops the tree at the deadline: checked after every node (of the search
// and of its heuristics' sub-searches, which copy the handler).  In the
// search it was installed in it also takes down the search's bound now
// and then while no simplex has been cut short: a bound that still holds
// when one later is (see apply_search_limits).
class search_watch : public CbcEventHandler {
 public:
  search_watch(const kvsl_prob *prob, double *bound_seen) : prob_(prob), seen_(bound_seen) {}
  CbcEventHandler *clone() const override { return new search_watch(*this); }
  void set_owner(const CbcModel *owner) { owner_ = owner; }
  CbcAction event(CbcEvent which) override {
    if (which != node && which != treeStatus) return noAction;
    if (deadline_passed(prob_)) return stop;
    if (seen_ != nullptr && model_ == owner_ && !prob_->lp_cut_short) {
      const double t = now();
      if (t >= next_) {
        *seen_ = model_->solver()->getObjSense() * model_->getBestPossibleObjValue();
        next_ = t + bound_interval;
      }
    }
    return noAction;
  }

 private:
  const kvsl_prob *prob_;
  double *seen_;
  const CbcModel *owner_ = nullptr;
  double next_ = 0.0;
};

}  // namespace

deadline_scope::deadline_scope(kvsl_prob *prob) : prob_(prob) {
  double t = dblcontrol(prob, KVSL_CTRL_TIMELIMIT);
  prob->deadline = t > 0.0 && std::isfinite(t) ? now() + t : 0.0;
  prob->limit_hit = false;
  prob->lp_cut_short = false;
}

deadline_scope::~deadline_scope() {
  prob_->deadline = 0.0;
  if (prob_->lp) {
    prob_->lp->setMaximumSeconds(-1.0);
    prob_->lp->setMaximumWallSeconds(-1.0);
  }
}

bool has_deadline(const kvsl_prob *prob) { return prob->deadline > 0.0; }

double seconds_left(const kvsl_prob *prob) {
  if (!has_deadline(prob)) return no_limit;
  return std::max(0.0, prob->deadline - now());
}

bool deadline_passed(const kvsl_prob *prob) {
  if (!has_deadline(prob) || now() < prob->deadline) return false;
  prob->limit_hit = true;
  return true;
}

bool stopped_by_limit(const kvsl_prob *prob) { return prob->limit_hit; }

bool simplex_cut_short(const kvsl_prob *prob) { return prob->lp_cut_short; }

double sub_solve_seconds(const kvsl_prob *prob, double cap) {
  return std::max(shortest, std::min(cap, seconds_left(prob)));
}

double backend_seconds(const kvsl_prob *prob) { return std::max(shortest, seconds_left(prob)); }

void watch_deadline(const kvsl_prob *prob, ClpSimplex &m, ClpEventHandler *inner, bool own_limits) {
  // The barrier raises no iteration events: it goes by Clp's own limits.
  // Elsewhere they stay off, also against a copy of a model that carries
  // those of an earlier solve: only the handler, which marks the stop, ends
  // a search's LPs.
  double left = has_deadline(prob) && own_limits ? backend_seconds(prob) : -1.0;
  m.setMaximumSeconds(left);
  m.setMaximumWallSeconds(left);
  simplex_watch watch(prob, inner);
  m.passInEventHandler(&watch);  // the model keeps a clone
}

void apply_search_limits(const kvsl_prob *prob, CbcModel &model, double *bound_seen) {
  int maxnode = intcontrol(prob, KVSL_CTRL_MAXNODE);
  // Attempts of one solve share the node limit.
  model.setMaximumNodes(maxnode > 0 ? std::max(0, maxnode - prob->nodes) : INT_MAX);
  model.setUseElapsedTime(true);
  model.setMaximumSeconds(has_deadline(prob) ? backend_seconds(prob) : 1e100);
  model.setAllowableGap(std::max(0.0, dblcontrol(prob, KVSL_CTRL_MIPABSGAP)));
  model.setAllowableFractionGap(std::max(0.0, dblcontrol(prob, KVSL_CTRL_MIPRELGAP)));
  int threads = intcontrol(prob, KVSL_CTRL_THREADS);
  // With the application's callbacks the search keeps to one thread.
  if (threads > 1 && model.getEventHandler() == nullptr) model.setNumberThreads(threads);
  if (has_deadline(prob) && model.getEventHandler() == nullptr) {
    search_watch watch(prob, bound_seen);
    model.passInEventHandler(&watch);  // the model keeps a clone
    static_cast<search_watch *>(model.getEventHandler())->set_owner(&model);
  }
}

void settle_stopped_search(kvsl_prob *prob) {
  if (!stopped_by_limit(prob) || prob->mipstatus == KVSL_MIP_UNBOUNDED) return;
  if (!prob->mip_held && !prob->start_x.empty()) {
    // The checked MIP start is the best solution known.
    prob->mip_x = prob->start_x;
    prob->mip_obj = objective_of(prob, prob->mip_x.data());
    prob->mip_held = true;
  }
  if (prob->mip_held && prob->sense * (prob->best_bound - prob->mip_obj) > 0.0)
    prob->best_bound = prob->mip_obj;
  prob->mipstatus = prob->mip_held ? KVSL_MIP_SOLUTION : KVSL_MIP_NO_SOL_FOUND;
}

}  // namespace kvsl
