/*
 * kvtl.hpp -- C++20 interface of the Tessel modelling library: owning
 * problems, typed handles, expressions with operators, exceptions, callbacks.
 */
#ifndef KVTL_HPP
#define KVTL_HPP

#include <concepts>
#include <cstddef>
#include <exception>
#include <functional>
#include <initializer_list>
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
 * @brief Header-only C++20 interface over the C functions of kvtl.h.
 *
 * A kvtl::problem owns one library problem; kvtl::variable,
 * kvtl::constraint, kvtl::sos and kvtl::cut are thin handles of its
 * objects, comparable with == and usable as keys of std::map, std::set
 * (std::less is specialised for them) and the unordered containers
 * (std::hash is specialised).  Expressions are written with operators
 * (`2*x + 3*y <= 10`, `x*y`, kvtl::sum) and turned into constraints,
 * objectives and cuts.
 *
 * Every error the library reports while a function of this header runs
 * leaves that function as a kvtl::error carrying the message number and
 * text; warnings go to the problem's warning handler (problem::on_warning)
 * and are not thrown.  Exceptions thrown by the application's handlers and
 * callbacks never cross a C frame: they are kept, the C call is told to
 * stop, and they are rethrown when it returns.
 *
 * The header takes over two process-wide settings when it starts the
 * library: error control is off (errors return instead of ending the
 * process) and the global error callback is its own.  Programs that mix
 * this header with direct C calls should leave both alone.
 *
 * Engine controls (problem::set_control) and search callbacks
 * (problem::on_cut_manager, problem::on_candidate) call the engine's own
 * functions: programs using them link the engine library too (kvtl::kvsl
 * in CMake, -lkvsl).
 */

/// The Tessel modelling library.
namespace kvtl {

/// Infinite bound, limit or range (1e+20).
inline constexpr double infinity = MDL_INFINITY;

/**
 * @brief An error reported by the library (or by this header).
 *
 * number() is the library's message number (1501..1599) and what() its
 * text as the library formatted it, for example 1505 "(getsol) No variable
 * given.".  Failures the library signals only by a result carry number 0
 * and a text saying what failed.
 */
class error : public std::runtime_error {
 public:
  /**
   * @brief An error with a message number and text.
   * @param number the message number, 0 for none
   * @param text the message text
   */
  error(int number, const std::string &text) : std::runtime_error(text), number_(number) {}
  /// @brief The message number.
  /// @return 1501..1599, or 0 when the library reported none
  [[nodiscard]] int number() const noexcept { return number_; }

 private:
  int number_;
};

/// Variable types.
enum class var_type {
  continuous = MDL_CONTINUOUS,     ///< any value within the bounds
  binary = MDL_BINARY,             ///< 0 or 1
  integer = MDL_INTEGER,           ///< an integer within the bounds
  partial_integer = MDL_PARTINT,   ///< integer below the limit, continuous above
  semi_continuous = MDL_SEMICONT,  ///< 0 or within [limit, ub]
  semi_integer = MDL_SEMIINT       ///< 0 or an integer within [limit, ub]
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
  priority = MDL_DIR_PRIORITY,    ///< branching priority (value 0..1000, lower first)
  up = MDL_DIR_UP,                ///< branch up first
  down = MDL_DIR_DOWN,            ///< branch down first
  pseudo_up = MDL_DIR_PSEUDOUP,   ///< up pseudo cost (value)
  pseudo_down = MDL_DIR_PSEUDODN  ///< down pseudo cost (value)
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
  not_loaded = KVSL_MIP_NOT_LOADED,           ///< nothing loaded
  lp_not_optimal = KVSL_MIP_LP_NOT_OPTIMAL,   ///< relaxation not optimised
  lp_optimal = KVSL_MIP_LP_OPTIMAL,           ///< relaxation optimised, no search
  no_solution_found = KVSL_MIP_NO_SOL_FOUND,  ///< search incomplete, no solution
  solution = KVSL_MIP_SOLUTION,               ///< search incomplete with a solution
  infeasible = KVSL_MIP_INFEAS,               ///< search complete: infeasible
  optimal = KVSL_MIP_OPTIMAL,                 ///< search complete: optimal
  unbounded = KVSL_MIP_UNBOUNDED              ///< relaxation unbounded
};

/// @cond KVTL_INTERNALS
// Implementation details: not part of the interface.
namespace detail {

// What the library reported while one wrapped call ran: its first error and
// an exception thrown by application code called back from inside the call.
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

// One wrapped call: collects what the library reports while it runs and
// turns it into an exception afterwards.  Nested calls (from callbacks
// inside a call) have frames of their own.
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

// Run one C call whose result `failed` tells failure, then throw.
template <class F, class P>
auto checked(const char *fn, F &&f, P &&failed) {
  call_frame frame;
  auto result = std::forward<F>(f)();
  frame.raise(fn, std::forward<P>(failed)(result));
  return result;
}

// Run one C call whose result tells nothing, then throw what the library
// reported.
template <class F>
auto checked(const char *fn, F &&f) {
  return checked(fn, std::forward<F>(f), [](const auto &) { return false; });
}

// Result tests of the C conventions.
inline bool nonzero(int rc) { return rc != 0; }
inline bool negative(int rc) { return rc < 0; }
template <class T>
bool is_null(T *p) {
  return p == nullptr;
}
// A name argument: null for the empty name (the library then makes one).
inline const char *c_name(const std::string &name) { return name.empty() ? nullptr : name.c_str(); }

// Per problem: the handlers the C callbacks reach, at a fixed address so
// that a moved problem keeps working.
struct problem_state {
  MDLprob prob = nullptr;
  std::function<void(int, std::string_view)> on_warning;
  std::function<void(std::string_view)> on_message;
};

// Error callback of every problem (user: its state) and the global one
// (user null): errors go to the running call, warnings to the problem's
// handler.
inline void error_trampoline(MDLprob, void *user, int number, int iserror, const char *text) noexcept {
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
  }
  ~library_guard() { mdlslfinish(); }
  library_guard(const library_guard &) = delete;
  library_guard &operator=(const library_guard &) = delete;
};

inline void start_library() { static library_guard guard; }

}  // namespace detail
/// @endcond

/**
 * @brief What the handles of model objects share: the C handle they wrap,
 * a test for naming an object and comparison by identity.
 * @tparam H the C handle type
 */
template <class H>
class basic_handle {
 public:
  /// @brief The C handle, for the C functions this header does not wrap.
  /// @return the handle, null for none
  [[nodiscard]] H handle() const noexcept { return h_; }
  /// @brief Whether the handle names an object.
  /// @return true for a non-null handle
  explicit operator bool() const noexcept { return h_ != nullptr; }
  /// @brief Whether two handles name the same object.
  /// @param a, b the handles
  /// @return true for the same object
  friend bool operator==(const basic_handle &a, const basic_handle &b) = default;

