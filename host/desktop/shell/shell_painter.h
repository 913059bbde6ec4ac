// ShellPainter: boxes, lines and texts in the classic look, as pixels to lay over a window.
#pragma once

#include <memory>
#include <string_view>

#include "base/memory_budget.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_library.h"
#include "gfx2d/surface_text.h"
#include "platform/sdl/sdl_windows.h"
#include "platform/text_engine.h"

namespace vl {

namespace shell_colours {
inline constexpr Colour kFace = MakeColour(212, 208, 200);
inline constexpr Colour kLight = MakeColour(255, 255, 255);
inline constexpr Colour kShadow = MakeColour(128, 128, 128);
inline constexpr Colour kDark = MakeColour(64, 64, 64);
inline constexpr Colour kText = MakeColour(1, 1, 1);
inline constexpr Colour kDisabled = MakeColour(128, 128, 128);
inline constexpr Colour kMarked = MakeColour(10, 36, 106);
inline constexpr Colour kMarkedText = MakeColour(255, 255, 255);
}  // namespace shell_colours

class ShellPainter {
 public:
  // `text` outlives the painter and is used by its thread only.
  explicit ShellPainter(TextEngine& text);

  int LineHeight() const { return lineHeight_; }
  // Texts are code page 1252 here.
  int WidthOf(std::string_view text) const;
  // Height of a text wrapped at a width.
  int HeightOf(std::string_view text, int width) const;

  // Begins a picture of that size, filled with the face's colour.
  bool Begin(int width, int height);
  void Fill(const Rect& box, Colour colour);
  // A frame of two pixels inside the box, raised or sunken.
  void Edge(const Rect& box, bool raised);
  void Text(std::string_view text, const Rect& box, Colour colour, uint32_t format);
  void Button(const Rect& box, std::string_view label, bool isFocused);
  // The picture, for a place in the window.
  WindowOverlay Finish(int x, int y);

 private:
  MemoryBudget budget_;
  SurfaceLibrary library_;
  std::shared_ptr<TextFont> font_;
  int lineHeight_ = 0;
  cSurface surface_;
  int width_ = 0;
  int height_ = 0;
};

}  // namespace vl
