// DiskFiles: a folder of the disk as a FileSystem, for reading only.
#pragma once

#include <filesystem>

#include "platform/file_system.h"

namespace vl {

class DiskFiles final : public FileSystem {
 public:
  // Paths are relative to `root`. Names in an application file are confined by its reader.
  explicit DiskFiles(std::filesystem::path root) : root_(std::move(root)) {}

  // Only FileMode::Read; null for a folder.
  std::unique_ptr<File> open(std::string_view path, FileMode mode) override;
  bool exists(std::string_view path) override;
  bool remove(std::string_view path) override { return false; }

 private:
  std::filesystem::path root_;
};

// The whole file, or false.
bool ReadDiskFile(const std::filesystem::path& path, std::string* bytes);
// Makes the folders it needs. False when the file can't be written.
bool WriteDiskFile(const std::filesystem::path& path, std::string_view bytes);

}  // namespace vl