 protected:
  /// @brief A handle naming nothing.
  basic_handle() = default;
  /// @brief The handle of a C object.
  /// @param h the C handle
  explicit basic_handle(H h) noexcept : h_(h) {}
  /// The C handle.
  H h_ = nullptr;
};

/**
 * @brief A decision variable of a problem (a non-owning handle).
 *
 * Compares by identity with ==; usable as a map key.  A default-constructed
 * handle names no variable: calls on it throw kvtl::error 1505.  Handles
 * stay valid while their problem lives.
 */
class variable : public basic_handle<MDLvar> {
 public:
  /// @brief A handle naming no variable.
  variable() = default;
  /// @brief The handle of a C variable.
  /// @param v the C handle
  explicit variable(MDLvar v) noexcept : basic_handle(v) {}

  /// @brief The name.
  /// @return the name, or the generated name of an unnamed variable
  /// @throws kvtl::error for no variable
  [[nodiscard]] std::string name() const {
    return detail::checked("mdlgetvarname", [&] { return mdlgetvarname(h_); }, detail::is_null<const char>);
  }
  /// @brief The type.
  /// @return the variable's type
  /// @throws kvtl::error for no variable
  [[nodiscard]] var_type type() const {
    return static_cast<var_type>(detail::checked("mdlgetvartype", [&] { return mdlgetvartype(h_); }, detail::negative));
  }
  /// @brief Change the type.
  /// @param t the new type
  /// @throws kvtl::error 1531 for a type out of range, 1505 for no variable
  void set_type(var_type t) const {
    detail::checked("mdlsetvartype", [&] { return mdlsetvartype(h_, static_cast<int>(t)); }, detail::nonzero);
  }
  /// @brief The lower bound.
  /// @return the bound (-kvtl::infinity when unbounded)
  /// @throws kvtl::error for no variable
  [[nodiscard]] double lb() const { return bounds().first; }
  /// @brief The upper bound.
  /// @return the bound (kvtl::infinity when unbounded)
  /// @throws kvtl::error for no variable
  [[nodiscard]] double ub() const { return bounds().second; }
  /// @brief Both bounds.
  /// @return (lower, upper)
  /// @throws kvtl::error for no variable
  [[nodiscard]] std::pair<double, double> bounds() const {
    double lo = 0, up = 0;
    detail::checked("mdlgetbounds", [&] { return mdlgetbounds(h_, &lo, &up); }, detail::nonzero);
    return {lo, up};
  }
  /// @brief Set the lower bound.
  /// @param value the new bound
  /// @throws kvtl::error 1530 when above the upper bound, 1505 for no variable
  void set_lb(double value) const {
    detail::checked("mdlsetlb", [&] { return mdlsetlb(h_, value); }, detail::nonzero);
  }
  /// @brief Set the upper bound.
  /// @param value the new bound
  /// @throws kvtl::error 1530 when below the lower bound, 1505 for no variable
  void set_ub(double value) const {
    detail::checked("mdlsetub", [&] { return mdlsetub(h_, value); }, detail::nonzero);
  }
  /// @brief Set both bounds to one value.
  /// @param value the value
  /// @throws kvtl::error for no variable
  void fix(double value) const {
    detail::checked("mdlfixvar", [&] { return mdlfixvar(h_, value); }, detail::nonzero);
  }
  /// @brief The limit of a partial-integer or semi-continuous variable.
  /// @return the limit
  /// @throws kvtl::error for no variable
  [[nodiscard]] double limit() const {
    double v = 0;
    detail::checked("mdlgetlim", [&] { return mdlgetlim(h_, &v); }, detail::nonzero);
    return v;
  }
  /// @brief Set the limit of a partial-integer or semi-continuous variable
  /// (warnings 1592 and 1593 go to the warning handler).
  /// @param value the limit
  /// @throws kvtl::error for no variable
  void set_limit(double value) const {
    detail::checked("mdlsetlim", [&] { return mdlsetlim(h_, value); }, detail::nonzero);
  }
  /// @brief The column in the loaded matrix.
  /// @return the column, -1 without one
  /// @throws kvtl::error for no variable
  [[nodiscard]] int column() const {
    return detail::checked("mdlgetcolnum", [&] { return mdlgetcolnum(h_); });
  }
  /// @brief The value in the current solution.
  /// @return the value; 0 with warning 1520 when there is no solution; for
  ///         a variable without a column the feasible value nearest to 0
  /// @throws kvtl::error 1505 for no variable
  [[nodiscard]] double value() const {
    return detail::checked("mdlgetsol", [&] { return mdlgetsol(h_); });
  }
  /// @brief The reduced cost in the current LP solution.
  /// @return the reduced cost (0 with warning 1520 without a solution)
  /// @throws kvtl::error 1505 for no variable
  [[nodiscard]] double reduced_cost() const {
    return detail::checked("mdlgetrcost", [&] { return mdlgetrcost(h_); });
  }
  /// @brief Append a branching directive.
  /// @param kind the directive
  /// @param value the priority or pseudo cost (unused for up and down)
  /// @throws kvtl::error 1547 for a kind out of range, 1505 for no variable
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
  /// @brief Ranging of the current LP solution (computed once per solution).
  /// @return the six ranging values
  /// @throws kvtl::error for no variable or when the engine cannot range
  [[nodiscard]] ranging range() const {
    auto get = [&](int code) { return detail::checked("mdlgetvarrng", [&] { return mdlgetvarrng(h_, code); }); };
    return {get(MDL_RNG_UPACT), get(MDL_RNG_LOACT), get(MDL_RNG_UUP),
            get(MDL_RNG_UDN),   get(MDL_RNG_UCOST), get(MDL_RNG_LCOST)};
  }
};

/**
 * @brief A constraint of a problem (a non-owning handle).
 *
 * Compares by identity with ==; usable as a map key.  Valid until removed
 * (problem::remove) or until its problem is destroyed.
 */
class constraint : public basic_handle<MDLctr> {
 public:
  /// @brief A handle naming no constraint.
  constraint() = default;
  /// @brief The handle of a C constraint.
  /// @param c the C handle
  explicit constraint(MDLctr c) noexcept : basic_handle(c) {}

