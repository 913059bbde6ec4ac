// CIWindow: the runtime class Window: a window with a surface behind its client area, drawn on like a surface.
//
// When the control is hosted the first one stands in the host's window and fills it. Its window procedure is the
// one place where the messages of the whole user interface arrive.
#pragma once

#include <string>
#include <vector>

#include "gfx2d/script/surface_class.h"
#include "ui/child_window.h"

namespace vl {

class CIScrollBar;

// Bits of `attrs` of the Window's own family.
enum WindowAttribute : uint32_t {
  kAttrGame = 0x4,
  kAttrDialog = 0x8,
  kAttrResizable = 0x10,
  kAttrTool = 0x20,
  kAttrMessageBox = 0x40,
  kAttrStandard = 0x80,
  kAttrMaximized = 0x100,
  kAttrNoSurface = 0x200,
  kAttrFakeChild = 0x400,
  kAttrNoSysMenu = 0x800,
  kAttrNoCaption = 0x1000,
  kAttrMinimizeBox = 0x2000,
  kAttrMaximizeBox = 0x4000,
  kAttrMinimized = 0x8000,
};

enum class MouseButtonConstant : uint32_t { Left = 0x89AF0001, Middle = 0x89AF0002, Right = 0x89AF0003 };

// Sees the messages of a window before the window does. Sets `handled` to end the message; gives its result.
using MessageHook = int32_t (*)(CIWindow& window, bool& handled, uint32_t message, uint32_t wParam, int32_t lParam);

class CIWindow : public CIChildWindow, public CSurfaceHost, public CSurfaceOwner {
 public:
  explicit CIWindow(CInterpretor& interpreter);
  // Stands in the host's window; called once at the start of a hosted run.
  static void AttachToHost(CInterpretor& interpreter);

  void Construct() override;
  void Destroy(bool final) override;
  bool DependsOn(CIBaseClassImpl* target) override;

  // CSurfaceHost and CSurfaceOwner.
  void PresentSurface(cSurface& shown, std::span<const Rect> dirtyBoxes) override;
  void SetTextColorOfWindow(uint32_t colour) override { SetTextColorRaw(colour); }
  void SetBackColorOfWindow(uint32_t colour) override { SetBackColorRaw(colour); }
  void SurfaceIsGone() override { surface = nullptr; }
  CISurface* OwnedSurface() override { return surface; }
  bool CaptureClient(CapturedPicture& picture) override { return Tree().CaptureClient(hwnd, picture); }

  void SetTextColorRaw(uint32_t colour) override;
  void SetBackColorRaw(uint32_t colour) override;

  // CWindowTarget.
  int32_t WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) override;
  // A hook may be in the list more than once, and is then called so.
  void AddMessageHook(MessageHook hook) { hooks_.push_back(hook); }
  // The first of that address.
  void RemoveMessageHook(MessageHook hook);

  void AddChild(CIChildWindow* child) { children.push_back(child); }
  void RemoveChild(CIChildWindow* child);
  // Null when no control takes the Tab; Next and Previous start behind `from` and go round.
  CIChildWindow* FirstTabChild();
  CIChildWindow* LastTabChild();
  CIChildWindow* NextTabChild(CIChildWindow* from);
  CIChildWindow* PreviousTabChild(CIChildWindow* from);

  // Members.
  void ForwardToSurface();
  void GetSurface();
  void SetCursor();
  void Input();
  void SetEvent();
  void DoModal();
  void EndModal();
  void SetIcon();
  void EnableCloseBox();
  void SetAutoClose();
  void Center();
  void Maximize() { SetPendingShow(SW_SHOWMAXIMIZED); }
  void IsMaximized();
  void Minimize() { SetPendingShow(SW_MINIMIZE); }
  void IsMinimized();
  void Restore() { SetPendingShow(SW_RESTORE); }
  void SetMinSize();
  void SetMaxSize();
  void EnableDropFile();
  void NotOffered() { interpreter.RaiseError(ERR_NOT_OFFERED); }
  void GetHorizontalScrollBar();
  void GetVerticalScrollBar();
  void BeginMouseCapture() { Tree().SetCapture(hwnd); }
  void EndMouseCapture() { Tree().SetCapture(0); }
  void HasMouseCapture();
  void Flash();
  void GetLeftBorderSize() { Result().SetInt(borderLeft); }
  void GetRightBorderSize() { Result().SetInt(borderRight); }
  void GetTopBorderSize() { Result().SetInt(borderTop); }
  void GetBottomBorderSize() { Result().SetInt(borderBottom); }
  void SetShape();

  std::vector<CIChildWindow*> children;  // in order of creation
  CISurface* surface = nullptr;          // counted; null with NOSURFACE
  CIScrollBar* horizontalBar = nullptr;  // with HSCROLL; goes with the window
  CIScrollBar* verticalBar = nullptr;    // with VSCROLL
  bool autoClose = true;
  bool modal = false;
  bool ownsWindow = false;
  uint32_t minWidth = 0;
  uint32_t minHeight = 0;
  uint32_t maxWidth = 0xFFFFFFFF;
  uint32_t maxHeight = 0xFFFFFFFF;
  CIWindow* activeChild = nullptr;

 private:
  enum Event : size_t {
    kOnDblClick,
    kOnSetFocus,
    kOnKillFocus,
    kOnClose,
    kOnSize,
    kOnMove,
    kOnDisplayChange,
    kOnMinimize,
    kOnMaximize,
    kOnDropFile,
    kOnMouseDown,
    kOnMouseUp,
    kOnMouseMove,
    kOnMouseWheel,
    kEventCount,
  };
  static size_t EventOfMember(uint16_t memberId);

  // window_class.cpp
  void CreateWindow(int32_t depth, int64_t background, bool inHostWindow);
  void ApplyAttributes(int64_t& background);
  void LeaveModal();
  void DropBars(bool final);

  // window_messages.cpp
  bool IsQuietedByModal(WindowHandle window, uint32_t message, int32_t& answer);
  int32_t HandleMessage(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam, bool& ended);
  // Coalesced events are posted as unique.
  void PostWith(Event event, std::initializer_list<int32_t> numbers, bool unique);
  void OnSizeMessage(uint32_t kind, int32_t newWidth, int32_t newHeight);
  void OnSizing(uint32_t edge);
  void OnMouseButton(uint32_t message, int32_t lParam);
  void OnDrop(uint32_t id, int32_t lParam);
  void OnSystemClose();
  void OnDestroyMessage();
  void OnPaint();
  void BecomeActiveSibling();
  void LetAnotherSiblingBeActive();
  void ShowCursor();

  // window_input_line.cpp
  void OnCharacter(uint32_t character);
  void RedrawInput(bool withLine);

  // window_members.cpp and window_pictures.cpp
  void ClampToLimits();
  // The picture that an argument names: a Surface, an element of the image bank, a file. Null when there is none.
  const cSurface* PictureArgument(int index, CISurface::Picture& picture);

  std::array<const BlockRecord*, kEventCount> events_{};
  std::vector<MessageHook> hooks_;
  bool hasCursor_ = false;
  CursorShape cursorShape_ = CursorShape::Arrow;
  WindowPicture cursorPicture_;  // instead of the shape, unless it has no size
  uint32_t cursorSerial_ = 0;
  std::string inputText_;
  std::string inputPrompt_;
  bool inputActive_ = false;
  int32_t inputX_ = 0;
  int32_t inputY_ = 0;
  int32_t inputWidth_ = 0;
  int32_t inputHeight_ = 0;
};

extern const ClassTable kWindowClass;

}  // namespace vl
