#include "platform/headless/headless_platform.h"

namespace vl {

HeadlessPlatform::HeadlessPlatform(const HeadlessOptions& options)
    : options_(options),
      clock_(options.seed, options.startSeconds),
      queue_(clock_, options.maxTimeMs),
      windows_(options.hostSize, options.attachHost),
      sockets_(network_, kAddress),
      router_(*this) {
  for (const TimedEvent& event : options.input) queue_.Script(event);
  options_.input.clear();
}

Services HeadlessPlatform::services() {
  Services s;
  s.clock = options_.clock ? options_.clock : &clock_;
  s.events = options_.events ? options_.events : &router_;
  s.windows = &windows_;
  s.text = options_.text;
  s.files = options_.files;
  s.environment = &environment_;
  s.input = &inputDevices_;
  s.sockets = options_.sockets ? options_.sockets : &sockets_;
  s.clipboard = &clipboard_;
  s.serialPorts = &serialPorts_;
  return s;
}

const std::vector<uint32_t>* HeadlessPlatform::framePixels(NativeWindow window) const {
  const MemoryWindow* w = windows_.Find(window);
  return w && !w->pixels.empty() ? &w->pixels : nullptr;
}

Size HeadlessPlatform::frameSize(NativeWindow window) const {
  const MemoryWindow* w = windows_.Find(window);
  return w ? Size{w->pixelWidth, w->pixelHeight} : Size{};
}

NativeWindow HeadlessPlatform::inputWindow() const {
  const MemoryWindow* best = nullptr;
  for (const auto& [id, window] : windows_.Windows()) {
    if (window.isHost) return id;
    if (window.state == ShowState::Hidden || window.state == ShowState::Minimized) continue;
    if (!best || window.lastRaised > best->lastRaised) best = &window;
  }
  return best ? best->id : 0;
}

bool HeadlessPlatform::Router::waitEvent(Event& event, int timeoutMs) {
  if (!platform_.queue_.waitEvent(event, timeoutMs)) return false;
  if (event.window == 0 && event.type != EventType::HostStop) event.window = platform_.inputWindow();
  if (event.type == EventType::Resize) platform_.windows_.resizeWindow(event.window, event.x, event.y);
  if (event.type == EventType::DisplayChange) platform_.windows_.SetScreen({event.x, event.y}, event.code);
  return true;
}

}  // namespace vl
