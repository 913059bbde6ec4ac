#include "ui/window_class.h"

#include <algorithm>

#include "base/system_colors.h"
#include "gfx2d/colour.h"

namespace vl {

namespace {

constexpr uint32_t kWindowBits[] = {kAttrGame,      kAttrDialog,      kAttrResizable,   kAttrTool,      kAttrMessageBox,
                                    kAttrStandard,  kAttrMaximized,   kAttrNoSurface,   kAttrFakeChild, kAttrNoSysMenu,
                                    kAttrNoCaption, kAttrMinimizeBox, kAttrMaximizeBox, kAttrMinimized};
constexpr AttributeFamily kWindowFamily = {0xAAD00000, kWindowBits};
constexpr uint32_t kWindowArguments = kArgSizeFirst | 0xFFFF;
constexpr uint32_t kButtonFace = 15;
constexpr int64_t kMissing = -1;
constexpr uint32_t kInputStepMs = 20;
constexpr uint32_t kBackspace = 8;
constexpr uint32_t kLineFeed = 10;
constexpr uint32_t kReturn = 13;

}  // namespace

CIWindow::CIWindow(CInterpretor& interpreter) : CIChildWindow(interpreter, CLASS_WINDOW) {
  attrs = kAttrStandard;
  AddFamily(kWindowFamily);
}

void CIWindow::AttachToHost(CInterpretor& interpreter) {
  auto* window = new CIWindow(interpreter);
  window->CreateWindow(kDefaultInt, kMissing, true);
  window->Create();
}

void CIWindow::Construct() {
  std::vector<CValue*> rest;
  ParseWindowArguments(kWindowArguments, &rest);
  int64_t background = kMissing;
  int32_t depth = kDefaultInt;
  int numbers = 0;
  for (const CValue* value : rest) {
    if (value->type > VT_STRING || numbers > 1) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    const int32_t number = value->GetInt();
    if (numbers == 0) {
      background = SwapRedBlue(static_cast<uint32_t>(number) & 0xFFFFFF);
    } else {
      depth = number;
    }
    ++numbers;
  }
  CreateWindow(depth, background, false);
  Create();
}

// Turns the attributes into style words.
void CIWindow::ApplyAttributes(int64_t& background) {
  const bool borderAsked = (style & WS_BORDER) != 0;
  exStyle = 0;
  style |= WS_CAPTION;
  if (attrs & kAttrGame) {
    style &= ~static_cast<uint32_t>(WS_CAPTION);
    style |= 0x82000000;
    attrs &= ~static_cast<uint32_t>(kAttrDialog | kAttrTool | kAttrMessageBox | kAttrStandard);
  }
  if (attrs & kAttrDialog) {
    style |= 0x82880000;
    if (attrs & kAttrResizable) style |= 0x70000;
    exStyle = 0x10001;
    if (background == kMissing) background = SystemColor(kButtonFace);
    attrs &= ~static_cast<uint32_t>(kAttrMessageBox | kAttrStandard);
  }
  if (attrs & kAttrTool) {
    style |= 0x82800000;
    if (attrs & kAttrResizable) style |= 0x40000;
    exStyle |= 0x80;
  }
  if (attrs & kAttrMessageBox) {
    style |= 0x82C80000;
    attrs &= ~static_cast<uint32_t>(kAttrDialog | kAttrStandard);
  }
  if (attrs & kAttrStandard) {
    style |= 0x82880000;
    if (attrs & kAttrResizable) style |= 0x70000;
  }
  if (attrs & kAttrNoSysMenu) style &= ~static_cast<uint32_t>(WS_SYSMENU);
  if (attrs & kAttrNoCaption) style &= ~static_cast<uint32_t>(WS_CAPTION);
  if (borderAsked) style |= WS_BORDER;
  if (attrs & kAttrMinimizeBox) style |= WS_MINIMIZEBOX;
  if (attrs & kAttrMaximizeBox) style |= WS_MAXIMIZEBOX;
  if ((attrs & kAttrMinimized) && (attrs & kAttrMaximized)) attrs &= ~static_cast<uint32_t>(kAttrMinimized);
  if (attrs & kAttrMinimized) style |= WS_MINIMIZE;
  if (attrs & kAttrMaximized) style |= WS_MAXIMIZE;
  if (attrs & kAttrResizable) style |= WS_THICKFRAME;
  if (parent) style = (style & 0x3BFFFFFF) | 0x44000000;
}

void CIWindow::CreateWindow(int32_t depth, int64_t background, bool inHostWindow) {
  if (!interpreter.services.windows) interpreter.RaiseError(ERR_SECOND_WINDOW);
  const ScreenInfo screen = Tree().Screen();
  if (!parent && !inHostWindow && interpreter.services.windows->hostWindow() && interpreter.mainWindow) {
    interpreter.RaiseError(ERR_SECOND_WINDOW, kNoArgument, "a hosted program has one top-level window");
  }
  if (inHostWindow) {
    style |= 0x44000000;
    x = y = 0;
    const Size host = interpreter.services.windows->hostSize();
    width = host.width ? host.width : screen.width;
    height = host.height ? host.height : screen.height;
    attrs = 0;
  } else {
    ApplyAttributes(background);
    width = std::clamp(width, 0, limits::kMaxSurfaceSide);
    height = std::clamp(height, 0, limits::kMaxSurfaceSide);
    if ((style & 1) || !creationText.empty()) style |= WS_CAPTION;
    const Rect borders = Tree().BordersFor(style);
    borderLeft = borders.left;
    borderTop = borders.top;
    borderRight = borders.right;
    borderBottom = borders.bottom;
    if (x == kDefaultInt) x = (screen.width - width) / 2;
    if (y == kDefaultInt) y = (screen.height - height) / 2;
  }
  if (!CreateChild(!(attrs & kAttrFakeChild), inHostWindow)) interpreter.RaiseError(ERR_SECOND_WINDOW);
  ownsWindow = !inHostWindow;
  if (!parent && !interpreter.mainWindow) {
    interpreter.mainWindow = this;
    Tree().mainWindow = hwnd;
  }
  if (depth == kDefaultInt || depth == 0) depth = screen.depth;
  if (!(attrs & kAttrNoSurface)) {
    surface = CISurface::CreateForWindow(interpreter, *this, width ? width : 1, height ? height : 1, depth);
    if (!surface) interpreter.RaiseError(ERR_MEMORY);
    ++surface->refCount;
    surface->MarkAllDirty();
  }
  SetBackColorRaw(background == kMissing ? SwapRedBlue(interpreter.backColor & 0xFFFFFF)
                                         : static_cast<uint32_t>(background));
  if (surface) surface->FillWithBackColor();
  interpreter.RequestRefresh();
  if (showPending) {
    pendingShow.fill(0);
    const uint32_t command = (attrs & kAttrMinimized)   ? SW_MINIMIZE
                             : (attrs & kAttrMaximized) ? SW_SHOWMAXIMIZED
                                                        : SW_SHOWNORMAL;
    SetPendingShow(command);
    interpreter.currentWindow = this;
    Refresh();
  }
  if (WindowNode* node = Tree().Find(hwnd); node && node->visible) {
    Tree().Invalidate(hwnd);
    Tree().Post(hwnd, WM_ACTIVATE, 1);
  }
}

void CIWindow::Destroy(bool final) {
  if (interpreter.currentWindow == this) interpreter.currentWindow = nullptr;
  if (interpreter.mainWindow == this) interpreter.mainWindow = nullptr;
  LeaveModal();
  if (hwnd && Tree().Capture() == hwnd) Tree().SetCapture(0);
  inputActive_ = false;
  while (!children.empty()) {
    CIChildWindow* child = children.front();
    children.erase(children.begin());
    child->parent = nullptr;
    interpreter.DestroyObject(child, final);
  }
  if (surface) {
    CISurface* owned = surface;
    surface = nullptr;
    owned->parentWindow = nullptr;
    --owned->refCount;
    interpreter.DestroyObject(owned, final);
  }
  CIChildWindow::Destroy(final);
  if (!final && !interpreter.currentWindow) {
    // The window in front takes over.
    uint32_t cursor = interpreter.ObjectsOfClass(CLASS_WINDOW).First();
    while (CIBaseClassImpl* other = interpreter.ObjectsOfClass(CLASS_WINDOW).Step(cursor)) {
      if (other != this && static_cast<CIWindow*>(other)->hwnd == Tree().Active()) interpreter.currentWindow = other;
    }
  }
}

// A window goes with the one that holds it, and with its surface.
bool CIWindow::DependsOn(CIBaseClassImpl* target) {
  if (surface && static_cast<CIBaseClassImpl*>(surface) == target) return MarkDependant();
  return CIChildWindow::DependsOn(target);
}

void CIWindow::RemoveChild(CIChildWindow* child) {
  std::erase(children, child);
  if (activeChild == child) activeChild = nullptr;
}

void CIWindow::PresentSurface(cSurface& shown, std::span<const Rect> dirtyBoxes) {
  Tree().Paint(hwnd, shown, dirtyBoxes);
}

void CIWindow::SetTextColorRaw(uint32_t colour) {
  CIChildWindow::SetTextColorRaw(colour);
  if (surface) {
    surface->SetPenColorRaw(colour);
  } else {
    RequestRefresh();
  }
}

void CIWindow::SetBackColorRaw(uint32_t colour) {
  CIChildWindow::SetBackColorRaw(colour);
  if (surface) surface->SetBackColorRaw(colour);
}

// --- Messages ---

int32_t CIWindow::WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) {
  if (interpreter.terminating || destroyed) return 0;
  // A message may end the window; the object stays until its procedure is left.
  struct Pin {
    CIWindow* window;
    ~Pin() { window->interpreter.Unpin(window); }
  } pin{this};
  ++pins;
  const auto& stack = Tree().modalStack;
  if (!stack.empty() && stack.front() != window && message != WM_PAINT && message != WM_TIMER) {
    switch (message) {
      case WM_COMMAND:
      case WM_SYSCOMMAND:
      case WM_MOUSEACTIVATE:
      case WM_NCLBUTTONDOWN:
      case WM_NCRBUTTONDOWN:
      case WM_NCMBUTTONDOWN:
      case WM_LBUTTONDOWN:
      case WM_RBUTTONDOWN:
      case WM_MBUTTONDOWN:
        return 0;
      default:
        break;
    }
  }
  switch (message) {
    case WM_DESTROY:
      OnDestroyMessage();
      return 0;
    case WM_MOVE:
      x = LowSigned(lParam) - borderLeft;
      y = HighSigned(lParam) - borderTop;
      PostWith(kOnMove, {x, y}, true);
      return 0;
    case WM_SIZE:
      OnSizeMessage(wParam, LowSigned(lParam), HighSigned(lParam));
      return 0;
    case WM_ACTIVATE:
      if (wParam == 1 || wParam == 2) interpreter.currentWindow = this;
      if ((wParam == 1 || wParam == 2) && interpreter.windowFollower) {
        interpreter.windowFollower->WindowBecameActive(hwnd);
      }
      return 0;
    case WM_SETFOCUS:
      interpreter.currentWindow = this;
      PostWith(kOnSetFocus, {}, false);
      return 0;
    case WM_KILLFOCUS:
      PostWith(kOnKillFocus, {}, false);
      return 0;
    case WM_PAINT:
      PaintUpdate(window);
      return 0;
    case WM_CLOSE:
      if (Tree().Capture() == window) Tree().SetCapture(0);
      Tree().Destroy(window);
      return 0;
    case WM_CHAR:
      if (inputActive_) OnCharacter(wParam);
      return 0;
    case WM_SYSCOMMAND:
      switch (wParam & 0xFFF0) {
        case SC_MINIMIZE:
          PostWith(kOnMinimize, {}, true);
          break;
        case SC_MAXIMIZE:
          PostWith(kOnMaximize, {}, true);
          break;
        case SC_CLOSE:
          OnSystemClose();
          break;
        default:
          break;
      }
      return 0;
    case WM_MOUSEMOVE:
      PostWith(kOnMouseMove, {LowSigned(lParam), HighSigned(lParam)}, false);
      return 0;
    case WM_MOUSEWHEEL:
      PostWith(kOnMouseWheel, {HighSigned(static_cast<int32_t>(wParam))}, false);
      return 0;
    case WM_DROPFILES: {
      const std::string path = interpreter.services.events->takeBlob(wParam);
      if (!events_[kOnDropFile]) return 1;
      std::vector<CValue> arguments;
      arguments.reserve(4);
      arguments.push_back(interpreter.MakeValue(static_cast<CIBaseClassImpl*>(this)));
      arguments.push_back(interpreter.MakeValue(std::string_view(path)));
      arguments.push_back(interpreter.MakeValue(LowSigned(lParam)));
      arguments.push_back(interpreter.MakeValue(HighSigned(lParam)));
      interpreter.PostEvent(events_[kOnDropFile], std::move(arguments));
      return 1;
    }
    default:
      if (message >= WM_LBUTTONDOWN && message <= WM_MBUTTONDBLCLK) OnMouseButton(message, lParam);
      return 0;
  }
}

