/*
 * print_test.cpp -- the printers of the model: problem, constraint,
 * objective, set, variable and array, their messages, the real-number
 * format and the output path.
 */
#include "writers/writer_fixture.h"

namespace {

class Print : public WriterTest {
 protected:
  void SetUp() override {
    WriterTest::SetUp();
    ASSERT_EQ(mdlsetprobname_prob(prob, "printed"), 0);
  }
  // The output since the last call.
  std::string take() {
    std::string s = output.text;
    output.text.clear();
    return s;
  }
};

TEST_F(Print, WholeProblem) {
  MDLvar x = var("x"), y = var("y", MDL_CONTINUOUS, -5, 7), f = var("f", MDL_BINARY, 0, 1);
  MDLctr cost = ctr("cost", MDL_NONBINDING);
  mdladdterm(cost, x, 3);
  mdladdterm(cost, y, -2);
  mdlsetobj_prob(prob, cost);
  MDLctr c1 = ctr("c1", MDL_LEQ);
  mdladdterm(c1, x, 1);
  mdladdterm(c1, y, 2);
  mdladdterm(c1, nullptr, 10);
  MDLctr c2 = ctr("c2", MDL_GEQ);
  mdladdterm(c2, x, 1);
  mdladdterm(c2, nullptr, -3);
  mdlsetindicator(c2, 1, f);
  MDLctr c3 = ctr("c3", MDL_LEQ);
  mdladdterm(c3, x, 1);
  mdladdterm(c3, y, 1);
  mdlsetrange(c3, 1, 4);
  MDLsos s = mdlnewsos_prob(prob, "s", MDL_SOS2);
  mdladdsosel(s, x, 1);
  mdladdsosel(s, y, -2);
  take();
  EXPECT_EQ(mdlprintprob_prob(prob), 0);
  EXPECT_EQ(take(),
            "Problem printed\n"
            "c3: x + y in [1,4]\n"
            "c2: f=1 -> x >= -3\n"
            "c1: x + 2*y <= 10\n"
            "\nSpecial Ordered Sets:\n"
            "s(2): x(+1) y(-2) \n"
            "\n"
            "\nObjective: cost: 3*x - 2*y\n"
            "\n\n");
  EXPECT_TRUE(errors.empty());
}

TEST_F(Print, OnlyFreeConstraintsPrintNothingForThem) {
  MDLctr n = ctr("n", MDL_NONBINDING);
  mdladdterm(n, var("x"), 1);
  take();
  EXPECT_EQ(mdlprintprob_prob(prob), 0);
  EXPECT_EQ(take(), "Problem printed\n\nNo objective defined.\n");
}

TEST_F(Print, NoConstraints) {
  EXPECT_EQ(mdlprintprob_prob(prob), 0);
  EXPECT_EQ(take(), "Problem printed\nNo constraints.\n\nNo objective defined.\n");
  EXPECT_EQ(mdlprintobj_prob(prob), 0);
  EXPECT_EQ(take(), "No objective defined.\n");
}

TEST_F(Print, Objective) {
  MDLvar x = var("x");
  MDLctr obj = ctr("profit", MDL_NONBINDING);
  mdladdterm(obj, x, 2.5);
  mdladdterm(obj, nullptr, -1);   // constant +1
  mdlsetobj_prob(prob, obj);
  take();
  EXPECT_EQ(mdlprintobj_prob(prob), 0);
  EXPECT_EQ(take(), "profit: 2.5*x + 1\n");
}

TEST_F(Print, SetAndLongSetLines) {
  MDLsos s = mdlnewsos_prob(prob, "s", MDL_SOS2);
  mdladdsosel(s, var("x"), 1);
  mdladdsosel(s, var("y"), -2);
  take();
  EXPECT_EQ(mdlprintsos(s), 0);
  EXPECT_EQ(take(), "s(2): x(+1) y(-2) \n");

  MDLsos big = mdlnewsos_prob(prob, "big", MDL_SOS1);
  char name[16];
  for (int i = 0; i < 12; ++i) {
    snprintf(name, sizeof name, "member%02d", i);
    mdladdsosel(big, var(name), i + 1);
  }
  take();
  EXPECT_EQ(mdlprintsos(big), 0);
  const std::string text = take();
  // A line is broken once it holds more than 75 characters.
  EXPECT_EQ(text,
            "big(1): member00(+1) member01(+2) member02(+3) member03(+4) member04(+5) "
            "member05(+6) \nmember06(+7) member07(+8) member08(+9) member09(+10) member10(+11) "
            "member11(+12) \n");
  MDLsos none = mdlnewsos_prob(prob, "none", MDL_SOS1);
  take();
  EXPECT_EQ(mdlprintsos(none), 0);
  EXPECT_EQ(take(), "none(1): ");   // no members: no newline
}

TEST_F(Print, VariableBoundsAndSolution) {
  MDLvar x = var("x", MDL_CONTINUOUS, 0, 10);
  MDLvar p = var("p", MDL_PARTINT, 0, 50);
  mdlsetlim(p, 5);
  MDLvar s = var("s", MDL_SEMICONT, 0, 8);
  mdlsetlim(s, 2);
  take();
  EXPECT_EQ(mdlprintvar(x), 9);
  EXPECT_EQ(take(), "x: [0,10]");
  EXPECT_EQ(mdlprintvar(p), 11);
  EXPECT_EQ(take(), "p: [0,5,50]");
  mdlprintvar(s);
  EXPECT_EQ(take(), "s: [0,2,8]");

  // With a solution and a column the value is printed.
  MDLctr c = ctr("c", MDL_LEQ);
  mdladdterm(c, x, 1);
  mdladdterm(c, nullptr, 4);
  MDLctr obj = ctr("obj", MDL_NONBINDING);
  mdladdterm(obj, x, -1);
  mdlsetobj_prob(prob, obj);
  fake::set_int_attrib(KVSL_ATTR_PRESOLVESTATE, KVSL_SOLUTION_HELD);
  fake::set_vector("KVSLgetlpsol", "x", {3.25});
  ASSERT_EQ(mdllpoptimize_prob(prob, ""), 0);
  take();
  EXPECT_EQ(mdlprintvar(x), 7);
  EXPECT_EQ(take(), "x: 3.25");
  EXPECT_EQ(mdlprintvar(p), 11);   // no column: its bounds
  EXPECT_EQ(take(), "p: [0,5,50]");
}

TEST_F(Print, RealFormatChangesEveryNumber) {
  MDLvar x = var("x", MDL_CONTINUOUS, 0, 10);
  MDLsos s = mdlnewsos_prob(prob, "s", MDL_SOS1);
  mdladdsosel(s, x, 1.5);
  MDLctr c = ctr("c", MDL_LEQ);
  mdladdterm(c, x, 3);
  mdladdterm(c, nullptr, 4);
  ASSERT_EQ(mdlsetrealfmt_prob(prob, "%.2f"), 0);
  take();
  mdlprintvar(x);
  EXPECT_EQ(take(), "x: [0.00,10.00]");
  mdlprintsos(s);
  EXPECT_EQ(take(), "s(1): x(+1.50) \n");
  mdlprintctr(c);
  EXPECT_EQ(take(), "c: 3.00*x <= 4.00\n");
}

TEST_F(Print, ArrayOfVariables) {
  MDLarrvar arr = mdlnewarrvar_prob(prob, 8, MDL_CONTINUOUS, "a", 0, 100);
  ASSERT_NE(arr, nullptr);
  take();
  EXPECT_EQ(mdlprintarrvar(arr), 0);
  // After more than 74 characters a newline replaces the separator; the
  // last variable is followed by the separator and the closing newline.
  EXPECT_EQ(take(),
            "a: [0,100],  a_1: [0,100],  a_2: [0,100],  a_3: [0,100],  a_4: [0,100],  "
            "a_5: [0,100]\n"
            "a_6: [0,100],  a_7: [0,100],  \n");
  MDLarrvar open = mdlstartarrvar_prob(prob, 3, "open");
  ASSERT_NE(open, nullptr);
  EXPECT_EQ(mdlprintarrvar(open), 0);
  EXPECT_EQ(take(), "");
}

TEST_F(Print, UnnamedObjectsUseGeneratedNames) {
  mdlsetdictsize_prob(prob, 0, 0);
  MDLvar x = var(nullptr, MDL_CONTINUOUS, 0, 1);
  MDLctr c = ctr(nullptr, MDL_LEQ);
  mdladdterm(c, x, 2);
  char vb[24], cb[24];
  take();
  mdlprintctr(c);
  EXPECT_EQ(take(), std::string(mdlmktn(cb, c)) + ": 2*" + mdlmktn(vb, x) + " <= 0\n");
  mdlprintvar(x);
  EXPECT_EQ(take(), std::string(mdlmktn(vb, x)) + ": [0,1]");
}

TEST_F(Print, Messages) {
  EXPECT_EQ(mdlprintprob_prob(nullptr), 1);
  expect_report(1501, 1, "(printprob) No active problem.");
  EXPECT_EQ(mdlprintobj_prob(nullptr), 1);
  expect_report(1501, 1, "(printobj) No active problem.");
  EXPECT_EQ(mdlprintctr(nullptr), 1);
  expect_report(1514, 0, "(printctr) No constraint given.");
  EXPECT_EQ(mdlprintsos(nullptr), 1);
  expect_report(1518, 0, "(printsos) No SOS given.");
  EXPECT_EQ(mdlprintvar(nullptr), 0);
  expect_report(1513, 0, "(printvar) No variable given.");
  EXPECT_EQ(mdlprintarrvar(nullptr), 1);
  expect_report(1506, 1, "(printarrvar) No array of variables given.");
  EXPECT_EQ(errors.reports.size(), 6u);
}

TEST_F(Print, OutputGoesThroughTheCallbackOnly) {
  MDLvar x = var("x", MDL_CONTINUOUS, 0, 10);
  take();
  testing::internal::CaptureStdout();
  mdlprintvar(x);
  mdlprintprob_prob(prob);
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out, "");
  EXPECT_EQ(take(), "x: [0,10]Problem printed\nNo constraints.\n\nNo objective defined.\n");
  // Without a callback the same text reaches standard output.
  mdldefcbmsg_prob(prob, nullptr, nullptr);
  testing::internal::CaptureStdout();
  mdlprintvar(x);
  fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "x: [0,10]");
}

TEST(PrintErrors, MissingArrayEndsTheProcessByDefault) {
  EXPECT_EXIT(
      {
        mdlseterrctrl(1);
        mdlprintarrvar(nullptr);
      },
      testing::ExitedWithCode(1506 & 0xFF), "1506");
}

}  // namespace
