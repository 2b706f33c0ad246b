/*
 * entities.cpp -- semi-continuous, semi-continuous integer and partial
 * integer columns in the search: their relaxation, branching and check.
 *
 * A semi-continuous column with limit l takes 0 or a value in [l, ub]
 * (an integer one in the second case for 'R'), always within [lb, ub].  A
 * partial integer column is integer below its limit and continuous from
 * the limit up.  Both are searched by branching on column bounds only.
 */
#include <algorithm>
#include <cmath>

#include <CbcModel.hpp>
#include <OsiSolverInterface.hpp>

#include "search.h"

namespace kvsl {

namespace {

// Does a semi-continuous column need branching: is 0 separate from its
// non-zero range within its bounds?
bool semicont_splits(double lb, double ub, double limit) {
  return limit > 0.0 && lb <= 0.0 && ub >= 0.0;
}

// Branching object of a semi-continuous column: down to 0, up to [l, ub].
class semicont_object : public CbcObject {
 public:
  semicont_object(CbcModel *model, int col, double limit)
      : CbcObject(model), col_(col), limit_(limit) {}
  CbcObject *clone() const override { return new semicont_object(*this); }
  int columnNumber() const override { return col_; }

  double infeasibility(const OsiBranchingInformation *info, int &way) const override {
    double x = node_value(info, col_);
    double tol = info->primalTolerance_;
    if (std::fabs(x) <= tol || x >= limit_ - tol) return 0.0;
    way = preferredWay_ != 0 ? preferredWay_ : (x < 0.5 * limit_ ? -1 : 1);
    return std::clamp(std::min(x, limit_ - x) / limit_, 1e-6, 0.5);
  }

  using CbcObject::feasibleRegion;
  void feasibleRegion() override { feasibleRegion(model_->solver(), nullptr); }
  double feasibleRegion(OsiSolverInterface *solver, const OsiBranchingInformation *) const override {
    double x = solver->getColSolution()[col_];
    if (x < 0.5 * limit_) {
      apply_changes(solver, {{col_, -COIN_DBL_MAX, 0.0}});
      return std::fabs(x);
    }
    apply_changes(solver, {{col_, limit_, COIN_DBL_MAX}});
    return std::max(limit_ - x, 0.0);
  }

  CbcBranchingObject *createCbcBranch(OsiSolverInterface *, const OsiBranchingInformation *info,
                                      int way) override {
    return new bound_branch(model_, col_, way, node_value(info, col_),
                            {{col_, -COIN_DBL_MAX, 0.0}}, {{col_, limit_, COIN_DBL_MAX}},
                            info->lower_, info->upper_);
  }

 private:
  int col_;
  double limit_;
};

// Branching object of a partial integer column: integer below the limit.
class partint_object : public CbcObject {
 public:
  partint_object(CbcModel *model, int col, double limit)
      : CbcObject(model), col_(col), limit_(limit) {}
  CbcObject *clone() const override { return new partint_object(*this); }
  int columnNumber() const override { return col_; }

  double infeasibility(const OsiBranchingInformation *info, int &way) const override {
    double x = node_value(info, col_);
    double frac = x - std::floor(x);
    double away = std::min(frac, 1.0 - frac);
    if (x >= limit_ - info->primalTolerance_ || away <= info->integerTolerance_) return 0.0;
    way = preferredWay_ != 0 ? preferredWay_ : (frac < 0.5 ? -1 : 1);
    return away;
  }

  using CbcObject::feasibleRegion;
  void feasibleRegion() override { feasibleRegion(model_->solver(), nullptr); }
  double feasibleRegion(OsiSolverInterface *solver, const OsiBranchingInformation *) const override {
    // The search re-solves the LP within these bounds to check a solution:
    // a value above the limit keeps to the continuous range.
    double x = solver->getColSolution()[col_];
    if (x >= limit_ - 1e-9) {
      apply_changes(solver, {{col_, limit_, COIN_DBL_MAX}});
      return 0.0;
    }
    double r = std::round(x);
    apply_changes(solver, {{col_, r, r}});
    return std::fabs(x - r);
  }

  CbcBranchingObject *createCbcBranch(OsiSolverInterface *, const OsiBranchingInformation *info,
                                      int way) override {
    double x = node_value(info, col_);
    return new bound_branch(model_, col_, way, x, {{col_, -COIN_DBL_MAX, std::floor(x)}},
                            {{col_, std::min(std::ceil(x), limit_), COIN_DBL_MAX}}, info->lower_,
                            info->upper_);
  }

