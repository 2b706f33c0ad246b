/*
 * messages_test.cpp -- every backend line reaches the message callback,
 * the output controls decide which, and nothing reaches stdout or stderr.
 */
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

#include "engine_test.h"
#include "mps_reader.h"

namespace {

struct line {
  std::string text;
  int type;
};

void collect(KVSLprob, void *user, const char *text, int len, int type) {
  static_cast<std::vector<line> *>(user)->push_back({std::string(text, len), type});
}

// Knapsack-like MIP that needs a short search, so that the search logs.
void load_mip(KVSLprob p) {
  dense_model m{"LLL", {50, 60, 55}, {}, {}, {}, {}, {{}, {}, {}}};
  for (int j = 0; j < 12; ++j) {
    m.obj.push_back(10 + (j * 7) % 11);
    m.a[0].push_back(3 + (j * 5) % 9);
    m.a[1].push_back(2 + (j * 3) % 10);
    m.a[2].push_back(4 + (j * 2) % 7);
  }
  ASSERT_EQ(load_global(p, m, "IIIIIIIIIIII", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}), 0);
}

dense_model small_lp() {
  return {"LL", {4, 7}, {}, {3, 2}, {0, 0}, {3, KVSL_INFINITY}, {{1, 1}, {1, 3}}};
}

class MessageTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    ASSERT_EQ(KVSLsetcbmessage(p, collect, &lines), 0);
  }
  bool any_contains(const char *s) const {
    for (const auto &l : lines)
      if (l.text.find(s) != std::string::npos) return true;
    return false;
  }
  std::vector<line> lines;
};

TEST_F(MessageTest, LpSolveLogsThroughTheCallback) {
  ASSERT_EQ(load_lp(p, small_lp()), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  ASSERT_FALSE(lines.empty());
  for (const auto &l : lines) {
    EXPECT_FALSE(l.text.empty());
    EXPECT_EQ(l.text.find('\n'), std::string::npos);
    EXPECT_TRUE(l.type == 1 || l.type == 3 || l.type == 4) << l.type;
  }
  EXPECT_TRUE(any_contains("Clp")) << lines.front().text;
}

TEST_F(MessageTest, NoLinesWithOutputLogOff) {
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_OUTPUTLOG, 0), 0);
  ASSERT_EQ(load_lp(p, small_lp()), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  ASSERT_EQ(KVSLmaxim(p, "b"), 0);
  load_mip(p);
  ASSERT_EQ(KVSLmaxim(p, "g"), 0);
  EXPECT_TRUE(lines.empty()) << lines.front().text;
}

TEST_F(MessageTest, SearchLogFollowsTheMipLogLevel) {
  load_mip(p);
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_MIPLOG, 0), 0);
  ASSERT_EQ(KVSLmaxim(p, "g"), 0);
  EXPECT_FALSE(any_contains("Cbc"));
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_MIPLOG, 1), 0);
  ASSERT_EQ(KVSLmaxim(p, "g"), 0);
  EXPECT_TRUE(any_contains("Cbc"));
}

TEST_F(MessageTest, IterationLogFollowsTheFrequency) {
  load_mip(p);  // its relaxation takes a few iterations
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_PRESOLVE, 0), 0);
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_LPLOG, 0), 0);
  ASSERT_EQ(KVSLmaxim(p, "p"), 0);
  EXPECT_GE(int_attr(p, KVSL_ATTR_SIMPLEXITER), 2);
  EXPECT_FALSE(any_contains("Iteration"));
  EXPECT_FALSE(any_contains("Clp0006I"));
  load_mip(p);
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_LPLOG, 1), 0);
  ASSERT_EQ(KVSLmaxim(p, "p"), 0);
  int iter = int_attr(p, KVSL_ATTR_SIMPLEXITER);
  int logged = 0;
  for (const auto &l : lines) logged += l.text.rfind("Iteration", 0) == 0;
  EXPECT_GE(iter, 2);
  EXPECT_EQ(logged, iter);
}

TEST_F(MessageTest, NonConvexObjectiveIsReportedAsError) {
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_OUTPUTLOG, 0), 0);
  int q1 = 0, q2 = 0;
  double qv = -1.0, obj = 0.0, rhs = 1.0, val = 1.0;
  int64_t start[2] = {0, 1};
  int ind = 0;
  ASSERT_EQ(KVSLloadqp64(p, "nc", 1, 1, "L", &rhs, nullptr, &obj, start, nullptr, &ind, &val,
                         nullptr, nullptr, 1, &q1, &q2, &qv),
            0);
  ASSERT_EQ(KVSLminim(p, ""), 0);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].type, 4);
  EXPECT_EQ(lines[0].text, "The quadratic objective is not convex; the problem is not solved.");
}

