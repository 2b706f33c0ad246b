/*
 * entities_test.cpp -- global entities, special rows and directives end to
 * end: models built through the public interface and searched by the real
 * engine, each feature where it binds and where it does not.  Optima are
 * worked out by hand in the comments (the knapsack's was confirmed by an
 * independent binary formulation solved with the cbc command line).
 */
#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <utility>

#include "kvtl.h"
#include "kvsl.h"
#include "support/messages.h"

namespace {

using terms = std::initializer_list<std::pair<MDLvar, double>>;

class EntitiesE2E : public ::testing::Test {
 protected:
  void SetUp() override {
    mdlseterrctrl(0);
    errors.install();
    prob = mdlnewprob(nullptr);
    ASSERT_NE(prob, nullptr);
    mdlsetmsglevel_prob(prob, 1);
  }
  void TearDown() override {
    mdldelprob_prob(prob);
    mdldefcberr_prob(nullptr, nullptr, nullptr);
  }
  MDLvar var(const char *name, int type, double lb, double ub) {
    return mdlnewvar_prob(prob, name, type, lb, ub);
  }
  // A row  sum coef * var  type  rhs.
  MDLctr row(const char *name, int type, double rhs, terms t) {
    MDLctr c = mdlnewctr_prob(prob, name, type);
    for (auto [v, coef] : t) mdladdterm(c, v, coef);
    if (rhs != 0.0) mdladdterm(c, nullptr, rhs);
    return c;
  }
  void objective(terms t) { mdlsetobj_prob(prob, row("cost", MDL_NONBINDING, 0.0, t)); }
  // Search; expect the optimum with the given objective value.
  void optimum(bool maximise, double value) {
    ASSERT_EQ(maximise ? mdlmaxim_prob(prob, "g") : mdlminim_prob(prob, "g"), 0);
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(mdlgetmipstat_prob(prob), KVSL_MIP_OPTIMAL);
    EXPECT_NEAR(mdlgetobjval_prob(prob), value, 1e-6);
  }
  testsupport::error_log errors;
  MDLprob prob = nullptr;
};

// min c x + 3y, x + y >= 1, x semi-continuous: 0 or within [2, 10].
TEST_F(EntitiesE2E, SemiContinuousOptimumAtZero) {
  MDLvar x = var("x", MDL_SEMICONT, 0, 10), y = var("y", MDL_CONTINUOUS, 0, 10);
  mdlsetlim(x, 2);
  row("cover", MDL_GEQ, 1, {{x, 1}, {y, 1}});
  objective({{x, 2}, {y, 3}});  // x = 2 costs 4, y = 1 costs 3
  optimum(false, 3.0);
  EXPECT_EQ(mdlgetsol(x), 0.0);
  EXPECT_NEAR(mdlgetsol(y), 1.0, 1e-7);
}

TEST_F(EntitiesE2E, SemiContinuousOptimumWithinItsRange) {
  MDLvar x = var("x", MDL_SEMICONT, 0, 10), y = var("y", MDL_CONTINUOUS, 0, 10);
  mdlsetlim(x, 2);
  row("cover", MDL_GEQ, 1, {{x, 1}, {y, 1}});
  objective({{x, 1}, {y, 3}});  // x = 2 costs 2 (the LP's x = 1 is out)
  optimum(false, 2.0);
  EXPECT_NEAR(mdlgetsol(x), 2.0, 1e-7);
  mdlsetlim(x, 0.5);  // a limit that does not bind: x = 1
  optimum(false, 1.0);
  EXPECT_NEAR(mdlgetsol(x), 1.0, 1e-7);
}

// min x + 4y, x + y >= 1: x semi-integer from 2.5 takes 3.
TEST_F(EntitiesE2E, SemiContinuousInteger) {
  MDLvar x = var("x", MDL_SEMIINT, 0, 10), y = var("y", MDL_CONTINUOUS, 0, 10);
  mdlsetlim(x, 2.5);
  row("cover", MDL_GEQ, 1, {{x, 1}, {y, 1}});
  objective({{x, 1}, {y, 4}});
  optimum(false, 3.0);
  EXPECT_EQ(mdlgetsol(x), 3.0);
  mdlsetlim(x, 1);  // not binding: x = 1
  optimum(false, 1.0);
}

// max x, 3x <= 7: a partial integer below its limit 5 is integer (2); with
// limit 2 it is continuous from 2 up (7/3).
TEST_F(EntitiesE2E, PartialInteger) {
  MDLvar x = var("x", MDL_PARTINT, 0, 10);
  mdlsetlim(x, 5);
  row("cap", MDL_LEQ, 7, {{x, 3}});
  objective({{x, 1}});
  optimum(true, 2.0);
  EXPECT_EQ(mdlgetsol(x), 2.0);
  mdlsetlim(x, 2);
  optimum(true, 7.0 / 3.0);
}

// Piecewise linear cost through (0,0), (2,4), (4,6), (6,7) with an SOS2:
// min f, x >= 3: f(3) = 5 (the LP relaxation mixes the ends: 3.5).
TEST_F(EntitiesE2E, SosTwoPiecewiseLinearCost) {
  const double px[4] = {0, 2, 4, 6}, pf[4] = {0, 4, 6, 7};
  MDLvar l[4];
  MDLctr conv = mdlnewctr_prob(prob, "conv", MDL_EQ);
  MDLctr defx = mdlnewctr_prob(prob, "defx", MDL_EQ);
  MDLctr deff = mdlnewctr_prob(prob, "deff", MDL_EQ);
  MDLvar x = var("x", MDL_CONTINUOUS, 0, MDL_INFINITY), f = var("f", MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLsos s = mdlnewsos_prob(prob, "curve", 1);
  char name[8];
  for (int k = 0; k < 4; ++k) {
    snprintf(name, sizeof name, "l%d", k);
    l[k] = var(name, MDL_CONTINUOUS, 0, MDL_INFINITY);
    mdladdterm(conv, l[k], 1);
    mdladdterm(defx, l[k], px[k]);
    mdladdterm(deff, l[k], pf[k]);
    mdladdsosel(s, l[k], k + 1);
  }
  mdladdterm(conv, nullptr, 1);
  mdladdterm(defx, x, -1);
  mdladdterm(deff, f, -1);
  row("need", MDL_GEQ, 3, {{x, 1}});
  objective({{f, 1}});
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 3.5, 1e-7);
  optimum(false, 5.0);
  EXPECT_NEAR(mdlgetsol(x), 3.0, 1e-7);
  EXPECT_NEAR(mdlgetsol(l[1]), 0.5, 1e-7);
  EXPECT_NEAR(mdlgetsol(l[2]), 0.5, 1e-7);
  EXPECT_EQ(mdlgetsol(l[0]), 0.0);
  EXPECT_EQ(mdlgetsol(l[3]), 0.0);
  // A convex curve (0, 1, 3, 6 at 0, 2, 4, 6): the set does not bind, f(3) = 2.
  mdladdterm(deff, l[1], -3);
  mdladdterm(deff, l[2], -3);
  mdladdterm(deff, l[3], -1);
  optimum(false, 2.0);
}

// max 3a + 2b + 4c, 2a + 2b + 3c <= 4, at most one of them (SOS1): c = 1.
TEST_F(EntitiesE2E, SosOneChoice) {
  MDLvar a = var("a", MDL_CONTINUOUS, 0, 1), b = var("b", MDL_CONTINUOUS, 0, 1),
         c = var("c", MDL_CONTINUOUS, 0, 1);
  row("cap", MDL_LEQ, 4, {{a, 2}, {b, 2}, {c, 3}});
  objective({{a, 3}, {b, 2}, {c, 4}});
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);  // without the set: a = 1, c = 2/3
  EXPECT_NEAR(mdlgetobjval_prob(prob), 17.0 / 3.0, 1e-7);
  MDLsos s = mdlnewsos_prob(prob, "one", 0);
  mdladdsosel(s, a, 1);
  mdladdsosel(s, b, 2);
  mdladdsosel(s, c, 3);
  optimum(true, 4.0);
  EXPECT_EQ(mdlgetsol(a), 0.0);
  EXPECT_EQ(mdlgetsol(b), 0.0);
  EXPECT_NEAR(mdlgetsol(c), 1.0, 1e-7);
  row("one", MDL_LEQ, 1, {{a, 1}, {b, 1}, {c, 1}});  // the set no longer binds
  optimum(true, 4.0);
}

