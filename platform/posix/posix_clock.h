// PosixClock: the machine's time.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "platform/clock.h"

namespace vl {

class PosixClock final : public Clock {
 public:
  // Without a seed the present second is one.
  explicit PosixClock(std::optional<uint32_t> seed = std::nullopt);
  uint32_t nowMs() override;
  LocalTime localTime() override;
  uint32_t seed() override { return seed_; }

 private:
  std::chrono::steady_clock::time_point start_;
  uint32_t seed_;
};

}  // namespace vl
