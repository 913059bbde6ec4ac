#include "platform/sdl/window_mailbox.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/limits.h"

namespace vl {
namespace {

constexpr size_t kMaxWindows = 256;
// Boxes that the person has not answered yet.
constexpr size_t kMaxMessages = 16;
constexpr size_t kMaxTitleBytes = 1024;
constexpr size_t kMaxMessageBytes = 8192;

}  // namespace

WindowMailbox::WindowMailbox(const ScreenInfo& screen, NativeWindow hostWindow, Size hostSize,
                             std::function<void()> wake)
    : screen_(screen), hostWindow_(hostWindow), wake_(std::move(wake)), hostSize_(hostSize), next_(hostWindow + 1) {
  if (hostWindow_ != 0) windows_[hostWindow_].change.window = hostWindow_;
}

bool WindowMailbox::MarkWoken() { return !std::exchange(isWoken_, true); }

void WindowMailbox::Note(NativeWindow window, const std::function<void(WindowChange& change)>& write) {
  bool mustWake = false;
  {
    const std::lock_guard lock(mutex_);
    const auto found = windows_.find(window);
    if (found == windows_.end()) return;
    write(found->second.change);
    found->second.hasChange = true;
    mustWake = MarkWoken();
  }
  if (mustWake) wake_();
}

Size WindowMailbox::hostSize() {
  const std::lock_guard lock(mutex_);
  return hostSize_;
}

NativeWindow WindowMailbox::createWindow(const WindowDescription& description) {
  NativeWindow id = 0;
  {
    const std::lock_guard lock(mutex_);
    if (windows_.size() >= kMaxWindows) return 0;
    id = next_++;
    windows_[id].change.window = id;
  }
  Note(id, [&](WindowChange& change) {
    change.create = true;
    change.description = description;
    change.description.title = {};  // the caller's text ends with the call
    change.title = std::string(description.title.substr(0, kMaxTitleBytes));
  });
  return id;
}

void WindowMailbox::destroyWindow(NativeWindow window) {
  if (window == hostWindow_) return;
  bool mustWake = false;
  {
    const std::lock_guard lock(mutex_);
    const auto found = windows_.find(window);
    if (found == windows_.end()) return;
    const bool isKnownToHost = !found->second.change.create;
    windows_.erase(found);
    if (!isKnownToHost) return;
    destroyed_.push_back(window);
    mustWake = MarkWoken();
  }
  if (mustWake) wake_();
}

void WindowMailbox::showWindow(NativeWindow window, ShowState state) {
  Note(window, [&](WindowChange& change) { change.state = state; });
}

void WindowMailbox::moveWindow(NativeWindow window, int x, int y) {
  Note(window, [&](WindowChange& change) { change.position = std::pair(x, y); });
}

void WindowMailbox::resizeWindow(NativeWindow window, int width, int height) {
  const Size size = {std::clamp(width, 1, limits::kMaxSurfaceSide), std::clamp(height, 1, limits::kMaxSurfaceSide)};
  Note(window, [&](WindowChange& change) { change.size = size; });
  const std::lock_guard lock(mutex_);
  if (window == hostWindow_ && window != 0) hostSize_ = size;
}

ScreenInfo WindowMailbox::screen() {
  const std::lock_guard lock(mutex_);
  return screen_;
}

void WindowMailbox::ReportScreen(const ScreenInfo& screen) {
  const std::lock_guard lock(mutex_);
  screen_ = screen;
}

void WindowMailbox::raiseWindow(NativeWindow window) {
  Note(window, [&](WindowChange& change) {
    change.raise = true;
    change.lower = false;
  });
}

void WindowMailbox::lowerWindow(NativeWindow window) {
  Note(window, [&](WindowChange& change) {
    change.lower = true;
    change.raise = false;
  });
}

void WindowMailbox::setTopMost(NativeWindow window, bool topMost) {
  Note(window, [&](WindowChange& change) { change.topMost = topMost; });
}

void WindowMailbox::setCursorPicture(NativeWindow window, const WindowPicture& picture) {
  Note(window, [&](WindowChange& change) {
    change.cursorPicture = picture;
    change.cursor.reset();
  });
}

void WindowMailbox::setIcon(NativeWindow window, const WindowPicture& picture) {
  Note(window, [&](WindowChange& change) {
    // One picture serves the desktop, the larger one.
    if (!change.icon || picture.width >= change.icon->width) change.icon = picture;
  });
}

void WindowMailbox::setShape(NativeWindow window, const std::vector<Rect>* boxes) {
  Note(window,
       [&](WindowChange& change) { change.shape = boxes ? std::optional<std::vector<Rect>>(*boxes) : std::nullopt; });
}

void WindowMailbox::setSizeLimits(NativeWindow window, Size least, Size most) {
  Note(window, [&](WindowChange& change) { change.limits = std::pair(least, most); });
}

void WindowMailbox::enableClose(NativeWindow window, bool enabled) {
  Note(window, [&](WindowChange& change) { change.closeEnabled = enabled; });
}

void WindowMailbox::acceptDrops(NativeWindow window, bool accepted) {
  Note(window, [&](WindowChange& change) { change.acceptsDrops = accepted; });
}

void WindowMailbox::flashWindow(NativeWindow window, bool flashing) {
  Note(window, [&](WindowChange& change) { change.flashing = flashing; });
}

void WindowMailbox::captureMouse(NativeWindow window, bool captured) {
  Note(window, [&](WindowChange& change) { change.captured = captured; });
}

void WindowMailbox::setTitle(NativeWindow window, std::string_view title) {
  Note(window, [&](WindowChange& change) { change.title = std::string(title.substr(0, kMaxTitleBytes)); });
}

void WindowMailbox::setCursor(NativeWindow window, CursorShape shape) {
  Note(window, [&](WindowChange& change) {
    change.cursor = shape;
    change.cursorPicture.reset();
  });
}

void WindowMailbox::present(NativeWindow window, const uint32_t* pixels, int width, int height, int pitch,
                            std::span<const Rect> dirty) {
  if (width <= 0 || height <= 0 || width > limits::kMaxSurfaceSide || height > limits::kMaxSurfaceSide) return;
  bool mustWake = false;
  {
    const std::lock_guard lock(mutex_);
    const auto found = windows_.find(window);
    if (found == windows_.end()) return;
    WindowFrame& frame = found->second.frame;
    const Rect all = {0, 0, width, height};
    if (frame.width != width || frame.height != height) {
      frame.pixels.assign(size_t(width) * size_t(height), 0);
      frame.width = width;
      frame.height = height;
      frame.dirty = {};
      dirty = std::span<const Rect>(&all, 1);
    }
    for (const Rect& rect : dirty) {
      const Rect box = rect.Intersect(all);
      if (box.IsEmpty()) continue;
      for (int y = box.top; y < box.bottom; ++y) {
        std::memcpy(frame.pixels.data() + size_t(y) * size_t(width) + size_t(box.left),
                    pixels + ptrdiff_t{y} * pitch + box.left, size_t(box.Width()) * sizeof(uint32_t));
      }
      frame.dirty = frame.dirty.IsEmpty() ? box : frame.dirty.Union(box);
    }
    mustWake = !frame.dirty.IsEmpty() && MarkWoken();
  }
  if (mustWake) wake_();
}

void WindowMailbox::showMessage(std::string_view title, std::string_view text) {
  bool mustWake = false;
  {
    const std::lock_guard lock(mutex_);
    if (messages_.size() >= kMaxMessages) return;
    messages_.push_back({std::string(title.substr(0, kMaxTitleBytes)), std::string(text.substr(0, kMaxMessageBytes))});
    mustWake = MarkWoken();
  }
  if (mustWake) wake_();
}

std::vector<WindowChange> WindowMailbox::TakeChanges() {
  const std::lock_guard lock(mutex_);
  isWoken_ = false;
  std::vector<WindowChange> changes;
  for (const NativeWindow window : std::exchange(destroyed_, {})) {
    WindowChange change;
    change.window = window;
    change.destroy = true;
    changes.push_back(std::move(change));
  }
  for (auto& [window, entry] : windows_) {
    if (!std::exchange(entry.hasChange, false)) continue;
    changes.push_back(std::exchange(entry.change, WindowChange{}));
    entry.change.window = window;
  }
  return changes;
}

std::vector<WindowMessage> WindowMailbox::TakeMessages() {
  const std::lock_guard lock(mutex_);
  return std::exchange(messages_, {});
}

void WindowMailbox::ReportHostSize(Size size) {
  const std::lock_guard lock(mutex_);
  hostSize_ = size;
}

void WindowMailbox::TakeFrames(const std::function<void(NativeWindow window, const WindowFrame& frame)>& show) {
  const std::lock_guard lock(mutex_);
  for (auto& [window, entry] : windows_) {
    // A window that the host has not made yet keeps its picture until then.
    if (entry.frame.dirty.IsEmpty() || entry.change.create) continue;
    show(window, entry.frame);
    entry.frame.dirty = {};
  }
}

bool WindowMailbox::IsPlacePending(NativeWindow window) {
  const std::lock_guard lock(mutex_);
  const auto found = windows_.find(window);
  return found != windows_.end() && (found->second.change.size || found->second.change.position);
}

void WindowMailbox::ShowAgain(NativeWindow window) {
  const std::lock_guard lock(mutex_);
  const auto found = windows_.find(window);
  if (found != windows_.end())
    found->second.frame.dirty = {0, 0, found->second.frame.width, found->second.frame.height};
}

bool WindowMailbox::LookAtFrame(NativeWindow window, const std::function<void(const WindowFrame& frame)>& look) {
  const std::lock_guard lock(mutex_);
  const auto found = windows_.find(window);
  if (found == windows_.end() || found->second.frame.pixels.empty()) return false;
  look(found->second.frame);
  return true;
}

}  // namespace vl
