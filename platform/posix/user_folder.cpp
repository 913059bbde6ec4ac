#include "platform/posix/user_folder.h"

#include <cstdlib>

namespace vl {

std::string UserConfigFile(std::string_view name) {
  std::string folder;
  // A relative path there is to be ignored.
  if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && config[0] == '/') {
    folder = config;
  } else if (const char* home = std::getenv("HOME"); home && home[0] != 0) {
    folder = std::string(home) + "/.config";
  } else {
    return {};
  }
  return folder.append("/vorlane/").append(name);
}

}  // namespace vl
