/*
 * datafile.cpp -- the data file reader: finds a data line, follows its
 * continuation lines and converts its fields into the caller's variables
 * (one conversion each) or into an array (one kind of value).
 */
#include <stdarg.h>
#include <stdlib.h>

#include "core/runtime.h"
#include "io/datafields.h"
#include "kvtl.h"

namespace kvtl {

namespace {

// Lines up to this length are read into a buffer on the stack.
constexpr size_t stack_buffer_size = 512;
constexpr int shortest_line = 80;

// The line buffer of one call and the application's line reader.  The
// buffer has room for the line, its newline and a terminator, plus one
// byte that stays 0 whatever the reader does with the others.
class line_reader {
 public:
  line_reader(MDLreadfn fn, void *handle, int maxlen) : fn_(fn), handle_(handle) {
    int64_t length = maxlen > shortest_line ? maxlen : shortest_line;
    int64_t size = length + 2;
    size_ = size < INT32_MAX ? static_cast<int>(size) : INT32_MAX - 1;
    size_t bytes = static_cast<size_t>(size_) + 1;
    if (bytes <= sizeof stack_) {
      buffer_ = stack_;
    } else {
      free_ = mdlsl_free ? mdlsl_free : free;
      buffer_ = static_cast<char *>((mdlsl_malloc ? mdlsl_malloc : malloc)(bytes));
    }
    if (buffer_ != nullptr) buffer_[size_] = '\0';
  }
  ~line_reader() {
    if (buffer_ != stack_ && buffer_ != nullptr) free_(buffer_);
  }
  line_reader(const line_reader &) = delete;
  line_reader &operator=(const line_reader &) = delete;

  const char *text() const { return buffer_; }

  // Read the next line into the buffer; false at end of input.
  bool next() {
    buffer_[0] = '\0';
    if (fn_(buffer_, size_, handle_) == nullptr) return false;
    buffer_[size_] = '\0';
    return true;
  }

  // Read lines until one holds data: not empty once blanks are skipped and
  // not a comment.  False at end of input or when no buffer could be had.
  bool find_data_line() {
    if (buffer_ == nullptr || fn_ == nullptr) return false;
    for (;;) {
      if (!next()) return false;
      const char *p = skip_blanks(buffer_);
      if (*p != '\0' && *p != '!') return true;
    }
  }

