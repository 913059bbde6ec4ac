// FloodFill: a scan-line seed fill over a fixed stack.
#include <algorithm>
#include <array>
#include <cstdlib>

#include "gfx2d/pixel_format.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_library.h"

namespace vl {
namespace {

struct Span16 {
  int16_t y;
  int16_t left;
  int16_t right;
  int16_t direction;
};

constexpr size_t kStackEntries = 10000;
using FillStack = std::array<Span16, kStackEntries>;

// What the fill asks and does, for one depth.
template <int Depth>
class Filler {
 public:
  using F = PixelFormat<Depth>;

  Filler(cSurfaceImpl& surface, uint32_t pixel, Colour colour, Colour seed, int tolerance)
      : surface_(surface), clip_(surface.GetClipRect()), pixel_(pixel), colour_(colour), tolerance_(tolerance) {
    for (int i = 0; i < 3; ++i) seed_[i] = int(seed >> (8 * i) & 0xFF);
    // Each index is judged once.
    if constexpr (Depth == 8) {
      for (uint32_t i = 0; i < 256; ++i) matches_[i] = Matches(surface.PaletteColor(int(i)));
    }
  }

  bool IsFillable(int x, int y) const {
    if (!clip_.Contains(x, y)) return false;
    const uint32_t pixel = F::Load(surface_.PixelAt(x, y));
    if constexpr (Depth == 8) {
      return matches_[pixel];
    } else {
      return Matches(F::ToColour(pixel));
    }
  }

  Rect Run(FillStack& stack, int seedX, int seedY) {
    size_t used = 0;
    const auto push = [&](int y, int left, int right, int direction) {
      const int next = y + direction;
      if (used == stack.size() || next < clip_.top || next >= clip_.bottom) return;
      stack[used++] = {int16_t(y), int16_t(left), int16_t(right), int16_t(direction)};
    };
    Rect box = {seedX, seedY, seedX, seedY};
    push(seedY, seedX, seedX, 1);
    push(seedY + 1, seedX, seedX, -1);
    while (used > 0) {
      const Span16 span = stack[--used];
      const int direction = span.direction;
      const int y = span.y + direction;
      const int right = span.right;
      int x = span.left;
      while (IsFillable(x, y)) Paint(x--, y);
      int left = x + 1;
      bool painting = left <= span.left;
      if (painting) {
        box = box.Union({left, y, span.left + 1, y + 1});
        if (left < span.left) push(y, left, span.left - 1, -direction);
        x = span.left + 1;
      }
      for (;;) {
        if (painting) {
          while (IsFillable(x, y)) Paint(x++, y);
          box = box.Union({left, y, std::max(x, left), y + 1});
          push(y, left, x - 1, direction);
          if (x > right + 1) push(y, right + 1, x - 1, -direction);
        }
        ++x;
        while (x <= right && !IsFillable(x, y)) ++x;
        if (x > right) break;
        left = x;
        painting = true;
      }
    }
    return box;
  }

 private:
  bool Matches(Colour c) const {
    c &= kColourMask;
    if (c == colour_) return false;
    for (int i = 0; i < 3; ++i) {
      if (std::abs(int(c >> (8 * i) & 0xFF) - seed_[i]) > tolerance_) return false;
    }
    return true;
  }
  void Paint(int x, int y) { F::Store(surface_.PixelAt(x, y), pixel_); }

  cSurfaceImpl& surface_;
  Rect clip_;
  uint32_t pixel_;
  Colour colour_;
  int seed_[3] = {};
  int tolerance_;
  std::array<bool, Depth == 8 ? 256 : 1> matches_{};
};

}  // namespace

bool cSurface::FloodFill(int x, int y, Rect& box, Colour colour, int tolerance) {
  cSurfaceImpl& s = *impl;
  const int seedX = X(x);
  const int seedY = Y(y);
  Colour seed;
  if (!s.GetPixel(seedX, seedY, seed)) return false;
  // The colour as the surface can hold it; a painted pixel must read back as it.
  colour &= s.depth == 15 ? 0xF8F8F8 : s.depth == 16 ? 0xF8FCF8 : kColourMask;
  const uint32_t pixel = s.PixelOfColour(colour);
  const Colour held = s.ColourOfPixel(pixel) & kColourMask;
  if (seed == held) return false;
  const Scratch memory = s.library->Scratches().Take(sizeof(FillStack));
  if (!memory) {
    lastError = SURF_ERR_NOMEM;
    return false;
  }
  const auto run = [&](auto filler) { return filler.Run(*memory.At<FillStack>(), seedX, seedY); };
  switch (s.depth) {
    case 8:
      box = run(Filler<8>(s, pixel, held, seed, tolerance));
      break;
    case 15:
      box = run(Filler<15>(s, pixel, held, seed, tolerance));
      break;
    case 16:
      box = run(Filler<16>(s, pixel, held, seed, tolerance));
      break;
    case 24:
      box = run(Filler<24>(s, pixel, held, seed, tolerance));
      break;
    default:
      box = run(Filler<32>(s, pixel, held, seed, tolerance));
      break;
  }
  box = {int(uint32_t(box.left) + uint32_t(originX)), int(uint32_t(box.top) + uint32_t(originY)),
         int(uint32_t(box.right) + uint32_t(originX)), int(uint32_t(box.bottom) + uint32_t(originY))};
  return true;
}

}  // namespace vl
