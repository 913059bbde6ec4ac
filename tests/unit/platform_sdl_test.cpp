// The SDL back end without a display: the mailbox, and events through SDL's dummy driver.
#include <SDL.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "platform/clipboard.h"
#include "platform/keys.h"
#include "platform/sdl/sdl_keys.h"
#include "platform/sdl/sdl_platform.h"
#include "platform/sdl/window_mailbox.h"

namespace vl {
namespace {

TEST(WindowMailbox, KeepsTheNewestOfEachWindow) {
  int wakes = 0;
  WindowMailbox box({800, 600, 32, 96}, 1, {640, 480}, [&] { ++wakes; });
  WindowDescription d;
  d.title = "first";
  const NativeWindow w = box.createWindow(d);
  EXPECT_EQ(w, 2u);
  box.setTitle(w, "second");
  box.moveWindow(w, 1, 2);
  box.moveWindow(w, 3, 4);
  box.resizeWindow(w, -5, 70000);
  box.showWindow(w, ShowState::Normal);
  EXPECT_EQ(wakes, 1) << "one wake until the host has looked";
  auto changes = box.TakeChanges();
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_TRUE(changes[0].create);
  EXPECT_EQ(changes[0].title, "second");
  EXPECT_EQ(changes[0].position, std::pair(3, 4));
  EXPECT_EQ(changes[0].size, (Size{1, 32767}));
  EXPECT_TRUE(box.TakeChanges().empty());
  box.setCursor(w, CursorShape::Wait);
  EXPECT_EQ(wakes, 2);
  box.destroyWindow(w);
  changes = box.TakeChanges();
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_TRUE(changes[0].destroy);
  // What the host never saw needs no end.
  box.destroyWindow(box.createWindow({}));
  EXPECT_TRUE(box.TakeChanges().empty());
  box.destroyWindow(1);
  EXPECT_TRUE(box.TakeChanges().empty()) << "the host's window stays";
  box.resizeWindow(1, 100, 90);
  EXPECT_EQ(box.hostSize(), (Size{100, 90}));
}

TEST(WindowMailbox, WhatAWindowIsLikeIsKeptUntilItIsTaken) {
  WindowMailbox box({800, 600, 32, 96}, 1, {640, 480}, [] {});
  const NativeWindow w = box.createWindow({});
  box.TakeChanges();
  EXPECT_FALSE(box.IsPlacePending(w));
  box.resizeWindow(w, 5, 6);
  EXPECT_TRUE(box.IsPlacePending(w));
  WindowPicture small;
  small.width = small.height = 16;
  WindowPicture big = small;
  big.width = big.height = 32;
  box.setIcon(w, big);
  box.setIcon(w, small);
  const std::vector<Rect> boxes = {{1, 2, 3, 4}};
  box.setShape(w, &boxes);
  box.setCursor(w, CursorShape::Wait);
  box.setCursorPicture(w, small);
  box.raiseWindow(w);
  box.lowerWindow(w);
  box.setTopMost(w, true);
  box.setSizeLimits(w, {1, 2}, {3, 4});
  auto changes = box.TakeChanges();
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_FALSE(box.IsPlacePending(w));
  EXPECT_EQ(changes[0].icon->width, 32) << "the larger one serves the desktop";
  EXPECT_EQ(**changes[0].shape, boxes);
  EXPECT_FALSE(changes[0].cursor);
  EXPECT_EQ(changes[0].cursorPicture->width, 16);
  EXPECT_TRUE(changes[0].lower);
  EXPECT_FALSE(changes[0].raise);
  EXPECT_EQ(changes[0].topMost, true);
  EXPECT_EQ(changes[0].limits, std::pair(Size{1, 2}, Size{3, 4}));
  box.setShape(w, nullptr);
  changes = box.TakeChanges();
  ASSERT_TRUE(changes[0].shape);
  EXPECT_FALSE(*changes[0].shape) << "all of the window again";
}

TEST(WindowMailbox, FramesGatherWhatChanged) {
  WindowMailbox box({}, 1, {4, 2}, [] {});
  const uint32_t picture[] = {1, 2, 3, 4, 5, 6, 7, 8};
  const Rect first = {0, 0, 1, 1};
  box.present(1, picture, 4, 2, 4, {&first, 1});
  int shown = 0;
  box.TakeFrames([&](NativeWindow window, const WindowFrame& frame) {
    ++shown;
    EXPECT_EQ(window, 1u);
    EXPECT_EQ(frame.dirty, (Rect{0, 0, 4, 2})) << "a new size is dirty all over";
    EXPECT_EQ(frame.pixels, std::vector<uint32_t>(picture, picture + 8));
  });
  EXPECT_EQ(shown, 1);
  box.TakeFrames([&](NativeWindow, const WindowFrame&) { ++shown; });
  EXPECT_EQ(shown, 1) << "nothing new";
  const uint32_t other[] = {9, 9, 9, 9, 9, 9, 9, 9};
  const Rect boxes[] = {{1, 0, 2, 1}, {3, 1, 90, 90}, {5, 5, 6, 6}};
  box.present(1, other, 4, 2, 4, boxes);
  box.TakeFrames([&](NativeWindow, const WindowFrame& frame) {
    ++shown;
    EXPECT_EQ(frame.dirty, (Rect{1, 0, 4, 2}));
    EXPECT_EQ(frame.pixels, (std::vector<uint32_t>{1, 9, 3, 4, 5, 6, 7, 9}));
  });
  EXPECT_EQ(shown, 2);
  box.present(77, other, 4, 2, 4, boxes);
  EXPECT_FALSE(box.LookAtFrame(77, [](const WindowFrame&) {}));
}

TEST(SdlKeys, VirtualKeys) {
  struct Case {
    SDL_Scancode code;
    SDL_Keycode sym;
    Uint16 mod;
    int32_t key;
    int32_t character;
  };
  const Case cases[] = {
      {SDL_SCANCODE_Q, SDLK_a, 0, 'A', 0},  // a French keyboard: by the letter
      {SDL_SCANCODE_1, SDLK_AMPERSAND, 0, '1', 0},
      {SDL_SCANCODE_A, 0x444, 0, 'A', 0},  // a Russian one: by the place
      {SDL_SCANCODE_C, SDLK_c, KMOD_LCTRL, 'C', 3},
      {SDL_SCANCODE_C, SDLK_c, KMOD_LCTRL | KMOD_RALT, 'C', 0},
      {SDL_SCANCODE_RETURN, SDLK_RETURN, 0, kKeyReturn, 13},
      {SDL_SCANCODE_KP_ENTER, SDLK_KP_ENTER, 0, kKeyReturn, 13},
      {SDL_SCANCODE_BACKSPACE, SDLK_BACKSPACE, 0, kKeyBack, 8},
      {SDL_SCANCODE_ESCAPE, SDLK_ESCAPE, 0, kKeyEscape, 27},
      {SDL_SCANCODE_TAB, SDLK_TAB, KMOD_LSHIFT, kKeyTab, 9},
      {SDL_SCANCODE_KP_7, SDLK_KP_7, KMOD_NUM, kKeyNumpad0 + 7, 0},
      {SDL_SCANCODE_KP_7, SDLK_KP_7, 0, kKeyHome, 0},
      {SDL_SCANCODE_KP_0, SDLK_KP_0, 0, kKeyInsert, 0},
      {SDL_SCANCODE_F12, SDLK_F12, 0, kKeyF1 + 11, 0},
      {SDL_SCANCODE_RSHIFT, SDLK_RSHIFT, KMOD_RSHIFT, kKeyRightShift, 0},
      {SDL_SCANCODE_MUTE, SDLK_MUTE, 0, 0, 0},
  };
  for (const Case& c : cases) {
    SDL_Keysym key{};
    key.scancode = c.code;
    key.sym = c.sym;
    key.mod = c.mod;
    EXPECT_EQ(VirtualKeyOf(key), c.key) << c.code;
    EXPECT_EQ(ControlCharOf(key), c.character) << c.code;
  }
}

class Sdl : public ::testing::Test {
 protected:
  void SetUp() override {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    SdlOptions options;
    options.size = {200, 100};
    options.seed = 5;
    std::string reason;
    platform = SdlPlatform::Create(options, reason);
    ASSERT_NE(platform, nullptr) << reason;
    services = platform->services();
    while (Next().type != EventType::None) {
    }
  }
  void TearDown() override { platform.reset(); }

