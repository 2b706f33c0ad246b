/*
 * expr_test.cpp -- expression objects case by case: creation, terms,
 * scaling, sums, products, status, evaluation, their text and printing,
 * constraints, objective and sets made from them, and their messages.
 */
#include <math.h>
#include <string.h>

#include "support.h"

namespace exprtest {
namespace {

using lmap = termtest::value_map<mdl_term>;
using qmap = termtest::value_map<mdl_qterm>;

class Expr : public ExprTest {
 protected:
  void SetUp() override {
    ExprTest::SetUp();
    make_named(6);
    x = v[0];
    y = v[1];
    z = v[2];
  }
  MDLvar x = nullptr, y = nullptr, z = nullptr;
};

// ---- Creation and terms ------------------------------------------------------

TEST_F(Expr, NewExpressionHoldsOneTerm) {
  EXPECT_EQ(value_of(expr(x, nullptr, 2)), (expr_value{0, lmap{{k(x), 2}}, {}}));
  EXPECT_EQ(value_of(expr(nullptr, y, 3)), (expr_value{0, lmap{{k(y), 3}}, {}}));
  EXPECT_EQ(value_of(expr(y, x, 4)), (expr_value{0, {}, qmap{{k(x, y), 4}}}));
  EXPECT_EQ(value_of(expr(nullptr, nullptr, 5)), (expr_value{5, {}, {}}));
  MDLexpr e = expr(x, y, 0);
  EXPECT_EQ(e->lin, nullptr);
  EXPECT_EQ(e->quad, nullptr);
  EXPECT_EQ(e->constant, 0);
  expect_none();
}

TEST_F(Expr, AddTermPlacesTermsAndSkipsZero) {
  MDLexpr e = expr();
  EXPECT_EQ(mdladdexpr_term(e, x, nullptr, 1), 0);
  EXPECT_EQ(mdladdexpr_term(e, nullptr, x, 2), 0);
  EXPECT_EQ(mdladdexpr_term(e, z, x, 5), 0);   // pair stored smaller handle first
  EXPECT_EQ(mdladdexpr_term(e, nullptr, nullptr, -4), 0);
  EXPECT_EQ(mdladdexpr_term(e, y, nullptr, 0), 0);
  EXPECT_EQ(value_of(e), (expr_value{-4, lmap{{k(x), 3}}, qmap{{k(x, z), 5}}}));
}

TEST_F(Expr, SetTermSetsAndRemoves) {
  MDLexpr e = expr();
  mdladdexpr_term(e, x, nullptr, 1);
  mdladdexpr_term(e, z, nullptr, 1);
  mdladdexpr_term(e, y, nullptr, 1);   // pending inside the run
  EXPECT_EQ(mdlsetexpr_term(e, y, nullptr, 5), 0);
  EXPECT_EQ(mdlsetexpr_term(e, nullptr, nullptr, 7), 0);
  EXPECT_EQ(mdlsetexpr_term(e, z, y, 2), 0);
  EXPECT_EQ(mdlsetexpr_term(e, y, z, 3), 0);   // the same pair in the other order
  EXPECT_EQ(value_of(e), (expr_value{7, lmap{{k(x), 1}, {k(y), 5}, {k(z), 1}}, qmap{{k(y, z), 3}}}));
  EXPECT_EQ(mdlsetexpr_term(e, nullptr, z, 0), 0);   // zero removes
  EXPECT_EQ(mdlsetexpr_term(e, y, z, 0), 0);
  EXPECT_EQ(mdlsetexpr_term(e, nullptr, nullptr, 0), 0);
  EXPECT_EQ(value_of(e), (expr_value{0, lmap{{k(x), 1}, {k(y), 5}}, {}}));
}

TEST_F(Expr, ClearAndDelete) {
  MDLexpr e = mdlnewexpr(x, nullptr, 2);
  mdladdexpr_term(e, x, y, 3);
  mdladdexpr_term(e, nullptr, nullptr, 3);
  const int refs = prob->refcount;
  EXPECT_EQ(mdlclearexpr(e), 0);
  EXPECT_EQ(e->lin, nullptr);
  EXPECT_EQ(e->quad, nullptr);
  EXPECT_EQ(e->constant, 0);
  EXPECT_EQ(prob->refcount, refs - 2);   // both headers gave their reference back
  mdladdexpr_term(e, x, nullptr, 2);
  EXPECT_EQ(mdldelexpr(e), 0);
  EXPECT_EQ(prob->refcount, refs - 2);
  EXPECT_EQ(mdldelexpr(nullptr), 0);
  EXPECT_EQ(mdlclearexpr(nullptr), 0);
}

TEST_F(Expr, DuplicateAndAssignCopyPendingOperations) {
  MDLexpr e = expr(x, nullptr, 1);
  mdladdexpr_term(e, z, nullptr, 2);
  mdlsetexpr_term(e, y, nullptr, 3);   // a pending set
  mdladdexpr_term(e, x, z, 4);
  mdladdexpr_term(e, nullptr, nullptr, 9);
  MDLexpr d = nullptr;
  ASSERT_EQ(mdldupexpr(&d, e), 0);
  owned.push_back(d);
  EXPECT_EQ(value_of(d), value_of(e));
  EXPECT_EQ(d->lin->resets, e->lin->resets);
  MDLexpr a = expr(y, y, 8);
  EXPECT_EQ(mdlassignexpr(a, e), 0);
  EXPECT_EQ(value_of(a), value_of(e));
  EXPECT_EQ(mdlassignexpr(a, a), 0);
  EXPECT_EQ(value_of(a), value_of(e));
  EXPECT_EQ(mdlassignexpr(a, nullptr), 0);
  EXPECT_EQ(value_of(a), expr_value{});
  MDLexpr n = nullptr;
  ASSERT_EQ(mdldupexpr(&n, nullptr), 0);
  owned.push_back(n);
  EXPECT_EQ(value_of(n), expr_value{});
}

// ---- Scaling and sums ------------------------------------------------------------

TEST_F(Expr, ScalingByConstants) {
  MDLexpr e = expr(x, nullptr, 1);
  mdladdexpr_term(e, z, nullptr, 2);
  mdladdexpr_term(e, y, nullptr, 3);   // pending
  mdladdexpr_term(e, x, y, 4);
  mdladdexpr_term(e, nullptr, nullptr, 5);
  EXPECT_EQ(mdlmulcexpr(e, 2), 0);
  EXPECT_EQ(value_of(e), (expr_value{10, lmap{{k(x), 2}, {k(y), 6}, {k(z), 4}}, qmap{{k(x, y), 8}}}));
  EXPECT_EQ(mdlmulcexpr(e, -1), 0);
  EXPECT_EQ(value_of(e), (expr_value{-10, lmap{{k(x), -2}, {k(y), -6}, {k(z), -4}}, qmap{{k(x, y), -8}}}));
  EXPECT_EQ(mdlchsexpr(e), 0);
  EXPECT_EQ(value_of(e), (expr_value{10, lmap{{k(x), 2}, {k(y), 6}, {k(z), 4}}, qmap{{k(x, y), 8}}}));
  EXPECT_EQ(mdlmulcexpr(e, 0), 0);
  EXPECT_EQ(e->lin, nullptr);
  EXPECT_EQ(e->quad, nullptr);
  EXPECT_EQ(e->constant, 0);
}

TEST_F(Expr, NegatingKeepsPendingSetsMeaningful) {
  MDLexpr e = expr(x, nullptr, 1);
  mdladdexpr_term(e, z, nullptr, 1);
  mdlsetexpr_term(e, y, nullptr, 4);   // reset marker then 4
  mdlchsexpr(e);
  EXPECT_EQ(value_of(e), (expr_value{0, lmap{{k(x), -1}, {k(y), -4}, {k(z), -1}}, {}}));
}

TEST_F(Expr, AddExpressionAddsConstantsAndLists) {
  MDLexpr a = expr(x, nullptr, 1);
  mdladdexpr_term(a, nullptr, nullptr, 1);
  MDLexpr b = expr(y, nullptr, 2);
  mdladdexpr_term(b, x, y, 3);
  mdladdexpr_term(b, nullptr, nullptr, 4);
  EXPECT_EQ(mdladdexpr(a, b), 0);
  EXPECT_EQ(value_of(a), (expr_value{5, lmap{{k(x), 1}, {k(y), 2}}, qmap{{k(x, y), 3}}}));
  EXPECT_EQ(value_of(b), (expr_value{4, lmap{{k(y), 2}}, qmap{{k(x, y), 3}}}));
  EXPECT_EQ(mdladdexpr(a, a), 0);
  EXPECT_EQ(value_of(a), (expr_value{10, lmap{{k(x), 2}, {k(y), 4}}, qmap{{k(x, y), 6}}}));
  EXPECT_EQ(mdladdexpr(a, nullptr), 0);
  EXPECT_EQ(value_of(a), (expr_value{10, lmap{{k(x), 2}, {k(y), 4}}, qmap{{k(x, y), 6}}}));
}

// x + 2y + 3z plus its negated copy: nothing is left, not even a header.
TEST_F(Expr, AddingNegatedCopyLeavesNoLists) {
  MDLexpr a = expr(z, nullptr, 3);
  mdladdexpr_term(a, x, nullptr, 1);
  mdladdexpr_term(a, y, nullptr, 2);   // pending
  mdladdexpr_term(a, x, z, 2);
  MDLexpr b = nullptr;
  ASSERT_EQ(mdldupexpr(&b, a), 0);
  owned.push_back(b);
  mdlchsexpr(b);
  EXPECT_EQ(mdladdexpr(a, b), 0);
  EXPECT_EQ(a->lin, nullptr);
  EXPECT_EQ(a->quad, nullptr);
  EXPECT_EQ(mdlgetstatexpr(a), 0);
}

// ---- Products ------------------------------------------------------------------

TEST_F(Expr, ProductOfTwoLinearExpressions) {
  MDLexpr a = expr(x, nullptr, 1);
  mdladdexpr_term(a, nullptr, nullptr, 1);
  MDLexpr b = expr(y, nullptr, 1);
  mdladdexpr_term(b, nullptr, nullptr, 2);
  EXPECT_EQ(mdlmulexpr(a, b), 0);
  EXPECT_EQ(value_of(a), (expr_value{2, lmap{{k(x), 2}, {k(y), 1}}, qmap{{k(x, y), 1}}}));
  EXPECT_EQ(value_of(b), (expr_value{2, lmap{{k(y), 1}}, {}}));
  EXPECT_EQ(str(a, MDL_NONBINDING), "x0*x1 + 2*x0 + x1  + 2");
  expect_none();
}

TEST_F(Expr, ProductAboveDegreeTwoIsRefusedWithoutChange) {
  MDLexpr a = expr(x, y, 1);
  MDLexpr b = expr(z, nullptr, 1);
  const expr_value before = value_of(a);
  EXPECT_EQ(mdlmulexpr(a, b), 1);
  EXPECT_EQ(value_of(a), before);
  MDLexpr q = expr(z, z, 1);
  EXPECT_EQ(mdlmulexpr(a, q), 1);
  EXPECT_EQ(value_of(a), before);
  EXPECT_EQ(mdlmulexpr(b, q), 1);   // linear times quadratic
  EXPECT_EQ(value_of(b), (expr_value{0, lmap{{k(z), 1}}, {}}));
  expect_none();   // the caller reports it
}

TEST_F(Expr, ProductCasesWithConstants) {
  MDLexpr q = expr(x, y, 2);   // quadratic times a constant
  mdladdexpr_term(q, nullptr, nullptr, 1);
  MDLexpr three = expr(nullptr, nullptr, 3);
  EXPECT_EQ(mdlmulexpr(q, three), 0);
  EXPECT_EQ(value_of(q), (expr_value{3, {}, qmap{{k(x, y), 6}}}));
  MDLexpr c = expr(nullptr, nullptr, 2);   // constant times quadratic
  EXPECT_EQ(mdlmulexpr(c, q), 0);
  EXPECT_EQ(value_of(c), (expr_value{6, {}, qmap{{k(x, y), 12}}}));
  MDLexpr zero = expr();   // zero times quadratic stays zero
  EXPECT_EQ(mdlmulexpr(zero, q), 0);
  EXPECT_EQ(value_of(zero), expr_value{});
  MDLexpr l = expr(x, nullptr, 2);   // linear times constant
  EXPECT_EQ(mdlmulexpr(l, three), 0);
  EXPECT_EQ(value_of(l), (expr_value{0, lmap{{k(x), 6}}, {}}));
  MDLexpr c2 = expr(nullptr, nullptr, -1);   // constant times linear
  EXPECT_EQ(mdlmulexpr(c2, l), 0);
  EXPECT_EQ(value_of(c2), (expr_value{0, lmap{{k(x), -6}}, {}}));
  EXPECT_EQ(mdlmulexpr(l, nullptr), 0);   // times the empty expression
  EXPECT_EQ(value_of(l), expr_value{});
}

TEST_F(Expr, ProductOfOverlappingSumsAndSquares) {
  MDLexpr a = expr(x, nullptr, 1);
  mdladdexpr_term(a, y, nullptr, -1);
  mdladdexpr_term(a, nullptr, nullptr, 3);
  EXPECT_EQ(mdlmulexpr(a, a), 0);   // (x - y + 3)^2
  EXPECT_EQ(value_of(a), (expr_value{9, lmap{{k(x), 6}, {k(y), -6}},
                                     qmap{{k(x, x), 1}, {k(x, y), -2}, {k(y, y), 1}}}));
  MDLexpr b = expr(x, nullptr, 1);   // (x + y)(x - y): the cross terms cancel
  mdladdexpr_term(b, y, nullptr, 1);
  MDLexpr c = expr(x, nullptr, 1);
  mdladdexpr_term(c, y, nullptr, -1);
  EXPECT_EQ(mdlmulexpr(b, c), 0);
  EXPECT_EQ(value_of(b), (expr_value{0, {}, qmap{{k(x, x), 1}, {k(y, y), -1}}}));
}

// ---- Status and evaluation -----------------------------------------------------------

TEST_F(Expr, StatusTellsWhichTermsThereAre) {
  MDLexpr e = expr(nullptr, nullptr, 4);
  EXPECT_EQ(mdlgetstatexpr(e), 0);
  mdladdexpr_term(e, x, nullptr, 1);
  EXPECT_EQ(mdlgetstatexpr(e), 1);
  mdladdexpr_term(e, x, y, 1);
  EXPECT_EQ(mdlgetstatexpr(e), 3);
  mdladdexpr_term(e, x, nullptr, -1);   // a zero node is left: no linear term
  ASSERT_NE(e->lin, nullptr);
  EXPECT_EQ(mdlgetstatexpr(e), 2);
  EXPECT_EQ(mdlgetstatexpr(nullptr), 0);
}

TEST_F(Expr, StatusStripsAListWhoseFirstNodeIsZero) {
  MDLexpr e = expr(x, nullptr, 1);
  mdladdexpr_term(e, z, nullptr, 1);
  mdladdexpr_term(e, y, nullptr, 1);    // pending
  mdladdexpr_term(e, x, nullptr, -1);   // zero first kept while y is pending
  mdladdexpr_term(e, z, nullptr, -1);
  EXPECT_EQ(mdlgetstatexpr(e), 1);
  EXPECT_EQ(e->lin->pending, 0);
  mdlsetexpr_term(e, y, nullptr, 0);
  EXPECT_EQ(mdlgetstatexpr(e), 0);
  EXPECT_EQ(e->lin, nullptr);
}

// x cancelled on `last` stays as a zero node; y beyond it is stored after
// it without anything pending, so the zero first node survives a strip.
TEST_F(Expr, StatusLooksPastAZeroFirstNodeWithNothingPending) {
  MDLexpr e = expr(x, nullptr, 1);
  mdladdexpr_term(e, x, nullptr, -1);
  mdladdexpr_term(e, y, nullptr, 2);
  ASSERT_EQ(static_cast<mdl_term *>(e->lin->first)->coef, 0.0);
  ASSERT_EQ(e->lin->pending, 0);
  EXPECT_EQ(mdlgetstatexpr(e), 1);
  MDLexpr q = expr(x, x, 1);
  mdladdexpr_term(q, x, x, -1);
  mdladdexpr_term(q, y, y, 3);
  EXPECT_EQ(mdlgetstatexpr(q), 2);
  MDLexpr lin = expr(z, nullptr, 1);
  EXPECT_EQ(mdlmulexpr(q, lin), 1);   // it is quadratic: the product is refused
}

TEST_F(Expr, EvaluationWithoutColumnsUsesValuesNearestZero) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, 2, 5);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, -4, -1);
  MDLvar c = mdlnewvar_prob(prob, "c", MDL_INTEGER, -3, 8);
  MDLexpr e = expr(a, nullptr, 3);
  mdladdexpr_term(e, b, nullptr, 2);
  mdladdexpr_term(e, c, nullptr, 100);   // 0 is feasible: contributes nothing
  mdladdexpr_term(e, a, b, 5);
  mdladdexpr_term(e, a, c, 7);
  mdladdexpr_term(e, nullptr, nullptr, 0.5);
  EXPECT_DOUBLE_EQ(mdlevalexpr(e), 0.5 + 3 * 2 + 2 * -1 + 5 * 2 * -1);
  EXPECT_EQ(mdlevalexpr(nullptr), 0.0);
  expect_none();
}

