#include "ui/child_window.h"

#include "base/system_colors.h"
#include "gfx2d/colour.h"
#include "ui/keyboard_filter.h"
#include "ui/window_class.h"

namespace vl {

namespace {

constexpr uint32_t kCommonBits[] = {kAttrNoBorder, WS_TABSTOP, 0x20000, WS_VSCROLL, WS_HSCROLL, kAttrHidden, WS_BORDER};
constexpr AttributeFamily kCommonFamily = {0xDEB00000, kCommonBits};
constexpr uint32_t kTextColorIndex = 8;
constexpr uint32_t kBackColorIndex = 5;
constexpr int kDefaultFontSize = 16;

}  // namespace

CIChildWindow::CIChildWindow(CInterpretor& interpreter, uint32_t classId)
    : CIBaseClassImpl(interpreter, classId, Listing::Listed),
      CIRefresh(interpreter, false),
      CIFontContainer(interpreter),
      textColor(SystemColor(kTextColorIndex)),
      backColor(SystemColor(kBackColorIndex)),
      privateData(&interpreter) {
  privateData.SetInt(0);
  AddFamily(kCommonFamily);
  KeyboardFilter::Install(interpreter);
}

CIChildWindow::~CIChildWindow() = default;

void CIChildWindow::AddFamily(const AttributeFamily& family) {
  if (static_cast<size_t>(familyCount_) < families_.size()) families_[static_cast<size_t>(familyCount_++)] = family;
}

void CIChildWindow::Create() {
  CIBaseClassImpl::Create();
  if (parent) parent->AddChild(this);
  creationText.clear();
}

void CIChildWindow::Destroy(bool final) {
  const WindowHandle window = hwnd;
  hwnd = 0;
  if (window) {
    Tree().ForgetTarget(window);
    Tree().Destroy(window, final);
  }
  if (parent) parent->RemoveChild(this);
  parent = nullptr;
  privateData.SetInt(0);
  CIBaseClassImpl::Destroy(final);
}

bool CIChildWindow::DependsOn(CIBaseClassImpl* target) {
  return parent && static_cast<CIBaseClassImpl*>(parent) == target && MarkDependant();
}

void CIChildWindow::SetBackColorRaw(uint32_t colour) {
  backColor = colour;
  if (WindowNode* node = Tree().Find(hwnd)) node->backColour = colour;
}

bool CIChildWindow::CreateChild(uint32_t flags) {
  const WindowHandle parentHandle = parent ? parent->Handle() : 0;
  const bool inHostWindow = (flags & kCreateInHost) != 0;
  if (!(flags & kCreateInParent) || (!parentHandle && !inHostWindow)) style &= ~static_cast<uint32_t>(WS_CHILD);
  if (attrs & kAttrHidden) {
    style &= ~static_cast<uint32_t>(WS_VISIBLE);
  } else {
    style |= WS_VISIBLE;
  }
  if (attrs & kAttrNoBorder) style &= ~static_cast<uint32_t>(WS_BORDER);
  WindowCreation creation;
  creation.parent = (style & WS_CHILD) ? parentHandle : 0;
  creation.owner = parentHandle;
  creation.inHostWindow = inHostWindow;
  creation.style = style & ~static_cast<uint32_t>(WS_VISIBLE);
  creation.exStyle = exStyle;
  creation.x = x;
  creation.y = y;
  creation.width = OuterWidth();
  creation.height = OuterHeight();
  creation.text = creationText;
  creation.backColour = backColor;
  hwnd = Tree().Create(creation, (flags & kCreateLinked) ? this : nullptr);
  if (!hwnd) return false;
  Tree().Send(hwnd, WM_SETFONT);
  // It comes up at the next refresh, together with its siblings.
  if (style & WS_VISIBLE) SetPendingShow(SW_SHOW);
  return true;
}

int32_t CIChildWindow::WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) {
  if (interpreter.terminating || destroyed) return 0;
  return Tree().DefaultProcedure(window, message, wParam, lParam);
}

bool CIChildWindow::TakesTab() {
  return Handle() && (style & WS_TABSTOP) && Tree().IsVisible(hwnd) && Tree().IsEnabled(hwnd);
}

std::vector<CValue> CIChildWindow::EventArguments(std::initializer_list<int32_t> numbers) {
  std::vector<CValue> arguments;
  arguments.reserve(numbers.size() + 1);
  arguments.push_back(interpreter.MakeValue(static_cast<CIBaseClassImpl*>(this)));
  for (const int32_t number : numbers) arguments.push_back(interpreter.MakeValue(number));
  return arguments;
}

