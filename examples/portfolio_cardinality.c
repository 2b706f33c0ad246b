/*
 * portfolio_cardinality.c -- the best expected return of five correlated
 * assets within a variance limit, holding at most two of them (binary
 * variables), checked against every choice of two assets.
 */
#include <math.h>
#include <stdio.h>

#include "kvtl.h"

#define N 5
#define MAX_HELD 2

static const double ret[N] = {0.06, 0.08, 0.10, 0.12, 0.15};
static const double sd[N] = {0.10, 0.14, 0.18, 0.22, 0.30};
static const double correlation = 0.2;
static const double variance_limit = 0.02;
static const double min_share = 0.05;

/* Covariance of assets i and j. */
static double cov(int i, int j) { return (i == j ? 1.0 : correlation) * sd[i] * sd[j]; }

int main(void) {
  MDLvar share[N], held[N];

  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob("cardinality");
  if (prob == NULL) return 1;
  mdlsetmsglevel_prob(prob, 1);
  MDLctr earn = mdlnewctr_prob(prob, "return", 0);
  MDLctr budget = mdlnewctr_prob(prob, "budget", 3);
  MDLctr risk = mdlnewctr_prob(prob, "variance", 1);
  MDLctr count = mdlnewctr_prob(prob, "count", 1);
  for (int i = 0; i < N; ++i) {
    share[i] = mdlnewvar_prob(prob, mdlnewname("share_%d", i + 1), 0, 0.0, 1.0);
    held[i] = mdlnewvar_prob(prob, mdlnewname("held_%d", i + 1), 1, 0.0, 1.0);
    mdladdterm(earn, share[i], ret[i]);
    mdladdterm(budget, share[i], 1.0);
    mdladdterm(count, held[i], 1.0);
    /* A share is positive only when the asset is held, and then at least
     * the minimum: min_share held <= share <= held. */
    MDLctr up = mdlnewctr_prob(prob, mdlnewname("hold_%d", i + 1), 1);
    mdladdterm(up, share[i], 1.0);
    mdladdterm(up, held[i], -1.0);
    MDLctr lo = mdlnewctr_prob(prob, mdlnewname("least_%d", i + 1), 2);
    mdladdterm(lo, share[i], 1.0);
    mdladdterm(lo, held[i], -min_share);
  }
  /* x'Cx: each pair i < j once with twice its covariance. */
  for (int i = 0; i < N; ++i)
    for (int j = i; j < N; ++j) mdladdqterm(risk, share[i], share[j], (i == j ? 1 : 2) * cov(i, j));
  mdladdterm(budget, NULL, 1.0);
  mdladdterm(risk, NULL, variance_limit);
  mdladdterm(count, NULL, MAX_HELD);
  mdlsetobj_prob(prob, earn);

  if (mdlmaxim_prob(prob, "g") != 0) return 1;
  double best = mdlgetobjval_prob(prob);
  printf("MIP status %d, expected return %.8f\n", mdlgetmipstat_prob(prob), best);
  int ok = mdlgetmipstat_prob(prob) == 6;
  for (int i = 0; i < N; ++i)
    if (mdlgetsol(held[i]) > 0.5) printf("  asset %d: share %.6f\n", i + 1, mdlgetsol(share[i]));

  /* Check: every choice of at most two assets, each solved as a continuous
   * problem with the binaries fixed; the search must match the best. */
  double check = -1.0;
  for (int a = 0; a < N; ++a)
    for (int b = a; b < N; ++b) {
      for (int i = 0; i < N; ++i) mdlfixvar(held[i], (i == a || i == b) ? 1.0 : 0.0);
      if (mdlmaxim_prob(prob, "") != 0) return 1;
      if (mdlgetlpstat_prob(prob) == 1 && mdlgetobjval_prob(prob) > check)
        check = mdlgetobjval_prob(prob);
    }
  printf("best over every choice of assets: %.8f\n", check);
  if (fabs(check - best) > 1e-6) ok = 0;
  mdldelprob_prob(prob);
  return ok ? 0 : 1;
}
