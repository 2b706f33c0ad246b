/*
 * solver.h -- helpers shared by matrix generation, optimisation and the
 * solution queries: engine failure reports, owned blocks, solution state.
 */
#ifndef KVTL_SOLVER_SOLVER_H
#define KVTL_SOLVER_SOLVER_H

#include <stddef.h>
#include <stdint.h>

#include "problem/problem.h"

namespace kvtl {

// A block obtained through the allocator hooks and freed with them unless
// ownership is given away with release().
class hook_block {
 public:
  hook_block() = default;
  ~hook_block() { reset(); }
  hook_block(const hook_block &) = delete;
  hook_block &operator=(const hook_block &) = delete;
  // Obtain `bytes` (at least one); false when the hook fails.
  bool allocate(size_t bytes);
  char *get() const { return ptr_; }
  void *release();
  void reset();

 private:
  char *ptr_ = nullptr;
};

// Carves typed arrays out of one block: run the same sequence of take()
// calls once to measure (no base) and once to place (with the base).
class block_layout {
 public:
  explicit block_layout(char *base) : base_(base) {}
  template <class T>
  void take(T *&array, size_t count) {
    bytes_ = (bytes_ + alignof(T) - 1) & ~(alignof(T) - 1);
    if (base_ != nullptr) array = reinterpret_cast<T *>(base_ + bytes_);
    bytes_ += count * sizeof(T);
  }
  size_t bytes() const { return bytes_; }

 private:
  char *base_;
  size_t bytes_ = 0;
};

// Measure with `arrays`, allocate one block into `block` and place the
// arrays in it.  Reports error 1502 and returns false when out of memory.
template <class F>
bool carve_block(MDLprob prob, hook_block &block, F &&arrays) {
  block_layout measure(nullptr);
  arrays(measure);
  if (!block.allocate(measure.bytes())) {
    mdlerror(prob, MDL_E_NOMEM);
    return false;
  }
  block_layout place(block.get());
  arrays(place);
  return true;
}

// Report a failed engine call (rc non-zero) as error 1524 of function `fn`
// and return true; return false for rc 0.
bool engine_failed(MDLprob prob, const char *fn, const char *call, int rc);

// A solution the queries may use: available and the model unchanged since.
inline bool solution_usable(const mdl_problem *prob) {
  return (prob->status & MDL_ST_SOLUTION) != 0 && (prob->status & MDL_ST_MODIFIED) == 0;
}

// Column of a variable / row of a constraint in the loaded matrix, -1 when
// it has none.
int column_of(const mdl_var *var);
int row_of(const mdl_ctr *ctr);

// Free the ranging block.
void release_rangeinfo(MDLprob prob);
// Free every result cache and forget the solution values (done by a load).
void release_results(MDLprob prob);

// Take over the engine's solution state after a MIP optimisation, minim,
// maxim or a read solution file: solution-available flag, MIP flag of the
// cache and objective value.  False after an error was reported.
bool refresh_solution_state(MDLprob prob);

// Remove the engine's side file base + suffix (".glb", ".rng", ".sol").
void remove_side_file(MDLprob prob, const char *suffix);

}  // namespace kvtl

#endif
