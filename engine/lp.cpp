/*
 * lp.cpp -- LP and convex QP optimisation of the loaded problem with Clp:
 * algorithm choice from the option letters, controls, status and results.
 */
#include <chrono>
#include <cmath>
#include <vector>

#include <ClpSimplex.hpp>
#include <ClpSolve.hpp>
#include <CoinPackedMatrix.hpp>

#include "log.h"
#include "search.h"
#include "solve_limits.h"

namespace kvsl {

namespace {

// The barrier runs when asked for.
bool use_barrier(const kvsl_prob *, const char *flags) { return has_flag(flags, 'b'); }

// Clp solve options from the option letters and controls.
ClpSolve solve_options(const kvsl_prob *prob, const char *flags, bool presolve) {
  ClpSolve opts;
  if (use_barrier(prob, flags))
    opts.setSolveType(ClpSolve::useBarrier);
  else if (has_flag(flags, 'p') || has_flag(flags, 'n'))
    opts.setSolveType(ClpSolve::usePrimal);
  else
    opts.setSolveType(ClpSolve::useDual);
  opts.setPresolveType(presolve ? ClpSolve::presolveOn : ClpSolve::presolveOff);
  return opts;
}

// Rows without coefficients and without bounds, closed to [-1, 1] while
// the barrier runs: their activity is 0 whatever the columns, so the
// feasible set, the optimum and the crossover's basis (the row basic) stay
// those of the problem.  Left free, one such row in an infeasible LP sent
// the barrier's primal off to infinity, and the backend aborts the
// process there.  Reopened when the scope ends.
class closed_empty_rows {
 public:
  closed_empty_rows(ClpSimplex &m, bool barrier) : m_(m) {
    if (!barrier) return;
    std::vector<char> used(static_cast<size_t>(m.numberRows()), 0);
    const CoinPackedMatrix &a = *m.matrix();
    for (int j = 0; j < a.getNumCols(); ++j)
      for (CoinBigIndex k = a.getVectorStarts()[j]; k < a.getVectorStarts()[j] + a.getVectorLengths()[j]; ++k)
        if (a.getElements()[k] != 0.0) used[a.getIndices()[k]] = 1;
    for (int i = 0; i < m.numberRows(); ++i)
      if (used[i] == 0 && m.rowLower()[i] <= -KVSL_INFINITY && m.rowUpper()[i] >= KVSL_INFINITY) {
        rows_.push_back(i);
        m.setRowBounds(i, -1.0, 1.0);
      }
  }
  ~closed_empty_rows() {
    for (int i : rows_) m_.setRowBounds(i, -COIN_DBL_MAX, COIN_DBL_MAX);
  }
  closed_empty_rows(const closed_empty_rows &) = delete;
  closed_empty_rows &operator=(const closed_empty_rows &) = delete;

