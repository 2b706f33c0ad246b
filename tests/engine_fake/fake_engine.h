/*
 * fake_engine.h -- the recording engine: a stand-in for the solver engine
 * that records calls and answers scripted values.
 */
#ifndef KVTL_TESTS_FAKE_ENGINE_H
#define KVTL_TESTS_FAKE_ENGINE_H

#include <map>
#include <string>
#include <vector>

#include "kvsl.h"

namespace fake {

struct call {
  std::string fn;
  std::vector<double> args;   // scalar arguments in order
};

// Every call since the last reset, in order.
std::vector<call> &calls();
// Forget recorded calls and scripted values.
void reset();
// Make the nth call (1-based, counted from now) of fn fail with code.
void fail_call(const std::string &fn, int nth, int code);
// Values answered by KVSLinit.
void set_init_result(int rc);

}  // namespace fake

#endif
