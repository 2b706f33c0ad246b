/*
 * names.cpp -- the name dictionary: hashing, find-or-create by name and
 * kind, unique names with "_n" suffixes, look-up, the entity list, and the
 * per-thread name ring buffer.
 */
#include "problem/names.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include <bit>
#include <new>
#include <string>

#include "core/runtime.h"
#include "problem/name_format.h"
#include "problem/problem.h"

namespace kvtl {

// The hash reads names a word at a time as little-endian words, and the
// stored hash sits in what would otherwise be padding after the word.
static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(mdl_dict_entry) == 40);

namespace {

constexpr size_t ring_wrap = 384;        // restart the ring from here on
constexpr int name_max = 127;            // longest formatted name
constexpr size_t array_header_slots = 3; // problem, name, size

// Mix one 4-byte word into the running hash (Thomas Wang's integer mix).
uint32_t wang_mix(uint32_t h, uint32_t w) {
  uint32_t x = h ^ w;
  x = (x << 15) + ~x;
  x ^= x >> 12;
  x *= 5;
  x ^= x >> 4;
  x *= 2057;
  return x ^ (x >> 16);
}

// A pool copy of a name (the empty name included, unlike mdlstrdup).
char *copy_name(MDLprob prob, const char *name) {
  size_t n = strlen(name);
  size_t size = n + 1 <= 8 ? 8 : (n + 4) & ~static_cast<size_t>(3);
  auto *copy = static_cast<char *>(mdlallocmem(prob, size, 0));
  if (copy != nullptr) memcpy(copy, name, n + 1);
  return copy;
}

// Bucket array and tag array in one block: `count` chain heads, then one
// 16-bit tag per bucket.  A tag has bits (hash >> 28) and (hash >> 24) & 15
// set for every entry of its chain, so a probe for a name that is absent
// usually ends at the tag, without following the chain into entries
// scattered over the pool: a one-entry chain lets about one absent name in
// 64 through, against one in 16 with a single bit.
size_t table_bytes(size_t count) { return count * (sizeof(void *) + sizeof(uint16_t)); }
uint16_t *tags_of(mdl_dict_entry **dict, int32_t count) {
  return reinterpret_cast<uint16_t *>(dict + count);
}
uint16_t tag_bits(uint32_t hash) {
  return static_cast<uint16_t>((1u << (hash >> 28)) | (1u << ((hash >> 24) & 15)));
}

// How many buckets ahead the doubling prefetches the chain heads.
constexpr size_t prefetch_distance = 8;

// Double the bucket array; chains keep their order in the new buckets.
// Bucket b of the old table splits into buckets b and b + old count of the
// new one, so each old chain is split in order into two chains (the same
// chains as pushing the reversed old chain entry by entry).
bool grow_dictionary(MDLprob prob) {
  const size_t old_count = static_cast<size_t>(prob->dictsize);
  const size_t new_count = old_count * 2;
  auto **buckets = static_cast<mdl_dict_entry **>(mdlsl_malloc(table_bytes(new_count)));
  if (buckets == nullptr) {
    mdlerror(prob, MDL_E_NOMEM);
    return false;
  }
  uint16_t *tags = tags_of(buckets, static_cast<int32_t>(new_count));
  mdl_dict_entry **old = prob->dict;
  for (size_t b = 0; b < old_count; ++b) {
    // The chains are walked in bucket order but their entries lie anywhere
    // in the pool: fetch the heads of the next chains meanwhile.
    if (b + prefetch_distance < old_count) __builtin_prefetch(old[b + prefetch_distance]);
    mdl_dict_entry *low = nullptr, *high = nullptr;
    mdl_dict_entry **low_end = &low, **high_end = &high;
    uint16_t low_tag = 0, high_tag = 0;
    for (mdl_dict_entry *e = old[b]; e != nullptr; e = e->next) {
      if ((e->hash & old_count) == 0) {
        *low_end = e;
        low_end = &e->next;
        low_tag |= tag_bits(e->hash);
      } else {
        *high_end = e;
        high_end = &e->next;
        high_tag |= tag_bits(e->hash);
      }
    }
    *low_end = nullptr;
    *high_end = nullptr;
    buckets[b] = low;
    buckets[b + old_count] = high;
    tags[b] = low_tag;
    tags[b + old_count] = high_tag;
  }
  mdlsl_free(old);
  prob->dict = buckets;
  prob->dictsize = static_cast<int32_t>(new_count);
  return true;
}

// Put `e` (its hash set) at the front of bucket b.
void push_entry(MDLprob prob, uint32_t b, mdl_dict_entry *e) {
  e->next = prob->dict[b];
  prob->dict[b] = e;
  tags_of(prob->dict, prob->dictsize)[b] |= tag_bits(e->hash);
}

// Format into the calling thread's name ring; null when the text does not
// fit in 127 characters (the cut text is then left in `*cut`).
const char *ring_format(const char **cut, const char *format, va_list ap) {
  thread_context *ctx = context();
  if (static_cast<size_t>(ctx->name_cursor - ctx->name_ring) >= ring_wrap)
    ctx->name_cursor = ctx->name_ring;
  char *text = ctx->name_cursor;
  // Names are mostly text and integers: those are formatted directly, and
  // only other formats go through the C library's vsnprintf.
  int n = format_name(text, name_max + 1, format, ap);
  if (n < 0) n = vsnprintf(text, name_max + 1, format, ap);
  if (n < 0 || n > name_max) {
    *cut = text;
    return nullptr;
  }
  ctx->name_cursor = text + n + 1;
  return text;
}

}  // namespace

