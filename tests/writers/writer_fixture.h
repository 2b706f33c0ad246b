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

  // Run `attempt` (returning 0 or 1) with the nth allocation through the
  // hooks failing, for n = 0, 1, ... until nothing fails: a failed attempt
  // must have reported exactly 1502, a successful one nothing.
  struct sweep_result {
    int failures = 0, successes = 0;
  };
  template <class F>
  sweep_result sweep_allocations(F &&attempt) {
    sweep_result r;
    saved_malloc() = mdlsl_malloc;
    for (int n = 0; n < 50; ++n) {
      errors.reports.clear();
      countdown() = n;
      mdlsl_malloc = failing_malloc;
      const int rc = attempt();
      mdlsl_malloc = saved_malloc();
      const bool hit = countdown() < 0;
      countdown() = -1;
      if (rc == 0) {
        EXPECT_TRUE(errors.empty());
        ++r.successes;
        if (!hit) break;   // nothing left to fail
      } else {
        ++r.failures;
        EXPECT_EQ(errors.reports.size(), 1u);
        expect_report(1502, 1, "Not enough memory.");
      }
    }
    return r;
  }
  static void *(*&saved_malloc())(size_t) {
    static void *(*hook)(size_t) = nullptr;
    return hook;
  }
  static int &countdown() {
    static int n = -1;
    return n;
  }
  static void *failing_malloc(size_t n) {
    if (countdown() >= 0 && countdown()-- == 0) return nullptr;
    return saved_malloc()(n);
  }

  std::string dir;
};

#endif
