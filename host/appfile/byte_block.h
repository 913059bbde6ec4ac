// ByteBlock: a block of bytes of fixed size with a 0 behind it, whose making can fail without an exception.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <utility>

namespace vl {

class ByteBlock {
 public:
  // Zeroed. False, and empty, when there is no memory.
  bool Allocate(uint32_t size) {
    Clear();
    data_.reset(new (std::nothrow) uint8_t[size_t{size} + 1]());
    if (!data_) return false;
    size_ = size;
    return true;
  }
  void Clear() {
    data_.reset();
    size_ = 0;
  }

  // False until a block was made, also one of 0 bytes.
  explicit operator bool() const { return data_ != nullptr; }
  uint8_t* Data() { return data_.get(); }
  const uint8_t* Data() const { return data_.get(); }
  uint32_t Size() const { return size_; }
  std::span<const uint8_t> Bytes() const { return {data_.get(), size_}; }
  std::string_view View() const { return {reinterpret_cast<const char*>(data_.get()), size_}; }

 private:
  std::unique_ptr<uint8_t[]> data_;
  uint32_t size_ = 0;
};

}  // namespace vl
