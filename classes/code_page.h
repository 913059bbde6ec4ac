// Case in code page 1252, as the period's C library folds it in the "C" locale's sister for English: the
// letters A to Z and the accented Latin-1 letters.
#pragma once

#include <string>
#include <string_view>

namespace vl {

inline char LowerCase(char c) {
  const auto u = static_cast<unsigned char>(c);
  if ((u >= 'A' && u <= 'Z') || (u >= 0xC0 && u <= 0xDE && u != 0xD7)) return static_cast<char>(u + 0x20);
  switch (u) {
    case 0x8A:
    case 0x8C:
    case 0x8E:
      return static_cast<char>(u + 0x10);
    case 0x9F:
      return static_cast<char>(0xFF);
    default:
      return c;
  }
}

inline char UpperCase(char c) {
  const auto u = static_cast<unsigned char>(c);
  if ((u >= 'a' && u <= 'z') || (u >= 0xE0 && u <= 0xFE && u != 0xF7)) return static_cast<char>(u - 0x20);
  switch (u) {
    case 0x9A:
    case 0x9C:
    case 0x9E:
      return static_cast<char>(u - 0x10);
    case 0xFF:
      return static_cast<char>(0x9F);
    default:
      return c;
  }
}

// Below 0, 0 or above 0, by the lower-case bytes.
inline int CompareIgnoringCase(std::string_view a, std::string_view b) {
  const size_t n = a.size() < b.size() ? a.size() : b.size();
  for (size_t i = 0; i < n; ++i) {
    const int d = static_cast<unsigned char>(LowerCase(a[i])) - static_cast<unsigned char>(LowerCase(b[i]));
    if (d) return d;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

}  // namespace vl
