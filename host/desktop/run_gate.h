// RunGate: holds a run between two of its ticks, for a pause or for one step at a time.
//
// It stands before the clock and the event queue of a back end: the interpreter's thread blocks in either, and the
// time that it was held doesn't pass for the program. A step lets the program run until it shows a picture, and at
// most for kStepMs of its time. It may also tell the host's stop after so much of the program's time.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

#include "platform/clock.h"
#include "platform/events.h"

namespace vl {

class RunGate final : public Clock, public EventQueue {
 public:
  static constexpr uint32_t kStepMs = 50;

  // Both outlive it. stopAfterMs above 0: HostStop arrives then, once.
  RunGate(Clock& clock, EventQueue& events, uint64_t stopAfterMs = 0)
      : clock_(clock), events_(events), stopAfterMs_(stopAfterMs), startMs_(clock.nowMs()) {}

  // From any thread.
  void SetPaused(bool paused);
  bool IsPaused() const { return isClosed_; }
  // Pauses first when it isn't paused.
  void Step();
  // The run is to end: never holds again.
  void OpenForGood();

  // On the run's thread.
  void OnPresent() { isStepping_ = false; }
  uint32_t nowMs() override { return clock_.nowMs() - heldMs_; }
  LocalTime localTime() override { return clock_.localTime(); }
  uint32_t seed() override { return clock_.seed(); }
  void tick() override {
    if (isClosed_.load(std::memory_order_relaxed)) Hold();
    clock_.tick();
  }
  bool waitEvent(Event& event, int timeoutMs) override;
  std::string takeBlob(uint32_t id) override { return events_.takeBlob(id); }
  bool isExhausted() override { return events_.isExhausted(); }

 private:
  void Hold();
  // Of the program's time until the stop is due.
  int StopInMs();

  Clock& clock_;
  EventQueue& events_;
  uint64_t stopAfterMs_;  // 0: never, or no more
  uint32_t startMs_;
  std::atomic<bool> isClosed_{false};
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isOpenForGood_ = false;
  bool isStepGranted_ = false;
  // The run's thread only.
  uint32_t heldMs_ = 0;
  bool isStepping_ = false;
  uint32_t stepEndMs_ = 0;
};

}  // namespace vl
