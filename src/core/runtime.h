/*
 * runtime.h -- library-wide state: global defaults, start-up state, the
 * settings and memory mutexes, and the per-thread context.
 */
#ifndef KVTL_CORE_RUNTIME_H
#define KVTL_CORE_RUNTIME_H

#include <pthread.h>
#include <stdint.h>

#include "kvtl.h"

namespace kvtl {

// Settings that every new problem copies, guarded by settings_mutex.
struct global_defaults {
  MDLcberr cberr;
  void *cberr_user;
  MDLcbmsg cbmsg;
  void *cbmsg_user;
  MDLcbdelvar cbdelvar;
  void *cbdelvar_user;
  char realfmt[16];
  int32_t msglevel;
  int32_t colorder;
  int32_t initialised;
  int32_t exit_on_error;
  int32_t wrapper_oo;       // started by the object-oriented wrapper
  int32_t wrapper_managed;  // started by the managed-runtime wrapper
  int32_t initcount;
};

extern global_defaults defaults;
extern pthread_mutex_t settings_mutex;
extern int32_t asyncfree;   // reference counts and pools take their mutex
extern MDLcbmem annotate_alloc;
extern MDLcbmem annotate_free;

// Per-thread data, created lazily (zero-filled, through mdlsl_malloc).
struct thread_context {
  MDLprob current;
  char *name_cursor;
  char name_ring[512];
  char decsign;
};

thread_context *context();

// Whether start-up has happened (read under the settings mutex).
bool library_initialised();

// Copy the global defaults a new problem takes (caller holds settings_mutex).
void reset_defaults();

}  // namespace kvtl

#endif
