/*
 * fake_internal.h -- shared by the recording engine's sources: the problem
 * object, the argument recorder and the locked record-then-act sequence.
 */
#ifndef KVTL_TESTS_FAKE_INTERNAL_H
#define KVTL_TESTS_FAKE_INTERNAL_H

#include <algorithm>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "fake_engine.h"

// An engine problem of the recording engine.  Controls hold only the values
// set explicitly; a control absent from its map reads as its default.
struct kvsl_prob {
  std::map<int, int> int_controls;
  std::map<int, double> dbl_controls;
  int error_code = 0;
  KVSLmsgcb cb = nullptr;
  void *user = nullptr;
  int ncols = 0;  // sizes of the last successful load
  int nrows = 0;
  int sense = 1;  // 1 minimise, -1 maximise (decides the cutoff default)
};

namespace fake::detail {

// The mutex guarding every piece of global recording state.
std::mutex &state_mutex();
// Whether prob is a problem created and not yet destroyed (lock held).
bool is_live(KVSLprob prob);
// Register / unregister a problem as live (lock held).
void add_live(KVSLprob prob);
void remove_live(KVSLprob prob);
// Count one call of fn against the injected failures; returns the code the
// call must fail with, 0 when it proceeds (lock held).
int take_failure(const std::string &fn);
// Append a finished call to the record (lock held).
void append(call &&c);

// Scripted outputs (lock held): fill out[0..n-1] from the script of
// (fn, param), zeros beyond it.  Null outputs and n <= 0 write nothing.
void put_doubles(const char *fn, const char *param, double *out, int64_t n);
void put_ints(const char *fn, const char *param, int *out, int64_t n);
void put_int64s(const char *fn, const char *param, int64_t *out, int64_t n);
void put_chars(const char *fn, const char *param, char *out, int64_t n);
void put_cuts(const char *fn, const char *param, KVSLcut *out, int64_t n);
// A scripted scalar output (0 unscripted).
int scripted_out(const char *fn, const char *param);
// Element k of a scripted integer vector (0 beyond the script).
int scripted_int_at(const char *fn, const char *param, int64_t k);
// Write the scripted scalar output to *out unless out is null.
void put_out(const char *fn, const char *param, int *out);

// Control access following the control table; each returns 0 or
// KVSL_ERR_BADCONTROL for a number that is not a control of that kind.
int get_int_control(const kvsl_prob &p, int control, int &value);
int set_int_control(kvsl_prob &p, int control, int value);
int get_dbl_control(const kvsl_prob &p, int control, double &value);
int set_dbl_control(kvsl_prob &p, int control, double value);
int set_default_control(kvsl_prob &p, int control);
// Attribute answers: scripts first, 1023 the error code, 0 for the other
// documented attributes; KVSL_ERR_BADCONTROL for undocumented numbers.
int get_int_attrib(const kvsl_prob &p, int attrib, int &value);
int get_dbl_attrib(int attrib, double &value);

// Length of an array argument: negative counts read as empty.
inline int64_t len(int64_t n) { return n > 0 ? n : 0; }

// Records the arguments of one call under their interface names.
class args {
 public:
  explicit args(call &c) : c_(c) {}
  void i(const char *name, int64_t v) { c_.ints[name] = v; }
  void d(const char *name, double v) { c_.dbls[name] = v; }
  void s(const char *name, const char *text) {
    if (text == nullptr)
      null(name);
    else
      c_.strs[name] = text;
  }
  template <class T>
  void iv(const char *name, const T *a, int64_t n) {
    if (a == nullptr) return null(name);
    c_.iarr[name].assign(a, a + len(n));
  }
  void dv(const char *name, const double *a, int64_t n) {
    if (a == nullptr) return null(name);
    c_.darr[name].assign(a, a + len(n));
  }
  void cv(const char *name, const char *a, int64_t n) {
    if (a == nullptr) return null(name);
    c_.carr[name].assign(a, static_cast<size_t>(len(n)));
  }
  void cuts(const char *name, const KVSLcut *a, int64_t n) {
    if (a == nullptr) return null(name);
    auto &v = c_.iarr[name];
    for (int64_t k = 0; k < len(n); ++k) v.push_back(reinterpret_cast<intptr_t>(a[k]));
  }
  // Output parameters are recorded only when null.
  void out(const char *name, const void *p) {
    if (p == nullptr) null(name);
  }
  void null(const char *name) { c_.nulls.emplace_back(name); }

 private:
  call &c_;
};

// One engine call: under the state lock, record the arguments (record gets
// the args and the problem, null when prob is not a live problem), then
// either fail as injected, fail with KVSL_ERR_BADARG when the call needs a
// live problem and has none, or perform act(call, problem).  A non-zero
// result becomes the problem's error code.  The call is recorded with its
// result, which is returned.  No exception leaves: running out of memory
// answers KVSL_ERR_NOMEM.
template <class Record, class Act>
int run(const char *fn, KVSLprob prob, bool needs_prob, Record record, Act act) noexcept {
  try {
    std::lock_guard<std::mutex> hold(state_mutex());
    kvsl_prob *p = is_live(prob) ? prob : nullptr;
    call c;
    c.fn = fn;
    c.prob = prob;
    args a(c);
    record(a, p);
    int rc = take_failure(c.fn);
    if (rc == 0) {
      if (needs_prob && p == nullptr)
        rc = KVSL_ERR_BADARG;
      else
        rc = act(c, p);
    }
    if (rc != 0 && p != nullptr && is_live(p)) p->error_code = rc;
    c.rc = rc;
    append(std::move(c));
    return rc;
  } catch (...) {
    return KVSL_ERR_NOMEM;
  }
}

// A call without output or effect beyond being recorded.
template <class Record>
int run_plain(const char *fn, KVSLprob prob, Record record) noexcept {
  return run(fn, prob, true, record, [](call &, kvsl_prob *) { return 0; });
}

}  // namespace fake::detail

#endif
