// Pictures on their way into banks: picture files as stored pixels, and rows of picture files as animations.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/appfile/model.h"

namespace vl {

struct PictureOptions {
  int depth = 0;  // 8, 15, 16, 24 or 32; 0 is the file's own
  // Which pixels become the transparent 0: those of a colour (0xRRGGBB), or those whose alpha is below a half. Others
  // that would be 0 become a black that shows.
  std::optional<uint32_t> transparentColour;
  bool transparentAlpha = false;
  bool mask = false;  // keep the alpha channel beside the pixels
};

struct AnimationOptions {
  PictureOptions picture;
  int frameTimeMs = 100;
  int loopCount = 1;
  int loopStart = 0;
  int quality = 90;  // tens are deflate's level; below 0 nothing is packed
};

// Fills marker, size, depth, pixels, mask and flags of `image`; `palette` is set at depth 8. False with what is wrong
// in `error`.
bool StorePicture(std::string_view file, const PictureOptions& options, ImageModel* image,
                  std::optional<StoredPalette>* palette, std::string* error);

// An animation file of pictures of one size. `error` names the picture by its place, from 1.
bool MakeAnimation(const std::vector<std::string>& pictures, const AnimationOptions& options, std::string* animation,
                   std::string* error);

}  // namespace vl
