/*
 * mip_oracle_test.cpp -- the global search against enumeration on random
 * small models from fixed seeds: every entity kind alone and mixed, both
 * senses, finite and infinite bounds, degenerate and infeasible models.
 */
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <sstream>
#include <vector>

#include "engine_test.h"
#include "mip_oracle.h"

namespace {

using namespace oracle;

class MipOracle : public EngineTest {
 protected:
  // Search model `seed` of the kinds and compare with the oracle; "" when
  // they agree, else what differs.
  std::string check(uint64_t seed, unsigned kinds) {
    model m = generate(seed, kinds);
    verdict want = solve(m);
    if (std::string failed = search(m, seed); !failed.empty()) return failed;
    return node_limit_ > 0 || time_limit_ > 0 ? compare_stopped(m, want) : compare(m, want);
  }

  // Load m and search it (with the limits node_limit_ and time_limit_ if
  // positive); "" or why the search failed.
  std::string search(const model &m, uint64_t seed) {
    if (int rc = load(p, m); rc != 0) return "load failed: " + std::to_string(rc);
    KVSLsetdblcontrol(p, KVSL_CTRL_MIPRELGAP, 0.0);
    KVSLsetdblcontrol(p, KVSL_CTRL_MIPABSGAP, 0.0);
    if (threads_ > 1) KVSLsetintcontrol(p, KVSL_CTRL_THREADS, threads_);
    if (node_limit_ > 0) KVSLsetintcontrol(p, KVSL_CTRL_MAXNODE, node_limit_);
    if (time_limit_ > 0) KVSLsetdblcontrol(p, KVSL_CTRL_TIMELIMIT, time_limit_);
    int rc;
    // KVSLminim and KVSLmaxim search only a model with entities; without
    // them they solve the LP, so such a model goes to KVSLmipoptimize.
    bool globals = m.coltype.find_first_not_of('C') != std::string::npos ||
                   !m.settype.empty() || !m.indrow.empty();
    if (seed % 2 == 0 && globals) {
      rc = m.sense > 0 ? KVSLminim(p, "g") : KVSLmaxim(p, "g");
    } else {
      KVSLchgobjsense(p, m.sense);
      rc = KVSLmipoptimize(p, "");
    }
    if (rc != 0) return "search failed: " + std::to_string(int_attr(p, KVSL_ATTR_ERRORCODE));
    return "";
  }

  // A finished search against the oracle's verdict.
  std::string compare(const model &m, const verdict &want) {
    int status = int_attr(p, KVSL_ATTR_MIPSTATUS);
    std::ostringstream o;
    // "LP relaxation unbounded" is a true answer whenever the relaxation is.
    if (status == KVSL_MIP_UNBOUNDED && want.relaxation_unbounded) return "";
    if (status != want.status) {
      o << "status " << status << ", oracle " << want.status;
      if (want.status == KVSL_MIP_OPTIMAL) o << " with " << want.objective;
      return o.str();
    }
    if (status != KVSL_MIP_OPTIMAL) return "";
    double got = dbl_attr(p, KVSL_ATTR_MIPOBJVAL);
    if (!near(got, want.objective)) {
      o << "objective " << got << ", oracle " << want.objective;
      return o.str();
    }
    return held_solution(m);
  }

