/*
 * kvtl.h -- public interface of the Tessel modelling library (libkvtl).
 * Compiles as C99 and as C++; every function has C linkage.
 */
#ifndef KVTL_H
#define KVTL_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(KVTL_BUILDING)
#define KVTL_API __attribute__((visibility("default")))
#else
#define KVTL_API
#endif

/* ---- Handles ---------------------------------------------------------------
 * Records are reached through opaque handles that compare as addresses. */
typedef struct mdl_problem *MDLprob;     /* a problem */
typedef struct mdl_var *MDLvar;          /* a variable */
typedef struct mdl_ctr *MDLctr;          /* a constraint (or the objective) */
typedef struct mdl_sos *MDLsos;          /* a special ordered set */
typedef struct mdl_termlst *MDLtermlst;  /* a term list (null: empty list) */
typedef struct kvsl_prob *MDLkvslprob;   /* an engine problem */

/* Callbacks.  The error callback receives the message number, 1 for an error
 * or 0 for a warning, and the formatted text. */
typedef void (*MDLcberr)(MDLprob prob, void *user, int num, int iserror,
                         const char *text);
typedef void (*MDLcbmsg)(MDLprob prob, void *user, const char *text);
typedef void (*MDLcbdelvar)(MDLprob prob, void *user, MDLvar var, void *link);
/* Memory hooks receive the number of bytes just obtained or released. */
typedef void (*MDLcbmem)(uint64_t bytes);

/* Infinite bounds, limits and ranges. */
#define MDL_INFINITY 1.0e20

/* ---- Start-up, shutdown and thread context ------------------------------- */

/* Allocator hooks: all memory the library owns goes through them.  Set them
 * before start-up; null hooks become malloc and free at start-up. */
KVTL_API extern void *(*mdlsl_malloc)(size_t size);
KVTL_API extern void (*mdlsl_free)(void *ptr);

/* Counted start-up: 0 on success, 1 when the engine fails to start. */
KVTL_API int mdlslinit(void);
/* Undo one start-up: 0, or 1 when not started (or the count is spent). */
KVTL_API int mdlslfinish(void);
/* Start-up for an object-oriented wrapper layer (asynchronous-free mode). */
KVTL_API int mdlslinitj(void);
/* Start-up for a managed-runtime wrapper: grow/shrink hear of net memory
 * changes in steps of at least the memory-usage threshold. */
KVTL_API int mdlslinitdn(MDLcbmem grow, MDLcbmem shrink);
/* Asynchronous-free mode: term lists may be released from another thread. */
KVTL_API void mdlsetasyncfree(int flag);
/* Hooks called by the pools with every block size obtained / released. */
KVTL_API void mdlsetcbglbmemannotify(MDLcbmem onalloc, MDLcbmem onfree);
KVTL_API uint64_t mdlgetmemoryusagechangethreshold(void);
KVTL_API void mdlsetmemoryusagechangethreshold(uint64_t value);
/* Library version text, "4.8.8". */
KVTL_API const char *mdlgetversion(void);
/* Processor time of the process in milliseconds. */
KVTL_API int32_t mdlgettime(void);
/* Current problem of the calling thread. */
KVTL_API MDLprob mdlgetprob(void);
KVTL_API int mdlchgprob(MDLprob prob);
/* Decimal sign of the calling thread (used when reading data files). */
KVTL_API char mdlgetdecsign(void);
KVTL_API int mdlsetdecsign(char sign);

/* ---- Errors, messages and output ----------------------------------------- */

/* Report row `pos` of the message table (see MDL_E_* positions below). */
KVTL_API void mdlerror(MDLprob prob, int pos, ...);
/* 1 (default): an error ends the process with its number; 0: return. */
KVTL_API int mdlseterrctrl(int flag);
/* Callbacks of a problem, or with a null problem the global defaults. */
KVTL_API int mdldefcberr_prob(MDLprob prob, MDLcberr cb, void *user);
KVTL_API int mdldefcbmsg_prob(MDLprob prob, MDLcbmsg cb, void *user);
KVTL_API int mdldefcbdelvar_prob(MDLprob prob, MDLcbdelvar cb, void *user);
/* Message level: 0 silent, 1 errors, 2 warnings, 3 (default) solver log,
 * 4 and more status texts. */
KVTL_API int mdlsetmsglevel_prob(MDLprob prob, int level);
/* printf format of one real number in model output (default "%g"). */
KVTL_API int mdlsetrealfmt_prob(MDLprob prob, const char *format);
/* Column order 0..3 of matrix generation (non-zero: sorted by name). */
KVTL_API int mdlsetcolorder_prob(MDLprob prob, int order);
/* Formatted output through the message callback or standard output. */
KVTL_API int32_t mdlprintf_prob(MDLprob prob, const char *format, ...);
KVTL_API int32_t mdlprintf(const char *format, ...);

/* ---- Memory pools ---------------------------------------------------------- */

/* A chunk of the problem's pool (global pool for a null problem). */
KVTL_API void *mdlallocmem(MDLprob prob, size_t size, int zero);
/* Give a chunk back; size must be the size it was requested with. */
KVTL_API void mdlrecyclemem(MDLprob prob, void *ptr, size_t size);
/* Pool copy of a text; null for a null or empty text. */
KVTL_API char *mdlstrdup(MDLprob prob, const char *text);
/* A new zeroed problem record heading its own pool (reference count 1). */
KVTL_API MDLprob mdlallocprob(void);
/* Drop one reference of a problem; the last one releases its pool. */
KVTL_API void mdldeallocprob(MDLprob prob);
/* Add one reference to a problem. */
KVTL_API void mdlinrcprob(MDLprob prob);

/* ---- Problems (creation, naming, reset, sense, dictionaries, bracket) ---- */

/* A new problem, made current in the calling thread; `name` (may be null or
 * empty: a generated name under $TMPDIR) is the base of the engine's side
 * files.  Starts the library when needed.  Null on failure. */
KVTL_API MDLprob mdlnewprob(const char *name);
/* Delete a problem: its engine problem, side files and model.  Memory goes
 * with the last term list still held by the application. */
