/*
 * cuts.h -- the cut record: a free-standing linear inequality or equation
 * held in the problem's pool and handed to the engine during a search.
 */
#ifndef KVTL_CUTS_CUTS_H
#define KVTL_CUTS_CUTS_H

#include <stdint.h>

#include "expr/termlist_types.h"
#include "kvtl.h"

struct mdl_problem;

// flags: type in the top three bits (1 L, 2 G, 3 E), row position in the
// low 29 bits (all ones until the cut was sent to the engine).
struct mdl_cut {
  uint32_t flags;
  int32_t id;
  mdl_problem *problem;
  double rhs;
  mdl_termlst *terms;
  mdl_cut *next;
};

namespace kvtl {

constexpr uint32_t cut_row_mask = 0x1FFFFFFFu;
constexpr int cut_type_shift = 29;

inline int cut_type(const mdl_cut *cut) { return static_cast<int>(cut->flags >> cut_type_shift); }
inline void set_cut_type(mdl_cut *cut, int type) {
  cut->flags = (cut->flags & cut_row_mask) | (static_cast<uint32_t>(type) << cut_type_shift);
}
inline void set_cut_row(mdl_cut *cut, uint32_t row) {
  cut->flags = (cut->flags & ~cut_row_mask) | (row & cut_row_mask);
}

}  // namespace kvtl

#endif
