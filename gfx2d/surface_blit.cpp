// Copies of boxes: Blit, MoveBox, BlitCallback, BlitFilter.
#include <algorithm>
#include <cstring>
#include <vector>

#include "gfx2d/surface_impl.h"

namespace vl {
namespace {

// One axis of the clipping, in 64 bits, as callers pass anything.
struct Axis {
  int64_t destination;
  int64_t source;
  int64_t length;

  void Clip(int64_t sourceLength, int64_t clipFirst, int64_t clipLast) {
    if (source < 0) {
      length += source;
      destination -= source;
      source = 0;
    }
    length = std::min(length, sourceLength - source);
    if (destination < clipFirst) {
      const int64_t cut = clipFirst - destination;
      source += cut;
      length -= cut;
      destination = clipFirst;
    }
    length = std::min(length, clipLast - destination);
  }
};

// Softens a pixel outside the drawn shape that has neighbours of the shape on a straight line.
Colour EdgeFilter(const Colour* d, const Colour* s, uint32_t) {
  const Colour c = d[4];
  if (s[4] != 0 || (s[1] == 0 && s[7] == 0) || (s[3] == 0 && s[5] == 0)) return c;
  Colour result = 0;
  for (int shift = 0; shift < 24; shift += 8) {
    const uint32_t centre = c >> shift & 0xFF;
    uint32_t sum = 12 * centre;
    for (int i = 0; i < 9; ++i) {
      if (i == 4) continue;
      const uint32_t weight = (i & 1) ? 2 : 1;
      sum += weight * (s[i] != 0 ? d[i] >> shift & 0xFF : centre);
    }
    result |= sum / 24 << shift;
  }
  return result;
}

// The same where pixels of value 0 have the colour `param`.
Colour EdgeFilterColour(const Colour* d, const Colour* s, uint32_t param) {
  Colour window[9];
  for (int i = 0; i < 9; ++i) window[i] = d[i] == 0 ? param : d[i];
  return EdgeFilter(window, s, 0);
}

}  // namespace

bool cSurfaceImpl::ClipBlit(const cSurfaceImpl& destination, int dx, int dy, int sx, int sy, int boxWidth,
                            int boxHeight, BlitBox& box) const {
  Axis x = {dx, sx, boxWidth};
  Axis y = {dy, sy, boxHeight};
  x.Clip(width, destination.clipLeft, destination.clipRight);
  y.Clip(height, destination.clipTop, destination.clipBottom);
  if (x.length <= 0 || y.length <= 0) return false;
  box = {int(x.destination), int(y.destination), int(x.source), int(y.source), int(x.length), int(y.length)};
  return true;
}

bool cSurfaceImpl::Blit(cSurfaceImpl& destination, int dx, int dy, int sx, int sy, int boxWidth, int boxHeight,
                        int mode, int effect, uint32_t param, bool antiAlias) const {
  if (mode < 0 || mode > 1 || effect < 0 || effect > 9) return false;
  if (effect == kEffectRaster) {
    if (param != kRasterCopy) return false;
    effect = kEffectNone;
  }
  if (!Lock() || !destination.Lock()) return false;
  BlitBox box;
  if (!ClipBlit(destination, dx, dy, sx, sy, boxWidth, boxHeight, box)) return false;
  if (depth != destination.depth) {
    if (mode == 0 && effect == kEffectNone && !antiAlias) {
      ops->ConvertFrom(destination, *this, box);
      return true;
    }
    const auto converted = destination.MakeInstance(box.width, box.height);
    if (!converted) return false;
    ops->ConvertFrom(*converted, *this, {0, 0, box.sx, box.sy, box.width, box.height});
    return converted->Blit(destination, box.dx, box.dy, 0, 0, box.width, box.height, mode, effect, param, antiAlias);
  }
  if (depth == 8 && (effect == kEffectBlend || effect == kEffectBlendColour) &&
      !(destination.palette && destination.palette->EnsureInverseMap())) {
    return false;
  }
  if (effect == kEffectNone) {
    (mode == 1 ? ops->CopyKeyed : ops->CopyPlain)(destination, *this, box);
  } else {
    (mode == 1 ? ops->EffectKeyed : ops->EffectPlain)(destination, *this, box, effect, param);
  }
  if (antiAlias) {
    const bool hasColour = effect == kEffectBlendColour && (param & kColourMask) != 0;
    BlitFilter(destination, dx, dy, 0, 0, width, height, FilterWindow{}, hasColour ? EdgeFilterColour : EdgeFilter,
               param & kColourMask);
  }
  return true;
}

bool cSurfaceImpl::MoveBox(int sx, int sy, int dx, int dy, int boxWidth, int boxHeight) {
  const auto inside = [&](int x, int y) {
    return x >= 0 && y >= 0 && int64_t{x} + boxWidth <= width && int64_t{y} + boxHeight <= height;
  };
  if (!Lock() || boxWidth <= 0 || boxHeight <= 0 || !inside(sx, sy) || !inside(dx, dy)) return false;
  const size_t bytes = size_t(boxWidth) * size_t(bytesPerPixel);
  for (int i = 0; i < boxHeight; ++i) {
    const int y = dy > sy ? boxHeight - 1 - i : i;
    std::memmove(PixelAt(dx, dy + y), PixelAt(sx, sy + y), bytes);
  }
  return true;
}

bool cSurfaceImpl::BlitCallback(cSurfaceImpl& destination, int dx, int dy, int sx, int sy, int boxWidth, int boxHeight,
                                int mode, PixelCallback f, void* param) const {
  BlitBox box;
  if (mode < 0 || mode > 1 || !f || !Lock() || !destination.Lock() || depth != destination.depth ||
      !ClipBlit(destination, dx, dy, sx, sy, boxWidth, boxHeight, box)) {
    return false;
  }
  if (depth == 8 && !(destination.palette && destination.palette->EnsureInverseMap())) return false;
  (mode == 1 ? ops->CallbackKeyed : ops->CallbackPlain)(destination, *this, box, f, param);
  return true;
}

bool cSurfaceImpl::BlitFilter(cSurfaceImpl& destination, int dx, int dy, int sx, int sy, int boxWidth, int boxHeight,
                              const FilterWindow& window, WindowFilter f, uint32_t param) const {
  constexpr int kMaxWindow = 64;
  const auto outside = [](int value) { return value < 0 || value > kMaxWindow; };
  BlitBox box;
  if (!f || window.width < 1 || window.height < 1 || outside(window.width) || outside(window.height) ||
      outside(window.marginX) || outside(window.marginY) || outside(window.centreX) || outside(window.centreY) ||
      !Lock() || !destination.Lock() || depth != destination.depth ||
      !ClipBlit(destination, dx, dy, sx, sy, boxWidth, boxHeight, box)) {
    return false;
  }
  // The filter reads what was there before it wrote.
  const int copyWidth = box.width + window.width + 2 * window.marginX;
  const int copyHeight = box.height + window.height + 2 * window.marginY;
  const auto copy = destination.MakeInstance(copyWidth, copyHeight);
  if (!copy) return false;
  destination.Blit(*copy, 0, 0, box.dx - window.marginX, box.dy - window.marginY, copyWidth, copyHeight, 0, kEffectNone,
                   0, false);
  const size_t cells = size_t(window.width) * size_t(window.height);
  std::vector<Colour> around(cells);
  std::vector<Colour> shape(cells);
  const auto colourAt = [](const cSurfaceImpl& s, int x, int y) {
    const uint32_t value = s.ops->GetPixelColor(s, x, y);
    return s.depth == 8 ? s.PaletteColor(int(value)) : value;
  };
  for (int y = 0; y < box.height; ++y) {
    for (int x = 0; x < box.width; ++x) {
      size_t cell = 0;
      for (int wy = 0; wy < window.height; ++wy) {
        const int copyY = std::clamp(y + window.marginY - window.centreY + wy, 0, copyHeight - 1);
        const int sourceY = box.sy + y - window.centreY + wy;
        for (int wx = 0; wx < window.width; ++wx, ++cell) {
          const int copyX = std::clamp(x + window.marginX - window.centreX + wx, 0, copyWidth - 1);
          const int sourceX = box.sx + x - window.centreX + wx;
          around[cell] = colourAt(*copy, copyX, copyY);
          const bool isInside = sourceX >= 0 && sourceY >= 0 && sourceX < width && sourceY < height;
          shape[cell] = isInside ? colourAt(*this, sourceX, sourceY) : 0;
        }
      }
      destination.SetPixel(box.dx + x, box.dy + y, f(around.data(), shape.data(), param));
    }
  }
  return true;
}

}  // namespace vl
