#include "ui/window_tree.h"

#include <algorithm>

#include "base/system_colors.h"
#include "gfx2d/colour.h"
#include "gfx2d/present.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {

// A flood of platform events must not fill the memory: moves beyond this are dropped.
constexpr size_t kMaxQueued = 4096;

constexpr uint32_t kActivated = 1;

uint32_t ButtonMessage(int32_t button, bool down, bool twice) {
  switch (button) {
    case kMouseMiddle:
      return down ? (twice ? WM_MBUTTONDBLCLK : WM_MBUTTONDOWN) : WM_MBUTTONUP;
    case kMouseRight:
      return down ? (twice ? WM_RBUTTONDBLCLK : WM_RBUTTONDOWN) : WM_RBUTTONUP;
    default:
      return down ? (twice ? WM_LBUTTONDBLCLK : WM_LBUTTONDOWN) : WM_LBUTTONUP;
  }
}

// wParam of mouse messages: the buttons and keys that are down.
uint32_t MouseKeys(int32_t mods) {
  return ((mods & kModLeftButton) ? 1u : 0u) | ((mods & kModRightButton) ? 2u : 0u) | ((mods & kModShift) ? 4u : 0u) |
         ((mods & kModControl) ? 8u : 0u) | ((mods & kModMiddleButton) ? 16u : 0u);
}

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

// --- Messages ---

bool WindowTree::HasMessage() {
  TakeEvents(0);
  if (!queue_.empty()) return true;
  return std::any_of(nodes_.begin(), nodes_.end(),
                     [](const auto& entry) { return entry.second->visible && !entry.second->update.IsEmpty(); });
}

bool WindowTree::Get(CMessage& message) {
  if (!queue_.empty()) {
    message = queue_.front();
    queue_.pop_front();
    return true;
  }
  // Paint comes last: it gathers what all other messages made stale.
  for (const auto& [handle, node] : nodes_) {
    if (node->visible && !node->update.IsEmpty()) {
      message = CMessage{handle, WM_PAINT, 0, 0, services_.clock->nowMs()};
      return true;
    }
  }
  return false;
}

void WindowTree::Dispatch(const CMessage& message) {
  WindowNode* node = Find(message.window);
  if (!node) return;
  Send(message.window, message.message, message.wParam, message.lParam);
  if (message.message == WM_PAINT) {
    // A target that didn't paint must not be asked for ever.
    if (WindowNode* painted = Find(message.window)) painted->update = Rect{};
  }
}

void WindowTree::WaitForMessage(int timeoutMs) {
  if (queue_.empty()) TakeEvents(timeoutMs);
}

void WindowTree::TakeEvents(int timeoutMs) {
  Event event;
  while (services_.events->waitEvent(event, timeoutMs)) {
    Translate(event);
    timeoutMs = 0;
  }
}

void WindowTree::CloseMainWindow() {
  if (Find(mainWindow)) Send(mainWindow, WM_CLOSE);
}

int32_t WindowTree::Send(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) {
  WindowNode* node = Find(window);
  return node && node->target ? node->target->WindowProcedure(window, message, wParam, lParam) : 0;
}

void WindowTree::Post(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) {
  if (queue_.size() >= kMaxQueued) {
    if (message == WM_MOUSEMOVE) return;
    const auto move =
        std::find_if(queue_.begin(), queue_.end(), [](const CMessage& m) { return m.message == WM_MOUSEMOVE; });
    if (move == queue_.end()) return;
    queue_.erase(move);
  }
  queue_.push_back({window, message, wParam, lParam, services_.clock->nowMs()});
}

WindowHandle WindowTree::OfNative(NativeWindow native) {
  for (const WindowHandle top : topLevels_) {
    if (nodes_[top]->native == native) return top;
  }
  // Events without a window are for the one in front.
  if (native == 0 && !topLevels_.empty()) return topLevels_.front();
  return 0;
}

