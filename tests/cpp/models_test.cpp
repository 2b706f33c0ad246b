/*
 * models_test.cpp -- the end-to-end models of the C suites stated through
 * the C++ interface and solved by the real engine: the same answers.
 */
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <ranges>
#include <vector>

#include "kvtl.hpp"

namespace {

using kvtl::problem;
using kvtl::sense;
using kvtl::sum;
using kvtl::variable;

constexpr double tol = 1e-6;

// A quiet problem that fails the test on any warning.
problem quiet(const std::string &name = "") {
  problem p(name);
  p.set_message_level(0);
  p.on_warning([](int number, std::string_view text) {
    ADD_FAILURE() << "warning " << number << ": " << text;
  });
  return p;
}

// The knapsack of the examples: by enumeration of all 256 choices the best
// value is 42.
TEST(CppModels, KnapsackMip) {
  const std::array<double, 8> value{10, 13, 7, 8, 12, 9, 4, 11};
  const std::array<double, 8> weight{5, 6, 4, 3, 7, 5, 2, 6};
  problem p = quiet("knapsack");
  std::vector<variable> take;
  for (int i = 0; i < 8; ++i) take.push_back(p.add_binary("take_" + std::to_string(i + 1)));
  auto items = std::views::iota(0, 8);
  kvtl::constraint cap =
      p.add_constraint(sum(items, [&](int i) { return weight[i] * take[i]; }) <= 20, "capacity");
  p.set_objective(sum(items, [&](int i) { return value[i] * take[i]; }), sense::maximize);
  p.solve("g");
  EXPECT_EQ(p.get_mip_status(), kvtl::mip_status::optimal);
  EXPECT_NEAR(p.objective_value(), 42, tol);
  double chosen_value = 0, chosen_weight = 0;
  for (int i = 0; i < 8; ++i) {
    const double t = take[i].value();
    EXPECT_TRUE(std::abs(t) < tol || std::abs(t - 1) < tol) << t;
    chosen_value += value[i] * t;
    chosen_weight += weight[i] * t;
  }
  EXPECT_NEAR(chosen_value, 42, tol);
  EXPECT_LE(chosen_weight, 20 + tol);
  EXPECT_NEAR(cap.activity(), chosen_weight, tol);
  EXPECT_EQ(cap.name(), "capacity");
  EXPECT_EQ(take[3].name(), "take_4");
  EXPECT_EQ(take[3].type(), kvtl::var_type::binary);
}

// The transport data of examples/transport.dat: least cost 345.
TEST(CppModels, TransportLp) {
  const std::vector<double> demand{10, 25, 15, 25};
  const std::vector<double> supply{20, 30, 25};
  const double cost[3][4] = {{2, 3, 11, 7}, {1, 0, 6, 1}, {5, 8, 15, 9}};
  problem p = quiet("transport");
  std::map<std::pair<int, int>, variable> ship;
  kvtl::linear_expr total;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 4; ++j) {
      variable v = p.add_variable("ship_" + std::to_string(i + 1) + "_" + std::to_string(j + 1));
      ship[{i, j}] = v;
      total += cost[i][j] * v;
    }
  for (int i = 0; i < 3; ++i) {
    kvtl::linear_expr out;
    for (int j = 0; j < 4; ++j) out += ship[{i, j}];
    p.add_constraint(out <= supply[i], "supply_" + std::to_string(i + 1));
  }
  std::vector<kvtl::constraint> meet;
  for (int j = 0; j < 4; ++j)
    meet.push_back(p.add_constraint(
        sum(std::views::iota(0, 3), [&](int i) { return ship[{i, j}]; }) >= demand[j],
        "demand_" + std::to_string(j + 1)));
  p.set_objective(total);
  p.minimize();
  EXPECT_EQ(p.get_lp_status(), kvtl::lp_status::optimal);
  EXPECT_NEAR(p.objective_value(), 345, tol);
  EXPECT_NEAR(total.value(), 345, tol);
  for (int j = 0; j < 4; ++j) EXPECT_NEAR(meet[j].activity(), demand[j], tol);
  EXPECT_EQ(p.get_sense(), sense::minimize);
}

