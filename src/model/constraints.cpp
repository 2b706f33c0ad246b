/*
 * constraints.cpp -- constraint records, their terms, types, ranges and
 * mode flags (model cuts, delayed rows, include-vars, indicators), and the
 * problem's objective reference.
 */
#include "model/constraints.h"

#include <string.h>

#include "expr/termlist.h"
#include "problem/names.h"

namespace kvtl {

namespace {

constexpr double infinity = MDL_INFINITY;

// The right-hand side of an expression: the negated constant, never -0.
double rhs_of(const mdl_expr &expr) {
  return expr.constant == 0 ? 0.0 : -expr.constant;
}

// Report a null constraint for the function `fn`; true when there is none.
bool no_ctr(MDLctr ctr, const char *fn) {
  if (ctr != nullptr) return false;
  mdlerror(nullptr, MDL_E_NOCTR, fn);
  return true;
}

// Report a null problem for the function `fn`; true when there is none.
bool no_prob(MDLprob prob, const char *fn) {
  if (prob != nullptr) return false;
  mdlerror(nullptr, MDL_E_NOPROB, fn);
  return true;
}

// Pool size of a private name copy (the size mdlstrdup asked for).
size_t copy_size(const char *text) {
  size_t n = strlen(text);
  return n + 1 <= 8 ? 8 : (n + 4) & ~static_cast<size_t>(3);
}

// The name shown for a constraint (generated when it has none).
const char *ctr_name(MDLctr ctr) { return display_name(ctr->name, ctr); }

// Is the mode word that of an indicator constraint?
bool is_indicator(uintptr_t mode) { return mode > MDL_MODE_INCVARS; }

// Shared switch of the three mode kinds (model cut, delayed row,
// include-vars): `what` names the setting in messages; `need_n` restricts
// it to type N rows.
int set_mode_kind(MDLctr ctr, int on, uintptr_t kind, const char *fn, const char *what,
                  bool need_n) {
  if (no_ctr(ctr, fn)) return 1;
  MDLprob prob = ctr->problem;
  if (static_cast<unsigned>(on) > 1) {
    mdlerror(prob, MDL_E_ARGVALUE, fn, on);
    return 1;
  }
  if (on != 0) {
    if (ctr->mode != MDL_MODE_STD && ctr->mode != kind) {
      mdlerror(prob, MDL_E_STDCTR, fn, what);
      return 1;
    }
    if (need_n && ctr->type != MDL_CTR_N) {
      mdlerror(prob, MDL_E_NONBINDING, fn, what);
      return 1;
    }
    if (ctr->mode == kind) return 0;
    ctr->mode = kind;
  } else {
    if (ctr->mode != kind) return 0;
    ctr->mode = MDL_MODE_STD;
  }
  mark_modified(prob);
  return 0;
}

// Look a variable up in a sorted linear list (stripped by the caller).
double find_coef(const mdl_termlst *list, const mdl_var *var) {
  if (list == nullptr) return 0;
  auto *last = static_cast<const mdl_term *>(list->last);
  if (last->var == var) return last->coef;
  for (auto *t = static_cast<const mdl_term *>(list->first); t != nullptr && t->var <= var;
       t = t->next) {
    if (t->var == var) return t->coef;
    if (t == last) break;
  }
  return 0;
}

// Look a pair up in a sorted quadratic list (stripped by the caller).
double find_qcoef(const mdl_termlst *list, const mdl_var *v1, const mdl_var *v2) {
  if (list == nullptr) return 0;
  auto below = [](const mdl_qterm *t, const mdl_var *a, const mdl_var *b) {
    return t->var1 < a || (t->var1 == a && t->var2 < b);
  };
  auto *last = static_cast<const mdl_qterm *>(list->last);
  if (last->var1 == v1 && last->var2 == v2) return last->coef;
  for (auto *t = static_cast<const mdl_qterm *>(list->first); t != nullptr; t = t->next) {
    if (t->var1 == v1 && t->var2 == v2) return t->coef;
    if (!below(t, v1, v2) || t == last) break;
  }
  return 0;
}

// Order a pair of variables by handle.
void order_pair(MDLvar &a, MDLvar &b) {
  if (b < a) {
    MDLvar t = a;
    a = b;
    b = t;
  }
}

}  // namespace

const char *register_name(MDLprob prob, const char *name, const char *prefix, int kind,
                          void *entity, bool &ok) {
  ok = true;
  if (prob->dictsize < 1) {
    if (name == nullptr || *name == '\0') return nullptr;
    const char *copy = mdlstrdup(prob, name);
    ok = copy != nullptr;
    return copy;
  }
  mdl_dict_entry *entry = mdlnormname(prob, name, prefix, kind, entity);
  ok = entry != nullptr;
  return ok ? entry->name : nullptr;
}

void unregister_name(MDLprob prob, const char *name, int kind, const void *entity) {
  if (name == nullptr) return;
  if (prob->dictsize < 1) {
    mdlrecyclemem(prob, const_cast<char *>(name), copy_size(name));
    return;
  }
  mdl_dict_entry *entry = mdlfindname(prob, name, kind | MDL_FIND_LOOKUP);
  if (entry != nullptr && entry->entity == entity) entry->entity = nullptr;
}

void clear_expr(mdl_expr &expr) {
  mdldel_termlst(&expr.lin);
  mdldel_qtermlst(&expr.quad);
  expr.constant = 0;
}

}  // namespace kvtl

