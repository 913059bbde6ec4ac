#include "platform/headless/memory_windows.h"

#include <algorithm>

#include "base/limits.h"

namespace vl {
namespace {

// A program can open windows and boxes without end.
constexpr size_t kMaxWindows = 1024;
constexpr size_t kMaxMessages = 256;

int ClampSide(int side) { return std::clamp(side, 0, limits::kMaxSurfaceSide); }

Rect ClientAt(int x, int y, int width, int height) {
  const int left = std::clamp(x, -limits::kMaxSurfaceSide, limits::kMaxSurfaceSide);
  const int top = std::clamp(y, -limits::kMaxSurfaceSide, limits::kMaxSurfaceSide);
  return {left, top, left + ClampSide(width), top + ClampSide(height)};
}

}  // namespace

MemoryWindows::MemoryWindows(Size hostSize, bool attachHost) {
  if (!attachHost) return;
  WindowDescription d;
  d.x = (kScreenWidth - hostSize.width) / 2;
  d.y = (kScreenHeight - hostSize.height) / 2;
  d.width = hostSize.width;
  d.height = hostSize.height;
  host_ = createWindow(d);
  MemoryWindow& window = windows_[host_];
  window.isHost = true;
  window.state = ShowState::Normal;
}

Size MemoryWindows::hostSize() {
  const MemoryWindow* window = Find(host_);
  return window ? Size{window->client.Width(), window->client.Height()} : Size{};
}

NativeWindow MemoryWindows::createWindow(const WindowDescription& d) {
  if (windows_.size() >= kMaxWindows) return 0;
  const NativeWindow id = next_++;
  MemoryWindow& window = windows_[id];
  window.id = id;
  window.client = ClientAt(d.x, d.y, d.width, d.height);
  window.title = d.title;
  window.caption = d.caption;
  window.resizable = d.resizable;
  window.owner = d.owner;
  window.topMost = d.topMost;
  window.tool = d.tool;
  window.lastRaised = ++raises_;
  return id;
}

std::optional<std::pair<int, int>> MemoryWindows::clientOrigin(NativeWindow window) {
  const MemoryWindow* w = Find(window);
  if (!w) return std::nullopt;
  return std::pair{w->client.left, w->client.top};
}

// The host's window stays the host's.
void MemoryWindows::destroyWindow(NativeWindow window) {
  if (window != host_) windows_.erase(window);
}

void MemoryWindows::showWindow(NativeWindow window, ShowState state) {
  MemoryWindow* w = Get(window);
  if (!w) return;
  if (state == ShowState::Maximized && w->state != ShowState::Maximized) {
    w->normalClient = w->client;
    w->client = MaximizedClient(screen_, w->caption ? kCaptionHeight : 0);
  } else if (state == ShowState::Normal && w->state == ShowState::Maximized) {
    w->client = w->normalClient;
  }
  w->state = state;
  w->lastRaised = ++raises_;
}

void MemoryWindows::moveWindow(NativeWindow window, int x, int y) {
  if (MemoryWindow* w = Get(window)) w->client = ClientAt(x, y, w->client.Width(), w->client.Height());
}

void MemoryWindows::resizeWindow(NativeWindow window, int width, int height) {
  if (MemoryWindow* w = Get(window)) w->client = ClientAt(w->client.left, w->client.top, width, height);
}

void MemoryWindows::raiseWindow(NativeWindow window) {
  if (MemoryWindow* w = Get(window)) w->lastRaised = ++raises_;
}

void MemoryWindows::setTitle(NativeWindow window, std::string_view title) {
  if (MemoryWindow* w = Get(window)) w->title = title;
}

void MemoryWindows::setCursor(NativeWindow window, CursorShape shape) {
  if (MemoryWindow* w = Get(window)) {
    w->cursor = shape;
    w->cursorPicture = {};
  }
}

void MemoryWindows::setCursorPicture(NativeWindow window, const WindowPicture& picture) {
  if (MemoryWindow* w = Get(window)) w->cursorPicture = picture;
}

void MemoryWindows::lowerWindow(NativeWindow window) {
  if (MemoryWindow* w = Get(window)) w->lastRaised = 0;
}

void MemoryWindows::setTopMost(NativeWindow window, bool topMost) {
  if (MemoryWindow* w = Get(window)) w->topMost = topMost;
}

void MemoryWindows::setIcon(NativeWindow window, const WindowPicture& picture) {
  if (MemoryWindow* w = Get(window)) w->icon = picture;
}

void MemoryWindows::setShape(NativeWindow window, const std::vector<Rect>* boxes) {
  MemoryWindow* w = Get(window);
  if (!w) return;
  w->isShaped = boxes != nullptr;
  w->shape = boxes ? *boxes : std::vector<Rect>();
}

void MemoryWindows::setSizeLimits(NativeWindow window, Size least, Size most) {
  if (MemoryWindow* w = Get(window)) {
    w->leastSize = least;
    w->mostSize = most;
  }
}

void MemoryWindows::enableClose(NativeWindow window, bool enabled) {
  if (MemoryWindow* w = Get(window)) w->closeEnabled = enabled;
}

void MemoryWindows::acceptDrops(NativeWindow window, bool accepted) {
  if (MemoryWindow* w = Get(window)) w->acceptsDrops = accepted;
}

void MemoryWindows::flashWindow(NativeWindow window, bool flashing) {
  if (MemoryWindow* w = Get(window)) w->flashing = flashing;
}

void MemoryWindows::captureMouse(NativeWindow window, bool captured) {
  if (MemoryWindow* w = Get(window)) w->mouseCaptured = captured;
}

void MemoryWindows::SetScreen(Size size, int depth) {
  screen_.width = ClampSide(size.width);
  screen_.height = ClampSide(size.height);
  if (depth > 0) screen_.depth = depth;
}

void MemoryWindows::present(NativeWindow window, const uint32_t* pixels, int width, int height, int pitch,
                            std::span<const Rect> dirty) {
  MemoryWindow* w = Get(window);
  if (!w || width <= 0 || height <= 0 || width > limits::kMaxSurfaceSide || height > limits::kMaxSurfaceSide) return;
  ++w->presents;
  const Rect all = {0, 0, width, height};
  const bool resized = w->pixelWidth != width || w->pixelHeight != height;
  if (resized) {
    w->pixels.assign(size_t(width) * size_t(height), 0);
    w->pixelWidth = width;
    w->pixelHeight = height;
  }
  const std::span<const Rect> boxes = resized ? std::span<const Rect>(&all, 1) : dirty;
  for (const Rect& rect : boxes) {
    const Rect box = rect.Intersect(all);
    for (int y = box.top; y < box.bottom && box.left < box.right; ++y) {
      const uint32_t* from = pixels + ptrdiff_t{y} * pitch;
      uint32_t* to = w->pixels.data() + ptrdiff_t{y} * width;
      for (int x = box.left; x < box.right; ++x) to[x] = from[x] & 0xFFFFFF;
    }
  }
}

void MemoryWindows::showMessage(std::string_view title, std::string_view text) {
  if (messages_.size() < kMaxMessages) messages_.push_back({std::string(title), std::string(text)});
}

const MemoryWindow* MemoryWindows::Find(NativeWindow window) const {
  const auto found = windows_.find(window);
  return found == windows_.end() ? nullptr : &found->second;
}

MemoryWindow* MemoryWindows::Get(NativeWindow window) {
  const auto found = windows_.find(window);
  return found == windows_.end() ? nullptr : &found->second;
}

}  // namespace vl
