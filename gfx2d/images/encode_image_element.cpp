#include "gfx2d/images/encode_image_element.h"

#include <algorithm>

#include "gfx2d/images/image_reader.h"
#include "gfx2d/surface.h"

namespace vl {

ImageError EncodeImageElement(const ImageFilterList& filters, SurfaceLibrary& library, std::span<const uint8_t> file,
                              int depth, const PaletteRecord* palette, bool alphaMask, EncodedImage* image) {
  *image = {};
  if (file.size() > UINT32_MAX) return kImageOutOfMemory;
  CMemoryStream stream(file.data(), uint32_t(file.size()));
  ImageReader reader(filters);
  if (const ImageError error = reader.OpenStream(&stream)) return error;
  if (depth == 0) depth = reader.GetDepth();
  if (!ImageDepthBit(depth)) return kImageBadArgument;
  cSurface surface;
  const int width = reader.GetWidth();
  const int height = reader.GetHeight();
  if (!surface.Create(width, height, library.FindPrototype(depth))) return kImageOutOfMemory;
  // A picture without colours of its own is stored in the standard ones.
  if (depth == 8 && !palette && !reader.GetPalette()) palette = surface.impl->GetPalette().Get();
  const cSurfaceImpl& s = *surface.impl;
  const size_t count = size_t(width) * size_t(height);
  if (reader.HasAlpha()) image->mask.assign(count, 255);
  const ImageError error = reader.Read(
      {s.topLine, width, height, s.pitch, depth, palette, image->mask.empty() ? nullptr : image->mask.data()});
  if (error) return error;
  if (alphaMask && image->mask.empty() && reader.GetDepth() == 32) {
    if (depth == 32) {
      image->mask.resize(count);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) image->mask[size_t(y) * size_t(width) + size_t(x)] = s.PixelAt(x, y)[3];
      }
      const uint8_t first = image->mask[0];
      if (std::all_of(image->mask.begin(), image->mask.end(), [first](uint8_t a) { return a == first; })) {
        image->mask.clear();
      }
    } else {
      EncodedImage whole;
      const ImageError again = EncodeImageElement(filters, library, file, 32, nullptr, true, &whole);
      if (again) return again;
      image->mask = std::move(whole.mask);
    }
  }
  image->width = uint16_t(width);
  image->height = uint16_t(height);
  image->depth = uint16_t(depth);
  image->pixels.assign(s.rawBits, s.rawBits + size_t(s.absPitch) * size_t(height));
  if (depth == 8) image->palette = palette ? *palette : *reader.GetPalette();
  return kImageOk;
}

}  // namespace vl
