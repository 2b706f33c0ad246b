/*
 * cuts_test.cpp -- cut records and cut mode against the recording engine:
 * creators, access, terms, printing, expressions, sending cuts, reading the
 * cut pool, and every report with its number, kind, text and result.
 */
#include <functional>
#include <string>
#include <utility>

#include "cuts/cuts.h"
#include "solver/fixture.h"

using std::string;

namespace {

class Cuts : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    x = var("x");
    y = var("y");
    z = var("z");
    MDLctr c = builder::ctr(prob, "c", MDL_CTR_L, 4);
    builder::term(c, x, 1);
    builder::term(c, y, 1);
    builder::term(c, z, 1);
    arr = mdlstartarrvar_prob(prob, 3, "a");
    ASSERT_NE(arr, nullptr);
    ASSERT_EQ(mdlapparrvarel(arr, x), 0);
    ASSERT_EQ(mdlapparrvarel(arr, y), 0);
    ASSERT_EQ(mdlapparrvarel(arr, z), 0);
    ASSERT_EQ(mdlendarrvar(arr), 0);
  }
  // The model loaded, with calls and reports forgotten.
  void loaded() {
    ASSERT_EQ(mdlloadmat_prob(prob), 0);
    ASSERT_EQ(prob->status & (MDL_ST_MODIFIED | MDL_ST_REGEN | MDL_ST_PRESOLVED), 0u);
    fake::clear_calls();
    errors.reports.clear();
  }
  // Coefficients of a cut's terms in variable order x, y, z (0 if absent).
  std::vector<double> coefs(MDLcut cut) {
    std::vector<double> out;
    for (MDLvar v : {x, y, z}) {
      double c = 0;
      for (auto *t = static_cast<mdl_term *>(cut->terms == nullptr ? nullptr : cut->terms->first);
           t != nullptr; t = t->next)
        if (t->var == v) c += t->coef;
      out.push_back(c);
    }
    return out;
  }
  static uint32_t row_position(MDLcut cut) { return cut->flags & kvtl::cut_row_mask; }

  MDLvar x = nullptr, y = nullptr, z = nullptr;
  MDLarrvar arr = nullptr;
  const double three[3] = {4, 5, 6};
};

TEST_F(Cuts, NullProblemReports1501) {
  const std::pair<std::function<bool()>, const char *> cases[] = {
      {[] { return mdlnewcut_prob(nullptr, 1, 0) == nullptr; }, "newcut"},
      {[this] { return mdlnewcutsum_prob(nullptr, arr, 1, 0, 1) == nullptr; }, "newcutsum"},
      {[this] { return mdlnewcutsumc_prob(nullptr, arr, 1, 0, 1, 1) == nullptr; }, "newcutsumc"},
      {[this] { return mdlnewcutarrsum_prob(nullptr, arr, three, 1, 0, 1) == nullptr; },
       "newcutarrsum"},
      {[this] { return mdlnewcutprec_prob(nullptr, x, y, 0, 1) == nullptr; }, "newcutprec"},
      {[] { return mdlsetcutmode_prob(nullptr, 1) == 1; }, "setcutmode"},
      {[] { return mdladdcuts_prob(nullptr, nullptr, 0) == 1; }, "addcuts"},
      {[] { return mdlgetcuts_prob(nullptr, nullptr, nullptr) == 0; }, "getcuts"},
  };
  for (const auto &c : cases) {
    errors.reports.clear();
    EXPECT_TRUE(c.first()) << c.second;
    ASSERT_EQ(errors.reports.size(), 1u) << c.second;
    expect_report(1501, 1, string("(") + c.second + ") No active problem.");
    EXPECT_EQ(errors.last().prob, nullptr);
  }
}

