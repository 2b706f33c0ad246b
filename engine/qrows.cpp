/*
 * qrows.cpp -- the load calls with quadratic rows: the linear problem is
 * loaded as by the other loads and each row's quadratic form kept beside it.
 */
#include <new>
#include <vector>

#include "engine.h"

namespace {

// Check the quadratic-row arrays and collect them per row (a row given
// twice has its triples merged); 0 or a KVSL_ERR_* code.
int collect_quad_rows(int ncols, int nrows, int nqrows, const int qrow[],
                      const int64_t qrowcount[], const int col1[], const int col2[],
                      const double val[], std::vector<kvsl::quad_row> &out) {
  out.clear();
  if (nqrows < 0 || ncols < 0 || nrows < 0) return KVSL_ERR_BADARG;
  if (nqrows > 0 && (qrow == nullptr || qrowcount == nullptr)) return KVSL_ERR_BADARG;
  int64_t total = 0;
  for (int k = 0; k < nqrows; ++k) {
    if (qrow[k] < 0 || qrow[k] >= nrows) return KVSL_ERR_INDEX;
    if (qrowcount[k] < 0) return KVSL_ERR_BADARG;
    total += qrowcount[k];
  }
  if (total > 0 && (col1 == nullptr || col2 == nullptr || val == nullptr)) return KVSL_ERR_BADARG;
  std::vector<int> slot(nrows, -1);
  int64_t at = 0;
  for (int k = 0; k < nqrows; ++k) {
    if (slot[qrow[k]] < 0) {
      slot[qrow[k]] = static_cast<int>(out.size());
      out.push_back({qrow[k], {}, {}, {}});
    }
    kvsl::quad_row &r = out[slot[qrow[k]]];
    for (int64_t e = at; e < at + qrowcount[k]; ++e) {
      if (col1[e] < 0 || col1[e] >= ncols || col2[e] < 0 || col2[e] >= ncols)
        return KVSL_ERR_INDEX;
      if (val[e] == 0.0) continue;
      r.col1.push_back(col1[e]);
      r.col2.push_back(col2[e]);
      r.val.push_back(val[e]);
    }
    at += qrowcount[k];
  }
  // Rows whose triples were all zero are linear.
  std::erase_if(out, [](const kvsl::quad_row &r) { return r.val.empty(); });
  return 0;
}

// Load through `load_rest` (the load without quadratic rows), then keep the
// collected rows on success.
template <typename Load>
int load_with_rows(KVSLprob prob, int ncols, int nrows, int nqrows, const int qrow[],
                   const int64_t qrowcount[], const int col1[], const int col2[],
                   const double val[], Load load_rest) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  std::vector<kvsl::quad_row> rows;
  try {
    if (int rc = collect_quad_rows(ncols, nrows, nqrows, qrow, qrowcount, col1, col2, val, rows);
        rc != 0)
      return kvsl::fail(prob, rc);
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  }
  if (int rc = load_rest(); rc != 0) return rc;
  prob->qrows = std::move(rows);
  return 0;
}

}  // namespace

// Load a problem with quadratic rows (and a quadratic objective).
KVSL_EXPORT int KVSLloadqcqp64(KVSLprob prob, const char *name, int ncols, int nrows,
                               const char rowtype[], const double rhs[], const double range[],
                               const double obj[], const int64_t colstart[],
                               const int colcount[], const int rowind[], const double rowval[],
                               const double lb[], const double ub[], int64_t nqobj,
                               const int qobjcol1[], const int qobjcol2[],
                               const double qobjval[], int nqrows, const int qrow[],
                               const int64_t qrowcount[], const int qrowcol1[],
                               const int qrowcol2[], const double qrowval[]) {
  return load_with_rows(prob, ncols, nrows, nqrows, qrow, qrowcount, qrowcol1, qrowcol2, qrowval,
                        [&] {
                          return KVSLloadqp64(prob, name, ncols, nrows, rowtype, rhs, range, obj,
                                              colstart, colcount, rowind, rowval, lb, ub, nqobj,
                                              qobjcol1, qobjcol2, qobjval);
                        });
}

// Load a problem with quadratic rows, global entities and sets.
KVSL_EXPORT int KVSLloadqcqpglobal64(
    KVSLprob prob, const char *name, int ncols, int nrows, const char rowtype[],
    const double rhs[], const double range[], const double obj[], const int64_t colstart[],
    const int colcount[], const int rowind[], const double rowval[], const double lb[],
    const double ub[], int64_t nqobj, const int qobjcol1[], const int qobjcol2[],
    const double qobjval[], int nqrows, const int qrow[], const int64_t qrowcount[],
    const int qrowcol1[], const int qrowcol2[], const double qrowval[], int nglobal, int nsets,
    const char enttype[], const int entcol[], const double entlimit[], const char settype[],
    const int64_t setstart[], const int setcol[], const double setref[]) {
  return load_with_rows(prob, ncols, nrows, nqrows, qrow, qrowcount, qrowcol1, qrowcol2, qrowval,
                        [&] {
                          return KVSLloadqglobal64(prob, name, ncols, nrows, rowtype, rhs, range,
                                                   obj, colstart, colcount, rowind, rowval, lb,
                                                   ub, nqobj, qobjcol1, qobjcol2, qobjval,
                                                   nglobal, nsets, enttype, entcol, entlimit,
                                                   settype, setstart, setcol, setref);
                        });
}
