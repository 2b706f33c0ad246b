/*
 * mip.cpp -- the global search with Cbc over Clp: preprocessing, cut
 * generators, heuristics, branching directives, limits, status and the
 * best solution mapped back to the loaded problem.
 */
#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>

#include <CbcHeuristic.hpp>
#include <CbcHeuristicFPump.hpp>
#include <CbcHeuristicLocal.hpp>
#include <CbcHeuristicRINS.hpp>
#include <CbcModel.hpp>
#include <CbcSimpleInteger.hpp>
#include <CglClique.hpp>
#include <CglFlowCover.hpp>
#include <CglGomory.hpp>
#include <CglKnapsackCover.hpp>
#include <CglMixedIntegerRounding2.hpp>
#include <CglPreProcess.hpp>
#include <CglProbing.hpp>
#include <CglTwomir.hpp>
#include <ClpSimplex.hpp>
#include <CoinError.hpp>
#include <OsiClpSolverInterface.hpp>

#include "log.h"

namespace kvsl {

namespace {

// The cut generators of the search (owned here, copied into the model).
struct cut_generators {
  CglProbing probing;
  CglGomory gomory;
  CglKnapsackCover knapsack;
  CglClique clique;
  CglMixedIntegerRounding2 mir;
  CglFlowCover flow;
  CglTwomir twomir;

  cut_generators() {
    probing.setUsingObjective(1);
    probing.setMaxPass(1);
    probing.setMaxPassRoot(5);
    probing.setMaxProbe(10);
    probing.setMaxProbeRoot(1000);
    probing.setMaxLook(50);
    probing.setMaxLookRoot(500);
    probing.setMaxElements(200);
    probing.setRowCuts(3);
    gomory.setLimit(300);
    clique.setStarCliqueReport(false);
    clique.setRowCliqueReport(false);
  }

