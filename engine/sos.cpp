/*
 * sos.cpp -- special ordered sets of type 1 and 2 in the search: Cbc's set
 * branching over the members in the order of their reference values, with
 * the directives of the sets, and the check of a solution against them.
 */
#include <algorithm>
#include <cmath>
#include <numeric>

#include <CbcModel.hpp>
#include <CbcSOS.hpp>

#include "search.h"

namespace kvsl {

namespace {

// A Cbc set whose pseudo cost ratios start from a directive's costs.
class weighted_set : public CbcSOS {
 public:
  weighted_set(CbcModel *model, const std::vector<int> &cols, const std::vector<double> &weights,
               int id, int type, const directive *d)
      : CbcSOS(model, static_cast<int>(cols.size()), cols.data(), weights.data(), id, type) {
    if (d == nullptr) return;
    downDynamicPseudoRatio_ = std::max(d->down, 0.0);
    upDynamicPseudoRatio_ = std::max(d->up, 0.0);
    apply_directive(d, *this);
  }
  CbcObject *clone() const override { return new weighted_set(*this); }
};

// Is x non-zero beyond the check tolerance?
bool nonzero(double x) { return !within(x, 0.0, 0.0); }

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
    objects.push_back(new weighted_set(&model, cols, weights, s, prob->settype[s] == '2' ? 2 : 1,
                                       dirs.set(s)));
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
