/*
 * interop_test.cpp -- the MPS and LP files the library writes for the
 * shared reference models, read by independent readers (CoinMpsIO,
 * CoinLpIO, glpsol), compared with the original model and solved to the
 * same optimum.
 */
#include <gtest/gtest.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "ClpSimplex.hpp"
#include "CoinMpsIO.hpp"
#include "interop/interop.h"
#include "kvtl.h"

namespace {

using namespace interop;

constexpr double optimum_tol = 1e-6;

struct reference {
  std::string name;
  double optimum;       // published LP optimum (netlib) or MIP optimum (MIPLIB)
  double alt_optimum;   // second published LP value, or NAN
};

// The models of a data folder with their published values; a missing
// folder or list fails the test rather than giving zero cases.
std::vector<reference> models(const std::string &folder) {
  std::vector<reference> out;
  std::ifstream in(std::string(KVTL_DATA_DIR) + "/" + folder + "/optima.tsv");
  std::string line;
  std::getline(in, line);   // header
  while (std::getline(in, line)) {
    std::istringstream f(line);
    std::vector<std::string> fields;
    std::string field;
    while (std::getline(f, field, '\t')) fields.push_back(field);
    if (fields.size() < 5) continue;
    reference r{fields[0], strtod(fields[4].c_str(), nullptr), NAN};
    if (fields.size() > 5 && !fields[5].empty()) r.alt_optimum = strtod(fields[5].c_str(), nullptr);
    out.push_back(r);
  }
  return out;
}

class Interop : public ::testing::Test {
 protected:
  void SetUp() override {
    mdlseterrctrl(0);
    char tmpl[] = "/tmp/kvtl_interop_XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    dir = tmpl;
  }
  void TearDown() override {
    if (getenv("KVTL_INTEROP_KEEP") == nullptr) std::filesystem::remove_all(dir);
  }

  // State a model through the library (an integer column within [0,1] is
  // a binary) and write it as MPS and LP with the real-number format `fmt`
  // to dir/base.
  void write_model(const flat_model &m, const std::string &base, const char *fmt) {
    MDLprob p = mdlnewprob(base.c_str());
    ASSERT_NE(p, nullptr);
    mdlsetmsglevel_prob(p, 1);
    ASSERT_EQ(mdlsetrealfmt_prob(p, fmt), 0);
    std::map<std::string, MDLvar> vars;
    for (const std::string &name : m.colnames) {
      const column &c = m.cols.at(name);
      const int type = !c.integer ? MDL_CONTINUOUS
                       : c.lb >= 0 && c.ub <= 1 ? MDL_BINARY
                                                : MDL_INTEGER;
      vars[name] = mdlnewvar_prob(p, name.c_str(), type, c.lb, c.ub);
      ASSERT_NE(vars[name], nullptr) << name;
    }
    std::map<std::string, MDLctr> rows;
    for (const std::string &name : m.rownames) {
      const row &r = m.rows.at(name);
      const int type = r.lo == r.hi ? MDL_EQ : r.hi < inf ? MDL_LEQ : MDL_GEQ;
      MDLctr c = mdlnewctr_prob(p, name.c_str(), type);
      ASSERT_NE(c, nullptr) << name;
      if (r.lo > -inf && r.hi < inf && r.lo != r.hi)
        ASSERT_EQ(mdlsetrange(c, r.lo, r.hi), 0);
      else if (type != MDL_GEQ && r.hi != 0)
        mdladdterm(c, nullptr, r.hi);
      else if (type == MDL_GEQ && r.lo != 0)
        mdladdterm(c, nullptr, r.lo);
      rows[name] = c;
    }
    for (const auto &[key, v] : m.entries) ASSERT_EQ(mdladdterm(rows.at(key.first), vars.at(key.second), v), 0);
    MDLctr obj = mdlnewctr_prob(p, "obj", MDL_NONBINDING);
    for (const std::string &name : m.colnames)
      if (m.cols.at(name).obj != 0) mdladdterm(obj, vars.at(name), m.cols.at(name).obj);
    if (m.offset != 0) mdladdterm(obj, nullptr, -m.offset);   // the constant is -rhs
    mdlsetobj_prob(p, obj);
    const std::string file = dir + "/" + base;
    EXPECT_EQ(mdlexportprob_prob(p, MDL_FILE_MPS, file.c_str()), 0);
    EXPECT_EQ(mdlexportprob_prob(p, MDL_FILE_LP, file.c_str()), 0);
    mdldelprob_prob(p);
  }

