/*
 * limits_test.cpp -- time, node and gap limits and the thread count: every
 * stage of a solve stops at the time limit with the documented status, and
 * what a stopped solve reports (solution, bound, nodes) is consistent.
 */
#include <algorithm>
#include <chrono>
#include <cmath>
#include <atomic>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <ctime>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "engine_test.h"

namespace {

// A model stated column by column (sparse), with entity columns.
struct sparse_model {
  std::string rowtype;
  std::vector<double> rhs, obj, lb, ub;
  std::vector<int64_t> start{0};
  std::vector<int> ind;
  std::vector<double> val;
  std::string enttype;
  std::vector<int> entcol;
  std::vector<int> qcol1, qcol2;  // quadratic objective triangle
  std::vector<double> qval;

  int ncols() const { return static_cast<int>(obj.size()); }
  int nrows() const { return static_cast<int>(rowtype.size()); }
  void add_row(char type, double r) {
    rowtype.push_back(type);
    rhs.push_back(r);
  }
  // A column with cost c, bounds [l, u] and coefficients (row, value).
  void add_col(double c, double l, double u, const std::vector<std::pair<int, double>> &coefs,
               char type = ' ') {
    for (auto [i, v] : coefs) {
      ind.push_back(i);
      val.push_back(v);
    }
    start.push_back(static_cast<int64_t>(ind.size()));
    if (type != ' ') {
      enttype.push_back(type);
      entcol.push_back(ncols());
    }
    obj.push_back(c);
    lb.push_back(l);
    ub.push_back(u);
  }

  int load(KVSLprob p) const {
    if (!qval.empty())
      return KVSLloadqglobal64(p, "q", ncols(), nrows(), rowtype.data(), rhs.data(), nullptr,
                               obj.data(), start.data(), nullptr, ind.data(), val.data(),
                               lb.data(), ub.data(), static_cast<int64_t>(qval.size()),
                               qcol1.data(), qcol2.data(), qval.data(),
                               static_cast<int>(entcol.size()), 0, enttype.data(),
                               entcol.data(), nullptr, nullptr, nullptr, nullptr, nullptr);
    return KVSLloadglobal64(p, "m", ncols(), nrows(), rowtype.data(), rhs.data(), nullptr,
                            obj.data(), start.data(), nullptr, ind.data(), val.data(), lb.data(),
                            ub.data(), static_cast<int>(entcol.size()), 0, enttype.data(),
                            entcol.data(), nullptr, nullptr, nullptr, nullptr, nullptr);
  }

  // Is x within the bounds, every row and the integrality of the entities?
  bool feasible(const std::vector<double> &x, double tol = 1e-6) const {
    for (int j = 0; j < ncols(); ++j)
      if (x[j] < lb[j] - tol || x[j] > ub[j] + tol) return false;
    for (int j : entcol)
      if (std::fabs(x[j] - std::round(x[j])) > tol) return false;
    std::vector<double> act(rowtype.size(), 0.0);
    for (int j = 0; j < ncols(); ++j)
      for (int64_t k = start[j]; k < start[j + 1]; ++k) act[ind[k]] += val[k] * x[j];
    for (int i = 0; i < nrows(); ++i) {
      double t = tol * (1.0 + std::fabs(rhs[i]));
      if (rowtype[i] == 'E' && std::fabs(act[i] - rhs[i]) > t) return false;
      if (rowtype[i] == 'L' && act[i] > rhs[i] + t) return false;
      if (rowtype[i] == 'G' && act[i] < rhs[i] - t) return false;
    }
    return true;
  }

