// Timer: a periodic event.
#include <algorithm>

#include "classes/core_classes.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {

// The period's systems fired no faster.
constexpr uint32_t kShortestMs = 10;
// What a negative interval reads as there.
constexpr uint32_t kLongestMs = 0x7FFFFFFF;

class CITimer : public CIBaseClassImpl, public CAlarm {
 public:
  explicit CITimer(CInterpretor& interpreter)
      : CIBaseClassImpl(interpreter, CLASS_TIMER, Listing::Listed), privateData_(&interpreter) {
    privateData_.SetInt(0);
  }

  void Construct() override {
    if (interpreter.GetArgCount() > 1) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
    if (interpreter.GetArgCount() == 1) interval_ = IntervalArgument();
    Create();
  }

  void Destroy(bool final) override {
    Stop();
    onTimeElapsed_ = nullptr;
    privateData_.SetInt(0);
    CIBaseClassImpl::Destroy(final);
  }

  void Start() {
    if (isStarted_ || interval_ == 0) return;
    isStarted_ = true;
    periodMs_ = interval_ < 0 ? kLongestMs : std::max(static_cast<uint32_t>(interval_), kShortestMs);
    dueMs = interpreter.NowMs() + periodMs_;
    interpreter.AddAlarm(this);
  }

  void Stop() {
    if (!isStarted_) return;
    isStarted_ = false;
    interpreter.RemoveAlarm(this);
  }

  // Periods that passed unseen count as one.
  void Ring() override {
    const uint32_t now = interpreter.NowMs();
    dueMs += periodMs_;
    if (static_cast<int32_t>(now - dueMs) >= 0) dueMs = now + periodMs_;
    if (onTimeElapsed_) interpreter.PostUniqueEvent(onTimeElapsed_, this, {interpreter.MakeValue(this)});
  }

  void IsStarted() { interpreter.GetResult().SetInt(isStarted_); }
  void GetInterval() { interpreter.GetResult().SetInt(interval_); }
  void OnTimeElapsed() { onTimeElapsed_ = interpreter.GetEventFunction(); }
  void SetPrivateData() { privateData_.Assign(*interpreter.GetArg(0)); }
  void GetPrivateData() { interpreter.GetResult().Assign(privateData_); }

  void SetInterval() {
    if (interpreter.GetArgCount() != 1) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
    interval_ = IntervalArgument();
  }

 private:
  int32_t IntervalArgument() {
    if (interpreter.GetArg(0)->type > VT_FLOAT) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    return interpreter.GetArgInt(0);
  }

  int32_t interval_ = 0;   // ms
  uint32_t periodMs_ = 0;  // of the last Start
  bool isStarted_ = false;
  const BlockRecord* onTimeElapsed_ = nullptr;
  CValue privateData_;
};

constexpr MemberRow kRows[] = {
    Row(1, "Start", kMember<&CITimer::Start>, "Start(): nothing happens with an interval of 0"),
    Row(2, "Stop", kMember<&CITimer::Stop>, "Stop()"),
    Row(3, "IsStarted", kMember<&CITimer::IsStarted>, "IsStarted(): 1 or 0"),
    Row(4, "SetInterval", kMember<&CITimer::SetInterval>, "SetInterval(ms): for the next Start"),
    Row(5, "GetInterval", kMember<&CITimer::GetInterval>, "GetInterval(): in ms"),
    {6, "OnTimeElapsed", MemberKind::Event, kMember<&CITimer::OnTimeElapsed>, 0, 0,
     "OnTimeElapsed = f: f(timer) after each interval"},
    Row(7, "SetPrivateData", kMember<&CITimer::SetPrivateData>, "SetPrivateData(value): kept with the timer"),
    Row(8, "GetPrivateData", kMember<&CITimer::GetPrivateData>, "GetPrivateData(): what was kept"),
};

}  // namespace

const ClassTable kTimerClass = {CLASS_TIMER, kRows, &CreateObject<CITimer>, "An event at regular times"};

}  // namespace vl
