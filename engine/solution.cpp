/*
 * solution.cpp -- reading the LP and MIP solutions, and the simplex basis.
 */
#include <algorithm>

#include <ClpSimplex.hpp>

#include "engine.h"

namespace {

// Copy a result vector when the caller asked for it.
void copy_out(const std::vector<double> &from, double *to) {
  if (to != nullptr) std::copy(from.begin(), from.end(), to);
}

// Engine basis status of a Clp status (row or column).
int basis_code(ClpSimplex::Status s) {
  switch (s) {
    case ClpSimplex::basic: return 1;
    case ClpSimplex::atUpperBound: return 2;
    case ClpSimplex::isFree: case ClpSimplex::superBasic: return 3;
    default: return 0;
  }
}

// Clp status of an engine basis code; -1 for an unknown code.
int clp_status(int code) {
  switch (code) {
    case 0: return ClpSimplex::atLowerBound;
    case 1: return ClpSimplex::basic;
    case 2: return ClpSimplex::atUpperBound;
    case 3: return ClpSimplex::superBasic;
    default: return -1;
  }
}

}  // namespace

// The current LP solution: values, slacks, duals, reduced costs.
KVSL_EXPORT int KVSLgetlpsol(KVSLprob prob, double x[], double slack[], double dual[],
                             double dj[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  if (!prob->lp_held) return kvsl::fail(prob, KVSL_ERR_NOSOLUTION);
  copy_out(prob->lp_x, x);
  copy_out(prob->lp_slack, slack);
  copy_out(prob->lp_dual, dual);
  copy_out(prob->lp_dj, dj);
  return 0;
}

// The best MIP solution: values and slacks.
KVSL_EXPORT int KVSLgetmipsol(KVSLprob prob, double x[], double slack[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  if (!prob->mip_held) return kvsl::fail(prob, KVSL_ERR_NOSOLUTION);
  copy_out(prob->mip_x, x);
  if (slack != nullptr) kvsl::slacks_of(prob, prob->mip_x.data(), slack);
  return 0;
}

// The basis of the last simplex solve (rows: the status of the row's slack,
// 0 at its lower activity bound, 2 at its upper one).
KVSL_EXPORT int KVSLgetbasis(KVSLprob prob, int rowstat[], int colstat[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  const ClpSimplex &m = *prob->lp;
  if (m.statusArray() == nullptr) return kvsl::fail(prob, KVSL_ERR_NOSOLUTION);
  if (rowstat != nullptr)
    for (int i = 0; i < m.numberRows(); ++i) rowstat[i] = basis_code(m.getRowStatus(i));
  if (colstat != nullptr)
    for (int j = 0; j < m.numberColumns(); ++j) colstat[j] = basis_code(m.getColumnStatus(j));
  return 0;
}

// Load a basis to start the next simplex from.
KVSL_EXPORT int KVSLloadbasis(KVSLprob prob, const int rowstat[], const int colstat[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  ClpSimplex &m = *prob->lp;
  if ((m.numberRows() > 0 && rowstat == nullptr) || (m.numberColumns() > 0 && colstat == nullptr))
    return kvsl::fail(prob, KVSL_ERR_BADARG);
  for (int i = 0; i < m.numberRows(); ++i)
    if (clp_status(rowstat[i]) < 0) return kvsl::fail(prob, KVSL_ERR_BADARG);
  for (int j = 0; j < m.numberColumns(); ++j)
    if (clp_status(colstat[j]) < 0) return kvsl::fail(prob, KVSL_ERR_BADARG);
  m.createStatus();
  for (int i = 0; i < m.numberRows(); ++i)
    m.setRowStatus(i, static_cast<ClpSimplex::Status>(clp_status(rowstat[i])));
  for (int j = 0; j < m.numberColumns(); ++j)
    m.setColumnStatus(j, static_cast<ClpSimplex::Status>(clp_status(colstat[j])));
  return 0;
}
