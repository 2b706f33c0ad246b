/*
 * problem.cpp -- the problem object: creation, naming and side files, reset,
 * objective sense, dictionary sizes, deletion and the callback bracket.
 */
#include "problem/problem.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <string>

#include "core/errors.h"
#include "core/runtime.h"
#include "expr/termlist.h"
#include "problem/idxsets.h"
#include "problem/names.h"

namespace kvtl {

namespace {

constexpr int32_t default_dictsize = 1024;
constexpr int32_t min_dictsize = 128;
constexpr int32_t max_dictsize = 1 << 30;
constexpr int reset_controls[] = {KVSL_CTRL_PRESOLVE, KVSL_CTRL_SCALING, KVSL_CTRL_CRASH};

// Remove the engine's side files of a file base; failures do not matter
// (the files usually do not exist).
void remove_side_files(const char *base) {
  try {
    std::string path(base);
    for (const char *ext : {".glb", ".rng", ".sol"}) remove((path + ext).c_str());
  } catch (...) {
  }
}

// Make `name` (or, when null or empty, a generated name under $TMPDIR) the
// file base and remove its side files; false when the pool failed.
bool set_file_base(MDLprob prob, const char *name) {
  char *base;
  if (name != nullptr && *name != '\0') {
    base = mdlstrdup(prob, name);
  } else {
    const char *dir = getenv("TMPDIR");
    if (dir == nullptr) dir = "/tmp";
    size_t size = (strlen(dir) + 51) & ~static_cast<size_t>(3);
    base = static_cast<char *>(mdlallocmem(prob, size, 0));
    if (base != nullptr)
      snprintf(base, size, "%s/kvtl_%lx_%lx", dir, static_cast<unsigned long>(getpid()),
               static_cast<unsigned long>(reinterpret_cast<uintptr_t>(prob)));
  }
  if (base == nullptr) return false;
  prob->filebase = base;
  remove_side_files(base);
  return true;
}

// Free the solution and load buffers (the column map only on deletion).
void free_solution_buffers(MDLprob prob, bool with_colvars) {
  for (double **buf : {&prob->solx, &prob->soldj, &prob->soldual, &prob->solslack,
                       &prob->rangeinfo}) {
    if (*buf != nullptr) mdlsl_free(*buf);
    *buf = nullptr;
  }
  if (with_colvars) {
    if (prob->colvars != nullptr) mdlsl_free(prob->colvars);
    prob->colvars = nullptr;
  }
}

// Deletion's visit of one entity: free what it holds outside the pool and
// tell the application about variables that carry a link.
void release_entity(MDLprob prob, uint32_t kind, void *entity) {
  if (entity == nullptr) return;
  if (kind == MDL_KIND_ARRVAR) {
    mdlsl_free(entity);   // array blocks come from the allocator hook
  } else if (kind == MDL_KIND_VAR) {
    auto *var = static_cast<mdl_var *>(entity);
    if (var->link != nullptr && prob->cbdelvar != nullptr)
      prob->cbdelvar(prob, prob->cbdelvar_user, var, var->link);
  } else if (kind == MDL_KIND_IDX) {
    release_idxset(static_cast<mdl_idxset *>(entity));
  }
}

// Visit every entity once (dictionary or entity list) and free the
// dictionary's bucket array.
void release_entities(MDLprob prob) {
  if (prob->dict != nullptr) {
    for (int32_t b = 0; b < prob->dictsize; ++b) {
      for (mdl_dict_entry *e = prob->dict[b]; e != nullptr; e = e->next)
        release_entity(prob, entry_kind(e), e->entity);
      prob->dict[b] = nullptr;
    }
    mdlsl_free(prob->dict);
    prob->dict = nullptr;
  }
  for (mdl_entity_entry *e = prob->entities; e != nullptr; e = e->next)
    release_entity(prob, e->kind, e->entity);
  prob->entities = nullptr;
}

// Drop the problem references held by the model's term lists and free the
// index-set dictionary's bucket array.
void drop_model_references(MDLprob prob) {
  drop_termlst(&prob->objrec.expr.lin);
  drop_termlst(&prob->objrec.expr.quad);
  for (mdl_ctr *c = prob->ctrs; c != nullptr; c = c->next) {
    drop_termlst(&c->expr.lin);
    drop_termlst(&c->expr.quad);
  }
  for (mdl_sos *s = prob->soss; s != nullptr; s = s->next) drop_termlst(&s->elements);
  if (prob->idxdict != nullptr) mdlsl_free(prob->idxdict);
  prob->idxdict = nullptr;
}


// The problem mutex reports a second lock by its owner instead of
// deadlocking, so a nested bracket in one thread can be diagnosed.
void init_problem_mutex(MDLprob prob) {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_ERRORCHECK);
  pthread_mutex_init(&prob->mutex, &attr);
  pthread_mutexattr_destroy(&attr);
}

}  // namespace

