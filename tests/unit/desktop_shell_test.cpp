// The player's menu and error box: which input does what, and that all of it can be seen.
#include <gtest/gtest.h>

#include "host/desktop/shell/error_panel.h"
#include "host/desktop/shell/shell_menu.h"
#include "platform/keys.h"
#include "platform/posix/posix_font_finder.h"
#include "platform/text/freetype_text_engine.h"

namespace vl {
namespace {

class ShellTest : public ::testing::Test {
 protected:
  static Event Make(EventType type, int code, int x = 0, int y = 0) {
    Event event;
    event.type = type;
    event.code = code;
    event.x = x;
    event.y = y;
    return event;
  }
  PosixFontFinder fonts;
  FreeTypeTextEngine text{fonts};
  ShellPainter painter{text};
};

TEST_F(ShellTest, MenuByKeysAndMouse) {
  ShellMenu menu;
  const auto show = [&](int x, int y) {
    menu.Show({{ShellAction::Pause, "Pause", "Ctrl+F8", false, {}},
               {ShellAction::Open, "Play a", {}, true, "/a"},
               {ShellAction::Quit, "Quit", {}, true, {}}},
              painter, x, y, {300, 200});
  };
  show(290, 190);
  const WindowOverlay picture = menu.Paint(painter);
  EXPECT_EQ(picture.x + picture.width, 300) << "moved so that it is seen whole";
  EXPECT_EQ(picture.y + picture.height, 200);
  using Answer = ShellMenu::Answer;
  EXPECT_EQ(menu.OnInput(Make(EventType::KeyDown, kKeyReturn)), Answer::Nothing) << "nothing is marked yet";
  EXPECT_EQ(menu.OnInput(Make(EventType::KeyDown, kKeyUp)), Answer::Changed);
  EXPECT_EQ(menu.Marked().action, ShellAction::Quit);
  menu.OnInput(Make(EventType::KeyDown, kKeyDown));
  menu.OnInput(Make(EventType::KeyDown, kKeyDown));
  EXPECT_EQ(menu.OnInput(Make(EventType::KeyDown, kKeyReturn)), Answer::Chosen);
  EXPECT_EQ(menu.Marked().path, "/a");
  show(10, 20);
  EXPECT_EQ(menu.OnInput(Make(EventType::MouseMove, 0, 30, 30)), Answer::Changed);
  EXPECT_NE(menu.Paint(painter).pixels, picture.pixels) << "the marked item looks different";
  EXPECT_EQ(menu.OnInput(Make(EventType::MouseDown, kMouseLeft, 30, 30)), Answer::Nothing);
  EXPECT_EQ(menu.OnInput(Make(EventType::MouseUp, kMouseLeft, 30, 30)), Answer::Chosen);
  EXPECT_EQ(menu.Marked().action, ShellAction::Pause);
  EXPECT_EQ(menu.OnInput(Make(EventType::MouseDown, kMouseLeft, 5, 5)), Answer::Left);
  EXPECT_EQ(menu.OnInput(Make(EventType::KeyDown, kKeyEscape)), Answer::Left);
  menu.Hide();
  EXPECT_FALSE(menu.IsShown());
}

TEST_F(ShellTest, ErrorPanel) {
  using Answer = ErrorPanel::Answer;
  ErrorPanel panel;
  panel.Show("game - main", "Error #111 at line 3.", "main:3:5: divided by 0", painter);
  EXPECT_EQ(panel.Text(), "game - main: Error #111 at line 3.\nmain:3:5: divided by 0");
  const WindowOverlay picture = panel.Paint(painter);
  EXPECT_EQ((Size{picture.width, picture.height}), panel.WindowSize());
  EXPECT_EQ(panel.OnInput(Make(EventType::KeyDown, kKeyReturn)), Answer::Close) << "the last button has the focus";
  EXPECT_EQ(panel.OnInput(Make(EventType::KeyDown, kKeyTab)), Answer::Changed);
  EXPECT_EQ(panel.OnInput(Make(EventType::KeyDown, kKeySpace)), Answer::Copy);
  panel.OnInput(Make(EventType::KeyDown, kKeyTab));
  EXPECT_EQ(panel.OnInput(Make(EventType::KeyDown, kKeySpace)), Answer::Reload);
  Event copy = Make(EventType::KeyDown, 'C');
  EXPECT_EQ(panel.OnInput(copy), Answer::Nothing);
  copy.mods = kModControl;
  EXPECT_EQ(panel.OnInput(copy), Answer::Copy);
  const int y = picture.height - 20;
  EXPECT_EQ(panel.OnInput(Make(EventType::MouseDown, kMouseLeft, picture.width - 30, y)), Answer::Changed);
  EXPECT_EQ(panel.OnInput(Make(EventType::MouseUp, kMouseLeft, 5, 5)), Answer::Nothing) << "released elsewhere";
  panel.OnInput(Make(EventType::MouseDown, kMouseLeft, picture.width - 30, y));
  EXPECT_EQ(panel.OnInput(Make(EventType::MouseUp, kMouseLeft, picture.width - 30, y)), Answer::Close);
  // Very long texts stay in a window that a screen can show.
  panel.Show("t", std::string(20000, 'x'), std::string(5000, '\n'), painter);
  EXPECT_LE(panel.WindowSize().height, 600);
}

}  // namespace
}  // namespace vl
