/*
 * indicators.cpp -- indicator rows in the search, exact without big-M
 * constants: each indicator row gets slack columns that relax it in the LP,
 * and branching on the indicator column either fixes the column at the
 * value that releases the row or fixes it at the value that enforces the
 * row and fixes the slacks at 0.
 */
#include <algorithm>
#include <cmath>

#include <CbcModel.hpp>
#include <ClpSimplex.hpp>
#include <CoinPackedVector.hpp>
#include <OsiSolverInterface.hpp>

#include "search.h"

namespace kvsl {

namespace {

// Value of the indicator column that puts the row in force.
int active_value(const indicator &ind) { return ind.flag > 0 ? 1 : 0; }

// Branching object of one indicator row.
class indicator_object : public CbcObject {
 public:
  indicator_object(CbcModel *model, const indicator_slacks &r)
      : CbcObject(model), col_(r.ind->col), active_(active_value(*r.ind)), slacks_(r.slacks) {}
  CbcObject *clone() const override { return new indicator_object(*this); }
  int columnNumber() const override { return col_; }

  // Infeasible while the row is relaxed and the column may be active.
  double infeasibility(const OsiBranchingInformation *info, int &way) const override {
    double relaxed = 0.0;
    for (int s : slacks_) relaxed += std::fabs(node_value(info, s));
    if (relaxed <= info->primalTolerance_) return 0.0;
    double z = node_value(info, col_);
    if (std::fabs(z - (1 - active_)) <= info->integerTolerance_) return 0.0;
    way = preferredWay_ != 0 ? preferredWay_ : (z >= 0.5 ? 1 : -1);
    return std::clamp(relaxed / (1.0 + relaxed), 1e-6, 0.5);
  }

  using CbcObject::feasibleRegion;
  void feasibleRegion() override { feasibleRegion(model_->solver(), nullptr); }
  double feasibleRegion(OsiSolverInterface *solver, const OsiBranchingInformation *) const override {
    double z = solver->getColSolution()[col_];
    int v = z >= 0.5 ? 1 : 0;
    apply_changes(solver, arm(v));
    return std::fabs(z - v);
  }

  CbcBranchingObject *createCbcBranch(OsiSolverInterface *, const OsiBranchingInformation *info,
                                      int way) override {
    return new bound_branch(model_, col_, way, node_value(info, col_), arm(0), arm(1),
                            info->lower_, info->upper_);
  }

 private:
  // Bound changes of the arm that fixes the column at v.
  std::vector<bound_change> arm(int v) const {
    std::vector<bound_change> changes{{col_, double(v), double(v)}};
    if (v == active_)
      for (int s : slacks_) changes.push_back({s, 0.0, 0.0});
    return changes;
  }

  int col_;
  int active_;
  std::vector<int> slacks_;
};

// Slack columns (coefficients) that relax a row of type t in both senses
// in which it can be violated.
std::vector<double> slack_coefficients(char t) {
  switch (t) {
    case 'L': return {-1.0};
    case 'G': return {1.0};
    case 'E': case 'R': return {1.0, -1.0};
    default: return {};
  }
}

}  // namespace

std::vector<indicator_slacks> relax_indicator_rows(const kvsl_prob *prob,
                                                   OsiSolverInterface &solver) {
  std::vector<indicator_slacks> rows;
  for (const auto &ind : prob->indicators) {
    solver.setInteger(ind.col);
    solver.setColLower(ind.col, std::max(solver.getColLower()[ind.col], 0.0));
    solver.setColUpper(ind.col, std::min(solver.getColUpper()[ind.col], 1.0));
    indicator_slacks r{&ind, {}};
    for (double coef : slack_coefficients(prob->rowtype[ind.row])) {
      CoinPackedVector column(1, &ind.row, &coef);
      r.slacks.push_back(solver.getNumCols());
      solver.addCol(column, 0.0, solver.getInfinity(), 0.0);
    }
    if (!r.slacks.empty()) rows.push_back(std::move(r));
  }
  return rows;
}

void add_indicator_objects(const kvsl_prob *, CbcModel &model,
                           const std::vector<indicator_slacks> &rows,
                           const directive_index &dirs) {
  std::vector<CbcObject *> objects;
  for (const auto &r : rows) {
    objects.push_back(new indicator_object(&model, r));
    apply_directive(dirs.column(r.ind->col), *objects.back());
  }
  if (!objects.empty()) model.addObjects(static_cast<int>(objects.size()), objects.data());
  for (auto *obj : objects) delete obj;
}

std::vector<char> rows_in_force(const kvsl_prob *prob, const double *x) {
  std::vector<char> in_force(prob->rowtype.size(), 1);
  for (const auto &ind : prob->indicators)
    if (std::round(x[ind.col]) != active_value(ind)) in_force[ind.row] = 0;
  return in_force;
}

released_indicator_rows::released_indicator_rows(kvsl_prob *prob) : prob_(prob) {
  ClpSimplex &m = *prob->lp;
  for (const auto &ind : prob->indicators) {
    double v = active_value(ind);
    if (m.columnLower()[ind.col] == v && m.columnUpper()[ind.col] == v) continue;
    rows_.push_back(ind.row);
    lo_.push_back(m.rowLower()[ind.row]);
    up_.push_back(m.rowUpper()[ind.row]);
    m.setRowBounds(ind.row, -COIN_DBL_MAX, COIN_DBL_MAX);
  }
}

released_indicator_rows::~released_indicator_rows() {
  for (size_t k = 0; k < rows_.size(); ++k) prob_->lp->setRowBounds(rows_[k], lo_[k], up_[k]);
}

}  // namespace kvsl
