/*
 * differential_test.cpp -- term lists against a plain ordered map: millions
 * of random adds, sets and deletes with cancellations, interleaved with
 * strips, copies, negation, scaling and list sums; fixed seeds.
 */
#include <cmath>
#include <random>

#include "support.h"

namespace termtest {
namespace {

// The exported operations of one list kind, on a term (a, b); b is unused by
// linear lists.
template <class Node>
struct api;

template <>
struct api<mdl_term> {
  static int add(MDLvar a, MDLvar, MDLtermlst *l, double c) { return mdladd_term(a, l, c); }
  static int set(MDLvar a, MDLvar, MDLtermlst *l, double c) { return mdlset_term(a, l, c); }
  static lin_key key(MDLvar a, MDLvar) { return key_of(a); }
  static int strip(MDLtermlst *l) { return mdlstriptermlst(l); }
  static int del(MDLtermlst *l) { return mdldel_termlst(l); }
  static int chs(MDLtermlst *l) { return mdlchs_termlst(l); }
  static int mulc(MDLtermlst *l, double f) { return mdlmulc_termlst(l, f); }
  static int dup(MDLtermlst *t, MDLtermlst s) { return mdldup_termlst(t, s); }
  static int addlist(MDLtermlst *t, MDLtermlst *s) { return mdladd_termlst(t, s); }
  static int len(MDLtermlst *l) { return mdlget_termlst_len(l); }
};

template <>
struct api<mdl_qterm> {
  static int add(MDLvar a, MDLvar b, MDLtermlst *l, double c) { return mdladd_qterm(a, b, l, c); }
  static int set(MDLvar a, MDLvar b, MDLtermlst *l, double c) { return mdlset_qterm(a, b, l, c); }
  static quad_key key(MDLvar a, MDLvar b) { return key_of(a, b); }
  static int strip(MDLtermlst *l) { return mdlstripqtermlst(l); }
  static int del(MDLtermlst *l) { return mdldel_qtermlst(l); }
  static int chs(MDLtermlst *l) { return mdlchs_qtermlst(l); }
  static int mulc(MDLtermlst *l, double f) { return mdlmulc_qtermlst(l, f); }
  static int dup(MDLtermlst *t, MDLtermlst s) { return mdldup_qtermlst(t, s); }
  static int addlist(MDLtermlst *t, MDLtermlst *s) { return mdladd_qtermlst(t, s); }
  static int len(MDLtermlst *l) { return mdlget_qtermlst_len(l); }
};

// A sorted list (nothing pending) holds exactly the model's terms, in order,
// besides zero nodes.  Walks without allocating.
template <class Node>
std::string same_terms(MDLtermlst l, const value_map<Node> &model) {
  auto it = model.begin();
  if (l != nullptr)
    for (const Node *n = first_node<Node>(l); n != nullptr; n = n->next) {
      if (n->coef == 0) continue;
      if (it == model.end()) return "list holds a term the map does not";
      if (key_of(*n) != it->first) return "list and map differ in their terms";
      if (n->coef != it->second) return "coefficient differs from one-by-one sum";
      ++it;
    }
  if (it != model.end()) return "map holds a term the list does not";
  return "";
}

// Random source of the test: terms from a window of variables, values with
// many exact cancellations.
class chooser {
 public:
  chooser(uint64_t seed, int nvars) : rng(seed), n(nvars), lo(0), hi(nvars - 1) {}

  void new_window() {
    if (chance(0.3)) {
      lo = 0;
      hi = n - 1;
    } else {
      int a = uniform(0, n - 1), b = uniform(0, n - 1);
      lo = std::min(a, b);
      hi = std::max(a, b);
    }
  }
  std::pair<int, int> term(bool quad) {
    int a = uniform(lo, hi);
    if (!quad) return {a, a};
    int b = uniform(lo, hi);
    return {std::min(a, b), std::max(a, b)};
  }
  double value(bool dyadic) {
    static const double exact[] = {1, -1, 2, -2, 0.5, -0.5, 3, -3, 0.25, -4, 8, -1.75};
    static const double inexact[] = {0.1, -0.1, 0.3, -0.7, 1.0 / 3, 1e6, -1e-6, 2.2};
    if (dyadic || chance(0.6)) return exact[uniform(0, 11)];
    if (chance(0.7)) return inexact[uniform(0, 7)];
    double v = std::uniform_real_distribution<double>(-10, 10)(rng);
    return v == 0 ? 1 : v;
  }
  bool chance(double p) { return std::uniform_real_distribution<double>(0, 1)(rng) < p; }
  int uniform(int a, int b) { return std::uniform_int_distribution<int>(a, b)(rng); }
  double real() { return std::uniform_real_distribution<double>(0, 1)(rng); }