TEST_F(Cuts, BadTypeReports1535) {
  for (int type : {0, 4, -1}) {
    EXPECT_EQ(mdlnewcut_prob(prob, type, 1), nullptr);
    expect_report(1535, 1, "(newcut) Incorrect type for constraint 'CUT'.");
    EXPECT_EQ(errors.last().prob, prob);
  }
  MDLcut cut = mdlnewcut_prob(prob, 2, 1);
  ASSERT_NE(cut, nullptr);
  EXPECT_EQ(mdlsetcuttype(cut, 5), 1);
  expect_report(1535, 1, "(setcuttype) Incorrect type for constraint 'CUT'.");
  EXPECT_EQ(mdlgetcuttype(cut), 2);
  // The sum creators pass their type on to the basic creator.
  EXPECT_EQ(mdlnewcutsum_prob(prob, arr, 7, 0, 1), nullptr);
  expect_report(1535, 1, "(newcut) Incorrect type for constraint 'CUT'.");
}

// Every function with a null cut, with the short name it reports and its
// result, including the three functions that report another name.
TEST_F(Cuts, NullCutReports1509WithShortNames) {
  const std::pair<std::function<bool()>, const char *> cases[] = {
      {[] { return mdlgetcutid(nullptr) == -1; }, "getcutid"},
      {[] { return mdlsetcutid(nullptr, 3) == 1; }, "getcutid"},
      {[] { return mdlgetcuttype(nullptr) == -1; }, "getcuttype"},
      {[] { return mdlsetcuttype(nullptr, 1) == 1; }, "setcuttype"},
      {[] { return mdlgetcutrhs(nullptr) == 0.0; }, "getcutrhs"},
      {[this] { return mdladdcutterm(nullptr, x, 1) == 1; }, "addcutterm"},
      {[] { return mdladdcutterm(nullptr, nullptr, 2) == 1; }, "addcutterm"},
      {[this] { return mdladdcutarrterm(nullptr, arr, three) == 1; }, "addcutarrterm"},
      {[this] { return mdlsetcutterm(nullptr, x, 1) == 1; }, "addcutterm"},
      {[this] { return mdldelcutterm(nullptr, x) == 1; }, "delterm"},
      {[] { return mdldelcut(nullptr) == 1; }, "delcut"},
      {[] { return mdlsetcut(nullptr, nullptr, 1) == 1; }, "setcut"},
      {[] { return mdlappcut(nullptr, nullptr) == 1; }, "appcut"},
      {[] { return mdlgetlinexp_cut(nullptr) == nullptr; }, "getlinexp"},
  };
  for (const auto &c : cases) {
    errors.reports.clear();
    EXPECT_TRUE(c.first()) << c.second;
    ASSERT_EQ(errors.reports.size(), 1u) << c.second;
    expect_report(1509, 1, string("(") + c.second + ") No cut given.");
  }
}

TEST_F(Cuts, PrintNullCutWarns1519) {
  EXPECT_EQ(mdlprintcut(nullptr), 1);
  ASSERT_EQ(errors.reports.size(), 1u);
  expect_report(1519, 0, "(printcut) No cut given.");
}

TEST_F(Cuts, NullArraysReport1506And1512) {
  EXPECT_EQ(mdlnewcutsum_prob(prob, nullptr, 1, 0, 1), nullptr);
  expect_report(1506, 1, "(newcutsum) No array of variables given.");
  EXPECT_EQ(mdlnewcutsumc_prob(prob, nullptr, 1, 0, 1, 1), nullptr);
  expect_report(1506, 1, "(newcutsumc) No array of variables given.");
  EXPECT_EQ(mdlnewcutarrsum_prob(prob, nullptr, three, 1, 0, 1), nullptr);
  expect_report(1506, 1, "(newcutarrsum) No array of variables given.");
  MDLcut cut = mdlnewcut_prob(prob, 1, 0);
  EXPECT_EQ(mdladdcutarrterm(cut, nullptr, three), 1);
  expect_report(1506, 1, "(addcutarrterm) No array of variables given.");
  EXPECT_EQ(mdladdcutarrterm(cut, arr, nullptr), 1);
  expect_report(1512, 1, "(addcutarrterm) No array of constants given.");
  // The creator's term step fails and the half-built cut is deleted.
  errors.reports.clear();
  EXPECT_EQ(mdlnewcutarrsum_prob(prob, arr, nullptr, 1, 0, 1), nullptr);
  ASSERT_EQ(errors.reports.size(), 1u);
  expect_report(1512, 1, "(addcutarrterm) No array of constants given.");
}

