/*
 * idxsets.cpp -- index sets: creation, adding and finding elements through
 * the problem's element-name dictionary, element tables, printing.
 */
#include "problem/idxsets.h"

#include <stdlib.h>
#include <string.h>

#include "problem/names.h"
#include "problem/problem.h"

namespace kvtl {

namespace {

constexpr int32_t min_capacity = 5;

// Report a null set for the function `fn` (error 1550); true when none.
bool no_idxset(mdl_idxset *set, const char *fn) {
  if (set != nullptr) return false;
  mdlerror(nullptr, MDL_E_NOIDX, fn);
  return true;
}

mdl_idxname **buckets_of(MDLprob prob) { return static_cast<mdl_idxname **>(prob->idxdict); }

// Pool size of an element name copy.
size_t name_copy_size(const char *name) {
  size_t n = strlen(name);
  return n + 1 <= 8 ? 8 : (n + 4) & ~static_cast<size_t>(3);
}

// A pool copy of an element name (the empty name included).
char *copy_element_name(MDLprob prob, const char *name) {
  size_t size = name_copy_size(name);
  auto *copy = static_cast<char *>(mdlallocmem(prob, size, 0));
  if (copy != nullptr) memcpy(copy, name, strlen(name) + 1);
  return copy;
}

// A zeroed bucket array of `count` buckets from the allocator hook;
// null after reporting 1502.
mdl_idxname **new_buckets(MDLprob prob, int32_t count) {
  size_t bytes = static_cast<size_t>(count) * sizeof(mdl_idxname *);
  auto **b = static_cast<mdl_idxname **>(mdlsl_malloc(bytes));
  if (b == nullptr) {
    mdlerror(prob, MDL_E_NOMEM);
    return nullptr;
  }
  memset(b, 0, bytes);
  return b;
}

// Double the element-name buckets; each chain is reversed first and then
// pushed entry by entry, so entries keep their relative order.
bool grow_buckets(MDLprob prob) {
  int32_t old_count = prob->idxdictsize;
  int32_t new_count = old_count * 2;
  mdl_idxname **fresh = new_buckets(prob, new_count);
  if (fresh == nullptr) return false;
  mdl_idxname **old = buckets_of(prob);
  for (int32_t b = 0; b < old_count; ++b) {
    mdl_idxname *reversed = nullptr;
    for (mdl_idxname *e = old[b], *next; e != nullptr; e = next) {
      next = e->next;
      e->next = reversed;
      reversed = e;
    }
    for (mdl_idxname *e = reversed, *next; e != nullptr; e = next) {
      next = e->next;
      uint32_t nb = name_hash(e->name) & static_cast<uint32_t>(new_count - 1);
      e->next = fresh[nb];
      fresh[nb] = e;
    }
  }
  mdlsl_free(old);
  prob->idxdict = fresh;
  prob->idxdictsize = new_count;
  return true;
}

// Make room for one more element.  The table was obtained from the
// allocator hook; with the default hooks it grows in place with realloc,
// otherwise through the hooks themselves so the pair always matches.
bool grow_table(mdl_idxset *set) {
  if (set->capacity > INT32_MAX - idx_growth) {
    mdlerror(set->problem, MDL_E_NOMEM);
    return false;
  }
  int32_t capacity = set->capacity + idx_growth;
  size_t bytes = static_cast<size_t>(capacity) * sizeof(const char *);
  const char **table;
  if (mdlsl_malloc == malloc && mdlsl_free == free) {
    table = static_cast<const char **>(realloc(set->elements, bytes));
  } else {
    table = static_cast<const char **>(mdlsl_malloc(bytes));
    if (table != nullptr) {
      memcpy(table, set->elements, static_cast<size_t>(set->capacity) * sizeof(const char *));
      mdlsl_free(set->elements);
    }
  }
  if (table == nullptr) {
    mdlerror(set->problem, MDL_E_NOMEM);
    return false;
  }
  memset(table + set->capacity, 0, static_cast<size_t>(idx_growth) * sizeof(const char *));
  set->elements = table;
  set->capacity = capacity;
  return true;
}

// Position of `set` in the membership list of an element name, or -1.
int32_t member_position(const mdl_idxname *entry, const mdl_idxset *set) {
  for (const mdl_idxmember *m = entry->members; m != nullptr; m = m->next)
    if (m->set == set) return m->position;
  return -1;
}

// Shared part of adding and finding: the position of `name` in `set`, or
// -1; when `add` is set a name not yet in the set is appended.  Nothing is
// linked in before every allocation has succeeded, so a failure leaves the
// set and the dictionary as they were (apart from a doubled bucket array).
int element(mdl_idxset *set, const char *name, bool add, const char *fn) {
  if (no_idxset(set, fn)) return -1;
  MDLprob prob = set->problem;
  if (name == nullptr) {
    mdlerror(prob, MDL_W_IDXNONAME, fn);
    return -1;
  }
  uint32_t hash = name_hash(name);
  mdl_idxname *entry = buckets_of(prob)[hash & static_cast<uint32_t>(prob->idxdictsize - 1)];
  while (entry != nullptr && strcmp(entry->name, name) != 0) entry = entry->next;
  if (entry != nullptr) {
    int32_t position = member_position(entry, set);
    if (position >= 0 || !add) return position;
  } else if (!add) {
    return -1;
  }

  mdl_idxname *fresh = nullptr;
  char *copy = nullptr;
  if (entry == nullptr) {
    // The new name would make more names than buckets: double first.
    if (prob->nidxnames >= prob->idxdictsize && !grow_buckets(prob)) return -1;
    fresh = static_cast<mdl_idxname *>(mdlallocmem(prob, sizeof(mdl_idxname), 1));
    if (fresh == nullptr) return -1;
    copy = copy_element_name(prob, name);
    if (copy == nullptr) {
      mdlrecyclemem(prob, fresh, sizeof(mdl_idxname));
      return -1;
    }
    fresh->name = copy;
  }
  auto *member = static_cast<mdl_idxmember *>(mdlallocmem(prob, sizeof(mdl_idxmember), 1));
  if (member == nullptr || (set->size == set->capacity && !grow_table(set))) {
    if (member != nullptr) mdlrecyclemem(prob, member, sizeof(mdl_idxmember));
    if (fresh != nullptr) {
      mdlrecyclemem(prob, copy, name_copy_size(copy));
      mdlrecyclemem(prob, fresh, sizeof(mdl_idxname));
    }
    return -1;
  }
  if (fresh != nullptr) {
    mdl_idxname **bucket =
        &buckets_of(prob)[hash & static_cast<uint32_t>(prob->idxdictsize - 1)];
    fresh->next = *bucket;
    *bucket = fresh;
    prob->nidxnames++;
    entry = fresh;
  }
  member->set = set;
  member->position = set->size;
  member->next = entry->members;
  entry->members = member;
  set->elements[set->size] = entry->name;
  return set->size++;
}

// Clear the entity of a set being given back from its dictionary entry or
// its entity-list entry.
void forget_entity(mdl_dict_entry *named, mdl_entity_entry *listed) {
  if (named != nullptr) named->entity = nullptr;
  if (listed != nullptr) listed->entity = nullptr;
}

}  // namespace

void release_idxset(mdl_idxset *set) {
  if (set->elements != nullptr) mdlsl_free(set->elements);
  set->elements = nullptr;
}

}  // namespace kvtl

