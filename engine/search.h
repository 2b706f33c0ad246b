/*
 * search.h -- the pieces of the global search beyond plain integer columns:
 * column entities, sets, indicator rows, held-out rows and directives.
 */
#ifndef KVSL_SEARCH_H
#define KVSL_SEARCH_H

#include <utility>
#include <vector>

#include <CbcBranchingObject.hpp>
#include <CbcObject.hpp>
#include <CglCutGenerator.hpp>
#include <CoinPackedMatrix.hpp>

#include "engine.h"

class CbcModel;
class OsiSolverInterface;

namespace kvsl {

// Tolerance of the final check of a solution against the loaded problem.
constexpr double check_tol = 1e-6;

// Is v within the check tolerance of [lo, hi]?
inline bool within(double v, double lo, double hi) {
  double t = check_tol * (1.0 + (v < 0 ? -v : v));
  return v >= lo - t && v <= hi + t;
}

// A column's value in the node's LP solution, within the node's bounds.
// The simplex may leave a value outside a bound by up to its feasibility
// tolerance: 0.999999 in a node that has already put the column at 1 or
// above.  Read raw, such a value makes an object look unsatisfied whose
// only branch left changes nothing, and the search branches on it without
// end (a semi-continuous integer column at its limit of 1 did).
inline double node_value(const OsiBranchingInformation *info, int col) {
  double v = info->solution_[col];
  return v < info->lower_[col] ? info->lower_[col] : v > info->upper_[col] ? info->upper_[col] : v;
}

// Directives of the loaded problem by column and by set (null: none).
class directive_index {
 public:
  explicit directive_index(const kvsl_prob *prob);
  const directive *column(int col) const;
  const directive *set(int s) const;

 private:
  std::vector<const directive *> cols_, sets_;
};

// Give an object the priority and preferred direction of a directive.
void apply_directive(const directive *d, CbcObject &obj);
// Hand the directives of integer columns to the model's integer objects.
void apply_integer_directives(const kvsl_prob *prob, CbcModel &model);

// One change of column bounds made by a branch arm.
struct bound_change {
  int col;
  double lo, up;
};

// A branch with a down arm and an up arm, each a list of column bound
// changes (intersected with the node's bounds when applied).  An arm that
// is empty in the node is left out; with no arm left the single remaining
// arm makes the node infeasible.
class bound_branch : public CbcBranchingObject {
 public:
  bound_branch(CbcModel *model, int id, int way, double value, std::vector<bound_change> down,
               std::vector<bound_change> up, const double *lower, const double *upper);
  CbcBranchingObject *clone() const override { return new bound_branch(*this); }
  using CbcBranchingObject::branch;
  double branch() override;
  CbcBranchObjType type() const override;
  CbcRangeCompare compareBranchingObject(const CbcBranchingObject *other,
                                         bool replace_if_overlap) override;

 private:
  std::vector<bound_change> arm_[2];  // [0] down, [1] up
};

// Apply bound changes to a solver, intersected with its current bounds.
void apply_changes(OsiSolverInterface *solver, const std::vector<bound_change> &changes);

// Confirm an optimum of Clp with the primal simplex from its basis, and
// settle an "infeasible" or "unbounded" verdict (or a failed solve) with
// the primal simplex from a slack basis; returns the iterations spent.
int confirm_verdict(ClpSimplex &m);

// Check the loaded problem's numbers, bounds and entities before an
// optimisation or a search for infeasible subsystems: 0, or (after a line
// of level 4 that says why) the failure KVSL_ERR_BADNUMBER or
// KVSL_ERR_ENTITY.
int refuse_invalid(kvsl_prob *prob);

// ---- Column entities: semi-continuous (integer) and partial integer -----
// Set the search model's relaxation bounds and integer columns.
void relax_column_entities(const kvsl_prob *prob, OsiSolverInterface &solver);
// Add the branching objects of 'S', 'R' and 'P' columns.
void add_column_entity_objects(const kvsl_prob *prob, CbcModel &model,
                               const directive_index &dirs);
// Do the column values satisfy every column entity?
bool column_entities_hold(const kvsl_prob *prob, const double *x);
// Round the integer values of entity columns of a checked solution.
void snap_column_entities(const kvsl_prob *prob, double *x);
// Does the problem have entities that need objects of their own?
bool has_column_entity_objects(const kvsl_prob *prob);
// Which of the search model's ncols columns may take every integer value
// within their bounds and are branched on as plain integers: binary and
// integer columns that are neither set members nor indicator columns.
std::vector<char> plain_integer_columns(const kvsl_prob *prob, int ncols);

// ---- Special ordered sets -------------------------------------------------
void add_set_objects(const kvsl_prob *prob, CbcModel &model, const directive_index &dirs);
bool sets_hold(const kvsl_prob *prob, const double *x);
// Members of set s in the order of their reference values.
std::vector<int> members_by_weight(const kvsl_prob *prob, int s);

// ---- Indicator rows -------------------------------------------------------
// The slack columns that relax indicator row `row` of the search model.
struct indicator_slacks {
  const indicator *ind;
  std::vector<int> slacks;
};
// Append slack columns to the indicator rows of the search model.
std::vector<indicator_slacks> relax_indicator_rows(const kvsl_prob *prob,
                                                   OsiSolverInterface &solver);
void add_indicator_objects(const kvsl_prob *prob, CbcModel &model,
                           const std::vector<indicator_slacks> &rows,
                           const directive_index &dirs);
// Is loaded row i required to hold by the values x (false: an inactive
// indicator row)?
std::vector<char> rows_in_force(const kvsl_prob *prob, const double *x);

// While it lives, the indicator rows of the loaded problem whose column is
// not fixed at the value that puts them in force are released (their
// activity bounds made infinite), so that an LP solve relaxes them.
class released_indicator_rows {
 public:
  explicit released_indicator_rows(kvsl_prob *prob);
  ~released_indicator_rows();
  released_indicator_rows(const released_indicator_rows &) = delete;
  released_indicator_rows &operator=(const released_indicator_rows &) = delete;

 private:
  kvsl_prob *prob_;
  std::vector<int> rows_;
  std::vector<double> lo_, up_;
};

// ---- Rows held out of the search LP (model cuts and delayed rows) --------
// The loaded rows a search keeps out of its LP: model cuts and delayed rows
// that are not indicator rows.
std::vector<int> pool_rows(const kvsl_prob *prob);

// A cut generator that adds the held-out rows violated by the node's
// solution as globally valid cuts.
class row_pool : public CglCutGenerator {
 public:
  row_pool(const kvsl_prob *prob, const std::vector<int> &rows);
  CglCutGenerator *clone() const override { return new row_pool(*this); }
  using CglCutGenerator::generateCuts;
  void generateCuts(const OsiSolverInterface &si, OsiCuts &cs,
                    const CglTreeInfo info = CglTreeInfo()) override;
  // Number of held-out rows violated by x.
  int violated(const double *x) const;

 private:
  CoinPackedMatrix rows_;            // row-wise
  std::vector<double> lo_, up_;
};

}  // namespace kvsl

#endif
