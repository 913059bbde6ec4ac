// Size and rectangle in pixels; right and bottom are exclusive.
#pragma once

#include <algorithm>

namespace vl {

struct Size {
  int width = 0;
  int height = 0;
  bool operator==(const Size&) const = default;
};

struct Rect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  bool operator==(const Rect&) const = default;

  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
  bool IsEmpty() const { return left >= right || top >= bottom; }
  bool Contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
  Rect Intersect(const Rect& o) const {
    return {std::max(left, o.left), std::max(top, o.top), std::min(right, o.right), std::min(bottom, o.bottom)};
  }
  Rect Union(const Rect& o) const {
    return {std::min(left, o.left), std::min(top, o.top), std::max(right, o.right), std::max(bottom, o.bottom)};
  }
};

}  // namespace vl
