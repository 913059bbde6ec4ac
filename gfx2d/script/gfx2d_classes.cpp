#include "gfx2d/script/gfx2d_classes.h"

namespace vl {

void RegisterGfx2dClasses(ClassRegistry& registry) {
  registry.Add(kFontClass);
  registry.Add(kSpriteClass);
  registry.Add(kSurfaceClass);
  registry.Add(kClipboardClass);
  registry.Add(kPrinterClass);
}

}  // namespace vl