  double objective(const std::vector<double> &x) const {
    double v = 0.0;
    for (int j = 0; j < ncols(); ++j) v += obj[j] * x[j];
    for (size_t k = 0; k < qval.size(); ++k)
      v += (qcol1[k] == qcol2[k] ? 0.5 : 1.0) * qval[k] * x[qcol1[k]] * x[qcol2[k]];
    return v;
  }
};

// Deterministic pseudo-random integers.
struct lcg {
  uint64_t s;
  int next(int mod) {
    s = s * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<int>((s >> 33) % static_cast<uint64_t>(mod));
  }
};

// Market split: m equality rows sum_j a_ij x_j = floor(sum_j a_ij / 2) over
// n binaries, coefficients in [0, 100).  With `slacks` each row gets a
// surplus and a deficit column and the objective minimises their sum (any
// x is then feasible); without, the model asks for an exact split, which
// branch and bound decides only after exponentially many nodes.
sparse_model market_split(int m, int n, bool slacks, uint64_t seed) {
  lcg r{seed};
  std::vector<std::vector<int>> a(m, std::vector<int>(n));
  sparse_model mod;
  for (int i = 0; i < m; ++i) {
    int sum = 0;
    for (int j = 0; j < n; ++j) sum += a[i][j] = r.next(100);
    mod.add_row('E', std::floor(sum / 2.0));
  }
  for (int j = 0; j < n; ++j) {
    std::vector<std::pair<int, double>> c;
    for (int i = 0; i < m; ++i)
      if (a[i][j] != 0) c.push_back({i, a[i][j]});
    mod.add_col(0.0, 0.0, 1.0, c, 'B');
  }
  if (slacks)
    for (int i = 0; i < m; ++i) {
      mod.add_col(1.0, 0.0, KVSL_INFINITY, {{i, 1.0}});
      mod.add_col(1.0, 0.0, KVSL_INFINITY, {{i, -1.0}});
    }
  return mod;
}

// The least cost (of x and the slacks) of a small market split with
// slacks, by trying every x (the independent oracle of the gap and thread
// tests).
double market_split_optimum(const sparse_model &mod, int m, int n) {
  double best = 1e300;
  for (uint32_t bits = 0; bits < (1u << n); ++bits) {
    std::vector<double> act(m, 0.0);
    for (int j = 0; j < n; ++j)
      if (bits & (1u << j))
        for (int64_t k = mod.start[j]; k < mod.start[j + 1]; ++k) act[mod.ind[k]] += mod.val[k];
    double v = 0.0;
    for (int j = 0; j < n; ++j)
      if (bits & (1u << j)) v += mod.obj[j];
    for (int i = 0; i < m; ++i) v += std::fabs(act[i] - mod.rhs[i]);
    best = std::min(best, v);
  }
  return best;
}

// A random LP: m rows sum_j a_ij x_j >= b_i, n columns with positive costs
// and about per_col coefficients each (every row has one at least), the
// columns integer in [0, 50] when `integer`.  With 1500 rows the dual
// simplex takes a third of a second, the primal three seconds and the
// barrier seven.
sparse_model random_lp(int m, int n, int per_col, bool integer, uint64_t seed) {
  lcg r{seed};
  sparse_model mod;
  for (int i = 0; i < m; ++i) mod.add_row('G', 100 + r.next(1000));
  for (int j = 0; j < n; ++j) {
    std::vector<std::pair<int, double>> c{{j % m, 1.0 + r.next(100)}};
    for (int k = 1; k < per_col; ++k) {
      int i = r.next(m);
      bool dup = false;
      for (auto &e : c) dup = dup || e.first == i;
      if (!dup) c.push_back({i, 1.0 + r.next(100)});
    }
    mod.add_col(1 + r.next(100), 0.0, integer ? 50.0 : KVSL_INFINITY, c, integer ? 'I' : ' ');
  }
  return mod;
}

using seconds_clock = std::chrono::steady_clock;

double seconds_since(seconds_clock::time_point t0) {
  return std::chrono::duration<double>(seconds_clock::now() - t0).count();
}

// Spend this much processor time (clock ticks) doing nothing useful.
void burn_processor(std::clock_t ticks) {
  std::clock_t c0 = std::clock();
  volatile double sink = 0.0;
  while (std::clock() - c0 < ticks) sink = sink + 1.0;
}

// A limit is honoured when the call returns within this much of it: a
// generous margin for a loaded machine and sanitizers, so that only a
// limit that is not checked at all (minutes of search) fails.
constexpr double margin = 10.0;

class LimitsTest : public EngineTest {
 protected:
  // Run the search under a time limit; the seconds it took.
  double timed(const char *flags) {
    auto t0 = seconds_clock::now();
    EXPECT_EQ(KVSLmipoptimize(p, flags), 0);
    return seconds_since(t0);
  }
  // Load the model and search it under a time limit, which the call keeps
  // to within the margin.
  void search_within(const sparse_model &mod, double limit) {
    ASSERT_EQ(mod.load(p), 0);
    ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, limit), 0);
    EXPECT_LT(timed(""), limit + margin);
  }
  // Hand a market split with slacks (m rows after its n binaries) its
  // obvious solution as a MIP start: x = 0, each row's surplus column at
  // the row's right-hand side.  A slow machine (sanitizers, load) may not
  // reach a first solution of its own before a short limit.
  void hold_zero_start(const sparse_model &mod, int n) {
    std::vector<double> start(mod.ncols(), 0.0);
    for (size_t i = 0; i < mod.rhs.size(); ++i) start[n + 2 * i] = mod.rhs[i];
    std::vector<int> cols(mod.ncols());
    for (int j = 0; j < mod.ncols(); ++j) cols[j] = j;
    ASSERT_TRUE(mod.feasible(start));
    ASSERT_EQ(KVSLaddmipsol(p, mod.ncols(), start.data(), cols.data(), "zero"), 0);
  }
  std::vector<double> mipsol(int n) {
    std::vector<double> x(n);
    EXPECT_EQ(KVSLgetmipsol(p, x.data(), nullptr), 0);
    return x;
  }
  // After a stopped search with a solution: the solution is feasible, its
  // objective is the one reported, and the bound does not pass it.
  void expect_stopped_with_solution(const sparse_model &mod) {
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_SOLUTION);
    std::vector<double> x = mipsol(mod.ncols());
    EXPECT_TRUE(mod.feasible(x));
    double obj = dbl_attr(p, KVSL_ATTR_MIPOBJVAL);
    EXPECT_NEAR(obj, mod.objective(x), 1e-6 * (1 + std::fabs(obj)));
    EXPECT_LE(dbl_attr(p, KVSL_ATTR_BESTBOUND), obj + 1e-6);
    EXPECT_GE(int_attr(p, KVSL_ATTR_NODES), 0);
  }
};

