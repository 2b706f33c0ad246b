/*
 * branching.cpp -- a branching object whose two arms change column bounds,
 * shared by the engine's own branching objects.
 */
#include <algorithm>

#include <CbcModel.hpp>
#include <OsiSolverInterface.hpp>

#include "search.h"

namespace kvsl {

namespace {

// Is an arm empty within the bounds lower/upper?
bool arm_is_empty(const std::vector<bound_change> &arm, const double *lower, const double *upper) {
  for (const auto &c : arm)
    if (std::max(lower[c.col], c.lo) > std::min(upper[c.col], c.up) + 1e-9) return true;
  return false;
}

}  // namespace

void apply_changes(OsiSolverInterface *solver, const std::vector<bound_change> &changes) {
  for (const auto &c : changes) {
    double lo = std::max(solver->getColLower()[c.col], c.lo);
    double up = std::min(solver->getColUpper()[c.col], c.up);
    solver->setColBounds(c.col, lo, up);
  }
}

// Keep the arms that are not empty in the node; with none left, one arm
// with crossed bounds on the first changed column proves the node empty.
bound_branch::bound_branch(CbcModel *model, int id, int way, double value,
                           std::vector<bound_change> down, std::vector<bound_change> up,
                           const double *lower, const double *upper)
    : CbcBranchingObject(model, id, way, value) {
  bool down_ok = !arm_is_empty(down, lower, upper);
  bool up_ok = !arm_is_empty(up, lower, upper);
  arm_[0] = std::move(down);
  arm_[1] = std::move(up);
  if (down_ok && up_ok) return;
  setNumberBranches(1);
  if (down_ok || up_ok) {
    way_ = down_ok ? -1 : 1;
    return;
  }
  // Bounds [0, -1] intersected with any bounds cross, and stay finite.
  way_ = -1;
  const bound_change &c = arm_[0].empty() ? arm_[1].front() : arm_[0].front();
  arm_[0] = {{c.col, 0.0, -1.0}};
}

// Apply the current arm to the model's solver and turn to the other.
double bound_branch::branch() {
  decrementNumberBranchesLeft();
  apply_changes(model_->solver(), arm_[way_ < 0 ? 0 : 1]);
  way_ = -way_;
  return 0.0;
}

// A type number of its own: no Cbc branching object is compared with it.
CbcBranchObjType bound_branch::type() const { return static_cast<CbcBranchObjType>(500); }

// Branches of the same object are the same when their arms are.
CbcRangeCompare bound_branch::compareBranchingObject(const CbcBranchingObject *other, bool) {
  const auto *o = dynamic_cast<const bound_branch *>(other);
  if (o == nullptr) return CbcRangeDisjoint;
  for (int a = 0; a < 2; ++a) {
    if (arm_[a].size() != o->arm_[a].size()) return CbcRangeDisjoint;
    for (size_t k = 0; k < arm_[a].size(); ++k)
      if (arm_[a][k].col != o->arm_[a][k].col || arm_[a][k].lo != o->arm_[a][k].lo ||
          arm_[a][k].up != o->arm_[a][k].up)
        return CbcRangeDisjoint;
  }
  return CbcRangeSame;
}

}  // namespace kvsl
