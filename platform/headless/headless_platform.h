// HeadlessPlatform: every service of the seam in memory, deterministic: the same program with the same input
// gives the same pixels and the same times on every machine.
//
// Time is virtual: it moves in waits and by one millisecond a tick. The clock and the queue can be replaced,
// for a run without a display in real time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/environment.h"
#include "platform/headless/memory_network.h"
#include "platform/headless/memory_serial.h"
#include "platform/headless/memory_windows.h"
#include "platform/headless/scripted_queue.h"
#include "platform/headless/virtual_clock.h"
#include "platform/memory_clipboard.h"
#include "platform/services.h"

namespace vl {

struct HeadlessOptions {
  Size hostSize = {640, 480};
  bool attachHost = true;  // false: detached, without a window of the host
  uint64_t maxTimeMs = 0;  // when HostStop arrives; 0 never
  uint32_t seed = uint32_t(VirtualClock::kDefaultStart);
  int64_t startSeconds = VirtualClock::kDefaultStart;  // local date at the start, as seconds since 1970
  std::vector<TimedEvent> input;  // events for window 0 go to the host's window, or to the topmost one
  Clock* clock = nullptr;         // instead of the virtual clock
  EventQueue* events = nullptr;   // instead of the scripted queue; both or none, they outlive the platform
  TextEngine* text = nullptr;     // outlives the platform
  FileSystem* files = nullptr;    // outlives the platform
  Sockets* sockets = nullptr;     // instead of a network in memory; outlives the platform
};

// Fixed answers.
class HeadlessEnvironment final : public Environment {
 public:
  std::string computerName() override { return "VORLANE"; }
  std::string userName() override { return "User"; }
  bool isFrench() override { return false; }
  void browseUrl(std::string_view url) override {
    if (urls_.size() < kMaxUrls) urls_.emplace_back(url);
  }
  // What the program asked the desktop to open.
  const std::vector<std::string>& Urls() const { return urls_; }

 private:
  static constexpr size_t kMaxUrls = 256;
  std::vector<std::string> urls_;
};

// Notes what was asked for. Input comes as positions, as a person at a window would give it.
class HeadlessInputDevices final : public InputDevices {
 public:
  void holdMouse(bool held) override { isMouseHeld = held; }

  bool isMouseHeld = false;
};

class HeadlessPlatform {
 public:
  static constexpr NetAddress kAddress = 0x0A000001;  // 10.0.0.1

  explicit HeadlessPlatform(const HeadlessOptions& options);
  HeadlessPlatform(const HeadlessPlatform&) = delete;
  HeadlessPlatform& operator=(const HeadlessPlatform&) = delete;

  // The pointers stay valid while the platform lives.
  Services services();

  // The last picture of a window, null before its first present or when it is gone.
  const std::vector<uint32_t>* framePixels(NativeWindow window) const;
  Size frameSize(NativeWindow window) const;
  const std::vector<MessageBoxText>& messages() const { return windows_.Messages(); }

  // The window that input without a window is meant for: the host's, else the one last shown or raised; 0 none.
  NativeWindow inputWindow() const;
  VirtualClock& virtualClock() { return clock_; }
  ScriptedQueue& queue() { return queue_; }
  MemoryWindows& windows() { return windows_; }
  HeadlessEnvironment& environment() { return environment_; }
  MemoryNetwork& network() { return network_; }
  HeadlessInputDevices& inputDevices() { return inputDevices_; }
  MemoryClipboard& clipboard() { return clipboard_; }

 private:
  // Hands out scripted events; those without a window get theirs as late as this.
  class Router final : public EventQueue {
   public:
    explicit Router(HeadlessPlatform& platform) : platform_(platform) {}
    bool waitEvent(Event& event, int timeoutMs) override;
    std::string takeBlob(uint32_t id) override { return platform_.queue_.takeBlob(id); }
    bool isExhausted() override { return platform_.queue_.isExhausted(); }

   private:
    HeadlessPlatform& platform_;
  };

  HeadlessOptions options_;
  VirtualClock clock_;
  ScriptedQueue queue_;
  MemoryWindows windows_;
  HeadlessEnvironment environment_;
  HeadlessInputDevices inputDevices_;
  MemoryNetwork network_;
  MemorySockets sockets_;
  MemoryClipboard clipboard_;
  MemorySerialPorts serialPorts_;
  Router router_;
};

}  // namespace vl
