/*
 * engine.h -- internal state of an engine problem, shared by the files that
 * implement the engine's capabilities.
 *
 * Conventions of the engine (what the numbers an application reads mean):
 * - The objective is  c'x + 0.5 x'Qx - k, where k is the value stored at
 *   column -1 by KVSLchgobj; every objective value the engine reports
 *   (LP, MIP, best bound, solution files) includes -k.
 * - Slack of row i:  rhs_i - a_i'x  (for 'R' rows rhs is the upper end).
 * - Dual of row i:   the derivative of the objective with respect to rhs_i,
 *   in the problem's own sense.  Minimising, a binding 'L' row has a dual
 *   <= 0 and a binding 'G' row one >= 0; maximising, the signs swap.
 * - Reduced cost of column j:  c_j (+ (Qx)_j) - a_j'y, the derivative of the
 *   objective with respect to x_j when the basic columns follow.
 * - The loaded problem is never held presolved between calls: presolve runs
 *   inside each optimisation and is undone before it returns, so the
 *   presolve flags 2 and 4 of attribute 1026 are never set and
 *   KVSLpostsolve has nothing to do.
 * - Option letters: d dual simplex (default), p and n primal simplex, b
 *   barrier with crossover; a quadratic objective or quadratic rows are
 *   solved by Ipopt's interior-point method whatever the letters.  The
 *   simplex always starts from the basis the problem holds (the last
 *   solve's or a loaded one), so c changes nothing.
 * - The global search is exact for every entity, without big-M constants:
 *   binary and integer columns are Cbc's; a semi-continuous column takes 0
 *   or a value in [limit, ub] (integer for 'R', from the first integer at
 *   or above the limit), a partial integer column is integer below its
 *   limit, both branched on by bounds; sets are branched on by the
 *   engine's own objects in the order of their reference values, fixing
 *   members at 0 by both bounds; an indicator row gets slack columns that
 *   relax it, and branching fixes the indicator column either at the
 *   value that releases the row or at the one that enforces it with the
 *   slacks fixed at 0.  Model cuts and delayed rows stay in the LP.  With
 *   any of these objects the search runs without Cbc's heuristics,
 *   probing and strong branching, which know nothing of them; mixed
 *   integer rounding cuts and Cbc's integer preprocessing are not used
 *   (both cut off optimal solutions of small models), so control 8011 is
 *   accepted without effect on the search.  Every reported solution is
 *   checked against the loaded problem; a failing one makes the search
 *   run again without heuristics.  A quadratic objective with entities
 *   fails with KVSL_ERR_UNSUPPORTED.  Directives give priorities and
 *   preferred directions to integer columns, entity objects and sets, and
 *   starting pseudo costs to integer columns.
 * - Before any optimisation the problem is checked: a NaN anywhere, an
 *   infinite objective, matrix or quadratic coefficient fails with
 *   KVSL_ERR_BADNUMBER, an indicator column that is not binary with
 *   KVSL_ERR_ENTITY; nothing is solved then.
 * - An LP solve leaves out each indicator row whose column is not fixed at
 *   the value that puts the row in force.
 * - Controls accepted without effect on Clp/Cbc: 8006 (crash) and 8078
 *   (dual reductions).  8028 levels 2 and up make the search log every
 *   node instead of every hundred; Cbc's own detail levels above 1 are not
 *   used because its sub-searches would print them to standard output.
 *   8047 makes the engine report the barrier's result in one line (the
 *   barrier itself runs silent for the same reason).
 * - After a solve the MIP status of a problem without a search is 2 (LP
 *   optimal), 7 (relaxation unbounded) or 1; KVSLmipoptimize on a problem
 *   without entities reports its LP optimum as the MIP solution (status 6).
 */
#ifndef KVSL_ENGINE_H
#define KVSL_ENGINE_H

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "kvsl.h"
#include "name_list.h"

#define KVSL_EXPORT extern "C" __attribute__((visibility("default")))

class ClpSimplex;
class CoinPackedMatrix;

