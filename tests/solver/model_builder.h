/*
 * model_builder.h -- test support for the solver suites: fills constraint,
 * set and directive records directly, terms through the term lists.
 */
#ifndef KVTL_TESTS_SOLVER_MODEL_BUILDER_H
#define KVTL_TESTS_SOLVER_MODEL_BUILDER_H

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "kvtl.h"
#include "problem/names.h"
#include "problem/problem.h"

namespace builder {

// A constraint "terms + constant  type  0" with right-hand side rhs, put at
// the head of the problem's list (newest first) like the library's own.
inline MDLctr ctr(MDLprob p, const char *name, int type, double rhs = 0.0,
                  uintptr_t mode = MDL_MODE_STD) {
  auto *c = static_cast<mdl_ctr *>(mdlallocmem(p, sizeof(mdl_ctr), 1));
  c->row = kvtl::no_number;
  c->type = static_cast<uint32_t>(type) & 7;
  if (p->dictsize > 0)
    c->name = mdlnormname(p, name, "CTR", MDL_KIND_CTR, c)->name;
  else
    c->name = mdlstrdup(p, name);
  c->mode = mode;
  c->problem = p;
  c->expr.constant = rhs == 0 ? 0.0 : -rhs;
  c->next = p->ctrs;
  p->ctrs = c;
  p->status |= MDL_ST_MODIFIED;
  return c;
}

inline void term(MDLctr c, MDLvar v, double coef) {
  ASSERT_GE(mdladd_term(v, &c->expr.lin, coef), 0);
  c->problem->status |= MDL_ST_MODIFIED;
}

inline void qterm(MDLctr c, MDLvar a, MDLvar b, double coef) {
  if (std::less<void *>{}(b, a)) std::swap(a, b);
  ASSERT_GE(mdladd_qterm(a, b, &c->expr.quad, coef), 0);
  c->problem->status |= MDL_ST_MODIFIED;
}

// Make the built-in record the objective and give it a constant.
inline MDLctr objective(MDLprob p, double constant = 0.0) {
  p->objective = &p->objrec;
  p->objrec.expr.constant = constant;
  p->status |= MDL_ST_MODIFIED;
  return &p->objrec;
}

inline void set_range(MDLctr c, double lw, double up) {
  c->type = MDL_CTR_R;
  c->expr.constant = -up;
  c->range = up - lw;
}

inline MDLsos sos(MDLprob p, const char *name, int type) {
  auto *s = static_cast<mdl_sos *>(mdlallocmem(p, sizeof(mdl_sos), 1));
  s->type = static_cast<uint32_t>(type);
  if (p->dictsize > 0)
    s->name = mdlnormname(p, name, "SOS", MDL_KIND_SOS, s)->name;
  else
    s->name = mdlstrdup(p, name);
  s->problem = p;
  s->next = p->soss;
  p->soss = s;
  p->status |= MDL_ST_MODIFIED;
  return s;
}

inline void element(MDLsos s, MDLvar v, double weight) {
  ASSERT_GE(mdladd_term(v, &s->elements, weight), 0);
}

// Append a directive (kind 1..5, plus 16 for a set) and mark it pending.
inline void directive(MDLprob p, void *target, uint32_t kind, double value) {
  auto *d = static_cast<mdl_dir *>(mdlallocmem(p, sizeof(mdl_dir), 1));
  d->kind = kind;
  d->target = target;
  d->value = value;
  if (p->dirtail != nullptr) p->dirtail->next = d;
  else p->dirhead = d;
  p->dirtail = d;
  p->status |= MDL_ST_DIRPENDING;
}

}  // namespace builder

#endif
