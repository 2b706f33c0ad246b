/*
 * idxsets_test.cpp -- index sets: positions of added and found elements,
 * the shared element-name dictionary, table growth, names, printing,
 * messages and allocation failure.
 */

#include <string>
#include <vector>

#include "constraints/model_fixture.h"
#include "problem/idxsets.h"
#include "problem/names.h"

namespace {

using modeltest::failing_malloc;
using modeltest::ModelTest;

class IdxSets : public ModelTest {
 protected:
  // Every element of a set in position order.
  static std::vector<std::string> elements(MDLidxset s) {
    std::vector<std::string> r;
    for (int i = 0; i < mdlgetidxsetsize(s); i++) r.emplace_back(mdlgetidxelname(s, i));
    return r;
  }
};

TEST_F(IdxSets, RepeatedNameKeepsFirstPosition) {
  MDLidxset s = mdlnewidxset_prob(prob, "s", 0);
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(mdladdidxel(s, "a"), 0);
  EXPECT_EQ(mdladdidxel(s, "b"), 1);
  EXPECT_EQ(mdladdidxel(s, "a"), 0);
  EXPECT_EQ(mdlgetidxsetsize(s), 2);
  EXPECT_EQ(mdlgetidxel(s, "a"), 0);
  EXPECT_EQ(mdlgetidxel(s, "b"), 1);
  EXPECT_EQ(mdlgetidxel(s, "c"), -1);
  EXPECT_STREQ(mdlgetidxelname(s, 0), "a");
  EXPECT_STREQ(mdlgetidxelname(s, 1), "b");
  EXPECT_EQ(mdlgetidxsetsize(s), 2);
  expect_none();
}

TEST_F(IdxSets, SharedNamesHaveIndependentPositionsAndOneText) {
  MDLidxset s = mdlnewidxset_prob(prob, "s", 3);
  MDLidxset t = mdlnewidxset_prob(prob, "t", 3);
  EXPECT_EQ(mdladdidxel(s, "x"), 0);
  EXPECT_EQ(mdladdidxel(s, "y"), 1);
  EXPECT_EQ(mdladdidxel(t, "y"), 0);
  EXPECT_EQ(mdladdidxel(t, "z"), 1);
  EXPECT_EQ(mdladdidxel(t, "x"), 2);
  EXPECT_EQ(mdlgetidxel(s, "y"), 1);
  EXPECT_EQ(mdlgetidxel(t, "y"), 0);
  EXPECT_EQ(mdlgetidxel(s, "x"), 0);
  EXPECT_EQ(mdlgetidxel(t, "x"), 2);
  // One text per name for the whole problem.
  EXPECT_EQ(mdlgetidxelname(s, 0), mdlgetidxelname(t, 2));
  EXPECT_EQ(mdlgetidxelname(s, 1), mdlgetidxelname(t, 0));
  EXPECT_EQ(prob->nidxnames, 3);
  expect_none();
}

TEST_F(IdxSets, LookUpOfNameOfAnotherSetAddsNothing) {
  MDLidxset s = mdlnewidxset_prob(prob, "s", 0);
  MDLidxset t = mdlnewidxset_prob(prob, "t", 0);
  ASSERT_EQ(mdladdidxel(s, "only_s"), 0);
  EXPECT_EQ(mdlgetidxel(t, "only_s"), -1);
  EXPECT_EQ(mdlgetidxsetsize(t), 0);
  EXPECT_EQ(mdlgetidxel(t, "nowhere"), -1);
  EXPECT_EQ(prob->nidxnames, 1);
  // A later add to the other set still gives position 0 there.
  EXPECT_EQ(mdladdidxel(t, "only_s"), 0);
  EXPECT_EQ(prob->nidxnames, 1);
  expect_none();
}

TEST_F(IdxSets, TableGrowsByFiveSlots) {
  MDLidxset s = mdlnewidxset_prob(prob, "s", 0);
  EXPECT_EQ(s->capacity, 5);
  for (int i = 0; i < 5; i++) EXPECT_EQ(mdladdidxel(s, mdlnewname("e%d", i)), i);
  EXPECT_EQ(s->capacity, 5);
  EXPECT_EQ(mdladdidxel(s, "e5"), 5);
  EXPECT_EQ(s->capacity, 10);
  EXPECT_EQ(s->elements[6], nullptr);
  MDLidxset big = mdlnewidxset_prob(prob, "big", 7);
  EXPECT_EQ(big->capacity, 7);
  MDLidxset neg = mdlnewidxset_prob(prob, "neg", -3);
  EXPECT_EQ(neg->capacity, 5);
  for (int i = 0; i < 8; i++) mdladdidxel(big, mdlnewname("e%d", i));
  EXPECT_EQ(big->capacity, 12);
  std::vector<std::string> want = {"e0", "e1", "e2", "e3", "e4", "e5"};
  EXPECT_EQ(elements(s), want);
  expect_none();
}

TEST_F(IdxSets, ManyElementsKeepDensePositions) {
  MDLidxset s = mdlnewidxset_prob(prob, nullptr, 0);
  for (int i = 0; i < 2000; i++) ASSERT_EQ(mdladdidxel(s, mdlnewname("n%d", i)), i);
  for (int i = 1999; i >= 0; i--) {
    ASSERT_EQ(mdladdidxel(s, mdlnewname("n%d", i)), i);
    ASSERT_EQ(mdlgetidxel(s, mdlnewname("n%d", i)), i);
    ASSERT_EQ(std::string(mdlgetidxelname(s, i)), std::string("n") + std::to_string(i));
  }
  EXPECT_EQ(mdlgetidxsetsize(s), 2000);
  EXPECT_EQ(s->capacity, 2000);
  expect_none();
}

TEST_F(IdxSets, ElementNameOutsideRangeIsNullWithoutMessage) {
  MDLidxset s = mdlnewidxset_prob(prob, "s", 0);
  EXPECT_EQ(mdlgetidxelname(s, 0), nullptr);
  mdladdidxel(s, "a");
  mdladdidxel(s, "b");
  EXPECT_EQ(mdlgetidxelname(s, -1), nullptr);
  EXPECT_EQ(mdlgetidxelname(s, 2), nullptr);
  EXPECT_EQ(mdlgetidxelname(s, 5), nullptr);
  expect_none();
}

TEST_F(IdxSets, EmptyElementNameIsAnElement) {
  MDLidxset s = mdlnewidxset_prob(prob, "s", 0);
  EXPECT_EQ(mdladdidxel(s, "a"), 0);
  EXPECT_EQ(mdladdidxel(s, ""), 1);
  EXPECT_EQ(mdlgetidxel(s, ""), 1);
  EXPECT_STREQ(mdlgetidxelname(s, 1), "");
  expect_none();
}

TEST_F(IdxSets, Messages) {
  MDLidxset s = mdlnewidxset_prob(prob, "s", 0);
  EXPECT_EQ(mdlnewidxset_prob(nullptr, "s", 0), nullptr);
  expect_one(1501, 1, "(newidxset) No active problem.");
  EXPECT_EQ(mdladdidxel(nullptr, "a"), -1);
  expect_one(1550, 1, "(addidxel) No index set given.");
  EXPECT_EQ(mdlgetidxel(nullptr, "a"), -1);
  expect_one(1550, 1, "(getidxel) No index set given.");
  EXPECT_EQ(mdlgetidxsetsize(nullptr), -1);
  expect_one(1550, 1, "(getidxsetsize) No index set given.");
  EXPECT_EQ(mdlgetidxsetname(nullptr), nullptr);
  expect_one(1550, 1, "(getidxsetname) No index set given.");
  EXPECT_EQ(mdlgetidxelname(nullptr, 0), nullptr);
  expect_one(1550, 1, "(getidxelname) No index set given.");
  out.text.clear();
  EXPECT_EQ(mdlprintidxset(nullptr), 1);
  expect_one(1552, 0, "(printidxset) No index set given.");
  // Only the warning's own line is printed.
  EXPECT_EQ(out.text, "Tessel: Warning 1552: (printidxset) No index set given.\n");
  // A missing element name is a warning for the set's problem.
  EXPECT_EQ(mdladdidxel(s, nullptr), -1);
  EXPECT_EQ(log.last().prob, prob);
  expect_one(1551, 0, "(addidxel) No name given for an element of an index set.");
  EXPECT_EQ(mdlgetidxel(s, nullptr), -1);
  EXPECT_EQ(log.last().prob, prob);
  expect_one(1551, 0, "(getidxel) No name given for an element of an index set.");
  EXPECT_EQ(mdlgetidxsetsize(s), 0);
}

TEST_F(IdxSets, ErrorsEndTheProcessByDefault) {
  EXPECT_EXIT(
      {
        mdldefcberr_prob(nullptr, nullptr, nullptr);
        mdldefcbmsg_prob(nullptr, nullptr, nullptr);
        mdlseterrctrl(1);
        mdladdidxel(nullptr, "a");
      },
      ::testing::ExitedWithCode(1550 % 256),
      "Tessel: Error 1550: \\(addidxel\\) No index set given\\.");
}

TEST_F(IdxSets, NamesAndLookUpByName) {
  MDLidxset a = mdlnewidxset_prob(prob, nullptr, 0);
  MDLidxset b = mdlnewidxset_prob(prob, "", 0);
  MDLidxset c = mdlnewidxset_prob(prob, "sites", 0);
  MDLidxset d = mdlnewidxset_prob(prob, "sites", 0);
  EXPECT_STREQ(mdlgetidxsetname(a), "IDX");
  EXPECT_STREQ(mdlgetidxsetname(b), "IDX_1");
  EXPECT_STREQ(mdlgetidxsetname(c), "sites");
  EXPECT_STREQ(mdlgetidxsetname(d), "sites_1");
  EXPECT_EQ(mdlgetbyname_prob(prob, "sites", MDL_KIND_IDX), c);
  EXPECT_EQ(mdlgetbyname_prob(prob, "sites_1", MDL_KIND_IDX), d);
  EXPECT_EQ(mdlgetbyname_prob(prob, "IDX", MDL_KIND_IDX), a);
  EXPECT_EQ(mdlgetbyname_prob(prob, "sites", MDL_KIND_VAR), nullptr);
  // Another kind may use the same name.
  MDLvar x = mdlnewvar_prob(prob, "sites", MDL_CONTINUOUS, 0, 1);
  EXPECT_STREQ(mdlgetvarname(x), "sites");
  EXPECT_EQ(mdlgetbyname_prob(prob, "sites", MDL_KIND_IDX), c);
  // Element names are not entity names.
  mdladdidxel(c, "paris");
  EXPECT_EQ(mdlgetbyname_prob(prob, "paris", MDL_KIND_ANY), nullptr);
  EXPECT_EQ(c->problem, prob);
  expect_none();
}

TEST_F(IdxSets, NamesOffLeaveTheSetUnnamed) {
  MDLprob p = mdlnewprob(nullptr);
  ASSERT_EQ(mdlsetdictsize_prob(p, 0, 0), 0);
  MDLidxset s = mdlnewidxset_prob(p, "sites", 0);
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->name, nullptr);
  char buf[24];
  EXPECT_STREQ(mdlgetidxsetname(s), mdlmktn(buf, s));
  EXPECT_EQ(mdlgetbyname_prob(p, "sites", MDL_KIND_IDX), nullptr);
  ASSERT_NE(p->entities, nullptr);
  EXPECT_EQ(p->entities->kind, static_cast<uint32_t>(MDL_KIND_IDX));
  EXPECT_EQ(p->entities->entity, s);
  // Elements still work without entity names.
  EXPECT_EQ(mdladdidxel(s, "a"), 0);
  EXPECT_EQ(mdladdidxel(s, "b"), 1);
  EXPECT_EQ(mdlgetidxel(s, "b"), 1);
  out.text.clear();
  EXPECT_EQ(mdlprintidxset(s), 0);
  EXPECT_EQ(out.text, std::string(mdlmktn(buf, s)) + ": a b \n");
  mdldelprob_prob(p);
  expect_none();
}

