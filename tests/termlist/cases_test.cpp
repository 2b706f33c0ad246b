/*
 * cases_test.cpp -- term lists case by case: the six cases of add-term and
 * set-term, the sort, zero nodes, copies, sums, scaling and argument errors.
 */
#include <limits>

#include "support.h"

namespace termtest {
namespace {

using lmap = value_map<mdl_term>;
using qmap = value_map<mdl_qterm>;

class LinearList : public TermListTest {
 protected:
  void SetUp() override {
    TermListTest::SetUp();
    x = make_vars(prob, 400);
  }
  void TearDown() override {
    mdldel_termlst(&list);
    mdldel_termlst(&other);
    TermListTest::TearDown();
  }
  std::vector<MDLvar> x;
  MDLtermlst list = nullptr;
  MDLtermlst other = nullptr;

  lmap terms(std::initializer_list<std::pair<int, double>> t) {
    lmap m;
    for (auto [i, c] : t) m[key_of(x[i])] = c;
    return m;
  }
  std::vector<lin_key> run_keys() {
    std::vector<lin_key> k;
    for (auto [key, c] : raw_nodes<mdl_term>(list)) k.push_back(key);
    return k;
  }
};

// ---- Edge cases -----------------------------------------------------------

TEST_F(LinearList, CancelledOnlyTermStaysAsZeroNode) {
  EXPECT_EQ(mdladd_term(x[0], &list, 2), 1);
  EXPECT_EQ(mdladd_term(x[0], &list, -2), 1);
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(first_node<mdl_term>(list)->coef, 0.0);
  EXPECT_EQ(mdlget_termlst_len(&list), 0);
  EXPECT_EQ(mdlstriptermlst(&list), 0);
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(raw_nodes<mdl_term>(list).size(), 1u);
}

TEST_F(LinearList, OutOfOrderTermsMergeIntoRun) {
  mdladd_term(x[3], &list, 3);
  mdladd_term(x[1], &list, 1);
  EXPECT_EQ(first_node<mdl_term>(list)->var, x[1]);
  EXPECT_EQ(list->pending, 0);
  mdladd_term(x[2], &list, 2);
  EXPECT_EQ(list->pending, 1);
  EXPECT_EQ(mdlstriptermlst(&list), 1);
  EXPECT_EQ(run_keys(), (std::vector<lin_key>{key_of(x[1]), key_of(x[2]), key_of(x[3])}));
  EXPECT_EQ(check_list<mdl_term>(list, true), "");
  EXPECT_EQ(value_of<mdl_term>(list), terms({{1, 1}, {2, 2}, {3, 3}}));
}

TEST_F(LinearList, SetInsideToZeroRemovesAtNextSort) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[2], &list, 2);
  mdladd_term(x[3], &list, 3);
  EXPECT_EQ(mdlset_term(x[2], &list, 0), 1);
  EXPECT_EQ(list->pending, 1);
  EXPECT_EQ(list->resets, 1);
  EXPECT_EQ(raw_nodes<mdl_term>(list).size(), 4u);
  mdlstriptermlst(&list);
  EXPECT_EQ(run_keys(), (std::vector<lin_key>{key_of(x[1]), key_of(x[3])}));
  EXPECT_EQ(check_list<mdl_term>(list, true), "");
}

TEST_F(LinearList, SetAfterAddsGivesTheSetValue) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, 1);
  mdladd_term(x[5], &list, 1);
  mdladd_term(x[5], &list, 1);
  EXPECT_EQ(mdlset_term(x[5], &list, 5), 1);
  EXPECT_EQ(list->pending, 4);
  EXPECT_EQ(list->resets, 2);
  mdlstriptermlst(&list);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{1, 1}, {5, 5}, {9, 1}}));
  // Adds after a set count from the set value.
  mdladd_term(x[3], &list, 1);
  mdlset_term(x[3], &list, 5);
  mdladd_term(x[3], &list, 1);
  mdlstriptermlst(&list);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{1, 1}, {3, 6}, {5, 5}, {9, 1}}));
}

TEST_F(LinearList, OutOfOrderAdd256SortsBeforeStoring) {
  mdladd_term(x[0], &list, 1);
  mdladd_term(x[399], &list, 1);
  for (int i = 1; i <= 255; ++i) EXPECT_EQ(mdladd_term(x[i], &list, i), 1);
  EXPECT_EQ(list->pending, 255);
  EXPECT_EQ(mdladd_term(x[300], &list, 7), 1);
  EXPECT_EQ(list->pending, 1);
  EXPECT_EQ(check_list<mdl_term>(list, false), "");
  EXPECT_EQ(raw_nodes<mdl_term>(list).size(), 258u);
  EXPECT_EQ(raw_nodes<mdl_term>(list).back(), std::make_pair(key_of(x[300]), 7.0));
  mdlstriptermlst(&list);
  EXPECT_EQ(mdlget_termlst_len(&list), 258);
}

