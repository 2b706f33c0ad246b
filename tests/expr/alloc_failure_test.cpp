/*
 * alloc_failure_test.cpp -- expression operations when memory runs out:
 * every allocation of a scenario is made to fail in turn, from several
 * places in the pool's current block; the operation reports "Not enough
 * memory.", returns its failure value and leaves its operands as they were.
 */
#include <functional>
#include <string>
#include <vector>

#include "support.h"

namespace exprtest {
namespace {

using modeltest::failing_malloc;

// Operands of one scenario, made afresh on a new problem for every trial.
struct operands {
  MDLprob prob = nullptr;
  std::vector<MDLvar> x;
  MDLexpr a = nullptr;
  MDLexpr b = nullptr;
  MDLexpr out = nullptr;   // a result the operation may create
  MDLctr ctr = nullptr;
  MDLsos sos = nullptr;
};

class AllocFailure : public ExprTest {
 protected:
  // Terms of one operand: linear terms on x[from], x[from + step], ... (n
  // of them, half of them added out of order so that some stay pending),
  // nquad quadratic terms, and the constant from + 0.25.
  struct terms_spec {
    int from, step, n, nquad;
  };
  static void fill(MDLexpr e, const std::vector<MDLvar> &x, terms_spec t) {
    for (int i = 0; i < t.n; i += 2) mdladdexpr_term(e, x[t.from + i * t.step], nullptr, i + 1);
    for (int i = 1; i < t.n; i += 2) mdladdexpr_term(e, x[t.from + i * t.step], nullptr, -i);
    for (int i = 0; i < t.nquad; i++)
      mdladdexpr_term(e, x[(t.from + 7 * i) % 60], x[(3 * i) % 60], 0.5 * i + 1);
    mdladdexpr_term(e, nullptr, nullptr, t.from + 0.25);
  }
  // A builder of the operands a and b with these terms.
  static std::function<void(operands &)> pair_of(terms_spec a, terms_spec b) {
    return [a, b](operands &o) {
      o.a = mdlnewexpr(nullptr, nullptr, 0);
      o.b = mdlnewexpr(nullptr, nullptr, 0);
      fill(o.a, o.x, a);
      fill(o.b, o.x, b);
    };
  }
  static constexpr terms_spec none{0, 1, 0, 0};   // the constant 0.25 alone

  // Leave about `room` bytes in the current block of the problem's pool, so
  // that the next block is asked for at a different point of the operation.
  static void leave_room(MDLprob p, size_t room) {
    auto left = [p] {
      return static_cast<size_t>(p->pool->current->end - p->pool->current->cursor);
    };
    // Fillers are multiples of 4 (as every pool chunk) of at least 88 bytes,
    // so that they never come from a free list.
    while (left() < room + 256)   // fill the block, then start a fresh one
      mdlallocmem(p, left() > 300 ? (left() - 8) & ~static_cast<size_t>(3) : 204, 0);
    mdlallocmem(p, (left() - room - 8) & ~static_cast<size_t>(3), 0);
  }

  // Run `act` on fresh operands, failing the n-th allocation for n = 1, 2,
  // ... until it succeeds without reaching the failure; each failure must be
  // reported, give `failed` and leave what `kept` names unchanged.
  void sweep(const std::function<void(operands &)> &build,
             const std::function<int(operands &)> &act, int failed,
             const std::function<std::vector<MDLexpr>(operands &)> &kept) {
    int trials = 0;
    for (size_t room = 0; room < 3600; room += 8) {
      for (int n = 1;; n++) {
        ASSERT_LT(n, 1000) << "the operation never finished";
        operands o;
        o.prob = mdlnewprob(nullptr);
        ASSERT_NE(o.prob, nullptr);
        for (int i = 0; i < 60; i++)
          o.x.push_back(mdlnewvar_prob(o.prob, nullptr, MDL_CONTINUOUS, 0, 1));
        o.ctr = mdlnewctr_prob(o.prob, "c", MDL_LEQ);
        o.sos = mdlnewsos_prob(o.prob, "s", MDL_SOS1);
        build(o);
        std::vector<expr_value> before;
        for (MDLexpr e : kept(o)) before.push_back(value_of(e));
        leave_room(o.prob, room);
        log.reports.clear();
        failing_malloc::arm(n);
        const int rc = act(o);
        const bool reached = failing_malloc::calls >= n;
        failing_malloc::disarm();
        if (reached) {
          ++trials;
          EXPECT_EQ(rc, failed) << "room " << room << " n " << n;
          EXPECT_FALSE(log.reports.empty()) << "room " << room << " n " << n;
          for (const auto &r : log.reports) {
            EXPECT_EQ(r.number, 1502);
            EXPECT_EQ(r.iserror, 1);
            EXPECT_EQ(r.text, "Not enough memory.");
          }
          std::vector<MDLexpr> now = kept(o);
          for (size_t i = 0; i < now.size(); i++)
            EXPECT_EQ(value_of(now[i]), before[i])
                << "operand " << i << " room " << room << " n " << n;
        } else {
          EXPECT_NE(rc, failed);
          EXPECT_TRUE(log.reports.empty()) << log.last().text;
        }
        log.reports.clear();
        mdldelexpr(o.a);
        mdldelexpr(o.b);
        mdldelexpr(o.out);
        mdldelprob_prob(o.prob);
        if (!reached) break;
        if (::testing::Test::HasFailure()) return;
      }
    }
    EXPECT_GT(trials, 10);   // the sweep did make allocations fail
  }

