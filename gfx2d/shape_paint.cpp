#include "gfx2d/shape_paint.h"

namespace vl {
namespace {

RowSink PaintRows(cSurfaceImpl& surface, const ShapeInk& ink) {
  return [&surface, &ink](const ShapeRow& row) {
    if (ink.pen && ink.penSize > 0) {
      surface.FillRaw(row.left, row.y, row.innerLeft - row.left, 1, *ink.pen);
      surface.FillRaw(row.innerRight, row.y, row.right - row.innerRight, 1, *ink.pen);
    }
    if (ink.fill) surface.FillRaw(row.innerLeft, row.y, row.innerRight - row.innerLeft, 1, *ink.fill);
  };
}

SpanSink PaintSpans(cSurfaceImpl& surface, uint32_t pixel) {
  return [&surface, pixel](int y, int first, int last) { surface.FillRaw(first, y, last - first, 1, pixel); };
}

}  // namespace

void PaintEllipse(cSurfaceImpl& surface, const Rect& box, const ShapeInk& ink) {
  RasteriseEllipse(box, ink.penSize, surface.GetClipRect(), PaintRows(surface, ink));
}

void PaintRectangle(cSurfaceImpl& surface, const Rect& box, const ShapeInk& ink) {
  RasteriseRectangle(box, ink.penSize, surface.GetClipRect(), PaintRows(surface, ink));
}

void PaintPolygon(cSurfaceImpl& surface, std::span<const Point> points, const ShapeInk& ink) {
  if (ink.fill) RasterisePolygon(points, surface.GetClipRect(), PaintSpans(surface, *ink.fill));
  if (!ink.pen || ink.penSize <= 0) return;
  for (size_t i = 0; i < points.size(); ++i) {
    PaintLine(surface, points[i], points[i + 1 == points.size() ? 0 : i + 1], ink.penSize, *ink.pen);
  }
}

void PaintLine(cSurfaceImpl& surface, Point from, Point to, int size, uint32_t pixel) {
  const Rect clip = surface.GetClipRect();
  if (clip.IsEmpty()) return;
  if (size > 1) {
    RasteriseThickLine(from, to, size, clip, PaintSpans(surface, pixel));
    return;
  }
  if (!ClipLine(from, to, clip)) return;
  if (from.y == to.y) {
    surface.FillRaw(std::min(from.x, to.x), from.y, std::abs(to.x - from.x) + 1, 1, pixel);
    return;
  }
  TraceLine(from, to, [&](int x, int y) {
    if (clip.Contains(x, y)) FillBoxRaw(surface, x, y, 1, 1, pixel);
  });
}

}  // namespace vl