KVTL_API int mdldelprob_prob(MDLprob prob);
/* As mdldelprob_prob; with destroy 0 the engine problem is kept for its
 * other owner. */
KVTL_API int mdldelprob_jprob(MDLprob prob, int destroy);
KVTL_API int mdlsetprobname_prob(MDLprob prob, const char *name);
/* The problem's file base (its name, or the generated base). */
KVTL_API const char *mdlgetprobname_prob(MDLprob prob);
/* Empty the engine problem and the solution state; the model stays. */
KVTL_API int mdlresetprob_prob(MDLprob prob);
/* Objective sense: maximise non-zero, else minimise. */
KVTL_API int mdlsetsense_prob(MDLprob prob, int maximise);
/* 1 when maximising, 0 when minimising, -1 for no problem. */
KVTL_API int mdlgetsense_prob(MDLprob prob);
/* Status flags: 1 loaded, 2 directives pending, 4 modified, 8 solution
 * available, 64 outside solution. */
KVTL_API int mdlgetprobstat_prob(MDLprob prob);
/* Bucket count of the name dictionary (which 0; size 0 switches names off)
 * or of the index-set dictionary (which non-zero), before first use. */
KVTL_API int mdlsetdictsize_prob(MDLprob prob, int which, int size);
/* Work on another engine problem object while an engine callback runs;
 * the bracket holds the problem's mutex. */
KVTL_API int mdlbegincb_prob(MDLprob prob, MDLkvslprob handle);
KVTL_API int mdlendcb_prob(MDLprob prob);

/* ---- Names ---------------------------------------------------------------- */

/* Entity kinds of the name dictionary (0 in a look-up: any kind), and the
 * flags of mdlfindname added to a kind: create a missing entry, or only
 * look up (16 without 8). */
enum {
  MDL_KIND_ANY = 0,
  MDL_KIND_VAR = 1,     /* default name "VAR" */
  MDL_KIND_ARRVAR = 2,  /* "AV" */
  MDL_KIND_CTR = 3,     /* "CTR" */
  MDL_KIND_SOS = 4,     /* "SOS" */
  MDL_KIND_IDX = 5,     /* "IDX" */
  MDL_FIND_CREATE = 8,
  MDL_FIND_LOOKUP = 16
};

struct mdl_dict_entry;
struct mdl_entity_entry;

/* Find (or create) the dictionary entry of a name and kind. */
KVTL_API struct mdl_dict_entry *mdlfindname(MDLprob prob, const char *name, int flags);
/* Enter an entity under a unique name ("x", "x_1", ...; `prefix` when the
 * name is null or empty). */
KVTL_API struct mdl_dict_entry *mdlnormname(MDLprob prob, const char *name,
                                            const char *prefix, int kind, void *entity);
/* The entity of a kind (0: any) with that name, or null. */
KVTL_API void *mdlgetbyname_prob(MDLprob prob, const char *name, int kind);
/* Format a name (at most 127 characters) into the calling thread's name
 * ring buffer; valid until a few more names have been formatted. */
