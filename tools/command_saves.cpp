// vorlane saves: looks after the files that applications keep.
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <filesystem>

#include "tools/commands.h"
#include "tools/player/saves.h"

namespace vl {

namespace fs = std::filesystem;

namespace {

int Fail(const std::string& text) {
  PrintError(text);
  return kExitUsage;
}

// Copies what is a file itself; a link may lead anywhere.
bool CopyFiles(const fs::path& from, const fs::path& to, uint64_t& count) {
  std::error_code failed;
  fs::create_directories(to, failed);
  for (fs::recursive_directory_iterator it(from, failed), end; !failed && it != end; it.increment(failed)) {
    if (it->is_symlink(failed) || !it->is_regular_file(failed)) continue;
    const fs::path target = to / it->path().lexically_relative(from);
    fs::create_directories(target.parent_path(), failed);
    fs::copy_file(it->path(), target, fs::copy_options::overwrite_existing, failed);
    if (failed) return false;
    ++count;
  }
  return !failed;
}

int List() {
  for (const SavesEntry& entry : ListSaves()) {
    std::printf("%-32s %5" PRIu64 " files %10" PRIu64 " bytes  %s\n", entry.name.c_str(), entry.files, entry.bytes,
                entry.application.c_str());
  }
  return kExitOk;
}

int Show(const SavesEntry& entry) {
  std::printf("%s\n", entry.folder.c_str());
  const fs::path files = fs::path(entry.folder) / "files";
  std::error_code failed;
  std::vector<std::pair<std::string, uint64_t>> found;
  for (fs::recursive_directory_iterator it(files, failed), end; !failed && it != end; it.increment(failed)) {
    if (it->is_symlink(failed) || !it->is_regular_file(failed)) continue;
    std::string path = "C:\\" + it->path().lexically_relative(files).string();
    for (char& c : path) c = c == '/' ? '\\' : c;
    found.emplace_back(path, it->file_size(failed));
  }
  std::sort(found.begin(), found.end());
  for (const auto& [path, bytes] : found) std::printf("%10" PRIu64 "  %s\n", bytes, path.c_str());
  return kExitOk;
}

}  // namespace

int SavesCommand::Execute() const {
  if (action == Action::List) return List();
  std::error_code failed;
  if (action == Action::Clear && all) {
    for (const SavesEntry& entry : ListSaves()) fs::remove_all(entry.folder, failed);
    return failed ? Fail("not everything could be removed: " + failed.message()) : kExitOk;
  }
  if (application.empty()) return Fail("saves clear needs an application, or --all");
  SavesEntry entry;
  const bool isKept = FindSaves(application, entry);
  const fs::path files = fs::path(entry.folder) / "files";
  uint64_t count = 0;
  if (action == Action::Import) {
    if (entry.name.empty()) return Fail(application + ": no such application");
    if (!fs::is_directory(folder, failed)) return Fail(folder + ": no such folder");
    Saves saves;
    std::string error;
    if (!saves.Open(entry.application, error)) return Fail(error);
    if (!CopyFiles(folder, files, count)) return Fail(entry.folder + ": can't be written");
    std::printf("%" PRIu64 " files\n", count);
    return kExitOk;
  }
  if (!isKept) return Fail(application + ": no files are kept");
  switch (action) {
    case Action::Show:
      return Show(entry);
    case Action::Export:
      if (fs::exists(folder, failed) && !fs::is_empty(folder, failed)) return Fail(folder + ": is not empty");
      if (!CopyFiles(files, folder, count)) return Fail(folder + ": can't be written");
      std::printf("%" PRIu64 " files\n", count);
      return kExitOk;
    default:
      fs::remove_all(entry.folder, failed);
      return failed ? Fail(entry.folder + ": " + failed.message()) : kExitOk;
  }
}

}  // namespace vl
