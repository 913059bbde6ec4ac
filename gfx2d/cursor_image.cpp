#include "gfx2d/cursor_image.h"

#include <algorithm>

#include "gfx2d/present.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_library.h"

namespace vl {

std::optional<CursorImage> cSurface::MakeCursor(int width, int height, Colour maskColour,
                                                const std::optional<Point>& hotSpot) const {
  const cSurfaceImpl& s = *impl;
  if (width <= 0) width = CursorImage::kSystemSide;
  if (height <= 0) height = CursorImage::kSystemSide;
  if (!s.Lock() || width > CursorImage::kMaxSide || height > CursorImage::kMaxSide) return std::nullopt;
  cSurface image;
  if (!image.Create(width, height, s.library->FindPrototype(24))) return std::nullopt;
  image.Fill(0, 0, width, height, maskColour);
  Size size = {s.width, s.height};
  if (size.width > width || size.height > height) {
    // To the side that has less room.
    if (height * 256 / s.height < width * 256 / s.width) {
      size = {std::max(int(int64_t{s.width} * height / s.height), 1), height};
    } else {
      size = {width, std::max(int(int64_t{s.height} * width / s.width), 1)};
    }
  }
  s.StretchBlit(*image.impl, (width - size.width) / 2, (height - size.height) / 2, size.width, size.height, 0, 0,
                s.width, s.height, 0, kEffectNone, 0, false);

  CursorImage cursor;
  cursor.width = width;
  cursor.height = height;
  cursor.isIcon = !hotSpot;
  if (hotSpot) {
    cursor.hotX = hotSpot->x;
    cursor.hotY = hotSpot->y;
  }
  cursor.words.resize(size_t(width) * size_t(height));
  SurfaceToWords(*image.impl, {0, 0, width, height}, cursor.words.data(), width);
  cursor.mask.resize(size_t(cursor.MaskPitch()) * size_t(height));
  const uint32_t masked = SwapRedBlue(maskColour & kColourMask);
  for (int y = 0; y < height; ++y) {
    uint8_t* line = cursor.mask.data() + size_t(y) * size_t(cursor.MaskPitch());
    for (int x = 0; x < width; ++x) {
      if (cursor.words[size_t(y) * size_t(width) + size_t(x)] == masked) line[x / 8] |= uint8_t(0x80 >> x % 8);
    }
  }
  return cursor;
}

}  // namespace vl
