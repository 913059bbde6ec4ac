#include "tools/png_file.h"

#include <png.h>

namespace vl {

bool WritePng(const std::string& path, const std::vector<uint32_t>& pixels, int width, int height) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(height);
  image.format = PNG_FORMAT_RGB;
  std::vector<uint8_t> rgb;
  rgb.reserve(pixels.size() * 3);
  for (const uint32_t p : pixels) {
    rgb.push_back(static_cast<uint8_t>(p >> 16));
    rgb.push_back(static_cast<uint8_t>(p >> 8));
    rgb.push_back(static_cast<uint8_t>(p));
  }
  return png_image_write_to_file(&image, path.c_str(), 0, rgb.data(), 0, nullptr) != 0;
}

}  // namespace vl
