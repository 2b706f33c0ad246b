/*
 * pool.cpp -- memory pools: chunks bumped from blocks of at least 4096
 * bytes, exact-size free lists for chunks of 8 to 87 bytes, rollback of the
 * last chunk, whole-pool release; problem records head their own pools.
 */
#include "core/pool.h"

#include <string.h>

#include "core/runtime.h"
#include "problem/problem.h"

namespace kvtl {

namespace {

pool_header global_pool_header = {PTHREAD_MUTEX_INITIALIZER, 0, nullptr, nullptr,
                                  nullptr, nullptr, nullptr};

// The global pool reports to the global annotate hooks as they are now; a
// problem's pool to the copies taken when it was created.
MDLcbmem alloc_hook(const pool_header &pool) {
  return &pool == &global_pool_header ? annotate_alloc : pool.on_alloc;
}
MDLcbmem free_hook(const pool_header &pool) {
  return &pool == &global_pool_header ? annotate_free : pool.on_free;
}

char *data_start(pool_block *b) { return reinterpret_cast<char *>(b) + block_head_size; }

pool_block *new_block(pool_header &pool, MDLprob prob, size_t bytes) {
  auto *b = static_cast<pool_block *>(mdlsl_malloc(bytes));
  if (b == nullptr) {
    mdlerror(prob, MDL_E_NOMEM);
    return nullptr;
  }
  if (MDLcbmem hook = alloc_hook(pool)) hook(bytes);
  b->prev = b->next = nullptr;
  b->cursor = data_start(b);
  b->end = reinterpret_cast<char *>(b) + bytes;
  return b;
}

struct pool_lock {
  pthread_mutex_t *m;
  explicit pool_lock(pool_header &pool, bool lock) : m(lock ? &pool.mutex : nullptr) {
    if (m != nullptr) pthread_mutex_lock(m);
  }
  ~pool_lock() {
    if (m != nullptr) pthread_mutex_unlock(m);
  }
  pool_lock(const pool_lock &) = delete;
  pool_lock &operator=(const pool_lock &) = delete;
};

// The pool of a problem (global for null) and whether it is locked.
pool_header &pool_of(MDLprob prob, bool &lock) {
  if (prob == nullptr) {
    lock = true;
    return global_pool_header;
  }
  lock = asyncfree != 0;
  return *prob->pool;
}

}  // namespace

pool_header &global_pool() { return global_pool_header; }

void *pool_alloc(pool_header &pool, MDLprob prob, size_t size, bool lock) {
  pool_lock guard(pool, lock);
  if (void *bumped = bump_only(pool, size)) return bumped;
  char *chunk;
  if (pool.first == nullptr) {
    size_t bytes = size + block_head_size + freelist_table_size;
    if (bytes < min_block_size) bytes = min_block_size;
    pool_block *b = new_block(pool, prob, bytes);
    if (b == nullptr) return nullptr;
    pool.first = pool.current = b;
    pool.freelists = reinterpret_cast<void **>(b->cursor);
    memset(pool.freelists, 0, freelist_table_size);
    chunk = b->cursor + freelist_table_size;
    b->cursor = chunk + size;
  } else {
    size_t k = freelist_index(size);
    if (k < freelist_count && pool.freelists[k] != nullptr) {
      chunk = static_cast<char *>(pool.freelists[k]);
      pool.freelists[k] = *reinterpret_cast<void **>(chunk);
    } else {
      // The current block has no room: a new one after it.  The old block
      // keeps its cursor aligned as the bump would have left it.
      pool_block *b = pool.current;
      if (size % 8 == 0 && reinterpret_cast<uintptr_t>(b->cursor) % 8 != 0) b->cursor += 4;
      size_t bytes = size + block_head_size;
      if (bytes < min_block_size) bytes = min_block_size;
      pool_block *nb = new_block(pool, prob, bytes);
      if (nb == nullptr) return nullptr;
      nb->prev = b;
      nb->next = b->next;
      if (b->next != nullptr) b->next->prev = nb;
      b->next = nb;
      pool.current = nb;
      chunk = nb->cursor;
      nb->cursor += size;
    }
  }
  pool.live++;
  return chunk;
}

void pool_release_blocks(pool_header &pool) {
  pool_block *b = pool.first;
  while (b != nullptr) {
    pool_block *next = b->next;
    uint64_t reported = static_cast<uint64_t>(b->end - b->cursor) + block_head_size;
    mdlsl_free(b);
    if (MDLcbmem hook = free_hook(pool)) hook(reported);
    b = next;
  }
  pool.live = 0;
  pool.first = pool.current = nullptr;
  pool.freelists = nullptr;
}

void pool_recycle(pool_header &pool, void *ptr, size_t size, bool lock) {
  pool_lock guard(pool, lock);
  if (--pool.live == 0) {
    if (&pool != &global_pool_header) pthread_mutex_destroy(&pool.mutex);
    pool_release_blocks(pool);
    return;
  }
  char *chunk = static_cast<char *>(ptr);
  pool_block *b = pool.current;
  // Only the exact last chunk is rolled back: a cursor 4 bytes further on
  // may hold a 4-byte chunk bumped after it.
  if (b->cursor == chunk + size) {
    b->cursor = chunk;
    if (b->cursor == data_start(b) && b->prev != nullptr) {
      pool_block *prev = b->prev;
      prev->next = b->next;
      if (b->next != nullptr) b->next->prev = prev;
      uint64_t bytes = static_cast<uint64_t>(b->end - reinterpret_cast<char *>(b));
      mdlsl_free(b);
      if (MDLcbmem hook = free_hook(pool)) hook(bytes);
      pool.current = prev;
    }
    return;
  }
  size_t k = freelist_index(size);
  if (k < freelist_count) {
    *reinterpret_cast<void **>(chunk) = pool.freelists[k];
    pool.freelists[k] = chunk;
  }
}

}  // namespace kvtl