using namespace kvtl;

// A new constraint at the head of the problem's list; the problem is not
// marked modified (the row enters the matrix at the next generation).
KVTL_API MDLctr mdlnewctr_prob(MDLprob prob, const char *name, int type) {
  if (no_prob(prob, "newctr")) return nullptr;
  if (static_cast<unsigned>(type) > MDL_CTR_E) {
    mdlerror(prob, MDL_E_CTRTYPE, "newctr", name != nullptr ? name : "");
    return nullptr;
  }
  auto *ctr = problem_chunk<mdl_ctr, true>(prob);
  if (ctr == nullptr) return nullptr;
  bool ok;
  ctr->name = register_name(prob, name, "CTR", MDL_KIND_CTR, ctr, ok);
  if (!ok) {
    mdlrecyclemem(prob, ctr, sizeof(mdl_ctr));
    return nullptr;
  }
  ctr->row = no_number;
  ctr->type = static_cast<uint32_t>(type);
  ctr->problem = prob;
  ctr->next = prob->ctrs;
  prob->ctrs = ctr;
  return ctr;
}

// Delete a constraint of the problem's list; any other record (the built-in
// objective) is left alone.  Both cases mark the problem modified.
KVTL_API int mdldelctr(MDLctr ctr) {
  if (no_ctr(ctr, "delctr")) return 1;
  MDLprob prob = ctr->problem;
  mark_modified(prob);
  mdl_ctr **link = &prob->ctrs;
  while (*link != nullptr && *link != ctr) link = &(*link)->next;
  if (*link == nullptr) return 0;
  *link = ctr->next;
  clear_expr(ctr->expr);
  unregister_name(prob, ctr->name, MDL_KIND_CTR, ctr);
  if (prob->objective == ctr) prob->objective = nullptr;
  mdlrecyclemem(prob, ctr, sizeof(mdl_ctr));
  return 0;
}

// x + d <= y as x - y <= -d; a failed step deletes the constraint again.
KVTL_API MDLctr mdlnewprec_prob(MDLprob prob, const char *name, MDLvar x, double d, MDLvar y) {
  if (no_prob(prob, "newprec")) return nullptr;
  MDLctr ctr = mdlnewctr_prob(prob, name, MDL_CTR_L);
  if (ctr == nullptr) return nullptr;
  if (mdladdterm(ctr, x, 1.0) != 0 || mdladdterm(ctr, y, -1.0) != 0 ||
      mdladdterm(ctr, nullptr, -d) != 0) {
    mdldelctr(ctr);
    return nullptr;
  }
  return ctr;
}

// Constraints newest first.
KVTL_API MDLctr mdlgetnextctr_prob(MDLprob prob, MDLctr ctr) {
  if (no_prob(prob, "getnextctr")) return nullptr;
  return ctr == nullptr ? prob->ctrs : ctr->next;
}

