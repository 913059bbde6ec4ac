// The set-up dialog's parts: what counts as pressed, and the tree of settings.
#include <gtest/gtest.h>

#include "input/setup_capture.h"
#include "input/setup_tree.h"
#include "platform/keys.h"

namespace vl {
namespace {

std::string NameOf(std::optional<int> row) { return row ? std::string(InputTable()[size_t(*row)].Name()) : ""; }

TEST(SetupCapture, TakesTheKindThatIsMeant) {
  const DeviceState state;
  for (const DeviceKind kind : {DeviceKind::None, DeviceKind::Mouse, DeviceKind::Joystick, DeviceKind::Keyboard}) {
    SetupCapture capture(kind, state);
    const bool any = kind == DeviceKind::None;
    EXPECT_EQ(NameOf(capture.Key('A')), any || kind == DeviceKind::Keyboard ? "KEY_VK_A" : "");
    EXPECT_EQ(NameOf(capture.Key(kKeyOem1)), "") << "no row has it";
    const bool isMouse = any || kind == DeviceKind::Mouse;
    EXPECT_EQ(NameOf(capture.MouseButton(kMouseRight)), isMouse ? "MOUSE_BUTTON2" : "");
    EXPECT_EQ(NameOf(capture.Wheel(-30)), isMouse ? "MOUSE_WHEELBACK" : "");
    EXPECT_EQ(NameOf(capture.MouseMove(100, 100)), "");
    EXPECT_EQ(NameOf(capture.MouseMove(150, 120)), "") << "not far enough";
    EXPECT_EQ(NameOf(capture.MouseMove(100, 30)), kind == DeviceKind::Mouse ? "MOUSE_TOP" : "");
  }
}

TEST(SetupCapture, TakesWhatChangesOnJoysticks) {
  DeviceState state;
  JoystickState& stick = state.joysticks[2];
  stick.isAttached = true;
  stick.description = {"stick", 8, 8, 128, 4};
  stick.hats.fill(kHatCentre);
  stick.buttons[5] = true;  // held from before, as is a throttle at its end
  stick.axes[3] = kJoystickRange;
  const SetupCapture capture(DeviceKind::Joystick, state);
  struct Case {
    std::function<void(JoystickState&)> change;
    const char* name;
  };
  const Case cases[] = {
      {[](JoystickState&) {}, ""},
      {[](JoystickState& s) { s.buttons[127] = true; }, "JOY_BUTTON128"},
      {[](JoystickState& s) { s.buttons[5] = false; }, ""},
      {[](JoystickState& s) { s.hats[1] = 0; }, "JOY_POV2"},
      {[](JoystickState& s) { s.axes[0] = -40000; }, "JOY_LEFT"},
      {[](JoystickState& s) { s.axes[1] = 40000; }, "JOY_BOTTOM"},
      {[](JoystickState& s) { s.axes[0] = 30000; }, ""},
      {[](JoystickState& s) { s.axes[3] = -65535; }, "JOY_V_AXIS_NEG"},
      {[](JoystickState& s) { s.axes[6] = 65535; }, ""},  // no row has it
      {[](JoystickState& s) { s.rotations[4] = 65535; }, "JOY_ROT_V_POS"},
      {[](JoystickState& s) { s.attachments++, s.buttons[0] = true; }, ""},  // another one
  };
  for (const Case& c : cases) {
    DeviceState now = state;
    c.change(now.joysticks[2]);
    EXPECT_EQ(NameOf(capture.Devices(now)), c.name);
  }
  state.keys[kKeyFourthButton] = true;
  EXPECT_EQ(NameOf(SetupCapture(DeviceKind::Mouse, DeviceState{}).Devices(state)), "MOUSE_BUTTON4");
  EXPECT_EQ(NameOf(SetupCapture(DeviceKind::Mouse, state).Devices(state)), "") << "held from before";
}

std::string RowsOf(const SetupTree& tree) {
  std::string text;
  for (const SetupRow& row : tree.Rows()) {
    text += std::string(row.place.Depth(), '.') + row.text + (row.hasChildren ? row.isExpanded ? "-" : "+" : "") + "\n";
  }
  return text;
}

TEST(SetupTree, RowsFollowWhatIsDone) {
  GameSettings settings;
  SetupTree tree(settings, "All", "Player");
  EXPECT_EQ(RowsOf(tree), "All\n");
  const SetupPlace a = tree.AddNamed({}, "A");
  const SetupPlace b = tree.AddNamed({}, "B");
  tree.AddNamed(a, "");
  const SetupPlace player = tree.AddNamed(b, "");
  SetupPlace action = tree.AddNamed(player, "Jump");
  tree.Rename(action, "Hop");
  tree.Expand(action, true);
  const SetupPlace keyboard = tree.Rows().back().place;
  const SetupPlace binding = tree.AddInput(keyboard, FindInput("KEY_VK_J"));
  const SetupPlace modifier = tree.AddInput(binding, FindInput("KEY_VK_K"));
  tree.AddInput(modifier, FindInput("MOUSE_BUTTON1"));
  tree.SetInput(modifier, FindInput("JOY_POV1"));
  EXPECT_EQ(RowsOf(tree),
            "All-\n.A-\n..Player 1\n.B-\n..Player 1-\n...Hop-\n....Mouse\n....Joystick\n....Keyboard-\n"
            ".....KEY_VK_J-\n......+ JOY_POV1\n......+ MOUSE_BUTTON1\n");
  tree.Prefer(keyboard);
  EXPECT_EQ(settings[1]->preferred, (std::array{DeviceKind::Keyboard, DeviceKind::Joystick, DeviceKind::Mouse}));
  settings[1]->preferred.fill(DeviceKind::None);
  tree.Prefer(keyboard);
  EXPECT_EQ(settings[1]->preferred[0], DeviceKind::Keyboard);
  // What was open stays open though its place has changed.
  EXPECT_EQ(tree.Delete(a), SetupPlace{});
  EXPECT_EQ(RowsOf(tree),
            "All-\n.B-\n..Player 1-\n...Hop-\n....Mouse\n....Joystick\n....Keyboard-\n.....KEY_VK_J-\n"
            "......+ JOY_POV1\n......+ MOUSE_BUTTON1\n");
  const SetupPlace hop = tree.Rows()[3].place;
  tree.Expand(hop, false);
  EXPECT_EQ(tree.RowOf(tree.Rows()[3].place), 3u);
  SetupPlace hidden = hop;
  hidden.node = SetupNode::Device;
  EXPECT_EQ(tree.RowOf(hidden), 3u) << "the nearest row above it";
  EXPECT_EQ(tree.Delete(hop).node, SetupNode::Player);
  EXPECT_EQ(RowsOf(tree), "All-\n.B-\n..Player 1\n");
  // The first free number of a player.
  const SetupPlace setting = tree.Rows()[1].place;
  settings[0]->players.resize(3);
  EXPECT_EQ(tree.AddNamed(setting, "").at[1], 1);
  for (int i = 0; i < 70; ++i) tree.AddNamed(setting, "");
  EXPECT_EQ(settings[0]->players.size(), 64u);
}

}  // namespace
}  // namespace vl
