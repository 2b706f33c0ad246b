/*
 * constraints_test.cpp -- constraint creation, naming, deletion, types,
 * ranges, row numbers and the objective reference.
 */
#include <math.h>
#include <stdio.h>

#include "constraints/model_fixture.h"

namespace {

using modeltest::ModelTest;

class Constraints : public ModelTest {};

std::string generated_name(const void *handle) {
  char buf[32];
  snprintf(buf, sizeof buf, "%#lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(handle)));
  return buf + 1;
}

TEST_F(Constraints, CreateStoresTypeAndDoesNotMarkModified) {
  for (int t = MDL_NONBINDING; t <= MDL_EQ; t++) {
    MDLctr c = mdlnewctr_prob(prob, "c", t);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(mdlgetctrtype(c), t);
    EXPECT_EQ(mdlgetrhs(c), 0.0);
    EXPECT_EQ(mdlgetrownum(c), -1);
    EXPECT_EQ(mdlgetctrsize(c), 0);
    EXPECT_EQ(mdlgetindicator(c), 0);
  }
  EXPECT_EQ(stat(), 0);
  expect_none();
}

TEST_F(Constraints, CreateRejectsRangeAndBadTypes) {
  EXPECT_EQ(mdlnewctr_prob(prob, "k", MDL_RANGE), nullptr);
  expect_one(1535, 1, "(newctr) Incorrect type for constraint 'k'.");
  EXPECT_EQ(mdlnewctr_prob(prob, "k", -1), nullptr);
  expect_one(1535, 1, "(newctr) Incorrect type for constraint 'k'.");
  EXPECT_EQ(mdlnewctr_prob(prob, nullptr, 7), nullptr);
  expect_one(1535, 1, "(newctr) Incorrect type for constraint ''.");
  EXPECT_EQ(mdlgetnextctr_prob(prob, nullptr), nullptr);
}

TEST_F(Constraints, NullProblemAndNullConstraintReports) {
  EXPECT_EQ(mdlnewctr_prob(nullptr, "k", MDL_LEQ), nullptr);
  expect_one(1501, 1, "(newctr) No active problem.");
  EXPECT_EQ(mdlnewprec_prob(nullptr, "p", nullptr, 1, nullptr), nullptr);
  expect_one(1501, 1, "(newprec) No active problem.");
  EXPECT_EQ(mdlgetnextctr_prob(nullptr, nullptr), nullptr);
  expect_one(1501, 1, "(getnextctr) No active problem.");
  EXPECT_EQ(mdlsetobj_prob(nullptr, nullptr), 1);
  expect_one(1501, 1, "(setobj) No active problem.");

  EXPECT_EQ(mdldelctr(nullptr), 1);
  expect_one(1507, 1, "(delctr) No constraint given.");
  EXPECT_EQ(mdlsetctrtype(nullptr, 1), 1);
  expect_one(1507, 1, "(setctrtype) No constraint given.");
  EXPECT_EQ(mdlgetctrtype(nullptr), -1);
  expect_one(1507, 1, "(getctrtype) No constraint given.");
  EXPECT_EQ(mdlsetrange(nullptr, 1, 2), 1);
  expect_one(1507, 1, "(setrange) No constraint given.");
  double lw = 7, up = 7;
  EXPECT_EQ(mdlgetrange(nullptr, &lw, &up), 1);
  expect_one(1507, 1, "(getrange) No constraint given.");
  EXPECT_EQ(lw, 7);
  EXPECT_EQ(up, 7);
  EXPECT_EQ(mdlgetrhs(nullptr), 0.0);
  expect_one(1507, 1, "(getrhs) No constraint given.");
  EXPECT_EQ(mdlgetrownum(nullptr), -1);
  expect_one(1507, 1, "(getrownum) No constraint given.");
  EXPECT_EQ(mdlgetctrname(nullptr), nullptr);
  expect_one(1507, 1, "(getctrname) No constraint given.");
  EXPECT_EQ(mdlgetctrsize(nullptr), -1);
  expect_one(1507, 1, "(getctrsize) No constraint given.");
  EXPECT_EQ(stat(), 0);
}

TEST_F(Constraints, ListIsNewestFirst) {
  MDLctr a = mdlnewctr_prob(prob, "a", MDL_LEQ);
  MDLctr b = mdlnewctr_prob(prob, "b", MDL_GEQ);
  MDLctr c = mdlnewctr_prob(prob, "c", MDL_EQ);
  EXPECT_EQ(mdlgetnextctr_prob(prob, nullptr), c);
  EXPECT_EQ(mdlgetnextctr_prob(prob, c), b);
  EXPECT_EQ(mdlgetnextctr_prob(prob, b), a);
  EXPECT_EQ(mdlgetnextctr_prob(prob, a), nullptr);
  expect_none();
}

TEST_F(Constraints, NamesThroughTheDictionary) {
  MDLctr a = mdlnewctr_prob(prob, nullptr, MDL_LEQ);
  MDLctr b = mdlnewctr_prob(prob, "", MDL_LEQ);
  MDLctr c = mdlnewctr_prob(prob, "cap", MDL_LEQ);
  MDLctr d = mdlnewctr_prob(prob, "cap", MDL_LEQ);
  EXPECT_STREQ(mdlgetctrname(a), "CTR");
  EXPECT_STREQ(mdlgetctrname(b), "CTR_1");
  EXPECT_STREQ(mdlgetctrname(c), "cap");
  EXPECT_STREQ(mdlgetctrname(d), "cap_1");
  EXPECT_EQ(mdlgetbyname_prob(prob, "cap", MDL_KIND_CTR), c);
  EXPECT_EQ(mdlgetbyname_prob(prob, "cap_1", MDL_KIND_CTR), d);
  // A variable may share a constraint's name.
  MDLvar x = mdlnewvar_prob(prob, "cap", MDL_CONTINUOUS, 0, 1);
  EXPECT_STREQ(mdlgetvarname(x), "cap");
  expect_none();
}

TEST_F(Constraints, NamesOffKeepPrivateCopiesAndGenerateNames) {
  ASSERT_EQ(mdlsetdictsize_prob(prob, 0, 0), 0);
  char name[] = "row";
  MDLctr a = mdlnewctr_prob(prob, name, MDL_LEQ);
  MDLctr b = mdlnewctr_prob(prob, "row", MDL_LEQ);
  MDLctr u = mdlnewctr_prob(prob, nullptr, MDL_LEQ);
  ASSERT_NE(a, nullptr);
  name[0] = 'X';   // the caller's text is not kept
  EXPECT_STREQ(mdlgetctrname(a), "row");
  EXPECT_STREQ(mdlgetctrname(b), "row");   // no unique suffix without names
  EXPECT_EQ(mdlgetbyname_prob(prob, "row", MDL_KIND_CTR), nullptr);
  // The generated name outlives the call that returned it.
  const char *gen = mdlgetctrname(u);
  std::string expected = generated_name(u);
  EXPECT_EQ(gen[0], 'x');
  mdlgetctrname(a);
  EXPECT_EQ(std::string(gen), expected);
  // Deleting gives the private copy back without disturbing the others.
  EXPECT_EQ(mdldelctr(a), 0);
  EXPECT_STREQ(mdlgetctrname(b), "row");
  expect_none();
}

TEST_F(Constraints, DeleteUnlinksAndFreesTheName) {
  MDLctr a = mdlnewctr_prob(prob, "a", MDL_LEQ);
  MDLctr b = mdlnewctr_prob(prob, "b", MDL_LEQ);
  MDLctr c = mdlnewctr_prob(prob, "c", MDL_LEQ);
  make_vars(3);
  ASSERT_EQ(mdladdterm(b, v[0], 1), 0);
  ASSERT_EQ(mdladdqterm(b, v[1], v[2], 1), 0);
  clear_status();
  EXPECT_EQ(mdldelctr(b), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(mdlgetnextctr_prob(prob, nullptr), c);
  EXPECT_EQ(mdlgetnextctr_prob(prob, c), a);
  EXPECT_EQ(mdlgetnextctr_prob(prob, a), nullptr);
  EXPECT_EQ(mdlgetbyname_prob(prob, "b", MDL_KIND_CTR), nullptr);
  // The name is free again.
  MDLctr b2 = mdlnewctr_prob(prob, "b", MDL_GEQ);
  EXPECT_STREQ(mdlgetctrname(b2), "b");
  EXPECT_EQ(mdlgetbyname_prob(prob, "b", MDL_KIND_CTR), b2);
  // Deleting the head and the tail of the list.
  EXPECT_EQ(mdldelctr(b2), 0);
  EXPECT_EQ(mdldelctr(a), 0);
  EXPECT_EQ(mdlgetnextctr_prob(prob, nullptr), c);
  EXPECT_EQ(mdlgetnextctr_prob(prob, c), nullptr);
  expect_none();
}

TEST_F(Constraints, DeletingTheObjectiveLeavesNone) {
  MDLctr c = mdlnewctr_prob(prob, "cost", MDL_NONBINDING);
  ASSERT_EQ(mdlsetobj_prob(prob, c), 0);
  EXPECT_EQ(prob->objective, c);
  EXPECT_EQ(mdldelctr(c), 0);
  EXPECT_EQ(prob->objective, nullptr);
  expect_none();
}

TEST_F(Constraints, DeletingTheBuiltInObjectiveOnlyMarksModified) {
  make_vars(1);
  MDLctr obj = &prob->objrec;
  EXPECT_STREQ(mdlgetctrname(obj), "obj");
  EXPECT_EQ(mdlgetctrtype(obj), MDL_NONBINDING);
  EXPECT_EQ(mdlgetrownum(obj), -1);
  ASSERT_EQ(mdlsetobj_prob(prob, obj), 0);
  ASSERT_EQ(mdladdterm(obj, v[0], 4), 0);
  clear_status();
  EXPECT_EQ(mdldelctr(obj), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(mdlgetcoeff(obj, v[0]), 4);
  EXPECT_EQ(prob->objective, obj);
  EXPECT_EQ(mdlgetnextctr_prob(prob, nullptr), nullptr);
  expect_none();
}

TEST_F(Constraints, PrecedenceConstraint) {
  make_vars(2);
  MDLctr p = mdlnewprec_prob(prob, "prec", v[1], 2.5, v[0]);
  ASSERT_NE(p, nullptr);
  EXPECT_STREQ(mdlgetctrname(p), "prec");
  EXPECT_EQ(mdlgetctrtype(p), MDL_LEQ);
  EXPECT_EQ(mdlgetcoeff(p, v[1]), 1.0);
  EXPECT_EQ(mdlgetcoeff(p, v[0]), -1.0);
  EXPECT_EQ(mdlgetrhs(p), -2.5);
  EXPECT_EQ(mdlgetctrsize(p), 2);
  expect_none();
}

TEST_F(Constraints, PrecedenceFailureLeavesNoConstraint) {
  make_vars(2);
  MDLctr filler = mdlnewctr_prob(prob, "filler", MDL_LEQ);
  ASSERT_NE(filler, nullptr);
  // Fill the pool's block so that some step of the next precedence needs a
  // new block, and fail that block: nothing may stay behind.
  int failures = 0;
  for (int i = 0; i < 400 && failures == 0; i++) {
    modeltest::failing_malloc::arm(1);
    MDLctr p = mdlnewprec_prob(prob, nullptr, v[0], 1, v[1]);
    modeltest::failing_malloc::disarm();
    if (p == nullptr) {
      failures++;
      ASSERT_FALSE(log.empty());
      EXPECT_EQ(log.last().number, 1502);
      EXPECT_EQ(log.last().text, "Not enough memory.");
      log.reports.clear();
      // Every constraint left in the list is a complete precedence row.
      for (MDLctr c = mdlgetnextctr_prob(prob, nullptr); c != filler;
           c = mdlgetnextctr_prob(prob, c)) {
        ASSERT_NE(c, nullptr);
        EXPECT_EQ(mdlgetctrsize(c), 2);
        EXPECT_EQ(mdlgetcoeff(c, v[0]), 1.0);
        EXPECT_EQ(mdlgetrhs(c), -1.0);
      }
    }
  }
  EXPECT_EQ(failures, 1);
  expect_none();
}

TEST_F(Constraints, SetTypeRules) {
  MDLctr k = mdlnewctr_prob(prob, "k", MDL_LEQ);
  clear_status();
  EXPECT_EQ(mdlsetctrtype(k, MDL_LEQ), 0);
  EXPECT_EQ(stat(), 0);
  EXPECT_EQ(mdlsetctrtype(k, MDL_GEQ), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(mdlgetctrtype(k), MDL_GEQ);
  clear_status();
  EXPECT_EQ(mdlsetctrtype(k, MDL_RANGE), 1);
  expect_one(1535, 1, "(setctrtype) Incorrect type for constraint 'k'.");
  EXPECT_EQ(mdlsetctrtype(k, -2), 1);
  expect_one(1535, 1, "(setctrtype) Incorrect type for constraint 'k'.");
  EXPECT_EQ(mdlgetctrtype(k), MDL_GEQ);
  EXPECT_EQ(stat(), 0);
}

TEST_F(Constraints, SetTypeOfIndicatorAndIncludeVarsRows) {
  make_vars(1);
  MDLctr k = mdlnewctr_prob(prob, "ind", MDL_LEQ);
  ASSERT_EQ(mdlsetindicator(k, 1, v[0]), 0);
  clear_status();
  EXPECT_EQ(mdlsetctrtype(k, MDL_EQ), 1);
  expect_one(1539, 1, "(setctrtype) Incorrect constraint type for indicator constraint 'ind'.");
  EXPECT_EQ(mdlsetctrtype(k, MDL_NONBINDING), 1);
  expect_one(1539, 1, "(setctrtype) Incorrect constraint type for indicator constraint 'ind'.");
  EXPECT_EQ(stat(), 0);
  EXPECT_EQ(mdlsetctrtype(k, MDL_GEQ), 0);
  EXPECT_EQ(mdlgetctrtype(k), MDL_GEQ);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);

  MDLctr n = mdlnewctr_prob(prob, "inc", MDL_NONBINDING);
  ASSERT_EQ(mdlsetincvars(n, 1), 0);
  clear_status();
  for (int t : {MDL_LEQ, MDL_GEQ, MDL_EQ}) {
    EXPECT_EQ(mdlsetctrtype(n, t), 1);
    expect_one(1595, 1, "(setctrtype) Incorrect constraint type for include vars constraint 'inc'.");
  }
  EXPECT_EQ(mdlsetctrtype(n, MDL_NONBINDING), 0);
  EXPECT_EQ(stat(), 0);
  expect_none();
}

TEST_F(Constraints, RangeEdgeCases) {
  MDLctr k = mdlnewctr_prob(prob, "k", MDL_LEQ);
  clear_status();
  ASSERT_EQ(mdlsetrange(k, 5, 5), 0);
  EXPECT_EQ(mdlgetctrtype(k), MDL_EQ);
  EXPECT_EQ(mdlgetrhs(k), 5);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  double lw = 0, up = 0;
  ASSERT_EQ(mdlgetrange(k, &lw, &up), 0);
  EXPECT_EQ(lw, 5);
  EXPECT_EQ(up, 5);

  clear_status();
  ASSERT_EQ(mdlsetrange(k, 1, 4), 0);
  EXPECT_EQ(mdlgetctrtype(k), MDL_RANGE);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  ASSERT_EQ(mdlgetrange(k, &lw, &up), 0);
  EXPECT_EQ(lw, 1);
  EXPECT_EQ(up, 4);
  EXPECT_EQ(mdlgetrhs(k), 4);
  EXPECT_EQ(k->range, 3);

  ASSERT_EQ(mdlsetctrtype(k, MDL_LEQ), 0);
  EXPECT_EQ(mdlgetrhs(k), 4);
  EXPECT_EQ(k->range, 0);
  ASSERT_EQ(mdlgetrange(k, &lw, &up), 0);
  EXPECT_EQ(lw, -MDL_INFINITY);
  EXPECT_EQ(up, 4);
  expect_none();
}

TEST_F(Constraints, InconsistentRange) {
  MDLctr k = mdlnewctr_prob(prob, "k", MDL_GEQ);
  ASSERT_EQ(mdlsetterm(k, nullptr, 2), 0);
  clear_status();
  EXPECT_EQ(mdlsetrange(k, 5, 1.5), 1);
  expect_one(1536, 1, "(setrange) Inconsistent range for constraint 'k' (5,1.5).");
  EXPECT_EQ(mdlgetctrtype(k), MDL_GEQ);
  EXPECT_EQ(mdlgetrhs(k), 2);
  EXPECT_EQ(stat(), 0);
  // A NaN limit is not "greater": the row becomes a range.
  EXPECT_EQ(mdlsetrange(k, NAN, 3), 0);
  EXPECT_EQ(mdlgetctrtype(k), MDL_RANGE);
  EXPECT_EQ(mdlgetrhs(k), 3);
  expect_none();
}

TEST_F(Constraints, RangeOfEveryType) {
  MDLctr k = mdlnewctr_prob(prob, "k", MDL_NONBINDING);
  ASSERT_EQ(mdlsetterm(k, nullptr, 6), 0);
  struct { int type; double lw, up; } rows[] = {
      {MDL_NONBINDING, -MDL_INFINITY, MDL_INFINITY},
      {MDL_LEQ, -MDL_INFINITY, 6},
      {MDL_GEQ, 6, MDL_INFINITY},
      {MDL_EQ, 6, 6},
  };
  for (auto &r : rows) {
    ASSERT_EQ(mdlsetctrtype(k, r.type), 0);
    double lw = 0, up = 0;
    ASSERT_EQ(mdlgetrange(k, &lw, &up), 0);
    EXPECT_EQ(lw, r.lw) << r.type;
    EXPECT_EQ(up, r.up) << r.type;
    EXPECT_EQ(mdlgetrange(k, nullptr, nullptr), 0);
  }
  expect_none();
}

TEST_F(Constraints, RowNumber) {
  MDLctr k = mdlnewctr_prob(prob, "k", MDL_LEQ);
  EXPECT_EQ(mdlgetrownum(k), -1);
  k->row = 7;   // as matrix generation numbers it
  EXPECT_EQ(mdlgetrownum(k), 7);
  expect_none();
}

TEST_F(Constraints, SetObjectiveFromTheBuiltInRecordClearsItsTerms) {
  make_vars(2);
  MDLctr obj = &prob->objrec;
  ASSERT_EQ(mdlsetobj_prob(prob, obj), 0);
  ASSERT_EQ(mdladdterm(obj, v[0], 3), 0);
  ASSERT_EQ(mdladdqterm(obj, v[0], v[1], 1), 0);
  ASSERT_EQ(mdladdterm(obj, nullptr, 2), 0);
  MDLctr c = mdlnewctr_prob(prob, "cost", MDL_LEQ);
  ASSERT_EQ(mdlsetterm(c, nullptr, 9), 0);
  clear_status();
  ASSERT_EQ(mdlsetobj_prob(prob, c), 0);
  EXPECT_EQ(prob->objective, c);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(mdlgetctrsize(obj), 0);
  EXPECT_EQ(obj->expr.lin, nullptr);
  EXPECT_EQ(obj->expr.quad, nullptr);
  // The new objective keeps its own type and right-hand side.
  EXPECT_EQ(mdlgetctrtype(c), MDL_LEQ);
  EXPECT_EQ(mdlgetrhs(c), 9);
  expect_none();
}

TEST_F(Constraints, SetObjectiveKeepsTermsOtherwise) {
  make_vars(1);
  MDLctr obj = &prob->objrec;
  ASSERT_EQ(mdlsetobj_prob(prob, obj), 0);
  ASSERT_EQ(mdladdterm(obj, v[0], 3), 0);
  // Setting the built-in record again, or no objective, keeps its terms.
  clear_status();
  ASSERT_EQ(mdlsetobj_prob(prob, obj), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  ASSERT_EQ(mdlsetobj_prob(prob, nullptr), 0);
  EXPECT_EQ(prob->objective, nullptr);
  EXPECT_EQ(mdlgetcoeff(obj, v[0]), 3);
  // Switching between two ordinary constraints leaves the record alone.
  MDLctr a = mdlnewctr_prob(prob, "a", MDL_NONBINDING);
  MDLctr b = mdlnewctr_prob(prob, "b", MDL_NONBINDING);
  ASSERT_EQ(mdlsetobj_prob(prob, a), 0);
  ASSERT_EQ(mdlsetobj_prob(prob, b), 0);
  EXPECT_EQ(prob->objective, b);
  EXPECT_EQ(mdlgetcoeff(obj, v[0]), 3);
  expect_none();
}

}  // namespace
