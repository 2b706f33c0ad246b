/*
 * problem_test.cpp -- problem creation, naming and file bases, reset,
 * sense, dictionary sizes, deletion and the callback bracket, checked
 * against the calls the recording engine sees.
 */
#include <stdio.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "problem/names.h"
#include "problem/problem.h"
#include "problem/support.h"

namespace {

using support::LibraryTest;

std::string generated_base(const char *dir, MDLprob p) {
  char buf[256];
  snprintf(buf, sizeof buf, "%s/kvtl_%lx_%lx", dir, static_cast<unsigned long>(getpid()),
           static_cast<unsigned long>(reinterpret_cast<uintptr_t>(p)));
  return buf;
}

bool exists(const std::string &path) { return access(path.c_str(), F_OK) == 0; }

void touch_side_files(const std::string &base) {
  for (const char *ext : {".glb", ".rng", ".sol"}) {
    FILE *f = fopen((base + ext).c_str(), "w");
    ASSERT_NE(f, nullptr);
    fclose(f);
  }
}

// Integer controls set since the last clear, as (control, value) pairs.
std::vector<std::pair<int64_t, int64_t>> controls_set() {
  std::vector<std::pair<int64_t, int64_t>> out;
  for (const fake::call &c : fake::calls_of("KVSLsetintcontrol"))
    out.emplace_back(c.i("control"), c.i("value"));
  return out;
}

using control_list = std::vector<std::pair<int64_t, int64_t>>;

class Problem : public LibraryTest {};

TEST_F(Problem, NullNameGivesTmpBaseWithPidAndAddress) {
  MDLprob p = mdlnewprob(nullptr);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(std::string(mdlgetprobname_prob(p)), generated_base("/tmp", p));
  mdlnewprob("");  // an empty name is generated too
  MDLprob q = mdlgetprob();
  EXPECT_EQ(std::string(mdlgetprobname_prob(q)), generated_base("/tmp", q));
  EXPECT_EQ(mdldelprob_prob(q), 0);
  EXPECT_EQ(mdldelprob_prob(p), 0);
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Problem, GeneratedBaseUsesTmpdirAndItsPoolSize) {
  MDLprob p = mdlnewprob(nullptr);
  ASSERT_NE(p, nullptr);
  // 52 bytes with "/tmp"; else the directory length plus 51, rounded down
  // to a multiple of 4 (sizes chosen so that no alignment step intervenes).
  const struct {
    const char *dir;
    ptrdiff_t size;
  } cases[] = {{nullptr, 52}, {"/var/tmp/a", 60}, {"/ab", 52}, {"/abcdefghijklmnop", 68}};
  for (const auto &c : cases) {
    if (c.dir != nullptr)
      setenv("TMPDIR", c.dir, 1);
    else
      unsetenv("TMPDIR");
    char *before = p->pool->current->cursor;
    ASSERT_EQ(mdlsetprobname_prob(p, nullptr), 0);
    EXPECT_EQ(p->pool->current->cursor - before, c.size) << (c.dir ? c.dir : "/tmp");
    EXPECT_EQ(std::string(mdlgetprobname_prob(p)), generated_base(c.dir ? c.dir : "/tmp", p));
  }
  mdldelprob_prob(p);
}

TEST_F(Problem, NamedCreationRemovesSideFiles) {
  std::string base = generated_base("/tmp", nullptr) + "_named";
  touch_side_files(base);
  MDLprob p = mdlnewprob(base.c_str());
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(std::string(mdlgetprobname_prob(p)), base);
  EXPECT_NE(mdlgetprobname_prob(p), base.c_str());  // a pool copy
  for (const char *ext : {".glb", ".rng", ".sol"}) EXPECT_FALSE(exists(base + ext));
  // Renaming removes the new base's side files as well.
  std::string other = base + "_2";
  touch_side_files(other);
  ASSERT_EQ(mdlsetprobname_prob(p, other.c_str()), 0);
  for (const char *ext : {".glb", ".rng", ".sol"}) EXPECT_FALSE(exists(other + ext));
  // Deletion removes the side files of the current base.
  touch_side_files(other);
  mdldelprob_prob(p);
  for (const char *ext : {".glb", ".rng", ".sol"}) EXPECT_FALSE(exists(other + ext));
}

TEST_F(Problem, CreationCallsAtDefaultLevel) {
  MDLprob p = mdlnewprob("a");
  ASSERT_NE(p, nullptr);
  auto names = fake::call_names();
  // The library starts the engine on the first problem.
  ASSERT_GE(names.size(), 4u);
  EXPECT_EQ(names[0], "KVSLinit");
  EXPECT_EQ(names[1], "KVSLcreateprob");
  EXPECT_EQ(names[2], "KVSLsetcbmessage");
  EXPECT_EQ(names.size(), 4u);
  EXPECT_EQ(controls_set(), (control_list{{KVSL_CTRL_MIPLOG, 2}}));
  EXPECT_EQ(p->msglevel, 3);
  EXPECT_EQ(p->kvsl, fake::calls_of("KVSLsetcbmessage")[0].prob);
  mdldelprob_prob(p);
}

TEST_F(Problem, CreationControlsPerMessageLevel) {
  ASSERT_EQ(mdlslinit(), 0);
  const struct {
    int level;
    control_list expected;
  } cases[] = {
      {-1, {{KVSL_CTRL_BARRIERLOG, 0}, {KVSL_CTRL_OUTPUTLOG, 0}, {KVSL_CTRL_MIPLOG, 0}}},
      {0, {{KVSL_CTRL_BARRIERLOG, 0}, {KVSL_CTRL_OUTPUTLOG, 0}, {KVSL_CTRL_MIPLOG, 0}}},
      {1, {{KVSL_CTRL_MIPLOG, 0}}},
      {2, {{KVSL_CTRL_MIPLOG, 1}}},
      {5, {{KVSL_CTRL_MIPLOG, 4}}},
  };
  for (const auto &c : cases) {
    mdlsetmsglevel_prob(nullptr, c.level);
    fake::clear_calls();
    MDLprob p = mdlnewprob("lvl");
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(controls_set(), c.expected) << "level " << c.level;
    EXPECT_EQ(p->msglevel, c.level);
    mdldelprob_prob(p);
  }
}

void other_err(MDLprob, void *, int, int, const char *) {}
void other_msg(MDLprob, void *, const char *) {}
void other_delvar(MDLprob, void *, MDLvar, void *) {}

TEST_F(Problem, CreationCopiesDefaultsAndBecomesCurrent) {
  int u1, u2, u3;
  mdlsetrealfmt_prob(nullptr, "%.3f");
  mdlsetcolorder_prob(nullptr, 2);
  mdldefcbmsg_prob(nullptr, other_msg, &u2);
  mdldefcbdelvar_prob(nullptr, other_delvar, &u3);
  MDLprob p = mdlnewprob("d");
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(mdlgetprob(), p);
  EXPECT_STREQ(p->realfmt, "%.3f");
  EXPECT_EQ(p->colorder, 2);
  EXPECT_EQ(p->cberr, support::capture::cb);
  EXPECT_EQ(p->cberr_user, &cap);
  EXPECT_EQ(p->cbmsg, other_msg);
  EXPECT_EQ(p->cbmsg_user, &u2);
  EXPECT_EQ(p->cbdelvar, other_delvar);
  EXPECT_EQ(p->cbdelvar_user, &u3);
  EXPECT_EQ(p->refcount, 1);
  EXPECT_EQ(p->sense, 1);
  EXPECT_EQ(mdlgetsense_prob(p), 0);
  EXPECT_EQ(p->dictsize, 1024);
  EXPECT_EQ(p->idxdictsize, 1024);
  EXPECT_EQ(p->dict, nullptr);
  EXPECT_EQ(p->objective, nullptr);
  EXPECT_STREQ(p->objrec.name, "obj");
  EXPECT_EQ(p->objrec.row, 0x1FFFFFFFu);
  EXPECT_EQ(p->objrec.type, 0u);
  EXPECT_EQ(p->objrec.problem, p);
  EXPECT_EQ(p->status, 0u);
  EXPECT_EQ(p->savedkvsl, nullptr);
  // Later changes of the defaults do not reach the problem.
  mdldefcberr_prob(nullptr, other_err, &u1);
  EXPECT_EQ(p->cberr, support::capture::cb);
  mdldefcberr_prob(nullptr, support::capture::cb, &cap);
  mdldefcbmsg_prob(nullptr, nullptr, nullptr);
  mdldefcbdelvar_prob(nullptr, nullptr, nullptr);
  mdldelprob_prob(p);
}

TEST_F(Problem, NewprobStartsTheLibrary) {
  MDLprob p = mdlnewprob(nullptr);
  ASSERT_NE(p, nullptr);
  mdldelprob_prob(p);
  EXPECT_EQ(mdlslfinish(), 0);  // one finish shuts it down
  EXPECT_EQ(mdlslfinish(), 1);
}

TEST_F(Problem, EngineStartFailureGivesNull) {
  fake::fail_call("KVSLinit", 1, 3);
  EXPECT_EQ(mdlnewprob("x"), nullptr);
  support::LibraryTest::expect_only(1561, 1, "(mdlslinit) Initialization failed (value: 3).");
  EXPECT_TRUE(fake::calls_of("KVSLcreateprob").empty());
}

TEST_F(Problem, EngineCreateFailureGivesNullSilently) {
  ASSERT_EQ(mdlslinit(), 0);
  fake::fail_call("KVSLcreateprob", 1, 2);
  EXPECT_EQ(mdlnewprob("x"), nullptr);
  EXPECT_TRUE(cap.msgs.empty());
  EXPECT_EQ(mdlgetprob(), nullptr);
  EXPECT_EQ(fake::live_problems(), 0);
}

// Every allocation of creation fails in turn: 1502 reported, nothing left.
TEST_F(Problem, CreationAllocationFailureSweep) {
  ASSERT_EQ(mdlslinit(), 0);
  std::string long_name(5000, 'n');
  for (const char *name : {static_cast<const char *>(nullptr), long_name.c_str()}) {
    bool done = false;
    for (long n = 1; n < 50 && !done; ++n) {
      mdlgetprob();  // the thread context exists before the hook fails
      cap.msgs.clear();
      support::arm(n);
      MDLprob p = mdlnewprob(name);
      support::disarm();
      if (p != nullptr) {
        done = true;
        EXPECT_TRUE(cap.msgs.empty());
        mdldelprob_prob(p);
      } else {
        ASSERT_EQ(cap.msgs.size(), 1u) << "allocation " << n;
        EXPECT_EQ(last().num, 1502);
        EXPECT_EQ(last().iserror, 1);
        EXPECT_EQ(last().text, "Not enough memory.");
        EXPECT_EQ(fake::live_problems(), 0);
        EXPECT_EQ(mdlgetprob(), nullptr);
      }
    }
    EXPECT_TRUE(done);
  }
}

TEST_F(Problem, SetprobnamePassesNameToEngine) {
  MDLprob p = mdlnewprob("first");
  fake::clear_calls();
  ASSERT_EQ(mdlsetprobname_prob(p, "second"), 0);
  auto calls = fake::calls_of("KVSLsetprobname");
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].s("name"), "second");
  EXPECT_EQ(calls[0].prob, p->kvsl);
  EXPECT_STREQ(mdlgetprobname_prob(p), "second");
  mdldelprob_prob(p);
}