TEST_F(LinearList, ScaleByZeroDeletesList) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[2], &list, 2);
  EXPECT_EQ(prob->refcount, 2);
  EXPECT_EQ(mdlmulc_termlst(&list, 0.0), 1);
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(prob->refcount, 1);
}

// ---- Add-term, case by case -----------------------------------------------

TEST_F(LinearList, AddCreatesListOnTheVariablesProblem) {
  const uint64_t before = live(prob);
  EXPECT_EQ(mdladd_term(x[5], &list, 1.5), 1);
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->first, list->last);
  EXPECT_EQ(prob->refcount, 2);
  EXPECT_EQ(live(prob), before + 2);   // header and node
  mdldel_termlst(&list);
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(prob->refcount, 1);
  EXPECT_EQ(live(prob), before);
}

TEST_F(LinearList, AddBeyondLastBecomesLastBeforeTheTail) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, 1);
  mdladd_term(x[5], &list, 1);   // pending
  EXPECT_EQ(mdladd_term(x[20], &list, 2), 1);
  EXPECT_EQ(last_node<mdl_term>(list)->var, x[20]);
  EXPECT_EQ(list->pending, 1);
  EXPECT_EQ(last_node<mdl_term>(list)->next->var, x[5]);
  EXPECT_EQ(check_list<mdl_term>(list, false), "");
}

TEST_F(LinearList, AddOnLastAccumulatesAndKeepsZero) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, 1);
  EXPECT_EQ(mdladd_term(x[9], &list, 0.5), 1);
  EXPECT_EQ(last_node<mdl_term>(list)->coef, 1.5);
  EXPECT_EQ(mdladd_term(x[9], &list, -1.5), 1);
  EXPECT_EQ(raw_nodes<mdl_term>(list).size(), 2u);
  EXPECT_EQ(last_node<mdl_term>(list)->coef, 0.0);
  EXPECT_EQ(mdlget_termlst_len(&list), 1);
}

TEST_F(LinearList, AddCancellingFirstReleasesLeadingZeros) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[2], &list, 1);
  mdladd_term(x[3], &list, 1);
  mdladd_term(x[4], &list, 1);
  mdladd_term(x[4], &list, -1);   // zero at last
  mdladd_term(x[3], &list, -1);   // pending
  mdlstriptermlst(&list);          // x3 removed, x4 stays as zero last
  mdladd_term(x[2], &list, -1);   // inside, pending
  mdlstriptermlst(&list);
  EXPECT_EQ(raw_nodes<mdl_term>(list),
            (std::vector<std::pair<lin_key, double>>{{key_of(x[1]), 1}, {key_of(x[4]), 0}}));
  EXPECT_EQ(mdladd_term(x[1], &list, -1), 1);   // first cancels: x1 and zero x4 go
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(prob->refcount, 1);
}

TEST_F(LinearList, AddCancellingFirstWithPendingKeepsZeroFirst) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, 1);
  mdladd_term(x[5], &list, 1);
  EXPECT_EQ(mdladd_term(x[1], &list, -1), 1);
  EXPECT_EQ(first_node<mdl_term>(list)->var, x[1]);
  EXPECT_EQ(first_node<mdl_term>(list)->coef, 0.0);
  mdlstriptermlst(&list);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{5, 1}, {9, 1}}));
  EXPECT_EQ(check_list<mdl_term>(list, true), "");
}

TEST_F(LinearList, AddBelowFirstBecomesFirst) {
  mdladd_term(x[5], &list, 1);
  mdladd_term(x[9], &list, 1);
  EXPECT_EQ(mdladd_term(x[2], &list, 3), 1);
  EXPECT_EQ(first_node<mdl_term>(list)->var, x[2]);
  EXPECT_EQ(list->pending, 0);
}

TEST_F(LinearList, AddInsideGoesToTailNewestNearestLast) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, 1);
  mdladd_term(x[5], &list, 1);
  mdladd_term(x[3], &list, 2);
  EXPECT_EQ(list->pending, 2);
  EXPECT_EQ(list->resets, 0);
  const mdl_term *newest = last_node<mdl_term>(list)->next;
  EXPECT_EQ(newest->var, x[3]);
  EXPECT_EQ(newest->next->var, x[5]);
}

TEST_F(LinearList, AddOfZeroChangesNothing) {
  EXPECT_EQ(mdladd_term(x[1], &list, 0.0), 0);
  EXPECT_EQ(list, nullptr);
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, 1);
  EXPECT_EQ(mdladd_term(x[5], &list, -0.0), 0);
  EXPECT_EQ(list->pending, 0);
}

// ---- Set-term, case by case -----------------------------------------------

TEST_F(LinearList, SetOnEmptyList) {
  EXPECT_EQ(mdlset_term(x[1], &list, 0), 0);
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(mdlset_term(x[1], &list, 4), 1);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{1, 4}}));
  EXPECT_EQ(prob->refcount, 2);
}

