// Text layout: cuts a text into lines and the lines into pieces between tabs.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "gfx2d/surface_text.h"

namespace vl {

// Lines behind these are left out: no surface is high enough to show them.
inline constexpr size_t kMaxTextLines = 1 << 16;

struct TextPiece {
  std::string text;
  int x;  // from the start of the line, pixels
};

struct TextLine {
  std::vector<TextPiece> pieces;
  int width = 0;
  // Where the prefixed character stands, from the start of the line; width 0 for none.
  int underlineX = 0;
  int underlineWidth = 0;
};

// `width` is the room for a line with kTextWordBreak; 0 or less breaks at every word.
std::vector<TextLine> LayOutText(TextFont& font, std::string_view text, int width, uint32_t format,
                                 const TextMargins& margins);

}  // namespace vl
