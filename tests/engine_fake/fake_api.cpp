/*
 * fake_api.cpp -- the engine interface implemented by the recording engine:
 * every function records its call and answers from the scripts.
 */
#include <cstring>
#include <memory>

#include "fake_internal.h"

using fake::call;
using fake::detail::args;
using fake::detail::len;
using fake::detail::run;
using fake::detail::run_plain;

namespace {

// Number of matrix elements a column-wise matrix refers to: the largest end
// of a column (colstart[j] + colcount[j]), or colstart[ncols] without counts.
int64_t matrix_elements(int ncols, const int64_t colstart[], const int colcount[]) {
  if (colstart == nullptr) return 0;
  if (colcount == nullptr) return len(colstart[len(ncols)]);
  int64_t n = 0;
  for (int64_t j = 0; j < len(ncols); ++j) n = std::max(n, colstart[j] + colcount[j]);
  return n;
}

// Sum of the per-row quadratic term counts.
int64_t sum_counts(int nqrows, const int64_t qrowcount[]) {
  if (qrowcount == nullptr) return 0;
  int64_t n = 0;
  for (int64_t k = 0; k < len(nqrows); ++k) n += len(qrowcount[k]);
  return n;
}

// The arguments every load shares.
void record_matrix(args &a, const char *name, int ncols, int nrows, const char rowtype[],
                   const double rhs[], const double range[], const double obj[],
                   const int64_t colstart[], const int colcount[], const int rowind[],
                   const double rowval[], const double lb[], const double ub[]) {
  a.s("name", name);
  a.i("ncols", ncols);
  a.i("nrows", nrows);
  a.cv("rowtype", rowtype, nrows);
  a.dv("rhs", rhs, nrows);
  a.dv("range", range, nrows);
  a.dv("obj", obj, ncols);
  a.iv("colstart", colstart, colcount == nullptr ? len(ncols) + 1 : ncols);
  a.iv("colcount", colcount, ncols);
  int64_t nels = matrix_elements(ncols, colstart, colcount);
  a.iv("rowind", rowind, nels);
  a.dv("rowval", rowval, nels);
  a.dv("lb", lb, ncols);
  a.dv("ub", ub, ncols);
}

// The quadratic objective triples.
void record_qobj(args &a, int64_t nqobj, const int qobjcol1[], const int qobjcol2[],
                 const double qobjval[]) {
  a.i("nqobj", nqobj);
  a.iv("qobjcol1", qobjcol1, nqobj);
  a.iv("qobjcol2", qobjcol2, nqobj);
  a.dv("qobjval", qobjval, nqobj);
}

// The quadratic rows and their concatenated triples.
void record_qrows(args &a, int nqrows, const int qrow[], const int64_t qrowcount[],
                  const int qrowcol1[], const int qrowcol2[], const double qrowval[]) {
  a.i("nqrows", nqrows);
  a.iv("qrow", qrow, nqrows);
  a.iv("qrowcount", qrowcount, nqrows);
  int64_t nterms = sum_counts(nqrows, qrowcount);
  a.iv("qrowcol1", qrowcol1, nterms);
  a.iv("qrowcol2", qrowcol2, nterms);
  a.dv("qrowval", qrowval, nterms);
}

// The global entities and special ordered sets.
void record_globals(args &a, int nglobal, int nsets, const char enttype[], const int entcol[],
                    const double entlimit[], const char settype[], const int64_t setstart[],
                    const int setcol[], const double setref[]) {
  a.i("nglobal", nglobal);
  a.i("nsets", nsets);
  a.cv("enttype", enttype, nglobal);
  a.iv("entcol", entcol, nglobal);
  a.dv("entlimit", entlimit, nglobal);
  a.cv("settype", settype, nsets);
  a.iv("setstart", setstart, len(nsets) + 1);
  int64_t nmembers = setstart != nullptr ? len(setstart[len(nsets)]) : 0;
  a.iv("setcol", setcol, nmembers);
  a.dv("setref", setref, nmembers);
}

// A load takes effect when its counts are sensible: the problem then holds
// a matrix of that size.
int load(kvsl_prob *p, int ncols, int nrows, int64_t nqobj, int nqrows, int nglobal,
         int nsets) {
  if (ncols < 0 || nrows < 0 || nqobj < 0 || nqrows < 0 || nglobal < 0 || nsets < 0)
    return KVSL_ERR_BADARG;
  p->ncols = ncols;
  p->nrows = nrows;
  return 0;
}

// An optimisation call: records its option letters.
int optimize(const char *fn, KVSLprob prob, const char *flags, int sense) {
  return run(
      fn, prob, true, [&](args &a, kvsl_prob *) { a.s("flags", flags); },
      [&](call &, kvsl_prob *p) {
        if (sense != 0) p->sense = sense;
        return 0;
      });
}

// A solution file call: records the file name and option letters.
int solution_file(const char *fn, KVSLprob prob, const char *file, const char *flags) {
  return run_plain(fn, prob, [&](args &a, kvsl_prob *) {
    a.s("file", file);
    a.s("flags", flags);
  });
}

// Loaded sizes of a problem (0 for one that is not live).
int64_t cols_of(const kvsl_prob *p) { return p != nullptr ? p->ncols : 0; }
int64_t rows_of(const kvsl_prob *p) { return p != nullptr ? p->nrows : 0; }

}  // namespace