  // A search stopped by a limit (or finished within it): a status true of
  // the model, a feasible solution whose value is reported and is no
  // better than the optimum, and a bound that the optimum respects.
  std::string compare_stopped(const model &m, const verdict &want) {
    int status = int_attr(p, KVSL_ATTR_MIPSTATUS);
    stopped_ += status == KVSL_MIP_SOLUTION || status == KVSL_MIP_NO_SOL_FOUND;
    std::ostringstream o;
    o << "status " << status << ", oracle " << want.status;
    if (want.status == KVSL_MIP_OPTIMAL) o << " with " << want.objective;
    switch (status) {
      case KVSL_MIP_OPTIMAL:
      case KVSL_MIP_INFEAS:
        return compare(m, want);
      case KVSL_MIP_UNBOUNDED:
        return want.relaxation_unbounded ? "" : o.str();
      case KVSL_MIP_NO_SOL_FOUND:
        break;
      case KVSL_MIP_SOLUTION:
        if (want.status == KVSL_MIP_INFEAS) return o.str();
        break;
      default:
        return o.str();
    }
    if (want.status != KVSL_MIP_OPTIMAL) return status == KVSL_MIP_SOLUTION ? held_solution(m) : "";
    const double bound = dbl_attr(p, KVSL_ATTR_BESTBOUND);
    if (m.sense * (bound - want.objective) > 1e-6 * (1.0 + std::fabs(want.objective))) {
      o << ": bound " << bound;
      return o.str();
    }
    if (status != KVSL_MIP_SOLUTION) return "";
    const double got = dbl_attr(p, KVSL_ATTR_MIPOBJVAL);
    if (m.sense * (got - want.objective) < -1e-6 * (1.0 + std::fabs(want.objective))) {
      o << ": solution of value " << got;
      return o.str();
    }
    return held_solution(m);
  }

  // The solution held is feasible and has the value reported.
  std::string held_solution(const model &m) {
    std::vector<double> x(m.ncols());
    EXPECT_EQ(KVSLgetmipsol(p, x.data(), nullptr), 0);
    std::string why;
    if (!feasible(m, x, &why)) return "solution violates " + why;
    const double got = dbl_attr(p, KVSL_ATTR_MIPOBJVAL);
    double value = 0;
    for (int j = 0; j < m.ncols(); ++j) value += m.obj[j] * x[j];
    if (!near(value, got)) return "objective not that of x";
    return "";
  }

  static bool near(double a, double b) { return std::fabs(a - b) <= 1e-6 * (1.0 + std::fabs(b)); }

  // Check models first..first+count-1 of the kinds; report the first few
  // disagreements with their models.
  void run(uint64_t first, int count, unsigned kinds) {
    int failures = 0;
    for (int k = 0; k < count; ++k) {
      uint64_t seed = first + static_cast<uint64_t>(k);
      std::string diff = check(seed, kinds);
      if (diff.empty()) continue;
      if (++failures <= 5)
        ADD_FAILURE() << "seed " << seed << " kinds " << kinds << ": " << diff << "\n"
                      << describe(generate(seed, kinds));
    }
    EXPECT_EQ(failures, 0) << "of " << count << " models";
  }

