/*
 * mps_model.cpp -- an MPS or LP file stated as a model through the public
 * interface: variables, constraints with ranges, objective, integers,
 * semi-continuous columns, special ordered sets, quadratic objectives.
 */
#include "mps_model.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "CoinError.hpp"
#include "CoinFileIO.hpp"
#include "CoinLpIO.hpp"
#include "CoinMessageHandler.hpp"
#include "CoinMpsIO.hpp"
#include "CoinPackedMatrix.hpp"
#include "model_text.h"

namespace {

// The reader's infinity becomes the library's.
double finite_or_infinite(double v, double inf) {
  if (v >= inf) return MDL_INFINITY;
  if (v <= -inf) return -MDL_INFINITY;
  return v;
}

// Keeps the readers quiet: errors and warnings are collected for the
// caller's message, and the LP reader's note that it turned a maximisation
// into a minimisation is remembered (it negated the objective to do so).
class reader_log : public CoinMessageHandler {
 public:
  reader_log() { setLogLevel(1); }
  int print() override {
    std::string text = messageBuffer();
    char severity = currentMessage().severity();
    if (text.find("Maximization problem reformulated") != std::string::npos)
      negated_max = true;
    else if (severity == 'E' || severity == 'W' || severity == 'S')
      problems += (problems.empty() ? "" : "; ") + text;
    return 0;
  }
  std::string problems;
  bool negated_max = false;
};

// What a reader holds, in one form for both readers.  The objective of the
// file is sign * c'x + constant.
struct file_view {
  int ncols = 0, nrows = 0;
  double inf = 1e30;
  const double *lb = nullptr, *ub = nullptr, *obj = nullptr;
  const char *sense = nullptr;
  const double *rlo = nullptr, *rup = nullptr;
  const CoinPackedMatrix *matrix = nullptr;
  std::vector<char> kind;   // 0 continuous, 1 integer, 2 semi-continuous, 3 semi-integer
  std::function<const char *(int)> colname, rowname;
  const char *objname = nullptr;
  double constant = 0.0;
  double sign = 1.0;
  std::vector<const CoinSet *> sets;
};

// State one column; semi-continuous columns take the file's lower bound
// as their threshold: 0 or within [lower, upper].
MDLvar new_column(MDLprob prob, const file_view &v, int j, mps_model_info *info) {
  double l = finite_or_infinite(v.lb[j], v.inf), u = finite_or_infinite(v.ub[j], v.inf);
  switch (v.kind[static_cast<size_t>(j)]) {
    case 1:
      info->nintegers++;
      return mdlnewvar_prob(prob, v.colname(j), (l >= 0.0 && u <= 1.0) ? MDL_BINARY : MDL_INTEGER,
                            l, u);
    case 2:
    case 3: {
      info->nsemicont++;
      double threshold = l > 0.0 ? l : 0.0;
      MDLvar x = mdlnewvar_prob(prob, v.colname(j), v.kind[static_cast<size_t>(j)] == 2
                                                        ? MDL_SEMICONT
                                                        : MDL_SEMIINT,
                                l > 0.0 ? 0.0 : l, u);
      if (x != nullptr && mdlsetlim(x, threshold) != 0) return nullptr;
      return x;
    }
    default:
      return mdlnewvar_prob(prob, v.colname(j), MDL_CONTINUOUS, l, u);
  }
}

// State the rows of the view: one constraint per non-free row.
bool state_rows(MDLprob prob, const file_view &v, std::vector<MDLctr> *rows, mps_model_info *info,
                std::string *error) {
  rows->assign(static_cast<size_t>(v.nrows), nullptr);
  for (int i = 0; i < v.nrows; ++i) {
    int type;
    switch (v.sense[i]) {
      case 'L': type = MDL_LEQ; break;
      case 'G': type = MDL_GEQ; break;
      case 'E': type = MDL_EQ; break;
      case 'R': type = MDL_LEQ; break;
      default: continue;   // free rows are not constraints
    }
    MDLctr c = mdlnewctr_prob(prob, v.rowname(i), type);
    if (c == nullptr) {
      *error = std::string("constraint refused: ") + v.rowname(i);
      return false;
    }
    int rc = 0;
    if (v.sense[i] == 'R')
      rc = mdlsetrange(c, v.rlo[i], v.rup[i]);
    else
      rc = mdlsetterm(c, nullptr, type == MDL_GEQ ? v.rlo[i] : v.rup[i]);
    if (rc != 0) {
      *error = std::string("right-hand side refused: ") + v.rowname(i);
      return false;
    }
    (*rows)[static_cast<size_t>(i)] = c;
    info->nrows++;
  }
  return true;
}

// The file's special ordered sets over the columns made; a member with
// weight 0 cannot be a member of a library set, so such members are left
// out (counted in info->nsetsdropped when a whole set goes).
bool state_sets(MDLprob prob, const file_view &v, const std::vector<MDLvar> &vars,
                mps_model_info *info, std::string *error) {
  for (size_t s = 0; s < v.sets.size(); ++s) {
    const CoinSet *set = v.sets[s];
    std::string name = "sos" + std::to_string(s + 1);
    MDLsos sos = mdlnewsos_prob(prob, name.c_str(), set->setType() == 2 ? MDL_SOS2 : MDL_SOS1);
    if (sos == nullptr) {
      *error = "special ordered set refused: " + name;
      return false;
    }
    int members = 0;
    for (int k = 0; k < set->numberEntries(); ++k) {
      double w = set->weights() != nullptr ? set->weights()[k] : k + 1.0;
      if (w == 0.0) continue;
      if (mdladdsosel(sos, vars[static_cast<size_t>(set->which()[k])], w) != 0) {
        *error = "set member refused in " + name;
        return false;
      }
      members++;
    }
    info->nsets++;
    if (members == 0) info->nsetsdropped++;
  }
  return true;
}

// Variables, constraints, the linear objective and the sets of the view;
// the objective is made but not yet set.
bool state_linear(MDLprob prob, const file_view &v, std::vector<MDLvar> *vars, MDLctr *objective,
                  mps_model_info *info, std::string *error) {
  vars->assign(static_cast<size_t>(v.ncols), nullptr);
  for (int j = 0; j < v.ncols; ++j) {
    (*vars)[static_cast<size_t>(j)] = new_column(prob, v, j, info);
    if ((*vars)[static_cast<size_t>(j)] == nullptr) {
      *error = std::string("variable refused: ") + v.colname(j);
      return false;
    }
  }
  std::vector<MDLctr> rows;
  if (!state_rows(prob, v, &rows, info, error)) return false;

  const CoinBigIndex *start = v.matrix->getVectorStarts();
  const int *len = v.matrix->getVectorLengths();
  const int *ind = v.matrix->getIndices();
  const double *val = v.matrix->getElements();
  for (int j = 0; j < v.ncols; ++j)
    for (CoinBigIndex k = start[j]; k < start[j] + len[j]; ++k) {
      MDLctr row = rows[static_cast<size_t>(ind[k])];
      if (row != nullptr && mdladdterm(row, (*vars)[static_cast<size_t>(j)], val[k]) != 0) {
        *error = "term refused";
        return false;
      }
    }

  *objective = mdlnewctr_prob(prob, v.objname, MDL_NONBINDING);
  if (*objective == nullptr) {
    *error = "objective refused";
    return false;
  }
  for (int j = 0; j < v.ncols; ++j)
    if (v.obj[j] != 0.0 &&
        mdladdterm(*objective, (*vars)[static_cast<size_t>(j)], v.sign * v.obj[j]) != 0) {
      *error = "objective term refused";
      return false;
    }
  info->ncols = v.ncols;
  info->vars = *vars;
  return state_sets(prob, v, *vars, info, error);
}

// The objective constant and the objective itself.
bool finish_objective(MDLprob prob, const file_view &v, MDLctr objective, bool with_constant,
                      mps_model_info *info, std::string *error) {
  info->objconst = -v.constant;
  // A term without variable moves the constant to the other side: adding
  // r makes the objective c'x - r.
  if (with_constant && info->objconst != 0.0 &&
      mdladdterm(objective, nullptr, info->objconst) != 0) {
    *error = "objective constant refused";
    return false;
  }
  if (mdlsetobj_prob(prob, objective) != 0) {
    *error = "objective not set";
    return false;
  }
  return true;
}

// Add the quadratic section the reader is positioned at to the objective.
// 1/2 x'Qx is Q_jj/2 x_j^2 per diagonal entry and Q_ij x_i x_j per pair
// i != j.  QUADOBJ gives each pair once (in either triangle); QMATRIX
// (`full_matrix`) gives all of Q, of which one triangle is read.
bool add_quadratic_objective(CoinMpsIO &reader, MDLctr objective, const std::vector<MDLvar> &vars,
                             bool full_matrix, mps_model_info *info, std::string *error) {
  CoinBigIndex *start = nullptr;
  int *col = nullptr;
  double *val = nullptr;
  int rc = reader.readQuadraticMps(nullptr, start, col, val, 0);
  if (rc == -2 || rc == -3) return true;   // a plain linear model
  std::unique_ptr<CoinBigIndex[]> own_start(start);
  std::unique_ptr<int[]> own_col(col);
  std::unique_ptr<double[]> own_val(val);
  if (rc != 0) {
    *error = "quadratic section unreadable";
    return false;
  }
  const int ncols = static_cast<int>(vars.size());
  for (int j = 0; j < ncols; ++j)
    for (CoinBigIndex k = start[j]; k < start[j + 1]; ++k) {
      if ((full_matrix && col[k] < j) || val[k] == 0.0) continue;
      double c = col[k] == j ? 0.5 * val[k] : val[k];
      if (mdladdqterm(objective, vars[static_cast<size_t>(j)], vars[static_cast<size_t>(col[k])],
                      c) != 0) {
        *error = "quadratic objective term refused";
        return false;
      }
      info->nquadratic++;
    }
  return true;
}

// Open `file` with a reader that stays silent; the file's sets, when asked
// for, are handed to *sets (the caller deletes them).
bool open_mps(CoinMpsIO &reader, reader_log &log, const char *file, std::string *error,
              std::vector<std::unique_ptr<CoinSet>> *sets, const char *path = nullptr) {
  reader.passInMessageHandler(&log);
  int nsets = 0;
  CoinSet **raw = nullptr;
  if (path == nullptr) path = file;
  int rc = sets != nullptr ? reader.readMps(path, "", nsets, raw) : reader.readMps(path, "");
  for (int s = 0; s < nsets; ++s) sets->emplace_back(raw[s]);
  delete[] raw;
  if (rc != 0) {
    *error = std::string("cannot read ") + file + (log.problems.empty() ? "" : ": " + log.problems);
    return false;
  }
  return true;
}

// What both readers answer alike: sizes, bounds, rows, matrix and names.
template <class Reader>
file_view common_view(const Reader &reader) {
  file_view v;
  v.ncols = reader.getNumCols();
  v.nrows = reader.getNumRows();
  v.inf = reader.getInfinity();
  v.lb = reader.getColLower();
  v.ub = reader.getColUpper();
  v.obj = reader.getObjCoefficients();
  v.sense = reader.getRowSense();
  v.rlo = reader.getRowLower();
  v.rup = reader.getRowUpper();
  v.matrix = reader.getMatrixByCol();
  v.kind.resize(static_cast<size_t>(v.ncols));
  // Both readers mark integers 1, semi-continuous columns 3 and
  // semi-continuous integers 4 (2 is taken as semi-continuous too).
  const char *types = reader.integerColumns();
  for (int j = 0; j < v.ncols; ++j) {
    char t = types != nullptr ? types[j] : 0;
    v.kind[static_cast<size_t>(j)] = t == 1 ? 1 : (t == 2 || t == 3) ? 2 : t == 4 ? 3 : 0;
  }
  v.colname = [&reader](int j) { return reader.columnName(j); };
  v.rowname = [&reader](int i) { return reader.rowName(i); };
  return v;
}

// The view of an MPS reader.
file_view mps_view(const CoinMpsIO &reader) {
  file_view v = common_view(reader);
  v.objname = reader.getObjectiveName();
  // The objective row's RHS entry r makes the objective c'x - r.
  v.constant = -reader.objectiveOffset();
  return v;
}

// How far reading and stating a file came.
enum class stated { unreadable, refused, done };

// Read the MPS file at `path` (`file` in messages) and state its model.
stated state_mps(MDLprob prob, const char *file, const char *path, bool with_constant,
                 bool quadratic, bool sets, bool full_matrix, mps_model_info *info,
                 std::string *error) {
  CoinMpsIO reader;
  reader_log log;
  std::vector<std::unique_ptr<CoinSet>> file_sets;
  if (!open_mps(reader, log, file, error, sets ? &file_sets : nullptr, path))
    return stated::unreadable;
  file_view v = mps_view(reader);
  for (const auto &s : file_sets) v.sets.push_back(s.get());
  std::vector<MDLvar> vars;
  MDLctr objective = nullptr;
  bool ok = state_linear(prob, v, &vars, &objective, info, error) &&
            (!quadratic ||
             add_quadratic_objective(reader, objective, vars, full_matrix, info, error)) &&
            finish_objective(prob, v, objective, with_constant, info, error);
  return ok ? stated::done : stated::refused;
}

bool build_from_mps_reader(MDLprob prob, const char *file, bool with_constant, bool quadratic,
                           mps_model_info *info, std::string *error) {
  return state_mps(prob, file, file, with_constant, quadratic, false, false, info, error) ==
         stated::done;
}

// Any MPS file: its OBJSENSE applied here, a SETS section made an SOS
// section, the sets and quadratic sections moved behind the others when
// they stand before them, and read once more as free MPS when the first
// reading fails.
bool build_from_any_mps(MDLprob prob, const char *file, mps_model_info *info,
                        std::string *error) {
  std::string text;
  if (!read_model_text(file, &text)) {
    *error = std::string("cannot read ") + file;
    return false;
  }
  bool changed = take_mps_objsense(&text, &info->maximise);
  changed = sets_to_sos_section(&text) || changed;
  changed = move_mps_sections_last(&text) || changed;
  std::unique_ptr<temp_model_file> copy;
  if (changed) copy = std::make_unique<temp_model_file>(text);
  if (copy != nullptr && copy->path().empty()) {
    *error = "cannot write a temporary copy of the model";
    return false;
  }
  const char *path = copy != nullptr ? copy->path().c_str() : file;
  const bool full = has_qmatrix_section(text);
  stated result = state_mps(prob, file, path, true, true, true, full, info, error);
  if (result != stated::unreadable || !mark_mps_free(&text)) return result == stated::done;
  temp_model_file free_copy(text);
  if (free_copy.path().empty()) return false;
  std::string free_error;
  stated second =
      state_mps(prob, file, free_copy.path().c_str(), true, true, true, full, info, &free_error);
  if (second == stated::unreadable) return false;   // the first reason stands
  *error = free_error;
  return second == stated::done;
}

// The quadratic objective terms taken from an LP text, on the columns the
// reader made.
bool add_lp_quadratic(const CoinLpIO &reader, const std::vector<quadratic_term> &terms,
                      MDLctr objective, const std::vector<MDLvar> &vars, mps_model_info *info,
                      std::string *error) {
  if (terms.empty()) return true;
  std::map<std::string, int> column;
  for (int j = 0; j < reader.getNumCols(); ++j) column[reader.columnName(j)] = j;
  for (const quadratic_term &t : terms) {
    auto a = column.find(t.first), b = column.find(t.second);
    if (a == column.end() || b == column.end()) {
      *error = "quadratic objective: unknown variable " + (a == column.end() ? t.first : t.second) +
               " (the LP reader renames all columns when a name holds a character it refuses," +
               " such as '-')";
      return false;
    }
    if (t.coef == 0.0) continue;
    if (mdladdqterm(objective, vars[static_cast<size_t>(a->second)],
                    vars[static_cast<size_t>(b->second)], t.coef) != 0) {
      *error = "quadratic objective term refused";
      return false;
    }
    info->nquadratic++;
  }
  return true;
}

// An LP-format file; its quadratic objective part is read here, the rest
// by the LP reader.
bool build_from_lp(MDLprob prob, const char *file, mps_model_info *info, std::string *error) {
  std::string text;
  std::vector<quadratic_term> quadratic;
  if (!read_model_text(file, &text)) {
    *error = std::string("cannot read ") + file;
    return false;
  }
  if (!lp_starts_with_sense(text)) {
    *error = std::string("cannot read ") + file + ": an LP file starts with Minimize or Maximize";
    return false;
  }
  library_lp_sections(&text);
  if (!take_lp_quadratic(&text, &quadratic, error)) {
    *error = std::string("cannot read ") + file + ": " + *error;
    return false;
  }
  CoinLpIO reader;
  reader_log log;
  reader.passInMessageHandler(&log);
  FILE *in = fmemopen(text.data(), text.size(), "r");
  if (in == nullptr) {
    *error = std::string("cannot read ") + file;
    return false;
  }
  // The reader takes the stream over and closes it.
  try {
    reader.readLp(in);
  } catch (CoinError &e) {
    std::string why = e.message();
    while (!why.empty() && isspace(static_cast<unsigned char>(why.back()))) why.pop_back();
    *error = std::string("cannot read ") + file + ": " + why;
    return false;
  }
  if (reader.getNumCols() == 0 && !log.problems.empty()) {
    *error = std::string("cannot read ") + file + ": " + log.problems;
    return false;
  }
  file_view v = common_view(reader);
  v.objname = reader.getObjName();
  // The LP reader keeps the constant as written, also when it negates the
  // coefficients of a maximisation (turned back here).
  v.constant = reader.objectiveOffset();
  info->maximise = log.negated_max;
  v.sign = log.negated_max ? -1.0 : 1.0;
  for (int s = 0; s < reader.numberSets(); ++s) v.sets.push_back(reader.setInformation()[s]);
  std::vector<MDLvar> vars;
  MDLctr objective = nullptr;
  return state_linear(prob, v, &vars, &objective, info, error) &&
         add_lp_quadratic(reader, quadratic, objective, vars, info, error) &&
         finish_objective(prob, v, objective, true, info, error);
}

}  // namespace

bool build_from_mps(MDLprob prob, const char *file, bool with_constant, mps_model_info *info,
                    std::string *error) {
  return build_from_mps_reader(prob, file, with_constant, false, info, error);
}

bool build_from_qps(MDLprob prob, const char *file, bool with_constant, mps_model_info *info,
                    std::string *error) {
  return build_from_mps_reader(prob, file, with_constant, true, info, error);
}

bool is_lp_file_name(const std::string &file) {
  std::string lower = file;
  for (char &ch : lower) ch = static_cast<char>(tolower(static_cast<unsigned char>(ch)));
  return lower.ends_with(".lp") || lower.ends_with(".lp.gz");
}

bool build_from_file(MDLprob prob, const char *file, mps_model_info *info, std::string *error) {
  return is_lp_file_name(file) ? build_from_lp(prob, file, info, error)
                               : build_from_any_mps(prob, file, info, error);
}
