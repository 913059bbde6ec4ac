#include "platform/sdl/sdl_windows.h"

#include <algorithm>

#include "platform/text/code_page.h"

namespace vl {
namespace {

SDL_SystemCursor SystemCursorOf(CursorShape shape) {
  switch (shape) {
    case CursorShape::Cross:
      return SDL_SYSTEM_CURSOR_CROSSHAIR;
    case CursorShape::IBeam:
      return SDL_SYSTEM_CURSOR_IBEAM;
    case CursorShape::No:
      return SDL_SYSTEM_CURSOR_NO;
    case CursorShape::SizeAll:
      return SDL_SYSTEM_CURSOR_SIZEALL;
    case CursorShape::SizeNESW:
      return SDL_SYSTEM_CURSOR_SIZENESW;
    case CursorShape::SizeNS:
    case CursorShape::UpArrow:  // the nearest that SDL has
      return SDL_SYSTEM_CURSOR_SIZENS;
    case CursorShape::SizeNWSE:
      return SDL_SYSTEM_CURSOR_SIZENWSE;
    case CursorShape::SizeWE:
      return SDL_SYSTEM_CURSOR_SIZEWE;
    case CursorShape::Wait:
      return SDL_SYSTEM_CURSOR_WAIT;
    default:
      return SDL_SYSTEM_CURSOR_ARROW;
  }
}

}  // namespace

bool SdlWindows::Create(NativeWindow id, const WindowDescription& d, const std::string& title, std::string& reason) {
  Uint32 flags = SDL_WINDOW_HIDDEN;
  if (!d.caption) flags |= SDL_WINDOW_BORDERLESS;
  if (d.resizable) flags |= SDL_WINDOW_RESIZABLE;
  if (d.topMost) flags |= SDL_WINDOW_ALWAYS_ON_TOP;
  Window made;
  made.window.reset(SDL_CreateWindow(title.c_str(), d.x, d.y, std::max(d.width, 1), std::max(d.height, 1), flags));
  if (made.window) made.renderer.reset(SDL_CreateRenderer(made.window.get(), -1, 0));
  if (made.window && !made.renderer) {
    made.renderer.reset(SDL_CreateRenderer(made.window.get(), -1, SDL_RENDERER_SOFTWARE));
  }
  if (!made.renderer) {
    reason = SDL_GetError();
    return false;
  }
  windows_[id] = std::move(made);
  return true;
}

std::vector<NativeWindow> SdlWindows::Apply(WindowMailbox& mailbox) {
  std::vector<NativeWindow> failed;
  for (WindowChange& change : mailbox.TakeChanges()) {
    if (change.destroy) {
      windows_.erase(change.window);
      if (mouseWindow_ == change.window) mouseWindow_ = 0;
      continue;
    }
    const std::string title = change.title ? Utf8Of1252(*change.title) : std::string();
    std::string reason;
    if (change.create && !Create(change.window, change.description, title, reason)) {
      failed.push_back(change.window);
      continue;
    }
    const auto found = windows_.find(change.window);
    if (found == windows_.end()) continue;
    Window& window = found->second;
    SDL_Window* const sdl = window.window.get();
    if (change.title && !change.create) SDL_SetWindowTitle(sdl, title.c_str());
    if (change.size) SDL_SetWindowSize(sdl, change.size->width, change.size->height);
    if (change.position) SDL_SetWindowPosition(sdl, change.position->first, change.position->second);
    if (change.state) ApplyState(window, *change.state);
    if (change.raise) SDL_RaiseWindow(sdl);
    if (change.cursor) {
      window.cursor = *change.cursor;
      if (mouseWindow_ == change.window) UseCursor(window.cursor);
    }
  }
  return failed;
}

void SdlWindows::ApplyState(Window& window, ShowState state) {
  SDL_Window* const sdl = window.window.get();
  if (state == ShowState::Hidden) {
    SDL_HideWindow(sdl);
    return;
  }
  SDL_ShowWindow(sdl);
  switch (state) {
    case ShowState::Minimized:
      SDL_MinimizeWindow(sdl);
      break;
    case ShowState::Maximized:
      SDL_MaximizeWindow(sdl);
      break;
    default:
      if (SDL_GetWindowFlags(sdl) & (SDL_WINDOW_MINIMIZED | SDL_WINDOW_MAXIMIZED)) SDL_RestoreWindow(sdl);
      break;
  }
  Draw(window);
}

void SdlWindows::Show(WindowMailbox& mailbox) {
  std::vector<NativeWindow> shown;
  mailbox.TakeFrames([&](NativeWindow id, const WindowFrame& frame) {
    const auto found = windows_.find(id);
    if (found == windows_.end()) return;
    Upload(found->second, frame);
    shown.push_back(id);
  });
  // Drawing may wait for the display; the interpreter must not.
  for (const NativeWindow id : shown) Draw(windows_[id]);
}

void SdlWindows::Upload(Window& window, const WindowFrame& frame) {
  Rect dirty = frame.dirty;
  if (!window.texture || window.textureWidth != frame.width || window.textureHeight != frame.height) {
    window.enlarged.reset();
    window.enlargedBy = 0;
    window.texture.reset(SDL_CreateTexture(window.renderer.get(), SDL_PIXELFORMAT_RGB888, SDL_TEXTUREACCESS_STREAMING,
                                           frame.width, frame.height));
    window.textureWidth = frame.width;
    window.textureHeight = frame.height;
    dirty = {0, 0, frame.width, frame.height};
  }
  if (!window.texture) return;
  const SDL_Rect box = {dirty.left, dirty.top, dirty.Width(), dirty.Height()};
  SDL_UpdateTexture(window.texture.get(), &box,
                    frame.pixels.data() + size_t(dirty.top) * size_t(frame.width) + size_t(dirty.left),
                    frame.width * int(sizeof(uint32_t)));
}

void SdlWindows::Draw(Window& window) {
  SDL_Renderer* const renderer = window.renderer.get();
  SDL_SetRenderDrawColor(renderer, 0, 0, 0, 255);
  SDL_RenderClear(renderer);
  if (window.texture) DrawPicture(window);
  if (window.overlay) SDL_RenderCopy(renderer, window.overlay.get(), nullptr, &window.overlayPlace);
  SDL_RenderPresent(renderer);
}

void SdlWindows::Redraw(NativeWindow id) {
  const auto found = windows_.find(id);
  if (found != windows_.end()) Draw(found->second);
}

void SdlWindows::EnterMouse(NativeWindow id) {
  const auto found = windows_.find(id);
  if (found == windows_.end()) return;
  mouseWindow_ = id;
  UseCursor(found->second.cursor);
}

void SdlWindows::UseCursor(CursorShape shape) {
  if (shape == CursorShape::None) {
    SDL_ShowCursor(SDL_DISABLE);
    return;
  }
  auto& cursor = cursors_[shape];
  if (!cursor) cursor.reset(SDL_CreateSystemCursor(SystemCursorOf(shape)));
  if (cursor) SDL_SetCursor(cursor.get());
  SDL_ShowCursor(SDL_ENABLE);
}

NativeWindow SdlWindows::WindowOf(Uint32 sdlId) const {
  for (const auto& [id, window] : windows_) {
    if (SDL_GetWindowID(window.window.get()) == sdlId) return id;
  }
  return 0;
}

SDL_Window* SdlWindows::Find(NativeWindow id) const {
  const auto found = windows_.find(id);
  return found == windows_.end() ? nullptr : found->second.window.get();
}

Size SdlWindows::SizeOf(NativeWindow id) const {
  Size size;
  if (SDL_Window* const window = Find(id)) SDL_GetWindowSize(window, &size.width, &size.height);
  return size;
}

}  // namespace vl
