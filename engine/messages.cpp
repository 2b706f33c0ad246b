/*
 * messages.cpp -- delivery of log lines: the engine's own and those of the
 * COIN-OR backends, through the problem's message callback only.
 */
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <ClpSimplex.hpp>

#include "log.h"

namespace kvsl {

namespace {

// Callback message type of a COIN-OR severity letter.
int type_of_severity(char severity) {
  switch (severity) {
    case 'W': return 3;
    case 'E': case 'S': return 4;
    default: return 1;
  }
}

// Hand text (possibly several lines) to the callback, one line at a time,
// under the problem's callback lock.
void deliver(kvsl_prob *prob, int type, std::string_view text) {
  if (prob->msgcb == nullptr) return;
  std::lock_guard<std::mutex> lock(prob->msg_mutex);
  while (!text.empty()) {
    size_t end = text.find('\n');
    std::string line(text.substr(0, end));
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.pop_back();
    if (!line.empty())
      prob->msgcb(prob, prob->msguser, line.c_str(), static_cast<int>(line.size()), type);
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
}

}  // namespace

void message(KVSLprob prob, int type, const char *text) {
  if (prob == nullptr) return;
  if (type < 4 && intcontrol(prob, KVSL_CTRL_OUTPUTLOG) == 0) return;
  deliver(prob, type, text);
}

void messagef(KVSLprob prob, int type, const char *fmt, ...) {
  if (prob == nullptr || prob->msgcb == nullptr) return;
  char buf[1024];
  va_list ap;
  va_start(ap, fmt);
  std::vsnprintf(buf, sizeof buf, fmt, ap);
  va_end(ap);
  message(prob, type, buf);
}

backend_log::backend_log(kvsl_prob *prob) : prob_(prob) {
  setPrefix(true);
}

int backend_log::print() {
  const CoinOneMessage &m = currentMessage();
  // Clp's refactorisation status line; the engine's iteration log replaces it.
  if (drop_iterations_ && m.externalNumber() == 6 && std::strncmp(messageBuffer(), "Clp", 3) == 0)
    return 0;
  int type = type_of_severity(m.severity());
  if (type < 4 && intcontrol(prob_, KVSL_CTRL_OUTPUTLOG) == 0) return 0;
  deliver(prob_, type, messageBuffer());
  return 0;
}

CoinMessageHandler *backend_log::clone() const {
  return new backend_log(*this);
}

int iteration_log::event(Event which) {
  // The barrier raises events without a simplex model.
  if (which == endOfIteration && frequency_ > 0 && model_ != nullptr) {
    int iter = model_->numberIterations();
    if (iter > 0 && iter % frequency_ == 0)
      messagef(prob_, 1, "Iteration %7d  objective %.10g  primal inf %.6g  dual inf %.6g", iter,
               model_->objectiveValue(), model_->sumPrimalInfeasibilities(),
               model_->sumDualInfeasibilities());
  }
  return -1;
}

void prepare_lp_log(kvsl_prob *prob) {
  bool on = intcontrol(prob, KVSL_CTRL_OUTPUTLOG) != 0;
  prob->log->setLogLevel(on ? 1 : 0);
  prob->log->set_drop_iteration_lines(true);
}

}  // namespace kvsl
