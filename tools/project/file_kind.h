// What a file is by its first bytes, as far as packing and extracting need it.
#pragma once

#include <cstdint>
#include <string_view>

namespace vl {

struct PictureSize {
  uint16_t width = 0;
  uint16_t height = 0;
  uint16_t depth = 0;  // bits a pixel
};

// False when the bytes are no BMP, JPEG, PNG, TGA or PCX file.
bool MeasurePicture(std::string_view bytes, PictureSize* size);

// A file name extension with its dot for the body of an element; by the bank type when the bytes say nothing.
std::string_view ExtensionFor(uint32_t bankType, std::string_view bytes);

}  // namespace vl
