// The line kernels for processors with 32-byte vectors: each does the front of its line, in whole vectors, and gives
// how many pixels that was. Only to be called where the processor has them.
#pragma once

#include <cstdint>

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define VL_WIDE_LINES 1
#else
#define VL_WIDE_LINES 0
#endif

namespace vl::kernels {

#if VL_WIDE_LINES
int32_t WideClearHighBytes(uint8_t* words, int32_t pixels);
int32_t WideWordsTo16(const uint8_t* words, uint8_t* target, int32_t pixels);
int32_t WideWordsTo15(const uint8_t* words, uint8_t* target, int32_t pixels);
int32_t WideWordsToKeys(const uint8_t* words, uint16_t* keys, int32_t pixels);
// NearestColour among all 256.
uint8_t WideNearestColour(const uint8_t (*channels)[256], uint8_t red, uint8_t green, uint8_t blue);
#endif

}  // namespace vl::kernels
