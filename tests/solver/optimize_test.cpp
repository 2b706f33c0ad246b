/*
 * optimize_test.cpp -- optimisation calls and status functions against the
 * recording engine: option checks, load or postsolve paths, solution-state
 * take-over, sync, fixglobals, status texts and every failure report.
 */
#include <string>

#include "solver/fixture.h"

using builder::ctr;
using builder::term;
using std::string;
using calls_t = std::vector<string>;

namespace {

class Optimize : public SolverTest {
 protected:
  // x + y <= 4, minimise x + 2y.
  void model() {
    x = var("x", MDL_CONTINUOUS, 0, 10);
    y = var("y", MDL_CONTINUOUS, 0, 10);
    MDLctr c = ctr(prob, "c", MDL_CTR_L, 4);
    term(c, x, 1);
    term(c, y, 1);
    MDLctr obj = builder::objective(prob);
    term(obj, x, 1);
    term(obj, y, 2);
  }
  // Loaded and solved once (LP solution held), calls forgotten.
  void solved_model() {
    model();
    fake::set_int_attrib(KVSL_ATTR_PRESOLVESTATE, KVSL_SOLUTION_HELD);
    fake::set_dbl_attrib(KVSL_ATTR_LPOBJVAL, 12.5);
    ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
    fake::clear_calls();
  }
  MDLvar x = nullptr, y = nullptr;
};

TEST_F(Optimize, NullProblemReports1501) {
  const struct {
    std::function<int()> call;
    const char *name;
    int result;
  } cases[] = {
      {[] { return mdllpoptimize_prob(nullptr, ""); }, "lpoptimize", 1},
      {[] { return mdlmipoptimize_prob(nullptr, ""); }, "mipoptimize", 1},
      {[] { return mdlminim_prob(nullptr, ""); }, "minim", 1},
      {[] { return mdlmaxim_prob(nullptr, ""); }, "maxim", 1},
      {[] { return mdlsolve_prob(nullptr, ""); }, "solve", 1},
      {[] { return mdlsync_prob(nullptr, 1); }, "sync", 1},
      {[] { return mdlfixglobals_prob(nullptr, 0); }, "fixglobals", 1},
      {[] { return mdlgetlpstat_prob(nullptr); }, "getlpstat", 0},
      {[] { return mdlgetmipstat_prob(nullptr); }, "getmipstat", 0},
  };
  for (const auto &c : cases) {
    EXPECT_EQ(c.call(), c.result) << c.name;
    expect_report(1501, 1, string("(") + c.name + ") No active problem.");
  }
  EXPECT_EQ(mdlgetkvslprob_prob(nullptr), nullptr);
  expect_report(1501, 1, "(getkvslprob) No active problem.");
}

TEST_F(Optimize, EngineProblemOfAProblem) { EXPECT_EQ(mdlgetkvslprob_prob(prob), prob->kvsl); }

TEST_F(Optimize, UnknownOptionsReport1523) {
  model();
  EXPECT_EQ(mdllpoptimize_prob(prob, "pX"), 1);
  expect_report(1523, 1, "Unknown solution option 'X'.");
  EXPECT_EQ(mdllpoptimize_prob(prob, "x"), 1);
  expect_report(1523, 1, "Unknown solution option 'x'.");
  EXPECT_EQ(mdllpoptimize_prob(prob, "l"), 1);
  expect_report(1523, 1, "Unknown solution option 'l'.");
  EXPECT_EQ(mdlmipoptimize_prob(prob, "g"), 1);
  expect_report(1523, 1, "Unknown solution option 'g'.");
  EXPECT_EQ(mdlsolve_prob(prob, "c"), 1);
  expect_report(1523, 1, "Unknown solution option 'c'.");
  EXPECT_TRUE(engine_calls().empty());
  // maxim stores the sense before it checks the options.
  EXPECT_EQ(mdlmaxim_prob(prob, "C"), 1);
  expect_report(1523, 1, "Unknown solution option 'C'.");
  EXPECT_EQ(prob->sense, 2);
}

TEST_F(Optimize, AcceptedOptionsArePassedOn) {
  model();
  EXPECT_EQ(mdllpoptimize_prob(prob, "BCDNP"), 0);
  EXPECT_EQ(fake::calls_of("KVSLlpoptimize").at(0).s("flags"), "BCDNP");
  EXPECT_EQ(mdlmipoptimize_prob(prob, "bcdlnp"), 0);
  EXPECT_EQ(mdlminim_prob(prob, "bdglnp"), 0);
  EXPECT_EQ(mdlmaxim_prob(prob, nullptr), 0);
  EXPECT_EQ(fake::calls_of("KVSLmaxim").at(0).s("flags"), "");
  EXPECT_TRUE(errors.empty());
}

TEST_F(Optimize, LpoptimizeLoadsRunsAndTakesTheSolution) {
  model();
  fake::set_int_attrib(KVSL_ATTR_PRESOLVESTATE, KVSL_SOLUTION_HELD);
  fake::set_dbl_attrib(KVSL_ATTR_LPOBJVAL, 12.5);
  ASSERT_EQ(mdllpoptimize_prob(prob, "p"), 0);
  EXPECT_EQ(engine_calls(), (calls_t{"KVSLloadlp64", "KVSLaddnames", "KVSLaddnames",
                                     "KVSLchgobjsense", "KVSLlpoptimize"}));
  EXPECT_EQ(prob->status, MDL_ST_LOADED | MDL_ST_SOLUTION);
  EXPECT_EQ(mdlgetprobstat_prob(prob), 9);
  EXPECT_EQ(prob->objval, 12.5);
  EXPECT_EQ(prob->solcache, 0);
}

TEST_F(Optimize, LpoptimizeWithoutEngineSolution) {
  model();
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_EQ(prob->status, MDL_ST_LOADED);
  EXPECT_EQ(prob->objval, 0.0);
}

TEST_F(Optimize, UnchangedModelIsPostsolvedUnlessContinued) {
  solved_model();
  prob->solcache = MDL_SC_X;
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_EQ(engine_calls(), (calls_t{"KVSLpostsolve", "KVSLchgobjsense", "KVSLlpoptimize"}));
  fake::clear_calls();
  ASSERT_EQ(mdllpoptimize_prob(prob, "C"), 0);
  EXPECT_EQ(engine_calls(), (calls_t{"KVSLlpoptimize"}));
  EXPECT_EQ(prob->status, MDL_ST_LOADED | MDL_ST_SOLUTION);
}

TEST_F(Optimize, PostsolveFailureReports1524) {
  solved_model();
  fake::fail_call("KVSLpostsolve", 1, 9);
  EXPECT_EQ(mdllpoptimize_prob(prob, ""), 1);
  expect_report(1524, 1, "(lpoptimize) Korvex-Optimizer error 9 during 'postsolve'. Return value: 9.");
  EXPECT_EQ(prob->status, MDL_ST_LOADED | MDL_ST_SOLUTION);
  fake::fail_call("KVSLpostsolve", 1, 9);
  EXPECT_EQ(mdlmipoptimize_prob(prob, ""), 1);
  expect_report(1524, 1, "(mipoptimize) Korvex-Optimizer error 9 during 'postsolve'. Return value: 9.");
}

TEST_F(Optimize, EngineRunFailureReports1524AndClearsTheSolution) {
  solved_model();
  fake::fail_call("KVSLlpoptimize", 1, 9);
  EXPECT_EQ(mdllpoptimize_prob(prob, ""), 1);
  expect_report(1524, 1, "(lpoptimize) Korvex-Optimizer error 9 during 'lpoptimize'. Return value: 9.");
  EXPECT_EQ(prob->status, MDL_ST_LOADED);
  fake::fail_call("KVSLmipoptimize", 1, 8);
  EXPECT_EQ(mdlmipoptimize_prob(prob, ""), 1);
  expect_report(1524, 1, "(mipoptimize) Korvex-Optimizer error 8 during 'mipoptimize'. Return value: 8.");
  fake::fail_call("KVSLminim", 1, 9);
  EXPECT_EQ(mdlminim_prob(prob, ""), 1);
  expect_report(1524, 1, "(minim) Korvex-Optimizer error 9 during 'minim'. Return value: 9.");
  fake::fail_call("KVSLmaxim", 1, 9);
  EXPECT_EQ(mdlmaxim_prob(prob, ""), 1);
  expect_report(1524, 1, "(maxim) Korvex-Optimizer error 9 during 'maxim'. Return value: 9.");
}

TEST_F(Optimize, LoadFailureFailsTheCall) {
  model();
  fake::fail_call("KVSLloadlp64", 1, 9);
  EXPECT_EQ(mdllpoptimize_prob(prob, ""), 1);
  expect_report(1524, 1, "(loadmat) Korvex-Optimizer error 9 during 'loadlp'. Return value: 9.");
  EXPECT_TRUE(fake::calls_of("KVSLlpoptimize").empty());
}

TEST_F(Optimize, PresolvedFlagFromPresolveState) {
  model();
  fake::set_int_attrib(KVSL_ATTR_PRESOLVESTATE, KVSL_SOLUTION_HELD | KVSL_PRESOLVE_LP);
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_EQ(prob->status, MDL_ST_LOADED | MDL_ST_SOLUTION | MDL_ST_PRESOLVED);
  EXPECT_EQ(mdlgetprobstat_prob(prob), 9);
  // A full load assigns the status afresh.
  prob->status |= MDL_ST_MODIFIED;
  fake::set_int_attrib(KVSL_ATTR_PRESOLVESTATE, 0);
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_EQ(prob->status, MDL_ST_LOADED);
}

// The solution-state refresh after a MIP optimisation, for every MIP status.
struct refresh_case {
  int mipstatus;
  int presolve;
  bool solution;
  int32_t solcache;
  double objval;
};

class Refresh : public Optimize, public ::testing::WithParamInterface<refresh_case> {};

TEST_P(Refresh, MipoptimizeTakesOverTheState) {
  const refresh_case &r = GetParam();
  model();
  fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, r.mipstatus);
  fake::set_int_attrib(KVSL_ATTR_PRESOLVESTATE, r.presolve);
  fake::set_dbl_attrib(KVSL_ATTR_MIPOBJVAL, 7.0);
  fake::set_dbl_attrib(KVSL_ATTR_LPOBJVAL, 3.0);
  const int result = mdlmipoptimize_prob(prob, "");
  EXPECT_EQ((prob->status & MDL_ST_SOLUTION) != 0, r.solution);
  EXPECT_EQ(prob->solcache, r.solcache);
  EXPECT_EQ(prob->objval, r.objval);
  if (r.mipstatus >= 8) {
    EXPECT_EQ(result, 1);
    expect_report(1522, 1, "Korvex-Optimizer error getting solution status.");
  } else {
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(errors.empty());
  }
}

