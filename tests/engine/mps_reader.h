/*
 * mps_reader.h -- reference models read from MPS with CoinMpsIO into the
 * engine's load form, and loaded through the engine interface.
 */
#ifndef KVSL_MPS_READER_H
#define KVSL_MPS_READER_H

#include <CoinMpsIO.hpp>
#include <CoinPackedMatrix.hpp>

#include <algorithm>
#include <string>
#include <vector>

#include "engine_test.h"

// A model read from MPS, in the engine's load form.  Free rows are not
// constraints and are left out; the objective constant is kept apart.
struct mps_model {
  std::string rowtype;
  std::vector<double> rhs, range, obj, lb, ub;
  std::vector<int64_t> start;
  std::vector<int> count, ind;
  std::vector<double> val;
  std::string enttype;
  std::vector<int> entcol;
  double offset = 0.0;  // the RHS entry r of the objective row
  int ncols = 0;
};

inline mps_model read_mps(const std::string &path) {
  CoinMpsIO mps;
  mps.messageHandler()->setLogLevel(0);
  mps_model m;
  EXPECT_EQ(mps.readMps(path.c_str(), ""), 0) << path;
  int nrows = mps.getNumRows();
  m.ncols = mps.getNumCols();
  std::vector<int> newrow(nrows, -1);
  const char *sense = mps.getRowSense();
  for (int i = 0; i < nrows; ++i) {
    if (sense[i] == 'N') continue;
    newrow[i] = static_cast<int>(m.rowtype.size());
    m.rowtype.push_back(sense[i]);
    m.rhs.push_back(mps.getRightHandSide()[i]);
    m.range.push_back(sense[i] == 'R' ? mps.getRowRange()[i] : 0.0);
  }
  const CoinPackedMatrix *a = mps.getMatrixByCol();
  // Columns with their counts (the engine's colcount form), leaving out the
  // coefficients of free rows.
  const CoinBigIndex *st = a->getVectorStarts();
  const int *len = a->getVectorLengths();
  for (int j = 0; j < m.ncols; ++j) {
    m.start.push_back(static_cast<int64_t>(m.ind.size()));
    for (CoinBigIndex k = st[j]; k < st[j] + len[j]; ++k)
      if (newrow[a->getIndices()[k]] >= 0) {
        m.ind.push_back(newrow[a->getIndices()[k]]);
        m.val.push_back(a->getElements()[k]);
      }
    m.count.push_back(static_cast<int>(m.ind.size() - m.start.back()));
  }
  m.obj.assign(mps.getObjCoefficients(), mps.getObjCoefficients() + m.ncols);
  for (int j = 0; j < m.ncols; ++j) {
    m.lb.push_back(std::max(mps.getColLower()[j], -KVSL_INFINITY));
    m.ub.push_back(std::min(mps.getColUpper()[j], KVSL_INFINITY));
    if (mps.isInteger(j)) {
      bool binary = m.lb[j] >= 0.0 && m.ub[j] <= 1.0;
      m.enttype.push_back(binary ? 'B' : 'I');
      m.entcol.push_back(j);
    }
  }
  // CoinMpsIO reports the objective row's RHS entry r as its offset.
  m.offset = mps.objectiveOffset();
  return m;
}

inline int load_mps(KVSLprob p, const mps_model &m, bool global) {
  int nrows = static_cast<int>(m.rowtype.size());
  if (!global)
    return KVSLloadlp64(p, "lp", m.ncols, nrows, m.rowtype.data(), m.rhs.data(), m.range.data(),
                        m.obj.data(), m.start.data(), m.count.data(), m.ind.data(), m.val.data(),
                        m.lb.data(), m.ub.data());
  return KVSLloadglobal64(p, "mip", m.ncols, nrows, m.rowtype.data(), m.rhs.data(),
                          m.range.data(), m.obj.data(), m.start.data(), m.count.data(),
                          m.ind.data(), m.val.data(), m.lb.data(), m.ub.data(),
                          static_cast<int>(m.entcol.size()), 0, m.enttype.data(),
                          m.entcol.data(), nullptr, nullptr, nullptr, nullptr, nullptr);
}

#endif
