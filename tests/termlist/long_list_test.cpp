/*
 * long_list_test.cpp -- term lists whose run is long enough for the tail to
 * grow past 255 pending operations: values against a plain map, the bound
 * of the grown tail, the merge without its temporary array, and the run
 * laid out in address order after a long merge.
 */
#include <stdint.h>
#include <stdlib.h>

#include <random>

#include "support.h"

namespace termtest {
namespace {

class LongList : public TermListTest {
 protected:
  void SetUp() override {
    TermListTest::SetUp();
    x = make_vars(prob, 40000);
  }
  void TearDown() override {
    malloc_fails() = false;
    mdldel_termlst(&list);
    TermListTest::TearDown();
  }

  // Random adds (a tenth cancelling the current value), sets and deletes of
  // the first `nvars` variables, mirrored in `model`; records the longest
  // tail seen and checks after each operation that the tail stays within
  // its limit.
  std::string random_ops(std::mt19937_64 &rng, int nvars, int nops) {
    std::uniform_int_distribution<int> var(0, nvars - 1);
    std::uniform_int_distribution<int> kind(0, 99);
    std::uniform_int_distribution<int> small(1, 9);
    for (int op = 0; op < nops; ++op) {
      MDLvar v = x[var(rng)];
      const auto key = key_of(v);
      const int k = kind(rng);
      if (k < 80) {
        auto it = model.find(key);
        const double c = (it != model.end() && k < 8) ? -it->second : small(rng) * 0.25;
        if (mdladd_term(v, &list, c) != 1) return "add-term failed";
        double &m = model[key];
        m += c;
        if (m == 0) model.erase(key);
      } else if (k < 92) {
        const double c = small(rng) * 0.5;
        if (mdlset_term(v, &list, c) < 0) return "set-term failed";
        model[key] = c;
      } else {
        if (mdlset_term(v, &list, 0.0) < 0) return "delete failed";
        model.erase(key);
      }
      if (list != nullptr) {
        if (list->pending > longest_tail) longest_tail = list->pending;
        if (list->pending > kvtl::tail_limit(list)) return "pending above its limit";
        if (list->resets < 0 || list->resets > list->pending) return "resets out of bounds";
      }
    }
    return "";
  }

  // The run is strictly ascending, every pending node lies inside it and
  // the tail has `pending` nodes; the value equals the map's.
  std::string check_value() {
    if (list == nullptr) return model.empty() ? "" : "list gone, map not empty";
    const mdl_term *last = last_node<mdl_term>(list);
    const mdl_term *n = first_node<mdl_term>(list);
    for (; n != last; n = n->next) {
      if (n->next == nullptr) return "last not reachable from first";
      if (!(key_of(*n) < key_of(*n->next))) return "run not strictly ascending";
    }
    int tail = 0;
    for (const mdl_term *p = last->next; p != nullptr; p = p->next) {
      ++tail;
      if (!(key_of(*first_node<mdl_term>(list)) < key_of(*p) && key_of(*p) < key_of(*last)))
        return "pending term outside (first, last)";
    }
    if (tail != list->pending) return "tail length differs from pending";
    if (value_of<mdl_term>(list) != model) return "value differs from map";
    return "";
  }

  // Strip, then the list holds the map's terms (zero nodes aside), sorted.
  std::string strip_and_compare() {
    mdlstriptermlst(&list);
    if (list == nullptr) return model.empty() ? "" : "list gone, map not empty";
    if (list->pending != 0 || list->resets != 0) return "strip left pending";
    if (first_node<mdl_term>(list)->coef == 0) return "first node zero after strip";
    value_map<mdl_term> seen;
    for (const mdl_term *n = first_node<mdl_term>(list); n != nullptr; n = n->next) {
      if (n->next != nullptr && !(key_of(*n) < key_of(*n->next))) return "not sorted";
      if (n->coef != 0) seen[key_of(*n)] = n->coef;
    }
    return seen == model ? "" : "terms differ from map";
  }

  // Does the run go forward through memory, node after node?
  bool run_in_address_order() const {
    for (const mdl_term *n = first_node<mdl_term>(list); n->next != nullptr; n = n->next)
      if (!(reinterpret_cast<uintptr_t>(n) < reinterpret_cast<uintptr_t>(n->next))) return false;
    return true;
  }

  // Adds of every other variable in a shuffled order: a long run built
  // through long tails.
  void shuffled_adds(std::mt19937_64 &rng) {
    std::vector<int> order;
    for (int i = 0; i < 40000; i += 2) order.push_back(i);
    std::shuffle(order.begin(), order.end(), rng);
    for (int i : order) {
      ASSERT_EQ(mdladd_term(x[i], &list, 1.0 + i), 1);
      model[key_of(x[i])] = 1.0 + i;
    }
  }

