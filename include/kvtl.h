/**
 * @file kvtl.h
 * @brief Public interface of the Tessel modelling library (libkvtl).
 *
 * Compiles as C99 and as C++; every function has C linkage.  Functions
 * report failures through the numbered messages 1501 to 1599 (see
 * ::MDL_E_NOPROB and the rest of that table); by default an error ends the
 * process with its number as exit status, and after mdlseterrctrl(0) the
 * function returns its failure value instead.  Each function lists the
 * messages it can report as "number, E (error) or W (warning), text"; the
 * "(%s)" at the start of a text is the function's short name.
 */
#ifndef KVTL_H
#define KVTL_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Marks the exported functions: default visibility while the library is
 *  built, nothing for an application. */
#if defined(KVTL_BUILDING)
#define KVTL_API __attribute__((visibility("default")))
#else
#define KVTL_API
#endif

/* ---- Handles ---------------------------------------------------------------
 * Records are reached through opaque handles that compare as addresses. */
typedef struct mdl_problem *MDLprob;     /**< A problem: the model, its engine problem and solution state. */
typedef struct mdl_var *MDLvar;          /**< A decision variable of a problem. */
typedef struct mdl_ctr *MDLctr;          /**< A constraint (or the objective) of a problem. */
typedef struct mdl_sos *MDLsos;          /**< A special ordered set of a problem. */
typedef struct mdl_termlst *MDLtermlst;  /**< A term list (null: the empty list). */
typedef struct kvsl_prob *MDLkvslprob;   /**< An engine problem (the KVSLprob of kvsl.h). */

/** Error callback: called with every numbered message before its line is
 *  printed, with the problem (null for a global report), the user pointer
 *  given at registration, the message number, 1 for an error or 0 for a
 *  warning, and the formatted text. */
typedef void (*MDLcberr)(MDLprob prob, void *user, int num, int iserror,
                         const char *text);
/** Message callback: receives every text the library outputs for a problem
 *  (printed reports, message lines, the engine's log) instead of standard
 *  output. */
typedef void (*MDLcbmsg)(MDLprob prob, void *user, const char *text);
/** Delete-variable callback: called when a problem is deleted, for every
 *  variable that carries an application link (mdlsetvarlink). */
typedef void (*MDLcbdelvar)(MDLprob prob, void *user, MDLvar var, void *link);
/** Memory hook: receives the number of bytes just obtained or released. */
typedef void (*MDLcbmem)(uint64_t bytes);

/** Infinite bounds, limits and ranges: a value of this magnitude is open. */
#define MDL_INFINITY 1.0e20

/* ---- Start-up, shutdown and thread context ------------------------------- */

/** Allocator hook for every block the library owns (default malloc).  Set
 *  it before start-up; a null hook becomes malloc at start-up, and the last
 *  mdlslfinish restores malloc. */
KVTL_API extern void *(*mdlsl_malloc)(size_t size);
/** Release hook matching ::mdlsl_malloc (default free). */
KVTL_API extern void (*mdlsl_free)(void *ptr);

/**
 * Start the library (counted).
 *
 * The first call binds the message catalogue (directory from $TESSEL,
 * $KORVEXDIR or $KORVEX, with "/locale" appended), starts the engine and
 * creates the per-thread context; later calls only count.  mdlnewprob
 * starts the library itself when needed.
 * @return 0 on success, 1 when the engine fails to start.
 * @par Messages
 * - 1561 E `(mdlslinit) Initialization failed (value: %d).`: the engine's
 *   start-up returned that code.
 */
KVTL_API int mdlslinit(void);
/**
 * Undo one start-up.  The last one restores every global default, frees
 * the caller's thread context, finishes the engine and restores the
 * allocator hooks to malloc and free.
 * @return 0, or 1 when the library is not started.
 */
KVTL_API int mdlslfinish(void);
/**
 * Start-up for an object-oriented wrapper layer: switches asynchronous-free
 * mode on.  The first wrapper start-up of the process only marks the mode
 * (the library then starts with the first problem); a later one is a no-op,
 * and one made after an ordinary start-up undoes that start-up.
 * @return 0, or 1 when it undid an earlier start-up.
 */
KVTL_API int mdlslinitj(void);
/**
 * Start-up for a managed-runtime wrapper: as mdlslinitj; the first wrapper
 * start-up also installs memory hooks so that the runtime hears of net
 * memory changes in steps of at least the memory-usage threshold (set to
 * 262144 bytes).
 * @param grow   called with the bytes of a net growth past the threshold.
 * @param shrink called with the bytes of a net shrink past the threshold.
 * @return 0, or 1 when it undid an earlier start-up.
 */
KVTL_API int mdlslinitdn(MDLcbmem grow, MDLcbmem shrink);
/** Asynchronous-free mode (@p flag non-zero): term lists may be released
 *  from another thread, so the problems' pools take their mutex. */
KVTL_API void mdlsetasyncfree(int flag);
/** Hooks called by the pools with every block size obtained (@p onalloc)
 *  and released (@p onfree); null removes a hook. */
KVTL_API void mdlsetcbglbmemannotify(MDLcbmem onalloc, MDLcbmem onfree);
/** The memory-usage threshold of the managed-runtime hooks, in bytes. */
KVTL_API uint64_t mdlgetmemoryusagechangethreshold(void);
/** Set the memory-usage threshold of the managed-runtime hooks to
 *  @p value bytes. */
KVTL_API void mdlsetmemoryusagechangethreshold(uint64_t value);
/** The library's version text, "4.8.8". */
KVTL_API const char *mdlgetversion(void);
/** Processor time used by the process, in milliseconds. */
KVTL_API int32_t mdlgettime(void);
/** The current problem of the calling thread (the newest one it created or
 *  chose with mdlchgprob), or null. */
KVTL_API MDLprob mdlgetprob(void);
/** Make @p prob (may be null) the calling thread's current problem.
 *  @return 0. */
KVTL_API int mdlchgprob(MDLprob prob);
/** The calling thread's decimal sign, used when reading numbers from data
 *  files (default '.'). */
KVTL_API char mdlgetdecsign(void);
/** Set the calling thread's decimal sign to @p sign.  @return 0. */
KVTL_API int mdlsetdecsign(char sign);

/* ---- Errors, messages and output ----------------------------------------- */

/**
 * Report row @p pos of the message table (an ::MDL_E_NOPROB style position,
 * not the message number), formatted with the further arguments.
 *
 * The error callback of @p prob (or the global one for a null problem) is
 * called first; then the line "Tessel: Error|Warning NUMBER: TEXT" goes to
 * the message callback (else to standard error) when the message level
 * allows (1 and above for errors, 2 and above for warnings); then, for an error with error control on, the
 * process ends with the message number as exit status.  A position outside
 * the table reports 1565 (internal error).
 */
KVTL_API void mdlerror(MDLprob prob, int pos, ...);
/** Error control: 1 (default) an error ends the process with its number;
 *  0 the failing function returns its failure value.  Global to the
 *  process.  @return 0. */
KVTL_API int mdlseterrctrl(int flag);
/**
 * Install the error callback of @p prob, or with a null problem the global
 * default copied into problems created later.
 * @param prob the problem, or null.
 * @param cb   the callback (null: none).
 * @param user passed back to the callback.
 * @return 0.
 */
KVTL_API int mdldefcberr_prob(MDLprob prob, MDLcberr cb, void *user);
/** Install the message callback of @p prob (or the global default for a
 *  null problem); while one is set nothing is written to standard output.
 *  @param prob the problem, or null.  @param cb the callback (null: none).
 *  @param user passed back to the callback.  @return 0. */
KVTL_API int mdldefcbmsg_prob(MDLprob prob, MDLcbmsg cb, void *user);
/** Install the delete-variable callback of @p prob (or the global default
 *  for a null problem).  @param prob the problem, or null.  @param cb the
 *  callback (null: none).  @param user passed back to the callback.
 *  @return 0. */
KVTL_API int mdldefcbdelvar_prob(MDLprob prob, MDLcbdelvar cb, void *user);
/**
 * Message level of @p prob (null: the global default for later problems):
 * 0 silent, 1 errors, 2 warnings, 3 (default) also the solver log, 4 and
 * more also status texts.  With a problem the engine's log controls follow
 * (no log below 3; at 3 and above LP log every 100 iterations and MIP log
 * level @p level - 1).
 * @return 0.
 */
KVTL_API int mdlsetmsglevel_prob(MDLprob prob, int level);
/** printf format of one real number in model output (default "%g"): it
 *  must contain a '%' and be at most 15 characters; null or empty restores
 *  "%g".  @param prob the problem, or null for the global default.
 *  @param format the format.  @return 0, or 1 for a rejected format. */
KVTL_API int mdlsetrealfmt_prob(MDLprob prob, const char *format);
/** Column order of matrix generation, 0..3 (0: order of creation; non-zero:
 *  sorted by name).  @param prob the problem, or null for the global
 *  default.  @param order the order.  @return 0, or 1 for an order outside
 *  0..3. */
KVTL_API int mdlsetcolorder_prob(MDLprob prob, int order);
/** printf-formatted output through the message callback of @p prob (or the
 *  global one for a null problem), else standard output.  @return the
 *  number of characters formatted. */
KVTL_API int32_t mdlprintf_prob(MDLprob prob, const char *format, ...);
/** As mdlprintf_prob for the calling thread's current problem. */
KVTL_API int32_t mdlprintf(const char *format, ...);

/* ---- Memory pools ---------------------------------------------------------- */

/**
 * A chunk of @p size bytes from the pool of @p prob (the global pool for a
 * null problem), zeroed when @p zero is non-zero.
 * @return the chunk, or null when memory runs out.
 * @par Messages
 * - 1502 E `Not enough memory.`: the allocator hook failed.
 */
KVTL_API void *mdlallocmem(MDLprob prob, size_t size, int zero);
/** Give a chunk back to the pool it came from; @p size must be the size it
 *  was requested with. */
KVTL_API void mdlrecyclemem(MDLprob prob, void *ptr, size_t size);
/**
 * Pool copy of a text.
 * @return the copy; null for a null or empty text or when memory runs out.
 * @par Messages
 * - 1502 E `Not enough memory.`
 */
KVTL_API char *mdlstrdup(MDLprob prob, const char *text);
/** A new zeroed problem record heading its own pool, reference count 1
 *  (mdlnewprob uses it; applications normally do not).  @return the
 *  record, or null when memory runs out (reported as 1502 E `Not enough
 *  memory.` without a problem). */
KVTL_API MDLprob mdlallocprob(void);
/** Drop one reference of a problem record; the last one releases its pool
 *  and with it the record. */
KVTL_API void mdldeallocprob(MDLprob prob);
/** Add one reference to a problem record. */
KVTL_API void mdlinrcprob(MDLprob prob);

/* ---- Problems (creation, naming, reset, sense, dictionaries, bracket) ---- */

/**
 * Create a problem and make it the calling thread's current problem.
 *
 * Starts the library when needed, creates the engine problem and copies the
 * global defaults (callbacks, message level, real-number format, column
 * order) into the new problem.
 * @param name the problem's name and the base of the engine's side files;
 *             null or empty gives a generated base "$TMPDIR/kvtl_PID_ADDR"
 *             (TMPDIR defaults to /tmp).
 * @return the problem, or null on failure.
 * @par Messages
 * - 1561 E `(mdlslinit) Initialization failed (value: %d).`: the library
 *   had to be started and the engine did not start.
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLprob mdlnewprob(const char *name);
/**
 * Delete a problem: its engine problem, the engine's side files
 * (base.glb, .rng, .sol), every entity (the delete-variable callback runs
 * for variables with a link) and the model.  The memory goes with the last
 * term list still held by the application.  Called inside a callback
 * bracket it also closes the bracket.
 * @return 0, or 1 for a null problem.
 * @par Messages
 * - 1501 E `(delprob) No active problem.`: @p prob is null.
 */
KVTL_API int mdldelprob_prob(MDLprob prob);
/**
 * Delete a problem for a wrapper that shares its engine problem.
 * @param prob    the problem.
 * @param destroy non-zero: as mdldelprob_prob; 0: the engine problem is
 *                kept (without the library's message handler) for its
 *                other owner.
 * @return 0, or 1 for a null problem.
 * @par Messages
 * - 1501 E `(delprob) No active problem.`: @p prob is null.
 */
KVTL_API int mdldelprob_jprob(MDLprob prob, int destroy);
/**
 * Rename a problem: the engine problem, then the file base (side files of
 * the old base are left alone).
 * @param prob the problem.
 * @param name the new name (null or empty: a generated base).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(setprobname) No active problem.`: @p prob is null.
 * - 1524 E `(setprobname) Korvex-Optimizer error %d during 'setprobname'.
 *   Return value: %d.`: the engine refused the name.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetprobname_prob(MDLprob prob, const char *name);
/**
 * The problem's file base: its name, or the generated base.
 * @return the text (owned by the problem), or null for a null problem.
 * @par Messages
 * - 1501 E `(getprobname) No active problem.`: @p prob is null.
 */
KVTL_API const char *mdlgetprobname_prob(MDLprob prob);
/**
 * Empty the engine problem (an empty load, side files removed) and drop the
 * solution state; the model stays and is marked modified, so the next
 * optimisation loads it again.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(resetprob) No active problem.`: @p prob is null.
 * - 1524 E `(resetprob) Korvex-Optimizer error %d during 'reset
 *   Optimizer'. Return value: %d.`: the engine's empty load failed.
 */
