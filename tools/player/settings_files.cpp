// Where settings, memory and screenshots lie, and their reading and writing.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tools/application_source.h"
#include "tools/player/settings.h"

namespace vl {

namespace fs = std::filesystem;

namespace {

std::string Variable(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

// A folder that XDG names, or one below the home folder.
std::string FolderOf(const char* variable, const char* belowHome) {
  const std::string given = Variable(variable);
  // Relative paths in these variables are to be ignored.
  if (!given.empty() && given[0] == '/') return given;
  const std::string home = Variable("HOME");
  return home.empty() ? "" : home + "/" + belowHome;
}

std::string InFolder(const std::string& folder, const char* name) { return folder.empty() ? "" : folder + name; }

}  // namespace

std::string SettingsPath() { return InFolder(FolderOf("XDG_CONFIG_HOME", ".config"), "/vorlane/settings.toml"); }
std::string MemoryPath() { return InFolder(FolderOf("XDG_STATE_HOME", ".local/state"), "/vorlane/memory.toml"); }

std::string ScreenshotFolder(const Settings& settings) {
  if (!settings.screenshots.empty()) {
    const bool isHome = settings.screenshots.rfind("~/", 0) == 0;
    return isHome ? Variable("HOME") + settings.screenshots.substr(1) : settings.screenshots;
  }
  const std::string pictures = FolderOf("XDG_PICTURES_DIR", "Pictures");
  return pictures.empty() ? "." : pictures;
}

bool LoadSettings(Settings& settings, std::string& error) {
  const std::string path = SettingsPath();
  std::error_code failed;
  if (path.empty() || !fs::exists(path, failed)) return true;
  std::string text;
  if (!ReadWholeFile(path, text, error)) return false;
  if (ParseSettings(text, settings, error)) return true;
  error = path + ": " + error;
  return false;
}

Memory LoadMemory() {
  std::string text;
  std::string error;
  const std::string path = MemoryPath();
  if (path.empty() || !ReadWholeFile(path, text, error)) return {};
  return ParseMemory(text);
}

bool SaveMemory(const Memory& memory) {
  const std::string path = MemoryPath();
  if (path.empty()) return false;
  std::error_code failed;
  fs::create_directories(fs::path(path).parent_path(), failed);
  const std::string fresh = path + ".new";
  {
    std::ofstream file(fresh, std::ios::binary);
    file << FormatMemory(memory);
    if (!file.flush()) return false;
  }
  fs::rename(fresh, path, failed);
  return !failed;
}

}  // namespace vl
