/*
 * mipsol_test.cpp -- solution objects and MIP starts against the recording
 * engine: lazy removal, ordering, printing, the engine calls and reports.
 */
#include <math.h>

#include <string>
#include <vector>

#include "solver/fixture.h"
#include "solver/solobj.h"

using builder::ctr;
using builder::term;

namespace {

class MipSol : public SolverTest {
 protected:
  // c1: x + y <= 4, objective 2x + 3y + 1, x and y integer.
  void model() {
    x = var("x", MDL_INTEGER, 0, 10);
    y = var("y", MDL_INTEGER, 0, 10);
    c1 = ctr(prob, "c1", MDL_CTR_L, 4);
    term(c1, x, 1);
    term(c1, y, 1);
    MDLctr obj = builder::objective(prob);
    term(obj, x, 2);
    term(obj, y, 3);
    obj->expr.constant = 1;
    ASSERT_EQ(mdlloadmat_prob(prob), 0);
    fake::clear_calls();
  }
  MDLvar x = nullptr, y = nullptr;
  MDLctr c1 = nullptr;
};

TEST_F(MipSol, NullArgumentsReport) {
  EXPECT_EQ(mdlnewsol_prob(nullptr), nullptr);
  expect_report(1501, 1, "(newsol) No active problem.");
  MDLvar v = var("v");
  EXPECT_EQ(mdlsetsolvar(nullptr, v, 1), 1);
  expect_report(1597, 1, "(setsolvar) No solution given.");
  double vals[1] = {1};
  EXPECT_EQ(mdlsetsolarrvar(nullptr, &v, vals), 1);
  expect_report(1597, 1, "(setsolarrvar) No solution given.");
  EXPECT_EQ(mdldelsolvar(nullptr, v), 1);
  expect_report(1597, 1, "(delsolvar) No solution given.");
  EXPECT_EQ(mdldelsol(nullptr), 1);
  expect_report(1597, 1, "(delsol) No solution given.");
  EXPECT_EQ(mdlgetsolsize(nullptr), -1);
  expect_report(1520, 0, "(getsolsize) No solution available or problem modified since last solved.");
  double out = 0;
  EXPECT_EQ(mdlgetsolvar(nullptr, v, &out), 1);
  expect_report(1520, 0, "(getsolvar) No solution available or problem modified since last solved.");
  EXPECT_EQ(mdlprintsol(nullptr), 1);
  expect_report(1598, 0, "(printsol) No solution given.");
  MDLsol s = mdlnewsol_prob(prob);
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(mdlsetsolvar(s, nullptr, 1), 1);
  expect_report(1505, 1, "(setsolvar) No variable given.");
  EXPECT_EQ(mdldelsolvar(s, nullptr), 1);
  expect_report(1505, 1, "(delsolvar) No variable given.");
  EXPECT_EQ(mdlgetsolvar(s, nullptr, &out), 1);
  expect_report(1505, 1, "(getsolvar) No variable given.");
  EXPECT_EQ(mdlsetsolarrvar(s, nullptr, vals), 1);
  expect_report(1506, 1, "(setsolarrvar) No array of variables given.");
  EXPECT_EQ(mdlsetsolarrvar(s, &v, nullptr), 1);
  expect_report(1512, 1, "(setsolarrvar) No array of constants given.");
  EXPECT_EQ(mdldelsol(s), 0);
}

TEST_F(MipSol, NanRemovesTheValue) {
  MDLvar a = var("a");
  MDLsol s = mdlnewsol_prob(prob);
  EXPECT_EQ(mdlsetsolvar(s, a, 3), 0);
  EXPECT_EQ(mdlgetsolsize(s), 1);
  EXPECT_EQ(mdlsetsolvar(s, a, NAN), 0);
  expect_report(1599, 0, "(setsolvar) Removing var a, set to a NaN value, from solution.");
  double out = 0;
  EXPECT_EQ(mdlgetsolvar(s, a, &out), -1);
  EXPECT_EQ(mdlgetsolsize(s), 0);
  mdldelsol(s);
}

TEST_F(MipSol, ValuesKeepTheLatestAndSerialOrder) {
  std::vector<MDLvar> v;
  for (int i = 0; i < 10; ++i) v.push_back(var(("v" + std::to_string(i)).c_str()));
  MDLsol s = mdlnewsol_prob(prob);
  EXPECT_EQ(mdlsetsolvar(s, v[5], 5), 0);
  EXPECT_EQ(mdlsetsolvar(s, v[2], 2), 0);   // new first
  EXPECT_EQ(mdlsetsolvar(s, v[8], 8), 0);   // new last
  EXPECT_EQ(mdlsetsolvar(s, v[3], 3), 0);   // append
  EXPECT_EQ(mdlsetsolvar(s, v[3], 33), 0);  // most recent append
  EXPECT_EQ(mdlsetsolvar(s, v[6], 6), 0);
  EXPECT_EQ(mdlsetsolvar(s, v[3], 30), 0);  // a later append wins
  EXPECT_EQ(mdldelsolvar(s, v[5]), 0);      // removal as an append
  EXPECT_EQ(mdldelsolvar(s, v[9]), 0);      // beyond the last: nothing
  double out = 0;
  EXPECT_EQ(mdlgetsolvar(s, v[3], &out), 0);
  EXPECT_EQ(out, 30);
  EXPECT_EQ(mdlgetsolvar(s, v[5], &out), -1);
  EXPECT_EQ(mdlgetsolsize(s), 4);
  output.text.clear();
  EXPECT_EQ(mdlprintsol(s), 0);
  EXPECT_EQ(output.text, "v2 = 2, v3 = 30, v6 = 6, v8 = 8\n");
  // A removed first entry is reused for a lower serial.
  EXPECT_EQ(mdldelsolvar(s, v[2]), 0);
  EXPECT_EQ(mdlsetsolvar(s, v[0], 7), 0);
  EXPECT_EQ(mdlgetsolvar(s, v[2], &out), -1);
  EXPECT_EQ(mdlgetsolsize(s), 4);
  EXPECT_EQ(mdlstripsol(s), 0);
  EXPECT_EQ(s->pending, 0);
  mdldelsol(s);
}

TEST_F(MipSol, ManyAppendsAreNormalised) {
  std::vector<MDLvar> v;
  for (int i = 0; i < 600; ++i) v.push_back(var(nullptr));
  MDLsol s = mdlnewsol_prob(prob);
  EXPECT_EQ(mdlsetsolvar(s, v[0], 0), 0);
  EXPECT_EQ(mdlsetsolvar(s, v[599], 599), 0);
  for (int i = 598; i >= 1; --i) EXPECT_EQ(mdlsetsolvar(s, v[i], i), 0);
  EXPECT_LE(s->pending, 255);
  for (int i = 1; i < 599; i += 2) EXPECT_EQ(mdldelsolvar(s, v[i]), 0);
  EXPECT_EQ(mdlgetsolsize(s), 301);
  double out = -1;
  for (int i = 0; i < 600; ++i) {
    int rc = mdlgetsolvar(s, v[i], &out);
    if (i % 2 == 1 && i != 599) {
      EXPECT_EQ(rc, -1);
    } else {
      EXPECT_EQ(rc, 0);
      EXPECT_EQ(out, i);
    }
  }
  mdldelsol(s);
}

TEST_F(MipSol, ArrayValuesAndNan) {
  MDLarrvar arr = mdlnewarrvar_prob(prob, 3, MDL_CONTINUOUS, "z", 0, 1);
  ASSERT_NE(arr, nullptr);
  MDLsol s = mdlnewsol_prob(prob);
  double vals[3] = {1, NAN, 3};
  EXPECT_EQ(mdlsetsolarrvar(s, arr, vals), 0);
  expect_report(1599, 0, "(setsolarrvar) Removing var z_1, set to a NaN value, from solution.");
  EXPECT_EQ(mdlgetsolsize(s), 2);
  mdldelsol(s);
}

TEST_F(MipSol, PrintingBreaksLongLines) {
  std::vector<MDLvar> v;
  MDLsol s = mdlnewsol_prob(prob);
  for (int i = 0; i < 12; ++i) {
    v.push_back(var(("variable" + std::to_string(i)).c_str()));
    mdlsetsolvar(s, v.back(), 1.5);
  }
  output.text.clear();
  EXPECT_EQ(mdlprintsol(s), 0);
  // "variableN = 1.5" has 15 characters: a line breaks before an entry once
  // the entries on it exceed 75, that is after six of them here; the
  // second line holds five (the fifth has 16 characters).
  EXPECT_EQ(output.text,
            "variable0 = 1.5, variable1 = 1.5, variable2 = 1.5, variable3 = 1.5, "
            "variable4 = 1.5, variable5 = 1.5, \nvariable6 = 1.5, variable7 = 1.5, "
            "variable8 = 1.5, variable9 = 1.5, variable10 = 1.5, \nvariable11 = 1.5\n");
  MDLsol e = mdlnewsol_prob(prob);
  output.text.clear();
  EXPECT_EQ(mdlprintsol(e), 0);
  EXPECT_EQ(output.text, "\n");
  mdldelsol(e);
  mdldelsol(s);
}

TEST_F(MipSol, AddPassesLoadedColumnsOfThisProblem) {
  model();
  MDLvar loose = var("loose");  // no column
  MDLprob other = mdlnewprob("other");
  // Entries match by serial number: the foreign variable gets one that no
  // variable of this problem has.
  for (int i = 0; i < 10; ++i) mdlnewvar_prob(other, nullptr, MDL_CONTINUOUS, 0, 1);
  MDLvar foreign = mdlnewvar_prob(other, "f", MDL_CONTINUOUS, 0, 1);
  prob->status &= ~static_cast<uint32_t>(MDL_ST_MODIFIED);
  fake::clear_calls();
  MDLsol s = mdlnewsol_prob(prob);
  EXPECT_EQ(mdlsetsolvar(s, foreign, 9), 0);
  EXPECT_EQ(mdlsetsolvar(s, y, 2), 0);
  EXPECT_EQ(mdlsetsolvar(s, x, 1), 0);
  EXPECT_EQ(mdlsetsolvar(s, loose, 4), 0);
  EXPECT_EQ(mdlgetsolsize(s), 4);
  EXPECT_EQ(mdladdmipsol_prob(prob, s, "start"), 0);
  ASSERT_EQ(engine_calls(), std::vector<std::string>{"KVSLaddmipsol"});
  const fake::call c = fake::calls_of("KVSLaddmipsol").at(0);
  EXPECT_EQ(c.i("n"), 2);
  EXPECT_EQ(c.iv("col"), ints({static_cast<int64_t>(x->column), static_cast<int64_t>(y->column)}));
  EXPECT_EQ(c.dv("val"), dbls({1, 2}));
  EXPECT_EQ(c.s("name"), "start");
  mdldelsol(s);
  mdldelprob_prob(other);
}

TEST_F(MipSol, AddWithoutColumnsPassesNothing) {
  model();
  MDLvar loose = var("loose");
  prob->status &= ~static_cast<uint32_t>(MDL_ST_MODIFIED);
  fake::clear_calls();
  MDLsol s = mdlnewsol_prob(prob);
  mdlsetsolvar(s, loose, 1);
  EXPECT_EQ(mdladdmipsol_prob(prob, s, nullptr), 0);
  EXPECT_EQ(fake::calls_of("KVSLaddmipsol").at(0).i("n"), 0);
  mdldelsol(s);
}

TEST_F(MipSol, AddFailures) {
  model();
  EXPECT_EQ(mdladdmipsol_prob(prob, nullptr, "s"), 1);
  expect_report(1597, 1, "(addmipsol) No solution given.");
  MDLsol s = mdlnewsol_prob(prob);
  mdlsetsolvar(s, x, 1);
  mdldelsolvar(s, x);
  EXPECT_EQ(mdladdmipsol_prob(prob, s, "s"), 1);
  expect_report(1597, 1, "(addmipsol) No solution given.");
  mdlsetsolvar(s, x, 1);
  fake::clear_calls();
  fake::fail_call("KVSLaddmipsol", 1, KVSL_ERR_INDEX);
  EXPECT_EQ(mdladdmipsol_prob(prob, s, "s"), 1);
  expect_report(1524, 1,
                "(addmipsol) Korvex-Optimizer error " + std::to_string(KVSL_ERR_INDEX) +
                    " during 'addmipsol'. Return value: " + std::to_string(KVSL_ERR_INDEX) + ".");
  // A modified model is loaded first; a failing load gives -2.
  prob->status |= MDL_ST_MODIFIED;
  fake::fail_call("KVSLloadglobal64", 1, KVSL_ERR_NOMEM);
  EXPECT_EQ(mdladdmipsol_prob(prob, s, "s"), -2);
  expect_report(1596, 0, "Adding MIP solution failed. Error loading matrix (-2).");
  mdldelsol(s);
}

TEST_F(MipSol, LoadToSolverTakesItsSolution) {
  model();
  fake::set_int_out("KVSLloadmipsol", "status", 0);
  fake::set_vector("KVSLgetmipsol", "x", {1, 3});
  fake::set_dbl_attrib(KVSL_ATTR_MIPOBJVAL, 12);
  double xv[2] = {1, 3};
  EXPECT_EQ(mdlloadmipsol_prob(prob, xv, 2, 1), 0);
  EXPECT_EQ(engine_calls(), (std::vector<std::string>{"KVSLloadmipsol", "KVSLgetmipsol"}));
  EXPECT_EQ(fake::calls_of("KVSLloadmipsol").at(0).dv("x"), dbls({1, 3}));
  EXPECT_EQ(mdlgetobjval_prob(prob), 12);
  EXPECT_EQ(prob->status & MDL_ST_OUTSIDESOL, 0u);
  EXPECT_NE(prob->status & MDL_ST_SOLUTION, 0u);
  fake::set_int_out("KVSLloadmipsol", "status", 2);
  EXPECT_EQ(mdlloadmipsol_prob(prob, xv, 2, 1), 2);
  EXPECT_EQ(prob->status & MDL_ST_SOLUTION, 0u);
  fake::set_int_out("KVSLloadmipsol", "status", 0);
  fake::fail_call("KVSLgetmipsol", 1, KVSL_ERR_NOSOLUTION);
  EXPECT_EQ(mdlloadmipsol_prob(prob, xv, 2, 1), -3);
  expect_report(1524, 1, "(getsol) Korvex-Optimizer error 6 during 'loadmipsol'. Return value: 6.");
}

TEST_F(MipSol, LoadFromOutsideComputesTheObjective) {
  model();
  double xv[2];
  xv[x->column] = 1;
  xv[y->column] = 2;
  EXPECT_EQ(mdlloadmipsol_prob(prob, xv, 2, 0), 0);
  EXPECT_TRUE(engine_calls().empty());
  EXPECT_EQ(mdlgetobjval_prob(prob), 2 * 1 + 3 * 2 + 1);
  EXPECT_NE(prob->status & MDL_ST_OUTSIDESOL, 0u);
  EXPECT_EQ(mdlgetsol(y), 2);
}

TEST_F(MipSol, LoadWithAnotherColumnCountRegeneratesAndFails) {
  model();
  double xv[3] = {1, 2, 3};
  EXPECT_EQ(mdlloadmipsol_prob(prob, xv, 3, 0), -2);
  expect_report(1527, 0, "Loading MIP solution failed. Return value: -2.");
  std::vector<std::string> calls = engine_calls();
  EXPECT_FALSE(calls.empty());
  EXPECT_EQ(fake::calls_of("KVSLloadmipsol").size(), 0u);
}

TEST_F(MipSol, AddLoadsAModifiedModelFirst) {
  model();
  MDLsol s = mdlnewsol_prob(prob);
  mdlsetsolvar(s, x, 1);
  prob->status |= MDL_ST_MODIFIED;
  EXPECT_EQ(mdladdmipsol_prob(prob, s, "s"), 0);
  std::vector<std::string> calls = engine_calls();
  ASSERT_GE(calls.size(), 2u);
  EXPECT_EQ(calls.front(), "KVSLloadglobal64");
  EXPECT_EQ(calls.back(), "KVSLaddmipsol");
  EXPECT_EQ(prob->status & MDL_ST_MODIFIED, 0u);
  mdldelsol(s);
}

void *null_malloc(size_t) { return nullptr; }

TEST_F(MipSol, OutOfMemoryGivesMinusThree) {
  model();
  prob->status &= ~static_cast<uint32_t>(MDL_ST_MODIFIED);
  MDLsol s = mdlnewsol_prob(prob);
  mdlsetsolvar(s, x, 1);
  void *(*saved)(size_t) = mdlsl_malloc;
  mdlsl_malloc = null_malloc;
  int rc = mdladdmipsol_prob(prob, s, "s");
  mdlsl_malloc = saved;
  EXPECT_EQ(rc, -3);
  expect_report(1502, 1, "Not enough memory.");
  EXPECT_TRUE(fake::calls_of("KVSLaddmipsol").empty());
  double xv[2] = {0, 0};
  mdlsl_malloc = null_malloc;
  rc = mdlloadmipsol_prob(prob, xv, 2, 0);
  mdlsl_malloc = saved;
  EXPECT_EQ(rc, -3);
  expect_report(1502, 1, "Not enough memory.");
  mdldelsol(s);
}

TEST_F(MipSol, LoadReportsAFailingEngineCall) {
  model();
  double xv[2] = {0, 0};
  fake::fail_call("KVSLloadmipsol", 1, KVSL_ERR_BADARG);
  EXPECT_EQ(mdlloadmipsol_prob(prob, xv, 2, 1), -3);
  expect_report(1524, 1, "(loadmipsol) Korvex-Optimizer error 3 during 'loadmipsol'. Return value: 3.");
  EXPECT_EQ(prob->status & MDL_ST_SOLUTION, 0u);
}

TEST_F(MipSol, SolutionOutlivesItsProblem) {
  MDLvar a = var("a");
  MDLsol s = mdlnewsol_prob(prob);
  mdlsetsolvar(s, a, 1);
  EXPECT_EQ(mdldelprob_prob(prob), 0);
  prob = nullptr;
  EXPECT_EQ(mdldelsol(s), 0);
}

TEST_F(MipSol, ExhaustedPoolFailsTheCall) {
  std::vector<MDLvar> v;
  for (int i = 0; i < 20000; ++i) v.push_back(mdlnewvar_prob(prob, nullptr, MDL_CONTINUOUS, 0, 1));
  MDLsol s = mdlnewsol_prob(prob);
  void *(*saved)(size_t) = mdlsl_malloc;
  mdlsl_malloc = null_malloc;
  int set = 0;
  int rc = 0;
  while (set < 20000 && (rc = mdlsetsolvar(s, v[set], 1.0)) == 0) ++set;
  mdlsl_malloc = saved;
  ASSERT_EQ(rc, 1);  // the pool's free space ran out before 20000 entries
  expect_report(1502, 1, "Not enough memory.");
  EXPECT_EQ(mdlgetsolsize(s), set);
  mdldelsol(s);
}

}  // namespace
