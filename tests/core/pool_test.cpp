/*
 * pool_test.cpp -- memory pools: bump allocation and rollback, free lists,
 * block sizes, text copies, annotate hooks, allocation failure, the global
 * pool under several threads, problem records and their references.
 */
#include <stdlib.h>
#include <string.h>

#include <thread>
#include <vector>

#include "core/fixture.h"
#include "core/pool.h"
#include "core/runtime.h"
#include "problem/problem.h"

namespace {

std::vector<uint64_t> obtained, released;
void on_alloc(uint64_t n) { obtained.push_back(n); }
void on_free(uint64_t n) { released.push_back(n); }

// Allocator that fails from the nth call on (1-based); 0 never fails.
int fail_from = 0;
int malloc_calls = 0;
void *failing_malloc(size_t n) {
  ++malloc_calls;
  if (fail_from != 0 && malloc_calls >= fail_from) return nullptr;
  return malloc(n);
}

struct Pool : CoreTest {
  void SetUp() override {
    CoreTest::SetUp();
    obtained.clear();
    released.clear();
    mdlsetcbglbmemannotify(on_alloc, on_free);
    prob = mdlallocprob();
    ASSERT_NE(prob, nullptr);
  }
  void TearDown() override {
    if (prob != nullptr) mdldeallocprob(prob);
    mdlsl_malloc = malloc;
    fail_from = 0;
    CoreTest::TearDown();
  }
  MDLprob prob = nullptr;
};

}  // namespace

TEST_F(Pool, ProblemRecordHeadsItsOwnPool) {
  EXPECT_EQ(prob->refcount, 1);
  EXPECT_EQ(prob->pool, &prob->poolhdr);
  EXPECT_EQ(prob->poolhdr.live, 1u);
  EXPECT_EQ(obtained, std::vector<uint64_t>{4096});
  // The record sits right after the block head and the free-list table.
  EXPECT_EQ(reinterpret_cast<char *>(prob),
            reinterpret_cast<char *>(prob->poolhdr.first) + 32 + 160);
}

TEST_F(Pool, RecyclingTheLastChunkRollsBack) {
  void *a = mdlallocmem(prob, 8, 0);
  mdlrecyclemem(prob, a, 8);
  void *b = mdlallocmem(prob, 8, 0);
  EXPECT_EQ(a, b);
  EXPECT_EQ(prob->poolhdr.freelists[0], nullptr);   // not through the free list
  mdlrecyclemem(prob, b, 8);
}

TEST_F(Pool, OutOfOrderChunkGoesToItsFreeList) {
  void *a = mdlallocmem(prob, 24, 0);
  void *b = mdlallocmem(prob, 24, 0);
  mdlrecyclemem(prob, a, 24);
  EXPECT_EQ(prob->poolhdr.freelists[24 / 4 - 2], a);
  void *c = mdlallocmem(prob, 24, 0);
  EXPECT_EQ(c, a);
  void *d = mdlallocmem(prob, 20, 0);   // another size class: bumped
  EXPECT_NE(d, a);
  mdlrecyclemem(prob, d, 20);
  mdlrecyclemem(prob, c, 24);
  mdlrecyclemem(prob, b, 24);
}

TEST_F(Pool, LargeChunkRecycledOutOfOrderIsNotReused) {
  void *a = mdlallocmem(prob, 100, 0);
  void *b = mdlallocmem(prob, 100, 0);
  mdlrecyclemem(prob, a, 100);
  void *c = mdlallocmem(prob, 100, 0);
  EXPECT_NE(c, a);
  EXPECT_EQ(static_cast<char *>(c), static_cast<char *>(b) + 100);   // plain bump
}

TEST_F(Pool, BlockSizes) {
  obtained.clear();
  void *a = mdlallocmem(prob, 5000, 0);
  EXPECT_EQ(obtained, std::vector<uint64_t>{5032});
  obtained.clear();
  void *g = mdlallocmem(nullptr, 5000, 0);   // first block of the global pool
  EXPECT_EQ(obtained, std::vector<uint64_t>{5192});
  mdlrecyclemem(nullptr, g, 5000);
  EXPECT_EQ(kvtl::global_pool().first, nullptr);   // released at live count 0
  EXPECT_EQ(released, std::vector<uint64_t>{32});  // free tail (0) + head
  mdlrecyclemem(prob, a, 5000);
}

TEST_F(Pool, BumpAlignsOnlyMultiplesOfEight) {
  char *a = static_cast<char *>(mdlallocmem(prob, 12, 0));
  char *b = static_cast<char *>(mdlallocmem(prob, 4, 0));
  EXPECT_EQ(b, a + 12);
  char *c = static_cast<char *>(mdlallocmem(prob, 16, 0));
  EXPECT_EQ(c, b + 4);   // a + 16 is aligned already
  char *d = static_cast<char *>(mdlallocmem(prob, 12, 0));
  char *e = static_cast<char *>(mdlallocmem(prob, 8, 0));
  EXPECT_EQ(e, d + 16);  // moved on by 4
  EXPECT_EQ(reinterpret_cast<uintptr_t>(e) % 8, 0u);
}