// Give back a list header held by a record of a problem being deleted and
// the problem reference it holds; its nodes go with the pool.  A list is
// never empty, and its first node's variable names the problem it refers to.
void drop_termlst(mdl_termlst **list) {
  if (*list == nullptr) return;
  auto *first = static_cast<mdl_term *>((*list)->first);
  del_termlst(first->var->problem, *list);
  *list = nullptr;
}

}  // namespace kvtl

using namespace kvtl;

// Create a problem: engine problem, record in a new pool, file base, the
// global defaults, message handler and output controls; it becomes the
// calling thread's current problem.
KVTL_API MDLprob mdlnewprob(const char *name) {
  if (!library_initialised() && mdlslinit() != 0) return nullptr;
  KVSLprob kp = nullptr;
  if (KVSLcreateprob(&kp) != 0) return nullptr;
  MDLprob prob = mdlallocprob();
  if (prob == nullptr) {
    KVSLdestroyprob(kp);
    return nullptr;
  }
  prob->savedkvsl = nullptr;
  prob->kvsl = kp;
  init_problem_mutex(prob);
  prob->dictsize = default_dictsize;
  prob->idxdictsize = default_dictsize;
  prob->objective = nullptr;
  prob->objrec.row = no_number;
  prob->objrec.type = MDL_CTR_N;
  prob->objrec.name = "obj";
  prob->objrec.problem = prob;
  prob->sense = 1;
  prob->ctrs = nullptr;

  pthread_mutex_lock(&settings_mutex);
  memcpy(prob->realfmt, defaults.realfmt, sizeof prob->realfmt);
  prob->msglevel = defaults.msglevel;
  prob->colorder = defaults.colorder;
  KVSLsetcbmessage(kp, engine_message, prob);
  if (prob->msglevel < 1) {
    KVSLsetintcontrol(kp, KVSL_CTRL_BARRIERLOG, 0);
    KVSLsetintcontrol(kp, KVSL_CTRL_OUTPUTLOG, 0);
    KVSLsetintcontrol(kp, KVSL_CTRL_MIPLOG, 0);
  } else {
    KVSLsetintcontrol(kp, KVSL_CTRL_MIPLOG, prob->msglevel - 1);
  }
  prob->cberr = defaults.cberr;
  prob->cberr_user = defaults.cberr_user;
  prob->cbmsg = defaults.cbmsg;
  prob->cbmsg_user = defaults.cbmsg_user;
  prob->cbdelvar = defaults.cbdelvar;
  prob->cbdelvar_user = defaults.cbdelvar_user;
  pthread_mutex_unlock(&settings_mutex);

  // Named after the settings are copied, so that a pool failure reaches
  // the application's error callback.
  if (!set_file_base(prob, name)) {
    KVSLdestroyprob(kp);
    pthread_mutex_destroy(&prob->mutex);
    mdldeallocprob(prob);
    return nullptr;
  }
  context()->current = prob;
  return prob;
}

// Rename: the engine first, then the file base (old side files are left).
KVTL_API int mdlsetprobname_prob(MDLprob prob, const char *name) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "setprobname");
    return 1;
  }
  int rc = KVSLsetprobname(prob->kvsl, name != nullptr ? name : "");
  if (rc != 0) {
    report_engine_error(prob, "setprobname", "setprobname", rc);
    return 1;
  }
  return set_file_base(prob, name) ? 0 : 1;
}

// The file base: the name given, or the generated one.
KVTL_API const char *mdlgetprobname_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "getprobname");
    return nullptr;
  }
  return prob->filebase;
}

// Empty the engine problem (an empty load with presolve, scaling, crash and
// output off, restored afterwards) and drop the solution state; the model
// stays and is marked modified.
KVTL_API int mdlresetprob_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "resetprob");
    return 1;
  }
  if (KVSLprob kp = prob->kvsl) {
    int outputlog = 0;
    KVSLgetintcontrol(kp, KVSL_CTRL_OUTPUTLOG, &outputlog);
    for (int c : reset_controls) KVSLsetintcontrol(kp, c, 0);
    KVSLsetintcontrol(kp, KVSL_CTRL_OUTPUTLOG, 0);
    const int64_t colstart[1] = {0};
    int rc = KVSLloadlp64(kp, "empty", 0, 0, nullptr, nullptr, nullptr, nullptr, colstart,
                          nullptr, nullptr, nullptr, nullptr, nullptr);
    if (rc != 0) {
      KVSLsetintcontrol(kp, KVSL_CTRL_OUTPUTLOG, outputlog);
      report_engine_error(prob, "resetprob", "reset Optimizer", rc);
      return 1;
    }
    remove_side_files(prob->filebase);
    KVSLsetintcontrol(kp, KVSL_CTRL_OUTPUTLOG, outputlog);
    for (int c : reset_controls) KVSLsetdefaultcontrol(kp, c);
    prob->savedkvsl = nullptr;
  }
  free_solution_buffers(prob, false);
  prob->solcache = 0;
  prob->status = (prob->status & ~(MDL_ST_LOADED | MDL_ST_SOLUTION)) | MDL_ST_MODIFIED;
  return 0;
}

