/*
 * iis_test.cpp -- infeasible subsystems: small models with answers known by
 * hand and the infeasible netlib models, each subsystem proved irreducible
 * by solving it and each of its one-member-smaller subsystems.
 */
#include <chrono>
#include <cmath>
#include <fstream>
#include <set>
#include <sstream>

#include "engine_test.h"
#include "mps_reader.h"

namespace {

// One subsystem as read from the engine: rows and bounds ('L' or 'U').
struct subsystem {
  int flags = -1;
  std::vector<int> rows;
  std::vector<std::pair<int, char>> bounds;
  size_t size() const { return rows.size() + bounds.size(); }
  bool operator<(const subsystem &o) const {
    return std::tie(rows, bounds) < std::tie(o.rows, o.bounds);
  }
};

subsystem read_subsystem(KVSLprob p, int num) {
  int nr = -1, nc = -1;
  EXPECT_EQ(KVSLgetiisdata(p, num, &nr, &nc, nullptr, nullptr, nullptr), 0);
  subsystem s;
  std::vector<int> rows(static_cast<size_t>(nr)), cols(static_cast<size_t>(nc));
  std::string types(static_cast<size_t>(nr), '?'), bnd(static_cast<size_t>(nc), '?');
  EXPECT_EQ(KVSLgetiisdata(p, num, &nr, &nc, rows.data(), cols.data(), types.data()), 0);
  EXPECT_EQ(KVSLgetiisbounds(p, num, bnd.data(), &s.flags), 0);
  s.rows = rows;
  for (int k = 0; k < nc; ++k) s.bounds.emplace_back(cols[static_cast<size_t>(k)], bnd[static_cast<size_t>(k)]);
  return s;
}

// Solve the model restricted to the given rows and bounds (every other row
// left out, every other bound infinite, no objective): the LP status, or
// for a model with integer columns the MIP status as KVSL_LP_INFEAS or
// KVSL_LP_OPTIMAL.
int solve_restricted(const mps_model &m, const std::set<int> &rows,
                     const std::set<std::pair<int, char>> &bounds) {
  mps_model r;
  r.ncols = m.ncols;
  std::vector<int> newrow(m.rowtype.size(), -1);
  for (int i : rows) {
    newrow[static_cast<size_t>(i)] = static_cast<int>(r.rowtype.size());
    r.rowtype.push_back(m.rowtype[static_cast<size_t>(i)]);
    r.rhs.push_back(m.rhs[static_cast<size_t>(i)]);
    r.range.push_back(m.range[static_cast<size_t>(i)]);
  }
  for (int j = 0; j < m.ncols; ++j) {
    r.start.push_back(static_cast<int64_t>(r.ind.size()));
    for (int64_t k = m.start[static_cast<size_t>(j)];
         k < m.start[static_cast<size_t>(j)] + m.count[static_cast<size_t>(j)]; ++k) {
      int row = newrow[static_cast<size_t>(m.ind[static_cast<size_t>(k)])];
      if (row < 0) continue;
      r.ind.push_back(row);
      r.val.push_back(m.val[static_cast<size_t>(k)]);
    }
    r.count.push_back(static_cast<int>(r.ind.size() - static_cast<size_t>(r.start.back())));
    r.obj.push_back(0.0);
    r.lb.push_back(bounds.count({j, 'L'}) ? m.lb[static_cast<size_t>(j)] : -KVSL_INFINITY);
    r.ub.push_back(bounds.count({j, 'U'}) ? m.ub[static_cast<size_t>(j)] : KVSL_INFINITY);
  }
  KVSLprob q = nullptr;
  EXPECT_EQ(KVSLcreateprob(&q), 0);
  if (!m.enttype.empty()) {
    r.enttype = m.enttype;
    r.entcol = m.entcol;
    EXPECT_EQ(load_mps(q, r, true), 0);
    EXPECT_EQ(KVSLmipoptimize(q, ""), 0);
    int mip = int_attr(q, KVSL_ATTR_MIPSTATUS);
    EXPECT_EQ(KVSLdestroyprob(q), 0);
    return mip == KVSL_MIP_INFEAS ? KVSL_LP_INFEAS : mip == KVSL_MIP_OPTIMAL ? KVSL_LP_OPTIMAL : -1;
  }
  EXPECT_EQ(load_mps(q, r, false), 0);
  // The primal simplex without presolve decides: presolve's own test calls
  // nearly infeasible systems infeasible, and the dual simplex can call a
  // system with free columns infeasible.  A feasible answer is checked
  // against the rows.
  EXPECT_EQ(KVSLsetintcontrol(q, KVSL_CTRL_PRESOLVE, 0), 0);
  EXPECT_EQ(KVSLminim(q, "p"), 0);
  int status = -1;
  EXPECT_EQ(KVSLgetintattrib(q, KVSL_ATTR_LPSTATUS, &status), 0);
  if (status == KVSL_LP_OPTIMAL) {
    std::vector<double> slack(r.rowtype.size());
    EXPECT_EQ(KVSLgetlpsol(q, nullptr, slack.data(), nullptr, nullptr), 0);
    for (size_t i = 0; i < slack.size(); ++i) {
      double tol = 1e-6 * std::max(1.0, std::fabs(r.rhs[i]));
      char t = r.rowtype[i];
      bool ok = (t == 'L' && slack[i] >= -tol) || (t == 'G' && slack[i] <= tol) ||
                (t == 'E' && std::fabs(slack[i]) <= tol) ||
                (t == 'R' && slack[i] >= -tol && slack[i] <= std::fabs(r.range[i]) + tol);
      if (!ok) status = -1;
    }
  }
  EXPECT_EQ(KVSLdestroyprob(q), 0);
  return status;
}

// The subsystem is infeasible and dropping any one member makes it feasible.
::testing::AssertionResult irreducible(const mps_model &m, const subsystem &s) {
  std::set<int> rows(s.rows.begin(), s.rows.end());
  std::set<std::pair<int, char>> bounds(s.bounds.begin(), s.bounds.end());
  if (s.size() == 0) return ::testing::AssertionFailure() << "empty subsystem";
  if (solve_restricted(m, rows, bounds) != KVSL_LP_INFEAS)
    return ::testing::AssertionFailure() << "the subsystem is feasible";
  for (int i : s.rows) {
    std::set<int> fewer = rows;
    fewer.erase(i);
    if (solve_restricted(m, fewer, bounds) != KVSL_LP_OPTIMAL)
      return ::testing::AssertionFailure() << "still infeasible without row " << i;
  }
  for (const auto &b : s.bounds) {
    std::set<std::pair<int, char>> fewer = bounds;
    fewer.erase(b);
    if (solve_restricted(m, rows, fewer) != KVSL_LP_OPTIMAL)
      return ::testing::AssertionFailure()
             << "still infeasible without bound " << b.second << " of column " << b.first;
  }
  return ::testing::AssertionSuccess();
}

// A dense model in the column-wise form the checker works on.
mps_model sparse_form(const dense_model &d) {
  mps_model m;
  column_arrays c(d);
  m.ncols = d.ncols();
  m.rowtype = d.rowtype;
  m.rhs = d.rhs;
  m.range = d.range.empty() ? std::vector<double>(d.rhs.size(), 0.0) : d.range;
  m.obj = d.obj;
  m.lb = d.lb.empty() ? std::vector<double>(d.obj.size(), 0.0) : d.lb;
  m.ub = d.ub.empty() ? std::vector<double>(d.obj.size(), KVSL_INFINITY) : d.ub;
  m.start.assign(c.start.begin(), c.start.end() - 1);
  for (size_t j = 0; j + 1 < c.start.size(); ++j)
    m.count.push_back(static_cast<int>(c.start[j + 1] - c.start[j]));
  m.ind = c.ind;
  m.val = c.val;
  return m;
}

class IisTest : public EngineTest {
 protected:
  // Every subsystem the full search finds, each checked irreducible.
  std::vector<subsystem> all_checked(const mps_model &m, int expected_flags = 0) {
    EXPECT_EQ(KVSLiisall(p), 0);
    int n = int_attr(p, KVSL_ATTR_NUMIIS), k = -2;
    EXPECT_EQ(KVSLiisstatus(p, &k), 0);
    EXPECT_EQ(k, n);
    std::vector<subsystem> out;
    std::set<subsystem> distinct;
    for (int i = 1; i <= n; ++i) {
      out.push_back(read_subsystem(p, i));
      EXPECT_EQ(out.back().flags, expected_flags) << "IIS " << i;
      EXPECT_TRUE(irreducible(m, out.back())) << "IIS " << i;
      EXPECT_TRUE(distinct.insert(out.back()).second) << "IIS " << i << " repeats";
    }
    return out;
  }
};

TEST_F(IisTest, TwoConflictingRows) {
  // x + y <= 1 and x + y >= 3 conflict whatever the bounds; z <= 4 does not.
  dense_model d{"LGL", {1, 3, 4}, {}, {0, 0, 0}, {}, {}, {{1, 1, 0}, {1, 1, 0}, {0, 0, 1}}};
  ASSERT_EQ(load_lp(p, d), 0);
  auto found = all_checked(sparse_form(d));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].rows, (std::vector<int>{0, 1}));
  EXPECT_TRUE(found[0].bounds.empty());
  std::string types(2, '?');
  int nr = 0, nc = 0, rows[2], cols[1];
  ASSERT_EQ(KVSLgetiisdata(p, 1, &nr, &nc, rows, cols, types.data()), 0);
  EXPECT_EQ(types, "LG");
}