 private:
  int col_;
  double limit_;
};

// The lower end of the non-zero range of a semi-continuous column: an
// integer one starts at the first integer from its limit, so that no
// branch gives an integer column a fractional bound.
double nonzero_start(const entity &e) {
  return e.type == 'R' ? std::ceil(e.limit - 1e-9) : e.limit;
}

}  // namespace

bool has_column_entity_objects(const kvsl_prob *prob) {
  for (const auto &e : prob->entities)
    if (e.type == 'S' || e.type == 'R' || e.type == 'P') return true;
  return false;
}

// Semi-continuous columns relax to [0, ub] when they split, else to their
// non-zero range; 'B', 'I' and 'R' columns are integer.
void relax_column_entities(const kvsl_prob *prob, OsiSolverInterface &solver) {
  for (const auto &e : prob->entities) {
    if (e.type == 'B' || e.type == 'I' || e.type == 'R') solver.setInteger(e.col);
    if (e.type != 'S' && e.type != 'R') continue;
    double lb = solver.getColLower()[e.col], ub = solver.getColUpper()[e.col];
    if (semicont_splits(lb, ub, e.limit))
      solver.setColLower(e.col, 0.0);
    else
      solver.setColLower(e.col, std::max(lb, nonzero_start(e)));
  }
}

// Set members and indicator columns are branched on by objects of their
// own, which fix bounds by their own rules: they keep their bounds as given.
std::vector<char> plain_integer_columns(const kvsl_prob *prob, int ncols) {
  std::vector<char> plain(static_cast<size_t>(ncols), 0);
  for (const auto &e : prob->entities)
    if ((e.type == 'B' || e.type == 'I') && e.col < ncols) plain[static_cast<size_t>(e.col)] = 1;
  for (int c : prob->setcol)
    if (c >= 0 && c < ncols) plain[static_cast<size_t>(c)] = 0;
  for (const auto &ind : prob->indicators)
    if (ind.col >= 0 && ind.col < ncols) plain[static_cast<size_t>(ind.col)] = 0;
  return plain;
}

void add_column_entity_objects(const kvsl_prob *prob, CbcModel &model,
                               const directive_index &dirs) {
  const OsiSolverInterface &s = *model.solver();
  std::vector<CbcObject *> objects;
  for (const auto &e : prob->entities) {
    CbcObject *obj = nullptr;
    if ((e.type == 'S' || e.type == 'R') && e.limit > 0.0 &&
        s.getColLower()[e.col] <= 0.0 && s.getColUpper()[e.col] > 0.0)
      obj = new semicont_object(&model, e.col, nonzero_start(e));
    else if (e.type == 'P' && e.limit > s.getColLower()[e.col])
      obj = new partint_object(&model, e.col, e.limit);
    if (obj == nullptr) continue;
    apply_directive(dirs.column(e.col), *obj);
    objects.push_back(obj);
  }
  if (!objects.empty())
    model.addObjects(static_cast<int>(objects.size()), objects.data());
  for (auto *obj : objects) delete obj;
}

bool column_entities_hold(const kvsl_prob *prob, const double *x) {
  for (const auto &e : prob->entities) {
    double v = x[e.col];
    bool integral = std::fabs(v - std::round(v)) <= 1e-5;
    switch (e.type) {
      case 'B': case 'I':
        if (!integral) return false;
        break;
      case 'R':
        if (!integral) return false;
        [[fallthrough]];
      case 'S':
        if (!within(v, 0.0, 0.0) && !within(v, e.limit, COIN_DBL_MAX)) return false;
        break;
      case 'P':
        if (!integral && !within(v, e.limit, COIN_DBL_MAX)) return false;
        break;
      default: break;
    }
  }
  return true;
}

void snap_column_entities(const kvsl_prob *prob, double *x) {
  for (const auto &e : prob->entities) {
    double &v = x[e.col];
    if (e.type == 'B' || e.type == 'I' || e.type == 'R' || (e.type == 'P' && v < e.limit))
      v = std::round(v) + 0.0;
    else if (e.type == 'S' && within(v, 0.0, 0.0))
      v = 0.0;
  }
}

}  // namespace kvsl
