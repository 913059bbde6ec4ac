#include "gfx2d/sprite_layer.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace vl {

namespace {

bool IsGhost(const SpriteNode& node) { return node.ghost != nullptr; }

Rect Grown(const Rect& box, int margin) {
  return {box.left - margin, box.top - margin, box.right + margin, box.bottom + margin};
}

// Boxes are compared by 16 bits, as programs that scroll far away count on.
Rect Narrow(const Rect& box) {
  const auto cut = [](int v) { return static_cast<int>(static_cast<int16_t>(v)); };
  return {cut(box.left), cut(box.top), cut(box.right), cut(box.bottom)};
}

Rect Cut(const Rect& box, const Rect& clip) { return clip == Rect{} ? box : box.Intersect(clip); }

}  // namespace

SpriteLayer::~SpriteLayer() { RemoveAll(true); }

void SpriteLayer::RequestPass() {
  spritesDirty = true;
  host_.RequestSpriteRefresh();
}

// --- The list ---

void SpriteLayer::Add(SpriteBody& sprite) {
  auto at = list_.end();
  while (at != list_.begin() && std::prev(at)->sprite->layer > sprite.layer) --at;
  sprite.node = list_.insert(at, SpriteNode{&sprite, nullptr});
  sprite.home = this;
  sprite.flags &= ~SpriteBody::kChanged;
  if (!(sprite.flags & SpriteBody::kHidden)) Quieten(sprite);
}

void SpriteLayer::Remove(SpriteBody& sprite, bool immediate) {
  if (sprite.home != this) return;
  RequestPass();
  const auto node = sprite.node;
  if (!immediate && !(sprite.flags & SpriteBody::kHidden)) MarkTouched(sprite);
  sprite.home = nullptr;
  Rouse(sprite);
  if (immediate || !(sprite.flags & SpriteBody::kSaved)) {
    list_.erase(node);
    return;
  }
  // Where there is nothing to restore, no ghost is needed.
  auto ghost = std::make_unique<SpriteBody>();
  ghost->flags = (sprite.flags & ~SpriteBody::kCollision) | SpriteBody::kGhost | SpriteBody::kChanged;
  ghost->layer = sprite.layer;
  ghost->box = sprite.box;
  ghost->drawnBox = sprite.drawnBox;
  ghost->savedBox = sprite.savedBox;
  ghost->drawWord = sprite.drawWord;
  ghost->home = this;
  ghost->node = node;
  sprite.flags &= ~SpriteBody::kSaved;
  node->sprite = ghost.get();
  node->ghost = std::move(ghost);
}

void SpriteLayer::RemoveAll(bool immediate) {
  for (auto at = list_.begin(); at != list_.end();) {
    const auto node = at++;
    if (!IsGhost(*node)) {
      Remove(*node->sprite, immediate);
    } else if (immediate) {
      list_.erase(node);
    }
  }
}

SpriteBody* SpriteLayer::First() const {
  for (const SpriteNode& node : list_) {
    if (!IsGhost(node)) return node.sprite;
  }
  return nullptr;
}

SpriteBody* SpriteLayer::Last() const {
  for (auto at = list_.rbegin(); at != list_.rend(); ++at) {
    if (!IsGhost(*at)) return at->sprite;
  }
  return nullptr;
}

SpriteBody* SpriteLayer::Next(const SpriteBody& sprite) const {
  if (sprite.home != this) return nullptr;
  for (SpriteList::const_iterator at = std::next(sprite.node); at != list_.end(); ++at) {
    if (!IsGhost(*at)) return at->sprite;
  }
  return nullptr;
}

SpriteBody* SpriteLayer::Previous(const SpriteBody& sprite) const {
  if (sprite.home != this) return nullptr;
  for (SpriteList::const_iterator at = sprite.node; at != list_.begin();) {
    --at;
    if (!IsGhost(*at)) return at->sprite;
  }
  return nullptr;
}

SpriteBody* SpriteLayer::FindColliding(SpriteBody& sprite, const SpriteBody* after) const {
  if (after && after->home != this) return nullptr;
  for (SpriteBody* other = after ? Next(*after) : First(); other; other = Next(*other)) {
    if (other != &sprite && AreColliding(sprite, *other)) return other;
  }
  return nullptr;
}

void SpriteLayer::Place(SpriteBody& sprite, SpriteList::iterator before) {
  list_.splice(before, list_, sprite.node);
  NoteSpriteChanged(sprite);
}

void SpriteLayer::SetLayer(SpriteBody& sprite, int32_t layer) {
  if (layer == sprite.layer) return;
  auto at = layer < sprite.layer ? sprite.node : list_.end();
  sprite.layer = layer;
  while (at != list_.begin() && (std::prev(at) == sprite.node || std::prev(at)->sprite->layer > layer)) --at;
  Place(sprite, at);
}

void SpriteLayer::MoveToBack(SpriteBody& sprite) {
  auto at = sprite.node;
  while (at != list_.begin() && std::prev(at)->sprite->layer == sprite.layer) --at;
  Place(sprite, at);
}

