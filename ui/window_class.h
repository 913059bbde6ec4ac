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

  void AddChild(CIChildWindow* child) { children.push_back(child); }
  void RemoveChild(CIChildWindow* child);

  // Members.
  void ForwardToSurface();
  void GetSurface();
  void SetCursor();
  void Input();
  void SetEvent();
  void DoModal();
  void EndModal();
  void SetAutoClose();
  void Center();
  void Maximize() { SetPendingShow(SW_SHOWMAXIMIZED); }
  void IsMaximized();
  void Minimize() { SetPendingShow(SW_MINIMIZE); }
  void IsMinimized();
  void Restore() { SetPendingShow(SW_RESTORE); }
  void SetMinSize();
  void SetMaxSize();
  void NotOffered() { interpreter.RaiseError(ERR_NOT_OFFERED); }
  void BeginMouseCapture() { Tree().SetCapture(hwnd); }
  void EndMouseCapture() { Tree().SetCapture(0); }
  void HasMouseCapture();
  void Flash() {}
  void GetLeftBorderSize() { Result().SetInt(borderLeft); }
  void GetRightBorderSize() { Result().SetInt(borderRight); }
  void GetTopBorderSize() { Result().SetInt(borderTop); }
  void GetBottomBorderSize() { Result().SetInt(borderBottom); }

  std::vector<CIChildWindow*> children;  // in order of creation
  CISurface* surface = nullptr;          // counted; null with NOSURFACE
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

  void CreateWindow(int32_t depth, int64_t background, bool inHostWindow);
  void ApplyAttributes(int64_t& background);
  void PostWith(Event event, std::initializer_list<int32_t> numbers, bool unique);
  void OnSizeMessage(uint32_t kind, int32_t newWidth, int32_t newHeight);
  void OnMouseButton(uint32_t message, int32_t lParam);
  void OnCharacter(uint32_t character);
  void OnSystemClose();
  void OnDestroyMessage();
  void PaintUpdate(WindowHandle window);
  void RedrawInput(bool withLine);
  void ClampToLimits();
  void LeaveModal();

  std::array<const BlockRecord*, kEventCount> events_{};
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
