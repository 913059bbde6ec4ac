// Shape paint: shapes painted on an implementation with one pixel value for the pen and one for the filling.
//
// Both the simple shapes and the masks of the rich ones are painted by these. Coordinates are the surface's,
// clamped as shape_raster.h says.
#pragma once

#include <optional>
#include <span>

#include "gfx2d/shape_raster.h"

namespace vl {

struct ShapeInk {
  int penSize = 0;               // 0: no pen; the filling then reaches the box
  std::optional<uint32_t> pen;   // pixel of the outline; none leaves its pixels alone
  std::optional<uint32_t> fill;  // pixel of the inside
};

void PaintEllipse(cSurfaceImpl& surface, const Rect& box, const ShapeInk& ink);
void PaintRectangle(cSurfaceImpl& surface, const Rect& box, const ShapeInk& ink);
void PaintPolygon(cSurfaceImpl& surface, std::span<const Point> points, const ShapeInk& ink);
// Sizes up to 1 draw the exact line.
void PaintLine(cSurfaceImpl& surface, Point from, Point to, int size, uint32_t pixel);

}  // namespace vl
