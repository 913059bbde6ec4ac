// CursorImage: a pointer or an icon as plain pixels and a mask, for whoever shows it.
#pragma once

#include <cstdint>
#include <vector>

namespace vl {

struct CursorImage {
  // What a size of 0 means, and the largest one.
  static constexpr int kSystemSide = 32;
  static constexpr int kMaxSide = 1024;

  int width = 0;   // pixels
  int height = 0;  // pixels
  int hotX = 0;    // 0 for an icon
  int hotY = 0;
  bool isIcon = false;          // no hot spot
  std::vector<uint32_t> words;  // 0x00RRGGBB, line by line
  std::vector<uint8_t> mask;    // a bit set where nothing is shown, the first pixel in the highest bit
  int MaskPitch() const { return (width + 15) / 16 * 2; }  // bytes from line to line of the mask
};

}  // namespace vl