TEST_F(Cuts, ZeroValueOnNullCutIsSilent) {
  EXPECT_EQ(mdladdcutterm(nullptr, x, 0.0), 0);
  EXPECT_EQ(mdladdcutterm(nullptr, nullptr, 0.0), 0);
  EXPECT_TRUE(errors.empty());
}

TEST_F(Cuts, CreatorsBuildTheirTerms) {
  MDLcut c = mdlnewcut_prob(prob, 3, 42);
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(mdlgetcutid(c), 42);
  EXPECT_EQ(mdlgetcuttype(c), 3);
  EXPECT_EQ(mdlgetcutrhs(c), 0.0);
  EXPECT_EQ(row_position(c), 0x1FFFFFFFu);
  EXPECT_EQ(c->problem, prob);
  EXPECT_EQ(c->next, nullptr);
  EXPECT_EQ(mdlgetlinexp_cut(c), nullptr);

  MDLcut s = mdlnewcutsum_prob(prob, arr, 2, 7, 1.5);
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(coefs(s), (std::vector<double>{1, 1, 1}));
  EXPECT_EQ(mdlgetcuttype(s), 2);
  EXPECT_EQ(mdlgetcutid(s), 7);
  EXPECT_EQ(mdlgetcutrhs(s), 1.5);

  MDLcut sc = mdlnewcutsumc_prob(prob, arr, 1, 8, 2.0, 9);
  ASSERT_NE(sc, nullptr);
  EXPECT_EQ(coefs(sc), (std::vector<double>{2, 3, 4}));
  EXPECT_EQ(mdlgetcutrhs(sc), 9.0);

  MDLcut as = mdlnewcutarrsum_prob(prob, arr, three, 3, 9, -2);
  ASSERT_NE(as, nullptr);
  EXPECT_EQ(coefs(as), (std::vector<double>{4, 5, 6}));
  EXPECT_EQ(mdlgetcuttype(as), 3);

  MDLcut p = mdlnewcutprec_prob(prob, x, z, 10, 2.5);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(coefs(p), (std::vector<double>{1, 0, -1}));
  EXPECT_EQ(mdlgetcuttype(p), 1);
  EXPECT_EQ(mdlgetcutrhs(p), -2.5);
  EXPECT_EQ(mdlgetcutid(p), 10);

  // An array still open with no slot filled gives a cut without terms.
  MDLarrvar open = mdlstartarrvar_prob(prob, 2, "b");
  MDLcut e = mdlnewcutsum_prob(prob, open, 1, 0, 0);
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(mdlgetlinexp_cut(e), nullptr);
  EXPECT_TRUE(errors.empty());
  for (MDLcut k : {c, s, sc, as, p, e}) EXPECT_EQ(mdldelcut(k), 0);
}

