// ImageInput: the bytes of a stream one by one, for formats that are read so. It reads ahead, up to 4096 bytes.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "host/appfile/stream.h"

namespace vl {

class ImageInput {
 public:
  // Reads at most `length` bytes from the stream's position.
  explicit ImageInput(CStream& stream, int64_t length = INT64_MAX) : stream_(stream), left_(length) {}

  bool Next(uint8_t& value) {
    if (at_ == fill_ && !Fill()) return false;
    value = buffer_[at_++];
    return true;
  }
  bool NextWord(uint16_t& value) {
    uint8_t low = 0;
    uint8_t high = 0;
    if (!Next(low) || !Next(high)) return false;
    value = uint16_t(low | high << 8);
    return true;
  }
  // All of `size` bytes, or false.
  bool Read(uint8_t* to, size_t size) {
    while (size > 0) {
      if (at_ == fill_ && !Fill()) return false;
      const size_t count = std::min(size, fill_ - at_);
      std::memcpy(to, buffer_.data() + at_, count);
      at_ += count;
      to += count;
      size -= count;
    }
    return true;
  }
  bool Skip(size_t size) {
    while (size > 0) {
      if (at_ == fill_ && !Fill()) return false;
      const size_t count = std::min(size, fill_ - at_);
      at_ += count;
      size -= count;
    }
    return true;
  }

 private:
  bool Fill() {
    uint32_t read = 0;
    const auto want = uint32_t(std::min<int64_t>(left_, int64_t(buffer_.size())));
    if (want == 0) return false;
    stream_.ReadSome(buffer_.data(), want, &read);
    left_ -= read;
    at_ = 0;
    fill_ = read;
    return read > 0;
  }

  CStream& stream_;
  int64_t left_;
  size_t at_ = 0;
  size_t fill_ = 0;
  std::array<uint8_t, 4096> buffer_;
};

}  // namespace vl
