/*
 * solobj.cpp -- solution objects: setting, removing, querying and printing
 * the values of variables, in serial order with lazy removal.
 */
#include "solver/solobj.h"

#include <math.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <new>
#include <vector>

#include "core/errors.h"
#include "problem/names.h"

namespace kvtl {
namespace {

constexpr int max_appends = 255;

uint32_t serial_of(const mdl_solentry *e) { return e->var->serial; }

mdl_solentry *new_entry(mdl_sol *sol, mdl_var *var, double value) {
  auto *e = static_cast<mdl_solentry *>(mdlallocmem(sol->problem, sizeof(mdl_solentry), 0));
  if (e == nullptr) return nullptr;
  e->value = value;
  e->var = var;
  e->next = nullptr;
  return e;
}

void free_entry(mdl_sol *sol, mdl_solentry *e) {
  mdlrecyclemem(sol->problem, e, sizeof(mdl_solentry));
}

// Chain a new entry right after the last one as the most recent append.
bool append(mdl_sol *sol, mdl_var *var, double value) {
  mdl_solentry *e = new_entry(sol, var, value);
  if (e == nullptr) return false;
  e->next = sol->last->next;
  sol->last->next = e;
  ++sol->pending;
  return true;
}

// The most recent append, or null.
mdl_solentry *newest_append(const mdl_sol *sol) {
  return sol->pending > 0 ? sol->last->next : nullptr;
}

// Set a value that is not NaN: 0, or 1 when out of memory.
int set_value(mdl_sol *sol, mdl_var *var, double value) {
  for (;;) {
    const uint32_t s = var->serial;
    if (sol->first == nullptr) {
      mdl_solentry *e = new_entry(sol, var, value);
      if (e == nullptr) return 1;
      sol->first = sol->last = e;
      sol->pending = 0;
      return 0;
    }
    // An entry of the variable, or a removed end entry beyond which s lies,
    // takes the value in place.
    mdl_solentry *newest = newest_append(sol);
    mdl_solentry *hit = nullptr;
    if (s == serial_of(sol->first) || (s < serial_of(sol->first) && isnan(sol->first->value)))
      hit = sol->first;
    else if (s == serial_of(sol->last) || (s > serial_of(sol->last) && isnan(sol->last->value)))
      hit = sol->last;
    else if (newest != nullptr && serial_of(newest) == s)
      hit = newest;
    if (hit != nullptr) {
      hit->var = var;
      hit->value = value;
      return 0;
    }
    if (s < serial_of(sol->first) || s > serial_of(sol->last)) {
      mdl_solentry *e = new_entry(sol, var, value);
      if (e == nullptr) return 1;
      if (s < serial_of(sol->first)) {
        e->next = sol->first;
        sol->first = e;
      } else {
        // The new last entry takes over the appends that followed the old one.
        e->next = sol->last->next;
        sol->last->next = e;
        sol->last = e;
      }
      return 0;
    }
    if (sol->pending < max_appends) return append(sol, var, value) ? 0 : 1;
    if (!normalise_sol(sol)) return 1;
  }
}

// Remove a variable's value: 0, or 1 when out of memory.
int remove_value(mdl_sol *sol, mdl_var *var) {
  for (;;) {
    if (sol->first == nullptr) return 0;
    const uint32_t s = var->serial;
    if (s < serial_of(sol->first) || s > serial_of(sol->last)) return 0;
    mdl_solentry *newest = newest_append(sol);
    mdl_solentry *hit = s == serial_of(sol->first)                   ? sol->first
                        : s == serial_of(sol->last)                  ? sol->last
                        : newest != nullptr && serial_of(newest) == s ? newest
                                                                      : nullptr;
    if (hit != nullptr) {
      hit->value = NAN;
      return 0;
    }
    if (sol->pending < max_appends) return append(sol, var, NAN) ? 0 : 1;
    if (!normalise_sol(sol)) return 1;
  }
}

bool no_solution(const mdl_sol *sol, const char *fn) {
  if (sol != nullptr) return false;
  mdlerror(nullptr, MDL_E_NOSOL, fn);
  return true;
}

bool no_variable(const mdl_sol *sol, const mdl_var *var, const char *fn) {
  if (var != nullptr) return false;
  mdlerror(sol->problem, MDL_E_NOVAR, fn);
  return true;
}

// Set or, for NaN, remove (after warning 1599 of `fn`).
int set_or_remove(mdl_sol *sol, mdl_var *var, double value, const char *fn) {
  if (!isnan(value)) return set_value(sol, var, value);
  mdlerror(sol->problem, MDL_W_SOLNAN, fn, display_name(var->name, var));
  return remove_value(sol, var);
}

// Characters of "name = value" as printed.
int entry_text(const mdl_sol *sol, const mdl_solentry *e, char *buf, size_t size) {
  int n = snprintf(buf, size, "%s = ", display_name(e->var->name, e->var));
  if (n < 0 || static_cast<size_t>(n) >= size) return n;
  int m = snprintf(buf + n, size - static_cast<size_t>(n), sol->problem->realfmt, e->value);
  return m < 0 ? m : n + m;
}

}  // namespace

bool normalise_sol(mdl_sol *sol) {
  if (sol->first == nullptr) return true;
  // Age: run entries 0, appends from 1 (oldest) upwards.
  struct item {
    mdl_solentry *e;
    uint32_t serial;
    int age;
  };
  std::vector<item> items;
  try {
    items.reserve(64);
    mdl_solentry *e = sol->first;
    for (; e != sol->last; e = e->next) items.push_back({e, serial_of(e), 0});
    items.push_back({sol->last, serial_of(sol->last), 0});
    int age = sol->pending;
    for (e = sol->last->next; e != nullptr; e = e->next) items.push_back({e, serial_of(e), age--});
  } catch (const std::bad_alloc &) {
    mdlerror(sol->problem, MDL_E_NOMEM);
    return false;
  }
  std::sort(items.begin(), items.end(), [](const item &a, const item &b) {
    return a.serial != b.serial ? a.serial < b.serial : a.age > b.age;
  });
  mdl_solentry *head = nullptr;
  mdl_solentry *tail = nullptr;
  for (size_t i = 0; i < items.size(); ++i) {
    mdl_solentry *e = items[i].e;
    const bool superseded = i > 0 && items[i - 1].serial == items[i].serial;
    if (superseded || isnan(e->value)) {
      free_entry(sol, e);
      continue;
    }
    e->next = nullptr;
    if (tail == nullptr) head = e;
    else tail->next = e;
    tail = e;
  }
  sol->first = head;
  sol->last = tail;
  sol->pending = 0;
  return true;
}

}  // namespace kvtl

