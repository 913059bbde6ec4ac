// CIFont: the runtime class Font. CIFontContainer: the mix-in of everything that writes in a font.
#pragma once

#include <memory>

#include "interpreter/class_base.h"
#include "platform/text_engine.h"

namespace vl {

class CIFont : public CIBaseClassImpl {
 public:
  explicit CIFont(CInterpretor& interpreter);
  // A font made by the runtime: face and size in pixels.
  CIFont(CInterpretor& interpreter, const FontDescription& description);
  void Construct() override;
  void Destroy(bool final) override;

  void GetFaceName();
  void GetHeight();
  void GetWeight();
  void IsItalic();
  void IsUnderline();
  void IsStrikeOut();

  // Opened on first use. A program may hold any number of fonts, so the glyphs belong to the text engine, which lets
  // go of what was not used for long; then it is opened anew.
  std::shared_ptr<TextFont> SharedHandle();
  // Good until a few dozen other fonts have been opened.
  TextFont& Handle();

  FontDescription description;

 private:
  std::weak_ptr<TextFont> handle_;
};

class CIFontContainer {
 public:
  explicit CIFontContainer(CInterpretor& interpreter);
  virtual ~CIFontContainer();
  // Counts the new font up and the old one down.
  virtual void SetFontObject(CIFont* newFont);

  CIFont* font = nullptr;  // never null after construction, until the reset

 private:
  CInterpretor& fontInterpreter_;
};

}  // namespace vl
