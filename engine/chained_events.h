/*
 * chained_events.h -- an event handler of the search that passes every
 * event on to the handler the model had before it was installed.
 */
#ifndef KVSL_CHAINED_EVENTS_H
#define KVSL_CHAINED_EVENTS_H

#include <memory>

#include <CbcEventHandler.hpp>
#include <CbcModel.hpp>

namespace kvsl {

class chained_events : public CbcEventHandler {
 public:
  // Keep a copy of the model's present handler (none: events stop here).
  explicit chained_events(CbcModel &model) : CbcEventHandler(&model) {
    if (model.getEventHandler() != nullptr) inner_.reset(model.getEventHandler()->clone());
  }
  chained_events(const chained_events &o) : CbcEventHandler(o) {
    if (o.inner_) inner_.reset(o.inner_->clone());
  }
  chained_events &operator=(const chained_events &) = delete;

 protected:
  // The earlier handler's answer to the event (no action without one).
  CbcAction pass_on(CbcEvent which) {
    if (!inner_) return noAction;
    inner_->setModel(model_);
    return inner_->event(which);
  }

 private:
  std::unique_ptr<CbcEventHandler> inner_;
};

}  // namespace kvsl

#endif
