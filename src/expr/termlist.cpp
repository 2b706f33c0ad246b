/*
 * termlist.cpp -- linear and quadratic term lists: a sorted run plus a bounded
 * tail of pending operations, merged by the sort; one template serves both.
 */
#include "expr/termlist.h"

#include <stdint.h>

#include <algorithm>
#include <bit>
#include <compare>
#include <type_traits>
#include <utility>

#include "model/records.h"
#include "problem/problem.h"

namespace kvtl {

namespace {

// Order of quadratic nodes: first variable, then second, as addresses.
struct pair_key {
  uintptr_t v1;
  uintptr_t v2;
  auto operator<=>(const pair_key &) const = default;
};

uintptr_t address(const mdl_var *v) { return reinterpret_cast<uintptr_t>(v); }

uintptr_t key_of(const mdl_term &n) { return address(n.var); }
pair_key key_of(const mdl_qterm &n) { return {address(n.var1), address(n.var2)}; }

// The problem whose pool holds a list: that of its first node's variable.
MDLprob problem_of(const mdl_term &n) { return n.var->problem; }
MDLprob problem_of(const mdl_qterm &n) { return n.var1->problem; }

template <class Node>
Node *first_of(const mdl_termlst *l) { return static_cast<Node *>(l->first); }
template <class Node>
Node *last_of(const mdl_termlst *l) { return static_cast<Node *>(l->last); }

template <class Node>
MDLprob list_problem(const mdl_termlst *l) { return problem_of(*first_of<Node>(l)); }

// A node holding the term of `proto`, unlinked; null when the pool fails.
template <class Node>
Node *new_node(MDLprob prob, const Node &proto) {
  auto *n = problem_chunk<Node, false>(prob);
  if (n != nullptr) {
    *n = proto;
    n->next = nullptr;
  }
  return n;
}

template <class Node>
void free_node(MDLprob prob, Node *n) { mdlrecyclemem(prob, n, sizeof(Node)); }

// Give back a chain of nodes linked through `next`.
template <class Node>
void free_chain(MDLprob prob, Node *n) {
  while (n != nullptr) {
    Node *next = n->next;
    free_node(prob, n);
    n = next;
  }
}

// Release every node and the header; the reference becomes null.
template <class Node>
void destroy(mdl_termlst **lp) {
  mdl_termlst *l = *lp;
  MDLprob prob = list_problem<Node>(l);
  free_chain(prob, first_of<Node>(l));
  del_termlst(prob, l);
  *lp = nullptr;
}

// With nothing pending: drop the zero nodes at the front, and the whole list
// when no other node is left.
template <class Node>
void release_leading_zeros(mdl_termlst **lp, MDLprob prob) {
  mdl_termlst *l = *lp;
  Node *n = first_of<Node>(l);
  while (n != nullptr && n->coef == 0) {
    Node *next = n->next;
    free_node(prob, n);
    n = next;
  }
  l->first = n;
  if (n == nullptr) {
    del_termlst(prob, l);
    *lp = nullptr;
  }
}

// A new list of the one term `t`, on the pool of its variable's problem.
template <class Node>
int create_list(mdl_termlst **lp, const Node &t) {
  MDLprob prob = problem_of(t);
  mdl_termlst *l = new_termlst(prob);
  if (l == nullptr) return -1;
  Node *n = new_node(prob, t);
  if (n == nullptr) {
    del_termlst(prob, l);
    return -1;
  }
  l->first = l->last = n;
  *lp = l;
  return 1;
}

// `t` beyond the run's end: it becomes `last`, before any pending tail.
template <class Node>
int insert_after_last(mdl_termlst *l, const Node &t) {
  Node *n = new_node(list_problem<Node>(l), t);
  if (n == nullptr) return -1;
  Node *last = last_of<Node>(l);
  n->next = last->next;
  last->next = n;
  l->last = n;
  return 1;
}

// `t` before the run's start: it becomes `first`.
template <class Node>
int insert_before_first(mdl_termlst *l, const Node &t) {
  Node *n = new_node(list_problem<Node>(l), t);
  if (n == nullptr) return -1;
  n->next = first_of<Node>(l);
  l->first = n;
  return 1;
}

// Put the nodes `newest` .. `oldest` (already chained newest first) at the
// head of the tail, right after `last`.
template <class Node>
void push_pending(mdl_termlst *l, Node *newest, Node *oldest, int count) {
  Node *last = last_of<Node>(l);
  oldest->next = last->next;
  last->next = newest;
  l->pending += count;
}

// Pending add: one node (a, x) in the tail.
template <class Node>
int append_add(mdl_termlst *l, const Node &t) {
  Node *n = new_node(list_problem<Node>(l), t);
  if (n == nullptr) return -1;
  push_pending(l, n, n, 1);
  return 1;
}

// Pending set: a reset marker (0, x), then (a, x) unless a is 0.  Both nodes
// are obtained before either is linked, so a failure changes nothing.
template <class Node>
int append_set(mdl_termlst *l, const Node &t) {
  MDLprob prob = list_problem<Node>(l);
  Node marker = t;
  marker.coef = 0;
  Node *m = new_node(prob, marker);
  if (m == nullptr) return -1;
  if (t.coef == 0) {
    push_pending(l, m, m, 1);
    l->resets = static_cast<int16_t>(l->resets + 1);
    return 1;
  }
  Node *v = new_node(prob, t);
  if (v == nullptr) {
    free_node(prob, m);
    return -1;
  }
  v->next = m;
  push_pending(l, v, m, 2);
  l->resets = static_cast<int16_t>(l->resets + 2);
  return 1;
}

template <class Node>
struct sort_entry {
  decltype(key_of(std::declval<const Node &>())) key;
  int order;    // insertion number within the batch, 0 for the oldest
  Node *node;
};

// The nodes of a long linear run in list order as a merge meets them, with
// their terms, for lay_out_run.  The arrays come from the allocator hook
// and double when full; when they cannot be had the record is `lost` and
// the run is not laid out.
class run_record {
 public:
  struct term_copy {
    double coef;
    mdl_var *var;
  };

