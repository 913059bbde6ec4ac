#include "host/desktop/run_gate.h"

#include <algorithm>

namespace vl {

void RunGate::SetPaused(bool paused) {
  const std::lock_guard lock(mutex_);
  if (isOpenForGood_) return;
  isClosed_ = paused;
  isStepGranted_ = false;
  changed_.notify_all();
}

void RunGate::Step() {
  const std::lock_guard lock(mutex_);
  if (isOpenForGood_) return;
  isClosed_ = true;
  isStepGranted_ = true;
  changed_.notify_all();
}

void RunGate::OpenForGood() {
  const std::lock_guard lock(mutex_);
  isOpenForGood_ = true;
  isClosed_ = false;
  changed_.notify_all();
}

void RunGate::Hold() {
  if (isStepping_ && static_cast<int32_t>(stepEndMs_ - nowMs()) > 0) return;
  isStepping_ = false;
  const uint32_t heldSince = clock_.nowMs();
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !isClosed_ || isStepGranted_; });
  heldMs_ += clock_.nowMs() - heldSince;
  if (!isClosed_) return;
  isStepGranted_ = false;
  isStepping_ = true;
  stepEndMs_ = nowMs() + kStepMs;
}

int RunGate::StopInMs() {
  const uint64_t passed = nowMs() - startMs_;
  return passed >= stopAfterMs_ ? 0 : static_cast<int>(std::min<uint64_t>(stopAfterMs_ - passed, INT32_MAX));
}

bool RunGate::waitEvent(Event& event, int timeoutMs) {
  if (isClosed_) {
    Hold();
    // A wait must not outlast its step.
    if (isStepping_ && timeoutMs != 0) {
      const uint32_t left = std::max(stepEndMs_ - nowMs(), 1u);
      if (left <= kStepMs && (timeoutMs < 0 || static_cast<uint32_t>(timeoutMs) > left)) {
        timeoutMs = static_cast<int>(left);
      }
    }
  }
  if (stopAfterMs_ == 0) return events_.waitEvent(event, timeoutMs);
  const int left = StopInMs();
  if (left > 0) {
    if (events_.waitEvent(event, timeoutMs < 0 ? left : std::min(timeoutMs, left))) return true;
    if (StopInMs() > 0) return false;
  }
  stopAfterMs_ = 0;
  event = Event{};
  event.type = EventType::HostStop;
  return true;
}

}  // namespace vl
