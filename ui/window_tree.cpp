// WindowTree: the life of windows, their places and states.
#include "ui/window_tree.h"

#include <algorithm>

#include "interpreter/interpretor.h"
#include "ui/window_frame.h"

namespace vl {

namespace {

constexpr uint32_t kRestored = 0;
constexpr uint32_t kMinimized = 1;
constexpr uint32_t kMaximized = 2;

int ClampSide(int side) { return std::clamp(side, 0, limits::kMaxSurfaceSide); }

// Places far outside stay far outside without leaving what coordinates can hold.
int ClampPlace(int place) { return std::clamp(place, -4 * limits::kMaxSurfaceSide, 4 * limits::kMaxSurfaceSide); }

}  // namespace

WindowTree::WindowTree(const Services& services, CThreadParam& param) : services_(services), param_(param) {}

WindowTree::~WindowTree() {
  for (auto& [handle, node] : nodes_) {
    if (node->native && !node->isHost) services_.windows->destroyWindow(node->native);
  }
}

WindowTree& WindowTree::Of(CInterpretor& interpreter) { return static_cast<WindowTree&>(*interpreter.messages); }

WindowNode* WindowTree::Find(WindowHandle window) {
  const auto it = nodes_.find(window);
  return it == nodes_.end() ? nullptr : it->second.get();
}

int32_t WindowTree::Send(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) {
  WindowNode* node = Find(window);
  if (!node) return 0;
  return node->target ? node->target->WindowProcedure(window, message, wParam, lParam)
                      : DefaultProcedure(window, message, wParam, lParam);
}

// --- Life ---

int WindowTree::DepthOf(WindowHandle window) {
  int depth = 0;
  for (WindowNode* node = Find(window); node; node = Find(node->parent)) ++depth;
  return depth;
}

WindowHandle WindowTree::Create(const WindowCreation& creation, CWindowTarget* target) {
  auto made = std::make_unique<WindowNode>();
  WindowNode& node = *made;
  node.handle = next_++;
  node.target = target;
  node.style = creation.style;
  node.exStyle = creation.exStyle;
  node.x = ClampPlace(creation.x);
  node.y = ClampPlace(creation.y);
  if (!creation.inHostWindow) node.borders = FrameBorders(node.style, node.exStyle, false);
  node.width = ClampSide(creation.width - node.borders.left - node.borders.right - node.BarWidth(SB_VERT));
  node.height = ClampSide(creation.height - node.borders.top - node.borders.bottom - node.BarWidth(SB_HORZ));
  node.text = creation.text;
  node.backColour = creation.backColour;
  node.bars[SB_HORZ].maximum = node.bars[SB_VERT].maximum = 100;
  if (creation.inHostWindow) {
    node.native = services_.windows->hostWindow();
    node.isHost = true;
    if (!node.native) return 0;
    topLevels_.insert(topLevels_.begin(), node.handle);
  } else if (WindowNode* parent = Find(creation.parent)) {
    if (DepthOf(creation.parent) >= limits::kMaxWindowNesting) return 0;
    node.parent = creation.parent;
    node.drawsFrame = true;
    parent->children.insert(parent->children.begin(), node.handle);
  } else {
    // A frame without a caption is none of the desktop's.
    node.drawsFrame = !HasCaption(node.style);
    const Size size = node.PictureSize();
    WindowDescription description;
    description.x = node.x + (node.drawsFrame ? 0 : node.borders.left);
    description.y = node.y + (node.drawsFrame ? 0 : node.borders.top);
    description.width = size.width;
    description.height = size.height;
    description.caption = !node.drawsFrame;
    description.resizable = description.caption && (node.style & WS_THICKFRAME) != 0;
    description.tool = (node.exStyle & WS_EX_TOOLWINDOW) != 0;
    description.title = node.text;
    if (WindowNode* owner = Find(TopLevel(creation.owner))) description.owner = owner->native;
    node.native = services_.windows->createWindow(description);
    if (!node.native) return 0;
    topLevels_.insert(topLevels_.begin(), node.handle);
  }
  nodes_.emplace(node.handle, std::move(made));
  return node.handle;
}

void WindowTree::Destroy(WindowHandle window, bool quietly) {
  WindowNode* node = Find(window);
  if (!node) return;
  while ((node = Find(window)) && !node->children.empty()) {
    const WindowHandle child = node->children.front();
    // What lies under it goes too, so nothing needs to be shown there.
    Destroy(child, true);
    // A child whose destruction was refused half way must not hold this loop.
    if ((node = Find(window))) std::erase(node->children, child);
  }
  Send(window, WM_DESTROY);
  node = Find(window);
  if (!node) return;
  if (track_.window == window) track_ = Track{};
  if (focus_ == window) focus_ = 0;
  if (capture_ == window) SetCapture(0);
  if (mainWindow == window) mainWindow = 0;
  std::erase(modalStack, window);
  std::erase(topLevels_, window);
  std::erase_if(queue_, [&](const Queued& q) { return !q.isEvent && q.message.window == window; });
  std::erase_if(timers_, [&](const Timer& t) { return t.window == window; });
  const WindowHandle parentHandle = node->parent;
  const Rect outer = OuterBox(*node);
  const bool wasVisible = node->visible;
  if (node->native && !node->isHost) services_.windows->destroyWindow(node->native);
  if (WindowNode* parent = Find(parentHandle)) std::erase(parent->children, window);
  DropPictures(*node);
  nodes_.erase(window);
  if (quietly) {
    if (active_ == window) active_ = 0;
    return;
  }
  if (wasVisible) DamageParent(parentHandle, outer);
  if (active_ == window) ActivateAnother(window);
}

void WindowTree::ForgetTarget(WindowHandle window) {
  if (WindowNode* node = Find(window)) node->target = nullptr;
}

WindowHandle WindowTree::TopLevel(WindowHandle window) {
  WindowNode* node = Find(window);
  while (node && node->parent) node = Find(node->parent);
  return node ? node->handle : 0;
}

bool WindowTree::IsInside(WindowHandle window, WindowHandle of) {
  for (WindowNode* node = Find(window); node; node = Find(node->parent)) {
    if (node->handle == of) return true;
  }
  return false;
}

// --- Places ---

Rect WindowTree::OuterBox(const WindowNode& node) const {
  const Size outer = node.Outer();
  return {node.x, node.y, node.x + outer.width, node.y + outer.height};
}

Point WindowTree::PictureOrigin(const WindowNode& top) const {
  if (top.drawsFrame) return {top.x, top.y};
  return {top.x + top.borders.left, top.y + top.borders.top};
}

Point WindowTree::ClientOrigin(WindowHandle window) {
  Point origin;
  for (WindowNode* node = Find(window); node; node = Find(node->parent)) {
    origin.x += node->x + node->borders.left;
    origin.y += node->y + node->borders.top;
  }
  return origin;
}

void WindowTree::Place(WindowHandle window, const Rect& outer, uint32_t kind, bool tellPlatform) {
  WindowNode* node = Find(window);
  if (!node) return;
  const Rect before = OuterBox(*node);
  const int x = ClampPlace(outer.left);
  const int y = ClampPlace(outer.top);
  const int w = ClampSide(outer.Width() - node->borders.left - node->borders.right - node->BarWidth(SB_VERT));
  const int h = ClampSide(outer.Height() - node->borders.top - node->borders.bottom - node->BarWidth(SB_HORZ));
  const bool moved = node->x != x || node->y != y;
  const bool sized = node->width != w || node->height != h;
  node->x = x;
  node->y = y;
  node->width = w;
  node->height = h;
  if (sized) node->frameDirty = true;
  if (tellPlatform && node->native && !node->isHost) {
    const Point at = PictureOrigin(*node);
    const Size size = node->PictureSize();
    if (moved) services_.windows->moveWindow(node->native, at.x, at.y);
    if (sized) services_.windows->resizeWindow(node->native, size.width, size.height);
  }
  if (moved) {
    Send(window, WM_MOVE, 0, MakeLParam(x + node->borders.left, y + node->borders.top));
    node = Find(window);
  }
  if (node && (sized || kind != kRestored)) {
    Send(window, WM_SIZE, kind, MakeLParam(node->width, node->height));
    node = Find(window);
  }
  if (!node || (!moved && !sized) || !node->visible) return;
  if (sized) Invalidate(window);
  if (node->parent) {
    DamageParent(node->parent, before);
    DamageOuter(*node);
  }
}

void WindowTree::SetPosition(WindowHandle window, int insertAfter, int x, int y, int width, int height,
                             uint32_t flags) {
  WindowNode* node = Find(window);
  if (!node) return;
  if (!(flags & SWP_NOZORDER)) RaiseInParent(*node, insertAfter);
  Rect outer = OuterBox(*node);
  if (!(flags & SWP_NOMOVE)) outer = {x, y, x + outer.Width(), y + outer.Height()};
  if (!(flags & SWP_NOSIZE)) {
    outer.right = outer.left + std::clamp(width, 0, 2 * limits::kMaxSurfaceSide);
    outer.bottom = outer.top + std::clamp(height, 0, 2 * limits::kMaxSurfaceSide);
  }
  Place(window, outer, kRestored, true);
  node = Find(window);
  const bool activates = !(flags & (SWP_NOACTIVATE | SWP_NOZORDER)) && insertAfter != HWND_BOTTOM;
  // Only among the windows of the run: nothing is taken from other programs of the desktop.
  if (node && activates && !node->parent && node->visible && active_) ActivateTop(window, false);
}

// Topmost windows stay in front of the others.
void WindowTree::RaiseInParent(WindowNode& node, int insertAfter) {
  WindowNode* parent = Find(node.parent);
  auto& siblings = parent ? parent->children : topLevels_;
  if (!parent && (insertAfter == HWND_TOPMOST || insertAfter == HWND_NOTOPMOST)) {
    node.topMost = insertAfter == HWND_TOPMOST;
    if (node.native && !node.isHost) services_.windows->setTopMost(node.native, node.topMost);
  }
  std::erase(siblings, node.handle);
  if (insertAfter == HWND_BOTTOM) {
    if (node.topMost) {
      node.topMost = false;
      if (node.native && !node.isHost) services_.windows->setTopMost(node.native, false);
    }
    siblings.push_back(node.handle);
    if (node.native && !node.isHost) services_.windows->lowerWindow(node.native);
  } else {
    auto at = siblings.begin();
    while (!node.topMost && at != siblings.end() && Find(*at)->topMost) ++at;
    siblings.insert(at, node.handle);
    // Only while the run has the keyboard: nothing is taken from other programs of the desktop.
    if (node.native && !node.isHost && node.visible && active_) services_.windows->raiseWindow(node.native);
  }
  if (parent && node.visible) DamageOuter(node);
}

// --- States ---

void WindowTree::ShowNative(WindowNode& node) {
  if (!node.native || node.isHost) return;
  ShowState state = ShowState::Normal;
  if (!node.visible) {
    state = ShowState::Hidden;
  } else if (node.minimized) {
    state = ShowState::Minimized;
  } else if (node.maximized) {
    state = ShowState::Maximized;
  }
  services_.windows->showWindow(node.native, state);
}

void WindowTree::ChangeState(WindowHandle window, bool minimized, bool maximized) {
  WindowNode* node = Find(window);
  if (!node || (node->minimized == minimized && node->maximized == maximized)) return;
  if (!node->minimized && !node->maximized) node->normal = OuterBox(*node);
  const bool wasChildIcon = node->parent && node->minimized;
  const Rect before = OuterBox(*node);
  node->minimized = minimized;
  node->maximized = maximized;
  node->frameDirty = true;
  if (node->visible) ShowNative(*node);
  if (node->isHost) return;
  if (minimized) {
    if (WindowNode* parent = Find(node->parent)) {
      int slot = 0;
      for (const WindowHandle sibling : parent->children) {
        if (sibling != window && Find(sibling)->minimized) ++slot;
      }
      const int columns = std::max(1, parent->width / kMinimizedWidth);
      const int high = node->borders.top + node->borders.bottom;
      const Point at{slot % columns * kMinimizedWidth, parent->height - (slot / columns + 1) * high};
      Place(window, {at.x, at.y, at.x + kMinimizedWidth, at.y + high}, kMinimized, false);
    } else {
      Send(window, WM_SIZE, kMinimized, MakeLParam(node->width, node->height));
    }
    return;
  }
  if (maximized) {
    const Rect& b = node->borders;
    Rect client;
    if (WindowNode* parent = Find(node->parent)) {
      client = {0, b.top - b.left, parent->width, parent->height};
    } else {
      client = MaximizedClient(Screen(), node->drawsFrame ? 0 : b.top - b.left);
    }
    Place(window, {client.left - b.left, client.top - b.top, client.right + b.right, client.bottom + b.bottom},
          kMaximized, false);
    return;
  }
  Place(window, wasChildIcon || node->normal != before ? node->normal : before, kRestored, false);
}

void WindowTree::Show(WindowHandle window, uint32_t command) {
  WindowNode* node = Find(window);
  if (!node) return;
  constexpr uint32_t kShowNoActivate = 4;
  constexpr uint32_t kShowUnchangedNoActivate = 8;
  const bool wasVisible = node->visible;
  node->visible = command != SW_HIDE;
  bool activates = node->visible && command != kShowNoActivate && command != kShowUnchangedNoActivate;
  if (!node->visible && wasVisible) DamageParent(node->parent, OuterBox(*node));
  bool minimized = node->minimized;
  bool maximized = node->maximized;
  switch (command) {
    case SW_SHOWMINIMIZED:
    case SW_MINIMIZE:
    case SW_SHOWMINNOACTIVE:
      minimized = true;
      activates = false;
      break;
    case SW_SHOWMAXIMIZED:
      minimized = false;
      maximized = true;
      break;
    case SW_SHOWNORMAL:
    case kShowNoActivate:
    case SW_RESTORE:
      // What was maximised before it was minimised is so again.
      if (!minimized) maximized = false;
      minimized = false;
      break;
    default:
      break;
  }
  const bool stateChanges = minimized != node->minimized || maximized != node->maximized;
  if (node->visible != wasVisible) {
    if (!stateChanges) ShowNative(*node);
    Send(window, WM_SHOWWINDOW, node->visible ? 1 : 0);
  }
  if (stateChanges) ChangeState(window, minimized, maximized);
  node = Find(window);
  if (!node) return;
  if (node->visible && !wasVisible) {
    Invalidate(window);
    DamageOuter(*node);
  }
  if (activates && !node->parent) {
    ActivateTop(window, false);
  } else if (!node->visible || node->minimized) {
    if (!node->parent && active_ == window) {
      ActivateAnother(window);
    } else if (node->parent && IsInside(focus_, window)) {
      SetFocus(node->parent);
    }
  }
}

void WindowTree::SetStyle(WindowHandle window, uint32_t style, uint32_t exStyle) {
  WindowNode* node = Find(window);
  if (!node || (node->style == style && node->exStyle == exStyle)) return;
  const Rect outer = OuterBox(*node);
  node->style = style;
  node->exStyle = exStyle;
  node->frameDirty = true;
  if (node->drawsFrame) node->borders = FrameBorders(style, exStyle, false);
  Place(window, outer, kRestored, false);
}

void WindowTree::SetText(WindowHandle window, const std::string& text) {
  WindowNode* node = Find(window);
  if (!node || node->text == text) return;
  node->text = text;
  if (node->native) services_.windows->setTitle(node->native, text);
  if (node->drawsFrame && HasCaption(node->style)) RedrawFrame(window);
}

void WindowTree::Enable(WindowHandle window, bool enabled) {
  WindowNode* node = Find(window);
  if (!node || node->enabled == enabled) return;
  node->enabled = enabled;
  Send(window, WM_ENABLE, enabled ? 1 : 0);
}

bool WindowTree::IsEnabled(WindowHandle window) {
  const WindowNode* node = Find(window);
  return node && node->enabled;
}

bool WindowTree::IsVisible(WindowHandle window) {
  const WindowNode* node = Find(window);
  if (!node) return false;
  for (; node; node = Find(node->parent)) {
    if (!node->visible) return false;
  }
  return true;
}

void WindowTree::SetSizeLimits(WindowHandle window, Size least, Size most) {
  WindowNode* node = Find(window);
  if (!node || !node->native || node->isHost) return;
  const Size outer = node->Outer();
  const Size picture = node->PictureSize();
  const auto inner = [](int limit, int frame) { return limit > 0 ? std::max(1, limit - frame) : 0; };
  const int across = outer.width - picture.width;
  const int down = outer.height - picture.height;
  services_.windows->setSizeLimits(node->native, {inner(least.width, across), inner(least.height, down)},
                                   {inner(most.width, across), inner(most.height, down)});
}

void WindowTree::EnableClose(WindowHandle window, bool enabled) {
  WindowNode* node = Find(window);
  if (!node) return;
  node->closeEnabled = enabled;
  if (node->native && !node->isHost) services_.windows->enableClose(node->native, enabled);
  RedrawFrame(window);
}

void WindowTree::AcceptDrops(WindowHandle window, bool accepted) {
  WindowNode* node = Find(window);
  if (!node) return;
  node->acceptsDrops = accepted;
  bool any = false;
  const WindowHandle top = TopLevel(window);
  for (const auto& [handle, other] : nodes_) any = any || (other->acceptsDrops && TopLevel(handle) == top);
  services_.windows->acceptDrops(Find(top)->native, any);
}

void WindowTree::Flash(WindowHandle window, bool flashing) {
  WindowNode* node = Find(window);
  if (node && node->native && !node->isHost) services_.windows->flashWindow(node->native, flashing);
}

void WindowTree::SetIcon(WindowHandle window, const WindowPicture& picture) {
  WindowNode* node = Find(window);
  if (!node) return;
  constexpr int kSmallIcon = 16;
  if (picture.width == kSmallIcon) node->icon = picture;
  if (node->native && !node->isHost) services_.windows->setIcon(node->native, picture);
  RedrawFrame(window);
}

}  // namespace vl