  /// @brief The name.
  /// @return the name, or the generated name of an unnamed constraint
  /// @throws kvtl::error for no constraint
  [[nodiscard]] std::string name() const {
    return detail::checked("mdlgetctrname", [&] { return mdlgetctrname(h_); }, detail::is_null<const char>);
  }
  /// @brief The type.
  /// @return the constraint's type
  /// @throws kvtl::error for no constraint
  [[nodiscard]] ctr_type type() const {
    return static_cast<ctr_type>(detail::checked("mdlgetctrtype", [&] { return mdlgetctrtype(h_); }, detail::negative));
  }
  /// @brief Change the type (to ctr_type::range only through set_range).
  /// @param t the new type
  /// @throws kvtl::error 1535 for a type out of range, 1507 for no constraint
  void set_type(ctr_type t) const {
    detail::checked("mdlsetctrtype", [&] { return mdlsetctrtype(h_, static_cast<int>(t)); }, detail::nonzero);
  }
  /// @brief The right-hand side.
  /// @return the rhs (the negated constant of its expression)
  /// @throws kvtl::error 1507 for no constraint
  [[nodiscard]] double rhs() const {
    return detail::checked("mdlgetrhs", [&] { return mdlgetrhs(h_); });
  }
  /// @brief Make the constraint lower <= terms <= upper (an equation when
  /// they are equal).
  /// @param lower, upper the limits
  /// @throws kvtl::error 1536 when lower > upper, 1507 for no constraint
  void set_range(double lower, double upper) const {
    detail::checked("mdlsetrange", [&] { return mdlsetrange(h_, lower, upper); }, detail::nonzero);
  }
  /// @brief A variable's coefficient.
  /// @param v the variable
  /// @return its coefficient, 0 when it has no term
  /// @throws kvtl::error 1507 for no constraint
  [[nodiscard]] double coefficient(variable v) const {
    return detail::checked("mdlgetcoeff", [&] { return mdlgetcoeff(h_, v.handle()); });
  }
  /// @brief Set a variable's coefficient (0 removes the term).
  /// @param v the variable
  /// @param coef its new coefficient
  /// @throws kvtl::error 1507 for no constraint
  void set_coefficient(variable v, double coef) const {
    detail::checked("mdlsetterm", [&] { return mdlsetterm(h_, v.handle(), coef); }, detail::nonzero);
  }
  /// @brief Make it an indicator constraint.
  /// @param v a binary variable
  /// @param when_one the constraint holds when @p v is 1 (true) or 0 (false)
  /// @throws kvtl::error 1539 for a constraint of another type than L, G, E
  void set_indicator(variable v, bool when_one = true) const {
    detail::checked("mdlsetindicator", [&] { return mdlsetindicator(h_, when_one ? 1 : -1, v.handle()); },
                    detail::nonzero);
  }
  /// @brief The row in the loaded matrix.
  /// @return the row, -1 without one
  /// @throws kvtl::error 1507 for no constraint
  [[nodiscard]] int row() const {
    return detail::checked("mdlgetrownum", [&] { return mdlgetrownum(h_); });
  }
  /// @brief The activity in the current solution.
  /// @return the terms' value (without the constant)
  /// @throws kvtl::error 1507 for no constraint
  [[nodiscard]] double activity() const {
    return detail::checked("mdlgetact", [&] { return mdlgetact(h_); });
  }
  /// @brief The slack in the current solution.
  /// @return the rhs minus the activity
  /// @throws kvtl::error 1507 for no constraint
  [[nodiscard]] double slack() const {
    return detail::checked("mdlgetslack", [&] { return mdlgetslack(h_); });
  }
  /// @brief The dual value in the current LP solution.
  /// @return the dual value
  /// @throws kvtl::error 1507 for no constraint
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
  /// @brief Ranging of the current LP solution.
  /// @return the four ranging values
  /// @throws kvtl::error for no constraint or when the engine cannot range
  [[nodiscard]] ranging range() const {
    auto get = [&](int code) { return detail::checked("mdlgetctrrng", [&] { return mdlgetctrrng(h_, code); }); };
    return {get(MDL_RNG_UPACT), get(MDL_RNG_LOACT), get(MDL_RNG_UUP), get(MDL_RNG_UDN)};
  }
};

/**
 * @brief A special ordered set of a problem (a non-owning handle).
 *
 * Compares by identity with ==; usable as a map key.
 */
class sos : public basic_handle<MDLsos> {
 public:
  /// @brief A handle naming no set.
  sos() = default;
  /// @brief The handle of a C set.
  /// @param s the C handle
  explicit sos(MDLsos s) noexcept : basic_handle(s) {}
  /// @brief The name.
  /// @return the name, or the generated name of an unnamed set
  /// @throws kvtl::error for no set
  [[nodiscard]] std::string name() const {
    return detail::checked("mdlgetsosname", [&] { return mdlgetsosname(h_); }, detail::is_null<const char>);
  }
  /// @brief The type.
  /// @return the set's type
  /// @throws kvtl::error for no set
  [[nodiscard]] sos_type type() const {
    return static_cast<sos_type>(detail::checked("mdlgetsostype", [&] { return mdlgetsostype(h_); }, detail::negative));
  }
  /// @brief Add a weight to a member (a new member when absent).
  /// @param v the member
  /// @param weight its (reference) weight
  /// @throws kvtl::error 1508 for no set
  void add(variable v, double weight) const {
    detail::checked("mdladdsosel", [&] { return mdladdsosel(h_, v.handle(), weight); }, detail::nonzero);
  }
  /// @brief Append a branching directive to the set.
  /// @param kind the directive
  /// @param value the priority or pseudo cost
  /// @throws kvtl::error 1547 for a kind out of range, 1508 for no set
  void set_directive(directive kind, double value = 0) const {
    detail::checked("mdlsetsosdir", [&] { return mdlsetsosdir(h_, static_cast<int>(kind), value); },
                    detail::nonzero);
  }
};

/**
 * @brief A cut: an inequality kept outside the model, sent to the engine
 * during the search (a non-owning handle; problem::remove deletes it).
 *
 * Compares by identity with ==; usable as a map key.
 */
class cut : public basic_handle<MDLcut> {
 public:
  /// @brief A handle naming no cut.
  cut() = default;
  /// @brief The handle of a C cut.
  /// @param c the C handle
  explicit cut(MDLcut c) noexcept : basic_handle(c) {}
  /// @brief The cut's type number.
  /// @return the number given when it was made
  /// @throws kvtl::error 1509 for no cut
  [[nodiscard]] int id() const {
    return detail::checked("mdlgetcutid", [&] { return mdlgetcutid(h_); });
  }
  /// @brief The relation.
  /// @return leq, geq or eq
  /// @throws kvtl::error 1509 for no cut
  [[nodiscard]] ctr_type type() const {
    return static_cast<ctr_type>(detail::checked("mdlgetcuttype", [&] { return mdlgetcuttype(h_); }, detail::negative));
  }
  /// @brief The right-hand side.
  /// @return the rhs
  /// @throws kvtl::error 1509 for no cut
  [[nodiscard]] double rhs() const {
    return detail::checked("mdlgetcutrhs", [&] { return mdlgetcutrhs(h_); });
  }
};

}  // namespace kvtl

