/*
 * portfolio.c -- a portfolio QP: the least variance of three uncorrelated
 * assets that earns at least 7%.
 */
#include <math.h>
#include <stdio.h>

#include "kvtl.h"

int main(int argc, char **argv) {
  static const double variance[3] = {0.04, 0.09, 0.16};
  static const double ret[3] = {0.05, 0.08, 0.12};
  MDLvar share[3];

  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob("portfolio");
  if (prob == NULL) return 1;
  mdlsetmsglevel_prob(prob, 1);
  MDLctr risk = mdlnewctr_prob(prob, "variance", 0);
  MDLctr budget = mdlnewctr_prob(prob, "budget", 3);
  MDLctr earn = mdlnewctr_prob(prob, "return", 2);
  for (int i = 0; i < 3; ++i) {
    share[i] = mdlnewvar_prob(prob, mdlnewname("share_%d", i + 1), 0, 0.0, 1.0);
    mdladdqterm(risk, share[i], share[i], variance[i]);
    mdladdterm(budget, share[i], 1.0);
    mdladdterm(earn, share[i], ret[i]);
  }
  mdladdterm(budget, NULL, 1.0);
  mdladdterm(earn, NULL, 0.07);
  mdlsetobj_prob(prob, risk);

  if (mdlminim_prob(prob, "") != 0) return 1;
  /* Given a file base, the model is also written as an LP and an MPS file. */
  if (argc > 1 && (mdlexportprob_prob(prob, MDL_FILE_LP, argv[1]) != 0 ||
                   mdlexportprob_prob(prob, MDL_FILE_MPS, argv[1]) != 0))
    return 1;
  double v = mdlgetobjval_prob(prob);
  printf("LP status %d, variance %.10g\n", mdlgetlpstat_prob(prob), v);
  /* From the optimality conditions: x = (33, 16, 10) / 59, variance 1.4 / 59. */
  static const double expect[3] = {33.0 / 59, 16.0 / 59, 10.0 / 59};
  int ok = fabs(v - 1.4 / 59) < 1e-6;
  for (int i = 0; i < 3; ++i) {
    double x = mdlgetsol(share[i]);
    printf("  asset %d: %.6f\n", i + 1, x);
    if (fabs(x - expect[i]) > 1e-5) ok = 0;
  }
  mdldelprob_prob(prob);
  return ok ? 0 : 1;
}
