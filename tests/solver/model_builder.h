/*
 * model_builder.h -- test support for the solver suites: fills constraint,
 * set and directive records directly (terms through the term lists), and a
 * fixture with the recording engine and collected reports.
 */
#ifndef KVTL_TESTS_SOLVER_MODEL_BUILDER_H
#define KVTL_TESTS_SOLVER_MODEL_BUILDER_H

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "engine_fake/fake_engine.h"
#include "kvtl.h"
#include "problem/names.h"
#include "problem/problem.h"
#include "support/messages.h"

namespace builder {

// A constraint "terms + constant  type  0" with right-hand side rhs, put at
// the head of the problem's list (newest first) like the library's own.
inline MDLctr ctr(MDLprob p, const char *name, int type, double rhs = 0.0,
                  uintptr_t mode = MDL_MODE_STD) {
  auto *c = static_cast<mdl_ctr *>(mdlallocmem(p, sizeof(mdl_ctr), 1));
  c->row = kvtl::no_number;
  c->type = static_cast<uint32_t>(type) & 7;
  if (p->dictsize > 0)
    c->name = mdlnormname(p, name, "CTR", MDL_KIND_CTR, c)->name;
  else
    c->name = mdlstrdup(p, name);
  c->mode = mode;
  c->problem = p;
  c->expr.constant = rhs == 0 ? 0.0 : -rhs;
  c->next = p->ctrs;
  p->ctrs = c;
  p->status |= MDL_ST_MODIFIED;
  return c;
}

inline void term(MDLctr c, MDLvar v, double coef) {
  ASSERT_GE(mdladd_term(v, &c->expr.lin, coef), 0);
  c->problem->status |= MDL_ST_MODIFIED;
}

inline void qterm(MDLctr c, MDLvar a, MDLvar b, double coef) {
  if (std::less<void *>{}(b, a)) std::swap(a, b);
  ASSERT_GE(mdladd_qterm(a, b, &c->expr.quad, coef), 0);
  c->problem->status |= MDL_ST_MODIFIED;
}

// Make the built-in record the objective and give it a constant.
inline MDLctr objective(MDLprob p, double constant = 0.0) {
  p->objective = &p->objrec;
  p->objrec.expr.constant = constant;
  p->status |= MDL_ST_MODIFIED;
  return &p->objrec;
}

inline void set_range(MDLctr c, double lw, double up) {
  c->type = MDL_CTR_R;
  c->expr.constant = -up;
  c->range = up - lw;
}

inline MDLsos sos(MDLprob p, const char *name, int type) {
  auto *s = static_cast<mdl_sos *>(mdlallocmem(p, sizeof(mdl_sos), 1));
  s->type = static_cast<uint32_t>(type);
  if (p->dictsize > 0)
    s->name = mdlnormname(p, name, "SOS", MDL_KIND_SOS, s)->name;
  else
    s->name = mdlstrdup(p, name);
  s->problem = p;
  s->next = p->soss;
  p->soss = s;
  p->status |= MDL_ST_MODIFIED;
  return s;
}

inline void element(MDLsos s, MDLvar v, double weight) {
  ASSERT_GE(mdladd_term(v, &s->elements, weight), 0);
}

// Append a directive (kind 1..5, plus 16 for a set) and mark it pending.
inline void directive(MDLprob p, void *target, uint32_t kind, double value) {
  auto *d = static_cast<mdl_dir *>(mdlallocmem(p, sizeof(mdl_dir), 1));
  d->kind = kind;
  d->target = target;
  d->value = value;
  if (p->dirtail != nullptr) p->dirtail->next = d;
  else p->dirhead = d;
  p->dirtail = d;
  p->status |= MDL_ST_DIRPENDING;
}

}  // namespace builder

// Fixture: errors return, reports collected, recording engine reset, one
// problem with output captured.
class SolverTest : public ::testing::Test {
 protected:
  void SetUp() override {
    mdlseterrctrl(0);
    fake::reset();
    errors.install();
    prob = mdlnewprob("solvertest");
    ASSERT_NE(prob, nullptr);
    output.install(prob);
    fake::clear_calls();
  }
  void TearDown() override {
    if (prob != nullptr) mdldelprob_prob(prob);
    mdldefcberr_prob(nullptr, nullptr, nullptr);
    fake::reset();
  }
  MDLvar var(const char *name, int type = MDL_CONTINUOUS, double lb = 0, double ub = 1e20) {
    MDLvar v = mdlnewvar_prob(prob, name, type, lb, ub);
    EXPECT_NE(v, nullptr);
    return v;
  }
  // The last report: number, error (1) or warning (0), text.
  void expect_report(int number, int iserror, const std::string &text) {
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors.last().number, number);
    EXPECT_EQ(errors.last().iserror, iserror);
    EXPECT_EQ(errors.last().text, text);
  }
  // Names of the recorded calls, without attribute and control reads.
  static std::vector<std::string> engine_calls() {
    std::vector<std::string> out;
    for (const std::string &n : fake::call_names())
      if (n != "KVSLgetintattrib" && n != "KVSLgetdblattrib" && n != "KVSLgetdblcontrol")
        out.push_back(n);
    return out;
  }
  static std::vector<int64_t> ints(std::initializer_list<int64_t> v) { return v; }
  static std::vector<double> dbls(std::initializer_list<double> v) { return v; }

  testsupport::error_log errors;
  testsupport::output_log output;
  MDLprob prob = nullptr;
};

#endif
