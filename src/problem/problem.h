/*
 * problem.h -- the problem record: the model's owner, its engine problem,
 * its settings, its solution state and its memory pool.
 */
#ifndef KVTL_PROBLEM_PROBLEM_H
#define KVTL_PROBLEM_PROBLEM_H

#include <pthread.h>
#include <stdint.h>
#include <string.h>

#include "core/pool.h"
#include "core/runtime.h"
#include "kvtl.h"
#include "model/records.h"
#include "kvsl.h"

// Flags of `status`.
enum : uint32_t {
  MDL_ST_LOADED = 1,
  MDL_ST_DIRPENDING = 2,
  MDL_ST_MODIFIED = 4,
  MDL_ST_SOLUTION = 8,
  MDL_ST_REGEN = 16,
  MDL_ST_PRESOLVED = 32,
  MDL_ST_OUTSIDESOL = 64
};
// Flags of `solcache`.
enum : int32_t {
  MDL_SC_X = 1, MDL_SC_DJ = 2, MDL_SC_DUAL = 4, MDL_SC_SLACK = 8, MDL_SC_MIP = 16
};

struct mdl_dict_entry;
struct mdl_entity_entry;

struct mdl_problem {
  uint32_t status;
  int32_t refcount;
  int32_t solcache;
  int32_t varcount;
  int32_t sense;                 // 1 minimise, 2 maximise
  char *filebase;
  int32_t dictsize;              // name dictionary buckets; 0: names off
  int32_t idxdictsize;
  mdl_dict_entry **dict;         // bucket array (then a 16-bit tag per bucket),
                                 // created at the first name
  int32_t nnames;                // distinct names in the dictionary
  int32_t maxnamelen;            // longest name entered
  mdl_entity_entry *entities;    // used instead of the dictionary
  void *idxdict;                 // index-set dictionary
  int32_t nidxnames;             // distinct element names in it
  mdl_ctr *objective;            // null: no objective
  mdl_ctr objrec;                // built-in objective "obj"
  mdl_ctr *ctrs;                 // newest first
  mdl_sos *soss;                 // newest first
  mdl_dir *dirhead;
  mdl_dir *dirtail;
  KVSLprob kvsl;
  KVSLprob savedkvsl;            // handle saved by the callback bracket
  // Solution and load state.
  int32_t nrows;
  int32_t ncols;
  int32_t nsets;
  int32_t nnz;
  double objval;
  double *solx;
  double *soldj;
  double *soldual;
  double *solslack;
  double *rangeinfo;
  mdl_var **colvars;             // column -> variable of the last load
  int32_t cutmode;
  kvtl::pool_header *pool;       // points at poolhdr
  kvtl::pool_header poolhdr;
  char realfmt[16];
  int32_t msglevel;
  int32_t colorder;
  MDLcberr cberr;
  void *cberr_user;
  MDLcbmsg cbmsg;
  void *cbmsg_user;
  MDLcbdelvar cbdelvar;
  void *cbdelvar_user;
  pthread_mutex_t mutex;         // callback bracket; reference counts
};

namespace kvtl {
// Release a term list held by a record of a problem being deleted and
// clear the reference (a null reference is left alone).
void drop_termlst(mdl_termlst **list);

// mdlallocmem(prob, sizeof(T), zero) for a problem: its common case (no
// lock, no recycled chunk of the size waiting, room in the block) inline,
// zeroing a size known here; every other case through mdlallocmem itself.
// The pool ends the same either way.
template <class T, bool zero>
inline T *problem_chunk(MDLprob prob) {
  if (asyncfree == 0) {
    if (void *p = bump_only(*prob->pool, sizeof(T))) {
      if constexpr (zero) memset(p, 0, sizeof(T));
      return static_cast<T *>(p);
    }
  }
  return static_cast<T *>(mdlallocmem(prob, sizeof(T), zero ? 1 : 0));
}
}  // namespace kvtl

#endif
