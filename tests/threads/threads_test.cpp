/*
 * threads_test.cpp -- several threads each creating, filling and deleting
 * their own problems at once (run under ThreadSanitizer too).
 */
#include <stdio.h>

#include <string>
#include <thread>
#include <vector>

#include "problem/names.h"
#include "problem/problem.h"
#include "problem/support.h"

namespace {

using support::LibraryTest;

class Threads : public LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    ASSERT_EQ(mdlslinit(), 0);
  }
};

// One worker: problems of its own, named variables, bounds, look-ups,
// deletion; returns the number of failed checks.
int work(int id, int rounds, int nvars) {
  int failures = 0;
  support::capture local;
  char name[64];
  for (int r = 0; r < rounds; ++r) {
    snprintf(name, sizeof name, "thread%d_round%d", id, r);
    MDLprob p = mdlnewprob(r % 2 == 0 ? name : nullptr);
    if (p == nullptr) return failures + 1;
    mdldefcberr_prob(p, support::capture::cb, &local);
    failures += mdlgetprob() != p;
    if (r % 3 == 2) mdlsetdictsize_prob(p, 0, 0);
    std::vector<MDLvar> vars;
    for (int i = 0; i < nvars; ++i) {
      const char *vn = mdlnewname("v%d_%d", id, i % 50);
      MDLvar v = mdlnewvar_prob(p, vn, i % 6, 0, 10 + i);
      if (v == nullptr) return failures + 1;
      mdlsetlb(v, 1);
      mdlsetub(v, 5 + i);
      mdlsetlim(v, 2);
      mdlsetvarlink(v, &vars);
      vars.push_back(v);
    }
    if (p->dictsize > 0) {
      for (MDLvar v : vars) failures += mdlgetbyname_prob(p, mdlgetvarname(v), MDL_KIND_VAR) != v;
    }
    mdlsetsense_prob(p, 1);
    failures += mdlgetsense_prob(p) != 1;
    failures += mdldelprob_prob(p) != 0;
    failures += mdlgetprob() != nullptr;
  }
  // Only the limit warnings of the wrong types are expected.
  for (const support::message &m : local.msgs) failures += m.num != 1592;
  return failures;
}

TEST_F(Threads, OwnProblemsInParallel) {
  constexpr int nthreads = 4;
  std::vector<int> failures(nthreads, -1);
  std::vector<std::thread> threads;
  for (int t = 0; t < nthreads; ++t)
    threads.emplace_back([t, &failures] { failures[static_cast<size_t>(t)] = work(t, 12, 400); });
  for (std::thread &t : threads) t.join();
  for (int t = 0; t < nthreads; ++t) EXPECT_EQ(failures[static_cast<size_t>(t)], 0) << "thread " << t;
  EXPECT_EQ(fake::live_problems(), 0);
}

TEST_F(Threads, EachThreadHasItsOwnCurrentProblem) {
  MDLprob mine = mdlnewprob("main");
  MDLprob theirs = nullptr;
  MDLprob seen_before = mine;
  std::thread t([&] {
    seen_before = mdlgetprob();
    theirs = mdlnewprob("other");
  });
  t.join();
  EXPECT_EQ(seen_before, nullptr);
  EXPECT_EQ(mdlgetprob(), mine);
  ASSERT_NE(theirs, nullptr);
  mdldelprob_prob(theirs);
  mdldelprob_prob(mine);
}

}  // namespace
