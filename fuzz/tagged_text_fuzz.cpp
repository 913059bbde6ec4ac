// Reads, measures, cuts and writes arbitrary tagged text on small surfaces of every depth, with arbitrary fonts and
// pens. The lines must be those that measuring each of them anew gives.
//
// The first bytes choose the surface, the pen and the font; the rest is the text, and text for a rectangle.
#include <cstdint>
#include <cstdlib>

#include "gfx2d/pattern.h"
#include "gfx2d/surface_library.h"
#include "gfx2d/surface_text.h"
#include "gfx2d/tagged_text_writer.h"
#include "platform/posix/posix_font_finder.h"
#include "platform/text/freetype_text_engine.h"

using namespace vl;

namespace {

constexpr size_t kMaxText = 1 << 12;
constexpr size_t kMaxSlowText = 160;

// One engine for all runs: opening fonts is slow and no part of what is tried here.
TextEngine& Fonts() {
  static PosixFontFinder finder;
  static FreeTypeTextEngine engine(finder);
  return engine;
}

class Choices {
 public:
  Choices(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  uint32_t Byte() { return at_ < size_ ? data_[at_++] : 0; }
  // Small numbers mostly, now and then one at the limits.
  int32_t Number() {
    const uint32_t b = Byte();
    switch (b) {
      case 255:
        return INT32_MAX;
      case 254:
        return INT32_MIN;
      case 253:
        return int32_t(Byte() << 24 | Byte() << 16 | Byte() << 8 | Byte());
      default:
        return int32_t(b) - 32;
    }
  }
  std::string_view Rest() const { return {reinterpret_cast<const char*>(data_ + at_), size_ - at_}; }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
};

class Target final : public TextTarget {
 public:
  void NoteTextChange(const Rect& box) override {
    if (box.IsEmpty()) std::abort();
  }
  bool MayGoOn() override { return true; }
};

void CheckLines(TaggedTextWriter& writer, std::string_view text, int64_t x, int width) {
  text = text.substr(0, text.find('\0')).substr(0, kMaxSlowText);
  const std::vector<std::string_view> lines = writer.WrapText(text);
  size_t next = 0;
  std::string line;
  const auto expect = [&](std::string_view wanted) {
    if (next >= lines.size() || lines[next++] != wanted) std::abort();
  };
  for (const char c : text) {
    line += c;
    if (writer.MeasureText(line).width + x <= width) continue;
    const size_t blank = line.find_last_of(" \t");
    const size_t end = blank != std::string::npos ? blank + 1 : line.size() - 1;
    expect(end > 0 ? line.substr(0, end) : std::string(size_t(width), ' '));
    line.erase(0, end);
    x = 0;
  }
  expect(line);
  if (next != lines.size()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr int kSurfaceDepths[] = {8, 15, 16, 24, 32};
  constexpr const char* kFaces[] = {"Arial", "Times New Roman", "Courier New", "Nobody's Face"};
  Choices choices(data, size);
  MemoryBudget budget{uint64_t{64} << 20};
  SurfaceLibrary library{&budget};
  cSurface surface;
  const int depth = kSurfaceDepths[choices.Byte() % 5];
  const int width = int(choices.Byte()) + 1;
  const int height = int(choices.Byte()) + 1;
  if (!surface.Create(width, height, library.FindPrototype(depth))) return 0;

  TextPen pen;
  const uint32_t flags = choices.Byte();
  pen.wrapping = (flags & 1) == 0;
  pen.paint.antiAlias = (flags & 2) != 0;
  GradientPattern gradient(0xFF, 0xFF0000, int(flags >> 3 & 1));
  if (flags & 4) pen.paint.pattern = &gradient;
  pen.paint.effect = int(choices.Byte() % 10);
  pen.paint.param = choices.Byte() << 24 | choices.Byte();
  pen.paint.colour = choices.Byte();
  pen.penX = choices.Number();
  pen.penY = choices.Number();
  pen.description.face = kFaces[flags >> 4 & 3];
  pen.description.height = (flags & 128) ? choices.Number() : -8 - int(choices.Byte() % 24);
  const uint32_t style = choices.Byte();
  pen.description.underline = (style & 1) != 0;
  pen.description.strikeOut = (style & 2) != 0;
  pen.description.italic = (style & 4) != 0;
  pen.description.weight = (style & 8) ? 700 : 400;
  pen.font = Fonts().openFont(pen.description);
  const TextMargins margins = {choices.Number(), choices.Number(), choices.Number()};
  const uint32_t format = choices.Byte() | choices.Byte() << 8;

  const std::string_view text = choices.Rest().substr(0, kMaxText);
  Target target;
  TextExtent extent;
  {
    TaggedTextWriter writer(surface, Fonts(), target, pen);
    if (pen.wrapping) CheckLines(writer, text, pen.penX, surface.impl->width);
  }
  TaggedTextWriter(surface, Fonts(), target, pen).WriteText(text, extent);
  TaggedTextWriter(surface, Fonts(), target, pen).WriteTextLine(text);
  if (pen.penY > surface.impl->height) std::abort();
  Rect box = {pen.penX, pen.penY, pen.penX / 2 + int(style), pen.penY / 2 + int(style)};
  DrawTextEx(surface, *pen.font, text, box, format, pen.paint, margins);
  Rect measured = box;
  DrawTextEx(surface, *pen.font, text, measured, format | kTextCalculate, pen.paint, margins);
  return 0;
}
