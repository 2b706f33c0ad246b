/**
 * @file kvsl.h
 * @brief The C interface of the Korvex-Optimizer solver engine (libkvsl).
 *
 * The modelling library talks to the engine only through what is declared here.
 *
 * @par Conventions
 * - Every function returns int: 0 on success, non-zero on failure.  After a
 *   failure the engine's error code can be read as integer attribute
 *   KVSL_ATTR_ERRORCODE (1023) of the problem concerned (for the functions
 *   without a problem, KVSLinit and KVSLfree, the return value is the code).
 * - Column starts (KVSLload*64, KVSLaddcuts, KVSLgetcpcuts), set starts and
 *   per-row quadratic term counts are 64-bit (int64_t); row and column
 *   indices, counts of rows/columns/sets and everything else are 32-bit int.
 * - Infinity is +-1e20 (KVSL_INFINITY): a bound or range of that magnitude or
 *   more is unbounded; the engine converts it to its backends' own infinity.
 * - Row types are letters: 'N' free, 'L' <=, 'G' >=, 'E' =, 'R' range (the
 *   row reads  rhs - range <= a'x <= rhs).  Set types: '1', '2'.  Global
 *   entity types: 'B' binary, 'I' integer, 'P' partial integer, 'S'
 *   semi-continuous, 'R' semi-continuous integer.
 * - A column-wise matrix is given by colstart[j] (64-bit), colcount[j] and the
 *   row indices / values of column j at positions colstart[j] ..
 *   colstart[j] + colcount[j] - 1.  colcount may be NULL: then colstart has
 *   ncols + 1 entries and column j ends at colstart[j + 1].
 * - Quadratic forms are given as triples (col1, col2, value) of the upper
 *   triangle, each off-diagonal pair once.  The objective's quadratic part is
 *   0.5 x'Qx: a triple (j, j, v) contributes v/2 x_j^2 and (i, j, v), i != j,
 *   contributes v x_i x_j.  A quadratic row's form is x'Qx with each triple
 *   (i, j, v) contributing v x_i x_j for i == j and 2 v x_i x_j otherwise.
 * - All arrays are copied by the engine; the caller keeps ownership.
 * - Problems are independent of each other: different problems may be used
 *   from different threads at the same time.  One problem is used by one
 *   thread at a time.
 */
#ifndef KVSL_H
#define KVSL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Infinite bounds and ranges: a value of this magnitude or more is open. */
#define KVSL_INFINITY 1.0e20

/** An engine problem: a matrix, its controls, attributes and solutions. */
typedef struct kvsl_prob *KVSLprob;

/** A cut of the engine's cut pool (KVSLgetcutlist / KVSLgetcpcuts). */
typedef struct kvsl_cut *KVSLcut;

/**
 * Message callback: every line the engine or its backends print is handed to
 * it, without the trailing newline, with a message type: 1 information,
 * 3 warning, 4 error (0 and 2 are information too; negative types flush and
 * carry no text).  The engine prints nothing itself: without a callback the
 * text is dropped.  Output controls (KVSL_CTRL_OUTPUTLOG and the log levels)
 * decide which lines are produced.
 */
typedef void (*KVSLmsgcb)(KVSLprob prob, void *user, const char *text, int len,
                          int msgtype);

/* ---- Start-up and problems ------------------------------------------------ */

/** Start the engine (counted; path is the installation directory, may be NULL).
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...). */
int KVSLinit(const char *path);
/** Finish the engine: undoes one KVSLinit.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...). */
int KVSLfree(void);
/** Create an empty problem with default controls; *prob receives it.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLcreateprob(KVSLprob *prob);
/** Destroy a problem and everything it holds.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLdestroyprob(KVSLprob prob);
/** Set the problem's name (the base of its side files: .sol, .rng, .glb).
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLsetprobname(KVSLprob prob, const char *name);
/** Install (or with cb NULL remove) the message callback of a problem.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLsetcbmessage(KVSLprob prob, KVSLmsgcb cb, void *user);

/* ---- Controls and attributes (numbers in the tables below) --------------- */

