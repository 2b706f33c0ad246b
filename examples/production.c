/*
 * production.c -- production planning LP with a range constraint: two
 * products made in three plants; prints values, slacks and duals.
 */
#include <math.h>
#include <stdio.h>

#include "kvtl.h"

int main(int argc, char **argv) {
  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob("production");
  if (prob == NULL) return 1;
  mdlsetmsglevel_prob(prob, 1);
  MDLvar doors = mdlnewvar_prob(prob, "doors", 0, 0.0, MDL_INFINITY);
  MDLvar windows = mdlnewvar_prob(prob, "windows", 0, 0.0, MDL_INFINITY);
  MDLctr profit = mdlnewctr_prob(prob, "profit", 0);
  mdladdterm(profit, doors, 3.0);
  mdladdterm(profit, windows, 5.0);
  MDLctr plant[3];
  plant[0] = mdlnewctr_prob(prob, "plant1", 1);   /* doors <= 4 */
  mdladdterm(plant[0], doors, 1.0);
  mdladdterm(plant[0], NULL, 4.0);
  plant[1] = mdlnewctr_prob(prob, "plant2", 1);   /* 2 windows <= 12 */
  mdladdterm(plant[1], windows, 2.0);
  mdladdterm(plant[1], NULL, 12.0);
  plant[2] = mdlnewctr_prob(prob, "plant3", 1);   /* 3 doors + 2 windows <= 18 */
  mdladdterm(plant[2], doors, 3.0);
  mdladdterm(plant[2], windows, 2.0);
  mdladdterm(plant[2], NULL, 18.0);
  MDLctr staff = mdlnewctr_prob(prob, "staff", 1);  /* 1 <= doors + windows <= 10 */
  mdladdterm(staff, doors, 1.0);
  mdladdterm(staff, windows, 1.0);
  mdlsetrange(staff, 1.0, 10.0);
  mdlsetobj_prob(prob, profit);

  if (mdlmaxim_prob(prob, "") != 0) return 1;
  /* Given a file base, the model is also written as an LP and an MPS file. */
  if (argc > 1 && (mdlexportprob_prob(prob, MDL_FILE_LP, argv[1]) != 0 ||
                   mdlexportprob_prob(prob, MDL_FILE_MPS, argv[1]) != 0))
    return 1;
  double z = mdlgetobjval_prob(prob);
  printf("LP status %d, profit %g\n", mdlgetlpstat_prob(prob), z);
  printf("  doors %g, windows %g\n", mdlgetsol(doors), mdlgetsol(windows));
  double dual[3];
  for (int i = 0; i < 3; ++i) {
    dual[i] = mdlgetdual(plant[i]);
    printf("  plant%d: slack %g, dual %g\n", i + 1, mdlgetslack(plant[i]), dual[i]);
  }
  printf("  staff: activity %g, slack %g, dual %g\n", mdlgetact(staff), mdlgetslack(staff),
         mdlgetdual(staff));
  int ok = fabs(z - 36) < 1e-6 && fabs(mdlgetsol(doors) - 2) < 1e-6 &&
           fabs(mdlgetsol(windows) - 6) < 1e-6 && fabs(dual[0]) < 1e-6 &&
           fabs(dual[1] - 1.5) < 1e-6 && fabs(dual[2] - 1.0) < 1e-6 &&
           fabs(mdlgetact(staff) - 8) < 1e-6 && fabs(mdlgetdual(staff)) < 1e-6;
  mdldelprob_prob(prob);
  /* By hand: doors 2, windows 6, profit 36; duals 0, 1.5, 1 on the plants. */
  return ok ? 0 : 1;
}
