/*
 * outbuf.h -- buffered text output of the writers: one large buffer per
 * file, real numbers in the problem's format, write errors remembered.
 */
#ifndef KVTL_IO_OUTBUF_H
#define KVTL_IO_OUTBUF_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "kvtl.h"

namespace kvtl {

class out_file {
 public:
  // Writes to `file` (not owned) with `realfmt` for real numbers.  The
  // buffer comes from the allocator hooks; without memory a small built-in
  // buffer is used instead, so construction cannot fail.
  out_file(FILE *file, const char *realfmt);
  ~out_file();
  out_file(const out_file &) = delete;
  out_file &operator=(const out_file &) = delete;

  void put(const char *text, size_t n) {
    if (n > cap_ - len_) {
      put_long(text, n);
      return;
    }
    memcpy(buf_ + len_, text, n);
    len_ += n;
  }
  void put(const char *text) { put(text, strlen(text)); }
  void put(char c) {
    if (len_ == cap_) flush();
    buf_[len_++] = c;
  }
  // Left-justified in at least `width` characters (printf's "%-*s").
  void put_padded(const char *text, size_t width);
  // A decimal integer, left-justified in at least `width` characters.
  void put_int(int64_t value, size_t width = 0);
  // A real number in the format; returns the number of characters.
  size_t put_real(double value);
  // Formatted text (printf rules).
  void printf(const char *format, ...) __attribute__((format(printf, 2, 3)));

  // Write out what is buffered; false when any write so far failed.
  bool finish();

 private:
  void flush();
  void put_long(const char *text, size_t n);
  void make_room(size_t n) {
    if (cap_ - len_ < n) flush();
  }

  FILE *file_;
  const char *realfmt_;
  bool plain_g_;
  bool failed_ = false;
  char *buf_;
  size_t cap_;
  size_t len_ = 0;
  char small_[4096];
};

// The name written for an entity: its own, or its generated name in `buf`.
inline const char *entity_name(const char *name, const void *handle, char (&buf)[24]) {
  return name != nullptr ? name : mdlmktn(buf, handle);
}

}  // namespace kvtl

#endif
