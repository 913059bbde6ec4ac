// A scroll bar's measures and picture, for the bars of windows and for the control.
#pragma once

#include <cstdint>
#include <optional>

#include "base/rect.h"
#include "ui/canvas.h"

namespace vl {

// Positions run from minimum to maximum - page + 1; a page of 0 counts as none.
struct ScrollInfo {
  int32_t minimum = 0;
  int32_t maximum = 0;
  int32_t page = 0;
  int32_t position = 0;

  int32_t LastPosition() const;
  bool HasRange() const { return LastPosition() > minimum; }
  // Both keep the position within the range.
  void SetPosition(int64_t to);
  void SetRange(int32_t from, int32_t to, int32_t newPage);
};

enum class BarPart { None, LineBack, PageBack, Thumb, PageForward, LineForward };

struct ScrollBarLayout {
  Rect box;
  bool vertical = false;

  // Where the parts begin and end along the bar, from the box's start.
  Rect PartBox(const ScrollInfo& info, BarPart part) const;
  BarPart PartAt(const ScrollInfo& info, Point at) const;
  // The position whose thumb begins that far behind where the first one's does.
  int32_t PositionAt(const ScrollInfo& info, int offset) const;
  int ThumbOffset(const ScrollInfo& info) const;
  // The track is of one colour, or of the system's pattern without one.
  void Draw(Canvas& canvas, const ScrollInfo& info, bool enabled, BarPart pressed,
            std::optional<uint32_t> track = std::nullopt) const;

 private:
  int Length() const { return vertical ? box.Height() : box.Width(); }
  int Arrow() const;
  int Thumb(const ScrollInfo& info) const;
  Rect Along(int from, int to) const;
};

}  // namespace vl
