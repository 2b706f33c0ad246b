/*
 * problem.cpp -- engine start-up, problem creation and naming, and the small
 * helpers every capability shares (errors, infinities, objective, slacks).
 */
#include <atomic>
#include <cmath>
#include <cstring>
#include <new>

#include <ClpSimplex.hpp>
#include <CoinFinite.hpp>

#include "log.h"

namespace {
std::atomic<int> init_count{0};
}

kvsl_prob::kvsl_prob() : log(std::make_unique<kvsl::backend_log>(this)) {}
kvsl_prob::~kvsl_prob() = default;

namespace kvsl {

int fail(KVSLprob prob, int code) {
  if (prob != nullptr) prob->errorcode = code;
  return code;
}

double to_backend(double v) {
  if (v >= KVSL_INFINITY) return COIN_DBL_MAX;
  if (v <= -KVSL_INFINITY) return -COIN_DBL_MAX;
  return v;
}

double from_backend(double v) {
  if (v >= KVSL_INFINITY) return KVSL_INFINITY;
  if (v <= -KVSL_INFINITY) return -KVSL_INFINITY;
  return v;
}

void drop_solutions(kvsl_prob *prob) {
  prob->lp_held = false;
  prob->mip_held = false;
  prob->ranges.reset();
  if (prob->loaded) {
    prob->lpstatus = KVSL_LP_UNSOLVED;
    prob->mipstatus = KVSL_MIP_LP_NOT_OPTIMAL;
  }
}

double objective_of(const kvsl_prob *prob, const double *x) {
  const ClpSimplex &m = *prob->lp;
  const double *c = m.objective();
  double v = 0.0;
  for (int j = 0; j < m.numberColumns(); ++j) v += c[j] * x[j];
  if (prob->has_quadratic) {
    const CoinPackedMatrix *q = quadratic_of(m);
    const int *ind = q->getIndices();
    const double *el = q->getElements();
    const CoinBigIndex *st = q->getVectorStarts();
    const int *len = q->getVectorLengths();
    for (int j = 0; j < q->getNumCols(); ++j)
      for (CoinBigIndex k = st[j]; k < st[j] + len[j]; ++k)
        v += (ind[k] == j ? 0.5 : 1.0) * el[k] * x[ind[k]] * x[j];
  }
  return v - prob->objconst;
}

void slacks_of(const kvsl_prob *prob, const double *x, double *slack) {
  const ClpSimplex &m = *prob->lp;
  std::vector<double> act(m.numberRows(), 0.0);
  m.matrix()->times(x, act.data());
  for (const quad_row &r : prob->qrows) act[r.row] += quad_row_value(r, x);
  for (int i = 0; i < m.numberRows(); ++i) slack[i] = prob->rhs[i] - act[i];
}

bool has_flag(const char *flags, char letter) {
  if (flags == nullptr) return false;
  for (const char *f = flags; *f != '\0'; ++f)
    if (std::tolower(static_cast<unsigned char>(*f)) == letter) return true;
  return false;
}

}  // namespace kvsl

// Start the engine; every start is counted.
KVSL_EXPORT int KVSLinit(const char *) {
  ++init_count;
  return 0;
}

// Undo one start; fails when the engine is not started.
KVSL_EXPORT int KVSLfree(void) {
  int n = init_count.load();
  while (n > 0 && !init_count.compare_exchange_weak(n, n - 1)) {
  }
  return n > 0 ? 0 : KVSL_ERR_NOTINIT;
}

// Create an empty problem with default controls (the engine must be started).
KVSL_EXPORT int KVSLcreateprob(KVSLprob *prob) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  *prob = nullptr;
  if (init_count.load() <= 0) return KVSL_ERR_NOTINIT;
  try {
    *prob = new kvsl_prob;
  } catch (const std::bad_alloc &) {
    return KVSL_ERR_NOMEM;
  }
  return 0;
}

// Destroy a problem and everything it holds; a null problem is refused.
KVSL_EXPORT int KVSLdestroyprob(KVSLprob prob) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  delete prob;
  return 0;
}

// Set the problem's name (the base of its side files).
KVSL_EXPORT int KVSLsetprobname(KVSLprob prob, const char *name) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (name == nullptr) return kvsl::fail(prob, KVSL_ERR_BADARG);
  try {
    prob->name = name;
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  }
  return 0;
}

// Install or (cb null) remove the message callback.
KVSL_EXPORT int KVSLsetcbmessage(KVSLprob prob, KVSLmsgcb cb, void *user) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  std::lock_guard<std::mutex> lock(prob->msg_mutex);
  prob->msgcb = cb;
  prob->msguser = user;
  return 0;
}
