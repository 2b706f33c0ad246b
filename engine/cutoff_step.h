/*
 * cutoff_step.h -- keeps the search's cutoff step at its default where
 * branching on the engine's own objects makes fractional bounds.
 */
#ifndef KVSL_CUTOFF_STEP_H
#define KVSL_CUTOFF_STEP_H

class CbcModel;

namespace kvsl {

// Hold the model's cutoff increment at its present value for the whole
// search, whatever Cbc derives from the objective when it starts; events go
// on to the handler installed before.  Call last before the search.
void hold_cutoff_increment(CbcModel &model);

}  // namespace kvsl

#endif
