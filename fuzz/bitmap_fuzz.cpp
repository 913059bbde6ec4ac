// Loads arbitrary bytes as a bitmap into surfaces of every depth and saves what came of it.
//
// The first byte has the depth index in bits 0 to 2 and the flags of loading from bit 3 on; the second says where the
// header ends and the pixels begin, 0 for pixels behind the header.
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "gfx2d/pixel_format.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_library.h"

namespace {

using namespace vl;

void Require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const int depth = kDepths[(data[0] & 7) % 5];
  const uint32_t flags = data[0] >> 3;
  const std::span<const uint8_t> dib(data + 2, size - 2);
  const size_t split = std::min<size_t>(data[1], dib.size());
  MemoryBudget budget(8u << 20);
  {
    SurfaceLibrary library(&budget);
    cSurface surface;
    Require(surface.Create(3, 2, library.FindPrototype(depth)));
    const bool loaded = split == 0 ? surface.LoadFromDIB(dib, {}, flags)
                                   : surface.LoadFromDIB(dib.first(split), dib.subspan(split), flags);
    Require(loaded == (surface.lastError == 0));
    Require(surface.impl->depth == depth);
    if (!loaded) return 0;
    surface.MakeCursor(16, 16, 0xFF00FF, Point{1, 1});
    // What is saved loads as the same picture.
    std::vector<uint8_t> saved(surface.DIBSize());
    Require(surface.SaveToDIB(saved, {}, 0));
    cSurface back;
    if (!back.Create(1, 1, surface.impl.get()) || !back.LoadFromDIB(saved, {}, kDibPaletteAsIs)) return 0;
    std::vector<uint8_t> again(back.DIBSize());
    Require(back.SaveToDIB(again, {}, 0));
    Require(saved == again);
  }
  Require(budget.Used() == 0);
  return 0;
}
