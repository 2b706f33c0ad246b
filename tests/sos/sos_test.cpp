/*
 * sos_test.cpp -- special ordered sets (creation, members, deletion, names)
 * and branching directives (the list, the pending and modified flags).
 */
#include <stdio.h>

#include "constraints/model_fixture.h"

namespace {

using modeltest::dump;
using modeltest::failing_malloc;
using modeltest::ModelTest;

class Sos : public ModelTest {
 protected:
  void SetUp() override {
    ModelTest::SetUp();
    make_vars(4);
  }
  // Members of a set in list order after a strip: (variable, weight).
  std::vector<std::pair<MDLvar, double>> members(MDLsos s) {
    mdlstriptermlst(&s->elements);
    std::vector<std::pair<MDLvar, double>> r;
    if (s->elements == nullptr) return r;
    for (auto *t = static_cast<mdl_term *>(s->elements->first); t != nullptr; t = t->next)
      r.emplace_back(t->var, t->coef);
    return r;
  }
  std::vector<mdl_dir> directives() const {
    std::vector<mdl_dir> r;
    for (mdl_dir *d = prob->dirhead; d != nullptr; d = d->next) r.push_back(*d);
    return r;
  }
};

using member_list = std::vector<std::pair<MDLvar, double>>;

TEST_F(Sos, CreateTypesNamesAndList) {
  MDLsos a = mdlnewsos_prob(prob, nullptr, MDL_SOS1);
  MDLsos b = mdlnewsos_prob(prob, "s2", MDL_SOS2);
  MDLsos c = mdlnewsos_prob(prob, "", MDL_SOS1);
  ASSERT_NE(a, nullptr);
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(mdlgetsostype(a), MDL_SOS1);
  EXPECT_EQ(mdlgetsostype(b), MDL_SOS2);
  EXPECT_STREQ(mdlgetsosname(a), "SOS");
  EXPECT_STREQ(mdlgetsosname(b), "s2");
  EXPECT_STREQ(mdlgetsosname(c), "SOS_1");
  EXPECT_EQ(mdlgetbyname_prob(prob, "s2", MDL_KIND_SOS), b);
  EXPECT_EQ(a->index, 0u);
  EXPECT_EQ(a->problem, prob);
  EXPECT_EQ(a->elements, nullptr);
  // Newest first.
  EXPECT_EQ(prob->soss, c);
  EXPECT_EQ(c->next, b);
  EXPECT_EQ(b->next, a);
  EXPECT_EQ(a->next, nullptr);
  EXPECT_EQ(stat(), 0);
  expect_none();
}

TEST_F(Sos, CreateRejectsWrongTypes) {
  EXPECT_EQ(mdlnewsos_prob(prob, "s", 2), nullptr);
  expect_one(1545, 1, "(newsos) Wrong type for SOS 's'.");
  EXPECT_EQ(mdlnewsos_prob(prob, "t", -1), nullptr);
  expect_one(1545, 1, "(newsos) Wrong type for SOS 't'.");
  EXPECT_EQ(mdlnewsos_prob(nullptr, "s", 0), nullptr);
  expect_one(1501, 1, "(newsos) No active problem.");
  EXPECT_EQ(prob->soss, nullptr);
}

TEST_F(Sos, NullArgumentReports) {
  MDLsos s = mdlnewsos_prob(prob, "s", MDL_SOS1);
  EXPECT_EQ(mdldelsos(nullptr), 1);
  expect_one(1508, 1, "(delsos) No SOS given.");
  EXPECT_EQ(mdladdsosel(nullptr, v[0], 1), 1);
  expect_one(1508, 1, "(addsosel) No SOS given.");
  EXPECT_EQ(mdladdsosel(s, nullptr, 1), 1);
  expect_one(1505, 1, "(addsosel) No variable given.");
  EXPECT_EQ(mdladdsosel(s, nullptr, 0), 1);
  expect_one(1505, 1, "(addsosel) No variable given.");
  EXPECT_EQ(mdldelsosel(nullptr, v[0]), 1);
  expect_one(1508, 1, "(delsosel) No SOS given.");
  EXPECT_EQ(mdldelsosel(s, nullptr), 1);
  expect_one(1505, 1, "(delsosel) No variable given.");
  EXPECT_EQ(mdlgetsostype(nullptr), -1);
  expect_one(1508, 1, "(getsostype) No SOS given.");
  EXPECT_EQ(mdlgetsosname(nullptr), nullptr);
  expect_one(1508, 1, "(sosname) No SOS given.");
  EXPECT_EQ(mdlsetvardir(nullptr, 1, 1), 1);
  expect_one(1505, 1, "(setvardir) No variable given.");
  EXPECT_EQ(mdlsetsosdir(nullptr, 1, 1), 1);
  expect_one(1508, 1, "(setsosdir) No SOS given.");
  EXPECT_EQ(mdlcleardir_prob(nullptr), 1);
  expect_one(1501, 1, "(cleardir) No active problem.");
  EXPECT_EQ(stat(), 0);
}

TEST_F(Sos, NamesOffKeepsACopyOrGeneratesAName) {
  // Names can only be switched off before the first name: a new problem.
  mdldelprob_prob(prob);
  v.clear();
  prob = mdlnewprob(nullptr);
  ASSERT_NE(prob, nullptr);
  ASSERT_EQ(mdlsetdictsize_prob(prob, 0, 0), 0);
  MDLsos a = mdlnewsos_prob(prob, "set", MDL_SOS1);
  MDLsos b = mdlnewsos_prob(prob, "set", MDL_SOS1);
  MDLsos u = mdlnewsos_prob(prob, nullptr, MDL_SOS2);
  EXPECT_STREQ(mdlgetsosname(a), "set");
  EXPECT_STREQ(mdlgetsosname(b), "set");
  char buf[32];
  snprintf(buf, sizeof buf, "%#lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(u)));
  const char *gen = mdlgetsosname(u);
  mdlgetsosname(a);
  EXPECT_STREQ(gen, buf + 1);
  EXPECT_EQ(mdldelsos(a), 0);
  EXPECT_STREQ(mdlgetsosname(b), "set");
  expect_none();
}

TEST_F(Sos, MembersAndWeights) {
  MDLsos s = mdlnewsos_prob(prob, "s", MDL_SOS2);
  // Weight 0 adds nothing and does not mark the problem.
  EXPECT_EQ(mdladdsosel(s, v[1], 0), 0);
  EXPECT_EQ(s->elements, nullptr);
  EXPECT_EQ(stat(), 0);
  EXPECT_EQ(mdladdsosel(s, v[1], 2), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(mdladdsosel(s, v[1], 3), 0);
  EXPECT_EQ(members(s), (member_list{{v[1], 5}}));
  EXPECT_EQ(mdladdsosel(s, v[3], 1), 0);
  EXPECT_EQ(mdladdsosel(s, v[0], 4), 0);
  EXPECT_EQ(mdladdsosel(s, v[2], 7), 0);
  // Members are kept in handle order.
  EXPECT_EQ(members(s), (member_list{{v[0], 4}, {v[1], 5}, {v[2], 7}, {v[3], 1}}));
  // Weights that cancel remove the member.
  EXPECT_EQ(mdladdsosel(s, v[2], -7), 0);
  EXPECT_EQ(members(s), (member_list{{v[0], 4}, {v[1], 5}, {v[3], 1}}));
  expect_none();
}

TEST_F(Sos, DeleteMembers) {
  MDLsos s = mdlnewsos_prob(prob, "s", MDL_SOS1);
  ASSERT_EQ(mdladdsosel(s, v[0], 1), 0);
  ASSERT_EQ(mdladdsosel(s, v[3], 2), 0);
  ASSERT_EQ(mdladdsosel(s, v[1], 3), 0);
  clear_status();
  EXPECT_EQ(mdldelsosel(s, v[1]), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(members(s), (member_list{{v[0], 1}, {v[3], 2}}));
  // A variable that is no member: still success, still marks.
  clear_status();
  EXPECT_EQ(mdldelsosel(s, v[2]), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(mdldelsosel(s, v[0]), 0);
  EXPECT_EQ(mdldelsosel(s, v[3]), 0);
  EXPECT_EQ(members(s), member_list{});
  EXPECT_EQ(s->elements, nullptr);
  EXPECT_EQ(mdldelsosel(s, v[3]), 0);   // empty set
  expect_none();
}

TEST_F(Sos, DeleteSet) {
  MDLsos a = mdlnewsos_prob(prob, "a", MDL_SOS1);
  MDLsos b = mdlnewsos_prob(prob, "b", MDL_SOS1);
  MDLsos c = mdlnewsos_prob(prob, "c", MDL_SOS1);
  ASSERT_EQ(mdladdsosel(b, v[0], 1), 0);
  ASSERT_EQ(mdladdsosel(b, v[1], 2), 0);
  clear_status();
  EXPECT_EQ(mdldelsos(b), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(prob->soss, c);
  EXPECT_EQ(c->next, a);
  EXPECT_EQ(mdlgetbyname_prob(prob, "b", MDL_KIND_SOS), nullptr);
  MDLsos b2 = mdlnewsos_prob(prob, "b", MDL_SOS2);
  EXPECT_STREQ(mdlgetsosname(b2), "b");
  EXPECT_EQ(mdldelsos(c), 0);
  EXPECT_EQ(mdldelsos(a), 0);
  EXPECT_EQ(prob->soss, b2);
  EXPECT_EQ(b2->next, nullptr);
  expect_none();
}

TEST_F(Sos, DeleteSetNotInTheList) {
  // A record of the problem that is not (or no longer) linked in.
  mdl_sos stray{};
  stray.problem = prob;
  MDLsos a = mdlnewsos_prob(prob, "a", MDL_SOS1);
  clear_status();
  EXPECT_EQ(mdldelsos(&stray), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(prob->soss, a);
  expect_none();
}

TEST_F(Sos, DirectivesOfADeletedSetLoseTheirTarget) {
  MDLsos a = mdlnewsos_prob(prob, "a", MDL_SOS1);
  MDLsos b = mdlnewsos_prob(prob, "b", MDL_SOS1);
  ASSERT_EQ(mdlsetsosdir(a, MDL_DIR_PRIORITY, 3), 0);
  ASSERT_EQ(mdlsetvardir(v[0], MDL_DIR_UP, 0), 0);
  ASSERT_EQ(mdlsetsosdir(b, MDL_DIR_DOWN, 0), 0);
  ASSERT_EQ(mdlsetsosdir(a, MDL_DIR_PSEUDOUP, 1.5), 0);
  ASSERT_EQ(mdldelsos(a), 0);
  auto d = directives();
  ASSERT_EQ(d.size(), 4u);
  EXPECT_EQ(d[0].target, nullptr);
  EXPECT_EQ(d[0].kind, MDL_DIR_PRIORITY | MDL_DIR_SOSFLAG);
  EXPECT_EQ(d[1].target, v[0]);
  EXPECT_EQ(d[2].target, b);
  EXPECT_EQ(d[3].target, nullptr);
  EXPECT_EQ(d[3].value, 1.5);
  expect_none();
}

TEST_F(Sos, AddMemberAllocationFailure) {
  // Fill sets until a member needs a new block that cannot be had: the set
  // stays as it was, 1 comes back after error 1502.
  int failures = 0;
  for (int round = 0; round < 6; round++) {
    for (int pad = 0; pad < round; pad++) ASSERT_NE(mdlallocmem(prob, 8, 0), nullptr);
    bool failed = false;
    for (int n = 0; n < 3000 && !failed; n++) {
      MDLsos s = mdlnewsos_prob(prob, nullptr, MDL_SOS1);
      ASSERT_NE(s, nullptr);
      int order[] = {2, 0, 3, 1, 1};
      for (int i = 0; i < 5 && !failed; i++) {
        auto before = dump(s->elements, false);
        clear_status();
        failing_malloc::arm(1);
        int rc = i < 4 ? mdladdsosel(s, v[order[i]], i + 1.0) : mdldelsosel(s, v[order[i]]);
        bool hit = failing_malloc::calls > 0;
        failing_malloc::disarm();
        if (!hit) {
          ASSERT_EQ(rc, 0);
          continue;
        }
        failed = true;
        failures++;
        EXPECT_EQ(rc, 1);
        ASSERT_FALSE(log.empty());
        EXPECT_EQ(log.last().number, 1502);
        EXPECT_EQ(log.last().text, "Not enough memory.");
        log.reports.clear();
        EXPECT_TRUE(dump(s->elements, false) == before);
        EXPECT_EQ(stat() & MDL_ST_MODIFIED, 0);
      }
    }
  }
  EXPECT_EQ(failures, 6);
  expect_none();
}

TEST_F(Sos, DirectiveKinds) {
  MDLsos s = mdlnewsos_prob(prob, "s", MDL_SOS1);
  for (int kind : {0, 6, -1}) {
    EXPECT_EQ(mdlsetvardir(v[0], kind, 1), 1);
    expect_one(1547, 1, "(setvardir) Wrong directive type.");
    EXPECT_EQ(mdlsetsosdir(s, kind, 1), 1);
    expect_one(1547, 1, "(setsosdir) Wrong directive type.");
  }
  EXPECT_EQ(prob->dirhead, nullptr);
  EXPECT_EQ(stat(), 0);
  for (int kind = 1; kind <= 5; kind++) {
    EXPECT_EQ(mdlsetvardir(v[1], kind, kind * 10.0), 0);
    EXPECT_EQ(mdlsetsosdir(s, kind, -kind), 0);
  }
  auto d = directives();
  ASSERT_EQ(d.size(), 10u);
  for (int kind = 1; kind <= 5; kind++) {
    const mdl_dir &dv = d[2 * (kind - 1)];
    const mdl_dir &ds = d[2 * (kind - 1) + 1];
    EXPECT_EQ(dv.kind, static_cast<uint32_t>(kind));
    EXPECT_EQ(dv.target, v[1]);
    EXPECT_EQ(dv.value, kind * 10.0);
    EXPECT_EQ(ds.kind, static_cast<uint32_t>(kind) | MDL_DIR_SOSFLAG);
    EXPECT_EQ(ds.target, s);
    EXPECT_EQ(ds.value, -kind);
  }
  EXPECT_EQ(prob->dirtail->next, nullptr);
  expect_none();
}

TEST_F(Sos, DirectivesArePendingNotModified) {
  EXPECT_EQ(mdlsetvardir(v[0], MDL_DIR_PRIORITY, 5), 0);
  EXPECT_EQ(stat(), MDL_ST_DIRPENDING);
  // The same target twice: two records, in the order set.
  EXPECT_EQ(mdlsetvardir(v[0], MDL_DIR_PRIORITY, 7), 0);
  auto d = directives();
  ASSERT_EQ(d.size(), 2u);
  EXPECT_EQ(d[0].value, 5);
  EXPECT_EQ(d[1].value, 7);
  EXPECT_EQ(prob->dirtail->value, 7);
  EXPECT_EQ(stat(), MDL_ST_DIRPENDING);
  MDLsos s = mdlnewsos_prob(prob, "s", MDL_SOS1);
  clear_status();
  EXPECT_EQ(mdlsetsosdir(s, MDL_DIR_DOWN, 0), 0);
  EXPECT_EQ(stat(), MDL_ST_DIRPENDING);
  expect_none();
}

TEST_F(Sos, ClearDirectives) {
  // Without directives nothing changes.
  EXPECT_EQ(mdlcleardir_prob(prob), 0);
  EXPECT_EQ(stat(), 0);
  ASSERT_EQ(mdlsetvardir(v[0], MDL_DIR_UP, 0), 0);
  ASSERT_EQ(mdlsetvardir(v[1], MDL_DIR_DOWN, 0), 0);
  clear_status();
  // Clearing marks the model modified (setting only marked pending).
  EXPECT_EQ(mdlcleardir_prob(prob), 0);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  EXPECT_EQ(prob->dirhead, nullptr);
  EXPECT_EQ(prob->dirtail, nullptr);
  clear_status();
  EXPECT_EQ(mdlcleardir_prob(prob), 0);
  EXPECT_EQ(stat(), 0);
  // The list works again after clearing.
  ASSERT_EQ(mdlsetvardir(v[2], MDL_DIR_PSEUDODN, 2.5), 0);
  ASSERT_EQ(directives().size(), 1u);
  EXPECT_EQ(prob->dirhead, prob->dirtail);
  expect_none();
}

TEST_F(Sos, DirectiveAllocationFailure) {
  int failures = 0;
  for (int n = 0; n < 2000 && failures == 0; n++) {
    mdl_dir *tail = prob->dirtail;
    size_t count = directives().size();
    clear_status();
    failing_malloc::arm(1);
    int rc = mdlsetvardir(v[n % 4], MDL_DIR_PRIORITY, n);
    bool hit = failing_malloc::calls > 0;
    failing_malloc::disarm();
    if (!hit) {
      ASSERT_EQ(rc, 0);
      continue;
    }
    failures++;
    EXPECT_EQ(rc, 1);
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.last().number, 1502);
    log.reports.clear();
    EXPECT_EQ(prob->dirtail, tail);
    EXPECT_EQ(directives().size(), count);
    EXPECT_EQ(stat(), 0);
  }
  EXPECT_EQ(failures, 1);
  expect_none();
}

}  // namespace
