/*
 * support.h -- shared fixture of the expression tests: a problem with named
 * variables in handle order, a reader of an expression's value that does not
 * touch it, and its text taken from a copy.
 */
#ifndef KVTL_TESTS_EXPR_SUPPORT_H
#define KVTL_TESTS_EXPR_SUPPORT_H

#include <gtest/gtest.h>
#include <stdint.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "constraints/model_fixture.h"
#include "kvtl.h"
#include "termlist/support.h"

namespace exprtest {

// An expression's value: constant, linear and quadratic coefficients by
// handle (zero terms left out).
struct expr_value {
  double constant = 0;
  termtest::value_map<mdl_term> lin;
  termtest::value_map<mdl_qterm> quad;
  bool operator==(const expr_value &) const = default;
};

// Readable failure output: the terms by handle.
inline void PrintTo(const expr_value &v, std::ostream *os) {
  *os << "{constant " << v.constant << ";";
  for (auto [key, c] : v.lin) *os << " " << c << "*" << reinterpret_cast<const void *>(key);
  for (auto [key, c] : v.quad)
    *os << " " << c << "*" << reinterpret_cast<const void *>(key.first) << "*"
        << reinterpret_cast<const void *>(key.second);
  *os << "}";
}

// Read without stripping: pending operations are applied to a copy of
// the numbers only.
inline expr_value value_of(const mdl_expr *e) {
  expr_value v;
  if (e == nullptr) return v;
  v.constant = e->constant;
  v.lin = termtest::value_of<mdl_term>(termtest::image_of<mdl_term>(e->lin));
  v.quad = termtest::value_of<mdl_qterm>(termtest::image_of<mdl_qterm>(e->quad));
  return v;
}

// The text of an expression, taken from a copy so that the expression
// itself keeps its pending operations; "<null>" when no text was made.
inline std::string text_of(MDLexpr e, int type) {
  MDLexpr copy = nullptr;
  if (mdldupexpr(&copy, e) != 0) return "<no copy>";
  char *t = mdlexpr2str(copy, type);
  std::string s = t != nullptr ? t : "<null>";
  mdlfree2str(t);
  mdldelexpr(copy);
  return s;
}

class ExprTest : public modeltest::ModelTest {
 protected:
  void TearDown() override {
    for (MDLexpr e : owned) mdldelexpr(e);
    owned.clear();
    modeltest::ModelTest::TearDown();
  }
  // n continuous variables named x0, x1, ... in ascending handle order.
  void make_named(int n, double lb = 0, double ub = 10) {
    for (int i = 0; i < n; i++) {
      MDLvar var = mdlnewvar_prob(prob, mdlnewname("x%d", i), MDL_CONTINUOUS, lb, ub);
      ASSERT_NE(var, nullptr);
      v.push_back(var);
    }
    std::sort(v.begin(), v.end(), [](MDLvar a, MDLvar b) {
      return reinterpret_cast<uintptr_t>(a) < reinterpret_cast<uintptr_t>(b);
    });
    // Creation order is handle order, so x<i> is v[i].
    for (size_t i = 0; i < v.size(); i++)
      ASSERT_EQ(std::string(mdlgetvarname(v[i])), "x" + std::to_string(i));
  }
  // A new expression released at tear-down.
  MDLexpr expr(MDLvar x = nullptr, MDLvar y = nullptr, double coef = 0) {
    MDLexpr e = mdlnewexpr(x, y, coef);
    EXPECT_NE(e, nullptr);
    owned.push_back(e);
    return e;
  }
  std::string str(MDLexpr e, int type) {
    char *t = mdlexpr2str(e, type);
    std::string s = t != nullptr ? t : "<null>";
    mdlfree2str(t);
    return s;
  }
  std::string printed(MDLprob p, MDLexpr e, int type, double range) {
    out.text.clear();
    EXPECT_EQ(mdlprintexpr(p, e, type, range), 0);
    std::string s = out.text;
    out.text.clear();
    return s;
  }
  static termtest::lin_key k(MDLvar x) { return termtest::key_of(x); }
  static termtest::quad_key k(MDLvar x, MDLvar y) {
    if (reinterpret_cast<uintptr_t>(y) < reinterpret_cast<uintptr_t>(x)) std::swap(x, y);
    return termtest::key_of(x, y);
  }
  std::vector<MDLexpr> owned;
};

}  // namespace exprtest

#endif