 private:
  std::mt19937_64 rng;
  int n, lo, hi;
};

// Events the run must have gone through, so that it is known to test them.
struct coverage {
  long strips = 0, sorting_strips = 0, full_tail_sorts = 0, emptied = 0, copies = 0;
};

template <class Node>
class differential {
 public:
  differential(MDLprob p, const std::vector<MDLvar> &vars, uint64_t seed, bool quad)
      : prob(p), x(vars), pick(seed, static_cast<int>(vars.size())), quad(quad) {}

  ~differential() { api<Node>::del(&list); }

  // Runs `nops` random operations; "" or the first failure found.
  std::string run(long nops) {
    long phase_left = 0;
    int strip_every = 1;
    for (long op = 0; op < nops; ++op) {
      if (--phase_left <= 0) {
        phase_left = pick.uniform(50, 5000);
        pick.new_window();
        static const int rates[] = {2, 5, 40, 300, 3000, 1000000};
        strip_every = rates[pick.uniform(0, 5)];
      }
      std::string err = step();
      if (err.empty() && pick.uniform(1, strip_every) == 1) err = strip_and_compare();
      if (!err.empty()) return "operation " + std::to_string(op) + ": " + err;
    }
    return strip_and_compare();
  }

  coverage seen;

 private:
  std::string step() {
    auto [i, j] = pick.term(quad);
    MDLvar a = x[i], b = x[j];
    const auto key = api<Node>::key(a, b);
    const bool had_list = list != nullptr;
    const int pending_before = had_list ? list->pending : 0;
    double r = pick.real();
    if (r >= 0.973) r *= 0.62 / 0.973 * pick.real();   // the rest adds
    bool term_op = true;
    if (r < 0.62) {
      // Add, a tenth of them cancelling the term's current value exactly.
      auto it = model.find(key);
      double v = (it != model.end() && r < 0.062) ? -it->second : pick.value(false);
      if (api<Node>::add(a, b, &list, v) != 1) return "add-term did not report a change";
      double &m = model[key];
      m += v;
      if (m == 0) model.erase(key);
    } else if (r < 0.82) {
      double v = pick.value(false);
      if (api<Node>::set(a, b, &list, v) != 1 && model[key] != v) return "set-term lost a change";
      model[key] = v;
    } else if (r < 0.96) {
      if (api<Node>::set(a, b, &list, 0.0) < 0) return "delete failed";
      model.erase(key);
    } else if (r < 0.965) {
      term_op = false;
      if (api<Node>::chs(&list) != (had_list ? 1 : 0)) return "negate result";
      for (auto &e : model) e.second = -e.second;
    } else if (r < 0.967) {
      term_op = false;
      const double f = pick.chance(0.5) ? 2.0 : 0.5;   // exact scalings
      api<Node>::mulc(&list, f);
      for (auto &e : model) e.second *= f;
    } else if (r < 0.969) {
      return check_copy();
    } else if (r < 0.9695) {
      // Delete every term one by one: the list must go away.
      for (auto it = model.begin(); it != model.end(); it = model.erase(it)) {
        const auto &k = it->first;
        api<Node>::set(reinterpret_cast<MDLvar>(key_var1(k)), reinterpret_cast<MDLvar>(key_var2(k)),
                       &list, 0.0);
      }
      term_op = false;
      api<Node>::strip(&list);
      if (list == nullptr) ++seen.emptied;
      if (list != nullptr && api<Node>::len(&list) != 0) return "terms left after deleting all";
      api<Node>::del(&list);
    } else if (r < 0.9697) {
      term_op = false;
      api<Node>::del(&list);
      model.clear();
    } else {
      term_op = false;
      if (api<Node>::len(&list) != static_cast<int>(model.size())) return "length differs from map";
      if (list != nullptr && list->pending != 0) return "length left pending operations";
    }
    if (had_list && list == nullptr && term_op) ++seen.emptied;
    if (list != nullptr) {
      if (list->pending > kvtl::max_pending || list->pending < 0) return "pending out of bounds";
      if (list->resets > list->pending || list->resets < 0) return "resets out of bounds";
      if (term_op && pending_before >= kvtl::max_pending_before_set && list->pending < pending_before)
        ++seen.full_tail_sorts;
    }
    if (prob->refcount != 1 + (list != nullptr ? 1 : 0)) return "problem reference count";
    return "";
  }

