/*
 * unbuilt.cpp -- engine functions that this build cannot perform yet: each
 * fails with KVSL_ERR_UNSUPPORTED, readable as the error-code attribute.
 */
#include "engine.h"

KVSL_EXPORT int KVSLaddcuts(KVSLprob prob, int, const int *, const char *, const double *, const int64_t *, const int *, const double *) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLgetcutlist(KVSLprob prob, int, int, int *, int, KVSLcut *) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLgetcpcuts(KVSLprob prob, const KVSLcut *, int, int, int *, char *, int64_t *, int *, double *, double *) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}
