/*
 * kvtl.hpp -- C++20 interface of the Tessel modelling library: owning
 * problems, typed handles, expressions with operators, exceptions, callbacks.
 */
#ifndef KVTL_HPP
#define KVTL_HPP

#include <compare>
#include <concepts>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <ranges>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "kvsl.h"
#include "kvtl.h"

/**
 * @file kvtl.hpp
 * @brief Header-only C++ interface over the C functions of kvtl.h.
 *
 * A kvtl::problem owns one library problem; kvtl::variable, kvtl::constraint,
 * kvtl::sos and kvtl::cut are thin handles of its objects.  Expressions are
 * written with operators (`2*x + 3*y <= 10`, `x*y`) and turned into
 * constraints, objectives and cuts.  Every error the library reports while a
 * function of this header runs becomes a kvtl::error carrying the message
 * number and text; warnings go to the problem's warning handler.
 *
 * The header takes over two process-wide settings of the library when it
 * starts it: error control is switched off (errors return instead of ending
 * the process) and the global error callback is its own.  Programs that mix
 * this header with direct C calls should leave both alone.
 *
 * Functions that reach the engine (controls, search callbacks) need the
 * engine library too: link kvtl::kvsl (CMake) or -lkvsl.
 */

/// The Tessel modelling library.
namespace kvtl {

/// Infinite bound, limit or range (1e+20).
inline constexpr double infinity = MDL_INFINITY;

/**
 * @brief An error reported by the library (or by this header).
 *
 * number() is the library's message number (1501..1599) and what() its text
 * as the library formatted it, for example 1505 "(getsol) No variable
 * given.".  Failures the library signals without a message carry number 0
 * and a text naming the failing function.
 */
class error : public std::runtime_error {
 public:
  /// An error with message number @p number and text @p text.
  error(int number, const std::string &text) : std::runtime_error(text), number_(number) {}
  /// The message number, 0 when the library reported none.
  [[nodiscard]] int number() const noexcept { return number_; }

 private:
  int number_;
};

/// Variable types.
enum class var_type {
  continuous = MDL_CONTINUOUS,      ///< any value within the bounds
  binary = MDL_BINARY,              ///< 0 or 1
  integer = MDL_INTEGER,            ///< an integer within the bounds
  partial_integer = MDL_PARTINT,    ///< integer below the limit, continuous above
  semi_continuous = MDL_SEMICONT,   ///< 0 or within [limit, ub]
  semi_integer = MDL_SEMIINT        ///< 0 or an integer within [limit, ub]
};

/// Constraint types: the constraint's terms related to its right-hand side.
enum class ctr_type {
  nonbinding = MDL_NONBINDING,  ///< free row (no relation)
  leq = MDL_LEQ,                ///< terms <= rhs
  geq = MDL_GEQ,                ///< terms >= rhs
  eq = MDL_EQ,                  ///< terms == rhs
  range = MDL_RANGE             ///< rhs - range <= terms <= rhs
};

/// Objective sense.
enum class sense {
  minimize,  ///< minimise the objective
  maximize   ///< maximise the objective
};

/// Special ordered set types.
enum class sos_type {
  sos1 = MDL_SOS1,  ///< at most one member non-zero
  sos2 = MDL_SOS2   ///< at most two consecutive members non-zero
};

/// Branching directive kinds.
enum class directive {
  priority = MDL_DIR_PRIORITY,       ///< branching priority (value 0..1000, lower first)
  up = MDL_DIR_UP,                   ///< branch up first
  down = MDL_DIR_DOWN,               ///< branch down first
  pseudo_up = MDL_DIR_PSEUDOUP,      ///< up pseudo cost (value)
  pseudo_down = MDL_DIR_PSEUDODN     ///< down pseudo cost (value)
};

/// LP status of the last optimisation.
enum class lp_status {
  unstarted = KVSL_LP_UNSTARTED,            ///< nothing loaded or solved
  optimal = KVSL_LP_OPTIMAL,                ///< optimal
  infeasible = KVSL_LP_INFEAS,              ///< infeasible
  cutoff = KVSL_LP_CUTOFF,                  ///< worse than the cutoff
  unfinished = KVSL_LP_UNFINISHED,          ///< a limit was reached
  unbounded = KVSL_LP_UNBOUNDED,            ///< unbounded
  cutoff_in_dual = KVSL_LP_CUTOFF_IN_DUAL,  ///< cut off in the dual
  unsolved = KVSL_LP_UNSOLVED,              ///< not solved
  nonconvex = KVSL_LP_NONCONVEX             ///< quadratic part not convex
};

/// MIP status of the last optimisation.
enum class mip_status {
  not_loaded = KVSL_MIP_NOT_LOADED,            ///< nothing loaded
  lp_not_optimal = KVSL_MIP_LP_NOT_OPTIMAL,    ///< relaxation not optimised
  lp_optimal = KVSL_MIP_LP_OPTIMAL,            ///< relaxation optimised, no search
  no_solution_found = KVSL_MIP_NO_SOL_FOUND,   ///< search incomplete, no solution
  solution = KVSL_MIP_SOLUTION,                ///< search incomplete with a solution
  infeasible = KVSL_MIP_INFEAS,                ///< search complete: infeasible
  optimal = KVSL_MIP_OPTIMAL,                  ///< search complete: optimal
  unbounded = KVSL_MIP_UNBOUNDED               ///< relaxation unbounded
};

class problem;

/// Implementation details: not part of the interface.
namespace detail {

// What the library reported while one wrapped call ran: its first error
// and an exception thrown by application code called back
// from inside the call.
struct call_state {
  bool has_error = false;
  int error_number = 0;
  std::string error_text;
  std::exception_ptr exception;
};

// The state of the innermost wrapped call of this thread (null outside).
inline call_state *&current_call() noexcept {
  thread_local call_state *state = nullptr;
  return state;
}

// Keep an exception thrown by application code inside a C callback frame
// for the wrapped call to rethrow; with no wrapped call running it is lost.
inline void keep_exception() noexcept {
  call_state *s = current_call();
  if (s != nullptr && !s->exception) s->exception = std::current_exception();
}

// Per problem: the handlers the C callbacks reach (kept at a fixed address
// so that a moved problem keeps working).
struct problem_state;

// One wrapped call: collects what the library reports while it runs and
// turns it into an exception afterwards.  Nested calls (from callbacks
// inside a call) have their own frame.
class call_frame {
 public:
  call_frame() noexcept : saved_(current_call()) { current_call() = &state_; }
  ~call_frame() { current_call() = saved_; }
  call_frame(const call_frame &) = delete;
  call_frame &operator=(const call_frame &) = delete;
  // Throw what the call left: an application exception first, then the
  // library's error, then (when the result says it failed without an
  // error) a plain failure of `fn`.  Warnings never decide: a call may warn
  // about one thing and fail for another.
  void raise(const char *fn, bool failed) {
    current_call() = saved_;
    if (state_.exception) std::rethrow_exception(state_.exception);
    if (state_.has_error) throw error(state_.error_number, state_.error_text);
    if (failed) throw error(0, std::string(fn) + " failed");
  }

