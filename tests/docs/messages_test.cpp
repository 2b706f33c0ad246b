/*
 * messages_test.cpp -- the numbered messages that kvtl.h documents for each
 * function, held against what the functions really report.
 */
#include <gtest/gtest.h>
#include <math.h>

#include <stdio.h>
#include <stdlib.h>

#include <fstream>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "engine_fake/fake_engine.h"
#include "kvtl.h"
#include "support/messages.h"

namespace {

// One "- NUMBER KIND `TEXT`" entry of a function's message list.
struct documented {
  int number;
  int iserror;
  std::string text;   // as documented: placeholders such as %s may remain
};

// The doc comment of every function of the header: the comment block that
// ends right before the line declaring it.
std::map<std::string, std::string> doc_blocks(const std::string &path) {
  std::ifstream in(path);
  std::stringstream ss;
  ss << in.rdbuf();
  const std::string text = ss.str();
  std::map<std::string, std::string> blocks;
  const std::regex decl(R"(\*/\s*\n\s*KVTL_API[^;(]*?\b(mdl\w+)\s*\()");
  for (auto it = std::sregex_iterator(text.begin(), text.end(), decl); it != std::sregex_iterator();
       ++it) {
    const size_t end = static_cast<size_t>(it->position(0));
    const size_t start = text.rfind("/**", end);
    if (start == std::string::npos) continue;
    blocks[(*it)[1]] = text.substr(start, end - start);
  }
  return blocks;
}

// The comment's lines joined with single spaces, without the leading "*".
std::string joined(const std::string &block) {
  std::istringstream in(block);
  std::string line, out;
  while (std::getline(in, line)) {
    size_t k = line.find_first_not_of(" \t");
    if (k != std::string::npos && line[k] == '*' && line.compare(k, 2, "*/") != 0) ++k;
    k = line.find_first_not_of(" \t", k);
    if (k == std::string::npos) continue;
    if (!out.empty()) out += ' ';
    out += line.substr(k);
  }
  return out;
}

// Documented messages of a function, including those it inherits through
// "the messages of mdlX".
std::vector<documented> messages_of(const std::map<std::string, std::string> &blocks,
                                    const std::string &fn, std::set<std::string> &seen) {
  std::vector<documented> out;
  auto b = blocks.find(fn);
  if (b == blocks.end() || !seen.insert(fn).second) return out;
  const std::string text = joined(b->second);
  const std::regex entry(R"(- (\d{4}) ([EW]) `([^`]*)`)");
  for (auto it = std::sregex_iterator(text.begin(), text.end(), entry); it != std::sregex_iterator();
       ++it)
    out.push_back({std::stoi((*it)[1]), (*it)[2] == "E" ? 1 : 0, (*it)[3]});
  const std::regex inherit(R"(the messages of (mdl\w+))");
  for (auto it = std::sregex_iterator(text.begin(), text.end(), inherit);
       it != std::sregex_iterator(); ++it)
    for (const documented &d : messages_of(blocks, (*it)[1], seen)) out.push_back(d);
  return out;
}

// A documented text as a pattern: printf conversions match any value.
bool text_matches(const std::string &doc, const std::string &actual) {
  std::string re;
  for (size_t i = 0; i < doc.size(); ++i) {
    if (doc[i] == '%' && i + 1 < doc.size()) {
      const char c = doc[++i];
      re += c == 's' ? ".*" : c == 'c' ? "." : "[-+0-9.eEinfa]+";
      continue;
    }
    if (std::string("\\^$.|?*+()[]{}").find(doc[i]) != std::string::npos) re += '\\';
    re += doc[i];
  }
  return std::regex_match(actual, std::regex(re));
}

// One call that must report one message: the function documented, the
// message number it reports, the call, and the result its documentation
// gives for that failure (pointers count as 1, null as 0).
struct trigger {
  const char *fn;
  int number;
  std::function<double()> call;
  double result;
  bool on_model = true;   // false: called before the library is started
};

// Allocator hook that fails while armed.
bool alloc_fails = false;
void *failing_malloc(size_t size) { return alloc_fails ? nullptr : malloc(size); }

// Documented messages no call here can trigger: the pool of a fresh
// problem serves these requests without a new block, and solution objects
// sort in standard containers, outside the allocator hooks.
const std::set<std::string> not_triggered = {"mdlnewexpr", "mdlstripsol"};

class DocumentedMessages : public ::testing::Test {
 protected:
  // The library's defaults for one call: they go with every shutdown.
  void quiet_defaults() {
    mdlseterrctrl(0);
    mdlsetmsglevel_prob(nullptr, 0);
    errors.install();
  }
  // A fresh model for each call: a problem with a variable of two types, a
  // constraint, an objective, a set, a closed array, a cut, an index set
  // and an empty solution.
  void make_model() {
    p = mdlnewprob("docs");
    ASSERT_NE(p, nullptr);
    x = mdlnewvar_prob(p, "x", MDL_CONTINUOUS, 0, 10);
    b = mdlnewvar_prob(p, "b", MDL_BINARY, 0, 1);
    c = mdlnewctr_prob(p, "c", MDL_LEQ);
    mdladdterm(c, x, 1);
    obj = mdlnewctr_prob(p, "obj", MDL_NONBINDING);
    mdladdterm(obj, x, 1);
    mdlsetobj_prob(p, obj);
    s = mdlnewsos_prob(p, "s", MDL_SOS1);
    arr = mdlnewarrvar_prob(p, 2, MDL_CONTINUOUS, "a", 0, 1);
    cut = mdlnewcut_prob(p, 1, 7);
    idx = mdlnewidxset_prob(p, "I", 4);
    sol = mdlnewsol_prob(p);
    ASSERT_TRUE(x && b && c && obj && s && arr && cut && idx && sol);
    ASSERT_TRUE(errors.empty());
  }
  void drop_model() {
    mdldelsol(sol);
    mdldelprob_prob(p);
  }
  void TearDown() override {
    alloc_fails = false;
    mdlsl_malloc = malloc;
    while (mdlslfinish() == 0) {
    }
    mdldefcberr_prob(nullptr, nullptr, nullptr);
    mdlseterrctrl(1);
    fake::reset();
  }
  static double ptr(const void *q) { return q != nullptr ? 1 : 0; }
  // Run f with every allocation through the hooks failing.
  template <class F>
  double out_of_memory(F f) {
    mdlsl_malloc = failing_malloc;
    alloc_fails = true;
    const double r = static_cast<double>(f());
    alloc_fails = false;
    mdlsl_malloc = malloc;
    return r;
  }