/** Set an integer control (numbers: ::KVSL_CTRL_SCALING ...).
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLsetintcontrol(KVSLprob prob, int control, int value);
/** Read an integer control into *value.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLgetintcontrol(KVSLprob prob, int control, int *value);
/** Set a double control (numbers: ::KVSL_CTRL_FEASTOL ...).
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLsetdblcontrol(KVSLprob prob, int control, double value);
/** Read a double control into *value.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLgetdblcontrol(KVSLprob prob, int control, double *value);
/** Restore one control (integer or double) to its default value.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLsetdefaultcontrol(KVSLprob prob, int control);
/** Read an integer attribute (::KVSL_ATTR_ROWS ...) into *value.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLgetintattrib(KVSLprob prob, int attrib, int *value);
/** Read a double attribute (::KVSL_ATTR_LPOBJVAL ...) into *value.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLgetdblattrib(KVSLprob prob, int attrib, double *value);

/* ---- Loading a matrix ----------------------------------------------------- */
/**
 * Every load replaces the problem's matrix, solutions, bases, cuts, entities,
 * names, directives and special rows.  Common arguments:
 *   name      problem name (may be NULL)
 *   ncols, nrows
 *   rowtype   nrows letters N L G E R
 *   rhs       nrows right-hand sides
 *   range     nrows range widths (read for 'R' rows only; may be NULL)
 *   obj       ncols objective coefficients (may be NULL: all 0)
 *   colstart, colcount, rowind, rowval   the column-wise matrix (see above)
 *   lb, ub    ncols bounds (may be NULL: 0 and +infinity)
 * Quadratic objective:  nqobj triples qobjcol1, qobjcol2, qobjval.
 * Quadratic rows:       nqrows rows qrow[k] with qrowcount[k] (64-bit) triples
 *                       each, concatenated in qrowcol1, qrowcol2, qrowval.
 * Global entities:      nglobal entities of type enttype[k] on column
 *                       entcol[k] with limit entlimit[k] (the limit of 'P',
 *                       'S', 'R' entities; ignored for 'B' and 'I'; may be
 *                       NULL); nsets sets of type settype[s] whose members
 *                       are setcol[setstart[s] .. setstart[s+1]-1] with
 *                       reference values (weights) setref[...]; setstart has
 *                       nsets + 1 entries.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLloadlp64(KVSLprob prob, const char *name, int ncols, int nrows,
                 const char rowtype[], const double rhs[], const double range[],
                 const double obj[], const int64_t colstart[],
                 const int colcount[], const int rowind[],
                 const double rowval[], const double lb[], const double ub[]);

/** Load an LP with a quadratic objective (nqobj triples qobjcol1, qobjcol2,
 * qobjval); the other arguments as KVSLloadlp64.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLloadqp64(KVSLprob prob, const char *name, int ncols, int nrows,
                 const char rowtype[], const double rhs[], const double range[],
                 const double obj[], const int64_t colstart[],
                 const int colcount[], const int rowind[],
                 const double rowval[], const double lb[], const double ub[],
                 int64_t nqobj, const int qobjcol1[], const int qobjcol2[],
                 const double qobjval[]);

/** Load a problem with a quadratic objective and quadratic rows (nqrows rows
 * qrow[k] with qrowcount[k] triples each in qrowcol1, qrowcol2, qrowval);
 * the other arguments as KVSLloadqp64.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLloadqcqp64(KVSLprob prob, const char *name, int ncols, int nrows,
                   const char rowtype[], const double rhs[],
                   const double range[], const double obj[],
                   const int64_t colstart[], const int colcount[],
                   const int rowind[], const double rowval[], const double lb[],
                   const double ub[], int64_t nqobj, const int qobjcol1[],
                   const int qobjcol2[], const double qobjval[], int nqrows,
                   const int qrow[], const int64_t qrowcount[],
                   const int qrowcol1[], const int qrowcol2[],
                   const double qrowval[]);

/** Load a linear problem with global entities (nglobal entities enttype,
 * entcol, entlimit; nsets sets settype, setstart, setcol, setref); the
 * other arguments as KVSLloadlp64.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLloadglobal64(KVSLprob prob, const char *name, int ncols, int nrows,
                     const char rowtype[], const double rhs[],
                     const double range[], const double obj[],
                     const int64_t colstart[], const int colcount[],
                     const int rowind[], const double rowval[],
                     const double lb[], const double ub[], int nglobal,
                     int nsets, const char enttype[], const int entcol[],
                     const double entlimit[], const char settype[],
                     const int64_t setstart[], const int setcol[],
                     const double setref[]);

/** Load a problem with a quadratic objective and global entities; the
 * arguments as KVSLloadqp64 and KVSLloadglobal64.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLloadqglobal64(KVSLprob prob, const char *name, int ncols, int nrows,
                      const char rowtype[], const double rhs[],
                      const double range[], const double obj[],
                      const int64_t colstart[], const int colcount[],
                      const int rowind[], const double rowval[],
                      const double lb[], const double ub[], int64_t nqobj,
                      const int qobjcol1[], const int qobjcol2[],
                      const double qobjval[], int nglobal, int nsets,
                      const char enttype[], const int entcol[],
                      const double entlimit[], const char settype[],
                      const int64_t setstart[], const int setcol[],
                      const double setref[]);

/** Load a problem with a quadratic objective, quadratic rows and global
 * entities; the arguments as KVSLloadqcqp64 and KVSLloadglobal64.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLloadqcqpglobal64(
    KVSLprob prob, const char *name, int ncols, int nrows, const char rowtype[],
    const double rhs[], const double range[], const double obj[],
    const int64_t colstart[], const int colcount[], const int rowind[],
    const double rowval[], const double lb[], const double ub[], int64_t nqobj,
    const int qobjcol1[], const int qobjcol2[], const double qobjval[],
    int nqrows, const int qrow[], const int64_t qrowcount[],
    const int qrowcol1[], const int qrowcol2[], const double qrowval[],
    int nglobal, int nsets, const char enttype[], const int entcol[],
    const double entlimit[], const char settype[], const int64_t setstart[],
    const int setcol[], const double setref[]);

/**
 * Change n objective coefficients.  Column -1 is the objective constant, kept
 * with the opposite sign: a value v at column -1 makes the objective c'x - v.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLchgobj(KVSLprob prob, int n, const int col[], const double val[]);
/** Objective sense: 1 minimise, -1 maximise.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLchgobjsense(KVSLprob prob, int sense);
/**
 * Change n bounds: bndtype[k] is 'L' (lower), 'U' (upper) or 'B' (both) of
 * column col[k], to val[k].  Takes effect on the loaded matrix at once.  The
 * solution held (and the statuses) stay readable until the next
 * optimisation, as for KVSLchgglblimit and KVSLchgobjsense.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLchgbounds(KVSLprob prob, int n, const int col[], const char bndtype[],
                  const double val[]);
/** Change the limits of n partial integer / semi-continuous entities.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLchgglblimit(KVSLprob prob, int n, const int col[],
                    const double limit[]);
/** Mark n rows as model cuts: valid inequalities the search may use as cuts.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLloadmodelcuts(KVSLprob prob, int n, const int row[]);
/**
 * Make n rows indicator rows: row[k] must hold when column col[k] (a binary)
 * equals 1 (flag[k] = 1) or 0 (flag[k] = -1).  flag 0 makes it a plain row.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLsetindicators(KVSLprob prob, int n, const int row[], const int col[],
                      const int flag[]);
/** Mark n rows as delayed: enforced lazily, never violated by a solution.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLloaddelayedrows(KVSLprob prob, int n, const int row[]);
/**
 * Names of rows (type 1), columns (type 2) or sets (type 3) first..last:
 * the names follow each other in names, each ended by a zero byte.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLaddnames(KVSLprob prob, int type, const char names[], int first,
                 int last);
/**
 * Branching directives of n objects: obj[k] >= 0 is a column, obj[k] < 0 the
 * set number -obj[k] (sets counted from 1).  prio[k]: priority 0..1000, a
 * lower value branched on first; dir[k]: 'U' up first, 'D' down first,
 * 'N' no preference; up[k], down[k]: pseudo costs per unit.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLloaddirs(KVSLprob prob, int n, const int obj[], const int prio[],
                 const char dir[], const double up[], const double down[]);

/* ---- Optimisation --------------------------------------------------------- */
/**
 * Option letters (case-insensitive; unknown letters are ignored by the engine):
 *   p  primal simplex       d  dual simplex (default)   b  barrier
 *   n  network-friendly pricing (taken as primal simplex)
 *   l  stop after the LP relaxation of a MIP (KVSLmipoptimize, minim, maxim)
 *   g  global search: KVSLminim / KVSLmaxim solve a model with global
 *      entities as a MIP; without g they solve its LP relaxation
 *   c  continue from the current state (KVSLlpoptimize, KVSLmipoptimize)
 * KVSLlpoptimize solves the LP relaxation (with a quadratic objective: the
 * QP); KVSLmipoptimize always runs the global search.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLlpoptimize(KVSLprob prob, const char *flags);
/** Run the global search (always, whatever the entities), with the option
 * letters of KVSLlpoptimize.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLmipoptimize(KVSLprob prob, const char *flags);
/** Set the objective sense to minimise (maximise) and optimise.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLminim(KVSLprob prob, const char *flags);
/** Set the objective sense to maximise and optimise, as KVSLminim.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLmaxim(KVSLprob prob, const char *flags);
/** Bring a presolved problem back to its original form (no-op otherwise).
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLpostsolve(KVSLprob prob);
/** Prepare a new global search from the root (drops the previous tree).
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLinitglobal(KVSLprob prob);
/**
 * Fix every global entity at its value in the current MIP solution (rounded
 * to the nearest integer when round is non-zero), so that a following LP
 * gives duals and reduced costs for the fixed problem.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLfixglobals(KVSLprob prob, int round);

/* ---- Solutions ------------------------------------------------------------ */