// ---- Time limits of the global search ------------------------------------

// A market split with slacks: any x is feasible, the least slack is hard to
// prove.  A limit of three seconds stops the search with a checked solution
// of its own (found after 0.3 to 0.5 s under AddressSanitizer on an idle
// machine).
TEST_F(LimitsTest, TimeLimitStopsHardSearchWithSolution) {
  sparse_model mod = market_split(5, 40, true, 7);
  search_within(mod, 3.0);
  expect_stopped_with_solution(mod);
  EXPECT_GT(dbl_attr(p, KVSL_ATTR_SOLVETIME), 0.0);
}

// The exact split has no solution a heuristic finds: stopped without one.
TEST_F(LimitsTest, TimeLimitStopsHardSearchWithoutSolution) {
  sparse_model mod = market_split(5, 40, false, 11);
  search_within(mod, 1.0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_NO_SOL_FOUND);
  EXPECT_EQ(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), 0.0);
  std::vector<double> x(mod.ncols());
  EXPECT_NE(KVSLgetmipsol(p, x.data(), nullptr), 0);
  EXPECT_GE(int_attr(p, KVSL_ATTR_NODES), 0);
  // The bound of the relaxation stays readable: a split exists in the LP.
  EXPECT_LE(dbl_attr(p, KVSL_ATTR_BESTBOUND), 1e-6);
}

