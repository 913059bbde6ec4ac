// The same loops for processors with 32-byte vectors, and by hand the few that compilers make little of. Only what
// follows the pragma is compiled for them, and it is reached only when the processor says that it has them. Fused
// multiplication is left out: it would round otherwise.
#include "gfx2d/row_kernels.h"

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))

// What the loops call of these must be compiled for every processor.
#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "gfx2d/pixel_format.h"

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

#include "gfx2d/row_loops.h"

namespace vl {
namespace {

using Vector = __m256i;

inline Vector Load(const void* p) { return _mm256_loadu_si256(static_cast<const Vector*>(p)); }
inline void Store(void* p, Vector v) { _mm256_storeu_si256(static_cast<Vector*>(p), v); }

void WideKeyedTriples(const uint8_t* key, const uint8_t* source, uint8_t* destination, int pixels) {
  // A pixel alone in front, as the vectors read two bytes on either side.
  const int64_t bytes = int64_t{pixels} * 3;
  int64_t i = pixels > 0 ? 3 : 0;
  KeyedTriples(key, source, destination, std::min(pixels, 1));
  const Vector zero = _mm256_setzero_si256();
  const auto block = [&](int64_t first) {
    for (int64_t part = 0; part < kTriples; part += 32) {
      const uint8_t* k = key + first + part;
      const auto masked = [&](int at, const std::array<uint8_t, kTriples>& mask) {
        return _mm256_and_si256(Load(k + at), Load(mask.data() + part));
      };
      const Vector before = _mm256_or_si256(masked(-1, kMasks.before1), masked(-2, kMasks.before2));
      const Vector after = _mm256_or_si256(masked(1, kMasks.after1), masked(2, kMasks.after2));
      const Vector pixel = _mm256_or_si256(Load(k), _mm256_or_si256(before, after));
      uint8_t* d = destination + first + part;
      Store(d, _mm256_blendv_epi8(Load(source + first + part), Load(d), _mm256_cmpeq_epi8(pixel, zero)));
    }
  };
  for (; i + kTriples + 3 <= bytes; i += kTriples) block(i);
  // What is left but the last pixel is done with some of what was done before.
  if (i > kTriples) {
    block(bytes - kTriples - 3);
    i = bytes - 3;
  }
  KeyedTriples(key + i, source + i, destination + i, int((bytes - i) / 3));
}

void WideFillTriples(uint8_t* row, uint32_t pixel, int64_t pixels) {
  const int64_t bytes = pixels * 3;
  if (bytes < 8 * kTriples) return FillTriples(row, pixel, pixels);
  // Vectors start on their own bounds, and so somewhere inside a pixel.
  const std::array<uint8_t, kTriples> pattern = Pattern(pixel);
  const auto lead = int64_t(-reinterpret_cast<uintptr_t>(row) & 31);
  std::memcpy(row, pattern.data(), size_t(lead));
  std::array<uint8_t, kTriples> shifted;
  for (size_t i = 0; i < shifted.size(); ++i) shifted[i] = pattern[(i + size_t(lead)) % 3];
  const Vector a = Load(shifted.data());
  const Vector b = Load(shifted.data() + 32);
  const Vector c = Load(shifted.data() + 64);
  int64_t i = lead;
  for (; i + kTriples <= bytes; i += kTriples) {
    Store(row + i, a);
    Store(row + i + 32, b);
    Store(row + i + 64, c);
  }
  std::memcpy(row + i, shifted.data(), size_t(bytes - i));
}

template <class Word>
void WideFillWords(uint8_t* row, uint32_t pixel, int64_t pixels) {
  constexpr int64_t kSize = sizeof(Word);
  constexpr int64_t kAtOnce = 4 * 32 / kSize;
  const auto from = reinterpret_cast<uintptr_t>(row);
  if (pixels < 2 * kAtOnce || from % sizeof(Word) != 0) return FillWords<Word>(row, pixel, pixels);
  const auto lead = int64_t(-from & 31) / kSize;
  FillWords<Word>(row, pixel, lead);
  const Vector v = kSize == 2 ? _mm256_set1_epi16(int16_t(pixel)) : _mm256_set1_epi32(int32_t(pixel));
  int64_t i = lead;
  for (; i + kAtOnce <= pixels; i += kAtOnce) {
    for (int64_t part = 0; part < 128; part += 32) Store(row + i * kSize + part, v);
  }
  FillWords<Word>(row + i * kSize, pixel, pixels - i);
}

// Mix() on 32 bytes, with the weights of 16 and 16 of them.
inline Vector MixVectors(Vector s, Vector d, Vector weights) {
  const Vector zero = _mm256_setzero_si256();
  const auto half = [&](Vector source, Vector destination) {
    const Vector apart = _mm256_mullo_epi16(_mm256_sub_epi16(destination, source), weights);
    return _mm256_add_epi16(source, _mm256_srai_epi16(apart, 7));
  };
  return _mm256_packus_epi16(half(_mm256_unpacklo_epi8(s, zero), _mm256_unpacklo_epi8(d, zero)),
                             half(_mm256_unpackhi_epi8(s, zero), _mm256_unpackhi_epi8(d, zero)));
}

void WideBlendRow32(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  const int64_t c = a.weight;
  const Vector weights = _mm256_set1_epi64x(c | c << 16 | c << 32 | int64_t{128} << 48);
  int i = 0;
  for (; i + 8 <= pixels; i += 8) {
    uint8_t* d = destination + size_t(i) * 4;
    Store(d, MixVectors(Load(source + size_t(i) * 4), Load(d), weights));
  }
  BlendRow32(source + size_t(i) * 4, destination + size_t(i) * 4, pixels - i, a);
}

void WideBlendColourRow32(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& a) {
  const int64_t c = a.weight;
  const Vector weights = _mm256_set1_epi64x(c | c << 16 | c << 32 | int64_t{128} << 48);
  const Vector colour = _mm256_set1_epi32(int32_t(a.pixel));
  int i = 0;
  for (; i + 8 <= pixels; i += 8) {
    uint8_t* at = destination + size_t(i) * 4;
    const Vector d = Load(at);
    const Vector isZero = _mm256_cmpeq_epi32(d, _mm256_setzero_si256());
    Store(at, MixVectors(Load(source + size_t(i) * 4), _mm256_blendv_epi8(d, colour, isZero), weights));
  }
  BlendColourRow32(source + size_t(i) * 4, destination + size_t(i) * 4, pixels - i, a);
}

void WideFilterAlong(const uint32_t* row, const FilterTaps* taps, const int32_t* weights, uint32_t* out, int pixels) {
  const __m128i half = _mm_set1_epi32(0x8000);
  const __m128i most = _mm_set1_epi32(0xFF0000);
  for (int i = 0; i < pixels; ++i) {
    const uint32_t* s = row + taps[i].first;
    const int32_t* w = weights + taps[i].weights;
    __m128i sum = half;
    for (int k = 0; k < taps[i].count; ++k) {
      const __m128i channels = _mm_cvtepu8_epi32(_mm_cvtsi32_si128(int32_t(s[k])));
      sum = _mm_add_epi32(sum, _mm_mullo_epi32(channels, _mm_set1_epi32(w[k])));
    }
    sum = _mm_srli_epi32(_mm_min_epi32(sum, most), 16);
    sum = _mm_packus_epi32(sum, sum);
    out[i] = uint32_t(_mm_cvtsi128_si32(_mm_packus_epi16(sum, sum)));
  }
}

void WideFilterAcross(const uint32_t* const* rows, const int32_t* weights, int count, uint32_t* out, int pixels) {
  const Vector half = _mm256_set1_epi32(0x8000);
  const Vector most = _mm256_set1_epi32(0xFF0000);
  int i = 0;
  for (; i + 8 <= pixels; i += 8) {
    Vector sum[4] = {half, half, half, half};
    for (int k = 0; k < count; ++k) {
      const Vector weight = _mm256_set1_epi32(weights[k]);
      for (int part = 0; part < 4; ++part) {
        const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(rows[k] + i + part * 2));
        Vector& total = sum[part];
        total = _mm256_add_epi32(total, _mm256_mullo_epi32(_mm256_cvtepu8_epi32(bytes), weight));
      }
    }
    for (Vector& total : sum) total = _mm256_srli_epi32(_mm256_min_epi32(total, most), 16);
    // Packing works in halves, so the four-byte groups come out as 0 2 4 6 1 3 5 7.
    const Vector packed = _mm256_packus_epi16(_mm256_packus_epi32(sum[0], sum[1]), _mm256_packus_epi32(sum[2], sum[3]));
    Store(out + i, _mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7)));
  }
  if (i == pixels) return;
  for (; i < pixels; ++i) {
    __m128i sum = _mm_set1_epi32(0x8000);
    for (int k = 0; k < count; ++k) {
      const __m128i channels = _mm_cvtepu8_epi32(_mm_cvtsi32_si128(int32_t(rows[k][i])));
      sum = _mm_add_epi32(sum, _mm_mullo_epi32(channels, _mm_set1_epi32(weights[k])));
    }
    sum = _mm_srli_epi32(_mm_min_epi32(sum, _mm_set1_epi32(0xFF0000)), 16);
    sum = _mm_packus_epi32(sum, sum);
    out[i] = uint32_t(_mm_cvtsi128_si32(_mm_packus_epi16(sum, sum)));
  }
}

