#include "platform/headless/scripted_queue.h"

#include <algorithm>
#include <utility>

namespace vl {

void ScriptedQueue::Script(TimedEvent timed) {
  if (!timed.blob.empty()) timed.event.id = AddBlob(std::move(timed.blob));
  scripted_.emplace(timed.atMs, timed.event);
}

uint32_t ScriptedQueue::AddBlob(std::string content) {
  const uint32_t id = nextBlob_++;
  blobs_.emplace(id, std::move(content));
  return id;
}

std::string ScriptedQueue::takeBlob(uint32_t id) {
  const auto found = blobs_.find(id);
  if (found == blobs_.end()) return {};
  std::string content = std::move(found->second);
  blobs_.erase(found);
  return content;
}

bool ScriptedQueue::TakeDue(Event& event) {
  const uint64_t now = clock_.ElapsedMs();
  if (!ready_.empty()) {
    event = ready_.front();
    ready_.pop_front();
    return true;
  }
  const bool stopDue = stopAtMs_ > 0 && !stopSent_ && stopAtMs_ <= now;
  if (!scripted_.empty() && scripted_.begin()->first <= now && !(stopDue && stopAtMs_ < scripted_.begin()->first)) {
    event = scripted_.begin()->second;
    scripted_.erase(scripted_.begin());
    return true;
  }
  if (stopDue) {
    stopSent_ = true;
    event = Event{};
    event.type = EventType::HostStop;
    return true;
  }
  return false;
}

uint64_t ScriptedQueue::NextMs() const {
  uint64_t next = UINT64_MAX;
  if (!scripted_.empty()) next = scripted_.begin()->first;
  if (stopAtMs_ > 0 && !stopSent_) next = std::min(next, stopAtMs_);
  return next;
}

bool ScriptedQueue::waitEvent(Event& event, int timeoutMs) {
  if (TakeDue(event)) return true;
  if (timeoutMs == 0) return false;
  const uint64_t now = clock_.ElapsedMs();
  const uint64_t next = NextMs();
  const uint64_t left = next == UINT64_MAX ? UINT64_MAX : next - now;  // next is in the future: nothing was due
  if (timeoutMs > 0 && uint64_t(timeoutMs) < left) {
    clock_.Advance(uint64_t(timeoutMs));
    return false;
  }
  if (left == UINT64_MAX) {
    clock_.Advance(kIdleStepMs);
    return false;
  }
  clock_.Advance(left);
  return TakeDue(event);
}

}  // namespace vl
