// MemoryWindows: top-level windows that live in memory, for tests and for runs without a display.
//
// The screen is 1024 x 768 x 32 at first. A window keeps its last presented picture; what the program did with it can
// be read back. Window numbers are never used twice.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/events.h"
#include "platform/window_system.h"

namespace vl {

struct MemoryWindow {
  NativeWindow id = 0;
  Rect client;  // on the screen
  std::string title;
  ShowState state = ShowState::Hidden;
  CursorShape cursor = CursorShape::Arrow;
  bool isHost = false;
  bool caption = true;
  bool resizable = false;
  NativeWindow owner = 0;
  bool topMost = false;
  bool tool = false;
  bool closeEnabled = true;
  bool acceptsDrops = false;
  bool flashing = false;
  bool mouseCaptured = false;
  bool isShaped = false;
  std::vector<Rect> shape;  // valid when isShaped
  Size leastSize;           // 0: no limit
  Size mostSize;
  WindowPicture icon;           // the last one given
  WindowPicture cursorPicture;  // instead of `cursor`, unless it has no size
  Rect normalClient;            // where it goes back to from the maximised state
  // The last picture: 0x00RRGGBB words, line after line; empty before the first present.
  std::vector<uint32_t> pixels;
  int pixelWidth = 0;
  int pixelHeight = 0;
  uint32_t presents = 0;    // how often the program presented
  uint32_t lastRaised = 0;  // order of the last raise or show; the largest is on top
};

struct MessageBoxText {
  std::string title;
  std::string text;
};

class MemoryWindows final : public WindowSystem {
 public:
  static constexpr int kScreenWidth = 1024;
  static constexpr int kScreenHeight = 768;
  // Of the frame that a desktop would put above a maximised window.
  static constexpr int kCaptionHeight = 19;

  // `hostSize` is the size of the window that the host lends; attachHost false: there is none.
  MemoryWindows(Size hostSize, bool attachHost);

  ScreenInfo screen() override { return screen_; }
  NativeWindow hostWindow() override { return host_; }
  Size hostSize() override;
  NativeWindow createWindow(const WindowDescription& description) override;
  void destroyWindow(NativeWindow window) override;
  void showWindow(NativeWindow window, ShowState state) override;
  void moveWindow(NativeWindow window, int x, int y) override;
  void resizeWindow(NativeWindow window, int width, int height) override;
  void raiseWindow(NativeWindow window) override;
  std::optional<std::pair<int, int>> clientOrigin(NativeWindow window) override;
  void setTitle(NativeWindow window, std::string_view title) override;
  void setCursor(NativeWindow window, CursorShape shape) override;
  void lowerWindow(NativeWindow window) override;
  void setTopMost(NativeWindow window, bool topMost) override;
  void setCursorPicture(NativeWindow window, const WindowPicture& picture) override;
  void setIcon(NativeWindow window, const WindowPicture& picture) override;
  void setShape(NativeWindow window, const std::vector<Rect>* boxes) override;
  void setSizeLimits(NativeWindow window, Size least, Size most) override;
  void enableClose(NativeWindow window, bool enabled) override;
  void acceptDrops(NativeWindow window, bool accepted) override;
  void flashWindow(NativeWindow window, bool flashing) override;
  void captureMouse(NativeWindow window, bool captured) override;
  void present(NativeWindow window, const uint32_t* pixels, int width, int height, int pitch,
               std::span<const Rect> dirty) override;
  void showMessage(std::string_view title, std::string_view text) override;

  // The display's mode has changed.
  void SetScreen(Size size, int depth);
  // Null when there is none of that number (any more).
  const MemoryWindow* Find(NativeWindow window) const;
  const std::map<NativeWindow, MemoryWindow>& Windows() const { return windows_; }
  const std::vector<MessageBoxText>& Messages() const { return messages_; }

 private:
  MemoryWindow* Get(NativeWindow window);

  std::map<NativeWindow, MemoryWindow> windows_;
  std::vector<MessageBoxText> messages_;
  NativeWindow host_ = 0;
  NativeWindow next_ = 1;
  uint32_t raises_ = 0;
  ScreenInfo screen_{kScreenWidth, kScreenHeight, 32, 96, {}};
};

}  // namespace vl
