/*
 * datasets_test.cpp -- the netlib LPs and MIPLIB 3 MIPs of the shared test
 * data, stated through the public interface and solved by the real engine;
 * objectives must match the published optima.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "kvtl.h"
#include "mps_model.h"
#include "support/optima_table.h"

namespace {

struct dataset_case {
  std::string name;
  std::string file;
  double optimum;
  double alt;       // NaN when none
  bool mip;
};

// MIPs whose search takes minutes on two cores: run under the CTest label
// "slow" (make test-slow), solved in full all the same.
bool is_slow(const std::string &name) {
  return name == "bell5" || name == "bell3a" || name == "vpm2" || name == "pk1";
}

std::vector<dataset_case> read_optima(const std::string &dir, bool mip, bool slow = false) {
  std::vector<dataset_case> out;
  for (const auto &f : testsupport::read_table(dir + "/optima.tsv")) {
    if (f.size() < 5 || is_slow(f[0]) != slow) continue;
    double alt = NAN;
    if (!mip && f.size() > 5 && !f[5].empty()) alt = std::stod(f[5]);
    out.push_back({f[0], dir + "/" + f[0] + ".mps.gz", std::stod(f[4]), alt, mip});
  }
  return out;
}

using testsupport::close_rel;

void PrintTo(const dataset_case &c, std::ostream *os) { *os << c.name; }

class Dataset : public ::testing::TestWithParam<dataset_case> {};

TEST_P(Dataset, PublishedOptimum) {
  const dataset_case &c = GetParam();
  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob(c.name.c_str());
  ASSERT_NE(prob, nullptr);
  mdlsetmsglevel_prob(prob, 1);
  mps_model_info info;
  std::string error;
  // The published values leave the objective constant out.
  ASSERT_TRUE(build_from_mps(prob, c.file.c_str(), false, &info, &error)) << error;
  ASSERT_EQ(mdlminim_prob(prob, c.mip ? "g" : ""), 0);
  double obj = mdlgetobjval_prob(prob);
  if (c.mip) {
    EXPECT_EQ(mdlgetmipstat_prob(prob), 6);
    EXPECT_TRUE(close_rel(obj, c.optimum, 1e-5)) << obj << " vs " << c.optimum;
  } else {
    EXPECT_EQ(mdlgetlpstat_prob(prob), 1);
    bool ok = close_rel(obj, c.optimum, 1e-6) || (!std::isnan(c.alt) && close_rel(obj, c.alt, 1e-6));
    EXPECT_TRUE(ok) << obj << " vs " << c.optimum;
  }
  EXPECT_EQ(mdldelprob_prob(prob), 0);
}

std::string case_name(const ::testing::TestParamInfo<dataset_case> &info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Netlib, Dataset,
                         ::testing::ValuesIn(read_optima(KVTL_DATA_DIR "/netlib", false)), case_name);
INSTANTIATE_TEST_SUITE_P(Miplib3, Dataset,
                         ::testing::ValuesIn(read_optima(KVTL_DATA_DIR "/miplib3", true)), case_name);
INSTANTIATE_TEST_SUITE_P(DISABLED_Miplib3Slow, Dataset,
                         ::testing::ValuesIn(read_optima(KVTL_DATA_DIR "/miplib3", true, true)),
                         case_name);

}  // namespace
