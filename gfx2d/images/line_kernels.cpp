#include "gfx2d/images/line_kernels.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

#include "gfx2d/images/line_kernels_wide.h"
#include "gfx2d/pixel_format.h"
#include "gfx2d/row_kernels.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#define VL_VECTOR_LINES 1
#else
#define VL_VECTOR_LINES 0
#endif

namespace vl::kernels {
namespace {

constexpr uint32_t kRgb = 0xFFFFFF;

constexpr uint32_t To16(uint32_t w) { return (w >> 8 & 0xF800) | (w >> 5 & 0x7E0) | (w >> 3 & 0x1F); }
constexpr uint32_t To15(uint32_t w) { return (w >> 9 & 0x7C00) | (w >> 6 & 0x3E0) | (w >> 3 & 0x1F); }

// Whether this processor has the wide vectors; the rows of surfaces ask for the same.
#if VL_WIDE_LINES
bool IsWide() { return WideRowKernels() != nullptr; }
#endif

#if VL_VECTOR_LINES
__m128i Load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
void Store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }

// Four words to 16-bit values, each spread over 32 bits with its sign, as the packing instruction wants them. Red and
// blue are moved by one multiplication.
template <int Depth>
__m128i Narrow(__m128i w) {
  // To 16: red * 0x2000 + blue * 4 beside green << 10 stands 5 bits too high. To 15: red * 0x2000 + blue * 8 beside
  // green << 6, 6 bits too high.
  const __m128i redBlue = _mm_and_si128(w, _mm_set1_epi32(0x00F800F8));
  const __m128i moved = _mm_madd_epi16(redBlue, _mm_set1_epi32(Depth == 16 ? 0x20000004 : 0x20000008));
  const __m128i green = _mm_and_si128(w, _mm_set1_epi32(Depth == 16 ? 0xFC00 : 0xF800));
  const __m128i all = _mm_or_si128(moved, green);
  return _mm_srai_epi32(_mm_slli_epi32(all, Depth == 16 ? 11 : 10), 16);
}

template <int Depth>
__m128i Narrow8(const uint8_t* words) {
  return _mm_packs_epi32(Narrow<Depth>(Load(words)), Narrow<Depth>(Load(words + 16)));
}
#endif

template <int Depth>
void WordsToNarrow(const uint8_t* words, uint8_t* target, int32_t pixels) {
  int32_t i = 0;
#if VL_WIDE_LINES
  if (IsWide()) i = Depth == 16 ? WideWordsTo16(words, target, pixels) : WideWordsTo15(words, target, pixels);
#endif
#if VL_VECTOR_LINES
  const __m128i zero = _mm_setzero_si128();
  for (; i + 8 <= pixels; i += 8) {
    __m128i narrow = Narrow8<Depth>(words + i * 4);
    const __m128i isZero = _mm_cmpeq_epi16(narrow, zero);
    if (_mm_movemask_epi8(isZero)) {
      // Rarely: what is 0 now but wasn't becomes 1.
      const __m128i mask = _mm_set1_epi32(int(kRgb));
      const __m128i low = _mm_cmpeq_epi32(_mm_and_si128(Load(words + i * 4), mask), zero);
      const __m128i high = _mm_cmpeq_epi32(_mm_and_si128(Load(words + i * 4 + 16), mask), zero);
      const __m128i lift = _mm_andnot_si128(_mm_packs_epi32(low, high), isZero);
      narrow = _mm_sub_epi16(narrow, lift);
    }
    Store(target + i * 2, narrow);
  }
#endif
  for (; i < pixels; ++i) {
    const uint32_t w = LoadWord<uint32_t>(words + i * 4) & kRgb;
    StoreWord(target + i * 2, uint16_t(KeepVisible(Depth == 16 ? To16(w) : To15(w), w)));
  }
}

}  // namespace

void RgbToWords(const uint8_t* rgb, uint8_t* words, int32_t pixels) {
  int32_t i = 0;
#if VL_VECTOR_LINES
  const __m128i first = _mm_set_epi32(0, 0, 0, int(kRgb));
  const __m128i second = _mm_set_epi32(0, 0, int(kRgb), 0);
  const __m128i third = _mm_set_epi32(0, int(kRgb), 0, 0);
  const __m128i fourth = _mm_set_epi32(int(kRgb), 0, 0, 0);
  // A load takes 16 bytes for the 12 it needs.
  for (; i + 6 <= pixels; i += 4) {
    const __m128i v = Load(rgb + i * 3);
    const __m128i spread = _mm_or_si128(
        _mm_or_si128(_mm_and_si128(v, first), _mm_and_si128(_mm_slli_si128(v, 1), second)),
        _mm_or_si128(_mm_and_si128(_mm_slli_si128(v, 2), third), _mm_and_si128(_mm_slli_si128(v, 3), fourth)));
    const __m128i swapped = _mm_shufflehi_epi16(_mm_shufflelo_epi16(spread, 0xB1), 0xB1);
    Store(words + i * 4, _mm_or_si128(_mm_and_si128(swapped, _mm_set1_epi32(0x00FF00FF)),
                                      _mm_and_si128(spread, _mm_set1_epi32(0x0000FF00))));
  }
#endif
  for (; i < pixels; ++i) {
    const uint8_t* p = rgb + i * 3;
    StoreWord(words + i * 4, uint32_t(p[0]) << 16 | uint32_t(p[1]) << 8 | p[2]);
  }
}

