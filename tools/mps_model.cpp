/*
 * mps_model.cpp -- an MPS file stated as a model through the public
 * interface: variables, constraints with ranges, objective, integers.
 */
#include "mps_model.h"

#include <cmath>
#include <vector>

#include "CoinMpsIO.hpp"
#include "CoinPackedMatrix.hpp"

namespace {

// The reader's infinity becomes the library's.
double finite_or_infinite(double v, double inf) {
  if (v >= inf) return MDL_INFINITY;
  if (v <= -inf) return -MDL_INFINITY;
  return v;
}

// Add the quadratic section the reader is positioned at to the objective.
// The file holds one triangle of Q; 1/2 x'Qx is Q_jj/2 x_j^2 per diagonal
// entry and Q_ij x_i x_j per off-diagonal one.
bool add_quadratic_objective(CoinMpsIO &reader, MDLctr objective, const std::vector<MDLvar> &vars,
                             mps_model_info *info, std::string *error) {
  CoinBigIndex *start = nullptr;
  int *col = nullptr;
  double *val = nullptr;
  int rc = reader.readQuadraticMps(nullptr, start, col, val, 0);
  if (rc == -2 || rc == -3) return true;   // a plain linear model
  bool ok = rc == 0;
  if (!ok) *error = "quadratic section unreadable";
  const int ncols = static_cast<int>(vars.size());
  for (int j = 0; ok && j < ncols; ++j)
    for (CoinBigIndex k = start[j]; ok && k < start[j + 1]; ++k) {
      if (col[k] < j) {
        ok = false;   // both triangles given: not the format read here
        *error = "quadratic section is not one triangle";
      } else if (val[k] != 0.0) {
        double c = col[k] == j ? 0.5 * val[k] : val[k];
        ok = mdladdqterm(objective, vars[j], vars[col[k]], c) == 0;
        if (!ok) *error = "quadratic objective term refused";
        info->nquadratic++;
      }
    }
  delete[] start;
  delete[] col;
  delete[] val;
  return ok;
}

// State the model the reader holds on `prob`; with `quadratic` the reader
// goes on to the file's quadratic objective section (QUADOBJ, lower
// triangle of Q in an objective c'x + 1/2 x'Qx).
bool state_model(CoinMpsIO &reader, MDLprob prob, bool with_constant, bool quadratic,
                 mps_model_info *info, std::string *error) {
  const double inf = reader.getInfinity();
  const int ncols = reader.getNumCols();
  const int nrows = reader.getNumRows();
  const double *lb = reader.getColLower();
  const double *ub = reader.getColUpper();
  const double *obj = reader.getObjCoefficients();
  const char *sense = reader.getRowSense();
  const double *rlo = reader.getRowLower();
  const double *rup = reader.getRowUpper();

  std::vector<MDLvar> vars(ncols);
  for (int j = 0; j < ncols; ++j) {
    int type = 0;
    double l = finite_or_infinite(lb[j], inf), u = finite_or_infinite(ub[j], inf);
    if (reader.isInteger(j)) {
      type = (l >= 0.0 && u <= 1.0) ? 1 : 2;
      info->nintegers++;
    }
    vars[j] = mdlnewvar_prob(prob, reader.columnName(j), type, l, u);
    if (vars[j] == nullptr) {
      *error = std::string("variable refused: ") + reader.columnName(j);
      return false;
    }
  }

  std::vector<MDLctr> rows(nrows, nullptr);
  for (int i = 0; i < nrows; ++i) {
    int type;
    switch (sense[i]) {
      case 'L': type = 1; break;
      case 'G': type = 2; break;
      case 'E': type = 3; break;
      case 'R': type = 1; break;
      default: continue;   // free rows are not constraints
    }
    MDLctr c = mdlnewctr_prob(prob, reader.rowName(i), type);
    if (c == nullptr) {
      *error = std::string("constraint refused: ") + reader.rowName(i);
      return false;
    }
    int rc = 0;
    if (sense[i] == 'R')
      rc = mdlsetrange(c, rlo[i], rup[i]);
    else
      rc = mdlsetterm(c, nullptr, type == 2 ? rlo[i] : rup[i]);
    if (rc != 0) {
      *error = std::string("right-hand side refused: ") + reader.rowName(i);
      return false;
    }
    rows[i] = c;
    info->nrows++;
  }

  const CoinPackedMatrix *m = reader.getMatrixByCol();
  const CoinBigIndex *start = m->getVectorStarts();
  const int *len = m->getVectorLengths();
  const int *ind = m->getIndices();
  const double *val = m->getElements();
  for (int j = 0; j < ncols; ++j)
    for (CoinBigIndex k = start[j]; k < start[j] + len[j]; ++k)
      if (rows[ind[k]] != nullptr && mdladdterm(rows[ind[k]], vars[j], val[k]) != 0) {
        *error = "term refused";
        return false;
      }

  MDLctr objective = mdlnewctr_prob(prob, reader.getObjectiveName(), 0);
  if (objective == nullptr) {
    *error = "objective refused";
    return false;
  }
  for (int j = 0; j < ncols; ++j)
    if (obj[j] != 0.0 && mdladdterm(objective, vars[j], obj[j]) != 0) {
      *error = "objective term refused";
      return false;
    }
  if (quadratic && !add_quadratic_objective(reader, objective, vars, info, error)) return false;
  info->objconst = reader.objectiveOffset();
  // A term without variable moves the constant to the other side: adding
  // r makes the objective c'x - r.
  if (with_constant && info->objconst != 0.0 && mdladdterm(objective, nullptr, info->objconst) != 0) {
    *error = "objective constant refused";
    return false;
  }
  if (mdlsetobj_prob(prob, objective) != 0) {
    *error = "objective not set";
    return false;
  }
  info->ncols = ncols;
  return true;
}

// Open `file` with a reader that stays silent.
bool open_mps(CoinMpsIO &reader, const char *file, std::string *error) {
  reader.messageHandler()->setLogLevel(0);
  if (reader.readMps(file, "") != 0) {
    *error = std::string("cannot read ") + file;
    return false;
  }
  return true;
}

}  // namespace

bool build_from_mps(MDLprob prob, const char *file, bool with_constant, mps_model_info *info,
                    std::string *error) {
  CoinMpsIO reader;
  return open_mps(reader, file, error) && state_model(reader, prob, with_constant, false, info, error);
}

bool build_from_qps(MDLprob prob, const char *file, bool with_constant, mps_model_info *info,
                    std::string *error) {
  CoinMpsIO reader;
  return open_mps(reader, file, error) && state_model(reader, prob, with_constant, true, info, error);
}