/// @cond KVTL_STD_SPECIALISATIONS
// Handles hash and order by address, for the standard containers.
namespace kvtl::detail {
struct handle_hash {
  template <class T>
  std::size_t operator()(const basic_handle<T> &h) const noexcept {
    return std::hash<T>{}(h.handle());
  }
};
struct handle_less {
  template <class T>
  bool operator()(const basic_handle<T> &a, const basic_handle<T> &b) const noexcept {
    return std::less<T>{}(a.handle(), b.handle());
  }
};
}  // namespace kvtl::detail
template <>
struct std::hash<kvtl::variable> : kvtl::detail::handle_hash {};
template <>
struct std::less<kvtl::variable> : kvtl::detail::handle_less {};
template <>
struct std::hash<kvtl::constraint> : kvtl::detail::handle_hash {};
template <>
struct std::less<kvtl::constraint> : kvtl::detail::handle_less {};
template <>
struct std::hash<kvtl::sos> : kvtl::detail::handle_hash {};
template <>
struct std::less<kvtl::sos> : kvtl::detail::handle_less {};
template <>
struct std::hash<kvtl::cut> : kvtl::detail::handle_hash {};
template <>
struct std::less<kvtl::cut> : kvtl::detail::handle_less {};
/// @endcond

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
 * is used).  The product of two linear expressions is a kvtl::quad_expr.
 */
class linear_expr {
 public:
  /// @brief The expression 0.
  linear_expr() = default;
  /// @brief A constant expression.
  /// @param c the constant
  linear_expr(double c) : constant_(c) {}  // NOLINT: numbers are expressions
  /// @brief A variable with coefficient 1.
  /// @param v the variable
  linear_expr(variable v) : terms_{{v, 1.0}} {}  // NOLINT: variables are expressions

  /// @brief The constant part.
  /// @return the constant
  [[nodiscard]] double constant() const noexcept { return constant_; }
  /// @brief The terms.
  /// @return the terms in the order they were added
  [[nodiscard]] std::span<const linear_term> terms() const noexcept { return terms_; }
  /// @brief Add one term.
  /// @param v the variable
  /// @param coef its coefficient
  /// @return this expression
  linear_expr &add_term(variable v, double coef) {
    terms_.push_back({v, coef});
    return *this;
  }
  /// @brief Add an expression.
  /// @param e the expression added
  /// @return this expression
  linear_expr &operator+=(const linear_expr &e) {
    constant_ += e.constant_;
    // By index after reserving: e may be this expression.
    const std::size_t n = e.terms_.size();
    terms_.reserve(terms_.size() + n);
    for (std::size_t i = 0; i < n; ++i) terms_.push_back(e.terms_[i]);
    return *this;
  }
  /// @brief Subtract an expression.
  /// @param e the expression subtracted
  /// @return this expression
  linear_expr &operator-=(const linear_expr &e) {
    constant_ -= e.constant_;
    const std::size_t n = e.terms_.size();
    terms_.reserve(terms_.size() + n);
    for (std::size_t i = 0; i < n; ++i) terms_.push_back({e.terms_[i].var, -e.terms_[i].coef});
    return *this;
  }
  /// @brief Multiply by a number.
  /// @param f the factor
  /// @return this expression
  linear_expr &operator*=(double f) {
    constant_ *= f;
    for (linear_term &t : terms_) t.coef *= f;
    return *this;
  }
  /// @brief Divide by a number.
  /// @param f the divisor
  /// @return this expression
  linear_expr &operator/=(double f) { return *this *= 1.0 / f; }
  /// @brief The value at the current solution.
  /// @return the constant plus the terms' values
  /// @throws kvtl::error as variable::value
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
  /// @brief The expression 0.
  quad_expr() = default;
  /// @brief A linear expression as a quadratic one.
  /// @param e the linear expression
  quad_expr(linear_expr e) : linear_(std::move(e)) {}  // NOLINT: linear is quadratic

  /// @brief The linear part.
  /// @return the linear part with the constant
  [[nodiscard]] const linear_expr &linear() const noexcept { return linear_; }
  /// @brief The quadratic terms.
  /// @return the terms in the order they were added
  [[nodiscard]] std::span<const quad_term> quad_terms() const noexcept { return quad_; }
  /// @brief Add one quadratic term.
  /// @param a, b the variables
  /// @param coef the coefficient of a * b
  /// @return this expression
  quad_expr &add_term(variable a, variable b, double coef) {
    quad_.push_back({a, b, coef});
    return *this;
  }
  /// @brief Add an expression.
  /// @param e the expression added
  /// @return this expression
  quad_expr &operator+=(const quad_expr &e) {
    linear_ += e.linear_;
    // By index after reserving: e may be this expression.
    const std::size_t n = e.quad_.size();
    quad_.reserve(quad_.size() + n);
    for (std::size_t i = 0; i < n; ++i) quad_.push_back(e.quad_[i]);
    return *this;
  }
  /// @brief Add a linear expression.
  /// @param e the expression added
  /// @return this expression
  quad_expr &operator+=(const linear_expr &e) {
    linear_ += e;
    return *this;
  }
  /// @brief Subtract an expression.
  /// @param e the expression subtracted
  /// @return this expression
  quad_expr &operator-=(const quad_expr &e) {
    linear_ -= e.linear_;
    const std::size_t n = e.quad_.size();
    quad_.reserve(quad_.size() + n);
    for (std::size_t i = 0; i < n; ++i) quad_.push_back({e.quad_[i].var1, e.quad_[i].var2, -e.quad_[i].coef});
    return *this;
  }
  /// @brief Subtract a linear expression.
  /// @param e the expression subtracted
  /// @return this expression
  quad_expr &operator-=(const linear_expr &e) {
    linear_ -= e;
    return *this;
  }
  /// @brief Multiply by a number.
  /// @param f the factor
  /// @return this expression
  quad_expr &operator*=(double f) {
    linear_ *= f;
    for (quad_term &t : quad_) t.coef *= f;
    return *this;
  }
  /// @brief Divide by a number.
  /// @param f the divisor
  /// @return this expression
  quad_expr &operator/=(double f) { return *this *= 1.0 / f; }
  /// @brief The value at the current solution.
  /// @return the linear part's value plus the quadratic terms' values
  /// @throws kvtl::error as variable::value
  [[nodiscard]] double value() const {
    double v = linear_.value();
    for (const quad_term &t : quad_) v += t.coef * t.var1.value() * t.var2.value();
    return v;
  }

 private:
  linear_expr linear_;
  std::vector<quad_term> quad_;
};

