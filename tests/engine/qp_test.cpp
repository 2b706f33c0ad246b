/*
 * qp_test.cpp -- convex quadratic objectives (triple convention 0.5 x'Qx)
 * and the "not convex" status for the others.
 */
#include "engine_test.h"

namespace {

using QpTest = EngineTest;

// Load min c'x + 0.5 x'Qx over one row with the given triples.
int load_qp(KVSLprob p, const dense_model &m, const std::vector<int> &q1,
            const std::vector<int> &q2, const std::vector<double> &qv) {
  column_arrays c(m);
  return KVSLloadqp64(p, "qp", m.ncols(), m.nrows(), m.rowtype.data(), m.rhs.data(), nullptr,
                      m.obj.data(), c.start.data(), nullptr, c.ind.data(), c.val.data(),
                      m.lb.empty() ? nullptr : m.lb.data(), m.ub.empty() ? nullptr : m.ub.data(),
                      static_cast<int64_t>(qv.size()), q1.data(), q2.data(), qv.data());
}

// min x^2 + y^2 - 2x - 4y  s.t.  x + y <= 2:  x = 0.5, y = 1.5, objective -4.5,
// multiplier 1, so the row's dual (derivative in rhs) is -1.
TEST_F(QpTest, DiagonalConvexQp) {
  dense_model m{"L", {2}, {}, {-2, -4}, {}, {}, {{1, 1}}};
  ASSERT_EQ(load_qp(p, m, {0, 1}, {0, 1}, {2, 2}), 0);
  ASSERT_EQ(KVSLminim(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  double x[2], slack[1], dual[1], dj[2];
  ASSERT_EQ(KVSLgetlpsol(p, x, slack, dual, dj), 0);
  EXPECT_NEAR(x[0], 0.5, 1e-6);
  EXPECT_NEAR(x[1], 1.5, 1e-6);
  EXPECT_NEAR(slack[0], 0.0, 1e-6);
  EXPECT_NEAR(dual[0], -1.0, 1e-6);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), -4.5, 1e-6);
}

// min x^2 + xy + y^2 - 3x, y free, x + y <= 10 slack:  x = 2, y = -1, obj -3.
TEST_F(QpTest, OffDiagonalTermCountsOnce) {
  dense_model m{"L", {10}, {}, {-3, 0}, {0, -KVSL_INFINITY}, {KVSL_INFINITY, KVSL_INFINITY},
                {{1, 1}}};
  ASSERT_EQ(load_qp(p, m, {0, 1, 1}, {0, 0, 1}, {2, 1, 2}), 0);
  ASSERT_EQ(KVSLlpoptimize(p, ""), 0);
  auto x = lpsol();
  EXPECT_NEAR(x[0], 2.0, 1e-6);
  EXPECT_NEAR(x[1], -1.0, 1e-6);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), -3.0, 1e-6);
}

// max -x^2 + 2x - 7 (constant):  x = 1, objective 1 - 7.
TEST_F(QpTest, ConcaveMaximisationWithConstant) {
  dense_model m{"L", {10}, {}, {2}, {}, {}, {{1}}};
  ASSERT_EQ(load_qp(p, m, {0}, {0}, {-2}), 0);
  int col = -1;
  double k = 7.0;
  ASSERT_EQ(KVSLchgobj(p, 1, &col, &k), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  EXPECT_NEAR(lpsol()[0], 1.0, 1e-6);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), -6.0, 1e-6);
}

TEST_F(QpTest, IndefiniteObjectiveIsNotConvex) {
  dense_model m{"L", {10}, {}, {0, 0}, {}, {}, {{1, 1}}};
  ASSERT_EQ(load_qp(p, m, {0}, {1}, {1}), 0);  // x*y
  ASSERT_EQ(KVSLminim(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_NONCONVEX);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_PRESOLVESTATE) & KVSL_SOLUTION_HELD, 0);
  EXPECT_EQ(KVSLgetlpsol(p, nullptr, nullptr, nullptr, nullptr), KVSL_ERR_NOSOLUTION);
}

