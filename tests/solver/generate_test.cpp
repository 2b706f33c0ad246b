/*
 * generate_test.cpp -- matrix generation against the recording engine: the
 * arrays of each of the six load calls, numbering rules, special rows,
 * names, directives, the incremental path and every failure report.
 */
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "solver/fixture.h"

using builder::ctr;
using builder::term;
using builder::qterm;
using std::string;

namespace {

const string names_of(std::initializer_list<const char *> names) {
  string out;
  for (const char *n : names) {
    out += n;
    out += '\0';
  }
  return out;
}

class Generate : public SolverTest {};

TEST_F(Generate, NullProblemReports1501) {
  EXPECT_EQ(mdlloadmat_prob(nullptr), 1);
  expect_report(1501, 1, "(loadmat) No active problem.");
}

TEST_F(Generate, NoVariablesReports1515) {
  EXPECT_EQ(mdlloadmat_prob(prob), 1);
  expect_report(1515, 1, "(loadmat) Problem has no variables.");
  EXPECT_TRUE(engine_calls().empty());
}

TEST_F(Generate, OnlyNonBindingConstraintAndEmptyObjective) {
  MDLvar x = var("x");
  MDLctr n = ctr(prob, "n", MDL_CTR_N);
  term(n, x, 1.0);
  builder::objective(prob);
  EXPECT_EQ(mdlloadmat_prob(prob), 1);
  ASSERT_EQ(errors.reports.size(), 2u);
  EXPECT_EQ(errors.reports[0].number, 1516);
  EXPECT_EQ(errors.reports[0].iserror, 0);
  EXPECT_EQ(errors.reports[0].text, "(loadmat) Problem has no objective function.");
  expect_report(1515, 1, "(loadmat) Problem has no variables or constraints.");
  EXPECT_TRUE(engine_calls().empty());
  EXPECT_EQ(x->column, kvtl::no_number);
}

// x + 2y <= 4, 3x - w >= -1, -2 <= y + w <= 6; objective x + 4w + 7; u unused.
struct lp_model {
  MDLvar x, y, u, w;
  MDLctr c1, c2, c3;
};

lp_model build_lp(SolverTest &t, MDLprob p) {
  lp_model m{};
  m.x = mdlnewvar_prob(p, "x", MDL_CONTINUOUS, 0, 10);
  m.y = mdlnewvar_prob(p, "y", MDL_CONTINUOUS, -5, 5);
  m.u = mdlnewvar_prob(p, "u", MDL_CONTINUOUS, 0, 1e20);
  m.w = mdlnewvar_prob(p, "w", MDL_CONTINUOUS, 1, 1e20);
  (void)t;
  m.c1 = ctr(p, "c1", MDL_CTR_L, 4);
  term(m.c1, m.x, 1);
  term(m.c1, m.y, 2);
  m.c2 = ctr(p, "c2", MDL_CTR_G, -1);
  term(m.c2, m.x, 3);
  term(m.c2, m.w, -1);
  m.c3 = ctr(p, "c3", MDL_CTR_N);
  builder::set_range(m.c3, -2, 6);
  term(m.c3, m.y, 1);
  term(m.c3, m.w, 1);
  MDLctr obj = builder::objective(p, 7);
  term(obj, m.x, 1);
  term(obj, m.w, 4);
  return m;
}

TEST_F(Generate, LinearModelSelectsLoadlp) {
  lp_model m = build_lp(*this, prob);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLloadlp64", "KVSLchgobj", "KVSLaddnames",
                                                 "KVSLaddnames", "KVSLchgobjsense"}));
  const fake::call c = fake::calls_of("KVSLloadlp64").at(0);
  EXPECT_EQ(c.prob, prob->kvsl);
  EXPECT_EQ(c.s("name"), "solvertest");
  EXPECT_EQ(c.i("ncols"), 3);
  EXPECT_EQ(c.i("nrows"), 3);
  // Rows in list order (newest first): c3, c2, c1; columns x, y, w.
  EXPECT_EQ(c.cv("rowtype"), "RGL");
  EXPECT_EQ(c.dv("rhs"), dbls({6, -1, 4}));
  EXPECT_EQ(c.dv("range"), dbls({8, 0, 0}));
  EXPECT_EQ(c.dv("obj"), dbls({1, 0, 4}));
  EXPECT_EQ(c.iv("colstart"), ints({0, 2, 4}));
  EXPECT_EQ(c.iv("colcount"), ints({2, 2, 2}));
  EXPECT_EQ(c.iv("rowind"), ints({1, 2, 0, 2, 0, 1}));
  EXPECT_EQ(c.dv("rowval"), dbls({3, 1, 1, 2, 1, -1}));
  EXPECT_EQ(c.dv("lb"), dbls({0, -5, 1}));
  EXPECT_EQ(c.dv("ub"), dbls({10, 5, 1e20}));

  const fake::call k = fake::calls_of("KVSLchgobj").at(0);
  EXPECT_EQ(k.i("n"), 1);
  EXPECT_EQ(k.iv("col"), ints({-1}));
  EXPECT_EQ(k.dv("val"), dbls({-7}));

  const auto names = fake::calls_of("KVSLaddnames");
  EXPECT_EQ(names[0].i("type"), 1);
  EXPECT_EQ(names[0].i("first"), 0);
  EXPECT_EQ(names[0].i("last"), 2);
  EXPECT_EQ(names[0].cv("names"), names_of({"c3", "c2", "c1"}));
  EXPECT_EQ(names[1].i("type"), 2);
  EXPECT_EQ(names[1].i("last"), 2);
  EXPECT_EQ(names[1].cv("names"), names_of({"x", "y", "w"}));
  EXPECT_EQ(fake::calls_of("KVSLchgobjsense").at(0).i("sense"), 1);

  EXPECT_EQ(prob->status, MDL_ST_LOADED);
  EXPECT_EQ(prob->ncols, 3);
  EXPECT_EQ(prob->nrows, 3);
  EXPECT_EQ(prob->nnz, 6);
  EXPECT_EQ(prob->nsets, 0);
  EXPECT_EQ(m.x->column, 0u);
  EXPECT_EQ(m.y->column, 1u);
  EXPECT_EQ(m.w->column, 2u);
  EXPECT_EQ(m.u->column, kvtl::no_number);
  EXPECT_EQ(m.c3->row, 0u);
  EXPECT_EQ(m.c1->row, 2u);
  ASSERT_NE(prob->colvars, nullptr);
  EXPECT_EQ(prob->colvars[2], m.w);
}

