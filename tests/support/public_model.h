/*
 * public_model.h -- test support: rows and objectives stated with the
 * public calls only, for the end-to-end suites.
 */
#ifndef KVTL_TESTS_SUPPORT_PUBLIC_MODEL_H
#define KVTL_TESTS_SUPPORT_PUBLIC_MODEL_H

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

#include "kvtl.h"
#include "support/messages.h"

namespace testsupport {

using terms = std::initializer_list<std::pair<MDLvar, double>>;

// A constraint "terms type rhs".
inline MDLctr row(MDLprob p, const char *name, int type, terms ts, double rhs) {
  MDLctr c = mdlnewctr_prob(p, name, type);
  EXPECT_NE(c, nullptr);
  for (auto [v, a] : ts) EXPECT_EQ(mdladdterm(c, v, a), 0);
  EXPECT_EQ(mdladdterm(c, nullptr, rhs), 0);
  return c;
}

// A type N constraint with the terms, made the objective.
inline MDLctr objective(MDLprob p, terms ts) {
  MDLctr c = mdlnewctr_prob(p, "cost", MDL_NONBINDING);
  EXPECT_NE(c, nullptr);
  for (auto [v, a] : ts) EXPECT_EQ(mdladdterm(c, v, a), 0);
  EXPECT_EQ(mdlsetobj_prob(p, c), 0);
  return c;
}

// A fixture with one problem at message level 1, errors returned and
// collected, and the small LP several suites share:
//   max 3x + 2y, c1: x + y <= 4, c2: x + 3y <= 9, 0 <= x <= 3, y >= 0
// (optimum x = 3, y = 1, value 11).
class public_problem_test : public ::testing::Test {
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
  void build_small(double cx = 3, double cy = 2) {
    x = mdlnewvar_prob(prob, "x", MDL_CONTINUOUS, 0, 3);
    y = mdlnewvar_prob(prob, "y", MDL_CONTINUOUS, 0, MDL_INFINITY);
    c1 = row(prob, "c1", MDL_LEQ, {{x, 1}, {y, 1}}, 4);
    c2 = row(prob, "c2", MDL_LEQ, {{x, 1}, {y, 3}}, 9);
    obj = objective(prob, {{x, cx}, {y, cy}});
  }
  error_log errors;
  MDLprob prob = nullptr;
  MDLvar x = nullptr, y = nullptr;
  MDLctr c1 = nullptr, c2 = nullptr, obj = nullptr;
};

}  // namespace testsupport

#endif
