/*
 * public_results_test.cpp -- ranging and solution files of small models
 * built through the public interface, solved by the real engine and
 * checked against values worked out by hand.
 */
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kvtl.h"
#include "support/messages.h"
#include "support/public_model.h"

namespace {

constexpr int lp_optimal = 1, lp_unfinished = 4;
constexpr int mip_solution = 4;
constexpr int st_loaded = 1, st_solution = 8;
constexpr double tol = 1e-7;
// Cost ranges end where a reduced cost changes sign, as the backend sees it:
// within its dual feasibility tolerance (1e-7) of the exact end.
constexpr double cost_tol = 1e-6;
constexpr double inf = MDL_INFINITY;

using testsupport::objective;
using testsupport::row;
using testsupport::terms;

// Whole text of a file ("" when it cannot be read).
std::string slurp(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

// The comma-separated fields of the first line of text starting with prefix.
std::vector<std::string> csv_line(const std::string &text, const std::string &prefix) {
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) {
    if (line.rfind(prefix, 0) != 0) continue;
    std::vector<std::string> fields;
    std::istringstream ls(line);
    std::string f;
    while (std::getline(ls, f, ',')) fields.push_back(f);
    return fields;
  }
  return {};
}

class PublicResults : public testsupport::public_problem_test {
 protected:
  void SetUp() override {
    public_problem_test::SetUp();
    dir = "/tmp/kvtl_e2e_results_" + std::to_string(getpid()) + "_" +
          ::testing::UnitTest::GetInstance()->current_test_info()->name();
  }
  void TearDown() override {
    public_problem_test::TearDown();
    for (const auto &f : files) std::remove(f.c_str());
  }
  // A file name for this test, removed afterwards.
  std::string file(const std::string &ext) {
    files.push_back(dir + ext);
    return files.back();
  }
  std::string dir;
  std::vector<std::string> files;
};

// Ranging of the small LP at x = 3 (non-basic at its upper bound), y = 1
// and the slack of c2 basic, c1 binding.
//  x: moving x with c1 binding makes y = 4 - x and c2's slack 2x - 3, so x
//     may go from 1.5 (c2's slack reaches 0) to 4 (y reaches 0); per unit
//     up the objective gains the reduced cost 1, down it loses 1.  Its cost
//     may drop to 3 - 1 = 2 and rise without limit before the basis changes.
//  y: basic, so its value range is its value and the per-unit changes are
//     0; its cost c keeps the basis while x's reduced cost 3 - c >= 0 and
//     c1's dual c >= 0: [0, 3].
//  c1: y = b - 3 >= 0 and c2's slack 15 - 3b >= 0: rhs in [3, 5], the dual
//     2 per unit up, -2 down.
//  c2: does not bind: from its activity 6 upwards, changes 0.
TEST_F(PublicResults, RangingByHand) {
  build_small();
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  ASSERT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetvarrng(x, MDL_RNG_UPACT), 4.0, tol);
  EXPECT_NEAR(mdlgetvarrng(x, MDL_RNG_LOACT), 1.5, tol);
  EXPECT_NEAR(mdlgetvarrng(x, MDL_RNG_UUP), 1.0, tol);
  EXPECT_NEAR(mdlgetvarrng(x, MDL_RNG_UDN), -1.0, tol);
  EXPECT_EQ(mdlgetvarrng(x, MDL_RNG_UCOST), inf);
  EXPECT_NEAR(mdlgetvarrng(x, MDL_RNG_LCOST), 2.0, cost_tol);

  EXPECT_NEAR(mdlgetvarrng(y, MDL_RNG_UPACT), 1.0, tol);
  EXPECT_NEAR(mdlgetvarrng(y, MDL_RNG_LOACT), 1.0, tol);
  EXPECT_NEAR(mdlgetvarrng(y, MDL_RNG_UUP), 0.0, tol);
  EXPECT_NEAR(mdlgetvarrng(y, MDL_RNG_UDN), 0.0, tol);
  EXPECT_NEAR(mdlgetvarrng(y, MDL_RNG_UCOST), 3.0, cost_tol);
  EXPECT_NEAR(mdlgetvarrng(y, MDL_RNG_LCOST), 0.0, cost_tol);

  EXPECT_NEAR(mdlgetctrrng(c1, MDL_RNG_UPACT), 5.0, tol);
  EXPECT_NEAR(mdlgetctrrng(c1, MDL_RNG_LOACT), 3.0, tol);
  EXPECT_NEAR(mdlgetctrrng(c1, MDL_RNG_UUP), 2.0, tol);
  EXPECT_NEAR(mdlgetctrrng(c1, MDL_RNG_UDN), -2.0, tol);

