// Lines and simple shapes of the handle: one colour, straight into the surface.
#include "gfx2d/shape_paint.h"
#include "gfx2d/surface.h"

namespace vl {
namespace {

ShapeInk InkOf(const cSurfaceImpl& surface, Colour fillColor, int penSize, Colour penColor, bool fill) {
  ShapeInk ink;
  ink.penSize = std::clamp(penSize, 0, kMaxPenSize);
  if (ink.penSize > 0) ink.pen = surface.PixelOfColour(penColor);
  if (fill) ink.fill = surface.PixelOfColour(fillColor);
  return ink;
}

}  // namespace

Rect cSurface::ShapeBox(const Rect& box) const {
  const int x1 = ClampCoordinate(X(box.left));
  const int x2 = ClampCoordinate(X(box.right));
  const int y1 = ClampCoordinate(Y(box.top));
  const int y2 = ClampCoordinate(Y(box.bottom));
  return {std::min(x1, x2), std::min(y1, y2), std::max(x1, x2), std::max(y1, y2)};
}

Point cSurface::ShapePoint(int x, int y) const { return {ClampCoordinate(X(x)), ClampCoordinate(Y(y))}; }

std::vector<Point> cSurface::ShapePoints(std::span<const Point> points) const {
  std::vector<Point> moved;
  if (points.size() > kMaxPolygonPoints) return moved;
  moved.reserve(points.size());
  for (const Point& p : points) moved.push_back(ShapePoint(p.x, p.y));
  return moved;
}

bool cSurface::DrawLine(int x1, int y1, int x2, int y2, int size, Colour colour) {
  if (!impl->Lock()) return false;
  PaintLine(*impl, ShapePoint(x1, y1), ShapePoint(x2, y2), std::min(size, kMaxPenSize), impl->PixelOfColour(colour));
  return true;
}

bool cSurface::DrawEllipse(const Rect& box, Colour fillColor, int penSize, Colour penColor, bool fill) {
  if (!impl->Lock()) return false;
  PaintEllipse(*impl, ShapeBox(box), InkOf(*impl, fillColor, penSize, penColor, fill));
  return true;
}

bool cSurface::DrawRectangle(const Rect& box, Colour fillColor, int penSize, Colour penColor, bool fill) {
  if (!impl->Lock()) return false;
  PaintRectangle(*impl, ShapeBox(box), InkOf(*impl, fillColor, penSize, penColor, fill));
  return true;
}

bool cSurface::DrawPolygonShape(std::span<const Point> points, Colour fillColor, int penSize, Colour penColor,
                                bool fill) {
  const std::vector<Point> moved = ShapePoints(points);
  if (!impl->Lock() || moved.empty()) return false;
  PaintPolygon(*impl, moved, InkOf(*impl, fillColor, penSize, penColor, fill));
  return true;
}

}  // namespace vl