  explicit run_record(size_t capacity) { lost_ = !grow(capacity); }
  ~run_record() { mdlsl_free(block_); }
  run_record(const run_record &) = delete;
  run_record &operator=(const run_record &) = delete;

  void add(const mdl_term *t) {
    if (lost_) return;
    if (count_ == capacity_ && !grow(2 * capacity_)) {
      lost_ = true;
      return;
    }
    terms_[count_] = {t->coef, t->var};
    nodes_[count_++] = reinterpret_cast<uintptr_t>(t);
  }
  bool complete() const { return !lost_; }
  size_t count() const { return count_; }
  const term_copy *terms() const { return terms_; }
  // The node addresses, followed by as many spare slots for their sort.
  uintptr_t *nodes() { return nodes_; }
  uintptr_t *spare() { return nodes_ + capacity_; }

 private:
  // Room for `capacity` nodes, keeping those recorded; false when the
  // block cannot be had (the old one is kept).
  bool grow(size_t capacity) {
    void *block = mdlsl_malloc(capacity * (sizeof(term_copy) + 2 * sizeof(uintptr_t)));
    if (block == nullptr) return false;
    auto *terms = static_cast<term_copy *>(block);
    auto *nodes = reinterpret_cast<uintptr_t *>(terms + capacity);
    std::copy(terms_, terms_ + count_, terms);
    std::copy(nodes_, nodes_ + count_, nodes);
    mdlsl_free(block_);
    block_ = block;
    terms_ = terms;
    nodes_ = nodes;
    capacity_ = capacity;
    return true;
  }

