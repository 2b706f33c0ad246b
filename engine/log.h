/*
 * log.h -- the message handler that routes every line COIN-OR prints to the
 * problem's message callback, and the simplex iteration log.
 */
#ifndef KVSL_LOG_H
#define KVSL_LOG_H

#include <ClpEventHandler.hpp>
#include <CoinMessageHandler.hpp>

#include "engine.h"

namespace kvsl {

// A COIN-OR message handler that hands each finished line to the problem's
// callback instead of printing it.  Clones (made by threaded searches) talk
// to the same problem.
class backend_log : public CoinMessageHandler {
 public:
  explicit backend_log(kvsl_prob *prob);
  int print() override;
  CoinMessageHandler *clone() const override;
  // Drop the simplex's own iteration lines (the engine logs iterations itself).
  void set_drop_iteration_lines(bool drop) { drop_iterations_ = drop; }

 private:
  kvsl_prob *prob_;
  bool drop_iterations_ = true;
};

// Simplex event handler that logs one line every `frequency` iterations.
class iteration_log : public ClpEventHandler {
 public:
  iteration_log(kvsl_prob *prob, int frequency) : prob_(prob), frequency_(frequency) {}
  int event(Event which) override;
  ClpEventHandler *clone() const override { return new iteration_log(*this); }

 private:
  kvsl_prob *prob_;
  int frequency_;
};

}  // namespace kvsl

#endif
