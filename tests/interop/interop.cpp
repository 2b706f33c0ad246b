/*
 * interop.cpp -- reading written files with the independent readers and
 * solving what they read.
 */
#include "interop/interop.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include <fstream>
#include <sstream>

#include "ClpSimplex.hpp"
#include "CoinLpIO.hpp"
#include "CoinMpsIO.hpp"
#include "CoinPackedMatrix.hpp"

namespace interop {

namespace {

double norm(double v) {
  if (v >= inf) return inf;
  if (v <= -inf) return -inf;
  return v;
}

// Fill from any of COIN-OR's readers (same accessors).
template <class Reader>
void fill(const Reader &r, flat_model &m, const char *sense) {
  const int ncols = r.getNumCols(), nrows = r.getNumRows();
  const double *lb = r.getColLower(), *ub = r.getColUpper(), *obj = r.getObjCoefficients();
  const double *rlo = r.getRowLower(), *rup = r.getRowUpper();
  for (int j = 0; j < ncols; ++j) {
    column c;
    c.lb = norm(lb[j]);
    c.ub = norm(ub[j]);
    c.obj = obj[j];
    c.integer = r.isInteger(j);
    m.colnames.push_back(r.columnName(j));
    m.cols[r.columnName(j)] = c;
  }
  std::vector<bool> keep(static_cast<size_t>(nrows));
  for (int i = 0; i < nrows; ++i) {
    keep[static_cast<size_t>(i)] = sense[i] != 'N';
    if (!keep[static_cast<size_t>(i)]) continue;
    m.rownames.push_back(r.rowName(i));
    m.rows[r.rowName(i)] = row{norm(rlo[i]), norm(rup[i])};
  }
  const CoinPackedMatrix *a = r.getMatrixByCol();
  for (int j = 0; j < ncols; ++j)
    for (CoinBigIndex k = a->getVectorStarts()[j];
         k < a->getVectorStarts()[j] + a->getVectorLengths()[j]; ++k) {
      const int i = a->getIndices()[k];
      if (keep[static_cast<size_t>(i)] && a->getElements()[k] != 0)
        m.entries[{r.rowName(i), r.columnName(j)}] += a->getElements()[k];
    }
}

}  // namespace

bool read_mps(const std::string &file, flat_model &m, std::string &error) {
  CoinMpsIO r;
  r.messageHandler()->setLogLevel(0);
  r.setInfinity(1e30);
  if (r.readMps(file.c_str(), "") != 0) {
    error = "CoinMpsIO cannot read " + file;
    return false;
  }
  fill(r, m, r.getRowSense());
  m.offset = -r.objectiveOffset();   // an objective-row rhs r: c'x - r
  return true;
}

bool read_lp(const std::string &file, flat_model &m, std::string &error) {
  try {
    CoinLpIO r;
    r.messageHandler()->setLogLevel(0);
    r.readLp(file.c_str());
    fill(r, m, r.getRowSense());
    m.offset = r.objectiveOffset();
    // A maximisation comes back as the minimisation of the negated
    // objective: turn it back.
    if (r.wasMaximization()) {
      m.maximise = true;
      for (auto &[name, c] : m.cols) c.obj = -c.obj;
      m.offset = -m.offset;
    }
  } catch (const CoinError &e) {
    error = "CoinLpIO cannot read " + file + ": " + e.message();
    return false;
  }
  return true;
}

bool close(double a, double b, double rel) {
  if (a == b) return true;
  return fabs(a - b) <= rel * std::max(1.0, std::max(fabs(a), fabs(b)));
}

std::vector<std::string> compare(const flat_model &ref, const flat_model &got, double tol) {
  std::vector<std::string> diff;
  auto say = [&](const std::string &s) {
    if (diff.size() < 20) diff.push_back(s);
  };
  auto num = [](double v) {
    char b[40];
    snprintf(b, sizeof b, "%.17g", v);
    return std::string(b);
  };
  std::set<std::string> used_cols, used_rows;
  for (const auto &[key, v] : ref.entries) {
    used_rows.insert(key.first);
    used_cols.insert(key.second);
  }
  for (const auto &[name, c] : ref.cols)
    if (c.obj != 0) used_cols.insert(name);
  for (const auto &[name, c] : ref.cols) {
    auto it = got.cols.find(name);
    if (it == got.cols.end()) {
      if (used_cols.count(name) != 0) say("column " + name + " missing");
      continue;
    }
    const column &g = it->second;
    double gub = g.ub, glb = g.lb;
    if (c.integer && gub >= 2147483647.0) gub = inf;
    if (c.integer && glb <= -2147483647.0) glb = -inf;
    if (!close(c.lb, glb, tol)) say("column " + name + " lb " + num(c.lb) + " read " + num(glb));
    if (!close(c.ub, gub, tol)) say("column " + name + " ub " + num(c.ub) + " read " + num(gub));
    if (!close(c.obj, g.obj, tol))
      say("column " + name + " cost " + num(c.obj) + " read " + num(g.obj));
    if (c.integer != g.integer) say("column " + name + " integrality differs");
  }
  for (const auto &[name, g] : got.cols)
    if (ref.cols.count(name) == 0) say("extra column " + name);
  for (const auto &[name, r] : ref.rows) {
    auto it = got.rows.find(name);
    if (it == got.rows.end()) {
      if (used_rows.count(name) != 0) say("row " + name + " missing");
      continue;
    }
    if (!close(r.lo, it->second.lo, tol))
      say("row " + name + " lower " + num(r.lo) + " read " + num(it->second.lo));
    if (!close(r.hi, it->second.hi, tol))
      say("row " + name + " upper " + num(r.hi) + " read " + num(it->second.hi));
  }
  for (const auto &[name, r] : got.rows)
    if (ref.rows.count(name) == 0) say("extra row " + name);
  for (const auto &[key, v] : ref.entries) {
    auto it = got.entries.find(key);
    if (it == got.entries.end() || !close(v, it->second, tol))
      say("entry " + key.first + "," + key.second + " " + num(v) + " read " +
          (it == got.entries.end() ? std::string("none") : num(it->second)));
  }
  for (const auto &[key, v] : got.entries)
    if (ref.entries.count(key) == 0) say("extra entry " + key.first + "," + key.second);
  if (!close(ref.offset, got.offset, tol))
    say("objective constant " + num(ref.offset) + " read " + num(got.offset));
  return diff;
}

bool clp_optimum(const flat_model &m, double &value) {
  const int n = static_cast<int>(m.colnames.size()), nr = static_cast<int>(m.rownames.size());
  std::map<std::string, int> rowidx;
  for (int i = 0; i < nr; ++i) rowidx[m.rownames[static_cast<size_t>(i)]] = i;
  std::map<std::string, int> colidx;
  for (int j = 0; j < n; ++j) colidx[m.colnames[static_cast<size_t>(j)]] = j;
  std::vector<int> ri, ci;
  std::vector<double> v;
  for (const auto &[key, x] : m.entries) {
    ri.push_back(rowidx.at(key.first));
    ci.push_back(colidx.at(key.second));
    v.push_back(x);
  }
  CoinPackedMatrix a(true, ri.data(), ci.data(), v.data(), static_cast<CoinBigIndex>(v.size()));
  a.setDimensions(nr, n);
  std::vector<double> lb(static_cast<size_t>(n)), ub(static_cast<size_t>(n)), obj(static_cast<size_t>(n));
  std::vector<double> rlo(static_cast<size_t>(nr)), rup(static_cast<size_t>(nr));
  auto big = [](double x) { return x >= inf ? COIN_DBL_MAX : x <= -inf ? -COIN_DBL_MAX : x; };
  for (int j = 0; j < n; ++j) {
    const column &c = m.cols.at(m.colnames[static_cast<size_t>(j)]);
    lb[static_cast<size_t>(j)] = big(c.lb);
    ub[static_cast<size_t>(j)] = big(c.ub);
    obj[static_cast<size_t>(j)] = c.obj;
  }
  for (int i = 0; i < nr; ++i) {
    const row &r = m.rows.at(m.rownames[static_cast<size_t>(i)]);
    rlo[static_cast<size_t>(i)] = big(r.lo);
    rup[static_cast<size_t>(i)] = big(r.hi);
  }
  ClpSimplex clp;
  clp.setLogLevel(0);
  clp.loadProblem(a, lb.data(), ub.data(), obj.data(), rlo.data(), rup.data());
  clp.setOptimizationDirection(m.maximise ? -1 : 1);
  clp.initialSolve();
  if (!clp.isProvenOptimal()) return false;
  const double *x = clp.primalColumnSolution();
  double z = 0;
  for (int j = 0; j < n; ++j) z += obj[static_cast<size_t>(j)] * x[j];
  value = z;
  return true;
}

bool glpsol_objective(const std::string &option, const std::string &file, bool mip,
                      int seconds, const std::string &out, double &value, std::string &error) {
  std::string cmd = "glpsol " + option + " '" + file + "' " + (mip ? "" : "--nomip ") +
                    "--tmlim " + std::to_string(seconds) + " -o '" + out + "' > '" + out +
                    ".log' 2>&1";
  const int rc = system(cmd.c_str());
  std::ifstream in(out);
  std::string line;
  while (std::getline(in, line)) {
    if (line.rfind("Objective:", 0) != 0) continue;
    const size_t eq = line.find(" = ");
    if (eq == std::string::npos) break;
    value = strtod(line.c_str() + eq + 3, nullptr);
    std::ifstream st(out);
    std::string s;
    while (std::getline(st, s))
      if (s.rfind("Status:", 0) == 0) {
        if (s.find("OPTIMAL") == std::string::npos || s.find("NON-OPTIMAL") != std::string::npos) {
          error = "glpsol status: " + s;
          return false;
        }
        return true;
      }
    return true;
  }
  std::ifstream log(out + ".log");
  std::stringstream all;
  all << log.rdbuf();
  error = "glpsol (" + std::to_string(rc) + ") gave no objective: " + all.str().substr(0, 600);
  return false;
}

}  // namespace interop
