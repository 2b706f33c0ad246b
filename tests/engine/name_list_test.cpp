/*
 * name_list_test.cpp -- the engine's list of row, column or set names:
 * ranges set and read back against plain strings, renames, empty names,
 * the buffer kept within bounds by rebuilds.
 */
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "name_list.h"

namespace {

using kvsl::name_list;

// Names first..last as the load interface passes them: zero-ended texts one
// after another.
std::string packed(const std::vector<std::string> &names) {
  std::string out;
  for (const auto &n : names) out.append(n).push_back('\0');
  return out;
}

void expect_names(const name_list &list, const std::vector<std::string> &want) {
  ASSERT_EQ(list.size(), static_cast<int>(want.size()));
  for (int k = 0; k < list.size(); ++k) EXPECT_EQ(list.get(k), want[k]) << "object " << k;
}

TEST(NameListTest, UnnamedObjectsReadEmptyAndHoldNoText) {
  name_list list;
  EXPECT_EQ(list.size(), 0);
  list.reset(5);
  expect_names(list, {"", "", "", "", ""});
  EXPECT_EQ(list.text_bytes(), 0u);
}

TEST(NameListTest, RangesRenamesAndEmptyNames) {
  name_list list;
  list.reset(4);
  std::string a = packed({"x1", "", "long_name_of_a_column"});
  list.set(0, 2, a.data());
  expect_names(list, {"x1", "", "long_name_of_a_column", ""});
  std::string b = packed({"y", "z"});
  list.set(2, 3, b.data());
  expect_names(list, {"x1", "", "y", "z"});
  std::string c = packed({""});
  list.set(0, 0, c.data());
  expect_names(list, {"", "", "y", "z"});
  list.set(1, 0, c.data());   // an empty range changes nothing
  expect_names(list, {"", "", "y", "z"});
  list.reset(2);
  expect_names(list, {"", ""});
  EXPECT_EQ(list.text_bytes(), 0u);
}

// Random ranges of random names against plain strings; the buffer never
// holds more than the live texts, the offsets' worth of dead text and the
// last batch.
TEST(NameListTest, RandomRenamesAgainstStrings) {
  std::mt19937 rng(7);
  for (int round = 0; round < 20; ++round) {
    const int n = 1 + static_cast<int>(rng() % 50);
    name_list list;
    list.reset(n);
    std::vector<std::string> want(n);
    for (int step = 0; step < 300; ++step) {
      int first = static_cast<int>(rng() % n);
      int last = first + static_cast<int>(rng() % (n - first));
      std::vector<std::string> batch;
      uint64_t batch_bytes = 0;
      for (int k = first; k <= last; ++k) {
        std::string s = rng() % 5 == 0 ? "" : "n" + std::to_string(rng() % 100000);
        batch.push_back(s);
        batch_bytes += s.size() + 1;
        want[k] = s;
      }
      std::string text = packed(batch);
      list.set(first, last, text.data());
      uint64_t live = 0;
      for (const auto &s : want) live += s.size() + 1;
      EXPECT_LE(list.text_bytes(), 1 + 2 * live + static_cast<uint64_t>(n) + batch_bytes);
    }
    expect_names(list, want);
  }
}

TEST(NameListTest, OneObjectRenamedManyTimesStaysSmall) {
  name_list list;
  list.reset(3);
  for (int k = 0; k < 10000; ++k) {
    std::string text = packed({"name" + std::to_string(k)});
    list.set(1, 1, text.data());
  }
  expect_names(list, {"", "name9999", ""});
  EXPECT_LE(list.text_bytes(), 64u);
}

}  // namespace