/// @brief Sum of two linear expressions.
/// @param a, b the operands (variables and numbers convert)
/// @return a + b
inline linear_expr operator+(linear_expr a, const linear_expr &b) { return a += b; }
/// @brief Difference of two linear expressions.
/// @param a, b the operands
/// @return a - b
inline linear_expr operator-(linear_expr a, const linear_expr &b) { return a -= b; }
/// @brief Negation.
/// @param a the operand
/// @return -a
inline linear_expr operator-(linear_expr a) { return a *= -1.0; }
/// @brief A number times a linear expression.
/// @param f the number
/// @param a the expression
/// @return f * a
inline linear_expr operator*(double f, linear_expr a) { return a *= f; }
/// @brief A linear expression times a number.
/// @param a the expression
/// @param f the number
/// @return a * f
inline linear_expr operator*(linear_expr a, double f) { return a *= f; }
/// @brief A linear expression divided by a number.
/// @param a the expression
/// @param f the divisor
/// @return a / f
inline linear_expr operator/(linear_expr a, double f) { return a /= f; }
/// @brief The product of two linear expressions (`x*y`, `(x - 1)*(x - 1)`).
/// @param a, b the factors
/// @return a * b as a quadratic expression
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
/// @brief Sum of two quadratic expressions.
/// @param a, b the operands
/// @return a + b
inline quad_expr operator+(quad_expr a, const quad_expr &b) { return a += b; }
/// @brief Sum of a quadratic and a linear expression.
/// @param a, b the operands
/// @return a + b
inline quad_expr operator+(quad_expr a, const linear_expr &b) { return a += b; }
/// @brief Sum of a linear and a quadratic expression.
/// @param a, b the operands
/// @return a + b
inline quad_expr operator+(const linear_expr &a, quad_expr b) { return b += a; }
/// @brief Difference of two quadratic expressions.
/// @param a, b the operands
/// @return a - b
inline quad_expr operator-(quad_expr a, const quad_expr &b) { return a -= b; }
/// @brief Difference of a quadratic and a linear expression.
/// @param a, b the operands
/// @return a - b
inline quad_expr operator-(quad_expr a, const linear_expr &b) { return a -= b; }
/// @brief Difference of a linear and a quadratic expression.
/// @param a, b the operands
/// @return a - b
inline quad_expr operator-(const linear_expr &a, const quad_expr &b) { return quad_expr(a) -= b; }
/// @brief Negation.
/// @param a the operand
/// @return -a
inline quad_expr operator-(quad_expr a) { return a *= -1.0; }
/// @brief A number times a quadratic expression.
/// @param f the number
/// @param a the expression
/// @return f * a
inline quad_expr operator*(double f, quad_expr a) { return a *= f; }
/// @brief A quadratic expression times a number.
/// @param a the expression
/// @param f the number
/// @return a * f
inline quad_expr operator*(quad_expr a, double f) { return a *= f; }
/// @brief A quadratic expression divided by a number.
/// @param a the expression
/// @param f the divisor
/// @return a / f
inline quad_expr operator/(quad_expr a, double f) { return a /= f; }

/**
 * @brief A linear relation "expression type 0", made by comparing linear
 * expressions with <=, >= or == (`2*x + 3*y <= 10`).
 *
 * Two plain variables compared with == give a bool (whether they are the
 * same variable); write `x - y == 0` for the equation.
 */
struct linear_relation {
  linear_expr expr;  ///< left side minus right side
  ctr_type type;     ///< the relation of expr to 0
};

/// @brief A quadratic relation "expression type 0" (`x*x + y*y <= 1`).
struct quad_relation {
  quad_expr expr;  ///< left side minus right side
  ctr_type type;   ///< the relation of expr to 0
  /// @brief A relation from its parts.
  /// @param e the expression
  /// @param t its relation to 0
  quad_relation(quad_expr e, ctr_type t) : expr(std::move(e)), type(t) {}
  /// @brief A linear relation as a quadratic one.
  /// @param r the linear relation
  quad_relation(linear_relation r) : expr(std::move(r.expr)), type(r.type) {}  // NOLINT
};

/// @brief The relation a <= b.
/// @param a, b the sides (variables and numbers convert)
/// @return the relation a - b <= 0
inline linear_relation operator<=(const linear_expr &a, const linear_expr &b) { return {a - b, ctr_type::leq}; }
/// @brief The relation a >= b.
/// @param a, b the sides
/// @return the relation a - b >= 0
inline linear_relation operator>=(const linear_expr &a, const linear_expr &b) { return {a - b, ctr_type::geq}; }
/// @brief The relation a == b (an equation, not a comparison).
/// @param a, b the sides
/// @return the relation a - b == 0
inline linear_relation operator==(const linear_expr &a, const linear_expr &b) { return {a - b, ctr_type::eq}; }
/// @brief The relation a <= b.
/// @param a, b the sides
/// @return the relation a - b <= 0
inline quad_relation operator<=(const quad_expr &a, const linear_expr &b) { return {a - b, ctr_type::leq}; }
/// @brief The relation a >= b.
/// @param a, b the sides
/// @return the relation a - b >= 0
inline quad_relation operator>=(const quad_expr &a, const linear_expr &b) { return {a - b, ctr_type::geq}; }
/// @brief The relation a == b.
/// @param a, b the sides
/// @return the relation a - b == 0
inline quad_relation operator==(const quad_expr &a, const linear_expr &b) { return {a - b, ctr_type::eq}; }
/// @brief The relation a <= b.
/// @param a, b the sides
/// @return the relation a - b <= 0
inline quad_relation operator<=(const linear_expr &a, const quad_expr &b) { return {a - b, ctr_type::leq}; }
/// @brief The relation a >= b.
/// @param a, b the sides
/// @return the relation a - b >= 0
inline quad_relation operator>=(const linear_expr &a, const quad_expr &b) { return {a - b, ctr_type::geq}; }
/// @brief The relation a == b.
/// @param a, b the sides
/// @return the relation a - b == 0
inline quad_relation operator==(const linear_expr &a, const quad_expr &b) { return {a - b, ctr_type::eq}; }
/// @brief The relation a <= b.
/// @param a, b the sides
/// @return the relation a - b <= 0
inline quad_relation operator<=(const quad_expr &a, const quad_expr &b) { return {a - b, ctr_type::leq}; }
/// @brief The relation a >= b.
/// @param a, b the sides
/// @return the relation a - b >= 0
inline quad_relation operator>=(const quad_expr &a, const quad_expr &b) { return {a - b, ctr_type::geq}; }
/// @brief The relation a == b.
/// @param a, b the sides
/// @return the relation a - b == 0
inline quad_relation operator==(const quad_expr &a, const quad_expr &b) { return {a - b, ctr_type::eq}; }

/**
 * @brief The sum of a braced list (`sum({x, y, 2 * z})`).
 * @param terms variables, numbers or linear expressions
 * @return their sum
 */
inline linear_expr sum(std::initializer_list<linear_expr> terms) {
  linear_expr e;
  for (const linear_expr &t : terms) e += t;
  return e;
}

