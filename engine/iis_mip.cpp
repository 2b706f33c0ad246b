/*
 * iis_mip.cpp -- infeasible subsystems of a MIP whose relaxation is
 * feasible: a deletion filter whose subproblems are time-limited MIP solves.
 */
#include <algorithm>
#include <chrono>

#include <ClpSimplex.hpp>

#include "copy.h"
#include "iis.h"
#include "solve_limits.h"

namespace kvsl {

namespace {

// Time for the whole filter and for each subproblem, in wall-clock seconds.
// A subproblem's limit counts its whole solve (load, root, tree), so it is
// generous enough for slow instrumented builds to decide small subproblems.
constexpr double filter_seconds = 30.0;
constexpr double subproblem_seconds = 15.0;

// Outcome of one subproblem.
enum class verdict { feasible, infeasible, undecided };

// Subsystems of the loaded problem solved as MIPs.
class mip_subsystems {
 public:
  explicit mip_subsystems(const kvsl_prob *prob)
      : parent(prob), n{prob->lp->numberRows(), prob->lp->numberColumns()}, copy(prob) {}

  // Solve the MIP made of exactly these members.
  verdict solve(const std::vector<int> &members) const {
    std::vector<char> types(static_cast<size_t>(n.nrows), 'N');
    std::vector<double> l(static_cast<size_t>(n.ncols), -KVSL_INFINITY),
        u(static_cast<size_t>(n.ncols), KVSL_INFINITY), obj(static_cast<size_t>(n.ncols), 0.0);
    for (int mem : members) {
      auto k = static_cast<size_t>(n.is_row(mem) ? mem : n.col(mem));
      if (n.is_row(mem))
        types[k] = copy.rowtype[k];
      else if (n.upper(mem))
        u[k] = copy.ub[k];
      else
        l[k] = copy.lb[k];
    }
    KVSLprob sub = nullptr;
    if (KVSLcreateprob(&sub) != 0) return verdict::undecided;
    double seconds = sub_solve_seconds(parent, subproblem_seconds);
    int status = copy.load(sub, types, l, u, obj) == 0 ? solve_sub_mip(sub, seconds) : -1;
    KVSLdestroyprob(sub);
    if (status == KVSL_MIP_INFEAS) return verdict::infeasible;
    if (status == KVSL_MIP_SOLUTION || status == KVSL_MIP_OPTIMAL) return verdict::feasible;
    return verdict::undecided;
  }

 private:
  const kvsl_prob *parent;  // its deadline bounds every subproblem
  numbering n;
  problem_copy copy;
};

}  // namespace

mip_iis integer_deletion_filter(const kvsl_prob *prob, const std::vector<int> &members) {
  mip_subsystems subs(prob);
  mip_iis out;
  if (subs.solve(members) != verdict::infeasible) return out;
  out.members = members;
  auto t0 = std::chrono::steady_clock::now();
  for (size_t k = 0; k < out.members.size();) {
    double spent = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    if (spent > filter_seconds || deadline_passed(prob)) {
      out.flags |= iis_flag_unproved;
      break;
    }
    std::vector<int> trial = out.members;
    trial.erase(trial.begin() + static_cast<std::ptrdiff_t>(k));
    verdict v = subs.solve(trial);
    if (v == verdict::infeasible) {
      out.members = std::move(trial);
      continue;
    }
    if (v == verdict::undecided) out.flags |= iis_flag_unproved;
    ++k;
  }
  return out;
}

}  // namespace kvsl