TEST_F(Generate, MaximisingSendsSenseMinusOne) {
  build_lp(*this, prob);
  prob->sense = 2;
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_EQ(fake::calls_of("KVSLchgobjsense").at(0).i("sense"), -1);
}

TEST_F(Generate, QuadraticObjectiveSelectsLoadqp) {
  MDLvar x = var("x"), y = var("y");
  ASSERT_LT(static_cast<void *>(x), static_cast<void *>(y));
  MDLctr c = ctr(prob, "c", MDL_CTR_G, 1);
  term(c, x, 1);
  term(c, y, 1);
  MDLctr obj = builder::objective(prob);
  term(obj, x, 1);
  qterm(obj, x, x, 3);
  qterm(obj, x, y, 2);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLloadqp64", "KVSLaddnames", "KVSLaddnames",
                                                 "KVSLchgobjsense"}));
  const fake::call l = fake::calls_of("KVSLloadqp64").at(0);
  EXPECT_EQ(l.i("ncols"), 2);
  EXPECT_EQ(l.i("nrows"), 1);
  EXPECT_EQ(l.cv("rowtype"), "G");
  EXPECT_EQ(l.dv("rhs"), dbls({1}));
  EXPECT_EQ(l.dv("obj"), dbls({1, 0}));
  EXPECT_EQ(l.iv("colstart"), ints({0, 1}));
  EXPECT_EQ(l.iv("colcount"), ints({1, 1}));
  EXPECT_EQ(l.iv("rowind"), ints({0, 0}));
  EXPECT_EQ(l.dv("rowval"), dbls({1, 1}));
  // 3x^2 goes to the diagonal doubled, 2xy once.
  EXPECT_EQ(l.i("nqobj"), 2);
  EXPECT_EQ(l.iv("qobjcol1"), ints({0, 0}));
  EXPECT_EQ(l.iv("qobjcol2"), ints({0, 1}));
  EXPECT_EQ(l.dv("qobjval"), dbls({6, 2}));
}

TEST_F(Generate, QuadraticConstraintSelectsLoadqcqp) {
  MDLvar x = var("x"), y = var("y");
  ASSERT_LT(static_cast<void *>(x), static_cast<void *>(y));
  MDLctr lin = ctr(prob, "lin", MDL_CTR_L, 3);
  term(lin, x, 1);
  MDLctr q = ctr(prob, "q", MDL_CTR_L, 10);
  qterm(q, x, x, 2);
  qterm(q, x, y, 3);
  term(q, y, 1);
  MDLctr obj = builder::objective(prob);
  term(obj, x, 1);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLloadqcqp64", "KVSLaddnames", "KVSLaddnames",
                                                 "KVSLchgobjsense"}));
  const fake::call l = fake::calls_of("KVSLloadqcqp64").at(0);
  EXPECT_EQ(l.i("ncols"), 2);
  EXPECT_EQ(l.i("nrows"), 2);
  EXPECT_EQ(l.cv("rowtype"), "LL");
  EXPECT_EQ(l.dv("rhs"), dbls({10, 3}));
  EXPECT_EQ(l.iv("colstart"), ints({0, 1}));
  EXPECT_EQ(l.iv("colcount"), ints({1, 1}));
  EXPECT_EQ(l.iv("rowind"), ints({1, 0}));
  EXPECT_EQ(l.dv("rowval"), dbls({1, 1}));
  EXPECT_EQ(l.i("nqobj"), 0);
  EXPECT_EQ(l.i("nqrows"), 1);
  EXPECT_EQ(l.iv("qrow"), ints({0}));
  EXPECT_EQ(l.iv("qrowcount"), ints({2}));
  EXPECT_EQ(l.iv("qrowcol1"), ints({0, 0}));
  EXPECT_EQ(l.iv("qrowcol2"), ints({0, 1}));
  // The diagonal keeps its coefficient, 3xy is given as 1.5 once.
  EXPECT_EQ(l.dv("qrowval"), dbls({2, 1.5}));
}

// Every entity type and two loaded sets (one unloaded).
struct global_model {
  MDLvar b, i, p, s, s2, r, r2, c, orphan;
  MDLsos sos1, sos2, sos3;
};

