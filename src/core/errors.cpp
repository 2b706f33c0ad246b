/*
 * errors.cpp -- mdlerror and the message table, formatted output, the
 * reporting setters, and the engine's log handler.
 */
#include "core/errors.h"

#include <libintl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "core/runtime.h"
#include "problem/problem.h"

namespace kvtl {

const message_row message_table[MDL_E_COUNT] = {
    {"(%s) No active problem.", 1501, 0},
    {"Not enough memory.", 1502, 0},
    {"Dictionary cannot be re-initialized.", 1504, 0},
    {"(%s) No variable given.", 1505, 0},
    {"(%s) No array of variables given.", 1506, 0},
    {"(%s) No constraint given.", 1507, 0},
    {"(%s) No SOS given.", 1508, 0},
    {"(%s) No cut given.", 1509, 0},
    {"(%s) No basis given.", 1510, 0},
    {"(%s) No array of constants given.", 1512, 0},
    {"(%s) No variable given.", 1513, 2},
    {"(%s) No constraint given.", 1514, 2},
    {"(%s) Problem has no %s.", 1515, 0},
    {"(%s) Problem has no %s.", 1516, 2},
    {"(%s) No SOS given.", 1518, 2},
    {"(%s) No cut given.", 1519, 2},
    {"(%s) No solution available or problem modified since last solved.", 1520, 2},
    {"Korvex-Optimizer error getting objective function value.", 1521, 0},
    {"Korvex-Optimizer error getting %s status.", 1522, 0},
    {"Unknown solution option '%c'.", 1523, 0},
    {"(%s) Korvex-Optimizer error %d during '%s'. Return value: %d.", 1524, 0},
    {"(%s) Different problem loaded in Korvex-Optimizer.", 1525, 2},
    {"(%s) Empty problem or problem not loaded in Korvex-Optimizer.", 1526, 0},
    {"Loading MIP solution failed. Return value: %d.", 1527, 2},
    {"(%s) Inconsistent bounds for variable '%s' (%g,%g).", 1530, 0},
    {"(%s) Incorrect type for variable '%s'.", 1531, 0},
    {"(%s) Incorrect type for constraint '%s'.", 1535, 0},
    {"(%s) Inconsistent range for constraint '%s' (%g,%g).", 1536, 0},
    {"(%s) Setting '%s' can only be applied to standard constraints.", 1538, 0},
    {"(%s) Incorrect constraint type for indicator constraint '%s'.", 1539, 0},
    {"(%s) Incorrect constraint type for include vars constraint '%s'.", 1595, 0},
    {"(%s) Trying to modify a closed array of variables ('%s').", 1540, 0},
    {"(%s) Index %d out of range for an array of variables ('%s' max=%d).", 1541, 0},
    {"(%s) Trying to add an entry ('%s') to a complete array of variables ('%s').", 1542, 0},
    {"(%s) Trying to close an incomplete array of variables ('%s').", 1543, 0},
    {"(%s) Wrong type for SOS '%s'.", 1545, 0},
    {"(%s) Wrong directive type.", 1547, 0},
    {"(%s) No index set given.", 1550, 0},
    {"(%s) No name given for an element of an index set.", 1551, 2},
    {"(%s) No index set given.", 1552, 2},
    {"Incorrect IIS index given (%d).", 1555, 2},
    {"(%s) Initialization failed (value: %d).", 1561, 0},
    {"(%s) Inconsistency during matrix generation.", 1563, 0},
    {"(%s) Internal error.", 1565, 0},
    {"Name too long: %s (max=%d).", 1566, 0},
    {"KVSL: %s", 1570, 2},
    {"(%s) No Korvex-Optimizer problem given.", 1572, 0},
    {"(%s) '%s' without matching '%s'.", 1573, 2},
    {"(%s) Unexpected argument value %d.", 1575, 0},
    {"Unknown output file format %d.", 1580, 2},
    {"Internal error writing MPS file.", 1582, 0},
    {"Cut term not found.", 1585, 0},
    {"Switch to cut mode.", 1587, 2},
    {"(%s) Non-quadratic term.", 1591, 0},
    {"(%s) Setting limit for variable '%s' of wrong type.", 1592, 2},
    {"(%s) Setting limit %g for variable '%s' outside bounds (%g,%g).", 1593, 2},
    {"(%s) Setting '%s' can only be applied to non-binding (type N) constraints.", 1594, 0},
    {"Adding MIP solution failed. Error loading matrix (%d).", 1596, 2},
    {"(%s) No solution given.", 1597, 0},
    {"(%s) No solution given.", 1598, 2},
    {"(%s) Removing var %s, set to a NaN value, from solution.", 1599, 2},
};

const char *translate(const char *text) { return dcgettext("tessel", text, LC_MESSAGES); }

// Deliver one formatted text to a problem's (or the global) message
// callback, else to standard output with the text itself as printf's
// format: a '%' in the text is expanded once more, as it always has been.
static void deliver(MDLprob prob, const char *text) {
  MDLcbmsg cb = prob != nullptr ? prob->cbmsg : defaults.cbmsg;
  void *user = prob != nullptr ? prob->cbmsg_user : defaults.cbmsg_user;
  if (cb != nullptr) {
    cb(prob, user, text);
    return;
  }
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  printf(text);
#pragma GCC diagnostic pop
}

static int32_t vprint(MDLprob prob, const char *format, va_list ap) {
  char buf[1024];
  int n = vsnprintf(buf, sizeof buf, format, ap);
  deliver(prob, buf);
  return n;
}

void engine_message(KVSLprob, void *user, const char *text, int len, int type) {
  auto *prob = static_cast<MDLprob>(user);
  if (type < 0 || prob == nullptr) return;
  std::string line = len >= 0 && text != nullptr ? std::string(text, strnlen(text, len))
                                                 : std::string(text ? text : "");
  if (type > 3 || (type == 3 && prob->msglevel > 1)) {
    mdlerror(prob, MDL_W_KVSLMSG, line.c_str());
  } else if (type <= 2 && prob->msglevel > 2) {
    mdlprintf_prob(prob, "%s\n", line.c_str());
  }
}

void report_engine_error(MDLprob prob, const char *fn, const char *call, int rc) {
  int code = 0;
  KVSLgetintattrib(prob->kvsl, KVSL_ATTR_ERRORCODE, &code);
  mdlerror(prob, MDL_E_KVSL, fn, code, call, rc);
}

}  // namespace kvtl