TEST_F(Expr, EvaluationAppliesPendingOperations) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, 1, 5);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, 2, 5);
  MDLvar c = mdlnewvar_prob(prob, "c", MDL_CONTINUOUS, 3, 5);
  MDLexpr e = expr(a, nullptr, 1);
  mdladdexpr_term(e, c, nullptr, 1);
  mdladdexpr_term(e, b, nullptr, 1);
  mdladdexpr_term(e, b, nullptr, 1);   // two pending adds: summed in place
  EXPECT_EQ(mdlevalexpr(e), 1 + 3 + 2 * 2);
  EXPECT_EQ(e->lin->pending, 2);
  mdlsetexpr_term(e, b, nullptr, 10);   // a pending set: merged first
  EXPECT_EQ(mdlevalexpr(e), 1 + 3 + 10 * 2);
  EXPECT_EQ(e->lin->pending, 0);
}

// ---- Text ------------------------------------------------------------------------

TEST_F(Expr, TextOfEmptyExpressionAndConstants) {
  MDLexpr e = expr();
  EXPECT_EQ(str(e, MDL_NONBINDING), "0");
  EXPECT_EQ(str(e, MDL_LEQ), "0 <= 0");
  EXPECT_EQ(str(e, MDL_GEQ), "0 >= 0");
  EXPECT_EQ(str(e, MDL_EQ), "0 = 0");
  EXPECT_EQ(str(e, MDL_RANGE), "0");
  mdlsetexpr_term(e, nullptr, nullptr, -5);
  EXPECT_EQ(str(e, MDL_NONBINDING), "-5");
  EXPECT_EQ(str(e, MDL_LEQ), "0 <= 5");
  mdlsetexpr_term(e, nullptr, nullptr, 5);
  EXPECT_EQ(str(e, MDL_NONBINDING), "5");
  EXPECT_EQ(str(e, MDL_EQ), "0 = -5");
  EXPECT_EQ(str(nullptr, MDL_LEQ), "0 <= 0");
}