// Short limits strike in different stages (root LP, root cuts, heuristics,
// first nodes); every one of them ends the call with a consistent result.
TEST_F(LimitsTest, ShortTimeLimitsInEveryStage) {
  sparse_model mod = market_split(5, 40, true, 7);
  ASSERT_EQ(mod.load(p), 0);
  for (double limit : {0.001, 0.01, 0.05, 0.2, 0.5}) {
    SCOPED_TRACE(limit);
    ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, limit), 0);
    double spent = timed("");
    EXPECT_LT(spent, limit + margin);
    int status = int_attr(p, KVSL_ATTR_MIPSTATUS);
    ASSERT_TRUE(status == KVSL_MIP_SOLUTION || status == KVSL_MIP_NO_SOL_FOUND) << status;
    if (status == KVSL_MIP_SOLUTION) expect_stopped_with_solution(mod);
  }
}

// A root LP far longer than the limit: the limit stops it inside the
// simplex, the LP is unfinished and no solution was found.
TEST_F(LimitsTest, TimeLimitStopsRootLinearProgram) {
  sparse_model mod = random_lp(1500, 3000, 10, true, 3);
  search_within(mod, 0.02);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_UNFINISHED);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_NO_SOL_FOUND);
}

// The limit is wall-clock time: a search whose time goes by in the
// application's cut manager (asleep, using no processor time) stops at it.
int sleepy_cutmgr(KVSLprob, void *) {
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  return 0;
}

// A start (any point is feasible) makes sure a solution is held when the
// limit falls before the search finds one of its own, as it may where the
// root takes long (sanitizer builds on a busy machine).
TEST_F(LimitsTest, TimeLimitIsWallClock) {
  sparse_model mod = market_split(5, 40, true, 7);
  ASSERT_EQ(mod.load(p), 0);
  hold_zero_start(mod, 40);
  ASSERT_EQ(KVSLsetcbcutmgr(p, sleepy_cutmgr, nullptr), 0);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, 0.5), 0);
  double spent = timed("");
  EXPECT_LT(spent, 0.5 + margin);
  expect_stopped_with_solution(mod);
}

// A limit that stops the root LP leaves the MIP start as the solution.
TEST_F(LimitsTest, StartIsTheSolutionWhenTheRootIsStopped) {
  sparse_model mod = random_lp(1500, 3000, 10, true, 3);
  ASSERT_EQ(mod.load(p), 0);
  std::vector<double> start(mod.ncols(), 50.0);
  std::vector<int> cols(mod.ncols());
  for (int j = 0; j < mod.ncols(); ++j) cols[j] = j;
  ASSERT_TRUE(mod.feasible(start));
  ASSERT_EQ(KVSLaddmipsol(p, mod.ncols(), start.data(), cols.data(), "all fifty"), 0);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, 0.02), 0);
  double spent = timed("");
  EXPECT_LT(spent, 0.02 + margin);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_UNFINISHED);
  expect_stopped_with_solution(mod);
  EXPECT_EQ(mipsol(mod.ncols()), start);
}

// No limit (0, the default, or negative): the same small model is solved.
TEST_F(LimitsTest, ZeroOrNegativeTimeLimitIsNone) {
  sparse_model mod = market_split(2, 12, true, 5);
  ASSERT_EQ(mod.load(p), 0);
  double best = market_split_optimum(mod, 2, 12);
  for (double limit : {0.0, -1.0}) {
    ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, limit), 0);
    ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_MIPRELGAP, 0.0), 0);
    timed("");
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
    EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), best, 1e-6);
  }
}