// The production example: doors 2, windows 6, profit 36; duals 0, 1.5, 1
// on the plants; the range row staff is not binding at activity 8.
TEST(CppModels, ProductionWithRangeAndDuals) {
  problem p = quiet("production");
  variable doors = p.add_variable("doors"), windows = p.add_variable("windows");
  std::array<kvtl::constraint, 3> plant{p.add_constraint(doors <= 4, "plant1"),
                                        p.add_constraint(2 * windows <= 12, "plant2"),
                                        p.add_constraint(3 * doors + 2 * windows <= 18, "plant3")};
  kvtl::constraint staff = p.add_range(doors + windows, 1, 10, "staff");
  p.set_objective(3 * doors + 5 * windows, sense::maximize);
  p.solve();
  EXPECT_EQ(p.get_lp_status(), kvtl::lp_status::optimal);
  EXPECT_NEAR(p.objective_value(), 36, tol);
  EXPECT_NEAR(doors.value(), 2, tol);
  EXPECT_NEAR(windows.value(), 6, tol);
  EXPECT_NEAR(plant[0].dual(), 0, tol);
  EXPECT_NEAR(plant[1].dual(), 1.5, tol);
  EXPECT_NEAR(plant[2].dual(), 1, tol);
  EXPECT_NEAR(plant[0].slack(), 2, tol);
  EXPECT_NEAR(plant[2].slack(), 0, tol);
  EXPECT_EQ(staff.type(), kvtl::ctr_type::range);
  EXPECT_NEAR(staff.activity(), 8, tol);
  EXPECT_NEAR(staff.dual(), 0, tol);
}

// Workers i to jobs j at cost c[i][j]: of the six permutations the
// cheapest is (0->1, 1->0, 2->2) at 2 + 3 + 1 = 6.
TEST(CppModels, AssignmentLp) {
  const double cost[3][3] = {{4, 2, 8}, {3, 7, 5}, {6, 9, 1}};
  problem p = quiet();
  variable w[3][3];
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) w[i][j] = p.add_variable("w_" + std::to_string(i) + std::to_string(j), kvtl::var_type::continuous, 0, 1);
  for (int i = 0; i < 3; ++i) {
    p.add_constraint(sum(w[i]) == 1, "worker_" + std::to_string(i));
    p.add_constraint(w[0][i] + w[1][i] + w[2][i] == 1, "job_" + std::to_string(i));
  }
  kvtl::linear_expr total;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) total.add_term(w[i][j], cost[i][j]);
  p.set_objective(total, sense::minimize);
  p.solve();
  EXPECT_NEAR(p.objective_value(), 6, tol);
  EXPECT_NEAR(w[0][1].value() + w[1][0].value() + w[2][2].value(), 3, tol);
}

// The portfolio example: from the optimality conditions the shares are
// (33, 16, 10) / 59 at variance 1.4 / 59.
TEST(CppModels, PortfolioQp) {
  const std::array<double, 3> variance{0.04, 0.09, 0.16}, ret{0.05, 0.08, 0.12};
  problem p = quiet("portfolio");
  std::vector<variable> share;
  for (int i = 0; i < 3; ++i) share.push_back(p.add_variable("share_" + std::to_string(i + 1), kvtl::var_type::continuous, 0, 1));
  p.add_constraint(sum(share) == 1, "budget");
  p.add_constraint(sum(std::views::iota(0, 3), [&](int i) { return ret[i] * share[i]; }) >= 0.07, "return");
  p.set_objective(sum(std::views::iota(0, 3), [&](int i) { return variance[i] * share[i] * share[i]; }));
  p.minimize();
  EXPECT_EQ(p.get_lp_status(), kvtl::lp_status::optimal);
  EXPECT_NEAR(p.objective_value(), 1.4 / 59, 1e-7);
  const double expect[3] = {33.0 / 59, 16.0 / 59, 10.0 / 59};
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(share[i].value(), expect[i], 1e-5);
}

// min (x - 1)^2 + (y - 2)^2 subject to x + y <= 2: the nearest point of
// the half-plane to (1, 2) is (0.5, 1.5), at squared distance 0.5.  The
// objective's constant 5 counts in its value.
TEST(CppModels, SquaresFromExpressionProducts) {
  problem p = quiet();
  variable x = p.add_variable("x", kvtl::var_type::continuous, -10, 10);
  variable y = p.add_variable("y", kvtl::var_type::continuous, -10, 10);
  kvtl::quad_expr obj = (x - 1) * (x - 1) + (y - 2) * (y - 2);
  EXPECT_EQ(obj.quad_terms().size(), 2u);
  EXPECT_EQ(obj.linear().constant(), 5);
  p.add_constraint(x + y <= 2, "half");
  p.set_objective(obj);
  p.minimize();
  EXPECT_NEAR(x.value(), 0.5, 1e-5);
  EXPECT_NEAR(y.value(), 1.5, 1e-5);
  EXPECT_NEAR(p.objective_value(), 0.5, 1e-5);
  EXPECT_NEAR(obj.value(), 0.5, 1e-5);
}

