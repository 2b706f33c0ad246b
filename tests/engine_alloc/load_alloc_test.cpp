/*
 * load_alloc_test.cpp -- the engine's load and name calls when memory runs
 * out at each allocation in turn: KVSL_ERR_NOMEM, the problem held before
 * left as it was, nothing leaked (the suite also runs under LeakSanitizer).
 * Every allocation of this program goes through the counting operator new
 * below, which fails the chosen one of the engine's own allocations on the
 * thread that armed it.
 */
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "kvsl.h"

namespace {
thread_local long countdown = 0;   // > 0: the countdown-th allocation from now fails
thread_local bool failed = false;  // an allocation was failed since arming

// Is the code at `caller` the engine's own (its library)?  COIN-OR's
// classes are not written to survive a failing allocation in the middle of
// their constructors, so only the allocations the engine makes itself are
// failed; what the backend allocates is the backend's business.
bool engine_code(void *caller) {
  Dl_info info;
  return dladdr(caller, &info) != 0 && info.dli_fname != nullptr &&
         std::strstr(info.dli_fname, "libkvsl") != nullptr;
}

void *allocate(std::size_t n, void *caller) {
  if (countdown > 0 && engine_code(caller) && --countdown == 0) {
    failed = true;
    throw std::bad_alloc();
  }
  if (void *p = std::malloc(n != 0 ? n : 1)) return p;
  throw std::bad_alloc();
}
}  // namespace

void *operator new(std::size_t n) { return allocate(n, __builtin_return_address(0)); }
void *operator new[](std::size_t n) { return allocate(n, __builtin_return_address(0)); }
// The forms that answer null instead of throwing are not failed (their
// callers fall back), but they must pair with the deletes below.
void *operator new(std::size_t n, const std::nothrow_t &) noexcept {
  return std::malloc(n != 0 ? n : 1);
}
void *operator new[](std::size_t n, const std::nothrow_t &) noexcept {
  return std::malloc(n != 0 ? n : 1);
}
void operator delete(void *p) noexcept { std::free(p); }
void operator delete[](void *p) noexcept { std::free(p); }
void operator delete(void *p, std::size_t) noexcept { std::free(p); }
void operator delete[](void *p, std::size_t) noexcept { std::free(p); }

namespace {

// Run `call` with its first, second, ... allocation failing until it runs
// without a failure; every failing run must give KVSL_ERR_NOMEM and pass
// `check`.  Returns how many allocations the call makes.
template <class Call, class Check>
long sweep(Call &&call, Check &&check) {
  for (long n = 1; n < 100000; ++n) {
    failed = false;
    countdown = n;
    const int rc = call();
    countdown = 0;
    if (!failed) {
      EXPECT_EQ(rc, 0) << "allocation " << n;
      return n - 1;
    }
    EXPECT_EQ(rc, KVSL_ERR_NOMEM) << "allocation " << n;
    check();
    if (::testing::Test::HasFailure()) return n;
  }
  ADD_FAILURE() << "the call never ran through";
  return 0;
}

int int_attr(KVSLprob p, int attr) {
  int v = -1;
  EXPECT_EQ(KVSLgetintattrib(p, attr, &v), 0);
  return v;
}

// min x + 2y  s.t.  x + y >= 2,  x - y <= 1,  0 <= x, y <= 10: optimum 2.5.
int load_small(KVSLprob p) {
  const char type[] = "GL";
  const double rhs[] = {2, 1}, obj[] = {1, 2}, lb[] = {0, 0}, ub[] = {10, 10};
  const int64_t start[] = {0, 2, 4};
  const int ind[] = {0, 1, 0, 1};
  const double val[] = {1, 1, 1, -1};
  return KVSLloadlp64(p, "small", 2, 2, type, rhs, nullptr, obj, start, nullptr, ind, val, lb, ub);
}

// A larger problem with every part a global load keeps: ranges, entities
// with limits, a set.  Its arrays are made before any allocation is failed.
struct global_model {
  static constexpr int n = 12, m = 5;
  std::vector<double> obj, lb, ub, rhs, range;
  std::vector<int64_t> start;
  std::vector<int> ind;
  std::vector<double> val;
  std::string rowtype = "LRGLE";