void CIWindow::PostWith(Event event, std::initializer_list<int32_t> numbers, bool unique) {
  const BlockRecord* function = events_[event];
  if (!function) return;
  std::vector<CValue> arguments;
  arguments.reserve(numbers.size() + 1);
  arguments.push_back(interpreter.MakeValue(static_cast<CIBaseClassImpl*>(this)));
  for (const int32_t number : numbers) arguments.push_back(interpreter.MakeValue(number));
  if (unique) {
    interpreter.PostUniqueEvent(function, this, std::move(arguments));
  } else {
    interpreter.PostEvent(function, std::move(arguments));
  }
}

void CIWindow::OnSizeMessage(uint32_t kind, int32_t newWidth, int32_t newHeight) {
  if (kind == 1) return;
  width = newWidth;
  height = newHeight;
  PostWith(kOnSize, {width, height}, true);
  if (surface) surface->ResizeTo(width, height);
}

void CIWindow::OnMouseButton(uint32_t message, int32_t lParam) {
  const uint32_t which = (message - WM_LBUTTONDOWN) / 3;
  const auto button = static_cast<int32_t>(which == 0   ? MouseButtonConstant::Left
                                           : which == 1 ? MouseButtonConstant::Right
                                                        : MouseButtonConstant::Middle);
  static constexpr Event kEvents[] = {kOnMouseDown, kOnMouseUp, kOnDblClick};
  PostWith(kEvents[(message - WM_LBUTTONDOWN) % 3], {LowSigned(lParam), HighSigned(lParam), button}, false);
}