INSTANTIATE_TEST_SUITE_P(
    MipStatus, Refresh,
    ::testing::Values(refresh_case{4, 0, true, MDL_SC_MIP, 7.0}, refresh_case{6, 0, true, MDL_SC_MIP, 7.0},
                      refresh_case{3, 128, false, 0, 0.0}, refresh_case{5, 128, false, 0, 0.0},
                      refresh_case{7, 128, false, 0, 0.0}, refresh_case{0, 128, true, 0, 3.0},
                      refresh_case{1, 128, true, 0, 3.0}, refresh_case{2, 128, true, 0, 3.0},
                      refresh_case{2, 0, false, 0, 0.0}, refresh_case{8, 128, false, 0, 0.0},
                      refresh_case{12, 0, false, 0, 0.0}));

TEST_F(Optimize, MinimOnUnchangedModelStartsANewSearch) {
  solved_model();
  fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, KVSL_MIP_OPTIMAL);
  fake::set_dbl_attrib(KVSL_ATTR_MIPOBJVAL, 4.0);
  fake::set_int_attrib(KVSL_ATTR_COLS, 2);
  prob->rangeinfo = static_cast<double *>(mdlsl_malloc(8));
  ASSERT_EQ(mdlminim_prob(prob, "g"), 0);
  EXPECT_EQ(engine_calls(), (calls_t{"KVSLinitglobal", "KVSLminim"}));
  EXPECT_EQ(prob->rangeinfo, nullptr);
  EXPECT_EQ(prob->status, MDL_ST_LOADED | MDL_ST_SOLUTION);
  EXPECT_EQ(prob->solcache, MDL_SC_MIP);
  EXPECT_EQ(prob->objval, 4.0);
  // Fewer engine columns than loaded: presolved.
  fake::set_int_attrib(KVSL_ATTR_COLS, 1);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  EXPECT_EQ(prob->status & MDL_ST_PRESOLVED, MDL_ST_PRESOLVED);
  fake::fail_call("KVSLinitglobal", 1, 9);
  EXPECT_EQ(mdlminim_prob(prob, ""), 1);
  expect_report(1524, 1, "(minim) Korvex-Optimizer error 9 during 'initglobal'. Return value: 9.");
}

