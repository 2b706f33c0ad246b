/*
 * termlist_bench.cpp -- throughput of adding terms to term lists (ascending,
 * random and repeated-last order, linear and quadratic) and bytes per term,
 * directly and through the public constraint interface.
 */
#include <benchmark/benchmark.h>
#include <stdint.h>
#include <stdlib.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "core/pool.h"
#include "kvtl.h"
#include "problem/problem.h"

namespace {

// A bare problem with n variables in ascending handle order.
struct model {
  MDLprob prob;
  std::vector<MDLvar> x;

  explicit model(int n) {
    if (mdlsl_malloc == nullptr) mdlsl_malloc = malloc;
    if (mdlsl_free == nullptr) mdlsl_free = free;
    prob = mdlallocprob();
    for (int i = 0; i < n; ++i) {
      auto *v = static_cast<MDLvar>(mdlallocmem(prob, sizeof(mdl_var), 1));
      v->problem = prob;
      x.push_back(v);
    }
    std::sort(x.begin(), x.end(), [](MDLvar a, MDLvar b) {
      return reinterpret_cast<uintptr_t>(a) < reinterpret_cast<uintptr_t>(b);
    });
  }
  ~model() { mdldeallocprob(prob); }
  model(const model &) = delete;
  model &operator=(const model &) = delete;

  // Bytes bumped so far from the pool's blocks.
  uint64_t pool_bytes() const {
    uint64_t used = 0;
    for (kvtl::pool_block *b = prob->pool->first; b != nullptr; b = b->next)
      used += static_cast<uint64_t>(b->cursor - reinterpret_cast<char *>(b)) - kvtl::block_head_size;
    return used;
  }
};

// Records terms per second and the pool bytes one list took per term.
void report(benchmark::State &state, int64_t terms_per_iteration, double bytes_per_term) {
  state.SetItemsProcessed(state.iterations() * terms_per_iteration);
  state.counters["bytes_per_term"] = bytes_per_term;
}

// Pool bytes per term of the list built by `build` on a fresh problem.
template <class Build>
double measure_bytes(int n, Build build) {
  model m(n);
  const uint64_t before = m.pool_bytes();
  MDLtermlst list = nullptr;
  const int64_t terms = build(m, list);
  mdlstriptermlst(&list);
  const double bytes = static_cast<double>(m.pool_bytes() - before) / static_cast<double>(terms);
  mdldel_termlst(&list);
  return bytes;
}

void BM_AddAscending(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  auto build = [n](model &m, MDLtermlst &list) {
    for (int i = 0; i < n; ++i) mdladd_term(m.x[i], &list, 1.0 + i);
    return static_cast<int64_t>(n);
  };
  model m(n);
  for (auto _ : state) {
    MDLtermlst list = nullptr;
    build(m, list);
    benchmark::DoNotOptimize(list);
    mdldel_termlst(&list);
  }
  report(state, n, measure_bytes(n, build));
}

// Distinct variables in random order, merged by strips as reading would.
void BM_AddRandom(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  std::vector<int> order(n);
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), std::mt19937_64(42));
  auto build = [&order](model &m, MDLtermlst &list) {
    for (int i : order) mdladd_term(m.x[i], &list, 1.0 + i);
    mdlstriptermlst(&list);
    return static_cast<int64_t>(order.size());
  };
  model m(n);
  for (auto _ : state) {
    MDLtermlst list = nullptr;
    build(m, list);
    benchmark::DoNotOptimize(list);
    mdldel_termlst(&list);
  }
  report(state, n, measure_bytes(n, build));
}

// Random variables with repeats: many adds fall on terms already present.
void BM_AddRandomRepeats(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  std::vector<int> order(4 * static_cast<size_t>(n));
  std::mt19937_64 rng(7);
  for (int &i : order) i = std::uniform_int_distribution<int>(0, n - 1)(rng);
  model m(n);
  for (auto _ : state) {
    MDLtermlst list = nullptr;
    for (int i : order) mdladd_term(m.x[i], &list, 1.0);
    mdlstriptermlst(&list);
    benchmark::DoNotOptimize(list);
    mdldel_termlst(&list);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(order.size()));
}

void BM_AddRepeatedLast(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  model m(2);
  MDLtermlst list = nullptr;
  mdladd_term(m.x[0], &list, 1.0);
  for (auto _ : state)
    for (int i = 0; i < n; ++i) mdladd_term(m.x[1], &list, 1.0);
  benchmark::DoNotOptimize(list);
  mdldel_termlst(&list);
  state.SetItemsProcessed(state.iterations() * n);
}

