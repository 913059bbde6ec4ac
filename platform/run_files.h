// RunFiles: the files of one run as its program sees them, a drive C: of the period.
//
// The application's own folder is C:\VORLANE, which the run only reads; what the program writes is the run's own and
// lies over it. It is in memory and goes with the run, unless it is given a tree to keep it in; files of the temp
// folder always go. Names ignore case, long and short forms both work. A file of the application that is written to is
// copied first, one that is removed stays. There is nothing else: no other drive, no device, no network.
//
// Paths are those of the period, relative ones from the application's folder; GetFullPath counts from the current
// directory. What fails leaves its reason in `error`.
#pragma once

#include <map>

#include "platform/drive_paths.h"
#include "platform/memory_files.h"

namespace vl {

class RunFiles final : public FileSystem {
 public:
  // Of all files that the run made.
  static constexpr uint64_t kMaxBytes = uint64_t{256} << 20;
  static constexpr size_t kMaxFiles = 4096;

  // `below` and `kept` outlive this; null is an empty tree, and none to keep files in.
  explicit RunFiles(FileSystem* below, FileSystem* kept = nullptr);

  std::unique_ptr<File> open(std::string_view path, FileMode mode) override;
  bool exists(std::string_view path) override;
  bool remove(std::string_view path) override;
  bool status(std::string_view path, FileStatus& result) override;
  // By name, folders too.
  std::vector<FileEntry> list(std::string_view folder) override;
  bool rename(std::string_view from, std::string_view to) override;
  bool replace(std::string_view path, std::span<const uint8_t> bytes) override;

  // The full path of what a program names, whether it is there or not.
  bool GetFullPath(std::string_view text, std::string* full);
  const std::string& CurrentFolder() const { return currentFolder_; }
  bool SetCurrentFolder(std::string_view path);
  // The long form gives each name as it is spelled, the short form in 8 and 3 characters. The path must exist.
  bool GetLongPath(std::string_view path, std::string* result);
  bool GetShortPath(std::string_view path, std::string* result);
  // The short name of each entry of a folder, in the order of `list`; "" for a name that is short itself.
  std::vector<std::string> ShortNames(const std::vector<FileEntry>& entries) const;
  uint64_t FreeBytes() const;

  // True when the files outlive the run: then a program may make files of its own choice.
  bool IsKept() const { return kept_ != nullptr; }

  uint32_t error = SYS_SUCCESS;

 private:
  struct Own {
    std::string full;  // as it was spelled when it was made
  };
  // What a full path stands for.
  struct Found {
    enum Kind { Nothing, OwnFile, BelowFile, Folder } kind = Nothing;
    std::string full;   // with the names as they are spelled
    std::string below;  // path in the tree below, BelowFile only
  };
  struct Meter {
    uint64_t used = 0;
  };
  class KeptFile;

  bool Fail(uint32_t reason) {
    error = reason;
    return false;
  }
  void ScanKept(const std::string& folder, int depth);
  Found Find(const std::string& full);
  bool FindFull(std::string_view path, Found& found);
  bool IsFolder(const std::string& folded) const;
  // True when the folder that a path lies in is there.
  bool HasFolder(const std::string& full);
  bool FindBelow(std::string_view relative, std::string* actual, FileStatus* result);
  std::string Spelled(const std::string& full);
  // A new file's path: its folder as that is spelled already.
  std::string InSpelledFolder(const std::string& full);
  bool IsTemporary(const std::string& folded) const;
  FileSystem& StoreOf(const std::string& folded);
  std::string StorePath(const std::string& full) const;
  std::unique_ptr<File> OpenOwn(const std::string& full, FileMode mode);
  bool AddOwn(const std::string& full);
  void Forget(const std::string& folded);
  bool CopyUp(const std::string& belowPath, const std::string& full);
  bool RenameAcross(const std::string& from, const std::string& to);
  std::vector<FileEntry> ListFull(const std::string& full);

  FileSystem* below_;
  FileSystem* kept_;
  MemoryFileSystem memory_;
  std::shared_ptr<Meter> meter_;
  std::map<std::string, Own, std::less<>> own_;  // by folded full path
  std::string currentFolder_{kHomeFolder};
};

}  // namespace vl