TEST_F(Problem, SetprobnameEngineFailureKeepsBase) {
  MDLprob p = mdlnewprob("first");
  fake::fail_call("KVSLsetprobname", 1, 7);
  EXPECT_EQ(mdlsetprobname_prob(p, "second"), 1);
  expect_only(1524, 1, "(setprobname) Korvex-Optimizer error 7 during 'setprobname'. Return value: 7.");
  EXPECT_EQ(last().prob, p);
  EXPECT_STREQ(mdlgetprobname_prob(p), "first");
  mdldelprob_prob(p);
}

TEST_F(Problem, NullProblemMessages) {
  const struct {
    std::function<long()> call;
    long result;
    const char *text;
  } cases[] = {
      {[] { return static_cast<long>(mdldelprob_prob(nullptr)); }, 1, "(delprob) No active problem."},
      {[] { return static_cast<long>(mdldelprob_jprob(nullptr, 1)); }, 1, "(delprob) No active problem."},
      {[] { return static_cast<long>(mdlresetprob_prob(nullptr)); }, 1, "(resetprob) No active problem."},
      {[] { return static_cast<long>(mdlsetsense_prob(nullptr, 1)); }, 1, "(setsense) No active problem."},
      {[] { return static_cast<long>(mdlgetsense_prob(nullptr)); }, -1, "(getsense) No active problem."},
      {[] { return static_cast<long>(mdlgetprobstat_prob(nullptr)); }, 0, "(getprobstat) No active problem."},
      {[] { return static_cast<long>(mdlbegincb_prob(nullptr, nullptr)); }, 1, "(begincb) No active problem."},
      {[] { return static_cast<long>(mdlendcb_prob(nullptr)); }, 1, "(endcb) No active problem."},
      {[] { return static_cast<long>(mdlsetdictsize_prob(nullptr, 0, 10)); }, 1, "(setdictsize) No active problem."},
      {[] { return static_cast<long>(mdlsetprobname_prob(nullptr, "x")); }, 1, "(setprobname) No active problem."},
      {[] { return mdlgetprobname_prob(nullptr) == nullptr ? 0L : 99L; }, 0, "(getprobname) No active problem."},
  };
  for (const auto &c : cases) {
    cap.msgs.clear();
    EXPECT_EQ(c.call(), c.result) << c.text;
    expect_only(1501, 1, c.text);
    EXPECT_EQ(last().prob, nullptr);
  }
}

