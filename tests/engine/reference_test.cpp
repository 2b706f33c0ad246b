/*
 * reference_test.cpp -- the netlib LPs and MIPLIB 3 models of the shared
 * data folder, read with CoinMpsIO, loaded through the engine interface and
 * solved; objectives are compared with the published optima.
 */
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

#include "engine_test.h"
#include "mps_reader.h"

namespace {

const std::string data_dir = KVSL_TEST_DATA_DIR;

// Published optima of a folder: name -> the values given (one or two).
std::map<std::string, std::vector<double>> read_optima(const std::string &folder, int first,
                                                       int second) {
  std::map<std::string, std::vector<double>> out;
  std::ifstream in(data_dir + "/" + folder + "/optima.tsv");
  std::string line;
  std::getline(in, line);  // header
  while (std::getline(in, line)) {
    std::vector<std::string> f;
    std::stringstream s(line);
    std::string field;
    while (std::getline(s, field, '\t')) f.push_back(field);
    std::vector<double> v{std::stod(f.at(first))};
    if (second >= 0 && static_cast<int>(f.size()) > second && !f[second].empty())
      v.push_back(std::stod(f[second]));
    out[f[0]] = v;
  }
  return out;
}

// Within the relative tolerance of one of the published values (an absolute
// one for an optimum of 0).
::testing::AssertionResult close_to(double got, const std::vector<double> &published,
                                    double tol) {
  for (double v : published)
    if (std::fabs(got - v) <= tol * std::max(1.0, std::fabs(v)))
      return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << got << " is not within " << tol << " of "
                                       << published.front();
}

class NetlibTest : public EngineTest, public ::testing::WithParamInterface<const char *> {};

TEST_P(NetlibTest, ReachesThePublishedOptimum) {
  static const auto optima = read_optima("netlib", 4, 5);
  const std::string name = GetParam();
  mps_model m = read_mps(data_dir + "/netlib/" + name + ".mps.gz");
  ASSERT_EQ(load_mps(p, m, false), 0);
  int col = -1;
  ASSERT_EQ(KVSLchgobj(p, 1, &col, &m.offset), 0);
  ASSERT_EQ(KVSLminim(p, ""), 0);
  ASSERT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
  // The published values leave the constant out: compare c'x with them.
  if (name == "e226") EXPECT_NEAR(m.offset, -7.113, 1e-3);  // the file's RHS entry
  std::vector<double> published = optima.at(name);
  for (double &v : published) v -= m.offset;
  EXPECT_TRUE(close_to(dbl_attr(p, KVSL_ATTR_LPOBJVAL), published, 1e-6));
}

INSTANTIATE_TEST_SUITE_P(
    Netlib, NetlibTest,
    ::testing::Values("afiro", "adlittle", "blend", "sc50a", "sc50b", "sc105", "sc205", "kb2",
                      "share1b", "share2b", "stocfor1", "scagr7", "israel", "recipe", "lotfi",
                      "boeing2", "bore3d", "brandy", "capri", "e226", "scorpion", "sctap1",
                      "vtpbase", "finnis", "grow7", "agg", "bandm", "beaconfd", "degen2",
                      "etamacro", "standata", "ship04s"),
    [](const auto &info) { return std::string(info.param); });

// Solve a MIPLIB model on the given threads (the LP relaxation first) and
// hold its optimum, bound and solution against the published optimum.
void reaches_the_published_optimum(KVSLprob p, const std::string &name, int threads) {
  static const auto optima = read_optima("miplib3", 4, -1);
  mps_model m = read_mps(data_dir + "/miplib3/" + name + ".mps.gz");
  ASSERT_EQ(load_mps(p, m, true), 0);
  ASSERT_EQ(KVSLsetintcontrol(p, KVSL_CTRL_THREADS, threads), 0);
  ASSERT_EQ(KVSLsetdblcontrol(p, KVSL_CTRL_MIPRELGAP, 1e-6), 0);
  ASSERT_EQ(KVSLminim(p, ""), 0);
  ASSERT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_LP_OPTIMAL);
  double relaxation = dbl_attr(p, KVSL_ATTR_LPOBJVAL);
  ASSERT_EQ(KVSLmipoptimize(p, ""), 0);
  ASSERT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
  double best = dbl_attr(p, KVSL_ATTR_MIPOBJVAL);
  EXPECT_TRUE(close_to(best, optima.at(name), 1e-5));
  EXPECT_LE(relaxation, best + 1e-6 * std::max(1.0, std::fabs(best)));
  EXPECT_LE(dbl_attr(p, KVSL_ATTR_BESTBOUND), best + 1e-6 * std::max(1.0, std::fabs(best)));
  // The reported solution is integral and has the reported objective.
  std::vector<double> x(m.ncols);
  ASSERT_EQ(KVSLgetmipsol(p, x.data(), nullptr), 0);
  double cx = -m.offset;
  for (int j = 0; j < m.ncols; ++j) cx += m.obj[j] * x[j];
  EXPECT_NEAR(cx, best, 1e-6 * std::max(1.0, std::fabs(best)));
  for (int j : m.entcol) EXPECT_EQ(x[j], std::round(x[j])) << j;
}

// The MIPLIB models solved in make test, and the one whose search takes
// over ten seconds (pk1, many times that under the sanitizers): run under
// the CTest label "slow" (engine_slow.reference_models), solved in full.
// bell5, bell3a and vpm2 on two threads once took from 20 s to minutes
// (one tree shared by Cbc's threads): one to two seconds now.
const char *const miplib_models[] = {"p0033",  "p0201",   "p0282",  "p0548",  "lseu",
                                     "egout",  "flugpl",  "stein27", "mod008", "gt2",
                                     "vpm1",   "rgn",     "enigma", "misc03", "khb05250",
                                     "dcmulti", "bell5",  "bell3a", "vpm2"};
const char *const miplib_slow_models[] = {"pk1"};

std::string model_name(const ::testing::TestParamInfo<const char *> &info) { return info.param; }

class MiplibTest : public EngineTest, public ::testing::WithParamInterface<const char *> {};

TEST_P(MiplibTest, ReachesThePublishedOptimum) { reaches_the_published_optimum(p, GetParam(), 2); }

INSTANTIATE_TEST_SUITE_P(Miplib, MiplibTest, ::testing::ValuesIn(miplib_models), model_name);
INSTANTIATE_TEST_SUITE_P(DISABLED_MiplibSlow, MiplibTest, ::testing::ValuesIn(miplib_slow_models),
                         model_name);

// The same models on one thread: one search, where two threads race two
// over different orders of the rows.
class MiplibOneThreadTest : public MiplibTest {};

TEST_P(MiplibOneThreadTest, ReachesThePublishedOptimum) {
  reaches_the_published_optimum(p, GetParam(), 1);
}

INSTANTIATE_TEST_SUITE_P(Miplib, MiplibOneThreadTest, ::testing::ValuesIn(miplib_models),
                         model_name);
INSTANTIATE_TEST_SUITE_P(DISABLED_MiplibSlow, MiplibOneThreadTest,
                         ::testing::ValuesIn(miplib_slow_models), model_name);

}  // namespace
