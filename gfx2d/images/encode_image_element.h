// Pictures as banks store them: raw lines instead of a picture file.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "gfx2d/images/image_filter_list.h"
#include "gfx2d/surface_library.h"

namespace vl {

struct EncodedImage {
  uint16_t width = 0;
  uint16_t height = 0;
  uint16_t depth = 0;                    // 8, 15, 16, 24 or 32
  std::vector<uint8_t> pixels;           // `height` lines of whole 32-bit words
  std::vector<uint8_t> mask;             // width x height bytes when the picture has alpha
  std::optional<PaletteRecord> palette;  // depth 8: what the pixels mean
};

// Decodes a picture file to `depth`, 0 for its own. At depth 8 `palette` gives the colours to use, null the
// picture's. With `alphaMask` the fourth byte of a picture of 32 bits becomes the mask when it isn't the same all
// over.
ImageError EncodeImageElement(const ImageFilterList& filters, SurfaceLibrary& library, std::span<const uint8_t> file,
                              int depth, const PaletteRecord* palette, bool alphaMask, EncodedImage* image);

}  // namespace vl
