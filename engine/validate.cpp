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

}  // namespace

int validate_problem(const kvsl_prob *prob) {
  const ClpSimplex &m = *prob->lp;
  int n = m.numberColumns(), r = m.numberRows();
  const CoinPackedMatrix *a = m.matrix();
  if (!all_usable(m.objective(), n) || !std::isfinite(prob->objconst) ||
      !all_usable(a->getElements(), a->getNumElements()) ||
      !all_numbers(m.columnLower(), n) || !all_numbers(m.columnUpper(), n) ||
      !all_numbers(m.rowLower(), r) || !all_numbers(m.rowUpper(), r) ||
      !all_numbers(prob->rhs.data(), static_cast<int64_t>(prob->rhs.size())) ||
      !all_numbers(prob->range.data(), static_cast<int64_t>(prob->range.size())) ||
      !all_usable(prob->setref.data(), static_cast<int64_t>(prob->setref.size())))
    return KVSL_ERR_BADNUMBER;
  if (const CoinPackedMatrix *q = quadratic_of(m); q != nullptr)
    if (!all_usable(q->getElements(), q->getNumElements())) return KVSL_ERR_BADNUMBER;
  for (const auto &e : prob->entities)
    if ((e.type == 'P' || e.type == 'S' || e.type == 'R') && std::isnan(e.limit))
      return KVSL_ERR_BADNUMBER;
  for (const auto &ind : prob->indicators)
    if (!is_binary_column(prob, ind.col)) return KVSL_ERR_ENTITY;
  return 0;
}

}  // namespace kvsl
