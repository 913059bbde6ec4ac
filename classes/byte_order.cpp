#include "classes/byte_order.h"

#include <algorithm>

namespace vl {

void ConvertByteOrder(uint8_t* value, int size, int32_t from, int32_t to) {
  if (from == to) return;
  const bool isPdp = from == kPdpEndian || to == kPdpEndian;
  const bool isLittle = from == kLittleEndian || to == kLittleEndian;
  if (isPdp && size == 2) return;
  // Reversing all bytes goes between big and little, swapping the bytes of each half between big and PDP; both
  // together, between little and PDP.
  if (isLittle) std::reverse(value, value + size);
  if (isPdp) {
    for (int i = 0; i < size; i += 2) std::swap(value[i], value[i + 1]);
  }
}

}  // namespace vl
