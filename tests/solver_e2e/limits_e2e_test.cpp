/*
 * limits_e2e_test.cpp -- searches stopped by the engine's time and node
 * limits, seen through the public interface: the MIP status, the solution
 * values of the best solution found, and no solution when none was.
 */
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <vector>

#include "kvsl.h"
#include "kvtl.h"
#include "support/messages.h"
#include "support/public_model.h"

namespace {

constexpr int st_loaded = 1, st_solution = 8;
constexpr double tol = 1e-6;
// The call returns within this much of the limit (a loaded machine and
// sanitizers included); a limit that is not honoured takes minutes.
constexpr double margin = 10.0;

// A market split stated through the public calls: rows r_i:
// sum_j a_ij x_j (+ over_i - under_i) = floor(sum_j a_ij / 2) over 40
// binaries, coefficients from a fixed generator.  With slacks the
// objective minimises their sum and any x is feasible; without, the exact
// split (minimising the number of ones) is a search of exponentially many
// nodes that heuristics do not shortcut.
class LimitsE2e : public testsupport::public_problem_test {
 protected:
  static constexpr int m = 5, n = 40;

  void build(bool slacks, uint64_t seed) {
    uint64_t s = seed;
    auto next = [&s] {
      s = s * 6364136223846793005ULL + 1442695040888963407ULL;
      return static_cast<int>((s >> 33) % 100);
    };
    MDLctr cost = mdlnewctr_prob(prob, "cost", MDL_NONBINDING);
    for (int j = 0; j < n; ++j) {
      xs.push_back(mdlnewvar_prob(prob, nullptr, MDL_BINARY, 0, 1));
      if (!slacks) EXPECT_EQ(mdladdterm(cost, xs[j], 1), 0);
    }
    for (int i = 0; i < m; ++i) {
      MDLctr r = mdlnewctr_prob(prob, nullptr, MDL_EQ);
      int sum = 0;
      std::vector<int> a;
      for (int j = 0; j < n; ++j) {
        a.push_back(next());
        sum += a.back();
        if (a.back() != 0) EXPECT_EQ(mdladdterm(r, xs[j], a.back()), 0);
      }
      if (slacks) {
        MDLvar over = mdlnewvar_prob(prob, nullptr, MDL_CONTINUOUS, 0, MDL_INFINITY);
        MDLvar under = mdlnewvar_prob(prob, nullptr, MDL_CONTINUOUS, 0, MDL_INFINITY);
        EXPECT_EQ(mdladdterm(r, over, 1), 0);
        EXPECT_EQ(mdladdterm(r, under, -1), 0);
        EXPECT_EQ(mdladdterm(cost, over, 1), 0);
        EXPECT_EQ(mdladdterm(cost, under, 1), 0);
        slack_vars.push_back(over);
        slack_vars.push_back(under);
      }
      EXPECT_EQ(mdladdterm(r, nullptr, std::floor(sum / 2.0)), 0);
      rows.push_back(r);
      coefs.push_back(a);
    }
    EXPECT_EQ(mdlsetobj_prob(prob, cost), 0);
  }

  // Set an engine control through the engine problem of the problem.
  void set_time_limit(double seconds) {
    ASSERT_EQ(KVSLsetdblcontrol(mdlgetkvslprob_prob(prob), KVSL_CTRL_TIMELIMIT, seconds), 0);
  }

  // Minimise with the search; the seconds the call took.
  double minimise() {
    auto t0 = std::chrono::steady_clock::now();
    EXPECT_EQ(mdlminim_prob(prob, "g"), 0);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  }

  int engine_int(int attr) {
    int v = -1;
    EXPECT_EQ(KVSLgetintattrib(mdlgetkvslprob_prob(prob), attr, &v), 0);
    return v;
  }
  double engine_dbl(int attr) {
    double v = 0.0;
    EXPECT_EQ(KVSLgetdblattrib(mdlgetkvslprob_prob(prob), attr, &v), 0);
    return v;
  }

