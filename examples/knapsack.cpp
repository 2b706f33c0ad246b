/*
 * knapsack.cpp -- the knapsack MIP of knapsack.c through the C++ interface:
 * choose items of greatest total value whose total weight fits the capacity.
 */
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <ranges>
#include <string>
#include <vector>

#include "kvtl.hpp"

int main(int argc, char **argv) try {
  const std::array<double, 8> value{10, 13, 7, 8, 12, 9, 4, 11};
  const std::array<double, 8> weight{5, 6, 4, 3, 7, 5, 2, 6};
  const double capacity = 20;

  kvtl::problem prob("knapsack");
  prob.set_message_level(1);
  std::vector<kvtl::variable> take;
  for (int i = 0; i < 8; ++i) take.push_back(prob.add_binary("take_" + std::to_string(i + 1)));
  const auto items = std::views::iota(0, 8);
  prob.add_constraint(kvtl::sum(items, [&](int i) { return weight[i] * take[i]; }) <= capacity, "capacity");
  prob.set_objective(kvtl::sum(items, [&](int i) { return value[i] * take[i]; }), kvtl::sense::maximize);

  prob.solve("g");
  // Given a file base, the model is also written as an LP and an MPS file.
  if (argc > 1) {
    prob.export_lp(argv[1]);
    prob.export_mps(argv[1]);
  }
  const auto status = prob.get_mip_status();
  const double best = prob.objective_value();
  std::printf("MIP status %d, best value %g; items:", static_cast<int>(status), best);
  for (int i : items)
    if (take[i].value() > 0.5) std::printf(" %d", i + 1);
  std::printf("\n");
  // By enumeration of all 256 choices the best value is 42 (reached by
  // more than one choice of items).
  return status == kvtl::mip_status::optimal && std::fabs(best - 42.0) < 1e-6 ? 0 : 1;
} catch (const std::exception &e) {
  std::fprintf(stderr, "knapsack: %s\n", e.what());
  return 1;
}
