#include "platform/sdl/sdl_hints.h"

#include <algorithm>

namespace vl {

SdlSurface SurfaceOf(const WindowPicture& picture) {
  SdlSurface surface(SDL_CreateRGBSurfaceWithFormat(0, picture.width, picture.height, 32, SDL_PIXELFORMAT_ARGB8888));
  const size_t pixels = size_t(std::max(picture.width, 0)) * size_t(std::max(picture.height, 0));
  if (!surface || pixels == 0 || picture.words.size() < pixels) return nullptr;
  for (int y = 0; y < picture.height; ++y) {
    auto* line = static_cast<uint8_t*>(surface->pixels) + ptrdiff_t{y} * surface->pitch;
    std::copy_n(picture.words.data() + ptrdiff_t{y} * picture.width, picture.width, reinterpret_cast<uint32_t*>(line));
  }
  return surface;
}

SdlSurface MaskOf(const std::vector<Rect>& boxes, Size size) {
  SdlSurface surface(SDL_CreateRGBSurfaceWithFormat(0, size.width, size.height, 32, SDL_PIXELFORMAT_ARGB8888));
  if (!surface) return nullptr;
  for (const Rect& rect : boxes) {
    const Rect box = rect.Intersect({0, 0, size.width, size.height});
    const SDL_Rect area = {box.left, box.top, box.Width(), box.Height()};
    if (!box.IsEmpty()) SDL_FillRect(surface.get(), &area, 0xFFFFFFFF);
  }
  return surface;
}

ScreenInfo CurrentScreen() {
  ScreenInfo screen;
  SDL_DisplayMode mode{};
  if (SDL_GetDesktopDisplayMode(0, &mode) == 0) {
    screen.width = mode.w;
    screen.height = mode.h;
  }
  SDL_Rect usable{};
  if (SDL_GetDisplayUsableBounds(0, &usable) == 0) {
    screen.work = {usable.x, usable.y, usable.x + usable.w, usable.y + usable.h};
  }
  return screen;
}

void ApplyHints(SDL_Window* window, const WindowChange& change) {
  if (change.topMost) SDL_SetWindowAlwaysOnTop(window, *change.topMost ? SDL_TRUE : SDL_FALSE);
  if (change.icon) {
    if (const SdlSurface icon = SurfaceOf(*change.icon)) SDL_SetWindowIcon(window, icon.get());
  }
  if (change.limits) {
    const auto& [least, most] = *change.limits;
    constexpr int kAny = 32767;
    const int leastWidth = std::max(least.width, 1);
    const int leastHeight = std::max(least.height, 1);
    // The old maximum must not stand in the way of the new minimum.
    SDL_SetWindowMaximumSize(window, kAny, kAny);
    SDL_SetWindowMinimumSize(window, leastWidth, leastHeight);
    SDL_SetWindowMaximumSize(window, most.width > 0 ? std::max(most.width, leastWidth) : kAny,
                             most.height > 0 ? std::max(most.height, leastHeight) : kAny);
  }
#if SDL_VERSION_ATLEAST(2, 0, 16)
  if (change.flashing) SDL_FlashWindow(window, *change.flashing ? SDL_FLASH_UNTIL_FOCUSED : SDL_FLASH_CANCEL);
#endif
  if (change.captured) SDL_CaptureMouse(*change.captured ? SDL_TRUE : SDL_FALSE);
}

}  // namespace vl
