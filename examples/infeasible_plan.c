/*
 * infeasible_plan.c -- a production plan that cannot be met: the program
 * asks which constraints conflict and prints each conflicting set by name.
 *
 * Two products share a machine with 40 hours; each chair takes 2 hours and
 * each table 3.  The sales team promised 12 chairs and 8 tables (24 + 24 =
 * 48 hours), and the warehouse takes at most 15 pieces in all.  Both the
 * machine and the warehouse are short, each against both promises.
 */
#include <stdio.h>
#include <string.h>

#include "kvtl.h"

int main(void) {
  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob("plan");
  if (prob == NULL) return 1;
  mdlsetmsglevel_prob(prob, 1);

  MDLvar chairs = mdlnewvar_prob(prob, "chairs", 0, 0.0, MDL_INFINITY);
  MDLvar tables = mdlnewvar_prob(prob, "tables", 0, 0.0, MDL_INFINITY);
  MDLctr machine = mdlnewctr_prob(prob, "machine_hours", 1);
  mdladdterm(machine, chairs, 2.0);
  mdladdterm(machine, tables, 3.0);
  mdladdterm(machine, NULL, 40.0);
  MDLctr store = mdlnewctr_prob(prob, "warehouse", 1);
  mdladdterm(store, chairs, 1.0);
  mdladdterm(store, tables, 1.0);
  mdladdterm(store, NULL, 15.0);
  MDLctr promise_c = mdlnewctr_prob(prob, "promised_chairs", 2);
  mdladdterm(promise_c, chairs, 1.0);
  mdladdterm(promise_c, NULL, 12.0);
  MDLctr promise_t = mdlnewctr_prob(prob, "promised_tables", 2);
  mdladdterm(promise_t, tables, 1.0);
  mdladdterm(promise_t, NULL, 8.0);
  MDLctr profit = mdlnewctr_prob(prob, "profit", 0);
  mdladdterm(profit, chairs, 30.0);
  mdladdterm(profit, tables, 50.0);
  mdlsetobj_prob(prob, profit);

  if (mdlmaxim_prob(prob, "") != 0) return 1;
  if (mdlgetlpstat_prob(prob) != 2) {
    printf("the plan is feasible after all\n");
    return 1;
  }
  int count = mdlgetnumiis_prob(prob);
  printf("The plan is infeasible; %d conflicting sets of constraints:\n", count);
  int found_machine = 0, found_store = 0;
  for (int n = 1; n <= count; ++n) {
    MDLctr *ctrs = NULL;
    int nctrs = 0;
    if (mdlgetiis_prob(prob, NULL, NULL, &ctrs, &nctrs, n) != 0) return 1;
    printf("  set %d:", n);
    int has_machine = 0, has_store = 0;
    for (int k = 0; k < nctrs; ++k) {
      printf(" %s", mdlgetctrname(ctrs[k]));
      has_machine |= ctrs[k] == machine;
      has_store |= ctrs[k] == store;
    }
    printf("\n");
    /* Each conflict is one capacity against both promises. */
    if (nctrs == 3 && has_machine != has_store) {
      found_machine |= has_machine;
      found_store |= has_store;
    }
    mdlfreeiismem(ctrs);
  }
  mdldelprob_prob(prob);
  return count == 2 && found_machine && found_store ? 0 : 1;
}
