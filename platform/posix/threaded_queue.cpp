#include "platform/posix/threaded_queue.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vl {
namespace {

// What a run needs to end, and what pairs with something that was let in before.
bool MustArrive(EventType type) {
  return type == EventType::HostStop || type == EventType::Close || type == EventType::KeyUp ||
         type == EventType::MouseUp || type == EventType::Blur || type == EventType::JoystickButton ||
         type == EventType::JoystickHat || type == EventType::JoystickDetach;
}

bool IsPosition(EventType type) { return type == EventType::JoystickAxis || type == EventType::JoystickRotation; }

}  // namespace

void ThreadedQueue::PushLocked(const Event& event) {
  if (events_.size() >= kMaxEvents / 2 && IsPosition(event.type)) {
    // The newest position of the axis stands for those on the way to it.
    const auto same = std::find_if(events_.rbegin(), events_.rend(), [&](const Event& waiting) {
      return waiting.type == event.type && waiting.code == event.code && waiting.x == event.x;
    });
    if (same != events_.rend()) {
      same->y = event.y;
      return;
    }
  }
  if (events_.size() >= kMaxEvents) {
    if (!MustArrive(event.type) || events_.size() >= 2 * kMaxEvents) {
      if (event.type != EventType::HostStop) return;
    }
  } else if (events_.size() >= kMaxEvents / 2 && event.type == EventType::MouseMove) {
    return;
  }
  events_.push_back(event);
  if (isAsleep_) {
    sleeper_->wake();
  } else {
    arrived_.notify_one();
  }
}

void ThreadedQueue::Push(const Event& event) {
  const std::lock_guard lock(mutex_);
  PushLocked(event);
}

void ThreadedQueue::PushWithBlob(Event event, std::string content) {
  const std::lock_guard lock(mutex_);
  if (blobs_.size() >= kMaxBlobs || events_.size() >= kMaxEvents) return;
  event.id = nextBlob_++;
  blobs_.emplace(event.id, std::move(content));
  PushLocked(event);
}

bool ThreadedQueue::TakeLocked(Event& event) {
  if (events_.empty()) return false;
  event = events_.front();
  events_.pop_front();
  return true;
}

bool ThreadedQueue::waitEvent(Event& event, int timeoutMs) {
  std::unique_lock lock(mutex_);
  if (sleeper_) {
    if (TakeLocked(event)) return true;
    if (timeoutMs == 0) return false;
    isAsleep_ = true;
    lock.unlock();
    sleeper_->sleep(timeoutMs);
    lock.lock();
    isAsleep_ = false;
    return TakeLocked(event);
  }
  const auto hasEvent = [this] { return !events_.empty(); };
  if (timeoutMs < 0) {
    arrived_.wait(lock, hasEvent);
  } else if (!arrived_.wait_for(lock, std::chrono::milliseconds(timeoutMs), hasEvent)) {
    return false;
  }
  return TakeLocked(event);
}

std::string ThreadedQueue::takeBlob(uint32_t id) {
  const std::lock_guard lock(mutex_);
  const auto found = blobs_.find(id);
  if (found == blobs_.end()) return {};
  std::string content = std::move(found->second);
  blobs_.erase(found);
  return content;
}

}  // namespace vl
