/*
 * numfmt.h -- formatting of one real number for the writers and printers:
 * a fast path for "%g" that matches printf byte for byte, snprintf otherwise.
 */
#ifndef KVTL_IO_NUMFMT_H
#define KVTL_IO_NUMFMT_H

#include <stddef.h>

namespace kvtl {

// Longest text format_g writes, without the terminating NUL.
constexpr size_t g_max_len = 13;   // "-1.23457e-308"

// Write `value` as printf("%g") would into `out` (room for g_max_len + 1
// bytes), NUL-terminated; returns the length.
size_t format_g(char *out, double value);

// Write `value` with the printf format `fmt` (one double conversion) into
// `out` of `size` bytes; "%g" takes the fast path.  Returns the length the
// full text has (as snprintf does).
int format_real(char *out, size_t size, const char *fmt, double value);

// Whether a format is exactly "%g".
inline bool is_plain_g(const char *fmt) {
  return fmt[0] == '%' && fmt[1] == 'g' && fmt[2] == '\0';
}

}  // namespace kvtl

#endif