/**
 * @brief The sum of a function over a range
 * (`sum(std::views::iota(0, n), [&](int i) { return value[i] * take[i]; })`).
 * @param r an input range
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
    static_assert(std::is_convertible_v<V, quad_expr>,
                  "kvtl::sum: the elements must be (or the function must give) variables, numbers or expressions");
    quad_expr e;
    for (auto &&x : r) e += quad_expr(f(x));
    return e;
  }
}

/**
 * @brief The sum of the elements of a range.
 * @param r an input range of variables, numbers or expressions (a
 *        std::vector<variable>, a plain array, a view ...)
 * @return a linear_expr, or a quad_expr for quadratic elements
 */
template <std::ranges::input_range R>
auto sum(R &&r) {
  return sum(std::forward<R>(r), std::identity{});
}

/**
 * @brief What a search callback can do: read the values of the solution it
 * is about and add cuts to the search.  Valid only during the callback.
 */
class callback_context {
 public:
  /// @brief A variable's value in the solution the callback is about.
  /// @param v the variable
  /// @return its value
  /// @throws kvtl::error as variable::value
  [[nodiscard]] double value(variable v) const { return v.value(); }
  /// @brief An expression's value in the solution the callback is about.
  /// @param e the expression
  /// @return its value
  /// @throws kvtl::error as variable::value
  [[nodiscard]] double value(const linear_expr &e) const { return e.value(); }
  /// @brief Add a cut to the search: valid for the whole tree, applied
  /// wherever a solution violates it.
  /// @param r the cut (leq, geq or eq)
  /// @param id its type number
  /// @throws kvtl::error 1535 for a relation of another type
  void add_cut(const linear_relation &r, int id = 0) const;
  /// @brief Ask the search to stop at the next opportunity; the optimisation
  /// then throws kvtl::error 1524 (engine error 13) and keeps the best
  /// solution found so far.
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
 * other call throws std::logic_error.  A problem is used by one thread at a
 * time; different problems may be used by different threads at once.
 */
class problem {
 public:
  /// Cut manager: called with the relaxation solution of the search's nodes.
  using cut_manager_fn = std::function<void(callback_context &)>;
  /// Candidate handler: called with every integer solution; true rejects it.
  using candidate_fn = std::function<bool(callback_context &)>;

  /**
   * @brief Create a problem, made the calling thread's current problem.
   * @param name its name, the base of the engine's side files (empty: a
   *        generated name)
   * @throws kvtl::error 1561 when the library cannot start
   */
  explicit problem(const std::string &name = "") : state_(std::make_unique<state>()) {
    detail::start_library();
    MDLprob p = detail::checked("mdlnewprob", [&] { return mdlnewprob(detail::c_name(name)); },
                                detail::is_null<mdl_problem>);
    state_->prob = p;
    mdldefcberr_prob(p, detail::error_trampoline, static_cast<detail::problem_state *>(state_.get()));
  }
  /// @brief Delete the problem and everything created on it.
  ~problem() { release(); }
  /// @brief Not copyable.
  problem(const problem &) = delete;
  /// @brief Not copyable.
  /// @return never
  problem &operator=(const problem &) = delete;
  /// @brief Take over another problem, which becomes moved-from.
  /// @param other the problem taken over
  problem(problem &&other) noexcept = default;
  /// @brief Delete this problem and take over another, which becomes
  /// moved-from.
  /// @param other the problem taken over
  /// @return this problem
  problem &operator=(problem &&other) noexcept {
    if (this != &other) {
      release();
      state_ = std::move(other.state_);
    }
    return *this;
  }

  /// @brief The C handle, for the C functions this header does not wrap.
  /// @return the handle, null when moved-from
  [[nodiscard]] MDLprob handle() const noexcept { return state_ ? state_->prob : nullptr; }
  /// @brief The engine problem, for engine controls and attributes.
  /// @return the engine problem
  /// @throws std::logic_error when moved-from
  [[nodiscard]] MDLkvslprob engine() const { return mdlgetkvslprob_prob(get()); }
  /// @brief The problem's name.
  /// @return its name (its file base)
  /// @throws kvtl::error
  [[nodiscard]] std::string name() const {
    MDLprob p = get();
    return detail::checked("mdlgetprobname", [&] { return mdlgetprobname_prob(p); }, detail::is_null<const char>);
  }

  /// @brief Set the message level.
  /// @param level 0 silent, 1 errors, 2 warnings, 3 solver log (default), 4
  ///        and more status texts
  /// @throws kvtl::error
  void set_message_level(int level) {
    MDLprob p = get();
    detail::checked("mdlsetmsglevel", [&] { return mdlsetmsglevel_prob(p, level); }, detail::nonzero);
  }
  /// @brief Send the problem's output (reports, solver log, message lines)
  /// to a function instead of standard output.
  /// @param fn the function, called with each text; an empty one restores
  ///        standard output.  What it throws leaves the call that printed.
  /// @throws std::logic_error when moved-from
  void on_message(std::function<void(std::string_view)> fn) {
    MDLprob p = get();
    state_->on_message = std::move(fn);
    if (state_->on_message)
      mdldefcbmsg_prob(p, detail::message_trampoline, static_cast<detail::problem_state *>(state_.get()));
    else
      mdldefcbmsg_prob(p, nullptr, nullptr);
  }
  /// @brief Handle the warnings the library reports on the problem.
  /// @param fn called with the message number and text of each warning (an
  ///        empty one drops them).  What it throws leaves the call that
  ///        warned.
  /// @throws std::logic_error when moved-from
  void on_warning(std::function<void(int, std::string_view)> fn) {
    get();
    state_->on_warning = std::move(fn);
  }

  /**
   * @brief A new variable.
   * @param name its name (empty: a generated one); made unique
   * @param type its type
   * @param lb, ub its bounds (a binary's are clamped to [0, 1])
   * @return the variable
   * @throws kvtl::error 1530 when lb > ub, 1502 without memory
   */
  variable add_variable(const std::string &name = "", var_type type = var_type::continuous, double lb = 0,
                        double ub = infinity) {
    MDLprob p = get();
    return variable(detail::checked(
        "mdlnewvar", [&] { return mdlnewvar_prob(p, detail::c_name(name), static_cast<int>(type), lb, ub); },
        detail::is_null<mdl_var>));
  }
  /// @brief A new binary variable.
  /// @param name its name (empty: a generated one)
  /// @return the variable
  /// @throws kvtl::error 1502 without memory
  variable add_binary(const std::string &name = "") { return add_variable(name, var_type::binary, 0, 1); }
  /// @brief A new integer variable.
  /// @param name its name (empty: a generated one)
  /// @param lb, ub its bounds
  /// @return the variable
  /// @throws kvtl::error 1530 when lb > ub, 1502 without memory
  variable add_integer(const std::string &name = "", double lb = 0, double ub = infinity) {
    return add_variable(name, var_type::integer, lb, ub);
  }