KVTL_API int mdlresetprob_prob(MDLprob prob);
/**
 * Store the objective sense; a loaded, unmodified matrix follows at once.
 * @param prob     the problem.
 * @param maximise non-zero to maximise, 0 to minimise.
 * @return 0, or 1 for a null problem.
 * @par Messages
 * - 1501 E `(setsense) No active problem.`: @p prob is null.
 */
KVTL_API int mdlsetsense_prob(MDLprob prob, int maximise);
/**
 * The stored objective sense.
 * @return 1 when maximising, 0 when minimising, -1 for a null problem.
 * @par Messages
 * - 1501 E `(getsense) No active problem.`: @p prob is null.
 */
KVTL_API int mdlgetsense_prob(MDLprob prob);
/**
 * Status flags of a problem: 1 loaded, 2 directives pending, 4 modified
 * since the last load, 8 solution available, 64 the solution was given by
 * the application (mdlloadmipsol_prob without the solver's check).
 * @return the flags, 0 for a null problem.
 * @par Messages
 * - 1501 E `(getprobstat) No active problem.`: @p prob is null.
 */
KVTL_API int mdlgetprobstat_prob(MDLprob prob);
/**
 * Bucket count of a dictionary, taken only before the dictionary's first
 * use; sizes are rounded up to a power of two from 128 on.
 * @param prob  the problem.
 * @param which 0: the name dictionary (size 0 switches names off for good:
 *              objects then carry generated names); non-zero: the
 *              index-set element dictionary.
 * @param size  the bucket count.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(setdictsize) No active problem.`: @p prob is null.
 * - 1504 E `Dictionary cannot be re-initialized.`: the dictionary is in use
 *   already (or names were switched off).
 */
KVTL_API int mdlsetdictsize_prob(MDLprob prob, int which, int size);
/**
 * Open a callback bracket: while an engine callback runs, make the engine
 * problem it was called with (@p handle) the problem's engine problem, so
 * that mdlsync_prob, the value getters and mdladdcuts_prob work on it.  The
 * bracket holds the problem's mutex until mdlendcb_prob and drops the
 * solution state on both ends.
 * @param prob   the problem.
 * @param handle the engine problem passed to the callback.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(begincb) No active problem.`: @p prob is null.
 * - 1572 E `(begincb) No Korvex-Optimizer problem given.`: @p handle is
 *   null.
 * - 1573 W `(begincb) 'begincb' without matching 'endcb'.`: a bracket of
 *   the same thread is still open (the original engine problem stays
 *   saved).
 */
KVTL_API int mdlbegincb_prob(MDLprob prob, MDLkvslprob handle);
/**
 * Close a callback bracket: restore the problem's own engine problem and
 * release its mutex.
 * @return 0, or 1 for a null problem.
 * @par Messages
 * - 1501 E `(endcb) No active problem.`: @p prob is null.
 * - 1573 W `(endcb) 'endcb' without matching 'begincb'.`: no bracket is
 *   open.
 */
KVTL_API int mdlendcb_prob(MDLprob prob);

/* ---- Names ---------------------------------------------------------------- */

/** Entity kinds of the name dictionary (0 in a look-up: any kind), and the
 *  flags of mdlfindname added to a kind. */
enum {
  MDL_KIND_ANY = 0,     /**< any kind (look-ups only) */
  MDL_KIND_VAR = 1,     /**< a variable; default name "VAR" */
  MDL_KIND_ARRVAR = 2,  /**< an array of variables; "AV" */
  MDL_KIND_CTR = 3,     /**< a constraint; "CTR" */
  MDL_KIND_SOS = 4,     /**< a special ordered set; "SOS" */
  MDL_KIND_IDX = 5,     /**< an index set; "IDX" */
  MDL_FIND_CREATE = 8,  /**< mdlfindname: create a missing entry */
  MDL_FIND_LOOKUP = 16  /**< mdlfindname: only look up (without ::MDL_FIND_CREATE) */
};

/** A name dictionary entry (opaque). */
struct mdl_dict_entry;
/** An entry of the entity list of a problem that keeps no names (opaque). */
struct mdl_entity_entry;

/**
 * Find (or create) the dictionary entry of a name and kind.
 * @param prob  the problem.
 * @param name  the name.
 * @param flags a kind (::MDL_KIND_VAR ...) plus ::MDL_FIND_CREATE or
 *              ::MDL_FIND_LOOKUP; a created entry is reserved (no entity).
 * @return the entry; null when absent, for a null name, when the problem
 *         keeps no names or on failure.
 * @par Messages
 * - 1501 E `(findname) No active problem.`: @p prob is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API struct mdl_dict_entry *mdlfindname(MDLprob prob, const char *name, int flags);
/**
 * Enter an entity under a unique name: @p name, or @p prefix when the name
 * is null or empty; a taken name gets "_1", "_2" ... appended.
 * @param prob   the problem.
 * @param name   the wanted name.
 * @param prefix the name used when @p name is null or empty.
 * @param kind   the entity's kind (::MDL_KIND_VAR ...).
 * @param entity the entity's handle.
 * @return the entry holding the name; null when the problem keeps no names
 *         or on failure.
 * @par Messages
 * - 1501 E `(normname) No active problem.`: @p prob is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API struct mdl_dict_entry *mdlnormname(MDLprob prob, const char *name,
                                            const char *prefix, int kind, void *entity);
/**
 * Look an entity up by name.
 * @param prob the problem.
 * @param name the name.
 * @param kind the kind (::MDL_KIND_VAR ...; 0: the newest entity of any
 *             kind with that name).
 * @return the handle (an array of variables as its ::MDLarrvar), or null
 *         when there is none or the problem keeps no names.
 * @par Messages
 * - 1501 E `(getbyname) No active problem.`: @p prob is null.
 */
KVTL_API void *mdlgetbyname_prob(MDLprob prob, const char *name, int kind);
/**
 * Format a name (printf style) into the calling thread's 512-byte name ring
 * buffer; the text stays valid until a few more names have been formatted.
 * @return the text, or null when it is longer than 127 characters.
 * @par Messages
 * - 1566 E `Name too long: %s (max=%d).`: the formatted name is longer than
 *   127 characters.
 */
