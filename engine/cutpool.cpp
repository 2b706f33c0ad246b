/*
 * cutpool.cpp -- the cut pool of an engine problem: cuts added by the
 * application (in a search callback or outside one), listed and read back.
 */
#include <algorithm>

#include "callbacks.h"

namespace kvsl {

callback_state &callbacks_of(kvsl_prob *prob) {
  if (!prob->callbacks) prob->callbacks = std::make_shared<callback_state>();
  return *prob->callbacks;
}

bool has_search_callbacks(const kvsl_prob *prob) {
  return prob->callbacks && (prob->callbacks->cutmgr != nullptr || prob->callbacks->preintsol != nullptr);
}

bool search_callback_failed(const kvsl_prob *prob) {
  return prob->callbacks && prob->callbacks->failed;
}

void clear_cut_pool(kvsl_prob *prob) {
  if (prob->callbacks) prob->callbacks->pool.clear();
}

}  // namespace kvsl

namespace {

// Is a handle one of the problem's pool cuts?
const kvsl::pool_cut *find_cut(kvsl_prob *prob, KVSLcut handle) {
  if (!prob->callbacks) return nullptr;
  for (const auto &c : prob->callbacks->pool)
    if (reinterpret_cast<KVSLcut>(c.get()) == handle) return c.get();
  return nullptr;
}

}  // namespace

// All cuts are checked before any is kept, so a bad one adds nothing.
KVSL_EXPORT int KVSLaddcuts(KVSLprob prob, int ncuts, const int cuttype[], const char rowtype[],
                            const double rhs[], const int64_t start[], const int col[],
                            const double val[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  if (ncuts < 0) return kvsl::fail(prob, KVSL_ERR_BADARG);
  if (ncuts == 0) return 0;
  if (cuttype == nullptr || rowtype == nullptr || rhs == nullptr || start == nullptr)
    return kvsl::fail(prob, KVSL_ERR_BADARG);
  if (start[ncuts] > start[0] && (col == nullptr || val == nullptr))
    return kvsl::fail(prob, KVSL_ERR_BADARG);
  for (int k = 0; k < ncuts; ++k) {
    if (rowtype[k] != 'L' && rowtype[k] != 'G' && rowtype[k] != 'E')
      return kvsl::fail(prob, KVSL_ERR_BADARG);
    if (start[k + 1] < start[k]) return kvsl::fail(prob, KVSL_ERR_BADARG);
    for (int64_t p = start[k]; p < start[k + 1]; ++p)
      if (col[p] < 0 || col[p] >= prob->ncols) return kvsl::fail(prob, KVSL_ERR_INDEX);
  }
  try {
    kvsl::callback_state &st = kvsl::callbacks_of(prob);
    std::vector<std::unique_ptr<kvsl::pool_cut>> made;
    for (int k = 0; k < ncuts; ++k) {
      auto c = std::make_unique<kvsl::pool_cut>();
      c->type = cuttype[k];
      c->rowtype = rowtype[k];
      c->rhs = rhs[k];
      c->col.assign(col + start[k], col + start[k + 1]);
      c->val.assign(val + start[k], val + start[k + 1]);
      made.push_back(std::move(c));
    }
    st.pool.reserve(st.pool.size() + made.size());
    for (auto &c : made) st.pool.push_back(std::move(c));
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  }
  return 0;
}

KVSL_EXPORT int KVSLgetcutlist(KVSLprob prob, int cuttype, int, int *ncuts, int size,
                               KVSLcut cuts[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (ncuts == nullptr || size < 0 || (size > 0 && cuts == nullptr))
    return kvsl::fail(prob, KVSL_ERR_BADARG);
  int n = 0;
  if (prob->callbacks) {
    for (const auto &c : prob->callbacks->pool) {
      if (cuttype != -1 && c->type != cuttype) continue;
      if (n < size) cuts[n] = reinterpret_cast<KVSLcut>(c.get());
      ++n;
    }
  }
  *ncuts = n;
  return 0;
}

KVSL_EXPORT int KVSLgetcpcuts(KVSLprob prob, const KVSLcut cuts[], int ncuts, int size,
                              int cuttype[], char rowtype[], int64_t start[], int col[],
                              double val[], double rhs[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (ncuts < 0 || start == nullptr || (ncuts > 0 && cuts == nullptr))
    return kvsl::fail(prob, KVSL_ERR_BADARG);
  std::vector<const kvsl::pool_cut *> found;
  int64_t total = 0;
  try {
    found.reserve(static_cast<size_t>(ncuts));
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  }
  for (int k = 0; k < ncuts; ++k) {
    const kvsl::pool_cut *c = find_cut(prob, cuts[k]);
    if (c == nullptr) return kvsl::fail(prob, KVSL_ERR_BADARG);
    found.push_back(c);
    total += static_cast<int64_t>(c->col.size());
  }
  int64_t pos = 0;
  for (int k = 0; k < ncuts; ++k) {
    start[k] = pos;
    pos += static_cast<int64_t>(found[k]->col.size());
  }
  start[ncuts] = pos;
  if (size < total) return 0;
  for (int k = 0; k < ncuts; ++k) {
    const kvsl::pool_cut *c = found[k];
    if (cuttype != nullptr) cuttype[k] = c->type;
    if (rowtype != nullptr) rowtype[k] = c->rowtype;
    if (rhs != nullptr) rhs[k] = c->rhs;
    if (col != nullptr) std::copy(c->col.begin(), c->col.end(), col + start[k]);
    if (val != nullptr) std::copy(c->val.begin(), c->val.end(), val + start[k]);
  }
  return 0;
}