  void *block_ = nullptr;
  term_copy *terms_ = nullptr;
  uintptr_t *nodes_ = nullptr;
  size_t capacity_ = 0, count_ = 0;
  bool lost_ = false;
};

// Record a node of a merge that records (linear lists only); the other
// merges are compiled without it.
template <bool recording, class Node>
void record_node(run_record *rec, const Node *n) {
  if constexpr (recording && std::is_same_v<Node, mdl_term>) rec->add(n);
}

// Merge `n` entries, sorted by variable and insertion number, into the run.
// Operations on one variable are applied in the order they were made,
// starting from the run's coefficient, so the result is bit for bit that of
// applying them one by one.  Nodes of consumed entries go back to the pool;
// one of them is reused when a term is new to the run, so the merge never
// allocates.  With `count`, returns the number of nodes of the run after the
// merge (walking it to its end), else 0; when `recording` (with `count`),
// `rec` gets every node of the run in list order.
template <class Node, bool recording = false>
long merge_entries(mdl_termlst *l, MDLprob prob, const sort_entry<Node> *entries, int n,
                   bool count, run_record *rec = nullptr) {
  long before = 0;   // run nodes before `cur`
  Node *prev = nullptr;
  Node *cur = first_of<Node>(l);
  for (int i = 0; i < n;) {
    const auto key = entries[i].key;
    while (cur != nullptr && key_of(*cur) < key) {
      record_node<recording>(rec, cur);
      prev = cur;
      cur = cur->next;
      ++before;
    }
    const bool present = cur != nullptr && key_of(*cur) == key;
    double sum = present ? cur->coef : 0.0;
    int end = i;
    for (; end < n && entries[end].key == key; ++end) {
      double c = entries[end].node->coef;
      sum = c == 0 ? 0.0 : sum + c;   // a zero entry is a reset marker
    }
    int first_free = i;   // entries from here on go back to the pool
    if (present && sum == 0) {
      Node *next = cur->next;
      if (prev != nullptr) prev->next = next; else l->first = next;
      if (l->last == cur) l->last = prev;
      free_node(prob, cur);
      cur = next;
    } else if (present) {
      cur->coef = sum;
    } else if (sum != 0) {
      Node *keep = entries[i].node;
      keep->coef = sum;
      keep->next = cur;
      if (prev != nullptr) prev->next = keep; else l->first = keep;
      if (cur == nullptr) l->last = keep;
      record_node<recording>(rec, keep);
      prev = keep;
      ++before;
      first_free = i + 1;
    }
    for (int k = first_free; k < end; ++k) free_node(prob, entries[k].node);
    i = end;
  }
  if (!count) return 0;
  for (; cur != nullptr; cur = cur->next) {
    record_node<recording>(rec, cur);
    ++before;
  }
  return before;
}

// Stable LSD radix sort of `n` items by an address-sized key, 11 bits a
// pass over the bits in which some key differs from the smallest (usually
// two passes); for many thousand items several times quicker than a
// comparison sort.  `spare` holds `n` items; the result is left in `items`.
template <class T, class Key>
void radix_sort(T *items, T *spare, size_t n, Key key) {
  constexpr int digit_bits = 11;
  constexpr size_t digits = size_t{1} << digit_bits;
  uintptr_t lo = UINTPTR_MAX;
  for (size_t i = 0; i < n; ++i) lo = std::min(lo, key(items[i]));
  uintptr_t varying = 0;   // bits in which some key differs from the smallest
  for (size_t i = 0; i < n; ++i) varying |= key(items[i]) - lo;
  T *src = items, *dst = spare;
  int shift = varying == 0 ? 64 : std::countr_zero(varying);
  for (; shift < 64 && (varying >> shift) != 0; shift += digit_bits) {
    size_t start[digits + 1] = {};
    for (size_t i = 0; i < n; ++i) ++start[((key(src[i]) - lo) >> shift & (digits - 1)) + 1];
    for (size_t d = 1; d <= digits; ++d) start[d] += start[d - 1];
    for (size_t i = 0; i < n; ++i) dst[start[(key(src[i]) - lo) >> shift & (digits - 1)]++] = src[i];
    std::swap(src, dst);
  }
  if (src != items) std::copy(src, src + n, items);
}

// Sort the entries of a long linear tail by variable, keeping insertion
// order among equal variables (the sort is stable).
void sort_by_variable(sort_entry<mdl_term> *entries, sort_entry<mdl_term> *spare, int n) {
  radix_sort(entries, spare, static_cast<size_t>(n),
             [](const sort_entry<mdl_term> &e) { return e.key; });
}

// Lay a long linear run out in address order: the run's terms are moved,
// in list order, into its own nodes taken in ascending address order, and
// relinked.  The list's value and order stay as they were; only which node
// holds which term changes, so that later walks of the run (merges, reads,
// the release of the list) go forward through memory instead of jumping to
// wherever each node was allocated.  `rec` holds the whole run, recorded
// by the merge that made it; an incomplete record leaves it as it is.
void lay_out_run(mdl_termlst *l, run_record &rec) {
  const size_t count = rec.count();
  if (!rec.complete() || count == 0) return;
  uintptr_t *node = rec.nodes();
  radix_sort(node, rec.spare(), count, [](uintptr_t a) { return a; });
  const run_record::term_copy *terms = rec.terms();
  mdl_term *tail = last_of<mdl_term>(l)->next;
  for (size_t i = 0; i < count; ++i) {
    auto *t = reinterpret_cast<mdl_term *>(node[i]);
    t->coef = terms[i].coef;
    t->var = terms[i].var;
    t->next = i + 1 < count ? reinterpret_cast<mdl_term *>(node[i + 1]) : tail;
  }
  l->first = reinterpret_cast<mdl_term *>(node[0]);
  l->last = reinterpret_cast<mdl_term *>(node[count - 1]);
}

// Merge a whole linear tail of `n` sorted entries into the run, recording
// the run it makes, then lay that run out; returns the run's length.  The
// record starts with a quarter more room than `run_before`, the run of the
// last resize, plus the entries.  Kept apart from sort_list so that the
// short merges do not carry it.
[[gnu::noinline]] long merge_laying_out(mdl_termlst *l, MDLprob prob,
                                       const sort_entry<mdl_term> *entries, int n,
                                       size_t run_before) {
  run_record record(run_before + run_before / 4 + static_cast<size_t>(n));
  const long run = merge_entries<mdl_term, true>(l, prob, entries, n, true, &record);
  if (l->first != nullptr) lay_out_run(l, record);
  return run;
}

// Merge the pending tail into the run, in batches of the oldest operations
// first.  A tail longer than the stack array is sorted in one batch in a
// temporary array from the allocator hook; when that cannot be had, batches
// of the stack array's size give the same result, only more slowly.  With
// `resize` (a full tail), the tail limit is set from the run's new length.
// Returns 0 when nothing was pending, else 1; the list may be deleted.
template <class Node>
int sort_list(mdl_termlst **lp, bool resize = false) {
  mdl_termlst *l = *lp;
  if (l == nullptr || l->pending <= 0) return 0;
  MDLprob prob = list_problem<Node>(l);
  Node *last = last_of<Node>(l);
  Node *tail = last->next;
  last->next = nullptr;
  sort_entry<Node> stack[max_pending];
  sort_entry<Node> *entries = stack;
  int capacity = max_pending;
  // A linear tail also takes room for the radix sort's second array.
  constexpr bool radix = std::is_same_v<Node, mdl_term>;
  if (l->pending > max_pending) {
    const size_t slots = static_cast<size_t>(l->pending) * (radix ? 2 : 1);
    auto *heap = static_cast<sort_entry<Node> *>(mdlsl_malloc(slots * sizeof(sort_entry<Node>)));
    if (heap != nullptr) {
      entries = heap;
      capacity = l->pending;
    }
  }
  // The tail runs newest first.  When it fits the array in one batch it is
  // read once, filling the array from its end; batches must start with the
  // oldest operations, so then the tail is turned round first.
  Node *oldest = nullptr;
  int filled = 0;
  if (l->pending <= capacity) {
    for (int k = l->pending; tail != nullptr && k > 0; tail = tail->next) {
      --k;
      entries[k] = {key_of(*tail), k, tail};
      ++filled;
    }
  } else {
    while (tail != nullptr) {
      Node *next = tail->next;
      tail->next = oldest;
      oldest = tail;
      tail = next;
    }
  }
  // A long linear tail merged in one batch into a run too long for the
  // caches is laid out after the merge (shorter runs are walked quickly
  // wherever their nodes lie, and would pay for the record's memory).  The
  // run's length is not kept: the run of the last resize plus every
  // pending node estimates it.
  bool lay_out = false;
  size_t run_before = 0;
  if constexpr (radix) {
    run_before = (static_cast<size_t>(l->room) + 1) * 128;
    lay_out = entries != stack && run_before + static_cast<size_t>(l->pending) >= layout_run;
  }
  long run = 0;
  while (filled > 0 || oldest != nullptr) {
    int n = filled;
    filled = 0;
    for (; oldest != nullptr && n < capacity; oldest = oldest->next, ++n)
      entries[n] = {key_of(*oldest), n, oldest};
    bool sorted = false;
    if constexpr (radix) {
      if (entries != stack) {
        sort_by_variable(entries, entries + capacity, n);
        sorted = true;
      }
    }
    if (!sorted)
      std::sort(entries, entries + n, [](const sort_entry<Node> &a, const sort_entry<Node> &b) {
        return a.key < b.key || (a.key == b.key && a.order < b.order);
      });
    if constexpr (radix) {
      if (lay_out) {
        run = merge_laying_out(l, prob, entries, n, run_before);
        continue;
      }
    }
    run = merge_entries<Node>(l, prob, entries, n, resize && oldest == nullptr);
  }
  if (entries != stack) mdlsl_free(entries);
  l->pending = 0;
  l->resets = 0;
  if (resize) l->room = run < long_run ? 0 : static_cast<uint16_t>(std::min(run / 128, 65535L));
  release_leading_zeros<Node>(lp, prob);
  return 1;
}

// Add-term: the six cases, sorting when the tail is full.
template <class Node>
int add_term(mdl_termlst **lp, const Node &t) {
  const auto key = key_of(t);
  for (;;) {
    mdl_termlst *l = *lp;
    if (l == nullptr) return create_list(lp, t);
    Node *last = last_of<Node>(l);
    if (key_of(*last) < key) return insert_after_last(l, t);
    if (key_of(*last) == key) {
      last->coef += t.coef;   // a zero sum stays as a zero node
      return 1;
    }
    Node *first = first_of<Node>(l);
    if (key_of(*first) == key) {
      first->coef += t.coef;
      if (l->pending == 0 && first->coef == 0) release_leading_zeros<Node>(lp, problem_of(*first));
      return 1;
    }
    if (key < key_of(*first)) return insert_before_first(l, t);
    if (l->pending < tail_limit(l)) return append_add(l, t);
    sort_list<Node>(lp, true);
  }
}

// Set-term: the six cases, sorting when fewer than two tail places are left.
template <class Node>
int set_term(mdl_termlst **lp, const Node &t) {
  const auto key = key_of(t);
  const double a = t.coef;
  for (;;) {
    mdl_termlst *l = *lp;
    if (l == nullptr) return a == 0 ? 0 : create_list(lp, t);
    Node *last = last_of<Node>(l);
    if (key_of(*last) < key) return a == 0 ? 0 : insert_after_last(l, t);
    if (key_of(*last) == key) {
      if (last->coef == a) return 0;
      last->coef = a;
      return 1;
    }
    Node *first = first_of<Node>(l);
    if (key_of(*first) == key) {
      if (first->coef == a) return 0;
      first->coef = a;
      if (l->pending == 0 && a == 0) release_leading_zeros<Node>(lp, problem_of(*first));
      return 1;
    }
    if (key < key_of(*first)) return a == 0 ? 0 : insert_before_first(l, t);
    if (l->pending < tail_limit(l) - 1 && l->resets < INT16_MAX - 1) return append_set(l, t);
    sort_list<Node>(lp, true);
  }
}

template <class Node>
int list_length(mdl_termlst **lp) {
  sort_list<Node>(lp);
  if (*lp == nullptr) return 0;
  int count = 0;
  for (Node *n = first_of<Node>(*lp); n != nullptr; n = n->next)
    if (n->coef != 0) ++count;   // NaN counts
  return count;
}

template <class Node>
int negate_list(mdl_termlst *l) {
  if (l == nullptr) return 0;
  for (Node *n = first_of<Node>(l); n != nullptr; n = n->next) n->coef = -n->coef;
  return 1;
}

// Pending operations are merged before scaling: a pending term scaled down
// to 0 would otherwise read as a reset marker.
template <class Node>
int scale_list(mdl_termlst **lp, double factor) {
  if (*lp == nullptr || factor == 1.0) return 0;
  if (factor == 0.0) {
    destroy<Node>(lp);
    return 1;
  }
  sort_list<Node>(lp);
  if (*lp == nullptr) return 1;
  for (Node *n = first_of<Node>(*lp); n != nullptr; n = n->next) n->coef *= factor;
  if (first_of<Node>(*lp)->coef == 0) release_leading_zeros<Node>(lp, list_problem<Node>(*lp));
  return 1;
}

// Copy of a whole list (run, tail and counts) on the pool of the source's
// problem; on failure nothing is left behind and -1 is returned.
template <class Node>
int copy_list(mdl_termlst **target, const mdl_termlst *src) {
  *target = nullptr;
  if (src == nullptr) return 0;
  MDLprob prob = list_problem<Node>(src);
  mdl_termlst *l = new_termlst(prob);
  if (l == nullptr) return -1;
  Node *head = nullptr;
  Node **link = &head;
  for (const Node *s = first_of<Node>(src); s != nullptr; s = s->next) {
    Node *n = new_node(prob, *s);
    if (n == nullptr) {
      free_chain(prob, head);
      del_termlst(prob, l);
      return -1;
    }
    *link = n;
    link = &n->next;
    if (s == src->last) l->last = n;
  }
  l->first = head;
  l->pending = src->pending;
  l->resets = src->resets;
  l->room = src->room;
  *target = l;
  return 1;
}

// Nodes of the run from `from` up to and including `to`.
template <class Node>
int count_nodes(const Node *from, const Node *to) {
  int count = 0;
  for (const Node *n = from; n != nullptr; n = n->next) {
    ++count;
    if (n == to) break;
  }
  return count;
}

// Take `count` fresh nodes chained through `next`; null (nothing kept) when
// the pool fails.  `ok` tells a failure from an empty request.
template <class Node>
Node *take_nodes(MDLprob prob, int count, bool &ok) {
  Node *chain = nullptr;
  ok = true;
  for (int i = 0; i < count; ++i) {
    auto *n = static_cast<Node *>(mdlallocmem(prob, sizeof(Node), 0));
    if (n == nullptr) {
      free_chain(prob, chain);
      ok = false;
      return nullptr;
    }
    n->next = chain;
    chain = n;
  }
  return chain;
}

// Add the sorted run of S (no resets) into the run of T (no resets), then
// hang copies of S's pending adds in front of T's tail.  Every node needed is
// taken before T is touched, so a failure leaves T as it was.  While
// anything stays pending, a zero result at either end of the run is kept, so
// that pending terms stay strictly inside the run.
template <class Node>
int merge_lists(mdl_termlst **tp, mdl_termlst *s) {
  mdl_termlst *t = *tp;
  MDLprob prob = list_problem<Node>(t);
  Node *s_last = last_of<Node>(s);
  const int total_pending = t->pending + s->pending;
  bool ok;
  Node *spare = take_nodes<Node>(
      prob, count_nodes(first_of<Node>(s), s_last) + s->pending, ok);
  if (!ok) return -1;
  auto take = [&spare](const Node &proto) {
    Node *n = spare;
    spare = n->next;
    *n = proto;
    n->next = nullptr;
    return n;
  };

  Node *t_last = last_of<Node>(t);
  Node *t_tail = t_last->next;
  t_last->next = nullptr;
  Node *prev = nullptr;
  Node *cur = first_of<Node>(t);
  for (Node *sn = first_of<Node>(s);; sn = sn->next) {
    const auto key = key_of(*sn);
    while (cur != nullptr && key_of(*cur) < key) {
      prev = cur;
      cur = cur->next;
    }
    const bool more = sn != s_last;
    if (cur != nullptr && key_of(*cur) == key) {
      cur->coef += sn->coef;
      const bool inner = prev != nullptr && (cur->next != nullptr || more);
      if (cur->coef == 0 && (total_pending == 0 || inner)) {
        Node *next = cur->next;
        if (prev != nullptr) prev->next = next; else t->first = next;
        free_node(prob, cur);
        cur = next;
      } else {
        prev = cur;
        cur = cur->next;
      }
    } else {
      const bool inner = prev != nullptr && (cur != nullptr || more);
      if (sn->coef != 0 || (total_pending != 0 && !inner)) {
        Node *n = take(*sn);
        n->next = cur;
        if (prev != nullptr) prev->next = n; else t->first = n;
        prev = n;
      }
    }
    if (!more) break;
  }
  // The run ends at the old last unless the walk went past it.
  if (cur == nullptr) t_last = prev;
  if (t_last != nullptr) {
    t->last = t_last;
    Node *tail_end = t_last;
    for (Node *p = s_last->next; p != nullptr; p = p->next) {
      Node *n = take(*p);
      tail_end->next = n;
      tail_end = n;
    }
    tail_end->next = t_tail;
  }
  t->pending = total_pending;
  free_chain(prob, spare);
  if (t_last == nullptr || total_pending == 0) release_leading_zeros<Node>(tp, prob);
  return 1;
}

// Does the sorted run hold zero nodes only?
template <class Node>
bool run_is_zero(const mdl_termlst *l) {
  for (const Node *n = first_of<Node>(l);; n = n->next) {
    if (n->coef != 0) return false;
    if (n == l->last) return true;
  }
}

// Add-list: T += S.  T is sorted when it holds resets; S when it holds resets
// or when both tails together would not fit into one.
template <class Node>
int add_list(mdl_termlst **tp, mdl_termlst **sp) {
  if (*sp == nullptr) return 0;
  if (*tp == nullptr) return copy_list<Node>(tp, *sp);
  if (*tp == *sp) return scale_list<Node>(tp, 2.0);
  if ((*tp)->resets != 0) {
    sort_list<Node>(tp);
    if (*tp == nullptr) return copy_list<Node>(tp, *sp);
  }
  if ((*sp)->resets != 0 || (*tp)->pending + (*sp)->pending > tail_limit(*tp)) {
    sort_list<Node>(sp);
    if (*sp == nullptr) return 0;
  }
  int r = merge_lists<Node>(tp, *sp);
  // Cancelled ends are kept while operations stay pending; when nothing
  // non-zero is left in the run, merge the tail so that a sum that cancels
  // completely leaves no list behind.
  if (r == 1 && *tp != nullptr && (*tp)->pending != 0 && run_is_zero<Node>(*tp))
    sort_list<Node>(tp);
  return r;
}

// The list's problem, when there is a list: used to report errors.
MDLprob problem_or_null(const MDLtermlst *lp, bool quad) {
  if (lp == nullptr || *lp == nullptr) return nullptr;
  return quad ? list_problem<mdl_qterm>(*lp) : list_problem<mdl_term>(*lp);
}

// Argument checks of the term operations: a reference to hold the list and
// the variables; reports the failure and returns false.
bool check_args(const char *fn, MDLtermlst *lp, bool quad, const mdl_var *v1,
                const mdl_var *v2) {
  if (lp == nullptr) {
    mdlerror(nullptr, MDL_E_INTERNAL, fn);
    return false;
  }
  if (v1 == nullptr || (quad && v2 == nullptr)) {
    mdlerror(problem_or_null(lp, quad), MDL_E_NOVAR, fn);
    return false;
  }
  return true;
}

// A quadratic term with its pair in handle order.
mdl_qterm ordered_pair(MDLvar v1, MDLvar v2, double coef) {
  if (address(v2) < address(v1)) std::swap(v1, v2);
  return {coef, v1, v2, nullptr};
}

}  // namespace

mdl_termlst *new_termlst(MDLprob prob) {
  auto *l = problem_chunk<mdl_termlst, true>(prob);
  if (l != nullptr) mdlinrcprob(prob);
  return l;
}

mdl_termlst *new_qtermlst(MDLprob prob) { return new_termlst(prob); }

void del_termlst(MDLprob prob, mdl_termlst *list) {
  mdlrecyclemem(prob, list, sizeof(mdl_termlst));
  mdldeallocprob(prob);
}

void del_qtermlst(MDLprob prob, mdl_termlst *list) { del_termlst(prob, list); }

}  // namespace kvtl

