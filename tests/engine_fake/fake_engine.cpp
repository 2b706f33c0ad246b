/*
 * fake_engine.cpp -- minimal recording engine (start-up, problems, controls).
 */
#include "fake_engine.h"

#include <new>

struct kvsl_prob {
  std::map<int, int> intctrl;
  int errorcode = 0;
  KVSLmsgcb cb = nullptr;
  void *user = nullptr;
};

namespace fake {
namespace {
std::vector<call> recorded;
std::map<std::string, std::pair<int, int>> failures;
int init_result = 0;

int record(const std::string &fn, std::vector<double> args, KVSLprob p = nullptr) {
  call c;
  c.fn = fn;
  for (size_t k = 0; k < args.size(); ++k) c.dbls["a" + std::to_string(k)] = args[k];
  recorded.push_back(c);
  auto it = failures.find(fn);
  if (it != failures.end() && --it->second.first == 0) {
    int code = it->second.second;
    failures.erase(it);
    if (p != nullptr) p->errorcode = code;
    return code;
  }
  return 0;
}
}  // namespace
const std::vector<call> &calls() { return recorded; }
void reset() {
  recorded.clear();
  failures.clear();
  init_result = 0;
}
void fail_call(const std::string &fn, int nth, int code) { failures[fn] = {nth, code}; }
}  // namespace fake

extern "C" {
int KVSLinit(const char *) {
  int rc = fake::record("KVSLinit", {});
  return rc != 0 ? rc : fake::init_result;
}
int KVSLfree(void) { return fake::record("KVSLfree", {}); }
int KVSLcreateprob(KVSLprob *p) {
  int rc = fake::record("KVSLcreateprob", {});
  if (rc == 0) *p = new kvsl_prob;
  return rc;
}
int KVSLdestroyprob(KVSLprob p) {
  delete p;
  return fake::record("KVSLdestroyprob", {});
}
int KVSLsetintcontrol(KVSLprob p, int c, int v) {
  int rc = fake::record("KVSLsetintcontrol", {double(c), double(v)}, p);
  if (rc == 0) p->intctrl[c] = v;
  return rc;
}
int KVSLgetintattrib(KVSLprob p, int a, int *v) {
  int rc = fake::record("KVSLgetintattrib", {double(a)}, p);
  if (rc == 0) *v = a == KVSL_ATTR_ERRORCODE ? p->errorcode : 0;
  return rc;
}
int KVSLsetcbmessage(KVSLprob p, KVSLmsgcb cb, void *user) {
  p->cb = cb;
  p->user = user;
  return fake::record("KVSLsetcbmessage", {}, p);
}
}
