#include "gfx2d/row_effects.h"

#include <algorithm>

namespace vl {
namespace {

uint64_t Share(Colour c, uint32_t weight) {
  return uint64_t{RedOf(c) * weight} | uint64_t{GreenOf(c) * weight} << 16 | uint64_t{BlueOf(c) * weight} << 32;
}

}  // namespace

EffectArguments MakeEffectArguments(int effect, uint32_t param) {
  EffectArguments a;
  a.weight = std::min<uint32_t>(effect == 6 ? param >> 24 : param, 128);
  a.colour = param & kColourMask;
  a.pixel = SwapRedBlue(a.colour);
  return a;
}

IndexBlend::IndexBlend(cPalette& palette, const EffectArguments& arguments, bool isColour, int64_t pixels)
    : palette_(palette), arguments_(arguments), isColour_(isColour), hasTables_(pixels > 512) {
  for (size_t i = 0; hasTables_ && i < 256; ++i) {
    ofSource_[i] = SourceShare(uint8_t(i));
    ofDestination_[i] = DestinationShare(uint8_t(i));
  }
}

uint64_t IndexBlend::SourceShare(uint8_t index) const {
  return Share(palette_.ColourAt(index), 128 - arguments_.weight);
}

uint64_t IndexBlend::DestinationShare(uint8_t index) const {
  return Share(isColour_ && index == 0 ? arguments_.colour : palette_.ColourAt(index), arguments_.weight);
}

void IndexBlend::Row(const uint8_t* source, uint8_t* destination, int pixels, bool isKeyed) {
  if (hasTables_) {
    Blend(
        source, destination, pixels, isKeyed, [this](uint8_t i) { return ofSource_[i]; },
        [this](uint8_t i) { return ofDestination_[i]; });
  } else {
    Blend(
        source, destination, pixels, isKeyed, [this](uint8_t i) { return SourceShare(i); },
        [this](uint8_t i) { return DestinationShare(i); });
  }
}

template <class OfSource, class OfDestination>
void IndexBlend::Blend(const uint8_t* source, uint8_t* destination, int pixels, bool isKeyed, OfSource&& ofSource,
                       OfDestination&& ofDestination) {
  // 8 bits of each channel, and the five of them that name a cell of the map.
  constexpr uint64_t kChannels = 0x7F807F807F80;
  const uint8_t* const map = palette_.inverseMap.get();
  for (int i = 0; i < pixels; ++i) {
    if (isKeyed && source[i] == 0) continue;
    const uint64_t mix = ofSource(source[i]) + ofDestination(destination[i]);
    const size_t cell = size_t((mix >> 10 & 31) << 10 | (mix >> 26 & 31) << 5 | (mix >> 42 & 31));
    uint8_t index = map[cell];
    // Black never asks the map, and a cell of 0 is not known yet.
    if (index == 0 || (mix & kChannels) == 0) {
      index = uint8_t(palette_.NearestIndex(
          MakeColour(uint32_t(mix >> 7 & 255), uint32_t(mix >> 23 & 255), uint32_t(mix >> 39 & 255))));
    }
    destination[i] = index;
  }
}

}  // namespace vl
