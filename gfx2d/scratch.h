// ScratchPool: working memory of the surface operations, kept from one to the next so that none of them allocates
// each time it runs.
//
// It belongs to a SurfaceLibrary and counts in the run's budget. What is kept between operations is bounded; larger
// blocks go back at once.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "base/memory_budget.h"

namespace vl {

class ScratchPool;

// A block on loan, empty when memory is spent. Its contents are anything; it starts on a bound of 16 bytes.
class Scratch {
 public:
  Scratch() = default;
  Scratch(Scratch&& o) noexcept
      : pool_(std::exchange(o.pool_, nullptr)), bytes_(o.bytes_), block_(std::move(o.block_)) {}
  Scratch& operator=(Scratch&& o) noexcept {
    std::swap(pool_, o.pool_);
    std::swap(bytes_, o.bytes_);
    std::swap(block_, o.block_);
    return *this;
  }
  ~Scratch();
  explicit operator bool() const { return block_ != nullptr; }
  std::span<uint8_t> Bytes() const { return {block_.get(), block_ ? bytes_ : 0}; }
  // The memory as items of a plain type, from a byte offset that suits them.
  template <class T>
  T* At(size_t offset = 0) const {
    return reinterpret_cast<T*>(block_.get() + offset);
  }

 private:
  friend class ScratchPool;
  struct Free {
    void operator()(uint8_t* p) const { std::free(p); }
  };
  using Block = std::unique_ptr<uint8_t, Free>;
  Scratch(ScratchPool* pool, size_t bytes, Block block) : pool_(pool), bytes_(bytes), block_(std::move(block)) {}

  ScratchPool* pool_ = nullptr;
  size_t bytes_ = 0;
  Block block_;
};

class ScratchPool {
 public:
  // `budget` outlives the pool, and the pool all its loans.
  explicit ScratchPool(MemoryBudget* budget) : budget_(budget) {}
  ~ScratchPool() { Trim(); }
  ScratchPool(const ScratchPool&) = delete;
  ScratchPool& operator=(const ScratchPool&) = delete;

  Scratch Take(uint64_t bytes);
  // Gives back what is kept.
  void Trim();

 private:
  friend class Scratch;
  struct Kept {
    size_t bytes;
    Scratch::Block block;
  };
  static constexpr size_t kMaxBlocks = 8;
  static constexpr size_t kMaxBytes = size_t{8} << 20;
  void Return(size_t bytes, Scratch::Block block);

  MemoryBudget* budget_;
  std::vector<Kept> kept_;
  size_t keptBytes_ = 0;
};

}  // namespace vl
