/*
 * datafields.cpp -- one field of a data line: the conversions of a format,
 * numbers read with a chosen decimal sign, quoted and unquoted texts.
 */
#include "io/datafields.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include <charconv>

#include "kvtl.h"

namespace kvtl {

namespace {

// Widths beyond any line buffer the reader can allocate mean "all of it".
constexpr size_t width_cap = size_t{1} << 31;
// Numbers up to this length are converted in a buffer on the stack.
constexpr size_t exact_span_max = 512;
// Exponents beyond any double's range are all the same.
constexpr int64_t exponent_cap = INT64_C(1) << 40;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

field_kind kind_of(char letter) {
  switch (letter) {
    case 'i': return field_kind::integer;
    case 'd': case 'f': case 'g': case 'r': return field_kind::real;
    case 'S': case 's': case 'T': case 't': return field_kind::text;
    default: return field_kind::unknown;
  }
}

// The parts of a number found in the line.
struct number_parts {
  bool negative;
  const char *int_begin, *int_end;    // integer digits (may be empty)
  const char *frac_begin, *frac_end;  // fraction digits (may be empty)
  const char *exp_begin, *exp_end;    // exponent sign and digits (may be empty)
};

// The decimal exponent of the first significant digit (0 when every digit
// is 0): tells an overflow from an underflow.
int64_t leading_exponent(const number_parts &n, bool &zero) {
  int64_t e = 0;
  if (n.exp_begin < n.exp_end) {
    const char *c = n.exp_begin;
    bool neg = *c == '-';
    if (*c == '+' || *c == '-') ++c;
    for (; c < n.exp_end; ++c)
      if (e < exponent_cap) e = e * 10 + (*c - '0');
    if (neg) e = -e;
  }
  zero = false;
  const char *c = n.int_begin;
  while (c < n.int_end && *c == '0') ++c;
  if (c < n.int_end) return e + (n.int_end - c) - 1;
  for (c = n.frac_begin; c < n.frac_end; ++c)
    if (*c != '0') return e - (c - n.frac_begin) - 1;
  zero = true;
  return 0;
}

// Copy the number with a '.' as decimal point (whatever sign the line
// uses) into text, which has room for it.
size_t normalise(const number_parts &n, char *text) {
  char *w = text;
  if (n.negative) *w++ = '-';
  *w++ = '0';
  memcpy(w, n.int_begin, n.int_end - n.int_begin);
  w += n.int_end - n.int_begin;
  if (n.frac_begin < n.frac_end) {
    *w++ = '.';
    memcpy(w, n.frac_begin, n.frac_end - n.frac_begin);
    w += n.frac_end - n.frac_begin;
  }
  if (n.exp_begin < n.exp_end) {
    *w++ = 'e';
    memcpy(w, n.exp_begin, n.exp_end - n.exp_begin);
    w += n.exp_end - n.exp_begin;
  }
  return static_cast<size_t>(w - text);
}

// The double nearest to the number, converted without any locale; beyond
// the range of doubles, infinity or zero with the number's sign.
double number_value(const number_parts &n) {
  size_t length = (n.int_end - n.int_begin) + (n.frac_end - n.frac_begin) +
                  (n.exp_end - n.exp_begin) + 4;
  char stack_text[exact_span_max];
  char *text = stack_text;
  void (*release)(void *) = mdlsl_free ? mdlsl_free : free;
  if (length > sizeof stack_text)
    text = static_cast<char *>((mdlsl_malloc ? mdlsl_malloc : malloc)(length));
  double v = 0;
  bool exact = false;
  if (text != nullptr) {
    size_t used = normalise(n, text);
    auto [end, ec] = std::from_chars(text, text + used, v);
    exact = ec == std::errc() && end == text + used;
    if (text != stack_text) release(text);
  }
  if (exact) return v;
  bool zero;
  int64_t lead = leading_exponent(n, zero);
  v = zero || lead < 0 ? 0.0 : HUGE_VAL;
  return n.negative ? -v : v;
}

}  // namespace

bool is_blank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

const char *skip_blanks(const char *p) {
  while (is_blank(*p)) ++p;
  return p;
}

const char *next_conversion(const char *fmt, conversion &conv) {
  conv.letter = *fmt++;
  conv.kind = kind_of(conv.letter);
  conv.width = default_text_width;
  conv.separator = 0;
  if (conv.kind == field_kind::text && is_digit(*fmt)) {
    size_t w = 0;
    for (; is_digit(*fmt); ++fmt)
      if (w < width_cap) w = w * 10 + static_cast<size_t>(*fmt - '0');
    conv.width = w < width_cap ? w : width_cap;
  }
  if (*fmt != '\0') {
    if (!is_blank(*fmt)) conv.separator = *fmt;
    ++fmt;
  }
  return fmt;
}

bool format_is_valid(const char *fmt) {
  conversion conv;
  while (*fmt != '\0') {
    fmt = next_conversion(fmt, conv);
    if (conv.kind == field_kind::unknown) return false;
  }
  return true;
}

const char *scan_integer(const char *p, int32_t &value) {
  const char *q = p;
  bool negative = *q == '-';
  if (*q == '+' || *q == '-') ++q;
  if (!is_digit(*q)) {
    value = 0;
    return p;
  }
  // Accumulate towards the sign's side so that INT32_MIN is reachable.
  int64_t v = 0;
  for (; is_digit(*q); ++q) {
    int d = *q - '0';
    if (v < INT64_C(1) << 32) v = v * 10 + d;
  }
  if (negative) v = -v;
  value = v > INT32_MAX ? INT32_MAX : v < INT32_MIN ? INT32_MIN : static_cast<int32_t>(v);
  return q;
}

const char *scan_real(const char *p, char decsign, double &value) {
  value = 0;
  number_parts n{};
  const char *q = p;
  n.negative = *q == '-';
  if (*q == '+' || *q == '-') ++q;
  n.int_begin = q;
  while (is_digit(*q)) ++q;
  n.int_end = q;
  n.frac_begin = n.frac_end = q;
  // A decimal sign counts only when a digit follows it.
  if (decsign != '\0' && *q == decsign && is_digit(q[1])) {
    n.frac_begin = ++q;
    while (is_digit(*q)) ++q;
    n.frac_end = q;
  }
  if (n.int_begin == n.int_end && n.frac_begin == n.frac_end) return p;
  n.exp_begin = n.exp_end = q;
  if (*q == 'e' || *q == 'E') {
    const char *e = q + 1;
    if (*e == '+' || *e == '-') ++e;
    if (is_digit(*e)) {
      n.exp_begin = q + 1;
      while (is_digit(*e)) ++e;
      n.exp_end = q = e;
    }
  }
  value = number_value(n);
  return q;
}

text_span scan_text(const char *p, const conversion &conv) {
  const char open = *p;
  if ((conv.letter == 'S' && open != '"') || (conv.letter == 's' && open != '\''))
    return {p, 0, p, false};
  bool quoted = conv.letter == 'S' || conv.letter == 's' ||
                (conv.letter == 'T' && (open == '"' || open == '\''));
  if (quoted && open == conv.separator && conv.letter == 'T') {
    // A quote that is also the separator opens nothing.
    quoted = false;
    ++p;
  }
  if (quoted) {
    const char *close = strchr(p + 1, open);
    if (close == nullptr) return {p, 0, p, false};
    return {p + 1, static_cast<size_t>(close - (p + 1)), close + 1, true};
  }
  const char *q = p;
  while (*q != '\0' && !is_blank(*q) && *q != '!' && *q != '&' &&
         !(conv.separator != 0 && *q == conv.separator))
    ++q;
  return {p, static_cast<size_t>(q - p), q, true};
}

void store_text(char *target, const text_span &span, size_t width) {
  size_t n = span.length < width ? span.length : width;
  memcpy(target, span.begin, n);
  target[n] = '\0';
}

}  // namespace kvtl
