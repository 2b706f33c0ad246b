/*
 * load.cpp -- loading a matrix into the backend model, and the changes made
 * to a loaded problem: objective, sense, bounds, limits, names, special
 * rows and branching directives.
 */
#include <algorithm>
#include <cstring>
#include <new>

#include <ClpPackedMatrix.hpp>
#include <ClpSimplex.hpp>
#include <CoinPackedMatrix.hpp>

#include "log.h"

namespace {

// Everything a load call may pass; the narrower loads leave parts empty.
struct load_args {
  const char *name;
  int ncols, nrows;
  const char *rowtype;
  const double *rhs, *range, *obj;
  const int64_t *colstart;
  const int *colcount, *rowind;
  const double *rowval, *lb, *ub;
  int64_t nqobj = 0;
  const int *qcol1 = nullptr, *qcol2 = nullptr;
  const double *qval = nullptr;
  int nglobal = 0, nsets = 0;
  const char *enttype = nullptr;
  const int *entcol = nullptr;
  const double *entlimit = nullptr;
  const char *settype = nullptr;
  const int64_t *setstart = nullptr;
  const int *setcol = nullptr;
  const double *setref = nullptr;
};

// Start and end (exclusive) of column j's coefficients.
int64_t col_begin(const load_args &a, int j) { return a.colstart[j]; }
int64_t col_end(const load_args &a, int j) {
  return a.colcount != nullptr ? a.colstart[j] + a.colcount[j] : a.colstart[j + 1];
}

// Check sizes, letters and indices of the arrays; 0 or a KVSL_ERR_* code.
int check_args(const load_args &a) {
  if (a.ncols < 0 || a.nrows < 0 || a.nqobj < 0 || a.nglobal < 0 || a.nsets < 0)
    return KVSL_ERR_BADARG;
  if (a.nrows > 0 && (a.rowtype == nullptr || a.rhs == nullptr)) return KVSL_ERR_BADARG;
  if (a.ncols > 0 && a.colstart == nullptr) return KVSL_ERR_BADARG;
  for (int i = 0; i < a.nrows; ++i) {
    char t = a.rowtype[i];
    if (std::strchr("NLGER", t) == nullptr || t == '\0') return KVSL_ERR_BADARG;
    if (t == 'R' && (a.range == nullptr || a.range[i] < 0.0)) return KVSL_ERR_BADARG;
  }
  int64_t nnz = 0;
  for (int j = 0; j < a.ncols; ++j) {
    int64_t b = col_begin(a, j), e = col_end(a, j);
    if (b < 0 || e < b) return KVSL_ERR_BADARG;
    if (e > b && (a.rowind == nullptr || a.rowval == nullptr)) return KVSL_ERR_BADARG;
    for (int64_t k = b; k < e; ++k)
      if (a.rowind[k] < 0 || a.rowind[k] >= a.nrows) return KVSL_ERR_INDEX;
    nnz += e - b;
  }
  // The backend indexes coefficients with 32-bit integers.
  if (nnz > INT32_MAX) return KVSL_ERR_UNSUPPORTED;
  if (a.nqobj > 0 && (a.qcol1 == nullptr || a.qcol2 == nullptr || a.qval == nullptr))
    return KVSL_ERR_BADARG;
  for (int64_t k = 0; k < a.nqobj; ++k)
    if (a.qcol1[k] < 0 || a.qcol1[k] >= a.ncols || a.qcol2[k] < 0 || a.qcol2[k] >= a.ncols)
      return KVSL_ERR_INDEX;
  if (a.nglobal > 0 && (a.enttype == nullptr || a.entcol == nullptr)) return KVSL_ERR_BADARG;
  for (int k = 0; k < a.nglobal; ++k) {
    if (a.entcol[k] < 0 || a.entcol[k] >= a.ncols) return KVSL_ERR_INDEX;
    if (std::strchr("BIPSR", a.enttype[k]) == nullptr || a.enttype[k] == '\0')
      return KVSL_ERR_BADARG;
  }
  if (a.nsets > 0) {
    if (a.settype == nullptr || a.setstart == nullptr) return KVSL_ERR_BADARG;
    for (int s = 0; s < a.nsets; ++s) {
      if (a.settype[s] != '1' && a.settype[s] != '2') return KVSL_ERR_BADARG;
      if (a.setstart[s] < 0 || a.setstart[s + 1] < a.setstart[s]) return KVSL_ERR_BADARG;
    }
    if (a.setstart[a.nsets] > a.setstart[0] && (a.setcol == nullptr || a.setref == nullptr))
      return KVSL_ERR_BADARG;
    for (int64_t k = a.setstart[0]; k < a.setstart[a.nsets]; ++k)
      if (a.setcol[k] < 0 || a.setcol[k] >= a.ncols) return KVSL_ERR_INDEX;
  }
  return 0;
}

// Backend activity bounds of row i from its type, rhs and range.
void row_bounds(const load_args &a, int i, double &lo, double &up) {
  double r = a.rhs[i];
  switch (a.rowtype[i]) {
    case 'L': lo = -COIN_DBL_MAX; up = kvsl::to_backend(r); break;
    case 'G': lo = kvsl::to_backend(r); up = COIN_DBL_MAX; break;
    case 'E': lo = up = r; break;
    case 'R':
      up = kvsl::to_backend(r);
      lo = a.range[i] >= KVSL_INFINITY ? -COIN_DBL_MAX : kvsl::to_backend(r - a.range[i]);
      break;
    default: lo = -COIN_DBL_MAX; up = COIN_DBL_MAX; break;
  }
}

// Upper triangle of the quadratic objective, column-wise, duplicates summed.
CoinPackedMatrix quadratic_matrix(const load_args &a) {
  std::vector<int> rows, cols;
  std::vector<double> vals;
  rows.reserve(a.nqobj);
  cols.reserve(a.nqobj);
  vals.reserve(a.nqobj);
  for (int64_t k = 0; k < a.nqobj; ++k) {
    if (a.qval[k] == 0.0) continue;
    rows.push_back(std::min(a.qcol1[k], a.qcol2[k]));
    cols.push_back(std::max(a.qcol1[k], a.qcol2[k]));
    vals.push_back(a.qval[k]);
  }
  CoinPackedMatrix q(true, rows.data(), cols.data(), vals.data(),
                     static_cast<CoinBigIndex>(vals.size()));
  q.setDimensions(a.ncols, a.ncols);
  return q;
}

// The backend's starting point for one column or row, as its own load call
// sets it: the lower bound when positive, else the upper bound when
// negative, else 0.
double starting_value(double lo, double up) {
  if (lo > 0.0) return lo;
  if (up < 0.0) return up;
  return 0.0;
}

// Column bounds, objective and row activity bounds written straight into
// the arrays of a backend model of the right size, with its starting point.
void fill_bounds(ClpSimplex &m, const load_args &a) {
  const int n = a.ncols;
  double *lb = m.columnLower(), *ub = m.columnUpper(), *obj = m.objective();
  for (int j = 0; j < n; ++j) {
    lb[j] = a.lb != nullptr ? kvsl::to_backend(a.lb[j]) : 0.0;
    ub[j] = a.ub != nullptr ? kvsl::to_backend(a.ub[j]) : COIN_DBL_MAX;
    obj[j] = a.obj != nullptr ? a.obj[j] : 0.0;
  }
  for (int k = 0; k < a.nglobal; ++k)
    if (a.enttype[k] == 'B') {
      int j = a.entcol[k];
      lb[j] = std::max(lb[j], 0.0);
      ub[j] = std::min(ub[j], 1.0);
    }
  double *x = m.primalColumnSolution();
  for (int j = 0; j < n; ++j) x[j] = starting_value(lb[j], ub[j]);
  double *rlo = m.rowLower(), *rup = m.rowUpper(), *act = m.primalRowSolution();
  for (int i = 0; i < a.nrows; ++i) {
    row_bounds(a, i, rlo[i], rup[i]);
    act[i] = starting_value(rlo[i], rup[i]);
  }
}

// The load's matrix in the backend's own arrays, without gaps; the backend
// matrix takes them over, so the coefficients are copied once.
CoinPackedMatrix *backend_matrix(const load_args &a) {
  const int n = a.ncols;
  int64_t nnz = 0;
  for (int j = 0; j < n; ++j) nnz += col_end(a, j) - col_begin(a, j);
  std::unique_ptr<CoinBigIndex[]> start(new CoinBigIndex[n + 1]);
  std::unique_ptr<int[]> length(new int[n]);
  std::unique_ptr<int[]> index(new int[nnz]);
  std::unique_ptr<double[]> value(new double[nnz]);
  CoinBigIndex at = 0;
  for (int j = 0; j < n; ++j) {
    const int64_t b = col_begin(a, j), e = col_end(a, j);
    start[j] = at;
    length[j] = static_cast<int>(e - b);
    if (e > b) {
      std::memcpy(index.get() + at, a.rowind + b, sizeof(int) * static_cast<size_t>(e - b));
      std::memcpy(value.get() + at, a.rowval + b, sizeof(double) * static_cast<size_t>(e - b));
    }
    at += static_cast<CoinBigIndex>(e - b);
  }
  start[n] = at;
  auto matrix = std::make_unique<CoinPackedMatrix>();
  double *elem = value.release();
  int *ind = index.release(), *len = length.release();
  CoinBigIndex *st = start.release();
  matrix->assignMatrix(true, a.nrows, n, at, elem, ind, st, len);
  return matrix.release();
}

// Build the backend model of a load.  The backend is first made at its
// size without coefficients, its bounds and objective are written in
// place, and the matrix is handed over: no array of the load is copied
// twice, and the peak of a large load is the model it leaves plus the
// empty matrix's column starts and lengths.
std::unique_ptr<ClpSimplex> build_model(kvsl_prob *prob, const load_args &a) {
  auto m = std::make_unique<ClpSimplex>();
  m->passInMessageHandler(prob->log.get());
  {
    static const int no_index = 0;
    static const double no_value = 0.0;
    std::vector<CoinBigIndex> empty(static_cast<size_t>(a.ncols) + 1, 0);
    m->loadProblem(a.ncols, a.nrows, empty.data(), &no_index, &no_value, nullptr, nullptr,
                   nullptr, nullptr, nullptr);
  }
  fill_bounds(*m, a);
  std::unique_ptr<CoinPackedMatrix> coin(backend_matrix(a));
  auto packed = std::make_unique<ClpPackedMatrix>(coin.get());
  coin.release();   // the packed matrix owns it now
  m->replaceMatrix(packed.release(), true);
  if (a.nqobj > 0) {
    CoinPackedMatrix q = quadratic_matrix(a);
    if (q.getNumElements() > 0) m->loadQuadraticObjective(q);
  }
  m->setOptimizationDirection(prob->sense);
  return m;
}

// Replace everything the problem holds by the load's data.  The new state is
// made beside the old one and only then swapped in, so that a load that
// runs out of memory leaves the problem as it was.
int load(kvsl_prob *prob, const load_args &a) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (int rc = check_args(a); rc != 0) return kvsl::fail(prob, rc);
  try {
    std::unique_ptr<ClpSimplex> m = build_model(prob, a);
    std::string modelname = a.name != nullptr ? a.name : "";
    std::vector<char> rowtype(a.rowtype, a.rowtype + a.nrows);
    std::vector<double> rhs(a.rhs, a.rhs + a.nrows), range(a.nrows, 0.0);
    for (int i = 0; i < a.nrows; ++i)
      if (a.rowtype[i] == 'R') range[i] = a.range[i];
    std::vector<kvsl::entity> entities;
    entities.reserve(static_cast<size_t>(a.nglobal));
    for (int k = 0; k < a.nglobal; ++k)
      entities.push_back({a.enttype[k], a.entcol[k], a.entlimit != nullptr ? a.entlimit[k] : 0.0});
    std::vector<char> settype(a.settype, a.settype + a.nsets);
    std::vector<int64_t> setstart(a.setstart, a.setstart + (a.nsets > 0 ? a.nsets + 1 : 0));
    std::vector<int> setcol;
    std::vector<double> setref;
    if (a.nsets > 0) {
      setcol.assign(a.setcol + a.setstart[0], a.setcol + a.setstart[a.nsets]);
      setref.assign(a.setref + a.setstart[0], a.setref + a.setstart[a.nsets]);
      for (auto &s : setstart) s -= a.setstart[0];
    }

    // Nothing below allocates.
    prob->lp = std::move(m);
    prob->loaded = true;
    prob->ncols = a.ncols;
    prob->modelname.swap(modelname);
    prob->rowtype.swap(rowtype);
    prob->rhs.swap(rhs);
    prob->range.swap(range);
    prob->objconst = 0.0;
    prob->has_quadratic = kvsl::quadratic_of(*prob->lp) != nullptr;
    prob->qrows.clear();   // the quadratic-row loads set them after this
    prob->entities.swap(entities);
    prob->settype.swap(settype);
    prob->setstart.swap(setstart);
    prob->setcol.swap(setcol);
    prob->setref.swap(setref);
    prob->rownames.reset(a.nrows);
    prob->colnames.reset(a.ncols);
    prob->setnames.reset(a.nsets);
    prob->directives.clear();
    prob->modelcuts.clear();
    prob->delayedrows.clear();
    prob->indicators.clear();
    kvsl::clear_cut_pool(prob);
    prob->iterations = 0;
    prob->nodes = 0;
    prob->best_bound = 0.0;
    prob->solvetime = 0.0;
    kvsl::drop_solutions(prob);
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  } catch (...) {
    return kvsl::fail(prob, KVSL_ERR_BACKEND);
  }
  return 0;
}