  std::vector<MDLvar> x;
  MDLtermlst list = nullptr;
  value_map<mdl_term> model;
  int longest_tail = 0;
};

TEST_F(LongList, RandomOperationsMatchAMap) {
  std::mt19937_64 rng(17);
  for (int round = 0; round < 6; ++round) {
    ASSERT_EQ(random_ops(rng, 40000, 30000), "") << "round " << round;
    ASSERT_EQ(check_value(), "") << "round " << round;
  }
  // The run grew long enough for the tail to pass the short-list bound.
  EXPECT_GT(longest_tail, kvtl::max_pending);
  ASSERT_EQ(strip_and_compare(), "");
  EXPECT_TRUE(errors.empty());
}

TEST_F(LongList, ShortListKeepsTheShortTail) {
  std::mt19937_64 rng(5);
  ASSERT_EQ(random_ops(rng, 3000, 100000), "");
  EXPECT_LE(longest_tail, kvtl::max_pending);
  ASSERT_EQ(strip_and_compare(), "");
}

TEST_F(LongList, MergeWithoutItsTemporaryArray) {
  std::mt19937_64 rng(29);
  // Ascending adds make a long run; then random adds fill a long tail.
  for (int i = 0; i < 40000; i += 2) {
    ASSERT_EQ(mdladd_term(x[i], &list, 1.0), 1);
    model[key_of(x[i])] = 1.0;
  }
  ASSERT_EQ(random_ops(rng, 40000, 60000), "");
  ASSERT_NE(list, nullptr);
  ASSERT_GT(list->pending, kvtl::max_pending);
  ASSERT_EQ(check_value(), "");
  // The allocator fails: the merge works through the stack array in
  // batches, reports nothing and gives the same terms.
  malloc_fails() = true;
  ASSERT_EQ(strip_and_compare(), "");
  malloc_fails() = false;
  EXPECT_TRUE(errors.empty());
}

TEST_F(LongList, LongMergeLaysTheRunOutInAddressOrder) {
  std::mt19937_64 rng(41);
  shuffled_adds(rng);
  ASSERT_EQ(strip_and_compare(), "");
  // The nodes were taken in the order of the adds, i.e. not in list order;
  // after the long merge the run walks forward through memory.
  EXPECT_TRUE(run_in_address_order());
  // Later operations see the same value as the map's.
  ASSERT_EQ(random_ops(rng, 40000, 50000), "");
  ASSERT_EQ(check_value(), "");
  ASSERT_EQ(strip_and_compare(), "");
  EXPECT_TRUE(errors.empty());
}

TEST_F(LongList, RunThatOutgrewItsRecordIsLeftAsItIs) {
  std::mt19937_64 rng(47);
  std::vector<int> order;
  for (int i = 0; i < 20000; i += 2) order.push_back(i);
  std::shuffle(order.begin(), order.end(), rng);
  for (int i : order) {
    ASSERT_EQ(mdladd_term(x[i], &list, 1.0 + i), 1);
    model[key_of(x[i])] = 1.0 + i;
  }
  mdlstriptermlst(&list);
  // Beyond the run's end: the run grows without a merge.
  for (int i = 20000; i < 40000; ++i) {
    ASSERT_EQ(mdladd_term(x[i], &list, 0.5), 1);
    model[key_of(x[i])] = 0.5;
  }
  ASSERT_EQ(list->pending, 0);
  // A long tail inside the run; its merge meets more run nodes than the
  // record has room for.
  order.clear();
  for (int i = 1; i < 20000; i += 2) order.push_back(i);
  std::shuffle(order.begin(), order.end(), rng);
  for (size_t k = 0; k < 5000; ++k) {
    ASSERT_EQ(mdladd_term(x[order[k]], &list, 2.0), 1);
    model[key_of(x[order[k]])] = 2.0;
  }
  ASSERT_GT(list->pending, kvtl::max_pending);
  ASSERT_EQ(strip_and_compare(), "");
  EXPECT_FALSE(run_in_address_order());
  EXPECT_TRUE(errors.empty());
}

// The allocator fails from the `n`-th call on while armed (1: the first).
int &failing_from() {
  static int n = 0;
  return n;
}
void *fail_from_nth(size_t size) {
  if (failing_from() > 0 && --failing_from() == 0) {
    failing_from() = 1;   // stays failing
    return nullptr;
  }
  return malloc(size);
}

TEST_F(LongList, LayoutWithoutItsArrayKeepsTheRunAsItIs) {
  std::mt19937_64 rng(43);
  std::vector<int> order;
  for (int i = 0; i < 40000; i += 2) order.push_back(i);
  std::shuffle(order.begin(), order.end(), rng);
  // Everything but the last few thousand adds, then a long tail.
  for (size_t k = 0; k + 6000 < order.size(); ++k) {
    ASSERT_EQ(mdladd_term(x[order[k]], &list, 1.0 + order[k]), 1);
    model[key_of(x[order[k]])] = 1.0 + order[k];
  }
  mdlstriptermlst(&list);
  for (size_t k = order.size() - 6000; k < order.size(); ++k) {
    ASSERT_EQ(mdladd_term(x[order[k]], &list, 1.0 + order[k]), 1);
    model[key_of(x[order[k]])] = 1.0 + order[k];
  }
  ASSERT_GT(list->pending, kvtl::max_pending);
  // The merge gets its array (first call), the run's record does not
  // (second).
  failing_from() = 2;
  mdlsl_malloc = fail_from_nth;
  ASSERT_EQ(strip_and_compare(), "");
  mdlsl_malloc = failing_malloc;
  failing_from() = 0;
  EXPECT_FALSE(run_in_address_order());
  EXPECT_TRUE(errors.empty());
}

}  // namespace
}  // namespace termtest