TEST_F(LinearList, SetBeyondLast) {
  mdladd_term(x[1], &list, 1);
  EXPECT_EQ(mdlset_term(x[7], &list, 0), 0);
  EXPECT_EQ(list->last, list->first);
  EXPECT_EQ(mdlset_term(x[7], &list, 2), 1);
  EXPECT_EQ(last_node<mdl_term>(list)->var, x[7]);
  EXPECT_EQ(last_node<mdl_term>(list)->coef, 2);
}

TEST_F(LinearList, SetOnLast) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[7], &list, 2);
  EXPECT_EQ(mdlset_term(x[7], &list, 2), 0);
  EXPECT_EQ(mdlset_term(x[7], &list, 3), 1);
  EXPECT_EQ(last_node<mdl_term>(list)->coef, 3);
  EXPECT_EQ(mdlset_term(x[7], &list, 0), 1);
  EXPECT_EQ(raw_nodes<mdl_term>(list).size(), 2u);   // zero node stays
  EXPECT_EQ(mdlset_term(x[7], &list, 0), 0);
  EXPECT_EQ(mdlget_termlst_len(&list), 1);
}

TEST_F(LinearList, SetOnFirst) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[7], &list, 2);
  EXPECT_EQ(mdlset_term(x[1], &list, 1), 0);
  EXPECT_EQ(mdlset_term(x[1], &list, 6), 1);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{1, 6}, {7, 2}}));
  EXPECT_EQ(mdlset_term(x[1], &list, 0), 1);   // nothing pending: released
  EXPECT_EQ(first_node<mdl_term>(list)->var, x[7]);
  EXPECT_EQ(raw_nodes<mdl_term>(list).size(), 1u);
}

TEST_F(LinearList, SetOnFirstToZeroWithPendingKeepsZeroFirst) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[7], &list, 2);
  mdladd_term(x[4], &list, 2);
  EXPECT_EQ(mdlset_term(x[1], &list, 0), 1);
  EXPECT_EQ(first_node<mdl_term>(list)->var, x[1]);
  mdlstriptermlst(&list);
  EXPECT_EQ(first_node<mdl_term>(list)->var, x[4]);
  EXPECT_EQ(check_list<mdl_term>(list, true), "");
}

TEST_F(LinearList, SetLastZeroOnlyTermThenStripKeepsIt) {
  mdladd_term(x[1], &list, 1);
  EXPECT_EQ(mdlset_term(x[1], &list, 0), 1);   // the `last` case
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(mdlget_termlst_len(&list), 0);
}

TEST_F(LinearList, SetBelowFirst) {
  mdladd_term(x[5], &list, 1);
  EXPECT_EQ(mdlset_term(x[2], &list, 0), 0);
  EXPECT_EQ(mdlset_term(x[2], &list, 8), 1);
  EXPECT_EQ(first_node<mdl_term>(list)->var, x[2]);
}

TEST_F(LinearList, SetInsideAppendsMarkerAndValue) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, 1);
  EXPECT_EQ(mdlset_term(x[5], &list, 3), 1);
  EXPECT_EQ(list->pending, 2);
  EXPECT_EQ(list->resets, 2);
  const mdl_term *value = last_node<mdl_term>(list)->next;
  EXPECT_EQ(value->coef, 3);
  EXPECT_EQ(value->next->coef, 0);   // the marker is older
  EXPECT_EQ(value->next->var, x[5]);
  // Setting inside always appends: it cannot know the current value.
  EXPECT_EQ(mdlset_term(x[6], &list, 0), 1);
  EXPECT_EQ(list->pending, 3);
  EXPECT_EQ(list->resets, 3);
}

TEST_F(LinearList, SetInsideSortsWhenTwoPlacesAreNotLeft) {
  mdladd_term(x[0], &list, 1);
  mdladd_term(x[399], &list, 1);
  for (int i = 1; i <= 254; ++i) mdladd_term(x[i], &list, 1);
  EXPECT_EQ(list->pending, 254);
  EXPECT_EQ(mdlset_term(x[300], &list, 2), 1);
  EXPECT_EQ(list->pending, 2);
  EXPECT_EQ(list->resets, 2);
  mdlstriptermlst(&list);
  EXPECT_EQ(mdlget_termlst_len(&list), 257);
  // 253 pending leaves room for a pair.
  mdldel_termlst(&list);
  mdladd_term(x[0], &list, 1);
  mdladd_term(x[399], &list, 1);
  for (int i = 1; i <= 253; ++i) mdladd_term(x[i], &list, 1);
  EXPECT_EQ(mdlset_term(x[300], &list, 2), 1);
  EXPECT_EQ(list->pending, 255);
  EXPECT_EQ(check_list<mdl_term>(list, false), "");
}

// ---- Sort -------------------------------------------------------------------

