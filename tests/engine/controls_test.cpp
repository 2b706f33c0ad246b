/*
 * controls_test.cpp -- the control table (defaults, set, get, restore),
 * attributes of a fresh problem, and the error code of failing calls.
 */
#include "engine_test.h"

namespace {

using ControlTest = EngineTest;

TEST_F(ControlTest, IntegerDefaults) {
  struct expect { int control, value; };
  for (expect e : {expect{KVSL_CTRL_SCALING, 1}, {KVSL_CTRL_PRESOLVE, 1}, {KVSL_CTRL_CRASH, 1},
                   {KVSL_CTRL_LPLOG, 100}, {KVSL_CTRL_MIPPRESOLVE, 1}, {KVSL_CTRL_MAXNODE, 0},
                   {KVSL_CTRL_MIPLOG, 1}, {KVSL_CTRL_OUTPUTLOG, 1}, {KVSL_CTRL_BARRIERLOG, 0},
                   {KVSL_CTRL_DUALREDUCTIONS, 1}, {KVSL_CTRL_THREADS, 1},
                   {KVSL_CTRL_CUTSTRATEGY, 1}, {KVSL_CTRL_HEURSTRATEGY, 1}}) {
    int v = -1;
    ASSERT_EQ(KVSLgetintcontrol(p, e.control, &v), 0) << e.control;
    EXPECT_EQ(v, e.value) << e.control;
  }
}

TEST_F(ControlTest, DoubleDefaults) {
  struct expect { int control; double value; };
  for (expect e : {expect{KVSL_CTRL_FEASTOL, 1e-7}, {KVSL_CTRL_OPTIMALITYTOL, 1e-7},
                   {KVSL_CTRL_MIPTOL, 1e-6}, {KVSL_CTRL_PSEUDOCOST, 0.01},
                   {KVSL_CTRL_MIPABSGAP, 0.0}, {KVSL_CTRL_MIPRELGAP, 1e-4},
                   {KVSL_CTRL_TIMELIMIT, 0.0}, {KVSL_CTRL_CUTOFF, 1e40}}) {
    double v = -1;
    ASSERT_EQ(KVSLgetdblcontrol(p, e.control, &v), 0) << e.control;
    EXPECT_EQ(v, e.value) << e.control;
  }
  ASSERT_EQ(KVSLchgobjsense(p, -1), 0);
  double v = 0;
  ASSERT_EQ(KVSLgetdblcontrol(p, KVSL_CTRL_CUTOFF, &v), 0);
  EXPECT_EQ(v, -1e40);
}

TEST_F(ControlTest, SetGetAndRestore) {
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_MAXNODE, 77), 0);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_MIPRELGAP, 0.5), 0);
  int i = 0;
  double d = 0;
  KVSLgetintcontrol(p, KVSL_CTRL_MAXNODE, &i);
  KVSLgetdblcontrol(p, KVSL_CTRL_MIPRELGAP, &d);
  EXPECT_EQ(i, 77);
  EXPECT_EQ(d, 0.5);
  ASSERT_EQ(KVSLsetdefaultcontrol(p, KVSL_CTRL_MAXNODE), 0);
  ASSERT_EQ(KVSLsetdefaultcontrol(p, KVSL_CTRL_MIPRELGAP), 0);
  KVSLgetintcontrol(p, KVSL_CTRL_MAXNODE, &i);
  KVSLgetdblcontrol(p, KVSL_CTRL_MIPRELGAP, &d);
  EXPECT_EQ(i, 0);
  EXPECT_EQ(d, 1e-4);
}

TEST_F(ControlTest, ProblemsKeepTheirOwnControls) {
  KVSLprob q;
  ASSERT_EQ(KVSLcreateprob(&q), 0);
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, 2), 0);
  int v = 0;
  ASSERT_EQ(KVSLgetintcontrol(q, KVSL_CTRL_THREADS, &v), 0);
  EXPECT_EQ(v, 1);
  KVSLdestroyprob(q);
}

TEST_F(ControlTest, UnknownControlsAndAttributes) {
  int i = 0;
  double d = 0;
  EXPECT_EQ(KVSLsetintcontrol(p, 9999, 1), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(KVSLgetintcontrol(p, KVSL_CTRL_FEASTOL, &i), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_THREADS, 1.0), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(KVSLgetdblcontrol(p, 1, &d), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(KVSLsetdefaultcontrol(p, 1234), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(KVSLgetintattrib(p, KVSL_ATTR_LPOBJVAL, &i), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(KVSLgetdblattrib(p, KVSL_ATTR_ROWS, &d), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(KVSLgetintcontrol(p, KVSL_CTRL_THREADS, nullptr), KVSL_ERR_BADARG);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_BADARG);
}

TEST_F(ControlTest, FreshProblemAttributes) {
  for (int a : {KVSL_ATTR_ROWS, KVSL_ATTR_SETS, KVSL_ATTR_ENTITIES, KVSL_ATTR_LPSTATUS,
                KVSL_ATTR_MIPSTATUS, KVSL_ATTR_COLS, KVSL_ATTR_SIMPLEXITER, KVSL_ATTR_ERRORCODE,
                KVSL_ATTR_PRESOLVESTATE, KVSL_ATTR_NUMIIS, KVSL_ATTR_NODES,
                KVSL_ATTR_IISAVAILABLE})
    EXPECT_EQ(int_attr(p, a), 0) << a;
  for (int a : {KVSL_ATTR_LPOBJVAL, KVSL_ATTR_BESTBOUND, KVSL_ATTR_MIPOBJVAL, KVSL_ATTR_SOLVETIME})
    EXPECT_EQ(dbl_attr(p, a), 0.0) << a;
}

TEST(EngineStart, ProblemsNeedAStartedEngine) {
  KVSLprob q = nullptr;
  EXPECT_EQ(KVSLcreateprob(&q), KVSL_ERR_NOTINIT);
  EXPECT_EQ(q, nullptr);
  EXPECT_EQ(KVSLfree(), KVSL_ERR_NOTINIT);
  ASSERT_EQ(KVSLinit(nullptr), 0);
  ASSERT_EQ(KVSLinit(nullptr), 0);
  EXPECT_EQ(KVSLfree(), 0);
  ASSERT_EQ(KVSLcreateprob(&q), 0);
  EXPECT_EQ(KVSLdestroyprob(q), 0);
  EXPECT_EQ(KVSLfree(), 0);
  EXPECT_EQ(KVSLcreateprob(nullptr), KVSL_ERR_BADARG);
  EXPECT_EQ(KVSLdestroyprob(nullptr), KVSL_ERR_BADARG);
}

}  // namespace
