// Shape raster: which pixels a shape covers, as horizontal spans inside a clip rectangle.
//
// A pixel belongs to a shape by its centre. Boxes exclude their right and bottom. Spans exclude their end.
// Coordinates are at most kMaxCoordinate from 0, which ClampCoordinate sees to.
#pragma once

#include <algorithm>
#include <functional>
#include <span>

#include "base/rect.h"
#include "gfx2d/surface.h"

namespace vl {

inline constexpr int kMaxCoordinate = 1 << 28;
inline constexpr int kMaxPenSize = 1 << 16;
// More corners cost seconds a polygon and mean nothing on a surface.
inline constexpr size_t kMaxPolygonPoints = 1 << 14;

constexpr int ClampCoordinate(int value) { return std::clamp(value, -kMaxCoordinate, kMaxCoordinate); }

using SpanSink = std::function<void(int y, int first, int last)>;

// One row of an outlined shape: the pen covers [left, innerLeft) and [innerRight, right), the filling
// [innerLeft, innerRight). Not clipped in x.
struct ShapeRow {
  int y;
  int left;
  int innerLeft;
  int innerRight;
  int right;
};
using RowSink = std::function<void(const ShapeRow& row)>;

// The pen lies inside the box; size 0 is none. Rows outside `clip` are left out.
void RasteriseEllipse(const Rect& box, int penSize, const Rect& clip, const RowSink& sink);
void RasteriseRectangle(const Rect& box, int penSize, const Rect& clip, const RowSink& sink);
// The inside by the even-odd rule; left and top edges belong to it, right and bottom ones don't.
void RasterisePolygon(std::span<const Point> points, const Rect& clip, const SpanSink& sink);
// A line of a round pen of `size` pixels across, above 1, centred on the line; even sizes lean left and up.
void RasteriseThickLine(Point from, Point to, int size, const Rect& clip, const SpanSink& sink);

// Clips a line to `bounds`, its right and bottom included, by outcodes. False when nothing is left.
bool ClipLine(Point& from, Point& to, const Rect& bounds);
// The pixels of a line one pixel wide, both ends included; plot(x, y) is called for each.
template <class Plot>
void TraceLine(Point from, Point to, Plot&& plot) {
  const int dx = std::abs(to.x - from.x);
  const int dy = std::abs(to.y - from.y);
  const int stepX = to.x < from.x ? -1 : 1;
  const int stepY = to.y < from.y ? -1 : 1;
  if (dy < dx) {
    int error = -dx;
    for (int x = from.x, y = from.y;; x += stepX) {
      error += 2 * dy;
      plot(x, y);
      if (x == to.x) return;
      if (error >= 0) {
        y += stepY;
        error -= 2 * dx;
      }
    }
  }
  int error = -dy;
  for (int x = from.x, y = from.y;; y += stepY) {
    error += 2 * dx;
    plot(x, y);
    if (y == to.y) return;
    if (error >= 0) {
      x += stepX;
      error -= 2 * dy;
    }
  }
}

}  // namespace vl
