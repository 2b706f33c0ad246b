/*
 * export.cpp -- mdlexportprob_prob: generate the matrix, choose the file
 * name, open the file and hand it to the LP or MPS writer.
 */
#include <stdlib.h>
#include <string.h>

#include "core/errors.h"
#include "io/writers.h"

namespace kvtl {

char *output_file_name(MDLprob prob, const char *given, const char *ext) {
  const char *base = given != nullptr && given[0] != '\0' ? given : prob->filebase;
  if (base == nullptr) base = "";
  const size_t n = strlen(base);
  bool keep = given != nullptr && given[0] != '\0' && base[n - 1] == '.';
  if (!keep && given != nullptr && given[0] != '\0') {
    for (size_t i = n; i-- > 0 && base[i] != '/';)
      if (base[i] == '.') {
        keep = true;
        break;
      }
  }
  const size_t extlen = keep ? 0 : strlen(ext);
  char *name = static_cast<char *>(mdlsl_malloc(n + extlen + 1));
  if (name == nullptr) return nullptr;
  memcpy(name, base, n);
  memcpy(name + n, ext, extlen);
  name[n + extlen] = '\0';
  return name;
}

int write_file(MDLprob prob, const char *given, const char *ext,
               int (*write)(MDLprob prob, out_file &out)) {
  char *name = output_file_name(prob, given, ext);
  if (name == nullptr) {
    mdlerror(prob, MDL_E_NOMEM);
    return 1;
  }
  FILE *f = fopen(name, "w");
  mdlsl_free(name);
  if (f == nullptr) return 1;
  int rc;
  {
    out_file out(f, prob->realfmt);
    rc = write(prob, out);
    if (!out.finish()) rc = 1;
  }
  if (fclose(f) != 0) rc = 1;
  return rc;
}

}  // namespace kvtl

using namespace kvtl;

// Write the model as an LP (format 1) or MPS (format 2) file; an unknown
// format is warned about and written as LP.  0 on success; 1 when the
// matrix cannot be generated, the file cannot be opened (no message, the
// result says it) or not everything could be written to it.
KVTL_API int mdlexportprob_prob(MDLprob prob, int format, const char *file) {
  if (prob == nullptr) {
    mdlerror(nullptr, MDL_E_NOPROB, "exportprob");
    return 1;
  }
  if (format != 1 && format != 2) {
    mdlerror(prob, MDL_W_FILEFORMAT, format);
    format = 1;
  }
  if (mdlloadmat_prob(prob) != 0) return 1;
  return format == 2 ? write_file(prob, file, ".mps", write_mps)
                     : write_file(prob, file, ".lp", write_lp);
}
