#include "ui/scroll_bar_class.h"

#include "platform/keys.h"
#include "ui/canvas.h"
#include "ui/common_rows.h"
#include "ui/window_class.h"

namespace vl {

namespace {

constexpr uint32_t kVertical = 1;  // style
constexpr uint32_t kBits[] = {0, kVertical};
constexpr AttributeFamily kFamily = {0xAAD00000, kBits};

}  // namespace

CIScrollBar::CIScrollBar(CInterpretor& interpreter) : CIChildWindow(interpreter, CLASS_SCROLLBAR) {
  AddFamily(kFamily);
  x = y = 10;
  width = 100;
  height = 30;
  style = WS_CHILD | WS_CLIPSIBLINGS;
}

CIScrollBar* CIScrollBar::ForWindow(CIWindow& window, BarKind kind) {
  auto* bar = new CIScrollBar(window.interpreter);
  bar->x = bar->y = bar->width = bar->height = 0;
  bar->parent = &window;
  bar->bound_ = window.hwnd;
  bar->kind_ = kind;
  window.AddMessageHook(&Hook);
  bar->CIBaseClassImpl::Create();
  return bar;
}

void CIScrollBar::Construct() {
  ParseWindowArguments(kControlArguments, nullptr);
  if (!CreateChild(kCreateInParent | kCreateLinked)) interpreter.RaiseError(ERR_SECOND_WINDOW);
  bound_ = hwnd;
  parent->AddMessageHook(&Hook);
  Create();
}

void CIScrollBar::Destroy(bool final) {
  if (parent && bound_) parent->RemoveMessageHook(&Hook);
  // A program may delete the bar of a window, and at the end of a run it goes before the window.
  if (parent && parent->horizontalBar == this) parent->horizontalBar = nullptr;
  if (parent && parent->verticalBar == this) parent->verticalBar = nullptr;
  bound_ = 0;
  CIChildWindow::Destroy(final);
}

ScrollInfo* CIScrollBar::Info() {
  WindowNode* node = Tree().Find(bound_);
  return node ? &node->bars[kind_] : nullptr;
}

int32_t CIScrollBar::Hook(CIWindow& window, bool& handled, uint32_t message, uint32_t wParam, int32_t lParam) {
  if (message != WM_HSCROLL && message != WM_VSCROLL) return 0;
  CIScrollBar* bar = message == WM_HSCROLL ? window.horizontalBar : window.verticalBar;
  if (lParam) {
    const WindowNode* node = window.Tree().Find(static_cast<WindowHandle>(lParam));
    auto* control = node ? dynamic_cast<CIChildWindow*>(node->target) : nullptr;
    bar = control && control->classId == CLASS_SCROLLBAR ? static_cast<CIScrollBar*>(control) : nullptr;
  }
  if (!bar) return 0;
  handled = true;
  bar->Scrolled(wParam & 0xFFFF, wParam >> 16);
  return 0;
}

void CIScrollBar::Scrolled(uint32_t code, uint32_t highWord) {
  const ScrollInfo* before = Info();
  if (!before) return;
  ScrollInfo info = *before;
  const int64_t at = info.position;
  switch (code) {
    case SB_THUMBPOSITION:
    case SB_THUMBTRACK:
      // The message has 16 bits of the position; the range gives the others.
      info.SetPosition(int64_t{info.minimum} + static_cast<uint16_t>(highWord - static_cast<uint32_t>(info.minimum)));
      break;
    case SB_LINEUP:
      info.SetPosition(at - 1);
      break;
    case SB_LINEDOWN:
      info.SetPosition(at + 1);
      break;
    case SB_PAGEUP:
      info.SetPosition(at - info.page);
      break;
    case SB_PAGEDOWN:
      info.SetPosition(at + info.page);
      break;
    case SB_TOP:
      info.SetPosition(info.minimum);
      break;
    case SB_BOTTOM:
      info.SetPosition(info.maximum);
      break;
    default:
      break;
  }
  const int32_t position = info.position;
  ShowInfo(info);
  if (onScroll_) interpreter.PostEvent(onScroll_, EventArguments({position, static_cast<int32_t>(code)}));
}

void CIScrollBar::Paint() {
  const Rect box = Tree().BeginPaint(hwnd, false);
  WindowNode* node = Tree().Find(hwnd);
  if (!node) return;
  const ScrollBarLayout layout{Tree().BarBox(*node, SB_CTL), (style & kVertical) != 0};
  const ScrollInfo info = node->bars[SB_CTL];
  const BarPart pressed = Tree().PressedPart(hwnd, SB_CTL);
  Tree().PaintWith(hwnd, box, [&](Canvas& canvas) { layout.Draw(canvas, info, node->enabled, pressed, backColor); });
}

bool CIScrollBar::OnKey(uint32_t key) {
  uint32_t code = 0;
  switch (key) {
    case kKeyLeft:
    case kKeyUp:
      code = SB_LINEUP;
      break;
    case kKeyRight:
    case kKeyDown:
      code = SB_LINEDOWN;
      break;
    case kKeyPrior:
      code = SB_PAGEUP;
      break;
    case kKeyNext:
      code = SB_PAGEDOWN;
      break;
    case kKeyHome:
      code = SB_TOP;
      break;
    case kKeyEnd:
      code = SB_BOTTOM;
      break;
    default:
      return false;
  }
  const uint32_t message = (style & kVertical) ? WM_VSCROLL : WM_HSCROLL;
  const WindowHandle holder = parent->hwnd;
  const auto control = static_cast<int32_t>(hwnd);
  Tree().Send(holder, message, code, control);
  Tree().Send(holder, message, SB_ENDSCROLL, control);
  return true;
}

int32_t CIScrollBar::WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) {
  if (interpreter.terminating || destroyed) return 0;
  switch (message) {
    case WM_PAINT:
      Paint();
      return 0;
    case WM_ENABLE:
    case WM_SIZE:
      Tree().Invalidate(window);
      return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
      if (style & WS_TABSTOP) Tree().SetFocus(window);
      Tree().TrackBar(window, SB_CTL, {LowSigned(lParam), HighSigned(lParam)});
      return 0;
    case WM_KEYDOWN:
      if (OnKey(wParam)) return 0;
      break;
    default:
      break;
  }
  return CIChildWindow::WindowProcedure(window, message, wParam, lParam);
}

