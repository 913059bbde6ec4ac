// FrameTap: a window system that keeps the newest picture where another thread can take it.
//
// Forwards every call, and tells of each picture. The picture kept is that of the host's window or, in a run without
// one, of the window that was presented last; it outlives its window, so that it can be read when the run has ended.
#pragma once

#include <functional>
#include <mutex>
#include <vector>

#include "platform/window_system.h"

namespace vl {

struct Picture {
  std::vector<uint32_t> pixels;  // 0x00RRGGBB, line after line
  int width = 0;
  int height = 0;
};

class FrameTap final : public WindowSystem {
 public:
  // `keep`: without it only onPresent is served.
  FrameTap(WindowSystem& inner, bool keep) : inner_(inner), keep_(keep) {}
  // On the run's thread, behind every present.
  std::function<void()> onPresent;
  // The same with the picture that is kept.
  std::function<void(const Picture&)> onPicture;
  // From any thread.
  Picture NewestPicture();

  ScreenInfo screen() override { return inner_.screen(); }
  NativeWindow hostWindow() override { return inner_.hostWindow(); }
  Size hostSize() override { return inner_.hostSize(); }
  NativeWindow createWindow(const WindowDescription& description) override { return inner_.createWindow(description); }
  void destroyWindow(NativeWindow window) override { inner_.destroyWindow(window); }
  void showWindow(NativeWindow window, ShowState state) override { inner_.showWindow(window, state); }
  void moveWindow(NativeWindow window, int x, int y) override { inner_.moveWindow(window, x, y); }
  void resizeWindow(NativeWindow window, int width, int height) override { inner_.resizeWindow(window, width, height); }
  void raiseWindow(NativeWindow window) override { inner_.raiseWindow(window); }
  std::optional<std::pair<int, int>> clientOrigin(NativeWindow window) override { return inner_.clientOrigin(window); }
  void setTitle(NativeWindow window, std::string_view title) override { inner_.setTitle(window, title); }
  void setCursor(NativeWindow window, CursorShape shape) override { inner_.setCursor(window, shape); }
  void lowerWindow(NativeWindow window) override { inner_.lowerWindow(window); }
  void setTopMost(NativeWindow window, bool topMost) override { inner_.setTopMost(window, topMost); }
  void setCursorPicture(NativeWindow window, const WindowPicture& picture) override {
    inner_.setCursorPicture(window, picture);
  }
  void setIcon(NativeWindow window, const WindowPicture& picture) override { inner_.setIcon(window, picture); }
  void setShape(NativeWindow window, const std::vector<Rect>* boxes) override { inner_.setShape(window, boxes); }
  void setSizeLimits(NativeWindow window, Size least, Size most) override { inner_.setSizeLimits(window, least, most); }
  void enableClose(NativeWindow window, bool enabled) override { inner_.enableClose(window, enabled); }
  void acceptDrops(NativeWindow window, bool accepted) override { inner_.acceptDrops(window, accepted); }
  void flashWindow(NativeWindow window, bool flashing) override { inner_.flashWindow(window, flashing); }
  void captureMouse(NativeWindow window, bool captured) override { inner_.captureMouse(window, captured); }
  void present(NativeWindow window, const uint32_t* pixels, int width, int height, int pitch,
               std::span<const Rect> dirty) override;
  void showMessage(std::string_view title, std::string_view text) override { inner_.showMessage(title, text); }

 private:
  void Keep(const uint32_t* pixels, int width, int height, int pitch, std::span<const Rect> dirty);

  WindowSystem& inner_;
  const bool keep_;
  std::mutex mutex_;
  Picture picture_;
};

}  // namespace vl
