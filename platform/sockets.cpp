#include "platform/sockets.h"

namespace vl {

NetAddress ParseNetAddress(std::string_view text) {
  NetAddress address = 0;
  size_t at = 0;
  for (int part = 0; part < 4; ++part) {
    if (part > 0 && (at >= text.size() || text[at++] != '.')) return 0;
    uint32_t value = 0;
    const size_t start = at;
    while (at < text.size() && at - start < 3 && text[at] >= '0' && text[at] <= '9') {
      value = value * 10 + static_cast<uint32_t>(text[at++] - '0');
    }
    if (at == start || value > 255) return 0;
    address = address << 8 | value;
  }
  return at == text.size() ? address : 0;
}

std::string NetAddressText(NetAddress address) {
  if (address == 0) return {};
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    text += std::to_string(address >> shift & 255);
    if (shift > 0) text += '.';
  }
  return text;
}

}  // namespace vl
