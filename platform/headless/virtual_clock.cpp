#include "platform/headless/virtual_clock.h"

namespace vl {

LocalTime CivilTime(int64_t seconds, int millisecond) {
  constexpr int64_t kDaySeconds = 86400;
  int64_t days = seconds / kDaySeconds;
  int64_t rest = seconds % kDaySeconds;
  if (rest < 0) {
    rest += kDaySeconds;
    --days;
  }
  LocalTime t;
  t.hour = int(rest / 3600);
  t.minute = int(rest / 60 % 60);
  t.second = int(rest % 60);
  t.millisecond = millisecond;
  t.dayOfWeek = int(((days + 4) % 7 + 7) % 7);  // 1 January 1970 was a Thursday
  // Years that start in March put the leap day at the end; eras of 400 years repeat.
  days += 719468;
  const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const int64_t dayOfEra = days - era * 146097;
  const int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int64_t shifted = (5 * dayOfYear + 2) / 153;
  t.day = int(dayOfYear - (153 * shifted + 2) / 5 + 1);
  t.month = int(shifted < 10 ? shifted + 3 : shifted - 9);
  t.year = int(yearOfEra + era * 400 + (t.month <= 2 ? 1 : 0));
  return t;
}

LocalTime VirtualClock::localTime() {
  return CivilTime(startSeconds_ + int64_t(elapsedMs_ / 1000), int(elapsedMs_ % 1000));
}

}  // namespace vl