TEST_F(Optimize, SolveFollowsTheStoredSense) {
  model();
  ASSERT_EQ(mdlsolve_prob(prob, ""), 0);
  EXPECT_EQ(fake::calls_of("KVSLminim").size(), 1u);
  EXPECT_EQ(fake::calls_of("KVSLchgobjsense").at(0).i("sense"), 1);
  ASSERT_EQ(mdlmaxim_prob(prob, ""), 0);
  fake::clear_calls();
  ASSERT_EQ(mdlsolve_prob(prob, ""), 0);
  EXPECT_EQ(engine_calls(), (calls_t{"KVSLinitglobal", "KVSLmaxim"}));
  EXPECT_EQ(prob->sense, 2);
}

TEST_F(Optimize, OpenCallbackBracketIsReportedAndClosed) {
  solved_model();
  KVSLprob own = prob->kvsl;
  KVSLprob node = nullptr;
  ASSERT_EQ(KVSLcreateprob(&node), 0);
  ASSERT_EQ(mdlbegincb_prob(prob, node), 0);
  errors.reports.clear();
  EXPECT_EQ(mdllpoptimize_prob(prob, "C"), 0);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.reports[0].prob, nullptr);
  expect_report(1573, 0, "(lpoptimize) 'begincb' without matching 'endcb'.");
  // The saved handle is cleared, not restored: the bracket's handle stays.
  EXPECT_EQ(prob->savedkvsl, nullptr);
  EXPECT_EQ(prob->kvsl, node);
  // The bracket's mutex was released: a new bracket opens without a
  // warning and saves the handle then in use.
  errors.reports.clear();
  ASSERT_EQ(mdlbegincb_prob(prob, own), 0);
  EXPECT_TRUE(errors.reports.empty());
  EXPECT_EQ(prob->savedkvsl, node);
  ASSERT_EQ(mdlendcb_prob(prob), 0);
  EXPECT_EQ(prob->kvsl, node);
  prob->kvsl = own;
  KVSLdestroyprob(node);
}

