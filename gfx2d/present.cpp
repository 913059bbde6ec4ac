#include "gfx2d/present.h"

#include <array>

#include "gfx2d/row_kernels.h"

namespace vl {
namespace {

void IndexWords(const cSurfaceImpl& s, const Rect& box, uint32_t* out, int pitchWords) {
  std::array<uint32_t, 256> table;
  for (size_t i = 0; i < table.size(); ++i) table[i] = SwapRedBlue(s.PaletteColor(int(i)));
  for (int y = box.top; y < box.bottom; ++y, out += pitchWords) {
    const uint8_t* line = s.PixelAt(box.left, y);
    for (int x = 0, n = box.Width(); x < n; ++x) out[x] = table[line[x]];
  }
}

}  // namespace

void SurfaceToWords(const cSurfaceImpl& surface, const Rect& box, uint32_t* out, int pitchWords) {
  if (surface.depth == 0) return;
  if (surface.depth == 8) return IndexWords(surface, box, out, pitchWords);
  const RowKernels::Line row = surface.kernels->words[size_t(surface.depthIndex)];
  for (int y = box.top; y < box.bottom; ++y, out += pitchWords) {
    row(surface.PixelAt(box.left, y), reinterpret_cast<uint8_t*>(out), box.Width());
  }
}

bool PresentSurface::Present(WindowSystem& windows, NativeWindow window, const cSurfaceImpl& surface,
                             std::span<const Rect> dirty) {
  if (!surface.Lock()) return false;
  const Rect all = {0, 0, surface.width, surface.height};
  if (surface.width != width_ || surface.height != height_ || words_.empty()) {
    words_.assign(size_t(surface.width) * size_t(surface.height), 0);
    width_ = surface.width;
    height_ = surface.height;
    dirty = std::span<const Rect>(&all, 1);
  }
  for (const Rect& rect : dirty) {
    const Rect box = rect.Intersect(all);
    if (box.IsEmpty()) continue;
    SurfaceToWords(surface, box, words_.data() + ptrdiff_t{box.top} * width_ + box.left, width_);
  }
  windows.present(window, words_.data(), width_, height_, width_, dirty);
  return true;
}

}  // namespace vl