// x free, z binary: x >= 2; "x >= 5" when z = 1; min x - 4z: z = 1, x = 5.
TEST_F(EntitiesE2E, IndicatorOnOneWithFreeVariable) {
  MDLvar x = var("x", MDL_CONTINUOUS, -MDL_INFINITY, MDL_INFINITY), z = var("z", MDL_BINARY, 0, 1);
  row("low", MDL_GEQ, 2, {{x, 1}});
  MDLctr high = row("high", MDL_GEQ, 5, {{x, 1}});
  ASSERT_EQ(mdlsetindicator(high, 1, z), 0);
  objective({{x, 1}, {z, -4}});
  optimum(false, 1.0);
  EXPECT_NEAR(mdlgetsol(x), 5.0, 1e-7);
  EXPECT_EQ(mdlgetsol(z), 1.0);
  objective({{x, 1}, {z, -2}});  // z = 1 now costs 3 > 2: the row is released
  optimum(false, 2.0);
  EXPECT_NEAR(mdlgetsol(x), 2.0, 1e-7);
  EXPECT_EQ(mdlgetsol(z), 0.0);
}

// x free, z binary: x <= 10; "x <= 3" when z = 0; max x - c z.
TEST_F(EntitiesE2E, IndicatorOnZero) {
  MDLvar x = var("x", MDL_CONTINUOUS, -MDL_INFINITY, MDL_INFINITY), z = var("z", MDL_BINARY, 0, 1);
  row("cap", MDL_LEQ, 10, {{x, 1}});
  MDLctr low = row("low", MDL_LEQ, 3, {{x, 1}});
  ASSERT_EQ(mdlsetindicator(low, -1, z), 0);
  objective({{x, 1}, {z, -4}});
  optimum(true, 6.0);  // z = 1: 10 - 4
  EXPECT_NEAR(mdlgetsol(x), 10.0, 1e-7);
  objective({{x, 1}, {z, -8}});
  optimum(true, 3.0);  // z = 0: the row binds
  EXPECT_NEAR(mdlgetsol(x), 3.0, 1e-7);
  EXPECT_EQ(mdlgetsol(z), 0.0);
}

