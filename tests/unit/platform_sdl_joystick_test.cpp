// Joysticks of the SDL back end, on SDL's virtual ones, and the mouse that a program holds.
#include <SDL.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/device_queue.h"
#include "platform/posix/user_folder.h"
#include "platform/sdl/sdl_platform.h"

namespace vl {
namespace {

class SdlStick : public ::testing::Test {
 protected:
  void SetUp() override {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    SDL_SetHint(SDL_HINT_JOYSTICK_ALLOW_BACKGROUND_EVENTS, "1");
    ASSERT_EQ(SDL_InitSubSystem(SDL_INIT_GAMECONTROLLER), 0);
  }
  void TearDown() override {
    queue.reset();
    platform.reset();
    SDL_QuitSubSystem(SDL_INIT_GAMECONTROLLER);
  }
  void Start() {
    SdlOptions options;
    options.size = {200, 100};
    std::string reason;
    platform = SdlPlatform::Create(options, reason);
    ASSERT_NE(platform, nullptr) << reason;
    MakeQueue();
  }
  void MakeQueue() {
    const Services services = platform->services();
    queue = std::make_unique<DeviceQueue>(*services.events, services.windows, services.input);
    queue->Update();
  }
  void Pump() {
    SDL_JoystickUpdate();
    platform->pumpHost(0);
    queue->Update();
  }
  const JoystickState& Stick(int number = 0) { return queue->State().joysticks[size_t(number)]; }

