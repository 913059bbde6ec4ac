#include "input/setup_capture.h"

#include <cstdlib>

#include "platform/keys.h"

namespace vl {
namespace {

// So far a stick or the mouse must go to be meant.
constexpr int32_t kMeantPosition = kJoystickRange / 2;
constexpr int kMeantPixels = 60;

std::optional<int> Row(DeviceKind kind, InputGroup group, int index) {
  const int row = FindInput(kind, group, index);
  return row == kUnknownInput ? std::nullopt : std::optional<int>(row);
}

std::optional<int> AxisRow(DeviceKind kind, int axis, bool positive) {
  return Row(kind, positive ? InputGroup::AxisPositive : InputGroup::AxisNegative, axis);
}

// The axis that went from rest to one side.
template <typename Axes>
std::optional<std::pair<int, bool>> MovedAxis(const Axes& before, const Axes& now) {
  for (size_t i = 0; i < now.size(); ++i) {
    if (std::abs(now[i]) > kMeantPosition && std::abs(now[i] - before[i]) > kMeantPosition) {
      return std::pair{static_cast<int>(i), now[i] > 0};
    }
  }
  return std::nullopt;
}

std::optional<int> JoystickRow(const JoystickState& before, const JoystickState& now) {
  constexpr DeviceKind kKind = DeviceKind::Joystick;
  for (int i = 0; i < now.description.buttons; ++i) {
    const auto button = static_cast<size_t>(i);
    if (now.buttons[button] && !before.buttons[button]) return Row(kKind, InputGroup::Button, i);
  }
  for (int i = 0; i < now.description.hats; ++i) {
    const auto hat = static_cast<size_t>(i);
    if (now.hats[hat] != kHatCentre && now.hats[hat] != before.hats[hat]) return Row(kKind, InputGroup::Hat, i);
  }
  if (const auto axis = MovedAxis(before.axes, now.axes)) return AxisRow(kKind, axis->first, axis->second);
  if (const auto axis = MovedAxis(before.rotations, now.rotations)) {
    return Row(kKind, axis->second ? InputGroup::RotationPositive : InputGroup::RotationNegative, axis->first);
  }
  return std::nullopt;
}

}  // namespace

SetupCapture::SetupCapture(DeviceKind kind, const DeviceState& state)
    : kind_(kind), before_(state.joysticks), wasFourthDown_(state.IsKeyDown(kKeyFourthButton)) {}

std::optional<int> SetupCapture::Key(int32_t virtualKey) const {
  return Takes(DeviceKind::Keyboard) ? Row(DeviceKind::Keyboard, InputGroup::Button, virtualKey) : std::nullopt;
}

std::optional<int> SetupCapture::MouseButton(int32_t button) const {
  if (!Takes(DeviceKind::Mouse)) return std::nullopt;
  const int index = button == kMouseLeft ? 0 : button == kMouseRight ? 1 : button == kMouseMiddle ? 2 : 3;
  return Row(DeviceKind::Mouse, InputGroup::Button, index);
}

// Only where the mouse alone is meant: else it would always come first.
std::optional<int> SetupCapture::MouseMove(int x, int y) {
  if (kind_ != DeviceKind::Mouse) return std::nullopt;
  if (!mouseStart_) mouseStart_ = {x, y};
  const int dx = x - (*mouseStart_)[0];
  const int dy = y - (*mouseStart_)[1];
  if (std::abs(dx) >= kMeantPixels) return AxisRow(DeviceKind::Mouse, 0, dx > 0);
  if (std::abs(dy) >= kMeantPixels) return AxisRow(DeviceKind::Mouse, 1, dy > 0);
  return std::nullopt;
}

std::optional<int> SetupCapture::Wheel(int32_t delta) const {
  return Takes(DeviceKind::Mouse) && delta != 0 ? AxisRow(DeviceKind::Mouse, 2, delta > 0) : std::nullopt;
}

std::optional<int> SetupCapture::Devices(const DeviceState& state) const {
  if (state.IsKeyDown(kKeyFourthButton) && !wasFourthDown_) {
    if (const auto row = MouseButton(kMouseFourth)) return row;
  }
  if (!Takes(DeviceKind::Joystick)) return std::nullopt;
  for (size_t i = 0; i < before_.size(); ++i) {
    const JoystickState& now = state.joysticks[i];
    if (!now.isAttached || now.attachments != before_[i].attachments) continue;
    if (const auto row = JoystickRow(before_[i], now)) return row;
  }
  return std::nullopt;
}

}  // namespace vl
