/*
 * race_test.cpp -- searches on two or more threads: the row orders of the
 * searches beside the first, and what a race of searches reports.
 */
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <CoinPackedMatrix.hpp>
#include <OsiClpSolverInterface.hpp>

#include "engine_test.h"
#include "mps_reader.h"
#include "race.h"

namespace {

// A MIPLIB model read straight into the backend, its relaxation solved.
std::unique_ptr<OsiClpSolverInterface> solved_root(const std::string &name) {
  auto si = std::make_unique<OsiClpSolverInterface>();
  si->messageHandler()->setLogLevel(0);
  si->getModelPtr()->messageHandler()->setLogLevel(0);
  std::string path = std::string(KVSL_TEST_DATA_DIR) + "/miplib3/" + name + ".mps.gz";
  EXPECT_EQ(si->readMps(path.c_str(), ""), 0);
  si->initialSolve();
  EXPECT_TRUE(si->isProvenOptimal());
  return si;
}

// Row i of the solver: its bounds and its entries sorted by column.
struct row_entries {
  double lo, up;
  std::vector<std::pair<int, double>> entries;
  bool operator==(const row_entries &) const = default;
  bool operator<(const row_entries &o) const {
    return std::tie(lo, up, entries) < std::tie(o.lo, o.up, o.entries);
  }
};

row_entries row_of(const OsiSolverInterface &si, int i) {
  row_entries r{si.getRowLower()[i], si.getRowUpper()[i], {}};
  const CoinShallowPackedVector v = si.getMatrixByRow()->getVector(i);
  for (int k = 0; k < v.getNumElements(); ++k)
    r.entries.emplace_back(v.getIndices()[k], v.getElements()[k]);
  std::sort(r.entries.begin(), r.entries.end());
  return r;
}

// The columns: bounds, costs and integers as they were.
void expect_same_columns(const OsiSolverInterface &a, const OsiSolverInterface &b) {
  ASSERT_EQ(a.getNumCols(), b.getNumCols());
  for (int j = 0; j < a.getNumCols(); ++j) {
    EXPECT_EQ(a.getColLower()[j], b.getColLower()[j]) << j;
    EXPECT_EQ(a.getColUpper()[j], b.getColUpper()[j]) << j;
    EXPECT_EQ(a.getObjCoefficients()[j], b.getObjCoefficients()[j]) << j;
    EXPECT_EQ(a.isInteger(j), b.isInteger(j)) << j;
  }
  EXPECT_EQ(a.getObjSense(), b.getObjSense());
}

// The first order of the race's second search is the rows reversed.
TEST(ReorderedCopy, FirstOrderReversesTheRows) {
  auto root = solved_root("p0201");
  auto copy = kvsl::reordered_copy(*root, 1);
  const int m = root->getNumRows();
  ASSERT_EQ(copy->getNumRows(), m);
  for (int i = 0; i < m; ++i) EXPECT_EQ(row_of(*copy, i), row_of(*root, m - 1 - i)) << i;
  expect_same_columns(*root, *copy);
}

// Later orders are shuffles: every row once, in another order, different
// for different orders.
TEST(ReorderedCopy, LaterOrdersShuffleEveryRowOnce) {
  auto root = solved_root("p0201");
  const int m = root->getNumRows();
  std::vector<row_entries> rows;
  for (int i = 0; i < m; ++i) rows.push_back(row_of(*root, i));
  std::vector<std::vector<row_entries>> orders;
  for (int order : {2, 3}) {
    auto copy = kvsl::reordered_copy(*root, order);
    ASSERT_EQ(copy->getNumRows(), m);
    std::vector<row_entries> got;
    for (int i = 0; i < m; ++i) got.push_back(row_of(*copy, i));
    EXPECT_NE(got, rows);
    orders.push_back(got);
    std::sort(got.begin(), got.end());
    std::vector<row_entries> want = rows;
    std::sort(want.begin(), want.end());
    EXPECT_EQ(got, want);
    expect_same_columns(*root, *copy);
  }
  EXPECT_NE(orders[0], orders[1]);
}

// The root's basis goes along with the rows: the copy's relaxation is
// solved again without an iteration, at the root's optimum; from scratch
// it takes iterations.
TEST(ReorderedCopy, RootBasisSolvesTheCopyWithoutIterations) {
  auto root = solved_root("misc03");
  ASSERT_GT(root->getIterationCount(), 20);
  for (int order : {1, 2}) {
    SCOPED_TRACE(order);
    auto copy = kvsl::reordered_copy(*root, order);
    copy->messageHandler()->setLogLevel(0);
    copy->resolve();
    ASSERT_TRUE(copy->isProvenOptimal());
    EXPECT_EQ(copy->getIterationCount(), 0);
    EXPECT_NEAR(copy->getObjValue(), root->getObjValue(), 1e-9 * (1 + std::fabs(root->getObjValue())));
    auto cold = kvsl::reordered_copy(*root, order);
    cold->messageHandler()->setLogLevel(0);
    cold->setWarmStart(nullptr);
    cold->initialSolve();
    EXPECT_GT(cold->getIterationCount(), 0);
  }
}

class RaceTest : public LoggedEngineTest {
 protected:
  void load(const std::string &name) {
    m = read_mps(std::string(KVSL_TEST_DATA_DIR) + "/miplib3/" + name + ".mps.gz");
    ASSERT_EQ(load_mps(p, m, true), 0);
  }
  // Search on the given threads; expect the optimum.
  void expect_optimum_on(int threads, double optimum) {
    ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, threads), 0);
    ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
    EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), optimum, 1e-6);
  }
  mps_model m;
};

