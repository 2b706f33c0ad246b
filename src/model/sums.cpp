/*
 * sums.cpp -- constraints built from an array of variables in one call:
 * array terms, weighted sums, plain sums and sums with rising coefficients.
 */
#include "model/arrays.h"
#include "problem/problem.h"

using namespace kvtl;

namespace {

// Coefficients of the slots: given as an array (`values`, which the
// caller may have passed as null), or first + step * i.
struct coefficients {
  bool given;
  const double *values;
  double first;
  double step;
  double operator[](int64_t i) const {
    return given ? values[i] : first + step * static_cast<double>(i);
  }
};

// Add coef[i] * arr[i] for every slot of a closed array (an open array has
// a negative size and adds nothing); stops with 1 at the first failure.
int add_array_terms(MDLctr ctr, MDLarrvar arr, coefficients coef) {
  int64_t size = array_header(arr)->size;
  for (int64_t i = 0; i < size; ++i)
    if (mdladdterm(ctr, arr[i], coef[i]) != 0) return 1;
  return 0;
}

// The constructors' common path: checks, then the constraint with its array
// terms and the right-hand side.  When a term cannot be added the
// constraint made so far stays in the problem and null is returned.
MDLctr new_sum(MDLprob prob, const char *fn, const char *arr_fn, const char *name,
               MDLarrvar arr, coefficients coef, int type, double rhs) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, fn);
    return nullptr;
  }
  if (arr == nullptr) {
    mdlerror(prob, MDL_E_NOARRVAR, arr_fn);
    return nullptr;
  }
  MDLctr ctr = mdlnewctr_prob(prob, name, type);
  if (ctr == nullptr) return nullptr;
  int rc = coef.given ? mdladdarrterm(ctr, arr, coef.values) : add_array_terms(ctr, arr, coef);
  if (rc != 0 || mdladdterm(ctr, nullptr, rhs) != 0) return nullptr;
  return ctr;
}

}  // namespace

KVTL_API int mdladdarrterm(MDLctr ctr, MDLarrvar arr, const double *coefs) {
  if (ctr == nullptr) {
    mdlerror(nullptr, MDL_E_NOCTR, "addarrterm");
    return 1;
  }
  if (arr == nullptr) {
    mdlerror(ctr->problem, MDL_E_NOARRVAR, "addarrterm");
    return 1;
  }
  if (coefs == nullptr) {
    mdlerror(ctr->problem, MDL_E_NOARRCONST, "addarrterm");
    return 1;
  }
  return add_array_terms(ctr, arr, {true, coefs, 0.0, 0.0});
}

// A null array is reported as "arrnewsum", the name this constructor has
// always given in that message; a null coefficient array is reported by
// the term step ("addarrterm") after the constraint was made.
KVTL_API MDLctr mdlnewarrsum_prob(MDLprob prob, const char *name, MDLarrvar arr,
                                  const double *coefs, int type, double rhs) {
  return new_sum(prob, "newarrsum", "arrnewsum", name, arr, {true, coefs, 0.0, 0.0}, type, rhs);
}

KVTL_API MDLctr mdlnewsum_prob(MDLprob prob, const char *name, MDLarrvar arr, int type,
                               double rhs) {
  return new_sum(prob, "newsum", "newsum", name, arr, {false, nullptr, 1.0, 0.0}, type, rhs);
}

KVTL_API MDLctr mdlnewsumc_prob(MDLprob prob, const char *name, MDLarrvar arr, int type,
                                double first, double rhs) {
  return new_sum(prob, "newsumc", "newsumc", name, arr, {false, nullptr, first, 1.0}, type, rhs);
}
