// cWrapSurface: a surface over memory that its caller owns.
//
// The memory outlives the surface. A layout that no surface has, or 2 GB and more, leaves depth 0 and no pixels: every
// operation then gives false.
#pragma once

#include <cstdint>
#include <span>

#include "gfx2d/surface_impl.h"

namespace vl {

class cWrapSurface final : public cSurfaceImpl {
 public:
  // `dib` begins with a bitmap header, masks and colour table; the pixels follow, or are `bits` when that is not
  // empty. With takePalette the colours of an 8-bit bitmap are interned, else there is no palette. 1-bit and
  // 4-bit bitmaps are not wrapped.
  cWrapSurface(SurfaceLibrary& library, std::span<uint8_t> dib, std::span<uint8_t> bits, bool takePalette);
  // Plain memory of lines `linePitch` bytes apart, top-down; it must hold `lines` of them.
  cWrapSurface(SurfaceLibrary& library, int depth, int pixels, int lines, std::span<uint8_t> memory, int linePitch,
               const PaletteRef& colours);
  int GetKind() const override { return 1; }

 private:
  void Attach(int bits, int pixels, int lines, uint8_t* memory, int lineBytes, bool isBottomUp);
};

}  // namespace vl
