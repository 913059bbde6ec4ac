#include "platform/device_queue.h"

#include <algorithm>

#include "platform/keys.h"

namespace vl {
namespace {

// A program that asks for keys and never serves its windows must not gather events without end.
constexpr size_t kMaxPending = 4096;
// So far a held mouse may go before anybody reads it.
constexpr int32_t kMaxCursor = 1 << 24;

}  // namespace

bool DeviceQueue::waitEvent(Event& event, int timeoutMs) {
  if (!pending_.empty()) {
    event = pending_.front();
    pending_.pop_front();
    return true;
  }
  // An event that isn't handed on ends the wait all the same: somebody may wait for a joystick, and callers loop.
  while (inner_.waitEvent(event, timeoutMs)) {
    if (Take(event)) return true;
    timeoutMs = 0;
  }
  return false;
}

void DeviceQueue::Update() {
  Event event;
  while (pending_.size() < kMaxPending && inner_.waitEvent(event, 0)) {
    if (Take(event)) pending_.push_back(event);
  }
}

bool DeviceQueue::Take(Event& event) {
  switch (event.type) {
    case EventType::JoystickAttach:
      state_.Apply(event, inner_.takeBlob(event.id));
      return false;
    case EventType::JoystickDetach:
    case EventType::JoystickAxis:
    case EventType::JoystickRotation:
    case EventType::JoystickButton:
    case EventType::JoystickHat:
      state_.Apply(event, {});
      return false;
    case EventType::MouseMove:
      MoveMouse(event);
      return true;
    case EventType::MouseDown:
    case EventType::MouseUp:
      MoveMouse(event);
      state_.Apply(event, {});
      return event.code != kMouseFourth;
    default:
      state_.Apply(event, {});
      // Windows know Shift, Control and Alt without their side.
      if (event.type == EventType::KeyDown || event.type == EventType::KeyUp) event.code = EitherSideOf(event.code);
      return true;
  }
}

// Windows are told a position in any case.
void DeviceQueue::MoveMouse(Event& event) {
  const std::optional<std::pair<int, int>> origin = windows_ ? windows_->clientOrigin(event.window) : std::nullopt;
  const int left = origin ? origin->first : 0;
  const int top = origin ? origin->second : 0;
  const auto within = [](int64_t at) { return static_cast<int32_t>(std::clamp<int64_t>(at, -kMaxCursor, kMaxCursor)); };
  if (event.type == EventType::MouseMove && event.ch == 1) {
    state_.cursorX = within(int64_t{state_.cursorX} + event.x);
    state_.cursorY = within(int64_t{state_.cursorY} + event.y);
    event.x = state_.cursorX - left;
    event.y = state_.cursorY - top;
    event.ch = 0;
    return;
  }
  if (isMouseHeld_ && devices_ && devices_->givesMovements()) return;
  state_.cursorX = within(int64_t{left} + event.x);
  state_.cursorY = within(int64_t{top} + event.y);
}

void DeviceQueue::PlaceCursor(int x, int y) {
  state_.cursorX = x;
  state_.cursorY = y;
}

void DeviceQueue::HoldMouse(bool held) {
  if (held == isMouseHeld_) return;
  isMouseHeld_ = held;
  if (devices_) devices_->holdMouse(held);
}

}  // namespace vl