  global_model() : obj(n), lb(n, 0), ub(n, 4), rhs(m, 6), range(m, 3) {
    for (int j = 0; j < n; ++j) {
      obj[j] = -1.0 - j % 3;
      start.push_back(static_cast<int64_t>(ind.size()));
      for (int i = 0; i < m; ++i)
        if ((i + j) % 2 == 0) {
          ind.push_back(i);
          val.push_back(1.0 + (i * j) % 4);
        }
    }
    start.push_back(static_cast<int64_t>(ind.size()));
  }
  int load(KVSLprob p) const {
    static const char enttype[] = "BIPS";
    static const int entcol[] = {0, 1, 2, 3};
    static const double entlimit[] = {0, 0, 2, 1};
    static const char settype[] = "1";
    static const int64_t setstart[] = {0, 3};
    static const int setcol[] = {4, 5, 6};
    static const double setref[] = {1, 2, 3};
    return KVSLloadglobal64(p, "global", n, m, rowtype.data(), rhs.data(), range.data(),
                            obj.data(), start.data(), nullptr, ind.data(), val.data(), lb.data(),
                            ub.data(), 4, 1, enttype, entcol, entlimit, settype, setstart, setcol,
                            setref);
  }
};

class LoadAllocTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(KVSLinit(nullptr), 0);
    ASSERT_EQ(KVSLcreateprob(&p), 0);
    ASSERT_EQ(load_small(p), 0);
  }
  void TearDown() override {
    EXPECT_EQ(KVSLdestroyprob(p), 0);
    EXPECT_EQ(KVSLfree(), 0);
  }
  // The small problem is still the one held: its size and its optimum.
  void expect_small_held() {
    EXPECT_EQ(int_attr(p, KVSL_ATTR_COLS), 2);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_ROWS), 2);
    ASSERT_EQ(KVSLminim(p, ""), 0);
    EXPECT_EQ(int_attr(p, KVSL_ATTR_LPSTATUS), KVSL_LP_OPTIMAL);
    double obj = 0;
    EXPECT_EQ(KVSLgetdblattrib(p, KVSL_ATTR_LPOBJVAL, &obj), 0);
    EXPECT_NEAR(obj, 2.5, 1e-9);
  }
  KVSLprob p = nullptr;
};

TEST_F(LoadAllocTest, EveryAllocationOfAGlobalLoad) {
  const global_model model;
  const long made = sweep([&] { return model.load(p); },
                          [&] {
                            EXPECT_EQ(int_attr(p, KVSL_ATTR_ERRORCODE), KVSL_ERR_NOMEM);
                            expect_small_held();
                          });
  EXPECT_GT(made, 10);   // the engine allocates, and each allocation failed once
  EXPECT_EQ(int_attr(p, KVSL_ATTR_COLS), 12);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_ROWS), 5);
  ASSERT_EQ(KVSLminim(p, "g"), 0);
  EXPECT_EQ(int_attr(p, KVSL_ATTR_MIPSTATUS), KVSL_MIP_OPTIMAL);
}

TEST_F(LoadAllocTest, EveryAllocationOfNames) {
  const char names[] = "first\0second";
  EXPECT_GT(sweep([&] { return KVSLaddnames(p, 2, names, 0, 1); }, [] {}), 0);
  // Renaming after the names exist: the buffer has to grow.
  const char longer[] = "a_much_longer_first_name_than_before";
  EXPECT_GT(sweep([&] { return KVSLaddnames(p, 2, longer, 0, 0); }, [] {}), 0);
  expect_small_held();
}

}  // namespace
