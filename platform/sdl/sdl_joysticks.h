// SdlJoysticks: joysticks and game pads through SDL, as events of the run's queue.
//
// A pad that the controller database knows stands like a joystick of the period: its left stick is axes 0 and 1, the
// right one 2 and 3, its triggers are the rotations 0 and 1, its directional buttons hat 0, and its buttons are
// numbered A, B, X, Y, left and right shoulder, back, start, left and right stick, guide and what more there is. Any
// other joystick gives its first four axes as axes and the rest as rotations. On the host's thread only.
#pragma once

#include <SDL.h>

#include <array>
#include <memory>

#include "platform/device_state.h"
#include "platform/posix/threaded_queue.h"

namespace vl {

class SdlJoysticks {
 public:
  // Reads the person's own mappings and takes in what is plugged in; without SDL's joysticks there are none.
  SdlJoysticks();
  ~SdlJoysticks();
  SdlJoysticks(const SdlJoysticks&) = delete;
  SdlJoysticks& operator=(const SdlJoysticks&) = delete;

  // Needs a queue.
  void Handle(const SDL_Event& event);
  // A run begins, with a queue of its own, which outlives this or the next call: what is plugged in is told anew.
  void Announce(ThreadedQueue& queue);

 private:
  struct Close {
    void operator()(SDL_Joystick* joystick) const { SDL_JoystickClose(joystick); }
    void operator()(SDL_GameController* pad) const { SDL_GameControllerClose(pad); }
  };
  // One of the two is open, or the number is free.
  struct Device {
    std::unique_ptr<SDL_GameController, Close> pad;
    std::unique_ptr<SDL_Joystick, Close> joystick;
    SDL_JoystickID id = -1;
    bool IsOpen() const { return pad || joystick; }
  };

  void Add(int deviceIndex);
  void PushAttach(const Device& device);
  void Remove(SDL_JoystickID id);
  // The number of an open one, -1 for none. `isPad` tells which kind of event it is: each device counts by one only.
  int NumberOf(SDL_JoystickID id, bool isPad) const;
  void Push(EventType type, int number, int index, int32_t value);
  void PushPadHat(int number);

  ThreadedQueue* queue_ = nullptr;
  bool isUp_;
  std::array<Device, kMaxJoysticks> devices_;
};

}  // namespace vl
