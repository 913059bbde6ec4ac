// MemoryBudget: how many bytes a run may hold in texts, arrays, variables and objects.
//
// A program is hostile until proven otherwise: what it can make without end is counted here before it is
// allocated. The holder of a block returns exactly what it took.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/limits.h"

namespace vl {

class MemoryBudget {
 public:
  explicit MemoryBudget(uint64_t limit = limits::kRunMemoryBytes) : limit_(limit) {}
  // True and counted, or false and unchanged.
  bool Take(uint64_t bytes) {
    if (bytes > limit_ - used_) {
      refused_ = true;
      return false;
    }
    used_ += bytes;
    return true;
  }
  void Return(uint64_t bytes) { used_ -= bytes; }
  uint64_t Used() const { return used_; }
  // Not below what is used.
  void SetLimit(uint64_t limit) { limit_ = limit < used_ ? used_ : limit; }
  // Has ever been asked for too much.
  bool HasRefused() const { return refused_; }

 private:
  uint64_t limit_;
  uint64_t used_ = 0;
  bool refused_ = false;
};

}  // namespace vl
