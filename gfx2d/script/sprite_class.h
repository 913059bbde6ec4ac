// CISprite: the runtime class Sprite: a picture that a program moves, turns, scales and animates on a surface.
//
// It is on one surface at most, and in that surface's list once it has been given a place or picture. A surface that
// dies leaves its sprites without one; they can't come back.
#pragma once

#include "gfx2d/script/frame_player.h"
#include "gfx2d/script/surface_class.h"
#include "gfx2d/sprite_layer.h"

namespace vl {

class CImageElement;
struct CSurfaceImage;

class CISprite final : public CIBaseClassImpl, public SpriteBody, public CFramePlayer {
 public:
  explicit CISprite(CInterpretor& interpreter);
  void Construct() override;
  void Destroy(bool final) override;
  bool DependsOn(CIBaseClassImpl* target) override;

  // Leaves its surface for good.
  void LeaveSurface(bool immediate);
  // A surface that serves as picture was drawn on, or is gone.
  void SurfaceImageChanged(const CSurfaceImage& changed);

  // Members, one method each.
  void Set();
  void GetX() { Result().SetInt(x); }
  void GetY() { Result().SetInt(y); }
  void GetLeft() { Result().SetInt(box.left); }
  void GetTop() { Result().SetInt(box.top); }
  void GetRight() { Result().SetInt(box.right); }
  void GetBottom() { Result().SetInt(box.bottom); }
  void SetCollision();
  void SetDrawEffect();
  void Show();
  void Hide();
  void IsPointInMember();
  void IsColliding();
  void GetFirstCollidingSprite();
  void GetNextCollidingSprite();
  void SetTransparent();
  void SetAntiAliasing();
  void SetLayer();
  void GetLayer() { Result().SetInt(layer); }
  void MoveToBack();
  void MoveToFront();
  void MoveBackward();
  void MoveForward();
  void MoveBefore();
  void MoveAfter();
  void IsIn();
  void IsOut();
  void IsLeaving();
  void IsEntering();
  void SetScale();
  void GetScaleX() { Result().SetFloat(static_cast<double>(scaleX)); }
  void GetScaleY() { Result().SetFloat(static_cast<double>(scaleY)); }
  void SetAngle();
  void GetAngle() { Result().SetInt(angle); }
  void SetHotSpot();
  void GetHotSpotX() { Result().SetInt(hotX); }
  void GetHotSpotY() { Result().SetInt(hotY); }
  void GetWidth();
  void GetHeight();
  void SetClipRect();
  void IsVisible() { Result().SetInt((flags & (kHideAsked | kHidden)) == 0); }
  void SetPrivateData();
  void GetPrivateData();

  CISurface* surface = nullptr;  // null once it is gone
  CValue privateData;

 protected:
  void OnFrameWanted() override;

 private:
  CValue& Result() { return interpreter.GetResult(); }
  int32_t IntOr(int i, int32_t ifMissing) const;
  void SetTo(int32_t newX, int32_t newY, const CValue& newImage);
  // True when the picture or its hot spot is another one now.
  bool SetImage(const CValue& value);
  bool SetBankImage(CImageElement& element);
  bool SetAnimation(CElement& element);
  void NoteChanged();
  // The box and the transformed picture follow what was set.
  void Reshape();
  void SetDrawBit(uint32_t bit);
  // Of argument i; null for a null reference, an error for anything else.
  CISprite* SpriteArgument(int i);
  Rect BoxArgument() const;

  CElement* animElement_ = nullptr;
};

extern const ClassTable kSpriteClass;

}  // namespace vl
