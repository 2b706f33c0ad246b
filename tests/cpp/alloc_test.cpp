/*
 * alloc_test.cpp -- allocation failures reported by the library leave the
 * C++ interface as kvtl::error 1502; the problem stays usable afterwards
 * and nothing leaks.
 */
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "cpp/expect_error.h"
#include "kvtl.hpp"

namespace {

// Blocks come from malloc until `failing` is set; releases always go to
// free, so blocks of either time stay compatible.
bool failing = false;
void *flaky_malloc(size_t size) { return failing ? nullptr : std::malloc(size); }

// Installs the flaky allocator for one test (the library is started by
// then, so its blocks so far came from malloc).
class CppAllocation : public ::testing::Test {
 protected:
  void SetUp() override {
    p.set_message_level(0);
    saved = mdlsl_malloc;
    mdlsl_malloc = flaky_malloc;
  }
  void TearDown() override {
    failing = false;
    mdlsl_malloc = saved;
  }
  kvtl::problem p{"alloc"};
  void *(*saved)(size_t) = nullptr;
};

TEST_F(CppAllocation, FailedAllocationIsAnErrorAndTheProblemRecovers) {
  kvtl::variable first = p.add_variable("first", kvtl::var_type::continuous, 0, 10);
  failing = true;
  int made = 0;
  bool thrown = false;
  // The pool serves from blocks it holds; sooner or later it needs a new one.
  for (; made < 1000000 && !thrown; ++made) {
    try {
      p.add_variable("v" + std::to_string(made));
    } catch (const kvtl::error &e) {
      thrown = true;
      EXPECT_EQ(e.number(), 1502);
      EXPECT_STREQ(e.what(), "Not enough memory.");
    }
  }
  ASSERT_TRUE(thrown) << "no allocation failed in " << made << " variables";
  failing = false;
  // Everything made before the failure is still there and solvable.
  kvtl::variable last = p.add_variable("last", kvtl::var_type::continuous, 0, 5);
  p.add_constraint(first + last <= 12, "sum");
  p.set_objective(first + 2 * last, kvtl::sense::maximize);
  p.solve();
  EXPECT_NEAR(p.objective_value(), 17, 1e-9);
  EXPECT_NEAR(first.value(), 7, 1e-9);
}

TEST_F(CppAllocation, FailedObjectiveIsAnErrorAndTheOldOneStays) {
  // Variables first; then the objective over all of them needs new nodes
  // for its expression object and its row, which cannot be had.
  std::vector<kvtl::variable> vars;
  for (int i = 0; i < 5000; ++i) vars.push_back(p.add_variable("", kvtl::var_type::continuous, 0, 1));
  p.add_constraint(kvtl::sum(vars) <= 2.5, "cap");
  failing = true;
  cpptest::expect_error([&] { p.set_objective(kvtl::sum(vars), kvtl::sense::maximize); }, 1502,
                        "Not enough memory.");
  failing = false;
  p.set_objective(kvtl::sum(vars), kvtl::sense::maximize);
  p.solve();
  EXPECT_NEAR(p.objective_value(), 2.5, 1e-9);
}

}  // namespace