void WindowTree::Translate(const Event& event) {
  if (event.type == EventType::HostStop) {
    // In this order: the window goes, as a person would see it, then the walk ends.
    CloseMainWindow();
    param_.stop.store(true);
    return;
  }
  const WindowHandle window = OfNative(event.window);
  WindowNode* node = Find(window);
  if (!node) return;
  switch (event.type) {
    case EventType::MouseMove:
    case EventType::MouseDown:
    case EventType::MouseUp:
    case EventType::MouseWheel:
      TranslateMouse(event);
      return;
    case EventType::KeyDown:
      Post(focus_ ? focus_ : window, WM_KEYDOWN, static_cast<uint32_t>(event.code));
      return;
    case EventType::KeyUp:
      Post(focus_ ? focus_ : window, WM_KEYUP, static_cast<uint32_t>(event.code));
      return;
    case EventType::Char:
      Post(focus_ ? focus_ : window, WM_CHAR, static_cast<uint32_t>(event.ch) & 0xFF);
      return;
    case EventType::Close:
      Post(window, WM_SYSCOMMAND, SC_CLOSE);
      return;
    case EventType::Resize:
      if (event.x > 0 && event.y > 0) {
        node->width = event.x;
        node->height = event.y;
        node->minimized = false;
        Post(window, WM_SIZE, node->maximized ? 2 : 0, MakeLParam(event.x, event.y));
        Invalidate(window);
      }
      return;
    case EventType::Move:
      node->x = event.x - node->borders.left;
      node->y = event.y - node->borders.top;
      Post(window, WM_MOVE, 0, MakeLParam(event.x, event.y));
      return;
    case EventType::Focus:
      Activate(window);
      SetFocus(focus_ && TopLevel(focus_) == window ? focus_ : window);
      return;
    case EventType::Blur:
      if (focus_ && TopLevel(focus_) == window) {
        Post(focus_, WM_KILLFOCUS);
        focus_ = 0;
      }
      Post(window, WM_ACTIVATE, 0);
      return;
    case EventType::Expose:
      Invalidate(window);
      return;
    case EventType::Minimize:
      node->minimized = true;
      Post(window, WM_SYSCOMMAND, SC_MINIMIZE);
      return;
    case EventType::Maximize:
      node->maximized = true;
      Post(window, WM_SYSCOMMAND, SC_MAXIMIZE);
      return;
    case EventType::Restore:
      node->minimized = node->maximized = false;
      return;
    case EventType::DropFile:
      Post(window, WM_DROPFILES, event.id, MakeLParam(event.x, event.y));
      return;
    default:
      return;
  }
}

void WindowTree::TranslateMouse(const Event& event) {
  WindowHandle window = OfNative(event.window);
  const Point origin = ClientOrigin(window);
  mouse_ = {origin.x + event.x, origin.y + event.y};
  int x = event.x;
  int y = event.y;
  if (Find(capture_)) {
    const Point captured = ClientOrigin(capture_);
    x = mouse_.x - captured.x;
    y = mouse_.y - captured.y;
    window = capture_;
  } else {
    window = HitTest(window, x, y);
  }
  const uint32_t keys = MouseKeys(event.mods);
  switch (event.type) {
    case EventType::MouseMove:
      Post(window, WM_MOUSEMOVE, keys, MakeLParam(x, y));
      return;
    case EventType::MouseDown:
      Post(window, WM_MOUSEACTIVATE);
      if (focus_ != window && IsEnabled(window)) SetFocus(window);
      Post(window, ButtonMessage(event.code, true, event.ch == 2), keys, MakeLParam(x, y));
      return;
    case EventType::MouseUp:
      Post(window, ButtonMessage(event.code, false, false), keys, MakeLParam(x, y));
      return;
    default:
      Post(focus_ ? focus_ : window, WM_MOUSEWHEEL, static_cast<uint32_t>(event.code) << 16 | keys, MakeLParam(x, y));
      return;
  }
}

