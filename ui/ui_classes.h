// The runtime classes of windows and controls.
#pragma once

#include "interpreter/class_table.h"

namespace vl {

void RegisterUiClasses(ClassRegistry& registry);

}  // namespace vl
