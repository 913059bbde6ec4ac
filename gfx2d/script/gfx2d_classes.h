// The runtime classes of 2D graphics.
#pragma once

#include "interpreter/class_table.h"

namespace vl {

extern const ClassTable kFontClass;
extern const ClassTable kSpriteClass;
extern const ClassTable kSurfaceClass;
extern const ClassTable kClipboardClass;
extern const ClassTable kPrinterClass;

void RegisterGfx2dClasses(ClassRegistry& registry);

}  // namespace vl
