// InputTap: an event queue that notes what passes, for a later replay, and the translation to and from the C
// interface's input events.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "include/vorlane.h"
#include "platform/clock.h"
#include "platform/events.h"

namespace vl {

// False for a type that is no input. An event's content is input.text; it stays the caller's.
bool ToEvent(const vl_input_event& input, Event& event);
bool FromEvent(const Event& event, vl_input_event& input);

class InputTap final : public EventQueue {
 public:
  InputTap(EventQueue& inner, Clock& clock) : inner_(inner), clock_(clock), startMs_(clock.nowMs()) {}
  bool waitEvent(Event& event, int timeoutMs) override;
  std::string takeBlob(uint32_t id) override;
  bool isExhausted() override { return inner_.isExhausted(); }

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
  std::deque<std::string> texts_;              // what events_ point to
  std::map<uint32_t, std::string> unclaimed_;  // content that was read for the record and is still to be taken
};

}  // namespace vl
