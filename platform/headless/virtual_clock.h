// VirtualClock: time that moves only when someone moves it.
//
// It starts at 0 ms and, unless told otherwise, on 1 January 2000 at noon. Each tick is one millisecond.
#pragma once

#include <cstdint>

#include "platform/clock.h"

namespace vl {

class VirtualClock final : public Clock {
 public:
  // 2000-01-01 12:00:00 as seconds since 1970.
  static constexpr int64_t kDefaultStart = 946728000;

  explicit VirtualClock(uint32_t seed = uint32_t(kDefaultStart), int64_t startSeconds = kDefaultStart)
      : seed_(seed), startSeconds_(startSeconds) {}

  uint32_t nowMs() override { return uint32_t(elapsedMs_); }
  LocalTime localTime() override;
  uint32_t seed() override { return seed_; }
  void tick() override { ++elapsedMs_; }
  uint32_t tickAndNow() override { return uint32_t(++elapsedMs_); }

  // Milliseconds since the start, without a wrap.
  uint64_t ElapsedMs() const { return elapsedMs_; }
  void Advance(uint64_t ms) { elapsedMs_ += ms; }

 private:
  uint64_t elapsedMs_ = 0;
  uint32_t seed_;
  int64_t startSeconds_;
};

// The date and time of seconds since 1970 in the Gregorian calendar.
LocalTime CivilTime(int64_t seconds, int millisecond);

}  // namespace vl
