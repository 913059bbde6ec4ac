// Sprite: construction, picture, look and tests. Its drawing is the sprite layer's; its table is in sprite_table.cpp.
#include "gfx2d/script/sprite_class.h"

#include <algorithm>

#include "gfx2d/script/sprite_image.h"
#include "host/appfile/app_file.h"

namespace vl {

namespace {

constexpr int32_t kNoCollision = 2;    // CMNONE
constexpr int32_t kBoxCollisions = 3;  // CMBOX
constexpr int32_t kFullTurn = 360;

// A number as a float, or `ifMissing`.
float FloatOr(CInterpretor& interpreter, int i, float ifMissing) {
  return interpreter.IsArgDefault(i) ? ifMissing : static_cast<float>(interpreter.GetArgFloat(i));
}

}  // namespace

CISprite::CISprite(CInterpretor& interpreter)
    : CIBaseClassImpl(interpreter, CLASS_SPRITE, Listing::Listed),
      CFramePlayer(interpreter),
      privateData(&interpreter) {
  privateData.SetInt(0);
}

void CISprite::Construct() {
  const int count = interpreter.GetArgCount();
  int first = 0;
  CISurface* chosen = nullptr;
  if (count > 0 && interpreter.GetArg(0)->type == VT_OBJECT) {
    first = 1;
    CIBaseClassImpl* object = interpreter.GetArg(0)->data.object;
    auto* owner = dynamic_cast<CSurfaceOwner*>(object);
    if (owner) {
      chosen = owner->OwnedSurface();
    } else if (interpreter.GetArg(0)->IsObjectOfClass(CLASS_SURFACE)) {
      chosen = static_cast<CISurface*>(object);
    } else {
      interpreter.RaiseError(ERR_WRONG_CLASS);
    }
  } else if (auto* window = dynamic_cast<CSurfaceOwner*>(interpreter.currentWindow)) {
    chosen = window->OwnedSurface();
  }
  if (!chosen) interpreter.RaiseError(ERR_SPRITE_SURFACE, kNoArgument, "there is no surface for the sprite");
  if (count != first && count != first + 3) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
  surface = chosen;
  surface->spritesHere.insert(this);
  if (count > first) SetTo(IntOr(first, x), IntOr(first + 1, y), *interpreter.GetArg(first + 2));
  Create();
}

void CISprite::Destroy(bool final) {
  LeaveSurface(final);
  image.reset();
  drawnImage.reset();
  transformed.reset();
  CloseFrames();
  privateData.SetInt(0);
  CIBaseClassImpl::Destroy(final);
}

bool CISprite::DependsOn(CIBaseClassImpl* target) {
  return surface && static_cast<CIBaseClassImpl*>(surface) == target && MarkDependant();
}

void CISprite::LeaveSurface(bool immediate) {
  if (!surface) return;
  if (home) home->Remove(*this, immediate);
  surface->spritesHere.erase(this);
  surface = nullptr;
}

// --- Picture and place ---

int32_t CISprite::IntOr(int i, int32_t ifMissing) const {
  const int32_t v = interpreter.GetArgInt(i);
  return v == kDefaultInt ? ifMissing : v;
}

void CISprite::NoteChanged() {
  if (home) home->NoteSpriteChanged(*this);
}

void CISprite::Reshape() {
  flags |= kTransform;
  UpdateBox();
  NoteChanged();
}

void CISprite::Set() { SetTo(IntOr(0, x), IntOr(1, y), *interpreter.GetArg(2)); }

void CISprite::SetTo(int32_t newX, int32_t newY, const CValue& newImage) {
  const bool imageChanged = !newImage.IsDefault() && SetImage(newImage);
  if (newX == x && newY == y && !imageChanged) return;
  x = newX;
  y = newY;
  if (imageChanged) flags |= kTransform | kImageChanged;
  UpdateBox();
  if (!surface) return;
  if (!home) {
    flags |= kTransform;
    drawnX = x;
    drawnY = y;
    drawnHotX = hotX;
    drawnHotY = hotY;
    drawnBox = box;
    drawnClip = clip;
    drawnImage = image;
    surface->sprites.Add(*this);
  }
  NoteChanged();
}

bool CISprite::SetImage(const CValue& value) {
  if (value.type == VT_OBJECT) {
    if (!value.IsObjectOfClass(CLASS_SURFACE)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    auto* owner = static_cast<CISurface*>(value.data.object);
    const auto* old = dynamic_cast<CSurfaceImage*>(image.get());
    if (old && old->owner == owner) return false;
    CloseFrames();
    animElement_ = nullptr;
    image = std::make_shared<CSurfaceImage>(*owner, *this);
    return true;
  }
  CElement* element = interpreter.GetElement(value, kBankImage, true);
  if (auto* picture = dynamic_cast<CImageElement*>(element)) return SetBankImage(*picture);
  if (!dynamic_cast<CAnimElement*>(element)) element = interpreter.GetElement(value, kBankAnimation, true);
  if (!element) interpreter.RaiseError(ERR_SPRITE_IMAGE, kNoArgument, "there is no such picture or animation");
  return SetAnimation(*element);
}

bool CISprite::SetBankImage(CImageElement& element) {
  ImageBanks& banks = CGraphics::Of(interpreter).images;
  const BankImage* decoded = banks.Load(static_cast<CImageBank&>(*element.bank), element.index);
  if (!decoded) interpreter.RaiseError(ERR_SPRITE_IMAGE, kNoArgument, "the picture can't be read");
  const bool hotSpotMoved = hotX != decoded->hotX || hotY != decoded->hotY;
  hotX = decoded->hotX;
  hotY = decoded->hotY;
  const auto* old = dynamic_cast<CBankImage*>(image.get());
  if (old && &old->element == &element) return hotSpotMoved;
  CloseFrames();
  animElement_ = nullptr;
  image = std::make_shared<CBankImage>(banks, element, *decoded);
  return true;
}

bool CISprite::SetAnimation(CElement& element) {
  int32_t newHotX = hotX;
  int32_t newHotY = hotY;
  if (const auto* film = dynamic_cast<CAnimElement*>(&element)) {
    newHotX = static_cast<int16_t>(film->hotX);
    newHotY = static_cast<int16_t>(film->hotY);
  }
  const bool hotSpotMoved = hotX != newHotX || hotY != newHotY;
  if (animElement_ != &element) {
    // A picture on the surface's own depth and colours needs no conversion when it is drawn.
    CGraphics& graphics = CGraphics::Of(interpreter);
    const cSurfaceImpl* prototype = graphics.library.FindPrototype(surface ? surface->depth : graphics.screenDepth);
    animElement_ = nullptr;
    if (!prototype || !OpenFrames(element.OpenStream(0), &element) ||
        !MakeFrameSurface(*prototype, surface ? surface->surface.impl->palette : PaletteRef())) {
      CloseFrames();
      interpreter.RaiseError(ERR_SPRITE_IMAGE, kNoArgument, "the animation can't be read");
    }
    animElement_ = &element;
    UpdateFrame();
    image = std::make_shared<CFrameImage>(frameSurface);
    hotX = newHotX;
    hotY = newHotY;
    return true;
  }
  hotX = newHotX;
  hotY = newHotY;
  return hotSpotMoved;
}

void CISprite::OnFrameWanted() {
  UpdateFrame();
  flags |= kTransform | kImageChanged;
  NoteChanged();
}

void CISprite::SurfaceImageChanged(const CSurfaceImage& changed) {
  if (image.get() != &changed) return;
  flags |= kImageChanged;
  Reshape();
}

void CISprite::GetWidth() {
  const cSurfaceImpl* pixels = ImagePixels();
  Result().SetInt(pixels ? pixels->width : 0);
}

void CISprite::GetHeight() {
  const cSurfaceImpl* pixels = ImagePixels();
  Result().SetInt(pixels ? pixels->height : 0);
}

// --- Look ---

void CISprite::SetDrawEffect() {
  const int32_t effect = IntOr(0, 0);
  uint32_t stored = 0;
  switch (effect) {
    case 1: {
      const int32_t param = (std::min(IntOr(1, 0), 255) + 1) >> 1;
      drawParam = static_cast<uint32_t>(std::max(param, 0));
      stored = param < 1 ? 0 : 1;
      break;
    }
    case 2:
    case 3:
    case 4:
    case 5:
    case 9:
      stored = static_cast<uint32_t>(effect);
      break;
    default:
      break;
  }
  drawWord = (drawWord & ~kEffectBits) | stored;
  NoteChanged();
}

void CISprite::Show() {
  if (!(flags & (kHideAsked | kHidden))) return;
  flags = (flags & ~(kHideAsked | kHidden)) | kShowAsked;
  NoteChanged();
}

void CISprite::Hide() {
  if (flags & (kHideAsked | kHidden)) return;
  flags = (flags & ~(kShowAsked | kToDraw)) | kHideAsked;
  NoteChanged();
}

void CISprite::SetDrawBit(uint32_t bit) {
  // The margin that it had counts once more, so that nothing of it stays.
  NoteChanged();
  drawWord = IntOr(0, 0) ? drawWord | bit : drawWord & ~bit;
  NoteChanged();
}

void CISprite::SetTransparent() { SetDrawBit(kTransparent); }
void CISprite::SetAntiAliasing() { SetDrawBit(kAntiAliased); }

void CISprite::SetScale() {
  const float sx = FloatOr(interpreter, 0, 1);
  const float sy = FloatOr(interpreter, 1, sx);
  scaleX = sx > 0 ? sx : 0;
  scaleY = sy > 0 ? sy : 0;
  Reshape();
}

void CISprite::SetAngle() {
  const int32_t degrees = IntOr(0, angle) % kFullTurn;
  angle = degrees < 0 ? degrees + kFullTurn : degrees;
  interpolate = IntOr(1, 0) != 0;
  Reshape();
}

void CISprite::SetHotSpot() {
  hotX = IntOr(0, hotX);
  hotY = IntOr(1, hotY);
  UpdateBox();
  NoteChanged();
}

void CISprite::SetClipRect() {
  const Rect whole{0, 0, surface ? surface->width : 0, surface ? surface->height : 0};
  const auto far = [](int64_t v) { return static_cast<int>(std::clamp<int64_t>(v, INT32_MIN / 2, INT32_MAX / 2)); };
  const int64_t left = IntOr(0, 0);
  const int64_t top = IntOr(1, 0);
  clip = {far(left), far(top), far(left + IntOr(2, whole.right)), far(top + IntOr(3, whole.bottom))};
  if (clip == whole) clip = Rect{};
  NoteChanged();
}

// --- Order ---

void CISprite::SetLayer() {
  const int32_t number = interpreter.GetArgInt(0);
  if (number == kDefaultInt) return;
  if (home) {
    home->SetLayer(*this, number);
  } else {
    layer = number;
  }
}

void CISprite::MoveToBack() {
  if (home) home->MoveToBack(*this);
}
void CISprite::MoveToFront() {
  if (home) home->MoveToFront(*this);
}
void CISprite::MoveBackward() {
  if (home) home->MoveBackward(*this);
}
void CISprite::MoveForward() {
  if (home) home->MoveForward(*this);
}

CISprite* CISprite::SpriteArgument(int i) {
  const CValue& value = *interpreter.GetArg(i);
  if (value.type == VT_OBJECT && !value.data.object) return nullptr;
  if (!value.IsObjectOfClass(CLASS_SPRITE)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  return static_cast<CISprite*>(value.data.object);
}

void CISprite::MoveBefore() {
  CISprite* other = SpriteArgument(0);
  if (home && other) home->MoveBefore(*this, *other);
}
void CISprite::MoveAfter() {
  CISprite* other = SpriteArgument(0);
  if (home && other) home->MoveAfter(*this, *other);
}

// --- Tests ---

void CISprite::SetCollision() {
  const int32_t mode = IntOr(0, 0);
  if (mode == 0 || mode == kNoCollision) {
    flags &= ~kCollision;
    return;
  }
  flags |= 1;
  if (mode == 1) return;
  flags = mode == kBoxCollisions ? flags | kBoxCollision : flags & ~kBoxCollision;
}

void CISprite::IsPointInMember() {
  if (interpreter.IsArgDefault(0) || interpreter.IsArgDefault(1)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  const int32_t px = interpreter.GetArgInt(0);
  Result().SetInt(IsPointIn(px, interpreter.GetArgInt(1)));
}

void CISprite::IsColliding() {
  CISprite* other = SpriteArgument(0);
  Result().SetInt(other && AreColliding(*this, *other));
}

void CISprite::GetFirstCollidingSprite() {
  SpriteBody* found = home ? home->FindColliding(*this, nullptr) : nullptr;
  Result().SetObject(static_cast<CISprite*>(found));
}

void CISprite::GetNextCollidingSprite() {
  const CISprite* after = SpriteArgument(0);
  SpriteBody* found = home && after ? home->FindColliding(*this, after) : nullptr;
  Result().SetObject(static_cast<CISprite*>(found));
}

Rect CISprite::BoxArgument() const {
  return {IntOr(0, 0), IntOr(1, 0), IntOr(2, surface ? surface->width : 0), IntOr(3, surface ? surface->height : 0)};
}

void CISprite::IsIn() {
  const Rect area = BoxArgument();
  Result().SetInt(box.left >= area.left && box.top >= area.top && box.right <= area.right && box.bottom <= area.bottom);
}
void CISprite::IsOut() { Result().SetInt(!Overlaps(box, BoxArgument())); }
void CISprite::IsLeaving() {
  const Rect area = BoxArgument();
  Result().SetInt(Overlaps(drawnBox, area) && !Overlaps(box, area));
}
void CISprite::IsEntering() {
  const Rect area = BoxArgument();
  Result().SetInt(!Overlaps(drawnBox, area) && Overlaps(box, area));
}

void CISprite::SetPrivateData() { privateData.Assign(*interpreter.GetArg(0)); }
void CISprite::GetPrivateData() { Result().Assign(privateData); }

}  // namespace vl
