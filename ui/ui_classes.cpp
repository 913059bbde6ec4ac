#include "ui/ui_classes.h"

namespace vl {
void RegisterUiClasses(ClassRegistry&) {}
}  // namespace vl
