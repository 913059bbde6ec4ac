#include "gfx2d/surface_text.h"

#include <algorithm>
#include <cstring>
#include <type_traits>
#include <vector>

#include "gfx2d/pattern.h"
#include "gfx2d/shape_raster.h"
#include "gfx2d/text_layout.h"

namespace vl {
namespace {

// Ink that reaches out of a glyph's cell stays within this many cell heights.
constexpr int kOverhang = 2;

// Calls visit(glyph, x) for the glyphs of the text that may show between `left` and `right`. Glyphs elsewhere aren't
// even made. Gives the width of the text up to there.
template <class Visit>
int64_t VisitGlyphs(TextFont& font, std::string_view text, int64_t start, int left, int right, Visit&& visit) {
  const int overhang = kOverhang * font.metrics().height;
  int64_t x = start;
  for (const char c : text) {
    if (x - overhang >= right) break;
    const int advance = font.advance(uint8_t(c));
    if (x + advance + overhang > left) {
      const Glyph& glyph = font.glyph(uint8_t(c));
      if (!glyph.runs.empty()) visit(glyph, int(x));
    }
    x += advance;
  }
  return x - start;
}

template <int kBytes>
void StoreDot(uint8_t* to, uint32_t pixel) {
  if constexpr (kBytes == 3) {
    to[0] = uint8_t(pixel);
    to[1] = uint8_t(pixel >> 8);
    to[2] = uint8_t(pixel >> 16);
  } else {
    using Word = std::conditional_t<kBytes == 1, uint8_t, std::conditional_t<kBytes == 2, uint16_t, uint32_t>>;
    const Word word = Word(pixel);
    std::memcpy(to, &word, kBytes);
  }
}

// Most runs have one or two pixels, which are their ends.
template <int kBytes>
void StoreRun(uint8_t* to, int width, uint32_t pixel) {
  StoreDot<kBytes>(to, pixel);
  StoreDot<kBytes>(to + (width - 1) * kBytes, pixel);
  for (int i = 1; i < width - 1; ++i) StoreDot<kBytes>(to + i * kBytes, pixel);
}

template <int kBytes>
void PaintGlyph(const cSurfaceImpl& s, const Glyph& glyph, int x, int baseline, const Rect& clip, uint32_t pixel) {
  const Rect box = {glyph.box.left + x, glyph.box.top + baseline, glyph.box.right + x, glyph.box.bottom + baseline};
  if (box.left >= clip.left && box.right <= clip.right && box.top >= clip.top && box.bottom <= clip.bottom) {
    for (const GlyphRun& run : glyph.runs) {
      StoreRun<kBytes>(s.PixelAt(x + run.x, baseline + run.y), run.width, pixel);
    }
    return;
  }
  if (box.Intersect(clip).IsEmpty()) return;
  for (const GlyphRun& run : glyph.runs) {
    const int y = baseline + run.y;
    if (y < clip.top || y >= clip.bottom) continue;
    const int first = std::max(x + run.x, clip.left);
    const int last = std::min(x + run.x + run.width, clip.right);
    if (first < last) StoreRun<kBytes>(s.PixelAt(first, y), last - first, pixel);
  }
}

template <int kBytes>
void PaintGlyphs(const cSurfaceImpl& s, TextFont& font, std::string_view text, int x, int baseline, const Rect& clip,
                 uint32_t pixel) {
  const int64_t width = VisitGlyphs(font, text, x, clip.left, clip.right, [&](const Glyph& glyph, int at) {
    PaintGlyph<kBytes>(s, glyph, at, baseline, clip, pixel);
  });
  const int right = int(std::min<int64_t>(x + width, clip.right));
  for (const TextBar& bar : font.bars()) {
    const Rect box = Rect{x, baseline + bar.y, right, baseline + bar.y + bar.thickness}.Intersect(clip);
    if (!box.IsEmpty()) FillBoxRaw(s, box.left, box.top, box.Width(), box.Height(), pixel);
  }
}

// Paints a text straight into pixels; `clip` lies inside the surface.
void PaintText(const cSurfaceImpl& s, TextFont& font, std::string_view text, int x, int baseline, const Rect& clip,
               uint32_t pixel) {
  switch (s.bytesPerPixel) {
    case 1:
      return PaintGlyphs<1>(s, font, text, x, baseline, clip, pixel);
    case 2:
      return PaintGlyphs<2>(s, font, text, x, baseline, clip, pixel);
    case 3:
      return PaintGlyphs<3>(s, font, text, x, baseline, clip, pixel);
    default:
      return PaintGlyphs<4>(s, font, text, x, baseline, clip, pixel);
  }
}

// The part of `clip` that a text can ink, with a pixel around it, which softening looks at.
Rect InkBox(TextFont& font, std::string_view text, int x, int baseline, const Rect& clip) {
  Rect ink;
  const auto add = [&](const Rect& box) { ink = ink.IsEmpty() ? box : ink.Union(box); };
  const int64_t width = VisitGlyphs(font, text, x, clip.left, clip.right, [&](const Glyph& glyph, int at) {
    add({glyph.box.left + at, glyph.box.top + baseline, glyph.box.right + at, glyph.box.bottom + baseline});
  });
  const int right = int(std::min<int64_t>(x + width, clip.right));
  for (const TextBar& bar : font.bars()) {
    if (x < right) add({x, baseline + bar.y, right, baseline + bar.y + bar.thickness});
  }
  if (ink.IsEmpty()) return {};
  return Rect{ink.left - 1, ink.top - 1, ink.right + 1, ink.bottom + 1}.Intersect(clip);
}

bool IsPlain(const TextPaint& paint) { return paint.effect == kEffectNone && !paint.antiAlias && !paint.pattern; }

// Makes all bits of a layer's ink the pattern's; `frame` is what the pattern spans, in the layer's coordinates.
bool PaintPattern(cSurfaceImpl& layer, Pattern& pattern, const Rect& frame) {
  const auto colours = layer.MakeInstance(layer.width, layer.height);
  if (!colours) return false;
  const Point old = pattern.SetOrigin(frame.left, frame.top);
  pattern.Render(*colours, frame.Width(), frame.Height(), true);
  pattern.SetOrigin(old.x, old.y);
  return colours->Blit(layer, 0, 0, 0, 0, layer.width, layer.height, 0, kEffectAnd, 0, false);
}

// Runs `draw` on the surface, or, for effects and patterns, on a temporary of the size of `box` that is then blitted.
// draw(target, dx, dy, pixel): (dx, dy) is what coordinates of the surface move by. A pattern spans `frame`.
template <class Draw>
bool Through(cSurfaceImpl& s, const Rect& box, const Rect& frame, const TextPaint& paint, Draw&& draw) {
  if (IsPlain(paint)) {
    draw(s, 0, 0, s.PixelOfColour(paint.colour));
    return true;
  }
  if (box.IsEmpty()) return false;
  const auto layer = s.MakeInstance(box.Width(), box.Height());
  if (!layer) return false;
  draw(*layer, -box.left, -box.top, paint.pattern ? ~uint32_t{0} : layer->PixelOfColour(TextColour(s, paint.colour)));
  const Rect onLayer = {frame.left - box.left, frame.top - box.top, frame.right - box.left, frame.bottom - box.top};
  if (paint.pattern && !PaintPattern(*layer, *paint.pattern, onLayer)) return false;
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

bool DrawText(cSurface& surface, TextFont& font, std::string_view text, int x, int y, uint32_t alignment,
              const Rect& clip, const TextPaint& paint) {
  cSurfaceImpl& s = *surface.impl;
  if (!s.Lock() || text.empty()) return false;
  const Point origin = surface.GetOrigin();
  const Rect frame = MoveRect(clip, origin);
  const Rect visible = frame.Intersect(s.GetClipRect());
  if (visible.IsEmpty()) return false;
  int left = Move(x, origin.x);
  int line = Move(y, origin.y);
  if (alignment & kAlignRight) {
    const int width = font.measure(text).width;
    left -= (alignment & kAlignCentre) == kAlignCentre ? width / 2 : width;
  }
  if ((alignment & kAlignBaseline) != kAlignBaseline) {
    line += (alignment & kAlignBottom) ? -font.metrics().descent : font.metrics().ascent;
  }
  const Rect box = IsPlain(paint) ? visible : InkBox(font, text, left, line, visible);
  return Through(s, box, frame, paint, [&](cSurfaceImpl& target, int dx, int dy, uint32_t pixel) {
    PaintText(target, font, text, left + dx, line + dy, {box.left + dx, box.top + dy, box.right + dx, box.bottom + dy},
              pixel);
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
  struct Placed {
    std::string_view text;
    int x;
    int baseline;
  };
  std::vector<Placed> placed;
  std::vector<Rect> underlines;
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
      const int baseline = int(y) + metrics.ascent;
      for (const TextPiece& piece : line.pieces) placed.push_back({piece.text, int(x) + piece.x, baseline});
      if (line.underlineWidth > 0) {
        const int first = int(x) + line.underlineX;
        underlines.push_back({first, baseline + 1, first + line.underlineWidth, baseline + 2});
      }
    }
    y = bottom;
  }
  Rect ink = clip;
  if (!IsPlain(paint)) {
    ink = {};
    const auto add = [&](const Rect& r) {
      if (!r.IsEmpty()) ink = ink.IsEmpty() ? r : ink.Union(r);
    };
    for (const Placed& p : placed) add(InkBox(font, p.text, p.x, p.baseline, clip));
    for (const Rect& r : underlines) add(Rect{r.left - 1, r.top - 1, r.right + 1, r.bottom + 1}.Intersect(clip));
  }
  Through(s, ink, box, paint, [&](cSurfaceImpl& target, int dx, int dy, uint32_t pixel) {
    const Rect bounds = {ink.left + dx, ink.top + dy, ink.right + dx, ink.bottom + dy};
    for (const Placed& p : placed) PaintText(target, font, p.text, p.x + dx, p.baseline + dy, bounds, pixel);
    for (const Rect& r : underlines) {
      const Rect line = Rect{r.left + dx, r.top + dy, r.right + dx, r.bottom + dy}.Intersect(bounds);
      if (!line.IsEmpty()) FillBoxRaw(target, line.left, line.top, line.Width(), line.Height(), pixel);
    }
  });
  return int(std::min<int64_t>(height, INT32_MAX));
}

}  // namespace vl
