/*
 * callbacks_test.cpp -- search callbacks, message handlers and moves
 * through the C++ interface on the real engine; exceptions thrown by
 * application callbacks leave the solve call unchanged.
 */
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "cpp/expect_error.h"
#include "kvtl.hpp"

namespace {

using kvtl::problem;
using kvtl::variable;

static_assert(!std::is_copy_constructible_v<problem>);
static_assert(!std::is_copy_assignable_v<problem>);
static_assert(std::is_nothrow_move_constructible_v<problem>);
static_assert(std::is_nothrow_move_assignable_v<problem>);

constexpr double tol = 1e-6;

// An exception type of the application's own.
struct app_failure {
  int where;
};

// Maximise 5a + 4b + 3c over binaries with 2a + 2b + 2c <= 5, so at most
// two of them: the optimum is a + b = 9.  With the lazy constraint
// a + b <= 1 it is a + c = 8.
class CppCallbacks : public ::testing::Test {
 protected:
  void SetUp() override {
    p.set_message_level(0);
    a = p.add_binary("a");
    b = p.add_binary("b");
    c = p.add_binary("c");
    p.add_constraint(2 * a + 2 * b + 2 * c <= 5, "cap");
    p.set_objective(5 * a + 4 * b + 3 * c, kvtl::sense::maximize);
    // Generated cuts and heuristics would find the optimum before any node
    // LP does; the callbacks should see node solutions too.
    p.set_control(KVSL_CTRL_CUTSTRATEGY, 0);
  }
  problem p{"callbacks"};
  variable a, b, c;
};

TEST_F(CppCallbacks, RejectedCandidatesNeverBecomeTheIncumbent) {
  int rejected = 0, accepted = 0;
  p.on_candidate([&](kvtl::callback_context &ctx) {
    if (ctx.value(a) + ctx.value(b) <= 1.5) {
      ++accepted;
      return false;
    }
    ++rejected;
    ctx.add_cut(a + b <= 1, 77);
    return true;
  });
  p.solve("g");
  EXPECT_GT(rejected, 0);
  EXPECT_GT(accepted, 0);
  EXPECT_EQ(p.get_mip_status(), kvtl::mip_status::optimal);
  EXPECT_NEAR(p.objective_value(), 8, tol);
  EXPECT_NEAR(a.value(), 1, tol);
  EXPECT_NEAR(b.value(), 0, tol);
  EXPECT_NEAR(c.value(), 1, tol);
}

TEST_F(CppCallbacks, CutManagerReadsNodeValuesAndCuts) {
  std::vector<std::vector<double>> seen;
  p.on_cut_manager([&](kvtl::callback_context &ctx) {
    std::vector<double> v{ctx.value(a), ctx.value(b), ctx.value(c)};
    if (v[0] + v[1] + v[2] > 2 + 1e-6) ctx.add_cut(kvtl::sum(std::vector{a, b, c}) <= 2, 5);
    seen.push_back(v);
  });
  p.solve("g");
  // The root relaxation is a = b = 1, c = 0.5; with the cover cut the
  // relaxation's solution a = b = 1, c = 0 is integral and optimal.
  ASSERT_GE(seen.size(), 1u);
  EXPECT_NEAR(seen[0][0], 1, tol);
  EXPECT_NEAR(seen[0][1], 1, tol);
  EXPECT_NEAR(seen[0][2], 0.5, tol);
  for (size_t k = 1; k < seen.size(); ++k) EXPECT_LE(seen[k][0] + seen[k][1] + seen[k][2], 2 + 1e-6);
  EXPECT_EQ(p.get_mip_status(), kvtl::mip_status::optimal);
  EXPECT_NEAR(p.objective_value(), 9, tol);
}

TEST_F(CppCallbacks, CandidateExceptionLeavesTheSolveCall) {
  int calls = 0;
  p.on_candidate([&](kvtl::callback_context &) -> bool {
    ++calls;
    throw app_failure{calls};
  });
  try {
    p.solve("g");
    ADD_FAILURE() << "no exception";
  } catch (const app_failure &f) {
    EXPECT_EQ(f.where, 1);
  }
  EXPECT_EQ(calls, 1);
  // The search stopped cleanly; without the callback the problem solves.
  const auto st = p.get_mip_status();
  EXPECT_TRUE(st == kvtl::mip_status::no_solution_found || st == kvtl::mip_status::solution);
  p.on_candidate(nullptr);
  p.solve("g");
  EXPECT_NEAR(p.objective_value(), 9, tol);
}

TEST_F(CppCallbacks, CutManagerExceptionLeavesTheSolveCall) {
  p.on_cut_manager([&](kvtl::callback_context &) { throw app_failure{2}; });
  EXPECT_THROW(p.solve("g"), app_failure);
  p.on_cut_manager(nullptr);
  p.solve("g");
  EXPECT_NEAR(p.objective_value(), 9, tol);
}

// A library error inside a callback is the exception the solve call
// throws, not the engine error of the stopped search.
TEST_F(CppCallbacks, LibraryErrorInsideACallback) {
  p.on_cut_manager([&](kvtl::callback_context &ctx) { (void)ctx.value(variable()); });
  cpptest::expect_error([&] { p.solve("g"); }, 1505, "(getsol) No variable given.");
}

TEST_F(CppCallbacks, StopSearchIsTheEngineError) {
  p.on_candidate([&](kvtl::callback_context &ctx) {
    ctx.stop_search();
    return false;
  });
  cpptest::expect_error([&] { p.solve("g"); }, 1524,
                        "(maxim) Korvex-Optimizer error 13 during 'maxim'. Return value: 13.");
}

// A start offered before the search is its first incumbent; an infeasible
// one is reported by the engine, which reaches the warning handler.
TEST_F(CppCallbacks, MipStartsAndTheirReports) {
  std::string log;
  std::vector<std::pair<int, std::string>> warnings;
  p.set_message_level(3);
  p.on_message([&](std::string_view text) { log += text; });
  p.on_warning([&](int n, std::string_view t) { warnings.emplace_back(n, std::string(t)); });
  p.add_mip_start({{a, 1}, {b, 1}, {c, 0}}, "best");
  p.add_mip_start({{a, 1}, {b, 1}, {c, 1}}, "bad");
  p.solve("g");
  EXPECT_NEAR(p.objective_value(), 9, tol);
  EXPECT_NE(log.find("MIP start best is the incumbent: objective 9"), std::string::npos) << log;
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0].first, 1570);
  EXPECT_EQ(warnings[0].second, "KVSL: MIP start bad is infeasible and is ignored.");
}

