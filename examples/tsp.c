/*
 * tsp.c -- a symmetric travelling-salesman problem from a TSPLIB file (plain
 * or gzip-compressed) solved to optimality: degree constraints in the
 * model, subtour elimination from the search callbacks.
 *
 * Usage: tsp FILE.  Prints "tour length N" and "tour c1 c2 ... cn" (cities
 * by their numbers in the file, in visiting order).
 */
#include <ctype.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <zlib.h>

#include "kvsl.h"
#include "kvtl.h"

/* ---- Reading the instance ------------------------------------------------ */

struct instance {
  int n;
  int *dist; /* n * n */
};

static int fail(const char *what) {
  fprintf(stderr, "tsp: %s\n", what);
  return 1;
}

/* The whole (decompressed) file as one NUL-terminated text. */
static char *read_file(const char *path) {
  gzFile f = gzopen(path, "rb");
  if (f == NULL) return NULL;
  size_t cap = 1 << 16, len = 0;
  char *buf = malloc(cap);
  for (;;) {
    if (buf == NULL) break;
    if (cap - len < 4096) {
      char *bigger = realloc(buf, cap * 2);
      if (bigger == NULL) {
        free(buf);
        buf = NULL;
        break;
      }
      buf = bigger;
      cap *= 2;
    }
    int got = gzread(f, buf + len, (unsigned)(cap - len - 1));
    if (got < 0) {
      free(buf);
      buf = NULL;
      break;
    }
    if (got == 0) break;
    len += (size_t)got;
  }
  gzclose(f);
  if (buf != NULL) buf[len] = 0;
  return buf;
}

/* Copy the text of [b, e) without surrounding blanks into out. */
static void trimmed(const char *b, const char *e, char *out, size_t size) {
  while (b < e && isspace((unsigned char)*b)) ++b;
  while (e > b && isspace((unsigned char)e[-1])) --e;
  size_t n = (size_t)(e - b);
  if (n >= size) n = size - 1;
  memcpy(out, b, n);
  out[n] = 0;
}

/* The next number of the text at *p (across lines); 0 at the end. */
static int next_number(char **p, double *v) {
  char *end;
  while (**p != 0 && isspace((unsigned char)**p)) ++*p;
  if (**p == 0) return 0;
  *v = strtod(*p, &end);
  if (end == *p) return 0;
  *p = end;
  return 1;
}

static double geo_radians(double c) {
  const double pi = 3.141592;
  int deg = (int)c;
  double min = c - deg;
  return pi * (deg + 5.0 * min / 3.0) / 180.0;
}

/* Distance of two points under the edge weight type. */
static int point_distance(const char *type, double xi, double yi, double xj, double yj) {
  double dx = xi - xj, dy = yi - yj;
  if (strcmp(type, "EUC_2D") == 0) return (int)(sqrt(dx * dx + dy * dy) + 0.5);
  if (strcmp(type, "CEIL_2D") == 0) return (int)ceil(sqrt(dx * dx + dy * dy));
  if (strcmp(type, "ATT") == 0) {
    double r = sqrt((dx * dx + dy * dy) / 10.0);
    int t = (int)(r + 0.5);
    return t < r ? t + 1 : t;
  }
  /* GEO */
  const double rrr = 6378.388;
  double lati = geo_radians(xi), loni = geo_radians(yi);
  double latj = geo_radians(xj), lonj = geo_radians(yj);
  double q1 = cos(loni - lonj), q2 = cos(lati - latj), q3 = cos(lati + latj);
  return (int)(rrr * acos(0.5 * ((1.0 + q1) * q2 - (1.0 - q1) * q3)) + 1.0);
}

