#include "gfx2d/present.h"

#include <array>

#include "gfx2d/pixel_format.h"

namespace vl {
namespace {

template <int Depth>
void Words(const cSurfaceImpl& s, const Rect& box, uint32_t* out, int pitchWords) {
  using F = PixelFormat<Depth>;
  for (int y = box.top; y < box.bottom; ++y, out += pitchWords) {
    const uint8_t* line = s.PixelAt(box.left, y);
    for (int x = 0, n = box.Width(); x < n; ++x) {
      const uint32_t p = F::Load(line + x * F::kBytes);
      if constexpr (Depth == 15) {
        out[x] = (p & 0x7C00) << 9 | (p & 0x3E0) << 6 | (p & 0x1F) << 3;
      } else if constexpr (Depth == 16) {
        out[x] = (p & 0xF800) << 8 | (p & 0x7E0) << 5 | (p & 0x1F) << 3;
      } else {
        out[x] = p & 0xFFFFFF;
      }
    }
  }
}

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
  switch (surface.depth) {
    case 8:
      IndexWords(surface, box, out, pitchWords);
      break;
    case 15:
      Words<15>(surface, box, out, pitchWords);
      break;
    case 16:
      Words<16>(surface, box, out, pitchWords);
      break;
    case 24:
      Words<24>(surface, box, out, pitchWords);
      break;
    case 32:
      Words<32>(surface, box, out, pitchWords);
      break;
    default:
      break;
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
