// The window tree over windows in memory: what reaches the platform, timers, drops, the order of messages; and the
// measures of frames and shapes, which programs can't ask for.
#include <gtest/gtest.h>

#include "base/memory_budget.h"
#include "gfx2d/surface_library.h"
#include "host/run.h"
#include "interpreter/thread_param.h"
#include "platform/headless/headless_platform.h"
#include "platform/memory_files.h"
#include "tools/project/project.h"
#include "ui/window_frame.h"
#include "ui/window_shape.h"
#include "ui/window_tree.h"

namespace vl {
namespace {

// Writes down what it is sent.
class Recorder final : public CWindowTarget {
 public:
  explicit Recorder(WindowTree& tree) : tree_(tree) {}
  int32_t WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) override {
    if (wanted == 0 || message == wanted) seen.push_back(message);
    lastWParam = wParam;
    lastLParam = lParam;
    return tree_.DefaultProcedure(window, message, wParam, lParam);
  }
  uint32_t wanted = 0;
  std::vector<uint32_t> seen;
  uint32_t lastWParam = 0;
  int32_t lastLParam = 0;

 private:
  WindowTree& tree_;
};

class WindowTreeTest : public testing::Test {
 protected:
  static HeadlessOptions Detached() {
    HeadlessOptions options;
    options.attachHost = false;
    return options;
  }
  WindowHandle Make(uint32_t style, Size client, WindowHandle parent = 0) {
    WindowCreation creation;
    creation.style = style;
    creation.parent = parent;
    creation.x = 100;
    creation.y = 50;
    const Rect borders = FrameBorders(style, 0, false);
    creation.width = client.width + borders.left + borders.right;
    creation.height = client.height + borders.top + borders.bottom;
    const WindowHandle window = tree.Create(creation, &recorder);
    tree.Show(window, SW_SHOWNORMAL);
    return window;
  }
  const MemoryWindow& Native(WindowHandle window) { return *platform.windows().Find(tree.Find(window)->native); }
  void Pump() {
    CMessage message;
    while (tree.HasMessage()) {
      if (tree.Get(message)) tree.Dispatch(message);
    }
  }
  void PushAt(EventType type, WindowHandle window, int x, int y, uint32_t id = 0) {
    Event event;
    event.type = type;
    event.window = tree.Find(window)->native;
    event.x = x;
    event.y = y;
    event.id = id;
    platform.queue().Push(event);
  }