  /**
   * @brief A new constraint from a relation (`p.add_constraint(x + y <= 4, "cap")`).
   * @param r the relation, linear or quadratic
   * @param name its name (empty: a generated one)
   * @return the constraint; when a term cannot be added none is made
   * @throws kvtl::error 1502 without memory
   */
  constraint add_constraint(const quad_relation &r, const std::string &name = "") {
    MDLprob p = get();
    MDLctr c = detail::checked("mdlnewctr",
                               [&] { return mdlnewctr_prob(p, detail::c_name(name), static_cast<int>(r.type)); },
                               detail::is_null<mdl_ctr>);
    try {
      fill(c, r.expr);
    } catch (...) {
      mdldelctr(c);
      throw;
    }
    return constraint(c);
  }
  /**
   * @brief A new constraint "e type 0"; with ctr_type::nonbinding a free
   * row, for instance an objective chosen by set_objective(constraint).
   * @param e the expression (terms plus constant)
   * @param type nonbinding, leq, geq or eq
   * @param name its name (empty: a generated one)
   * @return the constraint
   * @throws kvtl::error 1535 for another type, 1502 without memory
   */
  constraint add_constraint(const quad_expr &e, ctr_type type, const std::string &name = "") {
    return add_constraint(quad_relation(e, type), name);
  }
  /**
   * @brief A new range constraint lower <= e <= upper.
   * @param e the expression
   * @param lower, upper the limits
   * @param name its name (empty: a generated one)
   * @return the constraint
   * @throws kvtl::error 1536 when lower > upper, 1502 without memory
   */
  constraint add_range(const linear_expr &e, double lower, double upper, const std::string &name = "") {
    constraint c = add_constraint(e - e.constant() <= 0.0, name);
    try {
      c.set_range(lower - e.constant(), upper - e.constant());
    } catch (...) {
      mdldelctr(c.handle());
      throw;
    }
    return c;
  }
  /// @brief Delete a constraint with its terms.
  /// @param c the constraint
  /// @throws kvtl::error 1507 for no constraint
  void remove(constraint c) {
    get();
    detail::checked("mdldelctr", [&] { return mdldelctr(c.handle()); }, detail::nonzero);
  }

  /// @brief Make an expression the objective and store its sense.
  /// @param e the objective (linear or quadratic, constant included)
  /// @param s the sense solve() optimises in
  /// @throws kvtl::error 1502 without memory
  void set_objective(const quad_expr &e, sense s = sense::minimize) {
    MDLprob p = get();
    expr_handle x = make_expr(e);
    detail::checked("mdlsetobjexpr", [&] { return mdlsetobjexpr(p, x.get()); }, [](int rc) { return rc != 1; });
    set_sense(s);
  }
  /// @brief Make a constraint the objective.
  /// @param c a constraint of type nonbinding
  /// @throws kvtl::error
  void set_objective(constraint c) {
    MDLprob p = get();
    detail::checked("mdlsetobj", [&] { return mdlsetobj_prob(p, c.handle()); }, detail::nonzero);
  }
  /// @brief Store the objective sense.
  /// @param s the sense solve() optimises in
  /// @throws kvtl::error
  void set_sense(sense s) {
    MDLprob p = get();
    detail::checked("mdlsetsense", [&] { return mdlsetsense_prob(p, s == sense::maximize ? 1 : 0); },
                    detail::nonzero);
  }
  /// @brief The stored objective sense.
  /// @return the sense
  /// @throws kvtl::error
  [[nodiscard]] sense get_sense() const {
    MDLprob p = get();
    int s = detail::checked("mdlgetsense", [&] { return mdlgetsense_prob(p); }, detail::negative);
    return s == 1 ? sense::maximize : sense::minimize;
  }

  /**
   * @brief A new special ordered set.
   * @param t its type
   * @param weights its members: the linear terms, coefficients the weights
   * @param name its name (empty: a generated one)
   * @return the set; when a member cannot be added none is made
   * @throws kvtl::error 1545 for a type out of range, 1502 without memory
   */
  sos add_sos(sos_type t, const linear_expr &weights, const std::string &name = "") {
    MDLprob p = get();
    sos s(detail::checked("mdlnewsos", [&] { return mdlnewsos_prob(p, detail::c_name(name), static_cast<int>(t)); },
                          detail::is_null<mdl_sos>));
    try {
      for (const linear_term &m : weights.terms()) s.add(m.var, m.coef);
    } catch (...) {
      mdldelsos(s.handle());
      throw;
    }
    return s;
  }

  /**
   * @brief Minimise the objective.
   * @param options engine option letters: "" solves an LP, a QP or a MIP's
   *        relaxation, "g" runs the global search of a MIP; also p (primal),
   *        d (dual), b (barrier), n, l
   * @throws kvtl::error 1523 for an unknown option, 1524 when the engine
   *         fails; or what a callback or handler threw
   */
  void minimize(const std::string &options = "") {
    MDLprob p = get();
    detail::checked("mdlminim", [&] { return mdlminim_prob(p, options.c_str()); }, detail::nonzero);
  }
  /// @brief Maximise the objective.
  /// @param options engine option letters, as for minimize()
  /// @throws kvtl::error as minimize()
  void maximize(const std::string &options = "") {
    MDLprob p = get();
    detail::checked("mdlmaxim", [&] { return mdlmaxim_prob(p, options.c_str()); }, detail::nonzero);
  }
  /// @brief Optimise in the stored sense.
  /// @param options engine option letters, as for minimize()
  /// @throws kvtl::error as minimize()
  void solve(const std::string &options = "") {
    MDLprob p = get();
    detail::checked("mdlsolve", [&] { return mdlsolve_prob(p, options.c_str()); }, detail::nonzero);
  }
  /// @brief Solve the LP (or QP) relaxation in the stored sense.
  /// @param options engine option letters b c d n p
  /// @throws kvtl::error as minimize()
  void lp_optimize(const std::string &options = "") {
    MDLprob p = get();
    detail::checked("mdllpoptimize", [&] { return mdllpoptimize_prob(p, options.c_str()); }, detail::nonzero);
  }
  /// @brief Run the global search in the stored sense.
  /// @param options engine option letters b c d l n p
  /// @throws kvtl::error as minimize()
  void mip_optimize(const std::string &options = "") {
    MDLprob p = get();
    detail::checked("mdlmipoptimize", [&] { return mdlmipoptimize_prob(p, options.c_str()); }, detail::nonzero);
  }
  /// @brief Fix the global entities at their MIP solution values, so that
  /// an LP solve then gives duals and reduced costs.
  /// @param round round the values to integers first
  /// @throws kvtl::error
  void fix_globals(bool round = false) {
    MDLprob p = get();
    detail::checked("mdlfixglobals", [&] { return mdlfixglobals_prob(p, round ? 1 : 0); }, detail::nonzero);
  }
  /// @brief The LP status of the last optimisation.
  /// @return the status
  /// @throws kvtl::error
  [[nodiscard]] lp_status get_lp_status() const {
    MDLprob p = get();
    return static_cast<lp_status>(detail::checked("mdlgetlpstat", [&] { return mdlgetlpstat_prob(p); }));
  }
  /// @brief The MIP status of the last optimisation.
  /// @return the status
  /// @throws kvtl::error
  [[nodiscard]] mip_status get_mip_status() const {
    MDLprob p = get();
    return static_cast<mip_status>(detail::checked("mdlgetmipstat", [&] { return mdlgetmipstat_prob(p); }));
  }
  /// @brief The objective value of the current solution.
  /// @return the value (0 with a warning without a solution)
  /// @throws kvtl::error
  [[nodiscard]] double objective_value() const {
    MDLprob p = get();
    return detail::checked("mdlgetobjval", [&] { return mdlgetobjval_prob(p); });
  }

