/*
 * generate.cpp -- matrix generation: numbers the model's columns, rows and
 * sets, builds the engine's load arrays and loads them with the objective
 * constant, special rows, names and branching directives.
 */
#include <string.h>

#include <algorithm>
#include <functional>

#include "core/errors.h"
#include "core/runtime.h"
#include "expr/termlist.h"
#include "problem/problem.h"
#include "solver/solver.h"

namespace kvtl {
namespace {

constexpr int default_priority = 500;
constexpr int max_priority = 1000;
constexpr int pseudo_cost_control = KVSL_CTRL_PSEUDOCOST;

template <class F>
void for_each_term(mdl_termlst *list, F &&visit) {
  if (list == nullptr) return;
  for (auto *t = static_cast<mdl_term *>(list->first); t != nullptr; t = t->next) visit(*t);
}

// for_each_term that also fetches the variable record of the term
// `distance` nodes ahead while the current one is visited: the nodes of one
// constraint lie together in the pool, its variables anywhere.
template <class F>
void for_each_term_fetching_vars(mdl_termlst *list, F &&visit) {
  if (list == nullptr) return;
  constexpr int distance = 8;
  auto *first = static_cast<mdl_term *>(list->first);
  mdl_term *ahead = first;
  for (int k = 0; k < distance && ahead != nullptr; ++k) {
    __builtin_prefetch(ahead->var);
    ahead = ahead->next;
  }
  for (mdl_term *t = first; t != nullptr; t = t->next) {
    if (ahead != nullptr) {
      __builtin_prefetch(ahead->var);
      ahead = ahead->next;
    }
    visit(*t);
  }
}

template <class F>
void for_each_qterm(mdl_termlst *list, F &&visit) {
  if (list == nullptr) return;
  for (auto *t = static_cast<mdl_qterm *>(list->first); t != nullptr; t = t->next) visit(*t);
}

inline mdl_var *indicator_var(const mdl_ctr *c) {
  return reinterpret_cast<mdl_var *>(c->mode & ~static_cast<uintptr_t>(1));
}

inline bool is_indicator(const mdl_ctr *c) { return c->mode > MDL_MODE_INCVARS; }

// An empty row that every point satisfies is left out; a violated one is
// kept so that the engine reports the infeasibility.
bool trivially_satisfied(const mdl_ctr *c) {
  double k = c->expr.constant;
  switch (c->type) {
    case MDL_CTR_L: return k <= 0;
    case MDL_CTR_G: return k >= 0;
    case MDL_CTR_E: return k == 0;
    case MDL_CTR_R: return k <= 0 && k + c->range >= 0;
    default: return true;
  }
}

// The name the engine gets for an object: its own, or its generated name.
const char *object_name(const char *name, const void *handle, char (&buf)[24]) {
  return name != nullptr ? name : mdlmktn(buf, handle);
}

// Load arrays, one block (plus one each for quadratic rows and sets).
struct load_arrays {
  char *rowtype = nullptr;
  double *rhs = nullptr, *range = nullptr;
  double *obj = nullptr, *lb = nullptr, *ub = nullptr;
  int64_t *colstart = nullptr;
  int *rowind = nullptr;
  double *rowval = nullptr;
  int *qobjcol1 = nullptr, *qobjcol2 = nullptr;
  double *qobjval = nullptr;
  int *indrow = nullptr, *indcol = nullptr, *indflag = nullptr;
  int *modcuts = nullptr, *delayed = nullptr;
  int *entcol = nullptr;
  char *enttype = nullptr;
  double *entlimit = nullptr;
  int *qrow = nullptr;
  int64_t *qrowcount = nullptr;
  int *qrowcol1 = nullptr, *qrowcol2 = nullptr;
  double *qrowval = nullptr;
  char *settype = nullptr;
  int64_t *setstart = nullptr;
  int *setcol = nullptr;
  double *setref = nullptr;
};

// The serials of the matrix's coefficients in the order in which both
// constraint passes meet them.  The first pass reads every term's variable
// anyway; the second reads the serials back in sequence instead of the
// variable records again, which lie all over the pool (a cache miss per
// coefficient of a row whose variables were made far apart).
class serial_log {
 public:
  serial_log() = default;
  ~serial_log() { clear(); }
  serial_log(const serial_log &) = delete;
  serial_log &operator=(const serial_log &) = delete;

