#include "tools/project/code_page.h"

#include <algorithm>
#include <cstdint>

namespace vl {

namespace {

constexpr uint16_t kHigh[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
                                0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
                                0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void AppendUtf8(std::string* out, uint32_t c) {
  if (c < 0x80) {
    *out += static_cast<char>(c);
  } else if (c < 0x800) {
    *out += static_cast<char>(0xC0 | c >> 6);
    *out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    *out += static_cast<char>(0xE0 | c >> 12);
    *out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
    *out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

// Takes one character off the front. False when the bytes aren't UTF-8.
bool TakeCharacter(std::string_view* text, uint32_t* c) {
  const auto byte = [&](size_t i) { return static_cast<uint8_t>((*text)[i]); };
  const uint8_t first = byte(0);
  const size_t length = first < 0x80   ? 1
                        : first < 0xC2 ? 0
                        : first < 0xE0 ? 2
                        : first < 0xF0 ? 3
                        : first < 0xF5 ? 4
                                       : 0;
  if (length == 0 || text->size() < length) return false;
  uint32_t value = length == 1 ? first : first & (0x7Fu >> length);
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return false;
    value = value << 6 | (byte(i) & 0x3Fu);
  }
  if (length == 3 && (value < 0x800 || (value >= 0xD800 && value < 0xE000))) return false;
  if (length == 4 && (value < 0x10000 || value > 0x10FFFF)) return false;
  text->remove_prefix(length);
  *c = value;
  return true;
}

}  // namespace

std::string Utf8FromCodePage(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (const char ch : bytes) {
    const auto b = static_cast<uint8_t>(ch);
    AppendUtf8(&out, b >= 0x80 && b < 0xA0 ? kHigh[b - 0x80] : b);
  }
  return out;
}

CodePageText CodePageFromUtf8(std::string_view text) {
  CodePageText result;
  const size_t size = text.size();
  result.bytes.reserve(size);
  while (!text.empty()) {
    const size_t at = size - text.size();
    uint32_t c = 0;
    if (!TakeCharacter(&text, &c)) {
      result.validUtf8 = false;
      return result;
    }
    if (c < 0x80 || (c >= 0xA0 && c < 0x100)) {
      result.bytes += static_cast<char>(c);
      continue;
    }
    const auto* found = std::find(std::begin(kHigh), std::end(kHigh), c);
    if (found == std::end(kHigh)) {
      if (!result.unknownAt) result.unknownAt = at;
    } else {
      result.bytes += static_cast<char>(0x80 + (found - std::begin(kHigh)));
    }
  }
  return result;
}

TextPosition PositionOf(std::string_view utf8, size_t offset) {
  TextPosition position;
  for (size_t i = 0; i < std::min(offset, utf8.size()); ++i) {
    if (utf8[i] == '\n') {
      ++position.line;
      position.column = 1;
    } else if ((static_cast<uint8_t>(utf8[i]) & 0xC0) != 0x80) {
      ++position.column;
    }
  }
  return position;
}

}  // namespace vl
