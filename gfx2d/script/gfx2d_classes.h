// The runtime classes of 2D graphics.
#pragma once

#include "interpreter/class_table.h"

namespace vl {

void RegisterGfx2dClasses(ClassRegistry& registry);

}  // namespace vl
