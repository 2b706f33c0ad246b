/*
 * errors_test.cpp -- every error the library reports through the C++
 * interface leaves as a kvtl::error with the message's number and exact
 * text; warnings reach the warning handler and are not thrown.
 */
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "cpp/expect_error.h"
#include "kvtl.hpp"

namespace {

using kvtl::problem;
using kvtl::variable;

using cpptest::expect_error;

class CppErrors : public ::testing::Test {
 protected:
  void SetUp() override {
    p.set_message_level(0);
    p.on_warning([this](int n, std::string_view t) { warnings.emplace_back(n, std::string(t)); });
    x = p.add_variable("x", kvtl::var_type::continuous, 0, 10);
    y = p.add_integer("y", 0, 5);
  }
  problem p{"errors"};
  variable x, y;
  std::vector<std::pair<int, std::string>> warnings;
};

TEST_F(CppErrors, NullHandles) {
  expect_error([] { (void)variable().value(); }, 1505, "(getsol) No variable given.");
  expect_error([] { variable().set_lb(1); }, 1505, "(setlb) No variable given.");
  expect_error([] { (void)kvtl::constraint().dual(); }, 1507, "(getdual) No constraint given.");
  expect_error([] { (void)kvtl::constraint().slack(); }, 1507, "(getslack) No constraint given.");
  expect_error([] { kvtl::sos().add(variable(), 1); }, 1508, "(addsosel) No SOS given.");
  expect_error([] { (void)kvtl::cut().rhs(); }, 1509, "(getcutrhs) No cut given.");
}

TEST_F(CppErrors, InconsistentBounds) {
  expect_error([&] { x.set_lb(11); }, 1530, "(setlb) Inconsistent bounds for variable 'x' (11,10).");
  expect_error([&] { x.set_ub(-1); }, 1530, "(setub) Inconsistent bounds for variable 'x' (0,-1).");
  expect_error([&] { p.add_variable("z", kvtl::var_type::continuous, 3, 2); }, 1530,
               "(newvar) Inconsistent bounds for variable 'z' (3,2).");
  // The bounds are unchanged.
  EXPECT_EQ(x.bounds(), std::make_pair(0.0, 10.0));
}

TEST_F(CppErrors, TypesOutOfRange) {
  expect_error([&] { x.set_type(static_cast<kvtl::var_type>(9)); }, 1531,
               "(setvartype) Incorrect type for variable 'x'.");
  kvtl::constraint c = p.add_constraint(x + y <= 4, "c");
  expect_error([&] { c.set_type(static_cast<kvtl::ctr_type>(7)); }, 1535,
               "(setctrtype) Incorrect type for constraint 'c'.");
  expect_error([&] { p.add_sos(static_cast<kvtl::sos_type>(4), 1 * x + 2 * y, "s"); }, 1545,
               "(newsos) Wrong type for SOS 's'.");
  expect_error([&] { x.set_directive(static_cast<kvtl::directive>(8), 1); }, 1547,
               "(setvardir) Wrong directive type.");
}

TEST_F(CppErrors, InconsistentRange) {
  kvtl::constraint c = p.add_constraint(x + y <= 4, "c");
  expect_error([&] { c.set_range(5, 1); }, 1536, "(setrange) Inconsistent range for constraint 'c' (5,1).");
  expect_error([&] { p.add_range(x + 1, 6, 2, "r"); }, 1536,
               "(setrange) Inconsistent range for constraint 'r' (5,1).");
}

TEST_F(CppErrors, IndicatorOnAnObjectiveRow) {
  variable b = p.add_binary("b");
  kvtl::constraint free_row = p.add_constraint(kvtl::linear_relation{x + y, kvtl::ctr_type::nonbinding}, "free");
  expect_error([&] { free_row.set_indicator(b); }, 1539,
               "(setindicator) Incorrect constraint type for indicator constraint 'free'.");
}

TEST_F(CppErrors, UnknownSolveOption) {
  p.add_constraint(x + y <= 4, "c");
  p.set_objective(x + y, kvtl::sense::maximize);
  expect_error([&] { p.maximize("q"); }, 1523, "Unknown solution option 'q'.");
  // The problem stays usable.
  p.maximize();
  EXPECT_NEAR(p.objective_value(), 4, 1e-9);
}

TEST_F(CppErrors, CutsOfWrongType) {
  expect_error([&] { p.add_cut(kvtl::linear_relation{x + y, kvtl::ctr_type::nonbinding}, 1); }, 1535,
               "(newcut) Incorrect type for constraint 'CUT'.");
}

// Solved, then changed: the value is 0 with warning 1520.
void solve_then_change(problem &p, variable x, variable y) {
  p.add_constraint(x + y <= 4, "c");
  p.set_objective(x + y, kvtl::sense::maximize);
  p.maximize();
  p.add_constraint(x <= 2, "later");
}

TEST_F(CppErrors, WarningsGoToTheHandlerNotThrown) {
  solve_then_change(p, x, y);
  EXPECT_EQ(x.value(), 0.0);
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0].first, 1520);
  EXPECT_EQ(warnings[0].second, "(getsol) No solution available or problem modified since last solved.");
}

// A warning handler that throws: the exception leaves the call that warned.
TEST_F(CppErrors, ThrowingWarningHandlerLeavesTheCall) {
  struct mine {
    int number;
  };
  solve_then_change(p, x, y);
  p.on_warning([](int n, std::string_view) { throw mine{n}; });
  try {
    (void)x.value();
    ADD_FAILURE() << "no exception";
  } catch (const mine &m) {
    EXPECT_EQ(m.number, 1520);
  }
  p.on_warning(nullptr);
  EXPECT_EQ(x.value(), 0.0);
}

TEST_F(CppErrors, EngineErrorAsException) {
  // A non-binary indicator column is refused by the engine when the search
  // starts: the library reports error 1524 with the engine's code.
  kvtl::constraint c = p.add_constraint(x <= 3, "ind");
  variable z = p.add_integer("z", 0, 4);
  c.set_indicator(z);
  p.set_objective(x + z, kvtl::sense::maximize);
  expect_error([&] { p.solve("g"); }, 1524,
               "(maxim) Korvex-Optimizer error 12 during 'maxim'. Return value: 12.");
}

TEST_F(CppErrors, UnwritableFile) {
  p.add_constraint(x + y <= 4, "c");
  p.set_objective(x + y);
  expect_error([&] { p.export_lp("/nonexistent-dir/model"); }, 0,
               "cannot write the model to '/nonexistent-dir/model'");
  expect_error([&] { p.export_mps("/nonexistent-dir/model"); }, 0,
               "cannot write the model to '/nonexistent-dir/model'");
  EXPECT_TRUE(warnings.empty());
}

TEST_F(CppErrors, MovedFromProblemThrowsLogicError) {
  problem q = std::move(p);
  EXPECT_THROW(p.set_message_level(1), std::logic_error);      // NOLINT: use after move on purpose
  EXPECT_THROW(p.add_variable("w"), std::logic_error);         // NOLINT
  EXPECT_THROW((void)p.objective_value(), std::logic_error);   // NOLINT
  EXPECT_EQ(p.handle(), nullptr);                              // NOLINT
  EXPECT_NE(q.handle(), nullptr);
}

}  // namespace
