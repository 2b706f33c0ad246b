/*
 * expr_model.cpp -- expressions turned into model entities: a constraint's
 * terms, the objective, and the members of a special ordered set.
 */
#include "kvtl.h"
#include "model/constraints.h"
#include "model/records.h"
#include "problem/problem.h"

using namespace kvtl;

namespace {

// Report a null constraint / set / problem of the function `fn`.
bool no_ctr(MDLctr ctr, const char *fn) {
  if (ctr != nullptr) return false;
  mdlerror(nullptr, MDL_E_NOCTR, fn);
  return true;
}

bool no_sos(MDLsos sos, const char *fn) {
  if (sos != nullptr) return false;
  mdlerror(nullptr, MDL_E_NOSOS, fn);
  return true;
}

}  // namespace

// The type is stored as given (the record keeps its three bits), and the
// constant is kept: the relation is expression, type, 0.
KVTL_API int mdlsetctr(MDLctr ctr, MDLexpr expr, int type) {
  if (no_ctr(ctr, "setctr")) return -1;
  mark_modified(ctr->problem);
  ctr->type = static_cast<uint32_t>(type) & 7u;
  return mdlassignexpr(&ctr->expr, expr);
}

KVTL_API int mdlappctr(MDLctr ctr, MDLexpr expr) {
  if (no_ctr(ctr, "appctr")) return -1;
  mark_modified(ctr->problem);
  return mdladdexpr(&ctr->expr, expr);
}

// The built-in record takes the expression and becomes the objective.
KVTL_API int mdlsetobjexpr(MDLprob prob, MDLexpr expr) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "setobjexpr");
    return -1;
  }
  if (mdlassignexpr(&prob->objrec.expr, expr) != 0) return -1;
  mark_modified(prob);
  prob->objective = &prob->objrec;
  return 1;
}

// The members become a copy of the linear terms (weights); the constant
// and quadratic terms play no part.  The copy is made before the old
// members go, so a failure leaves the set as it was.
KVTL_API int mdlsetsos(MDLsos sos, MDLexpr expr) {
  if (no_sos(sos, "setsos")) return -1;
  mark_modified(sos->problem);
  MDLtermlst members = nullptr;
  if (expr != nullptr && mdldup_termlst(&members, expr->lin) < 0) return -1;
  mdldel_termlst(&sos->elements);
  sos->elements = members;
  return 0;
}

KVTL_API int mdlappsos(MDLsos sos, MDLexpr expr) {
  if (no_sos(sos, "appsos")) return -1;
  mark_modified(sos->problem);
  if (expr == nullptr) return 0;
  return mdladd_termlst(&sos->elements, &expr->lin) < 0 ? -1 : 0;
}
