/*
 * ranging.cpp -- sensitivity analysis of an optimal LP solution, from the
 * final simplex basis (Clp's primal and dual ranging).
 *
 * Meanings (objective changes are in the problem's own sense, infinite
 * values are +-1e20):
 * Columns
 *   ucost, lcost  the objective coefficient may move within [lcost, ucost]
 *                 with the current basis staying optimal.
 *   upact, loact  nonbasic column: the values between which the column can
 *                 be moved, the basic columns following, before a basic
 *                 column reaches a bound (the column's own bounds are not
 *                 considered).  Basic column: both are its value.
 *   uup, udn      nonbasic column: the objective change per unit the column
 *                 moves up (its reduced cost) and down (minus it) within
 *                 that range.  Basic column: 0 (it moves only through a
 *                 basis change).
 * Rows
 *   upact, loact  the right-hand side may move within [loact, upact] with
 *                 the row's dual staying valid.  For a binding row this is
 *                 the range over which the basis stays feasible; for a row
 *                 that does not bind it reaches from the activity outwards.
 *   uup, udn      objective change per unit of activity up (the dual) and
 *                 down (minus the dual) within that range; 0 for a row that
 *                 does not bind.
 */
#include <algorithm>
#include <numeric>

#include <ClpSimplex.hpp>

#include "log.h"

namespace {

// Interface value of a Clp ranging magnitude (1e30 and more: infinite).
double finite(double v) {
  return v >= 1e20 ? KVSL_INFINITY : v <= -1e20 ? -KVSL_INFINITY : v;
}

// Clamp the sum of a value and a signed step to the interface's infinity.
double moved(double value, double step) {
  if (step >= 1e20) return KVSL_INFINITY;
  if (step <= -1e20) return -KVSL_INFINITY;
  return value + step;
}

// Compute every range on a silent re-solved copy of the model.
void compute(kvsl_prob *prob, kvsl::ranging &r) {
  kvsl::backend_log quiet(prob);
  quiet.setLogLevel(0);
  ClpSimplex m(*prob->lp);
  m.passInMessageHandler(&quiet);
  m.dual();  // warm: the optimal basis is kept, and a factorisation is made
  int n = m.numberColumns(), rows = m.numberRows();
  std::vector<int> cols(n), all(n + rows);
  std::iota(cols.begin(), cols.end(), 0);
  std::iota(all.begin(), all.end(), 0);
  std::vector<double> inc(n + rows), dec(n + rows);
  std::vector<int> seq_inc(n + rows), seq_dec(n + rows);
  const double *x = m.primalColumnSolution();
  const double *act = m.primalRowSolution();
  const double *c = m.objective();
  // Duals and reduced costs in the engine's convention.
  const double *dj = prob->lp_dj.data();
  const double *y = prob->lp_dual.data();
  r.col_ucost.resize(n);
  r.col_lcost.resize(n);
  if (n > 0) {
    m.dualRanging(n, cols.data(), inc.data(), seq_inc.data(), dec.data(), seq_dec.data());
    for (int j = 0; j < n; ++j) {
      if (m.getColumnStatus(j) == ClpSimplex::basic) {
        r.col_ucost[j] = moved(c[j], finite(inc[j]));
        r.col_lcost[j] = moved(c[j], -finite(dec[j]));
      } else {
        // A nonbasic column stays optimal while its reduced cost keeps its sign.
        r.col_ucost[j] = dj[j] >= 0.0 ? KVSL_INFINITY : c[j] - dj[j];
        r.col_lcost[j] = dj[j] >= 0.0 ? c[j] - dj[j] : -KVSL_INFINITY;
      }
    }
  }
  if (n + rows > 0)
    m.primalRanging(n + rows, all.data(), inc.data(), seq_inc.data(), dec.data(), seq_dec.data());
  r.col_upact.resize(n);
  r.col_loact.resize(n);
  r.col_uup.resize(n);
  r.col_udn.resize(n);
  for (int j = 0; j < n; ++j) {
    bool basic = m.getColumnStatus(j) == ClpSimplex::basic;
    r.col_upact[j] = basic ? x[j] : moved(x[j], finite(inc[j]));
    r.col_loact[j] = basic ? x[j] : moved(x[j], -finite(dec[j]));
    r.col_uup[j] = basic ? 0.0 : dj[j];
    r.col_udn[j] = basic ? 0.0 : -dj[j];
  }
  r.row_upact.resize(rows);
  r.row_loact.resize(rows);
  r.row_uup.resize(rows);
  r.row_udn.resize(rows);
  for (int i = 0; i < rows; ++i) {
    bool basic = m.getRowStatus(i) == ClpSimplex::basic;
    if (basic) {
      // The row does not bind: its right-hand side may move away from the
      // activity in the direction in which the row is slack.
      char t = prob->rowtype[i];
      r.row_loact[i] = t == 'L' || t == 'R' || t == 'E' ? act[i] : -KVSL_INFINITY;
      r.row_upact[i] = t == 'G' || t == 'R' || t == 'E' ? act[i] : KVSL_INFINITY;
      if (t == 'R') {
        r.row_loact[i] = -KVSL_INFINITY;
        r.row_upact[i] = KVSL_INFINITY;
      }
      if (t == 'L') r.row_upact[i] = KVSL_INFINITY;
      if (t == 'G') r.row_loact[i] = -KVSL_INFINITY;
      r.row_uup[i] = r.row_udn[i] = 0.0;
    } else {
      r.row_upact[i] = moved(act[i], finite(inc[n + i]));
      r.row_loact[i] = moved(act[i], -finite(dec[n + i]));
      r.row_uup[i] = y[i];
      r.row_udn[i] = -y[i];
    }
  }
}

}  // namespace

// Compute the ranging of the current optimal LP solution.
KVSL_EXPORT int KVSLrange(KVSLprob prob) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  if (!prob->lp_held) return kvsl::fail(prob, KVSL_ERR_NOSOLUTION);
  if (prob->has_quadratic || !prob->qrows.empty()) return kvsl::fail(prob, KVSL_ERR_UNSUPPORTED);
  try {
    auto r = std::make_unique<kvsl::ranging>();
    compute(prob, *r);
    prob->ranges = std::move(r);
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  } catch (...) {
    return kvsl::fail(prob, KVSL_ERR_BACKEND);
  }
  return 0;
}

// Row ranges computed by KVSLrange.
KVSL_EXPORT int KVSLgetrowrange(KVSLprob prob, double upact[], double loact[], double uup[],
                                double udn[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->ranges) return kvsl::fail(prob, KVSL_ERR_NOSOLUTION);
  const kvsl::ranging &r = *prob->ranges;
  for (auto [from, to] : {std::pair{&r.row_upact, upact}, {&r.row_loact, loact},
                          {&r.row_uup, uup}, {&r.row_udn, udn}})
    if (to != nullptr) std::copy(from->begin(), from->end(), to);
  return 0;
}

// Column ranges computed by KVSLrange.
KVSL_EXPORT int KVSLgetcolrange(KVSLprob prob, double upact[], double loact[], double uup[],
                                double udn[], double ucost[], double lcost[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->ranges) return kvsl::fail(prob, KVSL_ERR_NOSOLUTION);
  const kvsl::ranging &r = *prob->ranges;
  for (auto [from, to] : {std::pair{&r.col_upact, upact}, {&r.col_loact, loact},
                          {&r.col_uup, uup}, {&r.col_udn, udn}, {&r.col_ucost, ucost},
                          {&r.col_lcost, lcost}})
    if (to != nullptr) std::copy(from->begin(), from->end(), to);
  return 0;
}
