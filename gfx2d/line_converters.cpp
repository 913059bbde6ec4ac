#include "gfx2d/line_converters.h"

#include "gfx2d/pixel_format.h"

namespace vl {

struct Converters {
  // From an index: the table holds the pixels.
  template <int To>
  static void FromIndex(LineConversion& c, const uint8_t* source, uint8_t* target, int pixels) {
    for (int i = 0; i < pixels; ++i) PixelFormat<To>::Store(target + i * PixelFormat<To>::kBytes, c.pixels_[source[i]]);
  }
  template <int From>
  static void ToIndex(LineConversion& c, const uint8_t* source, uint8_t* target, int pixels) {
    for (int i = 0; i < pixels; ++i) {
      const uint32_t s = PixelFormat<From>::Load(source + i * PixelFormat<From>::kBytes);
      target[i] =
          s == 0 ? uint8_t{0} : uint8_t(KeepVisible(c.NearestOf(PixelFormat<From>::ToColour(s) & kColourMask), s));
    }
  }
  template <int From, int To>
  static void Through(LineConversion&, const uint8_t* source, uint8_t* target, int pixels) {
    for (int i = 0; i < pixels; ++i) {
      const uint32_t s = PixelFormat<From>::Load(source + i * PixelFormat<From>::kBytes);
      PixelFormat<To>::Store(target + i * PixelFormat<To>::kBytes, KeepVisible(Pixel<From, To>(s), s));
    }
  }
  template <int From, int To>
  static uint32_t Pixel(uint32_t s) {
    if constexpr (From == 15 && To == 16)
      return (s & 0x1F) | (s & 0x7FE0) << 1;
    else if constexpr (From == 16 && To == 15)
      return (s & 0x1F) | (s >> 1 & 0x7FE0);
    else if constexpr (From == 15)
      return (s & 0x7C00) << 9 | (s & 0x3E0) << 6 | (s & 0x1F) << 3;
    else if constexpr (From == 16)
      return (s & 0xF800) << 8 | (s & 0x7E0) << 5 | (s & 0x1F) << 3;
    else if constexpr (To == 15)
      return (s >> 9 & 0x7C00) | (s >> 6 & 0x3E0) | (s >> 3 & 0x1F);
    else if constexpr (To == 16)
      return (s >> 8 & 0xF800) | (s >> 5 & 0x7E0) | (s >> 3 & 0x1F);
    else
      return s & 0xFFFFFF;
  }
};

LineConversion::LineConversion(int sourceIndex, cPalette* sourcePalette, int targetIndex, cPalette* targetPalette)
    : target_(targetPalette) {
  using C = Converters;
  static constexpr Line kLines[5][5] = {
      {nullptr, C::FromIndex<15>, C::FromIndex<16>, C::FromIndex<24>, C::FromIndex<32>},
      {C::ToIndex<15>, nullptr, C::Through<15, 16>, C::Through<15, 24>, C::Through<15, 32>},
      {C::ToIndex<16>, C::Through<16, 15>, nullptr, C::Through<16, 24>, C::Through<16, 32>},
      {C::ToIndex<24>, C::Through<24, 15>, C::Through<24, 16>, nullptr, C::Through<24, 32>},
      {C::ToIndex<32>, C::Through<32, 15>, C::Through<32, 16>, C::Through<32, 24>, nullptr},
  };
  line_ = kLines[sourceIndex][targetIndex];
  if (sourceIndex != 0) return;
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
