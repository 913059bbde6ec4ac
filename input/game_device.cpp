#include "input/game_device.h"

#include <algorithm>
#include <cstdlib>

#include "platform/keys.h"

namespace vl {
namespace {

constexpr int32_t kFullValue = 65535;
constexpr int32_t kJoystickDeadZone = 2000;
constexpr int32_t kCentredHat = 65535;
constexpr int kWheelNotch = 120;

class KeyboardDevice final : public GameDevice {
 public:
  using GameDevice::GameDevice;
  bool Open(bool exclusive) override { return true; }
  bool IsButtonDown(int index) const override { return queue_.State().IsKeyDown(index); }
};

// A held mouse: the pointer is put back to the screen's centre after each reading, and what it moved is counted.
class MouseDevice final : public GameDevice {
 public:
  using GameDevice::GameDevice;
  ~MouseDevice() override {
    if (isExclusive_) queue_.HoldMouse(false);
  }

  bool Open(bool exclusive) override {
    queue_.Update();
    const ScreenInfo screen = queue_.Screen();
    width_ = screen.width;
    height_ = screen.height;
    isExclusive_ = exclusive;
    lastX_ = queue_.State().cursorX;
    lastY_ = queue_.State().cursorY;
    wheelStart_ = queue_.State().wheel;
    if (exclusive) {
      queue_.HoldMouse(true);
      PutBack();
    }
    return true;
  }

  void Poll() override {
    GameDevice::Poll();
    const DeviceState& state = queue_.State();
    travel_[0] += state.cursorX - lastX_;
    travel_[1] += state.cursorY - lastY_;
    travel_[2] = state.wheel - wheelStart_;
    lastX_ = state.cursorX;
    lastY_ = state.cursorY;
    if (isExclusive_) PutBack();
  }

  bool IsButtonDown(int index) const override {
    constexpr int32_t kKeys[] = {kKeyLeftButton, kKeyRightButton, kKeyMiddleButton, kKeyFourthButton};
    return index >= 0 && index < 4 && queue_.State().IsKeyDown(kKeys[index]);
  }

  void GetAxisRange(int index, int32_t& min, int32_t& max) const override {
    max = index == 0 ? width_ / 2 : index == 1 ? height_ / 2 : kWheelNotch;
    min = -max;
  }

  int32_t GetAxis(int index, bool positive) override {
    if (index < 0 || index >= kAxes) return 0;
    const auto axis = static_cast<size_t>(index);
    int64_t& mark = marks_[axis][positive ? 1 : 0];
    const int64_t moved = travel_[axis] - mark;
    mark = travel_[axis];
    return static_cast<int32_t>(std::clamp<int64_t>(moved, INT32_MIN, INT32_MAX));
  }

 private:
  static constexpr int kAxes = 3;

  void PutBack() {
    lastX_ = width_ / 2;
    lastY_ = height_ / 2;
    queue_.PlaceCursor(lastX_, lastY_);
  }

  bool isExclusive_ = false;
  int width_ = 0;
  int height_ = 0;
  int32_t lastX_ = 0;
  int32_t lastY_ = 0;
  int64_t wheelStart_ = 0;
  // All movement since the mouse was opened, and how much of it each side of an axis has told.
  std::array<int64_t, kAxes> travel_{};
  std::array<std::array<int64_t, 2>, kAxes> marks_{};
};

class JoystickDevice final : public GameDevice {
 public:
  JoystickDevice(DeviceQueue& queue, int number) : GameDevice(queue), number_(static_cast<size_t>(number)) {}

  bool Open(bool exclusive) override { return State().isAttached; }
  bool IsButtonDown(int index) const override {
    return index >= 0 && index < kMaxJoystickButtons && State().buttons[static_cast<size_t>(index)];
  }
  int32_t GetHat(int index) const override {
    if (index < 0 || index >= State().description.hats) return 0;
    const int32_t hat = State().hats[static_cast<size_t>(index)];
    return hat == kHatCentre ? kCentredHat : hat;
  }
  void GetAxisRange(int, int32_t& min, int32_t& max) const override {
    min = min_;
    max = max_;
  }
  void GetRotationRange(int index, int32_t& min, int32_t& max) const override { GetAxisRange(index, min, max); }
  int32_t GetAxis(int index, bool) override {
    return index >= 0 && index < kMaxJoystickAxes ? InRange(State().axes[static_cast<size_t>(index)]) : InRange(0);
  }
  int32_t GetRotation(int index) const override {
    return index >= 0 && index < kMaxJoystickRotations ? InRange(State().rotations[static_cast<size_t>(index)])
                                                       : InRange(0);
  }
  void SetAxisRange(int32_t min, int32_t max) override {
    min_ = min;
    max_ = max;
  }
  int32_t GetDeadZone() const override { return kJoystickDeadZone; }

 private:
  const JoystickState& State() const { return queue_.State().joysticks[number_]; }
  int32_t InRange(int32_t position) const {
    if (min_ == -kJoystickRange && max_ == kJoystickRange) return position;
    const int64_t span = int64_t{max_} - min_;
    return static_cast<int32_t>(min_ + (int64_t{position} + kJoystickRange) * span / (2 * kJoystickRange));
  }

  size_t number_;
  int32_t min_ = -kJoystickRange;
  int32_t max_ = kJoystickRange;
};

}  // namespace

int32_t ScaleHalfRange(int32_t value, int32_t min, int32_t max, int32_t deadZone, bool positive) {
  constexpr int64_t kSpan = 0x1FFFE;
  const int64_t span = int64_t{max} - min;
  if (span <= 0) return 0;
  const int64_t fromCentre = value - (int64_t{min} + max) / 2;
  if (std::llabs(fromCentre) < deadZone) return 0;
  if (positive ? value >= max : value <= min) return kFullValue;
  const int64_t scaled = span <= kSpan ? fromCentre * (kSpan / span) : fromCentre / (span / kSpan);
  const int64_t side = positive ? scaled : -scaled;
  return static_cast<int32_t>(std::clamp<int64_t>(side, 0, kFullValue));
}

int32_t GameDevice::GetValue(const InputRow& input) {
  if (NeedsPoll()) Poll();
  int32_t min = 0;
  int32_t max = 0;
  switch (input.group) {
    case InputGroup::Button:
      return IsButtonDown(input.index) ? kFullValue : 0;
    case InputGroup::AxisNegative:
    case InputGroup::AxisPositive: {
      const bool positive = input.group == InputGroup::AxisPositive;
      GetAxisRange(input.index, min, max);
      return ScaleHalfRange(GetAxis(input.index, positive), min, max, GetDeadZone(), positive);
    }
    case InputGroup::RotationNegative:
    case InputGroup::RotationPositive:
      GetRotationRange(input.index, min, max);
      return ScaleHalfRange(GetRotation(input.index), min, max, GetDeadZone(),
                            input.group == InputGroup::RotationPositive);
    case InputGroup::Hat:
      return GetHat(input.index);
  }
  return 0;
}

std::unique_ptr<GameDevice> MakeGameDevice(DeviceQueue& queue, DeviceKind kind, int number) {
  switch (kind) {
    case DeviceKind::Mouse:
      return std::make_unique<MouseDevice>(queue);
    case DeviceKind::Joystick:
      return std::make_unique<JoystickDevice>(queue, number);
    case DeviceKind::Keyboard:
      return std::make_unique<KeyboardDevice>(queue);
    case DeviceKind::None:
      break;
  }
  return nullptr;
}

}  // namespace vl