  // Threads of the searches (the engine's default: 1).
  int threads_ = 1;
  // The searches' node and time limits (0: none), and how many searches
  // they stopped.
  int node_limit_ = 0;
  double time_limit_ = 0.0;
  int stopped_ = 0;
};

// The counts add up to 22 500 models.
TEST_F(MipOracle, IntegerColumns) { run(1, 2000, k_integer); }
TEST_F(MipOracle, SemiContinuousColumns) { run(100001, 2500, k_semicont); }
TEST_F(MipOracle, PartialIntegerColumns) { run(200001, 2000, k_partint); }
TEST_F(MipOracle, SetsOfTypeOne) { run(300001, 2500, k_sos1); }
TEST_F(MipOracle, SetsOfTypeTwo) { run(400001, 2500, k_sos2); }
TEST_F(MipOracle, IndicatorRows) { run(500001, 3000, k_indicator); }
TEST_F(MipOracle, HeldOutRows) { run(600001, 1500, k_integer | k_heldout); }
TEST_F(MipOracle, Directives) { run(700001, 1000, k_integer | k_sos1 | k_directive); }
TEST_F(MipOracle, EverythingMixed) { run(800001, 3000, 0xFF); }
// Coefficients above the rows' sides and of many sizes, where the search's
// root strengthening of rows and bounds has the most to do.
TEST_F(MipOracle, WideCoefficients) { run(900001, 1500, k_integer | k_wide); }
TEST_F(MipOracle, WideCoefficientsMixed) { run(950001, 1000, 0xFF | k_wide); }

// A count of models for make test: `plain`, or `sanitized` in a build under
// AddressSanitizer, which runs the engine some twenty times slower.
constexpr int model_count(int plain, int sanitized) {
#ifdef __SANITIZE_ADDRESS__
  return sanitized;
#else
  return plain;
#endif
}

// Larger integer models, whose searches branch (the small ones above mostly
// end at the root).  Their enumeration is what takes the time (up to 300 000
// points a model): under AddressSanitizer a fifth of them run.
constexpr int larger_count = model_count(300, 60);
TEST_F(MipOracle, LargerIntegerModels) { run(30000001, larger_count, k_integer | k_large); }
TEST_F(MipOracle, LargerWideIntegerModels) {
  run(30500001, larger_count, k_integer | k_large | k_wide);
}

// Searches on two threads, which take the nodes of one tree, each with its
// own copy of the LP and the cut generators (a threaded search once
// returned a suboptimal "optimal" answer on lseu).
TEST_F(MipOracle, TwoThreadsLargerIntegerModels) {
  threads_ = 2;
  run(31000001, larger_count, k_integer | k_large);
}
TEST_F(MipOracle, TwoThreadsLargerWideIntegerModels) {
  threads_ = 2;
  run(31500001, larger_count, k_integer | k_large | k_wide);
}
TEST_F(MipOracle, TwoThreadsEverythingMixed) {
  threads_ = 2;
  run(22000001, 1000, 0xFF);
}

// Continuous columns with costs in a part of the model that keeps the
// objective's values on a lattice, which the search prunes by, and near
// misses where it does not (about half of the models search with a step).
constexpr int network_count = model_count(5000, 1000);
TEST_F(MipOracle, ContinuousColumnsOfANetworkForm) {
  run(38000001, network_count, k_integer | k_network);
}
TEST_F(MipOracle, ContinuousColumnsOfANetworkFormOnTwoThreads) {
  threads_ = 2;
  run(38500001, network_count / 5, k_integer | k_network);
}

// Searches stopped by node limits: what they report holds of the model.
// The small models mostly end within the limits; the larger ones branch.
// Some tens of searches must have been stopped at each limit.
TEST_F(MipOracle, StoppedByNodeLimits) {
  uint64_t first = 40000001;
  for (int nodes : {1, 2, 5}) {
    SCOPED_TRACE(nodes);
    node_limit_ = nodes;
    stopped_ = 0;
    run(first, 500, 0xFF);
    run(first + 50000, larger_count / 6, k_integer | k_large);
    run(first + 60000, larger_count / 6, k_integer | k_large | k_wide);
    EXPECT_GT(stopped_, 20);
    first += 100000;
  }
}

// And by time limits short enough to stop searches anywhere, the root's
// LP and cut passes included, on one thread and two: whatever the timing,
// what they report must hold.  (The bound of a search whose cut pass the
// deadline stopped half-way was that LP's objective, above the optimum;
// another search stopped so in its root called its solution optimal, 122
// against the oracle's 135 in a maximisation, and gave 122 as the bound.)
TEST_F(MipOracle, StoppedByTimeLimits) {
  uint64_t first = 41000001;
  for (int threads : {1, 2})
    for (double limit : {0.0002, 0.002}) {
      SCOPED_TRACE(testing::Message() << threads << " threads, limit " << limit);
      threads_ = threads;
      time_limit_ = limit;
      stopped_ = 0;
      run(first, 300, 0xFF);
      run(first + 50000, larger_count / 6, k_integer | k_large);
      EXPECT_GT(stopped_, 0);
      first += 100000;
    }
}

// Disagreements the oracle found, each kept as a named case.
TEST_F(MipOracle, PartialIntegerStaysAboveItsLimitWhenChecked) { EXPECT_EQ(check(200151, k_partint), ""); }
TEST_F(MipOracle, SemiContinuousWithoutRoundingCuts) { EXPECT_EQ(check(101311, k_semicont), ""); }
TEST_F(MipOracle, SemiContinuousWithoutStrongBranching) { EXPECT_EQ(check(100041, k_semicont), ""); }
TEST_F(MipOracle, IntegerModelWithoutPreprocessing) { EXPECT_EQ(check(506, k_integer), ""); }
// Probing's stand-in bounds of +-1e20 on free columns made rounding cut
// off the optimum.
TEST_F(MipOracle, IntegerModelWithoutRoundingCuts) { EXPECT_EQ(check(343, k_integer), ""); }
TEST_F(MipOracle, UnboundedModelCalledInfeasibleByTheSimplex) { EXPECT_EQ(check(101, k_integer), ""); }
TEST_F(MipOracle, EmptyInfeasibleRowWithoutEntities) { EXPECT_EQ(check(296, k_integer), ""); }
TEST_F(MipOracle, HeldOutEqualityRow) { EXPECT_EQ(check(600466, k_integer | k_heldout), ""); }
TEST_F(MipOracle, EmptyModelCutRow) { EXPECT_EQ(check(800102, 0xFF), ""); }
TEST_F(MipOracle, IndicatorModelWithoutPreprocessing) { EXPECT_EQ(check(500255, k_indicator), ""); }
// An unbounded model with a set of type 2 over free columns: the root LP's
// false optimum was confirmed and the search called the model infeasible.
TEST_F(MipOracle, SosTwoOverFreeColumnsUnbounded) { EXPECT_EQ(check(400019, k_sos2), ""); }
// An infeasible model with sets of type 2 whose relaxation is unbounded
// (the oracle's own LP took the dual simplex's false optimum for bounded).
TEST_F(MipOracle, SosTwoInfeasibleWithUnboundedRelaxation) {
  EXPECT_EQ(check(14017302, k_sos2), "");
}
// Feasible models with every kind of entity that flow cover cuts made
// infeasible.
TEST_F(MipOracle, MixedEntitiesWithoutFlowCovers) { EXPECT_EQ(check(17009501, 0xFF), ""); }
TEST_F(MipOracle, MixedEntitiesWithoutFlowCoversAgain) { EXPECT_EQ(check(17011982, 0xFF), ""); }

// Knapsack covers derived from two-step rounding cuts cut off the optimum
// (-110 reported as -109, on one thread and on two; cbc's command line
// gives -109 as well).
TEST_F(MipOracle, KnapsackCoversFromModelRowsOnly) {
  EXPECT_EQ(check(34009009, k_integer | k_large), "");
  threads_ = 2;
  EXPECT_EQ(check(34009009, k_integer | k_large), "");
}

// A semi-continuous integer column the node had already put at its limit
// of 1 came back from the simplex at 0.999999; taken for a value below the
// limit, its branch changed nothing and the search never ended (with a
// directive giving the column priority, on one thread and on two).
TEST_F(MipOracle, SemiContinuousAtItsLimitWithinTolerance) {
  EXPECT_EQ(check(37001733, 0xFF | k_wide), "");
  threads_ = 2;
  EXPECT_EQ(check(37001733, 0xFF | k_wide), "");
}

// Rounding took free rows for rows bounded at zero.
TEST_F(MipOracle, RoundingCutsBesideFreeRows) {
  EXPECT_EQ(check(808, k_integer), "");
  EXPECT_EQ(check(501143, k_indicator), "");
}

// Many more of every kind: make test-slow.
TEST_F(MipOracle, DISABLED_ManyMore) {
  const unsigned kinds[] = {k_integer, k_semicont, k_partint, k_sos1, k_sos2, k_indicator,
                            k_integer | k_heldout, 0xFF, k_integer | k_wide, 0xFF | k_wide};
  uint64_t first = 10000001;
  for (unsigned k : kinds) {
    run(first, 25000, k);
    first += 1000000;
  }
  run(32000001, 10000, k_integer | k_large);
  run(33000001, 10000, k_integer | k_large | k_wide);
}

// And on two threads.
TEST_F(MipOracle, DISABLED_TwoThreadsManyMore) {
  threads_ = 2;
  run(34000001, 10000, k_integer | k_large);
  run(35000001, 10000, k_integer | k_large | k_wide);
  run(36000001, 25000, 0xFF);
  run(37000001, 25000, 0xFF | k_wide);
}

// Stopped searches, many more: node limits, and time limits from a tenth
// of a millisecond to a twentieth of a second, on one and two threads.
TEST_F(MipOracle, DISABLED_StoppedManyMore) {
  uint64_t first = 42000001;
  for (int nodes : {1, 2, 3, 5, 10, 30}) {
    node_limit_ = nodes;
    run(first, 5000, 0xFF);
    run(first + 500000, 1000, k_integer | k_large | k_wide);
    first += 1000000;
  }
  node_limit_ = 0;
  for (int threads : {1, 2})
    for (double limit : {0.0001, 0.0005, 0.002, 0.01, 0.05}) {
      threads_ = threads;
      time_limit_ = limit;
      run(first, 3000, 0xFF);
      run(first + 500000, 1000, k_integer | k_large);
      first += 1000000;
    }
}

// Models of a network form with continuous costs, on one and two threads.
TEST_F(MipOracle, DISABLED_NetworkFormManyMore) {
  run(39000001, 50000, k_integer | k_network);
  threads_ = 2;
  run(39500001, 20000, k_integer | k_network);
}

}  // namespace

