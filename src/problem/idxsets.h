/*
 * idxsets.h -- index sets: ordered, growable sets of element names that map
 * names to dense positions, sharing one element-name dictionary per problem.
 */
#ifndef KVTL_PROBLEM_IDXSETS_H
#define KVTL_PROBLEM_IDXSETS_H

#include <stdint.h>

#include "kvtl.h"

struct mdl_problem;

struct mdl_idxset {
  const char *name;          // dictionary name; null when names are off
  mdl_problem *problem;
  int32_t capacity;          // slots of the element table
  int32_t size;              // elements stored
  const char **elements;     // position -> element name (shared text)
};

// One index set that contains an element name, with the name's position.
struct mdl_idxmember {
  mdl_idxset *set;
  int32_t position;
  mdl_idxmember *next;       // next set holding the same name
};

// One element name of a problem, stored once for all its index sets.
struct mdl_idxname {
  const char *name;
  mdl_idxmember *members;    // newest membership first
  mdl_idxname *next;         // next in bucket
};

namespace kvtl {

// Slots added to an element table each time it is full.
constexpr int32_t idx_growth = 5;

// Free what an index set holds outside the pool (its element table); used
// when the problem goes away.
void release_idxset(mdl_idxset *set);

}  // namespace kvtl

#endif
