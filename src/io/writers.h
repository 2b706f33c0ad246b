/*
 * writers.h -- the model file writers behind mdlexportprob_prob and
 * mdlwritedir_prob, and the file-name rule they share.
 */
#ifndef KVTL_IO_WRITERS_H
#define KVTL_IO_WRITERS_H

#include <stdio.h>

#include "io/outbuf.h"
#include "problem/problem.h"

namespace kvtl {

// The file name for `given` (null or empty: the problem's name) with
// `ext` (".lp", ".mps", ".dir") appended unless the name already has an
// extension after its last '/' or ends in '.'.  The text comes from the
// allocator hooks (free with mdlsl_free); null when out of memory.
char *output_file_name(MDLprob prob, const char *given, const char *ext);

// Open the file for `given` and `ext` (see output_file_name), run `write`
// (0 on success) on it through a buffered output and close it.  0 on
// success; 1 when the name cannot be made (error 1502), the file cannot be
// opened (no message), `write` fails or not everything could be written.
int write_file(MDLprob prob, const char *given, const char *ext,
               int (*write)(MDLprob prob, out_file &out));

// Write the generated model of `prob` as an LP file / fixed-column MPS file.
// Both return 0; the MPS writer returns 1 after reporting error 1502 when
// its working storage cannot be had.
int write_lp(MDLprob prob, out_file &out);
int write_mps(MDLprob prob, out_file &out);

// The indicator variable of an indicator constraint (mode above 3), and the
// value (0 or 1) it must take for the row to hold.
inline mdl_var *indicator_of(const mdl_ctr *c) {
  return reinterpret_cast<mdl_var *>(c->mode & ~static_cast<uintptr_t>(1));
}
inline int indicator_value(const mdl_ctr *c) { return static_cast<int>(c->mode & 1); }
inline bool has_indicator(const mdl_ctr *c) { return c->mode > MDL_MODE_INCVARS; }

// First node of a list whose coefficient is not 0 (from `t` on), or null.
inline mdl_term *nonzero_from(void *t) {
  auto *p = static_cast<mdl_term *>(t);
  while (p != nullptr && p->coef == 0) p = p->next;
  return p;
}
inline mdl_qterm *nonzero_qfrom(void *t) {
  auto *p = static_cast<mdl_qterm *>(t);
  while (p != nullptr && p->coef == 0) p = p->next;
  return p;
}
inline mdl_term *first_nonzero(const mdl_termlst *l) {
  return l == nullptr ? nullptr : nonzero_from(l->first);
}
inline mdl_qterm *first_qnonzero(const mdl_termlst *l) {
  return l == nullptr ? nullptr : nonzero_qfrom(l->first);
}

}  // namespace kvtl

#endif
