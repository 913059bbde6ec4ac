// Surface: text at the pen, with wrapping and scrolling, and plain text in a rectangle.
#include "gfx2d/colour.h"
#include "gfx2d/script/graphics.h"
#include "gfx2d/script/surface_class.h"
#include "gfx2d/surface_text.h"

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

// Cuts the text into lines by the surface's width, from the pen position on. Widths of characters add up: the
// text engine doesn't kern, so measuring one more character is measuring the growing line.
std::vector<CISurface::TextLine> CISurface::WrapText(std::string_view text) {
  TextFont& handle = font->Handle();
  std::vector<TextLine> lines;
  if (!wrapping_) {
    lines.push_back({std::string(text), handle.measure(text).width});
    return lines;
  }
  int advance[256];
  for (int c = 0; c < 256; ++c) {
    const char character = static_cast<char>(c);
    advance[c] = c ? handle.measure({&character, 1}).width : 0;
  }
  const auto widthOf = [&](std::string_view piece) {
    int sum = 0;
    for (const char c : piece) sum += advance[static_cast<unsigned char>(c)];
    return sum;
  };
  std::string line;
  int lineWidth = 0;
  int x = penX;
  for (const char c : text) {
    line += c;
    lineWidth += advance[static_cast<unsigned char>(c)];
    if (lineWidth + x <= width) continue;
    // Behind the last blank, or before the last two characters when there is none.
    size_t breakAt = line.find_last_of(" \t");
    size_t next = 0;
    if (breakAt == std::string::npos) {
      next = line.size() >= 2 ? line.size() - 1 : 0;
    } else {
      next = breakAt + 1;
    }
    std::string head = line.substr(0, next);
    // A single character that doesn't fit behind the pen goes to the next line; at its start it must stay.
    if (head.empty() && x == 0) {
      head = line;
      next = line.size();
    }
    std::string rest = line.substr(next);
    lines.push_back({head, widthOf(head)});
    line = std::move(rest);
    lineWidth = widthOf(line);
    x = 0;
  }
  lines.push_back({line, lineWidth});
  return lines;
}

// Makes room for a line below the pen: scrolls by what is missing.
void CISurface::ScrollFor(int lineHeight) {
  if (penY <= 0 || penY + lineHeight <= height) return;
  const int excess = penY + lineHeight - height;
  NoteChange(0, 0, width, height);
  if (excess < height) surface.MoveBox(0, excess, 0, 0, width, height - excess);
  const int filled = std::min(excess, height);
  surface.Fill(0, height - filled, width, filled, backColor);
  penY = std::max(penY - excess, 0);
}

void CISurface::DrawTextLine(const TextLine& line, int lineHeight) {
  ScrollFor(lineHeight);
  if (line.text.empty()) return;
  TextFont& handle = font->Handle();
  const Rect clip{penX, penY, std::min(width, penX + line.width), std::min(height, penY + lineHeight)};
  NoteChange(clip.left, clip.top, clip.right, clip.bottom);
  TextPaint paint;
  paint.colour = penColor;
  paint.effect = drawMode_;
  paint.param = static_cast<uint32_t>(drawParam_);
  paint.antiAlias = antiAlias_;
  vl::DrawText(surface, handle, line.text, penX, penY + handle.metrics().ascent, clip, paint);
}

void CISurface::WriteText(std::string_view text, int& writtenWidth, int& writtenHeight) {
  const int lineHeight = font->Handle().metrics().height;
  const auto lines = WrapText(text);
  writtenWidth = writtenHeight = 0;
  penX = std::clamp(penX, -limits::kMaxSurfaceSide, width);
  penY = std::clamp(penY, -limits::kMaxSurfaceSide, height);
  for (size_t i = 0; i < lines.size(); ++i) {
    DrawTextLine(lines[i], lineHeight);
    writtenWidth = std::max(writtenWidth, lines[i].width);
    writtenHeight += lineHeight;
    if (i + 1 < lines.size()) {
      penX = 0;
      penY = std::min(penY + lineHeight, height);
      continue;
    }
    penX = std::min(penX + lines[i].width, width);
    if (wrapping_ && penX >= width) {
      penX = 0;
      penY = std::min(penY + lineHeight, height);
    }
  }
}

void CISurface::WriteTextLine(std::string_view text) {
  const int lineHeight = font->Handle().metrics().height;
  penX = std::clamp(penX, -limits::kMaxSurfaceSide, width);
  penY = std::clamp(penY, -limits::kMaxSurfaceSide, height);
  for (const TextLine& line : WrapText(text)) {
    DrawTextLine(line, lineHeight);
    penX = 0;
    penY = std::min(penY + lineHeight, height);
  }
}

void CISurface::Write() {
  std::string text;
  for (int i = 0; i < interpreter.GetArgCount(); ++i) {
    if (!interpreter.IsArgDefault(i)) text += interpreter.GetArgString(i);
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
  TextPaint paint;
  paint.colour = penColor;
  paint.effect = drawMode_;
  paint.param = static_cast<uint32_t>(drawParam_);
  paint.antiAlias = antiAlias_;
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
  const Size size = font->Handle().measure(interpreter.GetArg(0)->StringView());
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