// The limit of one call does not outlive it: after an LP solved under a
// short limit, a search without a limit runs to its end once that limit's
// time (processor and wall-clock) has long gone by.
TEST_F(LimitsTest, EarlierLimitDoesNotStopLaterSolve) {
  sparse_model mod = market_split(2, 12, true, 5);
  ASSERT_EQ(mod.load(p), 0);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, 0.05), 0);
  ASSERT_EQ(KVSLlpoptimize(p, ""), 0);
  ASSERT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, 0.0), 0);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_MIPRELGAP, 0.0), 0);
  // Spend processor time beyond the old limit.
  burn_processor(CLOCKS_PER_SEC / 5);
  timed("");
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), market_split_optimum(mod, 2, 12), 1e-6);
}

// Ranging after a solve under a limit that has since run out works on the
// model as solved: the limit went with the call.
TEST_F(LimitsTest, RangingAfterLimitedSolve) {
  dense_model m{"LL", {4, 7}, {}, {3, 2}, {0, 0}, {3, KVSL_INFINITY}, {{1, 1}, {1, 3}}};
  ASSERT_EQ(load_lp(p, m), 0);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, 0.05), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  ASSERT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  burn_processor(CLOCKS_PER_SEC / 10);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  ASSERT_EQ(KVSLrange(p), 0);
  double up[2], lo[2], uup[2], udn[2], uc[2], lc[2];
  ASSERT_EQ(KVSLgetcolrange(p, up, lo, uup, udn, uc, lc), 0);
  EXPECT_NEAR(up[0], 4.0, 1e-9);
  EXPECT_NEAR(lo[0], 2.5, 1e-9);
  EXPECT_NEAR(lc[0], 2.0, 1e-9);
}

// ---- Node limits ----------------------------------------------------------

TEST_F(LimitsTest, NodeLimitsStopTheSearch) {
  sparse_model mod = market_split(5, 40, true, 7);
  ASSERT_EQ(mod.load(p), 0);
  for (int limit : {1, 10}) {
    SCOPED_TRACE(limit);
    ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_MAXNODE, limit), 0);
    timed("");
    expect_stopped_with_solution(mod);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_NODES), limit);
  }
}

TEST_F(LimitsTest, NodeLimitWithoutSolution) {
  sparse_model mod = market_split(5, 40, false, 11);
  ASSERT_EQ(mod.load(p), 0);
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_MAXNODE, 10), 0);
  timed("");
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_NO_SOL_FOUND);
  EXPECT_LE(int_attr(p, KVSL_ATTR_NODES), 10);
}

// ---- Gaps -----------------------------------------------------------------

// A market split with costs, small enough to enumerate: the exact search
// finds the least cost; a relative gap of 0.5 or an absolute gap stops as soon as
// the incumbent is within it (status optimal within the gap), after fewer
// nodes than the exact search, and the bound stays valid.
class GapTest : public LimitsTest {
 protected:
  void SetUp() override {
    LimitsTest::SetUp();
    mod = market_split(3, 14, true, 23);
    // Costs on x keep the relaxation's bound away from the optimum.
    lcg r{41};
    for (int j = 0; j < 14; ++j) mod.obj[j] = 1 + r.next(9);
    best = market_split_optimum(mod, 3, 14);
    ASSERT_EQ(mod.load(p), 0);
    ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_MIPRELGAP, 0.0), 0);
    timed("");
    ASSERT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
    ASSERT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), best, 1e-6);
    exact_nodes = int_attr(p, KVSL_ATTR_NODES);
  }
  // The search stopped within the gap: optimal status, a feasible
  // incumbent no further from the optimum than allowed, a valid bound.
  void expect_within(double allowed) {
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
    double obj = dbl_attr(p, KVSL_ATTR_MIPOBJVAL);
    std::vector<double> x = mipsol(mod.ncols());
    EXPECT_TRUE(mod.feasible(x));
    EXPECT_NEAR(obj, mod.objective(x), 1e-6);
    EXPECT_GE(obj, best - 1e-6);
    EXPECT_LE(obj - best, allowed + 1e-6);
    EXPECT_LE(dbl_attr(p, KVSL_ATTR_BESTBOUND), best + 1e-6);
    EXPECT_LT(int_attr(p, KVSL_ATTR_NODES), exact_nodes);
  }
  sparse_model mod;
  double best = 0.0;
  int exact_nodes = 0;
};

