#include "gfx2d/pixel_ops.h"

#include <algorithm>
#include <array>

#include "gfx2d/line_converters.h"
#include "gfx2d/pixel_format.h"
#include "gfx2d/row_kernels.h"
#include "gfx2d/surface_impl.h"

namespace vl {
namespace {

template <int Depth>
uint32_t PixelOf(const cSurfaceImpl& s, Colour colour) {
  if constexpr (Depth == 8) {
    return s.palette ? uint32_t(s.palette->NearestIndex(colour)) : 0;
  } else {
    return PixelFormat<Depth>::FromColour(colour);
  }
}

template <int Depth>
Colour ColourOf(const cSurfaceImpl& s, uint32_t pixel) {
  if constexpr (Depth == 8) {
    return s.palette ? s.palette->ColourAt(int(pixel)) : 0;
  } else {
    return PixelFormat<Depth>::ToColour(pixel);
  }
}

template <int Depth>
struct Ops {
  using F = PixelFormat<Depth>;
  static constexpr int kBytes = F::kBytes;
  static constexpr int kIndex = DepthIndexOf(Depth);

  static void SetPixelColor(const cSurfaceImpl& s, int x, int y, Colour colour) {
    F::Store(s.PixelAt(x, y), PixelOf<Depth>(s, colour));
  }
  static uint32_t GetPixelColor(const cSurfaceImpl& s, int x, int y) {
    const uint32_t pixel = F::Load(s.PixelAt(x, y));
    if constexpr (Depth == 8) {
      return pixel;
    } else {
      return F::ToColour(pixel);
    }
  }
  static void FillBox(const cSurfaceImpl& s, int x, int y, int width, int height, Colour colour) {
    FillBoxRaw(s, x, y, width, height, PixelOf<Depth>(s, colour));
  }

  static void CopyKeyed(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box) {
    const RowKernels::Keyed row = destination.kernels->keyed[kBytes];
    for (int y = 0; y < box.height; ++y) {
      const uint8_t* s = source.PixelAt(box.sx, box.sy + y);
      row(s, s, destination.PixelAt(box.dx, box.dy + y), box.width);
    }
  }
  static void EffectKeyed(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box, int effect,
                          uint32_t param) {
    if (BlendsIndices(effect)) return BlendIndices(destination, source, box, effect, param, true);
    const RowEffect row = destination.kernels->effects[kIndex][size_t(effect)];
    const RowKernels::Keyed keyed = destination.kernels->keyed[kBytes];
    const EffectArguments arguments = MakeEffectArguments(effect, param);
    // The effect on a copy of the destination, of which the key lets pixels through.
    constexpr int kBlock = 256;
    std::array<uint8_t, kBlock * 4> block;
    for (int y = 0; y < box.height; ++y) {
      for (int first = 0; first < box.width; first += kBlock) {
        const int n = std::min(kBlock, box.width - first);
        const uint8_t* s = source.PixelAt(box.sx + first, box.sy + y);
        uint8_t* d = destination.PixelAt(box.dx + first, box.dy + y);
        std::memcpy(block.data(), d, size_t(n) * kBytes);
        row(s, block.data(), n, arguments);
        keyed(s, block.data(), d, n);
      }
    }
  }
  static void CopyPlain(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box) {
    const size_t bytes = size_t(box.width) * kBytes;
    if (destination.pitch == source.pitch && bytes == size_t(source.absPitch)) {
      // Whole lines lie in one piece, in either order.
      const int first = source.pitch > 0 ? 0 : box.height - 1;
      std::memcpy(destination.Line(box.dy + first), source.Line(box.sy + first), bytes * size_t(box.height));
      return;
    }
    for (int y = 0; y < box.height; ++y) {
      std::memcpy(destination.PixelAt(box.dx, box.dy + y), source.PixelAt(box.sx, box.sy + y), bytes);
    }
  }
  static void EffectPlain(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box, int effect,
                          uint32_t param) {
    if (BlendsIndices(effect)) return BlendIndices(destination, source, box, effect, param, false);
    const RowEffect row = destination.kernels->effects[kIndex][size_t(effect)];
    const EffectArguments arguments = MakeEffectArguments(effect, param);
    for (int y = 0; y < box.height; ++y) {
      row(source.PixelAt(box.sx, box.sy + y), destination.PixelAt(box.dx, box.dy + y), box.width, arguments);
    }
  }

