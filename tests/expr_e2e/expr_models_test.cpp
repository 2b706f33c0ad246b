/*
 * expr_models_test.cpp -- models stated only through expression objects,
 * solved by the real engine; the expressions evaluated at the solution.
 */
#include <gtest/gtest.h>

#include <vector>

#include "kvtl.h"
#include "support/public_model.h"

namespace {

using testsupport::public_problem_test;

class ExprModels : public public_problem_test {
 protected:
  void TearDown() override {
    for (MDLexpr e : exprs) mdldelexpr(e);
    public_problem_test::TearDown();
  }
  MDLexpr track(MDLexpr e) {
    EXPECT_NE(e, nullptr);
    exprs.push_back(e);
    return e;
  }
  std::vector<MDLexpr> exprs;
};

// max 10a + 13b + 7c + 8d + 4e subject to 3a + 4b + 2c + 3d + e <= 7, all
// binary.  By hand: the pairs and triples that fit are worth at most
// a+b 23, a+d+e 22, a+c+e 21, b+d 21, b+c+e 24, c+d+e 19 (a+c+d weighs
// 8); so the optimum is 24 with b, c and e.
TEST_F(ExprModels, KnapsackStatedThroughExpressions) {
  const double value[] = {10, 13, 7, 8, 4};
  const double weight[] = {3, 4, 2, 3, 1};
  const char *names[] = {"a", "b", "c", "d", "e"};
  std::vector<MDLvar> item;
  MDLexpr profit = track(mdlnewexpr(nullptr, nullptr, 0));
  MDLexpr load = track(mdlnewexpr(nullptr, nullptr, -7));   // load - 7 <= 0
  for (int i = 0; i < 5; i++) {
    item.push_back(mdlnewvar_prob(prob, names[i], MDL_BINARY, 0, 1));
    MDLexpr p = track(mdlnewexpr(item[i], nullptr, 1));
    ASSERT_EQ(mdlmulcexpr(p, value[i]), 0);
    ASSERT_EQ(mdladdexpr(profit, p), 0);
    ASSERT_EQ(mdladdexpr_term(load, nullptr, item[i], weight[i]), 0);
  }
  MDLctr cap = mdlnewctr_prob(prob, "capacity", MDL_NONBINDING);
  ASSERT_EQ(mdlsetctr(cap, load, MDL_LEQ), 0);
  ASSERT_EQ(mdlsetobjexpr(prob, profit), 1);
  ASSERT_EQ(mdlmaxim_prob(prob, "g"), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 24, 1e-6);
  EXPECT_NEAR(mdlevalexpr(profit), mdlgetobjval_prob(prob), 1e-6);
  const double chosen[] = {0, 1, 1, 0, 1};
  for (int i = 0; i < 5; i++) EXPECT_NEAR(mdlgetsol(item[i]), chosen[i], 1e-6) << names[i];
  EXPECT_NEAR(mdlevalexpr(load), 0, 1e-6);   // the knapsack is full
  EXPECT_NEAR(mdlgetrhs(cap), 7, 0);
  EXPECT_TRUE(errors.empty()) << errors.last().text;
}

// An assignment problem: workers i to jobs j at cost c[i][j], each worker
// one job, each job one worker, built with sums of expressions.  By hand,
// of the six permutations of the cost matrix below the cheapest is
// (0->1, 1->0, 2->2) at 2 + 3 + 1 = 6 (the others cost 7, 10, 11, 13, 15).
TEST_F(ExprModels, AssignmentStatedThroughExpressions) {
  const double cost[3][3] = {{4, 2, 8}, {3, 7, 5}, {6, 9, 1}};
  MDLvar w[3][3];
  MDLexpr total = track(mdlnewexpr(nullptr, nullptr, 0));
  for (int i = 0; i < 3; i++)
    for (int j = 0; j < 3; j++) {
      w[i][j] = mdlnewvar_prob(prob, mdlnewname("w_%d_%d", i, j), MDL_CONTINUOUS, 0, 1);
      ASSERT_EQ(mdladdexpr_term(total, w[i][j], nullptr, cost[i][j]), 0);
    }
  for (int i = 0; i < 3; i++) {
    MDLexpr worker = track(mdlnewexpr(nullptr, nullptr, -1));
    MDLexpr job = track(mdlnewexpr(nullptr, nullptr, -1));
    for (int j = 0; j < 3; j++) {
      MDLexpr one = mdlnewexpr(w[i][j], nullptr, 1);
      ASSERT_EQ(mdladdexpr(worker, one), 0);
      ASSERT_EQ(mdlassignexpr(one, nullptr), 0);
      ASSERT_EQ(mdladdexpr_term(one, w[j][i], nullptr, 1), 0);
      ASSERT_EQ(mdladdexpr(job, one), 0);
      mdldelexpr(one);
    }
    ASSERT_EQ(mdlsetctr(mdlnewctr_prob(prob, mdlnewname("worker_%d", i), MDL_NONBINDING), worker,
                        MDL_EQ), 0);
    MDLctr jc = mdlnewctr_prob(prob, mdlnewname("job_%d", i), MDL_NONBINDING);
    ASSERT_EQ(mdlsetctr(jc, nullptr, MDL_EQ), 0);
    ASSERT_EQ(mdlappctr(jc, job), 0);
  }
  ASSERT_EQ(mdlsetobjexpr(prob, total), 1);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 6, 1e-6);
  EXPECT_NEAR(mdlevalexpr(total), mdlgetobjval_prob(prob), 1e-6);
  EXPECT_NEAR(mdlgetsol(w[0][1]) + mdlgetsol(w[1][0]) + mdlgetsol(w[2][2]), 3, 1e-6);
  EXPECT_TRUE(errors.empty()) << errors.last().text;
}