namespace kvsl {
class backend_log;
struct callback_state;

// One global entity of the loaded problem.
struct entity {
  char type;     // 'B', 'I', 'P', 'S' or 'R'
  int col;
  double limit;  // for 'P', 'S', 'R'
};

// Branching directive of a column (obj >= 0) or a set (obj = -set number).
struct directive {
  int obj;
  int prio;
  char dir;
  double up, down;
};

// Indicator row: row holds when column col equals 1 (flag 1) or 0 (flag -1).
struct indicator {
  int row, col, flag;
};

// Quadratic part of a row: x'Qx over one triangle, each triple (i, j, v)
// contributing v x_i x_j for i == j and 2 v x_i x_j otherwise.
struct quad_row {
  int row;
  std::vector<int> col1, col2;
  std::vector<double> val;
};

// A MIP start offered with KVSLaddmipsol (mipstart.cpp).
struct mip_start {
  std::vector<int> col;
  std::vector<double> val;
  std::string name;
};

// Search state of the infeasible subsystems (iis.cpp).
struct iis_state;

// Ranging results of the current LP solution.
struct ranging {
  std::vector<double> row_upact, row_loact, row_uup, row_udn;
  std::vector<double> col_upact, col_loact, col_uup, col_udn, col_ucost, col_lcost;
};

}  // namespace kvsl

struct kvsl_prob {
  std::string name;
  KVSLmsgcb msgcb = nullptr;
  void *msguser = nullptr;
  std::mutex msg_mutex;            // serialises callback calls from search threads
  std::map<int, int> intctrl;      // integer controls set away from default
  std::map<int, double> dblctrl;   // double controls set away from default
  int errorcode = 0;               // attribute 1023

  // Log handler of the backend model (declared before it: it outlives it).
  std::unique_ptr<kvsl::backend_log> log;

  // The loaded problem.  The matrix, bounds and linear/quadratic objective
  // live only in the backend model; the row data as given are kept beside
  // it because the backend knows rows only as lower/upper activity bounds.
  bool loaded = false;
  int ncols = 0;
  std::string modelname;           // name given with the load
  std::unique_ptr<ClpSimplex> lp;
  std::vector<char> rowtype;
  std::vector<double> rhs, range;
  double objconst = 0.0;           // k: the objective is c'x - k
  int sense = 1;                   // 1 minimise, -1 maximise
  bool has_quadratic = false;
  std::vector<kvsl::quad_row> qrows;   // rows with a quadratic part
  std::vector<kvsl::entity> entities;
  std::vector<char> settype;
  std::vector<int64_t> setstart;
  std::vector<int> setcol;
  std::vector<double> setref;
  kvsl::name_list rownames, colnames, setnames;
  std::vector<kvsl::directive> directives;
  std::vector<int> modelcuts, delayedrows;
  std::vector<kvsl::indicator> indicators;

  // Results.
  int lpstatus = KVSL_LP_UNSTARTED;
  int mipstatus = KVSL_MIP_NOT_LOADED;
  int iterations = 0;
  int nodes = 0;
  double solvetime = 0.0;
  bool lp_held = false;            // an LP solution is held (flag 128)
  std::vector<double> lp_x, lp_slack, lp_dual, lp_dj;
  double lp_obj = 0.0;
  bool mip_held = false;           // a MIP solution is held
  std::vector<double> mip_x;
  double mip_obj = 0.0;
  double best_bound = 0.0;
  std::unique_ptr<kvsl::ranging> ranges;
  std::shared_ptr<kvsl::iis_state> iis;  // infeasible subsystems found
  std::vector<kvsl::mip_start> mip_starts;  // offered for the next search
  std::vector<double> start_x;     // the start held during a search
  std::string start_name;
  // Search callbacks and the cut pool (callbacks.h); null until first used.
  std::shared_ptr<kvsl::callback_state> callbacks;

  // Limits of the running solve (solve_limits.h): its wall-clock deadline in
  // steady-clock seconds (0: none), whether a limit has stopped it, and
  // whether the deadline stopped a simplex half-way (set from search
  // threads and const paths, hence atomic and mutable).
  double deadline = 0.0;
  mutable std::atomic<bool> limit_hit{false};
  mutable std::atomic<bool> lp_cut_short{false};

