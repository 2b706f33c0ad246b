/*
 * basis.cpp -- bases saved in terms of constraints and variables, so that
 * they load again after the matrix was regenerated with other numbers.
 */
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "core/errors.h"
#include "solver/solver.h"

using namespace kvtl;

namespace {

// Word positions of the block.
constexpr size_t basis_problem = 0, basis_rows = 1, basis_cols = 2, basis_head = 3;
constexpr uint64_t status_bits = 3;

uint64_t *words(MDLbasis basis) { return reinterpret_cast<uint64_t *>(basis); }

uint64_t tagged(const void *record, int status) {
  return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(record)) |
         (static_cast<uint64_t>(status) & status_bits);
}

template <class T>
T *untagged(uint64_t word) {
  return reinterpret_cast<T *>(static_cast<uintptr_t>(word & ~status_bits));
}

// Positions of the records in the matrix, looked up by handle.
class position_table {
 public:
  void add(const void *record, int pos) { sorted_ = false, entries_.emplace_back(record, pos); }
  // The record's position, or -1.
  int find(const void *record) {
    if (record == nullptr) return -1;
    if (!sorted_) std::sort(entries_.begin(), entries_.end()), sorted_ = true;
    auto it = std::lower_bound(entries_.begin(), entries_.end(), std::make_pair(record, -1));
    return it != entries_.end() && it->first == record ? it->second : -1;
  }

 private:
  std::vector<std::pair<const void *, int>> entries_;
  bool sorted_ = false;
};

}  // namespace

// A new basis of the loaded problem, or null (1501 for a null problem,
// nothing for a problem not loaded, 1502 or 1524 on failure).
KVTL_API MDLbasis mdlsavebasis_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "savebasis");
    return nullptr;
  }
  if ((prob->status & MDL_ST_LOADED) == 0) return nullptr;
  size_t nrows = static_cast<size_t>(prob->nrows), ncols = static_cast<size_t>(prob->ncols);
  hook_block block, statuses;
  if (!block.allocate((basis_head + nrows + ncols) * sizeof(uint64_t))) {
    mdlerror(prob, MDL_E_NOMEM);
    return nullptr;
  }
  if (!statuses.allocate((nrows + ncols) * sizeof(int))) {
    mdlerror(prob, MDL_E_NOMEM);
    return nullptr;
  }
  uint64_t *w = reinterpret_cast<uint64_t *>(block.get());
  int *stat = reinterpret_cast<int *>(statuses.get());
  if (engine_failed(prob, "savebasis", "getbasis", KVSLgetbasis(prob->kvsl, stat, stat + nrows)))
    return nullptr;
  // Row positions without a constraint hold 0, which loading skips.
  memset(w, 0, (basis_head + nrows + ncols) * sizeof(uint64_t));
  w[basis_problem] = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(prob));
  w[basis_rows] = nrows;
  w[basis_cols] = ncols;
  for (size_t j = 0; j < ncols; ++j)
    w[basis_head + nrows + j] = tagged(prob->colvars[j], stat[nrows + j]);
  for (mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next) {
    int row = row_of(c);
    if (row >= 0) w[basis_head + static_cast<size_t>(row)] = tagged(c, stat[row]);
  }
  return reinterpret_cast<MDLbasis>(block.release());
}

// Load a saved basis into the current matrix: saved constraints and
// variables still in the matrix take their statuses, new rows start basic
// and new columns at their lower bound.
KVTL_API int mdlloadbasis(MDLbasis basis) {
  if (basis == nullptr) {
    mdlerror(nullptr, MDL_E_NOBASIS, "loadbasis");
    return 1;
  }
  const uint64_t *w = words(basis);
  MDLprob prob = untagged<mdl_problem>(w[basis_problem]);
  if ((prob->status & MDL_ST_LOADED) == 0) return 1;
  size_t nrows = static_cast<size_t>(prob->nrows), ncols = static_cast<size_t>(prob->ncols);
  hook_block statuses;
  if (!statuses.allocate((nrows + ncols) * sizeof(int))) {
    mdlerror(prob, MDL_E_NOMEM);
    return 1;
  }
  int *stat = reinterpret_cast<int *>(statuses.get());
  std::fill(stat, stat + nrows, 1);
  std::fill(stat + nrows, stat + nrows + ncols, 0);
  // Saved records are looked up among those in the matrix now, never read:
  // a deleted one's memory may have been recycled.
  position_table rows, cols;
  try {
    for (const mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next)
      if (row_of(c) >= 0) rows.add(c, row_of(c));
    for (size_t j = 0; j < ncols; ++j) cols.add(prob->colvars[j], static_cast<int>(j));
  } catch (const std::bad_alloc &) {
    mdlerror(prob, MDL_E_NOMEM);
    return 1;
  }
  size_t saved_rows = w[basis_rows], saved_cols = w[basis_cols];
  for (size_t i = 0; i < saved_rows; ++i) {
    uint64_t word = w[basis_head + i];
    int row = rows.find(untagged<const void>(word));
    if (row >= 0) stat[row] = static_cast<int>(word & status_bits);
  }
  for (size_t j = 0; j < saved_cols; ++j) {
    uint64_t word = w[basis_head + saved_rows + j];
    int col = cols.find(untagged<const void>(word));
    if (col >= 0) stat[nrows + static_cast<size_t>(col)] = static_cast<int>(word & status_bits);
  }
  if (engine_failed(prob, "loadbasis", "loadbasis", KVSLloadbasis(prob->kvsl, stat, stat + nrows)))
    return 1;
  return 0;
}

// Release a saved basis.
KVTL_API void mdldelbasis(MDLbasis basis) {
  if (basis != nullptr) mdlsl_free(basis);
}
