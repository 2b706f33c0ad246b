/*
 * iis_report.h -- printing the irreducible infeasible subsystems of an
 * infeasible model by row and column name (shared by the solver tools).
 */
#ifndef KVTL_TOOLS_IIS_REPORT_H
#define KVTL_TOOLS_IIS_REPORT_H

#include "kvtl.h"

// Print every IIS of an infeasible model as "IIS n: r rows, b bounds", then
// "row NAME" and "bound NAME lower|upper" lines; "no IIS found" when there
// is none.  False when the analysis failed.
bool print_all_iis(MDLprob prob);

#endif
