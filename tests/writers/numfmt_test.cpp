/*
 * numfmt_test.cpp -- the "%g" fast path against snprintf over ten million
 * doubles of every kind, and the snprintf route of other formats.
 */
#include <float.h>
#include <gtest/gtest.h>
#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <random>
#include <string>

#include "io/numfmt.h"

namespace {

using kvtl::format_g;

// Compares one value; remembers the first few differences.
struct differ {
  long checked = 0;
  long wrong = 0;
  std::string first;
  void check(double v) {
    char ours[32], ref[64];
    const size_t n = format_g(ours, v);
    snprintf(ref, sizeof ref, "%g", v);
    ++checked;
    if (strcmp(ours, ref) != 0 || n != strlen(ref)) {
      if (++wrong <= 5) {
        char bits[40];
        uint64_t u;
        memcpy(&u, &v, sizeof u);
        snprintf(bits, sizeof bits, "%016llx", static_cast<unsigned long long>(u));
        first += std::string(bits) + ": ours '" + ours + "' printf '" + ref + "'\n";
      }
    }
  }
  void check_around(double v) {
    check(v);
    check(nextafter(v, INFINITY));
    check(nextafter(v, -INFINITY));
    check(-v);
  }
};

double from_bits(uint64_t u) {
  double v;
  memcpy(&v, &u, sizeof v);
  return v;
}

TEST(NumberFormat, SpecialValues) {
  char buf[32];
  const struct { double v; const char *text; } cases[] = {
      {0.0, "0"}, {-0.0, "-0"}, {1e20, "1e+20"}, {-1e20, "-1e+20"},
      {INFINITY, "inf"}, {-INFINITY, "-inf"}, {NAN, "nan"}, {-NAN, "-nan"},
      {1.0, "1"}, {0.5, "0.5"}, {100000, "100000"}, {1000000, "1e+06"},
      {999999.5, "1e+06"}, {0.0001, "0.0001"}, {0.00001, "1e-05"},
      {2147483647.0, "2.14748e+09"}, {123456.5, "123456"}, {123457.5, "123458"},
      {DBL_MAX, "1.79769e+308"}, {4.9406564584124654e-324, "4.94066e-324"},
      {-2.5, "-2.5"}, {1.0 / 3, "0.333333"}};
  for (const auto &c : cases) {
    format_g(buf, c.v);
    EXPECT_STREQ(buf, c.text) << c.text;
  }
}

// Ten million values: random bit patterns, integers, powers of ten and
// their neighbours, values at and next to every rounding boundary of six
// digits, subnormals, short decimals and the special values.
TEST(NumberFormat, MatchesPrintfOnTenMillionDoubles) {
  differ d;
  std::mt19937_64 rng(20261124);
  // Specials.
  const double specials[] = {0.0, -0.0, 1e20, -1e20, INFINITY, -INFINITY, NAN, -NAN,
                             DBL_MAX, DBL_MIN, DBL_TRUE_MIN, DBL_EPSILON};
  for (double v : specials) d.check_around(v);
  // Powers of ten over the whole range, with their neighbours.
  char text[48];
  for (int k = -325; k <= 309; ++k) {
    snprintf(text, sizeof text, "1e%d", k);
    d.check_around(strtod(text, nullptr));
  }
  // Random bit patterns (every exponent, NaNs and infinities included).
  for (int i = 0; i < 3000000; ++i) d.check(from_bits(rng()));
  // Subnormals.
  for (int i = 0; i < 500000; ++i) d.check(from_bits(rng() & 0x800FFFFFFFFFFFFFull));
  // Integers of every magnitude up to 2^63, and small ones densely.
  for (int i = 0; i < 1000000; ++i) {
    const int bits = static_cast<int>(rng() % 63) + 1;
    d.check(static_cast<double>(static_cast<int64_t>(rng() >> (64 - bits))));
  }
  for (int i = -200000; i < 200000; ++i) d.check(i);
  // Exact ties: seven-digit integers ending in 5 (and their scalings by
  // powers of ten that stay exact), and six-digit values plus one half.
  for (int i = 0; i < 400000; ++i) {
    const int64_t n = static_cast<int64_t>(100000 + rng() % 900000) * 10 + 5;
    const int m = static_cast<int>(rng() % 9);
    int64_t v = n;
    for (int j = 0; j < m; ++j) v *= 10;
    d.check(static_cast<double>(v));
    d.check(static_cast<double>(100000 + rng() % 900000) + 0.5);
  }
  // The nearest doubles to decimal rounding boundaries ddddd.d5 x 10^k and
  // their neighbours, over the whole exponent range.
  for (int i = 0; i < 1000000; ++i) {
    const int n = 100000 + static_cast<int>(rng() % 900000);
    const int k = static_cast<int>(rng() % 630) - 318;
    snprintf(text, sizeof text, "%d5e%d", n, k);
    d.check_around(strtod(text, nullptr));
  }
  // Short decimals (what models hold): up to seven digits at every scale.
  while (d.checked < 10000000) {
    const int digits = static_cast<int>(rng() % 7) + 1;
    int64_t n = static_cast<int64_t>(rng() % 10000000);
    for (int j = 7; j > digits; --j) n /= 10;
    const int k = static_cast<int>(rng() % 60) - 30;
    snprintf(text, sizeof text, "%llde%d", static_cast<long long>(n), k);
    d.check(strtod(text, nullptr) * ((rng() & 1) != 0 ? -1 : 1));
  }
  EXPECT_GE(d.checked, 10000000);
  EXPECT_EQ(d.wrong, 0) << d.first;
}

TEST(NumberFormat, OtherFormatsGoThroughSnprintf) {
  char buf[64];
  EXPECT_EQ(kvtl::format_real(buf, sizeof buf, "%.2f", 3.14159), 4);
  EXPECT_STREQ(buf, "3.14");
  EXPECT_EQ(kvtl::format_real(buf, sizeof buf, "<%10.3e>", -2.5), 12);
  EXPECT_STREQ(buf, "<-2.500e+00>");
  EXPECT_EQ(kvtl::format_real(buf, sizeof buf, "%g", 2.5e-7), 7);
  EXPECT_STREQ(buf, "2.5e-07");
  // A buffer too small for the fast path still gets printf's truncation.
  EXPECT_EQ(kvtl::format_real(buf, 4, "%g", 123456.0), 6);
  EXPECT_STREQ(buf, "123");
}

}  // namespace
