/*
 * solver.cpp -- helpers shared by the solver interface: owned blocks,
 * engine failure reports, loaded numbers, result caches and side files.
 */
#include "solver/solver.h"

#include <stdio.h>
#include <string.h>

#include "core/errors.h"

namespace kvtl {

bool hook_block::allocate(size_t bytes) {
  reset();
  ptr_ = static_cast<char *>(mdlsl_malloc(bytes != 0 ? bytes : 1));
  return ptr_ != nullptr;
}

void *hook_block::release() {
  char *p = ptr_;
  ptr_ = nullptr;
  return p;
}

void hook_block::reset() {
  if (ptr_ != nullptr) mdlsl_free(ptr_);
  ptr_ = nullptr;
}

bool engine_failed(MDLprob prob, const char *fn, const char *call, int rc) {
  if (rc == 0) return false;
  report_engine_error(prob, fn, call, rc);
  return true;
}

// A number counts only when the problem's column map still names the
// object: stale numbers of an abandoned generation never index a cache.
int column_of(const mdl_var *var) {
  const mdl_problem *prob = var->problem;
  uint32_t col = var->column;
  if (col == no_number || prob == nullptr || prob->colvars == nullptr ||
      col >= static_cast<uint32_t>(prob->ncols) || prob->colvars[col] != var)
    return -1;
  return static_cast<int>(col);
}

int row_of(const mdl_ctr *ctr) {
  const mdl_problem *prob = ctr->problem;
  uint32_t row = ctr->row;
  if (row == no_number || prob == nullptr || row >= static_cast<uint32_t>(prob->nrows))
    return -1;
  return static_cast<int>(row);
}

void release_rangeinfo(MDLprob prob) {
  if (prob->rangeinfo != nullptr) mdlsl_free(prob->rangeinfo);
  prob->rangeinfo = nullptr;
}

void release_results(MDLprob prob) {
  double **caches[] = {&prob->solx, &prob->soldj, &prob->soldual, &prob->solslack};
  for (double **cache : caches) {
    if (*cache != nullptr) mdlsl_free(*cache);
    *cache = nullptr;
  }
  release_rangeinfo(prob);
  prob->solcache = 0;
  prob->objval = 0.0;
}

void remove_side_file(MDLprob prob, const char *suffix) {
  if (prob->filebase == nullptr) return;
  size_t len = strlen(prob->filebase) + strlen(suffix) + 1;
  hook_block path;
  if (!path.allocate(len)) return;   // nothing removed: the file is only clutter
  snprintf(path.get(), len, "%s%s", prob->filebase, suffix);
  remove(path.get());
}

}  // namespace kvtl