TEST_F(Cuts, AccessAndTerms) {
  prob->status &= ~static_cast<uint32_t>(MDL_ST_MODIFIED);
  MDLcut c = mdlnewcut_prob(prob, 1, 1);
  EXPECT_EQ(mdlsetcutid(c, -5), 0);
  EXPECT_EQ(mdlgetcutid(c), -5);
  EXPECT_EQ(mdlsetcuttype(c, 2), 0);
  EXPECT_EQ(mdlgetcuttype(c), 2);
  EXPECT_EQ(row_position(c), 0x1FFFFFFFu);   // the type change keeps the row bits
  EXPECT_EQ(mdladdcutterm(c, x, 2), 0);
  EXPECT_EQ(mdladdcutterm(c, x, 1.5), 0);
  EXPECT_EQ(mdladdcutterm(c, nullptr, 3), 0);
  EXPECT_EQ(mdladdcutterm(c, nullptr, 1), 0);
  EXPECT_EQ(mdlgetcutrhs(c), 4.0);
  EXPECT_EQ(mdlsetcutterm(c, y, 7), 0);
  EXPECT_EQ(mdlsetcutterm(c, y, 8), 0);
  EXPECT_EQ(mdlsetcutterm(c, nullptr, -1), 0);
  EXPECT_EQ(mdlgetcutrhs(c), -1.0);
  EXPECT_EQ(coefs(c), (std::vector<double>{3.5, 8, 0}));
  EXPECT_EQ(mdladdcutarrterm(c, arr, three), 0);
  EXPECT_EQ(coefs(c), (std::vector<double>{7.5, 13, 6}));
  EXPECT_EQ(prob->status & MDL_ST_MODIFIED, 0u);
  // Deleting a term is the one term change that marks the problem.
  EXPECT_EQ(mdldelcutterm(c, y), 0);
  EXPECT_NE(prob->status & MDL_ST_MODIFIED, 0u);
  prob->status &= ~static_cast<uint32_t>(MDL_ST_MODIFIED);
  EXPECT_EQ(mdldelcutterm(c, nullptr), 0);
  EXPECT_EQ(mdlgetcutrhs(c), 0.0);
  EXPECT_NE(prob->status & MDL_ST_MODIFIED, 0u);
  // The list handed out is stripped of the zero term.
  MDLtermlst lin = mdlgetlinexp_cut(c);
  EXPECT_EQ(mdlget_termlst_len(&lin), 2);
  int nodes = 0;
  for (auto *t = static_cast<mdl_term *>(lin->first); t != nullptr; t = t->next) ++nodes;
  EXPECT_EQ(nodes, 2);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(mdldelcut(c), 0);
}

TEST_F(Cuts, PrintShowsIdAndRelation) {
  MDLcut c = mdlnewcut_prob(prob, 2, 12);
  mdladdcutterm(c, x, 1);
  mdladdcutterm(c, z, -2);
  mdladdcutterm(c, nullptr, 3);
  output.text.clear();
  EXPECT_EQ(mdlprintcut(c), 0);
  EXPECT_EQ(output.text, "CUT(12):x - 2*z >= 3\n");
  MDLcut e = mdlnewcut_prob(prob, 3, -1);
  output.text.clear();
  EXPECT_EQ(mdlprintcut(e), 0);
  EXPECT_EQ(output.text, "CUT(-1):0 = 0\n");
  EXPECT_TRUE(errors.empty());
  mdldelcut(c);
  mdldelcut(e);
}

TEST_F(Cuts, SetAndAppendFromExpressions) {
  prob->status &= ~static_cast<uint32_t>(MDL_ST_MODIFIED);
  MDLexpr e = mdlnewexpr(nullptr, x, 2);
  ASSERT_NE(e, nullptr);
  ASSERT_EQ(mdladdexpr_term(e, x, y, 5), 0);   // quadratic: ignored by cuts
  ASSERT_EQ(mdladdexpr_term(e, nullptr, y, -1), 0);
  e->constant = -6;
  MDLcut c = mdlnewcut_prob(prob, 1, 1);
  mdladdcutterm(c, z, 9);
  EXPECT_EQ(mdlsetcut(c, e, 3), 0);
  EXPECT_EQ(mdlgetcuttype(c), 3);
  EXPECT_EQ(mdlgetcutrhs(c), 6.0);
  EXPECT_EQ(coefs(c), (std::vector<double>{2, -1, 0}));
  EXPECT_EQ(prob->status & MDL_ST_MODIFIED, 0u);
  EXPECT_EQ(mdlappcut(c, e), 0);
  EXPECT_EQ(mdlgetcutrhs(c), 12.0);
  EXPECT_EQ(coefs(c), (std::vector<double>{4, -2, 0}));
  // The expression keeps its own terms.
  EXPECT_EQ(mdlget_termlst_len(&e->lin), 2);
  EXPECT_EQ(prob->status & MDL_ST_MODIFIED, 0u);
  EXPECT_TRUE(errors.empty());
  mdldelexpr(e);
  mdldelcut(c);
}

