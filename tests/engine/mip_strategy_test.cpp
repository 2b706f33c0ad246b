/*
 * mip_strategy_test.cpp -- the cut and branching strategies of the global
 * search on MIPLIB models (their exactness: mip_oracle_test.cpp).
 */
#include <string>

#include "engine_test.h"
#include "mps_reader.h"

namespace {

using MipStrategy = LoggedEngineTest;

// The default strategy runs mixed integer rounding among the cut
// generators of a plain integer model and reaches the published optimum;
// strategy 0 runs no generator.
TEST_F(MipStrategy, DefaultStrategyRunsRoundingCuts) {
  mps_model m = read_mps(std::string(KVSL_TEST_DATA_DIR) + "/miplib3/p0033.mps.gz");
  for (int strategy : {0, 1}) {
    SCOPED_TRACE(strategy);
    lines.clear();
    ASSERT_EQ(load_mps(p, m, true), 0);
    ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_CUTSTRATEGY, strategy), 0);
    ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
    EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), 3089.0, 1e-6);
    EXPECT_EQ(!with("(Gomory)").empty(), strategy == 1);
    EXPECT_EQ(!with("(MixedIntegerRounding2)").empty(), strategy == 1);
  }
}

// On one thread strong branching trusts pseudo-costs early, and Clp's
// subtrees stay out, until the search has a cutoff.  Each way of getting
// there reaches the published optimum: enigma has no solution before its
// optimum (the whole search in the first settings), gt2 finds solutions on
// the way (the settings change during the search), lseu given a cutoff from
// the controls (the later settings from the start).
TEST_F(MipStrategy, OneThreadReachesOptimaBeforeAndAfterACutoff) {
  struct run {
    const char *name;
    double optimum;
    double cutoff;  // 0: none
  };
  for (const run &r : {run{"enigma", 0.0, 0.0}, run{"gt2", 21166.0, 0.0},
                       run{"lseu", 1120.0, 1121.0}}) {
    SCOPED_TRACE(r.name);
    mps_model m = read_mps(std::string(KVSL_TEST_DATA_DIR) + "/miplib3/" + r.name + ".mps.gz");
    ASSERT_EQ(load_mps(p, m, true), 0);
    ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, 1), 0);
    if (r.cutoff != 0.0) ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_CUTOFF, r.cutoff), 0);
    ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
    EXPECT_NEAR(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), r.optimum, 1e-6 * (1.0 + r.optimum));
  }
}

}  // namespace
