/*
 * dense_model.h -- small models stated by dense rows, loaded into Clp
 * through Osi: the tests of the search's analyses of its working copy.
 */
#ifndef KVSL_TEST_DENSE_MODEL_H
#define KVSL_TEST_DENSE_MODEL_H

#include <cmath>
#include <memory>
#include <vector>

#include <CoinPackedMatrix.hpp>
#include <OsiClpSolverInterface.hpp>

#include "kvsl.h"

namespace dense {

constexpr double inf = KVSL_INFINITY;

// A model by dense rows: lo <= A x <= up, bounds, integer columns.
struct model {
  std::vector<std::vector<double>> a;
  std::vector<double> rlo, rup, lb, ub;
  std::vector<char> integer;  // per column
  std::vector<double> obj = {};  // per column; none: all 0
};

inline std::unique_ptr<OsiClpSolverInterface> solver_of(const model &m) {
  auto s = std::make_unique<OsiClpSolverInterface>();
  const int n = static_cast<int>(m.lb.size());
  CoinPackedMatrix rows(false, 0, 0);
  rows.setDimensions(0, n);
  for (const auto &r : m.a) {
    std::vector<int> ind;
    std::vector<double> val;
    for (int j = 0; j < n; ++j)
      if (r[j] != 0.0) {
        ind.push_back(j);
        val.push_back(r[j]);
      }
    rows.appendRow(static_cast<int>(ind.size()), ind.data(), val.data());
  }
  std::vector<double> obj(m.obj), rlo(m.rlo), rup(m.rup), lb(m.lb), ub(m.ub);
  obj.resize(static_cast<size_t>(n), 0.0);
  for (auto *v : {&rlo, &rup, &lb, &ub})
    for (double &x : *v)
      if (std::fabs(x) >= inf) x = x > 0 ? s->getInfinity() : -s->getInfinity();
  s->loadProblem(rows, lb.data(), ub.data(), obj.data(), rlo.data(), rup.data());
  for (int j = 0; j < n; ++j)
    if (m.integer[j] != 0) s->setInteger(j);
  s->messageHandler()->setLogLevel(0);
  return s;
}

}  // namespace dense

#endif
