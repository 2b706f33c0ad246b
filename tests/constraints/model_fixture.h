/*
 * model_fixture.h -- a problem with a few variables for the constraint and
 * set tests, the error reports it collects, and an allocator hook that
 * fails a chosen call.
 */
#ifndef KVTL_TESTS_CONSTRAINTS_MODEL_FIXTURE_H
#define KVTL_TESTS_CONSTRAINTS_MODEL_FIXTURE_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "kvtl.h"
#include "problem/problem.h"
#include "support/messages.h"

namespace modeltest {

// Allocator hook failing the `fail_at`-th call after arm() (0: never).
struct failing_malloc {
  static inline int calls = 0;
  static inline int fail_at = 0;
  static inline void *(*saved)(size_t) = nullptr;
  static void *hook(size_t size) {
    if (++calls == fail_at) return nullptr;
    return malloc(size);
  }
  static void arm(int n) {
    calls = 0;
    fail_at = n;
    saved = mdlsl_malloc;
    mdlsl_malloc = hook;
  }
  static void disarm() {
    if (saved != nullptr) mdlsl_malloc = saved;
    saved = nullptr;
    fail_at = 0;
  }
};

// One raw node of a list as stored (sorted run and pending tail alike).
struct raw_node {
  double coef;
  const void *var1;
  const void *var2;
  bool operator==(const raw_node &) const = default;
};
struct raw_list {
  std::vector<raw_node> nodes;
  int pending = 0;
  int resets = 0;
  const void *first = nullptr;
  const void *last = nullptr;
  bool operator==(const raw_list &) const = default;
};

// The list exactly as it is stored, without sorting it.
inline raw_list dump(const mdl_termlst *l, bool quadratic) {
  raw_list r;
  if (l == nullptr) return r;
  r.pending = l->pending;
  r.resets = l->resets;
  r.first = l->first;
  r.last = l->last;
  if (quadratic) {
    for (auto *t = static_cast<const mdl_qterm *>(l->first); t != nullptr; t = t->next)
      r.nodes.push_back({t->coef, t->var1, t->var2});
  } else {
    for (auto *t = static_cast<const mdl_term *>(l->first); t != nullptr; t = t->next)
      r.nodes.push_back({t->coef, t->var, nullptr});
  }
  return r;
}

class ModelTest : public ::testing::Test {
 protected:
  testsupport::error_log log;
  testsupport::output_log out;
  MDLprob prob = nullptr;
  std::vector<MDLvar> v;   // variables in ascending handle order

  void SetUp() override {
    mdlseterrctrl(0);
    log.install();
    out.install();
    prob = mdlnewprob(nullptr);
    ASSERT_NE(prob, nullptr);
  }
  void TearDown() override {
    failing_malloc::disarm();
    if (prob != nullptr) mdldelprob_prob(prob);
    mdldefcberr_prob(nullptr, nullptr, nullptr);
    mdldefcbmsg_prob(nullptr, nullptr, nullptr);
  }
  // Create n continuous variables, kept in handle order.
  void make_vars(int n) {
    for (int i = 0; i < n; i++) {
      MDLvar var = mdlnewvar_prob(prob, nullptr, MDL_CONTINUOUS, 0, 10);
      ASSERT_NE(var, nullptr);
      v.push_back(var);
    }
    std::sort(v.begin(), v.end(), [](MDLvar a, MDLvar b) {
      return reinterpret_cast<uintptr_t>(a) < reinterpret_cast<uintptr_t>(b);
    });
  }
  int stat() const { return mdlgetprobstat_prob(prob); }
  void clear_status() { prob->status = 0; }
  // Exactly one report was made since the last check, with this content.
  void expect_one(int number, int iserror, const std::string &text) {
    ASSERT_EQ(log.reports.size(), 1u) << (log.empty() ? "" : log.last().text);
    EXPECT_EQ(log.last().number, number);
    EXPECT_EQ(log.last().iserror, iserror);
    EXPECT_EQ(log.last().text, text);
    log.reports.clear();
  }
  void expect_none() {
    EXPECT_TRUE(log.empty()) << log.last().number << " " << log.last().text;
    log.reports.clear();
  }
};

}  // namespace modeltest

#endif
