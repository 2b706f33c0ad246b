/*
 * mipstart.cpp -- MIP starts: solutions offered before a search (partial
 * ones completed by a short sub-MIP), checked, and installed as the
 * search's incumbent; full solutions checked and taken at once.
 */
#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <utility>

#include <CbcEventHandler.hpp>
#include <CbcHeuristic.hpp>
#include <CbcModel.hpp>
#include <ClpSimplex.hpp>
#include <CoinPackedMatrix.hpp>

#include "callbacks.h"
#include "chained_events.h"
#include "copy.h"
#include "mipstart.h"
#include "search.h"
#include "solve_limits.h"

namespace kvsl {

namespace {

// Seconds a partial start's completion may take.
constexpr double completion_seconds = 5.0;

// Why a full vector is not a solution (KVSLloadmipsol's status).
enum : int { accepted = 0, breaks_row_or_bound = 1, worse = 2, breaks_entity = 3 };

int check(const kvsl_prob *prob, const double *x) {
  const ClpSimplex &m = *prob->lp;
  for (int j = 0; j < prob->ncols; ++j)
    if (!std::isfinite(x[j]) || !within(x[j], m.columnLower()[j], m.columnUpper()[j]))
      return breaks_row_or_bound;
  std::vector<char> in_force = rows_in_force(prob, x);
  std::vector<double> act(static_cast<size_t>(m.numberRows()), 0.0);
  m.matrix()->times(x, act.data());
  for (int i = 0; i < m.numberRows(); ++i)
    if (in_force[static_cast<size_t>(i)] != 0 &&
        !within(act[static_cast<size_t>(i)], m.rowLower()[i], m.rowUpper()[i]))
      return breaks_row_or_bound;
  if (!column_entities_hold(prob, x) || !sets_hold(prob, x)) return breaks_entity;
  return accepted;
}

// Is objective value a better than b in the problem's sense?
bool better(const kvsl_prob *prob, double a, double b) { return prob->sense * (a - b) < 0.0; }

// Complete a partial start: the given columns fixed, the others found by a
// short sub-MIP over the problem's own objective.  Empty when none found.
std::vector<double> complete(const kvsl_prob *prob, const mip_start &s) {
  problem_copy copy(prob);
  std::vector<double> lo = copy.lb, up = copy.ub;
  for (size_t k = 0; k < s.col.size(); ++k) {
    auto j = static_cast<size_t>(s.col[k]);
    lo[j] = up[j] = s.val[k];
  }
  std::vector<double> cost = copy.obj;
  if (prob->sense < 0)
    for (double &c : cost) c = -c;
  KVSLprob sub = nullptr;
  if (KVSLcreateprob(&sub) != 0) return {};
  std::vector<double> x;
  if (copy.load(sub, copy.rowtype, lo, up, cost) == 0) {
    int status = solve_sub_mip(sub, sub_solve_seconds(prob, completion_seconds));
    if (status == KVSL_MIP_SOLUTION || status == KVSL_MIP_OPTIMAL) {
      x.resize(static_cast<size_t>(prob->ncols));
      if (KVSLgetmipsol(sub, x.data(), nullptr) != 0) x.clear();
    }
  }
  KVSLdestroyprob(sub);
  return x;
}

// The full vector of a start: its values when it gives every column, else
// its completion.
std::vector<double> full_vector(const kvsl_prob *prob, const mip_start &s) {
  std::vector<char> given(static_cast<size_t>(prob->ncols), 0);
  for (int j : s.col) given[static_cast<size_t>(j)] = 1;
  if (std::find(given.begin(), given.end(), 0) != given.end()) return complete(prob, s);
  std::vector<double> x(static_cast<size_t>(prob->ncols));
  for (size_t k = 0; k < s.col.size(); ++k) x[static_cast<size_t>(s.col[k])] = s.val[k];
  return x;
}

}  // namespace

void prepare_mip_starts(kvsl_prob *prob) {
  prob->start_x.clear();
  std::vector<mip_start> pending = std::move(prob->mip_starts);
  prob->mip_starts.clear();
  double best = 0.0;
  for (const mip_start &s : pending) {
    const char *name = s.name.empty() ? "(unnamed)" : s.name.c_str();
    std::vector<double> x = full_vector(prob, s);
    if (x.empty() || check(prob, x.data()) != accepted) {
      messagef(prob, 3, "MIP start %s is infeasible and is ignored.", name);
      continue;
    }
    snap_column_entities(prob, x.data());
    double v = objective_of(prob, x.data());
    if (prob->start_x.empty() || better(prob, v, best)) {
      prob->start_x = std::move(x);
      prob->start_name = name;
      best = v;
    }
  }
}

namespace {

// Objective value of x in the search model's own terms (minimising, with
// its constant).
double search_objective(const OsiSolverInterface &solver, const double *x) {
  const double *c = solver.getObjCoefficients();
  double offset = 0.0;
  solver.getDblParam(OsiObjOffset, offset);
  double v = -offset;
  for (int k = 0; k < solver.getNumCols(); ++k) v += c[k] * x[k];
  return v * solver.getObjSense();
}

// What the search knows of the start while it runs.
struct start_state {
  CbcModel *model;       // the search itself (not a heuristic's sub-search)
  std::vector<double> x; // in the search model's columns
  double value;          // minimising
  bool given = false;    // handed to the search (or no longer needed)
};

// The start is handed to the search as a heuristic solution once the root
// is done.  Installed before the root, a known incumbent changes how the
// root is processed (reduced-cost fixing, probing on the objective, the
// heuristics' targets) and the tree grown from that other root took up to
// four times the nodes of a search without the start (lseu, p0201,
// misc03).  Given after the root, the search branches from the root it
// would have had anyway, and the start only prunes.
class start_heuristic : public CbcHeuristic {
 public:
  start_heuristic(CbcModel &model, std::shared_ptr<start_state> st)
      : CbcHeuristic(model), st_(std::move(st)) {
    setWhen(3);
    setHeuristicName("MIP start");
  }
  CbcHeuristic *clone() const override { return new start_heuristic(*this); }
  void resetModel(CbcModel *model) override { model_ = model; }
  // Give the start once, after the root, unless something better is known.
  int solution(double &objective, double *x) override {
    if (st_->given || model_ != st_->model || model_->phase() <= 1) return 0;
    st_->given = true;
    if (st_->value >= objective) return 0;
    std::copy(st_->x.begin(), st_->x.end(), x);
    objective = st_->value;
    return 1;
  }