 private:
  MDLreadfn fn_;
  void *handle_;
  int size_;
  char *buffer_ = nullptr;
  void (*free_)(void *) = nullptr;
  char stack_[stack_buffer_size];
};

// Where a scan stands in the line; skips blanks and follows continuation
// lines.  Returns false when the input ends inside a continuation.
bool skip_to_field(line_reader &reader, const char *&p) {
  for (;;) {
    p = skip_blanks(p);
    if (*p != '&') return true;
    if (!reader.next()) return false;
    p = reader.text();
  }
}

bool at_line_end(const char *p) { return *p == '\0' || *p == '!'; }

// The caller's next pointer, read with the type of the conversion.
void *next_target(const conversion &conv, va_list *ap) {
  switch (conv.kind) {
    case field_kind::integer: return va_arg(*ap, int32_t *);
    case field_kind::real: return va_arg(*ap, double *);
    case field_kind::text: return va_arg(*ap, char *);
    case field_kind::unknown: break;
  }
  return nullptr;
}

// Element i of an array of conv's kind (for texts: the i-th buffer).
void *element_target(const conversion &conv, void *array, int i) {
  switch (conv.kind) {
    case field_kind::integer: return static_cast<int32_t *>(array) + i;
    case field_kind::real: return static_cast<double *>(array) + i;
    case field_kind::text: return static_cast<char **>(array)[i];
    case field_kind::unknown: break;
  }
  return nullptr;
}

// Store the empty value of a conversion (0 or an empty text); a null
// target is skipped.
void store_empty(const conversion &conv, void *target) {
  if (target == nullptr) return;
  switch (conv.kind) {
    case field_kind::integer: *static_cast<int32_t *>(target) = 0; break;
    case field_kind::real: *static_cast<double *>(target) = 0; break;
    case field_kind::text: *static_cast<char *>(target) = '\0'; break;
    case field_kind::unknown: break;
  }
}

// Convert the field at p for conv and store it into target (skipped when
// null).  Returns the position after the field, or null when the field does
// not match (nothing is stored then).  A number of which nothing could be
// read is 0 when the field's separator stands there.
const char *convert_field(const char *p, const conversion &conv, char decsign, void *target) {
  const bool at_separator = conv.separator != 0 && *p == conv.separator;
  switch (conv.kind) {
    case field_kind::integer: {
      int32_t v;
      const char *q = scan_integer(p, v);
      if (q == p && !at_separator) return nullptr;
      if (target != nullptr) *static_cast<int32_t *>(target) = v;
      return q;
    }
    case field_kind::real: {
      double v;
      const char *q = scan_real(p, decsign, v);
      if (q == p && !at_separator) return nullptr;
      if (target != nullptr) *static_cast<double *>(target) = v;
      return q;
    }
    case field_kind::text: {
      text_span span = scan_text(p, conv);
      if (!span.matched) return nullptr;
      if (target != nullptr) store_text(static_cast<char *>(target), span, conv.width);
      return span.end;
    }
    case field_kind::unknown:
      break;
  }
  return nullptr;
}

// Scan one data line against a format: the result of mdlreadline.
int read_fields(line_reader &reader, const char *fmt, va_list *ap) {
  if (fmt == nullptr || !format_is_valid(fmt)) return -2;
  if (!reader.find_data_line()) return -1;
  const char decsign = context()->decsign;
  const char *p = reader.text();
  int count = 0;
  char awaited = 0;  // separator that must come next
  conversion conv;
  for (;;) {
    if (!skip_to_field(reader, p)) return count;
    if (at_line_end(p)) {
      // A line short of its last fields gives the next one an empty value,
      // so that "1,2," and "1 2" against three conversions read three.
      if (*fmt != '\0' && awaited == 0 && count > 0) {
        next_conversion(fmt, conv);
        store_empty(conv, next_target(conv, ap));
        ++count;
      }
      return count;
    }
    if (awaited != 0) {
      if (*p != awaited || *fmt == '\0') return count;
      ++p;
      awaited = 0;
      continue;
    }
    if (*fmt == '\0') return count;
    fmt = next_conversion(fmt, conv);
    awaited = conv.separator;
    p = convert_field(p, conv, decsign, next_target(conv, ap));
    if (p == nullptr) return count;
    ++count;
    if (*fmt == '\0') return count;
  }
}

// Scan one data line of values of one kind into an array: the result of
// mdlreadarrline.  A line that ends right after a separator gives one more
// empty element, as the end rule of read_fields does.
int read_array(line_reader &reader, const char *fmt, void *array, int n) {
  if (n < 1 || fmt == nullptr || *fmt == '\0' || array == nullptr) return -2;
  conversion conv;
  next_conversion(fmt, conv);
  if (conv.kind == field_kind::unknown) return -2;
  if (!reader.find_data_line()) return -1;
  const char decsign = context()->decsign;
  const char *p = reader.text();
  int count = 0;
  bool after_separator = false;
  for (;;) {
    if (!skip_to_field(reader, p)) return count;
    if (at_line_end(p)) {
      if (after_separator) store_empty(conv, element_target(conv, array, count++));
      return count;
    }
    if (conv.separator != 0 && count > 0 && !after_separator) {
      if (*p != conv.separator) return count;
      ++p;
      after_separator = true;
      continue;
    }
    p = convert_field(p, conv, decsign, element_target(conv, array, count));
    if (p == nullptr) return count;
    after_separator = false;
    if (++count == n) return count;
  }
}

// The standard line reader for streams.
char *stream_line(char *buffer, int size, void *stream) {
  if (stream == nullptr) return nullptr;
  return fgets(buffer, size, static_cast<FILE *>(stream));
}

}  // namespace

}  // namespace kvtl

using namespace kvtl;

// Read and convert one data line from a stream.
KVTL_API int mdlreadline(FILE *stream, int maxlen, const char *format, ...) {
  line_reader reader(stream_line, stream, maxlen);
  va_list ap;
  va_start(ap, format);
  int result = read_fields(reader, format, &ap);
  va_end(ap);
  return result;
}

// Read and convert one data line from the application's line reader.
KVTL_API int mdlreadlinecb(MDLreadfn readfn, void *handle, int maxlen, const char *format, ...) {
  line_reader reader(readfn, handle, maxlen);
  va_list ap;
  va_start(ap, format);
  int result = read_fields(reader, format, &ap);
  va_end(ap);
  return result;
}

// Read one data line of values into an array from a stream.
KVTL_API int mdlreadarrline(FILE *stream, int maxlen, const char *format, void *array, int n) {
  line_reader reader(stream_line, stream, maxlen);
  return read_array(reader, format, array, n);
}

// Read one data line of values into an array from the application's reader.
KVTL_API int mdlreadarrlinecb(MDLreadfn readfn, void *handle, int maxlen, const char *format,
                              void *array, int n) {
  line_reader reader(readfn, handle, maxlen);
  return read_array(reader, format, array, n);
}