TEST_F(LinearList, SortOfOnePendingNode) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[5], &list, 5);
  mdladd_term(x[9], &list, 9);
  mdladd_term(x[5], &list, 1);   // present: adds
  EXPECT_EQ(mdlsort_termlst(&list), 1);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{1, 1}, {5, 6}, {9, 9}}));
  mdladd_term(x[5], &list, -6);   // present: cancels, node removed
  mdlsort_termlst(&list);
  EXPECT_EQ(raw_nodes<mdl_term>(list).size(), 2u);
  mdlset_term(x[5], &list, 0);    // absent marker: nothing
  EXPECT_EQ(list->pending, 1);
  mdlsort_termlst(&list);
  EXPECT_EQ(raw_nodes<mdl_term>(list).size(), 2u);
  mdladd_term(x[5], &list, 2);    // absent: inserted
  mdlsort_termlst(&list);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{1, 1}, {5, 2}, {9, 9}}));
  mdlset_term(x[5], &list, 0);    // present marker: removed
  mdlsort_termlst(&list);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{1, 1}, {9, 9}}));
  EXPECT_EQ(raw_nodes<mdl_term>(list).size(), 2u);
  EXPECT_EQ(mdlsort_termlst(&list), 0);   // nothing pending
}

TEST_F(LinearList, SortAppliesOperationsInInsertionOrder) {
  mdladd_term(x[0], &list, 1);
  mdladd_term(x[99], &list, 1);
  mdladd_term(x[50], &list, 4);
  mdladd_term(x[40], &list, 1);
  mdlsort_termlst(&list);
  // x40: add, set 7, add 1, set 0, add 2 -> 2; x50: set 3, add 1 -> 4;
  // x60: add 1, add -1 -> absent; x70: set 0 -> absent.
  mdladd_term(x[40], &list, 1);
  mdlset_term(x[50], &list, 3);
  mdlset_term(x[40], &list, 7);
  mdladd_term(x[60], &list, 1);
  mdladd_term(x[40], &list, 1);
  mdladd_term(x[50], &list, 1);
  mdlset_term(x[40], &list, 0);
  mdladd_term(x[60], &list, -1);
  mdlset_term(x[70], &list, 0);
  mdladd_term(x[40], &list, 2);
  EXPECT_EQ(check_list<mdl_term>(list, false), "");
  EXPECT_EQ(mdlsort_termlst(&list), 1);
  EXPECT_EQ(check_list<mdl_term>(list, true), "");
  EXPECT_EQ(value_of<mdl_term>(list), terms({{0, 1}, {40, 2}, {50, 4}, {99, 1}}));
  EXPECT_EQ(raw_nodes<mdl_term>(list).size(), 4u);
}

TEST_F(LinearList, SortSumsLikeOneByOne) {
  // (0.1 + 0.2) + 0.3 differs from 0.1 + (0.2 + 0.3): the run's value comes
  // first, then the pending adds in order.
  mdladd_term(x[0], &list, 1);
  mdladd_term(x[9], &list, 1);
  mdladd_term(x[5], &list, 0.1);
  mdlsort_termlst(&list);
  mdladd_term(x[5], &list, 0.2);
  mdladd_term(x[5], &list, 0.3);
  mdlsort_termlst(&list);
  double expect = 0.1;
  expect += 0.2;
  expect += 0.3;
  EXPECT_EQ(value_of<mdl_term>(list)[key_of(x[5])], expect);
}

TEST_F(LinearList, SortReleasesLeadingZerosAndDeletesEmptyList) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, 1);
  mdladd_term(x[5], &list, 1);
  mdladd_term(x[1], &list, -1);   // zero first, kept while pending
  mdladd_term(x[9], &list, -1);   // zero last
  mdladd_term(x[5], &list, -1);
  EXPECT_EQ(mdlstriptermlst(&list), 1);
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(prob->refcount, 1);
}

TEST_F(LinearList, StripWithoutListOrPending) {
  EXPECT_EQ(mdlstriptermlst(&list), 0);
  EXPECT_EQ(mdlsort_termlst(&list), 0);
  EXPECT_EQ(mdlstriptermlst(nullptr), 0);
  mdladd_term(x[1], &list, 1);
  EXPECT_EQ(mdlstriptermlst(&list), 0);
}

// ---- Length, negation, scaling, copy ----------------------------------------

TEST_F(LinearList, LengthCountsNonZeroAndNaN) {
  EXPECT_EQ(mdlget_termlst_len(&list), 0);
  EXPECT_EQ(mdlget_termlst_len(nullptr), 0);
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, std::numeric_limits<double>::quiet_NaN());
  mdladd_term(x[5], &list, 1);
  mdladd_term(x[5], &list, 1);   // two pending nodes, one term
  EXPECT_EQ(mdlget_termlst_len(&list), 3);
  EXPECT_EQ(list->pending, 0);
}

