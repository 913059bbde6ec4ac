// TextEngine: opens fonts, which measure text and give the ink of its glyphs.
//
// Texts are code page 1252. Glyphs have one bit a pixel: a pixel is inked or not, because pixel value 0
// means transparent and leaves no room for soft edges. Fonts don't kern: a text is as wide as its characters.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/rect.h"

namespace vl {

struct FontDescription {
  int height = -16;  // below 0: em height in pixels; above 0: cell height (ascent + descent); 0: a default
  int weight = 400;  // 100 to 900; 600 and more are bold
  bool italic = false;
  bool underline = false;
  bool strikeOut = false;
  bool fixedPitch = false;
  uint8_t quality = 3;  // kept for the program; glyphs have no soft edges at any quality
  std::string face = "Arial";
  bool operator==(const FontDescription&) const = default;
};

struct FontMetrics {
  int height = 0;   // ascent + descent
  int ascent = 0;   // above the baseline
  int descent = 0;  // below the baseline
  int internalLeading = 0;
  int externalLeading = 0;
  int averageWidth = 0;
  bool hasOutline = false;
  // Valid with hasOutline; pixels, offsets positive.
  int subscriptSize = 0;
  int subscriptOffset = 0;
  int superscriptSize = 0;
  int superscriptOffset = 0;
};

// A horizontal run of inked pixels, relative to the glyph's start on the baseline (y grows downward).
struct GlyphRun {
  int16_t x;
  int16_t y;
  int16_t width;
};

struct Glyph {
  std::vector<GlyphRun> runs;
  Rect box;  // what the runs cover; empty without ink
};

// A line under or through a text, over its whole width; y is the top row, from the baseline down.
struct TextBar {
  int y;
  int thickness;
};

// One font. Glyphs are made when they are first asked for and stay as long as the font.
class TextFont {
 public:
  // Measured widths end here: nothing so far right can be seen, and positions stay small.
  static constexpr int kMaxWidth = 1 << 28;

  TextFont() { advances_.fill(kUnknown); }
  virtual ~TextFont() = default;
  TextFont(const TextFont&) = delete;
  TextFont& operator=(const TextFont&) = delete;

  const FontMetrics& metrics() const { return metrics_; }
  // Lines under and through the text.
  std::span<const TextBar> bars() const { return bars_; }
  // Pixels from one character's start to the next one's; 0 or more.
  int advance(uint8_t character) {
    int& known = advances_[character];
    if (known == kUnknown) known = std::clamp(loadAdvance(character), 0, kMaxWidth);
    return known;
  }
  const Glyph& glyph(uint8_t character) {
    Slot& slot = glyphs_[character];
    if (!slot.isLoaded) {
      slot.isLoaded = true;
      loadGlyph(character, slot.glyph);
      CoverRuns(slot.glyph);
    }
    return slot.glyph;
  }
  // Advance width and cell height of one line.
  Size measure(std::string_view text) {
    int64_t width = 0;
    for (const char c : text) width += advance(uint8_t(c));
    return {int(std::min<int64_t>(width, kMaxWidth)), metrics_.height};
  }

 protected:
  virtual int loadAdvance(uint8_t character) = 0;
  // Adds the runs; the box is worked out from them.
  virtual void loadGlyph(uint8_t character, Glyph& glyph) = 0;

  FontMetrics metrics_;
  std::vector<TextBar> bars_;

 private:
  static constexpr int kUnknown = -1;
  struct Slot {
    bool isLoaded = false;
    Glyph glyph;
  };
  static void CoverRuns(Glyph& glyph) {
    bool isFirst = true;
    for (const GlyphRun& run : glyph.runs) {
      const Rect box = {run.x, run.y, run.x + run.width, run.y + 1};
      glyph.box = isFirst ? box : glyph.box.Union(box);
      isFirst = false;
    }
  }

  std::array<int, 256> advances_;
  std::array<Slot, 256> glyphs_;
};

class TextEngine {
 public:
  virtual ~TextEngine() = default;
  // Never null: an unknown face gives the nearest that is installed. The engine holds at least the 16 fonts that were
  // asked for last, so they need not be held to be used again.
  virtual std::shared_ptr<TextFont> openFont(const FontDescription& description) = 0;
};

}  // namespace vl
