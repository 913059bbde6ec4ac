// GameDevice: a mouse, a joystick or the keyboard, as a player of a game input setting holds it.
//
// Devices are read from the state that the run's queue keeps. A joystick that was pulled out reads as one at rest.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "input/input_table.h"
#include "platform/device_queue.h"

namespace vl {

class GameDevice {
 public:
  explicit GameDevice(DeviceQueue& queue) : queue_(queue) {}
  // Closes it.
  virtual ~GameDevice() = default;
  GameDevice(const GameDevice&) = delete;
  GameDevice& operator=(const GameDevice&) = delete;

  // False when the device can't be had. `exclusive`: it is the game's alone as long as it is open.
  virtual bool Open(bool exclusive) = 0;
  virtual bool NeedsPoll() const { return true; }
  virtual void Poll() { queue_.Update(); }
  virtual bool IsButtonDown(int index) const = 0;
  // Hundredths of a degree clockwise from forward, 65535 in the centre; 0 for a hat that isn't there.
  virtual int32_t GetHat(int index) const { return 0; }
  virtual void GetAxisRange(int index, int32_t& min, int32_t& max) const { min = max = 0; }
  virtual void GetRotationRange(int index, int32_t& min, int32_t& max) const { min = max = 0; }
  // A relative axis gives what it moved since it was last asked for that side of it.
  virtual int32_t GetAxis(int index, bool positive) { return 0; }
  virtual int32_t GetRotation(int index) const { return 0; }
  virtual void SetAxisRange(int32_t min, int32_t max) {}
  // So far from its centre an axis counts as at rest.
  virtual int32_t GetDeadZone() const { return 0; }
  virtual bool HasForceFeedback() const { return false; }

  // The value of an input on this device, 0 to 65535. Polls.
  int32_t GetValue(const InputRow& input);

 protected:
  DeviceQueue& queue_;
};

// Null for None. `number` tells joysticks apart.
std::unique_ptr<GameDevice> MakeGameDevice(DeviceQueue& queue, DeviceKind kind, int number);

// A position in a range as 0 to 65535 of the half range on one side of its centre.
int32_t ScaleHalfRange(int32_t value, int32_t min, int32_t max, int32_t deadZone, bool positive);

}  // namespace vl