/* Read the explicit matrix of the given format from the text at *p. */
static int read_matrix(struct instance *in, const char *format, char **p) {
  const int n = in->n;
  for (int i = 0; i < n; ++i) {
    int from, to;
    if (strcmp(format, "FULL_MATRIX") == 0) from = 0, to = n;
    else if (strcmp(format, "UPPER_ROW") == 0) from = i + 1, to = n;
    else if (strcmp(format, "LOWER_ROW") == 0) from = 0, to = i;
    else if (strcmp(format, "UPPER_DIAG_ROW") == 0) from = i, to = n;
    else if (strcmp(format, "LOWER_DIAG_ROW") == 0) from = 0, to = i + 1;
    else return fail("unknown EDGE_WEIGHT_FORMAT");
    for (int j = from; j < to; ++j) {
      double v;
      if (!next_number(p, &v)) return fail("EDGE_WEIGHT_SECTION too short");
      in->dist[i * n + j] = (int)v;
      in->dist[j * n + i] = (int)v;
    }
  }
  return 0;
}

static int read_coords(struct instance *in, const char *type, char **p) {
  const int n = in->n;
  double *x = malloc(sizeof(double) * (size_t)n), *y = malloc(sizeof(double) * (size_t)n);
  int rc = x == NULL || y == NULL;
  for (int k = 0; k < n && rc == 0; ++k) {
    double id, a, b;
    if (!next_number(p, &id) || !next_number(p, &a) || !next_number(p, &b) || id < 1 || id > n) {
      rc = fail("NODE_COORD_SECTION malformed");
      break;
    }
    x[(int)id - 1] = a;
    y[(int)id - 1] = b;
  }
  for (int i = 0; i < n && rc == 0; ++i)
    for (int j = 0; j < n; ++j)
      in->dist[i * n + j] = i == j ? 0 : point_distance(type, x[i], y[i], x[j], y[j]);
  free(x);
  free(y);
  return rc;
}

/* Header lines "KEY: value" or "KEY : value", then the data sections. */
static int read_instance(const char *path, struct instance *in) {
  char *text = read_file(path);
  if (text == NULL) return fail("cannot read the file");
  char type[128] = "", format[128] = "", key[128], value[128];
  int rc = 0, done = 0;
  in->n = 0;
  in->dist = NULL;
  char *p = text;
  while (*p != 0 && rc == 0 && !done) {
    char *eol = strchr(p, '\n');
    if (eol == NULL) eol = p + strlen(p);
    char *colon = memchr(p, ':', (size_t)(eol - p));
    char *next = *eol != 0 ? eol + 1 : eol;
    if (colon != NULL) {
      trimmed(p, colon, key, sizeof key);
      trimmed(colon + 1, eol, value, sizeof value);
      if (strcmp(key, "DIMENSION") == 0) in->n = atoi(value);
      else if (strcmp(key, "EDGE_WEIGHT_TYPE") == 0) snprintf(type, sizeof type, "%s", value);
      else if (strcmp(key, "EDGE_WEIGHT_FORMAT") == 0) snprintf(format, sizeof format, "%s", value);
      else if (strcmp(key, "TYPE") == 0 && strcmp(value, "TSP") != 0) rc = fail("not a symmetric TSP");
      p = next;
      continue;
    }
    trimmed(p, eol, key, sizeof key);
    p = next;
    if (strcmp(key, "NODE_COORD_SECTION") != 0 && strcmp(key, "EDGE_WEIGHT_SECTION") != 0) {
      if (strcmp(key, "EOF") == 0) break;
      continue;
    }
    if (in->n < 3) {
      rc = fail("DIMENSION missing or below 3");
      break;
    }
    if (in->dist == NULL) in->dist = calloc((size_t)in->n * (size_t)in->n, sizeof(int));
    if (in->dist == NULL) {
      rc = fail("out of memory");
      break;
    }
    if (strcmp(key, "EDGE_WEIGHT_SECTION") == 0) {
      if (strcmp(type, "EXPLICIT") != 0) rc = fail("EDGE_WEIGHT_SECTION without EXPLICIT");
      else rc = read_matrix(in, format, &p);
      done = 1;
    } else if (strcmp(type, "EUC_2D") == 0 || strcmp(type, "CEIL_2D") == 0 ||
               strcmp(type, "ATT") == 0 || strcmp(type, "GEO") == 0) {
      rc = read_coords(in, type, &p);
      done = 1;
    } else if (strcmp(type, "EXPLICIT") != 0) {
      rc = fail("unsupported EDGE_WEIGHT_TYPE");
    }
    /* Coordinates of an EXPLICIT instance are for display only. */
  }
  free(text);
  if (rc == 0 && !done) rc = fail("no distances in the file");
  return rc;
}

