/*
 * solve_bench.cpp -- one measurement of the solve-overhead benchmark: an MPS
 * file (or a QPS file, with a quadratic objective section) read with
 * CoinMpsIO and solved (MIPs with the global search) either through the
 * library or, as the floor, loaded straight into the engine.  The driver
 * times both against each other and against the clp and cbc command lines.
 *
 *   kvtl_solve_bench [--engine | --threads N] file.mps[.gz] | file.QPS[.gz]
 *
 * --threads: the engine's thread count for the library's search (1).
 *
 * Prints one line of key=value pairs: read+build(+load) and solve wall
 * seconds, the status, the objective (with the file's constant) and the
 * number of search nodes.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <string>
#include <vector>

#include "CoinMpsIO.hpp"
#include "CoinPackedMatrix.hpp"
#include "kvsl.h"
#include "kvtl.h"
#include "mps_model.h"

namespace {

double wall_seconds() {
  timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// Does the file name say it holds a quadratic objective section?
bool is_qps(const char *file) { return strstr(file, ".QPS") != nullptr || strstr(file, ".qps") != nullptr; }

int through_library(const char *file, int threads) {
  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob(nullptr);
  if (prob == nullptr) return 1;
  mdlsetmsglevel_prob(prob, 1);
  KVSLsetintcontrol(static_cast<KVSLprob>(mdlgetkvslprob_prob(prob)), KVSL_CTRL_THREADS, threads);
  const double t0 = wall_seconds();
  mps_model_info info;
  std::string error;
  const bool built = is_qps(file) ? build_from_qps(prob, file, true, &info, &error)
                                  : build_from_mps(prob, file, true, &info, &error);
  if (!built) {
    fprintf(stderr, "%s\n", error.c_str());
    return 1;
  }
  const double t1 = wall_seconds();
  const bool mip = info.nintegers > 0;
  if (mdlminim_prob(prob, mip ? "g" : "") != 0) {
    fprintf(stderr, "optimisation failed\n");
    return 1;
  }
  const double t2 = wall_seconds();
  const int status = mip ? mdlgetmipstat_prob(prob) : mdlgetlpstat_prob(prob);
  int nodes = 0;
  KVSLgetintattrib(static_cast<KVSLprob>(mdlgetkvslprob_prob(prob)), KVSL_ATTR_NODES, &nodes);
  printf("build=%.6f solve=%.6f mip=%d status=%d obj=%.12g nodes=%d\n", t1 - t0, t2 - t1,
         mip ? 1 : 0, status, mdlgetobjval_prob(prob), nodes);
  mdldelprob_prob(prob);
  return 0;
}

// The reader's infinity becomes the engine's.
double engine_bound(double v, double inf) {
  return v >= inf ? KVSL_INFINITY : v <= -inf ? -KVSL_INFINITY : v;
}

// The same model as mps_model.cpp states (free rows dropped, the objective
// constant kept), written as arrays into one engine load call.
int into_engine(const char *file) {
  const double t0 = wall_seconds();
  CoinMpsIO reader;
  reader.messageHandler()->setLogLevel(0);
  if (reader.readMps(file, "") != 0) {
    fprintf(stderr, "cannot read %s\n", file);
    return 1;
  }
  const double inf = reader.getInfinity();
  const int ncols = reader.getNumCols(), nfile = reader.getNumRows();
  const char *sense = reader.getRowSense();
  const double *rlo = reader.getRowLower(), *rup = reader.getRowUpper();
  // The library numbers rows newest constraint first, so the file's last
  // row comes first; the same order here makes the same matrix, and a MIP
  // search then takes the same path through it.
  int nrows = 0;
  for (int i = 0; i < nfile; ++i) nrows += sense[i] != 'N';
  std::vector<int> row_of(nfile, -1);
  std::vector<char> rowtype(nrows);
  std::vector<double> rhs(nrows), range(nrows);
  for (int i = 0, r = nrows; i < nfile; ++i) {
    if (sense[i] == 'N') continue;
    row_of[i] = --r;
    rowtype[r] = sense[i];
    rhs[r] = sense[i] == 'G' ? rlo[i] : rup[i];
    range[r] = sense[i] == 'R' ? rup[i] - rlo[i] : 0.0;
  }
  const CoinPackedMatrix *m = reader.getMatrixByCol();
  const CoinBigIndex *start = m->getVectorStarts();
  const int *len = m->getVectorLengths();
  const int *ind = m->getIndices();
  const double *val = m->getElements();
  std::vector<int64_t> colstart(ncols + 1);
  std::vector<int> rowind;
  std::vector<double> rowval, lb(ncols), ub(ncols);
  std::vector<int> entcol;
  std::vector<char> enttype;
  for (int j = 0; j < ncols; ++j) {
    colstart[j] = static_cast<int64_t>(rowind.size());
    for (CoinBigIndex k = start[j]; k < start[j] + len[j]; ++k)
      if (row_of[ind[k]] >= 0) {
        rowind.push_back(row_of[ind[k]]);
        rowval.push_back(val[k]);
      }
    lb[j] = engine_bound(reader.getColLower()[j], inf);
    ub[j] = engine_bound(reader.getColUpper()[j], inf);
    if (reader.isInteger(j)) {
      entcol.push_back(j);
      enttype.push_back(lb[j] >= 0.0 && ub[j] <= 1.0 ? 'B' : 'I');
    }
  }
  colstart[ncols] = static_cast<int64_t>(rowind.size());
  // A QPS file's triangle of Q is already in the engine's triple form:
  // (j, j, v) is v/2 x_j^2 and (i, j, v) is v x_i x_j.
  std::vector<int> q1, q2;
  std::vector<double> qv;
  if (is_qps(file)) {
    CoinBigIndex *qstart = nullptr;
    int *qcol = nullptr;
    double *qval = nullptr;
    if (reader.readQuadraticMps(nullptr, qstart, qcol, qval, 0) == 0) {
      for (int j = 0; j < ncols; ++j)
        for (CoinBigIndex k = qstart[j]; k < qstart[j + 1]; ++k) {
          q1.push_back(j);
          q2.push_back(qcol[k]);
          qv.push_back(qval[k]);
        }
      delete[] qstart;
      delete[] qcol;
      delete[] qval;
    }
  }
  KVSLprob kp = nullptr;
  if (KVSLinit(nullptr) != 0 || KVSLcreateprob(&kp) != 0) return 1;
  // As quiet as the library makes it at its lowest message levels.
  KVSLsetintcontrol(kp, KVSL_CTRL_OUTPUTLOG, 0);
  KVSLsetintcontrol(kp, KVSL_CTRL_MIPLOG, 0);
  const int rc = KVSLloadqglobal64(kp, "floor", ncols, nrows, rowtype.data(), rhs.data(),
                                   range.data(), reader.getObjCoefficients(), colstart.data(),
                                   nullptr, rowind.data(), rowval.data(), lb.data(), ub.data(),
                                   static_cast<int64_t>(qv.size()), q1.data(), q2.data(),
                                   qv.data(), static_cast<int>(entcol.size()), 0, enttype.data(),
                                   entcol.data(), nullptr, nullptr, nullptr, nullptr, nullptr);
  const int constant_col = -1;
  const double constant = reader.objectiveOffset();
  if (rc != 0 || (constant != 0 && KVSLchgobj(kp, 1, &constant_col, &constant) != 0)) {
    fprintf(stderr, "engine load failed\n");
    return 1;
  }
  const double t1 = wall_seconds();
  const bool mip = !entcol.empty();
  if (KVSLminim(kp, mip ? "g" : "") != 0) {
    fprintf(stderr, "optimisation failed\n");
    return 1;
  }
  const double t2 = wall_seconds();
  int status = 0;
  double obj = 0;
  KVSLgetintattrib(kp, mip ? KVSL_ATTR_MIPSTATUS : KVSL_ATTR_LPSTATUS, &status);
  KVSLgetdblattrib(kp, mip ? KVSL_ATTR_MIPOBJVAL : KVSL_ATTR_LPOBJVAL, &obj);
  int nodes = 0;
  KVSLgetintattrib(kp, KVSL_ATTR_NODES, &nodes);
  printf("build=%.6f solve=%.6f mip=%d status=%d obj=%.12g nodes=%d\n", t1 - t0, t2 - t1,
         mip ? 1 : 0, status, obj, nodes);
  KVSLdestroyprob(kp);
  KVSLfree();
  return 0;
}

}  // namespace

int main(int argc, char **argv) {
  const bool engine = argc == 3 && strcmp(argv[1], "--engine") == 0;
  int threads = 1;
  if (argc == 4 && strcmp(argv[1], "--threads") == 0) {
    char *end = nullptr;
    long n = strtol(argv[2], &end, 10);
    if (*end != '\0' || n < 1 || n > 64) {
      fprintf(stderr, "kvtl_solve_bench: --threads wants 1 to 64\n");
      return 2;
    }
    threads = static_cast<int>(n);
  } else if (argc != 2 && !engine) {
    fprintf(stderr, "usage: kvtl_solve_bench [--engine | --threads N] file.mps[.gz]\n");
    return 2;
  }
  return engine ? into_engine(argv[2]) : through_library(argv[argc - 1], threads);
}
