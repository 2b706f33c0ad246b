/*
 * variables_test.cpp -- variable creation and its checks, bounds, limits,
 * types, links, names, zero feasibility, and the engine calls of changes
 * to a loaded matrix.
 */
#include <math.h>
#include <stdio.h>

#include <functional>
#include <string>
#include <vector>

#include "problem/names.h"
#include "problem/problem.h"
#include "problem/support.h"

namespace {

using support::LibraryTest;

class Variables : public LibraryTest {
 protected:
  MDLprob p = nullptr;
  void SetUp() override {
    LibraryTest::SetUp();
    p = mdlnewprob("vars");
    ASSERT_NE(p, nullptr);
    fake::clear_calls();
  }
  void TearDown() override {
    if (p != nullptr) mdldelprob_prob(p);
    LibraryTest::TearDown();
  }
  // A variable that owns column `col` of a loaded, unmodified matrix.
  MDLvar loaded_var(const char *name, int type, double lb, double ub, int col) {
    MDLvar v = mdlnewvar_prob(p, name, type, lb, ub);
    v->column = static_cast<uint32_t>(col);
    p->status = MDL_ST_LOADED;
    return v;
  }
  static void expect_bounds(MDLvar v, double lb, double ub) {
    double l = -7, u = -7;
    ASSERT_EQ(mdlgetbounds(v, &l, &u), 0);
    EXPECT_EQ(l, lb);
    EXPECT_EQ(u, ub);
  }
};

TEST_F(Variables, CreationFields) {
  MDLvar a = mdlnewvar_prob(p, "a", MDL_INTEGER, -2, 8);
  MDLvar b = mdlnewvar_prob(p, "b", MDL_SEMICONT, 0, 1e20);
  ASSERT_TRUE(a && b);
  EXPECT_EQ(a->serial, 0u);
  EXPECT_EQ(b->serial, 1u);
  EXPECT_EQ(p->varcount, 2);
  EXPECT_EQ(a->column, 0x1FFFFFFFu);
  EXPECT_EQ(mdlgetcolnum(a), -1);
  EXPECT_EQ(a->problem, p);
  EXPECT_EQ(a->link, nullptr);
  EXPECT_EQ(mdlgetvartype(a), MDL_INTEGER);
  EXPECT_EQ(mdlgetvartype(b), MDL_SEMICONT);
  expect_bounds(a, -2, 8);
  double lim = 0;
  ASSERT_EQ(mdlgetlim(b, &lim), 0);
  EXPECT_EQ(lim, 1.0);
  EXPECT_STREQ(mdlgetvarname(a), "a");
  EXPECT_EQ(mdlgetvarname(a), mdlgetvarname(a));  // the dictionary's text
  EXPECT_EQ(p->status, 0u);  // creation does not mark the problem
  EXPECT_TRUE(fake::calls().empty());
  EXPECT_TRUE(cap.msgs.empty());
  EXPECT_EQ(mdlgetbounds(a, nullptr, nullptr), 0);
  EXPECT_EQ(mdlgetlim(a, nullptr), 0);
}

TEST_F(Variables, BinaryClampedAtCreationOnly) {
  MDLvar b = mdlnewvar_prob(p, "b", MDL_BINARY, -5, 7);
  expect_bounds(b, 0, 1);
  MDLvar c = mdlnewvar_prob(p, "c", MDL_BINARY, 0.3, 0.6);
  expect_bounds(c, 0.3, 0.6);
  MDLvar d = mdlnewvar_prob(p, "d", MDL_BINARY, NAN, 3);
  expect_bounds(d, 0, 1);
  MDLvar e = mdlnewvar_prob(p, "e", MDL_BINARY, 2, 3);
  expect_bounds(e, 1, 1);
  // Later changes are not clamped.
  ASSERT_EQ(mdlsetub(b, 5), 0);
  expect_bounds(b, 0, 5);
  MDLvar f = mdlnewvar_prob(p, "f", MDL_CONTINUOUS, -5, 7);
  ASSERT_EQ(mdlsetvartype(f, MDL_BINARY), 0);
  expect_bounds(f, -5, 7);
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Variables, CreationChecksInOrder) {
  EXPECT_EQ(mdlnewvar_prob(nullptr, "x", 0, 0, 1), nullptr);
  expect_only(1501, 1, "(newvar) No active problem.");
  cap.msgs.clear();
  // Bounds before type, before clamping.
  EXPECT_EQ(mdlnewvar_prob(p, "b", MDL_BINARY, 7, -5), nullptr);
  expect_only(1530, 1, "(newvar) Inconsistent bounds for variable 'b' (7,-5).");
  EXPECT_EQ(last().prob, p);
  cap.msgs.clear();
  EXPECT_EQ(mdlnewvar_prob(p, "t", 9, 3, 2), nullptr);
  expect_only(1530, 1, "(newvar) Inconsistent bounds for variable 't' (3,2).");
  cap.msgs.clear();
  EXPECT_EQ(mdlnewvar_prob(p, "z", 6, 0, 1), nullptr);
  expect_only(1531, 1, "(newvar) Incorrect type for variable 'z'.");
  cap.msgs.clear();
  EXPECT_EQ(mdlnewvar_prob(p, "m", -1, 0, 1), nullptr);
  expect_only(1531, 1, "(newvar) Incorrect type for variable 'm'.");
  cap.msgs.clear();
  EXPECT_EQ(mdlnewvar_prob(p, nullptr, 0, 1, 0), nullptr);
  expect_only(1530, 1, "(newvar) Inconsistent bounds for variable '' (1,0).");
  // NaN bounds pass the check.
  cap.msgs.clear();
  EXPECT_NE(mdlnewvar_prob(p, "n", 0, NAN, NAN), nullptr);
  EXPECT_TRUE(cap.msgs.empty());
  // Nothing failed entered a name or took a serial number.
  EXPECT_EQ(mdlgetbyname_prob(p, "z", MDL_KIND_VAR), nullptr);
  EXPECT_EQ(p->varcount, 1);
}

TEST_F(Variables, NoVariableMessages) {
  double d;
  const struct {
    std::function<long()> call;
    long result;
    const char *text;
  } cases[] = {
      {[] { return static_cast<long>(mdlsetvartype(nullptr, 0)); }, 1, "(setvartype) No variable given."},
      {[] { return static_cast<long>(mdlgetvartype(nullptr)); }, -1, "(getvartype) No variable given."},
      {[] { return static_cast<long>(mdlsetlb(nullptr, 0)); }, 1, "(setlb) No variable given."},
      {[] { return static_cast<long>(mdlsetub(nullptr, 0)); }, 1, "(setub) No variable given."},
      {[] { return static_cast<long>(mdlfixvar(nullptr, 0)); }, 1, "(fixvar) No variable given."},
      {[&] { return static_cast<long>(mdlgetbounds(nullptr, &d, &d)); }, 1, "(getbounds) No variable given."},
      {[] { return static_cast<long>(mdlsetlim(nullptr, 0)); }, 1, "(setlim) No variable given."},
      {[&] { return static_cast<long>(mdlgetlim(nullptr, &d)); }, 1, "(getlim) No variable given."},
      {[] { return static_cast<long>(mdlgetcolnum(nullptr)); }, -1, "(getcolnum) No variable given."},
      {[] { return mdlgetvarname(nullptr) == nullptr ? 0L : 99L; }, 0, "(getvarname) No variable given."},
      {[] { return static_cast<long>(mdlsetvarlink(nullptr, nullptr)); }, 1, "(setvarlink) No variable given."},
      {[] { return mdlgetvarlink(nullptr) == nullptr ? 0L : 99L; }, 0, "(getvarlink) No variable given."},
  };
  for (const auto &c : cases) {
    cap.msgs.clear();
    EXPECT_EQ(c.call(), c.result) << c.text;
    expect_only(1505, 1, c.text);
  }
  // getvarstat only warns.
  cap.msgs.clear();
  EXPECT_EQ(mdlgetvarstat(nullptr), 0);
  expect_only(1513, 0, "(getvarstat) No variable given.");
}

TEST_F(Variables, SetlbChecksAndStores) {
  MDLvar x = mdlnewvar_prob(p, "x", 0, 0, 3);
  EXPECT_EQ(mdlsetlb(x, 5), 1);
  expect_only(1530, 1, "(setlb) Inconsistent bounds for variable 'x' (5,3).");
  expect_bounds(x, 0, 3);
  cap.msgs.clear();
  EXPECT_EQ(mdlsetlb(x, NAN), 1);
  expect_only(1530, 1, "(setlb) Inconsistent bounds for variable 'x' (nan,3).");
  cap.msgs.clear();
  EXPECT_EQ(mdlsetlb(x, 3), 0);  // equal to ub is fine
  expect_bounds(x, 3, 3);
  EXPECT_EQ(mdlsetlb(x, -1e20), 0);
  expect_bounds(x, -1e20, 3);
  EXPECT_TRUE(cap.msgs.empty());
  EXPECT_TRUE(fake::calls().empty());  // no column: nothing more
  EXPECT_EQ(p->status, 0u);
}

TEST_F(Variables, SetubChecksAndStores) {
  MDLvar x = mdlnewvar_prob(p, "x", 0, 2, 3);
  EXPECT_EQ(mdlsetub(x, 1), 1);
  expect_only(1530, 1, "(setub) Inconsistent bounds for variable 'x' (2,1).");
  expect_bounds(x, 2, 3);
  cap.msgs.clear();
  EXPECT_EQ(mdlsetub(x, NAN), 1);
  expect_only(1530, 1, "(setub) Inconsistent bounds for variable 'x' (2,nan).");
  cap.msgs.clear();
  EXPECT_EQ(mdlsetub(x, 2), 0);
  expect_bounds(x, 2, 2);
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Variables, BoundChangesOfLoadedColumnGoToEngine) {
  MDLvar x = loaded_var("x", 0, 0, 10, 4);
  ASSERT_EQ(mdlsetlb(x, 1), 0);
  ASSERT_EQ(mdlsetub(x, 9), 0);
  ASSERT_EQ(mdlfixvar(x, 5), 0);
  auto calls = fake::calls_of("KVSLchgbounds");
  ASSERT_EQ(calls.size(), 3u);
  const char types[] = {'L', 'U', 'B'};
  const double vals[] = {1, 9, 5};
  for (size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(calls[k].prob, p->kvsl);
    EXPECT_EQ(calls[k].i("n"), 1);
    EXPECT_EQ(calls[k].iv("col"), std::vector<int64_t>{4});
    EXPECT_EQ(calls[k].cv("bndtype"), std::string(1, types[k]));
    EXPECT_EQ(calls[k].dv("val"), std::vector<double>{vals[k]});
  }
  EXPECT_EQ(fake::calls().size(), 3u);
  EXPECT_EQ(p->status, static_cast<uint32_t>(MDL_ST_LOADED));
  expect_bounds(x, 5, 5);
}

TEST_F(Variables, UnchangedBoundTouchesNothing) {
  MDLvar x = loaded_var("x", 0, 1, 10, 0);
  p->status |= MDL_ST_REGEN;
  ASSERT_EQ(mdlsetlb(x, 1), 0);
  ASSERT_EQ(mdlsetub(x, 10), 0);
  ASSERT_EQ(mdlfixvar(mdlnewvar_prob(p, "f", 0, 2, 2), 2), 0);
  EXPECT_TRUE(fake::calls().empty());
  EXPECT_EQ(p->status, static_cast<uint32_t>(MDL_ST_LOADED | MDL_ST_REGEN));
}

TEST_F(Variables, BoundChangesFollowTheStatusTable) {
  const struct {
    uint32_t status;
    bool column;
    bool engine;
    uint32_t after;
  } cases[] = {
      {MDL_ST_LOADED, true, true, MDL_ST_LOADED},
      {MDL_ST_LOADED | MDL_ST_REGEN, true, false, MDL_ST_LOADED | MDL_ST_REGEN | MDL_ST_MODIFIED},
      {MDL_ST_LOADED | MDL_ST_MODIFIED, true, false, MDL_ST_LOADED | MDL_ST_MODIFIED},
      {MDL_ST_MODIFIED, true, false, MDL_ST_MODIFIED},
      {0, true, false, 0},
      {MDL_ST_REGEN, true, false, MDL_ST_REGEN},
      {MDL_ST_LOADED, false, false, MDL_ST_LOADED},
      {MDL_ST_LOADED | MDL_ST_REGEN, false, false, MDL_ST_LOADED | MDL_ST_REGEN},
      {MDL_ST_LOADED | MDL_ST_SOLUTION | MDL_ST_DIRPENDING, true, true,
       MDL_ST_LOADED | MDL_ST_SOLUTION | MDL_ST_DIRPENDING},
  };
  for (const auto &c : cases) {
    for (int which = 0; which < 3; ++which) {
      MDLvar x = mdlnewvar_prob(p, "x", 0, 0, 10);
      if (c.column) x->column = 2;
      p->status = c.status;
      fake::clear_calls();
      int rc = which == 0 ? mdlsetlb(x, 1) : which == 1 ? mdlsetub(x, 9) : mdlfixvar(x, 4);
      EXPECT_EQ(rc, 0);
      EXPECT_EQ(fake::calls_of("KVSLchgbounds").size(), c.engine ? 1u : 0u) << c.status << " " << which;
      EXPECT_EQ(p->status, c.after) << c.status << " " << which;
    }
  }
}

TEST_F(Variables, EngineResultOfBoundChangeIsNotExamined) {
  MDLvar x = loaded_var("x", 0, 0, 10, 1);
  fake::fail_call("KVSLchgbounds", 1, 4);
  EXPECT_EQ(mdlsetlb(x, 2), 0);
  EXPECT_TRUE(cap.msgs.empty());
  expect_bounds(x, 2, 10);
}

TEST_F(Variables, FixvarWithoutCheck) {
  MDLvar x = mdlnewvar_prob(p, "x", 0, 0, 3);
  EXPECT_EQ(mdlfixvar(x, 8), 0);
  expect_bounds(x, 8, 8);
  EXPECT_EQ(mdlfixvar(x, -1), 0);
  expect_bounds(x, -1, -1);
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Variables, SetlimWrongTypeWarnsAndSucceeds) {
  for (int type : {MDL_CONTINUOUS, MDL_BINARY, MDL_INTEGER}) {
    cap.msgs.clear();
    MDLvar x = mdlnewvar_prob(p, "x", type, 0, 1);
    EXPECT_EQ(mdlsetlim(x, 0.5), 0);
    expect_only(1592, 0, "(setlim) Setting limit for variable '" + std::string(mdlgetvarname(x)) +
                             "' of wrong type.");
    double lim = 0;
    mdlgetlim(x, &lim);
    EXPECT_EQ(lim, 1.0);
  }
  EXPECT_EQ(p->status, 0u);
}

TEST_F(Variables, SetlimOutsideBoundsWarnsAndStores) {
  MDLvar s = mdlnewvar_prob(p, "s", MDL_SEMICONT, 0, 10);
  EXPECT_EQ(mdlsetlim(s, -2), 0);
  expect_only(1593, 0, "(setlim) Setting limit -2 for variable 's' outside bounds (0,10).");
  double lim = 0;
  mdlgetlim(s, &lim);
  EXPECT_EQ(lim, -2);
  cap.msgs.clear();
  EXPECT_EQ(mdlsetlim(s, 12), 0);
  expect_only(1593, 0, "(setlim) Setting limit 12 for variable 's' outside bounds (0,10).");
  cap.msgs.clear();
  EXPECT_EQ(mdlsetlim(s, NAN), 0);
  expect_only(1593, 0, "(setlim) Setting limit nan for variable 's' outside bounds (0,10).");
  // Below a negative lower bound, zero is the floor of the limit anyway.
  MDLvar r = mdlnewvar_prob(p, "r", MDL_SEMIINT, -5, 10);
  cap.msgs.clear();
  EXPECT_EQ(mdlsetlim(r, -1), 0);
  expect_only(1593, 0, "(setlim) Setting limit -1 for variable 'r' outside bounds (-5,10).");
  cap.msgs.clear();
  EXPECT_EQ(mdlsetlim(r, 0), 0);
  EXPECT_EQ(mdlsetlim(r, 10), 0);
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Variables, SetlimEngineOrModified) {
  MDLvar pi = loaded_var("pi", MDL_PARTINT, 0, 100, 6);
  ASSERT_EQ(mdlsetlim(pi, 20), 0);
  auto calls = fake::calls_of("KVSLchgglblimit");
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].prob, p->kvsl);
  EXPECT_EQ(calls[0].i("n"), 1);
  EXPECT_EQ(calls[0].iv("col"), std::vector<int64_t>{6});
  EXPECT_EQ(calls[0].dv("limit"), std::vector<double>{20});
  EXPECT_EQ(p->status, static_cast<uint32_t>(MDL_ST_LOADED));
  // Same value: nothing at all.
  fake::clear_calls();
  ASSERT_EQ(mdlsetlim(pi, 20), 0);
  EXPECT_TRUE(fake::calls().empty());
  // Every other case marks the problem modified, even without a column.
  const struct {
    uint32_t status;
    bool column;
  } cases[] = {{MDL_ST_LOADED | MDL_ST_REGEN, true}, {MDL_ST_LOADED | MDL_ST_MODIFIED, true},
               {0, true}, {MDL_ST_LOADED, false}, {0, false}};
  double value = 30;
  for (const auto &c : cases) {
    MDLvar s = mdlnewvar_prob(p, "s", MDL_SEMICONT, 0, 100);
    if (c.column) s->column = 1;
    p->status = c.status;
    fake::clear_calls();
    ASSERT_EQ(mdlsetlim(s, value++), 0);
    EXPECT_TRUE(fake::calls().empty());
    EXPECT_EQ(p->status, c.status | MDL_ST_MODIFIED);
  }
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Variables, SetvartypeMarksModifiedOnlyWithColumn) {
  MDLvar x = mdlnewvar_prob(p, "x", 0, 0, 1);
  EXPECT_EQ(mdlsetvartype(x, 6), 1);
  expect_only(1531, 1, "(setvartype) Incorrect type for variable 'x'.");
  EXPECT_EQ(mdlgetvartype(x), 0);
  cap.msgs.clear();
  EXPECT_EQ(mdlsetvartype(x, -3), 1);
  expect_only(1531, 1, "(setvartype) Incorrect type for variable 'x'.");
  cap.msgs.clear();
  ASSERT_EQ(mdlsetvartype(x, MDL_INTEGER), 0);
  EXPECT_EQ(mdlgetvartype(x), MDL_INTEGER);
  EXPECT_EQ(p->status, 0u);
  x->column = 0;
  p->status = MDL_ST_LOADED;
  ASSERT_EQ(mdlsetvartype(x, MDL_INTEGER), 0);  // unchanged
  EXPECT_EQ(p->status, static_cast<uint32_t>(MDL_ST_LOADED));
  ASSERT_EQ(mdlsetvartype(x, MDL_SEMIINT), 0);
  EXPECT_EQ(p->status, static_cast<uint32_t>(MDL_ST_LOADED | MDL_ST_MODIFIED));
  EXPECT_TRUE(fake::calls().empty());
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Variables, VariableAfterLastGenerationHasNoColumn) {
  MDLvar old = loaded_var("old", 0, 0, 1, 0);
  MDLvar fresh = mdlnewvar_prob(p, "fresh", 0, 0, 1);
  EXPECT_EQ(mdlgetcolnum(old), 0);
  EXPECT_EQ(mdlgetcolnum(fresh), -1);
  EXPECT_EQ(p->status, static_cast<uint32_t>(MDL_ST_LOADED));  // not marked modified
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Variables, ColumnStatAndLink) {
  MDLvar x = mdlnewvar_prob(p, "x", 0, 0, 1);
  EXPECT_EQ(mdlgetvarstat(x), 0);
  p->status = MDL_ST_SOLUTION;
  EXPECT_EQ(mdlgetvarstat(x), 0);  // no column
  x->column = 12;
  EXPECT_EQ(mdlgetcolnum(x), 12);
  EXPECT_EQ(mdlgetvarstat(x), 1);
  p->status = MDL_ST_LOADED;
  EXPECT_EQ(mdlgetvarstat(x), 0);
  int app;
  EXPECT_EQ(mdlgetvarlink(x), nullptr);
  EXPECT_EQ(mdlsetvarlink(x, &app), 0);
  EXPECT_EQ(mdlgetvarlink(x), &app);
  EXPECT_EQ(p->status, static_cast<uint32_t>(MDL_ST_LOADED));
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Variables, UnnamedVariableUsesGeneratedNameInMessages) {
  ASSERT_EQ(mdlsetdictsize_prob(p, 0, 0), 0);
  MDLvar x = mdlnewvar_prob(p, nullptr, MDL_CONTINUOUS, 0, 1);
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(x->name, nullptr);
  char buf[32];
  std::string gen = mdlmktn(buf, x);
  EXPECT_EQ(gen[0], 'x');
  EXPECT_EQ(std::string(mdlgetvarname(x)), gen);
  EXPECT_EQ(mdlsetlb(x, 2), 1);
  expect_only(1530, 1, "(setlb) Inconsistent bounds for variable '" + gen + "' (2,1).");
  cap.msgs.clear();
  mdlsetlim(x, 0.5);
  expect_only(1592, 0, "(setlim) Setting limit for variable '" + gen + "' of wrong type.");
  cap.msgs.clear();
  mdlsetvartype(x, 8);
  expect_only(1531, 1, "(setvartype) Incorrect type for variable '" + gen + "'.");
}