TEST_F(Expr, TextOfTermsAndRelations) {
  MDLexpr e = expr(x, nullptr, 1);
  mdladdexpr_term(e, nullptr, nullptr, -1);
  EXPECT_EQ(str(e, MDL_EQ), "x0  = 1");
  EXPECT_EQ(str(e, MDL_LEQ), "x0  <= 1");
  EXPECT_EQ(str(e, MDL_GEQ), "x0  >= 1");
  EXPECT_EQ(str(e, MDL_NONBINDING), "x0  - 1");
  EXPECT_EQ(str(e, MDL_RANGE), "x0 0");   // no relation: the number 0 follows
  EXPECT_EQ(str(e, 7), "x0 0");
  MDLexpr f = expr(x, nullptr, 2);
  mdladdexpr_term(f, y, nullptr, 1);
  mdladdexpr_term(f, x, z, -3);
  EXPECT_EQ(str(f, MDL_NONBINDING), "- 3*x0*x2 + 2*x0 + x1 ");
  EXPECT_EQ(str(f, MDL_LEQ), "- 3*x0*x2 + 2*x0 + x1  <= 0");
  mdladdexpr_term(f, y, y, -1);
  mdladdexpr_term(f, z, z, 2.5);
  mdladdexpr_term(f, nullptr, nullptr, 4);
  EXPECT_EQ(str(f, MDL_NONBINDING), "- 3*x0*x2 - x1^2 + 2.5*x2^2 + 2*x0 + x1  + 4");
  EXPECT_EQ(str(f, MDL_GEQ), "- 3*x0*x2 - x1^2 + 2.5*x2^2 + 2*x0 + x1  >= -4");
}