// Check a list of n row indices of the loaded problem.
int check_rows(const kvsl_prob *prob, int n, const int row[]) {
  if (!prob->loaded) return KVSL_ERR_NOTLOADED;
  if (n < 0 || (n > 0 && row == nullptr)) return KVSL_ERR_BADARG;
  for (int k = 0; k < n; ++k)
    if (row[k] < 0 || row[k] >= static_cast<int>(prob->rowtype.size())) return KVSL_ERR_INDEX;
  return 0;
}

// Check a list of n column indices of the loaded problem.
int check_cols(const kvsl_prob *prob, int n, const int col[]) {
  if (!prob->loaded) return KVSL_ERR_NOTLOADED;
  if (n < 0 || (n > 0 && col == nullptr)) return KVSL_ERR_BADARG;
  for (int k = 0; k < n; ++k)
    if (col[k] < 0 || col[k] >= prob->ncols) return KVSL_ERR_INDEX;
  return 0;
}

// Append rows to a list of special rows, keeping each row once.
void add_unique(std::vector<int> &list, int n, const int row[]) {
  for (int k = 0; k < n; ++k)
    if (std::find(list.begin(), list.end(), row[k]) == list.end()) list.push_back(row[k]);
}

}  // namespace

// Load a linear problem.
KVSL_EXPORT int KVSLloadlp64(KVSLprob prob, const char *name, int ncols, int nrows,
                             const char rowtype[], const double rhs[], const double range[],
                             const double obj[], const int64_t colstart[], const int colcount[],
                             const int rowind[], const double rowval[], const double lb[],
                             const double ub[]) {
  return load(prob, {name, ncols, nrows, rowtype, rhs, range, obj, colstart, colcount, rowind,
                     rowval, lb, ub});
}

