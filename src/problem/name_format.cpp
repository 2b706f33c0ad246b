/*
 * name_format.cpp -- names such as "x_%d_%d" formatted by a direct walk of
 * the format; anything beyond text, integers and strings is left to
 * vsnprintf by the caller.
 */
#include "problem/name_format.h"

#include <stdint.h>
#include <string.h>

namespace kvtl {

namespace {

enum class length_mod { none, hh, h, l, ll, z, j };

// Read the length modifier at `*p` (moving past it).
length_mod read_length(const char *&p) {
  switch (*p) {
    case 'h':
      if (p[1] == 'h') {
        p += 2;
        return length_mod::hh;
      }
      ++p;
      return length_mod::h;
    case 'l':
      if (p[1] == 'l') {
        p += 2;
        return length_mod::ll;
      }
      ++p;
      return length_mod::l;
    case 'z': ++p; return length_mod::z;
    case 'j': ++p; return length_mod::j;
    default: return length_mod::none;
  }
}

// The argument of a signed conversion, converted as printf converts it.
intmax_t signed_arg(length_mod m, va_list *ap) {
  switch (m) {
    case length_mod::hh: return static_cast<signed char>(va_arg(*ap, int));
    case length_mod::h: return static_cast<short>(va_arg(*ap, int));
    case length_mod::l: return va_arg(*ap, long);
    case length_mod::ll: return va_arg(*ap, long long);
    case length_mod::z: return static_cast<intmax_t>(va_arg(*ap, ptrdiff_t));
    case length_mod::j: return va_arg(*ap, intmax_t);
    default: return va_arg(*ap, int);
  }
}

uintmax_t unsigned_arg(length_mod m, va_list *ap) {
  switch (m) {
    case length_mod::hh: return static_cast<unsigned char>(va_arg(*ap, unsigned));
    case length_mod::h: return static_cast<unsigned short>(va_arg(*ap, unsigned));
    case length_mod::l: return va_arg(*ap, unsigned long);
    case length_mod::ll: return va_arg(*ap, unsigned long long);
    case length_mod::z: return va_arg(*ap, size_t);
    case length_mod::j: return va_arg(*ap, uintmax_t);
    default: return va_arg(*ap, unsigned);
  }
}

// "00" to "99": two digits a division.
constexpr char digit_pairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// Decimal digits of `v` ending at `end`; returns their start.  Values that
// fit 32 bits (every int) take the narrower, quicker division.
char *decimal(uintmax_t v, char *end) {
  if (v <= UINT32_MAX) {
    auto w = static_cast<uint32_t>(v);
    while (w >= 100) {
      const uint32_t pair = w % 100;
      w /= 100;
      end -= 2;
      end[0] = digit_pairs[2 * pair];
      end[1] = digit_pairs[2 * pair + 1];
    }
    if (w >= 10) {
      end -= 2;
      end[0] = digit_pairs[2 * w];
      end[1] = digit_pairs[2 * w + 1];
    } else {
      *--end = static_cast<char>('0' + w);
    }
    return end;
  }
  do {
    *--end = static_cast<char>('0' + v % 10);
    v /= 10;
  } while (v != 0);
  return end;
}

// Copy `n` bytes; names are short, so a byte loop beats a library call.
inline void copy_short(char *to, const char *from, size_t n) {
  for (size_t i = 0; i < n; ++i) to[i] = from[i];
}

// format_name on a va_list that the conversions read through.
int format_into(char *out, size_t cap, const char *format, va_list *ap) {
  if (cap == 0) return -1;
  char *o = out;
  char *const limit = out + cap - 1;   // room for the terminator
  for (const char *p = format; *p != '\0';) {
    if (*p != '%') {
      // Copy the text up to the next conversion.
      do {
        if (o == limit) return -1;
        *o++ = *p++;
      } while (*p != '%' && *p != '\0');
      continue;
    }
    ++p;
    if (*p == '%') {
      if (o == limit) return -1;
      *o++ = '%';
      ++p;
      continue;
    }
    const length_mod m = read_length(p);
    char digits[24];
    char *const dend = digits + sizeof digits;
    const char *text;
    size_t n;
    switch (*p) {
      case 'd':
      case 'i': {
        intmax_t v = signed_arg(m, ap);
        // The magnitude of the most negative value is taken unsigned.
        uintmax_t mag = v < 0 ? uintmax_t{0} - static_cast<uintmax_t>(v) : static_cast<uintmax_t>(v);
        char *start = decimal(mag, dend);
        if (v < 0) *--start = '-';
        text = start;
        n = static_cast<size_t>(dend - start);
        break;
      }
      case 'u': {
        char *start = decimal(unsigned_arg(m, ap), dend);
        text = start;
        n = static_cast<size_t>(dend - start);
        break;
      }
      case 's':
        if (m != length_mod::none) return -1;
        text = va_arg(*ap, const char *);
        if (text == nullptr) return -1;
        n = strlen(text);
        break;
      default:
        return -1;
    }
    ++p;
    if (n > static_cast<size_t>(limit - o)) return -1;
    copy_short(o, text, n);
    o += n;
  }
  *o = '\0';
  return static_cast<int>(o - out);
}

}  // namespace

int format_name(char *out, size_t cap, const char *format, va_list ap) {
  va_list args;
  va_copy(args, ap);
  const int n = format_into(out, cap, format, &args);
  va_end(args);
  return n;
}

}  // namespace kvtl