TEST_F(IdxSets, Print) {
  MDLidxset s = mdlnewidxset_prob(prob, "cities", 0);
  EXPECT_EQ(mdlprintidxset(s), 0);
  EXPECT_EQ(out.text, "cities: \n");
  out.text.clear();
  for (const char *n : {"rome", "oslo", "lima"}) mdladdidxel(s, n);
  EXPECT_EQ(mdlprintidxset(s), 0);
  EXPECT_EQ(out.text, "cities: rome oslo lima \n");
  EXPECT_EQ(out.probs.front(), prob);
  expect_none();
}

TEST_F(IdxSets, PrintWrapsAfterSeventyFiveCharacters) {
  // Head "s: " counts 3; each element "eNN " counts 4.  Before an element
  // the line breaks once the count exceeds 75: after 3 + 4*19 = 79.
  MDLidxset s = mdlnewidxset_prob(prob, "s", 0);
  std::string want = "s: ";
  for (int i = 10; i < 50; i++) mdladdidxel(s, mdlnewname("e%d", i));
  size_t column = 3;
  for (int i = 10; i < 50; i++) {
    if (column > 75) {
      want += "\n";
      column = 0;
    }
    want += "e" + std::to_string(i) + " ";
    column += 4;
  }
  want += "\n";
  EXPECT_EQ(mdlprintidxset(s), 0);
  EXPECT_EQ(out.text, want);
  // The first break comes after exactly 19 elements.
  EXPECT_EQ(out.text.find('\n'), 3u + 19u * 4u);
  expect_none();
}