  std::unique_ptr<SdlPlatform> platform;
  std::unique_ptr<DeviceQueue> queue;
};

TEST_F(SdlStick, APlainJoystick) {
  const int index = SDL_JoystickAttachVirtual(SDL_JOYSTICK_TYPE_FLIGHT_STICK, 6, 12, 1);
  ASSERT_GE(index, 0) << SDL_GetError();
  Start();
  SDL_Joystick* device = SDL_JoystickOpen(index);
  ASSERT_NE(device, nullptr);
  ASSERT_TRUE(Stick().isAttached) << "there before the program's first question";
  EXPECT_EQ(Stick().description.axes, 4);
  EXPECT_EQ(Stick().description.rotations, 2);
  EXPECT_EQ(Stick().description.buttons, 12);
  EXPECT_EQ(Stick().description.hats, 1);
  SDL_JoystickSetVirtualAxis(device, 0, -32768);
  SDL_JoystickSetVirtualAxis(device, 3, 32767);
  SDL_JoystickSetVirtualAxis(device, 5, 16384);
  SDL_JoystickSetVirtualButton(device, 11, SDL_PRESSED);
  SDL_JoystickSetVirtualHat(device, 0, SDL_HAT_RIGHTDOWN);
  Pump();
  EXPECT_EQ(Stick().axes[0], -65535);
  EXPECT_EQ(Stick().axes[3], 65535);
  EXPECT_EQ(Stick().rotations[1], 32768);
  EXPECT_TRUE(Stick().buttons[11]);
  EXPECT_EQ(Stick().hats[0], 13500);
  SDL_JoystickSetVirtualHat(device, 0, SDL_HAT_CENTERED);
  SDL_JoystickSetVirtualButton(device, 11, SDL_RELEASED);
  Pump();
  EXPECT_EQ(Stick().hats[0], kHatCentre);
  EXPECT_TRUE(Stick().buttons.none());
  queue.reset();
  platform->renew(std::nullopt);
  MakeQueue();
  EXPECT_TRUE(Stick().isAttached) << "another run of the same window";
  SDL_JoystickClose(device);
  SDL_JoystickDetachVirtual(index);
  Pump();
  EXPECT_FALSE(Stick().isAttached);
}

TEST_F(SdlStick, APadThatComesAndGoes) {
  Start();
  EXPECT_FALSE(Stick().isAttached);
  const int index = SDL_JoystickAttachVirtual(SDL_JOYSTICK_TYPE_GAMECONTROLLER, SDL_CONTROLLER_AXIS_MAX,
                                              SDL_CONTROLLER_BUTTON_MAX, 0);
  ASSERT_GE(index, 0) << SDL_GetError();
  Pump();
  ASSERT_TRUE(Stick().isAttached);
  EXPECT_FALSE(Stick(1).isAttached) << "one device is one joystick";
  EXPECT_EQ(Stick().description.axes, 4);
  EXPECT_EQ(Stick().description.rotations, 2);
  EXPECT_EQ(Stick().description.hats, 1);
  EXPECT_GE(Stick().description.buttons, 11);
  SDL_Joystick* device = SDL_JoystickOpen(index);
  const std::pair<SDL_GameControllerButton, size_t> buttons[] = {{SDL_CONTROLLER_BUTTON_A, 0},
                                                                 {SDL_CONTROLLER_BUTTON_Y, 3},
                                                                 {SDL_CONTROLLER_BUTTON_LEFTSHOULDER, 4},
                                                                 {SDL_CONTROLLER_BUTTON_BACK, 6},
                                                                 {SDL_CONTROLLER_BUTTON_START, 7}};
  for (const auto& [button, number] : buttons) {
    SDL_JoystickSetVirtualButton(device, button, SDL_PRESSED);
    Pump();
    EXPECT_TRUE(Stick().buttons[number]) << number;
    EXPECT_EQ(Stick().buttons.count(), 1u) << number;
    SDL_JoystickSetVirtualButton(device, button, SDL_RELEASED);
    Pump();
  }
  SDL_JoystickSetVirtualAxis(device, SDL_CONTROLLER_AXIS_LEFTY, -32768);
  SDL_JoystickSetVirtualAxis(device, SDL_CONTROLLER_AXIS_RIGHTX, 32767);
  SDL_JoystickSetVirtualAxis(device, SDL_CONTROLLER_AXIS_TRIGGERRIGHT, 32767);
  SDL_JoystickSetVirtualButton(device, SDL_CONTROLLER_BUTTON_DPAD_UP, SDL_PRESSED);
  SDL_JoystickSetVirtualButton(device, SDL_CONTROLLER_BUTTON_DPAD_LEFT, SDL_PRESSED);
  Pump();
  EXPECT_EQ(Stick().axes[1], -65535);
  EXPECT_EQ(Stick().axes[2], 65535);
  EXPECT_EQ(Stick().rotations[1], 65535);
  EXPECT_EQ(Stick().hats[0], 31500);
  EXPECT_TRUE(Stick().buttons.none());
  SDL_JoystickClose(device);
  SDL_JoystickDetachVirtual(index);
  Pump();
  EXPECT_FALSE(Stick().isAttached);
}

TEST_F(SdlStick, AHeldMouseGivesMovements) {
  Start();
  queue->HoldMouse(true);
  queue->PlaceCursor(500, 400);
  platform->pumpHost(0);
  Uint32 window = 0;
  while (!SDL_GetWindowFromID(window)) ++window;
  SDL_Event move{};
  move.type = SDL_MOUSEMOTION;
  move.motion.windowID = window;
  move.motion.x = 3;
  move.motion.y = 4;
  move.motion.xrel = -20;
  move.motion.yrel = 7;
  SDL_PushEvent(&move);
  Pump();
  EXPECT_EQ(queue->State().cursorX, 480);
  EXPECT_EQ(queue->State().cursorY, 407);
  queue->HoldMouse(false);
  platform->pumpHost(0);
  SDL_PushEvent(&move);
  Pump();
  EXPECT_EQ(queue->State().cursorX, 3);
  EXPECT_EQ(queue->State().cursorY, 4);
}

TEST(UserConfigFile, FollowsTheEnvironment) {
  const std::string config = std::getenv("XDG_CONFIG_HOME") ? std::getenv("XDG_CONFIG_HOME") : "";
  const std::string home = std::getenv("HOME") ? std::getenv("HOME") : "";
  setenv("HOME", "/home/someone", 1);
  setenv("XDG_CONFIG_HOME", "/elsewhere", 1);
  EXPECT_EQ(UserConfigFile("a.txt"), "/elsewhere/vorlane/a.txt");
  setenv("XDG_CONFIG_HOME", "not/absolute", 1);
  EXPECT_EQ(UserConfigFile("a.txt"), "/home/someone/.config/vorlane/a.txt");
  unsetenv("XDG_CONFIG_HOME");
  unsetenv("HOME");
  EXPECT_EQ(UserConfigFile("a.txt"), "");
  if (!home.empty()) setenv("HOME", home.c_str(), 1);
  if (!config.empty()) setenv("XDG_CONFIG_HOME", config.c_str(), 1);
}

// The person's own mappings count: here the first button is made the pad's Start.
TEST_F(SdlStick, ThePersonsMappings) {
  const int index = SDL_JoystickAttachVirtual(SDL_JOYSTICK_TYPE_FLIGHT_STICK, 2, 2, 0);
  ASSERT_GE(index, 0) << SDL_GetError();
  char guid[40];
  SDL_JoystickGetGUIDString(SDL_JoystickGetDeviceGUID(index), guid, sizeof guid);
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "vl_joystick_test";
  std::filesystem::create_directories(folder / "vorlane");
  std::ofstream(folder / "vorlane/controllers.txt")
      << guid << ",Mine,a:b1,start:b0,leftx:a0,platform:" << SDL_GetPlatform()
      << ",crc:" << std::string{guid[6], guid[7], guid[4], guid[5]} << ",\n";
  const std::string config = std::getenv("XDG_CONFIG_HOME") ? std::getenv("XDG_CONFIG_HOME") : "";
  setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
  Start();
  unsetenv("XDG_CONFIG_HOME");
  if (!config.empty()) setenv("XDG_CONFIG_HOME", config.c_str(), 1);
  std::filesystem::remove_all(folder);
  SDL_Joystick* device = SDL_JoystickOpen(index);
  SDL_JoystickSetVirtualButton(device, 0, SDL_PRESSED);
  Pump();
  EXPECT_EQ(Stick().description.name, "Mine");
  EXPECT_TRUE(Stick().buttons[7]);
  SDL_JoystickClose(device);
  SDL_JoystickDetachVirtual(index);
}

}  // namespace
}  // namespace vl
