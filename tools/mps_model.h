/*
 * mps_model.h -- build a library problem from an MPS or LP file (read with
 * CoinMpsIO or CoinLpIO) through the library's public interface only.
 */
#ifndef KVTL_TOOLS_MPS_MODEL_H
#define KVTL_TOOLS_MPS_MODEL_H

#include <string>
#include <vector>

#include "kvtl.h"

struct mps_model_info {
  int ncols = 0;
  int nrows = 0;           // constraints made (free rows dropped)
  int nintegers = 0;       // binary and integer columns
  int nquadratic = 0;      // quadratic objective entries (one triangle)
  double objconst = 0.0;   // the objective row's RHS entry r: objective c'x - r
  int nsemicont = 0;       // semi-continuous columns
  int nsets = 0;           // special ordered sets
  int nsetsdropped = 0;    // sets made without members (all weights 0)
  bool maximise = false;   // the file asks for maximisation
  std::vector<MDLvar> vars;  // the variables, in the file's column order
};

// Read `file` and state its model on `prob`: one variable per column, one
// constraint per non-free row, the first free row as objective.  With
// `with_constant` the objective includes -r.  Returns false with a reason
// in *error when the file cannot be read or the library refuses the model.
bool build_from_mps(MDLprob prob, const char *file, bool with_constant, mps_model_info *info,
                    std::string *error);

// As build_from_mps for a file with a quadratic objective section (QUADOBJ:
// each pair of Q once; objective c'x + 1/2 x'Qx); a file without one gives
// the linear model.
bool build_from_qps(MDLprob prob, const char *file, bool with_constant, mps_model_info *info,
                    std::string *error);

// Any model file: LP format when the name ends in ".lp" or ".lp.gz"
// (CoinLpIO), else MPS, free or fixed, with its quadratic objective
// (CoinMpsIO); both may be gzip-compressed.  The objective keeps its
// constant and the file's sense (minimise, or maximise when the file says
// so: info->maximise).  Integer, semi-continuous columns and special ordered
// sets of the file become the library's.
bool build_from_file(MDLprob prob, const char *file, mps_model_info *info, std::string *error);

// True when `file` is read as an LP-format file by build_from_file.
bool is_lp_file_name(const std::string &file);

#endif
