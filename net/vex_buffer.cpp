#include "net/vex_buffer.h"

#include <algorithm>

namespace vl {

namespace {

constexpr size_t kKeptBytes = 65536;
constexpr size_t kLeastBytes = 64;

}  // namespace

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
  if (at == 0) {
    first_ += size;
  } else {
    const auto begin = store_.begin() + static_cast<ptrdiff_t>(first_ + at);
    std::copy(begin + static_cast<ptrdiff_t>(size), store_.begin() + static_cast<ptrdiff_t>(end_), begin);
    end_ -= size;
  }
  if (first_ < end_) return;
  first_ = end_ = 0;
  // What one large message took isn't held for ever.
  if (store_.size() > kKeptBytes) store_ = {};
}

// What was erased in front is used again before the store grows.
void VexBuffer::MakeRoom(size_t size) {
  if (first_ > 0 && first_ >= Size()) {
    std::copy(store_.begin() + static_cast<ptrdiff_t>(first_), store_.begin() + static_cast<ptrdiff_t>(end_),
              store_.begin());
    end_ -= first_;
    first_ = 0;
  }
  if (store_.size() - end_ < size) store_.resize(std::max({end_ + size, 2 * store_.size(), kLeastBytes}));
}

}  // namespace vl