TEST_F(IdxSets, PrintWrapIsStrictlyAboveSeventyFive) {
  // A head plus elements of exactly 75 characters keeps the next element
  // on the same line; one more character breaks it.
  MDLidxset s = mdlnewidxset_prob(prob, "abc", 0);   // head 5
  mdladdidxel(s, std::string(69, 'a').c_str());     // 5 + 70 = 75
  mdladdidxel(s, "b");                                // 77
  mdladdidxel(s, "c");
  EXPECT_EQ(mdlprintidxset(s), 0);
  EXPECT_EQ(out.text, "abc: " + std::string(69, 'a') + " b \nc \n");
  expect_none();
}

TEST_F(IdxSets, ElementDictionaryDoubles) {
  ASSERT_EQ(mdlsetdictsize_prob(prob, 1, 100), 0);   // rounded up to 128
  EXPECT_EQ(prob->idxdictsize, 128);
  MDLidxset s = mdlnewidxset_prob(prob, "s", 0);
  MDLidxset t = mdlnewidxset_prob(prob, "t", 0);
  // Once the dictionary exists its size is fixed.
  EXPECT_EQ(mdlsetdictsize_prob(prob, 1, 512), 1);
  expect_one(1504, 1, "Dictionary cannot be re-initialized.");
  for (int i = 0; i < 128; i++) ASSERT_EQ(mdladdidxel(s, mdlnewname("k%d", i)), i);
  EXPECT_EQ(prob->idxdictsize, 128);
  EXPECT_EQ(mdladdidxel(t, "k5"), 0);   // a known name does not grow it
  EXPECT_EQ(prob->idxdictsize, 128);
  EXPECT_EQ(mdladdidxel(s, "k128"), 128);
  EXPECT_EQ(prob->idxdictsize, 256);
  EXPECT_EQ(prob->nidxnames, 129);
  for (int i = 0; i < 129; i++) ASSERT_EQ(mdlgetidxel(s, mdlnewname("k%d", i)), i);
  EXPECT_EQ(mdlgetidxel(t, "k5"), 0);
  EXPECT_EQ(mdlgetidxel(t, "k6"), -1);
  // The default size takes 1025 names before doubling to 2048.
  MDLprob p = mdlnewprob(nullptr);
  MDLidxset u = mdlnewidxset_prob(p, "u", 0);
  EXPECT_EQ(p->idxdictsize, 1024);
  for (int i = 0; i < 1024; i++) mdladdidxel(u, mdlnewname("k%d", i));
  EXPECT_EQ(p->idxdictsize, 1024);
  mdladdidxel(u, "k1024");
  EXPECT_EQ(p->idxdictsize, 2048);
  for (int i = 0; i < 1025; i++) ASSERT_EQ(mdlgetidxel(u, mdlnewname("k%d", i)), i);
  mdldelprob_prob(p);
  expect_none();
}

