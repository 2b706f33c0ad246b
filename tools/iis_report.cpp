/*
 * iis_report.cpp -- the irreducible infeasible subsystems of a model, read
 * through the library and printed by name.
 */
#include "iis_report.h"

#include <stdio.h>

#include <string>

#include "kvsl.h"

namespace {

// Print IIS n; the bound types come from the engine, in the order of the
// variables.
bool print_iis(MDLprob prob, int n) {
  MDLvar *vars = nullptr;
  MDLctr *ctrs = nullptr;
  int nvars = 0, nctrs = 0;
  if (mdlgetiis_prob(prob, &vars, &nvars, &ctrs, &nctrs, n) != 0) return false;
  std::string bounds(static_cast<size_t>(nvars), '?');
  bool ok = nvars == 0 ||
            KVSLgetiisbounds(mdlgetkvslprob_prob(prob), n, bounds.data(), nullptr) == 0;
  if (ok) {
    printf("IIS %d: %d rows, %d bounds\n", n, nctrs, nvars);
    for (int k = 0; k < nctrs; ++k) printf("row %s\n", mdlgetctrname(ctrs[k]));
    for (int k = 0; k < nvars; ++k)
      printf("bound %s %s\n", mdlgetvarname(vars[k]),
             bounds[static_cast<size_t>(k)] == 'U' ? "upper" : "lower");
  }
  mdlfreeiismem(vars);
  mdlfreeiismem(ctrs);
  return ok;
}

}  // namespace

bool print_all_iis(MDLprob prob) {
  int count = mdlgetnumiis_prob(prob);
  if (count < 0) return false;
  if (count == 0) printf("no IIS found\n");
  for (int n = 1; n <= count; ++n)
    if (!print_iis(prob, n)) return false;
  return true;
}
