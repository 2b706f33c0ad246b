/*
 * sos.cpp -- special ordered sets of type 1 and 2 in the search: branching
 * over the members in the order of their reference values, with the
 * directives of the sets, and the check of a solution against them.
 */
#include <algorithm>
#include <cmath>
#include <numeric>

#include <CbcModel.hpp>

#include "search.h"

namespace kvsl {

namespace {

// Is x non-zero beyond the check tolerance?
bool nonzero(double x) { return !within(x, 0.0, 0.0); }

// Branching object of a set, over its members in weight order.  A branch
// splits the members at a position and fixes the members on one side at
// 0 (both bounds: members may have negative lower bounds, and a member
// that cannot be 0 makes its arm empty).
class set_object : public CbcObject {
 public:
  set_object(CbcModel *model, std::vector<int> cols, std::vector<double> weights, int type)
      : CbcObject(model), cols_(std::move(cols)), w_(std::move(weights)), width_(type) {}
  CbcObject *clone() const override { return new set_object(*this); }

  double infeasibility(const OsiBranchingInformation *info, int &way) const override {
    const std::vector<double> x = member_values(info);
    double tol = info->primalTolerance_;
    int first = -1, last = -1;
    double total = 0.0;
    for (int k = 0; k < size(); ++k) {
      double v = x[k];
      if (v <= tol) continue;
      if (first < 0) first = k;
      last = k;
      total += v;
    }
    if (first < 0 || last - first < width_) return 0.0;
    way = preferredWay_ != 0 ? preferredWay_ : -1;
    double kept = best_window_mass(x);
    return std::clamp(1.0 - kept / total, 1e-6, 0.5);
  }

  using CbcObject::feasibleRegion;
  void feasibleRegion() override { feasibleRegion(model_->solver(), nullptr); }
  double feasibleRegion(OsiSolverInterface *solver, const OsiBranchingInformation *) const override {
    const double *solution = solver->getColSolution();
    const std::vector<double> x = member_values([solution](int col) { return solution[col]; });
    int start = best_window(x);
    std::vector<bound_change> fix;
    double moved = 0.0;
    for (int k = 0; k < size(); ++k) {
      if (k >= start && k < start + width_) continue;
      fix.push_back({cols_[k], 0.0, 0.0});
      moved += x[k];
    }
    apply_changes(solver, fix);
    return moved;
  }

  // Split between the non-zero members near their weighted centre.  Type
  // 1: the down arm keeps members up to s, the up arm those after it.
  // Type 2: both arms keep member s, the down arm those before it, the up
  // arm those after it.
  CbcBranchingObject *createCbcBranch(OsiSolverInterface *, const OsiBranchingInformation *info,
                                      int way) override {
    const std::vector<double> x = member_values(info);
    double tol = info->primalTolerance_;
    int first = -1, last = -1;
    double mass = 0.0, moment = 0.0;
    for (int k = 0; k < size(); ++k) {
      double v = x[k];
      if (v <= tol) continue;
      if (first < 0) first = k;
      last = k;
      mass += v;
      moment += v * w_[k];
    }
    double centre = mass > 0.0 ? moment / mass : w_[0];
    int s = first;
    while (s + 1 < size() && w_[s + 1] <= centre) ++s;
    std::vector<bound_change> down, up;
    if (width_ == 1) {
      s = std::clamp(s, first, last - 1);
      for (int k = 0; k < size(); ++k) (k > s ? down : up).push_back({cols_[k], 0.0, 0.0});
    } else {
      s = std::clamp(s, first + 1, last - 1);
      for (int k = 0; k < size(); ++k) {
        if (k > s) down.push_back({cols_[k], 0.0, 0.0});
        if (k < s) up.push_back({cols_[k], 0.0, 0.0});
      }
    }
    return new bound_branch(model_, id_, way, centre, std::move(down), std::move(up),
                            info->lower_, info->upper_);
  }

 private:
  int size() const { return static_cast<int>(cols_.size()); }
  // Absolute values of the members, each column's value given by value.
  template <class Value>
  std::vector<double> member_values(Value value) const {
    std::vector<double> x(cols_.size());
    for (int k = 0; k < size(); ++k) x[k] = std::fabs(value(cols_[k]));
    return x;
  }
  // In the node, within its bounds.
  std::vector<double> member_values(const OsiBranchingInformation *info) const {
    return member_values([info](int col) { return node_value(info, col); });
  }
  // Start of the window of width_ members with the most absolute value (x:
  // the members' absolute values).
  int best_window(const std::vector<double> &x) const {
    int best = 0;
    double most = -1.0;
    for (int k = 0; k + width_ <= std::max(size(), width_); ++k) {
      double m = 0.0;
      for (int i = k; i < std::min(k + width_, size()); ++i) m += x[i];
      if (m > most) {
        most = m;
        best = k;
      }
    }
    return best;
  }
  double best_window_mass(const std::vector<double> &x) const {
    int k = best_window(x);
    double m = 0.0;
    for (int i = k; i < std::min(k + width_, size()); ++i) m += x[i];
    return m;
  }

  std::vector<int> cols_;
  std::vector<double> w_;
  int width_;  // members that may be non-zero: 1 or 2 adjacent
};

}  // namespace

std::vector<int> members_by_weight(const kvsl_prob *prob, int s) {
  std::vector<int> pos(static_cast<size_t>(prob->setstart[s + 1] - prob->setstart[s]));
  std::iota(pos.begin(), pos.end(), static_cast<int>(prob->setstart[s]));
  std::stable_sort(pos.begin(), pos.end(),
                   [&](int a, int b) { return prob->setref[a] < prob->setref[b]; });
  return pos;
}

void add_set_objects(const kvsl_prob *prob, CbcModel &model, const directive_index &dirs) {
  int nsets = static_cast<int>(prob->settype.size());
  std::vector<CbcObject *> objects;
  for (int s = 0; s < nsets; ++s) {
    std::vector<int> cols;
    std::vector<double> weights;
    for (int k : members_by_weight(prob, s)) {
      cols.push_back(prob->setcol[k]);
      weights.push_back(prob->setref[k]);
    }
    if (cols.empty()) continue;
    auto *obj = new set_object(&model, std::move(cols), std::move(weights),
                               prob->settype[s] == '2' ? 2 : 1);
    obj->setId(s);
    apply_directive(dirs.set(s), *obj);
    objects.push_back(obj);
  }
  if (!objects.empty()) model.addObjects(static_cast<int>(objects.size()), objects.data());
  for (auto *obj : objects) delete obj;
}

// At most one non-zero member (type 1), or two adjacent in weight order.
bool sets_hold(const kvsl_prob *prob, const double *x) {
  int nsets = static_cast<int>(prob->settype.size());
  for (int s = 0; s < nsets; ++s) {
    std::vector<int> order = members_by_weight(prob, s);
    int first = -1, count = 0, last = -1;
    for (int k = 0; k < static_cast<int>(order.size()); ++k)
      if (nonzero(x[prob->setcol[order[k]]])) {
        if (first < 0) first = k;
        last = k;
        ++count;
      }
    int allowed = prob->settype[s] == '2' ? 2 : 1;
    if (count > 0 && last - first + 1 > allowed) return false;
  }
  return true;
}

}  // namespace kvsl