WindowHandle WindowTree::HitTest(WindowHandle window, int& x, int& y) {
  WindowNode* node = Find(window);
  for (bool deeper = node != nullptr; deeper;) {
    deeper = false;
    for (const WindowHandle child : node->children) {
      WindowNode* c = Find(child);
      const Rect client{c->x + c->borders.left, c->y + c->borders.top, c->x + c->borders.left + c->width,
                        c->y + c->borders.top + c->height};
      if (!c->visible || !c->enabled || !client.Contains(x, y)) continue;
      x -= client.left;
      y -= client.top;
      node = c;
      deeper = true;
      break;
    }
  }
  return node ? node->handle : 0;
}

// --- Windows ---

WindowHandle WindowTree::Create(const WindowCreation& creation, CWindowTarget* target) {
  auto node = std::make_unique<WindowNode>();
  node->handle = next_++;
  node->target = target;
  node->style = creation.style;
  node->exStyle = creation.exStyle;
  node->x = creation.x;
  node->y = creation.y;
  node->width = std::clamp(creation.width, 0, limits::kMaxSurfaceSide);
  node->height = std::clamp(creation.height, 0, limits::kMaxSurfaceSide);
  node->borders = creation.borders;
  node->text = creation.text;
  const WindowHandle handle = node->handle;
  if (creation.inHostWindow) {
    node->native = services_.windows->hostWindow();
    node->isHost = true;
    if (!node->native) return 0;
    topLevels_.insert(topLevels_.begin(), handle);
  } else if (WindowNode* parent = Find(creation.parent)) {
    node->parent = creation.parent;
    parent->children.insert(parent->children.begin(), handle);
  } else {
    WindowDescription description;
    description.x = node->x + node->borders.left;
    description.y = node->y + node->borders.top;
    description.width = node->width;
    description.height = node->height;
    description.caption = (node->style & WS_CAPTION) == WS_CAPTION;
    description.resizable = (node->style & WS_THICKFRAME) != 0;
    description.title = node->text;
    node->native = services_.windows->createWindow(description);
    if (!node->native) return 0;
    topLevels_.insert(topLevels_.begin(), handle);
  }
  nodes_.emplace(handle, std::move(node));
  return handle;
}

void WindowTree::Destroy(WindowHandle window) {
  WindowNode* node = Find(window);
  if (!node) return;
  while ((node = Find(window)) && !node->children.empty()) {
    const WindowHandle child = node->children.front();
    Destroy(child);
    // A child whose destruction was refused half way must not hold this loop.
    if ((node = Find(window))) std::erase(node->children, child);
  }
  Send(window, WM_DESTROY);
  node = Find(window);
  if (!node) return;
  if (focus_ == window) focus_ = 0;
  if (capture_ == window) capture_ = 0;
  if (active_ == window) active_ = 0;
  if (mainWindow == window) mainWindow = 0;
  std::erase(modalStack, window);
  std::erase(topLevels_, window);
  std::erase_if(queue_, [&](const CMessage& m) { return m.window == window; });
  const WindowHandle parentHandle = node->parent;
  if (WindowNode* parent = Find(parentHandle)) {
    std::erase(parent->children, window);
    parent->update = Rect{0, 0, parent->width, parent->height};
  }
  if (node->native && !node->isHost) services_.windows->destroyWindow(node->native);
  nodes_.erase(window);
  if (!active_ && !topLevels_.empty()) active_ = topLevels_.front();
}

void WindowTree::ForgetTarget(WindowHandle window) {
  if (WindowNode* node = Find(window)) node->target = nullptr;
}

WindowHandle WindowTree::TopLevel(WindowHandle window) {
  WindowNode* node = Find(window);
  while (node && node->parent) node = Find(node->parent);
  return node ? node->handle : 0;
}

Point WindowTree::ClientOrigin(WindowHandle window) {
  Point origin;
  for (WindowNode* node = Find(window); node; node = Find(node->parent)) {
    origin.x += node->x + node->borders.left;
    origin.y += node->y + node->borders.top;
  }
  return origin;
}