TEST_F(QpTest, ConvexObjectiveMaximisedIsNotConvex) {
  dense_model m{"L", {10}, {}, {0}, {}, {}, {{1}}};
  ASSERT_EQ(load_qp(p, m, {0}, {0}, {2}), 0);
  ASSERT_EQ(KVSLminim(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_NONCONVEX);
}

// A semidefinite Q (x + y)^2 is convex; one with a zero diagonal and an
// off-diagonal term is not.
TEST_F(QpTest, SemidefiniteIsConvex) {
  dense_model m{"G", {1}, {}, {0, 0}, {}, {}, {{1, 1}}};
  ASSERT_EQ(load_qp(p, m, {0, 0, 1}, {0, 1, 1}, {2, 2, 2}), 0);
  ASSERT_EQ(KVSLminim(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 1.0, 1e-6);  // (x + y)^2 at x + y = 1
  ASSERT_EQ(load_qp(p, m, {0, 0}, {0, 1}, {2, 1}), 0);   // x^2 + xy: y^2 missing
  ASSERT_EQ(KVSLminim(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_NONCONVEX);
}

// Load min c'x subject to one 'L' row a'x + x'Qx <= rhs with the triples.
int load_qcqp(KVSLprob p, const dense_model &m, int row, const std::vector<int> &q1,
              const std::vector<int> &q2, const std::vector<double> &qv) {
  column_arrays c(m);
  const int qrow[] = {row};
  const int64_t count[] = {static_cast<int64_t>(qv.size())};
  return KVSLloadqcqp64(p, "qcqp", m.ncols(), m.nrows(), m.rowtype.data(), m.rhs.data(),
                        nullptr, m.obj.data(), c.start.data(), nullptr, c.ind.data(),
                        c.val.data(), m.lb.empty() ? nullptr : m.lb.data(),
                        m.ub.empty() ? nullptr : m.ub.data(), 0, nullptr, nullptr, nullptr, 1,
                        qrow, count, q1.data(), q2.data(), qv.data());
}

// min -x, (x + y)^2 <= 4 given as the triangle (0,0,1), (0,1,1), (1,1,1)
// (an off-diagonal triple counts twice), y fixed at 1: x = 1, value -1.
// Taking the off-diagonal once would give x^2 + x + 1 <= 4, x = 1.30.
// The dual is d(1 - sqrt(r))/dr = -1/(2 sqrt(r)) = -1/4.
TEST_F(QpTest, QuadraticRowTripleConvention) {
  dense_model m{"L", {4}, {}, {-1, 0}, {-10, 1}, {10, 1}, {{0, 0}}};
  ASSERT_EQ(load_qcqp(p, m, 0, {0, 0, 1}, {0, 1, 1}, {1, 1, 1}), 0);
  ASSERT_EQ(KVSLminim(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  double x[2], slack[1], dual[1], dj[2];
  ASSERT_EQ(KVSLgetlpsol(p, x, slack, dual, dj), 0);
  EXPECT_NEAR(x[0], 1.0, 1e-6);
  EXPECT_NEAR(slack[0], 0.0, 1e-6);
  EXPECT_NEAR(dual[0], -0.25, 1e-5);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), -1.0, 1e-7);
}

// Bad quadratic-row arrays are refused before anything is loaded.
TEST_F(QpTest, QuadraticRowArraysAreChecked) {
  dense_model m{"L", {4}, {}, {-1, 0}, {}, {}, {{0, 0}}};
  EXPECT_EQ(load_qcqp(p, m, 1, {0}, {0}, {1}), KVSL_ERR_INDEX);   // no row 1
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_INDEX);
  EXPECT_EQ(load_qcqp(p, m, 0, {0}, {2}, {1}), KVSL_ERR_INDEX);   // no column 2
  EXPECT_EQ(load_qcqp(p, m, -1, {0}, {0}, {1}), KVSL_ERR_INDEX);
  column_arrays c(m);
  const int qrow[] = {0};
  const int64_t negative[] = {-1};
  EXPECT_EQ(KVSLloadqcqp64(p, "q", 2, 1, m.rowtype.data(), m.rhs.data(), nullptr, m.obj.data(),
                           c.start.data(), nullptr, c.ind.data(), c.val.data(), nullptr, nullptr,
                           0, nullptr, nullptr, nullptr, 1, qrow, negative, nullptr, nullptr,
                           nullptr),
            KVSL_ERR_BADARG);
  EXPECT_EQ(KVSLlpoptimize(p, ""), KVSL_ERR_NOTLOADED);
}

TEST_F(QpTest, QuadraticIndexOutOfRange) {
  dense_model m{"L", {10}, {}, {0}, {}, {}, {{1}}};
  EXPECT_EQ(load_qp(p, m, {0}, {3}, {2}), KVSL_ERR_INDEX);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_INDEX);
}

}  // namespace