template <bool Between>
void WideTurnPoints(TurnBlock& block, int columns) {
  static_assert(TurnBlock::kRows == 8);
  const __m256 stepX = _mm256_set1_ps(block.stepX);
  const __m256 stepY = _mm256_set1_ps(block.stepY);
  const Vector width = _mm256_set1_epi32(block.width);
  const Vector height = _mm256_set1_epi32(block.height);
  const Vector pitch = _mm256_set1_epi32(block.pitch);
  const Vector bytes = _mm256_set1_epi32(block.bytesPerPixel);
  const Vector zero = _mm256_setzero_si256();
  const Vector minusOne = _mm256_set1_epi32(-1);
  __m256 x = _mm256_loadu_ps(block.x.data());
  __m256 y = _mm256_loadu_ps(block.y.data());
  Vector inside = zero;
  Vector before = zero;
  for (int column = 0; column < columns; ++column) {
    const size_t at = size_t(column) * TurnBlock::kRows;
    const Vector ix = Between ? _mm256_cvttps_epi32(x) : _mm256_cvtps_epi32(x);
    const Vector iy = Between ? _mm256_cvttps_epi32(y) : _mm256_cvtps_epi32(y);
    const Vector below = _mm256_and_si256(_mm256_cmpgt_epi32(width, ix), _mm256_cmpgt_epi32(height, iy));
    const Vector above = _mm256_cmpgt_epi32(_mm256_or_si256(ix, iy), minusOne);
    Store(&block.offset[at], _mm256_add_epi32(_mm256_mullo_epi32(iy, pitch), _mm256_mullo_epi32(ix, bytes)));
    inside = _mm256_sub_epi32(inside, _mm256_and_si256(below, above));
    before = _mm256_sub_epi32(before, _mm256_cmpeq_epi32(inside, zero));
    if constexpr (Between) {
      _mm256_storeu_ps(&block.partX[at], _mm256_sub_ps(x, _mm256_cvtepi32_ps(ix)));
      _mm256_storeu_ps(&block.partY[at], _mm256_sub_ps(y, _mm256_cvtepi32_ps(iy)));
      const Vector hasNext = _mm256_cmpgt_epi32(_mm256_add_epi32(width, minusOne), ix);
      const Vector hasBelow = _mm256_cmpgt_epi32(_mm256_add_epi32(height, minusOne), iy);
      Store(&block.neighbours[at],
            _mm256_sub_epi32(_mm256_srli_epi32(hasNext, 31), _mm256_add_epi32(hasBelow, hasBelow)));
    }
    x = _mm256_add_ps(x, stepX);
    y = _mm256_add_ps(y, stepY);
  }
  _mm256_storeu_ps(block.x.data(), x);
  _mm256_storeu_ps(block.y.data(), y);
  Store(block.before.data(), before);
  Store(block.inside.data(), inside);
}

