/*
 * terms_test.cpp -- linear and quadratic terms of constraints: add, set,
 * delete, coefficients, iteration, size, the modified flag, and failures
 * of term growth when the allocator runs out.
 */
#include <math.h>

#include <functional>

#include "constraints/model_fixture.h"

namespace {

using modeltest::dump;
using modeltest::failing_malloc;
using modeltest::ModelTest;

class Terms : public ModelTest {
 protected:
  MDLctr k = nullptr;
  void SetUp() override {
    ModelTest::SetUp();
    make_vars(6);
    k = mdlnewctr_prob(prob, "k", MDL_LEQ);
    ASSERT_NE(k, nullptr);
    clear_status();
  }
};

TEST_F(Terms, ZeroCoefficientAddIsNoOperation) {
  EXPECT_EQ(mdladdterm(nullptr, v[0], 0.0), 0);
  EXPECT_EQ(mdladdterm(k, v[0], 0.0), 0);
  EXPECT_EQ(mdladdterm(k, nullptr, -0.0), 0);
  EXPECT_EQ(mdladdqterm(nullptr, v[0], v[1], 0.0), 0);
  EXPECT_EQ(mdladdqterm(k, v[0], v[1], 0.0), 0);
  expect_none();
  EXPECT_EQ(stat(), 0);
  EXPECT_EQ(k->expr.lin, nullptr);
  EXPECT_EQ(k->expr.quad, nullptr);
}

TEST_F(Terms, NullConstraintReports) {
  EXPECT_EQ(mdladdterm(nullptr, v[0], 1), 1);
  expect_one(1507, 1, "(addterm) No constraint given.");
  EXPECT_EQ(mdlsetterm(nullptr, v[0], 1), 1);
  expect_one(1507, 1, "(setterm) No constraint given.");
  EXPECT_EQ(mdldelterm(nullptr, v[0]), 1);
  expect_one(1507, 1, "(setterm) No constraint given.");
  EXPECT_EQ(mdladdqterm(nullptr, v[0], v[1], 1), 1);
  expect_one(1507, 1, "(addqterm) No constraint given.");
  EXPECT_EQ(mdlsetqterm(nullptr, v[0], v[1], 1), 1);
  expect_one(1507, 1, "(setterm) No constraint given.");
  EXPECT_EQ(mdldelqterm(nullptr, v[0], v[1]), 1);
  expect_one(1507, 1, "(setterm) No constraint given.");
  EXPECT_EQ(mdlgetcoeff(nullptr, v[0]), 1.0);
  expect_one(1507, 1, "(getcoeff) No constraint given.");
  EXPECT_EQ(mdlgetqcoeff(nullptr, v[0], v[1]), 1.0);
  expect_one(1507, 1, "(getcoeff) No constraint given.");
  MDLvar var = v[0];
  double coef = 8;
  EXPECT_EQ(mdlgetnextterm(nullptr, nullptr, &var, &coef), nullptr);
  expect_one(1507, 1, "(getnextterm) No constraint given.");
  EXPECT_EQ(mdlgetnextqterm(nullptr, nullptr, &var, &var, &coef), nullptr);
  expect_one(1507, 1, "(getnextqterm) No constraint given.");
  EXPECT_EQ(var, v[0]);
  EXPECT_EQ(coef, 8);
  EXPECT_EQ(stat(), 0);
}

TEST_F(Terms, ConstantTermMovesTheRightHandSide) {
  ASSERT_EQ(mdlsetterm(k, nullptr, 2), 0);
  EXPECT_EQ(mdlgetrhs(k), 2);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  clear_status();
  ASSERT_EQ(mdladdterm(k, nullptr, 3), 0);
  EXPECT_EQ(mdlgetrhs(k), 5);
  EXPECT_EQ(mdlgetcoeff(k, nullptr), 5);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  // Setting the same right-hand side again changes nothing.
  clear_status();
  ASSERT_EQ(mdlsetterm(k, nullptr, 5), 0);
  EXPECT_EQ(stat(), 0);
  // Deleting the constant term leaves rhs 0, read as +0.
  ASSERT_EQ(mdldelterm(k, nullptr), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  double rhs = mdlgetcoeff(k, nullptr);
  EXPECT_EQ(rhs, 0.0);
  EXPECT_FALSE(signbit(rhs));
  EXPECT_FALSE(signbit(mdlgetrhs(k)));
  ASSERT_EQ(mdladdterm(k, nullptr, 1), 0);
  ASSERT_EQ(mdladdterm(k, nullptr, -1), 0);
  EXPECT_FALSE(signbit(mdlgetcoeff(k, nullptr)));
  expect_none();
}

TEST_F(Terms, AddAndSetLinearTerms) {
  ASSERT_EQ(mdladdterm(k, v[2], 2), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  ASSERT_EQ(mdladdterm(k, v[2], 3), 0);
  EXPECT_EQ(mdlgetcoeff(k, v[2]), 5);
  EXPECT_EQ(mdlgetcoeff(k, v[1]), 0);
  // A set replaces the value: after two adds of 1, a set of 5 gives 5.
  ASSERT_EQ(mdladdterm(k, v[0], 1), 0);
  ASSERT_EQ(mdladdterm(k, v[4], 1), 0);
  ASSERT_EQ(mdladdterm(k, v[3], 1), 0);
  ASSERT_EQ(mdladdterm(k, v[3], 1), 0);
  ASSERT_EQ(mdlsetterm(k, v[3], 5), 0);
  EXPECT_EQ(mdlgetcoeff(k, v[3]), 5);
  EXPECT_EQ(mdlgetctrsize(k), 4);
  // Setting the stored value again of the first or last term does not mark
  // the problem; inside the run a set is queued, which counts as a change.
  clear_status();
  ASSERT_EQ(mdlsetterm(k, v[4], 1), 0);
  ASSERT_EQ(mdlsetterm(k, v[0], 1), 0);
  EXPECT_EQ(stat(), 0);
  ASSERT_EQ(mdlsetterm(k, v[4], 2), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  clear_status();
  ASSERT_EQ(mdlsetterm(k, v[3], 5), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(mdlgetcoeff(k, v[3]), 5);
  ASSERT_EQ(mdlsetterm(k, v[3], 6), 0);
  // Deleting a term that is not there changes nothing.
  clear_status();
  ASSERT_EQ(mdldelterm(k, v[5]), 0);
  EXPECT_EQ(stat(), 0);
  ASSERT_EQ(mdldelterm(k, v[3]), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(mdlgetcoeff(k, v[3]), 0);
  EXPECT_EQ(mdlgetctrsize(k), 3);
  expect_none();
}

TEST_F(Terms, CoefficientsInAnyOrderOfAddition) {
  // Add in an order that sends terms to the unsorted tail and read each
  // coefficient back (the read sorts the list).
  int order[] = {5, 0, 3, 1, 4, 2, 3, 1};
  for (int i : order) ASSERT_EQ(mdladdterm(k, v[i], i + 1), 0);
  for (int i = 0; i < 6; i++) {
    double expected = (i == 1 || i == 3) ? 2.0 * (i + 1) : i + 1;
    EXPECT_EQ(mdlgetcoeff(k, v[i]), expected) << i;
  }
  EXPECT_EQ(mdlgetctrsize(k), 6);
  expect_none();
}

TEST_F(Terms, QuadraticTerms) {
  // A square term.
  ASSERT_EQ(mdlsetqterm(k, v[1], v[1], 4), 0);
  EXPECT_EQ(mdlgetqcoeff(k, v[1], v[1]), 4);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  // Pairs are stored in handle order whatever order they are given in.
  ASSERT_EQ(mdladdqterm(k, v[3], v[0], 2), 0);
  ASSERT_EQ(mdladdqterm(k, v[0], v[3], 1), 0);
  EXPECT_EQ(mdlgetqcoeff(k, v[0], v[3]), 3);
  EXPECT_EQ(mdlgetqcoeff(k, v[3], v[0]), 3);
  EXPECT_EQ(mdlgetqcoeff(k, v[0], v[1]), 0);
  ASSERT_EQ(mdlsetqterm(k, v[3], v[0], 7), 0);
  EXPECT_EQ(mdlgetqcoeff(k, v[0], v[3]), 7);
  clear_status();
  ASSERT_EQ(mdlsetqterm(k, v[0], v[3], 7), 0);
  EXPECT_EQ(stat(), 0);
  ASSERT_EQ(mdldelqterm(k, v[3], v[0]), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(mdlgetqcoeff(k, v[0], v[3]), 0);
  EXPECT_EQ(mdlgetctrsize(k), 1);
  EXPECT_EQ(k->expr.lin, nullptr);
  // The quadratic node lies in the pair's variable's pool, in order.
  auto *q = static_cast<mdl_qterm *>(k->expr.quad->first);
  EXPECT_EQ(q->var1, v[1]);
  EXPECT_EQ(q->var2, v[1]);
  expect_none();
}

TEST_F(Terms, QuadraticWithOneNullVariableIsLinear) {
  ASSERT_EQ(mdlsetqterm(k, nullptr, v[2], 3), 0);
  ASSERT_EQ(mdlsetqterm(k, v[4], nullptr, 5), 0);
  EXPECT_EQ(mdlgetcoeff(k, v[2]), 3);
  EXPECT_EQ(mdlgetcoeff(k, v[4]), 5);
  EXPECT_EQ(mdlgetqcoeff(k, nullptr, v[2]), 3);
  EXPECT_EQ(mdlgetqcoeff(k, v[4], nullptr), 5);
  EXPECT_EQ(k->expr.quad, nullptr);
  ASSERT_EQ(mdladdqterm(k, v[2], nullptr, 1), 0);
  EXPECT_EQ(mdlgetcoeff(k, v[2]), 4);
  // Both null: the constant term.
  ASSERT_EQ(mdladdqterm(k, nullptr, nullptr, 2), 0);
  EXPECT_EQ(mdlgetrhs(k), 2);
  ASSERT_EQ(mdlsetqterm(k, nullptr, nullptr, 6), 0);
  EXPECT_EQ(mdlgetqcoeff(k, nullptr, nullptr), 6);
  ASSERT_EQ(mdldelqterm(k, nullptr, v[4]), 0);
  EXPECT_EQ(mdlgetcoeff(k, v[4]), 0);
  EXPECT_EQ(k->expr.quad, nullptr);
  expect_none();
}

TEST_F(Terms, IterationVisitsTermsInHandleOrder) {
  for (int i : {4, 1, 3, 0, 2}) ASSERT_EQ(mdladdterm(k, v[i], 10 + i), 0);
  std::vector<std::pair<MDLvar, double>> seen;
  MDLvar var = nullptr;
  double coef = 0;
  for (MDLterm t = mdlgetnextterm(k, nullptr, &var, &coef); t != nullptr;
       t = mdlgetnextterm(nullptr, t, &var, &coef))
    seen.emplace_back(var, coef);
  ASSERT_EQ(seen.size(), 5u);
  for (int i = 0; i < 5; i++) {
    EXPECT_EQ(seen[i].first, v[i]);
    EXPECT_EQ(seen[i].second, 10 + i);
  }
  // Both outputs are optional.
  MDLterm t = mdlgetnextterm(k, nullptr, nullptr, nullptr);
  ASSERT_NE(t, nullptr);
  EXPECT_NE(mdlgetnextterm(nullptr, t, nullptr, nullptr), nullptr);
  expect_none();
}

TEST_F(Terms, IterationVisitsZeroNodes) {
  ASSERT_EQ(mdladdterm(k, v[0], 1), 0);
  ASSERT_EQ(mdladdterm(k, v[3], 2), 0);
  ASSERT_EQ(mdladdterm(k, v[3], -2), 0);   // stays as a zero node at the end
  std::vector<double> coefs;
  double coef;
  for (MDLterm t = mdlgetnextterm(k, nullptr, nullptr, &coef); t != nullptr;
       t = mdlgetnextterm(k, t, nullptr, &coef))
    coefs.push_back(coef);
  EXPECT_EQ(coefs, (std::vector<double>{1, 0}));
  EXPECT_EQ(mdlgetctrsize(k), 1);
  EXPECT_EQ(mdlgetcoeff(k, v[3]), 0);
  // An empty constraint has no terms to visit.
  MDLctr e = mdlnewctr_prob(prob, "e", MDL_LEQ);
  EXPECT_EQ(mdlgetnextterm(e, nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(mdlgetnextqterm(e, nullptr, nullptr, nullptr, nullptr), nullptr);
  expect_none();
}

TEST_F(Terms, QuadraticIteration) {
  ASSERT_EQ(mdladdqterm(k, v[2], v[1], 1), 0);
  ASSERT_EQ(mdladdqterm(k, v[0], v[5], 2), 0);
  ASSERT_EQ(mdladdqterm(k, v[0], v[0], 3), 0);
  ASSERT_EQ(mdladdqterm(k, v[1], v[1], 4), 0);
  struct q { MDLvar a, b; double c; };
  std::vector<q> seen;
  MDLvar a, b;
  double c;
  for (MDLqterm t = mdlgetnextqterm(k, nullptr, &a, &b, &c); t != nullptr;
       t = mdlgetnextqterm(nullptr, t, &a, &b, &c))
    seen.push_back({a, b, c});
  ASSERT_EQ(seen.size(), 4u);
  EXPECT_EQ(seen[0].a, v[0]); EXPECT_EQ(seen[0].b, v[0]); EXPECT_EQ(seen[0].c, 3);
  EXPECT_EQ(seen[1].a, v[0]); EXPECT_EQ(seen[1].b, v[5]); EXPECT_EQ(seen[1].c, 2);
  EXPECT_EQ(seen[2].a, v[1]); EXPECT_EQ(seen[2].b, v[1]); EXPECT_EQ(seen[2].c, 4);
  EXPECT_EQ(seen[3].a, v[1]); EXPECT_EQ(seen[3].b, v[2]); EXPECT_EQ(seen[3].c, 1);
  EXPECT_EQ(mdlgetnextqterm(k, nullptr, nullptr, nullptr, nullptr), k->expr.quad->first);
  expect_none();
}

TEST_F(Terms, SizeCountsNonZeroLinearAndQuadraticTerms) {
  ASSERT_EQ(mdladdterm(k, v[0], 1), 0);
  ASSERT_EQ(mdladdterm(k, v[1], NAN), 0);   // a NaN coefficient counts
  ASSERT_EQ(mdladdterm(k, v[2], 1), 0);
  ASSERT_EQ(mdladdterm(k, v[2], -1), 0);    // a zero node does not
  ASSERT_EQ(mdladdqterm(k, v[0], v[1], 1), 0);
  ASSERT_EQ(mdladdterm(k, nullptr, 5), 0);  // nor does the constant
  EXPECT_EQ(mdlgetctrsize(k), 3);
  expect_none();
}

TEST_F(Terms, ReadsSortPendingOperations) {
  // Outer terms first, then terms inside the run (kept pending until read).
  ASSERT_EQ(mdladdterm(k, v[0], 1), 0);
  ASSERT_EQ(mdladdterm(k, v[5], 1), 0);
  ASSERT_EQ(mdladdterm(k, v[3], 2), 0);
  ASSERT_EQ(mdlsetterm(k, v[2], 7), 0);
  ASSERT_EQ(mdladdterm(k, v[3], 1), 0);
  ASSERT_GT(k->expr.lin->pending, 0);
  EXPECT_EQ(mdlgetcoeff(k, v[3]), 3);
  EXPECT_EQ(k->expr.lin->pending, 0);
  EXPECT_EQ(mdlgetcoeff(k, v[2]), 7);
  ASSERT_EQ(mdlsetterm(k, v[2], 0), 0);    // inside the run: pending again
  EXPECT_EQ(mdlgetctrsize(k), 3);
  EXPECT_EQ(k->expr.lin->pending, 0);
  expect_none();
}

// Apply operations one after another while the allocator fails its first
// call after arming: the operation that needs new memory fails, returns 1
// after error 1502 and leaves the list exactly as it was; the others
// succeed.  Each round starts at another offset in the pool's block, so the
// failing allocation is sometimes a header, sometimes a node.
class TermGrowthFailure : public ModelTest {
 protected:
  void sweep(const std::function<int(MDLctr, int)> &op, bool quadratic, int ops_per_ctr) {
    make_vars(8);
    int failures = 0;
    for (int round = 0; round < 12; round++) {
      // Shift the pool cursor by a few chunks that stay allocated.
      for (int pad = 0; pad < round; pad++) ASSERT_NE(mdlallocmem(prob, 8, 0), nullptr);
      bool failed = false;
      for (int n = 0; n < 2000 && !failed; n++) {
        MDLctr c = mdlnewctr_prob(prob, nullptr, MDL_LEQ);
        ASSERT_NE(c, nullptr);
        failing_malloc::arm(1);
        for (int i = 0; i < ops_per_ctr && !failed; i++) {
          mdl_termlst *list = quadratic ? c->expr.quad : c->expr.lin;
          auto before = dump(list, quadratic);
          clear_status();
          int rc = op(c, i);
          if (failing_malloc::calls == 0) {
            ASSERT_EQ(rc, 0);
            continue;
          }
          failed = true;
          failing_malloc::disarm();
          EXPECT_EQ(rc, 1) << "round " << round << " op " << i;
          ASSERT_FALSE(log.empty());
          EXPECT_EQ(log.last().number, 1502);
          EXPECT_EQ(log.last().iserror, 1);
          EXPECT_EQ(log.last().text, "Not enough memory.");
          log.reports.clear();
          list = quadratic ? c->expr.quad : c->expr.lin;
          EXPECT_TRUE(dump(list, quadratic) == before) << "round " << round << " op " << i;
          EXPECT_EQ(stat() & MDL_ST_MODIFIED, 0);
          // Once memory is back, the same operation succeeds.
          EXPECT_EQ(op(c, i), 0);
          failures++;
        }
        failing_malloc::disarm();
      }
    }
    EXPECT_EQ(failures, 12);
    expect_none();
  }
};

TEST_F(TermGrowthFailure, AddTermInEveryPosition) {
  // Ascending, descending, repeated and inside-the-run additions.
  int order[] = {3, 7, 0, 5, 5, 1, 6, 2, 4};
  sweep([this, order](MDLctr c, int i) { return mdladdterm(c, v[order[i % 9]], i + 1.0); },
        false, 9);
}

TEST_F(TermGrowthFailure, SetTermInsideTheRun) {
  // Set operations append a reset marker and a value node to the tail.
  int order[] = {0, 7, 3, 4, 3, 5, 2};
  sweep([this, order](MDLctr c, int i) { return mdlsetterm(c, v[order[i % 7]], i + 2.0); },
        false, 7);
}

TEST_F(TermGrowthFailure, AddQuadraticTerm) {
  int a[] = {0, 7, 3, 2, 3, 6};
  int b[] = {1, 7, 4, 2, 4, 0};
  sweep([this, a, b](MDLctr c, int i) { return mdladdqterm(c, v[a[i % 6]], v[b[i % 6]], 1.5); },
        true, 6);
}

TEST_F(TermGrowthFailure, SetQuadraticTerm) {
  int a[] = {0, 7, 3, 2, 3, 6};
  int b[] = {1, 7, 4, 2, 4, 0};
  sweep([this, a, b](MDLctr c, int i) { return mdlsetqterm(c, v[a[i % 6]], v[b[i % 6]], i + 1.0); },
        true, 6);
}

}  // namespace