TEST_F(IdxSets, CustomHooksGrowThroughTheHooks) {
  // With hooks other than the defaults the table is grown through them:
  // the sixth element costs exactly one hook call.
  MDLidxset s = mdlnewidxset_prob(prob, "s", 0);
  for (int i = 0; i < 5; i++) mdladdidxel(s, mdlnewname("e%d", i));
  failing_malloc::arm(0);
  EXPECT_EQ(mdladdidxel(s, "e5"), 5);
  EXPECT_GE(failing_malloc::calls, 1);
  failing_malloc::disarm();
  EXPECT_EQ(s->capacity, 10);
  std::vector<std::string> want = {"e0", "e1", "e2", "e3", "e4", "e5"};
  EXPECT_EQ(elements(s), want);
  expect_none();
}

TEST_F(IdxSets, TableStopsBeforeThePositionsOverflow) {
  // A table whose next growth would pass the largest int32 position
  // refuses the element like a failed allocation.  The sizes are faked: no
  // slot is touched before the refusal.
  MDLidxset s = mdlnewidxset_prob(prob, "s", 0);
  ASSERT_EQ(mdladdidxel(s, "a"), 0);
  const int32_t saved_capacity = s->capacity, saved_size = s->size;
  s->capacity = s->size = INT32_MAX - 2;
  EXPECT_EQ(mdladdidxel(s, "b"), -1);
  expect_one(1502, 1, "Not enough memory.");
  EXPECT_EQ(s->size, INT32_MAX - 2);
  EXPECT_EQ(s->capacity, INT32_MAX - 2);
  EXPECT_EQ(prob->nidxnames, 1);
  s->capacity = saved_capacity;
  s->size = saved_size;
  EXPECT_EQ(mdlgetidxel(s, "b"), -1);
  EXPECT_EQ(mdladdidxel(s, "b"), 1);
  expect_none();
}

