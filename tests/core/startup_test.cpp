/*
 * startup_test.cpp -- counted start-up and shutdown, wrapper start-ups,
 * per-thread context, memory-pressure notification, version and time.
 */
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <thread>

#include "core/fixture.h"
#include "core/runtime.h"

using Startup = CoreTest;

TEST_F(Startup, CountedInitAndFinish) {
  EXPECT_EQ(mdlslinit(), 0);
  EXPECT_EQ(mdlslinit(), 0);
  EXPECT_EQ(mdlslfinish(), 0);
  EXPECT_EQ(kvtl::defaults.initialised, 1);
  EXPECT_EQ(mdlslfinish(), 0);
  EXPECT_EQ(kvtl::defaults.initialised, 0);
  EXPECT_EQ(mdlslfinish(), 1);
  EXPECT_TRUE(errors.empty());
}

TEST_F(Startup, EngineStartedOnceAndFinishedByLastFinish) {
  ASSERT_EQ(mdlslinit(), 0);
  ASSERT_EQ(mdlslinit(), 0);
  EXPECT_EQ(fake::calls_of("KVSLinit").size(), 1u);
  EXPECT_TRUE(fake::calls_of("KVSLinit")[0].is_null("path"));
  mdlslfinish();
  EXPECT_EQ(fake::calls_of("KVSLfree").size(), 0u);
  mdlslfinish();
  EXPECT_EQ(fake::calls_of("KVSLfree").size(), 1u);
}

TEST_F(Startup, FinishWithoutInitReturnsOneSilently) {
  EXPECT_EQ(mdlslfinish(), 1);
  EXPECT_TRUE(errors.empty());
  EXPECT_TRUE(fake::calls_of("KVSLfree").empty());
}

TEST_F(Startup, EngineFailureReports1561AndRetriesLater) {
  fake::fail_call("KVSLinit", 1, 7);
  EXPECT_EQ(mdlslinit(), 1);
  ASSERT_EQ(errors.reports.size(), 1u);
  EXPECT_EQ(errors.last().number, 1561);
  EXPECT_EQ(errors.last().iserror, 1);
  EXPECT_EQ(errors.last().text, "(mdlslinit) Initialization failed (value: 7).");
  EXPECT_EQ(kvtl::defaults.initialised, 0);
  EXPECT_EQ(mdlslinit(), 0);
  EXPECT_EQ(kvtl::defaults.initialised, 1);
}

TEST_F(Startup, FinishRestoresGlobalDefaults) {
  ASSERT_EQ(mdlslinit(), 0);
  mdlsetmsglevel_prob(nullptr, 0);
  mdlsetcolorder_prob(nullptr, 2);
  mdlsetrealfmt_prob(nullptr, "%.3f");
  mdlseterrctrl(0);
  ASSERT_EQ(mdlslfinish(), 0);
  EXPECT_EQ(kvtl::defaults.msglevel, 3);
  EXPECT_EQ(kvtl::defaults.exit_on_error, 1);
  EXPECT_EQ(kvtl::defaults.colorder, 0);
  EXPECT_EQ(kvtl::defaults.cberr, nullptr);
  EXPECT_EQ(mdlsl_malloc, &malloc);
  EXPECT_EQ(mdlsl_free, &free);
}

namespace {
size_t counted_allocs = 0;
void *counting_malloc(size_t n) {
  ++counted_allocs;
  return malloc(n);
}
}  // namespace

TEST_F(Startup, AllocatorHooksKeptAtInitAndResetAtFinish) {
  mdlsl_malloc = counting_malloc;
  mdlsl_free = nullptr;
  ASSERT_EQ(mdlslinit(), 0);
  EXPECT_EQ(mdlsl_malloc, &counting_malloc);
  EXPECT_EQ(mdlsl_free, &free);
  counted_allocs = 0;
  std::thread([] { mdlgetdecsign(); }).join();   // a context for a new thread
  EXPECT_EQ(counted_allocs, 1u);
  mdlslfinish();
  EXPECT_EQ(mdlsl_malloc, &malloc);
}

TEST_F(Startup, CurrentProblemIsPerThread) {
  ASSERT_EQ(mdlslinit(), 0);
  EXPECT_EQ(mdlgetprob(), nullptr);
  auto *p = reinterpret_cast<MDLprob>(0x1000);
  MDLprob seen_in_a = nullptr, seen_in_b = reinterpret_cast<MDLprob>(1);
  std::thread a([&] {
    EXPECT_EQ(mdlgetprob(), nullptr);
    EXPECT_EQ(mdlchgprob(p), 0);
    seen_in_a = mdlgetprob();
  });
  a.join();
  std::thread b([&] { seen_in_b = mdlgetprob(); });
  b.join();
  EXPECT_EQ(seen_in_a, p);
  EXPECT_EQ(seen_in_b, nullptr);
  EXPECT_EQ(mdlgetprob(), nullptr);
  EXPECT_EQ(mdlchgprob(nullptr), 0);
}

