/*
 * public_regressions_test.cpp -- end-to-end checks of behaviour that once
 * went wrong: a quadratic objective without rows, values after changes that
 * go to the engine directly, and solution files that are refused or hold
 * semi-continuous values.
 */
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "kvtl.h"
#include "support/messages.h"

namespace {

std::string temp_file(const char *stem) {
  return std::string("/tmp/kvtl_") + stem + "_" + std::to_string(getpid()) + ".slx";
}

// min a^2 - 4a, 0 <= a <= 10, no rows: a = 2, value -4.
TEST(Regressions, QuadraticObjectiveWithoutRows) {
  mdlseterrctrl(0);
  MDLprob p = mdlnewprob(nullptr);
  mdlsetmsglevel_prob(p, 1);
  MDLvar a = mdlnewvar_prob(p, "a", MDL_CONTINUOUS, 0, 10);
  MDLctr o = mdlnewctr_prob(p, "o", MDL_NONBINDING);
  mdladdterm(o, a, -4);
  mdladdqterm(o, a, a, 1);
  mdlsetobj_prob(p, o);
  for (const char *options : {"", "p", "b"}) {
    SCOPED_TRACE(options);
    ASSERT_EQ(mdlminim_prob(p, options), 0);
    EXPECT_EQ(mdlgetlpstat_prob(p), 1);
    EXPECT_NEAR(mdlgetobjval_prob(p), -4.0, 1e-6);
    EXPECT_NEAR(mdlgetsol(a), 2.0, 1e-5);
  }
  mdldelprob_prob(p);
}

// max 3x + 2y, x + y <= 4, 0 <= x <= 3: x = 3, y = 1, value 11; dual of c 2.
struct small_lp {
  MDLprob p;
  MDLvar x, y;
  MDLctr c;
  small_lp() {
    p = mdlnewprob(nullptr);
    mdlsetmsglevel_prob(p, 1);
    x = mdlnewvar_prob(p, "x", MDL_CONTINUOUS, 0, 3);
    y = mdlnewvar_prob(p, "y", MDL_CONTINUOUS, 0, MDL_INFINITY);
    c = mdlnewctr_prob(p, "c", MDL_LEQ);
    mdladdterm(c, x, 1);
    mdladdterm(c, y, 1);
    mdladdterm(c, nullptr, 4);
    MDLctr o = mdlnewctr_prob(p, "o", MDL_NONBINDING);
    mdladdterm(o, x, 3);
    mdladdterm(o, y, 2);
    mdlsetobj_prob(p, o);
  }
  ~small_lp() { mdldelprob_prob(p); }
};

// A bound change of a loaded problem goes to the engine at once and keeps
// the solution available: the values are those of the solve, whether or
// not they were read before the change; the next solve answers anew.
TEST(Regressions, SolutionStaysReadableAfterDirectBoundChange) {
  mdlseterrctrl(0);
  for (bool read_before : {false, true}) {
    SCOPED_TRACE(read_before);
    testsupport::error_log errors;
    small_lp m;
    errors.install(m.p);
    ASSERT_EQ(mdlmaxim_prob(m.p, ""), 0);
    if (read_before) EXPECT_NEAR(mdlgetsol(m.x), 3.0, 1e-9);
    ASSERT_EQ(mdlsetub(m.x, 2), 0);
    EXPECT_EQ(mdlgetprobstat_prob(m.p), 1 | 8);
    EXPECT_NEAR(mdlgetsol(m.x), 3.0, 1e-9);
    EXPECT_NEAR(mdlgetdual(m.c), 2.0, 1e-9);
    EXPECT_NEAR(mdlgetobjval_prob(m.p), 11.0, 1e-9);
    EXPECT_TRUE(errors.empty()) << errors.last().text;
    ASSERT_EQ(mdlmaxim_prob(m.p, ""), 0);
    EXPECT_NEAR(mdlgetsol(m.x), 2.0, 1e-9);
    EXPECT_NEAR(mdlgetobjval_prob(m.p), 10.0, 1e-9);
  }
}

TEST(Regressions, SolutionStaysReadableAfterDirectSenseChange) {
  mdlseterrctrl(0);
  testsupport::error_log errors;
  small_lp m;
  errors.install(m.p);
  ASSERT_EQ(mdlmaxim_prob(m.p, ""), 0);
  ASSERT_EQ(mdlsetsense_prob(m.p, 0), 0);
  EXPECT_NEAR(mdlgetdual(m.c), 2.0, 1e-9);
  EXPECT_NEAR(mdlgetvarrng(m.x, MDL_RNG_UPACT), mdlgetvarrng(m.x, MDL_RNG_UPACT), 0.0);
  EXPECT_TRUE(errors.empty()) << errors.last().text;
  ASSERT_EQ(mdlsolve_prob(m.p, ""), 0);   // now minimising: 0
  EXPECT_NEAR(mdlgetobjval_prob(m.p), 0.0, 1e-9);
}

// max a + b, a + 2b <= 5, a, b integers in [0, 4]: value 4.  A file that
// violates the row is refused and the solution found stays current.
TEST(Regressions, RefusedSolutionFileKeepsTheSolution) {
  mdlseterrctrl(0);
  testsupport::error_log errors;
  MDLprob p = mdlnewprob(nullptr);
  errors.install(p);
  mdlsetmsglevel_prob(p, 1);
  MDLvar a = mdlnewvar_prob(p, "a", MDL_INTEGER, 0, 4);
  MDLvar b = mdlnewvar_prob(p, "b", MDL_INTEGER, 0, 4);
  MDLctr c = mdlnewctr_prob(p, "c", MDL_LEQ);
  mdladdterm(c, a, 1);
  mdladdterm(c, b, 2);
  mdladdterm(c, nullptr, 5);
  MDLctr o = mdlnewctr_prob(p, "o", MDL_NONBINDING);
  mdladdterm(o, a, 1);
  mdladdterm(o, b, 1);
  mdlsetobj_prob(p, o);
  ASSERT_EQ(mdlmaxim_prob(p, "g"), 0);
  const std::string file = temp_file("refused");
  std::ofstream(file) << "NAME t\n C a 4\n C b 2\nENDATA\n";
  EXPECT_EQ(mdlreadslxsol_prob(p, file.c_str(), nullptr), 1);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().number, 1524);
  errors.reports.clear();
  EXPECT_NEAR(mdlgetsol(a) + mdlgetsol(b), 4.0, 1e-6);
  EXPECT_TRUE(errors.empty()) << errors.last().text;
  remove(file.c_str());
  mdldelprob_prob(p);
}

