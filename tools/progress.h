/*
 * progress.h -- what kvtl shows while the engine works: the progress of a
 * MIP search (one line per new incumbent and one every few seconds) read
 * from the engine's search log, the engine's log itself when asked for, and
 * the library's messages on standard error.
 */
#ifndef KVTL_TOOLS_PROGRESS_H
#define KVTL_TOOLS_PROGRESS_H

#include <stdio.h>

#include <chrono>
#include <mutex>
#include <string>

#include "kvtl.h"

class search_progress {
 public:
  // log_level as kvtl's --log-level; every: seconds between progress lines
  // (0: only new incumbents).  The search log states objective values as
  // the engine's backend sees them: value * scale + shift is the model's.
  search_progress(FILE *out, int log_level, double every, double scale, double shift);

  // Install as the problem's message callback (it stays until the problem
  // is deleted or another one is installed).
  void attach(MDLprob prob);
  // Change how backend values become the model's (value * scale + shift).
  void set_scale(double scale, double shift);
  // The search starts now: elapsed times count from here.
  void start();
  // Progress lines printed so far.
  int lines() const { return lines_; }

  // One line of text from the library (its messages) or the engine (its log).
  void take(const char *text);

 private:
  void print_line(bool improved);
  double elapsed() const;

  FILE *out_;
  int log_level_;
  double every_, scale_, shift_;
  std::mutex mutex_;
  std::chrono::steady_clock::time_point t0_;
  double last_print_ = -1e30;
  bool have_incumbent_ = false, have_bound_ = false;
  double incumbent_ = 0.0, bound_ = 0.0;
  long nodes_ = 0;
  int lines_ = 0;
};

#endif
