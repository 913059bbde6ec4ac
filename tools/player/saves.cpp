#include "tools/player/saves.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/posix/user_folder.h"

namespace vl {

namespace fs = std::filesystem;

namespace {

// FNV-1a.
uint32_t HashOf(const std::string& text) {
  uint32_t hash = 2166136261u;
  for (const char c : text) hash = (hash ^ static_cast<uint8_t>(c)) * 16777619u;
  return hash;
}

std::string NameOf(const std::string& applicationPath) {
  std::string name = fs::path(applicationPath).stem().string().substr(0, 40);
  for (char& c : name) {
    const bool isPlain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    if (!isPlain) c = '-';
  }
  char hash[16];
  std::snprintf(hash, sizeof hash, "-%08x", HashOf(applicationPath));
  return name + hash;
}

SavesEntry Read(const fs::path& folder) {
  SavesEntry entry;
  entry.name = folder.filename().string();
  entry.folder = folder.string();
  std::ifstream file(folder / "application", std::ios::binary);
  std::getline(file, entry.application, '\0');
  while (entry.application.ends_with('\n')) entry.application.pop_back();
  std::error_code failed;
  for (fs::recursive_directory_iterator it(folder / "files", failed), end; !failed && it != end; it.increment(failed)) {
    if (it->is_symlink(failed) || !it->is_regular_file(failed)) continue;
    ++entry.files;
    entry.bytes += it->file_size(failed);
  }
  return entry;
}

}  // namespace

bool Saves::Open(const std::string& applicationPath, std::string& error) {
  const std::string data = UserDataFile("saves");
  if (data.empty()) {
    error = "--keep-files: neither HOME nor XDG_DATA_HOME is set";
    return false;
  }
  folder_ = data + "/" + NameOf(applicationPath);
  if (!MakeFolder(FilesFolder())) {
    error = folder_ + ": can't be made";
    return false;
  }
  std::ofstream(folder_ + "/application", std::ios::binary) << applicationPath << '\n';
  return true;
}

void Saves::Close() {
  if (folder_.empty()) return;
  std::error_code failed;
  if (fs::is_empty(FilesFolder(), failed)) fs::remove_all(folder_, failed);
  folder_.clear();
}

std::vector<SavesEntry> ListSaves() {
  std::vector<SavesEntry> entries;
  std::error_code failed;
  for (const fs::directory_entry& folder : fs::directory_iterator(UserDataFile("saves"), failed)) {
    if (folder.is_directory(failed)) entries.push_back(Read(folder.path()));
  }
  std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
  return entries;
}

bool FindSaves(const std::string& application, SavesEntry& entry) {
  for (SavesEntry& kept : ListSaves()) {
    if (kept.name != application) continue;
    entry = std::move(kept);
    return true;
  }
  std::error_code failed;
  entry = {};
  if (!fs::exists(application, failed)) return false;
  const std::string path = fs::weakly_canonical(application, failed).string();
  const fs::path folder = fs::path(UserDataFile("saves")) / NameOf(path);
  const bool isKept = fs::is_directory(folder, failed);
  entry = Read(folder);
  entry.application = path;
  return isKept;
}

}  // namespace vl
