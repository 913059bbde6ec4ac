#include "engine3d/link.h"

namespace vl {

namespace {

L3DVector Difference(const L3DVector& a, const L3DVector& b) {
  return {static_cast<float>(double{a.x} - double{b.x}), static_cast<float>(double{a.y} - double{b.y}),
          static_cast<float>(double{a.z} - double{b.z})};
}

L3DVector Sum(const L3DVector& a, const L3DVector& b) {
  return {static_cast<float>(double{a.x} + double{b.x}), static_cast<float>(double{a.y} + double{b.y}),
          static_cast<float>(double{a.z} + double{b.z})};
}

void TakeSnapshot(L3DLink& link, const L3DLocation& own, const L3DLocation& parent, float frame) {
  link.parentAngles = parent.Angles;
  link.parentPosition = parent.Position;
  link.angles = own.Angles;
  link.scale = own.Scale;
  link.frame = frame;
}

bool IsCurrent(const L3DLink& link, const L3DLocation& own, const L3DLocation& parent, float frame) {
  return link.parentAngles == parent.Angles && link.parentPosition == parent.Position && link.angles == own.Angles &&
         link.scale == own.Scale && link.frame == frame;
}

}  // namespace

void TakeLink(L3DLink& link, const L3DLocation& own, const L3DLocation& parent, float frame) {
  L3DMatrix rotation = parent.RotMatrix;
  rotation.SetTranslation({});
  MatrixInverse(rotation, link.LinkInverse);
  link.LinkInverse.SetTranslation(Difference(own.Position, parent.Position));
  link.LinkRotation = own.RotMatrix;
  link.LinkRotation.SetTranslation({});
  TakeSnapshot(link, own, parent, frame);
}

void UpdateWorldMatrix(L3DLocation& own, const L3DLocation* parent, L3DLink& link, float frame) {
  if (!parent || IsCurrent(link, own, *parent, frame)) {
    own.RotMatrix.SetTranslation(own.Position);
    own.WorldMatrix = own.RotMatrix;
    return;
  }
  L3DMatrix carrier = MatrixProduct(parent->WorldMatrix, link.LinkInverse);
  own.Position = TransformPoint(carrier, link.LinkInverse.Translation(), parent->WorldMatrix.Translation());
  carrier.SetTranslation(own.Position);
  own.WorldMatrix = MatrixProduct(carrier, link.LinkRotation);
  own.WorldMatrix.SetTranslation(own.Position);
  const L3DVector angles = AnglesFromMatrix(own.WorldMatrix);
  own.ResetRotation();
  own.Rotate(angles.x, angles.y, angles.z, false);
  own.RotMatrix.SetTranslation(own.Position);
  TakeSnapshot(link, own, *parent, frame);
}

void HandMoveToTop(const L3DLocation& own, L3DLocation& top) {
  const L3DVector delta = Difference(own.Position, own.PreviousPosition);
  if (delta == L3DVector{}) {
    if (own.Flags & (LOC_MOVED | LOC_ROTATED)) top.SetRotationChanged(true);
    return;
  }
  top.Position = Sum(top.PreviousPosition, delta);
  top.SetPositionChanged(true);
  top.OnPositionChanged();
}

}  // namespace vl
