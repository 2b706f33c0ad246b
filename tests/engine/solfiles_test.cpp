/*
 * solfiles_test.cpp -- solution files: written contents, round trips that
 * make a read solution current, and failures.
 */
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "engine_test.h"

namespace {

dense_model small_max() {
  return {"LL", {4, 7}, {}, {3, 2}, {0, 0}, {3, KVSL_INFINITY}, {{1, 1}, {1, 3}}};
}

std::string slurp(const std::string &path) {
  std::ifstream in(path);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

class SolFileTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    char tmpl[] = "/tmp/kvsl_solfiles_XXXXXX";
    dir = mkdtemp(tmpl);
  }
  void TearDown() override {
    for (const char *f : {"/a.txt", "/a.prt", "/a.slx", "/a.sol", "/b.slx", "/prob.sol"})
      unlink((dir + f).c_str());
    rmdir(dir.c_str());
    EngineTest::TearDown();
  }
  std::string dir;
};

TEST_F(SolFileTest, TextFilesOfAnLpSolution) {
  ASSERT_EQ(load_lp(p, small_max()), 0);
  const char names[] = "x\0y";
  ASSERT_EQ(KVSLaddnames(p, 2, names, 0, 1), 0);
  EXPECT_EQ(KVSLwritesol(p, (dir + "/a.txt").c_str(), ""), KVSL_ERR_NOSOLUTION);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  ASSERT_EQ(KVSLwritesol(p, (dir + "/a.txt").c_str(), ""), 0);
  EXPECT_EQ(slurp(dir + "/a.txt"),
            "# kvsl solution of test\n"
            "status,1,2,lp,11\n"
            "C,0,x,3,1\n"
            "C,1,y,1,0\n"
            "R,0,R0,L,4,0,2\n"
            "R,1,R1,L,6,1,0\n");
  ASSERT_EQ(KVSLwriteprtsol(p, (dir + "/a.prt").c_str(), ""), 0);
  std::string prt = slurp(dir + "/a.prt");
  EXPECT_NE(prt.find("Objective  11\n"), std::string::npos) << prt;
  ASSERT_EQ(KVSLwriteslxsol(p, (dir + "/a.slx").c_str(), ""), 0);
  EXPECT_EQ(slurp(dir + "/a.slx"), "NAME test\n  C x 3\n  C y 1\nENDATA\n");
}

TEST_F(SolFileTest, BinaryRoundTripRestoresTheSolution) {
  ASSERT_EQ(load_lp(p, small_max()), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  ASSERT_EQ(KVSLsetprobname(p, (dir + "/prob").c_str()), 0);
  ASSERT_EQ(KVSLwritebinsol(p, nullptr, ""), 0);  // the problem name with .sol
  ASSERT_EQ(load_lp(p, small_max()), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_PRESOLVESTATE) & KVSL_SOLUTION_HELD, 0);
  ASSERT_EQ(KVSLreadbinsol(p, "", ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_PRESOLVESTATE) & KVSL_SOLUTION_HELD, KVSL_SOLUTION_HELD);
  EXPECT_EQ(dbl_attr(p, KVSL_ATTR_LPOBJVAL), 11.0);
  double x[2], dual[2];
  ASSERT_EQ(KVSLgetlpsol(p, x, nullptr, dual, nullptr), 0);
  EXPECT_EQ(x[0], 3.0);
  EXPECT_EQ(dual[0], 2.0);
  dense_model other{"L", {1}, {}, {1}, {}, {}, {{1}}};
  ASSERT_EQ(load_lp(p, other), 0);
  EXPECT_EQ(KVSLreadbinsol(p, "", ""), KVSL_ERR_BADARG);  // another shape
  EXPECT_EQ(KVSLreadbinsol(p, (dir + "/missing.sol").c_str(), ""), KVSL_ERR_FILE);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_FILE);
}

// max 5x + 4y, 6x + 4y <= 24, x + 2y <= 6, integers: the file's (3, 1) is
// a solution (19); (3, 1.5) is not integral.
TEST_F(SolFileTest, SlxReadBecomesTheMipSolution) {
  dense_model m{"LL", {24, 6}, {}, {5, 4}, {}, {}, {{6, 4}, {1, 2}}};
  ASSERT_EQ(load_global(p, m, "II", {0, 1}), 0);
  ASSERT_EQ(KVSLchgobjsense(p, -1), 0);
  std::ofstream(dir + "/b.slx") << "NAME t\n  C C0 3\n  C C1 1\nENDATA\n";
  ASSERT_EQ(KVSLreadslxsol(p, (dir + "/b.slx").c_str(), ""), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_SOLUTION);
  EXPECT_EQ(dbl_attr(p, KVSL_ATTR_MIPOBJVAL), 19.0);
  double slack[2];
  ASSERT_EQ(KVSLgetmipsol(p, nullptr, slack), 0);
  EXPECT_EQ(slack[1], 1.0);
  std::ofstream(dir + "/b.slx") << "NAME t\n  C C0 3\n  C C1 1.5\nENDATA\n";
  EXPECT_EQ(KVSLreadslxsol(p, (dir + "/b.slx").c_str(), ""), KVSL_ERR_BADARG);
  std::ofstream(dir + "/b.slx") << "NAME t\n  C nosuch 3\nENDATA\n";
  EXPECT_EQ(KVSLreadslxsol(p, (dir + "/b.slx").c_str(), ""), KVSL_ERR_FILE);
}

TEST_F(SolFileTest, UnwritablePath) {
  ASSERT_EQ(load_lp(p, small_max()), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  EXPECT_EQ(KVSLwritesol(p, "/nonexistent-dir/x.txt", ""), KVSL_ERR_FILE);
  EXPECT_EQ(KVSLwritebinsol(p, "", ""), KVSL_ERR_BADARG);  // no name, no problem name
}

}  // namespace
