// CIChildWindow: the base of everything that has a window: the top-level Window and every control.
//
// It holds what the window needs before it exists, so that a script may give position, size, text and attributes
// in any order, and it carries out changes at the next refresh unless the script asks for them now.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "gfx2d/script/font_class.h"
#include "interpreter/interpretor.h"
#include "ui/window_tree.h"

namespace vl {

class CIWindow;

// An attribute family: constants 0xFFFTnnnn, where T names the word and nnnn indexes `bits`.
struct AttributeFamily {
  uint32_t id = 0;  // high 12 bits
  std::span<const uint32_t> bits;
};

enum AttributeWord : uint32_t { kWordStyle = 0, kWordExStyle = 1, kWordAttrs = 2, kWordAttrs2 = 3 };

// Bits of `attrs` of the common family.
enum CommonAttribute : uint32_t { kAttrHidden = 1, kAttrNoBorder = 2 };

// How CreateChild makes the window.
enum CreateFlag : uint32_t { kCreateInParent = 1, kCreateLinked = 2, kCreateInHost = 0x100 };

// What may come in a constructor's arguments; used up as values arrive.
enum ArgumentMask : uint32_t {
  kArgX = 0x1,
  kArgY = 0x2,
  kArgWidth = 0x4,
  kArgHeight = 0x8,
  kArgText = 0x20,
  kArgParent = 0x80,
  kArgStyles = 0x100,
  kArgAttrs = 0x400,
  kArgAttrs2 = 0x800,
  kControlArguments = 0x400005AF,  // what the controls take
  kArgCurrentWindow = 0x40000000,
  kArgSizeFirst = 0x80000000,
};

class CIChildWindow : public CIBaseClassImpl, public CIRefresh, public CIFontContainer, public CWindowTarget {
 public:
  CIChildWindow(CInterpretor& interpreter, uint32_t classId);
  ~CIChildWindow() override;

  void Create() override;
  void Destroy(bool final) override;
  bool DependsOn(CIBaseClassImpl* target) override;
  void Refresh() override;

  // CWindowTarget: what a window does that has nothing of its own to do.
  int32_t WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) override;
  // Can be reached with Tab.
  bool TakesTab();

  virtual void SetTextColorRaw(uint32_t colour) { textColor = colour; }
  virtual void SetBackColorRaw(uint32_t colour);
  virtual void ApplyFont(CIFont* newFont) { SetFontObject(newFont); }
  virtual void SetSizeRaw(int32_t w, int32_t h, bool now);
  virtual bool WantsTab() const { return false; }

  // Members common to all windows and controls.
  void GetX();
  void GetY();
  void GetWidth();
  void GetHeight();
  void Show();
  void Hide();
  void IsVisible();
  void SetPosition();
  void SetSize();
  void ToBack();
  void SetTopMost();
  void Enable();
  void Disable();
  void IsEnabled();
  void SetText();
  void GetText();
  void ToFront();
  void GetXMouse();
  void GetYMouse();
  void SetColor();
  void SetBackColor();
  void GetColor();
  void GetBackColor();
  void SetFont();
  void GetFont();
  void GetParentWindow();
  void HasAttribute();
  void SetPrivateData();
  void GetPrivateData();
  void GetXScreen();
  void GetYScreen();
  void GetXWindow();
  void GetYWindow();
  void SetFocus();
  void HasFocus();
  void KeyEventsNotOffered() { interpreter.RaiseError(ERR_NOT_OFFERED); }

  WindowTree& Tree() { return WindowTree::Of(interpreter); }
  // A handle that still exists, or 0.
  WindowHandle Handle() { return Tree().Find(hwnd) ? hwnd : 0; }

  CIWindow* parent = nullptr;
  WindowHandle hwnd = 0;
  uint32_t style = WS_VISIBLE;
  uint32_t exStyle = 0;
  uint32_t attrs = 0;
  uint32_t attrs2 = 0;
  int32_t x = kDefaultInt;
  int32_t y = kDefaultInt;
  int32_t width = 640;
  int32_t height = 480;
  std::string creationText;
  int32_t insertAfter = 0;
  uint32_t posFlags = kNothingToDo;
  std::array<int32_t, kShowCommands> pendingShow{};
  bool showPending = false;
  bool styleDirty = false;
  bool exStyleDirty = false;
  uint32_t textColor;
  uint32_t backColor;
  int32_t borderLeft = 0;
  int32_t borderTop = 0;
  int32_t borderRight = 0;
  int32_t borderBottom = 0;
  CValue privateData;

 protected:
  void AddFamily(const AttributeFamily& family);
  // Sorts the constructor's arguments by what they are; what is left over goes to `rest` (at most 7), or is an
  // error without one.
  void ParseWindowArguments(uint32_t mask, std::vector<CValue*>* rest);
  // Flags as CreateFlag. False when the window can't be made.
  bool CreateChild(uint32_t flags);
  uint32_t* AttributeWordOf(uint32_t constant, uint32_t& bit, bool& known);
  void SetPendingShow(uint32_t command) {
    pendingShow[command] = 1;
    showPending = true;
    RequestRefresh();
  }
  // Argument `now` of a member: missing is 0.
  bool NowArgument(int index) {
    const int32_t now = interpreter.GetArgInt(index);
    return now != kDefaultInt && now != 0;
  }
  int32_t OuterWidth() const { return width + borderLeft + borderRight; }
  int32_t OuterHeight() const { return height + borderTop + borderBottom; }
  // An event of this object: its arguments are the object itself and the numbers.
  std::vector<CValue> EventArguments(std::initializer_list<int32_t> numbers);
  CValue& Result() { return interpreter.GetResult(); }

 private:
  void RequestOrder(int32_t order, bool now);
  void BringUp(int32_t order);
  uint32_t ColorArgument(uint32_t old);
  Point ClientArgument(int32_t& given);

  std::array<AttributeFamily, 2> families_;
  int32_t familyCount_ = 0;
};

}  // namespace vl