// Eight pixels come out of one vector of the source where they lie in it, as they do when a picture grows.
void WidePick32(const uint8_t* source, const int32_t* offsets, uint8_t* target, int pixels) {
  const int32_t last = pixels > 0 ? offsets[pixels - 1] : 0;
  int i = 0;
  for (; i + 8 <= pixels && offsets[i] + 28 <= last && offsets[i + 7] - offsets[i] <= 28; i += 8) {
    const Vector apart = _mm256_sub_epi32(Load(offsets + i), _mm256_set1_epi32(offsets[i]));
    Store(target + size_t(i) * 4, _mm256_permutevar8x32_epi32(Load(source + offsets[i]), _mm256_srli_epi32(apart, 2)));
  }
  PickWords<uint32_t>(source, offsets + i, target + size_t(i) * 4, pixels - i);
}

void WidePick16(const uint8_t* source, const int32_t* offsets, uint8_t* target, int pixels) {
  const int32_t last = pixels > 0 ? offsets[pixels - 1] : 0;
  int i = 0;
  for (; i + 8 <= pixels && offsets[i] + 14 <= last && offsets[i + 7] - offsets[i] <= 14; i += 8) {
    const __m128i base = _mm_set1_epi32(offsets[i]);
    const auto* o = reinterpret_cast<const __m128i*>(offsets + i);
    const __m128i apart =
        _mm_packs_epi32(_mm_sub_epi32(_mm_loadu_si128(o), base), _mm_sub_epi32(_mm_loadu_si128(o + 1), base));
    // The places of both bytes of each pixel.
    const __m128i order = _mm_or_si128(apart, _mm_slli_epi16(_mm_add_epi16(apart, _mm_set1_epi16(1)), 8));
    const __m128i from = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + offsets[i]));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(target + size_t(i) * 2), _mm_shuffle_epi8(from, order));
  }
  PickWords<uint16_t>(source, offsets + i, target + size_t(i) * 2, pixels - i);
}

