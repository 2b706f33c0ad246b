/*
 * optimize.cpp -- optimisation calls and status: load when needed, run the
 * engine, take over its solution state; LP and MIP status texts.
 */
#include <ctype.h>
#include <pthread.h>

#include "core/errors.h"
#include "problem/problem.h"
#include "solver/solver.h"

namespace kvtl {
namespace {

// Flags that make an optimisation load first: directives pending,
// modified, regeneration forced.
constexpr uint32_t needs_load_mask = MDL_ST_DIRPENDING | MDL_ST_MODIFIED | MDL_ST_REGEN;

enum class engine_run { lp, mip, minim, maxim };

struct run_kind {
  const char *name;      // short name, also the engine call in messages
  const char *letters;   // accepted option letters (lower case)
  int (*call)(KVSLprob, const char *);
};

const run_kind run_kinds[] = {
    {"lpoptimize", "bcdnp", KVSLlpoptimize},
    {"mipoptimize", "bcdlnp", KVSLmipoptimize},
    {"minim", "bdglnp", KVSLminim},
    {"maxim", "bdglnp", KVSLmaxim},
};

const run_kind &kind_of(engine_run r) { return run_kinds[static_cast<int>(r)]; }

void clear_solution(MDLprob prob) {
  prob->status &= ~static_cast<uint32_t>(MDL_ST_SOLUTION);
  prob->objval = 0.0;
}

// Mark a solution available with its objective value from attribute `attr`.
bool take_solution(MDLprob prob, int attr) {
  double value = 0;
  if (KVSLgetdblattrib(prob->kvsl, attr, &value) != 0) {
    clear_solution(prob);
    mdlerror(prob, MDL_E_OBJVAL);
    return false;
  }
  prob->status |= MDL_ST_SOLUTION;
  prob->objval = value;
  return true;
}

// Integer attribute, a failure reported as error 1524 of `fn`.
bool int_attrib(MDLprob prob, const char *fn, int attr, int *value) {
  *value = 0;
  return !engine_failed(prob, fn, "getintattrib", KVSLgetintattrib(prob->kvsl, attr, value));
}

// The first option letter that `letters` does not accept, or 0.
char unknown_option(const char *options, const char *letters) {
  if (options == nullptr) return 0;
  for (const char *p = options; *p != 0; ++p) {
    char lower = static_cast<char>(tolower(static_cast<unsigned char>(*p)));
    bool known = false;
    for (const char *l = letters; *l != 0; ++l) known = known || *l == lower;
    if (!known) return *p;
  }
  return 0;
}

bool has_option(const char *options, char letter) {
  if (options == nullptr) return false;
  for (const char *p = options; *p != 0; ++p)
    if (tolower(static_cast<unsigned char>(*p)) == letter) return true;
  return false;
}

// A bracket still open after optimisation is abandoned: the saved handle
// is forgotten (the engine handle in use stays as the bracket set it) and
// the bracket's mutex is released so that a new bracket can open.
void close_open_bracket(MDLprob prob, const char *fn) {
  if (prob->savedkvsl == nullptr) return;
  mdlerror(nullptr, MDL_W_NOMATCH, fn, "begincb", "endcb");
  prob->savedkvsl = nullptr;
  pthread_mutex_unlock(&prob->mutex);
}

// LP state after lpoptimize: a solution when the engine holds one.
bool take_lp_state(MDLprob prob, int presolve) {
  prob->solcache = 0;
  release_rangeinfo(prob);
  if ((presolve & KVSL_SOLUTION_HELD) != 0) return take_solution(prob, KVSL_ATTR_LPOBJVAL);
  clear_solution(prob);
  return true;
}

// Common body of lpoptimize and mipoptimize.
int optimize(MDLprob prob, engine_run r, const char *options) {
  const run_kind &k = kind_of(r);
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, k.name);
    return 1;
  }
  if (char bad = unknown_option(options, k.letters)) {
    mdlerror(prob, MDL_E_SOLOPT, bad);
    return 1;
  }
  if ((prob->status & needs_load_mask) != 0 || (prob->status & MDL_ST_LOADED) == 0) {
    if (mdlloadmat_prob(prob) != 0) return 1;
  } else if (!has_option(options, 'c')) {
    if (engine_failed(prob, k.name, "postsolve", KVSLpostsolve(prob->kvsl))) return 1;
    prob->status &= ~static_cast<uint32_t>(MDL_ST_SOLUTION);
    prob->solcache = 0;
    release_rangeinfo(prob);
    const int sense = prob->sense == 1 ? 1 : -1;
    if (engine_failed(prob, k.name, "chgobjsense", KVSLchgobjsense(prob->kvsl, sense))) return 1;
  }
  if (engine_failed(prob, k.name, k.name, k.call(prob->kvsl, options != nullptr ? options : "")))
    return 1;
  close_open_bracket(prob, k.name);
  int presolve = 0;
  if (!int_attrib(prob, k.name, KVSL_ATTR_PRESOLVESTATE, &presolve)) {
    clear_solution(prob);
    return 1;
  }
  bool ok = r == engine_run::lp ? take_lp_state(prob, presolve) : refresh_solution_state(prob);
  if ((presolve & (KVSL_PRESOLVE_LP | KVSL_PRESOLVE_MIP)) != 0) prob->status |= MDL_ST_PRESOLVED;
  return ok ? 0 : 1;
}