TEST_F(IisTest, RowAgainstABound) {
  // x >= 5 against x <= 2; y's row and bounds play no part.
  dense_model d{"GL", {5, 10}, {}, {1, 1}, {0, 0}, {2, 100}, {{1, 0}, {0, 1}}};
  ASSERT_EQ(load_lp(p, d), 0);
  auto found = all_checked(sparse_form(d));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].rows, (std::vector<int>{0}));
  ASSERT_EQ(found[0].bounds.size(), 1u);
  EXPECT_EQ(found[0].bounds[0], std::make_pair(0, 'U'));
}

TEST_F(IisTest, CrossedBoundsOfOneColumn) {
  dense_model d{"L", {10}, {}, {1, 1}, {0, 3}, {5, 1}, {{1, 1}}};
  ASSERT_EQ(load_lp(p, d), 0);
  auto found = all_checked(sparse_form(d));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_TRUE(found[0].rows.empty());
  EXPECT_EQ(found[0].bounds, (std::vector<std::pair<int, char>>{{1, 'L'}, {1, 'U'}}));
}

TEST_F(IisTest, TwoSeparateConflictsGiveTwoSubsystems) {
  // x >= 5 with x <= 2 (a row each), and y >= 4 with y's upper bound 1.
  dense_model d{"GLG", {5, 2, 4}, {}, {0, 0}, {0, 0}, {100, 1}, {{1, 0}, {1, 0}, {0, 1}}};
  ASSERT_EQ(load_lp(p, d), 0);
  auto found = all_checked(sparse_form(d));
  ASSERT_EQ(found.size(), 2u);
  std::set<std::vector<int>> rows{found[0].rows, found[1].rows};
  EXPECT_EQ(rows, (std::set<std::vector<int>>{{0, 1}, {2}}));
}

