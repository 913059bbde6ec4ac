// Code page 1252 and UTF-8. Each byte stands for one code point and back: the five that the code page leaves
// open stand for the control characters of their number.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vl {

std::string Utf8FromCodePage(std::string_view bytes);

struct CodePageText {
  std::string bytes;
  bool validUtf8 = true;
  // Offset of the first character that the code page doesn't have, in a valid text.
  std::optional<size_t> unknownAt;
};
CodePageText CodePageFromUtf8(std::string_view text);

// Line and column, from 1, of an offset; columns count characters.
struct TextPosition {
  size_t line = 1;
  size_t column = 1;
};
TextPosition PositionOf(std::string_view utf8, size_t offset);

}  // namespace vl
