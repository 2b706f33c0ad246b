/*
 * warmstart.c -- warm-starting a MIP: a greedy choice of items is handed to
 * the solver as a start solution before it searches for the best one.
 */
#include <math.h>
#include <stdio.h>

#include "kvtl.h"

#define N 14

static const double value[N] = {24, 18, 30, 9, 15, 21, 12, 27, 6, 19, 14, 25, 11, 17};
static const double weight[N] = {9, 7, 12, 4, 6, 8, 5, 11, 3, 8, 6, 10, 5, 7};
static const double capacity = 45;

/* The best total value, by enumeration of all 2^N choices. */
static double best_by_enumeration(void) {
  double best = 0;
  for (unsigned mask = 0; mask < (1u << N); ++mask) {
    double v = 0, w = 0;
    for (int i = 0; i < N; ++i)
      if (mask & (1u << i)) {
        v += value[i];
        w += weight[i];
      }
    if (w <= capacity && v > best) best = v;
  }
  return best;
}

/* A greedy start: items by falling value per weight while they fit. */
static double greedy(double take[N]) {
  int order[N];
  for (int i = 0; i < N; ++i) order[i] = i;
  for (int i = 1; i < N; ++i)
    for (int j = i; j > 0 && value[order[j]] * weight[order[j - 1]] >
                                 value[order[j - 1]] * weight[order[j]];
         --j) {
      int t = order[j];
      order[j] = order[j - 1];
      order[j - 1] = t;
    }
  double used = 0, total = 0;
  for (int k = 0; k < N; ++k) {
    int i = order[k];
    take[i] = used + weight[i] <= capacity ? 1.0 : 0.0;
    used += take[i] * weight[i];
    total += take[i] * value[i];
  }
  return total;
}

int main(void) {
  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob("warmstart");
  if (prob == NULL) return 1;
  mdlsetmsglevel_prob(prob, 1);
  MDLarrvar take = mdlnewarrvar_prob(prob, N, MDL_BINARY, "take", 0.0, 1.0);
  MDLctr total = mdlnewarrsum_prob(prob, "value", take, value, 0, 0.0);
  MDLctr fits = mdlnewarrsum_prob(prob, "capacity", take, weight, 1, capacity);
  if (take == NULL || total == NULL || fits == NULL) return 1;
  mdlsetobj_prob(prob, total);

  /* The start: every item gets a value, in one call for the array. */
  double start[N];
  double start_value = greedy(start);
  MDLsol sol = mdlnewsol_prob(prob);
  if (sol == NULL || mdlsetsolarrvar(sol, take, start) != 0) return 1;
  if (mdladdmipsol_prob(prob, sol, "greedy") != 0) return 1;
  mdldelsol(sol);

  if (mdlmaxim_prob(prob, "g") != 0) return 1;
  int status = mdlgetmipstat_prob(prob);
  double best = mdlgetobjval_prob(prob);
  double known = best_by_enumeration();
  printf("greedy start %g, MIP status %d, best value %g (by enumeration %g); items:",
         start_value, status, best, known);
  for (int i = 0; i < N; ++i)
    if (mdlgetsol(take[i]) > 0.5) printf(" %d", i + 1);
  printf("\n");
  mdldelprob_prob(prob);
  return status == 6 && fabs(best - known) < 1e-6 && best >= start_value - 1e-6 ? 0 : 1;
}
