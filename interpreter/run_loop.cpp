// The tick between statements: timed lists, collection, refresh, message pump; Wait; the refresh pass.
#include <algorithm>

#include "interpreter/interpretor.h"

namespace vl {

namespace {
// Longest sleep of one round of Wait: the stop of a host and network polls must not wait longer.
constexpr uint32_t kWaitSliceMs = 50;
// The same while the network is in use: what comes from it wakes nothing.
constexpr uint32_t kPollSliceMs = 1;
constexpr int kRefreshRounds = 4;
constexpr uint32_t kQuitMessage = 18;
}  // namespace

void CInterpretor::SlowHousekeeping() {
  if (tickCountdown < 0) {
    if (tickLimit && ++ticks > tickLimit) pendingError = ERR_END;
    if (eventsEnabled) {
      Tick();
    } else {
      WatchForStop();
    }
  }
  if (param.stop.load(std::memory_order_relaxed)) pendingError = ERR_END;
  if (pendingError != -1) {
    const auto code = static_cast<uint32_t>(pendingError);
    pendingError = -1;
    RaiseError(code);
  }
}

// While the program keeps events disabled no tick runs; time must pass and the host's stop be seen all the same.
void CInterpretor::WatchForStop() {
  tickCountdown = -1;
  if (++quietStatements_ <= tickPeriod) return;
  quietStatements_ = 0;
  services.clock->tick();
  const uint32_t now = NowMs();
  if (now - lastStopCheck_ <= kPumpIntervalMs) return;
  lastStopCheck_ = now;
  messages->HasMessage();
}

void CInterpretor::Tick() {
  tickCountdown = tickPeriod;
  if (!lateTick_) services.clock->tick();
  lateTick_ = false;
  const uint32_t now = NowMs();
  if (animatedCount > 0 && now - lastMovement >= movementInterval) StepTimed(now);
  if (newsSinceCollection > collectionThreshold) Collect();
  if (needsRefresh && autoRefresh && now - lastRefresh >= refreshInterval) {
    RefreshAll();
    lastRefresh = NowMs();
  }
  PumpMessages();
}

void CInterpretor::StepTimed(uint32_t nowMs) {
  uint32_t cursor = timed.First();
  while (CTimed* object = timed.Step(cursor)) object->Step(nowMs);
  lastMovement = nowMs;
}

// An alarm's work may end it or others, so each is looked for anew.
void CInterpretor::RingAlarms() {
  const uint32_t now = NowMs();
  for (size_t i = 0; i < alarms_.size();) {
    CAlarm* const alarm = alarms_[i];
    if (static_cast<int32_t>(now - alarm->dueMs) >= 0) alarm->Ring();
    if (i < alarms_.size() && alarms_[i] == alarm) ++i;
  }
}

void CInterpretor::Poll() {
  RingAlarms();
  pollNeed_ = PollNeed::None;
  for (const auto& poll : polls_) pollNeed_ = std::max(pollNeed_, poll());
}

// Takes one message through the filters to its window. False for WM_QUIT.
bool CInterpretor::FilterAndDispatch() {
  CMessage message;
  if (!messages->Get(message)) return true;
  if (message.message == kQuitMessage) return false;
  int answer = 0;
  for (int32_t f = 0; f < filterCount && answer == 0; ++f) {
    answer = messageFilters[static_cast<size_t>(f)]->OnMessage(message);
  }
  if (answer != 2) messages->Dispatch(message);
  return true;
}

void CInterpretor::PumpMessages() {
  const uint32_t now = NowMs();
  if (now - lastPump <= kPumpIntervalMs) return;
  lastPump = now;
  if (speedPercent != 100 && !messages->HasMessage()) {
    const int32_t pause = (5000 - speedPercent * 50) / 100;
    if (pause > 0) messages->WaitForMessage(pause);
    Poll();
    return;
  }
  while (messages->HasMessage()) FilterAndDispatch();
  Poll();
}

void CInterpretor::Wait(uint32_t ms) {
  if (inEvent) return;
  const uint32_t start = NowMs();
  for (;;) {
    const uint32_t passed = NowMs() - start;
    if (passed >= ms || param.stop.load(std::memory_order_relaxed)) return;
    if (messages->HasMessage()) {
      if (!FilterAndDispatch()) return;
    } else if (pollNeed_ == PollNeed::Now) {
      services.clock->tick();
    } else if (!nextEvent) {
      uint32_t slice = std::min(ms - passed, kWaitSliceMs);
      const uint32_t now = NowMs();
      const auto until = [&](uint32_t last, uint32_t interval) {
        const uint32_t since = now - last;
        slice = std::min(slice, since >= interval ? 1 : interval - since);
      };
      if (needsRefresh && autoRefresh) until(lastRefresh, refreshInterval);
      if (animatedCount > 0) until(lastMovement, movementInterval);
      if (pollNeed_ == PollNeed::Soon) slice = std::min(slice, kPollSliceMs);
      for (const CAlarm* alarm : alarms_) {
        slice = std::min(slice, static_cast<uint32_t>(std::max(static_cast<int32_t>(alarm->dueMs - now), 1)));
      }
      messages->WaitForMessage(static_cast<int>(std::max(slice, 1u)));
    }
    Poll();
    IdleStep();
  }
}

void CInterpretor::IdleStep() {
  if (pendingError != -1) {
    const auto code = static_cast<uint32_t>(pendingError);
    pendingError = -1;
    RaiseError(code);
  }
  const uint32_t now = NowMs();
  if (animatedCount > 0 && now - lastMovement >= movementInterval) StepTimed(now);
  if (needsRefresh && autoRefresh && now - lastRefresh >= refreshInterval) {
    RefreshAll();
    lastRefresh = NowMs();
  }
  if (inEvent == 0 && nextEvent) FireEvent();
}

// What a window asks for while one of its messages is handled: the queue runs before the message goes on.
void CInterpretor::ServiceStep() {
  while (inEvent == 0 && nextEvent && pendingError == -1) FireEvent();
}

void CInterpretor::RequestRefresh() {
  if (!autoRefresh) return;
  needsRefresh = true;
  lastRefresh = NowMs() - refreshInterval;
}

void CInterpretor::RefreshAll() {
  if (inRefresh) return;
  struct InRefresh {
    bool& flag;
    ~InRefresh() { flag = false; }
  } in{inRefresh};
  inRefresh = true;
  needsRefresh = false;
  uint32_t cursor = refreshList.First();
  while (CIRefresh* entry = refreshList.Step(cursor)) {
    if (!entry->IsWindowBound() && !entry->IsSurface() && entry->IsDirty()) entry->Refresh();
  }
  std::vector<uint32_t> waiting;
  cursor = refreshList.First();
  while (CIRefresh* entry = refreshList.Step(cursor)) {
    if (entry->IsWindowBound() || !entry->IsSurface()) continue;
    if (entry->IsDirty()) {
      entry->Refresh();
    } else {
      waiting.push_back(entry->listNode);
    }
  }
  for (int round = 0; round < kRefreshRounds && needsRefresh && !waiting.empty(); ++round) {
    needsRefresh = false;
    std::erase_if(waiting, [&](uint32_t node) {
      CIRefresh* entry = refreshList.At(node);
      if (!entry) return true;
      if (!entry->IsDirty()) return false;
      entry->Refresh();
      return true;
    });
  }
  cursor = refreshList.First();
  while (CIRefresh* entry = refreshList.Step(cursor)) {
    if (entry->IsWindowBound() && entry->IsDirty()) entry->Refresh();
  }
  needsRefresh = false;
  if (redrawOverlays) redrawOverlays();
}

uint32_t CInterpretor::AddRefresh(CIRefresh* object, bool atHead) {
  return atHead ? refreshList.Prepend(object) : refreshList.Append(object);
}

void CInterpretor::RemoveRefresh(CIRefresh* object) {
  if (refreshList.At(object->listNode) == object) refreshList.Remove(object->listNode);
  object->listNode = 0;
}

void CInterpretor::AddMessageFilter(CIBaseMessages* filter) {
  if (static_cast<size_t>(filterCount) < messageFilters.size()) {
    messageFilters[static_cast<size_t>(filterCount++)] = filter;
  }
}

void CInterpretor::RemoveMessageFilter(CIBaseMessages* filter) {
  const auto end = messageFilters.begin() + filterCount;
  const auto at = std::find(messageFilters.begin(), end, filter);
  if (at == end) return;
  std::copy(at + 1, end, at);
  --filterCount;
}

uint32_t CInterpretor::AddTimed(CTimed* object) {
  ++animatedCount;
  return timed.Append(object);
}

void CInterpretor::RemoveTimed(uint32_t node) {
  if (!timed.At(node)) return;
  timed.Remove(node);
  --animatedCount;
}

}  // namespace vl