// By default an error ends the process with its number.
TEST(ProblemDeath, NullProblemEndsProcessByDefault) {
  EXPECT_EXIT(
      {
        mdlseterrctrl(1);
        mdldelprob_prob(nullptr);
      },
      ::testing::ExitedWithCode(1501 % 256), "Tessel: Error 1501: \\(delprob\\) No active problem\\.");
}

TEST_F(Problem, ResetSequenceSavesAndRestoresOutputLog) {
  MDLprob p = mdlnewprob("r");
  KVSLprob kp = p->kvsl;
  mdlsetmsglevel_prob(p, 3);  // output log 1
  KVSLsetintcontrol(kp, KVSL_CTRL_PRESOLVE, 0);
  p->status = MDL_ST_LOADED | MDL_ST_SOLUTION | MDL_ST_DIRPENDING;
  p->solcache = MDL_SC_X | MDL_SC_DUAL;
  p->solx = static_cast<double *>(mdlsl_malloc(4 * sizeof(double)));
  p->solslack = static_cast<double *>(mdlsl_malloc(4 * sizeof(double)));
  p->savedkvsl = nullptr;
  fake::clear_calls();
  ASSERT_EQ(mdlresetprob_prob(p), 0);
  EXPECT_TRUE(cap.msgs.empty());
  auto names = fake::call_names();
  std::vector<std::string> expected = {
      "KVSLgetintcontrol", "KVSLsetintcontrol", "KVSLsetintcontrol", "KVSLsetintcontrol",
      "KVSLsetintcontrol", "KVSLloadlp64",      "KVSLsetintcontrol", "KVSLsetdefaultcontrol",
      "KVSLsetdefaultcontrol", "KVSLsetdefaultcontrol"};
  EXPECT_EQ(names, expected);
  const auto &calls = fake::calls();
  ASSERT_EQ(calls.size(), expected.size());
  for (const auto &c : calls) EXPECT_EQ(c.prob, kp);
  EXPECT_EQ(calls[0].i("control"), KVSL_CTRL_OUTPUTLOG);
  EXPECT_EQ(controls_set(), (control_list{{KVSL_CTRL_PRESOLVE, 0},
                                          {KVSL_CTRL_SCALING, 0},
                                          {KVSL_CTRL_CRASH, 0},
                                          {KVSL_CTRL_OUTPUTLOG, 0},
                                          {KVSL_CTRL_OUTPUTLOG, 1}}));
  EXPECT_EQ(calls[5].s("name"), "empty");
  EXPECT_EQ(calls[5].i("ncols"), 0);
  EXPECT_EQ(calls[5].i("nrows"), 0);
  EXPECT_EQ(calls[7].i("control"), KVSL_CTRL_PRESOLVE);
  EXPECT_EQ(calls[8].i("control"), KVSL_CTRL_SCALING);
  EXPECT_EQ(calls[9].i("control"), KVSL_CTRL_CRASH);
  EXPECT_EQ(fake::int_control(kp, KVSL_CTRL_OUTPUTLOG), 1);
  EXPECT_EQ(fake::int_control(kp, KVSL_CTRL_PRESOLVE), 1);  // back to its default
  EXPECT_EQ(fake::int_control(kp, KVSL_CTRL_SCALING), 1);
  EXPECT_EQ(fake::int_control(kp, KVSL_CTRL_CRASH), 1);
  EXPECT_EQ(p->status, static_cast<uint32_t>(MDL_ST_MODIFIED | MDL_ST_DIRPENDING));
  EXPECT_EQ(p->solcache, 0);
  EXPECT_EQ(p->solx, nullptr);
  EXPECT_EQ(p->solslack, nullptr);
  mdldelprob_prob(p);
}

