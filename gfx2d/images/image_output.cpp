#include "gfx2d/images/image_output.h"

#include <algorithm>
#include <cstring>

namespace vl {

bool ImageOutput::Write(const void* bytes, size_t size) {
  const auto* from = static_cast<const uint8_t*>(bytes);
  while (size > 0 && !failed_) {
    const size_t count = std::min(size, kBufferBytes - fill_);
    std::memcpy(buffer_.data() + fill_, from, count);
    fill_ += count;
    from += count;
    size -= count;
    if (fill_ == kBufferBytes) Flush();
  }
  return !failed_;
}

bool ImageOutput::WriteWord(uint32_t v) {
  const uint8_t b[2] = {uint8_t(v), uint8_t(v >> 8)};
  return Write(b, sizeof b);
}

bool ImageOutput::WriteDword(uint32_t v) {
  const uint8_t b[4] = {uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)};
  return Write(b, sizeof b);
}

bool ImageOutput::WriteZeros(size_t count) {
  static constexpr uint8_t kZeros[64] = {};
  for (; count > sizeof kZeros; count -= sizeof kZeros) Write(kZeros, sizeof kZeros);
  return Write(kZeros, count);
}

bool ImageOutput::Seek(int64_t position) {
  Flush();
  if (!failed_ && !file_->seek(position)) failed_ = true;
  position_ = position;
  return !failed_;
}

bool ImageOutput::Flush() {
  if (!file_) failed_ = true;
  if (!failed_ && fill_ > 0 && file_->write(buffer_.data(), fill_) != fill_) failed_ = true;
  position_ += int64_t(fill_);
  fill_ = 0;
  return !failed_;
}

bool ImageOutput::Commit() { return Flush(); }

}  // namespace vl
