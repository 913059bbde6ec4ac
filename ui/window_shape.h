// The boxes of a picture's pixels that are not 0: what a window is cut to.
#pragma once

#include <vector>

#include "gfx2d/surface.h"

namespace vl {

// Line by line, each run of pixels a box one pixel high; a run that lies exactly below the box made last makes that
// one higher instead. Empty for a picture without such pixels.
std::vector<Rect> ShapeOf(const cSurface& picture);

}  // namespace vl
