// ReadBudget: bounds time and memory of opening an application whose pieces overlap on purpose.
//
// Every file adds to what may be read; everything read or made is charged. See kStructureRatio.
#pragma once

#include <cstdint>

#include "host/appfile/app_limits.h"

namespace vl {

class ReadBudget {
 public:
  // Fees for objects, about a quarter of their memory.
  static constexpr uint64_t kElementFee = 16;
  static constexpr uint64_t kBankFee = 128;
  static constexpr uint64_t kPartFee = 512;
  static constexpr uint64_t kOpenFee = 1024;

  void AddFile(uint64_t size) { allowed_ += size * limits::kStructureRatio; }
  // False when that is more than the files can honestly hold.
  bool Spend(uint64_t bytes) {
    if (bytes > allowed_ - spent_) return false;
    spent_ += bytes;
    return true;
  }
  bool AddElement() { return elements_ < limits::kMaxElements && (++elements_, Spend(kElementFee)); }

 private:
  uint64_t allowed_ = limits::kStructureSlackBytes;
  uint64_t spent_ = 0;
  uint32_t elements_ = 0;
};

}  // namespace vl
