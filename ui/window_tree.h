// WindowTree: the runtime's own windows: handles, parents, Z order, focus, capture, timers, messages, pictures.
//
// A top-level window stands on one of the platform's; child windows live in the picture of their top-level one.
// Platform events become messages here, and messages reach a window's target; what a target leaves goes to
// DefaultProcedure. Each window keeps the picture that it painted last, so that showing, moving and covering
// windows only composes pictures anew. Positions are those of the outer frame, sizes of the client area. Handles
// are never used twice in a run. A message may destroy any window: look nodes up again after Send.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "gfx2d/script/surface_host.h"
#include "interpreter/message_source.h"
#include "platform/services.h"
#include "ui/messages.h"
#include "ui/scroll_bar.h"

namespace vl {

struct CThreadParam;
class Canvas;
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
  bool drawsFrame = false;          // the frame is part of the picture; else it is the desktop's
  uint32_t style = 0;
  uint32_t exStyle = 0;
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  Rect borders;  // widths of the frame, without bars
  bool visible = false;
  bool enabled = true;
  bool minimized = false;
  bool maximized = false;
  bool topMost = false;
  bool active = false;  // its caption is shown so
  bool closeEnabled = true;
  bool acceptsDrops = false;
  Rect normal;  // the outer box to go back to while it is minimised or maximised
  std::string text;
  uint32_t backColour = 0xFFFFFF;      // of the background, library order
  std::vector<WindowHandle> children;  // topmost first
  Rect update;                         // what WM_PAINT must repaint, client coordinates; empty for nothing
  bool erase = false;                  // with its background first
  std::array<ScrollInfo, kBarKinds> bars;
  bool barEnabled = true;             // of the control
  std::optional<WindowPicture> icon;  // small
  // What the window is cut to, relative to the frame's corner. The mask has a byte a pixel of the region's size.
  bool isShaped = false;
  std::vector<Rect> shape;
  std::vector<uint8_t> shapeMask;
  Size shapeSize;
  // The picture: client area, bars, and the frame where it is drawn here.
  std::vector<uint32_t> picture;
  Size pictureSize;
  bool frameDirty = true;
  // Top-level windows that have children: what is on the screen.
  std::vector<uint32_t> screen;
  Size screenSize;

  bool HasBar(BarKind kind) const { return !minimized && (style & (kind == SB_HORZ ? WS_HSCROLL : WS_VSCROLL)) != 0; }
  int BarWidth(BarKind kind) const { return HasBar(kind) ? kBarPixels : 0; }
  Size Outer() const {
    return {width + borders.left + borders.right + BarWidth(SB_VERT),
            height + borders.top + borders.bottom + BarWidth(SB_HORZ)};
  }
  // Of the client area in the picture.
  Point ClientInPicture() const { return drawsFrame ? Point{borders.left, borders.top} : Point{}; }
  Size PictureSize() const {
    return drawsFrame ? Outer() : Size{width + BarWidth(SB_VERT), height + BarWidth(SB_HORZ)};
  }
  // Whether the shape leaves that pixel of the picture.
  bool Shows(int pictureX, int pictureY) const;
  static constexpr int kBarPixels = 16;
};

struct WindowCreation {
  WindowHandle parent = 0;
  WindowHandle owner = 0;  // of a top-level window: it stays in front of that one
  bool inHostWindow = false;
  uint32_t style = 0;
  uint32_t exStyle = 0;
  int x = 0;
  int y = 0;
  int width = 0;  // of the frame
  int height = 0;
  std::string text;
  uint32_t backColour = 0xFFFFFF;
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

