// FileSystem: one tree of files, native, in memory or a package, behind one interface.
//
// Paths are relative to the root of the tree, with '/' between components; '..' never leaves the root.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vl {

class File {
 public:
  virtual ~File() = default;
  // Bytes read, less than `size` only at the end or on failure (then failed() is true).
  virtual size_t read(void* buffer, size_t size) = 0;
  virtual size_t write(const void* buffer, size_t size) = 0;
  virtual bool seek(int64_t position) = 0;
  virtual int64_t position() = 0;
  virtual int64_t size() = 0;
  virtual bool failed() const = 0;
  // What was written outlives the machine's next fall. False when it can't be told.
  virtual bool flush() { return true; }
};

enum class FileMode { Read, Create, ReadWrite };

struct FileStatus {
  bool isFolder = false;
  uint64_t size = 0;  // bytes; 0 of a folder
};

struct FileEntry {
  std::string name;
  FileStatus status;
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;
  // Null when the file can't be opened that way.
  virtual std::unique_ptr<File> open(std::string_view path, FileMode mode) = 0;
  virtual bool exists(std::string_view path) = 0;
  virtual bool remove(std::string_view path) = 0;

  // Of a file or a folder; false when there is none. A tree that can't tell of folders tells of files only.
  virtual bool status(std::string_view path, FileStatus& result) {
    const auto file = open(path, FileMode::Read);
    if (!file) return false;
    result = {false, static_cast<uint64_t>(file->size())};
    return true;
  }
  // What lies in a folder, in no order; "" is the root. At most kMaxListed entries.
  static constexpr size_t kMaxListed = 65536;
  virtual std::vector<FileEntry> list(std::string_view folder) { return {}; }
  // The new name must not exist.
  virtual bool rename(std::string_view from, std::string_view to) { return false; }
  // With the folders above it. True when it is there already.
  virtual bool makeFolder(std::string_view path) { return true; }
  // The whole content of a file, new or old. A tree that lasts does it in one step: after a fall the file holds either
  // the old content or the new.
  virtual bool replace(std::string_view path, std::span<const uint8_t> bytes) {
    const auto file = open(path, FileMode::Create);
    return file && file->write(bytes.data(), bytes.size()) == bytes.size();
  }
};

}  // namespace vl