TEST_F(Optimize, SyncTakesOverOrWarns) {
  solved_model();
  prob->status |= MDL_ST_MODIFIED;
  EXPECT_EQ(mdlsync_prob(prob, 1), 0);
  expect_report(1520, 0, "(sync) No solution available or problem modified since last solved.");
  EXPECT_EQ(prob->status & MDL_ST_SOLUTION, 0u);
  EXPECT_EQ(prob->objval, 0.0);

  prob->status &= ~static_cast<uint32_t>(MDL_ST_MODIFIED);
  errors.reports.clear();
  EXPECT_EQ(mdlsync_prob(prob, 1), 0);
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(prob->status & MDL_ST_SOLUTION, MDL_ST_SOLUTION);
  EXPECT_EQ(prob->objval, 12.5);

  fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, KVSL_MIP_SOLUTION);
  fake::set_dbl_attrib(KVSL_ATTR_MIPOBJVAL, 6.0);
  EXPECT_EQ(mdlsync_prob(prob, 3), 0);
  EXPECT_EQ(prob->solcache, MDL_SC_MIP);
  EXPECT_EQ(prob->objval, 6.0);

  fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, KVSL_MIP_NO_SOL_FOUND);
  EXPECT_EQ(mdlsync_prob(prob, 3), 0);
  expect_report(1520, 0, "(sync) No solution available or problem modified since last solved.");
  EXPECT_EQ(prob->status & MDL_ST_SOLUTION, 0u);

  const uint32_t before = prob->status;
  EXPECT_EQ(mdlsync_prob(prob, 7), 0);
  EXPECT_EQ(prob->status, before);
  EXPECT_EQ(mdlsync_prob(prob, 2), 0);
  EXPECT_EQ(prob->status & MDL_ST_MODIFIED, MDL_ST_MODIFIED);
  fake::clear_calls();
  EXPECT_EQ(mdllpoptimize_prob(prob, ""), 0);
  EXPECT_EQ(fake::calls_of("KVSLloadlp64").size(), 1u);
}

