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

// The allocator fails from the `n`-th call on while armed (1: the first),
// counting the calls.
int &failing_from() {
  static int n = 0;
  return n;
}
int &malloc_calls() {
  static int n = 0;
  return n;
}
void *fail_from_nth(size_t size) {
  ++malloc_calls();
  if (failing_from() > 0 && --failing_from() == 0) {
    failing_from() = 1;   // stays failing
    return nullptr;
  }
  return malloc(size);
}

class LongList : public TermListTest {
 protected:
  void SetUp() override {
    TermListTest::SetUp();
    x = make_vars(prob, 100000);
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

  // Strip with the allocator failing from its `n`-th call on (0: never);
  // returns the number of calls made.
  int strip_failing_from(int n) {
    failing_from() = n;
    malloc_calls() = 0;
    mdlsl_malloc = fail_from_nth;
    std::string result = strip_and_compare();
    mdlsl_malloc = failing_malloc;
    failing_from() = 0;
    EXPECT_EQ(result, "");
    return malloc_calls();
  }

  // Does the run go forward through memory, node after node?
  bool run_in_address_order() const {
    for (const mdl_term *n = first_node<mdl_term>(list); n->next != nullptr; n = n->next)
      if (!(reinterpret_cast<uintptr_t>(n) < reinterpret_cast<uintptr_t>(n->next))) return false;
    return true;
  }

  // The variables of [from, to) in steps of `step`, shuffled.
  std::vector<int> shuffled(std::mt19937_64 &rng, int from, int to, int step) {
    std::vector<int> order;
    for (int i = from; i < to; i += step) order.push_back(i);
    std::shuffle(order.begin(), order.end(), rng);
    return order;
  }

  // Adds of the variables `order[k]` for k in [from, to), mirrored.
  void adds(const std::vector<int> &order, size_t from, size_t to, double coef) {
    for (size_t k = from; k < to; ++k) {
      ASSERT_EQ(mdladd_term(x[order[k]], &list, coef), 1);
      model[key_of(x[order[k]])] += coef;
    }
  }

  // A run that grows beyond its end to 70 000 nodes without a merge, then
  // a tail inside it just long enough for its merge to be recorded: the
  // run is much longer than the record's first estimate.
  void outgrow_the_estimate(std::mt19937_64 &rng) {
    const std::vector<int> evens = shuffled(rng, 0, 60000, 2);
    adds(evens, 0, evens.size(), 1.5);
    mdlstriptermlst(&list);
    for (int i = 60000; i < 100000; ++i) {
      ASSERT_EQ(mdladd_term(x[i], &list, 0.5), 1);
      model[key_of(x[i])] = 0.5;
    }
    ASSERT_EQ(list->pending, 0);
    const size_t run_before = (static_cast<size_t>(list->room) + 1) * 128;
    ASSERT_LT(run_before, kvtl::layout_run);
    const size_t tail = kvtl::layout_run - run_before + 100;
    ASSERT_LE(tail, static_cast<size_t>(kvtl::tail_limit(list)));
    const std::vector<int> odds = shuffled(rng, 1, 60000, 2);
    ASSERT_LE(tail, odds.size());
    adds(odds, 0, tail, 2.0);
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
  // 50 000 terms in random order: the run outgrows the nearest caches.
  const std::vector<int> order = shuffled(rng, 0, 100000, 2);
  adds(order, 0, order.size(), 1.5);
  ASSERT_EQ(strip_and_compare(), "");
  // The nodes were taken in the order of the adds, i.e. not in list order;
  // after the long merge the run walks forward through memory.
  EXPECT_TRUE(run_in_address_order());
  // Later operations see the same value as the map's.
  ASSERT_EQ(random_ops(rng, 100000, 50000), "");
  ASSERT_EQ(check_value(), "");
  ASSERT_EQ(strip_and_compare(), "");
  EXPECT_TRUE(errors.empty());
}

TEST_F(LongList, ShortRunIsNotLaidOut) {
  std::mt19937_64 rng(53);
  // 10 000 terms: long tails, but a run that the caches hold.
  const std::vector<int> order = shuffled(rng, 0, 20000, 2);
  adds(order, 0, order.size(), 1.5);
  ASSERT_EQ(strip_and_compare(), "");
  EXPECT_FALSE(run_in_address_order());
}

TEST_F(LongList, LayoutWithoutItsRecordKeepsTheRunAsItIs) {
  std::mt19937_64 rng(43);
  const std::vector<int> order = shuffled(rng, 0, 100000, 2);
  adds(order, 0, order.size(), 1.5);
  ASSERT_GT(list->pending, kvtl::max_pending);
  // The merge gets its array (first call), the run's record does not
  // (second).
  EXPECT_EQ(strip_failing_from(2), 2);
  EXPECT_FALSE(run_in_address_order());
  EXPECT_TRUE(errors.empty());
}

TEST_F(LongList, RecordThatCannotGrowLeavesTheRunAsItIs) {
  std::mt19937_64 rng(47);
  outgrow_the_estimate(rng);
  // Array (first call), record (second), its growth fails (third).
  EXPECT_EQ(strip_failing_from(3), 3);
  EXPECT_FALSE(run_in_address_order());
  EXPECT_TRUE(errors.empty());
}

TEST_F(LongList, RecordGrowsWithTheRun) {
  std::mt19937_64 rng(59);
  outgrow_the_estimate(rng);
  // Array, record, and at least one growth, all given.
  EXPECT_GE(strip_failing_from(0), 3);
  EXPECT_TRUE(run_in_address_order());
  EXPECT_TRUE(errors.empty());
}

}  // namespace
}  // namespace termtest
