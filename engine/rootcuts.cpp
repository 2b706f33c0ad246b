/*
 * rootcuts.cpp -- the cut generators and primal heuristics of the global
 * search, set up as Cbc's own driver sets them wherever they stay exact.
 */
#include "node_settings.h"
#include "rootcuts.h"

#include <cmath>
#include <initializer_list>
#include <numeric>
#include <vector>

#include <CbcHeuristic.hpp>
#include <CbcHeuristicDiveCoefficient.hpp>
#include <CbcHeuristicDiveFractional.hpp>
#include <CbcHeuristicDiveGuided.hpp>
#include <CbcHeuristicDiveLineSearch.hpp>
#include <CbcHeuristicDivePseudoCost.hpp>
#include <CbcHeuristicDiveVectorLength.hpp>
#include <CbcHeuristicFPump.hpp>
#include <CbcHeuristicLocal.hpp>
#include <CbcHeuristicRINS.hpp>
#include <CbcModel.hpp>
#include <OsiSolverInterface.hpp>

#include "kvsl.h"

namespace kvsl {

namespace {

// Does a column of the node have a huge bound the backend takes as finite?
bool has_huge_finite_bound(const OsiSolverInterface &si) {
  const double inf = si.getInfinity();
  const double *lo = si.getColLower(), *up = si.getColUpper();
  for (int j = 0; j < si.getNumCols(); ++j) {
    if (lo[j] <= -KVSL_INFINITY && lo[j] > -inf) return true;
    if (up[j] >= KVSL_INFINITY && up[j] < inf) return true;
  }
  return false;
}

// The diving heuristics run at the root and in the first nodes only
// (early_dive_nodes).  Left to run in every node they changed nothing in
// stein27's search (the same 1 220 nodes) and cost it 70% more time.
constexpr int early_dive_nodes = 100;

// A diving heuristic of kind Dive that stays out of the search after its
// first early_dive_nodes nodes.
template <class Dive>
class early_dive : public Dive {
 public:
  explicit early_dive(CbcModel &model) : Dive(model) {}
  early_dive *clone() const override { return new early_dive(*this); }
  bool canHeuristicRun() override {
    return this->model_->getNodeCount() <= early_dive_nodes && Dive::canHeuristicRun();
  }
};

}  // namespace

void guarded_rounding::generateCuts(const OsiSolverInterface &si, OsiCuts &cs,
                                    const CglTreeInfo info) {
  if (!has_huge_finite_bound(si)) CglMixedIntegerRounding2::generateCuts(si, cs, info);
}

cut_generators::cut_generators() {
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

// Probing fixes and tightens column bounds from implications it derives as
// if every column were integer or continuous, which cuts into the non-zero
// range of a semi-continuous column: with objects of the engine's own it
// stays out.  So do flow covers and mixed integer rounding: on models with
// semi-continuous and partial integer columns, sets, indicator rows and
// model cuts the randomized tests found them cutting off the optimum
// (feasible models reported infeasible).  The order is Cbc's driver's but
// for mixed integer rounding, which comes last: the search is sensitive to
// it, and bell5 took more than ten times the nodes with rounding in the
// driver's place, before flow covers.
// Rows that are free never reach rounding (the search drops them).
// In the tree a generator runs only where it moved the root's bound
// (cut_frequency): one that runs at every node regardless makes each node
// LP larger and slower (Gomory cuts on pk1 made nodes 8 times dearer
// without moving the bound).  With an integer column without a finite
// bound the tree may be infinite, and only cuts at its nodes close
// branches such as those of 2x + 2y = 3: there they run at every node.
void cut_generators::add_to(CbcModel &model, bool objects, bool finite_tree, bool threaded) {
  const int often = finite_tree ? cut_frequency : cut_frequency_unbounded;
  const int threaded_knapsack =
      finite_tree ? knapsack_frequency_threads : knapsack_frequency_unbounded_threads;
  const int knapsack_often = threaded ? threaded_knapsack : often;
  // Knapsack covers come from the model's own rows only, never from other
  // generators' cuts in the LP (which the search appends after them): with
  // two-step mixed integer rounding cuts in the LP, covers derived from them
  // cut off the optimum of randomized knapsack model 34009009 (the pair
  // alone does it; either generator alone is right).
  std::vector<int> model_rows(static_cast<size_t>(model.solver()->getNumRows()));
  std::iota(model_rows.begin(), model_rows.end(), 0);
  knapsack.setTestedRowIndices(static_cast<int>(model_rows.size()), model_rows.data());
  if (!objects) model.addCutGenerator(&probing, often, "Probing");
  model.addCutGenerator(&gomory, often, "Gomory");
  model.addCutGenerator(&knapsack, knapsack_often, "Knapsack");
  model.addCutGenerator(&clique, often, "Clique");
  if (!objects) model.addCutGenerator(&flow, often, "FlowCover");
  model.addCutGenerator(&twomir, often, "TwoMirCuts");
  if (!objects) model.addCutGenerator(&rounding, often, "MixedIntegerRounding2");
}

// The feasibility pump runs as Cbc's driver tunes it by default: 30 passes
// per round, up to six rounds each with a cutoff 4.5% of the root's
// objective below the last solution, solutions accumulated for a small
// branch and bound over the columns left free (half of them at most),
// integers and continuous columns that stayed at a bound fixed for it.
// Mixed integer rounding must come with it: without rounding the tuned
// pump took bell5 from 25 000 nodes to 486 000.
void add_heuristics(CbcModel &model) {
  CbcRounding rounding(model);
  model.addHeuristic(&rounding);
  CbcHeuristicFPump pump(model);
  const OsiSolverInterface &root = *model.solver();
  pump.setFractionSmall(0.5);
  pump.setMaximumPasses(30);
  pump.setAbsoluteIncrement(0.045 * (std::fabs(root.getObjSense() * root.getObjValue()) + 1e-12));
  pump.setAccumulate(1);
  pump.setMaximumRetries(6);
  pump.setWhen(13);
  model.addHeuristic(&pump);
  CbcHeuristicLocal local(model);
  model.addHeuristic(&local);
  CbcHeuristicRINS rins(model);
  model.addHeuristic(&rins);
  // Dives from the node's LP solution, rounding one column at a time by
  // each rule: over 6 row orders of each of the 20 MIPLIB models they took
  // bell5 from 39.7 s to 11.3 s, gt2 from 3.7 s to 0.35 s (117 614 nodes to
  // none in its worst order) and dcmulti from 7.5 s to 6.3 s, at 0.01 to
  // 0.2 s more on models they do not help; 292 s against 317 s in all.
  early_dive<CbcHeuristicDiveCoefficient> coefficient(model);
  early_dive<CbcHeuristicDiveFractional> fractional(model);
  early_dive<CbcHeuristicDiveGuided> guided(model);
  early_dive<CbcHeuristicDiveVectorLength> vector_length(model);
  early_dive<CbcHeuristicDivePseudoCost> pseudo_cost(model);
  early_dive<CbcHeuristicDiveLineSearch> line_search(model);
  for (CbcHeuristic *dive : std::initializer_list<CbcHeuristic *>{
           &coefficient, &fractional, &guided, &vector_length, &pseudo_cost, &line_search})
    model.addHeuristic(dive);
}

}  // namespace kvsl