void CIChildWindow::Refresh() {
  dirty = false;
  if (!Handle()) return;
  const auto pending = pendingShow;
  const bool wasShowPending = showPending;
  const uint32_t flags = posFlags;
  const int32_t after = insertAfter;
  const bool restyled = styleDirty || exStyleDirty;
  pendingShow.fill(0);
  showPending = false;
  posFlags = kNothingToDo;
  insertAfter = 0;
  styleDirty = exStyleDirty = false;
  // What a restored window tells of its old place must not undo what was asked for.
  const Rect asked{x, y, x + OuterWidth(), y + OuterHeight()};
  if (wasShowPending) {
    for (uint32_t command = 0; command < kShowCommands; ++command) {
      if (pending[command]) Tree().Show(hwnd, command);
    }
    if (pending[SW_SHOWNORMAL]) {
      BringUp(HWND_TOPMOST);
      BringUp(HWND_NOTOPMOST);
    }
  }
  if (flags != kNothingToDo) {
    if (after == HWND_TOP) BringUp(HWND_TOPMOST);
    Tree().SetPosition(hwnd, after, asked.left, asked.top, asked.Width(), asked.Height(), flags);
    if (after == HWND_TOP) BringUp(HWND_NOTOPMOST);
  }
  if (restyled) Tree().SetStyle(hwnd, style, exStyle);
  if (flags == kNothingToDo || restyled) Tree().Invalidate(hwnd);
}

// Through all that is topmost.
void CIChildWindow::BringUp(int32_t order) { Tree().SetPosition(hwnd, order, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE); }

void CIChildWindow::SetSizeRaw(int32_t w, int32_t h, bool now) {
  width = w;
  height = h;
  WindowNode* node = Tree().Find(hwnd);
  if (now) {
    if (node) Tree().SetPosition(hwnd, 0, 0, 0, OuterWidth(), OuterHeight(), SWP_NOMOVE | SWP_NOZORDER);
  } else {
    if (node && node->maximized) SetPendingShow(SW_RESTORE);
    posFlags &= ~static_cast<uint32_t>(SWP_NOSIZE);
  }
  RequestRefresh();
}

void CIChildWindow::RequestOrder(int32_t order, bool now) {
  if (!Handle()) return;
  insertAfter = order;
  if (now) {
    if (order == HWND_TOP) BringUp(HWND_TOPMOST);
    BringUp(order);
    if (order == HWND_TOP) BringUp(HWND_NOTOPMOST);
  } else {
    posFlags &= ~static_cast<uint32_t>(SWP_NOZORDER);
  }
  RequestRefresh();
}

void CIChildWindow::GetX() { Result().SetInt(x); }
void CIChildWindow::GetY() { Result().SetInt(y); }
void CIChildWindow::GetWidth() { Result().SetInt(width); }
void CIChildWindow::GetHeight() { Result().SetInt(height); }

void CIChildWindow::Show() {
  const int32_t now = interpreter.IsArgDefault(0) ? 0 : interpreter.GetArgInt(0);
  if (now != 0 && now != 1) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  if (!Handle()) return;
  if (now) {
    Tree().Show(hwnd, SW_SHOW);
    RequestRefresh();
  } else {
    pendingShow[SW_HIDE] = 0;
    SetPendingShow(SW_SHOW);
  }
}

void CIChildWindow::Hide() {
  if (!Handle()) return;
  if (NowArgument(0)) {
    Tree().Show(hwnd, SW_HIDE);
    RequestRefresh();
  } else {
    pendingShow[SW_SHOW] = 0;
    SetPendingShow(SW_HIDE);
  }
}

void CIChildWindow::IsVisible() { Result().SetInt(Tree().IsVisible(hwnd)); }

