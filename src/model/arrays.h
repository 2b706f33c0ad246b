/*
 * arrays.h -- the block of an array of variables: a three-word header
 * followed by the variable slots, whose address is the array's handle.
 */
#ifndef KVTL_MODEL_ARRAYS_H
#define KVTL_MODEL_ARRAYS_H

#include <stdint.h>

#include "kvtl.h"

struct mdl_problem;

// Header of an array block (from the allocator hook, not the pool); the
// variable slots follow it directly.
struct mdl_arrvar {
  mdl_problem *problem;
  void *name;      // name text, or the entity-list entry when names are off
  int64_t size;    // n when closed, -capacity while open
};
static_assert(sizeof(mdl_arrvar) == 3 * sizeof(void *), "the handle is the third slot on");

namespace kvtl {

inline mdl_arrvar *array_header(MDLarrvar arr) { return reinterpret_cast<mdl_arrvar *>(arr) - 1; }
inline MDLarrvar array_slots(mdl_arrvar *block) { return reinterpret_cast<MDLarrvar>(block + 1); }

}  // namespace kvtl

#endif