TEST_F(GapTest, RelativeGap) {
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_MIPRELGAP, 0.5), 0);
  timed("");
  // incumbent - bound <= 0.5 |incumbent| and bound <= best.
  expect_within(0.5 * std::fabs(dbl_attr(p, KVSL_ATTR_MIPOBJVAL)));
}

TEST_F(GapTest, AbsoluteGap) {
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_MIPABSGAP, 20.0), 0);
  timed("");
  expect_within(20.0);
}

// Limits that stop the search in its root's cut passes, on one thread and
// two: the bound stays a bound.  Every point of the exact split costs 0;
// the search once gave the objective of a cut pass's LP stopped half-way
// (23.6 to 110.2) as its bound.
TEST_F(LimitsTest, TimeLimitInTheRootKeepsTheBound) {
  sparse_model mod = market_split(5, 40, false, 11);
  for (int threads : {1, 2}) {
    ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, threads), 0);
    for (int rep = 0; rep < 20; ++rep)
      for (double limit : {0.0005, 0.001, 0.002, 0.004}) {
        SCOPED_TRACE(testing::Message() << threads << " threads, limit " << limit);
        search_within(mod, limit);
        int status = int_attr(p, KVSL_ATTR_MIPSTATUS);
        ASSERT_EQ(status, KVSL_MIP_NO_SOL_FOUND);
        ASSERT_LE(dbl_attr(p, KVSL_ATTR_BESTBOUND), 1e-6);
      }
  }
}

// ---- Threads ----------------------------------------------------------------

// The search on two threads finds the same optimum as on one.
TEST_F(LimitsTest, TwoThreadsGiveTheSameOptimum) {
  sparse_model mod = market_split(3, 14, true, 31);
  double best = market_split_optimum(mod, 3, 14);
  ASSERT_EQ(mod.load(p), 0);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_MIPRELGAP, 0.0), 0);
  for (int threads : {1, 2}) {
    SCOPED_TRACE(threads);
    ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, threads), 0);
    timed("");
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
    EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), best, 1e-6);
    EXPECT_TRUE(mod.feasible(mipsol(mod.ncols())));
  }
}

// Threads of this process (Linux: the entries of /proc/self/task).
int thread_count() {
  int n = 0;
  for (const auto &e : std::filesystem::directory_iterator("/proc/self/task")) n += e.exists();
  return n;
}

// With two threads asked for, two searches race: one on the caller's
// thread, one on a thread of its own; watched while a hard search runs for
// a second.
TEST_F(LimitsTest, TwoThreadsRunTheSearch) {
  sparse_model mod = market_split(5, 40, true, 7);
  ASSERT_EQ(mod.load(p), 0);
  hold_zero_start(mod, 40);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, 1.0), 0);
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, 2), 0);
  const int before = thread_count();
  std::atomic<bool> done{false};
  std::atomic<int> most{0};
  std::thread watch([&] {
    while (!done) {
      most = std::max(most.load(), thread_count());
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  });
  timed("");
  done = true;
  watch.join();
  // The watcher is one more thread.
  EXPECT_GE(most.load(), before + 1 + 1);
  expect_stopped_with_solution(mod);
  // Both searches stopped with the call.
  EXPECT_EQ(thread_count(), before);
}

