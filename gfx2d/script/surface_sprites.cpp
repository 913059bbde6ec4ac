// Surface: the sprites on it.
#include "gfx2d/script/sprite_class.h"
#include "gfx2d/script/sprite_image.h"
#include "gfx2d/script/surface_class.h"

namespace vl {

void CISurface::SpriteBoxChanged(const Rect& box) {
  if (parentWindow) dirty_.Add(box);
}

void CISurface::RequestSpriteRefresh() {
  // What the pass changes is shown by the refresh that runs it.
  if (inSpritePass_) return;
  dirtyPending_ = true;
  if (autoRefresh_) RequestRefresh();
}

void CISurface::LiftSprites(const Rect& box) {
  if (autoBack_) sprites.LiftSprites(box);
}

void CISurface::RunSpritePass() {
  if (!sprites.spritesDirty || !autoBack_) return;
  inSpritePass_ = true;
  sprites.RunPass();
  inSpritePass_ = false;
}

void CISurface::TellImageUsers() {
  for (const CSurfaceImage* image : imageUsers) image->sprite->SurfaceImageChanged(*image);
}

void CISurface::LeaveImageUsers() {
  const auto users = std::move(imageUsers);
  imageUsers.clear();
  for (CSurfaceImage* image : users) {
    image->owner = nullptr;
    image->pixels = nullptr;
    image->sprite->SurfaceImageChanged(*image);
  }
}

void CISurface::RemoveSprites(bool immediate) {
  while (SpriteBody* sprite = sprites.First()) static_cast<CISprite*>(sprite)->LeaveSurface(immediate);
  if (immediate) sprites.RemoveAll(true);
}

void CISurface::RequireOwnDrawing() {
  if (autoBack_)
    interpreter.RaiseError(ERR_AUTO_BACK, kNoArgument, "sprites are drawn by themselves until SetAutoBack(0)");
}

void CISurface::ClearSprites() {
  RequireOwnDrawing();
  const Rect box{IntOr(0, 0), IntOr(1, 0), IntOr(2, width), IntOr(3, height)};
  sprites.LiftSprites(box);
}

void CISurface::UpdateSprites() {
  RequireOwnDrawing();
  sprites.UpdateState();
}

void CISurface::DrawSprites() {
  RequireOwnDrawing();
  if (sprites.SaveBackgrounds()) sprites.Draw();
}

void CISurface::ScrollSprites() {
  const int32_t dx = IntOr(0, 0);
  const int32_t dy = IntOr(1, 0);
  const bool isAll = interpreter.IsArgDefault(2);
  const int32_t layer = isAll ? 0 : interpreter.GetArgInt(2);
  if (dx == 0 && dy == 0) return;
  // Wrapping sums: the place may be any two integers.
  const auto moved = [](int32_t v, int32_t by) {
    return static_cast<int32_t>(static_cast<uint32_t>(v) + static_cast<uint32_t>(by));
  };
  for (SpriteBody* sprite = sprites.First(); sprite; sprite = sprites.Next(*sprite)) {
    if (!isAll && sprite->layer != layer) continue;
    sprite->x = moved(sprite->x, dx);
    sprite->y = moved(sprite->y, dy);
    sprite->UpdateBox();
    sprites.NoteSpriteChanged(*sprite);
  }
  sprites.spritesDirty = true;
}

CISprite* CISurface::SpriteHere() {
  const CValue& value = *interpreter.GetArg(0);
  if (!value.IsObjectOfClass(CLASS_SPRITE)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  return static_cast<CISprite*>(value.data.object);
}

void CISurface::GetFirstSprite() { interpreter.GetResult().SetObject(static_cast<CISprite*>(sprites.First())); }
void CISurface::GetLastSprite() { interpreter.GetResult().SetObject(static_cast<CISprite*>(sprites.Last())); }
void CISurface::GetNextSprite() {
  SpriteBody* next = sprites.Next(*SpriteHere());
  interpreter.GetResult().SetObject(static_cast<CISprite*>(next));
}
void CISurface::GetPrevSprite() {
  SpriteBody* previous = sprites.Previous(*SpriteHere());
  interpreter.GetResult().SetObject(static_cast<CISprite*>(previous));
}
void CISurface::DeleteSprites() { RemoveSprites(false); }

}  // namespace vl
