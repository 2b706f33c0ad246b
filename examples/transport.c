/*
 * transport.c -- a transport LP: ship goods from plants to customers at
 * least cost, within supplies and meeting demands; the data come from a
 * data file.  Prints the model.  Usage: transport [BASE [DATA]]: given a
 * file base, the model is also written to BASE.lp and BASE.mps; DATA names
 * another data file than examples/transport.dat.
 */
#include <math.h>
#include <stdio.h>

#include "kvtl.h"

#ifndef TRANSPORT_DATA
#define TRANSPORT_DATA "examples/transport.dat"
#endif

#define MAXP 16
#define MAXC 16
#define LINE 200

static int bad_data(const char *path, const char *what) {
  fprintf(stderr, "%s: %s\n", path, what);
  return 1;
}

int main(int argc, char **argv) {
  const char *path = argc > 2 ? argv[2] : TRANSPORT_DATA;
  char plant[MAXP][41];
  double supply[MAXP], demand[MAXC], cost[MAXP][MAXC];
  MDLvar ship[MAXP][MAXC];
  int np = 0, nc = 0;

  FILE *data = fopen(path, "r");
  if (data == NULL) return bad_data(path, "cannot open");
  if (mdlreadline(data, LINE, "i i", &np, &nc) != 2 || np < 1 || np > MAXP || nc < 1 ||
      nc > MAXC)
    return bad_data(path, "sizes expected: plants customers");
  if (mdlreadarrline(data, LINE, "f,", demand, nc) != nc)
    return bad_data(path, "one demand per customer expected");
  for (int p = 0; p < np; ++p) {
    if (mdlreadline(data, LINE, "T40,f", plant[p], &supply[p]) != 2)
      return bad_data(path, "plant name and supply expected");
    if (mdlreadarrline(data, LINE, "f", cost[p], nc) != nc)
      return bad_data(path, "one cost per customer expected");
  }
  fclose(data);

  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob("transport");
  if (prob == NULL) return 1;
  mdlsetmsglevel_prob(prob, 1);

  MDLctr total = mdlnewctr_prob(prob, "cost", 0);
  for (int p = 0; p < np; ++p)
    for (int c = 0; c < nc; ++c) {
      ship[p][c] = mdlnewvar_prob(prob, mdlnewname("ship_%d_%d", p + 1, c + 1), 0, 0.0, MDL_INFINITY);
      mdladdterm(total, ship[p][c], cost[p][c]);
    }
  for (int p = 0; p < np; ++p) {
    MDLctr row = mdlnewctr_prob(prob, mdlnewname("supply_%d", p + 1), 1);
    for (int c = 0; c < nc; ++c) mdladdterm(row, ship[p][c], 1.0);
    mdladdterm(row, NULL, supply[p]);
  }
  for (int c = 0; c < nc; ++c) {
    MDLctr row = mdlnewctr_prob(prob, mdlnewname("demand_%d", c + 1), 2);
    for (int p = 0; p < np; ++p) mdladdterm(row, ship[p][c], 1.0);
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
  for (int p = 0; p < np; ++p)
    for (int c = 0; c < nc; ++c) {
      double x = mdlgetsol(ship[p][c]);
      if (x > 1e-9) printf("  %s -> customer %d: %g\n", plant[p], c + 1, x);
    }
  mdldelprob_prob(prob);
  /* The least cost of the data file shipped with the example, found
   * independently: 345.  Other data files are only solved. */
  if (argc > 2) return status == 1 ? 0 : 1;
  return status == 1 && fabs(value - 345.0) < 1e-6 ? 0 : 1;
}