/** LP solution: ncols values, nrows slacks, nrows duals, ncols reduced costs;
 * any may be NULL.  Slack of row i is rhs_i - activity_i.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLgetlpsol(KVSLprob prob, double x[], double slack[], double dual[],
                 double dj[]);
/** Best MIP solution: ncols values and nrows slacks (either may be NULL).
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLgetmipsol(KVSLprob prob, double x[], double slack[]);
/** Compute ranging (sensitivity) information of the current LP solution.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLrange(KVSLprob prob);
/**
 * Row ranging, nrows each: upact/loact the activity range over which the
 * row's dual stays valid, uup/udn the objective change per unit of activity
 * up and down.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLgetrowrange(KVSLprob prob, double upact[], double loact[],
                    double uup[], double udn[]);
/**
 * Column ranging, ncols each: upact/loact the value range of the column,
 * uup/udn the objective change per unit up and down, ucost/lcost the
 * objective coefficient range over which the basis stays optimal.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLgetcolrange(KVSLprob prob, double upact[], double loact[],
                    double uup[], double udn[], double ucost[],
                    double lcost[]);
/** Solution files (formats documented with the engine).
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLwritesol(KVSLprob prob, const char *file, const char *flags);
/** Write the solution as a printable report.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLwriteprtsol(KVSLprob prob, const char *file, const char *flags);
/** Write the solution as an slx file.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLwriteslxsol(KVSLprob prob, const char *file, const char *flags);
/** Write the solution as a binary file.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLwritebinsol(KVSLprob prob, const char *file, const char *flags);
/** Read a binary solution file; it becomes the problem's solution.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLreadbinsol(KVSLprob prob, const char *file, const char *flags);
/** Read an slx solution file; it becomes the problem's solution.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLreadslxsol(KVSLprob prob, const char *file, const char *flags);

/* ---- Bases and infeasible subsystems -------------------------------------- */