 private:
  std::shared_ptr<start_state> st_;
};

// Until the start is handed over, the search refuses solutions worse than
// it, so that no worse incumbent comes first: a refused heuristic solution
// prunes nothing, and a node whose own solution is refused holds nothing
// better than that solution.  The start itself was asked about before the
// search; every other event goes to the handler that was installed before
// (the application's callbacks).
class start_guard : public chained_events {
 public:
  start_guard(CbcModel &model, std::shared_ptr<start_state> st)
      : chained_events(model), st_(std::move(st)) {}
  CbcEventHandler *clone() const override { return new start_guard(*this); }

  CbcAction event(CbcEvent which) override {
    bool candidate = which == beforeSolution1 || which == beforeSolution2;
    const double *x = model_->bestSolution();
    if (candidate && x != nullptr && model_ == st_->model) {
      if (std::equal(st_->x.begin(), st_->x.end(), x)) return noAction;
      double tol = 1e-6 * (1.0 + std::fabs(st_->value));
      if (!st_->given && search_objective(*model_->solver(), x) > st_->value + tol)
        return killSolution;
    }
    return pass_on(which);
  }

 private:
  std::shared_ptr<start_state> st_;
};

}  // namespace

std::shared_ptr<void> offer_mip_start(kvsl_prob *prob, CbcModel &model) {
  if (prob->start_x.empty()) return nullptr;
  // The application's candidate callback decides on the start once, before
  // any solution of the search is refused in its favour.
  if (candidate_refused(prob, prob->start_x.data())) {
    messagef(prob, 3, "MIP start %s was refused by the candidate-solution callback.",
             prob->start_name.c_str());
    prob->start_x.clear();
    return nullptr;
  }
  OsiSolverInterface *solver = model.solver();
  // Columns the search adds of its own (indicator slacks) are not offered
  // to: the start is kept beside the search instead.
  if (solver->getNumCols() != prob->ncols) return nullptr;
  std::vector<double> x = prob->start_x;
  auto st = std::make_shared<start_state>();
  st->model = &model;
  st->value = search_objective(*solver, x.data());
  st->x = std::move(x);
  // The start's value bounds the search from the root on, as the pump's
  // worse solutions, which the guard refuses, would have: without it, the
  // root of p0201 started from its optimum lacked their cutoff and its tree
  // grew from 46 nodes to 70.
  double cutoff = st->value + 1e-9 * (1.0 + std::fabs(st->value));
  if (cutoff < model.getCutoff()) model.setCutoff(cutoff);
  start_heuristic h(model, st);
  model.addHeuristic(&h);
  start_guard guard(model, st);
  model.passInEventHandler(&guard);
  messagef(prob, 1, "MIP start %s is the incumbent: objective %.10g", prob->start_name.c_str(),
           objective_of(prob, prob->start_x.data()));
  return st;
}

void keep_mip_start(kvsl_prob *prob) {
  if (prob->start_x.empty()) return;
  double v = objective_of(prob, prob->start_x.data());
  if (!prob->mip_held || better(prob, v, prob->mip_obj)) {
    prob->mip_x = prob->start_x;
    prob->mip_obj = v;
    prob->mip_held = true;
    if (prob->mipstatus == KVSL_MIP_NO_SOL_FOUND || prob->mipstatus == KVSL_MIP_LP_NOT_OPTIMAL)
      prob->mipstatus = KVSL_MIP_SOLUTION;
    // A search that finished without anything better proved the start
    // optimal.
    if (prob->mipstatus == KVSL_MIP_INFEAS) prob->mipstatus = KVSL_MIP_OPTIMAL;
  }
  prob->start_x.clear();
}

}  // namespace kvsl