  // The model with names every LP reader takes: the format writes names
  // as the model has them, and MPS names (leading digits, periods, row
  // names equal to column names) are often not valid LP names.
  static flat_model lp_named(const flat_model &m) {
    flat_model out;
    std::map<std::string, std::string> col, rw;
    for (size_t j = 0; j < m.colnames.size(); ++j) {
      col[m.colnames[j]] = "C" + std::to_string(j);
      out.colnames.push_back(col[m.colnames[j]]);
      out.cols[col[m.colnames[j]]] = m.cols.at(m.colnames[j]);
    }
    for (size_t i = 0; i < m.rownames.size(); ++i) {
      rw[m.rownames[i]] = "R" + std::to_string(i);
      out.rownames.push_back(rw[m.rownames[i]]);
      out.rows[rw[m.rownames[i]]] = m.rows.at(m.rownames[i]);
    }
    for (const auto &[key, v] : m.entries) out.entries[{rw.at(key.first), col.at(key.second)}] = v;
    out.offset = m.offset;
    return out;
  }

  // glpsol refuses a constraint without variables ("r: <= 0", which the
  // format writes for an empty row) and a constant in the objective: it
  // gets a copy without such lines, each of which must hold at 0 (else the
  // model would be infeasible), and without the objective's constant term
  // `constant`, which must end the objective.
  static void for_glpsol(const std::string &from, const std::string &to, double constant) {
    std::ifstream in(from);
    std::ofstream out(to);
    std::string line;
    char tail[64];
    snprintf(tail, sizeof tail, " %c %.17g", constant < 0 ? '-' : '+', fabs(constant));
    bool constant_seen = constant == 0, in_objective = false;
    while (std::getline(in, line)) {
      if (line == "Minimize" || line == "Maximize") in_objective = true;
      if (line.empty()) in_objective = false;
      if (in_objective && !constant_seen && line.ends_with(tail)) {
        line.resize(line.size() - strlen(tail));
        constant_seen = true;
      }
      char name[256], rel[4];
      double rhs = 0;
      int used = 0;
      if (sscanf(line.c_str(), "%255[^: ]: %3s %lf%n", name, rel, &rhs, &used) == 3 &&
          used == static_cast<int>(line.size()) &&
          (strcmp(rel, "<=") == 0 || strcmp(rel, ">=") == 0 || strcmp(rel, "=") == 0)) {
        const bool holds = rel[0] == '<' ? 0 <= rhs : rel[0] == '>' ? 0 >= rhs : rhs == 0;
        EXPECT_TRUE(holds) << line;
        continue;
      }
      out << line << '\n';
    }
    EXPECT_TRUE(constant_seen) << "objective constant" << tail << " not found";
  }

  // CoinMpsIO stops at BOUNDS when no RHS heading came before it; the
  // format writes RHS only when some row has one, so the reader gets a copy
  // with the empty heading.
  static std::string with_rhs_heading(const std::string &file) {
    std::ifstream in(file);
    std::stringstream all;
    all << in.rdbuf();
    std::string text = all.str();
    if (text.find("\nRHS\n") != std::string::npos) return file;
    const size_t at = text.find("\nBOUNDS\n");
    if (at != std::string::npos) text.insert(at + 1, "RHS\n");
    std::ofstream out(file + ".rhs.mps");
    out << text;
    return file + ".rhs.mps";
  }

  // Readers know no "Ranges" section: a copy of the LP file without it,
  // and the lower and upper limits it gives, by row name.
  static std::map<std::string, std::pair<double, double>> split_ranges(
      const std::string &lp, const std::string &stripped) {
    std::ifstream in(lp);
    std::ofstream out(stripped);
    std::map<std::string, std::pair<double, double>> limits;
    std::string line;
    bool in_ranges = false;
    while (std::getline(in, line)) {
      if (line == "Ranges") {
        in_ranges = true;
        continue;
      }
      if (in_ranges && line.empty()) continue;
      if (in_ranges && line != "End") {
        char name[256], lo_text[64], up_text[64];
        if (sscanf(line.c_str(), "%63s <= %255s <= %63s", lo_text, name, up_text) == 3)
          limits[name] = {strtod(lo_text, nullptr), strtod(up_text, nullptr)};
        else
          ADD_FAILURE() << "not a range line: " << line;
        continue;
      }
      in_ranges = false;
      out << line << '\n';
    }
    return limits;
  }

