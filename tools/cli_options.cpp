/*
 * cli_options.cpp -- parsing and checking the command line of kvtl, and its
 * help text.
 */
#include "cli_options.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>

namespace {

// A number that is all of `text`, finite and at least `low`.
bool parse_number(const char *text, double low, double *out) {
  errno = 0;
  char *end = nullptr;
  double v = strtod(text, &end);
  if (end == text || *end != '\0' || errno != 0 || !std::isfinite(v) || v < low) return false;
  *out = v;
  return true;
}

// A whole number that is all of `text`, within [low, high].
bool parse_count(const char *text, long low, long high, long *out) {
  errno = 0;
  char *end = nullptr;
  long v = strtol(text, &end, 10);
  if (end == text || *end != '\0' || errno != 0 || v < low || v > high) return false;
  *out = v;
  return true;
}

}  // namespace

bool parse_cli(int argc, char **argv, cli_options *opt, std::string *error) {
  for (int i = 1; i < argc; ++i) {
    std::string a = argv[i];
    std::string value;
    bool has_value = false;
    // --option=value is the same as --option value.
    size_t eq = a.find('=');
    if (a.rfind("--", 0) == 0 && eq != std::string::npos) {
      value = a.substr(eq + 1);
      a = a.substr(0, eq);
      has_value = true;
    }
    auto take_value = [&](const char *what) -> bool {
      if (has_value) return true;
      if (i + 1 >= argc) {
        *error = a + " needs " + what;
        return false;
      }
      value = argv[++i];
      return true;
    };
    auto bad_value = [&](const char *what) {
      *error = "bad value '" + value + "' for " + a + " (" + what + ")";
      return false;
    };
    auto takes_none = [&]() {
      if (!has_value) return true;
      *error = a + " takes no value";
      return false;
    };
    if (a == "-h" || a == "--help") {
      opt->help = true;
    } else if (a == "--version") {
      opt->version = true;
    } else if (a == "-q" || a == "--quiet") {
      if (!takes_none()) return false;
      opt->log_level = 0;
    } else if (a == "--lp") {
      if (!takes_none()) return false;
      opt->relax = true;
    } else if (a == "--min" || a == "--max") {
      if (!takes_none()) return false;
      opt->sense = a == "--min" ? 1 : -1;
    } else if (a == "--iis") {
      if (!takes_none()) return false;
      opt->iis = true;
    } else if (a == "--print-solution") {
      if (!takes_none()) return false;
      opt->print_solution = true;
    } else if (a == "--time-limit") {
      if (!take_value("a number of seconds")) return false;
      if (!parse_number(value.c_str(), 0.0, &opt->time_limit)) return bad_value("seconds >= 0");
    } else if (a == "--node-limit") {
      if (!take_value("a number of nodes")) return false;
      if (!parse_count(value.c_str(), 0, 2147483647L, &opt->node_limit))
        return bad_value("a whole number >= 0");
    } else if (a == "--rel-gap") {
      if (!take_value("a number")) return false;
      if (!parse_number(value.c_str(), 0.0, &opt->rel_gap)) return bad_value("a number >= 0");
    } else if (a == "--abs-gap") {
      if (!take_value("a number")) return false;
      if (!parse_number(value.c_str(), 0.0, &opt->abs_gap)) return bad_value("a number >= 0");
    } else if (a == "--threads") {
      long n = 0;
      if (!take_value("a number of threads")) return false;
      if (!parse_count(value.c_str(), 1, 1024, &n)) return bad_value("1 to 1024");
      opt->threads = static_cast<int>(n);
    } else if (a == "--log-level") {
      long n = 0;
      if (!take_value("a level")) return false;
      if (!parse_count(value.c_str(), 0, 3, &n)) return bad_value("0 to 3");
      opt->log_level = static_cast<int>(n);
    } else if (a == "--progress") {
      if (!take_value("a number of seconds")) return false;
      if (!parse_number(value.c_str(), 0.0, &opt->progress_every)) return bad_value("seconds >= 0");
    } else if (a == "--write-model") {
      if (!take_value("a file name")) return false;
      if (!value.ends_with(".lp") && !value.ends_with(".mps"))
        return bad_value("a name ending in .lp or .mps");
      opt->write_model = value;
    } else if (a == "--solution") {
      if (!take_value("a file name")) return false;
      if (!value.ends_with(".txt") && !value.ends_with(".prt") && !value.ends_with(".slx") &&
          !value.ends_with(".sol"))
        return bad_value("a name ending in .txt, .prt, .slx or .sol");
      opt->solution = value;
    } else if (a.size() > 1 && a[0] == '-') {
      *error = "unknown option " + a;
      return false;
    } else if (!opt->file.empty()) {
      *error = "more than one model file: " + opt->file + " and " + a;
      return false;
    } else {
      opt->file = a;
    }
  }
  if (opt->file.empty() && !opt->help && !opt->version) {
    *error = "no model file given";
    return false;
  }
  return true;
}