 private:
  call_state state_;
  call_state *saved_;
};

// Run one C call, then throw what the library reported.
template <class F>
auto checked(const char *fn, F &&f) {
  call_frame frame;
  auto result = std::forward<F>(f)();
  frame.raise(fn, false);
  return result;
}

// Run one C call whose result `failed` tells failure, then throw.
template <class F, class P>
auto checked(const char *fn, F &&f, P &&failed) {
  call_frame frame;
  auto result = std::forward<F>(f)();
  frame.raise(fn, std::forward<P>(failed)(result));
  return result;
}

// Result tests of the C conventions.
inline bool nonzero(int rc) { return rc != 0; }
template <class T>
bool is_null(T *p) {
  return p == nullptr;
}

struct problem_state {
  MDLprob prob = nullptr;
  std::function<void(int, std::string_view)> on_warning;
  std::function<void(std::string_view)> on_message;
};

// Error callback of every problem (user: its state) and the global one
// (user null): errors and warnings go to the running call, warnings also
// to the problem's handler.
inline void error_trampoline(MDLprob, void *user, int number, int iserror,
                             const char *text) noexcept {
  call_state *s = current_call();
  const char *t = text != nullptr ? text : "";
  if (iserror != 0) {
    if (s != nullptr && !s->has_error) {
      s->has_error = true;
      s->error_number = number;
      s->error_text = t;
    }
    return;
  }
  auto *ps = static_cast<problem_state *>(user);
  if (ps != nullptr && ps->on_warning) {
    try {
      ps->on_warning(number, t);
    } catch (...) {
      keep_exception();
    }
  }
}

// Message callback of a problem with a message handler.
inline void message_trampoline(MDLprob, void *user, const char *text) noexcept {
  auto *ps = static_cast<problem_state *>(user);
  if (ps == nullptr || !ps->on_message) return;
  try {
    ps->on_message(text != nullptr ? text : "");
  } catch (...) {
    keep_exception();
  }
}

// The library, started once for the process by the first problem and
// finished at exit; errors return instead of ending the process.
class library_guard {
 public:
  library_guard() {
    mdlseterrctrl(0);
    mdldefcberr_prob(nullptr, error_trampoline, nullptr);
    checked("mdlslinit", [] { return mdlslinit(); }, nonzero);
    // Start-up keeps the defaults set before it; set them again in case
    // another part of the program finished and restarted the library.
    mdlseterrctrl(0);
    mdldefcberr_prob(nullptr, error_trampoline, nullptr);
  }
  ~library_guard() { mdlslfinish(); }
  library_guard(const library_guard &) = delete;
  library_guard &operator=(const library_guard &) = delete;
};

inline void start_library() { static library_guard guard; }

}  // namespace detail

/**
 * @brief A decision variable of a problem (a non-owning handle).
 *
 * Handles compare by identity and serve as keys of std::map, std::set and
 * the unordered containers.  A default-constructed handle names no
 * variable: every call on it throws kvtl::error 1505 or 1513.  Handles stay
 * valid while their problem lives.
 */
class variable {
 public:
  /// A handle naming no variable.
  variable() = default;
  /// The handle of a C variable @p v.
  explicit variable(MDLvar v) noexcept : h_(v) {}
  /// The C handle.
  [[nodiscard]] MDLvar handle() const noexcept { return h_; }
  /// True when the handle names a variable.
  explicit operator bool() const noexcept { return h_ != nullptr; }
  /// Same variable.
  friend bool operator==(variable, variable) = default;

  /// The name (a generated one for unnamed variables).  Throws kvtl::error.
  [[nodiscard]] std::string name() const {
    return detail::checked("mdlgetvarname", [&] { return mdlgetvarname(h_); }, detail::is_null<const char>);
  }
  /// The type.  Throws kvtl::error.
  [[nodiscard]] var_type type() const {
    return static_cast<var_type>(
        detail::checked("mdlgetvartype", [&] { return mdlgetvartype(h_); }, [](int t) { return t < 0; }));
  }
  /// Change the type.  Throws kvtl::error (1531 for a type out of range).
  void set_type(var_type t) const {
    detail::checked("mdlsetvartype", [&] { return mdlsetvartype(h_, static_cast<int>(t)); }, detail::nonzero);
  }
  /// Lower bound.  Throws kvtl::error.
  [[nodiscard]] double lb() const { return bounds().first; }
  /// Upper bound.  Throws kvtl::error.
  [[nodiscard]] double ub() const { return bounds().second; }
  /// Both bounds as (lower, upper).  Throws kvtl::error.
  [[nodiscard]] std::pair<double, double> bounds() const {
    double lo = 0, up = 0;
    detail::checked("mdlgetbounds", [&] { return mdlgetbounds(h_, &lo, &up); }, detail::nonzero);
    return {lo, up};
  }
  /// Set the lower bound.  Throws kvtl::error (1530 when above the upper bound).
  void set_lb(double value) const {
    detail::checked("mdlsetlb", [&] { return mdlsetlb(h_, value); }, detail::nonzero);
  }
  /// Set the upper bound.  Throws kvtl::error (1530 when below the lower bound).
  void set_ub(double value) const {
    detail::checked("mdlsetub", [&] { return mdlsetub(h_, value); }, detail::nonzero);
  }
  /// Set both bounds to @p value.  Throws kvtl::error.
  void fix(double value) const {
    detail::checked("mdlfixvar", [&] { return mdlfixvar(h_, value); }, detail::nonzero);
  }
  /// Limit of a partial-integer or semi-continuous variable.  Throws kvtl::error.
  [[nodiscard]] double limit() const {
    double v = 0;
    detail::checked("mdlgetlim", [&] { return mdlgetlim(h_, &v); }, detail::nonzero);
    return v;
  }
  /// Set the limit (warnings 1592/1593 go to the warning handler).  Throws kvtl::error.
  void set_limit(double value) const {
    detail::checked("mdlsetlim", [&] { return mdlsetlim(h_, value); }, detail::nonzero);
  }
  /// Column in the loaded matrix, -1 without one.  Throws kvtl::error.
  [[nodiscard]] int column() const {
    return detail::checked("mdlgetcolnum", [&] { return mdlgetcolnum(h_); });
  }
  /// Value in the current solution (0 with warning 1520 when there is
  /// none).  Throws kvtl::error.
  [[nodiscard]] double value() const {
    return detail::checked("mdlgetsol", [&] { return mdlgetsol(h_); });
  }
  /// Reduced cost in the current LP solution.  Throws kvtl::error.
  [[nodiscard]] double reduced_cost() const {
    return detail::checked("mdlgetrcost", [&] { return mdlgetrcost(h_); });
  }
  /// Append a branching directive of kind @p kind with @p value.  Throws kvtl::error.
  void set_directive(directive kind, double value = 0) const {
    detail::checked("mdlsetvardir", [&] { return mdlsetvardir(h_, static_cast<int>(kind), value); },
                    detail::nonzero);
  }

