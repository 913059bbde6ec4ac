// WindowTree: platform events become messages, and the queue from which the run loop takes them.
#include <algorithm>

#include "interpreter/interpretor.h"
#include "ui/window_frame.h"
#include "ui/window_tree.h"

namespace vl {

namespace {

// A flood of platform events must not fill the memory: moves beyond this are dropped.
constexpr size_t kMaxQueued = 4096;
constexpr uint32_t kNonClient = WM_MOUSEMOVE - WM_NCMOUSEMOVE;

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

Rect Moved(const Rect& box, int dx, int dy) { return {box.left + dx, box.top + dy, box.right + dx, box.bottom + dy}; }

bool IsLater(uint32_t dueMs, uint32_t nowMs) { return static_cast<int32_t>(dueMs - nowMs) > 0; }

}  // namespace

// --- The queue ---

bool WindowTree::HasMessage() {
  TakeEvents(0);
  if (!queue_.empty() || NextTimerMs() == 0) return true;
  if (!mayPaint_) return false;
  mayPaint_ = std::any_of(nodes_.begin(), nodes_.end(),
                          [&](const auto& entry) { return !entry.second->update.IsEmpty() && IsVisible(entry.first); });
  return mayPaint_;
}

bool WindowTree::Get(CMessage& message) {
  while (!queue_.empty()) {
    const Queued queued = queue_.front();
    queue_.pop_front();
    if (!queued.isEvent) {
      message = queued.message;
      return true;
    }
    message = CMessage{};
    message.timeMs = queued.message.timeMs;
    if (Translate(queued.event, message) && Find(message.window)) return true;
  }
  // Paint comes last but for timers: it gathers what all other messages made stale.
  for (const auto& [handle, node] : nodes_) {
    if (!node->update.IsEmpty() && IsVisible(handle)) {
      message = CMessage{handle, WM_PAINT, 0, 0, services_.clock->nowMs()};
      return true;
    }
  }
  mayPaint_ = false;
  return DueTimer(message);
}

void WindowTree::Dispatch(const CMessage& message) {
  if (!Find(message.window)) return;
  Send(message.window, message.message, message.wParam, message.lParam);
  if (message.message != WM_PAINT) return;
  // A target that didn't paint must not be asked for ever.
  if (WindowNode* painted = Find(message.window)) painted->update = Rect{};
}

void WindowTree::WaitForMessage(int timeoutMs) {
  if (!queue_.empty()) return;
  const uint32_t timer = NextTimerMs();
  if (timeoutMs < 0 || timer < static_cast<uint32_t>(timeoutMs)) {
    timeoutMs = timer > INT32_MAX ? timeoutMs : static_cast<int>(timer);
  }
  TakeEvents(timeoutMs);
}

void WindowTree::TakeEvents(int timeoutMs) {
  Event event;
  while (services_.events->waitEvent(event, timeoutMs)) {
    timeoutMs = 0;
    if (event.type != EventType::HostStop) {
      Enqueue({{}, event, true});
      continue;
    }
    // In this order: the window goes, as a person would see it, then the walk ends.
    CloseMainWindow();
    param_.stop.store(true);
  }
}

void WindowTree::CloseMainWindow() {
  if (Find(mainWindow)) Send(mainWindow, WM_CLOSE);
}

void WindowTree::Enqueue(Queued queued) {
  if (queue_.size() >= kMaxQueued) {
    const auto isMove = [](const Queued& q) { return q.isEvent && q.event.type == EventType::MouseMove; };
    if (isMove(queued)) return;
    const auto move = std::find_if(queue_.begin(), queue_.end(), isMove);
    if (move == queue_.end()) return;
    queue_.erase(move);
  }
  queued.message.timeMs = services_.clock->nowMs();
  queue_.push_back(queued);
}

void WindowTree::Post(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) {
  Enqueue({{window, message, wParam, lParam, 0}, Event{}, false});
}

// --- Timers ---

void WindowTree::SetTimer(WindowHandle window, uint32_t id, uint32_t intervalMs) {
  KillTimer(window, id);
  constexpr uint32_t kShortest = 10;
  const uint32_t interval = std::clamp<uint32_t>(intervalMs, kShortest, INT32_MAX);
  timers_.push_back({window, id, interval, services_.clock->nowMs() + interval});
}

void WindowTree::KillTimer(WindowHandle window, uint32_t id) {
  std::erase_if(timers_, [&](const Timer& timer) { return timer.window == window && timer.id == id; });
}

uint32_t WindowTree::NextTimerMs() const {
  const uint32_t now = services_.clock->nowMs();
  uint32_t next = UINT32_MAX;
  const auto until = [&](uint32_t due) { next = std::min(next, IsLater(due, now) ? due - now : 0); };
  for (const Timer& timer : timers_) until(timer.dueMs);
  if (track_.kind == TrackKind::Bar && track_.part != BarPart::Thumb) until(track_.repeatMs);
  return next;
}

// Also lets a held arrow of a bar act again, which gives no message.
bool WindowTree::DueTimer(CMessage& message) {
  const uint32_t now = services_.clock->nowMs();
  if (track_.kind == TrackKind::Bar && track_.part != BarPart::Thumb && !IsLater(track_.repeatMs, now)) RepeatBar();
  for (Timer& timer : timers_) {
    if (IsLater(timer.dueMs, now)) continue;
    timer.dueMs = now + timer.intervalMs;
    message = CMessage{timer.window, WM_TIMER, timer.id, 0, now};
    return true;
  }
  return false;
}

// --- Events ---

WindowHandle WindowTree::OfNative(NativeWindow native) {
  for (const WindowHandle top : topLevels_) {
    if (nodes_[top]->native == native) return top;
  }
  // Events without a window are for the one in front.
  if (native == 0 && !topLevels_.empty()) return topLevels_.front();
  return 0;
}

// Gives the message that an event becomes, if it becomes one.
bool WindowTree::Translate(const Event& event, CMessage& message) {
  if (event.type == EventType::DisplayChange) {
    for (const WindowHandle top : topLevels_) {
      Post(top, WM_DISPLAYCHANGE, static_cast<uint32_t>(Screen().depth), MakeLParam(event.x, event.y));
    }
    return false;
  }
  const WindowHandle window = OfNative(event.window);
  WindowNode* node = Find(window);
  if (!node) return false;
  const auto give = [&](WindowHandle to, uint32_t number, uint32_t wParam, int32_t lParam = 0) {
    message.window = to;
    message.message = number;
    message.wParam = wParam;
    message.lParam = lParam;
    return true;
  };
  const WindowHandle keyboard = focus_ ? focus_ : window;
  switch (event.type) {
    case EventType::MouseMove:
    case EventType::MouseDown:
    case EventType::MouseUp:
    case EventType::MouseWheel:
      return ResolveMouse(event, window, message);
    case EventType::KeyDown:
    case EventType::KeyUp: {
      keyMods_ = event.mods;
      const bool isDown = event.type == EventType::KeyDown;
      const bool isSystem = (event.mods & kModAlt) != 0 && (event.mods & kModControl) == 0;
      const auto code = static_cast<uint32_t>(event.code);
      if (isSystem) return give(keyboard, isDown ? WM_SYSKEYDOWN : WM_SYSKEYUP, code);
      return give(keyboard, isDown ? WM_KEYDOWN : WM_KEYUP, code);
    }
    case EventType::Char:
      return give(keyboard, WM_CHAR, static_cast<uint32_t>(event.ch) & 0xFF);
    case EventType::Close:
      return node->closeEnabled && give(window, WM_SYSCOMMAND, SC_CLOSE);
    case EventType::Resize:
      TranslateResize(*node, event.x, event.y);
      return false;
    case EventType::Move: {
      const Point at = PictureOrigin(*node);
      Place(window, Moved(OuterBox(*node), event.x - at.x, event.y - at.y), 0, false);
      return false;
    }
    case EventType::Focus:
      // The desktop may bring any window to the front; the one that must be answered stays the active one.
      if (!modalStack.empty() && !IsInside(window, modalStack.front()) && Find(modalStack.front())) {
        Activate(modalStack.front());
      } else {
        ActivateTop(window, true);
      }
      return false;
    case EventType::Blur:
      if (active_ == window) Deactivate();
      return false;
    case EventType::Expose:
      Damage(window, {0, 0, node->pictureSize.width, node->pictureSize.height});
      return false;
    case EventType::Minimize:
      if (node->minimized) return false;
      if (!node->maximized) node->normal = OuterBox(*node);
      node->minimized = true;
      return give(window, WM_SYSCOMMAND, SC_MINIMIZE, kDoneByDesktop);
    case EventType::Maximize:
      if (node->maximized && !node->minimized) return false;
      if (!node->minimized) node->normal = OuterBox(*node);
      node->minimized = false;
      node->maximized = true;
      return give(window, WM_SYSCOMMAND, SC_MAXIMIZE, kDoneByDesktop);
    case EventType::Restore:
      if (!node->minimized) node->maximized = false;
      node->minimized = false;
      return false;
    case EventType::DropFile: {
      const Point origin = PictureOrigin(*node);
      const Point at{origin.x + event.x, origin.y + event.y};
      WindowHandle target = WindowAt(window, at);
      while (target && !Find(target)->acceptsDrops) target = Find(target)->parent;
      const Point client = ClientOrigin(target);
      if (target) return give(target, WM_DROPFILES, event.id, MakeLParam(at.x - client.x, at.y - client.y));
      services_.events->takeBlob(event.id);
      return false;
    }
    default:
      return false;
  }
}

void WindowTree::Deactivate() {
  const WindowHandle window = active_;
  active_ = 0;
  SetActiveLook(window, false);
  Send(window, WM_ACTIVATE, 0);
  if (const WindowHandle before = focus_) {
    focus_ = 0;
    Send(before, WM_KILLFOCUS);
  }
}

// The desktop says what size the window has now. When a person dragged the frame the program's limits count.
void WindowTree::TranslateResize(WindowNode& node, int width, int height) {
  const Size old = node.PictureSize();
  if (width <= 0 || height <= 0 || (old.width == width && old.height == height)) return;
  const WindowHandle window = node.handle;
  Rect outer = OuterBox(node);
  outer.right += width - old.width;
  outer.bottom += height - old.height;
  const bool dragged = (node.style & WS_THICKFRAME) && !node.isHost && !node.maximized && !node.minimized;
  if (dragged) {
    const Rect asked = outer;
    sizingBox = outer;
    Send(window, WM_SIZING, WMSZ_BOTTOMRIGHT);
    outer = sizingBox;
    WindowNode* now = Find(window);
    if (!now) return;
    Place(window, outer, 0, false);
    now = Find(window);
    if (!now || outer == asked) return;
    const Size size = now->PictureSize();
    services_.windows->resizeWindow(now->native, size.width, size.height);
    return;
  }
  const bool maximized = node.maximized;
  node.minimized = false;
  Place(window, outer, maximized ? 2 : 0, false);
}

// --- The mouse ---

WindowHandle WindowTree::WindowAt(WindowHandle window, Point screen) {
  WindowNode* node = Find(window);
  if (!node) return 0;
  const Point client = ClientOrigin(window);
  Point at{screen.x - client.x, screen.y - client.y};  // in the client area of `node`
  const auto isIn = [](const WindowNode& n, Point outer) {
    const Size size = n.Outer();
    if (!Rect{0, 0, size.width, size.height}.Contains(outer.x, outer.y)) return false;
    const Point cut = n.drawsFrame ? Point{} : Point{n.borders.left, n.borders.top};
    return n.Shows(outer.x - cut.x, outer.y - cut.y);
  };
  if (!isIn(*node, {at.x + node->borders.left, at.y + node->borders.top})) return 0;
  for (bool deeper = true; deeper && Rect{0, 0, node->width, node->height}.Contains(at.x, at.y);) {
    deeper = false;
    for (const WindowHandle child : node->children) {
      WindowNode* c = Find(child);
      const Point outer{at.x - c->x, at.y - c->y};
      if (!c->visible || !c->enabled || (c->exStyle & WS_EX_TRANSPARENT) || !isIn(*c, outer)) continue;
      at = {outer.x - c->borders.left, outer.y - c->borders.top};
      node = c;
      deeper = true;
      break;
    }
  }
  return node->handle;
}

uint32_t WindowTree::HitCodeAt(WindowNode& node, Point screen) {
  const Point client = ClientOrigin(node.handle);
  const Point inClient{screen.x - client.x, screen.y - client.y};
  if (Rect{0, 0, node.width, node.height}.Contains(inClient.x, inClient.y)) return HTCLIENT;
  const Point at = node.ClientInPicture();
  for (const BarKind kind : {SB_HORZ, SB_VERT}) {
    if (node.HasBar(kind) && BarBox(node, kind).Contains(inClient.x + at.x, inClient.y + at.y)) {
      return kind == SB_HORZ ? HTHSCROLL : HTVSCROLL;
    }
  }
  if (!node.drawsFrame) return HTNOWHERE;
  const uint32_t hit = HitTestFrame(node.style, node.exStyle, node.Outer(), {inClient.x + at.x, inClient.y + at.y});
  return hit == HTCLIENT ? HTBORDER : hit;
}

bool WindowTree::ResolveMouse(const Event& event, WindowHandle topHandle, CMessage& message) {
  WindowNode* top = Find(topHandle);
  const Point origin = PictureOrigin(*top);
  mouse_ = {origin.x + event.x, origin.y + event.y};
  hasMouse_ = true;
  if (FollowTrack(event)) return false;
  const uint32_t keys = MouseKeys(event.mods);
  const auto give = [&](WindowHandle window, uint32_t number, uint32_t wParam) {
    const Point client = ClientOrigin(window);
    message.window = window;
    message.message = number;
    message.wParam = wParam;
    message.lParam = MakeLParam(mouse_.x - client.x, mouse_.y - client.y);
    return true;
  };
  if (event.type == EventType::MouseWheel) {
    return give(focus_ ? focus_ : topHandle, WM_MOUSEWHEEL, static_cast<uint32_t>(event.code) << 16 | keys);
  }
  uint32_t kind = WM_MOUSEMOVE;
  if (event.type != EventType::MouseMove) {
    kind = ButtonMessage(event.code, event.type == EventType::MouseDown, event.ch == 2);
  }
  if (Find(capture_)) return give(capture_, kind, keys);
  if (!top->enabled) return false;
  WindowHandle window = WindowAt(topHandle, mouse_);
  uint32_t hit = HTCLIENT;
  if (window) {
    hit = HitCodeAt(*Find(window), mouse_);
  } else {
    // A point that the shape cuts off is none of the window's. One outside of it is: the desktop says so.
    const Size size = top->PictureSize();
    if (Rect{0, 0, size.width, size.height}.Contains(event.x, event.y)) return false;
    window = topHandle;
  }
  const int32_t about = MakeLParam(static_cast<int>(hit), static_cast<int>(kind));
  if (event.type == EventType::MouseDown) {
    const int32_t answer = Send(window, WM_MOUSEACTIVATE, topHandle, about);
    const bool activates = answer != MA_NOACTIVATE && answer != MA_NOACTIVATEANDEAT;
    if (activates && Find(topHandle)) ActivateTop(topHandle, false);
    if (answer == MA_NOACTIVATEANDEAT || answer == MA_ACTIVATEANDEAT || !Find(window)) return false;
  }
  Send(window, WM_SETCURSOR, window, about);
  if (!Find(window)) return false;
  give(window, kind, keys);
  if (hit == HTCLIENT) return true;
  message.message = kind - kNonClient;
  message.wParam = hit;
  message.lParam = MakeLParam(mouse_.x, mouse_.y);
  return true;
}

// --- The pointer ---

void WindowTree::UseCursor(WindowHandle window, CursorShape shape) {
  WindowNode* top = Find(TopLevel(window));
  if (!top || (cursorWindow_ == top->native && cursorSerial_ == 0 && cursorShape_ == shape)) return;
  cursorWindow_ = top->native;
  cursorShape_ = shape;
  cursorSerial_ = 0;
  services_.windows->setCursor(top->native, shape);
}

void WindowTree::UseCursor(WindowHandle window, const WindowPicture& picture, uint32_t serial) {
  WindowNode* top = Find(TopLevel(window));
  if (!top || (cursorWindow_ == top->native && cursorSerial_ == serial)) return;
  cursorWindow_ = top->native;
  cursorSerial_ = serial;
  services_.windows->setCursorPicture(top->native, picture);
}

}  // namespace vl