// A convex quadratic row: max x + y with x^2 + y^2 <= 2 is reached at
// x = y = 1, value 2.
TEST(CppModels, QuadraticConstraint) {
  problem p = quiet();
  variable x = p.add_variable("x", kvtl::var_type::continuous, -5, 5);
  variable y = p.add_variable("y", kvtl::var_type::continuous, -5, 5);
  kvtl::constraint disc = p.add_constraint(x * x + y * y <= 2, "disc");
  p.set_objective(x + y, sense::maximize);
  p.solve();
  EXPECT_NEAR(p.objective_value(), 2, 1e-5);
  EXPECT_NEAR(x.value(), 1, 1e-4);
  EXPECT_NEAR(disc.slack(), 0, 1e-5);
}

// A MIP with a special ordered set: capacity comes in one of three sizes
// (amounts in [0, 1], an SOS1 over them) and up to 10 units are made at 5
// each within it: max 5 make - (3 small + 4 medium + 6 large) with
// make <= 2 small + 4 medium + 7 large.  One size alone earns at most
// 7 small, 16 medium or 29 large (make 7): the optimum is 29.  The LP
// relaxation ignores the set and adds 3/4 of medium: 29 + 15 - 3 = 41.
TEST(CppModels, MipWithSos1) {
  problem p = quiet();
  variable make = p.add_variable("make", kvtl::var_type::continuous, 0, 10);
  variable small = p.add_variable("small", kvtl::var_type::continuous, 0, 1);
  variable medium = p.add_variable("medium", kvtl::var_type::continuous, 0, 1);
  variable large = p.add_variable("large", kvtl::var_type::continuous, 0, 1);
  p.add_constraint(make <= 2 * small + 4 * medium + 7 * large, "capacity");
  kvtl::sos size = p.add_sos(kvtl::sos_type::sos1, 1 * small + 2 * medium + 3 * large, "size");
  EXPECT_EQ(size.type(), kvtl::sos_type::sos1);
  EXPECT_EQ(size.name(), "size");
  p.set_objective(5 * make - (3 * small + 4 * medium + 6 * large), sense::maximize);
  p.solve();
  EXPECT_NEAR(p.objective_value(), 41, tol);
  EXPECT_NEAR(medium.value(), 0.75, tol);
  p.solve("g");
  EXPECT_EQ(p.get_mip_status(), kvtl::mip_status::optimal);
  EXPECT_NEAR(p.objective_value(), 29, tol);
  EXPECT_NEAR(large.value(), 1, tol);
  EXPECT_NEAR(make.value(), 7, tol);
  EXPECT_NEAR(small.value(), 0, tol);
  EXPECT_NEAR(medium.value(), 0, tol);
}

// Integer variables and both senses: max x + y with 2x + 2y <= 9 over
// integers is 4; min x - y with the same row and y <= 3 is -3.
TEST(CppModels, IntegerBothSenses) {
  problem p = quiet();
  variable x = p.add_integer("x", 0, 10), y = p.add_integer("y", 0, 10);
  p.add_constraint(2 * x + 2 * y <= 9, "row");
  p.set_objective(x + y, sense::maximize);
  p.solve("g");
  EXPECT_NEAR(p.objective_value(), 4, tol);
  y.set_ub(3);
  EXPECT_EQ(y.ub(), 3);
  p.set_objective(x - y);
  p.minimize("g");
  EXPECT_NEAR(p.objective_value(), -3, tol);
  EXPECT_NEAR(y.value(), 3, tol);
  EXPECT_NEAR(x.value(), 0, tol);
}