void BM_QuadAddAscending(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));   // variables; n*(n+1)/2 terms
  auto build = [n](model &m, MDLtermlst &list) {
    int64_t terms = 0;
    for (int i = 0; i < n; ++i)
      for (int j = i; j < n; ++j, ++terms) mdladd_qterm(m.x[i], m.x[j], &list, 1.0);
    return terms;
  };
  model m(n);
  int64_t terms = 0;
  for (auto _ : state) {
    MDLtermlst list = nullptr;
    terms = build(m, list);
    benchmark::DoNotOptimize(list);
    mdldel_qtermlst(&list);
  }
  state.SetItemsProcessed(state.iterations() * terms);
}

void BM_QuadAddRandom(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  std::vector<std::pair<int, int>> order;
  for (int i = 0; i < n; ++i)
    for (int j = i; j < n; ++j) order.emplace_back(i, j);
  std::shuffle(order.begin(), order.end(), std::mt19937_64(42));
  model m(n);
  for (auto _ : state) {
    MDLtermlst list = nullptr;
    for (auto [i, j] : order) mdladd_qterm(m.x[i], m.x[j], &list, 1.0);
    mdlstripqtermlst(&list);
    benchmark::DoNotOptimize(list);
    mdldel_qtermlst(&list);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(order.size()));
}

// The public path a model takes: mdladdterm on a constraint, variables made
// with mdlnewvar_prob (ascending handles), n terms per constraint.
struct api_model {
  MDLprob prob;
  std::vector<MDLvar> x;

  explicit api_model(int n) {
    mdlseterrctrl(0);
    prob = mdlnewprob(nullptr);
    mdlsetmsglevel_prob(prob, 1);
    mdlsetdictsize_prob(prob, 0, 0);
    for (int i = 0; i < n; ++i) x.push_back(mdlnewvar_prob(prob, nullptr, MDL_CONTINUOUS, 0, 1));
  }
  ~api_model() { mdldelprob_prob(prob); }
  api_model(const api_model &) = delete;
  api_model &operator=(const api_model &) = delete;
};

// Adds in the order of `order` (indices into the variables) to a fresh
// constraint each iteration; deleting the constraint is not timed.
void api_adds(benchmark::State &state, api_model &m, const std::vector<int> &order) {
  for (auto _ : state) {
    MDLctr c = mdlnewctr_prob(m.prob, nullptr, MDL_LEQ);
    for (int i : order) mdladdterm(c, m.x[i], 1.0);
    benchmark::DoNotOptimize(c);
    state.PauseTiming();
    mdldelctr(c);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(order.size()));
}

void BM_ApiAddTermAscending(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  api_model m(n);
  std::vector<int> order(n);
  std::iota(order.begin(), order.end(), 0);
  api_adds(state, m, order);
}

// Random order, then the strip that generation does before reading a row.
void BM_ApiAddTermRandomStrip(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  api_model m(n);
  std::vector<int> order(n);
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), std::mt19937_64(42));
  for (auto _ : state) {
    MDLctr c = mdlnewctr_prob(m.prob, nullptr, MDL_LEQ);
    for (int i : order) mdladdterm(c, m.x[i], 1.0);
    mdlgetctrsize(c);   // strips the pending tail
    benchmark::DoNotOptimize(c);
    state.PauseTiming();
    mdldelctr(c);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void BM_ApiAddTermRepeatedLast(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  api_model m(2);
  std::vector<int> order(n, 1);
  order[0] = 0;
  api_adds(state, m, order);
}

}  // namespace

BENCHMARK(BM_ApiAddTermAscending)->Arg(1000)->Arg(100000);
BENCHMARK(BM_ApiAddTermRandomStrip)->Arg(1000)->Arg(10000)->Arg(100000)->Arg(1000000);
BENCHMARK(BM_ApiAddTermRepeatedLast)->Arg(100000);
BENCHMARK(BM_AddAscending)->Arg(1000)->Arg(100000);
BENCHMARK(BM_AddRandom)->Arg(1000)->Arg(10000)->Arg(100000)->Arg(1000000);
BENCHMARK(BM_AddRandomRepeats)->Arg(1000)->Arg(100000);
BENCHMARK(BM_AddRepeatedLast)->Arg(100000);
BENCHMARK(BM_QuadAddAscending)->Arg(100)->Arg(450);
BENCHMARK(BM_QuadAddRandom)->Arg(100)->Arg(450);
