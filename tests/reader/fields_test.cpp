/*
 * fields_test.cpp -- reading one data line into separate variables: line
 * finding, separators, the end rule, comments, continuation lines, numbers,
 * texts with and without quotes and widths, line lengths and line ends.
 */
#include <gtest/gtest.h>
#include <limits.h>
#include <malloc.h>
#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "kvtl.h"
#include "reader/lines.h"

namespace {

using testsupport::memory_lines;
using testsupport::read_memory_line;

class ReadFields : public ::testing::Test {
 protected:
  void TearDown() override { mdlsetdecsign('.'); }
  memory_lines src;
  void input(const std::string &text) { src = memory_lines{text}; }
};

TEST_F(ReadFields, OnlyEmptyAndCommentLinesGiveEndOfInput) {
  int a = 7;
  input("\n   \n! a comment\n\t! another\n\r\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i", &a), -1);
  EXPECT_EQ(a, 7);
  input("");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i", &a), -1);
}

TEST_F(ReadFields, SeparatedFieldsAndTheEndRule) {
  int32_t a = -1, b = -1;
  double c = -1;
  input("1,2,3.5\n1,2\n1,2,\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i,i,f", &a, &b, &c), 3);
  EXPECT_EQ(a, 1);
  EXPECT_EQ(b, 2);
  EXPECT_EQ(c, 3.5);
  c = -1;
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i,i,f", &a, &b, &c), 2);
  EXPECT_EQ(c, -1);  // no trailing separator: the third field stays untouched
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i,i,f", &a, &b, &c), 3);
  EXPECT_EQ(c, 0.0);
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i,i,f", &a, &b, &c), -1);
}

TEST_F(ReadFields, BlankSeparatedLineShortOfOneFieldGetsAnEmptyOne) {
  int32_t a = -1, b = -1, c = -1, d = -1;
  input("1 2\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i i i i", &a, &b, &c, &d), 3);
  EXPECT_EQ(a, 1);
  EXPECT_EQ(b, 2);
  EXPECT_EQ(c, 0);
  EXPECT_EQ(d, -1);  // only the one next conversion
}

TEST_F(ReadFields, EmptyFieldBeforeItsSeparatorCounts) {
  int32_t a = -1, b = -1, c = -1;
  input("1,,3\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i,i,i", &a, &b, &c), 3);
  EXPECT_EQ(a, 1);
  EXPECT_EQ(b, 0);
  EXPECT_EQ(c, 3);
  double x = -1, y = -1;
  input(";7.5\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "f;f", &x, &y), 2);
  EXPECT_EQ(x, 0.0);
  EXPECT_EQ(y, 7.5);
}

TEST_F(ReadFields, NoFieldReadGivesNoEmptyField) {
  int32_t a = -1;
  input("  x\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i i", &a, &a), 0);
  EXPECT_EQ(a, -1);
}

TEST_F(ReadFields, DecimalCommaOfTheThread) {
  double x = 0;
  mdlsetdecsign(',');
  input("3,25\n3.25\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "f", &x), 1);
  EXPECT_EQ(x, 3.25);
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "f", &x), 1);
  EXPECT_EQ(x, 3.0);  // a '.' is not the decimal sign now
  mdlsetdecsign('.');
  double y = -1;
  input("3,25\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "f,f", &x, &y), 2);
  EXPECT_EQ(x, 3.0);
  EXPECT_EQ(y, 25.0);
}

TEST_F(ReadFields, ContinuationLines) {
  int32_t a = 0, b = 0, c = 0;
  input("1 2 & the rest is ignored\n   3\n4\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i i i", &a, &b, &c), 3);
  EXPECT_EQ(c, 3);
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i", &a), 1);
  EXPECT_EQ(a, 4);
  // The continuation line is taken as it is: a comment there ends the data.
  input("1,&\n! 2\n");
  b = -1;
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i,i", &a, &b), 2);
  EXPECT_EQ(b, 0);
  // Input ending inside a continuation returns what was read.
  input("5 &");
  b = -1;
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i i", &a, &b), 1);
  EXPECT_EQ(a, 5);
  EXPECT_EQ(b, -1);
  // Continuation between a field and its separator.
  input("6 &\n , 7\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i,i", &a, &b), 2);
  EXPECT_EQ(b, 7);
}

TEST_F(ReadFields, CommentEndsTheData) {
  int32_t a = -1, b = -1, c = -1;
  input("1 2 ! 3\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i i i", &a, &b, &c), 3);
  EXPECT_EQ(c, 0);
  input("1,2!,3\n");
  c = -1;
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i,i,i", &a, &b, &c), 2);
  EXPECT_EQ(c, -1);
  input("  ! only a comment\n9 ! and data\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i", &a), 1);
  EXPECT_EQ(a, 9);
}