  static void without_empty_lines(const std::string &from, const std::string &to) {
    std::ifstream in(from);
    std::ofstream out(to);
    std::string line;
    while (std::getline(in, line))
      if (!line.empty()) out << line << '\n';
  }

  // The whole round trip of one model; `lp_only` models are LPs whose
  // optimum is published, the others MIPs compared through their LP
  // relaxation (their MIP optimum is the slow suite's).
  void round_trip(const std::string &folder, const reference &r, bool is_lp) {
    SCOPED_TRACE(folder + "/" + r.name);
    const std::string source = std::string(KVTL_DATA_DIR) + "/" + folder + "/" + r.name + ".mps.gz";
    flat_model ref;
    std::string error;
    ASSERT_TRUE(read_mps(source, ref, error)) << error;
    double ref_opt = 0;
    ASSERT_TRUE(clp_optimum(ref, ref_opt));
    if (is_lp)
      EXPECT_TRUE(close(ref_opt, r.optimum, optimum_tol) ||
                  (!isnan(r.alt_optimum) && close(ref_opt, r.alt_optimum, optimum_tol)))
          << ref_opt << " published " << r.optimum;

    write_model(ref, r.name, "%.17g");
    const std::string base = dir + "/" + r.name;

    // MPS: CoinMpsIO reads the same model and Clp finds the same optimum.
    flat_model mps;
    ASSERT_TRUE(read_mps(with_rhs_heading(base + ".mps"), mps, error)) << error;
    const auto diff = compare(ref, mps, 1e-15);
    EXPECT_TRUE(diff.empty()) << "MPS: " << diff.front();
    double opt = 0;
    ASSERT_TRUE(clp_optimum(mps, opt));
    EXPECT_TRUE(close(opt, ref_opt, optimum_tol)) << "MPS by Clp " << opt << " vs " << ref_opt;

    // MPS: glpsol finds the optimum it finds for the original file.  Its
    // reader refuses the empty lines between sections (it gets the file
    // without them) and, in fixed layout, numbers wider than 12 columns:
    // the full-precision file is read as free MPS, the default-format file
    // below in fixed layout.
    double g_ref = 0, g_mps = 0;
    ASSERT_TRUE(glpsol_objective("--mps", source, false, 60, glpsol_out(), g_ref, error)) << error;
    without_empty_lines(base + ".mps", base + ".glpk.mps");
    ASSERT_TRUE(glpsol_objective("--freemps", base + ".glpk.mps", false, 60, glpsol_out(), g_mps, error)) << error;
    EXPECT_TRUE(close(g_mps, g_ref, optimum_tol)) << "MPS by glpsol " << g_mps << " vs " << g_ref;

    // LP: the Ranges section is the format's own; readers get the file
    // without it and its lower limits are checked and applied here.
    const flat_model named = lp_named(ref);
    write_model(named, r.name + "_lp", "%.17g");
    const std::string lpbase = base + "_lp";
    const auto lower = split_ranges(lpbase + ".lp", lpbase + ".noranges.lp");
    flat_model lp;
    ASSERT_TRUE(read_lp(lpbase + ".noranges.lp", lp, error)) << error;
    flat_model relaxed = named;   // the model the file states without its ranges
    for (auto &[name, row] : relaxed.rows)
      if (row.lo > -inf && row.hi < inf && row.lo != row.hi) {
        EXPECT_EQ(lower.count(name), 1u) << "no range line for " << name;
        if (lower.count(name) != 0) {
          EXPECT_TRUE(close(lower.at(name).first, row.lo, 1e-15)) << name;
          EXPECT_TRUE(close(lower.at(name).second, row.hi, 1e-15)) << name;
        }
        row.lo = -inf;
      }
    const auto lpdiff = compare(relaxed, lp, 1e-15);
    EXPECT_TRUE(lpdiff.empty()) << "LP: " << lpdiff.front();
    for (const auto &[name, limits] : lower) lp.rows[name].lo = limits.first;
    ASSERT_TRUE(clp_optimum(lp, opt));
    EXPECT_TRUE(close(opt, ref_opt, optimum_tol)) << "LP by Clp " << opt << " vs " << ref_opt;

    // LP: glpsol reads the file without ranges (and without objective
    // constant): the relaxed model's optimum.
    double relaxed_opt = 0, g_lp = 0;
    ASSERT_TRUE(clp_optimum(relaxed, relaxed_opt));
    for_glpsol(lpbase + ".noranges.lp", lpbase + ".glpk.lp", ref.offset);
    ASSERT_TRUE(glpsol_objective("--lp", lpbase + ".glpk.lp", false, 60, glpsol_out(), g_lp, error)) << error;
    EXPECT_TRUE(close(g_lp, relaxed_opt, optimum_tol))
        << "LP by glpsol " << g_lp << " vs " << relaxed_opt;

    // The default "%g" format keeps six digits: the files still read as
    // the same model within that precision.
    write_model(ref, r.name + "_g", "%g");
    write_model(named, r.name + "_glp", "%g");
    flat_model mps_g, lp_g;
    ASSERT_TRUE(read_mps(with_rhs_heading(base + "_g.mps"), mps_g, error)) << error;
    const auto gdiff = compare(ref, mps_g, 5e-6);
    EXPECT_TRUE(gdiff.empty()) << "MPS %g: " << gdiff.front();
    split_ranges(base + "_glp.lp", base + "_glp.noranges.lp");
    ASSERT_TRUE(read_lp(base + "_glp.noranges.lp", lp_g, error)) << error;
    // Every field in its fixed columns: glpsol reads it in fixed layout.
    double g_fixed = 0;
    without_empty_lines(base + "_g.mps", base + "_g.glpk.mps");
    EXPECT_TRUE(glpsol_objective("--mps", base + "_g.glpk.mps", false, 60, glpsol_out(), g_fixed, error)) << error;
  }

