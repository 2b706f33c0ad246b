/*
 * errors_test.cpp -- the message table, mdlerror's reporting rules, exit on
 * error, the reporting setters, formatted output and the engine log handler.
 */
#include <stdio.h>
#include <string.h>

#include <string>

#include "core/errors.h"
#include "core/fixture.h"
#include "core/runtime.h"
#include "problem/problem.h"

using Errors = CoreTest;
using ::testing::ExitedWithCode;

namespace {

// One row as the application sees it: number, kind and the text produced
// with sample arguments.
struct expected_row {
  int pos;
  int number;
  int iserror;
  const char *text;
};

// Report row pos with sample arguments matching its format.
void report_sample(MDLprob prob, int pos) {
  switch (pos) {
    case MDL_E_NOMEM: case MDL_E_DICTREINIT: case MDL_E_OBJVAL: case MDL_E_MPSWRITE:
    case MDL_E_CUTTERM: case MDL_W_CUTMODE:
      mdlerror(prob, pos);
      break;
    case MDL_E_PROBHASNO: case MDL_W_PROBHASNO: case MDL_E_VARTYPE: case MDL_E_CTRTYPE:
    case MDL_E_STDCTR: case MDL_E_INDICTYPE: case MDL_E_INCVARSTYPE: case MDL_E_ARRCLOSED:
    case MDL_E_ARRINCOMPLETE: case MDL_E_SOSTYPE: case MDL_W_LIMTYPE: case MDL_E_NONBINDING:
    case MDL_W_SOLNAN:
      mdlerror(prob, pos, "fn", "thing");
      break;
    case MDL_E_GETSTATUS: mdlerror(prob, pos, "LP"); break;
    case MDL_E_SOLOPT: mdlerror(prob, pos, 'x'); break;
    case MDL_E_KVSL: mdlerror(prob, pos, "fn", 32, "call", 5); break;
    case MDL_W_LOADMIPSOL: case MDL_W_IISINDEX: case MDL_W_FILEFORMAT: case MDL_W_ADDMIPSOL:
      mdlerror(prob, pos, -2);
      break;
    case MDL_E_VARBOUNDS: case MDL_E_CTRRANGE: mdlerror(prob, pos, "fn", "x", 2.5, 1.0); break;
    case MDL_E_ARRINDEX: mdlerror(prob, pos, "fn", 7, "arr", 5); break;
    case MDL_E_ARRFULL: mdlerror(prob, pos, "fn", "x", "arr"); break;
    case MDL_E_INIT: case MDL_E_ARGVALUE: mdlerror(prob, pos, "fn", 3); break;
    case MDL_E_NAMELEN: mdlerror(prob, pos, "abc", 127); break;
    case MDL_W_KVSLMSG: mdlerror(prob, pos, "engine line"); break;
    case MDL_W_NOMATCH: mdlerror(prob, pos, "fn", "begincb", "endcb"); break;
    case MDL_W_LIMBOUNDS: mdlerror(prob, pos, "fn", -1.5, "x", 0.0, 4.0); break;
    default: mdlerror(prob, pos, "fn"); break;
  }
}

const expected_row rows[] = {
    {0, 1501, 1, "(fn) No active problem."},
    {1, 1502, 1, "Not enough memory."},
    {2, 1504, 1, "Dictionary cannot be re-initialized."},
    {3, 1505, 1, "(fn) No variable given."},
    {4, 1506, 1, "(fn) No array of variables given."},
    {5, 1507, 1, "(fn) No constraint given."},
    {6, 1508, 1, "(fn) No SOS given."},
    {7, 1509, 1, "(fn) No cut given."},
    {8, 1510, 1, "(fn) No basis given."},
    {9, 1512, 1, "(fn) No array of constants given."},
    {10, 1513, 0, "(fn) No variable given."},
    {11, 1514, 0, "(fn) No constraint given."},
    {12, 1515, 1, "(fn) Problem has no thing."},
    {13, 1516, 0, "(fn) Problem has no thing."},
    {14, 1518, 0, "(fn) No SOS given."},
    {15, 1519, 0, "(fn) No cut given."},
    {16, 1520, 0, "(fn) No solution available or problem modified since last solved."},
    {17, 1521, 1, "Korvex-Optimizer error getting objective function value."},
    {18, 1522, 1, "Korvex-Optimizer error getting LP status."},
    {19, 1523, 1, "Unknown solution option 'x'."},
    {20, 1524, 1, "(fn) Korvex-Optimizer error 32 during 'call'. Return value: 5."},
    {21, 1525, 0, "(fn) Different problem loaded in Korvex-Optimizer."},
    {22, 1526, 1, "(fn) Empty problem or problem not loaded in Korvex-Optimizer."},
    {23, 1527, 0, "Loading MIP solution failed. Return value: -2."},
    {24, 1530, 1, "(fn) Inconsistent bounds for variable 'x' (2.5,1)."},
    {25, 1531, 1, "(fn) Incorrect type for variable 'thing'."},
    {26, 1535, 1, "(fn) Incorrect type for constraint 'thing'."},
    {27, 1536, 1, "(fn) Inconsistent range for constraint 'x' (2.5,1)."},
    {28, 1538, 1, "(fn) Setting 'thing' can only be applied to standard constraints."},
    {29, 1539, 1, "(fn) Incorrect constraint type for indicator constraint 'thing'."},
    {30, 1595, 1, "(fn) Incorrect constraint type for include vars constraint 'thing'."},
    {31, 1540, 1, "(fn) Trying to modify a closed array of variables ('thing')."},
    {32, 1541, 1, "(fn) Index 7 out of range for an array of variables ('arr' max=5)."},
    {33, 1542, 1, "(fn) Trying to add an entry ('x') to a complete array of variables ('arr')."},
    {34, 1543, 1, "(fn) Trying to close an incomplete array of variables ('thing')."},
    {35, 1545, 1, "(fn) Wrong type for SOS 'thing'."},
    {36, 1547, 1, "(fn) Wrong directive type."},
    {37, 1550, 1, "(fn) No index set given."},
    {38, 1551, 0, "(fn) No name given for an element of an index set."},
    {39, 1552, 0, "(fn) No index set given."},
    {40, 1555, 0, "Incorrect IIS index given (-2)."},
    {41, 1561, 1, "(fn) Initialization failed (value: 3)."},
    {42, 1563, 1, "(fn) Inconsistency during matrix generation."},
    {43, 1565, 1, "(fn) Internal error."},
    {44, 1566, 1, "Name too long: abc (max=127)."},
    {45, 1570, 0, "KVSL: engine line"},
    {46, 1572, 1, "(fn) No Korvex-Optimizer problem given."},
    {47, 1573, 0, "(fn) 'begincb' without matching 'endcb'."},
    {48, 1575, 1, "(fn) Unexpected argument value 3."},
    {49, 1580, 0, "Unknown output file format -2."},
    {50, 1582, 1, "Internal error writing MPS file."},
    {51, 1585, 1, "Cut term not found."},
    {52, 1587, 0, "Switch to cut mode."},
    {53, 1591, 1, "(fn) Non-quadratic term."},
    {54, 1592, 0, "(fn) Setting limit for variable 'thing' of wrong type."},
    {55, 1593, 0, "(fn) Setting limit -1.5 for variable 'x' outside bounds (0,4)."},
    {56, 1594, 1, "(fn) Setting 'thing' can only be applied to non-binding (type N) constraints."},
    {57, 1596, 0, "Adding MIP solution failed. Error loading matrix (-2)."},
    {58, 1597, 1, "(fn) No solution given."},
    {59, 1598, 0, "(fn) No solution given."},
    {60, 1599, 0, "(fn) Removing var thing, set to a NaN value, from solution."},
};

}  // namespace

