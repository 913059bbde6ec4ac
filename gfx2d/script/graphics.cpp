#include "gfx2d/script/graphics.h"

#include <algorithm>

#include "gfx2d/script/font_class.h"

namespace vl {

namespace {
// The face of the desktop's own texts in the classic look.
constexpr int kStockFontHeight = -11;
constexpr int kNoScreenDepth = 32;
}  // namespace

CGraphics::CGraphics(CInterpretor& interpreter)
    : library(&interpreter.budget),
      filters(&interpreter.budget),
      screenDepth(interpreter.services.windows ? interpreter.services.windows->screen().depth : kNoScreenDepth),
      images(filters, library, screenDepth),
      interpreter_(interpreter) {}

CGraphics::~CGraphics() = default;

CGraphics& CGraphics::Of(CInterpretor& interpreter) {
  if (!interpreter.graphics) interpreter.graphics = std::make_unique<CGraphics>(interpreter);
  return static_cast<CGraphics&>(*interpreter.graphics);
}

CIFont* CGraphics::DefaultFont() {
  if (!defaultFont_) {
    defaultFont_ = new CIFont(interpreter_, FontDescription{});
    defaultFont_->Hold();
  }
  return defaultFont_;
}

CIFont* CGraphics::StockFont() {
  if (!stockFont_) {
    FontDescription description;
    description.height = kStockFontHeight;
    description.face = "MS Sans Serif";
    stockFont_ = new CIFont(interpreter_, description);
    stockFont_->Hold();
  }
  return stockFont_;
}

void CGraphics::Forget(CIFont* font) {
  if (font == defaultFont_) defaultFont_ = nullptr;
  if (font == stockFont_) stockFont_ = nullptr;
  // Everyone who wrote in the font goes on in the default one, which is made anew when it is the one that dies; at the
  // reset there is nobody to care for.
  for (CIFontContainer* container : containers) {
    if (container->font != font) continue;
    if (interpreter_.terminating) {
      container->font = nullptr;
    } else {
      container->SetFontObject(DefaultFont());
    }
  }
}

}  // namespace vl
