// MemoryFileSystem: a tree of files held in memory.
//
// Serves an application that was packed or fetched without touching a disk, the headless player and the
// tests. Names are case-sensitive; '.' and empty components are dropped, '..' stops at the root. An open File
// keeps its content alive after the file was removed or replaced.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace vl {

class MemoryFileSystem final : public FileSystem {
 public:
  // `maxBytes` bounds the content of all files together; a write beyond it fails.
  explicit MemoryFileSystem(uint64_t maxBytes = uint64_t{256} << 20);

  // Puts a file in place, replacing an older one. False when it would pass the bound.
  bool Add(std::string_view path, std::span<const uint8_t> bytes);
  bool Add(std::string_view path, std::string_view bytes);
  // The content of a file; empty when there is none.
  std::vector<uint8_t> Content(std::string_view path) const;
  // Every path, in byte order.
  std::vector<std::string> Paths() const;
  size_t FileCount() const { return nodes_.size(); }
  // By all files, those included that are open and have no name any more.
  uint64_t UsedBytes() const { return meter_->used; }

  // Read and ReadWrite need an existing file; Create makes one or empties it.
  std::unique_ptr<File> open(std::string_view path, FileMode mode) override;
  bool exists(std::string_view path) override;
  bool remove(std::string_view path) override;
  // A folder is there while a file lies below it.
  bool status(std::string_view path, FileStatus& result) override;
  std::vector<FileEntry> list(std::string_view folder) override;
  bool rename(std::string_view from, std::string_view to) override;

 private:
  friend class MemoryFile;
  // Shared by the files that are open: the tree may be gone before them.
  struct Meter {
    uint64_t used = 0;
    uint64_t limit = 0;
  };
  struct Node {
    explicit Node(std::shared_ptr<Meter> m) : meter(std::move(m)) {}
    ~Node() { meter->used -= bytes.size(); }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    // Fills new bytes with 0. False, and unchanged, when the bound is reached.
    bool Resize(uint64_t size);

    std::vector<uint8_t> bytes;
    std::shared_ptr<Meter> meter;
  };

  std::shared_ptr<Meter> meter_;
  std::map<std::string, std::shared_ptr<Node>, std::less<>> nodes_;
};

}  // namespace vl
