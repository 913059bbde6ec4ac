// WindowMailbox: the window system as the interpreter's thread sees it, and the box from which the host's thread
// takes what to do.
//
// Calls only note what is wanted: the newest state and the newest picture of each window. So nothing waits for
// the display, and a program that asks faster than the display can show costs no memory.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/window_system.h"

namespace vl {

// What has changed about a window since the host last looked; what has a value is to be done.
struct WindowChange {
  NativeWindow window = 0;
  bool create = false;
  bool destroy = false;
  bool raise = false;
  WindowDescription description;  // valid with create; its title is in `title`
  std::optional<std::string> title;
  std::optional<ShowState> state;
  std::optional<std::pair<int, int>> position;
  std::optional<Size> size;
  std::optional<CursorShape> cursor;
  std::optional<WindowPicture> cursorPicture;  // instead of `cursor`, of which one has a value at most
  std::optional<WindowPicture> icon;
  std::optional<std::optional<std::vector<Rect>>> shape;  // without boxes: all of the window again
  std::optional<std::pair<Size, Size>> limits;            // of the client area
  std::optional<bool> topMost;
  std::optional<bool> closeEnabled;
  std::optional<bool> acceptsDrops;
  std::optional<bool> flashing;
  std::optional<bool> captured;
  bool lower = false;
};

struct WindowMessage {
  std::string title;
  std::string text;
};

// A window's newest picture. Words 0x00RRGGBB.
struct WindowFrame {
  std::vector<uint32_t> pixels;
  int width = 0;
  int height = 0;
  Rect dirty;  // what the host has not shown yet; empty when nothing
};

class WindowMailbox final : public WindowSystem {
 public:
  // `wake` tells the host's thread that there is something to take; it is called on the interpreter's thread and
  // never while the box is locked. hostWindow 0: there is none.
  WindowMailbox(const ScreenInfo& screen, NativeWindow hostWindow, Size hostSize, std::function<void()> wake);

  // The interpreter's side.
  ScreenInfo screen() override;
  NativeWindow hostWindow() override { return hostWindow_; }
  Size hostSize() override;
  NativeWindow createWindow(const WindowDescription& description) override;
  void destroyWindow(NativeWindow window) override;
  void showWindow(NativeWindow window, ShowState state) override;
  void moveWindow(NativeWindow window, int x, int y) override;
  void resizeWindow(NativeWindow window, int width, int height) override;
  void raiseWindow(NativeWindow window) override;
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

  // The host's side.
  // In the order in which the windows were made; the caller applies all of them.
  std::vector<WindowChange> TakeChanges();
  std::vector<WindowMessage> TakeMessages();
  // The display's mode has changed.
  void ReportScreen(const ScreenInfo& screen);
  // The person changed the size of the host's window.
  void ReportHostSize(Size size);
  // Calls show(window, frame) for each picture with something to show, which is then counted as shown. The box
  // is locked meanwhile.
  void TakeFrames(const std::function<void(NativeWindow window, const WindowFrame& frame)>& show);
  // The program asked for another place or size, and nobody has taken that yet.
  bool IsPlacePending(NativeWindow window);
  // All of a window's newest picture is to be shown once more.
  void ShowAgain(NativeWindow window);
  // Calls look(frame) with the newest picture of a window; false when it has none.
  bool LookAtFrame(NativeWindow window, const std::function<void(const WindowFrame& frame)>& look);

 private:
  struct Entry {
    WindowChange change;
    bool hasChange = false;
    WindowFrame frame;
  };
  // Notes a change of a window that exists, and wakes the host.
  void Note(NativeWindow window, const std::function<void(WindowChange& change)>& write);
  // True when the host must be woken; the caller does so once the box is unlocked.
  bool MarkWoken();

  ScreenInfo screen_;
  const NativeWindow hostWindow_;
  const std::function<void()> wake_;
  std::mutex mutex_;
  std::map<NativeWindow, Entry> windows_;
  std::vector<NativeWindow> destroyed_;
  std::vector<WindowMessage> messages_;
  Size hostSize_;
  NativeWindow next_;
  bool isWoken_ = false;
};

}  // namespace vl
