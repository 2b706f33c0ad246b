/*
 * print.cpp -- readable reports of a problem and its objects (problem,
 * constraint, objective, set, variable, array of variables), all through
 * the problem's output.
 */
#include "core/errors.h"
#include "io/writers.h"
#include "model/arrays.h"
#include "problem/names.h"
#include "problem/problem.h"

namespace kvtl {

namespace {

constexpr int wrap_after = 75;

// One real number in the problem's format; returns its length.
int print_real(MDLprob prob, double value) { return mdlprintf_prob(prob, prob->realfmt, value); }

}  // namespace

}  // namespace kvtl

using namespace kvtl;

// Every constraint that is not free (newest first), the sets, the
// objective.  0, or 1 for no problem.
KVTL_API int mdlprintprob_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "printprob");
    return 1;
  }
  mdlprintf_prob(prob, translate("Problem %s\n"), prob->filebase != nullptr ? prob->filebase : "");
  if (prob->ctrs == nullptr) {
    mdlprintf_prob(prob, "%s", translate("No constraints.\n"));
  } else {
    for (mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next)
      if (c->type != MDL_CTR_N) mdlprintctr(c);
  }
  if (prob->soss != nullptr) {
    mdlprintf_prob(prob, "\nSpecial Ordered Sets:\n");
    for (mdl_sos *s = prob->soss; s != nullptr; s = s->next) mdlprintsos(s);
    mdlprintf_prob(prob, "\n");
  }
  if (prob->objective == nullptr) {
    mdlprintf_prob(prob, "%s", translate("\nNo objective defined.\n"));
  } else {
    mdlprintf_prob(prob, "%s", translate("\nObjective: "));
    mdlprintctr(prob->objective);
    mdlprintf_prob(prob, "\n\n");
  }
  return 0;
}

// "name: ", the indicator condition, then the expression with its relation
// and right-hand side.  The expression printer's result, or 1 for no
// constraint (a warning).
KVTL_API int mdlprintctr(MDLctr ctr) {
  if (ctr == nullptr) {
    mdlerror(nullptr, MDL_W_NOCTR, "printctr");
    return 1;
  }
  MDLprob prob = ctr->problem;
  mdlprintf_prob(prob, "%s: ", display_name(ctr->name, ctr));
  if (has_indicator(ctr)) {
    const mdl_var *v = indicator_of(ctr);
    mdlprintf_prob(prob, "%s=%d -> ", display_name(v->name, v), indicator_value(ctr));
  }
  return mdlprintexpr(prob, &ctr->expr, static_cast<int>(ctr->type), ctr->range);
}

// The objective as a constraint.  0, or 1 for no problem.
KVTL_API int mdlprintobj_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "printobj");
    return 1;
  }
  if (prob->objective == nullptr)
    mdlprintf_prob(prob, "%s", translate("No objective defined.\n"));
  else
    mdlprintctr(prob->objective);
  return 0;
}

// "name(type): " and the members "var(+weight) ", in canonical order, lines
// broken after 75 characters.  0, or 1 for no set (a warning).
KVTL_API int mdlprintsos(MDLsos sos) {
  if (sos == nullptr) {
    mdlerror(nullptr, MDL_W_NOSOS, "printsos");
    return 1;
  }
  MDLprob prob = sos->problem;
  int count = mdlprintf_prob(prob, "%s(%c): ", display_name(sos->name, sos),
                             type_letters[sos->type & 1]);
  mdlstriptermlst(&sos->elements);
  if (sos->elements == nullptr) return 0;
  for (auto *t = static_cast<mdl_term *>(sos->elements->first); t != nullptr; t = t->next) {
    if (count > wrap_after) {
      mdlprintf_prob(prob, "\n");
      count = 0;
    }
    count += mdlprintf_prob(prob, "%s(", display_name(t->var->name, t->var));
    if (t->coef >= 0) count += mdlprintf_prob(prob, "+");
    count += print_real(prob, t->coef);
    count += mdlprintf_prob(prob, ") ");
  }
  mdlprintf_prob(prob, "\n");
  return 0;
}

// "name: value" with a solution and a column, else "name: [lb,ub]" (the
// limit between them for partial-integer and semi-continuous types).  The
// number of characters printed; 0 for no variable (a warning).
KVTL_API int mdlprintvar(MDLvar var) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_W_NOVAR, "printvar");
    return 0;
  }
  MDLprob prob = var->problem;
  const char *name = display_name(var->name, var);
  if ((prob->status & MDL_ST_SOLUTION) != 0 && var->column < no_number)
    return mdlprintf_prob(prob, "%s: ", name) + print_real(prob, mdlgetsol(var));
  int n = mdlprintf_prob(prob, "%s: [", name);
  n += print_real(prob, var->lb);
  if (var->type == MDL_VAR_PINT || var->type == MDL_VAR_SEMI || var->type == MDL_VAR_SEMIINT) {
    n += mdlprintf_prob(prob, ",");
    n += print_real(prob, var->limit);
  }
  n += mdlprintf_prob(prob, ",");
  n += print_real(prob, var->ub);
  n += mdlprintf_prob(prob, "]");
  return n;
}

// The variables of a closed array, separated by ",  ", lines broken after
// 74 characters.  0; 1 for no array (an error).
KVTL_API int mdlprintarrvar(MDLarrvar arr) {
  if (arr == nullptr) {
    mdlerror(nullptr, MDL_E_NOARRVAR, "printarrvar");
    return 1;
  }
  const mdl_arrvar *head = array_header(arr);
  if (head->size < 1) return 0;
  MDLprob prob = head->problem;
  int count = 0;
  for (int64_t i = 0; i < head->size; ++i) {
    count += mdlprintvar(arr[i]);
    if (count > wrap_after - 1) {
      mdlprintf_prob(prob, "\n");
      count = 0;
    } else {
      count += mdlprintf_prob(prob, ",  ");
    }
  }
  if (count > 0) mdlprintf_prob(prob, "\n");
  return 0;
}
