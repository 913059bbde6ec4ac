// Surface: pictures of the screen and of windows.
#include "gfx2d/script/graphics.h"
#include "gfx2d/script/surface_class.h"
#include "gfx2d/wrap_surface.h"

namespace vl {

bool CISurface::TakeCapture(CapturedPicture& picture, int first) {
  const Size size = picture.size;
  auto* bytes = reinterpret_cast<uint8_t*>(picture.words.data());
  const cWrapSurface source(CGraphics::Of(interpreter).library, 32, size.width, size.height,
                            {bytes, picture.words.size() * sizeof(uint32_t)}, size.width * 4, PaletteRef());
  if (source.depth == 0) return false;
  const int32_t x = IntOr(first, 0);
  const int32_t y = IntOr(first + 1, 0);
  // A box that hangs over an edge is cut, so that what is left can be stretched.
  const auto cut = [](int32_t from, int32_t length, int32_t limit) {
    return static_cast<int32_t>(std::clamp<int64_t>(length, 0, std::max<int64_t>(0, int64_t{limit} - from)));
  };
  if (x < 0 || y < 0) return false;
  const int32_t w = cut(x, IntOr(first + 2, size.width), size.width);
  const int32_t h = cut(y, IntOr(first + 3, size.height), size.height);
  const int32_t dx = IntOr(first + 4, 0);
  const int32_t dy = IntOr(first + 5, 0);
  const int32_t dw = std::min(IntOr(first + 6, w), limits::kMaxSurfaceSide);
  const int32_t dh = std::min(IntOr(first + 7, h), limits::kMaxSurfaceSide);
  NoteChange(0, 0, width, height);
  return source.StretchBlit(*surface.impl, dx, dy, dw, dh, x, y, w, h, 0, kEffectNone, 0, false);
}

void CISurface::CaptureScreen() {
  CapturedPicture picture;
  auto* screen = dynamic_cast<CScreen*>(interpreter.messages.get());
  interpreter.GetResult().SetInt(screen && screen->CaptureScreen(picture) && TakeCapture(picture, 0));
}

void CISurface::CaptureWindow() {
  CIBaseClassImpl* window = interpreter.currentWindow;
  int first = 0;
  if (interpreter.GetArg(0)->type == VT_OBJECT) {
    window = interpreter.GetArg(0)->data.object;
    first = 1;
  }
  auto* owner = window ? dynamic_cast<CSurfaceOwner*>(window) : nullptr;
  if (!owner) interpreter.RaiseError(first ? ERR_BAD_ARGUMENT : ERR_NO_WINDOW);
  CapturedPicture picture;
  interpreter.GetResult().SetInt(owner->CaptureClient(picture) && TakeCapture(picture, first));
}

}  // namespace vl
