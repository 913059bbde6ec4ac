// SetupCapture: waits for the input that a person presses, to bind it.
#pragma once

#include <array>
#include <optional>

#include "input/input_table.h"
#include "platform/device_state.h"

namespace vl {

class SetupCapture {
 public:
  // kind: the device that is meant; None for any. What is pressed already doesn't count.
  SetupCapture(DeviceKind kind, const DeviceState& state);

  DeviceKind Kind() const { return kind_; }
  // Each gives a row of the table, or nothing when that isn't what is waited for.
  std::optional<int> Key(int32_t virtualKey) const;
  std::optional<int> MouseButton(int32_t button) const;
  std::optional<int> MouseMove(int x, int y);
  std::optional<int> Wheel(int32_t delta) const;
  std::optional<int> Devices(const DeviceState& state) const;

 private:
  bool Takes(DeviceKind kind) const { return kind_ == DeviceKind::None || kind_ == kind; }

  DeviceKind kind_;
  std::array<JoystickState, kMaxJoysticks> before_;
  bool wasFourthDown_;
  std::optional<std::array<int, 2>> mouseStart_;
};

}  // namespace vl