void CIWindow::OnSystemClose() {
  PostWith(kOnClose, {}, true);
  if (!autoClose) return;
  // The handler sees the window before it goes.
  interpreter.ServiceStep();
  if (destroyed || !hwnd) return;
  if (Tree().Capture() == hwnd) Tree().SetCapture(0);
  Tree().Destroy(hwnd);
}

void CIWindow::OnDestroyMessage() {
  ownsWindow = false;
  interpreter.DeleteObject(this);
  if (interpreter.ObjectsOfClass(CLASS_WINDOW).Count() == 0) interpreter.pendingError = ERR_END;
}

void CIWindow::PaintUpdate(WindowHandle window) {
  WindowNode* node = Tree().Find(window);
  if (!node) return;
  const Rect box = node->update;
  node->update = Rect{};
  if (surface) {
    Tree().Paint(window, surface->surface, {&box, 1});
  } else {
    Tree().PaintBackground(window, {&box, 1});
  }
}

// --- Members ---

void CIWindow::ForwardToSurface() {
  if (!surface) return;
  interpreter.ForwardMember(*surface, interpreter.GetMemberId());
}

void CIWindow::GetSurface() {
  if (!surface) interpreter.RaiseError(ERR_NO_SURFACE);
  Result().SetObject(surface);
}

