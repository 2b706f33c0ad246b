/*
 * mipstart_test.cpp -- MIP starts: full, partial and infeasible starts
 * before a search, full solutions checked and taken at once, and MIPLIB
 * models started from their optimal solution or from half of it.
 */
#include <algorithm>
#include <cmath>
#include <string>

#include "engine_test.h"
#include "mps_reader.h"

namespace {

class MipStartTest : public LoggedEngineTest {
 protected:
  // min -x - 2y, x + y <= 3.5, x <= 2.5, x and y integer in [0, 5]:
  // optimum x = 0, y = 3, value -6.
  void small() {
    dense_model d{"LL", {3.5, 2.5}, {}, {-1, -2}, {0, 0}, {5, 5}, {{1, 1}, {1, 0}}};
    ASSERT_EQ(load_global(p, d, "II", {0, 1}), 0);
  }
};

// The start's value is the search's cutoff from the root on: a start at
// the optimum of a relaxation that is integral at once leaves the search
// nothing to find, and the start is the optimum.
TEST_F(MipStartTest, StartAtTheRelaxationsOptimumIsTheOptimum) {
  dense_model d{"LL", {3, 5}, {}, {-1, -1}, {0, 0}, {5, 5}, {{1, 0}, {1, 1}}};
  ASSERT_EQ(load_global(p, d, "II", {0, 1}), 0);
  double val[] = {3, 2};
  int col[] = {0, 1};
  ASSERT_EQ(KVSLaddmipsol(p, 2, val, col, "best"), 0);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), -5, 1e-9);
  std::vector<double> x(2);
  ASSERT_EQ(KVSLgetmipsol(p, x.data(), nullptr), 0);
  EXPECT_NEAR(x[0] + x[1], 5, 1e-9);
  EXPECT_LE(x[0], 3 + 1e-9);
}

TEST_F(MipStartTest, FullStartIsTheIncumbentBeforeTheSearch) {
  small();
  double val[] = {2, 1};
  int col[] = {0, 1};
  ASSERT_EQ(KVSLaddmipsol(p, 2, val, col, "mine"), 0);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_EQ(with("MIP start mine is the incumbent: objective -4").size(), 1u);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), -6, 1e-9);
  // A start is used by one search only.
  lines.clear();
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_TRUE(with("MIP start").empty());
}

TEST_F(MipStartTest, InfeasibleStartIsReportedAndIgnored) {
  small();
  double val[] = {3, 3};
  int col[] = {0, 1};
  ASSERT_EQ(KVSLaddmipsol(p, 2, val, col, "bad"), 0);
  double frac[] = {0.5, 1};
  ASSERT_EQ(KVSLaddmipsol(p, 2, frac, col, nullptr), 0);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_EQ(with("MIP start bad is infeasible and is ignored.").size(), 1u);
  EXPECT_EQ(with("MIP start (unnamed) is infeasible and is ignored.").size(), 1u);
  EXPECT_TRUE(with("is the incumbent").empty());
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), -6, 1e-9);
}

TEST_F(MipStartTest, PartialStartIsCompleted) {
  small();
  // x = 2 fixed: the best completion is y = 1 (x + y <= 3.5), value -4.
  double val[] = {2};
  int col[] = {0};
  ASSERT_EQ(KVSLaddmipsol(p, 1, val, col, "half"), 0);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_EQ(with("MIP start half is the incumbent: objective -4").size(), 1u);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), -6, 1e-9);
  // A partial start without any completion is infeasible.
  double bad[] = {2.5};
  ASSERT_EQ(KVSLaddmipsol(p, 1, bad, col, "nothing"), 0);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_EQ(with("MIP start nothing is infeasible and is ignored.").size(), 1u);
}

TEST_F(MipStartTest, StartsCheckTheirArguments) {
  double val[] = {1};
  int col[] = {0}, status = -1;
  EXPECT_EQ(KVSLaddmipsol(p, 1, val, col, "x"), KVSL_ERR_NOTLOADED);
  EXPECT_EQ(KVSLloadmipsol(p, val, &status), KVSL_ERR_NOTLOADED);
  small();
  int far[] = {2};
  EXPECT_EQ(KVSLaddmipsol(p, 1, val, far, "x"), KVSL_ERR_INDEX);
  EXPECT_EQ(KVSLaddmipsol(p, -1, val, col, "x"), KVSL_ERR_BADARG);
  EXPECT_EQ(KVSLaddmipsol(p, 1, nullptr, col, "x"), KVSL_ERR_BADARG);
  EXPECT_EQ(KVSLaddmipsol(p, 0, nullptr, nullptr, "empty"), 0);
  EXPECT_EQ(KVSLloadmipsol(p, nullptr, &status), KVSL_ERR_BADARG);
  EXPECT_EQ(KVSLaddmipsol(nullptr, 1, val, col, "x"), KVSL_ERR_BADARG);
}

