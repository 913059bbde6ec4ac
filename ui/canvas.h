// Canvas: drawing on a picture of words 0x00RRGGBB, for what the runtime draws itself: frames, bars, controls.
//
// Colours are the library's (0x00BBGGRR), as system colours are. Everything is cut at the clip box.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "base/rect.h"
#include "gfx2d/surface.h"
#include "platform/text_engine.h"

namespace vl {

// Indexes of the system colours that frames and controls are drawn in.
enum SystemColorIndex : uint32_t {
  kColorScrollBar = 0,
  kColorActiveCaption = 2,
  kColorInactiveCaption = 3,
  kColorWindow = 5,
  kColorWindowFrame = 6,
  kColorCaptionText = 9,
  kColorActiveBorder = 10,
  kColorInactiveBorder = 11,
  kColorButtonFace = 15,
  kColorButtonShadow = 16,
  kColorGreyText = 17,
  kColorButtonText = 18,
  kColorInactiveCaptionText = 19,
  kColorButtonHighlight = 20,
  kColorDarkShadow = 21,
  kColorLight = 22,
};

class Canvas {
 public:
  // The words stay the caller's. `clip` must lie inside the picture.
  Canvas(uint32_t* words, int pitchWords, const Rect& clip) : words_(words), pitch_(pitchWords), clip_(clip) {}

  const Rect& Clip() const { return clip_; }
  void Fill(const Rect& box, uint32_t colour);
  // One pixel wide: left and top in the first colour, right and bottom in the second.
  void Edge(const Rect& box, uint32_t leftTop, uint32_t rightBottom);
  void Outline(const Rect& box, uint32_t colour) { Edge(box, colour, colour); }
  // The frame of a window: two pixels.
  void RaisedFrame(const Rect& box);
  // The frame of a field: two pixels.
  void SunkenFrame(const Rect& box);
  // A push button of the caption or of a scroll bar, filled.
  void PushButton(const Rect& box, bool pressed);
  // Every second pixel in each colour.
  void Checker(const Rect& box, uint32_t even, uint32_t odd);
  // One line, its cell's left top corner at (x, y).
  void Text(TextFont& font, int x, int y, std::string_view text, uint32_t colour);
  // Rows of a small sign: a set bit is a pixel, the highest of `width` bits first.
  void Sign(int x, int y, int width, std::initializer_list<uint32_t> rows, uint32_t colour);
  // A picture in words; `opaque` has a byte a pixel, 0 leaves it out, or is null.
  void Picture(int x, int y, int width, int height, const uint32_t* words, const uint8_t* opaque);
  Canvas Within(const Rect& box) const { return Canvas(words_, pitch_, clip_.Intersect(box)); }

 private:
  uint32_t* Line(int y) { return words_ + static_cast<ptrdiff_t>(y) * pitch_; }

  uint32_t* words_;
  int pitch_;
  Rect clip_;
};

}  // namespace vl