// Load a problem with a quadratic objective.
KVSL_EXPORT int KVSLloadqp64(KVSLprob prob, const char *name, int ncols, int nrows,
                             const char rowtype[], const double rhs[], const double range[],
                             const double obj[], const int64_t colstart[], const int colcount[],
                             const int rowind[], const double rowval[], const double lb[],
                             const double ub[], int64_t nqobj, const int qobjcol1[],
                             const int qobjcol2[], const double qobjval[]) {
  load_args a{name, ncols, nrows, rowtype, rhs, range, obj, colstart, colcount, rowind,
              rowval, lb, ub};
  a.nqobj = nqobj;
  a.qcol1 = qobjcol1;
  a.qcol2 = qobjcol2;
  a.qval = qobjval;
  return load(prob, a);
}

// Load a problem with global entities and sets: the quadratic-global load
// without quadratic terms.
KVSL_EXPORT int KVSLloadglobal64(KVSLprob prob, const char *name, int ncols, int nrows,
                                 const char rowtype[], const double rhs[], const double range[],
                                 const double obj[], const int64_t colstart[],
                                 const int colcount[], const int rowind[], const double rowval[],
                                 const double lb[], const double ub[], int nglobal, int nsets,
                                 const char enttype[], const int entcol[],
                                 const double entlimit[], const char settype[],
                                 const int64_t setstart[], const int setcol[],
                                 const double setref[]) {
  return KVSLloadqglobal64(prob, name, ncols, nrows, rowtype, rhs, range, obj, colstart,
                           colcount, rowind, rowval, lb, ub, 0, nullptr, nullptr, nullptr,
                           nglobal, nsets, enttype, entcol, entlimit, settype, setstart, setcol,
                           setref);
}

