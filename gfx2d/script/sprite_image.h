// The three pictures that a sprite shows: an element of an image bank, another Surface, a frame of an animation.
#pragma once

#include <memory>
#include <utility>

#include "gfx2d/script/graphics.h"
#include "gfx2d/script/surface_class.h"
#include "gfx2d/sprite_body.h"
#include "host/appfile/bank.h"

namespace vl {

class CISprite;

// Holds its element locked; the last one to hold it lets the decoded picture go.
struct CBankImage final : SpriteImage {
  // `decoded` is the element's picture, from `banks`, which outlives this.
  CBankImage(ImageBanks& banks, CImageElement& element, const BankImage& decoded) : banks_(banks), element(element) {
    pixels = &decoded.surface;
    ++element.lockCount;
  }
  ~CBankImage() override {
    if (element.lockCount > 0 && --element.lockCount == 0) {
      banks_.Unload(static_cast<CImageBank&>(*element.bank), element.index);
    }
  }

 private:
  ImageBanks& banks_;

 public:
  CImageElement& element;
};

// Doesn't keep the surface alive: when it goes, `owner` and `pixels` become null.
struct CSurfaceImage final : SpriteImage {
  CSurfaceImage(CISurface& surface, CISprite& user) : owner(&surface), sprite(&user) {
    pixels = &surface.surface;
    surface.imageUsers.insert(this);
  }
  ~CSurfaceImage() override {
    if (owner) owner->imageUsers.erase(this);
  }

  CISurface* owner;
  CISprite* sprite;
};

struct CFrameImage final : SpriteImage {
  explicit CFrameImage(std::shared_ptr<cSurface> surface) : frames(std::move(surface)) { pixels = frames.get(); }

  std::shared_ptr<cSurface> frames;
};

}  // namespace vl
