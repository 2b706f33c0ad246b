/*
 * node_settings.cpp -- the per-node settings of the global search over
 * integer columns: strong branching trust and Clp's own subtrees.
 */
#include <CbcCompareDefault.hpp>
#include <CbcModel.hpp>
#include <CbcSimpleIntegerDynamicPseudoCost.hpp>
#include <OsiSolverInterface.hpp>

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

// Trust while the search has neither an incumbent nor a cutoff: cbc's
// driver's default.  Until then a node's bound prunes nothing, and the
// samples that pay once it does (the figures above) only slow the dive to
// a first solution: enigma, whose first solution is its optimum, took a
// median 1.31 s over 31 row orders at 100 samples, 0.64 s at 5.
constexpr int trust_before_solution = 5;

// Most iterations of a strong branching trial (cbc's driver's default).
// Uncapped, the trials of a few nodes of enigma in one row order ran for
// 12 s of a 12.9 s search; capped, dcmulti takes 50 nodes against 96.
constexpr int hot_start_iterations = 100;

// Deep nodes (from about depth 10; Cbc moves the depth as the subtrees
// finish or not) are searched by Clp's own branch and bound on the integer
// columns, many per call, without Cbc's node objects, cut rounds and event
// calls: cheap nodes where the tree is widest (pk1: 238 000 of its 242 000
// nodes, at a quarter of the time per node of a search without them).
// They come once the search has a cutoff: until then they prune nothing
// either, and Cbc's own nodes, with strong branching, reach a first
// solution sooner (enigma in 3 874 nodes against 16 413 in its file's row
// order, a median 0.55 s against 0.75 s over 31 orders).
constexpr int clp_subtree_depth = -12;

// Give the model and each of its pseudo-cost objects the trust `trust`.
void set_trust(CbcModel &model, int trust) {
  model.setNumberBeforeTrust(trust);
  for (int i = 0; i < model.numberObjects(); ++i)
    if (auto *obj = dynamic_cast<CbcSimpleIntegerDynamicPseudoCost *>(model.modifiableObject(i)))
      obj->setNumberBeforeTrust(trust);
}

// Cbc's cutoff while the search has none is 1e50 or more.
constexpr double no_cutoff = 1e49;

// Cbc's default node order, which also puts the search's settings for a
// search with a cutoff in place once it has one: the full strong branching
// trust (trust > 0) and Clp's subtrees (subtrees).  It is told of every
// solution and looks again every thousand nodes (a start's value becomes
// the cutoff without a solution event).  An event handler, the other way
// to learn of solutions, changes the search itself (Cbc hands fewer nodes
// to Clp's subtrees while one is installed: pk1 took 280 000 nodes against
// 256 000).
class after_cutoff : public CbcCompareDefault {
 public:
  after_cutoff(int trust, bool subtrees) : trust_(trust), subtrees_(subtrees) {}
  CbcCompareBase *clone() const override { return new after_cutoff(*this); }

  using CbcCompareDefault::newSolution;
  bool newSolution(CbcModel *model, double at_continuous, int infeasible_at_continuous) override {
    settle(*model);
    return CbcCompareDefault::newSolution(model, at_continuous, infeasible_at_continuous);
  }
  bool every1000Nodes(CbcModel *model, int nodes) override {
    settle(*model);
    return CbcCompareDefault::every1000Nodes(model, nodes);
  }

 private:
  void settle(CbcModel &model) {
    if (settled_ || model.getCutoff() >= no_cutoff) return;
    if (trust_ > 0) set_trust(model, trust_);
    if (subtrees_) model.setFastNodeDepth(clp_subtree_depth);
    settled_ = true;
  }

  int trust_;
  bool subtrees_;
  bool settled_ = false;
};

}  // namespace

void tune_integer_branching(CbcModel &model, int ncols, bool subtrees, bool one_thread) {
  model.solver()->setIntParam(OsiMaxNumIterationHotStart, hot_start_iterations);
  const int trust = trust_for(ncols);
  const bool lower_trust = trust > trust_before_solution;
  // The model's objects become pseudo-cost objects with the model's trust
  // when the search starts; the node order changes both later.  Threads
  // search clones of the objects, which it would not reach: there, and
  // with a cutoff from the controls, the settings hold from the start.
  if (one_thread && (lower_trust || subtrees) && model.getCutoff() >= no_cutoff) {
    if (trust > 0) model.setNumberBeforeTrust(lower_trust ? trust_before_solution : trust);
    after_cutoff order(lower_trust ? trust : 0, subtrees);
    model.setNodeComparison(order);
    return;
  }
  if (trust > 0) model.setNumberBeforeTrust(trust);
  if (subtrees) model.setFastNodeDepth(clp_subtree_depth);
}

}  // namespace kvsl