TEST_F(Expr, TextUsesTheProblemsNumberFormatAndGeneratedNames) {
  ASSERT_EQ(mdlsetrealfmt_prob(prob, "%.2f"), 0);
  MDLvar anon = mdlnewvar_prob(prob, nullptr, MDL_CONTINUOUS, 0, 1);
  MDLexpr e = expr(x, nullptr, 1.5);
  mdladdexpr_term(e, nullptr, nullptr, 2);
  EXPECT_EQ(str(e, MDL_LEQ), "1.50*x0  <= -2.00");
  MDLexpr c = expr(nullptr, nullptr, 2);   // no term written: "%g"
  EXPECT_EQ(str(c, MDL_LEQ), "0 <= -2");
  EXPECT_EQ(str(expr(anon, nullptr, -1), MDL_NONBINDING), "- VAR ");
  // Without names, a variable is shown by its generated name.
  MDLprob other = mdlnewprob(nullptr);
  ASSERT_NE(other, nullptr);
  ASSERT_EQ(mdlsetdictsize_prob(other, 0, 0), 0);
  MDLvar unnamed = mdlnewvar_prob(other, nullptr, MDL_CONTINUOUS, 0, 1);
  MDLexpr g = mdlnewexpr(unnamed, nullptr, -1);
  char buf[32];
  EXPECT_EQ(str(g, MDL_NONBINDING), std::string("- ") + mdlmktn(buf, unnamed) + " ");
  mdldelexpr(g);
  mdldelprob_prob(other);
}