  kvsl_prob();
  ~kvsl_prob();
};

namespace kvsl {

// Record an error code on the problem and return it as the call's result.
int fail(KVSLprob prob, int code);
// Deliver one log line through the problem's message callback, unless
// control 8035 switched the log off (errors are delivered anyway).
void message(KVSLprob prob, int type, const char *text);
// printf-style variant of message().
void messagef(KVSLprob prob, int type, const char *fmt, ...)
    __attribute__((format(printf, 3, 4)));

// Current value of an integer or double control.
int intcontrol(const kvsl_prob *prob, int control);
double dblcontrol(const kvsl_prob *prob, int control);

// Backend infinity for an interface bound (+-1e20 and beyond are infinite).
double to_backend(double v);
// Interface value (+-1e20) for a backend bound.
double from_backend(double v);

// Number of irreducible subsystems found so far; can IIS 0 be read at once?
int iis_found(const kvsl_prob *prob);
bool iis_available(const kvsl_prob *prob);

// Forget every solution, status and ranging result (after a change).
void drop_solutions(kvsl_prob *prob);
// Objective value of x in the problem's terms (linear, quadratic, constant).
double objective_of(const kvsl_prob *prob, const double *x);
// Slacks rhs - a'x of every row for the column values x.
void slacks_of(const kvsl_prob *prob, const double *x, double *slack);
// Does the problem have quadratic parts beside entities, sets or indicator
// rows (searched by solve_quadratic_search instead of Cbc)?
bool needs_quadratic_search(const kvsl_prob *prob);
// The quadratic objective's triangle held by the backend (null: none).
const CoinPackedMatrix *quadratic_of(const ClpSimplex &m);
// Check that the quadratic objective is convex in the problem's sense.
bool quadratic_is_convex(const kvsl_prob *prob);
// Is the form given by triangle triples, times sign, positive semidefinite
// (within a tolerance relative to its largest entry)?
bool form_is_psd(const std::vector<int> &col1, const std::vector<int> &col2,
                 const std::vector<double> &val, double sign);
// Do the quadratic rows describe a convex set ('L' rows semidefinite, 'G'
// rows negative semidefinite, no quadratic equality or range)?
bool quadratic_rows_are_convex(const kvsl_prob *prob);
// Value x'Qx of a quadratic row's form.
double quad_row_value(const quad_row &r, const double *x);
// Column and row activity bounds of one relaxation (backend infinities).
struct relaxation_bounds {
  std::vector<double> col_lo, col_up, row_lo, row_up;
};
// Result of one interior-point solve.
struct relaxation_result {
  int status = KVSL_LP_UNSOLVED;   // an LP status
  std::vector<double> x, dual, dj;
  double obj = 0.0;                // in the problem's terms
  int iterations = 0;
};
// The bounds the backend model holds.
relaxation_bounds model_bounds(const kvsl_prob *prob);
// Solve the loaded problem's continuous relaxation within the bounds by the
// interior-point backend, from `start` (null: 0) moved into the bounds.
void solve_relaxation(const kvsl_prob *prob, const relaxation_bounds &bounds, const double *start,
                      relaxation_result &out);
// Solve the loaded continuous problem with a quadratic objective or
// quadratic rows by the interior-point backend; fills the LP results.
int solve_interior(kvsl_prob *prob);
// Global search of a problem with quadratic parts and entities (branch and
// bound on interior-point relaxations); fills the MIP results.
int solve_quadratic_search(kvsl_prob *prob, const char *flags);

// Set the log level of the problem's backend handler for an LP solve.
void prepare_lp_log(kvsl_prob *prob);

// Solve the loaded LP (or QP) with the option letters; fills the LP results.
int solve_lp(kvsl_prob *prob, const char *flags);
// Run the global search; fills the MIP results.
int solve_mip(kvsl_prob *prob, const char *flags);
// Forget the cut pool (a new matrix was loaded).
void clear_cut_pool(kvsl_prob *prob);
// Is a flag letter (case-insensitive) in the option string?
bool has_flag(const char *flags, char letter);

}  // namespace kvsl

#endif
