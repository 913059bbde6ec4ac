// Arbitrary paths on the run's drive: no path that reaches a tree leads out of it, and whatever was made can be found,
// listed and removed by its name.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/run_files.h"

namespace {

using namespace vl;

// A tree that doesn't bear a path which isn't plain.
class WatchedFiles final : public FileSystem {
 public:
  explicit WatchedFiles(bool bearsAnyName) : bearsAnyName_(bearsAnyName) {}
  std::unique_ptr<File> open(std::string_view path, FileMode mode) override { return files_.open(Watch(path), mode); }
  bool exists(std::string_view path) override { return files_.exists(Watch(path)); }
  bool remove(std::string_view path) override { return files_.remove(Watch(path)); }
  bool status(std::string_view path, FileStatus& result) override { return files_.status(Watch(path), result); }
  std::vector<FileEntry> list(std::string_view folder) override { return files_.list(Watch(folder)); }
  bool rename(std::string_view from, std::string_view to) override { return files_.rename(Watch(from), Watch(to)); }

  MemoryFileSystem& Content() { return files_; }

 private:
  std::string_view Watch(std::string_view path) const {
    if (path.starts_with('/')) abort();
    for (size_t at = 0; at <= path.size();) {
      const size_t end = std::min(path.find('/', at), path.size());
      const std::string_view name = path.substr(at, end - at);
      at = end + 1;
      if (name == "..") abort();
      if (bearsAnyName_) continue;
      if (IsDeviceName(name) || name.ends_with('.') || name.ends_with(' ')) abort();
      if (name.find_first_of(std::string_view("\\:*?\"<>|\0\r\n", 11)) != std::string_view::npos) abort();
    }
    return path;
  }

  MemoryFileSystem files_;
  const bool bearsAnyName_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  WatchedFiles below(true);
  WatchedFiles kept(false);
  below.Content().Add("data/Some long name.text", "abc");
  below.Content().Add("game.vlp", "app");
  RunFiles files(&below, &kept);
  std::string last = "game.vlp";
  std::string text(reinterpret_cast<const char*>(data), size);
  for (int steps = 0; steps < 40 && !text.empty(); ++steps) {
    const int op = static_cast<uint8_t>(text[0]);
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string path = text.substr(1, std::max<size_t>(end, 1) - 1);
    text.erase(0, end + 1);
    std::string result;
    FileStatus status;
    switch (op % 8) {
      case 0:
      case 1:
        if (files.open(path, FileMode::Create)) {
          if (!files.status(path, status) || status.isFolder || !files.GetLongPath(path, &result)) break;
          std::string shortPath;
          if (!files.GetShortPath(result, &shortPath) || !files.status(shortPath, status)) abort();
        }
        break;
      case 2:
        files.open(path, FileMode::Read);
        files.open(path, FileMode::ReadWrite);
        break;
      case 3:
        if (files.remove(path) && files.remove(path)) abort();
        break;
      case 4:
        files.rename(last, path);
        break;
      case 5:
        files.SetCurrentFolder(path);
        break;
      case 6:
        files.ShortNames(files.list(path));
        MatchesWildcard(path, last);
        break;
      default:
        JoinPath(SplitPath(path));
        if (files.GetFullPath(path, &result) && (!result.starts_with(kDriveRoot) || result.size() > kMaxPathBytes))
          abort();
        break;
    }
    last = path;
  }
  return 0;
}
