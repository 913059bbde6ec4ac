// CMessageSource: the window system's message queue, as the run loop sees it.
//
// The interpreter pumps; the window tree behind this interface makes the messages of platform events, timers
// and posts, and dispatches them to its windows. Nothing here runs script code.
#pragma once

#include <cstdint>

namespace vl {

struct CMessage {
  uint32_t window = 0;  // handle in the window tree, 0 for none
  uint32_t message = 0;
  uint32_t wParam = 0;
  int32_t lParam = 0;
  uint32_t timeMs = 0;
};

class CMessageSource {
 public:
  virtual ~CMessageSource() = default;
  // True when Get would give a message at once; takes in what the platform has.
  virtual bool HasMessage() = 0;
  virtual bool Get(CMessage& message) = 0;
  virtual void Dispatch(const CMessage& message) = 0;
  // Sleeps until a message comes, at most timeoutMs.
  virtual void WaitForMessage(int timeoutMs) = 0;
  // The host asks the run to end: WM_CLOSE for the main window. Called by the walker when it sees `stop`.
  virtual void CloseMainWindow() = 0;
};

// Sees each message before it is dispatched.
class CIBaseMessages {
 public:
  virtual ~CIBaseMessages() = default;
  // 0: go on; 1: no further filter sees it; 2: swallowed.
  virtual int OnMessage(const CMessage& message) = 0;
};

}  // namespace vl
