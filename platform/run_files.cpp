#include "platform/run_files.h"

#include <algorithm>

namespace vl {

namespace {

std::string OwnName(std::string_view path) {
  std::string name(path);
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c | 0x20);
  }
  return name;
}

}  // namespace

std::unique_ptr<File> RunFiles::open(std::string_view path, FileMode mode) {
  const std::string own = OwnName(path);
  if (!own_.exists(own)) {
    if (mode == FileMode::Read) return below_ ? below_->open(path, mode) : nullptr;
    if (own_.FileCount() >= kMaxFiles) return nullptr;
    if (mode == FileMode::ReadWrite && !CopyUp(path, own)) return nullptr;
  }
  return own_.open(own, mode);
}

bool RunFiles::CopyUp(std::string_view path, const std::string& own) {
  const auto source = below_ ? below_->open(path, FileMode::Read) : nullptr;
  if (!source || source->size() < 0 || static_cast<uint64_t>(source->size()) > kMaxBytes) return false;
  const auto target = own_.open(own, FileMode::Create);
  std::vector<uint8_t> block(size_t{64} << 10);
  bool copied = target != nullptr;
  while (copied) {
    const size_t n = source->read(block.data(), block.size());
    if (n == 0) break;
    copied = target->write(block.data(), n) == n;
  }
  if (copied && !source->failed()) return true;
  own_.remove(own);
  return false;
}

bool RunFiles::exists(std::string_view path) { return own_.exists(OwnName(path)) || (below_ && below_->exists(path)); }

bool RunFiles::remove(std::string_view path) { return own_.remove(OwnName(path)); }

}  // namespace vl
