/*
 * lpwrite.cpp -- the LP file writer: objective, constraints, sets, bounds,
 * type sections and ranges of the generated model, read from the records.
 */
#include <math.h>

#include "core/errors.h"
#include "io/writers.h"

namespace kvtl {

namespace {

constexpr double inf = 1e20;
constexpr size_t wrap_after = 75;

// Output with a count of the characters on the current line (term lines
// and name lists break on it).
struct lp_out {
  out_file &out;
  size_t count = 0;

  void put(const char *text) {
    const size_t n = strlen(text);
    out.put(text, n);
    count += n;
  }
  void put_real(double v) { count += out.put_real(v); }
  void wrap() {
    out.put('\n');
    count = 0;
  }
  void wrap_if_long() {
    if (count > wrap_after) wrap();
  }
};

// A bound or limit: "infinity", "-infinity" or the number in the format.
void put_bound(out_file &out, double v) {
  if (v == inf)
    out.put("infinity", 8);
  else if (v == -inf)
    out.put("-infinity", 9);
  else
    out.put_real(v);
}

const char *var_name(const mdl_var *v, char (&buf)[24]) { return entity_name(v->name, v, buf); }

// Linear part of a term line: terms with a zero coefficient are skipped,
// a coefficient of absolute value 1 is not written.
void put_linear(lp_out &o, const mdl_termlst *lin) {
  mdl_term *t = first_nonzero(lin);
  if (t == nullptr) return;
  o.put(t->coef < 0 ? " - " : " ");
  char buf[24];
  while (t != nullptr) {
    o.wrap_if_long();
    const double a = fabs(t->coef);
    if (a != 1) {
      o.put_real(a);
      o.put(" ");
    }
    o.put(var_name(t->var, buf));
    t = nonzero_from(t->next);
    if (t != nullptr) o.put(t->coef < 0 ? " - " : " + ");
  }
}

// Quadratic part in brackets; the objective's coefficients are doubled and
// the bracket divided by 2.
void put_quadratic(lp_out &o, const mdl_ctr *c, bool objective) {
  mdl_qterm *q = first_qnonzero(c->expr.quad);
  if (q == nullptr) return;
  const double factor = objective ? 2 : 1;
  const bool neg = q->coef < 0;
  if (c->expr.lin != nullptr)
    o.put(neg ? " + [ - " : " + [ ");
  else
    o.put(neg ? " [ - " : " [ ");
  char b1[24], b2[24];
  while (q != nullptr) {
    o.wrap_if_long();
    const double a = fabs(q->coef * factor);
    if (a != 1) {
      o.put_real(a);
      o.put(" ");
    }
    o.put(var_name(q->var1, b1));
    if (q->var1 == q->var2) {
      o.put("^2");
    } else {
      o.put(" * ");
      o.put(var_name(q->var2, b2));
    }
    q = nonzero_qfrom(q->next);
    if (q != nullptr) o.put(q->coef < 0 ? " - " : " + ");
  }
  o.put(objective ? " ] / 2" : " ]");
}

// One objective or constraint line.
void put_term_line(lp_out &o, const mdl_ctr *c, bool objective) {
  char buf[24];
  o.count = 0;
  o.put(entity_name(c->name, c, buf));
  o.put(":");
  if (has_indicator(c)) {
    o.put(" ");
    o.put(var_name(indicator_of(c), buf));
    o.put(indicator_value(c) != 0 ? "=1 ->" : "=0 ->");
  }
  put_linear(o, c->expr.lin);
  put_quadratic(o, c, objective);
  const double k = c->expr.constant;
  if (objective) {
    if (o.count > wrap_after) o.wrap();
    if (k != 0) {
      o.put(k < 0 ? " - " : " + ");
      o.put_real(fabs(k));
    }
    return;
  }
  const char *rel = c->type == MDL_CTR_G ? " >= " : c->type == MDL_CTR_E ? " = " : " <= ";
  o.put(rel);
  if (k == 0)
    o.put("0");
  else
    o.put_real(-k);
  o.wrap();
}

// One set line: the members with a non-zero weight, the weight written
// unless its absolute value is 1.
void put_sos_line(lp_out &o, const mdl_sos *s) {
  mdl_term *t = first_nonzero(s->elements);
  if (t == nullptr) return;
  char buf[24];
  o.count = 0;
  o.put(entity_name(s->name, s, buf));
  o.put(":");
  o.put(t->coef < 0 ? " -" : " ");
  while (t != nullptr) {
    o.wrap_if_long();
    const double a = fabs(t->coef);
    if (a != 1) {
      o.put(" ");
      o.put_real(a);
      o.put(" ");
    }
    o.put(var_name(t->var, buf));
    t = nonzero_from(t->next);
    if (t != nullptr) o.put(t->coef < 0 ? " - " : " + ");
  }
  o.put(s->type == 0 ? " = S1" : " = S2");
  o.wrap();
}

// The bounds line of a column; returns whether it counts for its type
// section.  Binaries and integers have the default upper bound 1.
bool put_bounds(out_file &out, const mdl_var *v) {
  char buf[24];
  const double l = v->lb, u = v->ub;
  const double d = v->type == MDL_VAR_BIN || v->type == MDL_VAR_INT ? 1 : inf;
  const char *name = var_name(v, buf);
  // The two forms with the bound before the name use the stored name.
  const char *stored = v->name != nullptr ? v->name : "(null)";
  if (l == u) {
    out.put(name);
    out.put(" = ", 3);
    put_bound(out, l);
    out.put('\n');
    return false;
  }
  if (l == 0 && u == d) return true;
  if (l == 0) {
    out.put(name);
    out.put(" <= ", 4);
    put_bound(out, u);
  } else if (l == -inf && u == inf) {
    out.put(name);
    out.put(" Free", 5);
  } else {
    put_bound(out, l);
    out.put(" <= ", 4);
    out.put(stored);
    if (u != d) {
      out.put(" <= ", 4);
      put_bound(out, u);
    }
  }
  out.put('\n');
  return true;
}

// "Integers" / "Binaries": the names of every column of the type.
void put_name_list(lp_out &o, MDLprob prob, uint32_t type, const char *heading) {
  o.out.put(heading);
  o.count = 0;
  char buf[24];
  for (int j = 0; j < prob->ncols; ++j) {
    const mdl_var *v = prob->colvars[j];
    if (v->type != type) continue;
    if (o.count >= wrap_after + 1) o.wrap();
    o.put(var_name(v, buf));
    o.put(" ");
  }
  o.wrap();
}

// Partial integers and semi-continuous sections: name and limit.
void put_limit_list(out_file &out, MDLprob prob, uint32_t type, const char *heading) {
  out.put(heading);
  char buf[24];
  for (int j = 0; j < prob->ncols; ++j) {
    const mdl_var *v = prob->colvars[j];
    if (v->type != type) continue;
    out.put(var_name(v, buf));
    out.put(" > ", 3);
    put_bound(out, v->limit);
    out.put('\n');
  }
}

}  // namespace

int write_lp(MDLprob prob, out_file &out) {
  lp_out o{out};
  out.printf(translate("\\LP file generated from the problem `%s' by the\n"
                       "\\Korvex Tessel Library Korvex-Tessel\n"),
             prob->filebase != nullptr ? prob->filebase : "");
  const mdl_ctr *obj = prob->objective;
  if (obj != nullptr && (obj->expr.lin != nullptr || obj->expr.quad != nullptr)) {
    out.put(prob->sense == 1 ? "\nMinimize\n" : "\nMaximize\n");
    put_term_line(o, obj, true);
  } else {
    out.put(translate("\\No objective defined"));
  }
  out.put("\n\nSubject To\n");
  int nranges = 0;
  for (const mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next) {
    if (c->type == MDL_CTR_N) continue;
    if (c->type == MDL_CTR_R) ++nranges;
    put_term_line(o, c, false);
  }
  if (prob->nsets > 0) {
    out.put("\n\\Special Ordered Sets\n");
    for (const mdl_sos *s = prob->soss; s != nullptr; s = s->next) put_sos_line(o, s);
  }
  out.put("\nBounds\n");
  int counted[6] = {0, 0, 0, 0, 0, 0};
  for (int j = 0; j < prob->ncols; ++j) {
    const mdl_var *v = prob->colvars[j];
    if (put_bounds(out, v)) ++counted[v->type < 6 ? v->type : 0];
  }
  if (counted[MDL_VAR_INT] > 0) put_name_list(o, prob, MDL_VAR_INT, "\nIntegers\n");
  if (counted[MDL_VAR_BIN] > 0) put_name_list(o, prob, MDL_VAR_BIN, "\nBinaries\n");
  if (counted[MDL_VAR_PINT] > 0) put_limit_list(out, prob, MDL_VAR_PINT, "\nPartial Integers\n");
  if (counted[MDL_VAR_SEMI] > 0) put_limit_list(out, prob, MDL_VAR_SEMI, "\nSemi Continuous\n");
  if (counted[MDL_VAR_SEMIINT] > 0) put_limit_list(out, prob, MDL_VAR_SEMIINT, "\nSemi Integers\n");
  if (nranges > 0) {
    out.put("\nRanges\n");
    char buf[24];
    for (const mdl_ctr *c = prob->ctrs; c != nullptr && nranges > 0; c = c->next) {
      if (c->type != MDL_CTR_R) continue;
      --nranges;
      out.put_real(-c->expr.constant - c->range);
      out.put(" <= ", 4);
      out.put(entity_name(c->name, c, buf));
      out.put(" <= ", 4);
      out.put_real(-c->expr.constant);
      out.put('\n');
    }
  }
  out.put("\nEnd\n");
  return 0;
}

}  // namespace kvtl
