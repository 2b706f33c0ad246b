/*
 * bench_models.h -- the benchmark models' data, made by a fixed-seed
 * generator that the Python peer (pulp_peer.py) reproduces number for number.
 */
#ifndef KVTL_BENCH_MODELS_H
#define KVTL_BENCH_MODELS_H

#include <stdint.h>

#include <vector>

namespace bench {

// splitmix64: small, fast, and easy to reproduce exactly in Python.
struct rng {
  uint64_t state;
  explicit rng(uint64_t seed) : state(seed) {}
  uint64_t next() {
    uint64_t z = (state += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }
  // A value in 0 .. n-1 (modulo bias is irrelevant here).
  int below(int n) { return static_cast<int>(next() % static_cast<uint64_t>(n)); }
};

// p-median facility location on n sites and n customers:
//   min  sum_ij cost[i][j] x_ij
//   assign_j:  sum_i x_ij = 1         (n rows)
//   link_i_j:  x_ij - y_i <= 0        (n*n rows)
//   card:      sum_i y_i = p
//   y binary, 0 <= x <= 1.
struct pmedian {
  int n = 0;
  int p = 0;
  std::vector<int> cost;   // cost[i*n + j]: weight of j times distance i-j
};

// Dense transport LP from s sources to d sinks over every arc:
//   min  sum_ij cost[i][j] x_ij
//   supply_i:  sum_j x_ij <= supply[i]
//   demand_j:  sum_i x_ij >= demand[j]
//   x >= 0.
struct transport {
  int s = 0, d = 0;
  std::vector<int> supply, demand;
  std::vector<int> cost;   // cost[i*d + j]
};

pmedian make_pmedian(int n);
transport make_transport(int s, int d);

}  // namespace bench

#endif