  /// Ranging of a variable in the current LP solution.
  struct ranging {
    double upper_value;  ///< upper end of the value range
    double lower_value;  ///< lower end of the value range
    double unit_up;      ///< objective change per unit up
    double unit_down;    ///< objective change per unit down
    double upper_cost;   ///< upper end of the cost range
    double lower_cost;   ///< lower end of the cost range
  };
  /// Ranging of the current LP solution (computed once per solution).
  /// Throws kvtl::error.
  [[nodiscard]] ranging range() const {
    auto get = [&](int code) { return detail::checked("mdlgetvarrng", [&] { return mdlgetvarrng(h_, code); }); };
    return {get(MDL_RNG_UPACT), get(MDL_RNG_LOACT), get(MDL_RNG_UUP),
            get(MDL_RNG_UDN),   get(MDL_RNG_UCOST), get(MDL_RNG_LCOST)};
  }

 private:
  MDLvar h_ = nullptr;
};

/**
 * @brief A constraint of a problem (a non-owning handle).
 *
 * Compares by identity; usable as a map key.  Valid until removed or until
 * its problem is destroyed.
 */
class constraint {
 public:
  /// A handle naming no constraint.
  constraint() = default;
  /// The handle of a C constraint @p c.
  explicit constraint(MDLctr c) noexcept : h_(c) {}
  /// The C handle.
  [[nodiscard]] MDLctr handle() const noexcept { return h_; }
  /// True when the handle names a constraint.
  explicit operator bool() const noexcept { return h_ != nullptr; }
  /// Same constraint.
  friend bool operator==(constraint, constraint) = default;

  /// The name (a generated one for unnamed constraints).  Throws kvtl::error.
  [[nodiscard]] std::string name() const {
    return detail::checked("mdlgetctrname", [&] { return mdlgetctrname(h_); }, detail::is_null<const char>);
  }
  /// The type.  Throws kvtl::error.
  [[nodiscard]] ctr_type type() const {
    return static_cast<ctr_type>(
        detail::checked("mdlgetctrtype", [&] { return mdlgetctrtype(h_); }, [](int t) { return t < 0; }));
  }
  /// Change the type (not to ctr_type::range: use set_range).  Throws
  /// kvtl::error (1535 for a type out of range).
  void set_type(ctr_type t) const {
    detail::checked("mdlsetctrtype", [&] { return mdlsetctrtype(h_, static_cast<int>(t)); }, detail::nonzero);
  }
  /// Right-hand side.  Throws kvtl::error.
  [[nodiscard]] double rhs() const {
    return detail::checked("mdlgetrhs", [&] { return mdlgetrhs(h_); });
  }
  /// Make the constraint @p lower <= terms <= @p upper (an equation when
  /// they are equal).  Throws kvtl::error (1536 when lower > upper).
  void set_range(double lower, double upper) const {
    detail::checked("mdlsetrange", [&] { return mdlsetrange(h_, lower, upper); }, detail::nonzero);
  }
  /// Coefficient of @p v in the constraint (0 when absent).  Throws kvtl::error.
  [[nodiscard]] double coefficient(variable v) const {
    return detail::checked("mdlgetcoeff", [&] { return mdlgetcoeff(h_, v.handle()); });
  }
  /// Set the coefficient of @p v (0 removes the term).  Throws kvtl::error.
  void set_coefficient(variable v, double coef) const {
    detail::checked("mdlsetterm", [&] { return mdlsetterm(h_, v.handle(), coef); }, detail::nonzero);
  }
  /// Make it an indicator constraint: it holds when binary @p v is 1
  /// (@p when_one) or 0.  Throws kvtl::error (1539 for a wrong type).
  void set_indicator(variable v, bool when_one = true) const {
    detail::checked("mdlsetindicator",
                    [&] { return mdlsetindicator(h_, when_one ? 1 : -1, v.handle()); }, detail::nonzero);
  }
  /// Row in the loaded matrix, -1 without one.  Throws kvtl::error.
  [[nodiscard]] int row() const {
    return detail::checked("mdlgetrownum", [&] { return mdlgetrownum(h_); });
  }
  /// Activity (the terms' value) in the current solution.  Throws kvtl::error.
  [[nodiscard]] double activity() const {
    return detail::checked("mdlgetact", [&] { return mdlgetact(h_); });
  }
  /// Slack (rhs minus activity) in the current solution.  Throws kvtl::error.
  [[nodiscard]] double slack() const {
    return detail::checked("mdlgetslack", [&] { return mdlgetslack(h_); });
  }
  /// Dual value in the current LP solution.  Throws kvtl::error.
  [[nodiscard]] double dual() const {
    return detail::checked("mdlgetdual", [&] { return mdlgetdual(h_); });
  }

  /// Ranging of a constraint in the current LP solution.
  struct ranging {
    double upper_activity;  ///< upper end of the activity range
    double lower_activity;  ///< lower end of the activity range
    double unit_up;         ///< objective change per unit up
    double unit_down;       ///< objective change per unit down
  };
  /// Ranging of the current LP solution.  Throws kvtl::error.
  [[nodiscard]] ranging range() const {
    auto get = [&](int code) { return detail::checked("mdlgetctrrng", [&] { return mdlgetctrrng(h_, code); }); };
    return {get(MDL_RNG_UPACT), get(MDL_RNG_LOACT), get(MDL_RNG_UUP), get(MDL_RNG_UDN)};
  }

 private:
  MDLctr h_ = nullptr;
};

/**
 * @brief A special ordered set of a problem (a non-owning handle).
 */
class sos {
 public:
  /// A handle naming no set.
  sos() = default;
  /// The handle of a C set @p s.
  explicit sos(MDLsos s) noexcept : h_(s) {}
  /// The C handle.
  [[nodiscard]] MDLsos handle() const noexcept { return h_; }
  /// True when the handle names a set.
  explicit operator bool() const noexcept { return h_ != nullptr; }
  /// Same set.
  friend bool operator==(sos, sos) = default;
  /// The name.  Throws kvtl::error.
  [[nodiscard]] std::string name() const {
    return detail::checked("mdlgetsosname", [&] { return mdlgetsosname(h_); }, detail::is_null<const char>);
  }
  /// The type.  Throws kvtl::error.
  [[nodiscard]] sos_type type() const {
    return static_cast<sos_type>(
        detail::checked("mdlgetsostype", [&] { return mdlgetsostype(h_); }, [](int t) { return t < 0; }));
  }
  /// Add @p weight to the member @p v (a new member when absent).  Throws kvtl::error.
  void add(variable v, double weight) const {
    detail::checked("mdladdsosel", [&] { return mdladdsosel(h_, v.handle(), weight); }, detail::nonzero);
  }
  /// Append a branching directive to the set.  Throws kvtl::error.
  void set_directive(directive kind, double value = 0) const {
    detail::checked("mdlsetsosdir", [&] { return mdlsetsosdir(h_, static_cast<int>(kind), value); },
                    detail::nonzero);
  }

