// CSurfaceHost: what a Surface needs of the window that shows it. The window behind it belongs to ui/.
#pragma once

#include <span>

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

// A runtime object that has a surface of its own: Window.
class CSurfaceOwner {
 public:
  virtual ~CSurfaceOwner() = default;
  // Null when it has none.
  virtual CISurface* OwnedSurface() = 0;
};

}  // namespace vl
