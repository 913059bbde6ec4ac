#include "input/setup_dialog.h"

#include <algorithm>

#include "platform/keys.h"

namespace vl {
namespace {

constexpr size_t kMaxName = 60;
constexpr int kButtonLeft = 320;
constexpr int kButtonWidth = 90;
constexpr int kButtonHeight = 23;
constexpr int kRowsPerNotch = 3;

}  // namespace

SetupDialog::SetupDialog(GameSettings& settings, const DeviceState& devices, const SetupTexts& texts)
    : devices_(devices), texts_(texts), tree_(settings, texts.settings, texts.player) {}

// --- Buttons ---

Rect SetupDialog::ButtonBox(int button) {
  // OK and Cancel stand at the foot of the list.
  const int top = button < kOk ? kListBox.top + button * 28 : kListBox.bottom - kButtonHeight - (kCancel - button) * 28;
  return {kButtonLeft, top, kButtonLeft + kButtonWidth, top + kButtonHeight};
}

int SetupDialog::ButtonAt(int x, int y) {
  for (int button = 0; button < kButtons; ++button) {
    if (ButtonBox(button).Contains(x, y)) return button;
  }
  return kList;
}

bool SetupDialog::IsEnabled(int button) const {
  const SetupNode node = selected_.node;
  switch (button) {
    case kAdd:
      return SetupTree::TakesNamed(node) || SetupTree::TakesInput(node);
    case kRename:
      return SetupTree::CanRename(node);
    case kDelete:
      return SetupTree::CanDelete(node);
    case kInput:
      return SetupTree::HasInput(node);
    case kPrefer:
      return node == SetupNode::Device;
    default:
      return true;
  }
}

void SetupDialog::Press(int button) {
  if (!IsEnabled(button)) return;
  isDirty_ = true;
  switch (button) {
    case kAdd:
      if (SetupTree::TakesInput(selected_.node)) {
        StartCapture(true);
        return;
      }
      Select(tree_.AddNamed(selected_, selected_.node == SetupNode::Root ? texts_.newSetting : texts_.newAction));
      if (SetupTree::CanRename(selected_.node)) StartRename();
      return;
    case kRename:
      StartRename();
      return;
    case kDelete:
      Select(tree_.Delete(selected_));
      // What can't be done to the node that is left doesn't keep the focus.
      if (focus_ != kList && !IsEnabled(focus_)) focus_ = kList;
      return;
    case kInput:
      StartCapture(false);
      return;
    case kPrefer:
      tree_.Prefer(selected_);
      return;
    case kOk:
      answer_ = Answer::Ok;
      return;
    default:
      answer_ = Answer::Cancel;
      return;
  }
}

void SetupDialog::NextFocus() {
  do {
    focus_ = focus_ + 1 < kButtons ? focus_ + 1 : int{kList};
  } while (focus_ != kList && !IsEnabled(focus_));
}

// --- The list ---

void SetupDialog::Select(const SetupPlace& place) {
  selected_ = place;
  ScrollTo(SelectedRow());
  isDirty_ = true;
}

void SetupDialog::ScrollTo(size_t row) {
  constexpr size_t kPage = kVisibleRows;
  firstRow_ = std::min(firstRow_, row);
  if (row >= firstRow_ + kPage) firstRow_ = row - kPage + 1;
  const size_t count = tree_.Rows().size();
  firstRow_ = std::min(firstRow_, count > kPage ? count - kPage : 0);
}

void SetupDialog::ScrollBy(int64_t rows) {
  const auto most = std::max<int64_t>(static_cast<int64_t>(tree_.Rows().size()) - kVisibleRows, 0);
  firstRow_ = static_cast<size_t>(std::clamp<int64_t>(static_cast<int64_t>(firstRow_) + rows, 0, most));
  isDirty_ = true;
}

void SetupDialog::MoveSelection(int rows) {
  const auto last = static_cast<int>(tree_.Rows().size()) - 1;
  const int row = std::clamp(static_cast<int>(SelectedRow()) + rows, 0, last);
  Select(tree_.Rows()[static_cast<size_t>(row)].place);
}

void SetupDialog::OpenOrClose(bool open) {
  const SetupRow row = tree_.Rows()[SelectedRow()];
  if (row.hasChildren && row.isExpanded != open) {
    tree_.Expand(row.place, open);
    Select(row.place);
  } else if (open) {
    if (row.hasChildren) MoveSelection(1);
  } else {
    // To the row that this one belongs to: the nearest above with a smaller depth.
    size_t above = SelectedRow();
    while (above > 0 && tree_.Rows()[above].place.Depth() >= row.place.Depth()) --above;
    Select(tree_.Rows()[above].place);
  }
}

void SetupDialog::ListKey(int32_t key) {
  const auto all = static_cast<int>(tree_.Rows().size());
  switch (key) {
    case kKeyUp:
      return MoveSelection(-1);
    case kKeyDown:
      return MoveSelection(1);
    case kKeyPrior:
      return MoveSelection(-kVisibleRows);
    case kKeyNext:
      return MoveSelection(kVisibleRows);
    case kKeyHome:
      return MoveSelection(-all);
    case kKeyEnd:
      return MoveSelection(all);
    case kKeyLeft:
      return OpenOrClose(false);
    case kKeyRight:
      return OpenOrClose(true);
    case kKeyInsert:
      return Press(kAdd);
    case kKeyDelete:
      return Press(kDelete);
    case kKeyF1 + 1:
      return Press(kRename);
    case kKeySpace:
      return Press(kInput);
    default:
      return;
  }
}

// --- Names and inputs ---

void SetupDialog::StartRename() {
  newName_ = tree_.NameOf(selected_);
  focus_ = kList;
}

void SetupDialog::EndRename(bool keep) {
  std::string name = std::move(*newName_);
  newName_.reset();
  isDirty_ = true;
  // Blanks around a name don't survive the text form, and a name of blanks would be none.
  const size_t first = name.find_first_not_of(' ');
  if (!keep || first == std::string::npos) return;
  tree_.Rename(selected_, name.substr(first, name.find_last_not_of(' ') + 1 - first));
}

void SetupDialog::StartCapture(bool isNew) {
  capture_.emplace(SetupTree::KindFor(selected_, isNew), devices_);
  isCaptureNew_ = isNew;
}

void SetupDialog::Capture(std::optional<int> row) {
  if (!row) return;
  capture_.reset();
  isDirty_ = true;
  if (isCaptureNew_) {
    Select(tree_.AddInput(selected_, *row));
  } else {
    tree_.SetInput(selected_, *row);
  }
}

// --- What happens ---

void SetupDialog::KeyDown(int32_t key) {
  if (capture_) {
    if (key == heldKey_) return;
    if (key == kKeyEscape) {
      capture_.reset();
      isDirty_ = true;
      return;
    }
    Capture(capture_->Key(key));
    return;
  }
  heldKey_ = key;
  if (newName_) {
    if (key == kKeyReturn || key == kKeyEscape) EndRename(key == kKeyReturn);
    return;
  }
  isDirty_ = true;
  switch (key) {
    case kKeyEscape:
      return Press(kCancel);
    case kKeyReturn:
      return Press(focus_ == kList ? int{kOk} : focus_);
    case kKeyTab:
      return NextFocus();
    default:
      if (focus_ == kList) return ListKey(key);
      if (key == kKeySpace) Press(focus_);
      return;
  }
}

void SetupDialog::KeyUp(int32_t key) {
  if (key == heldKey_) heldKey_ = 0;
}

void SetupDialog::Char(uint8_t character) {
  if (!newName_) return;
  isDirty_ = true;
  if (character == '\b') {
    if (!newName_->empty()) newName_->pop_back();
  } else if (character >= 32 && newName_->size() < kMaxName) {
    newName_->push_back(static_cast<char>(character));
  }
}

void SetupDialog::MouseDown(int32_t button, int x, int y, bool isDouble) {
  if (capture_) {
    Capture(capture_->MouseButton(button));
    return;
  }
  if (newName_) EndRename(true);
  if (button != kMouseLeft) return;
  isDirty_ = true;
  const int pressed = ButtonAt(x, y);
  if (pressed != kList) {
    if (!IsEnabled(pressed)) return;
    pressed_ = focus_ = pressed;
    isPressedInside_ = true;
    return;
  }
  if (!kListBox.Contains(x, y)) return;
  focus_ = kList;
  if (HasScrollBar() && x >= kListBox.right - 2 - kScrollWidth) {
    // Where it is pressed the middle of the list comes to stand.
    const auto count = static_cast<int64_t>(tree_.Rows().size());
    const int64_t middle = (y - kListBox.top - 2) * count / (kListBox.Height() - 4);
    ScrollBy(middle - kVisibleRows / 2 - static_cast<int64_t>(firstRow_));
    return;
  }
  const size_t row = firstRow_ + static_cast<size_t>(std::max(y - kListBox.top - 2, 0) / kRowHeight);
  if (row >= tree_.Rows().size()) return;
  const SetupRow hit = tree_.Rows()[row];
  Select(hit.place);
  const int text = kListBox.left + 4 + static_cast<int>(hit.place.Depth()) * kIndent + kIndent;
  if (hit.hasChildren && (x < text || isDouble)) {
    tree_.Expand(hit.place, !hit.isExpanded);
    ScrollTo(row);
  } else if (isDouble) {
    Press(SetupTree::HasInput(hit.place.node) ? kInput : kAdd);
  }
}

void SetupDialog::MouseUp(int32_t button, int x, int y) {
  if (button != kMouseLeft || pressed_ == kList) return;
  const int pressed = pressed_;
  pressed_ = kList;
  isDirty_ = true;
  if (ButtonBox(pressed).Contains(x, y)) Press(pressed);
}

void SetupDialog::MouseMove(int x, int y) {
  if (capture_) {
    Capture(capture_->MouseMove(x, y));
    return;
  }
  if (pressed_ == kList) return;
  const bool isInside = ButtonBox(pressed_).Contains(x, y);
  isDirty_ = isDirty_ || isInside != isPressedInside_;
  isPressedInside_ = isInside;
}

void SetupDialog::Wheel(int32_t delta) {
  if (capture_) {
    Capture(capture_->Wheel(delta));
    return;
  }
  ScrollBy(-int64_t{delta} * kRowsPerNotch / 120);
}

void SetupDialog::WatchDevices() {
  if (capture_) Capture(capture_->Devices(devices_));
}

}  // namespace vl
