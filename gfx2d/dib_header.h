// DibHeader: the 40-byte header of a device-independent bitmap, and where its parts lie.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "gfx2d/palette.h"

namespace vl {

struct DibHeader {
  static constexpr size_t kBytes = 40;

  int32_t biWidth = 0;
  int32_t biHeight = 0;  // above 0: the lines lie bottom-up
  uint16_t biPlanes = 1;
  uint16_t biBitCount = 0;
  uint32_t biCompression = 0;  // 0 plain, 3 with masks
  uint32_t biSizeImage = 0;
  uint32_t biClrUsed = 0;

  // What the header means for a surface; worked out by ParseDib.
  int depth = 0;   // 8, 15, 16, 24, 32; 1 and 4 for packed indices
  int width = 0;   // pixels
  int height = 0;  // lines
  bool bottomUp = true;
  uint32_t colours = 0;    // entries of the colour table
  size_t tableOffset = 0;  // of the colour table
  size_t bitsOffset = 0;   // of the pixels, when they follow
  size_t lineBytes = 0;
  uint64_t ImageBytes() const { return uint64_t{lineBytes} * uint64_t(height); }
};

// Reads a header with its masks and colour table. Nothing when the layout is none that surfaces have, or the
// bytes end before the colour table does. The pixels are not looked at.
std::optional<DibHeader> ParseDib(std::span<const uint8_t> bytes);

// Bytes of a header of ours with its masks or colour table.
size_t DibHeaderBytes(int depth);
// Writes one of exactly that size, for bottom-up lines; the palette is that of depth 8.
void WriteDibHeader(int width, int height, int depth, const PaletteRecord* palette, std::span<uint8_t> out);

// The colour table; entries past it are black.
PaletteRecord DibPalette(const DibHeader& header, std::span<const uint8_t> bytes);

}  // namespace vl
