/*
 * mps_test.cpp -- the fixed-column MPS writer: whole files, column lists,
 * sections by need, the bounds table, working storage failures.
 */
#include "writers/writer_fixture.h"

namespace {

class MpsWriter : public WriterTest {
 protected:
  void SetUp() override {
    WriterTest::SetUp();
    ASSERT_EQ(mdlsetprobname_prob(prob, "mpsmodel"), 0);
  }
  // The LP suite's small model: cost = 3x + 2y - z + b; c1: x + 2y <= 10,
  // c2: x - z >= -3, c3: 1 <= x + y <= 4.
  void small_model() {
    MDLvar x = var("x"), y = var("y", MDL_CONTINUOUS, -5, 7);
    MDLvar z = var("z", MDL_INTEGER, 0, 10), b = var("b", MDL_BINARY, 0, 1);
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
};

const char *const small_mps =
    "NAME          mpsmodel\n"
    "ROWS\n"
    " N  *OBJ*\n"
    " L  c3\n"
    " G  c2\n"
    " L  c1\n"
    "\n"
    "COLUMNS\n"
    "    x         c1        1\n"
    "    x         c2        1\n"
    "    x         c3        1\n"
    "    x         *OBJ*     3\n"
    "    y         c1        2\n"
    "    y         c3        1\n"
    "    y         *OBJ*     2\n"
    "    z         c2        -1\n"
    "    z         *OBJ*     -1\n"
    "    b         *OBJ*     1\n"
    "\n"
    "RHS\n"
    "    *RHS*     c3        4\n"
    "    *RHS*     c2        -3\n"
    "    *RHS*     c1        10\n"
    "\n"
    "RANGES\n"
    "    *RNG*     c3        3\n"
    "\n"
    "BOUNDS\n"
    " LO *BND*     y         -5\n"
    " UP *BND*     y         7\n"
    " UI *BND*     z         10\n"
    " BV *BND*     b\n"
    "\n"
    "ENDATA\n";

TEST_F(MpsWriter, SmallModelWholeFile) {
  small_model();
  EXPECT_EQ(exported(MDL_FILE_MPS), small_mps);
  EXPECT_TRUE(errors.empty());
}

TEST_F(MpsWriter, MaximisationHasObjSense) {
  small_model();
  mdlsetsense_prob(prob, 1);
  const std::string text = exported(MDL_FILE_MPS);
  EXPECT_TRUE(text.starts_with("NAME          mpsmodel\nOBJSENSE\n MAXIMIZE\nROWS\n N  *OBJ*\n"))
      << text;
  mdlsetsense_prob(prob, 0);
  EXPECT_EQ(exported(MDL_FILE_MPS).find("OBJSENSE"), std::string::npos);
}

TEST_F(MpsWriter, ObjectiveConstantIsAnRhsOfTheObjectiveRow) {
  small_model();
  mdladdterm(static_cast<MDLctr>(mdlgetbyname_prob(prob, "cost", MDL_KIND_CTR)), nullptr, 2.5);
  // The objective is its terms plus its constant -2.5: an rhs r on the
  // objective row stands for the objective terms - r.
  EXPECT_NE(exported(MDL_FILE_MPS).find("    *RHS*     c1        10\n    *RHS*     *OBJ*     2.5\n"),
            std::string::npos);
}

TEST_F(MpsWriter, UnusedColumnAndListOrder) {
  MDLvar x = var("x"), lone = var("lone", MDL_CONTINUOUS, 0, 4);
  MDLctr obj = ctr("obj", MDL_NONBINDING);
  mdladdterm(obj, x, 5);
  mdlsetobj_prob(prob, obj);
  MDLctr first = ctr("first", MDL_LEQ);
  mdladdterm(first, x, 1);
  mdladdterm(first, nullptr, 1);
  MDLctr second = ctr("second", MDL_LEQ);
  mdladdterm(second, x, 2);
  mdladdterm(second, nullptr, 1);
  MDLctr keep = ctr("keep", MDL_NONBINDING);   // brings `lone` in without a row
  mdladdterm(keep, lone, 1);
  mdlsetincvars(keep, 1);
  const std::string text = exported(MDL_FILE_MPS);
  EXPECT_NE(text.find("\nCOLUMNS\n"
                      "    x         first     1\n"
                      "    x         second    2\n"
                      "    x         *OBJ*     5\n"
                      "    lone      *OBJ*     0\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find(" UP *BND*     lone      4\n"), std::string::npos);
}

TEST_F(MpsWriter, LongNamesPushTheFields) {
  MDLvar v = var("a_rather_long_name");
  MDLctr c = ctr("constraint_nine", MDL_GEQ);
  mdladdterm(c, v, 1.5);
  mdladdterm(c, nullptr, -2);
  const std::string text = exported(MDL_FILE_MPS);
  EXPECT_NE(text.find("\n    a_rather_long_name  constraint_nine  1.5\n"), std::string::npos)
      << text;
  EXPECT_NE(text.find("\n    *RHS*     constraint_nine  -2\n"), std::string::npos) << text;
}

TEST_F(MpsWriter, EmptyFileWithoutObjectiveAndRows) {
  MDLvar v = var("v");
  MDLctr keep = ctr("keep", MDL_NONBINDING);
  mdladdterm(keep, v, 1);
  mdlsetincvars(keep, 1);
  const std::string file = path("empty");
  ASSERT_EQ(mdlexportprob_prob(prob, MDL_FILE_MPS, file.c_str()), 0);
  ASSERT_TRUE(exists(file + ".mps"));
  EXPECT_EQ(read(file + ".mps"), "");
}

TEST_F(MpsWriter, QuadraticOnlyObjectiveAndQuadraticRows) {
  MDLvar x = var("x"), y = var("y");
  ASSERT_TRUE(std::less<void *>{}(x, y));
  MDLctr obj = ctr("obj", MDL_NONBINDING);
  mdladdqterm(obj, x, x, 3);
  mdladdqterm(obj, x, y, -1);
  mdlsetobj_prob(prob, obj);
  MDLctr q = ctr("q", MDL_LEQ);
  mdladdterm(q, x, 1);
  mdladdqterm(q, x, x, 2);
  mdladdqterm(q, x, y, 4);
  mdladdterm(q, nullptr, 9);
  const std::string text = exported(MDL_FILE_MPS);
  EXPECT_EQ(text.find("*OBJ*\n"), std::string::npos) << text;
  EXPECT_NE(text.find("ROWS\n L  q\n\nCOLUMNS\n    x         q         1\n"
                      "    y         *OBJ*     0\n"
                      "\nRHS\n    *RHS*     q         9\n"
                      "\nQUADOBJ\n    x         x         6\n    x         y         -1\n"
                      "\nQCMATRIX q\n    x         x         2\n    x         y         2\n"
                      "    y         x         2\n"
                      "\nBOUNDS\n\nENDATA\n"),
            std::string::npos)
      << text;
}

TEST_F(MpsWriter, BoundsTable) {
  MDLctr c = ctr("c", MDL_LEQ);
  auto add = [&](const char *name, int type, double lb, double ub, double lim = 0) {
    MDLvar v = var(name, type, lb, ub);
    if (lim != 0) mdlsetlim(v, lim);
    mdladdterm(c, v, 1);
  };
  add("bin01", MDL_BINARY, 0, 1);
  add("bin11", MDL_BINARY, 1, 1);
  add("bin00", MDL_BINARY, 0, 0);
  add("intinf", MDL_INTEGER, 0, 1e20);
  add("intlo", MDL_INTEGER, -1e20, 5);
  add("pint", MDL_PARTINT, -2, 40, 10);
  add("semi", MDL_SEMICONT, 0, 8, 2);
  add("semi1", MDL_SEMICONT, 0, 8, 1);
  add("semipos", MDL_SEMICONT, 3, 1e20, 2);
  add("sint", MDL_SEMIINT, 0, 1e20, 4);
  add("sintpos", MDL_SEMIINT, 5, 9, 6);
  add("zero", MDL_CONTINUOUS, 0, 0);
  add("fix", MDL_CONTINUOUS, 2, 2);
  add("free", MDL_CONTINUOUS, -1e20, 1e20);
  add("minf", MDL_CONTINUOUS, -1e20, 3);
  add("lo", MDL_CONTINUOUS, 1, 1e20);
  const std::string text = exported(MDL_FILE_MPS);
  const size_t at = text.find("\nBOUNDS\n");
  ASSERT_NE(at, std::string::npos) << text;
  EXPECT_EQ(text.substr(at),
            "\nBOUNDS\n"
            " BV *BND*     bin01\n"
            " BV *BND*     bin11\n"
            " LO *BND*     bin11     1\n"
            " BV *BND*     bin00\n"
            " UP *BND*     bin00     0\n"
            " UI *BND*     intinf    2.14748e+09\n"
            " UI *BND*     intlo     5\n"
            " LO *BND*     intlo     -2.14748e+09\n"
            " PI *BND*     pint      10\n"
            " LO *BND*     pint      -2\n"
            " UP *BND*     pint      40\n"
            " SC *BND*     semi      8\n"
            " LO *BND*     semi      2\n"
            " SC *BND*     semi1     8\n"
            " LO *BND*     semipos   3\n"
            " SI *BND*     sint      2.14748e+09\n"
            " LO *BND*     sint      4\n"
            " UI *BND*     sintpos   9\n"
            " LO *BND*     sintpos   6\n"
            " FX *BND*     zero      0\n"
            " FX *BND*     fix       2\n"
            " FR *BND*     free\n"
            " LO *BND*     minf      -1e+20\n"
            " UP *BND*     minf      3\n"
            " LO *BND*     lo        1\n"
            "\nENDATA\n");
}

TEST_F(MpsWriter, SetsAndIndicators) {
  MDLvar a = var("a", MDL_CONTINUOUS, 0, 10), s = var("s", MDL_CONTINUOUS, 0, 10);
  MDLvar f = var("f", MDL_BINARY, 0, 1);
  MDLctr c = ctr("c", MDL_LEQ);
  mdladdterm(c, a, 1);
  mdladdterm(c, s, 1);
  mdladdterm(c, f, 1);
  mdladdterm(c, nullptr, 12);
  MDLctr ind = ctr("ind", MDL_GEQ);
  mdladdterm(ind, a, 1);
  mdladdterm(ind, nullptr, 4);
  ASSERT_EQ(mdlsetindicator(ind, 1, f), 0);
  MDLsos set = mdlnewsos_prob(prob, "set", MDL_SOS2);
  mdladdsosel(set, a, 1);
  mdladdsosel(set, s, -2.5);
  const std::string text = exported(MDL_FILE_MPS);
  EXPECT_NE(text.find("\nSETS\n S2 set\n    set       a         1\n    set       s         -2.5\n"
                      "\nRHS\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\nINDICATORS\n IF ind       f         1       \n\nENDATA\n"),
            std::string::npos)
      << text;
}

TEST_F(MpsWriter, RowsOutOfTheMatrixAreLeftOut) {
  MDLvar v = var("v", MDL_CONTINUOUS, 0, 2);
  MDLctr c = ctr("c", MDL_LEQ);
  mdladdterm(c, v, 1);
  mdladdterm(c, nullptr, 1);
  ctr("empty", MDL_LEQ);   // no terms, satisfied: not a row of the matrix
  MDLctr n = ctr("free", MDL_NONBINDING);
  mdladdterm(n, v, 3);
  const std::string text = exported(MDL_FILE_MPS);
  EXPECT_NE(text.find("ROWS\n L  c\n\nCOLUMNS\n    v         c         1\n\nRHS\n"),
            std::string::npos)
      << text;
  EXPECT_EQ(text.find("empty"), std::string::npos);
}

// Every allocation of an export of a loaded model failed in turn: the file
// name and the working storage report 1502 and give 1; the output buffer
// falls back to a small one and the file stays the same.
TEST_F(MpsWriter, AllocationFailuresAreReported) {
  small_model();
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  const std::string file = path("alloc");
  const sweep_result r = sweep_allocations([&] {
    std::filesystem::remove(file + ".mps");
    const int rc = mdlexportprob_prob(prob, MDL_FILE_MPS, file.c_str());
    if (rc == 0) EXPECT_EQ(read(file + ".mps"), small_mps);
    return rc;
  });
  EXPECT_EQ(r.failures, 2);    // the name, the entry lists
  EXPECT_GE(r.successes, 2);   // the small buffer, then nothing failed
}

TEST_F(MpsWriter, MoreEntriesThanCountedIsAnInternalError) {
  small_model();
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  prob->nnz = 2;   // the generator's count no longer matches the records
  const std::string file = path("internal");
  EXPECT_EQ(mdlexportprob_prob(prob, MDL_FILE_MPS, file.c_str()), 0);
  // 6 matrix entries and 4 objective entries against room for 2 + 4.
  ASSERT_EQ(errors.reports.size(), 4u);
  for (const auto &r : errors.reports) {
    EXPECT_EQ(r.number, 1582);
    EXPECT_EQ(r.iserror, 1);
    EXPECT_EQ(r.text, "Internal error writing MPS file.");
  }
  EXPECT_TRUE(read(file + ".mps").ends_with("\nENDATA\n"));
}

}  // namespace
