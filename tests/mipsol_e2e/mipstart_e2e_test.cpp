/*
 * mipstart_e2e_test.cpp -- MIP starts on the real engine: a MIPLIB model
 * restarted from its optimal solution, and a partial start completed.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "kvtl.h"
#include "mps_model.h"
#include "problem/problem.h"
#include "support/optima_table.h"

namespace {

constexpr double p0033_optimum = 3089;

// Collects the problem's output.
void collect(MDLprob, void *user, const char *text) { *static_cast<std::string *>(user) += text; }

class MipStart : public ::testing::Test {
 protected:
  void SetUp() override {
    mdlseterrctrl(0);
    prob = mdlnewprob("mipstart");
    ASSERT_NE(prob, nullptr);
    mdlsetmsglevel_prob(prob, 3);
    mdldefcbmsg_prob(prob, collect, &log);
    mps_model_info info;
    std::string error;
    const std::string file = std::string(KVTL_DATA_DIR) + "/miplib3/p0033.mps.gz";
    ASSERT_TRUE(build_from_mps(prob, file.c_str(), false, &info, &error)) << error;
    ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
    ASSERT_EQ(mdlgetmipstat_prob(prob), 6);
    ASSERT_TRUE(testsupport::close_rel(mdlgetobjval_prob(prob), p0033_optimum, 1e-6));
    for (int j = 0; j < prob->ncols; ++j) {
      vars.push_back(prob->colvars[j]);
      values.push_back(mdlgetsol(prob->colvars[j]));
    }
    log.clear();
  }
  void TearDown() override {
    if (prob != nullptr) mdldelprob_prob(prob);
  }
  // The objective the engine reports for start `name` becoming the
  // incumbent, NaN when it does not say so.
  double incumbent_of(const std::string &name) const {
    const std::string key = "MIP start " + name + " is the incumbent: objective ";
    size_t at = log.find(key);
    if (at == std::string::npos) return NAN;
    return std::stod(log.substr(at + key.size()));
  }
  MDLprob prob = nullptr;
  std::string log;
  std::vector<MDLvar> vars;
  std::vector<double> values;
};

TEST_F(MipStart, OptimalStartIsTheFirstIncumbent) {
  MDLsol sol = mdlnewsol_prob(prob);
  ASSERT_NE(sol, nullptr);
  for (size_t j = 0; j < vars.size(); ++j) ASSERT_EQ(mdlsetsolvar(sol, vars[j], values[j]), 0);
  EXPECT_EQ(mdlgetsolsize(sol), static_cast<int>(vars.size()));
  ASSERT_EQ(mdladdmipsol_prob(prob, sol, "best"), 0);
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_TRUE(testsupport::close_rel(incumbent_of("best"), p0033_optimum, 1e-6)) << log;
  EXPECT_EQ(log.find("is infeasible"), std::string::npos);
  EXPECT_EQ(mdlgetmipstat_prob(prob), 6);
  EXPECT_TRUE(testsupport::close_rel(mdlgetobjval_prob(prob), p0033_optimum, 1e-6));
  EXPECT_EQ(mdldelsol(sol), 0);
}

TEST_F(MipStart, PartialStartIsCompleted) {
  MDLsol sol = mdlnewsol_prob(prob);
  ASSERT_NE(sol, nullptr);
  // Every second column keeps its optimal value; the others are left open.
  int given = 0;
  for (size_t j = 0; j < vars.size(); j += 2, ++given)
    ASSERT_EQ(mdlsetsolvar(sol, vars[j], values[j]), 0);
  EXPECT_EQ(mdlgetsolsize(sol), given);
  ASSERT_EQ(mdladdmipsol_prob(prob, sol, "half"), 0);
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  const double start = incumbent_of("half");
  ASSERT_FALSE(std::isnan(start)) << log;
  EXPECT_GE(start, p0033_optimum - 1e-6);
  EXPECT_EQ(mdlgetmipstat_prob(prob), 6);
  EXPECT_TRUE(testsupport::close_rel(mdlgetobjval_prob(prob), p0033_optimum, 1e-6));
  EXPECT_EQ(mdldelsol(sol), 0);
}

TEST_F(MipStart, InfeasibleStartIsIgnored) {
  MDLsol sol = mdlnewsol_prob(prob);
  // Every column at 1 violates p0033's knapsack rows.
  for (MDLvar v : vars) ASSERT_EQ(mdlsetsolvar(sol, v, 1), 0);
  ASSERT_EQ(mdladdmipsol_prob(prob, sol, "ones"), 0);
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_TRUE(std::isnan(incumbent_of("ones"))) << log;
  EXPECT_TRUE(testsupport::close_rel(mdlgetobjval_prob(prob), p0033_optimum, 1e-6));
  EXPECT_EQ(mdldelsol(sol), 0);
}

TEST_F(MipStart, LoadedOptimumIsAccepted) {
  double obj = mdlgetobjval_prob(prob);
  // A fresh load, so that the engine holds no MIP solution to compare with.
  prob->status |= MDL_ST_REGEN;
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  for (size_t j = 0; j < vars.size(); ++j) ASSERT_EQ(prob->colvars[j], vars[j]);
  EXPECT_EQ(mdlloadmipsol_prob(prob, values.data(), static_cast<int>(values.size()), 1), 0);
  EXPECT_TRUE(testsupport::close_rel(mdlgetobjval_prob(prob), obj, 1e-9));
  for (size_t j = 0; j < vars.size(); ++j) EXPECT_NEAR(mdlgetsol(vars[j]), values[j], 1e-9);
  std::vector<double> ones(values.size(), 1.0);
  EXPECT_EQ(mdlloadmipsol_prob(prob, ones.data(), static_cast<int>(ones.size()), 1), 1);
}

}  // namespace
