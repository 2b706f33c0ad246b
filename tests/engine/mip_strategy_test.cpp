/*
 * mip_strategy_test.cpp -- the cut strategies of the global search on a
 * MIPLIB model (their exactness: mip_oracle_test.cpp).
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

}  // namespace