TEST_F(IisTest, OverlappingConflictsAreAllFound) {
  // x + y = 4 conflicts with x <= 1, y <= 1 (rows), and with x + y <= 3;
  // two subsystems share the equality row.
  dense_model d{"ELLL", {4, 1, 1, 3}, {}, {0, 0}, {}, {}, {{1, 1}, {1, 0}, {0, 1}, {1, 1}}};
  ASSERT_EQ(load_lp(p, d), 0);
  auto found = all_checked(sparse_form(d));
  std::set<std::vector<int>> rows;
  for (const auto &s : found) rows.insert(s.rows);
  EXPECT_EQ(rows, (std::set<std::vector<int>>{{0, 1, 2}, {0, 3}}));
}

TEST_F(IisTest, FirstAndNextStepThroughTheSubsystems) {
  dense_model d{"GLG", {5, 2, 4}, {}, {0, 0}, {0, 0}, {100, 1}, {{1, 0}, {1, 0}, {0, 1}}};
  ASSERT_EQ(load_lp(p, d), 0);
  int k = 7, status = -1;
  ASSERT_EQ(KVSLiisstatus(p, &k), 0);
  EXPECT_EQ(k, -1);
  ASSERT_EQ(KVSLiisfirst(p, 1, &status), 0);
  EXPECT_EQ(status, 0);
  ASSERT_EQ(KVSLiisstatus(p, &k), 0);
  EXPECT_EQ(k, 1);
  ASSERT_EQ(KVSLiisnext(p, &status), 0);
  EXPECT_EQ(status, 0);
  ASSERT_EQ(KVSLiisnext(p, &status), 0);
  EXPECT_EQ(status, 1);
  ASSERT_EQ(KVSLiisstatus(p, &k), 0);
  EXPECT_EQ(k, 2);
  int nr = 0, nc = 0;
  EXPECT_EQ(KVSLgetiisdata(p, 3, &nr, &nc, nullptr, nullptr, nullptr), KVSL_ERR_INDEX);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_INDEX);
  EXPECT_EQ(KVSLgetiisdata(p, -1, &nr, &nc, nullptr, nullptr, nullptr), KVSL_ERR_INDEX);
  EXPECT_EQ(KVSLiisfirst(p, 2, &status), KVSL_ERR_BADARG);
  double ub = 50;
  int col = 1;
  char type = 'U';
  ASSERT_EQ(KVSLchgbounds(p, 1, &col, &type, &ub), 0);
  // A change keeps what was found readable; a new optimisation drops it.
  ASSERT_EQ(KVSLiisstatus(p, &k), 0);
  EXPECT_EQ(k, 2);
  ASSERT_EQ(KVSLminim(p, ""), 0);
  ASSERT_EQ(KVSLiisstatus(p, &k), 0);
  EXPECT_EQ(k, -1);
}

