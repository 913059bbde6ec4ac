// Window: what is made from pictures: pointers, icons, shapes.
#include "gfx2d/colour.h"
#include "gfx2d/script/graphics.h"
#include "ui/window_class.h"
#include "ui/window_shape.h"

namespace vl {

namespace {

constexpr int kFileDepth = 24;  // pictures of files are read in it
constexpr int kSmallIcon = 16;
constexpr int kBigIcon = 32;

WindowPicture PictureOf(const CursorImage& image) {
  WindowPicture picture;
  picture.width = image.width;
  picture.height = image.height;
  picture.hotX = image.hotX;
  picture.hotY = image.hotY;
  picture.words.reserve(image.words.size());
  for (int y = 0; y < image.height; ++y) {
    const uint8_t* mask = image.mask.data() + ptrdiff_t{y} * image.MaskPitch();
    for (int x = 0; x < image.width; ++x) {
      const bool hidden = (mask[x / 8] & 0x80 >> x % 8) != 0;
      const uint32_t word =
          image.words[static_cast<size_t>(y) * static_cast<size_t>(image.width) + static_cast<size_t>(x)];
      picture.words.push_back(hidden ? 0 : 0xFF000000 | word);
    }
  }
  return picture;
}

}  // namespace

const cSurface* CIWindow::PictureArgument(int index, CISurface::Picture& picture) {
  const CValue& value = *interpreter.GetArg(index);
  if (value.IsObjectOfClass(CLASS_SURFACE)) return &static_cast<CISurface*>(value.data.object)->surface;
  const cSurfaceImpl* prototype = CGraphics::Of(interpreter).library.FindPrototype(kFileDepth);
  if (!prototype || !CISurface::FindPicture(interpreter, value, 0, *prototype, picture)) return nullptr;
  return picture.pixels;
}

void CIWindow::SetCursor() {
  hasCursor_ = false;
  cursorPicture_ = {};
  const CValue* first = interpreter.GetArgCount() > 0 ? interpreter.GetArg(0) : nullptr;
  const bool isPicture = first && !first->IsDefault() && (first->type == VT_OBJECT || first->type == VT_STRING);
  if (!isPicture) {
    const int32_t number = interpreter.GetArgInt(0);
    hasCursor_ = number >= 0 && number <= static_cast<int32_t>(CursorShape::Wait);
    if (hasCursor_) cursorShape_ = static_cast<CursorShape>(number);
    ShowCursor();
    return;
  }
  CISurface::Picture picture;
  const cSurface* pixels = PictureArgument(0, picture);
  if (!pixels) interpreter.RaiseError(ERR_NOT_MADE, kNoArgument, "the picture isn't there or can't be read");
  const auto numberOr0 = [&](int index) {
    const int32_t number = interpreter.GetArgInt(index);
    return number == kDefaultInt ? 0 : number;
  };
  const uint32_t mask = SwapRedBlue(static_cast<uint32_t>(numberOr0(1)) & 0xFFFFFF);
  const Point hotSpot{numberOr0(2), numberOr0(3)};
  const auto cursor = pixels->MakeCursor(pixels->impl->width, pixels->impl->height, mask, hotSpot);
  if (cursor) {
    cursorPicture_ = PictureOf(*cursor);
    cursorSerial_ = Tree().NextPictureSerial();
    hasCursor_ = true;
  }
  ShowCursor();
}

void CIWindow::SetIcon() {
  CIBaseClassImpl* object = interpreter.GetArgObjectOfClass(0, CLASS_SURFACE);
  const int32_t size = interpreter.GetArgInt(1);
  if (size != kDefaultInt && size != kSmallIcon && size != kBigIcon) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  const cSurface& surface = static_cast<CISurface*>(object)->surface;
  for (const int side : {kBigIcon, kSmallIcon}) {
    if (size != kDefaultInt && size != side) continue;
    const auto icon = surface.MakeCursor(side, side, 0, std::nullopt);
    if (icon) Tree().SetIcon(hwnd, PictureOf(*icon));
  }
}

void CIWindow::SetShape() {
  CISurface::Picture picture;
  const cSurface* pixels = interpreter.GetArgCount() > 0 ? PictureArgument(0, picture) : nullptr;
  if (!pixels) interpreter.RaiseError(ERR_NOT_MADE, kNoArgument, "the picture isn't there or can't be read");
  Tree().SetShape(hwnd, ShapeOf(*pixels));
}

}  // namespace vl
