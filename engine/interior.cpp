/*
 * interior.cpp -- continuous problems with a quadratic objective or quadratic
 * rows, solved by an interior-point method (Ipopt) on the exact derivatives.
 */
#include <algorithm>
#include <chrono>
#include <cmath>
#include <mutex>
#include <unordered_map>
#include <vector>

#include <ClpSimplex.hpp>
#include <CoinPackedMatrix.hpp>
#include <IpIpoptApplication.hpp>
#include <IpSolveStatistics.hpp>
#include <IpTNLP.hpp>

#include "engine.h"
#include "solve_limits.h"

namespace kvsl {

namespace {

using Ipopt::Index;
using Ipopt::Number;

// Ipopt's infinity: bounds at or beyond it are absent.
constexpr double ipopt_infinity = 1e19;

double ipopt_bound(double v) {
  if (v >= 1e20 || v >= COIN_DBL_MAX) return 2 * ipopt_infinity;
  if (v <= -1e20 || v <= -COIN_DBL_MAX) return -2 * ipopt_infinity;
  return v;
}

// The loaded problem as Ipopt sees it: minimise s (c'x + 0.5 x'Qx) subject
// to row_lo <= a_i'x + x'Q_i x <= row_up and the column bounds, s the sense.
class quadratic_nlp : public Ipopt::TNLP {
 public:
  quadratic_nlp(const kvsl_prob *prob, const relaxation_bounds &bounds, const double *start)
      : prob_(prob), bounds_(bounds), start_(start) {
    build();
  }

  bool get_nlp_info(Index &n, Index &m, Index &nnz_jac, Index &nnz_hess,
                    IndexStyleEnum &style) override {
    n = n_;
    m = m_;
    nnz_jac = static_cast<Index>(jac_col_.size());
    nnz_hess = static_cast<Index>(hess_row_.size());
    style = C_STYLE;
    return true;
  }

  bool get_bounds_info(Index, Number *xl, Number *xu, Index, Number *gl, Number *gu) override {
    for (int j = 0; j < n_; ++j) {
      xl[j] = ipopt_bound(bounds_.col_lo[j]);
      xu[j] = ipopt_bound(bounds_.col_up[j]);
    }
    for (int i = 0; i < m_; ++i) {
      gl[i] = ipopt_bound(bounds_.row_lo[i]);
      gu[i] = ipopt_bound(bounds_.row_up[i]);
    }
    return true;
  }

  bool get_starting_point(Index, bool init_x, Number *x, bool init_z, Number *, Number *,
                          Index, bool init_lambda, Number *) override {
    if (init_z || init_lambda || !init_x) return false;
    // The given start (or 0) moved into the bounds; the interior-point
    // method moves it inwards.
    for (int j = 0; j < n_; ++j) {
      double v = start_ != nullptr ? start_[j] : 0.0;
      x[j] = std::min(std::max(v, bounds_.col_lo[j]), bounds_.col_up[j]);
    }
    return true;
  }

  bool eval_f(Index, const Number *x, bool, Number &f) override {
    const double *c = prob_->lp->objective();
    double v = 0.0;
    for (int j = 0; j < n_; ++j) v += c[j] * x[j];
    for (size_t k = 0; k < qo_val_.size(); ++k)
      v += (qo_r_[k] == qo_c_[k] ? 0.5 : 1.0) * qo_val_[k] * x[qo_r_[k]] * x[qo_c_[k]];
    f = sense_ * v;
    return true;
  }

  bool eval_grad_f(Index, const Number *x, bool, Number *g) override {
    const double *c = prob_->lp->objective();
    for (int j = 0; j < n_; ++j) g[j] = sense_ * c[j];
    for (size_t k = 0; k < qo_val_.size(); ++k) {
      int r = qo_r_[k], cc = qo_c_[k];
      g[r] += sense_ * qo_val_[k] * x[cc];
      if (r != cc) g[cc] += sense_ * qo_val_[k] * x[r];
    }
    return true;
  }

  bool eval_g(Index, const Number *x, bool, Index, Number *g) override {
    for (int i = 0; i < m_; ++i) {
      double v = 0.0;
      for (int k = jac_start_[i]; k < jac_start_[i + 1]; ++k) v += lin_[k] * x[jac_col_[k]];
      g[i] = v;
    }
    for (const quad_row &r : prob_->qrows) g[r.row] += quad_row_value(r, x);
    return true;
  }

