/*
 * solution.cpp -- solution values of variables, constraints and the
 * objective from lazily filled caches, ranging, solution files.
 */
#include <algorithm>

#include "core/errors.h"
#include "expr/termlist.h"
#include "problem/problem.h"
#include "solver/solver.h"

namespace kvtl {
namespace {

// The four cached solution vectors.
struct vector_kind {
  double *mdl_problem::*cache;
  int32_t flag;
  bool per_column;   // ncols entries, else nrows
  bool mip_zero;     // a MIP solution has none: zeros without asking
};

const vector_kind values{&mdl_problem::solx, MDL_SC_X, true, false};
const vector_kind reduced_costs{&mdl_problem::soldj, MDL_SC_DJ, true, true};
const vector_kind duals{&mdl_problem::soldual, MDL_SC_DUAL, false, true};
const vector_kind slacks{&mdl_problem::solslack, MDL_SC_SLACK, false, false};

bool warn_no_solution(MDLprob prob, const char *fn) {
  if (solution_usable(prob)) return false;
  mdlerror(prob, MDL_W_NOSOL, fn);
  return true;
}

// Fill one cache from the engine.
bool fill_vector(MDLprob prob, const char *fn, const vector_kind &k, double *cache, size_t n) {
  const bool mip = (prob->solcache & MDL_SC_MIP) != 0;
  if (mip && k.mip_zero) {
    std::fill(cache, cache + n, 0.0);
    return true;
  }
  double *x = &k == &values ? cache : nullptr;
  double *slack = &k == &slacks ? cache : nullptr;
  double *dual = &k == &duals ? cache : nullptr;
  double *dj = &k == &reduced_costs ? cache : nullptr;
  if (mip) return !engine_failed(prob, fn, "getmipsol", KVSLgetmipsol(prob->kvsl, x, slack));
  return !engine_failed(prob, fn, "getlpsol", KVSLgetlpsol(prob->kvsl, x, slack, dual, dj));
}

// The whole vector of the current solution, fetched from the engine at the
// first request after each new solution; null after a warning or error.
const double *solution_vector(MDLprob prob, const char *fn, const vector_kind &k) {
  if (warn_no_solution(prob, fn)) return nullptr;
  double *&cache = prob->*k.cache;
  if ((prob->solcache & k.flag) != 0 && cache != nullptr) return cache;
  const size_t n = static_cast<size_t>(std::max(k.per_column ? prob->ncols : prob->nrows, 0));
  if (cache == nullptr) {
    cache = static_cast<double *>(mdlsl_malloc(std::max<size_t>(n, 1) * sizeof(double)));
    if (cache == nullptr) {
      mdlerror(prob, MDL_E_NOMEM);
      return nullptr;
    }
  }
  if (!fill_vector(prob, fn, k, cache, n)) return nullptr;
  prob->solcache |= k.flag;
  return cache;
}

double column_value(const mdl_var *var, const char *fn, const vector_kind &k) {
  const int col = column_of(var);
  if (col < 0) return 0.0;
  const double *v = solution_vector(var->problem, fn, k);
  return v != nullptr ? v[col] : 0.0;
}

double row_value(const mdl_ctr *ctr, const char *fn, const vector_kind &k) {
  const int row = row_of(ctr);
  if (row < 0) return 0.0;
  const double *v = solution_vector(ctr->problem, fn, k);
  return v != nullptr ? v[row] : 0.0;
}

// Activity summed over the terms with the variables' values.
double activity_from_terms(mdl_ctr *ctr) {
  mdlstriptermlst(&ctr->expr.lin);
  mdlstripqtermlst(&ctr->expr.quad);
  double act = 0;
  if (ctr->expr.lin != nullptr)
    for (auto *t = static_cast<mdl_term *>(ctr->expr.lin->first); t != nullptr; t = t->next)
      act += t->coef * mdlgetsol(t->var);
  if (ctr->expr.quad != nullptr)
    for (auto *t = static_cast<mdl_qterm *>(ctr->expr.quad->first); t != nullptr; t = t->next)
      act += t->coef * mdlgetsol(t->var1) * mdlgetsol(t->var2);
  return act;
}

// Ranging block: ten array pointers, then the four row arrays of
// KVSLgetrowrange and the six column arrays of KVSLgetcolrange.
constexpr int row_range_arrays = 4;
constexpr int col_range_arrays = 6;

bool compute_ranging(MDLprob prob) {
  if (engine_failed(prob, "getrng", "KVSLrange", KVSLrange(prob->kvsl))) return false;
  if (prob->ncols <= 0) return false;
  const size_t rows = static_cast<size_t>(std::max(prob->nrows, 0));
  const size_t cols = static_cast<size_t>(prob->ncols);
  hook_block block;
  double **arrays = nullptr;
  double *data = nullptr;
  if (!carve_block(prob, block, [&](block_layout &l) {
        l.take(arrays, row_range_arrays + col_range_arrays);
        l.take(data, row_range_arrays * rows + col_range_arrays * cols);
      }))
    return false;
  for (int k = 0; k < row_range_arrays; ++k) arrays[k] = data + k * rows;
  for (int k = 0; k < col_range_arrays; ++k)
    arrays[row_range_arrays + k] = data + row_range_arrays * rows + k * cols;
  if (engine_failed(prob, "getrng", "KVSLgetrowrange",
                    KVSLgetrowrange(prob->kvsl, arrays[0], arrays[1], arrays[2], arrays[3])))
    return false;
  if (engine_failed(prob, "getrng", "KVSLgetcolrange",
                    KVSLgetcolrange(prob->kvsl, arrays[4], arrays[5], arrays[6], arrays[7],
                                    arrays[8], arrays[9])))
    return false;
  remove_side_file(prob, ".rng");
  prob->rangeinfo = static_cast<double *>(block.release());
  return true;
}

// Array `which` of the ranging block at `index`, computing it on demand.
double range_value(MDLprob prob, int which, int index) {
  if (prob->rangeinfo == nullptr && !compute_ranging(prob)) return 0.0;
  return reinterpret_cast<double **>(prob->rangeinfo)[which][index];
}

using file_call = int (*)(KVSLprob, const char *, const char *);

// Pass a solution file request to the engine; a read solution becomes the
// current one.
int solution_file(MDLprob prob, const char *fn, file_call call, const char *file,
                  const char *flags, bool read) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, fn);
    return 1;
  }
  if (engine_failed(prob, fn, fn, call(prob->kvsl, file, flags != nullptr ? flags : "")))
    return 1;
  if (read && !refresh_solution_state(prob)) return 1;
  return 0;
}

}  // namespace
}  // namespace kvtl

