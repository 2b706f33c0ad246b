/*
 * engine_test.h -- shared fixture of the engine tests: a started engine, a
 * fresh problem, and a loader of small dense models.
 */
#ifndef KVSL_ENGINE_TEST_H
#define KVSL_ENGINE_TEST_H

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "kvsl.h"

// A small model stated densely, loaded column-wise.
struct dense_model {
  std::string rowtype;
  std::vector<double> rhs, range, obj, lb, ub;
  std::vector<std::vector<double>> a;  // a[row][col]

  int nrows() const { return static_cast<int>(rowtype.size()); }
  int ncols() const { return static_cast<int>(obj.size()); }
};

// Column-wise arrays of a dense model.
struct column_arrays {
  std::vector<int64_t> start;
  std::vector<int> ind;
  std::vector<double> val;

  explicit column_arrays(const dense_model &m) {
    for (int j = 0; j < m.ncols(); ++j) {
      start.push_back(static_cast<int64_t>(ind.size()));
      for (int i = 0; i < m.nrows(); ++i)
        if (m.a[i][j] != 0.0) {
          ind.push_back(i);
          val.push_back(m.a[i][j]);
        }
    }
    start.push_back(static_cast<int64_t>(ind.size()));
  }
};

// Load a dense model as an LP.
inline int load_lp(KVSLprob p, const dense_model &m) {
  column_arrays c(m);
  return KVSLloadlp64(p, "test", m.ncols(), m.nrows(), m.rowtype.data(), m.rhs.data(),
                      m.range.empty() ? nullptr : m.range.data(), m.obj.data(), c.start.data(),
                      nullptr, c.ind.data(), c.val.data(), m.lb.empty() ? nullptr : m.lb.data(),
                      m.ub.empty() ? nullptr : m.ub.data());
}

// Load a dense model with global entities (types and columns).
inline int load_global(KVSLprob p, const dense_model &m, const std::string &types,
                       const std::vector<int> &cols, const std::vector<double> &limits = {}) {
  column_arrays c(m);
  return KVSLloadglobal64(p, "test", m.ncols(), m.nrows(), m.rowtype.data(), m.rhs.data(),
                          m.range.empty() ? nullptr : m.range.data(), m.obj.data(),
                          c.start.data(), nullptr, c.ind.data(), c.val.data(),
                          m.lb.empty() ? nullptr : m.lb.data(),
                          m.ub.empty() ? nullptr : m.ub.data(), static_cast<int>(cols.size()), 0,
                          types.data(), cols.data(), limits.empty() ? nullptr : limits.data(),
                          nullptr, nullptr, nullptr, nullptr);
}

// Load a dense model with entities and sets (members and weights per set).
inline int load_sets(KVSLprob p, const dense_model &m, const std::string &types,
              const std::vector<int> &cols, const std::vector<double> &limits,
              const std::string &settypes, const std::vector<std::vector<int>> &members,
              const std::vector<std::vector<double>> &weights) {
  column_arrays c(m);
  std::vector<int64_t> start{0};
  std::vector<int> setcol;
  std::vector<double> setref;
  for (size_t s = 0; s < members.size(); ++s) {
    setcol.insert(setcol.end(), members[s].begin(), members[s].end());
    setref.insert(setref.end(), weights[s].begin(), weights[s].end());
    start.push_back(static_cast<int64_t>(setcol.size()));
  }
  return KVSLloadglobal64(p, "test", m.ncols(), m.nrows(), m.rowtype.data(), m.rhs.data(),
                          m.range.empty() ? nullptr : m.range.data(), m.obj.data(),
                          c.start.data(), nullptr, c.ind.data(), c.val.data(),
                          m.lb.empty() ? nullptr : m.lb.data(),
                          m.ub.empty() ? nullptr : m.ub.data(), static_cast<int>(cols.size()),
                          static_cast<int>(members.size()), types.data(), cols.data(),
                          limits.empty() ? nullptr : limits.data(), settypes.data(), start.data(),
                          setcol.data(), setref.data());
}

inline int int_attr(KVSLprob p, int attr) {
  int v = -12345;
  EXPECT_EQ(KVSLgetintattrib(p, attr, &v), 0);
  return v;
}

inline double dbl_attr(KVSLprob p, int attr) {
  double v = -12345.0;
  EXPECT_EQ(KVSLgetdblattrib(p, attr, &v), 0);
  return v;
}

// A started engine with one fresh problem, silent unless a test listens.
class EngineTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(KVSLinit(nullptr), 0);
    ASSERT_EQ(KVSLcreateprob(&p), 0);
  }
  void TearDown() override {
    EXPECT_EQ(KVSLdestroyprob(p), 0);
    EXPECT_EQ(KVSLfree(), 0);
  }
  std::vector<double> lpsol() {
    std::vector<double> x(int_attr(p, KVSL_ATTR_COLS));
    EXPECT_EQ(KVSLgetlpsol(p, x.data(), nullptr, nullptr, nullptr), 0);
    return x;
  }
  // Search in the given sense; expect the optimum and return the solution.
  std::vector<double> optimum(int sense, double objective) {
    EXPECT_EQ(sense > 0 ? KVSLminim(p, "g") : KVSLmaxim(p, "g"), 0);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
    EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), objective, 1e-6);
    std::vector<double> x(int_attr(p, KVSL_ATTR_COLS));
    EXPECT_EQ(KVSLgetmipsol(p, x.data(), nullptr), 0);
    return x;
  }
  KVSLprob p = nullptr;
};

// An engine test that keeps every line the engine logs.
class LoggedEngineTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    ASSERT_EQ(KVSLsetcbmessage(p, collect, &lines), 0);
  }
  static void collect(KVSLprob, void *user, const char *text, int len, int) {
    if (text != nullptr) static_cast<std::vector<std::string> *>(user)->emplace_back(text, len);
  }
  // The lines that contain s.
  std::vector<std::string> with(const std::string &s) const {
    std::vector<std::string> out;
    for (const auto &l : lines)
      if (l.find(s) != std::string::npos) out.push_back(l);
    return out;
  }
  std::vector<std::string> lines;
};

#endif