TEST_F(Expr, TextSkipsZeroTermsAndGrowsBeyondItsFirstBlock) {
  std::vector<MDLvar> many;
  std::string want;
  MDLexpr e = expr();
  for (int i = 0; i < 400; i++) {
    MDLvar var = mdlnewvar_prob(prob, mdlnewname("a_rather_long_variable_name_%d", i),
                                MDL_CONTINUOUS, 0, 1);
    many.push_back(var);
  }
  std::sort(many.begin(), many.end());
  for (size_t i = 0; i < many.size(); i++) {
    const double coef = i % 3 == 0 ? 0.0 : -static_cast<double>(i + 1);
    mdladdexpr_term(e, many[i], nullptr, coef);
    if (coef != 0 && i != 398) want += "- " + std::to_string(i + 1) + "*" + mdlgetvarname(many[i]) + " ";
  }
  mdladdexpr_term(e, many[398], nullptr, 399);   // a zero node left at the end of the run
  ASSERT_EQ(static_cast<mdl_term *>(e->lin->last)->coef, 0.0);
  ASSERT_GT(want.size(), 4096u);
  EXPECT_EQ(str(e, MDL_GEQ), want + " >= 0");
}

// ---- Printing --------------------------------------------------------------------------

TEST_F(Expr, PrintingTermsAndRelations) {
  MDLexpr f = expr(x, nullptr, 2);
  mdladdexpr_term(f, y, nullptr, 1);
  mdladdexpr_term(f, x, z, -3);
  mdladdexpr_term(f, y, y, 1);
  mdladdexpr_term(f, z, z, -2);
  EXPECT_EQ(printed(prob, f, MDL_NONBINDING, 0), "- 3*x0*x2 + x1^2 - 2*x2^2 + 2*x0 + x1\n");
  mdladdexpr_term(f, nullptr, nullptr, -4);
  EXPECT_EQ(printed(prob, f, MDL_NONBINDING, 0), "- 3*x0*x2 + x1^2 - 2*x2^2 + 2*x0 + x1 - 4\n");
  EXPECT_EQ(printed(prob, f, MDL_LEQ, 0), "- 3*x0*x2 + x1^2 - 2*x2^2 + 2*x0 + x1 <= 4\n");
  EXPECT_EQ(printed(prob, f, MDL_GEQ, 0), "- 3*x0*x2 + x1^2 - 2*x2^2 + 2*x0 + x1 >= 4\n");
  EXPECT_EQ(printed(prob, f, MDL_EQ, 0), "- 3*x0*x2 + x1^2 - 2*x2^2 + 2*x0 + x1 = 4\n");
  EXPECT_EQ(printed(prob, f, MDL_RANGE, 3), "- 3*x0*x2 + x1^2 - 2*x2^2 + 2*x0 + x1 in [1,4]\n");
  EXPECT_EQ(printed(prob, f, 6, 3), "- 3*x0*x2 + x1^2 - 2*x2^2 + 2*x0 + x1\n");
  MDLexpr g = expr(x, nullptr, 1);
  EXPECT_EQ(printed(prob, g, MDL_LEQ, 0), "x0 <= 0\n");
  EXPECT_EQ(printed(prob, g, MDL_RANGE, 2.5), "x0 in [-2.5,0]\n");
  EXPECT_EQ(printed(prob, g, MDL_NONBINDING, 0), "x0\n");
  mdladdexpr_term(g, nullptr, nullptr, 1);
  EXPECT_EQ(printed(prob, g, MDL_NONBINDING, 0), "x0 + 1\n");
  MDLexpr e = expr();
  EXPECT_EQ(printed(prob, e, MDL_NONBINDING, 0), "0\n");
  EXPECT_EQ(printed(prob, e, MDL_LEQ, 0), "0 <= 0\n");
  EXPECT_EQ(printed(prob, nullptr, MDL_EQ, 0), "0 = 0\n");
}

