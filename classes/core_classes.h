// The core runtime classes: those that draw nothing.
#pragma once

#include "interpreter/class_table.h"

namespace vl {

extern const ClassTable kMathClass;
extern const ClassTable kStringClass;
extern const ClassTable kProgramClass;
extern const ClassTable kSystemClass;
extern const ClassTable kProcessClass;
extern const ClassTable kBankClass;
extern const ClassTable kBinaryClass;
extern const ClassTable kPointArrayClass;
extern const ClassTable kFileClass;
extern const ClassTable kDiskClass;
extern const ClassTable kIniClass;
extern const ClassTable kRegistryClass;
extern const ClassTable kSharedLibraryClass;
extern const ClassTable kTimerClass;
extern const ClassTable kSerialClass;

void RegisterCoreClasses(ClassRegistry& registry);

}  // namespace vl
