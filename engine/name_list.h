/*
 * name_list.h -- the names of one kind of object of a loaded problem (rows,
 * columns or sets), held in one text buffer with an offset per object.
 */
#ifndef KVSL_NAME_LIST_H
#define KVSL_NAME_LIST_H

#include <cstdint>
#include <vector>

namespace kvsl {

// One zero-ended text per object, "" until a name is given.  A problem
// loaded without names holds nothing but the count, and a named one one
// offset per object beside the texts themselves (a string object per name
// would cost four times the text of a short name).
class name_list {
 public:
  // count objects, none named.
  void reset(int count);
  int size() const { return count_; }
  // Bytes of the text buffer, dead texts included.
  uint64_t text_bytes() const { return text_.size(); }
  // Name of object k (0 <= k < size()); "" when it has none.
  const char *get(int k) const;
  // Give objects first..last the zero-ended texts that follow each other in
  // names.  Either every name is set or (on std::bad_alloc) none is.
  void set(int first, int last, const char *names);

 private:
  int count_ = 0;
  std::vector<uint64_t> offset_;   // per object into text_; empty: no names
  std::vector<char> text_;         // text_[0] is the empty name
  uint64_t live_ = 0;              // bytes of text_ that current names use
};

}  // namespace kvsl

#endif
