#include "gfx2d/script/gfx2d_classes.h"

namespace vl {
void RegisterGfx2dClasses(ClassRegistry&) {}
}  // namespace vl
