// ScriptedQueue: an event queue that is fed from a list of recorded input and moves a virtual clock.
//
// Nothing waits for real. An event is available once the clock has reached its time; waiting moves the clock
// to the next event or by the timeout, whichever is first.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "platform/events.h"
#include "platform/headless/virtual_clock.h"

namespace vl {

struct TimedEvent {
  uint64_t atMs = 0;
  Event event;
  std::string blob;  // content of the event, fetched by takeBlob; event.id is then given by the queue
};

class ScriptedQueue final : public EventQueue {
 public:
  // How far a wait for ever moves the clock when no event is left at all.
  static constexpr int kIdleStepMs = 1000;

  // maxTimeMs above 0: HostStop arrives then, once.
  ScriptedQueue(VirtualClock& clock, uint64_t maxTimeMs) : clock_(clock), stopAtMs_(maxTimeMs) {}

  // With timeoutMs -1 and no events left it gives false after kIdleStepMs of the clock, so callers can notice.
  bool waitEvent(Event& event, int timeoutMs) override;
  std::string takeBlob(uint32_t id) override;
  bool isExhausted() override { return IsDone(); }

  // Events may come in any order; equal times keep the order given.
  void Script(TimedEvent event);
  // Available at once, before scripted ones that are due.
  void Push(const Event& event) { ready_.push_back(event); }
  // Gives the id under which takeBlob finds the content.
  uint32_t AddBlob(std::string content);
  bool IsDone() const { return ready_.empty() && scripted_.empty() && (stopAtMs_ == 0 || stopSent_); }

 private:
  bool TakeDue(Event& event);
  // The time of the next event, or UINT64_MAX.
  uint64_t NextMs() const;

  VirtualClock& clock_;
  uint64_t stopAtMs_;
  bool stopSent_ = false;
  std::deque<Event> ready_;
  std::multimap<uint64_t, Event> scripted_;
  std::map<uint32_t, std::string> blobs_;
  uint32_t nextBlob_ = 1;
};

}  // namespace vl
