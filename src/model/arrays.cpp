/*
 * arrays.cpp -- arrays of variables: complete and open creation, filling
 * and closing, deletion, size and name.
 */
#include "model/arrays.h"

#include <string.h>

#include "problem/names.h"
#include "problem/problem.h"

namespace kvtl {

namespace {

// Shown for the arrays of a problem that keeps no names.
constexpr const char *anon_name = "Anon";

// The array's name as applications and messages see it.
const char *array_name(const mdl_arrvar *block) {
  if (block->problem->dictsize < 1) return anon_name;
  return static_cast<const char *>(block->name);
}

// A zeroed block for `slots` variables, named through the dictionary or put
// on the entity list.  Null after reporting the failure (a null problem for
// the function `fn`), and quietly for no slots.
mdl_arrvar *new_block(MDLprob prob, int slots, const char *name, const char *fn) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, fn);
    return nullptr;
  }
  if (slots <= 0) return nullptr;
  size_t bytes = sizeof(mdl_arrvar) + static_cast<size_t>(slots) * sizeof(MDLvar);
  auto *block = static_cast<mdl_arrvar *>(mdlsl_malloc(bytes));
  if (block == nullptr) {
    mdlerror(prob, MDL_E_NOMEM);
    return nullptr;
  }
  memset(block, 0, bytes);
  block->problem = prob;
  if (prob->dictsize >= 1) {
    mdl_dict_entry *e = mdlnormname(prob, name, "AV", MDL_KIND_ARRVAR, block);
    if (e != nullptr) block->name = const_cast<char *>(e->name);
  } else {
    block->name = mdladdtodel(prob, MDL_KIND_ARRVAR, block);
  }
  if (block->name == nullptr) {
    mdlsl_free(block);
    return nullptr;
  }
  return block;
}

// Detach the block from its dictionary or entity-list entry and free it.
void free_block(mdl_arrvar *block) {
  MDLprob prob = block->problem;
  if (prob->dictsize >= 1) {
    const char *name = static_cast<const char *>(block->name);
    mdl_dict_entry *e = mdlfindname(prob, name, MDL_KIND_ARRVAR | MDL_FIND_LOOKUP);
    if (e != nullptr && e->entity == block) e->entity = nullptr;
  } else {
    static_cast<mdl_entity_entry *>(block->name)->entity = nullptr;
  }
  mdlsl_free(block);
}

// The checks shared by the two filling functions, in their order: a
// variable, an array, an open array.  The open block, or null after the
// report.
mdl_arrvar *open_block(MDLarrvar arr, MDLvar var, const char *fn) {
  if (var == nullptr) {
    mdlerror(arr != nullptr ? array_header(arr)->problem : nullptr, MDL_E_NOVAR, fn);
    return nullptr;
  }
  if (arr == nullptr) {
    mdlerror(var->problem, MDL_E_NOARRVAR, fn);
    return nullptr;
  }
  mdl_arrvar *block = array_header(arr);
  if (block->size > 0) {
    mdlerror(block->problem, MDL_E_ARRCLOSED, fn, array_name(block));
    return nullptr;
  }
  return block;
}

}  // namespace

}  // namespace kvtl

using namespace kvtl;

// Variables are made in order, each named after the array so the
// dictionary numbers them (x, x_1, x_2 ...).  When one cannot be made the
// array is released and null returned: a caller never sees an array with a
// hole (the variables made so far stay in the problem).
KVTL_API MDLarrvar mdlnewarrvar_prob(MDLprob prob, int size, int type, const char *name,
                                     double lb, double ub) {
  mdl_arrvar *block = new_block(prob, size, name, "newarrvar");
  if (block == nullptr) return nullptr;
  MDLarrvar slots = array_slots(block);
  const char *var_name = prob->dictsize >= 1 ? static_cast<const char *>(block->name) : nullptr;
  for (int i = 0; i < size; ++i) {
    slots[i] = mdlnewvar_prob(prob, var_name, type, lb, ub);
    if (slots[i] == nullptr) {
      free_block(block);
      return nullptr;
    }
  }
  block->size = size;
  return slots;
}

KVTL_API MDLarrvar mdlstartarrvar_prob(MDLprob prob, int capacity, const char *name) {
  mdl_arrvar *block = new_block(prob, capacity, name, "startarrvar");
  if (block == nullptr) return nullptr;
  block->size = -static_cast<int64_t>(capacity);
  return array_slots(block);
}

// The first empty slot of an open array takes the variable.
KVTL_API int mdlapparrvarel(MDLarrvar arr, MDLvar var) {
  mdl_arrvar *block = open_block(arr, var, "apparrvarel");
  if (block == nullptr) return 1;
  for (int64_t i = 0; i < -block->size; ++i) {
    if (arr[i] == nullptr) {
      arr[i] = var;
      return 0;
    }
  }
  mdlerror(block->problem, MDL_E_ARRFULL, "apparrvarel", display_name(var->name, var),
           array_name(block));
  return 1;
}

// A slot of an open array takes the variable, replacing any earlier one.
KVTL_API int mdlsetarrvarel(MDLarrvar arr, int position, MDLvar var) {
  mdl_arrvar *block = open_block(arr, var, "setarrvarel");
  if (block == nullptr) return 1;
  if (position < 0 || position >= -block->size) {
    mdlerror(block->problem, MDL_E_ARRINDEX, "setarrvarel", position, array_name(block),
             static_cast<int>(-block->size - 1));
    return 1;
  }
  arr[position] = var;
  return 0;
}

// Close an open array; every slot must be filled.
KVTL_API int mdlendarrvar(MDLarrvar arr) {
  if (arr == nullptr) {
    mdlerror(nullptr, MDL_E_NOARRVAR, "endarrvar");
    return 1;
  }
  mdl_arrvar *block = array_header(arr);
  if (block->size > 0) {
    mdlerror(block->problem, MDL_E_ARRCLOSED, "endarrvar", array_name(block));
    return 1;
  }
  for (int64_t i = 0; i < -block->size; ++i) {
    if (arr[i] == nullptr) {
      mdlerror(block->problem, MDL_E_ARRINCOMPLETE, "endarrvar", array_name(block));
      return 1;
    }
  }
  block->size = -block->size;
  return 0;
}

// The block goes; its variables stay in the problem.
KVTL_API int mdldelarrvar(MDLarrvar arr) {
  if (arr == nullptr) {
    mdlerror(nullptr, MDL_E_NOARRVAR, "delarrvar");
    return 1;
  }
  free_block(array_header(arr));
  return 0;
}

KVTL_API int mdlgetarrvarsize(MDLarrvar arr) {
  if (arr == nullptr) return -1;
  return static_cast<int>(array_header(arr)->size);
}

KVTL_API const char *mdlgetarrvarname(MDLarrvar arr) {
  if (arr == nullptr) return nullptr;
  return array_name(array_header(arr));
}