using namespace kvtl;

// A new empty set with room for `size` elements (at least 5).  Names off:
// the set goes on the entity list and has no name.  The element-name
// dictionary is made with the first set of the problem.
KVTL_API MDLidxset mdlnewidxset_prob(MDLprob prob, const char *name, int size) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "newidxset");
    return nullptr;
  }
  auto *set = static_cast<mdl_idxset *>(mdlallocmem(prob, sizeof(mdl_idxset), 1));
  if (set == nullptr) return nullptr;
  mdl_dict_entry *named = nullptr;
  mdl_entity_entry *listed = nullptr;
  if (prob->dictsize < 1) {
    listed = mdladdtodel(prob, MDL_KIND_IDX, set);
  } else {
    named = mdlnormname(prob, name, "IDX", MDL_KIND_IDX, set);
    if (named != nullptr) set->name = named->name;
  }
  bool ok = named != nullptr || listed != nullptr;
  if (ok) {
    set->problem = prob;
    set->capacity = size < min_capacity ? min_capacity : size;
    size_t bytes = static_cast<size_t>(set->capacity) * sizeof(const char *);
    set->elements = static_cast<const char **>(mdlsl_malloc(bytes));
    if (set->elements != nullptr) memset(set->elements, 0, bytes);
    ok = set->elements != nullptr;
    if (!ok) mdlerror(prob, MDL_E_NOMEM);
  }
  if (ok && prob->idxdict == nullptr) {
    prob->idxdict = new_buckets(prob, prob->idxdictsize);
    ok = prob->idxdict != nullptr;
  }
  if (!ok) {
    if (set->elements != nullptr) mdlsl_free(set->elements);
    forget_entity(named, listed);
    mdlrecyclemem(prob, set, sizeof(mdl_idxset));
    return nullptr;
  }
  return set;
}

// Position of `name` in the set, appended at the end when it is new.
KVTL_API int mdladdidxel(MDLidxset set, const char *name) {
  return element(set, name, true, "addidxel");
}

// Position of `name` in the set, or -1; never adds.
KVTL_API int mdlgetidxel(MDLidxset set, const char *name) {
  return element(set, name, false, "getidxel");
}

KVTL_API int mdlgetidxsetsize(MDLidxset set) {
  if (no_idxset(set, "getidxsetsize")) return -1;
  return set->size;
}

// The set's name, or the generated one of a set without a stored name.
KVTL_API const char *mdlgetidxsetname(MDLidxset set) {
  if (no_idxset(set, "getidxsetname")) return nullptr;
  return display_name(set->name, set);
}

// The element at a position; null (silently) outside 0 .. size - 1.
KVTL_API const char *mdlgetidxelname(MDLidxset set, int position) {
  if (no_idxset(set, "getidxelname")) return nullptr;
  if (position < 0 || position >= set->size) return nullptr;
  return set->elements[position];
}

// "name: e1 e2 ...", wrapped once a line holds more than 75 characters.
KVTL_API int mdlprintidxset(MDLidxset set) {
  if (set == nullptr) {
    mdlerror(nullptr, MDL_W_NOIDX, "printidxset");
    return 1;
  }
  MDLprob prob = set->problem;
  const char *name = display_name(set->name, set);
  mdlprintf_prob(prob, "%s: ", name);
  size_t column = strlen(name) + 2;
  for (int32_t i = 0; i < set->size; ++i) {
    if (column > 75) {
      mdlprintf_prob(prob, "\n");
      column = 0;
    }
    mdlprintf_prob(prob, "%s ", set->elements[i]);
    column += strlen(set->elements[i]) + 1;
  }
  mdlprintf_prob(prob, "\n");
  return 0;
}