struct zf_case {
  int type;
  double lb, ub, limit;
  int result;
  double value;
};

TEST_F(Variables, ZeroFeasibilityByType) {
  const double nan = NAN;
  const zf_case cases[] = {
      // continuous
      {MDL_CONTINUOUS, 0, 5, 1, 1, 0},
      {MDL_CONTINUOUS, 2, 5, 1, 0, 2},
      {MDL_CONTINUOUS, -5, -2, 1, 0, -2},
      {MDL_CONTINUOUS, nan, nan, 1, 1, 0},
      // binary: ub not looked at when lb is not above 0
      {MDL_BINARY, 0, 1, 1, 1, 0},
      {MDL_BINARY, 0.3, 0.6, 1, 0, 0.3},
      {MDL_BINARY, 0.3, 1, 1, 0, 1},
      {MDL_BINARY, 1, 1, 1, 0, 1},
      // integer
      {MDL_INTEGER, -3.5, -1.2, 1, 0, -2},
      {MDL_INTEGER, 0.2, 0.7, 1, 0, 0.2},
      {MDL_INTEGER, 0.2, 3, 1, 0, 1},
      {MDL_INTEGER, -3, 4, 1, 1, 0},
      {MDL_INTEGER, -1.5, -1.2, 1, 0, -1.2},
      {MDL_INTEGER, nan, -1.2, 1, 0, -2},
      {MDL_INTEGER, -2, nan, 1, 1, 0},
      // partial integer
      {MDL_PARTINT, 2.5, 10, 5, 0, 3},
      {MDL_PARTINT, 2.5, 10, 2.7, 0, 2.7},
      {MDL_PARTINT, 2.5, 10, 2, 0, 2.5},
      {MDL_PARTINT, 2.5, 2.8, 5, 0, 2.5},
      {MDL_PARTINT, -3.5, -1.2, 5, 0, -2},
      {MDL_PARTINT, -1, 1, 5, 1, 0},
      // semi-continuous
      {MDL_SEMICONT, 2, 10, 5, 0, 5},
      {MDL_SEMICONT, 6, 10, 5, 0, 6},
      {MDL_SEMICONT, 0, 10, 5, 1, 0},
      {MDL_SEMICONT, -4, -1, 5, 0, -1},
      // semi-continuous integer
      {MDL_SEMIINT, 2, 10, 4.5, 0, 5},
      {MDL_SEMIINT, 5.5, 10, 2, 0, 6},
      {MDL_SEMIINT, 2, 4.7, 4.5, 0, 2},
      {MDL_SEMIINT, 0, 10, 5, 1, 0},
      {MDL_SEMIINT, -4, -1, 5, 0, -1},
  };
  for (const zf_case &c : cases) {
    MDLvar v = mdlnewvar_prob(p, "z", c.type, 0, 0);
    v->lb = c.lb;  // bounds as they may stand after any setter
    v->ub = c.ub;
    v->limit = c.limit;
    double out = -999;
    EXPECT_EQ(mdlisvarzerofeas(v, &out), c.result)
        << c.type << " (" << c.lb << "," << c.ub << ") lim " << c.limit;
    EXPECT_EQ(out, c.result ? -999 : c.value)
        << c.type << " (" << c.lb << "," << c.ub << ") lim " << c.limit;
  }
  MDLvar odd = mdlnewvar_prob(p, "odd", 0, 1, 2);
  odd->type = 7;
  double out = -999;
  EXPECT_EQ(mdlisvarzerofeas(odd, &out), 1);
  EXPECT_EQ(out, -999);
}

