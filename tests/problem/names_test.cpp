/*
 * names_test.cpp -- the name dictionary: hash values, find and look-up by
 * kind, unique names, doubling of the table, names switched off, the name
 * ring buffer and generated names.
 */
#include <stdio.h>
#include <string.h>

#include <map>
#include <set>
#include <thread>
#include <string>
#include <vector>

#include "problem/names.h"
#include "problem/problem.h"
#include "problem/support.h"

namespace {

using support::LibraryTest;

// The hash written out the plain way: 32-bit words of four bytes, first
// byte lowest, zero-padded, each mixed into the running value.
uint32_t reference_hash(const std::string &s) {
  uint32_t h = 0;
  for (size_t i = 0; i < s.size(); i += 4) {
    uint32_t w = 0;
    for (size_t k = 0; k < 4; ++k) {
      uint32_t byte = i + k < s.size() ? static_cast<unsigned char>(s[i + k]) : 0u;
      w += byte * (1u << (8 * k));
    }
    uint32_t x = h ^ w;
    x = static_cast<uint32_t>(x * 32768u) + (0xFFFFFFFFu - x);
    x = x ^ (x / 4096u);
    x = x * 5u;
    x = x ^ (x / 16u);
    x = x * 2057u;
    h = x ^ (x / 65536u);
  }
  return h;
}

TEST(NameHash, MatchesPlainComputation) {
  EXPECT_EQ(kvtl::name_hash(""), 0u);
  std::vector<std::string> names = {"a", "ab", "abc", "abcd", "abcde", "x_1", "VAR_123",
                                    "a rather long constraint name", "\xff\xfe\x80", "obj"};
  for (int i = 0; i < 200; ++i) names.push_back("n" + std::to_string(i * 7919));
  for (const std::string &n : names) EXPECT_EQ(kvtl::name_hash(n.c_str()), reference_hash(n)) << n;
}

TEST(NameHash, KnownValue) {
  // "a": one word 0x61.  x = 0x61; (x<<15) + ~x = 0x30ff9e; and so on.
  uint32_t x = 0x61;
  x = (x << 15) + ~x;
  x ^= x >> 12;
  x *= 5;
  x ^= x >> 4;
  x *= 2057;
  x ^= x >> 16;
  EXPECT_EQ(kvtl::name_hash("a"), x);
  EXPECT_EQ(kvtl::name_hash("a"), reference_hash("a"));
}

class Names : public LibraryTest {
 protected:
  MDLprob p = nullptr;
  void SetUp() override {
    LibraryTest::SetUp();
    p = mdlnewprob("names");
    ASSERT_NE(p, nullptr);
  }
  void TearDown() override {
    if (p != nullptr) mdldelprob_prob(p);
    LibraryTest::TearDown();
  }
  mdl_dict_entry *create(const char *name, int kind) {
    return mdlfindname(p, name, kind | MDL_FIND_CREATE);
  }
  mdl_dict_entry *lookup(const char *name, int kind) {
    return mdlfindname(p, name, kind | MDL_FIND_LOOKUP);
  }
};

TEST_F(Names, FindCreatesAndLooksUpByKind) {
  EXPECT_EQ(p->dict, nullptr);
  EXPECT_EQ(lookup("x", MDL_KIND_VAR), nullptr);
  ASSERT_NE(p->dict, nullptr);  // created at the first use
  mdl_dict_entry *v = create("x", MDL_KIND_VAR);
  ASSERT_NE(v, nullptr);
  EXPECT_EQ(v->entity, nullptr);
  EXPECT_EQ(kvtl::entry_kind(v), 1u);
  EXPECT_STREQ(v->name, "x");
  EXPECT_EQ(create("x", MDL_KIND_VAR), v);  // the same entry again
  EXPECT_EQ(p->nnames, 1);
  mdl_dict_entry *c = create("x", MDL_KIND_CTR);
  ASSERT_NE(c, nullptr);
  EXPECT_NE(c, v);
  EXPECT_EQ(c->name, v->name);  // the text is shared
  EXPECT_EQ(c->samename, v);
  EXPECT_EQ(p->nnames, 1);
  EXPECT_EQ(lookup("x", MDL_KIND_VAR), v);
  EXPECT_EQ(lookup("x", MDL_KIND_CTR), c);
  EXPECT_EQ(lookup("x", MDL_KIND_SOS), nullptr);
  EXPECT_EQ(lookup("x", MDL_KIND_ANY), c);  // the newest entry of the name
  EXPECT_EQ(lookup("y", MDL_KIND_ANY), nullptr);
  // Flags 24 (both bits) create.
  mdl_dict_entry *s = mdlfindname(p, "x", MDL_KIND_SOS | MDL_FIND_CREATE | MDL_FIND_LOOKUP);
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(lookup("x", MDL_KIND_ANY), s);
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Names, UnnamedConstraintsAndAVariableCalledCtr) {
  int c1, c2;
  mdl_dict_entry *e1 = mdlnormname(p, nullptr, "CTR", MDL_KIND_CTR, &c1);
  mdl_dict_entry *e2 = mdlnormname(p, "", "CTR", MDL_KIND_CTR, &c2);
  ASSERT_NE(e1, nullptr);
  ASSERT_NE(e2, nullptr);
  EXPECT_STREQ(e1->name, "CTR");
  EXPECT_STREQ(e2->name, "CTR_1");
  MDLvar v = mdlnewvar_prob(p, "CTR", 0, 0, 1);
  EXPECT_STREQ(mdlgetvarname(v), "CTR");
  EXPECT_EQ(mdlgetbyname_prob(p, "CTR", MDL_KIND_CTR), &c1);
  EXPECT_EQ(mdlgetbyname_prob(p, "CTR_1", MDL_KIND_CTR), &c2);
  EXPECT_EQ(mdlgetbyname_prob(p, "CTR", MDL_KIND_VAR), v);
  EXPECT_EQ(mdlgetbyname_prob(p, "CTR", MDL_KIND_ANY), v);  // entered last
  EXPECT_EQ(mdlgetbyname_prob(p, "CTR_1", MDL_KIND_VAR), nullptr);
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Names, SuffixesAccumulate) {
  std::vector<std::string> got;
  for (const char *n : {"x", "x", "x", "x_1", "x", "x_1", "x_1_1"}) got.push_back(mdlgetvarname(mdlnewvar_prob(p, n, 0, 0, 1)));
  EXPECT_EQ(got, (std::vector<std::string>{"x", "x_1", "x_2", "x_1_1", "x_3", "x_1_2", "x_1_1_1"}));
  // The counters live in the entries of the taken names.
  EXPECT_EQ(kvtl::entry_suffix(lookup("x", MDL_KIND_VAR)), 3u);
  EXPECT_EQ(kvtl::entry_suffix(lookup("x_1", MDL_KIND_VAR)), 2u);
  EXPECT_EQ(kvtl::entry_suffix(lookup("x_2", MDL_KIND_VAR)), 0u);
  EXPECT_EQ(p->maxnamelen, 7);
  // Default prefix for variables.
  EXPECT_STREQ(mdlgetvarname(mdlnewvar_prob(p, nullptr, 0, 0, 1)), "VAR");
  EXPECT_STREQ(mdlgetvarname(mdlnewvar_prob(p, "", 0, 0, 1)), "VAR_1");
}

TEST_F(Names, ReservedEntryIsReused) {
  mdl_dict_entry *r = create("free", MDL_KIND_CTR);
  ASSERT_NE(r, nullptr);
  int c;
  EXPECT_EQ(mdlgetbyname_prob(p, "free", MDL_KIND_CTR), nullptr);  // reserved only
  EXPECT_EQ(mdlnormname(p, "free", "CTR", MDL_KIND_CTR, &c), r);
  EXPECT_EQ(r->entity, &c);
  EXPECT_EQ(r->word, static_cast<uint32_t>(MDL_KIND_CTR));
}

TEST_F(Names, TableDoublesPast1024NamesKeepingOrder) {
  std::vector<MDLvar> vars;
  char buf[32];
  for (int i = 0; i < 1024; ++i) {
    snprintf(buf, sizeof buf, "v%d", i);
    vars.push_back(mdlnewvar_prob(p, buf, 0, 0, 1));
  }
  EXPECT_EQ(p->dictsize, 1024);
  // Chains of the old table, in order.
  std::vector<std::vector<mdl_dict_entry *>> before(1024);
  for (int b = 0; b < 1024; ++b)
    for (mdl_dict_entry *e = p->dict[b]; e != nullptr; e = e->next) before[b].push_back(e);
  vars.push_back(mdlnewvar_prob(p, "v1024", 0, 0, 1));
  EXPECT_EQ(p->nnames, 1025);
  EXPECT_EQ(p->dictsize, 2048);  // after 1025 distinct names
  // Each new bucket holds its old chain's entries in their old order.
  for (int b = 0; b < 1024; ++b) {
    for (int half : {b, b + 1024}) {
      std::vector<mdl_dict_entry *> chain;
      for (mdl_dict_entry *e = p->dict[half]; e != nullptr; e = e->next)
        if (strcmp(e->name, "v1024") != 0) chain.push_back(e);
      std::vector<mdl_dict_entry *> expected;
      for (mdl_dict_entry *e : before[b])
        if ((kvtl::name_hash(e->name) & 2047u) == static_cast<uint32_t>(half)) expected.push_back(e);
      EXPECT_EQ(chain, expected) << "bucket " << half;
    }
  }
  for (int i = 0; i <= 1024; ++i) {
    snprintf(buf, sizeof buf, "v%d", i);
    EXPECT_EQ(mdlgetbyname_prob(p, buf, MDL_KIND_VAR), vars[static_cast<size_t>(i)]) << buf;
  }
  for (int i = 1025; i < 2048; ++i) {
    snprintf(buf, sizeof buf, "v%d", i);
    mdlnewvar_prob(p, buf, 0, 0, 1);
  }
  EXPECT_EQ(p->dictsize, 2048);  // 2048 names in 2048 buckets
  mdlnewvar_prob(p, "one more", 0, 0, 1);
  EXPECT_EQ(p->dictsize, 4096);
  EXPECT_TRUE(cap.msgs.empty());
}

// Every entry, in whatever bucket doubling left it, is in the bucket of its
// name's hash and carries that hash; a same-name entry of another kind
// carries its first entry's hash; names differing only past a shared
// 4-byte group or in a short tail stay apart.
TEST_F(Names, EntriesKeepTheirNamesHashThroughDoubling) {
  char buf[32];
  for (int i = 0; i < 5000; ++i) {
    snprintf(buf, sizeof buf, "abcd%d", i);
    ASSERT_NE(mdlnewvar_prob(p, buf, 0, 0, 1), nullptr);
    if (i % 7 == 0) ASSERT_NE(mdlnewctr_prob(p, buf, MDL_LEQ), nullptr);
  }
  EXPECT_EQ(p->dictsize, 8192);
  int entries = 0;
  for (int b = 0; b < p->dictsize; ++b)
    for (mdl_dict_entry *e = p->dict[b]; e != nullptr; e = e->next) {
      ++entries;
      EXPECT_EQ(e->hash, kvtl::name_hash(e->name)) << e->name;
      EXPECT_EQ(e->hash & static_cast<uint32_t>(p->dictsize - 1), static_cast<uint32_t>(b)) << e->name;
    }
  EXPECT_EQ(entries, 5000 + 715);
  for (int i = 0; i < 5000; i += 13) {
    snprintf(buf, sizeof buf, "abcd%d", i);
    MDLvar v = static_cast<MDLvar>(mdlgetbyname_prob(p, buf, MDL_KIND_VAR));
    ASSERT_NE(v, nullptr) << buf;
    EXPECT_STREQ(mdlgetvarname(v), buf);
  }
  EXPECT_EQ(mdlgetbyname_prob(p, "abcd", MDL_KIND_VAR), nullptr);
  EXPECT_EQ(mdlgetbyname_prob(p, "abcd5000", MDL_KIND_VAR), nullptr);
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Names, TenThousandNamesWithSuffixChains) {
  std::map<std::string, MDLvar> byname;
  char buf[32];
  for (int i = 0; i < 10000; ++i) {
    snprintf(buf, sizeof buf, "n%d", i % 97);
    MDLvar v = mdlnewvar_prob(p, i % 13 == 0 ? nullptr : buf, 0, 0, 1);
    ASSERT_NE(v, nullptr);
    std::string name = mdlgetvarname(v);
    EXPECT_TRUE(byname.emplace(name, v).second) << "duplicate " << name;
  }
  EXPECT_EQ(byname.size(), 10000u);
  EXPECT_EQ(p->dictsize, 16384);
  for (const auto &[name, v] : byname) ASSERT_EQ(mdlgetbyname_prob(p, name.c_str(), MDL_KIND_VAR), v);
  EXPECT_NE(byname.find("n5_50"), byname.end());
  EXPECT_NE(byname.find("VAR_768"), byname.end());
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Names, NamesOffKeepsGivenTextsWithoutDictionary) {
  ASSERT_EQ(mdlsetdictsize_prob(p, 0, 0), 0);
  MDLvar a = mdlnewvar_prob(p, "x", 0, 0, 1);
  MDLvar b = mdlnewvar_prob(p, "x", 0, 0, 1);
  MDLvar c = mdlnewvar_prob(p, nullptr, 0, 0, 1);
  ASSERT_TRUE(a && b && c);
  EXPECT_STREQ(mdlgetvarname(a), "x");
  EXPECT_STREQ(mdlgetvarname(b), "x");  // no suffix
  EXPECT_NE(mdlgetvarname(a), mdlgetvarname(b));
  char buf[32];
  EXPECT_STREQ(mdlgetvarname(c), mdlmktn(buf, c));
  EXPECT_EQ(mdlgetbyname_prob(p, "x", MDL_KIND_VAR), nullptr);
  EXPECT_EQ(mdlgetbyname_prob(p, "x", MDL_KIND_ANY), nullptr);
  EXPECT_EQ(p->dict, nullptr);
  // Newest first on the entity list.
  std::vector<void *> listed;
  for (mdl_entity_entry *e = p->entities; e != nullptr; e = e->next) {
    EXPECT_EQ(e->kind, 1u);
    listed.push_back(e->entity);
  }
  EXPECT_EQ(listed, (std::vector<void *>{c, b, a}));
  EXPECT_EQ(mdlfindname(p, "x", MDL_KIND_VAR | MDL_FIND_CREATE), nullptr);
  EXPECT_TRUE(cap.msgs.empty());
}

TEST_F(Names, AddtodelPushesToFront) {
  int e1, e2;
  mdl_entity_entry *a = mdladdtodel(p, MDL_KIND_CTR, &e1);
  mdl_entity_entry *b = mdladdtodel(p, MDL_KIND_SOS, &e2);
  ASSERT_TRUE(a && b);
  EXPECT_EQ(p->entities, b);
  EXPECT_EQ(b->next, a);
  EXPECT_EQ(a->kind, 3u);
  EXPECT_EQ(b->entity, &e2);
}

TEST_F(Names, NullProblem) {
  EXPECT_EQ(mdlfindname(nullptr, "x", MDL_KIND_VAR | MDL_FIND_CREATE), nullptr);
  EXPECT_EQ(mdlnormname(nullptr, "x", "VAR", MDL_KIND_VAR, p), nullptr);
  EXPECT_EQ(mdlgetbyname_prob(nullptr, "x", MDL_KIND_VAR), nullptr);
  EXPECT_EQ(mdladdtodel(nullptr, MDL_KIND_VAR, p), nullptr);
  ASSERT_EQ(cap.msgs.size(), 4u);
  const char *fns[] = {"findname", "normname", "getbyname", "addtodel"};
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(cap.msgs[i].num, 1501);
    EXPECT_EQ(cap.msgs[i].iserror, 1);
    EXPECT_EQ(cap.msgs[i].text, std::string("(") + fns[i] + ") No active problem.");
  }
}

