// The core runtime classes: those that have nothing to do with graphics.
#pragma once

#include "interpreter/class_table.h"

namespace vl {

extern const ClassTable kMathClass;
extern const ClassTable kStringClass;
extern const ClassTable kProgramClass;
extern const ClassTable kSystemClass;
extern const ClassTable kProcessClass;
extern const ClassTable kBankClass;

void RegisterCoreClasses(ClassRegistry& registry);

}  // namespace vl
