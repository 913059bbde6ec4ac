// Line converters: one line of pixels from one depth to another.
//
// Pixel 0 stays 0, and no other pixel becomes 0: what would narrow to 0 is stored as 1.
#pragma once

#include <array>
#include <cstdint>

#include "gfx2d/palette.h"
#include "gfx2d/row_kernels.h"

namespace vl {

// What a conversion looks up, made once a box.
class LineConversion {
 public:
  // The palettes are those of surfaces of depth 8, else null. Depth indices differ.
  LineConversion(int sourceIndex, cPalette* sourcePalette, int targetIndex, cPalette* targetPalette,
                 const RowKernels& kernels = BestRowKernels());
  void Convert(const uint8_t* source, uint8_t* target, int pixels);

 private:
  friend struct Converters;
  using Line = void (*)(LineConversion& c, const uint8_t* source, uint8_t* target, int pixels);
  uint32_t NearestOf(Colour colour);

  RowKernels::Line kernel_ = nullptr;   // between depths that are made of channels
  Line line_ = nullptr;                 // from or to depth 8
  std::array<uint32_t, 256> pixels_{};  // of each source index, from depth 8
  cPalette* target_;
  // Colours looked up before, by a hash; equal colours come in numbers.
  static constexpr int kCacheBits = 9;
  struct Cached {
    Colour colour = 0;
    uint8_t index = 0;
  };
  std::array<Cached, 1 << kCacheBits> cache_{};
};

}  // namespace vl
