#include "gfx2d/surface_text.h"

#include <algorithm>

#include "gfx2d/shape_raster.h"
#include "gfx2d/text_layout.h"

namespace vl {
namespace {

// Paints inked runs straight into pixels.
void PaintRuns(cSurfaceImpl& s, TextFont& font, std::string_view text, int x, int baseline, const Rect& clip,
               uint32_t pixel) {
  font.rasterise(text, [&](const GlyphRun& run) {
    const int y = baseline + run.y;
    if (y < clip.top || y >= clip.bottom) return;
    const int first = std::max(x + run.x, clip.left);
    const int last = std::min(x + run.x + run.width, clip.right);
    if (first < last) FillBoxRaw(s, first, y, last - first, 1, pixel);
  });
}

// Runs `draw` on the surface, or, for effects, on a temporary of the size of `box` that is then blitted.
// draw(target, dx, dy, pixel): (dx, dy) is what coordinates of the surface move by.
template <class Draw>
bool Through(cSurfaceImpl& s, const Rect& box, const TextPaint& paint, Draw&& draw) {
  if (paint.effect == kEffectNone && !paint.antiAlias) {
    draw(s, 0, 0, s.PixelOfColour(paint.colour));
    return true;
  }
  if (box.IsEmpty()) return false;
  const auto layer = s.MakeInstance(box.Width(), box.Height());
  if (!layer) return false;
  draw(*layer, -box.left, -box.top, layer->PixelOfColour(TextColour(s, paint.colour)));
  return layer->Blit(s, box.left, box.top, 0, 0, box.Width(), box.Height(), 1, paint.effect, paint.param,
                     paint.antiAlias);
}

int Move(int value, int by) { return ClampCoordinate(int(uint32_t(value) - uint32_t(by))); }

Rect MoveRect(const Rect& r, Point origin) {
  return {Move(r.left, origin.x), Move(r.top, origin.y), Move(r.right, origin.x), Move(r.bottom, origin.y)};
}

// Room for a line between the margins.
int LineRoom(const Rect& rect, int margin) {
  return int(std::clamp<int64_t>(int64_t{rect.right} - rect.left - margin, 0, kMaxCoordinate));
}

int MarginPixels(const TextFont& font, int characters) {
  return std::clamp(characters, 0, 1 << 12) * font.metrics().averageWidth;
}

int64_t TextHeight(const TextFont& font, size_t lines) { return int64_t{font.metrics().height} * int64_t(lines); }

}  // namespace

Colour TextColour(const cSurfaceImpl& s, Colour colour) {
  if ((colour & kColourMask) != 0) return colour;
  if (s.depth > 8) return 8;
  return s.palette ? s.palette->ColourAt(s.palette->blackIndex) : 0x800000;
}

bool DrawText(cSurface& surface, TextFont& font, std::string_view text, int x, int baseline, const Rect& clip,
              const TextPaint& paint) {
  cSurfaceImpl& s = *surface.impl;
  if (!s.Lock() || text.empty()) return false;
  const Point origin = surface.GetOrigin();
  const Rect box = MoveRect(clip, origin).Intersect(s.GetClipRect());
  if (box.IsEmpty()) return false;
  return Through(s, box, paint, [&](cSurfaceImpl& target, int dx, int dy, uint32_t pixel) {
    const Rect bounds = {box.left + dx, box.top + dy, box.right + dx, box.bottom + dy};
    PaintRuns(target, font, text, Move(x, origin.x) + dx, Move(baseline, origin.y) + dy, bounds, pixel);
  });
}

int MeasureTextEx(TextFont& font, std::string_view text, Rect& rect, uint32_t format, const TextMargins& margins) {
  const int left = MarginPixels(font, margins.left);
  const int right = MarginPixels(font, margins.right);
  const std::vector<TextLine> lines = LayOutText(font, text, LineRoom(rect, left + right), format, margins);
  int widest = 0;
  for (const TextLine& line : lines) widest = std::max(widest, line.width);
  const int64_t height = TextHeight(font, lines.size());
  const auto add = [](int a, int64_t b) { return int(std::clamp<int64_t>(a + b, INT32_MIN, INT32_MAX)); };
  rect.right = add(rect.left, int64_t{widest} + left + right);
  rect.bottom = add(rect.top, height);
  return int(std::min<int64_t>(height, INT32_MAX));
}

int DrawTextEx(cSurface& surface, TextFont& font, std::string_view text, Rect& rect, uint32_t format,
               const TextPaint& textPaint, const TextMargins& margins) {
  if (format & kTextCalculate) return MeasureTextEx(font, text, rect, format, margins);
  cSurfaceImpl& s = *surface.impl;
  if (!s.Lock() || text.empty()) return 0;
  TextPaint paint = textPaint;
  paint.colour = TextColour(s, paint.colour);
  const Rect box = MoveRect(rect, surface.GetOrigin());
  const int left = MarginPixels(font, margins.left);
  const int right = MarginPixels(font, margins.right);
  const std::vector<TextLine> lines = LayOutText(font, text, LineRoom(box, left + right), format, margins);
  const FontMetrics& metrics = font.metrics();
  const int64_t height = TextHeight(font, lines.size());
  int64_t top = box.top;
  if (format & kTextSingleLine) {
    if (format & kTextVerticalCentre) top = box.top + (int64_t{box.bottom} - box.top - height) / 2;
    if (format & kTextBottom) top = box.bottom - height;
  }
  Rect clip = s.GetClipRect();
  if (!(format & kTextNoClip)) clip = clip.Intersect(box);
  if (clip.IsEmpty()) return int(std::min<int64_t>(height, INT32_MAX));
  Through(s, clip, paint, [&](cSurfaceImpl& target, int dx, int dy, uint32_t pixel) {
    const Rect bounds = {clip.left + dx, clip.top + dy, clip.right + dx, clip.bottom + dy};
    int64_t y = top;
    for (const TextLine& line : lines) {
      const int64_t bottom = y + metrics.height;
      // An edit control shows no line in part.
      if ((format & kTextEditControl) && bottom > box.bottom) break;
      if (y >= clip.bottom) break;
      if (bottom > clip.top) {
        int64_t x = box.left + left;
        if (format & kTextCentre) x = box.left + left + (int64_t{box.right} - right - box.left - left - line.width) / 2;
        if (format & kTextRight) x = int64_t{box.right} - right - line.width;
        const int baseline = int(y) + metrics.ascent + dy;
        for (const TextPiece& piece : line.pieces) {
          PaintRuns(target, font, piece.text, int(x) + piece.x + dx, baseline, bounds, pixel);
        }
        const Rect underline = Rect{int(x) + line.underlineX + dx, baseline + 1,
                                    int(x) + line.underlineX + line.underlineWidth + dx, baseline + 2}
                                   .Intersect(bounds);
        if (!underline.IsEmpty()) {
          FillBoxRaw(target, underline.left, underline.top, underline.Width(), underline.Height(), pixel);
        }
      }
      y = bottom;
    }
  });
  return int(std::min<int64_t>(height, INT32_MAX));
}

}  // namespace vl
