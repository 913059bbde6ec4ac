// ThreadedQueue: the event queue between a host's thread and the interpreter's.
//
// Any thread pushes; one thread waits. It holds at most kMaxEvents: beyond that mouse moves, and then anything
// that the run doesn't need to end, are dropped; of a joystick's axis the newest position stays.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>

#include "platform/events.h"

namespace vl {

// What a wait sleeps on when more than events may end it.
class Sleeper {
 public:
  virtual ~Sleeper() = default;
  // At most timeoutMs, -1 for ever. It may return at any time.
  virtual void sleep(int timeoutMs) = 0;
  // Ends a sleep, or the next one. From any thread.
  virtual void wake() = 0;
};

class ThreadedQueue final : public EventQueue {
 public:
  static constexpr size_t kMaxEvents = 8192;
  static constexpr size_t kMaxBlobs = 1024;

  bool waitEvent(Event& event, int timeoutMs) override;
  std::string takeBlob(uint32_t id) override;

  // Before the first wait; outlives the last one.
  void SetSleeper(Sleeper& sleeper) { sleeper_ = &sleeper; }
  void Push(const Event& event);
  // The event with content; its id is given here. Dropped when too many wait to be taken.
  void PushWithBlob(Event event, std::string content);

 private:
  void PushLocked(const Event& event);
  bool TakeLocked(Event& event);

  Sleeper* sleeper_ = nullptr;
  bool isAsleep_ = false;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<Event> events_;
  std::map<uint32_t, std::string> blobs_;
  uint32_t nextBlob_ = 1;
};

}  // namespace vl
