// TextEngine: measures and rasterises text in a font.
//
// Texts are code page 1252. Glyphs have one bit a pixel: a pixel is inked or not, because pixel value 0
// means transparent and leaves no room for soft edges.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/rect.h"

namespace vl {

struct FontDescription {
  int height = -16;  // below 0: em height in pixels; above 0: cell height (ascent + descent); 0: a default
  int weight = 400;  // 100 to 900
  bool italic = false;
  bool underline = false;
  bool strikeOut = false;
  bool fixedPitch = false;
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

// A horizontal run of inked pixels, relative to the text's start on the baseline (y grows downward).
struct GlyphRun {
  int x;
  int y;
  int width;
};

class TextFont {
 public:
  virtual ~TextFont() = default;
  virtual const FontMetrics& metrics() const = 0;
  // Advance width and cell height of one line.
  virtual Size measure(std::string_view text) = 0;
  // Emits every inked run, underline and strike-out included; runs may overlap.
  virtual void rasterise(std::string_view text, const std::function<void(const GlyphRun&)>& emit) = 0;
};

class TextEngine {
 public:
  virtual ~TextEngine() = default;
  // Never null: an unknown face gives the nearest that is installed.
  virtual std::shared_ptr<TextFont> openFont(const FontDescription& description) = 0;
};

}  // namespace vl
