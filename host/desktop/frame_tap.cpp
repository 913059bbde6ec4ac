#include "host/desktop/frame_tap.h"

#include <algorithm>

namespace vl {

Picture FrameTap::NewestPicture() {
  const std::lock_guard lock(mutex_);
  return picture_;
}

void FrameTap::present(NativeWindow window, const uint32_t* pixels, int width, int height, int pitch,
                       std::span<const Rect> dirty) {
  inner_.present(window, pixels, width, height, pitch, dirty);
  if (onPresent) onPresent();
  if (!keep_ || width <= 0 || height <= 0) return;
  if (inner_.hostWindow() != 0 && window != inner_.hostWindow()) return;
  Keep(pixels, width, height, pitch, dirty);
  // Only this thread writes the picture.
  if (onPicture) onPicture(picture_);
}

void FrameTap::Keep(const uint32_t* pixels, int width, int height, int pitch, std::span<const Rect> dirty) {
  const std::lock_guard lock(mutex_);
  const Rect whole{0, 0, width, height};
  // A window of another size has no part of its picture here yet.
  const bool fresh = picture_.width != width || picture_.height != height || inner_.hostWindow() == 0;
  picture_.width = width;
  picture_.height = height;
  picture_.pixels.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
  const auto copy = [&](const Rect& rect) {
    const Rect box = rect.Intersect(whole);
    for (int y = box.top; y < box.bottom; ++y) {
      const uint32_t* line = pixels + static_cast<ptrdiff_t>(y) * pitch;
      std::copy(line + box.left, line + std::max(box.left, box.right),
                picture_.pixels.begin() + static_cast<ptrdiff_t>(y) * width + box.left);
    }
  };
  if (fresh) {
    copy(whole);
  } else {
    for (const Rect& rect : dirty) copy(rect);
  }
}

}  // namespace vl
