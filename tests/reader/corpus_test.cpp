/*
 * corpus_test.cpp -- replays every input of the fuzz target's corpus
 * through the same entry function (the sanitizer builds check each).
 */
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/reader_entry.h"

namespace {

TEST(ReaderCorpus, EveryInputReplays) {
  namespace fs = std::filesystem;
  const fs::path dir(KVTL_READER_CORPUS);
  ASSERT_TRUE(fs::is_directory(dir)) << dir;
  int inputs = 0;
  for (const auto &entry : fs::directory_iterator(dir)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream in(entry.path(), std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    SCOPED_TRACE(entry.path().filename().string());
    EXPECT_EQ(reader_fuzz_one(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size()), 0);
    ++inputs;
  }
  EXPECT_GE(inputs, 30);
}

}  // namespace