TEST_F(ReadFields, SeparatorMismatchAndExhaustedFormat) {
  int32_t a = -1, b = -1;
  input("1;2\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i,i", &a, &b), 1);
  EXPECT_EQ(b, -1);
  input("1 2 3 4\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i i", &a, &b), 2);
  EXPECT_EQ(b, 2);
  // A separator after the last conversion is never looked for.
  input("8\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i,", &a), 1);
  EXPECT_EQ(a, 8);
}

TEST_F(ReadFields, EmptyFormatConsumesOneDataLine) {
  int32_t a = 0;
  input("1\n2\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, ""), 0);
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i", &a), 1);
  EXPECT_EQ(a, 2);
}

TEST_F(ReadFields, UnknownLetterGivesMinusTwoAndLeavesTheLine) {
  int32_t a = -1, b = -1;
  input("1 2\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i x", &a, &b), -2);
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i  i", &a, &b), -2);  // a blank is no letter
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "q"), -2);
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, nullptr), -2);
  EXPECT_EQ(a, -1);
  EXPECT_EQ(src.calls, 0);
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i i", &a, &b), 2);
  // Digits after a number letter are its separator, not a width.
  input("1 2\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i5i", &a, &b), 1);
  input("1 2\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i55i", &a, &b), -2);
}

TEST_F(ReadFields, EveryNumberLetterReadsADouble) {
  double d = 0, f = 0, g = 0, r = 0;
  input("1.5 -2 3e2 .25\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "d f g r", &d, &f, &g, &r), 4);
  EXPECT_EQ(d, 1.5);
  EXPECT_EQ(f, -2.0);
  EXPECT_EQ(g, 300.0);
  EXPECT_EQ(r, 0.25);
}

TEST_F(ReadFields, NumberSyntax) {
  struct sample {
    const char *line;
    int result;
    double value;
  } samples[] = {
      {"+5\n", 1, 5},          {"-3.5e2\n", 1, -350},   {"-.5\n", 1, -0.5},
      {"1E-2\n", 1, 0.01},     {"2e+3\n", 1, 2000},     {"7e\n", 1, 7},
      {"7e+\n", 1, 7},         {"7ex\n", 1, 7},         {"3.\n", 1, 3},
      {"e5\n", 0, -9},         {".\n", 0, -9},          {"-\n", 0, -9},
      {"+.e1\n", 0, -9},       {"0.1\n", 1, 0.1},       {"123456789.123456789\n", 1, 123456789.123456789},
      {"1e400\n", 1, HUGE_VAL}, {"-1e400\n", 1, -HUGE_VAL}, {"1e-400\n", 1, 0},
      {"0e99999999999\n", 1, 0},
  };
  for (const auto &s : samples) {
    double x = -9;
    input(s.line);
    EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "f", &x), s.result) << s.line;
    EXPECT_EQ(x, s.value) << s.line;
  }
  // A number ends where its syntax ends; the rest must be a separator.
  double x = 0, y = -1;
  input("3.x\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "f f", &x, &y), 1);
  EXPECT_EQ(y, -1);
  input("1-2\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "f f", &x, &y), 2);
  EXPECT_EQ(y, -2.0);
  // A very long number is still read.
  std::string big = std::string(700, '1') + "e-690\n";
  input(big);
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 800, "f", &x), 1);
  EXPECT_NEAR(x, 1.111111111e9, 1e0);
}

TEST_F(ReadFields, IntegerSyntax) {
  struct sample {
    const char *line;
    int result;
    int32_t value;
  } samples[] = {
      {"42\n", 1, 42},
      {"+7\n", 1, 7},
      {"-2147483648\n", 1, INT32_MIN},
      {"2147483647\n", 1, INT32_MAX},
      {"99999999999999999999\n", 1, INT32_MAX},
      {"-99999999999\n", 1, INT32_MIN},
      {"x\n", 0, -9},
      {"+\n", 0, -9},
  };
  for (const auto &s : samples) {
    int32_t v = -9;
    input(s.line);
    EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i", &v), s.result) << s.line;
    EXPECT_EQ(v, s.value) << s.line;
  }
  int32_t a = 0, b = -1;
  input("3.5\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i i", &a, &b), 1);
  EXPECT_EQ(a, 3);
}

