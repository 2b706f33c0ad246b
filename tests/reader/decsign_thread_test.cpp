/*
 * decsign_thread_test.cpp -- two threads read numbers at once, one with a
 * decimal comma and one with a decimal point (run under ThreadSanitizer too).
 */
#include <gtest/gtest.h>

#include <latch>
#include <string>
#include <thread>

#include "kvtl.h"
#include "reader/lines.h"

namespace {

using testsupport::memory_lines;
using testsupport::read_memory_line;

// Read `rounds` lines holding "3<sign>25;7<sign>5" with the given decimal
// sign; returns the number of lines that did not give 3.25 and 7.5.
int read_with(char sign, int rounds, std::latch &start) {
  mdlsetdecsign(sign);
  std::string text;
  for (int i = 0; i < rounds; ++i) text += std::string("3") + sign + "25;7" + sign + "5\n";
  memory_lines src{text};
  start.arrive_and_wait();
  int wrong = 0;
  for (int i = 0; i < rounds; ++i) {
    double a = 0, b = 0;
    double v[2] = {0, 0};
    if (i % 2 == 0) {
      if (mdlreadlinecb(read_memory_line, &src, 80, "f;f", &a, &b) != 2) ++wrong;
    } else {
      if (mdlreadarrlinecb(read_memory_line, &src, 80, "f;", v, 2) != 2) ++wrong;
      a = v[0];
      b = v[1];
    }
    if (a != 3.25 || b != 7.5) ++wrong;
  }
  if (mdlgetdecsign() != sign) ++wrong;
  return wrong;
}

TEST(ReadDecimalSign, EachThreadReadsWithItsOwnSign) {
  ASSERT_EQ(mdlslinit(), 0);
  std::latch start(2);
  int wrong_comma = -1, wrong_point = -1;
  std::thread comma([&] { wrong_comma = read_with(',', 2000, start); });
  std::thread point([&] { wrong_point = read_with('.', 2000, start); });
  comma.join();
  point.join();
  EXPECT_EQ(wrong_comma, 0);
  EXPECT_EQ(wrong_point, 0);
  EXPECT_EQ(mdlgetdecsign(), '.');  // this thread kept its own
  mdlslfinish();
}

}  // namespace
