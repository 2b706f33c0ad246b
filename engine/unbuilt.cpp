/*
 * unbuilt.cpp -- engine functions that this build cannot perform yet: each
 * fails with KVSL_ERR_UNSUPPORTED, readable as the error-code attribute.
 */
#include "engine.h"

KVSL_EXPORT int KVSLiisstatus(KVSLprob prob, int *) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLiisall(KVSLprob prob) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLiisfirst(KVSLprob prob, int, int *) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLiisnext(KVSLprob prob, int *) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLgetiisdata(KVSLprob prob, int, int *, int *, int *, int *, char *) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLaddmipsol(KVSLprob prob, int, const double *, const int *, const char *) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLloadmipsol(KVSLprob prob, const double *, int *) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}
