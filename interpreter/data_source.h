// What runtime objects of one folder lend to members of another: CPointSource its points, CByteSource its bytes.
//
// What is lent is valid until the script's next statement.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

namespace vl {

// PointArray.
class CPointSource {
 public:
  virtual ~CPointSource() = default;
  // Floats a point, 1 or more.
  virtual int PointDimensions() const = 0;
  // A whole number of points.
  virtual std::span<const float> PointValues() const = 0;
};

// Binary.
class CByteSource {
 public:
  virtual ~CByteSource() = default;
  virtual std::span<const uint8_t> Bytes() const = 0;
  virtual std::span<uint8_t> WritableBytes() = 0;
  // Bytes that come anew are 0. False, and unchanged, when the memory is spent.
  virtual bool ResizeBytes(int64_t size) = 0;
  // Takes over a copy. False when the memory is spent.
  bool SetBytes(std::span<const uint8_t> bytes) {
    if (!ResizeBytes(static_cast<int64_t>(bytes.size()))) return false;
    std::copy(bytes.begin(), bytes.end(), WritableBytes().begin());
    return true;
  }
};

}  // namespace vl