  EXPECT_EQ(mdlgetctrrng(c2, MDL_RNG_UPACT), inf);
  EXPECT_NEAR(mdlgetctrrng(c2, MDL_RNG_LOACT), 6.0, tol);
  EXPECT_NEAR(mdlgetctrrng(c2, MDL_RNG_UUP), 0.0, tol);
  EXPECT_NEAR(mdlgetctrrng(c2, MDL_RNG_UDN), 0.0, tol);

  // Codes outside the tables answer 0 silently.
  EXPECT_EQ(mdlgetvarrng(x, 6), 0.0);
  EXPECT_EQ(mdlgetctrrng(c1, MDL_RNG_UCOST), 0.0);
  EXPECT_EQ(mdlgetvarrng(x, -1), 0.0);
  EXPECT_TRUE(errors.empty());

  // After a bound change and a new solve the ranging is computed afresh:
  // with x <= 2 the optimum is x = 2, y = 2, c2's activity 8 (its new lower
  // end); x still moves between 1.5 and 4 with c1 binding.
  ASSERT_EQ(mdlsetub(x, 2), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetsol(y), 2.0, tol);
  EXPECT_NEAR(mdlgetctrrng(c2, MDL_RNG_LOACT), 8.0, tol);
  EXPECT_NEAR(mdlgetvarrng(x, MDL_RNG_LOACT), 1.5, tol);
  EXPECT_NEAR(mdlgetvarrng(x, MDL_RNG_UPACT), 4.0, tol);
  EXPECT_TRUE(errors.empty());
}

// Minimising, the per-unit changes follow the problem's own sense:
// min -3x - 2y has reduced cost -1 for x and dual -2 for c1.
TEST_F(PublicResults, RangingWhenMinimising) {
  build_small(-3, -2);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), -11.0, tol);
  EXPECT_NEAR(mdlgetvarrng(x, MDL_RNG_UUP), -1.0, tol);
  EXPECT_NEAR(mdlgetvarrng(x, MDL_RNG_UDN), 1.0, tol);
  EXPECT_NEAR(mdlgetctrrng(c1, MDL_RNG_UUP), -2.0, tol);
  EXPECT_NEAR(mdlgetctrrng(c1, MDL_RNG_UDN), 2.0, tol);
  EXPECT_NEAR(mdlgetctrrng(c1, MDL_RNG_UPACT), 5.0, tol);
  EXPECT_NEAR(mdlgetctrrng(c1, MDL_RNG_LOACT), 3.0, tol);
  EXPECT_TRUE(errors.empty());
}

// The four writers write files the engine documents; the comma-separated
// one is parsed back.
TEST_F(PublicResults, WritersWriteTheSolution) {
  build_small();
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  const std::string txt = file(".txt"), prt = file(".prt"), slx = file(".slx"),
                    sol = file(".sol");
  ASSERT_EQ(mdlwritesol_prob(prob, txt.c_str(), nullptr), 0);
  ASSERT_EQ(mdlwriteprtsol_prob(prob, prt.c_str(), ""), 0);
  ASSERT_EQ(mdlwriteslxsol_prob(prob, slx.c_str(), nullptr), 0);
  ASSERT_EQ(mdlwritebinsol_prob(prob, sol.c_str(), nullptr), 0);
  EXPECT_TRUE(errors.empty());

  const std::string text = slurp(txt);
  auto status = csv_line(text, "status,");
  ASSERT_EQ(status.size(), 5u) << text;
  EXPECT_EQ(status[1], "1");
  EXPECT_EQ(status[3], "lp");
  EXPECT_NEAR(std::stod(status[4]), 11.0, tol);
  auto colx = csv_line(text, "C,0,");
  ASSERT_EQ(colx.size(), 5u) << text;
  EXPECT_EQ(colx[2], "x");
  EXPECT_NEAR(std::stod(colx[3]), 3.0, tol);
  EXPECT_NEAR(std::stod(colx[4]), 1.0, tol);
  auto rows = csv_line(text, "R,");
  ASSERT_EQ(rows.size(), 7u) << text;
  EXPECT_FALSE(slurp(prt).empty());
  EXPECT_NE(slurp(slx).find("x 3"), std::string::npos) << slurp(slx);
  EXPECT_GT(slurp(sol).size(), 8u);
  EXPECT_EQ(slurp(sol).substr(0, 8), "KVSLSOL1");
}

// A failing writer (a directory that does not exist) reports 1524.
TEST_F(PublicResults, WriterFailure) {
  build_small();
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_EQ(mdlwritesol_prob(prob, "/nonexistent-dir/x.txt", nullptr), 1);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().number, 1524);
  EXPECT_EQ(errors.last().text,
            "(writesol) Korvex-Optimizer error 7 during 'writesol'. Return value: 7.");
}

