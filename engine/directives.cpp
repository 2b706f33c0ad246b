/*
 * directives.cpp -- branching directives in the search: priorities,
 * preferred directions and pseudo costs of columns and sets.
 */
#include <algorithm>

#include <CbcModel.hpp>
#include <CbcSimpleInteger.hpp>
#include <CbcSimpleIntegerDynamicPseudoCost.hpp>

#include "search.h"

namespace kvsl {

directive_index::directive_index(const kvsl_prob *prob)
    : cols_(prob->ncols, nullptr), sets_(prob->settype.size(), nullptr) {
  for (const auto &d : prob->directives) {
    if (d.obj >= 0)
      cols_[d.obj] = &d;
    else
      sets_[-d.obj - 1] = &d;
  }
}

const directive *directive_index::column(int col) const {
  return col >= 0 && col < static_cast<int>(cols_.size()) ? cols_[col] : nullptr;
}

const directive *directive_index::set(int s) const {
  return s >= 0 && s < static_cast<int>(sets_.size()) ? sets_[s] : nullptr;
}

void apply_directive(const directive *d, CbcObject &obj) {
  if (d == nullptr) return;
  obj.setPriority(d->prio);
  obj.setPreferredWay(d->dir == 'U' ? 1 : d->dir == 'D' ? -1 : 0);
}

// Integer columns with a directive get pseudo-cost objects started from the
// directive's costs; the others keep Cbc's own objects.
void apply_integer_directives(const kvsl_prob *prob, CbcModel &model) {
  if (prob->directives.empty()) return;
  directive_index dirs(prob);
  model.findIntegers(false);
  OsiObject **objects = model.objects();
  for (int i = 0; i < model.numberObjects(); ++i) {
    auto *obj = dynamic_cast<CbcSimpleInteger *>(objects[i]);
    if (obj == nullptr) continue;
    int col = obj->columnNumber();
    const directive *d = dirs.column(col);
    if (d == nullptr) continue;
    auto *pc = new CbcSimpleIntegerDynamicPseudoCost(&model, col, std::max(d->down, 0.0),
                                                     std::max(d->up, 0.0));
    apply_directive(d, *pc);
    delete objects[i];
    objects[i] = pc;
  }
}

}  // namespace kvsl
