// The converter of picture files: from the depth and palette of a file to those of its target, line by line.
//
// It differs from the one of surfaces where a palette takes part: a file's index 0 is a colour like any other, and
// the nearest entry is the one with the least sum of absolute differences, the first of equal ones.
#include <algorithm>
#include <cstring>
#include <new>

#include "gfx2d/images/image_filter.h"
#include "gfx2d/images/line_kernels.h"
#include "gfx2d/pixel_format.h"

namespace vl {
namespace {

// Pixels that are converted at a time, so that what lies between stays close at hand.
constexpr int32_t kStep = 256;
// A cell of the colour cache that isn't known yet. A cell that truly has this index is searched each time.
constexpr uint8_t kUnknown = 253;
constexpr uint32_t kNoColour = 0xFFFFFFFF;

constexpr uint32_t KeyOf(uint32_t red, uint32_t green, uint32_t blue) {
  return red >> 3 << 11 | green >> 2 << 5 | blue >> 3;
}

template <class T>
bool Make(std::unique_ptr<T>& p) {
  if (!p) p.reset(new (std::nothrow) T);
  return p != nullptr;
}

}  // namespace

struct ImageFilter::Lines {
  static void Remap(ImageFilter& f, const uint8_t* source, uint8_t* target, int32_t pixels) {
    for (int32_t i = 0; i < pixels; ++i) target[i] = f.paletteRemap[source[i]];
  }
  template <int To>
  static void FromIndex(ImageFilter& f, const uint8_t* source, uint8_t* target, int32_t pixels) {
    const auto& table = *f.indexPixels_;
    for (int32_t i = 0; i < pixels; ++i) PixelFormat<To>::Store(target + i * PixelFormat<To>::kBytes, table[source[i]]);
  }
  template <int From>
  static void ToIndex(ImageFilter& f, const uint8_t* source, uint8_t* target, int32_t pixels) {
    auto& cache = *f.colourCache;
    for (int32_t i = 0; i < pixels; ++i) {
      const uint32_t v = PixelFormat<From>::Load(source + i * PixelFormat<From>::kBytes);
      uint32_t key = v;
      if constexpr (From == 15) key = ((v & 0x7FE0) << 1) | (v & 31);
      if constexpr (From > 16) key = KeyOf(v >> 16 & 0xFF, v >> 8 & 0xFF, v & 0xFF);
      uint8_t index = cache[key];
      if (index == kUnknown) {
        // Of narrow pixels the key itself is the colour.
        const uint32_t red = From > 16 ? v >> 16 & 0xFF : key >> 8 & 0xF8;
        const uint32_t green = From > 16 ? v >> 8 & 0xFF : key >> 3 & 0xFC;
        const uint32_t blue = From > 16 ? v & 0xFF : key << 3 & 0xF8;
        index = f.SearchAgain(red, green, blue);
        cache[key] = index;
      }
      target[i] = index;
    }
  }
  static void WordsToIndex(ImageFilter& f, const uint8_t* source, uint8_t* target, int32_t pixels) {
    auto& cache = *f.colourCache;
    uint16_t keys[kStep];
    for (; pixels > 0; pixels -= kStep, source += kStep * 4, target += kStep) {
      const int32_t count = std::min(pixels, kStep);
      kernels::WordsToKeys(source, keys, count);
      for (int32_t i = 0; i < count; ++i) target[i] = cache[keys[i]];
      // In their order those that the cache didn't know; the first one of a key may have told the others by now.
      const uint8_t* const end = target + count;
      for (uint8_t* at = target; (at = FindUnknown(at, end)) != end; ++at) {
        const ptrdiff_t i = at - target;
        uint8_t& cell = cache[keys[i]];
        if (cell == kUnknown) cell = f.SearchAgain(source[i * 4 + 2], source[i * 4 + 1], source[i * 4]);
        *at = cell;
      }
    }
  }
  static uint8_t* FindUnknown(uint8_t* from, const uint8_t* end) {
    void* found = from == end ? nullptr : std::memchr(from, kUnknown, size_t(end - from));
    return found ? static_cast<uint8_t*>(found) : from + (end - from);
  }
  static void WordsTo16(ImageFilter&, const uint8_t* source, uint8_t* target, int32_t pixels) {
    kernels::WordsTo16(source, target, pixels);
  }
  static void WordsTo15(ImageFilter&, const uint8_t* source, uint8_t* target, int32_t pixels) {
    kernels::WordsTo15(source, target, pixels);
  }
  static void WordsTo24(ImageFilter&, const uint8_t* source, uint8_t* target, int32_t pixels) {
    for (int32_t i = 0; i < pixels; ++i) std::memcpy(target + i * 3, source + i * 4, 3);
  }
  static void WordsTo32(ImageFilter&, const uint8_t* source, uint8_t* target, int32_t pixels) {
    for (int32_t i = 0; i < pixels; ++i) {
      StoreWord<uint32_t>(target + i * 4, LoadWord<uint32_t>(source + i * 4) & 0xFFFFFF);
    }
  }
  static void Depths(ImageFilter& f, const uint8_t* source, uint8_t* target, int32_t pixels) {
    f.depths_->Convert(source, target, pixels);
  }
};

uint8_t ImageFilter::SearchOutput(uint32_t red, uint32_t green, uint32_t blue) const {
  return kernels::NearestColour(outputChannels_, std::max<int32_t>(outputPalette.count, 1), uint8_t(red),
                                uint8_t(green), uint8_t(blue));
}

// A colour that the cache doesn't know. What has the index of the mark would be searched pixel for pixel, so those
// colours are kept apart.
uint8_t ImageFilter::SearchAgain(uint32_t red, uint32_t green, uint32_t blue) {
  const uint32_t colour = MakeColour(red, green, blue);
  uint32_t& kept = (*searched_)[colour * 0x9E3779B1u >> 23];
  if (kept == colour) return kUnknown;
  const uint8_t index = SearchOutput(red, green, blue);
  if (index == kUnknown) kept = colour;
  return index;
}

ImageError ImageFilter::SetOutputFormat(int32_t newDepth, const PaletteRecord* newPalette) {
  if (ImageDepthBit(newDepth) == 0) return kImageBadArgument;
  if (newDepth == 8 && (!newPalette || newPalette->count > 256)) return kImageBadArgument;
  if (depth == 0) return kImageFilterClosed;
  const bool sameDepth = newDepth == outputDepth;
  outputDepth = newDepth;
  outputBytesPerPixel = (newDepth + 1) / 8;
  if (newDepth != 8) {
    outputPalette.count = 0;
    ownPalette_ = false;
    mustConvert = depth != newDepth;
    return mustConvert ? PrepareConversion() : kImageOk;
  }
  const bool kept = sameDepth && SameColours(*newPalette, outputPalette);
  if (!kept) {
    outputPalette = *newPalette;
    for (size_t i = 0; i < 256; ++i) {
      const PaletteEntry& e = outputPalette.entries[i];
      outputChannels_[0][i] = e.red;
      outputChannels_[1][i] = e.green;
      outputChannels_[2][i] = e.blue;
    }
    if (colourCache && !MakeColourCache()) return kImageOutOfMemory;
  }
  ownPalette_ = depth == 8 && newPalette == GetPalette();
  mustConvert = depth != 8 || (!ownPalette_ && (!palette || !SameColours(*newPalette, *palette)));
  return mustConvert ? PrepareConversion() : kImageOk;
}

bool ImageFilter::MakeColourCache() {
  if (!Make(colourCache) || !Make(searched_)) return false;
  colourCache->fill(kUnknown);
  searched_->fill(kNoColour);
  for (int i = 0; i < outputPalette.count; ++i) {
    const PaletteEntry& e = outputPalette.entries[size_t(i)];
    (*colourCache)[KeyOf(e.red, e.green, e.blue)] = uint8_t(i);
  }
  return true;
}

ImageFilter::Line ImageFilter::LineToIndex(int32_t sourceDepth) const {
  switch (sourceDepth) {
    case 15:
      return Lines::ToIndex<15>;
    case 16:
      return Lines::ToIndex<16>;
    case 24:
      return Lines::ToIndex<24>;
    default:
      return Lines::WordsToIndex;
  }
}

ImageError ImageFilter::PrepareConversion() {
  if (depth == 8) {
    static constexpr Line kFromIndex[5] = {Lines::Remap, Lines::FromIndex<15>, Lines::FromIndex<16>,
                                           Lines::FromIndex<24>, Lines::FromIndex<32>};
    if (outputDepth != 8 && !Make(indexPixels_)) return kImageOutOfMemory;
    convert_ = kFromIndex[DepthIndexOf(outputDepth)];
    FillRemap();
    return kImageOk;
  }
  if (outputDepth == 8) {
    if (!colourCache && !MakeColourCache()) return kImageOutOfMemory;
    convert_ = LineToIndex(depth);
    convertWords_ = Lines::WordsToIndex;
    return kImageOk;
  }
  depths_.emplace(DepthIndexOf(depth), nullptr, DepthIndexOf(outputDepth), nullptr);
  convert_ = Lines::Depths;
  static constexpr Line kFromWords[5] = {nullptr, Lines::WordsTo15, Lines::WordsTo16, Lines::WordsTo24,
                                         Lines::WordsTo32};
  convertWords_ = kFromWords[DepthIndexOf(outputDepth)];
  return kImageOk;
}

void ImageFilter::FillRemap() {
  convertPalette = palette ? *palette : PaletteRecord{};
  for (size_t i = 0; i < 256; ++i) {
    const PaletteEntry e = i < convertPalette.count ? convertPalette.entries[i] : PaletteEntry{};
    const Colour colour = e.ToColour();
    switch (outputDepth) {
      case 8:
        paletteRemap[i] = SearchOutput(e.red, e.green, e.blue);
        break;
      case 15:
        (*indexPixels_)[i] = PixelFormat<15>::FromColour(colour);
        break;
      case 16:
        (*indexPixels_)[i] = PixelFormat<16>::FromColour(colour);
        break;
      default:
        (*indexPixels_)[i] = SwapRedBlue(colour);
        break;
    }
  }
}

void ImageFilter::PaletteReplaced() {
  paletteChanged = true;
  if (depth != 8 || !palette || ownPalette_) return;
  if (outputDepth == 8) mustConvert = !SameColours(*palette, outputPalette);
  if (mustConvert) PrepareConversion();  // all it may need beyond its first call is the table, which is small
}

void ImageFilter::ConvertRgb(const uint8_t* rgb, uint8_t* target, int32_t pixels) {
  if (outputDepth == 32) {
    kernels::RgbToWords(rgb, target, pixels);
    return;
  }
  uint8_t words[kStep * 4];
  for (; pixels > 0; pixels -= kStep, rgb += kStep * 3, target += kStep * outputBytesPerPixel) {
    const int32_t count = std::min(pixels, kStep);
    kernels::RgbToWords(rgb, words, count);
    convertWords_(*this, words, target, count);
  }
}

}  // namespace vl
