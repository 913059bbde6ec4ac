// Window: Input, a line that the person types.
#include <algorithm>

#include "ui/window_class.h"

namespace vl {

namespace {

constexpr uint32_t kInputStepMs = 20;
constexpr uint32_t kBackspace = 8;
constexpr uint32_t kLineFeed = 10;
constexpr uint32_t kReturn = 13;

}  // namespace

void CIWindow::Input() {
  if (inputActive_) interpreter.RaiseError(ERR_INPUT_RUNNING);
  if (interpreter.inEvent) interpreter.RaiseError(ERR_WAIT_IN_EVENT, kNoArgument, "Input inside an event function");
  inputPrompt_ = interpreter.IsArgDefault(0) ? "" : interpreter.GetArgString(0);
  inputText_.clear();
  if (surface) {
    inputX_ = surface->penX;
    inputY_ = surface->penY;
  }
  inputWidth_ = inputHeight_ = 0;
  inputActive_ = true;
  struct Active {
    bool& flag;
    ~Active() { flag = false; }
  } active{inputActive_};
  if (surface) surface->WriteText(inputPrompt_, inputWidth_, inputHeight_);
  Tree().SetFocus(hwnd);
  while (inputActive_ && !destroyed && !interpreter.param.stop.load()) interpreter.Wait(kInputStepMs);
  Result().SetString(inputText_);
}

// Draws prompt and text anew at the place where the prompt started.
void CIWindow::RedrawInput(bool withLine) {
  if (!surface) return;
  surface->penX = inputX_;
  surface->penY = inputY_;
  surface->EraseBox(inputX_, inputY_, inputWidth_, inputHeight_);
  inputWidth_ = inputHeight_ = 0;
  int32_t w = 0;
  int32_t h = 0;
  surface->WriteText(inputPrompt_, inputWidth_, inputHeight_);
  if (withLine) {
    surface->WriteTextLine(inputText_);
  } else {
    surface->WriteText(inputText_, w, h);
    inputWidth_ += w;
    inputHeight_ = std::max(inputHeight_, h);
  }
}

void CIWindow::OnCharacter(uint32_t character) {
  if (character == kBackspace) {
    if (!inputText_.empty()) inputText_.pop_back();
  } else if (character == kLineFeed || character == kReturn) {
    RedrawInput(true);
    inputActive_ = false;
    return;
  } else if (character >= 32) {
    if (inputText_.size() < limits::kMaxTextBytes) inputText_ += static_cast<char>(character);
  }
  RedrawInput(false);
}

}  // namespace vl
