/*
 * mip_oracle.cpp -- generation of random small models with entities and
 * their solution by enumeration with Clp as the continuous solver.
 */
#include "mip_oracle.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <sstream>

#include <ClpSimplex.hpp>
#include <CoinPackedMatrix.hpp>

namespace oracle {

namespace {

constexpr double inf = KVSL_INFINITY;

// A small deterministic generator (the same numbers on every platform).
class rng {
 public:
  explicit rng(uint64_t seed) : s_(seed * 0x9E3779B97F4A7C15ull + 0x632BE59BD9B4E019ull) {}
  uint64_t next() {
    uint64_t z = (s_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  // Uniform integer in [lo, hi].
  int in(int lo, int hi) { return lo + static_cast<int>(next() % static_cast<uint64_t>(hi - lo + 1)); }
  // True with probability p percent.
  bool chance(int p) { return in(0, 99) < p; }
  template <class T>
  T pick(std::initializer_list<T> v) { return v.begin()[in(0, static_cast<int>(v.size()) - 1)]; }

 private:
  uint64_t s_;
};

// Draw a column of type t.
void draw_column(rng &r, model &m, char t) {
  double lb = 0, ub = inf, limit = 0;
  switch (t) {
    case 'C':
      lb = r.pick<double>({0, 0, -inf, -3, 1});
      ub = r.pick<double>({inf, 4, 10, 2.5});
      if (ub < lb) ub = lb + r.in(0, 2);
      break;
    case 'B': ub = 1; break;
    case 'I':
      lb = r.pick<double>({0, 0, -2, 1});
      ub = lb + r.in(0, 3);
      break;
    case 'S':
      limit = r.pick<double>({1, 2, 2.5, 4});
      ub = r.pick<double>({inf, 3, 6, 1.5, limit});
      break;
    case 'R':
      limit = r.pick<double>({1, 2, 2.5});
      ub = r.pick<double>({3, 5, 2});
      break;
    case 'P':
      lb = r.pick<double>({0, 0, -1});
      limit = r.pick<double>({1, 2, 2.5, 3});
      ub = r.pick<double>({inf, 5, 2});
      break;
    default: break;
  }
  m.coltype.push_back(t);
  m.lb.push_back(lb);
  m.ub.push_back(ub);
  m.limit.push_back(limit);
  m.obj.push_back(r.chance(15) ? 0.0 : r.in(-6, 6));
}

// Column types a model of the given kinds draws from.
std::string column_types(unsigned kinds) {
  std::string t = "CC";
  if (kinds & k_integer) t += "BBII";
  if (kinds & k_semicont) t += "SSR";
  if (kinds & k_partint) t += "PP";
  if (kinds & k_indicator) t += "B";
  return t;
}

// A set over some columns, members in increasing weight.
void draw_set(rng &r, model &m, char type) {
  std::vector<int> cols(m.ncols());
  std::iota(cols.begin(), cols.end(), 0);
  for (int k = m.ncols() - 1; k > 0; --k) std::swap(cols[k], cols[r.in(0, k)]);
  int size = r.in(2, std::min(m.ncols(), 5));
  cols.resize(size);
  std::vector<double> w;
  double next = r.in(0, 3);
  for (int k = 0; k < size; ++k) {
    w.push_back(next);
    next += r.pick<double>({1, 0.5, 2});
  }
  m.settype.push_back(type);
  m.members.push_back(cols);
  m.weights.push_back(w);
}

// A larger pure integer model: knapsack-like rows whose LP optimum is
// fractional, under an objective that pushes the columns against them.
model generate_large(rng &r, unsigned kinds) {
  model m;
  m.sense = r.chance(50) ? 1 : -1;
  int n = r.in(14, 18), rows = r.in(3, 7);
  for (int j = 0; j < n; ++j) {
    const bool binary = r.chance(90);
    m.coltype.push_back(binary ? 'B' : 'I');
    m.lb.push_back(0);
    m.ub.push_back(binary ? 1 : r.in(1, 3));
    m.limit.push_back(0);
    m.obj.push_back(-m.sense * r.in(1, 20));
  }
  const int top = (kinds & k_wide) != 0 ? 40 : 15;
  for (int i = 0; i < rows; ++i) {
    char t = r.chance(70) ? 'L' : r.chance(50) ? 'G' : 'E';
    std::vector<double> row(n, 0.0);
    double sum = 0;
    for (int j = 0; j < n; ++j)
      if (r.chance(70)) {
        row[j] = r.in(1, top);
        sum += row[j] * m.ub[j];
      }
    double rhs = std::floor(sum * r.in(30, 60) / 100.0);
    if (t == 'G') rhs = std::floor(sum * r.in(10, 30) / 100.0);
    m.rowtype.push_back(t);
    m.rhs.push_back(rhs);
    m.range.push_back(0.0);
    m.a.push_back(row);
  }
  return m;
}

// Append a row over the model's columns.
void add_row(model &m, char type, double rhs, std::vector<double> row) {
  m.rowtype.push_back(type);
  m.rhs.push_back(rhs);
  m.range.push_back(0.0);
  row.resize(static_cast<size_t>(m.ncols()), 0.0);
  m.a.push_back(std::move(row));
}

// Append a column; its index.
int add_column(model &m, char type, double lb, double ub, double cost) {
  m.coltype.push_back(type);
  m.lb.push_back(lb);
  m.ub.push_back(ub);
  m.limit.push_back(0);
  m.obj.push_back(cost);
  for (auto &row : m.a) row.push_back(0.0);
  return m.ncols() - 1;
}

// Integer columns whose continuous columns carry costs in a part of the
// model where, the integer columns fixed, the continuous optimum is
// integral (the objective's values then lie on a lattice the search may
// prune by), and near misses that break that by a half somewhere: largest
// deviations of integer sums from targets, flows from opened supplies to
// demands, and random rows of one or two continuous columns.
model generate_network(rng &r) {
  model m;
  m.sense = r.chance(50) ? 1 : -1;
  auto cost = [&](int lo, int hi) { return static_cast<double>(m.sense * r.in(lo, hi)); };
  auto half = [&](int percent) { return r.chance(percent) ? 0.5 : 0.0; };
  const int form = r.in(0, 2);
  if (form == 0) {
    // min d: sum_j a_kj x_j + s_k - t_k = b_k, d >= s_k, d >= t_k.
    const int nint = r.in(2, 6), targets = r.in(1, 3);
    for (int j = 0; j < nint; ++j) {
      const bool binary = r.chance(60);
      add_column(m, binary ? 'B' : 'I', 0, binary ? 1 : r.in(1, 3), r.chance(50) ? 0 : cost(-3, 3));
    }
    const int d = add_column(m, 'C', 0, inf, cost(1, 3));
    for (int k = 0; k < targets; ++k) {
      const int s = add_column(m, 'C', 0, inf, 0), t = add_column(m, 'C', 0, inf, 0);
      std::vector<double> row(static_cast<size_t>(m.ncols()), 0.0);
      for (int j = 0; j < nint; ++j) row[j] = r.in(-6, 6);
      row[s] = 1;
      row[t] = -1;
      add_row(m, 'E', r.in(-5, 15) + half(15), row);
      std::vector<double> above(static_cast<size_t>(m.ncols()), 0.0), below(above);
      above[d] = r.chance(5) ? 2 : 1;
      above[s] = -1;
      below[d] = 1;
      below[t] = -1;
      add_row(m, 'G', 0, above);
      add_row(m, 'G', 0, below);
    }
  } else if (form == 1) {
    // Supplies i opened by y_i: sum_j x_ij <= c_i y_i, x_ij <= u y_i; demands
    // sum_i x_ij >= d_j.
    const int supplies = r.in(2, 3), demands = r.in(2, 3);
    std::vector<int> y, x;
    for (int i = 0; i < supplies; ++i) y.push_back(add_column(m, 'B', 0, 1, cost(2, 12)));
    for (int k = 0; k < supplies * demands; ++k) x.push_back(add_column(m, 'C', 0, inf, cost(1, 5)));
    for (int i = 0; i < supplies; ++i) {
      std::vector<double> row(static_cast<size_t>(m.ncols()), 0.0);
      for (int j = 0; j < demands; ++j) row[x[i * demands + j]] = 1;
      row[y[i]] = -r.in(2, 8);
      add_row(m, 'L', 0, row);
    }
    for (int j = 0; j < demands; ++j) {
      std::vector<double> row(static_cast<size_t>(m.ncols()), 0.0);
      for (int i = 0; i < supplies; ++i) row[x[i * demands + j]] = 1;
      add_row(m, 'G', r.in(1, 4) + half(15), row);
    }
    for (int k = 0; k < supplies * demands; ++k)
      if (r.chance(40)) {
        std::vector<double> row(static_cast<size_t>(m.ncols()), 0.0);
        row[x[k]] = 1;
        row[y[k / demands]] = -r.in(1, 4);
        add_row(m, 'L', 0, row);
      }
  } else {
    // Random rows of integer columns and one or two continuous ones.
    const int nint = r.in(2, 5), ncont = r.in(2, 4), rows = r.in(2, 5);
    for (int j = 0; j < nint; ++j) {
      const bool binary = r.chance(50);
      add_column(m, binary ? 'B' : 'I', 0, binary ? 1 : r.in(1, 3), cost(-4, 4));
    }
    for (int j = 0; j < ncont; ++j)
      add_column(m, 'C', r.pick<double>({0, 0, -2}), r.pick<double>({inf, 3, 6}) + half(10),
                 cost(-4, 4));
    for (int i = 0; i < rows; ++i) {
      std::vector<double> row(static_cast<size_t>(m.ncols()), 0.0);
      for (int j = 0; j < nint; ++j)
        if (r.chance(60)) row[j] = r.in(-4, 4);
      const int a = nint + r.in(0, ncont - 1), b = nint + r.in(0, ncont - 1);
      row[a] = r.pick<double>({1, -1});
      if (b != a && r.chance(70)) row[b] = r.pick<double>({1, -1});
      add_row(m, r.pick<char>({'L', 'G', 'E'}), r.in(-3, 8) + half(10), row);
    }
  }
  return m;
}

// Number of combinations the oracle enumerates (capped).
double combinations(const model &m);

}  // namespace

model generate(uint64_t seed, unsigned kinds) {
  for (uint64_t attempt = 0;; ++attempt) {
    rng r(seed * 1000003ull + attempt);
    if ((kinds & k_large) != 0) {
      model m = generate_large(r, kinds);
      if (combinations(m) <= 300000) return m;
      continue;
    }
    if ((kinds & k_network) != 0) {
      model m = generate_network(r);
      if (combinations(m) <= 3000) return m;
      continue;
    }
    model m;
    m.sense = r.chance(50) ? 1 : -1;
    int n = r.in(2, 8), rows = r.in(1, 5);
    std::string types = column_types(kinds);
    for (int j = 0; j < n; ++j) draw_column(r, m, types[r.in(0, static_cast<int>(types.size()) - 1)]);
    for (int i = 0; i < rows; ++i) {
      char t = r.pick<char>({'L', 'L', 'G', 'G', 'E', 'R', 'N'});
      m.rowtype.push_back(t);
      m.rhs.push_back(r.in(-4, 12));
      m.range.push_back(t == 'R' ? r.pick<double>({0, 1, 3, 6}) : 0.0);
      std::vector<double> row(n, 0.0);
      for (int j = 0; j < n; ++j)
        if (r.chance(60))
          row[j] = (kinds & k_wide) != 0
                       ? r.pick<double>({1, 2, 3, 7, 12, 25, -1, -3, -9, -20, 0.5, 4.5})
                       : r.pick<double>({1, 1, 2, 3, 5, -1, -2, -4, 0.5});
      // Now and then a repeated row: degenerate models.
      if (i > 0 && r.chance(10)) {
        row = m.a[i - 1];
        m.rhs.back() = m.rhs[i - 1];
      }
      m.a.push_back(row);
    }
    if (kinds & k_sos1) {
      int k = r.in(1, 2);
      for (int s = 0; s < k; ++s) draw_set(r, m, '1');
    }
    if (kinds & k_sos2) {
      int k = r.in(1, 2);
      for (int s = 0; s < k; ++s) draw_set(r, m, '2');
    }
    if (kinds & k_indicator) {
      std::vector<int> bins;
      for (int j = 0; j < n; ++j)
        if (m.coltype[j] == 'B') bins.push_back(j);
      for (int i = 0; i < rows && !bins.empty(); ++i) {
        if (m.rowtype[i] == 'N' || !r.chance(60)) continue;
        m.indrow.push_back(i);
        m.indcol.push_back(bins[r.in(0, static_cast<int>(bins.size()) - 1)]);
        m.indflag.push_back(r.chance(60) ? 1 : -1);
      }
    }
    if (kinds & k_heldout) {
      for (int i = 0; i < rows; ++i) {
        if (r.chance(30)) m.delayed.push_back(i);
        else if (r.chance(30)) m.modelcuts.push_back(i);
      }
    }
    if (kinds & k_directive) {
      for (int j = 0; j < n; ++j)
        if (m.coltype[j] != 'C' && r.chance(50)) {
          m.dirobj.push_back(j);
          m.dirprio.push_back(r.in(0, 1000));
          m.dirdir.push_back(r.pick<char>({'U', 'D', 'N'}));
        }
      for (int s = 0; s < static_cast<int>(m.settype.size()); ++s)
        if (r.chance(50)) {
          m.dirobj.push_back(-s - 1);
          m.dirprio.push_back(r.in(0, 1000));
          m.dirdir.push_back(r.pick<char>({'U', 'D', 'N'}));
        }
    }
    if (combinations(m) <= 2000) return m;
  }
}

namespace {

// The pieces a column may take: intervals, one of which holds the value.
struct piece {
  double lo, up;
};

std::vector<piece> pieces_of(const model &m, int j) {
  double lb = m.lb[j], ub = m.ub[j], l = m.limit[j];
  std::vector<piece> out;
  auto integers = [&](double lo, double up, double below) {
    for (double v = std::ceil(lo); v <= up && v < below; v += 1.0) out.push_back({v, v});
  };
  switch (m.coltype[j]) {
    case 'C': out.push_back({lb, ub}); break;
    case 'B': case 'I': integers(lb, ub, inf); break;
    case 'S':
      if (lb <= 0 && ub >= 0) out.push_back({0, 0});
      if (std::max(lb, l) <= ub) out.push_back({std::max(lb, l), ub});
      break;
    case 'R':
      if (lb <= 0 && ub >= 0) out.push_back({0, 0});
      integers(std::max(lb, l), ub, inf);
      break;
    case 'P':
      integers(lb, ub, l);
      if (std::max(lb, l) <= ub) out.push_back({std::max(lb, l), ub});
      break;
    default: break;
  }
  return out;
}

// The windows of a set: the runs of members that may be non-zero.
int windows_of(const model &m, int s) {
  int size = static_cast<int>(m.members[s].size());
  return m.settype[s] == '2' ? std::max(size - 1, 1) : size;
}

double combinations(const model &m) {
  double c = 1;
  for (int j = 0; j < m.ncols(); ++j) c *= std::max<double>(pieces_of(m, j).size(), 1);
  for (int s = 0; s < static_cast<int>(m.settype.size()); ++s) c *= windows_of(m, s);
  return c;
}

// Backend bounds of a row.
void row_bounds(const model &m, int i, double &lo, double &up) {
  double b = m.rhs[i];
  lo = -COIN_DBL_MAX;
  up = COIN_DBL_MAX;
  switch (m.rowtype[i]) {
    case 'L': up = b; break;
    case 'G': lo = b; break;
    case 'E': lo = up = b; break;
    case 'R': lo = b - m.range[i]; up = b; break;
    default: break;
  }
}

double backend(double v) { return v >= inf ? COIN_DBL_MAX : v <= -inf ? -COIN_DBL_MAX : v; }

// Clp's verdict on the LP it holds: 0 optimal, 1 infeasible, 2 unbounded.
// Anything but an optimum is settled in two steps, as Clp's simplex calls
// some unbounded models infeasible: feasibility alone (zero objective,
// primal simplex from a slack basis), then the objective from there.
int lp_verdict(ClpSimplex &lp) {
  lp.dual();
  // The dual simplex's artificial bounds on free columns can end in a
  // false optimum of an unbounded LP; the primal simplex from its basis
  // (not its values pass, which keeps that point) finds the ray.
  if (lp.status() == 0) lp.primal(0);
  if (lp.status() == 0) return 0;
  std::vector<double> c(lp.objective(), lp.objective() + lp.numberColumns());
  std::vector<double> zero(c.size(), 0.0);
  lp.chgObjCoefficients(zero.data());
  lp.allSlackBasis(true);
  lp.primal();
  bool feasible = lp.status() == 0;
  lp.chgObjCoefficients(c.data());
  if (!feasible) {
    lp.allSlackBasis(true);
    return 1;
  }
  lp.primal(0);
  if (lp.status() == 0) return 0;
  lp.allSlackBasis(true);
  return 2;
}

// A Clp model of the rows and objective (sense folded into the objective).
void build_lp(const model &m, ClpSimplex &lp) {
  CoinPackedMatrix a(true, 0, 0);
  a.setDimensions(m.nrows(), 0);
  std::vector<double> lo(m.nrows()), up(m.nrows());
  for (int i = 0; i < m.nrows(); ++i) row_bounds(m, i, lo[i], up[i]);
  std::vector<double> c(m.ncols()), cl(m.ncols()), cu(m.ncols());
  for (int j = 0; j < m.ncols(); ++j) {
    std::vector<int> ind;
    std::vector<double> val;
    for (int i = 0; i < m.nrows(); ++i)
      if (m.a[i][j] != 0.0) {
        ind.push_back(i);
        val.push_back(m.a[i][j]);
      }
    a.appendCol(static_cast<int>(ind.size()), ind.data(), val.data());
    c[j] = m.sense * m.obj[j];
    cl[j] = backend(m.lb[j]);
    cu[j] = backend(m.ub[j]);
  }
  lp.loadProblem(a, cl.data(), cu.data(), c.data(), lo.data(), up.data());
  lp.setLogLevel(0);
}

}  // namespace

verdict solve(const model &m) {
  ClpSimplex lp;
  build_lp(m, lp);
  int n = m.ncols(), nsets = static_cast<int>(m.settype.size());
  std::vector<double> rlo(m.nrows()), rup(m.nrows());
  for (int i = 0; i < m.nrows(); ++i) row_bounds(m, i, rlo[i], rup[i]);

  verdict v{KVSL_MIP_INFEAS, 0.0, false};
  // The relaxation: every entity at its widest, no indicator row, no set.
  for (int j = 0; j < n; ++j) {
    double lo = m.lb[j], up = m.ub[j];
    if (m.coltype[j] == 'S' || m.coltype[j] == 'R') lo = std::min(lo, 0.0);
    lp.setColumnBounds(j, backend(lo), backend(up));
  }
  for (int k = 0; k < static_cast<int>(m.indrow.size()); ++k)
    lp.setRowBounds(m.indrow[k], -COIN_DBL_MAX, COIN_DBL_MAX);
  v.relaxation_unbounded = lp_verdict(lp) == 2;

  std::vector<std::vector<piece>> pieces(n);
  for (int j = 0; j < n; ++j) {
    pieces[j] = pieces_of(m, j);
    if (pieces[j].empty()) return v;  // no value at all: infeasible
  }
  // Mixed-radix counter over column pieces, then set windows.
  std::vector<int> radix;
  for (int j = 0; j < n; ++j) radix.push_back(static_cast<int>(pieces[j].size()));
  for (int s = 0; s < nsets; ++s) radix.push_back(windows_of(m, s));
  std::vector<int> digit(radix.size(), 0);
  bool found = false, unbounded = false;
  double best = 0.0;
  for (;;) {
    std::vector<double> lo(n), up(n);
    for (int j = 0; j < n; ++j) {
      lo[j] = pieces[j][digit[j]].lo;
      up[j] = pieces[j][digit[j]].up;
    }
    bool empty = false;
    for (int s = 0; s < nsets && !empty; ++s) {
      int w = digit[n + s], width = m.settype[s] == '2' ? 2 : 1;
      for (int k = 0; k < static_cast<int>(m.members[s].size()); ++k) {
        if (k >= w && k < w + width) continue;
        int j = m.members[s][k];
        lo[j] = std::max(lo[j], 0.0);
        up[j] = std::min(up[j], 0.0);
        if (lo[j] > up[j]) empty = true;
      }
    }
    bool fixed = !empty;
    for (int j = 0; j < n && fixed; ++j) fixed = lo[j] == up[j];
    if (fixed) {
      // Every column fixed: the point itself, checked as solutions are.
      if (feasible(m, lo, nullptr)) {
        double obj = 0.0;
        for (int j = 0; j < n; ++j) obj += m.obj[j] * lo[j];
        if (!found || m.sense * (obj - best) < 0) best = obj;
        found = true;
      }
    } else if (!empty) {
      for (int j = 0; j < n; ++j) lp.setColumnBounds(j, backend(lo[j]), backend(up[j]));
      for (int i = 0; i < m.nrows(); ++i) lp.setRowBounds(i, rlo[i], rup[i]);
      for (int k = 0; k < static_cast<int>(m.indrow.size()); ++k) {
        int z = static_cast<int>(lo[m.indcol[k]]);
        if (z != (m.indflag[k] > 0 ? 1 : 0))
          lp.setRowBounds(m.indrow[k], -COIN_DBL_MAX, COIN_DBL_MAX);
      }
      int r = lp_verdict(lp);
      if (r == 2) unbounded = true;
      if (r == 0) {
        double obj = m.sense * lp.objectiveValue();
        if (!found || m.sense * (obj - best) < 0) best = obj;
        found = true;
      }
    }
    size_t d = 0;
    while (d < digit.size() && ++digit[d] == radix[d]) digit[d++] = 0;
    if (d == digit.size()) break;
  }
  if (unbounded) v.status = KVSL_MIP_UNBOUNDED;
  else if (found) {
    v.status = KVSL_MIP_OPTIMAL;
    v.objective = best;
  }
  return v;
}

bool feasible(const model &m, const std::vector<double> &x, std::string *why) {
  constexpr double tol = 1e-6;
  auto fail = [&](const std::string &s) {
    if (why != nullptr) *why = s;
    return false;
  };
  auto integral = [&](double v) { return std::fabs(v - std::round(v)) <= tol; };
  for (int j = 0; j < m.ncols(); ++j) {
    double v = x[j];
    if (v < m.lb[j] - tol || v > m.ub[j] + tol) return fail("bound of column " + std::to_string(j));
    char t = m.coltype[j];
    if ((t == 'B' || t == 'I' || t == 'R') && !integral(v))
      return fail("integrality of column " + std::to_string(j));
    if ((t == 'S' || t == 'R') && std::fabs(v) > tol && v < m.limit[j] - tol)
      return fail("semi-continuous column " + std::to_string(j));
    if (t == 'P' && v < m.limit[j] - tol && !integral(v))
      return fail("partial integer column " + std::to_string(j));
  }
  std::vector<char> in_force(m.nrows(), 1);
  for (size_t k = 0; k < m.indrow.size(); ++k)
    if (std::lround(x[m.indcol[k]]) != (m.indflag[k] > 0 ? 1 : 0)) in_force[m.indrow[k]] = 0;
  for (int i = 0; i < m.nrows(); ++i) {
    if (!in_force[i]) continue;
    double act = 0;
    for (int j = 0; j < m.ncols(); ++j) act += m.a[i][j] * x[j];
    double lo, up;
    row_bounds(m, i, lo, up);
    double t = tol * (1 + std::fabs(act));
    if (act < lo - t || act > up + t) return fail("row " + std::to_string(i));
  }
  for (size_t s = 0; s < m.settype.size(); ++s) {
    int first = -1, last = -1;
    for (int k = 0; k < static_cast<int>(m.members[s].size()); ++k)
      if (std::fabs(x[m.members[s][k]]) > tol) {
        if (first < 0) first = k;
        last = k;
      }
    if (first >= 0 && last - first + 1 > (m.settype[s] == '2' ? 2 : 1))
      return fail("set " + std::to_string(s));
  }
  return true;
}

int load(KVSLprob p, const model &m) {
  std::vector<int64_t> start{0};
  std::vector<int> ind;
  std::vector<double> val;
  for (int j = 0; j < m.ncols(); ++j) {
    for (int i = 0; i < m.nrows(); ++i)
      if (m.a[i][j] != 0.0) {
        ind.push_back(i);
        val.push_back(m.a[i][j]);
      }
    start.push_back(static_cast<int64_t>(ind.size()));
  }
  std::string enttype;
  std::vector<int> entcol;
  std::vector<double> entlimit;
  for (int j = 0; j < m.ncols(); ++j)
    if (m.coltype[j] != 'C') {
      enttype.push_back(m.coltype[j]);
      entcol.push_back(j);
      entlimit.push_back(m.limit[j]);
    }
  std::vector<int64_t> setstart{0};
  std::vector<int> setcol;
  std::vector<double> setref;
  for (size_t s = 0; s < m.settype.size(); ++s) {
    setcol.insert(setcol.end(), m.members[s].begin(), m.members[s].end());
    setref.insert(setref.end(), m.weights[s].begin(), m.weights[s].end());
    setstart.push_back(static_cast<int64_t>(setcol.size()));
  }
  int rc = KVSLloadglobal64(p, "oracle", m.ncols(), m.nrows(), m.rowtype.data(), m.rhs.data(),
                            m.range.data(), m.obj.data(), start.data(), nullptr, ind.data(),
                            val.data(), m.lb.data(), m.ub.data(),
                            static_cast<int>(entcol.size()), static_cast<int>(m.settype.size()),
                            enttype.data(), entcol.data(), entlimit.data(), m.settype.data(),
                            setstart.data(), setcol.data(), setref.data());
  if (rc == 0 && !m.indrow.empty())
    rc = KVSLsetindicators(p, static_cast<int>(m.indrow.size()), m.indrow.data(),
                           m.indcol.data(), m.indflag.data());
  if (rc == 0 && !m.delayed.empty())
    rc = KVSLloaddelayedrows(p, static_cast<int>(m.delayed.size()), m.delayed.data());
  if (rc == 0 && !m.modelcuts.empty())
    rc = KVSLloadmodelcuts(p, static_cast<int>(m.modelcuts.size()), m.modelcuts.data());
  if (rc == 0 && !m.dirobj.empty())
    rc = KVSLloaddirs(p, static_cast<int>(m.dirobj.size()), m.dirobj.data(), m.dirprio.data(),
                      m.dirdir.data(), nullptr, nullptr);
  return rc;
}

std::string describe(const model &m) {
  std::ostringstream o;
  o << (m.sense > 0 ? "min" : "max");
  for (int j = 0; j < m.ncols(); ++j) o << " " << m.obj[j] << " x" << j;
  o << "\n";
  for (int i = 0; i < m.nrows(); ++i) {
    o << "  r" << i << ":";
    for (int j = 0; j < m.ncols(); ++j)
      if (m.a[i][j] != 0.0) o << " " << m.a[i][j] << " x" << j;
    o << " " << m.rowtype[i] << " " << m.rhs[i];
    if (m.rowtype[i] == 'R') o << " range " << m.range[i];
    o << "\n";
  }
  for (int j = 0; j < m.ncols(); ++j)
    o << "  x" << j << " " << m.coltype[j] << " [" << m.lb[j] << ", " << m.ub[j] << "] limit "
      << m.limit[j] << "\n";
  for (size_t s = 0; s < m.settype.size(); ++s) {
    o << "  set " << s << " type " << m.settype[s] << ":";
    for (size_t k = 0; k < m.members[s].size(); ++k)
      o << " x" << m.members[s][k] << "@" << m.weights[s][k];
    o << "\n";
  }
  for (size_t k = 0; k < m.indrow.size(); ++k)
    o << "  r" << m.indrow[k] << " in force when x" << m.indcol[k] << " = "
      << (m.indflag[k] > 0 ? 1 : 0) << "\n";
  for (int i : m.delayed) o << "  r" << i << " delayed\n";
  for (int i : m.modelcuts) o << "  r" << i << " model cut\n";
  for (size_t k = 0; k < m.dirobj.size(); ++k)
    o << "  directive " << m.dirobj[k] << " prio " << m.dirprio[k] << " " << m.dirdir[k] << "\n";
  return o.str();
}

}  // namespace oracle
