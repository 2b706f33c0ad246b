/*
 * outbuf.cpp -- the writers' output buffer: big writes, numbers formatted
 * straight into the buffer.
 */
#include "io/outbuf.h"

#include <stdarg.h>
#include <stdlib.h>

#include "io/numfmt.h"
#include "kvtl.h"

namespace kvtl {

namespace {
constexpr size_t big_buffer = size_t{1} << 20;
}

out_file::out_file(FILE *file, const char *realfmt)
    : file_(file), realfmt_(realfmt), plain_g_(is_plain_g(realfmt)) {
  buf_ = static_cast<char *>(mdlsl_malloc(big_buffer));
  cap_ = big_buffer;
  if (buf_ == nullptr) {
    buf_ = small_;
    cap_ = sizeof small_;
  }
}

out_file::~out_file() {
  if (buf_ != small_) mdlsl_free(buf_);
}

void out_file::flush() {
  if (len_ > 0 && fwrite(buf_, 1, len_, file_) != len_) failed_ = true;
  len_ = 0;
}

void out_file::put_long(const char *text, size_t n) {
  flush();
  if (n <= cap_) {
    memcpy(buf_, text, n);
    len_ = n;
  } else if (fwrite(text, 1, n, file_) != n) {
    failed_ = true;
  }
}

void out_file::put_padded(const char *text, size_t width) {
  const size_t n = strlen(text);
  const size_t pad = n < width ? width - n : 0;
  if (n + pad > cap_ - len_) {
    put(text, n);
    for (size_t i = 0; i < pad; ++i) put(' ');
    return;
  }
  memcpy(buf_ + len_, text, n);
  memset(buf_ + len_ + n, ' ', pad);
  len_ += n + pad;
}

void out_file::put_int(int64_t value, size_t width) {
  char tmp[24];
  char *end = tmp + sizeof tmp, *p = end;
  uint64_t u = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  do {
    *--p = static_cast<char>('0' + u % 10);
    u /= 10;
  } while (u != 0);
  if (value < 0) *--p = '-';
  const size_t n = static_cast<size_t>(end - p);
  put(p, n);
  for (size_t i = n; i < width; ++i) put(' ');
}

size_t out_file::put_real(double value) {
  if (plain_g_) {
    make_room(g_max_len + 1);
    const size_t n = format_g(buf_ + len_, value);
    len_ += n;
    return n;
  }
  make_room(64);
  const int n = snprintf(buf_ + len_, cap_ - len_, realfmt_, value);
  if (n < 0) return 0;
  if (static_cast<size_t>(n) < cap_ - len_) {
    len_ += static_cast<size_t>(n);
    return static_cast<size_t>(n);
  }
  char *wide = static_cast<char *>(mdlsl_malloc(static_cast<size_t>(n) + 1));   // a very wide field
  if (wide == nullptr) {
    failed_ = true;
    return 0;
  }
  snprintf(wide, static_cast<size_t>(n) + 1, realfmt_, value);
  put(wide, static_cast<size_t>(n));
  mdlsl_free(wide);
  return static_cast<size_t>(n);
}

void out_file::printf(const char *format, ...) {
  char tmp[1024];
  va_list ap;
  va_start(ap, format);
  const int n = vsnprintf(tmp, sizeof tmp, format, ap);
  va_end(ap);
  if (n < 0) return;
  if (static_cast<size_t>(n) < sizeof tmp) {
    put(tmp, static_cast<size_t>(n));
    return;
  }
  char *wide = static_cast<char *>(mdlsl_malloc(static_cast<size_t>(n) + 1));
  if (wide == nullptr) {
    failed_ = true;
    return;
  }
  va_start(ap, format);
  vsnprintf(wide, static_cast<size_t>(n) + 1, format, ap);
  va_end(ap);
  put(wide, static_cast<size_t>(n));
  mdlsl_free(wide);
}

bool out_file::finish() {
  flush();
  if (fflush(file_) != 0) failed_ = true;
  return !failed_;
}

}  // namespace kvtl
