// Compiling without running, for the commands that look at a program.
#pragma once

#include <memory>
#include <string>

#include "interpreter/interpretor.h"
#include "platform/headless/headless_platform.h"
#include "platform/memory_files.h"

namespace vl {

// An interpreter over a headless platform that has everything a compilation needs.
struct Compiler {
  Compiler();
  // An application of packed files, or one on the disk below `files`. False: it can't be read.
  bool Open(FileSystem& files, const std::string& path);
  bool Compile() { return interpreter->CompileSources(true); }

  HeadlessPlatform platform;
  CThreadParam param;
  std::unique_ptr<CInterpretor> interpreter;
};

}  // namespace vl
