// Clock: time, the local date and seeds, as a run sees them.
#pragma once

#include <cstdint>

namespace vl {

struct LocalTime {
  int year = 0;         // for example 2000
  int month = 0;        // 1 to 12
  int day = 0;          // 1 to 31
  int dayOfWeek = 0;    // 0 is Sunday
  int hour = 0;         // 0 to 23
  int minute = 0;       // 0 to 59
  int second = 0;       // 0 to 59
  int millisecond = 0;  // 0 to 999
};

class Clock {
 public:
  virtual ~Clock() = default;
  // Milliseconds since some start; wraps after 49 days as programs of the period expect.
  virtual uint32_t nowMs() = 0;
  virtual LocalTime localTime() = 0;
  // Seconds since 1970; what the random generator is seeded with, or the seed that the person gave.
  virtual uint32_t seed() = 0;
  // Called once a tick of the run loop. A virtual clock moves by a small fixed step, so that a loop that
  // watches the clock ends; a real one does nothing.
  virtual void tick() {}
  // Both in one call, as ticks are many.
  virtual uint32_t tickAndNow() {
    tick();
    return nowMs();
  }
};

}  // namespace vl
