/*
 * lazy.cpp -- model cuts and delayed rows in the search: they are kept out
 * of the LP and added as globally valid cuts wherever a node's solution
 * violates them; a solution is reported only when it satisfies them all.
 */
#include <algorithm>
#include <cmath>

#include <ClpSimplex.hpp>
#include <OsiCuts.hpp>
#include <OsiRowCut.hpp>
#include <OsiSolverInterface.hpp>

#include "search.h"

namespace kvsl {

std::vector<int> pool_rows(const kvsl_prob *prob) {
  std::vector<char> mark(prob->rowtype.size(), 0);
  for (int r : prob->modelcuts) mark[r] = 1;
  for (int r : prob->delayedrows) mark[r] = 1;
  for (const auto &ind : prob->indicators) mark[ind.row] = 0;
  // A row without coefficients stays in the LP, which settles it at once:
  // as a cut it could never be satisfied nor cut anything off.
  std::vector<int> count(mark.size(), 0);
  const CoinPackedMatrix &a = *prob->lp->matrix();
  for (int j = 0; j < a.getNumCols(); ++j)
    for (CoinBigIndex k = a.getVectorStarts()[j]; k < a.getVectorStarts()[j] + a.getVectorLengths()[j]; ++k)
      if (a.getElements()[k] != 0.0) ++count[a.getIndices()[k]];
  for (size_t i = 0; i < mark.size(); ++i)
    if (count[i] == 0) mark[i] = 0;
  std::vector<int> rows;
  for (int i = 0; i < static_cast<int>(mark.size()); ++i)
    if (mark[i] != 0 && prob->rowtype[i] != 'N') rows.push_back(i);
  return rows;
}

row_pool::row_pool(const kvsl_prob *prob, const std::vector<int> &rows)
    : rows_(false, 0.0, 0.0) {
  const ClpSimplex &m = *prob->lp;
  CoinPackedMatrix byrow;
  byrow.reverseOrderedCopyOf(*m.matrix());
  rows_.setDimensions(0, m.numberColumns());
  for (int i : rows) {
    rows_.appendRow(byrow.getVector(i));
    lo_.push_back(m.rowLower()[i]);
    up_.push_back(m.rowUpper()[i]);
  }
}

int row_pool::violated(const double *x) const {
  int count = 0;
  for (int k = 0; k < rows_.getMajorDim(); ++k) {
    double act = rows_.getVector(k).dotProduct(x);
    if (!within(act, lo_[k], up_[k])) ++count;
  }
  return count;
}

// Each violated row becomes a cut; rows are valid everywhere in the tree.
void row_pool::generateCuts(const OsiSolverInterface &si, OsiCuts &cs, const CglTreeInfo) {
  const double *x = si.getColSolution();
  double tol = 1e-7;
  si.getDblParam(OsiPrimalTolerance, tol);
  for (int k = 0; k < rows_.getMajorDim(); ++k) {
    CoinShallowPackedVector row = rows_.getVector(k);
    double act = row.dotProduct(x);
    if (act >= lo_[k] - tol && act <= up_[k] + tol) continue;
    OsiRowCut cut;
    cut.setRow(row.getNumElements(), row.getIndices(), row.getElements());
    // One-sided: the search's cut handling loses two-sided (equality or
    // range) cuts, so only the violated side is added.
    if (act < lo_[k] - tol) {
      cut.setLb(lo_[k]);
      cut.setUb(COIN_DBL_MAX);
    } else {
      cut.setLb(-COIN_DBL_MAX);
      cut.setUb(up_[k]);
    }
    cut.setGloballyValid(true);
    cs.insert(cut);
  }
}

}  // namespace kvsl
