/*
 * dirwrite.cpp -- mdlwritedir_prob: the branching directives and the model
 * cuts and delayed rows of a problem, one line each, in the engine's
 * directives-file layout.
 */
#include <math.h>

#include "core/errors.h"
#include "io/writers.h"

namespace kvtl {

namespace {

// The entity a directive names: a set when flagged, else a variable.
const char *directive_target(const mdl_dir *d, char (&buf)[24]) {
  if ((d->kind & MDL_DIR_SOSFLAG) != 0) {
    const auto *s = static_cast<const mdl_sos *>(d->target);
    return entity_name(s->name, s, buf);
  }
  const auto *v = static_cast<const mdl_var *>(d->target);
  return entity_name(v->name, v, buf);
}

// A priority is written as a 32-bit integer, truncated towards zero (and
// held inside the integer range rather than overflowing).
int64_t truncated_priority(double value) {
  if (isnan(value)) return 0;
  if (value >= 2147483647.0) return 2147483647;
  if (value <= -2147483648.0) return -2147483647 - 1;
  return static_cast<int32_t>(value);
}

int write_directives(MDLprob prob, out_file &out) {
  char buf[24];
  for (const mdl_dir *d = prob->dirhead; d != nullptr; d = d->next) {
    // A directive whose set was deleted names nothing and is not written.
    if (d->target == nullptr) continue;
    switch (d->kind & ~MDL_DIR_SOSFLAG) {
      case MDL_DIR_PRIORITY:
        out.put(" PR ", 4);
        out.put_padded(directive_target(d, buf), 19);
        out.put(' ');
        out.put_int(truncated_priority(d->value));
        break;
      case MDL_DIR_UP:
        out.put(" UP ", 4);
        out.put(directive_target(d, buf));
        break;
      case MDL_DIR_DOWN:
        out.put(" DN ", 4);
        out.put(directive_target(d, buf));
        break;
      case MDL_DIR_PSEUDOUP:
      case MDL_DIR_PSEUDODN:
        out.put((d->kind & ~MDL_DIR_SOSFLAG) == MDL_DIR_PSEUDOUP ? " PU " : " PD ", 4);
        out.put_padded(directive_target(d, buf), 19);
        out.put(' ');
        out.put_real(d->value);
        break;
      default:
        continue;
    }
    out.put('\n');
  }
  for (const mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next) {
    if (c->mode != MDL_MODE_MODCUT && c->mode != MDL_MODE_DELAYED) continue;
    out.put(c->mode == MDL_MODE_MODCUT ? " MC " : " DR ", 4);
    out.put(entity_name(c->name, c, buf));
    out.put('\n');
  }
  return 0;
}

}  // namespace

}  // namespace kvtl

using namespace kvtl;

// Write the directives file (".dir" unless the name has an extension).
// 0 on success; 1 when the file cannot be opened (no message) or not
// everything could be written to it.
KVTL_API int mdlwritedir_prob(MDLprob prob, const char *file) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "writedir");
    return 1;
  }
  return write_file(prob, file, ".dir", write_directives);
}
