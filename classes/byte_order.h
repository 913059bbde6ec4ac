// Byte orders of stored numbers: big, little, and PDP's (little-endian 16-bit halves, the high half first).
#pragma once

#include <cstdint>

namespace vl {

enum ByteOrder : int32_t { kBigEndian = 1, kLittleEndian = 2, kPdpEndian = 3 };

// Of this machine; pixel and file formats rely on it.
inline constexpr int32_t kMachineOrder = kLittleEndian;

// Converts a value of 2, 4 or 8 bytes in place; each rule is its own inverse. PDP's 16-bit values stay as they are.
void ConvertByteOrder(uint8_t* value, int size, int32_t from, int32_t to);

}  // namespace vl