TEST_F(Cuts, CutModeSetsEngineControls) {
  KVSLprob k = prob->kvsl;
  EXPECT_EQ(prob->cutmode, 0);
  EXPECT_EQ(mdlsetcutmode_prob(prob, 2), 0);
  EXPECT_EQ(prob->cutmode, 2);
  auto sets = fake::calls_of("KVSLsetintcontrol");
  ASSERT_EQ(sets.size(), 2u);
  EXPECT_EQ(sets[0].i("control"), 8011);
  EXPECT_EQ(sets[0].i("value"), 0);
  EXPECT_EQ(sets[1].i("control"), 8078);
  EXPECT_EQ(sets[1].i("value"), 0);
  EXPECT_EQ(fake::int_control(k, 8011), 0);
  EXPECT_EQ(fake::int_control(k, 8078), 0);
  fake::clear_calls();
  EXPECT_EQ(mdlsetcutmode_prob(prob, 0), 0);
  EXPECT_EQ(prob->cutmode, 0);
  sets = fake::calls_of("KVSLsetintcontrol");
  ASSERT_EQ(sets.size(), 1u);
  EXPECT_EQ(sets[0].i("control"), 8011);
  EXPECT_EQ(sets[0].i("value"), 1);
  EXPECT_EQ(fake::int_control(k, 8011), 1);
  EXPECT_TRUE(errors.empty());
}

TEST_F(Cuts, AddCutsSendsSlotsOfCutsWithTerms) {
  loaded();
  const int rows = prob->nrows;
  MDLcut a = mdlnewcut_prob(prob, 1, 5);
  mdladdcutterm(a, x, 1);
  mdladdcutterm(a, z, 2);
  mdladdcutterm(a, nullptr, 3);
  MDLcut empty = mdlnewcut_prob(prob, 2, 6);
  MDLcut zero = mdlnewcut_prob(prob, 2, 7);
  mdladdcutterm(zero, y, 1);
  mdladdcutterm(zero, y, -1);
  MDLcut b = mdlnewcut_prob(prob, 3, 8);
  mdladdcutterm(b, y, -4);
  mdladdcutterm(b, nullptr, -1);
  MDLcut g = mdlnewcut_prob(prob, 2, 9);
  mdladdcutterm(g, z, 0.5);
  MDLcut list[] = {a, empty, zero, b, g};
  EXPECT_EQ(mdladdcuts_prob(prob, list, 5), 0);
  ASSERT_EQ(errors.reports.size(), 1u);
  expect_report(1587, 0, "Switch to cut mode.");
  EXPECT_EQ(errors.last().prob, prob);
  EXPECT_EQ(prob->cutmode, 1);
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLsetintcontrol", "KVSLsetintcontrol",
                                                 "KVSLaddcuts"}));
  const fake::call c = fake::calls_of("KVSLaddcuts").at(0);
  EXPECT_EQ(c.prob, prob->kvsl);
  EXPECT_EQ(c.i("ncuts"), 3);
  EXPECT_EQ(c.iv("cuttype"), ints({5, 8, 9}));
  EXPECT_EQ(c.cv("rowtype"), "LEG");
  EXPECT_EQ(c.dv("rhs"), dbls({3, -1, 0}));
  EXPECT_EQ(c.iv("start"), ints({0, 2, 3, 4}));
  EXPECT_EQ(c.iv("col"), ints({mdlgetcolnum(x), mdlgetcolnum(z), mdlgetcolnum(y),
                               mdlgetcolnum(z)}));
  EXPECT_EQ(c.dv("val"), dbls({1, 2, -4, 0.5}));
  EXPECT_EQ(row_position(a), static_cast<uint32_t>(rows + 1));
  EXPECT_EQ(row_position(b), static_cast<uint32_t>(rows + 2));
  EXPECT_EQ(row_position(g), static_cast<uint32_t>(rows + 3));
  EXPECT_EQ(row_position(empty), 0x1FFFFFFFu);
  EXPECT_EQ(row_position(zero), 0x1FFFFFFFu);
  EXPECT_EQ(mdlgetcuttype(b), 3);   // the type bits are kept
  // In cut mode already: no second warning, no control change.
  errors.reports.clear();
  fake::clear_calls();
  EXPECT_EQ(mdladdcuts_prob(prob, list, 1), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLaddcuts"}));
  for (MDLcut k : list) mdldelcut(k);
}

