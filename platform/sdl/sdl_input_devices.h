// SdlInputDevices: what the program asks of the mouse, noted on its thread and done on the host's.
#pragma once

#include <SDL.h>

#include <atomic>
#include <functional>
#include <utility>

#include "platform/input_devices.h"

namespace vl {

class SdlInputDevices final : public InputDevices {
 public:
  // `wake` tells the host's thread that there is something to do.
  explicit SdlInputDevices(std::function<void()> wake) : wake_(std::move(wake)) {}

  void holdMouse(bool held) override {
    isWanted_ = held;
    wake_();
  }
  bool givesMovements() const override { return true; }

  // On the host's thread.
  void Apply() {
    const bool wanted = isWanted_;
    if (wanted == isHeld_) return;
    isHeld_ = wanted;
    SDL_SetRelativeMouseMode(wanted ? SDL_TRUE : SDL_FALSE);
  }
  bool IsHeld() const { return isHeld_; }

 private:
  std::function<void()> wake_;
  std::atomic<bool> isWanted_{false};
  bool isHeld_ = false;
};

}  // namespace vl
