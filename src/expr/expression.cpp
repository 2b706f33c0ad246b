/*
 * expression.cpp -- free-standing expression objects (constant, linear and
 * quadratic term lists): creation, arithmetic, products and evaluation.
 */
#include <stdint.h>

#include <algorithm>

#include "expr/termlist.h"
#include "kvtl.h"
#include "model/records.h"
#include "solver/solver.h"

namespace kvtl {

namespace {

// Report a missing expression that the function `fn` would change.
bool no_target(MDLexpr expr, const char *fn) {
  if (expr != nullptr) return false;
  mdlerror(nullptr, MDL_E_INTERNAL, fn);
  return true;
}

// Strip the quadratic list when anything is pending and the linear list
// when it holds set operations, as a product needs them.
void strip_for_product(mdl_expr *e) {
  if (e->lin != nullptr && e->lin->resets != 0) mdlstriptermlst(&e->lin);
  if (e->quad != nullptr && e->quad->pending != 0) mdlstripqtermlst(&e->quad);
}

// The value a variable contributes with: its solution value when it has a
// column, else the feasible value nearest to 0 when 0 is not feasible;
// false when it has no column and may be 0 (it contributes nothing).
bool var_value(MDLvar var, double &value) {
  if (column_of(var) >= 0) {
    value = mdlgetsol(var);
    return true;
  }
  value = 0;
  return mdlisvarzerofeas(var, &value) == 0;
}

// One product term of two linear terms, its pair in handle order.
struct pair_product {
  MDLvar v1;
  MDLvar v2;
  double coef;
};

// Number of nodes of a list.
template <class Node>
size_t count_nodes(const mdl_termlst *l) {
  size_t n = 0;
  if (l != nullptr)
    for (auto *t = static_cast<const Node *>(l->first); t != nullptr; t = t->next) ++n;
  return n;
}

// Add the products of every pair of non-zero terms of the stripped lists a
// and b into the empty quadratic list *out.  The products are sorted by pair
// first, so that every term is appended at the end of the list; a pair met
// twice (x*y and y*x) is summed before it is stored.  -1 when memory runs
// out (*out is then released), else 0.
int multiply_lists(const mdl_termlst *a, const mdl_termlst *b, MDLtermlst *out) {
  const size_t na = count_nodes<mdl_term>(a), nb = count_nodes<mdl_term>(b);
  if (na == 0 || nb == 0) return 0;
  if (nb > SIZE_MAX / sizeof(pair_product) / na) {
    mdlerror(nullptr, MDL_E_NOMEM);
    return -1;
  }
  auto *prods = static_cast<pair_product *>(mdlsl_malloc(na * nb * sizeof(pair_product)));
  if (prods == nullptr) {
    mdlerror(nullptr, MDL_E_NOMEM);
    return -1;
  }
  size_t n = 0;
  for (auto *s = static_cast<const mdl_term *>(a->first); s != nullptr; s = s->next) {
    if (s->coef == 0) continue;
    for (auto *t = static_cast<const mdl_term *>(b->first); t != nullptr; t = t->next) {
      if (t->coef == 0) continue;
      MDLvar v1 = s->var, v2 = t->var;
      if (reinterpret_cast<uintptr_t>(v2) < reinterpret_cast<uintptr_t>(v1)) std::swap(v1, v2);
      prods[n++] = {v1, v2, s->coef * t->coef};
    }
  }
  std::sort(prods, prods + n, [](const pair_product &p, const pair_product &q) {
    auto key = [](const pair_product &r) {
      return std::pair(reinterpret_cast<uintptr_t>(r.v1), reinterpret_cast<uintptr_t>(r.v2));
    };
    return key(p) < key(q);
  });
  int rc = 0;
  for (size_t i = 0; i < n && rc == 0;) {
    double sum = prods[i].coef;
    size_t j = i + 1;
    for (; j < n && prods[j].v1 == prods[i].v1 && prods[j].v2 == prods[i].v2; ++j)
      sum += prods[j].coef;
    if (mdladd_qterm(prods[i].v1, prods[i].v2, out, sum) < 0) rc = -1;
    i = j;
  }
  mdlsl_free(prods);
  if (rc != 0) mdldel_qtermlst(out);
  return rc;
}

// Replace the lists of `e` by `lin` and `quad` and its constant.
void replace_contents(mdl_expr *e, MDLtermlst lin, MDLtermlst quad, double constant) {
  mdldel_termlst(&e->lin);
  mdldel_qtermlst(&e->quad);
  e->lin = lin;
  e->quad = quad;
  e->constant = constant;
}

// A becomes a copy of B times `factor` (B may be A); -1 when memory runs
// out, A unchanged.
int assign_scaled(mdl_expr *a, const mdl_expr *b, double factor) {
  MDLtermlst lin = nullptr, quad = nullptr;
  if (mdldup_termlst(&lin, b->lin) < 0) return -1;
  if (mdldup_qtermlst(&quad, b->quad) < 0) {
    mdldel_termlst(&lin);
    return -1;
  }
  replace_contents(a, lin, quad, b->constant);
  return mdlmulcexpr(a, factor);
}

// Both A and B have linear terms and no quadratic ones: A becomes the full
// product.  Built aside, so a failure leaves A as it was.
int multiply_linear(mdl_expr *a, mdl_expr *b) {
  const double ca = a->constant, cb = b->constant;
  mdlstriptermlst(&a->lin);
  mdlstriptermlst(&b->lin);
  MDLtermlst lin = nullptr, part = nullptr, quad = nullptr;
  if (cb != 0) {
    if (mdldup_termlst(&lin, a->lin) < 0) return -1;
    mdlmulc_termlst(&lin, cb);
  }
  if (ca != 0) {
    if (mdldup_termlst(&part, b->lin) < 0) {
      mdldel_termlst(&lin);
      return -1;
    }
    mdlmulc_termlst(&part, ca);
    const int rc = mdladd_termlst(&lin, &part);
    mdldel_termlst(&part);
    if (rc < 0) {
      mdldel_termlst(&lin);
      return -1;
    }
  }
  if (multiply_lists(a->lin, b->lin, &quad) < 0) {
    mdldel_termlst(&lin);
    return -1;
  }
  replace_contents(a, lin, quad, ca * cb);
  return 0;
}

// Strip a list whose first node is 0 and tell whether it holds a non-zero
// term.  A non-zero first node answers at once (pending operations only
// touch variables inside the run); a zero first node may stay without
// anything pending, when a term was added beyond a cancelled `last`.
bool holds_terms(MDLtermlst *list, bool quad) {
  if (*list == nullptr) return false;
  if (*static_cast<const double *>((*list)->first) == 0) {
    if (quad)
      mdlstripqtermlst(list);
    else
      mdlstriptermlst(list);
  }
  if (*list == nullptr) return false;
  if (quad) {
    for (auto *t = static_cast<const mdl_qterm *>((*list)->first); t != nullptr; t = t->next)
      if (t->coef != 0) return true;
  } else {
    for (auto *t = static_cast<const mdl_term *>((*list)->first); t != nullptr; t = t->next)
      if (t->coef != 0) return true;
  }
  return false;
}

}  // namespace

}  // namespace kvtl

