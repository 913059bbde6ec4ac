#include "host/desktop/shell/shell_painter.h"

#include "gfx2d/present.h"

namespace vl {

using namespace shell_colours;

ShellPainter::ShellPainter(TextEngine& text) : library_(&budget_) {
  FontDescription description;
  description.height = -13;
  font_ = text.openFont(description);
  lineHeight_ = font_ ? font_->metrics().height + 1 : 16;
}

int ShellPainter::WidthOf(std::string_view text) const {
  if (!font_) return 0;
  Rect box;
  MeasureTextEx(*font_, text, box, kTextSingleLine | kTextNoPrefix, {});
  return box.Width();
}

int ShellPainter::HeightOf(std::string_view text, int width) const {
  if (!font_) return 0;
  Rect box{0, 0, width, 0};
  return MeasureTextEx(*font_, text, box, kTextWordBreak | kTextNoPrefix, {});
}

bool ShellPainter::Begin(int width, int height) {
  width_ = width;
  height_ = height;
  return surface_.Create(width, height, library_.FindPrototype(32)) && surface_.Fill(0, 0, width, height, kFace);
}

void ShellPainter::Fill(const Rect& box, Colour colour) {
  surface_.Fill(box.left, box.top, box.Width(), box.Height(), colour);
}

void ShellPainter::Edge(const Rect& box, bool raised) {
  const auto frame = [&](const Rect& r, Colour upper, Colour lower) {
    Fill({r.left, r.top, r.right - 1, r.top + 1}, upper);
    Fill({r.left, r.top, r.left + 1, r.bottom - 1}, upper);
    Fill({r.left, r.bottom - 1, r.right, r.bottom}, lower);
    Fill({r.right - 1, r.top, r.right, r.bottom}, lower);
  };
  const Rect inner{box.left + 1, box.top + 1, box.right - 1, box.bottom - 1};
  frame(box, raised ? kLight : kShadow, raised ? kDark : kLight);
  frame(inner, raised ? kFace : kDark, raised ? kShadow : kFace);
}

void ShellPainter::Text(std::string_view text, const Rect& box, Colour colour, uint32_t format) {
  if (!font_) return;
  Rect place = box;
  TextPaint paint;
  paint.colour = colour;
  DrawTextEx(surface_, *font_, text, place, format | kTextNoPrefix, paint, {});
}

void ShellPainter::Button(const Rect& box, std::string_view label, bool isFocused) {
  Rect face = box;
  if (isFocused) {
    Fill(box, kText);
    face = {box.left + 1, box.top + 1, box.right - 1, box.bottom - 1};
  }
  Fill(face, kFace);
  Edge(face, true);
  Text(label, box, kText, kTextCentre | kTextVerticalCentre | kTextSingleLine);
}

WindowOverlay ShellPainter::Finish(int x, int y) {
  WindowOverlay overlay;
  overlay.x = x;
  overlay.y = y;
  overlay.width = width_;
  overlay.height = height_;
  overlay.pixels.resize(static_cast<size_t>(width_) * static_cast<size_t>(height_));
  SurfaceToWords(*surface_.impl, {0, 0, width_, height_}, overlay.pixels.data(), width_);
  return overlay;
}

}  // namespace vl