KVTL_API const char *mdlnewname(const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;
/* Put an entity on the entity list of a problem that keeps no names. */
KVTL_API struct mdl_entity_entry *mdladdtodel(MDLprob prob, int kind, void *entity);
/* Generated name of an unnamed object ("x" and the handle in hex), written
 * into `buffer` (at least 20 characters). */
KVTL_API const char *mdlmktn(char *buffer, const void *handle);

/* ---- Index sets -------------------------------------------------------------
 * Ordered, growable sets of element names: adding a name returns its
 * position (from 0, in order of first addition), so names map to array
 * indices.  All sets of a problem share one element-name dictionary. */
typedef struct mdl_idxset *MDLidxset;

/* A new empty set with room for `size` elements (at least 5); null on
 * failure. */
KVTL_API MDLidxset mdlnewidxset_prob(MDLprob prob, const char *name, int size);
/* Position of the element, added at the end when new; -1 on failure. */
KVTL_API int mdladdidxel(MDLidxset set, const char *name);
/* Position of the element, or -1 when it is not in the set. */
KVTL_API int mdlgetidxel(MDLidxset set, const char *name);
/* Number of elements, -1 for no set. */
KVTL_API int mdlgetidxsetsize(MDLidxset set);
/* The set's name (the generated name when it has none); null for no set. */
KVTL_API const char *mdlgetidxsetname(MDLidxset set);
/* The element at a position, null outside 0 .. size - 1. */
KVTL_API const char *mdlgetidxelname(MDLidxset set, int position);
/* Print "name: elements" through the problem's output; 0, or 1 for no set. */
KVTL_API int mdlprintidxset(MDLidxset set);

/* ---- Variables ------------------------------------------------------------ */

/* Variable types. */
enum {
  MDL_CONTINUOUS = 0,
  MDL_BINARY = 1,
  MDL_INTEGER = 2,
  MDL_PARTINT = 3,   /* integer below the limit, continuous above */
  MDL_SEMICONT = 4,  /* 0 or within [limit, ub] */
  MDL_SEMIINT = 5    /* 0 or an integer within [limit, ub] */
};

/* A new variable (null on failure); a binary's bounds are clamped to [0,1]. */
KVTL_API MDLvar mdlnewvar_prob(MDLprob prob, const char *name, int type, double lb,
                               double ub);
KVTL_API int mdlsetvartype(MDLvar var, int type);
/* The type, or -1 for no variable. */
KVTL_API int mdlgetvartype(MDLvar var);
KVTL_API int mdlsetlb(MDLvar var, double value);
KVTL_API int mdlsetub(MDLvar var, double value);
/* Set both bounds to the value (no consistency check). */
KVTL_API int mdlfixvar(MDLvar var, double value);
/* Either pointer may be null. */
KVTL_API int mdlgetbounds(MDLvar var, double *lb, double *ub);
/* Limit of a partial integer or semi-continuous variable. */
KVTL_API int mdlsetlim(MDLvar var, double value);
KVTL_API int mdlgetlim(MDLvar var, double *value);
/* Column in the loaded matrix, or -1. */
KVTL_API int mdlgetcolnum(MDLvar var);
/* The name, or the generated name of an unnamed variable. */
KVTL_API const char *mdlgetvarname(MDLvar var);
/* 1 when a solution is available and the variable has a column. */
KVTL_API int mdlgetvarstat(MDLvar var);
/* An application value kept with the variable. */
KVTL_API int mdlsetvarlink(MDLvar var, void *link);
KVTL_API void *mdlgetvarlink(MDLvar var);
/* 1 when 0 is feasible for the variable, else 0 with the feasible value
 * nearest to 0 written to `value` (when not null). */
KVTL_API int mdlisvarzerofeas(MDLvar var, double *value);

/* ---- Arrays of variables and sums -------------------------------------------
 * An array of variables is indexed directly like a plain array of variable
 * handles: the handle is the address of its first slot.  Complete arrays are
 * made at once; open ones are filled slot by slot and then closed. */
typedef MDLvar *MDLarrvar;

/* A closed array of `size` new variables of one type and bounds, named
 * after the array ("x", "x_1", ...); null on failure or for size <= 0. */
KVTL_API MDLarrvar mdlnewarrvar_prob(MDLprob prob, int size, int type, const char *name,
                                     double lb, double ub);
/* An open array of `capacity` empty slots; null on failure or for
 * capacity <= 0. */
KVTL_API MDLarrvar mdlstartarrvar_prob(MDLprob prob, int capacity, const char *name);
/* Fill the first free slot / the slot at `position` of an open array. */
KVTL_API int mdlapparrvarel(MDLarrvar arr, MDLvar var);
KVTL_API int mdlsetarrvarel(MDLarrvar arr, int position, MDLvar var);
/* Close an open array whose slots are all filled. */
KVTL_API int mdlendarrvar(MDLarrvar arr);
/* Delete the array (its variables stay in the problem). */
KVTL_API int mdldelarrvar(MDLarrvar arr);
/* Size (negative capacity while open), -1 for no array. */
KVTL_API int mdlgetarrvarsize(MDLarrvar arr);
/* The name, "Anon" when the problem keeps no names, null for no array. */
KVTL_API const char *mdlgetarrvarname(MDLarrvar arr);
/* Add coefs[i] * arr[i] to the constraint for every slot. */
KVTL_API int mdladdarrterm(MDLctr ctr, MDLarrvar arr, const double *coefs);
/* New constraint sum(coefs[i] * arr[i]) `type` rhs; null on failure. */
KVTL_API MDLctr mdlnewarrsum_prob(MDLprob prob, const char *name, MDLarrvar arr,
                                  const double *coefs, int type, double rhs);
/* New constraint sum(arr[i]) `type` rhs. */
KVTL_API MDLctr mdlnewsum_prob(MDLprob prob, const char *name, MDLarrvar arr, int type,
                               double rhs);
/* New constraint sum((first + i) * arr[i]) `type` rhs. */
KVTL_API MDLctr mdlnewsumc_prob(MDLprob prob, const char *name, MDLarrvar arr, int type,
                                double first, double rhs);

/* ---- Term lists ----------------------------------------------------------- */

/* A term list is a reference to a header, null for the empty list; every
 * operation takes the address of the reference because it may create or
 * delete the header.  List operations return 1 when the list changed, 0 when
 * it did not and -1 when memory ran out (the list is then left as it was).
 * All variables of one list belong to one problem, whose pool holds the
 * list.  Quadratic pairs are kept with the smaller handle first. */
struct mdl_expr;   /* constant, linear list, quadratic list */

/* Release all nodes and the header; the reference becomes null. */
KVTL_API int mdldel_termlst(MDLtermlst *list);
KVTL_API int mdldel_qtermlst(MDLtermlst *list);
/* Add coef to the term of var (of the pair var1, var2). */
KVTL_API int mdladd_term(MDLvar var, MDLtermlst *list, double coef);
KVTL_API int mdladd_qterm(MDLvar var1, MDLvar var2, MDLtermlst *list, double coef);
/* Make the coefficient of var (of the pair) equal to coef; 0 removes it. */
KVTL_API int mdlset_term(MDLvar var, MDLtermlst *list, double coef);
KVTL_API int mdlset_qterm(MDLvar var1, MDLvar var2, MDLtermlst *list, double coef);
/* Merge the pending operations into the sorted run (sort: 0 when nothing is
 * pending; strip: the same, also accepting an empty list). */
KVTL_API int mdlsort_termlst(MDLtermlst *list);
KVTL_API int mdlsort_qtermlst(MDLtermlst *list);
KVTL_API int mdlstriptermlst(MDLtermlst *list);
KVTL_API int mdlstripqtermlst(MDLtermlst *list);
/* Strip both lists of an expression. */
KVTL_API int mdlstripexpr(struct mdl_expr *expr);
/* Number of terms whose coefficient is not 0 (NaN counts); strips first. */
KVTL_API int mdlget_termlst_len(MDLtermlst *list);
KVTL_API int mdlget_qtermlst_len(MDLtermlst *list);
/* Negate every coefficient: 0 for no list, else 1. */
KVTL_API int mdlchs_termlst(MDLtermlst *list);
KVTL_API int mdlchs_qtermlst(MDLtermlst *list);
/* Multiply every coefficient; factor 0 deletes the list, factor 1 and no
 * list give 0. */
KVTL_API int mdlmulc_termlst(MDLtermlst *list, double factor);
KVTL_API int mdlmulc_qtermlst(MDLtermlst *list, double factor);
/* Make *target a copy of source (same value, same pending operations).  The
 * target reference is overwritten, not released: pass an empty one. */
KVTL_API int mdldup_termlst(MDLtermlst *target, MDLtermlst source);
KVTL_API int mdldup_qtermlst(MDLtermlst *target, MDLtermlst source);
/* Add the terms of *source into *target; the source keeps its value. */
KVTL_API int mdladd_termlst(MDLtermlst *target, MDLtermlst *source);
KVTL_API int mdladd_qtermlst(MDLtermlst *target, MDLtermlst *source);

/* ---- Expressions ------------------------------------------------------------
 * A free-standing expression: constant plus linear and quadratic terms,
 * kept in the library's global pool.  As a relation it reads: terms plus
 * constant, related to 0 (a constraint's rhs is the negated constant).  A
 * null expression reads as the empty one where it is only read. */
typedef struct mdl_expr *MDLexpr;

/* A new expression of one term: y alone (x null) or x alone a linear term,
 * x and y a quadratic term, neither the constant; coefficient 0 gives the
 * empty expression.  Null on failure. */
KVTL_API MDLexpr mdlnewexpr(MDLvar x, MDLvar y, double coef);
/* *copy receives a new expression equal to expr: 0, or 1 on failure. */
KVTL_API int mdldupexpr(MDLexpr *copy, MDLexpr expr);
/* Clear the expression and give the object back. */
KVTL_API int mdldelexpr(MDLexpr expr);
/* Constant 0, no terms. */
KVTL_API int mdlclearexpr(MDLexpr expr);
/* Target becomes a copy of source: 0, or -1 on failure (target unchanged). */
KVTL_API int mdlassignexpr(MDLexpr target, MDLexpr source);
/* Target plus source: 0, or -1 on failure (target unchanged). */
KVTL_API int mdladdexpr(MDLexpr target, MDLexpr source);
/* Add to / set one term's coefficient (variables as in mdlnewexpr; setting
 * 0 removes the term): 0, or 1 on failure. */
KVTL_API int mdladdexpr_term(MDLexpr expr, MDLvar x, MDLvar y, double coef);
KVTL_API int mdlsetexpr_term(MDLexpr expr, MDLvar x, MDLvar y, double coef);
/* Multiply by a constant; negate. */
KVTL_API int mdlmulcexpr(MDLexpr expr, double factor);
KVTL_API int mdlchsexpr(MDLexpr expr);
/* Target times factor: 0; 1 when the product would not be quadratic
 * (target unchanged; callers report it as error 1591); -1 on failure. */
KVTL_API int mdlmulexpr(MDLexpr target, MDLexpr factor);
/* 0 constant only, 1 linear, 2 quadratic only, 3 linear and quadratic. */
KVTL_API int mdlgetstatexpr(MDLexpr expr);
/* Value at the current solution; a variable without a column counts with
 * the feasible value nearest to 0. */
KVTL_API double mdlevalexpr(MDLexpr expr);
/* Text of the expression related by a constraint type to 0, e.g.
 * "- 3*x*z + 2*x + y  <= 4"; release it with mdlfree2str.  Null on failure. */
KVTL_API char *mdlexpr2str(MDLexpr expr, int type);
KVTL_API void mdlfree2str(char *text);
/* Print the expression through the problem's output (null problem: the
 * default output and format); for type R `range` is the width.  Returns 0. */
KVTL_API int mdlprintexpr(MDLprob prob, MDLexpr expr, int type, double range);
/* Constraint from an expression: type and terms (constant kept as is). */
KVTL_API int mdlsetctr(MDLctr ctr, MDLexpr expr, int type);
/* Add an expression to a constraint's terms and constant. */
KVTL_API int mdlappctr(MDLctr ctr, MDLexpr expr);
/* The built-in objective from the expression, made the objective: 1, or -1
 * on failure. */
KVTL_API int mdlsetobjexpr(MDLprob prob, MDLexpr expr);
/* Members of a set from the expression's linear terms (coefficients are the
 * weights): replace them / add to them. */
KVTL_API int mdlsetsos(MDLsos sos, MDLexpr expr);
KVTL_API int mdlappsos(MDLsos sos, MDLexpr expr);

/* ---- Constraints and objective -------------------------------------------- */

/* Relation types: terms + constant related to 0, so rhs = -constant.  A
 * range constraint (MDL_RANGE) is made only through mdlsetrange. */
enum {
  MDL_NONBINDING = 0, /* "N": free row (objective) */
  MDL_LEQ = 1,        /* "L": terms <= rhs */
  MDL_GEQ = 2,        /* "G": terms >= rhs */
  MDL_EQ = 3,         /* "E": terms == rhs */
  MDL_RANGE = 4       /* "R": rhs - range <= terms <= rhs */
};
/* Opaque handles of one linear / quadratic term of a constraint; valid until
 * the constraint's terms next change. */
typedef struct mdl_term *MDLterm;
typedef struct mdl_qterm *MDLqterm;

/* A new constraint of type N, L, G or E (null on failure). */
KVTL_API MDLctr mdlnewctr_prob(MDLprob prob, const char *name, int type);
/* Delete a constraint with its terms; the objective reference is cleared
 * when it named it.  A constraint not in the problem's list (the built-in
 * objective) is not released; both mark the problem modified. */
KVTL_API int mdldelctr(MDLctr ctr);
/* Precedence x + d <= y, as the type L row x - y <= -d. */
KVTL_API MDLctr mdlnewprec_prob(MDLprob prob, const char *name, MDLvar x, double d, MDLvar y);
/* Constraints newest first: the first for null, null after the last. */
KVTL_API MDLctr mdlgetnextctr_prob(MDLprob prob, MDLctr ctr);
KVTL_API int mdlsetctrtype(MDLctr ctr, int type);
/* The type, -1 on error. */
KVTL_API int mdlgetctrtype(MDLctr ctr);
/* lw == up: type E with rhs lw; otherwise type R between lw and up. */
KVTL_API int mdlsetrange(MDLctr ctr, double lw, double up);
/* Lower and upper limit of the row (+-MDL_INFINITY when open); either
 * pointer may be null. */
KVTL_API int mdlgetrange(MDLctr ctr, double *lw, double *up);
/* The right-hand side (the negated constant). */
KVTL_API double mdlgetrhs(MDLctr ctr);
/* Add to a term's coefficient; a null variable adds to the rhs. */
KVTL_API int mdladdterm(MDLctr ctr, MDLvar var, double coef);
/* Set a term's coefficient; a null variable sets the rhs. */
KVTL_API int mdlsetterm(MDLctr ctr, MDLvar var, double coef);
KVTL_API int mdldelterm(MDLctr ctr, MDLvar var);
/* Quadratic terms; a pair with one null variable is a linear term. */
KVTL_API int mdladdqterm(MDLctr ctr, MDLvar var1, MDLvar var2, double coef);
KVTL_API int mdlsetqterm(MDLctr ctr, MDLvar var1, MDLvar var2, double coef);
KVTL_API int mdldelqterm(MDLctr ctr, MDLvar var1, MDLvar var2);
/* A term's coefficient (0 when absent; the rhs for a null variable).  A
 * null constraint answers 1.0 after its error. */
KVTL_API double mdlgetcoeff(MDLctr ctr, MDLvar var);
KVTL_API double mdlgetqcoeff(MDLctr ctr, MDLvar var1, MDLvar var2);
/* Walk the terms in variable order: start with prev null; null at the end.
 * `var`, `coef` (and `var2`) may be null. */
KVTL_API MDLterm mdlgetnextterm(MDLctr ctr, MDLterm prev, MDLvar *var, double *coef);
KVTL_API MDLqterm mdlgetnextqterm(MDLctr ctr, MDLqterm prev, MDLvar *var1, MDLvar *var2,
                                  double *coef);
/* Number of linear and quadratic terms with a non-zero coefficient; -1 on
 * error. */
KVTL_API int mdlgetctrsize(MDLctr ctr);
/* Row in the loaded matrix, -1 without a row or on error. */
KVTL_API int mdlgetrownum(MDLctr ctr);
/* The name, or the generated name of an unnamed constraint. */
KVTL_API const char *mdlgetctrname(MDLctr ctr);
/* Raw mode word: (flag & 3) | variable handle.  No checking. */
KVTL_API int mdlsetctrflag(MDLctr ctr, int flag, MDLvar var);
/* Indicator: sense 1 (row holds when var is 1), -1 (when var is 0), or 0
 * with a null variable to make the row standard again. */
KVTL_API int mdlsetindicator(MDLctr ctr, int sense, MDLvar var);
/* 1 or -1 for an indicator constraint, 0 otherwise, -2 on error. */
KVTL_API int mdlgetindicator(MDLctr ctr);
/* The mode word without its low bit: the indicator variable of an indicator
 * constraint (test mdlgetindicator first). */
KVTL_API MDLvar mdlgetindvar(MDLctr ctr);
/* Include-vars (type N only), delayed rows and model cuts: on 1 / off 0.
 * The getters answer 1 or 0, -1 on error. */
KVTL_API int mdlsetincvars(MDLctr ctr, int on);
KVTL_API int mdlgetincvars(MDLctr ctr);
KVTL_API int mdlsetdelayed(MDLctr ctr, int on);
KVTL_API int mdlgetdelayed(MDLctr ctr);
KVTL_API int mdlsetmodcut(MDLctr ctr, int on);
KVTL_API int mdlgetmodcut(MDLctr ctr);
/* Make a constraint (or null: none) the objective.  Leaving the built-in
 * objective record for another constraint clears its terms. */
KVTL_API int mdlsetobj_prob(MDLprob prob, MDLctr ctr);

/* ---- Special ordered sets and directives ---------------------------------- */

/* Set types. */
enum { MDL_SOS1 = 0, MDL_SOS2 = 1 };
/* Branching directive kinds. */
enum {
  MDL_DIR_PRIORITY = 1, /* branching priority */
  MDL_DIR_UP = 2,       /* branch up first */
  MDL_DIR_DOWN = 3,     /* branch down first */
  MDL_DIR_PSEUDOUP = 4, /* up pseudo cost */
  MDL_DIR_PSEUDODN = 5  /* down pseudo cost */
};

/* A new set of type MDL_SOS1 or MDL_SOS2 (null on failure). */
KVTL_API MDLsos mdlnewsos_prob(MDLprob prob, const char *name, int type);
/* Delete a set and its members (directives naming it lose their target). */
KVTL_API int mdldelsos(MDLsos sos);
/* Add a weight to a member (a new member when absent; weight 0: no-op). */
KVTL_API int mdladdsosel(MDLsos sos, MDLvar var, double weight);
/* Remove a member (no error when it is none). */
KVTL_API int mdldelsosel(MDLsos sos, MDLvar var);
/* The type, -1 on error. */
KVTL_API int mdlgetsostype(MDLsos sos);
/* The name, or the generated name of an unnamed set. */
KVTL_API const char *mdlgetsosname(MDLsos sos);
/* Append a directive (kind 1..5; value: priority or pseudo cost); marks
 * directives pending, not the model modified. */
KVTL_API int mdlsetvardir(MDLvar var, int kind, double value);
KVTL_API int mdlsetsosdir(MDLsos sos, int kind, double value);
/* Remove every directive (marks the problem modified when there were any). */
KVTL_API int mdlcleardir_prob(MDLprob prob);

/* ---- Matrix generation ---------------------------------------------------- */

/* Generate the matrix from the model and load it into the engine problem
 * when the model changed since the last load (else only pending branching
 * directives are sent).  0 on success, 1 on failure. */
KVTL_API int mdlloadmat_prob(MDLprob prob);
/* Sort a column map by variable name (bytes compared as unsigned), move the
 * per-column counts along and renumber the variables' columns.  0 on
 * success, 1 when out of memory. */
KVTL_API int mdlreordercols(MDLvar *colvars, int *counts, int ncols);

/* ---- Optimisation and status ---------------------------------------------- */

/* Optimisation calls: load the matrix when needed, run the engine and take
 * over its solution state.  Option letters are passed to the engine; the
 * accepted ones (case-insensitive) are b c d n p (lpoptimize), b c d l n p
 * (mipoptimize) and b d g l n p (minim, maxim, solve); c skips the postsolve
 * of an unchanged model.  0 on success, 1 on failure. */
KVTL_API int mdllpoptimize_prob(MDLprob prob, const char *options);
KVTL_API int mdlmipoptimize_prob(MDLprob prob, const char *options);
/* Store the sense (minimise / maximise), then optimise. */
KVTL_API int mdlminim_prob(MDLprob prob, const char *options);
KVTL_API int mdlmaxim_prob(MDLprob prob, const char *options);
/* Optimise in the problem's stored sense. */
KVTL_API int mdlsolve_prob(MDLprob prob, const char *options);
/* Synchronise with the engine: mode 1 take over its LP solution, mode 3 its
 * MIP solution, mode 2 mark the model modified (full reload next time). */
KVTL_API int mdlsync_prob(MDLprob prob, int mode);
/* Fix the global entities at their MIP solution values (rounded when
 * `round` is non-zero); the solution is then no longer available. */
KVTL_API int mdlfixglobals_prob(MDLprob prob, int round);
/* Engine LP / MIP status codes (0 on failure); at message level 4 and above
 * the status text is printed. */
KVTL_API int mdlgetlpstat_prob(MDLprob prob);
KVTL_API int mdlgetmipstat_prob(MDLprob prob);

/* ---- Solution values, ranging and solution files -------------------------- */

/* Values of the current solution; 0 when they cannot be given (a warning or
 * error says why).  A variable without a column answers the value nearest to
 * 0 that its bounds allow; a constraint without a row answers 0. */
KVTL_API double mdlgetsol(MDLvar var);
KVTL_API double mdlgetrcost(MDLvar var);
KVTL_API double mdlgetslack(MDLctr ctr);
/* Activity: the value of the constraint's terms, without its constant. */
KVTL_API double mdlgetact(MDLctr ctr);
KVTL_API double mdlgetdual(MDLctr ctr);
KVTL_API double mdlgetobjval_prob(MDLprob prob);

/* Ranging codes of mdlgetvarrng (0..5) and mdlgetctrrng (0..3). */
enum {
  MDL_RNG_UPACT = 0,  /* upper end of the value (activity) range */
  MDL_RNG_LOACT = 1,  /* lower end of the value (activity) range */
  MDL_RNG_UUP = 2,    /* objective change per unit up */
  MDL_RNG_UDN = 3,    /* objective change per unit down */
  MDL_RNG_UCOST = 4,  /* upper end of the cost range (variables only) */
  MDL_RNG_LCOST = 5   /* lower end of the cost range (variables only) */
};
/* Ranging of the current LP solution, computed once per solution. */
KVTL_API double mdlgetvarrng(MDLvar var, int code);
KVTL_API double mdlgetctrrng(MDLctr ctr, int code);

/* Solution files written and read by the engine (flags may be null).  A
 * read solution becomes the current solution. */
KVTL_API int mdlwritesol_prob(MDLprob prob, const char *file, const char *flags);
KVTL_API int mdlwriteprtsol_prob(MDLprob prob, const char *file, const char *flags);
KVTL_API int mdlwriteslxsol_prob(MDLprob prob, const char *file, const char *flags);
KVTL_API int mdlwritebinsol_prob(MDLprob prob, const char *file, const char *flags);
KVTL_API int mdlreadbinsol_prob(MDLprob prob, const char *file, const char *flags);
KVTL_API int mdlreadslxsol_prob(MDLprob prob, const char *file, const char *flags);

/* ---- Engine access -------------------------------------------------------- */

/* The engine problem of a problem, for setting engine controls (time limit,
 * gaps, threads ...) the library does not set itself; null for no problem. */
KVTL_API MDLkvslprob mdlgetkvslprob_prob(MDLprob prob);

/* ---- Cuts -------------------------------------------------------------------
 * A cut is a linear inequality or equation kept outside the model, in the
 * problem's pool, and sent to the engine only by mdladdcuts_prob (usually
 * from a callback during the search).  Types: 1 L (<=), 2 G (>=), 3 E (=). */
typedef struct mdl_cut *MDLcut;

/* Creators: null on failure.  An empty array gives a cut without terms. */
KVTL_API MDLcut mdlnewcut_prob(MDLprob prob, int type, int id);
/* Coefficient 1 for every element of the array. */
KVTL_API MDLcut mdlnewcutsum_prob(MDLprob prob, MDLarrvar arr, int type, int id, double rhs);
/* Element i (from 0) gets coefficient base + i. */
KVTL_API MDLcut mdlnewcutsumc_prob(MDLprob prob, MDLarrvar arr, int type, int id, double base,
                                   double rhs);
/* Element i gets coefficient coefs[i]. */
KVTL_API MDLcut mdlnewcutarrsum_prob(MDLprob prob, MDLarrvar arr, const double *coefs, int type,
                                     int id, double rhs);
/* Precedence: x - y <= -d (x plus d precedes y). */
KVTL_API MDLcut mdlnewcutprec_prob(MDLprob prob, MDLvar x, MDLvar y, int id, double d);
/* Access: the getters answer -1 (id, type) or 0 (rhs) for a null cut; the
 * setters return 0 on success, 1 on failure. */
KVTL_API int mdlgetcutid(MDLcut cut);
KVTL_API int mdlsetcutid(MDLcut cut, int id);
KVTL_API int mdlgetcuttype(MDLcut cut);
KVTL_API int mdlsetcuttype(MDLcut cut, int type);
KVTL_API double mdlgetcutrhs(MDLcut cut);
/* The cut's linear terms, stripped of zero coefficients. */
KVTL_API MDLtermlst mdlgetlinexp_cut(MDLcut cut);
/* Terms: a null variable stands for the rhs.  mdladdcutterm ignores a
 * value of exactly 0 before any check. */
KVTL_API int mdladdcutterm(MDLcut cut, MDLvar var, double value);
KVTL_API int mdladdcutarrterm(MDLcut cut, MDLarrvar arr, const double *coefs);
KVTL_API int mdlsetcutterm(MDLcut cut, MDLvar var, double value);
/* Removes a term (or zeroes the rhs) and marks the problem modified. */
KVTL_API int mdldelcutterm(MDLcut cut, MDLvar var);
KVTL_API int mdldelcut(MDLcut cut);
/* "CUT(id):" followed by the cut as a relation, through the problem's output. */
KVTL_API int mdlprintcut(MDLcut cut);
/* Type and terms from an expression (linear part only, rhs = -constant). */
KVTL_API int mdlsetcut(MDLcut cut, MDLexpr expr, int type);
/* Add an expression's linear part to the cut (rhs -= its constant). */
KVTL_API int mdlappcut(MDLcut cut, MDLexpr expr);
/* Cut mode 0 lets the engine presolve the search; any other mode keeps the
 * columns as loaded so that cuts can be added. */
KVTL_API int mdlsetcutmode_prob(MDLprob prob, int mode);
/* Send cuts to the engine's current node problem: 0 or 1. */
KVTL_API int mdladdcuts_prob(MDLprob prob, MDLcut *cuts, int ncuts);
/* Read the engine's cut pool into new cuts chained through their next
 * link; *first gets the first, *ncoefs the total number of coefficients.
 * Returns the number of cuts. */
KVTL_API int mdlgetcuts_prob(MDLprob prob, MDLcut *first, int *ncoefs);

/* ---- Model files ---------------------------------------------------------- */

/* Output file formats of mdlexportprob_prob. */
enum { MDL_FILE_LP = 1, MDL_FILE_MPS = 2 };
/* Generate the matrix and write the model as an LP (1) or fixed-column MPS
 * (2) file; another format is warned about (1580) and written as LP.  A
 * null or empty name is the problem's name; ".lp" / ".mps" is appended
 * unless the name has an extension after its last '/' or ends in '.'.
 * 0 on success, 1 when generation fails, the file cannot be opened or not
 * all of it could be written. */
KVTL_API int mdlexportprob_prob(MDLprob prob, int format, const char *file);
/* Write the branching directives, model cuts and delayed rows to a
 * directives file (".dir" appended as above).  0, or 1 when the file cannot
 * be opened or written. */
KVTL_API int mdlwritedir_prob(MDLprob prob, const char *file);

/* ---- Printing of the model ----------------------------------------------- */

/* Readable reports through the problem's output (message callback, else
 * standard output), numbers in the problem's real-number format.  The
 * problem: every non-free constraint, the sets and the objective. */
KVTL_API int mdlprintprob_prob(MDLprob prob);
/* "name: " (and "ind=1 -> " for an indicator constraint) and the
 * expression with its relation: the expression printer's result; 1 for
 * no constraint. */
KVTL_API int mdlprintctr(MDLctr ctr);
KVTL_API int mdlprintobj_prob(MDLprob prob);
/* "name(type): x(+1) y(-2) " and a newline. */
KVTL_API int mdlprintsos(MDLsos sos);
/* "x: value" with a solution, else "x: [lb,ub]" ("[lb,limit,ub]" for
 * partial-integer and semi-continuous types); the number of characters. */
KVTL_API int mdlprintvar(MDLvar var);
/* The array's variables separated by ",  ". */
KVTL_API int mdlprintarrvar(MDLarrvar arr);

/* ---- Message table positions (second argument of mdlerror) --------------- */
enum {
  MDL_E_NOPROB = 0,        /* 1501 E (%s) No active problem. */
  MDL_E_NOMEM = 1,         /* 1502 E Not enough memory. */
  MDL_E_DICTREINIT = 2,    /* 1504 E Dictionary cannot be re-initialized. */
  MDL_E_NOVAR = 3,         /* 1505 E (%s) No variable given. */
  MDL_E_NOARRVAR = 4,      /* 1506 E */
  MDL_E_NOCTR = 5,         /* 1507 E */
  MDL_E_NOSOS = 6,         /* 1508 E */
  MDL_E_NOCUT = 7,         /* 1509 E */
  MDL_E_NOBASIS = 8,       /* 1510 E */
  MDL_E_NOARRCONST = 9,    /* 1512 E */
  MDL_W_NOVAR = 10,        /* 1513 W */
  MDL_W_NOCTR = 11,        /* 1514 W */
  MDL_E_PROBHASNO = 12,    /* 1515 E (%s) Problem has no %s. */
  MDL_W_PROBHASNO = 13,    /* 1516 W */
  MDL_W_NOSOS = 14,        /* 1518 W */
  MDL_W_NOCUT = 15,        /* 1519 W */
  MDL_W_NOSOL = 16,        /* 1520 W no solution available */
  MDL_E_OBJVAL = 17,       /* 1521 E */
  MDL_E_GETSTATUS = 18,    /* 1522 E */
  MDL_E_SOLOPT = 19,       /* 1523 E */
  MDL_E_KVSL = 20,         /* 1524 E engine error */
  MDL_W_DIFFPROB = 21,     /* 1525 W */
  MDL_E_NOTLOADED = 22,    /* 1526 E */
  MDL_W_LOADMIPSOL = 23,   /* 1527 W */
  MDL_E_VARBOUNDS = 24,    /* 1530 E */
  MDL_E_VARTYPE = 25,      /* 1531 E */
  MDL_E_CTRTYPE = 26,      /* 1535 E */
  MDL_E_CTRRANGE = 27,     /* 1536 E */
  MDL_E_STDCTR = 28,       /* 1538 E */
  MDL_E_INDICTYPE = 29,    /* 1539 E */
  MDL_E_INCVARSTYPE = 30,  /* 1595 E */
  MDL_E_ARRCLOSED = 31,    /* 1540 E */
  MDL_E_ARRINDEX = 32,     /* 1541 E */
  MDL_E_ARRFULL = 33,      /* 1542 E */
  MDL_E_ARRINCOMPLETE = 34,/* 1543 E */
  MDL_E_SOSTYPE = 35,      /* 1545 E */
  MDL_E_DIRTYPE = 36,      /* 1547 E */
  MDL_E_NOIDX = 37,        /* 1550 E */
  MDL_W_IDXNONAME = 38,    /* 1551 W */
  MDL_W_NOIDX = 39,        /* 1552 W */
  MDL_W_IISINDEX = 40,     /* 1555 W */
  MDL_E_INIT = 41,         /* 1561 E */
  MDL_E_GENINCONS = 42,    /* 1563 E */
  MDL_E_INTERNAL = 43,     /* 1565 E */
  MDL_E_NAMELEN = 44,      /* 1566 E */
  MDL_W_KVSLMSG = 45,      /* 1570 W KVSL: %s */
  MDL_E_NOKVSLPROB = 46,   /* 1572 E */
  MDL_W_NOMATCH = 47,      /* 1573 W */
  MDL_E_ARGVALUE = 48,     /* 1575 E */
  MDL_W_FILEFORMAT = 49,   /* 1580 W */
  MDL_E_MPSWRITE = 50,     /* 1582 E */
  MDL_E_CUTTERM = 51,      /* 1585 E */
  MDL_W_CUTMODE = 52,      /* 1587 W */
  MDL_E_NONQUAD = 53,      /* 1591 E */
  MDL_W_LIMTYPE = 54,      /* 1592 W */
  MDL_W_LIMBOUNDS = 55,    /* 1593 W */
  MDL_E_NONBINDING = 56,   /* 1594 E */
  MDL_W_ADDMIPSOL = 57,    /* 1596 W */
  MDL_E_NOSOL = 58,        /* 1597 E */
  MDL_W_NOSOLGIVEN = 59,   /* 1598 W */
  MDL_W_SOLNAN = 60,       /* 1599 W */
  MDL_E_COUNT = 61
};

/* ---- Bases and infeasible subsystems ------------------------------------- */

/* A saved basis: a block of 64-bit words (the problem, the row and column
 * counts at the save, then one constraint or variable handle per row and
 * column with its 2-bit basis status in the two low bits). */
typedef struct mdl_basis *MDLbasis;

KVTL_API MDLbasis mdlsavebasis_prob(MDLprob prob);
KVTL_API int mdlloadbasis(MDLbasis basis);
KVTL_API void mdldelbasis(MDLbasis basis);
KVTL_API int mdlgetnumiis_prob(MDLprob prob);
KVTL_API int mdlgetmiis_prob(MDLprob prob, MDLvar **vars, int *nvars, MDLctr **ctrs, int *nctrs,
                             MDLsos **soss, int *nsoss, int num);
KVTL_API int mdlgetiis_prob(MDLprob prob, MDLvar **vars, int *nvars, MDLctr **ctrs, int *nctrs,
                            int num);
KVTL_API int mdlfreeiismem(void *array);
/* ---- Data file reading ------------------------------------------------------
 * Read one data line (skipping empty lines and lines starting with "!") and
 * convert its fields as the format says: i (int32_t *), d f g r (double *),
 * S "quoted" s 'quoted' T (quoted or not) t (unquoted) texts of at most the
 * width that may follow the letter (default 80; the target needs one byte
 * more).  A non-blank character after a conversion is the separator that
 * must follow its field; "!" starts a comment, "&" continues the line.
 * Numbers use the calling thread's decimal sign.  Result: the number of
 * fields converted, -1 at end of input before a data line, -2 for a letter
 * outside the table.  The line buffer holds maxlen characters, at least 80. */
typedef char *(*MDLreadfn)(char *buffer, int size, void *handle);
KVTL_API int mdlreadline(FILE *stream, int maxlen, const char *format, ...);
KVTL_API int mdlreadlinecb(MDLreadfn readfn, void *handle, int maxlen,
                           const char *format, ...);
/* Read one data line of up to n values of one kind into an array: format is
 * one letter, its width and its separator; the array holds int32_t for i,
 * double for d f g r, and char * buffers of width+1 bytes for S s T t.
 * Result: the number of elements stored, -1 at end of input, -2 for n < 1 or
 * an unknown letter. */
KVTL_API int mdlreadarrline(FILE *stream, int maxlen, const char *format,
                            void *array, int n);
KVTL_API int mdlreadarrlinecb(MDLreadfn readfn, void *handle, int maxlen,
                              const char *format, void *array, int n);

/* ---- MIP start solutions ----------------------------------------------------
 * A solution object holds values for some variables, matched by the
 * variables' serial numbers; a NaN value removes the variable's value. */
typedef struct mdl_sol *MDLsol;
/* A new empty solution of the problem; null on failure. */
KVTL_API MDLsol mdlnewsol_prob(MDLprob prob);
/* Set (or replace) the value of a variable; 0, or 1 on failure. */
KVTL_API int mdlsetsolvar(MDLsol sol, MDLvar var, double value);
/* Set values[i] for arr[i] for every slot of the array; 1 at the first
 * failing element. */
KVTL_API int mdlsetsolarrvar(MDLsol sol, MDLarrvar arr, const double *values);
/* Remove the value of a variable. */
KVTL_API int mdldelsolvar(MDLsol sol, MDLvar var);
/* Drop removed entries. */
KVTL_API int mdlstripsol(MDLsol sol);
/* Number of variables with a value; -1 for no solution. */
KVTL_API int mdlgetsolsize(MDLsol sol);
/* 0 and the value, -1 when the variable has none, 1 on a null argument. */
KVTL_API int mdlgetsolvar(MDLsol sol, MDLvar var, double *value);
/* Print "name = value" entries through the problem's output. */
KVTL_API int mdlprintsol(MDLsol sol);
/* Delete the solution. */
KVTL_API int mdldelsol(MDLsol sol);
/* Offer the solution's values of the problem's loaded columns to the solver
 * as a MIP start named `name`: 0, 1 on failure, -2 when the matrix cannot
 * be loaded, -3 out of memory. */
KVTL_API int mdladdmipsol_prob(MDLprob prob, MDLsol sol, const char *name);
/* A full vector of ncols column values: passed to the solver to check when
 * `tosolver` is set (result: the solver's status, 0 accepted), else made
 * the current solution (0); -2 when the matrix does not match, -3 on
 * failure. */
KVTL_API int mdlloadmipsol_prob(MDLprob prob, const double *x, int ncols, int tosolver);

#ifdef __cplusplus
}
#endif

#endif /* KVTL_H */
