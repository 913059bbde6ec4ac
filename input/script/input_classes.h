// The runtime classes of the keyboard and of game input.
#pragma once

#include "interpreter/class_table.h"

namespace vl {

extern const ClassTable kKeyboardClass;
extern const ClassTable kGameInputClass;

void RegisterInputClasses(ClassRegistry& registry);

}  // namespace vl
