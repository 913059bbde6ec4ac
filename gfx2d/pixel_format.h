// PixelFormat: how one pixel of each depth lies in memory, and what it is as a colour.
//
// Channels widen by shifting left with zero fill and narrow by keeping their high bits. Pixel value 0 means
// transparent, so a colour that is not 0 never narrows to pixel 0: it becomes pixel 1.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "gfx2d/colour.h"

namespace vl {

static_assert(std::endian::native == std::endian::little, "pixels are read as little-endian words");

// Unaligned word access; wrapped memory may start anywhere.
template <class Word>
inline Word LoadWord(const uint8_t* p) {
  Word w;
  std::memcpy(&w, p, sizeof(w));
  return w;
}
template <class Word>
inline void StoreWord(uint8_t* p, Word w) {
  std::memcpy(p, &w, sizeof(w));
}

// The pixel `result` that the pixel `source` narrowed to, kept apart from transparent.
constexpr uint32_t KeepVisible(uint32_t result, uint32_t source) {
  return result | uint32_t(result == 0 && source != 0);
}

constexpr uint32_t Narrow15(Colour c) { return (c & 0xF8) << 7 | (c >> 6 & 0x3E0) | (c >> 19 & 0x1F); }
constexpr uint32_t Narrow16(Colour c) { return (c & 0xF8) << 8 | (c >> 5 & 0x7E0) | (c >> 19 & 0x1F); }
constexpr Colour Widen15(uint32_t p) { return (p >> 7 & 0xF8) | (p & 0x3E0) << 6 | (p & 0x1F) << 19; }
constexpr Colour Widen16(uint32_t p) { return (p >> 8 & 0xF8) | (p & 0x7E0) << 5 | (p & 0x1F) << 19; }

// Depth 8 has no colours of its own; its pixels are indices of a palette, which the caller looks up.
template <int Depth>
struct PixelFormat;

template <>
struct PixelFormat<8> {
  using Word = uint8_t;
  static constexpr int kBytes = 1;
  static uint32_t Load(const uint8_t* p) { return *p; }
  static void Store(uint8_t* p, uint32_t w) { *p = uint8_t(w); }
};

template <>
struct PixelFormat<15> {
  using Word = uint16_t;
  static constexpr int kBytes = 2;
  static uint32_t Load(const uint8_t* p) { return LoadWord<uint16_t>(p); }
  static void Store(uint8_t* p, uint32_t w) { StoreWord(p, uint16_t(w)); }
  static Colour ToColour(uint32_t w) { return Widen15(w); }
  static uint32_t FromColour(Colour c) { return KeepVisible(Narrow15(c), c & kColourMask); }
};

template <>
struct PixelFormat<16> {
  using Word = uint16_t;
  static constexpr int kBytes = 2;
  static uint32_t Load(const uint8_t* p) { return LoadWord<uint16_t>(p); }
  static void Store(uint8_t* p, uint32_t w) { StoreWord(p, uint16_t(w)); }
  static Colour ToColour(uint32_t w) { return Widen16(w); }
  static uint32_t FromColour(Colour c) { return KeepVisible(Narrow16(c), c & kColourMask); }
};

template <>
struct PixelFormat<24> {
  static constexpr int kBytes = 3;
  static uint32_t Load(const uint8_t* p) { return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16; }
  static void Store(uint8_t* p, uint32_t w) {
    p[0] = uint8_t(w);
    p[1] = uint8_t(w >> 8);
    p[2] = uint8_t(w >> 16);
  }
  static Colour ToColour(uint32_t w) { return SwapRedBlue(w); }
  static uint32_t FromColour(Colour c) { return SwapRedBlue(c); }
};

template <>
struct PixelFormat<32> {
  using Word = uint32_t;
  static constexpr int kBytes = 4;
  static uint32_t Load(const uint8_t* p) { return LoadWord<uint32_t>(p); }
  static void Store(uint8_t* p, uint32_t w) { StoreWord(p, w); }
  static Colour ToColour(uint32_t w) { return SwapRedBlue(w); }
  static uint32_t FromColour(Colour c) { return SwapRedBlue(c); }
};

// Every depth by bits a pixel, 0 to 32.
constexpr int DepthIndexOf(int bits) { return bits <= 8 ? 0 : bits <= 15 ? 1 : bits <= 16 ? 2 : bits <= 24 ? 3 : 4; }
inline constexpr int kDepths[5] = {8, 15, 16, 24, 32};

// Bytes of a line of `width` pixels, a multiple of 4. Width at most limits::kMaxSurfaceSide.
constexpr int LineBytes(int depth, int width) {
  const int bits = depth == 15 ? 16 : depth;
  return ((bits * width + 31) >> 3) & ~3;
}

}  // namespace vl