  // The solution read through the variables satisfies every row, bound and
  // integrality, and its cost is the objective value reported.
  void expect_feasible_solution() {
    EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded | st_solution);
    std::vector<double> x;
    for (MDLvar v : xs) {
      double val = mdlgetsol(v);
      EXPECT_NEAR(val, std::round(val), tol);
      EXPECT_GE(val, -tol);
      EXPECT_LE(val, 1 + tol);
      x.push_back(val);
    }
    double cost = 0.0;
    for (MDLvar v : slack_vars) {
      EXPECT_GE(mdlgetsol(v), -tol);
      cost += mdlgetsol(v);
    }
    for (int i = 0; i < m; ++i) {
      double act = 0.0;
      for (int j = 0; j < n; ++j) act += coefs[i][j] * x[j];
      act += mdlgetsol(slack_vars[2 * i]) - mdlgetsol(slack_vars[2 * i + 1]);
      EXPECT_NEAR(mdlgetact(rows[i]), act, 1e-6 * (1 + std::fabs(act)));
      EXPECT_NEAR(mdlgetslack(rows[i]), 0.0, 1e-6 * (1 + std::fabs(act)));
    }
    EXPECT_NEAR(mdlgetobjval_prob(prob), cost, 1e-6 * (1 + cost));
    EXPECT_LE(engine_dbl(KVSL_ATTR_BESTBOUND), mdlgetobjval_prob(prob) + tol);
  }

  std::vector<MDLvar> xs, slack_vars;
  std::vector<MDLctr> rows;
  std::vector<std::vector<int>> coefs;
};

// Three seconds: the search's first solution of its own may take half a
// second under AddressSanitizer.
TEST_F(LimitsE2e, TimeLimitLeavesBestSolutionReadable) {
  build(true, 7);
  set_time_limit(3.0);
  EXPECT_LT(minimise(), 3.0 + margin);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetmipstat_prob(prob), KVSL_MIP_SOLUTION);
  expect_feasible_solution();
  EXPECT_GE(engine_int(KVSL_ATTR_NODES), 0);
  EXPECT_TRUE(errors.empty());
}

TEST_F(LimitsE2e, NodeLimitLeavesBestSolutionReadable) {
  build(true, 7);
  ASSERT_EQ(KVSLsetintcontrol(mdlgetkvslprob_prob(prob), KVSL_CTRL_MAXNODE, 10), 0);
  minimise();
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetmipstat_prob(prob), KVSL_MIP_SOLUTION);
  expect_feasible_solution();
  EXPECT_EQ(engine_int(KVSL_ATTR_NODES), 10);
}

// Stopped without a solution: no solution is available and reading a value
// says so (warning 1520, value 0).
TEST_F(LimitsE2e, TimeLimitWithoutSolution) {
  build(false, 11);
  set_time_limit(1.0);
  EXPECT_LT(minimise(), 1.0 + margin);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetmipstat_prob(prob), KVSL_MIP_NO_SOL_FOUND);
  EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded);
  EXPECT_EQ(mdlgetobjval_prob(prob), 0.0);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().text,
            "(getobjval) No solution available or problem modified since last solved.");
  errors.reports.clear();
  EXPECT_EQ(mdlgetsol(xs[0]), 0.0);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().number, 1520);
  EXPECT_EQ(errors.last().iserror, 0);
  EXPECT_EQ(errors.last().text,
            "(getsol) No solution available or problem modified since last solved.");
}

// The status texts of a stopped search at message level 4.
TEST_F(LimitsE2e, StoppedStatusTexts) {
  testsupport::output_log out;
  build(true, 7);
  ASSERT_EQ(KVSLsetintcontrol(mdlgetkvslprob_prob(prob), KVSL_CTRL_MAXNODE, 1), 0);
  minimise();
  out.install(prob);
  mdlsetmsglevel_prob(prob, 4);
  EXPECT_EQ(mdlgetmipstat_prob(prob), KVSL_MIP_SOLUTION);
  EXPECT_EQ(out.text, "MIP search incomplete - an integer solution has been found.\n");
}

}  // namespace