void WindowTree::Show(WindowHandle window, uint32_t command) {
  WindowNode* node = Find(window);
  if (!node) return;
  const bool wasVisible = node->visible;
  node->visible = command != SW_HIDE;
  if (command == SW_MINIMIZE) node->minimized = true;
  if (command == SW_SHOWMAXIMIZED) node->maximized = true;
  if (command == SW_RESTORE || command == SW_SHOWNORMAL) node->minimized = node->maximized = false;
  if (node->native && !node->isHost) {
    ShowState state = ShowState::Normal;
    if (!node->visible) {
      state = ShowState::Hidden;
    } else if (node->minimized) {
      state = ShowState::Minimized;
    } else if (node->maximized) {
      state = ShowState::Maximized;
    }
    services_.windows->showWindow(node->native, state);
  }
  if (node->visible != wasVisible) {
    Send(window, WM_SHOWWINDOW, node->visible ? 1 : 0);
    node = Find(window);
    if (!node) return;
  }
  if (node->visible) {
    Invalidate(window);
  } else if (WindowNode* parent = Find(node->parent)) {
    Invalidate(parent->handle);
  }
}

void WindowTree::RaiseInParent(WindowNode& node, int insertAfter) {
  WindowNode* parent = Find(node.parent);
  auto& siblings = parent ? parent->children : topLevels_;
  std::erase(siblings, node.handle);
  if (insertAfter == HWND_BOTTOM) {
    siblings.push_back(node.handle);
  } else {
    siblings.insert(siblings.begin(), node.handle);
    if (node.native && !node.isHost) services_.windows->raiseWindow(node.native);
  }
  if (parent) Invalidate(parent->handle);
}

void WindowTree::SetPosition(WindowHandle window, int insertAfter, int x, int y, int width, int height,
                             uint32_t flags) {
  WindowNode* node = Find(window);
  if (!node) return;
  if (!(flags & SWP_NOZORDER)) RaiseInParent(*node, insertAfter);
  bool moved = false;
  bool sized = false;
  if (!(flags & SWP_NOMOVE)) {
    moved = node->x != x || node->y != y;
    node->x = x;
    node->y = y;
    if (node->native && !node->isHost) {
      services_.windows->moveWindow(node->native, x + node->borders.left, y + node->borders.top);
    }
  }
  if (!(flags & SWP_NOSIZE)) {
    const int newWidth = std::clamp(width - node->borders.left - node->borders.right, 0, limits::kMaxSurfaceSide);
    const int newHeight = std::clamp(height - node->borders.top - node->borders.bottom, 0, limits::kMaxSurfaceSide);
    sized = newWidth != node->width || newHeight != node->height;
    node->width = newWidth;
    node->height = newHeight;
    if (node->native && !node->isHost) services_.windows->resizeWindow(node->native, newWidth, newHeight);
  }
  if (moved) {
    Send(window, WM_MOVE, 0, MakeLParam(node->x + node->borders.left, node->y + node->borders.top));
    node = Find(window);
  }
  if (node && sized) {
    Send(window, WM_SIZE, 0, MakeLParam(node->width, node->height));
    node = Find(window);
  }
  if (node && (moved || sized)) Invalidate(node->parent ? node->parent : window);
}

void WindowTree::SetText(WindowHandle window, const std::string& text) {
  WindowNode* node = Find(window);
  if (!node) return;
  node->text = text;
  if (node->native) services_.windows->setTitle(node->native, text);
}

void WindowTree::SetCursor(WindowHandle window, CursorShape shape) {
  WindowNode* node = Find(window);
  if (!node) return;
  node->cursor = shape;
  if (node->native) services_.windows->setCursor(node->native, shape);
}