// Common body of minim and maxim.
int optimize_sense(MDLprob prob, engine_run r, const char *options) {
  const run_kind &k = kind_of(r);
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, k.name);
    return 1;
  }
  prob->sense = r == engine_run::minim ? 1 : 2;
  if (char bad = unknown_option(options, k.letters)) {
    mdlerror(prob, MDL_E_SOLOPT, bad);
    return 1;
  }
  if ((prob->status & needs_load_mask) != 0 || (prob->status & MDL_ST_LOADED) == 0) {
    if (mdlloadmat_prob(prob) != 0) return 1;
  } else if (engine_failed(prob, k.name, "initglobal", KVSLinitglobal(prob->kvsl))) {
    return 1;
  }
  prob->status &= ~static_cast<uint32_t>(MDL_ST_SOLUTION);
  prob->solcache = 0;
  release_rangeinfo(prob);
  if (engine_failed(prob, k.name, k.name, k.call(prob->kvsl, options != nullptr ? options : "")))
    return 1;
  close_open_bracket(prob, k.name);
  bool ok = refresh_solution_state(prob);
  int cols = 0;
  if (!int_attrib(prob, k.name, KVSL_ATTR_COLS, &cols)) return 1;
  if (cols != prob->ncols) prob->status |= MDL_ST_PRESOLVED;
  return ok ? 0 : 1;
}

// Status code from attribute `attr`, its text printed at message level 4.
int status_of(MDLprob prob, const char *fn, const char *what, int attr,
              const char *const *texts, int ntexts) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, fn);
    return 0;
  }
  int code = 0;
  if (KVSLgetintattrib(prob->kvsl, attr, &code) != 0) {
    mdlerror(prob, MDL_E_GETSTATUS, what);
    return 0;
  }
  if (prob->msglevel > 3 && code >= 0 && code < ntexts) mdlprintf_prob(prob, "%s", translate(texts[code]));
  return code;
}

const char *const lp_status_texts[] = {
    "Problem has not been loaded.\n",      "Optimal LP solution found.\n",
    "LP is infeasible.\n",                 "LP objective worse than cutoff.\n",
    "LP is unfinished.\n",                 "LP is unbounded.\n",
    "LP has been cut off in dual.\n",      "LP problem is not solved.\n",
    "QP problem is not convex.\n",
};

const char *const mip_status_texts[] = {
    "Problem has not been loaded.\n",
    "LP has not been optimized.\n",
    "LP has been optimized.\n",
    "MIP search incomplete - no integer solution found.\n",
    "MIP search incomplete - an integer solution has been found.\n",
    "MIP search complete - no integer solution found.\n",
    "MIP search complete - an integer solution has been found.\n",
    "LP is unbounded.\n",
};

}  // namespace

