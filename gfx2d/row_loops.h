// The loops behind RowKernels, as plain code that compilers turn into vectors.
//
// Each table of kernels includes this once, after setting the processor it compiles for; all names are local to the
// including file. Nothing else may include it.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "gfx2d/pixel_format.h"
#include "gfx2d/row_kernels.h"

namespace vl {
namespace {

// Bytes that hold whole vectors of every width and whole pixels of 3 bytes.
constexpr int kTriples = 96;
// Pixels that a loop of two passes works on at a time.
constexpr int kBlock = 256;

// (s * (128 - c) + d * c) >> 7, as s + ((d - s) * c >> 7), which 16 bits hold.
inline uint8_t Mix(uint8_t s, uint8_t d, int16_t c) {
  const int16_t apart = int16_t(int16_t(d) - int16_t(s));
  return uint8_t(int16_t(s) + int16_t(int16_t(apart * c) >> 7));
}

// Which of the neighbours of a byte belong to its pixel of 3 bytes.
struct TripleMasks {
  alignas(32) std::array<uint8_t, kTriples> before1{};
  alignas(32) std::array<uint8_t, kTriples> before2{};
  alignas(32) std::array<uint8_t, kTriples> after1{};
  alignas(32) std::array<uint8_t, kTriples> after2{};
  constexpr TripleMasks() {
    for (size_t i = 0; i < kTriples; ++i) {
      before1[i] = i % 3 >= 1 ? 0xFF : 0;
      before2[i] = i % 3 == 2 ? 0xFF : 0;
      after1[i] = i % 3 <= 1 ? 0xFF : 0;
      after2[i] = i % 3 == 0 ? 0xFF : 0;
    }
  }
};
constexpr TripleMasks kMasks;

template <class Word>
void KeyedWords(const uint8_t* key, const uint8_t* source, uint8_t* destination, int pixels) {
  for (int i = 0; i < pixels; ++i) {
    const size_t at = size_t(i) * sizeof(Word);
    const Word k = LoadWord<Word>(key + at);
    const Word s = LoadWord<Word>(source + at);
    const Word d = LoadWord<Word>(destination + at);
    StoreWord<Word>(destination + at, k != 0 ? s : d);
  }
}

void KeyedTriples(const uint8_t* key, const uint8_t* source, uint8_t* destination, int pixels) {
  const int bytes = pixels * 3;
  const auto one = [&](int i) {
    if ((key[i] | key[i + 1] | key[i + 2]) != 0) std::memcpy(destination + i, source + i, 3);
  };
  int i = 0;
  // The blocks read two bytes on either side.
  if (pixels > 0) one(0), i = 3;
  for (; i + kTriples + 2 <= bytes; i += kTriples) {
    const uint8_t* k = key + i;
    const uint8_t* s = source + i;
    uint8_t* d = destination + i;
    std::array<uint8_t, kTriples> mixed;
    for (int j = 0; j < kTriples; ++j) {
      const size_t m = size_t(j);
      const uint8_t pixel = uint8_t(k[j] | (k[j - 1] & kMasks.before1[m]) | (k[j - 2] & kMasks.before2[m]) |
                                    (k[j + 1] & kMasks.after1[m]) | (k[j + 2] & kMasks.after2[m]));
      mixed[m] = pixel != 0 ? s[j] : d[j];
    }
    std::memcpy(d, mixed.data(), kTriples);
  }
  for (; i < bytes; i += 3) one(i);
}

template <class Word>
void FillWords(uint8_t* row, uint32_t pixel, int64_t pixels) {
  for (int64_t i = 0; i < pixels; ++i) StoreWord<Word>(row + i * int64_t{sizeof(Word)}, Word(pixel));
}

void FillBytes(uint8_t* row, uint32_t pixel, int64_t pixels) { std::memset(row, int(pixel & 0xFF), size_t(pixels)); }

// The pixel over and over.
inline std::array<uint8_t, kTriples> Pattern(uint32_t pixel) {
  std::array<uint8_t, kTriples> pattern;
  for (size_t i = 0; i < kTriples; i += 3) PixelFormat<24>::Store(&pattern[i], pixel);
  return pattern;
}

void FillTriples(uint8_t* row, uint32_t pixel, int64_t pixels) {
  const std::array<uint8_t, kTriples> pattern = Pattern(pixel);
  int64_t i = 0;
  const int64_t bytes = pixels * 3;
  for (; i + kTriples <= bytes; i += kTriples) std::memcpy(row + i, pattern.data(), kTriples);
  std::memcpy(row + i, pattern.data(), size_t(bytes - i));
}

template <class Word>
void ReplaceWords(uint8_t* row, int pixels, uint32_t from, uint32_t to) {
  const Word old = Word(from);
  const Word replacement = Word(to);
  for (int i = 0; i < pixels; ++i) {
    uint8_t* at = row + size_t(i) * sizeof(Word);
    const Word pixel = LoadWord<Word>(at);
    StoreWord<Word>(at, pixel == old ? replacement : pixel);
  }
}

void ReplaceTriples(uint8_t* row, int pixels, uint32_t from, uint32_t to) {
  const std::array<uint8_t, kTriples> old = Pattern(from);
  std::array<uint8_t, kTriples> key;
  std::array<uint8_t, kTriples> result;
  for (int i = 0; i < pixels; i += kTriples / 3) {
    const int n = std::min(kTriples / 3, pixels - i);
    uint8_t* p = row + size_t(i) * 3;
    for (size_t k = 0; k < size_t(n) * 3; ++k) key[k] = uint8_t(p[k] ^ old[k]);
    FillTriples(result.data(), to, n);
    KeyedTriples(key.data(), p, result.data(), n);
    std::memcpy(p, result.data(), size_t(n) * 3);
  }
}

template <class Word>
void TwiceWords(const uint8_t* source, uint8_t* target, int pixels) {
  for (int i = 0; i < pixels; ++i) {
    const Word pixel = LoadWord<Word>(source + size_t(i) * sizeof(Word));
    StoreWord<Word>(target + size_t(i) * 2 * sizeof(Word), pixel);
    StoreWord<Word>(target + (size_t(i) * 2 + 1) * sizeof(Word), pixel);
  }
}
void TwiceTriples(const uint8_t* source, uint8_t* target, int pixels) {
  // Each store but the last runs a byte into the next pixel's.
  for (int i = 0; i + 1 < pixels; ++i, source += 3, target += 6) {
    const uint64_t pixel = PixelFormat<24>::Load(source);
    StoreWord<uint64_t>(target, pixel | pixel << 24);
  }
  for (int k = 0; pixels > 0 && k < 2; ++k) std::memcpy(target + k * 3, source, 3);
}
template <class Word>
void HalfWords(const uint8_t* source, uint8_t* target, int pixels) {
  for (int i = 0; i < pixels; ++i) {
    StoreWord<Word>(target + size_t(i) * sizeof(Word), LoadWord<Word>(source + size_t(i) * 2 * sizeof(Word)));
  }
}
void HalfTriples(const uint8_t* source, uint8_t* target, int pixels) {
  for (int i = 0; i < pixels; ++i) std::memcpy(target + size_t(i) * 3, source + size_t(i) * 6, 3);
}

template <class Word>
void PickWords(const uint8_t* source, const int32_t* offsets, uint8_t* target, int pixels) {
  for (int i = 0; i < pixels; ++i) {
    StoreWord<Word>(target + size_t(i) * sizeof(Word), LoadWord<Word>(source + offsets[i]));
  }
}
void PickTriples(const uint8_t* source, const int32_t* offsets, uint8_t* target, int pixels) {
  const int32_t last = pixels > 0 ? offsets[pixels - 1] : 0;
  int i = 0;
  // Whole words while a pixel follows on both sides; the next one overwrites the fourth byte.
  for (; i + 1 < pixels && offsets[i] < last; ++i) {
    StoreWord(target + size_t(i) * 3, LoadWord<uint32_t>(source + offsets[i]));
  }
  for (; i < pixels; ++i) std::memcpy(target + size_t(i) * 3, source + offsets[i], 3);
}

template <int Bytes>
void TransposeRows(const uint8_t* source, ptrdiff_t sourcePitch, uint8_t* target, ptrdiff_t targetPitch, int pixels) {
  for (int i = 0; i < pixels; ++i, source += sourcePitch, target += Bytes) {
    for (ptrdiff_t row = 0; row < 8; ++row) std::memcpy(target + row * targetPitch, source + row * Bytes, Bytes);
  }
}

// --- Effects. Those on bits work on the bytes of every depth. ---

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

void MixBytes(const uint8_t* source, uint8_t* destination, int bytes, uint32_t weight) {
  const int16_t c = int16_t(weight);
  for (int i = 0; i < bytes; ++i) destination[i] = Mix(source[i], destination[i], c);
}

void BlendRow24(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  MixBytes(source, destination, pixels * 3, a.weight);
}

void BlendColourRow24(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  std::array<uint8_t, kBlock * 3> block;
  for (int i = 0; i < pixels; i += kBlock) {
    const int n = std::min(kBlock, pixels - i);
    uint8_t* d = destination + size_t(i) * 3;
    FillTriples(block.data(), a.pixel, n);
    KeyedTriples(d, d, block.data(), n);
    MixBytes(source + size_t(i) * 3, block.data(), n * 3, a.weight);
    std::memcpy(d, block.data(), size_t(n) * 3);
  }
}

// The fourth byte of depth 32 stays the destination's in the effects on channels: its weight is all the
// destination's.
void MixWords(const uint8_t* source, uint8_t* destination, int pixels, uint32_t weight) {
  constexpr int kBytes = 32;
  std::array<int16_t, kBytes> weights;
  for (size_t k = 0; k < kBytes; ++k) weights[k] = int16_t(k % 4 != 3 ? weight : 128);
  const int bytes = pixels * 4;
  int i = 0;
  for (; i + kBytes <= bytes; i += kBytes) {
    std::array<uint8_t, kBytes> mixed;
    for (int k = 0; k < kBytes; ++k) mixed[size_t(k)] = Mix(source[i + k], destination[i + k], weights[size_t(k)]);
    std::memcpy(destination + i, mixed.data(), kBytes);
  }
  for (; i < bytes; ++i) destination[i] = Mix(source[i], destination[i], weights[size_t(i) & 3]);
}

void BlendRow32(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  MixWords(source, destination, pixels, a.weight);
}

void BlendColourRow32(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  for (int first = 0; first < pixels; first += kBlock) {
    const int n = std::min(kBlock, pixels - first);
    uint8_t* d = destination + size_t(first) * 4;
    for (int i = 0; i < n; ++i) {
      const uint32_t pixel = LoadWord<uint32_t>(d + i * 4);
      StoreWord(d + i * 4, pixel == 0 ? a.pixel : pixel);
    }
    MixWords(source + size_t(first) * 4, d, n, a.weight);
  }
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
  static uint16_t Mix(uint16_t s, uint16_t d, uint16_t c) {
    return uint16_t(s + uint16_t(int16_t(uint16_t(d - s) * c) >> 7));
  }
};

template <int Depth>
void BlendRow16(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  using C = Channels<Depth>;
  const uint16_t c = uint16_t(a.weight);
  for (int i = 0; i < pixels; ++i) {
    const uint16_t s = LoadWord<uint16_t>(source + i * 2);
    const uint16_t d = LoadWord<uint16_t>(destination + i * 2);
    StoreWord(destination + i * 2, C::Join(C::Mix(C::Red(s), C::Red(d), c), C::Mix(C::Green(s), C::Green(d), c),
                                           C::Mix(C::Blue(s), C::Blue(d), c)));
  }
}

template <int Depth>
void BlendColourRow16(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  using C = Channels<Depth>;
  const uint16_t c = uint16_t(a.weight);
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
              C::Join(C::Mix(C::Red(s), dr, c), C::Mix(C::Green(s), dg, c), C::Mix(C::Blue(s), db, c)));
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

template <int Bytes>
constexpr std::array<RowEffect, 10> Effects(RowEffect blend, RowEffect blendColour, RowEffect add) {
  return {nullptr,      blend,       InvertRow<Bytes>, XorRow<Bytes>,    AndRow<Bytes>,
          OrRow<Bytes>, blendColour, nullptr,          AndNotRow<Bytes>, add};
}

// --- Conversions between depths that are made of channels. ---

template <int From, int To>
inline uint32_t ConvertPixel(uint32_t s) {
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

// Pixels of 3 bytes as words, and words as pixels of 3 bytes. All but the last are one access of 4 bytes.
inline void Spread(const uint8_t* source, uint32_t* words, int pixels) {
  for (int i = 0; i + 1 < pixels; ++i) words[i] = LoadWord<uint32_t>(source + size_t(i) * 3) & 0xFFFFFF;
  if (pixels > 0) words[pixels - 1] = PixelFormat<24>::Load(source + size_t(pixels - 1) * 3);
}
inline void Gather(const uint32_t* words, uint8_t* target, int pixels) {
  for (int i = 0; i + 1 < pixels; ++i) StoreWord(target + size_t(i) * 3, words[i]);
  if (pixels > 0) PixelFormat<24>::Store(target + size_t(pixels - 1) * 3, words[pixels - 1]);
}

// With KeepApart what narrows to 0 becomes 1.
template <int From, int To, bool KeepApart>
void ConvertRow(const uint8_t* source, uint8_t* target, int pixels) {
  constexpr int kFrom = PixelFormat<From>::kBytes;
  constexpr int kTo = PixelFormat<To>::kBytes;
  const auto convert = [](uint32_t s) {
    const uint32_t result = ConvertPixel<From, To>(s);
    return KeepApart ? KeepVisible(result, s) : result;
  };
  if constexpr (From != 24 && To != 24) {
    for (int i = 0; i < pixels; ++i) {
      PixelFormat<To>::Store(target + size_t(i) * kTo, convert(PixelFormat<From>::Load(source + size_t(i) * kFrom)));
    }
  } else {
    std::array<uint32_t, kBlock> words;
    for (int first = 0; first < pixels; first += kBlock) {
      const int n = std::min(kBlock, pixels - first);
      const uint8_t* s = source + size_t(first) * kFrom;
      uint8_t* t = target + size_t(first) * kTo;
      if constexpr (From == 24) {
        Spread(s, words.data(), n);
        for (int i = 0; i < n; ++i) PixelFormat<To>::Store(t + i * kTo, convert(words[size_t(i)]));
      } else {
        for (int i = 0; i < n; ++i) words[size_t(i)] = convert(PixelFormat<From>::Load(s + i * kFrom));
        Gather(words.data(), t, n);
      }
    }
  }
}

template <int From>
constexpr std::array<RowKernels::Line, 5> Conversions() {
  std::array<RowKernels::Line, 5> lines{};
  if constexpr (From != 15) lines[1] = ConvertRow<From, 15, true>;
  if constexpr (From != 16) lines[2] = ConvertRow<From, 16, true>;
  if constexpr (From != 24) lines[3] = ConvertRow<From, 24, true>;
  if constexpr (From != 32) lines[4] = ConvertRow<From, 32, true>;
  return lines;
}

// --- Filters. ---

void FindEdges(const uint32_t* above, const uint32_t* row, const uint32_t* below, uint8_t* out, int pixels) {
  for (int i = 0; i < pixels; ++i) {
    const bool isEdge = (row[i] == 0) & ((above[i] | below[i]) != 0) & ((row[i - 1] | row[i + 1]) != 0);
    out[i] = uint8_t(isEdge);
  }
}

// Weights are 16.16 and add up to 1 at most, so 32 bits hold the sums.
inline uint32_t ToChannel(int32_t sum) { return uint32_t(std::min(sum + 0x8000, 0xFF0000)) >> 16; }

void FilterAlong(const uint32_t* row, const FilterTaps* taps, const int32_t* weights, uint32_t* out, int pixels) {
  for (int i = 0; i < pixels; ++i) {
    const uint32_t* s = row + taps[i].first;
    const int32_t* w = weights + taps[i].weights;
    std::array<int32_t, 4> sum{};
    for (int k = 0; k < taps[i].count; ++k) {
      std::array<uint8_t, 4> channel;
      std::memcpy(channel.data(), s + k, 4);
      for (size_t c = 0; c < 4; ++c) sum[c] += w[k] * channel[c];
    }
    out[i] = ToChannel(sum[0]) | ToChannel(sum[1]) << 8 | ToChannel(sum[2]) << 16;
  }
}

void FilterAcross(const uint32_t* const* rows, const int32_t* weights, int count, uint32_t* out, int pixels) {
  constexpr int kAtOnce = 8;
  std::array<int32_t, kAtOnce * 4> sum;
  std::array<uint8_t, kAtOnce * 4> bytes;
  for (int i = 0; i < pixels; i += kAtOnce) {
    const size_t n = size_t(std::min(kAtOnce, pixels - i)) * 4;
    bytes.fill(0);
    sum.fill(0);
    for (int k = 0; k < count; ++k) {
      std::memcpy(bytes.data(), rows[k] + i, n);
      for (size_t b = 0; b < bytes.size(); ++b) sum[b] += weights[k] * bytes[b];
    }
    for (size_t b = 0; b < bytes.size(); ++b) bytes[b] = uint8_t(ToChannel(sum[b]));
    std::memcpy(out + i, bytes.data(), n);
  }
}

// --- Turns. ---

// To the nearest integer, halves to even, by letting the float's last bit be worth 1. For less than 2^22.
inline int32_t Rounded(float value) { return std::bit_cast<int32_t>(value + 12582912.0f) - 0x4B400000; }

template <bool Between>
void TurnPoints(TurnBlock& block, int columns) {
  constexpr size_t kRows = TurnBlock::kRows;
  std::array<float, kRows> x = block.x;
  std::array<float, kRows> y = block.y;
  std::array<int32_t, kRows> before{};
  std::array<int32_t, kRows> inside{};
  for (int column = 0; column < columns; ++column) {
    const size_t at = size_t(column) * kRows;
    for (size_t r = 0; r < kRows; ++r) {
      const int32_t ix = Between ? int32_t(x[r]) : Rounded(x[r]);
      const int32_t iy = Between ? int32_t(y[r]) : Rounded(y[r]);
      const bool isInside = (uint32_t(ix) < uint32_t(block.width)) & (uint32_t(iy) < uint32_t(block.height));
      // Outside the products may be anything.
      block.offset[at + r] =
          int32_t(uint32_t(iy) * uint32_t(block.pitch) + uint32_t(ix) * uint32_t(block.bytesPerPixel));
      inside[r] += isInside;
      before[r] += inside[r] == 0;
      if constexpr (Between) {
        block.partX[at + r] = x[r] - float(ix);
        block.partY[at + r] = y[r] - float(iy);
        block.neighbours[at + r] = int32_t(ix + 1 < block.width) | int32_t(iy + 1 < block.height) << 1;
      }
      x[r] += block.stepX;
      y[r] += block.stepY;
    }
  }
  block.x = x;
  block.y = y;
  block.before = before;
  block.inside = inside;
}

void MixSamples(const TurnSamples& s, uint32_t* out, int points) {
  for (int i = 0; i < points; ++i) {
    const size_t p = size_t(i);
    const float fx = s.partX[p];
    const float fy = s.partY[p];
    const float both = fx * fy;
    const float ofBelow = fy - both;
    const float ofNext = fx - both;
    const float ofHere = 1 - fy - ofNext;
    uint32_t mixed = 0;
    for (int shift = 0; shift < 24; shift += 8) {
      const auto channel = [shift](uint32_t word) { return float(int32_t(word >> shift & 0xFF)); };
      const float sum = both * channel(s.across[p]) + ofBelow * channel(s.below[p]) + ofNext * channel(s.next[p]) +
                        ofHere * channel(s.here[p]) + 0.5f;
      mixed |= uint32_t(int32_t(std::min(std::max(sum, 0.0f), 255.0f))) << shift;
    }
    out[i] = mixed;
  }
}

constexpr RowKernels kLoops = {
    .keyed = {nullptr, KeyedWords<uint8_t>, KeyedWords<uint16_t>, KeyedTriples, KeyedWords<uint32_t>},
    .fill = {nullptr, FillBytes, FillWords<uint16_t>, FillTriples, FillWords<uint32_t>},
    .replace = {nullptr, ReplaceWords<uint8_t>, ReplaceWords<uint16_t>, ReplaceTriples, ReplaceWords<uint32_t>},
    .twice = {nullptr, TwiceWords<uint8_t>, TwiceWords<uint16_t>, TwiceTriples, TwiceWords<uint32_t>},
    .half = {nullptr, HalfWords<uint8_t>, HalfWords<uint16_t>, HalfTriples, HalfWords<uint32_t>},
    .pick = {nullptr, PickWords<uint8_t>, PickWords<uint16_t>, PickTriples, PickWords<uint32_t>},
    .transpose = {nullptr, TransposeRows<1>, TransposeRows<2>, TransposeRows<3>, TransposeRows<4>},
    .effects = {Effects<1>(nullptr, nullptr, AddBytesRow<1>),
                Effects<2>(BlendRow16<15>, BlendColourRow16<15>, AddRow16<15>),
                Effects<2>(BlendRow16<16>, BlendColourRow16<16>, AddRow16<16>),
                Effects<3>(BlendRow24, BlendColourRow24, AddBytesRow<3>),
                Effects<4>(BlendRow32, BlendColourRow32, AddRow32)},
    .convert = {std::array<RowKernels::Line, 5>{}, Conversions<15>(), Conversions<16>(), Conversions<24>(),
                Conversions<32>()},
    .words = {nullptr, ConvertRow<15, 32, false>, ConvertRow<16, 32, false>, ConvertRow<24, 32, false>,
              ConvertRow<32, 32, false>},
    .edges = FindEdges,
    .filterAlong = FilterAlong,
    .filterAcross = FilterAcross,
    .turnNearest = TurnPoints<false>,
    .turnBetween = TurnPoints<true>,
    .mixSamples = MixSamples,
};

}  // namespace
}  // namespace vl
