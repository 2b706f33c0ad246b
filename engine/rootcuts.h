/*
 * rootcuts.h -- the cut generators and primal heuristics of the global
 * search, set up as Cbc's own driver sets them wherever they stay exact.
 */
#ifndef KVSL_ROOTCUTS_H
#define KVSL_ROOTCUTS_H

#include <CglClique.hpp>
#include <CglCutGenerator.hpp>
#include <CglFlowCover.hpp>
#include <CglGomory.hpp>
#include <CglKnapsackCover.hpp>
#include <CglMixedIntegerRounding2.hpp>
#include <CglProbing.hpp>
#include <CglTwomir.hpp>

class CbcModel;

namespace kvsl {

// Mixed integer rounding that stays silent while a column of the node has
// a bound of magnitude 1e20 or more that the backend takes as finite.
// Probing reports the bounds of columns it cannot bound as +-1e20, far
// inside the backend's infinity: a free column then looks bounded, and
// rounding, substituting such a bound, cut off optima (randomized integer
// model 343).
class guarded_rounding : public CglMixedIntegerRounding2 {
 public:
  guarded_rounding() = default;
  CglCutGenerator *clone() const override { return new guarded_rounding(*this); }
  using CglMixedIntegerRounding2::generateCuts;
  void generateCuts(const OsiSolverInterface &si, OsiCuts &cs,
                    const CglTreeInfo info = CglTreeInfo()) override;
};

// The cut generators of the search (owned here, copied into the model).
struct cut_generators {
  CglProbing probing;
  CglGomory gomory;
  CglKnapsackCover knapsack;
  CglClique clique;
  CglFlowCover flow;
  CglTwomir twomir;
  guarded_rounding rounding;

  cut_generators();
  // Add the generators to the model; objects: the search holds objects of
  // the engine's own (column entities, sets, indicator rows, held rows);
  // finite_tree: every integer column has finite bounds; threaded: the
  // search may run on more than one thread (knapsack covers then keep to
  // knapsack_frequency_threads).
  void add_to(CbcModel &model, bool objects, bool finite_tree, bool threaded);
};

// Add the primal heuristics of a plain integer search (the model copies
// them); the model's solver holds the solved root relaxation.
void add_heuristics(CbcModel &model);

}  // namespace kvsl

#endif