using namespace kvtl;

// A new empty solution from the problem's pool; it holds a reference on
// the problem so that its entries can go back to the pool.
KVTL_API MDLsol mdlnewsol_prob(MDLprob prob) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "newsol");
    return nullptr;
  }
  auto *sol = static_cast<mdl_sol *>(mdlallocmem(prob, sizeof(mdl_sol), 1));
  if (sol == nullptr) return nullptr;
  sol->problem = prob;
  mdlinrcprob(prob);
  return sol;
}

// Set or replace a variable's value (NaN removes it).
KVTL_API int mdlsetsolvar(MDLsol sol, MDLvar var, double value) {
  if (no_solution(sol, "setsolvar") || no_variable(sol, var, "setsolvar")) return 1;
  return set_or_remove(sol, var, value, "setsolvar");
}

// values[i] for every slot i of the array, stopping at the first failure.
KVTL_API int mdlsetsolarrvar(MDLsol sol, MDLarrvar arr, const double *values) {
  if (no_solution(sol, "setsolarrvar")) return 1;
  if (arr == nullptr) {
    mdlerror(sol->problem, MDL_E_NOARRVAR, "setsolarrvar");
    return 1;
  }
  if (values == nullptr) {
    mdlerror(sol->problem, MDL_E_NOARRCONST, "setsolarrvar");
    return 1;
  }
  const int n = mdlgetarrvarsize(arr);
  for (int i = 0; i < n; ++i) {
    if (no_variable(sol, arr[i], "setsolarrvar")) return 1;
    if (set_or_remove(sol, arr[i], values[i], "setsolarrvar") != 0) return 1;
  }
  return 0;
}

// Remove a variable's value.
KVTL_API int mdldelsolvar(MDLsol sol, MDLvar var) {
  if (no_solution(sol, "delsolvar") || no_variable(sol, var, "delsolvar")) return 1;
  return remove_value(sol, var);
}

// Drop removed entries.
KVTL_API int mdlstripsol(MDLsol sol) {
  if (sol == nullptr) return 1;
  return normalise_sol(sol) ? 0 : 1;
}

// Number of variables holding a value.
KVTL_API int mdlgetsolsize(MDLsol sol) {
  if (sol == nullptr) {
    mdlerror(nullptr, MDL_W_NOSOL, "getsolsize");
    return -1;
  }
  if (!normalise_sol(sol)) return -1;
  int n = 0;
  for (mdl_solentry *e = sol->first; e != nullptr; e = e->next) ++n;
  return n;
}

// The latest value of the variable: the most recent append for it, else
// its entry in the run.
KVTL_API int mdlgetsolvar(MDLsol sol, MDLvar var, double *value) {
  if (sol == nullptr) {
    mdlerror(nullptr, MDL_W_NOSOL, "getsolvar");
    return 1;
  }
  if (no_variable(sol, var, "getsolvar") || value == nullptr) return 1;
  if (sol->first == nullptr) return -1;
  const uint32_t s = var->serial;
  const mdl_solentry *found = nullptr;
  for (const mdl_solentry *e = sol->last->next; e != nullptr && found == nullptr; e = e->next)
    if (serial_of(e) == s) found = e;
  for (const mdl_solentry *e = sol->first; found == nullptr; e = e->next) {
    if (serial_of(e) == s) found = e;
    if (e == sol->last) break;
  }
  if (found == nullptr || isnan(found->value)) return -1;
  *value = found->value;
  return 0;
}

// "name = value" entries separated by ", "; a new line starts before an
// entry once the entries on the line exceed 75 characters.
KVTL_API int mdlprintsol(MDLsol sol) {
  if (sol == nullptr) {
    mdlerror(nullptr, MDL_W_NOSOLGIVEN, "printsol");
    return 1;
  }
  if (!normalise_sol(sol)) return 1;
  MDLprob prob = sol->problem;
  int line = 0;
  char buf[512];
  for (mdl_solentry *e = sol->first; e != nullptr; e = e->next) {
    if (e != sol->first) mdlprintf_prob(prob, ", ");
    if (line > 75) {
      mdlprintf_prob(prob, "\n");
      line = 0;
    }
    int n = entry_text(sol, e, buf, sizeof buf);
    if (n < 0) return 1;
    mdlprintf_prob(prob, "%s", buf);
    line += n;
  }
  mdlprintf_prob(prob, "\n");
  return 0;
}

// Give the entries and the object back to the pool.
KVTL_API int mdldelsol(MDLsol sol) {
  if (no_solution(sol, "delsol")) return 1;
  MDLprob prob = sol->problem;
  mdl_solentry *e = sol->first;
  while (e != nullptr) {
    mdl_solentry *next = e->next;
    free_entry(sol, e);
    e = next;
  }
  mdlrecyclemem(prob, sol, sizeof(mdl_sol));
  mdldeallocprob(prob);
  return 0;
}
