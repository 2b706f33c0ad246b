/*
 * name_format_test.cpp -- the direct name formatter against vsnprintf: the
 * same bytes for every format it takes, a refusal for every other, and
 * mdlnewname giving vsnprintf's text and limits either way.
 */
#include <limits.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>

#include <random>
#include <string>

#include "problem/name_format.h"
#include "problem/support.h"

namespace {

using support::LibraryTest;

struct outcome {
  int direct;             // format_name's result, -1 for a refusal
  std::string direct_text;
  int reference;          // vsnprintf's result
  std::string reference_text;
};

outcome both(size_t cap, const char *format, ...) {
  outcome o{};
  char a[256], b[256];
  va_list ap;
  va_start(ap, format);
  o.direct = kvtl::format_name(a, cap, format, ap);
  // The formatter reads a copy: the same va_list still gives vsnprintf
  // every argument.
  o.reference = vsnprintf(b, cap, format, ap);
  va_end(ap);
  if (o.direct >= 0) o.direct_text = a;
  o.reference_text = b;
  return o;
}

// Formatted directly, with vsnprintf's bytes and length.
#define EXPECT_SAME(...)                                   \
  do {                                                     \
    outcome o_ = both(__VA_ARGS__);                        \
    EXPECT_GE(o_.direct, 0) << #__VA_ARGS__;               \
    EXPECT_EQ(o_.direct, o_.reference) << #__VA_ARGS__;    \
    EXPECT_EQ(o_.direct_text, o_.reference_text) << #__VA_ARGS__; \
  } while (0)

// Left to vsnprintf.
#define EXPECT_REFUSED(...)                                \
  do {                                                     \
    outcome o_ = both(__VA_ARGS__);                        \
    EXPECT_EQ(o_.direct, -1) << #__VA_ARGS__;              \
  } while (0)

TEST(NameFormat, TextAndIntegersAsVsnprintf) {
  EXPECT_SAME(128, "");
  EXPECT_SAME(128, "plain");
  EXPECT_SAME(128, "x_%d_%d", 12, 345);
  EXPECT_SAME(128, "%d", 0);
  EXPECT_SAME(128, "%i|%d|%d", -1, INT_MIN, INT_MAX);
  EXPECT_SAME(128, "%u-%u", 0u, UINT_MAX);
  EXPECT_SAME(128, "%ld %lu", LONG_MIN, ULONG_MAX);
  EXPECT_SAME(128, "%lld %llu %lli", LLONG_MIN, ULLONG_MAX, LLONG_MAX);
  EXPECT_SAME(128, "%hd %hu %hhd %hhu", 70000, 70000u, 300, 300u);
  EXPECT_SAME(128, "%hd %hhd", -32768, -129);
  EXPECT_SAME(128, "%zu %zd %jd %ju", static_cast<size_t>(SIZE_MAX), static_cast<ptrdiff_t>(-5),
              INTMAX_MIN, UINTMAX_MAX);
  EXPECT_SAME(128, "100%% of %s", "it");
  EXPECT_SAME(128, "%s%s%s", "", "ab", "c");
  EXPECT_SAME(128, "%%%%%d%%", 7);
  EXPECT_SAME(128, "link(%s,%d)[%u]", "plant", -42, 9u);
}

TEST(NameFormat, RandomIntegersAndTexts) {
  std::mt19937_64 rng(11);
  std::uniform_int_distribution<long long> any(LLONG_MIN, LLONG_MAX);
  for (int i = 0; i < 20000; ++i) {
    long long v = any(rng) >> (rng() % 64);
    int small = static_cast<int>(v);
    std::string s(rng() % 12, static_cast<char>('a' + rng() % 26));
    EXPECT_SAME(128, "v%lld_%d_%s_%u", v, small, s.c_str(), static_cast<unsigned>(v));
  }
}

TEST(NameFormat, OtherConversionsAreRefused) {
  EXPECT_REFUSED(128, "%5d", 1);
  EXPECT_REFUSED(128, "%-d", 1);
  EXPECT_REFUSED(128, "%+d", 1);
  EXPECT_REFUSED(128, "%05d", 1);
  EXPECT_REFUSED(128, "%.3d", 1);
  EXPECT_REFUSED(128, "%x", 255u);
  EXPECT_REFUSED(128, "%g", 1.5);
  EXPECT_REFUSED(128, "%c", 'a');
  EXPECT_REFUSED(128, "%ls", L"w");
  EXPECT_REFUSED(128, "%1$d", 3);
  EXPECT_REFUSED(128, "%s", static_cast<const char *>(nullptr));
  EXPECT_REFUSED(128, "end%");
  EXPECT_REFUSED(128, "%p", static_cast<void *>(nullptr));
}

TEST(NameFormat, ResultsThatDoNotFitAreRefused) {
  const std::string s127(127, 'a'), s128(128, 'b');
  EXPECT_SAME(128, "%s", s127.c_str());
  EXPECT_REFUSED(128, "%s", s128.c_str());
  EXPECT_SAME(128, "%s%d", std::string(125, 'c').c_str(), 99);
  EXPECT_REFUSED(128, "%s%d", std::string(125, 'c').c_str(), 100);
  EXPECT_REFUSED(128, "%s%%", s127.c_str());
  EXPECT_SAME(4, "a%d", 12);
  EXPECT_REFUSED(4, "ab%d", 12);
  EXPECT_REFUSED(4, "abcd");
  EXPECT_REFUSED(0, "");
  EXPECT_SAME(1, "");
}

class NewName : public LibraryTest {};

// Through mdlnewname, formats taken directly and formats left to vsnprintf
// give vsnprintf's text; too long results fail with the cut text either way.
TEST_F(NewName, SameTextWhicheverWayItIsFormatted) {
  MDLprob p = mdlnewprob("newname");
  ASSERT_NE(p, nullptr);
  EXPECT_STREQ(mdlnewname("x_%d_%d", 3, -4), "x_3_-4");
  EXPECT_STREQ(mdlnewname("%s[%u]", "flow", 7u), "flow[7]");
  EXPECT_STREQ(mdlnewname("y%03d", 7), "y007");
  EXPECT_STREQ(mdlnewname("z%x", 255u), "zff");
  EXPECT_STREQ(mdlnewname("n%s", static_cast<const char *>(nullptr)), "n(null)");
  EXPECT_TRUE(cap.msgs.empty());
  const std::string s125(125, 'q');
  EXPECT_EQ(mdlnewname("%s%d", s125.c_str(), 100), nullptr);   // direct path refuses
  ASSERT_EQ(cap.msgs.size(), 1u);
  EXPECT_EQ(cap.msgs[0].num, 1566);
  EXPECT_EQ(cap.msgs[0].iserror, 1);
  EXPECT_EQ(cap.msgs[0].text, "Name too long: " + s125 + "10 (max=127).");
  EXPECT_EQ(mdlnewname("%s%04d", s125.c_str(), 1), nullptr);   // vsnprintf from the start
  ASSERT_EQ(cap.msgs.size(), 2u);
  EXPECT_EQ(cap.msgs[1].text, "Name too long: " + s125 + "00 (max=127).");
  mdldelprob_prob(p);
}

}  // namespace
