// vorlane info: what an application file holds, or what this player was built with.
#include <cstdio>

#include "host/run.h"
#include "include/vorlane.h"
#include "tools/commands.h"
#include "tools/project/project.h"

namespace vl {

int InfoCommand::Execute() const {
  if (build) {
    std::printf("Vorlane %s\n", VL_VERSION);
    std::printf("back ends: desktop (SDL2), headless, embed\n");
    std::printf("text: FreeType, fontconfig\n");
    std::string missing;
    int built = 0;
    for (uint32_t id = 1; id <= kClassCount; ++id) {
      if (PlayerClasses().tables[id]) {
        ++built;
      } else {
        missing += missing.empty() ? "" : ", ";
        missing += FactsOfClass(id).name;
      }
    }
    std::printf("classes: %d of %u\n", built, kClassCount);
    if (!missing.empty()) std::printf("classes to come: %s\n", missing.c_str());
    return kExitOk;
  }
  const Description description = DescribeApplication(application);
  if (!description.error.empty()) {
    PrintError(description.error);
    return kExitUnreadable;
  }
  std::fputs((json ? description.json : description.text).c_str(), stdout);
  if (json) std::fputc('\n', stdout);
  return kExitOk;
}

}  // namespace vl