TEST_F(Problem, ResetRestoresOutputLogOff) {
  mdlsetmsglevel_prob(nullptr, 0);
  MDLprob p = mdlnewprob("r");
  ASSERT_EQ(mdlresetprob_prob(p), 0);
  EXPECT_EQ(fake::int_control(p->kvsl, KVSL_CTRL_OUTPUTLOG), 0);
  mdldelprob_prob(p);
}

TEST_F(Problem, ResetEngineFailure) {
  MDLprob p = mdlnewprob("r");
  KVSLprob kp = p->kvsl;
  mdlsetmsglevel_prob(p, 3);
  p->status = MDL_ST_LOADED;
  p->solcache = MDL_SC_X;
  fake::clear_calls();
  fake::fail_call("KVSLloadlp64", 1, 9);
  EXPECT_EQ(mdlresetprob_prob(p), 1);
  expect_only(1524, 1, "(resetprob) Korvex-Optimizer error 9 during 'reset Optimizer'. Return value: 9.");
  std::vector<std::string> expected = {
      "KVSLgetintcontrol", "KVSLsetintcontrol", "KVSLsetintcontrol", "KVSLsetintcontrol",
      "KVSLsetintcontrol", "KVSLloadlp64",      "KVSLsetintcontrol", "KVSLgetintattrib"};
  EXPECT_EQ(fake::call_names(), expected);
  EXPECT_EQ(fake::calls()[7].i("attrib"), KVSL_ATTR_ERRORCODE);
  EXPECT_EQ(fake::int_control(kp, KVSL_CTRL_OUTPUTLOG), 1);
  EXPECT_EQ(p->status, static_cast<uint32_t>(MDL_ST_LOADED));
  EXPECT_EQ(p->solcache, MDL_SC_X);
  mdldelprob_prob(p);
}

