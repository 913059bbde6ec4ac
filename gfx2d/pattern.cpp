#include "gfx2d/pattern.h"

#include <algorithm>
#include <cstdlib>

namespace vl {

Colour ProtectColour(Colour c) {
  const uint32_t red = RedOf(c);
  const uint32_t green = GreenOf(c);
  const uint32_t blue = BlueOf(c);
  if ((red | green | blue) >= 8) return c;
  if (blue > red && blue > green) return MakeColour(red, green, 8);
  if (green > red && green > blue) return MakeColour(red, 8, blue);
  return MakeColour(8, green, blue);
}

void SolidPattern::Render(cSurfaceImpl& target, int, int, bool protect) const {
  target.Fill(0, 0, target.width, target.height, protect ? ProtectColour(colour_) : colour_);
}

void SolidPattern::RenderBox(cSurfaceImpl& target, int x1, int y1, int x2, int y2, bool protect) const {
  target.Fill(x1, y1, x2 - x1, y2 - y1, protect ? ProtectColour(colour_) : colour_);
}

Point GradientPattern::SetOrigin(int x, int y) {
  const Point old = {originX, originY};
  originX = x;
  originY = y;
  return old;
}

void GradientPattern::Render(cSurfaceImpl& target, int width, int height, bool protect) const {
  RenderBox(target, originX, originY, originX + width, originY + height, protect);
}

void GradientPattern::RenderBox(cSurfaceImpl& target, int x1, int y1, int x2, int y2, bool protect) const {
  const int64_t length = direction == 0 ? int64_t{x2} - x1 : int64_t{y2} - y1;
  if (length <= 0) return;
  double channel[3] = {double(RedOf(color1)), double(GreenOf(color1)), double(BlueOf(color1))};
  const double difference[3] = {double(RedOf(color2)) - channel[0], double(GreenOf(color2)) - channel[1],
                                double(BlueOf(color2)) - channel[2]};
  int bands = 1;
  for (const double d : difference) bands = std::max(bands, int(std::abs(d)));
  for (int64_t i = 0; i < bands; ++i) {
    const int first = int(i * length / bands);
    const int last = int((i + 1) * length / bands);
    if (first != last) {
      const Colour plain = MakeColour(uint32_t(channel[0]), uint32_t(channel[1]), uint32_t(channel[2]));
      const Colour colour = protect ? ProtectColour(plain) : plain;
      if (direction == 0) {
        target.Fill(x1 + first, y1, last - first, y2 - y1, colour);
      } else {
        target.Fill(x1, y1 + first, x2 - x1, last - first, colour);
      }
    }
    // Rounding must not carry a channel past its ends.
    for (int k = 0; k < 3; ++k) channel[k] = std::clamp(channel[k] + difference[k] / bands, 0.0, 255.0);
  }
}

}  // namespace vl
