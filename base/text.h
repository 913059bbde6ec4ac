// Text: the runtime's reference-counted 8-bit text.
//
// Bytes are code page 1252. A text holds no NUL inside; CStr() is always ended by one. Copies share one
// block, so handing a text on costs one count. A text belongs to one thread: the counts are plain.
// Growth past limits::kMaxTextBytes, or past the budget of the run, gives a null pointer from the
// try-operations; the callers turn that into "out of memory".
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "base/memory_budget.h"

namespace vl {

class Text {
 public:
  Text() = default;
  Text(const Text& other) : block_(other.block_) {
    if (block_) ++block_->refs;
  }
  Text(Text&& other) noexcept : block_(other.block_) { other.block_ = nullptr; }
  explicit Text(std::string_view bytes, MemoryBudget* budget = nullptr) { Assign(bytes, budget); }
  ~Text() { Release(); }

  Text& operator=(const Text& other) {
    if (other.block_) ++other.block_->refs;
    Release();
    block_ = other.block_;
    return *this;
  }
  Text& operator=(Text&& other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }

  bool IsNull() const { return block_ == nullptr; }
  uint32_t Length() const { return block_ ? block_->length : 0; }
  const char* CStr() const { return block_ ? block_->data : ""; }
  std::string_view View() const { return {CStr(), Length()}; }

  // Replaces the content; a byte 0 in `bytes` ends it. False when the budget is spent (content unchanged).
  bool Assign(std::string_view bytes, MemoryBudget* budget);
  // Makes this text left + right. Appends in place when this text is the only holder of left's block.
  // False when the budget is spent (content unchanged).
  bool Append(std::string_view right, MemoryBudget* budget);

  // Raw access for holders that keep the block in a union (CValue).
  struct Block {
    uint32_t refs;
    uint32_t length;
    uint32_t capacity;
    MemoryBudget* budget;
    char data[1];
  };
  Block* Detach() {
    Block* b = block_;
    block_ = nullptr;
    return b;
  }
  static Text Adopt(Block* block) {
    Text t;
    t.block_ = block;
    return t;
  }
  static Text Share(Block* block) {
    Text t;
    t.block_ = block;
    if (block) ++block->refs;
    return t;
  }
  static void Retain(Block* block) {
    if (block) ++block->refs;
  }
  static void ReleaseBlock(Block* block) {
    if (block && --block->refs == 0) Free(block);
  }

 private:
  static Block* Allocate(uint32_t length, uint32_t capacity, MemoryBudget* budget);
  static void Free(Block* block);
  void Release() { ReleaseBlock(block_); }

  Block* block_ = nullptr;
};

}  // namespace vl