 private:
  ClpSimplex &m_;
  std::vector<int> rows_;
};

// Apply tolerances, limits and logging of the problem's controls to Clp.
void apply_controls(kvsl_prob *prob, ClpSimplex &m, const char *flags) {
  m.setPrimalTolerance(dblcontrol(prob, KVSL_CTRL_FEASTOL));
  m.setDualTolerance(dblcontrol(prob, KVSL_CTRL_OPTIMALITYTOL));
  m.scaling(intcontrol(prob, KVSL_CTRL_SCALING) != 0 ? 3 : 0);
  prepare_lp_log(prob);
  // The barrier's factorisation writes to standard output at any log level
  // above 0, so it runs silent; the engine reports its result itself.
  if (use_barrier(prob, flags)) prob->log->setLogLevel(0);
  iteration_log events(prob, intcontrol(prob, KVSL_CTRL_LPLOG));
  watch_deadline(prob, m, &events, true);
}

// LP status code of Clp's final state.
int lp_status_of(const ClpSimplex &m) {
  switch (m.status()) {
    case 0: return KVSL_LP_OPTIMAL;
    case 1: return m.secondaryStatus() == 1 ? KVSL_LP_CUTOFF_IN_DUAL : KVSL_LP_INFEAS;
    case 2: return KVSL_LP_UNBOUNDED;
    case 3: case 5: return KVSL_LP_UNFINISHED;
    default: return KVSL_LP_UNSOLVED;
  }
}

// Copy the backend solution into the problem's LP results.
void take_solution(kvsl_prob *prob, const ClpSimplex &m) {
  int n = m.numberColumns(), r = m.numberRows();
  const double *x = m.primalColumnSolution();
  const double *act = m.primalRowSolution();
  prob->lp_x.assign(x, x + n);
  prob->lp_dj.assign(m.dualColumnSolution(), m.dualColumnSolution() + n);
  prob->lp_dual.assign(m.dualRowSolution(), m.dualRowSolution() + r);
  prob->lp_slack.resize(r);
  for (int i = 0; i < r; ++i) prob->lp_slack[i] = prob->rhs[i] - act[i];
  prob->lp_obj = objective_of(prob, x);
  // Clp's sign changes for maximising leave negative zeros; report 0.
  for (auto *v : {&prob->lp_x, &prob->lp_dj, &prob->lp_dual, &prob->lp_slack})
    for (double &e : *v) e += 0.0;
}

// The MIP status that an LP result gives.
int mip_status_after_lp(int lpstatus) {
  if (lpstatus == KVSL_LP_OPTIMAL) return KVSL_MIP_LP_OPTIMAL;
  if (lpstatus == KVSL_LP_UNBOUNDED) return KVSL_MIP_UNBOUNDED;
  return KVSL_MIP_LP_NOT_OPTIMAL;
}

}  // namespace

// The dual simplex's artificial bounds on free columns can end in a false
// optimum of an unbounded LP: an optimum is confirmed by the primal simplex
// from its basis, which costs no iteration when it is true (its values
// pass would keep the false one).  Presolve may stop at "infeasible or
// unbounded" or give up on a model it finds inconsistent, and Clp's
// simplex calls some unbounded models infeasible (an improving ray met
// while rows are still violated).  Such a verdict is settled without
// presolve: feasibility first, by the primal simplex on a zero objective
// from a slack basis, then the objective from the feasible basis found.  A
// cutoff reached in the dual and the limits stay as they are.
int confirm_verdict(ClpSimplex &m) {
  int confirmed = 0;
  if (m.status() == 0) {
    m.primal(0);
    confirmed = m.numberIterations();
  }
  int s = m.status();
  if (s == 0 || s == 3 || s == 5 || (s == 1 && m.secondaryStatus() == 1)) return confirmed;
  int n = m.numberColumns();
  std::vector<double> c(m.objective(), m.objective() + n), zero(n, 0.0);
  m.chgObjCoefficients(zero.data());
  m.allSlackBasis(true);
  m.primal();
  int iterations = confirmed + m.numberIterations();
  bool feasible = m.status() == 0;
  m.chgObjCoefficients(c.data());
  if (!feasible) return iterations;
  m.primal(0);
  return iterations + m.numberIterations();
}

int solve_lp(kvsl_prob *prob, const char *flags) {
  auto t0 = std::chrono::steady_clock::now();
  drop_solutions(prob);
  prob->iterations = 0;
  prob->nodes = 0;
  if (!quadratic_is_convex(prob) || !quadratic_rows_are_convex(prob)) {
    prob->lpstatus = KVSL_LP_NONCONVEX;
    prob->mipstatus = KVSL_MIP_LP_NOT_OPTIMAL;
    message(prob, 4, quadratic_is_convex(prob)
                         ? "A quadratic row is not convex; the problem is not solved."
                         : "The quadratic objective is not convex; the problem is not solved.");
    return 0;
  }
  ClpSimplex &m = *prob->lp;
  // Quadratic parts go to the interior-point method: Clp's quadratic
  // simplex can stop at a non-optimal point and call it optimal.
  const bool interior = prob->has_quadratic || !prob->qrows.empty();
  try {
    released_indicator_rows released(prob);
    if (interior) {
      if (int rc = solve_interior(prob); rc != 0) return rc;
    } else {
      apply_controls(prob, m, flags);
      bool presolve = intcontrol(prob, KVSL_CTRL_PRESOLVE) != 0;
      ClpSolve opts = solve_options(prob, flags, presolve);
      {
        closed_empty_rows closed(m, use_barrier(prob, flags));
        m.initialSolve(opts);
        prob->iterations = m.numberIterations();
        // Presolve may stop at "infeasible or unbounded"; the plain simplex
        // tells the two apart, and a primal check confirms what it says.
        if (presolve && (m.status() == 1 || m.status() == 2) && m.secondaryStatus() != 1 &&
            !deadline_passed(prob)) {
          ClpSolve plain = solve_options(prob, flags, false);
          m.initialSolve(plain);
          prob->iterations += m.numberIterations();
        }
        prob->iterations += confirm_verdict(m);
      }
      prob->lpstatus = lp_status_of(m);
      if (prob->lpstatus == KVSL_LP_OPTIMAL) take_solution(prob, m);
    }
  } catch (...) {
    prob->lpstatus = KVSL_LP_UNSOLVED;
    return fail(prob, KVSL_ERR_BACKEND);
  }
  if (prob->lpstatus == KVSL_LP_OPTIMAL) {
    double cutoff = dblcontrol(prob, KVSL_CTRL_CUTOFF);
    if (std::fabs(cutoff) < 1e39 && prob->sense * (prob->lp_obj - cutoff) > 0.0)
      prob->lpstatus = KVSL_LP_CUTOFF;
    else
      prob->lp_held = true;
  }
  prob->mipstatus = mip_status_after_lp(prob->lpstatus);
  if (has_flag(flags, 'b') && intcontrol(prob, KVSL_CTRL_BARRIERLOG) != 0)
    messagef(prob, 1, "Barrier with crossover: LP status %d, objective %.10g, %d simplex iterations",
             prob->lpstatus, prob->lp_held ? prob->lp_obj : 0.0, prob->iterations);
  prob->solvetime = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  return 0;
}

}  // namespace kvsl