using namespace kvtl;

// The exported functions (contracts in kvtl.h) check their arguments and
// pick the node kind; a null list address reads as the empty list.

KVTL_API int mdldel_termlst(MDLtermlst *list) {
  if (list == nullptr || *list == nullptr) return 0;
  destroy<mdl_term>(list);
  return 1;
}

KVTL_API int mdldel_qtermlst(MDLtermlst *list) {
  if (list == nullptr || *list == nullptr) return 0;
  destroy<mdl_qterm>(list);
  return 1;
}

// A zero coefficient adds nothing; a zero node in the tail would moreover
// read as a reset marker.
KVTL_API int mdladd_term(MDLvar var, MDLtermlst *list, double coef) {
  if (!check_args("add_term", list, false, var, nullptr)) return -1;
  if (coef == 0) return 0;
  return add_term<mdl_term>(list, {coef, var, nullptr});
}

KVTL_API int mdladd_qterm(MDLvar var1, MDLvar var2, MDLtermlst *list, double coef) {
  if (!check_args("add_qterm", list, true, var1, var2)) return -1;
  if (coef == 0) return 0;
  return add_term<mdl_qterm>(list, ordered_pair(var1, var2, coef));
}

KVTL_API int mdlset_term(MDLvar var, MDLtermlst *list, double coef) {
  if (!check_args("set_term", list, false, var, nullptr)) return -1;
  return set_term<mdl_term>(list, {coef, var, nullptr});
}

