// CSurfaceHost: what a Surface needs of the window that shows it. The window behind it belongs to ui/.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/rect.h"
#include "gfx2d/surface.h"

namespace vl {

class CSurfaceHost {
 public:
  virtual ~CSurfaceHost() = default;
  // Brings these boxes of the surface to the screen. The list is the surface's own and is emptied afterwards.
  virtual void PresentSurface(cSurface& surface, std::span<const Rect> dirty) = 0;
  // The window keeps its colours; a call on the surface goes through it, which then calls back Set...Raw.
  // Colours are the library's, red low.
  virtual void SetTextColorOfWindow(uint32_t colour) = 0;
  virtual void SetBackColorOfWindow(uint32_t colour) = 0;
  // The surface dies; the window must not use it any more.
  virtual void SurfaceIsGone() = 0;
};

class CISurface;
struct CapturedPicture;

// A runtime object that has a surface of its own: Window.
class CSurfaceOwner {
 public:
  virtual ~CSurfaceOwner() = default;
  // Null when it has none.
  virtual CISurface* OwnedSurface() = 0;
  // What its client area shows, children included; false when it shows nothing.
  virtual bool CaptureClient(CapturedPicture& picture) = 0;
};

// A copy of what is on the screen.
struct CapturedPicture {
  std::vector<uint32_t> words;  // 0x00RRGGBB, line after line
  Size size;
};

// The screen as a run may see it: its own windows on an empty desktop. What else a person has on the screen is no
// business of a program.
class CScreen {
 public:
  virtual ~CScreen() = default;
  virtual bool CaptureScreen(CapturedPicture& picture) = 0;
};

}  // namespace vl