TEST_F(Cuts, SeparateCallsShareTheFirstRowPosition) {
  loaded();
  MDLcut a = mdlnewcutsum_prob(prob, arr, 1, 1, 1);
  MDLcut b = mdlnewcutprec_prob(prob, x, y, 2, 1);
  EXPECT_EQ(mdladdcuts_prob(prob, &a, 1), 0);
  EXPECT_EQ(mdladdcuts_prob(prob, &b, 1), 0);
  EXPECT_EQ(row_position(a), static_cast<uint32_t>(prob->nrows + 1));
  EXPECT_EQ(row_position(b), static_cast<uint32_t>(prob->nrows + 1));
  EXPECT_EQ(fake::calls_of("KVSLaddcuts").size(), 2u);
  mdldelcut(a);
  mdldelcut(b);
}

TEST_F(Cuts, AddCutsWithoutCoefficientsSendsNothingButSwitchesMode) {
  loaded();
  MDLcut zero = mdlnewcut_prob(prob, 1, 1);
  mdlsetcutterm(zero, x, 0);
  MDLcut empty = mdlnewcut_prob(prob, 1, 2);
  MDLcut list[] = {zero, empty};
  EXPECT_EQ(mdladdcuts_prob(prob, list, 2), 0);
  ASSERT_EQ(errors.reports.size(), 1u);
  expect_report(1587, 0, "Switch to cut mode.");
  EXPECT_EQ(prob->cutmode, 1);
  EXPECT_TRUE(fake::calls_of("KVSLaddcuts").empty());
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLsetintcontrol", "KVSLsetintcontrol"}));
  // No cut at all: the same switch, then nothing.
  mdlsetcutmode_prob(prob, 0);
  errors.reports.clear();
  fake::clear_calls();
  EXPECT_EQ(mdladdcuts_prob(prob, nullptr, 0), 0);
  expect_report(1587, 0, "Switch to cut mode.");
  EXPECT_TRUE(fake::calls_of("KVSLaddcuts").empty());
  mdldelcut(zero);
  mdldelcut(empty);
}

TEST_F(Cuts, AddCutsLoadsAChangedModelFirst) {
  MDLcut a = mdlnewcutsum_prob(prob, arr, 1, 1, 2);
  ASSERT_NE(prob->status & MDL_ST_MODIFIED, 0u);
  EXPECT_EQ(mdladdcuts_prob(prob, &a, 1), 0);
  std::vector<string> names = engine_calls();
  ASSERT_FALSE(names.empty());
  EXPECT_EQ(names.front(), "KVSLloadlp64");
  EXPECT_EQ(names.back(), "KVSLaddcuts");
  EXPECT_EQ(prob->status & MDL_ST_MODIFIED, 0u);
  EXPECT_EQ(row_position(a), static_cast<uint32_t>(prob->nrows + 1));
  // A forced regeneration loads too; a failing load fails the call before
  // the cut-mode switch.
  prob->status |= MDL_ST_REGEN;
  mdlsetcutmode_prob(prob, 0);
  fake::fail_call("KVSLloadlp64", 1, 9);
  errors.reports.clear();
  fake::clear_calls();
  EXPECT_EQ(mdladdcuts_prob(prob, &a, 1), 1);
  expect_report(1524, 1, "(loadmat) Korvex-Optimizer error 9 during 'loadlp'. Return value: 9.");
  EXPECT_EQ(prob->cutmode, 0);
  EXPECT_TRUE(fake::calls_of("KVSLaddcuts").empty());
  mdldelcut(a);
}

TEST_F(Cuts, AddCutsEngineFailureReports1524) {
  loaded();
  mdlsetcutmode_prob(prob, 1);
  MDLcut a = mdlnewcutsum_prob(prob, arr, 1, 1, 2);
  fake::fail_call("KVSLaddcuts", 1, 31);
  errors.reports.clear();
  EXPECT_EQ(mdladdcuts_prob(prob, &a, 1), 1);
  ASSERT_EQ(errors.reports.size(), 1u);
  expect_report(1524, 1, "(addcuts) Korvex-Optimizer error 31 during 'addcuts'. Return value: 31.");
  mdldelcut(a);
}

