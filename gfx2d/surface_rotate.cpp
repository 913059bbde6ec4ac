// Turning: Rotate.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "gfx2d/pixel_format.h"
#include "gfx2d/row_kernels.h"
#include "gfx2d/surface_impl.h"

namespace vl {
namespace {

int NormalDegrees(int degrees) {
  const int d = degrees % 360;
  return d < 0 ? d + 360 : d;
}

struct Turn {
  float cosine;
  float sine;
};

Turn TurnOf(int degrees) {
  if (degrees == 90) return {0, 1};
  if (degrees == 270) return {0, -1};
  const double radians = degrees * 0.01745329251993889;
  return {float(std::cos(radians)), float(std::sin(radians))};
}

// Turns in blocks of a few lines, as their source points advance in step and lie close to each other.
class Turner {
 public:
  Turner(const cSurfaceImpl& source, cSurfaceImpl& destination, int degrees, Colour background)
      : source_(source),
        destination_(destination),
        clip_(destination.GetClipRect()),
        turn_(TurnOf(degrees)),
        outside_(destination.PixelOfColour(background)) {
    const float c = turn_.cosine;
    const float s = turn_.sine;
    const auto dstWidth = float(destination.width);
    const auto dstHeight = float(destination.height);
    lineX_ = float(source.width) / 2 - dstWidth * c / 2 + dstHeight * s / 2;
    lineY_ = float(source.height) / 2 - dstWidth * s / 2 - dstHeight * c / 2;
    // At quarter turns this start lies on the far corner: one line of background comes in and one is lost. Programs
    // count on where the pixels come to lie.
    block_.stepX = c;
    block_.stepY = s;
    block_.width = source.width;
    block_.height = source.height;
    block_.pitch = source.pitch;
    block_.bytesPerPixel = source.bytesPerPixel;
    if (source.depth == 8) {
      for (size_t i = 0; i < 256; ++i) ofIndex_[i] = SwapRedBlue(source.PaletteColor(int(i)));
    }
  }

  // A quarter turn whose points lie on pixels, copied as it is. False when they lie between, or indices would change
  // on their way through colours.
  bool RunQuarter(bool interpolate) {
    if (turn_.cosine != 0 || lineX_ != std::floor(lineX_) || lineY_ != std::floor(lineY_)) return false;
    if (interpolate && source_.depth == 8) return false;
    const bool isRight = turn_.sine > 0;
    const int firstX = int(lineX_);  // of the source, for line 0
    const int firstY = int(lineY_);  // of the source, for column 0
    Rect box = isRight ? Rect{-firstY, firstX - source_.width + 1, source_.height - firstY, firstX + 1}
                       : Rect{firstY - source_.height + 1, -firstX, firstY + 1, source_.width - firstX};
    box = box.Intersect(clip_);
    if (box.IsEmpty()) box = {clip_.left, clip_.top, clip_.left, clip_.top};
    const auto fill = [this](int left, int top, int right, int bottom) {
      if (left < right && top < bottom) FillBoxRaw(destination_, left, top, right - left, bottom - top, outside_);
    };
    fill(clip_.left, clip_.top, clip_.right, box.top);
    fill(clip_.left, box.top, box.left, box.bottom);
    fill(box.right, box.top, clip_.right, box.bottom);
    fill(clip_.left, box.bottom, clip_.right, clip_.bottom);
    const size_t bytes = size_t(source_.bytesPerPixel);
    for (int y = box.top; y < box.bottom; y += kSquare) {
      const int lines = std::min(kSquare, box.bottom - y);
      if (lines == kSquare) {
        // To the right the lines run upward while the source's columns run on.
        const uint8_t* from = isRight ? source_.PixelAt(firstX - y - kSquare + 1, firstY + box.left)
                                      : source_.PixelAt(firstX + y, firstY - box.left);
        uint8_t* to = destination_.PixelAt(box.left, isRight ? y + kSquare - 1 : y);
        source_.kernels->transpose[bytes](from, isRight ? source_.pitch : -source_.pitch, to,
                                          isRight ? -destination_.pitch : destination_.pitch, box.Width());
        continue;
      }
      for (int line = y; line < y + lines; ++line) {
        uint8_t* to = destination_.PixelAt(box.left, line);
        for (int x = box.left; x < box.right; ++x, to += bytes) {
          std::memcpy(to,
                      isRight ? source_.PixelAt(firstX - line, firstY + x) : source_.PixelAt(firstX + line, firstY - x),
                      bytes);
        }
      }
    }
    if (interpolate) ClearSpareBits(box);
    return true;
  }

