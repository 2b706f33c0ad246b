/*
 * solobj.h -- solution objects: partial assignments of values to variables
 * kept in serial order, with lazily dropped removals.
 */
#ifndef KVTL_SOLVER_SOLOBJ_H
#define KVTL_SOLVER_SOLOBJ_H

#include <stdint.h>

#include "problem/problem.h"

// One value of a variable; NaN marks a removed value.
struct mdl_solentry {
  double value;
  mdl_var *var;
  mdl_solentry *next;
};

// A sorted run (serial order) from `first` to `last`, followed by the
// unsorted appends chained after `last`, the most recent first.
struct mdl_sol {
  mdl_problem *problem;
  mdl_solentry *first;   // null: no entries
  mdl_solentry *last;
  int32_t pending;       // unsorted appends
};

namespace kvtl {

// Merge the appends into the run (the latest value of a variable wins) and
// drop removed entries; false when out of memory (error 1502 reported).
bool normalise_sol(mdl_sol *sol);

}  // namespace kvtl

#endif