  // --- Windows ---
  // Created hidden; 0 when the platform gives no window.
  WindowHandle Create(const WindowCreation& creation, CWindowTarget* target);
  // Children first, each with WM_DESTROY. Quietly, as at the end of a run, what is on the screen stays as it is.
  void Destroy(WindowHandle window, bool quietly = false);
  // No more messages for the object; the window itself stays until it is destroyed.
  void ForgetTarget(WindowHandle window);
  WindowNode* Find(WindowHandle window);
  int32_t Send(WindowHandle window, uint32_t message, uint32_t wParam = 0, int32_t lParam = 0);
  void Post(WindowHandle window, uint32_t message, uint32_t wParam = 0, int32_t lParam = 0);
  // What every window does with a message that its target leaves.
  int32_t DefaultProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam);

  // A ShowCommand.
  void Show(WindowHandle window, uint32_t command);
  // Flags as PositionFlag; insertAfter counts without SWP_NOZORDER. Sizes are those of the frame.
  void SetPosition(WindowHandle window, int insertAfter, int x, int y, int width, int height, uint32_t flags);
  void SetStyle(WindowHandle window, uint32_t style, uint32_t exStyle);
  void SetText(WindowHandle window, const std::string& text);
  void Enable(WindowHandle window, bool enabled);
  bool IsVisible(WindowHandle window);  // it and all its parents
  bool IsEnabled(WindowHandle window);
  ScreenInfo Screen() const { return services_.windows->screen(); }
  // Of the client area, for a person who drags the frame: outer sizes; 0 for none.
  void SetSizeLimits(WindowHandle window, Size least, Size most);
  void EnableClose(WindowHandle window, bool enabled);
  void AcceptDrops(WindowHandle window, bool accepted);
  void Flash(WindowHandle window, bool flashing);
  void SetIcon(WindowHandle window, const WindowPicture& picture);
  // Cuts the window to boxes, relative to the frame's corner.
  void SetShape(WindowHandle window, std::vector<Rect> boxes);

  // --- Focus, activation, capture, timers ---
  void SetFocus(WindowHandle window);
  WindowHandle Focus() const { return focus_; }
  WindowHandle Active() const { return active_; }
  // Of the top-level window that holds it.
  void Activate(WindowHandle window);
  void SetCapture(WindowHandle window);
  WindowHandle Capture() const { return capture_; }
  // WM_TIMER with the number as wParam, again and again, when nothing else is waiting.
  void SetTimer(WindowHandle window, uint32_t id, uint32_t intervalMs);
  void KillTimer(WindowHandle window, uint32_t id);
  // Client origin on the screen.
  Point ClientOrigin(WindowHandle window);
  Point MousePosition() const { return mouse_; }  // on the screen
  bool HasMouse() const { return hasMouse_; }     // it was in a window of the run
  // The deepest visible window at a point of the screen, within `window`; 0 when the point isn't in it.
  WindowHandle WindowAt(WindowHandle window, Point screen);
  int32_t KeyMods() const { return keyMods_; }  // EventMods of the key message taken last
  WindowHandle TopLevel(WindowHandle window);
  bool IsInside(WindowHandle window, WindowHandle of);  // is it, or one of its children
  // The pointer over the window's top-level window, until the mouse moves.
  void UseCursor(WindowHandle window, CursorShape shape);
  void UseCursor(WindowHandle window, const WindowPicture& picture, uint32_t serial);
  uint32_t NextPictureSerial() { return ++pictureSerials_; }
  // While WM_SIZING is handled: the frame's box, which the handler may change.
  Rect sizingBox;

  // The windows of modal dialogs, the top first.
  std::vector<WindowHandle> modalStack;
  // For the main window of the run, which the host closes.
  WindowHandle mainWindow = 0;
  // Moves the focus on Tab; see keyboard_filter.h.
  std::unique_ptr<CIBaseMessages> keyboardFilter;

  // --- Painting ---
  // All of the client area, with its background, at the next WM_PAINT.
  void Invalidate(WindowHandle window);
  // Starts the answer to WM_PAINT: erases if that was asked for and gives the box to paint, which counts as painted.
  Rect BeginPaint(WindowHandle window, bool mayErase = true);
  // Brings boxes of a surface (client coordinates of the window) to the screen.
  void Paint(WindowHandle window, const cSurface& surface, std::span<const Rect> dirty);
  // Draws into the client area with `draw(canvas)`, whose origin is the picture's; see WindowNode::ClientInPicture.
  void PaintWith(WindowHandle window, const Rect& box, const std::function<void(Canvas&)>& draw);
  void FillBackground(WindowHandle window, const Rect& box, uint32_t colour);
  void RedrawFrame(WindowHandle window);
  Rect BarBox(const WindowNode& node, BarKind kind) const;  // in the picture
  // Changes range, page and position, and shows it.
  void SetScrollInfo(WindowHandle window, BarKind kind, const ScrollInfo& info);
  // CScreen.
  bool CaptureScreen(CapturedPicture& picture) override;
  // A window's client area as it was last shown; false for a hidden one.
  bool CaptureClient(WindowHandle window, CapturedPicture& picture);

  // --- For a control that is a scroll bar ---
  // Starts to follow the mouse from a point of the window's client area.
  void TrackBar(WindowHandle window, BarKind kind, Point client);
  BarPart PressedPart(WindowHandle window, BarKind kind) const {
    return track_.window == window && track_.kind == TrackKind::Bar && track_.bar == kind && track_.inside
               ? track_.part
               : BarPart::None;
  }

 private:
  struct Queued {
    CMessage message;
    Event event;  // instead of a message: becomes one when it is taken, so that it finds the windows of that time
    bool isEvent = false;
  };
  struct Timer {
    WindowHandle window;
    uint32_t id;
    uint32_t intervalMs;
    uint32_t dueMs;
  };
  // What the mouse holds: a frame's side, a caption, a box in it, a scroll bar.
  enum class TrackKind { None, Move, Size, Box, Bar };
  struct Track {
    TrackKind kind = TrackKind::None;
    WindowHandle window = 0;
    uint32_t hit = 0;
    Point start;  // on the screen
    Rect outer;   // at the start
    bool inside = true;
    BarKind bar = SB_HORZ;
    BarPart part = BarPart::None;
    int grip = 0;  // from the thumb's start to the mouse
    int32_t position = 0;
    uint32_t repeatMs = 0;  // when a held arrow acts again
  };

  // window_input.cpp
  void TakeEvents(int timeoutMs);
  bool Translate(const Event& event, CMessage& message);
  void TranslateResize(WindowNode& node, int width, int height);
  bool ResolveMouse(const Event& event, WindowHandle top, CMessage& message);
  void Deactivate();
  uint32_t HitCodeAt(WindowNode& node, Point screen);
  WindowHandle OfNative(NativeWindow native);
  void Enqueue(Queued queued);
  bool DueTimer(CMessage& message);
  uint32_t NextTimerMs() const;  // from now; UINT32_MAX for none

  // window_tracking.cpp
  void BeginTrack(WindowHandle window, TrackKind kind, uint32_t hit);
  // True when the mouse belongs to what is held.
  bool FollowTrack(const Event& event);
  void EndTrack();
  void DragFrame();
  void DragBar(Point mouse);
  void RepeatBar();
  void SendScroll(uint32_t code, int32_t position);
  int32_t PressFrame(WindowHandle window, uint32_t hit, bool twice);

  // window_tree.cpp
  void RaiseInParent(WindowNode& node, int insertAfter);
  // Changes place and size at once: WM_MOVE, WM_SIZE. `kind` is WM_SIZE's wParam; a kind above 0 is always told.
  void Place(WindowHandle window, const Rect& outer, uint32_t kind, bool tellPlatform);
  void ShowNative(WindowNode& node);
  void ChangeState(WindowHandle window, bool minimized, bool maximized);
  Rect OuterBox(const WindowNode& node) const;
  void ActivateAnother(WindowHandle gone);
  void ActivateTop(WindowHandle top, bool byDesktop);
  int DepthOf(WindowHandle window);
  Point PictureOrigin(const WindowNode& top) const;
  void SetActiveLook(WindowHandle window, bool active);
  int32_t DefaultSystemCommand(WindowHandle window, uint32_t command, int32_t lParam);

  // window_painting.cpp
  bool EnsurePicture(WindowNode& node);
  void DropPictures(WindowNode& node);
  void DrawFrame(WindowNode& node);
  // Brings boxes of a window's picture to the screen.
  void Damage(WindowHandle window, const Rect& box) { Damage(window, std::span<const Rect>(&box, 1)); }
  void Damage(WindowHandle window, std::span<const Rect> boxes);
  void DamageOuter(WindowNode& node);
  // The place of a child, which may be gone from there.
  void DamageParent(WindowHandle parent, const Rect& outer);
  void Compose(WindowNode& node, Point at, const Rect& clip, std::vector<uint32_t>& out, Size size);
  const std::vector<uint32_t>& ScreenPicture(WindowNode& top, const Rect& box);
  bool NeedsComposing(WindowNode& top);
  // Where a window's picture lies in that of its top-level window, and what of it can be seen there.
  bool VisibleBox(WindowHandle window, WindowHandle& top, Point& offset, Rect& box);

  Services services_;
  CThreadParam& param_;
  std::map<WindowHandle, std::unique_ptr<WindowNode>> nodes_;
  std::vector<WindowHandle> topLevels_;  // topmost first
  std::deque<Queued> queue_;
  std::vector<Timer> timers_;
  WindowHandle next_ = 1;
  WindowHandle focus_ = 0;
  WindowHandle active_ = 0;
  WindowHandle capture_ = 0;
  Point mouse_;
  bool hasMouse_ = false;
  int32_t keyMods_ = 0;
  int64_t pixels_ = 0;     // of all pictures
  bool mayPaint_ = false;  // some window may have something to repaint
  Track track_;
  NativeWindow cursorWindow_ = 0;
  CursorShape cursorShape_ = CursorShape::Arrow;
  uint32_t cursorSerial_ = 0;  // of its picture; 0 for a shape
  uint32_t pictureSerials_ = 0;
};

}  // namespace vl
