// Row effects: one draw effect on one row of pixels, in place on the destination.
//
// The rows don't overlap in part: either they are the same or they share nothing.
#pragma once

#include <cstdint>

#include "gfx2d/palette.h"

namespace vl {

// What the effects need to know, worked out once a blit.
struct EffectArguments {
  uint32_t weight = 0;          // of the destination, 0 to 128
  Colour colour = 0;            // stands for destination pixels of value 0 (effect 6)
  uint32_t pixel = 0;           // `colour` as a pixel of depth 24 and 32
  cPalette* palette = nullptr;  // of the destination, with its inverse map (depth 8)
};

using RowEffect = void (*)(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& arguments);

// Null for the effects that have no row: none and raster.
RowEffect RowEffectOf(int depthIndex, int effect);

EffectArguments MakeEffectArguments(int effect, uint32_t param, cPalette* palette);

}  // namespace vl
