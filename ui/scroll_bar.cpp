#include "ui/scroll_bar.h"

#include <algorithm>

#include "base/system_colors.h"
#include "ui/window_frame.h"

namespace vl {

namespace {

constexpr int kSmallestThumb = 8;

}  // namespace

int32_t ScrollInfo::LastPosition() const {
  const int64_t last = int64_t{maximum} - (page > 0 ? int64_t{page} - 1 : 0);
  return static_cast<int32_t>(std::max<int64_t>(last, minimum));
}

void ScrollInfo::SetPosition(int64_t to) {
  position = static_cast<int32_t>(std::clamp<int64_t>(to, minimum, LastPosition()));
}

void ScrollInfo::SetRange(int32_t from, int32_t to, int32_t newPage) {
  minimum = from;
  maximum = std::max(from, to);
  const int64_t most = int64_t{maximum} - minimum + 1;
  page = static_cast<int32_t>(std::clamp<int64_t>(newPage, 0, std::min<int64_t>(most, INT32_MAX)));
  SetPosition(position);
}

int ScrollBarLayout::Arrow() const { return std::min(kScrollBarWidth, Length() / 2); }

int ScrollBarLayout::Thumb(const ScrollInfo& info) const {
  const int track = Length() - 2 * Arrow();
  if (!info.HasRange()) return 0;
  int size = kScrollBarWidth;
  if (info.page > 0) {
    const int64_t range = int64_t{info.maximum} - info.minimum + 1;
    size = std::max(kSmallestThumb, static_cast<int>(track * int64_t{info.page} / range));
  }
  return size < track ? size : 0;
}

int ScrollBarLayout::ThumbOffset(const ScrollInfo& info) const {
  const int64_t range = int64_t{info.LastPosition()} - info.minimum;
  if (range <= 0) return 0;
  const int64_t room = Length() - 2 * Arrow() - Thumb(info);
  return static_cast<int>(room * (int64_t{info.position} - info.minimum) / range);
}

int32_t ScrollBarLayout::PositionAt(const ScrollInfo& info, int offset) const {
  const int64_t room = Length() - 2 * Arrow() - Thumb(info);
  if (room <= 0) return info.position;
  const int64_t range = int64_t{info.LastPosition()} - info.minimum;
  const int64_t at = std::clamp<int64_t>(offset, 0, room);
  return static_cast<int32_t>(info.minimum + (at * range + room / 2) / room);
}

Rect ScrollBarLayout::Along(int from, int to) const {
  if (vertical) return {box.left, box.top + from, box.right, box.top + to};
  return {box.left + from, box.top, box.left + to, box.bottom};
}

Rect ScrollBarLayout::PartBox(const ScrollInfo& info, BarPart part) const {
  const int arrow = Arrow();
  const int length = Length();
  const int thumb = Thumb(info);
  const int start = arrow + ThumbOffset(info);
  switch (part) {
    case BarPart::LineBack:
      return Along(0, arrow);
    case BarPart::LineForward:
      return Along(length - arrow, length);
    case BarPart::PageBack:
      return thumb ? Along(arrow, start) : Rect{};
    case BarPart::Thumb:
      return thumb ? Along(start, start + thumb) : Rect{};
    case BarPart::PageForward:
      return thumb ? Along(start + thumb, length - arrow) : Rect{};
    default:
      return Along(arrow, length - arrow);
  }
}

BarPart ScrollBarLayout::PartAt(const ScrollInfo& info, Point at) const {
  for (const BarPart part :
       {BarPart::LineBack, BarPart::LineForward, BarPart::Thumb, BarPart::PageBack, BarPart::PageForward}) {
    if (PartBox(info, part).Contains(at.x, at.y)) return part;
  }
  return BarPart::None;
}

void ScrollBarLayout::Draw(Canvas& canvas, const ScrollInfo& info, bool enabled, BarPart pressed,
                           std::optional<uint32_t> track) const {
  const uint32_t face = SystemColor(kColorScrollBar);
  const uint32_t light = SystemColor(kColorButtonHighlight);
  if (track) {
    canvas.Fill(PartBox(info, BarPart::None), *track);
  } else {
    canvas.Checker(PartBox(info, BarPart::None), face, light);
  }
  for (const BarPart part : {BarPart::PageBack, BarPart::PageForward}) {
    if (part == pressed) canvas.Checker(PartBox(info, part), 0, SystemColor(kColorDarkShadow));
  }
  if (enabled && info.HasRange()) canvas.PushButton(PartBox(info, BarPart::Thumb), false);
  for (const BarPart part : {BarPart::LineBack, BarPart::LineForward}) {
    const Rect arrow = PartBox(info, part);
    const bool down = part == pressed;
    canvas.PushButton(arrow, down);
    Canvas within = canvas.Within(arrow);
    const bool back = part == BarPart::LineBack;
    const auto sign = [&](int by, uint32_t colour) {
      const int x = arrow.left + (arrow.Width() - (vertical ? 7 : 4)) / 2 + by;
      const int y = arrow.top + (arrow.Height() - (vertical ? 4 : 7)) / 2 + by;
      if (vertical && back) within.Sign(x, y, 7, {0x08, 0x1C, 0x3E, 0x7F}, colour);
      if (vertical && !back) within.Sign(x, y, 7, {0x7F, 0x3E, 0x1C, 0x08}, colour);
      if (!vertical && back) within.Sign(x, y, 4, {0x1, 0x3, 0x7, 0xF, 0x7, 0x3, 0x1}, colour);
      if (!vertical && !back) within.Sign(x, y, 4, {0x8, 0xC, 0xE, 0xF, 0xE, 0xC, 0x8}, colour);
    };
    const bool live = enabled && info.HasRange();
    if (!live) sign(1, light);
    sign(down ? 1 : 0, SystemColor(live ? kColorButtonText : kColorButtonShadow));
  }
}

}  // namespace vl
