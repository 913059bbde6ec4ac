#include "gfx2d/images/load_image.h"

#include <algorithm>
#include <new>

#include "gfx2d/images/image_reader.h"

namespace vl {
namespace {

// The mask goes to the caller, who counts it no further; still it must fit.
bool MakeMask(std::vector<uint8_t>& mask, MemoryBudget& budget, size_t bytes) {
  if (!budget.Take(bytes)) return false;
  budget.Return(bytes);
  try {
    mask.assign(bytes, 255);
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

}  // namespace

bool LoadImageIntoSurface(const ImageFilterList& filters, SurfaceLibrary& library, cSurface& holder, CStream& stream,
                          uint32_t flags, std::vector<uint8_t>* mask) {
  if (mask) mask->clear();
  ImageReader reader(filters);
  if (reader.OpenStream(&stream)) return false;
  const int width = reader.GetWidth();
  const int height = reader.GetHeight();
  if (width < 1 || height < 1) return false;

  std::unique_ptr<cSurfaceImpl> made;
  if (holder.impl->depth != reader.GetDepth() && !(flags & kLoadKeepDepth)) {
    const cSurfaceImpl* prototype =
        library.FindPrototype(std::max(reader.GetDepth(), 8), holder.GetKindGroup(), holder.GetFamily());
    if (prototype) made = prototype->MakeInstance(width, height);
    if (!made) return false;
  } else if (holder.impl->width != width || holder.impl->height != height) {
    made = holder.impl->MakeInstance(width, height);
    if (!made) return false;
  }
  if (made) holder.Adopt(std::move(made));
  cSurfaceImpl& surface = *holder.impl;

  const PaletteRecord* target = nullptr;
  if (surface.depth == 8) {
    if (flags & kLoadKeepPalette) {
      target = surface.palette.Get();
    } else if (const PaletteRecord* palette = reader.GetPalette()) {
      surface.SetPaletteRecord(*palette, false);
    }
    // A picture without a palette of its own comes in the surface's colours.
    if (!target && !reader.GetPalette()) target = surface.palette.Get();
  }
  std::vector<uint8_t> alpha;
  if (mask && reader.HasAlpha() && !MakeMask(alpha, library.Budget(), size_t(width) * size_t(height))) return false;
  if (!surface.Lock()) return false;
  const ImageError error = reader.Read(
      {surface.topLine, width, height, surface.pitch, surface.depth, target, alpha.empty() ? nullptr : alpha.data()});
  surface.Unlock();
  if (error) return false;
  if (mask) *mask = std::move(alpha);
  return true;
}

}  // namespace vl