KVSL_EXPORT int KVSLaddmipsol(KVSLprob prob, int n, const double val[], const int col[],
                              const char *name) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  if (n < 0 || (n > 0 && (val == nullptr || col == nullptr))) return kvsl::fail(prob, KVSL_ERR_BADARG);
  for (int k = 0; k < n; ++k)
    if (col[k] < 0 || col[k] >= prob->ncols) return kvsl::fail(prob, KVSL_ERR_INDEX);
  try {
    kvsl::mip_start s;
    s.col.assign(col, col + n);
    s.val.assign(val, val + n);
    if (name != nullptr) s.name = name;
    prob->mip_starts.push_back(std::move(s));
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  }
  return 0;
}

KVSL_EXPORT int KVSLloadmipsol(KVSLprob prob, const double x[], int *status) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  if (x == nullptr || status == nullptr) return kvsl::fail(prob, KVSL_ERR_BADARG);
  try {
    std::vector<double> v(x, x + prob->ncols);
    *status = kvsl::check(prob, v.data());
    if (*status != kvsl::accepted) return 0;
    kvsl::snap_column_entities(prob, v.data());
    double obj = kvsl::objective_of(prob, v.data());
    // Worse means worse beyond rounding: a solution as good as the one held
    // is accepted and replaces it.
    double tol = 1e-9 * (1.0 + std::fabs(prob->mip_obj));
    if (prob->mip_held && prob->sense * (obj - prob->mip_obj) > tol) {
      *status = kvsl::worse;
      return 0;
    }
    prob->mip_x = v;
    prob->mip_obj = obj;
    prob->mip_held = true;
    if (prob->mipstatus != KVSL_MIP_OPTIMAL) prob->mipstatus = KVSL_MIP_SOLUTION;
    // It also starts the next search.
    kvsl::mip_start s;
    for (int j = 0; j < prob->ncols; ++j) s.col.push_back(j);
    s.val = std::move(v);
    s.name = "loaded";
    prob->mip_starts.push_back(std::move(s));
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  }
  return 0;
}