TEST_F(Problem, SenseGoesToEngineOnlyWhileLoadedAndUnmodified) {
  MDLprob p = mdlnewprob("s");
  fake::clear_calls();
  ASSERT_EQ(mdlsetsense_prob(p, 1), 0);
  EXPECT_EQ(mdlgetsense_prob(p), 1);
  EXPECT_EQ(p->sense, 2);
  EXPECT_TRUE(fake::calls_of("KVSLchgobjsense").empty());
  p->status = MDL_ST_LOADED;
  ASSERT_EQ(mdlsetsense_prob(p, 7), 0);
  ASSERT_EQ(mdlsetsense_prob(p, 0), 0);
  EXPECT_EQ(mdlgetsense_prob(p), 0);
  auto calls = fake::calls_of("KVSLchgobjsense");
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].i("sense"), -1);
  EXPECT_EQ(calls[1].i("sense"), 1);
  EXPECT_EQ(calls[0].prob, p->kvsl);
  ASSERT_EQ(mdlresetprob_prob(p), 0);
  fake::clear_calls();
  ASSERT_EQ(mdlsetsense_prob(p, 1), 0);
  EXPECT_TRUE(fake::calls_of("KVSLchgobjsense").empty());
  EXPECT_EQ(mdlgetsense_prob(p), 1);
  p->status = MDL_ST_LOADED | MDL_ST_MODIFIED;
  ASSERT_EQ(mdlsetsense_prob(p, 0), 0);
  EXPECT_TRUE(fake::calls_of("KVSLchgobjsense").empty());
  EXPECT_TRUE(cap.msgs.empty());
  mdldelprob_prob(p);
}

TEST_F(Problem, ProbstatIsMasked) {
  MDLprob p = mdlnewprob("s");
  p->status = 0xFF;
  EXPECT_EQ(mdlgetprobstat_prob(p), 0x4F);
  p->status = MDL_ST_REGEN | MDL_ST_PRESOLVED;
  EXPECT_EQ(mdlgetprobstat_prob(p), 0);
  mdldelprob_prob(p);
}

TEST_F(Problem, DictsizeZeroSwitchesNamesOffForGood) {
  MDLprob p = mdlnewprob("d");
  ASSERT_EQ(mdlsetdictsize_prob(p, 0, 0), 0);
  EXPECT_EQ(p->dictsize, 0);
  for (int size : {0, 1, 4096}) {
    cap.msgs.clear();
    EXPECT_EQ(mdlsetdictsize_prob(p, 0, size), 1);
    expect_only(1504, 1, "Dictionary cannot be re-initialized.");
    EXPECT_EQ(last().prob, p);
  }
  EXPECT_EQ(p->dictsize, 0);
  mdldelprob_prob(p);
}