/** Basis statuses 0 at lower bound, 1 basic, 2 at upper bound, 3 super-basic
 * (free non-basic); nrows row statuses and ncols column statuses.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLgetbasis(KVSLprob prob, int rowstat[], int colstat[]);
/** Load a basis: nrows row statuses and ncols column statuses (as
 * KVSLgetbasis).
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLloadbasis(KVSLprob prob, const int rowstat[], const int colstat[]);
/**
 * Infeasible subsystems (IIS) of the loaded LP, or of a MIP's relaxation.
 * Members are rows and single column bounds (a lower or an upper bound).
 * IIS n >= 1 is irreducible: its rows and bounds alone (every other row free,
 * every other bound infinite) are infeasible, and leaving out any one member
 * makes them feasible.  IIS 0 is a quick approximation: the rows and bounds
 * that the optimal duals of the elastic problem (minimise the total
 * violation of the rows with the bounds kept) prove infeasible together;
 * it is infeasible but may be reducible.  Further subsystems come from a
 * bounded search that leaves out members of those found (at most 50
 * subsystems, 400 subproblems or 20 seconds).  Indicator rows never take
 * part.  A model with entities whose relaxation is feasible (only the
 * integer model infeasible) has at most one subsystem, found by a deletion
 * filter whose subproblems are MIP solves of rows and bounds (entities and
 * sets always kept) under a time limit of 15 seconds each and 30 seconds in
 * all (wall-clock); it is flagged (see KVSLgetiisbounds) and has no IIS 0.  Each call
 * that searches also keeps within control 7020's time limit: a search it
 * stops may go on in the next call, and a subsystem whose filter it stops
 * is flagged as not proved irreducible.  Control 8035
 * silences the line logged for each subsystem found ("IIS n: r rows, b
 * bounds").  A new load or optimisation drops the subsystems found (they
 * stay readable after changes, as solutions do).
 *
 * *count: the number of IIS found so far, -1 when no search has run.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLiisstatus(KVSLprob prob, int *count);
/** Find every IIS; the count is then attribute KVSL_ATTR_NUMIIS.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLiisall(KVSLprob prob);
/**
 * Start a search (mode 0: IIS 0, the approximation from the infeasibility
 * proof; mode 1: the first irreducible subsystem, IIS 1) and go on with the
 * next; *status is 0 when one was found, 1 when the search has ended.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLiisfirst(KVSLprob prob, int mode, int *status);
/** Go on with the next IIS of a search started by KVSLiisfirst; *status is
 * 0 when one was found, 1 when the search has ended.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLiisnext(KVSLprob prob, int *status);
/**
 * Data of IIS num: *nrows and *ncols receive its sizes; rowind, colind and
 * rowtype (may be NULL) its row numbers, column numbers and the type letters
 * of its rows ('1' or '2' for a special ordered set, whose "row" index is
 * then the set number - 1).
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLgetiisdata(KVSLprob prob, int num, int *nrows, int *ncols,
                   int rowind[], int colind[], char rowtype[]);
/**
 * Layout of the data of IIS num: rows in increasing row number, their type
 * letters the loaded row types ('L', 'G', 'E', 'R'); then the bounds in
 * increasing column number, a column whose two bounds both belong to the
 * IIS appearing twice (lower first).  bndtype (ncols letters, may be NULL)
 * receives 'L' for a lower and 'U' for an upper bound in colind's order;
 * *flags (may be NULL) receives 0 for a subsystem of the LP or relaxation;
 * 1 for one found with MIP solves (only the integer model infeasible), plus
 * 2 when a subproblem stayed undecided within its time limit, so that the
 * subsystem is infeasible but not proved irreducible.
 * A num without data fails with KVSL_ERR_INDEX.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLgetiisbounds(KVSLprob prob, int num, char bndtype[], int *flags);

/* ---- MIP solutions and cuts ---------------------------------------------- */

/**
 * Offer a (partial) MIP start for the next global search: n values of the
 * given columns (KVSL_ERR_INDEX for a column out of range).  At the start
 * of the search every start offered since the last one is made a full
 * vector (one that gives every column as it is; a partial one completed by
 * a sub-MIP over the problem's objective with the given columns fixed, for
 * at most 5 seconds) and checked like KVSLloadmipsol's.  An infeasible
 * start is reported through the message callback ("MIP start NAME is
 * infeasible and is ignored.", type 3; an unnamed one is "(unnamed)") and
 * dropped.  The best feasible one is the search's first incumbent ("MIP
 * start NAME is the incumbent: objective V", type 1): it is handed to the
 * search once the root node is done (a known incumbent during the root's
 * cut loop changes the cuts and grows the tree), and until then every
 * solution worse than it is refused, so no worse incumbent comes first; a
 * better one found at the root supersedes it.  It is mapped through
 * preprocessing, and is the result when the search finds nothing better.
 * The candidate-solution callback (KVSLsetcbpreintsol) is asked about the
 * start once, before the search starts (a start that violates a cut of the
 * pool counts as rejected); a start it rejects never becomes the incumbent
 * nor the result and is reported ("MIP start NAME was refused by the
 * candidate-solution callback.", type 3).  Each start
 * serves one search.  A problem without entities solves its LP and
 * ignores the starts.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLaddmipsol(KVSLprob prob, int n, const double val[], const int col[],
                  const char *name);
/** Offer a full solution (ncols values), checked against every bound, row
 * (an indicator row only where in force), entity and set within 1e-6
 * (relative above 1); *status: 0 accepted (it becomes the MIP solution held
 * and also starts the next search), 1 a bound or row violated or a value
 * not finite, 2 worse than the MIP solution held (by more than 1e-9
 * relative; one with the same objective value is accepted and replaces
 * it), 3 an entity or set violated.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLloadmipsol(KVSLprob prob, const double x[], int *status);
/**
 * Add ncuts cuts to the current node problem: cut k has type number
 * cuttype[k], row type rowtype[k] ('L', 'G', 'E'), right-hand side rhs[k] and
 * coefficients col/val[start[k] .. start[k+1]-1].
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLaddcuts(KVSLprob prob, int ncuts, const int cuttype[],
                const char rowtype[], const double rhs[],
                const int64_t start[], const int col[], const double val[]);
/**
 * Cuts of the cut pool whose type number is cuttype (-1 any) and whose
 * interpretation is interp (-1 any): *ncuts receives how many there are and
 * up to size of them are written to cuts.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLgetcutlist(KVSLprob prob, int cuttype, int interp, int *ncuts,
                   int size, KVSLcut cuts[]);
/**
 * Data of ncuts pool cuts: type numbers, row types, starts (ncuts + 1
 * entries, start[ncuts] the total number of coefficients), columns and
 * values (room for size coefficients; with a smaller size than needed only
 * start is filled), right-hand sides.  Any array but start may be NULL.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem.
 */