  // A fresh report file for glpsol in the test's directory.
  std::string glpsol_out() { return dir + "/glpsol" + std::to_string(++glpsol_runs) + ".out"; }

  std::string dir;
  int glpsol_runs = 0;
};

// The examples write their models when given a file base.  Their optima
// are known independently (each example states how): transport 345,
// production 36 (maximised), knapsack 42 (maximised, binaries), portfolio
// 1.4/59 (a convex QP), workshop 1850 (maximised).  The version example
// states no model.
struct example {
  const char *name;
  bool maximise;
  bool integer;
  bool quadratic;
  double optimum;
};

// Read an MPS file with a QUADOBJ section and solve its QP with Clp; the
// objective c'x + x'Qx/2 at the optimum.
// CoinMpsIO needs an objective row and reads quadratic sections only after
// BOUNDS, where the format has them before: it gets a copy with an empty
// objective row and the QUADOBJ section moved to the end.
bool clp_quadratic_optimum(const std::string &written, double &value, std::string &error) {
  const std::string file = written + ".coin.mps";
  {
    std::ifstream in(written);
    std::ofstream out(file);
    std::string line, quad;
    bool in_quad = false, has_n = false;
    std::vector<std::string> lines;
    while (std::getline(in, line)) lines.push_back(line);
    for (const std::string &l : lines) has_n = has_n || l.rfind(" N  ", 0) == 0;
    for (const std::string &l : lines) {
      if (l == "QUADOBJ") in_quad = true;
      else if (in_quad && !l.empty() && l[0] != ' ') in_quad = false;
      if (in_quad) {
        quad += l + "\n";
        continue;
      }
      if (l == "ENDATA") out << quad;
      out << l << "\n";
      if (l == "ROWS" && !has_n) out << " N  *OBJ*\n";
    }
  }
  CoinMpsIO r;
  r.messageHandler()->setLogLevel(0);
  if (r.readMps(file.c_str(), "") < 0) {
    error = "CoinMpsIO cannot read " + file;
    return false;
  }
  CoinBigIndex *start = nullptr;
  int *column = nullptr;
  double *element = nullptr;
  if (r.readQuadraticMps(nullptr, start, column, element, 2) != 0) {
    error = "CoinMpsIO cannot read the QUADOBJ section of " + file;
    return false;
  }
  const int n = r.getNumCols();
  ClpSimplex clp;
  clp.setLogLevel(0);
  clp.loadProblem(*r.getMatrixByCol(), r.getColLower(), r.getColUpper(), r.getObjCoefficients(),
                  r.getRowLower(), r.getRowUpper());
  clp.loadQuadraticObjective(n, start, column, element);
  clp.primal();
  const bool ok = clp.isProvenOptimal();
  value = clp.objectiveValue();
  delete[] start;
  delete[] column;
  delete[] element;
  if (!ok) error = "Clp finds no optimum of the QP";
  return ok;
}

TEST_F(Interop, Examples) {
  const example list[] = {{"transport", false, false, false, 345},
                          {"production", true, false, false, 36},
                          {"knapsack", true, true, false, 42},
                          {"portfolio", false, false, true, 1.4 / 59},
                          {"workshop", true, false, false, 1850}};
  for (const example &e : list) {
    SCOPED_TRACE(e.name);
    const std::string base = dir + "/" + e.name;
    const std::string cmd =
        std::string(KVTL_EXAMPLES_DIR) + "/" + e.name + " '" + base + "' > '" + base + ".out' 2>&1";
    ASSERT_EQ(system(cmd.c_str()), 0) << cmd;
    std::ifstream in(base + ".mps");
    std::stringstream text;
    text << in.rdbuf();
    // CoinMpsIO reads OBJSENSE without reporting it, glpsol not at all: the
    // sense is checked in the text and given to the solvers.
    EXPECT_EQ(text.str().find("\nOBJSENSE\n MAXIMIZE\n") != std::string::npos, e.maximise);
    std::string error;
    flat_model mps, lp;
    ASSERT_TRUE(read_mps(with_rhs_heading(base + ".mps"), mps, error)) << error;
    mps.maximise = e.maximise;
    const auto lower = split_ranges(base + ".lp", base + ".noranges.lp");
    if (e.quadratic) {
      // Neither LP reader takes quadratic terms, nor glpsol a QUADOBJ
      // section: CoinMpsIO reads the Hessian (stopping the section reading
      // there, so the BOUNDS that follow are not applied; the shares' upper
      // bound 1 does not bind) and Clp solves the QP.
      double optimum = 0;
      ASSERT_TRUE(clp_quadratic_optimum(base + ".mps", optimum, error)) << error;
      EXPECT_TRUE(close(optimum, e.optimum, optimum_tol)) << "QP by Clp " << optimum;
      continue;
    }
    ASSERT_TRUE(read_lp(base + ".noranges.lp", lp, error)) << error;
    lp.maximise = e.maximise;
    for (const auto &[name, limits] : lower) lp.rows[name].lo = limits.first;
    EXPECT_TRUE(compare(mps, lp, 1e-15).empty());
    double opt = 0;
    ASSERT_TRUE(clp_optimum(mps, opt));
    double relaxation = opt;
    if (!e.integer) EXPECT_TRUE(close(opt, e.optimum, optimum_tol)) << "MPS by Clp " << opt;
    ASSERT_TRUE(clp_optimum(lp, opt));
    EXPECT_TRUE(close(opt, relaxation, optimum_tol)) << "LP by Clp " << opt;
    // glpsol: the MPS file without empty lines and OBJSENSE, the sense as
    // an option; the LP file as above.  Integer models are searched.
    std::ofstream g(base + ".glpk.mps");
    std::string line;
    std::istringstream lines(text.str());
    while (std::getline(lines, line))
      if (!line.empty() && line != "OBJSENSE" && line != " MAXIMIZE") g << line << '\n';
    g.close();
    const std::string sense = e.maximise ? "--max --freemps" : "--freemps";
    double g_mps = 0, g_lp = 0;
    ASSERT_TRUE(glpsol_objective(sense, base + ".glpk.mps", e.integer, 60, glpsol_out(), g_mps, error)) << error;
    EXPECT_TRUE(close(g_mps, e.optimum, optimum_tol)) << "MPS by glpsol " << g_mps;
    for_glpsol(base + ".noranges.lp", base + ".glpk.lp", 0);
    ASSERT_TRUE(glpsol_objective("--lp", base + ".glpk.lp", e.integer, 60, glpsol_out(), g_lp, error)) << error;
    EXPECT_TRUE(close(g_lp, e.optimum, optimum_tol)) << "LP by glpsol " << g_lp;
  }
}

// Global entities beyond the readers.  CoinMpsIO reads SC bounds but no PI
// or SI bound, no INDICATORS section and no sets in the SETS form (its own
// set section has another layout and comes after BOUNDS); CoinLpIO and glpsol know
// none of the LP file's set lines, partial-integer, semi-continuous and
// indicator forms, and glpsol's MPS reader none of these sections.  The
// readers get copies without what they do not know, and what they read is
// checked: the sets, the semi-continuous column, bounds and rows.
TEST_F(Interop, GlobalEntitiesAsFarAsReadersGo) {
  MDLprob p = mdlnewprob("entities");
  ASSERT_NE(p, nullptr);
  mdlsetmsglevel_prob(p, 1);
  MDLvar x = mdlnewvar_prob(p, "x", MDL_CONTINUOUS, 0, 10);
  MDLvar y = mdlnewvar_prob(p, "y", MDL_CONTINUOUS, 0, 10);
  MDLvar s = mdlnewvar_prob(p, "s", MDL_SEMICONT, 0, 8);
  MDLvar r = mdlnewvar_prob(p, "r", MDL_SEMIINT, 0, 20);
  MDLvar q = mdlnewvar_prob(p, "q", MDL_PARTINT, 0, 50);
  MDLvar b = mdlnewvar_prob(p, "on", MDL_BINARY, 0, 1);   // glpsol takes "b" for a keyword
  mdlsetlim(s, 2);
  mdlsetlim(r, 3);
  mdlsetlim(q, 5);
  MDLctr c = mdlnewctr_prob(p, "c", MDL_LEQ);
  for (MDLvar v : {x, y, s, r, q, b}) mdladdterm(c, v, 1);
  mdladdterm(c, nullptr, 30);
  MDLctr ind = mdlnewctr_prob(p, "ind", MDL_GEQ);
  mdladdterm(ind, x, 1);
  mdladdterm(ind, nullptr, 4);
  ASSERT_EQ(mdlsetindicator(ind, 1, b), 0);
  MDLctr obj = mdlnewctr_prob(p, "obj", MDL_NONBINDING);
  for (MDLvar v : {x, y, s, r, q, b}) mdladdterm(obj, v, -1);
  mdlsetobj_prob(p, obj);
  MDLsos set = mdlnewsos_prob(p, "set", MDL_SOS2);
  mdladdsosel(set, x, 1);
  mdladdsosel(set, y, 2);
  mdladdsosel(set, s, 3);
  const std::string base = dir + "/entities";
  ASSERT_EQ(mdlexportprob_prob(p, MDL_FILE_MPS, base.c_str()), 0);
  ASSERT_EQ(mdlexportprob_prob(p, MDL_FILE_LP, base.c_str()), 0);
  mdldelprob_prob(p);

  // MPS for CoinMpsIO: without SETS, the PI and SI records and INDICATORS.
  {
    std::ifstream in(base + ".mps");
    std::ofstream out(base + ".coin.mps");
    std::string line;
    bool skip = false;
    while (std::getline(in, line)) {
      if (line == "INDICATORS" || line == "SETS") skip = true;
      else if (!line.empty() && line[0] != ' ') skip = false;
      if (skip || line.rfind(" PI ", 0) == 0 || line.rfind(" SI ", 0) == 0) continue;
      out << line << '\n';
    }
  }
  CoinMpsIO m;
  m.messageHandler()->setLogLevel(0);
  ASSERT_EQ(m.readMps((base + ".coin.mps").c_str(), ""), 0);
  const int js = m.columnIndex("s"), jq = m.columnIndex("q"), jb = m.columnIndex("on");
  ASSERT_GE(js, 0);
  // Semi-continuous, 0 or within [2, 8]: CoinMpsIO answers 2 or 3 (its
  // codes above 1 are the semi-continuous kinds), never 0 or 1.
  EXPECT_GE(m.isIntegerOrSemiContinuous(js), 2);
  EXPECT_EQ(m.getColLower()[js], 2);
  EXPECT_EQ(m.getColUpper()[js], 8);
  EXPECT_EQ(m.getColUpper()[jq], 50);   // the partial integer's continuous bounds
  EXPECT_TRUE(m.isInteger(jb));
  EXPECT_EQ(m.getColUpper()[jb], 1);
  const int ri = m.rowIndex("ind");
  ASSERT_GE(ri, 0);   // the indicator row, as a plain row
  EXPECT_EQ(m.getRowLower()[ri], 4);

  // LP for CoinLpIO and glpsol: without the set lines, the partial-integer
  // and semi-continuous sections and the indicator condition.
  {
    std::ifstream in(base + ".lp");
    std::ofstream out(base + ".plain.lp");
    std::string line;
    bool skip = false;
    while (std::getline(in, line)) {
      if (line == "\\Special Ordered Sets" || line == "Partial Integers" ||
          line == "Semi Continuous" || line == "Semi Integers")
        skip = true;
      else if (line.empty() || line == "Bounds" || line == "End")
        skip = false;
      if (skip) continue;
      const size_t arrow = line.find(" on=1 ->");
      if (arrow != std::string::npos) line.erase(arrow, 8);
      out << line << '\n';
    }
  }
  flat_model lp;
  std::string error;
  ASSERT_TRUE(read_lp(base + ".plain.lp", lp, error)) << error;
  EXPECT_EQ(lp.cols.at("s").ub, 8);
  EXPECT_EQ(lp.cols.at("q").ub, 50);
  EXPECT_TRUE(lp.cols.at("on").integer);
  EXPECT_EQ(lp.rows.at("ind").lo, 4);
  EXPECT_EQ(lp.rows.at("c").hi, 30);
  double g = 0, relaxed = 0;
  ASSERT_TRUE(clp_optimum(lp, relaxed));
  ASSERT_TRUE(glpsol_objective("--lp", base + ".plain.lp", false, 60, glpsol_out(), g, error)) << error;
  EXPECT_TRUE(close(g, relaxed, optimum_tol)) << g << " vs " << relaxed;
}

TEST_F(Interop, NetlibModels) {
  const auto list = models("netlib");
  ASSERT_EQ(list.size(), 32u);
  for (const auto &r : list) round_trip("netlib", r, true);
}

TEST_F(Interop, MiplibModels) {
  const auto list = models("miplib3");
  ASSERT_EQ(list.size(), 20u);
  for (const auto &r : list) round_trip("miplib3", r, false);
}

// The MIP search on the written MPS files (slow: minutes): glpsol, under a
// time limit, must find on the written file the optimum it finds on the
// original, and that optimum is the published one.  Models glpsol does not
// solve within the limit on the original file are reported, not counted.
TEST_F(Interop, DISABLED_MiplibSearch) {
  const auto list = models("miplib3");
  ASSERT_EQ(list.size(), 20u);
  int solved = 0;
  for (const auto &r : list) {
    SCOPED_TRACE("miplib3/" + r.name);
    const std::string source = std::string(KVTL_DATA_DIR) + "/miplib3/" + r.name + ".mps.gz";
    flat_model ref;
    std::string error;
    ASSERT_TRUE(read_mps(source, ref, error)) << error;
    double g_ref = 0, g_mps = 0;
    if (!glpsol_objective("--mps", source, true, 60, glpsol_out(), g_ref, error)) {
      printf("%s: glpsol does not solve the original within 60 s (%s)\n", r.name.c_str(),
             error.substr(0, 80).c_str());
      continue;
    }
    write_model(ref, r.name, "%.17g");
    const std::string base = dir + "/" + r.name;
    without_empty_lines(base + ".mps", base + ".glpk.mps");
    ASSERT_TRUE(glpsol_objective("--freemps", base + ".glpk.mps", true, 120, glpsol_out(), g_mps, error)) << error;
    EXPECT_TRUE(close(g_mps, g_ref, optimum_tol)) << g_mps << " vs " << g_ref;
    EXPECT_TRUE(close(g_mps, r.optimum, 1e-5)) << g_mps << " published " << r.optimum;
    ++solved;
  }
  printf("%d of %zu models solved by glpsol\n", solved, list.size());
  EXPECT_GT(solved, 0);
}

}  // namespace
