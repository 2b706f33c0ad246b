/*
 * messages.h -- test support: collect the reports of mdlerror through the
 * error callback and the output of mdlprintf through the message callback.
 */
#ifndef KVTL_TESTS_SUPPORT_MESSAGES_H
#define KVTL_TESTS_SUPPORT_MESSAGES_H

#include <string>
#include <vector>

#include "kvtl.h"

namespace testsupport {

struct report {
  MDLprob prob;
  int number;
  int iserror;
  std::string text;
};

// Reports received by the global error callback since install().
struct error_log {
  std::vector<report> reports;

  static void callback(MDLprob prob, void *user, int num, int iserror, const char *text) {
    static_cast<error_log *>(user)->reports.push_back({prob, num, iserror, text});
  }
  // Install as the global default error callback (problems created later copy it).
  void install() { mdldefcberr_prob(nullptr, callback, this); }
  void install(MDLprob prob) { mdldefcberr_prob(prob, callback, this); }
  bool empty() const { return reports.empty(); }
  const report &last() const { return reports.back(); }
};

// Text received by a message callback.
struct output_log {
  std::string text;
  std::vector<MDLprob> probs;

  static void callback(MDLprob prob, void *user, const char *text) {
    auto *self = static_cast<output_log *>(user);
    self->text += text;
    self->probs.push_back(prob);
  }
  void install() { mdldefcbmsg_prob(nullptr, callback, this); }
  void install(MDLprob prob) { mdldefcbmsg_prob(prob, callback, this); }
};

}  // namespace testsupport

#endif