  static constexpr bool BlendsIndices(int effect) {
    return Depth == 8 && (effect == kEffectBlend || effect == kEffectBlendColour);
  }
  static void BlendIndices(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box, int effect,
                           uint32_t param, bool isKeyed) {
    IndexBlend blend(*destination.palette.Get(), MakeEffectArguments(effect, param), effect == kEffectBlendColour,
                     int64_t{box.width} * box.height);
    for (int y = 0; y < box.height; ++y) {
      blend.Row(source.PixelAt(box.sx, box.sy + y), destination.PixelAt(box.dx, box.dy + y), box.width, isKeyed);
    }
  }

  template <bool Keyed>
  static void Callback(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box, PixelCallback f,
                       void* param) {
    for (int y = 0; y < box.height; ++y) {
      const uint8_t* s = source.PixelAt(box.sx, box.sy + y);
      uint8_t* d = destination.PixelAt(box.dx, box.dy + y);
      for (int x = 0; x < box.width; ++x, s += kBytes, d += kBytes) {
        const uint32_t pixel = F::Load(s);
        if (Keyed && pixel == 0) continue;
        const Colour result = f(ColourOf<Depth>(destination, F::Load(d)), ColourOf<Depth>(source, pixel), param);
        F::Store(d, PixelOf<Depth>(destination, result));
      }
    }
  }

  static void MirrorX(const cSurfaceImpl& s, int x, int y, int width, int height) {
    for (int line = y; line < y + height; ++line) {
      uint8_t* left = s.PixelAt(x, line);
      uint8_t* right = s.PixelAt(x + width - 1, line);
      for (; left < right; left += kBytes, right -= kBytes) {
        const uint32_t pixel = F::Load(left);
        F::Store(left, F::Load(right));
        F::Store(right, pixel);
      }
    }
  }

  static void ReplaceColor(const cSurfaceImpl& s, int x, int y, int width, int height, Colour from, Colour to) {
    const uint32_t old = PixelOf<Depth>(s, from);
    const uint32_t replacement = PixelOf<Depth>(s, to);
    const auto row = s.kernels->replace[kBytes];
    for (int line = y; line < y + height; ++line) row(s.PixelAt(x, line), width, old, replacement);
  }

  static void ConvertFrom(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box) {
    LineConversion conversion(source.depthIndex, source.palette.Get(), destination.depthIndex,
                              destination.palette.Get(), *destination.kernels);
    for (int y = 0; y < box.height; ++y) {
      conversion.Convert(source.PixelAt(box.sx, box.sy + y), destination.PixelAt(box.dx, box.dy + y), box.width);
    }
  }

  static constexpr cPixelOps Table() {
    return {SetPixelColor, GetPixelColor,  FillBox,         CopyKeyed, EffectKeyed,  CopyPlain,
            EffectPlain,   Callback<true>, Callback<false>, MirrorX,   ReplaceColor, ConvertFrom};
  }
};

constexpr cPixelOps kOps[5] = {Ops<8>::Table(), Ops<15>::Table(), Ops<16>::Table(), Ops<24>::Table(), Ops<32>::Table()};

}  // namespace

const cPixelOps& PixelOpsOf(int depthIndex) { return kOps[depthIndex]; }

void FillBoxRaw(const cSurfaceImpl& s, int x, int y, int width, int height, uint32_t pixel) {
  const auto row = s.kernels->fill[size_t(s.bytesPerPixel)];
  if (width * s.bytesPerPixel == s.absPitch) {
    // Whole lines lie in one piece, in either order.
    row(s.Line(s.pitch > 0 ? y : y + height - 1), pixel, int64_t{width} * height);
    return;
  }
  for (int line = y; line < y + height; ++line) row(s.PixelAt(x, line), pixel, width);
}

}  // namespace vl