TEST_F(MipStartTest, LoadedSolutionIsCheckedAndTaken) {
  small();
  int status = -1;
  double rows_broken[] = {3, 1};   // x > 2.5
  ASSERT_EQ(KVSLloadmipsol(p, rows_broken, &status), 0);
  EXPECT_EQ(status, 1);
  double bound_broken[] = {0, 6};
  ASSERT_EQ(KVSLloadmipsol(p, bound_broken, &status), 0);
  EXPECT_EQ(status, 1);
  double fractional[] = {0.5, 1};
  ASSERT_EQ(KVSLloadmipsol(p, fractional, &status), 0);
  EXPECT_EQ(status, 3);
  double good[] = {1, 2};
  ASSERT_EQ(KVSLloadmipsol(p, good, &status), 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_SOLUTION);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), -5, 1e-12);
  std::vector<double> x(2);
  ASSERT_EQ(KVSLgetmipsol(p, x.data(), nullptr), 0);
  EXPECT_EQ(x, (std::vector<double>{1, 2}));
  double worse[] = {1, 1};
  ASSERT_EQ(KVSLloadmipsol(p, worse, &status), 0);
  EXPECT_EQ(status, 2);
  // A solution as good as the one held is not worse: it is accepted.
  double equal[] = {1, 2};
  ASSERT_EQ(KVSLloadmipsol(p, equal, &status), 0);
  EXPECT_EQ(status, 0);
  // The loaded solution also starts the next search.
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_EQ(with("MIP start loaded is the incumbent: objective -5").size(), 1u);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), -6, 1e-9);
}

// A MIPLIB model solved once, then again from its optimal solution.
class MiplibStart : public MipStartTest {
 protected:
  void solve_cold(const std::string &name) {
    m = read_mps(std::string(KVSL_TEST_DATA_DIR) + "/miplib3/" + name + ".mps.gz");
    ASSERT_EQ(load_mps(p, m, true), 0);
    ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, 1), 0);
    ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
    ASSERT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
    optimum = dbl_attr(p, KVSL_ATTR_MIPOBJVAL);
    cold_nodes = int_attr(p, KVSL_ATTR_NODES);
    x.resize(static_cast<size_t>(m.ncols));
    ASSERT_EQ(KVSLgetmipsol(p, x.data(), nullptr), 0);
    ASSERT_EQ(load_mps(p, m, true), 0);  // a fresh load: nothing carried over
    lines.clear();
  }
  mps_model m;
  double optimum = 0;
  int cold_nodes = 0;
  std::vector<double> x;
};

// The objective values of the incumbents the search announced, in order.
std::vector<double> incumbents(const std::vector<std::string> &lines) {
  std::vector<double> out;
  const std::string key = "Integer solution of ";
  for (const auto &l : lines) {
    auto at = l.find(key);
    if (at != std::string::npos) out.push_back(std::stod(l.substr(at + key.size())));
  }
  return out;
}

// Started from its own optimal solution, a model proves optimality with no
// more nodes than without it, and the start is its first incumbent: no
// worse solution of a heuristic comes before it.
TEST_F(MiplibStart, OptimalStartIsTheFirstIncumbentAndNeedsNoMoreNodes) {
  for (const char *name : {"lseu", "p0201", "mod008", "stein27"}) {
    SCOPED_TRACE(name);
    solve_cold(name);
    std::vector<int> cols;
    for (int j = 0; j < m.ncols; ++j) cols.push_back(j);
    ASSERT_EQ(KVSLaddmipsol(p, m.ncols, x.data(), cols.data(), "optimal"), 0);
    ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, 1), 0);
    ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
    auto announced = with("is the incumbent");
    ASSERT_EQ(announced.size(), 1u);
    double start_value = std::stod(announced[0].substr(announced[0].rfind(' ') + 1));
    double tol = 1e-6 * std::max(1.0, std::fabs(optimum));
    EXPECT_NEAR(start_value, optimum, tol);
    std::vector<double> found = incumbents(lines);
    ASSERT_FALSE(found.empty());
    EXPECT_NEAR(found.front(), start_value, tol);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
    EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), optimum, tol);
    EXPECT_LE(int_attr(p, KVSL_ATTR_NODES), cold_nodes);
  }
}