// Change the relation type (not to R: ranges come from mdlsetrange);
// indicator rows keep an inequality, include-vars rows stay N.
KVTL_API int mdlsetctrtype(MDLctr ctr, int type) {
  if (no_ctr(ctr, "setctrtype")) return 1;
  MDLprob prob = ctr->problem;
  auto code = static_cast<unsigned>(type);
  if (code > MDL_CTR_E) {
    mdlerror(prob, MDL_E_CTRTYPE, "setctrtype", ctr_name(ctr));
    return 1;
  }
  if (is_indicator(ctr->mode) && (code == MDL_CTR_E || code == MDL_CTR_N)) {
    mdlerror(prob, MDL_E_INDICTYPE, "setctrtype", ctr_name(ctr));
    return 1;
  }
  if (ctr->mode == MDL_MODE_INCVARS && code != MDL_CTR_N) {
    mdlerror(prob, MDL_E_INCVARSTYPE, "setctrtype", ctr_name(ctr));
    return 1;
  }
  if (code != ctr->type) {
    mark_modified(prob);
    if (ctr->type == MDL_CTR_R) ctr->range = 0;
    ctr->type = code;
  }
  return 0;
}

// The relation type, -1 for no constraint.
KVTL_API int mdlgetctrtype(MDLctr ctr) {
  if (no_ctr(ctr, "getctrtype")) return -1;
  return static_cast<int>(ctr->type);
}

// Equal limits give an equation; otherwise a range row with rhs `up`.
KVTL_API int mdlsetrange(MDLctr ctr, double lw, double up) {
  if (no_ctr(ctr, "setrange")) return 1;
  if (lw > up) {
    mdlerror(ctr->problem, MDL_E_CTRRANGE, "setrange", ctr_name(ctr), lw, up);
    return 1;
  }
  if (lw == up) {
    ctr->type = MDL_CTR_E;
    ctr->range = 0;
    ctr->expr.constant = -lw;
  } else {
    ctr->type = MDL_CTR_R;
    ctr->expr.constant = -up;
    ctr->range = up - lw;
  }
  mark_modified(ctr->problem);
  return 0;
}

// The row's limits by type; open sides are the library's infinities.
KVTL_API int mdlgetrange(MDLctr ctr, double *lw, double *up) {
  if (no_ctr(ctr, "getrange")) return 1;
  double rhs = rhs_of(ctr->expr);
  double lo = -infinity, hi = infinity;
  switch (ctr->type) {
    case MDL_CTR_L: hi = rhs; break;
    case MDL_CTR_G: lo = rhs; break;
    case MDL_CTR_E: lo = hi = rhs; break;
    case MDL_CTR_R: lo = rhs - ctr->range; hi = rhs; break;
    default: break;
  }
  if (lw != nullptr) *lw = lo;
  if (up != nullptr) *up = hi;
  return 0;
}

// The right-hand side; 0 for no constraint.
KVTL_API double mdlgetrhs(MDLctr ctr) {
  if (no_ctr(ctr, "getrhs")) return 0;
  return rhs_of(ctr->expr);
}

// Add to a coefficient; a zero coefficient is no operation at all, even
// without a constraint.
KVTL_API int mdladdterm(MDLctr ctr, MDLvar var, double coef) {
  if (coef == 0) return 0;
  if (no_ctr(ctr, "addterm")) return 1;
  if (var == nullptr)
    ctr->expr.constant -= coef;
  else if (mdladd_term(var, &ctr->expr.lin, coef) < 0)
    return 1;
  mark_modified(ctr->problem);
  return 0;
}

// Set a coefficient (or the rhs); an operation that changes nothing does
// not mark the problem modified.
KVTL_API int mdlsetterm(MDLctr ctr, MDLvar var, double coef) {
  if (no_ctr(ctr, "setterm")) return 1;
  if (var == nullptr) {
    double constant = 0.0 - coef;
    if (constant == ctr->expr.constant) return 0;
    ctr->expr.constant = constant;
  } else {
    int changed = mdlset_term(var, &ctr->expr.lin, coef);
    if (changed < 0) return 1;
    if (changed == 0) return 0;
  }
  mark_modified(ctr->problem);
  return 0;
}

// Remove a term (or zero the rhs).
KVTL_API int mdldelterm(MDLctr ctr, MDLvar var) { return mdlsetterm(ctr, var, 0.0); }

// Add to a quadratic coefficient; a pair with a null variable is linear.
KVTL_API int mdladdqterm(MDLctr ctr, MDLvar var1, MDLvar var2, double coef) {
  if (coef == 0) return 0;
  order_pair(var1, var2);
  if (var1 == nullptr) return mdladdterm(ctr, var2, coef);
  if (no_ctr(ctr, "addqterm")) return 1;
  if (mdladd_qterm(var1, var2, &ctr->expr.quad, coef) < 0) return 1;
  mark_modified(ctr->problem);
  return 0;
}