using namespace kvtl;

// A new expression from the global pool, holding one term (none for a zero
// coefficient).  The object is given back when its first term cannot be
// stored.
KVTL_API MDLexpr mdlnewexpr(MDLvar x, MDLvar y, double coef) {
  auto *e = static_cast<MDLexpr>(mdlallocmem(nullptr, sizeof(mdl_expr), 1));
  if (e == nullptr) return nullptr;
  if (coef != 0 && mdladdexpr_term(e, x, y, coef) != 0) {
    mdlrecyclemem(nullptr, e, sizeof(mdl_expr));
    return nullptr;
  }
  return e;
}

// *copy receives a new expression equal to `expr` (null reads as empty);
// 1 and a null *copy on failure.
KVTL_API int mdldupexpr(MDLexpr *copy, MDLexpr expr) {
  if (copy == nullptr) {
    mdlerror(nullptr, MDL_E_INTERNAL, "dupexpr");
    return 1;
  }
  *copy = nullptr;
  MDLexpr e = mdlnewexpr(nullptr, nullptr, 0);
  if (e == nullptr) return 1;
  if (mdlassignexpr(e, expr) != 0) {
    mdlrecyclemem(nullptr, e, sizeof(mdl_expr));
    return 1;
  }
  *copy = e;
  return 0;
}

KVTL_API int mdldelexpr(MDLexpr expr) {
  if (expr == nullptr) return 0;
  mdlclearexpr(expr);
  mdlrecyclemem(nullptr, expr, sizeof(mdl_expr));
  return 0;
}

KVTL_API int mdlclearexpr(MDLexpr expr) {
  if (expr == nullptr) return 0;
  replace_contents(expr, nullptr, nullptr, 0.0);
  return 0;
}

// The copies are made before the target's old lists are released, so a
// failure leaves the target as it was.
KVTL_API int mdlassignexpr(MDLexpr target, MDLexpr source) {
  if (no_target(target, "assignexpr")) return -1;
  if (target == source) return 0;
  if (source == nullptr) return mdlclearexpr(target);
  return assign_scaled(target, source, 1.0);
}

// Target plus source.  When both of the source's lists must be added, the
// quadratic sum is formed on a copy first, so that a failure in either sum
// leaves the target as it was.
KVTL_API int mdladdexpr(MDLexpr target, MDLexpr source) {
  if (no_target(target, "addexpr")) return -1;
  if (source == nullptr) return 0;
  const double constant = source->constant;
  if (source->quad == nullptr) {
    if (mdladd_termlst(&target->lin, &source->lin) < 0) return -1;
  } else if (source->lin == nullptr) {
    if (mdladd_qtermlst(&target->quad, &source->quad) < 0) return -1;
  } else {
    MDLtermlst quad = nullptr;
    if (mdldup_qtermlst(&quad, target->quad) < 0) return -1;
    if (mdladd_qtermlst(&quad, &source->quad) < 0 ||
        mdladd_termlst(&target->lin, &source->lin) < 0) {
      mdldel_qtermlst(&quad);
      return -1;
    }
    mdldel_qtermlst(&target->quad);
    target->quad = quad;
  }
  target->constant += constant;
  return 0;
}

