// Pattern: what a pen or a filling paints: one colour, or a gradient.
//
// Patterns are painted through keyed blits, in which pixel 0 is transparent. So colour 0 is kept as 8, and
// `protect` raises other colours that would come too close to 0.
#pragma once

#include "base/rect.h"
#include "gfx2d/colour.h"
#include "gfx2d/surface.h"

namespace vl {

// A colour whose channels are all below 8 gets one of them raised to 8: the largest, red when none is.
Colour ProtectColour(Colour colour);

class Pattern {
 public:
  virtual ~Pattern() = default;
  // Where the pattern's corner lies in its target; gives the old one.
  virtual Point SetOrigin(int x, int y) = 0;
  // Paints the pattern for a shape of that size at the origin, as far as it falls inside the target.
  virtual void Render(cSurfaceImpl& target, int width, int height, bool protect) const = 0;
  // Paints the pattern for a box of the target, right and bottom excluded.
  virtual void RenderBox(cSurfaceImpl& target, int x1, int y1, int x2, int y2, bool protect) const = 0;
};

class SolidPattern final : public Pattern {
 public:
  explicit SolidPattern(Colour colour) { SetColour(colour); }
  void SetColour(Colour colour) { colour_ = colour == 0 ? 8 : colour; }
  Colour GetColour() const { return colour_; }
  // It looks the same everywhere.
  Point SetOrigin(int, int) override { return {}; }
  // Fills the whole target.
  void Render(cSurfaceImpl& target, int width, int height, bool protect) const override;
  void RenderBox(cSurfaceImpl& target, int x1, int y1, int x2, int y2, bool protect) const override;

 private:
  Colour colour_ = 8;
};

class GradientPattern final : public Pattern {
 public:
  // direction 0 runs left to right, any other top to bottom.
  GradientPattern(Colour first, Colour second, int way) : direction(way) { SetColours(first, second); }
  void SetColours(Colour first, Colour second) {
    color1 = first == 0 ? 8 : first;
    color2 = second == 0 ? 8 : second;
  }
  Point SetOrigin(int x, int y) override;
  void Render(cSurfaceImpl& target, int width, int height, bool protect) const override;
  void RenderBox(cSurfaceImpl& target, int x1, int y1, int x2, int y2, bool protect) const override;

  int originX = 0;
  int originY = 0;
  Colour color1 = 8;
  Colour color2 = 8;
  int direction = 0;
};

}  // namespace vl
