/* version.c -- start the library, report its version, shut down cleanly. */
#include <stdio.h>

#include "kvtl.h"

int main(void) {
  if (mdlslinit() != 0) {
    fprintf(stderr, "start-up failed\n");
    return 1;
  }
  printf("Tessel modelling library %s\n", mdlgetversion());
  if (mdlslfinish() != 0) {
    fprintf(stderr, "shutdown failed\n");
    return 1;
  }
  return 0;
}
