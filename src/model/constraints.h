/*
 * constraints.h -- helpers shared by the constraint, set and directive
 * modules: status marking and the naming of constraint and set records.
 */
#ifndef KVTL_MODEL_CONSTRAINTS_H
#define KVTL_MODEL_CONSTRAINTS_H

#include "kvtl.h"
#include "problem/problem.h"

namespace kvtl {

// Record that the loaded matrix no longer follows the model.
inline void mark_modified(MDLprob prob) { prob->status |= MDL_ST_MODIFIED; }

// Name a new record: through the dictionary (unique name, `prefix` when
// none is given) or, with names off, as a private copy (null when none is
// given).  Sets `ok` to false when the dictionary could not take it.
const char *register_name(MDLprob prob, const char *name, const char *prefix, int kind,
                          void *entity, bool &ok);

// Undo register_name for a record that goes away: its dictionary entry no
// longer refers to it (the name stays reserved) or its private copy is given
// back.
void unregister_name(MDLprob prob, const char *name, int kind, const void *entity);

// Give a record's terms back and forget them; the constant becomes 0.
void clear_expr(mdl_expr &expr);

}  // namespace kvtl

#endif
