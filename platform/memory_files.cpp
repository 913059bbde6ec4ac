#include "platform/memory_files.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vl {

namespace {

std::string Normalise(std::string_view path) {
  std::string result;
  size_t at = 0;
  while (at <= path.size()) {
    size_t end = path.find('/', at);
    if (end == std::string_view::npos) end = path.size();
    const std::string_view part = path.substr(at, end - at);
    at = end + 1;
    if (part.empty() || part == ".") continue;
    if (part == "..") {
      const size_t cut = result.rfind('/');
      result.resize(cut == std::string::npos ? 0 : cut);
      continue;
    }
    if (!result.empty()) result += '/';
    result += part;
  }
  return result;
}

}  // namespace

bool MemoryFileSystem::Node::Resize(uint64_t size) {
  if (size > bytes.size() && size - bytes.size() > meter->limit - meter->used) return false;
  const uint64_t old = bytes.size();
  bytes.resize(static_cast<size_t>(size));
  meter->used = meter->used - old + size;
  return true;
}

class MemoryFile final : public File {
 public:
  MemoryFile(std::shared_ptr<MemoryFileSystem::Node> node, bool writable)
      : node_(std::move(node)), writable_(writable) {}

  size_t read(void* buffer, size_t size) override {
    const uint64_t total = node_->bytes.size();
    if (position_ >= total) return 0;
    const size_t count = static_cast<size_t>(std::min<uint64_t>(size, total - position_));
    if (count) std::memcpy(buffer, node_->bytes.data() + position_, count);
    position_ += count;
    return count;
  }

  size_t write(const void* buffer, size_t size) override {
    if (size == 0) return 0;
    const uint64_t end = position_ + size;
    if (!writable_ || end < position_ || (end > node_->bytes.size() && !node_->Resize(end))) {
      failed_ = true;
      return 0;
    }
    std::memcpy(node_->bytes.data() + position_, buffer, size);
    position_ = end;
    return size;
  }

  bool seek(int64_t position) override {
    if (position < 0) return false;
    position_ = static_cast<uint64_t>(position);
    return true;
  }
  int64_t position() override { return static_cast<int64_t>(position_); }
  int64_t size() override { return static_cast<int64_t>(node_->bytes.size()); }
  bool failed() const override { return failed_; }

 private:
  std::shared_ptr<MemoryFileSystem::Node> node_;
  uint64_t position_ = 0;
  bool writable_;
  bool failed_ = false;
};

MemoryFileSystem::MemoryFileSystem(uint64_t maxBytes) : meter_(std::make_shared<Meter>()) { meter_->limit = maxBytes; }

bool MemoryFileSystem::Add(std::string_view path, std::span<const uint8_t> bytes) {
  const std::string name = Normalise(path);
  if (name.empty()) return false;
  auto node = std::make_shared<Node>(meter_);
  nodes_.erase(name);
  if (!node->Resize(bytes.size())) return false;
  std::copy(bytes.begin(), bytes.end(), node->bytes.begin());
  nodes_[name] = std::move(node);
  return true;
}

bool MemoryFileSystem::Add(std::string_view path, std::string_view bytes) {
  return Add(path, std::span(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
}

std::vector<uint8_t> MemoryFileSystem::Content(std::string_view path) const {
  const auto it = nodes_.find(Normalise(path));
  return it == nodes_.end() ? std::vector<uint8_t>() : it->second->bytes;
}

std::vector<std::string> MemoryFileSystem::Paths() const {
  std::vector<std::string> paths;
  for (const auto& [path, node] : nodes_) paths.push_back(path);
  return paths;
}

std::unique_ptr<File> MemoryFileSystem::open(std::string_view path, FileMode mode) {
  const std::string name = Normalise(path);
  if (name.empty()) return nullptr;
  const auto it = nodes_.find(name);
  if (mode != FileMode::Create) {
    if (it == nodes_.end()) return nullptr;
    return std::make_unique<MemoryFile>(it->second, mode == FileMode::ReadWrite);
  }
  auto node = std::make_shared<Node>(meter_);
  nodes_[name] = node;
  return std::make_unique<MemoryFile>(std::move(node), true);
}

bool MemoryFileSystem::exists(std::string_view path) { return nodes_.contains(Normalise(path)); }

bool MemoryFileSystem::remove(std::string_view path) { return nodes_.erase(Normalise(path)) != 0; }

bool MemoryFileSystem::status(std::string_view path, FileStatus& result) {
  const std::string name = Normalise(path);
  if (const auto it = nodes_.find(name); it != nodes_.end()) {
    result = {false, it->second->bytes.size()};
    return true;
  }
  result = {true, 0};
  if (name.empty()) return true;
  const auto below = nodes_.lower_bound(name + '/');
  return below != nodes_.end() && below->first.starts_with(name + '/');
}

std::vector<FileEntry> MemoryFileSystem::list(std::string_view folder) {
  std::vector<FileEntry> entries;
  std::string prefix = Normalise(folder);
  if (!prefix.empty()) prefix += '/';
  auto it = nodes_.lower_bound(prefix);
  while (it != nodes_.end() && it->first.starts_with(prefix) && entries.size() < kMaxListed) {
    const size_t slash = it->first.find('/', prefix.size());
    const std::string name = it->first.substr(prefix.size(), slash - prefix.size());
    if (slash == std::string::npos) {
      entries.push_back({name, {false, it->second->bytes.size()}});
      ++it;
    } else {
      entries.push_back({name, {true, 0}});
      it = nodes_.lower_bound(prefix + name + static_cast<char>('/' + 1));
    }
  }
  return entries;
}

bool MemoryFileSystem::rename(std::string_view from, std::string_view to) {
  const auto it = nodes_.find(Normalise(from));
  const std::string name = Normalise(to);
  if (it == nodes_.end() || name.empty() || nodes_.contains(name)) return false;
  auto node = std::move(it->second);
  nodes_.erase(it);
  nodes_[name] = std::move(node);
  return true;
}

}  // namespace vl