TEST_F(LinearList, NegateIncludesPendingOperations) {
  EXPECT_EQ(mdlchs_termlst(&list), 0);
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, 2);
  mdladd_term(x[5], &list, 3);
  mdlset_term(x[6], &list, 4);
  EXPECT_EQ(mdlchs_termlst(&list), 1);
  EXPECT_EQ(check_list<mdl_term>(list, false), "");
  mdlstriptermlst(&list);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{1, -1}, {5, -3}, {6, -4}, {9, -2}}));
}

TEST_F(LinearList, ScaleByOneOrWithoutListChangesNothing) {
  EXPECT_EQ(mdlmulc_termlst(&list, 3.0), 0);
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, 2);
  mdladd_term(x[5], &list, 3);
  EXPECT_EQ(mdlmulc_termlst(&list, 1.0), 0);
  EXPECT_EQ(list->pending, 1);
  EXPECT_EQ(mdlmulc_termlst(&list, -2.5), 1);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{1, -2.5}, {5, -7.5}, {9, -5}}));
  EXPECT_EQ(check_list<mdl_term>(list, false), "");
}

TEST_F(LinearList, ScaleDoesNotTurnAPendingAddIntoAReset) {
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, 1);
  mdladd_term(x[5], &list, 5);
  mdlsort_termlst(&list);
  mdladd_term(x[5], &list, 1e-300);   // pending
  EXPECT_EQ(mdlmulc_termlst(&list, 1e-300), 1);
  mdlstriptermlst(&list);
  EXPECT_EQ(value_of<mdl_term>(list)[key_of(x[5])], (5 + 1e-300) * 1e-300);
  EXPECT_NE(value_of<mdl_term>(list)[key_of(x[5])], 0);
}

TEST_F(LinearList, CopyKeepsValueAndPendingOperations) {
  EXPECT_EQ(mdldup_termlst(&other, nullptr), 0);
  EXPECT_EQ(other, nullptr);
  mdladd_term(x[1], &list, 1);
  mdladd_term(x[9], &list, 2);
  mdladd_term(x[5], &list, 3);
  mdlset_term(x[6], &list, 4);
  const uint64_t before = live(prob);
  EXPECT_EQ(mdldup_termlst(&other, list), 1);
  EXPECT_EQ(live(prob), before + 1 + 5);
  EXPECT_EQ(prob->refcount, 3);
  EXPECT_EQ(raw_nodes<mdl_term>(other), raw_nodes<mdl_term>(list));
  EXPECT_EQ(other->pending, list->pending);
  EXPECT_EQ(other->resets, list->resets);
  EXPECT_EQ(check_list<mdl_term>(other, false), "");
  EXPECT_EQ(last_node<mdl_term>(other)->var, x[9]);
  mdlstriptermlst(&other);
  EXPECT_EQ(value_of<mdl_term>(other), value_of<mdl_term>(list));
}

// ---- Add-list ---------------------------------------------------------------

TEST_F(LinearList, AddListIntoEmptyCopies) {
  EXPECT_EQ(mdladd_termlst(&list, &other), 0);
  mdladd_term(x[1], &other, 1);
  mdladd_term(x[9], &other, 2);
  mdladd_term(x[5], &other, 3);
  EXPECT_EQ(mdladd_termlst(&list, &other), 1);
  EXPECT_NE(list, other);
  EXPECT_EQ(raw_nodes<mdl_term>(list), raw_nodes<mdl_term>(other));
  EXPECT_EQ(mdladd_termlst(&list, nullptr), 0);
}

TEST_F(LinearList, AddListEmptySourceChangesNothing) {
  mdladd_term(x[1], &list, 1);
  EXPECT_EQ(mdladd_termlst(&list, &other), 0);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{1, 1}}));
}

TEST_F(LinearList, AddListMergesRunsAndTails) {
  mdladd_term(x[10], &list, 1);
  mdladd_term(x[30], &list, 3);
  mdladd_term(x[20], &list, 2);    // pending in T
  mdladd_term(x[5], &other, 5);
  mdladd_term(x[30], &other, 1);
  mdladd_term(x[40], &other, 4);
  mdladd_term(x[20], &other, 7);   // pending in S
  mdladd_term(x[35], &other, 1);   // pending in S
  const auto source = raw_nodes<mdl_term>(other);
  EXPECT_EQ(mdladd_termlst(&list, &other), 1);
  EXPECT_EQ(raw_nodes<mdl_term>(other), source);
  EXPECT_EQ(check_list<mdl_term>(list, false), "");
  EXPECT_EQ(list->pending, 3);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{5, 5}, {10, 1}, {20, 9}, {30, 4}, {35, 1}, {40, 4}}));
  mdlstriptermlst(&list);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{5, 5}, {10, 1}, {20, 9}, {30, 4}, {35, 1}, {40, 4}}));
}

