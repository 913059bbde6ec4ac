// Where a picture lies in a window of another size, and the way back for the mouse.
#pragma once

#include "base/rect.h"

namespace vl {

enum class Scaling {
  Follow,   // one to one at the top left; the program is told the window's size
  Integer,  // whole multiples, the rest is a black border
  Nearest,  // as large as fits, pixels stay squares of unequal size
  Smooth,   // as large as fits, the edges of the pixels blended
};

// The picture's place, centred and in its own proportions. A window smaller than the picture shrinks it, whatever
// the scaling (but Follow). Both sizes are at least 1.
Rect PlaceOfPicture(Size picture, Size window, Scaling scaling);

// Pixel of the picture under a window's pixel; outside the place it lies outside the picture.
void WindowToPicture(Size picture, const Rect& place, int& x, int& y);

}  // namespace vl
