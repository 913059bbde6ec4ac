// The line kernels by 32-byte vectors. Only what follows the pragma is compiled for them, and line_kernels.cpp reaches
// it only on processors that have them.
#include "gfx2d/images/line_kernels_wide.h"

#if VL_WIDE_LINES

#include <immintrin.h>

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

namespace vl::kernels {
namespace {

using Vector = __m256i;

inline Vector Load(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const Vector*>(p)); }
inline void Store(void* p, Vector v) { _mm256_storeu_si256(static_cast<Vector*>(p), v); }

// As in line_kernels.cpp, eight words at a time.
template <int Depth>
inline Vector Narrow(Vector w) {
  const Vector redBlue = _mm256_and_si256(w, _mm256_set1_epi32(0x00F800F8));
  const Vector moved = _mm256_madd_epi16(redBlue, _mm256_set1_epi32(Depth == 16 ? 0x20000004 : 0x20000008));
  const Vector green = _mm256_and_si256(w, _mm256_set1_epi32(Depth == 16 ? 0xFC00 : 0xF800));
  const Vector all = _mm256_or_si256(moved, green);
  return _mm256_srai_epi32(_mm256_slli_epi32(all, Depth == 16 ? 11 : 10), 16);
}

// Packing works on the halves by themselves; this puts the quarters in order.
inline Vector Pack(Vector a, Vector b) { return _mm256_permute4x64_epi64(_mm256_packs_epi32(a, b), 0xD8); }

template <int Depth>
int32_t Words(const uint8_t* words, uint8_t* target, int32_t pixels) {
  const Vector zero = _mm256_setzero_si256();
  int32_t i = 0;
  for (; i + 16 <= pixels; i += 16) {
    const Vector first = Load(words + i * 4);
    const Vector second = Load(words + i * 4 + 32);
    Vector narrow = Pack(Narrow<Depth>(first), Narrow<Depth>(second));
    const Vector isZero = _mm256_cmpeq_epi16(narrow, zero);
    if (_mm256_movemask_epi8(isZero)) {
      const Vector mask = _mm256_set1_epi32(0xFFFFFF);
      const Vector was = Pack(_mm256_cmpeq_epi32(_mm256_and_si256(first, mask), zero),
                              _mm256_cmpeq_epi32(_mm256_and_si256(second, mask), zero));
      narrow = _mm256_sub_epi16(narrow, _mm256_andnot_si256(was, isZero));
    }
    Store(target + i * 2, narrow);
  }
  return i;
}

}  // namespace

int32_t WideClearHighBytes(uint8_t* words, int32_t pixels) {
  const Vector mask = _mm256_set1_epi32(0xFFFFFF);
  int32_t i = 0;
  for (; i + 16 <= pixels; i += 16) {
    Store(words + i * 4, _mm256_and_si256(Load(words + i * 4), mask));
    Store(words + i * 4 + 32, _mm256_and_si256(Load(words + i * 4 + 32), mask));
  }
  return i;
}

int32_t WideWordsTo16(const uint8_t* words, uint8_t* target, int32_t pixels) {
  return Words<16>(words, target, pixels);
}
int32_t WideWordsTo15(const uint8_t* words, uint8_t* target, int32_t pixels) {
  return Words<15>(words, target, pixels);
}

int32_t WideWordsToKeys(const uint8_t* words, uint16_t* keys, int32_t pixels) {
  int32_t i = 0;
  for (; i + 16 <= pixels; i += 16) {
    Store(keys + i, Pack(Narrow<16>(Load(words + i * 4)), Narrow<16>(Load(words + i * 4 + 32))));
  }
  return i;
}

uint8_t WideNearestColour(const uint8_t (*channels)[256], uint8_t red, uint8_t green, uint8_t blue) {
  const Vector zero = _mm256_setzero_si256();
  const Vector r = _mm256_set1_epi8(char(red));
  const Vector g = _mm256_set1_epi8(char(green));
  const Vector b = _mm256_set1_epi8(char(blue));
  // Sixteen distances a vector, in the order in which unpacking leaves them: places 0 to 7 and 16 to 23 of 32, then
  // the others.
  Vector distances[16];
  Vector least = _mm256_set1_epi16(0x7FFF);
  for (int i = 0; i < 8; ++i) {
    const auto far = [i](const uint8_t* channel, Vector y) {
      const Vector x = Load(channel + i * 32);
      return _mm256_or_si256(_mm256_subs_epu8(x, y), _mm256_subs_epu8(y, x));
    };
    const Vector dr = far(channels[0], r);
    const Vector dg = far(channels[1], g);
    const Vector db = far(channels[2], b);
    const Vector low =
        _mm256_add_epi16(_mm256_add_epi16(_mm256_unpacklo_epi8(dr, zero), _mm256_unpacklo_epi8(dg, zero)),
                         _mm256_unpacklo_epi8(db, zero));
    const Vector high =
        _mm256_add_epi16(_mm256_add_epi16(_mm256_unpackhi_epi8(dr, zero), _mm256_unpackhi_epi8(dg, zero)),
                         _mm256_unpackhi_epi8(db, zero));
    distances[i * 2] = low;
    distances[i * 2 + 1] = high;
    least = _mm256_min_epi16(least, _mm256_min_epi16(low, high));
  }
  const __m128i half = _mm_min_epi16(_mm256_castsi256_si128(least), _mm256_extracti128_si256(least, 1));
  const Vector wanted = _mm256_broadcastw_epi16(_mm_minpos_epu16(half));
  for (int i = 0; i < 8; ++i) {
    // Packing undoes the unpacking.
    const Vector equal = _mm256_packs_epi16(_mm256_cmpeq_epi16(distances[i * 2], wanted),
                                            _mm256_cmpeq_epi16(distances[i * 2 + 1], wanted));
    const auto bits = uint32_t(_mm256_movemask_epi8(equal));
    if (bits) return uint8_t(i * 32 + __builtin_ctz(bits));
  }
  return 0;
}

}  // namespace vl::kernels

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

#endif  // VL_WIDE_LINES
