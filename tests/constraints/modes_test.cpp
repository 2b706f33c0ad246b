/*
 * modes_test.cpp -- the mode word of constraints: model cuts, delayed rows,
 * include-vars rows and indicator constraints, every transition between
 * them with its message, and the modified flag after each.
 */
#include "constraints/model_fixture.h"

namespace {

using modeltest::ModelTest;

// The modes a constraint can be in.
enum class mode { standard, modcut, delayed, incvars, ind_on, ind_off };

class Modes : public ModelTest {
 protected:
  MDLvar y = nullptr;
  void SetUp() override {
    ModelTest::SetUp();
    make_vars(1);
    y = v[0];
  }
  // A fresh constraint named after "k" (k, k_1, ...) of the type, put into the mode (include-
  // vars rows are made as type N; indicator rows of type N or E, which the
  // indicator setter refuses, through the raw flag), with the problem's
  // status cleared.
  MDLctr make(mode m, int type = MDL_LEQ) {
    MDLctr k = mdlnewctr_prob(prob, "k", m == mode::incvars ? MDL_NONBINDING : type);
    EXPECT_NE(k, nullptr);
    switch (m) {
      case mode::standard: break;
      case mode::modcut: EXPECT_EQ(mdlsetmodcut(k, 1), 0); break;
      case mode::delayed: EXPECT_EQ(mdlsetdelayed(k, 1), 0); break;
      case mode::incvars: EXPECT_EQ(mdlsetincvars(k, 1), 0); break;
      case mode::ind_on:
      case mode::ind_off:
        if (type == MDL_NONBINDING || type == MDL_EQ)
          EXPECT_EQ(mdlsetctrflag(k, m == mode::ind_on ? 1 : 0, y), 0);
        else
          EXPECT_EQ(mdlsetindicator(k, m == mode::ind_on ? 1 : -1, y), 0);
        break;
    }
    expect_none();
    clear_status();
    return k;
  }
  uintptr_t word(mode m) const {
    switch (m) {
      case mode::standard: return 0;
      case mode::modcut: return 1;
      case mode::delayed: return 2;
      case mode::incvars: return 3;
      case mode::ind_on: return reinterpret_cast<uintptr_t>(y) | 1;
      case mode::ind_off: return reinterpret_cast<uintptr_t>(y);
    }
    return 0;
  }
  // The getters agree with the mode word.
  void expect_mode(MDLctr k, mode m) {
    EXPECT_EQ(k->mode, word(m));
    EXPECT_EQ(mdlgetmodcut(k), m == mode::modcut ? 1 : 0);
    EXPECT_EQ(mdlgetdelayed(k), m == mode::delayed ? 1 : 0);
    EXPECT_EQ(mdlgetincvars(k), m == mode::incvars ? 1 : 0);
    EXPECT_EQ(mdlgetindicator(k), m == mode::ind_on ? 1 : m == mode::ind_off ? -1 : 0);
  }
};

const mode all_modes[] = {mode::standard, mode::modcut, mode::delayed,
                          mode::incvars, mode::ind_on, mode::ind_off};

std::string indicator_type(MDLctr k) {
  return std::string("(setindicator) Incorrect constraint type for indicator constraint '") +
         mdlgetctrname(k) + "'.";
}

const char *std_only(const char *fn, const char *what) {
  static std::string text;
  text = std::string("(") + fn + ") Setting '" + what +
         "' can only be applied to standard constraints.";
  return text.c_str();
}

TEST_F(Modes, NewConstraintIsStandard) {
  MDLctr k = mdlnewctr_prob(prob, "k", MDL_LEQ);
  expect_mode(k, mode::standard);
  EXPECT_EQ(mdlgetindvar(k), nullptr);
  expect_none();
}

TEST_F(Modes, NullConstraintReports) {
  EXPECT_EQ(mdlsetctrflag(nullptr, 1, nullptr), 1);
  expect_one(1507, 1, "(setctrflag) No constraint given.");
  EXPECT_EQ(mdlsetindicator(nullptr, 1, y), 1);
  expect_one(1507, 1, "(setindicator) No constraint given.");
  EXPECT_EQ(mdlgetindicator(nullptr), -2);
  expect_one(1507, 1, "(getindicator) No constraint given.");
  EXPECT_EQ(mdlgetindvar(nullptr), nullptr);
  expect_one(1507, 1, "(getindvar) No constraint given.");
  EXPECT_EQ(mdlsetincvars(nullptr, 1), 1);
  expect_one(1507, 1, "(setincvars) No constraint given.");
  EXPECT_EQ(mdlgetincvars(nullptr), -1);
  expect_one(1507, 1, "(getincvars) No constraint given.");
  EXPECT_EQ(mdlsetdelayed(nullptr, 1), 1);
  expect_one(1507, 1, "(setdelayed) No constraint given.");
  EXPECT_EQ(mdlgetdelayed(nullptr), -1);
  expect_one(1507, 1, "(getdelayed) No constraint given.");
  EXPECT_EQ(mdlsetmodcut(nullptr, 1), 1);
  expect_one(1507, 1, "(setmodcut) No constraint given.");
  EXPECT_EQ(mdlgetmodcut(nullptr), -1);
  expect_one(1507, 1, "(getmodcut) No constraint given.");
}

TEST_F(Modes, SetCtrFlagStoresTheRawWord) {
  MDLctr k = make(mode::standard);
  EXPECT_EQ(mdlsetctrflag(k, 0, nullptr), 0);
  EXPECT_EQ(stat(), 0);
  EXPECT_EQ(mdlsetctrflag(k, 6, nullptr), 0);   // only two bits are kept
  EXPECT_EQ(k->mode, 2u);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  clear_status();
  EXPECT_EQ(mdlsetctrflag(k, 2, nullptr), 0);
  EXPECT_EQ(stat(), 0);
  EXPECT_EQ(mdlsetctrflag(k, 1, y), 0);
  expect_mode(k, mode::ind_on);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  // No checking at all: even an equation becomes an indicator row.
  MDLctr e = make(mode::standard, MDL_EQ);
  EXPECT_EQ(mdlsetctrflag(e, 0, y), 0);
  expect_mode(e, mode::ind_off);
  expect_none();
}

// Turning each kind on from every mode.
struct kind_case {
  const char *fn;
  const char *what;
  mode target;
  int (*set)(MDLctr, int);
};
const kind_case kinds[] = {
    {"setmodcut", "model cut", mode::modcut, mdlsetmodcut},
    {"setdelayed", "delayed constraint", mode::delayed, mdlsetdelayed},
    {"setincvars", "include vars constraint", mode::incvars, mdlsetincvars},
};

TEST_F(Modes, TurnOnFromEveryMode) {
  for (const kind_case &kc : kinds) {
    for (mode from : all_modes) {
      SCOPED_TRACE(std::string(kc.fn) + " from mode " + std::to_string(static_cast<int>(from)));
      // Include-vars needs type N; give every row that type for it.
      MDLctr k = make(from, kc.target == mode::incvars ? MDL_NONBINDING : MDL_LEQ);
      int rc = kc.set(k, 1);
      if (from == mode::standard || from == kc.target) {
        EXPECT_EQ(rc, 0);
        expect_none();
        expect_mode(k, kc.target);
        EXPECT_EQ(stat(), from == kc.target ? 0 : MDL_ST_MODIFIED);
      } else {
        EXPECT_EQ(rc, 1);
        expect_one(1538, 1, std_only(kc.fn, kc.what));
        expect_mode(k, from);
        EXPECT_EQ(stat(), 0);
      }
    }
  }
}

TEST_F(Modes, TurnOffFromEveryMode) {
  for (const kind_case &kc : kinds) {
    for (mode from : all_modes) {
      SCOPED_TRACE(std::string(kc.fn) + " from mode " + std::to_string(static_cast<int>(from)));
      MDLctr k = make(from);
      EXPECT_EQ(kc.set(k, 0), 0);
      expect_none();
      if (from == kc.target) {
        expect_mode(k, mode::standard);
        EXPECT_EQ(stat(), MDL_ST_MODIFIED);
      } else {
        expect_mode(k, from);
        EXPECT_EQ(stat(), 0);
      }
    }
  }
}

TEST_F(Modes, KindSettersRejectOtherValues) {
  for (const kind_case &kc : kinds) {
    MDLctr k = make(mode::standard, MDL_NONBINDING);
    for (int on : {2, -1}) {
      EXPECT_EQ(kc.set(k, on), 1);
      expect_one(1575, 1, std::string("(") + kc.fn + ") Unexpected argument value " +
                              std::to_string(on) + ".");
    }
    expect_mode(k, mode::standard);
    EXPECT_EQ(stat(), 0);
  }
}

TEST_F(Modes, IncludeVarsNeedsTypeN) {
  for (int type : {MDL_LEQ, MDL_GEQ, MDL_EQ}) {
    MDLctr k = make(mode::standard, type);
    EXPECT_EQ(mdlsetincvars(k, 1), 1);
    expect_one(1594, 1,
               "(setincvars) Setting 'include vars constraint' can only be applied to "
               "non-binding (type N) constraints.");
    expect_mode(k, mode::standard);
    EXPECT_EQ(stat(), 0);
  }
  // Delayed rows and model cuts take any type.
  MDLctr e = make(mode::standard, MDL_EQ);
  EXPECT_EQ(mdlsetdelayed(e, 1), 0);
  MDLctr n = make(mode::standard, MDL_NONBINDING);
  EXPECT_EQ(mdlsetmodcut(n, 1), 0);
  expect_none();
}

TEST_F(Modes, IndicatorFromEveryMode) {
  for (int sense : {1, -1}) {
    for (mode from : all_modes) {
      SCOPED_TRACE("sense " + std::to_string(sense) + " from mode " +
                   std::to_string(static_cast<int>(from)));
      // Include-vars rows are type N, which an indicator refuses first.
      MDLctr k = make(from);
      int rc = mdlsetindicator(k, sense, y);
      mode to = sense == 1 ? mode::ind_on : mode::ind_off;
      if (from == mode::incvars) {
        EXPECT_EQ(rc, 1);
        expect_one(1539, 1, indicator_type(k));
        expect_mode(k, from);
        EXPECT_EQ(stat(), 0);
      } else if (from == mode::modcut || from == mode::delayed) {
        EXPECT_EQ(rc, 1);
        expect_one(1538, 1, std_only("setindicator", "indicator constraint"));
        expect_mode(k, from);
        EXPECT_EQ(stat(), 0);
      } else {
        EXPECT_EQ(rc, 0);
        expect_none();
        expect_mode(k, to);
        EXPECT_EQ(mdlgetindvar(k), y);
        EXPECT_EQ(stat(), from == to ? 0 : MDL_ST_MODIFIED);
      }
    }
  }
}

TEST_F(Modes, IndicatorResetFromEveryMode) {
  for (mode from : all_modes) {
    SCOPED_TRACE("from mode " + std::to_string(static_cast<int>(from)));
    if (from == mode::incvars) continue;   // type N: refused, tested below
    MDLctr k = make(from);
    EXPECT_EQ(mdlsetindicator(k, 0, nullptr), 0);
    expect_none();
    expect_mode(k, mode::standard);
    EXPECT_EQ(stat(), from == mode::standard ? 0 : MDL_ST_MODIFIED);
  }
}

TEST_F(Modes, IndicatorArgumentChecks) {
  MDLctr k = make(mode::standard);
  EXPECT_EQ(mdlsetindicator(k, 1, nullptr), 1);
  expect_one(1505, 1, "(setindicator) No variable given.");
  EXPECT_EQ(mdlsetindicator(k, -1, nullptr), 1);
  expect_one(1505, 1, "(setindicator) No variable given.");
  EXPECT_EQ(mdlsetindicator(k, 2, y), 1);
  expect_one(1575, 1, "(setindicator) Unexpected argument value 2.");
  EXPECT_EQ(mdlsetindicator(k, -3, y), 1);
  expect_one(1575, 1, "(setindicator) Unexpected argument value -3.");
  EXPECT_EQ(mdlsetindicator(k, 0, y), 1);
  expect_one(1575, 1, "(setindicator) Unexpected argument value 0.");
  expect_mode(k, mode::standard);
  EXPECT_EQ(stat(), 0);
  // Types N and E cannot be indicator rows; the type is checked before the
  // sense, also for a reset.
  for (int type : {MDL_NONBINDING, MDL_EQ}) {
    MDLctr t = make(mode::standard, type);
    EXPECT_EQ(mdlsetindicator(t, 1, y), 1);
    expect_one(1539, 1, indicator_type(t));
    EXPECT_EQ(mdlsetindicator(t, 5, y), 1);
    expect_one(1539, 1, indicator_type(t));
    EXPECT_EQ(mdlsetindicator(t, 0, nullptr), 1);
    expect_one(1539, 1, indicator_type(t));
    expect_mode(t, mode::standard);
  }
  // A missing variable is reported before the type.
  MDLctr n = make(mode::standard, MDL_NONBINDING);
  EXPECT_EQ(mdlsetindicator(n, 1, nullptr), 1);
  expect_one(1505, 1, "(setindicator) No variable given.");
  EXPECT_EQ(stat(), 0);
}

TEST_F(Modes, IncludeVarsRowMadeRangeIsNotStandard) {
  // A range keeps the include-vars mode; an indicator is still refused.
  MDLctr k = make(mode::incvars);
  ASSERT_EQ(mdlsetrange(k, 1, 4), 0);
  clear_status();
  EXPECT_EQ(mdlsetindicator(k, 1, y), 1);
  expect_one(1538, 1, std_only("setindicator", "indicator constraint"));
  expect_mode(k, mode::incvars);
  EXPECT_EQ(stat(), 0);
  // Turning include-vars on again now fails on the type.
  EXPECT_EQ(mdlsetincvars(k, 1), 1);
  expect_one(1594, 1,
             "(setincvars) Setting 'include vars constraint' can only be applied to "
             "non-binding (type N) constraints.");
}

TEST_F(Modes, IndicatorVariableOfOtherModes) {
  // The mode word without its low bit: not a variable for the small modes.
  EXPECT_EQ(mdlgetindvar(make(mode::standard)), nullptr);
  EXPECT_EQ(mdlgetindvar(make(mode::modcut)), nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(mdlgetindvar(make(mode::delayed))), 2u);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(mdlgetindvar(make(mode::incvars))), 2u);
  EXPECT_EQ(mdlgetindvar(make(mode::ind_on)), y);
  EXPECT_EQ(mdlgetindvar(make(mode::ind_off)), y);
  expect_none();
}

TEST_F(Modes, DelayedRowResetByIndicatorCall) {
  MDLctr k = make(mode::delayed);
  EXPECT_EQ(mdlsetindicator(k, 0, nullptr), 0);
  expect_mode(k, mode::standard);
  EXPECT_EQ(stat(), MDL_ST_MODIFIED);
  expect_none();
}

TEST_F(Modes, ModesSurviveTypeAndTermChanges) {
  MDLctr k = make(mode::ind_on);
  ASSERT_EQ(mdlsetctrtype(k, MDL_GEQ), 0);
  ASSERT_EQ(mdladdterm(k, y, 1), 0);
  expect_mode(k, mode::ind_on);
  expect_none();
}

}  // namespace
