/*
 * kvtl_mps.cpp -- command-line solver: reads an MPS file, states the model
 * through the library and solves it, printing status, objective and time.
 *
 *   kvtl_mps [-lp] [-q] [-maximise] [--iis] file.mps[.gz]
 *     -lp        solve the LP relaxation even when the model has integers
 *     -q         no engine log
 *     -maximise  maximise instead of minimise
 *     --iis      when the model is infeasible, print every irreducible
 *                infeasible subsystem the engine finds, by row and column
 *                name
 */
#include <stdio.h>
#include <string.h>
#include <time.h>

#include <string>

#include "kvsl.h"
#include "kvtl.h"
#include "iis_report.h"
#include "mps_model.h"

static double wall_seconds() {
  timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return ts.tv_sec + ts.tv_nsec * 1e-9;
}

int main(int argc, char **argv) {
  bool relax = false, quiet = false, maximise = false, iis = false;
  const char *file = nullptr;
  for (int i = 1; i < argc; ++i) {
    if (strcmp(argv[i], "-lp") == 0) relax = true;
    else if (strcmp(argv[i], "-q") == 0) quiet = true;
    else if (strcmp(argv[i], "-maximise") == 0) maximise = true;
    else if (strcmp(argv[i], "--iis") == 0) iis = true;
    else file = argv[i];
  }
  if (file == nullptr) {
    fprintf(stderr, "usage: kvtl_mps [-lp] [-q] [-maximise] [--iis] file.mps[.gz]\n");
    return 2;
  }
  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob(nullptr);
  if (prob == nullptr) return 1;
  if (quiet) mdlsetmsglevel_prob(prob, 1);
  double t0 = wall_seconds();
  mps_model_info info;
  std::string error;
  if (!build_from_mps(prob, file, true, &info, &error)) {
    fprintf(stderr, "%s\n", error.c_str());
    mdldelprob_prob(prob);
    return 1;
  }
  double t1 = wall_seconds();
  bool mip = info.nintegers > 0 && !relax;
  int rc = maximise ? mdlmaxim_prob(prob, mip ? "g" : "") : mdlminim_prob(prob, mip ? "g" : "");
  double t2 = wall_seconds();
  if (rc != 0) {
    fprintf(stderr, "optimisation failed\n");
    mdldelprob_prob(prob);
    return 1;
  }
  printf("model      %s: %d columns (%d integer), %d rows\n", file, info.ncols, info.nintegers,
         info.nrows);
  if (mip)
    printf("MIP status %d\n", mdlgetmipstat_prob(prob));
  else
    printf("LP status  %d\n", mdlgetlpstat_prob(prob));
  printf("objective  %.12g\n", mdlgetobjval_prob(prob));
  printf("time       build %.3f s, solve %.3f s\n", t1 - t0, t2 - t1);
  bool infeasible = mip ? mdlgetmipstat_prob(prob) == KVSL_MIP_INFEAS
                        : mdlgetlpstat_prob(prob) == KVSL_LP_INFEAS;
  if (iis && infeasible && !print_all_iis(prob)) {
    fprintf(stderr, "infeasibility analysis failed\n");
    mdldelprob_prob(prob);
    return 1;
  }
  mdldelprob_prob(prob);
  return 0;
}