TEST_F(Pool, EmptiedBlockIsFreedWithItsFullSize) {
  void *a = mdlallocmem(prob, 3000, 0);
  void *b = mdlallocmem(prob, 3000, 0);   // does not fit: a second block
  EXPECT_EQ(obtained.size(), 2u);
  released.clear();
  mdlrecyclemem(prob, b, 3000);
  EXPECT_EQ(released, std::vector<uint64_t>{4096});
  EXPECT_EQ(prob->poolhdr.current, prob->poolhdr.first);
  mdlrecyclemem(prob, a, 3000);
}

TEST_F(Pool, ZeroFill) {
  auto *a = static_cast<unsigned char *>(mdlallocmem(prob, 64, 0));
  memset(a, 0xAB, 64);
  mdlrecyclemem(prob, a, 64);
  auto *b = static_cast<unsigned char *>(mdlallocmem(prob, 64, 1));
  ASSERT_EQ(a, b);
  for (int i = 0; i < 64; ++i) EXPECT_EQ(b[i], 0) << i;
}

TEST_F(Pool, StrdupSizes) {
  EXPECT_EQ(mdlstrdup(prob, ""), nullptr);
  EXPECT_EQ(mdlstrdup(prob, nullptr), nullptr);
  char *s7 = mdlstrdup(prob, "abcdefg");
  char *next = static_cast<char *>(mdlallocmem(prob, 4, 0));
  EXPECT_STREQ(s7, "abcdefg");
  EXPECT_EQ(next - s7, 8);
  char *s8 = mdlstrdup(prob, "abcdefgh");
  next = static_cast<char *>(mdlallocmem(prob, 4, 0));
  EXPECT_STREQ(s8, "abcdefgh");
  EXPECT_EQ(next - s8, 12);
  char *s1 = mdlstrdup(prob, "a");
  next = static_cast<char *>(mdlallocmem(prob, 4, 0));
  EXPECT_EQ(next - s1, 8);
  EXPECT_EQ(prob->poolhdr.live, 7u);
}

TEST_F(Pool, ReleaseReportsTailAndHeadOfEveryBlock) {
  mdlallocmem(prob, 1000, 0);
  mdlallocmem(prob, 5000, 0);
  released.clear();
  mdldeallocprob(prob);
  prob = nullptr;
  // First block: 4096 - 32 - 160 - record - 1000 free; second: exactly full.
  ASSERT_EQ(released.size(), 2u);
  EXPECT_EQ(released[1], 32u);
  EXPECT_EQ(released[0], 4096 - 160 - ((sizeof(mdl_problem) + 7) / 8 * 8) - 1000);
}

TEST_F(Pool, ReferencesKeepThePoolAlive) {
  mdlinrcprob(prob);
  EXPECT_EQ(prob->refcount, 2);
  released.clear();
  mdldeallocprob(prob);
  EXPECT_TRUE(released.empty());
  EXPECT_EQ(prob->refcount, 1);
  mdldeallocprob(prob);
  EXPECT_EQ(released.size(), 1u);
  prob = nullptr;
}

TEST_F(Pool, AsyncFreeModeLocksReferenceCounts) {
  mdlsetasyncfree(1);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([this] {
      for (int i = 0; i < 1000; ++i) mdlinrcprob(prob);
      for (int i = 0; i < 1000; ++i) mdldeallocprob(prob);
    });
  for (auto &t : threads) t.join();
  EXPECT_EQ(prob->refcount, 1);
  mdlsetasyncfree(0);
}

TEST_F(Pool, FailedBlockReports1502AndLeavesPoolUnchanged) {
  errors.install(prob);   // a problem reports through its own callback
  void *a = mdlallocmem(prob, 8, 0);
  kvtl::pool_header before = prob->poolhdr;
  mdlsl_malloc = failing_malloc;
  malloc_calls = 0;
  fail_from = 1;
  EXPECT_EQ(mdlallocmem(prob, 10000, 0), nullptr);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().number, 1502);
  EXPECT_EQ(errors.last().iserror, 1);
  EXPECT_EQ(errors.last().text, "Not enough memory.");
  EXPECT_EQ(errors.last().prob, prob);
  EXPECT_EQ(prob->poolhdr.live, before.live);
  EXPECT_EQ(prob->poolhdr.current, before.current);
  EXPECT_EQ(prob->poolhdr.current->cursor, before.current->cursor);
  EXPECT_NE(mdlallocmem(prob, 8, 0), nullptr);   // bumping needs no block
  mdlsl_malloc = malloc;
  mdlrecyclemem(prob, a, 8);
}

TEST_F(Pool, ProblemRecordAllocationFailureSweep) {
  mdlsl_malloc = failing_malloc;
  fail_from = 1;
  malloc_calls = 0;
  errors.reports.clear();
  EXPECT_EQ(mdlallocprob(), nullptr);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().number, 1502);
  EXPECT_EQ(errors.last().prob, nullptr);
}

TEST_F(Pool, GlobalPoolUnderThreads) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([] {
      std::vector<void *> chunks;
      for (int i = 0; i < 2000; ++i) {
        size_t size = 8 + (i % 10) * 8;
        chunks.push_back(mdlallocmem(nullptr, size, 1));
      }
      for (size_t i = 0; i < chunks.size(); ++i) mdlrecyclemem(nullptr, chunks[i], 8 + (i % 10) * 8);
    });
  for (auto &t : threads) t.join();
  EXPECT_EQ(kvtl::global_pool().live, 0u);
  EXPECT_EQ(kvtl::global_pool().first, nullptr);
}