void WindowTree::Enable(WindowHandle window, bool enabled) {
  if (WindowNode* node = Find(window)) node->enabled = enabled;
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

Rect WindowTree::BordersFor(uint32_t style) const {
  WindowDescription description;
  description.caption = (style & WS_CAPTION) == WS_CAPTION;
  description.resizable = (style & WS_THICKFRAME) != 0;
  return services_.windows->frameBorders(description);
}

void WindowTree::Activate(WindowHandle window) {
  if (active_ == window) return;
  if (active_) Post(active_, WM_ACTIVATE, 0);
  active_ = window;
  std::erase(topLevels_, window);
  topLevels_.insert(topLevels_.begin(), window);
  Post(window, WM_ACTIVATE, kActivated);
}

void WindowTree::SetFocus(WindowHandle window) {
  if (focus_ == window || !Find(window)) return;
  if (focus_) Post(focus_, WM_KILLFOCUS);
  focus_ = window;
  const WindowHandle top = TopLevel(window);
  if (top != active_) Activate(top);
  Post(window, WM_SETFOCUS);
}

// --- Painting ---

void WindowTree::Invalidate(WindowHandle window) {
  WindowNode* node = Find(window);
  if (node && node->visible) node->update = Rect{0, 0, node->width, node->height};
}

void WindowTree::EnsurePicture(WindowNode& top) {
  if (top.pictureWidth == top.width && top.pictureHeight == top.height) return;
  top.picture.assign(static_cast<size_t>(top.width) * static_cast<size_t>(top.height),
                     SwapRedBlue(top.backColour) & 0xFFFFFF);
  top.pictureWidth = top.width;
  top.pictureHeight = top.height;
}

bool WindowTree::VisibleBox(WindowHandle window, WindowHandle& top, Point& offset, Rect& box) {
  WindowNode* node = Find(window);
  if (!node) return false;
  box = Rect{0, 0, node->width, node->height};
  offset = Point{};
  for (; node; node = Find(node->parent)) {
    if (!node->visible) return false;
    top = node->handle;
    if (!node->parent) break;
    const int dx = node->x + node->borders.left;
    const int dy = node->y + node->borders.top;
    offset.x += dx;
    offset.y += dy;
    const WindowNode* parent = Find(node->parent);
    // The box in client coordinates of the first window, cut by each parent's client area.
    box = box.Intersect(Rect{-offset.x, -offset.y, parent->width - offset.x, parent->height - offset.y});
  }
  return !box.IsEmpty();
}

void WindowTree::Paint(WindowHandle window, const cSurface& surface, std::span<const Rect> dirty) {
  WindowHandle topHandle = 0;
  Point offset;
  Rect visible;
  if (!VisibleBox(window, topHandle, offset, visible)) return;
  WindowNode& top = *Find(topHandle);
  WindowNode& node = *Find(window);
  EnsurePicture(top);
  visible = visible.Intersect(Rect{0, 0, surface.impl->width, surface.impl->height});
  std::vector<Rect> shown;
  for (const Rect& rect : dirty) {
    const Rect box = rect.Intersect(visible);
    if (box.IsEmpty()) continue;
    const Rect target{box.left + offset.x, box.top + offset.y, box.right + offset.x, box.bottom + offset.y};
    SurfaceToWords(*surface.impl, box,
                   top.picture.data() + static_cast<ptrdiff_t>(target.top) * top.pictureWidth + target.left,
                   top.pictureWidth);
    shown.push_back(target);
    // Children lie over what was painted.
    RepaintBelow(node, box);
  }
  if (shown.empty()) return;
  RepaintAbove(node);
  Present(top, shown);
}

void WindowTree::PaintBackground(WindowHandle window, std::span<const Rect> dirty) {
  WindowHandle topHandle = 0;
  Point offset;
  Rect visible;
  if (!VisibleBox(window, topHandle, offset, visible)) return;
  WindowNode& top = *Find(topHandle);
  WindowNode& node = *Find(window);
  EnsurePicture(top);
  const uint32_t colour = SwapRedBlue(node.backColour) & 0xFFFFFF;
  std::vector<Rect> shown;
  for (const Rect& rect : dirty) {
    const Rect box = rect.Intersect(visible);
    if (box.IsEmpty()) continue;
    for (int y = box.top; y < box.bottom; ++y) {
      uint32_t* line = top.picture.data() + static_cast<ptrdiff_t>(y + offset.y) * top.pictureWidth + offset.x;
      std::fill(line + box.left, line + box.right, colour);
    }
    shown.push_back({box.left + offset.x, box.top + offset.y, box.right + offset.x, box.bottom + offset.y});
    RepaintBelow(node, box);
  }
  if (shown.empty()) return;
  RepaintAbove(node);
  Present(top, shown);
}

void WindowTree::RepaintBelow(WindowNode& node, const Rect& box) {
  for (auto it = node.children.rbegin(); it != node.children.rend(); ++it) {
    WindowNode* child = Find(*it);
    if (!child->visible) continue;
    const int dx = child->x + child->borders.left;
    const int dy = child->y + child->borders.top;
    const Rect covered = box.Intersect(Rect{dx, dy, dx + child->width, dy + child->height});
    if (!covered.IsEmpty()) Invalidate(child->handle);
  }
}

// Siblings above the window, and above its parents, lie over what was painted.
void WindowTree::RepaintAbove(WindowNode& painted) {
  for (WindowNode* node = &painted; node->parent; node = Find(node->parent)) {
    for (const WindowHandle sibling : Find(node->parent)->children) {
      if (sibling == node->handle) break;
      Invalidate(sibling);
    }
  }
}

void WindowTree::Present(WindowNode& top, std::span<const Rect> dirty) {
  services_.windows->present(top.native, top.picture.data(), top.pictureWidth, top.pictureHeight, top.pictureWidth,
                             dirty);
}

// --- Capture ---

namespace {

constexpr uint32_t kDesktopColor = 1;

// Copies what both pictures have of `from`, which lies at (x, y) of `to`.
void CopyPicture(const std::vector<uint32_t>& from, Size fromSize, int x, int y, CapturedPicture& to) {
  const Rect box =
      Rect{x, y, x + fromSize.width, y + fromSize.height}.Intersect(Rect{0, 0, to.size.width, to.size.height});
  for (int line = box.top; line < box.bottom; ++line) {
    const uint32_t* source = from.data() + ptrdiff_t{line - y} * fromSize.width + (box.left - x);
    std::copy_n(source, box.Width(), to.words.data() + ptrdiff_t{line} * to.size.width + box.left);
  }
}

bool MakePicture(CapturedPicture& picture, int width, int height, uint32_t colour) {
  if (width < 1 || height < 1) return false;
  picture.size = {width, height};
  picture.words.assign(static_cast<size_t>(width) * static_cast<size_t>(height), colour);
  return true;
}

}  // namespace

bool WindowTree::CaptureClient(WindowHandle window, CapturedPicture& picture) {
  WindowHandle topHandle = 0;
  Point offset;
  Rect visible;
  if (!VisibleBox(window, topHandle, offset, visible)) return false;
  WindowNode& top = *Find(topHandle);
  const WindowNode& node = *Find(window);
  EnsurePicture(top);
  if (!MakePicture(picture, node.width, node.height, SwapRedBlue(node.backColour))) return false;
  CopyPicture(top.picture, {top.pictureWidth, top.pictureHeight}, -offset.x, -offset.y, picture);
  return true;
}

bool WindowTree::CaptureScreen(CapturedPicture& picture) {
  const ScreenInfo screen = Screen();
  if (!MakePicture(picture, screen.width, screen.height, SwapRedBlue(SystemColor(kDesktopColor)))) return false;
  for (auto it = topLevels_.rbegin(); it != topLevels_.rend(); ++it) {
    WindowNode& top = *Find(*it);
    if (!top.visible || top.minimized) continue;
    EnsurePicture(top);
    const Point origin = ClientOrigin(top.handle);
    CopyPicture(top.picture, {top.pictureWidth, top.pictureHeight}, origin.x, origin.y, picture);
  }
  return true;
}

}  // namespace vl
