/*
 * cuts_e2e_test.cpp -- cuts and search callbacks on the real engine: the
 * cut pool read back, a candidate callback whose rejected solutions never
 * become the incumbent, a cut manager reading node values through the
 * library, and a failing callback ending the search.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <vector>

#include "kvsl.h"
#include "cuts/cuts.h"
#include "kvtl.h"
#include "support/messages.h"

namespace {

// Maximise 5a + 4b + 3c over binaries with 2a + 2b + 2c <= 5, so at most
// two of them: the optimum is a + b = 9.  With the lazy constraint
// a + b <= 1 it is a + c = 8.
class CutsE2E : public ::testing::Test {
 protected:
  void SetUp() override {
    mdlseterrctrl(0);
    errors.install();
    prob = mdlnewprob(nullptr);
    ASSERT_NE(prob, nullptr);
    mdlsetmsglevel_prob(prob, 1);
    a = mdlnewvar_prob(prob, "a", MDL_BINARY, 0, 1);
    b = mdlnewvar_prob(prob, "b", MDL_BINARY, 0, 1);
    c = mdlnewvar_prob(prob, "c", MDL_BINARY, 0, 1);
    MDLctr k = mdlnewctr_prob(prob, "cap", MDL_LEQ);
    for (MDLvar v : {a, b, c}) mdladdterm(k, v, 2);
    mdladdterm(k, nullptr, 5);
    MDLctr obj = mdlnewctr_prob(prob, "profit", MDL_NONBINDING);
    mdladdterm(obj, a, 5);
    mdladdterm(obj, b, 4);
    mdladdterm(obj, c, 3);
    mdlsetobj_prob(prob, obj);
    mdlsetcutmode_prob(prob, 1);
    // Heuristics and generated cuts would find the optimum before any node
    // LP does; the callbacks should be exercised by the node solutions too.
    KVSLsetintcontrol(mdlgetkvslprob_prob(prob), KVSL_CTRL_CUTSTRATEGY, 0);
  }
  void TearDown() override {
    mdldelprob_prob(prob);
    mdldefcberr_prob(nullptr, nullptr, nullptr);
  }

  testsupport::error_log errors;
  MDLprob prob = nullptr;
  MDLvar a = nullptr, b = nullptr, c = nullptr;
};

// What the callbacks saw and do.
struct probe {
  MDLprob prob;
  MDLvar a, b, c;
  bool add_cut = true;     // candidate: add a + b <= 1 when rejecting
  int fail_after = -1;     // return 1 from this call on (-1 never)
  int calls = 0;
  std::vector<std::vector<double>> rejected, accepted;
  std::vector<std::vector<double>> node_values;   // read through the library
  MDLarrvar all = nullptr;                        // a, b, c
};

// Send a + b <= 1 through the library inside the bracket.
int add_lazy_cut(probe *s, KVSLprob kp) {
  if (mdlbegincb_prob(s->prob, kp) != 0) return 1;
  MDLcut cut = mdlnewcut_prob(s->prob, MDL_LEQ, 77);
  int rc = mdladdcutterm(cut, s->a, 1) | mdladdcutterm(cut, s->b, 1) |
           mdladdcutterm(cut, nullptr, 1) | mdladdcuts_prob(s->prob, &cut, 1);
  mdldelcut(cut);
  mdlendcb_prob(s->prob);
  return rc;
}

int candidate(KVSLprob kp, void *user, const double x[], int ncols, int *reject) {
  auto *s = static_cast<probe *>(user);
  if (s->fail_after >= 0 && s->calls++ >= s->fail_after) return 1;
  const int ca = mdlgetcolnum(s->a), cb = mdlgetcolnum(s->b);
  if (x[ca] + x[cb] <= 1.5) {
    s->accepted.emplace_back(x, x + ncols);
    return 0;
  }
  *reject = 1;
  s->rejected.emplace_back(x, x + ncols);
  return s->add_cut ? add_lazy_cut(s, kp) : 0;
}

// Reads the node's values through the library and adds the cover cut
// a + b + c <= 2 (valid: at most two items fit) whenever they violate it.
int cut_manager(KVSLprob kp, void *user) {
  auto *s = static_cast<probe *>(user);
  if (mdlbegincb_prob(s->prob, kp) != 0) return 1;
  mdlsync_prob(s->prob, 1);
  std::vector<double> v{mdlgetsol(s->a), mdlgetsol(s->b), mdlgetsol(s->c)};
  int rc = 0;
  if (v[0] + v[1] + v[2] > 2 + 1e-6) {
    MDLcut cut = mdlnewcutsum_prob(s->prob, s->all, MDL_LEQ, 5, 2);
    rc = mdladdcuts_prob(s->prob, &cut, 1);
    mdldelcut(cut);
  }
  mdlendcb_prob(s->prob);
  s->node_values.push_back(v);
  return rc;
}

// Cuts read from the pool hold term lists, which keep their problem's
// memory alive until the cuts are deleted.
void delete_list(MDLcut first) {
  while (first != nullptr) {
    MDLcut next = first->next;
    mdldelcut(first);
    first = next;
  }
}

TEST_F(CutsE2E, RejectedCandidatesNeverBecomeTheIncumbent) {
  probe s{prob, a, b, c};
  ASSERT_EQ(KVSLsetcbpreintsol(mdlgetkvslprob_prob(prob), candidate, &s), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, "g"), 0);
  EXPECT_EQ(mdlgetmipstat_prob(prob), KVSL_MIP_OPTIMAL);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 8.0, 1e-6);
  EXPECT_NEAR(mdlgetsol(a), 1.0, 1e-6);
  EXPECT_NEAR(mdlgetsol(b), 0.0, 1e-6);
  EXPECT_NEAR(mdlgetsol(c), 1.0, 1e-6);
  // The unconstrained optimum a + b was offered and refused.
  ASSERT_FALSE(s.rejected.empty());
  EXPECT_FALSE(s.accepted.empty());
  const int ca = mdlgetcolnum(a), cb = mdlgetcolnum(b);
  for (const auto &x : s.rejected) EXPECT_GT(x[ca] + x[cb], 1.5);
  // The lazy cut is in the pool with its type number.
  MDLcut first = nullptr;
  int ncoefs = 0;
  int n = mdlgetcuts_prob(prob, &first, &ncoefs);
  ASSERT_GE(n, 1);
  EXPECT_EQ(mdlgetcutid(first), 77);
  EXPECT_EQ(mdlgetcuttype(first), MDL_LEQ);
  EXPECT_EQ(mdlgetcutrhs(first), 1.0);
  delete_list(first);
  EXPECT_TRUE(errors.empty()) << errors.last().text;
}

TEST_F(CutsE2E, RejectingWithoutCutsLeavesNoSolution) {
  probe s{prob, a, b, c};
  s.add_cut = false;
  // Every solution with a + b = 2 is refused and nothing cuts it off; the
  // others stay: whatever the search ends with never has a + b = 2.
  ASSERT_EQ(KVSLsetcbpreintsol(mdlgetkvslprob_prob(prob), candidate, &s), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, "g"), 0);
  ASSERT_FALSE(s.rejected.empty());
  if (mdlgetmipstat_prob(prob) == KVSL_MIP_OPTIMAL || mdlgetmipstat_prob(prob) == KVSL_MIP_SOLUTION)
    EXPECT_LT(mdlgetsol(a) + mdlgetsol(b), 1.5);
  EXPECT_LT(mdlgetobjval_prob(prob), 9.0 - 1e-6);
}

TEST_F(CutsE2E, CutManagerReadsNodeValuesAndCuts) {
  probe s{prob, a, b, c};
  s.all = mdlstartarrvar_prob(prob, 3, "all");
  for (MDLvar v : {a, b, c}) mdlapparrvarel(s.all, v);
  mdlendarrvar(s.all);
  ASSERT_EQ(KVSLsetcbcutmgr(mdlgetkvslprob_prob(prob), cut_manager, &s), 0);
  ASSERT_EQ(mdlmaxim_prob(prob, "g"), 0);
  // The root relaxation is a = b = 1, c = 0.5 (value 10.5), read through
  // the library inside the first call; with the cut in the relaxation its
  // solution a = b = 1, c = 0 is integral and optimal.
  ASSERT_GE(s.node_values.size(), 1u);
  EXPECT_NEAR(s.node_values[0][0], 1.0, 1e-6);
  EXPECT_NEAR(s.node_values[0][1], 1.0, 1e-6);
  EXPECT_NEAR(s.node_values[0][2], 0.5, 1e-6);
  for (size_t k = 1; k < s.node_values.size(); ++k)
    EXPECT_LE(s.node_values[k][0] + s.node_values[k][1] + s.node_values[k][2], 2.0 + 1e-6);
  EXPECT_EQ(mdlgetmipstat_prob(prob), KVSL_MIP_OPTIMAL);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 9.0, 1e-6);
  MDLcut first = nullptr;
  int ncoefs = 0;
  ASSERT_EQ(mdlgetcuts_prob(prob, &first, &ncoefs), 1);
  EXPECT_EQ(ncoefs, 3);
  EXPECT_EQ(mdlgetcutid(first), 5);
  delete_list(first);
  EXPECT_TRUE(errors.empty()) << errors.last().text;
}

TEST_F(CutsE2E, FailingCallbackEndsTheSearch) {
  probe s{prob, a, b, c};
  s.fail_after = 0;
  ASSERT_EQ(KVSLsetcbpreintsol(mdlgetkvslprob_prob(prob), candidate, &s), 0);
  EXPECT_EQ(mdlmaxim_prob(prob, "g"), 1);
  ASSERT_FALSE(errors.empty());
  EXPECT_EQ(errors.last().number, 1524);
  EXPECT_EQ(errors.last().text, "(maxim) Korvex-Optimizer error 13 during 'maxim'. Return value: 13.");
  const int st = mdlgetmipstat_prob(prob);
  EXPECT_TRUE(st == KVSL_MIP_NO_SOL_FOUND || st == KVSL_MIP_SOLUTION) << st;
}

// The stop a callback asked for ends that search only: with the callback
// removed the next search runs to its optimum and succeeds.
TEST_F(CutsE2E, SearchAfterAStoppedOneSucceeds) {
  probe s{prob, a, b, c};
  s.fail_after = 0;
  ASSERT_EQ(KVSLsetcbpreintsol(mdlgetkvslprob_prob(prob), candidate, &s), 0);
  EXPECT_EQ(mdlmaxim_prob(prob, "g"), 1);
  ASSERT_EQ(KVSLsetcbpreintsol(mdlgetkvslprob_prob(prob), nullptr, nullptr), 0);
  errors.reports.clear();
  EXPECT_EQ(mdlmaxim_prob(prob, "g"), 0);
  EXPECT_EQ(mdlgetmipstat_prob(prob), KVSL_MIP_OPTIMAL);
  EXPECT_NEAR(mdlgetobjval_prob(prob), 9.0, 1e-6);
  EXPECT_TRUE(errors.empty()) << errors.last().text;
}

// Terms of a cut by variable (internal layout: the list is stripped first).
std::map<MDLvar, double> terms_of(MDLcut cut) {
  std::map<MDLvar, double> out;
  MDLtermlst list = mdlgetlinexp_cut(cut);
  for (auto *t = static_cast<mdl_term *>(list == nullptr ? nullptr : list->first); t != nullptr;
       t = t->next)
    out[t->var] += t->coef;
  return out;
}

TEST_F(CutsE2E, PoolReadBackEqualsCutsAdded) {
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  MDLcut sent[3];
  sent[0] = mdlnewcut_prob(prob, MDL_LEQ, 3);
  mdladdcutterm(sent[0], a, 1.5);
  mdladdcutterm(sent[0], c, -2);
  mdladdcutterm(sent[0], nullptr, 4);
  sent[1] = mdlnewcut_prob(prob, MDL_GEQ, 11);
  mdladdcutterm(sent[1], b, 1);
  mdladdcutterm(sent[1], nullptr, -1);
  sent[2] = mdlnewcut_prob(prob, MDL_EQ, 3);
  mdladdcutterm(sent[2], a, 1);
  mdladdcutterm(sent[2], b, 1);
  mdladdcutterm(sent[2], c, 1);
  mdladdcutterm(sent[2], nullptr, 2);
  ASSERT_EQ(mdladdcuts_prob(prob, sent, 2), 0);
  ASSERT_EQ(mdladdcuts_prob(prob, sent + 2, 1), 0);
  MDLcut first = nullptr;
  int ncoefs = 0;
  ASSERT_EQ(mdlgetcuts_prob(prob, &first, &ncoefs), 3);
  EXPECT_EQ(ncoefs, 6);
  MDLcut got = first;
  for (MDLcut want : sent) {
    ASSERT_NE(got, nullptr);
    EXPECT_EQ(mdlgetcutid(got), mdlgetcutid(want));
    EXPECT_EQ(mdlgetcuttype(got), mdlgetcuttype(want));
    EXPECT_EQ(mdlgetcutrhs(got), mdlgetcutrhs(want));
    EXPECT_EQ(terms_of(got), terms_of(want));
    MDLcut next = got->next;
    mdldelcut(got);
    got = next;
  }
  EXPECT_EQ(got, nullptr);
  // A new load empties the pool.
  mdladdterm(mdlnewctr_prob(prob, "extra", MDL_LEQ), a, 1);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  EXPECT_EQ(mdlgetcuts_prob(prob, &first, &ncoefs), 0);
  EXPECT_EQ(ncoefs, 0);
  for (MDLcut k : sent) mdldelcut(k);
  EXPECT_TRUE(errors.empty()) << errors.last().text;
}

}  // namespace