// The small LP of the C suites: max 3x + 2y, c1: x + y <= 4,
// c2: x + 3y <= 9, 0 <= x <= 3 (optimum x = 3, y = 1, value 11), and its
// ranging worked out by hand:
//  x: with c1 binding, x may move from 1.5 to 4, the objective changes by
//     its reduced cost 1 per unit; its cost may drop to 2, rise without end.
//  y: basic: value range [1, 1], cost range [0, 3].
//  c1: rhs in [3, 5] at dual 2; c2 does not bind (activity 6 upwards).
TEST(CppModels, DualsAndRangingOfAnLp) {
  problem p = quiet();
  variable x = p.add_variable("x", kvtl::var_type::continuous, 0, 3);
  variable y = p.add_variable("y");
  kvtl::constraint c1 = p.add_constraint(x + y <= 4, "c1");
  kvtl::constraint c2 = p.add_constraint(x + 3 * y <= 9, "c2");
  p.set_objective(3 * x + 2 * y, sense::maximize);
  p.solve();
  ASSERT_EQ(p.get_lp_status(), kvtl::lp_status::optimal);
  EXPECT_NEAR(p.objective_value(), 11, tol);
  EXPECT_NEAR(c1.dual(), 2, tol);
  EXPECT_NEAR(c2.dual(), 0, tol);
  EXPECT_NEAR(x.reduced_cost(), 1, tol);
  EXPECT_NEAR(y.reduced_cost(), 0, tol);
  EXPECT_NEAR(c2.slack(), 3, tol);
  const auto rx = x.range();
  EXPECT_NEAR(rx.upper_value, 4, 1e-7);
  EXPECT_NEAR(rx.lower_value, 1.5, 1e-7);
  EXPECT_NEAR(rx.unit_up, 1, 1e-7);
  EXPECT_NEAR(rx.unit_down, -1, 1e-7);
  EXPECT_EQ(rx.upper_cost, kvtl::infinity);
  EXPECT_NEAR(rx.lower_cost, 2, 1e-6);
  const auto ry = y.range();
  EXPECT_NEAR(ry.upper_value, 1, 1e-7);
  EXPECT_NEAR(ry.lower_value, 1, 1e-7);
  EXPECT_NEAR(ry.upper_cost, 3, 1e-6);
  EXPECT_NEAR(ry.lower_cost, 0, 1e-6);
  const auto r1 = c1.range();
  EXPECT_NEAR(r1.upper_activity, 5, 1e-7);
  EXPECT_NEAR(r1.lower_activity, 3, 1e-7);
  EXPECT_NEAR(r1.unit_up, 2, 1e-7);
  EXPECT_NEAR(r1.unit_down, -2, 1e-7);
  const auto r2 = c2.range();
  EXPECT_EQ(r2.upper_activity, kvtl::infinity);
  EXPECT_NEAR(r2.lower_activity, 6, 1e-7);
  // Minimising the negated objective mirrors the signs.
  p.set_objective(-3 * x - 2 * y);
  p.minimize();
  EXPECT_NEAR(p.objective_value(), -11, tol);
  EXPECT_NEAR(c1.dual(), -2, tol);
  EXPECT_NEAR(x.range().unit_up, -1, 1e-7);
}

// Infeasible and unbounded LPs give their statuses, not exceptions.
TEST(CppModels, InfeasibleAndUnboundedStatuses) {
  problem p = quiet();
  variable x = p.add_variable("x");
  p.add_constraint(x >= 5, "low");
  p.add_constraint(x <= 3, "high");
  p.set_objective(1.0 * x);
  p.minimize();
  EXPECT_EQ(p.get_lp_status(), kvtl::lp_status::infeasible);
  problem q = quiet();
  variable z = q.add_variable("z");
  q.set_objective(1.0 * z, sense::maximize);
  q.solve();
  EXPECT_EQ(q.get_lp_status(), kvtl::lp_status::unbounded);
}

