/*
 * objective_step.h -- the step between the objective values of a search
 * over integer columns whose continuous columns Cbc's own analysis of the
 * objective leaves aside.
 */
#ifndef KVSL_OBJECTIVE_STEP_H
#define KVSL_OBJECTIVE_STEP_H

class OsiSolverInterface;

namespace kvsl {

// The step of the objective values of a search over integer columns whose
// continuous part has an integral optimum wherever the integer columns are
// integral: integral objective coefficients (the step is their greatest
// common divisor), and rows and bounds over the continuous columns that
// form a totally unimodular system with integral right-hand sides once the
// integer columns are fixed.  0 when the model is not of that form.
double continuous_objective_step(const OsiSolverInterface &si);

}  // namespace kvsl

#endif
