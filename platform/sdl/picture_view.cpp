#include "platform/sdl/picture_view.h"

#include <algorithm>
#include <cstdint>

namespace vl {
namespace {

int FloorDivide(int64_t a, int64_t b) { return int(a >= 0 ? a / b : -((b - 1 - a) / b)); }

}  // namespace

Rect PlaceOfPicture(Size picture, Size window, Scaling scaling) {
  const int64_t pw = std::max(picture.width, 1);
  const int64_t ph = std::max(picture.height, 1);
  if (scaling == Scaling::Follow) return {0, 0, int(pw), int(ph)};
  const int64_t ww = std::max(window.width, 1);
  const int64_t wh = std::max(window.height, 1);
  int64_t width = ww;
  int64_t height = wh;
  const int64_t factor = std::min(ww / pw, wh / ph);
  if (scaling == Scaling::Integer && factor >= 1) {
    width = pw * factor;
    height = ph * factor;
  } else if (ww * ph <= wh * pw) {
    height = std::max<int64_t>(ww * ph / pw, 1);
  } else {
    width = std::max<int64_t>(wh * pw / ph, 1);
  }
  const int left = int((ww - width) / 2);
  const int top = int((wh - height) / 2);
  return {left, top, left + int(width), top + int(height)};
}

void WindowToPicture(Size picture, const Rect& place, int& x, int& y) {
  x = FloorDivide((int64_t{x} - place.left) * picture.width, std::max(place.Width(), 1));
  y = FloorDivide((int64_t{y} - place.top) * picture.height, std::max(place.Height(), 1));
}

}  // namespace vl