KVTL_API int mdlset_qterm(MDLvar var1, MDLvar var2, MDLtermlst *list, double coef) {
  if (!check_args("set_qterm", list, true, var1, var2)) return -1;
  return set_term<mdl_qterm>(list, ordered_pair(var1, var2, coef));
}

KVTL_API int mdlsort_termlst(MDLtermlst *list) {
  return list == nullptr ? 0 : sort_list<mdl_term>(list);
}

KVTL_API int mdlsort_qtermlst(MDLtermlst *list) {
  return list == nullptr ? 0 : sort_list<mdl_qterm>(list);
}

KVTL_API int mdlstriptermlst(MDLtermlst *list) {
  if (list == nullptr || *list == nullptr || (*list)->pending < 1) return 0;
  return sort_list<mdl_term>(list);
}

KVTL_API int mdlstripqtermlst(MDLtermlst *list) {
  if (list == nullptr || *list == nullptr || (*list)->pending < 1) return 0;
  return sort_list<mdl_qterm>(list);
}

KVTL_API int mdlstripexpr(struct mdl_expr *expr) {
  if (expr == nullptr) return 0;
  int lin = mdlstriptermlst(&expr->lin);
  int quad = mdlstripqtermlst(&expr->quad);
  return lin | quad;
}

KVTL_API int mdlget_termlst_len(MDLtermlst *list) {
  return list == nullptr ? 0 : list_length<mdl_term>(list);
}

