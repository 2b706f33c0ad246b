/*
 * kvtl.cpp -- the command-line solver: reads an MPS or LP file, states the
 * model through the library, solves it as LP, MIP or QP and reports.
 * `kvtl --help` lists the options and the exit codes.
 */
#include <stdio.h>

#include <chrono>
#include <cmath>
#include <string>
#include <vector>

#include "cli_options.h"
#include "iis_report.h"
#include "kvsl.h"
#include "kvtl.h"
#include "mps_model.h"
#include "progress.h"

namespace {

const char *const program = "kvtl";

// Wall-clock seconds since t0.
double seconds_since(std::chrono::steady_clock::time_point t0) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// Engine controls from the options; false (with the control named on
// standard error) when the engine refuses one.
bool apply_controls(MDLprob prob, const cli_options &opt) {
  MDLkvslprob kp = mdlgetkvslprob_prob(prob);
  struct {
    bool set;
    int control;
    double value;
    bool is_int;
    const char *what;
  } controls[] = {
      {opt.time_limit > 0.0, KVSL_CTRL_TIMELIMIT, opt.time_limit, false, "time limit"},
      {opt.node_limit > 0, KVSL_CTRL_MAXNODE, static_cast<double>(opt.node_limit), true,
       "node limit"},
      {opt.rel_gap >= 0.0, KVSL_CTRL_MIPRELGAP, opt.rel_gap, false, "relative gap"},
      {opt.abs_gap >= 0.0, KVSL_CTRL_MIPABSGAP, opt.abs_gap, false, "absolute gap"},
      {opt.threads > 0, KVSL_CTRL_THREADS, static_cast<double>(opt.threads), true, "threads"},
      // Progress needs the search's report of every node (level 2); quiet
      // runs need no search log at all.
      {true, KVSL_CTRL_MIPLOG, opt.log_level >= 1 ? 2.0 : 0.0, true, "search log"},
      {true, KVSL_CTRL_LPLOG, opt.log_level >= 2 ? 100.0 : 0.0, true, "simplex log"},
  };
  for (const auto &c : controls) {
    if (!c.set) continue;
    int rc = c.is_int ? KVSLsetintcontrol(kp, c.control, static_cast<int>(c.value))
                      : KVSLsetdblcontrol(kp, c.control, c.value);
    if (rc != 0) {
      fprintf(stderr, "%s: the engine refused the %s\n", program, c.what);
      return false;
    }
  }
  return true;
}

// Write the model as stated, LP or MPS by the file's extension.
bool write_model(MDLprob prob, const std::string &file) {
  int format = file.ends_with(".mps") ? MDL_FILE_MPS : MDL_FILE_LP;
  if (mdlexportprob_prob(prob, format, file.c_str()) != 0) {
    fprintf(stderr, "%s: cannot write the model to %s\n", program, file.c_str());
    return false;
  }
  return true;
}

// Write the solution in the engine format the extension names.
bool write_solution(MDLprob prob, const std::string &file) {
  int rc;
  if (file.ends_with(".txt"))
    rc = mdlwritesol_prob(prob, file.c_str(), nullptr);
  else if (file.ends_with(".prt"))
    rc = mdlwriteprtsol_prob(prob, file.c_str(), nullptr);
  else if (file.ends_with(".slx"))
    rc = mdlwriteslxsol_prob(prob, file.c_str(), nullptr);
  else
    rc = mdlwritebinsol_prob(prob, file.c_str(), nullptr);
  if (rc != 0) {
    fprintf(stderr, "%s: cannot write the solution to %s\n", program, file.c_str());
    return false;
  }
  return true;
}

// The outcome of a solve, as printed and as the exit code.
struct outcome {
  const char *status;
  int exit_code;
  bool infeasible;
};

// The outcome of an LP or QP by its LP status.
outcome lp_outcome(int lpstat) {
  switch (lpstat) {
    case KVSL_LP_OPTIMAL: return {"optimal", EXIT_SOLVED, false};
    case KVSL_LP_INFEAS: return {"infeasible", EXIT_INFEASIBLE, true};
    case KVSL_LP_UNBOUNDED: return {"unbounded", EXIT_UNBOUNDED, false};
    case KVSL_LP_UNFINISHED: return {"stopped (limit reached)", EXIT_STOPPED, false};
    case KVSL_LP_NONCONVEX: return {"not solved (the quadratic part is not convex)",
                                    EXIT_FAILURE_RUN, false};
    default: return {"not solved", EXIT_FAILURE_RUN, false};
  }
}

// The outcome of a MIP search by its MIP status (and the relaxation's).
outcome mip_outcome(int mipstat, int lpstat) {
  switch (mipstat) {
    case KVSL_MIP_OPTIMAL: return {"optimal", EXIT_SOLVED, false};
    case KVSL_MIP_INFEAS: return {"infeasible", EXIT_INFEASIBLE, true};
    case KVSL_MIP_UNBOUNDED: return {"unbounded", EXIT_UNBOUNDED, false};
    case KVSL_MIP_SOLUTION: return {"stopped (solution found)", EXIT_STOPPED, false};
    case KVSL_MIP_NO_SOL_FOUND:
      // The relaxation may have been what stopped it.
      if (lpstat == KVSL_LP_INFEAS) return lp_outcome(lpstat);
      return {"stopped (no solution)", EXIT_STOPPED, false};
    default: return lp_outcome(lpstat);   // the search did not start: the relaxation says why
  }
}

// The nonzero values of the solution by name, in the file's column order.
// A variable without a column (in no row and not in the objective) has no
// value of the solution and is not listed.
void print_solution(const std::vector<MDLvar> &vars) {
  printf("solution (nonzero values)\n");
  for (MDLvar v : vars) {
    if (mdlgetcolnum(v) < 0) continue;
    double x = mdlgetsol(v);
    if (x != 0.0) printf("  %-24s %.12g\n", mdlgetvarname(v), x);
  }
}

// The result lines, the solution and the subsystems of an infeasible
// model; the exit code.
int report(MDLprob prob, const cli_options &opt, const mps_model_info &info, bool mip,
           double read_time, double solve_time) {
  MDLkvslprob kp = mdlgetkvslprob_prob(prob);
  const int lpstat = mdlgetlpstat_prob(prob);
  outcome out = mip ? mip_outcome(mdlgetmipstat_prob(prob), lpstat) : lp_outcome(lpstat);
  const bool have_solution = (mdlgetprobstat_prob(prob) & 8) != 0;
  int exit_code = out.exit_code;
  printf("status     %s\n", out.status);
  if (have_solution) printf("objective  %.12g\n", mdlgetobjval_prob(prob));
  printf("time       read %.3f s, solve %.3f s\n", read_time, solve_time);
  if (mip) {
    int nodes = 0;
    double bound = 0.0;
    if (KVSLgetintattrib(kp, KVSL_ATTR_NODES, &nodes) == 0) printf("nodes      %d\n", nodes);
    if (KVSLgetdblattrib(kp, KVSL_ATTR_BESTBOUND, &bound) == 0 && std::fabs(bound) < 1e20)
      printf("bound      %.12g\n", bound);
  }
  if (opt.print_solution && have_solution) print_solution(info.vars);
  fflush(stdout);
  if (opt.iis && out.infeasible && !print_all_iis(prob)) {
    fprintf(stderr, "%s: the infeasibility analysis failed\n", program);
    exit_code = EXIT_FAILURE_RUN;
  }
  if (!opt.solution.empty()) {
    if (!have_solution) {
      fprintf(stderr, "%s: no solution to write to %s\n", program, opt.solution.c_str());
      if (exit_code == EXIT_SOLVED) exit_code = EXIT_FAILURE_RUN;
    } else if (!write_solution(prob, opt.solution)) {
      exit_code = EXIT_FAILURE_RUN;
    }
  }
  return exit_code;
}

// Solve the stated model as the options say and report; the exit code.
int solve(MDLprob prob, const cli_options &opt, const mps_model_info &info,
          search_progress &progress, double read_time) {
  const bool maximise = opt.sense != 0 ? opt.sense < 0 : info.maximise;
  const bool has_entities = info.nintegers + info.nsemicont + info.nsets > 0;
  const bool mip = has_entities && !opt.relax;
  if (mdlsetsense_prob(prob, maximise ? 1 : 0) != 0 || !apply_controls(prob, opt))
    return EXIT_FAILURE_RUN;
  if (opt.log_level >= 1)
    printf("model      %s: %d columns (%d integer, %d semi-continuous), %d rows, %d sets%s\n",
           opt.file.c_str(), info.ncols, info.nintegers, info.nsemicont, info.nrows, info.nsets,
           info.nquadratic > 0 ? ", quadratic objective" : "");
  if (info.nsetsdropped > 0)
    fprintf(stderr, "%s: %d special ordered sets have no member with a nonzero weight\n", program,
            info.nsetsdropped);
  if (!opt.write_model.empty() && !write_model(prob, opt.write_model)) return EXIT_FAILURE_RUN;
  if (opt.log_level >= 1)
    printf("solving    %s, %s\n", mip ? "MIP" : info.nquadratic > 0 ? "QP" : "LP",
           maximise ? "maximise" : "minimise");
  fflush(stdout);

  // The backend minimises sense * c'x without the constant.
  progress.set_scale(maximise ? -1.0 : 1.0, -info.objconst);
  progress.start();
  auto t0 = std::chrono::steady_clock::now();
  const char *flags = mip ? "g" : "";
  int rc = maximise ? mdlmaxim_prob(prob, flags) : mdlminim_prob(prob, flags);
  const double solve_time = seconds_since(t0);
  if (rc != 0) {
    fprintf(stderr, "%s: the optimisation failed\n", program);
    return EXIT_FAILURE_RUN;
  }
  return report(prob, opt, info, mip, read_time, solve_time);
}

// Read, state, solve and report; the exit code.
int run(const cli_options &opt) {
  mdlseterrctrl(0);
  MDLprob prob = mdlnewprob(nullptr);
  if (prob == nullptr) {
    fprintf(stderr, "%s: the library could not start\n", program);
    return EXIT_FAILURE_RUN;
  }
  // The callback is there from the start, so that nothing of the library
  // or the engine is printed behind it.
  search_progress progress(stdout, opt.log_level, opt.progress_every, 1.0, 0.0);
  progress.attach(prob);
  auto t0 = std::chrono::steady_clock::now();
  mps_model_info info;
  std::string error;
  int exit_code;
  if (!build_from_file(prob, opt.file.c_str(), &info, &error)) {
    fprintf(stderr, "%s: %s\n", program, error.c_str());
    exit_code = EXIT_READ;
  } else {
    exit_code = solve(prob, opt, info, progress, seconds_since(t0));
  }
  mdldelprob_prob(prob);
  return exit_code;
}

}  // namespace

int main(int argc, char **argv) {
  cli_options opt;
  std::string error;
  if (!parse_cli(argc, argv, &opt, &error)) {
    fprintf(stderr, "%s: %s\nTry '%s --help'.\n", program, error.c_str(), program);
    return EXIT_USAGE;
  }
  if (opt.help) {
    fputs(cli_help(program).c_str(), stdout);
    return EXIT_SOLVED;
  }
  if (opt.version) {
    printf("%s (Tessel library %s)\n", program, mdlgetversion());
    return EXIT_SOLVED;
  }
  return run(opt);
}
