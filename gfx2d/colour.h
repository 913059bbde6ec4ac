// Colour: a colour value of the surface library, 0x00BBGGRR with red in the low byte.
//
// A pixel is what lies in memory; a colour is what pixels of every depth turn into and come from. Scripts
// use 0xRRGGBB and are swapped at their border.
#pragma once

#include <cstdint>

namespace vl {

using Colour = uint32_t;

inline constexpr Colour kColourMask = 0xFFFFFF;

constexpr Colour MakeColour(uint32_t red, uint32_t green, uint32_t blue) { return red | green << 8 | blue << 16; }
constexpr uint32_t RedOf(Colour c) { return c & 0xFF; }
constexpr uint32_t GreenOf(Colour c) { return c >> 8 & 0xFF; }
constexpr uint32_t BlueOf(Colour c) { return c >> 16 & 0xFF; }

// Between 0x00BBGGRR and 0x00RRGGBB, in either direction.
constexpr uint32_t SwapRedBlue(uint32_t c) { return (c & 0xFF) << 16 | (c & 0xFF00) | (c >> 16 & 0xFF); }

}  // namespace vl
