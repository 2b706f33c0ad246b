/*
 * fake_engine.cpp -- the recording engine's state: recorded calls, scripted
 * outputs and attributes, injected failures, live problems and controls.
 */
#include <cstring>
#include <set>
#include <stdexcept>
#include <utility>

#include "fake_internal.h"

namespace fake {
namespace {

// A failure waiting for the remaining-th call of fn.
struct pending_failure {
  std::string fn;
  int remaining;
  int code;
};

using script_key = std::pair<std::string, std::string>;

// Everything the recording engine remembers between calls.
struct state {
  std::vector<call> recorded;
  std::vector<pending_failure> pending;
  std::map<std::string, int> always;
  std::map<script_key, std::vector<double>> dbl_scripts;
  std::map<script_key, std::vector<int>> int_scripts;
  std::map<script_key, std::string> char_scripts;
  std::map<script_key, int> out_scripts;
  std::map<int, int> int_attribs;
  std::map<int, double> dbl_attribs;
  std::set<KVSLprob> live;
};

// The state lives until the process ends: never destroyed, so that engine
// calls made by other static destructors still find it.
state &st() {
  static state *s = new state;
  return *s;
}

// Every function of the engine interface.
const std::set<std::string> &function_names() {
  static const std::set<std::string> names = {
      "KVSLinit", "KVSLfree", "KVSLcreateprob", "KVSLdestroyprob", "KVSLsetprobname",
      "KVSLsetcbmessage", "KVSLsetintcontrol", "KVSLgetintcontrol", "KVSLsetdblcontrol",
      "KVSLgetdblcontrol", "KVSLsetdefaultcontrol", "KVSLgetintattrib", "KVSLgetdblattrib",
      "KVSLloadlp64", "KVSLloadqp64", "KVSLloadqcqp64", "KVSLloadglobal64",
      "KVSLloadqglobal64", "KVSLloadqcqpglobal64", "KVSLchgobj", "KVSLchgobjsense",
      "KVSLchgbounds", "KVSLchgglblimit", "KVSLloadmodelcuts", "KVSLsetindicators",
      "KVSLloaddelayedrows", "KVSLaddnames", "KVSLloaddirs", "KVSLlpoptimize",
      "KVSLmipoptimize", "KVSLminim", "KVSLmaxim", "KVSLpostsolve", "KVSLinitglobal",
      "KVSLfixglobals", "KVSLgetlpsol", "KVSLgetmipsol", "KVSLrange", "KVSLgetrowrange",
      "KVSLgetcolrange", "KVSLwritesol", "KVSLwriteprtsol", "KVSLwriteslxsol",
      "KVSLwritebinsol", "KVSLreadbinsol", "KVSLreadslxsol", "KVSLgetbasis",
      "KVSLloadbasis", "KVSLiisstatus", "KVSLiisall", "KVSLiisfirst", "KVSLiisnext",
      "KVSLgetiisdata", "KVSLaddmipsol", "KVSLloadmipsol", "KVSLaddcuts", "KVSLgetcutlist",
      "KVSLgetcpcuts"};
  return names;
}

// The scriptable outputs of each function by kind: 'd' double arrays,
// 'i' integer arrays (including starts and cut handles), 'c' char arrays,
// 'o' scalar outputs.
const std::map<script_key, char> &scriptable_outputs() {
  static const std::map<script_key, char> outputs = {
      {{"KVSLgetlpsol", "x"}, 'd'},        {{"KVSLgetlpsol", "slack"}, 'd'},
      {{"KVSLgetlpsol", "dual"}, 'd'},     {{"KVSLgetlpsol", "dj"}, 'd'},
      {{"KVSLgetmipsol", "x"}, 'd'},       {{"KVSLgetmipsol", "slack"}, 'd'},
      {{"KVSLgetrowrange", "upact"}, 'd'}, {{"KVSLgetrowrange", "loact"}, 'd'},
      {{"KVSLgetrowrange", "uup"}, 'd'},   {{"KVSLgetrowrange", "udn"}, 'd'},
      {{"KVSLgetcolrange", "upact"}, 'd'}, {{"KVSLgetcolrange", "loact"}, 'd'},
      {{"KVSLgetcolrange", "uup"}, 'd'},   {{"KVSLgetcolrange", "udn"}, 'd'},
      {{"KVSLgetcolrange", "ucost"}, 'd'}, {{"KVSLgetcolrange", "lcost"}, 'd'},
      {{"KVSLgetbasis", "rowstat"}, 'i'},  {{"KVSLgetbasis", "colstat"}, 'i'},
      {{"KVSLiisstatus", "count"}, 'o'},   {{"KVSLiisfirst", "status"}, 'o'},
      {{"KVSLiisnext", "status"}, 'o'},    {{"KVSLgetiisdata", "nrows"}, 'o'},
      {{"KVSLgetiisdata", "ncols"}, 'o'},  {{"KVSLgetiisdata", "rowind"}, 'i'},
      {{"KVSLgetiisdata", "colind"}, 'i'}, {{"KVSLgetiisdata", "rowtype"}, 'c'},
      {{"KVSLloadmipsol", "status"}, 'o'}, {{"KVSLgetcutlist", "ncuts"}, 'o'},
      {{"KVSLgetcutlist", "cuts"}, 'i'},   {{"KVSLgetcpcuts", "cuttype"}, 'i'},
      {{"KVSLgetcpcuts", "rowtype"}, 'c'}, {{"KVSLgetcpcuts", "start"}, 'i'},
      {{"KVSLgetcpcuts", "col"}, 'i'},     {{"KVSLgetcpcuts", "val"}, 'd'},
      {{"KVSLgetcpcuts", "rhs"}, 'd'}};
  return outputs;
}

// Reject a function name the interface does not have (a typo in a test
// would otherwise silently never match).
void check_function(const std::string &fn) {
  if (function_names().count(fn) == 0)
    throw std::invalid_argument("fake: no engine function named '" + fn + "'");
}

// Reject a script for an output that fn does not have or of another kind.
void check_output(const std::string &fn, const std::string &param, char kind) {
  check_function(fn);
  auto it = scriptable_outputs().find({fn, param});
  if (it == scriptable_outputs().end() || it->second != kind)
    throw std::invalid_argument("fake: " + fn + " has no output '" + param +
                                "' of this kind");
}

// One entry of the control table.
struct control_def {
  int number;
  bool is_int;
  double def;
};

constexpr double no_cutoff = 1e40;

constexpr control_def control_table[] = {
    {KVSL_CTRL_SCALING, true, 1},       {KVSL_CTRL_PRESOLVE, true, 1},
    {KVSL_CTRL_CRASH, true, 1},         {KVSL_CTRL_LPLOG, true, 100},
    {KVSL_CTRL_MIPPRESOLVE, true, 1},   {KVSL_CTRL_MAXNODE, true, 0},
    {KVSL_CTRL_MIPLOG, true, 1},        {KVSL_CTRL_OUTPUTLOG, true, 1},
    {KVSL_CTRL_BARRIERLOG, true, 0},    {KVSL_CTRL_DUALREDUCTIONS, true, 1},
    {KVSL_CTRL_THREADS, true, 1},       {KVSL_CTRL_CUTSTRATEGY, true, 1},
    {KVSL_CTRL_HEURSTRATEGY, true, 1},  {KVSL_CTRL_FEASTOL, false, 1e-7},
    {KVSL_CTRL_OPTIMALITYTOL, false, 1e-7}, {KVSL_CTRL_MIPTOL, false, 1e-6},
    {KVSL_CTRL_PSEUDOCOST, false, 0.01},    {KVSL_CTRL_MIPABSGAP, false, 0},
    {KVSL_CTRL_MIPRELGAP, false, 1e-4},     {KVSL_CTRL_TIMELIMIT, false, 0},
    {KVSL_CTRL_CUTOFF, false, no_cutoff}};

// The table entry of a control number, null when there is none.
const control_def *find_control(int number) {
  for (const auto &c : control_table)
    if (c.number == number) return &c;
  return nullptr;
}

// A control's default on problem p: the cutoff's depends on the sense.
double default_value(const kvsl_prob &p, const control_def &c) {
  if (c.number == KVSL_CTRL_CUTOFF) return p.sense < 0 ? -no_cutoff : no_cutoff;
  return c.def;
}

// Whether an attribute number is documented in the interface.
bool is_int_attrib(int attrib) {
  static const std::set<int> known = {
      KVSL_ATTR_ROWS,        KVSL_ATTR_SETS,         KVSL_ATTR_ENTITIES,
      KVSL_ATTR_LPSTATUS,    KVSL_ATTR_MIPSTATUS,    KVSL_ATTR_COLS,
      KVSL_ATTR_SIMPLEXITER, KVSL_ATTR_ERRORCODE,    KVSL_ATTR_PRESOLVESTATE,
      KVSL_ATTR_NUMIIS,      KVSL_ATTR_NODES,        KVSL_ATTR_IISAVAILABLE};
  return known.count(attrib) != 0;
}

bool is_dbl_attrib(int attrib) {
  return attrib == KVSL_ATTR_LPOBJVAL || attrib == KVSL_ATTR_BESTBOUND ||
         attrib == KVSL_ATTR_MIPOBJVAL || attrib == KVSL_ATTR_SOLVETIME;
}

// A live problem for the test-side helpers; misuse is a test bug.
const kvsl_prob &live_problem(KVSLprob prob) {
  if (!detail::is_live(prob)) throw std::invalid_argument("fake: not a live engine problem");
  return *prob;
}

// Fill out[0..n-1] from a script of any element type, zeros beyond.
template <class Out, class Script>
void fill_out(Out *out, int64_t n, const Script *script) {
  if (out == nullptr) return;
  for (int64_t k = 0; k < n; ++k)
    out[k] = script != nullptr && static_cast<size_t>(k) < script->size()
                 ? static_cast<Out>((*script)[static_cast<size_t>(k)])
                 : Out{};
}

// The script of (fn, param) in map m, null when there is none.
template <class Map>
const typename Map::mapped_type *script_of(const Map &m, const char *fn, const char *param) {
  auto it = m.find({fn, param});
  return it == m.end() ? nullptr : &it->second;
}

// Throws when a recorded call lacks an argument.
[[noreturn]] void missing(const call &c, const char *kind, const std::string &name) {
  throw std::out_of_range("fake: " + c.fn + " has no " + kind + " argument '" + name + "'");
}

// Looks up name in one of the argument maps of a call.
template <class Map>
const typename Map::mapped_type &lookup(const call &c, const Map &m, const char *kind,
                                        const std::string &name) {
  auto it = m.find(name);
  if (it == m.end()) missing(c, kind, name);
  return it->second;
}

}  // namespace

namespace detail {

std::mutex &state_mutex() {
  static std::mutex *m = new std::mutex;
  return *m;
}

bool is_live(KVSLprob prob) { return prob != nullptr && st().live.count(prob) != 0; }
void add_live(KVSLprob prob) { st().live.insert(prob); }
void remove_live(KVSLprob prob) { st().live.erase(prob); }

int take_failure(const std::string &fn) {
  int rc = 0;
  auto &pending = st().pending;
  for (auto it = pending.begin(); it != pending.end();) {
    if (it->fn == fn && --it->remaining == 0) {
      if (rc == 0) rc = it->code;
      it = pending.erase(it);
    } else {
      ++it;
    }
  }
  if (rc == 0) {
    auto it = st().always.find(fn);
    if (it != st().always.end()) rc = it->second;
  }
  return rc;
}

void append(call &&c) { st().recorded.push_back(std::move(c)); }

void put_doubles(const char *fn, const char *param, double *out, int64_t n) {
  fill_out(out, n, script_of(st().dbl_scripts, fn, param));
}

void put_ints(const char *fn, const char *param, int *out, int64_t n) {
  fill_out(out, n, script_of(st().int_scripts, fn, param));
}

void put_int64s(const char *fn, const char *param, int64_t *out, int64_t n) {
  fill_out(out, n, script_of(st().int_scripts, fn, param));
}

void put_chars(const char *fn, const char *param, char *out, int64_t n) {
  fill_out(out, n, script_of(st().char_scripts, fn, param));
}

// Cut handles are opaque to the library: they are scripted as integers and
// handed out as pointers of that value.
void put_cuts(const char *fn, const char *param, KVSLcut *out, int64_t n) {
  if (out == nullptr) return;
  const auto *script = script_of(st().int_scripts, fn, param);
  for (int64_t k = 0; k < n; ++k) {
    intptr_t v = script != nullptr && static_cast<size_t>(k) < script->size()
                     ? (*script)[static_cast<size_t>(k)]
                     : 0;
    out[k] = reinterpret_cast<KVSLcut>(v);
  }
}

int scripted_out(const char *fn, const char *param) {
  const int *v = script_of(st().out_scripts, fn, param);
  return v != nullptr ? *v : 0;
}

int scripted_int_at(const char *fn, const char *param, int64_t k) {
  const auto *script = script_of(st().int_scripts, fn, param);
  if (script == nullptr || k < 0 || static_cast<size_t>(k) >= script->size()) return 0;
  return (*script)[static_cast<size_t>(k)];
}

void put_out(const char *fn, const char *param, int *out) {
  if (out != nullptr) *out = scripted_out(fn, param);
}

int get_int_control(const kvsl_prob &p, int control, int &value) {
  const control_def *c = find_control(control);
  if (c == nullptr || !c->is_int) return KVSL_ERR_BADCONTROL;
  auto it = p.int_controls.find(control);
  value = it != p.int_controls.end() ? it->second : static_cast<int>(c->def);
  return 0;
}

int set_int_control(kvsl_prob &p, int control, int value) {
  const control_def *c = find_control(control);
  if (c == nullptr || !c->is_int) return KVSL_ERR_BADCONTROL;
  p.int_controls[control] = value;
  return 0;
}

int get_dbl_control(const kvsl_prob &p, int control, double &value) {
  const control_def *c = find_control(control);
  if (c == nullptr || c->is_int) return KVSL_ERR_BADCONTROL;
  auto it = p.dbl_controls.find(control);
  value = it != p.dbl_controls.end() ? it->second : default_value(p, *c);
  return 0;
}

int set_dbl_control(kvsl_prob &p, int control, double value) {
  const control_def *c = find_control(control);
  if (c == nullptr || c->is_int) return KVSL_ERR_BADCONTROL;
  p.dbl_controls[control] = value;
  return 0;
}

int set_default_control(kvsl_prob &p, int control) {
  if (find_control(control) == nullptr) return KVSL_ERR_BADCONTROL;
  p.int_controls.erase(control);
  p.dbl_controls.erase(control);
  return 0;
}

int get_int_attrib(const kvsl_prob &p, int attrib, int &value) {
  auto it = st().int_attribs.find(attrib);
  if (it != st().int_attribs.end()) {
    value = it->second;
    return 0;
  }
  if (!is_int_attrib(attrib)) return KVSL_ERR_BADCONTROL;
  value = attrib == KVSL_ATTR_ERRORCODE ? p.error_code : 0;
  return 0;
}

int get_dbl_attrib(int attrib, double &value) {
  auto it = st().dbl_attribs.find(attrib);
  if (it != st().dbl_attribs.end()) {
    value = it->second;
    return 0;
  }
  if (!is_dbl_attrib(attrib)) return KVSL_ERR_BADCONTROL;
  value = 0;
  return 0;
}

}  // namespace detail

// Accessors of one recorded call: throw std::out_of_range when absent.
int64_t call::i(const std::string &name) const { return lookup(*this, ints, "integer", name); }
double call::d(const std::string &name) const { return lookup(*this, dbls, "double", name); }
const std::string &call::s(const std::string &name) const {
  return lookup(*this, strs, "text", name);
}
const std::vector<int64_t> &call::iv(const std::string &name) const {
  return lookup(*this, iarr, "integer array", name);
}
const std::vector<double> &call::dv(const std::string &name) const {
  return lookup(*this, darr, "double array", name);
}
const std::string &call::cv(const std::string &name) const {
  return lookup(*this, carr, "char array", name);
}
bool call::is_null(const std::string &name) const {
  return std::find(nulls.begin(), nulls.end(), name) != nulls.end();
}

// The recorded calls, by reference: read it while no other thread calls the
// engine.
const std::vector<call> &calls() {
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  return st().recorded;
}

std::vector<std::string> call_names() {
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  std::vector<std::string> names;
  for (const auto &c : st().recorded) names.push_back(c.fn);
  return names;
}

std::vector<call> calls_of(const std::string &fn) {
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  std::vector<call> out;
  for (const auto &c : st().recorded)
    if (c.fn == fn) out.push_back(c);
  return out;
}

void clear_calls() {
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  st().recorded.clear();
}

void reset() {
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  state &s = st();
  s.recorded.clear();
  s.pending.clear();
  s.always.clear();
  s.dbl_scripts.clear();
  s.int_scripts.clear();
  s.char_scripts.clear();
  s.out_scripts.clear();
  s.int_attribs.clear();
  s.dbl_attribs.clear();
}

// Throws std::invalid_argument for an unknown function, nth < 1 or code 0.
void fail_call(const std::string &fn, int nth, int code) {
  check_function(fn);
  if (nth < 1 || code == 0) throw std::invalid_argument("fake: fail_call needs nth >= 1, code != 0");
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  st().pending.push_back({fn, nth, code});
}

// Throws std::invalid_argument for an unknown function or code 0.
void fail_always(const std::string &fn, int code) {
  check_function(fn);
  if (code == 0) throw std::invalid_argument("fake: fail_always needs code != 0");
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  st().always[fn] = code;
}

// Throws std::invalid_argument for a problem that is not live or a number
// that is not an integer (double) control.
int int_control(KVSLprob prob, int control) {
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  int value = 0;
  if (detail::get_int_control(live_problem(prob), control, value) != 0)
    throw std::invalid_argument("fake: no integer control " + std::to_string(control));
  return value;
}

double dbl_control(KVSLprob prob, int control) {
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  double value = 0;
  if (detail::get_dbl_control(live_problem(prob), control, value) != 0)
    throw std::invalid_argument("fake: no double control " + std::to_string(control));
  return value;
}

void set_int_attrib(int attrib, int value) {
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  st().int_attribs[attrib] = value;
}

void set_dbl_attrib(int attrib, double value) {
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  st().dbl_attribs[attrib] = value;
}

// The set_* scripts throw std::invalid_argument for an output fn does not
// have (or has of another kind).
void set_vector(const std::string &fn, const std::string &param, std::vector<double> values) {
  check_output(fn, param, 'd');
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  st().dbl_scripts[{fn, param}] = std::move(values);
}

void set_int_vector(const std::string &fn, const std::string &param, std::vector<int> values) {
  check_output(fn, param, 'i');
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  st().int_scripts[{fn, param}] = std::move(values);
}

void set_char_vector(const std::string &fn, const std::string &param, std::string values) {
  check_output(fn, param, 'c');
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  st().char_scripts[{fn, param}] = std::move(values);
}

void set_int_out(const std::string &fn, const std::string &param, int value) {
  check_output(fn, param, 'o');
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  st().out_scripts[{fn, param}] = value;
}

// 0 for a problem that is not live.
int loaded_cols(KVSLprob prob) {
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  return detail::is_live(prob) ? prob->ncols : 0;
}

int loaded_rows(KVSLprob prob) {
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  return detail::is_live(prob) ? prob->nrows : 0;
}

// The callback runs outside the lock so that it may call the engine.
// Throws std::invalid_argument for a problem that is not live; without a
// callback the text is dropped, as the engine does.
void emit_message(KVSLprob prob, const char *text, int msgtype) {
  KVSLmsgcb cb = nullptr;
  void *user = nullptr;
  {
    std::lock_guard<std::mutex> hold(detail::state_mutex());
    const kvsl_prob &p = live_problem(prob);
    cb = p.cb;
    user = p.user;
  }
  if (cb != nullptr)
    cb(prob, user, text, text != nullptr ? static_cast<int>(std::strlen(text)) : 0, msgtype);
}

int live_problems() {
  std::lock_guard<std::mutex> hold(detail::state_mutex());
  return static_cast<int>(st().live.size());
}

}  // namespace fake