// ---- Hostile numbers ---------------------------------------------------------

namespace {

using namespace oracle;

// Numbers at and beyond the edges of what a model means: huge and tiny
// magnitudes, the engine's infinity and beyond it, negative zero, the
// smallest denormal.
constexpr double hostile_values[] = {1e30,  -1e30, 1e-30, 1e15,   -1e15,  1e-12,  1e19,
                                     -1e19, 1e20,  -1e20, 1e21,   -1e21,  -0.0,   5e-324,
                                     1e300, -1e300, 1e9,  123456789.123};

// A generated model with some of its numbers (coefficients, bounds, costs,
// right-hand sides, ranges, limits) replaced by hostile ones.
model hostile_model(uint64_t seed) {
  model m = generate(seed, seed % 3 == 0 ? (k_integer | k_large) : 0xFF);
  uint64_t s = seed;
  auto draw = [&s](int below) {
    s = s * 6364136223846793005ull + 1442695040888963407ull;
    return static_cast<int>((s >> 33) % static_cast<uint64_t>(below));
  };
  auto spoil = [&](double &v, int percent) {
    if (draw(100) < percent) v = hostile_values[draw(std::size(hostile_values))];
  };
  for (auto &row : m.a)
    for (double &a : row)
      if (a != 0) spoil(a, 8);
  for (auto *v : {&m.lb, &m.ub, &m.obj, &m.rhs, &m.limit})
    for (double &x : *v) spoil(x, 8);
  for (double &x : m.range) spoil(x, 5);
  return m;
}

// Load model m (number `seed`) and run what an application may run on it:
// the LP (also by the barrier when `barrier`) and ranging, the search (on
// two threads for every fifth), a MIP start of hostile values, and for
// every tenth the search for infeasible subsystems; in a child process, so
// that an abort is seen as such.  Every call may refuse; none may end the
// process or run on: "" when the child exited normally within a minute,
// else what became of it.
std::string survives(const model &m, uint64_t seed, bool barrier) {
  pid_t pid = fork();
  if (pid == 0) {
    KVSLprob q = nullptr;
    if (KVSLcreateprob(&q) == 0 && load(q, m) == 0) {
      KVSLsetintcontrol(q, KVSL_CTRL_MAXNODE, 200);
      KVSLsetdblcontrol(q, KVSL_CTRL_TIMELIMIT, 2.0);
      if (seed % 5 == 0) KVSLsetintcontrol(q, KVSL_CTRL_THREADS, 2);
      KVSLchgobjsense(q, m.sense);
      if (barrier) KVSLlpoptimize(q, "b");
      KVSLlpoptimize(q, "");
      KVSLrange(q);
      KVSLmipoptimize(q, "");
      std::vector<double> x(m.ncols());
      for (size_t j = 0; j < x.size(); ++j)
        x[j] = hostile_values[(seed + j) % std::size(hostile_values)];
      std::vector<int> cols(m.ncols());
      for (int j = 0; j < m.ncols(); ++j) cols[j] = j;
      int status = 0;
      KVSLloadmipsol(q, x.data(), &status);
      KVSLaddmipsol(q, m.ncols(), x.data(), cols.data(), "hostile");
      KVSLmipoptimize(q, "");
      if (seed % 10 == 0) {
        KVSLlpoptimize(q, "");
        KVSLiisall(q);
        KVSLiisfirst(q, 0, &status);
      }
    }
    _exit(0);  // the child's state dies with it
  }
  if (pid < 0) return "no child process";
  int st = 0;
  const auto start = std::chrono::steady_clock::now();
  for (useconds_t nap = 50; waitpid(pid, &st, WNOHANG) == 0; nap = std::min<useconds_t>(2 * nap, 10000)) {
    if (std::chrono::steady_clock::now() - start > std::chrono::minutes(1)) {
      kill(pid, SIGKILL);  // every solve has two seconds
      waitpid(pid, &st, 0);
      return "the child ran on past a minute";
    }
    usleep(nap);
  }
  if (WIFSIGNALED(st)) return "the child died of signal " + std::to_string(WTERMSIG(st));
  return WIFEXITED(st) && WEXITSTATUS(st) == 0 ? "" : "the child failed";
}

constexpr int hostile_count = model_count(3000, 600);

// Without the check of bounds no number meets, 2% of these models aborted
// the process inside the simplex (a lower bound of +infinity, a row whose
// lower side is +infinity), and the search for infeasible subsystems of
// model 120 never ended.
TEST(HostileNumbers, NoModelEndsTheProcess) {
  ASSERT_EQ(KVSLinit(nullptr), 0);
  int died = 0;
  for (uint64_t seed = 1; seed <= hostile_count; ++seed)
    if (std::string fate = survives(hostile_model(seed), seed, false); !fate.empty() && ++died <= 5)
      ADD_FAILURE() << "seed " << seed << ": " << fate;
  EXPECT_EQ(died, 0) << "of " << hostile_count << " models";
  EXPECT_EQ(KVSLfree(), 0);
}

// The barrier on ordinary models (no hostile numbers): it still aborts the
// process (the backend's "primal off to infinity" or "dual off to
// infinity") on 10 of these 5 000 models, all infeasible (7) or unbounded
// (3) LPs by the dual simplex, such as model 3389 (0.5 x0 in [-5, -2] with
// x0 in [0, 5], beside a column in no row with a cost towards its infinite
// bound).  Not fixed yet: this test fails until the barrier is kept away
// from them or replaced.
TEST(HostileNumbers, DISABLED_BarrierOnOrdinaryModels) {
  ASSERT_EQ(KVSLinit(nullptr), 0);
  int died = 0;
  for (uint64_t seed = 1; seed <= 5000; ++seed)
    if (std::string fate = survives(generate(seed, seed % 3 == 0 ? (k_integer | k_large) : 0xFF),
                                    seed, true);
        !fate.empty() && ++died <= 20)
      ADD_FAILURE() << "seed " << seed << ": " << fate;
  EXPECT_EQ(died, 0) << "of 5000 models";
  EXPECT_EQ(KVSLfree(), 0);
}

}  // namespace
