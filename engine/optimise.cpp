/*
 * optimise.cpp -- the optimisation entry points: which solve each call and
 * option string runs, and the state changes around the global search.
 */
#include <cmath>

#include <ClpSimplex.hpp>

#include "search.h"
#include "solve_limits.h"

namespace {

// Does the loaded problem have global entities or sets?
bool has_globals(const kvsl_prob *prob) {
  return !prob->entities.empty() || !prob->settype.empty() || !prob->indicators.empty();
}

// Optimise in the problem's current sense: MIP search when asked for.
int optimise(KVSLprob prob, const char *flags, bool search) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  if (int rc = kvsl::refuse_invalid(prob); rc != 0) {
    kvsl::drop_solutions(prob);
    return rc;
  }
  kvsl::deadline_scope limits(prob);
  if (search && !kvsl::has_flag(flags, 'l')) return kvsl::solve_mip(prob, flags);
  return kvsl::solve_lp(prob, flags);
}

// Set the sense, then optimise; with 'g' a model with entities is searched.
int minmax(KVSLprob prob, const char *flags, int sense) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (int rc = KVSLchgobjsense(prob, sense); rc != 0) return rc;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  return optimise(prob, flags, kvsl::has_flag(flags, 'g') && has_globals(prob));
}

}  // namespace

// Solve the LP relaxation (the QP with a quadratic objective).
KVSL_EXPORT int KVSLlpoptimize(KVSLprob prob, const char *flags) {
  return optimise(prob, flags, false);
}

// Run the global search (with 'l': stop after the LP relaxation).
KVSL_EXPORT int KVSLmipoptimize(KVSLprob prob, const char *flags) {
  return optimise(prob, flags, true);
}

// Minimise: LP relaxation, or with 'g' the global search.
KVSL_EXPORT int KVSLminim(KVSLprob prob, const char *flags) { return minmax(prob, flags, 1); }

// Maximise: LP relaxation, or with 'g' the global search.
KVSL_EXPORT int KVSLmaxim(KVSLprob prob, const char *flags) { return minmax(prob, flags, -1); }

// The engine never leaves a problem presolved: nothing to undo.
KVSL_EXPORT int KVSLpostsolve(KVSLprob prob) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  return 0;
}

// The search keeps no tree between calls: every search starts at the root.
KVSL_EXPORT int KVSLinitglobal(KVSLprob prob) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  return 0;
}

// Fix every entity column at its value in the MIP solution (rounded when
// asked), so that the next LP gives duals of the fixed problem.
KVSL_EXPORT int KVSLfixglobals(KVSLprob prob, int round) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  if (!prob->mip_held) return kvsl::fail(prob, KVSL_ERR_NOSOLUTION);
  std::vector<double> x = prob->mip_x;
  for (const auto &e : prob->entities) {
    double v = round != 0 ? std::round(x[e.col]) : x[e.col];
    prob->lp->setColumnLower(e.col, v);
    prob->lp->setColumnUpper(e.col, v);
  }
  kvsl::drop_solutions(prob);
  return 0;
}
