#include "ui/keyboard_filter.h"

#include <algorithm>

#include "interpreter/interpretor.h"
#include "platform/keys.h"
#include "ui/window_class.h"

namespace vl {

namespace {

constexpr int kGoOn = 0;
constexpr int kSwallowed = 2;

}  // namespace

void KeyboardFilter::Install(CInterpretor& interpreter) {
  WindowTree& tree = WindowTree::Of(interpreter);
  if (!tree.keyboardFilter) tree.keyboardFilter = std::make_unique<KeyboardFilter>(tree);
  const auto end = interpreter.messageFilters.begin() + interpreter.filterCount;
  if (std::find(interpreter.messageFilters.begin(), end, tree.keyboardFilter.get()) == end) {
    interpreter.AddMessageFilter(tree.keyboardFilter.get());
  }
}

int KeyboardFilter::OnMessage(const CMessage& message) {
  if (message.message == WM_CHAR && dropCharacter_ && message.wParam == kKeyTab) {
    dropCharacter_ = false;
    return kSwallowed;
  }
  if (message.message != WM_KEYDOWN && message.message != WM_SYSKEYDOWN) return kGoOn;
  dropCharacter_ = false;
  if (message.wParam != kKeyTab) return kGoOn;
  const int answer = OnTab(message.window);
  dropCharacter_ = answer == kSwallowed;
  return answer;
}

int KeyboardFilter::OnTab(uint32_t window) {
  WindowNode* node = tree_.Find(window);
  auto* control = node ? dynamic_cast<CIChildWindow*>(node->target) : nullptr;
  if (!control) return kGoOn;
  const bool back = (tree_.KeyMods() & kModShift) != 0;
  CIChildWindow* next = nullptr;
  if (auto* holder = dynamic_cast<CIWindow*>(control)) {
    next = back ? holder->LastTabChild() : holder->FirstTabChild();
  } else if (!control->WantsTab() && control->parent) {
    next = back ? control->parent->PreviousTabChild(control) : control->parent->NextTabChild(control);
  }
  if (!next) return kGoOn;
  tree_.SetFocus(next->hwnd);
  return kSwallowed;
}

}  // namespace vl