using namespace kvtl;

// Value of a variable; without a column the value nearest to 0 that its
// bounds allow, with no solution needed.
KVTL_API double mdlgetsol(MDLvar var) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "getsol");
    return 0.0;
  }
  if (column_of(var) < 0) {
    double value = 0.0;
    return mdlisvarzerofeas(var, &value) == 0 ? value : 0.0;
  }
  return column_value(var, "getsol", values);
}

KVTL_API double mdlgetrcost(MDLvar var) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "getrcost");
    return 0.0;
  }
  return column_value(var, "getrcost", reduced_costs);
}

// Slack: right-hand side minus activity.  A MIP solution given from outside
// has no engine slacks; it is computed from the values each time.
KVTL_API double mdlgetslack(MDLctr ctr) {
  if (ctr == nullptr) {
    mdlerror(nullptr, MDL_E_NOCTR, "getslack");
    return 0.0;
  }
  if (row_of(ctr) < 0) return 0.0;
  MDLprob prob = ctr->problem;
  const bool outside_mip =
      (prob->solcache & MDL_SC_MIP) != 0 && (prob->status & MDL_ST_OUTSIDESOL) != 0;
  if (!outside_mip) return row_value(ctr, "getslack", slacks);
  if (warn_no_solution(prob, "getslack")) return 0.0;
  return -ctr->expr.constant - mdlgetact(ctr);
}

