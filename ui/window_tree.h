// WindowTree: the runtime's own windows: handles, parents, Z order, focus, capture, update boxes and messages.
//
// A top-level window stands on one of the platform's; child windows live in the picture of their top-level one.
// Platform events become messages here, messages reach a window's target, and what targets paint is composed per
// top-level window and presented. Positions are those of the outer frame, sizes of the client area. Handles are
// never used twice in a run.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "gfx2d/script/surface_host.h"
#include "interpreter/message_source.h"
#include "platform/services.h"
#include "ui/messages.h"

namespace vl {

struct CThreadParam;
class CInterpretor;

using WindowHandle = uint32_t;  // 0 is none

// What a window's messages go to.
class CWindowTarget {
 public:
  virtual ~CWindowTarget() = default;
  virtual int32_t WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) = 0;
};

struct WindowNode {
  WindowHandle handle = 0;
  WindowHandle parent = 0;
  CWindowTarget* target = nullptr;  // not owned; null once the object has let go
  NativeWindow native = 0;          // top-level windows
  bool isHost = false;              // stands in the window that the host lends
  uint32_t style = 0;
  uint32_t exStyle = 0;
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  Rect borders;
  bool visible = false;
  bool enabled = true;
  bool minimized = false;
  bool maximized = false;
  std::string text;
  uint32_t backColour = 0xFFFFFF;      // of the background, library order
  std::vector<WindowHandle> children;  // topmost first
  Rect update;                         // what WM_PAINT must repaint, client coordinates; empty for nothing
  CursorShape cursor = CursorShape::Arrow;
  // Top-level: the picture on the screen.
  std::vector<uint32_t> picture;
  int pictureWidth = 0;
  int pictureHeight = 0;
};

struct WindowCreation {
  WindowHandle parent = 0;
  bool inHostWindow = false;
  uint32_t style = 0;
  uint32_t exStyle = 0;
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  Rect borders;
  std::string text;
};

class WindowTree final : public CMessageSource, public CScreen {
 public:
  WindowTree(const Services& services, CThreadParam& param);
  ~WindowTree() override;
  static WindowTree& Of(CInterpretor& interpreter);

  // CMessageSource.
  bool HasMessage() override;
  bool Get(CMessage& message) override;
  void Dispatch(const CMessage& message) override;
  void WaitForMessage(int timeoutMs) override;
  void CloseMainWindow() override;

  // Created hidden; 0 when the platform gives no window.
  WindowHandle Create(const WindowCreation& creation, CWindowTarget* target);
  // Children first, each with WM_DESTROY.
  void Destroy(WindowHandle window);
  // No more messages for the object; the window itself stays until it is destroyed.
  void ForgetTarget(WindowHandle window);
  WindowNode* Find(WindowHandle window);
  int32_t Send(WindowHandle window, uint32_t message, uint32_t wParam = 0, int32_t lParam = 0);
  void Post(WindowHandle window, uint32_t message, uint32_t wParam = 0, int32_t lParam = 0);

  void Show(WindowHandle window, uint32_t command);
  // Flags as PositionFlag; insertAfter counts without SWP_NOZORDER.
  void SetPosition(WindowHandle window, int insertAfter, int x, int y, int width, int height, uint32_t flags);
  void SetText(WindowHandle window, const std::string& text);
  void SetCursor(WindowHandle window, CursorShape shape);
  void Enable(WindowHandle window, bool enabled);
  void Invalidate(WindowHandle window);
  bool IsVisible(WindowHandle window);  // it and all its parents
  bool IsEnabled(WindowHandle window);
  Rect BordersFor(uint32_t style) const;
  ScreenInfo Screen() const { return services_.windows->screen(); }

  void SetFocus(WindowHandle window);
  WindowHandle Focus() const { return focus_; }
  WindowHandle Active() const { return active_; }
  void SetCapture(WindowHandle window) { capture_ = window; }
  WindowHandle Capture() const { return capture_; }
  // Client origin on the screen.
  Point ClientOrigin(WindowHandle window);
  Point MousePosition() const { return mouse_; }  // on the screen

  // The windows of modal dialogs, the top first.
  std::vector<WindowHandle> modalStack;

  // Brings boxes of a surface (client coordinates of the window) to the screen.
  void Paint(WindowHandle window, const cSurface& surface, std::span<const Rect> dirty);
  // Fills boxes of a window without a surface with its background.
  void PaintBackground(WindowHandle window, std::span<const Rect> dirty);
  // CScreen.
  bool CaptureScreen(CapturedPicture& picture) override;
  // A window's client area as it was last shown; false for a hidden one.
  bool CaptureClient(WindowHandle window, CapturedPicture& picture);

  // For the main window of the run, which the host closes.
  WindowHandle mainWindow = 0;

 private:
  void Translate(const Event& event);
  void TranslateMouse(const Event& event);
  void TakeEvents(int timeoutMs);
  WindowHandle OfNative(NativeWindow native);
  WindowHandle TopLevel(WindowHandle window);
  // The deepest visible window at a client position of `window`; moves x, y into its client coordinates.
  WindowHandle HitTest(WindowHandle window, int& x, int& y);
  void Activate(WindowHandle window);
  void EnsurePicture(WindowNode& top);
  void Present(WindowNode& top, std::span<const Rect> dirty);
  // Offset of a window's client area in its top-level picture, and what of it can be seen.
  bool VisibleBox(WindowHandle window, WindowHandle& top, Point& offset, Rect& box);
  void RepaintBelow(WindowNode& node, const Rect& box);
  void RepaintAbove(WindowNode& painted);
  void RaiseInParent(WindowNode& node, int insertAfter);

  Services services_;
  CThreadParam& param_;
  std::map<WindowHandle, std::unique_ptr<WindowNode>> nodes_;
  std::vector<WindowHandle> topLevels_;  // topmost first
  std::deque<CMessage> queue_;
  WindowHandle next_ = 1;
  WindowHandle focus_ = 0;
  WindowHandle active_ = 0;
  WindowHandle capture_ = 0;
  Point mouse_;
};

}  // namespace vl