TEST_F(LinearList, AddListSortsListsHoldingResets) {
  mdladd_term(x[10], &list, 1);
  mdladd_term(x[30], &list, 3);
  mdlset_term(x[20], &list, 2);
  mdladd_term(x[10], &other, 1);
  mdladd_term(x[30], &other, 1);
  mdlset_term(x[20], &other, 5);
  EXPECT_EQ(mdladd_termlst(&list, &other), 1);
  EXPECT_EQ(other->pending, 0);   // sorted, same value
  EXPECT_EQ(value_of<mdl_term>(other), terms({{10, 1}, {20, 5}, {30, 1}}));
  EXPECT_EQ(list->pending, 0);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{10, 2}, {20, 7}, {30, 4}}));
}

TEST_F(LinearList, AddListSortsSourceWhenTailsWouldOverflow) {
  mdladd_term(x[0], &list, 1);
  mdladd_term(x[399], &list, 1);
  for (int i = 1; i <= 200; ++i) mdladd_term(x[i], &list, 1);
  mdladd_term(x[0], &other, 1);
  mdladd_term(x[399], &other, 1);
  for (int i = 100; i <= 155; ++i) mdladd_term(x[i], &other, 1);
  EXPECT_EQ(list->pending + other->pending, 256);
  EXPECT_EQ(mdladd_termlst(&list, &other), 1);
  EXPECT_EQ(other->pending, 0);
  EXPECT_EQ(list->pending, 200);
  EXPECT_EQ(check_list<mdl_term>(list, false), "");
  mdlstriptermlst(&list);
  auto v = value_of<mdl_term>(list);
  EXPECT_EQ(v.size(), 202u);
  EXPECT_EQ(v[key_of(x[0])], 2);
  EXPECT_EQ(v[key_of(x[120])], 2);
  EXPECT_EQ(v[key_of(x[199])], 1);
}

TEST_F(LinearList, AddListCancellingEverythingDeletesTarget) {
  mdladd_term(x[10], &list, 1);
  mdladd_term(x[30], &list, 3);
  mdladd_term(x[10], &other, -1);
  mdladd_term(x[30], &other, -3);
  EXPECT_EQ(mdladd_termlst(&list, &other), 1);
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(prob->refcount, 2);   // the source's
}

TEST_F(LinearList, AddListCancellingEndsWhilePendingKeepsThem) {
  mdladd_term(x[10], &list, 1);
  mdladd_term(x[30], &list, 3);
  mdladd_term(x[20], &list, 2);   // pending, between 10 and 30
  mdladd_term(x[10], &other, -1);
  mdladd_term(x[30], &other, -3);
  EXPECT_EQ(mdladd_termlst(&list, &other), 1);
  EXPECT_EQ(check_list<mdl_term>(list, false), "");
  EXPECT_EQ(value_of<mdl_term>(list), terms({{20, 2}}));
  mdlstriptermlst(&list);   // the zero first goes, the zero last may stay
  EXPECT_EQ(check_list<mdl_term>(list, true), "");
  EXPECT_EQ(first_node<mdl_term>(list)->var, x[20]);
  EXPECT_EQ(mdlget_termlst_len(&list), 1);
}

// x + 2y + 3z plus its negated copy, for every order of insertion (some
// leave y pending): nothing is left, so the reference becomes null.
TEST_F(LinearList, AddListOfNegatedCopyDeletesTargetWhateverIsPending) {
  std::vector<std::pair<int, double>> order{{10, 1}, {20, 2}, {30, 3}};
  do {
    for (auto [i, c] : order) mdladd_term(x[i], &list, c);
    ASSERT_EQ(mdldup_termlst(&other, list), 1);
    mdlchs_termlst(&other);
    EXPECT_EQ(mdladd_termlst(&list, &other), 1);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(value_of<mdl_term>(other), terms({{10, -1}, {20, -2}, {30, -3}}));
    EXPECT_EQ(prob->refcount, 2);   // only the source's header is left
    mdldel_termlst(&list);
    mdldel_termlst(&other);
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(LinearList, AddListToItselfDoubles) {
  mdladd_term(x[10], &list, 1);
  mdladd_term(x[30], &list, 3);
  mdladd_term(x[20], &list, 2);
  MDLtermlst *self = &list;
  EXPECT_EQ(mdladd_termlst(&list, self), 1);
  EXPECT_EQ(value_of<mdl_term>(list), terms({{10, 2}, {20, 4}, {30, 6}}));
}

// ---- Argument errors ----------------------------------------------------------

TEST_F(LinearList, NullVariableIsReported) {
  EXPECT_EQ(mdladd_term(nullptr, &list, 1), -1);
  EXPECT_EQ(mdlset_term(nullptr, &list, 1), -1);
  MDLtermlst q = nullptr;
  EXPECT_EQ(mdladd_qterm(x[1], nullptr, &q, 1), -1);
  EXPECT_EQ(mdlset_qterm(nullptr, x[1], &q, 1), -1);
  ASSERT_EQ(errors.size(), 4u);
  const char *names[] = {"add_term", "set_term", "add_qterm", "set_qterm"};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(errors[i].number, 1505);
    EXPECT_EQ(errors[i].iserror, 1);
    EXPECT_EQ(errors[i].text, std::string("(") + names[i] + ") No variable given.");
  }
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(q, nullptr);
}

TEST_F(LinearList, MissingListReferenceIsReported) {
  EXPECT_EQ(mdladd_term(x[1], nullptr, 1), -1);
  EXPECT_EQ(mdlset_qterm(x[1], x[2], nullptr, 1), -1);
  EXPECT_EQ(mdldup_termlst(nullptr, nullptr), -1);
  EXPECT_EQ(mdladd_qtermlst(nullptr, nullptr), -1);
  ASSERT_EQ(errors.size(), 4u);
  const char *names[] = {"add_term", "set_qterm", "dup_termlst", "add_qtermlst"};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(errors[i].number, 1565);
    EXPECT_EQ(errors[i].iserror, 1);
    EXPECT_EQ(errors[i].text, std::string("(") + names[i] + ") Internal error.");
  }
  EXPECT_EQ(mdldel_termlst(nullptr), 0);
  EXPECT_EQ(mdlchs_termlst(nullptr), 0);
  EXPECT_EQ(mdlmulc_termlst(nullptr, 2), 0);
}