size_t CIWindow::EventOfMember(uint16_t memberId) {
  if (memberId >= 106 && memberId <= 114) return static_cast<size_t>(memberId - 106);
  if (memberId == 129) return kOnDropFile;
  if (memberId >= 132 && memberId <= 134) return static_cast<size_t>(kOnMouseDown + memberId - 132);
  return kOnMouseWheel;
}

void CIWindow::SetEvent() {
  const size_t event = EventOfMember(interpreter.GetMemberId());
  events_[event] = interpreter.GetEventFunction();
}

void CIWindow::SetCursor() {
  if (interpreter.GetArgCount() > 0 && interpreter.GetArg(0)->type == VT_OBJECT) {
    interpreter.RaiseError(ERR_NOT_MADE, kNoArgument, "cursors from images aren't part of this player yet");
  }
  if (interpreter.GetArgCount() > 0 && interpreter.GetArg(0)->type == VT_STRING) {
    interpreter.RaiseError(ERR_NOT_MADE, kNoArgument, "cursors from images aren't part of this player yet");
  }
  const int32_t number = interpreter.GetArgInt(0);
  const bool known = number >= 0 && number <= static_cast<int32_t>(CursorShape::Wait);
  Tree().SetCursor(hwnd, known ? static_cast<CursorShape>(number) : CursorShape::Arrow);
}

