// What the targets of picture files share: any bytes as a file of one format, read in every way.
//
// The first byte picks the format of the target: bits 0 to 2 its depth, bit 3 its line order, bit 4 reading from a
// file in place of memory. The rest is the picture file.
#pragma once

#include <cstdlib>
#include <memory>
#include <vector>

#include "gfx2d/images/image_reader.h"
#include "platform/memory_files.h"

namespace vl::fuzz {

inline void Require(bool condition) {
  if (!condition) std::abort();
}

// Larger pictures are opened but not read: that would only cost time.
inline constexpr int64_t kMostPixels = 1 << 16;
inline constexpr int kMostFrames = 12;

inline PaletteRecord SomePalette() {
  PaletteRecord palette;
  for (size_t i = 0; i < 256; ++i) palette.entries[i] = {uint8_t(i * 7), uint8_t(i * 3 + 1), uint8_t(255 - i), 0};
  return palette;
}

inline void ReadEverything(ImageReader& reader, int depth, bool bottomUp) {
  const int64_t pixels = int64_t{reader.GetWidth()} * reader.GetHeight();
  Require(pixels >= 1 && reader.GetDepth() >= 8 && reader.GetDepth() <= 32);
  if (pixels > kMostPixels) return;
  const int bytesPerPixel = ((depth ? depth : reader.GetDepth()) + 1) / 8;
  const int pitch = reader.GetWidth() * bytesPerPixel;
  // Exactly what the picture needs, so that a byte too many is found.
  const std::unique_ptr<uint8_t[]> bits(new uint8_t[size_t(pixels) * size_t(bytesPerPixel)]());
  const std::unique_ptr<uint8_t[]> mask(new uint8_t[size_t(pixels)]());
  static const PaletteRecord palette = SomePalette();
  ImageTarget target{bits.get(), reader.GetWidth(), reader.GetHeight(), pitch, depth, &palette, mask.get()};
  if (bottomUp) {
    target.bits += ptrdiff_t{pitch} * (reader.GetHeight() - 1);
    target.pitch = -pitch;
  }
  for (int i = 0; i < kMostFrames; ++i) {
    if (reader.Read(target)) break;
    Rect box;
    reader.GetFrameBox(box);
    Require(box.left >= 0 && box.top >= 0 && box.right <= reader.GetWidth() && box.bottom <= reader.GetHeight());
    reader.GetFrameTime(reader.GetCurrentFrame());
  }
  if (reader.IsAnimation()) {
    reader.SeekFrame(2, target);
    reader.SeekFrame(0, target);
    reader.Rewind();
    reader.Read(target);
  }
  uint8_t sum = 0;
  for (const uint8_t b : reader.GetUserData()) sum ^= b;
  bits[0] = sum;
}

inline int ReadAs(uint32_t filterId, const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  static constexpr int kTargets[8] = {0, 8, 15, 16, 24, 32, 0, 32};
  const int depth = kTargets[data[0] & 7];
  MemoryBudget budget(64 << 20);
  {
    const ImageFilterList filters(&budget);
    MemoryFileSystem files;
    ImageReader reader(filters);
    CMemoryStream stream(data + 1, uint32_t(size - 1));
    ImageError error = kImageOk;
    if (data[0] & 0x10) {
      files.Add("picture", std::span(data + 1, size - 1));
      error = reader.OpenFile(files, "picture", filterId);
    } else {
      error = reader.OpenStream(&stream, filterId);
    }
    if (!error) ReadEverything(reader, depth, (data[0] & 8) != 0);
  }
  Require(budget.Used() == 0);
  return 0;
}

}  // namespace vl::fuzz
