#include "ui/window_shape.h"

namespace vl {

std::vector<Rect> ShapeOf(const cSurface& picture) {
  std::vector<Rect> boxes;
  const cSurfaceImpl& pixels = *picture.impl;
  const auto isSet = [&](int x, int y) {
    uint32_t raw = 0;
    return pixels.GetPixelRaw(x, y, raw) && raw != 0;
  };
  for (int y = 0; y < pixels.height; ++y) {
    for (int x = 0; x < pixels.width;) {
      if (!isSet(x, y)) {
        ++x;
        continue;
      }
      const int left = x;
      while (x < pixels.width && isSet(x, y)) ++x;
      if (!boxes.empty() && boxes.back().left == left && boxes.back().right == x && boxes.back().bottom == y) {
        boxes.back().bottom = y + 1;
      } else {
        boxes.push_back({left, y, x, y + 1});
      }
    }
  }
  return boxes;
}

}  // namespace vl
