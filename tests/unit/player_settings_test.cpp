// The settings file, key names and what is remembered.
#include <gtest/gtest.h>

#include "platform/keys.h"
#include "tools/player/settings.h"

namespace vl {
namespace {

TEST(PlayerSettings, AllKeys) {
  Settings settings;
  std::string error;
  ASSERT_TRUE(
      ParseSettings("scaling = \"integer\"\nfull-screen = true\nsize = \"800x600\"\nscreenshots = \"~/shots\"\n"
                    "[keys]\nmenu = \"Ctrl+Shift+F1\"\npause = \"none\"\n"
                    "[[application]]\nfile = \"old.vlp\"\nscaling = \"nearest\"\n",
                    settings, error))
      << error;
  EXPECT_EQ(settings.view.scaling, VL_SCALE_INTEGER);
  EXPECT_EQ(settings.view.fullScreen, true);
  EXPECT_EQ(settings.view.size, "800x600");
  EXPECT_EQ(settings.keys[VL_ACTION_MENU].mods, 3);
  EXPECT_EQ(settings.keys[VL_ACTION_PAUSE].code, 0);
  EXPECT_EQ(settings.applications["old.vlp"].scaling, VL_SCALE_NEAREST);
  EXPECT_FALSE(settings.applications["old.vlp"].fullScreen.has_value()) << "what isn't said stays as it is";
}

TEST(PlayerSettings, MistakesNameTheirLine) {
  const std::pair<const char*, const char*> cases[] = {
      {"scaling = \"big\"\n", "line 1: scaling must be"},
      {"\nfull-screen = 1\n", "line 2: full-screen must be"},
      {"colour = \"red\"\n", "line 1: unknown key \"colour\""},
      {"[keys]\nmenu = \"Ctrl+\"\n", "line 2: \"Ctrl+\" names no key"},
      {"[keys]\njump = \"F1\"\n", "line 2: unknown action"},
      {"[[application]]\nscaling = \"smooth\"\n", "line 1: an [[application]] needs"},
      {"application = 3\n", "line 1: application must be"},
      {"scaling = \n", "line 1: "},
  };
  for (const auto& [text, wanted] : cases) {
    Settings settings;
    std::string error;
    EXPECT_FALSE(ParseSettings(text, settings, error)) << text;
    EXPECT_EQ(error.rfind(wanted, 0), 0u) << error;
  }
}

TEST(PlayerSettings, KeyNames) {
  struct Case {
    const char* text;
    bool isGood;
    int32_t code;
    int32_t mods;
  };
  const Case cases[] = {
      {"F1", true, kKeyF1, 0},
      {"ctrl+F24", true, kKeyF1 + 23, 2},
      {"Alt+Enter", true, kKeyReturn, 4},
      {"Control+Alt+a", true, 'A', 6},
      {"shift+7", true, '7', 1},
      {"None", true, 0, 0},
      {"F25", false, 0, 0},
      {"F0", false, 0, 0},
      {"", false, 0, 0},
      {"Super+F1", false, 0, 0},
      {"Ctrl+Ctrl", false, 0, 0},
      {"\xE4", false, 0, 0},
  };
  for (const Case& c : cases) {
    KeyCombination keys;
    EXPECT_EQ(ParseKeyCombination(c.text, keys), c.isGood) << c.text;
    if (!c.isGood) continue;
    EXPECT_EQ(keys.code, c.code) << c.text;
    EXPECT_EQ(keys.mods, c.mods) << c.text;
  }
}

TEST(PlayerMemory, IsReadAsItWasWritten) {
  Memory memory;
  for (int i = 0; i < 30; ++i) Remember(memory, "/games/" + std::to_string(i) + ".vlp");
  Remember(memory, "/games/25.vlp");
  EXPECT_EQ(memory.recent.size(), kMaxRecent);
  EXPECT_EQ(memory.recent[0], "/games/25.vlp");
  EXPECT_EQ(memory.recent[1], "/games/29.vlp");
  memory.views["/a \"quoted\" \\ name.vlp"].scaling = VL_SCALE_SMOOTH;
  memory.views["/b.vlp"].fullScreen = false;
  const Memory again = ParseMemory(FormatMemory(memory));
  EXPECT_EQ(again.recent, memory.recent);
  ASSERT_EQ(again.views.size(), 2u);
  EXPECT_EQ(again.views.at("/a \"quoted\" \\ name.vlp").scaling, VL_SCALE_SMOOTH);
  EXPECT_EQ(again.views.at("/b.vlp").fullScreen, false);
  for (const char* broken : {"", "[", "recent = 3\nview = \"x\"", "recent = [1, []]\nview = [1, {}, {path = 3}]"}) {
    EXPECT_TRUE(ParseMemory(broken).recent.empty()) << broken;
    EXPECT_TRUE(ParseMemory(broken).views.empty()) << broken;
  }
}

}  // namespace
}  // namespace vl
