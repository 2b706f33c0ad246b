/*
 * engine.h -- internal state of an engine problem, shared by the files that
 * implement the engine's capabilities.
 */
#ifndef KVSL_ENGINE_H
#define KVSL_ENGINE_H

#include <map>
#include <string>

#include "kvsl.h"

#define KVSL_EXPORT extern "C" __attribute__((visibility("default")))

struct kvsl_prob {
  std::string name;
  KVSLmsgcb msgcb = nullptr;
  void *msguser = nullptr;
  std::map<int, int> intctrl;      // integer controls set away from default
  std::map<int, double> dblctrl;   // double controls set away from default
  int errorcode = 0;               // attribute 1023
};

namespace kvsl {
// Record an error code on the problem and return it as the call's result.
int fail(KVSLprob prob, int code);
// Deliver one log line through the problem's message callback.
void message(KVSLprob prob, int type, const char *text);
}  // namespace kvsl

#endif