// Load a problem with a quadratic objective, global entities and sets.
KVSL_EXPORT int KVSLloadqglobal64(KVSLprob prob, const char *name, int ncols, int nrows,
                                  const char rowtype[], const double rhs[], const double range[],
                                  const double obj[], const int64_t colstart[],
                                  const int colcount[], const int rowind[], const double rowval[],
                                  const double lb[], const double ub[], int64_t nqobj,
                                  const int qobjcol1[], const int qobjcol2[],
                                  const double qobjval[], int nglobal, int nsets,
                                  const char enttype[], const int entcol[],
                                  const double entlimit[], const char settype[],
                                  const int64_t setstart[], const int setcol[],
                                  const double setref[]) {
  load_args a{name, ncols, nrows, rowtype, rhs, range, obj, colstart, colcount, rowind,
              rowval, lb, ub};
  a.nqobj = nqobj;
  a.qcol1 = qobjcol1;
  a.qcol2 = qobjcol2;
  a.qval = qobjval;
  a.nglobal = nglobal;
  a.nsets = nsets;
  a.enttype = enttype;
  a.entcol = entcol;
  a.entlimit = entlimit;
  a.settype = settype;
  a.setstart = setstart;
  a.setcol = setcol;
  a.setref = setref;
  return load(prob, a);
}

