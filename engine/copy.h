/*
 * copy.h -- the loaded problem in load form, from which sub-problems (other
 * rows, bounds or objective) are loaded into fresh engine problems.
 */
#ifndef KVSL_COPY_H
#define KVSL_COPY_H

#include <cstdint>
#include <vector>

#include "engine.h"

namespace kvsl {

// Rows, columns, entities and sets of a loaded problem (no quadratic
// objective, indicator rows, directives or held-out row kinds).
class problem_copy {
 public:
  explicit problem_copy(const kvsl_prob *prob);
  // Load the copy into sub with these row types, bounds and objective
  // (nrows, ncols, ncols entries); the engine's return code.
  int load(KVSLprob sub, const std::vector<char> &types, const std::vector<double> &lo,
           const std::vector<double> &up, const std::vector<double> &cost) const;

  std::vector<char> rowtype;
  std::vector<double> lb, ub, obj;

 private:
  int nrows_, ncols_;
  std::vector<int64_t> start_;
  std::vector<int> ind_;
  std::vector<double> val_, rhs_, range_, entlimit_, setref_;
  std::vector<char> enttype_, settype_;
  std::vector<int> entcol_, setcol_;
  std::vector<int64_t> setstart_;
};

// Solve sub's MIP silently within seconds; its MIP status (-1 on failure).
int solve_sub_mip(KVSLprob sub, double seconds);

}  // namespace kvsl

#endif
