/*
 * cuts.cpp -- cut records: creation from arrays and precedences, access,
 * terms, deletion, printing and assignment from expressions.
 */
#include "cuts/cuts.h"

#include "model/arrays.h"
#include "model/constraints.h"
#include "problem/problem.h"

using namespace kvtl;

namespace {

// Report a null cut (error 1509 with `fn`); true when the cut is null.
bool no_cut(MDLcut cut, const char *fn) {
  if (cut != nullptr) return false;
  mdlerror(nullptr, MDL_E_NOCUT, fn);
  return true;
}

bool valid_type(int type) { return type >= 1 && type <= 3; }

// Number of slots of an array: an open array (negative size) has none yet.
int64_t array_size(MDLarrvar arr) {
  int64_t size = array_header(arr)->size;
  return size < 0 ? 0 : size;
}

// A new cut of the array with coefficient coef(i) for element i, or null;
// a cut whose terms cannot all be added is deleted again.
template <class F>
MDLcut new_array_cut(MDLprob prob, const char *fn, MDLarrvar arr, int type, int id, double rhs,
                     F &&coef) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, fn);
    return nullptr;
  }
  if (arr == nullptr) {
    mdlerror(prob, MDL_E_NOARRVAR, fn);
    return nullptr;
  }
  MDLcut cut = mdlnewcut_prob(prob, type, id);
  if (cut == nullptr) return nullptr;
  cut->rhs = rhs;
  const int64_t n = array_size(arr);
  for (int64_t i = 0; i < n; ++i) {
    if (mdladdcutterm(cut, arr[i], coef(i)) != 0) {
      mdldelcut(cut);
      return nullptr;
    }
  }
  return cut;
}

}  // namespace

// An empty cut with rhs 0, not yet sent (row position all ones).
KVTL_API MDLcut mdlnewcut_prob(MDLprob prob, int type, int id) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "newcut");
    return nullptr;
  }
  if (!valid_type(type)) {
    mdlerror(prob, MDL_E_CTRTYPE, "newcut", "CUT");
    return nullptr;
  }
  auto *cut = static_cast<MDLcut>(mdlallocmem(prob, sizeof(mdl_cut), 1));
  if (cut == nullptr) return nullptr;
  cut->flags = cut_row_mask;
  set_cut_type(cut, type);
  cut->id = id;
  cut->problem = prob;
  cut->rhs = 0;
  cut->terms = nullptr;
  cut->next = nullptr;
  return cut;
}

KVTL_API MDLcut mdlnewcutsum_prob(MDLprob prob, MDLarrvar arr, int type, int id, double rhs) {
  return new_array_cut(prob, "newcutsum", arr, type, id, rhs, [](int64_t) { return 1.0; });
}

// The i-th element gets base + i: an arithmetic progression of weights.
KVTL_API MDLcut mdlnewcutsumc_prob(MDLprob prob, MDLarrvar arr, int type, int id, double base,
                                   double rhs) {
  return new_array_cut(prob, "newcutsumc", arr, type, id, rhs,
                       [base](int64_t i) { return base + static_cast<double>(i); });
}

// A null coefficient array fails in the term step, which deletes the cut.
KVTL_API MDLcut mdlnewcutarrsum_prob(MDLprob prob, MDLarrvar arr, const double *coefs, int type,
                                     int id, double rhs) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "newcutarrsum");
    return nullptr;
  }
  if (arr == nullptr) {
    mdlerror(prob, MDL_E_NOARRVAR, "newcutarrsum");
    return nullptr;
  }
  MDLcut cut = mdlnewcut_prob(prob, type, id);
  if (cut == nullptr) return nullptr;
  cut->rhs = rhs;
  if (mdladdcutarrterm(cut, arr, coefs) != 0) {
    mdldelcut(cut);
    return nullptr;
  }
  return cut;
}

// x - y <= -d.
KVTL_API MDLcut mdlnewcutprec_prob(MDLprob prob, MDLvar x, MDLvar y, int id, double d) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "newcutprec");
    return nullptr;
  }
  MDLcut cut = mdlnewcut_prob(prob, MDL_CTR_L, id);
  if (cut == nullptr) return nullptr;
  if (mdladdcutterm(cut, x, 1.0) != 0 || mdladdcutterm(cut, y, -1.0) != 0 ||
      mdladdcutterm(cut, nullptr, -d) != 0) {
    mdldelcut(cut);
    return nullptr;
  }
  return cut;
}

KVTL_API int mdlgetcutid(MDLcut cut) {
  if (no_cut(cut, "getcutid")) return -1;
  return cut->id;
}

// Reports under the getter's name, as this setter always has.
KVTL_API int mdlsetcutid(MDLcut cut, int id) {
  if (no_cut(cut, "getcutid")) return 1;
  cut->id = id;
  return 0;
}

