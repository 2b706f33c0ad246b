/*
 * iis.cpp -- infeasible subsystems found by the engine, returned as arrays
 * of the model's variables, constraints and special ordered sets.
 */
#include <stdint.h>
#include <string.h>

#include "core/errors.h"
#include "solver/solver.h"

using namespace kvtl;

namespace {

// While it lives, the engine's log control is off (the search would
// otherwise log each subsystem it finds); restored on every way out.
class quiet_engine {
 public:
  explicit quiet_engine(MDLprob prob) : kvsl_(prob->kvsl) {
    KVSLgetintcontrol(kvsl_, KVSL_CTRL_OUTPUTLOG, &saved_);
    KVSLsetintcontrol(kvsl_, KVSL_CTRL_OUTPUTLOG, 0);
  }
  ~quiet_engine() { KVSLsetintcontrol(kvsl_, KVSL_CTRL_OUTPUTLOG, saved_); }
  quiet_engine(const quiet_engine &) = delete;
  quiet_engine &operator=(const quiet_engine &) = delete;

 private:
  KVSLprob kvsl_;
  int saved_ = 1;
};

// An output array of n handles from the allocator hooks (1502 on failure).
template <class T>
bool new_output(MDLprob prob, T **&out, int n) {
  out = static_cast<T **>(mdlsl_malloc(static_cast<size_t>(n) * sizeof(T *)));
  if (out == nullptr) {
    mdlerror(prob, MDL_E_NOMEM);
    return false;
  }
  memset(out, 0, static_cast<size_t>(n) * sizeof(T *));
  return true;
}

// Out arguments of one request, each possibly null.
struct iis_outputs {
  MDLvar **vars;
  int *nvars;
  MDLctr **ctrs;
  int *nctrs;
  MDLsos **soss;
  int *nsoss;

  void clear() const {
    if (vars != nullptr) *vars = nullptr;
    if (ctrs != nullptr) *ctrs = nullptr;
    if (soss != nullptr) *soss = nullptr;
    if (nvars != nullptr) *nvars = 0;
    if (nctrs != nullptr) *nctrs = 0;
    if (nsoss != nullptr) *nsoss = 0;
  }
};

// Run the engine's search on to IIS n from k found so far; false when the
// search ended first, sets *failed after a reported engine failure.
bool search_to(MDLprob prob, int n, int k, bool *failed) {
  quiet_engine quiet(prob);
  int status = 0;
  if (k < 0) {
    int rc = KVSLiisfirst(prob->kvsl, n > 0 ? 1 : 0, &status);
    if (engine_failed(prob, "getiis", "KVSLiisfirst", rc)) return !(*failed = true);
    k = n > 0 ? 1 : 0;
  }
  while (status == 0 && k < n) {
    ++k;
    int rc = KVSLiisnext(prob->kvsl, &status);
    if (engine_failed(prob, "getiis", "KVSLiisnext", rc)) return !(*failed = true);
  }
  return status == 0;
}

// Fill the outputs from the data of IIS n (the search has reached it).
int take_data(MDLprob prob, int n, const iis_outputs &out) {
  int nr = 0, nc = 0;
  int rc = KVSLgetiisdata(prob->kvsl, n, &nr, &nc, nullptr, nullptr, nullptr);
  if (engine_failed(prob, "getiis", "KVSLgetiisdata", rc)) return 1;
  if (nr == 0 && nc == 0) return 0;
  int nrows = prob->nrows, ncols = prob->ncols, nsets = prob->nsets;
  int lookup_size = nrows > ncols ? nrows : ncols;
  if (nsets > lookup_size) lookup_size = nsets;
  void **lookup = nullptr;
  int *rowind = nullptr, *colind = nullptr;
  char *rowtype = nullptr;
  hook_block work;
  if (!carve_block(prob, work, [&](block_layout &l) {
        l.take(lookup, static_cast<size_t>(lookup_size));
        l.take(rowind, static_cast<size_t>(nr));
        l.take(colind, static_cast<size_t>(nc));
        l.take(rowtype, static_cast<size_t>(nr));
      }))
    return 1;
  rc = KVSLgetiisdata(prob->kvsl, n, &nr, &nc, rowind, colind, rowtype);
  if (engine_failed(prob, "getiis", "KVSLgetiisdata", rc)) return 1;
  if (out.vars != nullptr && nc > 0) {
    if (!new_output(prob, *out.vars, nc)) return 1;
    for (int j = 0; j < ncols; ++j) lookup[j] = prob->colvars[j];
    for (int k = 0; k < nc; ++k)
      if (colind[k] >= 0 && colind[k] < ncols) (*out.vars)[k] = static_cast<MDLvar>(lookup[colind[k]]);
  }
  int nsos = 0;
  for (int k = 0; k < nr; ++k) nsos += rowtype[k] == '1' || rowtype[k] == '2';
  int nctr = nr - nsos;
  if (out.ctrs != nullptr && nctr > 0) {
    if (!new_output(prob, *out.ctrs, nctr)) return 1;
    memset(lookup, 0, static_cast<size_t>(lookup_size) * sizeof(void *));
    for (mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next)
      if (row_of(c) >= 0) lookup[row_of(c)] = c;
    int e = 0;
    for (int k = 0; k < nr; ++k)
      if (rowtype[k] != '1' && rowtype[k] != '2' && rowind[k] >= 0 && rowind[k] < nrows)
        (*out.ctrs)[e++] = static_cast<MDLctr>(lookup[rowind[k]]);
  }
  if (out.soss != nullptr && nsos > 0) {
    if (!new_output(prob, *out.soss, nsos)) return 1;
    memset(lookup, 0, static_cast<size_t>(lookup_size) * sizeof(void *));
    for (mdl_sos *s = prob->soss; s != nullptr; s = s->next)
      if (s->index != 0 && static_cast<int>(s->index) <= lookup_size) lookup[s->index - 1] = s;
    int e = 0;
    for (int k = 0; k < nr; ++k)
      if ((rowtype[k] == '1' || rowtype[k] == '2') && rowind[k] >= 0 && rowind[k] < nsets)
        (*out.soss)[e++] = static_cast<MDLsos>(lookup[rowind[k]]);
  }
  if (out.nvars != nullptr) *out.nvars = nc;
  if (out.nctrs != nullptr) *out.nctrs = nctr;
  if (out.nsoss != nullptr) *out.nsoss = nsos;
  return 0;
}

}  // namespace

