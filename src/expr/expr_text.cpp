/*
 * expr_text.cpp -- the text form of an expression related to 0: as a new
 * string (mdlexpr2str) and printed through a problem's output, wrapped.
 */
#include <math.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "core/errors.h"
#include "kvtl.h"
#include "model/records.h"
#include "problem/names.h"
#include "problem/problem.h"

namespace kvtl {

namespace {

constexpr size_t text_step = 2048;   // first size and growth of a text
constexpr int wrap_column = 75;      // printed lines break after this count
constexpr char default_format[] = "%g";

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
// One number in the problem's real-number format.
int format_number(char *out, size_t size, const char *format, double value) {
  return snprintf(out, size, format, value);
}
#pragma GCC diagnostic pop

const char *format_of(const mdl_problem *prob) {
  return prob != nullptr ? prob->realfmt : default_format;
}

const char *var_name(const mdl_var *var) { return display_name(var->name, var); }

// The body of a term without its sign: "x", "2*x", "x*y", "2*x^2" (v2 null
// for a linear term).  Returns the length it needs, as snprintf does.
int format_term(char *out, size_t size, const char *format, double coef, const mdl_var *v1,
                const mdl_var *v2) {
  const double a = fabs(coef);
  int n = 0;
  auto room = [&] { return static_cast<size_t>(n) < size ? size - n : 0; };
  auto at = [&] { return static_cast<size_t>(n) < size ? out + n : nullptr; };
  if (a != 1) {
    n += format_number(at(), room(), format, a);
    n += snprintf(at(), room(), "*");
  }
  n += snprintf(at(), room(), "%s", var_name(v1));
  if (v2 != nullptr) {
    if (v2 == v1)
      n += snprintf(at(), room(), "^2");
    else
      n += snprintf(at(), room(), "*%s", var_name(v2));
  }
  return n;
}

// Calls `emit(coef, v1, v2)` for every non-zero term, quadratic terms first
// (v2 null for linear ones), in list order.
template <class Emit>
void for_each_term(const mdl_expr *e, Emit emit) {
  if (e->quad != nullptr)
    for (auto *t = static_cast<const mdl_qterm *>(e->quad->first); t != nullptr; t = t->next)
      if (t->coef != 0) emit(t->coef, t->var1, t->var2);
  if (e->lin != nullptr)
    for (auto *t = static_cast<const mdl_term *>(e->lin->first); t != nullptr; t = t->next)
      if (t->coef != 0) emit(t->coef, t->var, static_cast<const mdl_var *>(nullptr));
}

// A text growing in steps of text_step, its memory from the allocator
// hooks.  After a failed growth everything is released and `failed` set.
class text_buffer {
 public:
  ~text_buffer() { mdlsl_free(data_); }
  bool failed() const { return failed_; }
  // Hand the text over to the caller.
  char *release() {
    char *d = data_;
    data_ = nullptr;
    return d;
  }
  // Append a piece formatted by `fill(out, size)`, which returns the length
  // it needs as snprintf does.
  template <class Fill>
  void append(Fill fill) {
    if (failed_) return;
    const size_t room = cap_ - len_;
    int n = fill(data_ != nullptr ? data_ + len_ : nullptr, room);
    if (n < 0) return;
    if (static_cast<size_t>(n) >= room) {
      if (!grow(static_cast<size_t>(n))) return;
      fill(data_ + len_, cap_ - len_);
    }
    len_ += static_cast<size_t>(n);
  }
  void append_text(const char *s) {
    append([s](char *out, size_t size) { return snprintf(out, size, "%s", s); });
  }
  void append_number(const char *format, double value) {
    append([=](char *out, size_t size) { return format_number(out, size, format, value); });
  }
  // The first block; false when it cannot be had.
  bool start() { return grow(0); }

 private:
  // Room for `need` more characters and the terminating 0.
  bool grow(size_t need) {
    size_t cap = cap_;
    while (cap - len_ <= need) cap += text_step;
    auto *d = static_cast<char *>(mdlsl_malloc(cap));
    if (d == nullptr) {
      mdlsl_free(data_);
      data_ = nullptr;
      failed_ = true;
      return false;
    }
    if (data_ != nullptr) memcpy(d, data_, len_ + 1);
    else d[0] = '\0';
    mdlsl_free(data_);
    data_ = d;
    cap_ = cap;
    return true;
  }
  char *data_ = nullptr;
  size_t len_ = 0;
  size_t cap_ = 0;
  bool failed_ = false;
};

const char *relation_text(int type) {
  switch (type) {
    case MDL_CTR_L: return " <= ";
    case MDL_CTR_G: return " >= ";
    case MDL_CTR_E: return " = ";
    default: return nullptr;
  }
}

}  // namespace

}  // namespace kvtl

