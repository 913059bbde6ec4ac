#include "tools/project/pictures.h"

#include "base/memory_budget.h"
#include "gfx2d/images/anm_filter.h"
#include "gfx2d/images/encode_image_element.h"
#include "gfx2d/images/stored_palette.h"
#include "gfx2d/pixel_format.h"
#include "gfx2d/wrap_surface.h"
#include "host/appfile/element.h"
#include "platform/memory_files.h"

namespace vl {

namespace {

constexpr uint32_t kVisibleBlack = 0x080000;  // as a word 0x00RRGGBB
constexpr uint8_t kHalfAlpha = 128;

// What pictures are decoded with; its budget is that of a run, so that what packs also plays.
struct Workshop {
  MemoryBudget budget;
  SurfaceLibrary library{&budget};
  ImageFilterList filters{&budget};
};

std::string ErrorText(ImageError error) {
  switch (error) {
    case kImageOutOfMemory:
      return "the picture is too large";
    case kImageDepthTooSmall:
      return "pictures of fewer than 8 bits a pixel aren't read";
    default:
      return "the picture is damaged or of no kind that the runtime reads (BMP, JPEG, PNG, TGA, PCX)";
  }
}

std::span<const uint8_t> BytesOf(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

bool Decode(Workshop& shop, std::string_view file, int depth, const PaletteRecord* palette, bool alpha,
            EncodedImage* image, std::string* error) {
  const ImageError code = EncodeImageElement(shop.filters, shop.library, BytesOf(file), depth, palette, alpha, image);
  if (code) *error = ErrorText(code);
  return code == kImageOk;
}

// Decides for each pixel of 32 bits whether it is transparent.
void MarkTransparent(EncodedImage& image, const PictureOptions& options) {
  const size_t count = size_t{image.width} * image.height;
  for (size_t i = 0; i < count; ++i) {
    uint8_t* p = image.pixels.data() + i * 4;
    const uint32_t colour = LoadWord<uint32_t>(p) & 0xFFFFFF;
    const bool isKey = options.transparentColour && colour == *options.transparentColour;
    const bool isClear = options.transparentAlpha && !image.mask.empty() && image.mask[i] < kHalfAlpha;
    StoreWord<uint32_t>(p, isKey || isClear ? 0 : colour ? colour : kVisibleBlack);
  }
}

// A surface over the pixels, in memory that `image` keeps.
cWrapSurface Over(Workshop& shop, EncodedImage& image) {
  return cWrapSurface(shop.library, image.depth, image.width, image.height, image.pixels,
                      LineBytes(image.depth, image.width),
                      image.depth == 8 ? shop.library.Palettes().GetDefaultPalette() : PaletteRef());
}

// At depth 8 `palette` gives the colours to use; null: the picture's own.
bool Load(Workshop& shop, std::string_view file, const PictureOptions& options, const PaletteRecord* palette,
          EncodedImage* image, std::string* error) {
  const bool key = options.transparentColour.has_value() || options.transparentAlpha;
  if (!key) return Decode(shop, file, options.depth, palette, options.mask, image, error);
  EncodedImage own;  // tells the depth and palette that the picture comes in
  if (!Decode(shop, file, options.depth, palette, false, &own, error)) return false;
  const int depth = own.depth;
  EncodedImage words;
  if (!Decode(shop, file, 32, nullptr, true, &words, error)) return false;
  MarkTransparent(words, options);
  if (!options.mask) words.mask.clear();
  if (depth == 32) {
    *image = std::move(words);
    return true;
  }
  image->width = words.width;
  image->height = words.height;
  image->depth = static_cast<uint16_t>(depth);
  image->mask = words.mask;
  image->pixels.assign(static_cast<size_t>(LineBytes(depth, words.width)) * words.height, 0);
  image->palette = own.palette;
  cWrapSurface target = Over(shop, *image);
  if (image->palette) target.SetPaletteRecord(*image->palette, false);
  return Over(shop, words).Blit(target, 0, 0, 0, 0, words.width, words.height, 0, kEffectNone, 0, false);
}

}  // namespace

bool StorePicture(std::string_view file, const PictureOptions& options, ImageModel* image,
                  std::optional<StoredPalette>* palette, std::string* error) {
  Workshop shop;
  EncodedImage encoded;
  if (!Load(shop, file, options, nullptr, &encoded, error)) return false;
  image->marker = 0;
  image->width = encoded.width;
  image->height = encoded.height;
  image->depth = encoded.depth;
  image->pixels.bytes.assign(encoded.pixels.begin(), encoded.pixels.end());
  if (options.mask && !encoded.mask.empty()) {
    image->flags |= CImageElement::kFlagMask;
    image->mask.bytes.assign(encoded.mask.begin(), encoded.mask.end());
  }
  palette->reset();
  if (encoded.palette) *palette = StoredPaletteOf(*encoded.palette);
  return true;
}

bool MakeAnimation(const std::vector<std::string>& pictures, const AnimationOptions& options, std::string* animation,
                   std::string* error) {
  Workshop shop;
  MemoryFileSystem files;
  ImageOutput output(files.open("animation", FileMode::Create));
  AnmFilter writer(shop.budget);
  writer.SetQuality(options.quality);
  AnimationFormat format;
  EncodedImage frame;
  PictureOptions picture = options.picture;
  std::optional<PaletteRecord> palette;
  bool written = true;
  for (size_t i = 0; i < pictures.size() && written; ++i) {
    const std::string number = "frame " + std::to_string(i + 1) + ": ";
    frame = {};
    if (!Load(shop, pictures[i], picture, palette ? &*palette : nullptr, &frame, error)) {
      *error = number + *error;
      return false;
    }
    if (i == 0) {
      // The first picture settles what all are.
      picture.depth = format.depth = frame.depth;
      format.width = frame.width;
      format.height = frame.height;
      format.frameTime = options.frameTimeMs;
      format.loopCount = options.loopCount;
      format.loopStart = options.loopStart;
      palette = frame.palette;
      format.palette = palette ? &*palette : nullptr;
      written = writer.BeginWrite(output, format) == kImageOk;
    }
    if (frame.width != format.width || frame.height != format.height) {
      *error = number + "the pictures of an animation have one size, this one is " + std::to_string(frame.width) +
               " by " + std::to_string(frame.height) + " and the first is " + std::to_string(format.width) + " by " +
               std::to_string(format.height);
      return false;
    }
    written = written && writer.WriteFrame(output, frame.pixels.data(), LineBytes(frame.depth, frame.width),
                                           options.frameTimeMs, 1) == kImageOk;
  }
  written = written && writer.FinishWrite(output) == kImageOk && output.Commit();
  writer.EndWrite();
  if (!written) {
    *error = "the animation can't be written";
    return false;
  }
  const std::vector<uint8_t> bytes = files.Content("animation");
  animation->assign(bytes.begin(), bytes.end());
  return true;
}

}  // namespace vl
