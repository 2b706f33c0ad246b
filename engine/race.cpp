/*
 * race.cpp -- the best solution shared by a race of searches, the end of
 * the race, and the row orders of its searches.
 */
#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

#include <CbcHeuristic.hpp>
#include <CbcModel.hpp>
#include <CoinFinite.hpp>
#include <CoinPackedMatrix.hpp>
#include <CoinWarmStartBasis.hpp>

#include "chained_events.h"
#include "race.h"

namespace kvsl {

race_state::race_state() : value(COIN_DBL_MAX) {}

void race_state::offer(const CbcModel &model) {
  const double v = model.getMinimizationObjValue();
  if (model.bestSolution() == nullptr || v >= value.load()) return;
  std::lock_guard<std::mutex> hold(lock);
  if (v >= value.load()) return;
  x.assign(model.bestSolution(), model.bestSolution() + model.solver()->getNumCols());
  value.store(v);
}

bool race_state::take(double better_than, double *out, double &v) {
  if (value.load() >= better_than - 1e-9 * (1.0 + std::fabs(better_than))) return false;
  std::lock_guard<std::mutex> hold(lock);
  v = value.load();
  std::copy(x.begin(), x.end(), out);
  return true;
}

namespace {

// The race's handler of one search: after every node it offers the
// search's best solution to the others, and it stops the search once the
// race is over.  Only the search it was installed in takes part: a
// heuristic's sub-search that copies the handler works on a part of the
// problem.
class race_events : public chained_events {
 public:
  race_events(CbcModel &model, std::shared_ptr<race_state> state)
      : chained_events(model), state_(std::move(state)) {}
  CbcEventHandler *clone() const override { return new race_events(*this); }
  void set_owner(const CbcModel *owner) { owner_ = owner; }

  CbcAction event(CbcEvent which) override {
    if ((which == node || which == treeStatus) && model_ == owner_) {
      if (state_->over.load()) return stop;
      state_->offer(*model_);
    }
    return pass_on(which);
  }

 private:
  std::shared_ptr<race_state> state_;
  const CbcModel *owner_ = nullptr;
};

// Hands a search the best solution of the others, where the search asks
// its heuristics (a solution taken there moves the search's cutoff where
// Cbc expects it to move).
class race_heuristic : public CbcHeuristic {
 public:
  race_heuristic(CbcModel &model, std::shared_ptr<race_state> state)
      : CbcHeuristic(model), state_(std::move(state)) {
    setWhen(3);
    setHeuristicName("race");
  }
  CbcHeuristic *clone() const override { return new race_heuristic(*this); }
  void resetModel(CbcModel *model) override { model_ = model; }
  void set_owner(const CbcModel *owner) { owner_ = owner; }
  // Asked at every node (a heuristic that finds nothing is otherwise
  // asked less and less often).
  bool shouldHeurRun(int) override { return model_ == owner_; }

  int solution(double &objective, double *x) override {
    if (model_ != owner_) return 0;
    double v = 0.0;
    if (!state_->take(objective, x, v)) return 0;
    objective = v;
    return 1;
  }

 private:
  std::shared_ptr<race_state> state_;
  const CbcModel *owner_ = nullptr;
};

}  // namespace

void join_race(CbcModel &model, const std::shared_ptr<race_state> &state) {
  race_heuristic h(model, state);
  model.addHeuristic(&h);  // the model keeps a clone
  static_cast<race_heuristic *>(model.heuristic(model.numberHeuristics() - 1))->set_owner(&model);
  race_events events(model, state);
  model.passInEventHandler(&events);  // and of this
  static_cast<race_events *>(model.getEventHandler())->set_owner(&model);
}

std::unique_ptr<OsiClpSolverInterface> reordered_copy(const OsiClpSolverInterface &solver,
                                                      int order) {
  const int m = solver.getNumRows();
  std::vector<int> rows(static_cast<size_t>(m));
  std::iota(rows.begin(), rows.end(), 0);
  if (order == 1) {
    std::reverse(rows.begin(), rows.end());
  } else {
    std::mt19937 gen(static_cast<unsigned>(order));
    std::shuffle(rows.begin(), rows.end(), gen);
  }
  const CoinPackedMatrix &byrow = *solver.getMatrixByRow();
  std::vector<CoinBigIndex> starts{0};
  std::vector<int> cols;
  std::vector<double> vals, lo(static_cast<size_t>(m)), up(static_cast<size_t>(m));
  cols.reserve(static_cast<size_t>(byrow.getNumElements()));
  vals.reserve(static_cast<size_t>(byrow.getNumElements()));
  for (int k = 0; k < m; ++k) {
    const CoinShallowPackedVector row = byrow.getVector(rows[k]);
    cols.insert(cols.end(), row.getIndices(), row.getIndices() + row.getNumElements());
    vals.insert(vals.end(), row.getElements(), row.getElements() + row.getNumElements());
    starts.push_back(static_cast<CoinBigIndex>(cols.size()));
    lo[k] = solver.getRowLower()[rows[k]];
    up[k] = solver.getRowUpper()[rows[k]];
  }
  auto copy = std::make_unique<OsiClpSolverInterface>(solver);
  std::vector<int> all(static_cast<size_t>(m));
  std::iota(all.begin(), all.end(), 0);
  copy->deleteRows(m, all.data());
  copy->addRows(m, starts.data(), cols.data(), vals.data(), lo.data(), up.data());
  // The root's basis with its rows' statuses moved along: the copy's LP
  // solves without iterations.
  std::unique_ptr<CoinWarmStart> ws(solver.getWarmStart());
  if (auto *basis = dynamic_cast<CoinWarmStartBasis *>(ws.get())) {
    CoinWarmStartBasis moved(*basis);
    for (int k = 0; k < m; ++k) moved.setArtifStatus(k, basis->getArtifStatus(rows[k]));
    copy->setWarmStart(&moved);
  }
  return copy;
}

}  // namespace kvsl