  static std::vector<MDLexpr> both(operands &o) { return {o.a, o.b}; }
  static std::vector<MDLexpr> source(operands &o) { return {o.b}; }
};

TEST_F(AllocFailure, AddExpression) {
  sweep(pair_of({0, 1, 50, 20}, {5, 1, 50, 30}),
        [](operands &o) { return mdladdexpr(o.a, o.b); }, -1, both);
}

TEST_F(AllocFailure, AddLinearExpression) {
  sweep(pair_of({0, 2, 30, 0}, {1, 1, 59, 0}),
        [](operands &o) { return mdladdexpr(o.a, o.b); }, -1, both);
}

TEST_F(AllocFailure, AssignExpression) {
  sweep(pair_of({0, 1, 20, 5}, {3, 1, 55, 40}),
        [](operands &o) { return mdlassignexpr(o.a, o.b); }, -1, both);
}

TEST_F(AllocFailure, DuplicateExpression) {
  sweep(pair_of(none, {3, 1, 55, 40}),
        [](operands &o) {
          const int rc = mdldupexpr(&o.out, o.b);
          EXPECT_EQ(o.out == nullptr, rc != 0);
          return rc;
        },
        1, source);
}

TEST_F(AllocFailure, ProductOfLinearExpressions) {
  // 576 products: several blocks.
  sweep(pair_of({0, 1, 24, 0}, {12, 1, 24, 0}),
        [](operands &o) { return mdlmulexpr(o.a, o.b); }, -1, both);
}

TEST_F(AllocFailure, ConstantTimesQuadraticExpression) {
  sweep(pair_of(none, {0, 1, 50, 60}), [](operands &o) { return mdlmulexpr(o.a, o.b); }, -1, both);
}

TEST_F(AllocFailure, TermsOfAnExpression) {
  sweep(pair_of({0, 1, 58, 10}, none),
        [](operands &o) {
          // Terms inside the run, beyond it and new quadratic pairs: one
          // of them meets the failure.
          for (int i = 0; i < 60; i++) {
            if (mdladdexpr_term(o.a, o.x[59 - i], o.x[i], 2) != 0) return 1;
            if (mdlsetexpr_term(o.a, o.x[(i * 7) % 60], nullptr, i) != 0) return 1;
          }
          return 0;
        },
        1, [](operands &) { return std::vector<MDLexpr>{}; });
}

TEST_F(AllocFailure, NewExpression) {
  sweep([](operands &) {},
        [](operands &o) {
          for (int i = 0; i < 400; i++) {
            MDLexpr e = mdlnewexpr(o.x[i % 60], i % 2 ? o.x[(i * 13) % 60] : nullptr, 1 + i);
            if (e == nullptr) return 1;
            mdldelexpr(o.out);
            o.out = e;
            if (mdladdexpr_term(e, o.x[(i + 1) % 60], nullptr, 1) != 0) return 1;
          }
          return 0;
        },
        1, [](operands &) { return std::vector<MDLexpr>{}; });
}

TEST_F(AllocFailure, TextOfAnExpression) {
  sweep(pair_of(none, {0, 1, 60, 60}),
        [](operands &o) {
          char *t = mdlexpr2str(o.b, MDL_LEQ);
          mdlfree2str(t);
          return t == nullptr ? 1 : 0;
        },
        1, source);
}

TEST_F(AllocFailure, ConstraintObjectiveAndSetFromExpressions) {
  auto build = [](operands &o) {
    pair_of({0, 1, 30, 30}, {10, 1, 50, 50})(o);
    mdlsetctr(o.ctr, o.a, MDL_LEQ);
    mdlsetobjexpr(o.prob, o.a);
    mdlsetsos(o.sos, o.a);
  };
  auto ctr_expr = [](operands &o) { return std::vector<MDLexpr>{&o.ctr->expr, o.b}; };
  sweep(build, [](operands &o) { return mdlsetctr(o.ctr, o.b, MDL_GEQ); }, -1, ctr_expr);
  sweep(build, [](operands &o) { return mdlappctr(o.ctr, o.b); }, -1, ctr_expr);
  sweep(build, [](operands &o) { return mdlsetobjexpr(o.prob, o.b); }, -1,
        [](operands &o) { return std::vector<MDLexpr>{&o.prob->objrec.expr, o.b}; });
  auto members = [](operands &o) {
    // The set's members as the linear part of an expression.
    static mdl_expr view;
    view = {0.0, o.sos->elements, nullptr};
    return std::vector<MDLexpr>{&view, o.b};
  };
  sweep(build, [](operands &o) { return mdlsetsos(o.sos, o.b); }, -1, members);
  sweep(build, [](operands &o) { return mdlappsos(o.sos, o.b); }, -1, members);
}

}  // namespace
}  // namespace exprtest
