/*
 * runtime.cpp -- counted start-up and shutdown, wrapper start-ups, the
 * per-thread context, memory-pressure notification, version and time.
 */
#include "core/runtime.h"

#include <libintl.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <atomic>
#include <string>

#include "kvsl.h"

// The hooks start as the system allocator, so that the pools work even
// before start-up; start-up restores them when the application cleared them.
KVTL_API void *(*mdlsl_malloc)(size_t size) = malloc;
KVTL_API void (*mdlsl_free)(void *ptr) = free;

namespace kvtl {

global_defaults defaults = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                            "%g", 3, 0, 0, 1, 0, 0, 0};
pthread_mutex_t settings_mutex = PTHREAD_MUTEX_INITIALIZER;
int32_t asyncfree = 0;
MDLcbmem annotate_alloc = nullptr;
MDLcbmem annotate_free = nullptr;

namespace {

pthread_key_t context_key;

void free_context(void *ctx) {
  if (ctx != nullptr) mdlsl_free(ctx);
}
std::atomic<bool> context_key_valid{false};  // written under settings_mutex

// Create the context key (settings mutex held).
void create_context_key() {
  if (!context_key_valid) {
    pthread_key_create(&context_key, free_context);
    context_key_valid = true;
  }
}

// Memory-pressure notification state, guarded by memory_mutex.
pthread_mutex_t memory_mutex = PTHREAD_MUTEX_INITIALIZER;
uint64_t mem_threshold = 262144;
uint64_t mem_amount = 0;
int32_t mem_sign = 0;
MDLcbmem mem_grow = nullptr;
MDLcbmem mem_shrink = nullptr;


// Growth by n bytes: the net amount moves towards positive; the grow
// callback hears of it once a threshold's worth has accumulated.
void notify_grow(uint64_t n) {
  pthread_mutex_lock(&memory_mutex);
  if (mem_sign <= 0) {
    if (n >= mem_amount) {
      mem_sign = 1;
      mem_amount = n - mem_amount;
    } else {
      mem_amount -= n;
    }
  } else {
    mem_amount += n;
  }
  if (mem_amount >= mem_threshold && mem_sign > 0) {
    uint64_t amount = mem_amount;
    mem_amount = 0;
    if (mem_grow != nullptr) mem_grow(amount);
  }
  pthread_mutex_unlock(&memory_mutex);
}

// Release by n bytes: the mirror image of notify_grow.
void notify_shrink(uint64_t n) {
  pthread_mutex_lock(&memory_mutex);
  if (mem_sign < 0) {
    mem_amount += n;
  } else if (n < mem_amount) {
    mem_amount -= n;
  } else {
    mem_sign = -1;
    mem_amount = n - mem_amount;
  }
  if (mem_amount >= mem_threshold && mem_sign < 0) {
    uint64_t amount = mem_amount;
    mem_amount = 0;
    if (mem_shrink != nullptr) mem_shrink(amount);
  }
  pthread_mutex_unlock(&memory_mutex);
}

// Shared part of the two wrapper start-ups (settings mutex held by caller):
// returns -1 to go on with the wrapper's own set-up, else the result.
int wrapper_start(int32_t &flag) {
  asyncfree = 1;
  if (defaults.initialised) {
    if (flag) return 0;
    pthread_mutex_unlock(&settings_mutex);
    mdlslfinish();
    pthread_mutex_lock(&settings_mutex);
    return 1;
  }
  flag = 1;
  return -1;
}

}  // namespace

void reset_defaults() {
  defaults.cberr = nullptr;
  defaults.cberr_user = nullptr;
  defaults.cbmsg = nullptr;
  defaults.cbmsg_user = nullptr;
  defaults.cbdelvar = nullptr;
  defaults.cbdelvar_user = nullptr;
  strcpy(defaults.realfmt, "%g");
  defaults.msglevel = 3;
  defaults.colorder = 0;
  defaults.exit_on_error = 1;
  defaults.initcount = 0;
  defaults.initialised = 0;
}

bool library_initialised() {
  pthread_mutex_lock(&settings_mutex);
  bool up = defaults.initialised != 0;
  pthread_mutex_unlock(&settings_mutex);
  return up;
}

thread_context *context() {
  // A thread context may be asked for before start-up (mdlgetprob on a
  // fresh process): the key is then created on demand.
  if (!context_key_valid) {
    pthread_mutex_lock(&settings_mutex);
    create_context_key();
    pthread_mutex_unlock(&settings_mutex);
  }
  if (mdlsl_malloc == nullptr) mdlsl_malloc = malloc;
  if (mdlsl_free == nullptr) mdlsl_free = free;
  auto *ctx = static_cast<thread_context *>(pthread_getspecific(context_key));
  if (ctx == nullptr) {
    ctx = static_cast<thread_context *>(mdlsl_malloc(sizeof(thread_context)));
    memset(ctx, 0, sizeof *ctx);
    ctx->name_cursor = ctx->name_ring;
    ctx->decsign = '.';
    pthread_setspecific(context_key, ctx);
  }
  return ctx;
}

}  // namespace kvtl

