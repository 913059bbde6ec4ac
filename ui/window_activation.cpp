// WindowTree: focus and activation, and what every window does with messages that it leaves.
#include <algorithm>

#include "ui/window_frame.h"
#include "ui/window_tree.h"

namespace vl {

// --- Focus and activation ---

void WindowTree::SetActiveLook(WindowHandle window, bool active) {
  WindowNode* node = Find(window);
  if (!node || node->active == active) return;
  node->active = active;
  if (node->drawsFrame && HasCaption(node->style)) RedrawFrame(window);
}

void WindowTree::ActivateTop(WindowHandle top, bool byDesktop) {
  WindowNode* node = Find(top);
  if (!node) return;
  if (active_ != top) {
    const WindowHandle before = active_;
    active_ = top;
    if (before) {
      SetActiveLook(before, false);
      Send(before, WM_ACTIVATE, 0, static_cast<int32_t>(top));
    }
    node = Find(top);
    if (!node || active_ != top) return;
    std::erase(topLevels_, top);
    auto at = topLevels_.begin();
    while (!node->topMost && at != topLevels_.end() && Find(*at)->topMost) ++at;
    topLevels_.insert(at, top);
    if (!byDesktop && node->native && !node->isHost && node->visible) services_.windows->raiseWindow(node->native);
    SetActiveLook(top, true);
    Send(top, WM_ACTIVATE, 1);
    node = Find(top);
  }
  if (node && active_ == top && !node->minimized && !IsInside(focus_, top)) SetFocus(top);
}

void WindowTree::Activate(WindowHandle window) {
  if (const WindowHandle top = TopLevel(window)) ActivateTop(top, false);
}

void WindowTree::ActivateAnother(WindowHandle gone) {
  active_ = 0;
  if (IsInside(focus_, gone)) {
    const WindowHandle before = focus_;
    focus_ = 0;
    Send(before, WM_KILLFOCUS);
  }
  for (const WindowHandle top : topLevels_) {
    const WindowNode* node = Find(top);
    if (top == gone || !node->visible || node->minimized || !node->enabled) continue;
    ActivateTop(top, false);
    return;
  }
}

void WindowTree::SetFocus(WindowHandle window) {
  if (focus_ == window || !Find(window)) return;
  const WindowHandle top = TopLevel(window);
  const WindowHandle before = focus_;
  focus_ = window;
  if (before) Send(before, WM_KILLFOCUS, window);
  if (top != active_) ActivateTop(top, false);
  if (focus_ == window && Find(window)) Send(window, WM_SETFOCUS, before);
}

void WindowTree::SetCapture(WindowHandle window) {
  if (capture_ == window) return;
  if (WindowNode* before = Find(TopLevel(capture_))) services_.windows->captureMouse(before->native, false);
  capture_ = Find(window) ? window : 0;
  if (WindowNode* top = Find(TopLevel(capture_))) services_.windows->captureMouse(top->native, true);
}

// --- What is done with messages that nobody takes ---

int32_t WindowTree::DefaultProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) {
  WindowNode* node = Find(window);
  if (!node) return 0;
  switch (message) {
    case WM_CLOSE:
      Destroy(window);
      return 0;
    case WM_PAINT:
      BeginPaint(window);
      return 0;
    case WM_ERASEBKGND:
      FillBackground(window, node->update.IsEmpty() ? Rect{0, 0, node->width, node->height} : node->update,
                     node->backColour);
      return 1;
    case WM_NCACTIVATE:
      SetActiveLook(window, wParam != 0);
      return 1;
    case WM_MOUSEACTIVATE: {
      const int32_t answer = node->parent ? Send(node->parent, message, wParam, lParam) : 0;
      return answer ? answer : MA_ACTIVATE;
    }
    case WM_SETCURSOR: {
      if (node->parent && Send(node->parent, message, wParam, lParam)) return 1;
      static constexpr CursorShape kEdges[] = {CursorShape::SizeWE,   CursorShape::SizeWE,   CursorShape::SizeNS,
                                               CursorShape::SizeNWSE, CursorShape::SizeNESW, CursorShape::SizeNS,
                                               CursorShape::SizeNESW, CursorShape::SizeNWSE};
      const auto hit = static_cast<uint32_t>(lParam) & 0xFFFF;
      // The parent of a window asks on its behalf; the pointer is still that of the window under the mouse.
      if (window == wParam) {
        UseCursor(window, hit >= HTLEFT && hit <= HTBOTTOMRIGHT ? kEdges[hit - HTLEFT] : CursorShape::Arrow);
      }
      return 0;
    }
    case WM_NCLBUTTONDOWN:
    case WM_NCLBUTTONDBLCLK:
      return PressFrame(window, wParam, message == WM_NCLBUTTONDBLCLK);
    case WM_MOUSEWHEEL:
      return node->parent ? Send(node->parent, message, wParam, lParam) : 0;
    case WM_SYSKEYDOWN: {
      constexpr uint32_t kKeyF4 = 0x73;
      if (wParam == kKeyF4) Post(TopLevel(window), WM_SYSCOMMAND, SC_CLOSE);
      return 0;
    }
    case WM_SYSCOMMAND:
      return DefaultSystemCommand(window, wParam, lParam);
    default:
      return 0;
  }
}

int32_t WindowTree::DefaultSystemCommand(WindowHandle window, uint32_t command, int32_t lParam) {
  switch (command & 0xFFF0) {
    case SC_CLOSE:
      Send(window, WM_CLOSE);
      return 0;
    case SC_MINIMIZE:
      if (lParam != kDoneByDesktop) Show(window, SW_MINIMIZE);
      return 0;
    case SC_MAXIMIZE:
      if (lParam != kDoneByDesktop) Show(window, SW_SHOWMAXIMIZED);
      return 0;
    case SC_RESTORE:
      if (lParam != kDoneByDesktop) Show(window, SW_RESTORE);
      return 0;
    case SC_MOVE:
      BeginTrack(window, TrackKind::Move, HTCAPTION);
      return 0;
    case SC_SIZE:
      // The four low bits name the side as WM_SIZING does.
      BeginTrack(window, TrackKind::Size, (command & 0xF) + HTLEFT - WMSZ_LEFT);
      return 0;
    default:
      return 0;
  }
}

}  // namespace vl
