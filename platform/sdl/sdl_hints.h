// What a program asks of a window beyond place and picture, told to SDL: icons, limits, order, attention.
#pragma once

#include <SDL.h>

#include <memory>
#include <vector>

#include "platform/sdl/window_mailbox.h"

namespace vl {

// SDL knows no way to the back and no close box without a function: the core does without them.
void ApplyHints(SDL_Window* window, const WindowChange& change);

struct FreeSdlSurface {
  void operator()(SDL_Surface* surface) const { SDL_FreeSurface(surface); }
};
using SdlSurface = std::unique_ptr<SDL_Surface, FreeSdlSurface>;

// A copy; null without memory or pixels.
SdlSurface SurfaceOf(const WindowPicture& picture);
// Opaque within the boxes, clear elsewhere.
SdlSurface MaskOf(const std::vector<Rect>& boxes, Size size);
ScreenInfo CurrentScreen();

}  // namespace vl