TEST_F(MessageTest, RemovedCallbackGetsNothing) {
  ASSERT_EQ(KVSLsetcbmessage(p, nullptr, nullptr), 0);
  ASSERT_EQ(load_lp(p, small_lp()), 0);
  ASSERT_EQ(KVSLmaxim(p, ""), 0);
  EXPECT_TRUE(lines.empty());
}

// Run fn with stdout and stderr sent to a file; return what was written.
template <class F>
std::string captured(F fn) {
  std::fflush(stdout);
  std::fflush(stderr);
  char path[] = "/tmp/kvsl_capture_XXXXXX";
  int fd = mkstemp(path);
  int out = dup(1), err = dup(2);
  dup2(fd, 1);
  dup2(fd, 2);
  fn();
  std::fflush(stdout);
  std::fflush(stderr);
  dup2(out, 1);
  dup2(err, 2);
  close(out);
  close(err);
  close(fd);
  std::ifstream in(path);
  std::stringstream s;
  s << in.rdbuf();
  unlink(path);
  return s.str();
}

TEST_F(MessageTest, NothingIsPrintedWithOrWithoutCallback) {
  for (bool with_callback : {true, false}) {
    if (!with_callback) KVSLsetcbmessage(p, nullptr, nullptr);
    KVSLsetintcontrol(p, KVSL_CTRL_MIPLOG, 3);
    KVSLsetintcontrol(p, KVSL_CTRL_BARRIERLOG, 1);
    KVSLsetintcontrol(p, KVSL_CTRL_LPLOG, 1);
    std::string out = captured([&] {
      ASSERT_EQ(load_lp(p, small_lp()), 0);
      for (const char *flags : {"", "p", "b"}) ASSERT_EQ(KVSLmaxim(p, flags), 0);
      dense_model inf{"LG", {1, 2}, {}, {1, 1}, {}, {}, {{1, 1}, {1, 1}}};
      ASSERT_EQ(load_lp(p, inf), 0);
      ASSERT_EQ(KVSLminim(p, ""), 0);
      load_mip(p);
      ASSERT_EQ(KVSLmaxim(p, "g"), 0);
      ASSERT_EQ(KVSLmaxim(p, "b"), 0);
    });
    EXPECT_EQ(out, "");
  }
  EXPECT_TRUE(any_contains("Cbc"));
}

// The heuristics' sub-searches turn up the log level of the solver handler
// they share with the search; Clp's subtrees below deep nodes print their
// trace to stdout when the level of the LP's handler is above 0.  bell3a
// meets both within its search.
TEST_F(MessageTest, DeepSearchWithSubSearchesPrintsNothing) {
  mps_model m = read_mps(std::string(KVSL_TEST_DATA_DIR) + "/miplib3/bell3a.mps.gz");
  ASSERT_EQ(load_mps(p, m, true), 0);
  std::string out = captured([&] { ASSERT_EQ(KVSLminim(p, "g"), 0); });
  EXPECT_EQ(out, "");
  int status = 0;
  ASSERT_EQ(KVSLgetintattrib(p, KVSL_ATTR_MIPSTATUS, &status), 0);
  EXPECT_EQ(status, KVSL_MIP_OPTIMAL);
  EXPECT_TRUE(any_contains("Cbc"));
}

// The same on two threads, where a second search races the first over the
// rows in another order: its handlers print nothing either (bell5: both
// searches reach Clp's subtrees).
TEST_F(MessageTest, RaceOfDeepSearchesPrintsNothing) {
  mps_model m = read_mps(std::string(KVSL_TEST_DATA_DIR) + "/miplib3/bell5.mps.gz");
  ASSERT_EQ(load_mps(p, m, true), 0);
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, 2), 0);
  std::string out = captured([&] { ASSERT_EQ(KVSLminim(p, "g"), 0); });
  EXPECT_EQ(out, "");
  int status = 0;
  ASSERT_EQ(KVSLgetintattrib(p, KVSL_ATTR_MIPSTATUS, &status), 0);
  EXPECT_EQ(status, KVSL_MIP_OPTIMAL);
}

}  // namespace
