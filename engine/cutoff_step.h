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

// Does Cbc derive from the model's objective a cutoff step above the
// present one?  The model's step is left as it was.
bool objective_has_step(CbcModel &model);

}  // namespace kvsl

#endif
