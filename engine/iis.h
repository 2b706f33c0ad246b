/*
 * iis.h -- the parts of the infeasible-subsystem search shared between the
 * LP filters (iis.cpp) and the filter over MIP solves (iis_mip.cpp).
 */
#ifndef KVSL_IIS_H
#define KVSL_IIS_H

#include <vector>

#include "engine.h"

namespace kvsl {

// Members of a subsystem are numbered: row i is i, the lower bound of
// column j is nrows + 2j, its upper bound nrows + 2j + 1.
struct numbering {
  int nrows, ncols;
  bool is_row(int m) const { return m < nrows; }
  int col(int m) const { return (m - nrows) / 2; }
  bool upper(int m) const { return (m - nrows) % 2 == 1; }
};

// Flags of a subsystem (KVSLgetiisbounds).
constexpr int iis_flag_mip = 1;        // found with MIP solves
constexpr int iis_flag_unproved = 2;   // a subproblem stayed undecided

// The outcome of the deletion filter over MIP solves.
struct mip_iis {
  std::vector<int> members;  // still infeasible (sorted)
  int flags = iis_flag_mip;
};

// Shrink the members (sorted; their LP relaxation feasible) with a deletion filter whose subproblems are MIP
// solves of the members alone, each under a time limit.  Entities and sets
// always stay; indicator rows never take part.  Empty members when the
// members themselves are not proved infeasible as a MIP.
mip_iis integer_deletion_filter(const kvsl_prob *prob, const std::vector<int> &members);

}  // namespace kvsl

#endif