  static uintptr_t key_var1(lin_key k) { return k; }
  static uintptr_t key_var2(lin_key k) { return k; }
  static uintptr_t key_var1(const quad_key &k) { return k.first; }
  static uintptr_t key_var2(const quad_key &k) { return k.second; }

  std::string strip_and_compare() {
    std::string err = check_list<Node>(list, false);
    if (!err.empty()) return "before strip: " + err;
    const bool sorting = list != nullptr && list->pending > 0;
    api<Node>::strip(&list);
    ++seen.strips;
    if (sorting) ++seen.sorting_strips;
    err = check_list<Node>(list, sorting);
    if (!err.empty()) return "after strip: " + err;
    if (list != nullptr && (list->pending != 0 || list->resets != 0)) return "strip left pending";
    if (sorting && model.empty() && list != nullptr) return "empty list not deleted";
    return same_terms<Node>(list, model);
  }

  std::string check_copy() {
    MDLtermlst copy = nullptr;
    if (api<Node>::dup(&copy, list) != (list != nullptr ? 1 : 0)) return "copy result";
    std::string err = check_list<Node>(copy, false);
    if (err.empty() && raw_nodes<Node>(copy) != raw_nodes<Node>(list)) err = "copy differs";
    if (err.empty()) {
      api<Node>::strip(&copy);
      err = same_terms<Node>(copy, model);
    }
    api<Node>::del(&copy);
    ++seen.copies;
    return err.empty() ? "" : "copy: " + err;
  }