KVTL_API int mdlgetcuttype(MDLcut cut) {
  if (no_cut(cut, "getcuttype")) return -1;
  return cut_type(cut);
}

KVTL_API int mdlsetcuttype(MDLcut cut, int type) {
  if (no_cut(cut, "setcuttype")) return 1;
  if (!valid_type(type)) {
    mdlerror(cut->problem, MDL_E_CTRTYPE, "setcuttype", "CUT");
    return 1;
  }
  set_cut_type(cut, type);
  return 0;
}

KVTL_API double mdlgetcutrhs(MDLcut cut) {
  if (no_cut(cut, "getcutrhs")) return 0;
  return cut->rhs;
}

KVTL_API MDLtermlst mdlgetlinexp_cut(MDLcut cut) {
  if (no_cut(cut, "getlinexp")) return nullptr;
  mdlstriptermlst(&cut->terms);
  return cut->terms;
}

// A zero value changes nothing, so it is accepted before any check.
KVTL_API int mdladdcutterm(MDLcut cut, MDLvar var, double value) {
  if (value == 0) return 0;
  if (no_cut(cut, "addcutterm")) return 1;
  if (var == nullptr) {
    cut->rhs += value;
    return 0;
  }
  return mdladd_term(var, &cut->terms, value) < 0 ? 1 : 0;
}

KVTL_API int mdladdcutarrterm(MDLcut cut, MDLarrvar arr, const double *coefs) {
  if (no_cut(cut, "addcutarrterm")) return 1;
  if (arr == nullptr) {
    mdlerror(cut->problem, MDL_E_NOARRVAR, "addcutarrterm");
    return 1;
  }
  if (coefs == nullptr) {
    mdlerror(cut->problem, MDL_E_NOARRCONST, "addcutarrterm");
    return 1;
  }
  const int64_t n = array_size(arr);
  for (int64_t i = 0; i < n; ++i)
    if (mdladdcutterm(cut, arr[i], coefs[i]) != 0) return 1;
  return 0;
}

// Reports under the adder's name, as this setter always has.
KVTL_API int mdlsetcutterm(MDLcut cut, MDLvar var, double value) {
  if (no_cut(cut, "addcutterm")) return 1;
  if (var == nullptr) {
    cut->rhs = value;
    return 0;
  }
  return mdlset_term(var, &cut->terms, value) < 0 ? 1 : 0;
}

// Reports as "delterm"; unlike the other term functions it marks the
// problem modified.
KVTL_API int mdldelcutterm(MDLcut cut, MDLvar var) {
  if (no_cut(cut, "delterm")) return 1;
  if (var == nullptr) {
    cut->rhs = 0;
  } else if (mdlset_term(var, &cut->terms, 0.0) < 0) {
    return 1;
  }
  mark_modified(cut->problem);
  return 0;
}

KVTL_API int mdldelcut(MDLcut cut) {
  if (no_cut(cut, "delcut")) return 1;
  mdldel_termlst(&cut->terms);
  mdlrecyclemem(cut->problem, cut, sizeof(mdl_cut));
  return 0;
}

// The cut reads: terms, relation, rhs; printed as the expression whose
// constant is the negated rhs.
KVTL_API int mdlprintcut(MDLcut cut) {
  if (cut == nullptr) {
    mdlerror(nullptr, MDL_W_NOCUT, "printcut");
    return 1;
  }
  mdlprintf_prob(cut->problem, "CUT(%d):", cut->id);
  mdl_expr expr{-cut->rhs, cut->terms, nullptr};
  int rc = mdlprintexpr(cut->problem, &expr, cut_type(cut), 0.0);
  cut->terms = expr.lin;   // printing strips the list, which may replace it
  return rc;
}

// Cuts are outside the matrix: the problem is not marked modified.
KVTL_API int mdlsetcut(MDLcut cut, MDLexpr expr, int type) {
  if (no_cut(cut, "setcut")) return 1;
  MDLtermlst copy = nullptr;
  if (expr != nullptr && mdldup_termlst(&copy, expr->lin) < 0) return 1;
  mdldel_termlst(&cut->terms);
  cut->terms = copy;
  set_cut_type(cut, type);
  cut->rhs = expr == nullptr || expr->constant == 0 ? 0.0 : -expr->constant;
  return 0;
}

KVTL_API int mdlappcut(MDLcut cut, MDLexpr expr) {
  if (no_cut(cut, "appcut")) return 1;
  if (expr == nullptr) return 0;
  if (mdladd_termlst(&cut->terms, &expr->lin) < 0) return 1;
  cut->rhs -= expr->constant;
  return 0;
}
