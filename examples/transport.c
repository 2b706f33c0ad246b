/*
 * transport.c -- a transport LP: ship goods from three plants to four
 * customers at least cost, within supplies and meeting demands.  Prints
 * the model; `transport BASE` also writes it to BASE.lp and BASE.mps.
 */
#include <math.h>
#include <stdio.h>

#include "kvtl.h"

#define NP 3
#define NC 4

int main(int argc, char **argv) {
  static const double supply[NP] = {20, 30, 25};
  static const double demand[NC] = {10, 25, 15, 25};
  static const double cost[NP][NC] = {{2, 3, 11, 7}, {1, 0, 6, 1}, {5, 8, 15, 9}};
  MDLvar ship[NP][NC];

  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob("transport");
  if (prob == NULL) return 1;
  mdlsetmsglevel_prob(prob, 1);

  MDLctr total = mdlnewctr_prob(prob, "cost", 0);
  for (int p = 0; p < NP; ++p)
    for (int c = 0; c < NC; ++c) {
      ship[p][c] = mdlnewvar_prob(prob, mdlnewname("ship_%d_%d", p + 1, c + 1), 0, 0.0, MDL_INFINITY);
      mdladdterm(total, ship[p][c], cost[p][c]);
    }
  for (int p = 0; p < NP; ++p) {
    MDLctr row = mdlnewctr_prob(prob, mdlnewname("supply_%d", p + 1), 1);
    for (int c = 0; c < NC; ++c) mdladdterm(row, ship[p][c], 1.0);
    mdladdterm(row, NULL, supply[p]);
  }
  for (int c = 0; c < NC; ++c) {
    MDLctr row = mdlnewctr_prob(prob, mdlnewname("demand_%d", c + 1), 2);
    for (int p = 0; p < NP; ++p) mdladdterm(row, ship[p][c], 1.0);
    mdladdterm(row, NULL, demand[c]);
  }
  mdlsetobj_prob(prob, total);
  mdlprintprob_prob(prob);   /* the model as stated, through the library's output */

  if (mdlminim_prob(prob, "") != 0) return 1;
  /* Given a file base, the model is also written as an LP and an MPS file. */
  if (argc > 1 && (mdlexportprob_prob(prob, MDL_FILE_LP, argv[1]) != 0 ||
                   mdlexportprob_prob(prob, MDL_FILE_MPS, argv[1]) != 0))
    return 1;
  int status = mdlgetlpstat_prob(prob);
  double value = mdlgetobjval_prob(prob);
  printf("LP status %d, total cost %g\n", status, value);
  for (int p = 0; p < NP; ++p)
    for (int c = 0; c < NC; ++c) {
      double x = mdlgetsol(ship[p][c]);
      if (x > 1e-9) printf("  plant %d -> customer %d: %g\n", p + 1, c + 1, x);
    }
  mdldelprob_prob(prob);
  /* The least cost, found independently: 345. */
  return status == 1 && fabs(value - 345.0) < 1e-6 ? 0 : 1;
}