// Change objective coefficients; column -1 is the constant k (objective c'x - k).
KVSL_EXPORT int KVSLchgobj(KVSLprob prob, int n, const int col[], const double val[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  if (n < 0 || (n > 0 && (col == nullptr || val == nullptr))) return kvsl::fail(prob, KVSL_ERR_BADARG);
  for (int k = 0; k < n; ++k)
    if (col[k] < -1 || col[k] >= prob->ncols) return kvsl::fail(prob, KVSL_ERR_INDEX);
  for (int k = 0; k < n; ++k) {
    if (col[k] == -1)
      prob->objconst = val[k];
    else
      prob->lp->setObjectiveCoefficient(col[k], val[k]);
  }
  if (n > 0) kvsl::drop_solutions(prob);
  return 0;
}

// Set the objective sense (1 minimise, -1 maximise); allowed without a matrix.
KVSL_EXPORT int KVSLchgobjsense(KVSLprob prob, int sense) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (sense != 1 && sense != -1) return kvsl::fail(prob, KVSL_ERR_BADARG);
  if (sense == prob->sense) return 0;
  prob->sense = sense;
  // The solution held stays readable until the next optimisation: it is
  // the answer to the problem as it was solved.
  if (prob->loaded) prob->lp->setOptimizationDirection(sense);
  return 0;
}

