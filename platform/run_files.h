// RunFiles: the tree of files as one run sees it: what it writes lies in memory over a tree that it only reads, and
// goes with the run.
//
// Names of its own files ignore case, as programs of the period expect. What lies below is never changed: a file
// there that is written to is copied first, one that is removed stays.
#pragma once

#include "platform/memory_files.h"

namespace vl {

class RunFiles final : public FileSystem {
 public:
  static constexpr uint64_t kMaxBytes = uint64_t{256} << 20;
  static constexpr size_t kMaxFiles = 4096;

  // `below` outlives this; null is an empty tree.
  explicit RunFiles(FileSystem* below) : below_(below), own_(kMaxBytes) {}

  std::unique_ptr<File> open(std::string_view path, FileMode mode) override;
  bool exists(std::string_view path) override;
  bool remove(std::string_view path) override;

 private:
  bool CopyUp(std::string_view path, const std::string& own);

  FileSystem* below_;
  MemoryFileSystem own_;
};

}  // namespace vl