/* ---- The model and its callbacks ----------------------------------------- */

struct tsp {
  MDLprob prob;
  int n;
  MDLvar *edge; /* edge[i * n + j] for i < j */
  int *comp;    /* component of each city */
  int *stack;
};

/* Components of the graph of the edges with value above `threshold`;
 * returns their number. */
static int components(struct tsp *t, const double *val, double threshold) {
  const int n = t->n;
  int count = 0;
  for (int i = 0; i < n; ++i) t->comp[i] = -1;
  for (int s = 0; s < n; ++s) {
    if (t->comp[s] >= 0) continue;
    int top = 0;
    t->stack[top++] = s;
    t->comp[s] = count;
    while (top > 0) {
      int i = t->stack[--top];
      for (int j = 0; j < n; ++j) {
        if (j == i || t->comp[j] >= 0) continue;
        double v = i < j ? val[i * n + j] : val[j * n + i];
        if (v > threshold) {
          t->comp[j] = count;
          t->stack[top++] = j;
        }
      }
    }
    ++count;
  }
  return count;
}

/* Add, inside the callback bracket, one subtour elimination cut per
 * component: the edges inside S sum to at most |S| - 1. */
static int add_subtour_cuts(struct tsp *t, KVSLprob kp, int ncomp) {
  const int n = t->n;
  int rc = mdlbegincb_prob(t->prob, kp);
  for (int c = 0; c < ncomp && rc == 0; ++c) {
    MDLcut cut = mdlnewcut_prob(t->prob, MDL_LEQ, 1);
    if (cut == NULL) {
      rc = 1;
      break;
    }
    int size = 0;
    for (int i = 0; i < n; ++i) {
      if (t->comp[i] != c) continue;
      ++size;
      for (int j = i + 1; j < n; ++j)
        if (t->comp[j] == c) rc |= mdladdcutterm(cut, t->edge[i * n + j], 1.0);
    }
    rc |= mdladdcutterm(cut, NULL, size - 1);
    if (rc == 0) rc = mdladdcuts_prob(t->prob, &cut, 1);
    mdldelcut(cut);
  }
  if (mdlendcb_prob(t->prob) != 0) rc = 1;
  return rc;
}

/* Edge values indexed like t->edge from the engine's column values. */
static void edge_values(struct tsp *t, const double *x, double *val) {
  const int n = t->n;
  for (int i = 0; i < n; ++i)
    for (int j = i + 1; j < n; ++j) val[i * n + j] = x[mdlgetcolnum(t->edge[i * n + j])];
}

/* An integer solution is a tour only when it is connected: otherwise it
 * is rejected and its subtours are cut off. */
static int candidate(KVSLprob kp, void *user, const double x[], int ncols, int *reject) {
  struct tsp *t = user;
  (void)ncols;
  double *val = calloc((size_t)t->n * (size_t)t->n, sizeof(double));
  if (val == NULL) return 1;
  edge_values(t, x, val);
  int ncomp = components(t, val, 0.5);
  free(val);
  if (ncomp == 1) return 0;
  *reject = 1;
  return add_subtour_cuts(t, kp, ncomp);
}

/* A fractional solution whose support graph falls apart violates the
 * subtour elimination cut of each of its components.  The values are read
 * through the library. */