int KVSLgetcpcuts(KVSLprob prob, const KVSLcut cuts[], int ncuts, int size,
                  int cuttype[], char rowtype[], int64_t start[], int col[],
                  double val[], double rhs[]);

/* ---- Control numbers ------------------------------------------------------
 *
 * Integer controls (KVSLsetintcontrol / KVSLgetintcontrol):
 *   8004 KVSL_CTRL_SCALING      scale the matrix before solving: 1 (default) / 0
 *   8005 KVSL_CTRL_PRESOLVE     presolve LPs: 1 (default) / 0
 *   8006 KVSL_CTRL_CRASH        crash basis at the start of the simplex:
 *                               1 (default) / 0
 *   8009 KVSL_CTRL_LPLOG        simplex log frequency in iterations
 *                               (0 no iteration log); default 100
 *   8011 KVSL_CTRL_MIPPRESOLVE  strengthen rows and integer bounds before the
 *                               global search: 1 (default) / 0
 *   8020 KVSL_CTRL_MAXNODE      node limit of the global search (default
 *                               0: no limit)
 *   8028 KVSL_CTRL_MIPLOG       global search log: 0 none, 1 summary,
 *                               2 and more per node and cut pass (default 1)
 *   8035 KVSL_CTRL_OUTPUTLOG    1 (default): produce log lines for the message
 *                               callback; 0: no log lines at all
 *   8047 KVSL_CTRL_BARRIERLOG   barrier iteration log: 1 / 0 (default 0)
 *   8078 KVSL_CTRL_DUALREDUCTIONS reductions that may cut off optimal
 *                               solutions (dual fixing in presolve): 1 (default) / 0
 *   8079 KVSL_CTRL_THREADS      threads of the global search (default 1):
 *                               on integer columns alone, as many searches
 *                               (at most 8) race over different orders of
 *                               the rows, sharing their best solution,
 *                               until the first finishes; the first logs,
 *                               the others are silent, and the node count
 *                               sums them all.  With column
 *                               entities, sets or indicator rows, and
 *                               under a node limit, Cbc's threaded tree
 *                               search; with search callbacks, and in the
 *                               search of quadratic models, the search
 *                               keeps to one thread
 *   8080 KVSL_CTRL_CUTSTRATEGY  cut generation: 0 none, 1 (default) on
 *   8081 KVSL_CTRL_HEURSTRATEGY primal heuristics: 0 none, 1 (default) on
 * Double controls (KVSLsetdblcontrol / KVSLgetdblcontrol):
 *   7001 KVSL_CTRL_FEASTOL      primal feasibility tolerance (default 1e-7)
 *   7002 KVSL_CTRL_OPTIMALITYTOL dual feasibility tolerance (default 1e-7)
 *   7003 KVSL_CTRL_MIPTOL       integrality tolerance (default 1e-6)
 *   7015 KVSL_CTRL_PSEUDOCOST   default pseudo cost of directives (default 0.01)
 *   7018 KVSL_CTRL_MIPABSGAP    absolute gap at which the search stops (default 0)
 *   7019 KVSL_CTRL_MIPRELGAP    relative gap at which the search stops
 *                               (default 1e-4): it stops once the best
 *                               solution is within either gap of the best
 *                               bound (incumbent - bound <= 7018, or <=
 *                               7019 times |incumbent|) and reports MIP
 *                               status 6, optimal within the gap
 *   7020 KVSL_CTRL_TIMELIMIT    time limit in seconds, 0 or less none
 *                               (default 0); see "Limits" below
 *   7021 KVSL_CTRL_CUTOFF       objective cutoff of the search (default
 *                               1e40 minimising, -1e40 maximising: none)
 */
#define KVSL_CTRL_SCALING 8004 /**< 8004: scale the matrix before solving: 1 (default) / 0 */
#define KVSL_CTRL_PRESOLVE 8005 /**< 8005: presolve LPs: 1 (default) / 0 */
#define KVSL_CTRL_CRASH 8006 /**< 8006: crash basis at the start of the simplex: 1 (default) / 0 */
#define KVSL_CTRL_LPLOG 8009 /**< 8009: simplex log frequency in iterations (0 no iteration log); default 100 */
#define KVSL_CTRL_MIPPRESOLVE 8011 /**< 8011: strengthen rows and integer bounds before the global search: 1 (default) / 0 */
#define KVSL_CTRL_MAXNODE 8020 /**< 8020: node limit of the global search (default 0: no limit) */
#define KVSL_CTRL_MIPLOG 8028 /**< 8028: global search log: 0 none, 1 summary, 2 and more per node and cut pass (default 1) */
#define KVSL_CTRL_OUTPUTLOG 8035 /**< 8035: 1 (default): produce log lines for the message callback; 0: no log lines at all */
#define KVSL_CTRL_BARRIERLOG 8047 /**< 8047: barrier iteration log: 1 / 0 (default 0) */
#define KVSL_CTRL_DUALREDUCTIONS 8078 /**< 8078: reductions that may cut off optimal solutions (dual fixing in presolve): 1 (default) / 0 */
#define KVSL_CTRL_THREADS 8079 /**< 8079: threads of the global search (default 1) */
#define KVSL_CTRL_CUTSTRATEGY 8080 /**< 8080: cut generation: 0 none, 1 (default) on */
#define KVSL_CTRL_HEURSTRATEGY 8081 /**< 8081: primal heuristics: 0 none, 1 (default) on */
#define KVSL_CTRL_FEASTOL 7001 /**< 7001: primal feasibility tolerance (default 1e-7) */
#define KVSL_CTRL_OPTIMALITYTOL 7002 /**< 7002: dual feasibility tolerance (default 1e-7) */
#define KVSL_CTRL_MIPTOL 7003 /**< 7003: integrality tolerance (default 1e-6) */
#define KVSL_CTRL_PSEUDOCOST 7015 /**< 7015: default pseudo cost of directives (default 0.01) */
#define KVSL_CTRL_MIPABSGAP 7018 /**< 7018: absolute gap at which the search stops (default 0) */
#define KVSL_CTRL_MIPRELGAP 7019 /**< 7019: relative gap at which the search stops (default 1e-4) */
#define KVSL_CTRL_TIMELIMIT 7020 /**< 7020: time limit in seconds, 0 or less none (default 0) */
#define KVSL_CTRL_CUTOFF 7021 /**< 7021: objective cutoff of the search (default 1e40 minimising, -1e40 maximising: none) */