uint32_t name_hash(const char *name) {
  uint32_t h = 0;
  const char *p = name;
  size_t n = strlen(name);
  // Whole groups are read a word at a time (little-endian: first byte
  // lowest); the short last group is zero-padded.
  for (; n >= 4; n -= 4, p += 4) {
    uint32_t w;
    memcpy(&w, p, 4);
    h = wang_mix(h, w);
  }
  if (n > 0) {
    uint32_t w = 0;
    memcpy(&w, p, n);
    h = wang_mix(h, w);
  }
  return h;
}

const char *display_name(const char *name, const void *handle) {
  if (name != nullptr) return name;
  char buf[24];
  return mdlnewname("%s", mdlmktn(buf, handle));
}

}  // namespace kvtl

using namespace kvtl;

// Find `name` with the kind in flags bits 0-2; flag 16 without flag 8 only
// looks up (kind 0: the newest entry of that name), otherwise a missing
// entry is created, reserved (entity null).  Null on failure (reported) or
// when the problem keeps no names.
KVTL_API mdl_dict_entry *mdlfindname(MDLprob prob, const char *name, int flags) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "findname");
    return nullptr;
  }
  if (name == nullptr || prob->dictsize < 1) return nullptr;
  const uint32_t kind = static_cast<uint32_t>(flags) & kind_mask;
  const bool lookup_only = (flags & find_lookup) != 0 && (flags & find_create) == 0;
  if (prob->dict == nullptr) {
    size_t bytes = table_bytes(static_cast<size_t>(prob->dictsize));
    prob->dict = static_cast<mdl_dict_entry **>(mdlsl_malloc(bytes));
    if (prob->dict == nullptr) {
      mdlerror(prob, MDL_E_NOMEM);
      return nullptr;
    }
    memset(prob->dict, 0, bytes);
  }
  const uint32_t hash = name_hash(name);
  uint32_t b = hash & static_cast<uint32_t>(prob->dictsize - 1);
  // The chain head is needed to walk or to push; load it beside the tag.
  __builtin_prefetch(&prob->dict[b], 1);
  mdl_dict_entry *first = nullptr;
  const uint16_t bits = tag_bits(hash);
  if ((tags_of(prob->dict, prob->dictsize)[b] & bits) == bits) {
    first = prob->dict[b];
    while (first != nullptr && (first->hash != hash || strcmp(first->name, name) != 0))
      first = first->next;
  }

  if (first != nullptr) {
    if (lookup_only && kind == 0) return first;
    for (mdl_dict_entry *e = first; e != nullptr; e = e->samename)
      if (entry_kind(e) == kind) return e;
    if (lookup_only) return nullptr;
    auto *e = problem_chunk<mdl_dict_entry, true>(prob);
    if (e == nullptr) return nullptr;
    e->word = kind;
    e->hash = hash;
    e->name = first->name;
    e->samename = first;
    push_entry(prob, b, e);
    return e;
  }
  if (lookup_only) return nullptr;
  // The new name would make more names than buckets: double first.
  if (prob->nnames >= prob->dictsize) {
    if (!grow_dictionary(prob)) return nullptr;
    b = hash & static_cast<uint32_t>(prob->dictsize - 1);
  }
  auto *e = problem_chunk<mdl_dict_entry, true>(prob);
  if (e == nullptr) return nullptr;
  char *copy = copy_name(prob, name);
  if (copy == nullptr) {
    mdlrecyclemem(prob, e, sizeof(mdl_dict_entry));
    return nullptr;
  }
  e->word = kind;
  e->hash = hash;
  e->name = copy;
  push_entry(prob, b, e);
  prob->nnames++;
  return e;
}

