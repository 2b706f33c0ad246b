/*
 * numfmt.cpp -- "%g" without printf: six significant digits from one
 * extended-precision scaling, with printf itself for the rare near-ties.
 */
#include "io/numfmt.h"

#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace kvtl {

namespace {

// Powers of ten as correctly rounded long doubles, 10^-pow_bias to
// 10^pow_bias: every scale a finite double needs to reach six digits.
constexpr int pow_bias = 340;

struct pow10_table {
  long double p[2 * pow_bias + 1];
  pow10_table() {
    char buf[16];
    for (int k = -pow_bias; k <= pow_bias; ++k) {
      snprintf(buf, sizeof buf, "1e%d", k);
      p[k + pow_bias] = strtold(buf, nullptr);
    }
  }
};

const long double *pow10_of() {
  static const pow10_table table;   // thread-safe one-time initialisation
  return table.p + pow_bias;
}

// Copy the text printf makes (the slow path for near-ties).
size_t by_printf(char *out, double value) {
  return static_cast<size_t>(snprintf(out, g_max_len + 1, "%g", value));
}

}  // namespace

// The six digits n (100000..999999) and decimal exponent x of |value| are
// found by scaling with a 64-bit-mantissa power of ten: the scaled value is
// below 10^6 and off by less than 1e-12, so rounding it to an integer is
// exact unless its fraction lies within 1e-9 of one half -- then printf
// (which rounds the exact binary value) decides.
size_t format_g(char *out, double value) {
  char *p = out;
  if (signbit(value)) *p++ = '-';
  if (isnan(value)) {
    memcpy(p, "nan", 4);
    return static_cast<size_t>(p - out) + 3;
  }
  const double a = fabs(value);
  if (isinf(a)) {
    memcpy(p, "inf", 4);
    return static_cast<size_t>(p - out) + 3;
  }
  if (a == 0) {
    memcpy(p, "0", 2);
    return static_cast<size_t>(p - out) + 1;
  }
  if (a < 999999.5 && a == static_cast<double>(static_cast<uint32_t>(a))) {
    // Whole numbers below a million are their digits (most model data).
    char d[8], *e = d + sizeof d;
    uint32_t n = static_cast<uint32_t>(a);
    do {
      *--e = static_cast<char>('0' + n % 10);
      n /= 10;
    } while (n != 0);
    const size_t len = static_cast<size_t>(d + sizeof d - e);
    memcpy(p, e, len);
    p[len] = '\0';
    return static_cast<size_t>(p - out) + len;
  }
  const long double *pow10 = pow10_of();
  int bexp;
  frexp(a, &bexp);                                  // a in [2^(bexp-1), 2^bexp)
  int x = static_cast<int>(floor((bexp - 1) * 0.30102999566398120));
  long double s = static_cast<long double>(a) * pow10[5 - x];
  if (s < 100000.0L) {
    --x;
    s = static_cast<long double>(a) * pow10[5 - x];
  } else if (s >= 1000000.0L) {
    ++x;
    s = static_cast<long double>(a) * pow10[5 - x];
  }
  const long double whole = floorl(s);
  const long double frac = s - whole;
  if (fabsl(frac - 0.5L) < 1e-9L) return by_printf(out, value);
  uint32_t n = static_cast<uint32_t>(whole) + (frac > 0.5L ? 1 : 0);
  if (n >= 1000000) {                               // 999999.5 and up carry
    n /= 10;
    ++x;
  }
  char d[6];
  for (int i = 5; i >= 0; --i) {
    d[i] = static_cast<char>('0' + n % 10);
    n /= 10;
  }
  int last = 5;                                     // last digit kept
  while (last > 0 && d[last] == '0') --last;
  if (x < -4 || x >= 6) {                           // exponent form
    *p++ = d[0];
    if (last > 0) {
      *p++ = '.';
      memcpy(p, d + 1, static_cast<size_t>(last));
      p += last;
    }
    *p++ = 'e';
    *p++ = x < 0 ? '-' : '+';
    int ex = x < 0 ? -x : x;
    if (ex >= 100) {
      *p++ = static_cast<char>('0' + ex / 100);
      ex %= 100;
    }
    *p++ = static_cast<char>('0' + ex / 10);
    *p++ = static_cast<char>('0' + ex % 10);
  } else if (x >= 0) {                              // ddd[.ddd]
    memcpy(p, d, static_cast<size_t>(x) + 1);
    p += x + 1;
    if (last > x) {
      *p++ = '.';
      memcpy(p, d + x + 1, static_cast<size_t>(last - x));
      p += last - x;
    }
  } else {                                          // 0.000ddd
    *p++ = '0';
    *p++ = '.';
    for (int i = -1; i > x; --i) *p++ = '0';
    memcpy(p, d, static_cast<size_t>(last) + 1);
    p += last + 1;
  }
  *p = '\0';
  return static_cast<size_t>(p - out);
}

int format_real(char *out, size_t size, const char *fmt, double value) {
  if (is_plain_g(fmt) && size > g_max_len) return static_cast<int>(format_g(out, value));
  return snprintf(out, size, fmt, value);
}

}  // namespace kvtl