using namespace kvtl;

// Terms (quadratic first), each followed by a blank, then the relation to
// the negated constant.  The number format is that of the problem of the
// first term written.
KVTL_API char *mdlexpr2str(MDLexpr expr, int type) {
  mdl_expr empty{0.0, nullptr, nullptr};
  if (expr == nullptr) expr = &empty;
  mdlstripexpr(expr);
  const mdl_problem *prob = nullptr;
  const char *format = default_format;
  bool wrote = false;
  text_buffer text;
  if (text.start()) {
    for_each_term(expr, [&](double coef, const mdl_var *v1, const mdl_var *v2) {
      if (!wrote) {
        prob = v1->problem;
        format = format_of(prob);
      }
      if (coef < 0)
        text.append_text("- ");
      else if (wrote)
        text.append_text("+ ");
      wrote = true;
      text.append([&](char *out, size_t size) {
        int n = format_term(out, size, format, coef, v1, v2);
        return n + snprintf(static_cast<size_t>(n) < size ? out + n : nullptr,
                            static_cast<size_t>(n) < size ? size - n : 0, " ");
      });
    });
    const double c = expr->constant;
    if (!wrote && (type != MDL_CTR_N || c == 0)) text.append_text("0");
    const char *rel = relation_text(type);
    if (c == 0) {
      if (rel != nullptr) {
        text.append_text(rel);
        text.append_text("0");
      }
    } else if (rel != nullptr) {
      text.append_text(rel);
      text.append_number(format, -c);
    } else if (type == MDL_CTR_N) {
      text.append_text(wrote ? (c < 0 ? " - " : " + ") : (c < 0 ? "-" : ""));
      text.append_number(format, fabs(c));
    } else {
      text.append_number(format, 0.0);
    }
  }
  if (text.failed()) {
    mdlerror(const_cast<mdl_problem *>(prob), MDL_E_NOMEM);
    return nullptr;
  }
  return text.release();
}

KVTL_API void mdlfree2str(char *text) {
  if (text != nullptr) mdlsl_free(text);
}

// The same parts through the problem's output: terms separated by " + " or
// " - ", a line break before a term once a line holds more than 75
// characters, ranges as " in [lower,upper]", and a closing newline.
KVTL_API int mdlprintexpr(MDLprob prob, MDLexpr expr, int type, double range) {
  mdl_expr empty{0.0, nullptr, nullptr};
  if (expr == nullptr) expr = &empty;
  mdlstripexpr(expr);
  const char *format = format_of(prob);
  char piece[1024];
  int line = 0;
  bool wrote = false;
  for_each_term(expr, [&](double coef, const mdl_var *v1, const mdl_var *v2) {
    if (line > wrap_column) {
      mdlprintf_prob(prob, "\n");
      line = 0;
    }
    const char *sign = coef < 0 ? (wrote ? " - " : "- ") : (wrote ? " + " : "");
    int n = snprintf(piece, sizeof piece, "%s", sign);
    format_term(piece + n, sizeof piece - n, format, coef, v1, v2);
    line += static_cast<int>(strlen(piece));
    mdlprintf_prob(prob, "%s", piece);
    wrote = true;
  });
  const double c = expr->constant;
  if (!wrote && (type != MDL_CTR_N || c == 0)) mdlprintf_prob(prob, "0");
  const char *rel = relation_text(type);
  char lower[512], upper[512];
  if (rel != nullptr) {
    format_number(upper, sizeof upper, format, c == 0 ? 0.0 : -c);
    mdlprintf_prob(prob, "%s%s", rel, c == 0 ? "0" : upper);
  } else if (type == MDL_CTR_N && c != 0) {
    format_number(upper, sizeof upper, format, fabs(c));
    mdlprintf_prob(prob, "%s%s", c < 0 ? " - " : " + ", upper);
  } else if (type == MDL_CTR_R) {
    const double rhs = c == 0 ? 0.0 : -c;
    format_number(lower, sizeof lower, format, rhs - range);
    format_number(upper, sizeof upper, format, rhs);
    mdlprintf_prob(prob, "%s%s,%s]", translate(" in ["), lower, c == 0 ? "0" : upper);
  }
  mdlprintf_prob(prob, "\n");
  return 0;
}