  MDLprob prob;
  const std::vector<MDLvar> &x;
  chooser pick;
  bool quad;
  MDLtermlst list = nullptr;
  value_map<Node> model;
};

class Differential : public TermListTest {
 protected:
  template <class Node>
  void run_seed(uint64_t seed, int nvars, long nops) {
    std::vector<MDLvar> x = make_vars(prob, nvars);
    const uint64_t chunks = live(prob);
    coverage seen;
    {
      differential<Node> d(prob, x, seed, sizeof(Node) == sizeof(mdl_qterm));
      std::string err = d.run(nops);
      ASSERT_EQ(err, "") << "seed " << seed;
      seen = d.seen;
    }
    EXPECT_EQ(live(prob), chunks) << "seed " << seed << ": nodes not given back";
    EXPECT_GT(seen.sorting_strips, 1000) << "seed " << seed;
    EXPECT_GT(seen.full_tail_sorts, 10) << "seed " << seed;
    EXPECT_GT(seen.emptied, 10) << "seed " << seed;
    EXPECT_GT(seen.copies, 100) << "seed " << seed;
  }
};

TEST_F(Differential, LinearSeed11) { run_seed<mdl_term>(11, 300, 1000000); }
TEST_F(Differential, LinearSeed23) { run_seed<mdl_term>(23, 300, 1000000); }
TEST_F(Differential, LinearSeed37) { run_seed<mdl_term>(37, 120, 1000000); }
TEST_F(Differential, QuadraticSeed5) { run_seed<mdl_qterm>(5, 30, 1000000); }
TEST_F(Differential, QuadraticSeed71) { run_seed<mdl_qterm>(71, 45, 1000000); }

// ---- Sums of lists -------------------------------------------------------------

// Two lists under random operations with exact (dyadic) values, summed into
// one another now and then: the target gains the source's value, the source
// keeps its own.
template <class Node>
std::string run_sums(MDLprob prob, const std::vector<MDLvar> &x, uint64_t seed, long nops,
                     long &sums) {
  chooser pick(seed, static_cast<int>(x.size()));
  const bool quad = sizeof(Node) == sizeof(mdl_qterm);
  MDLtermlst lists[2] = {nullptr, nullptr};
  value_map<Node> models[2];
  std::string err;
  long phase_left = 0;
  for (long op = 0; op < nops && err.empty(); ++op) {
    if (--phase_left <= 0) {
      phase_left = pick.uniform(20, 600);
      pick.new_window();
    }
    const int w = pick.uniform(0, 1);
    auto [i, j] = pick.term(quad);
    const auto key = api<Node>::key(x[i], x[j]);
    const double r = pick.real();
    if (r < 0.6) {
      double v = pick.value(true);
      api<Node>::add(x[i], x[j], &lists[w], v);
      double &m = models[w][key];
      m += v;
      if (m == 0) models[w].erase(key);
    } else if (r < 0.75) {
      double v = pick.value(true);
      api<Node>::set(x[i], x[j], &lists[w], v);
      models[w][key] = v;
    } else if (r < 0.85) {
      api<Node>::set(x[i], x[j], &lists[w], 0.0);
      models[w].erase(key);
    } else if (r < 0.87) {
      api<Node>::strip(&lists[w]);
      err = same_terms<Node>(lists[w], models[w]);
    } else if (r < 0.875) {
      api<Node>::del(&lists[w]);
      models[w].clear();
    } else if (r < 0.9) {
      // Target w gains the other list, or itself.
      const int s = pick.chance(0.05) ? w : 1 - w;
      const int rc = api<Node>::addlist(&lists[w], &lists[s]);
      if (rc < 0) err = "add-list failed";
      if (s == w) {
        for (auto &e : models[w]) e.second *= 2;
      } else {
        for (const auto &[k, c] : models[s]) {
          double &m = models[w][k];
          m += c;
          if (m == 0) models[w].erase(k);
        }
        if (value_of<Node>(lists[s]) != models[s]) err = "source changed its value";
      }
      if (err.empty() && value_of<Node>(lists[w]) != models[w]) err = "target value differs";
      // Sums grow fast; beyond 2^53 they would stop being exact.
      if (std::any_of(models[w].begin(), models[w].end(),
                      [](const auto &e) { return std::abs(e.second) > 1e6; })) {
        api<Node>::del(&lists[w]);
        models[w].clear();
      }
      ++sums;
    }
    for (int k = 0; k < 2 && err.empty(); ++k) err = check_list<Node>(lists[k], false);
    if (err.empty() && prob->refcount != 1 + (lists[0] != nullptr) + (lists[1] != nullptr))
      err = "problem reference count";
    if (!err.empty()) err = "operation " + std::to_string(op) + ": " + err;
  }
  for (int k = 0; k < 2 && err.empty(); ++k) {
    api<Node>::strip(&lists[k]);
    err = same_terms<Node>(lists[k], models[k]);
  }
  api<Node>::del(&lists[0]);
  api<Node>::del(&lists[1]);
  return err;
}

TEST_F(Differential, LinearListSums) {
  std::vector<MDLvar> x = make_vars(prob, 200);
  long sums = 0;
  for (uint64_t seed : {3u, 8u}) EXPECT_EQ(run_sums<mdl_term>(prob, x, seed, 300000, sums), "") << "seed " << seed;
  EXPECT_GT(sums, 10000);
}

TEST_F(Differential, QuadraticListSums) {
  std::vector<MDLvar> x = make_vars(prob, 25);
  long sums = 0;
  for (uint64_t seed : {4u, 9u}) EXPECT_EQ(run_sums<mdl_qterm>(prob, x, seed, 300000, sums), "") << "seed " << seed;
  EXPECT_GT(sums, 10000);
}

}  // namespace
}  // namespace termtest