// Bounded variables and a range row: 4 <= x + y <= 6 when z = 1.
TEST_F(EntitiesE2E, IndicatorRangeRow) {
  MDLvar x = var("x", MDL_CONTINUOUS, 0, 5), y = var("y", MDL_CONTINUOUS, 0, 5),
         z = var("z", MDL_BINARY, 0, 1);
  MDLctr band = row("band", MDL_LEQ, 0, {{x, 1}, {y, 1}});
  mdlsetrange(band, 4, 6);
  ASSERT_EQ(mdlsetindicator(band, 1, z), 0);
  objective({{x, 1}, {y, 1}, {z, 3}});
  optimum(true, 10.0);  // z = 0: 10; z = 1: 6 + 3
  objective({{x, 1}, {y, 1}, {z, 5}});
  optimum(true, 11.0);  // z = 1: 6 + 5
  EXPECT_NEAR(mdlgetsol(x) + mdlgetsol(y), 6.0, 1e-7);
}

// max x + y, x, y integer in [0, 3]; the delayed row x + y <= 4 cuts the LP
// optimum (3, 3) off.
TEST_F(EntitiesE2E, DelayedRows) {
  MDLvar x = var("x", MDL_INTEGER, 0, 3), y = var("y", MDL_INTEGER, 0, 3);
  MDLctr lazy = row("lazy", MDL_LEQ, 4, {{x, 1}, {y, 1}});
  ASSERT_EQ(mdlsetdelayed(lazy, 1), 0);
  objective({{x, 1}, {y, 1}});
  optimum(true, 4.0);
  EXPECT_LE(mdlgetsol(x) + mdlgetsol(y), 4.0 + 1e-9);
  mdladdterm(lazy, nullptr, 6);  // x + y <= 10: not binding
  optimum(true, 6.0);
}