 private:
  MDLsos h_ = nullptr;
};

/**
 * @brief A cut: an inequality kept outside the model and sent to the engine
 * during the search (a non-owning handle; problem::remove_cut deletes it).
 */
class cut {
 public:
  /// A handle naming no cut.
  cut() = default;
  /// The handle of a C cut @p c.
  explicit cut(MDLcut c) noexcept : h_(c) {}
  /// The C handle.
  [[nodiscard]] MDLcut handle() const noexcept { return h_; }
  /// True when the handle names a cut.
  explicit operator bool() const noexcept { return h_ != nullptr; }
  /// Same cut.
  friend bool operator==(cut, cut) = default;
  /// The cut's type number.  Throws kvtl::error.
  [[nodiscard]] int id() const {
    return detail::checked("mdlgetcutid", [&] { return mdlgetcutid(h_); });
  }
  /// The relation (leq, geq or eq).  Throws kvtl::error.
  [[nodiscard]] ctr_type type() const {
    return static_cast<ctr_type>(
        detail::checked("mdlgetcuttype", [&] { return mdlgetcuttype(h_); }, [](int t) { return t < 0; }));
  }
  /// The right-hand side.  Throws kvtl::error.
  [[nodiscard]] double rhs() const {
    return detail::checked("mdlgetcutrhs", [&] { return mdlgetcutrhs(h_); });
  }

 private:
  MDLcut h_ = nullptr;
};

}  // namespace kvtl

/// Hash of a variable handle (by identity).
template <>
struct std::hash<kvtl::variable> {
  /// The hash of the handle's address.
  std::size_t operator()(kvtl::variable v) const noexcept { return std::hash<MDLvar>{}(v.handle()); }
};
/// Order of variable handles (by address), for ordered containers.
template <>
struct std::less<kvtl::variable> {
  /// True when @p a comes before @p b.
  bool operator()(kvtl::variable a, kvtl::variable b) const noexcept {
    return std::less<MDLvar>{}(a.handle(), b.handle());
  }
};
/// Hash of a constraint handle (by identity).
template <>
struct std::hash<kvtl::constraint> {
  /// The hash of the handle's address.
  std::size_t operator()(kvtl::constraint c) const noexcept { return std::hash<MDLctr>{}(c.handle()); }
};
/// Order of constraint handles (by address), for ordered containers.
template <>
struct std::less<kvtl::constraint> {
  /// True when @p a comes before @p b.
  bool operator()(kvtl::constraint a, kvtl::constraint b) const noexcept {
    return std::less<MDLctr>{}(a.handle(), b.handle());
  }
};
/// Hash of a set handle (by identity).
template <>
struct std::hash<kvtl::sos> {
  /// The hash of the handle's address.
  std::size_t operator()(kvtl::sos s) const noexcept { return std::hash<MDLsos>{}(s.handle()); }
};
/// Order of set handles (by address), for ordered containers.
template <>
struct std::less<kvtl::sos> {
  /// True when @p a comes before @p b.
  bool operator()(kvtl::sos a, kvtl::sos b) const noexcept { return std::less<MDLsos>{}(a.handle(), b.handle()); }
};
/// Hash of a cut handle (by identity).
template <>
struct std::hash<kvtl::cut> {
  /// The hash of the handle's address.
  std::size_t operator()(kvtl::cut c) const noexcept { return std::hash<MDLcut>{}(c.handle()); }
};
/// Order of cut handles (by address), for ordered containers.
template <>
struct std::less<kvtl::cut> {
  /// True when @p a comes before @p b.
  bool operator()(kvtl::cut a, kvtl::cut b) const noexcept { return std::less<MDLcut>{}(a.handle(), b.handle()); }
};

namespace kvtl {

/// One linear term: coefficient times variable.
struct linear_term {
  variable var;  ///< the variable
  double coef;   ///< its coefficient
};

/// One quadratic term: coefficient times the product of two variables.
struct quad_term {
  variable var1;  ///< first variable
  variable var2;  ///< second variable (may equal the first: a square)
  double coef;    ///< the coefficient
};

/**
 * @brief A linear expression: a constant plus terms coefficient * variable.
 *
 * Built from variables and numbers with + - * / and +=; a variable may
 * occur in several terms (their coefficients add up where the expression
 * is used).  Multiplying two linear expressions gives a kvtl::quad_expr.
 */
class linear_expr {
 public:
  /// The expression 0.
  linear_expr() = default;
  /// The constant @p c.
  linear_expr(double c) : constant_(c) {}  // NOLINT: numbers are expressions
  /// The variable @p v with coefficient 1.
  linear_expr(variable v) : terms_{{v, 1.0}} {}  // NOLINT: variables are expressions

  /// The constant part.
  [[nodiscard]] double constant() const noexcept { return constant_; }
  /// The terms, in the order they were added.
  [[nodiscard]] std::span<const linear_term> terms() const noexcept { return terms_; }
  /// Add @p coef * @p v.
  linear_expr &add_term(variable v, double coef) {
    terms_.push_back({v, coef});
    return *this;
  }
  /// Add @p e to this expression.
  linear_expr &operator+=(const linear_expr &e) {
    constant_ += e.constant_;
    terms_.insert(terms_.end(), e.terms_.begin(), e.terms_.end());
    return *this;
  }
  /// Subtract @p e from this expression.
  linear_expr &operator-=(const linear_expr &e) {
    constant_ -= e.constant_;
    terms_.reserve(terms_.size() + e.terms_.size());
    for (const linear_term &t : e.terms_) terms_.push_back({t.var, -t.coef});
    return *this;
  }
  /// Multiply by the number @p f.
  linear_expr &operator*=(double f) {
    constant_ *= f;
    for (linear_term &t : terms_) t.coef *= f;
    return *this;
  }
  /// Divide by the number @p f.
  linear_expr &operator/=(double f) { return *this *= 1.0 / f; }
  /// Value at the current solution.  Throws kvtl::error.
  [[nodiscard]] double value() const {
    double v = constant_;
    for (const linear_term &t : terms_) v += t.coef * t.var.value();
    return v;
  }

 private:
  double constant_ = 0;
  std::vector<linear_term> terms_;
};

/**
 * @brief A quadratic expression: a linear expression plus terms
 * coefficient * variable * variable.
 */
class quad_expr {
 public:
  /// The expression 0.
  quad_expr() = default;
  /// The linear expression @p e.
  quad_expr(linear_expr e) : linear_(std::move(e)) {}  // NOLINT: linear is quadratic

  /// The linear part (with the constant).
  [[nodiscard]] const linear_expr &linear() const noexcept { return linear_; }
  /// The quadratic terms, in the order they were added.
  [[nodiscard]] std::span<const quad_term> quad_terms() const noexcept { return quad_; }
  /// Add @p coef * @p a * @p b.
  quad_expr &add_term(variable a, variable b, double coef) {
    quad_.push_back({a, b, coef});
    return *this;
  }
  /// Add @p e to this expression.
  quad_expr &operator+=(const quad_expr &e) {
    linear_ += e.linear_;
    quad_.insert(quad_.end(), e.quad_.begin(), e.quad_.end());
    return *this;
  }
  /// Add the linear expression @p e.
  quad_expr &operator+=(const linear_expr &e) {
    linear_ += e;
    return *this;
  }
  /// Subtract @p e from this expression.
  quad_expr &operator-=(const quad_expr &e) {
    linear_ -= e.linear_;
    for (const quad_term &t : e.quad_) quad_.push_back({t.var1, t.var2, -t.coef});
    return *this;
  }
  /// Subtract the linear expression @p e.
  quad_expr &operator-=(const linear_expr &e) {
    linear_ -= e;
    return *this;
  }
  /// Multiply by the number @p f.
  quad_expr &operator*=(double f) {
    linear_ *= f;
    for (quad_term &t : quad_) t.coef *= f;
    return *this;
  }
  /// Divide by the number @p f.
  quad_expr &operator/=(double f) { return *this *= 1.0 / f; }
  /// Value at the current solution.  Throws kvtl::error.
  [[nodiscard]] double value() const {
    double v = linear_.value();
    for (const quad_term &t : quad_) v += t.coef * t.var1.value() * t.var2.value();
    return v;
  }