// Five pixels become ten, of whose bytes the first sixteen and the others are stored apart.
void WideTwiceTriples(const uint8_t* source, uint8_t* target, int pixels) {
  const __m128i first = _mm_setr_epi8(0, 1, 2, 0, 1, 2, 3, 4, 5, 3, 4, 5, 6, 7, 8, 6);
  const __m128i second = _mm_setr_epi8(7, 8, 9, 10, 11, 9, 10, 11, 12, 13, 14, 12, 13, 14, -1, -1);
  int i = 0;
  // The sixth pixel holds what is read and written behind the fifth.
  for (; i + 6 <= pixels; i += 5) {
    const __m128i from = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + size_t(i) * 3));
    auto* to = reinterpret_cast<__m128i*>(target + size_t(i) * 6);
    _mm_storeu_si128(to, _mm_shuffle_epi8(from, first));
    _mm_storeu_si128(to + 1, _mm_shuffle_epi8(from, second));
  }
  TwiceTriples(source + size_t(i) * 3, target + size_t(i) * 6, pixels - i);
}

// Squares of eight pixels, exchanged in steps of one, two and four.
void WideTranspose32(const uint8_t* source, ptrdiff_t sourcePitch, uint8_t* target, ptrdiff_t targetPitch, int pixels) {
  int i = 0;
  for (; i + 8 <= pixels; i += 8, source += 8 * sourcePitch, target += 32) {
    Vector rows[8], pairs[8];
    for (ptrdiff_t k = 0; k < 8; ++k) rows[k] = Load(source + k * sourcePitch);
    for (int k = 0; k < 8; k += 2) {
      pairs[k] = _mm256_unpacklo_epi32(rows[k], rows[k + 1]);
      pairs[k + 1] = _mm256_unpackhi_epi32(rows[k], rows[k + 1]);
    }
    for (int k = 0; k < 8; k += 4) {
      rows[k] = _mm256_unpacklo_epi64(pairs[k], pairs[k + 2]);
      rows[k + 1] = _mm256_unpackhi_epi64(pairs[k], pairs[k + 2]);
      rows[k + 2] = _mm256_unpacklo_epi64(pairs[k + 1], pairs[k + 3]);
      rows[k + 3] = _mm256_unpackhi_epi64(pairs[k + 1], pairs[k + 3]);
    }
    for (ptrdiff_t k = 0; k < 4; ++k) {
      Store(target + k * targetPitch, _mm256_permute2x128_si256(rows[k], rows[k + 4], 0x20));
      Store(target + (k + 4) * targetPitch, _mm256_permute2x128_si256(rows[k], rows[k + 4], 0x31));
    }
  }
  TransposeRows<4>(source, sourcePitch, target, targetPitch, pixels - i);
}

void WideTranspose16(const uint8_t* source, ptrdiff_t sourcePitch, uint8_t* target, ptrdiff_t targetPitch, int pixels) {
  int i = 0;
  for (; i + 8 <= pixels; i += 8, source += 8 * sourcePitch, target += 16) {
    __m128i rows[8], pairs[8];
    for (ptrdiff_t k = 0; k < 8; ++k) {
      rows[k] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + k * sourcePitch));
    }
    for (int k = 0; k < 8; k += 2) {
      pairs[k] = _mm_unpacklo_epi16(rows[k], rows[k + 1]);
      pairs[k + 1] = _mm_unpackhi_epi16(rows[k], rows[k + 1]);
    }
    for (int k = 0; k < 8; k += 4) {
      rows[k] = _mm_unpacklo_epi32(pairs[k], pairs[k + 2]);
      rows[k + 1] = _mm_unpackhi_epi32(pairs[k], pairs[k + 2]);
      rows[k + 2] = _mm_unpacklo_epi32(pairs[k + 1], pairs[k + 3]);
      rows[k + 3] = _mm_unpackhi_epi32(pairs[k + 1], pairs[k + 3]);
    }
    for (ptrdiff_t k = 0; k < 4; ++k) {
      auto* even = reinterpret_cast<__m128i*>(target + 2 * k * targetPitch);
      auto* odd = reinterpret_cast<__m128i*>(target + (2 * k + 1) * targetPitch);
      _mm_storeu_si128(even, _mm_unpacklo_epi64(rows[k], rows[k + 4]));
      _mm_storeu_si128(odd, _mm_unpackhi_epi64(rows[k], rows[k + 4]));
    }
  }
  TransposeRows<2>(source, sourcePitch, target, targetPitch, pixels - i);
}