// A loaded, unmodified matrix follows the sense at once.
KVTL_API int mdlsetsense_prob(MDLprob prob, int maximise) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "setsense");
    return 1;
  }
  prob->sense = maximise != 0 ? 2 : 1;
  if ((prob->status & (MDL_ST_LOADED | MDL_ST_MODIFIED)) == MDL_ST_LOADED)
    KVSLchgobjsense(prob->kvsl, maximise != 0 ? -1 : 1);
  return 0;
}

// 1 maximise, 0 minimise, -1 without a problem.
KVTL_API int mdlgetsense_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "getsense");
    return -1;
  }
  return prob->sense == 2 ? 1 : 0;
}

// The public status flags (1, 2, 4, 8, 64).
KVTL_API int mdlgetprobstat_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "getprobstat");
    return 0;
  }
  return static_cast<int>(prob->status & 0x4F);
}

// Sizes are rounded to 0 or a power of two from 128 on, and only taken
// while the dictionary does not exist yet (names off is final).
KVTL_API int mdlsetdictsize_prob(MDLprob prob, int which, int size) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "setdictsize");
    return 1;
  }
  int32_t rounded = 0;
  if (size > 0) {
    rounded = min_dictsize;
    while (rounded < size && rounded < max_dictsize) rounded *= 2;
  }
  if (which != 0) {
    if (prob->idxdict == nullptr) {
      prob->idxdictsize = rounded < min_dictsize ? min_dictsize : rounded;
      return 0;
    }
  } else if (prob->dict == nullptr && prob->dictsize > 0) {
    prob->dictsize = rounded;
    return 0;
  }
  mdlerror(prob, MDL_E_DICTREINIT);
  return 1;
}

// Delete: engine problem and side files, buffers, every entity (arrays
// freed, the delete-variable callback for linked variables), the term-list
// references of the model, then the problem's own reference.
KVTL_API int mdldelprob_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "delprob");
    return 1;
  }
  if (prob->savedkvsl != nullptr) {
    // Deleted inside a callback bracket: the own engine problem is the
    // saved one, and the bracket's lock is released.
    prob->kvsl = prob->savedkvsl;
    prob->savedkvsl = nullptr;
    pthread_mutex_unlock(&prob->mutex);
  }
  if (prob->kvsl != nullptr) {
    KVSLdestroyprob(prob->kvsl);
    prob->kvsl = nullptr;
    remove_side_files(prob->filebase);
  }
  pthread_mutex_destroy(&prob->mutex);
  free_solution_buffers(prob, true);
  release_entities(prob);
  drop_model_references(prob);
  thread_context *ctx = context();
  if (ctx->current == prob) ctx->current = nullptr;
  mdldeallocprob(prob);
  return 0;
}

// Delete for a wrapper that shares the engine problem: with destroy 0 the
// engine problem survives (without the library's message handler).
KVTL_API int mdldelprob_jprob(MDLprob prob, int destroy) {
  if (prob != nullptr && destroy == 0 && prob->kvsl != nullptr) {
    KVSLsetcbmessage(prob->kvsl, nullptr, nullptr);
    prob->kvsl = nullptr;
  }
  return mdldelprob_prob(prob);
}

// Install an engine problem object of a running callback; holds the
// problem's mutex until mdlendcb_prob.  A second bracket in the same
// thread warns and keeps the original handle saved.
KVTL_API int mdlbegincb_prob(MDLprob prob, MDLkvslprob handle) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "begincb");
    return 1;
  }
  // Errorcheck mutex: its owner gets EDEADLK instead of waiting forever.
  int rc = pthread_mutex_trylock(&prob->mutex);
  if (rc == EBUSY) rc = pthread_mutex_lock(&prob->mutex);
  const bool nested = rc == EDEADLK;
  if (nested) mdlerror(prob, MDL_W_NOMATCH, "begincb", "begincb", "endcb");
  if (handle == nullptr) {
    mdlerror(prob, MDL_E_NOKVSLPROB, "begincb");
    if (!nested) pthread_mutex_unlock(&prob->mutex);
    return 1;
  }
  prob->status &= ~MDL_ST_SOLUTION;
  if (prob->savedkvsl == nullptr) prob->savedkvsl = prob->kvsl;
  prob->kvsl = handle;
  prob->solcache = 0;
  prob->objval = 0;
  return 0;
}

// Leave the bracket: restore the own engine problem and unlock.
KVTL_API int mdlendcb_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "endcb");
    return 1;
  }
  prob->status &= ~MDL_ST_SOLUTION;
  prob->solcache = 0;
  prob->objval = 0;
  if (prob->savedkvsl != nullptr) {
    prob->kvsl = prob->savedkvsl;
    prob->savedkvsl = nullptr;
    pthread_mutex_unlock(&prob->mutex);
  } else {
    mdlerror(prob, MDL_W_NOMATCH, "endcb", "endcb", "begincb");
  }
  return 0;
}
