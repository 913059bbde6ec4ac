// PosixFileSystem: a folder of the machine as a tree of files that nothing can leave.
//
// Paths are walked component by component from the folder's descriptor. '..' and symbolic links work inside
// the folder; one that would leave it, and an absolute link, make the path unreachable. Only regular files open.
//
// Names are bytes. One with bytes above 127 that isn't there as it stands is taken for code page 1252 and is UTF-8 on
// the disk; names are listed in code page 1252, those that it can't say are left out.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/file_system.h"

namespace vl {

// A descriptor, closed at the end.
class FileHandle {
 public:
  explicit FileHandle(int fd = -1) : fd_(fd) {}
  FileHandle(FileHandle&& o) noexcept : fd_(o.fd_) { o.fd_ = -1; }
  FileHandle& operator=(FileHandle&& o) noexcept {
    std::swap(fd_, o.fd_);
    return *this;
  }
  ~FileHandle();
  int Get() const { return fd_; }
  bool IsOpen() const { return fd_ >= 0; }

 private:
  int fd_;
};

class PosixFileSystem final : public FileSystem {
 public:
  // A folder that doesn't exist makes a tree in which nothing does.
  explicit PosixFileSystem(const std::string& folder);
  bool IsOpen() const { return root_.IsOpen(); }

  std::unique_ptr<File> open(std::string_view path, FileMode mode) override;
  bool exists(std::string_view path) override;
  bool remove(std::string_view path) override;
  bool status(std::string_view path, FileStatus& result) override;
  std::vector<FileEntry> list(std::string_view folder) override;
  bool rename(std::string_view from, std::string_view to) override;
  bool makeFolder(std::string_view path) override;
  bool replace(std::string_view path, std::span<const uint8_t> bytes) override;

 private:
  // Where the last component lies, links followed; no folder when the path is unreachable.
  struct Place {
    FileHandle folder;
    std::string name;  // empty for the folder itself
  };
  Place Resolve(std::string_view path, bool followLast) const;

  FileHandle root_;
};

}  // namespace vl
