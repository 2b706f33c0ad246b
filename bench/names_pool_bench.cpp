/*
 * names_pool_bench.cpp -- throughput of the name dictionary (entering new
 * names, looking them up) and of the memory pool (bump allocation, and the
 * recycle / allocate cycle of the small-chunk free lists).
 */
#include <benchmark/benchmark.h>
#include <stdio.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "kvtl.h"

namespace {

// Names as a model makes them: "x_i_j" over a square grid.
std::vector<std::string> grid_names(int n) {
  std::vector<std::string> names;
  names.reserve(n);
  char buf[32];
  for (int k = 0; k < n; ++k) {
    snprintf(buf, sizeof buf, "x_%d_%d", k / 1000, k % 1000);
    names.emplace_back(buf);
  }
  return names;
}

// Pools need the library started (it installs the default allocator).
void start_library() {
  static const int started = mdlslinit();
  (void)started;
}

MDLprob quiet_problem() {
  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob(nullptr);
  mdlsetmsglevel_prob(prob, 1);
  return prob;
}

// n new names entered into a fresh dictionary (which doubles as it fills).
void BM_NameInsert(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  const std::vector<std::string> names = grid_names(n);
  static int entity;
  for (auto _ : state) {
    state.PauseTiming();
    MDLprob prob = quiet_problem();
    state.ResumeTiming();
    for (const std::string &s : names)
      benchmark::DoNotOptimize(mdlnormname(prob, s.c_str(), "VAR", MDL_KIND_VAR, &entity));
    state.PauseTiming();
    mdldelprob_prob(prob);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * n);
}

// Variables made with names: the dictionary plus the variable record.
void BM_NamedVariables(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  const std::vector<std::string> names = grid_names(n);
  for (auto _ : state) {
    state.PauseTiming();
    MDLprob prob = quiet_problem();
    state.ResumeTiming();
    for (const std::string &s : names)
      benchmark::DoNotOptimize(mdlnewvar_prob(prob, s.c_str(), MDL_CONTINUOUS, 0, 1));
    state.PauseTiming();
    mdldelprob_prob(prob);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * n);
}

// Look-ups of present names in random order.
void BM_NameLookup(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  std::vector<std::string> names = grid_names(n);
  MDLprob prob = quiet_problem();
  for (const std::string &s : names) mdlnewvar_prob(prob, s.c_str(), MDL_CONTINUOUS, 0, 1);
  std::shuffle(names.begin(), names.end(), std::mt19937_64(3));
  for (auto _ : state)
    for (const std::string &s : names)
      benchmark::DoNotOptimize(mdlgetbyname_prob(prob, s.c_str(), MDL_KIND_VAR));
  state.SetItemsProcessed(state.iterations() * n);
  mdldelprob_prob(prob);
}

// Look-ups of absent names (the failing path walks a whole bucket).
void BM_NameLookupMissing(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  const std::vector<std::string> names = grid_names(n);
  MDLprob prob = quiet_problem();
  for (const std::string &s : names) mdlnewvar_prob(prob, s.c_str(), MDL_CONTINUOUS, 0, 1);
  std::vector<std::string> missing;
  for (const std::string &s : names) missing.push_back("y" + s.substr(1));
  for (auto _ : state)
    for (const std::string &s : missing)
      benchmark::DoNotOptimize(mdlgetbyname_prob(prob, s.c_str(), MDL_KIND_VAR));
  state.SetItemsProcessed(state.iterations() * n);
  mdldelprob_prob(prob);
}

// Bump allocation of n chunks of 24 bytes (a term node) from a fresh pool.
void BM_PoolAllocate(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  start_library();
  for (auto _ : state) {
    state.PauseTiming();
    MDLprob prob = mdlallocprob();
    state.ResumeTiming();
    for (int i = 0; i < n; ++i) benchmark::DoNotOptimize(mdlallocmem(prob, 24, 0));
    state.PauseTiming();
    mdldeallocprob(prob);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * n);
}

// n chunks of each of three sizes given back and taken again: every
// allocation after the first round comes from a free list.
void BM_PoolRecycle(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  static const size_t sizes[] = {24, 32, 48};
  start_library();
  MDLprob prob = mdlallocprob();
  std::vector<void *> chunks(3 * static_cast<size_t>(n));
  for (size_t k = 0; k < chunks.size(); ++k) chunks[k] = mdlallocmem(prob, sizes[k % 3], 0);
  for (auto _ : state) {
    for (size_t k = 0; k < chunks.size(); ++k) mdlrecyclemem(prob, chunks[k], sizes[k % 3]);
    for (size_t k = chunks.size(); k-- > 0;) chunks[k] = mdlallocmem(prob, sizes[k % 3], 0);
    benchmark::DoNotOptimize(chunks.data());
  }
  state.SetItemsProcessed(state.iterations() * 2 * static_cast<int64_t>(chunks.size()));
  mdldeallocprob(prob);
}

}  // namespace

BENCHMARK(BM_NameInsert)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NamedVariables)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NameLookup)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NameLookupMissing)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PoolAllocate)->Arg(1000000);
BENCHMARK(BM_PoolRecycle)->Arg(100000);
