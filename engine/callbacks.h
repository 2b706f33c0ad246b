/*
 * callbacks.h -- the application's part in the global search: its cut pool
 * and callbacks, and the hooks by which the search calls them.
 */
#ifndef KVSL_CALLBACKS_H
#define KVSL_CALLBACKS_H

#include <memory>
#include <vector>

#include "engine.h"

class CbcModel;
class OsiSolverInterface;

namespace kvsl {

// One cut of the pool: sum val[k] x[col[k]] (rowtype) rhs.
struct pool_cut {
  int type;
  char rowtype;
  double rhs;
  std::vector<int> col;
  std::vector<double> val;
};

// The callbacks and cut pool of an engine problem.
struct callback_state {
  KVSLcbcutmgr cutmgr = nullptr;
  void *cutmgr_user = nullptr;
  KVSLcbpreintsol preintsol = nullptr;
  void *preintsol_user = nullptr;
  std::vector<std::unique_ptr<pool_cut>> pool;   // handles are the addresses
  bool failed = false;                           // a callback asked to stop
  int refused = 0;        // solutions vetoed by the event handler this search
  size_t pool_at_start = 0;                      // pool size when it began
};

// The problem's state, created on first use (never null).
callback_state &callbacks_of(kvsl_prob *prob);
// Are callbacks registered on the problem?
bool has_search_callbacks(const kvsl_prob *prob);
// Has a callback of the last search asked to stop?
bool search_callback_failed(const kvsl_prob *prob);

// Set up a search model for the callbacks (nothing without them): one
// thread, a cut generator that applies the pool and calls the callbacks,
// and an event handler that lets the candidate callback veto every
// solution.  The returned object must live until the search has finished.
std::shared_ptr<void> attach_search_callbacks(kvsl_prob *prob, CbcModel &model);

// Put every pool cut into the search's LP as a row.
void add_pool_rows(const kvsl_prob *prob, OsiSolverInterface &solver);

// Ask about a solution of the loaded columns outside a search (a MIP
// start): true when it violates a pool cut or the candidate callback
// rejects it.
bool candidate_refused(kvsl_prob *prob, const double *x);

// A solution vetoed outside the cut loop ends its node without branching,
// which may cut off better solutions below it.  After such a search, when
// the vetoes added cuts to the pool, the search must run again (with the
// pool in its LP) for its result to be exact: true then.
bool search_again_after_vetoes(kvsl_prob *prob);

}  // namespace kvsl

#endif