TEST_F(Optimize, FixglobalsClearsTheSolution) {
  solved_model();
  prob->status |= MDL_ST_OUTSIDESOL;
  prob->solcache = MDL_SC_X;
  EXPECT_EQ(mdlfixglobals_prob(prob, 1), 0);
  EXPECT_EQ(fake::calls_of("KVSLfixglobals").at(0).i("round"), 1);
  EXPECT_EQ(prob->status, MDL_ST_LOADED);
  EXPECT_EQ(prob->solcache, 0);
  prob->status |= MDL_ST_SOLUTION;
  fake::fail_call("KVSLfixglobals", 1, 9);
  EXPECT_EQ(mdlfixglobals_prob(prob, 0), 1);
  expect_report(1524, 1, "(fixglobals) Korvex-Optimizer error 9 during 'fixglobals'. Return value: 9.");
  EXPECT_EQ(prob->status, MDL_ST_LOADED | MDL_ST_SOLUTION);
}

TEST_F(Optimize, StatusTextsAtMessageLevelFour) {
  fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, 7);
  EXPECT_EQ(mdlgetmipstat_prob(prob), 7);
  EXPECT_EQ(output.text, "");
  mdlsetmsglevel_prob(prob, 4);
  output.text.clear();
  EXPECT_EQ(mdlgetmipstat_prob(prob), 7);
  EXPECT_EQ(output.text, "LP is unbounded.\n");
  output.text.clear();
  fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, 8);
  EXPECT_EQ(mdlgetmipstat_prob(prob), 8);
  EXPECT_EQ(output.text, "");
  const char *lp[] = {"Problem has not been loaded.\n", "Optimal LP solution found.\n",
                      "LP is infeasible.\n", "LP objective worse than cutoff.\n",
                      "LP is unfinished.\n", "LP is unbounded.\n",
                      "LP has been cut off in dual.\n", "LP problem is not solved.\n",
                      "QP problem is not convex.\n"};
  for (int code = 0; code < 9; ++code) {
    fake::set_int_attrib(KVSL_ATTR_LPSTATUS, code);
    output.text.clear();
    EXPECT_EQ(mdlgetlpstat_prob(prob), code);
    EXPECT_EQ(output.text, lp[code]);
  }
  const char *mip[] = {"Problem has not been loaded.\n", "LP has not been optimized.\n",
                       "LP has been optimized.\n",
                       "MIP search incomplete - no integer solution found.\n",
                       "MIP search incomplete - an integer solution has been found.\n",
                       "MIP search complete - no integer solution found.\n",
                       "MIP search complete - an integer solution has been found.\n"};
  for (int code = 0; code < 7; ++code) {
    fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, code);
    output.text.clear();
    EXPECT_EQ(mdlgetmipstat_prob(prob), code);
    EXPECT_EQ(output.text, mip[code]);
  }
  fake::set_int_attrib(KVSL_ATTR_LPSTATUS, 9);
  output.text.clear();
  EXPECT_EQ(mdlgetlpstat_prob(prob), 9);
  EXPECT_EQ(output.text, "");
  EXPECT_TRUE(errors.empty());
}

