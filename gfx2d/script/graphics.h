// CGraphics: what the runtime classes of 2D graphics share in one run: the surface library with its palettes, and
// the default and stock fonts with the list of those who use fonts.
#pragma once

#include <vector>

#include "gfx2d/images/image_banks.h"
#include "gfx2d/images/image_filter_list.h"
#include "gfx2d/surface_library.h"
#include "interpreter/interpretor.h"

namespace vl {

class CIFont;
class CIFontContainer;

class CGraphics : public CSubsystem {
 public:
  explicit CGraphics(CInterpretor& interpreter);
  ~CGraphics() override;
  // Of this run; made on first use.
  static CGraphics& Of(CInterpretor& interpreter);

  SurfaceLibrary library;
  ImageFilterList filters;
  const int screenDepth;  // what a surface gets that asks for no depth
  ImageBanks images;

  // Both made on first need; never null. Destroyed with the objects at the reset.
  CIFont* DefaultFont();
  CIFont* StockFont();
  std::vector<CIFontContainer*> containers;
  // Called by the fonts themselves when they die.
  void Forget(CIFont* font);

 private:
  CInterpretor& interpreter_;
  CIFont* defaultFont_ = nullptr;
  CIFont* stockFont_ = nullptr;
};

}  // namespace vl
