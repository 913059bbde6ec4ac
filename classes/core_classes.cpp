#include "classes/core_classes.h"

namespace vl {

void RegisterCoreClasses(ClassRegistry& registry) {
  for (const ClassTable* table : {&kMathClass, &kStringClass, &kProgramClass, &kSystemClass, &kProcessClass,
                                  &kBankClass, &kBinaryClass, &kPointArrayClass, &kFileClass, &kDiskClass, &kIniClass,
                                  &kRegistryClass, &kSharedLibraryClass, &kTimerClass, &kSerialClass}) {
    registry.Add(*table);
  }
}

}  // namespace vl
