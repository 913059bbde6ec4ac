// Present: from a surface of any depth to the words 0x00RRGGBB that windows show.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "gfx2d/surface_impl.h"
#include "platform/window_system.h"

namespace vl {

// Converts a box, which lies inside the surface, into words: its pixel (0, 0) goes to out[0], the next line
// `pitchWords` further.
void SurfaceToWords(const cSurfaceImpl& surface, const Rect& box, uint32_t* out, int pitchWords);

// Shows one surface in one window. Keeps a picture in words for the depths that need one, so that only what
// changed is converted.
class PresentSurface {
 public:
  // Presents the dirty boxes of the surface, all of it when its size is new. False without pixels or memory.
  bool Present(WindowSystem& windows, NativeWindow window, const cSurfaceImpl& surface, std::span<const Rect> dirty);

 private:
  std::vector<uint32_t> words_;
  int width_ = 0;
  int height_ = 0;
};

}  // namespace vl