// Without terms, "0" stands for them except for type N with a constant;
// the constant then follows its sign as after terms.
TEST_F(Expr, PrintingConstantsWithoutTerms) {
  MDLexpr c = expr(nullptr, nullptr, -5);
  EXPECT_EQ(printed(prob, c, MDL_NONBINDING, 0), " - 5\n");
  EXPECT_EQ(printed(prob, c, MDL_LEQ, 0), "0 <= 5\n");
  EXPECT_EQ(printed(prob, c, MDL_RANGE, 2), "0 in [3,5]\n");
  mdlsetexpr_term(c, nullptr, nullptr, 5);
  EXPECT_EQ(printed(prob, c, MDL_NONBINDING, 0), " + 5\n");
  EXPECT_EQ(printed(prob, c, MDL_GEQ, 0), "0 >= -5\n");
}

TEST_F(Expr, PrintingGoesThroughTheProblemsOutput) {
  MDLexpr g = expr(x, nullptr, 1);
  out.probs.clear();
  EXPECT_EQ(printed(prob, g, MDL_EQ, 0), "x0 = 0\n");
  ASSERT_FALSE(out.probs.empty());
  for (MDLprob p : out.probs) EXPECT_EQ(p, prob);
}

TEST_F(Expr, PrintingUsesTheGivenProblemsFormat) {
  MDLexpr g = expr(x, nullptr, 0.125);
  mdladdexpr_term(g, nullptr, nullptr, 1);
  ASSERT_EQ(mdlsetrealfmt_prob(prob, "%.1f"), 0);
  EXPECT_EQ(printed(prob, g, MDL_EQ, 0), "0.1*x0 = -1.0\n");
  out.text.clear();
  EXPECT_EQ(mdlprintexpr(nullptr, g, MDL_EQ, 0), 0);   // default format, default output
  EXPECT_EQ(out.text, "0.125*x0 = -1\n");
}