// ---- Pools and problems ---------------------------------------------------------

TEST_F(LinearList, NodesComeFromTheFirstVariablesProblem) {
  MDLprob other_prob = new_problem();
  std::vector<MDLvar> y = make_vars(other_prob, 3);
  const uint64_t mine = live(prob), theirs = live(other_prob);
  mdladd_term(y[0], &list, 1);
  mdladd_term(y[2], &list, 1);
  mdladd_term(y[1], &list, 1);
  EXPECT_EQ(other_prob->refcount, 2);
  EXPECT_EQ(prob->refcount, 1);
  EXPECT_EQ(live(other_prob), theirs + 4);
  EXPECT_EQ(live(prob), mine);
  mdldel_termlst(&list);
  EXPECT_EQ(live(other_prob), theirs);
  EXPECT_EQ(other_prob->refcount, 1);
}

TEST_F(LinearList, ListKeepsItsProblemAlive) {
  MDLprob p = mdlallocprob();
  std::vector<MDLvar> y = make_vars(p, 3);
  mdladd_term(y[0], &list, 1);
  mdladd_term(y[1], &list, 2);
  mdldeallocprob(p);   // the owner lets go; the list still holds the pool
  EXPECT_EQ(p->refcount, 1);
  mdlstriptermlst(&list);
  EXPECT_EQ(mdlget_termlst_len(&list), 2);
  mdldel_termlst(&list);   // the last reference: the pool goes (ASan checks)
}

TEST_F(LinearList, ExpressionStripCoversBothLists) {
  mdl_expr e{3.0, nullptr, nullptr};
  EXPECT_EQ(mdlstripexpr(&e), 0);
  EXPECT_EQ(mdlstripexpr(nullptr), 0);
  mdladd_term(x[1], &e.lin, 1);
  mdladd_term(x[9], &e.lin, 1);
  mdladd_term(x[5], &e.lin, 1);
  mdladd_qterm(x[1], x[1], &e.quad, 1);
  mdladd_qterm(x[9], x[9], &e.quad, 1);
  mdladd_qterm(x[5], x[6], &e.quad, 1);
  EXPECT_EQ(e.lin->pending, 1);
  EXPECT_EQ(e.quad->pending, 1);
  EXPECT_EQ(mdlstripexpr(&e), 1);
  EXPECT_EQ(e.lin->pending, 0);
  EXPECT_EQ(e.quad->pending, 0);
  EXPECT_EQ(e.constant, 3.0);
  mdldel_termlst(&e.lin);
  mdldel_qtermlst(&e.quad);
}

// ---- Quadratic lists ---------------------------------------------------------

class QuadList : public TermListTest {
 protected:
  void SetUp() override {
    TermListTest::SetUp();
    x = make_vars(prob, 40);
  }
  void TearDown() override {
    mdldel_qtermlst(&list);
    mdldel_qtermlst(&other);
    TermListTest::TearDown();
  }
  quad_key k(int i, int j) { return key_of(x[i], x[j]); }
  std::vector<MDLvar> x;
  MDLtermlst list = nullptr;
  MDLtermlst other = nullptr;
};

TEST_F(QuadList, OrderIsFirstVariableThenSecond) {
  mdladd_qterm(x[2], x[5], &list, 1);
  mdladd_qterm(x[1], x[9], &list, 2);   // below first
  mdladd_qterm(x[2], x[7], &list, 3);   // beyond last
  mdladd_qterm(x[2], x[3], &list, 4);   // inside
  mdladd_qterm(x[1], x[9], &list, 1);   // on first
  EXPECT_EQ(list->pending, 1);
  mdlstripqtermlst(&list);
  EXPECT_EQ(check_list<mdl_qterm>(list, true), "");
  std::vector<std::pair<quad_key, double>> want{{k(1, 9), 3}, {k(2, 3), 4}, {k(2, 5), 1}, {k(2, 7), 3}};
  EXPECT_EQ(raw_nodes<mdl_qterm>(list), want);
}

