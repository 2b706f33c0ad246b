/*
 * support.h -- shared fixture of the term-list tests: a bare problem with
 * variables in known handle order, error capture, failing allocator, and a
 * reader of a list's value and structure that does not touch the list.
 */
#ifndef KVTL_TESTS_TERMLIST_SUPPORT_H
#define KVTL_TESTS_TERMLIST_SUPPORT_H

#include <gtest/gtest.h>
#include <stdint.h>
#include <stdlib.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "core/pool.h"
#include "expr/termlist.h"
#include "kvtl.h"
#include "problem/problem.h"

namespace termtest {

using lin_key = uintptr_t;
using quad_key = std::pair<uintptr_t, uintptr_t>;

inline lin_key key_of(const mdl_term &n) { return reinterpret_cast<uintptr_t>(n.var); }
inline quad_key key_of(const mdl_qterm &n) {
  return {reinterpret_cast<uintptr_t>(n.var1), reinterpret_cast<uintptr_t>(n.var2)};
}
inline lin_key key_of(MDLvar v) { return reinterpret_cast<uintptr_t>(v); }
inline quad_key key_of(MDLvar a, MDLvar b) {
  return {reinterpret_cast<uintptr_t>(a), reinterpret_cast<uintptr_t>(b)};
}

template <class Node>
using key_t = decltype(key_of(std::declval<const Node &>()));
template <class Node>
using value_map = std::map<key_t<Node>, double>;

template <class Node>
Node *first_node(MDLtermlst l) { return static_cast<Node *>(l->first); }
template <class Node>
Node *last_node(MDLtermlst l) { return static_cast<Node *>(l->last); }

// The value a list stands for: the run, then the pending operations from the
// oldest (farthest from `last`) on, a zero node being a reset.  Zero terms
// are left out.  Reads only.
template <class Node>
value_map<Node> value_of(MDLtermlst l) {
  value_map<Node> m;
  if (l == nullptr) return m;
  const Node *n = first_node<Node>(l);
  for (; n != nullptr; n = n->next) {
    m[key_of(*n)] = n->coef;
    if (n == l->last) break;
  }
  std::vector<const Node *> tail;
  if (n != nullptr)
    for (const Node *p = n->next; p != nullptr; p = p->next) tail.push_back(p);
  for (auto it = tail.rbegin(); it != tail.rend(); ++it) {
    double &c = m[key_of(**it)];
    c = (*it)->coef == 0 ? 0.0 : c + (*it)->coef;
  }
  std::erase_if(m, [](const auto &e) { return e.second == 0; });
  return m;
}

// Nodes of a list in list order (run and tail).
template <class Node>
std::vector<std::pair<key_t<Node>, double>> raw_nodes(MDLtermlst l) {
  std::vector<std::pair<key_t<Node>, double>> v;
  if (l != nullptr)
    for (const Node *n = first_node<Node>(l); n != nullptr; n = n->next)
      v.emplace_back(key_of(*n), n->coef);
  return v;
}

// Structural invariants; "" when they hold, else what is broken.  With
// `sorted` the list must also be in the state a sort leaves.
template <class Node>
std::string check_list(MDLtermlst l, bool sorted) {
  if (l == nullptr) return "";
  std::ostringstream err;
  const Node *first = first_node<Node>(l);
  const Node *last = last_node<Node>(l);
  if (first == nullptr || last == nullptr) return "header without nodes";
  const Node *n = first;
  for (; n != last; n = n->next) {
    if (n->next == nullptr) return "last not reachable from first";
    if (!(key_of(*n) < key_of(*n->next))) return "run not strictly ascending";
  }
  int tail = 0, zeros = 0;
  for (const Node *p = last->next; p != nullptr; p = p->next) {
    ++tail;
    if (p->coef == 0) ++zeros;
    if (!(key_of(*first) < key_of(*p) && key_of(*p) < key_of(*last)))
      err << "pending term outside (first, last); ";
  }
  if (tail != l->pending) err << "pending " << l->pending << " but tail " << tail << "; ";
  if (l->pending > kvtl::max_pending) err << "pending above bound; ";
  if (l->resets < 0 || l->resets > l->pending) err << "resets " << l->resets << "; ";
  if (zeros > l->resets) err << "more reset markers than resets; ";
  if (sorted) {
    if (l->pending != 0 || l->resets != 0) err << "sorted list with pending; ";
    if (first->coef == 0) err << "first node is zero after a sort; ";
  }
  return err.str();
}

struct reported {
  int number;
  int iserror;
  std::string text;
};

// Allocator hooks of the pools: the real ones, or failing while armed.
inline bool &malloc_fails() {
  static bool armed = false;
  return armed;
}
inline void *failing_malloc(size_t size) { return malloc_fails() ? nullptr : malloc(size); }

class TermListTest : public ::testing::Test {
 protected:
  MDLprob prob = nullptr;
  std::vector<reported> errors;

  static void record(MDLprob, void *user, int num, int iserror, const char *text) {
    static_cast<TermListTest *>(user)->errors.push_back({num, iserror, text});
  }

  void SetUp() override {
    mdlsl_malloc = failing_malloc;
    mdlsl_free = free;
    malloc_fails() = false;
    mdlseterrctrl(0);
    mdlsetmsglevel_prob(nullptr, 0);
    mdldefcberr_prob(nullptr, record, this);
    prob = new_problem();
  }

  void TearDown() override {
    malloc_fails() = false;
    for (MDLprob p : problems) {
      EXPECT_EQ(p->refcount, 1) << "a term list still holds its problem";
      mdldeallocprob(p);
    }
    mdldefcberr_prob(nullptr, nullptr, nullptr);
  }

  // A bare problem record whose errors are captured; released at tear-down.
  MDLprob new_problem() {
    MDLprob p = mdlallocprob();
    mdldefcberr_prob(p, record, this);
    problems.push_back(p);
    return p;
  }

  // n zeroed variables of problem p, in ascending handle order.
  std::vector<MDLvar> make_vars(MDLprob p, int n) {
    std::vector<MDLvar> v;
    for (int i = 0; i < n; ++i) {
      auto *x = static_cast<MDLvar>(mdlallocmem(p, sizeof(mdl_var), 1));
      x->problem = p;
      v.push_back(x);
    }
    std::sort(v.begin(), v.end(), [](MDLvar a, MDLvar b) {
      return reinterpret_cast<uintptr_t>(a) < reinterpret_cast<uintptr_t>(b);
    });
    return v;
  }

  // Chunks handed out by a problem's pool and not given back.
  static uint64_t live(MDLprob p) { return p->pool->live; }

  // Bump the current block of p's pool until `fit` chunks of `size` bytes
  // (a multiple of 8) still fit and one more does not.
  static void leave_room_for(MDLprob p, int fit, size_t size) {
    auto room = [p] { return static_cast<size_t>(p->pool->current->end - p->pool->current->cursor); };
    const size_t lo = fit * size, hi = (fit + 1) * size;   // want lo < room <= hi
    if (room() < hi + 200) mdlallocmem(p, room() + 4, 0);  // start a new block
    mdlallocmem(p, (room() - hi - 100) & ~static_cast<size_t>(7) | 4, 0);
    while (!(reinterpret_cast<uintptr_t>(p->pool->current->cursor) % 8 == 0 && room() > lo &&
             room() <= hi))
      mdlallocmem(p, 4, 0);
  }

  std::vector<MDLprob> problems;
};

}  // namespace termtest

#endif
