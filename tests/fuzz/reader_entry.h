/*
 * reader_entry.h -- one run of the data file reader on bytes that choose
 * the call, the maximum line length, the decimal sign, the format and the
 * input; shared by the fuzz target and the corpus replay of the tests.
 */
#ifndef KVTL_TESTS_FUZZ_READER_ENTRY_H
#define KVTL_TESTS_FUZZ_READER_ENTRY_H

#include <stddef.h>
#include <stdint.h>

// Layout of the bytes: [call][maxlen/3+16][n+4 (mod 48)][decimal sign]
// format '\n' input.  Call bits: 1 array reader, 2 stream instead of a line
// callback, 4 and 8 choose the decimal sign ('.', ',', the fourth byte).
// Reads until end of input (or a bad format); aborts when a result is out
// of its range or a text target is left unterminated.  Always returns 0.
int reader_fuzz_one(const uint8_t *data, size_t size);

#endif
