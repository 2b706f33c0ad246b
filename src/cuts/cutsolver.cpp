/*
 * cutsolver.cpp -- cuts and the engine: cut mode, sending cuts to the
 * current node problem and reading the engine's cut pool back into cuts.
 */
#include <stdio.h>

#include "cuts/cuts.h"
#include "model/records.h"
#include "problem/problem.h"
#include "kvsl.h"
#include "solver/solver.h"

using namespace kvtl;

namespace {

// Status bits after which the engine no longer holds this model's matrix
// as loaded: modified, regeneration forced, presolved.
constexpr uint32_t stale_matrix = MDL_ST_MODIFIED | MDL_ST_REGEN | MDL_ST_PRESOLVED;

constexpr char row_letters[] = "NLGER";

// The model variable of an engine column: the column table's entry when it
// carries that column, else the first variable in the table that does.
mdl_var *variable_of_column(MDLprob prob, int col) {
  if (prob->colvars == nullptr || col < 0) return nullptr;
  if (col < prob->ncols) {
    mdl_var *v = prob->colvars[col];
    if (v != nullptr && v->column == static_cast<uint32_t>(col)) return v;
  }
  for (int j = 0; j < prob->ncols; ++j) {
    mdl_var *v = prob->colvars[j];
    if (v != nullptr && v->column == static_cast<uint32_t>(col)) return v;
  }
  return nullptr;
}

int type_of_letter(char c) {
  switch (c) {
    case 'L': return MDL_CTR_L;
    case 'G': return MDL_CTR_G;
    case 'E': return MDL_CTR_E;
    default: return 0;
  }
}

}  // namespace

// Mode 0 lets the engine presolve the search; otherwise presolve and
// dual reductions stay off so columns keep the numbers the cuts use.
KVTL_API int mdlsetcutmode_prob(MDLprob prob, int mode) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "setcutmode");
    return 1;
  }
  prob->cutmode = mode;
  if (mode == 0) {
    KVSLsetintcontrol(prob->kvsl, KVSL_CTRL_MIPPRESOLVE, 1);
  } else {
    KVSLsetintcontrol(prob->kvsl, KVSL_CTRL_MIPPRESOLVE, 0);
    KVSLsetintcontrol(prob->kvsl, KVSL_CTRL_DUALREDUCTIONS, 0);
  }
  return 0;
}

// Cuts without a non-zero term take no slot; the k-th cut sent in this
// call gets row position rows + k.
KVTL_API int mdladdcuts_prob(MDLprob prob, MDLcut *cuts, int ncuts) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "addcuts");
    return 1;
  }
  if ((prob->status & stale_matrix) != 0 && mdlloadmat_prob(prob) != 0) return 1;
  if (prob->cutmode < 1) {
    mdlerror(prob, MDL_W_CUTMODE);
    mdlsetcutmode_prob(prob, 1);
  }
  if (ncuts < 1) return 0;
  if (cuts == nullptr) {
    mdlerror(prob, MDL_E_NOCUT, "addcuts");
    return 1;
  }
  int slots = 0;
  int64_t coefs = 0;
  for (int i = 0; i < ncuts; ++i) {
    if (cuts[i] == nullptr) {
      mdlerror(prob, MDL_E_NOCUT, "addcuts");
      return 1;
    }
    mdlstriptermlst(&cuts[i]->terms);
    int n = mdlget_termlst_len(&cuts[i]->terms);
    if (n > 0) {
      ++slots;
      coefs += n;
    }
  }
  if (coefs == 0) return 0;
  int *ids = nullptr, *cols = nullptr;
  char *types = nullptr;
  double *rhs = nullptr, *vals = nullptr;
  int64_t *start = nullptr;
  hook_block block;
  if (!carve_block(prob, block, [&](block_layout &b) {
        b.take(start, static_cast<size_t>(slots) + 1);
        b.take(rhs, static_cast<size_t>(slots));
        b.take(vals, static_cast<size_t>(coefs));
        b.take(ids, static_cast<size_t>(slots));
        b.take(cols, static_cast<size_t>(coefs));
        b.take(types, static_cast<size_t>(slots));
      }))
    return 1;
  int k = 0;
  int64_t pos = 0;
  for (int i = 0; i < ncuts; ++i) {
    MDLcut cut = cuts[i];
    const int64_t first = pos;
    const void *head = cut->terms == nullptr ? nullptr : cut->terms->first;
    for (auto *t = static_cast<const mdl_term *>(head); t != nullptr; t = t->next) {
      if (t->coef == 0) continue;
      cols[pos] = static_cast<int>(t->var->column);
      vals[pos] = t->coef;
      ++pos;
    }
    if (pos == first) continue;
    types[k] = cut_type(cut) < 5 ? row_letters[cut_type(cut)] : 'N';
    ids[k] = cut->id;
    rhs[k] = cut->rhs;
    start[k] = first;
    ++k;
    set_cut_row(cut, static_cast<uint32_t>(prob->nrows + k));
  }
  start[k] = pos;
  int rc = KVSLaddcuts(prob->kvsl, k, ids, types, rhs, start, cols, vals);
  if (engine_failed(prob, "addcuts", "addcuts", rc)) return 1;
  fflush(stdout);
  return 0;
}

