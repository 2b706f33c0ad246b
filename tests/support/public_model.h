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

}  // namespace testsupport

#endif
