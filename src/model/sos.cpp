/*
 * sos.cpp -- special ordered sets (members with weights) and the problem's
 * list of branching directives for variables and sets.
 */
#include "expr/termlist.h"
#include "model/constraints.h"
#include "problem/names.h"

using namespace kvtl;

namespace {

// Report a null set for the function `fn`; true when there is none.
bool no_sos(MDLsos sos, const char *fn) {
  if (sos != nullptr) return false;
  mdlerror(nullptr, MDL_E_NOSOS, fn);
  return true;
}

// Report a null variable for the function `fn`; true when there is none.
bool no_var(MDLvar var, const char *fn) {
  if (var != nullptr) return false;
  mdlerror(nullptr, MDL_E_NOVAR, fn);
  return true;
}

// Append a directive of kind 1..5 (plus `flag` for a set target) to the
// problem's list and mark directives pending (the matrix itself stays
// valid).  1 for a wrong kind or when no record could be had.
int append_directive(MDLprob prob, const char *fn, int kind, uint32_t flag, void *target,
                     double value) {
  if (kind < MDL_DIR_PRIORITY || kind > MDL_DIR_PSEUDODN) {
    mdlerror(prob, MDL_E_DIRTYPE, fn);
    return 1;
  }
  auto *dir = static_cast<mdl_dir *>(mdlallocmem(prob, sizeof(mdl_dir), 1));
  if (dir == nullptr) return 1;
  dir->kind = static_cast<uint32_t>(kind) | flag;
  dir->target = target;
  dir->value = value;
  if (prob->dirtail != nullptr)
    prob->dirtail->next = dir;
  else
    prob->dirhead = dir;
  prob->dirtail = dir;
  prob->status |= MDL_ST_DIRPENDING;
  return 0;
}

}  // namespace

// A new set at the head of the problem's list; the problem is not marked
// modified.
KVTL_API MDLsos mdlnewsos_prob(MDLprob prob, const char *name, int type) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "newsos");
    return nullptr;
  }
  if (static_cast<unsigned>(type) > MDL_SOS2) {
    mdlerror(prob, MDL_E_SOSTYPE, "newsos", name != nullptr ? name : "");
    return nullptr;
  }
  auto *sos = static_cast<MDLsos>(mdlallocmem(prob, sizeof(mdl_sos), 1));
  if (sos == nullptr) return nullptr;
  bool ok;
  sos->name = register_name(prob, name, "SOS", MDL_KIND_SOS, sos, ok);
  if (!ok) {
    mdlrecyclemem(prob, sos, sizeof(mdl_sos));
    return nullptr;
  }
  sos->problem = prob;
  sos->type = static_cast<uint32_t>(type);
  sos->next = prob->soss;
  prob->soss = sos;
  return sos;
}

// Delete a set of the problem's list with its members.  Directives that
// name it stay in the list with no target, so nothing refers to the
// released record; matrix generation and the writers skip them.
KVTL_API int mdldelsos(MDLsos sos) {
  if (no_sos(sos, "delsos")) return 1;
  MDLprob prob = sos->problem;
  mark_modified(prob);
  mdl_sos **link = &prob->soss;
  while (*link != nullptr && *link != sos) link = &(*link)->next;
  if (*link == nullptr) return 0;
  *link = sos->next;
  mdldel_termlst(&sos->elements);
  unregister_name(prob, sos->name, MDL_KIND_SOS, sos);
  for (mdl_dir *dir = prob->dirhead; dir != nullptr; dir = dir->next)
    if ((dir->kind & MDL_DIR_SOSFLAG) != 0 && dir->target == sos) dir->target = nullptr;
  mdlrecyclemem(prob, sos, sizeof(mdl_sos));
  return 0;
}

// Add a weight to a member; weights that cancel remove the member.
KVTL_API int mdladdsosel(MDLsos sos, MDLvar var, double weight) {
  if (no_sos(sos, "addsosel") || no_var(var, "addsosel")) return 1;
  if (weight == 0) return 0;
  if (mdladd_term(var, &sos->elements, weight) < 0) return 1;
  mark_modified(sos->problem);
  return 0;
}

// Remove a member; a variable that is no member is no error.
KVTL_API int mdldelsosel(MDLsos sos, MDLvar var) {
  if (no_sos(sos, "delsosel") || no_var(var, "delsosel")) return 1;
  if (mdlset_term(var, &sos->elements, 0.0) < 0) return 1;
  mark_modified(sos->problem);
  return 0;
}

// The set type, -1 for no set.
KVTL_API int mdlgetsostype(MDLsos sos) {
  if (no_sos(sos, "getsostype")) return -1;
  return static_cast<int>(sos->type);
}

// The stored name, or the generated one (valid for a few more names).
KVTL_API const char *mdlgetsosname(MDLsos sos) {
  if (no_sos(sos, "sosname")) return nullptr;
  return display_name(sos->name, sos);
}

// Append a directive for a variable.
KVTL_API int mdlsetvardir(MDLvar var, int kind, double value) {
  if (no_var(var, "setvardir")) return 1;
  return append_directive(var->problem, "setvardir", kind, 0, var, value);
}

// Append a directive for a set (its kind carries the set flag).
KVTL_API int mdlsetsosdir(MDLsos sos, int kind, double value) {
  if (no_sos(sos, "setsosdir")) return 1;
  return append_directive(sos->problem, "setsosdir", kind, MDL_DIR_SOSFLAG, sos, value);
}

// Drop every directive.  Unlike setting one, this marks the problem
// modified, so the next optimisation regenerates the matrix.
KVTL_API int mdlcleardir_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "cleardir");
    return 1;
  }
  if (prob->dirhead == nullptr) return 0;
  for (mdl_dir *dir = prob->dirhead; dir != nullptr;) {
    mdl_dir *next = dir->next;
    mdlrecyclemem(prob, dir, sizeof(mdl_dir));
    dir = next;
  }
  prob->dirhead = nullptr;
  prob->dirtail = nullptr;
  mark_modified(prob);
  return 0;
}
