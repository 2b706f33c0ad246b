/*
 * expr_bench.cpp -- throughput of expression arithmetic on large
 * expressions: sums (terms per second) and products of two linear
 * expressions (quadratic terms made per second).
 */
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "kvtl.h"

namespace {

// A problem with n variables, through the public interface.
struct expr_model {
  MDLprob prob;
  std::vector<MDLvar> x;

  explicit expr_model(int n) {
    mdlseterrctrl(0);
    prob = mdlnewprob(nullptr);
    for (int i = 0; i < n; ++i) x.push_back(mdlnewvar_prob(prob, nullptr, MDL_CONTINUOUS, 0, 1));
  }
  ~expr_model() { mdldelprob_prob(prob); }
  expr_model(const expr_model &) = delete;
  expr_model &operator=(const expr_model &) = delete;

  // An expression of n terms over every `stride`-th variable from `from`,
  // added in a shuffled order (so that it is stripped when first read).
  MDLexpr linear(int n, int from, int stride, unsigned seed) {
    std::vector<int> order(n);
    for (int i = 0; i < n; ++i) order[i] = i;
    std::shuffle(order.begin(), order.end(), std::mt19937(seed));
    MDLexpr e = mdlnewexpr(nullptr, nullptr, 1);
    for (int i : order) mdladdexpr_term(e, x[(from + i * stride) % x.size()], nullptr, 1 + i % 7);
    mdlstripexpr(e);
    return e;
  }
};

// T += S for two expressions of n terms that share half their variables.
void BM_ExprAdd(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  expr_model m(2 * n);
  MDLexpr s = m.linear(n, 0, 2, 1);
  MDLexpr t = m.linear(n, n, 1, 2);
  for (auto _ : state) {
    if (mdladdexpr(t, s) != 0) state.SkipWithError("add failed");
    benchmark::DoNotOptimize(t);
  }
  state.SetItemsProcessed(state.iterations() * 2 * n);   // terms read
  mdldelexpr(s);
  mdldelexpr(t);
}

// Building an expression term by term in random variable order, then
// reading it once.
void BM_ExprAddTerm(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  expr_model m(n);
  for (auto _ : state) {
    MDLexpr e = m.linear(n, 0, 1, 3);
    benchmark::DoNotOptimize(mdlgetstatexpr(e));
    mdldelexpr(e);
  }
  state.SetItemsProcessed(state.iterations() * n);
}

// (a + sum of n terms) times (b + sum of n terms): n*n quadratic terms.
void BM_ExprMul(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  expr_model m(2 * n);
  MDLexpr a = m.linear(n, 0, 2, 4);
  MDLexpr b = m.linear(n, 1, 2, 5);
  for (auto _ : state) {
    state.PauseTiming();
    MDLexpr p = nullptr;
    mdldupexpr(&p, a);
    state.ResumeTiming();
    if (mdlmulexpr(p, b) != 0) state.SkipWithError("product failed");
    state.PauseTiming();
    mdldelexpr(p);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(n) * n);
  mdldelexpr(a);
  mdldelexpr(b);
}

// Text of an expression of n terms.
void BM_ExprToString(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  expr_model m(n);
  MDLexpr e = m.linear(n, 0, 1, 6);
  for (auto _ : state) {
    char *t = mdlexpr2str(e, MDL_LEQ);
    benchmark::DoNotOptimize(t);
    mdlfree2str(t);
  }
  state.SetItemsProcessed(state.iterations() * n);
  mdldelexpr(e);
}

}  // namespace

BENCHMARK(BM_ExprAdd)->Arg(1000)->Arg(100000);
BENCHMARK(BM_ExprAddTerm)->Arg(1000)->Arg(100000);
BENCHMARK(BM_ExprMul)->Arg(100)->Arg(1000);
BENCHMARK(BM_ExprToString)->Arg(1000)->Arg(100000);