 private:
  linear_expr linear_;
  std::vector<quad_term> quad_;
};

/// @p a plus @p b.
inline linear_expr operator+(linear_expr a, const linear_expr &b) { return a += b; }
/// @p a minus @p b.
inline linear_expr operator-(linear_expr a, const linear_expr &b) { return a -= b; }
/// Minus @p a.
inline linear_expr operator-(linear_expr a) { return a *= -1.0; }
/// The number @p f times @p a.
inline linear_expr operator*(double f, linear_expr a) { return a *= f; }
/// @p a times the number @p f.
inline linear_expr operator*(linear_expr a, double f) { return a *= f; }
/// @p a divided by the number @p f.
inline linear_expr operator/(linear_expr a, double f) { return a /= f; }
/// The product of two linear expressions.
inline quad_expr operator*(const linear_expr &a, const linear_expr &b) {
  // Terms times a zero constant are left out rather than kept as zeros.
  linear_expr lin(a.constant() * b.constant());
  if (b.constant() != 0)
    for (const linear_term &t : a.terms()) lin.add_term(t.var, t.coef * b.constant());
  if (a.constant() != 0)
    for (const linear_term &t : b.terms()) lin.add_term(t.var, t.coef * a.constant());
  quad_expr q(std::move(lin));
  for (const linear_term &s : a.terms())
    for (const linear_term &t : b.terms()) q.add_term(s.var, t.var, s.coef * t.coef);
  return q;
}
/// @p a plus @p b.
inline quad_expr operator+(quad_expr a, const quad_expr &b) { return a += b; }
/// @p a plus @p b.
inline quad_expr operator+(quad_expr a, const linear_expr &b) { return a += b; }
/// @p a plus @p b.
inline quad_expr operator+(const linear_expr &a, quad_expr b) { return b += a; }
/// @p a minus @p b.
inline quad_expr operator-(quad_expr a, const quad_expr &b) { return a -= b; }
/// @p a minus @p b.
inline quad_expr operator-(quad_expr a, const linear_expr &b) { return a -= b; }
/// @p a minus @p b.
inline quad_expr operator-(const linear_expr &a, const quad_expr &b) { return quad_expr(a) -= b; }
/// Minus @p a.
inline quad_expr operator-(quad_expr a) { return a *= -1.0; }
/// The number @p f times @p a.
inline quad_expr operator*(double f, quad_expr a) { return a *= f; }
/// @p a times the number @p f.
inline quad_expr operator*(quad_expr a, double f) { return a *= f; }
/// @p a divided by the number @p f.
inline quad_expr operator/(quad_expr a, double f) { return a /= f; }

/**
 * @brief A linear relation "expression type 0", made by comparing linear
 * expressions with <=, >= or == (`2*x + 3*y <= 10`).
 *
 * Note that two plain variables compared with == give a bool (whether they
 * are the same variable); write `x - y == 0` for the equation.
 */
struct linear_relation {
  linear_expr expr;  ///< left side minus right side
  ctr_type type;     ///< leq, geq or eq
};

/// A quadratic relation "expression type 0" (`x*x + y*y <= 1`).
struct quad_relation {
  quad_expr expr;  ///< left side minus right side
  ctr_type type;   ///< leq, geq or eq
  /// A quadratic relation with expression @p e and type @p t.
  quad_relation(quad_expr e, ctr_type t) : expr(std::move(e)), type(t) {}
  /// The linear relation @p r.
  quad_relation(linear_relation r) : expr(std::move(r.expr)), type(r.type) {}  // NOLINT
};

/// The relation @p a <= @p b.
inline linear_relation operator<=(const linear_expr &a, const linear_expr &b) { return {a - b, ctr_type::leq}; }
/// The relation @p a >= @p b.
inline linear_relation operator>=(const linear_expr &a, const linear_expr &b) { return {a - b, ctr_type::geq}; }
/// The relation @p a == @p b.
inline linear_relation operator==(const linear_expr &a, const linear_expr &b) { return {a - b, ctr_type::eq}; }
/// The relation @p a <= @p b.
inline quad_relation operator<=(const quad_expr &a, const linear_expr &b) { return {a - b, ctr_type::leq}; }
/// The relation @p a >= @p b.
inline quad_relation operator>=(const quad_expr &a, const linear_expr &b) { return {a - b, ctr_type::geq}; }
/// The relation @p a == @p b.
inline quad_relation operator==(const quad_expr &a, const linear_expr &b) { return {a - b, ctr_type::eq}; }
/// The relation @p a <= @p b.
inline quad_relation operator<=(const linear_expr &a, const quad_expr &b) { return {a - b, ctr_type::leq}; }
/// The relation @p a >= @p b.
inline quad_relation operator>=(const linear_expr &a, const quad_expr &b) { return {a - b, ctr_type::geq}; }
/// The relation @p a == @p b.
inline quad_relation operator==(const linear_expr &a, const quad_expr &b) { return {a - b, ctr_type::eq}; }
/// The relation @p a <= @p b.
inline quad_relation operator<=(const quad_expr &a, const quad_expr &b) { return {a - b, ctr_type::leq}; }
/// The relation @p a >= @p b.
inline quad_relation operator>=(const quad_expr &a, const quad_expr &b) { return {a - b, ctr_type::geq}; }
/// The relation @p a == @p b.
inline quad_relation operator==(const quad_expr &a, const quad_expr &b) { return {a - b, ctr_type::eq}; }

/**
 * @brief The sum of the elements of a range (variables, numbers or
 * expressions): a linear_expr, or a quad_expr for quadratic elements.
 * @param r any input range, e.g. a std::vector<variable>
 */
template <std::ranges::input_range R>
auto sum(R &&r) {
  using V = std::ranges::range_reference_t<R>;
  if constexpr (std::is_convertible_v<V, linear_expr>) {
    linear_expr e;
    for (auto &&x : r) e += linear_expr(x);
    return e;
  } else {
    quad_expr e;
    for (auto &&x : r) e += quad_expr(x);
    return e;
  }
}

/**
 * @brief The sum of @p f applied to every element of a range
 * (`sum(items, [&](int i) { return value[i] * take[i]; })`).
 * @param r any input range
 * @param f a function of one element giving a variable, number or expression
 * @return a linear_expr, or a quad_expr when @p f gives quadratic expressions
 */
template <std::ranges::input_range R, class F>
  requires std::invocable<F &, std::ranges::range_reference_t<R>>
auto sum(R &&r, F &&f) {
  using V = std::invoke_result_t<F &, std::ranges::range_reference_t<R>>;
  if constexpr (std::is_convertible_v<V, linear_expr>) {
    linear_expr e;
    for (auto &&x : r) e += linear_expr(f(x));
    return e;
  } else {
    quad_expr e;
    for (auto &&x : r) e += quad_expr(f(x));
    return e;
  }
}

/**
 * @brief What a search callback can do: read the values of the solution it
 * is about and add cuts to the search.  Only valid during the callback.
 */
class callback_context {
 public:
  /// Value of @p v in the solution the callback is about.  Throws kvtl::error.
  [[nodiscard]] double value(variable v) const { return v.value(); }
  /// Value of @p e in the solution the callback is about.  Throws kvtl::error.
  [[nodiscard]] double value(const linear_expr &e) const { return e.value(); }
  /// Add the cut @p r (type number @p id) to the search: valid for the
  /// whole tree, applied wherever a solution violates it.  Throws kvtl::error.
  void add_cut(const linear_relation &r, int id = 0) const;
  /// Ask the search to stop at the next opportunity; the optimisation then
  /// throws kvtl::error 1524 (engine error 13) and keeps the best solution.
  void stop_search() noexcept { stop_ = true; }

