/*
 * mps_model.h -- build a library problem from an MPS file (read with
 * CoinMpsIO) through the library's public interface only.
 */
#ifndef KVTL_TOOLS_MPS_MODEL_H
#define KVTL_TOOLS_MPS_MODEL_H

#include <string>

#include "kvtl.h"

struct mps_model_info {
  int ncols = 0;
  int nrows = 0;           // constraints made (free rows dropped)
  int nintegers = 0;       // binary and integer columns
  int nquadratic = 0;      // quadratic objective entries (one triangle)
  double objconst = 0.0;   // the objective row's RHS entry r: objective c'x - r
};

// Read `file` and state its model on `prob`: one variable per column, one
// constraint per non-free row, the first free row as objective.  With
// `with_constant` the objective includes -r.  Returns false with a reason
// in *error when the file cannot be read or the library refuses the model.
bool build_from_mps(MDLprob prob, const char *file, bool with_constant, mps_model_info *info,
                    std::string *error);

// As build_from_mps for a file with a quadratic objective section (QUADOBJ,
// one triangle of Q, objective c'x + 1/2 x'Qx); a file without one gives
// the linear model.
bool build_from_qps(MDLprob prob, const char *file, bool with_constant, mps_model_info *info,
                    std::string *error);

#endif
