/*
 * mip_test.cpp -- the global search: optima against LP relaxations,
 * statuses, options, fixing entities.
 */
#include "engine_test.h"

namespace {

// max 5x + 4y  s.t.  6x + 4y <= 24,  x + 2y <= 6,  x, y integer >= 0.
// LP relaxation x = 3, y = 1.5 (21); integer optimum x = 4, y = 0 (20).
dense_model small_mip() { return {"LL", {24, 6}, {}, {5, 4}, {}, {}, {{6, 4}, {1, 2}}}; }

using MipTest = EngineTest;

TEST_F(MipTest, WithoutGlobalOptionMaximSolvesTheRelaxation) {
  ASSERT_EQ(load_global(p, small_mip(), "II", {0, 1}), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ENTITIES), 2);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_LP_NOT_OPTIMAL);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_LP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 21.0, 1e-9);
  EXPECT_EQ(KVSLgetmipsol(p, nullptr, nullptr), KVSL_ERR_NOSOLUTION);
}

TEST_F(MipTest, GlobalOptionFindsTheIntegerOptimum) {
  ASSERT_EQ(load_global(p, small_mip(), "II", {0, 1}), 0);
  ASSERT_EQ(KVSLmaxim(p, "g"), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), 20.0, 1e-9);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_BESTBOUND), 20.0, 1e-3);
  EXPECT_GE(int_attr(p, KVSL_ATTR_NODES), 0);
  double x[2], slack[2];
  ASSERT_EQ(KVSLgetmipsol(p, x, slack), 0);
  EXPECT_EQ(x[0], 4.0);
  EXPECT_EQ(x[1], 0.0);
  EXPECT_NEAR(slack[0], 0.0, 1e-9);
  EXPECT_NEAR(slack[1], 2.0, 1e-9);
}

TEST_F(MipTest, MipoptimizeAlwaysSearchesAndLStopsAtTheRelaxation) {
  ASSERT_EQ(load_global(p, small_mip(), "II", {0, 1}), 0);
  ASSERT_EQ(KVSLchgobjsense(p, -1), 0);
  ASSERT_EQ(KVSLmipoptimize(p, "l"), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_LP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 21.0, 1e-9);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), 20.0, 1e-9);
}

TEST_F(MipTest, EverySearchSettingFindsTheOptimum) {
  struct setting { int control, value; };
  for (setting s : {setting{KVSL_CTRL_MIPPRESOLVE, 0}, setting{KVSL_CTRL_CUTSTRATEGY, 0},
                    setting{KVSL_CTRL_HEURSTRATEGY, 0}, setting{KVSL_CTRL_THREADS, 2}}) {
    KVSLprob q;
    ASSERT_EQ(KVSLcreateprob(&q), 0);
    ASSERT_EQ(KVSLsetintcontrol(q, s.control, s.value), 0);
    ASSERT_EQ(load_global(q, small_mip(), "II", {0, 1}), 0);
    ASSERT_EQ(KVSLmaxim(q, "g"), 0);
    EXPECT_EQ(int_attr(q, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL) << s.control;
    EXPECT_NEAR(dbl_attr(q, KVSL_ATTR_MIPOBJVAL), 20.0, 1e-9) << s.control;
    KVSLdestroyprob(q);
  }
}

TEST_F(MipTest, ObjectiveConstantInTheMipObjective) {
  ASSERT_EQ(load_global(p, small_mip(), "II", {0, 1}), 0);
  int col = -1;
  double k = 5.0;
  ASSERT_EQ(KVSLchgobj(p, 1, &col, &k), 0);
  ASSERT_EQ(KVSLmaxim(p, "g"), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), 15.0, 1e-9);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_BESTBOUND), 15.0, 1e-3);
}

// Binaries are limited to [0, 1] whatever bounds they were loaded with:
// max x + y  s.t.  x + y <= 5  with x binary (ub 5) and y <= 0.5.
TEST_F(MipTest, BinaryColumnsStayWithinZeroAndOne) {
  dense_model m{"L", {5}, {}, {1, 1}, {0, 0}, {5, 0.5}, {{1, 1}}};
  ASSERT_EQ(load_global(p, m, "B", {0}), 0);
  ASSERT_EQ(KVSLmaxim(p, "g"), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), 1.5, 1e-9);
}

