// Text on surfaces: one line on a baseline, and lines laid out in a rectangle.
//
// Texts are code page 1252. Glyphs have no soft edges: a pixel gets the colour or stays.
#pragma once

#include <cstdint>
#include <string_view>

#include "gfx2d/surface.h"
#include "platform/text_engine.h"

namespace vl {

// How text is brought onto the surface: a DrawEffect with its parameter, and softened edges.
struct TextPaint {
  Colour colour = 0;
  int effect = 0;
  uint32_t param = 0;
  bool antiAlias = false;
  Pattern* pattern = nullptr;  // in place of the colour; it spans the clip rectangle or box that is drawn in
};

// Format bits of DrawTextEx, with the values that programs and controls pass.
enum TextFormat : uint32_t {
  kTextLeft = 0,
  kTextCentre = 0x1,
  kTextRight = 0x2,
  kTextVerticalCentre = 0x4,  // single line only, as is kTextBottom
  kTextBottom = 0x8,
  kTextWordBreak = 0x10,
  kTextSingleLine = 0x20,
  kTextExpandTabs = 0x40,
  kTextTabStop = 0x80,  // tabs by TextMargins::tabLength, else 8
  kTextNoClip = 0x100,
  kTextCalculate = 0x400,
  kTextNoPrefix = 0x800,  // without it, & underlines the next character and && is one &
  kTextEditControl = 0x2000,
};

// In average character widths.
struct TextMargins {
  int left = 0;
  int right = 0;
  int tabLength = 8;
};

// The colour that keeps black text apart from the transparent pixel: 0 becomes 8, on depth 8 the palette's
// darkest colour.
Colour TextColour(const cSurfaceImpl& surface, Colour colour);

// What of the line lies at DrawText's point, with the values that callers pass: one of each group.
enum TextAlignment : uint32_t {
  kAlignLeft = 0,
  kAlignRight = 0x2,
  kAlignCentre = 0x6,
  kAlignTop = 0,
  kAlignBottom = 0x8,
  kAlignBaseline = 0x18,
};

// Draws one line at (x, y), inside `clip` (handle coordinates, right and bottom exclusive) and the surface's own clip
// rectangle. Without effect and anti-aliasing the colour goes in as it is, 0 included.
bool DrawText(cSurface& surface, TextFont& font, std::string_view text, int x, int y, uint32_t alignment,
              const Rect& clip, const TextPaint& paint);

// Lays text out in `rect` and draws it there; gives the height of the text, 0 when nothing was done. With
// kTextCalculate nothing is drawn and `rect` becomes the box of the text.
int DrawTextEx(cSurface& surface, TextFont& font, std::string_view text, Rect& rect, uint32_t format,
               const TextPaint& paint, const TextMargins& margins);

// Height of the text and, in `rect`, its box, as kTextCalculate; for callers without a surface.
int MeasureTextEx(TextFont& font, std::string_view text, Rect& rect, uint32_t format, const TextMargins& margins);

}  // namespace vl
