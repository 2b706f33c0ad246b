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
// Knapsack covers on threads: Cbc's threaded search lets the covers a
// generator at an automatic frequency makes at a node cut off optima
// elsewhere in the tree (lseu with rows strengthened ended "optimal" at
// 1128 against 1120 with covers at -98 or -1, at the root only or at every
// node it found 1120; the other generators at -98 found it too; checked
// again once covers came from the model's own rows only: still 1128).  There
// covers stay at the root, or go to every node where the tree may be
// infinite.  The other generators keep their frequencies: with all of them
// at the root only one run of bell5 on two threads had no proof after
// eleven minutes (its threaded runs vary widely: 3 s to over two minutes
// in the same set-up, before this change too), one with covers alone there
// took 3 s.
constexpr int knapsack_frequency_threads = -99;
constexpr int knapsack_frequency_unbounded_threads = 1;

// Branching of a search over integer columns only (no objects of the
// engine's own): strong branching trust by size of the model, strong
// branching trials of bounded length; with `subtrees`, deep nodes are
// searched inside Clp.  With `one_thread`, the trust is lower and the
// subtrees wait until the search has a cutoff.
void tune_integer_branching(CbcModel &model, int ncols, bool subtrees, bool one_thread);

}  // namespace kvsl

#endif
