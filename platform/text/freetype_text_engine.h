// FreeTypeTextEngine: the text engine over FreeType, one bit a pixel, hinted, the same pixels on every machine
// that has the same font files.
//
// Metrics are those that programs of the period were laid out with: for a height below 0 the em, above 0 the
// cell; ascent and descent from the font's Windows metrics. Weights from 600 on take the bold file. What the
// files lack is made: bold by drawing one pixel wider, italic by slanting.
#pragma once

#include <list>
#include <memory>

#include "platform/text/font_finder.h"
#include "platform/text_engine.h"

namespace vl {

class FreeTypeTextEngine final : public TextEngine {
 public:
  // `finder` outlives the engine; fonts may outlive both.
  explicit FreeTypeTextEngine(FontFinder& finder);
  ~FreeTypeTextEngine() override;
  std::shared_ptr<TextFont> openFont(const FontDescription& description) override;

 private:
  struct Library;
  struct Opened {
    FontDescription description;
    std::shared_ptr<TextFont> font;
  };
  static FontDescription Levelled(FontDescription description);
  std::shared_ptr<TextFont> Make(const FontDescription& description);

  FontFinder& finder_;
  std::shared_ptr<Library> library_;
  std::list<Opened> recent_;  // newest first
};

}  // namespace vl
