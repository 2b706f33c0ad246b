/*
 * cutoff_step.cpp -- keeps the search's cutoff step at its default where
 * branching on the engine's own objects makes fractional bounds.
 *
 * Cbc concludes from integral bounds, ±1 coefficients and integral right-
 * hand sides that every solution's objective is a multiple of some step,
 * and then prunes nodes that cannot beat the incumbent by that step.  The
 * conclusion holds for integer columns and vertices of the relaxation, not
 * for a semi-continuous column whose branch sets its fractional limit as a
 * bound: a search pruned the optimum that way (randomized test, semi-
 * continuous model 102305).
 */
#include "cutoff_step.h"

#include "chained_events.h"

namespace kvsl {

namespace {

// Puts the increment back before any event is acted on (solutions are
// announced by an event before the cutoff moves), then passes the event on.
class increment_hold : public chained_events {
 public:
  increment_hold(CbcModel &model, double step) : chained_events(model), step_(step) {}
  CbcEventHandler *clone() const override { return new increment_hold(*this); }

  CbcAction event(CbcEvent which) override {
    if (model_->getCutoffIncrement() > step_) model_->setCutoffIncrement(step_);
    return pass_on(which);
  }

 private:
  double step_;
};

}  // namespace

void hold_cutoff_increment(CbcModel &model) {
  increment_hold hold(model, model.getCutoffIncrement());
  model.passInEventHandler(&hold);
}

bool objective_has_step(CbcModel &model) {
  const double before = model.getCutoffIncrement();
  model.analyzeObjective();
  const double step = model.getCutoffIncrement();
  model.setCutoffIncrement(before);
  return step > before;
}

}  // namespace kvsl
