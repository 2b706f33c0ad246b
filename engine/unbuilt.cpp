/*
 * unbuilt.cpp -- engine functions that this build cannot perform yet: each
 * fails with KVSL_ERR_UNSUPPORTED, readable as the error-code attribute.
 */
#include "engine.h"

KVSL_EXPORT int KVSLloadlp64(KVSLprob prob, const char *, int, int, const char *, const double *, const double *, const double *, const int64_t *, const int *, const int *, const double *, const double *, const double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLloadqp64(KVSLprob prob, const char *, int, int, const char *, const double *, const double *, const double *, const int64_t *, const int *, const int *, const double *, const double *, const double *, int64_t, const int *, const int *, const double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLloadqcqp64(KVSLprob prob, const char *, int, int, const char *, const double *, const double *, const double *, const int64_t *, const int *, const int *, const double *, const double *, const double *, int64_t, const int *, const int *, const double *, int, const int *, const int64_t *, const int *, const int *, const double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLloadglobal64(KVSLprob prob, const char *, int, int, const char *, const double *, const double *, const double *, const int64_t *, const int *, const int *, const double *, const double *, const double *, int, int, const char *, const int *, const double *, const char *, const int64_t *, const int *, const double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLloadqglobal64(KVSLprob prob, const char *, int, int, const char *, const double *, const double *, const double *, const int64_t *, const int *, const int *, const double *, const double *, const double *, int64_t, const int *, const int *, const double *, int, int, const char *, const int *, const double *, const char *, const int64_t *, const int *, const double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLloadqcqpglobal64(KVSLprob prob, const char *, int, int, const char *, const double *, const double *, const double *, const int64_t *, const int *, const int *, const double *, const double *, const double *, int64_t, const int *, const int *, const double *, int, const int *, const int64_t *, const int *, const int *, const double *, int, int, const char *, const int *, const double *, const char *, const int64_t *, const int *, const double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLchgobj(KVSLprob prob, int, const int *, const double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLchgobjsense(KVSLprob prob, int) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLchgbounds(KVSLprob prob, int, const int *, const char *, const double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLchgglblimit(KVSLprob prob, int, const int *, const double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLloadmodelcuts(KVSLprob prob, int, const int *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLsetindicators(KVSLprob prob, int, const int *, const int *, const int *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLloaddelayedrows(KVSLprob prob, int, const int *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLaddnames(KVSLprob prob, int, const char *, int, int) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLloaddirs(KVSLprob prob, int, const int *, const int *, const char *, const double *, const double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLlpoptimize(KVSLprob prob, const char *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLmipoptimize(KVSLprob prob, const char *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLminim(KVSLprob prob, const char *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLmaxim(KVSLprob prob, const char *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLpostsolve(KVSLprob prob) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLinitglobal(KVSLprob prob) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLfixglobals(KVSLprob prob, int) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLgetlpsol(KVSLprob prob, double *, double *, double *, double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLgetmipsol(KVSLprob prob, double *, double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLrange(KVSLprob prob) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLgetrowrange(KVSLprob prob, double *, double *, double *, double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLgetcolrange(KVSLprob prob, double *, double *, double *, double *, double *, double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLwritesol(KVSLprob prob, const char *, const char *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLwriteprtsol(KVSLprob prob, const char *, const char *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLwriteslxsol(KVSLprob prob, const char *, const char *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLwritebinsol(KVSLprob prob, const char *, const char *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLreadbinsol(KVSLprob prob, const char *, const char *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLreadslxsol(KVSLprob prob, const char *, const char *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLgetbasis(KVSLprob prob, int *, int *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLloadbasis(KVSLprob prob, const int *, const int *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLiisstatus(KVSLprob prob, int *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLiisall(KVSLprob prob) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLiisfirst(KVSLprob prob, int, int *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLiisnext(KVSLprob prob, int *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLgetiisdata(KVSLprob prob, int, int *, int *, int *, int *, char *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLaddmipsol(KVSLprob prob, int, const double *, const int *, const char *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLloadmipsol(KVSLprob prob, const double *, int *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLaddcuts(KVSLprob prob, int, const int *, const char *, const double *, const int64_t *, const int *, const double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLgetcutlist(KVSLprob prob, int, int, int *, int, KVSLcut *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}

KVSL_EXPORT int KVSLgetcpcuts(KVSLprob prob, const KVSLcut *, int, int, int *, char *, int64_t *, int *, double *, double *) {
  return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
}
