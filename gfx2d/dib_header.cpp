#include "gfx2d/dib_header.h"

#include <algorithm>
#include <cstring>

#include "base/limits.h"
#include "gfx2d/pixel_format.h"

namespace vl {
namespace {

// Bytes behind the header that hold the masks of compression 3.
constexpr size_t kMaskBytes = 12;

// The depth that three masks mean, 0 when none.
int DepthOfMasks(int bits, uint32_t red, uint32_t green, uint32_t blue) {
  if (bits == 16 && red == 0x7C00 && green == 0x3E0 && blue == 0x1F) return 15;
  if (bits == 16 && red == 0xF800 && green == 0x7E0 && blue == 0x1F) return 16;
  if (bits == 32 && red == 0xFF0000 && green == 0xFF00 && blue == 0xFF) return 32;
  return 0;
}

}  // namespace

std::optional<DibHeader> ParseDib(std::span<const uint8_t> bytes) {
  if (bytes.size() < DibHeader::kBytes) return std::nullopt;
  const uint8_t* p = bytes.data();
  const uint32_t headerBytes = LoadWord<uint32_t>(p);
  DibHeader h;
  h.biWidth = LoadWord<int32_t>(p + 4);
  h.biHeight = LoadWord<int32_t>(p + 8);
  h.biPlanes = LoadWord<uint16_t>(p + 12);
  h.biBitCount = LoadWord<uint16_t>(p + 14);
  h.biCompression = LoadWord<uint32_t>(p + 16);
  h.biSizeImage = LoadWord<uint32_t>(p + 20);
  h.biClrUsed = LoadWord<uint32_t>(p + 32);
  if (headerBytes < DibHeader::kBytes || headerBytes > bytes.size()) return std::nullopt;
  if (h.biCompression != 0 && h.biCompression != 3) return std::nullopt;
  h.bottomUp = h.biHeight > 0;
  const int64_t height = h.biHeight > 0 ? int64_t{h.biHeight} : -int64_t{h.biHeight};
  if (h.biWidth < 1 || height < 1 || h.biWidth > limits::kMaxSurfaceSide || height > limits::kMaxSurfaceSide) {
    return std::nullopt;
  }
  h.width = h.biWidth;
  h.height = int(height);
  size_t offset = headerBytes;
  if (h.biCompression == 3) {
    // The masks lie behind a plain header; a longer one holds them itself, at the same place.
    if (bytes.size() < DibHeader::kBytes + kMaskBytes) return std::nullopt;
    const uint8_t* masks = p + DibHeader::kBytes;
    h.depth = DepthOfMasks(h.biBitCount, LoadWord<uint32_t>(masks), LoadWord<uint32_t>(masks + 4),
                           LoadWord<uint32_t>(masks + 8));
    offset = std::max(offset, DibHeader::kBytes + kMaskBytes);
  } else {
    switch (h.biBitCount) {
      case 1:
      case 4:
      case 8:
      case 24:
      case 32:
        h.depth = h.biBitCount;
        break;
      case 16:
        h.depth = 15;
        break;
      default:
        break;
    }
  }
  if (h.depth == 0) return std::nullopt;
  if (h.depth <= 8) h.colours = h.biClrUsed == 0 ? 1u << h.depth : std::min(h.biClrUsed, 1u << h.depth);
  h.tableOffset = offset;
  if (bytes.size() - offset < size_t{h.colours} * 4) return std::nullopt;
  h.bitsOffset = offset + size_t{h.colours} * 4;
  h.lineBytes = size_t(LineBytes(h.depth, h.width));
  return h;
}

size_t DibHeaderBytes(int depth) {
  if (depth <= 8) return DibHeader::kBytes + (size_t{4} << depth);
  return DibHeader::kBytes + (depth == 16 ? kMaskBytes : 0);
}

void WriteDibHeader(int width, int height, int depth, const PaletteRecord* palette, std::span<uint8_t> out) {
  uint8_t* p = out.data();
  std::memset(p, 0, out.size());
  StoreWord(p, uint32_t{DibHeader::kBytes});
  StoreWord(p + 4, int32_t{width});
  StoreWord(p + 8, int32_t{height});
  StoreWord(p + 12, uint16_t{1});
  StoreWord(p + 14, uint16_t(depth == 15 ? 16 : depth));
  StoreWord(p + 16, uint32_t(depth == 16 ? 3 : 0));
  StoreWord(p + 20, uint32_t(LineBytes(depth, width)) * uint32_t(height));
  uint8_t* const behind = p + DibHeader::kBytes;
  if (depth == 16) {
    StoreWord(behind, uint32_t{0xF800});
    StoreWord(behind + 4, uint32_t{0x7E0});
    StoreWord(behind + 8, uint32_t{0x1F});
  }
  if (depth > 8 || !palette) return;
  for (size_t i = 0; i < palette->count; ++i) {
    const PaletteEntry& e = palette->entries[i];
    StoreWord(behind + i * 4, SwapRedBlue(e.ToColour()));
  }
}

PaletteRecord DibPalette(const DibHeader& header, std::span<const uint8_t> bytes) {
  PaletteRecord record;
  for (size_t i = 0; i < header.colours; ++i) {
    const uint8_t* quad = bytes.data() + header.tableOffset + i * 4;
    record.entries[i] = {quad[2], quad[1], quad[0], 0};
  }
  return record;
}

}  // namespace vl
