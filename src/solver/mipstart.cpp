/*
 * mipstart.cpp -- MIP start solutions: a solution object offered to the
 * engine, and a full column vector checked by it or made the solution.
 */
#include <math.h>
#include <string.h>

#include "core/errors.h"
#include "solver/solobj.h"
#include "solver/solver.h"

using namespace kvtl;

namespace {

constexpr uint32_t needs_generation = MDL_ST_MODIFIED | MDL_ST_REGEN;

}  // namespace

// Offer the values of the solution's variables that have a column in this
// problem's matrix as a MIP start.
KVTL_API int mdladdmipsol_prob(MDLprob prob, MDLsol sol, const char *name) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "addmipsol");
    return 1;
  }
  if (sol != nullptr && !normalise_sol(sol)) return -3;
  if (sol == nullptr || sol->first == nullptr) {
    mdlerror(prob, MDL_E_NOSOL, "addmipsol");
    return 1;
  }
  if ((prob->status & needs_generation) != 0 && mdlloadmat_prob(prob) != 0) {
    mdlerror(prob, MDL_W_ADDMIPSOL, -2);
    return -2;
  }
  const int ncols = prob->ncols > 0 ? prob->ncols : 0;
  hook_block block;
  double *val = nullptr;
  int *col = nullptr;
  if (!carve_block(prob, block, [&](block_layout &l) {
        l.take(val, static_cast<size_t>(ncols));
        l.take(col, static_cast<size_t>(ncols));
      }))
    return -3;
  int n = 0;
  for (mdl_solentry *e = sol->first; e != nullptr && n < ncols; e = e->next) {
    if (e->var->problem != prob || isnan(e->value)) continue;
    const int c = column_of(e->var);
    if (c < 0) continue;
    val[n] = e->value;
    col[n] = c;
    ++n;
  }
  return engine_failed(prob, "addmipsol", "addmipsol", KVSLaddmipsol(prob->kvsl, n, val, col, name))
             ? 1
             : 0;
}

// Check a full column vector with the engine, or make it the current
// solution.
KVTL_API int mdlloadmipsol_prob(MDLprob prob, const double *x, int ncols, int tosolver) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "loadmipsol");
    return 1;
  }
  if ((prob->status & needs_generation) != 0 || prob->ncols != ncols) {
    prob->status |= MDL_ST_REGEN;
    if (mdlloadmat_prob(prob) != 0 || prob->ncols != ncols) {
      mdlerror(prob, MDL_W_LOADMIPSOL, -2);
      return -2;
    }
  }
  if (x == nullptr && ncols > 0) {
    mdlerror(prob, MDL_E_NOARRCONST, "loadmipsol");
    return 1;
  }
  prob->status &= ~static_cast<uint32_t>(MDL_ST_SOLUTION | MDL_ST_OUTSIDESOL);
  prob->solcache = 0;
  release_rangeinfo(prob);
  prob->objval = 0.0;
  if (prob->solx == nullptr) {
    const size_t n = static_cast<size_t>(ncols > 0 ? ncols : 1);
    prob->solx = static_cast<double *>(mdlsl_malloc(n * sizeof(double)));
    if (prob->solx == nullptr) {
      mdlerror(prob, MDL_E_NOMEM);
      return -3;
    }
  }
  if (tosolver) {
    int status = 0;
    if (engine_failed(prob, "loadmipsol", "loadmipsol", KVSLloadmipsol(prob->kvsl, x, &status)))
      return -3;
    if (status != 0) return status;
    if (engine_failed(prob, "getsol", "loadmipsol", KVSLgetmipsol(prob->kvsl, prob->solx, nullptr)))
      return -3;
    double obj = 0.0;
    KVSLgetdblattrib(prob->kvsl, KVSL_ATTR_MIPOBJVAL, &obj);
    prob->objval = obj;
    prob->solcache = MDL_SC_X | MDL_SC_MIP;
    prob->status |= MDL_ST_SOLUTION;
    return 0;
  }
  if (ncols > 0) memcpy(prob->solx, x, static_cast<size_t>(ncols) * sizeof(double));
  prob->solcache = MDL_SC_X | MDL_SC_MIP;
  prob->status |= MDL_ST_SOLUTION | MDL_ST_OUTSIDESOL;
  // The activity is taken from the terms at the values just installed.
  mdl_ctr *obj = prob->objective;
  prob->objval = obj != nullptr ? mdlgetact(obj) + obj->expr.constant : 0.0;
  return 0;
}