// Set a quadratic coefficient; reports under the name "setterm".
KVTL_API int mdlsetqterm(MDLctr ctr, MDLvar var1, MDLvar var2, double coef) {
  if (no_ctr(ctr, "setterm")) return 1;
  order_pair(var1, var2);
  if (var1 == nullptr) return mdlsetterm(ctr, var2, coef);
  int changed = mdlset_qterm(var1, var2, &ctr->expr.quad, coef);
  if (changed < 0) return 1;
  if (changed > 0) mark_modified(ctr->problem);
  return 0;
}

// Remove a quadratic term.
KVTL_API int mdldelqterm(MDLctr ctr, MDLvar var1, MDLvar var2) {
  return mdlsetqterm(ctr, var1, var2, 0.0);
}

// A linear coefficient, the rhs for a null variable; 1.0 after the error
// for a null constraint.
KVTL_API double mdlgetcoeff(MDLctr ctr, MDLvar var) {
  if (no_ctr(ctr, "getcoeff")) return 1.0;
  if (var == nullptr) return rhs_of(ctr->expr);
  mdlstriptermlst(&ctr->expr.lin);
  return find_coef(ctr->expr.lin, var);
}

// A quadratic coefficient; a pair with a null variable is linear.
KVTL_API double mdlgetqcoeff(MDLctr ctr, MDLvar var1, MDLvar var2) {
  if (no_ctr(ctr, "getcoeff")) return 1.0;
  order_pair(var1, var2);
  if (var1 == nullptr) return mdlgetcoeff(ctr, var2);
  mdlstripqtermlst(&ctr->expr.quad);
  return find_qcoef(ctr->expr.quad, var1, var2);
}

// The linear term after `prev` (the first after a strip when prev is null).
KVTL_API MDLterm mdlgetnextterm(MDLctr ctr, MDLterm prev, MDLvar *var, double *coef) {
  mdl_term *node;
  if (prev == nullptr) {
    if (no_ctr(ctr, "getnextterm")) return nullptr;
    mdlstripexpr(&ctr->expr);
    node = ctr->expr.lin != nullptr ? static_cast<mdl_term *>(ctr->expr.lin->first) : nullptr;
  } else {
    node = prev->next;
  }
  if (node != nullptr) {
    if (var != nullptr) *var = node->var;
    if (coef != nullptr) *coef = node->coef;
  }
  return node;
}

// The quadratic term after `prev` (the first after a strip when prev is
// null).
KVTL_API MDLqterm mdlgetnextqterm(MDLctr ctr, MDLqterm prev, MDLvar *var1, MDLvar *var2,
                                  double *coef) {
  mdl_qterm *node;
  if (prev == nullptr) {
    if (no_ctr(ctr, "getnextqterm")) return nullptr;
    mdlstripexpr(&ctr->expr);
    node =
        ctr->expr.quad != nullptr ? static_cast<mdl_qterm *>(ctr->expr.quad->first) : nullptr;
  } else {
    node = prev->next;
  }
  if (node != nullptr) {
    if (var1 != nullptr) *var1 = node->var1;
    if (var2 != nullptr) *var2 = node->var2;
    if (coef != nullptr) *coef = node->coef;
  }
  return node;
}

// Non-zero linear plus quadratic terms.
KVTL_API int mdlgetctrsize(MDLctr ctr) {
  if (no_ctr(ctr, "getctrsize")) return -1;
  mdlstripexpr(&ctr->expr);
  return mdlget_termlst_len(&ctr->expr.lin) + mdlget_qtermlst_len(&ctr->expr.quad);
}

// The row in the loaded matrix.
KVTL_API int mdlgetrownum(MDLctr ctr) {
  if (no_ctr(ctr, "getrownum")) return -1;
  return ctr->row == no_number ? -1 : static_cast<int>(ctr->row);
}

// The stored name, or the generated one (valid for a few more names).
KVTL_API const char *mdlgetctrname(MDLctr ctr) {
  if (no_ctr(ctr, "getctrname")) return nullptr;
  return ctr_name(ctr);
}

