/*
 * copy.cpp -- the loaded problem in load form, for sub-problems solved in
 * fresh engine problems (infeasible subsystems, completing MIP starts).
 */
#include "copy.h"

#include <ClpSimplex.hpp>
#include <CoinPackedMatrix.hpp>

namespace kvsl {

problem_copy::problem_copy(const kvsl_prob *prob)
    : nrows_(prob->lp->numberRows()), ncols_(prob->lp->numberColumns()) {
  const ClpSimplex &m = *prob->lp;
  CoinPackedMatrix a(*m.matrix());
  a.removeGaps();
  start_.assign(a.getVectorStarts(), a.getVectorStarts() + ncols_ + 1);
  ind_.assign(a.getIndices(), a.getIndices() + a.getNumElements());
  val_.assign(a.getElements(), a.getElements() + a.getNumElements());
  for (int j = 0; j < ncols_; ++j) {
    lb.push_back(from_backend(m.columnLower()[j]));
    ub.push_back(from_backend(m.columnUpper()[j]));
  }
  obj.assign(m.objective(), m.objective() + ncols_);
  rowtype = prob->rowtype;
  rhs_ = prob->rhs;
  range_ = prob->range;
  for (const entity &e : prob->entities) {
    enttype_.push_back(e.type);
    entcol_.push_back(e.col);
    entlimit_.push_back(e.limit);
  }
  settype_ = prob->settype;
  setstart_ = prob->setstart;
  setcol_ = prob->setcol;
  setref_ = prob->setref;
  if (setstart_.empty()) setstart_.push_back(0);
}

int problem_copy::load(KVSLprob sub, const std::vector<char> &types, const std::vector<double> &lo,
                       const std::vector<double> &up, const std::vector<double> &cost) const {
  return KVSLloadglobal64(sub, "sub", ncols_, nrows_, types.data(), rhs_.data(), range_.data(),
                          cost.data(), start_.data(), nullptr, ind_.data(), val_.data(), lo.data(),
                          up.data(), static_cast<int>(entcol_.size()),
                          static_cast<int>(settype_.size()), enttype_.data(), entcol_.data(),
                          entlimit_.data(), settype_.data(), setstart_.data(), setcol_.data(),
                          setref_.data());
}

int solve_sub_mip(KVSLprob sub, double seconds) {
  KVSLsetintcontrol(sub, KVSL_CTRL_OUTPUTLOG, 0);
  KVSLsetdblcontrol(sub, KVSL_CTRL_TIMELIMIT, seconds);
  int status = -1;
  if (KVSLmipoptimize(sub, "") != 0 || KVSLgetintattrib(sub, KVSL_ATTR_MIPSTATUS, &status) != 0)
    return -1;
  return status;
}

}  // namespace kvsl