  template <int Depth>
  void Run(bool interpolate) {
    for (int y = 0; y < destination_.height; y += TurnBlock::kRows) {
      for (size_t r = 0; r < TurnBlock::kRows; ++r) {
        block_.x[r] = lineX_;
        block_.y[r] = lineY_;
        lineX_ -= turn_.sine;
        lineY_ += turn_.cosine;
      }
      if (y + TurnBlock::kRows <= clip_.top || y >= clip_.bottom) continue;
      const int first = std::max(y, clip_.top);
      const int last = std::min(y + TurnBlock::kRows, clip_.bottom);
      for (int x = 0; x < clip_.right; x += TurnBlock::kColumns) {
        const int columns = std::min(TurnBlock::kColumns, clip_.right - x);
        for (int line = first; line < last; ++line) Prefetch(destination_.PixelAt(x, line), columns);
        (interpolate ? source_.kernels->turnBetween : source_.kernels->turnNearest)(block_, columns);
        if (x + columns <= clip_.left) continue;
        for (int line = first; line < last; ++line) Line<Depth>(x, columns, line, size_t(line - y), interpolate);
      }
    }
  }

 private:
  static constexpr int kSquare = 8;  // lines that one transposition makes

  // What no colour holds of a pixel doesn't survive an interpolated turn.
  void ClearSpareBits(const Rect& box) {
    for (int y = box.top; y < box.bottom; ++y) {
      uint8_t* p = destination_.PixelAt(box.left, y);
      if (destination_.depth == 32) {
        for (int x = 0; x < box.Width(); ++x) StoreWord(p + x * 4, LoadWord<uint32_t>(p + x * 4) & kColourMask);
      } else if (destination_.depth == 15) {
        for (int x = 0; x < box.Width(); ++x) StoreWord(p + x * 2, uint16_t(LoadWord<uint16_t>(p + x * 2) & 0x7FFF));
      }
    }
  }

  // Has the block's target in the cache by the time that its points are known; lines of eight rows are more than the
  // processor foresees.
  void Prefetch([[maybe_unused]] const uint8_t* target, [[maybe_unused]] int columns) const {
#if defined(__GNUC__)
    for (int at = 0; at < columns * destination_.bytesPerPixel; at += 64) __builtin_prefetch(target + at, 1);
#endif
  }

  template <int Depth>
  void Line(int x, int columns, int line, size_t r, bool interpolate) {
    const int skip = std::max(clip_.left - x, 0);
    // Inside the source from `begin` to `end`.
    const int begin = std::clamp(block_.inside[r] > 0 ? block_.before[r] : columns, skip, columns);
    const int end = std::clamp(block_.before[r] + block_.inside[r], begin, columns);
    FillBoxRaw(destination_, x + skip, line, begin - skip, 1, outside_);
    if (begin < end) {
      if (interpolate) {
        Between<Depth>(destination_.PixelAt(x + begin, line), begin, end, r);
      } else {
        Nearest<Depth>(destination_.PixelAt(x + begin, line), begin, end, r);
      }
    }
    FillBoxRaw(destination_, x + end, line, columns - end, 1, outside_);
  }

  template <int Depth>
  void Nearest(uint8_t* target, int begin, int end, size_t r) const {
    constexpr int kBytes = PixelFormat<Depth>::kBytes;
    const uint8_t* const base = source_.topLine;
    const int32_t* offset = block_.offset.data() + size_t(begin) * TurnBlock::kRows + r;
    int i = begin;
    if constexpr (kBytes <= 2) {
      // Four at a time, for the sake of fewer stores.
      constexpr ptrdiff_t kStep = TurnBlock::kRows;
      for (; i + 4 <= end; i += 4, offset += 4 * kStep, target += 4 * kBytes) {
        uint64_t four = 0;
        for (int k = 0; k < 4; ++k)
          four |= uint64_t{PixelFormat<Depth>::Load(base + offset[k * kStep])} << (8 * kBytes * k);
        std::memcpy(target, &four, 4 * kBytes);
      }
    }
    for (; i < end; ++i, offset += TurnBlock::kRows, target += kBytes) {
      PixelFormat<Depth>::Store(target, PixelFormat<Depth>::Load(base + *offset));
    }
  }

