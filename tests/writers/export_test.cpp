/*
 * export_test.cpp -- mdlexportprob_prob and mdlwritedir_prob: formats,
 * file names, files that cannot be opened or written, and the directives
 * file.
 */
#include <unistd.h>

#include "writers/writer_fixture.h"

namespace {

class Export : public WriterTest {
 protected:
  void SetUp() override {
    WriterTest::SetUp();
    v = var("v", MDL_CONTINUOUS, 0, 2);
    MDLctr c = ctr("c", MDL_LEQ);
    mdladdterm(c, v, 1);
    mdladdterm(c, nullptr, 1);
    MDLctr obj = ctr("obj", MDL_NONBINDING);
    mdladdterm(obj, v, -1);
    mdlsetobj_prob(prob, obj);
  }
  MDLvar v = nullptr;
};

TEST_F(Export, UnknownFormatWarnsAndWritesLp) {
  const std::string file = path("odd");
  EXPECT_EQ(mdlexportprob_prob(prob, 7, file.c_str()), 0);
  expect_report(1580, 0, "Unknown output file format 7.");
  EXPECT_TRUE(read(file + ".lp").starts_with("\\LP file generated from the problem"));
  EXPECT_FALSE(exists(file + ".mps"));
}

TEST_F(Export, FileNameRules) {
  std::filesystem::create_directories(path("a.b"));
  struct { const char *given; const char *written; int format; } cases[] = {
      {"plain", "plain.lp", MDL_FILE_LP},     {"plain", "plain.mps", MDL_FILE_MPS},
      {"has.ext", "has.ext", MDL_FILE_LP},    {"dot.", "dot.", MDL_FILE_MPS},
      {"a.b/name", "a.b/name.lp", MDL_FILE_LP}, {"a.b/", "a.b/.mps", MDL_FILE_MPS},
      {"a.b/x.y", "a.b/x.y", MDL_FILE_MPS}};
  for (const auto &c : cases) {
    const std::string given = path(c.given);
    EXPECT_EQ(mdlexportprob_prob(prob, c.format, given.c_str()), 0) << c.given;
    EXPECT_TRUE(exists(path(c.written))) << c.given << " -> " << c.written;
  }
  // Without a name the problem's name is used.
  const std::string base = path("named");
  ASSERT_EQ(mdlsetprobname_prob(prob, base.c_str()), 0);
  EXPECT_EQ(mdlexportprob_prob(prob, MDL_FILE_MPS, nullptr), 0);
  EXPECT_EQ(mdlexportprob_prob(prob, MDL_FILE_LP, ""), 0);
  EXPECT_EQ(mdlwritedir_prob(prob, nullptr), 0);
  EXPECT_TRUE(exists(base + ".mps"));
  EXPECT_TRUE(exists(base + ".lp"));
  EXPECT_TRUE(exists(base + ".dir"));
  EXPECT_EQ(mdlwritedir_prob(prob, path("d.txt").c_str()), 0);
  EXPECT_TRUE(exists(path("d.txt")));
  EXPECT_TRUE(errors.empty());
}

TEST_F(Export, ExistingFileIsReplaced) {
  const std::string file = path("old.lp");
  {
    std::ofstream out(file);
    out << std::string(100000, '#');
  }
  EXPECT_EQ(mdlexportprob_prob(prob, MDL_FILE_LP, file.c_str()), 0);
  EXPECT_EQ(read(file).find('#'), std::string::npos);
  EXPECT_TRUE(read(file).ends_with("\nEnd\n"));
}

TEST_F(Export, UnopenableFileGivesOneWithoutMessage) {
  const std::string file = path("no/such/dir/model");
  EXPECT_EQ(mdlexportprob_prob(prob, MDL_FILE_LP, file.c_str()), 1);
  EXPECT_EQ(mdlexportprob_prob(prob, MDL_FILE_MPS, file.c_str()), 1);
  EXPECT_EQ(mdlwritedir_prob(prob, file.c_str()), 1);
  EXPECT_TRUE(errors.empty());
}

TEST_F(Export, WriteFailureGivesOne) {
  // A full device accepts the open and refuses the data.
  ASSERT_EQ(symlink("/dev/full", path("full.lp").c_str()), 0);
  ASSERT_EQ(symlink("/dev/full", path("full.mps").c_str()), 0);
  ASSERT_EQ(symlink("/dev/full", path("full.dir").c_str()), 0);
  const std::string file = path("full");
  EXPECT_EQ(mdlexportprob_prob(prob, MDL_FILE_LP, file.c_str()), 1);
  EXPECT_EQ(mdlexportprob_prob(prob, MDL_FILE_MPS, file.c_str()), 1);
  mdlsetvardir(v, MDL_DIR_UP, 0);
  EXPECT_EQ(mdlwritedir_prob(prob, file.c_str()), 1);
  EXPECT_TRUE(errors.empty());
}

TEST_F(Export, AllocationFailuresOfLpAndDirectivesFiles) {
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  mdlsetvardir(v, MDL_DIR_PRIORITY, 3);
  const std::string file = path("alloc");
  ASSERT_EQ(mdlexportprob_prob(prob, MDL_FILE_LP, file.c_str()), 0);
  ASSERT_EQ(mdlwritedir_prob(prob, file.c_str()), 0);
  const std::string lp = read(file + ".lp"), dirfile = read(file + ".dir");
  const sweep_result l = sweep_allocations([&] {
    std::filesystem::remove(file + ".lp");
    const int rc = mdlexportprob_prob(prob, MDL_FILE_LP, file.c_str());
    if (rc == 0) EXPECT_EQ(read(file + ".lp"), lp);
    return rc;
  });
  EXPECT_EQ(l.failures, 1);    // the name
  EXPECT_GE(l.successes, 2);   // the small buffer, then nothing failed
  const sweep_result d = sweep_allocations([&] {
    std::filesystem::remove(file + ".dir");
    const int rc = mdlwritedir_prob(prob, file.c_str());
    if (rc == 0) EXPECT_EQ(read(file + ".dir"), dirfile);
    return rc;
  });
  EXPECT_EQ(d.failures, 1);
  EXPECT_GE(d.successes, 2);
  EXPECT_EQ(dirfile, " PR v                   3\n");
}

TEST_F(Export, GenerationFailureGivesOne) {
  MDLprob empty = mdlnewprob("nothing");
  ASSERT_NE(empty, nullptr);
  const std::string file = path("nothing");
  EXPECT_EQ(mdlexportprob_prob(empty, MDL_FILE_LP, file.c_str()), 1);
  EXPECT_EQ(errors.last().number, 1515);   // the generator's own report
  EXPECT_FALSE(exists(file + ".lp"));
  mdldelprob_prob(empty);
}

TEST_F(Export, NullProblem) {
  EXPECT_EQ(mdlexportprob_prob(nullptr, MDL_FILE_LP, "x"), 1);
  expect_report(1501, 1, "(exportprob) No active problem.");
  EXPECT_EQ(mdlwritedir_prob(nullptr, "x"), 1);
  expect_report(1501, 1, "(writedir) No active problem.");
}

TEST_F(Export, GeneratesTheMatrixFirst) {
  const std::string file = path("gen");
  EXPECT_EQ(mdlexportprob_prob(prob, MDL_FILE_MPS, file.c_str()), 0);
  EXPECT_EQ(mdlgetprobstat_prob(prob) & 1, 1);   // loaded
  EXPECT_EQ(mdlgetcolnum(v), 0);
}

using Directives = WriterTest;

TEST_F(Directives, EmptyFileWithoutDirectives) {
  MDLvar x = var("x");
  (void)x;
  const std::string file = path("none");
  ASSERT_EQ(mdlwritedir_prob(prob, file.c_str()), 0);
  ASSERT_TRUE(exists(file + ".dir"));
  EXPECT_EQ(read(file + ".dir"), "");
}

TEST_F(Directives, EveryKindInListOrderThenConstraintRoles) {
  MDLvar x = var("x"), y = var("a_name_of_twenty_two_");
  MDLsos s = mdlnewsos_prob(prob, "s", MDL_SOS1);
  mdladdsosel(s, x, 1);
  mdlsetvardir(x, MDL_DIR_PRIORITY, 2.9);
  mdlsetvardir(y, MDL_DIR_UP, 0);
  mdlsetsosdir(s, MDL_DIR_DOWN, 0);
  mdlsetvardir(x, MDL_DIR_PSEUDOUP, 1.25);
  mdlsetsosdir(s, MDL_DIR_PSEUDODN, 0.5);
  mdlsetvardir(y, MDL_DIR_PRIORITY, -3.7);
  MDLctr cut = ctr("cut", MDL_LEQ);
  mdladdterm(cut, x, 1);
  mdlsetmodcut(cut, 1);
  MDLctr plain = ctr("plain", MDL_LEQ);
  mdladdterm(plain, x, 1);
  MDLctr late = ctr("late", MDL_GEQ);
  mdladdterm(late, y, 1);
  mdlsetdelayed(late, 1);
  const std::string file = path("all");
  ASSERT_EQ(mdlwritedir_prob(prob, file.c_str()), 0);
  EXPECT_EQ(read(file + ".dir"),
            " PR x                   2\n"
            " UP a_name_of_twenty_two_\n"
            " DN s\n"
            " PU x                   1.25\n"
            " PD s                   0.5\n"
            " PR a_name_of_twenty_two_ -3\n"
            " DR late\n"
            " MC cut\n");
  ASSERT_EQ(mdlsetrealfmt_prob(prob, "%.3f"), 0);
  ASSERT_EQ(mdlwritedir_prob(prob, file.c_str()), 0);
  EXPECT_NE(read(file + ".dir").find(" PU x                   1.250\n"), std::string::npos);
  EXPECT_TRUE(errors.empty());
}

TEST_F(Directives, DirectiveOfADeletedSetIsNotWritten) {
  MDLvar x = var("x");
  MDLsos s = mdlnewsos_prob(prob, "s", MDL_SOS1);
  mdladdsosel(s, x, 1);
  mdlsetsosdir(s, MDL_DIR_UP, 0);
  mdlsetvardir(x, MDL_DIR_DOWN, 0);
  mdldelsos(s);
  const std::string file = path("deleted");
  ASSERT_EQ(mdlwritedir_prob(prob, file.c_str()), 0);
  EXPECT_EQ(read(file + ".dir"), " DN x\n");
}

}  // namespace
