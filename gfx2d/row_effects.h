// Row effects: one draw effect on one row of pixels, in place on the destination.
//
// Source and destination share no memory.
#pragma once

#include <array>
#include <cstdint>

#include "gfx2d/palette.h"

namespace vl {

// What the effects need to know, worked out once a blit.
struct EffectArguments {
  uint32_t weight = 0;  // of the destination, 0 to 128
  Colour colour = 0;    // stands for destination pixels of value 0 (effect 6)
  uint32_t pixel = 0;   // `colour` as a pixel of depth 24 and 32
};

using RowEffect = void (*)(const uint8_t* source, uint8_t* destination, int pixels, const EffectArguments& arguments);

EffectArguments MakeEffectArguments(int effect, uint32_t param);

// Effects 1 and 6 in depth 8: both indices become colours, the mix goes through the palette's inverse map.
class IndexBlend {
 public:
  // The palette has its inverse map and outlives this. isColour: effect 6. pixels: how many are to come, about.
  IndexBlend(cPalette& palette, const EffectArguments& arguments, bool isColour, int64_t pixels);
  // Pixels of the source that are 0 are left out when `isKeyed`.
  void Row(const uint8_t* source, uint8_t* destination, int pixels, bool isKeyed);

 private:
  uint64_t SourceShare(uint8_t index) const;
  uint64_t DestinationShare(uint8_t index) const;
  template <class OfSource, class OfDestination>
  void Blend(const uint8_t* source, uint8_t* destination, int pixels, bool isKeyed, OfSource&& ofSource,
             OfDestination&& ofDestination);

  cPalette& palette_;
  EffectArguments arguments_;
  bool isColour_;
  bool hasTables_;
  // Each index's share of the mix, red, green and blue in 16 bits each from the lowest.
  std::array<uint64_t, 256> ofSource_;
  std::array<uint64_t, 256> ofDestination_;
};

}  // namespace vl
