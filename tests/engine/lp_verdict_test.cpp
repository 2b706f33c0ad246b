/*
 * lp_verdict_test.cpp -- LP verdicts agree across algorithms and presolve:
 * every four-row subsystem of a small infeasible model, over free and over
 * non-negative columns, with every feasible verdict's point checked.
 */
#include <cmath>
#include <string>

#include "engine_test.h"
#include "mps_reader.h"

namespace {

using LpVerdict = EngineTest;

// The rows of m picked by rows, the columns' bounds free or as given.
dense_model subsystem(const mps_model &m, const std::vector<int> &rows, bool free) {
  dense_model d;
  for (int i : rows) {
    d.rowtype.push_back(m.rowtype[static_cast<size_t>(i)]);
    d.rhs.push_back(m.rhs[static_cast<size_t>(i)]);
    d.range.push_back(m.range[static_cast<size_t>(i)]);
  }
  d.obj = m.obj;
  d.lb = free ? std::vector<double>(static_cast<size_t>(m.ncols), -KVSL_INFINITY) : m.lb;
  d.ub = free ? std::vector<double>(static_cast<size_t>(m.ncols), KVSL_INFINITY) : m.ub;
  d.a.assign(rows.size(), std::vector<double>(static_cast<size_t>(m.ncols), 0.0));
  for (int j = 0; j < m.ncols; ++j)
    for (int64_t k = m.start[static_cast<size_t>(j)];
         k < m.start[static_cast<size_t>(j)] + m.count[static_cast<size_t>(j)]; ++k)
      for (size_t r = 0; r < rows.size(); ++r)
        if (rows[r] == m.ind[static_cast<size_t>(k)])
          d.a[r][static_cast<size_t>(j)] = m.val[static_cast<size_t>(k)];
  return d;
}

// Does x satisfy the rows and bounds of d (to 1e-6)?
bool satisfies(const dense_model &d, const std::vector<double> &x) {
  for (int j = 0; j < d.ncols(); ++j)
    if (x[j] < d.lb[j] - 1e-6 || x[j] > d.ub[j] + 1e-6) return false;
  for (int i = 0; i < d.nrows(); ++i) {
    double act = 0.0;
    for (int j = 0; j < d.ncols(); ++j) act += d.a[i][j] * x[j];
    char t = d.rowtype[i];
    if ((t == 'L' || t == 'E') && act > d.rhs[i] + 1e-6) return false;
    if ((t == 'G' || t == 'E') && act < d.rhs[i] - 1e-6) return false;
  }
  return true;
}

// Every verdict of a single dual run, with or without presolve, must agree
// with the primal simplex and the barrier; a feasible verdict's point must
// satisfy the system.  Counts the verdicts in feasible and infeasible.
void check_verdicts(KVSLprob p, const dense_model &d, int &feasible, int &infeasible) {
  ASSERT_EQ(load_lp(p, d), 0);
  ASSERT_EQ(KVSLlpoptimize(p, "p"), 0);
  int reference = int_attr(p, KVSL_ATTR_LPSTATUS);
  ASSERT_TRUE(reference == KVSL_LP_OPTIMAL || reference == KVSL_LP_INFEAS ||
              reference == KVSL_LP_UNBOUNDED);
  ASSERT_EQ(KVSLlpoptimize(p, "b"), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), reference);
  for (int presolve : {1, 0}) {
    ASSERT_EQ(load_lp(p, d), 0);
    ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_PRESOLVE, presolve), 0);
    ASSERT_EQ(KVSLlpoptimize(p, "d"), 0);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), reference) << "presolve " << presolve;
    if (int_attr(p, KVSL_ATTR_LPSTATUS) == KVSL_LP_OPTIMAL) {
      std::vector<double> x(static_cast<size_t>(d.ncols()));
      EXPECT_EQ(KVSLgetlpsol(p, x.data(), nullptr, nullptr, nullptr), 0);
      EXPECT_TRUE(satisfies(d, x));
    }
  }
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_PRESOLVE, 1), 0);
  (reference == KVSL_LP_INFEAS ? infeasible : feasible)++;
}

// Every four-row subsystem of itest2.
TEST_F(LpVerdict, SubsystemsOfItest2AgreeAcrossAlgorithms) {
  mps_model m = read_mps(std::string(KVSL_TEST_DATA_DIR) + "/infeas/itest2.mps.gz");
  int nrows = static_cast<int>(m.rowtype.size());
  ASSERT_EQ(nrows, 9);
  int feasible = 0, infeasible = 0;
  for (bool free : {true, false})
    for (int mask = 0; mask < (1 << nrows); ++mask) {
      if (__builtin_popcount(static_cast<unsigned>(mask)) != 4) continue;
      std::vector<int> rows;
      for (int i = 0; i < nrows; ++i)
        if ((mask >> i) & 1) rows.push_back(i);
      SCOPED_TRACE((free ? "free columns, rows mask " : "rows mask ") + std::to_string(mask));
      check_verdicts(p, subsystem(m, rows, free), feasible, infeasible);
    }
  // Both verdicts occur among the subsystems.
  EXPECT_GT(feasible, 0);
  EXPECT_GT(infeasible, 0);
}

// Subsystems of a few consecutive rows of larger infeasible models, over
// free and over bounded columns.
TEST_F(LpVerdict, RowBlocksOfLargerModelsAgreeAcrossAlgorithms) {
  for (const char *name : {"forest6", "klein1"}) {
    mps_model m = read_mps(std::string(KVSL_TEST_DATA_DIR) + "/infeas/" + name + ".mps.gz");
    int nrows = static_cast<int>(m.rowtype.size());
    ASSERT_GT(nrows, 8) << name;
    int feasible = 0, infeasible = 0;
    for (bool free : {true, false})
      for (int size : {3, 6})
        for (int first = 0; first + size <= nrows; first += 2) {
          std::vector<int> rows;
          for (int i = first; i < first + size; ++i) rows.push_back(i);
          SCOPED_TRACE(std::string(name) + (free ? ", free columns, rows " : ", rows ") +
                       std::to_string(first) + "+" + std::to_string(size));
          check_verdicts(p, subsystem(m, rows, free), feasible, infeasible);
        }
    EXPECT_GT(feasible + infeasible, 0) << name;
  }
}

// An unbounded LP over free columns where the dual simplex stops at a false
// optimum (objective about 8e20): the ray x5 = t, x4 = -2t/3, x1 = t,
// x0 = 2t keeps every row and raises the objective by 26t/3, and x0 = 0,
// x1 = -1, x4 = 1, x6 = 1 (the rest 0) is feasible.
TEST_F(LpVerdict, FalseOptimumOverFreeColumnsIsUnbounded) {
  const double inf = KVSL_INFINITY;
  dense_model d{"LLR",
                {-3, -4, 3},
                {0, 0, 3},
                {0, 6, -6, -6, -4, 0, -3},
                {-inf, -inf, 0, -inf, -inf, 0, 1},
                {inf, inf, 4, inf, inf, inf, inf},
                {{0, 3, -4, 0, -1, -4, 0}, {-4, 5, 3, 1, 0, 0, 0}, {0, 0, 0, 0, 3, 2, 0}}};
  for (const char *flags : {"", "d", "p"}) {
    SCOPED_TRACE(flags);
    ASSERT_EQ(load_lp(p, d), 0);
    ASSERT_EQ(KVSLmaxim(p, flags), 0);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_UNBOUNDED);
  }
}

}  // namespace
