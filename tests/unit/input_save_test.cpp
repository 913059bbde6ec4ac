// GameInput.SaveSettings to a file that the run made: only other classes can make one, so here the test does.
#include <gtest/gtest.h>

#include "host/globals.h"
#include "host/run.h"
#include "input/game_input_library.h"
#include "interpreter/interpretor.h"
#include "platform/device_queue.h"
#include "platform/headless/headless_platform.h"
#include "platform/memory_files.h"
#include "tools/project/project.h"

namespace vl {
namespace {

constexpr std::string_view kProgram = R"(
g = New GameInput(CurWindow, "game.txt");
g.Start("two");
a = "" + g.SaveSettings("saved.txt") + g.IsStarted() + g.GetCurrentSettingName() + g.GetPlayerDeviceType();
g.Stop();
b = "" + g.LoadSettings("saved.txt") + g.GetSettingCount() + g.GetSettingName(1);
c = g.SaveSettings("saved.txt");
d = g.Start(0);
Delete g;
g = New GameInput(CurWindow, "game.txt");
e = g.Start("one");
)";

std::string Content(FileSystem& files, std::string_view path) {
  const std::unique_ptr<File> file = files.open(path, FileMode::Read);
  if (!file) return "no such file";
  std::string bytes(size_t(file->size()), '\0');
  bytes.resize(file->read(bytes.data(), bytes.size()));
  return bytes;
}

TEST(GameInputClass, SavesTheSettingsAndGoesOn) {
  MemoryFileSystem files;
  const auto add = [&](std::string_view name, std::string_view bytes) {
    files.Add(name, std::span(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
  };
  add("app.vlp", SingleSourceApplication(kProgram, "main.vlq"));
  add("game.txt",
      "One\n\tPlayer 1\nTwo\n\tPreferredDevices=Keyboard\n\tPlayer 1\n\t\tFire\n\t\t\tKeyboard\n\t\t\t\tkey_vk_a+X\n");
  HeadlessPlatform platform({});
  Services services = platform.services();
  RunFiles disk(&files);
  services.files = services.disk = &disk;
  DeviceQueue devices(*services.events, services.windows, services.input);
  services.events = services.devices = &devices;
  ClassRegistry registry = PlayerClasses();
  registry.attachWindow = [](CInterpretor& interpreter) {
    interpreter.AddTempFile("saved.txt");
    PlayerClasses().attachWindow(interpreter);
  };
  CThreadParam param;
  param.path = "app.vlp";
  CInterpretor interpreter(param, services, registry);
  ASSERT_TRUE(interpreter.Init());
  std::string saved;
  std::string globals;
  interpreter.onEnd = [&] {
    saved = Content(disk, "saved.txt");
    globals = GlobalsToJson(interpreter);
  };
  EXPECT_TRUE(interpreter.Start()) << interpreter.FormatLastError();
  EXPECT_EQ(globals, R"({"a":"11Two1","b":"12Two","c":1,"d":1,"e":1,"g":{"object":"GameInput"}})");
  EXPECT_EQ(saved,
            "One\r\n\tPreferredDevices=Joystick;Keyboard;Mouse\r\n\tPlayer 1\r\n"
            "Two\r\n\tPreferredDevices=Keyboard\r\n\tPlayer 1\r\n\t\tFire\r\n\t\t\tMouse\r\n\t\t\tJoystick\r\n"
            "\t\t\tKeyboard\r\n\t\t\t\tKEY_VK_A+X\r\n");
  EXPECT_TRUE(ClaimGameInput()) << "what ran ended with the run";
  ReleaseGameInput();
}

}  // namespace
}  // namespace vl
