// RunFiles: what a path stands for, what lies in a folder, long and short names.
#include <algorithm>

#include "platform/run_files.h"

namespace vl {

namespace {

constexpr std::string_view kFolders[] = {kDriveRoot, kHomeFolder, kSystemFolder, "C:\\WINDOWS\\SYSTEM32", kTempFolder};
// Of the tree that files are kept in; programs make no folders.
constexpr int kMaxDepth = 32;
// What the disk holds of a file that was being replaced when the machine fell.
constexpr std::string_view kUnfinished = ".vl-new-";

std::string_view FolderOf(std::string_view full) {
  return full.substr(0, std::max(full.rfind('\\'), kDriveRoot.size()));
}
std::string_view NameOf(std::string_view full) { return full.substr(full.rfind('\\') + 1); }

std::string WithBackslash(std::string path) {
  if (!path.ends_with('\\')) path += '\\';
  return path;
}

// The place of a full path below another; nothing when it lies elsewhere.
bool Below(std::string_view full, std::string_view folder, std::string* relative) {
  if (full.size() < folder.size() || FoldName(full.substr(0, folder.size())) != FoldName(folder)) return false;
  if (full.size() > folder.size() && full[folder.size()] != '\\') return false;
  *relative = full.substr(std::min(full.size(), folder.size() + 1));
  std::replace(relative->begin(), relative->end(), '\\', '/');
  return true;
}

// A name that a program can say.
bool IsSayable(std::string_view name) {
  std::string full;
  return MakeFullPath(name, kDriveRoot, &full) == SYS_SUCCESS && NameOf(full) == name;
}

}  // namespace

void RunFiles::ScanKept(const std::string& folder, int depth) {
  for (const FileEntry& entry : kept_->list(folder)) {
    if (!IsSayable(entry.name) || entry.name.starts_with(kUnfinished)) continue;
    const std::string path = folder.empty() ? entry.name : folder + '/' + entry.name;
    if (entry.status.isFolder) {
      if (depth < kMaxDepth) ScanKept(path, depth + 1);
      continue;
    }
    std::string full(kDriveRoot);
    full += path;
    std::replace(full.begin(), full.end(), '/', '\\');
    const std::string folded = FoldName(full);
    if (full.size() > kMaxPathBytes || IsTemporary(folded) || own_.size() >= kMaxFiles) continue;
    if (own_.try_emplace(folded, Own{full}).second) meter_->used += entry.status.size;
  }
}

bool RunFiles::IsTemporary(const std::string& folded) const { return folded.starts_with(FoldName(kTempFolder) + '\\'); }

std::string RunFiles::StorePath(const std::string& full) const {
  // In memory one spelling stands for all.
  const std::string folded = FoldName(full);
  std::string path = (kept_ && !IsTemporary(folded) ? full : folded).substr(kDriveRoot.size());
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

bool RunFiles::IsFolder(const std::string& folded) const {
  for (const std::string_view folder : kFolders) {
    if (FoldName(folder) == folded) return true;
  }
  const std::string prefix = WithBackslash(folded);
  const auto inside = own_.lower_bound(prefix);
  return inside != own_.end() && inside->first.starts_with(prefix);
}

bool RunFiles::HasFolder(const std::string& full) { return Find(std::string(FolderOf(full))).kind == Found::Folder; }

bool RunFiles::FindBelow(std::string_view relative, std::string* actual, FileStatus* result) {
  if (!below_) return false;
  if (below_->status(relative, *result)) {
    *actual = relative;
    return true;
  }
  actual->clear();
  for (size_t at = 0; at < relative.size();) {
    const size_t end = std::min(relative.find('/', at), relative.size());
    const std::string name(relative.substr(at, end - at));
    at = end + 1;
    const std::string prefix = actual->empty() ? std::string() : *actual + '/';
    if (below_->status(prefix + name, *result)) {
      *actual = prefix + name;
      continue;
    }
    const std::string folded = FoldName(name);
    const auto entries = below_->list(*actual);
    const auto it = std::find_if(entries.begin(), entries.end(),
                                 [&](const FileEntry& entry) { return FoldName(entry.name) == folded; });
    if (it == entries.end()) return false;
    *actual = prefix + it->name;
    *result = it->status;
  }
  return true;
}

RunFiles::Found RunFiles::Find(const std::string& full) {
  const auto asSpelled = [&](const std::string& path) {
    Found found;
    found.full = path;
    const std::string folded = FoldName(path);
    std::string relative;
    FileStatus result;
    if (const auto it = own_.find(folded); it != own_.end()) {
      found.kind = Found::OwnFile;
      found.full = it->second.full;
    } else if (IsFolder(folded)) {
      found.kind = Found::Folder;
    } else if (Below(path, kHomeFolder, &relative) && FindBelow(relative, &found.below, &result)) {
      found.kind = result.isFolder ? Found::Folder : Found::BelowFile;
    }
    return found;
  };
  Found found = asSpelled(full);
  if (found.kind != Found::Nothing || full.find('~') == std::string::npos) return found;
  // Short names stand for the long ones.
  const std::string spelled = Spelled(full);
  return FoldName(spelled) == FoldName(full) ? found : asSpelled(spelled);
}

bool RunFiles::FindFull(std::string_view path, Found& found) {
  std::string full;
  if (const uint32_t reason = MakeFullPath(path, kHomeFolder, &full)) return Fail(reason);
  found = Find(full);
  return true;
}

std::string RunFiles::InSpelledFolder(const std::string& full) {
  return WithBackslash(Spelled(std::string(FolderOf(full)))).append(NameOf(full));
}

// Each name as its folder has it, as far as there is one.
std::string RunFiles::Spelled(const std::string& full) {
  std::string result(kDriveRoot);
  for (size_t at = kDriveRoot.size(); at < full.size();) {
    const size_t end = std::min(full.find('\\', at), full.size());
    std::string name = full.substr(at, end - at);
    at = end + 1;
    const std::string folded = FoldName(name);
    const auto entries = ListFull(result);
    const auto byName = std::find_if(entries.begin(), entries.end(),
                                     [&](const FileEntry& entry) { return FoldName(entry.name) == folded; });
    if (byName != entries.end()) {
      name = byName->name;
    } else if (name.find('~') != std::string::npos) {
      const auto shortNames = ShortNames(entries);
      for (size_t i = 0; i < entries.size(); ++i) {
        if (FoldName(shortNames[i]) == folded) name = entries[i].name;
      }
    }
    result = WithBackslash(std::move(result)) + name;
  }
  return result;
}

std::vector<FileEntry> RunFiles::ListFull(const std::string& full) {
  std::map<std::string, FileEntry> found;
  const std::string folded = FoldName(full);
  for (const std::string_view folder : kFolders) {
    if (folder != kDriveRoot && FoldName(FolderOf(folder)) == folded) {
      found.try_emplace(FoldName(NameOf(folder)), FileEntry{std::string(NameOf(folder)), {true, 0}});
    }
  }
  const std::string prefix = WithBackslash(folded);
  for (auto it = own_.lower_bound(prefix); it != own_.end() && it->first.starts_with(prefix); ++it) {
    const size_t end = it->first.find('\\', prefix.size());
    const std::string name = it->second.full.substr(prefix.size(), end - prefix.size());
    FileEntry entry{name, {end != std::string::npos, 0}};
    if (!entry.status.isFolder) StoreOf(it->first).status(StorePath(it->second.full), entry.status);
    found.try_emplace(FoldName(name), std::move(entry));
  }
  std::string relative;
  std::string actual;
  FileStatus result;
  if (Below(full, kHomeFolder, &relative) && FindBelow(relative, &actual, &result) && result.isFolder) {
    for (FileEntry& entry : below_->list(actual)) {
      if (IsSayable(entry.name)) found.try_emplace(FoldName(entry.name), std::move(entry));
    }
  }
  std::vector<FileEntry> entries;
  for (auto& [key, entry] : found) entries.push_back(std::move(entry));
  return entries;
}

bool RunFiles::exists(std::string_view path) {
  FileStatus result;
  return status(path, result) && !result.isFolder;
}

bool RunFiles::status(std::string_view path, FileStatus& result) {
  Found found;
  if (!FindFull(path, found)) return false;
  switch (found.kind) {
    case Found::Folder:
      result = {true, 0};
      return true;
    case Found::OwnFile:
      return StoreOf(FoldName(found.full)).status(StorePath(found.full), result) || Fail(SYS_FILE_NOT_FOUND);
    case Found::BelowFile:
      return below_->status(found.below, result) || Fail(SYS_FILE_NOT_FOUND);
    case Found::Nothing:
      break;
  }
  return Fail(HasFolder(found.full) ? SYS_FILE_NOT_FOUND : SYS_PATH_NOT_FOUND);
}

std::vector<FileEntry> RunFiles::list(std::string_view folder) {
  Found found;
  if (!FindFull(folder, found)) return {};
  if (found.kind != Found::Folder) {
    Fail(SYS_PATH_NOT_FOUND);
    return {};
  }
  return ListFull(found.full);
}

bool RunFiles::GetFullPath(std::string_view text, std::string* full) {
  const uint32_t reason = MakeFullPath(text, currentFolder_, full);
  return reason == SYS_SUCCESS || Fail(reason);
}

bool RunFiles::SetCurrentFolder(std::string_view path) {
  std::string full;
  if (!GetFullPath(path, &full)) return false;
  const Found found = Find(full);
  if (found.kind == Found::Nothing) return Fail(HasFolder(full) ? SYS_FILE_NOT_FOUND : SYS_PATH_NOT_FOUND);
  if (found.kind != Found::Folder) return Fail(SYS_DIRECTORY);
  currentFolder_ = Spelled(found.full);
  return true;
}

std::vector<std::string> RunFiles::ShortNames(const std::vector<FileEntry>& entries) const {
  std::set<std::string> taken;
  for (const FileEntry& entry : entries) {
    if (IsShortName(entry.name)) taken.insert(FoldName(entry.name));
  }
  std::vector<std::string> names;
  for (const FileEntry& entry : entries) {
    names.push_back(IsShortName(entry.name) ? std::string() : MakeShortName(entry.name, taken));
  }
  return names;
}

bool RunFiles::GetLongPath(std::string_view path, std::string* result) {
  std::string full;
  FileStatus there;
  if (!GetFullPath(path, &full) || !status(full, there)) return false;
  *result = Spelled(full);
  return true;
}

bool RunFiles::GetShortPath(std::string_view path, std::string* result) {
  std::string full;
  if (!GetLongPath(path, &full)) return false;
  std::string shortened(kDriveRoot);
  std::string longer(kDriveRoot);
  for (size_t at = kDriveRoot.size(); at < full.size();) {
    const size_t end = std::min(full.find('\\', at), full.size());
    const std::string name = full.substr(at, end - at);
    at = end + 1;
    const auto entries = ListFull(longer);
    const auto shortNames = ShortNames(entries);
    std::string shortName = name;
    for (size_t i = 0; i < entries.size(); ++i) {
      if (entries[i].name == name && !shortNames[i].empty()) shortName = shortNames[i];
    }
    longer = WithBackslash(std::move(longer)) + name;
    shortened = WithBackslash(std::move(shortened)) + shortName;
  }
  *result = shortened;
  return true;
}

uint64_t RunFiles::FreeBytes() const {
  const uint64_t used = memory_.UsedBytes() + meter_->used;
  return used < kMaxBytes ? kMaxBytes - used : 0;
}

}  // namespace vl