  bool eval_jac_g(Index, const Number *x, bool, Index, Index, Index *irow, Index *jcol,
                  Number *values) override {
    if (values == nullptr) {
      for (int i = 0; i < m_; ++i)
        for (int k = jac_start_[i]; k < jac_start_[i + 1]; ++k) {
          irow[k] = i;
          jcol[k] = jac_col_[k];
        }
      return true;
    }
    std::copy(lin_.begin(), lin_.end(), values);
    // d/dx of x'Qx over a triangle: 2 v x_j on the diagonal, 2 v x_j and
    // 2 v x_i off it.
    for (size_t q = 0; q < prob_->qrows.size(); ++q) {
      const quad_row &r = prob_->qrows[q];
      const std::vector<int> &pos = qrow_jac_[q];
      for (size_t k = 0; k < r.val.size(); ++k) {
        int a = r.col1[k], b = r.col2[k];
        values[pos[2 * k]] += 2.0 * r.val[k] * x[b];
        if (a != b) values[pos[2 * k + 1]] += 2.0 * r.val[k] * x[a];
      }
    }
    return true;
  }

  bool eval_h(Index, const Number *, bool, Number obj_factor, Index, const Number *lambda, bool,
              Index, Index *irow, Index *jcol, Number *values) override {
    if (values == nullptr) {
      std::copy(hess_row_.begin(), hess_row_.end(), irow);
      std::copy(hess_col_.begin(), hess_col_.end(), jcol);
      return true;
    }
    std::fill(values, values + hess_row_.size(), 0.0);
    for (size_t k = 0; k < qo_val_.size(); ++k)
      values[qo_hess_[k]] += obj_factor * sense_ * qo_val_[k];
    for (size_t q = 0; q < prob_->qrows.size(); ++q) {
      const quad_row &r = prob_->qrows[q];
      for (size_t k = 0; k < r.val.size(); ++k)
        values[qrow_hess_[q][k]] += lambda[r.row] * 2.0 * r.val[k];
    }
    return true;
  }

  void finalize_solution(Ipopt::SolverReturn status, Index, const Number *x, const Number *,
                         const Number *, Index, const Number *, const Number *lambda, Number,
                         const Ipopt::IpoptData *, Ipopt::IpoptCalculatedQuantities *) override {
    status_ = status;
    x_.assign(x, x + n_);
    lambda_.assign(lambda, lambda + m_);
  }

  // Ipopt measures CPU time only: the wall-clock deadline is checked at
  // every iteration (false stops the solve as asked by the user).
  bool intermediate_callback(Ipopt::AlgorithmMode, Index, Number, Number, Number, Number, Number,
                             Number, Number, Number, Index, const Ipopt::IpoptData *,
                             Ipopt::IpoptCalculatedQuantities *) override {
    return !deadline_passed(prob_);
  }

  Ipopt::SolverReturn status_ = Ipopt::UNASSIGNED;
  std::vector<double> x_, lambda_;

  // Gradient of row i's function at x, added times f into d (length n).
  void add_row_gradients(const double *x, const double *y, double *d) const {
    for (int i = 0; i < m_; ++i)
      for (int k = jac_start_[i]; k < jac_start_[i + 1]; ++k) d[jac_col_[k]] += y[i] * lin_[k];
    for (const quad_row &r : prob_->qrows)
      for (size_t k = 0; k < r.val.size(); ++k) {
        int a = r.col1[k], b = r.col2[k];
        d[a] += y[r.row] * 2.0 * r.val[k] * x[b];
        if (a != b) d[b] += y[r.row] * 2.0 * r.val[k] * x[a];
      }
  }

