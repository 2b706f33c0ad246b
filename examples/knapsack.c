/*
 * knapsack.c -- a knapsack MIP: choose items of greatest total value whose
 * total weight fits the capacity.
 */
#include <math.h>
#include <stdio.h>

#include "kvtl.h"

#define N 8

int main(int argc, char **argv) {
  static const double value[N] = {10, 13, 7, 8, 12, 9, 4, 11};
  static const double weight[N] = {5, 6, 4, 3, 7, 5, 2, 6};
  const double capacity = 20;
  MDLvar take[N];

  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob("knapsack");
  if (prob == NULL) return 1;
  mdlsetmsglevel_prob(prob, 1);
  MDLctr total = mdlnewctr_prob(prob, "value", 0);
  MDLctr fits = mdlnewctr_prob(prob, "capacity", 1);
  for (int i = 0; i < N; ++i) {
    take[i] = mdlnewvar_prob(prob, mdlnewname("take_%d", i + 1), 1, 0.0, 1.0);
    mdladdterm(total, take[i], value[i]);
    mdladdterm(fits, take[i], weight[i]);
  }
  mdladdterm(fits, NULL, capacity);
  mdlsetobj_prob(prob, total);

  if (mdlmaxim_prob(prob, "g") != 0) return 1;
  /* Given a file base, the model is also written as an LP and an MPS file. */
  if (argc > 1 && (mdlexportprob_prob(prob, MDL_FILE_LP, argv[1]) != 0 ||
                   mdlexportprob_prob(prob, MDL_FILE_MPS, argv[1]) != 0))
    return 1;
  int status = mdlgetmipstat_prob(prob);
  double best = mdlgetobjval_prob(prob);
  printf("MIP status %d, best value %g; items:", status, best);
  for (int i = 0; i < N; ++i)
    if (mdlgetsol(take[i]) > 0.5) printf(" %d", i + 1);
  printf("\n");
  mdldelprob_prob(prob);
  /* By enumeration of all 256 choices the best value is 42 (reached by
     more than one choice of items). */
  return status == 6 && fabs(best - 42.0) < 1e-6 ? 0 : 1;
}
