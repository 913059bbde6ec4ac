// The picture of the set-up dialog.
#include <algorithm>

#include "input/classic_paint.h"
#include "input/setup_dialog.h"

namespace vl {

using namespace classic;

void SetupDialog::Paint(cSurface& surface, TextFont& font) {
  isDirty_ = false;
  Fill(surface, {0, 0, kSize.width, kSize.height}, kFace);
  PaintList(surface, font);
  for (int button = 0; button < kButtons; ++button) PaintButton(surface, font, button);
  PaintHint(surface, font);
}

void SetupDialog::PaintList(cSurface& surface, TextFont& font) {
  Fill(surface, kListBox, kWindowColor);
  Sunken(surface, kListBox);
  const std::vector<SetupRow>& rows = tree_.Rows();
  const size_t end = std::min(rows.size(), firstRow_ + static_cast<size_t>(kVisibleRows));
  int y = kListBox.top + 2;
  for (size_t row = firstRow_; row < end; ++row, y += kRowHeight) PaintRow(surface, font, rows[row], y);
  if (HasScrollBar()) PaintScrollBar(surface);
}

void SetupDialog::PaintRow(cSurface& surface, TextFont& font, const SetupRow& row, int y) {
  const int left = kListBox.left + 4 + static_cast<int>(row.place.Depth()) * kIndent;
  if (row.hasChildren) {
    const Rect box = {left + 3, y + 4, left + 12, y + 13};
    Edge(surface, box, kShadow, kShadow);
    Fill(surface, {box.left + 2, box.top + 4, box.right - 2, box.top + 5}, kWindowText);
    if (!row.isExpanded) Fill(surface, {box.left + 4, box.top + 2, box.left + 5, box.bottom - 2}, kWindowText);
  }
  const bool isSelected = row.place == tree_.Rows()[SelectedRow()].place;
  const bool isTyped = isSelected && newName_;
  const std::string& text = isTyped ? *newName_ : row.text;
  const int right = std::min(left + kIndent + font.measure(text).width + 6, kListBox.right - 2 - kScrollWidth);
  const Rect box = {left + kIndent, y, std::max(right, left + kIndent), y + kRowHeight};
  if (isTyped) {
    Edge(surface, {box.left, box.top, box.right + 2, box.bottom}, kWindowText, kWindowText);
    // Where the next character comes.
    Fill(surface, {box.right - 3, box.top + 2, box.right - 2, box.bottom - 2}, kWindowText);
  } else if (isSelected) {
    Fill(surface, box, focus_ == kList ? kHighlight : kFace);
  }
  const bool isInverse = isSelected && !isTyped && focus_ == kList;
  Text(surface, font, text, {box.left + 3, box.top, box.right, box.bottom}, kTextSingleLine | kTextVerticalCentre,
       isInverse ? kHighlightText : kWindowText);
}

void SetupDialog::PaintScrollBar(cSurface& surface) {
  const Rect bar = {kListBox.right - 2 - kScrollWidth, kListBox.top + 2, kListBox.right - 2, kListBox.bottom - 2};
  Fill(surface, bar, kLightEdge);
  const auto count = static_cast<int64_t>(tree_.Rows().size());
  const auto at = [&](int64_t row) { return bar.top + static_cast<int>(row * bar.Height() / count); };
  const auto first = static_cast<int64_t>(firstRow_);
  Raised(surface, {bar.left, at(first), bar.right, std::max(at(first + kVisibleRows), at(first) + 8)});
}

void SetupDialog::PaintButton(cSurface& surface, TextFont& font, int button) {
  const char* const names[] = {texts_.add,    texts_.rename, texts_.remove, texts_.input,
                               texts_.prefer, texts_.ok,     texts_.cancel};
  const Rect box = ButtonBox(button);
  const bool isDown = pressed_ == button && isPressedInside_;
  Raised(surface, box);
  if (isDown) {
    Edge(surface, box, kDarkShadow, kLightEdge);
    Edge(surface, Inside(box, 1), kShadow, kFace);
  }
  if (focus_ == button) Edge(surface, Inside(box, 4), kShadow, kShadow);
  const int shift = isDown ? 1 : 0;
  const Rect text = {box.left + shift, box.top + shift, box.right + shift, box.bottom + shift};
  constexpr uint32_t kFormat = kTextSingleLine | kTextVerticalCentre | kTextCentre;
  if (IsEnabled(button)) {
    Text(surface, font, names[button], text, kFormat, kButtonText);
  } else {
    Text(surface, font, names[button], {text.left + 1, text.top + 1, text.right + 1, text.bottom + 1}, kFormat,
         kLightEdge);
    Text(surface, font, names[button], text, kFormat, kGreyText);
  }
}

const char* SetupDialog::Hint() const {
  if (newName_) return texts_.typeName;
  if (!capture_) return "";
  switch (capture_->Kind()) {
    case DeviceKind::Mouse:
      return texts_.pressMouse;
    case DeviceKind::Joystick:
      return texts_.pressJoystick;
    case DeviceKind::Keyboard:
      return texts_.pressKey;
    case DeviceKind::None:
      break;
  }
  return texts_.pressAny;
}

void SetupDialog::PaintHint(cSurface& surface, TextFont& font) {
  std::string hint = Hint();
  if (capture_) hint.append(" ").append(texts_.escape);
  Text(surface, font, hint, kHintBox, kTextWordBreak, kButtonText);
}

}  // namespace vl