/* ---- Limits ----------------------------------------------------------------
 *
 * The time limit (control 7020) is wall-clock time from the start of each
 * optimisation call (KVSLlpoptimize, KVSLmipoptimize, KVSLminim, KVSLmaxim)
 * or infeasible-subsystem call, shared by every stage of it: the simplex
 * (checked at every iteration, presolve included), the barrier (checked
 * between its iterations; its first factorisation runs to its end), the
 * completion of a partial MIP start, the root LP, cuts, heuristics and tree
 * of the global search (checked in every node LP and after every node),
 * the interior-point method (checked at every iteration) and the search of
 * quadratic models (checked before every node).  The node limit (control
 * 8020) counts the nodes of one search.
 *
 * A search stopped by a limit has MIP status 4 when it holds a solution
 * (the best found, or the checked MIP start when the search found none
 * better; KVSLgetmipsol and attribute 2003 read it) and 3 when not; the
 * best bound (attribute 2002, never beyond the solution) and the node
 * count (1036) stay readable.  The bound holds whatever the limit
 * interrupted: when it stopped an LP of the search half-way, it is the
 * last bound the search had taken down before (about every twentieth of
 * a second of the tree), or the root LP's.  An LP stopped by the time
 * limit has LP status 4 (unfinished) and no solution; so has the root LP
 * of a search stopped before the root was solved.
 */

/* ---- Attribute numbers ----------------------------------------------------
 *
 * Integer attributes (KVSLgetintattrib):
 *   1001 KVSL_ATTR_ROWS         rows of the loaded matrix
 *   1004 KVSL_ATTR_SETS         special ordered sets loaded
 *   1005 KVSL_ATTR_ENTITIES     global entities loaded (columns, not sets)
 *   1010 KVSL_ATTR_LPSTATUS     LP status:
 *        0 not loaded, 1 optimal, 2 infeasible, 3 worse than cutoff,
 *        4 unfinished (limit reached), 5 unbounded, 6 cut off in dual,
 *        7 not solved, 8 quadratic objective or quadratic row not convex
 *        (see "Quadratic models" below)
 *   1011 KVSL_ATTR_MIPSTATUS    MIP status:
 *        0 not loaded, 1 LP not optimised, 2 LP optimised, 3 search
 *        incomplete without solution, 4 search incomplete with solution,
 *        5 search complete: infeasible, 6 search complete: optimal,
 *        7 LP relaxation unbounded
 *   1018 KVSL_ATTR_COLS         columns the engine currently holds (smaller
 *                               than the loaded count while presolved)
 *   1021 KVSL_ATTR_SIMPLEXITER  simplex iterations of the last optimisation
 *   1023 KVSL_ATTR_ERRORCODE    error code of the last failing call (0 none):
 *        see KVSL_ERR_* below
 *   1026 KVSL_ATTR_PRESOLVESTATE flags: 128 an LP solution is held; 2 the
 *                               LP is presolved; 4 the MIP is presolved
 *   1031 KVSL_ATTR_NUMIIS       number of IIS found by KVSLiisall
 *   1036 KVSL_ATTR_NODES        nodes of the last global search
 *   1238 KVSL_ATTR_IISAVAILABLE non-zero when the last LP proved
 *                               infeasibility and IIS 0 can be read at once
 * Double attributes (KVSLgetdblattrib):
 *   2001 KVSL_ATTR_LPOBJVAL     objective value of the LP solution
 *   2002 KVSL_ATTR_BESTBOUND    best bound of the global search
 *   2003 KVSL_ATTR_MIPOBJVAL    objective value of the best MIP solution
 *   2004 KVSL_ATTR_SOLVETIME    seconds spent in the last optimisation
 */
