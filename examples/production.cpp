/*
 * production.cpp -- the production planning LP of production.c through
 * the C++ interface: two products made in three plants, a range constraint
 * on the staff; prints values, slacks and duals.
 */
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>

#include "kvtl.hpp"

int main(int argc, char **argv) try {
  kvtl::problem prob("production");
  prob.set_message_level(1);
  const kvtl::variable doors = prob.add_variable("doors");
  const kvtl::variable windows = prob.add_variable("windows");
  const std::array<kvtl::constraint, 3> plant{prob.add_constraint(doors <= 4, "plant1"),
                                              prob.add_constraint(2 * windows <= 12, "plant2"),
                                              prob.add_constraint(3 * doors + 2 * windows <= 18, "plant3")};
  const kvtl::constraint staff = prob.add_range(doors + windows, 1, 10, "staff");
  prob.set_objective(3 * doors + 5 * windows, kvtl::sense::maximize);

  prob.solve();
  // Given a file base, the model is also written as an LP and an MPS file.
  if (argc > 1) {
    prob.export_lp(argv[1]);
    prob.export_mps(argv[1]);
  }
  const double z = prob.objective_value();
  std::printf("LP status %d, profit %g\n", static_cast<int>(prob.get_lp_status()), z);
  std::printf("  doors %g, windows %g\n", doors.value(), windows.value());
  std::array<double, 3> dual{};
  for (int i = 0; i < 3; ++i) {
    dual[i] = plant[i].dual();
    std::printf("  plant%d: slack %g, dual %g\n", i + 1, plant[i].slack(), dual[i]);
  }
  std::printf("  staff: activity %g, slack %g, dual %g\n", staff.activity(), staff.slack(), staff.dual());
  // By hand: doors 2, windows 6, profit 36; duals 0, 1.5, 1 on the plants.
  const bool ok = std::fabs(z - 36) < 1e-6 && std::fabs(doors.value() - 2) < 1e-6 &&
                  std::fabs(windows.value() - 6) < 1e-6 && std::fabs(dual[0]) < 1e-6 &&
                  std::fabs(dual[1] - 1.5) < 1e-6 && std::fabs(dual[2] - 1.0) < 1e-6 &&
                  std::fabs(staff.activity() - 8) < 1e-6 && std::fabs(staff.dual()) < 1e-6;
  return ok ? 0 : 1;
} catch (const std::exception &e) {
  std::fprintf(stderr, "production: %s\n", e.what());
  return 1;
}
