/*
 * optima_table.h -- test support: the tab-separated tables of published
 * optima in the shared data folder, and the relative comparison with them.
 */
#ifndef KVTL_TESTS_SUPPORT_OPTIMA_TABLE_H
#define KVTL_TESTS_SUPPORT_OPTIMA_TABLE_H

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace testsupport {

// The rows of a table below its header line, split at tabs (empty when the
// file is missing: the suites count their cases to catch that).
inline std::vector<std::vector<std::string>> read_table(const std::string &file) {
  std::vector<std::vector<std::string>> rows;
  std::ifstream in(file);
  std::string line;
  std::getline(in, line);   // header
  while (std::getline(in, line)) {
    std::vector<std::string> f;
    std::stringstream ss(line);
    std::string field;
    while (std::getline(ss, field, '\t')) f.push_back(field);
    rows.push_back(std::move(f));
  }
  return rows;
}

// Is got within tol of want, relative to |want| (absolute below 1)?
inline bool close_rel(double got, double want, double tol) {
  return std::fabs(got - want) <= tol * std::max(1.0, std::fabs(want));
}

}  // namespace testsupport

#endif