// min (x - 1)^2 + (y - 2)^2 subject to x + y <= 2: the nearest point of the
// half-plane to (1, 2) is (0.5, 1.5), at squared distance 0.5.
TEST_F(ExprModels, SquaresFromExpressionProducts) {
  MDLvar x = mdlnewvar_prob(prob, "x", MDL_CONTINUOUS, -10, 10);
  MDLvar y = mdlnewvar_prob(prob, "y", MDL_CONTINUOUS, -10, 10);
  MDLexpr dx = track(mdlnewexpr(x, nullptr, 1));
  ASSERT_EQ(mdladdexpr_term(dx, nullptr, nullptr, -1), 0);
  MDLexpr dy = track(mdlnewexpr(y, nullptr, 1));
  ASSERT_EQ(mdladdexpr_term(dy, nullptr, nullptr, -2), 0);
  ASSERT_EQ(mdlmulexpr(dx, dx), 0);
  ASSERT_EQ(mdlmulexpr(dy, dy), 0);
  ASSERT_EQ(mdladdexpr(dx, dy), 0);
  ASSERT_EQ(mdlgetstatexpr(dx), 3);
  MDLexpr sum = track(mdlnewexpr(x, nullptr, 1));
  ASSERT_EQ(mdladdexpr_term(sum, y, nullptr, 1), 0);
  ASSERT_EQ(mdladdexpr_term(sum, nullptr, nullptr, -2), 0);
  ASSERT_EQ(mdlsetctr(mdlnewctr_prob(prob, "half", MDL_NONBINDING), sum, MDL_LEQ), 0);
  ASSERT_EQ(mdlsetobjexpr(prob, dx), 1);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_NEAR(mdlgetsol(x), 0.5, 1e-5);
  EXPECT_NEAR(mdlgetsol(y), 1.5, 1e-5);
  EXPECT_NEAR(mdlevalexpr(dx), 0.5, 1e-5);
  // The objective value counts the expression's constant 1 + 4 too.
  EXPECT_NEAR(mdlgetobjval_prob(prob), mdlevalexpr(dx), 1e-5);
  EXPECT_TRUE(errors.empty()) << errors.last().text;
}

// A variable made after the last optimisation has no column: it counts
// with the feasible value nearest to 0.
TEST_F(ExprModels, VariableWithoutColumnCountsNearestToZero) {
  build_small();
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  MDLvar late = mdlnewvar_prob(prob, "late", MDL_CONTINUOUS, 2, 5);
  MDLexpr e = track(mdlnewexpr(late, nullptr, 1));
  EXPECT_EQ(mdlevalexpr(e), 2);
  MDLexpr f = track(mdlnewexpr(x, nullptr, 2));
  ASSERT_EQ(mdladdexpr_term(f, y, nullptr, 1), 0);
  ASSERT_EQ(mdladdexpr(f, e), 0);
  EXPECT_NEAR(mdlevalexpr(f), 2 * 3 + 1 + 2, 1e-9);
  EXPECT_TRUE(errors.empty()) << errors.last().text;
}

}  // namespace