// The number of subsystems: the engine's count when a search has run, else
// the count of a full search (-1 on failure).
KVTL_API int mdlgetnumiis_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "getnumiis");
    return -1;
  }
  if (prob->ncols == 0) {
    mdlerror(prob, MDL_E_NOTLOADED, "getnumiis");
    return -1;
  }
  int count = 0;
  if (engine_failed(prob, "getnumiis", "KVSLiisstatus", KVSLiisstatus(prob->kvsl, &count)))
    return -1;
  if (count >= 0) return count;
  {
    quiet_engine quiet(prob);
    if (engine_failed(prob, "getnumiis", "KVSLiisall", KVSLiisall(prob->kvsl))) return -1;
  }
  if (engine_failed(prob, "getnumiis", "KVSLgetintattrib",
                    KVSLgetintattrib(prob->kvsl, KVSL_ATTR_NUMIIS, &count)))
    return -1;
  return count;
}

// Subsystem n as arrays of variables, constraints and sets (each output
// optional): 0 (also with empty outputs when there is no IIS n), 1 or -1.
KVTL_API int mdlgetmiis_prob(MDLprob prob, MDLvar **vars, int *nvars, MDLctr **ctrs, int *nctrs,
                             MDLsos **soss, int *nsoss, int num) {
  iis_outputs out{vars, nvars, ctrs, nctrs, soss, nsoss};
  out.clear();
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "getiis");
    return 1;
  }
  if (prob->ncols == 0) {
    mdlerror(prob, MDL_E_NOTLOADED, "getiis");
    return 1;
  }
  if (num < 0) {
    mdlerror(prob, MDL_W_IISINDEX, num);
    return 0;
  }
  int k = 0;
  if (engine_failed(prob, "getiis", "KVSLiisstatus", KVSLiisstatus(prob->kvsl, &k))) return -1;
  bool at_once = false;
  if (num == 0) {
    int available = 0;
    KVSLgetintattrib(prob->kvsl, KVSL_ATTR_IISAVAILABLE, &available);
    if (k == 0 && available != 0)
      at_once = true;
    else
      k = -1;
  } else {
    if (k == 0) k = -1;
    at_once = num <= k;
  }
  if (!at_once) {
    bool failed = false;
    if (!search_to(prob, num, k, &failed)) return failed ? 1 : 0;
  }
  return take_data(prob, num, out);
}

KVTL_API int mdlgetiis_prob(MDLprob prob, MDLvar **vars, int *nvars, MDLctr **ctrs, int *nctrs,
                            int num) {
  return mdlgetmiis_prob(prob, vars, nvars, ctrs, nctrs, nullptr, nullptr, num);
}

KVTL_API int mdlfreeiismem(void *array) {
  if (array != nullptr) mdlsl_free(array);
  return 0;
}
