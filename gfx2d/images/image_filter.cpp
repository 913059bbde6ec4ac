#include "gfx2d/images/image_filter.h"

#include <algorithm>
#include <cstring>

#include "base/limits.h"

namespace vl {
namespace {

constexpr uint32_t kFirstNameId = 3801;
constexpr uint32_t kFirstDescriptionId = 3901;
constexpr uint32_t kFirstExtensionId = 3701;

}  // namespace

uint32_t ImageDepthBit(int depth) {
  switch (depth) {
    case 8:
      return kDepth8;
    case 15:
      return kDepth15;
    case 16:
      return kDepth16;
    case 24:
      return kDepth24;
    case 32:
      return kDepth32;
    default:
      return 0;
  }
}

bool SameColours(const PaletteRecord& a, const PaletteRecord& b) {
  if (a.count != b.count) return false;
  return std::equal(a.entries.begin(), a.entries.begin() + std::min<int>(a.count, 256), b.entries.begin(),
                    [](const PaletteEntry& x, const PaletteEntry& y) { return x.SameColour(y); });
}

ImageFilter::ImageFilter(MemoryBudget& budget, const Texts& texts)
    : nameStringId(kFirstNameId + texts.number),
      descriptionStringId(kFirstDescriptionId + texts.number),
      extensionStringId(kFirstExtensionId + texts.number),
      budget_(budget),
      texts_(texts) {}

ImageError ImageFilter::Save(ImageOutput&, const uint8_t*, int32_t, int32_t, int32_t, int32_t, const PaletteRecord*) {
  return kImageCantDo;
}

bool ImageFilter::SetPicture(int64_t pictureWidth, int64_t pictureHeight, int32_t pictureDepth, int32_t padding) {
  if (pictureWidth < 1 || pictureHeight < 1 || pictureWidth > limits::kMaxSurfaceSide ||
      pictureHeight > limits::kMaxSurfaceSide || pictureWidth * pictureHeight > limits::kMaxSurfacePixels) {
    return false;
  }
  width = int32_t(pictureWidth);
  height = int32_t(pictureHeight);
  depth = pictureDepth;
  bytesPerPixel = (depth + 1) / 8;
  rowBytes = width * bytesPerPixel;
  lineBytes = (rowBytes + padding - 1) / padding * padding;
  frameCount = 1;
  return true;
}

bool ImageFilter::TakeFrame() { return !std::exchange(frameTaken_, true); }

void ImageFilter::PutLine(const uint8_t* source, uint8_t* target, int32_t pixels) {
  if (mustConvert) {
    ConvertLine(source, target, pixels);
  } else {
    std::memcpy(target, source, size_t(pixels) * size_t(bytesPerPixel));
  }
}

}  // namespace vl