  Event Next() {
    platform->pumpHost(0);
    Event e;
    services.events->waitEvent(e, 0);
    return e;
  }
  Event Send(SDL_Event e) {
    SDL_PushEvent(&e);
    return Next();
  }
  Uint32 SdlId(int index) {
    // Windows of the dummy driver are numbered from 1 on, over all tests of the process.
    for (Uint32 id = 1; id < 1000; ++id) {
      if (SDL_GetWindowFromID(id) && index-- == 0) return id;
    }
    return 0;
  }

  std::unique_ptr<SdlPlatform> platform;
  Services services;
};

TEST_F(Sdl, InputBecomesEvents) {
  const Uint32 id = SdlId(0);
  SDL_Event e{};
  e.type = SDL_KEYDOWN;
  e.key.windowID = id;
  e.key.repeat = 1;
  e.key.keysym.scancode = SDL_SCANCODE_RETURN;
  Event got = Send(e);
  EXPECT_EQ(got.type, EventType::KeyDown);
  EXPECT_EQ(got.code, kKeyReturn);
  EXPECT_EQ(got.x, 1);
  EXPECT_EQ(got.window, 1u);
  got = Next();
  EXPECT_EQ(got.type, EventType::Char);
  EXPECT_EQ(got.ch, 13);

  e = {};
  e.type = SDL_TEXTINPUT;
  e.text.windowID = id;
  SDL_strlcpy(e.text.text, "\xE2\x82\xAC!", sizeof(e.text.text));
  EXPECT_EQ(Send(e).ch, 0x80) << "the euro sign of the code page";
  EXPECT_EQ(Next().ch, '!');

  e = {};
  e.type = SDL_MOUSEBUTTONDOWN;
  e.button.windowID = id;
  e.button.button = SDL_BUTTON_RIGHT;
  e.button.x = 12;
  e.button.y = 34;
  for (const auto& [clicks, ch] : {std::pair{1, 1}, std::pair{2, 2}, std::pair{3, 1}}) {
    e.button.clicks = Uint8(clicks);
    got = Send(e);
    EXPECT_EQ(got.type, EventType::MouseDown);
    EXPECT_EQ(got.code, kMouseRight);
    EXPECT_EQ(got.ch, ch);
    EXPECT_EQ(got.y, 34);
  }

  e = {};
  e.type = SDL_MOUSEWHEEL;
  e.wheel.windowID = id;
  e.wheel.preciseY = -1.5f;
  EXPECT_EQ(Send(e).code, -180);

  e = {};
  e.type = SDL_DROPFILE;
  e.drop.windowID = id;
  e.drop.file = SDL_strdup("/tmp/a.txt");
  got = Send(e);
  EXPECT_EQ(got.type, EventType::DropFile);
  EXPECT_EQ(services.events->takeBlob(got.id), "/tmp/a.txt");

  e = {};
  e.type = SDL_WINDOWEVENT;
  e.window.windowID = id;
  e.window.event = SDL_WINDOWEVENT_CLOSE;
  EXPECT_EQ(Send(e).type, EventType::Close);
  e.window.windowID = id + 500;
  EXPECT_EQ(Send(e).type, EventType::None) << "not a window of ours";
  e = {};
  e.type = SDL_QUIT;
  EXPECT_EQ(Send(e).type, EventType::HostStop);
}

TEST_F(Sdl, TheInterpretersThreadMakesWindowsAndPictures) {
  NativeWindow made = 0;
  std::thread interpreter([&] {
    WindowDescription d;
    d.width = 30;
    d.height = 20;
    d.title = "Caf\xE9";
    made = services.windows->createWindow(d);
    services.windows->showWindow(made, ShowState::Normal);
    const std::vector<uint32_t> pixels(200 * 100, 0x123456);
    const Rect all = {0, 0, 200, 100};
    services.windows->present(services.windows->hostWindow(), pixels.data(), 200, 100, 200, {&all, 1});
    Event e;
    // Waits until the host sends the end.
    while (services.events->waitEvent(e, -1) && e.type != EventType::HostStop) {
    }
    services.windows->destroyWindow(made);
    platform->finish();
  });
  while (SdlId(1) == 0) platform->pumpHost(5);
  EXPECT_STREQ(SDL_GetWindowTitle(SDL_GetWindowFromID(SdlId(1))), "Caf\xC3\xA9");
  platform->requestStop();
  while (platform->pumpHost(5)) {
  }
  interpreter.join();
  EXPECT_EQ(SdlId(1), 0u) << "the program's window is gone, the host's stays";
  const HostPicture picture = platform->hostPicture();
  ASSERT_EQ(picture.pixels.size(), 20000u);
  EXPECT_EQ(picture.pixels[19999], 0x123456u);
}

TEST_F(Sdl, TextsAreSharedWithTheDesktop) {
  Clipboard& clipboard = *services.clipboard;
  const auto put = [&](std::string_view format, std::string_view bytes) {
    clipboard.clear();
    clipboard.put(format, {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
    platform->pumpHost(0);
  };
  const auto held = [&](std::string_view format) {
    const auto bytes = clipboard.get(format);
    return bytes ? std::string(bytes->begin(), bytes->end()) : "nothing";
  };
  const auto onDesktop = [] {
    const std::unique_ptr<char, decltype(&SDL_free)> text(SDL_GetClipboardText(), SDL_free);
    return std::string(text.get());
  };
  const auto copyElsewhere = [&](const char* text) {
    SDL_SetClipboardText(text);
    SDL_Event told{};
    told.type = SDL_CLIPBOARDUPDATE;
    Send(told);
  };
  put(kClipboardText, "Caf\xE9");
  EXPECT_EQ(onDesktop(), "Caf\xC3\xA9");
  copyElsewhere("na\xC3\xAFve \xE2\x82\xAC");
  EXPECT_EQ(held(kClipboardText), "na\xEFve \x80");
  // A picture takes the place of the text, and stays until another program has put one.
  put(kClipboardDib, "pixels");
  EXPECT_EQ(onDesktop(), "");
  EXPECT_EQ(held(kClipboardText) + " " + held(kClipboardDib), "nothing pixels");
  platform->pumpHost(0);
  EXPECT_EQ(held(kClipboardDib), "pixels");
  copyElsewhere("words");
  EXPECT_EQ(held(kClipboardText) + " " + held(kClipboardDib), "words nothing");
}

// What the player keeps from the program, and how the mouse finds its pixel in a scaled picture.
class KeepsKeys final : public SdlListener {
 public:
  bool OnInput(const Event& event, bool onFrame) override {
    wasOnFrame = onFrame;
    return event.type == EventType::KeyDown && event.code == kKeyF1;
  }
  void OnDrop(const std::string& path) override { dropped = path; }
  void OnMessage(const std::string& title, const std::string& text) override { message = title + "|" + text; }
  void OnPumped() override {}
  bool wasOnFrame = false;
  std::string message;
  std::string dropped;
};

TEST(SdlScaled, TheListenerIsFirstAndTheMouseIsMapped) {
  setenv("SDL_VIDEODRIVER", "dummy", 1);
  KeepsKeys listener;
  SdlOptions options;
  options.size = {100, 50};
  options.scaling = Scaling::Nearest;
  options.listener = &listener;
  std::string reason;
  auto platform = SdlPlatform::Create(options, reason);
  ASSERT_NE(platform, nullptr) << reason;
  Services services = platform->services();
  const auto next = [&] {
    platform->pumpHost(0);
    Event e;
    services.events->waitEvent(e, 0);
    return e;
  };
  const std::vector<uint32_t> pixels(100 * 50, 1);
  const Rect all = {0, 0, 100, 50};
  services.windows->present(services.windows->hostWindow(), pixels.data(), 100, 50, 100, {&all, 1});
  Uint32 id = 1;
  while (!SDL_GetWindowFromID(id)) ++id;
  SDL_SetWindowSize(SDL_GetWindowFromID(id), 200, 200);
  while (next().type != EventType::None) {
  }
  EXPECT_EQ(services.windows->hostSize(), (Size{100, 50})) << "a scaled program isn't told of another size";

  const auto button = [&](int x, int y) {
    SDL_Event e{};
    e.type = SDL_MOUSEBUTTONDOWN;
    e.button.windowID = id;
    e.button.button = SDL_BUTTON_LEFT;
    e.button.clicks = 1;
    e.button.x = x;
    e.button.y = y;
    SDL_PushEvent(&e);
    return next();
  };
  Event got = button(21, 52);
  EXPECT_EQ(got.type, EventType::MouseDown);
  EXPECT_EQ(std::pair(got.x, got.y), std::pair(10, 1));
  EXPECT_FALSE(listener.wasOnFrame);
  EXPECT_EQ(button(21, 48).type, EventType::None) << "beside the picture";
  EXPECT_TRUE(listener.wasOnFrame);

  SDL_Event key{};
  key.type = SDL_KEYDOWN;
  key.key.windowID = id;
  key.key.keysym.scancode = SDL_SCANCODE_F1;
  key.key.keysym.sym = SDLK_F1;
  SDL_PushEvent(&key);
  EXPECT_EQ(next().type, EventType::None);
  services.windows->showMessage("a", "b");
  platform->pumpHost(0);
  EXPECT_EQ(listener.message, "a|b");

  // A dropped file is the program's only when it takes files.
  const auto drop = [&] {
    SDL_Event e{};
    e.type = SDL_DROPFILE;
    e.drop.windowID = id;
    e.drop.file = SDL_strdup("/games/a.vlp");
    SDL_PushEvent(&e);
    return next().type;
  };
  EXPECT_EQ(drop(), EventType::None);
  EXPECT_EQ(listener.dropped, "/games/a.vlp");
  services.windows->acceptDrops(services.windows->hostWindow(), true);
  next();
  EXPECT_EQ(drop(), EventType::DropFile);

  // A second run begins with nothing of the first.
  services.windows->createWindow({});
  platform->setScaling(Scaling::Follow);
  platform->finish();
  EXPECT_FALSE(platform->pumpHost(0));
  platform->renew(7);
  services = platform->services();
  EXPECT_EQ(services.clock->seed(), 7u);
  EXPECT_EQ(services.windows->hostSize(), (Size{200, 200}));
  EXPECT_EQ(next().type, EventType::None);
  EXPECT_TRUE(platform->pumpHost(0));
}

TEST(SdlWithoutDisplay, TellsWhyInOneLine) {
  setenv("SDL_VIDEODRIVER", "nonesuch", 1);
  std::string reason;
  EXPECT_EQ(SdlPlatform::Create({}, reason), nullptr);
  EXPECT_EQ(reason.rfind("no display (", 0), 0u) << reason;
  EXPECT_NE(reason.find("; --headless runs without one"), std::string::npos) << reason;
  EXPECT_EQ(reason.find('\n'), std::string::npos);
  // A driver that shows nothing counts as a display only for those who ask for it.
  unsetenv("SDL_VIDEODRIVER");
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  reason.clear();
  if (auto shown = SdlPlatform::Create({}, reason)) {
    EXPECT_STRNE(SDL_GetCurrentVideoDriver(), "offscreen");
  } else {
    EXPECT_EQ(reason.rfind("no ", 0), 0u) << reason;
  }
  setenv("SDL_VIDEODRIVER", "dummy", 1);
}

}  // namespace
}  // namespace vl