// On two threads the log holds one search's lines: one end of the search
// (finished, or stopped because the other search finished, which a line
// says).  The result is the optimum.
TEST_F(RaceTest, TwoThreadsLogOneSearch) {
  load("p0201");
  expect_optimum_on(2, 7615);
  EXPECT_EQ(with("At root node").size(), 1u);
  const size_t completed = with("Search completed").size();
  const size_t partial = with("Partial search").size();
  EXPECT_EQ(completed + partial, 1u);
  EXPECT_EQ(with("finished the race first").size(), partial);
}

// A start on two threads is the first search's incumbent and the result
// where nothing better exists.
TEST_F(RaceTest, StartOnTwoThreads) {
  load("lseu");
  expect_optimum_on(1, 1120);
  std::vector<double> x(static_cast<size_t>(m.ncols));
  ASSERT_EQ(KVSLgetmipsol(p, x.data(), nullptr), 0);
  ASSERT_EQ(load_mps(p, m, true), 0);
  lines.clear();
  std::vector<int> cols;
  for (int j = 0; j < m.ncols; ++j) cols.push_back(j);
  ASSERT_EQ(KVSLaddmipsol(p, m.ncols, x.data(), cols.data(), "optimal"), 0);
  expect_optimum_on(2, 1120);
  EXPECT_EQ(with("MIP start optimal is the incumbent").size(), 1u);
}

// An integer model without an integer point, on two and on four threads.
TEST_F(RaceTest, InfeasibleOnTwoAndFourThreads) {
  // Binaries around an odd cycle, each pair summing to 1: the relaxation
  // has every column at 1/2, so the searches start.
  dense_model d{"EEEEE", {1, 1, 1, 1, 1}, {}, {1, 2, 3, 4, 5}, {0, 0, 0, 0, 0},
                {1, 1, 1, 1, 1},
                {{1, 1, 0, 0, 0}, {0, 1, 1, 0, 0}, {0, 0, 1, 1, 0}, {0, 0, 0, 1, 1},
                 {1, 0, 0, 0, 1}}};
  for (int threads : {2, 4}) {
    SCOPED_TRACE(threads);
    ASSERT_EQ(load_global(p, d, "BBBBB", {0, 1, 2, 3, 4}), 0);
    ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, threads), 0);
    ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_INFEAS);
  }
}

// Four threads: four searches (two row shuffles), the optimum.
TEST_F(RaceTest, FourThreadsReachTheOptimum) {
  load("stein27");
  expect_optimum_on(4, 18);
  EXPECT_LE(dbl_attr(p, KVSL_ATTR_BESTBOUND), 18 + 1e-6);
}

}  // namespace
