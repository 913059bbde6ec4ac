#include "gfx2d/scratch.h"

#include <algorithm>

namespace vl {
namespace {

// Blocks are handed out in these steps, so that operations of about one size share them.
constexpr uint64_t kStep = 4096;

}  // namespace

Scratch::~Scratch() {
  if (block_) pool_->Return(bytes_, std::move(block_));
}

Scratch ScratchPool::Take(uint64_t bytes) {
  // The smallest that is large enough.
  auto best = kept_.end();
  for (auto it = kept_.begin(); it != kept_.end(); ++it) {
    if (it->bytes >= bytes && (best == kept_.end() || it->bytes < best->bytes)) best = it;
  }
  if (best != kept_.end()) {
    Kept kept = std::move(*best);
    kept_.erase(best);
    keptBytes_ -= kept.bytes;
    return Scratch(this, kept.bytes, std::move(kept.block));
  }
  if (bytes > SIZE_MAX / 2) return {};
  bytes = (std::max<uint64_t>(bytes, 1) + kStep - 1) / kStep * kStep;
  if (!budget_->Take(bytes)) {
    Trim();
    if (!budget_->Take(bytes)) return {};
  }
  Scratch::Block block(static_cast<uint8_t*>(std::malloc(size_t(bytes))));
  if (!block) {
    budget_->Return(bytes);
    return {};
  }
  return Scratch(this, size_t(bytes), std::move(block));
}

void ScratchPool::Return(size_t bytes, Scratch::Block block) {
  // The oldest make room.
  while (!kept_.empty() && (kept_.size() == kMaxBlocks || keptBytes_ + bytes > kMaxBytes)) {
    budget_->Return(kept_.front().bytes);
    keptBytes_ -= kept_.front().bytes;
    kept_.erase(kept_.begin());
  }
  if (bytes > kMaxBytes) {
    budget_->Return(bytes);
    return;
  }
  if (kept_.capacity() == 0) kept_.reserve(kMaxBlocks);
  keptBytes_ += bytes;
  kept_.push_back({bytes, std::move(block)});
}

void ScratchPool::Trim() {
  budget_->Return(keptBytes_);
  keptBytes_ = 0;
  kept_.clear();
}

}  // namespace vl