  // A pixel as a word 0x00RRGGBB.
  template <int Depth>
  uint32_t Word(const uint8_t* p) const {
    const uint32_t pixel = PixelFormat<Depth>::Load(p);
    if constexpr (Depth == 8) {
      return ofIndex_[pixel];
    } else if constexpr (Depth == 15) {
      return (pixel & 0x7C00) << 9 | (pixel & 0x3E0) << 6 | (pixel & 0x1F) << 3;
    } else if constexpr (Depth == 16) {
      return (pixel & 0xF800) << 8 | (pixel & 0x7E0) << 5 | (pixel & 0x1F) << 3;
    } else {
      return pixel & 0xFFFFFF;
    }
  }

  template <int Depth>
  void Between(uint8_t* target, int begin, int end, size_t r) {
    const size_t points = size_t(end - begin);
    const uint8_t* const base = source_.topLine;
    for (size_t i = 0; i < points; ++i) {
      const size_t at = (size_t(begin) + i) * TurnBlock::kRows + r;
      const uint8_t* p = base + block_.offset[at];
      samples_.partX[i] = block_.partX[at];
      samples_.partY[i] = block_.partY[at];
      const int32_t has = block_.neighbours[at];
      if constexpr (Depth == 32) {
        if (has == 3) {  // two pixels in one access
          const auto line = LoadWord<uint64_t>(p);
          const auto under = LoadWord<uint64_t>(p + source_.pitch);
          samples_.here[i] = uint32_t(line) & kColourMask;
          samples_.next[i] = uint32_t(line >> 32) & kColourMask;
          samples_.below[i] = uint32_t(under) & kColourMask;
          samples_.across[i] = uint32_t(under >> 32) & kColourMask;
          continue;
        }
      }
      // Past an edge the pixel itself stands in.
      const ptrdiff_t right = (has & 1) ? PixelFormat<Depth>::kBytes : 0;
      const ptrdiff_t down = (has & 2) ? ptrdiff_t{source_.pitch} : 0;
      samples_.here[i] = Word<Depth>(p);
      samples_.next[i] = Word<Depth>(p + right);
      samples_.below[i] = Word<Depth>(p + down);
      samples_.across[i] = Word<Depth>(has == 3 ? p + right + down : p);
    }
    source_.kernels->mixSamples(samples_, mixed_.data(), int(points));
    if constexpr (Depth == 8) {
      for (size_t i = 0; i < points; ++i) target[i] = uint8_t(destination_.NearestIndex(SwapRedBlue(mixed_[i])));
    } else if constexpr (Depth == 32) {
      std::memcpy(target, mixed_.data(), points * 4);
    } else {
      source_.kernels->convert[4][size_t(DepthIndexOf(Depth))](reinterpret_cast<const uint8_t*>(mixed_.data()), target,
                                                               int(points));
    }
  }

  const cSurfaceImpl& source_;
  cSurfaceImpl& destination_;
  Rect clip_;
  Turn turn_;
  uint32_t outside_;
  float lineX_;
  float lineY_;
  TurnBlock block_;
  TurnSamples samples_;
  std::array<uint32_t, TurnBlock::kColumns> mixed_;
  std::array<uint32_t, 256> ofIndex_;
};

}  // namespace

Size cSurfaceImpl::RotatedSize(int degrees) const {
  degrees = NormalDegrees(degrees);
  if (degrees % 180 == 0) return {width, height};
  if (degrees % 90 == 0) return {height, width};
  const Turn turn = TurnOf(degrees);
  const float c = std::abs(turn.cosine);
  const float s = std::abs(turn.sine);
  return {int(float(width) * c + float(height) * s), int(float(width) * s + float(height) * c)};
}

bool cSurfaceImpl::Rotate(cSurfaceImpl& destination, int degrees, bool interpolate, Colour background) const {
  if (!Lock() || !destination.Lock() || depth != destination.depth || &destination == this) return false;
  degrees = NormalDegrees(degrees);
  if (degrees % 180 == 0) {
    if (!Blit(destination, 0, 0, 0, 0, width, height, 0, kEffectNone, 0, false)) return false;
    if (degrees == 180) {
      destination.MirrorHorizontal(0, 0, width, height);
      destination.MirrorVertical(0, 0, width, height);
    }
    return true;
  }
  Turner turner(*this, destination, degrees, background);
  if (turner.RunQuarter(interpolate)) return true;
  switch (depth) {
    case 8:
      turner.Run<8>(interpolate);
      break;
    case 15:
      turner.Run<15>(interpolate);
      break;
    case 16:
      turner.Run<16>(interpolate);
      break;
    case 24:
      turner.Run<24>(interpolate);
      break;
    default:
      turner.Run<32>(interpolate);
      break;
  }
  return true;
}

}  // namespace vl