// Reads the whole pool: its size first, then the coefficient count, then
// the data.  Cuts made before a failure stay allocated and chained.
KVTL_API int mdlgetcuts_prob(MDLprob prob, MDLcut *first, int *ncoefs) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "getcuts");
    return 0;
  }
  if ((prob->status & stale_matrix) != 0) {
    mdlerror(prob, MDL_W_DIFFPROB, "getcuts");
    return 0;
  }
  int n = 0;
  KVSLcut probe[1] = {nullptr};
  if (engine_failed(prob, "getcuts", "getcutlist", KVSLgetcutlist(prob->kvsl, -1, -1, &n, 1, probe)))
    return 0;
  if (n <= 0) {
    if (ncoefs != nullptr) *ncoefs = 0;
    return 0;
  }
  KVSLcut *handles = nullptr;
  int64_t *start = nullptr;
  hook_block heads;
  if (!carve_block(prob, heads, [&](block_layout &b) {
        b.take(handles, static_cast<size_t>(n));
        b.take(start, static_cast<size_t>(n) + 1);
      }))
    return 0;
  if (engine_failed(prob, "getcuts", "getcutlist", KVSLgetcutlist(prob->kvsl, -1, -1, &n, n, handles)))
    return 0;
  if (engine_failed(prob, "getcuts", "getcpcuts",
                    KVSLgetcpcuts(prob->kvsl, handles, n, 1, nullptr, nullptr, start, nullptr,
                                  nullptr, nullptr)))
    return 0;
  const int64_t total = start[n];
  if (ncoefs != nullptr) *ncoefs = static_cast<int>(total);
  int *ids = nullptr, *cols = nullptr;
  char *types = nullptr;
  double *rhs = nullptr, *vals = nullptr;
  hook_block data;
  if (!carve_block(prob, data, [&](block_layout &b) {
        b.take(rhs, static_cast<size_t>(n));
        b.take(vals, static_cast<size_t>(total) + 1);
        b.take(ids, static_cast<size_t>(n));
        b.take(cols, static_cast<size_t>(total) + 1);
        b.take(types, static_cast<size_t>(n));
      }))
    return 0;
  if (engine_failed(prob, "getcuts", "getcpcuts",
                    KVSLgetcpcuts(prob->kvsl, handles, n, static_cast<int>(total), ids, types,
                                  start, cols, vals, rhs)))
    return 0;
  if (first != nullptr) *first = nullptr;
  MDLcut last = nullptr;
  for (int i = 0; i < n; ++i) {
    const int type = type_of_letter(types[i]);
    MDLcut cut = mdlnewcut_prob(prob, type == 0 ? 1 : type, ids[i]);
    if (cut == nullptr) return 0;
    if (type == 0) set_cut_type(cut, 0);
    cut->rhs = rhs[i];
    if (last == nullptr) {
      if (first != nullptr) *first = cut;
    } else {
      last->next = cut;
    }
    last = cut;
    for (int64_t p = start[i]; p < start[i + 1]; ++p) {
      mdl_var *v = variable_of_column(prob, cols[p]);
      if (v == nullptr) {
        mdlerror(prob, MDL_E_CUTTERM);
        return 0;
      }
      if (mdladdcutterm(cut, v, vals[p]) != 0) return 0;
    }
  }
  return n;
}