  // Append one serial; false when no block can be had.
  bool push(uint32_t serial) {
    if (tail_ == nullptr || tail_->used == tail_->size) {
      if (!grow()) return false;
    }
    tail_->data()[tail_->used++] = serial;
    return true;
  }
  // Read from the first serial on; next() must not pass the last one.
  void rewind() {
    read_ = head_;
    pos_ = 0;
  }
  uint32_t next() {
    if (pos_ == read_->used) {
      read_ = read_->next;
      pos_ = 0;
    }
    return read_->data()[pos_++];
  }
  void clear() {
    while (head_ != nullptr) {
      chunk *next = head_->next;
      mdlsl_free(head_);
      head_ = next;
    }
    tail_ = read_ = nullptr;
  }

 private:
  struct chunk {
    chunk *next;
    size_t size, used;
    uint32_t *data() { return reinterpret_cast<uint32_t *>(this + 1); }
  };
  // Chunks double from a small first one, so that a small model takes
  // little and a large one few blocks.
  static constexpr size_t first_chunk = 1024, largest_chunk = size_t{1} << 20;

  bool grow() {
    size_t size = tail_ == nullptr ? first_chunk : std::min(tail_->size * 2, largest_chunk);
    auto *c = static_cast<chunk *>(mdlsl_malloc(sizeof(chunk) + size * sizeof(uint32_t)));
    if (c == nullptr) return false;
    c->next = nullptr;
    c->size = size;
    c->used = 0;
    (tail_ != nullptr ? tail_->next : head_) = c;
    tail_ = c;
    return true;
  }

  chunk *head_ = nullptr, *tail_ = nullptr, *read_ = nullptr;
  size_t pos_ = 0;
};

// One full generation.  Numbers given during the run are taken back by the
// destructor unless the load was recorded on the problem.
class generator {
 public:
  explicit generator(MDLprob prob) : prob_(prob), nvars_(prob->varcount) {}
  ~generator();
  int run();

 private:
  bool enter_var(mdl_var *v, bool counted);
  bool number_constraints();
  bool map_serials();
  bool number_objective();
  void compact();
  bool fill_columns();
  bool fill_rows();
  bool build_sets();
  bool build_quadratic_rows();
  bool load();
  bool load_extras();
  bool send_names();
  int call_load(const char **call);
  bool inconsistent();