KVTL_API int mdlget_qtermlst_len(MDLtermlst *list) {
  return list == nullptr ? 0 : list_length<mdl_qterm>(list);
}

KVTL_API int mdlchs_termlst(MDLtermlst *list) {
  return list == nullptr ? 0 : negate_list<mdl_term>(*list);
}

KVTL_API int mdlchs_qtermlst(MDLtermlst *list) {
  return list == nullptr ? 0 : negate_list<mdl_qterm>(*list);
}

KVTL_API int mdlmulc_termlst(MDLtermlst *list, double factor) {
  return list == nullptr ? 0 : scale_list<mdl_term>(list, factor);
}

KVTL_API int mdlmulc_qtermlst(MDLtermlst *list, double factor) {
  return list == nullptr ? 0 : scale_list<mdl_qterm>(list, factor);
}

KVTL_API int mdldup_termlst(MDLtermlst *target, MDLtermlst source) {
  if (target == nullptr) {
    mdlerror(nullptr, MDL_E_INTERNAL, "dup_termlst");
    return -1;
  }
  return copy_list<mdl_term>(target, source);
}

KVTL_API int mdldup_qtermlst(MDLtermlst *target, MDLtermlst source) {
  if (target == nullptr) {
    mdlerror(nullptr, MDL_E_INTERNAL, "dup_qtermlst");
    return -1;
  }
  return copy_list<mdl_qterm>(target, source);
}

KVTL_API int mdladd_termlst(MDLtermlst *target, MDLtermlst *source) {
  if (target == nullptr) {
    mdlerror(nullptr, MDL_E_INTERNAL, "add_termlst");
    return -1;
  }
  return source == nullptr ? 0 : add_list<mdl_term>(target, source);
}

KVTL_API int mdladd_qtermlst(MDLtermlst *target, MDLtermlst *source) {
  if (target == nullptr) {
    mdlerror(nullptr, MDL_E_INTERNAL, "add_qtermlst");
    return -1;
  }
  return source == nullptr ? 0 : add_list<mdl_qterm>(target, source);
}
