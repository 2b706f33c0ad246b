/*
 * interop.h -- test support for the interoperability suite: models read by
 * independent readers (COIN-OR's CoinMpsIO and CoinLpIO, GLPK's glpsol),
 * compared by name and solved by Clp.
 */
#ifndef KVTL_TESTS_INTEROP_INTEROP_H
#define KVTL_TESTS_INTEROP_INTEROP_H

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace interop {

constexpr double inf = 1e20;

struct column {
  double lb = 0, ub = inf, obj = 0;
  bool integer = false;
};
struct row {
  double lo = -inf, hi = inf;
};

// A model as a reader sees it, keyed by names.  Bounds at or beyond 1e20
// are infinite.  The objective is c'x + offset.
struct flat_model {
  std::vector<std::string> colnames;   // in the reader's order
  std::vector<std::string> rownames;   // constraints only (free rows dropped)
  std::map<std::string, column> cols;
  std::map<std::string, row> rows;
  std::map<std::pair<std::string, std::string>, double> entries;   // (row, column)
  double offset = 0;
  bool maximise = false;
};

// Read an MPS file (gzip allowed) / an LP file; false with the reason.
bool read_mps(const std::string &file, flat_model &m, std::string &error);
bool read_lp(const std::string &file, flat_model &m, std::string &error);

// Differences between a reference and a written model (empty: none).
// Integer upper bounds at or above 2147483647 count as infinite;
// reference rows and columns without any coefficient may be missing.
std::vector<std::string> compare(const flat_model &ref, const flat_model &got, double tol);

// Optimal c'x (LP relaxation for integer columns) by Clp; false when Clp
// finds no optimum.
bool clp_optimum(const flat_model &m, double &value);

// glpsol on a file ("--mps" or "--lp"), LP relaxation (--nomip) or with
// its MIP search under a time limit; the objective it reports.  Its report
// and log go to `out` and `out`.log (never beside a source file).
bool glpsol_objective(const std::string &option, const std::string &file, bool mip,
                      int seconds, const std::string &out, double &value, std::string &error);

bool close(double a, double b, double rel);

}  // namespace interop

#endif
