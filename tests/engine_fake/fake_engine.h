/*
 * fake_engine.h -- the recording engine: implements every function of the
 * engine interface for conformance tests of the library.  It records each
 * call with its arguments (arrays copied, under the parameter names of
 * kvsl.h), answers scripted values, and can make the nth call of any
 * function fail with a chosen error code.
 */
#ifndef KVTL_TESTS_FAKE_ENGINE_H
#define KVTL_TESTS_FAKE_ENGINE_H

#include <stdint.h>

#include <map>
#include <string>
#include <vector>

#include "kvsl.h"

namespace fake {

// One recorded call.  Scalars and arrays are stored under the parameter
// names of kvsl.h: integer scalars (int, int64_t, char) in ints, doubles in
// dbls, texts (const char *) in strs (a null text is absent from strs and
// listed in nulls), integer arrays in iarr, double arrays in darr, char
// arrays in carr (as a string of the array's length), null arrays in nulls.
// Array lengths are those the interface defines (ncols, nrows, n, ...).
// `rc` is the value the call returned.
struct call {
  std::string fn;
  KVSLprob prob = nullptr;
  std::map<std::string, int64_t> ints;
  std::map<std::string, double> dbls;
  std::map<std::string, std::string> strs;
  std::map<std::string, std::vector<int64_t>> iarr;
  std::map<std::string, std::vector<double>> darr;
  std::map<std::string, std::string> carr;
  std::vector<std::string> nulls;
  int rc = 0;

  int64_t i(const std::string &name) const;              // throws if absent
  double d(const std::string &name) const;
  const std::string &s(const std::string &name) const;
  const std::vector<int64_t> &iv(const std::string &name) const;
  const std::vector<double> &dv(const std::string &name) const;
  const std::string &cv(const std::string &name) const;
  bool is_null(const std::string &name) const;
};

// Every call since the last reset, in order.
const std::vector<call> &calls();
// Names of the recorded calls in order (handy for sequence assertions).
std::vector<std::string> call_names();
// The recorded calls of one function, in order.
std::vector<call> calls_of(const std::string &fn);
// Forget recorded calls only.
void clear_calls();
// Forget recorded calls, scripted values and pending failures; problems
// that still exist keep their controls.
void reset();

// Make the nth call of fn (1 = the next one), counted from now, fail with
// `code`: it returns code and sets the error-code attribute (1023) of its
// problem to code.  KVSLinit / KVSLfree simply return code.
void fail_call(const std::string &fn, int nth, int code);
// Make every call of fn fail with code until reset().
void fail_always(const std::string &fn, int code);

// Controls behave like a real engine's: every problem starts with the
// defaults of the control table of kvsl.h, KVSLset*control stores,
// KVSLget*control reads, KVSLsetdefaultcontrol restores.  Unknown control
// numbers fail with KVSL_ERR_BADCONTROL.
int int_control(KVSLprob prob, int control);
double dbl_control(KVSLprob prob, int control);

// Scripted attributes: answered by KVSLgetintattrib / KVSLgetdblattrib for
// every problem (attribute 1023 always answers the problem's last error
// code unless scripted).  Unscripted attributes answer 0.
void set_int_attrib(int attrib, int value);
void set_dbl_attrib(int attrib, double value);

// Scripted output arrays: when function fn writes its output parameter
// `param` (e.g. "KVSLgetlpsol", "x"), it copies these values (as many as
// the array's length, zeros beyond the script).  Integer outputs use
// set_int_vector (e.g. KVSLgetbasis "rowstat", KVSLgetiisdata "rowind"),
// char outputs set_char_vector.  Scalar outputs through pointers (e.g.
// KVSLiisstatus "count", KVSLgetcutlist "ncuts", KVSLiisfirst "status",
// KVSLloadmipsol "status", KVSLgetiisdata "nrows") use set_int_out.
// Cut handles are integers here: KVSLgetcutlist "cuts" is scripted with
// set_int_vector (each handle is the pointer of that value) and the "cuts"
// argument of KVSLgetcpcuts is recorded in iarr as those integers.
void set_vector(const std::string &fn, const std::string &param, std::vector<double> values);
void set_int_vector(const std::string &fn, const std::string &param, std::vector<int> values);
void set_char_vector(const std::string &fn, const std::string &param, std::string values);
void set_int_out(const std::string &fn, const std::string &param, int value);

// The loaded matrix size, as the last successful KVSLload*64 of a problem
// set it (used for the lengths of solution vectors and bases).
int loaded_cols(KVSLprob prob);
int loaded_rows(KVSLprob prob);

// Invoke the message callback installed on prob with KVSLsetcbmessage.
void emit_message(KVSLprob prob, const char *text, int msgtype);

// Number of engine problems created and not destroyed.
int live_problems();

}  // namespace fake

#endif