TEST_F(Names, NewnameLengthLimit) {
  std::string s127(127, 'a'), s128(128, 'b');
  const char *ok = mdlnewname("%s", s127.c_str());
  ASSERT_NE(ok, nullptr);
  EXPECT_EQ(std::string(ok), s127);
  EXPECT_TRUE(cap.msgs.empty());
  EXPECT_EQ(mdlnewname("%s", s128.c_str()), nullptr);
  expect_only(1566, 1, "Name too long: " + std::string(127, 'b') + " (max=127).");
  EXPECT_EQ(last().prob, p);  // reported for the current problem
  EXPECT_EQ(mdlnewname("c%d_%s", 12, "d"), std::string("c12_d"));
}

TEST_F(Names, NewnameRingWrapsAt384) {
  std::string s(99, 'r');
  const char *first = mdlnewname("%s", s.c_str());
  const char *second = mdlnewname("%s", s.c_str());
  EXPECT_EQ(second, first + 100);
  mdlnewname("%s", s.c_str());
  const char *fourth = mdlnewname("%s", s.c_str());
  EXPECT_EQ(fourth, first + 300);
  EXPECT_EQ(std::string(first), s);  // still intact
  const char *fifth = mdlnewname("x%d", 5);  // cursor at 400: back to the start
  EXPECT_EQ(fifth, first);
  EXPECT_STREQ(fifth, "x5");
}

