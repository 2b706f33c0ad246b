/*
 * datafields.h -- the pieces of the data file reader that look at one field:
 * white space, conversions of a format, numbers and texts in a line.
 */
#ifndef KVTL_IO_DATAFIELDS_H
#define KVTL_IO_DATAFIELDS_H

#include <stddef.h>
#include <stdint.h>

namespace kvtl {

// Blank, tab, newline, carriage return, vertical tab and form feed, whatever
// the locale says.
bool is_blank(char c);
const char *skip_blanks(const char *p);

enum class field_kind { unknown, integer, real, text };

// One conversion of a format: its letter, the most characters a text keeps
// and the separator that must follow the field (0: blanks only).
struct conversion {
  char letter;
  field_kind kind;
  size_t width;
  char separator;
};

constexpr size_t default_text_width = 80;

// Read the conversion at fmt (not at its end) into conv and return the
// format position after it: the letter, digits of a width for text letters,
// then one separator character unless the format ends there.
const char *next_conversion(const char *fmt, conversion &conv);

// Whether every conversion of a (non-null) format has a known letter.
bool format_is_valid(const char *fmt);

// A decimal integer with an optional sign, saturated to the int32 range.
// Returns the position after it, or p itself when nothing could be read.
const char *scan_integer(const char *p, int32_t &value);

// A number whose fractional part follows the decimal sign `decsign`, with an
// optional exponent.  Returns the position after it, or p itself when
// nothing could be read (value is then 0).
const char *scan_real(const char *p, char decsign, double &value);

// Where a text field lies in the line: the characters to keep and the
// position after the field.  matched is false when the field does not fit
// its letter (no opening quote for S and s, no closing quote).
struct text_span {
  const char *begin;
  size_t length;
  const char *end;
  bool matched;
};

// Find the text field at p for conversion conv (letter S, s, T or t).
text_span scan_text(const char *p, const conversion &conv);

// Store a text span into a target of conv.width + 1 bytes, cut at the width.
void store_text(char *target, const text_span &span, size_t width);

}  // namespace kvtl

#endif
