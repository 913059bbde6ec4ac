// Window: its window procedure.
#include <algorithm>

#include "ui/window_class.h"

namespace vl {

namespace {

// The drop of a file gives names of at most so many bytes.
constexpr size_t kMaxDropName = 259;

}  // namespace

int32_t CIWindow::WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) {
  if (interpreter.terminating || destroyed) return 0;
  // A message may end the window; the object stays until its procedure is left.
  struct Pin {
    CIWindow* window;
    ~Pin() { window->interpreter.Unpin(window); }
  } pin{this};
  ++pins;
  int32_t answer = 0;
  if (IsQuietedByModal(window, message, answer)) return answer;
  bool ended = false;
  // A hook may change the list.
  for (size_t i = 0; i < hooks_.size(); ++i) {
    answer = hooks_[i](*this, ended, message, wParam, lParam);
    if (ended || destroyed) return answer;
  }
  answer = HandleMessage(window, message, wParam, lParam, ended);
  return ended || destroyed ? answer : Tree().DefaultProcedure(window, message, wParam, lParam);
}

void CIWindow::RemoveMessageHook(MessageHook hook) {
  const auto found = std::find(hooks_.begin(), hooks_.end(), hook);
  if (found != hooks_.end()) hooks_.erase(found);
}

// While a modal window waits for its answer the others paint and keep their timers, and that is all.
bool CIWindow::IsQuietedByModal(WindowHandle window, uint32_t message, int32_t& answer) {
  const auto& stack = Tree().modalStack;
  if (stack.empty() || stack.front() == window) return false;
  switch (message) {
    case WM_MOUSEACTIVATE:
      answer = MA_NOACTIVATEANDEAT;
      return true;
    case WM_COMMAND:
    case WM_SYSCOMMAND:
    case WM_NCLBUTTONDOWN:
    case WM_NCRBUTTONDOWN:
    case WM_NCMBUTTONDOWN:
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_MBUTTONDOWN:
      answer = 0;
      return true;
    default:
      return false;
  }
}

