#include "gfx2d/wrap_surface.h"

#include "base/limits.h"
#include "gfx2d/dib_header.h"
#include "gfx2d/pixel_format.h"
#include "gfx2d/surface_library.h"

namespace vl {

void cWrapSurface::Attach(int bits, int pixels, int lines, uint8_t* memory, int lineBytes, bool isBottomUp) {
  SetDepth(bits);
  width = pixels;
  height = lines;
  rawBits = memory;
  absPitch = lineBytes;
  pitch = isBottomUp ? -lineBytes : lineBytes;
  bottomUp = isBottomUp ? -1 : 0;
  topLine = isBottomUp ? memory + ptrdiff_t{lineBytes} * (lines - 1) : memory;
  ResetClipRect();
}

cWrapSurface::cWrapSurface(SurfaceLibrary& owner, std::span<uint8_t> dib, std::span<uint8_t> bits, bool takePalette)
    : cSurfaceImpl(&owner) {
  const std::optional<DibHeader> header = ParseDib(dib);
  if (!header || header->depth < 8) return;
  if (bits.empty()) bits = dib.subspan(header->bitsOffset);
  if (header->ImageBytes() > bits.size() || header->ImageBytes() > INT32_MAX) return;
  Attach(header->depth, header->width, header->height, bits.data(), int(header->lineBytes), header->bottomUp);
  if (depth == 8 && takePalette) palette = owner.Palettes().InternPalette(DibPalette(*header, dib));
}

cWrapSurface::cWrapSurface(SurfaceLibrary& owner, int bits, int pixels, int lines, std::span<uint8_t> memory,
                           int linePitch, const PaletteRef& colours)
    : cSurfaceImpl(&owner) {
  if (bits < 1 || bits > 32 || pixels < 1 || lines < 1 || pixels > limits::kMaxSurfaceSide ||
      lines > limits::kMaxSurfaceSide) {
    return;
  }
  const int depthBytes = (kDepths[DepthIndexOf(bits)] + 7) / 8;
  if (linePitch < pixels * depthBytes || uint64_t(linePitch) * uint64_t(lines) > memory.size() ||
      int64_t{linePitch} * lines > INT32_MAX) {
    return;
  }
  Attach(bits, pixels, lines, memory.data(), linePitch, false);
  if (depth == 8) palette = colours;
}

}  // namespace vl
