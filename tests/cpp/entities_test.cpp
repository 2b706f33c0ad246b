/*
 * entities_test.cpp -- global entities, indicator rows, fixing for duals,
 * removing rows and cuts, engine controls through the C++ interface.
 */
#include <gtest/gtest.h>

#include <string>
#include <unordered_set>
#include <utility>

#include "cpp/expect_error.h"
#include "kvtl.hpp"

namespace {

using kvtl::problem;
using kvtl::variable;

constexpr double tol = 1e-6;

problem quiet() {
  problem p;
  p.set_message_level(0);
  return p;
}

// s is 0 or within [2, 10]: under s <= 1.5 only 0 is left; under s <= 5
// the largest is 5.
TEST(CppEntities, SemiContinuousLimit) {
  problem p = quiet();
  variable s = p.add_variable("s", kvtl::var_type::semi_continuous, 0, 10);
  s.set_limit(2);
  EXPECT_EQ(s.limit(), 2);
  kvtl::constraint cap = p.add_constraint(s <= 1.5, "cap");
  p.set_objective(1.0 * s, kvtl::sense::maximize);
  p.solve("g");
  EXPECT_NEAR(s.value(), 0, tol);
  cap.set_coefficient(s, 0.3);   // 0.3 s <= 1.5: s <= 5
  p.solve("g");
  EXPECT_NEAR(s.value(), 5, tol);
}

// p is integer below its limit 3 and continuous above: p <= 2.5 gives 2,
// p <= 3.5 gives 3.5.
TEST(CppEntities, PartialInteger) {
  problem p = quiet();
  variable v = p.add_variable("p", kvtl::var_type::partial_integer, 0, 10);
  v.set_limit(3);
  kvtl::constraint cap = p.add_constraint(2 * v <= 5, "cap");
  p.set_objective(1.0 * v, kvtl::sense::maximize);
  p.solve("g");
  EXPECT_NEAR(v.value(), 2, tol);
  p.remove(cap);
  p.add_constraint(2 * v <= 7, "cap2");
  p.solve("g");
  EXPECT_NEAR(v.value(), 3.5, tol);
}

// x <= 2 holds when b is 1: max x + 9b is 11 (b = 1, x = 2) rather than 10
// (b = 0, x = 10).  With the reward 7 it is 10 at b = 0.
TEST(CppEntities, IndicatorConstraint) {
  problem p = quiet();
  variable x = p.add_variable("x", kvtl::var_type::continuous, 0, 10);
  variable b = p.add_binary("b");
  kvtl::constraint ind = p.add_constraint(x <= 2, "ind");
  ind.set_indicator(b);
  p.set_objective(x + 9 * b, kvtl::sense::maximize);
  p.solve("g");
  EXPECT_NEAR(p.objective_value(), 11, tol);
  EXPECT_NEAR(x.value(), 2, tol);
  EXPECT_NEAR(b.value(), 1, tol);
  p.set_objective(x + 7 * b, kvtl::sense::maximize);
  p.solve("g");
  EXPECT_NEAR(p.objective_value(), 10, tol);
  EXPECT_NEAR(b.value(), 0, tol);
}

// max 5i + 4y, i + y <= 3.5, y <= 2, i integer: the relaxation is 17.5 at
// i = 3.5; the MIP 17 at i = 3, y = 0.5; with i fixed the LP prices r1 at 4
// and i at 1.
TEST(CppEntities, FixGlobalsThenLinearProgramForDuals) {
  problem p = quiet();
  variable i = p.add_integer("i", 0, 10);
  variable y = p.add_variable("y");
  kvtl::constraint r1 = p.add_constraint(i + y <= 3.5, "r1");
  kvtl::constraint r2 = p.add_constraint(y <= 2, "r2");
  p.set_objective(5 * i + 4 * y, kvtl::sense::maximize);
  p.lp_optimize();
  EXPECT_NEAR(p.objective_value(), 17.5, tol);
  EXPECT_NEAR(i.value(), 3.5, tol);
  p.mip_optimize();
  EXPECT_EQ(p.get_mip_status(), kvtl::mip_status::optimal);
  EXPECT_NEAR(p.objective_value(), 17, tol);
  EXPECT_NEAR(y.value(), 0.5, tol);
  EXPECT_NEAR(r2.slack(), 1.5, tol);
  p.fix_globals(true);
  p.lp_optimize();
  EXPECT_EQ(p.get_lp_status(), kvtl::lp_status::optimal);
  EXPECT_NEAR(p.objective_value(), 17, tol);
  EXPECT_NEAR(r1.dual(), 4, tol);
  EXPECT_NEAR(r2.dual(), 0, tol);
  EXPECT_NEAR(i.reduced_cost(), 1, tol);
}

// Bounds, fixing, types, names and directives of variables and sets.
TEST(CppEntities, VariableAndSetAccessors) {
  problem p("accessors");
  p.set_message_level(0);
  EXPECT_EQ(p.name(), "accessors");
  variable x = p.add_variable("x", kvtl::var_type::continuous, -1, 4);
  EXPECT_EQ(x.bounds(), std::make_pair(-1.0, 4.0));
  x.fix(2);
  EXPECT_EQ(x.lb(), 2);
  EXPECT_EQ(x.ub(), 2);
  x.set_type(kvtl::var_type::integer);
  EXPECT_EQ(x.type(), kvtl::var_type::integer);
  x.set_directive(kvtl::directive::priority, 5);
  variable y = p.add_binary("y"), z = p.add_binary("y");   // names are made unique
  EXPECT_NE(y.name(), z.name());
  kvtl::sos s = p.add_sos(kvtl::sos_type::sos2, 1 * x + 2 * y + 3 * z);
  s.set_directive(kvtl::directive::up);
  EXPECT_EQ(s.type(), kvtl::sos_type::sos2);
  EXPECT_EQ(x.column(), -1);   // nothing loaded yet
  p.set_objective(x + y + z, kvtl::sense::maximize);
  p.solve("g");
  EXPECT_NE(x.column(), -1);
  EXPECT_NEAR(x.value(), 2, tol);
  // At most two neighbours of x, y, z non-zero: x and y.
  EXPECT_NEAR(p.objective_value(), 3, tol);
  EXPECT_NEAR(z.value(), 0, tol);
}

// Cuts made outside a callback keep their data until removed.
TEST(CppEntities, CutsOutsideCallbacks) {
  problem p = quiet();
  variable x = p.add_variable("x"), y = p.add_variable("y");
  kvtl::cut c = p.add_cut(2 * x - y >= 3, 12);
  EXPECT_EQ(c.id(), 12);
  EXPECT_EQ(c.type(), kvtl::ctr_type::geq);
  EXPECT_EQ(c.rhs(), 3);
  std::unordered_set<kvtl::cut> cuts{c};
  EXPECT_EQ(cuts.count(c), 1u);
  p.remove(c);
}

// Engine controls are set on the engine problem; an unknown one is refused.
TEST(CppEntities, EngineControls) {
  problem p = quiet();
  p.set_control(KVSL_CTRL_MIPRELGAP, 0.0);
  p.set_control(KVSL_CTRL_THREADS, 1);
  cpptest::expect_error([&] { p.set_control(9999, 1); }, 0, "KVSLsetintcontrol(9999) failed");
  cpptest::expect_error([&] { p.set_control(9999, 0.5); }, 0, "KVSLsetdblcontrol(9999) failed");
}

}  // namespace
