// The runtime classes of the 3D engine.
#pragma once

#include "interpreter/class_table.h"

namespace vl {

extern const ClassTable kVectorClass;
extern const ClassTable kMatrixClass;
extern const ClassTable kQuaternionClass;

void RegisterEngine3dClasses(ClassRegistry& registry);

}  // namespace vl