TEST_F(Errors, EveryRowReportsItsNumberKindAndText) {
  static_assert(sizeof rows / sizeof rows[0] == MDL_E_COUNT);
  testsupport::output_log out;
  out.install();
  for (const expected_row &row : rows) {
    SCOPED_TRACE(row.number);
    errors.reports.clear();
    out.text.clear();
    report_sample(nullptr, row.pos);
    ASSERT_EQ(errors.reports.size(), 1u);
    EXPECT_EQ(errors.last().number, row.number);
    EXPECT_EQ(errors.last().iserror, row.iserror);
    EXPECT_EQ(errors.last().text, row.text);
    EXPECT_EQ(errors.last().prob, nullptr);
    // At the default level 3 every report is printed through the callback.
    EXPECT_EQ(out.text, std::string("Tessel: ") + (row.iserror ? "Error " : "Warning ") +
                            std::to_string(row.number) + ": " + row.text + "\n");
  }
}

TEST_F(Errors, DefaultErrorEndsProcessWithItsNumber) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        mdlseterrctrl(1);
        mdldefcberr_prob(nullptr, nullptr, nullptr);
        mdlerror(nullptr, MDL_E_NOMEM);
      },
      ExitedWithCode(1502 % 256), "^Tessel: Error 1502: Not enough memory\\.\n$");
}