  MDLprob prob_;
  int32_t nvars_;
  hook_block table_block_, counts_block_, arrays_block_, qrows_block_, sets_block_;
  mdl_var **table_ = nullptr;   // by serial, then (compacted) by column
  int *counts_ = nullptr;       // coefficients per column
  load_arrays a_;
  int ncols_ = 0, nrows_ = 0, nnz_ = 0, nentities_ = 0;
  int nqrows_ = 0, nqrowterms_ = 0, nqobj_ = 0;
  int nmodcuts_ = 0, ndelayed_ = 0, nindicators_ = 0;
  int nsets_ = 0, nsetelems_ = 0;
  serial_log serials_;          // of the counted terms, for the second pass
  hook_block column_of_block_;
  int *column_of_ = nullptr;    // column by serial; null while they are equal
  bool foreign_ = false;        // a term refers to a variable of another problem
  bool nomem_ = false;          // the serial log could not grow
  bool recorded_ = false;
};

generator::~generator() {
  if (recorded_) return;
  if (table_ != nullptr)
    for (int32_t s = 0; s < nvars_; ++s)
      if (table_[s] != nullptr) table_[s]->column = no_number;
  for (mdl_ctr *c = prob_->ctrs; c != nullptr; c = c->next) c->row = no_number;
  for (mdl_sos *s = prob_->soss; s != nullptr; s = s->next) s->index = 0;
}

// Number a variable met in the model: the first time it gets its serial as
// provisional column and (when `counted`) one coefficient; later meetings
// count one more coefficient when `counted`.
bool generator::enter_var(mdl_var *v, bool counted) {
  if (v == nullptr || v->problem != prob_ || v->serial >= static_cast<uint32_t>(nvars_)) {
    foreign_ = true;
    return false;
  }
  if (v->column == no_number) {
    v->column = v->serial;
    table_[v->serial] = v;
    counts_[v->serial] = counted ? 1 : 0;
    if (v->type != MDL_VAR_CONT) ++nentities_;
    ++ncols_;
  } else if (v->column >= static_cast<uint32_t>(nvars_) || table_[v->column] != v) {
    foreign_ = true;
    return false;
  } else if (counted) {
    ++counts_[v->column];
  }
  return true;
}

// First pass over the constraints: strip, number variables, give rows.
bool generator::number_constraints() {
  for (mdl_ctr *c = prob_->ctrs; c != nullptr; c = c->next) {
    c->row = no_number;
    const bool incvars = c->mode == MDL_MODE_INCVARS;
    if (c->type == MDL_CTR_N && !incvars) continue;
    mdlstriptermlst(&c->expr.lin);
    mdlstripqtermlst(&c->expr.quad);
    int nlin = 0, nquad = 0;
    for_each_term_fetching_vars(c->expr.lin, [&](mdl_term &t) {
      if (t.coef == 0) return;
      ++nlin;
      if (enter_var(t.var, !incvars) && !incvars && !serials_.push(t.var->serial)) nomem_ = true;
    });
    for_each_qterm(c->expr.quad, [&](mdl_qterm &t) {
      if (t.coef == 0) return;
      ++nquad;
      enter_var(t.var1, false);
      enter_var(t.var2, false);
    });
    if (nomem_) return false;
    if (incvars) continue;
    if (nlin == 0 && nquad == 0 && trivially_satisfied(c)) continue;
    c->row = static_cast<uint32_t>(nrows_++);
    nnz_ += nlin;
    if (nquad > 0) {
      ++nqrows_;
      nqrowterms_ += nquad;
    }
    if (c->mode == MDL_MODE_MODCUT) ++nmodcuts_;
    if (c->mode == MDL_MODE_DELAYED) ++ndelayed_;
    if (is_indicator(c)) {
      ++nindicators_;
      enter_var(indicator_var(c), false);
    }
  }
  return !foreign_;
}

// Objective pass: its variables become columns (without coefficients in
// the matrix); an empty objective is worth a warning only.
bool generator::number_objective() {
  mdl_ctr *obj = prob_->objective;
  int nlin = 0;
  if (obj != nullptr) {
    mdlstriptermlst(&obj->expr.lin);
    mdlstripqtermlst(&obj->expr.quad);
    for_each_term(obj->expr.lin, [&](mdl_term &t) {
      if (t.coef == 0) return;
      ++nlin;
      enter_var(t.var, false);
    });
    for_each_qterm(obj->expr.quad, [&](mdl_qterm &t) {
      if (t.coef == 0) return;
      ++nqobj_;
      enter_var(t.var1, false);
      enter_var(t.var2, false);
    });
  }
  if (nlin == 0 && nqobj_ == 0)
    mdlerror(prob_, MDL_W_PROBHASNO, "loadmat", translate("objective function"));
  return !foreign_;
}

// Columns are the numbered variables in creation order: close the holes of
// the serial-indexed table.
void generator::compact() {
  int k = 0;
  for (int32_t s = 0; s < nvars_; ++s) {
    mdl_var *v = table_[s];
    if (v == nullptr) continue;
    table_[k] = v;
    counts_[k] = counts_[s];
    v->column = static_cast<uint32_t>(k);
    ++k;
  }
  for (int32_t s = k; s < nvars_; ++s) table_[s] = nullptr;
}

// After compaction (and reordering) a column is found from a serial: the
// serial itself while every variable is a column in creation order, else
// through a table.
bool generator::map_serials() {
  if (ncols_ == nvars_ && prob_->colorder == 0) return true;
  if (!column_of_block_.allocate(static_cast<size_t>(nvars_) * sizeof(int))) {
    mdlerror(prob_, MDL_E_NOMEM);
    return false;
  }
  column_of_ = reinterpret_cast<int *>(column_of_block_.get());
  for (int j = 0; j < ncols_; ++j) column_of_[table_[j]->serial] = static_cast<int>(table_[j]->column);
  return true;
}

bool generator::inconsistent() {
  mdlerror(prob_, MDL_E_GENINCONS, "loadmat");
  return false;
}

// Objective coefficients, bounds and global entities of every column.
bool generator::fill_columns() {
  std::fill(a_.obj, a_.obj + ncols_, 0.0);
  mdl_ctr *obj = prob_->objective;
  if (obj != nullptr) {
    for_each_term(obj->expr.lin, [&](mdl_term &t) {
      if (t.coef != 0) a_.obj[t.var->column] = t.coef;
    });
    int k = 0;
    for_each_qterm(obj->expr.quad, [&](mdl_qterm &t) {
      if (t.coef == 0) return;
      a_.qobjcol1[k] = static_cast<int>(t.var1->column);
      a_.qobjcol2[k] = static_cast<int>(t.var2->column);
      // The engine takes half of the quadratic form.
      a_.qobjval[k] = t.var1 == t.var2 ? 2 * t.coef : t.coef;
      ++k;
    });
  }
  int made = 0;
  for (int j = 0; j < ncols_; ++j) {
    const mdl_var *v = table_[j];
    a_.lb[j] = v->lb;
    a_.ub[j] = v->ub;
    char letter = 0;
    double limit = 0;
    switch (v->type) {
      case MDL_VAR_BIN: letter = 'B'; break;
      case MDL_VAR_INT: letter = 'I'; break;
      case MDL_VAR_PINT: letter = 'P'; limit = v->limit; break;
      case MDL_VAR_SEMI:
        if (v->lb <= 0) {
          letter = 'S';
          limit = v->limit;
        } else {
          // With a positive lower bound the variable cannot be 0: a plain
          // continuous column.
          if (v->lb < v->limit) a_.ub[j] = v->limit;
          --nentities_;
        }
        break;
      case MDL_VAR_SEMIINT:
        if (v->lb <= 0) {
          letter = 'R';
          limit = v->limit;
        } else {
          if (v->lb < v->limit) a_.ub[j] = v->limit;
          letter = 'I';
        }
        break;
      default: break;
    }
    if (letter == 0) continue;
    if (made < nentities_) {
      a_.entcol[made] = j;
      a_.enttype[made] = letter;
      a_.entlimit[made] = limit;
    }
    ++made;
  }
  return made == nentities_ || inconsistent();
}

// Column starts, then the second pass over the constraints: right-hand
// sides, ranges, types, coefficients and the special row lists.
bool generator::fill_rows() {
  // Each column's start serves as its fill position while the rows are
  // walked (one random access a coefficient instead of two) and is moved
  // back by the column's count afterwards.
  int64_t start = 0;
  for (int j = 0; j < ncols_; ++j) {
    a_.colstart[j] = start;
    start += counts_[j];
  }
  int ncut = 0, ndel = 0, nind = 0;
  serials_.rewind();
  for (mdl_ctr *c = prob_->ctrs; c != nullptr; c = c->next) {
    if (c->row == no_number) continue;
    const int r = static_cast<int>(c->row);
    a_.rhs[r] = c->expr.constant == 0 ? 0.0 : -c->expr.constant;
    a_.range[r] = c->range;
    a_.rowtype[r] = type_letters[8 + c->type];
    for_each_term(c->expr.lin, [&](mdl_term &t) {
      if (t.coef == 0) return;
      const uint32_t serial = serials_.next();
      const uint32_t col = column_of_ != nullptr ? static_cast<uint32_t>(column_of_[serial]) : serial;
      const int64_t at = a_.colstart[col]++;
      a_.rowind[at] = r;
      a_.rowval[at] = t.coef;
    });
    if (c->mode == MDL_MODE_MODCUT && ncut < nmodcuts_) a_.modcuts[ncut++] = r;
    if (c->mode == MDL_MODE_DELAYED && ndel < ndelayed_) a_.delayed[ndel++] = r;
    if (is_indicator(c) && nind < nindicators_) {
      a_.indrow[nind] = r;
      a_.indcol[nind] = static_cast<int>(indicator_var(c)->column);
      a_.indflag[nind] = (c->mode & 1) != 0 ? 1 : -1;
      ++nind;
    }
  }
  for (int j = 0; j < ncols_; ++j) a_.colstart[j] -= counts_[j];
  return (ncut == nmodcuts_ && ndel == ndelayed_ && nind == nindicators_) || inconsistent();
}

// Sets with at least one member that has a column, numbered from 1.
bool generator::build_sets() {
  for (mdl_sos *s = prob_->soss; s != nullptr; s = s->next) {
    s->index = 0;
    mdlstriptermlst(&s->elements);
    int members = 0;
    for_each_term(s->elements, [&](mdl_term &t) {
      if (t.coef == 0) return;
      if (t.var->problem != prob_) foreign_ = true;
      else if (t.var->column != no_number) ++members;
    });
    if (members == 0) continue;
    s->index = static_cast<uint32_t>(++nsets_);
    nsetelems_ += members;
  }
  if (foreign_) return inconsistent();
  // Carved even without sets: the start array always has nsets + 1 entries.
  if (!carve_block(prob_, sets_block_, [&](block_layout &l) {
        l.take(a_.settype, static_cast<size_t>(nsets_));
        l.take(a_.setstart, static_cast<size_t>(nsets_) + 1);
        l.take(a_.setcol, static_cast<size_t>(nsetelems_));
        l.take(a_.setref, static_cast<size_t>(nsetelems_));
      }))
    return false;
  int64_t k = 0;
  for (mdl_sos *s = prob_->soss; s != nullptr; s = s->next) {
    if (s->index == 0) continue;
    const int n = static_cast<int>(s->index) - 1;
    a_.settype[n] = type_letters[s->type];
    a_.setstart[n] = k;
    for_each_term(s->elements, [&](mdl_term &t) {
      if (t.coef == 0 || t.var->column == no_number) return;
      a_.setcol[k] = static_cast<int>(t.var->column);
      a_.setref[k] = t.coef;
      ++k;
    });
  }
  a_.setstart[nsets_] = k;
  return true;
}

// Quadratic rows: a symmetric matrix with each off-diagonal pair once.
bool generator::build_quadratic_rows() {
  if (nqrows_ == 0) return true;
  if (!carve_block(prob_, qrows_block_, [&](block_layout &l) {
        l.take(a_.qrow, static_cast<size_t>(nqrows_));
        l.take(a_.qrowcount, static_cast<size_t>(nqrows_));
        l.take(a_.qrowcol1, static_cast<size_t>(nqrowterms_));
        l.take(a_.qrowcol2, static_cast<size_t>(nqrowterms_));
        l.take(a_.qrowval, static_cast<size_t>(nqrowterms_));
      }))
    return false;
  int q = 0, k = 0;
  for (mdl_ctr *c = prob_->ctrs; c != nullptr; c = c->next) {
    if (c->row == no_number || c->expr.quad == nullptr) continue;
    int64_t n = 0;
    for_each_qterm(c->expr.quad, [&](mdl_qterm &t) {
      if (t.coef == 0 || k >= nqrowterms_) return;
      a_.qrowcol1[k] = static_cast<int>(t.var1->column);
      a_.qrowcol2[k] = static_cast<int>(t.var2->column);
      a_.qrowval[k] = t.var1 == t.var2 ? t.coef : t.coef / 2;
      ++k;
      ++n;
    });
    if (n == 0) continue;
    if (q == nqrows_) return inconsistent();
    a_.qrow[q] = static_cast<int>(c->row);
    a_.qrowcount[q] = n;
    ++q;
  }
  return (q == nqrows_ && k == nqrowterms_) || inconsistent();
}

// The one engine load call that fits the model's features; `call` gets its
// name for messages.
int generator::call_load(const char **call) {
  const bool global = nentities_ > 0 || nsets_ > 0;
  const bool qrows = nqrows_ > 0;
  const bool qobj = nqobj_ > 0;
  KVSLprob kp = prob_->kvsl;
  const char *name = prob_->filebase;
  const load_arrays &a = a_;
  if (!global && !qrows && !qobj) {
    *call = "loadlp";
    return KVSLloadlp64(kp, name, ncols_, nrows_, a.rowtype, a.rhs, a.range, a.obj, a.colstart,
                        counts_, a.rowind, a.rowval, a.lb, a.ub);
  }
  if (!global && !qrows) {
    *call = "loadqp";
    return KVSLloadqp64(kp, name, ncols_, nrows_, a.rowtype, a.rhs, a.range, a.obj, a.colstart,
                        counts_, a.rowind, a.rowval, a.lb, a.ub, nqobj_, a.qobjcol1, a.qobjcol2,
                        a.qobjval);
  }
  if (!global) {
    *call = "loadqcqp";
    return KVSLloadqcqp64(kp, name, ncols_, nrows_, a.rowtype, a.rhs, a.range, a.obj, a.colstart,
                          counts_, a.rowind, a.rowval, a.lb, a.ub, nqobj_, a.qobjcol1,
                          a.qobjcol2, a.qobjval, nqrows_, a.qrow, a.qrowcount, a.qrowcol1,
                          a.qrowcol2, a.qrowval);
  }
  if (!qrows && !qobj) {
    *call = "loadglobal";
    return KVSLloadglobal64(kp, name, ncols_, nrows_, a.rowtype, a.rhs, a.range, a.obj,
                            a.colstart, counts_, a.rowind, a.rowval, a.lb, a.ub, nentities_,
                            nsets_, a.enttype, a.entcol, a.entlimit, a.settype, a.setstart,
                            a.setcol, a.setref);
  }
  if (!qrows) {
    *call = "loadqglobal";
    return KVSLloadqglobal64(kp, name, ncols_, nrows_, a.rowtype, a.rhs, a.range, a.obj,
                             a.colstart, counts_, a.rowind, a.rowval, a.lb, a.ub, nqobj_,
                             a.qobjcol1, a.qobjcol2, a.qobjval, nentities_, nsets_, a.enttype,
                             a.entcol, a.entlimit, a.settype, a.setstart, a.setcol, a.setref);
  }
  *call = "loadqcqpglobal";
  return KVSLloadqcqpglobal64(kp, name, ncols_, nrows_, a.rowtype, a.rhs, a.range, a.obj,
                              a.colstart, counts_, a.rowind, a.rowval, a.lb, a.ub, nqobj_,
                              a.qobjcol1, a.qobjcol2, a.qobjval, nqrows_, a.qrow, a.qrowcount,
                              a.qrowcol1, a.qrowcol2, a.qrowval, nentities_, nsets_, a.enttype,
                              a.entcol, a.entlimit, a.settype, a.setstart, a.setcol, a.setref);
}

bool generator::load() {
  const char *call = "loadlp";
  int rc = call_load(&call);
  return !engine_failed(prob_, "loadmat", call, rc);
}

// Objective constant, then model cuts, indicators and delayed rows.
bool generator::load_extras() {
  mdl_ctr *obj = prob_->objective;
  if (obj != nullptr && obj->expr.constant != 0) {
    // The engine keeps the constant with the opposite sign.
    const int col = -1;
    const double value = -obj->expr.constant;
    if (engine_failed(prob_, "loadmat", "chgobj", KVSLchgobj(prob_->kvsl, 1, &col, &value)))
      return false;
  }
  int rc = 0;
  if (nmodcuts_ > 0) rc = KVSLloadmodelcuts(prob_->kvsl, nmodcuts_, a_.modcuts);
  if (rc == 0 && nindicators_ > 0)
    rc = KVSLsetindicators(prob_->kvsl, nindicators_, a_.indrow, a_.indcol, a_.indflag);
  if (rc == 0 && ndelayed_ > 0) rc = KVSLloaddelayedrows(prob_->kvsl, ndelayed_, a_.delayed);
  return !engine_failed(prob_, "loadmat", "indic/mcuts/delayed", rc);
}

// Hand the names of `count` objects to the engine as one buffer of texts,
// each ended by its zero byte; name_at(i, buf) gives the i-th name and is
// called for i = 0, 1, ... in turn.  The buffer is sized from the longest
// name entered (or a generated name), so one walk over the objects fills
// it; a name that would not fit (none should) makes a second walk that
// measures every name first.
template <class F>
bool add_names(MDLprob prob, int type, int count, F &&name_at) {
  constexpr size_t generated_max = 18;   // "x" and 16 hex digits
  const size_t slot = std::max(static_cast<size_t>(std::max(prob->maxnamelen, 0)), generated_max) + 1;
  char tmp[24];
  hook_block buffer;
  size_t bytes = slot * static_cast<size_t>(count);
  bool fits = true;
  for (int pass = 0; pass < 2; ++pass) {
    if (!buffer.allocate(bytes)) {
      mdlerror(prob, MDL_E_NOMEM);
      return false;
    }
    char *p = buffer.get();
    const char *end = p + bytes;
    fits = true;
    for (int i = 0; i < count && fits; ++i) {
      const char *name = name_at(i, tmp);
      size_t len = strlen(name) + 1;
      fits = len <= static_cast<size_t>(end - p);
      if (fits) memcpy(p, name, len);
      p += len;
    }
    if (fits) break;
    bytes = 0;
    for (int i = 0; i < count; ++i) bytes += strlen(name_at(i, tmp)) + 1;
  }
  return !engine_failed(prob, "loadmat", "addnames",
                        KVSLaddnames(prob->kvsl, type, buffer.get(), 0, count - 1));
}

// Row names (constraint list order), set names, column names.
bool generator::send_names() {
  if (prob_->dictsize < 1) return true;
  if (nrows_ > 0) {
    mdl_ctr *c = nullptr;
    if (!add_names(prob_, 1, nrows_, [&](int i, char (&buf)[24]) {
          if (i == 0) c = prob_->ctrs;
          while (c->row == no_number) c = c->next;
          mdl_ctr *named = c;
          c = c->next;
          return object_name(named->name, named, buf);
        }))
      return false;
  }
  if (nsets_ > 0) {
    mdl_sos *s = nullptr;
    if (!add_names(prob_, 3, nsets_, [&](int i, char (&buf)[24]) {
          if (i == 0) s = prob_->soss;
          while (s->index == 0) s = s->next;
          mdl_sos *named = s;
          s = s->next;
          return object_name(named->name, named, buf);
        }))
      return false;
  }
  return add_names(prob_, 2, ncols_, [&](int i, char (&buf)[24]) {
    return object_name(table_[i]->name, table_[i], buf);
  });
}

int generator::run() {
  if (prob_->varcount < 1) {
    mdlerror(prob_, MDL_E_PROBHASNO, "loadmat", translate("variables"));
    return 1;
  }
  release_results(prob_);
  if (prob_->colvars != nullptr) {
    for (int j = 0; j < prob_->ncols; ++j) prob_->colvars[j]->column = no_number;
    mdlsl_free(prob_->colvars);
    prob_->colvars = nullptr;
  }
  prob_->ncols = prob_->nrows = prob_->nsets = prob_->nnz = 0;
  const size_t n = static_cast<size_t>(nvars_);
  if (!table_block_.allocate(n * sizeof(mdl_var *)) || !counts_block_.allocate(n * sizeof(int))) {
    mdlerror(prob_, MDL_E_NOMEM);
    return 1;
  }
  table_ = reinterpret_cast<mdl_var **>(table_block_.get());
  counts_ = reinterpret_cast<int *>(counts_block_.get());
  std::fill(table_, table_ + n, nullptr);
  std::fill(counts_, counts_ + n, 0);

  if (!number_constraints() || !number_objective()) {
    if (nomem_) mdlerror(prob_, MDL_E_NOMEM);
    else inconsistent();
    return 1;
  }
  if (ncols_ == 0) {
    mdlerror(prob_, MDL_E_PROBHASNO, "loadmat", translate("variables or constraints"));
    return 1;
  }
  compact();
  if (prob_->colorder != 0 && mdlreordercols(table_, counts_, ncols_) != 0) return 1;
  if (!map_serials()) return 1;

  if (!carve_block(prob_, arrays_block_, [&](block_layout &l) {
        const size_t rows = static_cast<size_t>(nrows_), cols = static_cast<size_t>(ncols_);
        l.take(a_.rhs, rows);
        l.take(a_.range, rows);
        l.take(a_.lb, cols);
        l.take(a_.ub, cols);
        l.take(a_.obj, cols);
        l.take(a_.colstart, cols);
        l.take(a_.rowind, static_cast<size_t>(nnz_));
        l.take(a_.rowval, static_cast<size_t>(nnz_));
        l.take(a_.qobjcol1, static_cast<size_t>(nqobj_));
        l.take(a_.qobjcol2, static_cast<size_t>(nqobj_));
        l.take(a_.qobjval, static_cast<size_t>(nqobj_));
        l.take(a_.indrow, static_cast<size_t>(nindicators_));
        l.take(a_.indcol, static_cast<size_t>(nindicators_));
        l.take(a_.indflag, static_cast<size_t>(nindicators_));
        l.take(a_.modcuts, static_cast<size_t>(nmodcuts_));
        l.take(a_.delayed, static_cast<size_t>(ndelayed_));
        l.take(a_.entcol, static_cast<size_t>(nentities_));
        l.take(a_.entlimit, static_cast<size_t>(nentities_));
        l.take(a_.enttype, static_cast<size_t>(nentities_));
        l.take(a_.rowtype, rows);
      }))
    return 1;
  if (!fill_columns() || !fill_rows()) return 1;
  serials_.clear();
  column_of_block_.reset();
  column_of_ = nullptr;
  if (!build_sets() || !build_quadratic_rows()) return 1;
  if (!load() || !load_extras()) return 1;
  // The engine holds its own copy now: give the arrays back before the
  // names take their buffer, which lowers the peak of a large load.
  a_ = load_arrays{};
  arrays_block_.reset();
  qrows_block_.reset();
  sets_block_.reset();
  counts_block_.reset();
  counts_ = nullptr;
  if (!send_names()) return 1;

  prob_->ncols = ncols_;
  prob_->nnz = nnz_;
  prob_->colvars = static_cast<mdl_var **>(table_block_.release());
  prob_->nrows = nrows_;
  prob_->nsets = nsets_;
  prob_->status = MDL_ST_LOADED | MDL_ST_DIRPENDING;
  recorded_ = true;
  return 0;
}

// Loaded sets sorted by address, so that a set directive's target can be
// found without reading a record that may have been deleted since.
struct loaded_set {
  const void *sos;
  int number;
  bool operator<(const loaded_set &o) const { return std::less<const void *>{}(sos, o.sos); }
};

// Send the branching directives: one entry per column or loaded set, the
// later directives for an object changing its entry.
int load_directives(MDLprob prob) {
  if (prob->dirhead == nullptr || (prob->status & MDL_ST_DIRPENDING) == 0) return 0;
  const int ncols = prob->ncols, nsets = prob->nsets;
  const size_t cap = static_cast<size_t>(ncols) + static_cast<size_t>(nsets);
  hook_block block;
  int *obj = nullptr, *prio = nullptr, *entry_of = nullptr;
  char *dir = nullptr;
  double *up = nullptr, *down = nullptr;
  loaded_set *sets = nullptr;
  if (!carve_block(prob, block, [&](block_layout &l) {
        l.take(up, cap);
        l.take(down, cap);
        l.take(sets, static_cast<size_t>(nsets));
        l.take(obj, cap);
        l.take(prio, cap);
        l.take(entry_of, cap);   // columns first, then set number - 1
        l.take(dir, cap);
      }))
    return 1;
  std::fill(entry_of, entry_of + cap, -1);
  int nloaded = 0;
  for (mdl_sos *s = prob->soss; s != nullptr && nloaded < nsets; s = s->next)
    if (s->index != 0 && s->index <= static_cast<uint32_t>(nsets))
      sets[nloaded++] = {s, static_cast<int>(s->index)};
  std::sort(sets, sets + nloaded);
  double pseudo_cost = 0;
  if (engine_failed(prob, "loadmat", "getdblcontrol",
                    KVSLgetdblcontrol(prob->kvsl, pseudo_cost_control, &pseudo_cost)))
    return 1;
  int n = 0;
  for (const mdl_dir *d = prob->dirhead; d != nullptr; d = d->next) {
    int target, slot;
    if ((d->kind & MDL_DIR_SOSFLAG) != 0) {
      const loaded_set key{d->target, 0};
      const loaded_set *it = std::lower_bound(sets, sets + nloaded, key);
      if (it == sets + nloaded || it->sos != d->target) continue;
      target = -it->number;
      slot = ncols + it->number - 1;
    } else {
      const auto *v = static_cast<const mdl_var *>(d->target);
      if (v == nullptr || v->problem != prob || column_of(v) < 0) continue;
      target = slot = column_of(v);
    }
    int e = entry_of[slot];
    if (e < 0) {
      e = entry_of[slot] = n++;
      obj[e] = target;
      prio[e] = default_priority;
      dir[e] = 'N';
      up[e] = down[e] = pseudo_cost;
    }
    switch (d->kind & ~MDL_DIR_SOSFLAG) {
      case 1:
        prio[e] = !(d->value > 0) ? 0 : d->value >= max_priority ? max_priority : static_cast<int>(d->value);
        break;
      case 2: dir[e] = 'U'; break;
      case 3: dir[e] = 'D'; break;
      case 4: up[e] = d->value; break;
      case 5: down[e] = d->value; break;
      default: break;
    }
  }
  if (engine_failed(prob, "loadmat", "loaddirs", KVSLloaddirs(prob->kvsl, n, obj, prio, dir, up, down)))
    return 1;
  return 0;
}

// Directives pending are sent; then the sense, which every load resets.
int finish_load(MDLprob prob) {
  if (load_directives(prob) != 0) return 1;
  prob->status &= ~static_cast<uint32_t>(MDL_ST_DIRPENDING);
  const int sense = prob->sense == 1 ? 1 : -1;
  return engine_failed(prob, "loadmat", "chgobjsense", KVSLchgobjsense(prob->kvsl, sense)) ? 1 : 0;
}

}  // namespace
}  // namespace kvtl