void SpriteLayer::MoveToFront(SpriteBody& sprite) {
  auto at = std::next(sprite.node);
  while (at != list_.end() && at->sprite->layer == sprite.layer) ++at;
  Place(sprite, at);
}

void SpriteLayer::MoveBackward(SpriteBody& sprite) {
  SpriteBody* other = Previous(sprite);
  if (other && other->layer == sprite.layer) Place(sprite, other->node);
}

void SpriteLayer::MoveForward(SpriteBody& sprite) {
  SpriteBody* other = Next(sprite);
  if (other && other->layer == sprite.layer) Place(sprite, std::next(other->node));
}

void SpriteLayer::MoveBefore(SpriteBody& sprite, SpriteBody& other) {
  if (&other != &sprite && other.home == this && other.layer == sprite.layer) Place(sprite, other.node);
}

void SpriteLayer::MoveAfter(SpriteBody& sprite, SpriteBody& other) {
  if (&other != &sprite && other.home == this && other.layer == sprite.layer) Place(sprite, std::next(other.node));
}

// --- Changes ---

void SpriteLayer::NoteSpriteChanged(SpriteBody& sprite) {
  if (sprite.home == this && !(sprite.flags & SpriteBody::kHidden)) {
    sprite.flags &= ~SpriteBody::kChanged;
    MarkTouched(sprite);
  }
  RequestPass();
}

void SpriteLayer::MarkTouched(SpriteBody& sprite) {
  if (sprite.flags & SpriteBody::kChanged) return;
  sprite.flags |= SpriteBody::kChanged;
  Rouse(sprite);
  std::vector<SpriteBody*> work{&sprite};
  while (!work.empty()) {
    const SpriteBody& s = *work.back();
    work.pop_back();
    const Rect reach = Narrow(Grown(s.box.Union(s.drawnBox), s.Margin()));
    for (size_t i = 0; i < quiet_.size();) {
      if (!Overlaps(reach, quiet_[i].drawnBox) && !Overlaps(reach, quiet_[i].box)) {
        ++i;
        continue;
      }
      // The last one takes its place.
      SpriteBody& t = *quiet_[i].sprite;
      t.flags |= SpriteBody::kChanged;
      Rouse(t);
      work.push_back(&t);
    }
  }
}

void SpriteLayer::Quieten(SpriteBody& sprite) {
  if (sprite.quietPlace != SpriteBody::kNotQuiet) return;
  sprite.quietPlace = quiet_.size();
  const int margin = sprite.Margin();
  quiet_.push_back({&sprite, Narrow(Grown(sprite.box, margin)), Narrow(Grown(sprite.drawnBox, margin))});
}

void SpriteLayer::Rouse(SpriteBody& sprite) {
  if (sprite.quietPlace == SpriteBody::kNotQuiet) return;
  quiet_[sprite.quietPlace] = quiet_.back();
  quiet_[sprite.quietPlace].sprite->quietPlace = sprite.quietPlace;
  quiet_.pop_back();
  sprite.quietPlace = SpriteBody::kNotQuiet;
}

void SpriteLayer::Restore(SpriteBody& sprite) {
  sprite.flags &= ~SpriteBody::kSaved;
  const Rect& box = sprite.savedBox;
  backSurface.impl->Blit(host_.SpritePixels(), box.left, box.top, box.left, box.top, box.Width(), box.Height(), 0, 0, 0,
                         false);
  host_.SpriteBoxChanged(box);
}

void SpriteLayer::LiftSprites(const Rect& given) {
  if (list_.empty()) return;
  Rect box{std::min(given.left, given.right), std::min(given.top, given.bottom), std::max(given.left, given.right),
           std::max(given.top, given.bottom)};
  const auto reach = [](const SpriteBody& s) { return Grown(s.drawnBox, s.Margin()); };
  const cSurfaceImpl& pixels = host_.SpritePixels();
  const bool isWhole = box.left <= 0 && box.top <= 0 && box.right >= pixels.width && box.bottom >= pixels.height;
  for (auto at = list_.begin(); !isWhole && at != list_.end();) {
    const SpriteBody& s = *at->sprite;
    const Rect drawn = reach(s);
    const Rect all = box.Union(drawn);
    if (!(s.flags & SpriteBody::kSaved) || !Overlaps(drawn, box) || all == box) {
      ++at;
      continue;
    }
    box = all;
    at = list_.begin();
  }
  bool lifted = false;
  for (auto at = list_.begin(); at != list_.end();) {
    const auto node = at++;
    SpriteBody& s = *node->sprite;
    if (!(s.flags & SpriteBody::kSaved) || !(isWhole || Overlaps(reach(s), box))) continue;
    Restore(s);
    s.flags |= SpriteBody::kToDraw;
    lifted = true;
    if (IsGhost(*node)) list_.erase(node);
  }
  if (lifted) RequestPass();
}

// --- The pass ---

void SpriteLayer::RunPass() {
  RestoreBackgrounds();
  UpdateState();
  if (SaveBackgrounds()) Draw();
  spritesDirty = false;
}

void SpriteLayer::RestoreBackgrounds() {
  constexpr uint32_t kBoth = SpriteBody::kChanged | SpriteBody::kSaved;
  for (const SpriteNode& node : list_) {
    if ((node.sprite->flags & kBoth) == kBoth) Restore(*node.sprite);
  }
  std::erase_if(list_, IsGhost);
}