// Without a start the first incumbent of p0201 is a worse one of a
// heuristic: the test above would see the difference.
TEST_F(MiplibStart, WithoutAStartTheFirstIncumbentIsWorse) {
  solve_cold("p0201");
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, 1), 0);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  std::vector<double> found = incumbents(lines);
  ASSERT_FALSE(found.empty());
  EXPECT_GT(found.front(), optimum + 1);
}

// The candidate-solution callback is asked about the start like any other
// solution; a start it refuses is reported, never becomes the incumbent
// and is not taken as the result afterwards.
struct start_watch {
  std::vector<double> start;
  bool refuse = false;
  int seen = 0;      // calls with the start
  int calls = 0;
  bool first_was_start = false;
};

int watch_candidates(KVSLprob, void *user, const double x[], int ncols, int *reject) {
  auto *w = static_cast<start_watch *>(user);
  bool is_start = std::equal(x, x + ncols, w->start.begin(), [](double a, double b) {
    return std::fabs(a - b) <= 1e-9;
  });
  if (w->calls++ == 0) w->first_was_start = is_start;
  if (is_start) {
    ++w->seen;
    *reject = w->refuse ? 1 : 0;
  }
  return 0;
}

TEST_F(MiplibStart, CandidateCallbackSeesTheStartFirst) {
  solve_cold("lseu");
  start_watch w{x};
  ASSERT_EQ(KVSLsetcbpreintsol(p, watch_candidates, &w), 0);
  std::vector<int> cols;
  for (int j = 0; j < m.ncols; ++j) cols.push_back(j);
  ASSERT_EQ(KVSLaddmipsol(p, m.ncols, x.data(), cols.data(), "optimal"), 0);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_TRUE(w.first_was_start);
  EXPECT_GE(w.seen, 1);
  EXPECT_TRUE(with("refused").empty());
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), optimum, 1e-6 * optimum);
}

TEST_F(MiplibStart, StartRefusedByTheCandidateCallbackIsReported) {
  solve_cold("lseu");
  start_watch w{x, true};
  ASSERT_EQ(KVSLsetcbpreintsol(p, watch_candidates, &w), 0);
  std::vector<int> cols;
  for (int j = 0; j < m.ncols; ++j) cols.push_back(j);
  ASSERT_EQ(KVSLaddmipsol(p, m.ncols, x.data(), cols.data(), "mine"), 0);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_GE(w.seen, 1);
  EXPECT_EQ(with("MIP start mine was refused by the candidate-solution callback.").size(), 1u);
  // Whatever the search ends with, it is not the refused start.
  if (int_attr(p, KVSL_ATTR_MIPSTATUS) == KVSL_MIP_OPTIMAL ||
      int_attr(p, KVSL_ATTR_MIPSTATUS) == KVSL_MIP_SOLUTION) {
    std::vector<double> got(static_cast<size_t>(m.ncols));
    ASSERT_EQ(KVSLgetmipsol(p, got.data(), nullptr), 0);
    EXPECT_NE(got, x);
  }
}

TEST_F(MiplibStart, HalfTheIntegersAreCompleted) {
  solve_cold("lseu");
  std::vector<int> cols;
  std::vector<double> vals;
  for (size_t k = 0; k < m.entcol.size() / 2; ++k) {
    cols.push_back(m.entcol[k]);
    vals.push_back(x[static_cast<size_t>(m.entcol[k])]);
  }
  ASSERT_GT(cols.size(), 10u);
  ASSERT_EQ(KVSLaddmipsol(p, static_cast<int>(cols.size()), vals.data(), cols.data(), "half"), 0);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_TRUE(with("is infeasible").empty());
  auto first = with("MIP start half is the incumbent");
  ASSERT_EQ(first.size(), 1u);
  // The completion keeps the given values, so it is no better than the
  // optimum; the search still proves the optimum.
  double start_value = std::stod(first[0].substr(first[0].rfind(' ') + 1));
  EXPECT_GE(start_value, optimum - 1e-6 * std::max(1.0, std::fabs(optimum)));
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), optimum, 1e-6 * std::max(1.0, std::fabs(optimum)));
}

}  // namespace
