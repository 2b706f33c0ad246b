/*
 * solfiles.cpp -- writing and reading solution files.
 *
 * Every writer writes the current solution: the MIP solution when one is
 * held, else the LP solution; without either it fails (KVSL_ERR_NOSOLUTION).
 * A null or empty file name means the problem's name with the extension
 * given below.  Columns and rows without a name are called C<j> and R<i>.
 *
 * writesol (".txt"): comma-separated, for scripts.
 *   # kvsl solution of <model name>
 *   status,<LP status>,<MIP status>,<kind: lp or mip>,<objective>
 *   C,<j>,<name>,<value>,<reduced cost>
 *   R,<i>,<name>,<type letter>,<activity>,<slack>,<dual>
 *   (a MIP solution has reduced costs and duals 0)
 * writeprtsol (".prt"): the same content as aligned tables for people.
 * writeslxsol / readslxsol (".slx"): values by name.
 *   NAME <model name>
 *   C <column name> <value>        one line per column
 *   ENDATA
 *   Reading matches columns by name; columns not listed are 0.  With
 *   global entities the values become the MIP solution (MIP status 4:
 *   a solution, optimality unknown) provided they satisfy the rows, bounds
 *   and integrality within 1e-6, else the call fails with KVSL_ERR_BADARG;
 *   without entities they become the LP solution (LP status 4, duals and
 *   reduced costs 0).
 * writebinsol / readbinsol (".sol"): binary, native byte order:
 *   8 bytes "KVSLSOL1"; int32 columns, rows, kind (1 LP, 2 MIP), LP status,
 *   MIP status; double objective; then doubles: values (columns), slacks
 *   (rows), duals (rows), reduced costs (columns).  Reading requires the
 *   same numbers of columns and rows and restores the solution, its kind
 *   and both statuses exactly.
 */
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>

#include <ClpSimplex.hpp>

#include "engine.h"

