#include "engine3d/script/engine3d_classes.h"

namespace vl {

void RegisterEngine3dClasses(ClassRegistry& registry) {
  registry.Add(kVectorClass);
  registry.Add(kMatrixClass);
  registry.Add(kQuaternionClass);
}

}  // namespace vl