// Store the raw mode word; marks the problem modified when it changes.
KVTL_API int mdlsetctrflag(MDLctr ctr, int flag, MDLvar var) {
  if (no_ctr(ctr, "setctrflag")) return 1;
  uintptr_t mode = (static_cast<uintptr_t>(flag) & 3) | reinterpret_cast<uintptr_t>(var);
  if (mode != ctr->mode) {
    ctr->mode = mode;
    mark_modified(ctr->problem);
  }
  return 0;
}

// Make an inequality an indicator constraint, or (sense 0, no variable) a
// standard constraint again.
KVTL_API int mdlsetindicator(MDLctr ctr, int sense, MDLvar var) {
  if (no_ctr(ctr, "setindicator")) return 1;
  MDLprob prob = ctr->problem;
  if (var == nullptr && sense != 0) {
    mdlerror(prob, MDL_E_NOVAR, "setindicator");
    return 1;
  }
  if (ctr->type == MDL_CTR_N || ctr->type == MDL_CTR_E) {
    mdlerror(prob, MDL_E_INDICTYPE, "setindicator", ctr_name(ctr));
    return 1;
  }
  if (sense < -1 || sense > 1 || (var != nullptr && sense == 0)) {
    mdlerror(prob, MDL_E_ARGVALUE, "setindicator", sense);
    return 1;
  }
  if (sense == 0) return mdlsetctrflag(ctr, 0, nullptr);
  // Model cuts, delayed rows and include-vars rows are not standard rows.
  if (ctr->mode != MDL_MODE_STD && !is_indicator(ctr->mode)) {
    mdlerror(prob, MDL_E_STDCTR, "setindicator", "indicator constraint");
    return 1;
  }
  return mdlsetctrflag(ctr, sense == 1 ? 1 : 0, var);
}

// 1 / -1 by the indicator's sense, 0 for other rows.
KVTL_API int mdlgetindicator(MDLctr ctr) {
  if (no_ctr(ctr, "getindicator")) return -2;
  if (!is_indicator(ctr->mode)) return 0;
  return (ctr->mode & 1) != 0 ? 1 : -1;
}

// The mode word without its low bit, as a variable handle.
KVTL_API MDLvar mdlgetindvar(MDLctr ctr) {
  if (no_ctr(ctr, "getindvar")) return nullptr;
  return reinterpret_cast<MDLvar>(ctr->mode & ~static_cast<uintptr_t>(1));
}

// Turn the include-vars mode of a type N row on (1) or off (0).
KVTL_API int mdlsetincvars(MDLctr ctr, int on) {
  return set_mode_kind(ctr, on, MDL_MODE_INCVARS, "setincvars", "include vars constraint", true);
}

// 1 for an include-vars row, 0 otherwise, -1 for no constraint.
KVTL_API int mdlgetincvars(MDLctr ctr) {
  if (no_ctr(ctr, "getincvars")) return -1;
  return ctr->mode == MDL_MODE_INCVARS ? 1 : 0;
}

// Turn the delayed-row mode on (1) or off (0).
KVTL_API int mdlsetdelayed(MDLctr ctr, int on) {
  return set_mode_kind(ctr, on, MDL_MODE_DELAYED, "setdelayed", "delayed constraint", false);
}

// 1 for a delayed row, 0 otherwise, -1 for no constraint.
KVTL_API int mdlgetdelayed(MDLctr ctr) {
  if (no_ctr(ctr, "getdelayed")) return -1;
  return ctr->mode == MDL_MODE_DELAYED ? 1 : 0;
}

// Turn the model-cut mode on (1) or off (0).
KVTL_API int mdlsetmodcut(MDLctr ctr, int on) {
  return set_mode_kind(ctr, on, MDL_MODE_MODCUT, "setmodcut", "model cut", false);
}

// 1 for a model cut, 0 otherwise, -1 for no constraint.
KVTL_API int mdlgetmodcut(MDLctr ctr) {
  if (no_ctr(ctr, "getmodcut")) return -1;
  return ctr->mode == MDL_MODE_MODCUT ? 1 : 0;
}

// Point the objective at a constraint (or none).  The built-in record's
// terms are dropped when another constraint takes its place.
KVTL_API int mdlsetobj_prob(MDLprob prob, MDLctr ctr) {
  if (no_prob(prob, "setobj")) return 1;
  if (prob->objective == &prob->objrec && ctr != nullptr && ctr != &prob->objrec)
    clear_expr(prob->objrec.expr);
  prob->objective = ctr;
  mark_modified(prob);
  return 0;
}
