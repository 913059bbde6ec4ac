#include "tools/compile_source.h"

#include "host/run.h"

namespace vl {

Compiler::Compiler() : platform(HeadlessOptions{}) {}

bool Compiler::Open(FileSystem& files, const std::string& path) {
  Services services = platform.services();
  services.files = &files;
  param.path = path;
  interpreter = std::make_unique<CInterpretor>(param, services, PlayerClasses());
  return interpreter->Init();
}

}  // namespace vl