bool refresh_solution_state(MDLprob prob) {
  prob->solcache = 0;
  release_rangeinfo(prob);
  int mipstatus = 0;
  if (KVSLgetintattrib(prob->kvsl, KVSL_ATTR_MIPSTATUS, &mipstatus) != 0) {
    clear_solution(prob);
    mdlerror(prob, MDL_E_GETSTATUS, "MIP");
    return false;
  }
  switch (mipstatus) {
    case KVSL_MIP_SOLUTION:
    case KVSL_MIP_OPTIMAL:
      prob->solcache = MDL_SC_MIP;
      return take_solution(prob, KVSL_ATTR_MIPOBJVAL);
    case KVSL_MIP_NO_SOL_FOUND:
    case KVSL_MIP_INFEAS:
    case KVSL_MIP_UNBOUNDED:
      clear_solution(prob);
      return true;
    case KVSL_MIP_NOT_LOADED:
    case KVSL_MIP_LP_NOT_OPTIMAL:
    case KVSL_MIP_LP_OPTIMAL: {
      int presolve = 0;
      if (!int_attrib(prob, "solution", KVSL_ATTR_PRESOLVESTATE, &presolve)) {
        clear_solution(prob);
        return false;
      }
      return take_lp_state(prob, presolve);
    }
    default:
      clear_solution(prob);
      mdlerror(prob, MDL_E_GETSTATUS, "solution");
      return false;
  }
}

}  // namespace kvtl

using namespace kvtl;

KVTL_API int mdllpoptimize_prob(MDLprob prob, const char *options) {
  return optimize(prob, engine_run::lp, options);
}

KVTL_API int mdlmipoptimize_prob(MDLprob prob, const char *options) {
  return optimize(prob, engine_run::mip, options);
}

KVTL_API int mdlminim_prob(MDLprob prob, const char *options) {
  return optimize_sense(prob, engine_run::minim, options);
}

KVTL_API int mdlmaxim_prob(MDLprob prob, const char *options) {
  return optimize_sense(prob, engine_run::maxim, options);
}

// Optimise in the stored sense.
KVTL_API int mdlsolve_prob(MDLprob prob, const char *options) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "solve");
    return 1;
  }
  return prob->sense == 1 ? mdlminim_prob(prob, options) : mdlmaxim_prob(prob, options);
}

// Take over the engine's LP (mode 1) or MIP (mode 3) solution, or mark the
// model modified (mode 2).  0 except for a null problem.
KVTL_API int mdlsync_prob(MDLprob prob, int mode) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "sync");
    return 1;
  }
  if (mode == 2) {
    prob->status |= MDL_ST_MODIFIED;
    return 0;
  }
  if (mode != 1 && mode != 3) return 0;
  prob->solcache = 0;
  release_rangeinfo(prob);
  if ((prob->status & MDL_ST_MODIFIED) == 0) {
    int value = 0;
    if (mode == 3) {
      if (int_attrib(prob, "sync", KVSL_ATTR_MIPSTATUS, &value) &&
          (value == KVSL_MIP_SOLUTION || value == KVSL_MIP_OPTIMAL)) {
        prob->solcache = MDL_SC_MIP;
        take_solution(prob, KVSL_ATTR_MIPOBJVAL);
        return 0;
      }
    } else if (int_attrib(prob, "sync", KVSL_ATTR_PRESOLVESTATE, &value) &&
               (value & KVSL_SOLUTION_HELD) != 0) {
      take_solution(prob, KVSL_ATTR_LPOBJVAL);
      return 0;
    }
  }
  clear_solution(prob);
  mdlerror(prob, MDL_W_NOSOL, "sync");
  return 0;
}

KVTL_API int mdlfixglobals_prob(MDLprob prob, int round) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "fixglobals");
    return 1;
  }
  if (engine_failed(prob, "fixglobals", "fixglobals", KVSLfixglobals(prob->kvsl, round))) return 1;
  prob->status &= ~static_cast<uint32_t>(MDL_ST_SOLUTION | MDL_ST_OUTSIDESOL);
  prob->solcache = 0;
  return 0;
}

KVTL_API int mdlgetlpstat_prob(MDLprob prob) {
  return status_of(prob, "getlpstat", "LP", KVSL_ATTR_LPSTATUS, lp_status_texts,
                   static_cast<int>(sizeof lp_status_texts / sizeof *lp_status_texts));
}

KVTL_API int mdlgetmipstat_prob(MDLprob prob) {
  return status_of(prob, "getmipstat", "MIP", KVSL_ATTR_MIPSTATUS, mip_status_texts,
                   static_cast<int>(sizeof mip_status_texts / sizeof *mip_status_texts));
}

KVTL_API MDLkvslprob mdlgetkvslprob_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "getkvslprob");
    return nullptr;
  }
  return prob->kvsl;
}
