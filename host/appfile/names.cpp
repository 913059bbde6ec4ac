#include "host/appfile/names.h"

#include <vector>

namespace vl {

uint8_t FoldByte(uint8_t c) {
  const bool letter = (c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7);
  return letter ? c | 0x20 : c;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (FoldByte(static_cast<uint8_t>(a[i])) != FoldByte(static_cast<uint8_t>(b[i]))) return false;
  }
  return true;
}

uint32_t HashName(std::string_view name) {
  uint32_t sum = 0;
  for (const char c : name) sum += static_cast<uint8_t>(c) & 0xDFu;
  return sum;
}

bool ConfineName(std::string_view name, std::string* relative) {
  if (name.empty() || name[0] == '/' || name[0] == '\\') return false;
  std::vector<std::string_view> parts;
  size_t at = 0;
  while (at <= name.size()) {
    size_t end = name.find_first_of("/\\", at);
    if (end == std::string_view::npos) end = name.size();
    const std::string_view part = name.substr(at, end - at);
    at = end + 1;
    for (const char c : part) {
      if (c == ':' || static_cast<uint8_t>(c) < 0x20) return false;
    }
    if (part.empty() || part == ".") continue;
    if (part == "..") {
      if (parts.empty()) return false;
      parts.pop_back();
    } else {
      parts.push_back(part);
    }
  }
  if (parts.empty()) return false;
  relative->clear();
  for (const std::string_view part : parts) {
    if (!relative->empty()) *relative += '/';
    *relative += part;
  }
  return true;
}

std::string_view DirectoryOf(std::string_view path) {
  const size_t slash = path.find_last_of("/\\");
  return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash + 1);
}

}  // namespace vl
