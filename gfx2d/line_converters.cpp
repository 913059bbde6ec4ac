#include "gfx2d/line_converters.h"

#include "gfx2d/pixel_format.h"

namespace vl {

struct Converters {
  // From an index: the table holds the pixels.
  template <int To>
  static void FromIndex(LineConversion& c, const uint8_t* source, uint8_t* target, int pixels) {
    const uint32_t* const table = c.pixels_.data();
    int i = 0;
    if constexpr (To == 24) {
      // All but the last in one access, whose fourth byte the next one overwrites.
      for (; i + 1 < pixels; ++i) StoreWord(target + i * 3, table[source[i]]);
    }
    if constexpr (PixelFormat<To>::kBytes == 2) {
      for (; i + 4 <= pixels; i += 4) {
        const uint8_t* s = source + i;
        StoreWord(target + i * 2, uint64_t{table[s[0]]} | uint64_t{table[s[1]]} << 16 | uint64_t{table[s[2]]} << 32 |
                                      uint64_t{table[s[3]]} << 48);
      }
    }
    for (; i < pixels; ++i) PixelFormat<To>::Store(target + i * PixelFormat<To>::kBytes, table[source[i]]);
  }
  template <int From>
  static void ToIndex(LineConversion& c, const uint8_t* source, uint8_t* target, int pixels) {
    for (int i = 0; i < pixels; ++i) {
      const uint32_t s = PixelFormat<From>::Load(source + i * PixelFormat<From>::kBytes);
      target[i] =
          s == 0 ? uint8_t{0} : uint8_t(KeepVisible(c.NearestOf(PixelFormat<From>::ToColour(s) & kColourMask), s));
    }
  }
};

LineConversion::LineConversion(int sourceIndex, cPalette* sourcePalette, int targetIndex, cPalette* targetPalette,
                               const RowKernels& kernels)
    : target_(targetPalette) {
  using C = Converters;
  if (sourceIndex != 0 && targetIndex != 0) {
    kernel_ = kernels.convert[size_t(sourceIndex)][size_t(targetIndex)];
    return;
  }
  static constexpr Line kFromIndex[5] = {nullptr, C::FromIndex<15>, C::FromIndex<16>, C::FromIndex<24>,
                                         C::FromIndex<32>};
  static constexpr Line kToIndex[5] = {nullptr, C::ToIndex<15>, C::ToIndex<16>, C::ToIndex<24>, C::ToIndex<32>};
  if (targetIndex == 0) {
    line_ = kToIndex[sourceIndex];
    return;
  }
  line_ = kFromIndex[targetIndex];
  for (uint32_t i = 1; i < 256; ++i) {
    const Colour colour = sourcePalette ? sourcePalette->ColourAt(int(i)) : 0;
    uint32_t pixel = SwapRedBlue(colour);
    if (targetIndex == 1) pixel = Narrow15(colour);
    if (targetIndex == 2) pixel = Narrow16(colour);
    if (targetIndex == 4 && sourcePalette && i < sourcePalette->count) {
      pixel |= uint32_t{sourcePalette->entries[i].flag} << 24;
    }
    pixels_[i] = KeepVisible(pixel, i);
  }
}

void LineConversion::Convert(const uint8_t* source, uint8_t* target, int pixels) {
  if (kernel_) return kernel_(source, target, pixels);
  line_(*this, source, target, pixels);
}

uint32_t LineConversion::NearestOf(Colour colour) {
  if (!target_) return 0;
  if (target_->HasInverseMap()) return uint32_t(target_->NearestIndex(colour));
  Cached& cached = cache_[colour * 0x9E3779B1u >> (32 - kCacheBits)];
  // The empty cache holds colour 0, which the search gives without a walk.
  if (cached.colour != colour || colour == 0) cached = {colour, uint8_t(target_->SearchNearest(colour))};
  return cached.index;
}

}  // namespace vl