TEST_F(Names, NewnameBufferIsPerThread) {
  const char *mine = mdlnewname("main");
  const char *theirs = nullptr;
  std::thread t([&] { theirs = mdlnewname("other"); });
  t.join();
  EXPECT_NE(mine, theirs);
  EXPECT_STREQ(mine, "main");
}

TEST(Mktn, HexOfHandle) {
  char buf[32];
  EXPECT_STREQ(mdlmktn(buf, reinterpret_cast<void *>(0x7f12ab30)), "x7f12ab30");
  EXPECT_STREQ(buf, "0x7f12ab30");
  int obj;
  char expected[32];
  snprintf(expected, sizeof expected, "x%lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(&obj)));
  EXPECT_STREQ(mdlmktn(buf, &obj), expected);
}

// Every allocation of naming fails in turn (bucket array, doubling, entries,
// name copies): 1502 once, null, and the dictionary still answers.
TEST_F(Names, AllocationFailureSweep) {
  mdldelprob_prob(p);
  p = nullptr;
  bool done = false;
  for (long n = 1; n < 400 && !done; ++n) {
    MDLprob q = mdlnewprob("sweep");
    ASSERT_NE(q, nullptr);
    mdlsetdictsize_prob(q, 0, 128);
    cap.msgs.clear();
    support::arm(n);
    int made = 0;
    bool failed = false;
    char buf[32];
    for (int i = 0; i < 300 && !failed; ++i) {
      snprintf(buf, sizeof buf, "s%d", i % 150);
      MDLvar v = mdlnewvar_prob(q, buf, 0, 0, 1);
      if (v == nullptr) {
        failed = true;
      } else {
        ++made;
      }
    }
    support::disarm();
    if (!failed) {
      done = true;
      EXPECT_TRUE(cap.msgs.empty());
    } else {
      ASSERT_EQ(cap.msgs.size(), 1u) << "allocation " << n;
      EXPECT_EQ(cap.msgs[0].num, 1502);
      EXPECT_EQ(cap.msgs[0].text, "Not enough memory.");
      // What was made is still found, and naming goes on afterwards.
      int found = 0;
      for (int k = 0; k < q->dictsize && q->dict != nullptr; ++k)
        for (mdl_dict_entry *e = q->dict[k]; e != nullptr; e = e->next) found += e->entity != nullptr;
      EXPECT_EQ(found, made);
      EXPECT_NE(mdlnewvar_prob(q, "after", 0, 0, 1), nullptr);
    }
    mdldelprob_prob(q);
  }
  EXPECT_TRUE(done);
}

}  // namespace
