// A child's place below its parent: it keeps the offset and orientation that it had when the link was taken, and
// follows the parent's rotation since then.
#pragma once

#include "engine3d/location.h"

namespace vl {

struct L3DLink {
  L3DMatrix LinkInverse;   // undoes the parent's rotation; its translation is the offset, in world axes
  L3DMatrix LinkRotation;  // own orientation, without translation

  // What the world matrix was last made of.
  L3DVector parentAngles;
  L3DVector parentPosition;
  L3DVector angles;
  L3DVector scale;
  float frame = 0;  // of the animation
};

// Stores the present relation to the parent.
void TakeLink(L3DLink& link, const L3DLocation& own, const L3DLocation& parent, float frame);

// Brings WorldMatrix up to date and, below a parent that has changed, the own position and orientation too. `parent`
// is null at the top; its world matrix must be up to date. The link is only used below a parent.
void UpdateWorldMatrix(L3DLocation& own, const L3DLocation* parent, L3DLink& link, float frame);

// A child doesn't move by itself: its move since PreviousPosition becomes a move of the topmost ancestor, from which
// its own position comes back.
void HandMoveToTop(const L3DLocation& own, L3DLocation& top);

}  // namespace vl
