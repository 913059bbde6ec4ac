// Copies through a window of pixels: BlitFilter, and the edge filter that softens what a keyed blit shows.
#include <algorithm>
#include <cstring>

#include "gfx2d/pixel_format.h"
#include "gfx2d/surface_library.h"
#include "gfx2d/wrap_surface.h"

namespace vl {
namespace {

// Rows above, at and below a line, as words with a pixel of 0 on either side of the box and beyond the surface.
class WordRows {
 public:
  // Three rows of `width` and two pixels in `memory`; (left, top) of the surface is pixel (0, 0) of the box.
  WordRows(const cSurfaceImpl& surface, int left, int top, int width, uint32_t* memory)
      : surface_(surface), left_(left - 1), top_(top), pixels_(width + 2), memory_(memory) {
    if (surface.depth == 8) {
      for (size_t i = 0; i < 256; ++i) ofIndex_[i] = SwapRedBlue(surface.PaletteColor(int(i)));
    }
    Load(-1);
    Load(0);
  }
  // Reads the line after y; those before must have been read.
  void Load(int y) {
    uint32_t* out = RowAt(y);
    const int line = top_ + y;
    const int first = std::clamp(-left_, 0, pixels_);
    const int end = std::clamp(surface_.width - left_, first, pixels_);
    if (line < 0 || line >= surface_.height) {
      std::fill_n(out, pixels_, 0u);
      return;
    }
    std::fill_n(out, first, 0u);
    std::fill(out + end, out + pixels_, 0u);
    const uint8_t* source = surface_.PixelAt(left_ + first, line);
    if (surface_.depth == 8) {
      for (int i = first; i < end; ++i) out[i] = ofIndex_[source[i - first]];
    } else {
      surface_.kernels->words[size_t(surface_.depthIndex)](source, reinterpret_cast<uint8_t*>(out + first),
                                                           end - first);
    }
  }
  // Pixel 0 of the box in line y.
  const uint32_t* operator[](int y) const { return memory_ + size_t((y + 3) % 3) * size_t(pixels_) + 1; }

 private:
  uint32_t* RowAt(int y) { return memory_ + size_t((y + 3) % 3) * size_t(pixels_); }

  const cSurfaceImpl& surface_;
  int left_;
  int top_;
  int pixels_;
  uint32_t* memory_;
  std::array<uint32_t, 256> ofIndex_;
};

// The colours around column x of three rows, with the colour that stands for 0.
struct Window {
  std::array<uint32_t, 9> cells;
  Window(const WordRows& rows, int x, int y, uint32_t forZero) {
    for (int i = 0; i < 9; ++i) {
      const uint32_t word = rows[y - 1 + i / 3][x - 1 + i % 3];
      cells[size_t(i)] = word == 0 ? forZero : word;
    }
  }
};

// The mean of a pixel outside the shape and those of its neighbours where the shape is.
uint32_t Soften(const Window& d, const Window& s) {
  uint32_t result = 0;
  for (int shift = 0; shift < 24; shift += 8) {
    const uint32_t centre = d.cells[4] >> shift & 0xFF;
    uint32_t sum = 12 * centre;
    for (size_t i = 0; i < 9; ++i) {
      if (i == 4) continue;
      const uint32_t weight = (i & 1) ? 2 : 1;
      sum += weight * (s.cells[i] != 0 ? d.cells[i] >> shift & 0xFF : centre);
    }
    result |= sum / 24 << shift;
  }
  return result;
}

// Every pixel of the box is written as the colour that it has: bits that no colour holds go, and an index becomes
// the nearest one of its own colour.
class ColourRewriter {
 public:
  ColourRewriter(cSurfaceImpl& surface, Colour forZero)
      : surface_(surface), forZero_(forZero), pixelForZero_(surface.PixelOfColour(forZero)) {
    known_.fill(-1);
  }
  void Row(uint8_t* row, int pixels) {
    switch (surface_.depth) {
      case 8:
        for (int i = 0; i < pixels; ++i) row[i] = OfIndex(row[i]);
        return;
      case 15:
        for (int i = 0; i < pixels; ++i) StoreWord(row + i * 2, uint16_t(LoadWord<uint16_t>(row + i * 2) & 0x7FFF));
        break;
      case 32:
        for (int i = 0; i < pixels; ++i) StoreWord(row + i * 4, LoadWord<uint32_t>(row + i * 4) & kColourMask);
        break;
      default:
        break;
    }
    if (forZero_ != 0) surface_.kernels->replace[size_t(surface_.bytesPerPixel)](row, pixels, 0, pixelForZero_);
  }

