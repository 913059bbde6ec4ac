// DirtyList: the boxes of a surface that are out of date on the screen.
//
// Overlapping boxes grow together. A full list folds into one bounding box, so it never holds more than kCapacity.
#pragma once

#include <vector>

#include "base/rect.h"

namespace vl {

class DirtyList {
 public:
  static constexpr size_t kCapacity = 1024;

  // Corners in any order.
  void Add(const Rect& box);
  const std::vector<Rect>& Boxes() const { return boxes_; }
  bool IsEmpty() const { return boxes_.empty(); }
  void Clear() { boxes_.clear(); }

 private:
  std::vector<Rect> boxes_;
};

}  // namespace vl