// Short limits on two threads: the race stops in every stage (the second
// search's root included) with a consistent result.
TEST_F(LimitsTest, ShortTimeLimitsStopARace) {
  sparse_model mod = market_split(5, 40, true, 7);
  ASSERT_EQ(mod.load(p), 0);
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, 2), 0);
  for (double limit : {0.001, 0.05, 0.5}) {
    SCOPED_TRACE(limit);
    ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, limit), 0);
    EXPECT_LT(timed(""), limit + margin);
    int status = int_attr(p, KVSL_ATTR_MIPSTATUS);
    ASSERT_TRUE(status == KVSL_MIP_SOLUTION || status == KVSL_MIP_NO_SOL_FOUND) << status;
    if (status == KVSL_MIP_SOLUTION) expect_stopped_with_solution(mod);
  }
}

// The exact split on two threads: no search of the race finds a solution.
TEST_F(LimitsTest, TimeLimitStopsARaceWithoutSolution) {
  sparse_model mod = market_split(5, 40, false, 11);
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, 2), 0);
  search_within(mod, 1.0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_NO_SOL_FOUND);
  EXPECT_LE(dbl_attr(p, KVSL_ATTR_BESTBOUND), 1e-6);
}

// Entities of the engine's own (sets here) on two threads: the issue's
// small SOS1 model, optimum 132.
TEST_F(LimitsTest, TwoThreadsWithSets) {
  dense_model m{"LLLL", {36, 16, 11, 7}, {}, {12, 11}, {0, 0}, {1e20, 1e20},
                {{2, 4}, {0, 5}, {1, 0}, {0, 1}}};
  ASSERT_EQ(load_sets(p, m, "", {}, {}, "1", {{0, 1}}, {{1, 2}}), 0);
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, 2), 0);
  optimum(-1, 132.0);
}

// ---- Linear programs ----------------------------------------------------------

// A large LP stopped by a tiny limit, by each algorithm: unfinished, no
// solution held, and the call returns.
TEST_F(LimitsTest, TimeLimitStopsLinearProgram) {
  sparse_model mod = random_lp(1500, 3000, 10, false, 9);
  for (const char *flags : {"d", "p", "b"}) {
    SCOPED_TRACE(flags);
    // A fresh load each time: the simplex would start from the last basis.
    ASSERT_EQ(mod.load(p), 0);
    ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, 0.02), 0);
    auto t0 = seconds_clock::now();
    ASSERT_EQ(KVSLlpoptimize(p, flags), 0);
    EXPECT_LT(seconds_since(t0), 0.02 + margin);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_UNFINISHED);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_PRESOLVESTATE) & KVSL_SOLUTION_HELD, 0);
  }
}

// ---- Quadratic models -------------------------------------------------------

// min sum_j (x_j - 1/2)^2 over binaries, sum x_j <= n: every leaf is
// optimal, no relaxation prunes above the leaves, so the search of the
// quadratic model explores 2^n leaves.  A limit stops it with a solution.
sparse_model half_squares(int n) {
  sparse_model mod;
  mod.add_row('L', n);
  for (int j = 0; j < n; ++j) {
    mod.add_col(-1.0, 0.0, 1.0, {{0, 1.0}}, 'B');
    mod.qcol1.push_back(j);
    mod.qcol2.push_back(j);
    mod.qval.push_back(2.0);
  }
  return mod;
}

TEST_F(LimitsTest, TimeLimitStopsQuadraticSearch) {
  sparse_model mod = half_squares(40);
  search_within(mod, 1.0);
  // The first leaf is 41 relaxations deep: slow builds may not reach it.
  int status = int_attr(p, KVSL_ATTR_MIPSTATUS);
  ASSERT_TRUE(status == KVSL_MIP_SOLUTION || status == KVSL_MIP_NO_SOL_FOUND) << status;
  if (status == KVSL_MIP_SOLUTION) expect_stopped_with_solution(mod);
}

