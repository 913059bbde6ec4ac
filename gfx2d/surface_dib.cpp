// Surfaces to and from device-independent bitmaps: DIBSize, SaveToDIB, LoadFromDIB.
#include <algorithm>
#include <cstring>
#include <optional>

#include "gfx2d/dib_header.h"
#include "gfx2d/pixel_format.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_library.h"
#include "gfx2d/wrap_surface.h"

namespace vl {
namespace {

// Packed indices land behind the reserved entries.
constexpr uint32_t kFirstPacked = 10;

// One line of 1 or 4 bits a pixel, the first pixel in the highest bits.
void UnpackLine(const uint8_t* packed, int bits, int pixels, uint8_t* out) {
  const int perByte = 8 / bits;
  const int mask = (1 << bits) - 1;
  for (int x = 0; x < pixels; ++x) {
    const int shift = (perByte - 1 - x % perByte) * bits;
    out[x] = uint8_t((packed[x / perByte] >> shift & mask) + int{kFirstPacked});
  }
}

// The palette of an unpacked bitmap: its colours over those that the surface has.
PaletteRecord UnpackedPalette(const PaletteRecord& under, const DibHeader& header, std::span<const uint8_t> dib) {
  PaletteRecord record = under;
  const PaletteRecord colours = DibPalette(header, dib);
  for (uint32_t i = 0; i < header.colours; ++i) record.entries[kFirstPacked + i] = colours.entries[i];
  record.count = std::max(record.count, uint16_t(kFirstPacked + (1u << header.depth)));
  return record;
}

}  // namespace

size_t cSurface::DIBSize() const {
  const cSurfaceImpl& s = *impl;
  if (!s.Lock()) return 0;
  return DibHeaderBytes(s.depth) + size_t(LineBytes(s.depth, s.width)) * size_t(s.height);
}

bool cSurface::SaveToDIB(std::span<uint8_t> header, std::span<uint8_t> bits, uint32_t flags) {
  const cSurfaceImpl& s = *impl;
  if (!s.Lock()) return false;
  const auto fail = [this](uint32_t error) {
    lastError = error;
    return false;
  };
  const size_t headerBytes = DibHeaderBytes(s.depth);
  if (header.size() < headerBytes) return fail(SURF_ERR_BADDATA);
  if (s.IsDeviceOnly()) return fail(SURF_ERR_UNSUPPORTED);
  WriteDibHeader(s.width, s.height, s.depth, s.palette.Get(), header.first(headerBytes));
  if (flags & kDibHeaderOnly) return true;
  if (bits.empty()) bits = header.subspan(headerBytes);
  const size_t lineBytes = size_t(LineBytes(s.depth, s.width));
  if (bits.size() < lineBytes * size_t(s.height)) return fail(SURF_ERR_BADDATA);
  // What fills a line up to its bound is no pixel, but goes into files.
  const size_t pixelBytes = size_t(s.width) * size_t(s.bytesPerPixel);
  for (size_t at = 0; pixelBytes < lineBytes && at < lineBytes * size_t(s.height); at += lineBytes) {
    std::memset(&bits[at + pixelBytes], 0, lineBytes - pixelBytes);
  }
  cWrapSurface wrap(*s.library, header, bits, false);
  if (!s.Blit(wrap, 0, 0, 0, 0, s.width, s.height, 0, kEffectNone, 0, false)) return fail(SURF_ERR_BADDATA);
  return true;
}

bool cSurface::LoadFromDIB(std::span<const uint8_t> dib, std::span<const uint8_t> bits, uint32_t flags) {
  const auto fail = [this](uint32_t error) {
    lastError = error;
    return false;
  };
  if (!impl->library) return false;
  SurfaceLibrary& library = *impl->library;
  if (dib.size() < DibHeader::kBytes) return fail(SURF_ERR_BADDATA);
  const uint32_t compression = LoadWord<uint32_t>(dib.data() + 16);
  if (compression != 0 && compression != 3) return fail(SURF_ERR_UNSUPPORTED);
  const std::optional<DibHeader> header = ParseDib(dib);
  if (!header) return fail(SURF_ERR_BADDATA);
  if (bits.empty()) bits = dib.subspan(header->bitsOffset);
  if (bits.size() < header->ImageBytes()) return fail(SURF_ERR_BADDATA);

  Scratch unpacked;
  std::optional<cWrapSurface> wrap;
  if (header->depth < 8) {
    const int pitch = LineBytes(8, header->width);
    unpacked = library.Scratches().Take(uint64_t(pitch) * uint64_t(header->height));
    if (!unpacked) return fail(SURF_ERR_NOMEM);
    for (int y = 0; y < header->height; ++y) {
      const int stored = header->bottomUp ? header->height - 1 - y : y;
      UnpackLine(bits.data() + size_t(stored) * header->lineBytes, header->depth, header->width,
                 unpacked.At<uint8_t>(size_t(y) * size_t(pitch)));
    }
    const PaletteRecord under = impl->depth == 8 && impl->palette ? *impl->palette.Get() : DefaultPaletteRecord();
    const PaletteRef palette = library.Palettes().InternPalette(UnpackedPalette(under, *header, dib));
    wrap.emplace(library, 8, header->width, header->height, unpacked.Bytes(), pitch, palette);
  } else {
    // The wrap is only read from.
    const auto writable = [](std::span<const uint8_t> s) {
      return std::span<uint8_t>(const_cast<uint8_t*>(s.data()), s.size());
    };
    wrap.emplace(library, writable(dib), writable(bits), true);
  }
  if (wrap->depth == 0) return fail(SURF_ERR_BADDATA);
  if (wrap->depth == 8 && !wrap->palette) return fail(SURF_ERR_NOMEM);

  const bool hasIndices = wrap->depth == 8 && impl->depth == 8;
  PaletteRef palette = impl->palette;
  std::optional<RemapTable> table;
  if (hasIndices && !(flags & kDibKeepPalette)) {
    palette = wrap->palette;
    if (!(flags & kDibPaletteAsIs)) {
      RemapTable arrangement;
      palette = library.Palettes().ArrangePalette(wrap->palette, arrangement);
      if (!(palette == wrap->palette)) table = arrangement;
    }
  }
  if (wrap->width != impl->width || wrap->height != impl->height) {
    auto made = impl->MakeInstance(wrap->width, wrap->height);
    if (!made) return fail(SURF_ERR_NOMEM);
    Adopt(std::move(made));
  }
  impl->palette = palette;
  if (!wrap->Blit(*impl, 0, 0, 0, 0, wrap->width, wrap->height, 0, kEffectNone, 0, false)) return false;
  if (table) {
    impl->ApplyRemap(*table);
  } else if (hasIndices && (flags & kDibKeepPalette)) {
    impl->RemapFromPalette(*wrap->palette.Get());
  }
  return true;
}

}  // namespace vl
