/*
 * transport.cpp -- the transport LP of transport.c through the C++
 * interface: ship goods from plants to customers at least cost, within
 * supplies and meeting demands; the data come from the same data file.
 * Prints the model.  Usage: transport_cpp [BASE [DATA]] as transport.c.
 */
#include <cmath>
#include <cstdio>
#include <exception>
#include <memory>
#include <ranges>
#include <stdexcept>
#include <string>
#include <vector>

#include "kvtl.hpp"

#ifndef TRANSPORT_DATA
#define TRANSPORT_DATA "examples/transport.dat"
#endif

namespace {

constexpr int line_length = 200;

struct plant_data {
  std::string name;
  double supply;
  std::vector<double> cost;   // per customer
};

struct transport_data {
  std::vector<double> demand;   // per customer
  std::vector<plant_data> plants;
};

// The data file through the library's data-file reader.
transport_data read_data(const std::string &path) {
  std::unique_ptr<FILE, int (*)(FILE *)> in(std::fopen(path.c_str(), "r"), &std::fclose);
  if (!in) throw std::runtime_error(path + ": cannot open");
  int np = 0, nc = 0;
  if (mdlreadline(in.get(), line_length, "i i", &np, &nc) != 2 || np < 1 || nc < 1)
    throw std::runtime_error(path + ": sizes expected: plants customers");
  transport_data d;
  d.demand.resize(nc);
  if (mdlreadarrline(in.get(), line_length, "f,", d.demand.data(), nc) != nc)
    throw std::runtime_error(path + ": one demand per customer expected");
  for (int p = 0; p < np; ++p) {
    char name[41];
    plant_data pd{"", 0, std::vector<double>(nc)};
    if (mdlreadline(in.get(), line_length, "T40,f", name, &pd.supply) != 2)
      throw std::runtime_error(path + ": plant name and supply expected");
    if (mdlreadarrline(in.get(), line_length, "f", pd.cost.data(), nc) != nc)
      throw std::runtime_error(path + ": one cost per customer expected");
    pd.name = name;
    d.plants.push_back(std::move(pd));
  }
  return d;
}

}  // namespace

int main(int argc, char **argv) try {
  const transport_data data = read_data(argc > 2 ? argv[2] : TRANSPORT_DATA);
  const int np = static_cast<int>(data.plants.size()), nc = static_cast<int>(data.demand.size());

  kvtl::problem prob("transport");
  prob.set_message_level(1);
  std::vector<std::vector<kvtl::variable>> ship(np);
  kvtl::linear_expr total;
  for (int p = 0; p < np; ++p)
    for (int c = 0; c < nc; ++c) {
      ship[p].push_back(prob.add_variable("ship_" + std::to_string(p + 1) + "_" + std::to_string(c + 1)));
      total += data.plants[p].cost[c] * ship[p][c];
    }
  for (int p = 0; p < np; ++p)
    prob.add_constraint(kvtl::sum(ship[p]) <= data.plants[p].supply, "supply_" + std::to_string(p + 1));
  for (int c = 0; c < nc; ++c)
    prob.add_constraint(kvtl::sum(std::views::iota(0, np), [&](int p) { return ship[p][c]; }) >= data.demand[c],
                        "demand_" + std::to_string(c + 1));
  // The objective as a named free row, as the C version states it.
  prob.set_objective(prob.add_constraint(total, kvtl::ctr_type::nonbinding, "cost"));
  prob.print();   // the model as stated, through the library's output

  prob.minimize();
  // Given a file base, the model is also written as an LP and an MPS file.
  if (argc > 1) {
    prob.export_lp(argv[1]);
    prob.export_mps(argv[1]);
  }
  const auto status = prob.get_lp_status();
  const double value = prob.objective_value();
  std::printf("LP status %d, total cost %g\n", static_cast<int>(status), value);
  for (int p = 0; p < np; ++p)
    for (int c = 0; c < nc; ++c) {
      const double x = ship[p][c].value();
      if (x > 1e-9) std::printf("  %s -> customer %d: %g\n", data.plants[p].name.c_str(), c + 1, x);
    }
  // The least cost of the data file shipped with the example, found
  // independently: 345.  Other data files are only solved.
  if (argc > 2) return status == kvtl::lp_status::optimal ? 0 : 1;
  return status == kvtl::lp_status::optimal && std::fabs(value - 345.0) < 1e-6 ? 0 : 1;
} catch (const std::exception &e) {
  std::fprintf(stderr, "transport: %s\n", e.what());
  return 1;
}