// Names off: no names reach the engine, which calls the columns C0, C1.
TEST_F(PublicResults, NamesOffWriteEngineNames) {
  ASSERT_EQ(mdlsetdictsize_prob(prob, 0, 0), 0);
  build_small();
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  const std::string slx = file(".slx");
  ASSERT_EQ(mdlwriteslxsol_prob(prob, slx.c_str(), nullptr), 0);
  const std::string text = slurp(slx);
  EXPECT_NE(text.find("C C0 3"), std::string::npos) << text;
  EXPECT_NE(text.find("C C1 1"), std::string::npos) << text;
  EXPECT_EQ(text.find(" x "), std::string::npos) << text;
}

// A binary solution file read back becomes the current solution again,
// after the problem was solved to another optimum in between (x <= 2
// gives x = 2, y = 2, value 10).
TEST_F(PublicResults, BinarySolutionReadBack) {
  build_small();
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  const std::string sol = file(".sol");
  ASSERT_EQ(mdlwritebinsol_prob(prob, sol.c_str(), nullptr), 0);
  ASSERT_EQ(mdlsetub(x, 2), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  ASSERT_NEAR(mdlgetsol(x), 2.0, tol);
  ASSERT_NEAR(mdlgetobjval_prob(prob), 10.0, tol);

  ASSERT_EQ(mdlreadbinsol_prob(prob, sol.c_str(), nullptr), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded | st_solution);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_optimal);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 11.0, tol);
  EXPECT_NEAR(mdlgetsol(x), 3.0, tol);
  EXPECT_NEAR(mdlgetsol(y), 1.0, tol);
  EXPECT_NEAR(mdlgetdual(c1), 2.0, tol);
  EXPECT_NEAR(mdlgetslack(c2), 3.0, tol);
  EXPECT_NEAR(mdlgetrcost(x), 1.0, tol);
  EXPECT_TRUE(errors.empty());
}

// Values by name read from a file become the current LP solution: x = 1,
// y = 2 (feasible) gives value 3 + 4 = 7, slacks 4 - 3 = 1 and
// 9 - 7 = 2, and no duals.
TEST_F(PublicResults, SlxSolutionReadIntoLinearProgram) {
  build_small();
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  const std::string slx = file(".slx");
  {
    std::ofstream out(slx);
    out << "NAME test\n  C x 1\n  C y 2\nENDATA\n";
  }
  ASSERT_EQ(mdlreadslxsol_prob(prob, slx.c_str(), nullptr), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded | st_solution);
  EXPECT_EQ(mdlgetlpstat_prob(prob), lp_unfinished);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 7.0, tol);
  EXPECT_NEAR(mdlgetsol(x), 1.0, tol);
  EXPECT_NEAR(mdlgetsol(y), 2.0, tol);
  EXPECT_NEAR(mdlgetslack(c1), 1.0, tol);
  EXPECT_NEAR(mdlgetslack(c2), 2.0, tol);
  EXPECT_NEAR(mdlgetact(c2), 7.0, tol);
  EXPECT_EQ(mdlgetdual(c1), 0.0);
  EXPECT_TRUE(errors.empty());
}

// With integer columns a read solution becomes the MIP solution (status 4)
// when it is feasible; an infeasible one is refused with 1524.
//   max a + b, a + 2b <= 5, a, b integer in [0, 4]: a = 1, b = 2 gives 3.
TEST_F(PublicResults, SlxSolutionReadIntoMip) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_INTEGER, 0, 4);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_INTEGER, 0, 4);
  MDLctr cap = row(prob, "cap", MDL_LEQ, {{a, 1}, {b, 2}}, 5);
  objective(prob, {{a, 1}, {b, 1}});
  ASSERT_EQ(mdlmaxim_prob(prob, "g"), 0);
  ASSERT_NEAR(mdlgetobjval_prob(prob), 4.0, tol);  // a = 4, b = 0 or a = 3, b = 1
  const std::string good = file(".good.slx"), bad = file(".bad.slx");
  {
    std::ofstream(good) << "NAME t\n  C a 1\n  C b 2\nENDATA\n";
    std::ofstream(bad) << "NAME t\n  C a 4\n  C b 2\nENDATA\n";
  }
  ASSERT_EQ(mdlreadslxsol_prob(prob, good.c_str(), nullptr), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdlgetmipstat_prob(prob), mip_solution);
  EXPECT_EQ(mdlgetprobstat_prob(prob), st_loaded | st_solution);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 3.0, tol);
  EXPECT_NEAR(mdlgetsol(a), 1.0, tol);
  EXPECT_NEAR(mdlgetsol(b), 2.0, tol);
  EXPECT_NEAR(mdlgetslack(cap), 0.0, tol);
  EXPECT_EQ(mdlgetdual(cap), 0.0);

  EXPECT_EQ(mdlreadslxsol_prob(prob, bad.c_str(), nullptr), 1);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().number, 1524);
  EXPECT_EQ(errors.last().text,
            "(readslxsol) Korvex-Optimizer error 3 during 'readslxsol'. Return value: 3.");
}

}  // namespace
