// WindowSystem: top-level windows and the screen, as the core asks for them.
//
// The core owns the window tree; a back end only gives frames on the desktop and shows pixels in them.
// Every call returns at once. Coordinates are pixels; a window's position and size are those of its
// client area.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "base/rect.h"

namespace vl {

using NativeWindow = uint32_t;  // 0 is none

struct ScreenInfo {
  int width = 0;
  int height = 0;
  int depth = 32;        // bits a pixel
  int dotsPerInch = 96;  // both axes
};

struct WindowDescription {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool caption = true;
  bool resizable = false;
  bool topMost = false;
  NativeWindow owner = 0;
  std::string_view title;  // code page 1252
};

enum class ShowState { Hidden, Normal, Minimized, Maximized };

// The platform's cursors, in the order of the language's cursor numbers.
enum class CursorShape { Arrow, Cross, IBeam, No, SizeAll, SizeNESW, SizeNS, SizeNWSE, SizeWE, UpArrow, Wait, None };

// The frame of the period around a client area: what frameBorders gives where the desktop's own frame is not
// known beforehand, so that a program lays its windows out alike everywhere.
inline Rect classicFrameBorders(const WindowDescription& description) {
  constexpr int kCaption = 19;  // with the line under it
  if (!description.caption && !description.resizable) return {0, 0, 0, 0};
  const int border = description.resizable ? 4 : 3;
  return {border, border + (description.caption ? kCaption : 0), border, border};
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
  virtual void raiseWindow(NativeWindow window) = 0;
  // Where the window's client area lies on the screen; nothing where the desktop doesn't tell.
  virtual std::optional<std::pair<int, int>> clientOrigin(NativeWindow window) { return std::nullopt; }
  virtual void setTitle(NativeWindow window, std::string_view title) = 0;
  virtual void setCursor(NativeWindow window, CursorShape shape) = 0;
  // Width of the frame around the client area that a window of this description will have.
  virtual Rect frameBorders(const WindowDescription& description) = 0;

  // Shows pixels: words 0x00RRGGBB, top line first, `pitch` words a line. Copies; the caller may draw on at
  // once. `dirty` are the rectangles that changed since the last call for this window.
  virtual void present(NativeWindow window, const uint32_t* pixels, int width, int height, int pitch,
                       std::span<const Rect> dirty) = 0;

  // An error box. The back end shows it without waiting for its answer.
  virtual void showMessage(std::string_view title, std::string_view text) = 0;
};

}  // namespace vl