  void add_to(CbcModel &model) {
    model.addCutGenerator(&probing, -1, "Probing");
    model.addCutGenerator(&gomory, -1, "Gomory");
    model.addCutGenerator(&knapsack, -1, "Knapsack");
    model.addCutGenerator(&clique, -1, "Clique");
    model.addCutGenerator(&mir, -1, "MixedIntegerRounding2");
    model.addCutGenerator(&flow, -1, "FlowCover");
    model.addCutGenerator(&twomir, -1, "TwoMirCuts");
  }
};

// Add the primal heuristics (the model copies them).
void add_heuristics(CbcModel &model) {
  CbcRounding rounding(model);
  model.addHeuristic(&rounding);
  CbcHeuristicFPump pump(model);
  model.addHeuristic(&pump);
  CbcHeuristicLocal local(model);
  model.addHeuristic(&local);
  CbcHeuristicRINS rins(model);
  model.addHeuristic(&rins);
}

// Cbc's log level for the search.  Cbc's sub-searches (in heuristics) log
// through handlers of their own at one level less, so the search itself
// stays at level 1: anything higher would reach standard output.
int search_log_level(const kvsl_prob *prob) {
  if (intcontrol(prob, KVSL_CTRL_OUTPUTLOG) == 0) return 0;
  return std::min(intcontrol(prob, KVSL_CTRL_MIPLOG), 1);
}

// Apply the limits, tolerances and log level of the controls.
void apply_controls(const kvsl_prob *prob, CbcModel &model) {
  int maxnode = intcontrol(prob, KVSL_CTRL_MAXNODE);
  model.setMaximumNodes(maxnode > 0 ? maxnode : INT_MAX);
  double t = dblcontrol(prob, KVSL_CTRL_TIMELIMIT);
  model.setMaximumSeconds(t > 0.0 ? t : 1e100);
  model.setAllowableGap(dblcontrol(prob, KVSL_CTRL_MIPABSGAP));
  model.setAllowableFractionGap(dblcontrol(prob, KVSL_CTRL_MIPRELGAP));
  model.setIntegerTolerance(dblcontrol(prob, KVSL_CTRL_MIPTOL));
  double cutoff = dblcontrol(prob, KVSL_CTRL_CUTOFF);
  // The backend works without the constant k; it minimises sense * c'x.
  if (std::fabs(cutoff) < 1e39) model.setCutoff(prob->sense * (cutoff + prob->objconst));
  int threads = intcontrol(prob, KVSL_CTRL_THREADS);
  if (threads > 1) model.setNumberThreads(threads);
  model.setLogLevel(search_log_level(prob));
  // Levels 2 and up log every node rather than every hundred.
  if (intcontrol(prob, KVSL_CTRL_MIPLOG) >= 2) model.setPrintFrequency(1);
}

// Hand priorities and preferred directions of column directives to the
// integer objects; orig maps the model's columns to the loaded ones.
void apply_directives(const kvsl_prob *prob, CbcModel &model, const int *orig) {
  if (prob->directives.empty()) return;
  model.findIntegers(false);
  std::vector<const directive *> of_col(prob->ncols, nullptr);
  for (const auto &d : prob->directives)
    if (d.obj >= 0) of_col[d.obj] = &d;
  for (int i = 0; i < model.numberObjects(); ++i) {
    auto *obj = dynamic_cast<CbcSimpleInteger *>(model.objects()[i]);
    if (obj == nullptr) continue;
    int col = orig != nullptr ? orig[obj->columnNumber()] : obj->columnNumber();
    const directive *d = col >= 0 && col < prob->ncols ? of_col[col] : nullptr;
    if (d == nullptr) continue;
    obj->setPriority(d->prio);
    obj->setPreferredWay(d->dir == 'U' ? 1 : d->dir == 'D' ? -1 : 0);
  }
}

// Is x within tolerance of the loaded problem's bounds, rows and integrality?
bool is_feasible(const kvsl_prob *prob, const std::vector<double> &x) {
  const ClpSimplex &m = *prob->lp;
  const double tol = 1e-6;
  for (int j = 0; j < prob->ncols; ++j)
    if (x[j] < m.columnLower()[j] - tol * (1 + std::fabs(x[j])) ||
        x[j] > m.columnUpper()[j] + tol * (1 + std::fabs(x[j])))
      return false;
  for (const auto &e : prob->entities)
    if (std::fabs(x[e.col] - std::round(x[e.col])) > 1e-5) return false;
  std::vector<double> act(m.numberRows(), 0.0);
  m.matrix()->times(x.data(), act.data());
  for (int i = 0; i < m.numberRows(); ++i)
    if (act[i] < m.rowLower()[i] - tol * (1 + std::fabs(act[i])) ||
        act[i] > m.rowUpper()[i] + tol * (1 + std::fabs(act[i])))
      return false;
  return true;
}

// Record a MIP solution x.
void take_mip_solution(kvsl_prob *prob, std::vector<double> x) {
  for (const auto &e : prob->entities) x[e.col] = std::round(x[e.col]);
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
  solver.getModelPtr()->setMaximumSeconds(-1.0);
  solver.initialSolve();
  prob->iterations = solver.getIterationCount();
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

// Run branch and cut on the (preprocessed) solver; fills the MIP results.
void search(kvsl_prob *prob, OsiClpSolverInterface &solver, backend_log &log,
            backend_log &quiet) {
  bool presolve = intcontrol(prob, KVSL_CTRL_MIPPRESOLVE) != 0;
  CglPreProcess process;
  process.passInMessageHandler(&log);
  OsiSolverInterface *pre = presolve ? process.preProcess(solver, false, 5) : &solver;
  if (pre == nullptr) {  // preprocessing proved infeasibility
    prob->mipstatus = KVSL_MIP_INFEAS;
    return;
  }
  CbcModel model(*pre);
  model.passInMessageHandler(&log);
  // The node LPs stay silent; the search reports on them.
  model.solver()->passInMessageHandler(&quiet);
  cut_generators cuts;
  if (intcontrol(prob, KVSL_CTRL_CUTSTRATEGY) != 0) cuts.add_to(model);
  if (intcontrol(prob, KVSL_CTRL_HEURSTRATEGY) != 0) add_heuristics(model);
  apply_controls(prob, model);
  apply_directives(prob, model, presolve ? process.originalColumns() : nullptr);
  model.branchAndBound();
  prob->nodes = model.getNodeCount();
  prob->iterations += model.getIterationCount();
  double bound = model.getBestPossibleObjValue();
  bool have = model.bestSolution() != nullptr;
  if (have) {
    std::vector<double> x;
    if (presolve) {
      model.solver()->setColSolution(model.bestSolution());
      process.postProcess(*model.solver());
      const double *sx = solver.getColSolution();
      x.assign(sx, sx + prob->ncols);
    } else {
      x.assign(model.bestSolution(), model.bestSolution() + prob->ncols);
    }
    if (is_feasible(prob, x)) {
      take_mip_solution(prob, std::move(x));
    } else {
      have = false;
      message(prob, 3, "The search's best solution failed the final check and was dropped.");
    }
  }
  if (model.isContinuousUnbounded()) {
    prob->mipstatus = KVSL_MIP_UNBOUNDED;
  } else if (model.isProvenOptimal() || model.isProvenInfeasible()) {
    prob->mipstatus = have ? KVSL_MIP_OPTIMAL : KVSL_MIP_INFEAS;
  } else {
    prob->mipstatus = have ? KVSL_MIP_SOLUTION : KVSL_MIP_NO_SOL_FOUND;
  }
  if (std::fabs(bound) < 1e49) prob->best_bound = bound - prob->objconst;
  if (prob->mipstatus == KVSL_MIP_OPTIMAL) {
    // A finished search has its bound at the incumbent up to the gap.
    if (prob->sense * (prob->best_bound - prob->mip_obj) > 0.0) prob->best_bound = prob->mip_obj;
  }
}

}  // namespace

bool has_unsupported_globals(const kvsl_prob *prob) {
  if (!prob->settype.empty() || !prob->indicators.empty()) return true;
  for (const auto &e : prob->entities)
    if (e.type != 'B' && e.type != 'I') return true;
  return false;
}

int solve_mip(kvsl_prob *prob, const char *flags) {
  auto t0 = std::chrono::steady_clock::now();
  if (has_unsupported_globals(prob)) {
    message(prob, 4,
            "Sets, semi-continuous and partial integer entities and indicator rows cannot be "
            "searched by this engine.");
    return fail(prob, KVSL_ERR_UNSUPPORTED);
  }
  if (prob->has_quadratic && !prob->entities.empty()) {
    message(prob, 4, "A quadratic objective with global entities cannot be searched by this engine.");
    return fail(prob, KVSL_ERR_UNSUPPORTED);
  }
  if (prob->entities.empty()) return solve_without_entities(prob, flags);
  drop_solutions(prob);
  prob->iterations = 0;
  prob->nodes = 0;
  prob->best_bound = prob->sense > 0 ? -KVSL_INFINITY : KVSL_INFINITY;
  try {
    backend_log log(prob), quiet(prob);
    log.setLogLevel(search_log_level(prob));
    quiet.setLogLevel(0);
    OsiClpSolverInterface solver(new ClpSimplex(*prob->lp), true);
    solver.passInMessageHandler(&quiet);
    solver.setDblParam(OsiPrimalTolerance, dblcontrol(prob, KVSL_CTRL_FEASTOL));
    solver.setDblParam(OsiDualTolerance, dblcontrol(prob, KVSL_CTRL_OPTIMALITYTOL));
    for (const auto &e : prob->entities) solver.setInteger(e.col);
    if (solve_root(prob, solver)) search(prob, solver, log, quiet);
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
