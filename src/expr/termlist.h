/*
 * termlist.h -- term lists for other modules: header creation and release
 * (with the problem reference a header holds) and the tail limits.
 */
#ifndef KVTL_EXPR_TERMLIST_H
#define KVTL_EXPR_TERMLIST_H

#include "expr/termlist_types.h"
#include "kvtl.h"

namespace kvtl {

// Most nodes the unsorted tail may hold; a set-term appends two nodes, so it
// sorts first when fewer than two places are left.
constexpr int max_pending = 255;
constexpr int max_pending_before_set = 254;

// A run of at least this many nodes lets its tail grow to twice the run's
// length, so that merging a full tail costs a constant per operation instead
// of a walk of the whole run every 255 operations.
constexpr int long_run = 4096;

// A run of about this many nodes (768 KiB of them, beyond what the nearest
// caches hold) is laid out in address order after a long tail is merged
// into it, so that walking it reads memory forward.
constexpr size_t layout_run = 32768;

// The number of nodes the tail of `list` may hold (add-term).
inline int tail_limit(const mdl_termlst *list) {
  return list->room == 0 ? max_pending : static_cast<int>(list->room) * 256;
}

// A new empty header from the problem's pool, holding one reference on the
// problem; null when the pool has no memory (error 1502 reported).  A header
// must receive its first node before list operations see it: a non-null list
// always has at least one node, whose variable names the list's problem.
mdl_termlst *new_termlst(MDLprob prob);
mdl_termlst *new_qtermlst(MDLprob prob);

// Give a header (only the header, not its nodes) back to the problem's pool
// and drop the reference it held on the problem.
void del_termlst(MDLprob prob, mdl_termlst *list);
void del_qtermlst(MDLprob prob, mdl_termlst *list);

}  // namespace kvtl

#endif
