/*
 * workshop.c -- a product-mix LP stated with index sets (product and
 * resource names), an array of variables, sum constructors and expressions.
 */
#include <math.h>
#include <stdio.h>

#include "kvtl.h"

#define NP 3
#define NR 3

int main(int argc, char **argv) {
  static const char *products[NP] = {"chair", "table", "desk"};
  static const char *resources[NR] = {"wood", "labour", "finishing"};
  static const double price[NP] = {40, 60, 85};
  static const double use[NR][NP] = {{2, 4, 6}, {3, 2, 5}, {1, 2, 2}};
  static const double capacity[NR] = {120, 100, 50};
  int ok = 1;

  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob("workshop");
  if (prob == NULL) return 1;
  mdlsetmsglevel_prob(prob, 1);

  /* Names map to positions; the array of quantities is indexed by them. */
  MDLidxset prod = mdlnewidxset_prob(prob, "products", NP);
  MDLidxset res = mdlnewidxset_prob(prob, "resources", NR);
  for (int i = 0; i < NP; ++i) mdladdidxel(prod, products[i]);
  for (int r = 0; r < NR; ++r) mdladdidxel(res, resources[r]);
  MDLarrvar make = mdlnewarrvar_prob(prob, NP, MDL_CONTINUOUS, "make", 0, MDL_INFINITY);
  if (prod == NULL || res == NULL || make == NULL) return 1;

  /* One weighted sum per resource, and a plain sum for the floor space. */
  for (int r = 0; r < NR; ++r)
    mdlnewarrsum_prob(prob, mdlgetidxelname(res, r), make, use[r], MDL_LEQ, capacity[r]);
  mdlnewsum_prob(prob, "total", make, MDL_LEQ, 40);

  /* At least one table for every two chairs: table - 0.5 chair >= 0. */
  MDLexpr mix = mdlnewexpr(NULL, make[mdlgetidxel(prod, "table")], 1.0);
  mdladdexpr_term(mix, NULL, make[mdlgetidxel(prod, "chair")], -0.5);
  mdlsetctr(mdlnewctr_prob(prob, "mix", MDL_GEQ), mix, MDL_GEQ);

  /* The profit as an expression, made the objective. */
  MDLexpr profit = mdlnewexpr(NULL, NULL, 0.0);
  for (int i = 0; i < NP; ++i) mdladdexpr_term(profit, NULL, make[i], price[i]);
  mdlsetobjexpr(prob, profit);

  mdlprintidxset(prod);
  mdlprintidxset(res);
  char *text = mdlexpr2str(profit, MDL_NONBINDING);
  printf("maximise %s\n", text != NULL ? text : "?");
  mdlfree2str(text);

  if (mdlmaxim_prob(prob, "") != 0) return 1;
  /* Given a file base, the model is also written as an LP and an MPS file. */
  if (argc > 1 && (mdlexportprob_prob(prob, MDL_FILE_LP, argv[1]) != 0 ||
                   mdlexportprob_prob(prob, MDL_FILE_MPS, argv[1]) != 0))
    return 1;
  double value = mdlgetobjval_prob(prob);
  printf("LP status %d, profit %g (expression %g)\n", mdlgetlpstat_prob(prob), value,
         mdlevalexpr(profit));
  for (int i = 0; i < mdlgetarrvarsize(make); ++i)
    printf("  %-6s %g\n", mdlgetidxelname(prod, i), mdlgetsol(make[i]));

  /* Wood, labour and finishing bind: 10 of each product, profit 1850
   * (duals 5, 5 and 15 price every product exactly). */
  ok = mdlgetlpstat_prob(prob) == 1 && fabs(value - 1850) < 1e-6 &&
       fabs(mdlevalexpr(profit) - value) < 1e-6;
  for (int i = 0; i < NP; ++i) ok = ok && fabs(mdlgetsol(make[i]) - 10) < 1e-6;

  mdldelexpr(mix);
  mdldelexpr(profit);
  mdldelprob_prob(prob);
  return ok ? 0 : 1;
}
