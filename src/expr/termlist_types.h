/*
 * termlist_types.h -- layout of term-list headers and nodes, shared by every
 * record that holds terms (constraints, sets, expressions, cuts, solutions).
 */
#ifndef KVTL_EXPR_TERMLIST_TYPES_H
#define KVTL_EXPR_TERMLIST_TYPES_H

#include <stdint.h>

struct mdl_var;

// Linear node: taken from the pool of the problem of its variable.
struct mdl_term {
  double coef;
  mdl_var *var;
  mdl_term *next;
};

// Quadratic node: var1 is not above var2 in handle order.
struct mdl_qterm {
  double coef;
  mdl_var *var1;
  mdl_var *var2;
  mdl_qterm *next;
};

// Header of a linear or quadratic list (first/last point at nodes of the
// list's kind).  A null reference stands for the empty list.
struct mdl_termlst {
  void *first;       // first node
  void *last;        // largest variable of the sorted run; the tail follows
  int32_t pending;   // nodes in the unsorted tail
  int16_t resets;    // tail nodes appended by set-term
  uint16_t room;     // tail limit of a long run, in units of 256 (0: the
                     // default limit); set when a full tail is merged
};

// Terms plus constant, related by a constraint type to 0.
struct mdl_expr {
  double constant;
  mdl_termlst *lin;
  mdl_termlst *quad;
};

#endif