 private:
  friend class problem;
  explicit callback_context(MDLprob p) noexcept : prob_(p) {}
  MDLprob prob_;
  bool stop_ = false;
};

/**
 * @brief A problem: owns one library problem with everything created on it.
 *
 * Creating the first problem starts the library (once for the process; it
 * is finished at exit).  Movable, not copyable; the destructor deletes the
 * problem.  A moved-from problem may only be destroyed or assigned to; any
 * other call throws std::logic_error.
 */
class problem {
 public:
  /// Handler of the search callbacks (see on_cut_manager, on_candidate).
  using cut_manager_fn = std::function<void(callback_context &)>;
  /// Candidate handler: return true to reject the solution.
  using candidate_fn = std::function<bool(callback_context &)>;

  /**
   * @brief Create a problem named @p name (empty: a generated name).
   *
   * The name is the base of the engine's side files.  Throws kvtl::error
   * (1561 when the library cannot start).
   */
  explicit problem(const std::string &name = "") : state_(std::make_unique<state>()) {
    detail::start_library();
    MDLprob p = detail::checked("mdlnewprob", [&] { return mdlnewprob(name.empty() ? nullptr : name.c_str()); },
                                detail::is_null<mdl_problem>);
    state_->prob = p;
    mdldefcberr_prob(p, detail::error_trampoline, static_cast<detail::problem_state *>(state_.get()));
  }
  /// Delete the problem (errors while deleting are ignored).
  ~problem() { release(); }
  problem(const problem &) = delete;
  problem &operator=(const problem &) = delete;
  /// Take over @p other's problem; @p other becomes moved-from.
  problem(problem &&other) noexcept = default;
  /// Delete this problem and take over @p other's.
  problem &operator=(problem &&other) noexcept {
    if (this != &other) {
      release();
      state_ = std::move(other.state_);
    }
    return *this;
  }

  /// The C handle (null when moved-from).
  [[nodiscard]] MDLprob handle() const noexcept { return state_ ? state_->prob : nullptr; }
  /// The engine problem, for engine controls the library does not set.
  [[nodiscard]] MDLkvslprob engine() const { return mdlgetkvslprob_prob(get()); }
  /// The problem's name (its file base).  Throws kvtl::error.
  [[nodiscard]] std::string name() const {
    return detail::checked("mdlgetprobname", [&] { return mdlgetprobname_prob(get()); },
                           detail::is_null<const char>);
  }

  /// Message level: 0 silent, 1 errors, 2 warnings, 3 solver log (default),
  /// 4 and more status texts.  Throws kvtl::error.
  void set_message_level(int level) {
    detail::checked("mdlsetmsglevel", [&] { return mdlsetmsglevel_prob(get(), level); }, detail::nonzero);
  }
  /// Send the problem's output (reports, solver log, message lines) to
  /// @p fn instead of standard output; an empty function restores it.
  /// Exceptions thrown by @p fn leave the call that printed.
  void on_message(std::function<void(std::string_view)> fn) {
    MDLprob p = get();
    state_->on_message = std::move(fn);
    if (state_->on_message)
      mdldefcbmsg_prob(p, detail::message_trampoline, static_cast<detail::problem_state *>(state_.get()));
    else
      mdldefcbmsg_prob(p, nullptr, nullptr);
  }
  /// Call @p fn(number, text) for every warning the library reports on the
  /// problem.  Exceptions thrown by @p fn leave the call that warned.
  void on_warning(std::function<void(int, std::string_view)> fn) {
    get();
    state_->on_warning = std::move(fn);
  }

  /**
   * @brief A new variable.
   * @param name its name (empty: a generated one); made unique
   * @param type its type
   * @param lb, ub its bounds (a binary's are clamped to [0, 1])
   * @return the variable.  Throws kvtl::error.
   */
  variable add_variable(const std::string &name = "", var_type type = var_type::continuous, double lb = 0,
                        double ub = infinity) {
    MDLprob p = get();
    return variable(detail::checked(
        "mdlnewvar", [&] { return mdlnewvar_prob(p, name.empty() ? nullptr : name.c_str(), static_cast<int>(type), lb, ub); },
        detail::is_null<mdl_var>));
  }
  /// A new binary variable named @p name.  Throws kvtl::error.
  variable add_binary(const std::string &name = "") { return add_variable(name, var_type::binary, 0, 1); }
  /// A new integer variable within [@p lb, @p ub].  Throws kvtl::error.
  variable add_integer(const std::string &name = "", double lb = 0, double ub = infinity) {
    return add_variable(name, var_type::integer, lb, ub);
  }

  /**
   * @brief A new constraint from a relation (`p.add_constraint(x + y <= 4, "cap")`).
   * @param r the relation, linear or quadratic
   * @param name its name (empty: a generated one)
   * @return the constraint.  Throws kvtl::error.
   */
  constraint add_constraint(const quad_relation &r, const std::string &name = "") {
    MDLprob p = get();
    MDLctr c = detail::checked(
        "mdlnewctr", [&] { return mdlnewctr_prob(p, name.empty() ? nullptr : name.c_str(), static_cast<int>(r.type)); },
        detail::is_null<mdl_ctr>);
    fill(c, r.expr);
    return constraint(c);
  }
  /**
   * @brief A new constraint "@p e @p type 0" (`add_constraint(cost, ctr_type::nonbinding, "cost")`
   * states a free row, for instance an objective to be chosen by set_objective(constraint)).
   * @param e the expression (terms plus constant)
   * @param type nonbinding, leq, geq or eq
   * @param name its name (empty: a generated one)
   * @return the constraint.  Throws kvtl::error (1535 for another type).
   */
  constraint add_constraint(const quad_expr &e, ctr_type type, const std::string &name = "") {
    return add_constraint(quad_relation(e, type), name);
  }
  /// A new range constraint @p lower <= @p e <= @p upper.  Throws kvtl::error.
  constraint add_range(const linear_expr &e, double lower, double upper, const std::string &name = "") {
    linear_expr terms = e - e.constant();
    constraint c = add_constraint(terms <= 0.0, name);
    c.set_range(lower - e.constant(), upper - e.constant());
    return c;
  }
  /// Delete a constraint with its terms.  Throws kvtl::error.
  void remove(constraint c) {
    get();
    detail::checked("mdldelctr", [&] { return mdldelctr(c.handle()); }, detail::nonzero);
  }