void CIWindow::Input() {
  if (inputActive_) interpreter.RaiseError(ERR_INPUT_RUNNING);
  if (interpreter.inEvent) interpreter.RaiseError(ERR_WAIT_IN_EVENT, kNoArgument, "Input inside an event function");
  inputPrompt_ = interpreter.IsArgDefault(0) ? "" : interpreter.GetArgString(0);
  inputText_.clear();
  if (surface) {
    inputX_ = surface->penX;
    inputY_ = surface->penY;
  }
  inputWidth_ = inputHeight_ = 0;
  inputActive_ = true;
  struct Active {
    bool& flag;
    ~Active() { flag = false; }
  } active{inputActive_};
  if (surface) surface->WriteText(inputPrompt_, inputWidth_, inputHeight_);
  Tree().SetFocus(hwnd);
  while (inputActive_ && !destroyed && !interpreter.param.stop.load()) interpreter.Wait(kInputStepMs);
  Result().SetString(inputText_);
}

// Draws prompt and text anew at the place where the prompt started.
void CIWindow::RedrawInput(bool withLine) {
  if (!surface) return;
  surface->penX = inputX_;
  surface->penY = inputY_;
  surface->EraseBox(inputX_, inputY_, inputWidth_, inputHeight_);
  inputWidth_ = inputHeight_ = 0;
  int32_t w = 0;
  int32_t h = 0;
  surface->WriteText(inputPrompt_, inputWidth_, inputHeight_);
  if (withLine) {
    surface->WriteTextLine(inputText_);
  } else {
    surface->WriteText(inputText_, w, h);
    inputWidth_ += w;
    inputHeight_ = std::max(inputHeight_, h);
  }
}

void CIWindow::OnCharacter(uint32_t character) {
  if (character == kBackspace) {
    if (!inputText_.empty()) inputText_.pop_back();
  } else if (character == kLineFeed || character == kReturn) {
    RedrawInput(true);
    inputActive_ = false;
    return;
  } else if (character >= 32) {
    if (inputText_.size() < limits::kMaxTextBytes) inputText_ += static_cast<char>(character);
  }
  RedrawInput(false);
}

