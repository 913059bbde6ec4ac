#include "platform/sdl/sdl_windows.h"

#include <algorithm>

#include "platform/sdl/sdl_hints.h"
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

// True when OpenGL draws on the processor: then copying pixels ourselves is many times faster.
bool IsDrawnByProcessor(SDL_Renderer* renderer) {
  SDL_RendererInfo info{};
  if (SDL_GetRendererInfo(renderer, &info) != 0 || SDL_strncmp(info.name, "opengl", 6) != 0) return false;
  using GetText = const unsigned char*(SDLCALL*)(unsigned int);
  constexpr unsigned int kRendererName = 0x1F01;  // GL_RENDERER
  const auto getText = reinterpret_cast<GetText>(SDL_GL_GetProcAddress("glGetString"));
  const unsigned char* const text = getText ? getText(kRendererName) : nullptr;
  if (!text) return false;
  const char* const name = reinterpret_cast<const char*>(text);
  return SDL_strstr(name, "llvmpipe") || SDL_strstr(name, "softpipe") || SDL_strstr(name, "Software Rasterizer");
}

}  // namespace

// For a renderer of the graphics card SDL makes a window anew, and forgets that it can be cut.
SDL_Renderer* SdlWindows::CreateRenderer(SDL_Window* window, bool isCut) {
  // A person's own choice of a driver stands.
  if (!isCut && (!isProcessorFaster_ || SDL_GetHint(SDL_HINT_RENDER_DRIVER))) {
    SDL_Renderer* const made = SDL_CreateRenderer(window, -1, 0);
    if (made && (SDL_GetHint(SDL_HINT_RENDER_DRIVER) || !IsDrawnByProcessor(made))) return made;
    if (made) SDL_DestroyRenderer(made);
    isProcessorFaster_ = true;
  }
  // Without this SDL would show even these pixels through OpenGL.
  SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
  return SDL_CreateRenderer(window, -1, SDL_RENDERER_SOFTWARE);
}

bool SdlWindows::Create(NativeWindow id, const WindowDescription& d, const std::string& title, std::string& reason) {
  Uint32 flags = SDL_WINDOW_HIDDEN;
  if (!d.caption) flags |= SDL_WINDOW_BORDERLESS;
  if (d.resizable) flags |= SDL_WINDOW_RESIZABLE;
  if (d.topMost) flags |= SDL_WINDOW_ALWAYS_ON_TOP;
  if (d.tool) flags |= SDL_WINDOW_UTILITY | SDL_WINDOW_SKIP_TASKBAR;
  Window made;
  made.window.reset(SDL_CreateWindow(title.c_str(), d.x, d.y, std::max(d.width, 1), std::max(d.height, 1), flags));
  if (SDL_Window* const owner = Find(d.owner); owner && made.window) SDL_SetWindowModalFor(made.window.get(), owner);
  if (made.window) made.renderer.reset(CreateRenderer(made.window.get(), false));
  if (!made.renderer) {
    reason = SDL_GetError();
    return false;
  }
  windows_[id] = std::move(made);
  return true;
}

