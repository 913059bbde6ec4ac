// KeyboardFilter: Tab moves the focus among the controls of a window, before any window sees the key.
#pragma once

#include "interpreter/message_source.h"

namespace vl {

class CInterpretor;
class CIChildWindow;
class WindowTree;

class KeyboardFilter final : public CIBaseMessages {
 public:
  explicit KeyboardFilter(WindowTree& tree) : tree_(tree) {}
  int OnMessage(const CMessage& message) override;
  // Enters the run's filter once; a reset of the interpreter takes it out.
  static void Install(CInterpretor& interpreter);

 private:
  int OnTab(uint32_t window);

  WindowTree& tree_;
  bool dropCharacter_ = false;  // the character of a Tab that moved the focus is no text
};

}  // namespace vl
