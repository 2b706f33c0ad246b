/*
 * public_output_threads_test.cpp -- the engine's log through the message
 * callback and nothing on standard output at the quiet levels; problems
 * built and solved in two threads at once.
 */
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "kvtl.h"
#include "support/messages.h"

namespace {

constexpr int lp_optimal = 1, mip_optimal = 6;

// max a*x + y, x + y <= 4 + k, x in [0, 3], y >= 0, plus an integer twin
// max a*i + j (i, j integer), i + j <= 4 + k, i <= 3.  For a > 1 x runs to 3
// and y = 1 + k: value 3a + 1 + k; the same for the integer pair.
MDLprob build_pair(double a, int k, MDLvar *x) {
  MDLprob p = mdlnewprob(nullptr);
  if (p == nullptr) return nullptr;
  mdlsetmsglevel_prob(p, 0);
  *x = mdlnewvar_prob(p, "x", MDL_CONTINUOUS, 0, 3);
  MDLvar y = mdlnewvar_prob(p, "y", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLvar i = mdlnewvar_prob(p, "i", MDL_INTEGER, 0, 3);
  MDLvar j = mdlnewvar_prob(p, "j", MDL_INTEGER, 0, 100);
  MDLctr c = mdlnewctr_prob(p, "c", MDL_LEQ);
  mdladdterm(c, *x, 1);
  mdladdterm(c, y, 1);
  mdladdterm(c, nullptr, 4 + k);
  MDLctr d = mdlnewctr_prob(p, "d", MDL_LEQ);
  mdladdterm(d, i, 1);
  mdladdterm(d, j, 1);
  mdladdterm(d, nullptr, 4 + k);
  MDLctr obj = mdlnewctr_prob(p, "obj", MDL_NONBINDING);
  mdladdterm(obj, *x, a);
  mdladdterm(obj, y, 1);
  mdladdterm(obj, i, a);
  mdladdterm(obj, j, 1);
  mdlsetobj_prob(p, obj);
  return p;
}

class PublicOutput : public ::testing::Test {
 protected:
  void SetUp() override {
    mdlseterrctrl(0);
    errors.install();
  }
  void TearDown() override { mdldefcberr_prob(nullptr, nullptr, nullptr); }
  testsupport::error_log errors;
};

// At message level 3 the engine's log lines arrive through the problem's
// message callback, and nothing goes to standard output.
TEST_F(PublicOutput, EngineLogThroughCallbackAtLevelThree) {
  MDLvar x = nullptr;
  MDLprob p = build_pair(2, 0, &x);
  ASSERT_NE(p, nullptr);
  testsupport::output_log out;
  out.install(p);
  mdlsetmsglevel_prob(p, 3);
  ::testing::internal::CaptureStdout();
  ASSERT_EQ(mdlmaxim_prob(p, "g"), 0);
  const std::string printed = ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(printed, "");
  EXPECT_FALSE(out.text.empty());
  EXPECT_NE(out.text.find('\n'), std::string::npos);
  for (MDLprob from : out.probs) EXPECT_EQ(from, p);
  EXPECT_EQ(mdlgetmipstat_prob(p), mip_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(p), 14.0, 1e-6);  // 7 from each pair
  EXPECT_TRUE(errors.empty());
  mdldelprob_prob(p);
}

// At levels 0, 1 and 2 a solve prints nothing to standard output, with or
// without a message callback, and the callback receives no engine log.
TEST_F(PublicOutput, QuietLevelsPrintNothing) {
  for (int level = 0; level <= 2; ++level) {
    for (bool with_callback : {false, true}) {
      MDLvar x = nullptr;
      MDLprob p = build_pair(2, level, &x);
      ASSERT_NE(p, nullptr);
      testsupport::output_log out;
      if (with_callback) out.install(p);
      mdlsetmsglevel_prob(p, level);
      ::testing::internal::CaptureStdout();
      ASSERT_EQ(mdlmaxim_prob(p, "g"), 0);
      ASSERT_EQ(mdlmaxim_prob(p, ""), 0);
      ASSERT_EQ(mdllpoptimize_prob(p, ""), 0);
      EXPECT_EQ(mdlgetlpstat_prob(p), lp_optimal);
      const std::string printed = ::testing::internal::GetCapturedStdout();
      EXPECT_EQ(printed, "") << "level " << level;
      EXPECT_EQ(out.text, "") << "level " << level;
      // Relaxation: 2*3 + (1 + level) twice.
      EXPECT_NEAR(mdlgetobjval_prob(p), 2 * (7.0 + level), 1e-6);
      mdldelprob_prob(p);
    }
  }
  EXPECT_TRUE(errors.empty());
}

// Two threads build and solve their own problems at the same time, many
// times over, and every optimum is right.
TEST_F(PublicOutput, TwoThreadsSolveTheirOwnProblems) {
  constexpr int rounds = 25;
  struct outcome {
    std::vector<double> lp, mip, x;
    int failures = 0;
  };
  auto work = [](double a, outcome *res) {
    for (int k = 0; k < rounds; ++k) {
      MDLvar x = nullptr;
      MDLprob p = build_pair(a, k, &x);
      if (p == nullptr) {
        ++res->failures;
        continue;
      }
      testsupport::error_log own;
      own.install(p);
      if (mdlmaxim_prob(p, "") != 0) ++res->failures;
      res->lp.push_back(mdlgetobjval_prob(p));
      res->x.push_back(mdlgetsol(x));
      if (mdlmaxim_prob(p, "g") != 0) ++res->failures;
      res->mip.push_back(mdlgetobjval_prob(p));
      res->failures += static_cast<int>(own.reports.size());
      mdldelprob_prob(p);
    }
  };
  outcome r1, r2;
  std::thread t1(work, 2.0, &r1), t2(work, 5.0, &r2);
  t1.join();
  t2.join();
  for (auto [a, r] : {std::pair{2.0, &r1}, std::pair{5.0, &r2}}) {
    EXPECT_EQ(r->failures, 0);
    ASSERT_EQ(r->lp.size(), static_cast<size_t>(rounds));
    ASSERT_EQ(r->mip.size(), static_cast<size_t>(rounds));
    for (int k = 0; k < rounds; ++k) {
      const double one = 3 * a + 1 + k;
      EXPECT_NEAR(r->lp[k], 2 * one, 1e-6) << "a " << a << " round " << k;
      EXPECT_NEAR(r->mip[k], 2 * one, 1e-6) << "a " << a << " round " << k;
      EXPECT_NEAR(r->x[k], 3.0, 1e-7);
    }
  }
  EXPECT_TRUE(errors.empty());
}

}  // namespace
