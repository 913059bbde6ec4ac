// The state of keys, mouse and joysticks, and the queue that feeds it.
#include <gtest/gtest.h>

#include <deque>

#include "platform/device_queue.h"
#include "platform/keys.h"

namespace vl {
namespace {

class ListQueue final : public EventQueue {
 public:
  bool waitEvent(Event& event, int) override {
    if (events.empty()) return false;
    event = events.front();
    events.pop_front();
    return true;
  }
  std::string takeBlob(uint32_t) override { return blob; }
  void Add(EventType type, int32_t code, int32_t x = 0, int32_t y = 0, int32_t ch = 0) {
    Event e;
    e.type = type;
    e.code = code;
    e.x = x;
    e.y = y;
    e.ch = ch;
    events.push_back(e);
  }
  std::deque<Event> events;
  std::string blob;
};

TEST(JoystickDescription, TextBothWays) {
  const JoystickDescription d{"A pad, of sorts", 4, 2, 11, 1};
  EXPECT_EQ(WriteJoystickDescription(d), "4 2 11 1 A pad, of sorts");
  EXPECT_EQ(ReadJoystickDescription(WriteJoystickDescription(d)), d);
  struct Case {
    const char* text;
    JoystickDescription d;
  };
  const Case cases[] = {
      {"", {}},
      {"name only", {"name only", 0, 0, 0, 0}},
      {"2", {"", 2, 0, 0, 0}},
      {"99 99 999 99 x", {"x", 8, 8, 128, 4}},
      {"-1 -2 -3 -4 x", {"x", 0, 0, 0, 0}},
      {"99999999999999999999 1 1 1 x", {"x", 0, 1, 1, 1}},
  };
  for (const Case& c : cases) EXPECT_EQ(ReadJoystickDescription(c.text), c.d) << c.text;
}

TEST(DeviceState, JoystickEventsOutsideWhatItHas) {
  DeviceState state;
  const auto apply = [&](EventType type, int32_t number, int32_t x, int32_t y) {
    Event e;
    e.type = type;
    e.code = number;
    e.x = x;
    e.y = y;
    state.Apply(e, "2 1 3 1 pad");
  };
  for (const int number : {-1, kMaxJoysticks, 1 << 30}) apply(EventType::JoystickAttach, number, 0, 0);
  for (const JoystickState& joystick : state.joysticks) EXPECT_FALSE(joystick.isAttached);
  apply(EventType::JoystickButton, 15, 0, 1);
  apply(EventType::JoystickAttach, 15, 0, 0);
  JoystickState& joystick = state.joysticks[15];
  EXPECT_TRUE(joystick.isAttached);
  EXPECT_TRUE(joystick.buttons.none());
  EXPECT_EQ(joystick.hats[0], kHatCentre);
  for (const int index : {-1, 2, 8, 1 << 30}) apply(EventType::JoystickAxis, 15, index, 5);
  for (const int index : {-1, 3, 128, 1 << 30}) apply(EventType::JoystickButton, 15, index, 1);
  for (const int index : {-1, 1, 4}) apply(EventType::JoystickHat, 15, index, 9000);
  apply(EventType::JoystickAxis, 15, 1, 1 << 30);
  apply(EventType::JoystickRotation, 15, 0, -(1 << 30));
  apply(EventType::JoystickHat, 15, 0, 36000 + 4500);
  EXPECT_EQ(joystick.axes, (std::array<int32_t, kMaxJoystickAxes>{0, kJoystickRange}));
  EXPECT_EQ(joystick.rotations[0], -kJoystickRange);
  EXPECT_TRUE(joystick.buttons.none());
  EXPECT_EQ(joystick.hats[0], 4500);
  apply(EventType::JoystickDetach, 15, 0, 0);
  EXPECT_EQ(joystick.axes[1], 0);
  apply(EventType::JoystickAttach, 15, 0, 0);
  EXPECT_EQ(joystick.attachments, 2u);
}

TEST(DeviceQueue, LooksAheadAndHandsOnLater) {
  ListQueue inner;
  DeviceQueue queue(inner, nullptr, nullptr);
  inner.blob = "1 0 1 0 stick";
  inner.Add(EventType::KeyDown, kKeyRightControl);
  inner.Add(EventType::JoystickAttach, 0);
  inner.Add(EventType::JoystickAxis, 0, 0, 77);
  inner.Add(EventType::MouseDown, kMouseFourth, 5, 6, 1);
  inner.Add(EventType::MouseMove, 0, 10, 20);
  inner.Add(EventType::MouseMove, 0, 3, -5, 1);
  queue.Update();
  EXPECT_TRUE(inner.events.empty());
  EXPECT_TRUE(queue.State().IsKeyDown(kKeyControl));
  EXPECT_FALSE(queue.State().IsKeyDown(kKeyLeftControl));
  EXPECT_TRUE(queue.State().IsKeyDown(kKeyFourthButton));
  EXPECT_EQ(queue.State().joysticks[0].axes[0], 77);
  EXPECT_EQ(queue.State().cursorX, 13);
  EXPECT_EQ(queue.State().cursorY, 15);
  // Windows get the key without its side and positions only, and nothing of the devices.
  Event e;
  ASSERT_TRUE(queue.waitEvent(e, 0));
  EXPECT_EQ(e.code, kKeyControl);
  ASSERT_TRUE(queue.waitEvent(e, 0));
  EXPECT_EQ(e.type, EventType::MouseMove);
  ASSERT_TRUE(queue.waitEvent(e, 0));
  EXPECT_EQ(e.x, 13);
  EXPECT_EQ(e.y, 15);
  EXPECT_EQ(e.ch, 0);
  EXPECT_FALSE(queue.waitEvent(e, 0));
  for (int i = 0; i < 20000; ++i) inner.Add(EventType::Char, 0);
  queue.Update();
  EXPECT_GT(inner.events.size(), 10000u) << "the rest waits where it is";
}

}  // namespace
}  // namespace vl
