/*
 * strengthen.h -- root strengthening of the search's working copy: integer
 * bounds implied by the rows, and smaller coefficients of integer columns.
 */
#ifndef KVSL_STRENGTHEN_H
#define KVSL_STRENGTHEN_H

#include <vector>

class OsiClpSolverInterface;

namespace kvsl {

// What a strengthening changed.
struct strengthening {
  int bounds = 0;        // integer column bounds tightened
  int coefficients = 0;  // coefficients made smaller
  int rows = 0;          // rows with a coefficient made smaller
};

// Strengthen the rows and bounds of a search's working copy without losing
// any point that satisfies its rows and bounds with every column j that
// has plain[j] != 0 at an integer value.  Such a column must be an integer
// column that may take every integer value within its bounds (no
// semi-continuous or partial integer column, no indicator column, no set
// member).  Other columns count with their bounds as they are.
// 1. Bounds implied by the rows: those of plain columns, rounded inwards,
//    go to the working copy; those of the other columns are only reasoned
//    with in step 2.
// 2. In each row with one finite side, a plain column whose coefficient
//    is larger (in size) than the row's slack at its loosest, g = the
//    largest activity minus the side, gets the coefficient g and the side
//    moves with it.  The row then holds for exactly the same points with
//    that column at an integer value, and it implies the old row for every
//    value within the bounds, so a solution of the strengthened LP
//    satisfies the original rows.
strengthening strengthen_rows(OsiClpSolverInterface &solver, const std::vector<char> &plain);

}  // namespace kvsl

#endif
