/*
 * mipstart.h -- the hooks by which the global search takes MIP starts:
 * prepared before it, offered as the incumbent, kept when nothing better.
 */
#ifndef KVSL_MIPSTART_H
#define KVSL_MIPSTART_H

#include <memory>

#include "engine.h"

class CbcModel;

namespace kvsl {

// Check, complete and rank the starts offered since the last search: the
// best feasible one is held for the search; infeasible ones are reported
// through the message callback and dropped.
void prepare_mip_starts(kvsl_prob *prob);
// Hand the held start to the model, which takes it as its first incumbent
// once the root is done, refusing worse solutions until then.  Call it after the
// application's callbacks are attached: their candidate callback is asked
// about the start first, and a start it refuses is reported and dropped.
// The returned object must live until the search has finished.
std::shared_ptr<void> offer_mip_start(kvsl_prob *prob, CbcModel &model);
// After the search: the held start becomes the result when the search
// found nothing better; then it is dropped.
void keep_mip_start(kvsl_prob *prob);

}  // namespace kvsl

#endif
