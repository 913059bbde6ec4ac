// ImageMemory: a block that a filter works in, counted in the run's budget for as long as it lives.
#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <span>

#include "base/memory_budget.h"

namespace vl {

class ImageMemory {
 public:
  ImageMemory() = default;
  ~ImageMemory() { Free(); }
  ImageMemory(const ImageMemory&) = delete;
  ImageMemory& operator=(const ImageMemory&) = delete;

  // Zeroed bytes; the old ones are gone. False, and empty, when the budget or the machine has no more. `budget`
  // outlives the block.
  bool Allocate(MemoryBudget& budget, uint64_t bytes) {
    Free();
    if (bytes > SIZE_MAX || !budget.Take(bytes)) return false;
    data_.reset(new (std::nothrow) uint8_t[size_t(bytes)]());
    if (!data_) {
      budget.Return(bytes);
      return false;
    }
    budget_ = &budget;
    size_ = size_t(bytes);
    return true;
  }
  void Free() {
    if (data_) budget_->Return(size_);
    data_.reset();
    size_ = 0;
  }
  uint8_t* Data() { return data_.get(); }
  const uint8_t* Data() const { return data_.get(); }
  size_t Size() const { return size_; }
  std::span<uint8_t> Bytes() { return {data_.get(), size_}; }

 private:
  std::unique_ptr<uint8_t[]> data_;
  size_t size_ = 0;
  MemoryBudget* budget_ = nullptr;
};

}  // namespace vl
