// WindowSystem: top-level windows and the screen, as the core asks for them.
//
// The core owns the window tree; a back end only gives frames on the desktop and shows pixels in them.
// Every call returns at once. Coordinates are pixels; a window's position and size are those of its
// client area.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "base/rect.h"

namespace vl {

using NativeWindow = uint32_t;  // 0 is none

struct ScreenInfo {
  int width = 0;
  int height = 0;
  int depth = 32;        // bits a pixel
  int dotsPerInch = 96;  // both axes
  Rect work = {};        // what the desktop's own bars leave free; empty for all of it
};

struct WindowDescription {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool caption = true;
  bool resizable = false;
  bool topMost = false;
  bool tool = false;       // a small caption, and no place in the desktop's list of windows
  NativeWindow owner = 0;  // it stays in front of that window
  std::string_view title;  // code page 1252
};

enum class ShowState { Hidden, Normal, Minimized, Maximized };

// The platform's cursors, in the order of the language's cursor numbers.
enum class CursorShape { Arrow, Cross, IBeam, No, SizeAll, SizeNESW, SizeNS, SizeNWSE, SizeWE, UpArrow, Wait, None };

// An icon, or a cursor with its hot spot.
struct WindowPicture {
  int width = 0;
  int height = 0;
  int hotX = 0;
  int hotY = 0;
  std::vector<uint32_t> words;  // 0xAARRGGBB, line after line; A is 0 (not shown) or 255
};

// Where a maximised window's client area stands: the work area without the caption.
inline Rect MaximizedClient(const ScreenInfo& screen, int captionHeight) {
  const Rect work = screen.work.IsEmpty() ? Rect{0, 0, screen.width, screen.height} : screen.work;
  return {work.left, std::min(work.top + captionHeight, work.bottom), work.right, work.bottom};
}

class WindowSystem {
 public:
  virtual ~WindowSystem() = default;

  virtual ScreenInfo screen() = 0;
  // The window that the host lends to the run (it stays the host's), or 0.
  virtual NativeWindow hostWindow() = 0;
  virtual Size hostSize() = 0;

  // Created hidden. 0 when the desktop gives none.
  virtual NativeWindow createWindow(const WindowDescription& description) = 0;
  virtual void destroyWindow(NativeWindow window) = 0;
  virtual void showWindow(NativeWindow window, ShowState state) = 0;
  virtual void moveWindow(NativeWindow window, int x, int y) = 0;
  virtual void resizeWindow(NativeWindow window, int width, int height) = 0;
  // To the front, with the keyboard.
  virtual void raiseWindow(NativeWindow window) = 0;
  // Where the window's client area lies on the screen; nothing where the desktop doesn't tell.
  virtual std::optional<std::pair<int, int>> clientOrigin(NativeWindow window) { return std::nullopt; }
  virtual void lowerWindow(NativeWindow window) = 0;
  virtual void setTopMost(NativeWindow window, bool topMost) = 0;
  virtual void setTitle(NativeWindow window, std::string_view title) = 0;
  virtual void setCursor(NativeWindow window, CursorShape shape) = 0;
  virtual void setCursorPicture(NativeWindow window, const WindowPicture& picture) = 0;
  // 16 or 32 pixels a side; of several the back end shows what suits it.
  virtual void setIcon(NativeWindow window, const WindowPicture& picture) = 0;
  // Cuts the window to boxes of its client area; null gives all of it back. What is cut off shows what lies
  // behind and lets the mouse through.
  virtual void setShape(NativeWindow window, const std::vector<Rect>* boxes) = 0;
  // Of the client area, for a person who drags the frame; 0 for no limit.
  virtual void setSizeLimits(NativeWindow window, Size least, Size most) = 0;
  virtual void enableClose(NativeWindow window, bool enabled) = 0;
  virtual void acceptDrops(NativeWindow window, bool accepted) = 0;
  virtual void flashWindow(NativeWindow window, bool flashing) = 0;
  // The mouse is reported wherever it is.
  virtual void captureMouse(NativeWindow window, bool captured) = 0;

  // Shows pixels: words 0x00RRGGBB, top line first, `pitch` words a line. Copies; the caller may draw on at
  // once. `dirty` are the rectangles that changed since the last call for this window.
  virtual void present(NativeWindow window, const uint32_t* pixels, int width, int height, int pitch,
                       std::span<const Rect> dirty) = 0;

  // An error box. The back end shows it without waiting for its answer.
  virtual void showMessage(std::string_view title, std::string_view text) = 0;
};

}  // namespace vl
