/*
 * basis_iis_test.cpp -- saved bases and infeasible subsystems against the
 * recording engine: block layout, reloading after regeneration, searches,
 * mapping of the subsystem data onto model objects, every report.
 */
#include <stdint.h>
#include <stdlib.h>

#include <string>

#include "solver/fixture.h"

using builder::ctr;
using builder::term;

namespace {

class BasisIis : public SolverTest {
 protected:
  // c1: x + y <= 4, c2: x - y >= -2, objective x, set s1 over x and y.
  void model(bool with_set = false) {
    x = var("x", MDL_CONTINUOUS, 0, 10);
    y = var("y", MDL_CONTINUOUS, 0, 10);
    c1 = ctr(prob, "c1", MDL_CTR_L, 4);
    term(c1, x, 1);
    term(c1, y, 1);
    c2 = ctr(prob, "c2", MDL_CTR_G, -2);
    term(c2, x, 1);
    term(c2, y, -1);
    term(builder::objective(prob), x, 1);
    if (with_set) {
      s1 = builder::sos(prob, "s1", 0);
      builder::element(s1, x, 1);
      builder::element(s1, y, 2);
    }
    ASSERT_EQ(mdlloadmat_prob(prob), 0);
    fake::clear_calls();
  }
  static uintptr_t tag(const void *p, int status) {
    return reinterpret_cast<uintptr_t>(p) | static_cast<uintptr_t>(status);
  }
  int outputlog() { return fake::int_control(prob->kvsl, KVSL_CTRL_OUTPUTLOG); }
  MDLvar x = nullptr, y = nullptr;
  MDLctr c1 = nullptr, c2 = nullptr;
  MDLsos s1 = nullptr;
};

int fail_at = 0;
int allocations = 0;
int frees = 0;
void *failing_malloc(size_t n) {
  if (++allocations == fail_at) return nullptr;
  return malloc(n);
}
void counting_free(void *p) {
  ++frees;
  free(p);
}

// ---- bases ------------------------------------------------------------------

TEST_F(BasisIis, SaveWithoutProblemOrMatrix) {
  EXPECT_EQ(mdlsavebasis_prob(nullptr), nullptr);
  expect_report(1501, 1, "(savebasis) No active problem.");
  errors.reports.clear();
  EXPECT_EQ(mdlsavebasis_prob(prob), nullptr);
  EXPECT_TRUE(errors.empty());
  EXPECT_TRUE(engine_calls().empty());
}

TEST_F(BasisIis, SavedBlockHoldsObjectsWithTheirStatuses) {
  model();
  fake::set_int_vector("KVSLgetbasis", "rowstat", {2, 1});
  fake::set_int_vector("KVSLgetbasis", "colstat", {3, 0});
  MDLbasis b = mdlsavebasis_prob(prob);
  ASSERT_NE(b, nullptr);
  const uint64_t *w = reinterpret_cast<const uint64_t *>(b);
  EXPECT_EQ(w[0], reinterpret_cast<uintptr_t>(prob));
  EXPECT_EQ(w[1], 2u);
  EXPECT_EQ(w[2], 2u);
  EXPECT_EQ(w[3 + c1->row], tag(c1, c1->row == 0 ? 2 : 1));
  EXPECT_EQ(w[3 + c2->row], tag(c2, c2->row == 0 ? 2 : 1));
  EXPECT_EQ(w[5 + x->column], tag(x, x->column == 0 ? 3 : 0));
  EXPECT_EQ(w[5 + y->column], tag(y, y->column == 0 ? 3 : 0));
  EXPECT_EQ(engine_calls(), std::vector<std::string>{"KVSLgetbasis"});
  mdldelbasis(b);
}

TEST_F(BasisIis, SaveReportsAnEngineFailure) {
  model();
  fake::fail_call("KVSLgetbasis", 1, KVSL_ERR_NOSOLUTION);
  int before_free = frees;
  void (*saved_free)(void *) = mdlsl_free;
  mdlsl_free = counting_free;
  EXPECT_EQ(mdlsavebasis_prob(prob), nullptr);
  mdlsl_free = saved_free;
  EXPECT_EQ(frees - before_free, 2);  // the block and the status array
  expect_report(1524, 1, "(savebasis) Korvex-Optimizer error 6 during 'getbasis'. Return value: 6.");
}

TEST_F(BasisIis, SaveReportsEachAllocationFailure) {
  model();
  void *(*saved)(size_t) = mdlsl_malloc;
  void (*saved_free)(void *) = mdlsl_free;
  for (fail_at = 1; fail_at <= 2; ++fail_at) {
    allocations = 0;
    frees = 0;
    errors.reports.clear();
    mdlsl_malloc = failing_malloc;
    mdlsl_free = counting_free;
    MDLbasis b = mdlsavebasis_prob(prob);
    mdlsl_malloc = saved;
    mdlsl_free = saved_free;
    EXPECT_EQ(b, nullptr);
    expect_report(1502, 1, "Not enough memory.");
    EXPECT_EQ(frees, fail_at - 1);  // the block goes when the second fails
  }
}

TEST_F(BasisIis, LoadWithoutBasisOrMatrix) {
  EXPECT_EQ(mdlloadbasis(nullptr), 1);
  expect_report(1510, 1, "(loadbasis) No basis given.");
  model();
  MDLbasis b = mdlsavebasis_prob(prob);
  ASSERT_NE(b, nullptr);
  errors.reports.clear();
  fake::clear_calls();
  prob->status &= ~static_cast<uint32_t>(MDL_ST_LOADED);
  EXPECT_EQ(mdlloadbasis(b), 1);
  EXPECT_TRUE(errors.empty());
  EXPECT_TRUE(engine_calls().empty());
  mdldelbasis(b);
  mdldelbasis(nullptr);
}

TEST_F(BasisIis, LoadAfterRegenerationFollowsTheObjects) {
  model();
  fake::set_int_vector("KVSLgetbasis", "rowstat", {0, 2});
  fake::set_int_vector("KVSLgetbasis", "colstat", {1, 3});
  int c2_status = c2->row == 0 ? 0 : 2;
  int x_status = x->column == 0 ? 1 : 3, y_status = x_status == 1 ? 3 : 1;
  MDLbasis b = mdlsavebasis_prob(prob);
  ASSERT_NE(b, nullptr);
  // Add c3 and a new variable z used by it, delete c1 (after: a record
  // made later may reuse c1's memory, and a basis cannot tell them apart);
  // regenerate.
  MDLvar z = var("z", MDL_CONTINUOUS, 0, 5);
  MDLctr c3 = ctr(prob, "c3", MDL_CTR_L, 7);
  term(c3, z, 1);
  term(c3, x, 1);
  ASSERT_EQ(mdldelctr(c1), 0);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  ASSERT_EQ(prob->nrows, 2);
  ASSERT_EQ(prob->ncols, 3);
  fake::clear_calls();
  ASSERT_EQ(mdlloadbasis(b), 0);
  auto loads = fake::calls_of("KVSLloadbasis");
  ASSERT_EQ(loads.size(), 1u);
  std::vector<int64_t> rows(2), cols(3);
  rows[c2->row] = c2_status;
  rows[c3->row] = 1;  // new rows start basic
  cols[x->column] = x_status;
  cols[y->column] = y_status;
  cols[z->column] = 0;  // new columns at their lower bound
  EXPECT_EQ(loads[0].iv("rowstat"), rows);
  EXPECT_EQ(loads[0].iv("colstat"), cols);
  EXPECT_TRUE(errors.empty());
  mdldelbasis(b);
}

TEST_F(BasisIis, LoadReportsAnEngineFailure) {
  model();
  MDLbasis b = mdlsavebasis_prob(prob);
  ASSERT_NE(b, nullptr);
  fake::fail_call("KVSLloadbasis", 1, KVSL_ERR_BADARG);
  EXPECT_EQ(mdlloadbasis(b), 1);
  expect_report(1524, 1, "(loadbasis) Korvex-Optimizer error 3 during 'loadbasis'. Return value: 3.");
  void *(*saved)(size_t) = mdlsl_malloc;
  fail_at = 1;
  allocations = 0;
  mdlsl_malloc = failing_malloc;
  EXPECT_EQ(mdlloadbasis(b), 1);
  mdlsl_malloc = saved;
  expect_report(1502, 1, "Not enough memory.");
  mdldelbasis(b);
}

// ---- number of subsystems ----------------------------------------------------

TEST_F(BasisIis, CountWithoutProblemOrMatrix) {
  EXPECT_EQ(mdlgetnumiis_prob(nullptr), -1);
  expect_report(1501, 1, "(getnumiis) No active problem.");
  EXPECT_EQ(mdlgetnumiis_prob(prob), -1);
  expect_report(1526, 1, "(getnumiis) Empty problem or problem not loaded in Korvex-Optimizer.");
}

TEST_F(BasisIis, CountHeldByTheEngineIsNotSearchedAgain) {
  model();
  for (int held : {0, 3}) {
    fake::clear_calls();
    fake::set_int_out("KVSLiisstatus", "count", held);
    EXPECT_EQ(mdlgetnumiis_prob(prob), held);
    EXPECT_EQ(engine_calls(), std::vector<std::string>{"KVSLiisstatus"});
  }
}

TEST_F(BasisIis, CountRunsTheFullSearchQuietly) {
  model();
  fake::set_int_out("KVSLiisstatus", "count", -1);
  fake::set_int_attrib(KVSL_ATTR_NUMIIS, 4);
  ASSERT_EQ(KVSLsetintcontrol(prob->kvsl, KVSL_CTRL_OUTPUTLOG, 1), 0);
  fake::clear_calls();
  EXPECT_EQ(mdlgetnumiis_prob(prob), 4);
  EXPECT_EQ(engine_calls(), (std::vector<std::string>{"KVSLiisstatus", "KVSLgetintcontrol",
                                                      "KVSLsetintcontrol", "KVSLiisall",
                                                      "KVSLsetintcontrol"}));
  auto sets = fake::calls_of("KVSLsetintcontrol");
  EXPECT_EQ(sets[0].i("control"), KVSL_CTRL_OUTPUTLOG);
  EXPECT_EQ(sets[0].i("value"), 0);
  EXPECT_EQ(sets[1].i("value"), 1);
  EXPECT_EQ(outputlog(), 1);
  EXPECT_TRUE(errors.empty());
}

TEST_F(BasisIis, CountReportsEngineFailures) {
  model();
  fake::fail_call("KVSLiisstatus", 1, KVSL_ERR_NOTLOADED);
  EXPECT_EQ(mdlgetnumiis_prob(prob), -1);
  expect_report(1524, 1,
                "(getnumiis) Korvex-Optimizer error 5 during 'KVSLiisstatus'. Return value: 5.");
  fake::set_int_out("KVSLiisstatus", "count", -1);
  fake::fail_call("KVSLiisall", 1, KVSL_ERR_UNSUPPORTED);
  EXPECT_EQ(mdlgetnumiis_prob(prob), -1);
  expect_report(1524, 1,
                "(getnumiis) Korvex-Optimizer error 8 during 'KVSLiisall'. Return value: 8.");
  EXPECT_EQ(outputlog(), 1);
}

// ---- one subsystem ------------------------------------------------------------

// Outputs preset to values the call must clear.
struct outputs {
  MDLvar *vars = reinterpret_cast<MDLvar *>(8);
  MDLctr *ctrs = reinterpret_cast<MDLctr *>(8);
  MDLsos *soss = reinterpret_cast<MDLsos *>(8);
  int nvars = -7, nctrs = -7, nsoss = -7;
  int get(MDLprob p, int n) { return mdlgetmiis_prob(p, &vars, &nvars, &ctrs, &nctrs, &soss, &nsoss, n); }
  bool empty() const {
    return vars == nullptr && ctrs == nullptr && soss == nullptr && nvars == 0 && nctrs == 0 &&
           nsoss == 0;
  }
  void release() {
    EXPECT_EQ(mdlfreeiismem(vars), 0);
    EXPECT_EQ(mdlfreeiismem(ctrs), 0);
    EXPECT_EQ(mdlfreeiismem(soss), 0);
  }
};

TEST_F(BasisIis, SubsystemWithoutProblemOrMatrix) {
  outputs o;
  EXPECT_EQ(o.get(nullptr, 1), 1);
  expect_report(1501, 1, "(getiis) No active problem.");
  EXPECT_TRUE(o.empty());
  outputs o2;
  EXPECT_EQ(o2.get(prob, 1), 1);
  expect_report(1526, 1, "(getiis) Empty problem or problem not loaded in Korvex-Optimizer.");
  EXPECT_TRUE(o2.empty());
}

TEST_F(BasisIis, NegativeIndexWarnsAndReturnsZero) {
  model();
  outputs o;
  EXPECT_EQ(o.get(prob, -1), 0);
  expect_report(1555, 0, "Incorrect IIS index given (-1).");
  EXPECT_TRUE(o.empty());
  EXPECT_TRUE(engine_calls().empty());
}

TEST_F(BasisIis, DataMapOntoVariablesConstraintsAndSets) {
  model(true);
  ASSERT_EQ(prob->nsets, 1);
  fake::set_int_out("KVSLiisstatus", "count", 1);
  fake::set_int_out("KVSLgetiisdata", "nrows", 3);
  fake::set_int_out("KVSLgetiisdata", "ncols", 2);
  fake::set_int_vector("KVSLgetiisdata", "rowind",
                       {static_cast<int>(c2->row), 0, static_cast<int>(c1->row)});
  fake::set_char_vector("KVSLgetiisdata", "rowtype", "G1L");
  fake::set_int_vector("KVSLgetiisdata", "colind",
                       {static_cast<int>(y->column), static_cast<int>(x->column)});
  outputs o;
  ASSERT_EQ(o.get(prob, 1), 0);
  ASSERT_EQ(o.nvars, 2);
  EXPECT_EQ(o.vars[0], y);
  EXPECT_EQ(o.vars[1], x);
  ASSERT_EQ(o.nctrs, 2);
  EXPECT_EQ(o.ctrs[0], c2);
  EXPECT_EQ(o.ctrs[1], c1);
  ASSERT_EQ(o.nsoss, 1);
  EXPECT_EQ(o.soss[0], s1);
  // IIS 1 is held already: no search, the data read twice (sizes, then all).
  EXPECT_EQ(engine_calls(), (std::vector<std::string>{"KVSLiisstatus", "KVSLgetiisdata",
                                                      "KVSLgetiisdata"}));
  auto data = fake::calls_of("KVSLgetiisdata");
  EXPECT_EQ(data[0].i("num"), 1);
  EXPECT_TRUE(data[0].is_null("rowind"));
  o.release();
  // Without the set outputs, and with no outputs wanted at all.
  MDLvar *vars = nullptr;
  MDLctr *ctrs = nullptr;
  int nvars = 0, nctrs = 0;
  ASSERT_EQ(mdlgetiis_prob(prob, &vars, &nvars, &ctrs, &nctrs, 1), 0);
  EXPECT_EQ(nvars, 2);
  EXPECT_EQ(nctrs, 2);
  EXPECT_EQ(ctrs[1], c1);
  mdlfreeiismem(vars);
  mdlfreeiismem(ctrs);
  EXPECT_EQ(mdlgetiis_prob(prob, nullptr, nullptr, nullptr, nullptr, 1), 0);
  EXPECT_EQ(mdlfreeiismem(nullptr), 0);
}

TEST_F(BasisIis, SearchRunsQuietlyFromTheFirstSubsystem) {
  model();
  fake::set_int_out("KVSLiisstatus", "count", -1);
  fake::set_int_out("KVSLiisfirst", "status", 0);
  fake::set_int_out("KVSLiisnext", "status", 0);
  fake::set_int_out("KVSLgetiisdata", "nrows", 1);
  fake::set_int_vector("KVSLgetiisdata", "rowind", {static_cast<int>(c1->row)});
  fake::set_char_vector("KVSLgetiisdata", "rowtype", "L");
  outputs o;
  ASSERT_EQ(o.get(prob, 3), 0);
  EXPECT_EQ(engine_calls(),
            (std::vector<std::string>{"KVSLiisstatus", "KVSLgetintcontrol", "KVSLsetintcontrol",
                                      "KVSLiisfirst", "KVSLiisnext", "KVSLiisnext",
                                      "KVSLsetintcontrol", "KVSLgetiisdata", "KVSLgetiisdata"}));
  EXPECT_EQ(fake::calls_of("KVSLiisfirst")[0].i("mode"), 1);
  EXPECT_EQ(fake::calls_of("KVSLgetiisdata")[0].i("num"), 3);
  EXPECT_EQ(o.nctrs, 1);
  EXPECT_EQ(o.ctrs[0], c1);
  EXPECT_EQ(o.nvars, 0);
  EXPECT_EQ(o.vars, nullptr);
  EXPECT_EQ(outputlog(), 1);
  o.release();
}

TEST_F(BasisIis, AskingBeyondTheSubsystemsFoundGivesEmptyOutputs) {
  model();
  // Two found so far; the search for the third ends.
  fake::set_int_out("KVSLiisstatus", "count", 2);
  fake::set_int_out("KVSLiisnext", "status", 1);
  outputs o;
  EXPECT_EQ(o.get(prob, 3), 0);
  EXPECT_TRUE(o.empty());
  EXPECT_TRUE(errors.empty());
  EXPECT_EQ(engine_calls(), (std::vector<std::string>{"KVSLiisstatus", "KVSLgetintcontrol",
                                                      "KVSLsetintcontrol", "KVSLiisnext",
                                                      "KVSLsetintcontrol"}));
}

TEST_F(BasisIis, SubsystemZero) {
  model();
  // Held at once when no search ran and the engine says it is available.
  fake::set_int_out("KVSLiisstatus", "count", 0);
  fake::set_int_attrib(KVSL_ATTR_IISAVAILABLE, 1);
  outputs o;
  EXPECT_EQ(o.get(prob, 0), 0);
  EXPECT_EQ(engine_calls(), (std::vector<std::string>{"KVSLiisstatus", "KVSLgetiisdata"}));
  EXPECT_TRUE(o.empty());  // both counts 0
  // Otherwise a new search in mode 0.
  fake::set_int_attrib(KVSL_ATTR_IISAVAILABLE, 0);
  fake::clear_calls();
  EXPECT_EQ(o.get(prob, 0), 0);
  EXPECT_EQ(engine_calls(), (std::vector<std::string>{"KVSLiisstatus", "KVSLgetintcontrol",
                                                      "KVSLsetintcontrol", "KVSLiisfirst",
                                                      "KVSLsetintcontrol", "KVSLgetiisdata"}));
  EXPECT_EQ(fake::calls_of("KVSLiisfirst")[0].i("mode"), 0);
  // A count of 0 with n positive searches again from the start.
  fake::clear_calls();
  EXPECT_EQ(o.get(prob, 1), 0);
  EXPECT_EQ(fake::calls_of("KVSLiisfirst")[0].i("mode"), 1);
}

TEST_F(BasisIis, SubsystemReportsEngineFailures) {
  model();
  outputs o;
  fake::fail_call("KVSLiisstatus", 1, KVSL_ERR_NOTLOADED);
  EXPECT_EQ(o.get(prob, 1), -1);
  expect_report(1524, 1, "(getiis) Korvex-Optimizer error 5 during 'KVSLiisstatus'. Return value: 5.");
  fake::set_int_out("KVSLiisstatus", "count", -1);
  fake::fail_call("KVSLiisfirst", 1, KVSL_ERR_UNSUPPORTED);
  EXPECT_EQ(o.get(prob, 1), 1);
  expect_report(1524, 1, "(getiis) Korvex-Optimizer error 8 during 'KVSLiisfirst'. Return value: 8.");
  EXPECT_EQ(outputlog(), 1);
  fake::fail_call("KVSLiisnext", 1, KVSL_ERR_BACKEND);
  EXPECT_EQ(o.get(prob, 2), 1);
  expect_report(1524, 1, "(getiis) Korvex-Optimizer error 9 during 'KVSLiisnext'. Return value: 9.");
  EXPECT_EQ(outputlog(), 1);
  fake::set_int_out("KVSLiisstatus", "count", 1);
  fake::fail_call("KVSLgetiisdata", 1, KVSL_ERR_INDEX);
  EXPECT_EQ(o.get(prob, 1), 1);
  expect_report(1524, 1, "(getiis) Korvex-Optimizer error 10 during 'KVSLgetiisdata'. Return value: 10.");
  fake::set_int_out("KVSLgetiisdata", "nrows", 1);
  fake::fail_call("KVSLgetiisdata", 2, KVSL_ERR_INDEX);
  EXPECT_EQ(o.get(prob, 1), 1);
  expect_report(1524, 1, "(getiis) Korvex-Optimizer error 10 during 'KVSLgetiisdata'. Return value: 10.");
}

TEST_F(BasisIis, SubsystemReportsAllocationFailures) {
  model();
  fake::set_int_out("KVSLiisstatus", "count", 1);
  fake::set_int_out("KVSLgetiisdata", "nrows", 1);
  fake::set_int_out("KVSLgetiisdata", "ncols", 1);
  fake::set_int_vector("KVSLgetiisdata", "rowind", {static_cast<int>(c1->row)});
  fake::set_char_vector("KVSLgetiisdata", "rowtype", "L");
  fake::set_int_vector("KVSLgetiisdata", "colind", {static_cast<int>(x->column)});
  void *(*saved)(size_t) = mdlsl_malloc;
  for (fail_at = 1; fail_at <= 3; ++fail_at) {
    outputs o;
    allocations = 0;
    errors.reports.clear();
    mdlsl_malloc = failing_malloc;
    EXPECT_EQ(o.get(prob, 1), 1);
    mdlsl_malloc = saved;
    expect_report(1502, 1, "Not enough memory.");
    // Arrays made before the failure stay with the caller.
    EXPECT_EQ(o.vars != nullptr, fail_at == 3);
    if (o.vars != nullptr) EXPECT_EQ(o.vars[0], x);
    EXPECT_EQ(o.ctrs, nullptr);
    mdlfreeiismem(o.vars);
  }
}

}  // namespace
