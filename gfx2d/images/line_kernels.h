// The inner loops of converting lines: words 0x00RRGGBB and what they become.
//
// Vector code where the machine surely has it, and plain loops that give the same results elsewhere. Sources and
// targets may be unaligned and don't overlap, but for ClearHighBytes, which works in place.
#pragma once

#include <cstdint>

namespace vl::kernels {

// Red, green and blue bytes to words.
void RgbToWords(const uint8_t* rgb, uint8_t* words, int32_t pixels);
// Only 0x00RRGGBB stays.
void ClearHighBytes(uint8_t* words, int32_t pixels);
// Words, whose high byte doesn't count, to 16 or 15 bits; what isn't 0 doesn't become 0.
void WordsTo16(const uint8_t* words, uint8_t* target, int32_t pixels);
void WordsTo15(const uint8_t* words, uint8_t* target, int32_t pixels);
// Words to 5-6-5 alone.
void WordsToKeys(const uint8_t* words, uint16_t* keys, int32_t pixels);
// Place of the least sum of absolute differences among 256 colours, given channel by channel, the first of equal
// ones below `count`, which is at least 1.
uint8_t NearestColour(const uint8_t (*channels)[256], int32_t count, uint8_t red, uint8_t green, uint8_t blue);

}  // namespace vl::kernels
