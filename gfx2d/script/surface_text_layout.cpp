// Surface: text at the pen, which TaggedTextWriter lays out, and plain text in a rectangle.
#include "gfx2d/colour.h"
#include "gfx2d/script/graphics.h"
#include "gfx2d/script/surface_class.h"
#include "gfx2d/surface_text.h"
#include "gfx2d/tagged_text_writer.h"

namespace vl {

namespace {

constexpr uint32_t kLineFormat = 0x8E0;
constexpr uint32_t kWrapFormat = 0x28D0;
constexpr int kTabLength = 8;
constexpr int kPointsPerInch = 72;

int MulDiv(int64_t value, int64_t by, int64_t divisor) {
  return static_cast<int>((value * by + divisor / 2) / divisor);
}

}  // namespace

class CISurface::WriteTarget final : public TextTarget {
 public:
  explicit WriteTarget(CISurface& owner) : owner_(owner) {}
  void NoteTextChange(const Rect& box) override { owner_.NoteChange(box.left, box.top, box.right, box.bottom); }
  bool MayGoOn() override { return !owner_.interpreter.param.stop.load(std::memory_order_relaxed); }

 private:
  CISurface& owner_;
};

TextPaint CISurface::PaintOfText() const {
  TextPaint paint;
  paint.colour = penColor;
  paint.effect = drawMode_;
  paint.param = static_cast<uint32_t>(drawParam_);
  paint.antiAlias = antiAlias_;
  return paint;
}

template <class F>
void CISurface::WriteAtPen(F&& write) {
  TextPen pen;
  pen.penX = penX;
  pen.penY = penY;
  pen.wrapping = wrapping_;
  pen.backColor = backColor;
  pen.paint = PaintOfText();
  pen.paint.pattern = penPattern_.get();
  pen.description = font->description;
  pen.font = font->SharedHandle();
  WriteTarget target(*this);
  TaggedTextWriter writer(surface, *interpreter.services.text, target, pen);
  write(writer);
  penX = pen.penX;
  penY = pen.penY;
}

void CISurface::WriteText(std::string_view text, int& writtenWidth, int& writtenHeight) {
  TextExtent extent;
  WriteAtPen([&](TaggedTextWriter& writer) { writer.WriteText(text, extent); });
  writtenWidth = extent.width;
  writtenHeight = extent.height;
}

void CISurface::WriteTextLine(std::string_view text) {
  WriteAtPen([&](TaggedTextWriter& writer) { writer.WriteTextLine(text); });
}

void CISurface::Write() {
  std::string text;
  for (int i = 0; i < interpreter.GetArgCount(); ++i) {
    if (interpreter.IsArgDefault(i)) continue;
    text += interpreter.GetArgString(i);
    if (text.size() > limits::kMaxTextBytes) text.resize(limits::kMaxTextBytes);
  }
  int w = 0;
  int h = 0;
  WriteText(text, w, h);
}

void CISurface::WriteLn() {
  if (interpreter.GetArgCount() == 0) WriteTextLine("");
  for (int i = 0; i < interpreter.GetArgCount(); ++i) {
    const std::string text = interpreter.IsArgDefault(i) ? "" : interpreter.GetArgString(i);
    WriteTextLine(text);
  }
}

void CISurface::DrawText() {
  const std::string text = interpreter.IsArgDefault(0) ? "" : interpreter.GetArgString(0);
  const auto near = [](int32_t v) { return std::clamp(v, -limits::kMaxSurfaceSide, limits::kMaxSurfaceSide); };
  const int x = near(IntOr(1, penX));
  const int y = near(IntOr(2, penY));
  const int w = near(IntOr(3, width));
  const int h = near(IntOr(4, height));
  const uint32_t format = IntOr(5, 0) ? kWrapFormat : kLineFormat;
  TextMargins margins;
  margins.tabLength = std::clamp(IntOr(6, kTabLength), 0, 255);
  if (text.empty()) return;
  const TextPaint paint = PaintOfText();
  Rect measured{x, y, x + w, y + h};
  if (DrawTextEx(surface, font->Handle(), text, measured, format | kTextCalculate, paint, margins) == 0) return;
  NoteChange(x, y, x + w, y + h);
  Rect box{x, y, x + w, y + h};
  DrawTextEx(surface, font->Handle(), text, box, format, paint, margins);
  penX = measured.right < 0 || measured.right > width ? 0 : measured.right;
  penY = measured.bottom < 0 || measured.bottom > height ? 0 : measured.bottom;
}

// The pixel size read as points and turned into pixels at the screen's resolution.
Size CISurface::StringSize() {
  if (interpreter.GetArg(0)->type != VT_STRING) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  const std::string_view text = interpreter.GetArg(0)->StringView();
  if (text.empty() || !surface.IsValid()) return {};
  const Size size = font->Handle().measure(text);
  const int dpi = interpreter.services.windows ? interpreter.services.windows->screen().dotsPerInch : 96;
  return {MulDiv(size.width, dpi, kPointsPerInch), MulDiv(size.height, dpi, kPointsPerInch)};
}

void CISurface::GetStringWidth() { interpreter.GetResult().SetInt(StringSize().width); }
void CISurface::GetStringHeight() { interpreter.GetResult().SetInt(StringSize().height); }
void CISurface::SetWrapping() { wrapping_ = IntOr(0, 1) != 0; }
void CISurface::IsWrapping() { interpreter.GetResult().SetInt(wrapping_); }
void CISurface::GetFont() { interpreter.GetResult().SetObject(font); }

void CISurface::SetFont() {
  CIFont* chosen = nullptr;
  FontDescription description;
  for (int i = 0; i < interpreter.GetArgCount(); ++i) {
    const CValue& value = *interpreter.GetArg(i);
    if (value.IsObjectOfClass(CLASS_FONT)) {
      chosen = static_cast<CIFont*>(value.data.object);
    } else if (value.type == VT_STRING) {
      description.face = value.GetString();
    } else if (!value.IsDefault()) {
      description.height = -std::clamp(value.GetInt(), 0, limits::kMaxSurfaceSide);
    }
  }
  SetFontObject(chosen ? chosen : new CIFont(interpreter, description));
}

}  // namespace vl
