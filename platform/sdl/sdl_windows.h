// SdlWindows: the SDL windows behind the window numbers. Host's thread only.
#pragma once

#include <SDL.h>

#include <map>
#include <memory>
#include <string>

#include "platform/sdl/window_mailbox.h"

namespace vl {

class SdlWindows {
 public:
  SdlWindows() = default;
  SdlWindows(const SdlWindows&) = delete;
  SdlWindows& operator=(const SdlWindows&) = delete;

  // False, and the reason, when the display gives none. The title is UTF-8.
  bool Create(NativeWindow window, const WindowDescription& description, const std::string& title, std::string& reason);
  // Does what the interpreter asked for; gives the windows that could not be made.
  std::vector<NativeWindow> Apply(WindowMailbox& mailbox);
  // Shows the newest pictures.
  void Show(WindowMailbox& mailbox);
  // Shows a window's last picture again.
  void Redraw(NativeWindow window);
  // The mouse came into a window: its cursor is the one to show.
  void EnterMouse(NativeWindow window);
  // 0 for a window that is not ours.
  NativeWindow WindowOf(Uint32 sdlId) const;
  SDL_Window* Find(NativeWindow window) const;
  // The window's own size, which the picture may not have yet.
  Size SizeOf(NativeWindow window) const;

 private:
  struct Delete {
    void operator()(SDL_Window* p) const { SDL_DestroyWindow(p); }
    void operator()(SDL_Renderer* p) const { SDL_DestroyRenderer(p); }
    void operator()(SDL_Texture* p) const { SDL_DestroyTexture(p); }
    void operator()(SDL_Cursor* p) const { SDL_FreeCursor(p); }
  };
  struct Window {
    std::unique_ptr<SDL_Window, Delete> window;
    std::unique_ptr<SDL_Renderer, Delete> renderer;
    std::unique_ptr<SDL_Texture, Delete> texture;
    int textureWidth = 0;
    int textureHeight = 0;
    CursorShape cursor = CursorShape::Arrow;
  };
  void ApplyState(Window& window, ShowState state);
  void Upload(Window& window, const WindowFrame& frame);
  void Draw(Window& window);
  void UseCursor(CursorShape shape);

  std::map<NativeWindow, Window> windows_;
  std::map<CursorShape, std::unique_ptr<SDL_Cursor, Delete>> cursors_;
  NativeWindow mouseWindow_ = 0;
};

}  // namespace vl
