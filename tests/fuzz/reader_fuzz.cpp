/*
 * reader_fuzz.cpp -- libFuzzer target of the data file reader: format
 * strings and inputs together (see reader_entry.h for the byte layout).
 */
#include <stddef.h>
#include <stdint.h>

#include "fuzz/reader_entry.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  return reader_fuzz_one(data, size);
}
