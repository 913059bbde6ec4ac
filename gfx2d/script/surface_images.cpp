// Surface: pictures of banks, files and blocks of bytes, read and saved.
#include "gfx2d/images/image_reader.h"
#include "gfx2d/images/load_image.h"
#include "gfx2d/script/graphics.h"
#include "gfx2d/script/surface_class.h"
#include "gfx2d/script/surface_constants.h"
#include "host/appfile/app_file.h"
#include "interpreter/data_source.h"

namespace vl {

namespace {

constexpr uint32_t kImageBank = 1;
constexpr uint32_t kFlagFamily = 0xABCD0000;
constexpr uint32_t kFlagBits = 0xFFFF;

constexpr bool HasFlag(uint32_t flags, uint32_t flag) { return (flags & flag & kFlagBits) != 0; }

// How a picture lands in a surface that stands ready: in its depth and palette unless the flags keep the picture's.
uint32_t LoadFlags(uint32_t flags) {
  uint32_t load = HasFlag(flags, kUseImagePalette) ? kLoadKeepDepth : kLoadKeepDepth | kLoadKeepPalette;
  if (HasFlag(flags, kUseImageDepth)) load &= ~kLoadKeepDepth;
  return load;
}

}  // namespace

bool CISurface::TakeFlag(int32_t number, uint32_t& flags) {
  if ((static_cast<uint32_t>(number) & ~kFlagBits) != kFlagFamily) return false;
  flags |= static_cast<uint32_t>(number) & kFlagBits;
  return true;
}

bool CISurface::FindPicture(CInterpretor& interpreter, const CValue& source, uint32_t flags,
                            const cSurfaceImpl& prototype, Picture& picture) {
  CGraphics& graphics = CGraphics::Of(interpreter);
  std::unique_ptr<CStream> stream;
  if (source.type == VT_OBJECT) {
    const auto* bytes = source.data.object ? dynamic_cast<CByteSource*>(source.data.object) : nullptr;
    if (!bytes) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    stream = std::make_unique<CMemoryStream>(bytes->Bytes().data(), static_cast<uint32_t>(bytes->Bytes().size()));
  } else if (auto* element = dynamic_cast<CImageElement*>(interpreter.GetElement(source, kImageBank, true))) {
    auto& bank = static_cast<CImageBank&>(*element->bank);
    if (const BankImage* image = graphics.images.Find(bank, element->index)) {
      picture.pixels = &image->surface;
      return true;
    }
    // Shown once, it needn't stay: a program may go through all of a large bank.
    picture.pixels = &picture.own;
    return graphics.images.LoadInto(bank, element->index, picture.own, nullptr);
  } else if (source.type == VT_STRING && interpreter.app) {
    if (source.StringView().empty()) interpreter.RaiseError(ERR_NO_FILE_NAME);
    stream = interpreter.app->OpenResource(source.StringView(), true, 0);
  }
  if (!stream || !picture.own.Create(1, 1, &prototype)) return false;
  picture.pixels = &picture.own;
  return LoadImageIntoSurface(graphics.filters, graphics.library, picture.own, *stream, LoadFlags(flags), nullptr);
}

bool CISurface::BecomePicture(Picture& picture) {
  if (picture.pixels == &picture.own) {
    surface = std::move(picture.own);
  } else {
    cSurface copy;
    if (!copy.CloneFrom(*picture.pixels)) return false;
    surface = std::move(copy);
  }
  width = surface.impl->width;
  height = surface.impl->height;
  depth = surface.impl->depth;
  return true;
}

void CISurface::LoadImage() {
  if (interpreter.IsArgDefault(0)) interpreter.RaiseError(ERR_NO_FILE_NAME);
  uint32_t flags = 0;
  int32_t numbers[5] = {kDefaultInt, kDefaultInt, kDefaultInt, kDefaultInt, kDefaultInt};
  int count = 0;
  for (int i = 1; i < interpreter.GetArgCount(); ++i) {
    const int32_t number = interpreter.GetArgInt(i);
    if (TakeFlag(number, flags)) continue;
    if (count == 5) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
    numbers[count++] = number;
  }
  if (count == 1 || count == 3) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
  Picture picture;
  if (!FindPicture(interpreter, *interpreter.GetArg(0), flags, *surface.impl, picture)) {
    interpreter.RaiseError(ERR_NOT_MADE, kNoArgument, "the picture isn't there or can't be read");
  }
  if (count == 0 && HasFlag(flags, kAutoSize) && !parentWindow) {
    LiftSprites(WholeBox());
    if (!BecomePicture(picture)) interpreter.RaiseError(ERR_MEMORY);
    NoteChange(0, 0, width, height);
    interpreter.GetResult().SetInt(1);
    return;
  }
  const cSurfaceImpl& pixels = *picture.pixels->impl;
  const auto orElse = [](int32_t number, int32_t ifMissing) { return number == kDefaultInt ? ifMissing : number; };
  int32_t x = (width - pixels.width) / 2;
  int32_t y = (height - pixels.height) / 2;
  if (count > 0) {
    x = orElse(numbers[0], penX);
    y = orElse(numbers[1], penY);
  }
  const int32_t w = std::min(orElse(numbers[2], pixels.width), limits::kMaxSurfaceSide);
  const int32_t h = std::min(orElse(numbers[3], pixels.height), limits::kMaxSurfaceSide);
  const auto end = [](int32_t from, int32_t size, int32_t limit) {
    return static_cast<int>(std::clamp<int64_t>(int64_t{from} + size, 0, limit));
  };
  const Rect box{std::max(x, 0), std::max(y, 0), end(x, w, width), end(y, h, height)};
  if (!box.IsEmpty()) NoteChange(box.left, box.top, box.right, box.bottom);
  if (HasFlag(flags, kUseImagePalette)) LiftSprites(WholeBox());
  if (HasFlag(flags, kUseImagePalette)) surface.impl->SetPaletteFrom(pixels, true);
  const bool resample = orElse(numbers[4], antiAlias_) != 0;
  picture.pixels->StretchBlit(surface, x, y, w, h, 0, 0, pixels.width, pixels.height, 0, kEffectNone, 0, resample);
  interpreter.GetResult().SetInt(1);
}

void CISurface::SaveImage() {
  const CValue& name = *interpreter.GetArg(0);
  if (name.type != VT_STRING || name.StringView().empty()) interpreter.RaiseError(ERR_NO_FILE_NAME);
  const auto format = static_cast<uint32_t>(IntOr(1, static_cast<int32_t>(ImageFilterId("BMP "))));
  CGraphics& graphics = CGraphics::Of(interpreter);
  interpreter.GetResult().SetInt(0);
  ImageReader writer(graphics.filters);
  std::string path;
  if (writer.OpenFilter(format) || !interpreter.app || !interpreter.app->PathOfFile(name.StringView(), &path)) return;
  const uint32_t writable = writer.filter->GetWritableDepths();
  cSurface copy;
  const cSurfaceImpl* pixels = surface.impl.get();
  if (depth == 16 || depth == 24 || !(writable & ImageDepthBit(depth))) {
    const int copyDepth = (writable & kDepth24) ? 24 : (writable & kDepth15) ? 15 : 8;
    if (!copy.Create(width, height, graphics.library.FindPrototype(copyDepth)) || !copy.CopyFrom(surface)) return;
    pixels = copy.impl.get();
  }
  if (!pixels->Lock()) return;
  const ImageError error = writer.Save(*interpreter.services.files, path, pixels->topLine, pixels->width,
                                       pixels->height, pixels->depth, pixels->pitch, pixels->palette.Get());
  pixels->Unlock();
  interpreter.GetResult().SetInt(error == kImageOk);
}

}  // namespace vl
