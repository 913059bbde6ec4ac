#include "ui/window_class.h"

#include <algorithm>

#include "base/system_colors.h"
#include "gfx2d/colour.h"
#include "ui/scroll_bar_class.h"
#include "ui/window_frame.h"

namespace vl {

namespace {

constexpr uint32_t kWindowBits[] = {kAttrGame,      kAttrDialog,      kAttrResizable,   kAttrTool,      kAttrMessageBox,
                                    kAttrStandard,  kAttrMaximized,   kAttrNoSurface,   kAttrFakeChild, kAttrNoSysMenu,
                                    kAttrNoCaption, kAttrMinimizeBox, kAttrMaximizeBox, kAttrMinimized};
constexpr AttributeFamily kWindowFamily = {0xAAD00000, kWindowBits};
constexpr uint32_t kWindowArguments = kArgSizeFirst | 0xFFFF;
constexpr uint32_t kButtonFace = 15;
constexpr int64_t kMissing = -1;

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
    const Rect borders = FrameBorders(style, exStyle, false);
    borderLeft = borders.left;
    borderTop = borders.top;
    borderRight = borders.right;
    borderBottom = borders.bottom;
    if (x == kDefaultInt) x = (screen.width - width) / 2;
    if (y == kDefaultInt) y = (screen.height - height) / 2;
  }
  uint32_t flags = kCreateLinked;
  if (!(attrs & kAttrFakeChild)) flags |= kCreateInParent;
  if (inHostWindow) flags |= kCreateInHost;
  if (!CreateChild(flags)) interpreter.RaiseError(ERR_SECOND_WINDOW);
  ownsWindow = !inHostWindow;
  if (!parent && !interpreter.mainWindow) {
    interpreter.mainWindow = this;
    Tree().mainWindow = hwnd;
  }
  if (depth == kDefaultInt || depth == 0) depth = screen.depth;
  if (!(attrs & kAttrNoSurface)) {
    // Bars take their room from the client area.
    const WindowNode& node = *Tree().Find(hwnd);
    const int clientWidth = node.width ? node.width : width;
    const int clientHeight = node.height ? node.height : height;
    surface =
        CISurface::CreateForWindow(interpreter, *this, std::max(clientWidth, 1), std::max(clientHeight, 1), depth);
    if (!surface) interpreter.RaiseError(ERR_MEMORY);
    surface->Hold();
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
    CIChildWindow::Refresh();
  }
  if (const WindowNode* node = Tree().Find(hwnd); node && (attrs & kAttrMaximized)) {
    Tree().Send(hwnd, WM_SIZE, 2, MakeLParam(node->width, node->height));
  }
  Tree().Invalidate(hwnd);
  if (Tree().IsVisible(hwnd)) {
    if (!(style & WS_CHILD) && !(attrs & kAttrMinimized)) {
      Tree().Activate(hwnd);
    } else {
      Tree().Post(hwnd, WM_ACTIVATE, 1);
    }
  }
  if (style & WS_HSCROLL) horizontalBar = CIScrollBar::ForWindow(*this, SB_HORZ);
  if (style & WS_VSCROLL) verticalBar = CIScrollBar::ForWindow(*this, SB_VERT);
}

void CIWindow::Destroy(bool final) {
  if (interpreter.currentWindow == this) interpreter.currentWindow = nullptr;
  if (interpreter.mainWindow == this) interpreter.mainWindow = nullptr;
  LeaveModal();
  if (hwnd && Tree().Capture() == hwnd) Tree().SetCapture(0);
  inputActive_ = false;
  DropBars(final);
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
    owned->Unhold();
    interpreter.DestroyObject(owned, final);
  }
  hooks_.clear();
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

void CIWindow::DropBars(bool final) {
  for (CIScrollBar** bar : {&horizontalBar, &verticalBar}) {
    CIScrollBar* owned = *bar;
    *bar = nullptr;
    if (owned) interpreter.DestroyObject(owned, final);
  }
}

CIChildWindow* CIWindow::FirstTabChild() {
  const auto found = std::find_if(children.begin(), children.end(), [](CIChildWindow* c) { return c->TakesTab(); });
  return found == children.end() ? nullptr : *found;
}

CIChildWindow* CIWindow::LastTabChild() {
  const auto found = std::find_if(children.rbegin(), children.rend(), [](CIChildWindow* c) { return c->TakesTab(); });
  return found == children.rend() ? nullptr : *found;
}

CIChildWindow* CIWindow::NextTabChild(CIChildWindow* from) {
  const auto at = std::find(children.begin(), children.end(), from);
  const auto behind = at == children.end() ? at : at + 1;
  const auto found = std::find_if(behind, children.end(), [](CIChildWindow* c) { return c->TakesTab(); });
  return found == children.end() ? FirstTabChild() : *found;
}

CIChildWindow* CIWindow::PreviousTabChild(CIChildWindow* from) {
  const auto at = std::find(children.rbegin(), children.rend(), from);
  const auto before = at == children.rend() ? at : at + 1;
  const auto found = std::find_if(before, children.rend(), [](CIChildWindow* c) { return c->TakesTab(); });
  return found == children.rend() ? LastTabChild() : *found;
}

void CIWindow::LeaveModal() {
  if (!modal) return;
  std::erase(Tree().modalStack, hwnd);
  modal = false;
  if (parent && parent->Handle()) Tree().Activate(parent->hwnd);
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

}  // namespace vl