using namespace kvtl;

// Counted start-up: the first call starts the engine and creates the key of
// the per-thread context; later calls only count.
KVTL_API int mdlslinit(void) {
  pthread_mutex_lock(&settings_mutex);
  if (defaults.initialised) {
    defaults.initcount++;
    pthread_mutex_unlock(&settings_mutex);
    return 0;
  }
  if (mdlsl_malloc == nullptr) mdlsl_malloc = malloc;
  if (mdlsl_free == nullptr) mdlsl_free = free;
  const char *dir = getenv("TESSEL");
  if (dir == nullptr) dir = getenv("KORVEXDIR");
  if (dir == nullptr) dir = getenv("KORVEX");
  if (dir != nullptr) bindtextdomain("tessel", (std::string(dir) + "/locale").c_str());
  int rc = KVSLinit(nullptr);
  if (rc != 0) {
    mdlerror(nullptr, MDL_E_INIT, "mdlslinit", rc);
    pthread_mutex_unlock(&settings_mutex);
    return 1;
  }
  defaults.initialised = 1;
  create_context_key();
  defaults.initcount++;
  pthread_mutex_unlock(&settings_mutex);
  return 0;
}

// Undo one start-up; the last one restores every global default, frees the
// caller's context and finishes the engine.
KVTL_API int mdlslfinish(void) {
  pthread_mutex_lock(&settings_mutex);
  int rc = 1;
  if (defaults.initialised) {
    if (defaults.initcount > 1) {
      defaults.initcount--;
      rc = 0;
    } else if (defaults.initcount == 1) {
      reset_defaults();
      void *ctx = context_key_valid ? pthread_getspecific(context_key) : nullptr;
      if (ctx != nullptr) {
        mdlsl_free(ctx);
        pthread_setspecific(context_key, nullptr);
      }
      pthread_key_delete(context_key);
      context_key_valid = false;
      KVSLfree();
      mdlsl_malloc = malloc;
      mdlsl_free = free;
      rc = 0;
    }
  }
  pthread_mutex_unlock(&settings_mutex);
  return rc;
}

KVTL_API int mdlslinitj(void) {
  pthread_mutex_lock(&settings_mutex);
  int rc = wrapper_start(defaults.wrapper_oo);
  pthread_mutex_unlock(&settings_mutex);
  return rc < 0 ? 0 : rc;
}

KVTL_API int mdlslinitdn(MDLcbmem grow, MDLcbmem shrink) {
  pthread_mutex_lock(&settings_mutex);
  int rc = wrapper_start(defaults.wrapper_managed);
  if (rc < 0) {
    mem_grow = grow;
    mem_shrink = shrink;
    mdlsetcbglbmemannotify(notify_grow, notify_shrink);
    pthread_mutex_lock(&memory_mutex);
    mem_threshold = 262144;
    pthread_mutex_unlock(&memory_mutex);
    rc = 0;
  }
  pthread_mutex_unlock(&settings_mutex);
  return rc;
}

KVTL_API void mdlsetasyncfree(int flag) { asyncfree = flag; }

KVTL_API void mdlsetcbglbmemannotify(MDLcbmem onalloc, MDLcbmem onfree) {
  annotate_alloc = onalloc;
  annotate_free = onfree;
}

KVTL_API uint64_t mdlgetmemoryusagechangethreshold(void) {
  pthread_mutex_lock(&memory_mutex);
  uint64_t v = mem_threshold;
  pthread_mutex_unlock(&memory_mutex);
  return v;
}

KVTL_API void mdlsetmemoryusagechangethreshold(uint64_t value) {
  pthread_mutex_lock(&memory_mutex);
  mem_threshold = value;
  pthread_mutex_unlock(&memory_mutex);
}

KVTL_API const char *mdlgetversion(void) { return "4.8.8"; }

KVTL_API int32_t mdlgettime(void) {
  return static_cast<int32_t>(clock() / 1000);
}

KVTL_API MDLprob mdlgetprob(void) { return context()->current; }

KVTL_API int mdlchgprob(MDLprob prob) {
  context()->current = prob;
  return 0;
}

KVTL_API char mdlgetdecsign(void) { return context()->decsign; }

KVTL_API int mdlsetdecsign(char sign) {
  context()->decsign = sign;
  return 0;
}