TEST_F(Cuts, GetCutsOnChangedProblemWarns1525) {
  MDLcut sentinel = reinterpret_cast<MDLcut>(0x10);
  MDLcut first = sentinel;
  int ncoefs = -3;
  for (uint32_t bit : {MDL_ST_MODIFIED, MDL_ST_REGEN, MDL_ST_PRESOLVED}) {
    loaded();
    prob->status |= bit;
    EXPECT_EQ(mdlgetcuts_prob(prob, &first, &ncoefs), 0);
    ASSERT_EQ(errors.reports.size(), 1u);
    expect_report(1525, 0, "(getcuts) Different problem loaded in Korvex-Optimizer.");
    EXPECT_EQ(first, sentinel);
    EXPECT_EQ(ncoefs, -3);
    EXPECT_TRUE(engine_calls().empty());
  }
}

TEST_F(Cuts, GetCutsOfAnEmptyPool) {
  loaded();
  MDLcut first = nullptr;
  int ncoefs = -1;
  fake::set_int_out("KVSLgetcutlist", "ncuts", 0);
  EXPECT_EQ(mdlgetcuts_prob(prob, &first, &ncoefs), 0);
  EXPECT_EQ(ncoefs, 0);
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLgetcutlist"}));
  const fake::call c = fake::calls_of("KVSLgetcutlist").at(0);
  EXPECT_EQ(c.i("cuttype"), -1);
  EXPECT_EQ(c.i("interp"), -1);
  EXPECT_EQ(c.i("size"), 1);
  EXPECT_TRUE(errors.empty());
}

TEST_F(Cuts, GetCutsReadsThePoolIntoCuts) {
  loaded();
  const int cx = mdlgetcolnum(x), cy = mdlgetcolnum(y), cz = mdlgetcolnum(z);
  fake::set_int_out("KVSLgetcutlist", "ncuts", 2);
  fake::set_int_vector("KVSLgetcutlist", "cuts", {101, 102});
  fake::set_int_vector("KVSLgetcpcuts", "start", {0, 2, 3});
  fake::set_int_vector("KVSLgetcpcuts", "cuttype", {7, 9});
  fake::set_char_vector("KVSLgetcpcuts", "rowtype", "GE");
  fake::set_int_vector("KVSLgetcpcuts", "col", {cz, cx, cy});
  fake::set_vector("KVSLgetcpcuts", "val", {2.5, -1, 4});
  fake::set_vector("KVSLgetcpcuts", "rhs", {1, -3});
  MDLcut first = nullptr;
  int ncoefs = 0;
  EXPECT_EQ(mdlgetcuts_prob(prob, &first, &ncoefs), 2);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(ncoefs, 3);
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLgetcutlist", "KVSLgetcutlist",
                                                 "KVSLgetcpcuts", "KVSLgetcpcuts"}));
  auto lists = fake::calls_of("KVSLgetcutlist");
  EXPECT_EQ(lists[1].i("size"), 2);
  auto cp = fake::calls_of("KVSLgetcpcuts");
  EXPECT_EQ(cp[0].iv("cuts"), ints({101, 102}));
  EXPECT_EQ(cp[0].i("ncuts"), 2);
  EXPECT_EQ(cp[0].i("size"), 1);
  EXPECT_EQ(cp[1].iv("cuts"), ints({101, 102}));
  EXPECT_EQ(cp[1].i("size"), 3);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(mdlgetcuttype(first), 2);
  EXPECT_EQ(mdlgetcutid(first), 7);
  EXPECT_EQ(mdlgetcutrhs(first), 1.0);
  EXPECT_EQ(coefs(first), (std::vector<double>{-1, 0, 2.5}));
  MDLcut second = first->next;
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->next, nullptr);
  EXPECT_EQ(mdlgetcuttype(second), 3);
  EXPECT_EQ(mdlgetcutid(second), 9);
  EXPECT_EQ(mdlgetcutrhs(second), -3.0);
  EXPECT_EQ(coefs(second), (std::vector<double>{0, 4, 0}));
  EXPECT_EQ(row_position(first), 0x1FFFFFFFu);
  mdldelcut(first);
  mdldelcut(second);
}

