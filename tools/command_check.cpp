// vorlane check: compiles source files and tells what is wrong with them.
#include <cstdio>

#include "tools/application_source.h"
#include "tools/commands.h"
#include "tools/compile_source.h"

namespace vl {

int CheckCommand::Execute() const {
  int status = kExitOk;
  for (const std::string& source : sources) {
    ApplicationFiles files = OpenApplication(source);
    if (files.error.empty() && !files.path.empty())
      files.error = source + ": not a source file (.vlq) or project folder";
    if (!files.error.empty()) {
      PrintError(files.error);
      status = kExitUnreadable;
      continue;
    }
    MemoryFileSystem memory;
    for (const auto& [name, bytes] : files.files) memory.Add(name, bytes);
    Compiler compiler;
    if (!compiler.Open(memory, files.mainName)) {
      PrintError(source + ": can't be read");
      status = kExitUnreadable;
      continue;
    }
    if (compiler.Compile()) continue;
    const CIError& error = compiler.interpreter->lastError;
    // A single file is named as it was given; of a project, the element is.
    const bool single = files.files.size() == 1 && source.size() > 4 && source.substr(source.size() - 4) == ".vlq";
    std::fprintf(stderr, "%s:%u:%u: error #%u%s%s\n", single ? source.c_str() : error.sourceName.c_str(),
                 error.line + 1, error.column + 1, error.code, error.detail.empty() ? "" : ": ", error.detail.c_str());
    if (status == kExitOk) status = kExitError;
  }
  return status;
}

}  // namespace vl