// Semi-continuous s in {0} or [2, 10], s <= 8: a file with s = 2.5 is a
// valid MIP solution (a value above the limit need not be integral), one
// with s = 1 is not.
TEST(Regressions, SolutionFileWithSemiContinuousValue) {
  mdlseterrctrl(0);
  testsupport::error_log errors;
  MDLprob p = mdlnewprob(nullptr);
  errors.install(p);
  mdlsetmsglevel_prob(p, 1);
  MDLvar s = mdlnewvar_prob(p, "s", MDL_SEMICONT, 0, 10);
  mdlsetlim(s, 2);
  MDLctr c = mdlnewctr_prob(p, "c", MDL_LEQ);
  mdladdterm(c, s, 1);
  mdladdterm(c, nullptr, 8);
  MDLctr o = mdlnewctr_prob(p, "o", MDL_NONBINDING);
  mdladdterm(o, s, 1);
  mdlsetobj_prob(p, o);
  ASSERT_EQ(mdlloadmat_prob(p), 0);
  const std::string file = temp_file("semicont");
  std::ofstream(file) << "NAME t\n C s 2.5\nENDATA\n";
  EXPECT_EQ(mdlreadslxsol_prob(p, file.c_str(), nullptr), 0);
  EXPECT_TRUE(errors.empty()) << errors.last().text;
  EXPECT_NEAR(mdlgetsol(s), 2.5, 1e-9);
  std::ofstream(file) << "NAME t\n C s 1\nENDATA\n";
  EXPECT_EQ(mdlreadslxsol_prob(p, file.c_str(), nullptr), 1);
  remove(file.c_str());
  mdldelprob_prob(p);
}

}  // namespace