TEST_F(ReadFields, QuotedTexts) {
  char a[81], b[81], c[81];
  int32_t n = 0;
  input("\"a,b's\",4\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "S,i", a, &n), 2);
  EXPECT_STREQ(a, "a,b's");
  EXPECT_EQ(n, 4);
  input("'say \"hi\", ok' 'x!y&z'\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "s s", a, b), 2);
  EXPECT_STREQ(a, "say \"hi\", ok");
  EXPECT_STREQ(b, "x!y&z");
  // S wants a double quote, s a single one.
  strcpy(a, "keep");
  input("'x'\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "S", a), 0);
  EXPECT_STREQ(a, "keep");
  input("\"x\"\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "s", a), 0);
  input("plain\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "S", a), 0);
  // A line that ends before the closing quote does not count the field.
  input("\"one\" \"two\n");
  strcpy(b, "keep");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "S S", a, b), 1);
  EXPECT_STREQ(a, "one");
  EXPECT_STREQ(b, "keep");
  // An empty quoted text.
  input("\"\",5\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "S,i", a, &n), 2);
  EXPECT_STREQ(a, "");
  EXPECT_EQ(n, 5);
  // T takes either quote or none.
  input("\"a b\" 'c d' e,f\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "T T T", a, b, c), 3);
  EXPECT_STREQ(a, "a b");
  EXPECT_STREQ(b, "c d");
  EXPECT_STREQ(c, "e,f");
  input("'open\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "T", a), 0);
}

TEST_F(ReadFields, QuoteThatIsTheSeparatorOpensNothing) {
  char a[81], b[81];
  input("'abc'def\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "T'T", a, b), 2);
  EXPECT_STREQ(a, "abc");
  EXPECT_STREQ(b, "def");
}

TEST_F(ReadFields, UnquotedTextEnds) {
  char a[81], b[81], c[81];
  input("ab,cd ef!gh\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "t,t t", a, b, c), 3);
  EXPECT_STREQ(a, "ab");
  EXPECT_STREQ(b, "cd");
  EXPECT_STREQ(c, "ef");
  input("x&\ny\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "t t", a, b), 2);
  EXPECT_STREQ(a, "x");
  EXPECT_STREQ(b, "y");
  // A quote is an ordinary character for t; an empty field before its
  // separator is an empty text.
  input("\"q ,z\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "t t,t", a, b, c), 3);
  EXPECT_STREQ(a, "\"q");
  EXPECT_STREQ(b, "");
  EXPECT_STREQ(c, "z");
}

TEST_F(ReadFields, TextWidths) {
  char s[6], q[6], t[6], u[6], z[1], rest[81];
  input("\"abcdefgh\" 'abcdefgh' abcdefgh abcdefgh abc next\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "S5 s5 T5 t5 t0 t", s, q, t, u, z, rest), 6);
  EXPECT_STREQ(s, "abcde");
  EXPECT_STREQ(q, "abcde");
  EXPECT_STREQ(t, "abcde");
  EXPECT_STREQ(u, "abcde");
  EXPECT_STREQ(z, "");
  EXPECT_STREQ(rest, "next");  // the cut characters were skipped, not left
  // Default width 80.
  std::string longtext(120, 'w');
  char big[200];
  memset(big, 'z', sizeof big);
  input(longtext + "\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 200, "t", big), 1);
  EXPECT_EQ(strlen(big), 80u);
  EXPECT_EQ(big[81], 'z');
  // A width with its separator.
  input("abcdefgh;xy\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "t3;t12", t, rest), 2);
  EXPECT_STREQ(t, "abc");
  EXPECT_STREQ(rest, "xy");
}

TEST_F(ReadFields, EndRuleGivesEmptyText) {
  char a[81], b[81];
  strcpy(b, "keep");
  input("x,\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "t,S", a, b), 2);
  EXPECT_STREQ(b, "");
}

TEST_F(ReadFields, CarriageReturnLineEnds) {
  int32_t a = 0, b = -1, c = -1;
  input("\r\n1,2\r\n3\r\n\r\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i,i", &a, &b), 2);
  EXPECT_EQ(b, 2);
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i i", &a, &c), 2);
  EXPECT_EQ(a, 3);
  EXPECT_EQ(c, 0);
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i", &a), -1);
  char t[81];
  input("word\r\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "t", t), 1);
  EXPECT_STREQ(t, "word");
}

TEST_F(ReadFields, LastLineWithoutNewline) {
  int32_t a = 0, b = 0;
  input("1\n2 3");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i", &a), 1);
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i i", &a, &b), 2);
  EXPECT_EQ(b, 3);
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i", &a), -1);
}

TEST_F(ReadFields, LineOfTheMaximumLengthIsReadWhole) {
  std::string line(150, 'a');
  line[149] = 'b';
  char t[200];
  input(line + "\n7\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 150, "t200", t), 1);
  EXPECT_EQ(std::string(t), line);
  int32_t a = 0;
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 150, "i", &a), 1);
  EXPECT_EQ(a, 7);
}

TEST_F(ReadFields, LongerLineComesInPiecesWithNothingLost) {
  // 100 characters with a maximum length below the 80 floor: the reader is
  // handed 82 bytes at a time (line, newline, terminator) and the rest of
  // the line arrives as the next line.
  std::string line;
  for (int i = 0; i < 100; ++i) line += static_cast<char>('a' + i % 26);
  char t[201];
  input(line + "\n");
  std::string seen;
  int r, calls = 0;
  while ((r = mdlreadlinecb(read_memory_line, &src, 10, "t200", t)) >= 0) {
    EXPECT_EQ(r, 1);
    EXPECT_LE(strlen(t), 81u);
    seen += t;
    ASSERT_LT(++calls, 10);
  }
  EXPECT_EQ(r, -1);
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(seen, line);
  // A negative maximum length is the 80-character floor.
  input(std::string(80, 'k') + "\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, -5, "t", t), 1);
  EXPECT_EQ(strlen(t), 80u);
}

// Allocator hooks that count the large blocks (line buffers beyond the
// stack) and can refuse them.
size_t large_allocs, large_frees;
bool refuse_large;
constexpr size_t large = 1000;
void *counting_malloc(size_t n) {
  if (n >= large) {
    if (refuse_large) return nullptr;
    ++large_allocs;
  }
  return malloc(n);
}
void counting_free(void *p) {
  if (p != nullptr && malloc_usable_size(p) >= large) ++large_frees;
  free(p);
}

TEST_F(ReadFields, LongLineBufferComesFromTheHooksAndGoesBack) {
  auto *old_malloc = mdlsl_malloc;
  auto *old_free = mdlsl_free;
  mdlsl_malloc = counting_malloc;
  mdlsl_free = counting_free;
  large_allocs = large_frees = 0;
  refuse_large = false;
  std::string line(1500, 'q');
  char t[1501];
  input(line + "\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 1500, "t2000", t), 1);
  EXPECT_EQ(std::string(t), line);
  EXPECT_EQ(large_allocs, 1u);
  EXPECT_EQ(large_frees, 1u);
  // Without a buffer no line can be read.
  refuse_large = true;
  input(line + "\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 1500, "t2000", t), -1);
  EXPECT_EQ(src.calls, 0);
  mdlsl_malloc = old_malloc;
  mdlsl_free = old_free;
}

TEST_F(ReadFields, MissingFieldLeavesRemainingPointersUntouched) {
  int32_t a = -1;
  double x = -1;
  char t[81] = "keep";
  input("5 abc 7\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i f t", &a, &x, t), 1);
  EXPECT_EQ(a, 5);
  EXPECT_EQ(x, -1);
  EXPECT_STREQ(t, "keep");
}

TEST_F(ReadFields, NullTargetsAreSkipped) {
  int32_t b = 0;
  input("1 2\n");
  EXPECT_EQ(mdlreadlinecb(read_memory_line, &src, 80, "i i", nullptr, &b), 2);
  EXPECT_EQ(b, 2);
}

TEST_F(ReadFields, NoReaderOrStreamIsEndOfInput) {
  int32_t a = 0;
  EXPECT_EQ(mdlreadlinecb(nullptr, nullptr, 80, "i", &a), -1);
  EXPECT_EQ(mdlreadline(nullptr, 80, "i", &a), -1);
}

TEST_F(ReadFields, ReadsFromAStream) {
  FILE *f = tmpfile();
  ASSERT_NE(f, nullptr);
  fputs("! costs\n1 2.5 \"plant one\"\n\n3 4 'two'", f);
  rewind(f);
  int32_t n = 0;
  double x = 0;
  char name[81];
  EXPECT_EQ(mdlreadline(f, 80, "i f T", &n, &x, name), 3);
  EXPECT_EQ(n, 1);
  EXPECT_EQ(x, 2.5);
  EXPECT_STREQ(name, "plant one");
  EXPECT_EQ(mdlreadline(f, 80, "i f T", &n, &x, name), 3);
  EXPECT_EQ(x, 4.0);
  EXPECT_STREQ(name, "two");
  EXPECT_EQ(mdlreadline(f, 80, "i f T", &n, &x, name), -1);
  fclose(f);
}

}  // namespace
