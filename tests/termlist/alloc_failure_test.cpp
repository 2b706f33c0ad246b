/*
 * alloc_failure_test.cpp -- term lists when the pool cannot grow: the list
 * stays as it was before the failed node, -1 is returned, error 1502 is
 * reported and nothing is lost or leaked.
 */
#include <random>

#include "support.h"

namespace termtest {
namespace {

class AllocFailure : public TermListTest {
 public:
  using TermListTest::leave_room_for;

 protected:
  void SetUp() override {
    TermListTest::SetUp();
    x = make_vars(prob, 300);
  }
  void TearDown() override {
    malloc_fails() = false;
    mdldel_termlst(&list);
    mdldel_termlst(&other);
    TermListTest::TearDown();
  }

  // Exactly the errors reported since the last call were `count` times 1502.
  void expect_no_memory(size_t count) {
    ASSERT_EQ(errors.size(), count);
    for (const reported &e : errors) {
      EXPECT_EQ(e.number, 1502);
      EXPECT_EQ(e.iserror, 1);
      EXPECT_EQ(e.text, "Not enough memory.");
    }
    errors.clear();
  }

  std::vector<MDLvar> x;
  MDLtermlst list = nullptr;
  MDLtermlst other = nullptr;
};

TEST_F(AllocFailure, NewListWithoutRoomForItsNode) {
  const uint64_t chunks = live(prob);
  leave_room_for(prob, 1, sizeof(mdl_termlst));
  const uint64_t filled = live(prob);
  malloc_fails() = true;
  EXPECT_EQ(mdladd_term(x[3], &list, 1), -1);
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(prob->refcount, 1);
  EXPECT_EQ(live(prob), filled);
  expect_no_memory(1);
  EXPECT_EQ(mdlset_term(x[3], &list, 1), -1);
  EXPECT_EQ(list, nullptr);
  expect_no_memory(1);
  malloc_fails() = false;
  EXPECT_EQ(mdladd_term(x[3], &list, 1), 1);
  EXPECT_GT(live(prob), chunks);
}

TEST_F(AllocFailure, NewListWithoutRoomForItsHeader) {
  leave_room_for(prob, 0, sizeof(mdl_termlst));
  malloc_fails() = true;
  EXPECT_EQ(mdladd_qterm(x[1], x[2], &list, 1), -1);
  EXPECT_EQ(list, nullptr);
  EXPECT_EQ(prob->refcount, 1);
  expect_no_memory(1);
}

TEST_F(AllocFailure, EachInsertingCaseLeavesListUnchanged) {
  mdladd_term(x[10], &list, 1);
  mdladd_term(x[20], &list, 2);
  mdladd_term(x[15], &list, 3);
  const auto nodes = raw_nodes<mdl_term>(list);
  leave_room_for(prob, 0, sizeof(mdl_term));
  const uint64_t filled = live(prob);
  malloc_fails() = true;
  EXPECT_EQ(mdladd_term(x[30], &list, 1), -1);   // beyond last
  EXPECT_EQ(mdladd_term(x[5], &list, 1), -1);    // below first
  EXPECT_EQ(mdladd_term(x[12], &list, 1), -1);   // tail
  EXPECT_EQ(mdlset_term(x[30], &list, 1), -1);
  EXPECT_EQ(mdlset_term(x[5], &list, 1), -1);
  EXPECT_EQ(mdlset_term(x[12], &list, 1), -1);
  EXPECT_EQ(mdlset_term(x[12], &list, 0), -1);
  expect_no_memory(7);
  // Cases that need no node still work.
  EXPECT_EQ(mdladd_term(x[20], &list, 1), 1);
  EXPECT_EQ(mdlset_term(x[10], &list, 4), 1);
  EXPECT_EQ(mdlstriptermlst(&list), 1);
  EXPECT_EQ(mdlchs_termlst(&list), 1);
  EXPECT_EQ(mdlmulc_termlst(&list, 2), 1);
  expect_no_memory(0);
  malloc_fails() = false;
  EXPECT_EQ(check_list<mdl_term>(list, true), "");
  EXPECT_EQ(value_of<mdl_term>(list),
            (value_map<mdl_term>{{key_of(x[10]), -8}, {key_of(x[15]), -6}, {key_of(x[20]), -6}}));
  EXPECT_EQ(nodes.size(), 3u);
  EXPECT_LE(live(prob), filled);
}

TEST_F(AllocFailure, SetWhoseValueNodeFailsGivesTheMarkerBack) {
  mdladd_term(x[10], &list, 1);
  mdladd_term(x[20], &list, 2);
  mdladd_term(x[15], &list, 3);
  const auto nodes = raw_nodes<mdl_term>(list);
  leave_room_for(prob, 1, sizeof(mdl_term));
  const uint64_t filled = live(prob);
  malloc_fails() = true;
  EXPECT_EQ(mdlset_term(x[12], &list, 5), -1);
  expect_no_memory(1);
  EXPECT_EQ(raw_nodes<mdl_term>(list), nodes);
  EXPECT_EQ(list->pending, 1);
  EXPECT_EQ(list->resets, 0);
  EXPECT_EQ(live(prob), filled);
  // A delete needs the marker only: it fits.
  EXPECT_EQ(mdlset_term(x[15], &list, 0), 1);
  EXPECT_EQ(list->resets, 1);
}

TEST_F(AllocFailure, QuadraticSetWhoseValueNodeFails) {
  mdladd_qterm(x[1], x[1], &list, 1);
  mdladd_qterm(x[9], x[9], &list, 1);
  const auto nodes = raw_nodes<mdl_qterm>(list);
  leave_room_for(prob, 1, sizeof(mdl_qterm));
  const uint64_t filled = live(prob);
  malloc_fails() = true;
  EXPECT_EQ(mdlset_qterm(x[2], x[3], &list, 5), -1);
  expect_no_memory(1);
  EXPECT_EQ(raw_nodes<mdl_qterm>(list), nodes);
  EXPECT_EQ(list->pending, 0);
  EXPECT_EQ(live(prob), filled);
  malloc_fails() = false;
  mdldel_qtermlst(&list);
}

TEST_F(AllocFailure, CopyFailingHalfWayReleasesWhatItCopied) {
  mdladd_term(x[10], &list, 1);
  mdladd_term(x[20], &list, 2);
  mdladd_term(x[15], &list, 3);
  leave_room_for(prob, 2, sizeof(mdl_term));   // the header and one node
  const uint64_t filled = live(prob);
  malloc_fails() = true;
  other = reinterpret_cast<MDLtermlst>(&list);   // overwritten, not released
  EXPECT_EQ(mdldup_termlst(&other, list), -1);
  EXPECT_EQ(other, nullptr);
  EXPECT_EQ(live(prob), filled);
  EXPECT_EQ(prob->refcount, 2);
  expect_no_memory(1);
}

TEST_F(AllocFailure, ListSumFailingLeavesBothLists) {
  mdladd_term(x[10], &list, 1);
  mdladd_term(x[20], &list, 2);
  mdladd_term(x[15], &list, 3);
  mdladd_term(x[10], &other, 1);
  mdladd_term(x[25], &other, 2);   // new to the target
  mdladd_term(x[12], &other, 3);   // pending, copied into the target's tail
  const auto target = raw_nodes<mdl_term>(list);
  const auto source = raw_nodes<mdl_term>(other);
  leave_room_for(prob, 1, sizeof(mdl_term));
  const uint64_t filled = live(prob);
  malloc_fails() = true;
  EXPECT_EQ(mdladd_termlst(&list, &other), -1);
  expect_no_memory(1);
  EXPECT_EQ(raw_nodes<mdl_term>(list), target);
  EXPECT_EQ(raw_nodes<mdl_term>(other), source);
  EXPECT_EQ(list->pending, 1);
  EXPECT_EQ(live(prob), filled);
  malloc_fails() = false;
  EXPECT_EQ(mdladd_termlst(&list, &other), 1);
  mdlstriptermlst(&list);
  EXPECT_EQ(value_of<mdl_term>(list),
            (value_map<mdl_term>{{key_of(x[10]), 2}, {key_of(x[12]), 3}, {key_of(x[15]), 3},
                                 {key_of(x[20]), 2}, {key_of(x[25]), 2}}));
}

// Every operation of a long random build runs with the pool unable to grow:
// whenever one needs a new block it must fail cleanly, and succeed once
// memory is back.
template <class Node>
struct sweep_ops;
template <>
struct sweep_ops<mdl_term> {
  static int add(MDLvar a, MDLvar, MDLtermlst *l, double c) { return mdladd_term(a, l, c); }
  static int set(MDLvar a, MDLvar, MDLtermlst *l, double c) { return mdlset_term(a, l, c); }
  static int dup(MDLtermlst *t, MDLtermlst s) { return mdldup_termlst(t, s); }
  static int sum(MDLtermlst *t, MDLtermlst *s) { return mdladd_termlst(t, s); }
  static int del(MDLtermlst *l) { return mdldel_termlst(l); }
};
template <>
struct sweep_ops<mdl_qterm> {
  static int add(MDLvar a, MDLvar b, MDLtermlst *l, double c) { return mdladd_qterm(a, b, l, c); }
  static int set(MDLvar a, MDLvar b, MDLtermlst *l, double c) { return mdlset_qterm(a, b, l, c); }
  static int dup(MDLtermlst *t, MDLtermlst s) { return mdldup_qtermlst(t, s); }
  static int sum(MDLtermlst *t, MDLtermlst *s) { return mdladd_qtermlst(t, s); }
  static int del(MDLtermlst *l) { return mdldel_qtermlst(l); }
};

template <class Node>
void sweep(MDLprob prob, const std::vector<MDLvar> &x, uint64_t seed,
           std::vector<reported> &errors) {
  using ops = sweep_ops<Node>;
  const bool quad = sizeof(Node) == sizeof(mdl_qterm);
  std::mt19937_64 rng(seed);
  auto uniform = [&rng](int a, int b) { return std::uniform_int_distribution<int>(a, b)(rng); };
  MDLtermlst lists[2] = {nullptr, nullptr};
  std::vector<MDLtermlst> kept;
  int failed[4] = {0, 0, 0, 0};
  const uint64_t chunks = prob->pool->live;
  uint64_t fillers = 0;
  for (int op = 0; op < 20000; ++op) {
    SCOPED_TRACE("seed " + std::to_string(seed) + " operation " + std::to_string(op));
    const int w = uniform(0, 1);
    int a = uniform(0, static_cast<int>(x.size()) - 1), b = quad ? uniform(0, 29) : a;
    if (quad) {
      a %= 30;
      if (b < a) std::swap(a, b);
    }
    const int kind = uniform(0, 99) < 70 ? 0 : uniform(0, 99) < 80 ? 1 : uniform(0, 1) ? 2 : 3;
    const double v = uniform(-3, 3) + 0.5;
    const auto before = image_of<Node>(lists[w]);
    const auto before_other = image_of<Node>(lists[1 - w]);
    MDLtermlst copy = nullptr;
    auto run = [&] {
      switch (kind) {
        case 0: return ops::add(x[a], x[b], &lists[w], v);
        case 1: return ops::set(x[a], x[b], &lists[w], uniform(0, 3) ? v : 0.0);
        case 2: return ops::dup(&copy, lists[w]);
        default: return ops::sum(&lists[w], &lists[1 - w]);
      }
    };
    // Now and then the current block is filled up to a node or two.
    if (uniform(0, 19) == 0) fillers += AllocFailure::leave_room_for(prob, uniform(0, 2), sizeof(Node));
    malloc_fails() = true;
    int rc = run();
    malloc_fails() = false;
    if (rc == -1) {
      ++failed[kind];
      ASSERT_EQ(errors.size(), 1u);
      EXPECT_EQ(errors[0].number, 1502);
      errors.clear();
      ASSERT_EQ(value_of<Node>(lists[w]), value_of<Node>(before));
      ASSERT_EQ(value_of<Node>(lists[1 - w]), value_of<Node>(before_other));
      ASSERT_EQ(check_list<Node>(lists[w], false), "");
      ASSERT_EQ(copy, nullptr);
      rc = run();
      ASSERT_GE(rc, 0);
    }
    ASSERT_TRUE(errors.empty());
    ASSERT_EQ(prob->refcount, 1 + (lists[0] != nullptr) + (lists[1] != nullptr) +
                                  static_cast<int>(kept.size()) + (copy != nullptr));
    if (copy != nullptr) {
      ASSERT_EQ(raw_nodes<Node>(copy), raw_nodes<Node>(lists[w]));
      // Copies kept to the end make the pool grow all along.
      if (uniform(0, 3) == 0) kept.push_back(copy); else ops::del(&copy);
    }
    if (uniform(0, 999) == 0) ops::del(&lists[w]);
  }
  ops::del(&lists[0]);
  ops::del(&lists[1]);
  for (MDLtermlst &l : kept) ops::del(&l);
  EXPECT_EQ(prob->pool->live, chunks + fillers);
  for (int kind = 0; kind < 4; ++kind) EXPECT_GT(failed[kind], 10) << "kind " << kind;
}

TEST_F(AllocFailure, SweepOverLinearGrowth) { sweep<mdl_term>(prob, x, 17, errors); }
TEST_F(AllocFailure, SweepOverQuadraticGrowth) { sweep<mdl_qterm>(prob, x, 29, errors); }

}  // namespace
}  // namespace termtest