void CIWindow::DoModal() {
  if (!(attrs & kAttrFakeChild)) interpreter.RaiseError(ERR_MODAL);
  if (!Handle() || modal) return;
  Tree().SetPosition(hwnd, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
  Tree().modalStack.insert(Tree().modalStack.begin(), hwnd);
  Tree().Show(hwnd, SW_SHOW);
  modal = true;
}

void CIWindow::LeaveModal() {
  if (!modal) return;
  std::erase(Tree().modalStack, hwnd);
  modal = false;
}

void CIWindow::EndModal() {
  if (!modal) return;
  LeaveModal();
  if (parent) Tree().SetFocus(parent->hwnd);
}

void CIWindow::SetAutoClose() {
  const int32_t flag = interpreter.GetArgInt(0);
  if (flag != 0 && flag != 1) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  autoClose = flag == 1;
}

void CIWindow::IsMaximized() {
  const WindowNode* node = Tree().Find(hwnd);
  Result().SetInt(node && node->maximized);
}

void CIWindow::IsMinimized() {
  const WindowNode* node = Tree().Find(hwnd);
  Result().SetInt(node && node->minimized);
}

void CIWindow::HasMouseCapture() { Result().SetInt(hwnd && Tree().Capture() == hwnd); }

void CIWindow::Center() {
  CIWindow* reference = nullptr;
  if (!interpreter.IsArgDefault(0)) {
    if (!interpreter.GetArg(0)->IsObjectOfClass(CLASS_WINDOW)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    reference = static_cast<CIWindow*>(interpreter.GetArg(0)->data.object);
  } else {
    reference = parent;
  }
  const ScreenInfo screen = Tree().Screen();
  Rect bounds{0, 0, screen.width, screen.height};
  Rect around = bounds;
  const auto outer = [&](CIWindow& window) {
    const Point client = Tree().ClientOrigin(window.hwnd);
    return Rect{client.x - window.borderLeft, client.y - window.borderTop, client.x + window.width + window.borderRight,
                client.y + window.height + window.borderBottom};
  };
  if (reference) {
    const WindowNode* node = Tree().Find(reference->hwnd);
    if (node && Tree().IsVisible(reference->hwnd) && !node->minimized) {
      around = outer(*reference);
    }
  }
  if ((style & WS_CHILD) && parent) {
    const Point origin = Tree().ClientOrigin(parent->hwnd);
    bounds = {0, 0, parent->width, parent->height};
    around = {around.left - origin.x, around.top - origin.y, around.right - origin.x, around.bottom - origin.y};
  }
  int newX = (around.left + around.right) / 2 - OuterWidth() / 2;
  int newY = (around.top + around.bottom) / 2 - OuterHeight() / 2;
  const auto clampAxis = [](int& position, int size, int low, int high) {
    if (position < low) {
      position = low;
    } else if (position + size > high) {
      position = high - size;
    }
  };
  clampAxis(newX, OuterWidth(), bounds.left, bounds.right);
  clampAxis(newY, OuterHeight(), bounds.top, bounds.bottom);
  x = newX;
  y = newY;
  posFlags &= ~static_cast<uint32_t>(SWP_NOMOVE);
  RequestRefresh();
}

void CIWindow::SetMinSize() {
  const int32_t w = interpreter.GetArgInt(0);
  const int32_t h = interpreter.GetArgInt(1);
  if (w >= 0) minWidth = static_cast<uint32_t>(w);
  if (h >= 0) minHeight = static_cast<uint32_t>(h);
  ClampToLimits();
}

void CIWindow::SetMaxSize() {
  const int32_t w = interpreter.GetArgInt(0);
  const int32_t h = interpreter.GetArgInt(1);
  if (w >= 0) maxWidth = static_cast<uint32_t>(w);
  if (h >= 0) maxHeight = static_cast<uint32_t>(h);
  ClampToLimits();
}

// The limits are those of the outer size.
void CIWindow::ClampToLimits() {
  if (minWidth > maxWidth) std::swap(minWidth, maxWidth);
  if (minHeight > maxHeight) std::swap(minHeight, maxHeight);
  const uint32_t outerWidth = std::clamp(static_cast<uint32_t>(OuterWidth()), minWidth, maxWidth);
  const uint32_t outerHeight = std::clamp(static_cast<uint32_t>(OuterHeight()), minHeight, maxHeight);
  const int32_t newWidth = static_cast<int32_t>(outerWidth) - borderLeft - borderRight;
  const int32_t newHeight = static_cast<int32_t>(outerHeight) - borderTop - borderBottom;
  if (newWidth == width && newHeight == height) return;
  SetSizeRaw(newWidth, newHeight, false);
}

}  // namespace vl