  testsupport::error_log errors;
  MDLprob p = nullptr;
  MDLvar x = nullptr, b = nullptr;
  MDLctr c = nullptr, obj = nullptr;
  MDLsos s = nullptr;
  MDLarrvar arr = nullptr;
  MDLcut cut = nullptr;
  MDLidxset idx = nullptr;
  MDLsol sol = nullptr;
};

#define T(fn, num, expr, result) {#fn, num, [&]() { return static_cast<double>(expr); }, result}
#define TP(fn, num, expr) {#fn, num, [&]() { return ptr(expr); }, 0}
// A solution-file call without a problem, and with its engine call failing.
#define SOLUTION_FILE(fn, call)                                   \
  T(fn, 1501, fn(nullptr, "f", nullptr), 1),                      \
      T(fn, 1524, (fake::fail_call(#call, 1, 7), fn(p, "f", "")), 1)
#define TS(fn, num, expr, result) {#fn, num, [&]() { return static_cast<double>(expr); }, result, false}

TEST_F(DocumentedMessages, EveryTriggeredMessageIsDocumentedWithItsTextKindAndResult) {
  const double big = 1e6;
  std::vector<trigger> triggers = {
      // start-up (the library is not started yet)
      TS(mdlslinit, 1561, (fake::fail_call("KVSLinit", 1, 5), mdlslinit()), 1),
      TS(mdlnewprob, 1561, ptr((fake::fail_call("KVSLinit", 1, 5), mdlnewprob("n"))), 0),
      TS(mdlnewprob, 1502, out_of_memory([] { return ptr(mdlnewprob("n")); }), 0),
      // memory
      T(mdlallocmem, 1502, out_of_memory([&] { return ptr(mdlallocmem(p, 1 << 22, 0)); }), 0),
      T(mdlstrdup, 1502,
        out_of_memory([&] { return ptr(mdlstrdup(p, std::string(1 << 22, 'n').c_str())); }), 0),
      T(mdlreordercols, 1502,
        [&] {
          int count = 1;
          return out_of_memory([&] { return mdlreordercols(&x, &count, 1); });
        }(),
        1),
      T(mdlexpr2str, 1502,
        [&] {
          MDLexpr e = mdlnewexpr(x, nullptr, 2);
          const double r = out_of_memory([&] { return ptr(mdlexpr2str(e, MDL_LEQ)); });
          mdldelexpr(e);
          return r;
        }(),
        0),
      T(mdlevalexpr, 1520,
        [&] {
          MDLexpr e = mdlnewexpr(x, nullptr, 2);
          mdlloadmat_prob(p);
          const double r = mdlevalexpr(e);
          mdldelexpr(e);
          return r;
        }(),
        0),
      // problems
      T(mdlsetsense_prob, 1501, mdlsetsense_prob(nullptr, 1), 1),
      T(mdlgetsense_prob, 1501, mdlgetsense_prob(nullptr), -1),
      T(mdlgetprobstat_prob, 1501, mdlgetprobstat_prob(nullptr), 0),
      TP(mdlgetprobname_prob, 1501, mdlgetprobname_prob(nullptr)),
      T(mdlsetprobname_prob, 1501, mdlsetprobname_prob(nullptr, "n"), 1),
      T(mdlsetprobname_prob, 1524,
        (fake::fail_call("KVSLsetprobname", 1, 3), mdlsetprobname_prob(p, "n")), 1),
      T(mdlresetprob_prob, 1501, mdlresetprob_prob(nullptr), 1),
      T(mdlresetprob_prob, 1524, (fake::fail_call("KVSLloadlp64", 1, 2), mdlresetprob_prob(p)), 1),
      T(mdlsetdictsize_prob, 1501, mdlsetdictsize_prob(nullptr, 0, 10), 1),
      T(mdlsetdictsize_prob, 1504, mdlsetdictsize_prob(p, 0, 1000), 1),
      T(mdldelprob_prob, 1501, mdldelprob_prob(nullptr), 1),
      T(mdldelprob_jprob, 1501, mdldelprob_jprob(nullptr, 1), 1),
      T(mdlbegincb_prob, 1501, mdlbegincb_prob(nullptr, nullptr), 1),
      T(mdlbegincb_prob, 1572, mdlbegincb_prob(p, nullptr), 1),
      T(mdlbegincb_prob, 1573,
        (mdlbegincb_prob(p, mdlgetkvslprob_prob(p)),
         mdlbegincb_prob(p, mdlgetkvslprob_prob(p)) + 10 * mdlendcb_prob(p)),
        0),
      T(mdlendcb_prob, 1501, mdlendcb_prob(nullptr), 1),
      T(mdlendcb_prob, 1573, mdlendcb_prob(p), 0),
      // names
      TP(mdlfindname, 1501, mdlfindname(nullptr, "x", MDL_KIND_VAR)),
      TP(mdlnormname, 1501, mdlnormname(nullptr, "x", "VAR", MDL_KIND_VAR, x)),
      TP(mdlgetbyname_prob, 1501, mdlgetbyname_prob(nullptr, "x", 0)),
      TP(mdladdtodel, 1501, mdladdtodel(nullptr, MDL_KIND_VAR, x)),
      TP(mdlnewname, 1566, mdlnewname("%0200d", 1)),
      // index sets
      TP(mdlnewidxset_prob, 1501, mdlnewidxset_prob(nullptr, "J", 4)),
      T(mdladdidxel, 1550, mdladdidxel(nullptr, "e"), -1),
      T(mdladdidxel, 1551, mdladdidxel(idx, nullptr), -1),
      T(mdlgetidxel, 1550, mdlgetidxel(nullptr, "e"), -1),
      T(mdlgetidxel, 1551, mdlgetidxel(idx, nullptr), -1),
      T(mdlgetidxsetsize, 1550, mdlgetidxsetsize(nullptr), -1),
      TP(mdlgetidxsetname, 1550, mdlgetidxsetname(nullptr)),
      TP(mdlgetidxelname, 1550, mdlgetidxelname(nullptr, 0)),
      T(mdlprintidxset, 1552, mdlprintidxset(nullptr), 1),
      // variables
      TP(mdlnewvar_prob, 1501, mdlnewvar_prob(nullptr, "v", MDL_CONTINUOUS, 0, 1)),
      TP(mdlnewvar_prob, 1530, mdlnewvar_prob(p, "v", MDL_CONTINUOUS, 2, 1)),
      TP(mdlnewvar_prob, 1531, mdlnewvar_prob(p, "v", 9, 0, 1)),
      T(mdlsetvartype, 1505, mdlsetvartype(nullptr, MDL_INTEGER), 1),
      T(mdlsetvartype, 1531, mdlsetvartype(x, 6), 1),
      T(mdlgetvartype, 1505, mdlgetvartype(nullptr), -1),
      T(mdlsetlb, 1505, mdlsetlb(nullptr, 0), 1),
      T(mdlsetlb, 1530, mdlsetlb(x, 11), 1),
      T(mdlsetub, 1505, mdlsetub(nullptr, 0), 1),
      T(mdlsetub, 1530, mdlsetub(x, -1), 1),
      T(mdlfixvar, 1505, mdlfixvar(nullptr, 0), 1),
      T(mdlgetbounds, 1505, mdlgetbounds(nullptr, nullptr, nullptr), 1),
      T(mdlsetlim, 1505, mdlsetlim(nullptr, 1), 1),
      T(mdlsetlim, 1592, mdlsetlim(x, 2), 0),
      T(mdlsetlim, 1593, mdlsetlim(mdlnewvar_prob(p, "sc", MDL_SEMICONT, 0, 5), 20), 0),
      T(mdlgetlim, 1505, mdlgetlim(nullptr, nullptr), 1),
      T(mdlgetcolnum, 1505, mdlgetcolnum(nullptr), -1),
      TP(mdlgetvarname, 1505, mdlgetvarname(nullptr)),
      T(mdlgetvarstat, 1513, mdlgetvarstat(nullptr), 0),
      T(mdlsetvarlink, 1505, mdlsetvarlink(nullptr, nullptr), 1),
      TP(mdlgetvarlink, 1505, mdlgetvarlink(nullptr)),
      // arrays of variables and sums
      TP(mdlnewarrvar_prob, 1501, mdlnewarrvar_prob(nullptr, 2, MDL_CONTINUOUS, "z", 0, 1)),
      TP(mdlnewarrvar_prob, 1530, mdlnewarrvar_prob(p, 2, MDL_CONTINUOUS, "z", 1, 0)),
      TP(mdlnewarrvar_prob, 1531, mdlnewarrvar_prob(p, 2, 8, "z", 0, 1)),
      TP(mdlstartarrvar_prob, 1501, mdlstartarrvar_prob(nullptr, 2, "z")),
      T(mdlapparrvarel, 1505, mdlapparrvarel(mdlstartarrvar_prob(p, 1, "o"), nullptr), 1),
      T(mdlapparrvarel, 1506, mdlapparrvarel(nullptr, x), 1),
      T(mdlapparrvarel, 1540, mdlapparrvarel(arr, x), 1),
      T(mdlapparrvarel, 1542,
        [&] {
          MDLarrvar o = mdlstartarrvar_prob(p, 1, "o");
          mdlapparrvarel(o, x);
          return mdlapparrvarel(o, b);
        }(),
        1),
      T(mdlsetarrvarel, 1505, mdlsetarrvarel(mdlstartarrvar_prob(p, 1, "o"), 0, nullptr), 1),
      T(mdlsetarrvarel, 1506, mdlsetarrvarel(nullptr, 0, x), 1),
      T(mdlsetarrvarel, 1540, mdlsetarrvarel(arr, 0, x), 1),
      T(mdlsetarrvarel, 1541, mdlsetarrvarel(mdlstartarrvar_prob(p, 2, "o"), 5, x), 1),
      T(mdlendarrvar, 1506, mdlendarrvar(nullptr), 1),
      T(mdlendarrvar, 1540, mdlendarrvar(arr), 1),
      T(mdlendarrvar, 1543, mdlendarrvar(mdlstartarrvar_prob(p, 2, "o")), 1),
      T(mdldelarrvar, 1506, mdldelarrvar(nullptr), 1),
      T(mdladdarrterm, 1507, mdladdarrterm(nullptr, arr, nullptr), 1),
      T(mdladdarrterm, 1506, mdladdarrterm(c, nullptr, nullptr), 1),
      T(mdladdarrterm, 1512, mdladdarrterm(c, arr, nullptr), 1),
      TP(mdlnewarrsum_prob, 1501, mdlnewarrsum_prob(nullptr, "r", arr, nullptr, MDL_LEQ, 1)),
      TP(mdlnewarrsum_prob, 1506, mdlnewarrsum_prob(p, "r", nullptr, nullptr, MDL_LEQ, 1)),
      TP(mdlnewarrsum_prob, 1535, mdlnewarrsum_prob(p, "r", arr, nullptr, 7, 1)),
      TP(mdlnewarrsum_prob, 1512, mdlnewarrsum_prob(p, "r", arr, nullptr, MDL_LEQ, 1)),
      TP(mdlnewsum_prob, 1501, mdlnewsum_prob(nullptr, "r", arr, MDL_LEQ, 1)),
      TP(mdlnewsum_prob, 1506, mdlnewsum_prob(p, "r", nullptr, MDL_LEQ, 1)),
      TP(mdlnewsum_prob, 1535, mdlnewsum_prob(p, "r", arr, 7, 1)),
      TP(mdlnewsumc_prob, 1501, mdlnewsumc_prob(nullptr, "r", arr, MDL_LEQ, 1, 1)),
      TP(mdlnewsumc_prob, 1506, mdlnewsumc_prob(p, "r", nullptr, MDL_LEQ, 1, 1)),
      TP(mdlnewsumc_prob, 1535, mdlnewsumc_prob(p, "r", arr, 7, 1, 1)),
      // term lists
      T(mdladd_term, 1565, mdladd_term(x, nullptr, 1), -1),
      T(mdladd_term, 1505, [&] { MDLtermlst l = nullptr; return mdladd_term(nullptr, &l, 1); }(), -1),
      T(mdladd_qterm, 1565, mdladd_qterm(x, b, nullptr, 1), -1),
      T(mdladd_qterm, 1505,
        [&] { MDLtermlst l = nullptr; return mdladd_qterm(x, nullptr, &l, 1); }(), -1),
      T(mdlset_term, 1565, mdlset_term(x, nullptr, 1), -1),
      T(mdlset_term, 1505, [&] { MDLtermlst l = nullptr; return mdlset_term(nullptr, &l, 1); }(), -1),
      T(mdlset_qterm, 1565, mdlset_qterm(x, b, nullptr, 1), -1),
      T(mdlset_qterm, 1505,
        [&] { MDLtermlst l = nullptr; return mdlset_qterm(nullptr, b, &l, 1); }(), -1),
      T(mdldup_termlst, 1565, mdldup_termlst(nullptr, nullptr), -1),
      T(mdldup_qtermlst, 1565, mdldup_qtermlst(nullptr, nullptr), -1),
      T(mdladd_termlst, 1565, mdladd_termlst(nullptr, nullptr), -1),
      T(mdladd_qtermlst, 1565, mdladd_qtermlst(nullptr, nullptr), -1),
      // expressions
      T(mdldupexpr, 1565, mdldupexpr(nullptr, nullptr), 1),
      T(mdlassignexpr, 1565, mdlassignexpr(nullptr, nullptr), -1),
      T(mdladdexpr, 1565, mdladdexpr(nullptr, nullptr), -1),
      T(mdladdexpr_term, 1565, mdladdexpr_term(nullptr, x, nullptr, 1), 1),
      T(mdlsetexpr_term, 1565, mdlsetexpr_term(nullptr, x, nullptr, 1), 1),
      T(mdlmulcexpr, 1565, mdlmulcexpr(nullptr, 2), -1),
      T(mdlchsexpr, 1565, mdlchsexpr(nullptr), -1),
      T(mdlmulexpr, 1565, mdlmulexpr(nullptr, nullptr), -1),
      T(mdlsetctr, 1507, mdlsetctr(nullptr, nullptr, MDL_LEQ), -1),
      T(mdlappctr, 1507, mdlappctr(nullptr, nullptr), -1),
      T(mdlsetobjexpr, 1501, mdlsetobjexpr(nullptr, nullptr), -1),
      T(mdlsetsos, 1508, mdlsetsos(nullptr, nullptr), -1),
      T(mdlappsos, 1508, mdlappsos(nullptr, nullptr), -1),
      // constraints
      TP(mdlnewctr_prob, 1501, mdlnewctr_prob(nullptr, "r", MDL_LEQ)),
      TP(mdlnewctr_prob, 1535, mdlnewctr_prob(p, "r", MDL_RANGE)),
      T(mdldelctr, 1507, mdldelctr(nullptr), 1),
      TP(mdlnewprec_prob, 1501, mdlnewprec_prob(nullptr, "r", x, 1, b)),
      TP(mdlgetnextctr_prob, 1501, mdlgetnextctr_prob(nullptr, nullptr)),
      T(mdlsetctrtype, 1507, mdlsetctrtype(nullptr, MDL_EQ), 1),
      T(mdlsetctrtype, 1535, mdlsetctrtype(c, MDL_RANGE), 1),
      T(mdlsetctrtype, 1539, (mdlsetindicator(c, 1, b), mdlsetctrtype(c, MDL_EQ)), 1),
      T(mdlsetctrtype, 1595,
        [&] {
          MDLctr n = mdlnewctr_prob(p, "n", MDL_NONBINDING);
          mdlsetincvars(n, 1);
          return mdlsetctrtype(n, MDL_LEQ);
        }(),
        1),
      T(mdlgetctrtype, 1507, mdlgetctrtype(nullptr), -1),
      T(mdlsetrange, 1507, mdlsetrange(nullptr, 0, 1), 1),
      T(mdlsetrange, 1536, mdlsetrange(c, 2, 1), 1),
      T(mdlgetrange, 1507, mdlgetrange(nullptr, nullptr, nullptr), 1),
      T(mdlgetrhs, 1507, mdlgetrhs(nullptr), 0),
      T(mdladdterm, 1507, mdladdterm(nullptr, x, 1), 1),
      T(mdlsetterm, 1507, mdlsetterm(nullptr, x, 1), 1),
      T(mdldelterm, 1507, mdldelterm(nullptr, x), 1),
      T(mdladdqterm, 1507, mdladdqterm(nullptr, x, b, 1), 1),
      T(mdlsetqterm, 1507, mdlsetqterm(nullptr, x, b, 1), 1),
      T(mdldelqterm, 1507, mdldelqterm(nullptr, x, b), 1),
      T(mdlgetcoeff, 1507, mdlgetcoeff(nullptr, x), 1.0),
      T(mdlgetqcoeff, 1507, mdlgetqcoeff(nullptr, x, b), 1.0),
      TP(mdlgetnextterm, 1507, mdlgetnextterm(nullptr, nullptr, nullptr, nullptr)),
      TP(mdlgetnextqterm, 1507, mdlgetnextqterm(nullptr, nullptr, nullptr, nullptr, nullptr)),
      T(mdlgetctrsize, 1507, mdlgetctrsize(nullptr), -1),
      T(mdlgetrownum, 1507, mdlgetrownum(nullptr), -1),
      TP(mdlgetctrname, 1507, mdlgetctrname(nullptr)),
      T(mdlsetctrflag, 1507, mdlsetctrflag(nullptr, 0, nullptr), 1),
      T(mdlsetindicator, 1507, mdlsetindicator(nullptr, 1, b), 1),
      T(mdlsetindicator, 1505, mdlsetindicator(c, 1, nullptr), 1),
      T(mdlsetindicator, 1539, mdlsetindicator(obj, 1, b), 1),
      T(mdlsetindicator, 1575, mdlsetindicator(c, 2, b), 1),
      T(mdlsetindicator, 1538, (mdlsetmodcut(c, 1), mdlsetindicator(c, 1, b)), 1),
      T(mdlgetindicator, 1507, mdlgetindicator(nullptr), -2),
      TP(mdlgetindvar, 1507, mdlgetindvar(nullptr)),
      T(mdlsetincvars, 1507, mdlsetincvars(nullptr, 1), 1),
      T(mdlsetincvars, 1575, mdlsetincvars(obj, 3), 1),
      T(mdlsetincvars, 1538,
        [&] {
          MDLctr n = mdlnewctr_prob(p, "n", MDL_NONBINDING);
          mdlsetdelayed(n, 1);
          return mdlsetincvars(n, 1);
        }(),
        1),
      T(mdlsetincvars, 1594, mdlsetincvars(c, 1), 1),
      T(mdlgetincvars, 1507, mdlgetincvars(nullptr), -1),
      T(mdlsetdelayed, 1507, mdlsetdelayed(nullptr, 1), 1),
      T(mdlsetdelayed, 1575, mdlsetdelayed(c, -1), 1),
      T(mdlsetdelayed, 1538, (mdlsetmodcut(c, 1), mdlsetdelayed(c, 1)), 1),
      T(mdlgetdelayed, 1507, mdlgetdelayed(nullptr), -1),
      T(mdlsetmodcut, 1507, mdlsetmodcut(nullptr, 1), 1),
      T(mdlsetmodcut, 1575, mdlsetmodcut(c, 5), 1),
      T(mdlsetmodcut, 1538, (mdlsetdelayed(c, 1), mdlsetmodcut(c, 1)), 1),
      T(mdlgetmodcut, 1507, mdlgetmodcut(nullptr), -1),
      T(mdlsetobj_prob, 1501, mdlsetobj_prob(nullptr, c), 1),
      // sets and directives
      TP(mdlnewsos_prob, 1501, mdlnewsos_prob(nullptr, "t", MDL_SOS1)),
      TP(mdlnewsos_prob, 1545, mdlnewsos_prob(p, "t", 2)),
      T(mdldelsos, 1508, mdldelsos(nullptr), 1),
      T(mdladdsosel, 1508, mdladdsosel(nullptr, x, 1), 1),
      T(mdladdsosel, 1505, mdladdsosel(s, nullptr, 1), 1),
      T(mdldelsosel, 1508, mdldelsosel(nullptr, x), 1),
      T(mdldelsosel, 1505, mdldelsosel(s, nullptr), 1),
      T(mdlgetsostype, 1508, mdlgetsostype(nullptr), -1),
      TP(mdlgetsosname, 1508, mdlgetsosname(nullptr)),
      T(mdlsetvardir, 1505, mdlsetvardir(nullptr, MDL_DIR_UP, 0), 1),
      T(mdlsetvardir, 1547, mdlsetvardir(x, 6, 0), 1),
      T(mdlsetsosdir, 1508, mdlsetsosdir(nullptr, MDL_DIR_UP, 0), 1),
      T(mdlsetsosdir, 1547, mdlsetsosdir(s, 0, 0), 1),
      T(mdlcleardir_prob, 1501, mdlcleardir_prob(nullptr), 1),
      // generation, optimisation and status
      T(mdlloadmat_prob, 1501, mdlloadmat_prob(nullptr), 1),
      T(mdlloadmat_prob, 1515,
        [&] {
          MDLprob e = mdlnewprob("empty");
          const int rc = mdlloadmat_prob(e);
          mdldelprob_prob(e);
          return rc;
        }(),
        1),
      T(mdllpoptimize_prob, 1501, mdllpoptimize_prob(nullptr, ""), 1),
      T(mdllpoptimize_prob, 1523, mdllpoptimize_prob(p, "dx"), 1),
      T(mdllpoptimize_prob, 1524, (fake::fail_call("KVSLlpoptimize", 1, 9), mdllpoptimize_prob(p, "")),
        1),
      T(mdlmipoptimize_prob, 1501, mdlmipoptimize_prob(nullptr, ""), 1),
      T(mdlmipoptimize_prob, 1523, mdlmipoptimize_prob(p, "g"), 1),
      T(mdlminim_prob, 1501, mdlminim_prob(nullptr, ""), 1),
      T(mdlminim_prob, 1523, mdlminim_prob(p, "c"), 1),
      T(mdlminim_prob, 1524, (fake::fail_call("KVSLminim", 1, 9), mdlminim_prob(p, "")), 1),
      T(mdlmaxim_prob, 1501, mdlmaxim_prob(nullptr, ""), 1),
      T(mdlmaxim_prob, 1523, mdlmaxim_prob(p, "z"), 1),
      T(mdlsolve_prob, 1501, mdlsolve_prob(nullptr, ""), 1),
      T(mdlsync_prob, 1501, mdlsync_prob(nullptr, 1), 1),
      T(mdlsync_prob, 1520, mdlsync_prob(p, 1), 0),
      T(mdlfixglobals_prob, 1501, mdlfixglobals_prob(nullptr, 1), 1),
      T(mdlfixglobals_prob, 1524, (fake::fail_call("KVSLfixglobals", 1, 6), mdlfixglobals_prob(p, 1)),
        1),
      T(mdlgetlpstat_prob, 1501, mdlgetlpstat_prob(nullptr), 0),
      T(mdlgetlpstat_prob, 1522, (fake::fail_call("KVSLgetintattrib", 1, 4), mdlgetlpstat_prob(p)), 0),
      T(mdlgetmipstat_prob, 1501, mdlgetmipstat_prob(nullptr), 0),
      T(mdlgetmipstat_prob, 1522, (fake::fail_call("KVSLgetintattrib", 1, 4), mdlgetmipstat_prob(p)),
        0),
      TP(mdlgetkvslprob_prob, 1501, mdlgetkvslprob_prob(nullptr)),
      // with a loaded matrix and scripted engine answers
      T(mdlloadmat_prob, 1516, (mdlsetobj_prob(p, nullptr), mdlloadmat_prob(p)), 0),
      T(mdlloadmat_prob, 1524, (fake::fail_call("KVSLloadlp64", 1, 2), mdlloadmat_prob(p)), 1),
      T(mdlloadmat_prob, 1563,
        [&] {
          MDLprob q = mdlnewprob("other");
          MDLvar y = mdlnewvar_prob(q, "y", MDL_CONTINUOUS, 0, 1);
          mdladdterm(c, y, 1);
          const int rc = mdlloadmat_prob(p);
          mdlsetterm(c, y, 0);
          mdlgetctrsize(c);   // strips the removed term before its problem goes
          mdldelprob_prob(q);
          return rc;
        }(),
        1),
      T(mdllpoptimize_prob, 1521,
        (fake::set_int_attrib(KVSL_ATTR_PRESOLVESTATE, KVSL_SOLUTION_HELD),
         fake::fail_call("KVSLgetdblattrib", 1, 4), mdllpoptimize_prob(p, "")),
        1),
      T(mdllpoptimize_prob, 1573,
        (mdlbegincb_prob(p, mdlgetkvslprob_prob(p)), mdllpoptimize_prob(p, "")), 0),
      T(mdlmipoptimize_prob, 1522,
        (fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, 99), mdlmipoptimize_prob(p, "")), 1),
      T(mdlminim_prob, 1521,
        (fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, KVSL_MIP_OPTIMAL),
         fake::fail_call("KVSLgetdblattrib", 1, 4), mdlminim_prob(p, "g")),
        1),
      T(mdlmaxim_prob, 1522, (fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, 99), mdlmaxim_prob(p, "")),
        1),
      T(mdlsync_prob, 1521,
        (mdlloadmat_prob(p), fake::set_int_attrib(KVSL_ATTR_PRESOLVESTATE, KVSL_SOLUTION_HELD),
         fake::fail_call("KVSLgetdblattrib", 1, 4), mdlsync_prob(p, 1)),
        0),
      T(mdlreadbinsol_prob, 1522,
        (fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, 99), mdlreadbinsol_prob(p, "f", "")), 1),
      T(mdlreadslxsol_prob, 1521,
        (fake::set_int_attrib(KVSL_ATTR_MIPSTATUS, KVSL_MIP_SOLUTION),
         fake::fail_call("KVSLgetdblattrib", 1, 4), mdlreadslxsol_prob(p, "f", "")),
        1),
      T(mdlgetsol, 1520, (mdlloadmat_prob(p), mdlgetsol(x)), 0),
      T(mdlgetrcost, 1520, (mdlloadmat_prob(p), mdlgetrcost(x)), 0),
      T(mdlgetslack, 1520, (mdlloadmat_prob(p), mdlgetslack(c)), 0),
      T(mdlgetdual, 1520, (mdlloadmat_prob(p), mdlgetdual(c)), 0),
      T(mdlgetsol, 1524,
        (fake::set_int_attrib(KVSL_ATTR_PRESOLVESTATE, KVSL_SOLUTION_HELD), mdllpoptimize_prob(p, ""),
         fake::fail_call("KVSLgetlpsol", 1, 6), mdlgetsol(x)),
        0),
      T(mdlgetdual, 1524,
        (fake::set_int_attrib(KVSL_ATTR_PRESOLVESTATE, KVSL_SOLUTION_HELD), mdllpoptimize_prob(p, ""),
         fake::fail_call("KVSLgetlpsol", 1, 6), mdlgetdual(c)),
        0),
      T(mdlgetobjval_prob, 1521,
        (mdlloadmat_prob(p), fake::fail_call("KVSLgetintattrib", 1, 4), mdlgetobjval_prob(p)), 0),
      T(mdlgetvarrng, 1524,
        (mdlloadmat_prob(p), fake::fail_call("KVSLrange", 1, 8), mdlgetvarrng(x, MDL_RNG_UUP)), 0),
      T(mdlgetctrrng, 1524,
        (mdlloadmat_prob(p), fake::fail_call("KVSLrange", 1, 8), mdlgetctrrng(c, MDL_RNG_UUP)), 0),
      TP(mdlsavebasis_prob, 1524,
         (mdlloadmat_prob(p), fake::fail_call("KVSLgetbasis", 1, 6), mdlsavebasis_prob(p))),
      T(mdlloadbasis, 1524,
        [&] {
          mdlloadmat_prob(p);
          MDLbasis basis = mdlsavebasis_prob(p);
          fake::fail_call("KVSLloadbasis", 1, 3);
          const int rc = mdlloadbasis(basis);
          mdldelbasis(basis);
          return rc;
        }(),
        1),
      T(mdlgetnumiis_prob, 1524,
        (mdlloadmat_prob(p), fake::fail_call("KVSLiisstatus", 1, 5), mdlgetnumiis_prob(p)), -1),
      T(mdlgetmiis_prob, 1524,
        (mdlloadmat_prob(p), fake::fail_call("KVSLiisstatus", 1, 5),
         mdlgetmiis_prob(p, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 1)),
        -1),
      T(mdladdmipsol_prob, 1524,
        (mdlsetsolvar(sol, x, 1), fake::fail_call("KVSLaddmipsol", 1, 10),
         mdladdmipsol_prob(p, sol, "s")),
        1),
      T(mdlloadmipsol_prob, 1512, mdlloadmipsol_prob(p, nullptr, 1, 0), 1),
      T(mdlloadmipsol_prob, 1524,
        (mdlloadmat_prob(p), fake::fail_call("KVSLloadmipsol", 1, 3), mdlloadmipsol_prob(p, &big, 1, 1)),
        -3),
      T(mdladdcuts_prob, 1524,
        (mdlsetcutmode_prob(p, 1), mdladdcutterm(cut, x, 1), fake::fail_call("KVSLaddcuts", 1, 3),
         mdladdcuts_prob(p, &cut, 1) + 10 * mdldelcut(cut)),
        1),
      T(mdlgetcuts_prob, 1524,
        [&] {
          mdlloadmat_prob(p);
          fake::fail_call("KVSLgetcutlist", 1, 3);
          MDLcut first = nullptr;
          int ncoefs = 0;
          return mdlgetcuts_prob(p, &first, &ncoefs);
        }(),
        0),
      T(mdlexportprob_prob, 1580,
        [&] {
          const std::string base = ::testing::TempDir() + "kvtl_docs_export";
          const int rc = mdlexportprob_prob(p, 7, base.c_str());
          remove((base + ".lp").c_str());
          return rc;
        }(),
        0),
      // solution values, ranging, solution files
      T(mdlgetsol, 1505, mdlgetsol(nullptr), 0),
      T(mdlgetrcost, 1505, mdlgetrcost(nullptr), 0),
      T(mdlgetslack, 1507, mdlgetslack(nullptr), 0),
      T(mdlgetact, 1507, mdlgetact(nullptr), 0),
      T(mdlgetact, 1520, mdlgetact(c), 0),
      T(mdlgetdual, 1507, mdlgetdual(nullptr), 0),
      T(mdlgetobjval_prob, 1501, mdlgetobjval_prob(nullptr), 0),
      T(mdlgetobjval_prob, 1520, (mdlsync_prob(p, 2), mdlgetobjval_prob(p)), 0),
      T(mdlgetvarrng, 1505, mdlgetvarrng(nullptr, MDL_RNG_UPACT), 0),
      T(mdlgetctrrng, 1507, mdlgetctrrng(nullptr, MDL_RNG_UPACT), 0),
      SOLUTION_FILE(mdlwritesol_prob, KVSLwritesol),
      SOLUTION_FILE(mdlwriteprtsol_prob, KVSLwriteprtsol),
      SOLUTION_FILE(mdlwriteslxsol_prob, KVSLwriteslxsol),
      SOLUTION_FILE(mdlwritebinsol_prob, KVSLwritebinsol),
      SOLUTION_FILE(mdlreadbinsol_prob, KVSLreadbinsol),
      SOLUTION_FILE(mdlreadslxsol_prob, KVSLreadslxsol),
      // cuts
      TP(mdlnewcut_prob, 1501, mdlnewcut_prob(nullptr, 1, 0)),
      TP(mdlnewcut_prob, 1535, mdlnewcut_prob(p, 4, 0)),
      TP(mdlnewcutsum_prob, 1501, mdlnewcutsum_prob(nullptr, arr, 1, 0, 1)),
      TP(mdlnewcutsum_prob, 1506, mdlnewcutsum_prob(p, nullptr, 1, 0, 1)),
      TP(mdlnewcutsum_prob, 1535, mdlnewcutsum_prob(p, arr, 0, 0, 1)),
      TP(mdlnewcutsumc_prob, 1501, mdlnewcutsumc_prob(nullptr, arr, 1, 0, 1, 1)),
      TP(mdlnewcutsumc_prob, 1506, mdlnewcutsumc_prob(p, nullptr, 1, 0, 1, 1)),
      TP(mdlnewcutsumc_prob, 1535, mdlnewcutsumc_prob(p, arr, 5, 0, 1, 1)),
      TP(mdlnewcutarrsum_prob, 1501, mdlnewcutarrsum_prob(nullptr, arr, nullptr, 1, 0, 1)),
      TP(mdlnewcutarrsum_prob, 1506, mdlnewcutarrsum_prob(p, nullptr, nullptr, 1, 0, 1)),
      TP(mdlnewcutarrsum_prob, 1535, mdlnewcutarrsum_prob(p, arr, nullptr, 9, 0, 1)),
      TP(mdlnewcutarrsum_prob, 1512, mdlnewcutarrsum_prob(p, arr, nullptr, 1, 0, 1)),
      TP(mdlnewcutprec_prob, 1501, mdlnewcutprec_prob(nullptr, x, b, 0, 1)),
      T(mdlgetcutid, 1509, mdlgetcutid(nullptr), -1),
      T(mdlsetcutid, 1509, mdlsetcutid(nullptr, 1), 1),
      T(mdlgetcuttype, 1509, mdlgetcuttype(nullptr), -1),
      T(mdlsetcuttype, 1509, mdlsetcuttype(nullptr, 1), 1),
      T(mdlsetcuttype, 1535, mdlsetcuttype(cut, 0), 1),
      T(mdlgetcutrhs, 1509, mdlgetcutrhs(nullptr), 0),
      TP(mdlgetlinexp_cut, 1509, mdlgetlinexp_cut(nullptr)),
      T(mdladdcutterm, 1509, mdladdcutterm(nullptr, x, 1), 1),
      T(mdladdcutarrterm, 1509, mdladdcutarrterm(nullptr, arr, nullptr), 1),
      T(mdladdcutarrterm, 1506, mdladdcutarrterm(cut, nullptr, nullptr), 1),
      T(mdladdcutarrterm, 1512, mdladdcutarrterm(cut, arr, nullptr), 1),
      T(mdlsetcutterm, 1509, mdlsetcutterm(nullptr, x, 1), 1),
      T(mdldelcutterm, 1509, mdldelcutterm(nullptr, x), 1),
      T(mdldelcut, 1509, mdldelcut(nullptr), 1),
      T(mdlprintcut, 1519, mdlprintcut(nullptr), 1),
      T(mdlsetcut, 1509, mdlsetcut(nullptr, nullptr, 1), 1),
      T(mdlappcut, 1509, mdlappcut(nullptr, nullptr), 1),
      T(mdlsetcutmode_prob, 1501, mdlsetcutmode_prob(nullptr, 1), 1),
      T(mdladdcuts_prob, 1501, mdladdcuts_prob(nullptr, &cut, 1), 1),
      T(mdladdcuts_prob, 1587, (mdlsetcutmode_prob(p, 0), mdladdcuts_prob(p, &cut, 0)), 0),
      T(mdladdcuts_prob, 1509, (mdlsetcutmode_prob(p, 1), mdladdcuts_prob(p, nullptr, 1)), 1),
      T(mdlgetcuts_prob, 1501, mdlgetcuts_prob(nullptr, nullptr, nullptr), 0),
      T(mdlgetcuts_prob, 1525, (mdlsync_prob(p, 2), mdlgetcuts_prob(p, nullptr, nullptr)), 0),
      // model files and printing
      T(mdlexportprob_prob, 1501, mdlexportprob_prob(nullptr, MDL_FILE_LP, "f"), 1),
      T(mdlwritedir_prob, 1501, mdlwritedir_prob(nullptr, "f"), 1),
      T(mdlprintprob_prob, 1501, mdlprintprob_prob(nullptr), 1),
      T(mdlprintctr, 1514, mdlprintctr(nullptr), 1),
      T(mdlprintobj_prob, 1501, mdlprintobj_prob(nullptr), 1),
      T(mdlprintsos, 1518, mdlprintsos(nullptr), 1),
      T(mdlprintvar, 1513, mdlprintvar(nullptr), 0),
      T(mdlprintarrvar, 1506, mdlprintarrvar(nullptr), 1),
      // bases and infeasible subsystems
      TP(mdlsavebasis_prob, 1501, mdlsavebasis_prob(nullptr)),
      T(mdlloadbasis, 1510, mdlloadbasis(nullptr), 1),
      T(mdlgetnumiis_prob, 1501, mdlgetnumiis_prob(nullptr), -1),
      T(mdlgetnumiis_prob, 1526, mdlgetnumiis_prob(p), -1),
      T(mdlgetmiis_prob, 1501,
        mdlgetmiis_prob(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 1), 1),
      T(mdlgetmiis_prob, 1526,
        mdlgetmiis_prob(p, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 1), 1),
      T(mdlgetmiis_prob, 1555,
        (mdlloadmat_prob(p), mdlgetmiis_prob(p, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, -1)),
        0),
      T(mdlgetiis_prob, 1501, mdlgetiis_prob(nullptr, nullptr, nullptr, nullptr, nullptr, 1), 1),
      T(mdlgetiis_prob, 1526, mdlgetiis_prob(p, nullptr, nullptr, nullptr, nullptr, 1), 1),
      T(mdlgetiis_prob, 1555,
        (mdlloadmat_prob(p), mdlgetiis_prob(p, nullptr, nullptr, nullptr, nullptr, -2)), 0),
      // MIP start solutions
      TP(mdlnewsol_prob, 1501, mdlnewsol_prob(nullptr)),
      T(mdlsetsolvar, 1597, mdlsetsolvar(nullptr, x, 1), 1),
      T(mdlsetsolvar, 1505, mdlsetsolvar(sol, nullptr, 1), 1),
      T(mdlsetsolvar, 1599, mdlsetsolvar(sol, x, NAN), 0),
      T(mdlsetsolarrvar, 1597, mdlsetsolarrvar(nullptr, arr, nullptr), 1),
      T(mdlsetsolarrvar, 1506, mdlsetsolarrvar(sol, nullptr, nullptr), 1),
      T(mdlsetsolarrvar, 1512, mdlsetsolarrvar(sol, arr, nullptr), 1),
      T(mdlsetsolarrvar, 1599,
        [&] {
          double v[2];
          v[0] = 1;
          v[1] = NAN;
          return mdlsetsolarrvar(sol, arr, v);
        }(),
        0),
      T(mdldelsolvar, 1597, mdldelsolvar(nullptr, x), 1),
      T(mdldelsolvar, 1505, mdldelsolvar(sol, nullptr), 1),
      T(mdlgetsolsize, 1520, mdlgetsolsize(nullptr), -1),
      T(mdlgetsolvar, 1520, mdlgetsolvar(nullptr, x, nullptr), 1),
      T(mdlgetsolvar, 1505, mdlgetsolvar(sol, nullptr, nullptr), 1),
      T(mdlprintsol, 1598, mdlprintsol(nullptr), 1),
      T(mdldelsol, 1597, mdldelsol(nullptr), 1),
      T(mdladdmipsol_prob, 1501, mdladdmipsol_prob(nullptr, sol, "s"), 1),
      T(mdladdmipsol_prob, 1597, mdladdmipsol_prob(p, sol, "s"), 1),
      T(mdlloadmipsol_prob, 1501, mdlloadmipsol_prob(nullptr, nullptr, 0, 0), 1),
      T(mdlloadmipsol_prob, 1527, mdlloadmipsol_prob(p, &big, 1000, 0), -2),
  };

