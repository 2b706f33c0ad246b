/*
 * validate.cpp -- the check of the loaded problem's numbers and entities
 * before an optimisation, so that no bad input reaches the backends.
 */
#include <cmath>

#include <ClpSimplex.hpp>
#include <CoinPackedMatrix.hpp>

#include "search.h"

namespace kvsl {

namespace {

// A coefficient the backends can work with: a finite number below infinity.
bool usable_coefficient(double v) { return std::isfinite(v) && std::fabs(v) < KVSL_INFINITY; }

// Are all n values usable coefficients?
bool all_usable(const double *v, int64_t n) {
  for (int64_t k = 0; k < n; ++k)
    if (!usable_coefficient(v[k])) return false;
  return true;
}

// Are all n values numbers (infinite ones allowed: bounds)?
bool all_numbers(const double *v, int64_t n) {
  for (int64_t k = 0; k < n; ++k)
    if (std::isnan(v[k])) return false;
  return true;
}

// Can some number lie within each of the n pairs of bounds as far as
// infinity goes: no lower bound of +infinity, no upper bound of -infinity?
// (Crossed finite bounds are an infeasible model; these abort the simplex.)
bool all_attainable(const double *lo, const double *up, int n) {
  for (int k = 0; k < n; ++k)
    if (lo[k] >= KVSL_INFINITY || up[k] <= -KVSL_INFINITY) return false;
  return true;
}

// Is column col a binary column of the search: type 'B', or 'I' with
// bounds inside [0, 1]?
bool is_binary_column(const kvsl_prob *prob, int col) {
  const ClpSimplex &m = *prob->lp;
  for (const auto &e : prob->entities) {
    if (e.col != col) continue;
    if (e.type == 'B') return true;
    if (e.type == 'I' && m.columnLower()[col] >= -1e-9 && m.columnUpper()[col] <= 1.0 + 1e-9)
      return true;
  }
  return false;
}

// The problem's numbers, bounds and entities: 0, or KVSL_ERR_BADNUMBER or
// KVSL_ERR_ENTITY with the reason's text in *why.
int validate_problem(const kvsl_prob *prob, const char **why) {
  const ClpSimplex &m = *prob->lp;
  int n = m.numberColumns(), r = m.numberRows();
  const CoinPackedMatrix *a = m.matrix();
  const CoinPackedMatrix *q = quadratic_of(m);
  bool limits = true;
  for (const auto &e : prob->entities)
    if ((e.type == 'P' || e.type == 'S' || e.type == 'R') && std::isnan(e.limit)) limits = false;
  if (!all_usable(m.objective(), n) || !std::isfinite(prob->objconst) ||
      !all_usable(a->getElements(), a->getNumElements()) ||
      (q != nullptr && !all_usable(q->getElements(), q->getNumElements())) ||
      !all_numbers(m.columnLower(), n) || !all_numbers(m.columnUpper(), n) ||
      !all_numbers(m.rowLower(), r) || !all_numbers(m.rowUpper(), r) ||
      !all_numbers(prob->rhs.data(), static_cast<int64_t>(prob->rhs.size())) ||
      !all_numbers(prob->range.data(), static_cast<int64_t>(prob->range.size())) ||
      !all_usable(prob->setref.data(), static_cast<int64_t>(prob->setref.size())) || !limits) {
    *why = "The problem holds a NaN or an infinite coefficient.";
    return KVSL_ERR_BADNUMBER;
  }
  if (!all_attainable(m.columnLower(), m.columnUpper(), n) ||
      !all_attainable(m.rowLower(), m.rowUpper(), r)) {
    *why = "The problem holds a lower bound of +infinity or an upper bound of -infinity.";
    return KVSL_ERR_BADNUMBER;
  }
  for (const auto &ind : prob->indicators)
    if (!is_binary_column(prob, ind.col)) {
      *why = "An indicator column is not a binary column.";
      return KVSL_ERR_ENTITY;
    }
  return 0;
}

}  // namespace

int refuse_invalid(kvsl_prob *prob) {
  const char *why = nullptr;
  const int rc = validate_problem(prob, &why);
  if (rc == 0) return 0;
  message(prob, 4, why);
  return fail(prob, rc);
}

}  // namespace kvsl