// --- Members ---

void CIScrollBar::GetPos() {
  const ScrollInfo* info = Info();
  Result().SetInt(info ? info->position : 0);
}

void CIScrollBar::SetRange() {
  const ScrollInfo* before = Info();
  if (!before) return;
  int32_t from = 0;
  int32_t to = 0;
  interpreter.GetArgInt2(0, from, to);
  ScrollInfo info = *before;
  info.SetRange(from == kDefaultInt ? info.minimum : from, to == kDefaultInt ? info.maximum : to, info.page);
  ShowInfo(info);
}

void CIScrollBar::SetPos() {
  const ScrollInfo* before = Info();
  const int32_t position = interpreter.GetArgInt(0);
  if (!before || position == kDefaultInt) return;
  ScrollInfo info = *before;
  info.SetPosition(position);
  ShowInfo(info);
}

void CIScrollBar::SetPageSize() {
  const ScrollInfo* before = Info();
  const int32_t page = interpreter.GetArgInt(0);
  if (!before || page == kDefaultInt) return;
  ScrollInfo info = *before;
  info.SetRange(info.minimum, info.maximum, page);
  ShowInfo(info);
}

// --- The table ---

namespace {

constexpr auto kMembers = std::to_array<MemberRow>({
    Row(38, "GetPos", kMember<&CIScrollBar::GetPos>, "GetPos(): the position"),
    Row(39, "SetRange", kMember<&CIScrollBar::SetRange>, "SetRange(minimum, maximum): a missing one stays"),
    Row(40, "SetPos", kMember<&CIScrollBar::SetPos>, "SetPos(position): kept within the range"),
    Row(41, "SetPageSize", kMember<&CIScrollBar::SetPageSize>, "SetPageSize(size): how much of the range can be seen"),
    {42, "OnScroll", MemberKind::Event, kMember<&CIScrollBar::OnScroll>, 0, 0, "OnScroll = f: f(bar, position, code)"},
});

constexpr auto kConstants = std::to_array<MemberRow>({
    Constant(54, "HORZ", 0xAAD00000, "attribute: lies"),
    Constant(55, "VERT", 0xAAD00001, "attribute: stands"),
    Constant(56, "LINELEFT", SB_LINEUP, "code of OnScroll"),
    Constant(57, "LINEUP", SB_LINEUP, "code of OnScroll"),
    Constant(58, "LINERIGHT", SB_LINEDOWN, "code of OnScroll"),
    Constant(59, "LINEDOWN", SB_LINEDOWN, "code of OnScroll"),
    Constant(60, "PAGELEFT", SB_PAGEUP, "code of OnScroll"),
    Constant(61, "PAGEUP", SB_PAGEUP, "code of OnScroll"),
    Constant(62, "PAGERIGHT", SB_PAGEDOWN, "code of OnScroll"),
    Constant(63, "PAGEDOWN", SB_PAGEDOWN, "code of OnScroll"),
    Constant(64, "THUMBPOSITION", SB_THUMBPOSITION, "code of OnScroll: the thumb was let go"),
    Constant(65, "THUMBTRACK", SB_THUMBTRACK, "code of OnScroll: the thumb is dragged"),
    Constant(66, "LEFT", SB_TOP, "code of OnScroll"),
    Constant(67, "TOP", SB_TOP, "code of OnScroll"),
    Constant(68, "RIGHT", SB_BOTTOM, "code of OnScroll"),
    Constant(69, "BOTTOM", SB_BOTTOM, "code of OnScroll"),
    Constant(70, "ENDSCROLL", SB_ENDSCROLL, "code of OnScroll: the mouse or key was let go"),
});

constexpr auto kRows = JoinRows(CommonMembers<CIScrollBar>(1), kMembers, CommonConstants(44), kConstants);

}  // namespace

const ClassTable kScrollBarClass = {CLASS_SCROLLBAR, kRows, &CreateObject<CIScrollBar>,
                                    "New ScrollBar(x, y, width, height, window): a control that scrolls"};

}  // namespace vl