void ClearHighBytes(uint8_t* words, int32_t pixels) {
  int32_t i = 0;
#if VL_WIDE_LINES
  if (IsWide()) i = WideClearHighBytes(words, pixels);
#endif
  for (; i < pixels; ++i) StoreWord<uint32_t>(words + i * 4, LoadWord<uint32_t>(words + i * 4) & kRgb);
}

void WordsTo16(const uint8_t* words, uint8_t* target, int32_t pixels) { WordsToNarrow<16>(words, target, pixels); }

void WordsTo15(const uint8_t* words, uint8_t* target, int32_t pixels) { WordsToNarrow<15>(words, target, pixels); }

void WordsToKeys(const uint8_t* words, uint16_t* keys, int32_t pixels) {
  int32_t i = 0;
#if VL_WIDE_LINES
  if (IsWide()) i = WideWordsToKeys(words, keys, pixels);
#endif
#if VL_VECTOR_LINES
  for (; i + 8 <= pixels; i += 8) Store(keys + i, Narrow8<16>(words + i * 4));
#endif
  for (; i < pixels; ++i) keys[i] = uint16_t(To16(LoadWord<uint32_t>(words + i * 4)));
}

uint8_t NearestColour(const uint8_t (*channels)[256], int32_t count, uint8_t red, uint8_t green, uint8_t blue) {
#if VL_WIDE_LINES
  if (count == 256 && IsWide()) return WideNearestColour(channels, red, green, blue);
#endif
#if VL_VECTOR_LINES
  const __m128i zero = _mm_setzero_si128();
  const __m128i r = _mm_set1_epi8(char(red));
  const __m128i g = _mm_set1_epi8(char(green));
  const __m128i b = _mm_set1_epi8(char(blue));
  const auto far = [](__m128i x, __m128i y) { return _mm_or_si128(_mm_subs_epu8(x, y), _mm_subs_epu8(y, x)); };
  alignas(16) int16_t distances[256];
  __m128i least = _mm_set1_epi16(0x7FFF);
  for (int32_t i = 0; i < 256; i += 16) {
    const __m128i dr = far(Load(channels[0] + i), r);
    const __m128i dg = far(Load(channels[1] + i), g);
    const __m128i db = far(Load(channels[2] + i), b);
    __m128i low = _mm_add_epi16(_mm_add_epi16(_mm_unpacklo_epi8(dr, zero), _mm_unpacklo_epi8(dg, zero)),
                                _mm_unpacklo_epi8(db, zero));
    __m128i high = _mm_add_epi16(_mm_add_epi16(_mm_unpackhi_epi8(dr, zero), _mm_unpackhi_epi8(dg, zero)),
                                 _mm_unpackhi_epi8(db, zero));
    if (i + 16 > count) {
      // Places past the palette's end are as far as can be.
      const __m128i eight = _mm_set_epi16(7, 6, 5, 4, 3, 2, 1, 0);
      const __m128i left = _mm_set1_epi16(int16_t(count - i));
      const __m128i most = _mm_set1_epi16(0x7FFF);
      const __m128i in = _mm_cmpgt_epi16(left, eight);
      const __m128i inHigh = _mm_cmpgt_epi16(left, _mm_add_epi16(eight, _mm_set1_epi16(8)));
      low = _mm_or_si128(_mm_and_si128(in, low), _mm_andnot_si128(in, most));
      high = _mm_or_si128(_mm_and_si128(inHigh, high), _mm_andnot_si128(inHigh, most));
    }
    Store(distances + i, low);
    Store(distances + i + 8, high);
    least = _mm_min_epi16(least, _mm_min_epi16(low, high));
  }
  least = _mm_min_epi16(least, _mm_srli_si128(least, 8));
  least = _mm_min_epi16(least, _mm_srli_si128(least, 4));
  least = _mm_min_epi16(least, _mm_srli_si128(least, 2));
  const auto best = int16_t(_mm_extract_epi16(least, 0));
  const __m128i wanted = _mm_set1_epi16(best);
  for (int32_t i = 0; i < 256; i += 16) {
    const auto* at = reinterpret_cast<const uint8_t*>(distances + i);
    const __m128i equal = _mm_packs_epi16(_mm_cmpeq_epi16(Load(at), wanted), _mm_cmpeq_epi16(Load(at + 16), wanted));
    const auto bits = uint32_t(_mm_movemask_epi8(equal));
    if (bits) return uint8_t(i + std::countr_zero(bits));
  }
  return 0;
#else
  int best = 0;
  int bestDistance = 0x7FFF;
  for (int32_t i = 0; i < count; ++i) {
    const int distance = std::abs(int(channels[0][i]) - red) + std::abs(int(channels[1][i]) - green) +
                         std::abs(int(channels[2][i]) - blue);
    if (distance < bestDistance) {
      bestDistance = distance;
      best = i;
    }
  }
  return uint8_t(best);
#endif
}

}  // namespace vl::kernels
