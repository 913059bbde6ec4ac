// What net/ brings into a run.
#pragma once

#include "interpreter/class_table.h"

namespace vl {

void RegisterNetClasses(ClassRegistry& registry);

}  // namespace vl