global_model build_global(SolverTest &t, MDLprob p) {
  (void)t;
  global_model m{};
  m.b = mdlnewvar_prob(p, "b", MDL_BINARY, 0, 1);
  m.i = mdlnewvar_prob(p, "i", MDL_INTEGER, 0, 10);
  m.p = mdlnewvar_prob(p, "p", MDL_PARTINT, 0, 10);
  m.p->limit = 3;
  m.s = mdlnewvar_prob(p, "s", MDL_SEMICONT, 0, 8);
  m.s->limit = 2;
  m.s2 = mdlnewvar_prob(p, "s2", MDL_SEMICONT, 2, 20);
  m.s2->limit = 10;
  m.r = mdlnewvar_prob(p, "r", MDL_SEMIINT, 0, 9);
  m.r->limit = 4;
  m.r2 = mdlnewvar_prob(p, "r2", MDL_SEMIINT, 1, 30);
  m.r2->limit = 5;
  m.c = mdlnewvar_prob(p, "c", MDL_CONTINUOUS, 0, 1e20);
  m.orphan = mdlnewvar_prob(p, "orphan", MDL_CONTINUOUS, 0, 1);
  MDLctr all = ctr(p, "all", MDL_CTR_L, 100);
  for (MDLvar v : {m.b, m.i, m.p, m.s, m.s2, m.r, m.r2, m.c}) term(all, v, 1);
  MDLctr obj = builder::objective(p);
  term(obj, m.c, 1);
  m.sos1 = builder::sos(p, "sos1", 0);
  builder::element(m.sos1, m.b, 1);
  builder::element(m.sos1, m.i, 2);
  m.sos2 = builder::sos(p, "sos2", 1);
  builder::element(m.sos2, m.c, 1);
  builder::element(m.sos2, m.p, 2);
  builder::element(m.sos2, m.orphan, 3);
  m.sos3 = builder::sos(p, "sos3", 0);
  builder::element(m.sos3, m.orphan, 1);
  return m;
}