  /**
   * @brief Offer a (partial) MIP start for the next global search.
   * @param values variables with their values
   * @param name its name in the engine's log (empty: unnamed)
   * @throws kvtl::error 1502 without memory; number 0 when the model cannot
   *         be loaded or the engine refuses the start
   */
  void add_mip_start(const std::vector<std::pair<variable, double>> &values, const std::string &name = "") {
    MDLprob p = get();
    std::unique_ptr<mdl_sol, sol_deleter> sol(
        detail::checked("mdlnewsol", [&] { return mdlnewsol_prob(p); }, detail::is_null<mdl_sol>));
    for (const auto &[v, x] : values)
      detail::checked("mdlsetsolvar", [&] { return mdlsetsolvar(sol.get(), v.handle(), x); }, detail::nonzero);
    int rc = detail::checked("mdladdmipsol", [&] { return mdladdmipsol_prob(p, sol.get(), detail::c_name(name)); });
    if (rc != 0) throw error(0, "mdladdmipsol failed (" + std::to_string(rc) + ")");
  }

  /// @brief Set an integer engine control (KVSL_CTRL_* of kvsl.h).
  /// @param control the control number
  /// @param value its value
  /// @throws kvtl::error (number 0) when the engine refuses
  void set_control(int control, int value) {
    MDLkvslprob e = engine();
    if (KVSLsetintcontrol(e, control, value) != 0)
      throw error(0, "KVSLsetintcontrol(" + std::to_string(control) + ") failed");
  }
  /// @brief Set a double engine control (KVSL_CTRL_* of kvsl.h).
  /// @param control the control number
  /// @param value its value
  /// @throws kvtl::error (number 0) when the engine refuses
  void set_control(int control, double value) {
    MDLkvslprob e = engine();
    if (KVSLsetdblcontrol(e, control, value) != 0)
      throw error(0, "KVSLsetdblcontrol(" + std::to_string(control) + ") failed");
  }

  /// @brief Write the model as an LP file.
  /// @param file the file name (".lp" appended when it has no extension;
  ///        empty: the problem's name)
  /// @throws kvtl::error (number 0 when the file cannot be written)
  void export_lp(const std::string &file) { export_model(MDL_FILE_LP, file); }
  /// @brief Write the model as a fixed-column MPS file.
  /// @param file the file name (".mps" appended when it has no extension;
  ///        empty: the problem's name)
  /// @throws kvtl::error (number 0 when the file cannot be written)
  void export_mps(const std::string &file) { export_model(MDL_FILE_MPS, file); }
  /// @brief Print the model through the problem's output (on_message, else
  /// standard output).
  /// @throws kvtl::error
  void print() {
    MDLprob p = get();
    detail::checked("mdlprintprob", [&] { return mdlprintprob_prob(p); }, detail::nonzero);
  }

  /// @brief A new cut, kept outside the model until sent in a callback.
  /// @param r the cut (leq, geq or eq)
  /// @param id its type number
  /// @return the cut; delete it with remove(cut)
  /// @throws kvtl::error 1535 for a relation of another type
  cut add_cut(const linear_relation &r, int id = 0) { return cut(make_cut(get(), r, id)); }
  /// @brief Delete a cut.
  /// @param c the cut
  /// @throws kvtl::error 1509 for no cut
  void remove(cut c) {
    get();
    detail::checked("mdldelcut", [&] { return mdldelcut(c.handle()); }, detail::nonzero);
  }
  /// @brief Set the cut mode.
  /// @param mode 0 lets the engine presolve the search, 1 keeps the columns
  ///        as loaded so that cuts can be added
  /// @throws kvtl::error
  void set_cut_mode(int mode) {
    MDLprob p = get();
    detail::checked("mdlsetcutmode", [&] { return mdlsetcutmode_prob(p, mode); }, detail::nonzero);
  }

  /**
   * @brief Take part in the global search as its cut manager: called at the
   * root and the nodes with the node's relaxation solution; the cuts it
   * adds go into the node, which is solved again.
   *
   * Sets cut mode 1.  What @p fn throws stops the search and leaves the
   * optimisation call.  Needs the engine library (kvtl::kvsl).
   * @param fn the cut manager (empty: remove it)
   * @throws kvtl::error when the engine refuses
   */
  void on_cut_manager(cut_manager_fn fn) {
    MDLkvslprob e = engine();
    state_->cut_manager = std::move(fn);
    if (state_->cut_manager) set_cut_mode(1);
    if (KVSLsetcbcutmgr(e, state_->cut_manager ? &cut_manager_trampoline : nullptr, state_.get()) != 0)
      throw error(0, "KVSLsetcbcutmgr failed");
  }
  /**
   * @brief See every integer solution before the search accepts it; a
   * rejected one never becomes the incumbent (add cuts that cut it off).
   *
   * Sets cut mode 1.  What @p fn throws stops the search and leaves the
   * optimisation call.  Needs the engine library (kvtl::kvsl).
   * @param fn returns true to reject the solution (empty: remove it)
   * @throws kvtl::error when the engine refuses
   */
  void on_candidate(candidate_fn fn) {
    MDLkvslprob e = engine();
    state_->candidate = std::move(fn);
    if (state_->candidate) set_cut_mode(1);
    if (KVSLsetcbpreintsol(e, state_->candidate ? &candidate_trampoline : nullptr, state_.get()) != 0)
      throw error(0, "KVSLsetcbpreintsol failed");
  }

 private:
  friend class callback_context;
  struct state : detail::problem_state {
    cut_manager_fn cut_manager;
    candidate_fn candidate;
  };
  struct expr_deleter {
    void operator()(mdl_expr *e) const noexcept { mdldelexpr(e); }
  };
  struct sol_deleter {
    void operator()(mdl_sol *s) const noexcept { mdldelsol(s); }
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
