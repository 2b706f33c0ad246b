/*
 * lp_test.cpp -- the LP file writer: whole files of small models, the
 * bounds table, type sections, wrapping, sets, indicators and ranges.
 */
#include <math.h>

#include "writers/writer_fixture.h"

namespace {

const char *const header =
    "\\LP file generated from the problem `lpmodel' by the\n"
    "\\Korvex Tessel Library Korvex-Tessel\n";

class LpWriter : public WriterTest {
 protected:
  void SetUp() override {
    WriterTest::SetUp();
    ASSERT_EQ(mdlsetprobname_prob(prob, "lpmodel"), 0);
  }
  // x, y in [-5,7], z integer in [0,10], b binary; cost = 3x + 2y - z + b;
  // c1: x + 2y <= 10, c2: x - z >= -3, c3: 1 <= x + y <= 4.
  void small_model() {
    x = var("x");
    y = var("y", MDL_CONTINUOUS, -5, 7);
    z = var("z", MDL_INTEGER, 0, 10);
    b = var("b", MDL_BINARY, 0, 1);
    MDLctr cost = ctr("cost", MDL_NONBINDING);
    mdladdterm(cost, x, 3);
    mdladdterm(cost, y, 2);
    mdladdterm(cost, z, -1);
    mdladdterm(cost, b, 1);
    mdlsetobj_prob(prob, cost);
    MDLctr c1 = ctr("c1", MDL_LEQ);
    mdladdterm(c1, x, 1);
    mdladdterm(c1, y, 2);
    mdladdterm(c1, nullptr, 10);
    MDLctr c2 = ctr("c2", MDL_GEQ);
    mdladdterm(c2, x, 1);
    mdladdterm(c2, z, -1);
    mdladdterm(c2, nullptr, -3);
    MDLctr c3 = ctr("c3", MDL_LEQ);
    mdladdterm(c3, x, 1);
    mdladdterm(c3, y, 1);
    mdlsetrange(c3, 1, 4);
  }
  MDLvar x = nullptr, y = nullptr, z = nullptr, b = nullptr;
};

TEST_F(LpWriter, SmallModelWholeFile) {
  small_model();
  EXPECT_EQ(exported(MDL_FILE_LP),
            std::string(header) +
                "\nMinimize\n"
                "cost: 3 x + 2 y - z + b\n"
                "\nSubject To\n"
                "c3: x + y <= 4\n"
                "c2: x - z >= -3\n"
                "c1: x + 2 y <= 10\n"
                "\nBounds\n"
                "-5 <= y <= 7\n"
                "z <= 10\n"
                "\nIntegers\n"
                "z \n"
                "\nBinaries\n"
                "b \n"
                "\nRanges\n"
                "1 <= c3 <= 4\n"
                "\nEnd\n");
  EXPECT_TRUE(errors.empty());
}

TEST_F(LpWriter, MaximiseAndObjectiveConstant) {
  small_model();
  mdlsetsense_prob(prob, 1);
  MDLctr cost = static_cast<MDLctr>(mdlgetbyname_prob(prob, "cost", MDL_KIND_CTR));
  mdladdterm(cost, nullptr, -2.5);   // the constant term +2.5 (rhs -2.5)
  const std::string text = exported(MDL_FILE_LP);
  EXPECT_NE(text.find("\nMaximize\ncost: 3 x + 2 y - z + b + 2.5\n\nSubject To\n"),
            std::string::npos)
      << text;
  mdladdterm(cost, nullptr, 5);
  EXPECT_NE(exported(MDL_FILE_LP).find("cost: 3 x + 2 y - z + b - 2.5\n"), std::string::npos);
}

TEST_F(LpWriter, NoObjective) {
  MDLvar v = var("v", MDL_CONTINUOUS, 0, 5);
  MDLctr c = ctr("c", MDL_GEQ);
  mdladdterm(c, v, 1);
  mdladdterm(c, nullptr, 1);
  EXPECT_EQ(exported(MDL_FILE_LP), std::string(header) +
                                       "\\No objective defined\n"
                                       "\nSubject To\n"
                                       "c: v >= 1\n"
                                       "\nBounds\n"
                                       "v <= 5\n"
                                       "\nEnd\n");
}

TEST_F(LpWriter, QuadraticObjectiveDoubledConstraintAsStored) {
  MDLvar a = var("x"), c = var("y");
  MDLctr obj = ctr("obj", MDL_NONBINDING);
  mdladdqterm(obj, a, a, 2);
  mdladdqterm(obj, a, c, 3);
  mdlsetobj_prob(prob, obj);
  MDLctr q = ctr("q", MDL_LEQ);
  mdladdqterm(q, a, a, 2);
  mdladdqterm(q, a, c, 3);
  mdladdterm(q, nullptr, 8);
  MDLctr q2 = ctr("q2", MDL_LEQ);
  mdladdterm(q2, a, 1);
  mdladdqterm(q2, c, c, -1);
  mdladdqterm(q2, a, c, 1);
  const std::string text = exported(MDL_FILE_LP);
  EXPECT_NE(text.find("\nobj: [ 4 x^2 + 6 x * y ] / 2\n\nSubject To\n"), std::string::npos)
      << text;
  EXPECT_NE(text.find("\nq: [ 2 x^2 + 3 x * y ] <= 8\n"), std::string::npos) << text;
  // With a linear part the bracket is added; coefficients of 1 are not
  // written; a negative first coefficient opens with " - ".
  const bool x_first = std::less<void *>{}(a, c);
  ASSERT_TRUE(x_first);
  EXPECT_NE(text.find("\nq2: x + [ x * y - y^2 ] <= 0\n"), std::string::npos) << text;
}

TEST_F(LpWriter, NegativeFirstCoefficients) {
  MDLvar a = var("x"), c = var("y");
  MDLctr n = ctr("n", MDL_EQ);
  mdladdterm(n, a, -1);
  mdladdterm(n, c, -2.5);
  mdladdterm(n, nullptr, 1);
  MDLctr q = ctr("q", MDL_GEQ);
  mdladdqterm(q, a, a, -3);
  EXPECT_NE(exported(MDL_FILE_LP).find("\nq: [ - 3 x^2 ] >= 0\nn: - x - 2.5 y = 1\n"),
            std::string::npos);
}

TEST_F(LpWriter, AllZeroConstraintHasNothingBeforeTheRelation) {
  MDLvar v = var("v", MDL_CONTINUOUS, 0, 3);
  MDLctr c = ctr("c", MDL_LEQ);
  mdladdterm(c, v, 1);
  MDLctr r1 = ctr("r1", MDL_LEQ);
  mdladdterm(r1, v, 1);
  mdladdterm(r1, v, -1);   // cancels: every coefficient is 0
  EXPECT_NE(exported(MDL_FILE_LP).find("\nSubject To\nr1: <= 0\nc: v <= 0\n"),
            std::string::npos);
}

TEST_F(LpWriter, BoundsTable) {
  MDLctr c = ctr("c", MDL_LEQ);
  struct { const char *name; int type; double lb, ub; } vars[] = {
      {"bin01", MDL_BINARY, 0, 1},     {"int01", MDL_INTEGER, 0, 1},
      {"intinf", MDL_INTEGER, 0, 1e20}, {"free", MDL_CONTINUOUS, -1e20, 1e20},
      {"lo", MDL_CONTINUOUS, -5, 1e20}, {"both", MDL_CONTINUOUS, -5, 7},
      {"fixed", MDL_CONTINUOUS, 3, 3},  {"up", MDL_CONTINUOUS, 0, 2.5},
      {"minf", MDL_CONTINUOUS, -1e20, 4}, {"intlo", MDL_INTEGER, -3, 1}};
  for (const auto &v : vars) mdladdterm(c, var(v.name, v.type, v.lb, v.ub), 1);
  const std::string text = exported(MDL_FILE_LP);
  const size_t at = text.find("\nBounds\n");
  ASSERT_NE(at, std::string::npos);
  EXPECT_EQ(text.substr(at),
            "\nBounds\n"
            "intinf <= infinity\n"
            "free Free\n"
            "-5 <= lo\n"
            "-5 <= both <= 7\n"
            "fixed = 3\n"
            "up <= 2.5\n"
            "-infinity <= minf <= 4\n"
            "-3 <= intlo\n"
            "\nIntegers\n"
            "int01 intinf intlo \n"
            "\nBinaries\n"
            "bin01 \n"
            "\nEnd\n");
}

TEST_F(LpWriter, FixedIntegerAloneOpensNoSection) {
  MDLctr c = ctr("c", MDL_LEQ);
  mdladdterm(c, var("i", MDL_INTEGER, 4, 4), 1);
  mdladdterm(c, var("s", MDL_SEMICONT, 2, 2), 1);
  const std::string text = exported(MDL_FILE_LP);
  EXPECT_EQ(text.find("Integers"), std::string::npos);
  EXPECT_EQ(text.find("Semi"), std::string::npos);
  EXPECT_NE(text.find("\nBounds\ni = 4\ns = 2\n\nEnd\n"), std::string::npos) << text;
}

TEST_F(LpWriter, UnnamedVariablesUseTheirGeneratedNameExceptWithTheBoundFirst) {
  mdlsetdictsize_prob(prob, 0, 0);   // names off: unnamed records stay unnamed
  MDLvar a = var(nullptr, MDL_CONTINUOUS, -5, 1e20);
  MDLvar c = var(nullptr, MDL_CONTINUOUS, -5, 7);
  MDLvar d = var(nullptr, MDL_CONTINUOUS, 0, 7);
  MDLctr k = ctr(nullptr, MDL_LEQ);
  mdladdterm(k, a, 1);
  mdladdterm(k, c, 1);
  mdladdterm(k, d, 1);
  char na[24], nd[24], nk[24];
  const std::string text = exported(MDL_FILE_LP);
  EXPECT_NE(text.find(std::string(mdlmktn(nk, k)) + ": " + mdlmktn(na, a)), std::string::npos)
      << text;
  EXPECT_NE(text.find("\nBounds\n-5 <= (null)\n-5 <= (null) <= 7\n" + std::string(mdlmktn(nd, d)) +
                      " <= 7\n"),
            std::string::npos)
      << text;
}

TEST_F(LpWriter, LongLinesWrapAfterASeparator) {
  MDLctr c = ctr("long", MDL_LEQ);
  char name[16];
  for (int i = 0; i < 30; ++i) {
    snprintf(name, sizeof name, "var%02d", i);
    mdladdterm(c, var(name), i % 3 == 0 ? -1.5 : 2);
  }
  mdladdterm(c, nullptr, 1);
  const std::string text = exported(MDL_FILE_LP);
  const size_t from = text.find("long:"), to = text.find("<= 1\n", from);
  ASSERT_NE(to, std::string::npos);
  const std::string line = text.substr(from, to - from);
  // Every line but the last ends with a separator and is at most a term
  // longer than 75 characters; continuation lines begin with a coefficient
  // or a name.
  std::istringstream in(line);
  std::string part;
  int lines = 0;
  while (std::getline(in, part)) {
    ++lines;
    EXPECT_LE(part.size(), 75u + 12u) << part;
    if (lines > 1) {
      EXPECT_NE(part[0], ' ') << part;
      EXPECT_TRUE(isdigit(static_cast<unsigned char>(part[0])) || part[0] == 'v') << part;
    }
    if (!in.eof()) EXPECT_TRUE(part.ends_with(" + ") || part.ends_with(" - ")) << part;
  }
  EXPECT_GE(lines, 3);
  EXPECT_EQ(line.substr(0, 40), "long: - 1.5 var00 + 2 var01 + 2 var02 - ");
}

TEST_F(LpWriter, SetsIndicatorsPartialAndSemiSections) {
  MDLvar a = var("a", MDL_CONTINUOUS, 0, 10);
  MDLvar s = var("s", MDL_SEMICONT, 0, 10);
  MDLvar r = var("r", MDL_SEMIINT, 0, 20);
  MDLvar p = var("p", MDL_PARTINT, 0, 50);
  MDLvar f = var("f", MDL_BINARY, 0, 1);
  mdlsetlim(s, 2);
  mdlsetlim(r, 3);
  mdlsetlim(p, 1e20);
  MDLctr c = ctr("c", MDL_LEQ);
  mdladdterm(c, a, 1);
  mdladdterm(c, s, 1);
  mdladdterm(c, r, 1);
  mdladdterm(c, p, 1);
  mdladdterm(c, nullptr, 30);
  MDLctr ind = ctr("ind", MDL_GEQ);
  mdladdterm(ind, a, 1);
  mdladdterm(ind, nullptr, 4);
  ASSERT_EQ(mdlsetindicator(ind, -1, f), 0);
  MDLsos set2 = mdlnewsos_prob(prob, "set2", MDL_SOS2);
  mdladdsosel(set2, a, 1);
  mdladdsosel(set2, s, -2);
  MDLsos set1 = mdlnewsos_prob(prob, "set1", MDL_SOS1);
  mdladdsosel(set1, a, -1);
  mdladdsosel(set1, s, 2);
  const std::string text = exported(MDL_FILE_LP);
  EXPECT_NE(text.find("\nSubject To\nind: f=0 -> a >= 4\nc: a + s + r + p <= 30\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\n\\Special Ordered Sets\nset1: -a +  2 s = S1\nset2: a -  2 s = S2\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\nBounds\na <= 10\ns <= 10\nr <= 20\np <= 50\n"
                      "\nBinaries\nf \n"
                      "\nPartial Integers\np > infinity\n"
                      "\nSemi Continuous\ns > 2\n"
                      "\nSemi Integers\nr > 3\n"
                      "\nEnd\n"),
            std::string::npos)
      << text;
}

TEST_F(LpWriter, RealFormatIsUsedForEveryNumber) {
  small_model();
  ASSERT_EQ(mdlsetrealfmt_prob(prob, "%.2f"), 0);
  const std::string text = exported(MDL_FILE_LP);
  EXPECT_NE(text.find("cost: 3.00 x + 2.00 y - z + b\n"), std::string::npos) << text;
  EXPECT_NE(text.find("c2: x - z >= -3.00\n"), std::string::npos);
  EXPECT_NE(text.find("-5.00 <= y <= 7.00\n"), std::string::npos);
  EXPECT_NE(text.find("1.00 <= c3 <= 4.00\n"), std::string::npos);
}

}  // namespace
