#include "platform/sdl/sdl_joysticks.h"

#include <algorithm>

#include "platform/posix/user_folder.h"
#include "platform/text/code_page.h"

namespace vl {
namespace {

constexpr int kStickAxes = 4;

// In the order of their numbers.
constexpr SDL_GameControllerButton kPadButtons[] = {
    SDL_CONTROLLER_BUTTON_A,
    SDL_CONTROLLER_BUTTON_B,
    SDL_CONTROLLER_BUTTON_X,
    SDL_CONTROLLER_BUTTON_Y,
    SDL_CONTROLLER_BUTTON_LEFTSHOULDER,
    SDL_CONTROLLER_BUTTON_RIGHTSHOULDER,
    SDL_CONTROLLER_BUTTON_BACK,
    SDL_CONTROLLER_BUTTON_START,
    SDL_CONTROLLER_BUTTON_LEFTSTICK,
    SDL_CONTROLLER_BUTTON_RIGHTSTICK,
    SDL_CONTROLLER_BUTTON_GUIDE,
    SDL_CONTROLLER_BUTTON_MISC1,
    SDL_CONTROLLER_BUTTON_PADDLE1,
    SDL_CONTROLLER_BUTTON_PADDLE2,
    SDL_CONTROLLER_BUTTON_PADDLE3,
    SDL_CONTROLLER_BUTTON_PADDLE4,
    SDL_CONTROLLER_BUTTON_TOUCHPAD,
};

int32_t PositionOf(int value) { return value < 0 ? value * kJoystickRange / 32768 : value * kJoystickRange / 32767; }

int32_t HatOf(bool up, bool right, bool down, bool left) {
  const int x = int{right} - int{left};
  const int y = int{up} - int{down};
  if (x == 0 && y == 0) return kHatCentre;
  constexpr int32_t kAngles[3][3] = {{22500, 27000, 31500}, {18000, kHatCentre, 0}, {13500, 9000, 4500}};
  return kAngles[x + 1][y + 1];
}

JoystickDescription DescribePad(SDL_GameController* pad) {
  JoystickDescription d;
  if (const char* name = SDL_GameControllerName(pad)) d.name = Text1252OfUtf8(name);
  d.axes = kStickAxes;
  d.rotations = 2;
  d.hats = 1;
  for (const SDL_GameControllerButton& button : kPadButtons) {
    if (SDL_GameControllerHasButton(pad, button)) d.buttons = int(&button - kPadButtons) + 1;
  }
  return d;
}

JoystickDescription DescribeJoystick(SDL_Joystick* joystick) {
  JoystickDescription d;
  if (const char* name = SDL_JoystickName(joystick)) d.name = Text1252OfUtf8(name);
  const int axes = SDL_JoystickNumAxes(joystick);
  d.axes = std::clamp(axes, 0, kStickAxes);
  d.rotations = std::clamp(axes - kStickAxes, 0, kMaxJoystickRotations);
  d.buttons = std::clamp(SDL_JoystickNumButtons(joystick), 0, kMaxJoystickButtons);
  d.hats = std::clamp(SDL_JoystickNumHats(joystick), 0, kMaxJoystickHats);
  return d;
}

}  // namespace

SdlJoysticks::SdlJoysticks() {
  // A joystick is read whichever window is in front, as ever.
  SDL_SetHint(SDL_HINT_JOYSTICK_ALLOW_BACKGROUND_EVENTS, "1");
  isUp_ = SDL_InitSubSystem(SDL_INIT_GAMECONTROLLER) == 0;
  if (!isUp_) return;
  const std::string mappings = UserConfigFile("controllers.txt");
  if (!mappings.empty()) SDL_GameControllerAddMappingsFromFile(mappings.c_str());
  for (int index = 0; index < SDL_NumJoysticks(); ++index) Add(index);
}

SdlJoysticks::~SdlJoysticks() {
  for (Device& device : devices_) device = Device{};
  if (isUp_) SDL_QuitSubSystem(SDL_INIT_GAMECONTROLLER);
}

int SdlJoysticks::NumberOf(SDL_JoystickID id, bool isPad) const {
  const auto found = std::find_if(devices_.begin(), devices_.end(), [&](const Device& device) {
    return device.IsOpen() && device.id == id && (device.pad != nullptr) == isPad;
  });
  return found == devices_.end() ? -1 : int(found - devices_.begin());
}

void SdlJoysticks::Add(int deviceIndex) {
  const SDL_JoystickID id = SDL_JoystickGetDeviceInstanceID(deviceIndex);
  // What was there at the start is announced once more.
  if (id < 0 || NumberOf(id, true) >= 0 || NumberOf(id, false) >= 0) return;
  const auto free = std::find_if(devices_.begin(), devices_.end(), [](const Device& d) { return !d.IsOpen(); });
  if (free == devices_.end()) return;
  if (SDL_IsGameController(deviceIndex)) free->pad.reset(SDL_GameControllerOpen(deviceIndex));
  if (!free->pad) free->joystick.reset(SDL_JoystickOpen(deviceIndex));
  if (!free->IsOpen()) return;
  free->id = id;
  if (queue_) PushAttach(*free);
}

void SdlJoysticks::PushAttach(const Device& device) {
  Event event;
  event.type = EventType::JoystickAttach;
  event.code = int32_t(&device - devices_.data());
  queue_->PushWithBlob(event, WriteJoystickDescription(device.pad ? DescribePad(device.pad.get())
                                                                  : DescribeJoystick(device.joystick.get())));
}

void SdlJoysticks::Announce(ThreadedQueue& queue) {
  queue_ = &queue;
  for (const Device& device : devices_) {
    if (device.IsOpen()) PushAttach(device);
  }
}

void SdlJoysticks::Remove(SDL_JoystickID id) {
  const int number = std::max(NumberOf(id, true), NumberOf(id, false));
  if (number < 0) return;
  devices_[size_t(number)] = Device{};
  Push(EventType::JoystickDetach, number, 0, 0);
}

void SdlJoysticks::Push(EventType type, int number, int index, int32_t value) {
  if (number < 0) return;
  Event event;
  event.type = type;
  event.code = number;
  event.x = index;
  event.y = value;
  queue_->Push(event);
}

void SdlJoysticks::PushPadHat(int number) {
  SDL_GameController* const pad = devices_[size_t(number)].pad.get();
  const auto isDown = [pad](SDL_GameControllerButton button) { return SDL_GameControllerGetButton(pad, button) != 0; };
  Push(EventType::JoystickHat, number, 0,
       HatOf(isDown(SDL_CONTROLLER_BUTTON_DPAD_UP), isDown(SDL_CONTROLLER_BUTTON_DPAD_RIGHT),
             isDown(SDL_CONTROLLER_BUTTON_DPAD_DOWN), isDown(SDL_CONTROLLER_BUTTON_DPAD_LEFT)));
}

void SdlJoysticks::Handle(const SDL_Event& e) {
  switch (e.type) {
    case SDL_JOYDEVICEADDED:
      Add(e.jdevice.which);
      return;
    case SDL_JOYDEVICEREMOVED:
      Remove(e.jdevice.which);
      return;
    case SDL_CONTROLLERAXISMOTION: {
      const int number = NumberOf(e.caxis.which, true);
      const bool isTrigger = e.caxis.axis >= SDL_CONTROLLER_AXIS_TRIGGERLEFT;
      Push(isTrigger ? EventType::JoystickRotation : EventType::JoystickAxis, number,
           isTrigger ? e.caxis.axis - SDL_CONTROLLER_AXIS_TRIGGERLEFT : e.caxis.axis, PositionOf(e.caxis.value));
      return;
    }
    case SDL_CONTROLLERBUTTONDOWN:
    case SDL_CONTROLLERBUTTONUP: {
      const int number = NumberOf(e.cbutton.which, true);
      if (number < 0) return;
      const auto button = std::find(std::begin(kPadButtons), std::end(kPadButtons), e.cbutton.button);
      if (button != std::end(kPadButtons)) {
        Push(EventType::JoystickButton, number, int(button - kPadButtons), e.cbutton.state == SDL_PRESSED);
      } else {
        PushPadHat(number);
      }
      return;
    }
    case SDL_JOYAXISMOTION: {
      const bool isRotation = e.jaxis.axis >= kStickAxes;
      Push(isRotation ? EventType::JoystickRotation : EventType::JoystickAxis, NumberOf(e.jaxis.which, false),
           isRotation ? e.jaxis.axis - kStickAxes : e.jaxis.axis, PositionOf(e.jaxis.value));
      return;
    }
    case SDL_JOYBUTTONDOWN:
    case SDL_JOYBUTTONUP:
      Push(EventType::JoystickButton, NumberOf(e.jbutton.which, false), e.jbutton.button,
           e.jbutton.state == SDL_PRESSED);
      return;
    case SDL_JOYHATMOTION: {
      const auto has = [&](int bit) { return (e.jhat.value & bit) != 0; };
      Push(EventType::JoystickHat, NumberOf(e.jhat.which, false), e.jhat.hat,
           HatOf(has(SDL_HAT_UP), has(SDL_HAT_RIGHT), has(SDL_HAT_DOWN), has(SDL_HAT_LEFT)));
      return;
    }
    default:
      return;
  }
}

}  // namespace vl