  /// Make @p e the objective, optimised in sense @p s by solve().  Throws kvtl::error.
  void set_objective(const quad_expr &e, sense s = sense::minimize) {
    MDLprob p = get();
    expr_handle x = make_expr(e);
    detail::checked("mdlsetobjexpr", [&] { return mdlsetobjexpr(p, x.get()); }, [](int rc) { return rc != 1; });
    set_sense(s);
  }
  /// Make the constraint @p c (type nonbinding) the objective.  Throws kvtl::error.
  void set_objective(constraint c) {
    MDLprob p = get();
    detail::checked("mdlsetobj", [&] { return mdlsetobj_prob(p, c.handle()); }, detail::nonzero);
  }
  /// Store the objective sense.  Throws kvtl::error.
  void set_sense(sense s) {
    MDLprob p = get();
    detail::checked("mdlsetsense", [&] { return mdlsetsense_prob(p, s == sense::maximize ? 1 : 0); }, detail::nonzero);
  }
  /// The stored objective sense.  Throws kvtl::error.
  [[nodiscard]] sense get_sense() const {
    MDLprob p = get();
    int s = detail::checked("mdlgetsense", [&] { return mdlgetsense_prob(p); }, [](int v) { return v < 0; });
    return s == 1 ? sense::maximize : sense::minimize;
  }

  /// A new special ordered set of type @p t whose members are the linear
  /// terms of @p weights (coefficients are the weights).  Throws kvtl::error.
  sos add_sos(sos_type t, const linear_expr &weights, const std::string &name = "") {
    MDLprob p = get();
    sos s(detail::checked("mdlnewsos", [&] { return mdlnewsos_prob(p, name.empty() ? nullptr : name.c_str(), static_cast<int>(t)); },
                          detail::is_null<mdl_sos>));
    for (const linear_term &m : weights.terms()) s.add(m.var, m.coef);
    return s;
  }

  /**
   * @brief Minimise the objective.
   * @param options engine option letters: "" solves an LP (or a MIP's
   *        relaxation), "g" runs the global search of a MIP; also p, d, b, n, l
   * Throws kvtl::error (1523 for an unknown option, 1524 when the engine
   * fails) or what a callback threw.
   */
  void minimize(const std::string &options = "") {
    MDLprob p = get();
    detail::checked("mdlminim", [&] { return mdlminim_prob(p, options.c_str()); }, detail::nonzero);
  }
  /// Maximise the objective; options as minimize().  Throws kvtl::error.
  void maximize(const std::string &options = "") {
    MDLprob p = get();
    detail::checked("mdlmaxim", [&] { return mdlmaxim_prob(p, options.c_str()); }, detail::nonzero);
  }
  /// Optimise in the stored sense; options as minimize().  Throws kvtl::error.
  void solve(const std::string &options = "") {
    MDLprob p = get();
    detail::checked("mdlsolve", [&] { return mdlsolve_prob(p, options.c_str()); }, detail::nonzero);
  }
  /// Solve the LP (QP) relaxation in the stored sense.  Throws kvtl::error.
  void lp_optimize(const std::string &options = "") {
    MDLprob p = get();
    detail::checked("mdllpoptimize", [&] { return mdllpoptimize_prob(p, options.c_str()); }, detail::nonzero);
  }
  /// Run the global search in the stored sense.  Throws kvtl::error.
  void mip_optimize(const std::string &options = "") {
    MDLprob p = get();
    detail::checked("mdlmipoptimize", [&] { return mdlmipoptimize_prob(p, options.c_str()); }, detail::nonzero);
  }
  /// Fix the global entities at their MIP solution values (rounded when
  /// @p round) so that an LP gives duals.  Throws kvtl::error.
  void fix_globals(bool round = false) {
    MDLprob p = get();
    detail::checked("mdlfixglobals", [&] { return mdlfixglobals_prob(p, round ? 1 : 0); }, detail::nonzero);
  }
  /// LP status of the last optimisation.  Throws kvtl::error.
  [[nodiscard]] lp_status get_lp_status() const {
    MDLprob p = get();
    return static_cast<lp_status>(detail::checked("mdlgetlpstat", [&] { return mdlgetlpstat_prob(p); }));
  }
  /// MIP status of the last optimisation.  Throws kvtl::error.
  [[nodiscard]] mip_status get_mip_status() const {
    MDLprob p = get();
    return static_cast<mip_status>(detail::checked("mdlgetmipstat", [&] { return mdlgetmipstat_prob(p); }));
  }
  /// Objective value of the current solution.  Throws kvtl::error.
  [[nodiscard]] double objective_value() const {
    MDLprob p = get();
    return detail::checked("mdlgetobjval", [&] { return mdlgetobjval_prob(p); });
  }

  /// Set an integer engine control (numbers KVSL_CTRL_* of kvsl.h).
  /// Throws kvtl::error (number 0) when the engine refuses.
  void set_control(int control, int value) {
    MDLkvslprob e = engine();
    if (KVSLsetintcontrol(e, control, value) != 0)
      throw error(0, "KVSLsetintcontrol(" + std::to_string(control) + ") failed");
  }
  /// Set a double engine control (numbers KVSL_CTRL_* of kvsl.h).
  /// Throws kvtl::error (number 0) when the engine refuses.
  void set_control(int control, double value) {
    MDLkvslprob e = engine();
    if (KVSLsetdblcontrol(e, control, value) != 0)
      throw error(0, "KVSLsetdblcontrol(" + std::to_string(control) + ") failed");
  }

  /// Write the model as an LP file (".lp" appended when @p file has no
  /// extension).  Throws kvtl::error (number 0 when the file cannot be
  /// written).
  void export_lp(const std::string &file) { export_model(MDL_FILE_LP, file); }
  /// Write the model as a fixed-column MPS file (".mps" appended when
  /// @p file has no extension).  Throws kvtl::error (number 0 when the
  /// file cannot be written).
  void export_mps(const std::string &file) { export_model(MDL_FILE_MPS, file); }
  /// Print the model through the problem's output.  Throws kvtl::error.
  void print() {
    MDLprob p = get();
    detail::checked("mdlprintprob", [&] { return mdlprintprob_prob(p); }, detail::nonzero);
  }

