/*
 * threads_test.cpp -- independent problems solved at the same time in
 * different threads give the answers they give alone.
 */
#include <thread>

#include "engine_test.h"

namespace {

// A MIP with n integer columns whose search takes some nodes.
void load_knapsack(KVSLprob p, int n, int seed) {
  dense_model m{"LLL", {}, {}, {}, {}, {}, {{}, {}, {}}};
  double w0 = 0, w1 = 0, w2 = 0;
  for (int j = 0; j < n; ++j) {
    m.obj.push_back(10 + (j * 7 + seed) % 23);
    m.a[0].push_back(3 + (j * 5 + seed) % 17);
    m.a[1].push_back(2 + (j * 3 + seed) % 19);
    m.a[2].push_back(4 + (j * 11 + seed) % 13);
    w0 += m.a[0].back();
    w1 += m.a[1].back();
    w2 += m.a[2].back();
  }
  m.rhs = {w0 / 3, w1 / 3, w2 / 3};
  std::string types(n, 'B');
  std::vector<int> cols(n);
  for (int j = 0; j < n; ++j) cols[j] = j;
  ASSERT_EQ(load_global(p, m, types, cols), 0);
}

double solve_alone(int seed) {
  KVSLprob q;
  EXPECT_EQ(KVSLcreateprob(&q), 0);
  load_knapsack(q, 40, seed);
  EXPECT_EQ(KVSLmaxim(q, "g"), 0);
  EXPECT_EQ(int_attr(q, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
  double v = dbl_attr(q, KVSL_ATTR_MIPOBJVAL);
  KVSLdestroyprob(q);
  return v;
}

TEST_F(EngineTest, TwoProblemsInTwoThreads) {
  double expect1 = solve_alone(1), expect2 = solve_alone(2);
  for (int round = 0; round < 3; ++round) {
    double got1 = 0, got2 = 0;
    std::thread t1([&] { got1 = solve_alone(1); });
    std::thread t2([&] { got2 = solve_alone(2); });
    t1.join();
    t2.join();
    EXPECT_NEAR(got1, expect1, 1e-6);
    EXPECT_NEAR(got2, expect2, 1e-6);
  }
}

}  // namespace
