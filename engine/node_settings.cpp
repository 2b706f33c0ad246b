/*
 * node_settings.cpp -- the per-node settings of the global search over
 * integer columns: strong branching trust and Clp's own subtrees.
 */
#include <CbcModel.hpp>

#include "node_settings.h"

namespace kvsl {

namespace {

// Strong branching samples each integer column's change of the LP bound
// this many times before its pseudo-costs are trusted.  Small models
// afford many samples and each saves nodes (pk1, 86 columns: 226 000 nodes
// at 100 against 316 000 at Cbc's default of 10); large ones would spend
// their time sampling, and keep Cbc's default (0 here).  These are the
// steps cbc's own driver takes on the MIPLIB models.
int trust_for(int ncols) {
  if (ncols <= 50) return 1000;
  if (ncols <= 100) return 100;
  if (ncols <= 300) return 50;
  return 0;
}

// Deep nodes (from about depth 10; Cbc moves the depth as the subtrees
// finish or not) are searched by Clp's own branch and bound on the integer
// columns, many per call, without Cbc's node objects, cut rounds and event
// calls: cheap nodes where the tree is widest (pk1: 238 000 of its 242 000
// nodes, at a quarter of the time per node of a search without them).
constexpr int clp_subtree_depth = -12;

}  // namespace

void tune_integer_branching(CbcModel &model, int ncols, bool subtrees) {
  if (int trust = trust_for(ncols); trust > 0) model.setNumberBeforeTrust(trust);
  if (subtrees) model.setFastNodeDepth(clp_subtree_depth);
}

}  // namespace kvsl