// y alone (x null) is a linear term of y; x and y a quadratic term; x alone
// a linear term; neither the constant.
KVTL_API int mdladdexpr_term(MDLexpr expr, MDLvar x, MDLvar y, double coef) {
  if (no_target(expr, "addexpr_term")) return 1;
  if (coef == 0) return 0;
  int rc;
  if (y != nullptr)
    rc = x == nullptr ? mdladd_term(y, &expr->lin, coef) : mdladd_qterm(x, y, &expr->quad, coef);
  else if (x == nullptr) {
    expr->constant += coef;
    rc = 0;
  } else
    rc = mdladd_term(x, &expr->lin, coef);
  return rc < 0 ? 1 : 0;
}

// As mdladdexpr_term with set operations; a zero coefficient removes the
// term, and with no variable the constant is set.
KVTL_API int mdlsetexpr_term(MDLexpr expr, MDLvar x, MDLvar y, double coef) {
  if (no_target(expr, "setexpr_term")) return 1;
  int rc;
  if (y != nullptr)
    rc = x == nullptr ? mdlset_term(y, &expr->lin, coef) : mdlset_qterm(x, y, &expr->quad, coef);
  else if (x == nullptr) {
    expr->constant = coef;
    rc = 0;
  } else
    rc = mdlset_term(x, &expr->lin, coef);
  return rc < 0 ? 1 : 0;
}

KVTL_API int mdlmulcexpr(MDLexpr expr, double factor) {
  if (no_target(expr, "mulcexpr")) return -1;
  if (factor == 0) return mdlclearexpr(expr);
  if (factor == -1) return mdlchsexpr(expr);
  expr->constant *= factor;
  mdlmulc_termlst(&expr->lin, factor);
  mdlmulc_qtermlst(&expr->quad, factor);
  return 0;
}

KVTL_API int mdlchsexpr(MDLexpr expr) {
  if (no_target(expr, "chsexpr")) return -1;
  expr->constant = -expr->constant;
  mdlchs_termlst(&expr->lin);
  mdlchs_qtermlst(&expr->quad);
  return 0;
}

// Target times factor: 1 (target unchanged) when the product would have a
// term of degree three or four, -1 when memory runs out (target unchanged).
KVTL_API int mdlmulexpr(MDLexpr target, MDLexpr factor) {
  if (no_target(target, "mulexpr")) return -1;
  mdl_expr empty{0.0, nullptr, nullptr};
  mdl_expr *a = target;
  mdl_expr *b = factor != nullptr ? factor : &empty;
  strip_for_product(a);
  strip_for_product(b);
  if (holds_terms(&a->quad, true)) {
    if (holds_terms(&b->quad, true) || holds_terms(&b->lin, false)) return 1;
    return mdlmulcexpr(a, b->constant);
  }
  if (holds_terms(&b->quad, true)) {
    if (holds_terms(&a->lin, false)) return 1;
    if (a->constant == 0) return 0;
    return assign_scaled(a, b, a->constant);
  }
  if (!holds_terms(&b->lin, false)) return mdlmulcexpr(a, b->constant);
  if (!holds_terms(&a->lin, false)) return assign_scaled(a, b, a->constant);
  return multiply_linear(a, b);
}

KVTL_API int mdlgetstatexpr(MDLexpr expr) {
  if (expr == nullptr) return 0;
  return (holds_terms(&expr->lin, false) ? 1 : 0) | (holds_terms(&expr->quad, true) ? 2 : 0);
}

// The value at the current solution.  Pending additions are summed as they
// stand; only pending set operations need the list merged first.
KVTL_API double mdlevalexpr(MDLexpr expr) {
  if (expr == nullptr) return 0.0;
  if (expr->lin != nullptr && expr->lin->resets != 0) mdlstriptermlst(&expr->lin);
  if (expr->quad != nullptr && expr->quad->resets != 0) mdlstripqtermlst(&expr->quad);
  double value = expr->constant;
  if (expr->lin != nullptr)
    for (auto *t = static_cast<const mdl_term *>(expr->lin->first); t != nullptr; t = t->next) {
      double x;
      if (var_value(t->var, x)) value += t->coef * x;
    }
  if (expr->quad != nullptr)
    for (auto *t = static_cast<const mdl_qterm *>(expr->quad->first); t != nullptr; t = t->next) {
      double x, y;
      if (var_value(t->var1, x) && var_value(t->var2, y)) value += t->coef * x * y;
    }
  return value;
}
