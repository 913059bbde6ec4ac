#include "platform/posix/user_folder.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>

namespace vl {

namespace {

std::string UserFile(const char* variable, const char* inHome, std::string_view name) {
  std::string folder;
  // A relative path there is to be ignored.
  if (const char* set = std::getenv(variable); set && set[0] == '/') {
    folder = set;
  } else if (const char* home = std::getenv("HOME"); home && home[0] != 0) {
    folder = std::string(home) + inHome;
  } else {
    return {};
  }
  return folder.append("/vorlane/").append(name);
}

}  // namespace

std::string UserConfigFile(std::string_view name) { return UserFile("XDG_CONFIG_HOME", "/.config", name); }
std::string UserDataFile(std::string_view name) { return UserFile("XDG_DATA_HOME", "/.local/share", name); }

bool MakeFolder(const std::string& path) {
  for (size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    const std::string part = path.substr(0, end);
    if (mkdir(part.c_str(), 0700) != 0 && errno != EEXIST && end == std::string::npos) return false;
    if (end == std::string::npos) break;
  }
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace vl
