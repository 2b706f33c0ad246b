/*
 * names.h -- the name dictionary of a problem (chained hash table keyed by
 * name and kind) and the entity list that replaces it when names are off.
 */
#ifndef KVTL_PROBLEM_NAMES_H
#define KVTL_PROBLEM_NAMES_H

#include <stddef.h>
#include <stdint.h>

#include "kvtl.h"

// One dictionary entry: a name used by one kind of entity.
struct mdl_dict_entry {
  uint32_t word;                // bits 0-2 kind, bits 3-31 suffix counter
  uint32_t hash;                // name_hash of the name: probes and doubling
                                // compare and rehash without reading names
  const char *name;             // shared by every entry of the same name
  void *entity;                 // null while only reserved
  mdl_dict_entry *next;         // next in bucket
  mdl_dict_entry *samename;     // older entry of the same name, other kind
};

// Entity list entry (names switched off): lets deletion visit every entity.
struct mdl_entity_entry {
  uint32_t kind;
  void *entity;
  mdl_entity_entry *next;
};

namespace kvtl {

constexpr uint32_t kind_mask = 7;
constexpr uint32_t find_create = 8;
constexpr uint32_t find_lookup = 16;

inline uint32_t entry_kind(const mdl_dict_entry *e) { return e->word & kind_mask; }
inline uint32_t entry_suffix(const mdl_dict_entry *e) { return e->word >> 3; }

// The dictionary hash of a name (a 32-bit integer mix applied to each
// little-endian 4-byte group; a short last group is zero-padded).
uint32_t name_hash(const char *name);

// The name to show for an object: its stored name, or the generated name
// of its handle in the calling thread's name ring buffer.
const char *display_name(const char *name, const void *handle);

}  // namespace kvtl

#endif