TEST_F(Errors, ErrorReturnsAfterErrCtrlZero) {
  ::testing::internal::CaptureStderr();
  mdlerror(nullptr, MDL_E_NOMEM);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Tessel: Error 1502: Not enough memory.\n");
  ASSERT_EQ(errors.reports.size(), 1u);
}

TEST_F(Errors, WarningsNeverEndTheProcess) {
  mdlseterrctrl(1);
  ::testing::internal::CaptureStderr();
  mdlerror(nullptr, MDL_W_CUTMODE);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Tessel: Warning 1587: Switch to cut mode.\n");
  mdlseterrctrl(0);
}

TEST_F(Errors, LevelOneHidesWarningsButTheCallbackHearsThem) {
  mdlsetmsglevel_prob(nullptr, 1);
  ::testing::internal::CaptureStderr();
  mdlerror(nullptr, MDL_W_CUTMODE);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().iserror, 0);
  ::testing::internal::CaptureStderr();
  mdlerror(nullptr, MDL_E_NOMEM);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Tessel: Error 1502: Not enough memory.\n");
  mdlsetmsglevel_prob(nullptr, 3);
}

TEST_F(Errors, LevelTwoPrintsWarnings) {
  mdlsetmsglevel_prob(nullptr, 2);
  ::testing::internal::CaptureStderr();
  mdlerror(nullptr, MDL_W_CUTMODE);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Tessel: Warning 1587: Switch to cut mode.\n");
  mdlsetmsglevel_prob(nullptr, 3);
}

TEST_F(Errors, LevelZeroPrintsNothingButStillExits) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        mdlsetmsglevel_prob(nullptr, 0);
        mdlseterrctrl(1);
        mdlerror(nullptr, MDL_E_NOVAR, "newvar");
      },
      ExitedWithCode(1505 % 256), "");
  mdlsetmsglevel_prob(nullptr, 0);
  ::testing::internal::CaptureStderr();
  mdlerror(nullptr, MDL_E_NOVAR, "newvar");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(errors.reports.size(), 1u);
  mdlsetmsglevel_prob(nullptr, 3);
}

TEST_F(Errors, AfterFinishErrorsExitAgain) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        mdlslinit();
        mdlseterrctrl(0);
        mdlsetmsglevel_prob(nullptr, 0);
        mdlslfinish();
        mdlerror(nullptr, MDL_E_NOMEM);
      },
      ExitedWithCode(1502 % 256), "Tessel: Error 1502: Not enough memory\\.");
}

TEST_F(Errors, ErrorTextIsCutAt255Characters) {
  std::string longname(400, 'a');
  mdlerror(nullptr, MDL_E_NAMELEN, longname.c_str(), 127);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().text.size(), 255u);
  EXPECT_EQ(errors.last().text, ("Name too long: " + longname).substr(0, 255));
}

TEST_F(Errors, ProblemSettingsDecideForProblemReports) {
  MDLprob prob = mdlallocprob();
  ASSERT_NE(prob, nullptr);
  testsupport::error_log own;
  own.install(prob);
  testsupport::output_log out;
  out.install(prob);
  prob->msglevel = 2;
  mdlerror(prob, MDL_W_NOSOL, "getsol");
  EXPECT_TRUE(errors.empty());   // the global callback is not asked
  ASSERT_EQ(own.reports.size(), 1u);
  EXPECT_EQ(own.last().prob, prob);
  EXPECT_EQ(out.text,
            "Tessel: Warning 1520: (getsol) No solution available or problem modified since "
            "last solved.\n");
  EXPECT_EQ(out.probs, std::vector<MDLprob>{prob});
  prob->msglevel = 1;
  out.text.clear();
  mdlerror(prob, MDL_W_NOSOL, "getsol");
  EXPECT_EQ(out.text, "");
  EXPECT_EQ(own.reports.size(), 2u);
  mdldeallocprob(prob);
}

TEST_F(Errors, ProblemWithoutMessageCallbackWritesToStandardError) {
  MDLprob prob = mdlallocprob();
  testsupport::output_log global_out;
  global_out.install();
  prob->msglevel = 3;
  ::testing::internal::CaptureStderr();
  mdlerror(prob, MDL_E_NOCTR, "addterm");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "Tessel: Error 1507: (addterm) No constraint given.\n");
  EXPECT_EQ(global_out.text, "");
  mdldeallocprob(prob);
}