 private:
  // Row-wise Jacobian pattern (linear part and quadratic columns of each
  // row) and the lower-triangle Hessian pattern of every form.
  void build() {
    const ClpSimplex &m = *prob_->lp;
    n_ = m.numberColumns();
    m_ = m.numberRows();
    sense_ = m.optimizationDirection() < 0 ? -1.0 : 1.0;
    CoinPackedMatrix rows(*m.matrix());
    if (rows.isColOrdered()) rows.reverseOrdering();
    std::vector<std::vector<int>> extra(m_);
    for (const quad_row &r : prob_->qrows)
      for (size_t k = 0; k < r.val.size(); ++k) {
        extra[r.row].push_back(r.col1[k]);
        extra[r.row].push_back(r.col2[k]);
      }
    std::unordered_map<long long, int> at;   // (row, col) -> Jacobian position
    jac_start_.assign(m_ + 1, 0);
    for (int i = 0; i < m_; ++i) {
      jac_start_[i] = static_cast<int>(jac_col_.size());
      const CoinBigIndex b = rows.getVectorStarts()[i];
      for (int k = 0; k < rows.getVectorLengths()[i]; ++k) {
        int j = rows.getIndices()[b + k];
        long long key = static_cast<long long>(i) * n_ + j;
        auto [it, fresh] = at.emplace(key, static_cast<int>(jac_col_.size()));
        if (fresh) {
          jac_col_.push_back(j);
          lin_.push_back(rows.getElements()[b + k]);
        } else {
          lin_[it->second] += rows.getElements()[b + k];
        }
      }
      for (int j : extra[i]) {
        long long key = static_cast<long long>(i) * n_ + j;
        if (at.emplace(key, static_cast<int>(jac_col_.size())).second) {
          jac_col_.push_back(j);
          lin_.push_back(0.0);
        }
      }
    }
    jac_start_[m_] = static_cast<int>(jac_col_.size());
    qrow_jac_.resize(prob_->qrows.size());
    for (size_t q = 0; q < prob_->qrows.size(); ++q) {
      const quad_row &r = prob_->qrows[q];
      for (size_t k = 0; k < r.val.size(); ++k) {
        // Position of the derivative by col1 (carries x[col2]) and by col2.
        qrow_jac_[q].push_back(at[static_cast<long long>(r.row) * n_ + r.col1[k]]);
        qrow_jac_[q].push_back(at[static_cast<long long>(r.row) * n_ + r.col2[k]]);
      }
    }
    std::unordered_map<long long, int> hat;
    auto hess_pos = [&](int a, int b) {
      int r = std::max(a, b), c = std::min(a, b);
      long long key = static_cast<long long>(r) * n_ + c;
      auto [it, fresh] = hat.emplace(key, static_cast<int>(hess_row_.size()));
      if (fresh) {
        hess_row_.push_back(r);
        hess_col_.push_back(c);
      }
      return it->second;
    };
    if (prob_->has_quadratic) {
      const CoinPackedMatrix *q = quadratic_of(m);
      for (int j = 0; j < q->getNumCols(); ++j)
        for (CoinBigIndex k = q->getVectorStarts()[j];
             k < q->getVectorStarts()[j] + q->getVectorLengths()[j]; ++k) {
          qo_r_.push_back(q->getIndices()[k]);
          qo_c_.push_back(j);
          qo_val_.push_back(q->getElements()[k]);
          qo_hess_.push_back(hess_pos(q->getIndices()[k], j));
        }
    }
    qrow_hess_.resize(prob_->qrows.size());
    for (size_t q = 0; q < prob_->qrows.size(); ++q) {
      const quad_row &r = prob_->qrows[q];
      for (size_t k = 0; k < r.val.size(); ++k) qrow_hess_[q].push_back(hess_pos(r.col1[k], r.col2[k]));
    }
  }