TEST_F(Generate, EntitiesAndSetsSelectLoadglobal) {
  global_model m = build_global(*this, prob);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLloadglobal64", "KVSLaddnames", "KVSLaddnames",
                                                 "KVSLaddnames", "KVSLchgobjsense"}));
  const fake::call l = fake::calls_of("KVSLloadglobal64").at(0);
  EXPECT_EQ(l.i("ncols"), 8);
  EXPECT_EQ(l.i("nrows"), 1);
  EXPECT_EQ(l.cv("rowtype"), "L");
  EXPECT_EQ(l.dv("rhs"), dbls({100}));
  EXPECT_EQ(l.dv("obj"), dbls({0, 0, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ(l.iv("colstart"), ints({0, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(l.iv("colcount"), ints({1, 1, 1, 1, 1, 1, 1, 1}));
  EXPECT_EQ(l.iv("rowind"), ints({0, 0, 0, 0, 0, 0, 0, 0}));
  // s2 (lower bound 2, limit 10) is a continuous column [2, 10]; r2 (lower
  // bound 1, limit 5) an integer column [1, 5].
  EXPECT_EQ(l.dv("lb"), dbls({0, 0, 0, 0, 2, 0, 1, 0}));
  EXPECT_EQ(l.dv("ub"), dbls({1, 10, 10, 8, 10, 9, 5, 1e20}));
  EXPECT_EQ(l.i("nglobal"), 6);
  EXPECT_EQ(l.cv("enttype"), "BIPSRI");
  EXPECT_EQ(l.iv("entcol"), ints({0, 1, 2, 3, 5, 6}));
  EXPECT_EQ(l.dv("entlimit"), dbls({0, 0, 3, 2, 4, 0}));
  // Sets newest first: sos3 has no member with a column and is not loaded.
  EXPECT_EQ(l.i("nsets"), 2);
  EXPECT_EQ(l.cv("settype"), "21");
  EXPECT_EQ(l.iv("setstart"), ints({0, 2, 4}));
  EXPECT_EQ(l.iv("setcol"), ints({2, 7, 0, 1}));
  EXPECT_EQ(l.dv("setref"), dbls({2, 1, 1, 2}));
  EXPECT_EQ(m.sos2->index, 1u);
  EXPECT_EQ(m.sos1->index, 2u);
  EXPECT_EQ(m.sos3->index, 0u);
  EXPECT_EQ(m.orphan->column, kvtl::no_number);
  EXPECT_EQ(prob->nsets, 2);
  const auto names = fake::calls_of("KVSLaddnames");
  EXPECT_EQ(names[1].i("type"), 3);
  EXPECT_EQ(names[1].i("last"), 1);
  EXPECT_EQ(names[1].cv("names"), names_of({"sos2", "sos1"}));
  EXPECT_EQ(names[2].cv("names"), names_of({"b", "i", "p", "s", "s2", "r", "r2", "c"}));
}

TEST_F(Generate, EntitiesWithQuadraticObjectiveSelectLoadqglobal) {
  MDLvar b = var("b", MDL_BINARY, 0, 1);
  MDLvar x = var("x");
  MDLctr c = ctr(prob, "c", MDL_CTR_E, 1);
  term(c, b, 1);
  term(c, x, 1);
  MDLctr obj = builder::objective(prob);
  qterm(obj, x, x, 0.5);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  const fake::call l = fake::calls_of("KVSLloadqglobal64").at(0);
  EXPECT_EQ(l.cv("rowtype"), "E");
  EXPECT_EQ(l.dv("obj"), dbls({0, 0}));
  EXPECT_EQ(l.i("nqobj"), 1);
  EXPECT_EQ(l.iv("qobjcol1"), ints({1}));
  EXPECT_EQ(l.iv("qobjcol2"), ints({1}));
  EXPECT_EQ(l.dv("qobjval"), dbls({1}));
  EXPECT_EQ(l.i("nglobal"), 1);
  EXPECT_EQ(l.i("nsets"), 0);
  EXPECT_EQ(l.cv("enttype"), "B");
  EXPECT_EQ(l.iv("entcol"), ints({0}));
  EXPECT_EQ(l.dv("entlimit"), dbls({0}));
  EXPECT_EQ(l.iv("setstart"), ints({0}));
}

TEST_F(Generate, EntitiesWithQuadraticRowsSelectLoadqcqpglobal) {
  MDLvar x = var("x"), n = var("n", MDL_INTEGER, 0, 5), y = var("y");
  MDLctr q = ctr(prob, "q", MDL_CTR_L, 4);
  qterm(q, x, x, 1);
  qterm(q, y, y, 1);
  MDLctr c = ctr(prob, "c", MDL_CTR_G, 0);
  term(c, n, 1);
  term(c, x, -1);
  MDLctr obj = builder::objective(prob);
  term(obj, y, 1);
  qterm(obj, n, n, 1);
  MDLsos s = builder::sos(prob, "s", 0);
  builder::element(s, x, 1);
  builder::element(s, y, 2);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_EQ(engine_calls().at(0), "KVSLloadqcqpglobal64");
  const fake::call l = fake::calls_of("KVSLloadqcqpglobal64").at(0);
  EXPECT_EQ(l.i("ncols"), 3);
  EXPECT_EQ(l.i("nrows"), 2);
  EXPECT_EQ(l.cv("rowtype"), "GL");
  EXPECT_EQ(l.dv("rhs"), dbls({0, 4}));
  EXPECT_EQ(l.iv("colstart"), ints({0, 1, 2}));
  EXPECT_EQ(l.iv("colcount"), ints({1, 1, 0}));
  EXPECT_EQ(l.iv("rowind"), ints({0, 0}));
  EXPECT_EQ(l.dv("rowval"), dbls({-1, 1}));
  EXPECT_EQ(l.dv("obj"), dbls({0, 0, 1}));
  EXPECT_EQ(l.i("nqobj"), 1);
  EXPECT_EQ(l.iv("qobjcol1"), ints({1}));
  EXPECT_EQ(l.dv("qobjval"), dbls({2}));
  EXPECT_EQ(l.i("nqrows"), 1);
  EXPECT_EQ(l.iv("qrow"), ints({1}));
  EXPECT_EQ(l.iv("qrowcount"), ints({2}));
  EXPECT_EQ(l.iv("qrowcol1"), ints({0, 2}));
  EXPECT_EQ(l.iv("qrowcol2"), ints({0, 2}));
  EXPECT_EQ(l.dv("qrowval"), dbls({1, 1}));
  EXPECT_EQ(l.i("nglobal"), 1);
  EXPECT_EQ(l.cv("enttype"), "I");
  EXPECT_EQ(l.iv("entcol"), ints({1}));
  EXPECT_EQ(l.i("nsets"), 1);
  EXPECT_EQ(l.cv("settype"), "1");
  EXPECT_EQ(l.iv("setstart"), ints({0, 2}));
  EXPECT_EQ(l.iv("setcol"), ints({0, 2}));
  EXPECT_EQ(l.dv("setref"), dbls({1, 2}));
}

TEST_F(Generate, IncludeVarsConstraintGivesColumnsWithoutRow) {
  MDLvar x = var("x"), y = var("y"), z = var("z");
  MDLctr inc = ctr(prob, "inc", MDL_CTR_N, 0, MDL_MODE_INCVARS);
  term(inc, z, 1);
  term(inc, x, 1);
  MDLctr c = ctr(prob, "c", MDL_CTR_L, 1);
  term(c, y, 1);
  builder::objective(prob);
  term(&prob->objrec, y, 1);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  const fake::call l = fake::calls_of("KVSLloadlp64").at(0);
  EXPECT_EQ(l.i("ncols"), 3);
  EXPECT_EQ(l.i("nrows"), 1);
  EXPECT_EQ(l.iv("colcount"), ints({0, 1, 0}));
  EXPECT_EQ(l.iv("colstart"), ints({0, 0, 1}));
  EXPECT_EQ(inc->row, kvtl::no_number);
  EXPECT_EQ(z->column, 2u);
}

TEST_F(Generate, EmptyRowsAreDroppedOnlyWhenSatisfied) {
  MDLvar x = var("x");
  MDLctr c = ctr(prob, "c", MDL_CTR_L, 1);
  term(c, x, 1);
  MDLctr l5 = ctr(prob, "l5", MDL_CTR_L, 5);     // 0 <= 5: no row
  MDLctr g5 = ctr(prob, "g5", MDL_CTR_G, 5);     // 0 >= 5: a row
  MDLctr e0 = ctr(prob, "e0", MDL_CTR_E, 0);     // 0 = 0: no row
  MDLctr cancelled = ctr(prob, "cancelled", MDL_CTR_E, 2);
  term(cancelled, x, 1);
  term(cancelled, x, -1);                        // 0 = 2: a row
  MDLctr r = ctr(prob, "r", MDL_CTR_N);
  builder::set_range(r, -1, 1);                  // -1 <= 0 <= 1: no row
  builder::objective(prob);
  term(&prob->objrec, x, 1);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  const fake::call l = fake::calls_of("KVSLloadlp64").at(0);
  EXPECT_EQ(l.cv("rowtype"), "EGL");
  EXPECT_EQ(l.dv("rhs"), dbls({2, 5, 1}));
  EXPECT_EQ(l.iv("colcount"), ints({1}));
  EXPECT_EQ(l.iv("rowind"), ints({2}));
  EXPECT_EQ(l5->row, kvtl::no_number);
  EXPECT_EQ(e0->row, kvtl::no_number);
  EXPECT_EQ(r->row, kvtl::no_number);
  EXPECT_EQ(g5->row, 1u);
}

TEST_F(Generate, ZeroConstantGivesPositiveZeroRightHandSide) {
  MDLvar x = var("x");
  MDLctr c = ctr(prob, "c", MDL_CTR_G);
  term(c, x, 1);
  c->expr.constant = -0.0;
  builder::objective(prob);
  term(&prob->objrec, x, 1);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  const double rhs = fake::calls_of("KVSLloadlp64").at(0).dv("rhs").at(0);
  EXPECT_EQ(rhs, 0.0);
  EXPECT_FALSE(std::signbit(rhs));
}

TEST_F(Generate, ModelCutsIndicatorsAndDelayedRows) {
  MDLvar x = var("x"), z = var("z", MDL_BINARY, 0, 1), z2 = var("z2", MDL_BINARY, 0, 1);
  MDLctr cut = ctr(prob, "cut", MDL_CTR_L, 5, MDL_MODE_MODCUT);
  term(cut, x, 1);
  MDLctr on = ctr(prob, "on", MDL_CTR_L, 3, reinterpret_cast<uintptr_t>(z) | 1);
  term(on, x, 1);
  MDLctr off = ctr(prob, "off", MDL_CTR_G, 1, reinterpret_cast<uintptr_t>(z2));
  term(off, x, 1);
  MDLctr del = ctr(prob, "del", MDL_CTR_L, 9, MDL_MODE_DELAYED);
  term(del, x, 2);
  builder::objective(prob);
  term(&prob->objrec, x, 1);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_EQ(engine_calls(),
            (std::vector<string>{"KVSLloadglobal64", "KVSLloadmodelcuts", "KVSLsetindicators",
                                 "KVSLloaddelayedrows", "KVSLaddnames", "KVSLaddnames",
                                 "KVSLchgobjsense"}));
  const fake::call l = fake::calls_of("KVSLloadglobal64").at(0);
  EXPECT_EQ(l.i("ncols"), 3);
  EXPECT_EQ(l.cv("enttype"), "BB");
  EXPECT_EQ(l.iv("entcol"), ints({1, 2}));
  EXPECT_EQ(l.iv("colcount"), ints({4, 0, 0}));
  const fake::call mc = fake::calls_of("KVSLloadmodelcuts").at(0);
  EXPECT_EQ(mc.i("n"), 1);
  EXPECT_EQ(mc.iv("row"), ints({3}));
  const fake::call ind = fake::calls_of("KVSLsetindicators").at(0);
  EXPECT_EQ(ind.i("n"), 2);
  EXPECT_EQ(ind.iv("row"), ints({1, 2}));
  EXPECT_EQ(ind.iv("col"), ints({2, 1}));
  EXPECT_EQ(ind.iv("flag"), ints({-1, 1}));
  const fake::call dl = fake::calls_of("KVSLloaddelayedrows").at(0);
  EXPECT_EQ(dl.i("n"), 1);
  EXPECT_EQ(dl.iv("row"), ints({0}));
}

TEST_F(Generate, NamesOffSendsNoNames) {
  MDLprob p = mdlnewprob("nonames");
  ASSERT_EQ(mdlsetdictsize_prob(p, 0, 0), 0);
  MDLvar x = mdlnewvar_prob(p, "x", MDL_CONTINUOUS, 0, 1);
  MDLctr c = ctr(p, "c", MDL_CTR_L, 1);
  term(c, x, 1);
  builder::objective(p);
  term(&p->objrec, x, 1);
  fake::clear_calls();
  ASSERT_EQ(mdlloadmat_prob(p), 0);
  EXPECT_EQ(fake::calls_of("KVSLaddnames").size(), 0u);
  EXPECT_EQ(fake::calls_of("KVSLloadlp64").size(), 1u);
  mdldelprob_prob(p);
}

TEST_F(Generate, ColumnOrderSortsByName) {
  ASSERT_EQ(mdlsetcolorder_prob(prob, 1), 0);
  MDLvar zeta = var("zeta"), alpha = var("alpha"), mid = var("mid");
  MDLctr c1 = ctr(prob, "c1", MDL_CTR_L, 1);
  term(c1, zeta, 1);
  term(c1, alpha, 2);
  MDLctr c2 = ctr(prob, "c2", MDL_CTR_L, 1);
  term(c2, zeta, 3);
  builder::objective(prob);
  term(&prob->objrec, mid, 1);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  const fake::call l = fake::calls_of("KVSLloadlp64").at(0);
  EXPECT_EQ(l.iv("colcount"), ints({1, 0, 2}));
  EXPECT_EQ(l.iv("colstart"), ints({0, 1, 1}));
  EXPECT_EQ(l.iv("rowind"), ints({1, 0, 1}));
  EXPECT_EQ(l.dv("rowval"), dbls({2, 3, 1}));
  EXPECT_EQ(l.dv("obj"), dbls({0, 1, 0}));
  EXPECT_EQ(alpha->column, 0u);
  EXPECT_EQ(mid->column, 1u);
  EXPECT_EQ(zeta->column, 2u);
  EXPECT_EQ(fake::calls_of("KVSLaddnames").at(1).cv("names"), names_of({"alpha", "mid", "zeta"}));
}

TEST_F(Generate, ReorderColumnsComparesUnsignedBytes) {
  MDLvar high = var("\xc3\xa9t\xc3\xa9"), b = var("b"), a = var("a");
  MDLvar map[] = {high, b, a};
  int counts[] = {7, 8, 9};
  ASSERT_EQ(mdlreordercols(map, counts, 3), 0);
  EXPECT_EQ(map[0], a);
  EXPECT_EQ(map[1], b);
  EXPECT_EQ(map[2], high);
  EXPECT_EQ(counts[0], 9);
  EXPECT_EQ(counts[1], 8);
  EXPECT_EQ(counts[2], 7);
  EXPECT_EQ(a->column, 0u);
  EXPECT_EQ(high->column, 2u);
}

TEST_F(Generate, DirectivesMergeAndClampPriorities) {
  MDLvar x = var("x", MDL_INTEGER, 0, 9), y = var("y", MDL_INTEGER, 0, 9), z = var("z");
  MDLctr c = ctr(prob, "c", MDL_CTR_L, 4);
  term(c, x, 1);
  term(c, y, 1);
  builder::objective(prob);
  term(&prob->objrec, x, 1);
  MDLsos s = builder::sos(prob, "s", 0);
  builder::element(s, x, 1);
  builder::element(s, y, 2);
  builder::directive(prob, x, 1, 2500);
  builder::directive(prob, y, 1, -3);
  builder::directive(prob, x, 2, 0);
  builder::directive(prob, s, 1 | MDL_DIR_SOSFLAG, 7.9);
  builder::directive(prob, z, 1, 5);   // z has no column: ignored
  builder::directive(prob, y, 5, 0.5);
  builder::directive(prob, x, 4, 2.0);
  builder::directive(prob, s, 3 | MDL_DIR_SOSFLAG, 0);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLloadglobal64", "KVSLaddnames", "KVSLaddnames",
                                                 "KVSLaddnames", "KVSLloaddirs",
                                                 "KVSLchgobjsense"}));
  EXPECT_EQ(fake::calls_of("KVSLgetdblcontrol").at(0).i("control"), 7015);
  const fake::call d = fake::calls_of("KVSLloaddirs").at(0);
  EXPECT_EQ(d.i("n"), 3);
  EXPECT_EQ(d.iv("obj"), ints({0, 1, -1}));
  EXPECT_EQ(d.iv("prio"), ints({1000, 0, 7}));
  EXPECT_EQ(d.cv("dir"), "UND");
  EXPECT_EQ(d.dv("up"), dbls({2.0, 0.01, 0.01}));
  EXPECT_EQ(d.dv("down"), dbls({0.01, 0.5, 0.01}));
  EXPECT_EQ(prob->status, MDL_ST_LOADED);
}

TEST_F(Generate, UnchangedModelOnlySendsSense) {
  build_lp(*this, prob);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  fake::clear_calls();
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLchgobjsense"}));
  EXPECT_EQ(prob->status, MDL_ST_LOADED);
}

TEST_F(Generate, PendingDirectivesOnLoadedModelTakeTheIncrementalPath) {
  lp_model m = build_lp(*this, prob);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  fake::clear_calls();
  builder::directive(prob, m.y, 1, 12);
  EXPECT_EQ(prob->status, MDL_ST_LOADED | MDL_ST_DIRPENDING);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLloaddirs", "KVSLchgobjsense"}));
  const fake::call d = fake::calls_of("KVSLloaddirs").at(0);
  EXPECT_EQ(d.iv("obj"), ints({1}));
  EXPECT_EQ(d.iv("prio"), ints({12}));
  EXPECT_EQ(prob->status, MDL_ST_LOADED);
}

TEST_F(Generate, ReloadRenumbersAndReleasesCaches) {
  lp_model m = build_lp(*this, prob);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  prob->solx = static_cast<double *>(mdlsl_malloc(3 * sizeof(double)));
  prob->solcache = MDL_SC_X;
  prob->objval = 5;
  prob->status |= MDL_ST_SOLUTION;
  // y leaves every constraint and the objective.
  mdl_ctr *c1 = m.c1;
  mdlset_term(m.y, &c1->expr.lin, 0);
  mdlset_term(m.y, &m.c3->expr.lin, 0);
  prob->status |= MDL_ST_MODIFIED;
  fake::clear_calls();
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_EQ(prob->solx, nullptr);
  EXPECT_EQ(prob->solcache, 0);
  EXPECT_EQ(prob->objval, 0.0);
  EXPECT_EQ(prob->status, MDL_ST_LOADED);
  EXPECT_EQ(m.y->column, kvtl::no_number);
  EXPECT_EQ(m.w->column, 1u);
  EXPECT_EQ(fake::calls_of("KVSLloadlp64").at(0).i("ncols"), 2);
}

TEST_F(Generate, ForeignVariableReports1563) {
  MDLvar x = var("x");
  MDLprob other = mdlnewprob("other");
  MDLvar alien = mdlnewvar_prob(other, "alien", MDL_CONTINUOUS, 0, 1);
  MDLctr c = ctr(prob, "c", MDL_CTR_L, 1);
  term(c, x, 1);
  term(c, alien, 1);
  builder::objective(prob);
  term(&prob->objrec, x, 1);
  fake::clear_calls();
  EXPECT_EQ(mdlloadmat_prob(prob), 1);
  expect_report(1563, 1, "(loadmat) Inconsistency during matrix generation.");
  EXPECT_TRUE(engine_calls().empty());
  EXPECT_EQ(x->column, kvtl::no_number);
  EXPECT_EQ(c->row, kvtl::no_number);
  mdldelprob_prob(other);
}

// Each of the six load calls failing: error 1524 with its name, status kept.
struct load_failure {
  const char *call;
  const char *name;
  std::function<void(MDLprob)> build;
};

class LoadFailure : public SolverTest, public ::testing::WithParamInterface<load_failure> {};

TEST_P(LoadFailure, ReportsAndKeepsStatus) {
  const load_failure &f = GetParam();
  f.build(prob);
  const uint32_t before = prob->status;
  fake::fail_call(f.call, 1, 9);
  EXPECT_EQ(mdlloadmat_prob(prob), 1);
  expect_report(1524, 1,
                string("(loadmat) Korvex-Optimizer error 9 during '") + f.name +
                    "'. Return value: 9.");
  EXPECT_EQ(prob->status, before);
  EXPECT_EQ(prob->colvars, nullptr);
  for (mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next) EXPECT_EQ(c->row, kvtl::no_number);
  // The next attempt loads in full.
  fake::clear_calls();
  EXPECT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_FALSE(fake::calls_of(f.call).empty());
  EXPECT_EQ(prob->status, MDL_ST_LOADED);
}

void one_var_model(MDLprob p, int type, bool qobj, bool qrow, bool set) {
  MDLvar x = mdlnewvar_prob(p, "x", type, 0, 1);
  MDLctr c = ctr(p, "c", MDL_CTR_L, 1);
  term(c, x, 1);
  if (qrow) qterm(c, x, x, 1);
  MDLctr obj = builder::objective(p);
  term(obj, x, 1);
  if (qobj) qterm(obj, x, x, 1);
  if (set) builder::element(builder::sos(p, "s", 0), x, 1);
}

INSTANTIATE_TEST_SUITE_P(
    SixCalls, LoadFailure,
    ::testing::Values(
        load_failure{"KVSLloadlp64", "loadlp", [](MDLprob p) { one_var_model(p, 0, false, false, false); }},
        load_failure{"KVSLloadqp64", "loadqp", [](MDLprob p) { one_var_model(p, 0, true, false, false); }},
        load_failure{"KVSLloadqcqp64", "loadqcqp", [](MDLprob p) { one_var_model(p, 0, false, true, false); }},
        load_failure{"KVSLloadglobal64", "loadglobal", [](MDLprob p) { one_var_model(p, 0, false, false, true); }},
        load_failure{"KVSLloadqglobal64", "loadqglobal", [](MDLprob p) { one_var_model(p, 1, true, false, false); }},
        load_failure{"KVSLloadqcqpglobal64", "loadqcqpglobal", [](MDLprob p) { one_var_model(p, 2, true, true, false); }},
        load_failure{"KVSLchgobj", "chgobj", [](MDLprob p) {
                       one_var_model(p, 0, false, false, false);
                       p->objrec.expr.constant = 3;
                     }},
        load_failure{"KVSLaddnames", "addnames", [](MDLprob p) { one_var_model(p, 0, false, false, false); }},
        load_failure{"KVSLloadmodelcuts", "indic/mcuts/delayed", [](MDLprob p) {
                       one_var_model(p, 0, false, false, false);
                       p->ctrs->mode = MDL_MODE_MODCUT;
                     }},
        load_failure{"KVSLsetindicators", "indic/mcuts/delayed", [](MDLprob p) {
                       one_var_model(p, 1, false, false, false);
                       MDLvar z = mdlnewvar_prob(p, "z", MDL_BINARY, 0, 1);
                       p->ctrs->mode = reinterpret_cast<uintptr_t>(z) | 1;
                     }},
        load_failure{"KVSLloaddelayedrows", "indic/mcuts/delayed", [](MDLprob p) {
                       one_var_model(p, 0, false, false, false);
                       p->ctrs->mode = MDL_MODE_DELAYED;
                     }}),
    [](const ::testing::TestParamInfo<load_failure> &info) {
      return string(info.param.call).substr(4) + std::to_string(info.index);
    });

TEST_F(Generate, SpecialRowChainStopsAtFirstFailure) {
  one_var_model(prob, 0, false, false, false);
  MDLvar z = var("z", MDL_BINARY, 0, 1);
  MDLctr d = ctr(prob, "d", MDL_CTR_L, 1, MDL_MODE_DELAYED);
  term(d, z, 1);
  prob->ctrs->next->mode = reinterpret_cast<uintptr_t>(z);
  fake::fail_call("KVSLsetindicators", 1, 4);
  EXPECT_EQ(mdlloadmat_prob(prob), 1);
  expect_report(1524, 1, "(loadmat) Korvex-Optimizer error 4 during 'indic/mcuts/delayed'. Return value: 4.");
  EXPECT_EQ(fake::calls_of("KVSLloaddelayedrows").size(), 0u);
}

TEST_F(Generate, DirectiveFailureLeavesStatusThreeAndRetriesOnlyDirectives) {
  lp_model m = build_lp(*this, prob);
  builder::directive(prob, m.x, 1, 3);
  fake::fail_call("KVSLloaddirs", 1, 9);
  EXPECT_EQ(mdlloadmat_prob(prob), 1);
  expect_report(1524, 1, "(loadmat) Korvex-Optimizer error 9 during 'loaddirs'. Return value: 9.");
  EXPECT_EQ(prob->status, MDL_ST_LOADED | MDL_ST_DIRPENDING);
  fake::clear_calls();
  EXPECT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_EQ(engine_calls(), (std::vector<string>{"KVSLloaddirs", "KVSLchgobjsense"}));
  EXPECT_EQ(prob->status, MDL_ST_LOADED);
}

// Allocation failures at every allocation of a load: error 1502, nothing
// kept half-numbered, and the load succeeds once memory is there.
int fail_at = 0;
int allocations = 0;
void *failing_malloc(size_t n) {
  if (++allocations == fail_at) return nullptr;
  return std::malloc(n);
}

TEST_F(Generate, EveryAllocationFailureReports1502) {
  global_model m = build_global(*this, prob);
  builder::directive(prob, m.b, 1, 3);
  void *(*saved)(size_t) = mdlsl_malloc;
  int result = 1;
  for (fail_at = 1; result != 0 && fail_at < 50; ++fail_at) {
    allocations = 0;
    errors.reports.clear();
    mdlsl_malloc = failing_malloc;
    result = mdlloadmat_prob(prob);
    mdlsl_malloc = saved;
    if (result != 0) {
      expect_report(1502, 1, "Not enough memory.");
      if (prob->status != (MDL_ST_LOADED | MDL_ST_DIRPENDING)) {
        EXPECT_EQ(m.b->column, kvtl::no_number);
        EXPECT_EQ(m.sos1->index, 0u);
      }
    }
  }
  EXPECT_EQ(result, 0);
  EXPECT_GT(fail_at, 4);
  EXPECT_EQ(prob->status, MDL_ST_LOADED);
}

// Many coefficients in rows whose variables were made far apart, with unused
// variables between the columns, with and without columns ordered by name:
// the column arrays hold exactly the model's coefficients, each column's
// rows in row order.
class LargeMatrix : public SolverTest {
 protected:
  void check(bool by_name);
};

void LargeMatrix::check(bool by_name) {
  MDLprob p = prob;
  std::vector<MDLvar> vars;
  char name[32];
  for (int i = 0; i < 300; ++i) {
    // Names in reverse creation order, so that ordering by name reverses.
    snprintf(name, sizeof name, "v%04d", 299 - i);
    vars.push_back(mdlnewvar_prob(p, name, MDL_CONTINUOUS, 0, 1));
  }
  std::vector<MDLctr> rows;
  uint64_t seed = 7;
  auto draw = [&seed](uint64_t n) {
    seed = seed * 6364136223846793005ull + 1442695040888963407ull;
    return (seed >> 33) % n;
  };
  // Row r holds variables r mod 7, ... stepping through the whole range;
  // every fourth variable is never used.
  std::vector<std::map<int, double>> byvar(300);   // variable -> (row -> coef)
  for (int r = 0; r < 120; ++r) {
    MDLctr c = ctr(p, nullptr, MDL_CTR_L, 1);
    for (int k = 0; k < 40; ++k) {
      int v = static_cast<int>(draw(300));
      if (v % 4 == 3) continue;
      double a = static_cast<double>(draw(9) + 1);
      term(c, vars[static_cast<size_t>(v)], a);
      byvar[static_cast<size_t>(v)][r] += a;
    }
    rows.push_back(c);
  }
  MDLctr obj = builder::objective(p);
  term(obj, vars[0], 1);
  if (by_name) ASSERT_EQ(mdlsetcolorder_prob(p, 1), 0);
  ASSERT_EQ(mdlloadmat_prob(p), 0);
  EXPECT_TRUE(errors.empty());
  const fake::call c = fake::calls_of("KVSLloadlp64").at(0);
  // Rows are numbered newest constraint first.
  std::vector<int> row_of(120);
  for (int r = 0; r < 120; ++r) row_of[static_cast<size_t>(r)] = static_cast<int>(rows[static_cast<size_t>(r)]->row);
  std::vector<int> used;
  for (int v = 0; v < 300; ++v)
    if (!byvar[static_cast<size_t>(v)].empty() || v == 0) used.push_back(v);
  if (by_name) std::reverse(used.begin(), used.end());
  ASSERT_EQ(c.i("ncols"), static_cast<int>(used.size()));
  const std::vector<long> starts = c.iv("colstart"), counts = c.iv("colcount"), rowind = c.iv("rowind");
  const std::vector<double> rowval = c.dv("rowval");
  long nnz = 0;
  for (size_t j = 0; j < used.size(); ++j) {
    const int v = used[j];
    EXPECT_EQ(vars[static_cast<size_t>(v)]->column, j);
    std::map<int, double> expected;
    for (const auto &[r, a] : byvar[static_cast<size_t>(v)]) expected[row_of[static_cast<size_t>(r)]] = a;
    std::map<int, double> got;
    long prev = -1;
    for (long k = starts[j]; k < starts[j] + counts[j]; ++k) {
      got[static_cast<int>(rowind[static_cast<size_t>(k)])] = rowval[static_cast<size_t>(k)];
      EXPECT_LT(prev, rowind[static_cast<size_t>(k)]) << "column " << j;   // rows in order
      prev = rowind[static_cast<size_t>(k)];
    }
    EXPECT_EQ(got, expected) << "column " << j;
    nnz += counts[j];
  }
  EXPECT_EQ(nnz, p->nnz);
  EXPECT_GT(nnz, 3000);   // more than the first blocks of the coefficient log
}

TEST_F(LargeMatrix, UnusedVariablesBetweenColumns) { check(false); }
TEST_F(LargeMatrix, ColumnsOrderedByName) { check(true); }

// A name longer than the longest length on record (which every naming path
// keeps up to date) still reaches the engine whole.
TEST_F(Generate, NamesLongerThanRecordedStillSentWhole) {
  MDLvar a = mdlnewvar_prob(prob, "a_rather_long_column_name_0123456789", MDL_CONTINUOUS, 0, 1);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, 0, 1);
  MDLctr c = ctr(prob, "a_rather_long_row_name_for_the_test", MDL_CTR_L, 1);
  term(c, a, 1);
  term(c, b, 1);
  prob->maxnamelen = 0;
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  const auto names = fake::calls_of("KVSLaddnames");
  ASSERT_EQ(names.size(), 2u);
  EXPECT_EQ(names[0].cv("names"), names_of({"a_rather_long_row_name_for_the_test"}));
  EXPECT_EQ(names[1].cv("names"), names_of({"a_rather_long_column_name_0123456789", "b"}));
}

}  // namespace