TEST_F(QuadList, AddListOfNegatedCopyDeletesTargetWhateverIsPending) {
  std::vector<std::pair<int, double>> order{{10, 1}, {20, 2}, {30, 3}};
  do {
    for (auto [i, c] : order) mdladd_qterm(x[i], x[i + 1], &list, c);
    ASSERT_EQ(mdldup_qtermlst(&other, list), 1);
    mdlchs_qtermlst(&other);
    EXPECT_EQ(mdladd_qtermlst(&list, &other), 1);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(prob->refcount, 2);
    mdldel_qtermlst(&list);
    mdldel_qtermlst(&other);
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(QuadList, PairsAreStoredInHandleOrder) {
  mdladd_qterm(x[7], x[3], &list, 1);
  mdlset_qterm(x[9], x[1], &list, 2);
  EXPECT_EQ(first_node<mdl_qterm>(list)->var1, x[1]);
  EXPECT_EQ(first_node<mdl_qterm>(list)->var2, x[9]);
  EXPECT_EQ(last_node<mdl_qterm>(list)->var1, x[3]);
  EXPECT_EQ(last_node<mdl_qterm>(list)->var2, x[7]);
}

TEST_F(QuadList, SetCasesAndResets) {
  EXPECT_EQ(mdlset_qterm(x[1], x[1], &list, 0), 0);
  EXPECT_EQ(mdlset_qterm(x[1], x[1], &list, 1), 1);
  EXPECT_EQ(mdlset_qterm(x[5], x[5], &list, 5), 1);
  EXPECT_EQ(mdlset_qterm(x[5], x[5], &list, 5), 0);
  mdladd_qterm(x[2], x[3], &list, 1);
  mdladd_qterm(x[2], x[3], &list, 1);
  EXPECT_EQ(mdlset_qterm(x[2], x[3], &list, 5), 1);
  EXPECT_EQ(mdlset_qterm(x[3], x[4], &list, 0), 1);
  EXPECT_EQ(list->pending, 5);
  EXPECT_EQ(list->resets, 3);
  mdlstripqtermlst(&list);
  std::vector<std::pair<quad_key, double>> want{{k(1, 1), 1}, {k(2, 3), 5}, {k(5, 5), 5}};
  EXPECT_EQ(raw_nodes<mdl_qterm>(list), want);
  EXPECT_EQ(mdlset_qterm(x[1], x[1], &list, 0), 1);   // first, released
  EXPECT_EQ(first_node<mdl_qterm>(list)->var1, x[2]);
}

TEST_F(QuadList, TailLimitsAreThoseOfLinearLists) {
  mdladd_qterm(x[0], x[0], &list, 1);
  mdladd_qterm(x[39], x[39], &list, 1);
  int added = 0;
  for (int i = 1; i < 39 && added < 255; ++i)
    for (int j = i; j < 40 && added < 255; ++j, ++added) mdladd_qterm(x[i], x[j], &list, 1);
  EXPECT_EQ(list->pending, 255);
  mdladd_qterm(x[38], x[39], &list, 1);
  EXPECT_EQ(list->pending, 1);
  mdlsort_qtermlst(&list);
  for (int i = 0; i < 254; ++i) mdladd_qterm(x[1], x[1], &list, 1);
  EXPECT_EQ(list->pending, 254);
  mdlset_qterm(x[1], x[2], &list, 2);
  EXPECT_EQ(list->pending, 2);
  EXPECT_EQ(check_list<mdl_qterm>(list, false), "");
}

TEST_F(QuadList, LengthNegateScaleCopyAdd) {
  mdladd_qterm(x[1], x[2], &list, 1);
  mdladd_qterm(x[5], x[6], &list, 2);
  mdladd_qterm(x[3], x[3], &list, 3);
  mdladd_qterm(x[3], x[3], &list, -3);
  EXPECT_EQ(mdlget_qtermlst_len(&list), 2);
  EXPECT_EQ(mdlchs_qtermlst(&list), 1);
  EXPECT_EQ(mdlmulc_qtermlst(&list, 2), 1);
  EXPECT_EQ(mdldup_qtermlst(&other, list), 1);
  EXPECT_EQ(mdladd_qtermlst(&other, &list), 1);
  std::vector<std::pair<quad_key, double>> want{{k(1, 2), -4}, {k(5, 6), -8}};
  EXPECT_EQ(raw_nodes<mdl_qterm>(other), want);
  EXPECT_EQ(mdlmulc_qtermlst(&other, 0), 1);
  EXPECT_EQ(other, nullptr);
  mdladd_qterm(x[1], x[2], &other, 2);
  mdladd_qterm(x[5], x[6], &other, 4);
  EXPECT_EQ(mdladd_qtermlst(&list, &other), 1);
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(prob->refcount, 2);
}

}  // namespace
}  // namespace termtest