std::string cli_help(const char *name) {
  std::string n = name;
  return "usage: " + n + " [options] MODEL\n"
         "\n"
         "Reads a model file, states it through the Tessel library and solves it\n"
         "as an LP, a MIP or a QP, as the model needs.\n"
         "\n"
         "MODEL is an MPS file (fixed or free columns, read as free when reading\n"
         "them fixed fails; QUADOBJ or QMATRIX give a quadratic objective;\n"
         "OBJSENSE MAX maximises) or an LP-format file (name ending in .lp, with\n"
         "a quadratic objective \"[ ... ] / 2\" but no quadratic rows), either one\n"
         "gzip-compressed (.gz).  Integer, binary, semi-continuous (integer)\n"
         "columns and special ordered sets are taken over, also as written by\n"
         "--write-model; the objective keeps its constant.  A semi-continuous\n"
         "column is 0 or within [lower bound, upper bound]: an MPS SC bound\n"
         "without LO has the threshold 0.  MPS SI bounds (semi-continuous\n"
         "integers) cannot be read; LP files can carry them.  The LP reader\n"
         "renames all columns when a name holds a character it refuses (such as\n"
         "'-').\n"
         "\n"
         "Options:\n"
         "  --lp                solve the continuous relaxation, even of a MIP\n"
         "  --min, --max        minimise or maximise, whatever the file says\n"
         "  --time-limit S      stop the solve after S seconds of wall clock\n"
         "                      (0: no limit)\n"
         "  --node-limit N      stop the MIP search after N nodes (0: no limit)\n"
         "  --rel-gap G         relative gap at which the MIP search stops\n"
         "                      (engine default 1e-4)\n"
         "  --abs-gap G         absolute gap at which the MIP search stops\n"
         "                      (engine default 0)\n"
         "  --threads N         threads of the MIP search (engine default 1)\n"
         "  --log-level L       0 nothing but the result, 1 (default) progress of\n"
         "                      MIP searches, 2 also the engine's log, 3 also\n"
         "                      the search's report of every node\n"
         "  -q, --quiet         the same as --log-level 0\n"
         "  --progress S        seconds between progress lines of a MIP search\n"
         "                      (default 5; 0: only when the incumbent improves)\n"
         "  --iis               when the model is infeasible, print its irreducible\n"
         "                      infeasible subsystems by row and column name\n"
         "  --print-solution    print the nonzero values of the solution by name\n"
         "  --write-model F     write the model as stated, before solving, to F:\n"
         "                      LP format when F ends in .lp, fixed MPS for .mps\n"
         "  --solution F        write the solution to F in the engine's format\n"
         "                      chosen by the extension: .txt comma-separated,\n"
         "                      .prt tables, .slx values by name, .sol binary\n"
         "  --version           print the library's version\n"
         "  -h, --help          print this help\n"
         "Options taking a value also accept --option=value.\n"
         "\n"
         "Progress of a MIP search (log level 1 and up), from the engine's search\n"
         "log: a line marked * for each new incumbent, and otherwise one line at\n"
         "most every --progress seconds as the search reports its nodes:\n"
         "  elapsed seconds, nodes, best bound, incumbent, relative gap.\n"
         "\n"
         "Result lines at the end (always printed):\n"
         "  status     optimal | infeasible | unbounded | stopped (solution found)\n"
         "             | stopped (no solution) | not solved (...)\n"
         "  objective  the objective value (when a solution exists)\n"
         "  time       seconds to read and state the model, and to solve it\n"
         "  nodes      nodes of the MIP search (MIP only)\n"
         "  bound      best bound of the MIP search (MIP only)\n"
         "\n"
         "Exit codes:\n"
         "  0  solved to optimality (within the gaps); also --help and --version\n"
         "  1  the library or the engine failed, or a file could not be written\n"
         "  2  bad command line\n"
         "  3  the model file cannot be read, or the library refused its model\n"
         "  4  the model is infeasible\n"
         "  5  the model is unbounded\n"
         "  6  stopped by the time or node limit, with or without a solution\n";
}