TEST_F(MipTest, IntegerInfeasible) {
  dense_model m{"E", {1}, {}, {1}, {0}, {5}, {{2}}};  // 2x = 1, x integer
  for (int presolve : {1, 0}) {
    KVSLsetintcontrol(p, KVSL_CTRL_MIPPRESOLVE, presolve);
    ASSERT_EQ(load_global(p, m, "I", {0}), 0);
    ASSERT_EQ(KVSLminim(p, "g"), 0);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_INFEAS);
    EXPECT_EQ(KVSLgetmipsol(p, nullptr, nullptr), KVSL_ERR_NOSOLUTION);
  }
}

TEST_F(MipTest, LpInfeasibleAndUnboundedRelaxations) {
  dense_model inf{"LG", {1, 2}, {}, {1, 1}, {}, {}, {{1, 1}, {1, 1}}};
  ASSERT_EQ(load_global(p, inf, "I", {0}), 0);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_INFEAS);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_INFEAS);
  dense_model unb{"L", {1}, {}, {1, 0}, {}, {}, {{1, -1}}};
  ASSERT_EQ(load_global(p, unb, "I", {0}), 0);
  ASSERT_EQ(KVSLmaxim(p, "g"), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_UNBOUNDED);
}

TEST_F(MipTest, FixGlobalsThenLpGivesDuals) {
  ASSERT_EQ(load_global(p, small_mip(), "II", {0, 1}), 0);
  EXPECT_EQ(KVSLfixglobals(p, 1), KVSL_ERR_NOSOLUTION);
  ASSERT_EQ(KVSLmaxim(p, "g"), 0);
  ASSERT_EQ(KVSLfixglobals(p, 1), 0);
  ASSERT_EQ(KVSLlpoptimize(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 20.0, 1e-9);
  double x[2], dj[2];
  ASSERT_EQ(KVSLgetlpsol(p, x, nullptr, nullptr, dj), 0);
  EXPECT_EQ(x[0], 4.0);
  EXPECT_NEAR(dj[0], 5.0, 1e-9);  // fixed columns carry their whole cost
  EXPECT_NEAR(dj[1], 4.0, 1e-9);
}

TEST_F(MipTest, ProblemWithoutEntitiesUnderMipoptimize) {
  dense_model m = small_mip();
  ASSERT_EQ(load_lp(p, m), 0);
  ASSERT_EQ(KVSLchgobjsense(p, -1), 0);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), 21.0, 1e-9);
}

TEST_F(MipTest, DirectivesAreAcceptedAndKeepTheOptimum) {
  ASSERT_EQ(load_global(p, small_mip(), "II", {0, 1}), 0);
  int obj[2] = {0, 1}, prio[2] = {10, 1};
  char dir[2] = {'D', 'U'};
  double up[2] = {1, 1}, down[2] = {2, 2};
  ASSERT_EQ(KVSLloaddirs(p, 2, obj, prio, dir, up, down), 0);
  ASSERT_EQ(KVSLmaxim(p, "g"), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), 20.0, 1e-9);
  int bad = 2;
  EXPECT_EQ(KVSLloaddirs(p, 1, &bad, prio, dir, up, down), KVSL_ERR_INDEX);
  char baddir = 'X';
  EXPECT_EQ(KVSLloaddirs(p, 1, obj, prio, &baddir, up, down), KVSL_ERR_BADARG);
}

TEST_F(MipTest, GlobalLimitsOnlyOfLimitedEntities) {
  ASSERT_EQ(load_global(p, small_mip(), "S", {0}, {2.0}), 0);
  int col = 0;
  double limit = 3.0;
  EXPECT_EQ(KVSLchgglblimit(p, 1, &col, &limit), 0);
  col = 1;
  EXPECT_EQ(KVSLchgglblimit(p, 1, &col, &limit), KVSL_ERR_BADARG);
}

TEST_F(MipTest, ModelCutsAndDelayedRowsStayEnforced) {
  ASSERT_EQ(load_global(p, small_mip(), "II", {0, 1}), 0);
  int row0 = 0, row1 = 1;
  ASSERT_EQ(KVSLloadmodelcuts(p, 1, &row0), 0);
  ASSERT_EQ(KVSLloaddelayedrows(p, 1, &row1), 0);
  ASSERT_EQ(KVSLmaxim(p, "g"), 0);
  EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), 20.0, 1e-9);
  int bad = 2;
  EXPECT_EQ(KVSLloadmodelcuts(p, 1, &bad), KVSL_ERR_INDEX);
  EXPECT_EQ(KVSLloaddelayedrows(p, 1, &bad), KVSL_ERR_INDEX);
}

}  // namespace
