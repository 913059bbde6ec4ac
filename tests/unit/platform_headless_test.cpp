// The headless back end: the virtual clock, recorded input, windows in memory.
#include <gtest/gtest.h>

#include "platform/headless/headless_platform.h"

namespace vl {
namespace {

Event Make(EventType type, int32_t code = 0, NativeWindow window = 0) {
  Event e;
  e.type = type;
  e.code = code;
  e.window = window;
  return e;
}

TEST(VirtualClock, MovesOnlyWhenMoved) {
  VirtualClock clock;
  EXPECT_EQ(clock.nowMs(), 0u);
  EXPECT_EQ(clock.nowMs(), 0u);
  for (int i = 0; i < 5; ++i) clock.tick();
  EXPECT_EQ(clock.nowMs(), 5u);
  clock.Advance(uint64_t{UINT32_MAX});
  EXPECT_EQ(clock.nowMs(), 4u) << "wraps as the period's clock did";
  EXPECT_EQ(clock.ElapsedMs(), uint64_t{UINT32_MAX} + 5);
}

TEST(VirtualClock, KnowsTheCalendar) {
  struct Case {
    int64_t seconds;
    int year, month, day, weekday, hour, minute, second;
  };
  const Case cases[] = {
      {0, 1970, 1, 1, 4, 0, 0, 0},
      {VirtualClock::kDefaultStart, 2000, 1, 1, 6, 12, 0, 0},
      {951782399, 2000, 2, 28, 1, 23, 59, 59},
      {951782400, 2000, 2, 29, 2, 0, 0, 0},
      {4107542400, 2100, 3, 1, 1, 0, 0, 0},  // no leap year
      {-1, 1969, 12, 31, 3, 23, 59, 59},
  };
  for (const Case& c : cases) {
    const LocalTime t = CivilTime(c.seconds, 7);
    EXPECT_EQ(t.year, c.year) << c.seconds;
    EXPECT_EQ(t.month, c.month) << c.seconds;
    EXPECT_EQ(t.day, c.day) << c.seconds;
    EXPECT_EQ(t.dayOfWeek, c.weekday) << c.seconds;
    EXPECT_EQ(t.hour * 3600 + t.minute * 60 + t.second, c.hour * 3600 + c.minute * 60 + c.second) << c.seconds;
    EXPECT_EQ(t.millisecond, 7);
  }
  VirtualClock clock;
  clock.Advance(61001);
  EXPECT_EQ(clock.localTime().minute, 1);
  EXPECT_EQ(clock.localTime().second, 1);
  EXPECT_EQ(clock.localTime().millisecond, 1);
}

TEST(ScriptedQueue, TimePassesInWaits) {
  VirtualClock clock;
  ScriptedQueue queue(clock, 0);
  queue.Script({100, Make(EventType::KeyUp, 2), {}});
  queue.Script({50, Make(EventType::KeyDown, 1), {}});
  queue.Script({100, Make(EventType::KeyDown, 3), {}});
  Event e;
  EXPECT_FALSE(queue.waitEvent(e, 0));
  EXPECT_EQ(clock.nowMs(), 0u) << "polling takes no time";
  EXPECT_FALSE(queue.waitEvent(e, 20));
  EXPECT_EQ(clock.nowMs(), 20u);
  EXPECT_TRUE(queue.waitEvent(e, 1000));
  EXPECT_EQ(e.code, 1);
  EXPECT_EQ(clock.nowMs(), 50u) << "no longer than until the event";
  EXPECT_TRUE(queue.waitEvent(e, -1));
  EXPECT_EQ(e.code, 2) << "equal times keep their order";
  queue.Push(Make(EventType::Expose, 9));
  EXPECT_TRUE(queue.waitEvent(e, 0));
  EXPECT_EQ(e.code, 9);
  EXPECT_TRUE(queue.waitEvent(e, 0));
  EXPECT_EQ(e.code, 3);
  EXPECT_EQ(clock.nowMs(), 100u);
  EXPECT_TRUE(queue.IsDone());
  EXPECT_FALSE(queue.waitEvent(e, -1)) << "a wait for what never comes ends";
  EXPECT_EQ(clock.nowMs(), 1100u);
  // Events that became due while the program was busy come at once.
  queue.Script({1101, Make(EventType::Char, 4), {}});
  clock.Advance(500);
  EXPECT_TRUE(queue.waitEvent(e, 0));
  EXPECT_EQ(e.code, 4);
}

TEST(ScriptedQueue, StopsTheRunOnceAtItsTime) {
  VirtualClock clock;
  ScriptedQueue queue(clock, 200);
  queue.Script({150, Make(EventType::KeyDown, 1), {}});
  queue.Script({250, Make(EventType::KeyDown, 2), {}});
  Event e;
  EXPECT_TRUE(queue.waitEvent(e, -1));
  EXPECT_EQ(e.code, 1);
  EXPECT_TRUE(queue.waitEvent(e, -1));
  EXPECT_EQ(e.type, EventType::HostStop);
  EXPECT_EQ(clock.nowMs(), 200u);
  EXPECT_TRUE(queue.waitEvent(e, -1));
  EXPECT_EQ(e.code, 2);
  EXPECT_FALSE(queue.waitEvent(e, -1));
}

TEST(ScriptedQueue, BlobsAreTakenOnce) {
  VirtualClock clock;
  ScriptedQueue queue(clock, 0);
  queue.Script({0, Make(EventType::DropFile), "C:\\a.txt"});
  Event e;
  ASSERT_TRUE(queue.waitEvent(e, 0));
  EXPECT_EQ(queue.takeBlob(e.id), "C:\\a.txt");
  EXPECT_EQ(queue.takeBlob(e.id), "");
  EXPECT_EQ(queue.takeBlob(0), "");
}

TEST(Headless, WindowsLiveInMemory) {
  HeadlessPlatform platform({});
  const Services s = platform.services();
  EXPECT_EQ(s.windows->screen().width, 1024);
  const NativeWindow host = s.windows->hostWindow();
  EXPECT_EQ(s.windows->hostSize(), (Size{640, 480}));
  WindowDescription d;
  d.width = 30;
  d.height = 20;
  d.title = "One";
  const NativeWindow one = s.windows->createWindow(d);
  EXPECT_NE(one, host);
  EXPECT_EQ(platform.windows().Find(one)->state, ShowState::Hidden);
  s.windows->showWindow(one, ShowState::Normal);
  s.windows->moveWindow(one, 5, 6);
  s.windows->resizeWindow(one, 3, 2);
  s.windows->setTitle(one, "Two");
  EXPECT_EQ(platform.windows().Find(one)->client, (Rect{5, 6, 8, 8}));
  EXPECT_EQ(platform.windows().Find(one)->title, "Two");

  const uint32_t picture[] = {1, 2, 3, 0, 4, 5, 0xFF000006, 0};
  EXPECT_EQ(platform.framePixels(one), nullptr);
  const Rect first = {0, 0, 1, 1};
  s.windows->present(one, picture, 3, 2, 4, {&first, 1});
  EXPECT_EQ(*platform.framePixels(one), (std::vector<uint32_t>{1, 2, 3, 4, 5, 6}))
      << "the first picture is shown whole";
  const uint32_t other[] = {9, 9, 9, 9, 9, 9};
  const Rect boxes[] = {{1, 1, 2, 2}, {2, -5, 100, 1}};
  s.windows->present(one, other, 3, 2, 3, boxes);
  EXPECT_EQ(*platform.framePixels(one), (std::vector<uint32_t>{1, 2, 9, 4, 9, 6}));

  s.windows->showMessage("Title", "Text");
  ASSERT_EQ(platform.messages().size(), 1u);
  EXPECT_EQ(platform.messages()[0].text, "Text");
  s.windows->destroyWindow(one);
  EXPECT_EQ(platform.framePixels(one), nullptr);
  s.windows->present(one, other, 3, 2, 3, boxes);
  s.windows->destroyWindow(host);
  EXPECT_EQ(s.windows->hostSize(), (Size{640, 480})) << "the host's window stays the host's";
  for (int i = 0; i < 3000; ++i) s.windows->createWindow(d);
  EXPECT_EQ(s.windows->createWindow(d), 0u) << "a program can't open windows without end";
}

TEST(Headless, InputFindsTheWindowItIsMeantFor) {
  HeadlessOptions options;
  options.attachHost = false;
  options.input = {{10, Make(EventType::KeyDown, 65), {}},
                   {20, Make(EventType::KeyDown, 66), {}},
                   {30, Make(EventType::Resize), {}}};
  options.input[2].event.x = 77;
  options.input[2].event.y = 55;
  HeadlessPlatform platform(options);
  const Services s = platform.services();
  EXPECT_EQ(s.windows->hostWindow(), 0u);
  Event e;
  ASSERT_TRUE(s.events->waitEvent(e, -1));
  EXPECT_EQ(e.window, 0u) << "there is none yet";
  const NativeWindow a = s.windows->createWindow({});
  const NativeWindow b = s.windows->createWindow({});
  s.windows->showWindow(b, ShowState::Normal);
  s.windows->showWindow(a, ShowState::Normal);
  s.windows->raiseWindow(b);
  ASSERT_TRUE(s.events->waitEvent(e, -1));
  EXPECT_EQ(e.window, b);
  s.windows->showWindow(b, ShowState::Minimized);
  ASSERT_TRUE(s.events->waitEvent(e, -1));
  EXPECT_EQ(e.window, a);
  EXPECT_EQ(platform.windows().Find(a)->client.Width(), 77);
}

TEST(Headless, SeedAndDateAreTheRuns) {
  HeadlessOptions options;
  options.seed = 42;
  options.startSeconds = 0;
  HeadlessPlatform platform(options);
  EXPECT_EQ(platform.services().clock->seed(), 42u);
  EXPECT_EQ(platform.services().clock->localTime().year, 1970);
  platform.services().environment->browseUrl("http://example.com/");
  EXPECT_EQ(platform.environment().Urls().size(), 1u);
}

}  // namespace
}  // namespace vl