using namespace kvtl;

// Report one row of the message table: error callback first, then the
// "Tessel: " line subject to the message level, then exit on an error
// unless the application turned that off.
KVTL_API void mdlerror(MDLprob prob, int pos, ...) {
  if (pos < 0 || pos >= MDL_E_COUNT) pos = MDL_E_INTERNAL;
  const message_row &row = message_table[pos];
  char text[256];
  va_list ap;
  va_start(ap, pos);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  vsnprintf(text, sizeof text, translate(row.text), ap);
#pragma GCC diagnostic pop
  va_end(ap);
  const bool is_error = row.severity == 0;
  MDLcberr cberr = prob != nullptr ? prob->cberr : defaults.cberr;
  void *cberr_user = prob != nullptr ? prob->cberr_user : defaults.cberr_user;
  int level = prob != nullptr ? prob->msglevel : defaults.msglevel;
  MDLcbmsg cbmsg = prob != nullptr ? prob->cbmsg : defaults.cbmsg;
  if (cberr != nullptr) cberr(prob, cberr_user, row.number, is_error ? 1 : 0, text);
  if (level >= 2 || (level == 1 && is_error)) {
    const char *word = translate(is_error ? "Error" : "Warning");
    if (cbmsg != nullptr)
      mdlprintf_prob(prob, "Tessel: %s %d: %s\n", word, row.number, text);
    else
      fprintf(stderr, "Tessel: %s %d: %s\n", word, row.number, text);
  }
  if (is_error && defaults.exit_on_error) exit(row.number);
}

KVTL_API int mdlseterrctrl(int flag) {
  pthread_mutex_lock(&settings_mutex);
  defaults.exit_on_error = flag;
  pthread_mutex_unlock(&settings_mutex);
  return 0;
}