  const auto blocks = doc_blocks(KVTL_PUBLIC_HEADER);
  ASSERT_GT(blocks.size(), 200u) << "doc comments not found in " << KVTL_PUBLIC_HEADER;
  std::set<std::string> functions;
  for (const trigger &t : triggers) {
    SCOPED_TRACE(std::string(t.fn) + " " + std::to_string(t.number));
    functions.insert(t.fn);
    fake::reset();
    quiet_defaults();
    errors.reports.clear();
    if (t.on_model) make_model();
    const double result = t.call();
    if (t.on_model) drop_model();
    while (mdlslfinish() == 0) {
    }
    ASSERT_EQ(errors.reports.size(), 1u)
        << (errors.reports.empty() ? "nothing reported" : "first: " + errors.reports[0].text);
    const testsupport::report &r = errors.reports[0];
    EXPECT_EQ(r.number, t.number) << r.text;
    EXPECT_EQ(result, t.result);
    std::set<std::string> seen;
    bool found = false;
    for (const documented &d : messages_of(blocks, t.fn, seen))
      found = found || (d.number == r.number && d.iserror == r.iserror && text_matches(d.text, r.text));
    EXPECT_TRUE(found) << t.fn << " reports " << r.number << (r.iserror ? " E " : " W ") << r.text
                       << " but its documentation does not list it";
  }
  // Every function that documents messages is called here at least once.
  for (const auto &[fn, block] : blocks) {
    std::set<std::string> seen;
    if (messages_of(blocks, fn, seen).empty() || not_triggered.count(fn) != 0) continue;
    EXPECT_EQ(functions.count(fn), 1u) << fn << " documents messages but none is triggered here";
  }
}

}  // namespace
