/*
 * variables.cpp -- decision variables: creation with its checks, bounds,
 * limits and types (sent to a loaded matrix or marking the problem
 * modified), names, links, and the nearest feasible value to zero.
 */
#include <math.h>

#include "problem/names.h"
#include "problem/problem.h"

namespace kvtl {

namespace {

constexpr uint32_t max_vartype = MDL_VAR_SEMIINT;

// The name used in messages: stored or generated.
const char *var_name(const mdl_var *var) { return display_name(var->name, var); }

// A loaded, unmodified matrix can take a change of this column in place.
bool column_in_loaded_matrix(const mdl_var *var) {
  return var->column != no_number &&
         (var->problem->status & (MDL_ST_LOADED | MDL_ST_MODIFIED)) == MDL_ST_LOADED;
}

// After a bound change: straight to the engine when the matrix allows it,
// else mark the problem modified when only regeneration stood in the way.
void bound_changed(mdl_var *var, char bound_type, double value) {
  if (!column_in_loaded_matrix(var)) return;
  mdl_problem *prob = var->problem;
  if ((prob->status & MDL_ST_REGEN) == 0) {
    const int col = static_cast<int>(var->column);
    KVSLchgbounds(prob->kvsl, 1, &col, &bound_type, &value);
  } else {
    prob->status |= MDL_ST_MODIFIED;
  }
}

// A binary's bound clamped into [0,1] (NaN becomes 0).
double clamp_binary(double v) {
  if (!(v >= 0)) return 0;
  return v > 1 ? 1 : v;
}

// Nearest feasible value to zero of an integer (also of a partial integer
// with lb not above 0); true when zero itself is feasible.
bool integer_zero_feasible(double lb, double ub, double *value) {
  if (lb > 0) {
    double r = ceil(lb);
    *value = !(r > ub) ? r : lb;
    return false;
  }
  if (!(ub < 0)) return true;
  double r = floor(ub);
  *value = !(lb > r) ? r : ub;
  return false;
}

// Semi-continuous with lb not above 0: zero unless ub is negative.
bool semi_zero_feasible(double ub, double *value) {
  if (!(ub < 0)) return true;
  *value = ub;
  return false;
}

// The larger of two values; b when they are unordered (NaN).
double larger(double a, double b) { return a > b ? a : b; }

}  // namespace

}  // namespace kvtl

using namespace kvtl;

// Checks (problem, bounds, type) precede any allocation; the record is
// named through the dictionary, or put on the entity list with a private
// copy of its name when the problem keeps no names.
KVTL_API MDLvar mdlnewvar_prob(MDLprob prob, const char *name, int type, double lb, double ub) {
  const char *shown = name != nullptr ? name : "";
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "newvar");
    return nullptr;
  }
  if (ub < lb) {
    mdlerror(prob, MDL_E_VARBOUNDS, "newvar", shown, lb, ub);
    return nullptr;
  }
  if (static_cast<uint32_t>(type) > max_vartype) {
    mdlerror(prob, MDL_E_VARTYPE, "newvar", shown);
    return nullptr;
  }
  auto *var = problem_chunk<mdl_var, true>(prob);
  if (var == nullptr) return nullptr;
  var->column = no_number;
  if (prob->dictsize >= 1) {
    mdl_dict_entry *e = mdlnormname(prob, name, "VAR", MDL_KIND_VAR, var);
    if (e == nullptr) {
      mdlrecyclemem(prob, var, sizeof(mdl_var));
      return nullptr;
    }
    var->name = e->name;
  } else {
    mdl_entity_entry *e = mdladdtodel(prob, MDL_KIND_VAR, var);
    if (e == nullptr) {
      mdlrecyclemem(prob, var, sizeof(mdl_var));
      return nullptr;
    }
    var->name = mdlstrdup(prob, name);
    if (var->name == nullptr && name != nullptr && *name != '\0') {
      prob->entities = e->next;
      mdlrecyclemem(prob, e, sizeof(mdl_entity_entry));
      mdlrecyclemem(prob, var, sizeof(mdl_var));
      return nullptr;
    }
  }
  if (type == MDL_VAR_BIN) {
    lb = clamp_binary(lb);
    ub = clamp_binary(ub);
  }
  var->lb = lb;
  var->ub = ub;
  var->problem = prob;
  var->type = static_cast<uint32_t>(type);
  var->limit = 1.0;
  var->serial = static_cast<uint32_t>(prob->varcount++);
  return var;
}

// A type change only marks a loaded problem modified; bounds stay as they
// are, even for a new binary.
KVTL_API int mdlsetvartype(MDLvar var, int type) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "setvartype");
    return 1;
  }
  if (static_cast<uint32_t>(type) > max_vartype) {
    mdlerror(var->problem, MDL_E_VARTYPE, "setvartype", var_name(var));
    return 1;
  }
  if (static_cast<uint32_t>(type) != var->type) {
    var->type = static_cast<uint32_t>(type);
    if (var->column != no_number) var->problem->status |= MDL_ST_MODIFIED;
  }
  return 0;
}

// The type code, or -1 for no variable.
KVTL_API int mdlgetvartype(MDLvar var) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "getvartype");
    return -1;
  }
  return static_cast<int>(var->type);
}

// New lower bound, accepted when not above the upper bound.
KVTL_API int mdlsetlb(MDLvar var, double value) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "setlb");
    return 1;
  }
  if (!(value <= var->ub)) {
    mdlerror(var->problem, MDL_E_VARBOUNDS, "setlb", var_name(var), value, var->ub);
    return 1;
  }
  if (value == var->lb) return 0;
  var->lb = value;
  bound_changed(var, 'L', value);
  return 0;
}