using namespace kvtl;

// Generate and load the matrix when the model changed (or nothing from it
// is loaded yet); otherwise only send pending directives and the sense.
KVTL_API int mdlloadmat_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "loadmat");
    return 1;
  }
  if (!library_initialised() && mdlslinit() != 0) return 1;
  const uint32_t full = MDL_ST_MODIFIED | MDL_ST_REGEN;
  if ((prob->status & full) != 0 || (prob->status & MDL_ST_LOADED) == 0) {
    generator gen(prob);
    if (gen.run() != 0) return 1;
  }
  return finish_load(prob);
}

// Sort the columns by name (ties keep their order), permute the counts the
// same way and give the variables their new column numbers.
KVTL_API int mdlreordercols(MDLvar *colvars, int *counts, int ncols) {
  if (colvars == nullptr || counts == nullptr || ncols < 1) return 0;
  const size_t n = static_cast<size_t>(ncols);
  hook_block block;
  const char **names = nullptr;
  char(*generated)[24] = nullptr;
  mdl_var **vars = nullptr;
  int *perm = nullptr, *oldcounts = nullptr;
  if (!carve_block(colvars[0]->problem, block, [&](block_layout &l) {
        l.take(names, n);
        l.take(vars, n);
        l.take(generated, n);
        l.take(perm, n);
        l.take(oldcounts, n);
      }))
    return 1;
  for (size_t j = 0; j < n; ++j) {
    vars[j] = colvars[j];
    oldcounts[j] = counts[j];
    perm[j] = static_cast<int>(j);
    names[j] = object_name(colvars[j]->name, colvars[j], generated[j]);
  }
  std::sort(perm, perm + n, [&](int x, int y) {
    int c = strcmp(names[x], names[y]);   // compares bytes as unsigned char
    return c < 0 || (c == 0 && x < y);
  });
  for (size_t j = 0; j < n; ++j) {
    colvars[j] = vars[perm[j]];
    counts[j] = oldcounts[perm[j]];
    colvars[j]->column = static_cast<uint32_t>(j);
  }
  return 0;
}
