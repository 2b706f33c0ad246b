/*
 * progress.cpp -- progress lines of a MIP search, taken from the engine's
 * search log as it arrives through the library's message callback.
 *
 * The engine has no periodic callback of its own; its search log carries a
 * line for every integer solution found ("Integer solution of V ... and N
 * nodes") and, at search log level 2, a report of every node ("After N
 * nodes, M on tree, V best solution, best possible B").  Progress lines are
 * made from those: one per improvement and one at most every few seconds
 * as node reports arrive (none while a single node takes longer).
 */
#include "progress.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

// The number that ends right before `at` in `text` ("... 42 nodes").
bool number_before(const char *text, const char *at, long *out) {
  const char *p = at;
  while (p > text && p[-1] == ' ') --p;
  const char *end = p;
  while (p > text && p[-1] >= '0' && p[-1] <= '9') --p;
  if (p == end) return false;
  *out = strtol(p, nullptr, 10);
  return true;
}

// The number that starts right after `key` in `text`.
bool number_after(const char *text, const char *key, double *out) {
  const char *p = strstr(text, key);
  if (p == nullptr) return false;
  p += strlen(key);
  char *end = nullptr;
  double v = strtod(p, &end);
  if (end == p) return false;
  *out = v;
  return true;
}

// The backend writes 1e50 (or more) for "none yet".
bool is_value(double v) { return std::isfinite(v) && std::fabs(v) < 1e49; }

void on_message(MDLprob, void *user, const char *text) {
  static_cast<search_progress *>(user)->take(text);
}

}  // namespace

search_progress::search_progress(FILE *out, int log_level, double every, double scale,
                                 double shift)
    : out_(out), log_level_(log_level), every_(every), scale_(scale), shift_(shift),
      t0_(std::chrono::steady_clock::now()) {}

void search_progress::attach(MDLprob prob) { mdldefcbmsg_prob(prob, on_message, this); }

void search_progress::set_scale(double scale, double shift) {
  std::lock_guard<std::mutex> lock(mutex_);
  scale_ = scale;
  shift_ = shift;
}

void search_progress::start() {
  std::lock_guard<std::mutex> lock(mutex_);
  t0_ = std::chrono::steady_clock::now();
}

double search_progress::elapsed() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0_).count();
}

void search_progress::take(const char *text) {
  if (text == nullptr) return;
  // The library's own messages go to standard error whatever the level.
  if (strncmp(text, "Tessel: ", 8) == 0) {
    fputs(text, stderr);
    return;
  }
  std::lock_guard<std::mutex> lock(mutex_);
  // The per-node reports of the search are shown raw only at level 3.
  const bool node_report = strstr(text, "After ") != nullptr && strstr(text, " nodes,") != nullptr;
  if (log_level_ >= 3 || (log_level_ == 2 && !node_report)) fputs(text, out_);
  if (log_level_ < 1) return;
  double v = 0.0;
  if (number_after(text, "Integer solution of ", &v) && is_value(v)) {
    double value = v * scale_ + shift_;
    const char *at = strstr(text, " nodes");
    long n = 0;
    if (at != nullptr && number_before(text, at, &n)) nodes_ = n;
    // Heuristics report the same incumbent more than once.
    bool improved = !have_incumbent_ || value != incumbent_;
    incumbent_ = value;
    have_incumbent_ = true;
    if (improved) print_line(true);
    return;
  }
  const char *after = strstr(text, "After ");
  const char *at = after != nullptr ? strstr(after, " nodes,") : nullptr;
  long n = 0;
  if (at != nullptr && number_before(after, at, &n)) {
    nodes_ = n;
    double b = 0.0;
    if (number_after(text, "best possible ", &b) && is_value(b)) {
      bound_ = b * scale_ + shift_;
      have_bound_ = true;
    }
    if (every_ > 0.0 && elapsed() - last_print_ >= every_) print_line(false);
  }
}

// One progress line: a marker for a new incumbent, elapsed seconds, nodes,
// best bound, incumbent and the relative gap; "-" for what is not known.
void search_progress::print_line(bool improved) {
  if (lines_ == 0)
    fprintf(out_, "  %9s %10s %18s %18s %9s\n", "time", "nodes", "best bound", "incumbent", "gap");
  char bound[32] = "-", incumbent[32] = "-", gap[32] = "-";
  if (have_bound_) snprintf(bound, sizeof bound, "%.10g", bound_);
  if (have_incumbent_) snprintf(incumbent, sizeof incumbent, "%.10g", incumbent_);
  if (have_bound_ && have_incumbent_)
    snprintf(gap, sizeof gap, "%.2f%%",
             100.0 * std::fabs(incumbent_ - bound_) / std::fmax(std::fabs(incumbent_), 1e-10));
  double t = elapsed();
  fprintf(out_, "%c %8.1fs %10ld %18s %18s %9s\n", improved ? '*' : ' ', t, nodes_, bound,
          incumbent, gap);
  fflush(out_);
  last_print_ = t;
  lines_++;
}
