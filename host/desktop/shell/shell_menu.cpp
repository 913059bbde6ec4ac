#include "host/desktop/shell/shell_menu.h"

#include <algorithm>

#include "platform/keys.h"

namespace vl {
namespace {

constexpr int kEdge = 3;
constexpr int kMargin = 20;  // beside the texts
constexpr int kGap = 24;     // between a label and its keys
constexpr int kGroupGap = 8;

}  // namespace

void ShellMenu::Show(std::vector<ShellMenuItem> items, const ShellPainter& painter, int x, int y, Size window) {
  items_ = std::move(items);
  marked_ = -1;
  rowHeight_ = painter.LineHeight() + 4;
  int labels = 0;
  int keys = 0;
  for (const ShellMenuItem& item : items_) {
    labels = std::max(labels, painter.WidthOf(item.label));
    keys = std::max(keys, painter.WidthOf(item.keys));
  }
  width_ = 2 * kEdge + 2 * kMargin + labels + kGap + keys;
  height_ = items_.empty() ? 0 : BoxOf(items_.size() - 1).bottom + kEdge;
  x_ = std::max(std::min(x, window.width - width_), 0);
  y_ = std::max(std::min(y, window.height - height_), 0);
}

Rect ShellMenu::BoxOf(size_t item) const {
  int top = kEdge;
  for (size_t i = 0; i < item; ++i) top += rowHeight_ + (items_[i + 1].beginsGroup ? kGroupGap : 0);
  return {kEdge, top, width_ - kEdge, top + rowHeight_};
}

int ShellMenu::ItemAt(int x, int y) const {
  for (size_t i = 0; i < items_.size(); ++i) {
    const Rect box = BoxOf(i);
    if (x >= box.left && x < box.right && y >= box.top && y < box.bottom) return static_cast<int>(i);
  }
  return -1;
}

void ShellMenu::Mark(int step) {
  const int count = static_cast<int>(items_.size());
  marked_ = marked_ < 0 ? (step > 0 ? 0 : count - 1) : (marked_ + step + count) % count;
}

ShellMenu::Answer ShellMenu::OnInput(const Event& event) {
  const int x = event.x - x_;
  const int y = event.y - y_;
  switch (event.type) {
    case EventType::MouseMove: {
      const int item = ItemAt(x, y);
      if (item == marked_) return Answer::Nothing;
      marked_ = item;
      return Answer::Changed;
    }
    case EventType::MouseDown:
      return x >= 0 && y >= 0 && x < width_ && y < height_ ? Answer::Nothing : Answer::Left;
    case EventType::MouseUp:
      marked_ = ItemAt(x, y);
      return marked_ >= 0 ? Answer::Chosen : Answer::Nothing;
    case EventType::KeyDown:
      switch (event.code) {
        case kKeyDown:
          Mark(1);
          return Answer::Changed;
        case kKeyUp:
          Mark(-1);
          return Answer::Changed;
        case kKeyReturn:
        case kKeySpace:
          return marked_ >= 0 ? Answer::Chosen : Answer::Nothing;
        case kKeyEscape:
          return Answer::Left;
        default:
          return Answer::Nothing;
      }
    default:
      return Answer::Nothing;
  }
}

WindowOverlay ShellMenu::Paint(ShellPainter& painter) const {
  using namespace shell_colours;
  if (!painter.Begin(width_, height_)) return {};
  painter.Edge({0, 0, width_, height_}, true);
  for (size_t i = 0; i < items_.size(); ++i) {
    const ShellMenuItem& item = items_[i];
    const Rect box = BoxOf(i);
    if (item.beginsGroup && i > 0) {
      const int line = box.top - kGroupGap / 2;
      painter.Fill({box.left + 1, line - 1, box.right - 1, line}, kShadow);
      painter.Fill({box.left + 1, line, box.right - 1, line + 1}, kLight);
    }
    const bool isMarked = static_cast<int>(i) == marked_;
    if (isMarked) painter.Fill(box, kMarked);
    const Colour colour = isMarked ? kMarkedText : kText;
    const Rect inner{box.left + kMargin, box.top, box.right - kMargin, box.bottom};
    painter.Text(item.label, inner, colour, kTextVerticalCentre | kTextSingleLine);
    painter.Text(item.keys, inner, colour, kTextRight | kTextVerticalCentre | kTextSingleLine);
  }
  return painter.Finish(x_, y_);
}

}  // namespace vl
