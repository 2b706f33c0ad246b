/*
 * name_list.cpp -- names of rows, columns or sets in one text buffer: set
 * in ranges, read by index, the buffer compacted when renamed objects have
 * left more dead text than live.
 */
#include "name_list.h"

#include <algorithm>
#include <cstring>

namespace kvsl {

// count objects, none named; the memory of earlier names is given back.
void name_list::reset(int count) {
  std::vector<uint64_t>().swap(offset_);
  std::vector<char>().swap(text_);
  count_ = count;
  live_ = 0;
}

// Name of object k; offset 0 is the empty name at the start of the buffer.
const char *name_list::get(int k) const {
  if (offset_.empty()) return "";
  return text_.data() + offset_[k];
}

// The new texts are appended as one block, as the caller laid them out
// (an empty name takes its zero byte there too); the texts they replace
// become dead.  When the dead text outweighs the live text and the offsets
// together (what a rebuild reads), the buffer is rebuilt from the live
// names first: renaming the same objects again and again keeps the buffer
// within about twice what the names need, and the rebuilds cost no more
// than the renames did.  Everything that can fail (the new buffer, or room
// in the old one) comes before the list changes.
void name_list::set(int first, int last, const char *names) {
  if (last < first) return;
  const char *end = names;
  for (int k = first; k <= last; ++k) end += std::strlen(end) + 1;
  const size_t added = static_cast<size_t>(end - names);
  uint64_t replaced = 0;
  if (!offset_.empty())
    for (int k = first; k <= last; ++k)
      if (offset_[k] != 0) replaced += std::strlen(text_.data() + offset_[k]) + 1;
  const uint64_t kept = live_ - replaced;
  const uint64_t dead = text_.empty() ? 0 : text_.size() - 1 - kept;
  if (offset_.empty() || dead > kept + static_cast<uint64_t>(count_)) {
    // A fresh buffer: the kept names of the other objects, then the new ones.
    std::vector<uint64_t> offset(static_cast<size_t>(count_), 0);
    std::vector<char> text;
    text.reserve(static_cast<size_t>(1 + kept) + added);
    text.push_back('\0');
    for (int k = 0; k < static_cast<int>(offset_.size()); ++k) {
      if ((k >= first && k <= last) || offset_[k] == 0) continue;
      const char *old = text_.data() + offset_[k];
      offset[k] = text.size();
      text.insert(text.end(), old, old + std::strlen(old) + 1);
    }
    offset_.swap(offset);
    text_.swap(text);
  } else if (text_.capacity() - text_.size() < added) {
    // Room for the new texts, grown geometrically so that naming objects a
    // few at a time stays linear; after this nothing below allocates.
    text_.reserve(std::max(text_.size() + added, 2 * text_.capacity()));
  }
  uint64_t at = text_.size();
  text_.insert(text_.end(), names, end);
  for (int k = first; k <= last; ++k) {
    offset_[k] = at;
    at += std::strlen(text_.data() + at) + 1;
  }
  live_ = kept + added;
}

}  // namespace kvsl
