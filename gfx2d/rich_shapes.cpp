// Rich shapes: patterns painted through a mask, so that gradients, effects and anti-aliasing work on any shape.
#include <functional>

#include "gfx2d/pattern.h"
#include "gfx2d/shape_paint.h"
#include "gfx2d/surface.h"

namespace vl {
namespace {

constexpr uint32_t kAllBits = 0xFFFFFFFF;

struct RichPaint {
  bool antiAlias;
  int effect;
  uint32_t param;
};

// The two temporaries of a rich shape, of the size of a box of the surface.
class MaskPainter {
 public:
  MaskPainter(cSurfaceImpl& surface, const Rect& box, const RichPaint& paint)
      : surface_(surface),
        box_(box),
        paint_(paint),
        mask_(surface.MakeInstance(box.Width(), box.Height())),
        colours_(mask_ ? surface.MakeInstance(box.Width(), box.Height()) : nullptr) {}

  bool IsReady() const { return colours_ != nullptr; }

  // Paints `pattern`, rendered at `size`, where `draw` sets all bits of the mask.
  void Paint(const Pattern& pattern, Size size, const std::function<void(cSurfaceImpl& mask)>& draw) {
    pattern.Render(*colours_, size.width, size.height, true);
    mask_->FillRaw(0, 0, box_.Width(), box_.Height(), 0);
    draw(*mask_);
    colours_->Blit(*mask_, 0, 0, 0, 0, box_.Width(), box_.Height(), 0, kEffectAnd, 0, false);
    mask_->Blit(surface_, box_.left, box_.top, 0, 0, box_.Width(), box_.Height(), 1, paint_.effect, paint_.param,
                paint_.antiAlias);
  }

 private:
  cSurfaceImpl& surface_;
  Rect box_;
  RichPaint paint_;
  std::unique_ptr<cSurfaceImpl> mask_;
  std::unique_ptr<cSurfaceImpl> colours_;
};

// A pattern's origin, put back at the end.
class OriginGuard {
 public:
  OriginGuard(Pattern& pattern, Point origin) : pattern_(pattern), old_(pattern.SetOrigin(origin.x, origin.y)) {}
  ~OriginGuard() { pattern_.SetOrigin(old_.x, old_.y); }
  OriginGuard(const OriginGuard&) = delete;
  OriginGuard& operator=(const OriginGuard&) = delete;

 private:
  Pattern& pattern_;
  Point old_;
};

using PaintBox = void (*)(cSurfaceImpl& surface, const Rect& box, const ShapeInk& ink);

bool PaintRichBox(cSurfaceImpl& surface, const Rect& shape, Pattern* fill, int penSize, Pattern* pen,
                  const RichPaint& paint, PaintBox paintBox) {
  const Rect box = shape.Intersect(surface.GetClipRect());
  if (box.IsEmpty()) return false;
  MaskPainter painter(surface, box, paint);
  if (!painter.IsReady()) return false;
  const Point corner = {shape.left - box.left, shape.top - box.top};
  const Rect onMask = {corner.x, corner.y, corner.x + shape.Width(), corner.y + shape.Height()};
  const Size size = {shape.Width(), shape.Height()};
  const int outline = pen ? std::clamp(penSize, 0, kMaxPenSize) : 0;
  if (outline > 0) {
    const OriginGuard guard(*pen, corner);
    painter.Paint(*pen, size, [&](cSurfaceImpl& mask) { paintBox(mask, onMask, {outline, kAllBits, {}}); });
  }
  if (fill) {
    const OriginGuard guard(*fill, corner);
    painter.Paint(*fill, size, [&](cSurfaceImpl& mask) { paintBox(mask, onMask, {outline, {}, kAllBits}); });
  }
  return true;
}

}  // namespace

bool cSurface::DrawEllipsePattern(const Rect& box, Pattern* fillPattern, int penSize, Pattern* penPattern,
                                  bool antiAlias, int effect, uint32_t param) {
  return impl->Lock() &&
         PaintRichBox(*impl, ShapeBox(box), fillPattern, penSize, penPattern, {antiAlias, effect, param}, PaintEllipse);
}

bool cSurface::DrawRectanglePattern(const Rect& box, Pattern* fillPattern, int penSize, Pattern* penPattern,
                                    bool antiAlias, int effect, uint32_t param) {
  return impl->Lock() && PaintRichBox(*impl, ShapeBox(box), fillPattern, penSize, penPattern,
                                      {antiAlias, effect, param}, PaintRectangle);
}

namespace {

// The box of points, grown by the pen on each side.
Rect BoundsOf(std::span<const Point> points, int grow) {
  Rect box = {points[0].x, points[0].y, points[0].x, points[0].y};
  for (const Point& p : points) box = box.Union({p.x, p.y, p.x, p.y});
  return {box.left - grow, box.top - grow, box.right + grow, box.bottom + grow};
}

void MovePoints(std::span<Point> points, const Rect& box) {
  for (Point& p : points) p = {p.x - box.left, p.y - box.top};
}

}  // namespace

bool cSurface::DrawPolygonPattern(std::span<const Point> points, Pattern* fillPattern, int penSize, Pattern* penPattern,
                                  bool antiAlias, int effect, uint32_t param) {
  std::vector<Point> corners = ShapePoints(points);
  if (!impl->Lock() || corners.empty()) return false;
  const int outline = penPattern ? std::clamp(penSize, 0, kMaxPenSize) : 0;
  const Rect box = BoundsOf(corners, outline);
  if (box.IsEmpty()) return false;
  MovePoints(corners, box);
  MaskPainter painter(*impl, box, {antiAlias, effect, param});
  if (!painter.IsReady()) return false;
  const Size size = {box.Width(), box.Height()};
  if (outline > 0) {
    painter.Paint(*penPattern, size, [&](cSurfaceImpl& mask) { PaintPolygon(mask, corners, {outline, kAllBits, {}}); });
  }
  if (fillPattern) {
    // The outline, black, stops the filling at its inner edge.
    painter.Paint(*fillPattern, size, [&](cSurfaceImpl& mask) { PaintPolygon(mask, corners, {outline, 0, kAllBits}); });
  }
  return true;
}

bool cSurface::DrawLinePattern(int x1, int y1, int x2, int y2, int size, Pattern& pattern, bool antiAlias, int effect,
                               uint32_t param) {
  if (!impl->Lock()) return false;
  Point ends[2] = {ShapePoint(x1, y1), ShapePoint(x2, y2)};
  const int pen = std::clamp(size, 1, kMaxPenSize);
  const Rect box = BoundsOf(ends, pen);
  MovePoints(ends, box);
  MaskPainter painter(*impl, box, {antiAlias, effect, param});
  if (!painter.IsReady()) return false;
  painter.Paint(pattern, {box.Width(), box.Height()},
                [&](cSurfaceImpl& mask) { PaintLine(mask, ends[0], ends[1], pen, kAllBits); });
  return true;
}

}  // namespace vl