namespace {

constexpr char magic[8] = {'K', 'V', 'S', 'L', 'S', 'O', 'L', '1'};

// The file to use: the one given, or the problem name with an extension.
std::string file_name(const kvsl_prob *prob, const char *file, const char *ext) {
  if (file != nullptr && *file != '\0') return file;
  if (prob->name.empty()) return "";
  return prob->name + ext;
}

std::string col_name(const kvsl_prob *prob, int j) {
  const char *name = prob->colnames.get(j);
  return *name == '\0' ? "C" + std::to_string(j) : name;
}

std::string row_name(const kvsl_prob *prob, int i) {
  const char *name = prob->rownames.get(i);
  return *name == '\0' ? "R" + std::to_string(i) : name;
}

// The solution a writer writes, in one shape for LP and MIP.
struct current_solution {
  bool mip;
  double obj;
  std::vector<double> x, slack, dual, dj;
};

// Fill s with the current solution; false when there is none.
bool get_current(const kvsl_prob *prob, current_solution &s) {
  int n = prob->ncols, r = static_cast<int>(prob->rowtype.size());
  if (prob->mip_held) {
    s.mip = true;
    s.obj = prob->mip_obj;
    s.x = prob->mip_x;
    s.slack.resize(r);
    kvsl::slacks_of(prob, s.x.data(), s.slack.data());
    s.dual.assign(r, 0.0);
    s.dj.assign(n, 0.0);
    return true;
  }
  if (prob->lp_held) {
    s = {false, prob->lp_obj, prob->lp_x, prob->lp_slack, prob->lp_dual, prob->lp_dj};
    return true;
  }
  return false;
}

// Common checks of the writers; 0 or an error code.  Opens the file.
int open_for_writing(kvsl_prob *prob, const char *file, const char *ext, const char *mode,
                     current_solution &s, std::unique_ptr<FILE, int (*)(FILE *)> &fp) {
  if (!prob->loaded) return KVSL_ERR_NOTLOADED;
  if (!get_current(prob, s)) return KVSL_ERR_NOSOLUTION;
  std::string path = file_name(prob, file, ext);
  if (path.empty()) return KVSL_ERR_BADARG;
  fp.reset(std::fopen(path.c_str(), mode));
  return fp ? 0 : KVSL_ERR_FILE;
}

// Close a written file, reporting write errors.
int finish(std::unique_ptr<FILE, int (*)(FILE *)> &fp) {
  bool bad = std::ferror(fp.get()) != 0;
  return std::fclose(fp.release()) != 0 || bad ? KVSL_ERR_FILE : 0;
}

using file_ptr = std::unique_ptr<FILE, int (*)(FILE *)>;

// Whether x satisfies the rows, the bounds and every global entity of a
// problem: integral binaries and integers, partial integers integral below
// their limit, semi-continuous values 0 or at least the limit (integral for
// semi-continuous integers).
bool entities_satisfied(const kvsl_prob *prob, const std::vector<double> &x) {
  const ClpSimplex &m = *prob->lp;
  const double tol = 1e-6;
  std::vector<double> act(m.numberRows(), 0.0);
  m.matrix()->times(x.data(), act.data());
  for (int i = 0; i < m.numberRows(); ++i)
    if (act[i] < m.rowLower()[i] - tol || act[i] > m.rowUpper()[i] + tol) return false;
  for (int j = 0; j < prob->ncols; ++j)
    if (x[j] < m.columnLower()[j] - tol || x[j] > m.columnUpper()[j] + tol) return false;
  for (const auto &e : prob->entities) {
    double v = x[e.col];
    bool integral = std::fabs(v - std::round(v)) <= tol;
    bool semi_ok = std::fabs(v) <= tol || v >= e.limit - tol;
    switch (e.type) {
      case 'P': if (v < e.limit - tol && !integral) return false; break;
      case 'S': if (!semi_ok) return false; break;
      case 'R': if (!semi_ok || !integral) return false; break;
      default: if (!integral) return false; break;
    }
  }
  return true;
}

// Make x the current solution after a read (see the format notes above).
int take_read_solution(kvsl_prob *prob, std::vector<double> x) {
  if (!prob->entities.empty()) {
    // A refused solution leaves the one held before untouched.
    if (!entities_satisfied(prob, x)) return KVSL_ERR_BADARG;
    kvsl::drop_solutions(prob);
    prob->mip_obj = kvsl::objective_of(prob, x.data());
    prob->mip_x = std::move(x);
    prob->mip_held = true;
    prob->mipstatus = KVSL_MIP_SOLUTION;
    return 0;
  }
  kvsl::drop_solutions(prob);
  int r = static_cast<int>(prob->rowtype.size());
  prob->lp_slack.resize(r);
  kvsl::slacks_of(prob, x.data(), prob->lp_slack.data());
  prob->lp_dual.assign(r, 0.0);
  prob->lp_dj.assign(prob->ncols, 0.0);
  prob->lp_obj = kvsl::objective_of(prob, x.data());
  prob->lp_x = std::move(x);
  prob->lp_held = true;
  prob->lpstatus = KVSL_LP_UNFINISHED;
  return 0;
}

int write_csv(kvsl_prob *prob, const char *file) {
  current_solution s;
  file_ptr fp(nullptr, std::fclose);
  if (int rc = open_for_writing(prob, file, ".txt", "w", s, fp); rc != 0) return rc;
  FILE *f = fp.get();
  std::fprintf(f, "# kvsl solution of %s\n", prob->modelname.c_str());
  std::fprintf(f, "status,%d,%d,%s,%.17g\n", prob->lpstatus, prob->mipstatus,
               s.mip ? "mip" : "lp", s.obj);
  for (int j = 0; j < prob->ncols; ++j)
    std::fprintf(f, "C,%d,%s,%.17g,%.17g\n", j, col_name(prob, j).c_str(), s.x[j], s.dj[j]);
  for (size_t i = 0; i < prob->rowtype.size(); ++i)
    std::fprintf(f, "R,%zu,%s,%c,%.17g,%.17g,%.17g\n", i, row_name(prob, (int)i).c_str(),
                 prob->rowtype[i], prob->rhs[i] - s.slack[i], s.slack[i], s.dual[i]);
  return finish(fp);
}

int write_prt(kvsl_prob *prob, const char *file) {
  current_solution s;
  file_ptr fp(nullptr, std::fclose);
  if (int rc = open_for_writing(prob, file, ".prt", "w", s, fp); rc != 0) return rc;
  FILE *f = fp.get();
  std::fprintf(f, "Problem    %s\n", prob->modelname.c_str());
  std::fprintf(f, "Solution   %s (LP status %d, MIP status %d)\n", s.mip ? "MIP" : "LP",
               prob->lpstatus, prob->mipstatus);
  std::fprintf(f, "Objective  %.10g\n\n", s.obj);
  std::fprintf(f, "%8s %-20s %18s %18s\n", "Column", "Name", "Value", "Reduced cost");
  for (int j = 0; j < prob->ncols; ++j)
    std::fprintf(f, "%8d %-20s %18.10g %18.10g\n", j, col_name(prob, j).c_str(), s.x[j], s.dj[j]);
  std::fprintf(f, "\n%8s %-20s %4s %18s %18s %18s\n", "Row", "Name", "Type", "Activity", "Slack",
               "Dual");
  for (size_t i = 0; i < prob->rowtype.size(); ++i)
    std::fprintf(f, "%8zu %-20s %4c %18.10g %18.10g %18.10g\n", i,
                 row_name(prob, (int)i).c_str(), prob->rowtype[i], prob->rhs[i] - s.slack[i],
                 s.slack[i], s.dual[i]);
  return finish(fp);
}

int write_slx(kvsl_prob *prob, const char *file) {
  current_solution s;
  file_ptr fp(nullptr, std::fclose);
  if (int rc = open_for_writing(prob, file, ".slx", "w", s, fp); rc != 0) return rc;
  FILE *f = fp.get();
  std::fprintf(f, "NAME %s\n", prob->modelname.empty() ? "noname" : prob->modelname.c_str());
  for (int j = 0; j < prob->ncols; ++j)
    std::fprintf(f, "  C %s %.17g\n", col_name(prob, j).c_str(), s.x[j]);
  std::fprintf(f, "ENDATA\n");
  return finish(fp);
}

int read_slx(kvsl_prob *prob, const char *file) {
  if (!prob->loaded) return KVSL_ERR_NOTLOADED;
  std::string path = file_name(prob, file, ".slx");
  if (path.empty()) return KVSL_ERR_BADARG;
  std::ifstream in(path);
  if (!in) return KVSL_ERR_FILE;
  std::map<std::string, int> index;
  for (int j = 0; j < prob->ncols; ++j) index[col_name(prob, j)] = j;
  std::vector<double> x(prob->ncols, 0.0);
  std::string line;
  bool ended = false;
  while (std::getline(in, line)) {
    std::istringstream ls(line);
    std::string key, name;
    ls >> key;
    if (key.empty() || key == "NAME") continue;
    if (key == "ENDATA") {
      ended = true;
      break;
    }
    double v;
    if (key != "C" || !(ls >> name >> v)) return KVSL_ERR_FILE;
    auto it = index.find(name);
    if (it == index.end()) return KVSL_ERR_FILE;
    x[it->second] = v;
  }
  if (!ended) return KVSL_ERR_FILE;
  return take_read_solution(prob, std::move(x));
}

int write_bin(kvsl_prob *prob, const char *file) {
  current_solution s;
  file_ptr fp(nullptr, std::fclose);
  if (int rc = open_for_writing(prob, file, ".sol", "wb", s, fp); rc != 0) return rc;
  FILE *f = fp.get();
  int32_t head[5] = {prob->ncols, static_cast<int32_t>(prob->rowtype.size()), s.mip ? 2 : 1,
                     prob->lpstatus, prob->mipstatus};
  std::fwrite(magic, 1, sizeof magic, f);
  std::fwrite(head, sizeof head[0], 5, f);
  std::fwrite(&s.obj, sizeof s.obj, 1, f);
  for (const auto *v : {&s.x, &s.slack, &s.dual, &s.dj})
    std::fwrite(v->data(), sizeof(double), v->size(), f);
  return finish(fp);
}

int read_bin(kvsl_prob *prob, const char *file) {
  if (!prob->loaded) return KVSL_ERR_NOTLOADED;
  std::string path = file_name(prob, file, ".sol");
  if (path.empty()) return KVSL_ERR_BADARG;
  file_ptr fp(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!fp) return KVSL_ERR_FILE;
  FILE *f = fp.get();
  char m[8];
  int32_t head[5];
  double obj;
  if (std::fread(m, 1, 8, f) != 8 || std::memcmp(m, magic, 8) != 0 ||
      std::fread(head, sizeof head[0], 5, f) != 5 || std::fread(&obj, sizeof obj, 1, f) != 1)
    return KVSL_ERR_FILE;
  int n = prob->ncols, r = static_cast<int>(prob->rowtype.size());
  if (head[0] != n || head[1] != r || (head[2] != 1 && head[2] != 2)) return KVSL_ERR_BADARG;
  std::vector<double> x(n), slack(r), dual(r), dj(n);
  for (auto *v : {&x, &slack, &dual, &dj})
    if (std::fread(v->data(), sizeof(double), v->size(), f) != v->size()) return KVSL_ERR_FILE;
  kvsl::drop_solutions(prob);
  prob->lpstatus = head[3];
  prob->mipstatus = head[4];
  if (head[2] == 2) {
    prob->mip_x = std::move(x);
    prob->mip_obj = obj;
    prob->mip_held = true;
  } else {
    prob->lp_x = std::move(x);
    prob->lp_slack = std::move(slack);
    prob->lp_dual = std::move(dual);
    prob->lp_dj = std::move(dj);
    prob->lp_obj = obj;
    prob->lp_held = true;
  }
  return 0;
}

// Run one file operation, turning its code and exceptions into the result.
template <class F>
int file_call(KVSLprob prob, F op) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  try {
    int rc = op();
    return rc == 0 ? 0 : kvsl::fail(prob, rc);
  } catch (const std::bad_alloc &) {
    return kvsl::fail(prob, KVSL_ERR_NOMEM);
  }
}

}  // namespace

// Write the current solution as comma-separated text.
KVSL_EXPORT int KVSLwritesol(KVSLprob prob, const char *file, const char *) {
  return file_call(prob, [&] { return write_csv(prob, file); });
}

// Write the current solution as aligned tables.
KVSL_EXPORT int KVSLwriteprtsol(KVSLprob prob, const char *file, const char *) {
  return file_call(prob, [&] { return write_prt(prob, file); });
}

// Write the current column values by name.
KVSL_EXPORT int KVSLwriteslxsol(KVSLprob prob, const char *file, const char *) {
  return file_call(prob, [&] { return write_slx(prob, file); });
}

// Write the current solution in binary.
KVSL_EXPORT int KVSLwritebinsol(KVSLprob prob, const char *file, const char *) {
  return file_call(prob, [&] { return write_bin(prob, file); });
}

// Read a binary solution file: it becomes the current solution.
KVSL_EXPORT int KVSLreadbinsol(KVSLprob prob, const char *file, const char *) {
  return file_call(prob, [&] { return read_bin(prob, file); });
}

// Read column values by name: they become the current solution.
KVSL_EXPORT int KVSLreadslxsol(KVSLprob prob, const char *file, const char *) {
  return file_call(prob, [&] { return read_slx(prob, file); });
}