TEST_F(Expr, PrintingWrapsLongLines) {
  std::vector<MDLvar> many;
  MDLexpr e = expr();
  for (int i = 0; i < 30; i++)
    many.push_back(mdlnewvar_prob(prob, mdlnewname("v%02d", i), MDL_CONTINUOUS, 0, 1));
  std::sort(many.begin(), many.end());
  std::string want;
  int line = 0;
  for (size_t i = 0; i < many.size(); i++) {
    mdladdexpr_term(e, many[i], nullptr, i + 1);
    std::string piece = (i == 0 ? "" : " + ") + (i == 0 ? "" : std::to_string(i + 1) + "*") +
                        mdlgetvarname(many[i]);
    if (line > 75) {
      want += "\n";
      line = 0;
    }
    want += piece;
    line += static_cast<int>(piece.size());
  }
  want += " <= 0\n";
  ASSERT_NE(want.find('\n'), want.size() - 1);
  EXPECT_EQ(printed(prob, e, MDL_LEQ, 0), want);
  // The first break comes after the piece that took the line beyond 75.
  const std::string first_line = want.substr(0, want.find('\n'));
  EXPECT_GT(first_line.size(), 75u);
  EXPECT_LE(first_line.size() - std::string(" + 99*v99").size(), 75u);
}

// ---- Constraints, objective and sets --------------------------------------------

TEST_F(Expr, ConstraintFromExpression) {
  MDLctr c = mdlnewctr_prob(prob, "c", MDL_NONBINDING);
  MDLexpr e = expr(x, nullptr, 1);
  mdladdexpr_term(e, y, nullptr, 2);
  mdladdexpr_term(e, x, y, 3);
  mdladdexpr_term(e, nullptr, nullptr, -7);
  clear_status();
  EXPECT_EQ(mdlsetctr(c, e, MDL_LEQ), 0);
  EXPECT_EQ(stat() & MDL_ST_MODIFIED, MDL_ST_MODIFIED);
  EXPECT_EQ(mdlgetctrtype(c), MDL_LEQ);
  EXPECT_EQ(mdlgetrhs(c), 7);
  EXPECT_EQ(mdlgetcoeff(c, y), 2);
  EXPECT_EQ(mdlgetqcoeff(c, y, x), 3);
  EXPECT_EQ(value_of(&c->expr), value_of(e));
  EXPECT_EQ(mdlsetctr(c, e, 9), 0);   // no range check on the type
  EXPECT_EQ(mdlsetctr(c, e, MDL_EQ), 0);
  clear_status();
  EXPECT_EQ(mdlappctr(c, e), 0);
  EXPECT_EQ(stat() & MDL_ST_MODIFIED, MDL_ST_MODIFIED);
  EXPECT_EQ(mdlgetrhs(c), 14);
  EXPECT_EQ(mdlgetcoeff(c, x), 2);
  EXPECT_EQ(mdlgetctrtype(c), MDL_EQ);
  EXPECT_EQ(mdlsetctr(c, nullptr, MDL_GEQ), 0);   // the empty expression
  EXPECT_EQ(mdlgetctrsize(c), 0);
  EXPECT_EQ(mdlgetrhs(c), 0);
  expect_none();
}

TEST_F(Expr, ObjectiveFromExpression) {
  MDLctr c = mdlnewctr_prob(prob, "c", MDL_NONBINDING);
  mdlsetobj_prob(prob, c);
  MDLexpr e = expr(x, nullptr, 4);
  mdladdexpr_term(e, x, x, 1);
  clear_status();
  EXPECT_EQ(mdlsetobjexpr(prob, e), 1);
  EXPECT_EQ(prob->objective, &prob->objrec);
  EXPECT_EQ(stat() & MDL_ST_MODIFIED, MDL_ST_MODIFIED);
  EXPECT_EQ(value_of(&prob->objrec.expr), value_of(e));
  EXPECT_EQ(mdlgetctrtype(&prob->objrec), MDL_NONBINDING);
  expect_none();
}