// New upper bound, accepted when not below the lower bound.
KVTL_API int mdlsetub(MDLvar var, double value) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "setub");
    return 1;
  }
  if (!(var->lb <= value)) {
    mdlerror(var->problem, MDL_E_VARBOUNDS, "setub", var_name(var), var->lb, value);
    return 1;
  }
  if (value == var->ub) return 0;
  var->ub = value;
  bound_changed(var, 'U', value);
  return 0;
}

// Both bounds to the value, without a consistency check.
KVTL_API int mdlfixvar(MDLvar var, double value) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "fixvar");
    return 1;
  }
  if (value == var->lb && value == var->ub) return 0;
  var->lb = value;
  var->ub = value;
  bound_changed(var, 'B', value);
  return 0;
}

// Both bounds, into whichever of the two pointers is not null.
KVTL_API int mdlgetbounds(MDLvar var, double *lb, double *ub) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "getbounds");
    return 1;
  }
  if (lb != nullptr) *lb = var->lb;
  if (ub != nullptr) *ub = var->ub;
  return 0;
}

// The limit of a partial integer or semi-continuous variable; other types
// are warned about and left alone (still a success), a value outside
// [max(lb,0), ub] is warned about and stored.  The engine takes it at once
// when the matrix allows, else the problem is marked modified.
KVTL_API int mdlsetlim(MDLvar var, double value) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "setlim");
    return 1;
  }
  mdl_problem *prob = var->problem;
  if (var->type < MDL_VAR_PINT || var->type > MDL_VAR_SEMIINT) {
    mdlerror(prob, MDL_W_LIMTYPE, "setlim", var_name(var));
    return 0;
  }
  if (value == var->limit) return 0;
  if (!(value >= var->lb && value <= var->ub && value >= 0))
    mdlerror(prob, MDL_W_LIMBOUNDS, "setlim", value, var_name(var), var->lb, var->ub);
  var->limit = value;
  if (column_in_loaded_matrix(var) && (prob->status & MDL_ST_REGEN) == 0) {
    const int col = static_cast<int>(var->column);
    KVSLchgglblimit(prob->kvsl, 1, &col, &value);
  } else {
    prob->status |= MDL_ST_MODIFIED;
  }
  return 0;
}

// The limit (1.0 unless set), when the pointer is not null.
KVTL_API int mdlgetlim(MDLvar var, double *value) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "getlim");
    return 1;
  }
  if (value != nullptr) *value = var->limit;
  return 0;
}

// Column of the loaded matrix, -1 without one.
KVTL_API int mdlgetcolnum(MDLvar var) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "getcolnum");
    return -1;
  }
  return var->column == no_number ? -1 : static_cast<int>(var->column);
}

// Stored name, or the generated one (valid until the name ring wraps).
KVTL_API const char *mdlgetvarname(MDLvar var) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "getvarname");
    return nullptr;
  }
  return var_name(var);
}

// A missing variable is only a warning here.
KVTL_API int mdlgetvarstat(MDLvar var) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_W_NOVAR, "getvarstat");
    return 0;
  }
  return (var->problem->status & MDL_ST_SOLUTION) != 0 && var->column != no_number ? 1 : 0;
}

// The application's value kept with the variable (touches no status).
KVTL_API int mdlsetvarlink(MDLvar var, void *link) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "setvarlink");
    return 1;
  }
  var->link = link;
  return 0;
}

// The application's value, null when unset or for no variable.
KVTL_API void *mdlgetvarlink(MDLvar var) {
  if (var == nullptr) {
    mdlerror(nullptr, MDL_E_NOVAR, "getvarlink");
    return nullptr;
  }
  return var->link;
}

// 1 when zero is a feasible value of the variable (bounds, type, limit);
// otherwise 0 with the feasible value nearest to zero in *value.
KVTL_API int mdlisvarzerofeas(MDLvar var, double *value) {
  const double lb = var->lb, ub = var->ub, limit = var->limit;
  double v = 0;
  bool zero = true;
  switch (var->type) {
    case MDL_VAR_CONT:
      if (lb > 0) {
        v = lb;
        zero = false;
      } else if (ub < 0) {
        v = ub;
        zero = false;
      }
      break;
    case MDL_VAR_BIN:
      if (lb > 0) {
        v = lb >= 1 || ub >= 1 ? 1.0 : lb;
        zero = false;
      }
      break;
    case MDL_VAR_INT:
      zero = integer_zero_feasible(lb, ub, &v);
      break;
    case MDL_VAR_PINT:
      if (lb > 0) {
        double r = ceil(lb);
        if (limit < r) r = !(lb > limit) ? limit : lb;
        v = !(r > ub) ? r : lb;
        zero = false;
      } else {
        zero = integer_zero_feasible(lb, ub, &v);
      }
      break;
    case MDL_VAR_SEMI:
      if (lb > 0) {
        v = larger(limit, lb);
        zero = false;
      } else {
        zero = semi_zero_feasible(ub, &v);
      }
      break;
    case MDL_VAR_SEMIINT:
      if (lb > 0) {
        double r = ceil(larger(lb, limit));
        v = !(r > ub) ? r : lb;
        zero = false;
      } else {
        zero = semi_zero_feasible(ub, &v);
      }
      break;
    default:
      break;
  }
  if (zero) return 1;
  if (value != nullptr) *value = v;
  return 0;
}
