/*
 * fake_selftest.cpp -- tests of the recording engine itself: what it records,
 * what it answers, how it fails on request.
 */
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "fake_engine.h"

using namespace std::string_literals;

namespace {

using ivec = std::vector<int64_t>;
using dvec = std::vector<double>;

// Every test starts from a clean recording state with one fresh problem.
class Fake : public ::testing::Test {
 protected:
  void SetUp() override {
    fake::reset();
    ASSERT_EQ(KVSLcreateprob(&prob), 0);
    fake::clear_calls();
  }
  void TearDown() override {
    fake::reset();
    if (prob != nullptr) EXPECT_EQ(KVSLdestroyprob(prob), 0);
    EXPECT_EQ(fake::live_problems(), 0);
    fake::reset();
  }
  // The problem's error code as the engine reports it.
  int error_code() {
    int code = -1;
    EXPECT_EQ(KVSLgetintattrib(prob, KVSL_ATTR_ERRORCODE, &code), 0);
    return code;
  }
  // Load an empty-row matrix of ncols columns and nrows rows.
  void load(int ncols, int nrows) {
    std::vector<char> rowtype(static_cast<size_t>(nrows), 'L');
    std::vector<double> rhs(static_cast<size_t>(nrows), 0.0);
    std::vector<int64_t> colstart(static_cast<size_t>(ncols) + 1, 0);
    ASSERT_EQ(KVSLloadlp64(prob, "m", ncols, nrows, rowtype.data(), rhs.data(), nullptr, nullptr,
                           colstart.data(), nullptr, nullptr, nullptr, nullptr, nullptr),
              0);
  }
  KVSLprob prob = nullptr;
};

// ---- Recording of loads -------------------------------------------------------

TEST_F(Fake, LoadLpRecordsEveryArrayWithColumnCounts) {
  const char rowtype[] = {'L', 'R'};
  const double rhs[] = {4, 5}, range[] = {0, 2}, obj[] = {1, -1, 3};
  // Column 1 ends last (3 + 2 = 5), column 2 is empty.
  const int64_t colstart[] = {0, 3, 2};
  const int colcount[] = {2, 2, 0};
  const int rowind[] = {0, 1, 9, 0, 1};
  const double rowval[] = {1.5, 2.5, 99, 3.5, 4.5};
  const double lb[] = {0, -1, 0}, ub[] = {1, 1e20, 7};
  ASSERT_EQ(KVSLloadlp64(prob, "lp", 3, 2, rowtype, rhs, range, obj, colstart, colcount, rowind,
                         rowval, lb, ub),
            0);
  auto cs = fake::calls_of("KVSLloadlp64");
  ASSERT_EQ(cs.size(), 1u);
  const fake::call &c = cs[0];
  EXPECT_EQ(c.prob, prob);
  EXPECT_EQ(c.rc, 0);
  EXPECT_EQ(c.s("name"), "lp");
  EXPECT_EQ(c.i("ncols"), 3);
  EXPECT_EQ(c.i("nrows"), 2);
  EXPECT_EQ(c.cv("rowtype"), "LR");
  EXPECT_EQ(c.dv("rhs"), (dvec{4, 5}));
  EXPECT_EQ(c.dv("range"), (dvec{0, 2}));
  EXPECT_EQ(c.dv("obj"), (dvec{1, -1, 3}));
  EXPECT_EQ(c.iv("colstart"), (ivec{0, 3, 2}));
  EXPECT_EQ(c.iv("colcount"), (ivec{2, 2, 0}));
  EXPECT_EQ(c.iv("rowind"), (ivec{0, 1, 9, 0, 1}));
  EXPECT_EQ(c.dv("rowval"), (dvec{1.5, 2.5, 99, 3.5, 4.5}));
  EXPECT_EQ(c.dv("lb"), (dvec{0, -1, 0}));
  EXPECT_EQ(c.dv("ub"), (dvec{1, 1e20, 7}));
  EXPECT_TRUE(c.nulls.empty());
  EXPECT_EQ(fake::loaded_cols(prob), 3);
  EXPECT_EQ(fake::loaded_rows(prob), 2);
}

TEST_F(Fake, LoadLpWithoutCountsReadsOneMoreStartAndListsNulls) {
  const char rowtype[] = {'E'};
  const double rhs[] = {1};
  const int64_t colstart[] = {0, 1, 3};
  const int rowind[] = {0, 0, 0};
  const double rowval[] = {1, 2, 3};
  ASSERT_EQ(KVSLloadlp64(prob, nullptr, 2, 1, rowtype, rhs, nullptr, nullptr, colstart, nullptr,
                         rowind, rowval, nullptr, nullptr),
            0);
  const fake::call &c = fake::calls().back();
  EXPECT_EQ(c.fn, "KVSLloadlp64");
  EXPECT_EQ(c.iv("colstart"), (ivec{0, 1, 3}));
  EXPECT_EQ(c.iv("rowind"), (ivec{0, 0, 0}));
  EXPECT_EQ(c.dv("rowval"), (dvec{1, 2, 3}));
  for (const char *n : {"name", "range", "obj", "colcount", "lb", "ub"})
    EXPECT_TRUE(c.is_null(n)) << n;
  EXPECT_FALSE(c.is_null("rowind"));
  EXPECT_THROW(c.s("name"), std::out_of_range);
  EXPECT_THROW(c.dv("obj"), std::out_of_range);
  EXPECT_THROW(c.i("nqobj"), std::out_of_range);
}

TEST_F(Fake, LoadGlobalRecordsEntitiesAndSets) {
  const char rowtype[] = {'G'};
  const double rhs[] = {1}, obj[] = {1, 2, 3, 4};
  const int64_t colstart[] = {0, 1, 2, 3, 4};
  const int rowind[] = {0, 0, 0, 0};
  const double rowval[] = {1, 1, 1, 1};
  const double lb[] = {0, 0, 0, 0}, ub[] = {1, 10, 5, 5};
  const char enttype[] = {'B', 'S'};
  const int entcol[] = {0, 2};
  const double entlimit[] = {0, 2.5};
  const char settype[] = {'1', '2'};
  const int64_t setstart[] = {0, 2, 5};
  const int setcol[] = {0, 1, 1, 2, 3};
  const double setref[] = {1, 2, 1, 2, 3};
  ASSERT_EQ(KVSLloadglobal64(prob, "mip", 4, 1, rowtype, rhs, nullptr, obj, colstart, nullptr,
                             rowind, rowval, lb, ub, 2, 2, enttype, entcol, entlimit, settype,
                             setstart, setcol, setref),
            0);
  const fake::call &c = fake::calls().back();
  EXPECT_EQ(c.fn, "KVSLloadglobal64");
  EXPECT_EQ(c.rc, 0);
  EXPECT_EQ(c.s("name"), "mip");
  EXPECT_EQ(c.i("ncols"), 4);
  EXPECT_EQ(c.i("nrows"), 1);
  EXPECT_EQ(c.cv("rowtype"), "G");
  EXPECT_EQ(c.dv("rhs"), (dvec{1}));
  EXPECT_TRUE(c.is_null("range"));
  EXPECT_EQ(c.dv("obj"), (dvec{1, 2, 3, 4}));
  EXPECT_EQ(c.iv("colstart"), (ivec{0, 1, 2, 3, 4}));
  EXPECT_EQ(c.iv("rowind"), (ivec{0, 0, 0, 0}));
  EXPECT_EQ(c.dv("rowval"), (dvec{1, 1, 1, 1}));
  EXPECT_EQ(c.dv("lb"), (dvec{0, 0, 0, 0}));
  EXPECT_EQ(c.dv("ub"), (dvec{1, 10, 5, 5}));
  EXPECT_EQ(c.i("nglobal"), 2);
  EXPECT_EQ(c.i("nsets"), 2);
  EXPECT_EQ(c.cv("enttype"), "BS");
  EXPECT_EQ(c.iv("entcol"), (ivec{0, 2}));
  EXPECT_EQ(c.dv("entlimit"), (dvec{0, 2.5}));
  EXPECT_EQ(c.cv("settype"), "12");
  EXPECT_EQ(c.iv("setstart"), (ivec{0, 2, 5}));
  EXPECT_EQ(c.iv("setcol"), (ivec{0, 1, 1, 2, 3}));
  EXPECT_EQ(c.dv("setref"), (dvec{1, 2, 1, 2, 3}));
  EXPECT_EQ(fake::loaded_cols(prob), 4);
  EXPECT_EQ(fake::loaded_rows(prob), 1);
}

TEST_F(Fake, LoadQcqpGlobalRecordsQuadraticParts) {
  const int64_t colstart[] = {0, 0, 0};
  const int qobjcol1[] = {0, 0}, qobjcol2[] = {0, 1};
  const double qobjval[] = {2, 1};
  const int qrow[] = {0, 1};
  const int64_t qrowcount[] = {1, 2};
  const int qrowcol1[] = {0, 0, 1}, qrowcol2[] = {1, 0, 1};
  const double qrowval[] = {3, 4, 5};
  const char rowtype[] = {'L', 'L'};
  const double rhs[] = {1, 2};
  const char enttype[] = {'I'};
  const int entcol[] = {1};
  ASSERT_EQ(KVSLloadqcqpglobal64(prob, "q", 2, 2, rowtype, rhs, nullptr, nullptr, colstart,
                                 nullptr, nullptr, nullptr, nullptr, nullptr, 2, qobjcol1,
                                 qobjcol2, qobjval, 2, qrow, qrowcount, qrowcol1, qrowcol2,
                                 qrowval, 1, 0, enttype, entcol, nullptr, nullptr, nullptr,
                                 nullptr, nullptr),
            0);
  const fake::call &c = fake::calls().back();
  EXPECT_EQ(c.i("nqobj"), 2);
  EXPECT_EQ(c.iv("qobjcol1"), (ivec{0, 0}));
  EXPECT_EQ(c.iv("qobjcol2"), (ivec{0, 1}));
  EXPECT_EQ(c.dv("qobjval"), (dvec{2, 1}));
  EXPECT_EQ(c.i("nqrows"), 2);
  EXPECT_EQ(c.iv("qrow"), (ivec{0, 1}));
  EXPECT_EQ(c.iv("qrowcount"), (ivec{1, 2}));
  EXPECT_EQ(c.iv("qrowcol1"), (ivec{0, 0, 1}));
  EXPECT_EQ(c.iv("qrowcol2"), (ivec{1, 0, 1}));
  EXPECT_EQ(c.dv("qrowval"), (dvec{3, 4, 5}));
  EXPECT_TRUE(c.is_null("rowind"));
  EXPECT_EQ(c.cv("enttype"), "I");
  EXPECT_TRUE(c.is_null("entlimit"));
  EXPECT_TRUE(c.is_null("setstart"));
  EXPECT_TRUE(c.is_null("setcol"));
}

TEST_F(Fake, LoadWithNegativeCountIsRejected) {
  EXPECT_EQ(KVSLloadlp64(prob, "bad", -1, 0, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, nullptr, nullptr, nullptr),
            KVSL_ERR_BADARG);
  EXPECT_EQ(fake::calls().back().rc, KVSL_ERR_BADARG);
  EXPECT_EQ(error_code(), KVSL_ERR_BADARG);
  EXPECT_EQ(fake::loaded_cols(prob), 0);
}

// ---- Names, lists and cuts --------------------------------------------------------

TEST_F(Fake, NamesBufferHoldsLastMinusFirstPlusOneNames) {
  // A buffer with room to spare after the third name: only three are read.
  const char names[] = "x\0long_name\0y1\0unused\0\0\0";
  ASSERT_EQ(KVSLaddnames(prob, 2, names, 4, 6), 0);
  const fake::call &c = fake::calls().back();
  EXPECT_EQ(c.fn, "KVSLaddnames");
  EXPECT_EQ(c.i("type"), 2);
  EXPECT_EQ(c.i("first"), 4);
  EXPECT_EQ(c.i("last"), 6);
  EXPECT_EQ(c.cv("names"), "x\0long_name\0y1\0"s);

  ASSERT_EQ(KVSLaddnames(prob, 1, names, 3, 2), 0);
  EXPECT_EQ(fake::calls().back().cv("names"), ""s);
  ASSERT_EQ(KVSLaddnames(prob, 1, nullptr, 0, 0), 0);
  EXPECT_TRUE(fake::calls().back().is_null("names"));
}

TEST_F(Fake, ChangeAndListCallsRecordTheirArrays) {
  const int col[] = {2, -1};
  const double val[] = {1.5, -4};
  const char bnd[] = {'L', 'B'};
  const int flag[] = {1, -1};
  const int prio[] = {3, 7};
  const char dir[] = {'U', 'N'};
  ASSERT_EQ(KVSLchgobj(prob, 2, col, val), 0);
  ASSERT_EQ(KVSLchgbounds(prob, 2, col, bnd, val), 0);
  ASSERT_EQ(KVSLchgglblimit(prob, 1, col, val), 0);
  ASSERT_EQ(KVSLsetindicators(prob, 2, col, col, flag), 0);
  ASSERT_EQ(KVSLloaddirs(prob, 2, col, prio, dir, val, nullptr), 0);
  ASSERT_EQ(KVSLaddmipsol(prob, 2, val, col, nullptr), 0);
  EXPECT_EQ(fake::call_names(),
            (std::vector<std::string>{"KVSLchgobj", "KVSLchgbounds", "KVSLchgglblimit",
                                      "KVSLsetindicators", "KVSLloaddirs", "KVSLaddmipsol"}));
  const auto &cs = fake::calls();
  EXPECT_EQ(cs[0].iv("col"), (ivec{2, -1}));
  EXPECT_EQ(cs[0].dv("val"), (dvec{1.5, -4}));
  EXPECT_EQ(cs[1].cv("bndtype"), "LB");
  EXPECT_EQ(cs[2].i("n"), 1);
  EXPECT_EQ(cs[2].dv("limit"), (dvec{1.5}));
  EXPECT_EQ(cs[3].iv("flag"), (ivec{1, -1}));
  EXPECT_EQ(cs[4].iv("prio"), (ivec{3, 7}));
  EXPECT_EQ(cs[4].cv("dir"), "UN");
  EXPECT_TRUE(cs[4].is_null("down"));
  EXPECT_TRUE(cs[5].is_null("name"));
}

TEST_F(Fake, AddCutsReadsStartOfNcutsPlusOne) {
  const int cuttype[] = {1, 2};
  const char rowtype[] = {'L', 'E'};
  const double rhs[] = {3, 4};
  const int64_t start[] = {0, 2, 3};
  const int col[] = {0, 1, 1};
  const double val[] = {1, 2, 3};
  ASSERT_EQ(KVSLaddcuts(prob, 2, cuttype, rowtype, rhs, start, col, val), 0);
  const fake::call &c = fake::calls().back();
  EXPECT_EQ(c.i("ncuts"), 2);
  EXPECT_EQ(c.iv("cuttype"), (ivec{1, 2}));
  EXPECT_EQ(c.cv("rowtype"), "LE");
  EXPECT_EQ(c.dv("rhs"), (dvec{3, 4}));
  EXPECT_EQ(c.iv("start"), (ivec{0, 2, 3}));
  EXPECT_EQ(c.iv("col"), (ivec{0, 1, 1}));
  EXPECT_EQ(c.dv("val"), (dvec{1, 2, 3}));
}

TEST_F(Fake, CutPoolQueriesAnswerScriptedHandlesAndData) {
  fake::set_int_out("KVSLgetcutlist", "ncuts", 2);
  fake::set_int_vector("KVSLgetcutlist", "cuts", {11, 12});
  int n = -1;
  KVSLcut cuts[3] = {};
  ASSERT_EQ(KVSLgetcutlist(prob, -1, -1, &n, 3, cuts), 0);
  EXPECT_EQ(n, 2);
  EXPECT_EQ(reinterpret_cast<intptr_t>(cuts[0]), 11);
  EXPECT_EQ(reinterpret_cast<intptr_t>(cuts[1]), 12);
  EXPECT_EQ(cuts[2], nullptr);
  EXPECT_EQ(fake::calls().back().i("size"), 3);

  fake::set_int_vector("KVSLgetcpcuts", "start", {0, 2, 3});
  fake::set_int_vector("KVSLgetcpcuts", "cuttype", {5, 6});
  fake::set_char_vector("KVSLgetcpcuts", "rowtype", "GL");
  fake::set_int_vector("KVSLgetcpcuts", "col", {4, 5, 6});
  fake::set_vector("KVSLgetcpcuts", "val", {0.5, 1.5, 2.5});
  fake::set_vector("KVSLgetcpcuts", "rhs", {7, 8});
  // Too little room: only the starts are written.
  int64_t start[3] = {-1, -1, -1};
  int cuttype[2] = {-1, -1};
  ASSERT_EQ(KVSLgetcpcuts(prob, cuts, 2, 1, cuttype, nullptr, start, nullptr, nullptr, nullptr),
            0);
  EXPECT_EQ(start[2], 3);
  EXPECT_EQ(cuttype[0], -1);
  const fake::call &c = fake::calls().back();
  EXPECT_EQ(c.iv("cuts"), (ivec{11, 12}));
  EXPECT_EQ(c.i("ncuts"), 2);
  EXPECT_EQ(c.i("size"), 1);
  EXPECT_TRUE(c.is_null("rowtype"));
  EXPECT_FALSE(c.is_null("start"));

  char rowtype[2] = {};
  int col[3] = {};
  double val[3] = {}, rhs[2] = {};
  ASSERT_EQ(KVSLgetcpcuts(prob, cuts, 2, 3, cuttype, rowtype, start, col, val, rhs), 0);
  EXPECT_EQ(cuttype[1], 6);
  EXPECT_EQ(std::string(rowtype, 2), "GL");
  EXPECT_EQ(col[2], 6);
  EXPECT_EQ(val[1], 1.5);
  EXPECT_EQ(rhs[1], 8);
}

// ---- Failure injection ---------------------------------------------------------------

TEST_F(Fake, NthCallFailsWithTheCodeReadableAsAttribute) {
  const int col[] = {0};
  const double val[] = {1};
  fake::fail_call("KVSLchgobj", 2, KVSL_ERR_INDEX);
  EXPECT_EQ(KVSLchgobj(prob, 1, col, val), 0);
  EXPECT_EQ(error_code(), 0);
  EXPECT_EQ(KVSLchgobj(prob, 1, col, val), KVSL_ERR_INDEX);
  EXPECT_EQ(error_code(), KVSL_ERR_INDEX);
  EXPECT_EQ(KVSLchgobj(prob, 1, col, val), 0);
  auto cs = fake::calls_of("KVSLchgobj");
  ASSERT_EQ(cs.size(), 3u);
  EXPECT_EQ(cs[0].rc, 0);
  EXPECT_EQ(cs[1].rc, KVSL_ERR_INDEX);
  EXPECT_EQ(cs[1].iv("col"), (ivec{0}));  // a failing call is still recorded in full
  EXPECT_EQ(cs[2].rc, 0);
  // The error code stays until the next failure.
  EXPECT_EQ(error_code(), KVSL_ERR_INDEX);
}

TEST_F(Fake, EachInjectionCountsFromItsOwnStart) {
  fake::fail_call("KVSLpostsolve", 1, 7);
  fake::fail_call("KVSLpostsolve", 3, 9);
  EXPECT_EQ(KVSLpostsolve(prob), 7);
  EXPECT_EQ(KVSLpostsolve(prob), 0);
  EXPECT_EQ(KVSLpostsolve(prob), 9);
  EXPECT_EQ(KVSLpostsolve(prob), 0);
  // Calls of other functions do not count.
  fake::fail_call("KVSLrange", 2, 3);
  EXPECT_EQ(KVSLpostsolve(prob), 0);
  EXPECT_EQ(KVSLrange(prob), 0);
  EXPECT_EQ(KVSLrange(prob), 3);
}

TEST_F(Fake, FailingCallsHaveNoOtherEffect) {
  load(3, 2);
  fake::fail_call("KVSLloadlp64", 1, KVSL_ERR_NOMEM);
  const int64_t colstart[] = {0, 0, 0, 0, 0, 0};
  EXPECT_EQ(KVSLloadlp64(prob, "x", 5, 0, nullptr, nullptr, nullptr, nullptr, colstart, nullptr,
                         nullptr, nullptr, nullptr, nullptr),
            KVSL_ERR_NOMEM);
  EXPECT_EQ(fake::loaded_cols(prob), 3);
  EXPECT_EQ(fake::loaded_rows(prob), 2);

  fake::fail_call("KVSLsetintcontrol", 1, KVSL_ERR_BACKEND);
  EXPECT_EQ(KVSLsetintcontrol(prob, KVSL_CTRL_PRESOLVE, 0), KVSL_ERR_BACKEND);
  EXPECT_EQ(fake::int_control(prob, KVSL_CTRL_PRESOLVE), 1);

  fake::fail_call("KVSLcreateprob", 1, KVSL_ERR_NOMEM);
  KVSLprob other = reinterpret_cast<KVSLprob>(&other);
  EXPECT_EQ(KVSLcreateprob(&other), KVSL_ERR_NOMEM);
  EXPECT_EQ(other, reinterpret_cast<KVSLprob>(&other));
  EXPECT_EQ(fake::live_problems(), 1);
  EXPECT_EQ(fake::calls().back().fn, "KVSLcreateprob");
  EXPECT_EQ(fake::calls().back().rc, KVSL_ERR_NOMEM);

  fake::fail_call("KVSLdestroyprob", 1, KVSL_ERR_BACKEND);
  EXPECT_EQ(KVSLdestroyprob(prob), KVSL_ERR_BACKEND);
  EXPECT_EQ(fake::live_problems(), 1);
  EXPECT_EQ(error_code(), KVSL_ERR_BACKEND);
}

TEST_F(Fake, FailAlwaysLastsUntilReset) {
  fake::fail_always("KVSLinit", 42);
  EXPECT_EQ(KVSLinit(nullptr), 42);
  EXPECT_EQ(KVSLinit("/opt"), 42);
  EXPECT_TRUE(fake::calls()[0].is_null("path"));
  EXPECT_EQ(fake::calls()[1].s("path"), "/opt");
  EXPECT_EQ(fake::calls()[1].rc, 42);
  fake::reset();
  EXPECT_EQ(KVSLinit(nullptr), 0);
  EXPECT_EQ(KVSLfree(), 0);
}

TEST_F(Fake, InjectionRejectsUnknownFunctionsAndCodeZero) {
  EXPECT_THROW(fake::fail_call("KVSLchgobjs", 1, 3), std::invalid_argument);
  EXPECT_THROW(fake::fail_call("KVSLchgobj", 0, 3), std::invalid_argument);
  EXPECT_THROW(fake::fail_call("KVSLchgobj", 1, 0), std::invalid_argument);
  EXPECT_THROW(fake::fail_always("KVSLnothing", 3), std::invalid_argument);
}

// ---- Scripted outputs ---------------------------------------------------------------

TEST_F(Fake, LpSolutionFillsScriptedValuesUpToLoadedSizes) {
  load(3, 2);
  fake::set_vector("KVSLgetlpsol", "x", {1, 2});  // shorter than ncols: zeros beyond
  fake::set_vector("KVSLgetlpsol", "dual", {5, 6, 7, 8});  // longer than nrows: cut
  std::vector<double> x(4, -9), dual(3, -9);
  ASSERT_EQ(KVSLgetlpsol(prob, x.data(), nullptr, dual.data(), nullptr), 0);
  EXPECT_EQ(x, (dvec{1, 2, 0, -9}));
  EXPECT_EQ(dual, (dvec{5, 6, -9}));
  const fake::call &c = fake::calls().back();
  EXPECT_EQ(c.fn, "KVSLgetlpsol");
  EXPECT_TRUE(c.is_null("slack"));
  EXPECT_TRUE(c.is_null("dj"));
  EXPECT_FALSE(c.is_null("x"));
  EXPECT_FALSE(c.is_null("dual"));

  std::vector<double> slack(3, -9), dj(4, -9);
  ASSERT_EQ(KVSLgetlpsol(prob, nullptr, slack.data(), nullptr, dj.data()), 0);
  EXPECT_EQ(slack, (dvec{0, 0, -9}));
  EXPECT_EQ(dj, (dvec{0, 0, 0, -9}));
}

TEST_F(Fake, SolutionLengthsFollowTheLastLoad) {
  load(2, 1);
  load(1, 3);
  fake::set_vector("KVSLgetmipsol", "x", {4, 4, 4});
  fake::set_vector("KVSLgetrowrange", "udn", {1, 2, 3, 4});
  fake::set_vector("KVSLgetcolrange", "lcost", {5, 6});
  double x[2] = {-1, -1}, udn[4] = {-1, -1, -1, -1}, lcost[2] = {-1, -1};
  ASSERT_EQ(KVSLgetmipsol(prob, x, nullptr), 0);
  EXPECT_EQ(x[0], 4);
  EXPECT_EQ(x[1], -1);
  ASSERT_EQ(KVSLgetrowrange(prob, nullptr, nullptr, nullptr, udn), 0);
  EXPECT_EQ(udn[2], 3);
  EXPECT_EQ(udn[3], -1);
  ASSERT_EQ(KVSLgetcolrange(prob, nullptr, nullptr, nullptr, nullptr, nullptr, lcost), 0);
  EXPECT_EQ(lcost[0], 5);
  EXPECT_EQ(lcost[1], -1);
}

TEST_F(Fake, BasesAreScriptedAndRecordedWithLoadedSizes) {
  load(2, 1);
  fake::set_int_vector("KVSLgetbasis", "rowstat", {1});
  fake::set_int_vector("KVSLgetbasis", "colstat", {0, 2});
  int rowstat[1] = {-1}, colstat[2] = {-1, -1};
  ASSERT_EQ(KVSLgetbasis(prob, rowstat, colstat), 0);
  EXPECT_EQ(rowstat[0], 1);
  EXPECT_EQ(colstat[1], 2);
  ASSERT_EQ(KVSLloadbasis(prob, rowstat, colstat), 0);
  EXPECT_EQ(fake::calls().back().iv("rowstat"), (ivec{1}));
  EXPECT_EQ(fake::calls().back().iv("colstat"), (ivec{0, 2}));
  const double sol[] = {1, 0};
  fake::set_int_out("KVSLloadmipsol", "status", 2);
  int status = -1;
  ASSERT_EQ(KVSLloadmipsol(prob, sol, &status), 0);
  EXPECT_EQ(status, 2);
  EXPECT_EQ(fake::calls().back().dv("x"), (dvec{1, 0}));
}

TEST_F(Fake, IisQueriesAnswerScriptedCountsAndData) {
  fake::set_int_out("KVSLiisstatus", "count", -1);
  fake::set_int_out("KVSLiisfirst", "status", 0);
  fake::set_int_out("KVSLiisnext", "status", 1);
  fake::set_int_out("KVSLgetiisdata", "nrows", 2);
  fake::set_int_out("KVSLgetiisdata", "ncols", 1);
  fake::set_int_vector("KVSLgetiisdata", "rowind", {4, 0});
  fake::set_int_vector("KVSLgetiisdata", "colind", {3});
  fake::set_char_vector("KVSLgetiisdata", "rowtype", "L1");
  int count = 0, status = -1;
  ASSERT_EQ(KVSLiisstatus(prob, &count), 0);
  EXPECT_EQ(count, -1);
  ASSERT_EQ(KVSLiisfirst(prob, 1, &status), 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(fake::calls().back().i("mode"), 1);
  ASSERT_EQ(KVSLiisnext(prob, &status), 0);
  EXPECT_EQ(status, 1);
  int nr = 0, nc = 0, rowind[3] = {-1, -1, -1}, colind[2] = {-1, -1};
  char rowtype[3] = {'x', 'x', 'x'};
  ASSERT_EQ(KVSLgetiisdata(prob, 1, &nr, &nc, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(nr, 2);
  EXPECT_EQ(nc, 1);
  EXPECT_TRUE(fake::calls().back().is_null("rowind"));
  ASSERT_EQ(KVSLgetiisdata(prob, 1, &nr, &nc, rowind, colind, rowtype), 0);
  EXPECT_EQ(fake::calls().back().i("num"), 1);
  EXPECT_EQ(rowind[1], 0);
  EXPECT_EQ(rowind[2], -1);
  EXPECT_EQ(colind[0], 3);
  EXPECT_EQ(colind[1], -1);
  EXPECT_EQ(std::string(rowtype, 3), "L1x");
}

TEST_F(Fake, ScriptsRejectOutputsAFunctionDoesNotHave) {
  EXPECT_THROW(fake::set_vector("KVSLgetlpsol", "y", {}), std::invalid_argument);
  EXPECT_THROW(fake::set_vector("KVSLgetbasis", "rowstat", {}), std::invalid_argument);
  EXPECT_THROW(fake::set_int_vector("KVSLgetlpsol", "x", {}), std::invalid_argument);
  EXPECT_THROW(fake::set_char_vector("KVSLgetiisdata", "rowind", ""), std::invalid_argument);
  EXPECT_THROW(fake::set_int_out("KVSLiisstatus", "status", 0), std::invalid_argument);
}

// ---- Controls and attributes ----------------------------------------------------------

TEST_F(Fake, ControlsStartAtTheirDefaults) {
  const std::pair<int, int> ints[] = {
      {KVSL_CTRL_SCALING, 1},     {KVSL_CTRL_PRESOLVE, 1},        {KVSL_CTRL_CRASH, 1},
      {KVSL_CTRL_LPLOG, 100},     {KVSL_CTRL_MIPPRESOLVE, 1},     {KVSL_CTRL_MAXNODE, 0},
      {KVSL_CTRL_MIPLOG, 1},      {KVSL_CTRL_OUTPUTLOG, 1},       {KVSL_CTRL_BARRIERLOG, 0},
      {KVSL_CTRL_DUALREDUCTIONS, 1}, {KVSL_CTRL_THREADS, 1},      {KVSL_CTRL_CUTSTRATEGY, 1},
      {KVSL_CTRL_HEURSTRATEGY, 1}};
  for (auto [number, def] : ints) {
    int v = -7;
    EXPECT_EQ(KVSLgetintcontrol(prob, number, &v), 0) << number;
    EXPECT_EQ(v, def) << number;
    EXPECT_EQ(fake::int_control(prob, number), def) << number;
  }
  const std::pair<int, double> dbls[] = {
      {KVSL_CTRL_FEASTOL, 1e-7},   {KVSL_CTRL_OPTIMALITYTOL, 1e-7}, {KVSL_CTRL_MIPTOL, 1e-6},
      {KVSL_CTRL_PSEUDOCOST, 0.01}, {KVSL_CTRL_MIPABSGAP, 0},       {KVSL_CTRL_MIPRELGAP, 1e-4},
      {KVSL_CTRL_TIMELIMIT, 0},    {KVSL_CTRL_CUTOFF, 1e40}};
  for (auto [number, def] : dbls) {
    double v = -7;
    EXPECT_EQ(KVSLgetdblcontrol(prob, number, &v), 0) << number;
    EXPECT_EQ(v, def) << number;
    EXPECT_EQ(fake::dbl_control(prob, number), def) << number;
  }
}

TEST_F(Fake, ControlsSetGetAndRestorePerProblem) {
  KVSLprob other = nullptr;
  ASSERT_EQ(KVSLcreateprob(&other), 0);
  EXPECT_EQ(KVSLsetintcontrol(prob, KVSL_CTRL_OUTPUTLOG, 0), 0);
  EXPECT_EQ(KVSLsetdblcontrol(prob, KVSL_CTRL_MIPRELGAP, 0.5), 0);
  int v = -1;
  double d = -1;
  EXPECT_EQ(KVSLgetintcontrol(prob, KVSL_CTRL_OUTPUTLOG, &v), 0);
  EXPECT_EQ(v, 0);
  EXPECT_EQ(KVSLgetdblcontrol(prob, KVSL_CTRL_MIPRELGAP, &d), 0);
  EXPECT_EQ(d, 0.5);
  EXPECT_EQ(fake::int_control(other, KVSL_CTRL_OUTPUTLOG), 1);
  EXPECT_EQ(fake::dbl_control(other, KVSL_CTRL_MIPRELGAP), 1e-4);

  const fake::call set = fake::calls_of("KVSLsetdblcontrol").at(0);
  EXPECT_EQ(set.i("control"), KVSL_CTRL_MIPRELGAP);
  EXPECT_EQ(set.d("value"), 0.5);

  EXPECT_EQ(KVSLsetdefaultcontrol(prob, KVSL_CTRL_OUTPUTLOG), 0);
  EXPECT_EQ(KVSLsetdefaultcontrol(prob, KVSL_CTRL_MIPRELGAP), 0);
  EXPECT_EQ(fake::int_control(prob, KVSL_CTRL_OUTPUTLOG), 1);
  EXPECT_EQ(fake::dbl_control(prob, KVSL_CTRL_MIPRELGAP), 1e-4);
  EXPECT_EQ(fake::calls().back().i("control"), KVSL_CTRL_MIPRELGAP);
  EXPECT_EQ(KVSLdestroyprob(other), 0);
}

TEST_F(Fake, CutoffDefaultFollowsTheSense) {
  EXPECT_EQ(KVSLchgobjsense(prob, -1), 0);
  EXPECT_EQ(fake::dbl_control(prob, KVSL_CTRL_CUTOFF), -1e40);
  EXPECT_EQ(KVSLminim(prob, "g"), 0);
  EXPECT_EQ(fake::calls().back().s("flags"), "g");
  EXPECT_EQ(fake::dbl_control(prob, KVSL_CTRL_CUTOFF), 1e40);
  EXPECT_EQ(KVSLsetdblcontrol(prob, KVSL_CTRL_CUTOFF, 12), 0);
  EXPECT_EQ(KVSLmaxim(prob, nullptr), 0);
  EXPECT_TRUE(fake::calls().back().is_null("flags"));
  EXPECT_EQ(fake::dbl_control(prob, KVSL_CTRL_CUTOFF), 12);
  EXPECT_EQ(KVSLsetdefaultcontrol(prob, KVSL_CTRL_CUTOFF), 0);
  EXPECT_EQ(fake::dbl_control(prob, KVSL_CTRL_CUTOFF), -1e40);
  EXPECT_EQ(KVSLchgobjsense(prob, 2), KVSL_ERR_BADARG);
  EXPECT_EQ(fake::dbl_control(prob, KVSL_CTRL_CUTOFF), -1e40);
}

TEST_F(Fake, UnknownControlsFailWithBadControl) {
  int v = 123;
  double d = 4.5;
  EXPECT_EQ(KVSLsetintcontrol(prob, 8999, 1), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(error_code(), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(KVSLgetintcontrol(prob, 8999, &v), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(v, 123);
  // A double control is not an integer control, and the reverse.
  EXPECT_EQ(KVSLgetintcontrol(prob, KVSL_CTRL_FEASTOL, &v), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(KVSLsetintcontrol(prob, KVSL_CTRL_FEASTOL, 1), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(KVSLgetdblcontrol(prob, KVSL_CTRL_PRESOLVE, &d), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(KVSLsetdblcontrol(prob, 7999, 1.0), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(d, 4.5);
  EXPECT_EQ(KVSLsetdefaultcontrol(prob, 1), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(fake::calls().back().rc, KVSL_ERR_BADCONTROL);
  EXPECT_THROW(fake::int_control(prob, 8999), std::invalid_argument);
  EXPECT_THROW(fake::dbl_control(prob, KVSL_CTRL_PRESOLVE), std::invalid_argument);
}

TEST_F(Fake, AttributesAnswerScriptsErrorCodeOrZero) {
  int v = -1;
  double d = -1;
  EXPECT_EQ(KVSLgetintattrib(prob, KVSL_ATTR_LPSTATUS, &v), 0);
  EXPECT_EQ(v, 0);
  EXPECT_EQ(KVSLgetdblattrib(prob, KVSL_ATTR_LPOBJVAL, &d), 0);
  EXPECT_EQ(d, 0);
  fake::set_int_attrib(KVSL_ATTR_LPSTATUS, KVSL_LP_INFEAS);
  fake::set_dbl_attrib(KVSL_ATTR_LPOBJVAL, 2.5);
  EXPECT_EQ(KVSLgetintattrib(prob, KVSL_ATTR_LPSTATUS, &v), 0);
  EXPECT_EQ(v, KVSL_LP_INFEAS);
  EXPECT_EQ(KVSLgetdblattrib(prob, KVSL_ATTR_LPOBJVAL, &d), 0);
  EXPECT_EQ(d, 2.5);
  EXPECT_EQ(fake::calls().back().i("attrib"), KVSL_ATTR_LPOBJVAL);
  // Numbers outside the attribute table fail unless scripted.
  EXPECT_EQ(KVSLgetintattrib(prob, 1999, &v), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(KVSLgetdblattrib(prob, KVSL_ATTR_ROWS, &d), KVSL_ERR_BADCONTROL);
  EXPECT_EQ(error_code(), KVSL_ERR_BADCONTROL);
  fake::set_int_attrib(KVSL_ATTR_ERRORCODE, 77);
  EXPECT_EQ(error_code(), 77);
}

TEST_F(Fake, CallsWithoutALiveProblemFailWithBadArg) {
  int v = 0;
  EXPECT_EQ(KVSLgetintattrib(nullptr, KVSL_ATTR_ERRORCODE, &v), KVSL_ERR_BADARG);
  EXPECT_EQ(KVSLpostsolve(nullptr), KVSL_ERR_BADARG);
  EXPECT_EQ(KVSLcreateprob(nullptr), KVSL_ERR_BADARG);
  EXPECT_TRUE(fake::calls().back().is_null("prob"));
  EXPECT_EQ(fake::live_problems(), 1);
}

// ---- Reset, problems, messages ----------------------------------------------------------

TEST_F(Fake, ResetForgetsCallsScriptsAndFailuresButKeepsControls) {
  load(2, 0);
  EXPECT_EQ(KVSLsetintcontrol(prob, KVSL_CTRL_THREADS, 4), 0);
  fake::set_vector("KVSLgetlpsol", "x", {3, 3});
  fake::set_int_attrib(KVSL_ATTR_LPSTATUS, 1);
  fake::fail_call("KVSLpostsolve", 1, 5);
  fake::fail_always("KVSLrange", 6);
  fake::reset();
  EXPECT_TRUE(fake::calls().empty());
  EXPECT_EQ(KVSLpostsolve(prob), 0);
  EXPECT_EQ(KVSLrange(prob), 0);
  double x[2] = {-1, -1};
  ASSERT_EQ(KVSLgetlpsol(prob, x, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(x[0], 0);
  int v = -1;
  EXPECT_EQ(KVSLgetintattrib(prob, KVSL_ATTR_LPSTATUS, &v), 0);
  EXPECT_EQ(v, 0);
  EXPECT_EQ(fake::int_control(prob, KVSL_CTRL_THREADS), 4);
  EXPECT_EQ(fake::loaded_cols(prob), 2);

  fake::clear_calls();
  EXPECT_TRUE(fake::call_names().empty());
}

TEST_F(Fake, LiveProblemsCountsCreatedMinusDestroyed) {
  EXPECT_EQ(fake::live_problems(), 1);
  KVSLprob a = nullptr, b = nullptr;
  ASSERT_EQ(KVSLcreateprob(&a), 0);
  ASSERT_EQ(KVSLcreateprob(&b), 0);
  EXPECT_NE(a, b);
  EXPECT_EQ(fake::calls()[0].prob, a);
  EXPECT_EQ(fake::calls()[1].prob, b);
  EXPECT_EQ(fake::live_problems(), 3);
  EXPECT_EQ(KVSLdestroyprob(a), 0);
  EXPECT_EQ(fake::live_problems(), 2);
  EXPECT_EQ(KVSLdestroyprob(a), KVSL_ERR_BADARG);  // already gone
  EXPECT_EQ(fake::loaded_cols(a), 0);
  EXPECT_EQ(KVSLdestroyprob(b), 0);
  EXPECT_EQ(fake::live_problems(), 1);
}

TEST_F(Fake, ProblemsCanBeUsedFromSeveralThreads) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([] {
      for (int k = 0; k < 50; ++k) {
        KVSLprob p = nullptr;
        if (KVSLcreateprob(&p) != 0) return;
        KVSLsetintcontrol(p, KVSL_CTRL_THREADS, k);
        KVSLdestroyprob(p);
      }
    });
  for (auto &t : threads) t.join();
  EXPECT_EQ(fake::live_problems(), 1);
  EXPECT_EQ(fake::calls_of("KVSLcreateprob").size(), 200u);
  EXPECT_EQ(fake::calls_of("KVSLdestroyprob").size(), 200u);
  EXPECT_EQ(fake::calls().size(), 600u);
}

// What the message callback of the test below received.
struct received {
  KVSLprob prob = nullptr;
  std::string text;
  int len = -1;
  int type = -1;
  int count = 0;
};

void on_message(KVSLprob prob, void *user, const char *text, int len, int msgtype) {
  auto *r = static_cast<received *>(user);
  r->prob = prob;
  r->text = text != nullptr ? text : "(null)";
  r->len = len;
  r->type = msgtype;
  ++r->count;
}

TEST_F(Fake, EmitMessageInvokesTheInstalledCallback) {
  received r;
  fake::emit_message(prob, "dropped", 1);  // no callback yet
  ASSERT_EQ(KVSLsetcbmessage(prob, on_message, &r), 0);
  EXPECT_FALSE(fake::calls().back().is_null("cb"));
  fake::emit_message(prob, "Problem is infeasible", 3);
  EXPECT_EQ(r.count, 1);
  EXPECT_EQ(r.prob, prob);
  EXPECT_EQ(r.text, "Problem is infeasible");
  EXPECT_EQ(r.len, 21);
  EXPECT_EQ(r.type, 3);
  fake::emit_message(prob, nullptr, -1);
  EXPECT_EQ(r.count, 2);
  EXPECT_EQ(r.len, 0);
  EXPECT_EQ(r.type, -1);
  ASSERT_EQ(KVSLsetcbmessage(prob, nullptr, nullptr), 0);
  EXPECT_TRUE(fake::calls().back().is_null("cb"));
  EXPECT_TRUE(fake::calls().back().is_null("user"));
  fake::emit_message(prob, "gone", 4);
  EXPECT_EQ(r.count, 2);
  EXPECT_THROW(fake::emit_message(nullptr, "x", 1), std::invalid_argument);
}

TEST_F(Fake, OtherCallsRecordTheirScalarsAndTexts) {
  const int rows[] = {1, 2};
  EXPECT_EQ(KVSLsetprobname(prob, "base"), 0);
  EXPECT_EQ(KVSLlpoptimize(prob, "b"), 0);
  EXPECT_EQ(KVSLmipoptimize(prob, ""), 0);
  EXPECT_EQ(KVSLinitglobal(prob), 0);
  EXPECT_EQ(KVSLfixglobals(prob, 1), 0);
  EXPECT_EQ(KVSLwritesol(prob, "f.sol", "x"), 0);
  EXPECT_EQ(KVSLreadslxsol(prob, "f.slx", nullptr), 0);
  EXPECT_EQ(KVSLiisall(prob), 0);
  EXPECT_EQ(KVSLloadmodelcuts(prob, 2, rows), 0);
  EXPECT_EQ(KVSLloaddelayedrows(prob, 1, rows), 0);
  const auto &cs = fake::calls();
  ASSERT_EQ(cs.size(), 10u);
  EXPECT_EQ(cs[0].s("name"), "base");
  EXPECT_EQ(cs[1].s("flags"), "b");
  EXPECT_EQ(cs[2].s("flags"), "");
  EXPECT_EQ(cs[3].fn, "KVSLinitglobal");
  EXPECT_EQ(cs[4].i("round"), 1);
  EXPECT_EQ(cs[5].s("file"), "f.sol");
  EXPECT_EQ(cs[5].s("flags"), "x");
  EXPECT_TRUE(cs[6].is_null("flags"));
  EXPECT_EQ(cs[7].fn, "KVSLiisall");
  EXPECT_EQ(cs[8].iv("row"), (ivec{1, 2}));
  EXPECT_EQ(cs[9].iv("row"), (ivec{1}));
  for (const auto &c : cs) EXPECT_EQ(c.prob, prob);
}

}  // namespace
