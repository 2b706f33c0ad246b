/*
 * array_test.cpp -- reading one data line of values of one kind into an
 * array: separators, limits, empty elements, texts, continuation lines.
 */
#include <gtest/gtest.h>
#include <stdint.h>
#include <stdio.h>

#include <string>

#include "kvtl.h"
#include "reader/lines.h"

namespace {

using testsupport::memory_lines;
using testsupport::read_memory_line;

class ReadArray : public ::testing::Test {
 protected:
  void TearDown() override { mdlsetdecsign('.'); }
  memory_lines src;
  void input(const std::string &text) { src = memory_lines{text}; }
  int read(const char *fmt, void *array, int n) {
    return mdlreadarrlinecb(read_memory_line, &src, 80, fmt, array, n);
  }
};

TEST_F(ReadArray, SeparatedIntegers) {
  int32_t v[10];
  for (auto &x : v) x = -1;
  input("1, 2 ,3\n4,5,6,7\n");
  EXPECT_EQ(read("i,", v, 10), 3);
  EXPECT_EQ(v[0], 1);
  EXPECT_EQ(v[1], 2);
  EXPECT_EQ(v[2], 3);
  EXPECT_EQ(v[3], -1);
  // n elements stop the reading; the rest of the line is dropped.
  EXPECT_EQ(read("i,", v, 2), 2);
  EXPECT_EQ(v[0], 4);
  EXPECT_EQ(v[1], 5);
  EXPECT_EQ(v[2], 3);
  EXPECT_EQ(read("i,", v, 2), -1);
}

TEST_F(ReadArray, BlankSeparatedDoublesOfEveryLetter) {
  double v[5];
  for (const char *fmt : {"d", "f", "g", "r", "f "}) {
    input("1.5 -2\t3e1   .25\n");
    for (auto &x : v) x = -1;
    EXPECT_EQ(read(fmt, v, 5), 4) << fmt;
    EXPECT_EQ(v[0], 1.5);
    EXPECT_EQ(v[1], -2.0);
    EXPECT_EQ(v[2], 30.0);
    EXPECT_EQ(v[3], 0.25);
    EXPECT_EQ(v[4], -1.0);  // a blank-separated line gets no empty element
  }
}

TEST_F(ReadArray, EmptyElementsBeforeAndAfterSeparators) {
  int32_t v[6];
  for (auto &x : v) x = -1;
  input("1,,3\n");
  EXPECT_EQ(read("i,", v, 6), 3);
  EXPECT_EQ(v[1], 0);
  // A line that ends right after a separator gives one more empty element.
  for (auto &x : v) x = -1;
  input("1,2,\n");
  EXPECT_EQ(read("i,", v, 6), 3);
  EXPECT_EQ(v[2], 0);
  EXPECT_EQ(v[3], -1);
  // ... but not beyond n.
  for (auto &x : v) x = -1;
  input("1,2,\n");
  EXPECT_EQ(read("i,", v, 2), 2);
  EXPECT_EQ(v[2], -1);
  input(",\n");
  EXPECT_EQ(read("i,", v, 6), 2);
  EXPECT_EQ(v[0], 0);
  EXPECT_EQ(v[1], 0);
}

TEST_F(ReadArray, StopsAtAMismatchOrAMissingSeparator) {
  int32_t v[6];
  input("1 2 x 4\n");
  EXPECT_EQ(read("i", v, 6), 2);
  input("1,2 3\n");
  EXPECT_EQ(read("i,", v, 6), 2);
  input("x\n");
  EXPECT_EQ(read("i,", v, 6), 0);
}

TEST_F(ReadArray, CommentsAndContinuationLines) {
  double v[8];
  input("! header\n\n1;2;&\n3 ! tail\n;4\n");
  EXPECT_EQ(read("f;", v, 8), 3);
  EXPECT_EQ(v[2], 3.0);
  EXPECT_EQ(read("f;", v, 8), 2);  // ";4": an empty element, then 4
  EXPECT_EQ(v[0], 0.0);
  EXPECT_EQ(v[1], 4.0);
  input("5 6 &");
  EXPECT_EQ(read("f", v, 8), 2);
}

TEST_F(ReadArray, DecimalCommaWithAnotherSeparator) {
  double v[3];
  mdlsetdecsign(',');
  input("1,5;2,25;-0,5\n");
  EXPECT_EQ(read("f;", v, 3), 3);
  EXPECT_EQ(v[0], 1.5);
  EXPECT_EQ(v[1], 2.25);
  EXPECT_EQ(v[2], -0.5);
}

TEST_F(ReadArray, Texts) {
  char b0[81], b1[81], b2[81];
  char *v[3] = {b0, b1, b2};
  input("\"a, b\",\"c\"\n");
  EXPECT_EQ(read("S,", v, 3), 2);
  EXPECT_STREQ(b0, "a, b");
  EXPECT_STREQ(b1, "c");
  input("'x' y \"z w\"\n");
  EXPECT_EQ(read("T", v, 3), 3);
  EXPECT_STREQ(b0, "x");
  EXPECT_STREQ(b1, "y");
  EXPECT_STREQ(b2, "z w");
  input("'p' \"q\"\n");
  EXPECT_EQ(read("s", v, 3), 1);
  EXPECT_STREQ(b0, "p");
  input("alpha;beta;\n");
  EXPECT_EQ(read("t;", v, 3), 3);
  EXPECT_STREQ(b1, "beta");
  EXPECT_STREQ(b2, "");
}

TEST_F(ReadArray, TextWidth) {
  char b0[4], b1[4];
  char *v[2] = {b0, b1};
  input("abcdefgh ijk\n");
  EXPECT_EQ(read("t3", v, 2), 2);
  EXPECT_STREQ(b0, "abc");
  EXPECT_STREQ(b1, "ijk");
  input("\"abcdefgh\",'x\n");
  EXPECT_EQ(read("T3,", v, 2), 1);  // the second has no closing quote
  EXPECT_STREQ(b0, "abc");
}

TEST_F(ReadArray, BadCallsAndEndOfInput) {
  int32_t v[2];
  input("1\n");
  EXPECT_EQ(read("i", v, 0), -2);
  EXPECT_EQ(read("i", v, -3), -2);
  EXPECT_EQ(read("x", v, 2), -2);
  EXPECT_EQ(read("", v, 2), -2);
  EXPECT_EQ(read(nullptr, v, 2), -2);
  EXPECT_EQ(read("i", nullptr, 2), -2);
  EXPECT_EQ(src.calls, 0);
  EXPECT_EQ(read("i", v, 2), 1);
  EXPECT_EQ(read("i", v, 2), -1);
  input("  \n! only comments\n");
  EXPECT_EQ(read("i", v, 2), -1);
}

TEST_F(ReadArray, ReadsFromAStream) {
  FILE *f = tmpfile();
  ASSERT_NE(f, nullptr);
  fputs("10 20 30\r\n40", f);
  rewind(f);
  int32_t v[4];
  EXPECT_EQ(mdlreadarrline(f, 80, "i", v, 4), 3);
  EXPECT_EQ(v[2], 30);
  EXPECT_EQ(mdlreadarrline(f, 80, "i", v, 4), 1);
  EXPECT_EQ(v[0], 40);
  EXPECT_EQ(mdlreadarrline(f, 80, "i", v, 4), -1);
  fclose(f);
  EXPECT_EQ(mdlreadarrline(nullptr, 80, "i", v, 4), -1);
}

}  // namespace
