/*
 * write_bench.cpp -- one measurement of the file-writing benchmark: the same
 * model written as MPS or LP by the library, by COIN-OR's writers and by
 * GLPK's.  One case per process.
 *
 *   kvtl_write_bench pmedian|transport SIZE WRITER FORMAT [DIR]
 *     WRITER   lib | coin | glpk
 *     FORMAT   mps | lp
 *     DIR      where the file goes (default /dev/shm, else /tmp), removed
 *              afterwards
 *
 * The model is stated in full (every object named) before the clock
 * starts; for the library the matrix is generated first too, so that the
 * time is the writing alone.  Prints one line of key=value pairs: wall and
 * CPU seconds of the write, nonzeros, nanoseconds per nonzero, file bytes,
 * and the peak memory the write added (kB, from the process's high-water
 * mark reset just before).
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "CoinLpIO.hpp"
#include "CoinMpsIO.hpp"
#include "CoinFinite.hpp"
#include "CoinPackedMatrix.hpp"
#include "bench_models.h"
#include "kvtl.h"

extern "C" {
#include <glpk.h>
}

namespace {

double seconds(clockid_t clock) {
  timespec ts;
  clock_gettime(clock, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

[[noreturn]] void die(const char *what) {
  fprintf(stderr, "kvtl_write_bench: %s\n", what);
  exit(1);
}

// The model as plain arrays: columns with bounds, costs and integrality,
// rows with sense and right-hand side, coefficients as triplets.
struct model {
  std::vector<std::string> colname, rowname;
  std::vector<double> lb, ub, obj;
  std::vector<char> integer;
  std::vector<char> sense;   // 'L', 'G', 'E'
  std::vector<double> rhs;
  std::vector<int> ri, ci;
  std::vector<double> val;
  int col(const std::string &name, double l, double u, double c, bool intg) {
    colname.push_back(name);
    lb.push_back(l);
    ub.push_back(u);
    obj.push_back(c);
    integer.push_back(intg ? 1 : 0);
    return static_cast<int>(colname.size()) - 1;
  }
  int row(const std::string &name, char s, double r) {
    rowname.push_back(name);
    sense.push_back(s);
    rhs.push_back(r);
    return static_cast<int>(rowname.size()) - 1;
  }
  void coef(int r, int c, double v) {
    ri.push_back(r);
    ci.push_back(c);
    val.push_back(v);
  }
};

std::string nm(const char *fmt, int a, int b = 0) {
  char buf[32];
  snprintf(buf, sizeof buf, fmt, a, b);
  return buf;
}

model pmedian_model(int n) {
  const bench::pmedian m = bench::make_pmedian(n);
  model md;
  std::vector<int> y(static_cast<size_t>(n)), x(static_cast<size_t>(n) * static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) y[static_cast<size_t>(i)] = md.col(nm("y_%d", i), 0, 1, 0, true);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j)
      x[static_cast<size_t>(i) * static_cast<size_t>(n) + static_cast<size_t>(j)] =
          md.col(nm("x_%d_%d", i, j), 0, 1, m.cost[static_cast<size_t>(i) * static_cast<size_t>(n) + static_cast<size_t>(j)], false);
  for (int j = 0; j < n; ++j) {
    const int r = md.row(nm("assign_%d", j), 'E', 1);
    for (int i = 0; i < n; ++i) md.coef(r, x[static_cast<size_t>(i) * static_cast<size_t>(n) + static_cast<size_t>(j)], 1);
  }
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      const int r = md.row(nm("link_%d_%d", i, j), 'L', 0);
      md.coef(r, x[static_cast<size_t>(i) * static_cast<size_t>(n) + static_cast<size_t>(j)], 1);
      md.coef(r, y[static_cast<size_t>(i)], -1);
    }
  const int r = md.row("card", 'E', m.p);
  for (int i = 0; i < n; ++i) md.coef(r, y[static_cast<size_t>(i)], 1);
  return md;
}

model transport_model(int s) {
  const bench::transport t = bench::make_transport(s, 2 * s);
  model md;
  for (int i = 0; i < t.s; ++i)
    for (int j = 0; j < t.d; ++j)
      md.col(nm("x_%d_%d", i, j), 0, 1e20, t.cost[static_cast<size_t>(i) * static_cast<size_t>(t.d) + static_cast<size_t>(j)], false);
  for (int i = 0; i < t.s; ++i) {
    const int r = md.row(nm("supply_%d", i), 'L', t.supply[static_cast<size_t>(i)]);
    for (int j = 0; j < t.d; ++j) md.coef(r, i * t.d + j, 1);
  }
  for (int j = 0; j < t.d; ++j) {
    const int r = md.row(nm("demand_%d", j), 'G', t.demand[static_cast<size_t>(j)]);
    for (int i = 0; i < t.s; ++i) md.coef(r, i * t.d + j, 1);
  }
  return md;
}

// ---- The three writers; each states the model, then times only the write.

struct timing {
  double wall = 0, cpu = 0;
};

template <class F>
timing timed(F &&write) {
  const double w0 = seconds(CLOCK_MONOTONIC), c0 = seconds(CLOCK_PROCESS_CPUTIME_ID);
  write();
  return {seconds(CLOCK_MONOTONIC) - w0, seconds(CLOCK_PROCESS_CPUTIME_ID) - c0};
}

long status_kb(const char *key);
long rss_before_write = 0;

// Reset the peak-RSS mark (so the write's own peak can be read after) and
// note the resident size the write starts from.
void reset_peak() {
  rss_before_write = status_kb("VmRSS:");
  FILE *f = fopen("/proc/self/clear_refs", "w");
  if (f != nullptr) {
    fputs("5", f);
    fclose(f);
  }
}

long status_kb(const char *key) {
  FILE *f = fopen("/proc/self/status", "r");
  if (f == nullptr) return -1;
  char line[256];
  long v = -1;
  const size_t n = strlen(key);
  while (fgets(line, sizeof line, f) != nullptr)
    if (strncmp(line, key, n) == 0) v = atol(line + n);
  fclose(f);
  return v;
}

timing write_lib(const model &md, bool mps, const std::string &file) {
  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob("bench");
  if (prob == nullptr) die("mdlnewprob failed");
  mdlsetmsglevel_prob(prob, 1);
  std::vector<MDLvar> vars(md.colname.size());
  for (size_t j = 0; j < vars.size(); ++j)
    vars[j] = mdlnewvar_prob(prob, md.colname[j].c_str(), md.integer[j] ? MDL_BINARY : MDL_CONTINUOUS,
                             md.lb[j], md.ub[j]);
  std::vector<MDLctr> rows(md.rowname.size());
  for (size_t i = 0; i < rows.size(); ++i) {
    rows[i] = mdlnewctr_prob(prob, md.rowname[i].c_str(),
                             md.sense[i] == 'L' ? MDL_LEQ : md.sense[i] == 'G' ? MDL_GEQ : MDL_EQ);
    if (md.rhs[i] != 0) mdladdterm(rows[i], nullptr, md.rhs[i]);
  }
  for (size_t k = 0; k < md.val.size(); ++k)
    mdladdterm(rows[static_cast<size_t>(md.ri[k])], vars[static_cast<size_t>(md.ci[k])], md.val[k]);
  MDLctr cost = mdlnewctr_prob(prob, "cost", MDL_NONBINDING);
  for (size_t j = 0; j < vars.size(); ++j)
    if (md.obj[j] != 0) mdladdterm(cost, vars[j], md.obj[j]);
  mdlsetobj_prob(prob, cost);
  if (mdlloadmat_prob(prob) != 0) die("mdlloadmat_prob failed");
  reset_peak();
  const timing t = timed([&] {
    if (mdlexportprob_prob(prob, mps ? MDL_FILE_MPS : MDL_FILE_LP, file.c_str()) != 0)
      die("mdlexportprob_prob failed");
  });
  mdldelprob_prob(prob);
  return t;
}

timing write_coin(const model &md, bool mps, const std::string &file) {
  const int n = static_cast<int>(md.colname.size()), m = static_cast<int>(md.rowname.size());
  CoinPackedMatrix a(true, md.ri.data(), md.ci.data(), md.val.data(),
                     static_cast<CoinBigIndex>(md.val.size()));
  a.setDimensions(m, n);
  std::vector<double> rlo(static_cast<size_t>(m)), rup(static_cast<size_t>(m));
  for (int i = 0; i < m; ++i) {
    const double r = md.rhs[static_cast<size_t>(i)];
    const char s = md.sense[static_cast<size_t>(i)];
    rlo[static_cast<size_t>(i)] = s == 'L' ? -COIN_DBL_MAX : r;
    rup[static_cast<size_t>(i)] = s == 'G' ? COIN_DBL_MAX : r;
  }
  std::vector<double> ub(md.ub);
  for (double &u : ub)
    if (u >= 1e20) u = COIN_DBL_MAX;
  std::vector<const char *> cn(static_cast<size_t>(n)), rn(static_cast<size_t>(m) + 1);
  for (int j = 0; j < n; ++j) cn[static_cast<size_t>(j)] = md.colname[static_cast<size_t>(j)].c_str();
  for (int i = 0; i < m; ++i) rn[static_cast<size_t>(i)] = md.rowname[static_cast<size_t>(i)].c_str();
  rn[static_cast<size_t>(m)] = "cost";
  if (mps) {
    CoinMpsIO w;
    w.messageHandler()->setLogLevel(0);
    w.setMpsData(a, COIN_DBL_MAX, md.lb.data(), ub.data(), md.obj.data(), md.integer.data(),
                 rlo.data(), rup.data(), cn.data(), rn.data());
    reset_peak();
    return timed([&] {
      if (w.writeMps(file.c_str(), 0, 0) != 0) die("writeMps failed");
    });
  }
  CoinLpIO w;
  w.messageHandler()->setLogLevel(0);
  w.setLpDataWithoutRowAndColNames(a, md.lb.data(), ub.data(), md.obj.data(), md.integer.data(),
                                   rlo.data(), rup.data());
  w.setLpDataRowAndColNames(rn.data(), cn.data());
  reset_peak();
  return timed([&] {
    if (w.writeLp(file.c_str()) != 0) die("writeLp failed");
  });
}

timing write_glpk(const model &md, bool mps, const std::string &file) {
  glp_term_out(GLP_OFF);
  glp_prob *p = glp_create_prob();
  glp_set_obj_name(p, "cost");
  const int n = static_cast<int>(md.colname.size()), m = static_cast<int>(md.rowname.size());
  glp_add_cols(p, n);
  glp_add_rows(p, m);
  for (int j = 0; j < n; ++j) {
    const size_t k = static_cast<size_t>(j);
    glp_set_col_name(p, j + 1, md.colname[k].c_str());
    glp_set_col_bnds(p, j + 1, md.ub[k] >= 1e20 ? GLP_LO : GLP_DB, md.lb[k], md.ub[k]);
    glp_set_obj_coef(p, j + 1, md.obj[k]);
    if (md.integer[k]) glp_set_col_kind(p, j + 1, GLP_BV);
  }
  for (int i = 0; i < m; ++i) {
    const size_t k = static_cast<size_t>(i);
    glp_set_row_name(p, i + 1, md.rowname[k].c_str());
    const char s = md.sense[k];
    glp_set_row_bnds(p, i + 1, s == 'L' ? GLP_UP : s == 'G' ? GLP_LO : GLP_FX, md.rhs[k], md.rhs[k]);
  }
  std::vector<int> ia(md.val.size() + 1), ja(md.val.size() + 1);
  std::vector<double> ar(md.val.size() + 1);
  for (size_t k = 0; k < md.val.size(); ++k) {
    ia[k + 1] = md.ri[k] + 1;
    ja[k + 1] = md.ci[k] + 1;
    ar[k + 1] = md.val[k];
  }
  glp_load_matrix(p, static_cast<int>(md.val.size()), ia.data(), ja.data(), ar.data());
  reset_peak();
  const timing t = timed([&] {
    const int rc = mps ? glp_write_mps(p, GLP_MPS_FILE, nullptr, file.c_str())
                       : glp_write_lp(p, nullptr, file.c_str());
    if (rc != 0) die("GLPK write failed");
  });
  glp_delete_prob(p);
  return t;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 5) die("usage: kvtl_write_bench pmedian|transport SIZE lib|coin|glpk mps|lp [DIR]");
  const std::string kind = argv[1], writer = argv[3], format = argv[4];
  const int size = atoi(argv[2]);
  struct stat shm;
  const std::string dir = argc > 5 ? argv[5] : stat("/dev/shm", &shm) == 0 ? "/dev/shm" : "/tmp";
  const bool mps = format == "mps";
  const model md = kind == "pmedian" ? pmedian_model(size) : transport_model(size);
  const std::string file = dir + "/kvtl_write_bench_" + std::to_string(getpid()) + (mps ? ".mps" : ".lp");
  timing t;
  if (writer == "lib")
    t = write_lib(md, mps, file);
  else if (writer == "coin")
    t = write_coin(md, mps, file);
  else if (writer == "glpk")
    t = write_glpk(md, mps, file);
  else
    die("unknown writer");
  const long peak = status_kb("VmHWM:");
  struct stat st;
  const long bytes = stat(file.c_str(), &st) == 0 ? static_cast<long>(st.st_size) : -1;
  remove(file.c_str());
  const double nnz = static_cast<double>(md.val.size());
  printf("model=%s size=%d writer=%s format=%s wall=%.3f cpu=%.3f nnz=%.0f ns_per_nnz=%.1f "
         "bytes=%ld write_peak_kb=%ld\n",
         kind.c_str(), size, writer.c_str(), format.c_str(), t.wall, t.cpu, nnz, t.wall * 1e9 / nnz,
         bytes, peak - rss_before_write);
  return 0;
}
