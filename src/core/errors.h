/*
 * errors.h -- the numbered message table and the output path shared by
 * every report and every printed line.
 */
#ifndef KVTL_CORE_ERRORS_H
#define KVTL_CORE_ERRORS_H

#include <stdarg.h>
#include <stdint.h>

#include "kvtl.h"
#include "kvsl.h"

namespace kvtl {

struct message_row {
  const char *text;   // English text: printf format and translation key
  int32_t number;
  int32_t severity;   // 0 error, 2 warning
};

extern const message_row message_table[MDL_E_COUNT];

// Translate a text through the library's text domain.
const char *translate(const char *text);

// Engine log handler installed on every engine problem (user: the problem).
void engine_message(KVSLprob kp, void *user, const char *text, int len, int type);

// Report engine failure of `call` in function `fn`: reads the engine's error
// code of the problem's engine handle and reports error 1524.
void report_engine_error(MDLprob prob, const char *fn, const char *call, int rc);

}  // namespace kvtl

#endif
