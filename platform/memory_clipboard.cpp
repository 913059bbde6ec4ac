#include "platform/memory_clipboard.h"

namespace vl {

std::optional<std::vector<uint8_t>> MemoryClipboard::get(std::string_view format) {
  const auto it = content_.find(format);
  if (it == content_.end()) return std::nullopt;
  return it->second;
}

bool MemoryClipboard::put(std::string_view format, std::span<const uint8_t> bytes) {
  if (bytes.size() > kMaxBytes) return false;
  content_[std::string(format)].assign(bytes.begin(), bytes.end());
  return true;
}

}  // namespace vl
