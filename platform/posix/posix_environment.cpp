#include "platform/posix/posix_environment.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "platform/text/code_page.h"

namespace vl {

std::string PosixEnvironment::computerName() {
  std::array<char, 256> name{};
  if (gethostname(name.data(), name.size() - 1) != 0) return "localhost";
  return Text1252OfUtf8(name.data());
}

std::string PosixEnvironment::userName() {
  std::array<char, 4096> buffer{};
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found && found->pw_name) {
    return Text1252OfUtf8(found->pw_name);
  }
  return "user";
}

bool PosixEnvironment::isFrench() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(name);
    if (value && *value) return value[0] == 'f' && value[1] == 'r';
  }
  return false;
}

bool IsBrowsableUrl(std::string_view url) {
  constexpr size_t kLongest = 2048;
  if (url.size() > kLongest) return false;
  if (std::any_of(url.begin(), url.end(), [](char c) { return uint8_t(c) <= 0x20 || c == 0x7F; })) return false;
  for (const std::string_view scheme : {"http://", "https://", "ftp://", "mailto:"}) {
    if (url.size() <= scheme.size()) continue;
    const bool matches = std::equal(scheme.begin(), scheme.end(), url.begin(),
                                    [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b + 32 : b); });
    if (matches) return true;
  }
  return false;
}

void PosixEnvironment::browseUrl(std::string_view url) {
  if (!IsBrowsableUrl(url)) return;
  const std::string address = Utf8Of1252(url);
  const char* arguments[] = {"xdg-open", address.c_str(), nullptr};
  // Two forks, so that the opener is nobody's child here and is never waited for.
  const pid_t child = fork();
  if (child == 0) {
    setsid();
    if (fork() == 0) {
      const int null = open("/dev/null", O_RDWR);
      if (null >= 0) {
        dup2(null, 0);
        dup2(null, 1);
        dup2(null, 2);
      }
      execvp(arguments[0], const_cast<char* const*>(arguments));
    }
    _exit(0);
  }
  if (child > 0) waitpid(child, nullptr, 0);
}

}  // namespace vl
