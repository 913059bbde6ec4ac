// Copies of boxes: Blit, MoveBox, BlitCallback.
#include <algorithm>
#include <cstring>
#include <functional>
#include <utility>

#include "gfx2d/pixel_format.h"
#include "gfx2d/surface_library.h"
#include "gfx2d/wrap_surface.h"

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

bool cSurfaceImpl::SharesPixels(const cSurfaceImpl& destination, const Rect& from, const Rect& to) const {
  if (topLine == destination.topLine && pitch == destination.pitch && depth == destination.depth) {
    return !from.Intersect(to).IsEmpty();
  }
  struct Span {
    const uint8_t* first;
    const uint8_t* end;
  };
  const auto span = [](const cSurfaceImpl& s, const Rect& box) {
    const uint8_t* top = s.PixelAt(box.left, box.top);
    const uint8_t* bottom = s.PixelAt(box.left, box.bottom - 1);
    if (s.pitch < 0) std::swap(top, bottom);
    return Span{top, bottom + ptrdiff_t{box.Width()} * s.bytesPerPixel};
  };
  const Span ours = span(*this, from);
  const Span theirs = span(destination, to);
  return std::less<>()(ours.first, theirs.end) && std::less<>()(theirs.first, ours.end);
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
  const bool isConverted = depth != destination.depth;
  const bool isPlain = mode == 0 && effect == kEffectNone && !antiAlias;
  // Softening goes over the whole source.
  const Rect read =
      antiAlias ? Rect{0, 0, width, height} : Rect{box.sx, box.sy, box.sx + box.width, box.sy + box.height};
  const Rect written = antiAlias ? Rect{0, 0, destination.width, destination.height}
                                 : Rect{box.dx, box.dy, box.dx + box.width, box.dy + box.height};
  if (SharesPixels(destination, read, written)) {
    // The destination shows what the source was before.
    const bool needsAll = antiAlias && !isConverted;
    const BlitBox all =
        needsAll ? BlitBox{0, 0, 0, 0, width, height} : BlitBox{0, 0, box.sx, box.sy, box.width, box.height};
    const int copyPitch = LineBytes(depth, all.width);
    const Scratch memory = library->Scratches().Take(uint64_t(copyPitch) * uint64_t(all.height));
    if (!memory) return false;
    const cWrapSurface copy(*library, depth, all.width, all.height, memory.Bytes(), copyPitch, palette);
    ops->CopyPlain(copy, *this, all);
    if (needsAll) return copy.Blit(destination, dx, dy, sx, sy, boxWidth, boxHeight, mode, effect, param, antiAlias);
    return copy.Blit(destination, box.dx, box.dy, 0, 0, box.width, box.height, mode, effect, param, antiAlias);
  }
  if (isConverted) {
    if (isPlain) {
      ops->ConvertFrom(destination, *this, box);
      return true;
    }
    const int pitchThere = LineBytes(destination.depth, box.width);
    const Scratch memory = library->Scratches().Take(uint64_t(pitchThere) * uint64_t(box.height));
    if (!memory) return false;
    const cWrapSurface converted(*library, destination.depth, box.width, box.height, memory.Bytes(), pitchThere,
                                 destination.palette);
    ops->ConvertFrom(converted, *this, {0, 0, box.sx, box.sy, box.width, box.height});
    return converted.Blit(destination, box.dx, box.dy, 0, 0, box.width, box.height, mode, effect, param, antiAlias);
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
    const Colour colour = effect == kEffectBlendColour ? param & kColourMask : 0;
    SoftenEdges(destination, dx, dy, colour != 0, colour);
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

}  // namespace vl
