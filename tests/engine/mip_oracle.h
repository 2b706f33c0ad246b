/*
 * mip_oracle.h -- random small models with global entities, and an oracle
 * for them that enumerates the discrete choices and solves each continuous
 * subproblem with Clp directly (no code of the engine's search involved).
 */
#ifndef KVSL_MIP_ORACLE_H
#define KVSL_MIP_ORACLE_H

#include <cstdint>
#include <string>
#include <vector>

#include "kvsl.h"

namespace oracle {

// Which kinds of entity a generated model may hold (bit flags).
enum kinds : unsigned {
  k_integer = 1,     // 'B' and 'I' columns
  k_semicont = 2,    // 'S' and 'R' columns
  k_partint = 4,     // 'P' columns
  k_sos1 = 8,
  k_sos2 = 16,
  k_indicator = 32,  // indicator rows (on 'B' columns)
  k_heldout = 64,    // delayed rows and model cuts
  k_directive = 128, // branching directives
  k_wide = 256,      // coefficients of many sizes, some above the rows' sides
  k_large = 512,     // 14 to 18 integer columns, 3 to 7 knapsack rows: searches that branch
  k_network = 1024,  // integer columns beside continuous ones of a network form, with costs
};

// A small model with entities, stated densely.
struct model {
  int sense = 1;
  std::string coltype;  // per column: 'C', 'B', 'I', 'P', 'S', 'R'
  std::vector<double> obj, lb, ub, limit;
  std::string rowtype;
  std::vector<double> rhs, range;
  std::vector<std::vector<double>> a;  // a[row][col]
  std::string settype;
  std::vector<std::vector<int>> members;      // per set, in weight order
  std::vector<std::vector<double>> weights;   // increasing
  std::vector<int> indrow, indcol, indflag;
  std::vector<int> delayed, modelcuts;
  std::vector<int> dirobj, dirprio;
  std::string dirdir;

  int ncols() const { return static_cast<int>(coltype.size()); }
  int nrows() const { return static_cast<int>(rowtype.size()); }
};

// Generate model number `seed` with entities of the given kinds.
model generate(uint64_t seed, unsigned kinds);

// The oracle's verdict.
struct verdict {
  int status;               // KVSL_MIP_OPTIMAL, KVSL_MIP_INFEAS or KVSL_MIP_UNBOUNDED
  double objective;         // when optimal
  bool relaxation_unbounded;  // the LP relaxation of the whole model
};

// Solve a model by enumeration of its discrete choices.
verdict solve(const model &m);

// Does x satisfy the model (bounds, rows in force, entities, sets)?
bool feasible(const model &m, const std::vector<double> &x, std::string *why);

// Load a model into an engine problem; 0 or the failing call's code.
int load(KVSLprob p, const model &m);

// A readable statement of the model (for failure reports).
std::string describe(const model &m);

}  // namespace oracle

#endif
