// The edges and texts of the classic look, in the system's colours.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/rect.h"
#include "base/system_colors.h"
#include "gfx2d/surface_text.h"

namespace vl::classic {

enum SystemIndex : uint32_t {
  kActiveCaption = 2,
  kWindowColor = 5,
  kWindowText = 8,
  kCaptionText = 9,
  kHighlight = 13,
  kHighlightText = 14,
  kFace = 15,
  kShadow = 16,
  kGreyText = 17,
  kButtonText = 18,
  kLightEdge = 20,
  kDarkShadow = 21,
};

inline void Fill(cSurface& surface, const Rect& box, uint32_t index) {
  if (!box.IsEmpty()) surface.Fill(box.left, box.top, box.Width(), box.Height(), SystemColor(index));
}

// One line around the inside of the box: left and top in one colour, right and bottom in another.
inline void Edge(cSurface& surface, const Rect& box, uint32_t topLeft, uint32_t bottomRight) {
  Fill(surface, {box.left, box.top, box.right, box.top + 1}, topLeft);
  Fill(surface, {box.left, box.top, box.left + 1, box.bottom}, topLeft);
  Fill(surface, {box.left, box.bottom - 1, box.right, box.bottom}, bottomRight);
  Fill(surface, {box.right - 1, box.top, box.right, box.bottom}, bottomRight);
}

inline Rect Inside(const Rect& box, int by) { return {box.left + by, box.top + by, box.right - by, box.bottom - by}; }

inline void Raised(cSurface& surface, const Rect& box) {
  Fill(surface, box, kFace);
  Edge(surface, box, kLightEdge, kDarkShadow);
  Edge(surface, Inside(box, 1), kFace, kShadow);
}

inline void Sunken(cSurface& surface, const Rect& box) {
  Edge(surface, box, kShadow, kLightEdge);
  Edge(surface, Inside(box, 1), kDarkShadow, kFace);
}

inline void Text(cSurface& surface, TextFont& font, std::string_view text, Rect box, uint32_t format, uint32_t index) {
  const TextPaint paint{.colour = TextColour(*surface.impl, SystemColor(index))};
  DrawTextEx(surface, font, text, box, format | kTextNoPrefix, paint, {});
}

}  // namespace vl::classic
