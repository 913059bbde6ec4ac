// Game input without a program: the table of inputs, scaling, and the text of settings.
#include <gtest/gtest.h>

#include <set>

#include "input/game_device.h"
#include "input/game_input_library.h"
#include "input/settings_text.h"

namespace vl {
namespace {

bool Read(const std::string& text, GameSettings& settings) {
  CMemoryStream stream(text.data(), uint32_t(text.size()));
  return ReadSettingsText(stream, settings);
}

std::string WrittenOf(const std::string& text) {
  GameSettings settings;
  Read(text, settings);
  return WriteSettingsText(settings);
}

TEST(InputTable, HasEveryNameOnce) {
  std::set<std::string_view> names;
  std::array<int, 4> counts{};
  for (const InputRow& row : InputTable()) {
    EXPECT_TRUE(names.insert(row.Name()).second) << row.Name();
    EXPECT_EQ(row.id, ++counts[size_t(row.kind)]) << row.Name();
    EXPECT_EQ(&InputTable()[size_t(FindInput(row.Name()))], &row) << row.Name();
  }
  EXPECT_EQ(counts, (std::array<int, 4>{0, 10, 150, 117}));
  struct Case {
    const char* name;
    DeviceKind kind;
    InputGroup group;
    int index;
  };
  const Case cases[] = {
      {"joy_top", DeviceKind::Joystick, InputGroup::AxisNegative, 1},
      {"JOY_V_AXIS_POS", DeviceKind::Joystick, InputGroup::AxisPositive, 3},
      {"JOY_ROT_V_NEG", DeviceKind::Joystick, InputGroup::RotationNegative, 4},
      {"JOY_POV4", DeviceKind::Joystick, InputGroup::Hat, 3},
      {"JOY_BUTTON128", DeviceKind::Joystick, InputGroup::Button, 127},
      {"MOUSE_WHEELBACK", DeviceKind::Mouse, InputGroup::AxisNegative, 2},
      {"MOUSE_BUTTON4", DeviceKind::Mouse, InputGroup::Button, 3},
      {"KEY_VK_RMENU", DeviceKind::Keyboard, InputGroup::Button, 165},
      {"Key_Vk_0", DeviceKind::Keyboard, InputGroup::Button, 48},
      {"KEY_VK_Z", DeviceKind::Keyboard, InputGroup::Button, 90},
      {"KEY_VK_NUMPAD9", DeviceKind::Keyboard, InputGroup::Button, 105},
      {"KEY_VK_F24", DeviceKind::Keyboard, InputGroup::Button, 135},
      {"KEY_VK_SCROLL", DeviceKind::Keyboard, InputGroup::Button, 145},
  };
  for (const Case& c : cases) {
    const int found = FindInput(c.name);
    ASSERT_NE(found, kUnknownInput) << c.name;
    const InputRow& row = InputTable()[size_t(found)];
    EXPECT_EQ(row.kind, c.kind) << c.name;
    EXPECT_EQ(row.group, c.group) << c.name;
    EXPECT_EQ(row.index, c.index) << c.name;
    EXPECT_EQ(FindInput(c.kind, c.group, c.index), found) << c.name;
  }
  for (const char* name : {"", "JOY_BUTTON", "JOY_BUTTON129", "JOY_BUTTON0", "KEY_VK_", "KEY_VK_F25", "JOY_LEFT ",
                           "A_NAME_THAT_IS_LONGER_THAN_ANY_OF_THEM"}) {
    EXPECT_EQ(FindInput(name), kUnknownInput) << name;
  }
}

TEST(ScaleHalfRange, Values) {
  struct Case {
    int32_t value, min, max, zone;
    bool positive;
    int32_t result;
  };
  const Case cases[] = {
      {0, -65535, 65535, 2000, true, 0},
      {1999, -65535, 65535, 2000, true, 0},
      {2000, -65535, 65535, 2000, true, 2000},
      {-2000, -65535, 65535, 2000, true, 0},
      {-2000, -65535, 65535, 2000, false, 2000},
      {65534, -65535, 65535, 2000, true, 65534},
      {65535, -65535, 65535, 2000, true, 65535},
      {99999, -65535, 65535, 2000, true, 65535},
      {-65535, -65535, 65535, 2000, false, 65535},
      {-65535, -65535, 65535, 2000, true, 0},
      {1, -512, 512, 0, true, 127},  // 131070 / 1024 is 127
      {511, -512, 512, 0, true, 64897},
      {512, -512, 512, 0, true, 65535},
      {30000, 0, 65535, 0, false, 5534},  // centre 32767, factor 131070 / 65535 = 2
      {0, 0, 65535, 0, false, 65535},
      {300000, 0, 1000000, 0, false, 28571},                      // centre 500000, 1000000 / 131070 = 7
      {2000000000, -2147483647 - 1, 2147483647, 0, true, 61035},  // 4294967295 / 131070 = 32768
      {5, 5, 5, 0, true, 0},
      {5, 9, 1, 0, true, 0},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ScaleHalfRange(c.value, c.min, c.max, c.zone, c.positive), c.result) << c.value << " of " << c.max;
  }
}

TEST(SettingsText, WrittenAsTold) {
  const std::string text =
      "Normal\r\n"
      "\tPreferredDevices=Joystick;Keyboard;Mouse\r\n"
      "\tPlayer 1\r\n"
      "\t\tFire\r\n"
      "\t\t\tMouse\r\n"
      "\t\t\t\tMOUSE_BUTTON1\r\n"
      "\t\t\tJoystick\r\n"
      "\t\t\t\tJOY_BUTTON1\r\n"
      "\t\t\tKeyboard\r\n"
      "\t\t\t\tKEY_VK_SPACE+KEY_VK_SHIFT\r\n"
      "\t\t\t\tUNKNOWN+SPEECH_BEGIN[two words]SPEECH_END\r\n"
      "\tPlayer 3\r\n"
      "Other\r\n"
      "\tPreferredDevices=Keyboard\r\n";
  EXPECT_EQ(WrittenOf(text), text);
  std::string unixText = text;
  std::erase(unixText, '\r');
  EXPECT_EQ(WrittenOf(unixText), text);
  std::string macText = text;
  std::erase(macText, '\n');
  EXPECT_EQ(WrittenOf(macText), text);
  EXPECT_EQ(WrittenOf(text + '\0'), text) << "as a text element of a bank ends";
  // A setting starts with all kinds; the order of the devices and the case of names become the writer's.
  EXPECT_EQ(
      WrittenOf("a\n\tplayer 1\n\t\tx\n\t\t\tkeyboard\n\t\t\t\tkey_vk_a\t+ \tunknown  Key_Vk_B\n\t\t\tMOUSE"),
      "a\r\n\tPreferredDevices=Joystick;Keyboard;Mouse\r\n\tPlayer 1\r\n\t\tx\r\n\t\t\tMouse\r\n\t\t\tJoystick\r\n"
      "\t\t\tKeyboard\r\n\t\t\t\tKEY_VK_A+unknown+KEY_VK_B\r\n");
}

TEST(SettingsText, PreferredDevices) {
  const std::pair<const char*, const char*> cases[] = {
      {"=Joystick;Keyboard;Mouse", "Joystick;Keyboard;Mouse"},
      {" = \tmouse,KEYBOARD", "Mouse;Keyboard"},
      {"Speech;Mouse;Speech", "Mouse"},
      {"=??Joystick???Mouse", "Joystick;Mouse"},
      {"=JoystickKeyboard", "Joystick"},  // the character behind a word goes with it
      {"=Mouse;Mouse;Mouse;Keyboard", "Mouse;Mouse;Mouse"},
      {"", ""},
  };
  for (const auto& [list, written] : cases) {
    EXPECT_EQ(WrittenOf(std::string("s\n\tPreferredDevices") + list),
              std::string("s\r\n\tPreferredDevices=") + written + "\r\n")
        << list;
  }
}

TEST(SettingsText, WhatStopsAndWhatIsSkipped) {
  GameSettings settings;
  EXPECT_TRUE(Read("", settings));
  EXPECT_TRUE(Read("\n\r\n\t\t\t\t\tdeep\n\t\n\tPlayer 1\n\t\tlost\n", settings)) << "lines before the first setting";
  EXPECT_TRUE(settings.empty());
  EXPECT_FALSE(Read("a\nb\n\tsomething\nc\n", settings));
  EXPECT_EQ(settings.size(), 2u);
  settings.clear();
  EXPECT_TRUE(
      Read("a\n\tPlayer 65\n\tPlayer -1\n\tPlayer 99999999999999\n\tPlayer\n\tPlayer 2\n\tPlayer 64", settings));
  ASSERT_EQ(settings[0]->players.size(), 64u);
  EXPECT_EQ(settings[0]->players[0], nullptr);
  EXPECT_NE(settings[0]->players[1], nullptr);
  EXPECT_NE(settings[0]->players[63], nullptr);
  settings.clear();
  // A line goes on as another one after 511 bytes.
  EXPECT_TRUE(Read(std::string(511, 'a') + "\tPlayer 1\n\tPlayer 2", settings));
  ASSERT_EQ(settings.size(), 1u);
  EXPECT_EQ(settings[0]->name.size(), 511u);
  EXPECT_EQ(settings[0]->players.size(), 2u);
  settings.clear();
  EXPECT_FALSE(Read(std::string((1u << 20) + 1, '\n'), settings));
}

TEST(GameInputLibrary, WithoutWindowOrDevices) {
  GameInputLibrary library;
  library.Open(nullptr, 0);
  library.AddSetting("One").players.push_back(std::make_unique<GamePlayer>());
  EXPECT_FALSE(library.ActivateSetting(0)) << "no window";
  library.SetWindow(7);
  EXPECT_FALSE(library.ActivateSetting(1));
  EXPECT_FALSE(library.ActivateSetting("Two"));
  ASSERT_TRUE(library.ActivateSetting("one"));
  EXPECT_EQ(library.GetPlayer(0)->kind, DeviceKind::None) << "nobody has a device";
  EXPECT_EQ(library.GetValue(0, "x"), 0);
  EXPECT_EQ(library.GetPlayer(1), nullptr);
  library.ClearSettings();
  EXPECT_EQ(library.GetPlayerCount(), -1);
}

TEST(GameInputLibrary, OneOfTheProcess) {
  EXPECT_TRUE(ClaimGameInput());
  EXPECT_FALSE(ClaimGameInput());
  ReleaseGameInput();
  EXPECT_TRUE(ClaimGameInput());
  ReleaseGameInput();
}

}  // namespace
}  // namespace vl
