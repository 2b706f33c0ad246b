/*
 * records.h -- layouts of the model records: variables, constraints, special
 * ordered sets and branching directives.
 */
#ifndef KVTL_MODEL_RECORDS_H
#define KVTL_MODEL_RECORDS_H

#include <stdint.h>

#include "expr/termlist_types.h"

struct mdl_problem;

namespace kvtl {
constexpr uint32_t no_number = 0x1FFFFFFF;   // no column / no row
// Letters of set types (0, 1), variable types (+2) and constraint types (+8).
constexpr char type_letters[] = "12 BIPSRNLGER";
}  // namespace kvtl

enum mdl_vartype : uint32_t {
  MDL_VAR_CONT = 0, MDL_VAR_BIN = 1, MDL_VAR_INT = 2, MDL_VAR_PINT = 3,
  MDL_VAR_SEMI = 4, MDL_VAR_SEMIINT = 5
};
enum mdl_ctrtype : uint32_t {
  MDL_CTR_N = 0, MDL_CTR_L = 1, MDL_CTR_G = 2, MDL_CTR_E = 3, MDL_CTR_R = 4
};

// Variables are at least 8-byte aligned: indicator modes and bases use the
// low bits of their handles.
struct alignas(8) mdl_var {
  uint32_t column : 29;   // column in the loaded matrix, no_number if none
  uint32_t type : 3;
  uint32_t serial;        // creation number within the problem
  const char *name;
  mdl_problem *problem;
  void *link;             // the application's value
  double lb;
  double ub;
  double limit;           // partial integer / semi-continuous limit
};

// Constraint `mode`: 0 standard, 1 model cut, 2 delayed row, 3 include-vars;
// larger values are indicator constraints: the variable's handle, low bit
// set when the row holds for the variable at 1.
enum : uintptr_t {
  MDL_MODE_STD = 0, MDL_MODE_MODCUT = 1, MDL_MODE_DELAYED = 2,
  MDL_MODE_INCVARS = 3
};

struct alignas(8) mdl_ctr {
  uint32_t row : 29;      // row in the loaded matrix, no_number if none
  uint32_t type : 3;
  const char *name;
  uintptr_t mode;
  mdl_problem *problem;
  double range;           // width of a range constraint, else 0
  mdl_expr expr;          // terms + constant (rhs = -constant)
  mdl_ctr *next;
};

struct mdl_sos {
  uint32_t index : 29;    // set number from 1 once loaded, 0 if not
  uint32_t type : 3;      // 0 type 1, 1 type 2
  const char *name;
  mdl_problem *problem;
  mdl_termlst *elements;  // members with their weights
  mdl_sos *next;
};

// Directive kinds 1..5 (priority, up, down, up pseudo cost, down pseudo
// cost), plus flag 16 when the target is a set.
constexpr uint32_t MDL_DIR_SOSFLAG = 16;
struct mdl_dir {
  uint32_t kind;
  void *target;
  double value;
  mdl_dir *next;
};

#endif
