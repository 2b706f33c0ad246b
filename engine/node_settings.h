/*
 * node_settings.h -- what a node of the global search costs: how often cut
 * generators run below the root, strong branching and Clp's own subtrees.
 */
#ifndef KVSL_NODE_SETTINGS_H
#define KVSL_NODE_SETTINGS_H

class CbcModel;

namespace kvsl {

// How often a cut generator runs in the tree: at the root, and below it
// only when its cuts moved the root's bound (otherwise never again).
constexpr int cut_frequency = -98;
// How often where the tree may be infinite: at the root and at every node
// while its cuts are of use.
constexpr int cut_frequency_unbounded = -1;
// The same on threads: Cbc's threaded search lets cuts that generators at
// an automatic frequency make at a node cut off optima elsewhere in the
// tree (lseu with rows strengthened: knapsack covers at -98 or -1 ended
// "optimal" at 1128 against 1120, root only or every node found 1120).
// Threads keep the generators to the root, or to every node where the tree
// may be infinite.
constexpr int cut_frequency_threads = -99;
constexpr int cut_frequency_unbounded_threads = 1;

// Branching of a search over integer columns only (no objects of the
// engine's own): strong branching trust by size of the model, strong
// branching trials of bounded length; with `subtrees`, deep nodes are
// searched inside Clp.  With `one_thread`, the trust is lower and the
// subtrees wait until the search has a cutoff.
void tune_integer_branching(CbcModel &model, int ncols, bool subtrees, bool one_thread);

}  // namespace kvsl

#endif