// Activity: the terms' value without the constant.
KVTL_API double mdlgetact(MDLctr ctr) {
  if (ctr == nullptr) {
    mdlerror(nullptr, MDL_E_NOCTR, "getact");
    return 0.0;
  }
  MDLprob prob = ctr->problem;
  if (warn_no_solution(prob, "getact")) return 0.0;
  if (row_of(ctr) >= 0 && (prob->status & MDL_ST_OUTSIDESOL) == 0) {
    const double *slack = solution_vector(prob, "getact", slacks);
    return slack != nullptr ? -ctr->expr.constant - slack[ctr->row] : 0.0;
  }
  return activity_from_terms(ctr);
}

KVTL_API double mdlgetdual(MDLctr ctr) {
  if (ctr == nullptr) {
    mdlerror(nullptr, MDL_E_NOCTR, "getdual");
    return 0.0;
  }
  return row_value(ctr, "getdual", duals);
}

// Objective value of the current solution, or of the engine's solution
// when the model is unchanged and none was taken over yet.
KVTL_API double mdlgetobjval_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "getobjval");
    return 0.0;
  }
  if (solution_usable(prob)) return prob->objval;
  if ((prob->status & MDL_ST_MODIFIED) != 0) {
    mdlerror(prob, MDL_W_NOSOL, "getobjval");
    return 0.0;
  }
  int mipstatus = 0, presolve = 0;
  int attr = 0;
  if (KVSLgetintattrib(prob->kvsl, KVSL_ATTR_MIPSTATUS, &mipstatus) != 0) {
    mdlerror(prob, MDL_E_OBJVAL);
    return 0.0;
  }
  if (mipstatus == KVSL_MIP_SOLUTION || mipstatus == KVSL_MIP_OPTIMAL) {
    attr = KVSL_ATTR_MIPOBJVAL;
  } else if (KVSLgetintattrib(prob->kvsl, KVSL_ATTR_PRESOLVESTATE, &presolve) != 0) {
    mdlerror(prob, MDL_E_OBJVAL);
    return 0.0;
  } else if ((presolve & KVSL_SOLUTION_HELD) != 0) {
    attr = KVSL_ATTR_LPOBJVAL;
  }
  if (attr == 0) {
    prob->objval = 0.0;
    mdlerror(prob, MDL_W_NOSOL, "getobjval");
    return 0.0;
  }
  double value = 0.0;
  if (KVSLgetdblattrib(prob->kvsl, attr, &value) != 0) {
    mdlerror(prob, MDL_E_OBJVAL);
    return 0.0;
  }
  prob->objval = value;
  return value;
}

KVTL_API double mdlgetvarrng(MDLvar var, int code) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "getrng");
    return 0.0;
  }
  const int col = column_of(var);
  if (code < 0 || code >= col_range_arrays || col < 0) return 0.0;
  return range_value(var->problem, row_range_arrays + code, col);
}

KVTL_API double mdlgetctrrng(MDLctr ctr, int code) {
  if (ctr == nullptr) {
    mdlerror(nullptr, MDL_E_NOCTR, "getrng");
    return 0.0;
  }
  const int row = row_of(ctr);
  if (code < 0 || code >= row_range_arrays || row < 0) return 0.0;
  return range_value(ctr->problem, code, row);
}

KVTL_API int mdlwritesol_prob(MDLprob prob, const char *file, const char *flags) {
  return solution_file(prob, "writesol", KVSLwritesol, file, flags, false);
}

KVTL_API int mdlwriteprtsol_prob(MDLprob prob, const char *file, const char *flags) {
  return solution_file(prob, "writeprtsol", KVSLwriteprtsol, file, flags, false);
}

KVTL_API int mdlwriteslxsol_prob(MDLprob prob, const char *file, const char *flags) {
  return solution_file(prob, "writeslxsol", KVSLwriteslxsol, file, flags, false);
}

KVTL_API int mdlwritebinsol_prob(MDLprob prob, const char *file, const char *flags) {
  return solution_file(prob, "writebinsol", KVSLwritebinsol, file, flags, false);
}

KVTL_API int mdlreadbinsol_prob(MDLprob prob, const char *file, const char *flags) {
  return solution_file(prob, "readbinsol", KVSLreadbinsol, file, flags, true);
}

KVTL_API int mdlreadslxsol_prob(MDLprob prob, const char *file, const char *flags) {
  return solution_file(prob, "readslxsol", KVSLreadslxsol, file, flags, true);
}