TEST_F(IisTest, ApproximationAfterAnInfeasibleSolve) {
  dense_model d{"GLL", {5, 2, 9}, {}, {1, 1}, {}, {}, {{1, 0}, {1, 0}, {0, 1}}};
  ASSERT_EQ(load_lp(p, d), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_IISAVAILABLE), 0);
  ASSERT_EQ(KVSLminim(p, ""), 0);
  ASSERT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_INFEAS);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_IISAVAILABLE), 1);
  subsystem s = read_subsystem(p, 0);
  mps_model m = sparse_form(d);
  EXPECT_EQ(solve_restricted(m, {s.rows.begin(), s.rows.end()}, {s.bounds.begin(), s.bounds.end()}),
            KVSL_LP_INFEAS);
  int k = 5;
  ASSERT_EQ(KVSLiisstatus(p, &k), 0);
  EXPECT_EQ(k, 0);
  int status = -1;
  ASSERT_EQ(KVSLiisfirst(p, 0, &status), 0);
  EXPECT_EQ(status, 0);
}

TEST_F(IisTest, FeasibleModelHasNone) {
  dense_model d{"L", {10}, {}, {1, 1}, {}, {}, {{1, 1}}};
  ASSERT_EQ(load_lp(p, d), 0);
  int status = -1, nr = 0, nc = 0;
  ASSERT_EQ(KVSLiisfirst(p, 1, &status), 0);
  EXPECT_EQ(status, 1);
  ASSERT_EQ(KVSLiisall(p), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_NUMIIS), 0);
  ASSERT_EQ(KVSLiisfirst(p, 0, &status), 0);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(KVSLgetiisdata(p, 0, &nr, &nc, nullptr, nullptr, nullptr), KVSL_ERR_INDEX);
}

TEST_F(IisTest, NeedsALoadedProblem) {
  int k = 0, status = 0;
  EXPECT_EQ(KVSLiisstatus(p, &k), KVSL_ERR_NOTLOADED);
  EXPECT_EQ(KVSLiisall(p), KVSL_ERR_NOTLOADED);
  EXPECT_EQ(KVSLiisfirst(p, 1, &status), KVSL_ERR_NOTLOADED);
  EXPECT_EQ(KVSLiisstatus(nullptr, &k), KVSL_ERR_BADARG);
}

TEST_F(IisTest, MipWithAnInfeasibleRelaxationGivesTheRelaxationsSubsystem) {
  dense_model d{"GL", {5, 2}, {}, {1}, {}, {}, {{1}, {1}}};
  ASSERT_EQ(load_global(p, d, "I", {0}), 0);
  auto found = all_checked(sparse_form(d));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].rows, (std::vector<int>{0, 1}));
}

// The dense model with integer columns, in the checker's form.
mps_model with_integers(const dense_model &d, const std::vector<int> &cols) {
  mps_model m = sparse_form(d);
  for (int j : cols) {
    m.enttype.push_back('I');
    m.entcol.push_back(j);
  }
  return m;
}