// Callback setters: a problem's own pair, or the global default.
#define DEFINE_CALLBACK_SETTER(fn, type, field)                 \
  KVTL_API int fn(MDLprob prob, type cb, void *user) {          \
    if (prob != nullptr) {                                      \
      prob->field = cb;                                         \
      prob->field##_user = user;                                \
    } else {                                                    \
      pthread_mutex_lock(&settings_mutex);                      \
      defaults.field = cb;                                      \
      defaults.field##_user = user;                             \
      pthread_mutex_unlock(&settings_mutex);                    \
    }                                                           \
    return 0;                                                   \
  }
DEFINE_CALLBACK_SETTER(mdldefcberr_prob, MDLcberr, cberr)
DEFINE_CALLBACK_SETTER(mdldefcbmsg_prob, MDLcbmsg, cbmsg)
DEFINE_CALLBACK_SETTER(mdldefcbdelvar_prob, MDLcbdelvar, cbdelvar)
#undef DEFINE_CALLBACK_SETTER

// With a problem the level also sets the engine's output controls.
KVTL_API int mdlsetmsglevel_prob(MDLprob prob, int level) {
  if (prob == nullptr) {
    pthread_mutex_lock(&settings_mutex);
    defaults.msglevel = level;
    pthread_mutex_unlock(&settings_mutex);
    return 0;
  }
  prob->msglevel = level;
  KVSLprob kp = prob->kvsl;
  if (level < 1) {
    KVSLsetintcontrol(kp, KVSL_CTRL_OUTPUTLOG, 0);
    KVSLsetintcontrol(kp, KVSL_CTRL_BARRIERLOG, 0);
    KVSLsetintcontrol(kp, KVSL_CTRL_LPLOG, 0);
    KVSLsetintcontrol(kp, KVSL_CTRL_MIPLOG, 0);
  } else if (level <= 2) {
    KVSLsetintcontrol(kp, KVSL_CTRL_BARRIERLOG, 0);
    KVSLsetintcontrol(kp, KVSL_CTRL_LPLOG, 0);
    KVSLsetintcontrol(kp, KVSL_CTRL_MIPLOG, 0);
  } else {
    KVSLsetintcontrol(kp, KVSL_CTRL_BARRIERLOG, 1);
    KVSLsetintcontrol(kp, KVSL_CTRL_LPLOG, 100);
    KVSLsetintcontrol(kp, KVSL_CTRL_OUTPUTLOG, 1);
    KVSLsetintcontrol(kp, KVSL_CTRL_MIPLOG, level - 1);
  }
  return 0;
}

// A format must hold a '%' and be at most 15 characters; null or empty
// means "%g".
KVTL_API int mdlsetrealfmt_prob(MDLprob prob, const char *format) {
  if (format == nullptr || *format == '\0') format = "%g";
  if (strchr(format, '%') == nullptr || strlen(format) >= 16) return 1;
  if (prob != nullptr) {
    strcpy(prob->realfmt, format);
  } else {
    pthread_mutex_lock(&settings_mutex);
    strcpy(defaults.realfmt, format);
    pthread_mutex_unlock(&settings_mutex);
  }
  return 0;
}

KVTL_API int mdlsetcolorder_prob(MDLprob prob, int order) {
  if (static_cast<unsigned>(order) > 3) return 1;
  if (prob != nullptr) {
    prob->colorder = order;
  } else {
    pthread_mutex_lock(&settings_mutex);
    defaults.colorder = order;
    pthread_mutex_unlock(&settings_mutex);
  }
  return 0;
}

KVTL_API int32_t mdlprintf_prob(MDLprob prob, const char *format, ...) {
  va_list ap;
  va_start(ap, format);
  int32_t n = vprint(prob, format, ap);
  va_end(ap);
  return n;
}

KVTL_API int32_t mdlprintf(const char *format, ...) {
  va_list ap;
  va_start(ap, format);
  int32_t n = vprint(context()->current, format, ap);
  va_end(ap);
  return n;
}