TEST_F(Expr, SetMembersFromExpression) {
  MDLsos s = mdlnewsos_prob(prob, "s", MDL_SOS1);
  mdladdsosel(s, z, 9);
  MDLexpr e = expr(x, nullptr, 1);
  mdladdexpr_term(e, y, nullptr, 2);
  mdladdexpr_term(e, x, y, 5);            // ignored
  mdladdexpr_term(e, nullptr, nullptr, 3);   // ignored
  clear_status();
  EXPECT_EQ(mdlsetsos(s, e), 0);
  EXPECT_EQ(stat() & MDL_ST_MODIFIED, MDL_ST_MODIFIED);
  EXPECT_EQ(termtest::value_of<mdl_term>(s->elements), (lmap{{k(x), 1}, {k(y), 2}}));
  clear_status();
  EXPECT_EQ(mdlappsos(s, e), 0);
  EXPECT_EQ(stat() & MDL_ST_MODIFIED, MDL_ST_MODIFIED);
  EXPECT_EQ(termtest::value_of<mdl_term>(s->elements), (lmap{{k(x), 2}, {k(y), 4}}));
  EXPECT_EQ(mdlappsos(s, nullptr), 0);
  EXPECT_EQ(mdlsetsos(s, nullptr), 0);
  EXPECT_EQ(s->elements, nullptr);
  expect_none();
}

// ---- Messages -------------------------------------------------------------------

TEST_F(Expr, MissingRecordsAreReported) {
  MDLexpr e = expr(x, nullptr, 1);
  EXPECT_EQ(mdlsetctr(nullptr, e, MDL_LEQ), -1);
  expect_one(1507, 1, "(setctr) No constraint given.");
  EXPECT_EQ(mdlappctr(nullptr, e), -1);
  expect_one(1507, 1, "(appctr) No constraint given.");
  EXPECT_EQ(mdlsetsos(nullptr, e), -1);
  expect_one(1508, 1, "(setsos) No SOS given.");
  EXPECT_EQ(mdlappsos(nullptr, e), -1);
  expect_one(1508, 1, "(appsos) No SOS given.");
  EXPECT_EQ(mdlsetobjexpr(nullptr, e), -1);
  expect_one(1501, 1, "(setobjexpr) No active problem.");
}

TEST_F(Expr, MissingTargetExpressionsAreReported) {
  MDLexpr e = expr(x, nullptr, 1);
  EXPECT_EQ(mdlassignexpr(nullptr, e), -1);
  expect_one(1565, 1, "(assignexpr) Internal error.");
  EXPECT_EQ(mdladdexpr(nullptr, e), -1);
  expect_one(1565, 1, "(addexpr) Internal error.");
  EXPECT_EQ(mdladdexpr_term(nullptr, x, nullptr, 1), 1);
  expect_one(1565, 1, "(addexpr_term) Internal error.");
  EXPECT_EQ(mdlsetexpr_term(nullptr, x, nullptr, 1), 1);
  expect_one(1565, 1, "(setexpr_term) Internal error.");
  EXPECT_EQ(mdlmulcexpr(nullptr, 2), -1);
  expect_one(1565, 1, "(mulcexpr) Internal error.");
  EXPECT_EQ(mdlchsexpr(nullptr), -1);
  expect_one(1565, 1, "(chsexpr) Internal error.");
  EXPECT_EQ(mdlmulexpr(nullptr, e), -1);
  expect_one(1565, 1, "(mulexpr) Internal error.");
  EXPECT_EQ(mdldupexpr(nullptr, e), 1);
  expect_one(1565, 1, "(dupexpr) Internal error.");
}

TEST_F(Expr, TextWithoutMemoryReportsError) {
  MDLexpr e = expr(x, nullptr, 1);
  modeltest::failing_malloc::arm(1);
  char *t = mdlexpr2str(e, MDL_LEQ);
  modeltest::failing_malloc::disarm();
  EXPECT_EQ(t, nullptr);
  expect_one(1502, 1, "Not enough memory.");
}

TEST_F(Expr, TextGrowthWithoutMemoryReleasesAndReports) {
  MDLexpr e = expr();
  std::vector<MDLvar> many;
  for (int i = 0; i < 200; i++)
    many.push_back(mdlnewvar_prob(prob, mdlnewname("long_enough_name_%d", i), MDL_CONTINUOUS, 0, 1));
  for (MDLvar var : many) mdladdexpr_term(e, var, nullptr, 3);
  for (int n = 2; n <= 3; n++) {   // the first and the second growth fail
    modeltest::failing_malloc::arm(n);
    char *t = mdlexpr2str(e, MDL_LEQ);
    modeltest::failing_malloc::disarm();
    EXPECT_EQ(t, nullptr);
    expect_one(1502, 1, "Not enough memory.");
  }
  EXPECT_GT(str(e, MDL_LEQ).size(), 4096u);   // it needs three blocks
}

TEST_F(Expr, RefusedProductIsNotReportedByTheProduct) {
  MDLexpr a = expr(x, y, 1);
  MDLexpr b = expr(x, nullptr, 1);
  EXPECT_EQ(mdlmulexpr(a, b), 1);
  expect_none();
}

}  // namespace
}  // namespace exprtest