TEST_F(Startup, DecimalSignIsPerThreadAndStartsAsPoint) {
  ASSERT_EQ(mdlslinit(), 0);
  EXPECT_EQ(mdlsetdecsign(','), 0);
  EXPECT_EQ(mdlgetdecsign(), ',');
  char fresh = 0;
  std::thread([&] { fresh = mdlgetdecsign(); }).join();
  EXPECT_EQ(fresh, '.');
  mdlsetdecsign('.');
}

TEST_F(Startup, ContextBeforeStartUpIsUsable) {
  EXPECT_EQ(mdlgetprob(), nullptr);
  EXPECT_EQ(mdlgetdecsign(), '.');
}

TEST_F(Startup, VersionText) { EXPECT_STREQ(mdlgetversion(), "4.8.8"); }

TEST_F(Startup, TimeIsProcessorTimeNotWallTime) {
  int32_t t0 = mdlgettime();
  usleep(300 * 1000);   // sleeping uses no processor time
  int32_t t1 = mdlgettime();
  EXPECT_LT(t1 - t0, 150);
  clock_t start = clock();
  volatile double x = 0;
  while (clock() - start < CLOCKS_PER_SEC / 5) x = x + 1;   // ~200 ms of work
  int32_t t2 = mdlgettime();
  EXPECT_GE(t2 - t1, 150);
}

TEST_F(Startup, ObjectWrapperStartUpSwitchesAsyncFree) {
  kvtl::defaults.wrapper_oo = 0;
  EXPECT_EQ(mdlslinitj(), 0);
  EXPECT_EQ(kvtl::asyncfree, 1);
  EXPECT_EQ(kvtl::defaults.initialised, 0);   // started at the first problem
  ASSERT_EQ(mdlslinit(), 0);
  EXPECT_EQ(mdlslinitj(), 0);                  // wrapper flag already set
  EXPECT_EQ(kvtl::defaults.initialised, 1);
  kvtl::defaults.wrapper_oo = 0;
}

TEST_F(Startup, ObjectWrapperCannotTakeOverForeignStartUp) {
  kvtl::defaults.wrapper_oo = 0;
  ASSERT_EQ(mdlslinit(), 0);
  EXPECT_EQ(mdlslinitj(), 1);
  EXPECT_EQ(kvtl::defaults.initialised, 0);   // its finish released the count
}

namespace {
std::vector<uint64_t> grown, shrunk;
void on_grow(uint64_t n) { grown.push_back(n); }
void on_shrink(uint64_t n) { shrunk.push_back(n); }
}  // namespace

TEST_F(Startup, ManagedWrapperHearsNetChangesInThresholdSteps) {
  kvtl::defaults.wrapper_managed = 0;
  grown.clear();
  shrunk.clear();
  mdlsetmemoryusagechangethreshold(1);
  ASSERT_EQ(mdlslinitdn(on_grow, on_shrink), 0);
  EXPECT_EQ(mdlgetmemoryusagechangethreshold(), 262144u);
  EXPECT_EQ(kvtl::asyncfree, 1);
  mdlsetmemoryusagechangethreshold(10000);
  // Blocks of the global pool: 4096 bytes each, first one 4096 too.
  // Global pool blocks: the first of 4192 bytes (4000 + head + free-list
  // table), then one of 4096 per further chunk of 4000 bytes.
  std::vector<void *> chunks;
  chunks.push_back(mdlallocmem(nullptr, 4000, 0));
  chunks.push_back(mdlallocmem(nullptr, 4000, 0));
  EXPECT_TRUE(grown.empty());                       // net 8288
  chunks.push_back(mdlallocmem(nullptr, 4000, 0));
  EXPECT_EQ(grown, std::vector<uint64_t>{12384});   // reported, back to 0
  chunks.push_back(mdlallocmem(nullptr, 4000, 0));  // net +4096
  mdlsetmemoryusagechangethreshold(8000);
  // Rolling back each last chunk frees its block (4096 each); the last
  // give-back releases the pool, reporting the first block's tail + head.
  mdlrecyclemem(nullptr, chunks[3], 4000);          // 4096 - 4096: sign turns
  mdlrecyclemem(nullptr, chunks[2], 4000);          // -4096
  EXPECT_TRUE(shrunk.empty());
  mdlrecyclemem(nullptr, chunks[1], 4000);          // -8192: reported
  EXPECT_EQ(shrunk, std::vector<uint64_t>{8192});
  mdlrecyclemem(nullptr, chunks[0], 4000);          // -32
  EXPECT_EQ(shrunk.size(), 1u);
  EXPECT_EQ(grown.size(), 1u);
  kvtl::defaults.wrapper_managed = 0;
}
