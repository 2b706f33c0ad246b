/*
 * reader_entry.cpp -- one run of the data file reader on arbitrary bytes,
 * with every target sized exactly as the format allows, so that the
 * sanitizers see any write past it.
 */
#include "fuzz/reader_entry.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "io/datafields.h"
#include "kvtl.h"

namespace {

constexpr size_t header_size = 4;
constexpr size_t max_format = 32;  // so at most 32 conversions
constexpr int max_calls = 4096;

struct memory_input {
  const char *data;
  size_t size;
  size_t pos;
};

// The standard line reader's contract over bytes that may hold zeros.
char *read_line(char *buffer, int size, void *handle) {
  auto *in = static_cast<memory_input *>(handle);
  if (size < 1 || in->pos >= in->size) return nullptr;
  size_t n = 0;
  while (n + 1 < static_cast<size_t>(size) && in->pos < in->size) {
    char c = in->data[in->pos++];
    buffer[n++] = c;
    if (c == '\n') break;
  }
  buffer[n] = '\0';
  return buffer;
}

void check(bool ok, const char *what) {
  if (!ok) {
    fprintf(stderr, "reader fuzz: %s\n", what);
    abort();
  }
}

// One target of a conversion, in a block of its own, of the exact size
// the conversion allows for a line buffer of line_size bytes.
struct target {
  kvtl::field_kind kind;
  size_t bytes;
  void *block;
};

target make_target(const kvtl::conversion &conv, size_t line_size) {
  target t{conv.kind, 0, nullptr};
  switch (conv.kind) {
    case kvtl::field_kind::integer: t.bytes = sizeof(int32_t); break;
    case kvtl::field_kind::real: t.bytes = sizeof(double); break;
    case kvtl::field_kind::text: t.bytes = (conv.width < line_size ? conv.width : line_size) + 1; break;
    case kvtl::field_kind::unknown: t.bytes = 1; break;
  }
  t.block = malloc(t.bytes);
  memset(t.block, 'Z', t.bytes);  // unterminated until the reader stores a text
  return t;
}

// A text the reader counted is terminated within its target.
void check_text(const target &t) {
  if (t.kind == kvtl::field_kind::text)
    check(memchr(t.block, '\0', t.bytes) != nullptr, "text target not terminated");
}

int read_fields(MDLreadfn fn, void *handle, FILE *stream, int maxlen, const char *fmt,
                std::vector<target> &targets) {
  void *p[max_format];
  for (size_t i = 0; i < max_format; ++i) p[i] = i < targets.size() ? targets[i].block : nullptr;
#define KVTL_FUZZ_TARGETS p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8], p[9], p[10], \
    p[11], p[12], p[13], p[14], p[15], p[16], p[17], p[18], p[19], p[20], p[21], p[22], p[23], \
    p[24], p[25], p[26], p[27], p[28], p[29], p[30], p[31]
  if (stream != nullptr) return mdlreadline(stream, maxlen, fmt, KVTL_FUZZ_TARGETS);
  return mdlreadlinecb(fn, handle, maxlen, fmt, KVTL_FUZZ_TARGETS);
#undef KVTL_FUZZ_TARGETS
}

}  // namespace

int reader_fuzz_one(const uint8_t *data, size_t size) {
  if (size < header_size) return 0;
  const int call = data[0];
  const int maxlen = (static_cast<int>(data[1]) - 16) * 3;
  const int n = static_cast<int>(data[2]) % 48 - 4;
  const char signs[4] = {'.', ',', static_cast<char>(data[3]), '.'};
  const char *rest = reinterpret_cast<const char *>(data + header_size);
  size_t rest_size = size - header_size;
  const char *newline = static_cast<const char *>(memchr(rest, '\n', rest_size));
  size_t flen = newline ? static_cast<size_t>(newline - rest) : rest_size;
  std::string fmt(rest, flen < max_format ? flen : max_format);
  fmt = fmt.c_str();  // a zero byte ends the format
  memory_input in{rest + (newline ? flen + 1 : rest_size), newline ? rest_size - flen - 1 : 0, 0};

  const size_t line_size = static_cast<size_t>(maxlen > 80 ? maxlen : 80) + 2;
  std::vector<kvtl::conversion> convs;
  bool valid = true;
  for (const char *f = fmt.c_str(); *f != '\0';) {
    kvtl::conversion c;
    f = kvtl::next_conversion(f, c);
    if (c.kind == kvtl::field_kind::unknown) valid = false;
    convs.push_back(c);
  }

  mdlsetdecsign(signs[(call >> 2) & 3]);
  FILE *stream = nullptr;
  if ((call & 2) && in.size > 0) stream = fmemopen(const_cast<char *>(in.data), in.size, "r");

  for (int calls = 0; calls < max_calls; ++calls) {
    int r;
    if (call & 1) {
      // One kind of value, n elements (none when n < 1).
      kvtl::conversion c{};
      if (!convs.empty()) c = convs[0];
      size_t count = n > 0 ? static_cast<size_t>(n) : 0;
      std::vector<target> texts;
      void *array = nullptr;
      if (c.kind == kvtl::field_kind::text) {
        auto **refs = static_cast<char **>(malloc(count * sizeof(char *) + 1));
        for (size_t i = 0; i < count; ++i) {
          texts.push_back(make_target(c, line_size));
          refs[i] = static_cast<char *>(texts.back().block);
        }
        array = refs;
      } else {
        size_t width = c.kind == kvtl::field_kind::integer ? sizeof(int32_t) : sizeof(double);
        array = malloc(count * width + 1);
      }
      r = stream ? mdlreadarrline(stream, maxlen, fmt.c_str(), array, n)
                 : mdlreadarrlinecb(read_line, &in, maxlen, fmt.c_str(), array, n);
      const bool bad = n < 1 || convs.empty() || c.kind == kvtl::field_kind::unknown;
      check(bad ? r == -2 : r >= -1 && r <= n, "array result out of range");
      for (int i = 0; i < r && static_cast<size_t>(i) < texts.size(); ++i) check_text(texts[i]);
      for (auto &t : texts) free(t.block);
      free(array);
    } else {
      std::vector<target> targets;
      for (const auto &c : convs) targets.push_back(make_target(c, line_size));
      r = read_fields(read_line, &in, stream, maxlen, fmt.c_str(), targets);
      check(valid ? r >= -1 && r <= static_cast<int>(convs.size()) : r == -2,
            "field result out of range");
      for (int i = 0; i < r; ++i) check_text(targets[i]);
      for (auto &t : targets) free(t.block);
    }
    if (r < 0) break;
  }
  if (stream != nullptr) fclose(stream);
  mdlsetdecsign('.');
  return 0;
}