// Pixels of 3 bytes as words, and words as pixels of 3 bytes, eight at a time in two halves.
void WideSpread(const uint8_t* source, uint32_t* words, int pixels) {
  const Vector order = _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,  //
                                        0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
  int i = 0;
  // Each half reads 16 bytes for the sake of 12.
  for (; i + 10 <= pixels; i += 8) {
    const auto* s = reinterpret_cast<const __m128i*>(source + size_t(i) * 3);
    const auto* next = reinterpret_cast<const __m128i*>(source + size_t(i) * 3 + 12);
    const Vector both = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(s)), _mm_loadu_si128(next), 1);
    Store(words + i, _mm256_shuffle_epi8(both, order));
  }
  Spread(source + size_t(i) * 3, words + i, pixels - i);
}

void WideGather(const uint32_t* words, uint8_t* target, int pixels) {
  const Vector order = _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1,  //
                                        0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
  int i = 0;
  for (; i + 10 <= pixels; i += 8) {
    const Vector both = _mm256_shuffle_epi8(Load(words + i), order);
    uint8_t* t = target + size_t(i) * 3;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(t), _mm256_castsi256_si128(both));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(t + 12), _mm256_extracti128_si256(both, 1));
  }
  Gather(words + i, target + size_t(i) * 3, pixels - i);
}

template <int To>
void WideFromTriples(const uint8_t* source, uint8_t* target, int pixels) {
  constexpr int kTo = PixelFormat<To>::kBytes;
  std::array<uint32_t, kBlock> words;
  for (int first = 0; first < pixels; first += kBlock) {
    const int n = std::min(kBlock, pixels - first);
    WideSpread(source + size_t(first) * 3, words.data(), n);
    const auto* s = reinterpret_cast<const uint8_t*>(words.data());
    if constexpr (To == 32) {
      std::memcpy(target + size_t(first) * 4, s, size_t(n) * 4);
    } else {
      ConvertRow<32, To, true>(s, target + size_t(first) * kTo, n);
    }
  }
}

template <int From>
void WideToTriples(const uint8_t* source, uint8_t* target, int pixels) {
  constexpr int kFrom = PixelFormat<From>::kBytes;
  std::array<uint32_t, kBlock> words;
  for (int first = 0; first < pixels; first += kBlock) {
    const int n = std::min(kBlock, pixels - first);
    ConvertRow<From, 32, true>(source + size_t(first) * kFrom, reinterpret_cast<uint8_t*>(words.data()), n);
    WideGather(words.data(), target + size_t(first) * 3, n);
  }
}

constexpr RowKernels WideKernels() {
  RowKernels kernels = kLoops;
  kernels.keyed[3] = WideKeyedTriples;
  kernels.fill[2] = WideFillWords<uint16_t>;
  kernels.fill[3] = WideFillTriples;
  kernels.fill[4] = WideFillWords<uint32_t>;
  kernels.twice[3] = WideTwiceTriples;
  kernels.pick[2] = WidePick16;
  kernels.pick[4] = WidePick32;
  kernels.transpose[2] = WideTranspose16;
  kernels.transpose[4] = WideTranspose32;
  kernels.effects[4][1] = WideBlendRow32;
  kernels.effects[4][6] = WideBlendColourRow32;
  kernels.convert[1][3] = WideToTriples<15>;
  kernels.convert[2][3] = WideToTriples<16>;
  kernels.convert[4][3] = WideToTriples<32>;
  kernels.convert[3][1] = WideFromTriples<15>;
  kernels.convert[3][2] = WideFromTriples<16>;
  kernels.convert[3][4] = WideFromTriples<32>;
  kernels.words[3] = WideFromTriples<32>;
  kernels.filterAlong = WideFilterAlong;
  kernels.filterAcross = WideFilterAcross;
  kernels.turnNearest = WideTurnPoints<false>;
  kernels.turnBetween = WideTurnPoints<true>;
  return kernels;
}

constexpr RowKernels kWide = WideKernels();

}  // namespace
}  // namespace vl

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

namespace vl {

const RowKernels* WideRowKernels() { return __builtin_cpu_supports("avx2") ? &kWide : nullptr; }

}  // namespace vl

#else

namespace vl {

const RowKernels* WideRowKernels() { return nullptr; }

}  // namespace vl

#endif
