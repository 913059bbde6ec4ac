// SdlWindows: the SDL windows behind the window numbers. Host's thread only.
#pragma once

#include <SDL.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/sdl/picture_view.h"
#include "platform/sdl/window_mailbox.h"

namespace vl {

// What the player shows over a window's picture: opaque pixels 0x00RRGGBB, line after line.
struct WindowOverlay {
  std::vector<uint32_t> pixels;
  int width = 0;
  int height = 0;
  int x = 0;  // in the window
  int y = 0;
};

class SdlWindows {
 public:
  SdlWindows() = default;
  SdlWindows(const SdlWindows&) = delete;
  SdlWindows& operator=(const SdlWindows&) = delete;

  // False, and the reason, when the display gives none. The title is UTF-8.
  bool Create(NativeWindow window, const WindowDescription& description, const std::string& title, std::string& reason);
  void MarkHost(NativeWindow window) { windows_[window].isHost = true; }
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
  // Files that are dropped on it are the program's.
  bool AcceptsDrops(NativeWindow window) const;
  // The window's own size, which the picture may not have yet.
  Size SizeOf(NativeWindow window) const;

  // Of the host's window; windows that the program made are scaled while they fill the screen.
  void SetScaling(Scaling scaling);
  // True when the picture keeps its size whatever the window's is.
  bool IsScaled(NativeWindow window) const;
  // A pixel of the window becomes one of its picture. False outside the picture.
  bool ToPicture(NativeWindow window, int& x, int& y) const;
  void SetFullScreen(NativeWindow window, bool full);
  bool IsFullScreen(NativeWindow window) const;
  // An empty one takes it away.
  void SetOverlay(NativeWindow window, const WindowOverlay& overlay);
  void Forget(NativeWindow window) { windows_.erase(window); }
  // Forgets all windows of the program; the host's stays.
  void KeepOnly(NativeWindow window);

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
    std::unique_ptr<SDL_Texture, Delete> enlarged;  // by a whole factor, on the way to a smooth picture
    int enlargedBy = 0;
    std::unique_ptr<SDL_Texture, Delete> overlay;
    SDL_Rect overlayPlace{};
    bool isHost = false;
    bool acceptsDrops = false;
    CursorShape cursor = CursorShape::Arrow;
    std::unique_ptr<SDL_Cursor, Delete> cursorPicture;  // instead of the shape
    std::optional<std::vector<Rect>> shape;
    bool needsPicture = false;  // it was made anew
    // A window of a fixed size can be resized while it is maximised, until it has its size again.
    std::optional<Size> fixedSize;
    bool hasBeenLarge = false;
  };
  SDL_Renderer* CreateRenderer(SDL_Window* window, bool isCut);
  void Reshape(Window& window);
  void ApplyState(Window& window, ShowState state);
  void FixSize(Window& window);
  void Upload(Window& window, const WindowFrame& frame);
  void Draw(Window& window);
  void DrawPicture(Window& window);
  bool Enlarge(Window& window, int factor);
  bool IsScaled(const Window& window) const;
  Rect PlaceOf(const Window& window) const;
  Scaling ScalingOf(const Window& window) const;
  void UseCursor(const Window& window);

  std::map<NativeWindow, Window> windows_;
  std::map<CursorShape, std::unique_ptr<SDL_Cursor, Delete>> cursors_;
  NativeWindow mouseWindow_ = 0;
  Scaling scaling_ = Scaling::Follow;
  bool isProcessorFaster_ = false;  // than the display's OpenGL
};

}  // namespace vl
