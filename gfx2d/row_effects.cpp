#include "gfx2d/row_effects.h"

#include <algorithm>
#include <array>

#include "gfx2d/pixel_format.h"
#include "gfx2d/pixel_ops.h"

namespace vl {
namespace {

// (s * (128 - c) + d * c) >> 7 in 16 bits, which hold it: 255 * 128.
inline uint16_t Mix(uint16_t s, uint16_t d, uint16_t keep, uint16_t c) {
  return uint16_t(uint16_t(s * keep + d * c) >> 7);
}

// The bit effects are the same for every depth: they work on the bytes of the pixels.
template <int Bytes>
void InvertRow(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments&) {
  for (int i = 0, n = pixels * Bytes; i < n; ++i) destination[i] = uint8_t(~source[i]);
}
template <int Bytes>
void XorRow(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments&) {
  for (int i = 0, n = pixels * Bytes; i < n; ++i) destination[i] = uint8_t(destination[i] ^ source[i]);
}
template <int Bytes>
void AndRow(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments&) {
  for (int i = 0, n = pixels * Bytes; i < n; ++i) destination[i] = uint8_t(destination[i] & source[i]);
}
template <int Bytes>
void OrRow(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments&) {
  for (int i = 0, n = pixels * Bytes; i < n; ++i) destination[i] = uint8_t(destination[i] | source[i]);
}
template <int Bytes>
void AndNotRow(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments&) {
  for (int i = 0, n = pixels * Bytes; i < n; ++i) destination[i] = uint8_t(destination[i] & ~source[i]);
}

inline uint8_t AddByte(uint8_t a, uint8_t b) {
  const uint8_t sum = uint8_t(a + b);
  return sum < a ? uint8_t{255} : sum;
}

// Depths 8 (the index byte) and 24.
template <int Bytes>
void AddBytesRow(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments&) {
  for (int i = 0, n = pixels * Bytes; i < n; ++i) destination[i] = AddByte(destination[i], source[i]);
}

void BlendBytes(const uint8_t* source, uint8_t* destination, int bytes, uint32_t weight) {
  const uint16_t c = uint16_t(weight);
  const uint16_t keep = uint16_t(128 - weight);
  for (int i = 0; i < bytes; ++i) destination[i] = uint8_t(Mix(source[i], destination[i], keep, c));
}

void BlendRow24(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  BlendBytes(source, destination, pixels * 3, a.weight);
}

void BlendColourRow24(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  for (int i = 0; i < pixels; ++i) {
    uint8_t* d = destination + i * 3;
    if ((d[0] | d[1] | d[2]) == 0) PixelFormat<24>::Store(d, a.pixel);
  }
  BlendBytes(source, destination, pixels * 3, a.weight);
}

// The channel effects of depth 32 leave the fourth byte of the destination alone: there the weights are those of
// the destination alone. They work through blocks of four pixels, which the compiler turns into vectors.
constexpr int kBlock = 16;

template <class Mixer>
void ChannelRow32(const uint8_t* source, uint8_t* destination, int pixels, Mixer&& mix) {
  const int bytes = pixels * 4;
  int i = 0;
  for (; i + kBlock <= bytes; i += kBlock) {
    for (int k = 0; k < kBlock; ++k) destination[i + k] = mix(k, source[i + k], destination[i + k]);
  }
  for (; i < bytes; ++i) destination[i] = mix(i & 3, source[i], destination[i]);
}

void BlendRow32(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  std::array<uint16_t, kBlock> ofSource;
  std::array<uint16_t, kBlock> ofDestination;
  for (size_t k = 0; k < kBlock; ++k) {
    const bool isChannel = k % 4 != 3;
    ofDestination[k] = uint16_t(isChannel ? a.weight : 128);
    ofSource[k] = uint16_t(128 - ofDestination[k]);
  }
  ChannelRow32(source, destination, pixels, [&](int k, uint8_t s, uint8_t d) {
    return uint8_t(Mix(s, d, ofSource[size_t(k)], ofDestination[size_t(k)]));
  });
}

void BlendColourRow32(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  for (int i = 0; i < pixels; ++i) {
    const uint32_t d = LoadWord<uint32_t>(destination + i * 4);
    StoreWord(destination + i * 4, d == 0 ? a.pixel : d);
  }
  BlendRow32(source, destination, pixels, a);
}

void AddRow32(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments&) {
  // Four bytes at once: the sum of the low seven bits of each, then the top bits, then what overflowed is filled.
  constexpr uint32_t kTop = 0x80808080;
  for (int i = 0; i < pixels; ++i) {
    const uint32_t s = LoadWord<uint32_t>(source + i * 4) & 0xFFFFFF;
    const uint32_t d = LoadWord<uint32_t>(destination + i * 4);
    const uint32_t low = (s & ~kTop) + (d & ~kTop);
    const uint32_t over = (((s & d) | ((s | d) & low)) & kTop) >> 7;
    StoreWord(destination + i * 4, (low ^ ((s ^ d) & kTop)) | ((over << 8) - over));
  }
}

// Channels of depths 15 and 16, widened to 8 bits and back, in 16-bit arithmetic.
template <int Depth>
struct Channels {
  static constexpr int kRedShift = Depth == 15 ? 7 : 8;
  static constexpr int kGreenShift = Depth == 15 ? 2 : 3;
  static constexpr uint16_t kGreenMask = Depth == 15 ? 0xF8 : 0xFC;
  static uint16_t Red(uint16_t p) { return uint16_t(p >> kRedShift & 0xF8); }
  static uint16_t Green(uint16_t p) { return uint16_t(p >> kGreenShift & kGreenMask); }
  static uint16_t Blue(uint16_t p) { return uint16_t(p << 3 & 0xF8); }
  static uint16_t Join(uint16_t r, uint16_t g, uint16_t b) {
    return uint16_t((r & 0xF8) << kRedShift | (g & kGreenMask) << kGreenShift | (b & 0xF8) >> 3);
  }
};

template <int Depth>
void BlendRow16(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  using C = Channels<Depth>;
  const uint16_t c = uint16_t(a.weight);
  const uint16_t keep = uint16_t(128 - a.weight);
  for (int i = 0; i < pixels; ++i) {
    const uint16_t s = LoadWord<uint16_t>(source + i * 2);
    const uint16_t d = LoadWord<uint16_t>(destination + i * 2);
    StoreWord(destination + i * 2, C::Join(Mix(C::Red(s), C::Red(d), keep, c), Mix(C::Green(s), C::Green(d), keep, c),
                                           Mix(C::Blue(s), C::Blue(d), keep, c)));
  }
}

template <int Depth>
void BlendColourRow16(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  using C = Channels<Depth>;
  const uint16_t c = uint16_t(a.weight);
  const uint16_t keep = uint16_t(128 - a.weight);
  // The colour stands in with its full 8 bits a channel.
  const uint16_t red = uint16_t(RedOf(a.colour));
  const uint16_t green = uint16_t(GreenOf(a.colour));
  const uint16_t blue = uint16_t(BlueOf(a.colour));
  for (int i = 0; i < pixels; ++i) {
    const uint16_t s = LoadWord<uint16_t>(source + i * 2);
    const uint16_t d = LoadWord<uint16_t>(destination + i * 2);
    const uint16_t dr = d == 0 ? red : C::Red(d);
    const uint16_t dg = d == 0 ? green : C::Green(d);
    const uint16_t db = d == 0 ? blue : C::Blue(d);
    StoreWord(destination + i * 2,
              C::Join(Mix(C::Red(s), dr, keep, c), Mix(C::Green(s), dg, keep, c), Mix(C::Blue(s), db, keep, c)));
  }
}

template <int Depth>
void AddRow16(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments&) {
  using C = Channels<Depth>;
  const auto add = [](uint16_t x, uint16_t y) { return uint16_t(std::min<uint16_t>(uint16_t(x + y), 255)); };
  for (int i = 0; i < pixels; ++i) {
    const uint16_t s = LoadWord<uint16_t>(source + i * 2);
    const uint16_t d = LoadWord<uint16_t>(destination + i * 2);
    StoreWord(destination + i * 2,
              C::Join(add(C::Red(s), C::Red(d)), add(C::Green(s), C::Green(d)), add(C::Blue(s), C::Blue(d))));
  }
}

Colour MixColours(Colour s, Colour d, uint32_t weight) {
  const uint16_t c = uint16_t(weight);
  const uint16_t keep = uint16_t(128 - weight);
  return MakeColour(Mix(uint16_t(RedOf(s)), uint16_t(RedOf(d)), keep, c),
                    Mix(uint16_t(GreenOf(s)), uint16_t(GreenOf(d)), keep, c),
                    Mix(uint16_t(BlueOf(s)), uint16_t(BlueOf(d)), keep, c));
}

void BlendRow8(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  for (int i = 0; i < pixels; ++i) {
    const Colour mixed = MixColours(a.palette->ColourAt(source[i]), a.palette->ColourAt(destination[i]), a.weight);
    destination[i] = uint8_t(a.palette->NearestIndex(mixed));
  }
}

void BlendColourRow8(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  for (int i = 0; i < pixels; ++i) {
    const Colour d = destination[i] == 0 ? a.colour : a.palette->ColourAt(destination[i]);
    destination[i] = uint8_t(a.palette->NearestIndex(MixColours(a.palette->ColourAt(source[i]), d, a.weight)));
  }
}

using Effects = std::array<RowEffect, 10>;

template <int Bytes>
constexpr Effects MakeEffects(RowEffect blend, RowEffect blendColour, RowEffect add) {
  return {nullptr,      blend,       InvertRow<Bytes>, XorRow<Bytes>,    AndRow<Bytes>,
          OrRow<Bytes>, blendColour, nullptr,          AndNotRow<Bytes>, add};
}

constexpr std::array<Effects, 5> kEffects = {
    MakeEffects<1>(BlendRow8, BlendColourRow8, AddBytesRow<1>),
    MakeEffects<2>(BlendRow16<15>, BlendColourRow16<15>, AddRow16<15>),
    MakeEffects<2>(BlendRow16<16>, BlendColourRow16<16>, AddRow16<16>),
    MakeEffects<3>(BlendRow24, BlendColourRow24, AddBytesRow<3>),
    MakeEffects<4>(BlendRow32, BlendColourRow32, AddRow32),
};

}  // namespace

RowEffect RowEffectOf(int depthIndex, int effect) { return kEffects[size_t(depthIndex)][size_t(effect)]; }

EffectArguments MakeEffectArguments(int effect, uint32_t param, cPalette* palette) {
  EffectArguments a;
  a.weight = std::min<uint32_t>(effect == kEffectBlendColour ? param >> 24 : param, 128);
  a.colour = param & kColourMask;
  a.pixel = SwapRedBlue(a.colour);
  a.palette = palette;
  return a;
}

}  // namespace vl