KVTL_API const char *mdlnewname(const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;
/**
 * Put an entity on the entity list of a problem that keeps no names, so
 * that deleting the problem releases it.
 * @return the list entry, or null on failure.
 * @par Messages
 * - 1501 E `(addtodel) No active problem.`: @p prob is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API struct mdl_entity_entry *mdladdtodel(MDLprob prob, int kind, void *entity);
/**
 * Generated name of an unnamed object: "x" and the handle in lower-case
 * hexadecimal.
 * @param buffer room for at least 20 characters.
 * @param handle the object's handle.
 * @return the name, inside @p buffer.
 */
KVTL_API const char *mdlmktn(char *buffer, const void *handle);

/* ---- Index sets ------------------------------------------------------------- */
/** An index set: an ordered, growable set of element names whose positions
 *  (from 0, in order of first addition) serve as array indices.  All sets
 *  of a problem share one element-name dictionary. */
typedef struct mdl_idxset *MDLidxset;

/**
 * A new empty index set.
 * @param prob the problem.
 * @param name the set's name (null or empty: "IDX").
 * @param size room for that many elements (at least 5); the set grows.
 * @return the set, or null on failure.
 * @par Messages
 * - 1501 E `(newidxset) No active problem.`: @p prob is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLidxset mdlnewidxset_prob(MDLprob prob, const char *name, int size);
/**
 * Position of an element, added at the end when it is new.
 * @return the position (from 0), or -1 on failure.
 * @par Messages
 * - 1550 E `(addidxel) No index set given.`: @p set is null.
 * - 1551 W `(addidxel) No name given for an element of an index set.`:
 *   @p name is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladdidxel(MDLidxset set, const char *name);
/**
 * Position of an element.
 * @return the position (from 0), or -1 when it is not in the set or on
 *         failure.
 * @par Messages
 * - 1550 E `(getidxel) No index set given.`: @p set is null.
 * - 1551 W `(getidxel) No name given for an element of an index set.`:
 *   @p name is null.
 */
KVTL_API int mdlgetidxel(MDLidxset set, const char *name);
/**
 * Number of elements.
 * @return the size, -1 for a null set.
 * @par Messages
 * - 1550 E `(getidxsetsize) No index set given.`: @p set is null.
 */
KVTL_API int mdlgetidxsetsize(MDLidxset set);
/**
 * The set's name (the generated name when it has none).
 * @return the name, null for a null set.
 * @par Messages
 * - 1550 E `(getidxsetname) No index set given.`: @p set is null.
 */
KVTL_API const char *mdlgetidxsetname(MDLidxset set);
/**
 * The element at a position.
 * @return the element's name, null outside 0 .. size - 1 or for a null set.
 * @par Messages
 * - 1550 E `(getidxelname) No index set given.`: @p set is null.
 */
KVTL_API const char *mdlgetidxelname(MDLidxset set, int position);
/**
 * Print "name: elements" through the problem's output.
 * @return 0, or 1 for a null set.
 * @par Messages
 * - 1552 W `(printidxset) No index set given.`: @p set is null.
 */
KVTL_API int mdlprintidxset(MDLidxset set);

/* ---- Variables ------------------------------------------------------------ */

/** Variable types. */
enum {
  MDL_CONTINUOUS = 0, /**< continuous */
  MDL_BINARY = 1,     /**< binary: 0 or 1 */
  MDL_INTEGER = 2,    /**< integer */
  MDL_PARTINT = 3,    /**< integer below the limit, continuous above */
  MDL_SEMICONT = 4,   /**< 0 or within [limit, ub] */
  MDL_SEMIINT = 5     /**< 0 or an integer within [limit, ub] */
};

/**
 * A new variable.
 * @param prob the problem.
 * @param name the name (null or empty: "VAR"; a taken name gets "_n").
 * @param type ::MDL_CONTINUOUS ... ::MDL_SEMIINT.
 * @param lb   lower bound (-::MDL_INFINITY: none).
 * @param ub   upper bound (::MDL_INFINITY: none); a binary's bounds are
 *             clamped to [0,1].
 * @return the variable, or null on failure.
 * @par Messages
 * - 1501 E `(newvar) No active problem.`: @p prob is null.
 * - 1530 E `(newvar) Inconsistent bounds for variable '%s' (%g,%g).`:
 *   @p ub is below @p lb.
 * - 1531 E `(newvar) Incorrect type for variable '%s'.`: @p type is not
 *   0..5.
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLvar mdlnewvar_prob(MDLprob prob, const char *name, int type, double lb,
                               double ub);
/**
 * Change the type of a variable (its bounds stay as they are); a variable
 * with a column marks the problem modified.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1505 E `(setvartype) No variable given.`: @p var is null.
 * - 1531 E `(setvartype) Incorrect type for variable '%s'.`: @p type is not
 *   0..5.
 */
KVTL_API int mdlsetvartype(MDLvar var, int type);
/**
 * The type of a variable.
 * @return ::MDL_CONTINUOUS ... ::MDL_SEMIINT, or -1 for a null variable.
 * @par Messages
 * - 1505 E `(getvartype) No variable given.`: @p var is null.
 */
KVTL_API int mdlgetvartype(MDLvar var);
/**
 * Set the lower bound.  A loaded, unmodified matrix takes the change at
 * once, without a new load.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1505 E `(setlb) No variable given.`: @p var is null.
 * - 1530 E `(setlb) Inconsistent bounds for variable '%s' (%g,%g).`:
 *   @p value is above the upper bound (or NaN).
 */
KVTL_API int mdlsetlb(MDLvar var, double value);
/**
 * Set the upper bound, as mdlsetlb.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1505 E `(setub) No variable given.`: @p var is null.
 * - 1530 E `(setub) Inconsistent bounds for variable '%s' (%g,%g).`:
 *   @p value is below the lower bound (or NaN).
 */
KVTL_API int mdlsetub(MDLvar var, double value);
/**
 * Set both bounds to @p value (no consistency check).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1505 E `(fixvar) No variable given.`: @p var is null.
 */
KVTL_API int mdlfixvar(MDLvar var, double value);
/**
 * Read both bounds; either pointer may be null.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1505 E `(getbounds) No variable given.`: @p var is null.
 */
KVTL_API int mdlgetbounds(MDLvar var, double *lb, double *ub);
/**
 * Set the limit of a partial-integer, semi-continuous or semi-continuous
 * integer variable (default 1).  The engine takes it at once when the
 * matrix allows, else the problem is marked modified.
 * @return 0 (also after the warnings), or 1 for a null variable.
 * @par Messages
 * - 1505 E `(setlim) No variable given.`: @p var is null.
 * - 1592 W `(setlim) Setting limit for variable '%s' of wrong type.`: the
 *   variable has another type; nothing changes.
 * - 1593 W `(setlim) Setting limit %g for variable '%s' outside bounds
 *   (%g,%g).`: the value is outside [max(lb, 0), ub]; it is stored anyway.
 */
KVTL_API int mdlsetlim(MDLvar var, double value);
/**
 * Read the limit (1.0 unless set) into @p value (may be null).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1505 E `(getlim) No variable given.`: @p var is null.
 */
KVTL_API int mdlgetlim(MDLvar var, double *value);
/**
 * The variable's column in the loaded matrix.
 * @return the column (from 0), or -1 without one or for a null variable.
 * @par Messages
 * - 1505 E `(getcolnum) No variable given.`: @p var is null.
 */
KVTL_API int mdlgetcolnum(MDLvar var);
/**
 * The variable's name, or the generated name of an unnamed variable (valid
 * until a few more names have been generated).
 * @return the name, or null for a null variable.
 * @par Messages
 * - 1505 E `(getvarname) No variable given.`: @p var is null.
 */
KVTL_API const char *mdlgetvarname(MDLvar var);
/**
 * Whether the variable has a solution value.
 * @return 1 when a solution is available and the variable has a column,
 *         else 0.
 * @par Messages
 * - 1513 W `(getvarstat) No variable given.`: @p var is null.
 */
KVTL_API int mdlgetvarstat(MDLvar var);
/**
 * Keep an application value with the variable (handed to the
 * delete-variable callback when the problem is deleted).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1505 E `(setvarlink) No variable given.`: @p var is null.
 */
KVTL_API int mdlsetvarlink(MDLvar var, void *link);
/**
 * The application value kept with the variable.
 * @return the link, null when unset or for a null variable.
 * @par Messages
 * - 1505 E `(getvarlink) No variable given.`: @p var is null.
 */
KVTL_API void *mdlgetvarlink(MDLvar var);
/**
 * Whether 0 is a feasible value of the variable (bounds, type and limit).
 * @param var   the variable (must not be null: it is not checked).
 * @param value receives the feasible value nearest to 0 when 0 is not
 *              feasible (may be null).
 * @return 1 when 0 is feasible, else 0.
 */
KVTL_API int mdlisvarzerofeas(MDLvar var, double *value);

/* ---- Arrays of variables and sums ------------------------------------------- */

/** An array of variables, indexed directly like a plain array of variable
 *  handles (the handle is the address of its first slot).  Complete arrays
 *  are made at once; open ones are filled slot by slot and then closed. */
typedef MDLvar *MDLarrvar;

/**
 * A closed array of @p size new variables of one type and bounds, named
 * after the array ("x", "x_1", ...).  When a variable cannot be made the
 * array is released (the variables made so far stay in the problem).
 * @param prob the problem.
 * @param size the number of variables.
 * @param type the variables' type.
 * @param name the array's name (null or empty: "AV").
 * @param lb   lower bound of every variable.
 * @param ub   upper bound of every variable.
 * @return the array; null on failure or for @p size <= 0.
 * @par Messages
 * - 1501 E `(newarrvar) No active problem.`: @p prob is null.
 * - 1530 E `(newvar) Inconsistent bounds for variable '%s' (%g,%g).`
 * - 1531 E `(newvar) Incorrect type for variable '%s'.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLarrvar mdlnewarrvar_prob(MDLprob prob, int size, int type, const char *name,
                                     double lb, double ub);
/**
 * An open array of @p capacity empty slots, to be filled with
 * mdlapparrvarel or mdlsetarrvarel and closed with mdlendarrvar.
 * @return the array; null on failure or for @p capacity <= 0.
 * @par Messages
 * - 1501 E `(startarrvar) No active problem.`: @p prob is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLarrvar mdlstartarrvar_prob(MDLprob prob, int capacity, const char *name);
/**
 * Put a variable into the first free slot of an open array.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1505 E `(apparrvarel) No variable given.`: @p var is null.
 * - 1506 E `(apparrvarel) No array of variables given.`: @p arr is null.
 * - 1540 E `(apparrvarel) Trying to modify a closed array of variables
 *   ('%s').`
 * - 1542 E `(apparrvarel) Trying to add an entry ('%s') to a complete array
 *   of variables ('%s').`: every slot is filled.
 */
KVTL_API int mdlapparrvarel(MDLarrvar arr, MDLvar var);
/**
 * Put a variable into slot @p position of an open array (replacing any
 * earlier one).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1505 E `(setarrvarel) No variable given.`: @p var is null.
 * - 1506 E `(setarrvarel) No array of variables given.`: @p arr is null.
 * - 1540 E `(setarrvarel) Trying to modify a closed array of variables
 *   ('%s').`
 * - 1541 E `(setarrvarel) Index %d out of range for an array of variables
 *   ('%s' max=%d).`
 */
KVTL_API int mdlsetarrvarel(MDLarrvar arr, int position, MDLvar var);
/**
 * Close an open array whose slots are all filled.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1506 E `(endarrvar) No array of variables given.`: @p arr is null.
 * - 1540 E `(endarrvar) Trying to modify a closed array of variables
 *   ('%s').`: the array is closed already.
 * - 1543 E `(endarrvar) Trying to close an incomplete array of variables
 *   ('%s').`: a slot is empty.
 */
KVTL_API int mdlendarrvar(MDLarrvar arr);
/**
 * Delete an array (its variables stay in the problem).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1506 E `(delarrvar) No array of variables given.`: @p arr is null.
 */
KVTL_API int mdldelarrvar(MDLarrvar arr);
/** The size of an array: the number of variables, the negative capacity
 *  while it is open, -1 for a null array (no message). */
KVTL_API int mdlgetarrvarsize(MDLarrvar arr);
/** The name of an array: "Anon" when the problem keeps no names, null for
 *  a null array (no message). */
KVTL_API const char *mdlgetarrvarname(MDLarrvar arr);
/**
 * Add coefs[i] * arr[i] to a constraint for every slot of a closed array.
 * @return 0, or 1 at the first failure.
 * @par Messages
 * - 1507 E `(addarrterm) No constraint given.`: @p ctr is null.
 * - 1506 E `(addarrterm) No array of variables given.`: @p arr is null.
 * - 1512 E `(addarrterm) No array of constants given.`: @p coefs is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladdarrterm(MDLctr ctr, MDLarrvar arr, const double *coefs);
/**
 * New constraint sum(coefs[i] * arr[i]) @p type @p rhs.  When a term cannot
 * be added the constraint made so far stays in the problem.
 * @param prob  the problem.
 * @param name  the constraint's name.
 * @param arr   a closed array.
 * @param coefs one coefficient per slot.
 * @param type  ::MDL_NONBINDING, ::MDL_LEQ, ::MDL_GEQ or ::MDL_EQ.
 * @param rhs   the right-hand side.
 * @return the constraint, or null on failure.
 * @par Messages
 * - 1501 E `(newarrsum) No active problem.`: @p prob is null.
 * - 1506 E `(arrnewsum) No array of variables given.`: @p arr is null.
 * - 1535 E `(newctr) Incorrect type for constraint '%s'.`
 * - 1512 E `(addarrterm) No array of constants given.`: @p coefs is null
 *   (the constraint has been made).
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLctr mdlnewarrsum_prob(MDLprob prob, const char *name, MDLarrvar arr,
                                  const double *coefs, int type, double rhs);
/**
 * New constraint sum(arr[i]) @p type @p rhs, as mdlnewarrsum_prob.
 * @return the constraint, or null on failure.
 * @par Messages
 * - 1501 E `(newsum) No active problem.`: @p prob is null.
 * - 1506 E `(newsum) No array of variables given.`: @p arr is null.
 * - 1535 E `(newctr) Incorrect type for constraint '%s'.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLctr mdlnewsum_prob(MDLprob prob, const char *name, MDLarrvar arr, int type,
                               double rhs);
/**
 * New constraint sum((first + i) * arr[i]) @p type @p rhs, as
 * mdlnewarrsum_prob.
 * @return the constraint, or null on failure.
 * @par Messages
 * - 1501 E `(newsumc) No active problem.`: @p prob is null.
 * - 1506 E `(newsumc) No array of variables given.`: @p arr is null.
 * - 1535 E `(newctr) Incorrect type for constraint '%s'.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLctr mdlnewsumc_prob(MDLprob prob, const char *name, MDLarrvar arr, int type,
                                double first, double rhs);

/* ---- Term lists ----------------------------------------------------------- */

/* A term list is a reference to a header, null for the empty list; every
 * operation takes the address of the reference because it may create or
 * delete the header.  List operations return 1 when the list changed, 0 when
 * it did not and -1 when memory ran out (the list is then left as it was).
 * All variables of one list belong to one problem, whose pool holds the
 * list.  Quadratic pairs are kept with the smaller handle first.  The
 * argument checks report 1565 E "(name) Internal error." for a null list
 * reference and 1505 E "(name) No variable given." for a missing variable,
 * name being the function's name without "mdl". */
/** An expression record: constant, linear list, quadratic list (opaque). */
struct mdl_expr;   /* constant, linear list, quadratic list */

/** Release all nodes and the header of a linear list; the reference
 *  becomes null.  @return 1 when there was a list, else 0. */
KVTL_API int mdldel_termlst(MDLtermlst *list);
/** As mdldel_termlst for a quadratic list. */
KVTL_API int mdldel_qtermlst(MDLtermlst *list);
/**
 * Add @p coef to the coefficient of @p var in a linear list.
 * @return 1 changed, 0 unchanged (@p coef 0), -1 on failure.
 * @par Messages
 * - 1565 E `(add_term) Internal error.`: @p list is null.
 * - 1505 E `(add_term) No variable given.`: @p var is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladd_term(MDLvar var, MDLtermlst *list, double coef);
/**
 * Add @p coef to the coefficient of the pair (@p var1, @p var2) in a
 * quadratic list.
 * @return 1 changed, 0 unchanged, -1 on failure.
 * @par Messages
 * - 1565 E `(add_qterm) Internal error.`: @p list is null.
 * - 1505 E `(add_qterm) No variable given.`: a variable is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladd_qterm(MDLvar var1, MDLvar var2, MDLtermlst *list, double coef);
/**
 * Make the coefficient of @p var equal to @p coef (0 removes the term).
 * @return 1 changed, 0 unchanged, -1 on failure.
 * @par Messages
 * - 1565 E `(set_term) Internal error.`: @p list is null.
 * - 1505 E `(set_term) No variable given.`: @p var is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlset_term(MDLvar var, MDLtermlst *list, double coef);
/**
 * Make the coefficient of a pair equal to @p coef (0 removes the term).
 * @return 1 changed, 0 unchanged, -1 on failure.
 * @par Messages
 * - 1565 E `(set_qterm) Internal error.`: @p list is null.
 * - 1505 E `(set_qterm) No variable given.`: a variable is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlset_qterm(MDLvar var1, MDLvar var2, MDLtermlst *list, double coef);
/** Merge the pending operations of a linear list into its sorted run.
 *  @return 1 when the list changed, 0 when nothing was pending, -1 when
 *  memory ran out. */
KVTL_API int mdlsort_termlst(MDLtermlst *list);
/** As mdlsort_termlst for a quadratic list. */
KVTL_API int mdlsort_qtermlst(MDLtermlst *list);
/** As mdlsort_termlst, also accepting a null or empty list (result 0). */
KVTL_API int mdlstriptermlst(MDLtermlst *list);
/** As mdlstriptermlst for a quadratic list. */
KVTL_API int mdlstripqtermlst(MDLtermlst *list);
/** Strip both lists of an expression.  @return non-zero when one changed;
 *  0 for a null expression. */
KVTL_API int mdlstripexpr(struct mdl_expr *expr);
/** Number of terms whose coefficient is not 0 (NaN counts) of a linear
 *  list; strips first.  0 for a null reference. */
KVTL_API int mdlget_termlst_len(MDLtermlst *list);
/** As mdlget_termlst_len for a quadratic list. */
KVTL_API int mdlget_qtermlst_len(MDLtermlst *list);
/** Negate every coefficient of a linear list.  @return 0 for no list,
 *  else 1. */
KVTL_API int mdlchs_termlst(MDLtermlst *list);
/** As mdlchs_termlst for a quadratic list. */
KVTL_API int mdlchs_qtermlst(MDLtermlst *list);
/** Multiply every coefficient of a linear list by @p factor; factor 0
 *  deletes the list.  @return 1 changed, 0 for factor 1 or no list, -1
 *  when memory ran out. */
KVTL_API int mdlmulc_termlst(MDLtermlst *list, double factor);
/** As mdlmulc_termlst for a quadratic list. */
KVTL_API int mdlmulc_qtermlst(MDLtermlst *list, double factor);
/**
 * Make *target a copy of @p source (same value, same pending operations).
 * The target reference is overwritten, not released: pass an empty one.
 * @return 1 when a copy was made, 0 for an empty source, -1 on failure.
 * @par Messages
 * - 1565 E `(dup_termlst) Internal error.`: @p target is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdldup_termlst(MDLtermlst *target, MDLtermlst source);
/**
 * As mdldup_termlst for a quadratic list.
 * @par Messages
 * - 1565 E `(dup_qtermlst) Internal error.`: @p target is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdldup_qtermlst(MDLtermlst *target, MDLtermlst source);
/**
 * Add the terms of *source into *target; the source keeps its value.
 * @return 1 changed, 0 unchanged, -1 on failure.
 * @par Messages
 * - 1565 E `(add_termlst) Internal error.`: @p target is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladd_termlst(MDLtermlst *target, MDLtermlst *source);
/**
 * As mdladd_termlst for quadratic lists.
 * @par Messages
 * - 1565 E `(add_qtermlst) Internal error.`: @p target is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladd_qtermlst(MDLtermlst *target, MDLtermlst *source);

/* ---- Expressions ------------------------------------------------------------ */

/** A free-standing expression: constant plus linear and quadratic terms,
 *  kept in the library's global pool; its terms hold a reference on their
 *  problem, whose memory stays until the expression is deleted.  As a relation it reads: terms plus
 *  constant, related to 0 (a constraint's rhs is the negated constant).  A
 *  null expression reads as the empty one where it is only read. */
typedef struct mdl_expr *MDLexpr;

/**
 * A new expression of one term: @p y alone (x null) or @p x alone gives a
 * linear term, @p x and @p y a quadratic term, neither the constant;
 * coefficient 0 gives the empty expression.
 * @return the expression (release it with mdldelexpr), or null on failure.
 * @par Messages
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLexpr mdlnewexpr(MDLvar x, MDLvar y, double coef);
/**
 * *copy receives a new expression equal to @p expr (null reads as empty).
 * @return 0, or 1 (and a null *copy) on failure.
 * @par Messages
 * - 1565 E `(dupexpr) Internal error.`: @p copy is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdldupexpr(MDLexpr *copy, MDLexpr expr);
/** Clear an expression and give the object back (null: nothing).
 *  @return 0. */
KVTL_API int mdldelexpr(MDLexpr expr);
/** Make an expression empty: constant 0, no terms.  @return 0. */
KVTL_API int mdlclearexpr(MDLexpr expr);
/**
 * Make @p target a copy of @p source (null: the empty expression).
 * @return 0, or -1 on failure (target unchanged).
 * @par Messages
 * - 1565 E `(assignexpr) Internal error.`: @p target is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlassignexpr(MDLexpr target, MDLexpr source);
/**
 * Add @p source to @p target.
 * @return 0, or -1 on failure (target unchanged).
 * @par Messages
 * - 1565 E `(addexpr) Internal error.`: @p target is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladdexpr(MDLexpr target, MDLexpr source);
/**
 * Add @p coef to one term's coefficient (variables as in mdlnewexpr;
 * without variables the constant).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1565 E `(addexpr_term) Internal error.`: @p expr is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladdexpr_term(MDLexpr expr, MDLvar x, MDLvar y, double coef);
/**
 * Set one term's coefficient (0 removes the term; without variables the
 * constant is set).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1565 E `(setexpr_term) Internal error.`: @p expr is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetexpr_term(MDLexpr expr, MDLvar x, MDLvar y, double coef);
/**
 * Multiply an expression by a constant.
 * @return 0, or -1 on failure.
 * @par Messages
 * - 1565 E `(mulcexpr) Internal error.`: @p expr is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlmulcexpr(MDLexpr expr, double factor);
/**
 * Negate an expression.
 * @return 0, or -1 on failure.
 * @par Messages
 * - 1565 E `(chsexpr) Internal error.`: @p expr is null.
 */
KVTL_API int mdlchsexpr(MDLexpr expr);
/**
 * Multiply @p target by @p factor.
 * @return 0; 1 when the product would not be quadratic (target unchanged;
 *         callers report it as error 1591); -1 on failure.
 * @par Messages
 * - 1565 E `(mulexpr) Internal error.`: @p target is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlmulexpr(MDLexpr target, MDLexpr factor);
/** What an expression holds: 0 constant only, 1 linear terms, 2 quadratic
 *  terms only, 3 linear and quadratic terms. */
KVTL_API int mdlgetstatexpr(MDLexpr expr);
/**
 * Value of an expression at the current solution; a variable without a
 * column counts with the feasible value nearest to 0.
 * @return the value (0 for a null expression).
 * @par Messages
 * - 1520 W `(getsol) No solution available or problem modified since last
 *   solved.`: a variable has a column but there is no usable solution.
 * - 1524 E `(getsol) Korvex-Optimizer error %d during '%s'. Return value:
 *   %d.`: the engine failed to give the solution.
 * - 1502 E `Not enough memory.`
 */
KVTL_API double mdlevalexpr(MDLexpr expr);
/**
 * Text of the expression related by a constraint type to 0, e.g.
 * "- 3*x*z + 2*x + y  <= 4".
 * @return the text (release it with mdlfree2str), or null on failure.
 * @par Messages
 * - 1502 E `Not enough memory.`
 */
KVTL_API char *mdlexpr2str(MDLexpr expr, int type);
/** Release a text made by mdlexpr2str. */
KVTL_API void mdlfree2str(char *text);
/** Print the expression related by @p type to 0 through the problem's
 *  output (null problem: the default output and format); for type R
 *  @p range is the width.  @return 0. */
KVTL_API int mdlprintexpr(MDLprob prob, MDLexpr expr, int type, double range);
/**
 * Give a constraint the type and the terms and constant of an expression;
 * marks the problem modified.
 * @return 0, or -1 on failure.
 * @par Messages
 * - 1507 E `(setctr) No constraint given.`: @p ctr is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetctr(MDLctr ctr, MDLexpr expr, int type);
/**
 * Add an expression to a constraint's terms and constant.
 * @return 0, or -1 on failure.
 * @par Messages
 * - 1507 E `(appctr) No constraint given.`: @p ctr is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlappctr(MDLctr ctr, MDLexpr expr);
/**
 * Give the built-in objective the expression and make it the objective.
 * @return 1, or -1 on failure.
 * @par Messages
 * - 1501 E `(setobjexpr) No active problem.`: @p prob is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetobjexpr(MDLprob prob, MDLexpr expr);
/**
 * Replace the members of a set by the expression's linear terms (the
 * coefficients are the weights).
 * @return 0, or -1 on failure (set unchanged).
 * @par Messages
 * - 1508 E `(setsos) No SOS given.`: @p sos is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetsos(MDLsos sos, MDLexpr expr);
/**
 * Add the expression's linear terms to the members' weights.
 * @return 0, or -1 on failure.
 * @par Messages
 * - 1508 E `(appsos) No SOS given.`: @p sos is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlappsos(MDLsos sos, MDLexpr expr);

/* ---- Constraints and objective -------------------------------------------- */

/** Relation types: terms + constant related to 0, so rhs = -constant.  A
 *  range constraint (::MDL_RANGE) is made only through mdlsetrange. */
enum {
  MDL_NONBINDING = 0, /**< "N": free row (objective) */
  MDL_LEQ = 1,        /**< "L": terms <= rhs */
  MDL_GEQ = 2,        /**< "G": terms >= rhs */
  MDL_EQ = 3,         /**< "E": terms == rhs */
  MDL_RANGE = 4       /**< "R": rhs - range <= terms <= rhs */
};
/** Opaque handle of one linear term of a constraint; valid until the
 *  constraint's terms next change. */
typedef struct mdl_term *MDLterm;
/** Opaque handle of one quadratic term of a constraint; valid until the
 *  constraint's terms next change. */
typedef struct mdl_qterm *MDLqterm;

/**
 * A new constraint without terms.
 * @param prob the problem.
 * @param name the name (null or empty: "CTR").
 * @param type ::MDL_NONBINDING, ::MDL_LEQ, ::MDL_GEQ or ::MDL_EQ.
 * @return the constraint, or null on failure.
 * @par Messages
 * - 1501 E `(newctr) No active problem.`: @p prob is null.
 * - 1535 E `(newctr) Incorrect type for constraint '%s'.`: @p type is not
 *   N, L, G or E.
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLctr mdlnewctr_prob(MDLprob prob, const char *name, int type);
/**
 * Delete a constraint with its terms; the objective reference is cleared
 * when it named it.  A constraint not in the problem's list (the built-in
 * objective) is not released; both mark the problem modified.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(delctr) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdldelctr(MDLctr ctr);
/**
 * Precedence constraint x + d <= y, stated as the type L row x - y <= -d.
 * The variables are added with mdladdterm, so a null one adds to the rhs
 * instead.
 * @return the constraint, or null on failure (a half-made one is deleted).
 * @par Messages
 * - 1501 E `(newprec) No active problem.`: @p prob is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLctr mdlnewprec_prob(MDLprob prob, const char *name, MDLvar x, double d, MDLvar y);
/**
 * Walk the constraints, newest first.
 * @param prob the problem.
 * @param ctr  null for the first, else the previous one.
 * @return the next constraint; null after the last or on failure.
 * @par Messages
 * - 1501 E `(getnextctr) No active problem.`: @p prob is null.
 */
KVTL_API MDLctr mdlgetnextctr_prob(MDLprob prob, MDLctr ctr);
/**
 * Change the relation type (to N, L, G or E; ranges come from mdlsetrange).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(setctrtype) No constraint given.`: @p ctr is null.
 * - 1535 E `(setctrtype) Incorrect type for constraint '%s'.`: @p type is
 *   not 0..3.
 * - 1539 E `(setctrtype) Incorrect constraint type for indicator
 *   constraint '%s'.`: an indicator constraint must stay an inequality.
 * - 1595 E `(setctrtype) Incorrect constraint type for include vars
 *   constraint '%s'.`: an include-vars constraint must stay type N.
 */
KVTL_API int mdlsetctrtype(MDLctr ctr, int type);
/**
 * The relation type.
 * @return ::MDL_NONBINDING ... ::MDL_RANGE, -1 for a null constraint.
 * @par Messages
 * - 1507 E `(getctrtype) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdlgetctrtype(MDLctr ctr);
/**
 * Give a constraint both limits: @p lw == @p up makes it type E with rhs
 * @p lw; otherwise type R between @p lw and @p up.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(setrange) No constraint given.`: @p ctr is null.
 * - 1536 E `(setrange) Inconsistent range for constraint '%s' (%g,%g).`:
 *   @p lw is above @p up.
 */
KVTL_API int mdlsetrange(MDLctr ctr, double lw, double up);
/**
 * Lower and upper limit of the row by its type (+-::MDL_INFINITY when
 * open); either pointer may be null.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(getrange) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdlgetrange(MDLctr ctr, double *lw, double *up);
/**
 * The right-hand side (the negated constant).
 * @return the rhs, 0 for a null constraint.
 * @par Messages
 * - 1507 E `(getrhs) No constraint given.`: @p ctr is null.
 */
KVTL_API double mdlgetrhs(MDLctr ctr);
/**
 * Add @p coef to a term's coefficient; a null variable adds to the rhs.  A
 * coefficient of 0 does nothing at all (no check either).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(addterm) No constraint given.`: @p ctr is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladdterm(MDLctr ctr, MDLvar var, double coef);
/**
 * Set a term's coefficient (0 removes the term); a null variable sets the
 * rhs.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(setterm) No constraint given.`: @p ctr is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetterm(MDLctr ctr, MDLvar var, double coef);
/**
 * Remove a term (a null variable zeroes the rhs): mdlsetterm with 0.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(setterm) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdldelterm(MDLctr ctr, MDLvar var);
/**
 * Add @p coef to a quadratic term; a pair with one null variable is a
 * linear term (mdladdterm).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(addqterm) No constraint given.`: @p ctr is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladdqterm(MDLctr ctr, MDLvar var1, MDLvar var2, double coef);
/**
 * Set a quadratic term's coefficient (0 removes it); a pair with one null
 * variable is a linear term (mdlsetterm).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(setterm) No constraint given.`: @p ctr is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetqterm(MDLctr ctr, MDLvar var1, MDLvar var2, double coef);
/**
 * Remove a quadratic term: mdlsetqterm with 0.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(setterm) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdldelqterm(MDLctr ctr, MDLvar var1, MDLvar var2);
/**
 * A linear coefficient: 0 when absent, the rhs for a null variable.
 * @return the coefficient; 1.0 for a null constraint.
 * @par Messages
 * - 1507 E `(getcoeff) No constraint given.`: @p ctr is null.
 */
KVTL_API double mdlgetcoeff(MDLctr ctr, MDLvar var);
/**
 * A quadratic coefficient (a pair with one null variable: the linear one).
 * @return the coefficient; 1.0 for a null constraint.
 * @par Messages
 * - 1507 E `(getcoeff) No constraint given.`: @p ctr is null.
 */
KVTL_API double mdlgetqcoeff(MDLctr ctr, MDLvar var1, MDLvar var2);
/**
 * Walk the linear terms in variable order.
 * @param ctr  the constraint.
 * @param prev null for the first term, else the previous one.
 * @param var  receives the term's variable (may be null).
 * @param coef receives its coefficient (may be null).
 * @return the term; null after the last or on failure.
 * @par Messages
 * - 1507 E `(getnextterm) No constraint given.`: @p ctr is null.
 */
KVTL_API MDLterm mdlgetnextterm(MDLctr ctr, MDLterm prev, MDLvar *var, double *coef);
/**
 * Walk the quadratic terms in pair order, as mdlgetnextterm.
 * @return the term; null after the last or on failure.
 * @par Messages
 * - 1507 E `(getnextqterm) No constraint given.`: @p ctr is null.
 */
KVTL_API MDLqterm mdlgetnextqterm(MDLctr ctr, MDLqterm prev, MDLvar *var1, MDLvar *var2,
                                  double *coef);
/**
 * Number of linear and quadratic terms with a non-zero coefficient.
 * @return the count, -1 for a null constraint.
 * @par Messages
 * - 1507 E `(getctrsize) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdlgetctrsize(MDLctr ctr);
/**
 * The constraint's row in the loaded matrix.
 * @return the row (from 0); -1 without a row or for a null constraint.
 * @par Messages
 * - 1507 E `(getrownum) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdlgetrownum(MDLctr ctr);
/**
 * The name, or the generated name of an unnamed constraint.
 * @return the name, null for a null constraint.
 * @par Messages
 * - 1507 E `(getctrname) No constraint given.`: @p ctr is null.
 */
KVTL_API const char *mdlgetctrname(MDLctr ctr);
/**
 * Store the raw mode word (flag & 3) | variable handle, without checking;
 * marks the problem modified when it changes.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(setctrflag) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdlsetctrflag(MDLctr ctr, int flag, MDLvar var);
/**
 * Make an inequality an indicator constraint: sense 1 (the row holds when
 * @p var is 1) or -1 (when it is 0); sense 0 with a null variable makes the
 * row standard again.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(setindicator) No constraint given.`: @p ctr is null.
 * - 1505 E `(setindicator) No variable given.`: @p var is null with a
 *   non-zero sense.
 * - 1539 E `(setindicator) Incorrect constraint type for indicator
 *   constraint '%s'.`: the constraint is type N or E.
 * - 1575 E `(setindicator) Unexpected argument value %d.`: @p sense is not
 *   -1, 0 or 1, or 0 with a variable.
 * - 1538 E `(setindicator) Setting 'indicator constraint' can only be
 *   applied to standard constraints.`: the row is a model cut, delayed or
 *   include-vars row.
 */
KVTL_API int mdlsetindicator(MDLctr ctr, int sense, MDLvar var);
/**
 * The indicator sense.
 * @return 1 or -1 for an indicator constraint, 0 otherwise, -2 for a null
 *         constraint.
 * @par Messages
 * - 1507 E `(getindicator) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdlgetindicator(MDLctr ctr);
/**
 * The mode word without its low bit: the indicator variable of an
 * indicator constraint (test mdlgetindicator first).
 * @return the variable, null for a null constraint.
 * @par Messages
 * - 1507 E `(getindvar) No constraint given.`: @p ctr is null.
 */
KVTL_API MDLvar mdlgetindvar(MDLctr ctr);
/**
 * Include-vars mode of a type N constraint: on 1, off 0.  Its variables
 * enter the matrix even when no other row uses them.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(setincvars) No constraint given.`: @p ctr is null.
 * - 1575 E `(setincvars) Unexpected argument value %d.`: @p on is not 0 or 1.
 * - 1538 E `(setincvars) Setting 'include vars constraint' can only be
 *   applied to standard constraints.`: the row has another mode.
 * - 1594 E `(setincvars) Setting 'include vars constraint' can only be
 *   applied to non-binding (type N) constraints.`
 */
KVTL_API int mdlsetincvars(MDLctr ctr, int on);
/**
 * Whether the include-vars mode is on.
 * @return 1 or 0, -1 for a null constraint.
 * @par Messages
 * - 1507 E `(getincvars) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdlgetincvars(MDLctr ctr);
/**
 * Delayed-row mode (enforced lazily by the search): on 1, off 0.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(setdelayed) No constraint given.`: @p ctr is null.
 * - 1575 E `(setdelayed) Unexpected argument value %d.`: @p on is not 0 or 1.
 * - 1538 E `(setdelayed) Setting 'delayed constraint' can only be applied
 *   to standard constraints.`: the row has another mode.
 */
KVTL_API int mdlsetdelayed(MDLctr ctr, int on);
/**
 * Whether the delayed-row mode is on.
 * @return 1 or 0, -1 for a null constraint.
 * @par Messages
 * - 1507 E `(getdelayed) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdlgetdelayed(MDLctr ctr);
/**
 * Model-cut mode (a valid inequality the search may use as a cut): on 1,
 * off 0.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1507 E `(setmodcut) No constraint given.`: @p ctr is null.
 * - 1575 E `(setmodcut) Unexpected argument value %d.`: @p on is not 0 or 1.
 * - 1538 E `(setmodcut) Setting 'model cut' can only be applied to
 *   standard constraints.`: the row has another mode.
 */
KVTL_API int mdlsetmodcut(MDLctr ctr, int on);
/**
 * Whether the model-cut mode is on.
 * @return 1 or 0, -1 for a null constraint.
 * @par Messages
 * - 1507 E `(getmodcut) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdlgetmodcut(MDLctr ctr);
/**
 * Make a constraint (or null: none) the objective; marks the problem
 * modified.  Leaving the built-in objective record for another constraint
 * clears its terms.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(setobj) No active problem.`: @p prob is null.
 */
KVTL_API int mdlsetobj_prob(MDLprob prob, MDLctr ctr);

/* ---- Special ordered sets and directives ---------------------------------- */

/** Set types. */
enum {
  MDL_SOS1 = 0, /**< at most one member non-zero */
  MDL_SOS2 = 1  /**< at most two members non-zero, adjacent in weight order */
};
/** Branching directive kinds. */
enum {
  MDL_DIR_PRIORITY = 1, /**< branching priority (lower: branched on first) */
  MDL_DIR_UP = 2,       /**< branch up first */
  MDL_DIR_DOWN = 3,     /**< branch down first */
  MDL_DIR_PSEUDOUP = 4, /**< up pseudo cost */
  MDL_DIR_PSEUDODN = 5  /**< down pseudo cost */
};

/**
 * A new, empty special ordered set.
 * @param prob the problem.
 * @param name the name (null or empty: "SOS").
 * @param type ::MDL_SOS1 or ::MDL_SOS2.
 * @return the set, or null on failure.
 * @par Messages
 * - 1501 E `(newsos) No active problem.`: @p prob is null.
 * - 1545 E `(newsos) Wrong type for SOS '%s'.`: @p type is not 0 or 1.
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLsos mdlnewsos_prob(MDLprob prob, const char *name, int type);
/**
 * Delete a set and its members (directives naming it lose their target).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1508 E `(delsos) No SOS given.`: @p sos is null.
 */
KVTL_API int mdldelsos(MDLsos sos);
/**
 * Add a weight to a member (a new member when absent; weight 0: no-op;
 * weights that cancel remove the member).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1508 E `(addsosel) No SOS given.`: @p sos is null.
 * - 1505 E `(addsosel) No variable given.`: @p var is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladdsosel(MDLsos sos, MDLvar var, double weight);
/**
 * Remove a member (no error when the variable is none).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1508 E `(delsosel) No SOS given.`: @p sos is null.
 * - 1505 E `(delsosel) No variable given.`: @p var is null.
 */
KVTL_API int mdldelsosel(MDLsos sos, MDLvar var);
/**
 * The set's type.
 * @return ::MDL_SOS1 or ::MDL_SOS2, -1 for a null set.
 * @par Messages
 * - 1508 E `(getsostype) No SOS given.`: @p sos is null.
 */
KVTL_API int mdlgetsostype(MDLsos sos);
/**
 * The name, or the generated name of an unnamed set.
 * @return the name, null for a null set.
 * @par Messages
 * - 1508 E `(sosname) No SOS given.`: @p sos is null.
 */
KVTL_API const char *mdlgetsosname(MDLsos sos);
/**
 * Append a branching directive for a variable; marks directives pending,
 * not the model modified.
 * @param var   the variable.
 * @param kind  ::MDL_DIR_PRIORITY ... ::MDL_DIR_PSEUDODN.
 * @param value the priority or pseudo cost (ignored for up/down).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1505 E `(setvardir) No variable given.`: @p var is null.
 * - 1547 E `(setvardir) Wrong directive type.`: @p kind is not 1..5.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetvardir(MDLvar var, int kind, double value);
/**
 * Append a branching directive for a set, as mdlsetvardir.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1508 E `(setsosdir) No SOS given.`: @p sos is null.
 * - 1547 E `(setsosdir) Wrong directive type.`: @p kind is not 1..5.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetsosdir(MDLsos sos, int kind, double value);
/**
 * Remove every directive (marks the problem modified when there were any).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(cleardir) No active problem.`: @p prob is null.
 */
KVTL_API int mdlcleardir_prob(MDLprob prob);

/* ---- Matrix generation ---------------------------------------------------- */

/**
 * Generate the matrix from the model and load it into the engine problem
 * when the model changed since the last load (else only pending branching
 * directives and the sense are sent).  Columns are the variables used by a
 * row, the objective, a set or an include-vars row; rows are the
 * constraints with terms other than the objective.
 * @return 0 on success, 1 on failure.
 * @par Messages
 * - 1501 E `(loadmat) No active problem.`: @p prob is null.
 * - 1515 E `(loadmat) Problem has no variables.` or `(loadmat) Problem has
 *   no variables or constraints.`: there is nothing to load.
 * - 1516 W `(loadmat) Problem has no objective function.`: the objective
 *   has no terms (the matrix is loaded).
 * - 1563 E `(loadmat) Inconsistency during matrix generation.`: a term or
 *   member refers to a variable of another problem.
 * - 1524 E `(loadmat) Korvex-Optimizer error %d during '%s'. Return value:
 *   %d.`: an engine load call (named in the text) failed.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlloadmat_prob(MDLprob prob);
/**
 * Sort a column map by variable name (bytes compared as unsigned; ties keep
 * their order), move the per-column counts along and renumber the
 * variables' columns.
 * @param colvars the variable of each column.
 * @param counts  a count per column, permuted with the columns.
 * @param ncols   the number of columns.
 * @return 0 on success, 1 when out of memory.
 * @par Messages
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlreordercols(MDLvar *colvars, int *counts, int ncols);

/* ---- Optimisation and status ---------------------------------------------- */

/**
 * Solve the LP relaxation (with a quadratic objective or rows: the QP):
 * load the matrix when needed (else postsolve and restore the sense), run
 * the engine and take over its solution state.
 * @param prob    the problem.
 * @param options engine option letters (case-insensitive; null: none):
 *                b barrier, c continue without the postsolve of an
 *                unchanged model, d dual simplex, n network, p primal.
 * @return 0 on success, 1 on failure (an infeasible or unbounded LP is a
 *         success: see mdlgetlpstat_prob).
 * @par Messages
 * - 1501 E `(lpoptimize) No active problem.`: @p prob is null.
 * - 1523 E `Unknown solution option '%c'.`: a letter outside the list.
 * - 1524 E `(lpoptimize) Korvex-Optimizer error %d during '%s'. Return
 *   value: %d.`: the engine's call (postsolve, chgobjsense, lpoptimize,
 *   getintattrib) failed.
 * - 1521 E `Korvex-Optimizer error getting objective function value.`: the
 *   objective value of the solution could not be read.
 * - 1573 W `(lpoptimize) 'begincb' without matching 'endcb'.`: a callback
 *   bracket was left open; it is closed.
 * - the messages of mdlloadmat_prob when the matrix is loaded.
 */
KVTL_API int mdllpoptimize_prob(MDLprob prob, const char *options);
/**
 * Run the global (MIP) search, as mdllpoptimize_prob; the option letters are
 * b c d l n p (l: stop after the LP relaxation).
 * @return 0 on success, 1 on failure.
 * @par Messages
 * - 1501 E `(mipoptimize) No active problem.`: @p prob is null.
 * - 1523 E `Unknown solution option '%c'.`
 * - 1524 E `(mipoptimize) Korvex-Optimizer error %d during '%s'. Return
 *   value: %d.`: an engine call failed (also when a search callback asked
 *   to stop).
 * - 1522 E `Korvex-Optimizer error getting %s status.`: the MIP status
 *   after the run could not be read ("MIP") or is unknown ("solution").
 * - 1524 E `(solution) Korvex-Optimizer error %d during 'getintattrib'.
 *   Return value: %d.`: the state of an LP solution could not be read.
 * - 1521 E `Korvex-Optimizer error getting objective function value.`
 * - 1573 W `(mipoptimize) 'begincb' without matching 'endcb'.`: a callback
 *   bracket was left open; it is closed.
 * - the messages of mdlloadmat_prob when the matrix is loaded.
 */
KVTL_API int mdlmipoptimize_prob(MDLprob prob, const char *options);
/**
 * Store the sense "minimise", then optimise: a model with global entities
 * is searched as a MIP when @p options holds g, else its LP relaxation is
 * solved.  Option letters: b d g l n p.
 * @return 0 on success, 1 on failure.
 * @par Messages
 * - 1501 E `(minim) No active problem.`: @p prob is null.
 * - 1523 E `Unknown solution option '%c'.`
 * - 1524 E `(minim) Korvex-Optimizer error %d during '%s'. Return value:
 *   %d.`: an engine call (initglobal, minim, getintattrib) failed.
 * - 1522 E `Korvex-Optimizer error getting %s status.`: the MIP status
 *   after the run could not be read ("MIP") or is unknown ("solution").
 * - 1524 E `(solution) Korvex-Optimizer error %d during 'getintattrib'.
 *   Return value: %d.`: the state of an LP solution could not be read.
 * - 1521 E `Korvex-Optimizer error getting objective function value.`
 * - 1573 W `(minim) 'begincb' without matching 'endcb'.`: a callback
 *   bracket was left open; it is closed.
 * - the messages of mdlloadmat_prob when the matrix is loaded.
 */
KVTL_API int mdlminim_prob(MDLprob prob, const char *options);
/**
 * Store the sense "maximise", then optimise, as mdlminim_prob.
 * @return 0 on success, 1 on failure.
 * @par Messages
 * - 1501 E `(maxim) No active problem.`: @p prob is null.
 * - 1523 E `Unknown solution option '%c'.`
 * - 1524 E `(maxim) Korvex-Optimizer error %d during '%s'. Return value:
 *   %d.`
 * - 1522 E `Korvex-Optimizer error getting %s status.`: the MIP status
 *   after the run could not be read ("MIP") or is unknown ("solution").
 * - 1524 E `(solution) Korvex-Optimizer error %d during 'getintattrib'.
 *   Return value: %d.`: the state of an LP solution could not be read.
 * - 1521 E `Korvex-Optimizer error getting objective function value.`
 * - 1573 W `(maxim) 'begincb' without matching 'endcb'.`: a callback
 *   bracket was left open; it is closed.
 * - the messages of mdlloadmat_prob when the matrix is loaded.
 */
KVTL_API int mdlmaxim_prob(MDLprob prob, const char *options);
/**
 * Optimise in the problem's stored sense: mdlminim_prob or mdlmaxim_prob.
 * @return 0 on success, 1 on failure.
 * @par Messages
 * - 1501 E `(solve) No active problem.`: @p prob is null.
 * - the messages of mdlminim_prob or mdlmaxim_prob.
 */
KVTL_API int mdlsolve_prob(MDLprob prob, const char *options);
/**
 * Synchronise with the engine: mode 1 take over its LP solution, mode 3 its
 * MIP solution (as after a solve: inside a callback bracket, the solution
 * the callback is about); mode 2 mark the model modified (full reload next
 * time).  Other modes do nothing.
 * @return 0, or 1 for a null problem.
 * @par Messages
 * - 1501 E `(sync) No active problem.`: @p prob is null.
 * - 1520 W `(sync) No solution available or problem modified since last
 *   solved.`: the engine holds no such solution, or the model changed.
 * - 1524 E `(sync) Korvex-Optimizer error %d during 'getintattrib'. Return
 *   value: %d.`
 * - 1521 E `Korvex-Optimizer error getting objective function value.`
 */
KVTL_API int mdlsync_prob(MDLprob prob, int mode);
/**
 * Fix the global entities at their MIP solution values (rounded when
 * @p round is non-zero), so that a following LP gives duals and reduced
 * costs of the fixed problem; the solution is then no longer available.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(fixglobals) No active problem.`: @p prob is null.
 * - 1524 E `(fixglobals) Korvex-Optimizer error %d during 'fixglobals'.
 *   Return value: %d.`: e.g. no MIP solution to fix at.
 */
KVTL_API int mdlfixglobals_prob(MDLprob prob, int round);
/**
 * The engine's LP status (KVSL_LP_OPTIMAL ... in kvsl.h); at message level
 * 4 and above its text is printed.
 * @return the status, 0 on failure.
 * @par Messages
 * - 1501 E `(getlpstat) No active problem.`: @p prob is null.
 * - 1522 E `Korvex-Optimizer error getting LP status.`
 */
KVTL_API int mdlgetlpstat_prob(MDLprob prob);
/**
 * The engine's MIP status (KVSL_MIP_OPTIMAL ... in kvsl.h); at message
 * level 4 and above its text is printed.
 * @return the status, 0 on failure.
 * @par Messages
 * - 1501 E `(getmipstat) No active problem.`: @p prob is null.
 * - 1522 E `Korvex-Optimizer error getting MIP status.`
 */
KVTL_API int mdlgetmipstat_prob(MDLprob prob);

/* ---- Solution values, ranging and solution files -------------------------- */

/**
 * Value of a variable in the current solution (LP or MIP).  A variable
 * without a column answers the value nearest to 0 that its bounds allow,
 * without needing a solution.
 * @return the value; 0 when it cannot be given.
 * @par Messages
 * - 1505 E `(getsol) No variable given.`: @p var is null.
 * - 1520 W `(getsol) No solution available or problem modified since last
 *   solved.`
 * - 1524 E `(getsol) Korvex-Optimizer error %d during 'getlpsol'. Return
 *   value: %d.` (or 'getmipsol'): the engine failed to give the values.
 * - 1502 E `Not enough memory.`
 */
KVTL_API double mdlgetsol(MDLvar var);
/**
 * Reduced cost of a variable (0 for a MIP solution or without a column).
 * @return the reduced cost; 0 when it cannot be given.
 * @par Messages
 * - 1505 E `(getrcost) No variable given.`: @p var is null.
 * - 1520 W `(getrcost) No solution available or problem modified since
 *   last solved.`
 * - 1524 E `(getrcost) Korvex-Optimizer error %d during 'getlpsol'. Return
 *   value: %d.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API double mdlgetrcost(MDLvar var);
/**
 * Slack of a constraint: rhs minus activity (0 without a row).
 * @return the slack; 0 when it cannot be given.
 * @par Messages
 * - 1507 E `(getslack) No constraint given.`: @p ctr is null.
 * - 1520 W `(getslack) No solution available or problem modified since
 *   last solved.`
 * - 1524 E `(getslack) Korvex-Optimizer error %d during '%s'. Return value:
 *   %d.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API double mdlgetslack(MDLctr ctr);
/**
 * Activity of a constraint: the value of its terms, without its constant
 * (computed from the variables' values for a row not in the matrix or a
 * solution from outside).
 * @return the activity; 0 when it cannot be given.
 * @par Messages
 * - 1507 E `(getact) No constraint given.`: @p ctr is null.
 * - 1520 W `(getact) No solution available or problem modified since last
 *   solved.`
 * - 1524 E `(getact) Korvex-Optimizer error %d during '%s'. Return value:
 *   %d.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API double mdlgetact(MDLctr ctr);
/**
 * Dual value of a constraint (0 for a MIP solution or without a row).
 * @return the dual; 0 when it cannot be given.
 * @par Messages
 * - 1507 E `(getdual) No constraint given.`: @p ctr is null.
 * - 1520 W `(getdual) No solution available or problem modified since last
 *   solved.`
 * - 1524 E `(getdual) Korvex-Optimizer error %d during 'getlpsol'. Return
 *   value: %d.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API double mdlgetdual(MDLctr ctr);
/**
 * Objective value of the current solution (the MIP solution's when there is
 * one, else the LP solution's).
 * @return the value; 0 when it cannot be given.
 * @par Messages
 * - 1501 E `(getobjval) No active problem.`: @p prob is null.
 * - 1520 W `(getobjval) No solution available or problem modified since
 *   last solved.`
 * - 1521 E `Korvex-Optimizer error getting objective function value.`
 */
KVTL_API double mdlgetobjval_prob(MDLprob prob);

/** Ranging codes of mdlgetvarrng (0..5) and mdlgetctrrng (0..3). */
enum {
  MDL_RNG_UPACT = 0,  /**< upper end of the value (activity) range */
  MDL_RNG_LOACT = 1,  /**< lower end of the value (activity) range */
  MDL_RNG_UUP = 2,    /**< objective change per unit up */
  MDL_RNG_UDN = 3,    /**< objective change per unit down */
  MDL_RNG_UCOST = 4,  /**< upper end of the cost range (variables only) */
  MDL_RNG_LCOST = 5   /**< lower end of the cost range (variables only) */
};
/**
 * Ranging of a variable in the current LP solution (computed once per
 * solution; only for linear problems).
 * @param var  the variable.
 * @param code ::MDL_RNG_UPACT ... ::MDL_RNG_LCOST.
 * @return the value; 0 for another code, a variable without a column or on
 *         failure.
 * @par Messages
 * - 1505 E `(getrng) No variable given.`: @p var is null.
 * - 1524 E `(getrng) Korvex-Optimizer error %d during 'KVSLrange'. Return
 *   value: %d.` (or 'KVSLgetrowrange', 'KVSLgetcolrange'): e.g. a problem
 *   with quadratic parts.
 * - 1502 E `Not enough memory.`
 */
KVTL_API double mdlgetvarrng(MDLvar var, int code);
/**
 * Ranging of a constraint in the current LP solution, as mdlgetvarrng.
 * @param ctr  the constraint.
 * @param code ::MDL_RNG_UPACT ... ::MDL_RNG_UDN.
 * @return the value; 0 for another code, a constraint without a row or on
 *         failure.
 * @par Messages
 * - 1507 E `(getrng) No constraint given.`: @p ctr is null.
 * - 1524 E `(getrng) Korvex-Optimizer error %d during 'KVSLrange'. Return
 *   value: %d.` (or 'KVSLgetrowrange', 'KVSLgetcolrange').
 * - 1502 E `Not enough memory.`
 */
KVTL_API double mdlgetctrrng(MDLctr ctr, int code);

/**
 * Write the current solution with the engine (file and flags as the
 * engine's KVSLwritesol; flags may be null).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(writesol) No active problem.`: @p prob is null.
 * - 1524 E `(writesol) Korvex-Optimizer error %d during 'writesol'. Return
 *   value: %d.`
 */
KVTL_API int mdlwritesol_prob(MDLprob prob, const char *file, const char *flags);
/**
 * Write the solution as a printable report (the engine's KVSLwriteprtsol).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(writeprtsol) No active problem.`: @p prob is null.
 * - 1524 E `(writeprtsol) Korvex-Optimizer error %d during 'writeprtsol'.
 *   Return value: %d.`
 */
KVTL_API int mdlwriteprtsol_prob(MDLprob prob, const char *file, const char *flags);
/**
 * Write the solution as an slx file (the engine's KVSLwriteslxsol).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(writeslxsol) No active problem.`: @p prob is null.
 * - 1524 E `(writeslxsol) Korvex-Optimizer error %d during 'writeslxsol'.
 *   Return value: %d.`
 */
KVTL_API int mdlwriteslxsol_prob(MDLprob prob, const char *file, const char *flags);
/**
 * Write the solution as a binary file (the engine's KVSLwritebinsol).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(writebinsol) No active problem.`: @p prob is null.
 * - 1524 E `(writebinsol) Korvex-Optimizer error %d during 'writebinsol'.
 *   Return value: %d.`
 */
KVTL_API int mdlwritebinsol_prob(MDLprob prob, const char *file, const char *flags);
/**
 * Read a binary solution file; the solution read becomes the current
 * solution.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(readbinsol) No active problem.`: @p prob is null.
 * - 1524 E `(readbinsol) Korvex-Optimizer error %d during 'readbinsol'.
 *   Return value: %d.`
 * - 1522 E `Korvex-Optimizer error getting %s status.`: the MIP status of
 *   the solution read could not be read ("MIP") or is unknown
 *   ("solution").
 * - 1524 E `(solution) Korvex-Optimizer error %d during 'getintattrib'.
 *   Return value: %d.`
 * - 1521 E `Korvex-Optimizer error getting objective function value.`
 */
KVTL_API int mdlreadbinsol_prob(MDLprob prob, const char *file, const char *flags);
/**
 * Read an slx solution file; the solution read becomes the current
 * solution.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(readslxsol) No active problem.`: @p prob is null.
 * - 1524 E `(readslxsol) Korvex-Optimizer error %d during 'readslxsol'.
 *   Return value: %d.`
 * - 1522 E `Korvex-Optimizer error getting %s status.`: the MIP status of
 *   the solution read could not be read ("MIP") or is unknown
 *   ("solution").
 * - 1524 E `(solution) Korvex-Optimizer error %d during 'getintattrib'.
 *   Return value: %d.`
 * - 1521 E `Korvex-Optimizer error getting objective function value.`
 */
KVTL_API int mdlreadslxsol_prob(MDLprob prob, const char *file, const char *flags);

/* ---- Engine access -------------------------------------------------------- */

/**
 * The engine problem of a problem, for setting engine controls (time limit,
 * gaps, threads ...) that the library does not set itself.
 * @return the engine problem, null for a null problem.
 * @par Messages
 * - 1501 E `(getkvslprob) No active problem.`: @p prob is null.
 */
KVTL_API MDLkvslprob mdlgetkvslprob_prob(MDLprob prob);

/* ---- Cuts ------------------------------------------------------------------- */

/** A cut: a linear inequality or equation kept outside the model, in the
 *  problem's pool, and sent to the engine only by mdladdcuts_prob (usually
 *  from a callback during the search).  Types: 1 L (<=), 2 G (>=), 3 E (=).
 *  Cuts are created and deleted by the application: a cut with terms holds
 *  a reference on its problem, whose memory stays until the cut is deleted
 *  with mdldelcut (also after mdldelprob_prob). */
typedef struct mdl_cut *MDLcut;

/**
 * A new cut without terms, rhs 0.
 * @param prob the problem.
 * @param type 1 L, 2 G or 3 E.
 * @param id   the application's identifier (the engine's cut type number).
 * @return the cut, or null on failure.
 * @par Messages
 * - 1501 E `(newcut) No active problem.`: @p prob is null.
 * - 1535 E `(newcut) Incorrect type for constraint 'CUT'.`: @p type is not
 *   1..3.
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLcut mdlnewcut_prob(MDLprob prob, int type, int id);
/**
 * A new cut sum(arr[i]) @p type @p rhs (an open array gives a cut without
 * terms).
 * @return the cut, or null on failure.
 * @par Messages
 * - 1501 E `(newcutsum) No active problem.`: @p prob is null.
 * - 1506 E `(newcutsum) No array of variables given.`: @p arr is null.
 * - 1535 E `(newcut) Incorrect type for constraint 'CUT'.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLcut mdlnewcutsum_prob(MDLprob prob, MDLarrvar arr, int type, int id, double rhs);
/**
 * A new cut sum((base + i) * arr[i]) @p type @p rhs.
 * @return the cut, or null on failure.
 * @par Messages
 * - 1501 E `(newcutsumc) No active problem.`: @p prob is null.
 * - 1506 E `(newcutsumc) No array of variables given.`: @p arr is null.
 * - 1535 E `(newcut) Incorrect type for constraint 'CUT'.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLcut mdlnewcutsumc_prob(MDLprob prob, MDLarrvar arr, int type, int id, double base,
                                   double rhs);
/**
 * A new cut sum(coefs[i] * arr[i]) @p type @p rhs.
 * @return the cut, or null on failure (a half-made cut is deleted).
 * @par Messages
 * - 1501 E `(newcutarrsum) No active problem.`: @p prob is null.
 * - 1506 E `(newcutarrsum) No array of variables given.`: @p arr is null.
 * - 1535 E `(newcut) Incorrect type for constraint 'CUT'.`
 * - 1512 E `(addcutarrterm) No array of constants given.`: @p coefs is
 *   null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLcut mdlnewcutarrsum_prob(MDLprob prob, MDLarrvar arr, const double *coefs, int type,
                                     int id, double rhs);
/**
 * A new precedence cut x - y <= -d (x plus d precedes y); a null variable
 * stands for the rhs, as in mdladdcutterm.
 * @return the cut, or null on failure.
 * @par Messages
 * - 1501 E `(newcutprec) No active problem.`: @p prob is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLcut mdlnewcutprec_prob(MDLprob prob, MDLvar x, MDLvar y, int id, double d);
/**
 * The cut's identifier.
 * @return the id, -1 for a null cut.
 * @par Messages
 * - 1509 E `(getcutid) No cut given.`: @p cut is null.
 */
KVTL_API int mdlgetcutid(MDLcut cut);
/**
 * Set the cut's identifier.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1509 E `(getcutid) No cut given.`: @p cut is null.
 */
KVTL_API int mdlsetcutid(MDLcut cut, int id);
/**
 * The cut's type.
 * @return 1 L, 2 G or 3 E; -1 for a null cut.
 * @par Messages
 * - 1509 E `(getcuttype) No cut given.`: @p cut is null.
 */
KVTL_API int mdlgetcuttype(MDLcut cut);
/**
 * Set the cut's type.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1509 E `(setcuttype) No cut given.`: @p cut is null.
 * - 1535 E `(setcuttype) Incorrect type for constraint 'CUT'.`: @p type is
 *   not 1..3.
 */
KVTL_API int mdlsetcuttype(MDLcut cut, int type);
/**
 * The cut's right-hand side.
 * @return the rhs, 0 for a null cut.
 * @par Messages
 * - 1509 E `(getcutrhs) No cut given.`: @p cut is null.
 */
KVTL_API double mdlgetcutrhs(MDLcut cut);
/**
 * The cut's linear terms, stripped of zero coefficients (owned by the cut).
 * @return the term list, null for none or a null cut.
 * @par Messages
 * - 1509 E `(getlinexp) No cut given.`: @p cut is null.
 */
KVTL_API MDLtermlst mdlgetlinexp_cut(MDLcut cut);
/**
 * Add @p value to a term's coefficient; a null variable adds to the rhs.  A
 * value of exactly 0 does nothing, before any check.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1509 E `(addcutterm) No cut given.`: @p cut is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladdcutterm(MDLcut cut, MDLvar var, double value);
/**
 * Add coefs[i] * arr[i] to the cut for every slot of the array.
 * @return 0, or 1 at the first failure.
 * @par Messages
 * - 1509 E `(addcutarrterm) No cut given.`: @p cut is null.
 * - 1506 E `(addcutarrterm) No array of variables given.`: @p arr is null.
 * - 1512 E `(addcutarrterm) No array of constants given.`: @p coefs is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdladdcutarrterm(MDLcut cut, MDLarrvar arr, const double *coefs);
/**
 * Set a term's coefficient (0 removes it); a null variable sets the rhs.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1509 E `(addcutterm) No cut given.`: @p cut is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetcutterm(MDLcut cut, MDLvar var, double value);
/**
 * Remove a term (a null variable zeroes the rhs) and mark the problem
 * modified.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1509 E `(delterm) No cut given.`: @p cut is null.
 */
KVTL_API int mdldelcutterm(MDLcut cut, MDLvar var);
/**
 * Delete a cut: its terms (and their reference on the problem) and the
 * record.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1509 E `(delcut) No cut given.`: @p cut is null.
 */
KVTL_API int mdldelcut(MDLcut cut);
/**
 * Print "CUT(id):" followed by the cut as a relation, through the
 * problem's output.
 * @return the expression printer's result, 1 for a null cut.
 * @par Messages
 * - 1519 W `(printcut) No cut given.`: @p cut is null.
 */
KVTL_API int mdlprintcut(MDLcut cut);
/**
 * Give a cut a type and the linear part of an expression (rhs = -constant).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1509 E `(setcut) No cut given.`: @p cut is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetcut(MDLcut cut, MDLexpr expr, int type);
/**
 * Add an expression's linear part to a cut (rhs -= its constant).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1509 E `(appcut) No cut given.`: @p cut is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlappcut(MDLcut cut, MDLexpr expr);
/**
 * Cut mode 0 lets the engine presolve the search; any other mode keeps the
 * columns as loaded (presolve and dual reductions off) so that cuts can be
 * added.
 * @return 0, or 1 for a null problem.
 * @par Messages
 * - 1501 E `(setcutmode) No active problem.`: @p prob is null.
 */
KVTL_API int mdlsetcutmode_prob(MDLprob prob, int mode);
/**
 * Send cuts to the engine's current node problem (inside a callback
 * bracket: the problem being searched).  A changed model is loaded first;
 * cuts without terms are skipped.
 * @param prob  the problem.
 * @param cuts  the cuts.
 * @param ncuts their number.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1501 E `(addcuts) No active problem.`: @p prob is null.
 * - 1587 W `Switch to cut mode.`: cut mode was 0; it is switched on.
 * - 1509 E `(addcuts) No cut given.`: @p cuts or one of its entries is
 *   null.
 * - 1524 E `(addcuts) Korvex-Optimizer error %d during 'addcuts'. Return
 *   value: %d.`
 * - 1502 E `Not enough memory.`
 * - the messages of mdlloadmat_prob when the matrix is loaded.
 */
KVTL_API int mdladdcuts_prob(MDLprob prob, MDLcut *cuts, int ncuts);
/**
 * Read the engine's cut pool into new cuts chained through their next link.
 * @param prob   the problem.
 * @param first  receives the first cut.
 * @param ncoefs receives the total number of coefficients.
 * @return the number of cuts, 0 on failure.
 * @par Messages
 * - 1501 E `(getcuts) No active problem.`: @p prob is null.
 * - 1525 W `(getcuts) Different problem loaded in Korvex-Optimizer.`: the
 *   model changed since the load.
 * - 1524 E `(getcuts) Korvex-Optimizer error %d during '%s'. Return value:
 *   %d.`: getcutlist or getcpcuts failed.
 * - 1585 E `Cut term not found.`: a pool column has no variable.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlgetcuts_prob(MDLprob prob, MDLcut *first, int *ncoefs);

/* ---- Model files ---------------------------------------------------------- */

/** Output file formats of mdlexportprob_prob. */
enum {
  MDL_FILE_LP = 1, /**< LP file */
  MDL_FILE_MPS = 2 /**< fixed-column MPS file */
};
/**
 * Generate the matrix and write the model as an LP or fixed-column MPS
 * file.
 * @param prob   the problem.
 * @param format ::MDL_FILE_LP or ::MDL_FILE_MPS; another format is warned
 *               about and written as LP.
 * @param file   the file name (null or empty: the problem's name); ".lp" /
 *               ".mps" is appended unless the name has an extension after
 *               its last '/' or ends in '.'.
 * @return 0 on success, 1 when generation fails, the file cannot be opened
 *         or not all of it could be written.
 * @par Messages
 * - 1501 E `(exportprob) No active problem.`: @p prob is null.
 * - 1580 W `Unknown output file format %d.`
 * - 1582 E `Internal error writing MPS file.`: a column holds more
 *   coefficients than the generated matrix counted for it (the term is
 *   left out).
 * - 1502 E `Not enough memory.`
 * - the messages of mdlloadmat_prob.
 */
KVTL_API int mdlexportprob_prob(MDLprob prob, int format, const char *file);
/**
 * Write the branching directives, model cuts and delayed rows to a
 * directives file (".dir" appended as for mdlexportprob_prob).
 * @return 0, or 1 when the file cannot be opened or written.
 * @par Messages
 * - 1501 E `(writedir) No active problem.`: @p prob is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlwritedir_prob(MDLprob prob, const char *file);

/* ---- Printing of the model ----------------------------------------------- */

/**
 * Print the problem: every non-free constraint, the sets and the
 * objective, through the problem's output (message callback, else
 * standard output), numbers in the problem's real-number format.
 * @return 0, or 1 for a null problem.
 * @par Messages
 * - 1501 E `(printprob) No active problem.`: @p prob is null.
 */
KVTL_API int mdlprintprob_prob(MDLprob prob);
/**
 * Print "name: " (and "ind=1 -> " for an indicator constraint) and the
 * expression with its relation.
 * @return the expression printer's result; 1 for a null constraint.
 * @par Messages
 * - 1514 W `(printctr) No constraint given.`: @p ctr is null.
 */
KVTL_API int mdlprintctr(MDLctr ctr);
/**
 * Print the objective (or "No objective defined.").
 * @return 0, or 1 for a null problem.
 * @par Messages
 * - 1501 E `(printobj) No active problem.`: @p prob is null.
 */
KVTL_API int mdlprintobj_prob(MDLprob prob);
/**
 * Print "name(type): x(+1) y(-2) " and a newline.
 * @return 0, or 1 for a null set.
 * @par Messages
 * - 1518 W `(printsos) No SOS given.`: @p sos is null.
 */
KVTL_API int mdlprintsos(MDLsos sos);
/**
 * Print "x: value" with a solution, else "x: [lb,ub]" ("[lb,limit,ub]" for
 * partial-integer and semi-continuous types).
 * @return the number of characters printed (0 for a null variable).
 * @par Messages
 * - 1513 W `(printvar) No variable given.`: @p var is null.
 * - the messages of mdlgetsol for the value.
 */
KVTL_API int mdlprintvar(MDLvar var);
/**
 * Print the array's variables as mdlprintvar does, separated by ",  ".
 * @return 0, or 1 for a null array.
 * @par Messages
 * - 1506 E `(printarrvar) No array of variables given.`: @p arr is null.
 * - the messages of mdlprintvar for each variable.
 */
KVTL_API int mdlprintarrvar(MDLarrvar arr);

/* ---- Message table positions (second argument of mdlerror) --------------- */
/** Positions of the numbered messages in the message table: the second
 *  argument of mdlerror.  Each entry names its message number, its kind
 *  (E error, W warning) and its text; "(%s)" is the reporting function's
 *  short name. */
enum {
  MDL_E_NOPROB = 0, /**< 1501 E: "(%s) No active problem." */
  MDL_E_NOMEM = 1, /**< 1502 E: "Not enough memory." */
  MDL_E_DICTREINIT = 2, /**< 1504 E: "Dictionary cannot be re-initialized." */
  MDL_E_NOVAR = 3, /**< 1505 E: "(%s) No variable given." */
  MDL_E_NOARRVAR = 4, /**< 1506 E: "(%s) No array of variables given." */
  MDL_E_NOCTR = 5, /**< 1507 E: "(%s) No constraint given." */
  MDL_E_NOSOS = 6, /**< 1508 E: "(%s) No SOS given." */
  MDL_E_NOCUT = 7, /**< 1509 E: "(%s) No cut given." */
  MDL_E_NOBASIS = 8, /**< 1510 E: "(%s) No basis given." */
  MDL_E_NOARRCONST = 9, /**< 1512 E: "(%s) No array of constants given." */
  MDL_W_NOVAR = 10, /**< 1513 W: "(%s) No variable given." */
  MDL_W_NOCTR = 11, /**< 1514 W: "(%s) No constraint given." */
  MDL_E_PROBHASNO = 12, /**< 1515 E: "(%s) Problem has no %s." */
  MDL_W_PROBHASNO = 13, /**< 1516 W: "(%s) Problem has no %s." */
  MDL_W_NOSOS = 14, /**< 1518 W: "(%s) No SOS given." */
  MDL_W_NOCUT = 15, /**< 1519 W: "(%s) No cut given." */
  MDL_W_NOSOL = 16, /**< 1520 W: "(%s) No solution available or problem modified since last solved." */
  MDL_E_OBJVAL = 17, /**< 1521 E: "Korvex-Optimizer error getting objective function value." */
  MDL_E_GETSTATUS = 18, /**< 1522 E: "Korvex-Optimizer error getting %s status." */
  MDL_E_SOLOPT = 19, /**< 1523 E: "Unknown solution option '%c'." */
  MDL_E_KVSL = 20, /**< 1524 E: "(%s) Korvex-Optimizer error %d during '%s'. Return value: %d." */
  MDL_W_DIFFPROB = 21, /**< 1525 W: "(%s) Different problem loaded in Korvex-Optimizer." */
  MDL_E_NOTLOADED = 22, /**< 1526 E: "(%s) Empty problem or problem not loaded in Korvex-Optimizer." */
  MDL_W_LOADMIPSOL = 23, /**< 1527 W: "Loading MIP solution failed. Return value: %d." */
  MDL_E_VARBOUNDS = 24, /**< 1530 E: "(%s) Inconsistent bounds for variable '%s' (%g,%g)." */
  MDL_E_VARTYPE = 25, /**< 1531 E: "(%s) Incorrect type for variable '%s'." */
  MDL_E_CTRTYPE = 26, /**< 1535 E: "(%s) Incorrect type for constraint '%s'." */
  MDL_E_CTRRANGE = 27, /**< 1536 E: "(%s) Inconsistent range for constraint '%s' (%g,%g)." */
  MDL_E_STDCTR = 28, /**< 1538 E: "(%s) Setting '%s' can only be applied to standard constraints." */
  MDL_E_INDICTYPE = 29, /**< 1539 E: "(%s) Incorrect constraint type for indicator constraint '%s'." */
  MDL_E_INCVARSTYPE = 30, /**< 1595 E: "(%s) Incorrect constraint type for include vars constraint '%s'." */
  MDL_E_ARRCLOSED = 31, /**< 1540 E: "(%s) Trying to modify a closed array of variables ('%s')." */
  MDL_E_ARRINDEX = 32, /**< 1541 E: "(%s) Index %d out of range for an array of variables ('%s' max=%d)." */
  MDL_E_ARRFULL = 33, /**< 1542 E: "(%s) Trying to add an entry ('%s') to a complete array of variables ('%s')." */
  MDL_E_ARRINCOMPLETE = 34, /**< 1543 E: "(%s) Trying to close an incomplete array of variables ('%s')." */
  MDL_E_SOSTYPE = 35, /**< 1545 E: "(%s) Wrong type for SOS '%s'." */
  MDL_E_DIRTYPE = 36, /**< 1547 E: "(%s) Wrong directive type." */
  MDL_E_NOIDX = 37, /**< 1550 E: "(%s) No index set given." */
  MDL_W_IDXNONAME = 38, /**< 1551 W: "(%s) No name given for an element of an index set." */
  MDL_W_NOIDX = 39, /**< 1552 W: "(%s) No index set given." */
  MDL_W_IISINDEX = 40, /**< 1555 W: "Incorrect IIS index given (%d)." */
  MDL_E_INIT = 41, /**< 1561 E: "(%s) Initialization failed (value: %d)." */
  MDL_E_GENINCONS = 42, /**< 1563 E: "(%s) Inconsistency during matrix generation." */
  MDL_E_INTERNAL = 43, /**< 1565 E: "(%s) Internal error." */
  MDL_E_NAMELEN = 44, /**< 1566 E: "Name too long: %s (max=%d)." */
  MDL_W_KVSLMSG = 45, /**< 1570 W: "KVSL: %s" */
  MDL_E_NOKVSLPROB = 46, /**< 1572 E: "(%s) No Korvex-Optimizer problem given." */
  MDL_W_NOMATCH = 47, /**< 1573 W: "(%s) '%s' without matching '%s'." */
  MDL_E_ARGVALUE = 48, /**< 1575 E: "(%s) Unexpected argument value %d." */
  MDL_W_FILEFORMAT = 49, /**< 1580 W: "Unknown output file format %d." */
  MDL_E_MPSWRITE = 50, /**< 1582 E: "Internal error writing MPS file." */
  MDL_E_CUTTERM = 51, /**< 1585 E: "Cut term not found." */
  MDL_W_CUTMODE = 52, /**< 1587 W: "Switch to cut mode." */
  MDL_E_NONQUAD = 53, /**< 1591 E: "(%s) Non-quadratic term." */
  MDL_W_LIMTYPE = 54, /**< 1592 W: "(%s) Setting limit for variable '%s' of wrong type." */
  MDL_W_LIMBOUNDS = 55, /**< 1593 W: "(%s) Setting limit %g for variable '%s' outside bounds (%g,%g)." */
  MDL_E_NONBINDING = 56, /**< 1594 E: "(%s) Setting '%s' can only be applied to non-binding (type N) constraints." */
  MDL_W_ADDMIPSOL = 57, /**< 1596 W: "Adding MIP solution failed. Error loading matrix (%d)." */
  MDL_E_NOSOL = 58, /**< 1597 E: "(%s) No solution given." */
  MDL_W_NOSOLGIVEN = 59, /**< 1598 W: "(%s) No solution given." */
  MDL_W_SOLNAN = 60, /**< 1599 W: "(%s) Removing var %s, set to a NaN value, from solution." */
  MDL_E_COUNT = 61 /**< number of rows of the table */
};

/* ---- Bases and infeasible subsystems ------------------------------------- */

/** A saved basis: a block of 64-bit words (the problem, the row and column
 *  counts at the save, then one constraint or variable handle per row and
 *  column with its 2-bit basis status in the two low bits), from the
 *  allocator hooks; release it with mdldelbasis. */
typedef struct mdl_basis *MDLbasis;

/**
 * Save the engine's current basis by model objects, so that it can be
 * loaded again after the model changed.
 * @return the basis; null for a problem not loaded (no message) or on
 *         failure.
 * @par Messages
 * - 1501 E `(savebasis) No active problem.`: @p prob is null.
 * - 1524 E `(savebasis) Korvex-Optimizer error %d during 'getbasis'.
 *   Return value: %d.`: e.g. no simplex basis (a quadratic model).
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLbasis mdlsavebasis_prob(MDLprob prob);
/**
 * Load a saved basis into the current matrix: saved constraints and
 * variables still in the matrix take their statuses, new rows start basic
 * and new columns at their lower bound.
 * @return 0; 1 on failure or when the problem is not loaded.
 * @par Messages
 * - 1510 E `(loadbasis) No basis given.`: @p basis is null.
 * - 1524 E `(loadbasis) Korvex-Optimizer error %d during 'loadbasis'.
 *   Return value: %d.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlloadbasis(MDLbasis basis);
/** Release a saved basis (null: nothing). */
KVTL_API void mdldelbasis(MDLbasis basis);
/**
 * The number of irreducible infeasible subsystems: the count found so far
 * when a search has run, else the count of a full search (run now).
 * @return the count, -1 on failure.
 * @par Messages
 * - 1501 E `(getnumiis) No active problem.`: @p prob is null.
 * - 1526 E `(getnumiis) Empty problem or problem not loaded in
 *   Korvex-Optimizer.`: nothing is loaded.
 * - 1524 E `(getnumiis) Korvex-Optimizer error %d during '%s'. Return
 *   value: %d.`: KVSLiisstatus, KVSLiisall or KVSLgetintattrib failed.
 */
KVTL_API int mdlgetnumiis_prob(MDLprob prob);
/**
 * Infeasible subsystem @p num as arrays of variables (bounds), constraints
 * and sets.  IIS 0 is the quick approximation from the infeasibility
 * proof; IIS 1, 2 ... are irreducible, searched on to @p num as needed.
 * Each output pair may be null; the arrays come from the allocator hooks
 * (release each with mdlfreeiismem) and are null with count 0 when empty.
 * @return 0 (also with empty outputs when there is no IIS @p num), 1 on
 *         failure, -1 when the engine's IIS status could not be read.
 * @par Messages
 * - 1501 E `(getiis) No active problem.`: @p prob is null.
 * - 1526 E `(getiis) Empty problem or problem not loaded in
 *   Korvex-Optimizer.`
 * - 1555 W `Incorrect IIS index given (%d).`: @p num is negative.
 * - 1524 E `(getiis) Korvex-Optimizer error %d during '%s'. Return value:
 *   %d.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlgetmiis_prob(MDLprob prob, MDLvar **vars, int *nvars, MDLctr **ctrs, int *nctrs,
                             MDLsos **soss, int *nsoss, int num);
/**
 * As mdlgetmiis_prob without the sets.
 * @par Messages
 * - the messages of mdlgetmiis_prob.
 */
KVTL_API int mdlgetiis_prob(MDLprob prob, MDLvar **vars, int *nvars, MDLctr **ctrs, int *nctrs,
                            int num);
/** Release an array returned by mdlgetiis_prob or mdlgetmiis_prob (null:
 *  nothing).  @return 0. */
KVTL_API int mdlfreeiismem(void *array);
/* ---- Data file reading ------------------------------------------------------ */
/** Line source of the callback readers: fill @p buffer with at most
 *  @p size - 1 characters of the next line, as fgets does; null at the end
 *  of the input. */
typedef char *(*MDLreadfn)(char *buffer, int size, void *handle);
/**
 * Read one data line (skipping empty lines and lines starting with "!") and
 * convert its fields as the format says.
 *
 * Format letters: i (int32_t *), d f g r (double *), S "quoted" s 'quoted'
 * T (quoted or not) t (unquoted) texts of at most the width that may follow
 * the letter (default 80; the target needs one byte more).  A non-blank
 * character after a conversion is the separator that must follow its
 * field; "!" starts a comment, "&" continues the line.  Numbers use the
 * calling thread's decimal sign.
 * @param stream the input.
 * @param maxlen size of the line buffer (at least 80 is used).
 * @param format the field letters.
 * @return the number of fields converted, -1 at end of input before a data
 *         line, -2 for a letter outside the table.  Nothing is reported.
 */
KVTL_API int mdlreadline(FILE *stream, int maxlen, const char *format, ...);
/** As mdlreadline, the lines coming from @p readfn called with @p handle. */
KVTL_API int mdlreadlinecb(MDLreadfn readfn, void *handle, int maxlen,
                           const char *format, ...);
/**
 * Read one data line of up to @p n values of one kind into an array.
 * @param stream the input.
 * @param maxlen size of the line buffer (at least 80 is used).
 * @param format one letter, its width and its separator.
 * @param array  int32_t for i, double for d f g r, and char * buffers of
 *               width + 1 bytes for S s T t.
 * @param n      room in the array.
 * @return the number of elements stored, -1 at end of input, -2 for
 *         @p n < 1 or an unknown letter.  Nothing is reported.
 */
KVTL_API int mdlreadarrline(FILE *stream, int maxlen, const char *format,
                            void *array, int n);
/** As mdlreadarrline, the lines coming from @p readfn called with
 *  @p handle. */
KVTL_API int mdlreadarrlinecb(MDLreadfn readfn, void *handle, int maxlen,
                              const char *format, void *array, int n);

/* ---- MIP start solutions ---------------------------------------------------- */
/** A solution object: values for some variables of a problem, matched by the
 *  variables' serial numbers; a NaN value removes the variable's value. */
typedef struct mdl_sol *MDLsol;
/**
 * A new empty solution of the problem (it holds a reference on it).
 * @return the solution, or null on failure.
 * @par Messages
 * - 1501 E `(newsol) No active problem.`: @p prob is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API MDLsol mdlnewsol_prob(MDLprob prob);
/**
 * Set (or replace) the value of a variable; NaN removes it.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1597 E `(setsolvar) No solution given.`: @p sol is null.
 * - 1505 E `(setsolvar) No variable given.`: @p var is null.
 * - 1599 W `(setsolvar) Removing var %s, set to a NaN value, from
 *   solution.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetsolvar(MDLsol sol, MDLvar var, double value);
/**
 * Set values[i] for arr[i] for every slot of the array.
 * @return 0, or 1 at the first failing element.
 * @par Messages
 * - 1597 E `(setsolarrvar) No solution given.`: @p sol is null.
 * - 1506 E `(setsolarrvar) No array of variables given.`: @p arr is null.
 * - 1512 E `(setsolarrvar) No array of constants given.`: @p values is
 *   null.
 * - 1599 W `(setsolarrvar) Removing var %s, set to a NaN value, from
 *   solution.`
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlsetsolarrvar(MDLsol sol, MDLarrvar arr, const double *values);
/**
 * Remove the value of a variable.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1597 E `(delsolvar) No solution given.`: @p sol is null.
 * - 1505 E `(delsolvar) No variable given.`: @p var is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdldelsolvar(MDLsol sol, MDLvar var);
/**
 * Merge pending changes and drop removed entries.
 * @return 0, or 1 for a null solution (no message) or when memory runs out.
 * @par Messages
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlstripsol(MDLsol sol);
/**
 * Number of variables with a value.
 * @return the count, -1 on failure.
 * @par Messages
 * - 1520 W `(getsolsize) No solution available or problem modified since
 *   last solved.`: @p sol is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlgetsolsize(MDLsol sol);
/**
 * The value of a variable.
 * @return 0 and the value in *value, -1 when the variable has none, 1 on a
 *         null argument.
 * @par Messages
 * - 1520 W `(getsolvar) No solution available or problem modified since
 *   last solved.`: @p sol is null.
 * - 1505 E `(getsolvar) No variable given.`: @p var is null.
 */
KVTL_API int mdlgetsolvar(MDLsol sol, MDLvar var, double *value);
/**
 * Print "name = value" entries through the problem's output.
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1598 W `(printsol) No solution given.`: @p sol is null.
 * - 1502 E `Not enough memory.`
 */
KVTL_API int mdlprintsol(MDLsol sol);
/**
 * Delete the solution and drop its reference on the problem (a solution
 * outlives mdldelprob_prob until it is deleted).
 * @return 0, or 1 on failure.
 * @par Messages
 * - 1597 E `(delsol) No solution given.`: @p sol is null.
 */
KVTL_API int mdldelsol(MDLsol sol);
/**
 * Offer the solution's values of the problem's loaded columns to the
 * solver as a MIP start for the next search (loading a changed model
 * first).
 * @param prob the problem.
 * @param sol  the solution.
 * @param name the start's name in the engine's log (may be null).
 * @return 0, 1 on failure, -2 when the matrix cannot be loaded, -3 out of
 *         memory.
 * @par Messages
 * - 1501 E `(addmipsol) No active problem.`: @p prob is null.
 * - 1597 E `(addmipsol) No solution given.`: @p sol is null or empty.
 * - 1596 W `Adding MIP solution failed. Error loading matrix (-2).`
 * - 1524 E `(addmipsol) Korvex-Optimizer error %d during 'addmipsol'.
 *   Return value: %d.`
 * - 1502 E `Not enough memory.`
 * - the messages of mdlloadmat_prob when the matrix is loaded.
 */
KVTL_API int mdladdmipsol_prob(MDLprob prob, MDLsol sol, const char *name);
/**
 * A full vector of @p ncols column values: passed to the solver to check
 * when @p tosolver is set (an accepted one becomes the MIP solution), else
 * made the current solution as given.
 * @return with @p tosolver the solver's status (0 accepted, 1 a bound or
 *         row violated, 2 worse than the solution held, 3 an entity or set
 *         violated), else 0; -2 when the matrix does not match @p ncols,
 *         -3 on failure, 1 for a null problem or values.
 * @par Messages
 * - 1501 E `(loadmipsol) No active problem.`: @p prob is null.
 * - 1527 W `Loading MIP solution failed. Return value: -2.`: the loaded
 *   matrix does not have @p ncols columns.
 * - 1512 E `(loadmipsol) No array of constants given.`: @p x is null.
 * - 1524 E `(loadmipsol) Korvex-Optimizer error %d during 'loadmipsol'.
 *   Return value: %d.` (or `(getsol)` for reading it back).
 * - 1502 E `Not enough memory.`
 * - the messages of mdlloadmat_prob when the matrix is loaded.
 */
KVTL_API int mdlloadmipsol_prob(MDLprob prob, const double *x, int ncols, int tosolver);

#ifdef __cplusplus
}
#endif

#endif /* KVTL_H */