static int cut_manager(KVSLprob kp, void *user) {
  struct tsp *t = user;
  const int n = t->n;
  double *val = calloc((size_t)n * (size_t)n, sizeof(double));
  if (val == NULL) return 1;
  int rc = mdlbegincb_prob(t->prob, kp);
  if (rc == 0) {
    mdlsync_prob(t->prob, 1);
    for (int i = 0; i < n; ++i)
      for (int j = i + 1; j < n; ++j) val[i * n + j] = mdlgetsol(t->edge[i * n + j]);
    rc = mdlendcb_prob(t->prob);
  }
  int ncomp = rc == 0 ? components(t, val, 1e-6) : 1;
  free(val);
  if (rc == 0 && ncomp > 1) rc = add_subtour_cuts(t, kp, ncomp);
  return rc;
}

int main(int argc, char **argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: tsp FILE\n");
    return 2;
  }
  struct instance in;
  if (read_instance(argv[1], &in) != 0) return 1;
  const int n = in.n;
  struct tsp t = {NULL, n, NULL, NULL, NULL};
  t.edge = calloc((size_t)n * (size_t)n, sizeof(MDLvar));
  t.comp = malloc(sizeof(int) * (size_t)n);
  t.stack = malloc(sizeof(int) * (size_t)n);
  if (t.edge == NULL || t.comp == NULL || t.stack == NULL) return fail("out of memory");

  mdlseterrctrl(0);
  t.prob = mdlnewprob("tsp");
  if (t.prob == NULL) return 1;
  mdlsetmsglevel_prob(t.prob, 1);
  MDLctr length = mdlnewctr_prob(t.prob, "length", MDL_NONBINDING);
  for (int i = 0; i < n; ++i)
    for (int j = i + 1; j < n; ++j) {
      t.edge[i * n + j] = mdlnewvar_prob(t.prob, NULL, MDL_BINARY, 0.0, 1.0);
      if (t.edge[i * n + j] == NULL) return 1;
      mdladdterm(length, t.edge[i * n + j], in.dist[i * n + j]);
    }
  mdlsetobj_prob(t.prob, length);
  /* Every city has two tour edges. */
  for (int i = 0; i < n; ++i) {
    MDLctr degree = mdlnewctr_prob(t.prob, NULL, MDL_EQ);
    for (int j = 0; j < n; ++j)
      if (j != i) mdladdterm(degree, t.edge[i < j ? i * n + j : j * n + i], 1.0);
    mdladdterm(degree, NULL, 2.0);
  }
  mdlsetcutmode_prob(t.prob, 1);
  KVSLprob kp = mdlgetkvslprob_prob(t.prob);
  if (KVSLsetcbcutmgr(kp, cut_manager, &t) != 0 || KVSLsetcbpreintsol(kp, candidate, &t) != 0)
    return fail("cannot register the search callbacks");
  if (mdlminim_prob(t.prob, "g") != 0) return 1;
  if (mdlgetmipstat_prob(t.prob) != KVSL_MIP_OPTIMAL) return fail("no optimal tour found");

  /* Walk the tour from city 1 and check it visits every city once. */
  int *tour = malloc(sizeof(int) * (size_t)n);
  char *seen = calloc((size_t)n, 1);
  if (tour == NULL || seen == NULL) return fail("out of memory");
  long total = 0;
  int prev = -1, cur = 0;
  for (int k = 0; k < n; ++k) {
    tour[k] = cur;
    seen[cur] = 1;
    int next = -1;
    for (int j = 0; j < n && next < 0; ++j) {
      if (j == cur || j == prev || mdlgetsol(t.edge[cur < j ? cur * n + j : j * n + cur]) < 0.5)
        continue;
      if (k + 1 < n ? !seen[j] : j == 0) next = j;
    }
    if (next < 0) return fail("the solution is not a tour");
    total += in.dist[cur * n + next];
    prev = cur;
    cur = next;
  }
  printf("tour length %ld\ntour", total);
  for (int k = 0; k < n; ++k) printf(" %d", tour[k] + 1);
  printf("\n");
  free(tour);
  free(seen);
  mdldelprob_prob(t.prob);
  free(t.edge);
  free(t.comp);
  free(t.stack);
  free(in.dist);
  return 0;
}