TEST_F(Errors, RealFormatSetter) {
  EXPECT_EQ(mdlsetrealfmt_prob(nullptr, "abc"), 1);
  EXPECT_STREQ(kvtl::defaults.realfmt, "%g");
  EXPECT_EQ(mdlsetrealfmt_prob(nullptr, "%.10e"), 0);
  EXPECT_STREQ(kvtl::defaults.realfmt, "%.10e");
  EXPECT_EQ(mdlsetrealfmt_prob(nullptr, ""), 0);
  EXPECT_STREQ(kvtl::defaults.realfmt, "%g");
  EXPECT_EQ(mdlsetrealfmt_prob(nullptr, "%.10e"), 0);
  EXPECT_EQ(mdlsetrealfmt_prob(nullptr, nullptr), 0);
  EXPECT_STREQ(kvtl::defaults.realfmt, "%g");
  EXPECT_EQ(mdlsetrealfmt_prob(nullptr, "%1234567890123.g"), 1);  // 16 characters
  EXPECT_EQ(mdlsetrealfmt_prob(nullptr, "%12345678901.2g"), 0);   // 15 characters
  EXPECT_STREQ(kvtl::defaults.realfmt, "%12345678901.2g");
  MDLprob prob = mdlallocprob();
  EXPECT_EQ(mdlsetrealfmt_prob(prob, "%.3f"), 0);
  EXPECT_STREQ(prob->realfmt, "%.3f");
  EXPECT_EQ(mdlsetrealfmt_prob(prob, "x"), 1);
  EXPECT_STREQ(prob->realfmt, "%.3f");
  mdldeallocprob(prob);
  mdlsetrealfmt_prob(nullptr, nullptr);
  EXPECT_TRUE(errors.empty());
}

TEST_F(Errors, ColumnOrderSetter) {
  EXPECT_EQ(mdlsetcolorder_prob(nullptr, 3), 0);
  EXPECT_EQ(kvtl::defaults.colorder, 3);
  EXPECT_EQ(mdlsetcolorder_prob(nullptr, 4), 1);
  EXPECT_EQ(mdlsetcolorder_prob(nullptr, -1), 1);
  EXPECT_EQ(kvtl::defaults.colorder, 3);
  MDLprob prob = mdlallocprob();
  EXPECT_EQ(mdlsetcolorder_prob(prob, 2), 0);
  EXPECT_EQ(prob->colorder, 2);
  mdldeallocprob(prob);
  mdlsetcolorder_prob(nullptr, 0);
}

TEST_F(Errors, PrintfCutsAt1023AndReturnsFullLength) {
  testsupport::output_log out;
  out.install();
  std::string text(2000, 'y');
  EXPECT_EQ(mdlprintf("%s", text.c_str()), 2000);
  EXPECT_EQ(out.text, text.substr(0, 1023));
  EXPECT_EQ(out.probs, std::vector<MDLprob>{nullptr});
}

TEST_F(Errors, PrintfToStandardOutputExpandsPercentOnceMore) {
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(mdlprintf_prob(nullptr, "%s", "100%% done"), 10);
  fflush(stdout);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "100% done");
}

TEST_F(Errors, PrintfUsesCurrentProblemAndNoGlobalFallback) {
  MDLprob prob = mdlallocprob();
  testsupport::output_log global_out, own;
  global_out.install();
  own.install(prob);
  mdlchgprob(prob);
  mdlprintf("to %s", "problem");
  EXPECT_EQ(own.text, "to problem");
  EXPECT_EQ(own.probs, std::vector<MDLprob>{prob});
  mdldefcbmsg_prob(prob, nullptr, nullptr);
  ::testing::internal::CaptureStdout();
  mdlprintf("plain");
  fflush(stdout);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "plain");
  EXPECT_EQ(global_out.text, "");
  mdlchgprob(nullptr);
  mdldeallocprob(prob);
}

TEST_F(Errors, CallbackSettersWithProblemLeaveDefaults) {
  MDLprob prob = mdlallocprob();
  auto cb = [](MDLprob, void *, MDLvar, void *) {};
  int user = 0;
  EXPECT_EQ(mdldefcbdelvar_prob(prob, cb, &user), 0);
  EXPECT_EQ(prob->cbdelvar, static_cast<MDLcbdelvar>(cb));
  EXPECT_EQ(prob->cbdelvar_user, &user);
  EXPECT_EQ(kvtl::defaults.cbdelvar, nullptr);
  EXPECT_EQ(mdldefcbdelvar_prob(nullptr, cb, &user), 0);
  EXPECT_EQ(kvtl::defaults.cbdelvar, static_cast<MDLcbdelvar>(cb));
  mdldefcbdelvar_prob(nullptr, nullptr, nullptr);
  mdldeallocprob(prob);
}