void SpriteLayer::UpdateState() {
  for (const SpriteNode& node : list_) {
    SpriteBody& s = *node.sprite;
    if (!(s.flags & SpriteBody::kChanged) || IsGhost(node)) continue;
    if (s.flags & SpriteBody::kHideAsked) {
      s.flags &= ~(SpriteBody::kHideAsked | SpriteBody::kToDraw);
      s.flags |= SpriteBody::kHidden;
    }
    if (s.flags & SpriteBody::kShowAsked) s.flags &= ~(SpriteBody::kShowAsked | SpriteBody::kHidden);
    if (!(s.flags & SpriteBody::kHidden)) s.flags |= SpriteBody::kToDraw;
    if (s.flags & SpriteBody::kTransform) s.MakeTransformed();
    s.flags &= ~(SpriteBody::kChanged | SpriteBody::kImageChanged);
    s.drawnX = s.x;
    s.drawnY = s.y;
    s.drawnBox = s.box;
    s.drawnClip = s.clip;
    s.drawnHotX = s.hotX;
    s.drawnHotY = s.hotY;
    s.drawnImage = s.image;
    if (!(s.flags & SpriteBody::kHidden)) Quieten(s);
  }
}

bool SpriteLayer::EnsureBackSurface() {
  const cSurfaceImpl& pixels = host_.SpritePixels();
  const cSurfaceImpl& back = *backSurface.impl;
  if (backSurface.IsValid() && back.width == pixels.width && back.height == pixels.height &&
      back.depth == pixels.depth && back.palette == pixels.palette) {
    return true;
  }
  cSurface made;
  if (!made.Create(pixels.width, pixels.height, &pixels)) {
    backSurface.Destroy();
    return false;
  }
  // What was saved for others stays good when only the size has changed.
  if (backSurface.IsValid()) back.Blit(*made.impl, 0, 0, 0, 0, back.width, back.height, 0, 0, 0, false);
  backSurface = std::move(made);
  return true;
}

bool SpriteLayer::SaveBackgrounds() {
  cSurfaceImpl& pixels = host_.SpritePixels();
  if (list_.empty() || !pixels.Lock()) return true;
  pixels.Unlock();
  const Rect clip = pixels.GetClipRect();
  for (const SpriteNode& node : list_) {
    SpriteBody& s = *node.sprite;
    if (!(s.flags & SpriteBody::kToDraw) || IsGhost(node)) continue;
    s.flags &= ~SpriteBody::kSaved;
    const Rect box = Cut(Grown(s.drawnBox, s.Margin()).Intersect(clip), s.drawnClip);
    if (box.IsEmpty()) continue;
    if (!EnsureBackSurface()) {
      for (const SpriteNode& other : list_) other.sprite->flags &= ~SpriteBody::kSaved;
      return false;
    }
    pixels.Blit(*backSurface.impl, box.left, box.top, box.left, box.top, box.Width(), box.Height(), 0, 0, 0, false);
    s.savedBox = box;
    s.flags |= SpriteBody::kSaved;
  }
  return true;
}

void SpriteLayer::Draw() {
  cSurfaceImpl& pixels = host_.SpritePixels();
  if (list_.empty() || !pixels.Lock()) return;
  const Rect clip = pixels.GetClipRect();
  const Rect whole{0, 0, pixels.width, pixels.height};
  bool drawn = false;
  for (const SpriteNode& node : list_) {
    SpriteBody& s = *node.sprite;
    if (!(s.flags & SpriteBody::kToDraw) || IsGhost(node)) continue;
    s.flags &= ~SpriteBody::kToDraw;
    const cSurfaceImpl* source = s.transformed                          ? s.transformed.get()
                                 : s.drawnImage && s.drawnImage->pixels ? s.drawnImage->pixels->impl.get()
                                                                        : nullptr;
    if (!source) continue;
    const Rect box = Cut(Grown(s.drawnBox, s.Margin()).Intersect(whole), s.drawnClip);
    if (box.IsEmpty()) continue;
    const bool clipped = !(s.drawnClip == Rect{});
    if (clipped) {
      const Rect inside = clip.Intersect(s.drawnClip);
      pixels.SetClipRect(inside.left, inside.top, std::max(inside.Width(), 0), std::max(inside.Height(), 0));
    }
    source->Blit(pixels, s.drawnBox.left, s.drawnBox.top, 0, 0, s.drawnBox.Width(), s.drawnBox.Height(),
                 (s.drawWord & SpriteBody::kTransparent) ? 1 : 0,
                 static_cast<int>(s.drawWord & SpriteBody::kEffectBits), s.drawParam,
                 (s.drawWord & SpriteBody::kAntiAliased) != 0);
    if (clipped) pixels.SetClipRect(clip.left, clip.top, clip.Width(), clip.Height());
    host_.SpriteBoxChanged(box);
    drawn = true;
  }
  pixels.Unlock();
  if (drawn) host_.RequestSpriteRefresh();
}

}  // namespace vl
