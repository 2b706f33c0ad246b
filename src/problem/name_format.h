/*
 * name_format.h -- formatting of object names: the plain text and integer
 * and string conversions that names are made of, without the C library's
 * general printf machinery.
 */
#ifndef KVTL_PROBLEM_NAME_FORMAT_H
#define KVTL_PROBLEM_NAME_FORMAT_H

#include <stdarg.h>
#include <stddef.h>

namespace kvtl {

// Format like vsnprintf(out, cap, format, ap) when `format` holds only
// plain text, "%%" and the conversions d, i, u and s without flags, width
// or precision (d, i and u optionally with h, hh, l, ll, z or j), every
// string argument is non-null and the result is shorter than `cap`:
// then the same bytes are written and their number is returned.
// Otherwise -1 is returned and `out` is undefined.  The arguments are read
// from a copy of `ap`, so the caller may format them again with vsnprintf.
int format_name(char *out, size_t cap, const char *format, va_list ap);

}  // namespace kvtl

#endif