 private:
  uint8_t OfIndex(uint8_t index) {
    int16_t& known = known_[index];
    if (known < 0) {
      const Colour colour = surface_.PaletteColor(index);
      const int nearest = surface_.NearestIndex(colour == 0 ? forZero_ : colour);
      // The map may still learn another answer for what it gave 0.
      if (nearest == 0) return 0;
      known = int16_t(nearest);
    }
    return uint8_t(known);
  }

  cSurfaceImpl& surface_;
  Colour forZero_;
  uint32_t pixelForZero_;
  std::array<int16_t, 256> known_;
};

}  // namespace

bool cSurfaceImpl::SoftenEdges(cSurfaceImpl& destination, int dx, int dy, bool hasColour, Colour colour) const {
  BlitBox box;
  if (!ClipBlit(destination, dx, dy, 0, 0, width, height, box)) return false;
  const size_t rowWords = size_t(box.width) + 2;
  const Scratch memory = library->Scratches().Take(rowWords * 6 * sizeof(uint32_t) + size_t(box.width));
  if (!memory) return false;
  WordRows shape(*this, box.sx, box.sy, box.width, memory.At<uint32_t>());
  WordRows around(destination, box.dx, box.dy, box.width, memory.At<uint32_t>() + rowWords * 3);
  uint8_t* const edges = memory.At<uint8_t>(rowWords * 6 * sizeof(uint32_t));
  ColourRewriter rewriter(destination, hasColour ? colour : 0);
  const uint32_t forZero = hasColour ? SwapRedBlue(colour) : 0;
  for (int y = 0; y < box.height; ++y) {
    shape.Load(y + 1);
    around.Load(y + 1);
    kernels->edges(shape[y - 1], shape[y], shape[y + 1], edges, box.width);
    // From left to right, as what a palette's map learns from one pixel may count for the next.
    int done = 0;
    while (const void* found = std::memchr(edges + done, 1, size_t(box.width - done))) {
      const int x = int(static_cast<const uint8_t*>(found) - edges);
      rewriter.Row(destination.PixelAt(box.dx + done, box.dy + y), x - done);
      const uint32_t soft = Soften(Window(around, x, y, forZero), Window(shape, x, y, 0));
      destination.ops->SetPixelColor(destination, box.dx + x, box.dy + y, SwapRedBlue(soft));
      done = x + 1;
      if (done == box.width) break;
    }
    rewriter.Row(destination.PixelAt(box.dx + done, box.dy + y), box.width - done);
  }
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
  const int copyPitch = LineBytes(depth, copyWidth);
  const size_t copyBytes = size_t(copyPitch) * size_t(copyHeight);
  const size_t cells = size_t(window.width) * size_t(window.height);
  const Scratch memory = library->Scratches().Take(copyBytes + 2 * cells * sizeof(Colour));
  if (!memory) return false;
  std::memset(memory.Bytes().data(), 0, copyBytes);
  cWrapSurface copy(*library, depth, copyWidth, copyHeight, memory.Bytes(), copyPitch, destination.palette);
  if (!copy.Lock()) return false;
  destination.Blit(copy, 0, 0, box.dx - window.marginX, box.dy - window.marginY, copyWidth, copyHeight, 0, kEffectNone,
                   0, false);
  Colour* const around = memory.At<Colour>(copyBytes);
  Colour* const shape = around + cells;
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
          around[cell] = colourAt(copy, copyX, copyY);
          const bool isInside = sourceX >= 0 && sourceY >= 0 && sourceX < width && sourceY < height;
          shape[cell] = isInside ? colourAt(*this, sourceX, sourceY) : 0;
        }
      }
      destination.SetPixel(box.dx + x, box.dy + y, f(around, shape, param));
    }
  }
  return true;
}

}  // namespace vl