#define KVSL_ATTR_ROWS 1001 /**< 1001: rows of the loaded matrix */
#define KVSL_ATTR_SETS 1004 /**< 1004: special ordered sets loaded */
#define KVSL_ATTR_ENTITIES 1005 /**< 1005: global entities loaded (columns, not sets) */
#define KVSL_ATTR_LPSTATUS 1010 /**< 1010: LP status: 0 not loaded, 1 optimal, 2 infeasible, 3 worse than cutoff, 4 unfinished (limit reached), 5 unbounded, 6 cut off in dual, 7 not solved, 8 quadratic objective or quadratic row not convex (see "Quadratic models" below) */
#define KVSL_ATTR_MIPSTATUS 1011 /**< 1011: MIP status: 0 not loaded, 1 LP not optimised, 2 LP optimised, 3 search incomplete without solution, 4 search incomplete with solution, 5 search complete: infeasible, 6 search complete: optimal, 7 LP relaxation unbounded */
#define KVSL_ATTR_COLS 1018 /**< 1018: columns the engine currently holds (smaller than the loaded count while presolved) */
#define KVSL_ATTR_SIMPLEXITER 1021 /**< 1021: simplex iterations of the last optimisation */
#define KVSL_ATTR_ERRORCODE 1023 /**< 1023: error code of the last failing call (0 none): see KVSL_ERR_* below */
#define KVSL_ATTR_PRESOLVESTATE 1026 /**< 1026: flags: 128 an LP solution is held; 2 the LP is presolved; 4 the MIP is presolved */
#define KVSL_ATTR_NUMIIS 1031 /**< 1031: number of IIS found by KVSLiisall */
#define KVSL_ATTR_NODES 1036 /**< 1036: nodes of the last global search */
#define KVSL_ATTR_IISAVAILABLE 1238 /**< 1238: non-zero when the last LP proved infeasibility and IIS 0 can be read at once */
#define KVSL_ATTR_LPOBJVAL 2001 /**< 2001: objective value of the LP solution */
#define KVSL_ATTR_BESTBOUND 2002 /**< 2002: best bound of the global search */
#define KVSL_ATTR_MIPOBJVAL 2003 /**< 2003: objective value of the best MIP solution */
#define KVSL_ATTR_SOLVETIME 2004 /**< 2004: seconds spent in the last optimisation */

/* Status values. */
#define KVSL_LP_UNSTARTED 0 /**< LP status: not loaded */
#define KVSL_LP_OPTIMAL 1 /**< LP status: optimal */
#define KVSL_LP_INFEAS 2 /**< LP status: infeasible */
#define KVSL_LP_CUTOFF 3 /**< LP status: worse than cutoff */
#define KVSL_LP_UNFINISHED 4 /**< LP status: unfinished (limit reached) */
#define KVSL_LP_UNBOUNDED 5 /**< LP status: unbounded */
#define KVSL_LP_CUTOFF_IN_DUAL 6 /**< LP status: cut off in dual */
#define KVSL_LP_UNSOLVED 7 /**< LP status: not solved */
#define KVSL_LP_NONCONVEX 8 /**< LP status: quadratic objective or row not convex */
#define KVSL_MIP_NOT_LOADED 0 /**< MIP status: not loaded */
#define KVSL_MIP_LP_NOT_OPTIMAL 1 /**< MIP status: LP not optimised */
#define KVSL_MIP_LP_OPTIMAL 2 /**< MIP status: LP optimised */
#define KVSL_MIP_NO_SOL_FOUND 3 /**< MIP status: search incomplete without solution */
#define KVSL_MIP_SOLUTION 4 /**< MIP status: search incomplete with solution */
#define KVSL_MIP_INFEAS 5 /**< MIP status: search complete, infeasible */
#define KVSL_MIP_OPTIMAL 6 /**< MIP status: search complete, optimal */
#define KVSL_MIP_UNBOUNDED 7 /**< MIP status: LP relaxation unbounded */
#define KVSL_PRESOLVE_LP 2 /**< Presolve state flag: the LP is presolved */
#define KVSL_PRESOLVE_MIP 4 /**< Presolve state flag: the MIP is presolved */
#define KVSL_SOLUTION_HELD 128 /**< Presolve state flag: an LP solution is held */

/* Error codes (attribute 1023). */
#define KVSL_ERR_NONE 0 /**< no error */
#define KVSL_ERR_NOTINIT 1          /**< engine not started */
#define KVSL_ERR_NOMEM 2            /**< out of memory */
#define KVSL_ERR_BADARG 3           /**< null or inconsistent argument */
#define KVSL_ERR_BADCONTROL 4       /**< unknown control or attribute number */
#define KVSL_ERR_NOTLOADED 5        /**< no matrix loaded */
#define KVSL_ERR_NOSOLUTION 6       /**< no solution of the kind asked for */
#define KVSL_ERR_FILE 7             /**< file could not be opened, read or written */
#define KVSL_ERR_UNSUPPORTED 8      /**< capability not available in this engine */
#define KVSL_ERR_BACKEND 9          /**< a backend failed */
#define KVSL_ERR_INDEX 10           /**< row, column or set index out of range */
/* Checked when an optimisation or a search for infeasible subsystems
   starts (nothing is solved then): */
#define KVSL_ERR_BADNUMBER 11       /**< a NaN anywhere, an infinite objective,
                                       matrix or quadratic coefficient or set
                                       reference value, or a bound no number
                                       meets: a lower bound of +infinity or an
                                       upper bound of -infinity, of a column or
                                       of a row (an infinite limit of a
                                       partial integer or semi-continuous
                                       column is taken as it stands) */
#define KVSL_ERR_ENTITY 12          /**< an entity the search cannot take: an
                                       indicator column that is not a binary
                                       ('B', or 'I' within [0, 1]) */

