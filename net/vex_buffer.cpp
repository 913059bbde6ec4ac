#include "net/vex_buffer.h"

#include <algorithm>

namespace vl {

uint32_t VexBuffer::ReadLittle(size_t at, size_t bytes) const {
  const auto all = Bytes();
  if (at > all.size() || all.size() - at < bytes) return 0;
  uint32_t v = 0;
  for (size_t i = 0; i < bytes; ++i) v |= static_cast<uint32_t>(all[at + i]) << 8 * i;
  return v;
}

std::vector<char> VexBuffer::CopyOut(size_t at, size_t size) const {
  const auto all = Bytes();
  at = std::min(at, all.size());
  const auto range = all.subspan(at, std::min(size, all.size() - at));
  std::vector<char> copy(range.begin(), range.end());
  copy.push_back('\0');
  return copy;
}

void VexBuffer::Erase(size_t at, size_t size) {
  at = std::min(at, Size());
  size = std::min(size, Size() - at);
  if (at > 0) {
    const auto from = data_.begin() + static_cast<ptrdiff_t>(first_ + at);
    data_.erase(from, from + static_cast<ptrdiff_t>(size));
    return;
  }
  first_ += size;
  if (first_ == data_.size()) {
    Clear();
  } else if (first_ >= 4096 && first_ * 2 >= data_.size()) {
    data_.erase(data_.begin(), data_.begin() + static_cast<ptrdiff_t>(first_));
    first_ = 0;
  }
  // What one large message took isn't held for ever.
  if (data_.empty() && data_.capacity() > 65536) data_.shrink_to_fit();
}

}  // namespace vl
