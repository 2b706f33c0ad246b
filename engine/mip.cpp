/*
 * mip.cpp -- the global search with Cbc over Clp: root strengthening, cut
 * generators, heuristics, branching directives, limits, threads (a race of
 * searches or Cbc's own), status and the best solution checked against the
 * loaded problem.
 */
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <exception>
#include <functional>
#include <memory>
#include <thread>

#include <CbcModel.hpp>
#include <CbcCutGenerator.hpp>
#include <ClpSimplex.hpp>
#include <CoinError.hpp>
#include <OsiClpSolverInterface.hpp>

#include "callbacks.h"
#include "cutoff_step.h"
#include "log.h"
#include "mipstart.h"
#include "node_settings.h"
#include "objective_step.h"
#include "race.h"
#include "rootcuts.h"
#include "search.h"
#include "solve_limits.h"
#include "strengthen.h"

namespace kvsl {

namespace {

// Cbc's log level for the search.  Cbc's sub-searches (in heuristics) log
// through handlers of their own at one level less, so the search itself
// stays at level 1: anything higher would reach standard output.
int search_log_level(const kvsl_prob *prob) {
  if (intcontrol(prob, KVSL_CTRL_OUTPUTLOG) == 0) return 0;
  return std::min(intcontrol(prob, KVSL_CTRL_MIPLOG), 1);
}

// Apply the tolerances, cutoff and log level of the controls (the limits
// are apply_search_limits').
void apply_controls(const kvsl_prob *prob, CbcModel &model) {
  model.setIntegerTolerance(dblcontrol(prob, KVSL_CTRL_MIPTOL));
  double cutoff = dblcontrol(prob, KVSL_CTRL_CUTOFF);
  // The backend works without the constant k; it minimises sense * c'x.
  if (std::fabs(cutoff) < 1e39) model.setCutoff(prob->sense * (cutoff + prob->objconst));
  model.setLogLevel(search_log_level(prob));
  // Levels 2 and up log every node rather than every hundred.
  if (intcontrol(prob, KVSL_CTRL_MIPLOG) >= 2) model.setPrintFrequency(1);
}

// Does x satisfy the loaded problem: bounds, the rows in force (inactive
// indicator rows are not), integrality and every other entity and set?
bool is_feasible(const kvsl_prob *prob, const std::vector<double> &x) {
  const ClpSimplex &m = *prob->lp;
  for (int j = 0; j < prob->ncols; ++j)
    if (!within(x[j], m.columnLower()[j], m.columnUpper()[j])) return false;
  if (!column_entities_hold(prob, x.data()) || !sets_hold(prob, x.data())) return false;
  std::vector<char> in_force = rows_in_force(prob, x.data());
  std::vector<double> act(m.numberRows(), 0.0);
  m.matrix()->times(x.data(), act.data());
  for (int i = 0; i < m.numberRows(); ++i)
    if (in_force[i] != 0 && !within(act[i], m.rowLower()[i], m.rowUpper()[i])) return false;
  return true;
}

// Record a MIP solution x.
void take_mip_solution(kvsl_prob *prob, std::vector<double> x) {
  snap_column_entities(prob, x.data());
  prob->mip_obj = objective_of(prob, x.data());
  prob->mip_x = std::move(x);
  prob->mip_held = true;
}

// A problem without entities: its LP solution is its MIP solution.
int solve_without_entities(kvsl_prob *prob, const char *flags) {
  if (int rc = solve_lp(prob, flags); rc != 0) return rc;
  switch (prob->lpstatus) {
    case KVSL_LP_OPTIMAL:
      prob->mip_x = prob->lp_x;
      prob->mip_obj = prob->lp_obj;
      prob->mip_held = true;
      prob->best_bound = prob->lp_obj;
      prob->mipstatus = KVSL_MIP_OPTIMAL;
      break;
    case KVSL_LP_INFEAS: prob->mipstatus = KVSL_MIP_INFEAS; break;
    case KVSL_LP_UNBOUNDED: prob->mipstatus = KVSL_MIP_UNBOUNDED; break;
    case KVSL_LP_UNFINISHED: prob->mipstatus = KVSL_MIP_NO_SOL_FOUND; break;
    default: prob->mipstatus = KVSL_MIP_LP_NOT_OPTIMAL; break;
  }
  return 0;
}

// Solve the root LP relaxation; false when it ends the search at once.
bool solve_root(kvsl_prob *prob, OsiClpSolverInterface &solver) {
  watch_deadline(prob, *solver.getModelPtr(), nullptr, false);
  solver.initialSolve();
  ClpSimplex &root = *solver.getModelPtr();
  prob->iterations = solver.getIterationCount();
  // A false optimum of an unbounded relaxation (which an unbounded model
  // with a set over free columns went on to be called infeasible with) is
  // found out here like any other doubtful verdict.
  prob->iterations += confirm_verdict(root);
  if (solver.isProvenPrimalInfeasible()) {
    prob->lpstatus = KVSL_LP_INFEAS;
    prob->mipstatus = KVSL_MIP_INFEAS;
    return false;
  }
  if (solver.isProvenDualInfeasible()) {
    prob->lpstatus = KVSL_LP_UNBOUNDED;
    prob->mipstatus = KVSL_MIP_UNBOUNDED;
    return false;
  }
  if (!solver.isProvenOptimal()) {
    prob->lpstatus = KVSL_LP_UNFINISHED;
    prob->mipstatus = KVSL_MIP_NO_SOL_FOUND;
    return false;
  }
  prob->lpstatus = KVSL_LP_OPTIMAL;
  prob->best_bound = solver.getObjValue() - prob->objconst;
  return true;
}

// Has every integer column of the search LP finite bounds (so that the
// tree is finite)?
bool integer_bounds_finite(const OsiSolverInterface &solver) {
  for (int j = 0; j < solver.getNumCols(); ++j)
    if (solver.isInteger(j) && (solver.getColLower()[j] <= -KVSL_INFINITY ||
                                solver.getColUpper()[j] >= KVSL_INFINITY))
      return false;
  return true;
}

// Remove the free rows of the search's working copy.  They constrain
// nothing, but Cbc's cut generators read them as rows all the same: mixed
// integer rounding took a free row for one bounded at zero and cut off
// optima of the randomized integer model 808 and indicator model 501143.  No result of the search refers to the working
// copy's rows.
void drop_free_rows(OsiSolverInterface &solver) {
  const double inf = solver.getInfinity();
  std::vector<int> free_rows;
  for (int i = 0; i < solver.getNumRows(); ++i)
    if (solver.getRowLower()[i] <= -inf && solver.getRowUpper()[i] >= inf) free_rows.push_back(i);
  if (!free_rows.empty()) solver.deleteRows(static_cast<int>(free_rows.size()), free_rows.data());
}

// How a search attempt ended.
enum class outcome { done, retry };

// What a search attempt may use: rows held out of the LP, heuristics.
struct attempt {
  bool hold_rows;
  bool heuristics;
};

// Does the search need objects beyond Cbc's integers?
bool needs_objects(const kvsl_prob *prob, const std::vector<int> &held) {
  return has_column_entity_objects(prob) || !prob->settype.empty() ||
         !prob->indicators.empty() || !held.empty();
}

// Most searches of a race.
constexpr int most_racers = 8;

// Do the threads of the search run a race of searches over different row
// orders, rather than share one tree (Cbc's own threads)?  On plain integer
// models, over the 20 MIPLIB models on two threads, one tree shared by two
// threads took longer than one thread alone on every model that takes more
// than a second: bell3a 3.2 s against 1.3 s, pk1 14 to 17 s against 12.9 s,
// bell5 22 s and twice no proof in 60 s against 0.5 s (Cbc's deterministic
// thread mode: bell5 3.0 s, pk1 34 s).  A race keeps the one-thread search,
// with Clp's subtrees, and adds searches that often find solutions or
// proofs sooner.  Not with objects, which keep Cbc's threads, with the
// application's callbacks (which keep to one thread) nor under a node limit
// (the searches would each count their own nodes).
bool races(const kvsl_prob *prob, int threads, bool objects) {
  return threads > 1 && !objects && !has_search_callbacks(prob) &&
         intcontrol(prob, KVSL_CTRL_MAXNODE) <= 0;
}

// One search of the problem: its model, its own copy of the root when it
// is not the first search of a race, and what the model refers to.
struct searcher {
  searcher() {
    silent.setLogLevel(0);
    lp_silent.setLogLevel(0);
  }
  // Hand the model its log, its solver the quiet handler and the LP lp.
  void report_to(CoinMessageHandler &log, CoinMessageHandler &quiet, CoinMessageHandler &lp) {
    model->passInMessageHandler(&log);
    model->solver()->passInMessageHandler(&quiet);
    if (auto *clp = dynamic_cast<OsiClpSolverInterface *>(model->solver()))
      clp->getModelPtr()->passInMessageHandler(&lp);
  }

