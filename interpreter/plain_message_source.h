// CPlainMessageSource: the message source of a run without windows. It only serves the host's stop.
#pragma once

#include "interpreter/message_source.h"
#include "interpreter/thread_param.h"
#include "platform/events.h"

namespace vl {

class CPlainMessageSource : public CMessageSource {
 public:
  CPlainMessageSource(EventQueue& events, CThreadParam& param) : events_(events), param_(param) {}
  bool HasMessage() override {
    WaitForMessage(0);
    return false;
  }
  bool Get(CMessage&) override { return false; }
  void Dispatch(const CMessage&) override {}
  void WaitForMessage(int timeoutMs) override {
    Event event;
    if (events_.waitEvent(event, timeoutMs) && event.type == EventType::HostStop) param_.stop.store(true);
  }
  void CloseMainWindow() override {}

 private:
  EventQueue& events_;
  CThreadParam& param_;
};

}  // namespace vl