// Expressions: constants, +=, -=, scaling and products keep their terms.
TEST(CppExpressions, OperatorsBuildTheExpectedTerms) {
  problem p = quiet();
  variable x = p.add_variable("x"), y = p.add_variable("y");
  kvtl::linear_expr e = 2 * x + 3 * y - 4;
  e += x;
  e -= 0.5 * y;
  e *= 2;
  EXPECT_EQ(e.constant(), -8);
  double cx = 0, cy = 0;
  for (const auto &t : e.terms()) (t.var == x ? cx : cy) += t.coef;
  EXPECT_EQ(cx, 6);
  EXPECT_EQ(cy, 5);
  kvtl::linear_relation r = 2 * x + 3 * y <= 10;
  EXPECT_EQ(r.type, kvtl::ctr_type::leq);
  EXPECT_EQ(r.expr.constant(), -10);
  kvtl::linear_relation g = 10 >= x;
  EXPECT_EQ(g.type, kvtl::ctr_type::geq);
  EXPECT_EQ(g.expr.constant(), 10);
  EXPECT_EQ(g.expr.terms()[0].coef, -1);
  kvtl::quad_expr q = x * y;
  ASSERT_EQ(q.quad_terms().size(), 1u);
  EXPECT_EQ(q.quad_terms()[0].coef, 1);
  q += 3 * x;
  q *= -1;
  EXPECT_EQ(q.linear().terms()[0].coef, -3);
  EXPECT_EQ(q.quad_terms()[0].coef, -1);
  // Every pairing of linear and quadratic sides makes a relation.
  kvtl::linear_relation two_vars = x <= y;
  EXPECT_EQ(two_vars.expr.terms().size(), 2u);
  kvtl::quad_relation q1 = x * y == 1;
  kvtl::quad_relation q2 = 1 >= x * y;
  kvtl::quad_relation q3 = x * x + y * y <= 2 * x;
  kvtl::quad_relation q4 = x * x >= y * y;
  EXPECT_EQ(q1.type, kvtl::ctr_type::eq);
  EXPECT_EQ(q1.expr.linear().constant(), -1);
  EXPECT_EQ(q2.type, kvtl::ctr_type::geq);
  EXPECT_EQ(q2.expr.quad_terms()[0].coef, -1);
  EXPECT_EQ(q3.expr.linear().terms()[0].coef, -2);
  EXPECT_EQ(q4.expr.quad_terms().size(), 2u);
  EXPECT_EQ((x / 2).terms()[0].coef, 0.5);
  EXPECT_EQ((-(x * y) / 4).quad_terms()[0].coef, -0.25);
  // Sums over plain arrays, vectors of expressions and of quadratic terms.
  variable arr[2] = {x, y};
  EXPECT_EQ(sum(arr).terms().size(), 2u);
  std::vector<kvtl::linear_expr> parts{x + 1, 2 * y + 2};
  EXPECT_EQ(sum(parts).constant(), 3);
  kvtl::linear_expr listed = sum({x, y, 2 * x + 1});
  EXPECT_EQ(listed.terms().size(), 3u);
  EXPECT_EQ(listed.constant(), 1);
  std::vector<kvtl::quad_expr> squares{x * x, y * y};
  EXPECT_EQ(sum(squares).quad_terms().size(), 2u);
  // A constraint from the relation holds the terms and the rhs.
  kvtl::constraint c = p.add_constraint(r, "r");
  EXPECT_EQ(c.rhs(), 10);
  EXPECT_EQ(c.coefficient(x), 2);
  EXPECT_EQ(c.coefficient(y), 3);
  EXPECT_EQ(c.type(), kvtl::ctr_type::leq);
  // Handles as keys; == of two variables compares them.
  std::map<variable, int> index{{x, 0}, {y, 1}};
  EXPECT_EQ(index.at(y), 1);
  EXPECT_TRUE(x == x);
  EXPECT_FALSE(x == y);
  EXPECT_FALSE(variable());
  EXPECT_TRUE(x);
}

// An expression added to or taken from itself: every term once more.
TEST(CppExpressions, CompoundAssignmentWithItself) {
  problem p = quiet();
  variable x = p.add_variable("x"), y = p.add_variable("y");
  kvtl::linear_expr e = 2 * x + 3 * y + 1;
  e += e;
  ASSERT_EQ(e.terms().size(), 4u);
  EXPECT_EQ(e.constant(), 2);
  EXPECT_TRUE(e.terms()[2].var == x);
  EXPECT_EQ(e.terms()[2].coef, 2);
  EXPECT_TRUE(e.terms()[3].var == y);
  EXPECT_EQ(e.terms()[3].coef, 3);
  e -= e;
  ASSERT_EQ(e.terms().size(), 8u);
  EXPECT_EQ(e.constant(), 0);
  EXPECT_EQ(e.terms()[4].coef, -2);
  EXPECT_EQ(e.terms()[7].coef, -3);
  kvtl::quad_expr q = x * y + 2 * (y * y) + x;
  q += q;
  ASSERT_EQ(q.quad_terms().size(), 4u);
  ASSERT_EQ(q.linear().terms().size(), 2u);
  EXPECT_TRUE(q.quad_terms()[3].var1 == y);
  EXPECT_EQ(q.quad_terms()[3].coef, 2);
  q -= q;
  ASSERT_EQ(q.quad_terms().size(), 8u);
  ASSERT_EQ(q.linear().terms().size(), 4u);
  EXPECT_TRUE(q.quad_terms()[7].var2 == y);
  EXPECT_EQ(q.quad_terms()[6].coef, -1);
  EXPECT_EQ(q.quad_terms()[7].coef, -2);
  EXPECT_EQ(q.linear().terms()[3].coef, -1);
}

}  // namespace