// max 5x + 4y, 6x + 4y <= 24, x + 2y <= 6, integers: 20 at (4, 0).  The
// model cut x + y <= 4 holds for every integer solution.
TEST_F(EntitiesE2E, ModelCuts) {
  MDLvar x = var("x", MDL_INTEGER, 0, 100), y = var("y", MDL_INTEGER, 0, 100);
  row("a", MDL_LEQ, 24, {{x, 6}, {y, 4}});
  row("b", MDL_LEQ, 6, {{x, 1}, {y, 2}});
  MDLctr cut = row("cut", MDL_LEQ, 4, {{x, 1}, {y, 1}});
  ASSERT_EQ(mdlsetmodcut(cut, 1), 0);
  objective({{x, 5}, {y, 4}});
  optimum(true, 20.0);
  EXPECT_EQ(mdlgetsol(x), 4.0);
  mdladdterm(cut, nullptr, 6);  // x + y <= 10
  optimum(true, 20.0);
}

TEST_F(EntitiesE2E, FixGlobalsKeepsTheIndicatorReleased) {
  MDLvar x = var("x", MDL_CONTINUOUS, -MDL_INFINITY, MDL_INFINITY), z = var("z", MDL_BINARY, 0, 1);
  row("low", MDL_GEQ, 2, {{x, 1}});
  MDLctr high = row("high", MDL_GEQ, 5, {{x, 1}});
  mdlsetindicator(high, 1, z);
  objective({{x, 1}, {z, -2}});
  optimum(false, 2.0);
  ASSERT_EQ(mdlfixglobals_prob(prob, 1), 0);
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), KVSL_LP_OPTIMAL);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 2.0, 1e-7);
}

// A knapsack with three weight rows over 16 binaries whose search order
// follows the directives; its optimum 371 was found by the cbc command line
// on the same data (several variables are fractional at once, so the
// priorities choose among them).
class DirectivesE2E : public EntitiesE2E {
 protected:
  const double value[16] = {43, 42, 59, 51, 42, 55, 46, 48, 55, 48, 51, 47, 41, 39, 31, 32};
  const double weight[3][16] = {{48, 55, 49, 48, 52, 57, 32, 31, 52, 50, 60, 59, 31, 26, 48, 39}, {29, 25, 54, 60, 22, 58, 45, 48, 59, 30, 59, 20, 53, 24, 23, 22}, {32, 35, 58, 21, 49, 40, 48, 57, 32, 53, 34, 60, 38, 51, 20, 25}};
  const double capacity[3] = {368, 315, 326};
  MDLvar item[16];
  void build() {
    MDLctr cap[3];
    for (int r = 0; r < 3; ++r) {
      cap[r] = mdlnewctr_prob(prob, nullptr, MDL_LEQ);
      mdladdterm(cap[r], nullptr, capacity[r]);
    }
    MDLctr total = mdlnewctr_prob(prob, "total", MDL_NONBINDING);
    char name[8];
    for (int i = 0; i < 16; ++i) {
      snprintf(name, sizeof name, "t%d", i);
      item[i] = var(name, MDL_BINARY, 0, 1);
      for (int r = 0; r < 3; ++r) mdladdterm(cap[r], item[i], weight[r][i]);
      mdladdterm(total, item[i], value[i]);
    }
    mdlsetobj_prob(prob, total);
    // A plain branch and bound, so that only the directives steer it.
    MDLkvslprob e = mdlgetkvslprob_prob(prob);
    KVSLsetintcontrol(e, KVSL_CTRL_CUTSTRATEGY, 0);
    KVSLsetintcontrol(e, KVSL_CTRL_HEURSTRATEGY, 0);
    KVSLsetintcontrol(e, KVSL_CTRL_MIPPRESOLVE, 0);
  }
  int nodes() {
    int n = -1;
    KVSLgetintattrib(mdlgetkvslprob_prob(prob), KVSL_ATTR_NODES, &n);
    return n;
  }
};

TEST_F(DirectivesE2E, PrioritiesAndDirectionsChangeTheSearchNotTheOptimum) {
  build();
  optimum(true, 371.0);
  int plain = nodes();
  for (int i = 0; i < 16; ++i) {
    ASSERT_EQ(mdlsetvardir(item[i], 1, 100 + 10 * (15 - i)), 0);
    ASSERT_EQ(mdlsetvardir(item[i], 3, 0), 0);
  }
  optimum(true, 371.0);
  int reordered = nodes();
  EXPECT_NE(plain, reordered);
}

}  // namespace