// A problem record with an engine problem of the recording engine.
struct EngineProblem : CoreTest {
  void SetUp() override {
    CoreTest::SetUp();
    prob = mdlallocprob();
    ASSERT_EQ(KVSLcreateprob(&prob->kvsl), 0);
    prob->msglevel = 3;
    fake::clear_calls();
  }
  void TearDown() override {
    KVSLdestroyprob(prob->kvsl);
    mdldeallocprob(prob);
    CoreTest::TearDown();
  }
  std::vector<std::pair<int64_t, int64_t>> controls_set() {
    std::vector<std::pair<int64_t, int64_t>> out;
    for (const fake::call &c : fake::calls_of("KVSLsetintcontrol"))
      out.emplace_back(c.i("control"), c.i("value"));
    return out;
  }
  MDLprob prob = nullptr;
};

using MsgLevel = EngineProblem;
using Pairs = std::vector<std::pair<int64_t, int64_t>>;

TEST_F(MsgLevel, BelowOneSilencesEverything) {
  EXPECT_EQ(mdlsetmsglevel_prob(prob, 0), 0);
  EXPECT_EQ(controls_set(), (Pairs{{8035, 0}, {8047, 0}, {8009, 0}, {8028, 0}}));
  EXPECT_EQ(prob->msglevel, 0);
}

TEST_F(MsgLevel, OneAndTwoKeepOutputLogControl) {
  EXPECT_EQ(mdlsetmsglevel_prob(prob, 2), 0);
  EXPECT_EQ(controls_set(), (Pairs{{8047, 0}, {8009, 0}, {8028, 0}}));
  fake::clear_calls();
  EXPECT_EQ(mdlsetmsglevel_prob(prob, 1), 0);
  EXPECT_EQ(controls_set(), (Pairs{{8047, 0}, {8009, 0}, {8028, 0}}));
}

TEST_F(MsgLevel, AboveTwoTurnsSolverLogOn) {
  EXPECT_EQ(mdlsetmsglevel_prob(prob, 5), 0);
  EXPECT_EQ(controls_set(), (Pairs{{8047, 1}, {8009, 100}, {8035, 1}, {8028, 4}}));
  EXPECT_EQ(kvtl::defaults.msglevel, 3);
}

using EngineLog = EngineProblem;

TEST_F(EngineLog, LinesFollowTheMessageLevel) {
  testsupport::error_log own;
  own.install(prob);
  testsupport::output_log out;
  out.install(prob);
  KVSLsetcbmessage(prob->kvsl, kvtl::engine_message, prob);
  fake::emit_message(prob->kvsl, "iteration 1", 1);
  EXPECT_EQ(out.text, "iteration 1\n");
  fake::emit_message(prob->kvsl, "flush", -1);
  EXPECT_EQ(out.text, "iteration 1\n");
  fake::emit_message(prob->kvsl, "careful", 3);
  ASSERT_EQ(own.reports.size(), 1u);
  EXPECT_EQ(own.last().number, 1570);
  EXPECT_EQ(own.last().iserror, 0);
  EXPECT_EQ(own.last().text, "KVSL: careful");
  prob->msglevel = 2;
  out.text.clear();
  fake::emit_message(prob->kvsl, "iteration 2", 2);
  EXPECT_EQ(out.text, "");
  prob->msglevel = 1;
  fake::emit_message(prob->kvsl, "careful", 3);
  EXPECT_EQ(own.reports.size(), 1u);
  fake::emit_message(prob->kvsl, "broken", 4);
  ASSERT_EQ(own.reports.size(), 2u);
  EXPECT_EQ(own.last().text, "KVSL: broken");
  EXPECT_EQ(own.last().number, 1570);
}

TEST_F(EngineLog, EngineErrorReadsTheErrorCode) {
  testsupport::error_log own;
  own.install(prob);
  fake::set_int_attrib(KVSL_ATTR_ERRORCODE, 41);
  kvtl::report_engine_error(prob, "setprobname", "setprobname", 3);
  ASSERT_EQ(own.reports.size(), 1u);
  EXPECT_EQ(own.last().number, 1524);
  EXPECT_EQ(own.last().text,
            "(setprobname) Korvex-Optimizer error 41 during 'setprobname'. Return value: 3.");
}