TEST_F(LimitsTest, NodeLimitStopsQuadraticSearch) {
  sparse_model mod = half_squares(40);
  ASSERT_EQ(mod.load(p), 0);
  // Depth first, the first leaf is 41 nodes deep.
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_MAXNODE, 10), 0);
  timed("");
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_NO_SOL_FOUND);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_NODES), 10);
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_MAXNODE, 100), 0);
  timed("");
  expect_stopped_with_solution(mod);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_NODES), 100);
}

// A large convex QP whose interior-point solve a tiny limit stops.
TEST_F(LimitsTest, TimeLimitStopsQuadraticProgram) {
  sparse_model mod;
  lcg r{17};
  const int n = 8000, m = 2000;  // some fifteen seconds unlimited
  for (int i = 0; i < m; ++i) mod.add_row('G', 1.0);
  for (int j = 0; j < n; ++j) {
    mod.add_col(r.next(10) - 5.0, -10.0, 10.0, {{j % m, 1.0}, {r.next(m), 1.0 + r.next(3)}});
    mod.qcol1.push_back(j);
    mod.qcol2.push_back(j);
    mod.qval.push_back(1.0 + r.next(5));
  }
  ASSERT_EQ(mod.load(p), 0);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, 0.01), 0);
  auto t0 = seconds_clock::now();
  ASSERT_EQ(KVSLlpoptimize(p, ""), 0);
  EXPECT_LT(seconds_since(t0), 0.01 + margin);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_UNFINISHED);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_PRESOLVESTATE) & KVSL_SOLUTION_HELD, 0);
}

// ---- Infeasible subsystems ------------------------------------------------

// Binaries y_1 = y_2 = ... = y_k with y_1 + y_k = 1: the LP relaxation is
// feasible (all 1/2), the integer model is not, and every chain row is
// needed for that.  The chain rows come first, then an exact market split
// over other binaries: each subproblem of the deletion filter that leaves
// out a chain row is that hard split, which no subproblem decides within
// its own time.  Unlimited, the filter spends its whole budget of its own
// (30 seconds); under a time limit of one second the call ends at the
// limit with the subsystem flagged as not proved irreducible.
sparse_model chained_split(int k) {
  sparse_model split = market_split(5, 40, false, 11);
  sparse_model mod;
  for (int i = 0; i + 1 < k; ++i) mod.add_row('E', 0.0);
  mod.add_row('E', 1.0);
  for (int i = 0; i < split.nrows(); ++i) mod.add_row('E', split.rhs[i]);
  for (int j = 0; j < split.ncols(); ++j) {
    std::vector<std::pair<int, double>> c;
    for (int64_t e = split.start[j]; e < split.start[j + 1]; ++e)
      c.push_back({k + split.ind[e], split.val[e]});
    mod.add_col(0.0, 0.0, 1.0, c, 'B');
  }
  for (int i = 0; i < k; ++i) {
    std::vector<std::pair<int, double>> c;
    if (i > 0) c.push_back({i - 1, -1.0});
    if (i + 1 < k) c.push_back({i, 1.0});
    if (i == 0 || i == k - 1) c.push_back({k - 1, 1.0});
    mod.add_col(0.0, 0.0, 1.0, c, 'B');
  }
  return mod;
}
TEST_F(LimitsTest, TimeLimitBoundsIntegerSubsystemSearch) {
  sparse_model mod = chained_split(12);
  ASSERT_EQ(mod.load(p), 0);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, 1.0), 0);
  auto t0 = seconds_clock::now();
  int status = -1;
  ASSERT_EQ(KVSLiisfirst(p, 1, &status), 0);
  EXPECT_LT(seconds_since(t0), 1.0 + margin);
  ASSERT_EQ(status, 0);
  int flags = 0, nrows = 0;
  ASSERT_EQ(KVSLgetiisbounds(p, 1, nullptr, &flags), 0);
  EXPECT_EQ(flags, 3);  // found with MIP solves, not proved irreducible
  ASSERT_EQ(KVSLgetiisdata(p, 1, &nrows, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_GE(nrows, 12);
}

}  // namespace