  /// A new cut from the linear relation @p r (leq, geq or eq) with type
  /// number @p id; delete it with remove().  Throws kvtl::error.
  cut add_cut(const linear_relation &r, int id = 0) { return cut(make_cut(get(), r, id)); }
  /// Delete a cut.  Throws kvtl::error.
  void remove(cut c) {
    get();
    detail::checked("mdldelcut", [&] { return mdldelcut(c.handle()); }, detail::nonzero);
  }
  /// Cut mode: 0 lets the engine presolve the search, 1 keeps the columns
  /// as loaded so that cuts can be added.  Throws kvtl::error.
  void set_cut_mode(int mode) {
    MDLprob p = get();
    detail::checked("mdlsetcutmode", [&] { return mdlsetcutmode_prob(p, mode); }, detail::nonzero);
  }

  /**
   * @brief Call @p fn at the root and the nodes of the global search with
   * the node's relaxation solution; cuts it adds go into the node.
   *
   * Sets cut mode 1.  An exception thrown by @p fn stops the search and
   * leaves the optimisation call.  An empty function removes the callback.
   * Needs the engine library (kvtl::kvsl).  Throws kvtl::error.
   */
  void on_cut_manager(cut_manager_fn fn) {
    MDLkvslprob e = engine();
    state_->cut_manager = std::move(fn);
    if (state_->cut_manager) set_cut_mode(1);
    if (KVSLsetcbcutmgr(e, state_->cut_manager ? &cut_manager_trampoline : nullptr, state_.get()) != 0)
      throw error(0, "KVSLsetcbcutmgr failed");
  }
  /**
   * @brief Call @p fn with every integer solution before the search accepts
   * it; returning true rejects it (add cuts that cut it off).
   *
   * Sets cut mode 1.  An exception thrown by @p fn stops the search and
   * leaves the optimisation call.  Needs kvtl::kvsl.  Throws kvtl::error.
   */
  void on_candidate(candidate_fn fn) {
    MDLkvslprob e = engine();
    state_->candidate = std::move(fn);
    if (state_->candidate) set_cut_mode(1);
    if (KVSLsetcbpreintsol(e, state_->candidate ? &candidate_trampoline : nullptr, state_.get()) != 0)
      throw error(0, "KVSLsetcbpreintsol failed");
  }

 private:
  struct state : detail::problem_state {
    cut_manager_fn cut_manager;
    candidate_fn candidate;
  };
  struct expr_deleter {
    void operator()(mdl_expr *e) const noexcept { mdldelexpr(e); }
  };
  using expr_handle = std::unique_ptr<mdl_expr, expr_deleter>;

  MDLprob get() const {
    if (!state_) throw std::logic_error("kvtl::problem used after being moved from");
    return state_->prob;
  }
  void release() noexcept {
    // The engine problem goes with the problem, and its callbacks with it;
    // so only programs that set engine controls or callbacks need libkvsl.
    if (state_ && state_->prob != nullptr) mdldelprob_prob(state_->prob);
    state_.reset();
  }
  // Generate the matrix and write it in a file format; the library reports
  // generation errors itself, an unwritable file only by its result.
  void export_model(int format, const std::string &file) {
    MDLprob p = get();
    int rc = detail::checked("mdlexportprob", [&] { return mdlexportprob_prob(p, format, file.c_str()); });
    if (rc != 0) throw error(0, "cannot write the model to '" + file + "'");
  }
  // The terms and constant of an expression added to a constraint.
  static void fill(MDLctr c, const quad_expr &e) {
    for (const linear_term &t : e.linear().terms())
      detail::checked("mdladdterm", [&] { return mdladdterm(c, t.var.handle(), t.coef); }, detail::nonzero);
    for (const quad_term &t : e.quad_terms())
      detail::checked("mdladdqterm", [&] { return mdladdqterm(c, t.var1.handle(), t.var2.handle(), t.coef); },
                      detail::nonzero);
    if (e.linear().constant() != 0)
      detail::checked("mdladdterm", [&] { return mdladdterm(c, nullptr, -e.linear().constant()); },
                      detail::nonzero);
  }
  // A library expression object equal to e.
  static expr_handle make_expr(const quad_expr &e) {
    expr_handle x(detail::checked("mdlnewexpr", [&] { return mdlnewexpr(nullptr, nullptr, e.linear().constant()); },
                                  detail::is_null<mdl_expr>));
    for (const linear_term &t : e.linear().terms())
      detail::checked("mdladdexpr_term", [&] { return mdladdexpr_term(x.get(), t.var.handle(), nullptr, t.coef); },
                      detail::nonzero);
    for (const quad_term &t : e.quad_terms())
      detail::checked("mdladdexpr_term",
                      [&] { return mdladdexpr_term(x.get(), t.var1.handle(), t.var2.handle(), t.coef); },
                      detail::nonzero);
    return x;
  }
  friend class callback_context;
  // A new cut of the problem from a linear relation.
  static MDLcut make_cut(MDLprob p, const linear_relation &r, int id) {
    MDLcut c = detail::checked("mdlnewcut", [&] { return mdlnewcut_prob(p, static_cast<int>(r.type), id); },
                               detail::is_null<mdl_cut>);
    try {
      for (const linear_term &t : r.expr.terms())
        detail::checked("mdladdcutterm", [&] { return mdladdcutterm(c, t.var.handle(), t.coef); }, detail::nonzero);
      detail::checked("mdladdcutterm", [&] { return mdladdcutterm(c, nullptr, -r.expr.constant()); },
                      detail::nonzero);
    } catch (...) {
      mdldelcut(c);
      throw;
    }
    return c;
  }
  // Run a search callback inside the problem's callback bracket with the
  // solution it is about taken over; 1 stops the search.
  template <class F>
  static int bracketed(KVSLprob kp, state *s, F &&body) noexcept {
    if (mdlbegincb_prob(s->prob, kp) != 0) return 1;
    int rc = 0;
    try {
      detail::checked("mdlsync", [&] { return mdlsync_prob(s->prob, 1); }, detail::nonzero);
      callback_context ctx(s->prob);
      rc = body(ctx);
      if (ctx.stop_) rc = 1;
    } catch (...) {
      detail::keep_exception();
      rc = 1;
    }
    if (mdlendcb_prob(s->prob) != 0) rc = 1;
    return rc;
  }
  static int cut_manager_trampoline(KVSLprob kp, void *user) noexcept {
    auto *s = static_cast<state *>(user);
    return bracketed(kp, s, [&](callback_context &ctx) {
      s->cut_manager(ctx);
      return 0;
    });
  }
  static int candidate_trampoline(KVSLprob kp, void *user, const double *, int, int *reject) noexcept {
    auto *s = static_cast<state *>(user);
    return bracketed(kp, s, [&](callback_context &ctx) {
      if (s->candidate(ctx)) *reject = 1;
      return 0;
    });
  }

  std::unique_ptr<state> state_;
};

inline void callback_context::add_cut(const linear_relation &r, int id) const {
  MDLcut c = problem::make_cut(prob_, r, id);
  try {
    detail::checked("mdladdcuts", [&] { return mdladdcuts_prob(prob_, &c, 1); }, detail::nonzero);
  } catch (...) {
    mdldelcut(c);
    throw;
  }
  mdldelcut(c);
}

}  // namespace kvtl

#endif  // KVTL_HPP