  // The handlers of a search beside the first of a race: the search's and
  // its solver's, and its LP's, which stays apart for the reason given in
  // search().
  silent_log silent, lp_silent;
  cut_generators cuts;
  std::unique_ptr<OsiClpSolverInterface> root;
  std::unique_ptr<CbcModel> model;
  std::shared_ptr<void> app, start;
  bool failed = false;
  // The search's bound as last taken down by its deadline's watch (in the
  // backend's minimising sense).
  double bound_seen = -COIN_DBL_MAX;
};

// How the searches of one attempt are set up.
struct plan {
  attempt a;
  bool objects;      // objects of the engine's own (needs_objects)
  bool finite_tree;  // every integer column has finite bounds
  bool threaded;     // Cbc's threads share one tree
  double step;       // the objective's step from continuous columns (0: none)
};

// Integer branching of a search without objects: strong branching trust,
// Clp's subtrees and the objective's step.
void tune_plain_search(const kvsl_prob *prob, CbcModel &model, const plan &p) {
  // Clp's subtrees branch on integer columns by their own rules, count
  // their nodes in bulk and call neither cut generators nor the event
  // handler: not with the application's callbacks, which must see every
  // node, nor against directives, nor under a node limit, which counts
  // nodes one at a time.  With Cbc's threads they stay off as well: every
  // thread's LP shares the one LP handler whose level the sub-searches
  // change and the subtrees read.  Nor where the tree may be infinite:
  // they cut nothing.  (Held-out rows come with objects.)
  bool subtrees = p.finite_tree && !has_search_callbacks(prob) && prob->directives.empty() &&
                  intcontrol(prob, KVSL_CTRL_MAXNODE) <= 0 && !p.threaded;
  tune_integer_branching(model, model.solver()->getNumCols(), subtrees, !p.threaded);
  if (0.9999 * p.step > model.getCutoffIncrement()) model.setCutoffIncrement(0.9999 * p.step);
}

// Cut generators, held-out rows (pool, or none), heuristics, controls,
// integers, directives and, without objects, integer branching.
void prepare(const kvsl_prob *prob, CbcModel &model, cut_generators &cuts, const plan &p,
             row_pool *pool) {
  if (intcontrol(prob, KVSL_CTRL_CUTSTRATEGY) != 0)
    cuts.add_to(model, p.objects, p.finite_tree, p.threaded);
  if (pool != nullptr) {
    model.addCutGenerator(pool, 1, "Held-out rows", true, true);
    model.cutGenerator(model.numberCutGenerators() - 1)->setMustCallAgain(true);
  }
  // Cbc's heuristics see neither held-out rows nor the engine's own objects:
  // a solution of theirs that violates an object is dropped by the search,
  // but its objective value has by then become the cutoff and pruned nodes
  // that hold the true optimum.  They run only for plain integer models.
  if (p.a.heuristics && !p.objects && intcontrol(prob, KVSL_CTRL_HEURSTRATEGY) != 0)
    add_heuristics(model);
  apply_controls(prob, model);
  model.findIntegers(false);
  apply_integer_directives(prob, model);
  if (!p.objects) tune_plain_search(prob, model, p);
}

// Run the race: the first search (set up, with the log, the start and the
// limits' watch) on this thread, the others over other orders of the
// root's rows (set up here, silent) on threads of their own.  A search
// that fails drops out; the first one's failure ends the race and is
// thrown once every search has stopped.
void race(kvsl_prob *prob, std::vector<std::unique_ptr<searcher>> &team,
          const OsiClpSolverInterface &root, int racers, const plan &p) {
  auto state = std::make_shared<race_state>();
  join_race(*team.front()->model, state);
  for (int k = 1; k < racers; ++k) {
    auto r = std::make_unique<searcher>();
    r->root = reordered_copy(root, k);
    r->root->passInMessageHandler(&r->silent);
    r->root->getModelPtr()->passInMessageHandler(&r->lp_silent);
    r->root->resolve();
    if (!r->root->isProvenOptimal()) continue;
    r->model = std::make_unique<CbcModel>(*r->root);
    r->report_to(r->silent, r->silent, r->lp_silent);
    prepare(prob, *r->model, r->cuts, p, nullptr);
    r->model->setLogLevel(0);
    apply_search_limits(prob, *r->model, &r->bound_seen);
    r->model->setNumberThreads(0);
    join_race(*r->model, state);
    team.push_back(std::move(r));
  }
  std::exception_ptr lead_failure;
  std::atomic<int> first_done{-1};
  auto run = [&state, &first_done](searcher &r, int k, std::exception_ptr *failure) {
    try {
      r.model->branchAndBound();
      int none = -1;
      first_done.compare_exchange_strong(none, k);
    } catch (...) {
      r.failed = true;
      if (failure == nullptr) return;  // the others go on
      *failure = std::current_exception();
    }
    state->over.store(true);
  };
  std::vector<std::thread> others;
  try {
    for (size_t k = 1; k < team.size(); ++k)
      others.emplace_back(run, std::ref(*team[k]), static_cast<int>(k), nullptr);
  } catch (...) {
    // No thread for the rest: the first search runs with those started.
    team.resize(others.size() + 1);
  }
  run(*team.front(), 0, &lead_failure);
  for (std::thread &t : others) t.join();
  const int k = first_done.load();
  if (k > 0 && (team[k]->model->isProvenOptimal() || team[k]->model->isProvenInfeasible()))
    messagef(prob, 1, "Search %d of %d, over the rows in another order, finished the race first.",
             k + 1, static_cast<int>(team.size()));
  if (lead_failure) std::rethrow_exception(lead_failure);
}

// Fill the MIP results from the searches of an attempt: the best solution
// any of them found, the best bound, and the status (finished when one of
// them finished); asks for a retry when that solution fails the final
// check.
outcome harvest(kvsl_prob *prob, const std::vector<std::unique_ptr<searcher>> &team, attempt a) {
  const CbcModel *best = nullptr;
  bool finished = false;
  for (const auto &r : team) {
    if (!r->model || r->failed) continue;
    const CbcModel &m = *r->model;
    prob->nodes += m.getNodeCount();
    prob->iterations += m.getIterationCount();
    finished = finished || m.isProvenOptimal() || m.isProvenInfeasible();
    if (m.bestSolution() != nullptr &&
        (best == nullptr || m.getMinimizationObjValue() < best->getMinimizationObjValue()))
      best = &m;
  }
  const CbcModel &lead = *team.front()->model;
  // Each search's bound holds up to the cutoffs the others gave it, which
  // the best solution's value bounds (in the backend's minimising sense).
  // Not after the deadline has cut a simplex short: the search took that
  // LP for infeasible (and dropped the node) or its objective for a bound
  // (in a cut pass of the root: 23.6 to 110.2 on an exact split whose every
  // point costs 0).  Then the bound is the last one the deadline's watch
  // took down, or the root LP's (which prob->best_bound holds here).
  const double sense = lead.solver()->getObjSense();
  const bool cut_short = simplex_cut_short(prob);
  const double root = sense * (prob->best_bound + prob->objconst);
  double bound = -COIN_DBL_MAX;
  for (const auto &r : team) {
    if (!r->model || r->failed) continue;
    double b = cut_short ? std::max(r->bound_seen, root)
                         : sense * r->model->getBestPossibleObjValue();
    if (std::fabs(b) >= 1e49) continue;
    if (best != nullptr) b = std::min(b, best->getMinimizationObjValue());
    bound = std::max(bound, b);
  }
  bool have = best != nullptr;
  if (have) {
    std::vector<double> x(best->bestSolution(), best->bestSolution() + prob->ncols);
    if (!is_feasible(prob, x)) {
      if (a.hold_rows || a.heuristics) return outcome::retry;
      message(prob, 3, "The search's best solution failed the final check and was dropped.");
      have = false;
    } else {
      take_mip_solution(prob, std::move(x));
    }
  }
  if (lead.isContinuousUnbounded()) {
    prob->mipstatus = KVSL_MIP_UNBOUNDED;
  } else if (finished) {
    prob->mipstatus = have ? KVSL_MIP_OPTIMAL : KVSL_MIP_INFEAS;
  } else {
    prob->mipstatus = have ? KVSL_MIP_SOLUTION : KVSL_MIP_NO_SOL_FOUND;
  }
  if (bound > -COIN_DBL_MAX) prob->best_bound = sense * bound - prob->objconst;
  if (prob->mipstatus == KVSL_MIP_OPTIMAL) {
    // A finished search has its bound at the incumbent up to the gap.
    if (prob->sense * (prob->best_bound - prob->mip_obj) > 0.0) prob->best_bound = prob->mip_obj;
  }
  return outcome::done;
}

// One branch and cut over the loaded problem: column entities, sets and
// indicator rows by objects of their own, held-out rows by a cut pool.
// Fills the MIP results; asks for a retry when the best solution fails the
// final check or the LP without the held-out rows is unbounded.
outcome search(kvsl_prob *prob, backend_log &log, backend_log &quiet, attempt a) {
  // The working copy keeps the loaded row order (newest constraint first).
  // Reversed to creation order it did not pay: 19.8 s against 17.3 s over
  // 19 MIPLIB models, enigma 6 611 nodes against 2 724, vpm2 607 against
  // 288, though gt2 took 4 against 409.
  OsiClpSolverInterface solver(new ClpSimplex(*prob->lp), true);
  solver.passInMessageHandler(&quiet);
  solver.setDblParam(OsiPrimalTolerance, dblcontrol(prob, KVSL_CTRL_FEASTOL));
  solver.setDblParam(OsiDualTolerance, dblcontrol(prob, KVSL_CTRL_OPTIMALITYTOL));
  relax_column_entities(prob, solver);
  std::vector<indicator_slacks> indicator_rows = relax_indicator_rows(prob, solver);
  std::vector<int> held = a.hold_rows ? pool_rows(prob) : std::vector<int>{};
  if (!held.empty()) solver.deleteRows(static_cast<int>(held.size()), held.data());
  add_pool_rows(prob, solver);
  drop_free_rows(solver);
  // The rows and integer bounds are strengthened in place: every point the
  // search may return stays, columns and rows keep their numbers, and a
  // solution of the strengthened rows satisfies the loaded ones, so nothing
  // maps back.  Cbc's own preprocessing (CglPreProcess) is not used: the
  // randomized differential tests found it returning suboptimal solutions
  // as optimal and calling feasible models infeasible on general integer
  // columns, ranged rows, continuous columns with fractional or infinite
  // bounds; where it was right it did not pay (vpm2: 3 032 nodes against
  // 288).
  // Threads strengthen too: the threaded search's wrong optimum on lseu's
  // strengthened rows came from its knapsack covers in the tree (see
  // knapsack_frequency_threads).
  if (intcontrol(prob, KVSL_CTRL_MIPPRESOLVE) != 0)
    strengthen_rows(solver, plain_integer_columns(prob, solver.getNumCols()));
  if (!solve_root(prob, solver))
    return !held.empty() && prob->mipstatus == KVSL_MIP_UNBOUNDED ? outcome::retry : outcome::done;

  bool objects = needs_objects(prob, held);
  const int threads = intcontrol(prob, KVSL_CTRL_THREADS);
  const int racers = races(prob, threads, objects) ? std::min(threads, most_racers) : 1;
  // Cbc derives the objective's step from integer columns alone; where
  // continuous columns carry costs and their part of the model keeps the
  // step (pk1 in its file's row order: 280 064 nodes to 157 476), the
  // search takes it from here.  Not with the application's callbacks: the
  // rows they add in the search (lazy constraints) are not in the rows
  // analysed and may move the values off the step.
  const double step =
      objects || has_search_callbacks(prob) ? 0.0 : continuous_objective_step(solver);
  const plan p{a, objects, integer_bounds_finite(solver), threads > 1 && racers == 1, step};
  // The node LPs stay silent; the search reports on them.  Clp's own
  // handler is one of its own: the heuristics' sub-searches set the log
  // level of the solver handler they share with the search (to 1), and
  // Clp's subtrees print their trace to stdout whenever the level of the
  // LP's handler is above 0.
  backend_log lp_quiet(prob);
  lp_quiet.setLogLevel(0);
  std::vector<std::unique_ptr<searcher>> team;
  team.push_back(std::make_unique<searcher>());
  searcher &lead = *team.front();
  lead.model = std::make_unique<CbcModel>(solver);
  CbcModel &model = *lead.model;
  lead.report_to(log, quiet, lp_quiet);
  row_pool pool(prob, held);
  prepare(prob, model, lead.cuts, p, held.empty() ? nullptr : &pool);
  if (objects) {
    // Strong branching's hot starts assert on the backend's factorisation
    // after the engine's objects have changed bounds: branching on the
    // objects goes by their own estimates.
    model.setNumberStrong(0);
    model.setNumberBeforeTrust(0);
    directive_index dirs(prob);
    add_column_entity_objects(prob, model, dirs);
    add_set_objects(prob, model, dirs);
    add_indicator_objects(prob, model, indicator_rows, dirs);
  }
  lead.app = attach_search_callbacks(prob, model);
  apply_search_limits(prob, model, &lead.bound_seen);
  if (racers > 1) model.setNumberThreads(0);
  // After the callbacks and the limits' watch: the start's guard passes
  // every other event on to them, and the candidate callback sees the start.
  lead.start = offer_mip_start(prob, model);
  // The engine's objects branch to fractional bounds (a semi-continuous
  // column's limit), which Cbc's objective step does not allow for.  The
  // hold acts on the model from the event handler, which threads would
  // share: a search whose objective has such a step keeps to one thread.
  if (objects) {
    if (model.getNumberThreads() > 1 && objective_has_step(model)) model.setNumberThreads(0);
    if (model.getNumberThreads() <= 1) hold_cutoff_increment(model);
  }
  if (racers > 1) {
    race(prob, team, solver, racers, p);
  } else {
    model.branchAndBound();
  }
  return harvest(prob, team, a);
}

}  // namespace

bool needs_quadratic_search(const kvsl_prob *prob) {
  return (prob->has_quadratic || !prob->qrows.empty()) &&
         (!prob->entities.empty() || !prob->settype.empty() || !prob->indicators.empty());
}

int solve_mip(kvsl_prob *prob, const char *flags) {
  auto t0 = std::chrono::steady_clock::now();
  // Quadratic parts with entities: a search of its own (qsearch.cpp).
  if (needs_quadratic_search(prob)) return solve_quadratic_search(prob, flags);
  if (prob->entities.empty() && prob->settype.empty() && prob->indicators.empty())
    return solve_without_entities(prob, flags);
  drop_solutions(prob);
  prob->iterations = 0;
  prob->nodes = 0;
  prob->best_bound = prob->sense > 0 ? -KVSL_INFINITY : KVSL_INFINITY;
  try {
    backend_log log(prob), quiet(prob);
    log.setLogLevel(search_log_level(prob));
    quiet.setLogLevel(0);
    prepare_mip_starts(prob);
    // Model cuts and delayed rows stay in the LP: held out as cuts, the
    // search dropped nodes whose LP solution was integral but violated
    // one of them (the randomized tests found feasible models reported
    // infeasible).  A solution that fails the final check means that
    // search cannot be trusted: it runs again without heuristics, where
    // each solution comes from a node LP.
    if (search(prob, log, quiet, {false, true}) == outcome::retry) {
      message(prob, 1, "Searching again without heuristics.");
      prob->mip_held = false;
      prob->best_bound = prob->sense > 0 ? -KVSL_INFINITY : KVSL_INFINITY;
      search(prob, log, quiet, {false, false});
    }
    // Solutions the application vetoed may have ended nodes early: search
    // again with the cuts it gave in the LP until no veto adds any.
    while (search_again_after_vetoes(prob) && !stopped_by_limit(prob)) {
      prob->mip_held = false;
      prob->best_bound = prob->sense > 0 ? -KVSL_INFINITY : KVSL_INFINITY;
      search(prob, log, quiet, {false, true});
    }
    settle_stopped_search(prob);
    keep_mip_start(prob);
  } catch (const std::bad_alloc &) {
    return fail(prob, KVSL_ERR_NOMEM);
  } catch (...) {
    message(prob, 4, "The global search failed in its backend.");
    return fail(prob, KVSL_ERR_BACKEND);
  }
  prob->solvetime = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  if (search_callback_failed(prob)) {
    prob->mipstatus = prob->mip_held ? KVSL_MIP_SOLUTION : KVSL_MIP_NO_SOL_FOUND;
    return fail(prob, KVSL_ERR_CALLBACK);
  }
  return 0;
}

}  // namespace kvsl