extern "C" {

// ---- Start-up and problems ------------------------------------------------

// Succeeds unless a failure is injected.
int KVSLinit(const char *path) {
  return run(
      "KVSLinit", nullptr, false, [&](args &a, kvsl_prob *) { a.s("path", path); },
      [](call &, kvsl_prob *) { return 0; });
}

// Succeeds unless a failure is injected.
int KVSLfree(void) {
  return run(
      "KVSLfree", nullptr, false, [](args &, kvsl_prob *) {},
      [](call &, kvsl_prob *) { return 0; });
}

// Creates a live problem with default controls; the record's prob is the
// new problem.  A null prob pointer is KVSL_ERR_BADARG.
int KVSLcreateprob(KVSLprob *prob) {
  return run(
      "KVSLcreateprob", nullptr, false, [&](args &a, kvsl_prob *) { a.out("prob", prob); },
      [&](call &c, kvsl_prob *) {
        if (prob == nullptr) return KVSL_ERR_BADARG;
        auto p = std::make_unique<kvsl_prob>();
        fake::detail::add_live(p.get());
        *prob = c.prob = p.release();
        return 0;
      });
}

// Frees a live problem; anything else is KVSL_ERR_BADARG.
int KVSLdestroyprob(KVSLprob prob) {
  return run(
      "KVSLdestroyprob", prob, true, [](args &, kvsl_prob *) {},
      [](call &, kvsl_prob *p) {
        fake::detail::remove_live(p);
        delete p;
        return 0;
      });
}

// Recorded only: the recording engine writes no side files.
int KVSLsetprobname(KVSLprob prob, const char *name) {
  return run_plain("KVSLsetprobname", prob, [&](args &a, kvsl_prob *) { a.s("name", name); });
}

// Stores the callback that fake::emit_message invokes.
int KVSLsetcbmessage(KVSLprob prob, KVSLmsgcb cb, void *user) {
  return run(
      "KVSLsetcbmessage", prob, true,
      [&](args &a, kvsl_prob *) {
        if (cb == nullptr) a.null("cb");
        if (user == nullptr) a.null("user");
      },
      [&](call &, kvsl_prob *p) {
        p->cb = cb;
        p->user = user;
        return 0;
      });
}

// ---- Controls and attributes ------------------------------------------------

// Stores an integer control of the table; other numbers fail.
int KVSLsetintcontrol(KVSLprob prob, int control, int value) {
  return run(
      "KVSLsetintcontrol", prob, true,
      [&](args &a, kvsl_prob *) {
        a.i("control", control);
        a.i("value", value);
      },
      [&](call &, kvsl_prob *p) { return fake::detail::set_int_control(*p, control, value); });
}

// Reads an integer control (its default until set).
int KVSLgetintcontrol(KVSLprob prob, int control, int *value) {
  return run(
      "KVSLgetintcontrol", prob, true,
      [&](args &a, kvsl_prob *) {
        a.i("control", control);
        a.out("value", value);
      },
      [&](call &, kvsl_prob *p) {
        int v = 0;
        int rc = fake::detail::get_int_control(*p, control, v);
        if (rc == 0 && value != nullptr) *value = v;
        return rc;
      });
}

// Stores a double control of the table; other numbers fail.
int KVSLsetdblcontrol(KVSLprob prob, int control, double value) {
  return run(
      "KVSLsetdblcontrol", prob, true,
      [&](args &a, kvsl_prob *) {
        a.i("control", control);
        a.d("value", value);
      },
      [&](call &, kvsl_prob *p) { return fake::detail::set_dbl_control(*p, control, value); });
}

// Reads a double control (its default until set).
int KVSLgetdblcontrol(KVSLprob prob, int control, double *value) {
  return run(
      "KVSLgetdblcontrol", prob, true,
      [&](args &a, kvsl_prob *) {
        a.i("control", control);
        a.out("value", value);
      },
      [&](call &, kvsl_prob *p) {
        double v = 0;
        int rc = fake::detail::get_dbl_control(*p, control, v);
        if (rc == 0 && value != nullptr) *value = v;
        return rc;
      });
}

// Restores an integer or double control to its default.
int KVSLsetdefaultcontrol(KVSLprob prob, int control) {
  return run(
      "KVSLsetdefaultcontrol", prob, true, [&](args &a, kvsl_prob *) { a.i("control", control); },
      [&](call &, kvsl_prob *p) { return fake::detail::set_default_control(*p, control); });
}

// Answers the scripted attribute, the error code (1023) or 0.
int KVSLgetintattrib(KVSLprob prob, int attrib, int *value) {
  return run(
      "KVSLgetintattrib", prob, true,
      [&](args &a, kvsl_prob *) {
        a.i("attrib", attrib);
        a.out("value", value);
      },
      [&](call &, kvsl_prob *p) {
        int v = 0;
        int rc = fake::detail::get_int_attrib(*p, attrib, v);
        if (rc == 0 && value != nullptr) *value = v;
        return rc;
      });
}

// Answers the scripted attribute or 0.
int KVSLgetdblattrib(KVSLprob prob, int attrib, double *value) {
  return run(
      "KVSLgetdblattrib", prob, true,
      [&](args &a, kvsl_prob *) {
        a.i("attrib", attrib);
        a.out("value", value);
      },
      [&](call &, kvsl_prob *) {
        double v = 0;
        int rc = fake::detail::get_dbl_attrib(attrib, v);
        if (rc == 0 && value != nullptr) *value = v;
        return rc;
      });
}

// ---- Loading a matrix ---------------------------------------------------------

// Each load records all its arrays and, with sensible counts, sets the
// problem's loaded size.
int KVSLloadlp64(KVSLprob prob, const char *name, int ncols, int nrows, const char rowtype[],
                 const double rhs[], const double range[], const double obj[],
                 const int64_t colstart[], const int colcount[], const int rowind[],
                 const double rowval[], const double lb[], const double ub[]) {
  return run(
      "KVSLloadlp64", prob, true,
      [&](args &a, kvsl_prob *) {
        record_matrix(a, name, ncols, nrows, rowtype, rhs, range, obj, colstart, colcount,
                      rowind, rowval, lb, ub);
      },
      [&](call &, kvsl_prob *p) { return load(p, ncols, nrows, 0, 0, 0, 0); });
}

// As KVSLloadlp64 plus the quadratic objective.
int KVSLloadqp64(KVSLprob prob, const char *name, int ncols, int nrows, const char rowtype[],
                 const double rhs[], const double range[], const double obj[],
                 const int64_t colstart[], const int colcount[], const int rowind[],
                 const double rowval[], const double lb[], const double ub[], int64_t nqobj,
                 const int qobjcol1[], const int qobjcol2[], const double qobjval[]) {
  return run(
      "KVSLloadqp64", prob, true,
      [&](args &a, kvsl_prob *) {
        record_matrix(a, name, ncols, nrows, rowtype, rhs, range, obj, colstart, colcount,
                      rowind, rowval, lb, ub);
        record_qobj(a, nqobj, qobjcol1, qobjcol2, qobjval);
      },
      [&](call &, kvsl_prob *p) { return load(p, ncols, nrows, nqobj, 0, 0, 0); });
}

// As KVSLloadqp64 plus the quadratic rows.
int KVSLloadqcqp64(KVSLprob prob, const char *name, int ncols, int nrows, const char rowtype[],
                   const double rhs[], const double range[], const double obj[],
                   const int64_t colstart[], const int colcount[], const int rowind[],
                   const double rowval[], const double lb[], const double ub[], int64_t nqobj,
                   const int qobjcol1[], const int qobjcol2[], const double qobjval[],
                   int nqrows, const int qrow[], const int64_t qrowcount[],
                   const int qrowcol1[], const int qrowcol2[], const double qrowval[]) {
  return run(
      "KVSLloadqcqp64", prob, true,
      [&](args &a, kvsl_prob *) {
        record_matrix(a, name, ncols, nrows, rowtype, rhs, range, obj, colstart, colcount,
                      rowind, rowval, lb, ub);
        record_qobj(a, nqobj, qobjcol1, qobjcol2, qobjval);
        record_qrows(a, nqrows, qrow, qrowcount, qrowcol1, qrowcol2, qrowval);
      },
      [&](call &, kvsl_prob *p) { return load(p, ncols, nrows, nqobj, nqrows, 0, 0); });
}

// As KVSLloadlp64 plus entities and sets.
int KVSLloadglobal64(KVSLprob prob, const char *name, int ncols, int nrows,
                     const char rowtype[], const double rhs[], const double range[],
                     const double obj[], const int64_t colstart[], const int colcount[],
                     const int rowind[], const double rowval[], const double lb[],
                     const double ub[], int nglobal, int nsets, const char enttype[],
                     const int entcol[], const double entlimit[], const char settype[],
                     const int64_t setstart[], const int setcol[], const double setref[]) {
  return run(
      "KVSLloadglobal64", prob, true,
      [&](args &a, kvsl_prob *) {
        record_matrix(a, name, ncols, nrows, rowtype, rhs, range, obj, colstart, colcount,
                      rowind, rowval, lb, ub);
        record_globals(a, nglobal, nsets, enttype, entcol, entlimit, settype, setstart, setcol,
                       setref);
      },
      [&](call &, kvsl_prob *p) { return load(p, ncols, nrows, 0, 0, nglobal, nsets); });
}

// As KVSLloadglobal64 plus the quadratic objective.
int KVSLloadqglobal64(KVSLprob prob, const char *name, int ncols, int nrows,
                      const char rowtype[], const double rhs[], const double range[],
                      const double obj[], const int64_t colstart[], const int colcount[],
                      const int rowind[], const double rowval[], const double lb[],
                      const double ub[], int64_t nqobj, const int qobjcol1[],
                      const int qobjcol2[], const double qobjval[], int nglobal, int nsets,
                      const char enttype[], const int entcol[], const double entlimit[],
                      const char settype[], const int64_t setstart[], const int setcol[],
                      const double setref[]) {
  return run(
      "KVSLloadqglobal64", prob, true,
      [&](args &a, kvsl_prob *) {
        record_matrix(a, name, ncols, nrows, rowtype, rhs, range, obj, colstart, colcount,
                      rowind, rowval, lb, ub);
        record_qobj(a, nqobj, qobjcol1, qobjcol2, qobjval);
        record_globals(a, nglobal, nsets, enttype, entcol, entlimit, settype, setstart, setcol,
                       setref);
      },
      [&](call &, kvsl_prob *p) { return load(p, ncols, nrows, nqobj, 0, nglobal, nsets); });
}

// As KVSLloadqglobal64 plus the quadratic rows.
int KVSLloadqcqpglobal64(KVSLprob prob, const char *name, int ncols, int nrows,
                         const char rowtype[], const double rhs[], const double range[],
                         const double obj[], const int64_t colstart[], const int colcount[],
                         const int rowind[], const double rowval[], const double lb[],
                         const double ub[], int64_t nqobj, const int qobjcol1[],
                         const int qobjcol2[], const double qobjval[], int nqrows,
                         const int qrow[], const int64_t qrowcount[], const int qrowcol1[],
                         const int qrowcol2[], const double qrowval[], int nglobal, int nsets,
                         const char enttype[], const int entcol[], const double entlimit[],
                         const char settype[], const int64_t setstart[], const int setcol[],
                         const double setref[]) {
  return run(
      "KVSLloadqcqpglobal64", prob, true,
      [&](args &a, kvsl_prob *) {
        record_matrix(a, name, ncols, nrows, rowtype, rhs, range, obj, colstart, colcount,
                      rowind, rowval, lb, ub);
        record_qobj(a, nqobj, qobjcol1, qobjcol2, qobjval);
        record_qrows(a, nqrows, qrow, qrowcount, qrowcol1, qrowcol2, qrowval);
        record_globals(a, nglobal, nsets, enttype, entcol, entlimit, settype, setstart, setcol,
                       setref);
      },
      [&](call &, kvsl_prob *p) { return load(p, ncols, nrows, nqobj, nqrows, nglobal, nsets); });
}

// The change and list calls below are recorded only, n entries each.
int KVSLchgobj(KVSLprob prob, int n, const int col[], const double val[]) {
  return run_plain("KVSLchgobj", prob, [&](args &a, kvsl_prob *) {
    a.i("n", n);
    a.iv("col", col, n);
    a.dv("val", val, n);
  });
}

// Sense 1 or -1; anything else is KVSL_ERR_BADARG.
int KVSLchgobjsense(KVSLprob prob, int sense) {
  return run(
      "KVSLchgobjsense", prob, true, [&](args &a, kvsl_prob *) { a.i("sense", sense); },
      [&](call &, kvsl_prob *p) {
        if (sense != 1 && sense != -1) return KVSL_ERR_BADARG;
        p->sense = sense;
        return 0;
      });
}

int KVSLchgbounds(KVSLprob prob, int n, const int col[], const char bndtype[],
                  const double val[]) {
  return run_plain("KVSLchgbounds", prob, [&](args &a, kvsl_prob *) {
    a.i("n", n);
    a.iv("col", col, n);
    a.cv("bndtype", bndtype, n);
    a.dv("val", val, n);
  });
}

int KVSLchgglblimit(KVSLprob prob, int n, const int col[], const double limit[]) {
  return run_plain("KVSLchgglblimit", prob, [&](args &a, kvsl_prob *) {
    a.i("n", n);
    a.iv("col", col, n);
    a.dv("limit", limit, n);
  });
}

int KVSLloadmodelcuts(KVSLprob prob, int n, const int row[]) {
  return run_plain("KVSLloadmodelcuts", prob, [&](args &a, kvsl_prob *) {
    a.i("n", n);
    a.iv("row", row, n);
  });
}

int KVSLsetindicators(KVSLprob prob, int n, const int row[], const int col[], const int flag[]) {
  return run_plain("KVSLsetindicators", prob, [&](args &a, kvsl_prob *) {
    a.i("n", n);
    a.iv("row", row, n);
    a.iv("col", col, n);
    a.iv("flag", flag, n);
  });
}

int KVSLloaddelayedrows(KVSLprob prob, int n, const int row[]) {
  return run_plain("KVSLloaddelayedrows", prob, [&](args &a, kvsl_prob *) {
    a.i("n", n);
    a.iv("row", row, n);
  });
}

// names is recorded as the last - first + 1 names it holds, each followed
// by its zero byte.
int KVSLaddnames(KVSLprob prob, int type, const char names[], int first, int last) {
  return run_plain("KVSLaddnames", prob, [&](args &a, kvsl_prob *) {
    a.i("type", type);
    a.i("first", first);
    a.i("last", last);
    if (names == nullptr) return a.null("names");
    const char *end = names;
    for (int64_t k = 0; k < len(int64_t{last} - first + 1); ++k) end += std::strlen(end) + 1;
    a.cv("names", names, end - names);
  });
}

int KVSLloaddirs(KVSLprob prob, int n, const int obj[], const int prio[], const char dir[],
                 const double up[], const double down[]) {
  return run_plain("KVSLloaddirs", prob, [&](args &a, kvsl_prob *) {
    a.i("n", n);
    a.iv("obj", obj, n);
    a.iv("prio", prio, n);
    a.cv("dir", dir, n);
    a.dv("up", up, n);
    a.dv("down", down, n);
  });
}

// ---- Optimisation -------------------------------------------------------------

// Optimisation calls are recorded with their option letters.
int KVSLlpoptimize(KVSLprob prob, const char *flags) {
  return optimize("KVSLlpoptimize", prob, flags, 0);
}
int KVSLmipoptimize(KVSLprob prob, const char *flags) {
  return optimize("KVSLmipoptimize", prob, flags, 0);
}
// minim and maxim set the objective sense first.
int KVSLminim(KVSLprob prob, const char *flags) { return optimize("KVSLminim", prob, flags, 1); }
int KVSLmaxim(KVSLprob prob, const char *flags) { return optimize("KVSLmaxim", prob, flags, -1); }

// Recorded only.
int KVSLpostsolve(KVSLprob prob) {
  return run_plain("KVSLpostsolve", prob, [](args &, kvsl_prob *) {});
}

// Recorded only.
int KVSLinitglobal(KVSLprob prob) {
  return run_plain("KVSLinitglobal", prob, [](args &, kvsl_prob *) {});
}

// Recorded only.
int KVSLfixglobals(KVSLprob prob, int round) {
  return run_plain("KVSLfixglobals", prob, [&](args &a, kvsl_prob *) { a.i("round", round); });
}

// ---- Solutions ------------------------------------------------------------------

// Solution and ranging vectors are scripted, sized by the last load.
int KVSLgetlpsol(KVSLprob prob, double x[], double slack[], double dual[], double dj[]) {
  return run(
      "KVSLgetlpsol", prob, true,
      [&](args &a, kvsl_prob *) {
        a.out("x", x);
        a.out("slack", slack);
        a.out("dual", dual);
        a.out("dj", dj);
      },
      [&](call &, kvsl_prob *p) {
        fake::detail::put_doubles("KVSLgetlpsol", "x", x, cols_of(p));
        fake::detail::put_doubles("KVSLgetlpsol", "slack", slack, rows_of(p));
        fake::detail::put_doubles("KVSLgetlpsol", "dual", dual, rows_of(p));
        fake::detail::put_doubles("KVSLgetlpsol", "dj", dj, cols_of(p));
        return 0;
      });
}

int KVSLgetmipsol(KVSLprob prob, double x[], double slack[]) {
  return run(
      "KVSLgetmipsol", prob, true,
      [&](args &a, kvsl_prob *) {
        a.out("x", x);
        a.out("slack", slack);
      },
      [&](call &, kvsl_prob *p) {
        fake::detail::put_doubles("KVSLgetmipsol", "x", x, cols_of(p));
        fake::detail::put_doubles("KVSLgetmipsol", "slack", slack, rows_of(p));
        return 0;
      });
}

// Recorded only.
int KVSLrange(KVSLprob prob) { return run_plain("KVSLrange", prob, [](args &, kvsl_prob *) {}); }

int KVSLgetrowrange(KVSLprob prob, double upact[], double loact[], double uup[], double udn[]) {
  return run(
      "KVSLgetrowrange", prob, true,
      [&](args &a, kvsl_prob *) {
        a.out("upact", upact);
        a.out("loact", loact);
        a.out("uup", uup);
        a.out("udn", udn);
      },
      [&](call &, kvsl_prob *p) {
        fake::detail::put_doubles("KVSLgetrowrange", "upact", upact, rows_of(p));
        fake::detail::put_doubles("KVSLgetrowrange", "loact", loact, rows_of(p));
        fake::detail::put_doubles("KVSLgetrowrange", "uup", uup, rows_of(p));
        fake::detail::put_doubles("KVSLgetrowrange", "udn", udn, rows_of(p));
        return 0;
      });
}

int KVSLgetcolrange(KVSLprob prob, double upact[], double loact[], double uup[], double udn[],
                    double ucost[], double lcost[]) {
  return run(
      "KVSLgetcolrange", prob, true,
      [&](args &a, kvsl_prob *) {
        a.out("upact", upact);
        a.out("loact", loact);
        a.out("uup", uup);
        a.out("udn", udn);
        a.out("ucost", ucost);
        a.out("lcost", lcost);
      },
      [&](call &, kvsl_prob *p) {
        fake::detail::put_doubles("KVSLgetcolrange", "upact", upact, cols_of(p));
        fake::detail::put_doubles("KVSLgetcolrange", "loact", loact, cols_of(p));
        fake::detail::put_doubles("KVSLgetcolrange", "uup", uup, cols_of(p));
        fake::detail::put_doubles("KVSLgetcolrange", "udn", udn, cols_of(p));
        fake::detail::put_doubles("KVSLgetcolrange", "ucost", ucost, cols_of(p));
        fake::detail::put_doubles("KVSLgetcolrange", "lcost", lcost, cols_of(p));
        return 0;
      });
}

// Solution files are recorded only: nothing is written or read.
int KVSLwritesol(KVSLprob prob, const char *file, const char *flags) {
  return solution_file("KVSLwritesol", prob, file, flags);
}
int KVSLwriteprtsol(KVSLprob prob, const char *file, const char *flags) {
  return solution_file("KVSLwriteprtsol", prob, file, flags);
}
int KVSLwriteslxsol(KVSLprob prob, const char *file, const char *flags) {
  return solution_file("KVSLwriteslxsol", prob, file, flags);
}
int KVSLwritebinsol(KVSLprob prob, const char *file, const char *flags) {
  return solution_file("KVSLwritebinsol", prob, file, flags);
}
int KVSLreadbinsol(KVSLprob prob, const char *file, const char *flags) {
  return solution_file("KVSLreadbinsol", prob, file, flags);
}
int KVSLreadslxsol(KVSLprob prob, const char *file, const char *flags) {
  return solution_file("KVSLreadslxsol", prob, file, flags);
}

// ---- Bases and infeasible subsystems ------------------------------------------

// Statuses are scripted, sized by the last load.
int KVSLgetbasis(KVSLprob prob, int rowstat[], int colstat[]) {
  return run(
      "KVSLgetbasis", prob, true,
      [&](args &a, kvsl_prob *) {
        a.out("rowstat", rowstat);
        a.out("colstat", colstat);
      },
      [&](call &, kvsl_prob *p) {
        fake::detail::put_ints("KVSLgetbasis", "rowstat", rowstat, rows_of(p));
        fake::detail::put_ints("KVSLgetbasis", "colstat", colstat, cols_of(p));
        return 0;
      });
}

// Records nrows row and ncols column statuses of the last load.
int KVSLloadbasis(KVSLprob prob, const int rowstat[], const int colstat[]) {
  return run_plain("KVSLloadbasis", prob, [&](args &a, kvsl_prob *p) {
    a.iv("rowstat", rowstat, rows_of(p));
    a.iv("colstat", colstat, cols_of(p));
  });
}

// *count is scripted (0 unscripted).
int KVSLiisstatus(KVSLprob prob, int *count) {
  return run(
      "KVSLiisstatus", prob, true, [&](args &a, kvsl_prob *) { a.out("count", count); },
      [&](call &, kvsl_prob *) {
        fake::detail::put_out("KVSLiisstatus", "count", count);
        return 0;
      });
}

// Recorded only.
int KVSLiisall(KVSLprob prob) { return run_plain("KVSLiisall", prob, [](args &, kvsl_prob *) {}); }

// *status is scripted.
int KVSLiisfirst(KVSLprob prob, int mode, int *status) {
  return run(
      "KVSLiisfirst", prob, true,
      [&](args &a, kvsl_prob *) {
        a.i("mode", mode);
        a.out("status", status);
      },
      [&](call &, kvsl_prob *) {
        fake::detail::put_out("KVSLiisfirst", "status", status);
        return 0;
      });
}

// *status is scripted.
int KVSLiisnext(KVSLprob prob, int *status) {
  return run(
      "KVSLiisnext", prob, true, [&](args &a, kvsl_prob *) { a.out("status", status); },
      [&](call &, kvsl_prob *) {
        fake::detail::put_out("KVSLiisnext", "status", status);
        return 0;
      });
}

// The arrays have the scripted sizes *nrows and *ncols.
int KVSLgetiisdata(KVSLprob prob, int num, int *nrows, int *ncols, int rowind[], int colind[],
                   char rowtype[]) {
  return run(
      "KVSLgetiisdata", prob, true,
      [&](args &a, kvsl_prob *) {
        a.i("num", num);
        a.out("nrows", nrows);
        a.out("ncols", ncols);
        a.out("rowind", rowind);
        a.out("colind", colind);
        a.out("rowtype", rowtype);
      },
      [&](call &, kvsl_prob *) {
        int nr = fake::detail::scripted_out("KVSLgetiisdata", "nrows");
        int nc = fake::detail::scripted_out("KVSLgetiisdata", "ncols");
        if (nrows != nullptr) *nrows = nr;
        if (ncols != nullptr) *ncols = nc;
        fake::detail::put_ints("KVSLgetiisdata", "rowind", rowind, nr);
        fake::detail::put_ints("KVSLgetiisdata", "colind", colind, nc);
        fake::detail::put_chars("KVSLgetiisdata", "rowtype", rowtype, nr);
        return 0;
      });
}

// ---- MIP solutions and cuts -----------------------------------------------------

// Records the n values and columns.
int KVSLaddmipsol(KVSLprob prob, int n, const double val[], const int col[], const char *name) {
  return run_plain("KVSLaddmipsol", prob, [&](args &a, kvsl_prob *) {
    a.i("n", n);
    a.dv("val", val, n);
    a.iv("col", col, n);
    a.s("name", name);
  });
}

// Records ncols values of the last load; *status is scripted.
int KVSLloadmipsol(KVSLprob prob, const double x[], int *status) {
  return run(
      "KVSLloadmipsol", prob, true,
      [&](args &a, kvsl_prob *p) {
        a.dv("x", x, cols_of(p));
        a.out("status", status);
      },
      [&](call &, kvsl_prob *) {
        fake::detail::put_out("KVSLloadmipsol", "status", status);
        return 0;
      });
}

// Records ncuts cuts and their start[ncuts] coefficients.
int KVSLaddcuts(KVSLprob prob, int ncuts, const int cuttype[], const char rowtype[],
                const double rhs[], const int64_t start[], const int col[], const double val[]) {
  return run_plain("KVSLaddcuts", prob, [&](args &a, kvsl_prob *) {
    a.i("ncuts", ncuts);
    a.iv("cuttype", cuttype, ncuts);
    a.cv("rowtype", rowtype, ncuts);
    a.dv("rhs", rhs, ncuts);
    a.iv("start", start, len(ncuts) + 1);
    int64_t nels = start != nullptr ? len(start[len(ncuts)]) : 0;
    a.iv("col", col, nels);
    a.dv("val", val, nels);
  });
}

// *ncuts is scripted; size cut handles are written (scripted integers).
int KVSLgetcutlist(KVSLprob prob, int cuttype, int interp, int *ncuts, int size,
                   KVSLcut cuts[]) {
  return run(
      "KVSLgetcutlist", prob, true,
      [&](args &a, kvsl_prob *) {
        a.i("cuttype", cuttype);
        a.i("interp", interp);
        a.i("size", size);
        a.out("ncuts", ncuts);
        a.out("cuts", cuts);
      },
      [&](call &, kvsl_prob *) {
        fake::detail::put_out("KVSLgetcutlist", "ncuts", ncuts);
        fake::detail::put_cuts("KVSLgetcutlist", "cuts", cuts, size);
        return 0;
      });
}

// The cut handles are recorded as integers.  When size is smaller than the
// scripted start[ncuts] only start is written, as the engine does.
int KVSLgetcpcuts(KVSLprob prob, const KVSLcut cuts[], int ncuts, int size, int cuttype[],
                  char rowtype[], int64_t start[], int col[], double val[], double rhs[]) {
  return run(
      "KVSLgetcpcuts", prob, true,
      [&](args &a, kvsl_prob *) {
        a.cuts("cuts", cuts, ncuts);
        a.i("ncuts", ncuts);
        a.i("size", size);
        a.out("cuttype", cuttype);
        a.out("rowtype", rowtype);
        a.out("start", start);
        a.out("col", col);
        a.out("val", val);
        a.out("rhs", rhs);
      },
      [&](call &, kvsl_prob *) {
        const char *fn = "KVSLgetcpcuts";
        fake::detail::put_int64s(fn, "start", start, len(ncuts) + 1);
        if (size < fake::detail::scripted_int_at(fn, "start", len(ncuts))) return 0;
        fake::detail::put_ints(fn, "cuttype", cuttype, ncuts);
        fake::detail::put_chars(fn, "rowtype", rowtype, ncuts);
        fake::detail::put_ints(fn, "col", col, size);
        fake::detail::put_doubles(fn, "val", val, size);
        fake::detail::put_doubles(fn, "rhs", rhs, ncuts);
        return 0;
      });
}

}  // extern "C"