TEST_F(IisTest, IntegerOnlyConflictOfOneRow) {
  // 2x + 2y = 3 has no integer solution; x - y <= 10 and the bounds are
  // not needed.  The relaxation is feasible.
  dense_model d{"EL", {3, 10}, {}, {0, 0}, {0, 0}, {3, 3}, {{2, 2}, {1, -1}}};
  ASSERT_EQ(load_global(p, d, "II", {0, 1}), 0);
  auto found = all_checked(with_integers(d, {0, 1}), 1);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].rows, (std::vector<int>{0}));
  EXPECT_TRUE(found[0].bounds.empty());
  int status = -1;
  ASSERT_EQ(KVSLiisfirst(p, 0, &status), 0);
  EXPECT_EQ(status, 1);  // no approximation from an LP proof
}

TEST_F(IisTest, IntegerOnlyConflictOfTwoRows) {
  // x >= 0.5 and x <= 0.8 leave no integer x; y's row plays no part.
  dense_model d{"GLL", {0.5, 0.8, 4}, {}, {0, 0}, {-5, 0}, {5, 9}, {{1, 0}, {1, 0}, {0, 1}}};
  ASSERT_EQ(load_global(p, d, "I", {0}), 0);
  auto found = all_checked(with_integers(d, {0}), 1);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].rows, (std::vector<int>{0, 1}));
  EXPECT_TRUE(found[0].bounds.empty());
}

TEST_F(IisTest, FeasibleMipHasNone) {
  dense_model d{"L", {4.5}, {}, {1}, {}, {}, {{1}}};
  ASSERT_EQ(load_global(p, d, "I", {0}), 0);
  ASSERT_EQ(KVSLiisall(p), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_NUMIIS), 0);
}

// The infeasible netlib models listed in the data folder.
std::vector<std::string> infeasible_models() {
  std::vector<std::string> out;
  std::ifstream in(std::string(KVSL_TEST_DATA_DIR) + "/infeas/infeasible.tsv");
  std::string line;
  std::getline(in, line);
  while (std::getline(in, line)) out.push_back(line.substr(0, line.find('\t')));
  return out;
}

// Read an infeasible netlib model into a new engine problem and solve it.
KVSLprob load_infeasible(const std::string &name, mps_model &m) {
  KVSLprob q = nullptr;
  EXPECT_EQ(KVSLcreateprob(&q), 0);
  m = read_mps(std::string(KVSL_TEST_DATA_DIR) + "/infeas/" + name + ".mps.gz");
  EXPECT_EQ(load_mps(q, m, false), 0);
  EXPECT_EQ(KVSLminim(q, ""), 0);
  EXPECT_EQ(int_attr(q, KVSL_ATTR_LPSTATUS), KVSL_LP_INFEAS);
  return q;
}

TEST_F(IisTest, InfeasibleNetlibModelsFirstTwoSubsystems) {
  std::vector<std::string> names = infeasible_models();
  ASSERT_EQ(names.size(), 10u) << "the infeasible models are missing";
  for (const std::string &name : names) {
    SCOPED_TRACE(name);
    mps_model m;
    KVSLprob q = load_infeasible(name, m);
    int status = -1;
    ASSERT_EQ(KVSLiisfirst(q, 1, &status), 0);
    ASSERT_EQ(status, 0);
    subsystem s = read_subsystem(q, 1);
    EXPECT_TRUE(irreducible(m, s));
    ASSERT_EQ(KVSLiisnext(q, &status), 0);
    if (status == 0) {
      subsystem t = read_subsystem(q, 2);
      EXPECT_TRUE(irreducible(m, t));
      EXPECT_TRUE(s < t || t < s);
    }
    EXPECT_EQ(KVSLdestroyprob(q), 0);
  }
}

// Every subsystem of the full search (some 13 s in all: label slow).
TEST_F(IisTest, DISABLED_InfeasibleNetlibModelsAllSubsystems) {
  std::vector<std::string> names = infeasible_models();
  ASSERT_EQ(names.size(), 10u) << "the infeasible models are missing";
  for (const std::string &name : names) {
    SCOPED_TRACE(name);
    mps_model m;
    KVSLprob q = load_infeasible(name, m);
    ASSERT_EQ(KVSLiisall(q), 0);
    int n = int_attr(q, KVSL_ATTR_NUMIIS);
    EXPECT_GE(n, 1);
    std::set<subsystem> distinct;
    for (int i = 1; i <= n; ++i) {
      subsystem s = read_subsystem(q, i);
      EXPECT_TRUE(irreducible(m, s)) << "IIS " << i;
      EXPECT_TRUE(distinct.insert(s).second) << "IIS " << i << " repeats";
    }
    EXPECT_EQ(KVSLdestroyprob(q), 0);
  }
}

}  // namespace
