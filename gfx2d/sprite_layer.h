// SpriteLayer: the sprites of one surface in drawing order, and what lies behind them.
//
// A pass puts back the pixels under every sprite that changed and under those that touch it, directly or through
// others, saves what lies under the new places and draws them in order; all other sprites cost nothing. Numbers of
// layers rule the order: a sprite of a lower one never lies before one of a higher.
#pragma once

#include <cstdint>
#include <vector>

#include "gfx2d/sprite_body.h"

namespace vl {

// The surface that the sprites live on.
class SpriteLayerHost {
 public:
  virtual ~SpriteLayerHost() = default;
  virtual cSurfaceImpl& SpritePixels() = 0;
  // Pixels in that box, which may reach outside the surface, have changed.
  virtual void SpriteBoxChanged(const Rect& box) = 0;
  virtual void RequestSpriteRefresh() = 0;
};

class SpriteLayer {
 public:
  // The host outlives the layer.
  explicit SpriteLayer(SpriteLayerHost& host) : host_(host) {}
  ~SpriteLayer();
  SpriteLayer(const SpriteLayer&) = delete;
  SpriteLayer& operator=(const SpriteLayer&) = delete;

  // Behind the last sprite of its own layer number or a lower one. The sprite is in no list and outlives its stay.
  void Add(SpriteBody& sprite);
  // Unless `immediate`, its background is restored by the next pass.
  void Remove(SpriteBody& sprite, bool immediate);
  void RemoveAll(bool immediate);

  // In drawing order, from the back; ghosts are left out. Null at the end.
  SpriteBody* First() const;
  SpriteBody* Last() const;
  SpriteBody* Next(const SpriteBody& sprite) const;
  SpriteBody* Previous(const SpriteBody& sprite) const;
  // The first one behind `after`, or of all, that collides with the sprite.
  SpriteBody* FindColliding(SpriteBody& sprite, const SpriteBody* after) const;

  void SetLayer(SpriteBody& sprite, int32_t layer);
  void MoveToBack(SpriteBody& sprite);
  void MoveToFront(SpriteBody& sprite);
  void MoveBackward(SpriteBody& sprite);
  void MoveForward(SpriteBody& sprite);
  // Only within one layer number of one list.
  void MoveBefore(SpriteBody& sprite, SpriteBody& other);
  void MoveAfter(SpriteBody& sprite, SpriteBody& other);

  // Anything about the sprite that can be seen has changed.
  void NoteSpriteChanged(SpriteBody& sprite);
  // Takes the sprites that touch a box, and those that touch them, off the surface until the next pass.
  void LiftSprites(const Rect& box);

  // The pass, and its later steps for programs that draw sprites on their own.
  void RunPass();
  void UpdateState();
  // False when there is no memory for them; then nothing must be drawn.
  bool SaveBackgrounds();
  void Draw();

  bool spritesDirty = false;  // a pass is due
  cSurface backSurface;       // copy of the pixels behind the sprites; made on the first need

 private:
  void MarkTouched(SpriteBody& sprite);
  void Quieten(SpriteBody& sprite);
  void Rouse(SpriteBody& sprite);
  void RestoreBackgrounds();
  void Restore(SpriteBody& sprite);
  void RequestPass();
  bool EnsureBackSurface();
  void Place(SpriteBody& sprite, SpriteList::iterator before);

  SpriteLayerHost& host_;
  SpriteList list_;
  // The sprites that show and haven't changed, with what they cover: all that a change elsewhere can still reach. Kept
  // small and in one piece, as every change looks through it.
  struct Quiet {
    SpriteBody* sprite;
    Rect box;
    Rect drawnBox;
  };
  std::vector<Quiet> quiet_;
};

}  // namespace vl
