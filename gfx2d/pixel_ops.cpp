#include "gfx2d/pixel_ops.h"

#include <algorithm>
#include <array>

#include "gfx2d/line_converters.h"
#include "gfx2d/pixel_format.h"
#include "gfx2d/row_effects.h"
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

  // Stores the rows' source pixels that are not 0.
  static void KeyedRow(const uint8_t* key, const uint8_t* source, uint8_t* destination, int pixels) {
    if constexpr (Depth == 24) {
      for (int i = 0; i < pixels; ++i) {
        const uint8_t* k = key + i * 3;
        if ((k[0] | k[1] | k[2]) == 0) continue;
        std::memcpy(destination + i * 3, source + i * 3, 3);
      }
    } else {
      using Word = typename F::Word;
      for (int i = 0; i < pixels; ++i) {
        const Word k = LoadWord<Word>(key + i * kBytes);
        const Word s = LoadWord<Word>(source + i * kBytes);
        const Word d = LoadWord<Word>(destination + i * kBytes);
        StoreWord<Word>(destination + i * kBytes, k != 0 ? s : d);
      }
    }
  }
  static void CopyKeyed(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box) {
    for (int y = 0; y < box.height; ++y) {
      const uint8_t* s = source.PixelAt(box.sx, box.sy + y);
      KeyedRow(s, s, destination.PixelAt(box.dx, box.dy + y), box.width);
    }
  }
  static void EffectKeyed(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box, int effect,
                          uint32_t param) {
    const RowEffect row = RowEffectOf(kIndex, effect);
    const EffectArguments arguments = MakeEffectArguments(effect, param, destination.palette.Get());
    constexpr int kBlock = 256;
    std::array<uint8_t, kBlock * 4> block;
    for (int y = 0; y < box.height; ++y) {
      for (int first = 0; first < box.width; first += kBlock) {
        const int n = std::min(kBlock, box.width - first);
        const uint8_t* s = source.PixelAt(box.sx + first, box.sy + y);
        uint8_t* d = destination.PixelAt(box.dx + first, box.dy + y);
        std::memcpy(block.data(), d, size_t(n) * kBytes);
        row(s, block.data(), n, arguments);
        KeyedRow(s, block.data(), d, n);
      }
    }
  }
  static void CopyPlain(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box) {
    for (int y = 0; y < box.height; ++y) {
      std::memmove(destination.PixelAt(box.dx, box.dy + y), source.PixelAt(box.sx, box.sy + y),
                   size_t(box.width) * kBytes);
    }
  }
  static void EffectPlain(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box, int effect,
                          uint32_t param) {
    const RowEffect row = RowEffectOf(kIndex, effect);
    const EffectArguments arguments = MakeEffectArguments(effect, param, destination.palette.Get());
    for (int y = 0; y < box.height; ++y) {
      row(source.PixelAt(box.sx, box.sy + y), destination.PixelAt(box.dx, box.dy + y), box.width, arguments);
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
    for (int line = y; line < y + height; ++line) {
      uint8_t* p = s.PixelAt(x, line);
      for (int i = 0; i < width; ++i) {
        const uint32_t pixel = F::Load(p + i * kBytes);
        F::Store(p + i * kBytes, pixel == old ? replacement : pixel);
      }
    }
  }

  static void ConvertFrom(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box) {
    LineConversion conversion(source.depthIndex, source.palette.Get(), destination.depthIndex,
                              destination.palette.Get());
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

template <class Word>
void FillWords(const cSurfaceImpl& s, int x, int y, int width, int height, Word pixel) {
  for (int line = y; line < y + height; ++line) {
    uint8_t* p = s.PixelAt(x, line);
    for (int i = 0; i < width; ++i) StoreWord<Word>(p + size_t(i) * sizeof(Word), pixel);
  }
}

}  // namespace

const cPixelOps& PixelOpsOf(int depthIndex) { return kOps[depthIndex]; }

void FillBoxRaw(const cSurfaceImpl& s, int x, int y, int width, int height, uint32_t pixel) {
  switch (s.bytesPerPixel) {
    case 1:
      for (int line = y; line < y + height; ++line) std::memset(s.PixelAt(x, line), int(pixel & 0xFF), size_t(width));
      break;
    case 2:
      FillWords<uint16_t>(s, x, y, width, height, uint16_t(pixel));
      break;
    case 3: {
      // The first line grows by doubling; the others are copies.
      uint8_t* first = s.PixelAt(x, y);
      const size_t bytes = size_t(width) * 3;
      PixelFormat<24>::Store(first, pixel);
      for (size_t done = 3; done < bytes;) {
        const size_t n = std::min(done, bytes - done);
        std::memcpy(first + done, first, n);
        done += n;
      }
      for (int line = y + 1; line < y + height; ++line) std::memcpy(s.PixelAt(x, line), first, bytes);
      break;
    }
    default:
      FillWords<uint32_t>(s, x, y, width, height, pixel);
      break;
  }
}

}  // namespace vl