  HeadlessPlatform platform{Detached()};
  CThreadParam param;
  WindowTree tree{platform.services(), param};
  Recorder recorder{tree};
};

constexpr uint32_t kPlain = WS_CAPTION | WS_SYSMENU | WS_POPUP;

TEST_F(WindowTreeTest, ThePlatformIsToldWhatAWindowIsLike) {
  const WindowHandle w = Make(kPlain | WS_THICKFRAME, {80, 40});
  EXPECT_TRUE(Native(w).caption);
  EXPECT_TRUE(Native(w).resizable);
  EXPECT_EQ(Native(w).client, (Rect{104, 73, 184, 113}));
  tree.SetSizeLimits(w, {58, 0}, {0, 127});
  EXPECT_EQ(Native(w).leastSize, (Size{50, 0}));
  EXPECT_EQ(Native(w).mostSize, (Size{0, 100}));
  tree.SetPosition(w, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
  EXPECT_TRUE(Native(w).topMost);
  tree.SetPosition(w, HWND_NOTOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
  EXPECT_FALSE(Native(w).topMost);
  tree.EnableClose(w, false);
  EXPECT_FALSE(Native(w).closeEnabled);
  tree.Flash(w, true);
  EXPECT_TRUE(Native(w).flashing);
  tree.SetCapture(w);
  EXPECT_TRUE(Native(w).mouseCaptured);
  tree.SetCapture(0);
  EXPECT_FALSE(Native(w).mouseCaptured);
  WindowPicture picture;
  picture.width = picture.height = 16;
  picture.words.assign(256, 0xFF112233);
  tree.SetIcon(w, picture);
  EXPECT_EQ(Native(w).icon.words, picture.words);
  tree.UseCursor(w, picture, 7);
  EXPECT_EQ(Native(w).cursorPicture.width, 16);
  tree.UseCursor(w, CursorShape::Wait);
  EXPECT_EQ(Native(w).cursor, CursorShape::Wait);
  EXPECT_EQ(Native(w).cursorPicture.width, 0);
  tree.Show(w, SW_SHOWMAXIMIZED);
  EXPECT_EQ(Native(w).client, (Rect{0, 19, 1024, 768}));
  EXPECT_EQ(tree.Find(w)->height, 749);
  tree.Show(w, SW_RESTORE);
  EXPECT_EQ(tree.Find(w)->width, 80);
}

TEST_F(WindowTreeTest, AShapeIsGivenInClientCoordinates) {
  const WindowHandle framed = Make(kPlain, {80, 40});
  tree.SetShape(framed, {{0, 0, 50, 30}});
  EXPECT_TRUE(Native(framed).isShaped);
  EXPECT_EQ(Native(framed).shape, (std::vector<Rect>{{-3, -22, 47, 8}}));
  const WindowHandle bare = Make(WS_POPUP, {80, 40});
  tree.SetShape(bare, {{1, 2, 3, 4}});
  EXPECT_EQ(Native(bare).shape, (std::vector<Rect>{{1, 2, 3, 4}}));
  EXPECT_EQ(tree.WindowAt(bare, {101, 52}), bare);
  EXPECT_EQ(tree.WindowAt(bare, {103, 52}), 0u);
  tree.SetShape(bare, {});
  EXPECT_EQ(tree.WindowAt(bare, {101, 52}), 0u);
}

TEST_F(WindowTreeTest, FilesAreDroppedWhereTheyAreTaken) {
  const WindowHandle top = Make(WS_POPUP, {80, 40});
  const WindowHandle child = Make(WS_CHILD, {20, 20}, top);
  tree.SetPosition(child, 0, 10, 10, 20, 20, SWP_NOZORDER);
  Pump();
  recorder.wanted = WM_DROPFILES;
  recorder.seen.clear();
  const uint32_t refused = platform.queue().AddBlob("/a");
  PushAt(EventType::DropFile, top, 15, 17, refused);
  Pump();
  EXPECT_TRUE(recorder.seen.empty());
  EXPECT_EQ(platform.queue().takeBlob(refused), "") << "its name doesn't stay behind";
  tree.AcceptDrops(top, true);
  EXPECT_TRUE(Native(top).acceptsDrops);
  const uint32_t taken = platform.queue().AddBlob("/b");
  PushAt(EventType::DropFile, top, 15, 17, taken);
  Pump();
  EXPECT_EQ(recorder.seen.size(), 1u);
  EXPECT_EQ(recorder.lastWParam, taken);
  EXPECT_EQ(recorder.lastLParam, MakeLParam(15, 17));
  tree.AcceptDrops(child, true);
  PushAt(EventType::DropFile, top, 15, 17, taken);
  Pump();
  EXPECT_EQ(recorder.lastLParam, MakeLParam(5, 7));
  tree.AcceptDrops(child, false);
  tree.AcceptDrops(top, false);
  EXPECT_FALSE(Native(top).acceptsDrops);
}

TEST_F(WindowTreeTest, TimersComeAgainAndAfterAllElse) {
  const WindowHandle w = Make(WS_POPUP, {80, 40});
  Pump();
  tree.SetTimer(w, 5, 100);
  recorder.seen.clear();
  tree.WaitForMessage(1000);
  EXPECT_EQ(platform.virtualClock().ElapsedMs(), 100u);
  tree.Invalidate(w);
  tree.Post(w, WM_CHAR, 65);
  Pump();
  EXPECT_EQ(recorder.seen, (std::vector<uint32_t>{WM_CHAR, WM_PAINT, WM_ERASEBKGND, WM_TIMER}));
  EXPECT_EQ(recorder.lastWParam, 5u);
  tree.WaitForMessage(50);
  EXPECT_FALSE(tree.HasMessage());
  tree.WaitForMessage(1000);
  EXPECT_EQ(platform.virtualClock().ElapsedMs(), 200u);
  EXPECT_TRUE(tree.HasMessage());
  tree.KillTimer(w, 5);
  EXPECT_FALSE(tree.HasMessage());
}

TEST_F(WindowTreeTest, AMessageForAWindowThatIsGoneIsDropped) {
  const WindowHandle w = Make(WS_POPUP, {80, 40});
  tree.Post(w, WM_CHAR, 65);
  PushAt(EventType::MouseMove, w, 1, 1);
  tree.Destroy(w);
  recorder.seen.clear();
  Pump();
  EXPECT_TRUE(recorder.seen.empty());
  EXPECT_EQ(tree.Find(w), nullptr);
  EXPECT_TRUE(platform.windows().Windows().empty());
}

// --- Programs ---

// Runs a program in a host's window and keeps what it left there.
struct Hosted {
  explicit Hosted(const char* source, std::vector<TimedEvent> input = {}) {
    EXPECT_TRUE(files.Add("w.vlp", SingleSourceApplication(source, "w.vlq")));
    HeadlessOptions options;
    options.files = &files;
    options.input = std::move(input);
    platform = std::make_unique<HeadlessPlatform>(options);
    Run run(platform->services(), true);
    run.param.path = "w.vlp";
    run.Execute();
    globals = run.globals;
    EXPECT_EQ(run.error, "");
  }
  const MemoryWindow& Window() const { return *platform->windows().Find(platform->services().windows->hostWindow()); }
  MemoryFileSystem files;
  std::unique_ptr<HeadlessPlatform> platform;
  std::string globals;
};

TEST(WindowPrograms, PointersOfAWindow) {
  EXPECT_EQ(Hosted("SetCursor(Window.CROSS);").Window().cursor, CursorShape::Cross);
  EXPECT_EQ(Hosted("SetCursor(Window.WAIT); SetCursor();").Window().cursor, CursorShape::Arrow);
  constexpr char kPicture[] =
      "s = New Surface(20, 10, 24); s.Clear(0xFF00FF); s.SetPixel(2, 1, 0x00FF00); SetCursor(s, 0xFF00FF, 3, 4);";
  const WindowPicture picture = Hosted(kPicture).Window().cursorPicture;
  ASSERT_EQ(picture.words.size(), 200u);
  EXPECT_EQ(picture.hotX, 3);
  EXPECT_EQ(picture.hotY, 4);
  EXPECT_EQ(picture.words[22], 0xFF00FF00u);
  EXPECT_EQ(picture.words[0], 0u) << "the mask colour isn't shown";
  const Hosted removed((std::string(kPicture) + "SetCursor(99);").c_str());
  EXPECT_EQ(removed.Window().cursorPicture.width, 0);
  EXPECT_EQ(removed.Window().cursor, CursorShape::Arrow);
}

TEST(WindowPrograms, ThePointerOfAChildShowsWhileTheMouseIsThere) {
  constexpr char kSource[] =
      "main = CurWindow; w = New Window(main, 50, 50, 10, 10, Window.GAME); w.SetCursor(Window.CROSS); Wait(300);";
  Event move;
  move.type = EventType::MouseMove;
  move.x = move.y = 20;
  Event away = move;
  away.x = 100;
  EXPECT_EQ(Hosted(kSource, {{50, move, {}}}).Window().cursor, CursorShape::Cross);
  EXPECT_EQ(Hosted(kSource, {{50, move, {}}, {90, away, {}}}).Window().cursor, CursorShape::Arrow);
}

TEST(WindowPrograms, DroppedFilesAreNamed) {
  Event drop;
  drop.type = EventType::DropFile;
  drop.x = 7;
  drop.y = 8;
  const std::vector<TimedEvent> input = {
      {50, drop, "/home/first"}, {150, drop, "/home/second"}, {250, drop, std::string(400, 'x')}};
  const Hosted run(
      "s = \"\"; n = 0; OnDropFile = Dropped; Wait(100); EnableDropFile(); Wait(100); EnableDropFile(1); Wait(200);"
      "Function Dropped(w, name, x, y) { If (n == 0) s = name + x + y; n = n + 1; }",
      input);
  EXPECT_NE(run.globals.find("\"s\":\"/home/second78\""), std::string::npos) << run.globals;
  EXPECT_NE(run.globals.find("\"n\":2"), std::string::npos);
}

// --- Frames ---

struct FrameCase {
  const char* name;
  uint32_t style;
  uint32_t exStyle;
  Rect borders;
};

TEST(WindowFrame, Borders) {
  constexpr FrameCase kCases[] = {
      {"none", WS_POPUP, 0, {0, 0, 0, 0}},
      {"line", WS_BORDER, 0, {1, 1, 1, 1}},
      {"caption", WS_CAPTION, 0, {3, 22, 3, 3}},
      {"thick", WS_THICKFRAME, 0, {3, 3, 3, 3}},
      {"thick with caption", WS_CAPTION | WS_THICKFRAME, 0, {4, 23, 4, 4}},
      {"tool", WS_CAPTION, WS_EX_TOOLWINDOW, {3, 19, 3, 3}},
      {"dialog", WS_CAPTION, WS_EX_DLGMODALFRAME, {3, 22, 3, 3}},
      {"static edge", 0, WS_EX_STATICEDGE, {1, 1, 1, 1}},
      {"field", 0, WS_EX_CLIENTEDGE, {2, 2, 2, 2}},
  };
  for (const FrameCase& c : kCases) EXPECT_EQ(FrameBorders(c.style, c.exStyle, false), c.borders) << c.name;
  EXPECT_EQ(FrameBorders(WS_CAPTION, 0, true).top, 41) << "with a menu";
}

TEST(WindowFrame, WhatLiesWhere) {
  constexpr uint32_t kAll = WS_CAPTION | WS_THICKFRAME | WS_SYSMENU | WS_MINIMIZEBOX | WS_MAXIMIZEBOX;
  struct Case {
    uint32_t style;
    Point at;
    uint32_t hit;
  };
  // A frame of 200 by 100.
  constexpr Case kCases[] = {
      {kAll, {0, 0}, HTTOPLEFT},          {kAll, {3, 17}, HTTOPLEFT},     {kAll, {3, 50}, HTLEFT},
      {kAll, {196, 50}, HTRIGHT},         {kAll, {100, 3}, HTTOP},        {kAll, {100, 96}, HTBOTTOM},
      {kAll, {199, 0}, HTTOPRIGHT},       {kAll, {0, 99}, HTBOTTOMLEFT},  {kAll, {185, 99}, HTBOTTOMRIGHT},
      {kAll, {10, 10}, HTSYSMENU},        {kAll, {60, 10}, HTCAPTION},    {kAll, {185, 10}, HTCLOSE},
      {kAll, {165, 10}, HTMAXBUTTON},     {kAll, {150, 10}, HTMINBUTTON}, {kAll, {4, 23}, HTCLIENT},
      {kAll, {195, 95}, HTCLIENT},        {kAll, {200, 50}, HTNOWHERE},   {WS_CAPTION, {0, 50}, HTBORDER},
      {WS_CAPTION, {190, 10}, HTCAPTION},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(HitTestFrame(c.style, 0, {200, 100}, c.at), c.hit) << c.at.x << ", " << c.at.y;
  }
}

// --- Shapes ---

TEST(WindowShape, RunsGrowOnlyBelowTheBoxMadeLast) {
  MemoryBudget budget;
  SurfaceLibrary library(&budget);
  struct Case {
    const char* name;
    std::vector<const char*> rows;
    std::vector<Rect> boxes;
  };
  const Case kCases[] = {
      {"nothing", {"...", "..."}, {}},
      {"all", {"##", "##", "##"}, {{0, 0, 2, 3}}},
      {"other widths", {"#.", "##", "##"}, {{0, 0, 1, 1}, {0, 1, 2, 3}}},
      {"a gap", {"##", "..", "##"}, {{0, 0, 2, 1}, {0, 2, 2, 3}}},
      // Two runs a line: each line's first run doesn't lie below the box made last.
      {"two columns", {"#.#", "#.#"}, {{0, 0, 1, 1}, {2, 0, 3, 1}, {0, 1, 1, 2}, {2, 1, 3, 2}}},
      {"the second run grows", {"#.#", "..#"}, {{0, 0, 1, 1}, {2, 0, 3, 2}}},
  };
  for (const Case& c : kCases) {
    cSurface picture;
    const int width = static_cast<int>(std::string_view(c.rows[0]).size());
    ASSERT_TRUE(picture.Create(width, static_cast<int>(c.rows.size()), library.FindPrototype(24)));
    for (int y = 0; y < static_cast<int>(c.rows.size()); ++y) {
      for (int x = 0; x < width; ++x) picture.SetPixelRaw(x, y, c.rows[static_cast<size_t>(y)][x] == '#' ? 1 : 0);
    }
    EXPECT_EQ(ShapeOf(picture), c.boxes) << c.name;
  }
}

}  // namespace
}  // namespace vl