  const kvsl_prob *prob_;
  const relaxation_bounds &bounds_;
  const double *start_;
  int n_ = 0, m_ = 0;
  double sense_ = 1.0;
  std::vector<int> jac_start_, jac_col_;
  std::vector<double> lin_;
  std::vector<std::vector<int>> qrow_jac_, qrow_hess_;
  std::vector<int> hess_row_, hess_col_;
  std::vector<int> qo_r_, qo_c_, qo_hess_;
  std::vector<double> qo_val_;
};

// LP status of Ipopt's return.
int status_of(Ipopt::ApplicationReturnStatus rc) {
  switch (rc) {
    case Ipopt::Solve_Succeeded:
    case Ipopt::Solved_To_Acceptable_Level: return KVSL_LP_OPTIMAL;
    case Ipopt::Infeasible_Problem_Detected: return KVSL_LP_INFEAS;
    case Ipopt::Diverging_Iterates: return KVSL_LP_UNBOUNDED;
    case Ipopt::Maximum_Iterations_Exceeded:
    case Ipopt::Maximum_CpuTime_Exceeded:
    case Ipopt::User_Requested_Stop: return KVSL_LP_UNFINISHED;
    default: return KVSL_LP_UNSOLVED;
  }
}

}  // namespace

double quad_row_value(const quad_row &r, const double *x) {
  double v = 0.0;
  for (size_t k = 0; k < r.val.size(); ++k)
    v += (r.col1[k] == r.col2[k] ? 1.0 : 2.0) * r.val[k] * x[r.col1[k]] * x[r.col2[k]];
  return v;
}

relaxation_bounds model_bounds(const kvsl_prob *prob) {
  const ClpSimplex &m = *prob->lp;
  const int n = m.numberColumns(), r = m.numberRows();
  return {std::vector<double>(m.columnLower(), m.columnLower() + n),
          std::vector<double>(m.columnUpper(), m.columnUpper() + n),
          std::vector<double>(m.rowLower(), m.rowLower() + r),
          std::vector<double>(m.rowUpper(), m.rowUpper() + r)};
}

void solve_relaxation(const kvsl_prob *prob, const relaxation_bounds &bounds, const double *start,
                      relaxation_result &out) {
  // The sequential MUMPS build under Ipopt keeps process-wide state, so
  // interior-point solves of different problems take turns.
  static std::mutex backend_mutex;
  std::lock_guard<std::mutex> lock(backend_mutex);
  out = relaxation_result();
  Ipopt::SmartPtr<quadratic_nlp> nlp = new quadratic_nlp(prob, bounds, start);
  Ipopt::SmartPtr<Ipopt::IpoptApplication> app = IpoptApplicationFactory();
  // Silent: the banner and the iteration log would go to standard output.
  app->Options()->SetIntegerValue("print_level", 0);
  app->Options()->SetStringValue("sb", "yes");
  app->Options()->SetNumericValue("tol", 1e-10);
  app->Options()->SetNumericValue("acceptable_tol", 1e-8);
  app->Options()->SetNumericValue("constr_viol_tol", dblcontrol(prob, KVSL_CTRL_FEASTOL) * 1e-2);
  app->Options()->SetNumericValue("dual_inf_tol", dblcontrol(prob, KVSL_CTRL_OPTIMALITYTOL));
  app->Options()->SetNumericValue("bound_relax_factor", 0.0);
  app->Options()->SetIntegerValue("max_iter", 3000);
  if (prob->qrows.empty()) {
    app->Options()->SetStringValue("jac_c_constant", "yes");
    app->Options()->SetStringValue("jac_d_constant", "yes");
    app->Options()->SetStringValue("hessian_constant", "yes");
  }
  if (has_deadline(prob))
    app->Options()->SetNumericValue("max_cpu_time", backend_seconds(prob));
  if (app->Initialize() != Ipopt::Solve_Succeeded) return;
  Ipopt::ApplicationReturnStatus rc = app->OptimizeTNLP(Ipopt::GetRawPtr(nlp));
  out.status = status_of(rc);
  if (Ipopt::IsValid(app->Statistics())) out.iterations = app->Statistics()->IterationCount();
  if (out.status != KVSL_LP_OPTIMAL || nlp->x_.empty()) return;
  const int n = static_cast<int>(nlp->x_.size()), r = static_cast<int>(nlp->lambda_.size());
  out.x = nlp->x_;
  // The iterates stay inside the bounds up to rounding; report them inside.
  for (int j = 0; j < n; ++j)
    out.x[j] = std::min(std::max(out.x[j], bounds.col_lo[j]), bounds.col_up[j]);
  // Duals: the derivative of the objective by the right-hand side is minus
  // the multiplier of the minimised problem, times the sense.
  const double s = prob->sense < 0 ? -1.0 : 1.0;
  out.dual.resize(r);
  for (int i = 0; i < r; ++i) out.dual[i] = -s * nlp->lambda_[i];
  // Reduced costs: gradient of the objective minus the rows' gradients
  // weighted by the duals.
  const ClpSimplex &m = *prob->lp;
  const double *x = out.x.data();
  std::vector<double> gy(n, 0.0);
  out.dj.assign(m.objective(), m.objective() + n);
  if (prob->has_quadratic) {
    const CoinPackedMatrix *q = quadratic_of(m);
    for (int j = 0; j < q->getNumCols(); ++j)
      for (CoinBigIndex k = q->getVectorStarts()[j];
           k < q->getVectorStarts()[j] + q->getVectorLengths()[j]; ++k) {
        int i = q->getIndices()[k];
        out.dj[i] += q->getElements()[k] * x[j];
        if (i != j) out.dj[j] += q->getElements()[k] * x[i];
      }
  }
  nlp->add_row_gradients(x, out.dual.data(), gy.data());
  for (int j = 0; j < n; ++j) out.dj[j] -= gy[j];
  out.obj = objective_of(prob, x);
}

int solve_interior(kvsl_prob *prob) {
  relaxation_result res;
  solve_relaxation(prob, model_bounds(prob), nullptr, res);
  prob->lpstatus = res.status;
  prob->iterations = res.iterations;
  if (res.status != KVSL_LP_OPTIMAL) return 0;
  const int r = prob->lp->numberRows();
  prob->lp_x = std::move(res.x);
  prob->lp_dual = std::move(res.dual);
  prob->lp_dj = std::move(res.dj);
  prob->lp_slack.resize(r);
  slacks_of(prob, prob->lp_x.data(), prob->lp_slack.data());
  prob->lp_obj = res.obj;
  for (auto *v : {&prob->lp_x, &prob->lp_dj, &prob->lp_dual, &prob->lp_slack})
    for (double &e : *v) e += 0.0;
  return 0;
}

}  // namespace kvsl
