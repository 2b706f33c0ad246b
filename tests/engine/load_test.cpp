/*
 * load_test.cpp -- loading matrices: argument checks and their error
 * codes, column counts with gaps, names, changes on a loaded problem.
 */
#include "engine_test.h"

namespace {

using LoadTest = EngineTest;

dense_model two_by_two() {
  return {"LG", {4, 1}, {}, {1, 1}, {}, {}, {{1, 1}, {1, -1}}};
}

TEST_F(LoadTest, BadArgumentsAreRefusedWithTheirCode) {
  dense_model m = two_by_two();
  column_arrays c(m);
  auto load = [&](int ncols, int nrows, const char *types, const double *range) {
    return KVSLloadlp64(p, "m", ncols, nrows, types, m.rhs.data(), range, m.obj.data(),
                        c.start.data(), nullptr, c.ind.data(), c.val.data(), nullptr, nullptr);
  };
  EXPECT_EQ(load(-1, 2, "LG", nullptr), KVSL_ERR_BADARG);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_BADARG);
  EXPECT_EQ(load(2, 2, "LX", nullptr), KVSL_ERR_BADARG);
  EXPECT_EQ(load(2, 2, "LR", nullptr), KVSL_ERR_BADARG);  // a range row needs its width
  EXPECT_EQ(load(2, 1, "L", nullptr), KVSL_ERR_INDEX);    // row index 1 of a 1-row matrix
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_INDEX);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ROWS), 0);              // nothing was loaded
  EXPECT_EQ(load(2, 2, "LG", nullptr), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ROWS), 2);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_INDEX);  // the last failure's code
  EXPECT_EQ(load_global(p, m, "I", {2}), KVSL_ERR_INDEX);
  EXPECT_EQ(load_global(p, m, "X", {0}), KVSL_ERR_BADARG);
}

// Columns given with counts may leave gaps between them.
TEST_F(LoadTest, ColumnCountsWithGaps) {
  const char types[] = "LG";
  double rhs[] = {4, 1}, obj[] = {-1, -1};
  int64_t start[] = {0, 5};
  int count[] = {2, 2};
  int ind[] = {0, 1, -7, -7, -7, 0, 1};
  double val[] = {1, 1, 99, 99, 99, 1, -1};
  ASSERT_EQ(KVSLloadlp64(p, "gaps", 2, 2, types, rhs, nullptr, obj, start, count, ind, val,
                         nullptr, nullptr),
            0);
  ASSERT_EQ(KVSLminim(p, ""), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), -4.0, 1e-9);
  auto x = lpsol();
  EXPECT_NEAR(x[0] + x[1], 4.0, 1e-9);
  EXPECT_GE(x[0] - x[1], 1.0 - 1e-9);
}

TEST_F(LoadTest, NamesAreCheckedAgainstTheMatrix) {
  const char names[] = "alpha\0beta";
  EXPECT_EQ(KVSLaddnames(p, 2, names, 0, 1), KVSL_ERR_NOTLOADED);
  ASSERT_EQ(load_lp(p, two_by_two()), 0);
  EXPECT_EQ(KVSLaddnames(p, 2, names, 0, 1), 0);
  EXPECT_EQ(KVSLaddnames(p, 1, names, 0, 1), 0);
  EXPECT_EQ(KVSLaddnames(p, 1, names, 1, 2), KVSL_ERR_INDEX);
  EXPECT_EQ(KVSLaddnames(p, 3, names, 0, 0), KVSL_ERR_INDEX);  // no sets loaded
  EXPECT_EQ(KVSLaddnames(p, 4, names, 0, 0), KVSL_ERR_BADARG);
  EXPECT_EQ(KVSLaddnames(p, 2, nullptr, 0, 0), KVSL_ERR_BADARG);
}

TEST_F(LoadTest, ChangesNeedAMatrixAndValidIndices) {
  int col = 0;
  double v = 1;
  char t = 'U';
  EXPECT_EQ(KVSLchgobj(p, 1, &col, &v), KVSL_ERR_NOTLOADED);
  EXPECT_EQ(KVSLchgbounds(p, 1, &col, &t, &v), KVSL_ERR_NOTLOADED);
  EXPECT_EQ(KVSLchgobjsense(p, -1), 0);  // the sense may be set before a load
  EXPECT_EQ(KVSLchgobjsense(p, 0), KVSL_ERR_BADARG);
  ASSERT_EQ(load_lp(p, two_by_two()), 0);
  col = 2;
  EXPECT_EQ(KVSLchgobj(p, 1, &col, &v), KVSL_ERR_INDEX);
  col = -2;
  EXPECT_EQ(KVSLchgobj(p, 1, &col, &v), KVSL_ERR_INDEX);
  col = 0;
  t = 'X';
  EXPECT_EQ(KVSLchgbounds(p, 1, &col, &t, &v), KVSL_ERR_BADARG);
  int row = 0, flag = 2;
  EXPECT_EQ(KVSLsetindicators(p, 1, &row, &col, &flag), KVSL_ERR_BADARG);
}

// A load replaces the previous problem entirely, the sense excepted.
TEST_F(LoadTest, LoadReplacesEverything) {
  ASSERT_EQ(load_global(p, two_by_two(), "I", {0}), 0);
  ASSERT_EQ(KVSLmaxim(p, "g"), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
  ASSERT_EQ(load_lp(p, two_by_two()), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ENTITIES), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_LP_NOT_OPTIMAL);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_UNSOLVED);
  EXPECT_EQ(KVSLgetmipsol(p, nullptr, nullptr), KVSL_ERR_NOSOLUTION);
  ASSERT_EQ(KVSLlpoptimize(p, ""), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 4.0, 1e-9);  // still maximising
}

}  // namespace