int32_t CIWindow::HandleMessage(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam, bool& ended) {
  const auto end = [&](int32_t result) {
    ended = true;
    return result;
  };
  switch (message) {
    case WM_DESTROY:
      OnDestroyMessage();
      return end(0);
    case WM_MOVE:
      x = LowSigned(lParam) - borderLeft;
      y = HighSigned(lParam) - borderTop;
      PostWith(kOnMove, {x, y}, true);
      return 0;
    case WM_SIZE:
      OnSizeMessage(wParam, LowSigned(lParam), HighSigned(lParam));
      return 0;
    case WM_ACTIVATE:
      if (wParam == 1 || wParam == 2) {
        interpreter.currentWindow = this;
        if (interpreter.windowFollower) interpreter.windowFollower->WindowBecameActive(hwnd);
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
      if (!surface) return 0;
      OnPaint();
      return end(0);
    case WM_CLOSE:
      if (Tree().Capture() == window) Tree().SetCapture(0);
      Tree().Destroy(window);
      return end(0);
    case WM_ERASEBKGND: {
      const WindowNode* node = Tree().Find(window);
      if (!node || node->minimized) return end(1);
      Tree().FillBackground(window, node->update.IsEmpty() ? Rect{0, 0, node->width, node->height} : node->update,
                            backColor);
      return end(1);
    }
    case WM_SYSCOLORCHANGE:
      Tree().RedrawFrame(window);
      return 0;
    case WM_SHOWWINDOW:
      if (wParam == 1) {
        BecomeActiveSibling();
      } else {
        LetAnotherSiblingBeActive();
      }
      return 0;
    case WM_SETCURSOR:
      if ((static_cast<uint32_t>(lParam) & 0xFFFF) != HTCLIENT || !hasCursor_) return 0;
      ShowCursor();
      return end(1);
    case WM_MOUSEACTIVATE:
      BecomeActiveSibling();
      return 0;
    case WM_DISPLAYCHANGE:
      PostWith(kOnDisplayChange, {static_cast<int32_t>(wParam), LowSigned(lParam), HighSigned(lParam)}, true);
      return 0;
    case WM_CHAR:
      if (inputActive_) OnCharacter(wParam);
      return 0;
    case WM_SYSCOMMAND:
      switch (wParam & 0xFFF0) {
        case SC_MINIMIZE:
          PostWith(kOnMinimize, {}, true);
          return 0;
        case SC_MAXIMIZE:
          PostWith(kOnMaximize, {}, true);
          return 0;
        case SC_CLOSE:
          OnSystemClose();
          return end(0);
        default:
          return 0;
      }
    case WM_MOUSEMOVE:
      PostWith(kOnMouseMove, {LowSigned(lParam), HighSigned(lParam)}, false);
      return 0;
    case WM_MOUSEWHEEL:
      PostWith(kOnMouseWheel, {HighSigned(static_cast<int32_t>(wParam))}, false);
      return 0;
    case WM_SIZING:
      OnSizing(wParam);
      return end(1);
    case WM_DROPFILES:
      OnDrop(wParam, lParam);
      return end(1);
    case WM_QUERYNEWPALETTE:
    case WM_PALETTECHANGED:
      return end(1);  // what is shown has no palette
    default:
      if (message >= WM_LBUTTONDOWN && message <= WM_MBUTTONDBLCLK) OnMouseButton(message, lParam);
      return 0;
  }
}

void CIWindow::PostWith(Event event, std::initializer_list<int32_t> numbers, bool unique) {
  const BlockRecord* function = events_[event];
  if (!function) return;
  if (unique) {
    interpreter.PostUniqueEvent(function, this, EventArguments(numbers));
  } else {
    interpreter.PostEvent(function, EventArguments(numbers));
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

void CIWindow::OnPaint() {
  const WindowNode* node = Tree().Find(hwnd);
  const bool covers = surface->width >= node->width && surface->height >= node->height;
  const Rect box = Tree().BeginPaint(hwnd, !covers);
  Tree().Paint(hwnd, surface->surface, {&box, 1});
  // These show what lies on the surface under them.
  for (CIChildWindow* child : children) {
    if (child->classId != CLASS_GROUPBOX && child->classId != CLASS_STATICTEXT) continue;
    if (!Tree().IsVisible(child->hwnd)) continue;
    Tree().Invalidate(child->hwnd);
    Tree().Send(child->hwnd, WM_PAINT);
  }
}

void CIWindow::OnDrop(uint32_t id, int32_t lParam) {
  std::string path = interpreter.services.events->takeBlob(id);
  if (!events_[kOnDropFile]) return;
  if (path.size() > kMaxDropName) path.resize(kMaxDropName);
  std::vector<CValue> arguments;
  arguments.reserve(4);
  arguments.push_back(interpreter.MakeValue(static_cast<CIBaseClassImpl*>(this)));
  arguments.push_back(interpreter.MakeValue(std::string_view(path)));
  arguments.push_back(interpreter.MakeValue(LowSigned(lParam)));
  arguments.push_back(interpreter.MakeValue(HighSigned(lParam)));
  interpreter.PostEvent(events_[kOnDropFile], std::move(arguments));
}

// The frame's box stays within the limits; the side that the person drags gives way.
void CIWindow::OnSizing(uint32_t edge) {
  Rect box = Tree().sizingBox;
  const auto within = [](int size, uint32_t least, uint32_t most) {
    const auto outer = static_cast<uint32_t>(std::max(size, 0));
    return static_cast<int>(std::min<uint32_t>(std::clamp(outer, least, most), 2 * limits::kMaxSurfaceSide));
  };
  const int across = within(box.Width(), minWidth, maxWidth);
  const int down = within(box.Height(), minHeight, maxHeight);
  switch (edge) {
    case WMSZ_LEFT:
    case WMSZ_TOPLEFT:
    case WMSZ_BOTTOMLEFT:
      box.left = box.right - across;
      break;
    case WMSZ_RIGHT:
    case WMSZ_TOPRIGHT:
    case WMSZ_BOTTOMRIGHT:
      box.right = box.left + across;
      break;
    default:
      break;
  }
  switch (edge) {
    case WMSZ_TOP:
    case WMSZ_TOPLEFT:
    case WMSZ_TOPRIGHT:
      box.top = box.bottom - down;
      break;
    case WMSZ_BOTTOM:
    case WMSZ_BOTTOMLEFT:
    case WMSZ_BOTTOMRIGHT:
      box.bottom = box.top + down;
      break;
    default:
      break;
  }
  Tree().sizingBox = box;
  const WindowNode* node = Tree().Find(hwnd);
  if (!node) return;
  const Size outer = node->Outer();
  const int newWidth = std::max(0, box.Width() - (outer.width - node->width));
  const int newHeight = std::max(0, box.Height() - (outer.height - node->height));
  if (newWidth == width && newHeight == height) return;
  width = newWidth;
  height = newHeight;
  if (events_[kOnSize]) {
    PostWith(kOnSize, {width, height}, true);
    // The handler sees the window before the surface changes.
    interpreter.ServiceStep();
    Tree().sizingBox = box;
  }
  if (surface && !destroyed) surface->ResizeTo(newWidth, newHeight);
}

// --- Siblings, pointer ---

void CIWindow::BecomeActiveSibling() {
  if (!parent || !(style & WS_CHILD)) return;
  if (parent->activeChild) Tree().Post(parent->activeChild->hwnd, WM_NCACTIVATE, 0);
  parent->activeChild = this;
  Tree().Post(hwnd, WM_NCACTIVATE, 1);
  if (!Tree().HasMouse()) return;
  if (const WindowHandle under = Tree().WindowAt(hwnd, Tree().MousePosition())) Tree().SetFocus(under);
}

void CIWindow::LetAnotherSiblingBeActive() {
  if (!parent || !(style & WS_CHILD)) return;
  for (CIChildWindow* sibling : parent->children) {
    if (sibling == this || sibling->classId != CLASS_WINDOW || !Tree().IsVisible(sibling->hwnd)) continue;
    static_cast<CIWindow*>(sibling)->BecomeActiveSibling();
    return;
  }
}

void CIWindow::ShowCursor() {
  if (cursorPicture_.width > 0) {
    Tree().UseCursor(hwnd, cursorPicture_, cursorSerial_);
  } else {
    Tree().UseCursor(hwnd, hasCursor_ ? cursorShape_ : CursorShape::Arrow);
  }
}

}  // namespace vl