TEST_F(Cuts, GetCutsFindsAVariableByItsColumn) {
  loaded();
  // The column table's entry no longer carries its column: the table is
  // searched for the variable that does.
  const int cy = mdlgetcolnum(y);
  std::swap(prob->colvars[0], prob->colvars[cy]);
  fake::set_int_out("KVSLgetcutlist", "ncuts", 1);
  fake::set_int_vector("KVSLgetcpcuts", "start", {0, 1});
  fake::set_char_vector("KVSLgetcpcuts", "rowtype", "L");
  fake::set_int_vector("KVSLgetcpcuts", "col", {cy});
  fake::set_vector("KVSLgetcpcuts", "val", {3});
  MDLcut first = nullptr;
  int ncoefs = 0;
  EXPECT_EQ(mdlgetcuts_prob(prob, &first, &ncoefs), 1);
  std::swap(prob->colvars[0], prob->colvars[cy]);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(coefs(first), (std::vector<double>{0, 3, 0}));
  EXPECT_EQ(mdlgetcuttype(first), 1);
  mdldelcut(first);
}

TEST_F(Cuts, GetCutsWithUnknownColumnReports1585) {
  loaded();
  fake::set_int_out("KVSLgetcutlist", "ncuts", 2);
  fake::set_int_vector("KVSLgetcpcuts", "start", {0, 1, 2});
  fake::set_char_vector("KVSLgetcpcuts", "rowtype", "LL");
  fake::set_int_vector("KVSLgetcpcuts", "col", {mdlgetcolnum(x), 99});
  fake::set_vector("KVSLgetcpcuts", "val", {1, 1});
  MDLcut first = nullptr;
  int ncoefs = 0;
  EXPECT_EQ(mdlgetcuts_prob(prob, &first, &ncoefs), 0);
  ASSERT_EQ(errors.reports.size(), 1u);
  expect_report(1585, 1, "Cut term not found.");
  // The cuts made so far stay allocated and chained.
  ASSERT_NE(first, nullptr);
  ASSERT_NE(first->next, nullptr);
  EXPECT_EQ(coefs(first), (std::vector<double>{1, 0, 0}));
  mdldelcut(first->next);
  mdldelcut(first);
}

TEST_F(Cuts, GetCutsEngineFailuresReport1524) {
  const struct {
    const char *fn;
    int nth;
    const char *text;
  } cases[] = {
      {"KVSLgetcutlist", 1, "(getcuts) Korvex-Optimizer error 12 during 'getcutlist'. Return value: 12."},
      {"KVSLgetcutlist", 2, "(getcuts) Korvex-Optimizer error 12 during 'getcutlist'. Return value: 12."},
      {"KVSLgetcpcuts", 1, "(getcuts) Korvex-Optimizer error 12 during 'getcpcuts'. Return value: 12."},
      {"KVSLgetcpcuts", 2, "(getcuts) Korvex-Optimizer error 12 during 'getcpcuts'. Return value: 12."},
  };
  loaded();
  for (const auto &c : cases) {
    fake::reset();
    fake::set_int_out("KVSLgetcutlist", "ncuts", 1);
    fake::set_int_vector("KVSLgetcpcuts", "start", {0, 1});
    fake::set_int_vector("KVSLgetcpcuts", "col", {mdlgetcolnum(x)});
    fake::fail_call(c.fn, c.nth, 12);
    errors.reports.clear();
    MDLcut first = nullptr;
    int ncoefs = 0;
    EXPECT_EQ(mdlgetcuts_prob(prob, &first, &ncoefs), 0) << c.fn << c.nth;
    ASSERT_EQ(errors.reports.size(), 1u);
    expect_report(1524, 1, c.text);
    EXPECT_EQ(first, nullptr);
  }
}

}  // namespace
