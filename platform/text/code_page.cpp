#include "platform/text/code_page.h"

namespace vl {
namespace {

constexpr uint16_t kHigh[32] = {0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
                                0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
                                0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

// Takes one character off the front; 0xFFFFFFFF for a broken one, of which one byte is taken.
char32_t TakeUtf8(std::string_view& text) {
  constexpr char32_t kBroken = 0xFFFFFFFF;
  const uint8_t first = uint8_t(text[0]);
  text.remove_prefix(1);
  if (first < 0x80) return first;
  const int more = first >= 0xF0 && first < 0xF8 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
  if (more == 0 || first >= 0xF8 || text.size() < size_t(more)) return kBroken;
  char32_t c = first & (0x3F >> more);
  for (int i = 0; i < more; ++i) {
    const uint8_t next = uint8_t(text[size_t(i)]);
    if ((next & 0xC0) != 0x80) return kBroken;
    c = c << 6 | (next & 0x3F);
  }
  text.remove_prefix(size_t(more));
  return c;
}

}  // namespace

char32_t UnicodeOf1252(uint8_t byte) { return byte >= 0x80 && byte < 0xA0 ? kHigh[byte - 0x80] : byte; }

int Byte1252Of(char32_t c) {
  if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return int(c);
  for (int i = 0; i < 32; ++i) {
    if (kHigh[i] == c) return 0x80 + i;
  }
  return -1;
}

std::string Utf8Of1252(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char byte : text) {
    const char32_t c = UnicodeOf1252(uint8_t(byte));
    if (c < 0x80) {
      out += char(c);
    } else if (c < 0x800) {
      out += char(0xC0 | c >> 6);
      out += char(0x80 | (c & 0x3F));
    } else {
      out += char(0xE0 | c >> 12);
      out += char(0x80 | (c >> 6 & 0x3F));
      out += char(0x80 | (c & 0x3F));
    }
  }
  return out;
}

std::string Text1252OfUtf8(std::string_view utf8) {
  std::string out;
  while (!utf8.empty()) {
    const int byte = Byte1252Of(TakeUtf8(utf8));
    out += byte < 0 ? '?' : char(byte);
  }
  return out;
}

}  // namespace vl
