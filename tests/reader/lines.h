/*
 * lines.h -- a line reader over text in memory, with the contract of the
 * standard one (at most size-1 bytes, up to and including a newline,
 * terminated; null at the end), for feeding the data file reader.
 */
#ifndef KVTL_TESTS_READER_LINES_H
#define KVTL_TESTS_READER_LINES_H

#include <string.h>

#include <string>

namespace testsupport {

struct memory_lines {
  std::string text;
  size_t pos = 0;
  int calls = 0;  // how often the reader was asked for a line
};

inline char *read_memory_line(char *buffer, int size, void *handle) {
  auto *src = static_cast<memory_lines *>(handle);
  ++src->calls;
  if (size < 1 || src->pos >= src->text.size()) return nullptr;
  size_t n = 0;
  while (n + 1 < static_cast<size_t>(size) && src->pos < src->text.size()) {
    char c = src->text[src->pos++];
    buffer[n++] = c;
    if (c == '\n') break;
  }
  buffer[n] = '\0';
  return buffer;
}

}  // namespace testsupport

#endif
