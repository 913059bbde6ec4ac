// DeviceQueue: the event queue of a run, which keeps the state of the input devices up to date with what passes.
//
// It may look ahead: Update takes in all that has arrived, so that the state is that of the moment, and hands the
// events on later. Events that concern a device only are not handed on. One per run, on its thread.
#pragma once

#include <deque>

#include "platform/device_state.h"
#include "platform/events.h"
#include "platform/input_devices.h"
#include "platform/window_system.h"

namespace vl {

class DeviceQueue final : public EventQueue {
 public:
  // All outlive the queue; windows and devices may be null.
  DeviceQueue(EventQueue& inner, WindowSystem* windows, InputDevices* devices)
      : inner_(inner), windows_(windows), devices_(devices) {}
  ~DeviceQueue() override { HoldMouse(false); }

  bool waitEvent(Event& event, int timeoutMs) override;
  std::string takeBlob(uint32_t id) override { return inner_.takeBlob(id); }
  bool isExhausted() override { return pending_.empty() && inner_.isExhausted(); }

  // Takes in what has arrived.
  void Update();
  const DeviceState& State() const { return state_; }
  void PlaceCursor(int x, int y);
  void HoldMouse(bool held);
  bool IsMouseHeld() const { return isMouseHeld_; }
  ScreenInfo Screen() const { return windows_ ? windows_->screen() : ScreenInfo{}; }

 private:
  // Feeds the state. False for an event that isn't to be handed on.
  bool Take(Event& event);
  void MoveMouse(Event& event);

  EventQueue& inner_;
  WindowSystem* windows_;
  InputDevices* devices_;
  DeviceState state_;
  std::deque<Event> pending_;
  bool isMouseHeld_ = false;
};

}  // namespace vl
