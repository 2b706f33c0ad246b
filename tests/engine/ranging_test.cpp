/*
 * ranging_test.cpp -- sensitivity ranges of a small LP computed by hand.
 */
#include "engine_test.h"

namespace {

using RangingTest = EngineTest;

// max 3x + 2y  s.t.  x + y <= 4,  x + 3y <= 7,  0 <= x <= 3:  x = 3, y = 1.
TEST_F(RangingTest, SmallLpByHand) {
  dense_model m{"LL", {4, 7}, {}, {3, 2}, {0, 0}, {3, KVSL_INFINITY}, {{1, 1}, {1, 3}}};
  ASSERT_EQ(load_lp(p, m), 0);
  EXPECT_EQ(KVSLrange(p), KVSL_ERR_NOSOLUTION);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  ASSERT_EQ(KVSLrange(p), 0);
  double up[2], lo[2], uup[2], udn[2], uc[2], lc[2];
  ASSERT_EQ(KVSLgetcolrange(p, up, lo, uup, udn, uc, lc), 0);
  // x: nonbasic at its bound; y = 4 - x stays >= 0 up to x = 4 and row 1
  // holds down to x = 2.5.  Its cost may fall to 2 (y's) and rise freely.
  EXPECT_NEAR(up[0], 4.0, 1e-9);
  EXPECT_NEAR(lo[0], 2.5, 1e-9);
  EXPECT_NEAR(uup[0], 1.0, 1e-9);
  EXPECT_NEAR(udn[0], -1.0, 1e-9);
  EXPECT_EQ(uc[0], KVSL_INFINITY);
  EXPECT_NEAR(lc[0], 2.0, 1e-9);
  // y: basic; its cost may move within [0, 3] (the backend widens cost
  // ranges by its dual feasibility tolerance, 1e-7).
  EXPECT_NEAR(up[1], 1.0, 1e-9);
  EXPECT_NEAR(lo[1], 1.0, 1e-9);
  EXPECT_EQ(uup[1], 0.0);
  EXPECT_NEAR(uc[1], 3.0, 1e-6);
  EXPECT_NEAR(lc[1], 0.0, 1e-6);
  ASSERT_EQ(KVSLgetrowrange(p, up, lo, uup, udn), 0);
  // Row 0 binds with dual 2 for right-hand sides in [3, 13/3].
  EXPECT_NEAR(up[0], 13.0 / 3.0, 1e-9);
  EXPECT_NEAR(lo[0], 3.0, 1e-9);
  EXPECT_NEAR(uup[0], 2.0, 1e-9);
  EXPECT_NEAR(udn[0], -2.0, 1e-9);
  // Row 1 does not bind (activity 6): any rhs from 6 up keeps dual 0.
  EXPECT_NEAR(lo[1], 6.0, 1e-9);
  EXPECT_EQ(up[1], KVSL_INFINITY);
  EXPECT_EQ(uup[1], 0.0);
}

TEST_F(RangingTest, NeedsAnOptimalSolution) {
  double v[1];
  EXPECT_EQ(KVSLgetrowrange(p, v, v, v, v), KVSL_ERR_NOSOLUTION);
  EXPECT_EQ(KVSLrange(p), KVSL_ERR_NOTLOADED);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_NOTLOADED);
}

}  // namespace