// SDL cuts only windows that were made for it, so the window is made anew.
void SdlWindows::Reshape(Window& window) {
  SDL_Window* sdl = window.window.get();
  Size size;
  SDL_GetWindowSize(sdl, &size.width, &size.height);
  if (!SDL_IsShapedWindow(sdl)) {
    if (!window.shape) return;
    int x = 0;
    int y = 0;
    SDL_GetWindowPosition(sdl, &x, &y);
    const Uint32 flags = SDL_GetWindowFlags(sdl);
    const std::string title = SDL_GetWindowTitle(sdl);
    Window shaped;
    shaped.window.reset(SDL_CreateShapedWindow(title.c_str(), Uint32(x), Uint32(y), Uint32(size.width),
                                               Uint32(size.height), SDL_WINDOW_HIDDEN));
    if (shaped.window) shaped.renderer.reset(CreateRenderer(shaped.window.get(), true));
    if (!shaped.renderer) return;
    shaped.shape = window.shape;
    shaped.cursor = window.cursor;
    shaped.cursorPicture = std::move(window.cursorPicture);
    window.texture.reset();
    window.enlarged.reset();
    window.overlay.reset();
    window.renderer.reset();
    window = std::move(shaped);
    sdl = window.window.get();
    SDL_SetWindowPosition(sdl, x, y);
    if (flags & SDL_WINDOW_ALWAYS_ON_TOP) SDL_SetWindowAlwaysOnTop(sdl, SDL_TRUE);
    if (flags & SDL_WINDOW_SHOWN) SDL_ShowWindow(sdl);
    window.needsPicture = true;
  }
  const std::vector<Rect> whole = {{0, 0, size.width, size.height}};
  const SdlSurface mask = MaskOf(window.shape ? *window.shape : whole, size);
  SDL_WindowShapeMode mode{};
  mode.mode = ShapeModeBinarizeAlpha;
  mode.parameters.binarizationCutoff = 128;
  if (mask) SDL_SetWindowShape(sdl, mask.get(), &mode);
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
    SDL_Window* sdl = window.window.get();
    if (change.title && !change.create) SDL_SetWindowTitle(sdl, title.c_str());
    if (change.size) SDL_SetWindowSize(sdl, change.size->width, change.size->height);
    if (change.position) SDL_SetWindowPosition(sdl, change.position->first, change.position->second);
    if (change.acceptsDrops) window.acceptsDrops = *change.acceptsDrops;
    if (change.shape) window.shape = std::move(*change.shape);
    if (change.shape || (change.size && window.shape)) Reshape(window);
    sdl = window.window.get();
    if (window.needsPicture) {
      window.needsPicture = false;
      mailbox.ShowAgain(change.window);
    }
    ApplyHints(sdl, change);
    if (change.state) ApplyState(window, *change.state);
    if (change.raise) SDL_RaiseWindow(sdl);
    if (change.cursor) {
      window.cursor = *change.cursor;
      window.cursorPicture.reset();
    }
    if (change.cursorPicture) {
      const WindowPicture& picture = *change.cursorPicture;
      const SdlSurface pixels = SurfaceOf(picture);
      const int hotX = std::clamp(picture.hotX, 0, std::max(picture.width - 1, 0));
      const int hotY = std::clamp(picture.hotY, 0, std::max(picture.height - 1, 0));
      window.cursorPicture.reset(pixels ? SDL_CreateColorCursor(pixels.get(), hotX, hotY) : nullptr);
    }
    if ((change.cursor || change.cursorPicture) && mouseWindow_ == change.window) UseCursor(window);
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
      // A desktop maximises a window of a fixed size halfway at best.
      if (!(SDL_GetWindowFlags(sdl) & SDL_WINDOW_RESIZABLE)) {
        window.hasBeenLarge = false;
        window.fixedSize.emplace();
        SDL_GetWindowSize(sdl, &window.fixedSize->width, &window.fixedSize->height);
        SDL_SetWindowResizable(sdl, SDL_TRUE);
      }
      SDL_MaximizeWindow(sdl);
      break;
    default:
      if (SDL_GetWindowFlags(sdl) & (SDL_WINDOW_MINIMIZED | SDL_WINDOW_MAXIMIZED)) SDL_RestoreWindow(sdl);
      break;
  }
  Draw(window);
}

void SdlWindows::FixSize(Window& window) {
  SDL_Window* const sdl = window.window.get();
  Size size;
  SDL_GetWindowSize(sdl, &size.width, &size.height);
  const bool isLarge = (SDL_GetWindowFlags(sdl) & SDL_WINDOW_MAXIMIZED) != 0;
  window.hasBeenLarge = window.hasBeenLarge || isLarge;
  if (isLarge || !window.hasBeenLarge || size != *window.fixedSize) return;
  SDL_SetWindowResizable(sdl, SDL_FALSE);
  window.fixedSize.reset();
}

void SdlWindows::Show(WindowMailbox& mailbox) {
  for (auto& [id, window] : windows_) {
    if (window.fixedSize) FixSize(window);
  }
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
  UseCursor(found->second);
}

void SdlWindows::UseCursor(const Window& window) {
  const CursorShape shape = window.cursor;
  if (window.cursorPicture) {
    SDL_SetCursor(window.cursorPicture.get());
    SDL_ShowCursor(SDL_ENABLE);
    return;
  }
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

bool SdlWindows::AcceptsDrops(NativeWindow id) const {
  const auto found = windows_.find(id);
  return found != windows_.end() && found->second.acceptsDrops;
}

Size SdlWindows::SizeOf(NativeWindow id) const {
  Size size;
  if (SDL_Window* const window = Find(id)) SDL_GetWindowSize(window, &size.width, &size.height);
  return size;
}

}  // namespace vl
