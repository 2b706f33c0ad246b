/*
 * portfolio.cpp -- the portfolio QP of portfolio.c through the C++
 * interface: the least variance of three uncorrelated assets that earns at
 * least 7%.
 */
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "kvtl.hpp"

int main(int argc, char **argv) try {
  const std::array<double, 3> variance{0.04, 0.09, 0.16};
  const std::array<double, 3> ret{0.05, 0.08, 0.12};

  kvtl::problem prob("portfolio");
  prob.set_message_level(1);
  std::vector<kvtl::variable> share;
  kvtl::quad_expr risk;
  kvtl::linear_expr earn;
  for (int i = 0; i < 3; ++i) {
    share.push_back(prob.add_variable("share_" + std::to_string(i + 1), kvtl::var_type::continuous, 0, 1));
    risk += variance[i] * share[i] * share[i];
    earn += ret[i] * share[i];
  }
  prob.add_constraint(kvtl::sum(share) == 1, "budget");
  prob.add_constraint(earn >= 0.07, "return");
  prob.set_objective(risk, kvtl::sense::minimize);

  prob.solve();
  // Given a file base, the model is also written as an LP and an MPS file.
  if (argc > 1) {
    prob.export_lp(argv[1]);
    prob.export_mps(argv[1]);
  }
  const double v = prob.objective_value();
  std::printf("LP status %d, variance %.10g\n", static_cast<int>(prob.get_lp_status()), v);
  // From the optimality conditions: x = (33, 16, 10) / 59, variance 1.4 / 59.
  const std::array<double, 3> expect{33.0 / 59, 16.0 / 59, 10.0 / 59};
  bool ok = std::fabs(v - 1.4 / 59) < 1e-6;
  for (int i = 0; i < 3; ++i) {
    const double x = share[i].value();
    std::printf("  asset %d: %.6f\n", i + 1, x);
    if (std::fabs(x - expect[i]) > 1e-5) ok = false;
  }
  return ok ? 0 : 1;
} catch (const std::exception &e) {
  std::fprintf(stderr, "portfolio: %s\n", e.what());
  return 1;
}