TEST_F(Problem, DictsizeRounding) {
  MDLprob p = mdlnewprob("d");
  const struct {
    int size, names, idx;
  } cases[] = {{-5, 0, 128}, {1, 128, 128},   {5, 128, 128},     {128, 128, 128},
               {129, 256, 256}, {1000, 1024, 1024}, {1025, 2048, 2048}};
  for (const auto &c : cases) {
    ASSERT_EQ(mdlsetdictsize_prob(p, 1, c.size), 0);
    EXPECT_EQ(p->idxdictsize, c.idx) << c.size;
    if (c.names == 0) continue;  // would switch names off
    ASSERT_EQ(mdlsetdictsize_prob(p, 0, c.size), 0);
    EXPECT_EQ(p->dictsize, c.names) << c.size;
  }
  // Once the dictionary exists the size is fixed.
  ASSERT_NE(mdlnewvar_prob(p, "x", 0, 0, 1), nullptr);
  EXPECT_EQ(mdlsetdictsize_prob(p, 0, 512), 1);
  expect_only(1504, 1, "Dictionary cannot be re-initialized.");
  EXPECT_EQ(p->dictsize, 2048);
  cap.msgs.clear();
  p->idxdict = mdlsl_malloc(16);  // an index-set dictionary exists
  EXPECT_EQ(mdlsetdictsize_prob(p, 7, 512), 1);
  expect_only(1504, 1, "Dictionary cannot be re-initialized.");
  EXPECT_EQ(p->idxdictsize, 2048);
  mdldelprob_prob(p);  // frees the index-set dictionary too
}

TEST_F(Problem, DeletingCurrentProblemClearsIt) {
  MDLprob p = mdlnewprob("c");
  MDLprob q = mdlnewprob("d");
  EXPECT_EQ(mdlgetprob(), q);
  mdldelprob_prob(p);
  EXPECT_EQ(mdlgetprob(), q);
  KVSLprob kq = q->kvsl;
  fake::clear_calls();
  EXPECT_EQ(mdldelprob_prob(q), 0);
  EXPECT_EQ(mdlgetprob(), nullptr);
  auto calls = fake::calls_of("KVSLdestroyprob");
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].prob, kq);
}

TEST_F(Problem, DeletingInAnotherThreadKeepsCreatorsCurrent) {
  MDLprob p = mdlnewprob("c");
  std::thread t([p] {
    EXPECT_EQ(mdlgetprob(), nullptr);
    EXPECT_EQ(mdldelprob_prob(p), 0);
  });
  t.join();
  EXPECT_EQ(mdlgetprob(), p);  // a stale slot: the creator's own business
  mdlchgprob(nullptr);
}

struct deleted_var {
  MDLprob prob;
  void *user;
  MDLvar var;
  void *link;
};
std::vector<deleted_var> deleted;
void record_delvar(MDLprob prob, void *user, MDLvar var, void *link) {
  deleted.push_back({prob, user, var, link});
}

TEST_F(Problem, DeleteCallsBackForLinkedVariables) {
  for (int names_off = 0; names_off < 2; ++names_off) {
    deleted.clear();
    MDLprob p = mdlnewprob("v");
    if (names_off) mdlsetdictsize_prob(p, 0, 0);
    int user = 0, l1 = 0, l3 = 0;
    mdldefcbdelvar_prob(p, record_delvar, &user);
    MDLvar v1 = mdlnewvar_prob(p, "a", 0, 0, 1);
    MDLvar v2 = mdlnewvar_prob(p, "b", 0, 0, 1);
    MDLvar v3 = mdlnewvar_prob(p, nullptr, 0, 0, 1);
    mdlsetvarlink(v1, &l1);
    mdlsetvarlink(v3, &l3);
    ASSERT_NE(v2, nullptr);
    EXPECT_EQ(mdldelprob_prob(p), 0);
    ASSERT_EQ(deleted.size(), 2u);
    for (const deleted_var &d : deleted) {
      EXPECT_EQ(d.prob, p);
      EXPECT_EQ(d.user, &user);
      EXPECT_TRUE((d.var == v1 && d.link == &l1) || (d.var == v3 && d.link == &l3));
    }
    EXPECT_NE(deleted[0].var, deleted[1].var);
  }
  // Without a callback nothing is called.
  deleted.clear();
  MDLprob p = mdlnewprob("v");
  int l = 0;
  mdlsetvarlink(mdlnewvar_prob(p, "a", 0, 0, 1), &l);
  mdldelprob_prob(p);
  EXPECT_TRUE(deleted.empty());
}

