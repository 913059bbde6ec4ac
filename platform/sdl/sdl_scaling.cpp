// The view of a window: scaling, full screen, and what the player lays over the picture.
#include <algorithm>

#include "platform/sdl/sdl_windows.h"

namespace vl {
namespace {

// A larger picture would gain nothing that an eye sees.
constexpr int kMaxEnlargement = 8;
constexpr int kMaxEnlargedSide = 8192;

SDL_Rect SdlRectOf(const Rect& r) { return {r.left, r.top, r.Width(), r.Height()}; }

}  // namespace

void SdlWindows::SetScaling(Scaling scaling) {
  scaling_ = scaling;
  for (auto& [id, window] : windows_) Draw(window);
}

Scaling SdlWindows::ScalingOf(const Window& window) const {
  if (window.isHost) return scaling_;
  const bool full = (SDL_GetWindowFlags(window.window.get()) & SDL_WINDOW_FULLSCREEN_DESKTOP) != 0;
  if (!full) return Scaling::Follow;
  return scaling_ == Scaling::Follow ? Scaling::Smooth : scaling_;
}

bool SdlWindows::IsScaled(const Window& window) const { return ScalingOf(window) != Scaling::Follow; }

bool SdlWindows::IsScaled(NativeWindow id) const {
  const auto found = windows_.find(id);
  return found != windows_.end() && IsScaled(found->second);
}

Rect SdlWindows::PlaceOf(const Window& window) const {
  Size size;
  SDL_GetWindowSize(window.window.get(), &size.width, &size.height);
  return PlaceOfPicture({window.textureWidth, window.textureHeight}, size, ScalingOf(window));
}

bool SdlWindows::ToPicture(NativeWindow id, int& x, int& y) const {
  const auto found = windows_.find(id);
  if (found == windows_.end() || !found->second.texture || !IsScaled(found->second)) return true;
  const Window& window = found->second;
  const Size picture = {window.textureWidth, window.textureHeight};
  WindowToPicture(picture, PlaceOf(window), x, y);
  return x >= 0 && y >= 0 && x < picture.width && y < picture.height;
}

void SdlWindows::DrawPicture(Window& window) {
  const Rect place = PlaceOf(window);
  const SDL_Rect box = SdlRectOf(place);
  SDL_Renderer* const renderer = window.renderer.get();
  const bool isWhole = place.Width() % window.textureWidth == 0 && place.Height() % window.textureHeight == 0;
  const bool isSmooth = ScalingOf(window) == Scaling::Smooth && !isWhole;
  if (!isSmooth) {
    const bool isSmaller = place.Width() < window.textureWidth;
    SDL_SetTextureScaleMode(window.texture.get(), isSmaller ? SDL_ScaleModeLinear : SDL_ScaleModeNearest);
    SDL_RenderCopy(renderer, window.texture.get(), nullptr, &box);
    return;
  }
  // Squares first, then down to the size: only the edges between pixels are blended.
  const int factor = std::min(place.Width() / window.textureWidth + 1, kMaxEnlargement);
  if (factor > 1 && Enlarge(window, factor)) {
    SDL_SetTextureScaleMode(window.enlarged.get(), SDL_ScaleModeLinear);
    SDL_RenderCopy(renderer, window.enlarged.get(), nullptr, &box);
    return;
  }
  SDL_SetTextureScaleMode(window.texture.get(), SDL_ScaleModeLinear);
  SDL_RenderCopy(renderer, window.texture.get(), nullptr, &box);
}

bool SdlWindows::Enlarge(Window& window, int factor) {
  SDL_Renderer* const renderer = window.renderer.get();
  const int width = window.textureWidth * factor;
  const int height = window.textureHeight * factor;
  if (width > kMaxEnlargedSide || height > kMaxEnlargedSide) return false;
  if (!window.enlarged || window.enlargedBy != factor) {
    window.enlarged.reset(SDL_CreateTexture(renderer, SDL_PIXELFORMAT_RGB888, SDL_TEXTUREACCESS_TARGET, width, height));
    window.enlargedBy = factor;
  }
  if (!window.enlarged || SDL_SetRenderTarget(renderer, window.enlarged.get()) != 0) return false;
  SDL_SetTextureScaleMode(window.texture.get(), SDL_ScaleModeNearest);
  SDL_RenderCopy(renderer, window.texture.get(), nullptr, nullptr);
  SDL_SetRenderTarget(renderer, nullptr);
  return true;
}

void SdlWindows::SetFullScreen(NativeWindow id, bool full) {
  SDL_Window* const window = Find(id);
  if (window) SDL_SetWindowFullscreen(window, full ? SDL_WINDOW_FULLSCREEN_DESKTOP : 0);
  Redraw(id);
}

bool SdlWindows::IsFullScreen(NativeWindow id) const {
  SDL_Window* const window = Find(id);
  return window && (SDL_GetWindowFlags(window) & SDL_WINDOW_FULLSCREEN_DESKTOP) != 0;
}

void SdlWindows::SetOverlay(NativeWindow id, const WindowOverlay& overlay) {
  const auto found = windows_.find(id);
  if (found == windows_.end()) return;
  Window& window = found->second;
  window.overlay.reset();
  if (overlay.width > 0 && overlay.height > 0) {
    window.overlay.reset(SDL_CreateTexture(window.renderer.get(), SDL_PIXELFORMAT_RGB888, SDL_TEXTUREACCESS_STATIC,
                                           overlay.width, overlay.height));
    window.overlayPlace = {overlay.x, overlay.y, overlay.width, overlay.height};
    if (window.overlay) {
      SDL_UpdateTexture(window.overlay.get(), nullptr, overlay.pixels.data(), overlay.width * int(sizeof(uint32_t)));
    }
  }
  Draw(window);
}

void SdlWindows::KeepOnly(NativeWindow id) {
  std::erase_if(windows_, [id](const auto& entry) { return entry.first != id; });
  if (mouseWindow_ != id) mouseWindow_ = 0;
  const auto found = windows_.find(id);
  if (found == windows_.end()) return;
  Window& window = found->second;
  window.texture.reset();
  window.enlarged.reset();
  window.cursor = CursorShape::Arrow;
  window.acceptsDrops = false;
  window.cursorPicture.reset();
  if (mouseWindow_ == id) UseCursor(window);
  Draw(window);
}

}  // namespace vl
