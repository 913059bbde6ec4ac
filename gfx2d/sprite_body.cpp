#include "gfx2d/sprite_body.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vl {

namespace {

constexpr double kRadiansPerDegree = 0.01745329251993889;
// Boxes stay so far from the ends of their type that sides and margins can be added.
constexpr int kFarthest = 1 << 29;

int ToCoordinate(double v) {
  return static_cast<int>(std::clamp(v, static_cast<double>(-kFarthest), static_cast<double>(kFarthest)));
}
int Sum(int64_t v) { return static_cast<int>(std::clamp<int64_t>(v, -kFarthest, kFarthest)); }

int Scaled(int v, float scale) { return scale == 1 ? v : ToCoordinate(v * static_cast<double>(scale)); }

// A side turned: pushed away from zero, so that the box never comes out a pixel short.
int Turned(int v, float t) {
  const auto f = static_cast<float>(v);
  return ToCoordinate(static_cast<double>(t >= 0 ? f * t + (1 - t) : f * t - (1 + t)));
}

uint32_t RawPixel(const cSurfaceImpl& s, int x, int y) {
  uint32_t pixel = 0;
  std::memcpy(&pixel, s.PixelAt(x, y), static_cast<size_t>(s.bytesPerPixel));
  return pixel;
}

}  // namespace

void SpriteBody::UpdateBox() {
  const cSurfaceImpl* pixels = ImagePixels();
  const int w = Scaled(pixels ? pixels->width : 0, scaleX);
  const int h = Scaled(pixels ? pixels->height : 0, scaleY);
  const int hx = Scaled(hotX, scaleX);
  const int hy = Scaled(hotY, scaleY);
  if (angle == 0) {
    box.left = Sum(int64_t{x} - hx);
    box.top = Sum(int64_t{y} - hy);
    box.right = Sum(int64_t{box.left} + w);
    box.bottom = Sum(int64_t{box.top} + h);
    return;
  }
  // In the precision of the scales: a half turn then lies where it should.
  auto c = static_cast<float>(std::cos(angle * kRadiansPerDegree));
  auto s = static_cast<float>(std::sin(angle * kRadiansPerDegree));
  if (angle == 90 || angle == 270) {
    c = 0;
    s = angle == 90 ? 1.0F : -1.0F;
  }
  const auto fx = static_cast<float>(hx);
  const auto fy = static_cast<float>(hy);
  const int64_t x0 = int64_t{x} - ToCoordinate(static_cast<double>(fx * c + fy * s));
  const int64_t y0 = int64_t{y} - ToCoordinate(static_cast<double>(fy * c - fx * s));
  const int64_t a = Turned(h, s);
  const int64_t b = Turned(w, c);
  const int64_t d = Turned(h, c);
  const int64_t e = Turned(w, s);
  const auto [left, right] = std::minmax({x0, x0 + a, x0 + a + b, x0 + b});
  const auto [top, bottom] = std::minmax({y0, y0 + d, y0 + d - e, y0 - e});
  box = {Sum(left), Sum(top), Sum(right), Sum(bottom)};
}

void SpriteBody::MakeTransformed() {
  flags &= ~kTransform;
  transformed.reset();
  const cSurfaceImpl* pixels = ImagePixels();
  if (!pixels || !IsTransformed() || box.IsEmpty()) return;
  const bool isScaled = scaleX != 1 || scaleY != 1;
  std::unique_ptr<cSurfaceImpl> made = pixels->MakeInstance(box.Width(), box.Height());
  if (!made) return;
  if (angle == 0) {
    pixels->StretchBlit(*made, 0, 0, box.Width(), box.Height(), 0, 0, pixels->width, pixels->height, 0, 0, 0, false);
  } else {
    std::unique_ptr<cSurfaceImpl> stretched;
    if (isScaled) {
      const int w = Scaled(pixels->width, scaleX);
      const int h = Scaled(pixels->height, scaleY);
      if (w < 1 || h < 1) return;
      stretched = pixels->MakeInstance(w, h);
      if (!stretched) return;
      pixels->StretchBlit(*stretched, 0, 0, w, h, 0, 0, pixels->width, pixels->height, 0, 0, 0, false);
      pixels = stretched.get();
    }
    made->FillRaw(0, 0, made->width, made->height, 0);
    pixels->Rotate(*made, angle, interpolate, 0);
  }
  transformed = std::move(made);
}

const cSurfaceImpl* SpriteBody::Shown() {
  if (flags & kTransform) MakeTransformed();
  return transformed ? transformed.get() : ImagePixels();
}

bool SpriteBody::IsPointIn(int px, int py) {
  if (!box.Contains(px, py)) return false;
  if (!(drawWord & kTransparent)) return true;
  const cSurfaceImpl* shown = Shown();
  if (!shown || !shown->Lock()) return false;
  const int ix = px - box.left;
  const int iy = py - box.top;
  const bool hit = ix < shown->width && iy < shown->height && RawPixel(*shown, ix, iy) != 0;
  shown->Unlock();
  return hit;
}

bool AreColliding(SpriteBody& a, SpriteBody& b) {
  if ((a.flags | b.flags) & SpriteBody::kGhost) return false;
  if (!(a.flags & SpriteBody::kCollision) || !(b.flags & SpriteBody::kCollision)) return false;
  if (!Overlaps(a.box, b.box)) return false;
  if ((a.flags | b.flags) & SpriteBody::kBoxCollision) return true;
  const cSurfaceImpl* first = a.Shown();
  const cSurfaceImpl* second = b.Shown();
  if (!first || !second || first->bytesPerPixel != second->bytesPerPixel) return true;
  if (!first->Lock() || !second->Lock()) return true;
  // A picture that couldn't be transformed is smaller or larger than its box.
  const auto cut = [](const Rect& box, const cSurfaceImpl& s) {
    return Rect{box.left, box.top, std::min(box.right, box.left + s.width), std::min(box.bottom, box.top + s.height)};
  };
  const Rect both = cut(a.box, *first).Intersect(cut(b.box, *second));
  for (int py = both.top; py < both.bottom; ++py) {
    for (int px = both.left; px < both.right; ++px) {
      if (RawPixel(*first, px - a.box.left, py - a.box.top) != 0 &&
          RawPixel(*second, px - b.box.left, py - b.box.top) != 0) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace vl
