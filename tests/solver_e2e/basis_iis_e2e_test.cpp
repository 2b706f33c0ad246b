/*
 * basis_iis_e2e_test.cpp -- saved bases across a regeneration and
 * infeasible subsystems, through the public interface on the real engine.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kvsl.h"
#include "kvtl.h"
#include "support/messages.h"
#include "support/public_model.h"

namespace {

using testsupport::objective;
using testsupport::row;

using BasisIisE2E = testsupport::public_problem_test;

int iterations(MDLprob p) {
  int n = -1;
  EXPECT_EQ(KVSLgetintattrib(mdlgetkvslprob_prob(p), KVSL_ATTR_SIMPLEXITER, &n), 0);
  return n;
}

// A transportation problem: 5 sources with supplies, 6 sinks with demands,
// more supply than demand; plus a capacity row that never binds.
struct transport {
  std::vector<std::vector<MDLvar>> x;
  std::vector<MDLctr> supply, demand;
  MDLctr cap = nullptr;

  explicit transport(MDLprob p) {
    const double s[5] = {30, 25, 40, 20, 35}, d[6] = {15, 20, 25, 10, 18, 22};
    x.assign(5, std::vector<MDLvar>(6));
    MDLctr cost = mdlnewctr_prob(p, "cost", MDL_NONBINDING);
    cap = mdlnewctr_prob(p, "cap", MDL_LEQ);
    for (int i = 0; i < 5; ++i)
      for (int j = 0; j < 6; ++j) {
        std::string name = "x" + std::to_string(i) + std::to_string(j);
        x[i][j] = mdlnewvar_prob(p, name.c_str(), MDL_CONTINUOUS, 0, MDL_INFINITY);
        EXPECT_EQ(mdladdterm(cost, x[i][j], (i * 7 + j * 3) % 11 + 1), 0);
        EXPECT_EQ(mdladdterm(cap, x[i][j], 1), 0);
      }
    EXPECT_EQ(mdladdterm(cap, nullptr, 1000), 0);
    for (int i = 0; i < 5; ++i) {
      std::string name = "s" + std::to_string(i);
      supply.push_back(mdlnewctr_prob(p, name.c_str(), MDL_LEQ));
      for (int j = 0; j < 6; ++j) EXPECT_EQ(mdladdterm(supply[i], x[i][j], 1), 0);
      EXPECT_EQ(mdladdterm(supply[i], nullptr, s[i]), 0);
    }
    for (int j = 0; j < 6; ++j) {
      std::string name = "d" + std::to_string(j);
      demand.push_back(mdlnewctr_prob(p, name.c_str(), MDL_GEQ));
      for (int i = 0; i < 5; ++i) EXPECT_EQ(mdladdterm(demand[j], x[i][j], 1), 0);
      EXPECT_EQ(mdladdterm(demand[j], nullptr, d[j]), 0);
    }
    EXPECT_EQ(mdlsetobj_prob(p, cost), 0);
  }
};

TEST_F(BasisIisE2E, BasisSurvivesDeletingANonBindingRow) {
  transport t(prob);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  double optimum = mdlgetobjval_prob(prob);
  ASSERT_GT(iterations(prob), 0);
  EXPECT_GT(mdlgetslack(t.cap), 1.0);
  MDLbasis b = mdlsavebasis_prob(prob);
  ASSERT_NE(b, nullptr);
  // Without the basis the regenerated matrix is solved from the start.
  ASSERT_EQ(mdldelctr(t.cap), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  int cold = iterations(prob);
  EXPECT_GT(cold, 0);
  // Regenerated with one row fewer and other row numbers: the saved basis
  // is optimal as it stands.
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  ASSERT_EQ(mdlloadbasis(b), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(iterations(prob), 0);
  EXPECT_NEAR(mdlgetobjval_prob(prob), optimum, 1e-7);
  mdldelbasis(b);
  EXPECT_TRUE(errors.empty());
}

TEST_F(BasisIisE2E, BasisAfterDeletingABindingRowNeedsFewIterations) {
  transport t(prob);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  int first = iterations(prob);
  MDLbasis b = mdlsavebasis_prob(prob);
  ASSERT_NE(b, nullptr);
  // d2's demand binds; without it the flow into sink 2 drops to 0, which
  // the dual simplex reaches by pivoting on that sink's flows only.
  ASSERT_NEAR(mdlgetslack(t.demand[2]), 0.0, 1e-9);
  ASSERT_EQ(mdldelctr(t.demand[2]), 0);
  ASSERT_EQ(mdlloadmat_prob(prob), 0);
  ASSERT_EQ(mdlloadbasis(b), 0);
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  int warm = iterations(prob);
  EXPECT_LE(warm, 5);   // at most one pivot per source on sink 2
  EXPECT_LT(warm, first);
  for (int i = 0; i < 5; ++i) EXPECT_NEAR(mdlgetsol(t.x[i][2]), 0.0, 1e-9);
  mdldelbasis(b);
  EXPECT_TRUE(errors.empty());
}

TEST_F(BasisIisE2E, SubsystemsByConstraintAndVariable) {
  MDLvar a = mdlnewvar_prob(prob, "a", MDL_CONTINUOUS, 0, 2);
  MDLvar b = mdlnewvar_prob(prob, "b", MDL_CONTINUOUS, 0, 10);
  MDLctr low = row(prob, "low", MDL_GEQ, {{a, 1}, {b, 1}}, 20);
  MDLctr high = row(prob, "high", MDL_LEQ, {{a, 1}, {b, 1}}, 5);
  MDLctr need = row(prob, "need", MDL_GEQ, {{a, 1}}, 3);
  row(prob, "free", MDL_LEQ, {{b, 1}}, 50);
  objective(prob, {{a, 1}, {b, 1}});
  ASSERT_EQ(mdlminim_prob(prob, ""), 0);
  EXPECT_EQ(mdlgetlpstat_prob(prob), 2);
  // {low, high} conflict; so do {low, upper bound of a, upper bound of b}
  // and {need, upper bound of a}.
  EXPECT_EQ(mdlgetnumiis_prob(prob), 3);
  std::vector<std::pair<std::vector<MDLctr>, std::vector<MDLvar>>> found;
  for (int n = 1; n <= 3; ++n) {
    MDLvar *vars = nullptr;
    MDLctr *ctrs = nullptr;
    int nvars = -1, nctrs = -1;
    ASSERT_EQ(mdlgetiis_prob(prob, &vars, &nvars, &ctrs, &nctrs, n), 0);
    found.emplace_back(std::vector<MDLctr>(ctrs, ctrs + nctrs), std::vector<MDLvar>(vars, vars + nvars));
    mdlfreeiismem(vars);
    mdlfreeiismem(ctrs);
  }
  auto has = [&](std::vector<MDLctr> c, std::vector<MDLvar> v) {
    std::sort(c.begin(), c.end());
    std::sort(v.begin(), v.end());
    for (auto f : found) {
      std::sort(f.first.begin(), f.first.end());
      std::sort(f.second.begin(), f.second.end());
      if (f.first == c && f.second == v) return true;
    }
    return false;
  };
  EXPECT_TRUE(has({low, high}, {}));
  EXPECT_TRUE(has({low}, {a, b}));
  EXPECT_TRUE(has({need}, {a}));
  // IIS 4 does not exist: empty outputs, result 0.
  MDLvar *vars = reinterpret_cast<MDLvar *>(8);
  int nvars = -1;
  EXPECT_EQ(mdlgetiis_prob(prob, &vars, &nvars, nullptr, nullptr, 4), 0);
  EXPECT_EQ(vars, nullptr);
  EXPECT_EQ(nvars, 0);
  // IIS 0, the quick approximation, is infeasible and holds a subsystem.
  MDLctr *ctrs = nullptr;
  int nctrs = 0;
  ASSERT_EQ(mdlgetiis_prob(prob, nullptr, nullptr, &ctrs, &nctrs, 0), 0);
  EXPECT_GE(nctrs, 1);
  mdlfreeiismem(ctrs);
  EXPECT_TRUE(errors.empty());
}

}  // namespace
