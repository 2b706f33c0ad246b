/*
 * writer_fixture.h -- test support for the writer suites: a problem on the
 * recording engine, a private directory for the files, file reading.
 */
#ifndef KVTL_TESTS_WRITERS_WRITER_FIXTURE_H
#define KVTL_TESTS_WRITERS_WRITER_FIXTURE_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "solver/fixture.h"

class WriterTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    char tmpl[] = "/tmp/kvtl_writers_XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    dir = tmpl;
  }
  void TearDown() override {
    std::filesystem::remove_all(dir);
    SolverTest::TearDown();
  }
  std::string path(const std::string &name) const { return dir + "/" + name; }
  static bool exists(const std::string &file) { return std::filesystem::exists(file); }
  static std::string read(const std::string &file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  }
  // Export in a format to dir/name and return the file's text.
  std::string exported(int format, const std::string &name = "model") {
    const std::string file = path(name);
    EXPECT_EQ(mdlexportprob_prob(prob, format, file.c_str()), 0);
    return read(file + (format == MDL_FILE_MPS ? ".mps" : ".lp"));
  }
  MDLctr ctr(const char *name, int type) {
    MDLctr c = mdlnewctr_prob(prob, name, type);
    EXPECT_NE(c, nullptr);
    return c;
  }

  std::string dir;
};

#endif
