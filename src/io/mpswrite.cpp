/*
 * mpswrite.cpp -- the fixed-column MPS writer: the row-wise constraint
 * records turned into per-column entry lists, then the RHS, RANGES,
 * quadratic, BOUNDS and INDICATORS sections.
 */
#include <math.h>

#include "core/errors.h"
#include "io/writers.h"
#include "solver/solver.h"

namespace kvtl {

namespace {

constexpr double inf = 1e20;
constexpr double int_cap = 2147483647.0;

// Column-wise entries: each column's list links entries pushed at its
// front, so rows come out in the reverse of the visiting order.  An entry
// keeps its constraint (null: the objective) to name its row.
struct column_entries {
  const mdl_ctr **row = nullptr;
  double *value = nullptr;
  int32_t *link = nullptr;
  int32_t *head = nullptr;
  int64_t capacity = 0;
  int64_t used = 0;
};

const char *row_name(const mdl_ctr *c, char (&buf)[24]) {
  return c == nullptr ? "*OBJ*" : entity_name(c->name, c, buf);
}

// "\n    name1     name2     " -- the start of every two-name record.
void put_pair(out_file &out, const char *a, const char *b) {
  out.put("\n    ", 5);
  out.put_padded(a, 8);
  out.put("  ", 2);
  out.put_padded(b, 8);
  out.put("  ", 2);
}

// A bound record "\n XX *BND*     name      value".
void put_bound(out_file &out, const char *kind, const char *name, double value) {
  out.put("\n ", 2);
  out.put(kind, 2);
  out.put(" *BND*     ", 11);
  out.put_padded(name, 8);
  out.put("  ", 2);
  out.put_real(value);
}

void put_flag_bound(out_file &out, const char *kind, const char *name) {
  out.put("\n ", 2);
  out.put(kind, 2);
  out.put(" *BND*     ", 11);
  out.put(name);
}

// Bounds of a continuous column (also the rest of a partial integer).
void put_continuous_bounds(out_file &out, const mdl_var *v, const char *name) {
  const double lb = v->lb, ub = v->ub;
  if (lb == 0 && ub == 0) {
    out.put("\n FX *BND*     ", 15);
    out.put_padded(name, 8);
    out.put("  0", 3);
  } else if (lb == 0) {
    if (ub != inf) put_bound(out, "UP", name, ub);
  } else if (lb == ub) {
    put_bound(out, "FX", name, lb);
  } else if (lb == -inf && ub == inf) {
    put_flag_bound(out, "FR", name);
  } else {
    put_bound(out, "LO", name, lb);
    if (ub != inf) put_bound(out, "UP", name, ub);
  }
}

void put_column_bounds(out_file &out, const mdl_var *v) {
  char buf[24];
  const char *name = entity_name(v->name, v, buf);
  const double lb = v->lb, ub = v->ub, lim = v->limit;
  switch (v->type) {
    case MDL_VAR_BIN:
      put_flag_bound(out, "BV", name);
      if (lb == 0) {
        if (ub != 1) put_bound(out, "UP", name, ub);
      } else {
        put_bound(out, "LO", name, lb);
      }
      break;
    case MDL_VAR_INT:
      put_bound(out, "UI", name, fmin(ub, int_cap));
      if (lb != 0) put_bound(out, "LO", name, fmax(lb, -int_cap));
      break;
    case MDL_VAR_PINT:
      put_bound(out, "PI", name, lim);
      put_continuous_bounds(out, v, name);
      break;
    case MDL_VAR_SEMI:
      if (lb > 0) {
        put_bound(out, "LO", name, fmax(lim, lb));
        if (ub != inf) put_bound(out, "UP", name, ub);
      } else {
        put_bound(out, "SC", name, ub);
        if (lim != 1) put_bound(out, "LO", name, lim);
      }
      break;
    case MDL_VAR_SEMIINT:
      if (lb > 0) {
        put_bound(out, "UI", name, fmin(ub, int_cap));
        put_bound(out, "LO", name, fmax(lim, lb));
      } else {
        put_bound(out, "SI", name, fmin(ub, int_cap));
        if (lim != 1) put_bound(out, "LO", name, lim);
      }
      break;
    default:
      put_continuous_bounds(out, v, name);
      break;
  }
}

// What the ROWS pass notes for the later sections.
struct row_notes {
  bool rhs = false;
  bool ranges = false;
  bool quadratic = false;
  int indicators = 0;
  double objrhs = 0;
};

// Push the non-zero linear terms of one row onto their columns' lists.
void push_row(MDLprob prob, column_entries &e, const mdl_ctr *c, const mdl_termlst *lin) {
  for (mdl_term *t = first_nonzero(lin); t != nullptr; t = nonzero_from(t->next)) {
    if (e.used >= e.capacity) {
      mdlerror(prob, MDL_E_MPSWRITE);
      continue;
    }
    const int32_t k = static_cast<int32_t>(e.used++);
    const uint32_t col = t->var->column;
    e.row[k] = c;
    e.value[k] = t->coef;
    e.link[k] = e.head[col];
    e.head[col] = k;
  }
}

bool in_matrix(const mdl_ctr *c) { return c->row != no_number; }

void put_rows(MDLprob prob, out_file &out, column_entries &e, row_notes &notes) {
  const mdl_ctr *obj = prob->objective;
  char buf[24];
  if (obj != nullptr && obj->expr.lin != nullptr) {
    push_row(prob, e, nullptr, obj->expr.lin);
    out.put(" N  *OBJ*\n", 10);
    notes.objrhs = -obj->expr.constant;
    if (notes.objrhs != 0) notes.rhs = true;
  }
  static const char *const row_line[] = {" N  ", " L  ", " G  ", " E  ", " L  "};
  for (const mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next) {
    if (!in_matrix(c)) continue;
    push_row(prob, e, c, c->expr.lin);
    out.put(row_line[c->type <= MDL_CTR_R ? c->type : 0], 4);
    out.put(entity_name(c->name, c, buf));
    out.put('\n');
    if (c->expr.constant != 0) notes.rhs = true;
    if (c->type == MDL_CTR_R) notes.ranges = true;
    if (c->expr.quad != nullptr) notes.quadratic = true;
    if (has_indicator(c)) ++notes.indicators;
  }
}

void put_columns(MDLprob prob, out_file &out, const column_entries &e) {
  out.put("\nCOLUMNS", 8);
  char vbuf[24], rbuf[24];
  for (int j = 0; j < prob->ncols; ++j) {
    const mdl_var *v = prob->colvars[j];
    const char *name = entity_name(v->name, v, vbuf);
    int32_t k = e.head[j];
    if (k < 0) {
      put_pair(out, name, "*OBJ*");
      out.put('0');
      continue;
    }
    for (; k >= 0; k = e.link[k]) {
      put_pair(out, name, row_name(e.row[k], rbuf));
      out.put_real(e.value[k]);
    }
  }
}

void put_sets(MDLprob prob, out_file &out) {
  out.put("\n\nSETS", 6);
  char sbuf[24], vbuf[24];
  for (const mdl_sos *s = prob->soss; s != nullptr; s = s->next) {
    const char *name = entity_name(s->name, s, sbuf);
    out.put(s->type == 0 ? "\n S1 " : "\n S2 ", 5);
    out.put(name);
    for (mdl_term *t = first_nonzero(s->elements); t != nullptr; t = nonzero_from(t->next)) {
      put_pair(out, name, entity_name(t->var->name, t->var, vbuf));
      out.put_real(t->coef);
    }
  }
}

void put_rhs_and_ranges(MDLprob prob, out_file &out, const row_notes &notes) {
  char buf[24];
  if (notes.rhs) {
    out.put("\n\nRHS", 5);
    for (const mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next) {
      if (!in_matrix(c) || c->expr.constant == 0) continue;
      out.put("\n    *RHS*     ", 15);
      out.put_padded(entity_name(c->name, c, buf), 8);
      out.put("  ", 2);
      out.put_real(-c->expr.constant);
    }
    if (notes.objrhs != 0) {
      out.put("\n    *RHS*     *OBJ*     ", 25);
      out.put_real(notes.objrhs);
    }
  }
  if (notes.ranges) {
    out.put("\n\nRANGES", 8);
    for (const mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next) {
      if (!in_matrix(c) || c->range == 0) continue;
      out.put("\n    *RNG*     ", 15);
      out.put_padded(entity_name(c->name, c, buf), 8);
      out.put("  ", 2);
      out.put_real(c->range);
    }
  }
}

// QUADOBJ holds each pair once (a diagonal entry doubled, being the second
// derivative); QCMATRIX holds the full symmetric matrix of a row.
void put_quadratic(MDLprob prob, out_file &out, const row_notes &notes) {
  char b1[24], b2[24];
  const mdl_ctr *obj = prob->objective;
  if (obj != nullptr && first_qnonzero(obj->expr.quad) != nullptr) {
    out.put("\n\nQUADOBJ", 9);
    for (mdl_qterm *q = first_qnonzero(obj->expr.quad); q != nullptr;
         q = nonzero_qfrom(q->next)) {
      put_pair(out, entity_name(q->var1->name, q->var1, b1),
               entity_name(q->var2->name, q->var2, b2));
      out.put_real(q->var1 == q->var2 ? 2 * q->coef : q->coef);
    }
  }
  if (!notes.quadratic) return;
  for (const mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next) {
    if (!in_matrix(c) || c->type == MDL_CTR_N || first_qnonzero(c->expr.quad) == nullptr)
      continue;
    out.put("\n\nQCMATRIX ", 11);
    out.put(entity_name(c->name, c, b1));
    for (mdl_qterm *q = first_qnonzero(c->expr.quad); q != nullptr; q = nonzero_qfrom(q->next)) {
      const char *n1 = entity_name(q->var1->name, q->var1, b1);
      const char *n2 = entity_name(q->var2->name, q->var2, b2);
      if (q->var1 == q->var2) {
        put_pair(out, n1, n2);
        out.put_real(q->coef);
      } else {
        put_pair(out, n1, n2);
        out.put_real(q->coef / 2);
        put_pair(out, n2, n1);
        out.put_real(q->coef / 2);
      }
    }
  }
}

void put_indicators(MDLprob prob, out_file &out) {
  out.put("\n\nINDICATORS", 12);
  char b1[24], b2[24];
  for (const mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next) {
    if (!in_matrix(c) || !has_indicator(c)) continue;
    const mdl_var *v = indicator_of(c);
    out.put("\n IF ", 5);
    out.put_padded(entity_name(c->name, c, b1), 8);
    out.put("  ", 2);
    out.put_padded(entity_name(v->name, v, b2), 8);
    out.put("  ", 2);
    out.put_int(indicator_value(c), 8);
  }
}

}  // namespace

int write_mps(MDLprob prob, out_file &out) {
  const mdl_ctr *obj = prob->objective;
  if (prob->ncols < 1 || (obj == nullptr && prob->nrows < 1)) return 0;
  column_entries e;
  e.capacity = prob->nnz;
  if (obj != nullptr && obj->expr.lin != nullptr) {
    auto *first = static_cast<mdl_term *>(obj->expr.lin->first);
    for (auto *t = first; t != nullptr; t = t->next) ++e.capacity;
    if (first != nullptr && (first->var == nullptr || first->coef == 0)) --e.capacity;
  }
  hook_block block;
  if (!carve_block(prob, block, [&](block_layout &l) {
        const size_t n = e.capacity > 0 ? static_cast<size_t>(e.capacity) : 0;
        l.take(e.row, n);
        l.take(e.value, n);
        l.take(e.link, n);
        l.take(e.head, static_cast<size_t>(prob->ncols));
      }))
    return 1;
  for (int j = 0; j < prob->ncols; ++j) e.head[j] = -1;

  out.put("NAME          ", 14);
  out.put(prob->filebase != nullptr ? prob->filebase : "");
  out.put(prob->sense == 2 ? "\nOBJSENSE\n MAXIMIZE\nROWS\n" : "\nROWS\n");
  row_notes notes;
  put_rows(prob, out, e, notes);
  put_columns(prob, out, e);
  if (prob->nsets > 0) put_sets(prob, out);
  put_rhs_and_ranges(prob, out, notes);
  put_quadratic(prob, out, notes);
  out.put("\n\nBOUNDS", 8);
  for (int j = 0; j < prob->ncols; ++j) put_column_bounds(out, prob->colvars[j]);
  if (notes.indicators > 0) put_indicators(prob, out);
  out.put("\n\nENDATA\n", 9);
  return 0;
}

}  // namespace kvtl
