// SpriteBody: a movable picture on a surface, as the sprite layer sees it.
//
// What is wanted and what was last drawn are kept apart; the layer's state step makes them equal. Boxes are in pixels
// of the surface, right and bottom exclusive.
#pragma once

#include <cstdint>
#include <list>
#include <memory>

#include "gfx2d/surface.h"

namespace vl {

class SpriteLayer;
struct SpriteBody;

// A picture that sprites show, with what keeps it alive.
struct SpriteImage {
  virtual ~SpriteImage() = default;
  const cSurface* pixels = nullptr;  // null once its owner is gone
};

struct SpriteNode {
  SpriteBody* sprite = nullptr;
  std::unique_ptr<SpriteBody> ghost;  // `sprite` itself, when it stands for one that was removed
};
using SpriteList = std::list<SpriteNode>;

struct SpriteBody {
  static constexpr uint32_t kCollision = 0x3;       // on, when not 0
  static constexpr uint32_t kHideAsked = 0x10;      // takes effect in the state step
  static constexpr uint32_t kGhost = 0x20;          // only its background is still to be restored
  static constexpr uint32_t kChanged = 0x40;        // takes part in the next pass
  static constexpr uint32_t kHidden = 0x80;         //
  static constexpr uint32_t kBoxCollision = 0x100;  //
  static constexpr uint32_t kToDraw = 0x800;        //
  static constexpr uint32_t kSaved = 0x1000;        // `savedBox` is valid
  static constexpr uint32_t kTransform = 0x2000;    // `transformed` must be made again
  static constexpr uint32_t kShowAsked = 0x4000;    //
  static constexpr uint32_t kImageChanged = 0x8000;

  static constexpr size_t kNotQuiet = static_cast<size_t>(-1);

  static constexpr uint32_t kEffectBits = 0xFFFF;
  static constexpr uint32_t kTransparent = 0x10000000;
  static constexpr uint32_t kAntiAliased = 0x20000000;

  SpriteBody() = default;
  SpriteBody(const SpriteBody&) = delete;
  SpriteBody& operator=(const SpriteBody&) = delete;

  bool IsTransformed() const { return angle != 0 || scaleX != 1 || scaleY != 1; }
  const cSurfaceImpl* ImagePixels() const { return image && image->pixels ? image->pixels->impl.get() : nullptr; }
  // What drawing it touches beyond its box.
  int Margin() const { return (drawWord & kAntiAliased) ? 1 : 0; }
  // `box`, from position, hot spot, image, scale and angle.
  void UpdateBox();
  // `transformed`, from the image at the size of `box`.
  void MakeTransformed();
  // What is shown in the box, up to date; null without an image.
  const cSurfaceImpl* Shown();
  // Whether a point of the surface lies on it.
  bool IsPointIn(int px, int py);

  SpriteLayer* home = nullptr;    // null while it is in no list
  SpriteList::iterator node;      // valid with `home`
  size_t quietPlace = kNotQuiet;  // in the layer's list of those that could be reached by a change
  uint32_t flags = 0;
  int32_t layer = 0;
  std::shared_ptr<SpriteImage> drawnImage;
  std::shared_ptr<SpriteImage> image;
  std::unique_ptr<cSurfaceImpl> transformed;  // the image scaled and turned, or null
  int32_t drawnX = 0;
  int32_t drawnY = 0;
  int32_t x = 0;  // of the hot spot
  int32_t y = 0;
  Rect drawnBox;
  Rect box;
  Rect drawnClip;  // all 0 for none
  Rect clip;
  Rect savedBox;  // of the pixels kept in the layer's backSurface
  int32_t drawnHotX = 0;
  int32_t drawnHotY = 0;
  int32_t hotX = 0;  // in image pixels
  int32_t hotY = 0;
  uint32_t drawWord = kTransparent;  // low 16 bits: the effect
  uint32_t drawParam = 0;            // of the effect
  float scaleX = 1;
  float scaleY = 1;
  int32_t angle = 0;  // degrees, 0 to 359
  bool interpolate = false;
};

inline bool Overlaps(const Rect& a, const Rect& b) {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

// Whether two sprites touch: by their boxes, or by pixels that aren't 0 in both.
bool AreColliding(SpriteBody& a, SpriteBody& b);

}  // namespace vl
