// FileSystem: one tree of files, native, in memory or a package, behind one interface.
//
// Paths are relative to the root of the tree, with '/' between components; '..' never leaves the root.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

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
};

enum class FileMode { Read, Create, ReadWrite };

class FileSystem {
 public:
  virtual ~FileSystem() = default;
  // Null when the file can't be opened that way.
  virtual std::unique_ptr<File> open(std::string_view path, FileMode mode) = 0;
  virtual bool exists(std::string_view path) = 0;
  virtual bool remove(std::string_view path) = 0;
};

}  // namespace vl
