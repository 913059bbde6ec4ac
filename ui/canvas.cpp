#include "ui/canvas.h"

#include <algorithm>

#include "base/system_colors.h"
#include "gfx2d/colour.h"

namespace vl {

namespace {

uint32_t WordOf(uint32_t colour) { return SwapRedBlue(colour) & 0xFFFFFF; }

Rect Inside(const Rect& box, int by = 1) { return {box.left + by, box.top + by, box.right - by, box.bottom - by}; }

}  // namespace

void Canvas::Fill(const Rect& box, uint32_t colour) {
  const Rect b = box.Intersect(clip_);
  for (int y = b.top; y < b.bottom && b.left < b.right; ++y) {
    std::fill(Line(y) + b.left, Line(y) + b.right, WordOf(colour));
  }
}

void Canvas::Edge(const Rect& box, uint32_t leftTop, uint32_t rightBottom) {
  if (box.IsEmpty()) return;
  Fill({box.left, box.top, box.right - 1, box.top + 1}, leftTop);
  Fill({box.left, box.top, box.left + 1, box.bottom - 1}, leftTop);
  Fill({box.right - 1, box.top, box.right, box.bottom}, rightBottom);
  Fill({box.left, box.bottom - 1, box.right, box.bottom}, rightBottom);
}

void Canvas::RaisedFrame(const Rect& box) {
  Edge(box, SystemColor(kColorLight), SystemColor(kColorDarkShadow));
  Edge(Inside(box), SystemColor(kColorButtonHighlight), SystemColor(kColorButtonShadow));
}

void Canvas::SunkenFrame(const Rect& box) {
  Edge(box, SystemColor(kColorButtonShadow), SystemColor(kColorButtonHighlight));
  Edge(Inside(box), SystemColor(kColorDarkShadow), SystemColor(kColorLight));
}

void Canvas::PushButton(const Rect& box, bool pressed) {
  if (pressed) {
    Edge(box, SystemColor(kColorDarkShadow), SystemColor(kColorButtonHighlight));
    Edge(Inside(box), SystemColor(kColorButtonShadow), SystemColor(kColorLight));
  } else {
    Edge(box, SystemColor(kColorButtonHighlight), SystemColor(kColorDarkShadow));
    Edge(Inside(box), SystemColor(kColorLight), SystemColor(kColorButtonShadow));
  }
  Fill(Inside(box, 2), SystemColor(kColorButtonFace));
}

void Canvas::Checker(const Rect& box, uint32_t even, uint32_t odd) {
  const Rect b = box.Intersect(clip_);
  for (int y = b.top; y < b.bottom; ++y) {
    for (int x = b.left; x < b.right; ++x) Line(y)[x] = WordOf((x + y) % 2 ? odd : even);
  }
}

void Canvas::Text(TextFont& font, int x, int y, std::string_view text, uint32_t colour) {
  const uint32_t word = WordOf(colour);
  const int baseline = y + font.metrics().ascent;
  for (const char c : text) {
    if (x >= clip_.right) return;
    for (const GlyphRun& run : font.glyph(static_cast<uint8_t>(c)).runs) {
      const int row = baseline + run.y;
      if (row < clip_.top || row >= clip_.bottom) continue;
      const int from = std::max(x + run.x, clip_.left);
      const int to = std::min(x + run.x + run.width, clip_.right);
      if (from < to) std::fill(Line(row) + from, Line(row) + to, word);
    }
    x += font.advance(static_cast<uint8_t>(c));
  }
}

void Canvas::Sign(int x, int y, int width, std::initializer_list<uint32_t> rows, uint32_t colour) {
  for (const uint32_t row : rows) {
    for (int column = 0; column < width; ++column) {
      const bool inked = (row >> (width - 1 - column) & 1) != 0;
      if (inked && clip_.Contains(x + column, y)) Line(y)[x + column] = WordOf(colour);
    }
    ++y;
  }
}

void Canvas::Picture(int x, int y, int width, int height, const uint32_t* words, const uint8_t* opaque) {
  const Rect b = Rect{x, y, x + width, y + height}.Intersect(clip_);
  for (int row = b.top; row < b.bottom; ++row) {
    for (int column = b.left; column < b.right; ++column) {
      const ptrdiff_t at = ptrdiff_t{row - y} * width + (column - x);
      if (!opaque || opaque[at]) Line(row)[column] = words[at] & 0xFFFFFF;
    }
  }
}

}  // namespace vl
