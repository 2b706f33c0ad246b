/*
 * model_bench.cpp -- one measurement of the build/load benchmark: a model of
 * a given size built and loaded by the library or written by hand as column
 * arrays straight into the engine or into Clp.  One case per process, so
 * that the peak memory the driver reads belongs to that case alone.
 *
 *   kvtl_model_bench pmedian|transport SIZE VARIANT [--solve]
 *     SIZE      p-median: sites = customers; transport: sources (sinks = 2x)
 *     VARIANT   lib         the public C API, every object named
 *               lib-nonames the public C API, names switched off
 *               lib-presized as lib, the dictionary made large enough at once
 *               kvsl-names  hand-built arrays and names into the engine
 *               kvsl        hand-built arrays into the engine
 *               clp         hand-built arrays into ClpSimplex::loadProblem
 *               idle        start-up only (memory baseline)
 *     --solve   also solve the LP relaxation and print its objective (to
 *               check that every variant states the same model)
 *
 * Prints one line of key=value pairs: build and load in wall and in CPU
 * seconds, columns, rows, coefficients and (with --solve) the objective.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <string>
#include <vector>

#include "ClpSimplex.hpp"
#include "bench_models.h"
#include "kvsl.h"
#include "kvtl.h"

namespace {

double seconds(clockid_t clock) {
  timespec ts;
  clock_gettime(clock, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// A point in time on the wall clock and on the process's CPU clock (user
// and system time): on a shared machine the CPU time is the steadier one.
struct stamp {
  double wall, cpu;
  static stamp now() { return {seconds(CLOCK_MONOTONIC), seconds(CLOCK_PROCESS_CPUTIME_ID)}; }
};

struct result {
  double build = 0, load = 0;          // wall seconds
  double build_cpu = 0, load_cpu = 0;  // CPU seconds
  long cols = 0, rows = 0, nnz = 0;
  bool solved = false;
  double objective = 0;

  void record(const stamp &t0, const stamp &t1, const stamp &t2) {
    build = t1.wall - t0.wall;
    load = t2.wall - t1.wall;
    build_cpu = t1.cpu - t0.cpu;
    load_cpu = t2.cpu - t1.cpu;
  }
};

[[noreturn]] void die(const char *what) {
  fprintf(stderr, "kvtl_model_bench: %s\n", what);
  exit(1);
}

// ---- Through the library --------------------------------------------------

// A new silent problem; with names off the dictionary is never made, with
// `presize` names expected it is made that large at once.
MDLprob new_problem(bool named, long presize) {
  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob(nullptr);
  if (prob == nullptr) die("mdlnewprob failed");
  mdlsetmsglevel_prob(prob, 1);
  if (!named && mdlsetdictsize_prob(prob, 0, 0) != 0) die("cannot switch names off");
  if (named && presize > 0 && mdlsetdictsize_prob(prob, 0, static_cast<int>(presize)) != 0)
    die("cannot size the dictionary");
  return prob;
}

// Load (timed) and optionally solve the LP relaxation.
void lib_finish(MDLprob prob, bool solve, const stamp &t0, const stamp &t1, result &r) {
  if (mdlloadmat_prob(prob) != 0) die("mdlloadmat_prob failed");
  r.record(t0, t1, stamp::now());
  int value = 0;
  KVSLgetintattrib(mdlgetkvslprob_prob(prob), KVSL_ATTR_ROWS, &value);
  r.rows = value;
  if (solve) {
    if (mdlminim_prob(prob, "") != 0) die("mdlminim_prob failed");
    r.solved = true;
    r.objective = mdlgetobjval_prob(prob);
  }
}

void lib_pmedian(const bench::pmedian &m, bool named, long presize, bool solve, result &r) {
  const int n = m.n;
  MDLprob prob = new_problem(named, presize);
  auto name = [named](const char *fmt, int a, int b) {
    return named ? mdlnewname(fmt, a, b) : nullptr;
  };
  const stamp t0 = stamp::now();
  std::vector<MDLvar> y(n), x(static_cast<size_t>(n) * n);
  for (int i = 0; i < n; ++i) y[i] = mdlnewvar_prob(prob, name("y_%d", i, 0), MDL_BINARY, 0, 1);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j)
      x[static_cast<size_t>(i) * n + j] =
          mdlnewvar_prob(prob, name("x_%d_%d", i, j), MDL_CONTINUOUS, 0, 1);
  MDLctr cost = mdlnewctr_prob(prob, named ? "cost" : nullptr, MDL_NONBINDING);
  for (size_t k = 0; k < x.size(); ++k) mdladdterm(cost, x[k], m.cost[k]);
  for (int j = 0; j < n; ++j) {
    MDLctr c = mdlnewctr_prob(prob, name("assign_%d", j, 0), MDL_EQ);
    for (int i = 0; i < n; ++i) mdladdterm(c, x[static_cast<size_t>(i) * n + j], 1.0);
    mdladdterm(c, nullptr, 1.0);
  }
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      MDLctr c = mdlnewctr_prob(prob, name("link_%d_%d", i, j), MDL_LEQ);
      mdladdterm(c, x[static_cast<size_t>(i) * n + j], 1.0);
      mdladdterm(c, y[i], -1.0);
    }
  MDLctr card = mdlnewctr_prob(prob, named ? "card" : nullptr, MDL_EQ);
  for (int i = 0; i < n; ++i) mdladdterm(card, y[i], 1.0);
  mdladdterm(card, nullptr, m.p);
  if (mdlsetobj_prob(prob, cost) != 0) die("mdlsetobj_prob failed");
  lib_finish(prob, solve, t0, stamp::now(), r);
  r.cols = static_cast<long>(x.size() + y.size());
  mdldelprob_prob(prob);
}

void lib_transport(const bench::transport &t, bool named, long presize, bool solve, result &r) {
  const int s = t.s, d = t.d;
  MDLprob prob = new_problem(named, presize);
  auto name = [named](const char *fmt, int a, int b) {
    return named ? mdlnewname(fmt, a, b) : nullptr;
  };
  const stamp t0 = stamp::now();
  std::vector<MDLvar> x(static_cast<size_t>(s) * d);
  for (int i = 0; i < s; ++i)
    for (int j = 0; j < d; ++j)
      x[static_cast<size_t>(i) * d + j] =
          mdlnewvar_prob(prob, name("x_%d_%d", i, j), MDL_CONTINUOUS, 0, MDL_INFINITY);
  MDLctr cost = mdlnewctr_prob(prob, named ? "cost" : nullptr, MDL_NONBINDING);
  for (size_t k = 0; k < x.size(); ++k) mdladdterm(cost, x[k], t.cost[k]);
  for (int i = 0; i < s; ++i) {
    MDLctr c = mdlnewctr_prob(prob, name("supply_%d", i, 0), MDL_LEQ);
    for (int j = 0; j < d; ++j) mdladdterm(c, x[static_cast<size_t>(i) * d + j], 1.0);
    mdladdterm(c, nullptr, t.supply[i]);
  }
  for (int j = 0; j < d; ++j) {
    MDLctr c = mdlnewctr_prob(prob, name("demand_%d", j, 0), MDL_GEQ);
    for (int i = 0; i < s; ++i) mdladdterm(c, x[static_cast<size_t>(i) * d + j], 1.0);
    mdladdterm(c, nullptr, t.demand[j]);
  }
  if (mdlsetobj_prob(prob, cost) != 0) die("mdlsetobj_prob failed");
  lib_finish(prob, solve, t0, stamp::now(), r);
  r.cols = static_cast<long>(x.size());
  mdldelprob_prob(prob);
}

// ---- By hand ----------------------------------------------------------------

// The column-wise arrays a program would write for the engine directly.
struct columns {
  int ncols = 0, nrows = 0;
  std::vector<char> rowtype;
  std::vector<double> rhs, obj, lb, ub, rowval;
  std::vector<int64_t> start;   // ncols + 1 entries
  std::vector<int> rowind;
  std::vector<int> entcol;
  std::vector<char> enttype;
  std::vector<char> rownames, colnames;   // zero-ended names, one after another
};

void append_name(std::vector<char> &buf, const char *fmt, int a, int b) {
  char tmp[64];
  const int len = snprintf(tmp, sizeof tmp, fmt, a, b);
  buf.insert(buf.end(), tmp, tmp + len + 1);
}

// Columns y_i then x_ij (i outer); rows assign_j, link_ij (i outer), card.
void hand_pmedian(const bench::pmedian &m, bool named, columns &c) {
  const int n = m.n;
  const size_t nn = static_cast<size_t>(n) * n;
  c.ncols = static_cast<int>(n + nn);
  c.nrows = static_cast<int>(n + nn + 1);
  const int card = c.nrows - 1;
  c.rowtype.assign(c.nrows, 'L');
  c.rhs.assign(c.nrows, 0.0);
  for (int j = 0; j < n; ++j) {
    c.rowtype[j] = 'E';
    c.rhs[j] = 1.0;
  }
  c.rowtype[card] = 'E';
  c.rhs[card] = m.p;
  c.obj.assign(c.ncols, 0.0);
  c.lb.assign(c.ncols, 0.0);
  c.ub.assign(c.ncols, 1.0);
  const size_t nnz = 3 * nn + n;
  c.start.resize(c.ncols + 1);
  c.rowind.resize(nnz);
  c.rowval.resize(nnz);
  size_t k = 0;
  for (int i = 0; i < n; ++i) {
    c.start[i] = static_cast<int64_t>(k);
    for (int j = 0; j < n; ++j) {
      c.rowind[k] = static_cast<int>(n + static_cast<size_t>(i) * n + j);
      c.rowval[k++] = -1.0;
    }
    c.rowind[k] = card;
    c.rowval[k++] = 1.0;
  }
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      const size_t col = n + static_cast<size_t>(i) * n + j;
      c.start[col] = static_cast<int64_t>(k);
      c.obj[col] = m.cost[static_cast<size_t>(i) * n + j];
      c.rowind[k] = j;
      c.rowval[k++] = 1.0;
      c.rowind[k] = static_cast<int>(col);   // link_ij is row n + i*n + j too
      c.rowval[k++] = 1.0;
    }
  c.start[c.ncols] = static_cast<int64_t>(k);
  c.entcol.resize(n);
  c.enttype.assign(n, 'B');
  for (int i = 0; i < n; ++i) c.entcol[i] = i;
  if (!named) return;
  for (int j = 0; j < n; ++j) append_name(c.rownames, "assign_%d", j, 0);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) append_name(c.rownames, "link_%d_%d", i, j);
  append_name(c.rownames, "card", 0, 0);
  for (int i = 0; i < n; ++i) append_name(c.colnames, "y_%d", i, 0);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) append_name(c.colnames, "x_%d_%d", i, j);
}

// Columns x_ij (i outer); rows supply_i, then demand_j.
void hand_transport(const bench::transport &t, bool named, columns &c) {
  const int s = t.s, d = t.d;
  const size_t sd = static_cast<size_t>(s) * d;
  c.ncols = static_cast<int>(sd);
  c.nrows = s + d;
  c.rowtype.resize(c.nrows);
  c.rhs.resize(c.nrows);
  for (int i = 0; i < s; ++i) {
    c.rowtype[i] = 'L';
    c.rhs[i] = t.supply[i];
  }
  for (int j = 0; j < d; ++j) {
    c.rowtype[s + j] = 'G';
    c.rhs[s + j] = t.demand[j];
  }
  c.obj.resize(sd);
  c.lb.assign(sd, 0.0);
  c.ub.assign(sd, KVSL_INFINITY);
  c.start.resize(sd + 1);
  c.rowind.resize(2 * sd);
  c.rowval.assign(2 * sd, 1.0);
  size_t k = 0;
  for (int i = 0; i < s; ++i)
    for (int j = 0; j < d; ++j) {
      const size_t col = static_cast<size_t>(i) * d + j;
      c.start[col] = static_cast<int64_t>(k);
      c.obj[col] = t.cost[col];
      c.rowind[k++] = i;
      c.rowind[k++] = s + j;
    }
  c.start[sd] = static_cast<int64_t>(k);
  if (!named) return;
  for (int i = 0; i < s; ++i) append_name(c.rownames, "supply_%d", i, 0);
  for (int j = 0; j < d; ++j) append_name(c.rownames, "demand_%d", j, 0);
  for (int i = 0; i < s; ++i)
    for (int j = 0; j < d; ++j) append_name(c.colnames, "x_%d_%d", i, j);
}

// The arrays (and names) into an engine problem with one load call.
void kvsl_load(const columns &c, bool solve, const stamp &t0, result &r) {
  KVSLprob kp = nullptr;
  if (KVSLinit(nullptr) != 0 || KVSLcreateprob(&kp) != 0) die("engine start failed");
  const stamp t1 = stamp::now();
  int rc;
  if (c.entcol.empty())
    rc = KVSLloadlp64(kp, "floor", c.ncols, c.nrows, c.rowtype.data(), c.rhs.data(), nullptr,
                      c.obj.data(), c.start.data(), nullptr, c.rowind.data(), c.rowval.data(),
                      c.lb.data(), c.ub.data());
  else
    rc = KVSLloadglobal64(kp, "floor", c.ncols, c.nrows, c.rowtype.data(), c.rhs.data(), nullptr,
                          c.obj.data(), c.start.data(), nullptr, c.rowind.data(),
                          c.rowval.data(), c.lb.data(), c.ub.data(),
                          static_cast<int>(c.entcol.size()), 0, c.enttype.data(),
                          c.entcol.data(), nullptr, nullptr, nullptr, nullptr, nullptr);
  if (rc != 0) die("engine load failed");
  if (!c.rownames.empty() && (KVSLaddnames(kp, 1, c.rownames.data(), 0, c.nrows - 1) != 0 ||
                              KVSLaddnames(kp, 2, c.colnames.data(), 0, c.ncols - 1) != 0))
    die("engine names failed");
  r.record(t0, t1, stamp::now());
  if (solve) {
    if (KVSLminim(kp, "") != 0) die("engine solve failed");
    r.solved = true;
    KVSLgetdblattrib(kp, KVSL_ATTR_LPOBJVAL, &r.objective);
  }
  KVSLdestroyprob(kp);
  KVSLfree();
}

// The arrays straight into the backend, converted to what it takes: 32-bit
// starts and row activity bounds.
void clp_load(const columns &c, bool solve, const stamp &t0, result &r) {
  std::vector<CoinBigIndex> start(c.start.begin(), c.start.end());
  std::vector<double> rlo(c.nrows), rup(c.nrows), ub(c.ub);
  for (int i = 0; i < c.nrows; ++i) {
    rlo[i] = c.rowtype[i] == 'L' ? -COIN_DBL_MAX : c.rhs[i];
    rup[i] = c.rowtype[i] == 'G' ? COIN_DBL_MAX : c.rhs[i];
  }
  for (double &u : ub)
    if (u >= KVSL_INFINITY) u = COIN_DBL_MAX;
  const stamp t1 = stamp::now();
  ClpSimplex model;
  model.setLogLevel(0);
  model.loadProblem(c.ncols, c.nrows, start.data(), c.rowind.data(), c.rowval.data(),
                    c.lb.data(), ub.data(), c.obj.data(), rlo.data(), rup.data());
  for (int col : c.entcol) model.setInteger(col);
  r.record(t0, t1, stamp::now());
  if (solve) {
    model.initialSolve();
    r.solved = true;
    r.objective = model.objectiveValue();
  }
}

void hand_case(const columns &c, const std::string &variant, bool solve, const stamp &t0,
               result &r) {
  r.cols = c.ncols;
  r.rows = c.nrows;
  r.nnz = static_cast<long>(c.rowind.size());
  if (variant == "clp")
    clp_load(c, solve, t0, r);
  else
    kvsl_load(c, solve, t0, r);
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 4) {
    fprintf(stderr, "usage: kvtl_model_bench pmedian|transport SIZE VARIANT [--solve]\n");
    return 2;
  }
  const std::string model = argv[1], variant = argv[3];
  const int size = atoi(argv[2]);
  const bool solve = argc > 4 && strcmp(argv[4], "--solve") == 0;
  if (size < 1 || (model != "pmedian" && model != "transport")) die("unknown model or size");
  const bool pmed = model == "pmedian";
  // The data is made before any clock starts: every variant gets it free.
  bench::pmedian pm;
  bench::transport tr;
  if (pmed)
    pm = bench::make_pmedian(size);
  else
    tr = bench::make_transport(size, 2 * size);

  result r;
  if (variant == "lib" || variant == "lib-nonames" || variant == "lib-presized") {
    const bool named = variant != "lib-nonames";
    const long n = size;
    const long names = pmed ? 2 * n * n + 2 * n + 2 : 2 * n * n + 3 * n + 1;
    const long presize = variant == "lib-presized" ? names : 0;
    if (pmed)
      lib_pmedian(pm, named, presize, solve, r);
    else
      lib_transport(tr, named, presize, solve, r);
    r.nnz = pmed ? 3L * size * size + size : 4L * size * size;
  } else if (variant == "kvsl" || variant == "kvsl-names" || variant == "clp") {
    const bool named = variant == "kvsl-names";
    const stamp t0 = stamp::now();
    columns c;
    if (pmed)
      hand_pmedian(pm, named, c);
    else
      hand_transport(tr, named, c);
    hand_case(c, variant, solve, t0, r);
  } else if (variant == "idle") {
    MDLprob prob = new_problem(true, 0);
    mdldelprob_prob(prob);
  } else {
    die("unknown variant");
  }
  printf("build=%.6f load=%.6f build_cpu=%.6f load_cpu=%.6f cols=%ld rows=%ld nnz=%ld", r.build,
         r.load, r.build_cpu, r.load_cpu, r.cols, r.rows, r.nnz);
  if (r.solved) printf(" obj=%.10g", r.objective);
  printf("\n");
  return 0;
}
