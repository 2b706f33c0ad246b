/*
 * iis_mip.cpp -- infeasible subsystems of a MIP whose relaxation is
 * feasible: a deletion filter whose subproblems are time-limited MIP solves.
 */
#include <algorithm>
#include <chrono>

#include <ClpSimplex.hpp>
#include <CoinPackedMatrix.hpp>

#include "iis.h"

namespace kvsl {

namespace {

// Time for the whole filter and for each subproblem, in seconds.
constexpr double filter_seconds = 30.0;
constexpr double subproblem_seconds = 5.0;

// Outcome of one subproblem.
enum class verdict { feasible, infeasible, undecided };

// The loaded problem's data in load form, from which subsystems are made.
class mip_subsystems {
 public:
  explicit mip_subsystems(const kvsl_prob *prob) : n{prob->lp->numberRows(), prob->lp->numberColumns()} {
    const ClpSimplex &m = *prob->lp;
    CoinPackedMatrix a(*m.matrix());
    a.removeGaps();
    start.assign(a.getVectorStarts(), a.getVectorStarts() + n.ncols + 1);
    ind.assign(a.getIndices(), a.getIndices() + a.getNumElements());
    val.assign(a.getElements(), a.getElements() + a.getNumElements());
    for (int j = 0; j < n.ncols; ++j) {
      lb.push_back(from_backend(m.columnLower()[j]));
      ub.push_back(from_backend(m.columnUpper()[j]));
    }
    rowtype = prob->rowtype;
    rhs = prob->rhs;
    range = prob->range;
    for (const entity &e : prob->entities) {
      enttype.push_back(e.type);
      entcol.push_back(e.col);
      entlimit.push_back(e.limit);
    }
    settype = prob->settype;
    setstart = prob->setstart;
    setcol = prob->setcol;
    setref = prob->setref;
    if (setstart.empty()) setstart.push_back(0);
    double t = dblcontrol(prob, KVSL_CTRL_TIMELIMIT);
    per_solve = t > 0.0 ? std::min(t, subproblem_seconds) : subproblem_seconds;
  }

  // Solve the MIP made of exactly these members.
  verdict solve(const std::vector<int> &members) const {
    std::string types(static_cast<size_t>(n.nrows), 'N');
    std::vector<double> l(static_cast<size_t>(n.ncols), -KVSL_INFINITY),
        u(static_cast<size_t>(n.ncols), KVSL_INFINITY), obj(static_cast<size_t>(n.ncols), 0.0);
    for (int mem : members) {
      auto k = static_cast<size_t>(n.is_row(mem) ? mem : n.col(mem));
      if (n.is_row(mem))
        types[k] = rowtype[k];
      else if (n.upper(mem))
        u[k] = ub[k];
      else
        l[k] = lb[k];
    }
    KVSLprob sub = nullptr;
    if (KVSLcreateprob(&sub) != 0) return verdict::undecided;
    verdict v = verdict::undecided;
    KVSLsetintcontrol(sub, KVSL_CTRL_OUTPUTLOG, 0);
    KVSLsetdblcontrol(sub, KVSL_CTRL_TIMELIMIT, per_solve);
    int rc = KVSLloadglobal64(sub, "iis", n.ncols, n.nrows, types.data(), rhs.data(), range.data(),
                              obj.data(), start.data(), nullptr, ind.data(), val.data(), l.data(),
                              u.data(), static_cast<int>(entcol.size()),
                              static_cast<int>(settype.size()), enttype.data(), entcol.data(),
                              entlimit.data(), settype.data(), setstart.data(), setcol.data(),
                              setref.data());
    int status = -1;
    if (rc == 0 && KVSLmipoptimize(sub, "") == 0 &&
        KVSLgetintattrib(sub, KVSL_ATTR_MIPSTATUS, &status) == 0) {
      if (status == KVSL_MIP_INFEAS) v = verdict::infeasible;
      else if (status == KVSL_MIP_SOLUTION || status == KVSL_MIP_OPTIMAL) v = verdict::feasible;
    }
    KVSLdestroyprob(sub);
    return v;
  }

 private:
  numbering n;
  std::vector<int64_t> start;
  std::vector<int> ind;
  std::vector<double> val, lb, ub, rhs, range, entlimit, setref;
  std::vector<char> rowtype, enttype, settype;
  std::vector<int> entcol, setcol;
  std::vector<int64_t> setstart;
  double per_solve;
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
    if (spent > filter_seconds) {
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
