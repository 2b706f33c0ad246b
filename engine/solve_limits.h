/*
 * solve_limits.h -- the limits of one solve: its wall-clock deadline, the node,
 * gap and thread controls as each backend takes them, and the status after
 * a limit has stopped a search.
 */
#ifndef KVSL_SOLVE_LIMITS_H
#define KVSL_SOLVE_LIMITS_H

#include "engine.h"

class CbcModel;
class ClpEventHandler;

namespace kvsl {

// The deadline of one call that solves, from control 7020 (seconds; 0,
// less, or not a finite number: none), started by each entry point;
// everything inside the call (LP, root, cuts, heuristics, tree, sub-solves)
// works against it.  Starting forgets any earlier stop; at the end of the
// call the deadline and Clp's limits of the loaded model are cleared, so
// that nothing done later with the model (ranging, copies) inherits them.
class deadline_scope {
 public:
  explicit deadline_scope(kvsl_prob *prob);
  ~deadline_scope();
  deadline_scope(const deadline_scope &) = delete;
  deadline_scope &operator=(const deadline_scope &) = delete;

 private:
  kvsl_prob *prob_;
};

// Does the running solve have a deadline?
bool has_deadline(const kvsl_prob *prob);
// Seconds left before the deadline (never negative; huge without one).
double seconds_left(const kvsl_prob *prob);
// Has the deadline passed?  When it has, the solve is marked as stopped by
// a limit (the mark is what turns a search's verdict into "stopped").
bool deadline_passed(const kvsl_prob *prob);
// Has a limit stopped the running solve somewhere?
bool stopped_by_limit(const kvsl_prob *prob);
// Has the deadline stopped a simplex of the running solve half-way?  A
// search takes such an LP for infeasible or its objective for a bound:
// its own bound (and verdict) no longer hold.
bool simplex_cut_short(const kvsl_prob *prob);
// The time limit of a sub-solve (its own engine problem) that may take at
// most cap seconds and must end by the deadline; always > 0, so that the
// sub-solve gets a limit even when the deadline has passed.
double sub_solve_seconds(const kvsl_prob *prob, double cap);
// The time limit handed to a backend for the rest of the running solve:
// the seconds left, never less than the shortest limit a backend takes as
// one (some read 0 as "none").  Only meaningful with a deadline.
double backend_seconds(const kvsl_prob *prob);

// Make a simplex stop at the deadline: Clp's own CPU and wall-clock limits
// (when `own_limits`, else none) and an event handler checked at every
// iteration that marks the stop.  `inner` (may be null) keeps handling the
// events first; the simplex keeps a clone of both.
void watch_deadline(const kvsl_prob *prob, ClpSimplex &m, ClpEventHandler *inner, bool own_limits);
// Node limit (what is left of it after earlier attempts of this solve),
// time limit, absolute and relative gap and thread count of a search, and an
// event handler that stops the tree at the deadline when the model has no
// other handler (the application's callbacks check the deadline
// themselves).  Call after any other handler is attached.  That handler
// also writes the search's bound (in the backend's minimising sense) to
// *bound_seen (when not null) every twentieth of a second or so, for as
// long as no simplex has been cut short: a bound that holds whatever the
// deadline does to the search later.
void apply_search_limits(const kvsl_prob *prob, CbcModel &model, double *bound_seen = nullptr);
// The MIP status after a search that a limit may have stopped: when the
// deadline stopped it, the verdict "complete" cannot stand, so the status
// becomes 4 with a solution (the best found, or a checked MIP start) or 3
// without one.
void settle_stopped_search(kvsl_prob *prob);

}  // namespace kvsl

#endif
