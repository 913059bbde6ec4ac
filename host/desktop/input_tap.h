// InputTap: an event queue that notes what passes, for a later replay, and the translation to and from the C
// interface's input events.
#pragma once

#include <utility>
#include <vector>

#include "include/vorlane.h"
#include "platform/clock.h"
#include "platform/events.h"

namespace vl {

// False for a type that is no input.
bool ToEvent(const vl_input_event& input, Event& event);
bool FromEvent(const Event& event, vl_input_event& input);

class InputTap final : public EventQueue {
 public:
  InputTap(EventQueue& inner, Clock& clock) : inner_(inner), clock_(clock), startMs_(clock.nowMs()) {}
  bool waitEvent(Event& event, int timeoutMs) override;
  std::string takeBlob(uint32_t id) override { return inner_.takeBlob(id); }

  // Read when the run has ended.
  struct Recorded {
    uint64_t atMs;
    vl_input_event input;
  };
  const std::vector<Recorded>& Events() const { return events_; }

 private:
  EventQueue& inner_;
  Clock& clock_;
  uint32_t startMs_;
  std::vector<Recorded> events_;
};

}  // namespace vl