TEST_F(Optimize, StatusReadFailureReports1522) {
  fake::fail_call("KVSLgetintattrib", 1, 4);
  EXPECT_EQ(mdlgetlpstat_prob(prob), 0);
  expect_report(1522, 1, "Korvex-Optimizer error getting LP status.");
  fake::fail_call("KVSLgetintattrib", 1, 4);
  EXPECT_EQ(mdlgetmipstat_prob(prob), 0);
  expect_report(1522, 1, "Korvex-Optimizer error getting MIP status.");
}

}  // namespace

namespace {

// Engine calls whose failure the tables above do not name: each is still
// reported as error 1524 with the failing call and fails the function.
TEST_F(Optimize, OtherEngineFailuresReport1524) {
  model();
  fake::fail_call("KVSLchgobjsense", 1, 3);
  EXPECT_EQ(mdlloadmat_prob(prob), 1);
  expect_report(1524, 1, "(loadmat) Korvex-Optimizer error 3 during 'chgobjsense'. Return value: 3.");
  EXPECT_EQ(prob->status, MDL_ST_LOADED);

  fake::fail_call("KVSLchgobjsense", 1, 3);
  EXPECT_EQ(mdllpoptimize_prob(prob, ""), 1);
  expect_report(1524, 1, "(lpoptimize) Korvex-Optimizer error 3 during 'chgobjsense'. Return value: 3.");

  fake::fail_call("KVSLgetintattrib", 1, 4);
  EXPECT_EQ(mdllpoptimize_prob(prob, "c"), 1);
  expect_report(1524, 1, "(lpoptimize) Korvex-Optimizer error 4 during 'getintattrib'. Return value: 4.");
  EXPECT_EQ(prob->status & MDL_ST_SOLUTION, 0u);

  fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, KVSL_MIP_OPTIMAL);
  fake::fail_call("KVSLgetintattrib", 2, 4);   // the column count after the run
  EXPECT_EQ(mdlminim_prob(prob, ""), 1);
  expect_report(1524, 1, "(minim) Korvex-Optimizer error 4 during 'getintattrib'. Return value: 4.");

  fake::fail_call("KVSLgetdblattrib", 1, 4);
  EXPECT_EQ(mdlmipoptimize_prob(prob, "c"), 1);
  expect_report(1521, 1, "Korvex-Optimizer error getting objective function value.");
  EXPECT_EQ(prob->status & MDL_ST_SOLUTION, 0u);

  fake::fail_call("KVSLgetintattrib", 2, 4);   // the MIP status of the refresh
  EXPECT_EQ(mdlmipoptimize_prob(prob, "c"), 1);
  expect_report(1522, 1, "Korvex-Optimizer error getting MIP status.");
}

TEST_F(Optimize, DirectiveDefaultReadFailureReports1524) {
  model();
  builder::directive(prob, x, 1, 3);
  fake::fail_call("KVSLgetdblcontrol", 1, 4);
  EXPECT_EQ(mdlloadmat_prob(prob), 1);
  expect_report(1524, 1, "(loadmat) Korvex-Optimizer error 4 during 'getdblcontrol'. Return value: 4.");
  EXPECT_EQ(prob->status, MDL_ST_LOADED | MDL_ST_DIRPENDING);
}

}  // namespace
