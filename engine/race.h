/*
 * race.h -- searches of one problem side by side on threads of their own,
 * each over its own order of the rows: they share the best solution any
 * of them has found, and the first to finish ends the others.
 */
#ifndef KVSL_RACE_H
#define KVSL_RACE_H

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include <CoinMessageHandler.hpp>
#include <OsiClpSolverInterface.hpp>

class CbcModel;

namespace kvsl {

// What the searches of a race share: the best solution any of them has
// found (its objective in the backend's minimising sense), and whether the
// race is over.
struct race_state {
  std::mutex lock;
  std::vector<double> x;
  std::atomic<double> value;
  // Set once a search has finished (or the first one failed): the others
  // stop.
  std::atomic<bool> over{false};

  race_state();
  // Take the model's best solution if it is better than the race's.
  void offer(const CbcModel &model);
  // Copy the race's best solution to out and its value to v if it is
  // better than better_than.
  bool take(double better_than, double *out, double &v);
};

// Make `model` a search of the race: after every node it offers its best
// solution to the others, where it asks its heuristics it takes theirs,
// and it stops once the race is over.  Install after the model's other
// event handlers (it passes every event on to them).
void join_race(CbcModel &model, const std::shared_ptr<race_state> &state);

// A copy of the solver with its rows in another order: the 1st order
// reversed, later ones shuffled from the order's number; columns, bounds,
// integers and parameters as they are, and the solver's basis with its
// rows' statuses reordered alike (resolve the copy's LP).
std::unique_ptr<OsiClpSolverInterface> reordered_copy(const OsiClpSolverInterface &solver,
                                                      int order);

// A message handler that delivers nothing: the searches of a race beside
// the first report through it.
class silent_log : public CoinMessageHandler {
 public:
  int print() override { return 0; }
  CoinMessageHandler *clone() const override { return new silent_log(*this); }
};

}  // namespace kvsl

#endif
