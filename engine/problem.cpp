/*
 * problem.cpp -- engine start-up, problem creation and naming, messages.
 */
#include <atomic>
#include <cstring>
#include <new>

#include "engine.h"

namespace {
std::atomic<int> init_count{0};
}

namespace kvsl {

int fail(KVSLprob prob, int code) {
  if (prob != nullptr) prob->errorcode = code;
  return code;
}

void message(KVSLprob prob, int type, const char *text) {
  if (prob != nullptr && prob->msgcb != nullptr)
    prob->msgcb(prob, prob->msguser, text, static_cast<int>(std::strlen(text)), type);
}

}  // namespace kvsl

KVSL_EXPORT int KVSLinit(const char *) {
  ++init_count;
  return 0;
}

KVSL_EXPORT int KVSLfree(void) {
  if (init_count.load() <= 0) return KVSL_ERR_NOTINIT;
  --init_count;
  return 0;
}

KVSL_EXPORT int KVSLcreateprob(KVSLprob *prob) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  *prob = new (std::nothrow) kvsl_prob;
  return *prob == nullptr ? KVSL_ERR_NOMEM : 0;
}

KVSL_EXPORT int KVSLdestroyprob(KVSLprob prob) {
  delete prob;
  return 0;
}

KVSL_EXPORT int KVSLsetprobname(KVSLprob prob, const char *name) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (name == nullptr) return kvsl::fail(prob, KVSL_ERR_BADARG);
  prob->name = name;
  return 0;
}

KVSL_EXPORT int KVSLsetcbmessage(KVSLprob prob, KVSLmsgcb cb, void *user) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  prob->msgcb = cb;
  prob->msguser = user;
  return 0;
}
