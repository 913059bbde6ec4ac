// The frame that the runtime draws around a window: its measures, where its parts lie, and its picture.
//
// Boxes are relative to the window's left top corner, frame included. Everything follows from the style words.
#pragma once

#include <string_view>

#include "base/rect.h"
#include "ui/canvas.h"
#include "ui/messages.h"

namespace vl {

inline constexpr int kScrollBarWidth = 16;
inline constexpr int kMinimizedWidth = 160;
// The smallest size to which a person can drag a window with a caption.
inline constexpr Size kMinimumTrack = {112, 27};

// Widths of the frame; the bars of a window lie inside of it.
Rect FrameBorders(uint32_t style, uint32_t exStyle, bool hasMenu);

// What of a window's state its frame shows.
struct FrameLook {
  uint32_t style = 0;
  uint32_t exStyle = 0;
  bool active = false;
  bool maximized = false;
  bool minimized = false;
  bool closeEnabled = true;
  uint32_t pressedBox = 0;  // HitCode of the box that is held down, or 0
  std::string_view title;
  const uint32_t* icon = nullptr;  // 16 x 16 words, or null for the plain one
  const uint8_t* iconOpaque = nullptr;
  TextFont* font = nullptr;  // of the caption; null leaves the title out
};

inline bool HasCaption(uint32_t style) { return (style & WS_CAPTION) == WS_CAPTION; }
// The caption's bar, without the line under it.
Rect CaptionBox(uint32_t style, uint32_t exStyle, Size outer);
// The box of HTCLOSE, HTMINBUTTON or HTMAXBUTTON; empty when the window has none.
Rect CaptionButton(uint32_t style, uint32_t exStyle, Size outer, uint32_t hit);
// Which part of the frame lies at a point; HTCLIENT inside of it.
uint32_t HitTestFrame(uint32_t style, uint32_t exStyle, Size outer, Point at);
// Draws the frame, not what is inside.
void DrawWindowFrame(Canvas& canvas, Size outer, const FrameLook& look);

}  // namespace vl