TEST_F(Problem, DeleteFreesArrayBlocksAndBuffers) {
  MDLprob p = mdlnewprob("a");
  // An array block from the allocator hook, entered as kind 2: deletion
  // frees it (the leak checker watches).
  void **block = static_cast<void **>(mdlsl_malloc(5 * sizeof(void *)));
  block[0] = p;
  ASSERT_NE(mdlnormname(p, "arr", "AV", MDL_KIND_ARRVAR, block), nullptr);
  EXPECT_EQ(mdlgetbyname_prob(p, "arr", MDL_KIND_ARRVAR), block + 3);
  p->solx = static_cast<double *>(mdlsl_malloc(8));
  p->rangeinfo = static_cast<double *>(mdlsl_malloc(8));
  p->colvars = static_cast<mdl_var **>(mdlsl_malloc(8));
  mdldelprob_prob(p);
}

TEST_F(Problem, TermListReferencesKeepThePoolUntilReleased) {
  MDLprob p = mdlnewprob("t");
  MDLvar x = mdlnewvar_prob(p, "x", 0, 0, 1);
  // A term list as the term-list module builds it: header and node from the
  // pool, one reference on the problem.
  auto *node = static_cast<mdl_term *>(mdlallocmem(p, sizeof(mdl_term), 1));
  auto *head = static_cast<mdl_termlst *>(mdlallocmem(p, sizeof(mdl_termlst), 1));
  node->coef = 2;
  node->var = x;
  head->first = head->last = node;
  mdlinrcprob(p);
  p->objrec.expr.lin = head;
  // A reference held elsewhere keeps the record after deletion.
  mdlinrcprob(p);
  EXPECT_EQ(p->refcount, 3);
  EXPECT_EQ(mdldelprob_prob(p), 0);
  EXPECT_EQ(p->refcount, 1);
  EXPECT_EQ(p->objrec.expr.lin, nullptr);
  EXPECT_EQ(mdlgetvarname(x), std::string("x"));  // the pool is still there
  mdldeallocprob(p);                              // the last reference frees it
}

TEST_F(Problem, WrapperDeleteKeepsEngineProblem) {
  MDLprob p = mdlnewprob("j");
  KVSLprob kp = p->kvsl;
  fake::clear_calls();
  EXPECT_EQ(mdldelprob_jprob(p, 0), 0);
  EXPECT_TRUE(fake::calls_of("KVSLdestroyprob").empty());
  auto handler = fake::calls_of("KVSLsetcbmessage");
  ASSERT_EQ(handler.size(), 1u);
  EXPECT_EQ(handler[0].prob, kp);
  EXPECT_EQ(fake::live_problems(), 1);
  // The engine problem no longer reports to the deleted problem.
  fake::emit_message(kp, "late line", 4);
  EXPECT_TRUE(cap.msgs.empty());
  KVSLdestroyprob(kp);

  MDLprob q = mdlnewprob("j");
  KVSLprob kq = q->kvsl;
  fake::clear_calls();
  EXPECT_EQ(mdldelprob_jprob(q, 1), 0);
  auto destroyed = fake::calls_of("KVSLdestroyprob");
  ASSERT_EQ(destroyed.size(), 1u);
  EXPECT_EQ(destroyed[0].prob, kq);
}

TEST_F(Problem, CallbackBracketSwapsHandle) {
  MDLprob p = mdlnewprob("b");
  KVSLprob own = p->kvsl;
  KVSLprob node = nullptr;
  ASSERT_EQ(KVSLcreateprob(&node), 0);
  p->status = MDL_ST_LOADED | MDL_ST_SOLUTION;
  p->solcache = MDL_SC_X | MDL_SC_DJ;
  p->objval = 42;
  ASSERT_EQ(mdlbegincb_prob(p, node), 0);
  EXPECT_EQ(p->kvsl, node);
  EXPECT_EQ(p->savedkvsl, own);
  EXPECT_EQ(p->status, static_cast<uint32_t>(MDL_ST_LOADED));
  EXPECT_EQ(p->solcache, 0);
  EXPECT_EQ(p->objval, 0);
  p->status |= MDL_ST_SOLUTION;
  p->solcache = MDL_SC_X;
  p->objval = 1;
  ASSERT_EQ(mdlendcb_prob(p), 0);
  EXPECT_EQ(p->kvsl, own);
  EXPECT_EQ(p->savedkvsl, nullptr);
  EXPECT_EQ(p->status, static_cast<uint32_t>(MDL_ST_LOADED));
  EXPECT_EQ(p->solcache, 0);
  EXPECT_EQ(p->objval, 0);
  EXPECT_TRUE(cap.msgs.empty());
  // The mutex was released: the bracket can be entered again.
  ASSERT_EQ(mdlbegincb_prob(p, node), 0);
  ASSERT_EQ(mdlendcb_prob(p), 0);
  KVSLdestroyprob(node);
  mdldelprob_prob(p);
}

