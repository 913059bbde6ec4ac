#include "net/script/vex_wrapper.h"

#include "net/script/no_sockets.h"
#include "net/script/vex_classes.h"
#include "net/script/vex_stats_class.h"

namespace vl {

namespace {

// Which class an event's two objects have; the first one's function is called.
struct EventObjects {
  uint8_t first;
  uint8_t second;
  bool hasText;
};

constexpr std::array<EventObjects, kVexEvents> kEventObjects = {{
    {0, 0, false},
    {CLASS_VEXPLAYER, CLASS_VEXUSER, true},
    {CLASS_VEXCHANNEL, CLASS_VEXUSER, false},
    {CLASS_VEXCHANNEL, CLASS_VEXUSER, false},
    {CLASS_VEXCHANNEL, CLASS_VEXUSER, false},
    {CLASS_VEXPLAYER, 0, false},
    {CLASS_VEXPLAYER, 0, false},
    {CLASS_VEXPLAYER, CLASS_VEXCHANNEL, false},
    {CLASS_VEXPLAYER, CLASS_VEXCHANNEL, false},
    {CLASS_VEXSERVER, CLASS_VEXCONNECTION, false},
    {CLASS_VEXSERVER, CLASS_VEXCONNECTION, false},
    {CLASS_VEXCONNECTION, CLASS_VEXSESSION, false},
    {CLASS_VEXCONNECTION, CLASS_VEXSESSION, false},
    {CLASS_VEXCONNECTION, 0, true},
    {CLASS_VEXCHANNEL, CLASS_VEXUSER, false},
    {CLASS_VEXPLAYER, 0, true},
    {CLASS_VEXSERVER, CLASS_VEXSESSION, false},
    {CLASS_VEXSERVER, CLASS_VEXSESSION, false},
    {CLASS_VEXSOCKET, 0, false},
    {CLASS_VEXSOCKET, 0, false},
    {CLASS_VEXSOCKET, 0, false},
    {CLASS_VEXSOCKET, 0, false},
}};

void PostVexEvent(CInterpretor& interpreter, const VexEvent& event) {
  const EventObjects& objects = kEventObjects[event.number];
  VexObject* channel = nullptr;
  VexObject* holder = event.first;
  uint8_t holderClass = objects.first;
  if (event.number == kVexUserNameChanged) {
    // The player's event; the channel comes last.
    channel = event.first;
    holder = PlayerOfChannel(*channel);
    holderClass = CLASS_VEXPLAYER;
  }
  const auto* wrapper = static_cast<const CIVEXClassImpl*>(holder->privateData);
  const BlockRecord* function = wrapper ? wrapper->Function(event.number) : nullptr;
  if (!function) return;
  std::vector<CValue> arguments;
  arguments.reserve(4);
  const auto add = [&](VexObject* object, uint8_t ofClass) {
    CIBaseClassImpl* wrapped = WrapVexObject(interpreter, object, ofClass);
    arguments.push_back(wrapped ? interpreter.MakeValue(wrapped) : interpreter.MakeValue(0));
  };
  add(holder, holderClass);
  if (objects.second) add(event.second, objects.second);
  if (objects.hasText || channel) arguments.push_back(interpreter.MakeValue(event.text));
  if (objects.hasText) arguments.push_back(interpreter.MakeValue(static_cast<int32_t>(event.type)));
  if (channel) add(channel, CLASS_VEXCHANNEL);
  interpreter.PostEvent(function, std::move(arguments));
}

// An error can't pass through the layer; the program meets it at its next statement.
void HandleVexEvent(VexApi& api, const VexEvent& event) {
  CInterpretor& interpreter = *static_cast<CInterpretor*>(api.owner);
  if (interpreter.terminating) return;
  try {
    PostVexEvent(interpreter, event);
  } catch (const CIError& error) {
    interpreter.pendingError = static_cast<int32_t>(error.code);
  }
}

}  // namespace

CVexNetwork::CVexNetwork(CInterpretor& interpreter)
    : interpreter_(interpreter),
      noSockets_(interpreter.services.sockets ? nullptr : std::make_unique<NoSockets>()),
      api(noSockets_ ? *noSockets_ : *interpreter.services.sockets, *interpreter.services.clock) {
  api.owner = &interpreter;
  api.events.fill(&HandleVexEvent);
  // What peers send faster than the program handles it stays in the network: it must not fill the event queue.
  api.hasRoom = [this] { return interpreter_.events.Count() < interpreter_.eventLimit / 2; };
  api.idle = [this] {
    interpreter_.messages->WaitForMessage(1);
    // It doesn't look at the host while messages wait for the program; the host's stop comes that way.
    interpreter_.messages->HasMessage();
    interpreter_.services.clock->tick();
    return !interpreter_.param.stop.load(std::memory_order_relaxed);
  };
  interpreter.AddPoll([this] {
    if (api.nodes.Count() + api.plainSockets.Count() == 0) return PollNeed::None;
    api.Poll();
    if (api.hasWork) return PollNeed::Now;
    return api.sockets.wakesWaits() ? PollNeed::None : PollNeed::Soon;
  });
}

CVexNetwork& CVexNetwork::Of(CInterpretor& interpreter) {
  if (!interpreter.network) interpreter.network = std::make_unique<CVexNetwork>(interpreter);
  return static_cast<CVexNetwork&>(*interpreter.network);
}

void CIVEXClassImpl::Attach(VexObject& object, bool holdsItself) {
  core_ = &object;
  object.privateData = this;
  object.onDestroy = &CoreIsGone;
  holdsItself_ = holdsItself;
  if (holdsItself) Hold();
}

void CIVEXClassImpl::CoreIsGone(VexObject& object) {
  auto* wrapper = static_cast<CIVEXClassImpl*>(object.privateData);
  wrapper->core_ = nullptr;
  if (wrapper->holdsItself_) wrapper->Unhold();
  wrapper->holdsItself_ = false;
}

void CIVEXClassImpl::Destroy(bool final) {
  value_.SetInt(0);
  if (core_) core_->Delete();
  CIBaseClassImpl::Destroy(final);
}

void CIVEXClassImpl::GiveWrapper(VexObject* object, uint32_t ofClass) const {
  CIBaseClassImpl* wrapped = WrapVexObject(interpreter, object, ofClass);
  if (wrapped) {
    Result().SetObject(wrapped);
  } else {
    Result().SetInt(0);
  }
}

void CIVEXClassImpl::GiveStats(const VexStats* stats) const {
  if (!stats || !interpreter.ClassInfo(CLASS_VEXSTATS)) {
    Result().SetInt(0);
    return;
  }
  auto* object = new CIVexStats(interpreter);  // its class list owns it
  object->Create();
  object->stats = *stats;
  Result().SetObject(object);
  ++interpreter.newsSinceCollection;
}

CIBaseClassImpl* WrapVexObject(CInterpretor& interpreter, VexObject* object, uint32_t ofClass) {
  if (!object || interpreter.terminating) return nullptr;
  if (object->privateData) return static_cast<CIVEXClassImpl*>(object->privateData);
  const CIClassInfo* info = interpreter.ClassInfo(ofClass);
  if (!info || !info->table || !info->table->create) return nullptr;
  auto* wrapper = static_cast<CIVEXClassImpl*>(info->table->create(interpreter));
  wrapper->Create();
  wrapper->Attach(*object, true);
  ++interpreter.newsSinceCollection;
  return wrapper;
}

}  // namespace vl
