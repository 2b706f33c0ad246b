/*
 * long_list_test.cpp -- term lists whose run is long enough for the tail to
 * grow past 255 pending operations: values against a plain map, the bound
 * of the grown tail, and the merge without its temporary array.
 */
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

}  // namespace
}  // namespace termtest