// Every allocation of variable creation fails in turn.
TEST_F(Variables, CreationAllocationFailureSweep) {
  for (int names_off = 0; names_off < 2; ++names_off) {
    bool done = false;
    for (long n = 1; n < 100 && !done; ++n) {
      MDLprob q = mdlnewprob("sweep");
      if (names_off) mdlsetdictsize_prob(q, 0, 0);
      std::string long_name(3000, 'v');
      cap.msgs.clear();
      support::arm(n);
      MDLvar a = mdlnewvar_prob(q, long_name.c_str(), MDL_BINARY, -1, 2);
      MDLvar b = a ? mdlnewvar_prob(q, long_name.c_str(), MDL_INTEGER, 0, 5) : nullptr;
      support::disarm();
      if (a && b) {
        done = true;
        EXPECT_TRUE(cap.msgs.empty());
        expect_bounds(a, 0, 1);
        EXPECT_EQ(b->serial, 1u);
      } else {
        ASSERT_EQ(cap.msgs.size(), 1u) << "allocation " << n;
        EXPECT_EQ(cap.msgs[0].num, 1502);
        EXPECT_EQ(q->varcount, a ? 1 : 0);
        size_t listed = 0;
        for (mdl_entity_entry *e = q->entities; e != nullptr; e = e->next) ++listed;
        EXPECT_EQ(listed, names_off ? static_cast<size_t>(q->varcount) : 0u);
        MDLvar c = mdlnewvar_prob(q, "after", 0, 0, 1);
        ASSERT_NE(c, nullptr);
        EXPECT_EQ(c->serial, static_cast<uint32_t>(a ? 1 : 0));
      }
      mdldelprob_prob(q);
    }
    EXPECT_TRUE(done);
  }
}

}  // namespace
