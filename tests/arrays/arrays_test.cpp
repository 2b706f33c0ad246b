/*
 * arrays_test.cpp -- arrays of variables (complete and open creation,
 * filling, closing, deletion, names, block layout) and the sum
 * constructors, with their messages and allocation failure.
 */
#include <map>
#include <string>
#include <vector>

#include "constraints/model_fixture.h"
#include "engine_fake/fake_engine.h"
#include "model/arrays.h"
#include "problem/names.h"

namespace {

using modeltest::failing_malloc;
using modeltest::ModelTest;

class Arrays : public ModelTest {
 protected:
  void SetUp() override {
    ModelTest::SetUp();
    make_vars(5);
  }
  // Linear terms of a constraint after a strip, keyed by variable.
  static std::map<MDLvar, double> terms(MDLctr c) {
    mdlstriptermlst(&c->expr.lin);
    std::map<MDLvar, double> r;
    if (c->expr.lin == nullptr) return r;
    for (auto *t = static_cast<mdl_term *>(c->expr.lin->first); t != nullptr; t = t->next)
      r[t->var] = t->coef;
    return r;
  }
  bool in_problem(MDLctr c) const {
    for (MDLctr k = prob->ctrs; k != nullptr; k = k->next)
      if (k == c) return true;
    return false;
  }
};

TEST_F(Arrays, OpenArrayFillsAndCloses) {
  MDLarrvar a = mdlstartarrvar_prob(prob, 4, "a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(mdlgetarrvarsize(a), -4);
  for (int i = 0; i < 4; i++) EXPECT_EQ(a[i], nullptr);
  for (int i = 0; i < 4; i++) {
    EXPECT_EQ(mdlapparrvarel(a, v[i]), 0);
    EXPECT_EQ(mdlgetarrvarsize(a), -4);
  }
  EXPECT_EQ(mdlendarrvar(a), 0);
  EXPECT_EQ(mdlgetarrvarsize(a), 4);
  for (int i = 0; i < 4; i++) EXPECT_EQ(a[i], v[i]);
  expect_none();
}

TEST_F(Arrays, BlockLayout) {
  MDLarrvar a = mdlstartarrvar_prob(prob, 3, "a");
  auto **words = reinterpret_cast<void **>(a);
  EXPECT_EQ(words[-3], prob);
  EXPECT_STREQ(static_cast<const char *>(words[-2]), "a");
  EXPECT_EQ(reinterpret_cast<int64_t *>(a)[-1], -3);
  mdlendarrvar(a);   // incomplete: stays open
  log.reports.clear();
  for (int i = 0; i < 3; i++) mdlsetarrvarel(a, i, v[i]);
  mdlendarrvar(a);
  EXPECT_EQ(reinterpret_cast<int64_t *>(a)[-1], 3);
  // Look-up by name gives the handle, not the block.
  EXPECT_EQ(mdlgetbyname_prob(prob, "a", MDL_KIND_ARRVAR), static_cast<void *>(a));
  EXPECT_EQ(mdlgetbyname_prob(prob, "a", MDL_KIND_ANY), static_cast<void *>(a));
  expect_none();
}

TEST_F(Arrays, FifthAppendReportsCompleteArray) {
  MDLarrvar a = mdlstartarrvar_prob(prob, 4, "a");
  for (int i = 0; i < 4; i++) ASSERT_EQ(mdlapparrvarel(a, v[i]), 0);
  EXPECT_EQ(mdlapparrvarel(a, v[4]), 1);
  EXPECT_EQ(log.last().prob, prob);
  std::string want = std::string("(apparrvarel) Trying to add an entry ('") +
                     mdlgetvarname(v[4]) + "') to a complete array of variables ('a').";
  expect_one(1542, 1, want);
  for (int i = 0; i < 4; i++) EXPECT_EQ(a[i], v[i]);
  EXPECT_EQ(mdlgetarrvarsize(a), -4);
}

TEST_F(Arrays, AppendTakesFirstFreeSlot) {
  MDLarrvar a = mdlstartarrvar_prob(prob, 3, "a");
  ASSERT_EQ(mdlsetarrvarel(a, 1, v[1]), 0);
  ASSERT_EQ(mdlapparrvarel(a, v[0]), 0);
  ASSERT_EQ(mdlapparrvarel(a, v[2]), 0);
  EXPECT_EQ(a[0], v[0]);
  EXPECT_EQ(a[1], v[1]);
  EXPECT_EQ(a[2], v[2]);
  // Set replaces an earlier variable.
  ASSERT_EQ(mdlsetarrvarel(a, 1, v[4]), 0);
  EXPECT_EQ(a[1], v[4]);
  EXPECT_EQ(mdlendarrvar(a), 0);
  expect_none();
}

TEST_F(Arrays, SetOutOfRangeReportsMax) {
  MDLarrvar a = mdlstartarrvar_prob(prob, 4, "a");
  EXPECT_EQ(mdlsetarrvarel(a, 4, v[0]), 1);
  expect_one(1541, 1, "(setarrvarel) Index 4 out of range for an array of variables ('a' max=3).");
  EXPECT_EQ(mdlsetarrvarel(a, -1, v[0]), 1);
  expect_one(1541, 1, "(setarrvarel) Index -1 out of range for an array of variables ('a' max=3).");
  for (int i = 0; i < 4; i++) EXPECT_EQ(a[i], nullptr);
}

TEST_F(Arrays, CloseNeedsEverySlot) {
  MDLarrvar a = mdlstartarrvar_prob(prob, 4, "a");
  for (int i = 1; i < 4; i++) ASSERT_EQ(mdlsetarrvarel(a, i, v[i]), 0);
  EXPECT_EQ(mdlendarrvar(a), 1);
  expect_one(1543, 1, "(endarrvar) Trying to close an incomplete array of variables ('a').");
  EXPECT_EQ(mdlgetarrvarsize(a), -4);
  MDLarrvar b = mdlstartarrvar_prob(prob, 3, "b");
  mdlsetarrvarel(b, 0, v[0]);
  mdlsetarrvarel(b, 1, v[1]);
  EXPECT_EQ(mdlendarrvar(b), 1);
  expect_one(1543, 1, "(endarrvar) Trying to close an incomplete array of variables ('b').");
  ASSERT_EQ(mdlsetarrvarel(a, 0, v[0]), 0);
  EXPECT_EQ(mdlendarrvar(a), 0);
  EXPECT_EQ(mdlgetarrvarsize(a), 4);
  expect_none();
}

TEST_F(Arrays, ClosedArrayCannotBeModified) {
  MDLarrvar a = mdlnewarrvar_prob(prob, 2, MDL_CONTINUOUS, "c", 0, 1);
  ASSERT_NE(a, nullptr);
  MDLvar first = a[0];
  EXPECT_EQ(mdlapparrvarel(a, v[0]), 1);
  expect_one(1540, 1, "(apparrvarel) Trying to modify a closed array of variables ('c').");
  EXPECT_EQ(mdlsetarrvarel(a, 0, v[0]), 1);
  expect_one(1540, 1, "(setarrvarel) Trying to modify a closed array of variables ('c').");
  EXPECT_EQ(mdlendarrvar(a), 1);
  expect_one(1540, 1, "(endarrvar) Trying to modify a closed array of variables ('c').");
  EXPECT_EQ(a[0], first);
  EXPECT_EQ(mdlgetarrvarsize(a), 2);
}

TEST_F(Arrays, NullArgumentReports) {
  MDLarrvar a = mdlstartarrvar_prob(prob, 2, "a");
  // A missing variable is checked first, for the array's problem if any.
  EXPECT_EQ(mdlapparrvarel(a, nullptr), 1);
  EXPECT_EQ(log.last().prob, prob);
  expect_one(1505, 1, "(apparrvarel) No variable given.");
  EXPECT_EQ(mdlapparrvarel(nullptr, nullptr), 1);
  EXPECT_EQ(log.last().prob, nullptr);
  expect_one(1505, 1, "(apparrvarel) No variable given.");
  EXPECT_EQ(mdlsetarrvarel(a, 0, nullptr), 1);
  expect_one(1505, 1, "(setarrvarel) No variable given.");
  EXPECT_EQ(mdlsetarrvarel(nullptr, 9, nullptr), 1);
  expect_one(1505, 1, "(setarrvarel) No variable given.");
  // A missing array is reported for the variable's problem.
  EXPECT_EQ(mdlapparrvarel(nullptr, v[0]), 1);
  EXPECT_EQ(log.last().prob, prob);
  expect_one(1506, 1, "(apparrvarel) No array of variables given.");
  EXPECT_EQ(mdlsetarrvarel(nullptr, 0, v[0]), 1);
  EXPECT_EQ(log.last().prob, prob);
  expect_one(1506, 1, "(setarrvarel) No array of variables given.");
  EXPECT_EQ(mdlendarrvar(nullptr), 1);
  expect_one(1506, 1, "(endarrvar) No array of variables given.");
  EXPECT_EQ(mdldelarrvar(nullptr), 1);
  expect_one(1506, 1, "(delarrvar) No array of variables given.");
  // The getters answer quietly.
  EXPECT_EQ(mdlgetarrvarsize(nullptr), -1);
  EXPECT_EQ(mdlgetarrvarname(nullptr), nullptr);
  expect_none();
  EXPECT_EQ(a[0], nullptr);
}

TEST_F(Arrays, CreationArguments) {
  EXPECT_EQ(mdlnewarrvar_prob(nullptr, 3, MDL_CONTINUOUS, "x", 0, 1), nullptr);
  expect_one(1501, 1, "(newarrvar) No active problem.");
  EXPECT_EQ(mdlstartarrvar_prob(nullptr, 3, "x"), nullptr);
  expect_one(1501, 1, "(startarrvar) No active problem.");
  int32_t vars = prob->varcount;
  EXPECT_EQ(mdlnewarrvar_prob(prob, 0, MDL_CONTINUOUS, "x", 0, 1), nullptr);
  EXPECT_EQ(mdlnewarrvar_prob(prob, -2, MDL_CONTINUOUS, "x", 0, 1), nullptr);
  EXPECT_EQ(mdlstartarrvar_prob(prob, 0, "x"), nullptr);
  EXPECT_EQ(mdlstartarrvar_prob(prob, -1, "x"), nullptr);
  expect_none();
  EXPECT_EQ(prob->varcount, vars);
  EXPECT_EQ(mdlgetbyname_prob(prob, "x", MDL_KIND_ARRVAR), nullptr);
}

TEST_F(Arrays, CompleteArrayMakesNamedVariables) {
  MDLarrvar x = mdlnewarrvar_prob(prob, 3, MDL_INTEGER, "x", -1, 7);
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(mdlgetarrvarsize(x), 3);
  EXPECT_STREQ(mdlgetarrvarname(x), "x");
  EXPECT_STREQ(mdlgetvarname(x[0]), "x");
  EXPECT_STREQ(mdlgetvarname(x[1]), "x_1");
  EXPECT_STREQ(mdlgetvarname(x[2]), "x_2");
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(mdlgetvartype(x[i]), MDL_INTEGER);
    double lb, ub;
    mdlgetbounds(x[i], &lb, &ub);
    EXPECT_EQ(lb, -1);
    EXPECT_EQ(ub, 7);
    EXPECT_EQ(x[i]->problem, prob);
  }
  EXPECT_EQ(mdlgetbyname_prob(prob, "x", MDL_KIND_VAR), x[0]);
  EXPECT_EQ(mdlgetbyname_prob(prob, "x", MDL_KIND_ARRVAR), static_cast<void *>(x));
  // Default names and unique names of arrays.
  MDLarrvar a = mdlnewarrvar_prob(prob, 1, MDL_BINARY, nullptr, 0, 1);
  MDLarrvar b = mdlstartarrvar_prob(prob, 1, "");
  MDLarrvar y = mdlnewarrvar_prob(prob, 2, MDL_CONTINUOUS, "x", 0, 1);
  EXPECT_STREQ(mdlgetarrvarname(a), "AV");
  EXPECT_STREQ(mdlgetvarname(a[0]), "AV");
  EXPECT_STREQ(mdlgetarrvarname(b), "AV_1");
  EXPECT_STREQ(mdlgetarrvarname(y), "x_1");
  EXPECT_STREQ(mdlgetvarname(y[0]), "x_1_1");
  EXPECT_STREQ(mdlgetvarname(y[1]), "x_1_2");
  expect_none();
}

TEST_F(Arrays, FailedVariableReleasesTheArray) {
  EXPECT_EQ(mdlnewarrvar_prob(prob, 3, 9, "bad", 0, 1), nullptr);
  expect_one(1531, 1, "(newvar) Incorrect type for variable 'bad'.");
  EXPECT_EQ(mdlgetbyname_prob(prob, "bad", MDL_KIND_ARRVAR), nullptr);
  EXPECT_EQ(mdlnewarrvar_prob(prob, 3, MDL_CONTINUOUS, "bnd", 2, 1), nullptr);
  expect_one(1530, 1, "(newvar) Inconsistent bounds for variable 'bnd' (2,1).");
  // The name is free again.
  MDLarrvar ok = mdlnewarrvar_prob(prob, 1, MDL_CONTINUOUS, "bad", 0, 1);
  EXPECT_STREQ(mdlgetarrvarname(ok), "bad");
}

TEST_F(Arrays, DeleteKeepsVariablesAndFreesTheName) {
  MDLarrvar x = mdlnewarrvar_prob(prob, 2, MDL_CONTINUOUS, "x", 0, 1);
  MDLvar x0 = x[0];
  int32_t vars = prob->varcount;
  EXPECT_EQ(mdldelarrvar(x), 0);
  EXPECT_EQ(mdlgetbyname_prob(prob, "x", MDL_KIND_ARRVAR), nullptr);
  EXPECT_EQ(mdlgetbyname_prob(prob, "x", MDL_KIND_VAR), x0);
  EXPECT_EQ(prob->varcount, vars);
  MDLarrvar again = mdlstartarrvar_prob(prob, 1, "x");
  EXPECT_STREQ(mdlgetarrvarname(again), "x");
  EXPECT_EQ(mdldelarrvar(again), 0);
  expect_none();
}

TEST_F(Arrays, NamesOffGiveAnon) {
  MDLprob p = mdlnewprob(nullptr);
  ASSERT_EQ(mdlsetdictsize_prob(p, 0, 0), 0);
  MDLarrvar x = mdlnewarrvar_prob(p, 2, MDL_CONTINUOUS, "x", 0, 1);
  ASSERT_NE(x, nullptr);
  EXPECT_STREQ(mdlgetarrvarname(x), "Anon");
  EXPECT_EQ(x[0]->name, nullptr);   // unnamed variables
  EXPECT_EQ(mdlgetbyname_prob(p, "x", MDL_KIND_ARRVAR), nullptr);
  // The name slot holds the entity-list entry.
  auto *entry = static_cast<mdl_entity_entry *>(kvtl::array_header(x)->name);
  EXPECT_EQ(entry->kind, static_cast<uint32_t>(MDL_KIND_ARRVAR));
  EXPECT_EQ(entry->entity, kvtl::array_header(x));
  MDLarrvar o = mdlstartarrvar_prob(p, 1, "o");
  EXPECT_STREQ(mdlgetarrvarname(o), "Anon");
  MDLvar w = mdlnewvar_prob(p, "w", MDL_CONTINUOUS, 0, 1);
  EXPECT_EQ(mdlapparrvarel(o, w), 0);
  EXPECT_EQ(mdlapparrvarel(o, w), 1);
  expect_one(1542, 1, "(apparrvarel) Trying to add an entry ('w') to a complete array of variables ('Anon').");
  EXPECT_EQ(mdlsetarrvarel(o, 1, w), 1);
  expect_one(1541, 1, "(setarrvarel) Index 1 out of range for an array of variables ('Anon' max=0).");
  EXPECT_EQ(mdlendarrvar(o), 0);
  EXPECT_EQ(mdlendarrvar(o), 1);
  expect_one(1540, 1, "(endarrvar) Trying to modify a closed array of variables ('Anon').");
  EXPECT_EQ(mdldelarrvar(x), 0);
  EXPECT_EQ(entry->entity, nullptr);
  mdldelprob_prob(p);
  expect_none();
}

TEST_F(Arrays, AddArrayTerms) {
  MDLarrvar a = mdlstartarrvar_prob(prob, 3, "a");
  for (int i = 0; i < 3; i++) mdlapparrvarel(a, v[i]);
  mdlendarrvar(a);
  MDLctr c = mdlnewctr_prob(prob, "c", MDL_LEQ);
  clear_status();
  const double coef[] = {1.5, 0, -2};
  EXPECT_EQ(mdladdarrterm(c, a, coef), 0);
  EXPECT_EQ((terms(c)), (std::map<MDLvar, double>{{v[0], 1.5}, {v[2], -2}}));
  EXPECT_NE(stat() & MDL_ST_MODIFIED, 0);
  EXPECT_EQ(mdladdarrterm(c, a, coef), 0);
  EXPECT_EQ((terms(c)), (std::map<MDLvar, double>{{v[0], 3}, {v[2], -4}}));
  EXPECT_EQ(c->expr.constant, 0);
  expect_none();
  EXPECT_EQ(mdladdarrterm(nullptr, a, coef), 1);
  expect_one(1507, 1, "(addarrterm) No constraint given.");
  EXPECT_EQ(mdladdarrterm(c, nullptr, coef), 1);
  expect_one(1506, 1, "(addarrterm) No array of variables given.");
  EXPECT_EQ(mdladdarrterm(c, a, nullptr), 1);
  expect_one(1512, 1, "(addarrterm) No array of constants given.");
  // An open array has a negative size and contributes nothing.
  MDLarrvar o = mdlstartarrvar_prob(prob, 2, "o");
  mdlapparrvarel(o, v[3]);
  EXPECT_EQ(mdladdarrterm(c, o, coef), 0);
  EXPECT_EQ((terms(c)), (std::map<MDLvar, double>{{v[0], 3}, {v[2], -4}}));
  expect_none();
}

TEST_F(Arrays, SumConstructors) {
  MDLarrvar x = mdlnewarrvar_prob(prob, 3, MDL_CONTINUOUS, "x", 0, 10);
  MDLctr s = mdlnewsum_prob(prob, "s", x, MDL_LEQ, 4);
  ASSERT_NE(s, nullptr);
  EXPECT_STREQ(mdlgetctrname(s), "s");
  EXPECT_EQ(mdlgetctrtype(s), MDL_LEQ);
  EXPECT_EQ(mdlgetrhs(s), 4);
  EXPECT_EQ((terms(s)), (std::map<MDLvar, double>{{x[0], 1}, {x[1], 1}, {x[2], 1}}));
  MDLctr c = mdlnewsumc_prob(prob, "c", x, MDL_GEQ, 2, -1.5);
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(mdlgetctrtype(c), MDL_GEQ);
  EXPECT_EQ(mdlgetrhs(c), -1.5);
  EXPECT_EQ((terms(c)), (std::map<MDLvar, double>{{x[0], 2}, {x[1], 3}, {x[2], 4}}));
  const double w[] = {5, -1, 0.25};
  MDLctr a = mdlnewarrsum_prob(prob, nullptr, x, w, MDL_EQ, 0);
  ASSERT_NE(a, nullptr);
  EXPECT_STREQ(mdlgetctrname(a), "CTR");
  EXPECT_EQ(mdlgetctrtype(a), MDL_EQ);
  EXPECT_EQ(mdlgetrhs(a), 0);
  EXPECT_EQ((terms(a)), (std::map<MDLvar, double>{{x[0], 5}, {x[1], -1}, {x[2], 0.25}}));
  // A first coefficient that makes one term vanish.
  MDLctr z = mdlnewsumc_prob(prob, "z", x, MDL_LEQ, -1, 3);
  EXPECT_EQ((terms(z)), (std::map<MDLvar, double>{{x[0], -1}, {x[2], 1}}));
  EXPECT_EQ(prob->ctrs, z);
  expect_none();
}

TEST_F(Arrays, SumConstructorReports) {
  MDLarrvar x = mdlnewarrvar_prob(prob, 2, MDL_CONTINUOUS, "x", 0, 1);
  const double w[] = {1, 2};
  EXPECT_EQ(mdlnewarrsum_prob(nullptr, "n", x, w, MDL_LEQ, 1), nullptr);
  expect_one(1501, 1, "(newarrsum) No active problem.");
  EXPECT_EQ(mdlnewsum_prob(nullptr, "n", x, MDL_LEQ, 1), nullptr);
  expect_one(1501, 1, "(newsum) No active problem.");
  EXPECT_EQ(mdlnewsumc_prob(nullptr, "n", x, MDL_LEQ, 1, 1), nullptr);
  expect_one(1501, 1, "(newsumc) No active problem.");
  EXPECT_EQ(mdlnewarrsum_prob(prob, "n", nullptr, w, MDL_LEQ, 1), nullptr);
  EXPECT_EQ(log.last().prob, prob);
  expect_one(1506, 1, "(arrnewsum) No array of variables given.");
  EXPECT_EQ(mdlnewsum_prob(prob, "n", nullptr, MDL_LEQ, 1), nullptr);
  expect_one(1506, 1, "(newsum) No array of variables given.");
  EXPECT_EQ(mdlnewsumc_prob(prob, "n", nullptr, MDL_LEQ, 1, 1), nullptr);
  expect_one(1506, 1, "(newsumc) No array of variables given.");
  EXPECT_EQ(prob->ctrs, nullptr);
  EXPECT_EQ(mdlnewsum_prob(prob, "t", x, 7, 1), nullptr);
  expect_one(1535, 1, "(newctr) Incorrect type for constraint 't'.");
  EXPECT_EQ(prob->ctrs, nullptr);
  // Missing coefficients are found when the terms are added: the
  // constraint already made stays in the problem.
  EXPECT_EQ(mdlnewarrsum_prob(prob, "k", x, nullptr, MDL_LEQ, 1), nullptr);
  expect_one(1512, 1, "(addarrterm) No array of constants given.");
  ASSERT_NE(prob->ctrs, nullptr);
  EXPECT_STREQ(mdlgetctrname(prob->ctrs), "k");
}

TEST_F(Arrays, SumsReachTheEngineAsTermByTermRows) {
  // The same model once through the constructors and once term by term
  // loads the same matrix.
  auto load = [](MDLprob p) {
    fake::clear_calls();
    EXPECT_EQ(mdlloadmat_prob(p), 0);
    return fake::calls_of("KVSLloadlp64").at(0);
  };
  MDLprob p1 = mdlnewprob("sums1");
  MDLarrvar x = mdlnewarrvar_prob(p1, 3, MDL_CONTINUOUS, "x", 0, 5);
  const double w[] = {3, 0.5, -2};
  mdlnewsum_prob(p1, "s", x, MDL_LEQ, 4);
  mdlnewsumc_prob(p1, "c", x, MDL_GEQ, 2, 1);
  mdlnewarrsum_prob(p1, "a", x, w, MDL_EQ, -3);
  MDLctr obj = mdlnewctr_prob(p1, "obj1", MDL_NONBINDING);
  mdladdarrterm(obj, x, w);
  mdlsetobj_prob(p1, obj);
  fake::call built = load(p1);

  MDLprob p2 = mdlnewprob("sums2");
  MDLvar y[3];
  for (int i = 0; i < 3; i++) y[i] = mdlnewvar_prob(p2, i == 0 ? "x" : mdlnewname("x_%d", i), MDL_CONTINUOUS, 0, 5);
  MDLctr s = mdlnewctr_prob(p2, "s", MDL_LEQ);
  MDLctr c = mdlnewctr_prob(p2, "c", MDL_GEQ);
  MDLctr a = mdlnewctr_prob(p2, "a", MDL_EQ);
  MDLctr o = mdlnewctr_prob(p2, "obj1", MDL_NONBINDING);
  for (int i = 0; i < 3; i++) {
    mdladdterm(s, y[i], 1);
    mdladdterm(c, y[i], 2 + i);
    mdladdterm(a, y[i], w[i]);
    mdladdterm(o, y[i], w[i]);
  }
  mdladdterm(s, nullptr, 4);
  mdladdterm(c, nullptr, 1);
  mdladdterm(a, nullptr, -3);
  mdlsetobj_prob(p2, o);
  fake::call by_hand = load(p2);

  EXPECT_EQ(built.cv("rowtype"), "EGL");
  EXPECT_EQ(built.dv("rhs"), (std::vector<double>{-3, 1, 4}));
  EXPECT_EQ(built.dv("obj"), (std::vector<double>{3, 0.5, -2}));
  for (const char *k : {"ncols", "nrows"}) EXPECT_EQ(built.i(k), by_hand.i(k)) << k;
  for (const char *k : {"rhs", "range", "obj", "rowval", "lb", "ub"})
    EXPECT_EQ(built.dv(k), by_hand.dv(k)) << k;
  for (const char *k : {"colstart", "colcount", "rowind"}) EXPECT_EQ(built.iv(k), by_hand.iv(k)) << k;
  EXPECT_EQ(built.cv("rowtype"), by_hand.cv("rowtype"));
  mdldelprob_prob(p1);
  mdldelprob_prob(p2);
  expect_none();
}

// Fail the Nth allocator call of a scenario that builds complete and open
// arrays and sums over them, for every N.  A failing constructor reports
// 1502 and returns null (1 for the term adder), arrays keep their state, and
// everything is released with the problem (checked by the leak sanitizer).
void sweep(testsupport::error_log &log, bool names_on) {
  int hits = 0;
  for (int n = 1;; n++) {
    MDLprob p = mdlnewprob(nullptr);
    ASSERT_NE(p, nullptr);
    if (!names_on) mdlsetdictsize_prob(p, 0, 0);
    log.reports.clear();
    failing_malloc::arm(n);
    bool hit = false;
    auto failed = [&](bool failure) {
      if (!failure) return false;
      hit = true;
      EXPECT_EQ(log.reports.size(), 1u);
      if (!log.reports.empty()) {
        EXPECT_EQ(log.last().number, 1502);
        EXPECT_EQ(log.last().text, "Not enough memory.");
      }
      log.reports.clear();
      return true;
    };
    // Arrays: a failed creation leaves no array behind; the retry works.
    MDLarrvar x = mdlnewarrvar_prob(p, 200, MDL_CONTINUOUS, "x", 0, 1);
    if (failed(x == nullptr)) {
      if (names_on) EXPECT_EQ(mdlgetbyname_prob(p, "x", MDL_KIND_ARRVAR), nullptr);
      x = mdlnewarrvar_prob(p, 200, MDL_CONTINUOUS, "x", 0, 1);
    }
    ASSERT_NE(x, nullptr);
    EXPECT_EQ(mdlgetarrvarsize(x), 200);
    if (names_on) EXPECT_STREQ(mdlgetarrvarname(x), "x");
    MDLarrvar o = mdlstartarrvar_prob(p, 100, "o");
    if (failed(o == nullptr)) o = mdlstartarrvar_prob(p, 100, "o");
    ASSERT_NE(o, nullptr);
    for (int i = 0; i < 100; i++) ASSERT_EQ(mdlapparrvarel(o, x[2 * i]), 0);
    ASSERT_EQ(mdlendarrvar(o), 0);
    // Sums: a failure gives null or 1; the arrays are unchanged.
    std::vector<double> w(200);
    for (int i = 0; i < 200; i++) w[i] = i % 7 - 3;
    for (int k = 0; k < 8; k++) {
      MDLctr c = nullptr;
      switch (k % 4) {
        case 0: c = mdlnewsum_prob(p, nullptr, x, MDL_LEQ, 1); break;
        case 1: c = mdlnewsumc_prob(p, nullptr, o, MDL_GEQ, 1, 2); break;
        case 2: c = mdlnewarrsum_prob(p, nullptr, x, w.data(), MDL_EQ, 3); break;
        default: {
          c = mdlnewctr_prob(p, nullptr, MDL_LEQ);
          if (failed(c == nullptr)) continue;
          if (failed(mdladdarrterm(c, x, w.data()) != 0)) continue;
        }
      }
      failed(c == nullptr);
    }
    EXPECT_EQ(mdlgetarrvarsize(x), 200);
    EXPECT_EQ(mdlgetarrvarsize(o), 100);
    for (int i = 0; i < 100; i++) EXPECT_EQ(o[i], x[2 * i]);
    bool reached = failing_malloc::calls >= n;
    failing_malloc::disarm();
    EXPECT_EQ(hit, reached) << "allocation " << n;
    EXPECT_TRUE(log.reports.empty());
    if (n % 2 == 0) mdldelarrvar(o);
    mdldelprob_prob(p);
    if (!reached) break;
    hits++;
  }
  EXPECT_GT(hits, 10);
}

TEST_F(Arrays, AllocationFailureSweep) { sweep(log, true); }
TEST_F(Arrays, AllocationFailureSweepNamesOff) { sweep(log, false); }

TEST_F(Arrays, BlockAllocationFailure) {
  failing_malloc::arm(1);
  EXPECT_EQ(mdlstartarrvar_prob(prob, 1000, "big"), nullptr);
  failing_malloc::disarm();
  expect_one(1502, 1, "Not enough memory.");
  EXPECT_EQ(mdlgetbyname_prob(prob, "big", MDL_KIND_ARRVAR), nullptr);
  failing_malloc::arm(1);
  EXPECT_EQ(mdlnewarrvar_prob(prob, 1000, MDL_CONTINUOUS, "big", 0, 1), nullptr);
  failing_malloc::disarm();
  expect_one(1502, 1, "Not enough memory.");
}

}  // namespace
