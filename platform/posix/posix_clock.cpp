#include "platform/posix/posix_clock.h"

#include <ctime>

namespace vl {

PosixClock::PosixClock(std::optional<uint32_t> seed)
    : start_(std::chrono::steady_clock::now()), seed_(seed ? *seed : uint32_t(std::time(nullptr))) {}

uint32_t PosixClock::nowMs() {
  const auto elapsed = std::chrono::steady_clock::now() - start_;
  return uint32_t(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count());
}

LocalTime PosixClock::localTime() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm parts{};
  localtime_r(&now.tv_sec, &parts);
  LocalTime t;
  t.year = parts.tm_year + 1900;
  t.month = parts.tm_mon + 1;
  t.day = parts.tm_mday;
  t.dayOfWeek = parts.tm_wday;
  t.hour = parts.tm_hour;
  t.minute = parts.tm_min;
  t.second = parts.tm_sec < 60 ? parts.tm_sec : 59;  // no leap seconds in the period
  t.millisecond = int(now.tv_nsec / 1000000);
  return t;
}

}  // namespace vl
