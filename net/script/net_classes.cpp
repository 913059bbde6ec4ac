#include "net/script/net_classes.h"

#include "net/script/downloads.h"

namespace vl {

void RegisterNetClasses(ClassRegistry& registry) { registry.makeDownloads = &Downloads::Make; }

}  // namespace vl
