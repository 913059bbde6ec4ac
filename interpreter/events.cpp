// The event queue: calls of script functions that wait for the walker.
#include "interpreter/executor/executor.h"
#include "interpreter/interpretor.h"

namespace vl {

CValue CInterpretor::MakeValue(int32_t v) {
  CValue value(this);
  value.SetInt(v);
  return value;
}

CValue CInterpretor::MakeValue(CIBaseClassImpl* object) {
  CValue value(this);
  value.SetObject(object);
  return value;
}

CValue CInterpretor::MakeValue(std::string_view text) {
  CValue value(this);
  value.SetString(text);
  return value;
}

void CInterpretor::PostEvent(const BlockRecord* function, std::vector<CValue> arguments) {
  if (!function || terminating) return;
  if (events.Count() >= eventLimit) RaiseError(ERR_QUEUE_FULL);
  auto event = std::make_unique<CEvent>();
  event->function = function;
  event->args = std::move(arguments);
  const uint32_t node = events.Append(event.release());
  if (!nextEvent) nextEvent = node;
}

void CInterpretor::PostUniqueEvent(const BlockRecord* function, const void* key, std::vector<CValue> arguments) {
  if (!function || terminating) return;
  uint32_t cursor = events.First();
  while (CEvent* event = events.Step(cursor)) {
    if (event->function == function && event->key == key) {
      event->args = std::move(arguments);
      return;
    }
  }
  PostEvent(function, std::move(arguments));
  uint32_t last = events.Last();
  events.At(last)->key = key;
}

void CInterpretor::FireEvent() {
  if (argDepth >= limits::kArgumentLevels) return;
  const std::unique_ptr<CEvent> event(events.At(nextEvent));
  events.Remove(nextEvent);
  nextEvent = events.First();
  struct InEvent {
    CInterpretor& i;
    int32_t& depth;
    uint32_t savedSp;
    ~InEvent() {
      --depth;
      // The member that waits gives its result where it was called.
      i.sp = savedSp;
      i.nextEvent = i.events.First();
    }
  } in{*this, inEvent, sp};
  ++inEvent;
  const auto count = static_cast<int32_t>(event->args.size());
  for (int32_t a = 0; a < count; ++a) Arg(a).Assign(event->args[static_cast<size_t>(a)]);
  argCounts[argDepth] = count;
  highWater = std::max(highWater, static_cast<int32_t>(argDepth) * limits::kArgumentsPerLevel + count);
  values[sp]->ForgetTarget();
  CValue result(this);
  result.SetInt(0);
  if (executor_) {
    executor_->RunEvent(*event->function);
  } else {
    RunFunction(*event->function, *this, *thisObject, result);
  }
}

}  // namespace vl