TEST_F(Problem, EndcbWithoutBegincbWarns) {
  MDLprob p = mdlnewprob("b");
  KVSLprob own = p->kvsl;
  EXPECT_EQ(mdlendcb_prob(p), 0);
  expect_only(1573, 0, "(endcb) 'endcb' without matching 'begincb'.");
  EXPECT_EQ(p->kvsl, own);
  mdldelprob_prob(p);
}

TEST_F(Problem, BegincbWithoutHandleFails) {
  MDLprob p = mdlnewprob("b");
  KVSLprob own = p->kvsl;
  EXPECT_EQ(mdlbegincb_prob(p, nullptr), 1);
  expect_only(1572, 1, "(begincb) No Korvex-Optimizer problem given.");
  EXPECT_EQ(p->kvsl, own);
  EXPECT_EQ(p->savedkvsl, nullptr);
  // The failed call left the mutex free.
  cap.msgs.clear();
  KVSLprob node = nullptr;
  KVSLcreateprob(&node);
  EXPECT_EQ(mdlbegincb_prob(p, node), 0);
  EXPECT_EQ(mdlendcb_prob(p), 0);
  EXPECT_TRUE(cap.msgs.empty());
  KVSLdestroyprob(node);
  mdldelprob_prob(p);
}

TEST_F(Problem, NestedBegincbWarnsAndKeepsOwnHandle) {
  MDLprob p = mdlnewprob("b");
  KVSLprob own = p->kvsl;
  KVSLprob n1 = nullptr, n2 = nullptr;
  KVSLcreateprob(&n1);
  KVSLcreateprob(&n2);
  ASSERT_EQ(mdlbegincb_prob(p, n1), 0);
  EXPECT_EQ(mdlbegincb_prob(p, n2), 0);
  expect_only(1573, 0, "(begincb) 'begincb' without matching 'endcb'.");
  EXPECT_EQ(p->kvsl, n2);
  EXPECT_EQ(p->savedkvsl, own);
  EXPECT_EQ(mdlendcb_prob(p), 0);
  EXPECT_EQ(p->kvsl, own);
  KVSLdestroyprob(n1);
  KVSLdestroyprob(n2);
  mdldelprob_prob(p);
}

TEST_F(Problem, BracketInAnotherThreadWaitsForEndcb) {
  MDLprob p = mdlnewprob("b");
  KVSLprob n1 = nullptr, n2 = nullptr;
  KVSLcreateprob(&n1);
  KVSLcreateprob(&n2);
  ASSERT_EQ(mdlbegincb_prob(p, n1), 0);
  std::atomic<bool> first_ended{false};
  bool saw_end = false;
  std::thread t([&] {
    EXPECT_EQ(mdlbegincb_prob(p, n2), 0);  // blocks until the first bracket ends
    saw_end = first_ended.load();
    EXPECT_EQ(mdlendcb_prob(p), 0);
  });
  first_ended = true;
  EXPECT_EQ(mdlendcb_prob(p), 0);
  t.join();
  EXPECT_TRUE(saw_end);
  EXPECT_TRUE(cap.msgs.empty());
  KVSLdestroyprob(n1);
  KVSLdestroyprob(n2);
  mdldelprob_prob(p);
}

TEST_F(Problem, DeleteInsideBracketDestroysOwnEngineProblem) {
  MDLprob p = mdlnewprob("b");
  KVSLprob own = p->kvsl;
  KVSLprob node = nullptr;
  KVSLcreateprob(&node);
  ASSERT_EQ(mdlbegincb_prob(p, node), 0);
  fake::clear_calls();
  EXPECT_EQ(mdldelprob_prob(p), 0);
  auto destroyed = fake::calls_of("KVSLdestroyprob");
  ASSERT_EQ(destroyed.size(), 1u);
  EXPECT_EQ(destroyed[0].prob, own);
  EXPECT_EQ(fake::live_problems(), 1);
  KVSLdestroyprob(node);
}

TEST_F(Problem, EngineLogReachesProblem) {
  MDLprob p = mdlnewprob("m");
  fake::emit_message(p->kvsl, "engine trouble", 4);
  expect_only(1570, 0, "KVSL: engine trouble");
  EXPECT_EQ(last().prob, p);
  mdldelprob_prob(p);
}

}  // namespace
