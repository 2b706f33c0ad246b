/*
 * cutpool_test.cpp -- the engine's cut pool through its own interface:
 * argument checks, listing by type number, the two-step read of the data,
 * and a new load emptying the pool.
 */
#include "engine_test.h"

namespace {

class CutPoolTest : public EngineTest {
 protected:
  // min -x - y, x + y <= 3, x, y in [0, 2].
  void load() {
    dense_model m{"L", {3}, {}, {-1, -1}, {0, 0}, {2, 2}, {{1, 1}}};
    ASSERT_EQ(load_lp(p, m), 0);
  }
  std::vector<KVSLcut> list(int type) {
    int n = -1;
    KVSLcut probe[1];
    EXPECT_EQ(KVSLgetcutlist(p, type, -1, &n, 0, probe), 0);
    std::vector<KVSLcut> cuts(static_cast<size_t>(n));
    int again = -1;
    EXPECT_EQ(KVSLgetcutlist(p, type, -1, &again, n, cuts.data()), 0);
    EXPECT_EQ(again, n);
    return cuts;
  }
};

TEST_F(CutPoolTest, AddListAndReadBack) {
  load();
  const int type[] = {4, 9, 4};
  const char rowtype[] = "LGE";
  const double rhs[] = {2.5, -1, 1};
  const int64_t start[] = {0, 2, 3, 5};
  const int col[] = {0, 1, 1, 0, 1};
  const double val[] = {1, 2, -1, 1, 1};
  ASSERT_EQ(KVSLaddcuts(p, 3, type, rowtype, rhs, start, col, val), 0);
  EXPECT_EQ(list(-1).size(), 3u);
  std::vector<KVSLcut> fours = list(4);
  ASSERT_EQ(fours.size(), 2u);
  EXPECT_EQ(list(7).size(), 0u);
  // First the starts only (size too small for the coefficients).
  int64_t st[3] = {-1, -1, -1};
  int ct[2] = {0, 0};
  ASSERT_EQ(KVSLgetcpcuts(p, fours.data(), 2, 1, ct, nullptr, st, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(st[0], 0);
  EXPECT_EQ(st[1], 2);
  EXPECT_EQ(st[2], 4);
  EXPECT_EQ(ct[0], 0);  // nothing but the starts was written
  int gc[4];
  double gv[4], gr[2];
  char gt[2];
  ASSERT_EQ(KVSLgetcpcuts(p, fours.data(), 2, 4, ct, gt, st, gc, gv, gr), 0);
  EXPECT_EQ(ct[0], 4);
  EXPECT_EQ(ct[1], 4);
  EXPECT_EQ(gt[0], 'L');
  EXPECT_EQ(gt[1], 'E');
  EXPECT_EQ(gr[0], 2.5);
  EXPECT_EQ(gr[1], 1.0);
  EXPECT_EQ(std::vector<int>(gc, gc + 4), (std::vector<int>{0, 1, 0, 1}));
  EXPECT_EQ(std::vector<double>(gv, gv + 4), (std::vector<double>{1, 2, 1, 1}));
  // A new load empties the pool.
  load();
  EXPECT_EQ(list(-1).size(), 0u);
}

TEST_F(CutPoolTest, BadArgumentsAddNothing) {
  const int type[] = {1};
  const double rhs[] = {1};
  const int64_t start[] = {0, 1};
  const int col[] = {0}, badcol[] = {5};
  const double val[] = {1};
  EXPECT_EQ(KVSLaddcuts(p, 1, type, "L", rhs, start, col, val), KVSL_ERR_NOTLOADED);
  load();
  EXPECT_EQ(KVSLaddcuts(p, 1, type, "X", rhs, start, col, val), KVSL_ERR_BADARG);
  EXPECT_EQ(KVSLaddcuts(p, 1, type, "L", rhs, start, badcol, val), KVSL_ERR_INDEX);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_INDEX);
  EXPECT_EQ(KVSLaddcuts(p, 1, type, "L", rhs, start, nullptr, val), KVSL_ERR_BADARG);
  EXPECT_EQ(KVSLaddcuts(p, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(list(-1).size(), 0u);
  int n = 0;
  EXPECT_EQ(KVSLgetcutlist(p, -1, -1, nullptr, 0, nullptr), KVSL_ERR_BADARG);
  KVSLcut bogus[1] = {reinterpret_cast<KVSLcut>(&n)};
  int64_t st[2];
  EXPECT_EQ(KVSLgetcpcuts(p, bogus, 1, 0, nullptr, nullptr, st, nullptr, nullptr, nullptr),
            KVSL_ERR_BADARG);
}

}  // namespace
