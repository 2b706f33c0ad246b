/*
 * maros_test.cpp -- the convex QPs of the shared test data, read as QPS
 * files, stated through the public interface and solved by the real engine;
 * objectives must match the published optima.
 */
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kvtl.h"
#include "mps_model.h"
#include "support/optima_table.h"

namespace {

struct maros_case {
  std::string name;
  std::string file;
  double optimum;
};

// Models that take more than a few seconds on two cores: run under the
// CTest label "slow" (make test-slow), solved in full all the same.
bool is_slow(const std::string &name) {
  static const char *slow[] = {"LISWET1", "LISWET12", "LISWET3", "LISWET4", "LISWET7",
                               "Q25FV47", "MOSARQP1"};
  for (const char *s : slow)
    if (name == s) return true;
  return false;
}

std::vector<maros_case> read_optima(bool slow) {
  const std::string dir = KVTL_DATA_DIR "/maros";
  std::vector<maros_case> out;
  for (const auto &f : testsupport::read_table(dir + "/optima.tsv"))
    if (f.size() >= 6 && is_slow(f[0]) == slow)
      out.push_back({f[0], dir + "/" + f[0] + ".QPS.gz", std::stod(f[5])});
  return out;
}

void PrintTo(const maros_case &c, std::ostream *os) { *os << c.name; }

class Maros : public ::testing::TestWithParam<maros_case> {};

TEST_P(Maros, PublishedOptimum) {
  const maros_case &c = GetParam();
  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob(c.name.c_str());
  ASSERT_NE(prob, nullptr);
  mdlsetmsglevel_prob(prob, 1);
  mps_model_info info;
  std::string error;
  // The published values include the objective constant.
  ASSERT_TRUE(build_from_qps(prob, c.file.c_str(), true, &info, &error)) << error;
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), 1);
  double obj = mdlgetobjval_prob(prob);
  EXPECT_TRUE(testsupport::close_rel(obj, c.optimum, 1e-6)) << obj << " vs " << c.optimum;
  EXPECT_EQ(mdldelprob_prob(prob), 0);
}

// The data folder is part of the test: a missing or empty table fails.
TEST(MarosData, EveryModelIsListed) {
  EXPECT_EQ(read_optima(false).size() + read_optima(true).size(), 43u);
}

std::string case_name(const ::testing::TestParamInfo<maros_case> &info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Quick, Maros, ::testing::ValuesIn(read_optima(false)), case_name);
INSTANTIATE_TEST_SUITE_P(DISABLED_Slow, Maros, ::testing::ValuesIn(read_optima(true)), case_name);

}  // namespace
