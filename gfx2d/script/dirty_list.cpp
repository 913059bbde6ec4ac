#include "gfx2d/script/dirty_list.h"

namespace vl {

namespace {

// Strict on all sides: boxes that only touch don't overlap.
bool Overlap(const Rect& a, const Rect& b) {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

bool Holds(const Rect& outer, const Rect& inner) {
  return outer.left <= inner.left && outer.top <= inner.top && outer.right >= inner.right &&
         outer.bottom >= inner.bottom;
}

}  // namespace

void DirtyList::Add(const Rect& box) {
  Rect fresh{std::min(box.left, box.right), std::min(box.top, box.bottom), std::max(box.left, box.right),
             std::max(box.top, box.bottom)};
  for (size_t i = 0; i < boxes_.size();) {
    if (!Overlap(boxes_[i], fresh)) {
      ++i;
      continue;
    }
    if (Holds(boxes_[i], fresh)) return;
    fresh = fresh.Union(boxes_[i]);
    boxes_[i] = boxes_.back();
    boxes_.pop_back();
    i = 0;
  }
  if (boxes_.size() >= kCapacity) {
    Rect all = boxes_.front();
    for (const Rect& other : boxes_) all = all.Union(other);
    boxes_.assign(1, all);
    Add(fresh);
    return;
  }
  boxes_.push_back(fresh);
}

}  // namespace vl
