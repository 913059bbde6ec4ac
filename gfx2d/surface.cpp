#include "gfx2d/surface.h"

#include <algorithm>
#include <utility>

namespace vl {

cSurfaceImpl* cSurface::NullSurface() {
  // Its operations change nothing, so all handles of all threads may share it.
  static cNullSurface null;
  return &null;
}

void cSurface::Swap(cSurface& o) noexcept {
  std::swap(impl, o.impl);
  std::swap(originX, o.originX);
  std::swap(originY, o.originY);
  std::swap(lastError, o.lastError);
}

bool cSurface::Create(int width, int height, const cSurfaceImpl* prototype) {
  Destroy();
  lastError = 0;
  auto made = prototype ? prototype->MakeInstance(std::max(width, 1), std::max(height, 1)) : nullptr;
  if (!made) {
    lastError = SURF_ERR_NOMEM;
    return false;
  }
  Adopt(std::move(made));
  return true;
}

void cSurface::Adopt(std::unique_ptr<cSurfaceImpl> implementation) {
  impl.reset(implementation ? implementation.release() : NullSurface());
}

bool cSurface::CloneFrom(const cSurface& source, int width, int height) {
  const bool sameSize = width == -1;
  cSurface copy;
  const bool made =
      copy.Create(sameSize ? source.impl->width : width, sameSize ? source.impl->height : height, source.impl.get());
  const cSurfaceImpl& from = *source.impl;
  if (made && (sameSize ? from.Blit(*copy.impl, 0, 0, 0, 0, from.width, from.height, 0, 0, 0, false)
                        : from.StretchBlit(*copy.impl, 0, 0, copy.impl->width, copy.impl->height, 0, 0, from.width,
                                           from.height, 0, 0, 0, false))) {
    impl = std::move(copy.impl);
    copy.impl.reset(NullSurface());
    return true;
  }
  Destroy();
  lastError = SURF_ERR_NOMEM;
  return false;
}

bool cSurface::CopyFrom(const cSurface& source) {
  return source.impl->Blit(*impl, 0, 0, 0, 0, source.impl->width, source.impl->height, 0, 0, 0, false);
}

bool cSurface::RotateInto(cSurface& destination, int degrees, bool interpolate, Colour background) const {
  const Size size = impl->RotatedSize(degrees);
  if (!IsValid() || size.width < 1 || size.height < 1) return false;
  cSurface turned;
  if (!turned.Create(size.width, size.height, impl.get())) {
    destination.lastError = SURF_ERR_NOMEM;
    return false;
  }
  turned.impl->Fill(0, 0, size.width, size.height, background);
  if (!impl->Rotate(*turned.impl, degrees, interpolate, background)) return false;
  std::swap(destination.impl, turned.impl);
  return true;
}

void cSurface::SetOrigin(int x, int y) {
  originX = x;
  originY = y;
}

int cSurface::GetKindGroup() const {
  switch (impl->GetKind()) {
    case 3:
    case 5:
      return 1;
    case 4:
      return 2;
    default:
      return 0;
  }
}

Rect cSurface::GetClipRect() const {
  const Rect r = impl->GetClipRect();
  const auto add = [](int a, int b) { return int(uint32_t(a) + uint32_t(b)); };
  return {add(r.left, originX), add(r.top, originY), add(r.right, originX), add(r.bottom, originY)};
}

void cSurface::SetClipRect(int x, int y, int width, int height) { impl->SetClipRect(X(x), Y(y), width, height); }

}  // namespace vl