/* ---- Callbacks of the global search and the cut pool ---------------------- */
/**
 * @file kvsl.h
 * @par Callbacks of the global search and the cut pool
 * An application can take part in the global search of a problem through
 * two callbacks registered on it.  Both run in the thread that called the
 * optimisation (a problem with callbacks is searched with one thread), with
 * the engine problem being optimised as their first argument.  While one
 * runs, KVSLgetlpsol answers the solution the callback is about (values,
 * slacks from those values and reduced costs of the node's relaxation; the
 * duals are 0) and KVSLaddcuts adds cuts for the search.  A library problem
 * reaches this through its callback bracket: inside a callback the
 * application opens mdlbegincb_prob with this engine problem, reads values
 * (after mdlsync_prob mode 1), adds cuts with mdladdcuts_prob and closes the
 * bracket with mdlendcb_prob.
 *
 * - Cut manager: called at the root in rounds and at the nodes with the
 *   relaxation solution of the node; the cuts it adds go into the node's
 *   relaxation, which is solved again, and it is called again until it adds
 *   none (or the search's rounds per node are used up).
 * - Candidate solution: called with every integer solution before the
 *   engine accepts it (node solutions and those of heuristics).  Setting
 *   *reject to a non-zero value rejects it: it never becomes the incumbent.
 *   The callback should add cuts that cut it off (lazy constraints): a
 *   rejected node solution without such cuts ends its node.
 *
 * Every cut added (in a callback or outside one) is kept in the problem's
 * cut pool with its type number, valid for the whole search tree, and is
 * applied wherever a node's solution violates it; the pool lasts until the
 * next matrix load.  KVSLgetcutlist lists the pool in the order the cuts
 * were added; a cut's handle stays valid until that load.  There is one
 * interpretation of cuts: interp is accepted as -1 or any value.
 *
 * A callback returns 0 to go on.  A non-zero return value ends the search
 * cleanly at the next opportunity: the best solution accepted so far is
 * kept with MIP status 3 or 4 (search incomplete) and the optimisation
 * returns KVSL_ERR_CALLBACK.  A problem with callbacks is never presolved
 * for the search, so column numbers stay those of the load.  Registering a
 * null function removes a callback.
 */
/** Cut manager callback of the global search (see above): 0 to go on. */
typedef int (*KVSLcbcutmgr)(KVSLprob prob, void *user);
/** Candidate-solution callback of the global search (see above): x holds
 *  the candidate's ncols values; set *reject non-zero to reject it; return
 *  0 to go on. */
typedef int (*KVSLcbpreintsol)(KVSLprob prob, void *user, const double x[], int ncols,
                               int *reject);
/** Register (or with a null function remove) the cut manager callback of
 * the global search.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLsetcbcutmgr(KVSLprob prob, KVSLcbcutmgr f, void *user);
/** Register (or with a null function remove) the candidate-solution
 * callback of the global search.
 * @return 0 on success, else the error code (::KVSL_ERR_NOTINIT ...), also
 *         readable as attribute ::KVSL_ATTR_ERRORCODE of the problem. */
int KVSLsetcbpreintsol(KVSLprob prob, KVSLcbpreintsol f, void *user);
#define KVSL_ERR_CALLBACK 13        /**< a search callback asked to stop */

/* ---- Quadratic models ------------------------------------------------------ */
/**
 * @file kvsl.h
 * @par Quadratic models
 * Continuous problems with a quadratic objective or quadratic rows are
 * solved by an interior-point method (Ipopt, on the exact first and second
 * derivatives) to a relative accuracy of about 1e-9; the option letters
 * that choose a simplex algorithm do not apply to them.  Such a solution
 * has values, slacks, duals (the derivative of the objective by the row's
 * right-hand side, with the signs of an LP) and reduced costs
 * (c + Qx - J'y, J the rows' Jacobian at x), but no simplex basis; the
 * iteration count (attribute 1021) is the interior-point iterations.
 * Interior-point solves of different problems take turns (one at a time
 * in the process): the sparse factorisation under it keeps global state.
 *
 * Convexity is checked before every solve.  A form of n columns counts as
 * positive semidefinite when its smallest eigenvalue is above -1e-7 n times
 * its largest absolute entry (decided by a Cholesky factorisation of the
 * shifted form, so singular forms are decided reliably).  Minimising, Q
 * must be semidefinite; maximising, -Q.  A quadratic row must describe a
 * convex set: 'L' rows with a semidefinite form, 'G' rows with a negative
 * semidefinite one; 'E' and 'R' rows with a non-zero form are not convex.
 * A problem that fails these tests is not solved: LP status 8, MIP status
 * 1, no solution, and a log line saying which part is not convex.
 *
 * KVSLloadqcqp64 and KVSLloadqcqpglobal64 check the quadratic-row arrays
 * (KVSL_ERR_INDEX for a row or column out of range, KVSL_ERR_BADARG for a
 * negative count or missing arrays) before loading anything; a row listed
 * twice has its triples added, a row whose triples are all zero is linear.
 * The simplex basis (KVSLgetbasis) and ranging (KVSLrange) describe only
 * linear problems.  Ranging tells how far a basis stays optimal; a solution
 * with quadratic parts has no basis and moves with every change of a cost
 * or a right-hand side, so only the first-order rates are meaningful, and
 * those are the duals and reduced costs.  With quadratic parts KVSLrange
 * therefore fails with KVSL_ERR_UNSUPPORTED, for continuous problems and
 * after a search alike.
 *
 * The global search of a problem with quadratic parts and global entities
 * is a depth-first branch and bound of the engine's own on interior-point
 * relaxations, exact for every entity: binary, integer and partial integer
 * columns branch on bounds (a partial integer one only below its limit),
 * semi-continuous (integer) ones to 0 or to [limit, ub] and then as
 * integers, sets split after their first non-zero member in reference
 * order, and an indicator row is relaxed until its column is fixed at the
 * value that puts it in force.  Nodes are pruned at the incumbent less the
 * larger of the gaps 7018, 7019 times the incumbent and 1e-9 (1 + |it|);
 * the node (8020) and time (7020) limits end the search with MIP status 3
 * or 4.  Every solution is rounded on its integer columns and checked
 * against all rows in force before it is taken.  Directives, cuts,
 * heuristics and threads do not apply to this search; its log is one line
 * per solution found and one summary line.
 */

#ifdef __cplusplus
}
#endif

#endif /* KVSL_H */
