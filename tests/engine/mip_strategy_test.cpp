/*
 * mip_strategy_test.cpp -- the cut strategies of the global search on a
 * MIPLIB model (their exactness: mip_oracle_test.cpp).
 */
#include <string>
#include <vector>

#include "engine_test.h"
#include "mps_reader.h"

namespace {

class MipStrategy : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    ASSERT_EQ(KVSLsetcbmessage(p, collect, &lines), 0);
  }
  static void collect(KVSLprob, void *user, const char *text, int len, int) {
    if (text != nullptr) static_cast<std::vector<std::string> *>(user)->emplace_back(text, len);
  }
  bool logged(const std::string &s) const {
    for (const auto &l : lines)
      if (l.find(s) != std::string::npos) return true;
    return false;
  }
  std::vector<std::string> lines;
};

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
    EXPECT_EQ(logged("(Gomory)"), strategy == 1);
    EXPECT_EQ(logged("(MixedIntegerRounding2)"), strategy == 1);
  }
}

}  // namespace