using namespace kvtl;

// The common case first: a problem's pool without its lock, no recycled
// chunk of the size, room in the current block.  Everything else (the
// first block, free lists, a new block, the global pool) takes pool_alloc.
KVTL_API void *mdlallocmem(MDLprob prob, size_t size, int zero) {
  void *p;
  if (prob != nullptr && asyncfree == 0 && (p = bump_only(*prob->pool, size)) != nullptr) {
    if (zero) memset(p, 0, size);
    return p;
  }
  bool lock;
  pool_header &pool = pool_of(prob, lock);
  p = pool_alloc(pool, prob, size, lock);
  if (p != nullptr && zero) memset(p, 0, size);
  return p;
}

KVTL_API void mdlrecyclemem(MDLprob prob, void *ptr, size_t size) {
  bool lock;
  pool_header &pool = pool_of(prob, lock);
  pool_recycle(pool, ptr, size, lock);
}

KVTL_API char *mdlstrdup(MDLprob prob, const char *text) {
  if (text == nullptr || *text == '\0') return nullptr;
  size_t n = strlen(text);
  size_t size = n + 1 <= 8 ? 8 : (n + 4) & ~static_cast<size_t>(3);
  auto *copy = static_cast<char *>(mdlallocmem(prob, size, 0));
  if (copy != nullptr) memcpy(copy, text, n + 1);
  return copy;
}

// The record is allocated from a header on the stack, which is then copied
// into the record; the record's pool reference points at that copy.
KVTL_API MDLprob mdlallocprob(void) {
  pool_header hdr{};
  hdr.on_alloc = annotate_alloc;
  hdr.on_free = annotate_free;
  auto *prob = static_cast<MDLprob>(pool_alloc(hdr, nullptr, sizeof(mdl_problem), false));
  if (prob == nullptr) {
    pool_release_blocks(hdr);
    return nullptr;
  }
  memset(prob, 0, sizeof *prob);
  prob->poolhdr = hdr;
  pthread_mutex_init(&prob->poolhdr.mutex, nullptr);
  prob->pool = &prob->poolhdr;
  prob->refcount = 1;
  return prob;
}

KVTL_API void mdlinrcprob(MDLprob prob) {
  if (asyncfree) {
    pthread_mutex_lock(&prob->pool->mutex);
    prob->refcount++;
    pthread_mutex_unlock(&prob->pool->mutex);
  } else {
    prob->refcount++;
  }
}

// Drop one reference; the last one frees every block of the pool, and with
// them the record itself.
KVTL_API void mdldeallocprob(MDLprob prob) {
  int32_t before;
  if (asyncfree) {
    pthread_mutex_lock(&prob->pool->mutex);
    before = prob->refcount--;
    pthread_mutex_unlock(&prob->pool->mutex);
  } else {
    before = prob->refcount--;
  }
  if (before >= 2) return;
  pool_header hdr = *prob->pool;
  pthread_mutex_destroy(&prob->pool->mutex);
  pool_release_blocks(hdr);
}