// Observable state of the sets of a scenario.
struct snapshot {
  std::vector<std::vector<std::string>> sets;
  int32_t names;
  bool operator==(const snapshot &) const = default;
};

snapshot take(MDLprob p, const std::vector<MDLidxset> &sets) {
  snapshot r;
  for (MDLidxset s : sets) {
    std::vector<std::string> e;
    for (int i = 0; i < mdlgetidxsetsize(s); i++) e.emplace_back(mdlgetidxelname(s, i));
    r.sets.push_back(e);
  }
  r.names = p->nidxnames;
  return r;
}

// Fail the Nth allocator call of a scenario (two sets, 160 element names,
// shared and repeated names, table growth, pool blocks and the doubling of a
// 128-bucket dictionary), for every N.  A failing call reports 1502 and
// leaves the sets as they were; repeating it then succeeds.
void sweep(testsupport::error_log &log, bool names_on) {
  int hits = 0;
  snapshot reference{};
  for (int n = 1;; n++) {
    MDLprob p = mdlnewprob(nullptr);
    ASSERT_NE(p, nullptr);
    if (!names_on) mdlsetdictsize_prob(p, 0, 0);
    mdlsetdictsize_prob(p, 1, 128);
    log.reports.clear();
    failing_malloc::arm(n);
    std::vector<MDLidxset> sets;
    bool hit = false;
    for (const char *name : {"s", "t"}) {
      MDLidxset s = mdlnewidxset_prob(p, name, 0);
      if (s == nullptr) {
        hit = true;
        ASSERT_EQ(log.reports.size(), 1u);
        EXPECT_EQ(log.last().number, 1502);
        EXPECT_EQ(log.last().text, "Not enough memory.");
        log.reports.clear();
        s = mdlnewidxset_prob(p, name, 0);
        ASSERT_NE(s, nullptr);
        if (names_on) {
          EXPECT_STREQ(mdlgetidxsetname(s), name);
          EXPECT_EQ(mdlgetbyname_prob(p, name, MDL_KIND_IDX), s);
        }
      }
      sets.push_back(s);
    }
    for (int i = 0; i < 160; i++) {
      MDLidxset s = sets[i % 3 == 2 ? 1 : 0];
      // Names repeat and are shared between the sets.
      const char *el = mdlnewname("element%d", (i * 7) % 150);
      snapshot before = take(p, sets);
      int want = mdlgetidxel(s, el);
      int pos = mdladdidxel(s, el);
      if (pos < 0) {
        hit = true;
        ASSERT_EQ(log.reports.size(), 1u);
        EXPECT_EQ(log.last().number, 1502);
        EXPECT_EQ(log.last().text, "Not enough memory.");
        log.reports.clear();
        EXPECT_TRUE(take(p, sets) == before);
        EXPECT_EQ(mdlgetidxel(s, el), -1);
        pos = mdladdidxel(s, el);
      }
      ASSERT_EQ(pos, want >= 0 ? want : mdlgetidxsetsize(s) - 1);
    }
    bool reached = failing_malloc::calls >= n;
    failing_malloc::disarm();
    EXPECT_EQ(hit, reached) << "allocation " << n;
    EXPECT_TRUE(log.reports.empty());
    snapshot final_state = take(p, sets);
    if (n == 1) reference = final_state;
    EXPECT_TRUE(final_state == reference) << "allocation " << n;
    EXPECT_EQ(p->idxdictsize, 256);
    mdldelprob_prob(p);
    if (!reached) break;
    hits++;
  }
  EXPECT_GT(hits, 10);
}

TEST_F(IdxSets, AllocationFailureSweep) { sweep(log, true); }
TEST_F(IdxSets, AllocationFailureSweepNamesOff) { sweep(log, false); }

}  // namespace
