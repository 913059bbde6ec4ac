// Disk.ListFiles: the walk over directories.
#include <algorithm>

#include "classes/code_page.h"
#include "classes/disk.h"
#include "platform/device_queue.h"

namespace vl {

namespace {

enum ListFlag : uint32_t {
  kNoFiles = 0xABCD0001,
  kNoDirs = 0xABCD0002,
  kSort = 0xABCD0004,
  kSubDirs = 0xABCD0008,
  kShortNames = 0xABCD0010,
};
constexpr size_t kMaxDirectoryBytes = 259;
constexpr int32_t kEscape = 27;
// Directories inside one another; the tree of an application has no more.
constexpr int kMaxDepth = 64;

std::vector<std::string> SplitPatterns(std::string_view list) {
  std::vector<std::string> patterns;
  while (!list.empty()) {
    const size_t comma = std::min(list.find(','), list.size());
    if (comma > 0) patterns.emplace_back(list.substr(0, comma));
    list.remove_prefix(std::min(comma + 1, list.size()));
  }
  return patterns;
}

bool MatchesOne(const std::string& name, const std::vector<std::string>& patterns) {
  return std::any_of(patterns.begin(), patterns.end(),
                     [&](const std::string& pattern) { return MatchesWildcard(name, pattern); });
}

class FileLister {
 public:
  explicit FileLister(CInterpretor& interpreter) : interpreter_(interpreter), files_(*interpreter.services.disk) {}

  std::vector<std::string> include{"*.*"};
  std::vector<std::string> exclude;
  bool noFiles = false;
  bool noDirs = false;
  bool sort = false;
  bool subDirs = false;
  bool shortNames = false;
  std::vector<std::string> names;

  // False when the person holds Esc down.
  bool Walk(const std::string& folder, int depth) {
    const std::vector<FileEntry> entries = files_.list(folder);
    const std::vector<std::string> shorts = shortNames ? files_.ShortNames(entries) : std::vector<std::string>();
    for (size_t i = 0; i < entries.size(); ++i) {
      if (IsEscHeld()) return false;
      const std::string& name = entries[i].name;
      if (MatchesOne(name, exclude)) continue;
      const std::string shown = shortNames && !shorts[i].empty() ? shorts[i] : name;
      if (entries[i].status.isFolder) {
        if (!noDirs) Add(shown + '\\');
        const std::string inside = folder.ends_with('\\') ? folder + name : folder + '\\' + name;
        if (subDirs && depth < kMaxDepth && !Walk(inside, depth + 1)) return false;
      } else if (!noFiles && MatchesOne(name, include)) {
        Add(shown);
      }
    }
    return true;
  }

 private:
  void Add(const std::string& name) {
    auto place = names.end();
    if (sort) {
      place = std::upper_bound(names.begin(), names.end(), name, [](const std::string& a, const std::string& b) {
        return CompareIgnoringCase(a, b) < 0;
      });
    }
    names.insert(place, name);
  }

  bool IsEscHeld() {
    DeviceQueue* const devices = interpreter_.services.devices;
    if (!devices) return false;
    devices->Update();
    return devices->State().IsKeyDown(kEscape);
  }

  CInterpretor& interpreter_;
  RunFiles& files_;
};

}  // namespace

void CIDisk::ListFiles() {
  FileLister lister(interpreter);
  std::string directory;
  int texts = 0;
  for (int i = 0; i < interpreter.GetArgCount(); ++i) {
    const CValue& argument = *interpreter.GetArg(i);
    if (argument.type == VT_STRING) {
      const std::string_view text = argument.StringView();
      switch (texts++) {
        case 0:
          directory = text.substr(0, kMaxDirectoryBytes);
          break;
        case 1:
          lister.include = SplitPatterns(text);
          break;
        case 2:
          lister.exclude = SplitPatterns(text);
          break;
        default:
          break;
      }
    } else if (argument.type == VT_INTEGER || argument.type == VT_FLOAT) {
      switch (static_cast<uint32_t>(argument.GetInt())) {
        case kNoFiles:
          lister.noFiles = true;
          break;
        case kNoDirs:
          lister.noDirs = true;
          break;
        case kSort:
          lister.sort = true;
          break;
        case kSubDirs:
          lister.subDirs = true;
          break;
        case kShortNames:
          lister.shortNames = true;
          break;
        default:
          break;
      }
    }
  }
  std::string full;
  if (directory.empty()) {
    full = Files().CurrentFolder();
  } else if (!Files().GetFullPath(directory, &full)) {
    full.clear();
    lastError = Files().error;
  }
  if (!full.empty() && !lister.Walk(full, 0)) lister.names.clear();
  fileCount_ = static_cast<int32_t>(lister.names.size());
  lister.names.emplace_back();
  interpreter.SetResultNames(lister.names);
}

}  // namespace vl