// Enter `entity` under `name` (or `prefix` when the name is null or empty);
// a taken name gets "_n" appended, n counting per name, until a free entry
// is found.  The caller takes the entity's name from the entry.
KVTL_API mdl_dict_entry *mdlnormname(MDLprob prob, const char *name, const char *prefix,
                                     int kind, void *entity) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "normname");
    return nullptr;
  }
  const char *base = name != nullptr && *name != '\0' ? name : prefix;
  if (base == nullptr) base = "";
  const int flags = (kind & static_cast<int>(kind_mask)) | static_cast<int>(find_create);
  mdl_dict_entry *e = mdlfindname(prob, base, flags);
  try {
    std::string text;
    while (e != nullptr && e->entity != nullptr) {
      uint32_t n = entry_suffix(e) + 1;
      char suffix[16];
      snprintf(suffix, sizeof suffix, "_%u", n);
      text = e->name;
      text += suffix;
      mdl_dict_entry *next = mdlfindname(prob, text.c_str(), flags);
      if (next == nullptr) return nullptr;
      e->word = (e->word & kind_mask) | (n << 3);
      e = next;
    }
  } catch (const std::bad_alloc &) {
    mdlerror(prob, MDL_E_NOMEM);
    return nullptr;
  }
  if (e == nullptr) return nullptr;
  e->word = static_cast<uint32_t>(kind) & kind_mask;
  e->entity = entity;
  int32_t len = static_cast<int32_t>(strlen(e->name));
  if (len > prob->maxnamelen) prob->maxnamelen = len;
  return e;
}

// The entity of that kind (0: any) called `name`; an array of variables is
// answered with its handle.  Null when absent or when names are off.
KVTL_API void *mdlgetbyname_prob(MDLprob prob, const char *name, int kind) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "getbyname");
    return nullptr;
  }
  if (prob->dictsize < 1) return nullptr;
  int flags = (kind & static_cast<int>(kind_mask)) | static_cast<int>(find_lookup);
  mdl_dict_entry *e = mdlfindname(prob, name, flags);
  if (e == nullptr || e->entity == nullptr) return nullptr;
  if (entry_kind(e) == MDL_KIND_ARRVAR) return static_cast<void **>(e->entity) + array_header_slots;
  return e->entity;
}

// Format a name into the calling thread's 512-byte ring; the text stays
// valid until the ring wraps over it.  Longer than 127 characters: error
// 1566 and null.
KVTL_API const char *mdlnewname(const char *format, ...) {
  va_list ap;
  va_start(ap, format);
  const char *cut = nullptr;
  const char *text = ring_format(&cut, format, ap);
  va_end(ap);
  if (text == nullptr) mdlerror(context()->current, MDL_E_NAMELEN, cut, name_max);
  return text;
}

// Put an entity on the problem's entity list (used when names are off).
KVTL_API mdl_entity_entry *mdladdtodel(MDLprob prob, int kind, void *entity) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "addtodel");
    return nullptr;
  }
  auto *e = problem_chunk<mdl_entity_entry, true>(prob);
  if (e == nullptr) return nullptr;
  e->kind = static_cast<uint32_t>(kind) & kind_mask;
  e->entity = entity;
  e->next = prob->entities;
  prob->entities = e;
  return e;
}

// The generated name of an unnamed object: "x" and its handle in hex.
// `buffer` must hold at least 20 characters.
KVTL_API const char *mdlmktn(char *buffer, const void *handle) {
  sprintf(buffer, "%#lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(handle)));
  return buffer + 1;
}
