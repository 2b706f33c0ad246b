/*
 * controls.cpp -- numbered controls and attributes of an engine problem:
 * the table of controls with their defaults, and the attribute reads.
 */
#include "engine.h"

namespace {

struct int_control {
  int number;
  int defval;
};
struct dbl_control {
  int number;
  double defval;
};

constexpr int_control int_controls[] = {
    {KVSL_CTRL_SCALING, 1},     {KVSL_CTRL_PRESOLVE, 1},   {KVSL_CTRL_CRASH, 1},
    {KVSL_CTRL_LPLOG, 100},     {KVSL_CTRL_MIPPRESOLVE, 1}, {KVSL_CTRL_MAXNODE, 0},
    {KVSL_CTRL_MIPLOG, 1},      {KVSL_CTRL_OUTPUTLOG, 1},  {KVSL_CTRL_BARRIERLOG, 0},
    {KVSL_CTRL_DUALREDUCTIONS, 1}, {KVSL_CTRL_THREADS, 1}, {KVSL_CTRL_CUTSTRATEGY, 1},
    {KVSL_CTRL_HEURSTRATEGY, 1},
};
constexpr dbl_control dbl_controls[] = {
    {KVSL_CTRL_FEASTOL, 1e-7},   {KVSL_CTRL_OPTIMALITYTOL, 1e-7}, {KVSL_CTRL_MIPTOL, 1e-6},
    {KVSL_CTRL_PSEUDOCOST, 0.01}, {KVSL_CTRL_MIPABSGAP, 0.0},     {KVSL_CTRL_MIPRELGAP, 1e-4},
    {KVSL_CTRL_TIMELIMIT, 0.0},  {KVSL_CTRL_CUTOFF, 1e40},
};

const int_control *find_int(int n) {
  for (const auto &c : int_controls)
    if (c.number == n) return &c;
  return nullptr;
}
const dbl_control *find_dbl(int n) {
  for (const auto &c : dbl_controls)
    if (c.number == n) return &c;
  return nullptr;
}

// Default of a double control; the cutoff's depends on the sense.
double dbl_default(const kvsl_prob *prob, const dbl_control *c) {
  if (c->number == KVSL_CTRL_CUTOFF) return prob->sense < 0 ? -1e40 : 1e40;
  return c->defval;
}

}  // namespace

namespace kvsl {

int intcontrol(const kvsl_prob *prob, int control) {
  auto it = prob->intctrl.find(control);
  if (it != prob->intctrl.end()) return it->second;
  const int_control *c = find_int(control);
  return c != nullptr ? c->defval : 0;
}

double dblcontrol(const kvsl_prob *prob, int control) {
  auto it = prob->dblctrl.find(control);
  if (it != prob->dblctrl.end()) return it->second;
  const dbl_control *c = find_dbl(control);
  return c != nullptr ? dbl_default(prob, c) : 0.0;
}

}  // namespace kvsl

KVSL_EXPORT int KVSLsetintcontrol(KVSLprob prob, int control, int value) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (find_int(control) == nullptr) return kvsl::fail(prob, KVSL_ERR_BADCONTROL);
  prob->intctrl[control] = value;
  return 0;
}

KVSL_EXPORT int KVSLgetintcontrol(KVSLprob prob, int control, int *value) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (value == nullptr) return kvsl::fail(prob, KVSL_ERR_BADARG);
  const int_control *c = find_int(control);
  if (c == nullptr) return kvsl::fail(prob, KVSL_ERR_BADCONTROL);
  auto it = prob->intctrl.find(control);
  *value = it != prob->intctrl.end() ? it->second : c->defval;
  return 0;
}

KVSL_EXPORT int KVSLsetdblcontrol(KVSLprob prob, int control, double value) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (find_dbl(control) == nullptr) return kvsl::fail(prob, KVSL_ERR_BADCONTROL);
  prob->dblctrl[control] = value;
  return 0;
}

KVSL_EXPORT int KVSLgetdblcontrol(KVSLprob prob, int control, double *value) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (value == nullptr) return kvsl::fail(prob, KVSL_ERR_BADARG);
  const dbl_control *c = find_dbl(control);
  if (c == nullptr) return kvsl::fail(prob, KVSL_ERR_BADCONTROL);
  auto it = prob->dblctrl.find(control);
  *value = it != prob->dblctrl.end() ? it->second : dbl_default(prob, c);
  return 0;
}

KVSL_EXPORT int KVSLsetdefaultcontrol(KVSLprob prob, int control) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (find_int(control) != nullptr) {
    prob->intctrl.erase(control);
    return 0;
  }
  if (find_dbl(control) != nullptr) {
    prob->dblctrl.erase(control);
    return 0;
  }
  return kvsl::fail(prob, KVSL_ERR_BADCONTROL);
}

// Integer attributes: see the table in kvsl.h.
KVSL_EXPORT int KVSLgetintattrib(KVSLprob prob, int attrib, int *value) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (value == nullptr) return kvsl::fail(prob, KVSL_ERR_BADARG);
  switch (attrib) {
    case KVSL_ATTR_ERRORCODE: *value = prob->errorcode; return 0;
    case KVSL_ATTR_ROWS: *value = static_cast<int>(prob->rowtype.size()); return 0;
    case KVSL_ATTR_COLS: *value = prob->ncols; return 0;
    case KVSL_ATTR_SETS: *value = static_cast<int>(prob->settype.size()); return 0;
    case KVSL_ATTR_ENTITIES: *value = static_cast<int>(prob->entities.size()); return 0;
    case KVSL_ATTR_LPSTATUS: *value = prob->lpstatus; return 0;
    case KVSL_ATTR_MIPSTATUS: *value = prob->mipstatus; return 0;
    case KVSL_ATTR_SIMPLEXITER: *value = prob->iterations; return 0;
    case KVSL_ATTR_PRESOLVESTATE: *value = prob->lp_held ? KVSL_SOLUTION_HELD : 0; return 0;
    case KVSL_ATTR_NUMIIS: *value = kvsl::iis_found(prob); return 0;
    case KVSL_ATTR_NODES: *value = prob->nodes; return 0;
    case KVSL_ATTR_IISAVAILABLE: *value = kvsl::iis_available(prob) ? 1 : 0; return 0;
    default: return kvsl::fail(prob, KVSL_ERR_BADCONTROL);
  }
}

// Double attributes: see the table in kvsl.h.
KVSL_EXPORT int KVSLgetdblattrib(KVSLprob prob, int attrib, double *value) {
  if (prob == nullptr) return KVSL_ERR_BADARG;
  if (value == nullptr) return kvsl::fail(prob, KVSL_ERR_BADARG);
  switch (attrib) {
    case KVSL_ATTR_LPOBJVAL: *value = prob->lp_held ? prob->lp_obj : 0.0; return 0;
    case KVSL_ATTR_BESTBOUND: *value = prob->best_bound; return 0;
    case KVSL_ATTR_MIPOBJVAL: *value = prob->mip_held ? prob->mip_obj : 0.0; return 0;
    case KVSL_ATTR_SOLVETIME: *value = prob->solvetime; return 0;
    default: return kvsl::fail(prob, KVSL_ERR_BADCONTROL);
  }
}