void CIChildWindow::SetPosition() {
  const int32_t newX = interpreter.GetArgInt(0);
  const int32_t newY = interpreter.GetArgInt(1);
  if (newX != kDefaultInt) x = newX;
  if (newY != kDefaultInt) y = newY;
  if (NowArgument(2)) {
    Tree().SetPosition(hwnd, 0, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
  } else {
    posFlags &= ~static_cast<uint32_t>(SWP_NOMOVE);
  }
  RequestRefresh();
}

void CIChildWindow::SetSize() {
  const int32_t w = interpreter.GetArgInt(0);
  const int32_t h = interpreter.GetArgInt(1);
  SetSizeRaw(w == kDefaultInt ? width : w, h == kDefaultInt ? height : h, NowArgument(2));
}

void CIChildWindow::ToBack() { RequestOrder(HWND_BOTTOM, NowArgument(0)); }
void CIChildWindow::ToFront() { RequestOrder(HWND_TOP, NowArgument(0)); }
void CIChildWindow::SetTopMost() {
  if (!parent) RequestOrder(HWND_TOPMOST, NowArgument(0));
}
void CIChildWindow::Enable() { Tree().Enable(hwnd, true); }
void CIChildWindow::Disable() { Tree().Enable(hwnd, false); }
void CIChildWindow::IsEnabled() { Result().SetInt(Tree().IsEnabled(hwnd)); }

void CIChildWindow::SetText() {
  if (interpreter.GetArgCount() == 0) return;
  Tree().SetText(hwnd, interpreter.GetArgString(0));
}

void CIChildWindow::GetText() {
  const WindowNode* node = Tree().Find(hwnd);
  Result().SetString(node ? node->text : std::string());
}

void CIChildWindow::GetXMouse() { Result().SetInt(Tree().MousePosition().x - Tree().ClientOrigin(hwnd).x); }
void CIChildWindow::GetYMouse() { Result().SetInt(Tree().MousePosition().y - Tree().ClientOrigin(hwnd).y); }

// One argument is 0xRRGGBB; of three, a missing channel keeps its value. The colour is the library's.
uint32_t CIChildWindow::ColorArgument(uint32_t old) {
  if (interpreter.GetArgCount() <= 1) return SwapRedBlue(static_cast<uint32_t>(interpreter.GetArgInt(0)) & 0xFFFFFF);
  uint32_t colour = old;
  for (int i = 0; i < 3; ++i) {
    const int32_t channel = interpreter.GetArgInt(i);
    if (channel == kDefaultInt) continue;
    colour = (colour & ~(0xFFu << (8 * i))) | (static_cast<uint32_t>(channel) & 0xFF) << (8 * i);
  }
  return colour;
}

void CIChildWindow::SetColor() {
  SetTextColorRaw(ColorArgument(textColor));
  RequestRefresh();
}

void CIChildWindow::SetBackColor() {
  SetBackColorRaw(ColorArgument(backColor));
  RequestRefresh();
}

void CIChildWindow::GetColor() { Result().SetInt(static_cast<int32_t>(SwapRedBlue(textColor))); }
void CIChildWindow::GetBackColor() { Result().SetInt(static_cast<int32_t>(SwapRedBlue(backColor))); }

void CIChildWindow::SetFont() {
  CIFont* chosen = nullptr;
  FontDescription description;
  description.height = -kDefaultFontSize;
  for (int i = 0; i < interpreter.GetArgCount(); ++i) {
    CValue* value = interpreter.GetArg(i);
    if (value->IsObjectOfClass(CLASS_FONT)) {
      chosen = static_cast<CIFont*>(value->data.object);
    } else if (value->type == VT_STRING) {
      description.face = value->GetString();
    } else if (!value->IsDefault()) {
      description.height = -value->GetInt();
    }
  }
  if (!chosen) chosen = new CIFont(interpreter, description);
  ApplyFont(chosen);
  Tree().Send(hwnd, WM_SETFONT, 0, 1);
  RequestRefresh();
}

void CIChildWindow::GetFont() { Result().SetObject(font); }

void CIChildWindow::GetParentWindow() { Result().SetObject(parent); }

void CIChildWindow::HasAttribute() {
  uint32_t bit = 0;
  bool known = false;
  const uint32_t* word = AttributeWordOf(static_cast<uint32_t>(interpreter.GetArgInt(0)), bit, known);
  if (known && !word) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  Result().SetInt(word && (*word & bit) != 0);
}

void CIChildWindow::SetPrivateData() { privateData.Assign(*interpreter.GetArg(0)); }
void CIChildWindow::GetPrivateData() { Result().Assign(privateData); }

Point CIChildWindow::ClientArgument(int32_t& given) {
  if (interpreter.IsArgDefault(0)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  given = interpreter.GetArgInt(0);
  return Tree().ClientOrigin(hwnd);
}

void CIChildWindow::GetXScreen() {
  int32_t given = 0;
  const Point origin = ClientArgument(given);
  Result().SetInt(given + origin.x);
}
void CIChildWindow::GetYScreen() {
  int32_t given = 0;
  const Point origin = ClientArgument(given);
  Result().SetInt(given + origin.y);
}
void CIChildWindow::GetXWindow() {
  int32_t given = 0;
  const Point origin = ClientArgument(given);
  Result().SetInt(given - origin.x);
}
void CIChildWindow::GetYWindow() {
  int32_t given = 0;
  const Point origin = ClientArgument(given);
  Result().SetInt(given - origin.y);
}

void CIChildWindow::SetFocus() { Tree().SetFocus(hwnd); }
void CIChildWindow::HasFocus() { Result().SetInt(hwnd && Tree().Focus() == hwnd); }

}  // namespace vl
