// Window: its own members, but for those that take pictures and Input.
#include <algorithm>

#include "ui/scroll_bar_class.h"
#include "ui/window_class.h"

namespace vl {

void CIWindow::ForwardToSurface() {
  if (!surface) return;
  interpreter.ForwardMember(*surface, interpreter.GetMemberId());
}

void CIWindow::GetSurface() {
  if (!surface) interpreter.RaiseError(ERR_NO_SURFACE);
  Result().SetObject(surface);
}

void CIWindow::DoModal() {
  if (!(attrs & kAttrFakeChild)) interpreter.RaiseError(ERR_MODAL);
  if (!Handle() || modal) return;
  Tree().SetPosition(hwnd, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
  Tree().modalStack.insert(Tree().modalStack.begin(), hwnd);
  Tree().Show(hwnd, SW_SHOW);
  modal = true;
}

void CIWindow::EndModal() { LeaveModal(); }

void CIWindow::EnableCloseBox() {
  if (!interpreter.IsArgDefault(0) && interpreter.GetArgInt(0) == 0) {
    Tree().EnableClose(hwnd, false);
  } else {
    Tree().EnableClose(hwnd, true);
  }
}

void CIWindow::SetAutoClose() {
  const int32_t flag = interpreter.GetArgInt(0);
  if (flag != 0 && flag != 1) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  autoClose = flag == 1;
}

void CIWindow::IsMaximized() {
  const WindowNode* node = Tree().Find(hwnd);
  Result().SetInt(node && node->maximized && !node->minimized);
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
  const auto limit = [](uint32_t side) {
    return side > limits::kMaxSurfaceSide ? 0 : static_cast<int>(side);  // no limit
  };
  Tree().SetSizeLimits(hwnd, {limit(minWidth), limit(minHeight)}, {limit(maxWidth), limit(maxHeight)});
  const uint32_t outerWidth = std::clamp(static_cast<uint32_t>(OuterWidth()), minWidth, maxWidth);
  const uint32_t outerHeight = std::clamp(static_cast<uint32_t>(OuterHeight()), minHeight, maxHeight);
  const int32_t newWidth = static_cast<int32_t>(outerWidth) - borderLeft - borderRight;
  const int32_t newHeight = static_cast<int32_t>(outerHeight) - borderTop - borderBottom;
  if (newWidth == width && newHeight == height) return;
  SetSizeRaw(newWidth, newHeight, false);
}

void CIWindow::EnableDropFile() {
  const int32_t flag = interpreter.IsArgDefault(0) ? 1 : interpreter.GetArgInt(0);
  if (flag != 0 && flag != 1) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  Tree().AcceptDrops(hwnd, flag == 1);
}

// A program that doesn't have the class ScrollBar can't be given one.
void CIWindow::GetHorizontalScrollBar() {
  Result().SetObject(horizontalBar && horizontalBar->classInfo ? horizontalBar : nullptr);
}
void CIWindow::GetVerticalScrollBar() {
  Result().SetObject(verticalBar && verticalBar->classInfo ? verticalBar : nullptr);
}

void CIWindow::Flash() {
  if (!parent) Tree().Flash(hwnd, interpreter.GetArgInt(0) != 0);
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

}  // namespace vl
