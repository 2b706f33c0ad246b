/*
 * cli_options.h -- the command line of the kvtl solver: options, their
 * checks, the help text and the documented exit codes.
 */
#ifndef KVTL_TOOLS_CLI_OPTIONS_H
#define KVTL_TOOLS_CLI_OPTIONS_H

#include <string>

// Exit codes of kvtl (also listed by --help).
enum cli_exit {
  EXIT_SOLVED = 0,       // optimal (within the gaps), or --help / --version
  EXIT_FAILURE_RUN = 1,  // the library or engine failed, or an output file was not written
  EXIT_USAGE = 2,        // bad command line
  EXIT_READ = 3,         // the model file cannot be read or stated
  EXIT_INFEASIBLE = 4,   // proven infeasible
  EXIT_UNBOUNDED = 5,    // unbounded
  EXIT_STOPPED = 6       // stopped by the time or node limit (with or without a solution)
};

struct cli_options {
  std::string file;           // the model file
  bool relax = false;         // --lp: solve the continuous relaxation
  int sense = 0;              // 0 as the file says, 1 --min, -1 --max
  double time_limit = 0.0;    // seconds of wall clock, 0 none
  long node_limit = 0;        // nodes, 0 none
  double rel_gap = -1.0;      // < 0: the engine's default
  double abs_gap = -1.0;
  int threads = 0;            // 0: the engine's default
  int log_level = 1;          // 0 silent, 1 progress, 2 engine log, 3 detailed engine log
  double progress_every = 5.0;  // seconds between progress lines, 0 only new incumbents
  bool iis = false;
  bool print_solution = false;
  std::string write_model;    // .lp or .mps
  std::string solution;       // .txt, .prt, .slx or .sol
  bool help = false;
  bool version = false;
};

// Parse argv into *opt; false with a message in *error on a bad command
// line.  `name` is how the program was called, for the messages.
bool parse_cli(int argc, char **argv, cli_options *opt, std::string *error);

// The help text: usage, every option and the exit codes.
std::string cli_help(const char *name);

#endif
