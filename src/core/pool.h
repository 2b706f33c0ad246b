/*
 * pool.h -- memory pools: bump allocation from large blocks, 20 exact-size
 * free lists for small chunks, release of a whole pool at once.
 */
#ifndef KVTL_CORE_POOL_H
#define KVTL_CORE_POOL_H

#include <pthread.h>
#include <stddef.h>
#include <stdint.h>

#include "kvtl.h"

namespace kvtl {

constexpr size_t block_head_size = 32;    // prev, next, cursor, end
constexpr size_t freelist_count = 20;     // sizes 8..87 by size / 4 - 2
constexpr size_t freelist_table_size = freelist_count * sizeof(void *);
constexpr size_t min_block_size = 4096;

struct pool_block {
  pool_block *prev;  // older block
  pool_block *next;  // newer block
  char *cursor;      // first free byte
  char *end;         // one past the block
};
static_assert(sizeof(pool_block) == block_head_size);

struct pool_header {
  pthread_mutex_t mutex;
  uint64_t live;            // chunks handed out and not given back
  pool_block *first;
  pool_block *current;      // the block allocations bump from
  void **freelists;         // 20 list heads inside the first block
  MDLcbmem on_alloc;
  MDLcbmem on_free;
};

// The library-wide pool used for allocations without a problem.
pool_header &global_pool();

// Free-list index of a request size, or freelist_count when none applies.
inline size_t freelist_index(size_t size) {
  size_t k = size / 4 - 2;   // wraps for sizes below 8
  return k < freelist_count ? k : freelist_count;
}

// A chunk bumped from the current block when no free-list chunk of its
// size is waiting and the block has room (alignment included); null
// otherwise, with nothing changed.  The first step of every allocation.
inline void *bump_only(pool_header &pool, size_t size) {
  if (pool.first == nullptr) return nullptr;
  const size_t k = freelist_index(size);
  if (k < freelist_count && pool.freelists[k] != nullptr) return nullptr;
  pool_block *b = pool.current;
  char *chunk = b->cursor;
  // Cursors are multiples of 4: a chunk of a multiple of 8 bytes moves on
  // by 4 to an 8-byte boundary.
  if (size % 8 == 0 && reinterpret_cast<uintptr_t>(chunk) % 8 != 0) chunk += 4;
  if (!(chunk + size < b->end)) return nullptr;
  b->cursor = chunk + size;
  pool.live++;
  return chunk;
}

// Allocation and give-back on an explicit pool; `prob` is only used to
// report a failure and `lock` says whether the pool's mutex is taken.
void *pool_alloc(pool_header &pool, MDLprob prob, size_t size, bool lock);
void pool_recycle(pool_header &pool, void *ptr, size_t size, bool lock);
// Free every block of a pool (reporting each to its on-free hook).
void pool_release_blocks(pool_header &pool);

}  // namespace kvtl

#endif