// Change bounds 'L', 'U' or 'B' of columns; +-1e20 is infinite.
KVSL_EXPORT int KVSLchgbounds(KVSLprob prob, int n, const int col[], const char bndtype[],
                              const double val[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (int rc = check_cols(prob, n, col); rc != 0) return kvsl::fail(prob, rc);
  if (n > 0 && (bndtype == nullptr || val == nullptr)) return kvsl::fail(prob, KVSL_ERR_BADARG);
  for (int k = 0; k < n; ++k)
    if (bndtype[k] != 'L' && bndtype[k] != 'U' && bndtype[k] != 'B')
      return kvsl::fail(prob, KVSL_ERR_BADARG);
  for (int k = 0; k < n; ++k) {
    double v = kvsl::to_backend(val[k]);
    if (bndtype[k] != 'U') prob->lp->setColumnLower(col[k], v);
    if (bndtype[k] != 'L') prob->lp->setColumnUpper(col[k], v);
  }
  return 0;   // the solution held stays readable until the next optimisation
}

// Change the limits of partial integer and semi-continuous entities.
KVSL_EXPORT int KVSLchgglblimit(KVSLprob prob, int n, const int col[], const double limit[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (int rc = check_cols(prob, n, col); rc != 0) return kvsl::fail(prob, rc);
  if (n > 0 && limit == nullptr) return kvsl::fail(prob, KVSL_ERR_BADARG);
  std::vector<kvsl::entity *> found(n, nullptr);
  for (int k = 0; k < n; ++k) {
    for (auto &e : prob->entities)
      if (e.col == col[k] && (e.type == 'P' || e.type == 'S' || e.type == 'R')) found[k] = &e;
    if (found[k] == nullptr) return kvsl::fail(prob, KVSL_ERR_BADARG);
  }
  for (int k = 0; k < n; ++k) found[k]->limit = limit[k];
  return 0;   // the solution held stays readable until the next optimisation
}

// Mark rows as model cuts.  They stay ordinary rows of the matrix: a model
// cut is a valid inequality, so enforcing it from the start is exact.
KVSL_EXPORT int KVSLloadmodelcuts(KVSLprob prob, int n, const int row[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (int rc = check_rows(prob, n, row); rc != 0) return kvsl::fail(prob, rc);
  add_unique(prob->modelcuts, n, row);
  return 0;
}

// Mark rows as delayed.  They stay ordinary rows of the matrix, so no
// reported solution ever violates them.
KVSL_EXPORT int KVSLloaddelayedrows(KVSLprob prob, int n, const int row[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (int rc = check_rows(prob, n, row); rc != 0) return kvsl::fail(prob, rc);
  add_unique(prob->delayedrows, n, row);
  return 0;
}

// Make rows indicator rows of binary columns (flag 0: a plain row again).
KVSL_EXPORT int KVSLsetindicators(KVSLprob prob, int n, const int row[], const int col[],
                                  const int flag[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (int rc = check_rows(prob, n, row); rc != 0) return kvsl::fail(prob, rc);
  if (int rc = check_cols(prob, n, col); rc != 0) return kvsl::fail(prob, rc);
  if (n > 0 && flag == nullptr) return kvsl::fail(prob, KVSL_ERR_BADARG);
  for (int k = 0; k < n; ++k)
    if (flag[k] < -1 || flag[k] > 1) return kvsl::fail(prob, KVSL_ERR_BADARG);
  for (int k = 0; k < n; ++k) {
    auto &ind = prob->indicators;
    ind.erase(std::remove_if(ind.begin(), ind.end(),
                             [&](const kvsl::indicator &i) { return i.row == row[k]; }),
              ind.end());
    if (flag[k] != 0) ind.push_back({row[k], col[k], flag[k]});
  }
  if (n > 0) kvsl::drop_solutions(prob);
  return 0;
}

// Names of rows (1), columns (2) or sets (3) first..last, zero-separated.
KVSL_EXPORT int KVSLaddnames(KVSLprob prob, int type, const char names[], int first, int last) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  kvsl::name_list *list = type == 1   ? &prob->rownames
                          : type == 2 ? &prob->colnames
                          : type == 3 ? &prob->setnames
                                      : nullptr;
  if (list == nullptr || names == nullptr || first < 0 || last < first - 1)
    return kvsl::fail(prob, KVSL_ERR_BADARG);
  if (last >= list->size()) return kvsl::fail(prob, KVSL_ERR_INDEX);
  try {
    list->set(first, last, names);
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  }
  return 0;
}

// Load branching directives, replacing earlier ones.
KVSL_EXPORT int KVSLloaddirs(KVSLprob prob, int n, const int obj[], const int prio[],
                             const char dir[], const double up[], const double down[]) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (!prob->loaded) return kvsl::fail(prob, KVSL_ERR_NOTLOADED);
  if (n < 0 || (n > 0 && obj == nullptr)) return kvsl::fail(prob, KVSL_ERR_BADARG);
  int nsets = static_cast<int>(prob->settype.size());
  for (int k = 0; k < n; ++k) {
    if (obj[k] >= prob->ncols || obj[k] < -nsets) return kvsl::fail(prob, KVSL_ERR_INDEX);
    if (dir != nullptr && dir[k] != 'U' && dir[k] != 'D' && dir[k] != 'N')
      return kvsl::fail(prob, KVSL_ERR_BADARG);
    if (prio != nullptr && (prio[k] < 0 || prio[k] > 1000)) return kvsl::fail(prob, KVSL_ERR_BADARG);
  }
  double pc = kvsl::dblcontrol(prob, KVSL_CTRL_PSEUDOCOST);
  prob->directives.clear();
  for (int k = 0; k < n; ++k)
    prob->directives.push_back({obj[k], prio != nullptr ? prio[k] : 500,
                                dir != nullptr ? dir[k] : 'N', up != nullptr ? up[k] : pc,
                                down != nullptr ? down[k] : pc});
  return 0;
}
