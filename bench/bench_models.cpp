/*
 * bench_models.cpp -- fixed-seed data of the benchmark models (see
 * bench_models.h; pulp_peer.py draws the same numbers in the same order).
 */
#include "bench_models.h"

#include <math.h>

namespace bench {

// Sites and customers on a 10000 x 10000 integer grid; a customer's weight
// (1..10) times the truncated Euclidean distance is the assignment cost.
pmedian make_pmedian(int n) {
  pmedian m;
  m.n = n;
  m.p = n / 10 > 0 ? n / 10 : 1;
  rng r(12345);
  std::vector<int> sx(n), sy(n), cx(n), cy(n), w(n);
  for (int i = 0; i < n; ++i) {
    sx[i] = r.below(10000);
    sy[i] = r.below(10000);
  }
  for (int j = 0; j < n; ++j) {
    cx[j] = r.below(10000);
    cy[j] = r.below(10000);
    w[j] = 1 + r.below(10);
  }
  m.cost.resize(static_cast<size_t>(n) * n);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      const int64_t dx = sx[i] - cx[j], dy = sy[i] - cy[j];
      // Exact: the square is below 2^28, far inside a double's precision.
      const int dist = static_cast<int>(floor(sqrt(static_cast<double>(dx * dx + dy * dy))));
      m.cost[static_cast<size_t>(i) * n + j] = w[j] * dist;
    }
  return m;
}

// Supplies of 4..400 per source against demands of 1..50 per sink, with
// d >= s in every size we use: always feasible.
transport make_transport(int s, int d) {
  transport t;
  t.s = s;
  t.d = d;
  rng r(67890);
  t.supply.resize(s);
  t.demand.resize(d);
  for (int i = 0; i < s; ++i) t.supply[i] = 4 * (1 + r.below(100));
  for (int j = 0; j < d; ++j) t.demand[j] = 1 + r.below(50);
  t.cost.resize(static_cast<size_t>(s) * d);
  for (auto &c : t.cost) c = 1 + r.below(1000);
  return t;
}

}  // namespace bench
