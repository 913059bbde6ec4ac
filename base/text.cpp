#include "base/text.h"

#include <cstdlib>
#include <new>

namespace vl {

namespace {
size_t BlockBytes(uint32_t capacity) { return offsetof(Text::Block, data) + size_t{capacity} + 1; }
// The same memory often holds a few bytes more: memory is given out in steps of 16, less what its own record takes.
uint32_t FullCapacity(uint32_t length) {
  constexpr size_t kStep = 16;
  const size_t bytes = (BlockBytes(length) + sizeof(size_t) + kStep - 1) / kStep * kStep - sizeof(size_t);
  return static_cast<uint32_t>(bytes - BlockBytes(0));
}
}  // namespace

Text::Block* Text::Allocate(uint32_t length, uint32_t capacity, MemoryBudget* budget) {
  const size_t bytes = BlockBytes(capacity);
  if (budget && !budget->Take(bytes)) return nullptr;
  void* memory = std::malloc(bytes);
  if (!memory) {
    if (budget) budget->Return(bytes);
    return nullptr;
  }
  Block* block = new (memory) Block;
  block->refs = 1;
  block->length = length;
  block->capacity = capacity;
  block->budget = budget;
  block->data[length] = 0;
  return block;
}

void Text::Free(Block* block) {
  if (block->budget) block->budget->Return(BlockBytes(block->capacity));
  std::free(block);
}

bool Text::Assign(std::string_view bytes, MemoryBudget* budget) {
  if (const void* nul = bytes.empty() ? nullptr : std::memchr(bytes.data(), 0, bytes.size())) {
    bytes = bytes.substr(0, static_cast<size_t>(static_cast<const char*>(nul) - bytes.data()));
  }
  if (bytes.size() > limits::kMaxTextBytes) return false;
  const auto length = static_cast<uint32_t>(bytes.size());
  Block* block = Allocate(length, length, budget);
  if (!block) return false;
  if (length) std::memcpy(block->data, bytes.data(), length);
  ReleaseBlock(block_);
  block_ = block;
  return true;
}

bool Text::Append(std::string_view right, MemoryBudget* budget) {
  if (right.empty() && block_) return true;
  const uint64_t total = uint64_t{Length()} + right.size();
  if (total > limits::kMaxTextBytes) return false;
  const auto length = static_cast<uint32_t>(total);
  if (block_ && block_->refs == 1 && length <= block_->capacity) {
    std::memmove(block_->data + block_->length, right.data(), right.size());
    block_->length = length;
    block_->data[length] = 0;
    return true;
  }
  // Texts that grow once tend to grow again; short results of one concatenation stay tight.
  const uint32_t capacity = block_ && block_->refs == 1 ? length + length / 2 + 16 : FullCapacity(length);
  Block* block = Allocate(length, capacity, budget);
  if (!block) return false;
  if (block_) std::memcpy(block->data, block_->data, block_->length);
  if (!right.empty()) std::memcpy(block->data + Length(), right.data(), right.size());
  ReleaseBlock(block_);
  block_ = block;
  return true;
}

}  // namespace vl
