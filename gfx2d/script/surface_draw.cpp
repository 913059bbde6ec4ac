// Surface: the members that change pixels.
#include <cmath>

#include "gfx2d/colour.h"
#include "gfx2d/script/surface_class.h"
#include "interpreter/data_source.h"

namespace vl {

namespace {
constexpr double kDegreesPerRadian = 57.29577951309679;
}

void CISurface::MoveTo() {
  penX = IntOr(0, penX);
  penY = IntOr(1, penY);
}

Pattern* CISurface::PenPattern() {
  if (penPattern_) return penPattern_.get();
  solidPen_.SetColour(penColor);
  return &solidPen_;
}

void CISurface::DrawLineTo(int x1, int y1, int x2, int y2) {
  NoteShape(x1, y1, x2, y2);
  const int size = std::max(penSize_, 1);
  if (simpleDraw_) {
    surface.DrawLine(x1, y1, x2, y2, size, penColor);
  } else {
    surface.DrawLinePattern(x1, y1, x2, y2, size, *PenPattern(), antiAlias_, drawMode_,
                            static_cast<uint32_t>(drawParam_));
  }
  penX = x2;
  penY = y2;
}

void CISurface::Line() { DrawLineTo(IntOr(0, penX), IntOr(1, penY), IntOr(2, penX), IntOr(3, penY)); }
void CISurface::LineTo() { DrawLineTo(penX, penY, IntOr(0, penX), IntOr(1, penY)); }

// x1, y1, x2, y2 in any order; a missing start is the pen.
void CISurface::BoxArguments(Rect& box) const {
  box = {IntOr(0, penX), IntOr(1, penY), IntOr(2, penX), IntOr(3, penY)};
  if (box.left > box.right) std::swap(box.left, box.right);
  if (box.top > box.bottom) std::swap(box.top, box.bottom);
}

void CISurface::Rectangle() {
  Rect box;
  BoxArguments(box);
  NoteShape(box.left, box.top, box.right, box.bottom);
  if (simpleDraw_) {
    surface.DrawRectangle(box, fillColor_, penSize_, penColor, fillType_ != 0);
  } else {
    surface.DrawRectanglePattern(box, fillPattern_.get(), penSize_, penSize_ ? PenPattern() : nullptr, antiAlias_,
                                 drawMode_, static_cast<uint32_t>(drawParam_));
  }
}

void CISurface::Ellipse() {
  Rect box;
  BoxArguments(box);
  NoteShape(box.left, box.top, box.right, box.bottom);
  if (simpleDraw_) {
    surface.DrawEllipse(box, fillColor_, penSize_, penColor, fillType_ != 0);
  } else {
    surface.DrawEllipsePattern(box, fillPattern_.get(), penSize_, penSize_ ? PenPattern() : nullptr, antiAlias_,
                               drawMode_, static_cast<uint32_t>(drawParam_));
  }
}

namespace {

// A coordinate of a polygon, as a float of any size.
int CornerOf(double v) { return std::isfinite(v) ? static_cast<int>(std::clamp(v, -1e9, 1e9)) : 0; }

}  // namespace

// Corners in turn: arrays of points in two dimensions, or pairs of numbers.
std::vector<Point> CISurface::CornerArguments() {
  std::vector<Point> corners;
  std::vector<int> numbers;
  const auto addNumbers = [&] {
    if (numbers.size() % 2) interpreter.RaiseError(ERR_POLYGON_COORDINATES);
    for (size_t i = 0; i < numbers.size(); i += 2) corners.push_back({numbers[i], numbers[i + 1]});
    numbers.clear();
  };
  for (int i = 0; i < interpreter.GetArgCount(); ++i) {
    const CValue& value = *interpreter.GetArg(i);
    if (value.type == VT_INTEGER || value.type == VT_FLOAT) {
      numbers.push_back(CornerOf(value.GetDouble()));
      continue;
    }
    addNumbers();
    const bool isObject = value.type == VT_OBJECT && value.data.object;
    const auto* points = isObject ? dynamic_cast<CPointSource*>(value.data.object) : nullptr;
    if (!points) interpreter.RaiseError(ERR_POLYGON_ARGUMENT);
    if (points->PointDimensions() != 2) interpreter.RaiseError(ERR_POINT_DIMENSIONS);
    const std::span<const float> values = points->PointValues();
    for (size_t k = 0; k + 1 < values.size(); k += 2) {
      corners.push_back({CornerOf(static_cast<double>(values[k])), CornerOf(static_cast<double>(values[k + 1]))});
    }
  }
  addNumbers();
  return corners;
}

void CISurface::DrawPolygon() {
  const std::vector<Point> corners = CornerArguments();
  if (corners.size() < 2) return;
  Rect box{corners[0].x, corners[0].y, corners[0].x, corners[0].y};
  for (const Point& p : corners) box = box.Union({p.x, p.y, p.x, p.y});
  NoteShape(box.left, box.top, box.right, box.bottom);
  if (simpleDraw_) {
    surface.DrawPolygonShape(corners, fillColor_, penSize_, penColor, fillType_ != 0);
  } else {
    surface.DrawPolygonPattern(corners, fillPattern_.get(), penSize_, penSize_ ? PenPattern() : nullptr, antiAlias_,
                               drawMode_, static_cast<uint32_t>(drawParam_));
  }
}

void CISurface::SetPixel() {
  const int count = interpreter.GetArgCount();
  if (count > 3) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
  const bool placed = count >= 2;
  const int32_t x = placed ? IntOr(0, penX) : penX;
  const int32_t y = placed ? IntOr(1, penY) : penY;
  const bool coloured = count == 1 || count == 3;
  const uint32_t colour = coloured ? ColourOr(placed ? 2 : 0, penColor) : penColor;
  if (WholeBox().Contains(x, y)) {
    NoteChange(x, y, x + 1, y + 1);
    surface.SetPixel(x, y, colour);
  }
  // Wrapping sums: the place may be any two integers.
  const auto moved = [](int32_t v, int32_t by) {
    return static_cast<int32_t>(static_cast<uint32_t>(v) + static_cast<uint32_t>(by));
  };
  penX = moved(x, coloured ? 1 : penSize_ / 2);
  penY = moved(y, coloured ? 0 : penSize_ / 2);
}

void CISurface::GetPixel() {
  const int32_t x = IntOr(0, penX);
  const int32_t y = IntOr(1, penY);
  if (WholeBox().Contains(x, y)) LiftSprites({x, y, x + 1, y + 1});
  Colour colour = 0;
  surface.GetPixel(x, y, colour);
  interpreter.GetResult().SetInt(static_cast<int32_t>(SwapRedBlue(colour & 0xFFFFFF)));
}

void CISurface::GetPixelIndex() {
  if (depth != 8) interpreter.RaiseError(ERR_NOT_INDEXED);
  uint32_t pixel = 0;
  surface.GetPixelRaw(IntOr(0, penX), IntOr(1, penY), pixel);
  interpreter.GetResult().SetInt(static_cast<int32_t>(pixel));
}

void CISurface::Fill() {
  NoteChange(0, 0, width, height);
  Rect painted;
  surface.FloodFill(IntOr(0, penX), IntOr(1, penY), painted, fillColor_, std::clamp(IntOr(2, 0), 0, 255));
}

void CISurface::EraseBox(int x, int y, int boxWidth, int boxHeight) {
  const int64_t right = int64_t{x} + boxWidth;
  const int64_t bottom = int64_t{y} + boxHeight;
  const Rect box = Rect{x, y, static_cast<int>(std::clamp<int64_t>(right, INT32_MIN, INT32_MAX)),
                        static_cast<int>(std::clamp<int64_t>(bottom, INT32_MIN, INT32_MAX))}
                       .Intersect(WholeBox());
  if (box.IsEmpty()) return;
  NoteChange(box.left, box.top, box.right, box.bottom);
  surface.Fill(box.left, box.top, box.Width(), box.Height(), backColor);
}

void CISurface::EraseRect() { EraseBox(IntOr(0, 0), IntOr(1, 0), IntOr(2, width), IntOr(3, height)); }

// The surface of argument 0, a Surface or a Window.
CISurface* CISurface::SourceArgument() {
  const CValue& value = *interpreter.GetArg(0);
  if (value.type == VT_OBJECT && value.data.object) {
    if (value.IsObjectOfClass(CLASS_SURFACE)) return static_cast<CISurface*>(value.data.object);
    if (auto* owner = dynamic_cast<CSurfaceOwner*>(value.data.object)) {
      if (CISurface* owned = owner->OwnedSurface()) return owned;
    }
  }
  interpreter.RaiseError(ERR_BAD_ARGUMENT);
}

void CISurface::Copy() {
  CISurface* source = SourceArgument();
  cSurface clone;
  cSurface* pixels = &source->surface;
  if (source == this) {
    if (!clone.CloneFrom(surface)) interpreter.RaiseError(ERR_MEMORY);
    pixels = &clone;
  }
  int32_t x = 0;
  int32_t y = 0;
  int32_t sx = 0;
  int32_t sy = 0;
  int32_t w = source->width;
  int32_t h = source->height;
  switch (interpreter.GetArgCount()) {
    case 1:
      x = (width - source->width) / 2;
      y = (height - source->height) / 2;
      break;
    case 7:
      w = IntOr(5, source->width);
      h = IntOr(6, source->height);
      [[fallthrough]];
    case 5:
      sx = IntOr(3, 0);
      sy = IntOr(4, 0);
      [[fallthrough]];
    case 3:
      x = IntOr(1, penX);
      y = IntOr(2, penY);
      break;
    default:
      interpreter.RaiseError(ERR_ARGUMENT_COUNT);
  }
  if (x >= width || y >= height) return;
  const auto end = [](int32_t from, int32_t size, int32_t limit) {
    return static_cast<int>(std::clamp<int64_t>(int64_t{from} + size, 0, limit));
  };
  const Rect box{std::max(x, 0), std::max(y, 0), end(x, w, width), end(y, h, height)};
  if (!box.IsEmpty()) NoteChange(box.left, box.top, box.right, box.bottom);
  pixels->Blit(surface, x, y, sx, sy, w, h, transparentMode_, drawMode_, static_cast<uint32_t>(drawParam_));
}

// Stretch(source), (source, x, y, w, h) or (source, x, y, w, h, sx, sy, sw, sh).
void CISurface::Stretch() {
  CISurface* source = SourceArgument();
  cSurface clone;
  cSurface* pixels = &source->surface;
  if (source == this) {
    if (!clone.CloneFrom(surface)) interpreter.RaiseError(ERR_MEMORY);
    pixels = &clone;
  }
  const int count = interpreter.GetArgCount();
  if (count != 1 && count != 5 && count != 9) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
  const int32_t x = count > 1 ? IntOr(1, penX) : 0;
  const int32_t y = count > 1 ? IntOr(2, penY) : 0;
  const int32_t w = IntOr(3, width);
  const int32_t h = IntOr(4, height);
  NoteChange(0, 0, width, height);
  pixels->StretchBlit(surface, x, y, w, h, IntOr(5, 0), IntOr(6, 0), IntOr(7, source->width), IntOr(8, source->height),
                      transparentMode_, drawMode_, static_cast<uint32_t>(drawParam_), antiAlias_);
}

void CISurface::Scroll() {
  const int32_t dx = IntOr(0, 0);
  const int32_t dy = IntOr(1, 0);
  const int32_t x = IntOr(2, 0);
  const int32_t y = IntOr(3, 0);
  const int64_t right = int64_t{x} + IntOr(4, width);
  const int64_t bottom = int64_t{y} + IntOr(5, height);
  const Rect box = Rect{x, y, static_cast<int>(std::clamp<int64_t>(right, 0, width)),
                        static_cast<int>(std::clamp<int64_t>(bottom, 0, height))}
                       .Intersect(WholeBox());
  if (box.IsEmpty() || dx <= -width || dx >= width || dy <= -height || dy >= height) return;
  // What moves and arrives inside the box; the vacated pixels keep their value.
  const Rect target = Rect{box.left + dx, box.top + dy, box.right + dx, box.bottom + dy}.Intersect(box);
  if (target.IsEmpty()) return;
  NoteChange(box.left, box.top, box.right, box.bottom);
  surface.MoveBox(target.left - dx, target.top - dy, target.left, target.top, target.Width(), target.Height());
}

void CISurface::ReverseX() {
  Rect box = WholeBox();
  if (interpreter.GetArgCount() > 0) BoxArguments(box);
  box = box.Intersect(WholeBox());
  if (box.IsEmpty()) return;
  NoteChange(box.left, box.top, box.right, box.bottom);
  surface.MirrorHorizontal(box.left, box.top, box.Width(), box.Height());
}

void CISurface::ReverseY() {
  Rect box = WholeBox();
  if (interpreter.GetArgCount() > 0) BoxArguments(box);
  box = box.Intersect(WholeBox());
  if (box.IsEmpty()) return;
  NoteChange(box.left, box.top, box.right, box.bottom);
  surface.MirrorVertical(box.left, box.top, box.Width(), box.Height());
}

void CISurface::ReplaceColor() {
  const uint32_t from = ColourOr(0, 0);
  const uint32_t to = ColourOr(1, 0);
  NoteChange(0, 0, width, height);
  surface.impl->ReplaceColor(from, to);
}

void CISurface::Rotate() {
  const double radians = interpreter.GetArgDouble(0);
  if (radians == kDefaultDouble || !std::isfinite(radians)) return;
  const auto degrees = static_cast<int>(std::fmod(radians * kDegreesPerRadian, 360.0));
  LiftSprites(WholeBox());
  cSurface turned;
  if (!surface.RotateInto(turned, degrees, IntOr(1, 0) != 0, backColor)) return;
  if (!parentWindow) {
    surface = std::move(turned);
    width = surface.impl->width;
    height = surface.impl->height;
    NoteChange(0, 0, width, height);
    return;
  }
  NoteChange(0, 0, width, height);
  surface.Fill(0, 0, width, height, backColor);
  turned.Blit(surface, (width - turned.impl->width) / 2, (height - turned.impl->height) / 2, 0, 0, turned.impl->width,
              turned.impl->height, 0);
}

}  // namespace vl