// Problems of different threads keep their errors apart.
TEST(CppThreads, EachThreadGetsItsOwnErrorsAndAnswers) {
  auto work = [](double cap, double *result, int *number) {
    problem q;
    q.set_message_level(0);
    variable x = q.add_variable("x", kvtl::var_type::continuous, 0, 100);
    q.add_constraint(2 * x <= cap, "cap");
    q.set_objective(1.0 * x, kvtl::sense::maximize);
    for (int round = 0; round < 20; ++round) {
      q.solve();
      *result = x.value();
      try {
        x.set_lb(200 + round);
      } catch (const kvtl::error &e) {
        *number = e.number();
      }
    }
  };
  double r1 = 0, r2 = 0;
  int n1 = 0, n2 = 0;
  std::thread t1(work, 10.0, &r1, &n1), t2(work, 30.0, &r2, &n2);
  t1.join();
  t2.join();
  EXPECT_NEAR(r1, 5, tol);
  EXPECT_NEAR(r2, 15, tol);
  EXPECT_EQ(n1, 1530);
  EXPECT_EQ(n2, 1530);
}

TEST(CppMessages, OutputGoesToTheHandlerAndItsExceptionsLeave) {
  problem p("messages");
  variable x = p.add_variable("x", kvtl::var_type::continuous, 0, 4);
  p.add_constraint(2 * x >= 1, "low");
  p.set_objective(3 * x);
  std::string out;
  p.on_message([&](std::string_view text) { out += text; });
  p.print();
  EXPECT_NE(out.find("low"), std::string::npos) << out;
  EXPECT_NE(out.find("x"), std::string::npos) << out;
  p.on_message([](std::string_view) { throw app_failure{3}; });
  EXPECT_THROW(p.print(), app_failure);
  p.on_message(nullptr);
}

TEST(CppMoves, HandlesAndHandlersFollowTheProblem) {
  problem p("moved");
  p.set_message_level(0);
  variable x = p.add_variable("x", kvtl::var_type::continuous, 0, 4);
  kvtl::constraint row = p.add_constraint(x <= 3, "row");
  std::string out;
  p.on_message([&](std::string_view text) { out += text; });
  MDLprob h = p.handle();

  std::vector<problem> all;
  all.push_back(std::move(p));
  all.emplace_back("other");
  problem &q = all.front();
  EXPECT_EQ(q.handle(), h);
  EXPECT_EQ(p.handle(), nullptr);  // NOLINT: moved from on purpose
  q.set_objective(1.0 * x, kvtl::sense::maximize);
  q.solve();
  EXPECT_NEAR(x.value(), 3, tol);
  EXPECT_NEAR(row.dual(), 1, tol);
  q.print();   // the handler set before the moves still receives output
  EXPECT_NE(out.find("row"), std::string::npos);

  // Move assignment deletes the target's problem and takes the source's.
  problem r("target");
  r = std::move(all.front());
  EXPECT_EQ(r.handle(), h);
  EXPECT_NEAR(x.value(), 3, tol);
  r = problem("fresh");
  EXPECT_NE(r.handle(), nullptr);
  EXPECT_NE(r.handle(), h);
  // Self-move leaves the problem as it was.
  problem &self = r;
  MDLprob before = r.handle();
  r = std::move(self);
  EXPECT_EQ(r.handle(), before);
}

}  // namespace
