#include "host/desktop/shell/error_panel.h"

#include <algorithm>

#include "platform/keys.h"

namespace vl {
namespace {

constexpr int kMargin = 16;
constexpr int kWidth = 460;
constexpr int kMaxTextHeight = 360;
constexpr int kButtonWidth = 92;
constexpr int kButtonHeight = 26;
constexpr int kButtonGap = 10;
constexpr const char* kLabels[] = {"Copy text", "Play again", "Close"};

}  // namespace

std::string ErrorPanel::Text() const {
  std::string all = title_ + ": " + text_;
  if (!detail_.empty()) all += "\n" + detail_;
  return all;
}

void ErrorPanel::Show(std::string title, std::string text, std::string detail, const ShellPainter& painter) {
  title_ = std::move(title);
  text_ = std::move(text);
  detail_ = std::move(detail);
  focused_ = kButtons - 1;
  pressed_ = -1;
  const int inner = kWidth - 4 * kMargin;
  textHeight_ = std::clamp(painter.HeightOf(Text(), inner), painter.LineHeight(), kMaxTextHeight);
  size_ = {kWidth, textHeight_ + 5 * kMargin + kButtonHeight};
}

Rect ErrorPanel::BoxOf(int button) const {
  const int right = size_.width - kMargin - (kButtons - 1 - button) * (kButtonWidth + kButtonGap);
  const int bottom = size_.height - kMargin;
  return {right - kButtonWidth, bottom - kButtonHeight, right, bottom};
}

ErrorPanel::Answer ErrorPanel::Press(int button) const {
  constexpr Answer kAnswers[] = {Answer::Copy, Answer::Reload, Answer::Close};
  return kAnswers[button];
}

ErrorPanel::Answer ErrorPanel::OnInput(const Event& event) {
  int under = -1;
  for (int b = 0; b < kButtons; ++b) {
    const Rect box = BoxOf(b);
    if (event.x >= box.left && event.x < box.right && event.y >= box.top && event.y < box.bottom) under = b;
  }
  switch (event.type) {
    case EventType::Close:
      return Answer::Close;
    case EventType::MouseDown:
      pressed_ = under;
      if (under < 0) return Answer::Nothing;
      focused_ = under;
      return Answer::Changed;
    case EventType::MouseUp: {
      const bool isPress = under >= 0 && under == pressed_;
      pressed_ = -1;
      return isPress ? Press(under) : Answer::Nothing;
    }
    case EventType::KeyDown:
      if (event.code == kKeyEscape) return Answer::Close;
      if (event.code == 'C' && (event.mods & kModControl)) return Answer::Copy;
      if (event.code == kKeyReturn || event.code == kKeySpace) return Press(focused_);
      if (event.code == kKeyTab || event.code == kKeyRight || event.code == kKeyLeft) {
        const bool isBack = event.code == kKeyLeft || (event.mods & kModShift) != 0;
        focused_ = (focused_ + (isBack ? kButtons - 1 : 1)) % kButtons;
        return Answer::Changed;
      }
      return Answer::Nothing;
    default:
      return Answer::Nothing;
  }
}

WindowOverlay ErrorPanel::Paint(ShellPainter& painter) const {
  using namespace shell_colours;
  if (!painter.Begin(size_.width, size_.height)) return {};
  const Rect field{kMargin, kMargin, size_.width - kMargin, 3 * kMargin + textHeight_};
  painter.Fill(field, kLight);
  painter.Edge(field, false);
  painter.Text(Text(), {field.left + kMargin, field.top + kMargin, field.right - kMargin, field.bottom - kMargin},
               kText, kTextWordBreak);
  for (int b = 0; b < kButtons; ++b) painter.Button(BoxOf(b), kLabels[b], b == focused_);
  return painter.Finish(0, 0);
}

}  // namespace vl
